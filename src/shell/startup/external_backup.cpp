#include "shell/startup/external_backup.h"

#include "common/db/connection.h"
#include "common/db/sql.h"
#include "common/errors/errors.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

namespace orvo::shell {

namespace {

QString findPgDump() {
    QString exe = QStandardPaths::findExecutable(QStringLiteral("pg_dump"));
    if (!exe.isEmpty())
        return exe;
    QDir lib(QStringLiteral("/usr/lib/postgresql"));
    QStringList versions = lib.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (auto it = versions.crbegin(); it != versions.crend(); ++it) {
        const QString candidate = lib.filePath(*it + QStringLiteral("/bin/pg_dump"));
        if (QFileInfo(candidate).isExecutable())
            return candidate;
    }
    return {};
}

void dumpPostgres(const QSqlDatabase& db, const QString& targetFile) {
    const QString pgDump = findPgDump();
    if (pgDump.isEmpty())
        throw UserError(QStringLiteral("No se puede realizar el respaldo: el programa pg_dump de "
                                       "PostgreSQL no está instalado en este equipo...!"));
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
