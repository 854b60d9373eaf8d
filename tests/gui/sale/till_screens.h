#pragma once

// The till as the program runs it: the demo store on the main connection, this workstation bound
// to the software printer (PuertoFiscal) and to a card terminal service (VPOS_URL_<Serie>), and the
// screens made by the screen registry, so each one reaches the printer and the terminal the way
// the program does. Keys go to whatever has the focus, as a cashier's would.
#include "../../pos/fiscal/printer_on_emulator.h"
#include "../../shell/startup/startup_fixture.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include "common/db/sql.h"
#include "pos/cash/cash_screens.h"
#include "pos/cash/opening_screen.h"
#include "pos/fiscal/register_printer.h"
#include "pos/returns/return_screen.h"
#include "pos/sale/sale_screen.h"
#include "shell/demo/demo_store.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/user_settings.h"
#include "tools/card_emulator/emulator_thread.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace orvo::test {

class TillScreensTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::demo::seedDemoStore(db());
        exec("UPDATE PARAMETROS SET ItemsPorFactura = 0");
        shell::writeServerConfig(m_home.configPath(), configFor(testDb().settings()));
        ASSERT_TRUE(shell::connectAtStartup());
        shell::session() = shell::SessionContext{};
        shell::session().serial = serie;
        shell::loadSession(shell::mainDb(), shell::session());
        shell::session().userCode = QStringLiteral("CAJERO1");
        shell::settings::saveInvoicePrinter(m_home.path() + QStringLiteral("/factura.pdf"));
        bindFiscalPort(printer);
        tools::card::CardEmulatorOptions o;
        o.voucherDir = m_home.path() + QStringLiteral("/vouchers");
        o.stateFile = m_home.path() + QStringLiteral("/vpos.json");
        terminal = std::make_unique<EmulatorThread>(o);
        exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES (?, '01', ?)",
             {QVariant(QStringLiteral("VPOS_URL_") + serie), terminal->url().toString()});
        pos::sale::registerSaleScreens();
        pos::returns::registerReturnScreens();
        pos::cash::registerCashScreens();
    }
    void TearDown() override {
        m_screens.clear();
        // The program's printer leaves the software printer's port, as when the program ends.
        pos::fiscal::registerPrinter().callAndWait(
            [](pos::fiscal::FiscalPrinter& p) { p.close(); });
        terminal.reset();
        shell::closeMainConnection();
        DbTest::TearDown();
    }

    // A screen as the menu opens it.
    template <class T = QWidget> T* open(const char* form) {
        QWidget* w = shell::ScreenRegistry::instance().create(QString::fromLatin1(form), nullptr);
        EXPECT_NE(w, nullptr) << form;
        if (!w)
            return nullptr;
        m_screens.emplace_back(w);
        w->show();
        w->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(w)) << form;
        return qobject_cast<T*>(w);
    }
    // Closes a screen as its window's close box does; false when it refused.
    bool closeScreen(QWidget* w) { return w->close(); }

    // The day opened with frmAperturaCaja, today's date.
    void openDay() {
        auto* opening = open<pos::cash::OpeningScreen>("frmAperturaCaja");
        ASSERT_NE(opening, nullptr);
        QSignalSpy done(opening, &pos::cash::OpeningScreen::openingFinished);
        QTest::mouseClick(child<QPushButton>(*opening, "cmdAperturar"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(done.count(), 1, 15000);
        ASSERT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
    }

    template <class T> static T* child(QWidget& w, const char* name) {
        T* c = w.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(c, nullptr) << name;
        return c;
    }
    // Types into a field and presses Enter.
    static void typeEnter(QWidget& screen, const char* field, const QString& text) {
        auto* edit = child<QLineEdit>(screen, field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    // A key to whatever has the focus (the screen's own window when nothing does).
    static void key(Qt::Key k, QWidget* fallback = nullptr) {
        QWidget* target = QApplication::focusWidget();
        if (!target)
            target = fallback ? fallback : QApplication::activeWindow();
        ASSERT_NE(target, nullptr);
        QTest::keyClick(target, k);
    }
    static void keys(const QString& text) {
        QWidget* target = QApplication::focusWidget();
        ASSERT_NE(target, nullptr);
        QTest::keyClicks(target, text);
    }
    // Runs `f` once the modal dialog `T` is up (for a key that opens it and waits).
    template <class T> static void whenModal(std::function<void(T&)> f) {
        QTimer::singleShot(0, [f] {
            QTRY_VERIFY(qobject_cast<T*>(QApplication::activeModalWidget()));
            f(*qobject_cast<T*>(QApplication::activeModalWidget()));
        });
    }

    // Client, seller and the lines typed (codes, or quantity*code), all by the keys.
    static void keySale(QWidget& screen, const QStringList& typed) {
        typeEnter(screen, "txtCliente", "V12345678");
        typeEnter(screen, "txtVendedor", "003");
        for (const QString& t : typed)
            typeEnter(screen, "txtCodigoBarra", t);
    }
    // In frmPagosVenta: waits for the way's list, picks `way` by typing it, Enter, and waits for
    // the amount.
    static void chooseWay(QWidget& payments, const QString& way) {
        QTRY_VERIFY(qobject_cast<QComboBox*>(QApplication::focusWidget()));
        keys(way);
        auto* combo = qobject_cast<QComboBox*>(QApplication::focusWidget());
        ASSERT_NE(combo, nullptr);
        EXPECT_EQ(combo->currentText(), way);
        key(Qt::Key_Return, &payments);
        QTRY_VERIFY(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
    }
    // `key` on a screen, with its payment all in cash as proposed, from the keys.
    template <class Payments> static void payInCash(QWidget& screen, Qt::Key k = Qt::Key_F10) {
        whenModal<Payments>([](Payments& p) {
            chooseWay(p, QStringLiteral("EFECTIVO"));
            key(Qt::Key_Return, &p);
        });
        key(k, &screen);
    }

    Decimal dec(const QString& sql, std::initializer_list<QVariant> values = {}) const {
        return Decimal::fromVariant(scalar(sql, values));
    }
    // A kept article not on promotion with at least `stock` units, by barcode order.
    QString article(int stock = 10, int skip = 0) const {
        return scalar("SELECT CodigoBarra FROM INVENTARIO WHERE Tipo = 0 AND Promocion = 0 AND "
                      "Existencia >= ? ORDER BY CodigoBarra LIMIT 1 OFFSET ?",
                      {stock, skip})
            .toString()
            .trimmed();
    }

    // The terminal's transactions of the open lot, as its state file keeps them.
    QJsonArray terminalTransactions() const {
        QFile f(m_home.path() + QStringLiteral("/vpos.json"));
        if (!f.open(QIODevice::ReadOnly))
            return {};
        return QJsonDocument::fromJson(f.readAll()).object().value(u"transacciones").toArray();
    }
    // The printer's tickets whose name starts with `prefix` ("NOFISCAL_", "FACTURA_").
    int tickets(const QString& prefix) const {
        return int(QDir(printer.tools::fiscal::EmulatorThread::options().ticketsFolder)
                       .entryList({prefix + QLatin1Char('*')}, QDir::Files)
                       .size());
    }

    const QString serie = QString::fromLatin1(shell::demo::kDemoSerial);
    HomeGuard m_home;
    RunningEmulator printer{50};
    std::unique_ptr<EmulatorThread> terminal;
    ScriptedDialogs dialogs;
    std::vector<std::unique_ptr<QWidget>> m_screens;
};

} // namespace orvo::test
