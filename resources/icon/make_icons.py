#!/usr/bin/env python3
"""Renders kvOrvantaLogic_Tool.svg into the icons that are committed beside it and in resources/macos.

Needs rsvg-convert (Debian: librsvg2-bin). Only to be run when the drawing changes, so the build does without it.
"""

import struct
import subprocess
from pathlib import Path

ICON = Path(__file__).resolve().parent
DRAWING = ICON / "kvOrvantaLogic_Tool.svg"
PNG = ICON / "kvOrvantaLogic_Tool.png"
ICNS = ICON.parent / "macos" / "kvOrvantaLogic_Tool.icns"

# An icns chunk says by its type how large the PNG inside is; 11 to 14 are the doubled sizes of sharper screens.
CHUNKS = [("ic11", 32), ("ic12", 64), ("ic07", 128), ("ic13", 256), ("ic08", 256), ("ic14", 512), ("ic09", 512),
          ("ic10", 1024)]


def render(pixels):
    return subprocess.run(["rsvg-convert", "-w", str(pixels), "-h", str(pixels), str(DRAWING)],
                          check=True, stdout=subprocess.PIPE).stdout


def main():
    images = {pixels: render(pixels) for pixels in {size for _, size in CHUNKS}}
    # Type and length, both four bytes, stand before every chunk and count towards its length, as for the whole file.
    chunks = b"".join(struct.pack(">4sI", kind.encode(), 8 + len(images[size])) + images[size]
                      for kind, size in CHUNKS)
    ICNS.write_bytes(struct.pack(">4sI", b"icns", 8 + len(chunks)) + chunks)
    PNG.write_bytes(images[256])


if __name__ == "__main__":
    main()
