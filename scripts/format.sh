#!/usr/bin/env bash
# Formats every C++ file of the repository with clang-format (style in .clang-format).
#   scripts/format.sh            rewrite the files in place
#   scripts/format.sh --check    change nothing; list the files clang-format would change, exit 1 if any
set -euo pipefail
cd "$(dirname "$0")/.."
command -v clang-format >/dev/null || { echo "format: clang-format is missing (scripts/setup.sh installs it)"; exit 2; }
mapfile -t files < <(git ls-files -co --exclude-standard -- '*.cpp' '*.h')
if [ "${1:-}" = "--check" ]; then
  bad=()
  for f in "${files[@]}"; do
    [ -f "$f" ] || continue
    clang-format --dry-run --Werror "$f" >/dev/null 2>&1 || bad+=("$f")
  done
  if [ ${#bad[@]} -gt 0 ]; then
    echo "format: clang-format would change ${#bad[@]} file(s) (run scripts/format.sh):"
    printf '  %s\n' "${bad[@]}"
    exit 1
  fi
  echo "format: ${#files[@]} files clean"
else
  clang-format -i "${files[@]}"
fi
