#include "inventory/purchases/purchase_rules.h"

#include "common/errors/errors.h"

#include <QRegularExpression>

namespace orvo::inventory::purchases::rules {

Decimal headerNumber(const QString& text) {
    QString t = text.trimmed();
    if (t.isEmpty())
        return {};
    static const QRegularExpression number(QStringLiteral("^[0-9]*[.,]?[0-9]*$"));
    if (!number.match(t).hasMatch() || t == QStringLiteral(".") || t == QStringLiteral(","))
        throw UserError(QStringLiteral("Debe ingresar un dato valido"));
    t.replace(QLatin1Char(','), QLatin1Char('.'));
    return Decimal::fromString(t);
}

void checkDiscountPercent(const Decimal& percent) {
    if (percent > Decimal(100))
        throw UserError(QStringLiteral("El porcentaje de descuento no puede ser superior al 100%"));
    if (percent < Decimal())
        throw UserError(QStringLiteral("El porcentaje de descuento no puede ser inferior al 0%"));
}

DocumentTotals totalsOf(const QList<DocumentLine>& lines, const Decimal& discountPercent) {
    DocumentTotals t;
    Decimal tax;
    const Decimal kept = Decimal(1) - discountPercent / Decimal(100);
    for (const DocumentLine& l : lines) {
        const Decimal amount = l.quantity * l.price;
        t.merchandise += amount;
        tax += amount * kept * l.taxPercent / Decimal(100);
    }
    t.discount = (t.merchandise * discountPercent / Decimal(100)).rounded(2);
    t.merchandise = t.merchandise.rounded(2);
    t.tax = tax.rounded(2);
    return t;
}

bool everyLineHasPrice(const QList<DocumentLine>& lines) {
    for (const DocumentLine& l : lines)
        if (l.price.isZero())
            return false;
    return true;
}

Decimal prorationFactor(const Purchase& p, const Decimal& merchandise) {
    Decimal charges = p.serviceFee + p.surcharges + p.otherTaxes;
    if (p.valuation == Valuation::WithFreight)
        charges += p.freight + p.insurance;
    if (merchandise.isZero())
        throw UserError(QStringLiteral("La compra no se puede aprobar con el total de la "
                                       "mercancía en cero...!"));
    return charges / merchandise;
}

Decimal proratedPrice(const Decimal& invoicePrice, const Decimal& discountPercent,
                      const Decimal& factor) {
    const Decimal net = invoicePrice - invoicePrice * discountPercent / Decimal(100);
    return net + net * factor;
}

Decimal movingAverage(const Decimal& stock, const Decimal& averageCost, const Decimal& quantity,
                      const Decimal& value, const Decimal& lastCost) {
    if (stock.isNegative())
        return lastCost;
    const Decimal after = stock + quantity;
    if (after <= Decimal())
        return averageCost;
    return (averageCost * stock + value) / after;
}

QList<DocumentLine> mergedByBarcode(const QList<DocumentLine>& lines) {
    QList<DocumentLine> out;
    for (const DocumentLine& l : lines) {
        bool merged = false;
        for (DocumentLine& o : out) {
            if (o.barcode == l.barcode) {
                o.quantity += l.quantity;
                merged = true;
                break;
            }
        }
        if (!merged)
            out.append(l);
    }
    return out;
}

void checkLine(const DocumentLine& line) {
    if (line.barcode.trimmed().isEmpty())
        throw UserError(QStringLiteral("Debe ingresar el código del artículo...!"));
    if (line.quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor a cero...!"));
    if (line.price.isNegative())
        throw UserError(QStringLiteral("El precio no puede ser negativo...!"));
}

} // namespace orvo::inventory::purchases::rules
