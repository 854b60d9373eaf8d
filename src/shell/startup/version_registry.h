#pragma once

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

namespace orvo::shell {

// Records in VERSIONEJECUTABLE (FechaVersion: the file's modification time, whole seconds) the
// build of each executable of the installation found in `binDir`: the program itself,
// "ControlAcceso" and "ServiciosOrvo". A row is added when the register has none for that program
// and modification date. The service is looked up under the name "ServicioOrvo" but inserted as
// "ServiciosOrvo", so it gains a row at every start; the reports that read this table count on
// that. Returns the number of rows inserted.
int registerExecutableVersions(const QSqlDatabase& db, const QString& serie, const QString& binDir,
                               const QString& programName, const QString& programVersion);

} // namespace orvo::shell
