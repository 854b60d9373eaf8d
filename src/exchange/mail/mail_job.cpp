#include "exchange/mail/mail_job.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/export/export_store.h"
#include "exchange/mail/mail_store.h"
#include "exchange/mail/smtp_client.h"
#include "shell/session/settings_readers.h"
#include "shell/startup/app_home.h"
#include "shell/startup/user_settings.h"

#include <QDir>
#include <QSaveFile>

namespace orvo::exchange::mail {

namespace {

const QString kNoAccount = QStringLiteral("No existe una cuenta de correo configurada");

// The attachment of a message: nothing, one file of the folder, or every match of a pattern.
QStringList attachmentsOf(const QString& folder, const QString& anexo) {
    if (anexo.isEmpty())
        return {};
    if (anexo.contains(QLatin1Char('*')) || anexo.contains(QLatin1Char('?'))) {
        QDir dir(folder);
        QStringList out;
        for (const QString& f : dir.entryList({anexo}, QDir::Files, QDir::Name))
            out << dir.filePath(f);
        return out.isEmpty() ? QStringList{dir.filePath(anexo)} : out;
    }
    return {QDir(folder).filePath(anexo)};
}

} // namespace

MailJob::MailJob(const QSqlDatabase& db, MailOptions options, QObject* parent)
    : jobs::Job(db, parent), m_options(std::move(options)) {}

bool MailJob::sent() const {
    QMutexLocker lock(&m_logMutex);
    return m_sent;
}

QString MailJob::logText() const {
    QMutexLocker lock(&m_logMutex);
    return m_log;
}

void MailJob::log(const QString& line) {
    {
        QMutexLocker lock(&m_logMutex);
        m_log += line + QStringLiteral("\r\n");
    }
    emit logLine(line);
}

void MailJob::run(const QSqlDatabase& db) {
    const QString folder = exporting::exportFolder(db);
    const MailAccount account = readAccount(db);
    if (account.exists)
        log(QStringLiteral("Conectando a ") + account.smtp.host + QStringLiteral("..."));
    const QList<PendingMessage> messages = readMessages(db);

    // Cleared once here and by every failure, set by every success: it ends up telling how
    // the last message went.
    bool sent = false;
    for (int i = 0; i < messages.size(); ++i) {
        if (isCancelled())
            break;
        const PendingMessage& m = messages[i];
        log(QStringLiteral("Enviando mensaje a ") + account.name + QStringLiteral("..."));
        report(i * 100 / messages.size(), m.subject);
        SmtpMessage message;
        message.to =
            m_options.fixedRecipient.isEmpty() ? account.destination : m_options.fixedRecipient;
        message.subject = m.subject;
        message.body = m.subject;
        message.attachments = attachmentsOf(folder, m.attachment);
        const QString error = account.exists ? sendMail(account.smtp, message) : kNoAccount;
        if (error.isEmpty()) {
            sent = true;
        } else {
            sent = false;
            log(QStringLiteral("El envio del correo a fallado: ") + error);
        }
        if (!sent)
            log(QStringLiteral("Error de envío #%1: %2").arg(i + 1).arg(m.subject.trimmed()));
    }
    if (sent) {
        QDir dir(folder);
        for (const QString& f : dir.entryList({QStringLiteral("*.zip")}, QDir::Files))
            dir.remove(f);
        log(QStringLiteral("Mensaje(s) enviado(s) con éxito."));
    } else {
        log(QStringLiteral("No existen mensajes para enviar."));
    }
    {
        QMutexLocker lock(&m_logMutex);
        m_sent = sent;
    }
    shell::settings::writeIn(QStringLiteral("Info"), QStringLiteral("Status"),
                             sent ? QStringLiteral("1") : QStringLiteral("0"));
    // The unattended export starts its next range from here: it moves on once the package has
    // gone out, or when this store mails nothing at all.
    if (m_options.advanceLastExportTo.isValid() && (sent || messages.isEmpty())) {
        db::Transaction tx(db);
        exporting::setLastExportDay(db, m_options.advanceLastExportTo);
        tx.commit();
    }
    log(QStringLiteral("Proceso finalizado."));
    report(100, QStringLiteral("Proceso finalizado."));

    QSaveFile file(sendLogPath());
    if (file.open(QIODevice::WriteOnly)) {
        file.write(logText().toUtf8());
        file.commit();
    }
}

QString sendLogPath() {
    return shell::appHome() + QStringLiteral("/Enviar.log");
}

QString xmlRecipient(const QSqlDatabase& db) {
    return shell::tableValue(db, QStringLiteral("CorreoDestinoXML")).value_or(QString()).trimmed();
}

bool mailNow(const QSqlDatabase& db, const MailOptions& options,
             const std::function<void(const QString&)>& line) {
    MailJob job(db, options);
    if (line)
        QObject::connect(&job, &MailJob::logLine, &job, line, Qt::DirectConnection);
    job.start();
    job.wait();
    if (!job.succeeded())
        throw UserError(job.error());
    return job.sent();
}

} // namespace orvo::exchange::mail
