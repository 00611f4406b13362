#!/usr/bin/env python3
"""Writes a large synthetic Poser figure file (deterministic) for read-driver benchmarks.

  gen_poser.py OUT.cr2 [ACTORS] [DELTAS_PER_MORPH]

Many actors, each with transform and value channels with keys, and morph targets whose deltas
lines look like real ones ("d 1234 0.001 -0.002 0.0003"). The default size is about 60 MB.
"""
import random
import sys


def main():
    out = sys.argv[1]
    actors = int(sys.argv[2]) if len(sys.argv) > 2 else 120
    deltas = int(sys.argv[3]) if len(sys.argv) > 3 else 3000
    rnd = random.Random(4242)
    with open(out, "w", newline="\n") as f:
        w = f.write
        w("{\n\nversion\n\t{\n\tnumber 4.01\n\t}\n")
        for a in range(actors):
            name = f"part{a}:1"
            w(f"actor {name}\n\t{{\n\tstorageOffset 0 0 0\n\tgeomHandlerGeom 13 part{a}\n\t}}\n")
        for a in range(actors):
            name = f"part{a}:1"
            w(f"actor {name}\n\t{{\n\tname GetStringRes(1024,{a % 105 + 1})\n\ton\n\tbend 1\n")
            w(f"\tparent part{max(a - 1, 0)}:1\n\torigin {rnd.uniform(-1, 1):.6f} {rnd.uniform(0, 1):.6f} 0.000000\n")
            w("\tchannels\n\t\t{\n")
            for m in range(4):
                w(f"\t\ttargetGeom morph{m}\n\t\t\t{{\n\t\t\tname morph{m}\n\t\t\tinitValue 0\n\t\t\thidden 0\n")
                w("\t\t\tmin -100000\n\t\t\tmax 100000\n\t\t\ttrackingScale 0.02\n")
                w("\t\t\tkeys\n\t\t\t\t{\n\t\t\t\tstatic 0\n\t\t\t\tk 0 0\n\t\t\t\t}\n")
                w(f"\t\t\tindexes {deltas}\n\t\t\tnumbDeltas 9000\n\t\t\tdeltas\n\t\t\t\t{{\n")
                idx = 0
                lines = []
                for _ in range(deltas):
                    idx += rnd.randint(1, 5)
                    lines.append("\t\t\t\td %d %.6f %.6f %.6f\n" % (idx, rnd.uniform(-0.01, 0.01),
                                                                rnd.uniform(-0.01, 0.01), rnd.uniform(-0.01, 0.01)))
                w("".join(lines))
                w("\t\t\t\t}\n\t\t\tblendType 0\n\t\t\t}\n")
            for axis in ("z", "y", "x"):
                w(f"\t\trotate{axis.upper()} {axis}rot\n\t\t\t{{\n\t\t\tname {axis}Rotate\n\t\t\tinitValue 0\n")
                w("\t\t\thidden 0\n\t\t\tforceLimits 1\n\t\t\tmin -180\n\t\t\tmax 180\n\t\t\ttrackingScale 1\n")
                w("\t\t\tkeys\n\t\t\t\t{\n\t\t\t\tstatic 0\n")
                for k in range(30):
                    w(f"\t\t\t\tk {k} {rnd.uniform(-30, 30):.4f}\n\t\t\t\tsl 1\n\t\t\t\tspl\n\t\t\t\tsm\n")
                w("\t\t\t\t}\n\t\t\tinterpStyleLocked 0\n\t\t\t}\n")
            w("\t\t}\n\t}\n")
        w("figure\n\t{\n\tname Bench\n\troot part0:1\n")
        for a in range(1, actors):
            w(f"\taddChild part{a}:1\n\t\tpart{a - 1}:1\n")
        w("\t}\n}\n")


if __name__ == "__main__":
    main()
