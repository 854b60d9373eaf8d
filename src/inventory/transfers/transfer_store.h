#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>
#include <optional>

// SQL of the transfers and transfer returns this store issues, and of the catalogues their
// screens offer. Writers require the caller's open transaction; readers run anywhere.
namespace orvo::inventory::transfers::store {

// The header and lines tables of a kind: issued here, or received from another store.
struct Tables {
    QString header;
    QString lines;
};
const Tables& issued(Kind kind);
const Tables& received(Kind kind);

// PARAMETROS.Codigo: this store's branch code ("" without a row).
QString storeCode(const QSqlDatabase& db);
bool branchExists(const QSqlDatabase& db, const QString& code);
// Dispatch types that may be chosen (TIPO_DESPACHO.Estado <> 0).
QList<DispatchType> activeDispatchTypes(const QSqlDatabase& db);

void insertHeader(const QSqlDatabase& db, const Transfer& t);
// Only while open; false when it is approved or gone.
bool updateHeader(const QSqlDatabase& db, const Transfer& t);
void deleteLines(const QSqlDatabase& db, Kind kind, long long number);
// Adds the quantity to the line of (barcode, box), inserting it at `item` when there is none.
void upsertLine(const QSqlDatabase& db, Kind kind, long long number, const DocumentLine& line,
                int item, const QDateTime& when);

// What the approval moves per barcode: its boxes' units summed, at the variant's average cost.
// The variants' rows are held first (the no-op update), so nobody changes them until it ends.
struct Movement {
    QString barcode;
    Decimal units;
    Decimal cost; // CostoPromedio now
};
QList<Movement> holdMovements(const QSqlDatabase& db, Kind kind, long long number);
void addStock(const QSqlDatabase& db, const QString& barcode, const Decimal& units);
// Every line of the barcode takes the cost it leaves (or comes back) at.
void freezeValue(const QSqlDatabase& db, Kind kind, long long number, const QString& barcode,
                 const Decimal& cost);
// Status 0 -> 1 with the total; false when it was not open.
bool markApproved(const QSqlDatabase& db, Kind kind, long long number, const Decimal& total);
// Status 1 -> 2: packed for the other store.
void markExported(const QSqlDatabase& db, Kind kind, long long number);
// Only an open document; false otherwise.
bool deleteDocument(const QSqlDatabase& db, Kind kind, long long number);

std::optional<Transfer> load(const QSqlDatabase& db, Kind kind, long long number);
struct HeaderState {
    int status = kOpen;
    QString receiver;
};
std::optional<HeaderState> headerState(const QSqlDatabase& db, Kind kind, long long number);
// Newest first; `number` is Numero, `supplier` and `supplierName` the receiving branch.
QList<DocumentSummary> list(const QSqlDatabase& db, Kind kind);
// Approved or exported documents addressed to `receiver`.
QList<long long> approvedFor(const QSqlDatabase& db, Kind kind, const QString& receiver,
                             bool exportedToo);

// frmCambiarDestinoTrans: only documents approved or exported; false when there is none.
bool changeReceiver(const QSqlDatabase& db, Kind kind, long long number, const QString& receiver);

// Received transfers entered in [from, to).
QList<ReceivedSummary> receivedBetween(const QSqlDatabase& db, const QDateTime& from,
                                       const QDateTime& to);
bool setReceivedStatus(const QSqlDatabase& db, long long number, const QString& sender, int status);

} // namespace orvo::inventory::transfers::store
