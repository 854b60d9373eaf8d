#!/usr/bin/env bash
# Sets up the machine, builds Orvo, creates the demo store on first use and starts the program.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh" orvo
export ORVO_HOME=${ORVO_HOME:-$HOME/.local/share/Orvo}
if [ ! -f "$ORVO_HOME/data/srvsql.txt" ]; then
  "$build/orvo" db init --demo
fi
exec "$build/orvo"
