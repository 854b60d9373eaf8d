// frmCambiosDeMercancia on a fiscal register: goods back, goods taken, paid in frmPagosVenta, both
// documents on the software printer.
#include "../../pos/fiscal/printer_on_emulator.h"
#include "../../pos/sale/till_fixture.h"
#include "support/scripted_dialogs.h"

#include "common/db/sql.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/serial_fiscal_printer.h"
#include "pos/payments/payments_screen.h"
#include "pos/returns/exchange_screen.h"
#include "pos/sale/sale.h"
#include "shell/demo/demo_store.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

using namespace orvo;
using PayCol = orvo::pos::payments::PaymentsScreen::Column;

namespace {

// Notes which tickets the printer had already written when the screen asks to go on with the
// invoice.
class WatchingDialogs : public test::ScriptedDialogs {
public:
    std::function<void()> onInformation;
    void information(QWidget* parent, const QString& text, const QString& title) override {
        ScriptedDialogs::information(parent, text, title);
        if (onInformation)
            onInformation();
    }
};

class ExchangeScreenTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({.fiscal = true, .trousers = true});
        thread = test::printerThreadOn(emulator);

        // Invoice 1: one shirt, paid cash and printed.
        pos::sale::SaleDraft draft = draftOf({"T0001"});
        payCash(draft, draft.totals().total);
        pos::sale::ThreadSalePrinter printer(*thread);
        const auto sold = pos::sale::acceptSale(db(), ctx, draft, &printer);
        ASSERT_TRUE(pos::sale::printSale(db(), ctx, sold.number, false, &printer, {}).ok());
    }
    void TearDown() override {
        thread.reset();
        DbTest::TearDown();
    }

    template <class T> static T* find(QWidget& screen, const char* name) {
        T* w = screen.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    static void type(QWidget& screen, const char* name, const QString& text) {
        auto* e = find<QLineEdit>(screen, name);
        e->clear();
        QTest::keyClicks(e, text);
        QTest::keyClick(e, Qt::Key_Return);
    }
    test::RunningEmulator emulator{50};
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> thread;
};

} // namespace

TEST_F(ExchangeScreenTest, AShirtForTrousersCollectsOnlyTheDifferenceAndPrintsNoteThenInvoice) {
    WatchingDialogs dialogs;
    pos::returns::ExchangeScreen s(db(), ctx, thread.get());
    s.show();
    type(s, "TxtFactura", "1");
    type(s, "txtCodigo", "T0001");
    type(s, "txtCantidad", "1");
    ASSERT_EQ(find<QTableWidget>(s, "SpreadDevolucion")->rowCount(), 1);
    type(s, "txtArticulo", "T0002");
    ASSERT_EQ(find<QTableWidget>(s, "SpreadFacturacion")->rowCount(), 1);
    EXPECT_EQ(find<QLabel>(s, "lblTotalDevuelto")->text(), "Devuelve: 116,00");
    EXPECT_EQ(find<QLabel>(s, "lblTotal")->text(), "Lleva: 139,20");
    EXPECT_EQ(find<QLabel>(s, "lblDiferencia")->text(), "A pagar: 23,20");
    ASSERT_TRUE(dialogs.messages().isEmpty()) << dialogs.lastText().toStdString();

    // The payments screen asks for the difference only.
    bool dialogSeen = false;
    QTimer::singleShot(0, [&] {
        auto* pay = qobject_cast<pos::payments::PaymentsScreen*>(QApplication::activeModalWidget());
        ASSERT_NE(pay, nullptr);
        dialogSeen = true;
        EXPECT_EQ(pay->findChild<QLabel*>("lblTotalFactura")->text(), "23,20");
        pay->grid()->item(0, PayCol::kWay)->setText("EFECTIVO");
        pay->grid()->item(0, PayCol::kAmount)->setText("30");
        QTest::mouseClick(pay->findChild<QPushButton*>("cmdAceptar"), Qt::LeftButton);
        if (pay->isVisible())
            pay->reject(); // refused: the checks below say why
    });
    QTest::keyClick(&s, Qt::Key_F5);
    ASSERT_TRUE(dialogSeen);
    ASSERT_TRUE(dialogs.messages().isEmpty()) << dialogs.lastText().toStdString();
    EXPECT_EQ(find<QLabel>(s, "lblCambio")->text(), "Cambio: 6,80");
    EXPECT_EQ(count("DEVVENTAS"), 0);

    bool noteBeforePrompt = false;
    bool invoiceBeforePrompt = true;
    dialogs.onInformation = [&] {
        if (!dialogs.lastText().startsWith("Presione ENTER al terminar"))
            return;
        noteBeforePrompt = emulator.hasTicket("NOTACREDITO_00000001.txt");
        invoiceBeforePrompt = emulator.hasTicket("FACTURA_00000002.txt");
    };
    QTest::keyClick(&s, Qt::Key_F10);
    ASSERT_EQ(dialogs.texts(), QStringList{"Presione ENTER al terminar de imprimir la nota de "
                                           "credito para imprimir la factura...!"});
    EXPECT_TRUE(noteBeforePrompt);
    EXPECT_FALSE(invoiceBeforePrompt);

    // The return of invoice 1 and the new invoice 2, both whole and printed.
    ASSERT_EQ(count("DEVVENTAS"), 1);
    EXPECT_EQ(scalar("SELECT NumeroFactura FROM DEVVENTAS").toLongLong(), 1);
    EXPECT_EQ(scalar("SELECT Impresa FROM DEVVENTAS").toInt(), 1);
    EXPECT_EQ(dec("SELECT CantidadDevuelta FROM MOVVENTAS WHERE NumeroFactura = 1"), Decimal(1));
    ASSERT_EQ(count("VENTAS"), 2);
    EXPECT_EQ(scalar("SELECT Cliente FROM VENTAS WHERE NumeroFactura = 2").toString().trimmed(),
              "V12345678");
    EXPECT_EQ(scalar("SELECT Impresa FROM VENTAS WHERE NumeroFactura = 2").toInt(), 1);
    // Paid by the shirt's refund and the cash of the difference.
    EXPECT_EQ(count("PAGOSVENTA", "NumeroFactura = 2 AND FormaPago = '1'"), 2);
    EXPECT_EQ(dec("SELECT SUM(Monto) FROM PAGOSVENTA WHERE NumeroFactura = 2"),
              Decimal::fromString(u"139.20"));
    EXPECT_EQ(dec("SELECT Monto FROM SALIDASCAJA"), Decimal(116));
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0001'"), Decimal(10));
    EXPECT_EQ(dec("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = 'T0002'"), Decimal(4));

    EXPECT_EQ(emulator.memory().lastCreditNote, 1);
    EXPECT_EQ(emulator.memory().lastInvoice, 2);
    const QString note = emulator.ticket("NOTACREDITO_00000001.txt");
    EXPECT_TRUE(note.contains("FACTURA AFECTADA: 00000001")) << note.toStdString();
    EXPECT_TRUE(note.contains("CAMISA PRUEBA T:S")) << note.toStdString();
    const QString invoice = emulator.ticket("FACTURA_00000002.txt");
    EXPECT_TRUE(invoice.contains("PANTALON PRUEBA")) << invoice.toStdString();
    EXPECT_FALSE(invoice.contains("CAMISA PRUEBA")) << invoice.toStdString();
    // The customer display shows what was settled.
    const QString display = emulator.ticket("VISOR.txt");
    EXPECT_TRUE(display.contains("A pagar: Bs.23,20")) << display.toStdString();
    EXPECT_TRUE(display.contains("Cambio: Bs.6,80")) << display.toStdString();

    // The screen is cleared and still says what was settled.
    EXPECT_EQ(find<QTableWidget>(s, "SpreadDevolucion")->rowCount(), 0);
    EXPECT_EQ(find<QLabel>(s, "lblDiferencia")->text(), "A pagar: 23,20");
    EXPECT_EQ(find<QLabel>(s, "lblCambio")->text(), "Cambio: 6,80");
    EXPECT_TRUE(
        find<QLabel>(s, "lblUltimaDevolucion")->text().contains("devolver al cliente Bs.6,80"))
        << find<QLabel>(s, "lblUltimaDevolucion")->text().toStdString();
}
