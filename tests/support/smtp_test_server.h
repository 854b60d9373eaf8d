#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

namespace orvo::test {

// A real SMTP server on 127.0.0.1 (scripts/smtp_server.py, aiosmtpd) that keeps what it
// receives in a folder of its own.
class SmtpTestServer {
public:
    struct Options {
        QString user; // with a user, the server requires AUTH with this user and password
        QString password;
        QString rejectSubject; // a subject containing this text is refused with 554
    };
    struct Received {
        QString from;
        QStringList to;
        QString login; // the authenticated user, "" without AUTH
        QString subject;
        QString headerFrom;
        QString body;
        QStringList attachments;     // file names
        QStringList attachmentFiles; // where the server saved them
    };

    explicit SmtpTestServer(const Options& options = {});
    ~SmtpTestServer();

    bool isRunning() const { return m_port > 0; }
    int port() const { return m_port; }
    QString error() const { return m_error; }
    // Messages accepted so far, in order.
    QList<Received> received() const;

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QProcess> m_process;
    int m_port = 0;
    QString m_error;
};

} // namespace orvo::test
