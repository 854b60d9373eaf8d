#include "pos/cash/cash_closing.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/export/closing_export.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/fiscal/register_printer.h"
#include "pos/payments/payment_rules.h"
#include "shell/login/login.h"
#include "shell/startup/app_home.h"
#include "shell/startup/external_backup.h"
#include "shell/startup/user_settings.h"
#include "shell/users/roles.h"

#include <algorithm>

namespace orvo::pos::cash {

using db::Sql;

namespace {

const QString kCash = QStringLiteral("1");
const QString kCheque = QStringLiteral("2");
constexpr int kDepositedCheque = 2; // PAGOSVENTA.Status of a cheque taken to the bank

// Amounts are added here, not by SUM(): SQLite would add them in binary floating point.
Decimal sumOf(const QSqlDatabase& db, const QString& statement,
              std::initializer_list<QVariant> values, int* rows = nullptr) {
    Sql q(db, statement);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    Decimal total;
    int n = 0;
    while (q.next()) {
        total = total + q.decimal(QStringLiteral("Monto"));
        ++n;
    }
    if (rows)
        *rows = n;
    return total;
}

DayTotals totalsOf(const QSqlDatabase& db, const QString& table, const QString& serial,
                   const QDate& day) {
    Sql q(db, QStringLiteral("SELECT TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, "
                             "MontoIGTF FROM %1 WHERE Serie = ? AND Fecha >= ? AND Fecha < ?")
                  .arg(table));
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
    DayTotals t;
    while (q.next()) {
        t.mercancia = t.mercancia + q.decimal(QStringLiteral("TotalMercancia"));
        t.descuento = t.descuento + q.decimal(QStringLiteral("TotalDescuento"));
        t.impuesto = t.impuesto + q.decimal(QStringLiteral("TotalImpuesto"));
        t.costo = t.costo + q.decimal(QStringLiteral("TotalCosto"));
        t.igtf = t.igtf + q.decimal(QStringLiteral("MontoIGTF"));
        ++t.documentos;
    }
    return t;
}

bool dayHas(const QSqlDatabase& db, const QString& statement, const QString& serial,
            const QDate& day, std::initializer_list<QVariant> more = {}) {
    Sql q(db, statement);
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day));
    for (const QVariant& v : more)
        q.bind(v);
    q.exec();
    return q.next();
}

// The day's sale payments. Cash (way 1) rows hold what stayed after the change they gave; a
// change larger than them (a card or dollars over the total) came out of the local cash too, so
// each paid invoice leaves in local cash its total (with the IGTF the client paid on top) less
// what was paid otherwise.
void addPayments(const QSqlDatabase& db, const QString& serial, const QDate& day,
                 ClosingFigures& f) {
    Sql q(db, QStringLiteral("SELECT P.NumeroFactura, P.FormaPago, P.Monto, P.Status, "
                             "F.Nombre, V.TotalMercancia, V.TotalDescuento, V.TotalImpuesto, "
                             "V.TasaCambio, V.MontoIGTF FROM PAGOSVENTA P "
                             "INNER JOIN VENTAS V ON V.NumeroFactura = P.NumeroFactura AND "
                             "V.Serie = P.Serie "
                             "LEFT JOIN FORMAPAGO F ON CAST(F.Codigo AS VARCHAR(10)) = P.FormaPago "
                             "WHERE P.Serie = ? AND P.Fecha >= ? AND P.Fecha < ? "
                             "ORDER BY P.NumeroFactura"));
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
    long long invoice = -1;
    Decimal left;
    while (q.next()) {
        const long long number = q.value(QStringLiteral("NumeroFactura")).toLongLong();
        if (number != invoice) {
            f.salesCash += left;
            invoice = number;
            left = q.decimal(QStringLiteral("TotalMercancia")) -
                   q.decimal(QStringLiteral("TotalDescuento")) +
                   q.decimal(QStringLiteral("TotalImpuesto")) +
                   q.decimal(QStringLiteral("MontoIGTF"));
        }
        const QString way = q.text(QStringLiteral("FormaPago")).trimmed();
        const Decimal amount = q.decimal(QStringLiteral("Monto"));
        if (way == kCash) {
            f.cashPayments += amount;
            continue;
        }
        if (q.text(QStringLiteral("Nombre")).trimmed() == payments::kCashDollar) {
            f.dollarPayments += amount;
            left -= (amount * q.decimal(QStringLiteral("TasaCambio"))).rounded(2);
            continue;
        }
        left -= amount;
        if (way == kCheque) {
            f.chequePayments += amount;
            if (q.integer(QStringLiteral("Status")) != kDepositedCheque)
                f.undepositedCheques += amount;
        }
    }
    f.salesCash += left;
}

} // namespace

std::optional<ClosingFigures> closingFigures(const QSqlDatabase& db, const QString& serial) {
    const auto day = latestDay(db, serial);
    if (!day)
        return std::nullopt;
    ClosingFigures f;
    f.day = *day;
    const QDate d = day->fecha;
    const QVariant from = db::dayStart(d), to = db::nextDayStart(d);
    f.sales = totalsOf(db, QStringLiteral("VENTAS"), serial, d);
    f.returns = totalsOf(db, QStringLiteral("DEVVENTAS"), serial, d);
    f.fondoCaja = Decimal::fromVariant(
        db::scalar(db, QStringLiteral("SELECT FondoCaja FROM CAJAS WHERE Serie = ?"), {serial}));
    addPayments(db, serial, d, f);
    const QString receivable = QStringLiteral(
        "SELECT MontoCancelado AS Monto FROM MOVCUENTASXCOBRAR WHERE Serie = ? AND Fecha >= ? "
        "AND Fecha < ? AND TipoPago = ?");
    f.receivableCash = sumOf(db, receivable, {serial, from, to, 1});
    f.receivableCheques = sumOf(db, receivable, {serial, from, to, 2});
    f.withdrawals = sumOf(db,
                          QStringLiteral("SELECT Monto FROM SALIDASCAJA WHERE Serie = ? AND "
                                         "Fecha >= ? AND Fecha < ?"),
                          {serial, from, to});
    f.depositedCash = sumOf(db,
                            QStringLiteral("SELECT TotalEfectivo AS Monto FROM DEPOSITOS WHERE "
                                           "Serie = ? AND Fecha >= ? AND Fecha < ?"),
                            {serial, from, to});
    f.depositedCheques = sumOf(db,
                               QStringLiteral("SELECT TotalCheques AS Monto FROM DEPOSITOS WHERE "
                                              "Serie = ? AND Fecha >= ? AND Fecha < ?"),
                               {serial, from, to});
    return f;
}

ClosingFigures checkClosing(const QSqlDatabase& db, const QString& serial, const QDate& today,
                            QStringList* notices) {
    const auto figures = closingFigures(db, serial);
    if (!figures)
        throw UserError(QStringLiteral("Caja sin Aperturar...!"));
    const CashDay& day = figures->day;
    if (day.status == 2) {
        if (day.fecha >= today)
            throw UserError(QStringLiteral("El cierre de caja ya ha sido efectuado...!"));
        throw UserError(QStringLiteral("No existe apertura de fecha ") + dayText(today) +
                        QStringLiteral("...!"));
    }
    if (day.status == 0)
        throw UserError(QStringLiteral("              La caja no tiene movimientos registrados.") +
                        QLatin1Char('\n') +
                        QStringLiteral("Elimine la apertura de caja de fecha ") +
                        dayText(day.fecha));
    if (notices && day.fecha < today)
        notices->append(QStringLiteral(
            "La Fecha de Apertura de la Caja es anterior a la fecha actual del Sistema."));

    if (dayHas(db,
               QStringLiteral("SELECT 1 FROM HISTVENTAS WHERE Serie = ? AND Fecha >= ? AND "
                              "Fecha < ?"),
               serial, day.fecha))
        throw UserError(QStringLiteral("Existen facturas pendientes por Descongelar\nEl cierre "
                                       "de caja no se efectuara  ..."),
                        QStringLiteral("Facturas Congeladas"));
    if (dayHas(db,
               QStringLiteral("SELECT 1 FROM PAGOSVENTA WHERE Serie = ? AND Fecha >= ? AND "
                              "Fecha < ? AND FormaPago = ? AND COALESCE(Status, 0) <> 2"),
               serial, day.fecha, {kCheque}))
        throw UserError(QStringLiteral("Existen cheques pendientes por depositar. El cierre de "
                                       "caja no se efectuara ..."),
                        QStringLiteral("Cheques Pendientes por depositar"));
    // Only an earlier day of another register holds this one back: registers open on the same
    // day close each in turn.
    if (db::exists(db,
                   QStringLiteral("SELECT Serie FROM DIARIOCAJA WHERE Fecha < ? AND Serie <> ? "
                                  "AND COALESCE(Status, 0) <> 2"),
                   {db::dayStart(day.fecha), serial}))
        throw UserError(QStringLiteral("Existen cajas pendientes por su cierre\nPor favor "
                                       "asegurarse de realizar el cierre en todas las cajas."),
                        QStringLiteral("Cajas sin cierre"));
    return *figures;
}

PrinterZState readPrinterZState(fiscal::FiscalPrinter& printer) {
    PrinterZState s;
    if (!printer.isOpen() || !printer.probe())
        return s;
    const auto last = printer.lastZNumber();
    const auto s1 = printer.readS1();
    if (!last || !s1)
        return s;
    s.answers = true;
    s.lastZ = *last;
    s.documentsSinceZ = s1->invoicesToday + s1->creditNotesToday;
    s.serial = s1->serial;
    return s;
}

void checkZAgainstPrinter(const QSqlDatabase& db, const QString& serial, const QDate& day,
                          const PrinterZState& printer) {
    if (!printer.answers)
        throw UserError(QStringLiteral("No existe comunicación con la impresora fiscal...!"));
    // The Z goes on the register's own printer: a register is known by its printer's serial.
    if (printer.serial.trimmed() != serial.trimmed())
        throw UserError(
            QStringLiteral("La serie de la impresora no conicide con la serie de la caja...!"));
    const QVariant highest =
        db::scalar(db,
                   QStringLiteral("SELECT MAX(NumeroReporteZ) FROM DIARIOCAJA WHERE Serie = ? "
                                  "AND NOT (Fecha >= ? AND Fecha < ?)"),
                   {serial, db::dayStart(day), db::nextDayStart(day)});
    if (!highest.isNull() && highest.toInt() > printer.lastZ)
        throw UserError(QStringLiteral("Existe un numero de reporte Z en base de datos mayor al "
                                       "de la impresora\nEl cierre de caja no se efectuara por "
                                       "favor llame al departamento de SISTEMAS ..."),
                        QStringLiteral("VALIDAR Z ELECTRONICO"));
}

PendingQuestion nextQuestion(const ClosingFigures& f, const CountedCash& counted,
                             bool differenceApproved, bool confirmed) {
    const bool differs = counted.cash.rounded(2) != f.expectedCash().rounded(2) ||
                         counted.dollars.rounded(2) != f.expectedDollars().rounded(2) ||
                         counted.cheques.rounded(2) != f.expectedCheques().rounded(2);
    if (differs && !differenceApproved)
        return {
            ClosingQuestion::CashDifference,
            QStringLiteral("Desea realizar el cierre con esta diferencia en el cuadre de caja?"),
            QStringLiteral("Cierre de Caja")};
    if (!confirmed)
        return {ClosingQuestion::Confirm, QStringLiteral("Confirma el cierre de caja...?"),
                QStringLiteral("Cierre de caja")};
    return {};
}

ZReservation reserveClosingZ(const QSqlDatabase& db, const QString& serial, const QDate& day,
                             const PrinterZState& printer) {
    db::Transaction tx(db);
    const auto d = dayOf(db, serial, day);
    if (!d)
        throw UserError(QStringLiteral("No existe apertura de fecha ") + dayText(day) +
                        QStringLiteral("...!"));
    if (d->status == 2)
        throw UserError(QStringLiteral("El cierre de caja ya ha sido efectuado...!"));
    // A reservation left by a closing that stopped: the printer tells whether its Z was made.
    if (d->numeroReporteZ && *d->numeroReporteZ > 0 && printer.lastZ >= *d->numeroReporteZ &&
        printer.documentsSinceZ == 0)
        return {*d->numeroReporteZ, true};
    const int next = printer.lastZ + 1;
    db::execute(db,
                QStringLiteral("UPDATE DIARIOCAJA SET NumeroReporteZ = ? WHERE Serie = ? AND "
                               "Fecha >= ? AND Fecha < ?"),
                {next, serial, db::dayStart(day), db::nextDayStart(day)});
    tx.commit();
    return {next, false};
}

fiscal::protocol::ZReport printClosingZ(fiscal::FiscalPrinter& printer, bool alreadyPrinted,
                                        int readyTimeoutMs) {
    const auto refused = [&printer] {
        const QString why = printer.errorText();
        return UserError(why.isEmpty()
                             ? QStringLiteral("No existe comunicación con la impresora fiscal...!")
                             : why);
    };
    if (!alreadyPrinted) {
        if (!printer.printZReport())
            throw refused();
        // The printer stays busy while it prints the Z.
        if (!printer.waitUntilReady(readyTimeoutMs))
            throw refused();
    }
    const auto z = printer.lastZ();
    if (!z)
        throw refused();
    return *z;
}

void recordClosing(const QSqlDatabase& db, const QString& serial, const QDate& day,
                   const fiscal::protocol::ZReport& z, const QString& printerSerial,
                   const QDateTime& now) {
    db::Transaction tx(db);
    const auto d = dayOf(db, serial, day);
    if (!d || d->status == 2)
        throw UserError(QStringLiteral("El cierre de caja ya ha sido efectuado...!"));
    const QVariant from = db::dayStart(day), to = db::nextDayStart(day);
    const QString text = fiscal::zReportText(z);
    db::execute(db,
                QStringLiteral("UPDATE DIARIOCAJA SET NumeroReporteZ = ?, ReporteZTexto = ? "
                               "WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"),
                {z.zNumber, text, serial, from, to});
    db::execute(db,
                QStringLiteral("INSERT INTO DIARIOREPORTEZ (FechaApertura, SerieImpresora, "
                               "NumeroReporteZ, ReporteZTexto, FechaReporteZ, Serie) "
                               "VALUES (?, ?, ?, ?, ?, ?)"),
                {from, printerSerial, z.zNumber, text, QDateTime(z.zDate, z.zTime), serial});
    db::execute(db,
                QStringLiteral("UPDATE SALIDASCAJA SET Status = 1 WHERE Serie = ? AND Fecha >= ? "
                               "AND Fecha < ?"),
                {serial, from, to});
    db::execute(db,
                QStringLiteral("UPDATE DEPOSITOS SET Status = 1 WHERE Serie = ? AND Fecha >= ? "
                               "AND Fecha < ?"),
                {serial, from, to});
    db::execute(db,
                QStringLiteral("UPDATE DIARIOCAJA SET Status = 2, HoraCierre = ? WHERE Serie = ? "
                               "AND Fecha >= ? AND Fecha < ?"),
                {now, serial, from, to});
    tx.commit();
}

QString backupFolder() {
    return shell::appHome() + QStringLiteral("/Respaldos");
}

ClosingBackupJob::ClosingBackupJob(const QSqlDatabase& db, const QDate& day, QObject* parent)
    : jobs::Job(db, parent), m_file(shell::backupFileName(backupFolder(), db, day)) {}

void ClosingBackupJob::run(const QSqlDatabase& db) {
    const QString label = QStringLiteral("Realizando respaldo local de la base de datos..");
    report(0, label);
    shell::backupDatabase(db, m_file);
    report(100, label);
}

void backupAfterClosingDone() {
    shell::settings::write(QStringLiteral("RespaldoExternoUltimoCierre"), QStringLiteral("0"));
}

QString backupAfterClosing(const QSqlDatabase& db, const QDate& day) {
    ClosingBackupJob job(db, day);
    job.start();
    job.wait();
    if (!job.succeeded())
        throw UserError(job.error());
    backupAfterClosingDone();
    return job.file();
}

QList<CashDay> foreignRegistersToClose(const QSqlDatabase& db, const QString& thisSerial) {
    Sql q(db, QStringLiteral("SELECT Serie FROM CAJAS WHERE Serie <> ? ORDER BY Serie"));
    q.bind(thisSerial).exec();
    // Read whole before the next statement: PostgreSQL streams rows one at a time.
    QStringList serials;
    while (q.next())
        serials << q.text(QStringLiteral("Serie"));
    QList<CashDay> out;
    for (const QString& serial : serials) {
        const auto day = latestDay(db, serial);
        if (day && day->status != 2)
            out << *day;
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const CashDay& a, const CashDay& b) { return a.fecha < b.fecha; });
    return out;
}

QString authoriseForeignClosing(const QSqlDatabase& db, const QString& user,
                                const QString& password) {
    const shell::LoggedUser who = shell::checkLogin(db, user, password);
    if (!shell::users::isAdministrator(db, who.code))
        throw UserError(
            QStringLiteral("Usuario no autorizado para cerrar la caja de otro equipo...!"));
    return who.code;
}

void startExportAfterClosing(const QSqlDatabase& db, const QString&, const QDate& day) {
    // The store's package to head office (the exchange area decides what runs and how).
    exchange::exporting::exportAfterClosing(db, day);
}

ClosingOutcome closeDayWith(const QSqlDatabase& db, fiscal::FiscalPrinterThread& printer,
                            const ClosingRequest& r) {
    ClosingOutcome out;
    const ClosingFigures f = checkClosing(db, r.serial, r.today, &out.notices);
    const PrinterZState state =
        printer.callAndWait([](fiscal::FiscalPrinter& p) { return readPrinterZState(p); });
    checkZAgainstPrinter(db, r.serial, f.day.fecha, state);
    out.question = nextQuestion(f, r.counted, r.differenceApproved, r.confirmed);
    if (out.question.question != ClosingQuestion::None)
        return out;
    const ZReservation reservation = reserveClosingZ(db, r.serial, f.day.fecha, state);
    const bool printed = reservation.alreadyPrinted;
    const auto z = printer.callAndWait(
        [printed](fiscal::FiscalPrinter& p) { return printClosingZ(p, printed); });
    recordClosing(db, r.serial, f.day.fecha, z, state.serial, r.now);
    out.closed = true;
    out.zNumber = z.zNumber;
    if (r.backup)
        out.backupFile = backupAfterClosing(db, f.day.fecha);
    startExportAfterClosing(db, r.serial, f.day.fecha);
    return out;
}

} // namespace orvo::pos::cash
