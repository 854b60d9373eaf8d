#pragma once

#include "pos/fiscal/fiscal_printer.h"

#include <QDate>
#include <QSqlDatabase>
#include <QString>
#include <optional>

namespace orvo::pos::fiscal {

// What the register's database says the printer must show.
struct RegisterCounters {
    QString serial; // CAJAS.Serie: the printer's serial
    int lastInvoice = 0;
    int lastReturn = 0;
    // Paper returns made while the printer was out: they took numbers the printer never gave.
    int contingencyReturns = 0;
    bool igtf = false; // the register charges IGTF (igtf::settings)
    // The printer's credit-note counter as it must read.
    int lastCreditNote() const { return lastReturn - contingencyReturns; }
};

// How many contingency returns of the register (of the company, when ControlFactura is 2) are
// numbered below `before` (all of them when 0).
int contingencyReturnsBelow(const QSqlDatabase& db, const QString& serial, int controlFactura,
                            long long before = 0);

// What the printer shows (read on the printer's thread).
struct PrinterFacts {
    bool answers = false;
    int lastInvoice = 0;
    int lastCreditNote = 0;
    QDate date;
    QString serial;
    QString rif;
    bool igtf = false; // flag 50 on: the X counters carry the IGTF fields
    int status = 0;    // the probe's status number (fiscal memory nearly full, full)
};

// The register's counters: CAJAS of `serial`, or PARAMETROS when ControlFactura is 2.
RegisterCounters readRegisterCounters(const QSqlDatabase& db, const QString& serial,
                                      int controlFactura);

// Probe, X counters (U0X) and status (S1).
PrinterFacts readPrinterFacts(FiscalPrinter& printer);

// Throws UserError with the first mismatch: no answer, invoice number, return number, date,
// serial; then a full fiscal memory and an IGTF setting the printer does not share.
void checkPrinterAgainstRegister(const PrinterFacts& printer, const RegisterCounters& reg,
                                 const QDate& today);

} // namespace orvo::pos::fiscal
