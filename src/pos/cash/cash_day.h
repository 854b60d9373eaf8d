#pragma once

#include "pos/fiscal/register_check.h"

#include <QDate>
#include <QDateTime>
#include <QSqlDatabase>
#include <QString>
#include <array>
#include <optional>

namespace orvo::pos::fiscal {
class FiscalPrinter;
class FiscalPrinterThread;
} // namespace orvo::pos::fiscal

// The register's day: opening it (frmAperturaCaja) and deleting an opening without sales.
namespace orvo::pos::cash {

// A DIARIOCAJA row as the cash screens show it.
struct CashDay {
    QString serie;
    QDate fecha;
    int numero = 0;
    long long facturaInicial = 0;
    long long facturaFinal = 0;
    QDateTime horaApertura;
    QDateTime horaCierre;
    int status = 0;
    std::optional<int> numeroReporteZ; // set from the moment the closing's Z is asked for
};

// "dd/MM/yyyy", as the messages name a day.
QString dayText(const QDate& day);
// "Abierta" while opened or selling, "Cerrada" once closed.
QString dayStatusText(int status);

// The register's latest day; nothing before its first opening.
std::optional<CashDay> latestDay(const QSqlDatabase& db, const QString& serial);
std::optional<CashDay> dayOf(const QSqlDatabase& db, const QString& serial, const QDate& day);

// The refusals of an opening for `day`, in order (UserError, title "Información"): latest day
// with sales not closed, day already closed, day before the latest, day already opened, an
// earlier day opened without sales (not closed either, and advised to be deleted). Writes
// nothing.
void checkOpening(const QSqlDatabase& db, const QString& serial, const QDate& day);

// What the opening reads from the printer, on the printer's thread.
struct PrinterAtOpening {
    fiscal::PrinterFacts facts;
    std::optional<std::array<int, 3>> rates; // programmed rates 1..3 in hundredths
};
PrinterAtOpening readPrinterForOpening(fiscal::FiscalPrinter& printer);

struct OpeningRequest {
    QString serial;
    QDate day;
    int controlFactura = 1; // 2: the invoice counter is company-wide (PARAMETROS)
    QDate today;            // the printer's date must be this one
    QDateTime now;          // HoraApertura
};

// Opens the day in one transaction: the checks again, the printer (it must answer and agree
// with the register), the DIARIOCAJA row with the register's last invoice, and the tax rates
// 1..3 taken from the printer. After commit writes the register's marker file. Returns the row.
CashDay openDay(const QSqlDatabase& db, const OpeningRequest& request,
                const PrinterAtOpening& printer);

// Deletes the opening of `day` in one transaction; refused once the day has sales or was closed.
void deleteOpening(const QSqlDatabase& db, const QString& serial, const QDate& day);

// data/caja<serial>.txt under the application folder: the register's last opening.
QString markerFilePath(const QString& serial);

// The monetary reconversion runs when the day is opened, before the opening itself. The
// exchange-rate work fills this in (a Job with its own progress); until then nothing is due and
// it does nothing.
void runDueReconversion(const QSqlDatabase& db);

// The whole opening for headless use and tests: checks, printer read on its thread, opening.
CashDay openDayWith(const QSqlDatabase& db, fiscal::FiscalPrinterThread& printer,
                    const OpeningRequest& request);

} // namespace orvo::pos::cash
