// frmFacturacion on the demo store: scanning, paying cash with change, the fiscal ticket.
#include "../../pos/fiscal/running_emulator.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include "common/db/sql.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/payments/payments_screen.h"
#include "pos/sale/sale_screen.h"
#include "shell/demo/demo_store.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

using namespace orvo;
using namespace orvo::pos::sale;
using PayCol = orvo::pos::payments::PaymentsScreen::Column;

namespace {

class SaleScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::demo::seedDemoStore(db());
        // The demo register takes the serial of the software printer it prints on.
        exec("UPDATE CAJAS SET Serie = 'Z1B0000001'");
        exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, Status, "
             "Acumulado) VALUES ('Z1B0000001', ?, 1, 0, 0, 0, 0)",
             {db::dayStart(db::serverNow(db()).date())});
        ctx.serial = QStringLiteral("Z1B0000001");
        shell::loadSession(db(), ctx);
        ctx.userCode = QStringLiteral("CAJERO1");
        const QString device = emulator.device();
        printer = std::make_unique<pos::fiscal::FiscalPrinterThread>([device] {
            auto p = std::make_unique<pos::fiscal::SerialFiscalPrinter>(test::fastTiming());
            p->open(device);
            return p;
        });
    }
    void TearDown() override {
        printer.reset();
        DbTest::TearDown();
    }

    template <class T> T* child(QWidget& w, const char* name) {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }
    void typeEnter(QWidget& screen, const char* field, const QString& text) {
        auto* edit = child<QLineEdit>(screen, field);
        edit->setText(text);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    test::RunningEmulator emulator{50};
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> printer;
    shell::SessionContext ctx;
    test::ScriptedDialogs dialogs;
};

} // namespace

TEST_F(SaleScreenTest, ScanPayCashWithChangeAndTheInvoiceIsPrinted) {
    // Two articles kept in stock, not on promotion.
    QStringList codes;
    {
        db::Sql q(db(), "SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Promocion = 0 AND "
                        "Existencia > 2 ORDER BY CodigoBarra LIMIT 2");
        q.exec();
        while (q.next())
            codes << q.text("CodigoBarra").trimmed();
    }
    ASSERT_EQ(codes.size(), 2);
    const Decimal stockBefore = Decimal::fromVariant(
        scalar("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {codes[0]}));

    SaleScreen screen(db(), ctx, printer.get());
    screen.show();
    EXPECT_EQ(screen.windowTitle(), "Facturación - (Factura Nº 1)      F2 - Consultar precios");

    typeEnter(screen, "txtCliente", "V12345678");
    EXPECT_TRUE(child<QLabel>(screen, "lblCliente")->text().contains("CLIENTE TIPO : DETAL"));
    typeEnter(screen, "txtVendedor", "003");
    EXPECT_EQ(child<QLabel>(screen, "lblVendedor")->text(), "GABRIELA HERNANDEZ");
    for (const QString& code : {codes[0], codes[1], codes[0]})
        typeEnter(screen, "txtCodigoBarra", code);
    ASSERT_EQ(screen.grid()->rowCount(), 3);
    EXPECT_TRUE(dialogs.messages().isEmpty()) << dialogs.lastText().toStdString();

    const Decimal total = screen.draft().totals().total;
    // A round amount above the total: the change is handed back.
    const Decimal paid = Decimal((total / 100).truncated(0).toLongLong() * 100 + 100);
    QTimer::singleShot(0, [&] {
        auto* pay = qobject_cast<pos::payments::PaymentsScreen*>(QApplication::activeModalWidget());
        ASSERT_NE(pay, nullptr);
        EXPECT_EQ(pay->objectName(), "frmPagosVenta");
        pay->grid()->item(0, PayCol::kWay)->setText("EFECTIVO");
        pay->grid()->item(0, PayCol::kAmount)->setText(paid.toString(2));
        pay->accept();
    });
    QTest::keyClick(&screen, Qt::Key_F10);

    EXPECT_TRUE(dialogs.messages().isEmpty()) << dialogs.lastText().toStdString();
    ASSERT_EQ(count("VENTAS"), 1);
    EXPECT_EQ(count("MOVVENTAS"), 2);
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT Cantidad FROM MOVVENTAS WHERE CodigoBarra = ?", {codes[0]})),
              Decimal(2));
    EXPECT_EQ(Decimal::fromVariant(
                  scalar("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {codes[0]})),
              stockBefore - 2);
    const Decimal stored = Decimal::fromVariant(
        scalar("SELECT TotalMercancia - TotalDescuento + TotalImpuesto FROM VENTAS"));
    EXPECT_EQ(stored.rounded(2), total);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT TotalPago FROM VENTAS")), paid);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Monto FROM PAGOSVENTA")), total);
    EXPECT_EQ(scalar("SELECT FormaPago FROM PAGOSVENTA").toString().trimmed(), "1");
    EXPECT_EQ(scalar("SELECT Impresa FROM VENTAS").toInt(), 1);

    const QString ticket = emulator.ticket("FACTURA_00000001.txt");
    EXPECT_FALSE(ticket.isEmpty());
    EXPECT_TRUE(ticket.contains("MARIA ALEJANDRA PEREZ")) << ticket.toStdString();
    EXPECT_TRUE(ticket.contains(pos::payments::formatAmount(total))) << ticket.toStdString();
    const QString display = emulator.ticket("VISOR.txt");
    EXPECT_TRUE(display.contains("Cambio: Bs." + pos::payments::formatAmount(paid - total)))
        << display.toStdString();

    // A clean screen for the next sale.
    EXPECT_EQ(screen.grid()->rowCount(), 0);
    EXPECT_TRUE(child<QLineEdit>(screen, "txtCliente")->text().isEmpty());
    EXPECT_EQ(screen.windowTitle(), "Facturación - (Factura Nº 2)      F2 - Consultar precios");
}

TEST_F(SaleScreenTest, DeletingALineAsksAndLogsIt) {
    SaleScreen screen(db(), ctx, printer.get());
    screen.show();
    typeEnter(screen, "txtCliente", "V12345678");
    typeEnter(screen, "txtVendedor", "003");
    const QString code =
        scalar("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Existencia > 0 ORDER BY "
               "CodigoBarra LIMIT 1")
            .toString()
            .trimmed();
    typeEnter(screen, "txtCodigoBarra", code);
    ASSERT_EQ(screen.grid()->rowCount(), 1);
    screen.grid()->setFocus();
    screen.grid()->selectRow(0);
    dialogs.expectQuestion("Desea eliminar el item seleccionado?", true);
    QTest::keyClick(screen.grid(), Qt::Key_Delete);
    EXPECT_EQ(screen.grid()->rowCount(), 0);
    EXPECT_EQ(count("MOVVENTASBORRADAS", "CodigoBarra = ? AND Cajero = 'CAJERO1'", {code}), 1);
    EXPECT_TRUE(dialogs.allAnswered());

    // An unknown client is offered for registration.
    dialogs.expectQuestion("El cliente no esta registrado. ¿Desea Registrarlo?", false);
    typeEnter(screen, "txtCliente", "V99999999");
    EXPECT_TRUE(dialogs.allAnswered());
    // Accept without a line says so and saves nothing.
    QTest::keyClick(&screen, Qt::Key_F10);
    EXPECT_EQ(dialogs.lastText(), "Debe especificar al menos un artículo...!");
    EXPECT_EQ(count("VENTAS"), 0);
}

TEST_F(SaleScreenTest, ChangingAPriceAsksTheNewPriceAndASupervisor) {
    SaleScreen screen(db(), ctx, printer.get());
    screen.show();
    typeEnter(screen, "txtCliente", "V12345678");
    const QString code =
        scalar("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Existencia > 0 ORDER BY "
               "CodigoBarra LIMIT 1")
            .toString()
            .trimmed();
    typeEnter(screen, "txtCodigoBarra", code);
    ASSERT_EQ(screen.grid()->rowCount(), 1);
    screen.grid()->selectRow(0);
    auto* button = child<QPushButton>(screen, "cmdCambiarPrecio");

    exec("UPDATE CAJAS SET CambiarPrecios = 0");
    button->click();
    EXPECT_EQ(dialogs.lastText(), "Caja ó Usuario no autorizado para cambiar precios...!");

    // Only an administrator may authorise the change.
    exec("UPDATE CAJAS SET CambiarPrecios = 1");
    const Decimal before = screen.draft().lines().at(0).precio;
    dialogs.expectTextInput("1.234,50");
    dialogs.expectAuthorisation("CAJERO1", "1234");
    button->click();
    EXPECT_EQ(dialogs.lastText(), "Caja ó Usuario no autorizado para cambiar precios...!");
    EXPECT_EQ(screen.draft().lines().at(0).precio, before);
    dialogs.expectTextInput("1.234,50");
    dialogs.expectAuthorisation("ADMIN", "1234");
    button->click();
    EXPECT_TRUE(dialogs.allAnswered());
    const SaleLine& line = screen.draft().lines().at(0);
    EXPECT_EQ(line.precio, Decimal::fromString(QStringLiteral("1234.50")));
    EXPECT_EQ(screen.draft().totals().merchandise, Decimal::fromString(QStringLiteral("1234.50")));
    EXPECT_EQ(screen.draft().totals().total, line.precioLista + line.impuesto);
}
