#!/usr/bin/env python3
"""Time and memory of imports of hostile or huge input, through the command-line host.

  hostile_bench.py [BUILD_DIR] [--only NAME...]

Generates every input under BUILD_DIR/bench-inputs/hostile (nothing large is checked in), imports
each with build/bin/ovimport under a time limit, and prints the wall time, the peak resident memory,
the CPU time (user and system; the steadier figure on a busy machine), the exit status and the last
line of the import log. Scaling rows import 1x, 4x and 16x as many
figures, props and lights, so that the time per object can be compared across sizes.
"""
import gzip
import os
import subprocess
import sys
import tempfile
import time

TIME_LIMIT = 120


def write(path, text, mode="w"):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, mode) as f:
        f.write(text)
    return path


def tiny_obj(content):
    return write(os.path.join(content, "Runtime", "Geometries", "bench", "tiny.obj"),
                 "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\ng BODY\ng hip\nf 1 2 3 4\n")


def many_objects(folder, content, figures, props, lights):
    """A scene of many figures (two actors each), props and lights."""
    tiny_obj(content)
    out = ["{", "version", "\t{", "\tnumber 4.01", "\t}"]
    for i in range(1, figures + 1):
        out += ["figureResFile :Runtime:Geometries:bench:tiny.obj",
                f"actor BODY:{i}", "\t{", "\tstorageOffset 0 0 0", "\t}",
                f"actor hip:{i}", "\t{", "\tstorageOffset 0 0 0", "\tgeomHandlerGeom 13 hip", "\t}",
                f"actor hip:{i}", "\t{", "\tname hip", "\ton", f"\tparent BODY:{i}", "\t}",
                "figure", "\t{", f"\tname Figure{i}", f"\troot BODY:{i}", "\t}"]
    for i in range(props):
        out += [f"prop box_{i}", "\t{", "\tgeomCustom", "\t\t{", "\t\tv 0 0 0", "\t\tv 1 0 0",
                "\t\tv 0 1 0", "\t\tf 1 2 3", "\t\t}", "\t}",
                f"prop box_{i}", "\t{", "\tname box", "\ton", "\t}"]
    for i in range(lights):
        out += [f"light LIGHT_{i}", "\t{", "\ton", "\torigin 0 2 1", "\t}"]
    out.append("}")
    return write(os.path.join(folder, f"many-{figures}.pz3"), "\n".join(out) + "\n")


def deep_chain(folder, depth):
    out = ["{"]
    for i in range(depth):
        out += [f"prop p{i}", "\t{", "\tgeomCustom", "\t\t{", "\t\tv 0 0 0", "\t\t}", "\t}"]
    for i in range(1, depth):
        out += [f"prop p{i}", "\t{", f"\tparent p{i - 1}", "\t}"]
    out.append("}")
    return write(os.path.join(folder, "deep.pz3"), "\n".join(out) + "\n")


def include_fanout(folder, content, levels):
    lib = os.path.join(content, "Runtime", "libraries", "props")
    for level in range(levels):
        nxt = f"readScript :Runtime:libraries:props:level{level + 1}.pp2\n" if level + 1 < levels else ""
        write(os.path.join(lib, f"level{level}.pp2"), "{\n" + nxt + nxt + "}\n")
    return write(os.path.join(folder, "fanout.pz3"), "{\nreadScript :Runtime:libraries:props:level0.pp2\n}\n")


def brace_bomb(folder, gib):
    path = os.path.join(folder, "bomb.pzz")
    chunk = b"{\n" * (1 << 20)
    if not os.path.exists(path):
        with gzip.open(path, "wb", compresslevel=9) as f:
            for _ in range(gib * 1024):
                f.write(chunk)
    return path


def truncated_gz(folder):
    text = "{\n" + "".join(f"prop p{i}\n\t{{\n\tgeomCustom\n\t\t{{\n\t\tv 0 0 0\n\t\t}}\n\t}}\n"
                           for i in range(20000)) + "}\n"
    data = gzip.compress(text.encode())
    return write(os.path.join(folder, "cut.pzz"), data[: len(data) // 2], "wb")


def fifo_include(folder, content):
    lib = os.path.join(content, "Runtime", "libraries", "props")
    os.makedirs(lib, exist_ok=True)
    pipe = os.path.join(lib, "pipe.pp2")
    if not os.path.exists(pipe):
        os.mkfifo(pipe)
    return write(os.path.join(folder, "fifo.pz3"), "{\nreadScript :Runtime:libraries:props:pipe.pp2\n}\n")


def wide_face(folder):
    verts = "".join(f"v {i} 0 0\n" for i in range(300))
    return write(os.path.join(folder, "wide.obj"), verts + "f " + " ".join(str(i + 1) for i in range(300)) + "\n")


def utf16(folder):
    return write(os.path.join(folder, "utf16.obj"), "\ufeffv 1 2 3\nv 4 5 6\nv 7 8 9\nf 1 2 3\n".encode("utf-16-le"),
                 "wb")


def run(ovimport, args):
    """Wall time, peak resident MB, exit status, log lines and the last one. The peak comes from
    /usr/bin/time: the rusage of a child forked from this (large) interpreter would count its pages."""
    start = time.monotonic()
    with tempfile.TemporaryFile() as err_file, tempfile.NamedTemporaryFile("r") as peak_file:
        wrapper = ["/usr/bin/time", "-q", "-f", "%M %U %S", "-o", peak_file.name] if os.path.exists("/usr/bin/time") else []
        try:
            status = subprocess.run(wrapper + [ovimport, "--no-tree"] + args, stdout=subprocess.DEVNULL,
                                    stderr=err_file, timeout=TIME_LIMIT).returncode
        except subprocess.TimeoutExpired:
            status = "timeout"
        seconds = time.monotonic() - start
        err_file.seek(0)
        err = err_file.read().decode("utf-8", "replace")
        peak_text = peak_file.read().strip().splitlines()
    fields = peak_text[-1].split() if peak_text else []
    peak = float(fields[0]) / 1024.0 if len(fields) == 3 else float("nan")
    cpu = float(fields[1]) + float(fields[2]) if len(fields) == 3 else float("nan")
    lines = [l for l in err.splitlines() if l.strip()]
    return seconds, cpu, peak, status, len(lines), (lines[-1] if lines else "")


def main():
    args = sys.argv[1:]
    build = args[0] if args and not args[0].startswith("--") else "build"
    only = args[args.index("--only") + 1:] if "--only" in args else None
    ovimport = os.path.join(build, "bin", "ovimport")
    folder = os.path.join(build, "bench-inputs", "hostile")
    content = os.path.join(folder, "content")
    os.makedirs(folder, exist_ok=True)
    cases = []
    for scale in (1, 4, 16):
        cases.append((f"scale {scale:2}x: {625 * scale} figures, {2500 * scale} props, {625 * scale} lights",
                      lambda s=scale: [many_objects(folder, content, 625 * s, 2500 * s, 625 * s), "--content",
                                       content]))
    cases += [
        ("parent chain 100,000 deep, dumped as JSON", lambda: [deep_chain(folder, 100000), "--json", os.devnull]),
        ("31 include levels, each including the next twice",
         lambda: [include_fanout(folder, content, 31), "--content", content]),
        ("2 GiB of braces, gzip-compressed", lambda: [brace_bomb(folder, 2)]),
        ("compressed scene cut in half", lambda: [truncated_gz(folder)]),
        ("include that is a FIFO", lambda: [fifo_include(folder, content), "--content", content]),
        ("face of 300 corners", lambda: [wide_face(folder)]),
        ("UTF-16 OBJ", lambda: [utf16(folder)]),
    ]
    print(f"{'case':58} {'wall s':>7} {'cpu s':>6} {'peak MB':>8} {'exit':>7} {'log':>5}  last log line")
    for name, make in cases:
        if only and not any(o in name for o in only):
            continue
        seconds, cpu, peak, status, nlog, last = run(ovimport, make())
        print(f"{name:58} {seconds:7.2f} {cpu:6.2f} {peak:8.1f} {str(status):>7} {nlog:5}  {last[:90]}", flush=True)


if __name__ == "__main__":
    main()
