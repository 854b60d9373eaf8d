#pragma once

#include <QString>
#include <QStringList>

// One message through an SMTP server with libcurl: authentication when the server offers it,
// STARTTLS when the server offers it (implicit TLS on port 465), attachments as MIME parts.
namespace orvo::exchange::mail {

struct SmtpAccount {
    QString host;
    int port = 25;
    QString user; // the mailbox user: also what authenticates
    QString password;
    QString fromAddress; // user@domain
    QString fromName;    // shown beside the address
};

struct SmtpMessage {
    QString to;
    QString subject;
    QString body;
    QStringList attachments; // paths
};

// Sends the message; returns "" when the server took it, otherwise the reason in the words of
// the library or the server.
QString sendMail(const SmtpAccount& account, const SmtpMessage& message, int timeoutSeconds = 120);

} // namespace orvo::exchange::mail
