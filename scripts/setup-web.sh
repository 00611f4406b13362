#!/usr/bin/env bash
# Installs the node packages of the glTF checks (the validator; three.js and puppeteer-core for the
# picture) into node_modules/ from package-lock.json, and with --chromium also Debian's chromium
# (only scripts/render-gltf.sh needs it). Fails loudly when a package cannot be had.
set -euo pipefail
cd "$(dirname "$0")/.."

need=()
command -v npm >/dev/null || need+=(nodejs npm)
[ "${1:-}" = "--chromium" ] && need+=(chromium)
missing=()
for p in "${need[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup-web: installing ${missing[*]}"
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi

if [ ! -f node_modules/.package-lock.json ] || [ package-lock.json -nt node_modules/.package-lock.json ]; then
  if [ -f package-lock.json ]; then
    PUPPETEER_SKIP_DOWNLOAD=1 npm ci --no-audit --no-fund --loglevel=error
  else
    PUPPETEER_SKIP_DOWNLOAD=1 npm install --no-audit --no-fund --loglevel=error
  fi
fi
node -e "require('gltf-validator')" || { echo "setup-web: gltf-validator is not installed" >&2; exit 1; }
