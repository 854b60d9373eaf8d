#include "common/errors/errors.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/purchases/purchases.h"

using namespace orvo;
using namespace orvo::inventory::purchases;
using test::d;
using test::refusal;

namespace {

class PurchasesTest : public test::PurchaseTest {};

} // namespace

TEST_F(PurchasesTest, ApprovalWeighsEachVariantThenAveragesItsModel) {
    article("A1", "CAMISA-A", "10", "5");  // 10 at 5 receives 10 at 7
    article("A2", "CAMISA-A", "5", "9");   // its sister, not on the invoice
    article("B1", "CAMISA-B", "10", "5");  // alone in its model
    article("C1", "CAMISA-C", "-3", "4");  // short of stock, receives 5
    article("D1", "CAMISA-D", "-10", "4"); // still short after the purchase
    article("D2", "CAMISA-D", "0", "3");
    article("E1", "CAMISA-E", "16", "272"); // whole numbers whose average is not one
    savePurchase(
        db(),
        purchase("F-100", {line("A1", "10", "7"), line("B1", "10", "7"), line("C1", "5", "8"),
                           line("D1", "5", "8"), line("E1", "10", "255")}),
        true, true);

    EXPECT_EQ(scalar("SELECT Status FROM COMPRAS WHERE Documento = 'F-100'").toInt(), 1);
    EXPECT_EQ(dec("SELECT PrecioProrrateado FROM MOVCOMPRAS WHERE CodigoBarra = 'A1'"), d("7"));
    // A1: (10 × 5 + 10 × 7) / 20 = 6, then the model over its stock: (20 × 6 + 5 × 9) / 25
    EXPECT_EQ(stock("A1"), d("20"));
    EXPECT_EQ(averageCost("A1"), d("6.6"));
    EXPECT_EQ(averageCost("A2"), d("6.6"));
    // The last cost is each variant's own average from before the model's.
    EXPECT_EQ(lastCost("A1"), d("6"));
    EXPECT_EQ(lastCost("A2"), d("9"));
    EXPECT_EQ(stock("A2"), d("5"));
    EXPECT_EQ(averageCost("B1"), d("6"));
    // -3 + 5: the negative stock weighs nothing, the prorated cost stands.
    EXPECT_EQ(stock("C1"), d("2"));
    EXPECT_EQ(averageCost("C1"), d("8"));
    // A model with no stock above zero keeps its per-variant costs.
    EXPECT_EQ(stock("D1"), d("-5"));
    EXPECT_EQ(averageCost("D1"), d("8"));
    EXPECT_EQ(lastCost("D1"), d("8"));
    EXPECT_EQ(averageCost("D2"), d("3"));
    // (16 × 272 + 10 × 255) / 26 = 265.4615…
    EXPECT_EQ(averageCost("E1"), d("265.46154"));
    EXPECT_EQ(count("INVENTARIO", "Status = 1"), 5); // the received ones become active
}

TEST_F(PurchasesTest, ChargesEnterTheCostByTheValuationMethod) {
    for (const char* code : {"M1", "M2", "N1", "N2", "F1", "F2"})
        article(code, QString("REF-") + code); // no stock: the cost is the prorated one
    // 10 × 10 + 5 × 20 = 200 of merchandise, 10% discount, 20 of fee, surcharges and duties,
    // 40 of freight and insurance.
    auto charged = [&](const QString& document, const QString& a, const QString& b,
                       Valuation method) {
        Purchase p = purchase(document, {line(a, "10", "10"), line(b, "5", "20")});
        p.discountPercent = d("10");
        p.serviceFee = d("10");
        p.surcharges = d("6");
        p.otherTaxes = d("4");
        p.freight = d("30");
        p.insurance = d("10");
        p.valuation = method;
        return p;
    };
    savePurchase(db(), charged("F-1", "M1", "M2", Valuation::WithoutFreight), true, true);
    // f = 20 / 200 = 0.1: 9 + 0.9 and 18 + 1.8; freight and insurance left out
    EXPECT_EQ(averageCost("M1"), d("9.9"));
    EXPECT_EQ(averageCost("M2"), d("19.8"));
    savePurchase(db(), charged("F-2", "N1", "N2", Valuation::WithFreight), true, true);
    // f = 60 / 200 = 0.3: 9 + 2.7 and 18 + 5.4
    EXPECT_EQ(averageCost("N1"), d("11.7"));
    EXPECT_EQ(averageCost("N2"), d("23.4"));
    EXPECT_EQ(dec("SELECT PrecioProrrateado FROM MOVCOMPRAS WHERE CodigoBarra = 'N2'"), d("23.4"));
    // Freight typed under the first method changes no cost.
    Purchase noFreight = charged("F-3", "F1", "F2", Valuation::WithoutFreight);
    noFreight.freight = Decimal();
    noFreight.insurance = Decimal();
    savePurchase(db(), noFreight, true, true);
    EXPECT_EQ(averageCost("F1"), averageCost("M1"));
    EXPECT_EQ(averageCost("F2"), averageCost("M2"));

    // The header: merchandise, its discount, the tax on what is left, the method.
    EXPECT_EQ(dec("SELECT TotalMercancia FROM COMPRAS WHERE Documento = 'F-2'"), d("200"));
    EXPECT_EQ(dec("SELECT TotalDescuento FROM COMPRAS WHERE Documento = 'F-2'"), d("20"));
    EXPECT_EQ(dec("SELECT TotalImpuesto FROM COMPRAS WHERE Documento = 'F-2'"), d("28.8"));
    EXPECT_EQ(scalar("SELECT MetodoValorizacion FROM COMPRAS WHERE Documento = 'F-2'").toInt(), 2);
    EXPECT_EQ(dec("SELECT Flete FROM COMPRAS WHERE Documento = 'F-1'"), d("30"));
}

TEST_F(PurchasesTest, SixDecimalPricesAndAZeroMerchandiseTotal) {
    article("S1", "TORNILLO", "0", "0", 4);
    article("S2", "ARANDELA", "0", "0", 4);
    savePurchase(db(), purchase("F-7", {line("S1", "3", "0.123457", "0")}), true, true);
    EXPECT_EQ(dec("SELECT PrecioFactura FROM MOVCOMPRAS WHERE Documento = 'F-7'"), d("0.123457"));
    EXPECT_EQ(dec("SELECT TotalMercancia FROM COMPRAS WHERE Documento = 'F-7'"), d("0.37"));
    EXPECT_EQ(averageCost("S1"), d("0.12346"));

    // A tenth of a cent of merchandise is a zero total: refused, not divided by.
    EXPECT_EQ(refusal([&] {
                  savePurchase(db(), purchase("F-8", {line("S2", "1", "0.001", "0")}), true, true);
              }),
              "La compra no se puede aprobar con el total de la mercancía en cero...!");
    EXPECT_EQ(count("COMPRAS", "Documento = 'F-8'"), 0);
    EXPECT_EQ(stock("S2"), d("0"));
}

TEST_F(PurchasesTest, SavingMergesABarcodeTypedTwiceAndKeepsApprovedPurchasesReadOnly) {
    article("A1", "CAMISA-A", "0", "0");
    article("A2", "CAMISA-A", "0", "0");
    Purchase p =
        purchase("F-1", {line("A1", "2", "7"), line("A2", "1", "0"), line("A1", "3", "9")});
    EXPECT_EQ(refusal([&] { checkPurchase(db(), purchase("F-1", {}), true); }),
              "Debe existir un item en la compra...!");
    // A price of zero: no approval is offered and the purchase stays open, moving nothing.
    EXPECT_FALSE(offersApproval(p));
    checkPurchase(db(), p, true);
    savePurchase(db(), p, true, false);
    EXPECT_EQ(count("MOVCOMPRAS"), 2);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVCOMPRAS WHERE CodigoBarra = 'A1'"), d("5"));
    EXPECT_EQ(dec("SELECT PrecioFactura FROM MOVCOMPRAS WHERE CodigoBarra = 'A1'"), d("7"));
    EXPECT_EQ(scalar("SELECT Item FROM MOVCOMPRAS WHERE CodigoBarra = 'A2'").toInt(), 2);
    EXPECT_EQ(stock("A1"), d("0"));
    EXPECT_EQ(dec("SELECT TotalMercancia FROM COMPRAS WHERE Documento = 'F-1'"), d("35"));

    EXPECT_EQ(refusal([&] { checkPurchase(db(), p, true); }),
              "La compra F-1 del proveedor P1 ya existe...!");
    EXPECT_EQ(refusal([&] { savePurchase(db(), p, true, false); }),
              "La compra F-1 del proveedor P1 ya existe...!");
    // The same invoice number of another supplier is another purchase.
    savePurchase(db(), purchase("F-1", {line("A2", "1", "4")}, "P2"), true, false);
    EXPECT_EQ(count("COMPRAS"), 2);

    // Modified while open: the lines are written again, then approved.
    Purchase loaded = *loadPurchase(db(), "F-1", "P1");
    ASSERT_EQ(loaded.lines.size(), 2);
    EXPECT_EQ(loaded.lines[0].name, "CAMISA A1");
    loaded.lines[1].price = d("4");
    ASSERT_TRUE(offersApproval(loaded));
    savePurchase(db(), loaded, false, true);
    EXPECT_EQ(count("MOVCOMPRAS", "Documento = 'F-1' AND Proveedor = 'P1'"), 2);
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(stock("A2"), d("1"));

    EXPECT_EQ(refusal([&] { savePurchase(db(), loaded, false, false); }),
              "La compra ya fue aprobada y no puede modificarse...!");
    EXPECT_EQ(refusal([&] { deletePurchase(db(), "F-1", "P1"); }),
              "Solo puede eliminar una compra ABIERTA...!");
    deletePurchase(db(), "F-1", "P2");
    EXPECT_EQ(count("COMPRAS"), 1);
    EXPECT_EQ(count("MOVCOMPRAS", "Proveedor = 'P2'"), 0);
}

TEST_F(PurchasesTest, AFailureHalfWayThroughTheApprovalChangesNothing) {
    article("A1", "CAMISA-A", "4", "5");
    article("A2", "CAMISA-B", "4", "5");
    savePurchase(db(), purchase("F-9", {line("A1", "1", "5")}), true, false);
    refuseStockUpdateOf("A2");
    Purchase p = *loadPurchase(db(), "F-9", "P1");
    p.lines.append(line("A2", "6", "8"));
    p.note = "CAMBIADA";
    EXPECT_THROW(savePurchase(db(), p, false, true), DbError);
    EXPECT_EQ(scalar("SELECT Status FROM COMPRAS WHERE Documento = 'F-9'").toInt(), 0);
    EXPECT_EQ(scalar("SELECT Observacion FROM COMPRAS WHERE Documento = 'F-9'").toString(), "");
    EXPECT_EQ(count("MOVCOMPRAS"), 1);
    EXPECT_EQ(dec("SELECT PrecioProrrateado FROM MOVCOMPRAS"), d("0"));
    EXPECT_EQ(stock("A1"), d("4"));
    EXPECT_EQ(averageCost("A1"), d("5"));

    EXPECT_THROW(savePurchase(db(), purchase("F-10", {line("A2", "1", "5")}), true, true), DbError);
    EXPECT_EQ(count("COMPRAS", "Documento = 'F-10'"), 0);
    EXPECT_EQ(count("MOVCOMPRAS", "Documento = 'F-10'"), 0);
}

TEST_F(PurchasesTest, ADateBeforeThePhysicalAdjustmentIsRefused) {
    article("A1", "CAMISA-A");
    exec("INSERT INTO FISICOLOGICO (FechaAjuste, CodigoBarra, ExistenciaLogica, "
         "ExistenciaFisica, Ajuste) VALUES (?, 'A1', 0, 0, 0)",
         {QDateTime(QDate(2024, 6, 10), QTime(8, 0))});
    Purchase p = purchase("F-1", {line("A1", "1", "5")});
    p.date = QDateTime(QDate(2024, 6, 9), QTime(12, 0));
    EXPECT_EQ(refusal([&] { savePurchase(db(), p, true, true); }),
              "La fecha no debe ser menor a la fecha 10/06/2024 del ultimo ajuste "
              "fisico-logico...!");
    EXPECT_EQ(count("COMPRAS"), 0);
    p.date = QDateTime(QDate(2024, 6, 10), QTime(7, 0));
    savePurchase(db(), p, true, true);
    EXPECT_EQ(stock("A1"), d("1"));
}

TEST_F(PurchasesTest, HeaderNumbersAndDiscountLimits) {
    EXPECT_EQ(rules::headerNumber(" 12,50 "), d("12.5"));
    EXPECT_EQ(rules::headerNumber(""), Decimal());
    for (const char* bad : {"1.2.3", "12a", "-5", "1,2.3", "."})
        EXPECT_EQ(refusal([&] { rules::headerNumber(QString::fromLatin1(bad)); }),
                  "Debe ingresar un dato valido")
            << bad;
    EXPECT_EQ(refusal([] { rules::checkDiscountPercent(test::d("100.01")); }),
              "El porcentaje de descuento no puede ser superior al 100%");
    EXPECT_EQ(refusal([] { rules::checkDiscountPercent(test::d("-1")); }),
              "El porcentaje de descuento no puede ser inferior al 0%");
    EXPECT_EQ(refusal([] { rules::checkDiscountPercent(test::d("100")); }), "");
}

TEST_F(PurchasesTest, OrdersRecordWhatWasOrderedAndMoveNoStock) {
    article("A1", "CAMISA-A");
    article("A2", "CAMISA-A");
    PurchaseOrder o;
    o.supplier = "P1";
    o.user = "ANA";
    EXPECT_EQ(refusal([&] { saveOrder(db(), o, false); }),
              "Debe existir un item en la orden de compra...!");
    o.lines = {line("A1", "12", "7.125"), line("A2", "6", "7.125"), line("A1", "3", "1")};
    EXPECT_EQ(saveOrder(db(), o, false), 1);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVORDENCOMPRAS WHERE CodigoBarra = 'A1'"), d("15"));
    EXPECT_EQ(dec("SELECT TotalMercancia FROM ORDENCOMPRAS WHERE Numero = 1"), d("149.63"));
    EXPECT_EQ(refusal([&] { orderLines(db(), 1); }),
              "La orden de compra no existe o no ha sido aprobada...!");
    EXPECT_TRUE(ordersToLoad(db()).isEmpty());

    PurchaseOrder second = o;
    second.lines = {line("A2", "1", "2")};
    EXPECT_EQ(saveOrder(db(), second, true), 2);
    EXPECT_EQ(stock("A2"), d("0"));
    ASSERT_EQ(ordersToLoad(db()).size(), 1);
    EXPECT_EQ(ordersToLoad(db()).first().number, "2");
    EXPECT_EQ(refusal([&] { deleteOrder(db(), 2); }),
              "Solo puede eliminar una orden de compra ABIERTA...!");

    // The approved order's lines load into a purchase.
    const QList<DocumentLine> lines = orderLines(db(), 2);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0].quantity, d("1"));
    EXPECT_EQ(lines[0].price, d("2"));
    EXPECT_EQ(lines[0].taxPercent, d("16"));
    deleteOrder(db(), 1);
    EXPECT_EQ(count("MOVORDENCOMPRAS", "Numero = 1"), 0);
}

TEST_F(PurchasesTest, ThePriceChangeReachesEveryVariantOfTheModel) {
    article("A1", "CAMISA-A");
    article("A2", "CAMISA-A");
    article("B1", "CAMISA-B");
    QList<DocumentLine> lines = {line("A1", "1", "5"), line("B1", "1", "5"), line("A2", "2", "6")};
    EXPECT_EQ(changeModelPrice(db(), lines, "A2", d("7.5")), 2);
    EXPECT_EQ(lines[0].price, d("7.5"));
    EXPECT_EQ(lines[1].price, d("5"));
    EXPECT_EQ(lines[2].price, d("7.5"));
}

TEST_F(PurchasesTest, ReturnsTakeStockOutAndNeverMoreThanIsLeft) {
    article("A1", "CAMISA-A", "0", "0");
    article("A2", "CAMISA-A", "0", "0");
    savePurchase(db(), purchase("F-1", {line("A1", "10", "7"), line("A2", "4", "5")}), true, true);
    savePurchase(db(), purchase("F-2", {line("A1", "1", "7")}), true, false);
    EXPECT_TRUE(returnableLines(db(), "F-2", "P1").isEmpty()); // open purchases return nothing
    const QList<ReturnableLine> returnable = returnableLines(db(), "F-1", "P1");
    ASSERT_EQ(returnable.size(), 2);
    const Decimal costBefore = averageCost("A1");

    PurchaseReturn r;
    r.document = "F-1";
    r.supplier = "P1";
    r.user = "ANA";
    EXPECT_EQ(refusal([&] { savePurchaseReturn(db(), r, true); }),
              "El devolucion debe contener al menos un items...!");
    EXPECT_EQ(refusal([&] { addReturnLine(r.lines, returnable, "A1", d("0")); }),
              "Debe devolver al menos una unidad...!");
    EXPECT_EQ(refusal([&] { addReturnLine(r.lines, returnable, "A1", d("11")); }),
              "No puede devolver más de 10 unidades del artículo A1...!");
    addReturnLine(r.lines, returnable, "A1", d("2"));
    EXPECT_EQ(refusal([&] { addReturnLine(r.lines, returnable, "A1", d("1")); }),
              "El articulo ya esta cargado en la devolución...!");
    EXPECT_EQ(savePurchaseReturn(db(), r, true), 1);
    EXPECT_EQ(stock("A1"), d("8"));
    EXPECT_EQ(averageCost("A1"), costBefore);
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVCOMPRAS WHERE CodigoBarra = 'A1'"), d("2"));
    EXPECT_EQ(dec("SELECT TotalMercancia FROM DEVCOMPRAS WHERE Numero = 1"), d("14"));
    EXPECT_EQ(dec("SELECT TotalImpuesto FROM DEVCOMPRAS WHERE Numero = 1"), d("2.24"));

    // Two open returns of 5 each out of the 8 left: the second no longer fits when saved.
    PurchaseReturn first = r;
    first.number = 0;
    first.lines = {line("A1", "5", "7")};
    PurchaseReturn second = first;
    EXPECT_EQ(savePurchaseReturn(db(), first, false), 2);
    EXPECT_EQ(savePurchaseReturn(db(), second, false), 3);
    first.number = 2;
    savePurchaseReturn(db(), first, true);
    second.number = 3;
    EXPECT_EQ(refusal([&] { savePurchaseReturn(db(), second, true); }),
              "No puede devolver más de 3 unidades del artículo A1...!");
    EXPECT_EQ(stock("A1"), d("3"));
    EXPECT_EQ(scalar("SELECT Status FROM DEVCOMPRAS WHERE Numero = 3").toInt(), 0);
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVCOMPRAS WHERE CodigoBarra = 'A1' AND "
                  "Documento = 'F-1'"),
              d("7"));
    EXPECT_EQ(refusal([&] { deletePurchaseReturn(db(), 2); }),
              "Solo puede eliminar una devolución ABIERTA...!");
    deletePurchaseReturn(db(), 3);
    EXPECT_EQ(count("MOVDEVCOMPRAS", "Numero = 3"), 0);
}
