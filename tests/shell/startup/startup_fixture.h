#pragma once

#include "common/security/scrambler.h"
#include "shell/startup/server_config.h"
#include "support/test_db.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

namespace orvo::test {

// data/srvsql.txt lines that reach the database of `s`.
inline shell::ServerConfig configFor(const db::ConnectionSettings& s) {
    if (s.engine == db::Engine::Sqlite)
        return shell::ServerConfig::fromFields(QStringLiteral("(local)"), s.sqliteFile, false, {},
                                               {});
    return shell::ServerConfig::fromFields(s.host + u':' + QString::number(s.port), s.database,
                                           true, s.user, s.password);
}

// ORVO_HOME and the per-user settings point at a fresh folder while the object lives.
class HomeGuard {
public:
    HomeGuard() : m_old(qgetenv("ORVO_HOME")) {
        qputenv("ORVO_HOME", m_dir.path().toUtf8());
        QDir(m_dir.path()).mkpath(QStringLiteral("data"));
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           m_dir.path() + QStringLiteral("/settings"));
    }
    ~HomeGuard() {
        // Settings written after this stay out of the user's real configuration.
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope,
                           processTempDir() + QStringLiteral("/settings"));
        if (m_old.isEmpty())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", m_old);
    }
    QString path() const { return m_dir.path(); }
    QString configPath() const { return m_dir.path() + QStringLiteral("/data/srvsql.txt"); }
    QString dataDir() const { return m_dir.path() + QStringLiteral("/data"); }

private:
    QTemporaryDir m_dir;
    QByteArray m_old;
};

} // namespace orvo::test
