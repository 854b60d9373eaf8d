#include "inventory/transfers/transfer_import.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/import/import_loaders.h"
#include "exchange/package/package_reader.h"
#include "exchange/package/zip_archive.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/articles.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/stock/model_average.h"
#include "inventory/transfers/transfer_package.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"
#include "shell/session/settings_readers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSet>
#include <algorithm>

Q_DECLARE_LOGGING_CATEGORY(lcTransfers)

namespace orvo::inventory::transfers {

namespace {

using exchange::package::DbfTable;
using exchange::package::PackageReader;

// The files of a folder by upper-case name.
QHash<QString, QString> filesIn(const QString& folder) {
    QHash<QString, QString> out;
    const QDir dir(folder);
    for (const QString& f : dir.entryList(QDir::Files))
        out.insert(f.toUpper(), dir.filePath(f));
    return out;
}

// A column of the table when the file has it; empty (zero, null) otherwise.
QString text(const DbfTable& t, int r, const char* field) {
    const QString f = QString::fromLatin1(field);
    return t.hasField(f) ? t.text(r, f).trimmed() : QString();
}
Decimal number(const DbfTable& t, int r, const char* field) {
    const QString f = QString::fromLatin1(field);
    return t.hasField(f) ? t.decimal(r, f) : Decimal();
}
long long integer(const DbfTable& t, int r, const char* field) {
    const QString f = QString::fromLatin1(field);
    return t.hasField(f) ? t.integer(r, f) : 0;
}
QDate date(const DbfTable& t, int r, const char* field) {
    const QString f = QString::fromLatin1(field);
    return t.hasField(f) ? t.date(r, f) : QDate();
}

// The catalogue tables a transfer package may bring, with the fields each must have.
const QMap<QString, QStringList>& masterTables() {
    static const QMap<QString, QStringList> tables = {
        {QStringLiteral("INVENTAR"), {QStringLiteral("CodBar")}},
        {QStringLiteral("MARCAS"), {QStringLiteral("Codigo")}},
        {QStringLiteral("TALLAS"), {QStringLiteral("Talla")}},
        {QStringLiteral("COLORES"), {QStringLiteral("Codigo")}},
        {QStringLiteral("CATEGORI"), {QStringLiteral("Codigo")}},
        {QStringLiteral("FABRICA"), {QStringLiteral("Codigo")}},
        {QStringLiteral("LOTE"), {QStringLiteral("ID"), QStringLiteral("Lote")}},
        {QStringLiteral("TIDESPAC"), {QStringLiteral("ID")}},
    };
    return tables;
}

PackageReader::Expected expectedTables(Kind kind, const QSet<QString>& available) {
    const PackageTables& t = packageTables(kind);
    QStringList lineFields = {t.numberField, QStringLiteral("CodBarra"),
                              QStringLiteral("Cantidad")};
    if (kind == Kind::Transfer)
        lineFields << QStringLiteral("Valor"); // the sender's cost is what the receiver averages
    PackageReader::Expected out = {{t.summary, {t.numberField, QStringLiteral("CodEnvia")}},
                                   {t.lines, lineFields}};
    for (auto it = masterTables().cbegin(); it != masterTables().cend(); ++it)
        if (available.contains(it.key()) &&
            (kind == Kind::Transfer || it.key() == QLatin1String("LOTE")))
            out.insert(it.key(), it.value());
    return out;
}

QList<CodeName> codesAndNames(const DbfTable& t) {
    QList<CodeName> out;
    for (int r = 0; r < t.recordCount(); ++r)
        if (!t.isDeleted(r) && !text(t, r, "Codigo").isEmpty())
            out.append({text(t, r, "Codigo"), text(t, r, "Nombre")});
    return out;
}

PackageMasters readMasters(const PackageReader& p) {
    PackageMasters m;
    const QStringList names = p.tableNames();
    const auto has = [&](const char* name) { return names.contains(QString::fromLatin1(name)); };
    if (has("MARCAS"))
        m.brands = codesAndNames(p.table(QStringLiteral("MARCAS")));
    if (has("COLORES"))
        m.colours = codesAndNames(p.table(QStringLiteral("COLORES")));
    if (has("CATEGORI"))
        m.categories = codesAndNames(p.table(QStringLiteral("CATEGORI")));
    if (has("FABRICA"))
        m.manufacturers = codesAndNames(p.table(QStringLiteral("FABRICA")));
    if (has("TALLAS")) {
        const DbfTable& t = p.table(QStringLiteral("TALLAS"));
        for (int r = 0; r < t.recordCount(); ++r)
            if (!t.isDeleted(r) && !text(t, r, "Talla").isEmpty())
                m.sizes << text(t, r, "Talla");
    }
    if (has("LOTE")) {
        const DbfTable& t = p.table(QStringLiteral("LOTE"));
        for (int r = 0; r < t.recordCount(); ++r)
            if (!t.isDeleted(r) && !text(t, r, "Lote").isEmpty())
                m.lots.append({integer(t, r, "ID"), text(t, r, "Lote"), text(t, r, "Descripcio")});
    }
    if (has("TIDESPAC")) {
        const DbfTable& t = p.table(QStringLiteral("TIDESPAC"));
        for (int r = 0; r < t.recordCount(); ++r)
            if (!t.isDeleted(r) && integer(t, r, "ID") > 0)
                m.dispatchTypes.append({int(integer(t, r, "ID")), text(t, r, "Descripcio")});
    }
    if (has("INVENTAR")) {
        const DbfTable& t = p.table(QStringLiteral("INVENTAR"));
        for (int r = 0; r < t.recordCount(); ++r) {
            if (t.isDeleted(r) || text(t, r, "CodBar").isEmpty())
                continue;
            store::PackageArticle a;
            a.barcode = text(t, r, "CodBar");
            a.name = text(t, r, "Nombre");
            a.reference = text(t, r, "Referencia");
            a.brand = text(t, r, "CodMarca");
            a.size = text(t, r, "Talla");
            a.colour = text(t, r, "CodColor");
            a.manufacturer = text(t, r, "Fabricante");
            a.category = text(t, r, "Categoria");
            a.taxCode = int(integer(t, r, "TipoImpues"));
            a.retail = number(t, r, "PreDetal");
            a.wholesale = number(t, r, "PreMayor");
            a.member = number(t, r, "PreAfiliad");
            a.promotionPrice = number(t, r, "PrePromo");
            a.promotion = integer(t, r, "Promocion") == 1;
            a.promotionStart = date(t, r, "FecInicial");
            a.promotionEnd = date(t, r, "FechaFinal");
            m.articles.insert(a.barcode, a);
        }
    }
    return m;
}

QString documentName(Kind kind, long long number) {
    return (kind == Kind::Transfer ? QStringLiteral("La transferencia ")
                                   : QStringLiteral("La devolución de transferencia ")) +
           QString::number(number);
}

void readDocuments(const PackageReader& p, ReceivedPackage& out) {
    const PackageTables& t = packageTables(out.kind);
    const DbfTable& head = p.table(t.summary);
    QHash<long long, int> at; // number -> position
    for (int r = 0; r < head.recordCount(); ++r) {
        if (head.isDeleted(r))
            continue;
        ReceivedDocument d;
        d.number = head.integer(r, t.numberField);
        if (at.contains(d.number))
            continue;
        d.sender = text(head, r, "CodEnvia");
        if (d.sender.isEmpty())
            throw UserError(documentName(out.kind, d.number) +
                            QStringLiteral(" no indica la sucursal que la envía (") + out.source +
                            QStringLiteral(")...!"));
        d.receiver = text(head, r, "CodRecib");
        d.date = QDateTime(date(head, r, "Fecha"), QTime(0, 0));
        d.issueDate = QDateTime(date(head, r, "FecEmision"), QTime(0, 0));
        if (!d.issueDate.isValid())
            d.issueDate = d.date;
        d.note = text(head, r, "Observac");
        d.lotId = integer(head, r, "IDLote");
        d.dispatchId = int(integer(head, r, "IDDespacho"));
        at.insert(d.number, int(out.documents.size()));
        out.documents.append(d);
    }
    const DbfTable& lines = p.table(t.lines);
    for (int r = 0; r < lines.recordCount(); ++r) {
        if (lines.isDeleted(r))
            continue;
        const long long n = lines.integer(r, t.numberField);
        const auto it = at.constFind(n);
        if (it == at.cend())
            throw UserError(QStringLiteral("El archivo ") + t.lines + QStringLiteral(".DBF de ") +
                            out.source + QStringLiteral(" tiene movimientos del documento ") +
                            QString::number(n) + QStringLiteral(" que no está en ") + t.summary +
                            QStringLiteral(".DBF...!"));
        DocumentLine l;
        l.barcode = text(lines, r, "CodBarra");
        if (l.barcode.isEmpty())
            continue;
        l.name = text(lines, r, "Nombre");
        l.quantity = lines.decimal(r, QStringLiteral("Cantidad"));
        l.price = number(lines, r, "Valor");
        l.box = std::max(1LL, integer(lines, r, "CajaNum"));
        out.documents[*it].lines.append(l);
    }
    std::sort(
        out.documents.begin(), out.documents.end(),
        [](const ReceivedDocument& a, const ReceivedDocument& b) { return a.number < b.number; });
}

void logWrite(const QSqlDatabase& db, const store::PackageArticle& a,
              const store::Statement& statement, const ArticleWriter& writer) {
    logArticleWrite(db, a.barcode, a.reference, a.brand,
                    rules::describeStatement(statement.sql, statement.values), writer);
}

// The article of a line as the package describes it, or as the line alone does.
void takeArticle(const QSqlDatabase& db, const PackageMasters& m, const DocumentLine& line,
                 const QDateTime& now, const ArticleWriter& writer) {
    const auto it = m.articles.constFind(line.barcode);
    if (it == m.articles.cend()) {
        // Nothing but its name came: it becomes active, or is created under its own barcode.
        if (store::reactivateArticle(db, line.barcode, now))
            return;
        store::PackageArticle a;
        a.barcode = line.barcode;
        a.name = line.name.isEmpty() ? line.barcode : line.name;
        a.reference = line.barcode;
        logWrite(db, a, store::insertArticle(db, a, 1, now), writer);
        return;
    }
    store::PackageArticle a = *it;
    if (a.name.isEmpty())
        a.name = line.name;
    if (const auto updated = store::updateArticle(db, a, now)) {
        logWrite(db, a, *updated, writer);
    } else {
        const int tax = a.taxCode > 0 && store::taxCodeExists(db, a.taxCode) ? a.taxCode : 1;
        logWrite(db, a, store::insertArticle(db, a, tax, now), writer);
    }
    if (!a.reference.isEmpty())
        logWrite(db, a, store::applyModelPrices(db, a), writer);
}

void bringMasters(const QSqlDatabase& db, const PackageMasters& m) {
    for (const CodeName& c : m.brands)
        store::upsertCatalogue(db, QStringLiteral("MARCAS"), c.code, c.name);
    for (const QString& s : m.sizes)
        store::upsertSize(db, s);
    for (const CodeName& c : m.colours)
        store::upsertCatalogue(db, QStringLiteral("COLORES"), c.code, c.name);
    for (const CodeName& c : m.categories)
        store::upsertCatalogue(db, QStringLiteral("CATEGORIAS"), c.code, c.name);
    for (const CodeName& c : m.manufacturers)
        store::upsertCatalogue(db, QStringLiteral("FABRICANTES"), c.code, c.name);
    for (const DispatchType& t : m.dispatchTypes)
        store::upsertDispatchType(db, t.id, t.description);
}

// This store's ID of the sender's lot, bringing the lot in; 0 when it travelled without one.
long long lotHere(const QSqlDatabase& db, const PackageMasters& m, long long senderId,
                  const QDateTime& now) {
    if (senderId <= 0)
        return 0;
    for (const ReceivedLot& l : m.lots)
        if (l.id == senderId)
            return store::upsertLot(db, l.code, l.description, now);
    return 0;
}

void loadTransfer(const QSqlDatabase& db, const ReceivedPackage& p, const ReceivedDocument& d,
                  const store::ReceivedHeader& h, const QDateTime& now,
                  const ArticleWriter& writer) {
    QSet<QString> taken;
    for (const DocumentLine& l : d.lines)
        if (!taken.contains(l.barcode)) {
            taken.insert(l.barcode);
            takeArticle(db, p.masters, l, now, writer);
        }
    for (int i = 0; i < d.lines.size(); ++i)
        store::upsertReceivedLine(db, Kind::Transfer, h, d.lines[i], i + 1, now);
    Decimal total;
    for (const store::Arrival& a : store::holdArrivals(db, Kind::Transfer, h.number, h.sender)) {
        const Decimal cost = purchases::rules::movingAverage(a.stock, a.averageCost, a.units,
                                                             a.value * a.units, a.value)
                                 .rounded(5);
        store::writeArrival(db, a.barcode, a.stock + a.units, cost, a.value.rounded(5));
        total += a.units * a.value;
    }
    stock::recomputeModelAverage(db, stock::AveragedDocument::receivedTransfer(h.number, h.sender));
    store::setReceivedTotal(db, Kind::Transfer, h.number, h.sender, total.rounded(2));
}

void loadReturn(const QSqlDatabase& db, const ReceivedDocument& d, const store::ReceivedHeader& h,
                const QDateTime& now) {
    for (const DocumentLine& l : d.lines)
        store::reactivateArticle(db, l.barcode, now);
    for (int i = 0; i < d.lines.size(); ++i) {
        DocumentLine l = d.lines[i];
        l.price = Decimal(); // valued below at this store's cost
        store::upsertReceivedLine(db, Kind::Return, h, l, i + 1, now);
    }
    Decimal total;
    for (const store::Arrival& a : store::holdArrivals(db, Kind::Return, h.number, h.sender)) {
        store::valueReturnedLines(db, h.number, h.sender, a.barcode, a.averageCost);
        store::addStock(db, a.barcode, Decimal() - a.units);
        total += a.units * a.averageCost;
    }
    store::setReceivedTotal(db, Kind::Return, h.number, h.sender, total.rounded(2));
}

// Refusals that must come before anything is written.
void checkPackage(const QSqlDatabase& db, const ReceivedPackage& p) {
    const QString here = store::storeCode(db);
    for (const ReceivedDocument& d : p.documents) {
        if (!here.isEmpty() && !d.receiver.isEmpty() && d.receiver != here)
            throw UserError(documentName(p.kind, d.number) + QStringLiteral(" de la sucursal ") +
                            d.sender + QStringLiteral(" es para la sucursal ") + d.receiver +
                            QStringLiteral(", no para esta tienda (") + here +
                            QStringLiteral(")...!"));
        if (p.kind != Kind::Return)
            continue;
        for (const DocumentLine& l : d.lines)
            if (!findArticleByBarcode(db, l.barcode))
                throw UserError(QStringLiteral("La Devolución ") + QString::number(d.number) +
                                QStringLiteral(" contiene el Articulo '") + l.barcode +
                                QStringLiteral("' que no esta en el inventario... Presione enter "
                                               "para salir"));
    }
}

} // namespace

std::optional<ReceivedPackage> readReceived(const QString& folder, Kind kind) {
    const QHash<QString, QString> files = filesIn(folder);
    const PackageTables& t = packageTables(kind);
    ReceivedPackage out;
    out.kind = kind;
    out.folder = folder;
    const QString zipKey = packageFileName(kind).toUpper();
    if (files.contains(zipKey)) {
        const QString zip = files.value(zipKey);
        QSet<QString> available;
        for (const QString& entry : exchange::package::zipEntries(zip))
            available.insert(QFileInfo(entry).completeBaseName().toUpper());
        out.source = QFileInfo(zip).fileName();
        out.files = {zip};
        const PackageReader p(zip, expectedTables(kind, available));
        readDocuments(p, out);
        if (kind == Kind::Transfer)
            out.masters = readMasters(p);
        return out;
    }
    const QString summary = t.summary + QStringLiteral(".DBF");
    const QString lines = t.lines + QStringLiteral(".DBF");
    if (!files.contains(summary) || !files.contains(lines))
        return std::nullopt;
    QSet<QString> available;
    for (auto it = files.cbegin(); it != files.cend(); ++it)
        if (it.key().endsWith(QStringLiteral(".DBF")))
            available.insert(it.key().chopped(4));
    out.source = QFileInfo(files.value(summary)).fileName();
    // Only the document's own tables go aside: loose catalogues may serve another package.
    out.files = {files.value(summary), files.value(lines)};
    const PackageReader p = PackageReader::fromFolder(folder, expectedTables(kind, available));
    readDocuments(p, out);
    if (kind == Kind::Transfer)
        out.masters = readMasters(p);
    return out;
}

void checkNoPendingRate(const QSqlDatabase& db, const QString& folder) {
    if (!shell::exchangeRateImportEnabled(db))
        return;
    for (const QString& f : QDir(folder).entryList(QDir::Files))
        if (f.startsWith(QStringLiteral("tasacamb"), Qt::CaseInsensitive))
            throw UserError(QStringLiteral("Debe cargar la tasa de cambio pendiente...!"));
}

ImportResult importReceived(const QSqlDatabase& db, const ReceivedPackage& p,
                            const ArticleWriter& writer, const ImportProgress& progress) {
    checkPackage(db, p);
    ImportResult result;
    result.total = int(p.documents.size());
    const QString loading = p.kind == Kind::Transfer ? QStringLiteral("Cargando transferencia Nº ")
                                                     : QStringLiteral("Cargando Devolución Nº ");
    for (int i = 0; i < p.documents.size(); ++i) {
        const ReceivedDocument& d = p.documents[i];
        if (progress)
            progress(i * 100 / result.total, loading + QString::number(d.number));
        if (d.lines.isEmpty()) {
            result.notes << (p.kind == Kind::Transfer
                                 ? QStringLiteral("La transferencia ") + QString::number(d.number) +
                                       QStringLiteral(" no contiene registros en su movimiento...!")
                                 : documentName(p.kind, d.number) +
                                       QStringLiteral(" no contiene registros en su "
                                                      "movimiento...!"));
            continue;
        }
        db::Transaction tx(db);
        if (store::receivedExists(db, p.kind, d.number, d.sender)) {
            result.notes << documentName(p.kind, d.number) + QStringLiteral(" de la sucursal ") +
                                d.sender + QStringLiteral(" ya fue cargada.");
            continue; // rolled back: the test wrote nothing
        }
        const QDateTime now = db::serverNow(db);
        store::ReceivedHeader h;
        h.number = d.number;
        h.sender = d.sender;
        h.receiver = d.receiver.isEmpty() ? store::storeCode(db) : d.receiver;
        h.date = d.date.isValid() ? d.date : now;
        h.issueDate = d.issueDate.isValid() ? d.issueDate : h.date;
        h.note = d.note;
        h.dispatchId = d.dispatchId;
        if (p.kind == Kind::Transfer) {
            bringMasters(db, p.masters);
            h.lotId = lotHere(db, p.masters, d.lotId, now);
            store::insertReceived(db, p.kind, h);
            loadTransfer(db, p, d, h, now, writer);
        } else {
            h.lotId = lotHere(db, p.masters, d.lotId, now);
            store::insertReceived(db, p.kind, h);
            loadReturn(db, d, h, now);
        }
        tx.commit();
        ++result.imported;
        result.numbers << d.number;
        qCInfo(lcTransfers) << "received" << kindName(p.kind) << d.number << "of" << d.sender
                            << "loaded";
    }
    if (progress)
        progress(100, QString());
    return result;
}

void setAsideLoaded(const ReceivedPackage& p) {
    const QDir folder(p.folder);
    const QString aside = folder.filePath(QStringLiteral("Cargados"));
    QDir().mkpath(aside);
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss"));
    for (const QString& f : p.files) {
        const QString target =
            QDir(aside).filePath(stamp + QLatin1Char('_') + QFileInfo(f).fileName());
        QFile::remove(target);
        if (!QFile::rename(f, target))
            throw UserError(QStringLiteral("Se cargó ") + p.source +
                            QStringLiteral(" pero no se pudo apartar ") + QFileInfo(f).fileName() +
                            QStringLiteral(" a ") + QDir::toNativeSeparators(aside) +
                            QStringLiteral("...!"));
    }
}

QString endMessage(Kind kind, const ImportResult& r) {
    if (r.total > 0 && r.imported == r.total)
        return kind == Kind::Transfer
                   ? QStringLiteral("Transferencia importada con exito...!")
                   : QStringLiteral("Devolución de transferencia importada con exito...!");
    return QStringLiteral("Se importaron ") + QString::number(r.imported) + QStringLiteral(" de ") +
           QString::number(r.total) + QStringLiteral("...");
}

std::optional<ImportResult> loadFromFolder(const QSqlDatabase& db, const QString& folder, Kind kind,
                                           const ArticleWriter& writer,
                                           const ImportProgress& progress) {
    const auto package = readReceived(folder, kind);
    if (!package)
        return std::nullopt;
    checkNoPendingRate(db, folder);
    const ImportResult result = importReceived(db, *package, writer, progress);
    setAsideLoaded(*package);
    return result;
}

void registerTransferLoader() {
    exchange::import::Loader l;
    l.order = 20;
    l.name = QStringLiteral("Transferencias");
    l.loadWithProgress = [](const QSqlDatabase& db, const QString& folder,
                            const exchange::import::Progress& progress) {
        QStringList lines;
        for (Kind kind : {Kind::Transfer, Kind::Return}) {
            const auto r = loadFromFolder(
                db, folder, kind,
                ArticleWriter::here(QStringLiteral("SISTEMAS"), QStringLiteral("orvo import")),
                progress);
            if (!r)
                continue;
            lines << endMessage(kind, *r) << r->notes;
        }
        return lines;
    };
    l.load = [l](const QSqlDatabase& db, const QString& folder) {
        return l.loadWithProgress(db, folder, {});
    };
    exchange::import::addLoader(l);
}

} // namespace orvo::inventory::transfers
