// Closing the register's day: each check stops it before anything is written or printed; a full
// closing prints one Z on the software printer, records it and backs up the database; a closing
// that failed after its Z completes on a second run without a second Z.
#include "cash_fixture.h"

#include "common/errors/errors.h"
#include "pos/cash/cash_closing.h"
#include "pos/cash/cash_day.h"
#include "pos/cash/cash_movements.h"
#include "pos/fiscal/register_printer.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::pos::cash;

namespace {

class CashClosingTest : public test::CashTest {
protected:
    void SetUp() override {
        CashTest::SetUp();
        OpeningRequest r;
        r.serial = kSerial;
        r.day = today();
        r.today = today();
        r.now = QDateTime::currentDateTime();
        openDayWith(db(), *m_printer, r);
        sell(1, "100.00");
        sell(2, "20.50");
    }
    ClosingRequest request(bool confirmed = true) const {
        ClosingRequest r;
        r.serial = kSerial;
        r.today = today();
        r.countedCash = Decimal::fromString(u"139.78"); // 116 + 23.78
        r.confirmed = confirmed;
        r.now = QDateTime(today(), QTime(20, 5));
        return r;
    }
    // The refusal's title and text; nothing printed, the day still selling.
    std::pair<QString, QString> refusal() {
        std::pair<QString, QString> out;
        try {
            closeDayWith(db(), *m_printer, request());
        } catch (const UserError& e) {
            out = {e.title(), e.text()};
        }
        EXPECT_EQ(m_emulator.memory().zCounter, 0);
        const QString day = "FROM DIARIOCAJA WHERE Serie = ? AND Fecha >= ?";
        const QDateTime start(today(), QTime(0, 0));
        EXPECT_EQ(scalar("SELECT Status " + day, {kSerial, start}).toInt(), 1);
        EXPECT_TRUE(scalar("SELECT NumeroReporteZ " + day, {kSerial, start}).isNull());
        EXPECT_EQ(count("DIARIOREPORTEZ"), 0);
        return out;
    }
    void refuseInsertsInto(const QString& table) {
        if (isPostgres()) {
            exec("CREATE OR REPLACE FUNCTION orvo_refuse_insert() RETURNS trigger AS $$ BEGIN "
                 "RAISE EXCEPTION 'sin espacio'; END $$ LANGUAGE plpgsql");
            exec(QString("CREATE TRIGGER tr_refuse_insert BEFORE INSERT ON %1 FOR EACH ROW "
                         "EXECUTE FUNCTION orvo_refuse_insert()")
                     .arg(table));
        } else {
            exec(QString("CREATE TRIGGER tr_refuse_insert BEFORE INSERT ON %1 BEGIN "
                         "SELECT RAISE(ABORT, 'sin espacio'); END")
                     .arg(table));
        }
    }
    void dropRefusal(const QString& table) {
        if (isPostgres())
            exec(QString("DROP TRIGGER tr_refuse_insert ON %1").arg(table));
        else
            exec("DROP TRIGGER tr_refuse_insert");
    }
    pos::fiscal::protocol::ZReport printersLastZ() {
        return *m_printer->callAndWait([](pos::fiscal::FiscalPrinter& p) { return p.lastZ(); });
    }
};

TEST_F(CashClosingTest, ParkedSaleUndepositedChequeOrAnotherRegisterStopTheClosing) {
    exec("INSERT INTO HISTVENTAS (Numero, Serie, Fecha, Cliente, Status) VALUES (1, ?, ?, "
         "'V1', 1)",
         {kSerial, QDateTime(today(), QTime(11, 0))});
    EXPECT_EQ(refusal(), std::make_pair(QString("Facturas Congeladas"),
                                        QString("Existen facturas pendientes por Descongelar\n"
                                                "El cierre de caja no se efectuara  ...")));
    exec("DELETE FROM HISTVENTAS");

    sell(3, "10.00", "2");
    EXPECT_EQ(refusal(),
              std::make_pair(QString("Cheques Pendientes por depositar"),
                             QString("Existen cheques pendientes por depositar. El cierre de "
                                     "caja no se efectuara ...")));
    Deposit d;
    d.numeroDeposito = "1";
    exec("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, Status) VALUES ('C1', 'B', 0, 1)");
    d.cuentaBanco = "C1";
    d.cheques = pendingCheques(db(), kSerial, today());
    addDeposit(db(), kSerial, today(), d, "ANA", QDateTime::currentDateTime());

    addDay("CAJA02", today().addDays(-1), 1);
    EXPECT_EQ(refusal(),
              std::make_pair(QString("Cajas sin cierre"),
                             QString("Existen cajas pendientes por su cierre\nPor favor "
                                     "asegurarse de realizar el cierre en todas las cajas.")));
    // A register whose open day comes after this one does not hold it back.
    exec("UPDATE DIARIOCAJA SET Fecha = ? WHERE Serie = 'CAJA02'",
         {QDateTime(today().addDays(1), QTime(0, 0))});
    const ClosingOutcome o = closeDayWith(db(), *m_printer, request());
    EXPECT_TRUE(o.closed);
}

TEST_F(CashClosingTest, DayStatesAndAZNumberAboveThePrintersAreRefused) {
    exec("UPDATE DIARIOCAJA SET Status = 0");
    try {
        closeDayWith(db(), *m_printer, request());
        ADD_FAILURE();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "              La caja no tiene movimientos registrados.\nElimine la "
                            "apertura de caja de fecha " +
                                dayText(today()));
    }
    exec("UPDATE DIARIOCAJA SET Status = 1");
    addDay(kSerial, today().addDays(-5), 2, 4);
    EXPECT_EQ(refusal(),
              std::make_pair(QString("VALIDAR Z ELECTRONICO"),
                             QString("Existe un numero de reporte Z en base de datos mayor al de "
                                     "la impresora\nEl cierre de caja no se efectuara por favor "
                                     "llame al departamento de SISTEMAS ...")));
    exec("DELETE FROM DIARIOCAJA");
    try {
        closeDayWith(db(), *m_printer, request());
        ADD_FAILURE();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "Caja sin Aperturar...!");
    }
}

TEST_F(CashClosingTest, QuestionsComeBeforeAnythingIsPrinted) {
    ClosingRequest r = request(false);
    r.countedCash = Decimal(100);
    ClosingOutcome o = closeDayWith(db(), *m_printer, r);
    EXPECT_EQ(o.question.question, ClosingQuestion::CashDifference);
    EXPECT_EQ(o.question.text,
              "Desea realizar el cierre con esta diferencia en el cuadre de caja?");
    EXPECT_EQ(o.question.title, "Cierre de Caja");
    r.differenceApproved = true;
    o = closeDayWith(db(), *m_printer, r);
    EXPECT_EQ(o.question.question, ClosingQuestion::Confirm);
    EXPECT_EQ(o.question.text, "Confirma el cierre de caja...?");
    EXPECT_EQ(o.question.title, "Cierre de caja");
    EXPECT_FALSE(o.closed);
    EXPECT_EQ(m_emulator.memory().zCounter, 0);
    EXPECT_TRUE(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").isNull());
}

TEST_F(CashClosingTest, AFullClosingPrintsOneZRecordsItAndBacksUp) {
    Withdrawal w;
    w.descripcion = "Agua";
    w.monto = Decimal(10);
    addWithdrawal(db(), kSerial, today(), w, "ANA", QDateTime::currentDateTime());
    ClosingRequest r = request();
    r.countedCash = Decimal::fromString(u"129.78");
    const auto figures = closingFigures(db(), kSerial);
    EXPECT_EQ(figures->sales.mercancia, Decimal::fromString(u"120.50"));
    EXPECT_EQ(figures->sales.impuesto, Decimal::fromString(u"19.28"));
    EXPECT_EQ(figures->expectedCash(), Decimal::fromString(u"129.78"));

    const ClosingOutcome o = closeDayWith(db(), *m_printer, r);
    ASSERT_TRUE(o.closed);
    EXPECT_EQ(o.zNumber, 1);
    EXPECT_TRUE(m_emulator.hasTicket("REPORTEZ_00000001.txt"));
    EXPECT_EQ(m_emulator.memory().zCounter, 1);

    const auto z = printersLastZ();
    EXPECT_EQ(z.invoices.total(), 13978); // what the printer accumulated, in cents
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 2);
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT ReporteZTexto FROM DIARIOCAJA").toString(),
              pos::fiscal::zReportText(z));
    ASSERT_EQ(count("DIARIOREPORTEZ"), 1);
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOREPORTEZ").toInt(), z.zNumber);
    EXPECT_EQ(scalar("SELECT ReporteZTexto FROM DIARIOREPORTEZ").toString(),
              pos::fiscal::zReportText(z));
    EXPECT_EQ(scalar("SELECT SerieImpresora FROM DIARIOREPORTEZ").toString(), kSerial);
    EXPECT_EQ(scalar("SELECT Serie FROM DIARIOREPORTEZ").toString(), kSerial);
    EXPECT_EQ(scalar("SELECT FechaReporteZ FROM DIARIOREPORTEZ").toDateTime(),
              QDateTime(z.zDate, z.zTime));
    EXPECT_EQ(scalar("SELECT FechaApertura FROM DIARIOREPORTEZ").toDateTime(),
              QDateTime(today(), QTime(0, 0)));
    EXPECT_EQ(scalar("SELECT HoraCierre FROM DIARIOCAJA").toDateTime(),
              QDateTime(today(), QTime(20, 5)));
    EXPECT_EQ(scalar("SELECT Status FROM SALIDASCAJA").toInt(), 1);
    EXPECT_TRUE(QFile::exists(o.backupFile)) << o.backupFile.toStdString();
    EXPECT_TRUE(o.backupFile.endsWith(today().toString("yyyyMMdd") + "_RESP.BAK"));

    // Closed is final: a second run is refused and prints nothing.
    try {
        closeDayWith(db(), *m_printer, r);
        ADD_FAILURE();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "El cierre de caja ya ha sido efectuado...!");
    }
    EXPECT_EQ(m_emulator.memory().zCounter, 1);
}

TEST_F(CashClosingTest, AClosingThatFailedAfterItsZCompletesWithoutASecondZ) {
    refuseInsertsInto("DIARIOREPORTEZ");
    ClosingRequest r = request();
    r.backup = false;
    EXPECT_THROW(closeDayWith(db(), *m_printer, r), DbError);
    // The Z is on paper and its number is reserved; nothing else was written.
    EXPECT_EQ(m_emulator.memory().zCounter, 1);
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 1);
    EXPECT_EQ(count("DIARIOREPORTEZ"), 0);

    dropRefusal("DIARIOREPORTEZ");
    const ClosingOutcome o = closeDayWith(db(), *m_printer, r);
    ASSERT_TRUE(o.closed);
    EXPECT_EQ(o.zNumber, 1);
    EXPECT_EQ(m_emulator.memory().zCounter, 1);
    EXPECT_FALSE(m_emulator.hasTicket("REPORTEZ_00000002.txt"));
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA").toInt(), 2);
    EXPECT_EQ(count("DIARIOREPORTEZ"), 1);
    EXPECT_EQ(scalar("SELECT ReporteZTexto FROM DIARIOREPORTEZ").toString(),
              pos::fiscal::zReportText(printersLastZ()));
}

TEST_F(CashClosingTest, AReservedZThatWasNeverPrintedIsPrintedOnTheNextRun) {
    // The printer fell silent right after the reservation: no Z on paper.
    ClosingRequest r = request();
    r.backup = false;
    const auto state =
        m_printer->callAndWait([](pos::fiscal::FiscalPrinter& p) { return readPrinterZState(p); });
    const ZReservation first = reserveClosingZ(db(), kSerial, today(), state);
    EXPECT_EQ(first.number, 1);
    EXPECT_FALSE(first.alreadyPrinted);
    EXPECT_EQ(m_emulator.memory().zCounter, 0);

    const ClosingOutcome o = closeDayWith(db(), *m_printer, r);
    ASSERT_TRUE(o.closed);
    EXPECT_EQ(o.zNumber, 1);
    EXPECT_TRUE(m_emulator.hasTicket("REPORTEZ_00000001.txt"));
    EXPECT_EQ(scalar("SELECT NumeroReporteZ FROM DIARIOCAJA").toInt(), 1);
}

} // namespace
