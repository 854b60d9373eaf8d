#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSet>
#include <QSqlDatabase>

// SQL of the transfers' line sources and of the conversion of a supplier's packing list.
namespace orvo::inventory::transfers::store {

// For the lookup lists: approved adjustments, approved transfer returns, return drafts; newest
// first.
QString adjustmentsCatalogSql();
QString returnsCatalogSql();
QString draftsCatalogSql();

// (barcode, quantity, box) of a document's lines in item order; `boxColumn` empty: box 1.
QList<DocumentLine> documentLines(const QSqlDatabase& db, const QString& table,
                                  const QString& quantityColumn, const QString& boxColumn,
                                  long long number);

struct OrderRow {
    long long number = 0;
    QDateTime date;
    QString note;
};
// PEDIDOS with Status <> 0 from `since` on, newest first.
QList<OrderRow> ordersSince(const QSqlDatabase& db, const QDateTime& since);
// DocumentoOrigen of this store's transfers to `branch`.
QSet<QString> originsOfTransfersTo(const QSqlDatabase& db, const QString& branch);

// TRANSFERENCIASAUTOMATICA: whether the supplier's (document, box) became a transfer already.
bool automaticExists(const QSqlDatabase& db, const QString& supplier, const QString& document,
                     long long box);
struct AutomaticTransfer {
    QString supplier;
    QString document;
    long long box = 0;
    QString branch;
    long long transfer = 0;
    long long transferBox = 0;
    QString user;
    QDateTime when;
};
void recordAutomatic(const QSqlDatabase& db, const AutomaticTransfer& a);

// Articles of a file: whether they exist and whether they have cost and prices.
struct ArticleValues {
    bool exists = false;
    bool valued = false; // CostoPromedio, PrecioDetal and PrecioMayor above zero
};
ArticleValues articleValues(const QSqlDatabase& db, const QString& barcode);

} // namespace orvo::inventory::transfers::store
