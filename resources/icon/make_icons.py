#!/usr/bin/env python3
"""Renders the two drawings of the icon into the files that are committed beside them and in resources/macos.

Needs rsvg-convert (Debian: librsvg2-bin). Only to be run when a drawing changes, so the build does without it.
"""

import struct
import subprocess
from pathlib import Path

ICON = Path(__file__).resolve().parent
DRAWING = ICON / "kvOrvantaLogic_Tool.svg"
SMALL_DRAWING = ICON / "kvOrvantaLogic_Tool-small.svg"
LARGEST_SMALL = 32
ICNS = ICON.parent / "macos" / "kvOrvantaLogic_Tool.icns"

# What desktops look for in their icon theme.
PNG_SIZES = [16, 24, 32, 48, 64, 128, 256, 512]

# An icns chunk says by its type how large the PNG inside is; 11 to 14 are the doubled sizes of sharper screens.
CHUNKS = [("ic11", 32), ("ic12", 64), ("ic07", 128), ("ic13", 256), ("ic08", 256), ("ic14", 512), ("ic09", 512),
          ("ic10", 1024)]


def render(pixels):
    drawing = SMALL_DRAWING if pixels <= LARGEST_SMALL else DRAWING
    return subprocess.run(["rsvg-convert", "-w", str(pixels), "-h", str(pixels), str(drawing)],
                          check=True, stdout=subprocess.PIPE).stdout


def main():
    images = {pixels: render(pixels) for pixels in {size for _, size in CHUNKS} | set(PNG_SIZES)}
    # Type and length, both four bytes, stand before every chunk and count towards its length, as for the whole file.
    chunks = b"".join(struct.pack(">4sI", kind.encode(), 8 + len(images[size])) + images[size]
                      for kind, size in CHUNKS)
    ICNS.write_bytes(struct.pack(">4sI", b"icns", 8 + len(chunks)) + chunks)
    for pixels in PNG_SIZES:
        (ICON / f"{pixels}.png").write_bytes(images[pixels])


if __name__ == "__main__":
    main()
