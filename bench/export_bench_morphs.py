#!/usr/bin/env python3
"""Copies a figure file written by gen_figure.py and gives it MORPHS text morphs spread over its body
parts (a character's head, face and body morphs): each moves 30 to 100 percent of one part's
vertices, so the deltas about equal the geometry, as on a commercial figure.

  export_bench_morphs.py GEOMETRY.obj FIGURE.cr2 OUT.cr2 [--morphs 300] [--seed 1]
"""
import argparse
import random


def part_vertex_counts(obj):
    """Vertices each face group uses, in group order (a body part is cut by its group)."""
    groups, current = {}, None
    with open(obj) as f:
        for line in f:
            if line.startswith("g "):
                current = groups.setdefault(line.split()[1], set())
            elif line.startswith("f ") and current is not None:
                current.update(int(c.split("/")[0]) for c in line.split()[1:])
    return {g: len(v) for g, v in groups.items() if v}


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("obj")
    ap.add_argument("figure")
    ap.add_argument("out")
    ap.add_argument("--morphs", type=int, default=300)
    ap.add_argument("--seed", type=int, default=1)
    a = ap.parse_args()
    rnd = random.Random(a.seed)
    parts = part_vertex_counts(a.obj)
    names = sorted(parts)
    text = open(a.figure).read().rstrip()
    assert text.endswith("}")
    blocks = []
    for m in range(a.morphs):
        part = names[m % len(names)]
        n = parts[part]
        moved = sorted(rnd.sample(range(n), max(1, int(n * rnd.uniform(0.3, 1.0)))))
        deltas = "".join(f"\t\t\t\td {i} {rnd.uniform(-0.01, 0.01):.6f} {rnd.uniform(-0.01, 0.01):.6f} "
                         f"{rnd.uniform(-0.01, 0.01):.6f}\n" for i in moved)
        blocks.append(f"actor {part}:1\n\t{{\n\tchannels\n\t\t{{\n\t\ttargetGeom morph{m}\n\t\t\t{{\n"
                      f"\t\t\tname morph{m}\n\t\t\tinitValue {0.5 if m % 7 == 0 else 0}\n"
                      f"\t\t\tnumbDeltas {n}\n\t\t\tdeltas\n\t\t\t\t{{\n{deltas}\t\t\t\t}}\n\t\t\t}}\n\t\t}}\n\t}}\n")
    with open(a.out, "w") as f:
        f.write(text[:-1] + "".join(blocks) + "}\n")


if __name__ == "__main__":
    main()
