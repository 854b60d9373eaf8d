#include "inventory/transfers/transfer_package.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "exchange/package/dbf_names.h"
#include "exchange/package/package_reader.h"
#include "exchange/package/templates.h"
#include "exchange/package/zip_archive.h"
#include "inventory/transfers/package_store.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLoggingCategory>
#include <QSet>
#include <QTemporaryDir>
#include <algorithm>
#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcTransfers)

namespace orvo::inventory::transfers {

namespace {

using exchange::package::DbfWriter;
using store::PackagePart;

// What each file of a package is made of, and the columns that travel under a name of their own
// in it (beyond the fixed dBase names).
struct PartFile {
    PackagePart part;
    const char* file;
    QHash<QString, QString> aliases; // upper-case column -> field
};

QList<PartFile> partFiles(Kind kind) {
    const PackageTables& t = packageTables(kind);
    const QHash<QString, QString> lines = {
        {QStringLiteral("NUMERO"), t.numberField},
        {QStringLiteral("NUMEROCAJA"), QStringLiteral("CajaNum")},
        {QStringLiteral("CODIGOBARRA"), QStringLiteral("CodBarra")}};
    QList<PartFile> out = {
        {PackagePart::Summary,
         kind == Kind::Transfer ? "RESUTRAN" : "RESUDVTR",
         {{QStringLiteral("NUMERO"), t.numberField}}},
        {PackagePart::Lines, kind == Kind::Transfer ? "MOVITRAN" : "MOVIDVTR", lines},
        {PackagePart::Lots, "LOTE", {}},
    };
    if (kind == Kind::Transfer)
        out += QList<PartFile>{
            {PackagePart::Articles, "INVENTAR", {}},
            {PackagePart::Brands, "MARCAS", {}},
            {PackagePart::Sizes, "TALLAS", {{QStringLiteral("CODIGO"), QStringLiteral("Talla")}}},
            {PackagePart::Colours, "COLORES", {}},
            {PackagePart::Categories, "CATEGORI", {}},
            {PackagePart::Manufacturers, "FABRICA", {}},
            {PackagePart::DispatchTypes, "TIDESPAC", {}},
        };
    return out;
}

// Writes the rows of one part into `<file>.DBF` of `folder` from its template, filling the
// fields the template has; no file when there is no row. Returns the file written, or nothing.
QString writePart(const QSqlDatabase& db, Kind kind, const PartFile& p,
                  const QList<long long>& numbers, const QString& folder) {
    std::optional<DbfWriter> out;
    const QString name = QString::fromLatin1(p.file);
    const QString path = QDir(folder).filePath(name + QStringLiteral(".DBF"));
    store::selectPart(db, kind, p.part, numbers, [&](const QSqlRecord& r) {
        if (!out)
            out.emplace(DbfWriter::fromTemplate(exchange::package::findTemplate(name), path));
        for (int i = 0; i < r.count(); ++i) {
            const QString column = r.fieldName(i);
            const QString field =
                p.aliases.value(column.toUpper(), exchange::package::dbfName(column));
            const int at = out->fieldIndex(field);
            if (at >= 0)
                out->set(at, r.value(i));
        }
        out->addRecord();
    });
    if (!out)
        return {};
    out->close();
    return path;
}

// The documents of a package still waiting in `zipPath`; nothing when there is none or it cannot
// be read (it is then replaced).
QList<long long> waitingIn(const QString& zipPath, Kind kind) {
    if (!QFileInfo::exists(zipPath))
        return {};
    const PackageTables& t = packageTables(kind);
    try {
        const exchange::package::PackageReader p(zipPath, {{t.summary, {t.numberField}}});
        const auto& table = p.table(t.summary);
        QList<long long> out;
        for (int r = 0; r < table.recordCount(); ++r)
            if (!table.isDeleted(r))
                out.append(table.integer(r, t.numberField));
        return out;
    } catch (const UserError&) {
        return {};
    }
}

QString documentWords(Kind kind) {
    return kind == Kind::Transfer ? QStringLiteral("la transferencia")
                                  : QStringLiteral("la devolución de transferencia");
}

} // namespace

QString packageFileName(Kind kind) {
    return kind == Kind::Transfer ? QStringLiteral("Transfer.zip") : QStringLiteral("Devuelve.zip");
}

const PackageTables& packageTables(Kind kind) {
    static const PackageTables transfers{QStringLiteral("RESUTRAN"), QStringLiteral("MOVITRAN"),
                                         QStringLiteral("NumTra"), QStringLiteral("ResuTran.dbf")};
    static const PackageTables returns{QStringLiteral("RESUDVTR"), QStringLiteral("MOVIDVTR"),
                                       QStringLiteral("NumDvTr"), QStringLiteral("ResuDvTr.dbf")};
    return kind == Kind::Transfer ? transfers : returns;
}

QString sendFolder(const QSqlDatabase& db) {
    QString folder =
        db::scalar(db, QStringLiteral("SELECT Ruta FROM PARAMETROSTRANSFER LIMIT 1")).toString();
    if (folder.trimmed().isEmpty())
        folder = shell::appHome() + QStringLiteral("/Envia");
    return QDir::cleanPath(QFileInfo(folder.trimmed()).absoluteFilePath());
}

SentPackage writePackage(const QSqlDatabase& db, Kind kind, const QString& receiver,
                         const QList<long long>& numbers, const QString& folder) {
    exchange::package::requireTemplateFolder();
    for (long long n : numbers) {
        const auto state = store::headerState(db, kind, n);
        if (!state || state->status == kOpen)
            throw UserError(QStringLiteral("Solo puede enviar ") + documentWords(kind) +
                            QStringLiteral(" APROBADA...!"));
        if (state->receiver != receiver)
            throw UserError(QStringLiteral("La ") + kindName(kind).toLower() + u' ' +
                            QString::number(n) + QStringLiteral(" es para la sucursal ") +
                            state->receiver + QStringLiteral("...!"));
    }
    const QString target = QDir(folder).filePath(receiver);
    const QString zipPath = QDir(target).filePath(packageFileName(kind));
    QSet<long long> all(numbers.cbegin(), numbers.cend());
    for (long long n : store::approvedFor(db, kind, receiver, false))
        all.insert(n);
    for (long long n : waitingIn(zipPath, kind)) {
        const auto state = store::headerState(db, kind, n);
        if (state && state->status != kOpen && state->receiver == receiver)
            all.insert(n);
    }
    if (all.isEmpty())
        throw UserError(QStringLiteral("No hay documentos aprobados para enviar a la sucursal ") +
                        receiver + QStringLiteral("...!"));
    QList<long long> sorted(all.cbegin(), all.cend());
    std::sort(sorted.begin(), sorted.end());

    QTemporaryDir work;
    if (!work.isValid())
        throw UserError(
            QStringLiteral("No se pudo crear una carpeta temporal para el paquete...!"));
    QStringList files;
    for (const PartFile& p : partFiles(kind))
        if (const QString file = writePart(db, kind, p, sorted, work.path()); !file.isEmpty())
            files << file;
    if (!QDir().mkpath(target))
        throw UserError(QStringLiteral("No se pudo crear la carpeta ") +
                        QDir::toNativeSeparators(target) + QStringLiteral("...!"));
    exchange::package::writeZip(zipPath, files);

    // The package exists: what it carries has travelled.
    db::Transaction tx(db);
    for (long long n : sorted)
        store::markExported(db, kind, n);
    tx.commit();
    qCInfo(lcTransfers) << packageFileName(kind) << "for" << receiver << "written with" << sorted;
    return {zipPath, sorted};
}

} // namespace orvo::inventory::transfers
