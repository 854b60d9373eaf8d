#pragma once

#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>
#include <optional>

// SQL of receptions and their boxes. Writers require the caller's open transaction.
namespace orvo::inventory::purchases::store {

void insertReception(const QSqlDatabase& db, const Reception& r);
// Only while open.
bool updateReception(const QSqlDatabase& db, const Reception& r);
// RECEPCION_COMPRAS: deleted and written again whole.
void replaceCoveredPurchases(const QSqlDatabase& db, long long number,
                             const QList<CoveredPurchase>& purchases);
// The no-op update on an open reception: true when it is there and open. On PostgreSQL it also
// holds the row, so that two users saving boxes of one reception number them one after the other.
bool holdOpenReception(const QSqlDatabase& db, long long number);
// Approves it, guarded by its status: false when it is gone or someone approved it already.
bool approveReception(const QSqlDatabase& db, long long number, const QDateTime& when);
bool deleteReception(const QSqlDatabase& db, long long number);
std::optional<Reception> loadReception(const QSqlDatabase& db, long long number);
QList<DocumentSummary> listReceptions(const QSqlDatabase& db);

// The user's last box of the reception; 0 when he has none.
long long userLastBox(const QSqlDatabase& db, long long number, const QString& user);
std::optional<Box> loadBox(const QSqlDatabase& db, long long number, long long box);
QList<BoxSummary> boxes(const QSqlDatabase& db, long long number);
bool boxIsClosed(const QSqlDatabase& db, long long number, long long box);
bool hasOpenBox(const QSqlDatabase& db, long long number);
void deleteBoxLines(const QSqlDatabase& db, long long number, long long box);
struct BoxLineWrite {
    BoxLine line;
    Decimal price; // the article's retail price and average cost when counted
    Decimal cost;
};
// Adds the quantity to the barcode's line of the box, inserting it at `item` when it has none.
void upsertBoxLine(const QSqlDatabase& db, long long number, long long box, int item,
                   const BoxLineWrite& line, const QString& user, const QDateTime& when);
void closeBox(const QSqlDatabase& db, long long number, long long box);

// Per barcode: what the boxes counted and what the covered purchases invoiced.
QList<ComparisonLine> comparison(const QSqlDatabase& db, long long number);

struct Branch {
    QString code;
    QString name;
};
QList<Branch> activeBranches(const QSqlDatabase& db);

} // namespace orvo::inventory::purchases::store
