#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/receptions.h"

#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::inventory::purchases;
using test::d;
using test::refusal;

namespace {

class ReceptionsTest : public test::PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        article("A1", "CAMISA-A");
        article("A2", "CAMISA-A");
        article("B1", "CAMISA-B");
        savePurchase(db(), purchase("F-1", {line("A1", "10", "7"), line("A2", "4", "5")}), true,
                     true);
        savePurchase(db(), purchase("F-1", {line("B1", "3", "9")}, "P2"), true, true);
        savePurchase(db(), purchase("F-2", {line("B1", "3", "9")}), true, false);
    }

    long long newReception() {
        Reception r;
        r.branch = "01";
        r.origin = "F-1";
        const QList<CoveredPurchase> found = purchasesNumbered(db(), "F-1");
        for (const CoveredPurchase& p : found)
            if (p.supplier == "P1")
                coverPurchase(r, p);
        return saveReception(db(), r);
    }

    static Box box(const QString& user,
                   std::initializer_list<std::pair<const char*, const char*>> counted) {
        Box b;
        b.user = user;
        for (const auto& [code, quantity] : counted)
            countInto(b, {code, QString(), d(quantity)});
        return b;
    }
};

} // namespace

TEST_F(ReceptionsTest, PurchasesAreFoundByNumberAndCoveredOnce) {
    EXPECT_EQ(refusal([&] { purchasesNumbered(db(), " "); }), "Especifique el Número de la Compra");
    // Open purchases are not received.
    EXPECT_EQ(refusal([&] { purchasesNumbered(db(), "F-2"); }),
              "Número de Compra no se encuentra registrada.");
    const QList<CoveredPurchase> found = purchasesNumbered(db(), "F-1");
    ASSERT_EQ(found.size(), 2); // the same number from two suppliers
    Reception r;
    r.branch = "01";
    coverPurchase(r, found[0]);
    EXPECT_EQ(refusal([&] { coverPurchase(r, found[0]); }),
              "Número de Compra ya se encuentra cargado a esta Recepcion");
    coverPurchase(r, found[1]);
    const long long number = saveReception(db(), r);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(count("RECEPCION_COMPRAS", "Numero = 1"), 2);
    Reception loaded = *loadReception(db(), number);
    loaded.purchases.removeLast();
    saveReception(db(), loaded);
    EXPECT_EQ(count("RECEPCION_COMPRAS", "Numero = 1"), 1);
    EXPECT_EQ(saveReception(db(), r), 2);
}

TEST_F(ReceptionsTest, EachUserCountsHisOwnBoxAndOnlyTheLastBoxIsDeleted) {
    const long long reception = newReception();
    EXPECT_EQ(refusal([&] { saveBox(db(), reception, box("ANA", {}), false); }),
              "La caja de la recepción debe contener al menos un items...!");
    Box ana = currentBox(db(), reception, "ANA");
    EXPECT_EQ(ana.number, 0);
    countInto(ana, {"A1", QString(), d("4")});
    countInto(ana, {"A1", QString(), d("2")}); // scanned again: one line
    ASSERT_EQ(ana.lines.size(), 1);
    EXPECT_EQ(saveBox(db(), reception, ana, false), 1);
    EXPECT_EQ(saveBox(db(), reception, box("LUIS", {{"A2", "4"}}), false), 2);

    // Ana comes back to her open box and goes on counting.
    Box again = currentBox(db(), reception, "ANA");
    EXPECT_EQ(again.number, 1);
    ASSERT_EQ(again.lines.size(), 1);
    EXPECT_EQ(again.lines[0].quantity, d("6"));
    countInto(again, {"A1", QString(), d("4")});
    countInto(again, {"B1", QString(), d("1")});
    EXPECT_EQ(saveBox(db(), reception, again, true), 1);
    EXPECT_EQ(count("MOVRECEPCION", "Numero = ? AND NumeroCaja = 1 AND Status = 1", {reception}),
              2);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVRECEPCION WHERE CodigoBarra = 'A1'"), d("10"));
    EXPECT_EQ(dec("SELECT Precio FROM MOVRECEPCION WHERE CodigoBarra = 'A1'"), d("50"));
    // The model's average when counted: (10 × 7 + 4 × 5) / 14
    EXPECT_EQ(dec("SELECT Costo FROM MOVRECEPCION WHERE CodigoBarra = 'A1'"), d("6.42857"));
    // Her box is closed: the next one is new and takes the next number.
    EXPECT_EQ(currentBox(db(), reception, "ANA").number, 0);
    EXPECT_EQ(refusal([&] { saveBox(db(), reception, again, false); }),
              "La caja 1 ya fue cerrada...!");

    EXPECT_EQ(refusal([&] { checkBoxDeletion(db(), reception, 1); }),
              "Solo puede eliminar la ultima caja de la recepción seleccionada...!");
    EXPECT_EQ(saveBox(db(), reception, box("LUIS", {{"B1", "1"}}), false), 3);
    deleteBox(db(), reception, 3);
    EXPECT_EQ(receptionBoxes(db(), reception).size(), 2);

    // What was counted against what was invoiced (purchase F-1 of P1: 10 A1, 4 A2).
    const QList<ComparisonLine> lines = compareReception(db(), reception);
    ASSERT_EQ(lines.size(), 3);
    for (const ComparisonLine& l : lines) {
        if (l.barcode == "A1")
            EXPECT_EQ(l.difference(), d("0"));
        else if (l.barcode == "A2")
            EXPECT_EQ(l.counted, d("4"));
        else
            EXPECT_EQ(l.invoiced, d("0")); // B1 came without being invoiced
    }
}

TEST_F(ReceptionsTest, ApprovalNeedsClosedBoxesAndASecondApproverIsTold) {
    const long long reception = newReception();
    EXPECT_EQ(refusal([&] { checkReceptionApproval(db(), reception); }),
              "No existen cajas en la recepción...!");
    saveBox(db(), reception, box("ANA", {{"A1", "10"}}), true);
    const long long open = saveBox(db(), reception, box("LUIS", {{"A2", "4"}}), false);
    EXPECT_EQ(refusal([&] { approveReception(db(), reception); }),
              "Existen cajas abiertas...!\nEl cierre de la recepción no procede...!");
    Box luis = *loadBox(db(), reception, open);
    luis.user = "LUIS";
    saveBox(db(), reception, luis, true);

    // Both users checked and were asked; the first to answer approves it.
    const QSqlDatabase other = testDb().openAnother("segundo_aprobador");
    checkReceptionApproval(db(), reception);
    checkReceptionApproval(other, reception);
    approveReception(db(), reception);
    EXPECT_EQ(refusal([&] { approveReception(other, reception); }),
              "La recepción no existe o ya fue aprobada por otro usuario...!");
    EXPECT_EQ(scalar("SELECT Status FROM RECEPCION WHERE Numero = ?", {reception}).toInt(), 1);
    EXPECT_FALSE(
        scalar("SELECT FechaAprobacion FROM RECEPCION WHERE Numero = ?", {reception}).isNull());
    // An approved reception takes no more boxes and moved no stock.
    EXPECT_EQ(refusal([&] {
                  saveBox(db(), reception, box("ANA", {{"A1", "1"}}), false);
              }),
              "La recepción no existe o ya fue aprobada por otro usuario...!");
    EXPECT_EQ(stock("A1"), d("10"));
}

TEST_F(ReceptionsTest, ABoxGridSurvivesInItsLocalBackup) {
    QTemporaryDir dir;
    const QString path = dir.filePath("Recepcion.SS7");
    EXPECT_FALSE(readBoxBackup(path));
    writeBoxBackup(path, {7, 2, "ANA", {{"A1", "CAMISA A1", d("3")}, {"B1", "", d("1.5")}}});
    const auto back = readBoxBackup(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->reception, 7);
    EXPECT_EQ(back->box, 2);
    EXPECT_EQ(back->user, "ANA");
    ASSERT_EQ(back->lines.size(), 2);
    EXPECT_EQ(back->lines[0].name, "CAMISA A1");
    EXPECT_EQ(back->lines[1].quantity, d("1.5"));
    QFile other(dir.filePath("otro.txt"));
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.write("no es un respaldo\n");
    other.close();
    EXPECT_FALSE(readBoxBackup(dir.filePath("otro.txt")));
}
