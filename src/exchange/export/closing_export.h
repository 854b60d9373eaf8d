#pragma once

#include "exchange/export/export_tables.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <functional>

// The export that the register closing starts on its own (origin "CierredeCaja").
//
// PARAMETROS.ComportamientoExportar chooses the runs: "Orvo" the store package, "Vandu" the
// head-office set, "XML" the XML package, "XML-Vandu" the head-office set and then the XML
// package; anything else exports nothing. The range starts two days before PARAMETROS.
// UltExportacion (five when this machine's name starts with the letter of the TABLA_VALORES key
// "LetraExportacion"), so recent days travel twice, and ends on the closed day. Each run is mailed
// as the screens do, and UltExportacion moves to the closed day after the mail.
namespace orvo::exchange::exporting {

struct ClosingExportPlan {
    QList<ExportFormat> runs; // empty: nothing to export
    QDate from;
    QDate to;
};

QList<ExportFormat> exportRunsFor(const QString& behaviour);
// The first day of the unattended range: UltExportacion less the overlap; `day` when the store
// never exported.
QDate unattendedStart(const QSqlDatabase& db, const QDate& day, const QString& machineName);
ClosingExportPlan closingExportPlan(const QSqlDatabase& db, const QDate& day,
                                    const QString& machineName);

// How the export is started after a closing. The desktop installs one that opens the export
// screens, locked, with their progress and the mail window; without one (headless closing,
// commands) exportAfterClosing() runs the exports and the mail here and waits for them.
using ClosingExportLauncher = std::function<void(const QSqlDatabase&, const ClosingExportPlan&)>;
void setClosingExportLauncher(ClosingExportLauncher launcher);

// Called by the closing once the day is closed. Returns the plan it started.
ClosingExportPlan exportAfterClosing(const QSqlDatabase& db, const QDate& day);

} // namespace orvo::exchange::exporting
