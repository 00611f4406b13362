#!/usr/bin/env python3
"""Writes a Poser figure file for an OBJ: one actor per face group, cut with geomHandlerGeom.

  gen_figure.py GEOMETRY.obj CONTENT_DIR OUT.cr2

The OBJ is referred to as :Runtime:Geometries:bench:<name>; CONTENT_DIR/Runtime/Geometries/bench/
must hold it (a symbolic link is fine).
"""
import os
import sys


def main():
    obj, content, out = sys.argv[1:4]
    groups = []
    seen = set()
    with open(obj) as f:
        for line in f:
            if line.startswith("g "):
                for g in line.split()[1:]:
                    if g not in seen:
                        seen.add(g)
                        groups.append(g)
    name = os.path.basename(obj)
    folder = os.path.join(content, "Runtime", "Geometries", "bench")
    os.makedirs(folder, exist_ok=True)
    link = os.path.join(folder, name)
    if not os.path.exists(link):
        os.symlink(os.path.abspath(obj), link)
    with open(out, "w") as f:
        f.write("{\nversion\n\t{\n\tnumber 4.01\n\t}\n")
        f.write(f"figureResFile :Runtime:Geometries:bench:{name}\n")
        f.write("actor BODY:1\n\t{\n\tstorageOffset 0 0 0\n\t}\n")
        for g in groups:
            f.write(f"actor {g}:1\n\t{{\n\tstorageOffset 0 0 0\n\tgeomHandlerGeom 13 {g}\n\t}}\n")
        parent = "BODY"
        for g in groups:
            f.write(f"actor {g}:1\n\t{{\n\tname {g}\n\ton\n\tbend 1\n\tparent {parent}:1\n")
            f.write("\torigin 0 0.5 0\n\tendPoint 0 0.6 0\n\torientation 0 0 0\n\t}\n")
            parent = g
        f.write("figure\n\t{\n\tname Bench\n\troot BODY:1\n\t}\n}\n")
    print(f"{out}: {len(groups)} actors")


if __name__ == "__main__":
    main()
