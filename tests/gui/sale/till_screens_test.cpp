// What a cashier hit on the till's first day, each on the screens the registry makes: quantities
// and the grid, a second press of Aceptar, the day told at once, an even exchange.
#include "till_screens.h"

#include "pos/cash/cash_closing.h"
#include "pos/payments/payment_rules.h"
#include "pos/payments/payments_screen.h"
#include "pos/returns/exchange_screen.h"

#include <QComboBox>
#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>

using namespace orvo;
using pos::payments::PaymentsScreen;
using pos::sale::SaleScreen;

namespace {

class TillScreens : public test::TillScreensTest {
protected:
    void payCashAndAccept(QWidget& screen) { payInCash<PaymentsScreen>(screen); }
    static QString text(QWidget& w, const char* label) { return child<QLabel>(w, label)->text(); }
    QString today() const {
        return db::serverNow(db()).date().toString(QStringLiteral("dd/MM/yyyy"));
    }
    // Presses `accept` and, while the document is saved and printed, presses it and F10 again;
    // whether the button was enabled meanwhile.
    static bool pressedTwice(QWidget& screen, QPushButton* accept) {
        bool enabled = true;
        QTimer::singleShot(0, [&] {
            enabled = accept->isEnabled();
            accept->click();
            QTest::keyClick(&screen, Qt::Key_F10);
        });
        accept->click();
        return enabled;
    }
};

} // namespace

TEST_F(TillScreens, QuantitiesAreKeyedAndTheDescriptionHasTheRoom) {
    openDay();
    // The article with the longest name.
    const QString longest =
        scalar("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Promocion = 0 AND "
               "Existencia >= 5 ORDER BY LENGTH(Nombre) DESC, CodigoBarra LIMIT 1")
            .toString()
            .trimmed();
    const QString other = article(5, 1);
    auto* screen = open<SaleScreen>("frmFacturacion");
    screen->resize(1000, 700);
    auto* grid = screen->grid();

    typeEnter(*screen, "txtCliente", "V12345678");
    typeEnter(*screen, "txtVendedor", "003");
    // The quantity field, then a multiplier before the code.
    child<QLineEdit>(*screen, "txtCantidad")->setText("2");
    typeEnter(*screen, "txtCodigoBarra", longest);
    EXPECT_EQ(child<QLineEdit>(*screen, "txtCantidad")->text(), "1");
    typeEnter(*screen, "txtCodigoBarra", "3*" + other);
    ASSERT_EQ(grid->rowCount(), 2) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(screen->draft().lines().at(0).cantidad, Decimal(2));
    EXPECT_EQ(screen->draft().lines().at(1).cantidad, Decimal(3));

    // A digit on a row of the grid starts its new quantity; Enter takes it.
    // From the article field, Up goes to the grid's last line; Up again to the first.
    key(Qt::Key_Up, screen);
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget*>(grid));
    key(Qt::Key_Up, grid);
    QTRY_COMPARE(grid->currentRow(), 0);
    key(Qt::Key_4, grid);
    QTRY_VERIFY(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
    key(Qt::Key_Return, grid);
    QTRY_COMPARE(screen->draft().lines().at(0).cantidad, Decimal(4));
    QTRY_COMPARE(grid->item(0, SaleScreen::kQuantity)->text(), QString("4"));

    // Refusals leave the sale as it was, saying why.
    typeEnter(*screen, "txtCodigoBarra", "1,5*" + other);
    EXPECT_TRUE(dialogs.lastText().endsWith("se vende por unidades: la cantidad no puede llevar "
                                            "decimales...!"))
        << dialogs.lastText().toStdString();
    typeEnter(*screen, "txtCodigoBarra", "9999*" + other);
    EXPECT_TRUE(dialogs.lastText().startsWith("Existencia insuficiente de "))
        << dialogs.lastText().toStdString();
    EXPECT_EQ(grid->rowCount(), 2);

    // The description is read whole; the code takes only what it needs; amounts read alike.
    const QString name = screen->draft().lines().at(0).nombre;
    const QHeaderView* header = grid->horizontalHeader();
    EXPECT_GE(header->sectionSize(SaleScreen::kName), grid->fontMetrics().horizontalAdvance(name))
        << name.toStdString();
    EXPECT_GT(header->sectionSize(SaleScreen::kName), header->sectionSize(SaleScreen::kBarcode));
    EXPECT_EQ(grid->item(0, SaleScreen::kDiscount)->text(), "0,00");

    payCashAndAccept(*screen);
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(dec("SELECT Cantidad FROM MOVVENTAS WHERE CodigoBarra = ?", {longest}), Decimal(4));
}

TEST_F(TillScreens, AceptarRunsOnceWhileTheDocumentIsSavedAndPrinted) {
    openDay();
    const QString code = article(5);
    auto* sale = open<SaleScreen>("frmFacturacion");
    keySale(*sale, {code});
    // Paid first, so that Aceptar goes straight to the save and the print.
    payInCash<PaymentsScreen>(*sale, Qt::Key_F5);
    ASSERT_TRUE(sale->draft().paymentsAccepted()) << dialogs.texts().join('|').toStdString();

    // Pressed again while the printer is asked and prints: disabled, and F10 waits.
    auto* accept = child<QPushButton>(*sale, "cmdAceptar");
    EXPECT_FALSE(pressedTwice(*sale, accept));
    EXPECT_TRUE(accept->isEnabled());
    EXPECT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(tickets("FACTURA_"), 1);

    // The same for a return: one credit note.
    auto* back = open("frmDevolucion");
    typeEnter(*back, "TxtFactura", "1");
    typeEnter(*back, "txtCodigo", code);
    typeEnter(*back, "txtCantidad", "1");
    EXPECT_FALSE(pressedTwice(*back, child<QPushButton>(*back, "cmdAceptar")));
    EXPECT_EQ(count("DEVVENTAS"), 1) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(tickets("NOTACREDITO_"), 1);
    EXPECT_EQ(printer.memory().lastCreditNote, 1);
}

TEST_F(TillScreens, TheScreensSayAtOnceWhenTheDayIsNotOpen) {
    const QString notOpen = "No existe apertura de fecha " + today() + "...!";
    for (const char* form : {"frmFacturacion", "frmDevolucion", "frmCambiosDeMercancia"}) {
        dialogs.clear();
        QWidget* screen = open(form);
        QTRY_COMPARE(dialogs.lastText(), notOpen);
        EXPECT_TRUE(child<QLabel>(*screen, "lblEstadoCaja")->isVisible()) << form;
        EXPECT_EQ(text(*screen, "lblEstadoCaja"), notOpen);
    }
    // The sale can be keyed, but no payment is taken on such a day.
    auto* sale = qobject_cast<SaleScreen*>(m_screens.front().get());
    sale->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(sale));
    keySale(*sale, {article()});
    dialogs.clear();
    key(Qt::Key_F5, sale);
    EXPECT_EQ(dialogs.texts(), QStringList{notOpen});
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);

    // A closed day says so too.
    exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, Status, "
         "Acumulado) VALUES (?, ?, 1, 0, 0, 2, 0)",
         {serie, db::dayStart(db::serverNow(db()).date())});
    dialogs.clear();
    open("frmFacturacion");
    QTRY_COMPARE(dialogs.lastText(), QString("Caja con cierre realizado...!"));

    // Opening a day ahead of today asks first; No opens nothing.
    exec("DELETE FROM DIARIOCAJA");
    auto* opening = open<pos::cash::OpeningScreen>("frmAperturaCaja");
    const QDate tomorrow = db::serverNow(db()).date().addDays(1);
    child<QDateEdit>(*opening, "dtpFecha")->setDate(tomorrow);
    dialogs.expectQuestion("La fecha de apertura " + tomorrow.toString("dd/MM/yyyy") +
                               " es posterior a la fecha de hoy",
                           false);
    QSignalSpy done(opening, &pos::cash::OpeningScreen::openingFinished);
    QTest::mouseClick(child<QPushButton>(*opening, "cmdAperturar"), Qt::LeftButton);
    QTRY_COMPARE(done.count(), 1);
    EXPECT_FALSE(done.first().first().toBool());
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(count("DIARIOCAJA"), 0);
}

TEST_F(TillScreens, AnEvenExchangeTakesNothingAndGivesNothingBack) {
    openDay();
    // Two sizes of one model: they sell at the model's price.
    QString brought, taken;
    {
        db::Sql pair(db(),
                     "SELECT A.CodigoBarra AS Uno, B.CodigoBarra AS Otro FROM INVENTARIO A "
                     "INNER JOIN INVENTARIO B ON B.Referencia = A.Referencia AND B.CodigoMarca "
                     "= A.CodigoMarca AND B.CodigoBarra > A.CodigoBarra WHERE A.Tipo = 0 AND "
                     "A.Promocion = 0 AND B.Promocion = 0 AND A.Existencia > 2 AND "
                     "B.Existencia > 2 ORDER BY A.CodigoBarra, B.CodigoBarra LIMIT 1");
        pair.exec();
        ASSERT_TRUE(pair.next());
        brought = pair.text("Uno").trimmed();
        taken = pair.text("Otro").trimmed();
    }

    auto* sale = open<SaleScreen>("frmFacturacion");
    keySale(*sale, {brought});
    const Decimal price = sale->draft().totals().total;
    payCashAndAccept(*sale);
    ASSERT_EQ(count("VENTAS"), 1) << dialogs.texts().join('|').toStdString();

    auto* screen = open("frmCambiosDeMercancia");
    typeEnter(*screen, "TxtFactura", "1");
    typeEnter(*screen, "txtCodigo", brought);
    typeEnter(*screen, "txtCantidad", "1");
    typeEnter(*screen, "txtArticulo", taken);
    const QString money = pos::payments::formatAmount(price);
    EXPECT_EQ(text(*screen, "lblTotalDevuelto"), "Devuelve: " + money);
    EXPECT_EQ(text(*screen, "lblTotal"), "Lleva: " + money);
    EXPECT_EQ(text(*screen, "lblDiferencia"), "A pagar: 0,00");

    // Nothing to collect: no payments screen, the two documents at once.
    bool paymentsAsked = false;
    QTimer::singleShot(0, [&] {
        if (auto* p = qobject_cast<PaymentsScreen*>(QApplication::activeModalWidget())) {
            paymentsAsked = true;
            p->reject();
        }
    });
    dialogs.clear();
    key(Qt::Key_F10, screen);
    EXPECT_FALSE(paymentsAsked);
    EXPECT_EQ(dialogs.texts(), QStringList{"Presione ENTER al terminar de imprimir la nota de "
                                           "credito para imprimir la factura...!"});
    ASSERT_EQ(count("DEVVENTAS"), 1);
    ASSERT_EQ(count("VENTAS"), 2);
    // The credit note pays the invoice; the drawer is where it was after the first sale.
    EXPECT_EQ(count("PAGOSVENTA", "NumeroFactura = 2"), 1);
    EXPECT_EQ(dec("SELECT Monto FROM PAGOSVENTA WHERE NumeroFactura = 2"), price);
    EXPECT_EQ(dec("SELECT Monto FROM SALIDASCAJA"), price);
    const auto figures = pos::cash::closingFigures(db(), serie);
    ASSERT_TRUE(figures.has_value());
    EXPECT_EQ(figures->expectedCash() - figures->fondoCaja, price);
    EXPECT_TRUE(printer.ticket("VISOR.txt").contains("A pagar: Bs.0,00"));
    EXPECT_EQ(text(*screen, "lblCambio"), "Cambio: 0,00");
    EXPECT_TRUE(text(*screen, "lblUltimaDevolucion").contains("nada que devolver"));
    EXPECT_EQ(printer.memory().lastInvoice, 2);
    EXPECT_EQ(printer.memory().lastCreditNote, 1);
}
