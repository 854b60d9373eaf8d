#pragma once

#include <QByteArray>
#include <QTemporaryDir>

namespace orvo::test {

// ORVO_HOME in a fresh folder for as long as the object lives (backups, Recibe, ZipTemp,
// Estructura land there); the previous value comes back afterwards.
class ScopedAppHome {
public:
    ScopedAppHome() : m_had(qEnvironmentVariableIsSet("ORVO_HOME")), m_old(qgetenv("ORVO_HOME")) {
        qputenv("ORVO_HOME", m_dir.path().toUtf8());
    }
    ~ScopedAppHome() {
        if (m_had)
            qputenv("ORVO_HOME", m_old);
        else
            qunsetenv("ORVO_HOME");
    }
    ScopedAppHome(const ScopedAppHome&) = delete;
    ScopedAppHome& operator=(const ScopedAppHome&) = delete;

    QString path() const { return m_dir.path(); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
    bool m_had;
    QByteArray m_old;
};

} // namespace orvo::test
