#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "inventory/transfers/generate_transfers.h"
#include "inventory/transfers/transfer_support.h"

#include <QFileInfo>

using namespace orvo;
using namespace orvo::inventory::transfers;
using test::d;
using test::refusal;

namespace {

class GenerateTransfersTest : public test::TransferTest {
protected:
    // A supplier's MOVITRAN.DBF: (document, box, barcode, quantity) per record.
    QString
    supplierFile(std::initializer_list<std::tuple<int, int, const char*, const char*>> rows) {
        const QString dir = folder("Proveedor");
        auto out = exchange::package::DbfWriter::fromTemplate(
            exchange::package::findTemplate("MOVITRAN", home() + "/Estructura"),
            dir + "/Movitran.dbf");
        int item = 0;
        for (const auto& [document, box, code, quantity] : rows)
            out.append(QVariantHash{{"NumTra", document},
                                    {"CajaNum", box},
                                    {"Item", ++item},
                                    {"CodBarra", QString::fromLatin1(code)},
                                    {"Nombre", QStringLiteral("CAMISA ") + code},
                                    {"Cantidad", QVariant::fromValue(d(quantity))},
                                    {"Valor", QVariant::fromValue(d("1"))}});
        out.close();
        return dir;
    }
};

} // namespace

TEST_F(GenerateTransfersTest, EachBoxBecomesOneApprovedTransferOnlyOnce) {
    article("A1", "CAMISA-A", "5", "10");
    article("A2", "CAMISA-A", "0", "12.5");
    const QString dir = supplierFile(
        {{31, 1, "A1", "2"}, {31, 1, "A1", "3"}, {31, 2, "A2", "4"}, {31, 2, "A1", "1"}});
    SupplierFile file = readSupplierFile(dir);
    ASSERT_EQ(file.boxes.size(), 2);

    GenerateRequest r{"P001", "02", file.boxes, "ANA"};
    const GenerateResult made = generateTransfers(db(), file, r);
    ASSERT_EQ(made.transfers.size(), 2);
    EXPECT_TRUE(made.wholeFile);
    // Box 1: A1 summed into one line at this store's cost; approved, addressed to the branch.
    EXPECT_EQ(count("MOVTRANSFERENCIAS", "Numero = ?", {made.transfers[0]}), 1);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVTRANSFERENCIAS WHERE Numero = ?", {made.transfers[0]}),
              d("5"));
    EXPECT_EQ(dec("SELECT TotalValor FROM TRANSFERENCIAS WHERE Numero = ?", {made.transfers[1]}),
              d("60")); // 4 × 12.5 + 1 × 10
    EXPECT_EQ(count("TRANSFERENCIAS", "Status = 1 AND CodigoRecibe = '02'"), 2);
    // The goods went from the supplier to the branch: this store's stock stays.
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(count("TRANSFERENCIASAUTOMATICA", "Proveedor = 'P001'"), 2);

    // The same file again gives nothing twice; another supplier's boxes are its own.
    markConverted(db(), "P001", file);
    EXPECT_TRUE(file.boxes[0].converted && file.boxes[1].converted);
    const GenerateResult again = generateTransfers(db(), file, r);
    EXPECT_TRUE(again.transfers.isEmpty());
    EXPECT_EQ(again.skipped, 2);
    EXPECT_EQ(count("TRANSFERENCIAS"), 2);
}

TEST_F(GenerateTransfersTest, UnknownOrUnpricedArticlesAreListedAndNothingIsMade) {
    article("A1", "CAMISA-A", "5", "10");
    article("A3", "CAMISA-A", "5", "0"); // no cost here
    const QString dir = supplierFile({{40, 1, "A1", "2"}, {40, 1, "ZZ9", "1"}, {40, 1, "A3", "1"}});
    const SupplierFile file = readSupplierFile(dir);
    const SupplierFileCheck check = checkSupplierFile(db(), file);
    ASSERT_EQ(check.missing.size(), 1);
    EXPECT_EQ(check.missing[0].barcode, "ZZ9");
    ASSERT_EQ(check.withoutValues.size(), 1);
    EXPECT_EQ(check.withoutValues[0].barcode, "A3");
    EXPECT_EQ(QFileInfo(check.withoutValuesFile).fileName(), "Articulos sin valores.txt");
    EXPECT_TRUE(QFileInfo::exists(check.missingFile));

    EXPECT_FALSE(refusal([&] {
                     generateTransfers(db(), file, {"P001", "02", file.boxes, "ANA"});
                 }).isEmpty());
    EXPECT_EQ(count("TRANSFERENCIAS"), 0);
    EXPECT_EQ(refusal([&] {
                  generateTransfers(db(), file, {"P001", "02", {}, "ANA"});
              }),
              "Debe seleccionar una caja!");
    EXPECT_EQ(refusal([] { readSupplierFile("/nonexistent-folder"); }),
              "Debe especificar una ruta que contenga los archivos a cargar!");
}
