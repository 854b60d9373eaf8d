#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace orvo::inventory::prices {

inline const QString kPriceListScreen = QStringLiteral("frmListaPrecios");
inline const QString kPromotionScreen = QStringLiteral("frmPreciosPromocion");
inline const QString kRepriceScreen = QStringLiteral("frmActualizarPrecios");

// A promotion without dates is stored with this day.
inline const QDate kNoPromotionDate{2000, 1, 1};

// A model: one reference of one brand, whatever its sizes and colours.
struct ModelKey {
    QString reference;
    QString brand;
    friend bool operator==(const ModelKey&, const ModelKey&) = default;
};

// One line of a price list (MOVLISTAPRECIO): the prices of one model.
struct PriceLine {
    QString reference;
    QString brand;
    QString name; // the model's name, shown only
    Decimal cost;
    Decimal discount; // percentage of the promotion price under the retail price
    Decimal retailSuggested;
    Decimal retail;
    Decimal wholesaleSuggested;
    Decimal wholesale;
    Decimal memberSuggested;
    Decimal member;
    Decimal promotionPrice;
    bool promotion = false;
    QDate start = kNoPromotionDate;
    QDate end = kNoPromotionDate;

    ModelKey key() const { return {reference, brand}; }
};

// A price list (LISTAPRECIO) with its lines.
struct PriceList {
    int number = 0; // 0 until it is saved
    QDateTime date;
    Decimal retailFactor = Decimal(1); // suggested prices are the cost times these
    Decimal wholesaleFactor = Decimal(1);
    Decimal memberFactor = Decimal(1);
    QString note;
    QString user;
    int status = 0; // 0 ABIERTA, 1 APROBADA
    QList<PriceLine> lines;

    bool isApproved() const { return status == 1; }
    int indexOf(const ModelKey& key) const;
};

// "ABIERTA" or "APROBADA".
QString listStatusText(int status);

// A list as the list of lists shows it.
struct PriceListSummary {
    int number = 0;
    QDateTime date;
    QString note;
    QString user;
    int status = 0;
    int lines = 0;
};

// What the catalogue holds for a model: the highest price of its variants and their highest
// average cost (the model's prices are the same on every variant once a list is applied).
struct ModelPrices {
    QString reference;
    QString brand;
    QString brandName;
    QString name;
    Decimal cost;
    Decimal retail;
    Decimal wholesale;
    Decimal member;
    Decimal promotionPrice;
    bool promotion = false;
    QDate start = kNoPromotionDate;
    QDate end = kNoPromotionDate;
    int variants = 0;
};

// Which models the promotion screen offers: all of a category (and its sub-categories), a
// brand, references starting with a text; empty filters take everything.
struct ModelFilter {
    QString category;
    QString brand;
    QString reference;
};

// frmPreciosPromocion: the percentages and the period of a promotion list.
struct PromotionRequest {
    QList<ModelKey> models;
    Decimal promotionPercent;
    std::optional<Decimal> wholesalePercent; // against the retail price, when given
    std::optional<Decimal> memberPercent;
    QDate start;
    QDate end;
    QString user;
};

// frmActualizarPrecios: margins over the average cost.
struct Margins {
    std::optional<Decimal> retail;
    std::optional<Decimal> wholesale;
    std::optional<Decimal> member;
};

} // namespace orvo::inventory::prices
