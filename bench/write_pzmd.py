#!/usr/bin/env python3
"""Writes a binary morph file (PZMD): a header, an index of (morph, actor, offset) records, then one
block of deltas per morph. Every number is a big-endian 32-bit word; names are a length byte and
that many bytes of UTF-8.

  write_pzmd.py OUT --morph ACTOR MORPH "i x y z; i x y z" [--morph ...]
      the given morphs, offsets in Poser units (the example doll's file)
  write_pzmd.py OUT --from LIST
      the morphs of a text list, one a line: ACTOR|MORPH|i x y z; i x y z ('#' starts a comment)
  write_pzmd.py OUT --random MORPHS DELTAS VERTICES [--actor NAME] [--seed N]
      MORPHS morphs of DELTAS deltas each over VERTICES vertices (the benchmark's large file)

The output depends only on the arguments, so a file written by it can always be written again.
"""
import argparse
import random
import struct
import sys


def name_bytes(text):
    data = text.encode("utf-8")
    if len(data) > 255:
        sys.exit(f"name longer than 255 bytes: {text!r}")
    return bytes([len(data)]) + data


DELTA = struct.Struct(">ifff")


def block(indices, offsets):
    """One delta block: the count, then index x y z per delta."""
    rows = b"".join(DELTA.pack(i, *xyz) for i, xyz in zip(indices, offsets))
    return struct.pack(">i", len(indices)) + rows


def write(path, morphs):
    """morphs: list of (actor, morph, block bytes), written in that order."""
    records = [name_bytes(m) + name_bytes(a) for a, m, _ in morphs]
    offset = 20 + sum(len(r) + 8 for r in records)
    with open(path, "wb") as f:
        f.write(b"PZMD" + struct.pack(">iiii", 1, 0, 0, len(morphs)))
        for record, (_, _, data) in zip(records, morphs):
            f.write(record + struct.pack(">ii", len(data), offset))
            offset += len(data)
        for _, _, data in morphs:
            f.write(data)


def parse_deltas(text):
    indices, offsets = [], []
    for item in filter(None, (s.strip() for s in text.split(";"))):
        i, x, y, z = item.split()
        indices.append(int(i))
        offsets.append((float(x), float(y), float(z)))
    return indices, offsets


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("out")
    ap.add_argument("--morph", nargs=3, action="append", metavar=("ACTOR", "MORPH", "DELTAS"), default=[])
    ap.add_argument("--from", dest="source", metavar="LIST")
    ap.add_argument("--random", nargs=3, type=int, metavar=("MORPHS", "DELTAS", "VERTICES"))
    ap.add_argument("--actor", default="body")
    ap.add_argument("--seed", type=int, default=1)
    args = ap.parse_args()
    entries = list(args.morph)
    if args.source:
        with open(args.source, encoding="utf-8") as f:
            entries += [line.rstrip("\n").split("|") for line in f if line.strip() and not line.startswith("#")]
    morphs = [(actor, morph, block(*parse_deltas(d))) for actor, morph, d in entries]
    if args.random:
        count, deltas, vertices = args.random
        rng = random.Random(args.seed)
        for m in range(count):
            indices = sorted(rng.sample(range(vertices), deltas))
            offsets = [(rng.uniform(-0.01, 0.01), rng.uniform(-0.01, 0.01), rng.uniform(-0.01, 0.01))] * deltas
            morphs.append((args.actor, f"morph{m}", block(indices, offsets)))
    if not morphs:
        ap.error("nothing to write: give --morph or --random")
    write(args.out, morphs)


if __name__ == "__main__":
    main()
