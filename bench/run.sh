#!/usr/bin/env bash
# Runs every benchmark on SQLite and on two throwaway PostgreSQL clusters: the tests' one (fsync
# off) and a durable one (PostgreSQL's defaults, fsync on). Each PostgreSQL figure is printed with
# its ratio to SQLite. `bench/run.sh NAME...` runs only the benchmarks whose name contains NAME.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
bash "$root/scripts/build.sh" >/dev/null
pgdir=$(mktemp -d)
cluster() { env -u ORVO_TEST_PG bash "$root/tests/support/pg_cluster.sh" "$@"; }
trap 'cluster stop "$pgdir/test"; cluster stop "$pgdir/durable"; rm -rf "$pgdir"' EXIT
cluster start "$pgdir/test" >/dev/null
cluster start "$pgdir/durable" durable >/dev/null
export ORVO_TEST_PG=$(cat "$pgdir/test/endpoint")
export ORVO_BENCH_PG_DURABLE=$(cat "$pgdir/durable/endpoint")
export QT_QPA_PLATFORM=offscreen
for b in $(find "$build/bench" -maxdepth 2 -type f -name 'orvo_bench_*' -perm -u+x | sort); do
  name=$(basename "$b")
  if [ $# -gt 0 ]; then
    wanted=no
    for w in "$@"; do [[ $name == *"$w"* ]] && wanted=yes; done
    [ $wanted = yes ] || continue
  fi
  echo "== $name"
  "$b"
done
