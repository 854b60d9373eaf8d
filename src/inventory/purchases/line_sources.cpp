#include "inventory/purchases/line_sources.h"

#include "common/db/connection.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "exchange/package/dbf.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/articles.h"
#include "inventory/purchases/source_store.h"
#include "inventory/stock/model_prices.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QTextStream>

namespace orvo::inventory::purchases {

namespace {

// A RIF as clients are keyed: capitals, without dashes or spaces.
QString plainRif(QString rif) {
    return rif.remove(QLatin1Char('-')).remove(QLatin1Char(' ')).toUpper();
}

// Creates `barcode` here from the sister's catalogue; false when the sister has it not either.
bool createFromSister(const QSqlDatabase& own, const QSqlDatabase& sister, const QString& barcode,
                      const Decimal& taxRate, const ArticleWriter& writer) {
    const auto article = store::catalogueArticle(sister, barcode);
    if (!article)
        return false;
    const auto [sql, values] = store::insertArticle(own, *article, store::taxCodeOf(own, taxRate));
    logArticleWrite(own, barcode, article->reference, article->brand,
                    rules::describeStatement(sql, values), writer);
    // A new size or colour of a model sold here sells at the model's prices.
    stock::giveModelPrices(own, barcode);
    return true;
}

} // namespace

QList<SisterCompany> sisterCompanies(const QSqlDatabase& db) {
    QList<SisterCompany> out;
    for (const store::Company& c : store::companies(db))
        out.append({c.code, c.name, c.database});
    return out;
}

QSqlDatabase openSisterDatabase(const QSqlDatabase& own, const SisterCompany& company,
                                const QString& connectionName) {
    db::ConnectionSettings s;
    s.engine = db::engineOf(own);
    if (s.engine == db::Engine::Sqlite) {
        QString file = company.database;
        if (QFileInfo(file).suffix().isEmpty())
            file += QStringLiteral(".sqlite");
        if (QFileInfo(file).isRelative())
            file = QFileInfo(own.databaseName()).dir().filePath(file);
        if (!QFileInfo::exists(file))
            throw UserError(QStringLiteral("No se encuentra la base de datos ") + company.database +
                            QStringLiteral(" de la empresa ") + company.name +
                            QStringLiteral("...!"));
        s.sqliteFile = file;
    } else {
        s.host = own.hostName();
        s.port = own.port() > 0 ? own.port() : 5432;
        s.database = company.database;
        s.passwordAuth = !own.userName().isEmpty();
        s.user = own.userName();
        s.password = own.password();
    }
    return db::openConnection(s, connectionName);
}

SisterDatabase::SisterDatabase(const QSqlDatabase& own, const SisterCompany& company)
    : m_name(QStringLiteral("orvo_empresa_") + company.code) {
    m_db = openSisterDatabase(own, company, m_name);
}

SisterDatabase::~SisterDatabase() {
    m_db = QSqlDatabase();
    db::closeConnection(m_name);
}

QList<SisterInvoice> sisterInvoices(const QSqlDatabase& own, const QSqlDatabase& sister,
                                    const QString& supplier) {
    const QString rif = plainRif(store::companyRif(own));
    if (rif.isEmpty())
        throw UserError(QStringLiteral("La empresa no tiene RIF registrado...!"));
    // Entered already from this supplier: the other database cannot be joined, so it is read here.
    const QSet<QString> entered = store::enteredDocuments(own, supplier);
    QList<SisterInvoice> out;
    for (const store::SaleInvoice& i : store::invoicesTo(sister, rif)) {
        const SisterInvoice invoice{i.number, i.serie, i.date, i.total};
        if (!entered.contains(invoice.document()))
            out.append(invoice);
    }
    return out;
}

LoadedLines loadSisterInvoice(const QSqlDatabase& own, const QSqlDatabase& sister,
                              const SisterInvoice& invoice, const ArticleWriter& writer) {
    const QList<store::SaleLine> sold = store::invoiceLines(sister, invoice.number, invoice.serie);
    LoadedLines out;
    db::Transaction tx(own);
    for (const store::SaleLine& s : sold) {
        auto article = findArticleByBarcode(own, s.barcode);
        if (!article && !out.notFound.contains(s.barcode)) {
            if (createFromSister(own, sister, s.barcode, s.taxPercent, writer)) {
                out.created << s.barcode;
                article = findArticleByBarcode(own, s.barcode);
            } else {
                out.notFound << s.barcode;
            }
        }
        if (article)
            out.lines.append(
                {article->barcode, article->name, s.quantity, s.netPrice, s.taxPercent});
    }
    tx.commit();
    return out;
}

PackingList readPackingList(const QSqlDatabase& db, const QString& path, PackingCheck check,
                            bool byBox) {
    const exchange::package::DbfTable table(
        path, {QStringLiteral("CodBarra"), QStringLiteral("Cantidad")});
    const bool named = table.hasField(QStringLiteral("Nombre"));
    const bool valued = table.hasField(QStringLiteral("Valor"));
    const bool boxed = byBox && table.hasField(QStringLiteral("CajaNum"));
    struct Row {
        QString barcode, name;
        Decimal quantity, value;
        long long box = 0;
    };
    QList<Row> rows;
    QHash<QPair<QString, long long>, int> at;
    for (int i = 0; i < table.recordCount(); ++i) {
        if (table.isDeleted(i))
            continue;
        const QString barcode = table.text(i, QStringLiteral("CodBarra")).trimmed();
        if (barcode.isEmpty())
            continue;
        const Decimal quantity = table.decimal(i, QStringLiteral("Cantidad"));
        const long long box =
            !byBox ? 0 : (boxed ? std::max(1LL, table.integer(i, QStringLiteral("CajaNum"))) : 1);
        if (const auto it = at.constFind({barcode, box}); it != at.constEnd()) {
            rows[*it].quantity += quantity;
            continue;
        }
        at.insert({barcode, box}, int(rows.size()));
        rows.append({barcode, named ? table.text(i, QStringLiteral("Nombre")) : QString(), quantity,
                     valued ? table.decimal(i, QStringLiteral("Valor")) : Decimal(), box});
    }
    PackingList out;
    // The reception's test is the no-op update: an article must be active and have a cost.
    db::Transaction tx(db);
    for (const Row& r : rows) {
        const auto article = findArticleByBarcode(db, r.barcode);
        const bool ok = article.has_value() &&
                        (check == PackingCheck::Exists || store::usableInBox(db, r.barcode));
        if (ok)
            out.lines.append(
                {article->barcode, article->name, r.quantity, r.value, article->taxRate, r.box});
        else
            out.missing.append({r.barcode, r.name, r.quantity});
    }
    tx.rollback(); // the tests wrote nothing
    return out;
}

QString writeMissingArticles(const QList<PackingList::Missing>& missing) {
    return writeArticleList(QStringLiteral("Articulos no existentes.txt"), missing);
}

QString writeArticleList(const QString& fileName, const QList<PackingList::Missing>& missing) {
    const QString path = QDir(shell::appHome()).filePath(fileName);
    QDir().mkpath(shell::appHome());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw UserError(QStringLiteral("No se pudo escribir el archivo ") + path +
                        QStringLiteral("...!"));
    QTextStream out(&file);
    for (const PackingList::Missing& m : missing)
        out << m.barcode << '\t' << m.name << '\t' << m.quantity.toString() << '\n';
    out.flush();
    if (!file.commit())
        throw UserError(QStringLiteral("No se pudo escribir el archivo ") + path +
                        QStringLiteral("...!"));
    return path;
}

} // namespace orvo::inventory::purchases
