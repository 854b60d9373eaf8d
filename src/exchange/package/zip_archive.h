#pragma once

#include <QString>
#include <QStringList>

// Zip archives of the exchange packages, through libzip. Entries are plain file names (no
// folders), as the archiver of the other side writes and reads them.
//
//   writeZip(envia + "/01.zip", {envia + "/VENTAS.DBF", envia + "/MOVVENTA.DBF"});
//   const QStringList files = extractZip(recibe + "/Transfer.zip", recibe);
//
// Failures are UserErrors with the system's Spanish text naming the archive.
namespace orvo::exchange::package {

// Writes `zipPath` holding each file of `files` under its own name, replacing an archive that
// was there. The archive appears whole or not at all.
void writeZip(const QString& zipPath, const QStringList& files);

// The entry names of an archive, checked: a missing file, a file that is not a zip archive or a
// damaged one is a UserError.
QStringList zipEntries(const QString& zipPath);

// Extracts every entry into `folder` (created when missing), replacing files of the same name.
// The whole archive is read and checked first (its index, every entry's CRC, entry names without
// folders): when anything is wrong nothing is written to `folder`. Returns the paths written.
QStringList extractZip(const QString& zipPath, const QString& folder);

} // namespace orvo::exchange::package
