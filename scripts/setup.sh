#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks, then configures and builds into build/ (or $1).
# Safe to run again: it installs nothing that is present and rebuilds incrementally.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake ninja-build g++ qt6-base-dev zlib1g-dev libgtest-dev clang clang-format libclang-rt-14-dev
          python3 libtinygltf-dev)
scripts/apt-install.sh setup "${packages[@]}"

build="${1:-build}"
shift || true
if [ ! -f "$build/build.ninja" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
fi
cmake --build "$build"
