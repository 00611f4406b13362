#!/usr/bin/env bash
# Installs the open OBJ readers that obj_bench compares with (Debian's tinyobjloader) when missing,
# and reconfigures the build folder ($1, default build) so that obj_bench links them.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build}"
if ! dpkg-query -W -f='${Status}' libtinyobjloader-dev 2>/dev/null | grep -q "install ok installed"; then
  echo "bench: installing libtinyobjloader-dev"
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq libtinyobjloader-dev >/dev/null
fi
if [ -f "$build/build.ninja" ]; then
  cmake "$build" >/dev/null
else
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
fi
