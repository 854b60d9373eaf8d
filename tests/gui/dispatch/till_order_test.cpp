#include "common/grid_ui/catalog_dialog.h"
#include "gui/sale/till_screens.h"
#include "inventory/dispatch/dispatch_screens.h"
#include "pos/payments/payments_screen.h"

#include <QTableWidget>

using namespace orvo;
using pos::sale::SaleScreen;

namespace {

// The dispatch screens registered as the program registers them, on the till's demo store.
class TillOrderTest : public test::TillScreensTest {
protected:
    void SetUp() override {
        TillScreensTest::SetUp();
        inventory::dispatch::registerDispatchScreens();
    }
};

} // namespace

TEST_F(TillOrderTest, AnOrderKeyedForAWholesaleClientIsInvoicedWithF8) {
    openDay();
    const QString code = article(5);
    auto* order = open("frmOrdenDespacho");
    typeEnter(*order, "txtCliente", "J301234567");
    typeEnter(*order, "txtCodigo", code);
    typeEnter(*order, "txtCantidad", "2");
    ASSERT_EQ(child<QTableWidget>(*order, "SpreadOrden")->rowCount(), 1)
        << dialogs.texts().join('|').toStdString();
    dialogs.expectQuestion("Desea aprobar la orden de despacho...?", true);
    key(Qt::Key_F10, order);
    ASSERT_EQ(scalar("SELECT Status FROM ORDENDESPACHO").toInt(), 1)
        << dialogs.texts().join('|').toStdString();
    const auto stockBefore = dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {code});

    auto* sale = open<SaleScreen>("frmFacturacion");
    whenModal<grid::CatalogDialog>([](grid::CatalogDialog& list) {
        ASSERT_EQ(list.rowCount(), 1);
        list.grid()->setActiveCell(0, 0);
        QTest::keyClick(&list, Qt::Key_Return);
    });
    key(Qt::Key_F8, sale);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    ASSERT_EQ(sale->draft().lines().size(), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(sale->draft().client().codigo, "J301234567");
    EXPECT_EQ(sale->draft().lines().at(0).tipoLista, 'M');
    // The cashier goes on typing the seller, without reaching for the mouse.
    EXPECT_EQ(sale->focusWidget(), child<QLineEdit>(*sale, "txtVendedor"));
    typeEnter(*sale, "txtVendedor", "003");
    payInCash<pos::payments::PaymentsScreen>(*sale);
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(scalar("SELECT NumeroOrden FROM VENTAS").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM ORDENDESPACHO").toInt(), 2);
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {code}),
              stockBefore - Decimal(2));
    EXPECT_EQ(tickets("FACTURA_"), 1);
}
