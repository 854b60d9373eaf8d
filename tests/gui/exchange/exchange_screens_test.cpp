// The export and mail screens as the program opens them (from the screen registry), against a real
// mail server; and the register closing that hands its day over to them.
#include "exchange/export/closing_export.h"
#include "exchange/export/exchange_screens.h"
#include "exchange/export/export_fixture.h"
#include "exchange/export/export_screen.h"
#include "exchange/export/export_store.h"
#include "exchange/mail/mail_screen.h"
#include "pos/cash/cash_fixture.h"
#include "pos/cash/closing_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/session/session_context.h"
#include "support/scripted_dialogs.h"
#include "support/smtp_test_server.h"

#include <QApplication>
#include <QDateEdit>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <functional>

using namespace orvo;
using exchange::exporting::ExportScreen;

namespace {

template <class T> T* find(QWidget& screen, const char* name) {
    T* w = screen.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
}

// Lets the program run until `done` holds. (QTRY_* macros do not fail a GoogleTest test.)
bool waitFor(const std::function<bool()>& done, int timeoutMs = 30000) {
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > timeoutMs)
            return false;
        QTest::qWait(10);
    }
    return true;
}

QWidget* topLevel(const char* name) {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QLatin1String(name) && w->isVisible())
            return w;
    return nullptr;
}

class ExchangeScreensTest : public test::ExportTest {
protected:
    void SetUp() override {
        ExportTest::SetUp();
        exchange::registerExchangeScreens({[this] { return db(); }});
        ASSERT_TRUE(m_smtp.isRunning()) << m_smtp.error().toStdString();
        exec("INSERT INTO CUENTAS_MAIL (Nombre, SrvSalida, PuertoSaliente, UsrMail, SrvDominio, "
             "PswMail, EMailDest) VALUES ('TIENDA 01', '127.0.0.1', ?, 'tienda01', 'orvo.test', "
             "'', 'casamatriz@orvo.test')",
             {m_smtp.port()});
        exec("INSERT INTO MENSAJES (Asunto, Anexo) VALUES ('Información de la tienda 01', "
             "'01*.zip')");
    }
    void TearDown() override {
        exchange::exporting::setClosingExportLauncher({});
        ExportTest::TearDown();
    }
    std::unique_ptr<QWidget> open(const char* form) {
        std::unique_ptr<QWidget> w(shell::ScreenRegistry::instance().create(form, nullptr));
        EXPECT_TRUE(w) << form;
        if (w)
            w->show();
        return w;
    }
    test::SmtpTestServer m_smtp;
};

TEST_F(ExchangeScreensTest, ExportFromTheScreenMailsThePackage) {
    test::ScriptedDialogs dialogs;
    for (const char* name : {"frmExpArchivosOrvo", "frmExpArchivos", "frmExpArchivosXML",
                             "frmEnvioTraNet", "fmEnvioTraNet2"})
        EXPECT_EQ(open(name)->objectName(), name);
    const QDate day = QDate::currentDate();
    sell(2, QDateTime(day, QTime(10, 0)), "7591234000018", "1", "100");

    auto screen = open("frmExpArchivosOrvo");
    auto& s = static_cast<ExportScreen&>(*screen);
    EXPECT_EQ(find<QDateEdit>(s, "DtpDesde")->date(), day);
    EXPECT_EQ(find<QDateEdit>(s, "DtpHasta")->date(), day);
    QSignalSpy finished(&s, &ExportScreen::runFinished);
    // Keyboard first: Enter moves from date to date and exports from the last one.
    QTest::keyClick(find<QDateEdit>(s, "DtpDesde"), Qt::Key_Return);
    QTest::keyClick(find<QDateEdit>(s, "DtpHasta"), Qt::Key_Return);
    EXPECT_TRUE(s.isRunning());
    EXPECT_FALSE(find<QPushButton>(s, "cmdExportar")->isEnabled());
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_TRUE(finished.first().first().toBool());
    ASSERT_EQ(m_smtp.received().size(), 1) << dialogs.texts().join('|').toStdString();
    const auto mail = m_smtp.received().first();
    EXPECT_EQ(mail.attachments, QStringList{"01.zip"});
    const exchange::package::PackageReader p(mail.attachmentFiles[0], {{"VENTAS", {"NumFac"}}});
    EXPECT_EQ(p.table("VENTAS").integer(0, "NumFac"), 2);
    ASSERT_FALSE(dialogs.messages().isEmpty());
    EXPECT_EQ(dialogs.messages().last().text, QStringLiteral("Proceso finalizado...!"));
    EXPECT_EQ(dialogs.messages().last().title, QStringLiteral("Orvo"));
    EXPECT_EQ(topLevel("frmEnvioTraNet"), nullptr) << "the mail window closes when it is done";
    EXPECT_TRUE(find<QPushButton>(s, "cmdExportar")->isEnabled());
    EXPECT_TRUE(s.isVisible()) << "the user's own export stays open";
    EXPECT_FALSE(exchange::exporting::lastExportDay(db()).isValid())
        << "only the closing's export moves the last export date";

    // From the menu the mail window waits for the user: Enter sends what the folder holds.
    exec("UPDATE MENSAJES SET Anexo = ''");
    auto mailScreen = open("frmEnvioTraNet");
    dialogs.clear();
    QTest::keyClick(mailScreen.get(), Qt::Key_Return);
    ASSERT_TRUE(waitFor([&] { return dialogs.lastText() == "Proceso finalizado...!"; }));
    EXPECT_EQ(m_smtp.received().size(), 2);
    EXPECT_TRUE(find<QPlainTextEdit>(*mailScreen, "txtEstado")
                    ->toPlainText()
                    .contains("Mensaje(s) enviado(s) con éxito."));
    EXPECT_TRUE(mailScreen->isVisible());
}

TEST_F(ExchangeScreensTest, CancelStopsTheRunAndTheMissingTemplateFolderDisablesIt) {
    test::ScriptedDialogs dialogs;
    const QDate day = QDate::currentDate();
    for (int i = 1; i <= 300; ++i)
        sell(i, QDateTime(day, QTime(9, 0)), "7591234000018", "1", "10");
    auto screen = open("frmExpArchivosOrvo");
    auto& s = static_cast<ExportScreen&>(*screen);
    QSignalSpy finished(&s, &ExportScreen::runFinished);
    QTest::mouseClick(find<QPushButton>(s, "cmdExportar"), Qt::LeftButton);
    QTest::mouseClick(find<QPushButton>(s, "cmdCancelar"), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    EXPECT_FALSE(finished.first().first().toBool());
    EXPECT_EQ(dialogs.lastText(), QStringLiteral("Exportación cancelada por el usuario...!"));
    EXPECT_EQ(enviaFiles(), QStringList());
    EXPECT_TRUE(m_smtp.received().isEmpty());
    EXPECT_TRUE(find<QPushButton>(s, "cmdExportar")->isEnabled());

    QDir(exchange::package::templateFolder()).removeRecursively();
    dialogs.clear();
    auto again = open("frmExpArchivos");
    EXPECT_EQ(dialogs.lastText(), QStringLiteral("No se puede encontrar el directorio de "
                                                 "estructuras en la ruta específicada."));
    EXPECT_FALSE(find<QPushButton>(*again, "cmdExportar")->isEnabled());
    EXPECT_TRUE(open("frmExpArchivosXML")->findChild<QPushButton*>("cmdExportar")->isEnabled())
        << "the XML package needs no templates";
}

// The closing's run inside the main window: dates and buttons disabled, menus locked until the
// mail is done, then the screen closes and the last export date moves to the day.
TEST_F(ExchangeScreensTest, ClosingRunLocksTheMainWindowUntilTheMailIsDone) {
    test::ScriptedDialogs dialogs;
    const QDate day = QDate::currentDate();
    sell(2, QDateTime(day, QTime(10, 0)), "7591234000018", "1", "100");
    QMainWindow main;
    auto* mdi = new QMdiArea(&main);
    main.setCentralWidget(mdi);
    main.menuBar()->addMenu(QStringLiteral("Sistema"));
    main.show();
    auto* screen = static_cast<ExportScreen*>(
        shell::ScreenRegistry::instance().create("frmExpArchivosOrvo", nullptr));
    QMdiSubWindow* sub = mdi->addSubWindow(screen);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    screen->show();
    QSignalSpy finished(screen, &ExportScreen::runFinished);

    screen->startExport(day.addDays(-2), day, ExportScreen::kClosingOrigin);
    EXPECT_FALSE(main.menuBar()->isEnabled());
    EXPECT_FALSE(find<QDateEdit>(*screen, "DtpDesde")->isEnabled());
    EXPECT_FALSE(find<QPushButton>(*screen, "cmdExportar")->isEnabled());
    EXPECT_FALSE(find<QPushButton>(*screen, "cmdCancelar")->isEnabled());
    EXPECT_EQ(find<QDateEdit>(*screen, "DtpDesde")->date(), day.addDays(-2));
    ASSERT_TRUE(waitFor([&] { return finished.count() == 1; }));
    ASSERT_TRUE(waitFor([&] { return mdi->subWindowList().isEmpty(); }));
    EXPECT_TRUE(main.menuBar()->isEnabled());
    EXPECT_EQ(m_smtp.received().size(), 1);
    EXPECT_EQ(exchange::exporting::lastExportDay(db()), day);
}

// "XML-Vandu": the closing starts the head-office set and then the XML package, each on its screen
// with its mail.
TEST_F(ExchangeScreensTest, TheClosingsChoiceRunsItsScreensOneAfterTheOther) {
    test::ScriptedDialogs dialogs;
    const QDate day = QDate::currentDate();
    exec("UPDATE PARAMETROS SET ComportamientoExportar = 'XML-Vandu'");
    exec("INSERT INTO EXPORTACION (Nombre, NombreTabla, Consulta, Exportar, mensaje) VALUES "
         "('VENTAS', 'VENTAS', 'SELECT * FROM VENTAS WHERE 1 = 1 AND Fecha >= :desde AND Fecha "
         "<= :hasta', 1, 'Exportando VENTAS')");
    sell(2, QDateTime(day, QTime(10, 0)), "7591234000018", "1", "100");
    const auto plan = exchange::exporting::exportAfterClosing(db(), day);
    EXPECT_EQ(plan.runs.size(), 2);
    ASSERT_TRUE(waitFor([&] { return m_smtp.received().size() == 2; }));
    const auto got = m_smtp.received();
    EXPECT_EQ(got[0].attachments, QStringList{"01.zip"});
    ASSERT_EQ(got[1].attachments.size(), 1);
    EXPECT_TRUE(got[1].attachments[0].startsWith("01_XML_"));
    ASSERT_TRUE(
        waitFor([&] { return !topLevel("frmExpArchivosXML") && !topLevel("frmExpArchivos"); }));
    EXPECT_EQ(exchange::exporting::lastExportDay(db()), day);
}

class ClosingExportTest : public test::CashTest {
protected:
    void TearDown() override {
        exchange::exporting::setClosingExportLauncher({});
        test::CashTest::TearDown();
    }
};

// The whole road: the register is closed on its screen, the closing starts the export of the day,
// and head office's mail server receives the package.
TEST_F(ClosingExportTest, ClosingTheRegisterSendsTheDaysPackage) {
    test::ScriptedDialogs dialogs;
    test::SmtpTestServer smtp;
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    exchange::registerExchangeScreens({[this] { return db(); }});
    exchange::package::installTemplates();
    exec("INSERT INTO PARAMETROS (Nombre, Codigo, ComportamientoExportar) VALUES "
         "('TIENDA DEMO', '01', 'Orvo')");
    exec("INSERT INTO CUENTAS_MAIL (Nombre, SrvSalida, PuertoSaliente, UsrMail, SrvDominio, "
         "EMailDest) VALUES ('TIENDA 01', '127.0.0.1', ?, 'tienda01', 'orvo.test', "
         "'casamatriz@orvo.test')",
         {smtp.port()});
    exec("INSERT INTO MENSAJES (Asunto, Anexo) VALUES ('Cierre de la tienda 01', '01.zip')");
    addDay(kSerial, today(), 0);
    sell(1, "100.00");

    shell::SessionContext session;
    session.serial = kSerial;
    session.registerConfigured = true;
    session.controlFactura = 1;
    session.nombre = "TIENDA DEMO";
    pos::cash::ClosingScreen closing(db(), session, *m_printer);
    closing.show();
    auto* counted = find<QLineEdit>(closing, "txtEfectivoContado");
    counted->setText(find<QLineEdit>(closing, "txtEfectivoEsperado")->text());
    dialogs.expectQuestion("Confirma el cierre de caja...?", true);
    dialogs.expectQuestion("Desea Imprimir los Reportes del Cierre ?", false);
    QSignalSpy done(&closing, &pos::cash::ClosingScreen::closingFinished);
    QTest::mouseClick(find<QPushButton>(closing, "cmdAceptar"), Qt::LeftButton);
    ASSERT_TRUE(waitFor([&] { return done.count() == 1; }));
    ASSERT_TRUE(done.first().first().toBool()) << dialogs.texts().join('|').toStdString();
    ASSERT_TRUE(waitFor([&] { return smtp.received().size() == 1; }));
    const auto mail = smtp.received().first();
    EXPECT_EQ(mail.subject, QStringLiteral("Cierre de la tienda 01"));
    ASSERT_EQ(mail.attachments, QStringList{"01.zip"});
    const exchange::package::PackageReader p(mail.attachmentFiles[0], {{"VENTAS", {"NumFac"}}});
    EXPECT_EQ(p.table("VENTAS").integer(0, "NumFac"), 1);
    ASSERT_TRUE(waitFor([&] { return exchange::exporting::lastExportDay(db()) == today(); }));
    ASSERT_TRUE(waitFor([&] { return !topLevel("frmExpArchivosOrvo"); }));
}

} // namespace
