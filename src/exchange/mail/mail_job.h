#pragma once

#include "common/jobs/job.h"

#include <QDate>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <functional>

// The mailing of the export packages (frmEnvioTraNet, fmEnvioTraNet2), on a job's thread.
//
// Every MENSAJES row is sent through the CUENTAS_MAIL account, its attachment (`Anexo`, a file
// name in the export folder; a pattern such as "*.zip" takes every match) from the export folder.
// A failed message does not stop the others. As it always has, the outcome is the last message's:
// when it went out the package files (*.zip) are deleted, otherwise they stay for the next run.
// Each step is a line of the log (logLine); the log is saved as ORVO_HOME/Enviar.log and the
// outcome in the user settings (section Info, key Status: 1 sent, 0 not).
namespace orvo::exchange::mail {

struct MailOptions {
    // fmEnvioTraNet2: every message goes to this address instead of the account's EMailDest.
    QString fixedRecipient;
    // The closing's export: once the mail went out (or there was nothing to mail), the day
    // exported up to is written to PARAMETROS.UltExportacion.
    QDate advanceLastExportTo;
};

class MailJob : public jobs::Job {
    Q_OBJECT
public:
    MailJob(const QSqlDatabase& db, MailOptions options = {}, QObject* parent = nullptr);

    // Once finished: whether the last message went out, and the log (lines ending in CR LF).
    bool sent() const;
    QString logText() const;

signals:
    void logLine(const QString& line);

protected:
    void run(const QSqlDatabase& db) override;

private:
    void log(const QString& line);

    MailOptions m_options;
    mutable QMutex m_logMutex;
    QString m_log;
    bool m_sent = false;
};

// ORVO_HOME/Enviar.log
QString sendLogPath();

// The fixed recipient of fmEnvioTraNet2: TABLA_VALORES "CorreoDestinoXML" ("" when not set).
QString xmlRecipient(const QSqlDatabase& db);

// Runs a mailing and waits for it (commands, the headless closing), passing each log line on.
// Returns whether the last message went out; throws UserError when the job itself failed.
bool mailNow(const QSqlDatabase& db, const MailOptions& options,
             const std::function<void(const QString&)>& line = {});

} // namespace orvo::exchange::mail
