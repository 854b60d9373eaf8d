#include "gui/purchases/purchase_gui_support.h"
#include "inventory/dispatch/dispatch_screens.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/purchases/receptions.h"

#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QTableWidget>

using namespace orvo;
using Action = shell::RecordScreen::Action;
using test::d;

namespace {

// The dispatch screens as the menu opens them, from the keyboard.
class DispatchScreensTest : public test::PurchaseScreenTest {
protected:
    void SetUp() override {
        PurchaseScreenTest::SetUp();
        article("A1", "CAMISA-A", "10", "7");
        article("B1", "CAMISA-B", "5", "9");
        exec("INSERT INTO TIPOAJUSTES (Codigo, Nombre, Signo, Status) VALUES (2, 'SALIDA POR "
             "AJUSTE', -1, 1)");
        exec("INSERT INTO TRABAJADORES (Cedula, Nombre, Status) VALUES ('V-1', 'PEDRO PEREZ', "
             "1)");
        exec("INSERT INTO VEHICULOS (Placa, Marca, Modelo, Status) VALUES ('AB123CD', 'FORD', "
             "'CARGO', 1)");
        as("ANA");
    }
    void as(const QString& code) {
        user(code);
        inventory::dispatch::registerDispatchScreens(
            {[this] { return db(); }, [this] { return m_user; }});
    }
    void scan(const QString& code, const QString& quantity) {
        ASSERT_EQ(focusName(), "txtCodigo");
        enter(code);
        enter(quantity);
        ASSERT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
    }
    void closeBox(QWidget& s) {
        dialogs.expectQuestion("Desea cerrar la caja ?", true);
        pressOn(s, Qt::Key_F10);
    }

    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(DispatchScreensTest, ARemissionInTwoBoxesTravelsOnAGuideAndLeavesTheStock) {
    auto ana = open("frmRemision");
    ASSERT_TRUE(ana->perform(Action::New));
    auto* type = child<QComboBox>(*ana, "cboTipoDocumento");
    type->setCurrentIndex(type->findText("Otros Documentos"));
    ASSERT_TRUE(ana->perform(Action::Save)) << dialogs.lastText().toStdString();
    ASSERT_EQ(count("REMISION"), 1);
    child<QLineEdit>(*ana, "txtCodigo")->setFocus();
    scan("A1", "3");
    closeBox(*ana);

    as("LUIS");
    auto luis = open("frmRemision");
    child<QLineEdit>(*luis, "txtCodigo")->setFocus();
    scan("A1", "2");
    scan("B1", "1");
    closeBox(*luis);
    EXPECT_EQ(child<QTableWidget>(*luis, "grdCajas")->rowCount(), 2);
    EXPECT_EQ(count("MOVREMISION", "Status = 1"), 3);

    dialogs.expectQuestion("Desea Aprobar la Remisión ?", true);
    pressOn(*luis, Qt::Key_F12);
    EXPECT_EQ(child<QLabel>(*luis, "lblStatus")->text(), "APROBADA");
    EXPECT_EQ(scalar("SELECT UsuarioAprobacion FROM REMISION").toString(), "LUIS");
    dialogs.expectQuestion("Desea Aprobar la Remisión ?", true);
    pressOn(*ana, Qt::Key_F12);
    EXPECT_EQ(dialogs.lastText(), "La remision no existe o ya fue aprobada por otro usuario...!");
    EXPECT_EQ(stock("A1"), d("10")); // a remission moves no stock

    auto guide = open("frmGuiaDespacho");
    ASSERT_TRUE(guide->perform(Action::New));
    child<QLineEdit>(*guide, "txtRemision")->setFocus();
    enter("1");
    ASSERT_EQ(child<QTableWidget>(*guide, "SpreadRemisiones")->rowCount(), 1)
        << dialogs.lastText().toStdString();
    ASSERT_TRUE(guide->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(scalar("SELECT GuiaDespacho FROM REMISION").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Conductor FROM GUIADESPACHO").toString(), "V-1");
    dialogs.expectQuestion("Desea Aprobar la Guia de Despacho?", true);
    pressOn(*guide, Qt::Key_F12);
    EXPECT_EQ(child<QLabel>(*guide, "lblStatus")->text(), "APROBADA");

    auto convert = open<QWidget>("frmConvRemRecAjuste");
    child<QLineEdit>(*convert, "txtNumero")->setFocus();
    enter("1");
    ASSERT_EQ(child<QTableWidget>(*convert, "SpreadDetalle")->rowCount(), 2)
        << dialogs.lastText().toStdString();
    const QString pdf = test::processTempDir() + "/ajuste_1.pdf";
    QFile::remove(pdf);
    dialogs.expectQuestion("Desea convertir la remisión en ajuste...?", true);
    dialogs.expectQuestion("Documento convertido en ajuste con exito...!\nDesea imprimir el "
                           "ajuste?",
                           true);
    dialogs.expectPrinter(pdf);
    pressOn(*convert, Qt::Key_F12);
    EXPECT_TRUE(dialogs.allAnswered()) << dialogs.lastText().toStdString();
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(stock("B1"), d("4"));
    EXPECT_EQ(scalar("SELECT Status FROM REMISION").toInt(), 2);
    EXPECT_GT(QFileInfo(pdf).size(), 1000);

    // Asked again, the remission is refused and nothing moves.
    child<QLineEdit>(*convert, "txtNumero")->setFocus();
    enter("1");
    EXPECT_EQ(dialogs.lastText(), "La remisión Nº 1 ya fue convertida...!");
    EXPECT_EQ(stock("A1"), d("5"));
}

TEST_F(DispatchScreensTest, AnApprovedRemissionLeavesAsATransferFromTheKeyboard) {
    exec("INSERT INTO TIPO_DESPACHO (ID, Descripcion, Estado) VALUES (1, 'CAMION PROPIO', 1)");
    namespace purchases = inventory::purchases;
    const auto& k = inventory::dispatch::remissionKind();
    purchases::Reception r;
    r.branch = "01";
    r.originType = purchases::ReceptionOrigin::OtherDocuments;
    const long long remission = purchases::saveReception(db(), r, k);
    purchases::saveBox(db(), remission, {0, "ANA", false, {{"A1", {}, d("3")}}}, true, k);
    purchases::saveBox(db(), remission, {0, "LUIS", false, {{"A1", {}, d("2")}}}, true, k);
    purchases::approveReception(db(), remission, "ANA", k);

    auto convert = open<QWidget>("frmConvRemTransfer");
    child<QLineEdit>(*convert, "txtNumero")->setFocus();
    enter("1");
    EXPECT_EQ(child<QTableWidget>(*convert, "SpreadDetalle")->rowCount(), 2)
        << dialogs.lastText().toStdString();
    // Without a dispatch type nothing is asked nor written.
    pressOn(*convert, Qt::Key_F12);
    EXPECT_EQ(dialogs.lastText(), "Seleccione un tipo de despacho para poder realizar la "
                                  "conversion.");
    auto* type = child<QComboBox>(*convert, "cboTipoDespacho");
    ASSERT_EQ(focusName(), "cboTipoDespacho");
    QTest::keyClick(type, Qt::Key_Down);
    EXPECT_EQ(type->currentText(), "CAMION PROPIO");

    const QString pdf = test::processTempDir() + "/transferencia_1.pdf";
    QFile::remove(pdf);
    dialogs.expectQuestion("Desea convertir la remisión en transferencia...?", true);
    dialogs.expectQuestion("Remision convertida con exito, Desea Imprimir la(s) Transferencia(s)?",
                           true);
    dialogs.expectPrinter(pdf);
    pressOn(*convert, Qt::Key_F12);
    EXPECT_TRUE(dialogs.allAnswered()) << dialogs.lastText().toStdString();
    EXPECT_EQ(stock("A1"), d("5"));
    EXPECT_EQ(count("TRANSFERENCIAS", "Status = 1 AND IDDespacho = 1"), 1);
    EXPECT_EQ(count("MOVTRANSFERENCIAS"), 2); // one line per box
    EXPECT_GT(QFileInfo(pdf).size(), 1000);
}
