#!/usr/bin/env bash
# Exports the bundled studio scene (or renders the glTF file given) and draws it with three.js in
# headless Chromium: the scene at rest and at a later frame of its animation, side by side.
# usage: scripts/render-gltf.sh [IN.glb|IN.gltf] [OUT.png] [SECONDS]   (default: docs/doll.png, 0.5 s)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-web.sh --chromium
in="${1:-}"
out="${2:-docs/doll.png}"
if [ -z "$in" ]; then
  [ -x build/bin/ovimport ] || scripts/setup.sh build
  in="$(mktemp -d)/studio.glb"
  build/bin/ovimport examples/poser/Runtime/libraries/scene/studio.pz3 --content examples/poser \
    --no-tree --gltf "$in"
fi
node scripts/render/render.mjs "$in" "$out" "${3:-0.5}"
