#include "shell/startup/server_config.h"

#include "common/security/scrambler.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace orvo::shell {

int ServerConfig::authMode() const {
    // Like a BASIC Val(): leading blanks skipped, the leading digits count, nothing else.
    const QString t = lines[2].trimmed();
    qsizetype i = 0;
    bool negative = false;
    if (i < t.size() && (t[i] == u'-' || t[i] == u'+')) {
        negative = t[i] == u'-';
        ++i;
    }
    long long v = 0;
    for (; i < t.size() && t[i].isDigit() && v < 100000; ++i)
        v = v * 10 + (t[i].unicode() - u'0');
    return int(negative ? -v : v);
}

QString ServerConfig::clearPassword() const {
    return security::unscramble(lines[4]);
}

QString ServerConfig::passwordLineProblem() const {
    const QString line = lines[4].trimmed();
    if (!passwordAuth() || line.isEmpty() || security::scramble(clearPassword()) == line)
        return {};
    return QStringLiteral("La línea 5 de srvsql.txt no es una clave cifrada: escríbala con "
                          "'orvo server-config' o con la pantalla de configuración del "
                          "servidor.");
}

QString postgresDatabaseName(const QString& line) {
    const QString name = line.trimmed();
    if (name.size() >= 2 && name.startsWith(u'"') && name.endsWith(u'"'))
        return name.mid(1, name.size() - 2).replace(QStringLiteral("\"\""), QStringLiteral("\""));
    return name.toLower();
}

bool ServerConfig::isEmbedded() const {
    const QString s = server();
    return s.isEmpty() || s.compare(QLatin1String("(local)"), Qt::CaseInsensitive) == 0;
}

ServerConfig ServerConfig::fromFields(const QString& server, const QString& database,
                                      bool passwordAuth, const QString& user,
                                      const QString& clearPassword) {
    ServerConfig c;
    c.lines[0] = database.trimmed();
    c.lines[1] = server.trimmed();
    c.lines[2] = passwordAuth ? QStringLiteral("1") : QStringLiteral("0");
    c.lines[3] = user.trimmed();
    c.lines[4] = security::scramble(clearPassword.trimmed());
    return c;
}

QString embeddedFile(const QString& dataDir, const QString& database) {
    const QString name = database.trimmed();
    if (QFileInfo(name).isAbsolute())
        return name;
    return dataDir + u'/' +
           (QFileInfo(name).suffix().isEmpty() ? name + QStringLiteral(".sqlite") : name);
}

db::ConnectionSettings ServerConfig::connectionSettings(const QString& dataDir) const {
    db::ConnectionSettings s;
    if (isEmbedded()) {
        s.engine = db::Engine::Sqlite;
        s.sqliteFile = embeddedFile(dataDir, database());
        return s;
    }
    s.engine = db::Engine::Postgres;
    const QString srv = server();
    const qsizetype colon = srv.lastIndexOf(u':');
    if (colon > 0 && !srv.contains(u']')) {
        s.host = srv.left(colon);
        s.port = srv.mid(colon + 1).toInt();
    } else {
        s.host = srv;
    }
    s.database = postgresDatabaseName(database());
    s.passwordAuth = passwordAuth();
    if (s.passwordAuth) {
        s.user = user();
        s.password = clearPassword();
    }
    return s;
}

ServerConfig readServerConfig(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        throw StartupError(53, QStringLiteral("No se encontró el archivo %1").arg(path));
    ServerConfig c;
    QTextStream in(&f);
    in.setEncoding(QStringConverter::Latin1);
    int n = 0;
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (n >= 5)
            throw StartupError(9, QStringLiteral("Subíndice fuera del intervalo"));
        c.lines[n++] = line;
    }
    return c;
}

void writeServerConfig(const QString& path, const ServerConfig& config) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        throw StartupError(75,
                           QStringLiteral("Error de acceso a la ruta o el archivo: %1").arg(path));
    f.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    QTextStream out(&f);
    out.setEncoding(QStringConverter::Latin1);
    for (const QString& line : config.lines)
        out << line << '\n';
}

} // namespace orvo::shell
