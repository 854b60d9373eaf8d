#include "exchange/export/closing_export.h"

#include "common/errors/errors.h"
#include "exchange/export/export_job.h"
#include "exchange/export/export_store.h"
#include "exchange/mail/mail_job.h"
#include "shell/session/settings_readers.h"

#include <QLoggingCategory>
#include <QMutex>
#include <QSysInfo>

Q_DECLARE_LOGGING_CATEGORY(lcExport)

namespace orvo::exchange::exporting {

namespace {

QMutex g_launcherMutex;
ClosingExportLauncher g_launcher;

} // namespace

QList<ExportFormat> exportRunsFor(const QString& behaviour) {
    const QString b = behaviour.trimmed();
    const auto is = [&b](const char* name) {
        return b.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
    };
    if (is("Orvo"))
        return {ExportFormat::Orvo};
    if (is("Vandu"))
        return {ExportFormat::Vandu};
    if (is("XML"))
        return {ExportFormat::Xml};
    if (is("XML-Vandu"))
        return {ExportFormat::Vandu, ExportFormat::Xml};
    return {};
}

QDate unattendedStart(const QSqlDatabase& db, const QDate& day, const QString& machineName) {
    const QDate last = lastExportDay(db);
    if (!last.isValid())
        return day;
    const QString letter =
        shell::tableValue(db, QStringLiteral("LetraExportacion")).value_or(QString()).trimmed();
    const bool longOverlap = !letter.isEmpty() && !machineName.isEmpty() &&
                             machineName.left(1).compare(letter.left(1), Qt::CaseInsensitive) == 0;
    return last.addDays(longOverlap ? -5 : -2);
}

ClosingExportPlan closingExportPlan(const QSqlDatabase& db, const QDate& day,
                                    const QString& machineName) {
    ClosingExportPlan plan;
    plan.runs = exportRunsFor(shell::exportBehaviour(db));
    if (plan.runs.isEmpty())
        return plan;
    plan.to = day;
    plan.from = qMin(unattendedStart(db, day, machineName), day);
    return plan;
}

void setClosingExportLauncher(ClosingExportLauncher launcher) {
    QMutexLocker lock(&g_launcherMutex);
    g_launcher = std::move(launcher);
}

ClosingExportPlan exportAfterClosing(const QSqlDatabase& db, const QDate& day) {
    const ClosingExportPlan plan = closingExportPlan(db, day, QSysInfo::machineHostName());
    if (plan.runs.isEmpty())
        return plan;
    ClosingExportLauncher launcher;
    {
        QMutexLocker lock(&g_launcherMutex);
        launcher = g_launcher;
    }
    if (launcher) {
        launcher(db, plan);
        return plan;
    }
    // The day is closed whatever becomes of the package: a failure is logged, not thrown.
    for (const ExportFormat format : plan.runs) {
        try {
            exportNow(db, {format, plan.from, plan.to});
            mail::MailOptions options;
            options.advanceLastExportTo = plan.to;
            if (format == ExportFormat::Xml)
                options.fixedRecipient = mail::xmlRecipient(db);
            mail::mailNow(db, options);
        } catch (const UserError& e) {
            qCWarning(lcExport) << "exportación del cierre:" << e.text();
        }
    }
    return plan;
}

} // namespace orvo::exchange::exporting
