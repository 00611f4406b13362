#!/usr/bin/env python3
"""Writes a Poser figure file for an OBJ: one actor per face group, cut with geomHandlerGeom, each
with the channels a commercial figure gives a body part (40: rotations with limits, translations,
propagating scales, bend, twist and smooth-scale joints with sphere matrices, value dials).

  gen_figure.py GEOMETRY.obj CONTENT_DIR OUT.cr2

The OBJ is referred to as :Runtime:Geometries:bench:<name>; CONTENT_DIR/Runtime/Geometries/bench/
must hold it (a symbolic link is fine).
"""
import os
import sys

DIALS = 24


def body(lines, init=0, lo=-100000, hi=100000, scale=1, hidden=0, force=0):
    out = ["\t\t{", f"\t\tname {lines[0]}", f"\t\tinitValue {init}", f"\t\thidden {hidden}",
           f"\t\tforceLimits {force}", f"\t\tmin {lo}", f"\t\tmax {hi}", f"\t\ttrackingScale {scale}",
           "\t\tkeys\n\t\t\t{\n\t\t\tstatic  0\n\t\t\tk  0  %s\n\t\t\t}" % init,
           "\t\tinterpStyleLocked 0"]
    out += ["\t\t" + l for l in lines[1:]]
    out.append("\t\t}")
    return "\n".join(out) + "\n"


def sphere_mats():
    rows = ["1 0 0 0", "0 1 0 0", "0 0 1 0", "0 0.5 0 1"]
    block = "\t\t\t{\n" + "".join(f"\t\t\t{r}\n" for r in rows) + "\t\t\t}\n"
    return ["sphereMatsRaw", "\t{\n" + block + block + "\t\t}"]


def channels(g, parent):
    c = []
    c.append(f"\ttwistY twisty\n" + body(["twisty", f"otherActor {parent}:1", "matrixActor NULL",
                                             "center 0 0.5 0", "startPt 0.5", "endPt 0.6", "flipped"]))
    for axis in "XZ":
        c.append(f"\tjoint{axis} joint{axis.lower()}\n" + body(
            [f"joint{axis.lower()}", f"otherActor {parent}:1", "matrixActor NULL", "center 0 0.5 0",
             "angles -50 -25 -25 -50", "doBulge 1", "posBulgeLeft 0.01", "posBulgeRight 0.01",
             "negBulgeLeft 0.01", "negBulgeRight 0.01"] + sphere_mats()))
    for axis in "XYZ":
        c.append(f"\tsmoothScale{axis} smoothScale{axis.lower()}\n" + body(
            [f"smoothScale{axis.lower()}", f"otherActor {parent}:1", "matrixActor NULL",
             "center 0 0.5 0", "smoothZones 0.4 0.45 0.55 0.6"]))
    c.append("\tpropagatingScale scale\n" + body(["Scale"], 1, 0, 100000, 0.005))
    for axis in "XYZ":
        c.append(f"\tpropagatingScale{axis} {axis.lower()}Scale\n" + body([f"{axis.lower()}Scale"], 1, 0, 100000, 0.005))
    for axis, lo, hi in (("Y", -40, 40), ("Z", -35, 35), ("X", -45, 60)):
        c.append(f"\trotate{axis} {axis.lower()}rot\n" + body([f"{axis.lower()}rot"], 0, lo, hi, 1, 0, 1))
    for axis in "XYZ":
        c.append(f"\ttranslate{axis} {axis.lower()}tran\n" + body([f"{axis.lower()}Tran"], 0, -1, 1, 0.004, 1))
    for i in range(DIALS):
        c.append(f"\tvalueParm {g}Dial{i}\n" + body([f"{g} Dial {i}"], 0, -1, 1, 0.01))
    return "\tchannels\n\t\t{\n" + "".join("\t" + l + "\n" for ch in c for l in ch.rstrip("\n").split("\n")) + "\t\t}\n"


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
            f.write("\torigin 0 0.5 0\n\tendPoint 0 0.6 0\n\torientation 0 0 0\n")
            f.write(channels(g, parent))
            f.write("\t}\n")
            parent = g
        f.write("figure\n\t{\n\tname Bench\n\troot BODY:1\n\t}\n}\n")
    print(f"{out}: {len(groups)} actors")


if __name__ == "__main__":
    main()
