#pragma once

#include "common/decimal/decimal.h"

#include <QSqlDatabase>
#include <QString>

// IGTF, the tax on payments in foreign currency, computed as the fiscal printer computes it so
// that the database and the printer's Z agree to the cent.
namespace orvo::pos::fiscal::igtf {

// What bears the tax: what was paid in foreign currency (in bolívars), at most the amount due.
Decimal base(const Decimal& foreignPaid, const Decimal& amountDue);
// The tax on a base, rounded to the cent (half away from zero).
Decimal tax(const Decimal& base, const Decimal& percent);
// The part of a refund that goes back in foreign currency: the refund's share of its invoice,
// applied to the invoice's IGTF base, rounded to the cent. A credit note carries the tax on it.
Decimal foreignRefund(const Decimal& refund, const Decimal& invoiceBase,
                      const Decimal& invoiceTotal);

struct Settings {
    bool enabled = false;
    Decimal percent = Decimal(3);
};

// What a document paid partly in foreign currency owes: its amount and, with IGTF, the tax on
// the foreign part (in bolívars), at most on the amount.
struct Owed {
    Decimal base;
    Decimal tax;
    Decimal total; // amount + tax
};
Owed owed(const Decimal& amount, const Decimal& foreignPaid, const Settings& settings);
// What more, paid in foreign currency (in bolívars), settles the balance with its own tax:
// amount + tax - paid, the tax growing with the payment until it reaches the cap.
Decimal foreignToSettle(const Decimal& amount, const Decimal& foreignPaid, const Decimal& paid,
                        const Settings& settings);
// The register's (CAJAS.IGTF) or the company's (PARAMETROS.IGTF) setting, with the company's
// rate (PARAMETROS.PorcentajeIGTF, 3 % when unset).
Settings settings(const QSqlDatabase& db, const QString& serial);
// Turns IGTF on or off for one register. Runs inside the caller's transaction.
void setRegisterIgtf(const QSqlDatabase& db, const QString& serial, bool enabled);

} // namespace orvo::pos::fiscal::igtf
