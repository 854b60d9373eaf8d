// A day at the till from the keyboard, on screens made by the registry: the program's own printer
// and card terminal, restarted halfway.
#include "till_screens.h"

#include "pos/payments/payment_rules.h"
#include "pos/payments/payments_screen.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QRadioButton>
#include <QTableWidget>

using namespace orvo;
using pos::payments::PaymentsScreen;
using Col = PaymentsScreen::Column;

namespace {

class TillDayTest : public test::TillScreensTest {
protected:
    static QString label(QWidget& w, const char* name) { return child<QLabel>(w, name)->text(); }
};

} // namespace

TEST_F(TillDayTest, SixUnitsByCardAndCashFromTheKeyboardThenARestartAndAReturn) {
    openDay();
    const QString code = article(6);
    ASSERT_FALSE(code.isEmpty());
    const Decimal stockBefore =
        dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {code});

    auto* sale = open("frmFacturacion");
    ASSERT_NE(sale, nullptr);
    keySale(*sale, {"6*" + code});
    auto* grid = child<QTableWidget>(*sale, "SpreadFacturacion");
    ASSERT_EQ(grid->rowCount(), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(grid->item(0, pos::sale::SaleScreen::kQuantity)->text(), "6");
    // A retail client on the demo's mixed register buys at the retail list.
    EXPECT_EQ(grid->item(0, pos::sale::SaleScreen::kList)->text(), "D");
    const QString totalText = label(*sale, "lblTotalFactura");
    const Decimal total = *pos::payments::parseTypedAmount(totalText);
    const Decimal byCard = (total / 2).truncated(0);

    bool paid = false;
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        EXPECT_EQ(label(p, "lblTotalFactura"), totalText);
        // The card takes part: its amount proposes the balance and is typed over.
        chooseWay(p, "TARJETA DE DEBITO");
        EXPECT_EQ(p.grid()->item(0, Col::kAmount)->text(), totalText);
        keys(byCard.toString());
        key(Qt::Key_Return, &p);
        // The terminal's account is proposed; Enter there pays through the terminal.
        QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
        EXPECT_EQ(qobject_cast<QComboBox*>(QApplication::focusWidget())->currentText(),
                  "VPOS - VERIFONE");
        dialogs.expectTextInput("V12345678");
        key(Qt::Key_Return, &p);
        QTRY_COMPARE(p.grid()->item(0, Col::kDocument)->text(), QString("000001"));
        // The rest in cash, with a note that leaves change.
        chooseWay(p, "EFECTIVO");
        EXPECT_EQ(p.grid()->item(1, Col::kAmount)->text(),
                  pos::payments::formatAmount(total - byCard));
        keys(QString::number((total - byCard).truncated(0).toLongLong() + 100));
        key(Qt::Key_Return, &p);
        paid = true;
    });
    key(Qt::Key_F10, sale);
    ASSERT_TRUE(paid) << dialogs.texts().join('|').toStdString();
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_TRUE(dialogs.allAnswered());

    const Decimal cash = Decimal((total - byCard).truncated(0).toLongLong() + 100);
    const Decimal change = cash - (total - byCard);
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVVENTAS"), Decimal(6));
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {code}),
              stockBefore - 6);
    EXPECT_EQ(count("PAGOSVENTA"), 2);
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA WHERE FormaPago = '3'"), byCard);
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA WHERE FormaPago = '1'"), total - byCard);
    EXPECT_TRUE(scalar("SELECT JSON_Merchant FROM PAGOSVENTA WHERE FormaPago = '3'")
                    .toString()
                    .contains("000001"));
    // The cashier sees the change after the screen was cleared for the next sale.
    EXPECT_EQ(child<QLineEdit>(*sale, "txtTotalCambio")->text(),
              pos::payments::formatAmount(change));
    EXPECT_TRUE(
        label(*sale, "lblUltimaVenta").contains("Cambio: " + pos::payments::formatAmount(change)));
    const QString ticket = printer.ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(ticket.contains(totalText)) << ticket.toStdString();
    EXPECT_GE(tickets("NOFISCAL_"), 2); // the card's voucher and the client's copy
    EXPECT_TRUE(
        printer.ticket("VISOR.txt").contains("Cambio: Bs." + pos::payments::formatAmount(change)));

    // The program ends and starts again, the printer left on its port.
    m_screens.clear();
    pos::fiscal::registerPrinter().callAndWait([](pos::fiscal::FiscalPrinter& p) { p.close(); });
    sale = open("frmFacturacion");
    keySale(*sale, {code});
    payInCash<PaymentsScreen>(*sale); // the balance as proposed settles it
    ASSERT_EQ(count("VENTAS"), 2) << dialogs.texts().join('|').toStdString();
    EXPECT_TRUE(printer.hasTicket("FACTURA_00000002.txt"));
    EXPECT_EQ(child<QLineEdit>(*sale, "txtTotalCambio")->text(), "0,00");

    // One unit of the first invoice comes back: its line shows what is left.
    auto* back = open("frmDevolucion");
    typeEnter(*back, "TxtFactura", "1");
    auto* lines = child<QTableWidget>(*back, "SpreadFactura");
    ASSERT_EQ(lines->rowCount(), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(lines->item(0, 4)->text(), "6");
    lines->setFocus();
    lines->selectRow(0);
    key(Qt::Key_Return, lines);
    EXPECT_EQ(child<QLineEdit>(*back, "txtCantidad")->text(), "6");
    keys("1");
    key(Qt::Key_Return, back);
    ASSERT_EQ(child<QTableWidget>(*back, "SpreadDevolucion")->rowCount(), 1);
    EXPECT_EQ(lines->item(0, 4)->text(), "5");
    key(Qt::Key_F10, back);
    ASSERT_EQ(count("DEVVENTAS"), 1) << dialogs.texts().join('|').toStdString();
    const Decimal unit = dec("SELECT TotalMercancia - TotalDescuento + TotalImpuesto FROM "
                             "DEVVENTAS");
    EXPECT_EQ(unit, (total / 6).rounded(2));
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVVENTAS WHERE NumeroFactura = 1"), Decimal(1));
    EXPECT_EQ(dec("SELECT Monto FROM SALIDASCAJA"), unit);
    EXPECT_TRUE(label(*back, "lblUltimaDevolucion")
                    .contains("devolver al cliente: Bs." + pos::payments::formatAmount(unit)))
        << label(*back, "lblUltimaDevolucion").toStdString();

    // The documents and the printer's own counters agree.
    const auto memory = printer.memory();
    EXPECT_EQ(memory.lastInvoice, 2);
    EXPECT_EQ(memory.lastCreditNote, 1);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS WHERE Serie = ?", {serie}).toInt(), 2);
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS WHERE Serie = ?", {serie}).toInt(), 1);
    EXPECT_EQ(count("VENTAS", "Impresa = 1"), 2);
    EXPECT_EQ(count("DEVVENTAS", "Impresa = 1"), 1);
    EXPECT_TRUE(printer.ticket("NOTACREDITO_00000001.txt").contains("FACTURA AFECTADA: 00000001"));
}

TEST_F(TillDayTest, ACardChargedAtTheTerminalIsKeptOrVoidedNeverDropped) {
    exec("UPDATE CAJAS SET RequerirAutorizacion = 0");
    exec("UPDATE PARAMETROS SET AutorizarEliminarItemFactura = 0");
    openDay();
    const QString code = article(5);
    const QString other = article(5, 1);
    auto* screen = open<pos::sale::SaleScreen>("frmFacturacion");
    ASSERT_NE(screen, nullptr);
    keySale(*screen, {code});
    const Decimal total = screen->draft().totals().total;
    const Decimal half = (total / 2).truncated(0);

    // Half by card, then the payments screen is left without accepting.
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        chooseWay(p, "TARJETA DE DEBITO");
        keys(half.toString());
        key(Qt::Key_Return, &p);
        QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
        dialogs.expectTextInput("V12345678");
        key(Qt::Key_Return, &p);
        QTRY_COMPARE(p.grid()->item(0, Col::kDocument)->text(), QString("000001"));
        QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
        key(Qt::Key_Escape, &p); // closes the way's list
        key(Qt::Key_Escape, &p); // and the screen
    });
    key(Qt::Key_F5, screen);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    ASSERT_EQ(screen->draft().terminalPayments().size(), 1)
        << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(child<QLineEdit>(*screen, "txtTotalPago")->text(), pos::payments::formatAmount(half));

    // F5 shows it again, approved, with its void button.
    bool shown = false;
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        shown = true;
        EXPECT_EQ(p.grid()->item(0, Col::kDocument)->text(), "000001");
        EXPECT_EQ(static_cast<QPushButton*>(p.grid()->cellWidget(0, Col::kAction))->text(),
                  "    Anular");
        p.reject();
    });
    key(Qt::Key_F5, screen);
    EXPECT_TRUE(shown);

    // Nothing drops the sale while the card stands: each way out asks to void it first, and No
    // leaves the sale as it was.
    const QString voidIt = QStringLiteral("pagos aprobados en el punto de venta VPOS");
    dialogs.expectQuestion(voidIt, false);
    key(Qt::Key_F6, screen);
    EXPECT_EQ(count("HISTVENTAS"), 0);
    dialogs.expectQuestion(voidIt, false);
    child<QRadioButton>(*screen, "optCredito")->click();
    EXPECT_TRUE(child<QRadioButton>(*screen, "optContado")->isChecked());
    dialogs.expectQuestion(voidIt, false);
    EXPECT_FALSE(screen->close());
    EXPECT_TRUE(screen->isVisible());
    ASSERT_TRUE(dialogs.allAnswered());
    ASSERT_EQ(screen->draft().terminalPayments().size(), 1);

    // Another article: the card still stands, and the payment is completed in cash.
    typeEnter(*screen, "txtCodigoBarra", other);
    ASSERT_EQ(screen->draft().lines().size(), 2);
    ASSERT_EQ(screen->draft().terminalPayments().size(), 1);
    const Decimal newTotal = screen->draft().totals().total;
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        EXPECT_EQ(p.grid()->item(0, Col::kDocument)->text(), "000001");
        chooseWay(p, "EFECTIVO");
        EXPECT_EQ(p.grid()->item(1, Col::kAmount)->text(),
                  pos::payments::formatAmount(newTotal - half));
        key(Qt::Key_Return, &p);
    });
    key(Qt::Key_F10, screen);
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA WHERE FormaPago = '3'"), half);
    EXPECT_EQ(dec("SELECT SUM(Monto) FROM PAGOSVENTA"), newTotal);
    // The card was charged once.
    QJsonArray charged = terminalTransactions();
    ASSERT_EQ(charged.size(), 1);
    EXPECT_EQ(charged[0].toObject().value("estado").toString(), "APROBADA");

    // A card paid on the next sale, which is then cancelled: voided at the terminal first.
    keySale(*screen, {code});
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        chooseWay(p, "TARJETA DE CREDITO");
        key(Qt::Key_Return, &p);
        QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
        dialogs.expectTextInput("V12345678");
        key(Qt::Key_Return, &p); // approved for the whole: accepted at once
    });
    key(Qt::Key_F5, screen);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    ASSERT_TRUE(screen->draft().paymentsAccepted()) << dialogs.texts().join('|').toStdString();
    dialogs.clear();
    dialogs.expectQuestion("Desea cancelar la factura?", true);
    dialogs.expectQuestion(voidIt, true);
    key(Qt::Key_F12, screen);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_TRUE(screen->draft().isEmpty());
    EXPECT_EQ(dialogs.lastText(), "Se ha realizado la Anulacion del Pago satisfactoriamente.");
    charged = terminalTransactions();
    ASSERT_EQ(charged.size(), 2);
    EXPECT_EQ(charged[1].toObject().value("estado").toString(), "ANULADA");
    // Each payment went to the terminal under an id of its own.
    EXPECT_NE(charged[0].toObject().value("idPago").toString(),
              charged[1].toObject().value("idPago").toString());
    EXPECT_EQ(count("VENTAS"), 1);

    // The terminal's reports from F9's list: the pre-closing, then the closing of the lot.
    dialogs.clear();
    screen->findChild<QAction*>("mnuPreCierreVPOS")->trigger();
    EXPECT_EQ(dialogs.lastText(), "Pre-cierre del lote 1: 1 transacciones aprobadas por Bs." +
                                      pos::payments::formatAmount(half));
    dialogs.expectQuestion("cierre del punto de venta VPOS", true);
    screen->findChild<QAction*>("mnuCierreVPOS")->trigger();
    EXPECT_TRUE(dialogs.lastText().startsWith("Cierre del lote 1: 1 transacciones"))
        << dialogs.lastText().toStdString();
    EXPECT_TRUE(terminalTransactions().isEmpty()); // a new lot
    const int before = tickets("NOFISCAL_");
    screen->findChild<QAction*>("mnuUltimoCierreVPOS")->trigger();
    EXPECT_EQ(tickets("NOFISCAL_"), before + 1);
    EXPECT_TRUE(dialogs.allAnswered());
}

TEST_F(TillDayTest,
       DollarsWithIgtfAreShownCollectedAndPrintedAndAPulledCableLeavesTheInvoicePending) {
    // The register charges IGTF and its printer has it on, as the fiscal operations set it.
    exec("UPDATE CAJAS SET IGTF = 1 WHERE Serie = ?", {serie});
    pos::fiscal::registerPrinter().callAndWait([](pos::fiscal::FiscalPrinter& p) {
        ASSERT_TRUE(p.setIgtf(true, 300)) << p.errorText().toStdString();
    });
    openDay();
    const QString code = article(10);
    auto* sale = open("frmFacturacion");
    ASSERT_NE(sale, nullptr);
    keySale(*sale, {"3*" + code});
    const Decimal total = *pos::payments::parseTypedAmount(label(*sale, "lblTotalFactura"));
    ASSERT_GT(total, Decimal(150));
    // 4 dollars at 36,50 are 146,00 and bear 4,38; the rest and the tax in bolívars.
    const Decimal tax = Decimal::fromString(u"4.38");
    bool paid = false;
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        chooseWay(p, "EFECTIVO DOLAR");
        keys("4");
        key(Qt::Key_Return, &p);
        // The cell is committed once the editor closes.
        QTRY_COMPARE(label(p, "lblMontoIGTF"), QString("4,38"));
        EXPECT_EQ(label(p, "lblTotalSaldo"),
                  pos::payments::formatAmount(total + tax - Decimal(146)));
        chooseWay(p, "EFECTIVO");
        EXPECT_EQ(p.grid()->item(1, Col::kAmount)->text(),
                  pos::payments::formatAmount(total + tax - Decimal(146)));
        key(Qt::Key_Return, &p);
        paid = true;
    });
    key(Qt::Key_F10, sale);
    ASSERT_TRUE(paid) << dialogs.texts().join('|').toStdString();
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(dec("SELECT BaseIGTF FROM VENTAS"), Decimal(146));
    EXPECT_EQ(dec("SELECT MontoIGTF FROM VENTAS"), tax);
    EXPECT_EQ(dec("SELECT TotalPago FROM VENTAS"), total + tax);
    EXPECT_EQ(child<QLineEdit>(*sale, "txtMontoIGTF")->text(), "4,38");
    EXPECT_TRUE(label(*sale, "lblUltimaVenta").contains("IGTF: 4,38"));
    const QString ticket = printer.ticket("FACTURA_00000001.txt");
    EXPECT_TRUE(ticket.contains("IGTF (3,00%) 4,38")) << ticket.toStdString();
    EXPECT_FALSE(ticket.contains("CAMBIO")) << ticket.toStdString();
    EXPECT_EQ(printer.memory().invoiceIgtf.igtf, 438);

    // The same sale again; the cable is pulled right after its last payment: the invoice is
    // saved, and the printer holds it open, paid, waiting for its closing.
    keySale(*sale, {"3*" + code});
    printer.fault("silence-after 201");
    whenModal<PaymentsScreen>([&](PaymentsScreen& p) {
        chooseWay(p, "EFECTIVO DOLAR");
        keys("4");
        key(Qt::Key_Return, &p);
        chooseWay(p, "EFECTIVO");
        key(Qt::Key_Return, &p);
    });
    key(Qt::Key_F10, sale);
    QTRY_COMPARE_WITH_TIMEOUT(count("VENTAS"), 2, 20000);
    QTRY_VERIFY_WITH_TIMEOUT(dialogs.texts().join('|').contains("fue guardada pero no se pudo"),
                             20000);
    EXPECT_EQ(count("VENTAS", "Impresa = 0"), 1);
    EXPECT_EQ(printer.memory().lastInvoice, 1);
}
