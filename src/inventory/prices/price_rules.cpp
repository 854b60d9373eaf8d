#include "inventory/prices/price_rules.h"

#include "common/errors/errors.h"
#include "inventory/articles/article_rules.h"

#include <algorithm>

namespace orvo::inventory::prices {

int PriceList::indexOf(const ModelKey& key) const {
    for (int i = 0; i < lines.size(); ++i)
        if (lines[i].key() == key)
            return i;
    return -1;
}

QString listStatusText(int status) {
    return status == 1 ? QStringLiteral("APROBADA") : QStringLiteral("ABIERTA");
}

namespace rules {

namespace {

constexpr int kPriceScale = 4;

Decimal percentOf(const Decimal& price, const Decimal& percent) {
    return (price * (Decimal(100) + percent) / Decimal(100)).rounded(kPriceScale);
}

bool any(const QList<PriceLine>& lines, bool (*test)(const PriceLine&)) {
    return std::any_of(lines.begin(), lines.end(), test);
}

} // namespace

Decimal suggested(const Decimal& cost, const Decimal& factor) {
    return (cost * factor).rounded(kPriceScale);
}

void suggest(PriceLine& line, const PriceList& list) {
    line.retailSuggested = suggested(line.cost, list.retailFactor);
    line.wholesaleSuggested = suggested(line.cost, list.wholesaleFactor);
    line.memberSuggested = suggested(line.cost, list.memberFactor);
}

PriceLine lineFor(const ModelPrices& model, const PriceList& list, const Decimal& taxFactor) {
    PriceLine l;
    l.reference = model.reference;
    l.brand = model.brand;
    l.name = model.name;
    l.cost = model.cost;
    l.retail = (model.retail * taxFactor).rounded(kPriceScale);
    l.wholesale = (model.wholesale * taxFactor).rounded(kPriceScale);
    l.member = (model.member * taxFactor).rounded(kPriceScale);
    l.promotion = model.promotion;
    l.promotionPrice = (model.promotionPrice * taxFactor).rounded(kPriceScale);
    l.discount = inventory::rules::discountOf(l.retail, l.promotionPrice);
    l.start = model.start;
    l.end = model.end;
    suggest(l, list);
    return l;
}

void checkLines(const QList<PriceLine>& lines) {
    if (lines.isEmpty())
        throw UserError(
            QStringLiteral("Debe seleccionar almenos una referencia para la lista de precios...!"));
    if (any(lines, [](const PriceLine& l) { return l.retail.isZero(); }))
        throw UserError(QStringLiteral("Existen precios detal en cero...!"));
    if (any(lines, [](const PriceLine& l) { return l.wholesale.isZero(); }))
        throw UserError(QStringLiteral("Existen precios mayor en cero...!"));
    if (any(lines, [](const PriceLine& l) { return l.member.isZero(); }))
        throw UserError(QStringLiteral("Existen precios afiliados en cero...!"));
    if (any(lines, [](const PriceLine& l) { return l.promotion && l.promotionPrice.isZero(); }))
        throw UserError(QStringLiteral("Existen precios promoción en cero...!"));
    if (any(lines, [](const PriceLine& l) { return l.promotion && l.start > l.end; }))
        throw UserError(
            QStringLiteral("Fecha inicial de promocion debe ser menor a la fecha final...!"));
}

void checkLineDates(const QDate& start, const QDate& end) {
    if (start > end)
        throw UserError(QStringLiteral(
            "La fecha inicial no puede ser mayor a la fecha final de la promoción...!"));
}

void setLineDiscount(PriceLine& line, const Decimal& percent) {
    line.promotionPrice = inventory::rules::promotionPriceFor(line.retail, percent);
    line.discount = percent;
}

void setLinePromotionPrice(PriceLine& line, const Decimal& price) {
    inventory::rules::checkPromotionPrice(line.retail, price);
    line.promotionPrice = price.rounded(kPriceScale);
    line.discount = inventory::rules::discountOf(line.retail, line.promotionPrice);
}

QString applyListDiscount(QList<PriceLine>& lines, const Decimal& percent, const QDate& start,
                          const QDate& end) {
    if (percent <= Decimal())
        throw UserError(QStringLiteral("No puede ofrecer un Descuento menor a 0"));
    checkLineDates(start, end);
    for (PriceLine& l : lines) {
        setLineDiscount(l, percent);
        l.promotion = true;
        l.start = start;
        l.end = end;
    }
    return QStringLiteral("Se aplico un descuento de ") + percent.toString() +
           QStringLiteral("% a la lista actual.");
}

QString removeListDiscount(QList<PriceLine>& lines) {
    for (PriceLine& l : lines) {
        l.promotion = false;
        l.discount = Decimal();
        l.promotionPrice = Decimal();
        l.start = kNoPromotionDate;
        l.end = kNoPromotionDate;
    }
    return QStringLiteral("Se elimino cualquier porcentaje de descuento que aplicase a la lista "
                          "con anterioridad.");
}

void removeTax(PriceLine& line, const Decimal& taxFactor) {
    for (Decimal* p : {&line.retailSuggested, &line.retail, &line.wholesaleSuggested,
                       &line.wholesale, &line.memberSuggested, &line.member, &line.promotionPrice})
        *p = (*p / taxFactor).rounded(kPriceScale);
}

void checkPromotionStart(const QDate& start, const QDate& end, const QDate& today) {
    if (start < today)
        throw UserError(QStringLiteral(
            "No puede colocar una fecha inicial de promoción menor al dia de hoy...!"));
    if (start > end)
        throw UserError(QStringLiteral(
            "No puede colocar una fecha inicial de promoción mayor a la fecha final...!"));
}

void checkPromotionEnd(const QDate& start, const QDate& end, const QDate& today) {
    if (end < today)
        throw UserError(QStringLiteral(
            "No puede colocar una fecha final de promoción menor al dia de hoy...!"));
    if (end < start)
        throw UserError(QStringLiteral(
            "No puede colocar una fecha final de promoción menor a la fecha inicial...!"));
}

void checkPromotionRequest(const PromotionRequest& r, const QDate& today) {
    if (r.models.isEmpty())
        throw UserError(
            QStringLiteral("Debe seleccionar una marca y una referencia para la promoción...!"));
    if (r.promotionPercent <= Decimal() || r.promotionPercent >= Decimal(100))
        throw UserError(
            QStringLiteral("introdusca un numero entre 0 y 100 para el precio promoción...!"));
    const auto badSide = [](const std::optional<Decimal>& p) {
        return p && (*p <= Decimal(-100) || *p > Decimal(100) || p->isZero());
    };
    if (badSide(r.wholesalePercent))
        throw UserError(QStringLiteral(
            "introdusca un numero entre -100 y 100 y <> 0 para el precio mayor...!"));
    if (badSide(r.memberPercent))
        throw UserError(QStringLiteral(
            "introdusca un numero entre -100 y 100 y <> 0 para el precio afiliado...!"));
    checkPromotionStart(r.start, r.end, today);
    checkPromotionEnd(r.start, r.end, today);
}

PriceLine promotionLine(const ModelPrices& model, const PromotionRequest& r,
                        const Decimal& taxFactor) {
    PriceList list; // factors 1, 1, 1
    PriceLine l = lineFor(model, list, taxFactor);
    if (r.wholesalePercent)
        l.wholesale = percentOf(l.retail, *r.wholesalePercent);
    if (r.memberPercent)
        l.member = percentOf(l.retail, *r.memberPercent);
    l.promotionPrice = percentOf(l.retail, -r.promotionPercent);
    l.discount = r.promotionPercent;
    l.promotion = true;
    l.start = r.start;
    l.end = r.end;
    return l;
}

void checkMargins(const Margins& m) {
    const auto check = [](const std::optional<Decimal>& margin, const char* price) {
        const QString which = QString::fromLatin1(price);
        if (!margin)
            throw UserError(QStringLiteral("Introduzca un porcentaje de utilidad para el precio ") +
                            which + QStringLiteral("...!"));
        if (*margin <= Decimal())
            throw UserError(QStringLiteral("Introduzca un porcentaje de utilidad > 0 para el "
                                           "precio ") +
                            which + QStringLiteral("...!"));
    };
    check(m.retail, "detal");
    check(m.wholesale, "mayor");
    check(m.member, "afiliado");
}

Decimal priceFromCost(const Decimal& cost, const Decimal& marginPercent) {
    return percentOf(cost, marginPercent);
}

} // namespace rules

} // namespace orvo::inventory::prices
