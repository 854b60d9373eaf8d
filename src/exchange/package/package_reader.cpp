#include "exchange/package/package_reader.h"

#include "common/errors/errors.h"
#include "exchange/package/zip_archive.h"

#include <QDir>
#include <stdexcept>

namespace orvo::exchange::package {

PackageReader::PackageReader(const QString& zipPath, const Expected& tables) {
    m_unpacked = std::make_unique<QTemporaryDir>();
    if (!m_unpacked->isValid())
        throw UserError(QStringLiteral("No se pudo crear una carpeta temporal para leer %1...!")
                            .arg(shownName(zipPath)));
    extractZip(zipPath, m_unpacked->path());
    open(m_unpacked->path(), shownName(zipPath), tables);
}

PackageReader PackageReader::fromFolder(const QString& folder, const Expected& tables) {
    PackageReader p;
    p.open(folder, {}, tables);
    return p;
}

PackageReader::PackageReader(PackageReader&&) noexcept = default;
PackageReader::~PackageReader() = default;

void PackageReader::open(const QString& folder, const QString& shownArchive,
                         const Expected& tables) {
    const QStringList files = QDir(folder).entryList(QDir::Files);
    for (auto it = tables.cbegin(); it != tables.cend(); ++it) {
        const QString wanted = it.key() + QStringLiteral(".dbf");
        QString found;
        for (const QString& f : files)
            if (f.compare(wanted, Qt::CaseInsensitive) == 0)
                found = QDir(folder).filePath(f);
        if (found.isEmpty()) {
            if (shownArchive.isEmpty())
                throw UserError(
                    QStringLiteral("No se encuentra el archivo %1...!").arg(it.key() + ".DBF"));
            throw UserError(QStringLiteral("El archivo %1 no contiene %2...!")
                                .arg(shownArchive, it.key() + QStringLiteral(".DBF")));
        }
        m_tables.insert(it.key().toUpper(), std::make_shared<DbfTable>(found, it.value()));
    }
}

const DbfTable& PackageReader::table(const QString& name) const {
    const auto it = m_tables.constFind(name.toUpper());
    if (it == m_tables.cend())
        throw std::invalid_argument("tabla no pedida al paquete: " + name.toStdString());
    return **it;
}

QStringList PackageReader::tableNames() const {
    return m_tables.keys();
}

} // namespace orvo::exchange::package
