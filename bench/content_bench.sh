#!/usr/bin/env bash
# Content resolution: a scene naming 10,000 files of a 50,000-file content tree, imported through
# ovimport with every reference written exactly as on disk and with every name in another letter
# case, and the same with half the references, in the same run. The folded imports must find the
# same files (their scene dumps are compared) and grow linearly with the references.
#
#   bench/content_bench.sh [RUNS]
set -euo pipefail
cd "$(dirname "$0")/.."
runs="${1:-3}"
build="${BUILD_DIR:-build}"
inputs="${CONTENT_BENCH_INPUTS:-$build/bench-inputs/content}"
if [ ! -f "$inputs/folded_half.pz3" ]; then
  echo "bench inputs: generating $inputs (50,000 files)"
  python3 bench/gen_content_tree.py "$inputs"
fi
cmake --build "$build" --target ovimport PoserImporters >/dev/null

run() { # scene [host options]
  local scene="$1"
  shift
  "$build/bin/ovimport" "$inputs/$scene.pz3" --content "$inputs/content" --no-tree "$@"
}

# Once each, untimed: warms the file system caches and checks that both spellings find every file.
for scene in exact folded; do
  run "$scene" --no-mesh-data --json "$inputs/$scene.json"
done
python3 - "$inputs" <<'EOF'
import json, sys
def paths(value, found):  # geometry source paths and shape names (the files' names), in order
    if isinstance(value, dict):
        if value.get("class") == "OvGeomSourceFileData":
            found.append(value["path"])
        elif value.get("class") == "OvPolyShape":
            found.append(value["name"])
        for v in value.values():
            paths(v, found)
    elif isinstance(value, list):
        for v in value:
            paths(v, found)
    return found
found = {}
for scene in ("exact", "folded"):
    doc = json.load(open(f"{sys.argv[1]}/{scene}.json"))
    if doc["log"]:
        sys.exit(f"{scene}.pz3 logged {len(doc['log'])} lines, the first: {doc['log'][0]['text']}")
    found[scene] = paths(doc["scene"], [])
if found["exact"] != found["folded"]:
    sys.exit("the folded references found other files than the exact ones")
print(f"both scenes found the same files ({len(found['exact'])} records and shapes)")
EOF

declare -A best
for ((r = 0; r < runs; r++)); do
  for scene in exact folded exact_half folded_half; do
    start=$(date +%s%N)
    run "$scene"
    ms=$((($(date +%s%N) - start) / 1000000))
    if [ -z "${best[$scene]:-}" ] || [ "$ms" -lt "${best[$scene]}" ]; then best[$scene]=$ms; fi
  done
done
files=$(find "$inputs/content" -type f | wc -l)
printf '%d files in the content tree; best of %d runs of the whole ovimport process (no output):\n' "$files" "$runs"
printf '  %-12s %6s %8s\n' "scene" "refs" "ms"
for scene in exact_half exact folded_half folded; do
  refs=$(grep -cE '^\s*(objFileGeom|objFile) ' "$inputs/$scene.pz3")
  printf '  %-12s %6d %8d\n' "$scene" "$refs" "${best[$scene]}"
done
