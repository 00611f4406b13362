#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks, then configures and builds into build/ (or $1).
# Safe to run again: it installs nothing that is present and rebuilds incrementally.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake ninja-build g++ qt6-base-dev zlib1g-dev libgtest-dev clang clang-format libclang-rt-14-dev
          python3 libtinygltf-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi

build="${1:-build}"
shift || true
if [ ! -f "$build/build.ninja" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
fi
cmake --build "$build"
