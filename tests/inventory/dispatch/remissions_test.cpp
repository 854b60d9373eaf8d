#include "inventory/dispatch/remissions.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/purchases/receptions.h"

#include <QFileInfo>

using namespace orvo;
using namespace orvo::inventory::purchases;
using orvo::inventory::dispatch::remissionKind;
using test::d;
using test::refusal;

namespace {

class RemissionsTest : public test::PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        article("A1", "CAMISA-A", "10", "7");
        article("B1", "CAMISA-B", "5", "9");
    }

    long long newRemission(ReceptionOrigin type = ReceptionOrigin::OtherDocuments) {
        Reception r;
        r.branch = "01";
        r.originType = type;
        return saveReception(db(), r, remissionKind());
    }

    Box counted(long long remission, const QString& user,
                std::initializer_list<std::pair<const char*, const char*>> lines) {
        Box b = currentBox(db(), remission, user, remissionKind());
        b.user = user;
        for (const auto& [code, quantity] : lines)
            countInto(b, {code, QString(), d(quantity)});
        return b;
    }
};

} // namespace

TEST_F(RemissionsTest, TwoUsersCountTheirOwnBoxesAndApprovalWaitsForEveryBox) {
    const auto& k = remissionKind();
    const long long remission = newRemission(ReceptionOrigin::Purchases);
    EXPECT_EQ(refusal([&] { checkReceptionApproval(db(), remission, k); }),
              "No existen cajas en la remisión...!");
    EXPECT_EQ(refusal([&] {
                  saveBox(db(), remission, Box{0, "ANA", false, {}}, false, k);
              }),
              "La caja de la remisión debe contener al menos un items.");

    // Ana and Luis count at the same time, each in his own box.
    EXPECT_EQ(saveBox(db(), remission, counted(remission, "ANA", {{"A1", "3"}}), false, k), 1);
    EXPECT_EQ(saveBox(db(), remission, counted(remission, "LUIS", {{"B1", "1"}}), false, k), 2);
    Box ana = counted(remission, "ANA", {{"A1", "2"}, {"B1", "1"}});
    EXPECT_EQ(ana.number, 1); // her open box again, with what she had counted
    EXPECT_EQ(saveBox(db(), remission, ana, false, k), 1);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVREMISION WHERE Numero = ? AND NumeroCaja = 1 AND "
                  "CodigoBarra = 'A1'",
                  {remission}),
              d("5"));
    EXPECT_EQ(count("MOVRECEPCION"), 0); // its own tables, not the reception's

    EXPECT_EQ(refusal([&] { checkReceptionApproval(db(), remission, k); }),
              "Existen cajas abiertas...!\nEl cierre de la remisión no procede...!");
    EXPECT_EQ(refusal([&] { checkBoxDeletion(db(), remission, 1, k); }),
              "Solo puede eliminar la ultima caja de la remisión seleccionada...!");
    saveBox(db(), remission, currentBox(db(), remission, "ANA", k), true, k);
    saveBox(db(), remission, currentBox(db(), remission, "LUIS", k), true, k);
    EXPECT_EQ(count("MOVREMISION", "Numero = ? AND FechaCierre IS NULL", {remission}), 0);

    // A remission for purchases lists at least one.
    EXPECT_EQ(refusal([&] { approveReception(db(), remission, "ANA", k); }),
              "El tipo de Documento es Compra y no ha digitado ninguna. ");
    Reception r = *loadReception(db(), remission, k);
    r.originType = ReceptionOrigin::OtherDocuments;
    saveReception(db(), r, k);
    approveReception(db(), remission, "ANA", k);
    EXPECT_EQ(scalar("SELECT Status FROM REMISION WHERE Numero = ?", {remission}).toInt(), 1);
    EXPECT_EQ(
        scalar("SELECT UsuarioAprobacion FROM REMISION WHERE Numero = ?", {remission}).toString(),
        "ANA");
    EXPECT_FALSE(
        scalar("SELECT FechaAprobacion FROM REMISION WHERE Numero = ?", {remission}).isNull());

    // Luis, who had it open, approves or saves it afterwards.
    EXPECT_EQ(refusal([&] { approveReception(db(), remission, "LUIS", k); }),
              "La remision no existe o ya fue aprobada por otro usuario...!");
    EXPECT_EQ(refusal([&] { saveReception(db(), r, k); }),
              "La remision ya fue aprobada por otro usuario...!");
    EXPECT_EQ(refusal([&] {
                  saveBox(db(), remission, counted(remission, "LUIS", {{"A1", "1"}}), false, k);
              }),
              "La remision no existe o ya fue aprobada por otro usuario...!");
    // Nothing moved stock.
    EXPECT_EQ(stock("A1"), d("10"));
}

TEST_F(RemissionsTest, ItsLocalBackupIsNotTheReceptions) {
    test::HomeFolder home;
    const auto& k = remissionKind();
    EXPECT_EQ(QFileInfo(boxBackupPath(k)).fileName(), "Remision.SS7");
    writeBoxBackup(boxBackupPath(k), {4, 1, "ANA", {{"A1", "CAMISA A1", d("3")}}}, k);
    const auto back = readBoxBackup(boxBackupPath(k), k);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->reception, 4);
    EXPECT_EQ(back->lines[0].quantity, d("3"));
    // A reception's backup copied over it is not taken for a remission's.
    EXPECT_FALSE(readBoxBackup(boxBackupPath(k), receptionKind()));
}
