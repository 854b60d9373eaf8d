#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// The register's day (DIARIOCAJA): one row per register and day, from the opening to the
// closing with its Z report.
namespace orvo::pos::registers {

// DIARIOCAJA.Status. The opening writes Opened; each invoice or return moves it to Selling; the
// closing to Closed.
enum DayStatus : int { kDayOpened = 0, kDaySelling = 1, kDayClosed = 2 };

struct RegisterDay {
    QDateTime fecha;
    int status = kDayOpened;
};

// The register's row for `day`; nothing when the day was not opened.
std::optional<RegisterDay> registerDay(const QSqlDatabase& db, const QString& serial,
                                       const QDate& day);

// Before any sale or return: throws UserError "No existe apertura de fecha dd/MM/yyyy...!" when
// the day has no row, "Caja con cierre realizado...!" when it was closed.
void checkDayOpen(const QSqlDatabase& db, const QString& serial, const QDate& day);

// Acumulado of the day: what was invoiced toward the printer's daily maximum (0 without a row).
Decimal accumulatedAmount(const QSqlDatabase& db, const QString& serial, const QDate& day);
// Store functions, inside the caller's transaction: a saved invoice adds its total; a forced Z
// starts again at 0.
void addToAccumulated(const QSqlDatabase& db, const QString& serial, const QDate& day,
                      const Decimal& amount);
void resetAccumulated(const QSqlDatabase& db, const QString& serial, const QDate& day);

// MontoMaximoDiario of the register's fiscal printer; nothing when the register or its printer
// is missing.
std::optional<Decimal> printerDailyMaximum(const QSqlDatabase& db, const QString& serial);
// The amount of the invoice being made plus today's Acumulado.
Decimal projectedAmount(const QSqlDatabase& db, const QString& serial, const QDate& day,
                        const Decimal& invoiceAmount);
// Whether an invoice of `invoiceAmount` takes the day over the printer's maximum, so that a Z
// must be made first. A printer without a maximum (0 or none) never forces one.
bool exceedsDailyMaximum(const QSqlDatabase& db, const QString& serial, const QDate& day,
                         const Decimal& invoiceAmount);

// Contingency invoices: allowed for the register, or for the whole company.
bool contingencyAllowed(const QSqlDatabase& db, const QString& serial);

// The date of the company's latest closed register day; nothing when no day was closed.
std::optional<QDateTime> lastClosedDay(const QSqlDatabase& db);

} // namespace orvo::pos::registers
