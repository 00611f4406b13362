#!/usr/bin/env python3
"""Draws the example doll's texture maps as small PNG files (no image library needed).

    scripts/make_textures.py [OUTPUT_FOLDER]

The default folder is examples/poser/Runtime/Textures/doll. The output is byte-for-byte the same on
every run, so the checked-in files can be compared with a fresh run.
"""
import os
import struct
import sys
import zlib

SIZE = 32


def png(path, width, height, channels, pixel):
    """Writes an 8-bit PNG: channels 1 (grey) or 3 (RGB); pixel(x, y) gives a tuple of that length."""
    colour_type = {1: 0, 3: 2}[channels]
    rows = bytearray()
    for y in range(height):
        rows.append(0)  # no filter
        for x in range(width):
            rows.extend(pixel(x, y))

    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    header = struct.pack(">IIBBBBB", width, height, 8, colour_type, 0, 0, 0)
    data = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(rows), 9))
    data += chunk(b"IEND", b"")
    with open(path, "wb") as f:
        f.write(data)


def skin(x, y):
    # A warm tone with a soft vertical shading.
    shade = 20 * y // SIZE
    return (230 - shade, 178 - shade, 153 - shade)


def skin_bump(x, y):
    # Fine pores: a regular dot grid.
    return (200 if x % 4 == 1 and y % 4 == 1 else 128,)


def shirt(x, y):
    # Blue and white horizontal stripes.
    return (40, 70, 160) if (y // 4) % 2 == 0 else (235, 235, 240)


def shirt_alpha(x, y):
    # Opaque cloth with a row of round holes (black is transparent).
    cx, cy = x % 8 - 3.5, y - SIZE // 2
    return (0 if cx * cx + cy * cy < 6 else 255,)


def pants(x, y):
    # A dark denim twill: diagonal lines.
    return (30, 40, 80) if (x + y) % 3 == 0 else (50, 65, 120)


def pants_bump(x, y):
    return (160 if (x + y) % 3 == 0 else 96,)


MAPS = [
    ("dollSkin.png", 3, skin),
    ("dollSkinBump.png", 1, skin_bump),
    ("dollShirt.png", 3, shirt),
    ("dollShirtAlpha.png", 1, shirt_alpha),
    ("dollPants.png", 3, pants),
    ("dollPantsBump.png", 1, pants_bump),
]


def main():
    root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "examples/poser/Runtime/Textures/doll")
    os.makedirs(out, exist_ok=True)
    for name, channels, pixel in MAPS:
        png(os.path.join(out, name), SIZE, SIZE, channels, pixel)
        print(os.path.join(out, name))


if __name__ == "__main__":
    main()
