#!/usr/bin/env bash
# Runs every benchmark; the PostgreSQL figures come from a throwaway cluster.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
bash "$root/scripts/build.sh" >/dev/null
pgdir=$(mktemp -d)
trap 'env -u ORVO_TEST_PG bash "$root/tests/support/pg_cluster.sh" stop "$pgdir/pg"; rm -rf "$pgdir"' EXIT
bash "$root/tests/support/pg_cluster.sh" start "$pgdir/pg" >/dev/null
export ORVO_TEST_PG=$(cat "$pgdir/pg/endpoint")
export QT_QPA_PLATFORM=offscreen
for b in $(find "$build/bench" -maxdepth 2 -type f -name 'orvo_bench_*' -perm -u+x | sort); do
  echo "== $(basename "$b")"
  "$b"
done
