#include "inventory/prices/received_lists.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "common/rate/exchange_rate.h"
#include "exchange/import/import_loaders.h"
#include "exchange/package/dbf_names.h"
#include "exchange/package/package_reader.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/articles.h"
#include "inventory/prices/price_store.h"
#include "shell/session/settings_readers.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSet>

namespace orvo::inventory::prices {

namespace {

using exchange::package::dbfName;
using exchange::package::DbfTable;
using exchange::package::PackageReader;

// The files of Recibe by upper-case name.
QHash<QString, QString> filesIn(const QString& folder) {
    QHash<QString, QString> out;
    const QDir dir(folder);
    for (const QString& f : dir.entryList(QDir::Files))
        out.insert(f.toUpper(), dir.filePath(f));
    return out;
}

QStringList required(std::initializer_list<const char*> columns) {
    QStringList out;
    for (const char* c : columns)
        out << dbfName(QString::fromLatin1(c));
    return out;
}

const QStringList& summaryFields() {
    static const QStringList f = required({"Numero"});
    return f;
}
const QStringList& lineFields() {
    static const QStringList f = required(
        {"Numero", "Referencia", "CodigoMarca", "PrecioDetal", "PrecioMayor", "PrecioAfiliado"});
    return f;
}

// A column of the table when the file has it, zero (or nothing) otherwise.
Decimal number(const DbfTable& t, int r, const char* column) {
    const QString f = dbfName(QString::fromLatin1(column));
    return t.hasField(f) ? t.decimal(r, f) : Decimal();
}
QString text(const DbfTable& t, int r, const char* column) {
    const QString f = dbfName(QString::fromLatin1(column));
    return t.hasField(f) ? t.text(r, f) : QString();
}
QDate date(const DbfTable& t, int r, const char* column) {
    const QString f = dbfName(QString::fromLatin1(column));
    const QDate d = t.hasField(f) ? t.date(r, f) : QDate();
    return d.isValid() ? d : kNoPromotionDate;
}

PriceLine lineOf(const DbfTable& t, int r) {
    PriceLine l;
    l.reference = text(t, r, "Referencia");
    l.brand = text(t, r, "CodigoMarca");
    l.cost = number(t, r, "Costo").rounded(5);
    l.discount = number(t, r, "Descuento").rounded(4);
    l.retailSuggested = number(t, r, "PrecioDetalSugerido").rounded(4);
    l.retail = number(t, r, "PrecioDetal").rounded(4);
    l.wholesaleSuggested = number(t, r, "PrecioMayorSugerido").rounded(4);
    l.wholesale = number(t, r, "PrecioMayor").rounded(4);
    l.memberSuggested = number(t, r, "PrecioAfiliadoSugerido").rounded(4);
    l.member = number(t, r, "PrecioAfiliado").rounded(4);
    l.promotionPrice = number(t, r, "PrecioPromocion").rounded(4);
    l.promotion = number(t, r, "Promocion") == Decimal(1);
    l.start = date(t, r, "FechaInicial");
    l.end = date(t, r, "FechaFinal");
    return l;
}

ReceivedLists listsOf(const PackageReader& p, const QString& summary, const QString& linesName) {
    ReceivedLists out;
    const DbfTable& head = p.table(summary);
    const DbfTable& lines = p.table(linesName);
    QHash<long long, int> index; // head office number -> position in out.lists
    for (int r = 0; r < head.recordCount(); ++r) {
        if (head.isDeleted(r))
            continue;
        ReceivedList l;
        l.sourceNumber = int(head.integer(r, dbfName(QStringLiteral("Numero"))));
        const QDate day = date(head, r, "Fecha");
        l.list.date = QDateTime(day == kNoPromotionDate ? QDate() : day, QTime(0, 0));
        l.list.retailFactor = number(head, r, "FactorDetal");
        l.list.wholesaleFactor = number(head, r, "FactorMayor");
        l.list.memberFactor = number(head, r, "FactorAfiliado");
        l.list.note = text(head, r, "Observacion");
        index.insert(l.sourceNumber, int(out.lists.size()));
        out.lists.append(l);
    }
    const QString numberField = dbfName(QStringLiteral("Numero"));
    for (int r = 0; r < lines.recordCount(); ++r) {
        if (lines.isDeleted(r))
            continue;
        const long long n = lines.integer(r, numberField);
        if (!index.contains(n)) { // lines without their summary make a list of their own
            ReceivedList l;
            l.sourceNumber = int(n);
            index.insert(n, int(out.lists.size()));
            out.lists.append(l);
        }
        PriceList& list = out.lists[index.value(n)].list;
        const PriceLine line = lineOf(lines, r);
        const int at = list.indexOf(line.key());
        if (at >= 0)
            list.lines[at] = line;
        else
            list.lines.append(line);
    }
    return out;
}

QString originNote(const ReceivedList& l) {
    QString note = QStringLiteral("CASA MATRIZ Nº %1").arg(l.sourceNumber);
    if (l.list.date.isValid())
        note += QStringLiteral(" DEL ") + l.list.date.toString(QStringLiteral("dd/MM/yyyy"));
    return note;
}

} // namespace

void checkNothingPendingBeforeLists(const QSqlDatabase& db, const QString& recibeFolder) {
    const QHash<QString, QString> files = filesIn(recibeFolder);
    if (shell::exchangeRateImportEnabled(db) &&
        !common::rate::pendingRateFile(recibeFolder).isEmpty())
        throw UserError(QStringLiteral("Debe cargar la tasa de cambio pendiente...!"));
    if (files.contains(QStringLiteral("TRANSFER.ZIP")) ||
        (files.contains(QStringLiteral("RESUTRAN.DBF")) &&
         files.contains(QStringLiteral("MOVITRAN.DBF"))))
        throw UserError(QStringLiteral("Debe cargar las transferencias...!"));
}

std::optional<ReceivedLists> readReceivedLists(const QString& recibeFolder) {
    const QHash<QString, QString> files = filesIn(recibeFolder);
    const PackageReader::Expected ours = {{QStringLiteral("RESULIST"), summaryFields()},
                                          {QStringLiteral("MOVILIST"), lineFields()}};
    for (const char* archive : {"LISTA.ZIP", "LISTAE.ZIP"}) {
        const QString path = files.value(QString::fromLatin1(archive));
        if (path.isEmpty())
            continue;
        ReceivedLists r = listsOf(PackageReader(path, ours), QStringLiteral("RESULIST"),
                                  QStringLiteral("MOVILIST"));
        r.source = QFileInfo(path).fileName();
        r.files = {path};
        return r;
    }
    const auto loose = [&](const char* summary, const char* lines) -> std::optional<ReceivedLists> {
        const QString s = files.value(QString::fromLatin1(summary) + QStringLiteral(".DBF"));
        const QString l = files.value(QString::fromLatin1(lines) + QStringLiteral(".DBF"));
        if (s.isEmpty() || l.isEmpty())
            return std::nullopt;
        const PackageReader p = PackageReader::fromFolder(
            recibeFolder, {{QString::fromLatin1(summary), summaryFields()},
                           {QString::fromLatin1(lines), lineFields()}});
        ReceivedLists r = listsOf(p, QString::fromLatin1(summary), QString::fromLatin1(lines));
        r.source = QFileInfo(s).fileName() + QStringLiteral(" / ") + QFileInfo(l).fileName();
        r.files = {s, l};
        return r;
    };
    if (auto r = loose("RESULIST", "MOVILIST"))
        return r;
    return loose("RESLISTA", "MOVLISTA");
}

ReceivedLoad loadReceivedLists(const QSqlDatabase& db, const ReceivedLists& received,
                               const SaveOptions& options, const ArticleWriter& writer) {
    ReceivedLoad result;
    db::Transaction tx(db);
    for (const ReceivedList& r : received.lists) {
        const QString origin = originNote(r);
        if (store::listWithNoteExists(db, origin)) {
            ++result.alreadyLoaded;
            continue;
        }
        if (r.list.lines.isEmpty())
            continue;
        PriceList list = r.list;
        list.number = common::nextCode(db, QStringLiteral("LISTAPRECIO"), QStringLiteral("Numero"));
        list.note = (r.list.note.isEmpty() ? origin : origin + QStringLiteral(": ") + r.list.note)
                        .left(255);
        list.user = writer.userCode;
        if (!list.date.isValid())
            list.date = db::serverNow(db);
        store::insertHeader(db, list);
        for (const PriceLine& line : std::as_const(list.lines))
            store::insertLine(db, list.number, line);
        if (options.approve) {
            store::setApproved(db, list.number);
            if (options.applyToInventory) {
                const store::Written w = store::applyToInventory(db, list.number);
                logArticleWrite(db, QString(), QString(), QString(),
                                inventory::rules::describeStatement(w.sql, w.values), writer);
                result.articlesUpdated += w.rows;
            }
        }
        result.numbers.append(list.number);
    }
    tx.commit();
    for (const QString& f : received.files)
        QFile::remove(f);
    return result;
}

QList<PriceLine> linesFromReceivedFile(const QString& recibeFolder) {
    const QHash<QString, QString> files = filesIn(recibeFolder);
    for (const char* name : {"MOVILIST", "MOVLISTA"}) {
        if (!files.contains(QString::fromLatin1(name) + QStringLiteral(".DBF")))
            continue;
        const PackageReader p =
            PackageReader::fromFolder(recibeFolder, {{QString::fromLatin1(name), lineFields()}});
        const DbfTable& t = p.table(QString::fromLatin1(name));
        QList<PriceLine> out;
        QSet<QString> seen;
        for (int r = 0; r < t.recordCount(); ++r) {
            if (t.isDeleted(r))
                continue;
            const PriceLine l = lineOf(t, r);
            if (!seen.contains(l.reference + QChar(0) + l.brand))
                out.append(l);
            seen.insert(l.reference + QChar(0) + l.brand);
        }
        return out;
    }
    throw UserError(QStringLiteral("No existe el archivo MoviList.dbf ni MovLista.dbf en la "
                                   "carpeta RECIBE...!"));
}

void registerPriceListLoader() {
    exchange::import::addLoader(
        {30, QStringLiteral("Listas de precios"),
         [](const QSqlDatabase& db, const QString& recibe) {
             const auto received = readReceivedLists(recibe);
             if (!received)
                 return QStringList();
             checkNothingPendingBeforeLists(db, recibe);
             const ReceivedLoad r =
                 loadReceivedLists(db, *received, {true, true},
                                   ArticleWriter::here(QString(), QStringLiteral("orvo import")));
             QStringList lines;
             for (int n : r.numbers)
                 lines << QStringLiteral("lista de precio Nº %1 cargada y aprobada (%2)")
                              .arg(n)
                              .arg(received->source);
             if (r.alreadyLoaded > 0)
                 lines << QStringLiteral("%1 lista(s) de %2 ya estaban cargadas")
                              .arg(r.alreadyLoaded)
                              .arg(received->source);
             if (!r.numbers.isEmpty())
                 lines << QStringLiteral("precios actualizados en %1 articulos")
                              .arg(r.articlesUpdated);
             return lines;
         }});
}

} // namespace orvo::inventory::prices
