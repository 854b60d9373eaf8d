#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace orvo::test {

// What the real program printed and returned for one command.
struct CommandRun {
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs `orvo args` with `home` as its application folder and home (nothing of the user's own).
inline CommandRun runOrvo(const QString& home, const QStringList& args) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("ORVO_HOME"), home);
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(ORVO_BINARY), args);
    if (!p.waitForFinished(120000))
        return {};
    return {p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()),
            QString::fromUtf8(p.readAllStandardError())};
}

} // namespace orvo::test
