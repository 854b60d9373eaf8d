// Price lists, promotion lists and the repricing from costs against a real store database.
#include "inventory/prices/price_support.h"

#include "common/errors/errors.h"
#include "inventory/prices/price_lists.h"
#include "inventory/prices/price_rules.h"

using namespace orvo;
using namespace orvo::inventory;
using namespace orvo::inventory::prices;
using test::refusal;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

PriceLine line(const char* retail, const char* wholesale, const char* member) {
    PriceLine l;
    l.reference = "R";
    l.brand = "N1";
    l.retail = d(retail);
    l.wholesale = d(wholesale);
    l.member = d(member);
    return l;
}

class PriceLists : public test::PriceTest {
protected:
    ArticleWriter writer() const { return ArticleWriter::here("ANA", "frmListaPrecios"); }
    PriceLine modelLineOf(const char* reference, const char* brand, const PriceList& list) {
        const auto l = modelLine(db(), {reference, brand}, list);
        EXPECT_TRUE(l) << reference;
        return l.value_or(PriceLine());
    }
};

} // namespace

TEST(PriceListRules, SaveChecksComeInTheirOrder) {
    EXPECT_EQ(refusal([] { rules::checkLines({}); }),
              "Debe seleccionar almenos una referencia para la lista de precios...!");
    EXPECT_EQ(refusal([] {
                  rules::checkLines({line("10", "9", "9"), line("0", "0", "0")});
              }),
              "Existen precios detal en cero...!");
    EXPECT_EQ(refusal([] { rules::checkLines({line("10", "0", "0")}); }),
              "Existen precios mayor en cero...!");
    EXPECT_EQ(refusal([] { rules::checkLines({line("10", "9", "0")}); }),
              "Existen precios afiliados en cero...!");
    PriceLine promo = line("10", "9", "9");
    EXPECT_NO_THROW(rules::checkLines({promo})); // a zero promotion price off promotion is fine
    promo.promotion = true;
    EXPECT_EQ(refusal([&] { rules::checkLines({promo}); }),
              "Existen precios promoción en cero...!");
    promo.promotionPrice = d("8");
    promo.start = QDate(2026, 5, 10);
    promo.end = QDate(2026, 5, 9);
    EXPECT_EQ(refusal([&] { rules::checkLines({promo}); }),
              "Fecha inicial de promocion debe ser menor a la fecha final...!");
    EXPECT_EQ(refusal([&] { rules::checkLineDates(promo.start, promo.end); }),
              "La fecha inicial no puede ser mayor a la fecha final de la promoción...!");
    promo.end = promo.start; // a one-day promotion
    EXPECT_NO_THROW(rules::checkLines({promo}));
}

TEST(PriceListRules, ListDiscountSuggestedPricesAndTheTaxTakenOut) {
    QList<PriceLine> lines = {line("100", "80", "90"), line("12.5", "10", "11")};
    const QDate from(2026, 6, 1), to(2026, 6, 7);
    EXPECT_EQ(rules::applyListDiscount(lines, d("30"), from, to),
              "Se aplico un descuento de 30% a la lista actual.");
    EXPECT_TRUE(lines[1].promotion);
    EXPECT_EQ(lines[0].promotionPrice, d("70"));
    EXPECT_EQ(lines[1].promotionPrice, d("8.75"));
    EXPECT_EQ(lines[1].discount, d("30"));
    EXPECT_EQ(lines[1].end, to);
    EXPECT_EQ(refusal([&] { rules::applyListDiscount(lines, d("100"), from, to); }),
              "No puede ofrecer un descuento mayor o igual al 100%");
    EXPECT_EQ(rules::removeListDiscount(lines),
              "Se elimino cualquier porcentaje de descuento que aplicase a la lista con "
              "anterioridad.");
    EXPECT_FALSE(lines[0].promotion);
    EXPECT_EQ(lines[0].promotionPrice, Decimal());

    PriceList list;
    list.retailFactor = d("1.8");
    list.wholesaleFactor = d("1.5");
    list.memberFactor = d("1.65");
    PriceLine l = line("116", "92.8", "104.4");
    l.cost = d("33.33333");
    rules::suggest(l, list);
    EXPECT_EQ(l.retailSuggested, d("60.0000"));
    EXPECT_EQ(l.wholesaleSuggested, d("50.0000"));
    EXPECT_EQ(l.memberSuggested, d("55.0000"));
    l.promotionPrice = d("81.2");
    rules::removeTax(l, d("1.16"));
    EXPECT_EQ(l.retail, d("100"));
    EXPECT_EQ(l.wholesale, d("80"));
    EXPECT_EQ(l.member, d("90"));
    EXPECT_EQ(l.promotionPrice, d("70"));
    EXPECT_EQ(l.retailSuggested, d("51.7241"));
}

TEST(PromotionRules, PercentagesAndDatesWithTheirMessages) {
    const QDate today(2026, 5, 10);
    PromotionRequest r;
    r.promotionPercent = d("30");
    r.start = today;
    r.end = today.addDays(6);
    EXPECT_EQ(refusal([&] { rules::checkPromotionRequest(r, today); }),
              "Debe seleccionar una marca y una referencia para la promoción...!");
    r.models = {{"R1", "N1"}};
    for (const char* bad : {"0", "100", "-5", "120"}) {
        r.promotionPercent = d(bad);
        EXPECT_EQ(refusal([&] { rules::checkPromotionRequest(r, today); }),
                  "introdusca un numero entre 0 y 100 para el precio promoción...!")
            << bad;
    }
    r.promotionPercent = d("30");
    for (const char* bad : {"0", "-100", "100.01"}) {
        r.wholesalePercent = d(bad);
        EXPECT_EQ(refusal([&] { rules::checkPromotionRequest(r, today); }),
                  "introdusca un numero entre -100 y 100 y <> 0 para el precio mayor...!")
            << bad;
    }
    r.wholesalePercent = d("-10");
    r.memberPercent = d("0");
    EXPECT_EQ(refusal([&] { rules::checkPromotionRequest(r, today); }),
              "introdusca un numero entre -100 y 100 y <> 0 para el precio afiliado...!");
    r.memberPercent.reset();
    EXPECT_NO_THROW(rules::checkPromotionRequest(r, today));

    EXPECT_EQ(refusal([&] { rules::checkPromotionStart(today.addDays(-1), r.end, today); }),
              "No puede colocar una fecha inicial de promoción menor al dia de hoy...!");
    EXPECT_EQ(refusal([&] { rules::checkPromotionStart(r.end.addDays(1), r.end, today); }),
              "No puede colocar una fecha inicial de promoción mayor a la fecha final...!");
    EXPECT_EQ(refusal([&] { rules::checkPromotionEnd(today, today.addDays(-1), today); }),
              "No puede colocar una fecha final de promoción menor al dia de hoy...!");
    EXPECT_EQ(refusal([&] { rules::checkPromotionEnd(today.addDays(3), today.addDays(2), today); }),
              "No puede colocar una fecha final de promoción menor a la fecha inicial...!");

    ModelPrices m;
    m.retail = d("100");
    m.wholesale = d("80");
    m.member = d("90");
    m.cost = d("50");
    PriceLine l = rules::promotionLine(m, r, Decimal(1));
    EXPECT_EQ(l.promotionPrice, d("70"));
    EXPECT_EQ(l.wholesale, d("90")); // 10 % under retail
    EXPECT_EQ(l.member, d("90"));    // as it was
    EXPECT_TRUE(l.promotion);
    // Keyed with tax included, the line shows the price with tax.
    l = rules::promotionLine(m, r, d("1.16"));
    EXPECT_EQ(l.retail, d("116"));
    EXPECT_EQ(l.promotionPrice, d("81.2"));
}

TEST(RepriceRules, EveryMarginGivenAndAboveZero) {
    Margins m;
    EXPECT_EQ(refusal([&] { rules::checkMargins(m); }),
              "Introduzca un porcentaje de utilidad para el precio detal...!");
    m.retail = d("0");
    EXPECT_EQ(refusal([&] { rules::checkMargins(m); }),
              "Introduzca un porcentaje de utilidad > 0 para el precio detal...!");
    m.retail = d("40");
    EXPECT_EQ(refusal([&] { rules::checkMargins(m); }),
              "Introduzca un porcentaje de utilidad para el precio mayor...!");
    m.wholesale = d("20");
    m.member = d("-1");
    EXPECT_EQ(refusal([&] { rules::checkMargins(m); }),
              "Introduzca un porcentaje de utilidad > 0 para el precio afiliado...!");
    EXPECT_EQ(rules::priceFromCost(d("33.33333"), d("40")), d("46.6667"));
}

TEST_F(PriceLists, AModelListedOnceUpdatesEveryVariantOnlyWhenAskedTo) {
    PriceList list;
    list.retailFactor = d("2");
    list.lines << modelLineOf("R1", "N1", list);
    EXPECT_EQ(list.lines[0].cost, d("52")); // the highest cost of the model
    EXPECT_EQ(list.lines[0].retailSuggested, d("104"));
    EXPECT_EQ(list.lines[0].name, "ZAPATO R1");
    list.lines[0].retail = d("120.5");
    list.lines[0].wholesale = d("99");
    rules::setLineDiscount(list.lines[0], d("20"));
    list.lines[0].promotion = true;
    list.lines[0].start = QDate::currentDate();
    list.lines[0].end = QDate::currentDate().addDays(7);

    // Saved open: nothing reaches the catalogue.
    SaveResult r = saveList(db(), list, {}, writer());
    EXPECT_EQ(r.number, 1);
    EXPECT_EQ(scalar("SELECT Status FROM LISTAPRECIO WHERE Numero = 1").toInt(), 0);
    EXPECT_EQ(scalar("SELECT Usuario FROM LISTAPRECIO WHERE Numero = 1").toString(), "ANA");
    EXPECT_EQ(listed("PrecioPromocion", 1, "R1"), d("96.4"));
    EXPECT_EQ(inventory("PrecioDetal", "R1-38"), d("100"));

    // Approved without the second Yes: still nothing.
    auto reopened = loadList(db(), 1);
    ASSERT_TRUE(reopened);
    r = saveList(db(), *reopened, {true, false}, writer());
    EXPECT_EQ(r.number, 1);
    EXPECT_EQ(count("LISTAPRECIO"), 1);
    EXPECT_EQ(count("MOVLISTAPRECIO"), 1);
    EXPECT_EQ(scalar("SELECT Status FROM LISTAPRECIO WHERE Numero = 1").toInt(), 1);
    EXPECT_EQ(inventory("PrecioDetal", "R1-38"), d("100"));
    // An approved list is not saved again.
    EXPECT_EQ(refusal([&] { saveList(db(), *reopened, {}, writer()); }),
              "La lista de precio 1 ya esta aprobada...!");

    // The Yes given later: every size takes the model's prices and promotion.
    const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
    EXPECT_EQ(applyListToInventory(db(), 1, writer()), 3);
    for (const char* code : {"R1-36", "R1-38", "R1-40"}) {
        EXPECT_EQ(inventory("PrecioDetal", code), d("120.5")) << code;
        EXPECT_EQ(inventory("PrecioMayor", code), d("99")) << code;
        EXPECT_EQ(inventory("PrecioAfiliado", code), d("90")) << code;
        EXPECT_EQ(inventory("PrecioPromocion", code), d("96.4")) << code;
        EXPECT_EQ(inventory("Promocion", code), Decimal(1)) << code;
    }
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'R1' AND FechaFinal >= ? AND FechaFinal < ?",
                    {QDateTime(QDate::currentDate().addDays(7), QTime(0, 0)),
                     QDateTime(QDate::currentDate().addDays(8), QTime(0, 0))}),
              3);
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'R1' AND UltimaActualizacion >= ?", {before}), 3);
    // Other models keep theirs.
    EXPECT_EQ(inventory("PrecioDetal", "R2-S"), d("40"));
    EXPECT_EQ(count("LOG_ARTICULOS", "Formulario = 'frmListaPrecios' AND Usuario = 'ANA'"), 1);
}

TEST_F(PriceLists, AZeroPriceBlocksTheSaveAndWritesNothing) {
    PriceList list;
    list.lines << modelLineOf("R1", "N1", list) << modelLineOf("R2", "N1", list);
    list.lines[1].member = Decimal();
    EXPECT_EQ(refusal([&] {
                  saveList(db(), list, {true, true}, writer());
              }),
              "Existen precios afiliados en cero...!");
    EXPECT_EQ(count("LISTAPRECIO"), 0);
    EXPECT_EQ(count("MOVLISTAPRECIO"), 0);
    EXPECT_EQ(inventory("PrecioAfiliado", "R2-S"), d("38"));
}

TEST_F(PriceLists, TaxIncludedPricesAreDividedOnceWhenTheListIsApproved) {
    keyPricesWithTax();
    EXPECT_EQ(taxIncludedFactor(db()), d("1.16"));
    PriceList list;
    list.retailFactor = d("2");
    list.lines << modelLineOf("R1", "N1", list);
    // The list shows the prices as they are keyed: with the tax.
    EXPECT_EQ(list.lines[0].retail, d("116"));
    EXPECT_EQ(list.lines[0].wholesale, d("92.8"));
    list.lines[0].retail = d("145");
    rules::setLineDiscount(list.lines[0], d("20"));
    list.lines[0].promotion = true;
    list.lines[0].start = list.lines[0].end = QDate::currentDate();

    // Saved open first, then approved from what was saved: divided once, not twice.
    const int number = saveList(db(), list, {}, writer()).number;
    EXPECT_EQ(listed("PrecioDetal", number, "R1"), d("145"));
    auto reopened = loadList(db(), number);
    ASSERT_TRUE(reopened);
    saveList(db(), *reopened, {true, true}, writer());
    EXPECT_EQ(listed("PrecioDetal", number, "R1"), d("125"));
    EXPECT_EQ(listed("PrecioPromocion", number, "R1"), d("100"));
    EXPECT_EQ(listed("PrecioMayor", number, "R1"), d("80"));
    EXPECT_EQ(listed("PrecioDetalSugerido", number, "R1"), d("89.6552")); // 104 / 1.16
    EXPECT_EQ(listed("Costo", number, "R1"), d("52"));                    // a cost, not a price
    EXPECT_EQ(inventory("PrecioDetal", "R1-40"), d("125"));
    EXPECT_EQ(inventory("PrecioPromocion", "R1-40"), d("100"));
    EXPECT_EQ(inventory("PrecioAfiliado", "R1-40"), d("90"));
}

TEST_F(PriceLists, APromotionOverACategoryBecomesAnOpenListToApprove) {
    const QDate today = QDate::currentDate();
    ModelFilter f;
    f.category = "01"; // CALZADO and everything under it
    QList<ModelKey> models;
    for (const ModelPrices& m : findModels(db(), f))
        models.append({m.reference, m.brand});
    ASSERT_EQ(models.size(), 2);
    EXPECT_EQ(models[0], (ModelKey{"R1", "N1"}));
    EXPECT_EQ(models[1], (ModelKey{"R3", "A1"}));
    f.brand = "N1";
    EXPECT_EQ(findModels(db(), f).size(), 1);

    PromotionRequest r;
    r.models = models;
    r.promotionPercent = d("30");
    r.memberPercent = d("-5");
    r.start = today.addDays(7);
    r.end = today.addDays(13);
    r.user = "ANA";
    EXPECT_EQ(refusal([&] {
                  PromotionRequest late = r;
                  late.start = today.addDays(-1);
                  generatePromotionList(db(), late, today);
              }),
              "No puede colocar una fecha inicial de promoción menor al dia de hoy...!");
    const int number = generatePromotionList(db(), r, today);
    EXPECT_EQ(number, 1);
    auto list = loadList(db(), number);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->status, 0);
    EXPECT_EQ(list->retailFactor, Decimal(1));
    EXPECT_EQ(list->user, "ANA");
    ASSERT_EQ(list->lines.size(), 2);
    EXPECT_EQ(listed("PrecioPromocion", number, "R1"), d("70"));
    EXPECT_EQ(listed("PrecioPromocion", number, "R3"), d("42"));
    EXPECT_EQ(listed("PrecioAfiliado", number, "R1"), d("95"));
    EXPECT_EQ(listed("PrecioMayor", number, "R1"), d("80"));
    EXPECT_EQ(listed("Descuento", number, "R1"), d("30"));
    EXPECT_EQ(list->lines[0].start, r.start);
    EXPECT_EQ(list->lines[0].end, r.end);
    EXPECT_TRUE(list->lines[0].promotion);
    EXPECT_EQ(inventory("Promocion", "R1-36"), Decimal()); // until it is approved

    saveList(db(), *list, {true, true}, ArticleWriter::here("ANA", "frmListaPrecios"));
    EXPECT_EQ(count("INVENTARIO", "Promocion = 1 AND PrecioPromocion = 70"), 3);
    EXPECT_EQ(count("INVENTARIO", "Promocion = 1"), 4);
    EXPECT_EQ(inventory("Promocion", "R2-M"), Decimal());

    // A second list takes the next number and can load the lines of the first.
    PriceList next;
    EXPECT_EQ(mergeLines(next, linesOfList(db(), number)), 2);
    next.lines[0].retail = d("111");
    EXPECT_EQ(saveList(db(), next, {}, ArticleWriter::here("ANA", "frmListaPrecios")).number, 2);
    EXPECT_EQ(listed("PrecioDetal", 2, "R1"), d("111"));
    EXPECT_EQ(listed("PrecioDetal", 1, "R1"), d("100"));
}

TEST_F(PriceLists, RepricingFromCostsLeavesArticlesWithoutACost) {
    Margins m{d("40"), d("20"), d("30.5")};
    EXPECT_EQ(repriceFromCosts(db(), m, ArticleWriter::here("ANA", "frmActualizarPrecios")), 5);
    EXPECT_EQ(inventory("PrecioDetal", "R1-38"), d("72.8"));
    EXPECT_EQ(inventory("PrecioMayor", "R1-38"), d("62.4"));
    EXPECT_EQ(inventory("PrecioAfiliado", "R1-38"), d("67.86"));
    EXPECT_EQ(inventory("PrecioDetal", "R2-S"), d("28"));
    EXPECT_EQ(inventory("PrecioDetal", "R3-U"), d("60")); // no cost: kept
    EXPECT_EQ(count("LOG_ARTICULOS", "Formulario = 'frmActualizarPrecios'"), 1);
    Margins missing{d("40"), std::nullopt, d("30")};
    EXPECT_EQ(refusal([&] { repriceFromCosts(db(), missing, ArticleWriter::here("ANA", "x")); }),
              "Introduzca un porcentaje de utilidad para el precio mayor...!");
}
