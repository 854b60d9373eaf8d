#!/usr/bin/env python3
"""What scripts/crash_trials.sh asks of the store database and of the emulated fiscal printer.

  crash_check.py snapshot DB OUT.json          stock of every article before the first sale
  crash_check.py pick DB SEED                  barcodes for the next sale (one per line)
  crash_check.py opened DB                     true once the register's day is open
  crash_check.py state DB FISCAL_DIR           "<last invoice> <printer's last> <pending>"
  crash_check.py check DB FISCAL_DIR STOCK.json FAULTS.json [--final]
      checks every invoice whole or absent, printed once, the counters equal; adds what it finds
      to FAULTS.json (each fault once, however many times it is seen) and prints the findings.
"""
import glob
import json
import os
import random
import re
import sqlite3
import sys
from decimal import Decimal

SERIE = "Z1B0000001"


def connect(path):
    db = sqlite3.connect(f"file:{path}?mode=ro", uri=True, timeout=10)
    db.row_factory = sqlite3.Row
    return db


def dec(value):
    return Decimal(str(value or 0)).quantize(Decimal("0.01"))


def printer_memory(fiscal_dir):
    with open(os.path.join(fiscal_dir, "memoria.json"), encoding="utf-8") as f:
        return json.load(f)


def tickets(fiscal_dir):
    """Invoice tickets the printer gave: number -> total printed on it."""
    out = {}
    for path in glob.glob(os.path.join(fiscal_dir, "tickets", "FACTURA_*.txt")):
        number = int(re.search(r"FACTURA_(\d+)\.txt$", path).group(1))
        total = None
        with open(path, encoding="utf-8") as f:
            for line in f:
                m = re.match(r"TOTAL ([\d.,]+)\s*$", line.strip())
                if m:
                    total = Decimal(m.group(1).replace(".", "").replace(",", "."))
        out[number] = total
    return out


def snapshot(db_path, out):
    db = connect(db_path)
    stock = {r["CodigoBarra"]: str(dec(r["Existencia"]))
             for r in db.execute("SELECT CodigoBarra, Existencia FROM INVENTARIO WHERE Tipo = 0")}
    with open(out, "w", encoding="utf-8") as f:
        json.dump(stock, f)


def pick(db_path, seed):
    """One to three articles that still have stock, some scanned twice."""
    db = connect(db_path)
    rng = random.Random(int(seed))
    rows = [r["CodigoBarra"] for r in db.execute(
        "SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Status = 1 AND Existencia >= 4 "
        "ORDER BY CodigoBarra")]
    chosen = rng.sample(rows, rng.randint(1, 3))
    for code in chosen:
        for _ in range(rng.choice([1, 1, 2])):
            print(code)


def state(db_path, fiscal_dir):
    db = connect(db_path)
    last = db.execute("SELECT UltimaFactura FROM CAJAS WHERE Serie = ?", (SERIE,)).fetchone()[0]
    pending = db.execute("SELECT COUNT(*) FROM VENTAS WHERE Serie = ? AND Impresa = 0",
                         (SERIE,)).fetchone()[0]
    print(int(last or 0), int(printer_memory(fiscal_dir).get("ultimaFactura", 0)), pending)


def check(db_path, fiscal_dir, stock_path, faults_path, final):
    db = connect(db_path)
    with open(stock_path, encoding="utf-8") as f:
        initial = {k: Decimal(v) for k, v in json.load(f).items()}
    faults = {"lost": [], "duplicated": [], "mismatch": []}
    if os.path.exists(faults_path):
        with open(faults_path, encoding="utf-8") as f:
            faults = json.load(f)
    found = []

    def fault(kind, key, why):
        found.append(f"{kind}: {why}")
        if key not in faults[kind]:
            faults[kind].append(key)

    invoices = {r["NumeroFactura"]: r for r in db.execute(
        "SELECT * FROM VENTAS WHERE Serie = ? ORDER BY NumeroFactura", (SERIE,))}
    lines = {}
    for r in db.execute("SELECT * FROM MOVVENTAS WHERE Serie = ?", (SERIE,)):
        lines.setdefault(r["NumeroFactura"], []).append(r)
    payments = {}
    for r in db.execute("SELECT * FROM PAGOSVENTA WHERE Serie = ?", (SERIE,)):
        payments.setdefault(r["NumeroFactura"], []).append(r)

    # Whole or absent: a header with its lines, its payments and totals that add up; no line
    # or payment without its header.
    for number, h in invoices.items():
        own = lines.get(number, [])
        if not own:
            fault("lost", f"lines {number}", f"invoice {number} has no lines")
            continue
        merchandise = sum((dec(l["Precio"] * l["Cantidad"]) for l in own), Decimal())
        total = dec(h["TotalMercancia"]) - dec(h["TotalDescuento"]) + dec(h["TotalImpuesto"])
        if abs(merchandise - dec(h["TotalMercancia"])) > Decimal("0.05"):
            fault("lost", f"totals {number}",
                  f"invoice {number}: lines {merchandise}, header {h['TotalMercancia']}")
        paid = sum((dec(p["Monto"]) for p in payments.get(number, [])), Decimal())
        if paid != total:
            fault("lost", f"payments {number}", f"invoice {number}: total {total}, paid {paid}")
    for number in set(lines) | set(payments):
        if number not in invoices:
            fault("lost", f"orphan {number}", f"rows of invoice {number} without its header")

    # Stock: what the articles had, less what the invoices sold.
    sold = {}
    for own in lines.values():
        for l in own:
            sold[l["CodigoBarra"]] = sold.get(l["CodigoBarra"], Decimal()) + Decimal(
                str(l["Cantidad"]))
    for r in db.execute("SELECT CodigoBarra, Existencia FROM INVENTARIO WHERE Tipo = 0"):
        code = r["CodigoBarra"]
        expected = initial.get(code, Decimal()) - sold.get(code, Decimal())
        if dec(r["Existencia"]) != dec(expected):
            fault("lost", f"stock {code}", f"stock of {code}: {r['Existencia']}, expected {expected}")

    # Counters: the register's, its invoices' and the printer's.
    last = int(db.execute("SELECT UltimaFactura FROM CAJAS WHERE Serie = ?",
                          (SERIE,)).fetchone()[0] or 0)
    highest = max(invoices, default=0)
    printer_last = int(printer_memory(fiscal_dir).get("ultimaFactura", 0))
    if last != highest:
        fault("mismatch", f"register {last}/{highest}",
              f"register's last invoice {last}, highest invoice {highest}")
    pending = [n for n, h in invoices.items() if int(h["Impresa"]) == 0]
    # Only the last invoice may wait for its print (the next accept prints or marks it), and
    # only until then.
    waiting_ok = not final and pending == [highest] and printer_last in (highest - 1, highest)
    if printer_last != highest and not waiting_ok:
        fault("mismatch", f"printer {printer_last}/{highest}",
              f"printer's last invoice {printer_last}, register's {highest}")
    for n in pending:
        if not waiting_ok:
            fault("mismatch", f"pending {n}", f"invoice {n} still waits for its print")

    # Printed exactly once: ticket n is invoice n, with its total; none beyond.
    printed = tickets(fiscal_dir)
    totals = {n: dec(h["TotalMercancia"]) - dec(h["TotalDescuento"]) + dec(h["TotalImpuesto"])
              for n, h in invoices.items()}
    # The printer rounds the tax on each line, the invoice on each unit: a cent per unit apart
    # is the same invoice (counted apart as "cents" and reported, not a crash's fault).
    units = {n: sum((Decimal(str(l["Cantidad"])) for l in lines.get(n, [])), Decimal())
             for n in invoices}

    def same(n, total):
        return total is not None and abs(total - totals[n]) <= Decimal("0.01") * max(units[n], 1)

    def reprint_of(total):
        return any(same(n, total) for n in invoices)

    for n, total in sorted(printed.items()):
        if n not in invoices:
            kind = "duplicated" if reprint_of(total) else "lost"
            fault(kind, f"ticket {n}", f"ticket {n} ({total}) has no invoice {n}")
        elif not same(n, total):
            kind = "duplicated" if reprint_of(total) else "lost"
            fault(kind, f"ticket {n}", f"ticket {n} shows {total}, invoice {n} is {totals[n]}")
        elif total != totals[n]:
            faults.setdefault("cents", {})[str(n)] = f"{total} / {totals[n]}"
    for n, h in invoices.items():
        if int(h["Impresa"]) == 1 and n not in printed:
            fault("lost", f"unprinted {n}", f"invoice {n} marked printed, no ticket")

    with open(faults_path, "w", encoding="utf-8") as f:
        json.dump(faults, f)
    for line in found:
        print(line)
    print(f"invoices {len(invoices)}, printer's last {printer_last}, pending {pending}",
          file=sys.stderr)


def main(argv):
    cmd = argv[1]
    if cmd == "snapshot":
        snapshot(argv[2], argv[3])
    elif cmd == "pick":
        pick(argv[2], argv[3])
    elif cmd == "opened":
        sys.exit(0 if connect(argv[2]).execute("SELECT COUNT(*) FROM DIARIOCAJA").fetchone()[0]
                 else 1)
    elif cmd == "state":
        state(argv[2], argv[3])
    elif cmd == "check":
        check(argv[2], argv[3], argv[4], argv[5], "--final" in argv)
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv)
