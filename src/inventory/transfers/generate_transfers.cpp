#include "inventory/transfers/generate_transfers.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "exchange/package/dbf.h"
#include "inventory/articles/articles.h"
#include "inventory/transfers/sources_store.h"
#include "inventory/transfers/transfer_store.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>

namespace orvo::inventory::transfers {

namespace {

using Missing = purchases::PackingList::Missing;

// The file's quantities per barcode, in the order they first appear.
QList<Missing> summedByBarcode(const SupplierFile& file) {
    QList<Missing> out;
    for (const SupplierFile::Row& r : file.rows) {
        auto it = std::find_if(out.begin(), out.end(),
                               [&](const Missing& m) { return m.barcode == r.barcode; });
        if (it == out.end())
            out.append({r.barcode, r.name, r.quantity});
        else
            it->quantity += r.quantity;
    }
    return out;
}

} // namespace

SupplierFile readSupplierFile(const QString& folder) {
    QString path;
    for (const QString& f : QDir(folder).entryList(QDir::Files))
        if (f.compare(QStringLiteral("Movitran.dbf"), Qt::CaseInsensitive) == 0)
            path = QDir(folder).filePath(f);
    if (folder.trimmed().isEmpty() || path.isEmpty())
        throw UserError(
            QStringLiteral("Debe especificar una ruta que contenga los archivos a cargar!"));
    SupplierFile out;
    out.path = path;
    try {
        const exchange::package::DbfTable t(
            path, {QStringLiteral("NumTra"), QStringLiteral("CajaNum"), QStringLiteral("CodBarra"),
                   QStringLiteral("Cantidad")});
        const bool named = t.hasField(QStringLiteral("Nombre"));
        QMap<QPair<long long, long long>, bool> boxes;
        for (int r = 0; r < t.recordCount(); ++r) {
            if (t.isDeleted(r))
                continue;
            SupplierFile::Row row;
            row.document = t.integer(r, QStringLiteral("NumTra"));
            row.box = t.integer(r, QStringLiteral("CajaNum"));
            row.barcode = t.text(r, QStringLiteral("CodBarra")).trimmed();
            row.name = named ? t.text(r, QStringLiteral("Nombre")) : QString();
            row.quantity = t.decimal(r, QStringLiteral("Cantidad"));
            if (row.barcode.isEmpty())
                continue;
            boxes.insert({row.document, row.box}, true);
            out.rows.append(row);
        }
        for (auto it = boxes.cbegin(); it != boxes.cend(); ++it)
            out.boxes.append({it.key().first, it.key().second, false});
    } catch (const UserError&) {
        throw UserError(QStringLiteral("Archivo DBF no valido!"));
    }
    return out;
}

void markConverted(const QSqlDatabase& db, const QString& supplier, SupplierFile& file) {
    for (SupplierBox& b : file.boxes)
        b.converted = !supplier.isEmpty() &&
                      store::automaticExists(db, supplier, QString::number(b.document), b.box);
}

SupplierFileCheck checkSupplierFile(const QSqlDatabase& db, const SupplierFile& file) {
    SupplierFileCheck out;
    for (const Missing& m : summedByBarcode(file)) {
        const store::ArticleValues v = store::articleValues(db, m.barcode);
        if (!v.exists)
            out.missing.append(m);
        else if (!v.valued)
            out.withoutValues.append(m);
    }
    if (!out.missing.isEmpty())
        out.missingFile = purchases::writeMissingArticles(out.missing);
    if (!out.withoutValues.isEmpty())
        out.withoutValuesFile = purchases::writeArticleList(
            QStringLiteral("Articulos sin valores.txt"), out.withoutValues);
    return out;
}

void checkRequest(const SupplierFile* file, const GenerateRequest& r) {
    if (!file)
        throw UserError(QStringLiteral("Debe seleccionar un archivo MOVITRAN.DBF!"));
    if (r.supplier.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar un proveedor!"));
    if (r.branch.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar una sucursal!"));
    if (r.boxes.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar una caja!"));
}

GenerateResult generateTransfers(const QSqlDatabase& db, const SupplierFile& file,
                                 const GenerateRequest& r) {
    checkRequest(&file, r);
    const SupplierFileCheck check = checkSupplierFile(db, file);
    if (!check.ok())
        throw UserError(QStringLiteral("No se puede generar la transferencia: %1 articulos no "
                                       "existen y %2 no tienen costo o precios (Articulos no "
                                       "existentes.txt, Articulos sin valores.txt)...!")
                            .arg(check.missing.size())
                            .arg(check.withoutValues.size()));
    GenerateResult out;
    db::Transaction tx(db);
    const QDateTime now = db::serverNow(db);
    const QString here = store::storeCode(db);
    for (const SupplierBox& b : r.boxes) {
        const QString document = QString::number(b.document);
        if (store::automaticExists(db, r.supplier, document, b.box)) {
            ++out.skipped;
            continue;
        }
        Transfer t;
        t.number = common::nextCode(db, QStringLiteral("TRANSFERENCIAS"), QStringLiteral("Numero"));
        t.date = now;
        t.issueDate = now.date();
        t.sender = here;
        t.receiver = r.branch;
        t.origin = document;
        t.note = QStringLiteral("PROVEEDOR %1 DOCUMENTO %2 CAJA %3")
                     .arg(r.supplier, document)
                     .arg(b.box);
        t.user = r.user;
        store::insertHeader(db, t);
        QList<DocumentLine> lines;
        for (const SupplierFile::Row& row : file.rows) {
            if (row.document != b.document || row.box != b.box)
                continue;
            auto it = std::find_if(lines.begin(), lines.end(),
                                   [&](const DocumentLine& l) { return l.barcode == row.barcode; });
            if (it != lines.end()) {
                it->quantity += row.quantity;
                continue;
            }
            DocumentLine l;
            l.barcode = row.barcode;
            l.quantity = row.quantity;
            l.price = findArticleByBarcode(db, row.barcode)->averageCost;
            l.box = 1;
            lines.append(l);
        }
        Decimal total;
        for (int i = 0; i < lines.size(); ++i) {
            store::upsertLine(db, Kind::Transfer, t.number, lines[i], i + 1, now);
            total += lines[i].quantity * lines[i].price;
        }
        store::markApproved(db, Kind::Transfer, t.number, total.rounded(2));
        store::recordAutomatic(db,
                               {r.supplier, document, b.box, r.branch, t.number, 1, r.user, now});
        out.transfers.append(t.number);
    }
    tx.commit();
    SupplierFile after = file;
    markConverted(db, r.supplier, after);
    out.wholeFile = std::all_of(after.boxes.cbegin(), after.boxes.cend(),
                                [](const SupplierBox& b) { return b.converted; });
    return out;
}

} // namespace orvo::inventory::transfers
