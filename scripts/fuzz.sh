#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for N seconds (default 60) from its seed corpus.
# A finding is written to build-fuzz/<target>-crash-... (or -leak-, -timeout-); replay it with
# build-fuzz/bin/<target> FILE and, once fixed, add it to fuzz/seeds/<target>/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
CC=clang CXX=clang++ scripts/setup.sh build-fuzz -DOV_FUZZ=ON -DOV_TESTS=OFF -DOV_BENCH=OFF \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
status=0
for target in build-fuzz/bin/fuzz_*; do
  name=$(basename "$target")
  corpus="fuzz/corpus-$name"
  log="build-fuzz/$name.log"
  mkdir -p "$corpus"
  echo "fuzz: $name for ${seconds}s"
  if "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
      -artifact_prefix="build-fuzz/$name-" "$corpus" "fuzz/seeds/$name" >"$log" 2>&1; then
    grep -E "^(#[0-9]+ +DONE|Done )" "$log" | tail -n 2
  else
    echo "fuzz: $name FAILED (full output in $log):"
    grep -vE '^"|^#{6}' "$log" | tail -n 60
    status=1
  fi
done
exit $status
