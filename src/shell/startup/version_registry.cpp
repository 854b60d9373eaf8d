#include "shell/startup/version_registry.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

#include <QFileInfo>

namespace orvo::shell {

namespace {

struct Executable {
    QString fileName;
    QString lookupName;
    QString insertName;
    QString version;
};

// The file on disk, with or without the extension it has on Windows installations.
QFileInfo findExecutable(const QString& binDir, const QString& name) {
    for (const QString& suffix : {QString(), QStringLiteral(".exe"), QStringLiteral(".Exe")}) {
        QFileInfo fi(binDir + u'/' + name + suffix);
        if (fi.isFile())
            return fi;
    }
    return {};
}

} // namespace

int registerExecutableVersions(const QSqlDatabase& db, const QString& serie, const QString& binDir,
                               const QString& programName, const QString& programVersion) {
    // Only our own program carries a version we can read; the others report none, as a file
    // without version information does.
    const QList<Executable> executables = {
        {programName, programName, programName, programVersion},
        {QStringLiteral("ControlAcceso"), QStringLiteral("ControlAcceso"),
         QStringLiteral("ControlAcceso"), QString()},
        {QStringLiteral("ServiciosOrvo"), QStringLiteral("ServicioOrvo"),
         QStringLiteral("ServiciosOrvo"), QString()},
    };
    db::Transaction tx(db);
    int inserted = 0;
    db::Sql touch(db,
                  QStringLiteral("UPDATE VERSIONEJECUTABLE SET NombrePrograma = NombrePrograma "
                                 "WHERE Serie = ? AND NombrePrograma = ? AND FechaVersion = ?"));
    db::Sql insert(db, QStringLiteral("INSERT INTO VERSIONEJECUTABLE(Serie,NombrePrograma,Fecha,"
                                      "FechaVersion,Version) VALUES(?,?,") +
                           db::nowExpression(db) + QStringLiteral(",?,?)"));
    for (const Executable& e : executables) {
        const QFileInfo fi = findExecutable(binDir, e.fileName);
        if (!fi.exists())
            continue;
        // Whole seconds, as the date is shown and compared.
        QDateTime modified = fi.lastModified();
        modified.setTime(
            QTime(modified.time().hour(), modified.time().minute(), modified.time().second()));
        touch.bindAll({serie, e.lookupName, modified}).exec();
        if (touch.rowsAffected() > 0)
            continue;
        insert.bindAll({serie, e.insertName, modified, e.version}).exec();
        ++inserted;
    }
    tx.commit();
    return inserted;
}

} // namespace orvo::shell
