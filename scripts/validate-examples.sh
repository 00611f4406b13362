#!/usr/bin/env bash
# Exports every bundled example as .glb and as .gltf and checks each file with the Khronos glTF
# validator: any error or warning fails, and so does a validator that is not installed.
# usage: scripts/validate-examples.sh [path/to/ovimport]
set -euo pipefail
cd "$(dirname "$0")/.."
ovimport="${1:-build/bin/ovimport}"
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT
content=(--content examples/poser)
examples=(examples/obj/table.obj
          examples/poser/Runtime/libraries/character/doll.cr2
          examples/poser/Runtime/libraries/props/ball.ppz
          examples/poser/Runtime/libraries/scene/studio.pz3)
files=()
for e in "${examples[@]}"; do
  name="$(basename "${e%.*}")"
  for ext in glb gltf; do
    mkdir -p "$out/$ext"
    "$ovimport" "$e" "${content[@]}" --no-tree --gltf "$out/$ext/$name.$ext" 2>"$out/$name.$ext.log" ||
      { cat "$out/$name.$ext.log" >&2; echo "validate-examples: exporting $e failed" >&2; exit 1; }
    files+=("$out/$ext/$name.$ext")
  done
done
node scripts/validate-gltf.js "${files[@]}"
