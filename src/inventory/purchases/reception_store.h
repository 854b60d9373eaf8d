#pragma once

#include "inventory/purchases/box_kind.h"
#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>
#include <optional>

// SQL of receptions and their boxes. Writers require the caller's open transaction.
namespace orvo::inventory::purchases::store {

void insertReception(const QSqlDatabase& db, const Reception& r,
                     const BoxKind& k = receptionKind());
// Only while open.
bool updateReception(const QSqlDatabase& db, const Reception& r,
                     const BoxKind& k = receptionKind());
// RECEPCION_COMPRAS: deleted and written again whole.
void replaceCoveredPurchases(const QSqlDatabase& db, long long number,
                             const QList<CoveredPurchase>& purchases,
                             const BoxKind& k = receptionKind());
// The no-op update on an open reception: true when it is there and open. On PostgreSQL it also
// holds the row, so that two users saving boxes of one reception number them one after the other.
bool holdOpenReception(const QSqlDatabase& db, long long number,
                       const BoxKind& k = receptionKind());
// Who approves: user and workstation address, kept where the document records them.
struct Approver {
    QString user;
    QString address;
};
// Approves it, guarded by its status: false when it is gone or someone approved it already.
bool approveReception(const QSqlDatabase& db, long long number, const QDateTime& when,
                      const Approver& who, const BoxKind& k = receptionKind());
// The document's Status; -1 when it does not exist.
int status(const QSqlDatabase& db, long long number, const BoxKind& k = receptionKind());
bool deleteReception(const QSqlDatabase& db, long long number, const BoxKind& k = receptionKind());
std::optional<Reception> loadReception(const QSqlDatabase& db, long long number,
                                       const BoxKind& k = receptionKind());
QList<DocumentSummary> listReceptions(const QSqlDatabase& db, const BoxKind& k = receptionKind());

// The user's last box of the reception; 0 when he has none.
long long userLastBox(const QSqlDatabase& db, long long number, const QString& user,
                      const BoxKind& k = receptionKind());
std::optional<Box> loadBox(const QSqlDatabase& db, long long number, long long box,
                           const BoxKind& k = receptionKind());
QList<BoxSummary> boxes(const QSqlDatabase& db, long long number,
                        const BoxKind& k = receptionKind());
bool boxIsClosed(const QSqlDatabase& db, long long number, long long box,
                 const BoxKind& k = receptionKind());
bool hasOpenBox(const QSqlDatabase& db, long long number, const BoxKind& k = receptionKind());
void deleteBoxLines(const QSqlDatabase& db, long long number, long long box,
                    const BoxKind& k = receptionKind());
struct BoxLineWrite {
    BoxLine line;
    Decimal price; // the article's retail price and average cost when counted
    Decimal cost;
};
// Adds the quantity to the barcode's line of the box, inserting it at `item` when it has none.
void upsertBoxLine(const QSqlDatabase& db, long long number, long long box, int item,
                   const BoxLineWrite& line, const QString& user, const QDateTime& when,
                   const BoxKind& k = receptionKind());
void closeBox(const QSqlDatabase& db, long long number, long long box,
              const BoxKind& k = receptionKind());

// Per barcode: what the boxes counted and what the covered purchases invoiced.
QList<ComparisonLine> comparison(const QSqlDatabase& db, long long number,
                                 const BoxKind& k = receptionKind());

struct Branch {
    QString code;
    QString name;
};
QList<Branch> activeBranches(const QSqlDatabase& db);

} // namespace orvo::inventory::purchases::store
