#!/usr/bin/env bash
# Sets up the machine, builds Orvo and runs every test (both database engines, GUI offscreen).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh"
export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure -j "$(nproc)" "$@"
