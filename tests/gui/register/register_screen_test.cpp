#include "pos/register/register_screen.h"

#include "pos/register/register_config.h"
#include "pos/sale/sale_screen.h"
#include "shell/session/session_context.h"
#include "shell/startup/user_settings.h"
#include "support/scripted_dialogs.h"
#include "support/test_db.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace orvo;
using namespace orvo::pos::registers;
using Action = shell::RecordScreen::Action;

namespace {

class RegisterScreenTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
        exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, MontoMaximoDiario, Status) "
             "VALUES (1, 'HKA', 1000, 1), (2, 'BIXOLON', 2000, 1), (3, 'RETIRADA', 0, 0)");
        exec("INSERT INTO CAJAS (Serie, Numero, FondoCaja, TipoListaPrecio, TipoVenta, "
             "TipoReporte, PermiteDescuento, PermiteFacturarOrdenDespacho, UltimaFactura, "
             "PermiteFacturasExentas, PermiteAlternarListas, CambiarPrecios, "
             "RequerirAutorizacion, IdImpresoraFiscal, PermitirFacturaContingencia, "
             "MaximoZDiario, UltimaDevolucion) "
             "VALUES ('CAJA01', 1, 1250.75, 2, 1, 1, 1, 0, 40, 1, 0, 1, 0, 1, 1, 3, 5)");
    }

    std::unique_ptr<RegisterScreen> open(const QString& serial) {
        shell::loadRegister(db(), serial, m_session);
        auto screen = std::make_unique<RegisterScreen>(db(), m_session);
        screen->show();
        return screen;
    }
    template <class T> static T* find(QWidget& screen, const char* name) {
        T* w = screen.findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    static void retype(QWidget& screen, const char* name, const QString& text) {
        auto* e = find<QLineEdit>(screen, name);
        e->selectAll();
        QTest::keyClick(e, Qt::Key_Backspace);
        QTest::keyClicks(e, text);
    }

    void TearDown() override {
        // Later tests keep their settings out of the user's real configuration too.
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           test::processTempDir() + "/settings");
        DbTest::TearDown();
    }

    QTemporaryDir m_settingsDir;
    shell::SessionContext m_session;
};

TEST_F(RegisterScreenTest, ShowsTheRegisterOfThisMachineWithItsPrinterList) {
    test::ScriptedDialogs dialogs;
    auto s = open("CAJA01");
    EXPECT_EQ(s->objectName(), "frmConfigurarCaja");
    EXPECT_EQ(find<QLineEdit>(*s, "txtSerie")->text(), "CAJA01");
    EXPECT_FALSE(find<QLineEdit>(*s, "txtSerie")->isEnabled());
    EXPECT_EQ(find<QLineEdit>(*s, "txtNumero")->text(), "1");
    EXPECT_EQ(find<QLineEdit>(*s, "txtFondoCaja")->text(), "1.250,75");
    EXPECT_EQ(find<QComboBox>(*s, "cboTipoListaPrecio")->currentData().toInt(), 2);
    EXPECT_EQ(find<QComboBox>(*s, "cboTipoVenta")->currentData().toInt(), 1);
    EXPECT_EQ(find<QComboBox>(*s, "cboTipoReporte")->currentData().toInt(), 1);
    EXPECT_TRUE(find<QCheckBox>(*s, "chkPermiteDescuento")->isChecked());
    EXPECT_FALSE(find<QCheckBox>(*s, "chkPermiteFacturarOrdenDespacho")->isChecked());
    EXPECT_TRUE(find<QCheckBox>(*s, "chkPermiteFacturasExentas")->isChecked());
    EXPECT_FALSE(find<QCheckBox>(*s, "chkPermiteAlternarListas")->isChecked());
    EXPECT_TRUE(find<QCheckBox>(*s, "chkCambiarPrecios")->isChecked());
    EXPECT_FALSE(find<QCheckBox>(*s, "chkRequerirAutorizacion")->isChecked());
    EXPECT_TRUE(find<QCheckBox>(*s, "chkPermitirFacturaContingencia")->isChecked());
    EXPECT_EQ(find<QLineEdit>(*s, "txtMaximoZDiario")->text(), "3");
    auto* printers = find<QComboBox>(*s, "cboImpresoraFiscal");
    ASSERT_EQ(printers->count(), 2); // the retired printer is not offered
    EXPECT_EQ(printers->itemText(0), "BIXOLON");
    EXPECT_EQ(printers->currentText(), "HKA");
    EXPECT_TRUE(dialogs.messages().isEmpty());
}

TEST_F(RegisterScreenTest, ModifyingSavesEveryFieldAndRefusesLettersInTheZMaximum) {
    test::ScriptedDialogs dialogs;
    auto s = open("CAJA01");
    QSignalSpy bound(s.get(), &RegisterScreen::registerBound);
    ASSERT_TRUE(s->perform(Action::Modify));

    auto* zMax = find<QLineEdit>(*s, "txtMaximoZDiario");
    retype(*s, "txtMaximoZDiario", "1");
    QTest::keyClicks(zMax, "2x");
    EXPECT_EQ(dialogs.lastText(), "Solo se permiten Valores numericos");
    EXPECT_EQ(zMax->text(), "12");
    retype(*s, "txtMaximoZDiario", "");
    emit zMax->editingFinished();
    EXPECT_EQ(zMax->text(), "0");

    retype(*s, "txtNumero", "7");
    retype(*s, "txtFondoCaja", "300,5");
    find<QComboBox>(*s, "cboImpresoraFiscal")->setCurrentText("BIXOLON");
    find<QComboBox>(*s, "cboTipoVenta")->setCurrentIndex(1);
    find<QCheckBox>(*s, "chkRequerirAutorizacion")->setChecked(true);
    find<QCheckBox>(*s, "chkPermiteDescuento")->setChecked(false);
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.texts().join('|').toStdString();

    const auto c = readRegisterConfig(db(), "CAJA01");
    EXPECT_EQ(c->numero, 7);
    EXPECT_EQ(c->fondoCaja, Decimal::fromString(u"300.5"));
    EXPECT_EQ(c->idImpresoraFiscal, 2);
    EXPECT_EQ(c->tipoVenta, 2);
    EXPECT_TRUE(c->requerirAutorizacion);
    EXPECT_FALSE(c->permiteDescuento);
    EXPECT_EQ(c->maximoZDiario, 0);
    EXPECT_EQ(c->ultimaFactura, 40);
    EXPECT_EQ(bound.count(), 1);
    EXPECT_EQ(m_session.numero, 7);
    EXPECT_EQ(find<QLineEdit>(*s, "txtFondoCaja")->text(), "300,50");
}

TEST_F(RegisterScreenTest, ANewRegisterOverAnExistingSerieAsksFirst) {
    test::ScriptedDialogs dialogs;
    auto s = open(""); // a machine that is not a register yet
    EXPECT_EQ(find<QLineEdit>(*s, "txtSerie")->text(), "");
    QSignalSpy bound(s.get(), &RegisterScreen::registerBound);

    // "No" keeps the stored register and does not bind the machine.
    ASSERT_TRUE(s->perform(Action::New));
    retype(*s, "txtSerie", "CAJA01");
    retype(*s, "txtNumero", "9");
    dialogs.expectQuestion("La serie de caja ya existe... Desea sobreescribirla...?", false);
    s->perform(Action::Save);
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(dialogs.messages().last().title, "Configurar Caja");
    EXPECT_EQ(readRegisterConfig(db(), "CAJA01")->numero, 1);
    EXPECT_EQ(bound.count(), 0);
    EXPECT_EQ(workstationSerial(), "");

    // "Yes" overwrites it and binds this machine to it.
    ASSERT_TRUE(s->perform(Action::New));
    retype(*s, "txtSerie", "CAJA01");
    retype(*s, "txtNumero", "9");
    dialogs.expectQuestion("La serie de caja ya existe... Desea sobreescribirla...?", true);
    ASSERT_TRUE(s->perform(Action::Save));
    EXPECT_TRUE(dialogs.allAnswered());
    EXPECT_EQ(readRegisterConfig(db(), "CAJA01")->numero, 9);
    EXPECT_EQ(readRegisterConfig(db(), "CAJA01")->ultimaDevolucion, 5);
    EXPECT_EQ(bound.count(), 1);
    EXPECT_EQ(workstationSerial(), "CAJA01");
    EXPECT_TRUE(m_session.registerConfigured);
    EXPECT_EQ(find<QLineEdit>(*s, "txtNumero")->text(), "9");
}

TEST_F(RegisterScreenTest, ANewSerieIsCreatedWithoutAQuestion) {
    test::ScriptedDialogs dialogs;
    auto s = open("CAJA01");
    ASSERT_TRUE(s->perform(Action::New));
    EXPECT_EQ(find<QLineEdit>(*s, "txtMaximoZDiario")->text(), "0");
    retype(*s, "txtSerie", "CAJA02");
    retype(*s, "txtNumero", "2");
    retype(*s, "txtFondoCaja", "1.000,00");
    find<QComboBox>(*s, "cboImpresoraFiscal")->setCurrentText("HKA");
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(count("CAJAS"), 2);
    const auto c = readRegisterConfig(db(), "CAJA02");
    ASSERT_TRUE(c);
    EXPECT_EQ(c->fondoCaja, Decimal(1000));
    EXPECT_EQ(c->ultimaFactura, 0);
    EXPECT_EQ(m_session.serial, "CAJA02");
    EXPECT_EQ(m_session.numero, 2);
    EXPECT_EQ(find<QLineEdit>(*s, "txtSerie")->text(), "CAJA02");
}

// Pages of a PDF file: its page objects.
int pdfPages(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    const QString text = QString::fromLatin1(f.readAll());
    return int(text.count(QRegularExpression(QStringLiteral("/Type\\s*/Page(?!s)"))));
}

TEST_F(RegisterScreenTest, ThisStationsInvoicePrinterAndCopiesAreSavedAndPrintedWith) {
    test::ScriptedDialogs dialogs;
    // Unset, zero or negative copies print one.
    EXPECT_EQ(shell::settings::invoiceCopies(), 1);
    shell::settings::write("NumeroCopias", "0");
    EXPECT_EQ(shell::settings::invoiceCopies(), 1);
    shell::settings::write("NumeroCopias", "-3");
    EXPECT_EQ(shell::settings::invoiceCopies(), 1);

    auto s = open("CAJA01");
    auto* printer = find<QComboBox>(*s, "cboImpresoraFactura");
    auto* copies = find<QLineEdit>(*s, "txtNumeroCopias");
    EXPECT_TRUE(printer->isEditable());
    EXPECT_EQ(copies->text(), "1");
    ASSERT_TRUE(s->perform(Action::Modify));
    const QString pdf = m_settingsDir.filePath("factura.pdf");
    printer->setCurrentText(pdf);
    retype(*s, "txtNumeroCopias", "2");
    QTest::keyClicks(copies, "x");
    EXPECT_EQ(dialogs.lastText(), "Solo se permiten Valores numericos");
    EXPECT_EQ(copies->text(), "2");
    ASSERT_TRUE(s->perform(Action::Save)) << dialogs.texts().join('|').toStdString();
    EXPECT_EQ(shell::settings::invoicePrinter(), pdf);
    EXPECT_EQ(shell::settings::invoiceCopies(), 2);
    EXPECT_EQ(QSettings(QSettings::IniFormat, QSettings::UserScope, "ServidorOrvo")
                  .value("Orvo/NumeroCopias")
                  .toString(),
              "2");
    // Shown again as saved.
    auto again = open("CAJA01");
    EXPECT_EQ(find<QComboBox>(*again, "cboImpresoraFactura")->currentText(), pdf);
    EXPECT_EQ(find<QLineEdit>(*again, "txtNumeroCopias")->text(), "2");

    // The paper invoice follows them: the one file per invoice holds both copies, for a one-page
    // ticket and for a document of several pages alike.
    const QString ticket = "<html><body><p>FACTURA 12</p></body></html>";
    QString longer = "<html><body>";
    for (int i = 0; i < 150; ++i)
        longer += QStringLiteral("<p>LINEA %1</p>").arg(i);
    longer += "</body></html>";
    ASSERT_TRUE(pos::sale::printPaperInvoice(ticket, false, 12));
    ASSERT_TRUE(pos::sale::printPaperInvoice(longer, true, 14));
    shell::settings::saveInvoiceCopies(1);
    ASSERT_TRUE(pos::sale::printPaperInvoice(ticket, false, 13));
    ASSERT_TRUE(pos::sale::printPaperInvoice(longer, true, 15));
    const int ticketPages = pdfPages(m_settingsDir.filePath("factura_00000013.pdf"));
    const int longPages = pdfPages(m_settingsDir.filePath("factura_00000015.pdf"));
    EXPECT_EQ(ticketPages, 1);
    EXPECT_GT(longPages, 1);
    EXPECT_EQ(pdfPages(m_settingsDir.filePath("factura_00000012.pdf")), 2 * ticketPages);
    EXPECT_EQ(pdfPages(m_settingsDir.filePath("factura_00000014.pdf")), 2 * longPages);
}

} // namespace
