#pragma once

#include "inventory/prices/price_types.h"

#include <QSqlDatabase>
#include <QVariantList>
#include <optional>

// SQL of price lists and repricing. Writers require the caller's open transaction.
namespace orvo::inventory::prices::store {

// A statement as run, for the article log.
struct Written {
    QString sql;
    QVariantList values;
    int rows = 0;
};

// LISTAPRECIO and MOVLISTAPRECIO
void insertHeader(const QSqlDatabase& db, const PriceList& list);
void updateHeader(const QSqlDatabase& db, const PriceList& list); // back to Status 0
void deleteLines(const QSqlDatabase& db, int number);
void insertLine(const QSqlDatabase& db, int number, const PriceLine& line);
void setApproved(const QSqlDatabase& db, int number);
// The list's prices and promotion into every variant of each listed model.
Written applyToInventory(const QSqlDatabase& db, int number);
std::optional<int> listStatus(const QSqlDatabase& db, int number);
// Whether a list's Observacion starts with `prefix` (a list received before).
bool listWithNoteExists(const QSqlDatabase& db, const QString& prefix);

std::optional<PriceList> loadList(const QSqlDatabase& db, int number);
QList<PriceLine> lines(const QSqlDatabase& db, int number);
QList<PriceListSummary> lists(const QSqlDatabase& db);

// The lookup lists of the screens.
QString listsCatalogSql();
QString modelsCatalogSql();

// INVENTARIO
std::optional<ModelPrices> modelPrices(const QSqlDatabase& db, const ModelKey& key);
QList<ModelPrices> models(const QSqlDatabase& db, const ModelFilter& filter);
// Prices from the average cost and the margins, for every article with a cost.
Written repriceFromCost(const QSqlDatabase& db, const Margins& margins);

} // namespace orvo::inventory::prices::store
