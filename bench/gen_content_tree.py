#!/usr/bin/env python3
"""Writes a content tree and scenes that name its files, for the content resolution benchmark.

  gen_content_tree.py OUT [FILES] [REFERENCES]

OUT/content/Runtime/Geometries/Lib_NNN/Sub_NN/Item_NNNNN.obj: FILES small geometry files (default
50,000) in 1,000 folders. Four scenes name REFERENCES (default 10,000) distinct files among them,
one objFileGeom and nine alternate geometries per prop:

  exact.pz3        every name as it is on disk
  folded.pz3       the same references, every folder and file name in another letter case
  exact_half.pz3   the first half of the references of exact.pz3
  folded_half.pz3  the first half of the references of folded.pz3

The references use the forms content is shipped with: Mac (':runtime:...'), Windows relative
('runtime\\...') and Windows absolute ('C:\\Program Files\\...\\Runtime\\...'). Deterministic.
"""
import os
import random
import sys

LIBS, SUBS = 100, 10
TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\ng part\nusemtl skin\nf 1/1 2/1 3/1\n"


def file_parts(index, per_folder):
    folder = index // per_folder
    return ["Runtime", "Geometries", f"Lib_{folder // SUBS:03d}", f"Sub_{folder % SUBS:02d}", f"Item_{index:05d}.obj"]


def other_case(name, rnd):
    stem, dot, ext = name.partition(".")
    stem = rnd.choice([str.lower, str.upper, str.swapcase])(stem)
    return stem + dot + ext


def reference(parts, form):
    if form == 0:
        return ":" + ":".join(parts)
    if form == 1:
        return "\\".join(parts)
    return "C:\\Program Files\\Poser 6\\" + "\\".join(parts)


def write_scene(path, references):
    with open(path, "w", newline="\n") as f:
        f.write("{\nversion\n\t{\n\tnumber 6\n\t}\n")
        for p in range(0, len(references), 10):
            f.write(f"prop item{p // 10}\n\t{{\n\tobjFileGeom 0 0 {references[p]}\n")
            for a, ref in enumerate(references[p + 1:p + 10]):
                f.write(f"\talternateGeom alt{a}\n\t\t{{\n\t\tname alt{a}\n\t\tobjFile 1 {ref}\n\t\t}}\n")
            f.write("\t}\n")
        f.write("}\n")


def main():
    out = sys.argv[1]
    files = int(sys.argv[2]) if len(sys.argv) > 2 else 50000
    count = int(sys.argv[3]) if len(sys.argv) > 3 else 10000
    per_folder = -(-files // (LIBS * SUBS))
    for index in range(files):
        path = os.path.join(out, "content", *file_parts(index, per_folder))
        if index % per_folder == 0:
            os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", newline="\n") as f:
            f.write(TRIANGLE)
    rnd = random.Random(909)
    stride = 7919  # a prime: the references spread over every folder, each file named once
    exact, folded = [], []
    for i in range(count):
        parts = file_parts(i * stride % files, per_folder)
        form = i % 3
        exact.append(reference(parts, form))
        folded.append(reference([other_case(p, rnd) for p in parts], form))
    write_scene(os.path.join(out, "exact.pz3"), exact)
    write_scene(os.path.join(out, "folded.pz3"), folded)
    write_scene(os.path.join(out, "exact_half.pz3"), exact[:count // 2])
    write_scene(os.path.join(out, "folded_half.pz3"), folded[:count // 2])


if __name__ == "__main__":
    main()
