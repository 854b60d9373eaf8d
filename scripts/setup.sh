#!/usr/bin/env bash
# Installs the Debian packages Orvo needs to build, run and test. Does nothing when they are there.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config clang-format
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libqt6sql6-psql
  qt6-serialport-dev libqt6serialport6
  libgl-dev
  libcurl4-openssl-dev libshp-dev libzip-dev libboost-dev
  libgtest-dev googletest
  postgresql postgresql-client qt6-translations-l10n
  xvfb xauth xdotool x11-utils imagemagick
  python3 python3-pyftpdlib python3-aiosmtpd dbview
  poppler-utils ccache
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
