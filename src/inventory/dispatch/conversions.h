#pragma once

#include "inventory/dispatch/conversion_store.h"
#include "inventory/dispatch/orders.h"

#include <QSqlDatabase>

// Conversions of one document into another. Each runs in one transaction, converts its source
// once only (the source's status is the guard) and records the pair in BITACORAMOVIMIENTO.
namespace orvo::inventory::dispatch {

inline const QString kAdjustmentConversionScreen = QStringLiteral("frmConvRemRecAjuste");

enum class AdjustmentSource { Remission, Reception };

// Why the remission or reception cannot be converted (missing, not approved, converted); nothing
// when it can.
void checkConvertible(const QSqlDatabase& db, AdjustmentSource source, long long number);

// An approved remission leaves the stock (sign −1), an approved reception enters it (+1).
int adjustmentSign(AdjustmentSource source);
QList<store::AdjustmentType> adjustmentTypesFor(const QSqlDatabase& db, AdjustmentSource source);

// What the conversion would write, for the screen to show before the question.
struct AdjustmentPreview {
    QString branch;
    QList<store::SummedLine> lines;
    Decimal total;
};
// Refused when the document does not exist, is not approved or was converted already.
AdjustmentPreview previewAdjustment(const QSqlDatabase& db, AdjustmentSource source,
                                    long long number);

// The approved adjustment with the summed lines at the current average cost; the stock moves by
// the sign and the source takes Status 2. Returns the adjustment's number.
long long convertToAdjustment(const QSqlDatabase& db, AdjustmentSource source, long long number,
                              int adjustmentType, const QString& user);

inline const QString kRemissionOrderScreen = QStringLiteral("frmConvRemOrdenDesp");

// The approved remission's lines, summed by barcode, priced for the draft's client as the till
// prices them (the stock checks of a keyed order apply).
void orderFromRemission(const QSqlDatabase& db, long long remission, pos::sale::SaleDraft& draft);
// Writes the order (approved) and marks the remission converted, in one transaction; logged 'RM'
// → 'OD'. Returns the order's number.
long long convertRemissionToOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                  long long remission, const pos::sale::SaleDraft& draft);

inline const QString kPurchaseOrderScreen = QStringLiteral("frmConvCompOrdenDesp");
inline const QString kManualOrderScreen = QStringLiteral("frmConvRemManualOrdenDesp");

// The same from an approved purchase not converted yet: its lines, priced for the client.
void orderFromPurchase(const QSqlDatabase& db, const QString& document, const QString& supplier,
                       pos::sale::SaleDraft& draft);
// Logged 'CO' → 'OD'; the purchase is converted once only.
long long convertPurchaseToOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                 const QString& document, const QString& supplier,
                                 const pos::sale::SaleDraft& draft);
// A typed list (barcode, quantity) becomes an approved order; no source document to mark.
long long convertListToOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                             const pos::sale::SaleDraft& draft);

} // namespace orvo::inventory::dispatch
