#!/usr/bin/env bash
# Configures and builds Orvo into build/ (or $ORVO_BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
# With Ninja, moc is not re-run for a header that arrived after the last build (a pull or a
# merge), and the link then misses its vtable: make every target rescan its headers. The scan is
# cached, so this costs little.
find "$build" -path '*_autogen/timestamp' -delete 2>/dev/null || true
ninja -C "$build" "$@"
