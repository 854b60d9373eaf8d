// A store from an empty database, in the program's own order and from the keyboard: the first
// start names the company and its administrator, he logs in, creates a cashier and configures
// this machine's register; the cashier logs in, opens the day and sells through the register's
// own printer. Every screen comes from the main window's menu path (the screen registry).
#include "../../pos/fiscal/printer_on_emulator.h"
#include "../../shell/startup/startup_fixture.h"
#include "../sale/till_keys.h"

#include "pos/cash/cash_screens.h"
#include "pos/cash/opening_screen.h"
#include "pos/fiscal/company_rif.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payments_screen.h"
#include "pos/register/register_screens.h"
#include "pos/sale/sale_screen.h"
#include "shell/login/login.h"
#include "shell/login/login_screen.h"
#include "shell/main_window/main_window.h"
#include "shell/main_window/shell_screens.h"
#include "shell/record_form/master_data.h"
#include "shell/record_form/record_screen.h"
#include "shell/setup/first_start_screen.h"
#include "shell/startup/app_state.h"
#include "shell/startup/desktop_startup.h"
#include "shell/startup/user_settings.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"
#include "tools/fiscal_emulator/emulator_thread.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>

using namespace orvo;

namespace {

class NewStoreDayTest : public test::DbTest, protected test::TillKeys {
protected:
    void SetUp() override {
        DbTest::SetUp();
        shell::session() = shell::SessionContext{};
        shell::setLoggedIn(false);
        shell::writeServerConfig(m_home.configPath(), test::configFor(testDb().settings()));
        ASSERT_TRUE(shell::connectAtStartup());
        // The areas the menu reaches here, as the program registers them.
        shell::registerShellScreens();
        shell::registerRecordScreens(
            {[] { return shell::mainDb(); }, [] { return shell::session().userCode; }});
        pos::registers::registerScreens();
        pos::sale::registerSaleScreens();
        pos::cash::registerCashScreens();
    }
    void TearDown() override {
        m_window.reset();
        pos::fiscal::registerPrinter().callAndWait(
            [](pos::fiscal::FiscalPrinter& p) { p.close(); });
        m_printer.reset();
        shell::closeMainConnection();
        DbTest::TearDown();
    }

    // The login screen over the main window, typed: the code (when not offered), the password.
    void login(const QString& user, const QString& password) {
        m_window->showLogin();
        shell::LoginScreen* dlg = m_window->loginScreen();
        ASSERT_NE(dlg, nullptr);
        dlg->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(dlg));
        auto* code = child<QLineEdit>(*dlg, "txtUsuario");
        if (code->text() != user) {
            code->selectAll();
            QTest::keyClicks(code, user);
            QTest::keyClick(code, Qt::Key_Return);
        }
        auto* secret = child<QLineEdit>(*dlg, "txtClaveUsuario");
        QTest::keyClicks(secret, password);
        QTest::keyClick(secret, Qt::Key_Return);
        QTRY_VERIFY(shell::isLoggedIn());
    }
    void logout() {
        m_dialogs.expectQuestion(QStringLiteral("Desea cerrar la sesión"), true);
        m_window->findChild<QAction*>(QStringLiteral("A6"))->trigger();
        QTRY_VERIFY(!shell::isLoggedIn());
    }
    template <class T = QWidget> T* open(const char* form) {
        auto* w = qobject_cast<T*>(m_window->openForm(QString::fromLatin1(form)));
        EXPECT_NE(w, nullptr) << form << " " << m_dialogs.texts().join('|').toStdString();
        if (w) {
            m_window->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
            w->setFocus();
        }
        return w;
    }
    // A control key of the record toolbar, pressed where the user is.
    static void control(Qt::Key k) {
        QWidget* target = QApplication::focusWidget();
        ASSERT_NE(target, nullptr);
        QTest::keyClick(target, k, Qt::ControlModifier);
    }

    test::HomeGuard m_home;
    test::ScriptedDialogs m_dialogs;
    std::unique_ptr<shell::MainWindow> m_window;
    std::unique_ptr<tools::fiscal::EmulatorThread> m_printer;
};

} // namespace

TEST_F(NewStoreDayTest, FirstStartAdministratorRegisterAndASaleOnAnEmptyDatabase) {
    m_window = std::make_unique<shell::MainWindow>();
    m_window->load();
    m_window->show();

    // frmPrimerInicio, field after field with Enter; the last Enter accepts.
    bool firstStartShown = false;
    whenModal<shell::setup::FirstStartScreen>([&](shell::setup::FirstStartScreen& s) {
        firstStartShown = true;
        s.activateWindow();
        if (!QTest::qWaitForWindowActive(&s)) {
            ADD_FAILURE() << "frmPrimerInicio never became active";
            return s.reject();
        }
        EXPECT_EQ(s.objectName(), "frmPrimerInicio");
        EXPECT_EQ(child<QLineEdit>(s, "txtCodigoTienda")->text(), "01");
        for (const char* typed :
             {"LA ESQUINA, C.A.", "J-29876543-1", "", "JEFE", "ANA JEFE", "s3creta", "s3creta"}) {
            keys(QString::fromUtf8(typed));
            key(Qt::Key_Return, &s);
        }
    });
    ASSERT_TRUE(shell::firstStartDone(m_window.get()));
    ASSERT_TRUE(firstStartShown);
    EXPECT_EQ(m_dialogs.lastText(), "Administrador JEFE creado: entre con su clave.");
    EXPECT_TRUE(shell::firstStartDone(m_window.get())) << "a store with a user asks nothing";

    // The login offers the administrator's code: the password alone logs him in.
    login("JEFE", "s3creta");
    EXPECT_EQ(shell::session().userCode, "JEFE");
    auto* panel = m_window->findChild<QLabel*>("pnlCaja");
    EXPECT_EQ(panel->text().trimmed(), QString::fromUtf8("(Estación sin configurar)"));

    // He creates the cashier in FrmUsuario: Ctrl+N, the fields with Enter, Ctrl+G.
    auto* users = open<shell::RecordScreen>("FrmUsuario");
    ASSERT_NE(users, nullptr);
    control(Qt::Key_N);
    ASSERT_EQ(users->mode(), shell::RecordScreen::Mode::Adding);
    for (const char* typed : {"MARIA", "MARIA CAJERA", "1111", "1111"}) {
        keys(QString::fromUtf8(typed));
        key(Qt::Key_Return, users);
    }
    auto* group = child<QComboBox>(*users, "cboGrupo");
    group->setCurrentIndex(group->findData("CAJERO"));
    control(Qt::Key_G);
    ASSERT_EQ(count("USUARIOGRUPO", "CodUsuario = 'MARIA' AND CodGrupo = 'CAJERO'"), 1)
        << m_dialogs.texts().join('|').toStdString();

    // And this machine's register: Nuevo proposes number 1, the new store's fiscal printer and
    // a PDF for the paper invoices of a station without a printer.
    auto* reg = open<shell::RecordScreen>("frmConfigurarCaja");
    ASSERT_NE(reg, nullptr);
    control(Qt::Key_N);
    keys("CAJA000001");
    key(Qt::Key_Return, reg);
    EXPECT_EQ(QApplication::focusWidget(), child<QLineEdit>(*reg, "txtNumero"));
    EXPECT_EQ(child<QLineEdit>(*reg, "txtNumero")->text(), "1");
    EXPECT_EQ(child<QComboBox>(*reg, "cboImpresoraFiscal")->currentText(), "IMPRESORA FISCAL");
    const QString pdf = child<QComboBox>(*reg, "cboImpresoraFactura")->currentText();
    EXPECT_EQ(pdf, m_home.path() + "/Facturas/factura.pdf");
    control(Qt::Key_G);
    ASSERT_EQ(count("CAJAS", "Serie = 'CAJA000001' AND Numero = 1"), 1)
        << m_dialogs.texts().join('|').toStdString();
    EXPECT_EQ(panel->text().trimmed(), QString::fromUtf8("(Caja Nº 1)"));
    EXPECT_EQ(shell::settings::read("Serie"), "CAJA000001");
    EXPECT_EQ(shell::settings::invoicePrinter(), pdf);
    reg->close();
    users->close();
    logout();

    // The register's printer: this register's serial, the company's RIF, on this machine's port
    // (what `orvo fiscal-emulator --caja` and `orvo fiscal-port` give a real store).
    tools::fiscal::EmulatorOptions o;
    o.serial = QStringLiteral("CAJA000001");
    o.rif = pos::fiscal::rifKey(QStringLiteral("J-29876543-1"));
    o.zBusyMs = 50;
    m_printer = std::make_unique<tools::fiscal::EmulatorThread>(o);
    test::bindFiscalPort(*m_printer);

    // A seller and an article, the store's own data.
    exec("INSERT INTO TRABAJADORES (Cedula, Codigo, Nombre, Cargo, Status) VALUES ('V1', "
         "'001', 'LUIS VENDEDOR', '003', 1)");
    exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
         "CodigoColor, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
         "PrecioPromocion, Existencia, CostoPromedio, UltimoCosto, Tipo, Status) VALUES "
         "('7590000000017', 'FRANELA BASICA', 'FR-1', '0', 'M', '0', 1, 100, 80, 90, 0, 0, "
         "20, 50, 0, 0, 1)");

    // The cashier opens the day and sells one franela in cash.
    login("MARIA", "1111");
    auto* opening = open<pos::cash::OpeningScreen>("frmAperturaCaja");
    ASSERT_NE(opening, nullptr);
    QSignalSpy opened(opening, &pos::cash::OpeningScreen::openingFinished);
    QTest::mouseClick(child<QPushButton>(*opening, "cmdAperturar"), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(opened.count(), 1, 15000);
    ASSERT_TRUE(opened.first().first().toBool()) << m_dialogs.texts().join('|').toStdString();
    opening->close();

    auto* sale = open("frmFacturacion");
    ASSERT_NE(sale, nullptr);
    typeEnter(*sale, "txtCliente", "V00000000");
    typeEnter(*sale, "txtVendedor", "001");
    typeEnter(*sale, "txtCodigoBarra", "7590000000017");
    ASSERT_EQ(child<QTableWidget>(*sale, "SpreadFacturacion")->rowCount(), 1)
        << m_dialogs.texts().join('|').toStdString();
    payInCash<pos::payments::PaymentsScreen>(*sale);
    ASSERT_EQ(count("VENTAS", "Serie = 'CAJA000001' AND NumeroFactura = 1 AND Impresa = 1"), 1)
        << m_dialogs.texts().join('|').toStdString();
    EXPECT_EQ(scalar("SELECT Usuario FROM VENTAS").toString().trimmed(), "MARIA");
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Existencia FROM INVENTARIO")), Decimal(19));
    const QString ticket = m_printer->ticket(QStringLiteral("FACTURA_00000001.txt"));
    EXPECT_TRUE(ticket.contains("RIF: J298765431")) << ticket.toStdString();
    EXPECT_TRUE(ticket.contains("FRANELA BASICA")) << ticket.toStdString();
}
