#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/stock/date_guard.h"
#include "inventory/stock/model_average.h"
#include "inventory/stock/model_prices.h"
#include "support/test_db.h"

using namespace orvo;
using namespace orvo::inventory::stock;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

class StockTest : public test::DbTest {
protected:
    void variant(const QString& barcode, const QString& reference, const QString& stock,
                 const QString& cost, const QString& lastCost = "1") {
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
             "CodigoColor, Existencia, CostoPromedio, UltimoCosto, PrecioDetal, Promocion, "
             "Status) VALUES (?, ?, ?, 'N1', 'U', '01', ?, ?, ?, 0, 0, 1)",
             {barcode, "ART " + barcode, reference, stock, cost, lastCost});
    }
    Decimal dec(const QString& sql, std::initializer_list<QVariant> values = {}) const {
        return Decimal::fromVariant(scalar(sql, values));
    }
    Decimal cost(const QString& barcode) const {
        return dec("SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }
    Decimal lastCost(const QString& barcode) const {
        return dec("SELECT UltimoCosto FROM INVENTARIO WHERE CodigoBarra = ?", {barcode});
    }
    int recompute(const AveragedDocument& document) {
        db::Transaction tx(db());
        const int models = recomputeModelAverage(db(), document);
        tx.commit();
        return models;
    }

    // Model A: stock 10 at 6, 5 at 9.5, 0 at 3 and -2 at 20. Model B: all at zero or below.
    // Model C: a variant with stock the document never touches. Model D: the document's variant
    // has no stock, its sister has.
    void catalogue() {
        variant("A1", "A", "10", "6", "5.5");
        variant("A2", "A", "5", "9.5", "9");
        variant("A3", "A", "0", "3", "2");
        variant("A4", "A", "-2", "20", "19");
        variant("B1", "B", "0", "4");
        variant("B2", "B", "-1", "8");
        variant("C1", "C", "4", "10");
        variant("D1", "D", "0", "12");
        variant("D2", "D", "3", "5");
    }
    // What every kind must leave: model A averaged over its positive stock, B, C and D as they
    // were.
    void expectOnlyModelAAveraged() {
        // (10 × 6 + 5 × 9.5) / 15 = 7.1666…, to the cost's five decimals
        for (const char* code : {"A1", "A2", "A3", "A4"})
            EXPECT_EQ(cost(code), d("7.16667")) << code;
        EXPECT_EQ(lastCost("A1"), d("6"));
        EXPECT_EQ(lastCost("A2"), d("9.5"));
        EXPECT_EQ(lastCost("A3"), d("3"));
        EXPECT_EQ(lastCost("A4"), d("20"));
        EXPECT_EQ(cost("B1"), d("4"));
        EXPECT_EQ(cost("B2"), d("8"));
        EXPECT_EQ(lastCost("B2"), d("1"));
        EXPECT_EQ(cost("C1"), d("10"));
        EXPECT_EQ(cost("D1"), d("12"));
        EXPECT_EQ(cost("D2"), d("5"));
        EXPECT_EQ(lastCost("D2"), d("1"));
    }
};

} // namespace

TEST_F(StockTest, PurchaseAveragesTheModelsItTouchedOverTheirPositiveStock) {
    catalogue();
    int item = 0;
    for (const char* code : {"A3", "B1", "D1", "A1"})
        exec("INSERT INTO MOVCOMPRAS (Documento, Proveedor, CodigoBarra, Cantidad, "
             "CantidadDevuelta, PrecioFactura, PrecioProrrateado, Item) VALUES ('F-1', 'P1', ?, "
             "1, 0, 1, 1, ?)",
             {code, ++item});
    // The same invoice number of another supplier is another purchase.
    exec("INSERT INTO MOVCOMPRAS (Documento, Proveedor, CodigoBarra, Cantidad, CantidadDevuelta, "
         "PrecioFactura, PrecioProrrateado, Item) VALUES ('F-1', 'P2', 'C1', 1, 0, 1, 1, 1)");
    EXPECT_EQ(recompute(AveragedDocument::purchase("F-1", "P1")), 1);
    expectOnlyModelAAveraged();
}

TEST_F(StockTest, ReceivedTransferAndTillReturnAverageTheSameWay) {
    catalogue();
    exec("INSERT INTO IMOVTRANSFERENCIAS (Numero, CodigoEnvia, Item, CodigoBarra, Cantidad, "
         "Valor, NumeroCaja) VALUES (7, '00', 1, 'A2', 1, 1, 1), (7, '00', 2, 'B2', 1, 1, 1), "
         "(7, '02', 1, 'C1', 1, 1, 1)");
    EXPECT_EQ(recompute(AveragedDocument::receivedTransfer(7, "00")), 1);
    expectOnlyModelAAveraged();
    // Without the sender, every store's transfer 7 counts: model C is averaged over itself.
    EXPECT_EQ(recompute(AveragedDocument::receivedTransfer(7)), 2);
    EXPECT_EQ(lastCost("C1"), d("10"));

    exec("UPDATE INVENTARIO SET CostoPromedio = 10 WHERE Referencia = 'A'");
    exec("UPDATE INVENTARIO SET CostoPromedio = 16 WHERE CodigoBarra = 'A2'");
    exec("INSERT INTO DEVVENTAS (NumeroDevolucion, Serie, NumeroFactura, Status) VALUES "
         "(3, 'CAJA1', 1, 1), (3, 'CAJA2', 1, 1)");
    exec("INSERT INTO MOVDEVVENTAS (NumeroDevolucion, Serie, CodigoBarra, Cantidad, Item) VALUES "
         "(3, 'CAJA1', 'A1', 1, 1), (3, 'CAJA2', 'C1', 1, 1)");
    // Another register's return 3 is not this one.
    EXPECT_EQ(recompute(AveragedDocument::salesReturn(3, "CAJA1")), 1);
    EXPECT_EQ(cost("A3"), d("12")); // (10 × 10 + 5 × 16) / 15
    EXPECT_EQ(lastCost("A2"), d("16"));
}

TEST_F(StockTest, DocumentDatesBeforeTheLastPhysicalAdjustmentAreRefused) {
    EXPECT_FALSE(lastPhysicalAdjustment(db()));
    EXPECT_NO_THROW(checkDocumentDate(db(), QDate(2001, 1, 1)));
    exec(
        "INSERT INTO FISICOLOGICO (FechaAjuste, CodigoBarra, ExistenciaLogica, "
        "ExistenciaFisica, Ajuste) VALUES (?, 'A1', 1, 1, 0), (?, 'A1', 1, 1, 0)",
        {QDateTime(QDate(2023, 11, 2), QTime(9, 0)), QDateTime(QDate(2024, 3, 15), QTime(17, 45))});
    EXPECT_EQ(lastPhysicalAdjustment(db()), QDate(2024, 3, 15));
    try {
        checkDocumentDate(db(), QDate(2024, 3, 14));
        ADD_FAILURE() << "a date before the adjustment was taken";
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "La fecha no debe ser menor a la fecha 15/03/2024 del ultimo ajuste "
                            "fisico-logico...!");
    }
    // The adjustment's own day is allowed whatever its hour.
    EXPECT_NO_THROW(checkDocumentDate(db(), QDate(2024, 3, 15)));
}

TEST_F(StockTest, ANewVariantTakesThePricesOfItsModel) {
    variant("M1", "M", "1", "1");
    variant("M2", "M", "1", "1");
    variant("NEW", "M", "0", "1");
    variant("ALONE", "Z", "0", "1");
    exec("UPDATE INVENTARIO SET PrecioDetal = 100.5, PrecioMayor = 80, PrecioAfiliado = 90, "
         "Promocion = 0 WHERE CodigoBarra = 'M1'");
    exec("UPDATE INVENTARIO SET PrecioDetal = 99, PrecioMayor = 85.25, PrecioAfiliado = 90, "
         "Promocion = 1, PrecioPromocion = 70, FechaInicial = ?, FechaFinal = ? WHERE "
         "CodigoBarra = 'M2'",
         {QDateTime(QDate(2024, 5, 1), QTime(0, 0)), QDateTime(QDate(2024, 5, 31), QTime(0, 0))});
    exec("UPDATE INVENTARIO SET PrecioDetal = 1, PrecioMayor = 1, Promocion = 0 WHERE CodigoBarra "
         "= 'NEW'");

    const auto prices = modelPricesOf(db(), "M", "N1", "NEW");
    ASSERT_TRUE(prices);
    // The variant on promotion makes its own group, and that group wins.
    EXPECT_TRUE(prices->promotion);
    EXPECT_EQ(prices->retail, d("99"));
    EXPECT_EQ(prices->wholesale, d("85.25"));
    EXPECT_EQ(prices->promotionPrice, d("70"));
    EXPECT_EQ(prices->promotionEnd, QDate(2024, 5, 31));

    db::Transaction tx(db());
    EXPECT_TRUE(giveModelPrices(db(), "NEW"));
    EXPECT_FALSE(giveModelPrices(db(), "ALONE"));
    EXPECT_FALSE(giveModelPrices(db(), "NOPE"));
    tx.commit();
    EXPECT_EQ(dec("SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = 'NEW'"), d("99"));
    EXPECT_EQ(dec("SELECT PrecioPromocion FROM INVENTARIO WHERE CodigoBarra = 'NEW'"), d("70"));
    EXPECT_EQ(scalar("SELECT Promocion FROM INVENTARIO WHERE CodigoBarra = 'NEW'").toInt(), 1);
    EXPECT_EQ(dec("SELECT PrecioDetal FROM INVENTARIO WHERE CodigoBarra = 'ALONE'"), d("0"));
}
