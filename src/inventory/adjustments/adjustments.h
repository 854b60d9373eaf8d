#pragma once

#include "inventory/adjustments/adjustment_types.h"
#include "inventory/articles/article_types.h"
#include "inventory/purchases/line_sources.h"
#include "inventory/purchases/purchase_print.h"

#include <QSqlDatabase>
#include <optional>

// The actions of manual adjustments: each one that writes opens and closes one transaction.
// Refusals throw UserError with the message the user reads.
namespace orvo::inventory::adjustments {

inline const QString kAdjustmentScreen = QStringLiteral("frmAjustes");

QList<AdjustmentType> adjustmentTypes(const QSqlDatabase& db);

// An article that carries stock, by its barcode: unknown barcodes and services are refused.
Article stockArticle(const QSqlDatabase& db, const QString& barcode);

// An article keyed on an adjustment, valued at its average cost. Unknown barcodes, services and
// quantities of zero or less are refused.
AdjustmentLine adjustmentLine(const QSqlDatabase& db, const QString& barcode,
                              const Decimal& quantity);

// Before the approval question: a type and a line.
void checkAdjustment(const Adjustment& adjustment);
// Guardar: in one transaction, the checks again and the date guard, the header (inserted, or
// updated while open, its lines written again), the lines upserted by barcode and, when
// `approve`, the approval: stock moves by the quantities times the type's sign and TotalValor is
// Σ quantity × cost. Costs are not changed. Returns the number.
long long saveAdjustment(const QSqlDatabase& db, Adjustment adjustment, bool approve);
// Only an open adjustment.
void deleteAdjustment(const QSqlDatabase& db, long long number);
std::optional<Adjustment> loadAdjustment(const QSqlDatabase& db, long long number);
QList<purchases::DocumentSummary> listAdjustments(const QSqlDatabase& db);

// Lines brought from another document, valued at this store's average cost; the barcodes this
// store does not have are left out and named.
struct LoadedLines {
    QList<AdjustmentLine> lines;
    QList<purchases::PackingList::Missing> missing;
};
LoadedLines linesFromTransfer(const QSqlDatabase& db, long long number);
LoadedLines linesFromTransferReturn(const QSqlDatabase& db, long long number);
// A packing list's lines (MOVITRAN.DBF) valued at average cost instead of the sender's value.
QList<AdjustmentLine> atAverageCost(const QSqlDatabase& db,
                                    const QList<purchases::DocumentLine>& lines);

// The printed adjustment; empty when it does not exist.
purchases::PrintedDocument adjustmentDocument(const QSqlDatabase& db, long long number);

} // namespace orvo::inventory::adjustments
