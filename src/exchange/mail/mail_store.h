#pragma once

#include "exchange/mail/smtp_client.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>

// The mail's SQL: the account of CUENTAS_MAIL and the messages of MENSAJES.
namespace orvo::exchange::mail {

struct MailAccount {
    bool exists = false;
    QString name;        // Nombre: shown as the sender and in the log
    SmtpAccount smtp;    // SrvSalida, PuertoSaliente, UsrMail@SrvDominio, PswMail
    QString destination; // EMailDest
};
// The first CUENTAS_MAIL row (exists = false without one).
MailAccount readAccount(const QSqlDatabase& db);

struct PendingMessage {
    QString subject;    // Asunto: subject and text
    QString attachment; // Anexo, trimmed: a file of the export folder or a pattern
};
QList<PendingMessage> readMessages(const QSqlDatabase& db);

// The account's outgoing server (in the caller's transaction); false without an account.
bool setOutgoingServer(const QSqlDatabase& db, const QString& host, int port);

} // namespace orvo::exchange::mail
