#pragma once

#include "exchange/package/dbf.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

// A received package read whole before anything is loaded from it: the archive is unpacked into
// a private folder and every table it must hold is opened and checked (present, a dBase table,
// not truncated, with the fields asked for). Any fault is a UserError raised by the constructor,
// so a loader that builds its PackageReader before its transaction changes nothing on a bad file.
//
//   PackageReader p(recibe + "/Transfer.zip",
//                   {{"RESUTRAN", {"NumTra", "Fecha"}}, {"MOVITRAN", {"NumTra", "CodBarra"}}});
//   const DbfTable& lines = p.table("MOVITRAN");
//
// Table names match the files' names ignoring case and the ".dbf" extension. A folder of loose
// DBF files (what lies in Recibe/ after an older system unpacked it) is read the same way with
// fromFolder().
namespace orvo::exchange::package {

class PackageReader {
public:
    using Expected = QMap<QString, QStringList>; // table → fields it must have

    PackageReader(const QString& zipPath, const Expected& tables);
    static PackageReader fromFolder(const QString& folder, const Expected& tables);
    PackageReader(PackageReader&&) noexcept;
    ~PackageReader();

    // One of the expected tables; asking for another is a programming error.
    const DbfTable& table(const QString& name) const;
    QStringList tableNames() const;

private:
    PackageReader() = default;
    void open(const QString& folder, const QString& shownArchive, const Expected& tables);

    std::unique_ptr<QTemporaryDir> m_unpacked;
    QMap<QString, std::shared_ptr<DbfTable>> m_tables; // upper-case name → table
};

} // namespace orvo::exchange::package
