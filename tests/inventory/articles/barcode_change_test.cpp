#include "article_support.h"

#include "common/errors/errors.h"
#include "inventory/articles/barcode_change.h"

using namespace orvo;
using namespace orvo::inventory;
using namespace orvo::inventory::barcodes;

namespace {

class BarcodeChanges : public test::ArticleTest {};

QString refusal(const std::function<void()>& f) {
    try {
        f();
    } catch (const UserError& e) {
        return e.text();
    }
    return "<no refusal>";
}

} // namespace

TEST_F(BarcodeChanges, ListsTheModelAndChangesOnlyInventarioWithALog) {
    saveModel(db(), model("REF-1"), grid("77"), true, writer());
    saveModel(db(), model("REF-2"), grid("88"), true, writer());
    exec("INSERT INTO MOVVENTAS (NumeroFactura, Serie, CodigoBarra, Cantidad, Item) VALUES "
         "(1, 'A', '7700', 1, 1)");

    const auto variants = variantsOf(db(), "N1", " REF-1 ");
    ASSERT_EQ(variants.size(), 6);
    EXPECT_EQ(variants[0].size, "36");
    EXPECT_EQ(variants[0].colour, "AZUL MARINO OSCURO");
    EXPECT_EQ(variants[0].barcode, "7701");
    EXPECT_EQ(refusal([&] { variantsOf(db(), "A1", "REF-1"); }),
              "No existen codigos con esta Referencia con la marca seleccionada...!");

    EXPECT_EQ(refusal([&] { checkNewBarcode(db(), "8800"); }), " El Código: 8800 ya existe...!");
    EXPECT_NO_THROW(checkNewBarcode(db(), "990000"));

    const int logsBefore = count("LOG_ARTICULOS");
    EXPECT_EQ(changeBarcodes(db(), "N1", "REF-1",
                             {{"7700", "990000"}, {"7701", ""}, {"7710", "7710"}},
                             ArticleWriter::here("ANA", "frmCambiarCodigos")),
              1);
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '7700'"), 0);
    // The previous barcode column keeps what it had; sold lines keep the barcode they were sold
    // with.
    EXPECT_EQ(
        scalar("SELECT CodigoBarraAnt FROM INVENTARIO WHERE CodigoBarra = '990000'").toString(),
        "7700");
    EXPECT_EQ(count("MOVVENTAS", "CodigoBarra = '7700'"), 1);
    EXPECT_EQ(count("LOG_ARTICULOS"), logsBefore + 1);
    EXPECT_EQ(count("LOG_ARTICULOS", "CodigoBarra = '990000' AND Formulario = 'frmCambiarCodigos' "
                                     "AND SQL LIKE '%''990000''%''7700''%'"),
              1);

    // One taken barcode stops every change of the save.
    EXPECT_EQ(
        refusal([&] {
            changeBarcodes(db(), "N1", "REF-1", {{"7701", "990001"}, {"7711", "8811"}}, writer());
        }),
        " El Código: 8811 ya existe...!");
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '7701'"), 1);
    EXPECT_EQ(count("INVENTARIO", "CodigoBarra = '990001'"), 0);
    EXPECT_EQ(count("LOG_ARTICULOS"), logsBefore + 1);
}
