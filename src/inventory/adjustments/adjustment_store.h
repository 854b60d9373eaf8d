#pragma once

#include "inventory/adjustments/adjustment_types.h"

#include <QSqlDatabase>
#include <optional>

// SQL of adjustments. Writers require the caller's open transaction; readers run anywhere.
namespace orvo::inventory::adjustments::store {

QList<AdjustmentType> activeTypes(const QSqlDatabase& db);
std::optional<AdjustmentType> type(const QSqlDatabase& db, int code);

void insertAdjustment(const QSqlDatabase& db, const Adjustment& a);
// Fecha, Observacion, TipoAjuste, Signo, TotalValor and IDLote, only while open; false otherwise.
bool updateAdjustment(const QSqlDatabase& db, const Adjustment& a);
void deleteLines(const QSqlDatabase& db, long long number);
// Adds the quantity to the barcode's line, inserting the line at `item` when it has none.
void upsertLine(const QSqlDatabase& db, long long number, const AdjustmentLine& line, int item);
// Status 0 -> 1 with TotalValor = Σ Cantidad × Costo of its lines; false when it was not open.
bool markApproved(const QSqlDatabase& db, long long number);
// TotalValor = Σ Cantidad × Costo of its lines.
void setTotalValue(const QSqlDatabase& db, long long number);
// Moves the stock of the adjustment's articles by their summed quantities times `sign`; with
// `activate` the articles become active (Status 1). Costs stay.
void moveStock(const QSqlDatabase& db, long long number, int sign, bool activate);
bool deleteOpen(const QSqlDatabase& db, long long number);

std::optional<Adjustment> load(const QSqlDatabase& db, long long number);
QList<purchases::DocumentSummary> list(const QSqlDatabase& db);

// Lines of a document another screen wrote, summed by barcode in the order they first appear:
// (barcode, quantity).
QList<QPair<QString, Decimal>> transferQuantities(const QSqlDatabase& db, long long number);
QList<QPair<QString, Decimal>> transferReturnQuantities(const QSqlDatabase& db, long long number);
bool transferExists(const QSqlDatabase& db, long long number);
bool transferReturnExists(const QSqlDatabase& db, long long number);

// For the lookup list: transfers and transfer returns, newest first.
QString transfersCatalogSql();
QString transferReturnsCatalogSql();

} // namespace orvo::inventory::adjustments::store
