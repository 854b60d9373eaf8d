#pragma once

#include "../../pos/fiscal/printer_on_emulator.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "shell/session/session_context.h"
#include "support/test_db.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

namespace orvo::test {

// A store whose register prints on the software printer, reached through a printer thread as
// the program does.
class FiscalScreenTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settingsDir.path());
        m_printer = printerThreadOn(m_emulator);
        exec("INSERT INTO PARAMETROS (Nombre, ControlFactura) VALUES ('TIENDA', 1)");
        exec("INSERT INTO IMPRESORAFISCAL (ID, NombreImpresora, Status) VALUES (1, 'HKA', 1)");
        exec("INSERT INTO CAJAS (Serie, Numero, IdImpresoraFiscal, UltimaFactura, "
             "UltimaDevolucion) VALUES ('Z1B0000001', 1, 1, 5, 3)");
        m_session.controlFactura = 1;
        shell::loadRegister(db(), "Z1B0000001", m_session);
    }
    void TearDown() override {
        m_printer.reset();
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           processTempDir() + "/settings");
        DbTest::TearDown();
    }
    QStringList tickets(const QString& pattern) const {
        return QDir(m_emulator.tools::fiscal::EmulatorThread::options().ticketsFolder)
            .entryList({pattern}, QDir::Files);
    }

    QTemporaryDir m_settingsDir;
    RunningEmulator m_emulator{200};
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> m_printer;
    shell::SessionContext m_session;
};

} // namespace orvo::test
