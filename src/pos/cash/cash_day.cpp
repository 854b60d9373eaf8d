#include "pos/cash/cash_day.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "pos/fiscal/company_rif.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace orvo::pos::cash {

using db::Sql;

namespace {

const QString kDayColumns = QStringLiteral(
    "SELECT Serie, Fecha, Numero, FacturaInicial, FacturaFinal, HoraApertura, HoraCierre, "
    "Status, NumeroReporteZ FROM DIARIOCAJA ");

CashDay readDay(const Sql& q) {
    CashDay d;
    d.serie = q.text(QStringLiteral("Serie"));
    d.fecha = q.dateTime(QStringLiteral("Fecha")).date();
    d.numero = q.integer(QStringLiteral("Numero"));
    d.facturaInicial = q.bigint(QStringLiteral("FacturaInicial"));
    d.facturaFinal = q.bigint(QStringLiteral("FacturaFinal"));
    d.horaApertura = q.dateTime(QStringLiteral("HoraApertura"));
    d.horaCierre = q.dateTime(QStringLiteral("HoraCierre"));
    d.status = q.integer(QStringLiteral("Status"));
    if (!q.isNull(QStringLiteral("NumeroReporteZ")))
        d.numeroReporteZ = q.integer(QStringLiteral("NumeroReporteZ"));
    return d;
}

const QString kEnd = QStringLiteral("...! No procede una nueva apertura...!");

} // namespace

QString dayText(const QDate& day) {
    return day.toString(QStringLiteral("dd/MM/yyyy"));
}

QString dayStatusText(int status) {
    return status == 2 ? QStringLiteral("Cerrada") : QStringLiteral("Abierta");
}

std::optional<CashDay> latestDay(const QSqlDatabase& db, const QString& serial) {
    Sql q(db, kDayColumns + QStringLiteral("WHERE Serie = ? ORDER BY Fecha DESC LIMIT 1"));
    q.bind(serial).exec();
    if (!q.next())
        return std::nullopt;
    return readDay(q);
}

std::optional<CashDay> dayOf(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    Sql q(db, kDayColumns + QStringLiteral("WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"));
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
    if (!q.next())
        return std::nullopt;
    return readDay(q);
}

void checkOpening(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    const auto latest = latestDay(db, serial);
    const auto pending = [&] {
        return QStringLiteral("La apertura de Fecha ") + dayText(latest->fecha) +
               QStringLiteral(" tiene su cierre pendiente") + kEnd;
    };
    // A latest day with sales must be closed first.
    if (latest && latest->status == 1)
        throw UserError(pending());
    const auto same = dayOf(db, serial, day);
    if (same && same->status == 2)
        throw UserError(QStringLiteral("La apertura de Fecha ") + dayText(day) +
                        QStringLiteral(" tiene su cierre procesado") + kEnd);
    if (latest && day < latest->fecha)
        throw UserError(QStringLiteral("No puede realizar una apertura de fecha menor a ") +
                        dayText(latest->fecha) +
                        QStringLiteral(" ...! No procede una nueva "
                                       "apertura...!"));
    if (same)
        throw UserError(QStringLiteral("Ya existe una apertura de Fecha ") + dayText(day) +
                        QStringLiteral("...! no procede una nueva apertura...!"));
    // An earlier day opened without sales is still open too; deleting it is the way out.
    if (latest && latest->status == 0)
        throw UserError(pending() + QLatin1Char('\n') + QStringLiteral("La apertura de Fecha ") +
                        dayText(latest->fecha) +
                        QStringLiteral(" no tiene facturación...! Se recomienda eliminar dicha "
                                       "apertura...!"));
}

PrinterAtOpening readPrinterForOpening(fiscal::FiscalPrinter& printer) {
    PrinterAtOpening p;
    p.facts = fiscal::readPrinterFacts(printer);
    if (!p.facts.answers)
        return p;
    if (const auto s3 = printer.readS3())
        p.rates = std::array<int, 3>{s3->rates[0].hundredths, s3->rates[1].hundredths,
                                     s3->rates[2].hundredths};
    return p;
}

CashDay openDay(const QSqlDatabase& db, const OpeningRequest& r, const PrinterAtOpening& printer) {
    if (!printer.facts.answers)
        throw UserError(QStringLiteral(
            "No se pudo Realizar la apertura de caja por falta de comunicacion con la impresora "
            "fiscal. Asegurese de que la impresora este encendida y conectada"));
    {
        db::Transaction tx(db);
        checkOpening(db, r.serial, r.day);
        const auto counters = fiscal::readRegisterCounters(db, r.serial, r.controlFactura);
        fiscal::checkPrinterAgainstRegister(printer.facts, counters, r.today);
        fiscal::checkPrinterCompany(printer.facts, fiscal::companyRif(db));

        // The printer's programmed rates are the ones it will accept on the day's invoices.
        Decimal general;
        if (printer.rates) {
            for (int code = 1; code <= 3; ++code) {
                const Decimal rate = Decimal::fromScaled((*printer.rates)[code - 1], 2);
                if (code == 1)
                    general = rate;
                Sql u(db, QStringLiteral(
                              "UPDATE IMPUESTOS SET PorcentajeImpuesto = ? WHERE Codigo = ?"));
                u.bind(rate, 4).bind(code).exec();
                if (u.rowsAffected() == 0) {
                    Sql i(db, QStringLiteral("INSERT INTO IMPUESTOS (Codigo, Nombre, "
                                             "PorcentajeImpuesto) VALUES (?, ?, ?)"));
                    i.bind(code).bind(QStringLiteral("IMPUESTO %1").arg(code)).bind(rate, 4).exec();
                }
            }
        } else {
            general = Decimal::fromVariant(db::scalar(
                db, QStringLiteral("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE Codigo = 1")));
        }
        const int number =
            db::scalar(db, QStringLiteral("SELECT Numero FROM CAJAS WHERE Serie = ?"), {r.serial})
                .toInt();
        Sql ins(db,
                QStringLiteral("INSERT INTO DIARIOCAJA (Serie, Fecha, Numero, FacturaInicial, "
                               "FacturaFinal, PorcentajeImpuesto, HoraApertura, Status, "
                               "ReporteZTexto, Acumulado) VALUES (?, ?, ?, ?, ?, ?, ?, 0, '', 0)"));
        ins.bind(r.serial)
            .bind(db::dayStart(r.day))
            .bind(number)
            .bind(counters.lastInvoice)
            .bind(counters.lastInvoice)
            .bind(general, 4)
            .bind(r.now)
            .exec();
        tx.commit();
    }
    // After commit: the marker tells other programs on this machine which day the register has.
    const QString path = markerFilePath(r.serial);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile f(path);
    if (f.open(QIODevice::WriteOnly)) {
        f.write(QStringLiteral("Serie=%1\nFecha=%2\nHoraApertura=%3\n")
                    .arg(r.serial, r.day.toString(QStringLiteral("yyyyMMdd")),
                         r.now.toString(QStringLiteral("yyyyMMdd hh:mm:ss AP")))
                    .toUtf8());
        f.commit();
    }
    return *dayOf(db, r.serial, r.day);
}

void deleteOpening(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    db::Transaction tx(db);
    const auto d = dayOf(db, serial, day);
    if (!d)
        throw UserError(QStringLiteral("No existe apertura de fecha ") + dayText(day) +
                        QStringLiteral("...!"));
    const bool sold = db::exists(db,
                                 QStringLiteral("SELECT 1 FROM VENTAS WHERE Serie = ? AND "
                                                "Fecha >= ? AND Fecha < ?"),
                                 {serial, db::dayStart(day), db::nextDayStart(day)});
    if (d->status != 0 || sold)
        throw UserError(QStringLiteral("La apertura de Fecha ") + dayText(day) +
                        QStringLiteral(" tiene movimientos...! No procede su eliminación...!"));
    db::execute(db,
                QStringLiteral("DELETE FROM DIARIOCAJA WHERE Serie = ? AND Fecha >= ? AND "
                               "Fecha < ?"),
                {serial, db::dayStart(day), db::nextDayStart(day)});
    tx.commit();
}

QString markerFilePath(const QString& serial) {
    return shell::dataDir() + QStringLiteral("/caja") + serial + QStringLiteral(".txt");
}

void runDueReconversion(const QSqlDatabase&) {}

CashDay openDayWith(const QSqlDatabase& db, fiscal::FiscalPrinterThread& printer,
                    const OpeningRequest& request) {
    checkOpening(db, request.serial, request.day);
    runDueReconversion(db);
    const PrinterAtOpening p =
        printer.callAndWait([](fiscal::FiscalPrinter& fp) { return readPrinterForOpening(fp); });
    return openDay(db, request, p);
}

} // namespace orvo::pos::cash
