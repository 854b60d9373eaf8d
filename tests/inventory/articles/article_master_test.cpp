#include "article_support.h"

#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/articles/article_rules.h"

#include <QSysInfo>

using namespace orvo;
using namespace orvo::inventory;

namespace {

template <class F> QString refusal(F&& action) {
    try {
        action();
    } catch (const UserError& e) {
        return e.text();
    }
    return QStringLiteral("<no refusal>");
}

class ArticleMaster : public test::ArticleTest {};

} // namespace

TEST(ArticleRules, VariantNameCutsTheColourButNeverTheSize) {
    EXPECT_EQ(rules::variantName("  ZAPATO  ", "XXL-LARGA", "AZUL MARINO OSCURO"),
              "ZAPATO T:XXL-LARGA AZUL MARINO O");
    EXPECT_EQ(rules::variantName("ZAPATO", "36", "ROJO"), "ZAPATO T:36 ROJO");
}

TEST(ArticleRules, PricePairsAndPromotionDiscounts) {
    EXPECT_EQ(rules::withTax(Decimal(100), Decimal(16)), Decimal(116));
    EXPECT_EQ(rules::withoutTax(Decimal(100), Decimal(16)), Decimal::fromString(u"86.2069"));
    // A zero retail price shows no discount instead of dividing by zero, and any discount on it
    // gives a zero promotion price.
    EXPECT_EQ(rules::discountOf(Decimal(0), Decimal(5)), Decimal(0));
    EXPECT_EQ(rules::promotionPriceFor(Decimal(0), Decimal(30)), Decimal(0));
    EXPECT_EQ(rules::discountOf(Decimal(80), Decimal(60)), Decimal(25));
    EXPECT_EQ(rules::discountOf(Decimal(3), Decimal(2)), Decimal::fromString(u"33.33"));
    EXPECT_EQ(rules::promotionPriceFor(Decimal(80), Decimal::fromString(u"12.5")), Decimal(70));
    EXPECT_EQ(rules::promotionPriceFor(Decimal(80), Decimal(0)), Decimal(80));
    EXPECT_EQ(refusal([] { rules::promotionPriceFor(Decimal(80), Decimal(100)); }),
              "No puede ofrecer un descuento mayor o igual al 100%");
    EXPECT_EQ(refusal([] { rules::promotionPriceFor(Decimal(80), Decimal::fromString(u"-0.01")); }),
              "No puede ofrecer un Descuento menor a 0");
    EXPECT_EQ(
        refusal([] { rules::checkPromotionPrice(Decimal(80), Decimal::fromString(u"80.01")); }),
        "No puede establecer un precio mayor que el precio detal");
    EXPECT_NO_THROW(rules::checkPromotionPrice(Decimal(80), Decimal(80)));
}

TEST(ArticleRules, SaveChecksComeInTheirOrder) {
    const QDate today(2026, 5, 10);
    ArticleModel m;
    m.category = "010101";
    ModelGrid g;
    EXPECT_EQ(refusal([&] { rules::validateModel(m, g, true, today); }),
              "Debe específicar alguna talla...!");
    g.addSize("36");
    EXPECT_EQ(refusal([&] { rules::validateModel(m, g, true, today); }),
              "Debe específicar algún color....!");
    g.addColour({"01", "NEGRO"});
    EXPECT_EQ(refusal([&] { rules::validateModel(m, g, true, today); }),
              "Debe al menos crear un artículo...!");
    g.setBarcode(0, 0, "1");
    for (const char* bad : {"", "0101", "01"}) {
        m.category = bad;
        EXPECT_EQ(refusal([&] { rules::validateModel(m, g, true, today); }),
                  "Seleccione una categoria de detalle...!")
            << bad;
    }
    m.category = "00"; // the undefined category may be saved
    EXPECT_NO_THROW(rules::validateModel(m, g, true, today));
    m.promotion = true;
    m.promotionStart = today;
    m.promotionEnd = today.addDays(-1);
    EXPECT_EQ(refusal([&] { rules::validateModel(m, g, true, today); }),
              "No puede colocar una fecha final de promoción menor a la fecha inicial de "
              "promoción...!");
    m.promotionEnd = today;
    EXPECT_NO_THROW(rules::validateModel(m, g, true, today)); // a new model may end today
    EXPECT_EQ(refusal([&] { rules::validateModel(m, g, false, today); }),
              "No puede colocar una fecha final de promoción al día de hoy...!");
    m.promotionEnd = today.addDays(1);
    EXPECT_NO_THROW(rules::validateModel(m, g, false, today));
}

TEST(ArticleRules, StatementDescriptionWritesValuesIn) {
    const QString text = rules::describeStatement(
        "UPDATE X SET A = ?, B = ?, C = 'lit?', D = ? WHERE E = ?",
        {QString("O'Neil"), QVariant::fromValue(Decimal::fromString(u"12.5")), 3,
         QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5))});
    EXPECT_EQ(text, "UPDATE X SET A = 'O''Neil', B = 12.50000000, C = 'lit?', D = 3 WHERE E = "
                    "'20260102 03:04:05'");
}

TEST(ModelGridOps, InsertAndRemoveRowsAndColumnsKeepTheCells) {
    ModelGrid g;
    g.addSize("36");
    g.addSize("40");
    g.addColour({"01", "NEGRO"});
    g.setBarcode(0, 0, "A");
    g.setBarcode(1, 0, "B");
    g.insertSize(1, "38");
    g.insertColour(0, {"02", "AZUL"});
    EXPECT_EQ(g.sizes(), QStringList({"36", "38", "40"}));
    EXPECT_EQ(g.barcode(0, 1), "A");
    EXPECT_EQ(g.barcode(2, 1), "B");
    EXPECT_EQ(g.barcode(1, 1), "");
    EXPECT_EQ(g.find("B"), qMakePair(2, 1));
    EXPECT_EQ(g.find("B", 2, 1), qMakePair(-1, -1));
    g.removeColour(0);
    g.removeSize(0);
    EXPECT_EQ(g.barcode(1, 0), "B");
    EXPECT_EQ(g.variantCount(), 1);
    EXPECT_EQ(g.addSize("40"), 1); // an existing size is not added twice
}

TEST_F(ArticleMaster, CreatesAModelAndSavingAgainUpdatesWithoutDuplicates) {
    const ModelGrid g = grid();
    saveModel(db(), model(), g, true, writer());
    EXPECT_EQ(count("INVENTARIO"), 6);
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-1' AND CodigoMarca = 'N1' AND "
                                  "CodigoBarraAnt = CodigoBarra AND Existencia = 0 AND "
                                  "ExistenciaInicial = 0 AND FechaPrimerMovimiento IS NOT NULL"),
              6);
    EXPECT_EQ(scalar("SELECT Nombre FROM INVENTARIO WHERE CodigoBarra = '7701'").toString(),
              "ZAPATO TROTE T:36 AZUL MARINO O");
    EXPECT_EQ(scalar("SELECT Talla FROM INVENTARIO WHERE CodigoBarra = '7721'").toString(), "40");
    EXPECT_EQ(scalar("SELECT CodigoColor FROM INVENTARIO WHERE CodigoBarra = '7721'").toString(),
              "02");
    // Prices are kept to four decimals, costs to five.
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = '7700'")),
              Decimal::fromString(u"100.005"));
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra = '7700'")),
              Decimal::fromString(u"41.12346"));
    EXPECT_EQ(count("LOG_ARTICULOS"), 6);
    EXPECT_EQ(count("LOG_ARTICULOS", "SQL LIKE 'INSERT INTO INVENTARIO%'"), 6);

    // A tax-included 9,97 at 16 % comes back as 9,97, not 9,96.
    ArticleModel typed = model();
    typed.wholesalePrice = rules::withoutTax(Decimal::fromString(u"9.97"), Decimal(16));
    saveModel(db(), typed, g, false, writer());
    EXPECT_EQ(rules::withTax(loadModel(db(), "REF-1", "N1")->model.wholesalePrice, Decimal(16))
                  .rounded(2),
              Decimal::fromString(u"9.97"));
    EXPECT_EQ(count("LOG_ARTICULOS"), 12);

    ArticleModel changed = model();
    changed.retailPrice = Decimal(120);
    changed.name = "ZAPATO NUEVO";
    saveModel(db(), changed, g, false, writer());
    EXPECT_EQ(count("INVENTARIO"), 6);
    EXPECT_EQ(count("INVENTARIO", "PrecioDetal = 120"), 6);
    EXPECT_EQ(scalar("SELECT Nombre FROM INVENTARIO WHERE CodigoBarra = '7710'").toString(),
              "ZAPATO NUEVO T:38 NEGRO");
    EXPECT_EQ(count("LOG_ARTICULOS"), 18);
    EXPECT_EQ(count("LOG_ARTICULOS", "SQL LIKE 'UPDATE INVENTARIO%'"), 12);

    // A size taken out of the grid keeps its variants in the table.
    ModelGrid smaller = g;
    smaller.removeSize(0);
    saveModel(db(), changed, smaller, false, writer());
    EXPECT_EQ(count("INVENTARIO"), 6);
    EXPECT_EQ(count("LOG_ARTICULOS"), 22);

    // Other writers of INVENTARIO log through the same writer, inside their own transaction.
    {
        db::Transaction tx(db());
        logArticleWrite(db(), "7700", "REF-1", "N1", "UPDATE INVENTARIO SET Existencia = 1",
                        ArticleWriter::here("LUIS", "frmCargarArticulos"));
        tx.commit();
    }
    EXPECT_EQ(count("LOG_ARTICULOS", "Formulario = 'frmCargarArticulos' AND Usuario = 'LUIS' AND "
                                     "SQL = 'UPDATE INVENTARIO SET Existencia = 1'"),
              1);

    // Creating the same pair again is refused before anything is written.
    EXPECT_EQ(refusal([&] { saveModel(db(), model(), grid("88"), true, writer()); }),
              "La Referencia: REF-1 Marca: N1 ya esta registrada...!");
    EXPECT_EQ(count("INVENTARIO"), 6);
}

TEST_F(ArticleMaster, EachStatementIsLoggedWithItsValuesAndWorkstation) {
    ModelGrid g;
    g.addSize("38");
    g.addColour({"01", "NEGRO"});
    g.setBarcode(0, 0, "5001");
    saveModel(db(), model(), g, true, writer());
    db::Sql q(db(), "SELECT CodigoBarra, Referencia, CodMarca, SQL, Fecha, Equipo, IP, Usuario, "
                    "Formulario FROM LOG_ARTICULOS");
    q.exec();
    ASSERT_TRUE(q.next());
    EXPECT_EQ(q.text("CodigoBarra"), "5001");
    EXPECT_EQ(q.text("Referencia"), "REF-1");
    EXPECT_EQ(q.text("CodMarca"), "N1");
    EXPECT_EQ(q.text("Equipo"), QSysInfo::machineHostName());
    EXPECT_EQ(q.text("Usuario"), "ANA");
    EXPECT_EQ(q.text("Formulario"), "frmArticulos");
    EXPECT_FALSE(q.isNull("Fecha"));
    EXPECT_FALSE(q.text("IP").startsWith("127."));
    const QString sql = q.text("SQL");
    EXPECT_TRUE(sql.contains("'5001', 'ZAPATO TROTE T:38 NEGRO', 'REF-1', 'N1', '38', '01'"))
        << sql.toStdString();
    EXPECT_TRUE(sql.contains("100.00500000, 80.00000000, 90.00000000")) << sql.toStdString();
    EXPECT_TRUE(sql.contains("'O''Neil'")) << sql.toStdString();
    EXPECT_FALSE(sql.contains('?'));
    EXPECT_FALSE(q.next());
}

TEST_F(ArticleMaster, AFailureHalfWayLeavesNothingWritten) {
    saveModel(db(), model(), grid(), true, writer());
    ModelGrid g = grid();
    g.addSize("42");
    g.setBarcode(3, 0, "7730");
    g.setBarcode(3, 1, "7731");
    refuseInsertOf("7731");
    ArticleModel m = model();
    m.retailPrice = Decimal(200);
    EXPECT_THROW(saveModel(db(), m, g, false, writer()), DbError);
    EXPECT_EQ(count("INVENTARIO"), 6);
    EXPECT_EQ(count("INVENTARIO", "PrecioDetal = 200"), 0);
    EXPECT_EQ(count("LOG_ARTICULOS"), 6);
}

TEST_F(ArticleMaster, BarcodesOfAnotherReferenceOrAnotherCellAreRefused) {
    saveModel(db(), model("REF-1"), grid("77"), true, writer());
    ModelGrid g = grid("99");
    EXPECT_EQ(refusal([&] { checkBarcodeCell(db(), g, 0, 0, "7711", "REF-2"); }),
              "El codigo ya existe en otra referencia...!");
    EXPECT_EQ(refusal([&] { checkBarcodeCell(db(), g, 0, 0, "9911", "REF-2"); }),
              "El codigo ya existe en esta referencia...!");
    EXPECT_NO_THROW(checkBarcodeCell(db(), g, 1, 1, "9911", "REF-2")); // its own cell
    EXPECT_NO_THROW(checkBarcodeCell(db(), g, 0, 0, "7711", "REF-1")); // same reference
    EXPECT_NO_THROW(checkBarcodeCell(db(), g, 0, 0, "NUEVO", "REF-2"));

    // The save refuses it too, whatever the screen let through, and writes nothing.
    g.setBarcode(2, 1, "7711");
    EXPECT_EQ(refusal([&] { saveModel(db(), model("REF-2"), g, true, writer()); }),
              "El codigo ya existe en otra referencia...!");
    EXPECT_EQ(count("INVENTARIO"), 6);
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-2'"), 0);
    EXPECT_EQ(count("LOG_ARTICULOS"), 6);
}

TEST_F(ArticleMaster, LoadsTheModelWithItsGridAndPromotion) {
    ArticleModel m = model();
    m.promotion = true;
    m.retailPrice = Decimal(0);
    m.promotionPrice = rules::promotionPriceFor(m.retailPrice, Decimal(30));
    m.promotionStart = QDate(2026, 1, 1);
    m.promotionEnd = QDate(2099, 1, 31);
    m.type = 1;
    m.status = 0;
    m.serialized = true;
    m.fractional = true;
    ModelGrid g = grid();
    g.setBarcode(1, 1, ""); // an empty cell creates nothing
    saveModel(db(), m, g, true, writer());
    EXPECT_EQ(count("INVENTARIO"), 5);

    const auto loaded = loadModel(db(), "REF-1", "N1");
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->model.name, "ZAPATO TROTE");
    EXPECT_EQ(loaded->model.category, "010101");
    EXPECT_EQ(loaded->model.taxRate, Decimal(16));
    EXPECT_TRUE(loaded->model.promotion);
    EXPECT_EQ(loaded->model.promotionPrice, Decimal(0));
    EXPECT_EQ(rules::discountOf(loaded->model.retailPrice, loaded->model.promotionPrice),
              Decimal(0));
    EXPECT_EQ(loaded->model.promotionEnd, QDate(2099, 1, 31));
    EXPECT_EQ(loaded->model.type, 1);
    EXPECT_EQ(loaded->model.status, 0);
    EXPECT_TRUE(loaded->model.serialized);
    EXPECT_TRUE(loaded->model.fractional);
    EXPECT_EQ(loaded->model.note, "O'Neil");
    const ModelGrid& lg = loaded->grid;
    EXPECT_EQ(lg.sizes(), QStringList({"36", "38", "40"}));
    ASSERT_EQ(lg.columnCount(), 2);
    EXPECT_EQ(lg.colours()[0].name, "AZUL MARINO OSCURO"); // across by colour name
    EXPECT_EQ(lg.colours()[1].name, "NEGRO");
    EXPECT_EQ(lg.barcode(0, 0), "7701");
    EXPECT_EQ(lg.barcode(0, 1), "7700");
    EXPECT_EQ(lg.barcode(1, 0), "");
    EXPECT_EQ(lg.variantCount(), 5);

    // A missing promotion date shows as 01/01/2000.
    exec("UPDATE INVENTARIO SET FechaFinal = NULL");
    EXPECT_EQ(loadModel(db(), "REF-1", "N1")->model.promotionEnd, QDate(2000, 1, 1));
    EXPECT_FALSE(loadModel(db(), "REF-1", "A1"));
}

TEST_F(ArticleMaster, DeletingAModelRemovesEveryVariantEvenWithStock) {
    saveModel(db(), model("REF-1"), grid("77"), true, writer());
    saveModel(db(), model("REF-2"), grid("88"), true, writer());
    exec("UPDATE INVENTARIO SET Existencia = 4 WHERE CodigoBarra = '7700'");
    EXPECT_EQ(deleteModel(db(), "REF-1", "N1", writer()), 6);
    EXPECT_EQ(count("INVENTARIO", "Referencia = 'REF-1'"), 0);
    EXPECT_EQ(deleteModel(db(), "REF-2", "N1", writer()), 6);
    EXPECT_EQ(count("INVENTARIO"), 0);
    EXPECT_EQ(count("LOG_ARTICULOS", "SQL LIKE 'DELETE FROM INVENTARIO%'"), 2);
    EXPECT_EQ(deleteModel(db(), "REF-2", "N1", writer()), 0);
}

TEST_F(ArticleMaster, BrowserListsVisibleModelsAndShowsPricesOnlyToWhoMaySee) {
    saveModel(db(), model("REF-B"), grid("11"), true, writer());
    saveModel(db(), model("REF-A"), grid("22"), true, writer());
    saveModel(db(), model("REF-C"), grid("33"), true, writer());
    exec("UPDATE INVENTARIO SET Status = 2 WHERE Referencia = 'REF-C'");
    exec("UPDATE INVENTARIO SET Existencia = 3 WHERE CodigoBarra IN ('1100', '1121')");

    const ModelList plain = listModels(db(), "CAJERO");
    EXPECT_FALSE(plain.withPrices);
    EXPECT_FALSE(plain.withCosts);
    ASSERT_EQ(plain.rows.size(), 2);
    EXPECT_EQ(plain.rows[0].reference, "REF-A");
    EXPECT_EQ(plain.rows[1].reference, "REF-B");
    EXPECT_EQ(plain.rows[1].brandName, "NIKE");
    EXPECT_EQ(plain.rows[1].name, "ZAPATO TROTE");
    EXPECT_EQ(plain.rows[1].variants, 6);
    EXPECT_EQ(plain.rows[1].stock, Decimal(6));
    EXPECT_EQ(plain.rows[1].retailPrice, Decimal(0));
    EXPECT_EQ(plain.indexOf("REF-B", "N1"), 1);

    member("JEFE", "ADMI", "ADMINISTRADOR");
    const ModelList full = listModels(db(), "JEFE");
    EXPECT_TRUE(full.withPrices);
    EXPECT_FALSE(full.withCosts);
    EXPECT_EQ(full.rows[0].retailPrice, Decimal::fromString(u"100.005"));
    member("SIS", "SISTEMAS", "SISTEMAS");
    EXPECT_EQ(listModels(db(), "SIS").rows[0].averageCost, Decimal::fromString(u"41.12346"));

    const QString report = articleReport(db(), "REF-B", "N1", "CAJERO");
    EXPECT_TRUE(report.contains("1121"));
    EXPECT_FALSE(report.contains("Precio"));
}

TEST_F(ArticleMaster, FindsArticlesByBarcodeAndByReference) {
    saveModel(db(), model("REF-1"), grid("77"), true, writer());
    ArticleModel other = model("REF-1");
    other.brand = "A1";
    saveModel(db(), other, grid("55"), true, writer());
    const auto a = findArticleByBarcode(db(), " 7721 ");
    ASSERT_TRUE(a);
    EXPECT_EQ(a->reference, "REF-1");
    EXPECT_EQ(a->size, "40");
    EXPECT_EQ(a->colour, "02");
    EXPECT_EQ(a->taxRate, Decimal(16));
    EXPECT_EQ(a->retailPrice, Decimal::fromString(u"100.005"));
    EXPECT_FALSE(findArticleByBarcode(db(), "NOEXISTE"));
    const QList<Article> all = findArticlesByReference(db(), "REF-1");
    ASSERT_EQ(all.size(), 12);
    EXPECT_EQ(all.first().brand, "A1");
    EXPECT_TRUE(findArticlesByReference(db(), "REF-9").isEmpty());
}

TEST_F(ArticleMaster, CataloguesForTheForm) {
    const QList<Category> cats = categories(db());
    ASSERT_EQ(cats.size(), 3);
    EXPECT_EQ(cats[0].parent, "");
    EXPECT_EQ(cats[1].parent, "01");
    EXPECT_EQ(cats[2].parent, "0101");
    const QList<CodeName> b = brands(db());
    ASSERT_EQ(b.size(), 2); // code '0' is never offered
    EXPECT_EQ(b[0].name, "ADIDAS");
    EXPECT_EQ(colours(db()).size(), 2);
    EXPECT_EQ(sizes(db()).size(), 3);
    ASSERT_EQ(taxCodes(db()).size(), 1);
    EXPECT_EQ(taxCodes(db())[0].rate, Decimal(16));
}

TEST(ArticleRules, EanCodesNeedTheirCheckDigitAndNoCodeIsLongerThanTheColumn) {
    const auto why = [](const char* code) {
        return refusal([&] { rules::checkBarcodeFormat(QString::fromLatin1(code)); });
    };
    EXPECT_EQ(why("7591234000018"), "<no refusal>"); // EAN-13
    EXPECT_EQ(why("96385074"), "<no refusal>");      // EAN-8
    EXPECT_EQ(why(" T0001 "), "<no refusal>");       // the store's own codes are taken as they are
    EXPECT_EQ(why("759123400001"), "<no refusal>");
    EXPECT_EQ(why("7591234000017"),
              "El código EAN-13 7591234000017 no es válido: su dígito de control debe ser 8...!");
    EXPECT_EQ(why("96385070"),
              "El código EAN-8 96385070 no es válido: su dígito de control debe ser 4...!");
    EXPECT_EQ(why("7591234000018001"),
              "El código de barras 7591234000018001 tiene 16 caracteres: no puede tener más de "
              "15...!");
}

TEST_F(ArticleMaster, ABarcodeTypedOverAVariantsChangesThatVariant) {
    ModelGrid g = grid();
    saveModel(db(), model(), g, true, writer());
    exec("UPDATE INVENTARIO SET Existencia = 7 WHERE CodigoBarra = '7710'");

    // 38 NEGRO gets an EAN: the same row, its stock kept, the change logged.
    g.setBarcode(1, 0, "7591234000018");
    saveModel(db(), model(), g, false, writer());
    EXPECT_EQ(count("INVENTARIO"), 6);
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '7710'"), 0);
    // Stock is read as a decimal, as PostgreSQL returns it.
    EXPECT_EQ(Decimal::fromVariant(scalar(
                  "SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = '7591234000018' AND "
                  "Talla = '38' AND CodigoColor = '01'")),
              Decimal(7));
    EXPECT_EQ(count("LOG_ARTICULOS", "SQL = 'UPDATE INVENTARIO SET CodigoBarra = "
                                     "''7591234000018'' WHERE CodigoBarra = ''7710'''"),
              1);
    EXPECT_EQ(findArticlesByReference(db(), "REF-1").size(), 6);

    // A malformed EAN, or the barcode of another variant of the model, changes nothing.
    const int logged = count("LOG_ARTICULOS");
    g.setBarcode(1, 0, "7591234000017");
    EXPECT_EQ(refusal([&] { saveModel(db(), model(), g, false, writer()); }),
              "El código EAN-13 7591234000017 no es válido: su dígito de control debe ser 8...!");
    g.setBarcode(1, 0, "7720");
    g.setBarcode(2, 0, "7591234000018");
    EXPECT_EQ(refusal([&] { saveModel(db(), model(), g, false, writer()); }),
              " El Código: 7720 ya existe...!");
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '7591234000018' AND Talla = '38'"), 1);
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '7720' AND Talla = '40'"), 1);
    EXPECT_EQ(count("LOG_ARTICULOS"), logged);
}
