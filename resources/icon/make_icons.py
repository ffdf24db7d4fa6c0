#!/usr/bin/env python3
"""Renders the two drawings of the icon into the files that are committed beside them and in resources/macos.

Needs rsvg-convert and PIL (Debian: librsvg2-bin, python3-pil). Only to be run when a drawing changes, so the build does
without them.
"""

import io
import struct
import subprocess
from pathlib import Path

from PIL import Image

ICON = Path(__file__).resolve().parent
DRAWING = ICON / "kvOrvantaLogic_Tool.svg"
SMALL_DRAWING = ICON / "kvOrvantaLogic_Tool-small.svg"
LARGEST_SMALL = 32
ICNS = ICON.parent / "macos" / "kvOrvantaLogic_Tool.icns"

# What desktops look for in their icon theme.
PNG_SIZES = [16, 24, 32, 48, 64, 128, 256, 512]

# An icns chunk says by its type how large the image inside is: five sizes, and each doubled for sharper screens.
CHUNKS = [("ic04", 16), ("ic11", 32), ("ic05", 32), ("ic12", 64), ("ic07", 128), ("ic13", 256), ("ic08", 256),
          ("ic14", 512), ("ic09", 512), ("ic10", 1024)]
# The two smallest are pixels and no PNG, which the icon of a bundle may not be in these sizes.
PIXELS = ["ic04", "ic05"]


def render(pixels):
    drawing = SMALL_DRAWING if pixels <= LARGEST_SMALL else DRAWING
    return subprocess.run(["rsvg-convert", "-w", str(pixels), "-h", str(pixels), str(drawing)],
                          check=True, stdout=subprocess.PIPE).stdout


def argb(png):
    """The pixels, channel by channel in runs of at most 128 bytes, each after its length less one."""
    red, green, blue, alpha = Image.open(io.BytesIO(png)).convert("RGBA").split()
    packed = b"ARGB"
    for channel in (alpha, red, green, blue):
        values = channel.tobytes()
        for start in range(0, len(values), 128):
            run = values[start:start + 128]
            packed += bytes([len(run) - 1]) + run
    return packed


def main():
    images = {pixels: render(pixels) for pixels in {size for _, size in CHUNKS} | set(PNG_SIZES)}
    # Type and length, both four bytes, stand before every chunk and count towards its length, as for the whole file.
    contents = [(kind, argb(images[size]) if kind in PIXELS else images[size]) for kind, size in CHUNKS]
    chunks = b"".join(struct.pack(">4sI", kind.encode(), 8 + len(content)) + content for kind, content in contents)
    ICNS.write_bytes(struct.pack(">4sI", b"icns", 8 + len(chunks)) + chunks)
    for pixels in PNG_SIZES:
        (ICON / f"{pixels}.png").write_bytes(images[pixels])


if __name__ == "__main__":
    main()
