#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for N seconds (default 60) from its seed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
CC=clang CXX=clang++ scripts/setup.sh build-fuzz -DOV_FUZZ=ON -DOV_TESTS=OFF -DOV_BENCH=OFF \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
for target in build-fuzz/bin/fuzz_*; do
  name=$(basename "$target")
  corpus="fuzz/corpus-$name"
  mkdir -p "$corpus"
  echo "fuzz: $name for ${seconds}s"
  "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
    "$corpus" "fuzz/seeds/$name" 2>&1 | tail -n 5
done
