#pragma once

#include "inventory/purchases/line_sources.h"
#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>

// Where a transfer's (or a return's) lines come from besides the keyboard: an adjustment, a
// transfer return, a return draft the other store prepared (MOVDEVBORRADOR), a packing list
// (MOVITRAN.DBF, MOVIDVTR.DBF: purchases' readPackingList by box) and the orders another store of
// the chain placed in its own database on the same server. Each gives raw lines (barcode,
// quantity, box) that the screen checks with checkLines().
namespace orvo::inventory::transfers {

// The lookup lists (store::adjustmentsCatalogSql() and the others) choose the document.
QList<DocumentLine> adjustmentLines(const QSqlDatabase& db, long long number);
QList<DocumentLine> returnLines(const QSqlDatabase& db, long long number);
QList<DocumentLine> draftLines(const QSqlDatabase& db, long long number);

// An order another store placed (PEDIDOS of its database).
struct StoreOrder {
    long long number = 0;
    QDateTime date;
    QString note;
};
// The orders of the sister company's database `orders` not yet transferred from here (no
// transfer of this store names the order as its origin for that company's branch) and dated on or
// after this store's last physical-logical adjustment, newest first.
QList<StoreOrder> pendingOrders(const QSqlDatabase& own, const QSqlDatabase& orders,
                                const QString& branch);
// The order's lines: what was ordered (CantidadPedida) in box 1.
QList<DocumentLine> orderLines(const QSqlDatabase& orders, long long number);

} // namespace orvo::inventory::transfers
