#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace orvo::test {

struct CommandRun {
    int exitCode = -1; // -1 when it did not end normally in time
    QString output;    // standard output and error together
};

// The real program run as an operator runs it: `orvo args` with ORVO_HOME at `home` and its
// per-user settings under `home` too, so the machine's own settings are never touched.
inline CommandRun runOrvo(const QString& binary, const QString& home, const QStringList& args,
                          int timeoutMs = 180000) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("ORVO_HOME"), home);
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(binary, args);
    if (!p.waitForFinished(timeoutMs))
        return {};
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAll())};
}

} // namespace orvo::test
