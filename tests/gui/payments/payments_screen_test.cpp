#include "pos/payments/payments_screen.h"

#include "support/scripted_dialogs.h"
#include "support/test_db.h"
#include "tools/card_emulator/emulator_thread.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::payments;
using Col = PaymentsScreen::Column;

namespace {

class PaymentsScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        const QList<std::pair<int, QString>> ways = {{1, "EFECTIVO"},
                                                     {2, "EFECTIVO DOLAR"},
                                                     {3, "CHEQUE"},
                                                     {5, "TARJETA DE DEBITO"},
                                                     {9, "TARJETA DE CREDITO"}};
        for (const auto& [code, name] : ways)
            exec("INSERT INTO FORMAPAGO (Codigo, Nombre, Status, Orden) VALUES (?, ?, 1, ?)",
                 {code, name, code});
        exec("INSERT INTO BANCOS (Codigo, Nombre, Status) VALUES ('01', 'BANESCO', 1)");
        exec("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, Status) VALUES "
             "('01', 'BANESCO PUNTO', 1, 1), ('02', 'VPOS - VERIFONE CAJA', 1, 1), "
             "('0105', 'MERCANTIL RECEPTORA', 1, 1)");
        tools::card::CardEmulatorOptions o;
        o.voucherDir = m_dir.filePath("terminal");
        o.rules.rejectAmountOverCents = 100000;
        m_terminal = std::make_unique<test::EmulatorThread>(o);
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {QVariant("VPOS_URL_01"), QVariant(m_terminal->url().toString())});
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {QVariant("VPOS_CARPETA"), QVariant(printedDir())});
    }

    std::unique_ptr<PaymentsScreen> open(const char* invoiceTotal, bool allowChange = false) {
        PaymentsScreenInput input;
        input.invoiceTotal = Decimal::fromString(QString::fromLatin1(invoiceTotal));
        input.exchangeRate = Decimal(35);
        input.allowChange = allowChange;
        input.currencySymbol = "Bs.";
        input.serie = "01";
        auto screen = std::make_unique<PaymentsScreen>(db(), input);
        screen->show();
        return screen;
    }
    static void type(PaymentsScreen& s, int row, int column, const QString& text) {
        s.grid()->item(row, column)->setText(text);
    }
    static QString cellText(PaymentsScreen& s, int row, int column) {
        return s.grid()->item(row, column)->text();
    }
    static QString label(PaymentsScreen& s, const char* name) {
        return s.findChild<QLabel*>(name)->text();
    }
    static QPushButton* action(PaymentsScreen& s, int row) {
        return static_cast<QPushButton*>(s.grid()->cellWidget(row, Col::kAction));
    }
    static void click(PaymentsScreen& s, const char* name) {
        QTest::mouseClick(s.findChild<QPushButton*>(name), Qt::LeftButton);
    }
    QString printedDir() const { return m_dir.filePath("printed"); }
    int printedCount() const { return int(QDir(printedDir()).entryList(QDir::Files).size()); }

    QTemporaryDir m_dir;
    std::unique_ptr<test::EmulatorThread> m_terminal;
    test::ScriptedDialogs m_dialogs;
};

} // namespace

TEST_F(PaymentsScreenTest, CashInDollarsAndACardPaidAtTheTerminal) {
    auto s = open("500.00");
    EXPECT_EQ(s->objectName(), QStringLiteral("frmPagosVenta"));
    EXPECT_EQ(label(*s, "lblTotalFactura"), QStringLiteral("500,00"));
    EXPECT_EQ(label(*s, "lblMoneda"), QStringLiteral("Bs."));

    type(*s, 0, Col::kWay, "EFECTIVO DOLAR");
    type(*s, 0, Col::kAmount, "10");
    EXPECT_EQ(cellText(*s, 0, Col::kAmount), QStringLiteral("10,00 $"));
    EXPECT_EQ(cellText(*s, 0, Col::kCounted), QStringLiteral("350,00"));
    EXPECT_EQ(label(*s, "lblTotalAbonado"), QStringLiteral("350,00"));
    EXPECT_EQ(label(*s, "lblTotalSaldo"), QStringLiteral("150,00"));
    ASSERT_EQ(s->grid()->rowCount(), 2); // a fresh row waits for the next payment

    // A card row on another point of sale cannot go through the terminal.
    type(*s, 1, Col::kWay, "TARJETA DE DEBITO");
    type(*s, 1, Col::kAmount, "150");
    type(*s, 1, Col::kPointOfSale, "BANESCO PUNTO");
    QTest::mouseClick(action(*s, 1), Qt::LeftButton);
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("No es posible ejecutar la Accion en este "
                                                   "momento. Solo disponible para Punto VPOS - "
                                                   "VERIFONE"));
    // Nor can a cash row.
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("No es posible ejecutar la Accion en este momento."));

    // Accepting now stops at the card row's first missing cell.
    click(*s, "cmdAceptar");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Complete la Información referente al Número del Documento"));
    EXPECT_FALSE(s->result() == QDialog::Accepted);

    type(*s, 1, Col::kPointOfSale, "VPOS - VERIFONE CAJA");
    m_dialogs.expectTextInput("12");
    QTest::mouseClick(action(*s, 1), Qt::LeftButton);
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Por favor, especifique un numero de Cedula Identidad valido"));

    m_dialogs.clear();
    m_dialogs.expectTextInput("V12345678");
    QTest::mouseClick(action(*s, 1), Qt::LeftButton);
    EXPECT_EQ(m_dialogs.texts(), QStringList{"Cédula de Identidad del titular"});
    EXPECT_EQ(cellText(*s, 1, Col::kDocument), QStringLiteral("000001"));
    EXPECT_EQ(cellText(*s, 1, Col::kLot), QStringLiteral("1"));
    EXPECT_EQ(cellText(*s, 1, Col::kBank), QStringLiteral("OTROS BANCO NAC."));
    EXPECT_EQ(cellText(*s, 1, Col::kPointOfSale), QStringLiteral("MERCANTIL RECEPTORA"));
    EXPECT_EQ(action(*s, 1)->text(), QStringLiteral("    Anular"));
    EXPECT_FALSE(s->grid()->item(1, Col::kAmount)->flags() & Qt::ItemIsEditable);
    EXPECT_EQ(label(*s, "lblTotalSaldo"), QStringLiteral("0,00"));
    EXPECT_EQ(printedCount(), 2);

    click(*s, "cmdAceptar");
    EXPECT_EQ(s->result(), QDialog::Accepted);
    EXPECT_EQ(s->amountPaid(), Decimal(500));
    const QList<PaymentRow> rows = s->rows();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[1].terminal, TerminalState::Approved);
    EXPECT_TRUE(rows[1].merchantJson.contains("\"numeroAutorizacion\":\"000001\""));
    EXPECT_TRUE(rows[0].merchantJson.isEmpty());
}

TEST_F(PaymentsScreenTest, RejectedVoidedAndDeletedTerminalPayments) {
    auto s = open("2000.00");
    type(*s, 0, Col::kWay, "TARJETA DE CREDITO");
    type(*s, 0, Col::kAmount, "2000");
    type(*s, 0, Col::kPointOfSale, "VPOS - VERIFONE CAJA");
    m_dialogs.expectTextInput("V1234567");
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    EXPECT_EQ(m_dialogs.lastText(), QStringLiteral("El Pago ha sido rechazado por el Banco"));
    EXPECT_EQ(action(*s, 0)->text(), QStringLiteral("Rechazado"));
    EXPECT_EQ(cellText(*s, 0, Col::kDocument), QString());

    // A smaller amount goes through; "Anular" gives it back.
    type(*s, 0, Col::kAmount, "900");
    m_dialogs.expectTextInput("V1234567");
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    ASSERT_EQ(action(*s, 0)->text(), QStringLiteral("    Anular"))
        << m_dialogs.lastText().toStdString();
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Se ha realizado la Anulacion del Pago satisfactoriamente."));
    EXPECT_EQ(action(*s, 0)->text(), QStringLiteral("     Pagar"));
    EXPECT_EQ(cellText(*s, 0, Col::kDocument), QString());

    // Deleting an approved payment voids it first; when the terminal is gone the row stays.
    m_dialogs.expectTextInput("V1234567");
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    ASSERT_EQ(action(*s, 0)->text(), QStringLiteral("    Anular"));
    s->grid()->setCurrentCell(0, Col::kWay);
    m_dialogs.expectQuestion("Desea eliminar el item seleccionado?", true);
    click(*s, "cmdEliminar");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Se ha realizado la Anulacion del Pago satisfactoriamente."));
    EXPECT_EQ(s->rows().size(), 0);
    EXPECT_EQ(m_dialogs.messages().last().title, QStringLiteral("Información"));

    type(*s, 0, Col::kWay, "TARJETA DE DEBITO");
    type(*s, 0, Col::kAmount, "10");
    type(*s, 0, Col::kPointOfSale, "VPOS - VERIFONE CAJA");
    m_dialogs.expectTextInput("V1234567");
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    ASSERT_EQ(action(*s, 0)->text(), QStringLiteral("    Anular"));
    m_terminal.reset();
    s->grid()->setCurrentCell(0, Col::kWay);
    m_dialogs.expectQuestion("Desea eliminar el item seleccionado?", true);
    click(*s, "cmdEliminar");
    EXPECT_TRUE(m_dialogs.lastText().startsWith("No hay comunicación con el punto de venta VPOS"))
        << m_dialogs.lastText().toStdString();
    EXPECT_EQ(s->rows().size(), 1);

    click(*s, "btnImprimirUltimoVoucherVPos");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Error al momento de Imprimir el Ultimo Voucher"));
    EXPECT_TRUE(m_dialogs.allAnswered());
}

TEST_F(PaymentsScreenTest, VoidBySequenceAndReprint) {
    auto s = open("100.00");
    type(*s, 0, Col::kWay, "TARJETA DE DEBITO");
    type(*s, 0, Col::kAmount, "100");
    type(*s, 0, Col::kPointOfSale, "VPOS - VERIFONE CAJA");
    m_dialogs.expectTextInput("E-8123456");
    QTest::mouseClick(action(*s, 0), Qt::LeftButton);
    ASSERT_EQ(cellText(*s, 0, Col::kDocument), QStringLiteral("000001"));

    m_dialogs.clear();
    click(*s, "btnImprimirUltimoVoucherVPos");
    EXPECT_EQ(m_dialogs.texts(), QStringList());
    EXPECT_EQ(printedCount(), 3);

    m_dialogs.expectTextInput("1");
    click(*s, "cmdAnular");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Se ha realizado la Anulacion satisfactoriamente"));
    m_dialogs.expectTextInput("1");
    click(*s, "cmdAnular");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("No se ha podido realizar la Anulacion del Pago"));
    m_dialogs.expectTextInput("uno");
    click(*s, "cmdAnular");
    EXPECT_EQ(m_dialogs.messages().last().title,
              QStringLiteral("Información de Secuencia de Pago"));
}

TEST_F(PaymentsScreenTest, AcceptNeedsTheExactTotalAndOnlyCashGivesChange) {
    auto s = open("100.00");
    type(*s, 0, Col::kWay, "EFECTIVO");
    type(*s, 0, Col::kAmount, "99,99");
    click(*s, "cmdAceptar");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("El monto abonado es inferior a el valor de la factura.... corrija "
                             "el valor suprimiendo ó reeditando la fila con el error o "
                             "completando su forma de pago"));
    type(*s, 0, Col::kAmount, "120");
    click(*s, "cmdAceptar");
    EXPECT_TRUE(
        m_dialogs.lastText().startsWith("El monto abonado excede a el valor de la factura"));
    EXPECT_NE(s->result(), QDialog::Accepted);

    // A cash sale: cash over the balance is change, a card or dollars over it are refused.
    auto cash = open("100.00", true);
    type(*cash, 0, Col::kWay, "TARJETA DE DEBITO");
    type(*cash, 0, Col::kAmount, "110");
    for (int c : {Col::kDocument, Col::kLot})
        type(*cash, 0, c, "7");
    type(*cash, 0, Col::kBank, "BANESCO");
    type(*cash, 0, Col::kPointOfSale, "BANESCO PUNTO");
    click(*cash, "cmdAceptar");
    EXPECT_EQ(m_dialogs.lastText(),
              QStringLiteral("Solo el pago en EFECTIVO da cambio: el monto en TARJETA DE DEBITO "
                             "excede el saldo de la factura. Corrija el monto de esa fila...!"));
    type(*cash, 0, Col::kAmount, "80");
    type(*cash, 1, Col::kWay, "EFECTIVO DOLAR");
    type(*cash, 1, Col::kAmount, "1");
    click(*cash, "cmdAceptar");
    EXPECT_TRUE(m_dialogs.lastText().contains("el monto en EFECTIVO DOLAR excede el saldo"))
        << m_dialogs.lastText().toStdString();
    EXPECT_NE(cash->result(), QDialog::Accepted);
    type(*cash, 1, Col::kWay, "EFECTIVO");
    type(*cash, 1, Col::kAmount, "50");
    click(*cash, "cmdAceptar");
    EXPECT_EQ(cash->result(), QDialog::Accepted);
    EXPECT_EQ(cash->amountPaid(), Decimal(130));
    EXPECT_EQ(changeDue(cash->rows(), Decimal(35), Decimal(100)), Decimal(30));
}

TEST_F(PaymentsScreenTest, AWholeSaleInDollarsFromTheKeyboard) {
    auto s = open("100.00", true);
    ASSERT_TRUE(QTest::qWaitForWindowActive(s.get()));
    // The screen opens on the way of the first row: the way is typed, Enter proposes the
    // balance in dollars (rounded up to the cent), Enter again settles and accepts.
    QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
    QTest::keyClicks(QApplication::focusWidget(), "EFECTIVO D");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
    EXPECT_EQ(cellText(*s, 0, Col::kAmount), QStringLiteral("2,86 $"));
    EXPECT_EQ(cellText(*s, 0, Col::kCounted), QStringLiteral("100,10"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTRY_COMPARE(s->result(), int(QDialog::Accepted));
    EXPECT_TRUE(m_dialogs.messages().isEmpty()) << m_dialogs.lastText().toStdString();
    ASSERT_EQ(s->rows().size(), 1);
    EXPECT_EQ(s->rows().at(0).amount, Decimal::fromString(u"2.86"));
    // Its rounding is not change: the drawer gives nothing back.
    EXPECT_EQ(changeDue(s->rows(), Decimal(35), Decimal(100)), Decimal());

    // F10 accepts as well; Enter on a free row with nothing left to pay too.
    auto two = open("70.00", true);
    type(*two, 0, Col::kWay, "EFECTIVO");
    type(*two, 0, Col::kAmount, "70");
    QTest::keyClick(two.get(), Qt::Key_F10);
    EXPECT_EQ(two->result(), QDialog::Accepted);
}
