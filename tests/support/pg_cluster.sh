#!/usr/bin/env bash
# Starts or stops the throwaway PostgreSQL cluster of a test run.
#   pg_cluster.sh start DIR [durable]   initdb + start on a free loopback port; writes
#                                       DIR/endpoint. Tests run with fsync off; "durable" keeps
#                                       PostgreSQL's safe defaults (benchmarks measure both).
#   pg_cluster.sh stop DIR              stops it and removes its files
# When ORVO_TEST_PG names a server, there is nothing to do. As root the server runs as the
# unprivileged 'postgres' user (PostgreSQL refuses to run as root).
set -euo pipefail
action=$1
dir=$2
mode=${3:-test}
[ -n "${ORVO_TEST_PG:-}" ] && [ "$mode" = test ] && exit 0

pgbin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -x "$pgbin/initdb" ] || { echo "PostgreSQL server binaries not found; run scripts/setup.sh" >&2; exit 1; }

as_pg() {
  if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}

case "$action" in
start)
  if [ -f "$dir/data/postmaster.pid" ]; then
    as_pg "$pgbin/pg_ctl" -D "$dir/data" -m immediate stop >/dev/null 2>&1 || true
  fi
  rm -rf "$dir"
  mkdir -p "$dir"
  data=$(mktemp -d /tmp/orvo-pg.XXXXXX)
  chmod 755 "$data"
  [ "$(id -u)" -eq 0 ] && chown postgres:postgres "$data"
  ln -s "$data" "$dir/data"
  port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1]); s.close()')
  as_pg "$pgbin/initdb" -D "$data/db" -U orvo --auth=trust -E UTF8 --locale=C.UTF-8 >"$dir/initdb.log" 2>&1
  opts="-p $port -k $data -c listen_addresses=127.0.0.1 -c max_connections=300"
  if [ "$mode" != durable ]; then
    opts="$opts -c fsync=off -c synchronous_commit=off -c full_page_writes=off"
  fi
  as_pg "$pgbin/pg_ctl" -D "$data/db" -l "$data/server.log" -w -t 60 -o "$opts" \
    start >"$dir/start.log" 2>&1 || { cat "$dir/start.log" "$data/server.log" >&2; exit 1; }
  echo "127.0.0.1:$port" >"$dir/endpoint"
  echo "PostgreSQL test cluster on 127.0.0.1:$port"
  ;;
stop)
  if [ -L "$dir/data" ]; then
    data=$(readlink "$dir/data")
    as_pg "$pgbin/pg_ctl" -D "$data/db" -m fast -w stop >/dev/null 2>&1 || true
    rm -rf "$data"
  fi
  rm -rf "$dir"
  ;;
esac
