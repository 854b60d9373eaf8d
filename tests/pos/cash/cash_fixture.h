#pragma once

#include "pos/fiscal/fiscal_printer.h"
#include "pos/fiscal/payment_means.h"
#include "pos/fiscal/printer_on_emulator.h"

#include "common/db/sql.h"
#include "common/security/scrambler.h"
#include "support/app_home_guard.h"
#include "support/test_db.h"

#include <QDateTime>
#include <QSettings>
#include <QTemporaryDir>
#include <memory>

namespace orvo::test {

// A register "Z1B0000001" (the software printer's serial) whose workstation port is the software
// printer's pseudo-terminal, reached through the program's register printer; ORVO_HOME and the
// per-user settings in a fresh folder.
class CashTest : public DbTest {
protected:
    static constexpr const char* kSerial = "Z1B0000001";

    void SetUp() override {
        DbTest::SetUp();
        m_home = std::make_unique<AppHomeGuard>();
        exec("INSERT INTO CAJAS (Serie, Numero, FondoCaja, UltimaFactura, UltimaDevolucion) "
             "VALUES (?, 3, 100, 0, 0)",
             {kSerial});
        exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) "
             "VALUES ('CAJA02', 4, 0, 0)");
        exec("INSERT INTO IMPUESTOS (Codigo, Nombre, PorcentajeImpuesto) VALUES "
             "(1, 'GENERAL', 12), (2, 'REDUCIDA', 9), (4, 'EXENTO', 0)");
        m_printer = printerThreadOn(m_emulator);
    }
    void TearDown() override {
        m_printer.reset();
        m_home.reset();
        DbTest::TearDown();
    }

    static QDate today() { return QDate::currentDate(); }
    static QString dayText(const QDate& d) { return d.toString("dd/MM/yyyy"); }

    // A register day as another machine or an earlier run left it.
    void addDay(const QString& serial, const QDate& day, int status,
                const QVariant& zNumber = {}) const {
        exec("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, FacturaFinal, "
             "HoraApertura, Status, ReporteZTexto, NumeroReporteZ, Acumulado) "
             "VALUES (?, ?, 1, 0, 0, ?, ?, '', ?, 0)",
             {serial, QDateTime(day, QTime(0, 0)), QDateTime(day, QTime(8, 0)), status, zNumber});
    }

    // JEFE, an administrator, and CAJ1, a cashier, both with the password "1234".
    void addAdministratorAndCashier() const {
        exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES ('ADMI', 'ADMINISTRADOR'), "
             "('CAJERO', 'CAJEROS')");
        exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES "
             "('JEFE', 'JEFE', ?, 1), ('CAJ1', 'CAJ1', ?, 1)",
             {security::scramble("1234"), security::scramble("1234")});
        exec("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES ('JEFE', 'ADMI'), "
             "('CAJ1', 'CAJERO')");
    }

    // One cash invoice printed on the software printer and saved as the sale would save it.
    void sell(int number, const char* price, const QString& way = "1") {
        pos::fiscal::FiscalDocument doc;
        doc.clientId = "V12345678";
        doc.clientName = "MARIA PEREZ";
        doc.lines.append({Decimal::fromString(QString::fromLatin1(price)),
                          Decimal::fromString(u"16"), Decimal::fromString(u"1"), Decimal(),
                          "CAMISA", 1});
        doc.paymentMeans = pos::fiscal::defaultMeans(way.toInt(), {}).means;
        ASSERT_TRUE(m_printer->callAndWait(
            [doc](pos::fiscal::FiscalPrinter& p) { return p.printDocument(doc); }));
        const Decimal base = Decimal::fromString(QString::fromLatin1(price));
        const Decimal tax = (base * Decimal::fromString(u"0.16")).rounded(2);
        const QDateTime at(today(), QTime::currentTime());
        exec("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Cliente, FormaPago, "
             "TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, Status) "
             "VALUES (?, ?, ?, 'V12345678', ?, ?, 0, ?, 1, 1)",
             {number, kSerial, at, way, base.toVariant(2), tax.toVariant(2)});
        exec("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Fecha, Documento, "
             "Banco, Monto, Status) VALUES (?, ?, 1, ?, ?, ?, 'BANESCO', ?, 0)",
             {number, kSerial, way, at, way == "2" ? "CH-" + QString::number(number) : "",
              (base + tax).toVariant(2)});
        exec("UPDATE CAJAS SET UltimaFactura = ? WHERE Serie = ?", {number, kSerial});
        exec("UPDATE DIARIOCAJA SET Status = 1, FacturaFinal = ? WHERE Serie = ?",
             {number, kSerial});
    }

    std::unique_ptr<AppHomeGuard> m_home;
    RunningEmulator m_emulator;
    std::unique_ptr<pos::fiscal::FiscalPrinterThread> m_printer;
};

} // namespace orvo::test
