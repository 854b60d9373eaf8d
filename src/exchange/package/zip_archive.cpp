#include "exchange/package/zip_archive.h"

#include "common/errors/errors.h"
#include "exchange/package/dbf.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <memory>
#include <zip.h>

namespace orvo::exchange::package {

namespace {

[[noreturn]] void notAZip(const QString& path) {
    throw UserError(QStringLiteral("El archivo %1 no es un archivo comprimido (zip) válido...!")
                        .arg(shownName(path)));
}
[[noreturn]] void damaged(const QString& path) {
    throw UserError(
        QStringLiteral("El archivo %1 está incompleto o dañado...!").arg(shownName(path)));
}
[[noreturn]] void missingArchive(const QString& path) {
    throw UserError(QStringLiteral("No se encuentra el archivo %1...!").arg(shownName(path)));
}

struct ArchiveCloser {
    void operator()(zip_t* z) const { zip_discard(z); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;

Archive openForReading(const QString& path) {
    if (!QFileInfo(path).isFile())
        missingArchive(path);
    int code = 0;
    zip_t* z = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
    if (!z) {
        switch (code) {
        case ZIP_ER_NOENT:
        case ZIP_ER_OPEN:
            missingArchive(path);
        case ZIP_ER_NOZIP: {
            // An archive cut short has lost its index but still starts like one.
            QFile f(path);
            if (f.open(QIODevice::ReadOnly) && f.read(4) == QByteArray("PK\x03\x04"))
                damaged(path);
            notAZip(path);
        }
        default:
            damaged(path);
        }
    }
    return Archive(z);
}

// A plain file name: no folder part, nothing that climbs out of the destination.
bool plainName(const QString& name) {
    return !name.isEmpty() && !name.contains(QLatin1Char('/')) &&
           !name.contains(QLatin1Char('\\')) && name != QLatin1String(".") &&
           name != QLatin1String("..");
}

struct Entry {
    QString name;
    QByteArray data;
};

QList<Entry> readAll(const QString& path) {
    Archive z = openForReading(path);
    const zip_int64_t n = zip_get_num_entries(z.get(), 0);
    if (n < 0)
        damaged(path);
    QList<Entry> out;
    for (zip_int64_t i = 0; i < n; ++i) {
        zip_stat_t st;
        zip_stat_init(&st);
        if (zip_stat_index(z.get(), i, 0, &st) != 0)
            damaged(path);
        const QString name = QString::fromUtf8(st.name);
        if (name.endsWith(QLatin1Char('/')))
            continue; // a folder entry carries nothing
        if (!plainName(name))
            throw UserError(QStringLiteral("El archivo %1 contiene la ruta %2, que no se "
                                           "acepta...!")
                                .arg(shownName(path), name));
        zip_file_t* f = zip_fopen_index(z.get(), i, 0);
        if (!f)
            damaged(path);
        QByteArray data;
        data.resize(static_cast<qsizetype>(st.size));
        zip_int64_t got = 0;
        while (got < static_cast<zip_int64_t>(st.size)) {
            const zip_int64_t r = zip_fread(f, data.data() + got, st.size - got);
            if (r <= 0)
                break;
            got += r;
        }
        // Reading past the end is what makes libzip compare the CRC.
        char extra = 0;
        const zip_int64_t tail = zip_fread(f, &extra, 1);
        const bool ok = got == static_cast<zip_int64_t>(st.size) && tail == 0;
        zip_fclose(f);
        if (!ok)
            damaged(path);
        out.append({name, data});
    }
    return out;
}

} // namespace

void writeZip(const QString& zipPath, const QStringList& files) {
    for (const QString& f : files)
        if (!QFileInfo(f).isFile())
            throw UserError(QStringLiteral("No se encuentra el archivo %1...!").arg(shownName(f)));
    // libzip builds it beside the old one and renames it over it when closing: a failure leaves
    // the old archive as it was.
    int code = 0;
    zip_t* z = zip_open(QFile::encodeName(zipPath).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    if (!z)
        throw UserError(
            QStringLiteral("No se pudo crear el archivo %1...!").arg(shownName(zipPath)));
    for (const QString& f : files) {
        zip_source_t* src = zip_source_file(z, QFile::encodeName(f).constData(), 0, -1);
        const zip_int64_t index =
            src ? zip_file_add(z, QFileInfo(f).fileName().toUtf8().constData(), src,
                               ZIP_FL_OVERWRITE | ZIP_FL_ENC_UTF_8)
                : -1;
        // dBase files are columns of repeated text: the fastest deflate packs them nearly as
        // tight as the default and in a fraction of the time.
        if (index < 0 || zip_set_file_compression(z, zip_uint64_t(index), ZIP_CM_DEFLATE, 1) < 0) {
            if (src)
                zip_source_free(src);
            zip_discard(z);
            throw UserError(
                QStringLiteral("No se pudo comprimir el archivo %1...!").arg(shownName(f)));
        }
    }
    if (zip_close(z) != 0) {
        zip_discard(z);
        QFile::remove(zipPath);
        throw UserError(
            QStringLiteral("No se pudo crear el archivo %1...!").arg(shownName(zipPath)));
    }
}

QStringList zipEntries(const QString& zipPath) {
    Archive z = openForReading(zipPath);
    const zip_int64_t n = zip_get_num_entries(z.get(), 0);
    if (n < 0)
        damaged(zipPath);
    QStringList names;
    for (zip_int64_t i = 0; i < n; ++i) {
        const char* name = zip_get_name(z.get(), i, 0);
        if (!name)
            damaged(zipPath);
        names << QString::fromUtf8(name);
    }
    return names;
}

QStringList extractZip(const QString& zipPath, const QString& folder) {
    const QList<Entry> entries = readAll(zipPath);
    QDir().mkpath(folder);
    QStringList written;
    for (const Entry& e : entries) {
        const QString target = QDir(folder).filePath(e.name);
        QSaveFile out(target);
        if (!out.open(QIODevice::WriteOnly) || out.write(e.data) != e.data.size() || !out.commit())
            throw UserError(
                QStringLiteral("No se pudo escribir el archivo %1...!").arg(shownName(target)));
        written << target;
    }
    return written;
}

} // namespace orvo::exchange::package
