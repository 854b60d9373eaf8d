#pragma once

// The till as the program runs it: the demo store on the main connection, this workstation bound
// to the software printer (PuertoFiscal) and to a card terminal service (VPOS_URL_<Serie>), and the
// screens made by the screen registry, so each one reaches the printer and the terminal the way
// the program does. Keys go to whatever has the focus, as a cashier's would.
#include "../../pos/fiscal/printer_on_emulator.h"
#include "../../shell/startup/startup_fixture.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"
#include "till_keys.h"

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

class TillScreensTest : public DbTest, protected TillKeys {
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

    // Client, seller and the lines typed (codes, or quantity*code), all by the keys.
    static void keySale(QWidget& screen, const QStringList& typed) {
        typeEnter(screen, "txtCliente", "V12345678");
        typeEnter(screen, "txtVendedor", "003");
        for (const QString& t : typed)
            typeEnter(screen, "txtCodigoBarra", t);
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
