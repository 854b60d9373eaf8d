#include "common/db/connection.h"
#include "inventory/purchases/line_sources.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/purchases/purchases.h"

#include <QDir>
#include <QFileInfo>

using namespace orvo;
using namespace orvo::inventory::purchases;
using test::d;

namespace {

// The sister company keeps its own store database on the same server (or beside ours).
class SisterCompanyTest : public test::PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        exec("INSERT INTO PARAMETROS (Nombre, IDEmpresa) VALUES ('TIENDAS ORVO', "
             "'J-40123456-7')");
        const QString name = sister.engine() == db::Engine::Sqlite
                                 ? QFileInfo(sister.settings().sqliteFile).fileName()
                                 : sister.settings().database;
        exec("INSERT INTO EMPRESAS (Codigo, Nombre, ServidorSQL, BaseDatos, Status) VALUES "
             "('TM', 'TELMAR', '', ?, 1)",
             {name});
        article("S1", "CAMISA-S");
        exec("UPDATE INVENTARIO SET PrecioDetal = 120, PrecioMayor = 100 WHERE CodigoBarra = 'S1'");

        const QSqlDatabase s = sister.db();
        auto run = [&](const QString& sql, std::initializer_list<QVariant> values = {}) {
            db::execute(s, sql, values);
        };
        run("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
            "CodigoColor, Categoria, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Tipo, "
            "Status) VALUES ('S1', 'CAMISA S1', 'CAMISA-S', 'N1', 'S', '01', '0101', 1, 90, 80, "
            "85, 0, 1), ('S2', 'CAMISA S2', 'CAMISA-S', 'N1', 'M', '01', '0101', 1, 90, 80, 85, 0, "
            "1), ('Q1', 'GORRA Q1', 'GORRA', 'N1', 'U', '02', '0102', 1, 30, 25, 28, 0, 1)");
        for (const auto& [number, client] :
             {std::pair{15, "J401234567"}, {16, "J-40123456-7"}, {17, "V12345678"}})
            run("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Cliente, TotalMercancia, "
                "TotalDescuento, TotalImpuesto) VALUES (?, 'X', ?, ?, 100, 0, 16)",
                {number, QDateTime(QDate(2024, 5, number), QTime(10, 0)), client});
        int item = 0;
        for (const auto& [code, quantity] :
             {std::pair{"S1", "2"}, {"S2", "1"}, {"Q1", "3"}, {"ZZ", "1"}})
            run("INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Precio, PrecioLista, "
                "PorcentajeImpuesto, Cantidad, CantidadDevuelta, Item) VALUES (15, 'X', ?, 10, "
                "9.5, 16, ?, 0, ?)",
                {code, quantity, ++item});
        // Invoice 16 was entered already.
        savePurchase(db(), purchase("16", {line("S1", "1", "1")}), true, false);
    }

    test::TestDatabase sister;
};

} // namespace

TEST_F(SisterCompanyTest, ItsInvoicesToThisCompanyLoadAndCreateTheArticlesMissingHere) {
    const QList<SisterCompany> companies = sisterCompanies(db());
    ASSERT_EQ(companies.size(), 1);
    struct Closer {
        ~Closer() { db::closeConnection("hermana"); }
    } closer;
    const QSqlDatabase s = openSisterDatabase(db(), companies[0], "hermana");
    const QList<SisterInvoice> offered = sisterInvoices(db(), s, "P1");
    ASSERT_EQ(offered.size(), 1);
    EXPECT_EQ(offered[0].document(), "15");
    // Entered from another supplier is not entered from this one.
    EXPECT_EQ(sisterInvoices(db(), s, "P2").size(), 2);

    const LoadedLines loaded =
        loadSisterInvoice(db(), s, offered[0], inventory::ArticleWriter::here("ANA", "frmCompras"));
    ASSERT_EQ(loaded.lines.size(), 3);
    EXPECT_EQ(loaded.lines[0].barcode, "S1");
    EXPECT_EQ(loaded.lines[0].quantity, d("2"));
    EXPECT_EQ(loaded.lines[0].price, d("9.5")); // what the sister charged after its discount
    EXPECT_EQ(loaded.created, QStringList({"S2", "Q1"}));
    EXPECT_EQ(loaded.notFound, QStringList({"ZZ"}));
    // A new size of a model sold here sells at the model's prices; a new model at the sister's.
    EXPECT_EQ(dec("SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = 'S2'"), d("120"));
    EXPECT_EQ(dec("SELECT PrecioMayor FROM INVENTARIO WHERE CodigoBarra = 'S2'"), d("100"));
    EXPECT_EQ(dec("SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = 'Q1'"), d("30"));
    EXPECT_EQ(scalar("SELECT Referencia FROM INVENTARIO WHERE CodigoBarra = 'Q1'").toString(),
              "GORRA");
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra IN ('S2', 'Q1') AND Existencia = 0 AND "
                                  "CostoPromedio = 0 AND Status = 0"),
              2);
    EXPECT_EQ(count("LOG_ARTICULOS", "Formulario = 'frmCompras'"), 2);

    // The loaded lines make a purchase like keyed ones.
    Purchase p = purchase(offered[0].document(), loaded.lines);
    savePurchase(db(), p, true, true);
    EXPECT_EQ(stock("Q1"), d("3"));
    EXPECT_EQ(scalar("SELECT Status FROM INVENTARIO WHERE CodigoBarra = 'Q1'").toInt(), 1);
    EXPECT_TRUE(sisterInvoices(db(), s, "P1").isEmpty());
}

TEST_F(SisterCompanyTest, AMissingDatabaseIsSaidNotCreated) {
    if (test::testEngine() != db::Engine::Sqlite)
        GTEST_SKIP() << "a missing PostgreSQL database is the server's own error";
    EXPECT_EQ(test::refusal([&] {
                  openSisterDatabase(db(), {"XX", "OTRA", "NO_EXISTE"}, "otra");
              }),
              "No se encuentra la base de datos NO_EXISTE de la empresa OTRA...!");
    EXPECT_FALSE(QFileInfo::exists(
        QFileInfo(testDb().settings().sqliteFile).dir().filePath("NO_EXISTE.sqlite")));
}
