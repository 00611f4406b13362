#!/usr/bin/env python3
"""Counts non-blank, non-comment lines of .cpp/.h files: tests against the product code (benchmarks
and fuzz targets are neither)."""
import os
import re
import sys

root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
skip = {"build", ".git"}


def code_lines(path):
    n = 0
    in_block = False
    with open(path, encoding="utf-8", errors="replace") as f:
        for line in f:
            s = line.strip()
            if in_block:
                if "*/" in s:
                    in_block = False
                    s = s.split("*/", 1)[1].strip()
                else:
                    continue
            if s.startswith("/*"):
                if "*/" not in s:
                    in_block = True
                continue
            if not s or s.startswith("//"):
                continue
            n += 1
    return n


tests = code = 0
per_dir = {}
per_file = []
for d, dirs, files in os.walk(root):
    dirs[:] = [x for x in dirs if x not in skip and not x.startswith("build")]
    for name in files:
        if not re.search(r"\.(cpp|h)$", name):
            continue
        path = os.path.join(d, name)
        rel = os.path.relpath(path, root)
        n = code_lines(path)
        top = rel.split(os.sep)[0]
        per_dir[top] = per_dir.get(top, 0) + n
        per_file.append((n, rel))
        if top == "tests":
            tests += n
        elif top not in ("bench", "fuzz"):
            code += n
if "--files" in sys.argv:
    for n, rel in sorted(per_file):
        print(f"{n:6} {rel}")
for k in sorted(per_dir):
    print(f"{k:10} {per_dir[k]:6}")
print(f"tests {tests} / code {code} = {100.0 * tests / max(code, 1):.0f}%")
if "--check" in sys.argv:
    sys.exit(0 if tests <= code / 3 else 1)
