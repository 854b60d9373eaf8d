#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// The exchange rate (TASA_CAMBIO): registering it, repricing the catalogue when ActTasa is on,
// the rate file for the stores (ExpTasa) and the one received from head office (ImpTasa), and
// the rate a document of a given day uses.
namespace orvo::common::rate {

inline const QString kRateScreen = QStringLiteral("frmRegistrarTasaCambio");

struct RateEntry {
    long long id = 0;
    QDateTime fecha;
    Decimal valor;
};

// A rate as the user types it: spaces and thousands separators go, the decimal separator may be
// '.' or ',' ("36,50", "1.234,5678", "1,234.5678", "36.5"). With both separators the last one is
// the decimal one; one separator that occurs more than once groups thousands. Nothing when the
// text is not a number above zero.
std::optional<Decimal> parseTypedRate(const QString& text);

// The latest rate registered (by Fecha, then ID); nothing before the first one.
std::optional<Decimal> currentRate(const QSqlDatabase& db);

// The rate a document of `day` uses: the latest registered up to the end of that day, so a
// weekend or a holiday carries the last working day's rate. Zero when none is registered yet.
Decimal rateForDay(const QSqlDatabase& db, const QDate& day);

// The reminder is due on `day` when no rate applies to it at all, or when it is a working day
// (Monday to Friday) without a rate registered on it.
bool rateReminderDue(const QSqlDatabase& db, const QDate& day);
inline const QString kRateReminder =
    QStringLiteral("Por favor asegurese de tener la tasa de cambio registrada correctamente.");

// Turns a rate switch of TABLA_VALORES ("ActTasa", "ExpTasa", "ImpTasa") on ("TRUE") or off
// ("FALSE"), in its own transaction.
void setRateSwitch(const QSqlDatabase& db, const QString& key, bool on);

// Past rates, newest first.
QList<RateEntry> pastRates(const QSqlDatabase& db, int limit = 200);

struct RegisterRequest {
    Decimal value;
    // The day the rate belongs to; today (or nothing) registers it now. An earlier day registers
    // it at the end of that day, so it is that day's rate.
    QDate day;
    // Step 4 (ExpTasa): head office writes the rate file for the stores. A rate received from
    // head office is not sent on.
    bool mayExport = true;
};

struct RegisterResult {
    std::optional<Decimal> previous; // the current rate before
    Decimal value;
    bool repriced = false; // ActTasa was on and the new rate became the current one
    int articlesRepriced = 0;
    QString rateFile; // the archive written for the stores (ExpTasa), empty otherwise
};

// Registers a rate in one transaction: the insert and, when ActTasa is on and the new rate
// becomes the current one, every article's four prices repriced by new / old in one statement.
// After commit, with ExpTasa on, writes the rate file. Refusals: a value not above zero, a day
// after today.
RegisterResult registerRate(const QSqlDatabase& db, const RegisterRequest& request);

// The first line of a rate file, normalised; UserError when the file cannot be read or does not
// hold a rate.
Decimal readRateFile(const QString& path);

// The rate received from head office in the Recibe folder: TasaCambio.txt, or the archive
// TasaCambio.zip holding it (any case). Empty when there is none.
QString pendingRateFile(const QString& recibeFolder);

// The store side: with ImpTasa on and a rate received, registers its rate (steps 1-3) and
// removes the file (the archive is unpacked first), so it is loaded once. Nothing when ImpTasa is
// off or no rate lies there.
std::optional<RegisterResult> loadReceivedRate(const QSqlDatabase& db, const QString& recibeFolder);

// `orvo import`: the received rate comes first (order 10).
void registerRateLoader();

} // namespace orvo::common::rate
