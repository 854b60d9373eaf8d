#include "support/smtp_test_server.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace orvo::test {

namespace {
// Debian's interpreter, which has python3-aiosmtpd (a python3 of the user's PATH may not).
QString python() {
    return QFile::exists(QStringLiteral("/usr/bin/python3")) ? QStringLiteral("/usr/bin/python3")
                                                             : QStringLiteral("python3");
}
} // namespace

SmtpTestServer::SmtpTestServer(const Options& options) : m_process(std::make_unique<QProcess>()) {
    QStringList args{QStringLiteral(ORVO_SMTP_SERVER), m_dir.path()};
    if (!options.user.isEmpty())
        args << QStringLiteral("--user") << options.user << QStringLiteral("--password")
             << options.password;
    if (!options.rejectSubject.isEmpty())
        args << QStringLiteral("--reject-subject") << options.rejectSubject;
    m_process->start(python(), args);
    if (!m_process->waitForStarted(10000)) {
        m_error = m_process->errorString();
        return;
    }
    while (!m_process->canReadLine() && m_process->state() == QProcess::Running)
        m_process->waitForReadyRead(15000);
    m_port = m_process->readLine().trimmed().toInt();
    if (m_port <= 0)
        m_error = QString::fromUtf8(m_process->readAllStandardError());
}

SmtpTestServer::~SmtpTestServer() {
    if (m_process->state() != QProcess::NotRunning) {
        m_process->terminate();
        if (!m_process->waitForFinished(10000)) {
            m_process->kill();
            m_process->waitForFinished(5000);
        }
    }
}

QList<SmtpTestServer::Received> SmtpTestServer::received() const {
    QList<Received> out;
    QDir dir(m_dir.path());
    for (const QString& name : dir.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        QFile f(dir.filePath(name));
        f.open(QIODevice::ReadOnly);
        const QJsonObject o = QJsonDocument::fromJson(f.readAll()).object();
        Received r;
        r.from = o.value(QStringLiteral("from")).toString();
        for (const QJsonValue& v : o.value(QStringLiteral("to")).toArray())
            r.to << v.toString();
        r.login = o.value(QStringLiteral("login")).toString();
        r.subject = o.value(QStringLiteral("subject")).toString();
        r.headerFrom = o.value(QStringLiteral("header_from")).toString();
        r.body = o.value(QStringLiteral("body")).toString();
        const QString base = name.left(name.size() - 5);
        for (const QJsonValue& v : o.value(QStringLiteral("attachments")).toArray()) {
            r.attachments << v.toString();
            r.attachmentFiles << dir.filePath(base + QLatin1Char('_') + v.toString());
        }
        out << r;
    }
    return out;
}

} // namespace orvo::test
