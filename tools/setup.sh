#!/usr/bin/env bash
# Installs what building and testing VELDRIX needs on Debian 12, as root. Installs nothing
# when every package is already there (except on CI, which always starts from a fresh list).
set -euo pipefail

packages=(
  cmake ninja-build g++ ccache pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-5compat-dev qt6-svg-dev
  qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools libgl-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  fonts-dejavu-core fonts-wqy-microhei
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ "${#missing[@]}" -gt 0 ] || [ "${CI:-}" = "true" ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update
  apt-get install -y --no-install-recommends "${packages[@]}"
fi
