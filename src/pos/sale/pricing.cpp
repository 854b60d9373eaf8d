#include "pos/sale/pricing.h"

#include "common/errors/errors.h"

namespace orvo::pos::sale {

namespace {

const Decimal kHundred(100);

Decimal cents(const Decimal& d) {
    return d.rounded(2);
}

// Unit prices keep the article's four decimals: a tax-included 9,97 at 16 % is 8,5948 before tax
// and sells (and prints) as 9,97, where 8,59 would give 9,96.
Decimal unitPrice(const Decimal& d) {
    return d.rounded(4);
}

// The unit price of a letter before any discount, and the price charged by the list itself
// (only a promotion charges less than it asks).
struct ListPrice {
    Decimal precio;
    Decimal precioLista;
};

ListPrice listPrice(const ArticlePrices& a, char letter, const PricingContext& ctx) {
    switch (letter) {
    case kPromotion: {
        const Decimal retail = unitPrice(a.precioDetal);
        const Decimal promo = unitPrice(a.precioPromocion);
        // The promotion travels as a discount per unit on the retail price.
        if (promo > Decimal() && promo < retail)
            return {retail, promo};
        return {retail, retail};
    }
    case kWholesale:
        return {unitPrice(a.precioMayor), unitPrice(a.precioMayor)};
    case kAffiliate:
        return {unitPrice(a.precioAfiliado), unitPrice(a.precioAfiliado)};
    case kSpecial: {
        const Decimal p = specialPrice(a.costoPromedio, ctx.clientMargin);
        return {p, p};
    }
    default:
        return {unitPrice(a.precioDetal), unitPrice(a.precioDetal)};
    }
}

} // namespace

char registerLetter(int registerListType) {
    return (registerListType == 1 || registerListType == 3) ? kRetail : kWholesale;
}

char clientLetter(const QString& clientType) {
    const QString type = clientType.trimmed();
    if (type == QLatin1String("2"))
        return kAffiliate;
    if (type == QLatin1String("3"))
        return kSpecial;
    if (type == QLatin1String("4"))
        return kWholesale;
    return 0;
}

// The codes of CAJAS.TipoListaPrecio and the letters each sells on:
//   1 "Detal"          D, P, A
//   2 "Mayor"          M, P, E
//   3 "Detal y mayor"  every letter
//   4 "Mayor y detal"  every letter
// A retail register also serves affiliates, a wholesale one the cost-plus-margin clients; the
// mixed ones serve everybody and differ only in the list a line falls back to. A code outside
// these (a register saved elsewhere) restricts nothing.
bool registerAllowsLetter(int registerListType, char letter) {
    switch (registerListType) {
    case 1:
        return letter == kRetail || letter == kPromotion || letter == kAffiliate;
    case 2:
        return letter == kWholesale || letter == kPromotion || letter == kSpecial;
    default:
        return true;
    }
}

bool registerMayInvoice(int registerListType, const QString& clientType) {
    const char forced = clientLetter(clientType);
    return forced == 0 || registerAllowsLetter(registerListType, forced);
}

void checkClientAllowed(int registerListType, const SaleClient& client) {
    if (client.isSet() && !registerMayInvoice(registerListType, client.tipo))
        throw UserError(QStringLiteral("La caja no esta configurada para facturar a ") +
                        client.tipoDescripcion + QStringLiteral("...!"));
}

bool promotionActive(const ArticlePrices& article, const QDate& day) {
    if (!article.promocion || !article.fechaInicial.isValid() || !article.fechaFinal.isValid())
        return false;
    return article.fechaInicial <= day && day <= article.fechaFinal;
}

char lineLetter(char current, const ArticlePrices& article, const PricingContext& ctx) {
    char letter = current;
    if (promotionActive(article, ctx.today))
        letter = kPromotion;
    else if (letter == kPromotion)
        letter = registerLetter(ctx.registerListType);
    if (const char forced = clientLetter(ctx.clientType))
        letter = forced;
    return letter;
}

ArticlePrices withModelPrices(ArticlePrices article, const QList<ModelPrices>& others) {
    const ModelPrices* promotion = nullptr;
    for (const ModelPrices& m : others) {
        article.precioDetal = std::max(article.precioDetal, m.precioDetal);
        article.precioMayor = std::max(article.precioMayor, m.precioMayor);
        article.precioAfiliado = std::max(article.precioAfiliado, m.precioAfiliado);
        if (m.promocion)
            promotion = &m;
    }
    // Sizes and colours of one model sell alike: a promotion of the group covers the article.
    if (!article.promocion && promotion) {
        article.promocion = true;
        article.precioPromocion = promotion->precioPromocion;
        article.fechaInicial = promotion->fechaInicial;
        article.fechaFinal = promotion->fechaFinal;
    }
    return article;
}

Decimal specialPrice(const Decimal& cost, const Decimal& marginPercent) {
    return cents(cost + cost * marginPercent / kHundred);
}

Decimal unitTax(const Decimal& chargedPrice, const Decimal& ratePercent, bool exempt) {
    if (exempt)
        return Decimal();
    return cents(chargedPrice * ratePercent / kHundred);
}

SaleLine priceLine(const ArticlePrices& article, char letter, const Decimal& quantity,
                   const PricingContext& ctx) {
    if (article.costoPromedio.isZero())
        throw UserError(QStringLiteral("No se puede vender el artículo con costo cero...!"));
    const ListPrice p = listPrice(article, letter, ctx);
    // A price below half a cent charges nothing.
    if (cents(p.precio).isZero() || cents(p.precioLista).isZero())
        throw UserError(QStringLiteral("No se puede vender el artículo con precio cero...!"));

    SaleLine line;
    line.tipoLista = letter;
    line.codigoBarra = article.codigoBarra;
    line.nombre = article.nombre;
    line.precio = p.precio;
    line.precioLista = p.precioLista;
    line.porcentajeDescuento = p.precio == p.precioLista
                                   ? Decimal()
                                   : ((p.precio - p.precioLista) * kHundred / p.precio).rounded(4);
    line.costo = article.costoPromedio.rounded(5);
    // An exempt invoice carries no rate either, so the fiscal printer prints it exempt.
    line.porcentajeImpuesto = ctx.exempt ? Decimal() : article.porcentajeImpuesto;
    line.impuesto = unitTax(line.precioLista, line.porcentajeImpuesto, ctx.exempt);
    line.cantidad = quantity;
    line.tipo = article.tipo;
    line.article = article;
    return line;
}

SaleLine priceNewLine(const ArticlePrices& article, const Decimal& quantity,
                      const PricingContext& ctx) {
    // Every new line starts on the retail list, whatever the register; a wholesale price comes
    // from the client's type or from switching the line's list.
    const char letter = lineLetter(kRetail, article, ctx);
    return priceLine(article, letter, quantity, ctx);
}

void applyDiscount(SaleLine& line, const Decimal& percent, bool exempt) {
    // A promotion line is discounted from its promotion price.
    Decimal base = line.precio;
    if (line.tipoLista == kPromotion) {
        const Decimal promo = unitPrice(line.article.precioPromocion);
        if (promo > Decimal() && promo < line.precio)
            base = promo;
    }
    line.precioLista = unitPrice(base - base * percent / kHundred);
    line.porcentajeDescuento =
        line.precio.isZero()
            ? Decimal()
            : ((line.precio - line.precioLista) * kHundred / line.precio).rounded(4);
    if (line.tipoLista != kPromotion)
        line.porcentajeDescuento = percent.rounded(4);
    line.impuesto = unitTax(line.precioLista, line.porcentajeImpuesto, exempt);
}

SaleTotals totalsOf(const QList<SaleLine>& lines) {
    SaleTotals t;
    for (const SaleLine& l : lines) {
        t.merchandise += l.precio * l.cantidad;
        t.discount += (l.precio - l.precioLista) * l.cantidad;
        t.tax += l.impuesto * l.cantidad;
        t.cost += l.costo * l.cantidad;
    }
    t.merchandise = cents(t.merchandise);
    t.discount = cents(t.discount);
    t.tax = cents(t.tax);
    t.cost = cents(t.cost);
    t.taxBase = t.merchandise - t.discount;
    t.total = t.taxBase + t.tax;
    return t;
}

} // namespace orvo::pos::sale
