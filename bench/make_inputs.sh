#!/usr/bin/env bash
# Writes the benchmark inputs into INPUT_DIR (default build/bench-inputs) unless they are there:
#   obj     poser.obj and grid.obj with their MTL libraries (bench/gen_obj.py)
#   poser   bench.cr2, a large figure file of keyed channels and deltas (bench/gen_poser.py)
#   figure  figure/figure.cr2, a figure cut from poser.obj, with its content folder (bench/gen_figure.py)
#   morphs  morphs/, 300 text morphs and a 200 MB binary morph file (bench/gen_morphs.py)
#
#   bench/make_inputs.sh [INPUT_DIR] [obj|poser|figure|morphs|all]
set -euo pipefail
cd "$(dirname "$0")/.."
inputs="${1:-build/bench-inputs}"
what="${2:-all}"
mkdir -p "$inputs"
want() { [ "$what" = all ] || [ "$what" = "$1" ]; }
if want obj || want figure; then
  for name in poser grid; do
    if [ ! -f "$inputs/$name.obj" ] || [ ! -f "$inputs/$name.mtl" ]; then
      echo "bench inputs: generating $inputs/$name.obj"
      python3 bench/gen_obj.py "$inputs" "$name" >/dev/null
    fi
  done
fi
if want poser && [ ! -f "$inputs/bench.cr2" ]; then
  echo "bench inputs: generating $inputs/bench.cr2"
  python3 bench/gen_poser.py "$inputs/bench.cr2" >/dev/null
fi
if want figure && { [ ! -f "$inputs/figure/figure.cr2" ] || [ bench/gen_figure.py -nt "$inputs/figure/figure.cr2" ]; }; then
  echo "bench inputs: generating $inputs/figure/figure.cr2"
  python3 bench/gen_figure.py "$inputs/poser.obj" "$inputs/figure" "$inputs/figure/figure.cr2" >/dev/null
fi
if want morphs && [ ! -f "$inputs/morphs/Runtime/libraries/character/big.pmd" ]; then
  echo "bench inputs: generating $inputs/morphs"
  python3 bench/gen_morphs.py "$inputs/morphs" >/dev/null
fi
