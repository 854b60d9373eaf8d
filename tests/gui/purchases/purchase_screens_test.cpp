#include "common/grid_ui/catalog_dialog.h"
#include "gui/purchases/purchase_gui_support.h"
#include "inventory/purchases/purchases.h"

#include <QComboBox>
#include <QDateEdit>
#include <QFileInfo>
#include <QLabel>
#include <QRadioButton>
#include <QTableWidget>
#include <QTimer>

using namespace orvo;
using namespace orvo::inventory::purchases;
using Action = shell::RecordScreen::Action;
using test::d;

namespace {

class PurchaseScreensTest : public test::PurchaseScreenTest {
protected:
    void SetUp() override {
        PurchaseScreenTest::SetUp();
        article("A1", "CAMISA-A", "10", "5");
        article("A2", "CAMISA-A", "0", "0");
        article("B1", "CAMISA-B", "3", "4");
    }
    // Barcode, Enter, quantity, Enter, price, Enter: the line is added and txtCodigo waits again.
    void keyLine(const QString& code, const QString& quantity, const QString& price = {}) {
        ASSERT_EQ(focusName(), "txtCodigo");
        enter(code);
        ASSERT_EQ(focusName(), "txtCantidad") << dialogs.lastText().toStdString();
        enter(quantity);
        if (focusName() == "txtPrecio")
            enter(price);
        ASSERT_EQ(focusName(), "txtCodigo") << dialogs.lastText().toStdString();
    }

    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(PurchaseScreensTest, APurchaseIsKeyedAndApprovedFromTheKeyboard) {
    auto s = open("frmCompras");
    ASSERT_TRUE(s->perform(Action::New));
    ASSERT_EQ(focusName(), "cboProveedor");
    press(Qt::Key_Down); // CONFECCIONES ARAGUA, the first by name
    press(Qt::Key_Return);
    enter("FAC-77");
    ASSERT_EQ(focusName(), "dtpFecha");
    while (focusName() != "txtPorcentajeDescuento") // the dates, payment, file, note: as they are
        press(Qt::Key_Return);
    enter("0");
    enter("1");     // exchange rate
    enter("20");    // service fee
    enter("0");     // surcharges
    enter("0");     // other taxes
    enter("30");    // freight
    enter("10");    // insurance
    enter("27,50"); // accounting tax
    ASSERT_EQ(focusName(), "optMetodoValorizacion_0");
    child<QRadioButton>(*s, "optMetodoValorizacion_1")->setChecked(true);
    child<QRadioButton>(*s, "optMetodoValorizacion_1")->setFocus();
    press(Qt::Key_Return);
    // 100 of merchandise: A1 typed twice becomes 10 at 8, A2 10 at 2.
    keyLine("A1", "6", "8");
    keyLine("A2", "10", "2");
    keyLine("A1", "4", "8");
    EXPECT_EQ(child<QLabel>(*s, "lblTotalMercancia")->text(), QLocale().toString(100.0, 'f', 2));
    dialogs.expectQuestion("Desea aprobar la compra...?", true);
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_TRUE(dialogs.allAnswered());

    EXPECT_EQ(scalar("SELECT Proveedor FROM COMPRAS WHERE Documento = 'FAC-77'").toString(), "P1");
    EXPECT_EQ(scalar("SELECT Status FROM COMPRAS WHERE Documento = 'FAC-77'").toInt(), 1);
    EXPECT_EQ(dec("SELECT TotalImpuestoContable FROM COMPRAS"), d("27.5"));
    EXPECT_EQ(count("MOVCOMPRAS"), 2);
    // f = (20 + 30 + 10) / 100: A1 8 × 1.6 = 12.8, A2 2 × 1.6 = 3.2. A1: (10 × 5 + 10 × 12.8) / 20
    // = 8.9; the model: (20 × 8.9 + 10 × 3.2) / 30 = 7.
    EXPECT_EQ(stock("A1"), d("20"));
    EXPECT_EQ(stock("A2"), d("10"));
    EXPECT_EQ(averageCost("A1"), d("7"));
    EXPECT_EQ(averageCost("A2"), d("7"));
    EXPECT_EQ(lastCost("A1"), d("8.9"));
    EXPECT_EQ(lastCost("A2"), d("3.2"));

    // Approved: read-only, printed from the toolbar.
    EXPECT_EQ(child<QLabel>(*s, "lblStatus")->text(), "APROBADA");
    EXPECT_FALSE(s->canPerform(Action::Modify));
    EXPECT_FALSE(s->canPerform(Action::Delete));
    const QString pdf = test::processTempDir() + "/compra_fac77.pdf";
    QFile::remove(pdf);
    dialogs.expectPrinter(pdf);
    ASSERT_TRUE(s->perform(Action::Print));
    EXPECT_GT(QFileInfo(pdf).size(), 1000);
}

TEST_F(PurchaseScreensTest, BadNumbersAreRefusedAndAPurchaseWithoutPricesStaysOpen) {
    auto s = open("frmCompras");
    ASSERT_TRUE(s->perform(Action::New));
    child<QComboBox>(*s, "cboProveedor")->setCurrentIndex(1);
    child<QLineEdit>(*s, "txtPorcentajeDescuento")->setFocus();
    enter("150");
    EXPECT_EQ(dialogs.lastText(), "El porcentaje de descuento no puede ser superior al 100%");
    EXPECT_EQ(focusName(), "txtPorcentajeDescuento");
    enter("10");
    child<QLineEdit>(*s, "txtFlete")->setFocus();
    enter("1.2.3");
    EXPECT_EQ(dialogs.lastText(), "Debe ingresar un dato valido");
    EXPECT_EQ(focusName(), "txtFlete");
    enter("0");

    child<QLineEdit>(*s, "txtCodigo")->setFocus();
    enter("NOPE");
    EXPECT_EQ(dialogs.lastText(), "El código NOPE no existe en el inventario...!");
    keyLine("B1", "2", ""); // no price yet
    keyLine("A1", "1", "5");
    // A line deleted from the grid is asked for first.
    auto* grid = child<QTableWidget>(*s, "SpreadCompras");
    grid->setFocus();
    grid->selectRow(1);
    dialogs.expectQuestion("Desea eliminar el item seleccionado?", true);
    press(Qt::Key_Delete);
    EXPECT_EQ(grid->rowCount(), 1);
    EXPECT_EQ(s->perform(Action::Save), false);
    EXPECT_EQ(dialogs.lastText(), "¡Debe introducir el número de la factura!");
    child<QLineEdit>(*s, "txtDocumento")->setText("F-0");
    // A price of zero: saved open, nobody is asked.
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(scalar("SELECT Status FROM COMPRAS").toInt(), 0);
    EXPECT_EQ(dec("SELECT PorcentajeDescuento FROM COMPRAS"), d("10"));
    EXPECT_EQ(stock("B1"), d("3"));
    EXPECT_EQ(child<QLabel>(*s, "lblStatus")->text(), "ABIERTA");

    // The open purchase takes its price, then goes away.
    ASSERT_TRUE(s->perform(Action::Modify));
    EXPECT_FALSE(child<QLineEdit>(*s, "txtDocumento")->isEnabled());
    child<QLineEdit>(*s, "txtCodigo")->setFocus();
    keyLine("B1", "1", "4.123456");
    EXPECT_EQ(grid->item(1, 3)->text(), QLocale().toString(4.123456, 'f', 6));
    // The first B1 line still has no price: no question, and merged it keeps the first price.
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVCOMPRAS WHERE CodigoBarra = 'B1'"), d("3"));
    EXPECT_EQ(dec("SELECT PrecioFactura FROM MOVCOMPRAS WHERE CodigoBarra = 'B1'"), d("0"));
    dialogs.expectQuestion("¿Desea eliminar el registro actual?", true);
    ASSERT_TRUE(s->perform(Action::Delete)) << dialogs.lastText().toStdString();
    EXPECT_EQ(count("COMPRAS"), 0);
    EXPECT_EQ(count("MOVCOMPRAS"), 0);
}

TEST_F(PurchaseScreensTest, TheDatePickerRefusesADayBeforeTheLastPhysicalAdjustment) {
    const QDate today = QDate::currentDate();
    exec("INSERT INTO FISICOLOGICO (FechaAjuste, CodigoBarra, ExistenciaLogica, "
         "ExistenciaFisica, Ajuste) VALUES (?, 'A1', 0, 0, 0)",
         {QDateTime(today, QTime(6, 0))});
    auto s = open("frmCompras");
    ASSERT_TRUE(s->perform(Action::New));
    auto* date = child<QDateEdit>(*s, "dtpFecha");
    date->setFocus();
    ASSERT_EQ(focusName(), "dtpFecha");
    date->setDate(today.addDays(-3)); // typed
    press(Qt::Key_Return);
    EXPECT_EQ(dialogs.lastText(), "La fecha no debe ser menor a la fecha " +
                                      today.toString("dd/MM/yyyy") +
                                      " del ultimo ajuste fisico-logico...!");
    EXPECT_EQ(date->date(), today);
}

TEST_F(PurchaseScreensTest, AnApprovedOrderLoadsIntoAPurchaseAndThePriceChangesOverTheModel) {
    auto o = open("frmOrdenCompras");
    ASSERT_TRUE(o->perform(Action::New));
    child<QComboBox>(*o, "cboProveedor")
        ->setCurrentIndex(child<QComboBox>(*o, "cboProveedor")->findData("P2"));
    child<QLineEdit>(*o, "txtCodigo")->setFocus();
    keyLine("A1", "12", "9.5");
    keyLine("A2", "6", "9.5");
    dialogs.expectQuestion("Desea aprobar la orden compra...?", true);
    ASSERT_TRUE(o->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(child<QLineEdit>(*o, "txtNumero")->text(), "1");
    EXPECT_EQ(stock("A1"), d("10")); // an order moves nothing
    o.reset();

    auto s = open("frmCompras");
    ASSERT_TRUE(s->perform(Action::New));
    QTimer::singleShot(0, [] {
        auto* list = qobject_cast<grid::CatalogDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->rowCount(), 1);
        list->grid()->setActiveCell(0, 0);
        QTest::keyClick(list, Qt::Key_Return);
    });
    pressOn(*s, Qt::Key_F5);
    auto* grid = child<QTableWidget>(*s, "SpreadCompras");
    ASSERT_EQ(grid->rowCount(), 2);
    EXPECT_EQ(child<QComboBox>(*s, "cboProveedor")->currentData().toString(), "P2");
    grid->selectRow(1);
    dialogs.expectTextInput("10.25");
    pressOn(*s, Qt::Key_F7);
    EXPECT_EQ(grid->item(0, 3)->text(), QLocale().toString(10.25, 'f', 6));
    EXPECT_EQ(grid->item(1, 3)->text(), QLocale().toString(10.25, 'f', 6));
}

TEST_F(PurchaseScreensTest, TwoUnitsGoBackToTheSupplier) {
    savePurchase(db(), purchase("F-5", {line("A1", "10", "7"), line("B1", "4", "5")}), true, true);
    auto s = open("frmDevCompra");
    ASSERT_TRUE(s->perform(Action::New));
    child<QLineEdit>(*s, "txtCompra")->setFocus();
    enter("F-5");
    ASSERT_EQ(child<QTableWidget>(*s, "SpreadCompra")->rowCount(), 2);
    EXPECT_EQ(child<QLabel>(*s, "lblProveedor")->text(), "P1 - CONFECCIONES ARAGUA");
    child<QLineEdit>(*s, "txtCodigo")->setFocus();
    enter("A1");
    enter("11");
    EXPECT_EQ(dialogs.lastText(), "No puede devolver más de 10 unidades del artículo A1...!");
    child<QLineEdit>(*s, "txtCodigo")->setFocus();
    keyLine("A1", "2");
    dialogs.expectQuestion("Desea Aprobar la devolución de compra ?", true);
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.lastText().toStdString();
    EXPECT_EQ(stock("A1"), d("18"));
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVCOMPRAS WHERE CodigoBarra = 'A1'"), d("2"));
    EXPECT_EQ(scalar("SELECT Status FROM DEVCOMPRAS WHERE Numero = 1").toInt(), 1);
    EXPECT_EQ(child<QLabel>(*s, "lblStatus")->text(), "APROBADA");
    EXPECT_EQ(child<QTableWidget>(*s, "SpreadCompra")->item(0, 3)->text(),
              QLocale().toString(8.0, 'f', 2));
}
