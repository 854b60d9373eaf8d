#include "common/errors/errors.h"
#include "inventory/dispatch/conversions.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/dispatch/transfer_conversions.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/receptions.h"

using namespace orvo;
using namespace orvo::inventory::dispatch;
namespace purchases = orvo::inventory::purchases;
using test::d;
using test::refusal;

namespace {

class ConversionsTest : public test::PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        article("A1", "CAMISA-A", "10", "7.5");
        article("B1", "CAMISA-B", "5", "9");
        exec("INSERT INTO TIPOAJUSTES (Codigo, Nombre, Signo, Status) VALUES (1, 'ENTRADA', 1, "
             "1), (2, 'SALIDA', -1, 1), (999, 'PARCIAL (+)', 1, 1)");
        exec("INSERT INTO TIPO_DESPACHO (ID, Descripcion, Estado) VALUES (3, 'CAMION PROPIO', "
             "1)");
    }

    // An approved document of `kind` with A1 in two boxes (3 + 2) and one B1.
    long long approved(const purchases::BoxKind& kind) {
        purchases::Reception r;
        r.branch = "01";
        r.originType = purchases::ReceptionOrigin::OtherDocuments;
        const long long number = purchases::saveReception(db(), r, kind);
        purchases::Box first{0, "ANA", false, {{"A1", {}, d("3")}, {"B1", {}, d("1")}}};
        purchases::Box second{0, "LUIS", false, {{"A1", {}, d("2")}}};
        purchases::saveBox(db(), number, first, true, kind);
        purchases::saveBox(db(), number, second, true, kind);
        purchases::approveReception(db(), number, "ANA", kind);
        return number;
    }

    TransferRequest fromRemission(long long number, int dispatchType = 3) {
        TransferRequest r;
        r.number = number;
        r.dispatchType = dispatchType;
        r.user = "ANA";
        return r;
    }

    TransferRequest fromPurchase(const QString& document, const QString& receiver = "01") {
        TransferRequest r;
        r.source = TransferSource::Purchase;
        r.document = document;
        r.supplier = "P1";
        r.receiver = receiver;
        r.user = "ANA";
        return r;
    }

    void dropRefusal() {
        exec(isPostgres() ? "DROP TRIGGER tr_refuse_stock ON INVENTARIO"
                          : "DROP TRIGGER TR_REFUSE_STOCK");
    }
};

} // namespace

TEST_F(ConversionsTest, AnApprovedRemissionLeavesTheStockOnceAsAnAdjustment) {
    const long long remission = approved(remissionKind());
    EXPECT_EQ(refusal([&] { previewAdjustment(db(), AdjustmentSource::Remission, 9); }),
              "La remisión Nº 9 no existe...!");
    const AdjustmentPreview preview =
        previewAdjustment(db(), AdjustmentSource::Remission, remission);
    ASSERT_EQ(preview.lines.size(), 2);
    EXPECT_EQ(preview.total, d("46.50")); // 5 × 7.50 + 1 × 9

    const long long adjustment =
        convertToAdjustment(db(), AdjustmentSource::Remission, remission, 2, "ANA");
    EXPECT_EQ(adjustment, 1);
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(stock("B1"), d("4"));
    EXPECT_EQ(count("AJUSTES", "Numero = 1 AND Signo = -1 AND Status = 1 AND TipoAjuste = 2"), 1);
    EXPECT_EQ(scalar("SELECT Observacion FROM AJUSTES WHERE Numero = 1").toString(),
              "Ajuste generado aut. por la remisión Nº 1");
    EXPECT_EQ(dec("SELECT TotalValor FROM AJUSTES WHERE Numero = 1"), d("46.50"));
    // One line per barcode, the boxes summed, at the average cost.
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVAJUSTES WHERE Numero = 1 AND CodigoBarra = 'A1'"),
              d("5"));
    EXPECT_EQ(dec("SELECT Costo FROM MOVAJUSTES WHERE Numero = 1 AND CodigoBarra = 'A1'"),
              d("7.5"));
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 2);
    EXPECT_EQ(count("BITACORAMOVIMIENTO",
                    "TipodocumentoOrigen = 'RM' AND DocumentoOrigen = '1' AND "
                    "tipoDocumentoDestino = 'AJ' AND DocumentoDestino = '1' AND Usuario = 'ANA'"),
              1);

    // Converted once only.
    EXPECT_EQ(refusal([&] {
                  convertToAdjustment(db(), AdjustmentSource::Remission, remission, 2, "LUIS");
              }),
              "La remisión Nº 1 ya fue convertida...!");
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(count("AJUSTES"), 1);
    EXPECT_EQ(count("BITACORAMOVIMIENTO"), 1);
}

TEST_F(ConversionsTest, AnApprovedReceptionEntersTheStockAndAnOpenOneIsRefused) {
    purchases::Reception open;
    open.branch = "01";
    open.originType = purchases::ReceptionOrigin::OtherDocuments;
    const long long pending = purchases::saveReception(db(), open);
    EXPECT_EQ(
        refusal([&] { convertToAdjustment(db(), AdjustmentSource::Reception, pending, 1, "ANA"); }),
        "La recepción Nº 1 no está aprobada...!");

    const long long reception = approved(purchases::receptionKind());
    // Only the reasons of the reception's sign, without the partial count's.
    const auto types = adjustmentTypesFor(db(), AdjustmentSource::Reception);
    ASSERT_EQ(types.size(), 1);
    EXPECT_EQ(types[0].code, 1);
    convertToAdjustment(db(), AdjustmentSource::Reception, reception, 1, "ANA");
    EXPECT_EQ(stock("A1"), d("15"));
    EXPECT_EQ(stock("B1"), d("6"));
    EXPECT_EQ(scalar("SELECT Observacion FROM AJUSTES").toString(),
              "Ajuste generado aut. por la recepción Nº 2");
    EXPECT_EQ(scalar("SELECT Signo FROM AJUSTES").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM RECEPCION WHERE Numero = ?", {reception}).toInt(), 2);
    EXPECT_EQ(count("BITACORAMOVIMIENTO", "TipodocumentoOrigen = 'RC' AND DocumentoOrigen = '2'"),
              1);
}

TEST_F(ConversionsTest, AFailureHalfWayLeavesBothDocumentsAsTheyWere) {
    const long long remission = approved(remissionKind());
    // The second line's stock update is refused, after the first line was written.
    refuseStockUpdateOf("B1");
    EXPECT_THROW(convertToAdjustment(db(), AdjustmentSource::Remission, remission, 2, "ANA"),
                 DbError);
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 1);
    EXPECT_EQ(count("AJUSTES"), 0);
    EXPECT_EQ(count("MOVAJUSTES"), 0);
    EXPECT_EQ(count("BITACORAMOVIMIENTO"), 0);
    EXPECT_EQ(stock("A1"), d("10"));
    EXPECT_EQ(stock("B1"), d("5"));
}

TEST_F(ConversionsTest, ARemissionLeavesAsOneApprovedTransferBoxByBox) {
    const long long remission = approved(remissionKind());
    EXPECT_EQ(refusal([&] { convertToTransfer(db(), fromRemission(remission, 0)); }),
              "Seleccione un tipo de despacho para poder realizar la conversion.");

    const auto preview = previewTransfer(db(), fromRemission(remission, 0));
    ASSERT_EQ(preview.lines.size(), 3); // A1 and B1 of box 1, A1 of box 2
    EXPECT_EQ(preview.totalValue, d("46.50"));
    EXPECT_EQ(preview.receiver, "01");

    const long long transfer = convertToTransfer(db(), fromRemission(remission));
    EXPECT_EQ(transfer, 1);
    EXPECT_EQ(count("TRANSFERENCIAS", "Numero = 1 AND Status = 1 AND CodigoRecibe = '01' AND "
                                      "IDDespacho = 3 AND DocumentoOrigen = '1'"),
              1);
    EXPECT_EQ(dec("SELECT TotalValor FROM TRANSFERENCIAS"), d("46.50"));
    EXPECT_EQ(scalar("SELECT Observacion FROM TRANSFERENCIAS").toString(),
              "Transf. generada aut. por la remisión Nº 1");
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVTRANSFERENCIAS WHERE CodigoBarra = 'A1' AND "
                  "NumeroCaja = 2"),
              d("2"));
    EXPECT_EQ(dec("SELECT Valor FROM MOVTRANSFERENCIAS WHERE CodigoBarra = 'A1' AND "
                  "NumeroCaja = 1"),
              d("7.5"));
    // The units of both boxes leave once.
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(stock("B1"), d("4"));
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 2);
    EXPECT_EQ(count("BITACORAMOVIMIENTO",
                    "TipodocumentoOrigen = 'RM' AND DocumentoOrigen = '1' AND "
                    "tipoDocumentoDestino = 'TS' AND DocumentoDestino = '1' AND Destino = '01'"),
              1);

    // Converted once only, into a transfer or anything else.
    EXPECT_EQ(refusal([&] { convertToTransfer(db(), fromRemission(remission)); }),
              "La remisión Nº 1 ya fue convertida...!");
    EXPECT_EQ(refusal([&] {
                  convertToAdjustment(db(), AdjustmentSource::Remission, remission, 2, "ANA");
              }),
              "La remisión Nº 1 ya fue convertida...!");
    EXPECT_EQ(count("TRANSFERENCIAS"), 1);
    EXPECT_EQ(stock("A1"), d("5"));
}

TEST_F(ConversionsTest, AFailureHalfWayLeavesTheRemissionAndTheStockAsTheyWere) {
    const long long remission = approved(remissionKind());
    refuseStockUpdateOf("B1");
    EXPECT_THROW(convertToTransfer(db(), fromRemission(remission)), DbError);
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 1);
    EXPECT_EQ(count("TRANSFERENCIAS"), 0);
    EXPECT_EQ(count("MOVTRANSFERENCIAS"), 0);
    EXPECT_EQ(count("BITACORAMOVIMIENTO"), 0);
    EXPECT_EQ(stock("A1"), d("10"));
    dropRefusal();
    EXPECT_EQ(convertToTransfer(db(), fromRemission(remission)), 1);
}

TEST_F(ConversionsTest, APurchaseIsSentOnToABranchOnce) {
    purchases::Purchase p = purchase("F-7", {line("A1", "4", "7.5"), line("B1", "2", "9")});
    p.lotId = 12;
    purchases::savePurchase(db(), p, true, false);
    EXPECT_EQ(refusal([&] { convertToTransfer(db(), fromPurchase("F-7")); }),
              "La compra Nº F-7 del proveedor P1 no está aprobada...!");
    purchases::savePurchase(db(), p, false, true);
    ASSERT_EQ(stock("A1"), d("14"));
    EXPECT_EQ(refusal([&] { convertToTransfer(db(), fromPurchase("F-7", "")); }),
              "Debe seleccionar una sucursal...!");

    // Refused half-way, the purchase stays convertible.
    refuseStockUpdateOf("B1");
    EXPECT_THROW(convertToTransfer(db(), fromPurchase("F-7")), DbError);
    EXPECT_EQ(count("TRANSFERENCIAS") + count("BITACORAMOVIMIENTO"), 0);
    EXPECT_EQ(stock("A1"), d("14"));
    dropRefusal();

    EXPECT_EQ(convertToTransfer(db(), fromPurchase("F-7")), 1);
    EXPECT_EQ(stock("A1"), d("10"));
    EXPECT_EQ(stock("B1"), d("5"));
    EXPECT_EQ(scalar("SELECT Observacion FROM TRANSFERENCIAS").toString(),
              "Transf. generada aut. por la compra Nº F-7 del proveedor P1");
    EXPECT_EQ(scalar("SELECT IDLote FROM TRANSFERENCIAS").toInt(), 12);
    EXPECT_EQ(count("BITACORAMOVIMIENTO", "TipodocumentoOrigen = 'CO' AND DocumentoOrigen = "
                                          "'F-7' AND Origen = 'P1' AND tipoDocumentoDestino = "
                                          "'TS'"),
              1);
    EXPECT_EQ(refusal([&] { convertToTransfer(db(), fromPurchase("F-7")); }),
              "La compra Nº F-7 del proveedor P1 ya fue convertida...!");
    EXPECT_EQ(count("TRANSFERENCIAS"), 1);
}

TEST_F(ConversionsTest, AReceptionComesBackAsATransferReturn) {
    const long long reception = approved(purchases::receptionKind());
    TransferRequest r;
    r.source = TransferSource::Reception;
    r.number = reception;
    r.user = "LUIS";
    EXPECT_EQ(convertToTransfer(db(), r), 1);
    EXPECT_EQ(count("DEVTRANSFERENCIAS", "Status = 1 AND CodigoRecibe = '01'"), 1);
    EXPECT_EQ(count("MOVDEVTRANSFERENCIAS"), 3);
    EXPECT_EQ(count("TRANSFERENCIAS"), 0);
    EXPECT_EQ(stock("A1"), d("15"));
    EXPECT_EQ(stock("B1"), d("6"));
    EXPECT_EQ(scalar("SELECT Status FROM RECEPCION WHERE Numero = ?", {reception}).toInt(), 2);
    EXPECT_EQ(count("BITACORAMOVIMIENTO", "TipodocumentoOrigen = 'RC' AND "
                                          "tipoDocumentoDestino = 'DT' AND Usuario = 'LUIS'"),
              1);
    EXPECT_EQ(refusal([&] { convertToTransfer(db(), r); }),
              "La recepción Nº 1 ya fue convertida...!");
}
