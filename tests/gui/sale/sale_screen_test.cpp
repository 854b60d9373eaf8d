// frmFacturacion on the demo store: scanning, paying cash with change, the fiscal ticket.
#include "../../pos/fiscal/printer_on_emulator.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include "common/db/sql.h"
#include "common/grid_ui/catalog_dialog.h"
#include "pos/cash/closing_screen.h"
#include "pos/cash/opening_screen.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/payments/payments_screen.h"
#include "pos/sale/sale_screen.h"
#include "shell/demo/demo_store.h"
#include "tools/card_emulator/emulator_thread.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
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
        printer = test::printerThreadOn(emulator);
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

TEST_F(SaleScreenTest, ARetailRegisterRefusesAWholesaleClient) {
    exec("UPDATE CAJAS SET TipoListaPrecio = 1");
    shell::loadSession(db(), ctx);
    SaleScreen screen(db(), ctx, printer.get());
    screen.show();
    typeEnter(screen, "txtCliente", "J301234567");
    ASSERT_EQ(dialogs.messages().size(), 1);
    EXPECT_EQ(dialogs.messages().last().text,
              "La caja no esta configurada para facturar a MAYORISTA...!");
    EXPECT_EQ(dialogs.messages().last().title, "Información");
    EXPECT_FALSE(screen.draft().client().isSet());
    EXPECT_TRUE(child<QLineEdit>(screen, "txtCliente")->text().isEmpty());
    EXPECT_TRUE(child<QLabel>(screen, "lblCliente")->text().isEmpty());

    // A retail client is taken as usual.
    typeEnter(screen, "txtCliente", "V12345678");
    EXPECT_EQ(screen.draft().client().codigo, "V12345678");
    EXPECT_EQ(dialogs.messages().size(), 1);
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

namespace {

// A register day on the real screens: the day is opened with the opening screen, not beforehand.
class RegisterDayTest : public SaleScreenTest {
protected:
    void SetUp() override {
        SaleScreenTest::SetUp();
        exec("DELETE FROM DIARIOCAJA");
        tools::card::CardEmulatorOptions o;
        o.voucherDir = m_dir.filePath("terminal");
        m_terminal = std::make_unique<test::EmulatorThread>(o);
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {QVariant("VPOS_URL_Z1B0000001"), QVariant(m_terminal->url().toString())});
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {QVariant("VPOS_CARPETA"), QVariant(m_dir.filePath("printed"))});
        // Cancelling a sale is authorised by the administrator.
        exec("UPDATE CAJAS SET RequerirAutorizacion = 1");
        db::Sql q(db(), "SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Promocion = 0 AND "
                        "Existencia > 5 ORDER BY CodigoBarra LIMIT 2");
        q.exec();
        while (q.next())
            codes << q.text("CodigoBarra").trimmed();
    }

    void keySale(SaleScreen& screen, const QStringList& barcodes) {
        typeEnter(screen, "txtCliente", "V12345678");
        typeEnter(screen, "txtVendedor", "003");
        for (const QString& code : barcodes)
            typeEnter(screen, "txtCodigoBarra", code);
    }
    // F10 with the payments dialog answered by `pay` (run while the dialog is up).
    void acceptPaying(SaleScreen& screen,
                      const std::function<void(pos::payments::PaymentsScreen&)>& pay) {
        QTimer::singleShot(0, [&] {
            auto* dialog =
                qobject_cast<pos::payments::PaymentsScreen*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            pay(*dialog);
            dialog->accept();
        });
        QTest::keyClick(&screen, Qt::Key_F10);
    }
    static void cell(pos::payments::PaymentsScreen& p, int row, int column, const QString& text) {
        p.grid()->item(row, column)->setText(text);
    }
    Decimal dec(const QString& sql, std::initializer_list<QVariant> values = {}) const {
        return Decimal::fromVariant(scalar(sql, values));
    }

    QTemporaryDir m_dir;
    std::unique_ptr<test::EmulatorThread> m_terminal;
    QStringList codes;
};

} // namespace

TEST_F(RegisterDayTest, OpenSellParkCancelAndCloseWithTheZ) {
    ASSERT_EQ(codes.size(), 2);
    {
        pos::cash::OpeningScreen opening(db(), ctx, *printer);
        opening.show();
        QSignalSpy done(&opening, &pos::cash::OpeningScreen::openingFinished);
        QTest::mouseClick(child<QPushButton>(opening, "cmdAperturar"), Qt::LeftButton);
        QTRY_COMPARE(done.count(), 1);
        ASSERT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
    }
    EXPECT_EQ(count("DIARIOCAJA", "Serie = 'Z1B0000001' AND Status = 0"), 1);

    SaleScreen screen(db(), ctx, printer.get());
    screen.show();
    QList<Decimal> totals;

    // 1: cash, with change.
    keySale(screen, {codes[0], codes[1]});
    totals << screen.draft().totals().total;
    const Decimal paid = Decimal((totals[0] / 100).truncated(0).toLongLong() * 100 + 100);
    acceptPaying(screen, [&](pos::payments::PaymentsScreen& p) {
        cell(p, 0, PayCol::kWay, "EFECTIVO");
        cell(p, 0, PayCol::kAmount, paid.toString(2));
    });
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();

    // 2: dollars, the total at the day's rate rounded up to the cent (no change from dollars).
    keySale(screen, {codes[1]});
    totals << screen.draft().totals().total;
    const Decimal rate = Decimal::fromString(QStringLiteral("36.50"));
    const Decimal dollars = *pos::payments::proposedAmount("EFECTIVO DOLAR", totals[1], rate);
    acceptPaying(screen, [&](pos::payments::PaymentsScreen& p) {
        cell(p, 0, PayCol::kWay, "EFECTIVO DOLAR");
        cell(p, 0, PayCol::kAmount, dollars.toString(2));
    });
    ASSERT_EQ(count("VENTAS"), 2) << dialogs.texts().join('|').toStdString();

    // 3: debit card through the terminal.
    keySale(screen, {codes[0]});
    totals << screen.draft().totals().total;
    acceptPaying(screen, [&](pos::payments::PaymentsScreen& p) {
        cell(p, 0, PayCol::kWay, "TARJETA DE DEBITO");
        cell(p, 0, PayCol::kAmount, totals[2].toString(2));
        cell(p, 0, PayCol::kPointOfSale, "VPOS - VERIFONE");
        dialogs.expectTextInput("V12345678");
        QTest::mouseClick(static_cast<QPushButton*>(p.grid()->cellWidget(0, PayCol::kAction)),
                          Qt::LeftButton);
        EXPECT_EQ(p.grid()->item(0, PayCol::kDocument)->text(), "000001");
    });
    ASSERT_EQ(count("VENTAS"), 3) << dialogs.texts().join('|').toStdString();

    // 4: parked, another sale keyed meanwhile is cancelled, the parked one is taken back and paid.
    keySale(screen, {codes[1], codes[1]});
    ASSERT_EQ(screen.grid()->rowCount(), 2) << dialogs.texts().join('|').toStdString();
    totals << screen.draft().totals().total;
    QTest::keyClick(&screen, Qt::Key_F6);
    EXPECT_EQ(count("HISTVENTAS"), 1);
    EXPECT_EQ(count("HISTMOVVENTAS"), 2);
    EXPECT_EQ(screen.grid()->rowCount(), 0);
    keySale(screen, {codes[0]});
    dialogs.expectQuestion("Desea cancelar la factura?", true);
    dialogs.expectAuthorisation("ADMIN", "1234");
    QTest::keyClick(&screen, Qt::Key_F12);
    EXPECT_TRUE(dialogs.allAnswered()) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(
        count("MOVVENTASBORRADAS", "CodigoBarra = ? AND UsuarioAutoriza = 'ADMIN'", {codes[0]}), 1);
    EXPECT_EQ(count("HISTVENTAS", "Serie = 'Z1B0000001'"), 1);
    QTimer::singleShot(0, [&] {
        auto* list = qobject_cast<grid::CatalogDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->rowCount(), 1);
        list->grid()->setActiveCell(0, 0);
        // The list says whose sale it is and what it comes to.
        const QVariantMap parked = list->currentRow();
        using grid::CatalogDialog;
        EXPECT_EQ(CatalogDialog::valueOf(parked, "NombreCliente").toString().trimmed(),
                  "MARIA ALEJANDRA PEREZ");
        EXPECT_EQ(CatalogDialog::valueOf(parked, "NombreVendedor").toString().trimmed(),
                  "GABRIELA HERNANDEZ");
        EXPECT_EQ(Decimal::fromVariant(CatalogDialog::valueOf(parked, "TotalVenta")).rounded(2),
                  totals[3]);
        QTest::keyClick(list, Qt::Key_Return);
    });
    QTest::keyClick(&screen, Qt::Key_F7);
    ASSERT_EQ(screen.grid()->rowCount(), 2) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(screen.draft().totals().total, totals[3]);
    EXPECT_EQ(count("HISTVENTAS"), 0);
    acceptPaying(screen, [&](pos::payments::PaymentsScreen& p) {
        cell(p, 0, PayCol::kWay, "EFECTIVO");
        cell(p, 0, PayCol::kAmount, totals[3].toString(2));
    });
    ASSERT_EQ(count("VENTAS"), 4) << dialogs.texts().join('|').toStdString();

    // What was saved: four invoices, one payment each, the day's amount.
    Decimal dayTotal;
    for (const Decimal& t : totals)
        dayTotal += t;
    EXPECT_EQ(
        dec("SELECT SUM(TotalMercancia - TotalDescuento + TotalImpuesto) FROM VENTAS").rounded(2),
        dayTotal);
    // The dollar payment is kept in dollars; the others in bolivars, the change not included.
    EXPECT_EQ(dec("SELECT SUM(Monto) FROM PAGOSVENTA WHERE NumeroFactura <> 2").toString(2),
              (dayTotal - totals[1]).toString(2));
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA WHERE NumeroFactura = 2").toString(2),
              dollars.toString(2));
    EXPECT_EQ(count("PAGOSVENTA"), 4);
    EXPECT_EQ(
        scalar("SELECT FormaPago FROM PAGOSVENTA WHERE NumeroFactura = 2").toString().trimmed(),
        "11");
    EXPECT_EQ(
        scalar("SELECT FormaPago FROM PAGOSVENTA WHERE NumeroFactura = 3").toString().trimmed(),
        "3");
    EXPECT_EQ(
        scalar("SELECT Documento FROM PAGOSVENTA WHERE NumeroFactura = 3").toString().trimmed(),
        "000001");
    EXPECT_TRUE(scalar("SELECT JSON_Merchant FROM PAGOSVENTA WHERE NumeroFactura = 3")
                    .toString()
                    .contains("000001"));
    EXPECT_EQ(dec("SELECT TotalPago FROM VENTAS WHERE NumeroFactura = 1"), paid);
    EXPECT_EQ(dec("SELECT Acumulado FROM DIARIOCAJA"), dayTotal);
    EXPECT_EQ(scalar("SELECT FacturaFinal FROM DIARIOCAJA").toInt(), 4);
    EXPECT_EQ(count("VENTAS", "Impresa = 1"), 4);

    // The printer printed the same four numbers.
    for (int n = 1; n <= 4; ++n) {
        const QString ticket =
            emulator.ticket(QStringLiteral("FACTURA_%1.txt").arg(n, 8, 10, QChar('0')));
        EXPECT_TRUE(ticket.contains(pos::payments::formatAmount(totals[n - 1])))
            << n << ticket.toStdString();
    }
    EXPECT_EQ(emulator.memory().lastInvoice, 4);
    EXPECT_FALSE(emulator.hasTicket("FACTURA_00000005.txt"));

    {
        pos::cash::ClosingScreen closing(db(), ctx, *printer);
        closing.show();
        // The drawer: the float, the cash sales, less the change the dollar sale took from the
        // local cash; the dollars apart; the card sale leaves nothing.
        const Decimal cash = dec("SELECT FondoCaja FROM CAJAS WHERE Serie = 'Z1B0000001'") +
                             totals[0] + (totals[1] - (dollars * rate).rounded(2)) + totals[3];
        EXPECT_EQ(child<QLineEdit>(closing, "txtEfectivoEsperado")->text(),
                  pos::payments::formatAmount(cash));
        EXPECT_EQ(child<QLineEdit>(closing, "txtDolaresEsperados")->text(),
                  pos::payments::formatAmount(dollars));
        EXPECT_EQ(child<QLineEdit>(closing, "txtChequesEsperados")->text(), "0,00");
        child<QLineEdit>(closing, "txtEfectivoContado")->setText(cash.toString(2));
        child<QLineEdit>(closing, "txtDolaresContados")->setText(dollars.toString(2));
        dialogs.expectQuestion("Confirma el cierre de caja...?", true);
        dialogs.expectQuestion("Desea Imprimir los Reportes del Cierre ?", false);
        QSignalSpy done(&closing, &pos::cash::ClosingScreen::closingFinished);
        QTest::mouseClick(child<QPushButton>(closing, "cmdAceptar"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(done.count(), 1, 20000);
        EXPECT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
        EXPECT_TRUE(dialogs.allAnswered());
    }
    EXPECT_TRUE(emulator.hasTicket("REPORTEZ_00000001.txt"));
    const auto memory = emulator.memory();
    EXPECT_EQ(memory.zCounter, 1);
    ASSERT_EQ(memory.zHistory.size(), 1);
    EXPECT_EQ(memory.zHistory.first().lastInvoice, 4);
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 2);
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").toInt(), 1);
    ASSERT_EQ(count("DIARIOREPORTEZ"), 1);
}
