#!/usr/bin/env python3
"""Writes the morph benchmark's content folder: a body mesh of one face group, a figure whose body
carries MORPHS text morphs of 2,000 to 20,000 deltas each (about a real character's injected morph
set), and a figure that names a large binary morph file but uses only five of its morphs.

  gen_morphs.py CONTENT_DIR [--morphs 300] [--pzmd-mb 200] [--seed 1]

Files (under CONTENT_DIR/Runtime): Geometries/morphs/body.obj, libraries/character/text.cr2,
libraries/character/binary.cr2 and libraries/character/big.pmd.
"""
import argparse
import os
import random
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import write_pzmd  # noqa: E402

SIDE = 224  # vertices per side of the body grid: 50,176 in all
MIN_DELTAS, MAX_DELTAS = 2000, 20000


def write_obj(path):
    with open(path, "w") as f:
        for y in range(SIDE):
            f.write("".join(f"v {x * 0.001:.4f} {y * 0.001:.4f} 0\n" for x in range(SIDE)))
        f.write("g body\n")
        for y in range(SIDE - 1):
            f.write("".join(f"f {y * SIDE + x + 1} {y * SIDE + x + 2} {(y + 1) * SIDE + x + 2} {(y + 1) * SIDE + x + 1}\n"
                            for x in range(SIDE - 1)))


def head(f, extra=""):
    f.write("{\nversion\n\t{\n\tnumber 4.01\n\t}\n")
    f.write("figureResFile :Runtime:Geometries:morphs:body.obj\n" + extra)
    f.write("actor body:1\n\t{\n\tgeomHandlerGeom 13 body\n\t}\nactor body:1\n\t{\n\tchannels\n\t\t{\n")


def tail(f):
    f.write("\t\t}\n\t}\n}\n")


def write_text_figure(path, morphs, rng):
    vertices = SIDE * SIDE
    with open(path, "w") as f:
        head(f)
        for m in range(morphs):
            n = rng.randint(MIN_DELTAS, MAX_DELTAS)
            f.write(f"\t\ttargetGeom morph {m}\n\t\t\t{{\n\t\t\tname morph {m}\n\t\t\tindexes {n}\n")
            f.write(f"\t\t\tnumbDeltas {vertices}\n\t\t\tdeltas\n\t\t\t\t{{\n")
            f.write("".join(f"\t\t\t\td {i} {rng.uniform(-0.01, 0.01):.6f} {rng.uniform(-0.01, 0.01):.6f} "
                            f"{rng.uniform(-0.01, 0.01):.6f}\n" for i in sorted(rng.sample(range(vertices), n))))
            f.write("\t\t\t\t}\n\t\t\t}\n")
        tail(f)


def write_binary(folder, megabytes, rng):
    morphs = 300
    deltas = max(1, megabytes * 1000000 // (16 * morphs))
    vertices = SIDE * SIDE
    blocks = []
    for m in range(morphs):
        indices = sorted(rng.sample(range(vertices), min(deltas, vertices)))
        offsets = [(rng.uniform(-0.01, 0.01), 0.0, 0.0)] * len(indices)
        blocks.append(("body", f"morph{m}", write_pzmd.block(indices, offsets)))
    write_pzmd.write(os.path.join(folder, "big.pmd"), blocks)
    with open(os.path.join(folder, "binary.cr2"), "w") as f:
        head(f, "morphBinaryFile :Runtime:libraries:character:big.pmd\n")
        for m in range(0, morphs, morphs // 5)[:5]:
            f.write(f"\t\ttargetGeom morph{m}\n\t\t\t{{\n\t\t\tuseBinaryMorph\n\t\t\t}}\n")
        tail(f)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("content")
    ap.add_argument("--morphs", type=int, default=300)
    ap.add_argument("--pzmd-mb", type=int, default=200)
    ap.add_argument("--seed", type=int, default=1)
    args = ap.parse_args()
    rng = random.Random(args.seed)
    geometry = os.path.join(args.content, "Runtime", "Geometries", "morphs")
    character = os.path.join(args.content, "Runtime", "libraries", "character")
    os.makedirs(geometry, exist_ok=True)
    os.makedirs(character, exist_ok=True)
    write_obj(os.path.join(geometry, "body.obj"))
    write_text_figure(os.path.join(character, "text.cr2"), args.morphs, rng)
    write_binary(character, args.pzmd_mb, rng)


if __name__ == "__main__":
    main()
