#!/usr/bin/env bash
# Builds the test suite with AddressSanitizer and UndefinedBehaviorSanitizer and runs it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh build-asan -DOV_SANITIZE=ON -DOV_BENCH=OFF
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:strict_string_checks=1"
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
ctest --test-dir build-asan --output-on-failure -j2
