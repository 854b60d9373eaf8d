#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "exchange/package/templates.h"
#include "inventory/dispatch/file_orders.h"
#include "pos/sale/sale.h"
#include "pos/sale/till_fixture.h"

#include <QFile>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::inventory::dispatch;
using test::d;

namespace {

class FileOrdersTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({.trousers = true});
        qputenv("ORVO_HOME", home.path().toUtf8());
    }
    void TearDown() override {
        qunsetenv("ORVO_HOME");
        TillTest::TearDown();
    }

    // The supplier's Movitran.dbf: (document, box, barcode, quantity) per record.
    inventory::transfers::SupplierFile
    supplierFile(std::initializer_list<std::tuple<int, int, const char*, const char*>> rows) {
        const QString templates = home.path() + "/Estructura";
        exchange::package::installTemplates(templates);
        QFile::remove(home.path() + "/Movitran.dbf");
        auto out = exchange::package::DbfWriter::fromTemplate(
            exchange::package::findTemplate("MOVITRAN", templates), home.path() + "/Movitran.dbf");
        int item = 0;
        for (const auto& [document, box, code, quantity] : rows)
            out.append(QVariantHash{{"NumTra", document},
                                    {"CajaNum", box},
                                    {"Item", ++item},
                                    {"CodBarra", QString::fromLatin1(code)},
                                    {"Nombre", QStringLiteral("ARTICULO ") + code},
                                    {"Cantidad", QVariant::fromValue(d(quantity))},
                                    {"Valor", QVariant::fromValue(d("1"))}});
        out.close();
        return inventory::transfers::readSupplierFile(home.path());
    }
    FileOrdersRequest request(QList<long long> documents) {
        return {"P1", *pos::sale::findClient(db(), "J301234567"), documents};
    }
    static QString refusal(auto&& action) {
        try {
            action();
        } catch (const UserError& e) {
            return e.text();
        }
        return {};
    }

    QTemporaryDir home;
};

} // namespace

TEST_F(FileOrdersTest, EachDocumentOfTheFileBecomesOneOrderOnlyOnce) {
    const auto file = supplierFile({{31, 1, "T0002", "1"},
                                    {31, 1, "T0001", "2"},
                                    {31, 2, "T0002", "1"},
                                    {32, 1, "T0001", "1"}});
    ASSERT_EQ(fileDocuments(db(), "P1", file).size(), 2);
    EXPECT_EQ(refusal([&] { generateOrders(db(), ctx, &file, request({})); }),
              "Debe seleccionar un documento!");

    const FileOrdersResult made = generateOrders(db(), ctx, &file, request({31, 32}));
    ASSERT_EQ(made.orders.size(), 2);
    EXPECT_TRUE(made.wholeFile);
    // Document 31's two boxes are one order; its T0002 lines are summed, at the wholesale list.
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVORDENDESPACHO WHERE Numero = ? AND CodigoBarra = "
                  "'T0002'",
                  {made.orders[0]}),
              d("2"));
    EXPECT_EQ(scalar("SELECT TipoLista FROM MOVORDENDESPACHO WHERE Numero = ? AND CodigoBarra = "
                     "'T0002'",
                     {made.orders[0]})
                  .toString(),
              "M");
    EXPECT_EQ(count("ORDENDESPACHO", "Status = 1 AND Cliente = 'J301234567'"), 2);
    EXPECT_EQ(count("ORDENDESPACHOAUTOMATICA", "Proveedor = 'P1' AND Cliente = 'J301234567'"), 2);
    EXPECT_EQ(stock("T0002"), d("5")); // orders move no stock

    const FileOrdersResult again = generateOrders(db(), ctx, &file, request({31, 32}));
    EXPECT_TRUE(again.orders.isEmpty());
    EXPECT_EQ(again.skipped, 2);
    EXPECT_EQ(count("ORDENDESPACHO"), 2);
}

TEST_F(FileOrdersTest, AFileThatCannotBeOrderedLeavesNothing) {
    // Document 41 could be ordered; 42 asks for more than the stock left: neither is written.
    auto file = supplierFile({{41, 1, "T0002", "2"}, {42, 1, "T0002", "4"}});
    EXPECT_EQ(refusal([&] {
                  generateOrders(db(), ctx, &file, request({41, 42}));
              }),
              "Documento 42, artículo T0002: Artículo con existencia comprometida...!");
    EXPECT_EQ(count("ORDENDESPACHO") + count("MOVORDENDESPACHO"), 0);
    EXPECT_EQ(count("ORDENDESPACHOAUTOMATICA"), 0);

    // An article this store has not got: refused before anything, listed for the user.
    file = supplierFile({{43, 1, "T0001", "1"}, {43, 1, "ZZ999", "1"}});
    EXPECT_TRUE(refusal([&] {
                    generateOrders(db(), ctx, &file, request({43}));
                }).startsWith("No se puede generar la orden de despacho: 1 articulos no existen"));
    EXPECT_TRUE(QFile::exists(home.path() + "/Articulos no existentes.txt"));
    EXPECT_EQ(count("ORDENDESPACHO"), 0);
}
