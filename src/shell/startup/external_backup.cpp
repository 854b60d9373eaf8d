#include "shell/startup/external_backup.h"

#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/errors/errors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

namespace orvo::shell {

namespace {

// The major version a pg_dump reports ("pg_dump (PostgreSQL) 15.18 (Debian ...)"); 0 when it
// does not run.
int pgDumpMajor(const QString& exe) {
    QProcess p;
    p.start(exe, {QStringLiteral("--version")});
    if (!p.waitForFinished(10000) || p.exitCode() != 0)
        return 0;
    static const QRegularExpression version(QStringLiteral("\\)\\s+(\\d+)"));
    return version.match(QString::fromLocal8Bit(p.readAllStandardOutput())).captured(1).toInt();
}

struct PgDump {
    QString exe;
    int major = 0;
};

// The newest pg_dump of this machine: the one on PATH or one of Debian's versioned ones.
PgDump newestPgDump() {
    QStringList candidates;
    const QString onPath = QStandardPaths::findExecutable(QStringLiteral("pg_dump"));
    if (!onPath.isEmpty())
        candidates << onPath;
    QDir lib(QStringLiteral("/usr/lib/postgresql"));
    for (const QString& v : lib.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (const QString exe = lib.filePath(v + QStringLiteral("/bin/pg_dump"));
            QFileInfo(exe).isExecutable())
            candidates << exe;
    PgDump best;
    for (const QString& exe : candidates)
        if (const int major = pgDumpMajor(exe); major > best.major)
            best = {exe, major};
    return best;
}

int serverMajor(const QSqlDatabase& db) {
    return db::scalar(db, QStringLiteral("SHOW server_version_num")).toInt() / 10000;
}

QString pgDumpProblem(const PgDump& tool, int server) {
    if (tool.major >= server)
        return {};
    return QStringLiteral("El respaldo del cierre de caja necesita el programa pg_dump de "
                          "PostgreSQL %1 o más nuevo en este equipo (%2). Instale el paquete "
                          "postgresql-client-%1...!")
        .arg(server)
        .arg(tool.major == 0 ? QStringLiteral("no está instalado")
                             : QStringLiteral("tiene el %1").arg(tool.major));
}

void dumpPostgres(const QSqlDatabase& db, const QString& targetFile) {
    const PgDump tool = newestPgDump();
    if (const QString problem = pgDumpProblem(tool, serverMajor(db)); !problem.isEmpty())
        throw UserError(problem);
    const QString pgDump = tool.exe;
    QStringList args = {QStringLiteral("--format=custom"), QStringLiteral("--file"), targetFile,
                        QStringLiteral("--dbname"), db.databaseName()};
    if (!db.hostName().isEmpty())
        args << QStringLiteral("--host") << db.hostName();
    if (db.port() > 0)
        args << QStringLiteral("--port") << QString::number(db.port());
    if (!db.userName().isEmpty())
        args << QStringLiteral("--username") << db.userName();
    args << QStringLiteral("--no-password");
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    if (!db.password().isEmpty())
        env.insert(QStringLiteral("PGPASSWORD"), db.password()); // never on the command line
    p.setProcessEnvironment(env);
    p.start(pgDump, args);
    if (!p.waitForStarted(30000))
        throw UserError(QStringLiteral("No se pudo ejecutar pg_dump: %1").arg(p.errorString()));
    p.waitForFinished(-1);
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        QFile::remove(targetFile);
        throw UserError(QStringLiteral("El respaldo de la base de datos falló:\n%1")
                            .arg(QString::fromLocal8Bit(p.readAllStandardError()).trimmed()));
    }
}

} // namespace

QString backupToolProblem(const QSqlDatabase& db) {
    if (db::engineOf(db) != db::Engine::Postgres)
        return {};
    return pgDumpProblem(newestPgDump(), serverMajor(db));
}

bool externalBackupDue(int installationKind, const QString& databaseHost,
                       const QString& computerName, const QString& backupDoneSetting) {
    if (installationKind != 2)
        return false;
    if (databaseHost.toUpper() != computerName.toUpper())
        return false;
    return backupDoneSetting.trimmed() != QLatin1String("1");
}

QString backupFileName(const QString& folder, const QSqlDatabase& db, const QDate& day) {
    QString name = db::engineOf(db) == db::Engine::Sqlite
                       ? QFileInfo(db.databaseName()).completeBaseName()
                       : db.databaseName();
    return QDir(folder).filePath(name + u'_' + day.toString(QStringLiteral("yyyyMMdd")) +
                                 QStringLiteral("_RESP.BAK"));
}

void backupDatabase(const QSqlDatabase& db, const QString& targetFile) {
    QDir().mkpath(QFileInfo(targetFile).absolutePath());
    if (QFileInfo::exists(targetFile) && !QFile::remove(targetFile))
        throw UserError(QStringLiteral("No se puede reemplazar el archivo %1...!").arg(targetFile));
    if (db::engineOf(db) == db::Engine::Postgres) {
        dumpPostgres(db, targetFile);
        return;
    }
    db::execute(db, QStringLiteral("VACUUM INTO ?"), {targetFile});
}

} // namespace orvo::shell
