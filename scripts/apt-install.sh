#!/usr/bin/env bash
# Installs those of the given Debian packages that are not installed yet; does nothing otherwise.
#   scripts/apt-install.sh WHO PACKAGE...   (WHO prefixes the one line it prints)
set -euo pipefail
who="$1"
shift
missing=()
for p in "$@"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "$who: installing ${missing[*]}"
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi
