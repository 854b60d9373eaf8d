#pragma once

#include <QDate>
#include <QSqlDatabase>
#include <QString>

namespace orvo::shell {

// The reminder to copy the database to a USB device is given only at the machine that hosts the
// database (PARAMETROS.NombreEquipo, compared ignoring case) of an installation of kind 2, and
// only while the copy after the last register closing is still owed.
bool externalBackupDue(int installationKind, const QString& databaseHost,
                       const QString& computerName, const QString& backupDoneSetting);

// Suggested file: <folder>/<database>_<yyyyMMdd>_RESP.BAK
QString backupFileName(const QString& folder, const QSqlDatabase& db, const QDate& day);

// Why this machine could not back the database up at a register's closing, or empty when it
// can: PostgreSQL needs a pg_dump at least as new as the server (an older one refuses to dump a
// newer server).
QString backupToolProblem(const QSqlDatabase& db);

// Writes a complete copy of the database to `targetFile` (an existing file is replaced):
// SQLite through VACUUM INTO, PostgreSQL through pg_dump in its custom format. Throws UserError
// when the copy cannot be made.
void backupDatabase(const QSqlDatabase& db, const QString& targetFile);

} // namespace orvo::shell
