#include "common/errors/errors.h"
#include "pos/sale/pricing.h"

#include <gtest/gtest.h>

using orvo::Decimal;
using namespace orvo::pos::sale;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

ArticlePrices shirt() {
    ArticlePrices a;
    a.codigoBarra = QStringLiteral("7590001");
    a.nombre = QStringLiteral("CAMISA");
    a.referencia = QStringLiteral("CAM-01");
    a.codigoMarca = QStringLiteral("001");
    a.precioDetal = d("100.00");
    a.precioMayor = d("80.00");
    a.precioAfiliado = d("8.5948"); // 9,97 with 16 % of tax
    a.costoPromedio = d("50.12345");
    a.porcentajeImpuesto = d("16");
    a.promocion = true;
    a.precioPromocion = d("75.00");
    a.fechaInicial = QDate(2026, 3, 10);
    a.fechaFinal = QDate(2026, 3, 20);
    return a;
}

PricingContext on(QDate day) {
    PricingContext c;
    c.today = day;
    return c;
}

QString messageOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const orvo::UserError& e) {
        return e.text();
    }
    return {};
}

} // namespace

TEST(Pricing, PromotionHoldsOnBothBoundaryDaysOnly) {
    const ArticlePrices a = shirt();
    EXPECT_EQ(priceNewLine(a, 1, on(QDate(2026, 3, 9))).tipoLista, 'D');
    for (QDate day : {QDate(2026, 3, 10), QDate(2026, 3, 15), QDate(2026, 3, 20)}) {
        const SaleLine l = priceNewLine(a, 1, on(day));
        EXPECT_EQ(l.tipoLista, 'P') << day.toString().toStdString();
        // The promotion is a discount per unit on the retail price.
        EXPECT_EQ(l.precio, d("100.00"));
        EXPECT_EQ(l.precioLista, d("75.00"));
        EXPECT_EQ(l.porcentajeDescuento, d("25"));
        EXPECT_EQ(l.impuesto, d("12.00"));
    }
    EXPECT_EQ(priceNewLine(a, 1, on(QDate(2026, 3, 21))).tipoLista, 'D');
}

TEST(Pricing, PromotionPriceNotBelowRetailGivesNoDiscount) {
    ArticlePrices a = shirt();
    for (const char* promo : {"0", "100.00", "120"}) {
        a.precioPromocion = d(promo);
        const SaleLine l = priceNewLine(a, 1, on(QDate(2026, 3, 12)));
        EXPECT_EQ(l.tipoLista, 'P');
        EXPECT_EQ(l.precioLista, l.precio) << promo;
        EXPECT_TRUE(l.porcentajeDescuento.isZero());
    }
}

TEST(Pricing, EachListLetterPricesFromItsColumn) {
    ArticlePrices a = shirt();
    a.promocion = false;
    PricingContext c = on(QDate(2026, 1, 1));
    c.clientMargin = d("25");
    struct Case {
        char letter;
        const char* price;
    };
    // Prices keep the catalogue's four decimals; only the special price is charged in cents.
    for (const Case& k : {Case{'D', "100.00"}, Case{'M', "80.00"}, Case{'A', "8.5948"},
                          // 50.12345 + 25 % = 62.6543125 -> 62.65
                          Case{'E', "62.65"}}) {
        const SaleLine l = priceLine(a, k.letter, 2, c);
        EXPECT_EQ(l.precio, d(k.price)) << k.letter;
        EXPECT_EQ(l.precioLista, d(k.price)) << k.letter;
        EXPECT_EQ(l.impuesto, (d(k.price) * 16 / 100).rounded(2)) << k.letter;
    }
    EXPECT_EQ(specialPrice(d("10.01"), d("12.5")), d("11.26")); // 11.26125
    EXPECT_EQ(specialPrice(d("0.03"), d("50")), d("0.05"));     // 0.045 rounds up
}

TEST(Pricing, ClientTypeOverridesTheLetterPromotionIncluded) {
    const ArticlePrices a = shirt();
    PricingContext c = on(QDate(2026, 3, 15));
    const QList<std::pair<const char*, char>> cases = {
        {"1", 'P'}, {"2", 'A'}, {"3", 'E'}, {"4", 'M'}, {"9", 'P'}};
    for (const auto& [type, letter] : cases) {
        c.clientType = QString::fromLatin1(type);
        EXPECT_EQ(lineLetter('D', a, c), letter) << type;
    }
}

TEST(Pricing, PromotionEndedFallsBackToTheRegistersList) {
    const ArticlePrices a = shirt();
    PricingContext c = on(QDate(2026, 4, 1));
    for (int type : {0, 1, 2, 3, 4}) {
        c.registerListType = type;
        EXPECT_EQ(lineLetter('P', a, c), type == 1 || type == 3 ? 'D' : 'M') << type;
    }
    // Other letters stay as they are when no promotion is involved.
    c.registerListType = 1;
    EXPECT_EQ(lineLetter('M', a, c), 'M');
}

TEST(Pricing, ANewLineStartsRetailOnEveryRegister) {
    ArticlePrices a = shirt();
    a.promocion = false;
    PricingContext c = on(QDate(2026, 4, 1));
    for (int type : {1, 2, 3, 4}) {
        c.registerListType = type;
        const SaleLine l = priceNewLine(a, 1, c);
        EXPECT_EQ(l.tipoLista, 'D') << type;
        EXPECT_EQ(l.precio, d("100.00")) << type;
    }
    // A wholesale client still buys at the wholesale price.
    c.clientType = QStringLiteral("4");
    EXPECT_EQ(priceNewLine(a, 1, c).precio, d("80.00"));
}

TEST(Pricing, ModelSellsAtItsHighestPricesAndSharesThePromotion) {
    ArticlePrices a = shirt();
    a.promocion = false;
    const QList<ModelPrices> others = {
        {d("95"), d("85.5"), d("70"), false, {}, {}, {}},
        {d("110.50"), d("79"), d("91.25"), true, d("88"), QDate(2026, 5, 1), QDate(2026, 5, 2)}};
    const ArticlePrices m = withModelPrices(a, others);
    EXPECT_EQ(m.precioDetal, d("110.50"));
    EXPECT_EQ(m.precioMayor, d("85.5"));
    EXPECT_EQ(m.precioAfiliado, d("91.25"));
    EXPECT_TRUE(m.promocion);
    const SaleLine l = priceNewLine(m, 1, on(QDate(2026, 5, 2)));
    EXPECT_EQ(l.tipoLista, 'P');
    EXPECT_EQ(l.precio, d("110.50"));
    EXPECT_EQ(l.precioLista, d("88.00"));
    // The article's own promotion wins over the group's.
    EXPECT_EQ(withModelPrices(shirt(), others).precioPromocion, d("75.00"));
    EXPECT_EQ(withModelPrices(a, {}).precioDetal, a.precioDetal);
}

TEST(Pricing, ZeroCostOrZeroPriceIsRefused) {
    ArticlePrices a = shirt();
    a.promocion = false;
    const PricingContext c = on(QDate(2026, 1, 1));
    a.precioAfiliado = d("0.004"); // rounds to zero cents
    EXPECT_EQ(messageOf([&] { priceLine(a, 'A', 1, c); }),
              QStringLiteral("No se puede vender el artículo con precio cero...!"));
    a.costoPromedio = Decimal();
    EXPECT_EQ(messageOf([&] { priceLine(a, 'D', 1, c); }),
              QStringLiteral("No se puede vender el artículo con costo cero...!"));
}

TEST(Pricing, ExemptInvoiceCarriesNoTax) {
    PricingContext c = on(QDate(2026, 3, 15));
    c.exempt = true;
    SaleLine l = priceNewLine(shirt(), 3, c);
    EXPECT_TRUE(l.impuesto.isZero());
    applyDiscount(l, d("10"), true);
    EXPECT_TRUE(l.impuesto.isZero());
    EXPECT_TRUE(totalsOf({l}).tax.isZero());
}

TEST(Pricing, DiscountRecomputesPriceAndTaxOnTheChargedPrice) {
    ArticlePrices a = shirt();
    a.promocion = false;
    a.precioDetal = d("33.33");
    a.porcentajeImpuesto = d("8");
    SaleLine l = priceNewLine(a, d("1.5"), on(QDate(2026, 1, 1)));
    applyDiscount(l, d("12.5"), false);
    EXPECT_EQ(l.precioLista, d("29.1638")); // 29.16375
    EXPECT_EQ(l.porcentajeDescuento, d("12.5"));
    EXPECT_EQ(l.impuesto, d("2.33")); // 2.3328
    // A promotion line is discounted from its promotion price.
    SaleLine p = priceNewLine(shirt(), 1, on(QDate(2026, 3, 15)));
    applyDiscount(p, d("10"), false);
    EXPECT_EQ(p.precioLista, d("67.50"));
    EXPECT_EQ(p.porcentajeDescuento, d("32.5"));
    EXPECT_EQ(p.impuesto, d("10.80"));
}

TEST(Pricing, TotalsAreExactToTheCent) {
    ArticlePrices a = shirt();
    a.promocion = false;
    a.precioDetal = d("0.10");
    a.costoPromedio = d("0.07");
    QList<SaleLine> lines;
    for (int i = 0; i < 3; ++i)
        lines << priceNewLine(a, 1, on(QDate(2026, 1, 1)));
    lines << priceNewLine(a, d("0.333"), on(QDate(2026, 1, 1)));
    const SaleTotals t = totalsOf(lines);
    EXPECT_EQ(t.merchandise, d("0.33")); // 0.3333
    EXPECT_EQ(t.tax, d("0.07"));         // 0.02 per unit: 0.06666
    EXPECT_EQ(t.cost, d("0.23"));        // 0.23331
    EXPECT_EQ(t.total, t.merchandise - t.discount + t.tax);
}
