#include "shell/startup/app_state.h"

#include <QDir>

namespace orvo::shell {

namespace {
bool g_loggedIn = false;
} // namespace

SessionContext& session() {
    static SessionContext ctx;
    return ctx;
}

ServerConfig& currentServerConfig() {
    static ServerConfig config;
    return config;
}

bool isLoggedIn() {
    return g_loggedIn;
}

void setLoggedIn(bool loggedIn) {
    g_loggedIn = loggedIn;
}

QString reportPdfPath(const QString& document, const QDate& day) {
    const SessionContext& ctx = session();
    const QString folder = ctx.reportFolder.isEmpty() ? resolveReportFolder(ctx) : ctx.reportFolder;
    QDir().mkpath(folder);
    QString name = document.simplified();
    for (QChar& c : name)
        if (QStringLiteral("/\\:*?\"<>|").contains(c))
            c = u'-';
    if (name.isEmpty())
        name = QStringLiteral("Documento");
    return QDir(folder).filePath(name + u' ' + day.toString(QStringLiteral("yyyy-MM-dd")) +
                                 QStringLiteral(".pdf"));
}

} // namespace orvo::shell
