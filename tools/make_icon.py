#!/usr/bin/env python3
"""Writes resources/skyvault.ico: the program's mark at every size the system asks for.

Run from anywhere: tools/make_icon.py. Sizes up to 64 are stored as bitmaps, which every reader of icons
understands; the large ones as PNG, which keeps the file small.
"""

import io
import pathlib
import struct

from mark import draw_mark

SIZES = (16, 20, 24, 32, 40, 48, 64, 128, 256)
LARGEST_BITMAP = 64


def bitmap(picture):
    """A 32-bit device-independent bitmap with its mask, rows bottom up, as icons hold it."""
    size = picture.width
    mask_stride = (size + 31) // 32 * 4
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    colours, mask = bytearray(), bytearray()
    for y in reversed(range(size)):
        bits = bytearray(mask_stride)
        for x in range(size):
            red, green, blue, alpha = picture.getpixel((x, y))
            colours += bytes((blue, green, red, alpha))
            if alpha == 0:
                bits[x // 8] |= 0x80 >> (x % 8)
        mask += bits
    return header + bytes(colours) + bytes(mask)


def png(picture):
    stream = io.BytesIO()
    picture.save(stream, "PNG", optimize=True)
    return stream.getvalue()


def main():
    entries, data = bytearray(), bytearray()
    start = 6 + 16 * len(SIZES)
    for size in SIZES:
        picture = draw_mark(size)
        block = bitmap(picture) if size <= LARGEST_BITMAP else png(picture)
        # A size of 256 is written as 0.
        entries += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(block), start + len(data))
        data += block
    target = pathlib.Path(__file__).resolve().parent.parent / "resources" / "skyvault.ico"
    target.write_bytes(struct.pack("<HHH", 0, 1, len(SIZES)) + entries + data)


if __name__ == "__main__":
    main()
