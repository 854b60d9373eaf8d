#pragma once

#include "common/decimal/decimal.h"
#include "common/rate/exchange_rate.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// SQL of the exchange rate and the reconversion. Writers require the caller's open transaction.
namespace orvo::common::rate::store {

struct LatestRate {
    Decimal value;
    QDateTime fecha;
};
std::optional<LatestRate> latestRate(const QSqlDatabase& db);
// The latest rate with Fecha before `until`.
std::optional<Decimal> rateBefore(const QSqlDatabase& db, const QDateTime& until);
bool rateRegisteredBetween(const QSqlDatabase& db, const QDateTime& from, const QDateTime& until);
QList<RateEntry> rates(const QSqlDatabase& db, int limit);

// Fecha invalid: the server's current time.
void insertRate(const QSqlDatabase& db, const Decimal& value, const QDateTime& fecha);
// Every article's four prices to ROUND(price / previous, 10) * value, at the price scale.
int repriceCatalogue(const QSqlDatabase& db, const Decimal& previous, const Decimal& value);

// TABLA_VALORES: the Descripcion of every row of the key, or a new row (Codigo '01').
void setTableValue(const QSqlDatabase& db, const QString& key, const QString& value);

} // namespace orvo::common::rate::store
