// A store set up from zero with two registers on one database, each machine with its own
// connection and its own fiscal printer: both open and sell the same day on their own numbers;
// a printer of another company is refused at the opening; a closing reports the day's invoices.
#include "pos/fiscal/port_finder.h"
#include "pos/fiscal/register_printer.h"
#include "pos/fiscal/running_emulator.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/cash/cash_closing.h"
#include "pos/cash/cash_day.h"
#include "pos/cash/closing_report.h"
#include "pos/register/register_config.h"
#include "pos/sale/sale.h"
#include "pos/sale/sale_print.h"
#include "shell/session/session_context.h"
#include "shell/setup/store_setup.h"
#include "support/test_db.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos;

namespace {

QString refusal(const std::function<void()>& f) {
    try {
        f();
    } catch (const UserError& e) {
        return e.text();
    }
    return QStringLiteral("(no refusal)");
}

tools::fiscal::EmulatorOptions printerOf(const QString& serial, const QString& rif) {
    tools::fiscal::EmulatorOptions o;
    o.serial = serial;
    o.rif = rif;
    o.zBusyMs = 50;
    return o;
}

// One machine: its connection to the store, its session and its printer.
struct Machine {
    QSqlDatabase db;
    shell::SessionContext ctx;
    std::unique_ptr<fiscal::FiscalPrinterThread> printer;
    QString port; // the machine's PuertoFiscal
};

class TwoRegisters : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        m_oldHome = qgetenv("ORVO_HOME");
        qputenv("ORVO_HOME", m_home.path().toUtf8());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_home.path());
        shell::setup::initializeStore(db(), {"LA ESQUINA, C.A.", "J-29876543-1", "01"});
        exec("INSERT INTO TRABAJADORES (Cedula, Codigo, Nombre, Cargo, Status) VALUES ('V1', "
             "'001', 'ANA', '003', 1)");
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
             "CodigoColor, TipoImpuesto, PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, "
             "PrecioPromocion, Existencia, CostoPromedio, UltimoCosto, Tipo, Status) VALUES "
             "('7590000000017', 'FRANELA BASICA', 'FR-1', '0', 'M', '0', 1, 100, 80, 90, 0, 0, "
             "20, 50, 0, 0, 1)");
        for (int number : {1, 2}) {
            registers::RegisterConfig c;
            c.serie = QStringLiteral("CAJA%1").arg(number, 6, 10, QLatin1Char('0'));
            c.numero = number;
            c.tipoListaPrecio = 1;
            c.tipoVenta = 1;
            c.tipoReporte = 1;
            c.idImpresoraFiscal = 1;
            ASSERT_EQ(registers::saveRegisterConfig(db(), c, true, false),
                      registers::SaveOutcome::Saved);
        }
    }
    void TearDown() override {
        m_machines.clear();
        m_emulators.clear();
        if (m_oldHome.isEmpty())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", m_oldHome);
        DbTest::TearDown();
    }

    Machine& machine(const QString& serial, const QString& printerRif = "J298765431") {
        m_emulators.push_back(
            std::make_unique<tools::fiscal::EmulatorThread>(printerOf(serial, printerRif)));
        auto m = std::make_unique<Machine>();
        m->db = m_machines.empty() ? db() : testDb().openAnother("machine_" + serial);
        m->ctx.serial = serial;
        shell::loadSession(m->db, m->ctx);
        m->ctx.userCode = QStringLiteral("CAJ");
        // The register's printer as the program builds it; it opens this machine's port at its
        // first call (the opening) and keeps it.
        m->port = m_emulators.back()->device();
        m->printer = fiscal::makeRegisterPrinter(test::fastTiming());
        m_machines.push_back(std::move(m));
        return *m_machines.back();
    }
    tools::fiscal::EmulatorThread& emulatorOf(const Machine& m) {
        for (size_t i = 0; i < m_machines.size(); ++i)
            if (m_machines[i].get() == &m)
                return *m_emulators[i];
        throw std::logic_error("no such machine");
    }

    static cash::CashDay open(Machine& m) {
        cash::OpeningRequest r;
        r.serial = m.ctx.serial;
        r.day = r.today = QDate::currentDate();
        r.now = QDateTime::currentDateTime();
        r.controlFactura = m.ctx.controlFactura;
        fiscal::saveConfiguredPort(m.port); // `orvo fiscal-port` on that machine
        return cash::openDayWith(m.db, *m.printer, r);
    }

    // One franela paid in cash, saved and printed as the sale screen does.
    static long long sell(Machine& m) {
        sale::SaleDraft draft = sale::newDraft(m.db, m.ctx);
        draft.setClient(*sale::findClient(m.db, QStringLiteral("V00000000")));
        draft.setSeller(sale::findSeller(m.db, QStringLiteral("001")));
        const auto found = sale::lookupArticles(m.db, QStringLiteral("7590000000017"));
        EXPECT_EQ(found.size(), 1);
        sale::addArticle(draft, found.at(0));
        payments::PaymentRow cash;
        cash.way = QStringLiteral("EFECTIVO");
        cash.amount = Decimal(116);
        draft.setPayments({cash}, Decimal(116), Decimal(36));
        sale::ThreadSalePrinter printer(*m.printer);
        const sale::AcceptResult r = sale::acceptSale(m.db, m.ctx, draft, &printer);
        EXPECT_EQ(r.status, sale::AcceptResult::Status::Saved);
        const sale::PrintResult p = sale::printSale(m.db, m.ctx, r.number, false, &printer, {});
        EXPECT_TRUE(p.ok()) << p.error.toStdString();
        return r.number;
    }

    QTemporaryDir m_home;
    QByteArray m_oldHome;
    std::vector<std::unique_ptr<tools::fiscal::EmulatorThread>> m_emulators;
    std::vector<std::unique_ptr<Machine>> m_machines;
};

} // namespace

TEST_F(TwoRegisters, BothOpenAndSellTheSameDayEachOnItsOwnNumbers) {
    // A third register may not take a number in use.
    registers::RegisterConfig third;
    third.serie = QStringLiteral("CAJA000003");
    third.numero = 2;
    third.idImpresoraFiscal = 1;
    EXPECT_EQ(refusal([&] { registers::saveRegisterConfig(db(), third, true, false); }),
              QString::fromUtf8("El número de caja 2 ya es de la caja CAJA000002...!"));
    EXPECT_EQ(registers::nextRegisterNumber(db()), 3);

    Machine& first = machine("CAJA000001");
    Machine& second = machine("CAJA000002");
    EXPECT_EQ(shell::registerPanelText(first.ctx), QString::fromUtf8("(Caja Nº 1)"));
    EXPECT_EQ(shell::registerPanelText(second.ctx), QString::fromUtf8("(Caja Nº 2)"));
    open(first);
    open(second);

    EXPECT_EQ(sell(first), 1);
    EXPECT_EQ(sell(second), 1);
    EXPECT_EQ(sell(second), 2);
    EXPECT_EQ(count("VENTAS", "Serie = 'CAJA000001'"), 1);
    EXPECT_EQ(count("VENTAS", "Serie = 'CAJA000002'"), 2);
    EXPECT_EQ(scalar("SELECT FacturaFinal FROM DIARIOCAJA WHERE Serie = 'CAJA000002'").toInt(), 2);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT Existencia FROM INVENTARIO")), Decimal(17));
    EXPECT_TRUE(emulatorOf(first).hasTicket("FACTURA_00000001.txt"));
    EXPECT_FALSE(emulatorOf(first).hasTicket("FACTURA_00000002.txt"));
    const QString ticket = emulatorOf(second).ticket("FACTURA_00000002.txt");
    EXPECT_TRUE(ticket.contains("RIF: J298765431")) << ticket.toStdString();
    EXPECT_TRUE(ticket.contains("FRANELA BASICA")) << ticket.toStdString();
}

TEST_F(TwoRegisters, APrinterOfAnotherCompanyIsRefusedAndTheClosingCountsTheDaysInvoices) {
    Machine& foreign = machine("CAJA000001", "J000000001");
    EXPECT_EQ(refusal([&] { open(foreign); }),
              QString::fromUtf8("El RIF de la impresora fiscal (J000000001) no corresponde con el "
                                "RIF de la empresa (J-29876543-1)...!"));
    EXPECT_EQ(count("DIARIOCAJA"), 0);

    Machine& own = machine("CAJA000002");
    open(own);
    sell(own);
    sell(own);
    cash::ClosingRequest r;
    r.serial = own.ctx.serial;
    r.today = QDate::currentDate();
    r.counted.cash = Decimal(232);
    r.confirmed = true;
    r.now = QDateTime::currentDateTime();
    const cash::ClosingOutcome closed = cash::closeDayWith(own.db, *own.printer, r);
    ASSERT_TRUE(closed.closed);
    EXPECT_TRUE(QFile::exists(closed.backupFile)) << closed.backupFile.toStdString();
    EXPECT_TRUE(closed.backupFile.startsWith(m_home.filePath("Respaldos/")));
    const QString report =
        cash::closingReportHtml(own.db, own.ctx.serial, r.today, own.ctx.nombre, r.counted);
    EXPECT_TRUE(report.contains("Facturas 1 a 2")) << report.toStdString();
}
