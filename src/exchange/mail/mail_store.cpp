#include "exchange/mail/mail_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::exchange::mail {

MailAccount readAccount(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT * FROM CUENTAS_MAIL"));
    q.exec();
    MailAccount a;
    if (!q.next())
        return a;
    a.exists = true;
    a.name = q.text(QStringLiteral("Nombre")).trimmed();
    a.smtp.host = q.text(QStringLiteral("SrvSalida")).trimmed();
    a.smtp.port = q.integer(QStringLiteral("PuertoSaliente"));
    a.smtp.user = q.text(QStringLiteral("UsrMail")).trimmed();
    a.smtp.password = q.text(QStringLiteral("PswMail"));
    a.smtp.fromAddress =
        a.smtp.user + QLatin1Char('@') + q.text(QStringLiteral("SrvDominio")).trimmed();
    a.smtp.fromName = a.name;
    a.destination = q.text(QStringLiteral("EMailDest")).trimmed();
    return a;
}

QList<PendingMessage> readMessages(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Asunto, Anexo FROM MENSAJES"));
    q.exec();
    QList<PendingMessage> out;
    while (q.next())
        out << PendingMessage{q.text(QStringLiteral("Asunto")),
                              q.text(QStringLiteral("Anexo")).trimmed()};
    return out;
}

bool setOutgoingServer(const QSqlDatabase& db, const QString& host, int port) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE CUENTAS_MAIL SET SrvSalida = ?, PuertoSaliente = ?"),
                       {host, port}) > 0;
}

} // namespace orvo::exchange::mail
