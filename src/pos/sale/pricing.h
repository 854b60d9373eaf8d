#pragma once

#include "pos/sale/sale_types.h"

#include <QList>

// The pricing rules of a sale line, free of the database: list letters, promotions, the client
// type, discounts and tax, exact to the cent.
namespace orvo::pos::sale {

// What decides the price of a line besides the article.
struct PricingContext {
    QDate today;
    int registerListType = 1; // CAJAS.TipoListaPrecio: 1 and 3 sell retail, the others wholesale
    QString clientType;       // TIPOSCLIENTE code of the sale's client
    Decimal clientMargin;     // PorcentajeUtilidad of the client, for the special list
    bool exempt = false;      // the whole invoice is exempt of tax
};

// The register's own list: retail for types 1 and 3, wholesale for the others.
char registerLetter(int registerListType);

// The letter a client type forces on every line (2 "A", 3 "E", 4 "M"); 0 for the types that
// keep the line's own letter.
char clientLetter(const QString& clientType);

// Whether a register of `registerListType` sells on list `letter`.
bool registerAllowsLetter(int registerListType, char letter);

// Whether the register may invoice a client of this type: the letter the type forces, if any,
// must be one the register sells on.
bool registerMayInvoice(int registerListType, const QString& clientType);

// Refuses a client the register may not invoice: "La caja no esta configurada para facturar a "
// + the type's description + "...!".
void checkClientAllowed(int registerListType, const SaleClient& client);

// Whether the article's promotion holds on `day` (both boundary days included).
bool promotionActive(const ArticlePrices& article, const QDate& day);

// The list letter of a line that had `current` (a new line starts with "D"):
// "P" while the promotion holds; back from "P" to the register's list when it does not; then the
// client type overrides (2 "A", 3 "E", 4 "M").
char lineLetter(char current, const ArticlePrices& article, const PricingContext& ctx);

// The article with the model's highest prices: the highest retail, wholesale and affiliate price
// of its other sizes and colours, and a promotion of the group when the article has none.
ArticlePrices withModelPrices(ArticlePrices article, const QList<ModelPrices>& others);

// Prices a line of `quantity` from list `letter`. Throws UserError when the article's cost or the
// resulting price is zero ("...con costo cero...!", "...con precio cero...!").
SaleLine priceLine(const ArticlePrices& article, char letter, const Decimal& quantity,
                   const PricingContext& ctx);

// The whole rule of a new line: its letter, then its price.
SaleLine priceNewLine(const ArticlePrices& article, const Decimal& quantity,
                      const PricingContext& ctx);

// Applies a discount percent to a line: the price charged is the line's undiscounted price (the
// promotion price for "P") less the percent, rounded to cents; the tax follows.
void applyDiscount(SaleLine& line, const Decimal& percent, bool exempt);

// Tax per unit on the price charged, rounded to cents; zero on an exempt invoice.
Decimal unitTax(const Decimal& chargedPrice, const Decimal& ratePercent, bool exempt);

SaleTotals totalsOf(const QList<SaleLine>& lines);

// The "E" price: cost plus the client's margin, rounded to cents.
Decimal specialPrice(const Decimal& cost, const Decimal& marginPercent);

} // namespace orvo::pos::sale
