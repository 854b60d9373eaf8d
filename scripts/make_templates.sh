#!/usr/bin/env bash
# Rewrites the exchange templates of Estructura/ from their layouts
# (src/exchange/package/templates.cpp), after a layout or an exported table changed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
bash "$root/scripts/build.sh" orvo_make_templates
"$build/src/exchange/package/orvo_make_templates" "$root/Estructura"
