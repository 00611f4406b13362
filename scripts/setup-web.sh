#!/usr/bin/env bash
# Installs the node packages of the glTF checks (the validator; three.js and puppeteer-core for the
# picture) into node_modules/ from package-lock.json, and with --chromium also Debian's chromium
# (only scripts/render-gltf.sh needs it). Fails loudly when a package cannot be had.
set -euo pipefail
cd "$(dirname "$0")/.."

need=()
command -v npm >/dev/null || need+=(nodejs npm)
[ "${1:-}" = "--chromium" ] && need+=(chromium)
[ ${#need[@]} -eq 0 ] || scripts/apt-install.sh setup-web "${need[@]}"

if [ ! -f node_modules/.package-lock.json ] || [ package-lock.json -nt node_modules/.package-lock.json ]; then
  if [ -f package-lock.json ]; then
    PUPPETEER_SKIP_DOWNLOAD=1 npm ci --no-audit --no-fund --loglevel=error
  else
    PUPPETEER_SKIP_DOWNLOAD=1 npm install --no-audit --no-fund --loglevel=error
  fi
fi
node -e "require('gltf-validator')" || { echo "setup-web: gltf-validator is not installed" >&2; exit 1; }
