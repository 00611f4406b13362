#!/usr/bin/env bash
# Generates the OBJ benchmark inputs if they are missing, builds obj_bench (RelWithDebInfo, in
# build/ or $BUILD_DIR) and runs it on them.
#
#   bench/run_obj_bench.sh [INPUT_DIR] [RUNS]     INPUT_DIR defaults to /tmp/ov-bench
set -euo pipefail
cd "$(dirname "$0")/.."
inputs="${1:-/tmp/ov-bench}"
runs="${2:-5}"
generator="$PWD/../shared/bench/gen_obj.py"
[ -f "$generator" ] || generator="/work/shared/bench/gen_obj.py"
for name in poser grid; do
  if [ ! -f "$inputs/$name.obj" ] || [ ! -f "$inputs/$name.mtl" ]; then
    echo "obj bench: generating $inputs/$name.obj"
    python3 "$generator" "$inputs" "$name" >/dev/null
  fi
done
build="${BUILD_DIR:-build}"
if [ ! -f "$build/build.ninja" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
fi
echo "obj bench: $build/ is a $(sed -n 's/^CMAKE_BUILD_TYPE:STRING=//p' "$build/CMakeCache.txt") build"
cmake --build "$build" --target obj_bench
"$build/bin/obj_bench" --runs "$runs" "$inputs/poser.obj" "$inputs/grid.obj"
