#include "pos/register/register_config.h"

#include "common/errors/errors.h"
#include "shell/session/session_context.h"
#include "support/test_db.h"

#include <QSettings>
#include <QTemporaryDir>

using namespace orvo;
using namespace orvo::pos::registers;

namespace {

class RegisterConfigTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
        exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, IdProcesoImpresion, "
             "MontoMaximoDiario, Status) VALUES (1, 'THE FACTORY HKA', 1, 1000, 1), "
             "(2, 'BIXOLON', 1, 2000, 1), (3, 'VIEJA', 1, 0, 0)");
    }

    static RegisterConfig sample(const QString& serie) {
        RegisterConfig c;
        c.serie = serie;
        c.numero = 3;
        c.fondoCaja = Decimal::fromString(u"1250.75");
        c.tipoListaPrecio = 2;
        c.tipoVenta = 1;
        c.tipoReporte = 2;
        c.permiteDescuento = true;
        c.permiteFacturarOrdenDespacho = false;
        c.permiteFacturasExentas = true;
        c.permiteAlternarListas = false;
        c.cambiarPrecios = true;
        c.requerirAutorizacion = true;
        c.idImpresoraFiscal = 2;
        c.permitirFacturaContingencia = true;
        c.maximoZDiario = 4;
        return c;
    }

    void TearDown() override {
        // Later tests keep their settings out of the user's real configuration too.
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           test::processTempDir() + "/settings");
        DbTest::TearDown();
    }

    QTemporaryDir m_settingsDir;
};

TEST_F(RegisterConfigTest, NewRegisterStoresEveryColumnWithCountersAtZero) {
    EXPECT_EQ(saveRegisterConfig(db(), sample("CAJA03"), true, false), SaveOutcome::Saved);
    const auto c = readRegisterConfig(db(), "CAJA03");
    ASSERT_TRUE(c);
    EXPECT_EQ(c->numero, 3);
    EXPECT_EQ(c->fondoCaja, Decimal::fromString(u"1250.75"));
    EXPECT_EQ(c->tipoListaPrecio, 2);
    EXPECT_EQ(c->tipoVenta, 1);
    EXPECT_EQ(c->tipoReporte, 2);
    EXPECT_TRUE(c->permiteDescuento);
    EXPECT_FALSE(c->permiteFacturarOrdenDespacho);
    EXPECT_TRUE(c->permiteFacturasExentas);
    EXPECT_FALSE(c->permiteAlternarListas);
    EXPECT_TRUE(c->cambiarPrecios);
    EXPECT_TRUE(c->requerirAutorizacion);
    EXPECT_EQ(c->idImpresoraFiscal, 2);
    EXPECT_TRUE(c->permitirFacturaContingencia);
    EXPECT_EQ(c->maximoZDiario, 4);
    EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS WHERE Serie = 'CAJA03'").toInt(), 0);
    EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS WHERE Serie = 'CAJA03'").toInt(), 0);
    EXPECT_FALSE(readRegisterConfig(db(), "OTRA"));
}

TEST_F(RegisterConfigTest, CreatingOverAnExistingSerieNeedsApprovalAndKeepsTheCounters) {
    exec("INSERT INTO CAJAS (Serie, Numero, FondoCaja, IdImpresoraFiscal, UltimaFactura, "
         "UltimaDevolucion, MaximoZDiario) VALUES ('CAJA03', 1, 100, 1, 57, 6, 1)");

    // Without the answer nothing changes.
    EXPECT_EQ(saveRegisterConfig(db(), sample("CAJA03"), true, false),
              SaveOutcome::NeedsOverwriteApproval);
    auto c = readRegisterConfig(db(), "CAJA03");
    EXPECT_EQ(c->numero, 1);
    EXPECT_EQ(c->idImpresoraFiscal, 1);
    EXPECT_EQ(c->fondoCaja, Decimal(100));

    // Approved: every column of the screen is overwritten, the counters are not.
    EXPECT_EQ(saveRegisterConfig(db(), sample("CAJA03"), true, true), SaveOutcome::Saved);
    c = readRegisterConfig(db(), "CAJA03");
    EXPECT_EQ(c->numero, 3);
    EXPECT_EQ(c->idImpresoraFiscal, 2);
    EXPECT_EQ(c->fondoCaja, Decimal::fromString(u"1250.75"));
    EXPECT_TRUE(c->requerirAutorizacion);
    EXPECT_EQ(c->ultimaFactura, 57);
    EXPECT_EQ(c->ultimaDevolucion, 6);
    EXPECT_EQ(count("CAJAS"), 1);

    // Modifying the register of this machine never asks.
    RegisterConfig changed = sample("CAJA03");
    changed.cambiarPrecios = false;
    changed.maximoZDiario = 0;
    EXPECT_EQ(saveRegisterConfig(db(), changed, false, false), SaveOutcome::Saved);
    c = readRegisterConfig(db(), "CAJA03");
    EXPECT_FALSE(c->cambiarPrecios);
    EXPECT_EQ(c->maximoZDiario, 0);
}

TEST_F(RegisterConfigTest, ARegisterNeedsASerieAndAPrinter) {
    RegisterConfig c = sample("  ");
    EXPECT_THROW(saveRegisterConfig(db(), c, true, false), UserError);
    c = sample("CAJA09");
    c.idImpresoraFiscal = 0;
    EXPECT_THROW(saveRegisterConfig(db(), c, true, false), UserError);
    EXPECT_EQ(count("CAJAS"), 0);
}

TEST_F(RegisterConfigTest, OnlyActivePrintersAreOfferedByName) {
    const auto printers = activeFiscalPrinters(db());
    ASSERT_EQ(printers.size(), 2);
    EXPECT_EQ(printers[0].id, 2);
    EXPECT_EQ(printers[0].name, "BIXOLON");
    EXPECT_EQ(printers[1].id, 1);
}

TEST_F(RegisterConfigTest, DailyZMaximumTakesDigitsOnly) {
    EXPECT_EQ(parseDailyZMaximum(""), 0);
    EXPECT_EQ(parseDailyZMaximum(" 12 "), 12);
    EXPECT_EQ(parseDailyZMaximum("007"), 7);
    for (const char* bad : {"12a", "-3", "1.5", "1,5", "+2", "x"}) {
        try {
            parseDailyZMaximum(QString::fromLatin1(bad));
            ADD_FAILURE() << bad << " was accepted";
        } catch (const UserError& e) {
            EXPECT_EQ(e.text(), "Solo se permiten Valores numericos") << bad;
        }
    }
}

TEST_F(RegisterConfigTest, BindingStoresTheSerieForThisMachineAndLoadsTheRegister) {
    saveRegisterConfig(db(), sample("CAJA03"), true, false);
    shell::SessionContext ctx;
    EXPECT_EQ(workstationSerial(), "");

    EXPECT_TRUE(bindWorkstation(db(), "CAJA03", ctx));
    EXPECT_TRUE(ctx.registerConfigured);
    EXPECT_EQ(ctx.serial, "CAJA03");
    EXPECT_EQ(ctx.numero, 3);
    EXPECT_EQ(ctx.idImpresoraFiscal, 2);
    EXPECT_EQ(shell::registerPanelText(ctx), "(Caja Nº 3)");
    // The setting lives in the per-user file of ServidorOrvo, group Orvo.
    QSettings file(m_settingsDir.filePath("ServidorOrvo.ini"), QSettings::IniFormat);
    EXPECT_EQ(file.value("Orvo/Serie").toString(), "CAJA03");
    EXPECT_EQ(workstationSerial(), "CAJA03");

    // A serie with no register leaves the machine unconfigured.
    EXPECT_FALSE(bindWorkstation(db(), "NOEXISTE", ctx));
    EXPECT_FALSE(ctx.registerConfigured);
    EXPECT_EQ(shell::registerPanelText(ctx), "(Estación sin configurar)");
    EXPECT_EQ(workstationSerial(), "NOEXISTE");
}

} // namespace
