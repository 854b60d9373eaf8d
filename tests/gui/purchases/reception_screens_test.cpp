#include "gui/purchases/purchase_gui_support.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/receptions.h"

#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QTableWidget>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::inventory::purchases;
using Action = shell::RecordScreen::Action;
using test::d;

namespace {

class ReceptionScreensTest : public test::PurchaseScreenTest {
protected:
    void SetUp() override {
        PurchaseScreenTest::SetUp();
        article("A1", "CAMISA-A");
        article("A2", "CAMISA-A");
        savePurchase(db(), purchase("F-1", {line("A1", "10", "7"), line("A2", "4", "5")}), true,
                     true);
    }
    // Barcode, Enter, quantity, Enter: counted into the box.
    void scan(const QString& code, const QString& quantity) {
        ASSERT_EQ(focusName(), "txtCodigo");
        enter(code);
        ASSERT_EQ(focusName(), "txtCantidad");
        enter(quantity);
        ASSERT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
    }
    long long newReception(shell::RecordScreen& s) {
        EXPECT_TRUE(s.perform(Action::New));
        child<QLineEdit>(s, "txtCompra")->setFocus();
        enter("F-1");
        EXPECT_EQ(child<QTableWidget>(s, "SpreadCompras")->rowCount(), 1);
        EXPECT_TRUE(s.perform(Action::Save)) << dialogs.lastText().toStdString();
        return child<QLineEdit>(s, "txtNumero")->text().toLongLong();
    }
    static void focusCode(QWidget& s) { child<QLineEdit>(s, "txtCodigo")->setFocus(); }

    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(ReceptionScreensTest, TwoUsersCountTheirBoxesAndTheSecondApproverIsTold) {
    auto ana = open("frmRecepcion");
    const long long number = newReception(*ana);
    ASSERT_EQ(number, 1);
    EXPECT_EQ(scalar("SELECT DocumentoOrigen FROM RECEPCION").toString(), "F-1");
    focusCode(*ana);
    scan("A1", "6");
    scan("A1", "4");
    EXPECT_EQ(child<QTableWidget>(*ana, "SpreadCaja")->rowCount(), 1);
    // Every scan is kept in the local backup until the box is saved.
    EXPECT_TRUE(QFileInfo::exists(boxBackupPath()));
    pressOn(*ana, Qt::Key_F9);
    EXPECT_FALSE(QFileInfo::exists(boxBackupPath()));
    EXPECT_EQ(child<QLabel>(*ana, "lblCaja")->text(), "Caja Nº 1");

    user("LUIS");
    auto luis = open("frmRecepcion");
    EXPECT_EQ(child<QLabel>(*luis, "lblCaja")->text(), "Caja nueva");
    focusCode(*luis);
    scan("A2", "4");
    dialogs.expectQuestion("Desea cerrar la caja ?", true);
    pressOn(*luis, Qt::Key_F10);
    EXPECT_EQ(count("MOVRECEPCION", "NumeroCaja = 2 AND Usuario = 'LUIS' AND Status = 1"), 1);
    EXPECT_EQ(child<QTableWidget>(*luis, "grdCajas")->rowCount(), 2);

    pressOn(*ana, Qt::Key_F12);
    EXPECT_EQ(dialogs.lastText(),
              "Existen cajas abiertas...!\nEl cierre de la recepción no procede...!");
    dialogs.expectQuestion("Desea cerrar la caja ?", true);
    pressOn(*ana, Qt::Key_F10);
    // Both see every box closed and are asked; Ana answers first.
    dialogs.expectQuestion("Desea Aprobar la Recepción ?", true);
    pressOn(*ana, Qt::Key_F12);
    EXPECT_EQ(child<QLabel>(*ana, "lblStatus")->text(), "APROBADA");
    dialogs.expectQuestion("Desea Aprobar la Recepción ?", true);
    pressOn(*luis, Qt::Key_F12);
    EXPECT_EQ(dialogs.lastText(), "La recepción no existe o ya fue aprobada por otro usuario...!");
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(scalar("SELECT Status FROM RECEPCION WHERE Numero = 1").toInt(), 1);

    auto compare = open("frmCompararRecepcionCompra");
    child<QLineEdit>(*compare, "txtRecepcion")->setFocus();
    enter("1");
    auto* grid = child<QTableWidget>(*compare, "SpreadComparacion");
    ASSERT_EQ(grid->rowCount(), 2);
    EXPECT_EQ(child<QLabel>(*compare, "lblResumen")->text(),
              "La recepción coincide con lo facturado.");
    const QString pdf = test::processTempDir() + "/comparacion_1.pdf";
    QFile::remove(pdf);
    dialogs.expectPrinter(pdf);
    ASSERT_TRUE(compare->perform(Action::Print));
    EXPECT_GT(QFileInfo(pdf).size(), 1000);
}

TEST_F(ReceptionScreensTest, ABoxLostWithTheScreenComesBackFromItsBackup) {
    auto s = open("frmRecepcion");
    newReception(*s);
    focusCode(*s);
    scan("A1", "3");
    scan("A2", "1");
    // The screen dies without being closed: a crash, a pulled cable.
    s.reset();

    dialogs.expectQuestion("Desea cargar un respaldo local...?", true);
    s = open("frmRecepcion");
    EXPECT_TRUE(dialogs.allAnswered());
    auto* box = child<QTableWidget>(*s, "SpreadCaja");
    ASSERT_EQ(box->rowCount(), 2);
    EXPECT_EQ(box->item(0, 0)->text(), "A1");
    focusCode(*s);
    scan("A1", "1");
    // Leaving with the box unsaved asks whether to keep it locally.
    dialogs.expectQuestion("Desea guardar un respaldo local de la información léida...?", false);
    s->close();
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_FALSE(QFileInfo::exists(boxBackupPath()));
    EXPECT_EQ(count("MOVRECEPCION"), 0);
}

TEST_F(ReceptionScreensTest, APackingListIsCountedIntoTheBoxInsteadOfScanning) {
    exec("UPDATE INVENTARIO SET Status = 1"); // received, with their cost
    QTemporaryDir folder;
    const QString path = test::writePackingList(
        folder.path(), {{"A1", "6", "7"}, {"NOPE", "1", "1"}, {"A1", "4", "7"}, {"A2", "4", "5"}});
    auto s = open("frmRecepcion");
    newReception(*s);
    dialogs.expectFileName(path);
    dialogs.expectQuestion("No se cargaron 1 articulos...! Desea visualizarlos...?", false);
    pressOn(*s, Qt::Key_F8);
    EXPECT_TRUE(dialogs.allAnswered()) << dialogs.lastText().toStdString();
    auto* box = child<QTableWidget>(*s, "SpreadCaja");
    ASSERT_EQ(box->rowCount(), 2);
    EXPECT_EQ(box->item(0, 2)->text(), QLocale().toString(10.0, 'f', 2));
    EXPECT_TRUE(QFileInfo::exists(QString::fromUtf8(qgetenv("ORVO_HOME")) +
                                  "/Articulos no existentes.txt"));
    pressOn(*s, Qt::Key_F9);
    EXPECT_EQ(dec("SELECT SUM(Cantidad) FROM MOVRECEPCION"), d("14"));
}
