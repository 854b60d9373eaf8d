#include "common/errors/errors.h"
#include "inventory/transfers/transfer_print.h"
#include "inventory/transfers/transfer_support.h"
#include "inventory/transfers/transfers.h"

using namespace orvo;
using namespace orvo::inventory::transfers;
using test::d;
using test::refusal;

namespace {

class TransfersTest : public test::TransferTest {};

} // namespace

TEST_F(TransfersTest, ApprovalTakesEachBarcodeOutOnceAtTheCostItLeavesAt) {
    article("A1", "CAMISA-A", "20", "10");
    article("A2", "CAMISA-A", "1", "17.5");
    Transfer t = transfer(
        "02", {line("A1", "6", 1), line("A2", "3", 1), line("A1", "4", 2), line("A1", "1", 1)});
    t.dispatchId = 2;
    const long long n = saveTransfer(db(), t, true);

    // The same barcode in two boxes stays two lines; typed twice in one box it is one.
    EXPECT_EQ(count("MOVTRANSFERENCIAS", "Numero = ?", {n}), 3);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVTRANSFERENCIAS WHERE CodigoBarra = 'A1' AND "
                  "NumeroCaja = 1"),
              d("7"));
    // Out once per barcode: 20 - 11, and A2 into negative stock, which is allowed.
    EXPECT_EQ(stock("A1"), d("9"));
    EXPECT_EQ(stock("A2"), d("-2"));
    // The sender's cost is frozen into the lines and the total; its own cost does not change.
    EXPECT_EQ(dec("SELECT MAX(Valor) FROM MOVTRANSFERENCIAS WHERE CodigoBarra = 'A1'"), d("10"));
    EXPECT_EQ(dec("SELECT MIN(Valor) FROM MOVTRANSFERENCIAS WHERE CodigoBarra = 'A1'"), d("10"));
    EXPECT_EQ(dec("SELECT Valor FROM MOVTRANSFERENCIAS WHERE CodigoBarra = 'A2'"), d("17.5"));
    EXPECT_EQ(dec("SELECT TotalValor FROM TRANSFERENCIAS"), d("162.5")); // 11 × 10 + 3 × 17.5
    EXPECT_EQ(averageCost("A1"), d("10"));
    EXPECT_EQ(scalar("SELECT Status FROM TRANSFERENCIAS").toInt(), 1);
    EXPECT_EQ(scalar("SELECT CodigoEnvia FROM TRANSFERENCIAS").toString(), "01");
    EXPECT_EQ(scalar("SELECT CodigoRecibe FROM TRANSFERENCIAS").toString(), "02");
    EXPECT_EQ(scalar("SELECT IDDespacho FROM TRANSFERENCIAS").toInt(), 2);

    // Approved is read-only: neither saved again nor deleted.
    t.number = n;
    EXPECT_EQ(refusal([&] { saveTransfer(db(), t, true); }),
              "La transferencia ya fue aprobada y no puede modificarse...!");
    EXPECT_EQ(refusal([&] { deleteTransfer(db(), Kind::Transfer, n); }),
              "Solo puede eliminar una transferencia ABIERTA...!");
    EXPECT_EQ(stock("A1"), d("9"));

    // Printed box by box, each with its total.
    const QString html = transferDocument(db(), Kind::Transfer, n).html;
    EXPECT_TRUE(html.contains("Total Caja Nº 1"));
    EXPECT_TRUE(html.contains("Total Caja Nº 2"));
    EXPECT_LT(html.indexOf("Total Caja Nº 1"), html.indexOf("Total Caja Nº 2"));
}

TEST_F(TransfersTest, RefusalsBeforeAndAtTheSave) {
    article("A1", "CAMISA-A", "5", "10");
    article("Z1", "CAMISA-Z", "5", "0");
    EXPECT_EQ(refusal([&] { checkTransfer(db(), transfer("02", {})); }),
              "La Transferencia debe contener al menos un items...!");
    EXPECT_EQ(refusal([&] { checkTransfer(db(), transfer("02", {line("A1", "0", 1)})); }),
              "La Transferencia tiene un Item con cantidad en 0...!");
    EXPECT_EQ(
        refusal([&] { checkTransfer(db(), transfer("02", {line("A1", "0", 1)}, Kind::Return)); }),
        "La Devolucion de Transferencia tiene un Item con cantidad en 0...!");
    EXPECT_EQ(refusal([&] { checkTransfer(db(), transfer("02", {}, Kind::Return)); }),
              "La Devolución debe contener al menos un items...");
    EXPECT_EQ(refusal([&] { checkTransfer(db(), transfer("01", {line("A1", "1", 1)})); }),
              "La sucursal de destino no puede ser esta tienda...!");
    // An article without cost cannot travel: it is refused when keyed and at the save.
    EXPECT_EQ(refusal([&] { articleLine(db(), Kind::Transfer, "Z1", d("1"), 1); }),
              "No se puede transferir el artículo con costo cero...!");
    EXPECT_EQ(refusal([&] { saveTransfer(db(), transfer("02", {line("Z1", "1", 1)}), true); }),
              "No se puede transferir el artículo con costo cero...!");
    EXPECT_EQ(count("TRANSFERENCIAS"), 0);
    EXPECT_EQ(stock("Z1"), d("5"));
    // A return may bring it back: it is valued at this store's cost, whatever it is.
    EXPECT_NO_THROW(articleLine(db(), Kind::Return, "Z1", d("1"), 1));
}

TEST_F(TransfersTest, AnOpenTransferIsChangedOrDeletedAndAReturnBringsGoodsBack) {
    article("A1", "CAMISA-A", "20", "10");
    article("B1", "CAMISA-B", "4", "3");
    Transfer t = transfer("02", {line("A1", "5", 1)});
    const long long n = saveTransfer(db(), t, false);
    EXPECT_EQ(stock("A1"), d("20")); // open: no stock moves
    EXPECT_EQ(dec("SELECT TotalValor FROM TRANSFERENCIAS WHERE Numero = ?", {n}), d("50"));

    t.number = n;
    t.receiver = "00";
    t.lines = {line("B1", "2", 1), line("B1", "1", 2)};
    saveTransfer(db(), t, false);
    EXPECT_EQ(count("MOVTRANSFERENCIAS"), 2);
    EXPECT_EQ(scalar("SELECT CodigoRecibe FROM TRANSFERENCIAS").toString(), "00");
    deleteTransfer(db(), Kind::Transfer, n);
    EXPECT_EQ(count("TRANSFERENCIAS"), 0);
    EXPECT_EQ(count("MOVTRANSFERENCIAS"), 0);

    // Goods coming back from 02 enter stock at this store's cost, which does not change.
    const long long r = saveTransfer(
        db(), transfer("02", {line("A1", "2", 1), line("A1", "1", 2)}, Kind::Return), true);
    EXPECT_EQ(stock("A1"), d("23"));
    EXPECT_EQ(averageCost("A1"), d("10"));
    EXPECT_EQ(dec("SELECT TotalValor FROM DEVTRANSFERENCIAS WHERE Numero = ?", {r}), d("30"));
    EXPECT_EQ(dec("SELECT MIN(Valor) FROM MOVDEVTRANSFERENCIAS"), d("10"));
    EXPECT_EQ(count("MOVDEVTRANSFERENCIAS"), 2);
}

TEST_F(TransfersTest, DestinationOfApprovedDocumentsAndReceivedOnesMovedAside) {
    article("A1", "CAMISA-A", "20", "10");
    const long long open = saveTransfer(db(), transfer("02", {line("A1", "1", 1)}), false);
    const long long approved = saveTransfer(db(), transfer("02", {line("A1", "1", 1)}), true);
    EXPECT_EQ(refusal([&] { changeDestination(db(), Kind::Transfer, open, "00"); }),
              "No existe el numero de documento...!");
    EXPECT_EQ(refusal([&] { changeDestination(db(), Kind::Transfer, 999, "00"); }),
              "No existe el numero de documento...!");
    changeDestination(db(), Kind::Transfer, approved, "00");
    EXPECT_EQ(
        scalar("SELECT CodigoRecibe FROM TRANSFERENCIAS WHERE Numero = ?", {approved}).toString(),
        "00");

    exec("INSERT INTO ITRANSFERENCIAS (Numero, CodigoEnvia, Fecha, Status) VALUES (7, '00', ?, 1), "
         "(7, '03', ?, 1), (8, '00', ?, 1)",
         {QDateTime(QDate(2026, 3, 1), QTime(23, 59, 30)),
          QDateTime(QDate(2026, 3, 2), QTime(8, 0)), QDateTime(QDate(2026, 3, 5), QTime(8, 0))});
    // The last day counts whole.
    const auto listed = receivedTransfers(db(), QDate(2026, 3, 1), QDate(2026, 3, 2));
    ASSERT_EQ(listed.size(), 2);
    moveAside(db(), {{7, "00", true}, {7, "03", false}});
    EXPECT_EQ(scalar("SELECT Status FROM ITRANSFERENCIAS WHERE CodigoEnvia = '00' AND Numero = 7")
                  .toInt(),
              2);
    moveAside(db(), {{7, "00", false}});
    EXPECT_EQ(count("ITRANSFERENCIAS", "Status = 1"), 3);
}
