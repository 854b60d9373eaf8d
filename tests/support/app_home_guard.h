#pragma once

#include <QSettings>
#include <QString>
#include <QTemporaryDir>

namespace orvo::test {

// ORVO_HOME and the per-user settings point at a fresh folder while the object lives; the
// previous ORVO_HOME comes back afterwards.
class AppHomeGuard {
public:
    AppHomeGuard() : m_old(qgetenv("ORVO_HOME")) {
        qputenv("ORVO_HOME", m_dir.path().toUtf8());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir.path());
    }
    ~AppHomeGuard() {
        if (m_old.isEmpty())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", m_old);
    }
    AppHomeGuard(const AppHomeGuard&) = delete;
    AppHomeGuard& operator=(const AppHomeGuard&) = delete;

    QString path() const { return m_dir.path(); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

private:
    QByteArray m_old;
    QTemporaryDir m_dir;
};

} // namespace orvo::test
