#include "shell/startup/app_home.h"

#include <QDir>
#include <QStandardPaths>

namespace orvo::shell {

QString appHome() {
    const QString env = qEnvironmentVariable("ORVO_HOME");
    if (!env.isEmpty())
        return QDir(env).absolutePath();
    QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (base.isEmpty())
        base = QDir::homePath() + QStringLiteral("/.local/share");
    return base + QStringLiteral("/Orvo");
}

QString dataDir() {
    return appHome() + QStringLiteral("/data");
}

QString serverConfigPath() {
    return dataDir() + QStringLiteral("/srvsql.txt");
}

void ensureAppFolders() {
    QDir home(appHome());
    for (const char* sub : {"data", "Recibe", "Envia", "Estructura", "REPORTES", "logs"})
        home.mkpath(QString::fromLatin1(sub));
}

} // namespace orvo::shell
