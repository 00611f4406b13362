#!/usr/bin/env python3
"""Writes the studio scene's sound: a chime of 1.25 seconds (30 frames at 24 frames a second),
8000 samples a second, 8-bit mono WAV. The output is the same bytes on every run."""
import math
import struct
import sys

RATE = 8000
FRAMES = 10000  # 1.25 seconds


def samples():
    out = bytearray()
    for i in range(FRAMES):
        t = i / RATE
        level = math.exp(-3.0 * t) * (0.6 * math.sin(2 * math.pi * 660 * t) +
                                      0.3 * math.sin(2 * math.pi * 990 * t))
        out.append(max(0, min(255, 128 + int(round(120 * level)))))
    return bytes(out)


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "examples/poser/Runtime/Sounds/chime.wav"
    data = samples()
    fmt = struct.pack("<HHIIHH", 1, 1, RATE, RATE, 1, 8)
    body = b"WAVE" + b"fmt " + struct.pack("<I", len(fmt)) + fmt + b"data" + struct.pack("<I", len(data)) + data
    with open(path, "wb") as f:
        f.write(b"RIFF" + struct.pack("<I", len(body)) + body)


if __name__ == "__main__":
    main()
