#!/usr/bin/env bash
# Builds (installing what is missing) and imports the bundled examples through the headless host.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh build
# The doll's binary morph file is written from its text list (the checked-in copy is the same bytes).
python3 bench/write_pzmd.py examples/poser/Runtime/libraries/character/doll.pmd \
  --from examples/poser/Runtime/libraries/character/doll.pmd.txt
echo "== examples/obj/table.obj"
build/bin/ovimport examples/obj/table.obj
echo
echo "== examples/poser/Runtime/libraries/scene/studio.pz3 (content folder examples/poser)"
build/bin/ovimport examples/poser/Runtime/libraries/scene/studio.pz3 --content examples/poser
echo
lib=examples/poser/Runtime/libraries
echo "== the doll with its conforming hat, waving from frame 10 (one scene), written as glTF to build/doll.glb"
build/bin/ovimport $lib/character/doll.cr2 --select doll $lib/character/dollHat.cr2 \
  --at-frame 10 $lib/pose/wave.pz2 --answer yes --content examples/poser --gltf build/doll.glb --frame 20
