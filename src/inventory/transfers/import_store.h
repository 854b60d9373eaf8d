#pragma once

#include "common/decimal/decimal.h"
#include "inventory/transfers/transfer_types.h"

#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QVariantList>
#include <optional>

// SQL of the import of what another store sent: the catalogues a package brings, its articles,
// and the received copies (ITRANSFERENCIAS, IDEVTRANSFERENCIAS) with their stock. Writers
// require the caller's open transaction.
namespace orvo::inventory::transfers::store {

// --- Catalogues: reactivated, or inserted when this store has not got them ---
// MARCAS, COLORES, CATEGORIAS, FABRICANTES by Codigo.
void upsertCatalogue(const QSqlDatabase& db, const QString& table, const QString& code,
                     const QString& name);
void upsertSize(const QSqlDatabase& db, const QString& code);
// LOTES by its code; returns this store's ID of the lot.
long long upsertLot(const QSqlDatabase& db, const QString& code, const QString& description,
                    const QDateTime& now);
void upsertDispatchType(const QSqlDatabase& db, int id, const QString& description);

// --- Articles ---
struct PackageArticle {
    QString barcode, name, reference, brand, size, colour, manufacturer, category;
    int taxCode = 0;
    Decimal retail, wholesale, member, promotionPrice;
    bool promotion = false;
    QDate promotionStart, promotionEnd;
};
// A statement as run, for the article log.
struct Statement {
    QString sql;
    QVariantList values;
};
// Updates the variant from the package and makes it active; nothing when it does not exist.
std::optional<Statement> updateArticle(const QSqlDatabase& db, const PackageArticle& a,
                                       const QDateTime& now);
// Creates it active, without stock or costs, Tipo 0, CodigoBarraAnt its own barcode.
Statement insertArticle(const QSqlDatabase& db, const PackageArticle& a, int taxCode,
                        const QDateTime& now);
// Every variant of the article's model takes its four prices and promotion.
Statement applyModelPrices(const QSqlDatabase& db, const PackageArticle& a);
// Status 1 and the movement's date; false when the barcode is unknown.
bool reactivateArticle(const QSqlDatabase& db, const QString& barcode, const QDateTime& now);
bool taxCodeExists(const QSqlDatabase& db, int code);

// --- Received copies ---
// The no-op update that tests whether (Numero, CodigoEnvia) was loaded already.
bool receivedExists(const QSqlDatabase& db, Kind kind, long long number, const QString& sender);
struct ReceivedHeader {
    long long number = 0;
    QString sender;
    QString receiver;
    QDateTime date;
    QDateTime issueDate;
    QString note;
    long long lotId = 0;
    int dispatchId = 0;
};
// Status 1, Usuario 'SISTEMAS', InterContable 0.
void insertReceived(const QSqlDatabase& db, Kind kind, const ReceivedHeader& h);
// Adds the quantity to the line of (barcode, box), inserting it at `item` when there is none.
void upsertReceivedLine(const QSqlDatabase& db, Kind kind, const ReceivedHeader& h,
                        const DocumentLine& line, int item, const QDateTime& when);

// What a received document brings to each of its variants, with the variant as it stands; the
// rows are held first. `value` is the average Valor of the barcode's lines.
struct Arrival {
    QString barcode;
    Decimal stock;
    Decimal averageCost;
    Decimal units;
    Decimal value;
};
QList<Arrival> holdArrivals(const QSqlDatabase& db, Kind kind, long long number,
                            const QString& sender);
void writeArrival(const QSqlDatabase& db, const QString& barcode, const Decimal& stock,
                  const Decimal& averageCost, const Decimal& lastCost);
// A returned copy's lines are valued at this store's cost of each barcode.
void valueReturnedLines(const QSqlDatabase& db, long long number, const QString& sender,
                        const QString& barcode, const Decimal& cost);
void setReceivedTotal(const QSqlDatabase& db, Kind kind, long long number, const QString& sender,
                      const Decimal& total);

} // namespace orvo::inventory::transfers::store
