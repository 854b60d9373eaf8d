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
        r.counted.cash = Decimal::fromString(u"239.78"); // the float 100, 116 and 23.78
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

    // Another register selling on the same day closes on its own.
    addDay("CAJA02", today(), 1);
    addDay("CAJA02", today().addDays(-1), 1);
    EXPECT_EQ(refusal(),
              std::make_pair(QString("Cajas sin cierre"),
                             QString("Existen cajas pendientes por su cierre\nPor favor "
                                     "asegurarse de realizar el cierre en todas las cajas.")));
    exec("UPDATE DIARIOCAJA SET Status = 2 WHERE Serie = 'CAJA02' AND Fecha < ?",
         {QDateTime(today(), QTime(0, 0))});
    const ClosingOutcome o = closeDayWith(db(), *m_printer, request());
    EXPECT_TRUE(o.closed);
    EXPECT_EQ(count("DIARIOCAJA", "Serie = 'CAJA02' AND Status = 1"), 1);

    // And the other one closes after it, on its own printer.
    tools::fiscal::EmulatorOptions other;
    other.serial = "CAJA02";
    other.zBusyMs = 50;
    tools::fiscal::EmulatorThread otherPrinter(other);
    m_printer = test::printerThreadOn(otherPrinter);
    ClosingRequest r = request();
    r.serial = "CAJA02";
    r.counted.cash = Decimal();
    EXPECT_TRUE(closeDayWith(db(), *m_printer, r).closed);
    EXPECT_EQ(count("DIARIOCAJA", "Status <> 2"), 0);
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
    r.counted.cash = Decimal(100);
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
    r.counted.cash = Decimal::fromString(u"229.78");
    const auto figures = closingFigures(db(), kSerial);
    EXPECT_EQ(figures->sales.mercancia, Decimal::fromString(u"120.50"));
    EXPECT_EQ(figures->sales.impuesto, Decimal::fromString(u"19.28"));
    EXPECT_EQ(figures->expectedCash(), Decimal::fromString(u"229.78"));

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

namespace {

TEST_F(CashClosingTest, AnOlderOpenDayIsAnnouncedAndClosedUnderItsOwnDate) {
    // The register's day stayed open overnight: it is closed as that day.
    exec("UPDATE DIARIOCAJA SET Fecha = ?", {QDateTime(today().addDays(-1), QTime(0, 0))});
    exec("UPDATE VENTAS SET Fecha = ?", {QDateTime(today().addDays(-1), QTime(18, 0))});
    exec("UPDATE PAGOSVENTA SET Fecha = ?", {QDateTime(today().addDays(-1), QTime(18, 0))});
    ClosingRequest r = request();
    r.backup = false;
    const ClosingOutcome o = closeDayWith(db(), *m_printer, r);
    ASSERT_TRUE(o.closed);
    EXPECT_EQ(o.notices,
              QStringList{"La Fecha de Apertura de la Caja es anterior a la fecha actual del "
                          "Sistema."});
    EXPECT_EQ(scalar("SELECT FechaApertura FROM DIARIOREPORTEZ").toDateTime(),
              QDateTime(today().addDays(-1), QTime(0, 0)));
    // Today has no opening: closing again says so.
    try {
        closeDayWith(db(), *m_printer, r);
        ADD_FAILURE();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "No existe apertura de fecha " + dayText(today()) + "...!");
    }
}

} // namespace

namespace {

// The drawer on a day with every kind of money: the float, a dollar sale whose change came out
// of the local cash, a card sale with cash on top, receivable payments in cash and cheque, a
// withdrawal and a cash deposit.
TEST_F(CashClosingTest, TheDrawerHoldsTheFloatCashLessChangeDollarsAndCheques) {
    exec("INSERT INTO FORMAPAGO (Codigo, Nombre, Status) VALUES (1, 'EFECTIVO', 1), "
         "(2, 'CHEQUE', 1), (3, 'TARJETA DE DEBITO', 1), (11, 'EFECTIVO DOLAR', 1)");
    const QDateTime at(today(), QTime::currentTime());
    const auto invoice = [&](int number, const char* total) {
        exec("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Cliente, FormaPago, "
             "TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, TasaCambio, Status) "
             "VALUES (?, ?, ?, 'V1', '7', ?, 0, 0, 1, 40, 1)",
             {number, kSerial, at, Decimal::fromString(QString::fromLatin1(total)).toVariant(2)});
    };
    const auto payment = [&](int number, int item, const char* way, const char* amount) {
        exec("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Fecha, Monto, "
             "Status) VALUES (?, ?, ?, ?, ?, ?, 1)",
             {number, kSerial, item, way, at,
              Decimal::fromString(QString::fromLatin1(amount)).toVariant(2)});
    };
    // 116.00 paid with US$ 5 at 40: 84.00 of change left the local cash.
    invoice(3, "116.00");
    payment(3, 1, "11", "5");
    // 58.00 paid 50.00 by card and 10.00 in cash: the cash row keeps the 8.00 that stayed.
    invoice(4, "58.00");
    payment(4, 1, "3", "50");
    payment(4, 2, "1", "8");
    exec("INSERT INTO MOVCUENTASXCOBRAR (Numero, Item, TipoPago, MontoCancelado, Fecha, Serie, "
         "Status) VALUES (1, 1, 1, 30, ?, ?, 1), (1, 2, 2, 45, ?, ?, 1)",
         {at, kSerial, at, kSerial});
    Withdrawal w;
    w.descripcion = "Agua";
    w.monto = Decimal(10);
    addWithdrawal(db(), kSerial, today(), w, "ANA", at);
    exec("INSERT INTO CTABANCOS (Codigo, Nombre, PuntoVenta, Status) VALUES ('C1', 'B', 0, 1)");
    Deposit d;
    d.numeroDeposito = "77";
    d.cuentaBanco = "C1";
    d.totalEfectivo = Decimal(50);
    addDeposit(db(), kSerial, today(), d, "ANA", at);

    const auto f = closingFigures(db(), kSerial);
    ASSERT_TRUE(f);
    // 100 + 139.78 + (116 - 200) + 8 + 30 - 10 - 50
    EXPECT_EQ(f->expectedCash().toString(2), "133.78");
    EXPECT_EQ(f->expectedDollars().toString(2), "5.00");
    EXPECT_EQ(f->expectedCheques().toString(2), "45.00");

    CountedCash right{Decimal::fromString(u"133.78"), Decimal(5), Decimal(45)};
    EXPECT_EQ(nextQuestion(*f, right, false, false).question, ClosingQuestion::Confirm);
    for (Decimal CountedCash::*kind :
         {&CountedCash::cash, &CountedCash::dollars, &CountedCash::cheques}) {
        CountedCash off = right;
        off.*kind += Decimal::fromString(u"0.01");
        EXPECT_EQ(nextQuestion(*f, off, false, false).question, ClosingQuestion::CashDifference);
        EXPECT_EQ(nextQuestion(*f, off, true, false).question, ClosingQuestion::Confirm);
    }

    ClosingRequest r = request();
    r.counted = right;
    r.backup = false;
    EXPECT_TRUE(closeDayWith(db(), *m_printer, r).closed);
}

// Another machine's register is closed from here with its printer brought over: only registers
// whose latest day is still open are offered, an administrator's key is needed, and the Z must
// come from that register's own printer.
TEST_F(CashClosingTest, AnotherMachinesRegisterIsClosedHereOnItsOwnPrinter) {
    addDay("CAJA02", today().addDays(-1), 1);
    exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) "
         "VALUES ('CAJA03', 5, 0, 0)");
    addDay("CAJA03", today().addDays(-2), 2, 1);

    const QList<CashDay> fromCaja02 = foreignRegistersToClose(db(), "CAJA02");
    ASSERT_EQ(fromCaja02.size(), 1);
    EXPECT_EQ(fromCaja02.first().serie, kSerial);
    const QList<CashDay> fromHere = foreignRegistersToClose(db(), kSerial);
    ASSERT_EQ(fromHere.size(), 1);
    EXPECT_EQ(fromHere.first().serie, "CAJA02");

    addAdministratorAndCashier();
    EXPECT_EQ(authoriseForeignClosing(db(), "JEFE", "1234"), "JEFE");
    for (const auto& [user, password] :
         {std::pair<QString, QString>{"CAJ1", "1234"}, {"JEFE", "0000"}}) {
        EXPECT_THROW(authoriseForeignClosing(db(), user, password), UserError)
            << user.toStdString();
    }

    // CAJA02's day cannot be closed on this register's printer.
    ClosingRequest r = request();
    r.serial = "CAJA02";
    r.today = today();
    r.counted = {};
    r.backup = false;
    try {
        closeDayWith(db(), *m_printer, r);
        ADD_FAILURE();
    } catch (const UserError& e) {
        EXPECT_EQ(e.text(), "La serie de la impresora no conicide con la serie de la caja...!");
    }
    EXPECT_EQ(m_emulator.memory().zCounter, 0);
    EXPECT_EQ(scalar("SELECT Status FROM DIARIOCAJA WHERE Serie = 'CAJA02'").toInt(), 1);
}

} // namespace
