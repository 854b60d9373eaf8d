#!/usr/bin/env bash
# Sets up the machine, builds Orvo, creates the demo store on first use, starts the emulated fiscal
# printer and card terminal for this register and a local mail server for the packages, and starts
# the program.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ORVO_BUILD_DIR:-$root/build}
# ORVO_RUN_BUILT=1: the program is built already (the end-to-end tests start it this way).
if [ -z "${ORVO_RUN_BUILT:-}" ]; then
  bash "$root/scripts/setup.sh"
  bash "$root/scripts/build.sh" orvo
fi
export ORVO_HOME=${ORVO_HOME:-$HOME/.local/share/Orvo}
orvo="$build/orvo"

if [ ! -f "$ORVO_HOME/data/srvsql.txt" ]; then
  "$orvo" db init --demo
else
  "$orvo" db init >/dev/null
fi

# Waits (up to 30 s) for the first line of a service's output (its device or address) and prints it.
first_line() {
  local file=$1 pid=$2
  # A whole line only: a service still writing its address must not be read halfway.
  for _ in $(seq 1 300); do
    if [ -f "$file" ] && [ "$(wc -l <"$file")" -ge 1 ]; then head -n 1 "$file"; return 0; fi
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  echo "no arrancó: $file" >&2
  return 1
}

pids=()
cleanup() { for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done; }
trap cleanup EXIT

mkdir -p "$ORVO_HOME/fiscal" "$ORVO_HOME/vpos"
# The last run's addresses go first: a file still holding one must not be read as this run's.
rm -f "$ORVO_HOME/fiscal/puerto.txt" "$ORVO_HOME/vpos/url.txt" "$ORVO_HOME/correo/puerto.txt"
# --caja: the printer carries this register's serial and the company's RIF and header lines.
"$orvo" fiscal-emulator --caja --state "$ORVO_HOME/fiscal/memoria.json" \
  --tickets "$ORVO_HOME/fiscal/tickets" --control "$ORVO_HOME/fiscal/control.txt" >"$ORVO_HOME/fiscal/puerto.txt" 2>"$ORVO_HOME/fiscal/emulador.log" &
pids+=($!)
port=$(first_line "$ORVO_HOME/fiscal/puerto.txt" "${pids[-1]}")
"$orvo" fiscal-port "$port"
echo "Impresora fiscal emulada en $port; tickets en $ORVO_HOME/fiscal/tickets; fallas en $ORVO_HOME/fiscal/control.txt"

"$orvo" card-emulator --state "$ORVO_HOME/vpos/estado.json" \
  --vouchers "$ORVO_HOME/vpos/vouchers" >"$ORVO_HOME/vpos/url.txt" 2>"$ORVO_HOME/vpos/emulador.log" &
pids+=($!)
url=$(first_line "$ORVO_HOME/vpos/url.txt" "${pids[-1]}")
"$orvo" card-terminal "$url"

# Head office's mailbox for the demo: what the closing mails lands in $ORVO_HOME/correo.
mkdir -p "$ORVO_HOME/correo"
/usr/bin/python3 "$root/scripts/smtp_server.py" "$ORVO_HOME/correo" \
  >"$ORVO_HOME/correo/puerto.txt" 2>"$ORVO_HOME/correo/servidor.log" &
pids+=($!)
smtp=$(first_line "$ORVO_HOME/correo/puerto.txt" "${pids[-1]}")
"$orvo" mail-account "127.0.0.1:$smtp" >/dev/null || true
echo "Correo de la casa matriz en 127.0.0.1:$smtp; mensajes en $ORVO_HOME/correo"

"$orvo"
