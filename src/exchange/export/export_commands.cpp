#include "exchange/export/export_commands.h"

#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/export/export_job.h"
#include "exchange/mail/mail_job.h"
#include "exchange/mail/mail_store.h"

#include <QTextStream>

namespace orvo::exchange {

namespace {

const QString kExportUsage = QStringLiteral(
    "uso: orvo export [--desde DD/MM/AAAA] [--hasta DD/MM/AAAA] [--formato orvo|vandu|xml]");

QDate typedDate(const QString& text) {
    const QDate d = QDate::fromString(text.trimmed(), QStringLiteral("dd/MM/yyyy"));
    if (!d.isValid())
        throw UserError(QStringLiteral("La fecha %1 no es válida (DD/MM/AAAA)...!").arg(text));
    return d;
}

} // namespace

int exportCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                  QTextStream& err) {
    exporting::ExportRequest request{exporting::ExportFormat::Orvo, QDate::currentDate(),
                                     QDate::currentDate()};
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const QString value = args.value(i + 1);
        if (value.isEmpty() || value.startsWith(QLatin1String("--"))) {
            err << kExportUsage << Qt::endl;
            return 2;
        }
        ++i;
        if (a == QLatin1String("--desde")) {
            request.from = typedDate(value);
        } else if (a == QLatin1String("--hasta")) {
            request.to = typedDate(value);
        } else if (a == QLatin1String("--formato")) {
            const auto format = exporting::formatNamed(value);
            if (!format) {
                err << kExportUsage << Qt::endl;
                return 2;
            }
            request.format = *format;
        } else {
            err << kExportUsage << Qt::endl;
            return 2;
        }
    }
    QString lastLabel;
    const QString path =
        exporting::exportNow(db, request, [&err, &lastLabel](int percent, const QString& label) {
            // One line per table; the rows of a long table rewrite it in place.
            if (label != lastLabel && !lastLabel.isEmpty())
                err << Qt::endl;
            lastLabel = label;
            err << QStringLiteral("\r[%1%] %2").arg(percent, 3).arg(label) << Qt::flush;
        });
    if (!lastLabel.isEmpty())
        err << Qt::endl;
    if (!path.isEmpty())
        out << path << Qt::endl;
    return 0;
}

int mailCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                QTextStream& err) {
    mail::MailOptions options;
    for (const QString& a : args) {
        if (a != QLatin1String("--xml")) {
            err << "uso: orvo mail [--xml]" << Qt::endl;
            return 2;
        }
        options.fixedRecipient = mail::xmlRecipient(db);
    }
    const bool sent =
        mail::mailNow(db, options, [&out](const QString& line) { out << line << Qt::endl; });
    return sent ? 0 : 1;
}

int mailAccountCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                       QTextStream& err) {
    if (args.isEmpty()) {
        const mail::MailAccount account = mail::readAccount(db);
        if (!account.exists)
            throw UserError(QStringLiteral("No existe una cuenta de correo configurada...!"));
        out << account.smtp.host << ':' << account.smtp.port << Qt::endl;
        return 0;
    }
    const QString server = args.first().trimmed();
    const qsizetype colon = server.lastIndexOf(QLatin1Char(':'));
    bool ok = false;
    const int port = colon > 0 ? server.mid(colon + 1).toInt(&ok) : 0;
    if (args.size() > 1 || !ok || port <= 0 || port > 65535) {
        err << "uso: orvo mail-account [SERVIDOR:PUERTO]" << Qt::endl;
        return 2;
    }
    db::Transaction tx(db);
    if (!mail::setOutgoingServer(db, server.left(colon), port))
        throw UserError(QStringLiteral("No existe una cuenta de correo configurada...!"));
    tx.commit();
    out << "La cuenta de correo sale por " << server << "." << Qt::endl;
    return 0;
}

} // namespace orvo::exchange
