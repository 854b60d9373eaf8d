#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QSqlDatabase>
#include <QString>
#include <optional>

namespace orvo::inventory::stock {

// Prices are set per model: what a model's variants sell at and their promotion.
struct ModelPrices {
    Decimal retail; // before tax
    Decimal wholesale;
    Decimal member;
    bool promotion = false;
    Decimal promotionPrice;
    QDate promotionStart;
    QDate promotionEnd;
};

// Model prices of a variant: the prices and promotion of the other variants of the model
// (Referencia, CodigoMarca), leaving `exceptBarcode` out; nothing when the model has no other
// variant. Variants that disagree on the promotion flag make one group each: the group on
// promotion wins, so a new size joins a running promotion.
std::optional<ModelPrices> modelPricesOf(const QSqlDatabase& db, const QString& reference,
                                         const QString& brand, const QString& exceptBarcode);

// Gives the variant `barcode` the prices of its model, so that a variant created by an importer
// sells like its sizes and colours. Inside the caller's transaction. False when the barcode does
// not exist or its model has no other variant (its own prices stay).
bool giveModelPrices(const QSqlDatabase& db, const QString& barcode);

} // namespace orvo::inventory::stock
