#!/usr/bin/env bash
# Generates the OBJ benchmark inputs if they are missing, builds obj_bench (RelWithDebInfo, in
# build/ or $BUILD_DIR) and runs it on them.
#
#   bench/run_obj_bench.sh [INPUT_DIR] [RUNS]     INPUT_DIR defaults to build/bench-inputs
set -euo pipefail
cd "$(dirname "$0")/.."
inputs="${1:-build/bench-inputs}"
runs="${2:-5}"
bench/make_inputs.sh "$inputs" obj
build="${BUILD_DIR:-build}"
bench/setup_peers.sh "$build"
echo "obj bench: $build/ is a $(sed -n 's/^CMAKE_BUILD_TYPE:STRING=//p' "$build/CMakeCache.txt") build"
cmake --build "$build" --target obj_bench
"$build/bin/obj_bench" --runs "$runs" "$inputs/poser.obj" "$inputs/grid.obj"
