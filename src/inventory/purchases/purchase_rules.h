#pragma once

#include "inventory/purchases/purchase_types.h"

#include <optional>

// Rules of the purchase documents that need no database.
namespace orvo::inventory::purchases::rules {

// A typed header number: digits and one decimal separator ('.' or ','), empty meaning 0.
// Anything else is refused with "Debe ingresar un dato valido".
Decimal headerNumber(const QString& text);
// The discount percentage: 0 to 100.
void checkDiscountPercent(const Decimal& percent);

// Totals of the lines under a header discount.
DocumentTotals totalsOf(const QList<DocumentLine>& lines, const Decimal& discountPercent = {});

// Approval is offered only when every line has a price.
bool everyLineHasPrice(const QList<DocumentLine>& lines);

// The proration factor: the charges over the merchandise total. The first method counts the
// service fee, surcharges and other taxes; the second adds freight and insurance. A zero
// merchandise total cannot be prorated and is refused with a message.
Decimal prorationFactor(const Purchase& purchase, const Decimal& merchandise);
// A line's unit cost: the invoice price less the discount, plus its share of the charges.
Decimal proratedPrice(const Decimal& invoicePrice, const Decimal& discountPercent,
                      const Decimal& factor);

// A variant's moving average after receiving `quantity` worth `value` (Σ cost × quantity): its
// stock weighs in when it is zero or more; a stock below zero takes part in nothing and the
// received cost `lastCost` stands.
Decimal movingAverage(const Decimal& stock, const Decimal& averageCost, const Decimal& quantity,
                      const Decimal& value, const Decimal& lastCost);

// Lines as the save writes them: the same barcode twice is one line with the summed quantity
// and the first row's price.
QList<DocumentLine> mergedByBarcode(const QList<DocumentLine>& lines);

// A quantity typed on a line must be more than zero; a price may not be negative.
void checkLine(const DocumentLine& line);

} // namespace orvo::inventory::purchases::rules
