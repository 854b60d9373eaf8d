#pragma once

#include "inventory/articles/article_types.h"

#include <QVariant>

// Rules of the article master that need no database.
namespace orvo::inventory::rules {

// Trimmed model name + " T:" + size + " " + the first 13 characters of the colour name.
QString variantName(const QString& modelName, const QString& size, const QString& colourName);

// Tax-included price from a before-tax one, and back (before-tax kept to four decimals).
Decimal withTax(const Decimal& beforeTax, const Decimal& ratePercent);
Decimal withoutTax(const Decimal& withTaxPrice, const Decimal& ratePercent);

// The discount shown for a promotion price: 0 for a zero retail price, else
// (1 - promotion / retail) * 100 to two decimals.
Decimal discountOf(const Decimal& retailPrice, const Decimal& promotionPrice);
// Checks a typed discount (0 up to, not including, 100) and gives the promotion price it sets.
Decimal promotionPriceFor(const Decimal& retailPrice, const Decimal& discountPercent);
// Refuses a promotion price above the retail price.
void checkPromotionPrice(const Decimal& retailPrice, const Decimal& promotionPrice);

// Tree key of a category code: "C" + code; the root is "CATEGORIAS".
inline QString categoryKey(const QString& code) {
    return QStringLiteral("C") + code;
}
inline const QString kRootCategoryKey = QStringLiteral("CATEGORIAS");
// A key the model may be saved under: a detail category (seven characters or more) or "C00".
bool isDetailCategoryKey(const QString& key);

// INVENTARIO.CodigoBarra holds at most this many characters.
inline constexpr int kBarcodeLength = 15;

// A barcode as a cell may hold it: at most 15 characters (INVENTARIO.CodigoBarra), and, when it
// is made of 13 or 8 digits, an EAN-13 or EAN-8 whose last digit is its check digit. Other codes
// (the store's own) are taken as they are. Throws UserError.
void checkBarcodeFormat(const QString& barcode);
// The check digit of an EAN body (12 or 7 digits).
int eanCheckDigit(const QString& body);

// The checks of Guardar before anything is written, in their order; throws UserError.
void validateModel(const ArticleModel& model, const ModelGrid& grid, bool isNew,
                   const QDate& today);

// A number as the article log writes it: a point and eight decimals.
QString logNumber(const Decimal& value);
// The statement with its bound values written in, for LOG_ARTICULOS: text between single
// quotes (quotes doubled), Decimal values with eight decimals, dates as 'yyyymmdd hh:mm:ss'.
QString describeStatement(const QString& statement, const QVariantList& values);

} // namespace orvo::inventory::rules
