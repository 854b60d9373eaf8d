#pragma once

#include "common/decimal/decimal.h"
#include "inventory/purchases/box_kind.h"

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>

// SQL of the conversions between documents. Writers require the caller's open transaction.
namespace orvo::inventory::dispatch::store {

// Approved (1) → converted (2), guarded by the status: false when it was not approved.
bool markConverted(const QSqlDatabase& db, const purchases::BoxKind& kind, long long number);
QString branchOf(const QSqlDatabase& db, const purchases::BoxKind& kind, long long number);

struct SummedLine {
    QString barcode;
    Decimal quantity;
    Decimal cost; // the article's average cost now
    QString name; // shown, not stored
};
// The document's box lines summed by barcode, in the order they were first counted.
QList<SummedLine> summedLines(const QSqlDatabase& db, const purchases::BoxKind& kind,
                              long long number);

// The document's box lines summed by barcode and box, box by box in the order counted.
struct BoxLine {
    QString barcode;
    Decimal quantity;
    long long box = 0;
};
QList<BoxLine> boxLines(const QSqlDatabase& db, const purchases::BoxKind& kind, long long number);

// Holds an approved purchase's row for the conversion (the no-op update takes its lock): false
// when it is not approved.
bool holdPurchase(const QSqlDatabase& db, const QString& document, const QString& supplier);
// The purchase appears as the origin of a logged conversion.
bool purchaseLogged(const QSqlDatabase& db, const QString& document, const QString& supplier);

struct AdjustmentHeader {
    long long number = 0;
    QDateTime date;
    int type = 0;
    int sign = 1;
    Decimal total;
    QString note;
    QString user;
};
void insertAdjustment(const QSqlDatabase& db, const AdjustmentHeader& header);
void insertAdjustmentLine(const QSqlDatabase& db, long long number, int item,
                          const SummedLine& line);
// Existencia += delta, to the column's three decimals.
void moveStock(const QSqlDatabase& db, const QString& barcode, const Decimal& delta);

// One row of BITACORAMOVIMIENTO: which document became which.
struct ConversionLog {
    QString originType; // RM, RC, CO, TE
    QString origin;
    QString originPlace;
    QString destinationType; // AJ, TS, ...
    QString destination;
    QString destinationPlace;
    QString user;
    QString note;
};
void logConversion(const QSqlDatabase& db, const ConversionLog& log, const QDateTime& when);

struct AdjustmentType {
    int code = 0;
    QString name;
};
// Active adjustment reasons of the sign, without the partial count's own (998, 999).
QList<AdjustmentType> adjustmentTypes(const QSqlDatabase& db, int sign);

} // namespace orvo::inventory::dispatch::store
