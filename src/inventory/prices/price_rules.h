#pragma once

#include "inventory/prices/price_types.h"

// Rules of price lists, promotions and repricing that need no database. Refusals throw
// UserError with the screen's message.
namespace orvo::inventory::prices::rules {

// Suggested price: the cost times the list's factor, at the price columns' four decimals.
Decimal suggested(const Decimal& cost, const Decimal& factor);
// The three suggested prices of a line from the list's factors.
void suggest(PriceLine& line, const PriceList& list);

// A line for a model as the catalogue has it. `taxFactor` is 1, or 1 + the general rate / 100
// when the company keys prices with tax included (the list then shows them that way).
PriceLine lineFor(const ModelPrices& model, const PriceList& list, const Decimal& taxFactor);

// The checks of the save, in their order: no line; a retail, wholesale or member price of zero;
// a promotion price of zero; a promotion that ends before it starts.
void checkLines(const QList<PriceLine>& lines);
// While a line's dates are edited.
void checkLineDates(const QDate& start, const QDate& end);

// The promotion price typed as a discount, and the discount of a typed promotion price.
void setLineDiscount(PriceLine& line, const Decimal& percent);
void setLinePromotionPrice(PriceLine& line, const Decimal& price);

// The list-wide discount: every line on promotion at `percent` under its retail price for the
// period; the text the screen then shows.
QString applyListDiscount(QList<PriceLine>& lines, const Decimal& percent, const QDate& start,
                          const QDate& end);
// Every line off promotion.
QString removeListDiscount(QList<PriceLine>& lines);

// Approval with tax-included prices: every price of the line, suggested ones too, divided once
// by `taxFactor`.
void removeTax(PriceLine& line, const Decimal& taxFactor);

// frmPreciosPromocion: the percentages and the two dates. The date checks run as each date is
// changed and again before the list is generated.
void checkPromotionStart(const QDate& start, const QDate& end, const QDate& today);
void checkPromotionEnd(const QDate& start, const QDate& end, const QDate& today);
void checkPromotionRequest(const PromotionRequest& request, const QDate& today);
// The promotion line of one model: retail at its price (with the tax factor), the promotion
// price `percent` under it, wholesale and member prices at their percentages of the retail
// price when given, otherwise as they are.
PriceLine promotionLine(const ModelPrices& model, const PromotionRequest& request,
                        const Decimal& taxFactor);

// frmActualizarPrecios: each margin given and above zero.
void checkMargins(const Margins& margins);
// Cost plus the margin, at the price columns' four decimals.
Decimal priceFromCost(const Decimal& cost, const Decimal& marginPercent);

} // namespace orvo::inventory::prices::rules
