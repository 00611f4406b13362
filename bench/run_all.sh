#!/usr/bin/env bash
# Every benchmark on inputs generated inside the build folder: the OBJ reader, the Poser read driver,
# the whole figure import and morph targets, each against its baseline measured in the same run;
# materials with their images and the texture search by file name.
#
#   bench/run_all.sh [RUNS]
set -euo pipefail
cd "$(dirname "$0")/.."
runs="${1:-5}"
build="${BUILD_DIR:-build}"
inputs="$build/bench-inputs"
bench/make_inputs.sh "$inputs" all
bench/setup_peers.sh "$build"
cmake --build "$build" --target obj_bench poser_bench figure_bench material_bench morph_bench export_bench
echo "== OBJ reader"
"$build/bin/obj_bench" --runs "$runs" "$inputs/poser.obj" "$inputs/grid.obj"
echo "== Poser read driver"
"$build/bin/poser_bench" "$inputs/bench.cr2" "$runs"
echo "== Figure import"
"$build/bin/figure_bench" "$inputs/figure/figure.cr2" "$inputs/figure" "$inputs/poser.obj" "$runs"
echo "== Materials and texture search"
"$build/bin/material_bench" "$inputs/materials"
echo "== Morph targets"
"$build/bin/morph_bench" "$inputs/morphs" "$runs"
echo "== glTF export (a figure with 300 morphs; .glb, then .gltf with its .bin)"
python3 bench/export_bench_morphs.py "$inputs/poser.obj" "$inputs/figure/figure.cr2" "$inputs/figure/figure300.cr2"
"$build/bin/export_bench" "$inputs/figure/figure300.cr2" "$inputs/figure" "$build/bench-export.glb" "$runs"
"$build/bin/export_bench" "$inputs/figure/figure300.cr2" "$inputs/figure" "$build/bench-export.gltf" "$runs"
