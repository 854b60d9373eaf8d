#pragma once

#include "common/decimal/decimal.h"
#include "common/jobs/job.h"
#include "pos/cash/cash_day.h"
#include "pos/fiscal/protocol/replies.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace orvo::pos::fiscal {
class FiscalPrinter;
class FiscalPrinterThread;
} // namespace orvo::pos::fiscal

// The closing of the register's day (frmCierreCaja).
//
// Order, so that a Z printed but not recorded is never printed twice:
//  1. checks on the database (nothing written), then the printer's Z counter against the
//     database's, then the screen's questions;
//  2. one transaction reserves the Z: DIARIOCAJA.NumeroReporteZ = the printer's next Z number;
//  3. the Z is printed (after that commit) and read back with U0Z;
//  4. one transaction records the Z (DIARIOCAJA, DIARIOREPORTEZ), settles withdrawals and
//     deposits and closes the day;
//  5. after commit: local backup, the store's export.
// When step 4 fails, running the closing again finds the reservation: if the printer's last Z
// has reached the reserved number and nothing fiscal was printed after it, that Z is the day's
// and is recorded without printing another one.
namespace orvo::pos::cash {

struct DayTotals {
    Decimal mercancia;
    Decimal descuento;
    Decimal impuesto;
    Decimal costo;
    Decimal igtf; // MontoIGTF: paid on top of the documents' amounts
    int documentos = 0;
    Decimal neto() const { return mercancia - descuento + impuesto; }
};

// What the closing screen shows of the register's latest day.
struct ClosingFigures {
    CashDay day;
    DayTotals sales;            // VENTAS
    DayTotals returns;          // DEVVENTAS
    Decimal fondoCaja;          // CAJAS.FondoCaja: the float the day started with
    Decimal cashPayments;       // PAGOSVENTA way 1, as stored (net of the change it gave)
    Decimal salesCash;          // what the invoices left in the drawer in local cash
    Decimal dollarPayments;     // EFECTIVO DOLAR rows, in dollars
    Decimal chequePayments;     // PAGOSVENTA way 2
    Decimal undepositedCheques; // of those, not deposited yet
    Decimal receivableCash;     // MOVCUENTASXCOBRAR TipoPago 1
    Decimal receivableCheques;  // MOVCUENTASXCOBRAR TipoPago 2
    Decimal withdrawals;        // SALIDASCAJA
    Decimal depositedCash;      // DEPOSITOS.TotalEfectivo
    Decimal depositedCheques;   // DEPOSITOS.TotalCheques

    // What must be in the drawer: local cash with the float, dollars, cheques.
    Decimal expectedCash() const {
        return fondoCaja + salesCash + receivableCash - withdrawals - depositedCash;
    }
    Decimal expectedDollars() const { return dollarPayments; }
    Decimal expectedCheques() const { return undepositedCheques + receivableCheques; }
};

// What the cashier counted in the drawer.
struct CountedCash {
    Decimal cash; // local currency, float included
    Decimal dollars;
    Decimal cheques;
};

// The latest day's figures; nothing before the register's first opening.
std::optional<ClosingFigures> closingFigures(const QSqlDatabase& db, const QString& serial);

// The database checks, in order, each a UserError with its title: no open day, day already
// closed, day without movements, parked sales, undeposited cheques, other registers not closed.
// Returns the figures and, in `notices`, what is only announced (a day older than today).
ClosingFigures checkClosing(const QSqlDatabase& db, const QString& serial, const QDate& today,
                            QStringList* notices);

// What the closing reads from the printer before the Z.
struct PrinterZState {
    bool answers = false;
    int lastZ = 0;
    int documentsSinceZ = 0; // invoices and credit notes printed since the last Z
    QString serial;
};
PrinterZState readPrinterZState(fiscal::FiscalPrinter& printer);

// "VALIDAR Z ELECTRONICO": no Z of the register in the database may be above the printer's.
// The day being closed is left out: its number may be a reservation not yet printed.
void checkZAgainstPrinter(const QSqlDatabase& db, const QString& serial, const QDate& day,
                          const PrinterZState& printer);

enum class ClosingQuestion { None, CashDifference, Confirm };
struct PendingQuestion {
    ClosingQuestion question = ClosingQuestion::None;
    QString text;
    QString title;
};
// The next question the screen must ask before the closing goes on; None when every answer is in.
PendingQuestion nextQuestion(const ClosingFigures& f, const CountedCash& counted,
                             bool differenceApproved, bool confirmed);

// Step 2: reserves the day's Z number in one transaction and returns it with whether the printer
// already holds that Z (a closing that failed after printing).
struct ZReservation {
    int number = 0;
    bool alreadyPrinted = false;
};
ZReservation reserveClosingZ(const QSqlDatabase& db, const QString& serial, const QDate& day,
                             const PrinterZState& printer);

// Step 3, on the printer's thread: prints the Z unless it is already printed, waits until the
// printer is ready and reads it back. Throws UserError when the printer refuses or is silent.
fiscal::protocol::ZReport printClosingZ(fiscal::FiscalPrinter& printer, bool alreadyPrinted,
                                        int readyTimeoutMs = 30000);

// Step 4: one transaction records the Z and closes the day.
void recordClosing(const QSqlDatabase& db, const QString& serial, const QDate& day,
                   const fiscal::protocol::ZReport& z, const QString& printerSerial,
                   const QDateTime& now);

// Step 5: the local backup of the database, <ORVO_HOME>/Respaldos/<base>_<yyyymmdd>_RESP.BAK,
// made on a job's thread with its own connection. When it has worked, call
// backupAfterClosingDone() on the screen's thread.
class ClosingBackupJob : public jobs::Job {
    Q_OBJECT
public:
    ClosingBackupJob(const QSqlDatabase& db, const QDate& day, QObject* parent = nullptr);
    const QString& file() const { return m_file; }

protected:
    void run(const QSqlDatabase& db) override;

private:
    QString m_file;
};
// The copy to an external device is owed again until the user makes it.
void backupAfterClosingDone();
// The backup for headless use: runs the job and waits for it. Returns the file written.
QString backupAfterClosing(const QSqlDatabase& db, const QDate& day);
QString backupFolder();

// The store's export to head office, as PARAMETROS.ComportamientoExportar says: on the desktop
// the export screens open and work on their own jobs; headless, the export and the mail run
// before this returns.
void startExportAfterClosing(const QSqlDatabase& db, const QString& serial, const QDate& day);

// Closing a register from another machine (frmCierreCajaForanea), when the register's own
// machine cannot: its printer is brought to this one. The registers offered are those other
// than `thisSerial` whose latest day is not closed, oldest day first.
QList<CashDay> foreignRegistersToClose(const QSqlDatabase& db, const QString& thisSerial);
// frmClaveCierreForaneo: the user and password typed must be an administrator's. Returns the
// user's code; throws UserError otherwise.
QString authoriseForeignClosing(const QSqlDatabase& db, const QString& user,
                                const QString& password);

struct ClosingRequest {
    QString serial;
    QDate today;
    CountedCash counted;
    bool differenceApproved = false;
    bool confirmed = false;
    QDateTime now;
    bool backup = true;
};
struct ClosingOutcome {
    PendingQuestion question; // set when the closing stopped for an answer
    bool closed = false;
    int zNumber = 0;
    QString backupFile;
    QStringList notices;
};
// The whole closing for headless use and tests, with the printer on its own thread.
ClosingOutcome closeDayWith(const QSqlDatabase& db, fiscal::FiscalPrinterThread& printer,
                            const ClosingRequest& request);

} // namespace orvo::pos::cash
