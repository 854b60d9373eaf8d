#include "inventory/counts/counts.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/grid/grid_print.h"
#include "inventory/adjustments/adjustments.h"
#include "inventory/articles/articles.h"
#include "inventory/counts/count_store.h"

#include <QLocale>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcCounts, "orvo.inventory.counts")

namespace orvo::inventory::counts {

namespace {

QString passName(Pass pass) {
    return QString::number(int(pass));
}

QString gone(Pass pass, int number) {
    return QStringLiteral("La página ") + QString::number(number) + QStringLiteral(" del conteo ") +
           passName(pass) + QStringLiteral(" no existe o ya fue aprobada...!");
}

// The article a page may count.
Article countable(const QSqlDatabase& db, const QString& barcode) {
    const Article article = adjustments::stockArticle(db, barcode);
    if (article.status == kExcludedArticle)
        throw UserError(QStringLiteral("El artículo ") + article.barcode +
                        QStringLiteral(" está excluido de la toma física...!"));
    return article;
}

QString quantity(const Decimal& d) {
    return d.toLocaleString(QLocale(), 2);
}

} // namespace

int countPasses(const QSqlDatabase& db) {
    return store::countPasses(db);
}

void setCountPasses(const QSqlDatabase& db, int passes) {
    if (passes != 1 && passes != 2)
        throw UserError(QStringLiteral("La toma física se hace en 1 o 2 conteos...!"));
    db::Transaction tx(db);
    if (store::countPasses(db) != passes && store::anyPage(db))
        throw UserError(QStringLiteral("Existen páginas de toma física: el número de conteos no "
                                       "puede cambiar hasta el ajuste físico-lógico...!"));
    store::setCountPasses(db, passes);
    tx.commit();
}

void createPage(const QSqlDatabase& db, Pass pass, CountPage page) {
    if (page.number <= 0)
        throw UserError(QStringLiteral("Debe ingresar el número de la página...!"));
    db::Transaction tx(db);
    if (store::pageStatus(db, pass, page.number) >= 0)
        throw UserError(QStringLiteral("La página ") + QString::number(page.number) +
                        QStringLiteral(" ya existe en el conteo ") + passName(pass) +
                        QStringLiteral("...!"));
    if (pass == Pass::Second && store::pageStatus(db, Pass::First, page.number) < 0)
        throw UserError(QStringLiteral("La página ") + QString::number(page.number) +
                        QStringLiteral(" no existe en el conteo 1...!"));
    page.date = db::serverNow(db);
    store::insertPage(db, pass, page);
    tx.commit();
}

void saveNote(const QSqlDatabase& db, Pass pass, int number, const QString& note) {
    db::Transaction tx(db);
    if (!store::updateNote(db, pass, number, note))
        throw UserError(gone(pass, number));
    tx.commit();
}

Scan scan(const QSqlDatabase& db, Pass pass, int page, const QString& barcode,
          const Decimal& quantity) {
    if (quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor a cero...!"));
    const Article article = countable(db, barcode);
    db::Transaction tx(db);
    if (!store::holdOpenPage(db, pass, page))
        throw UserError(gone(pass, page));
    Scan s;
    s.line.barcode = article.barcode;
    s.line.name = article.name;
    s.line.quantity =
        store::addToLine(db, pass, page, article.barcode, quantity.rounded(3), db::serverNow(db));
    tx.commit();
    s.zeroCost = article.averageCost.isZero();
    return s;
}

void removeLine(const QSqlDatabase& db, Pass pass, int page, const QString& barcode) {
    db::Transaction tx(db);
    if (!store::holdOpenPage(db, pass, page))
        throw UserError(gone(pass, page));
    store::removeLine(db, pass, page, barcode);
    tx.commit();
}

void deletePage(const QSqlDatabase& db, Pass pass, int number) {
    db::Transaction tx(db);
    if (!store::deleteOpenPage(db, pass, number))
        throw UserError(QStringLiteral("Solo puede eliminar una página ABIERTA...!"));
    tx.commit();
}

void approvePage(const QSqlDatabase& db, Pass pass, int number, bool partialCount) {
    db::Transaction tx(db);
    if (!store::approvePage(db, pass, number))
        throw UserError(gone(pass, number));
    if (pass == Pass::First && !partialCount && store::countPasses(db) == 1)
        store::copySingleCount(db, number);
    tx.commit();
    qCInfo(lcCounts) << "page" << number << "of count" << int(pass) << "approved";
}

std::optional<CountPage> loadPage(const QSqlDatabase& db, Pass pass, int number) {
    return store::loadPage(db, pass, number);
}

QList<PageSummary> listPages(const QSqlDatabase& db, Pass pass) {
    return store::listPages(db, pass);
}

QString statusText(const PageSummary& page, bool partialCount) {
    if (page.final == kFinalOpen)
        return QStringLiteral("PREPARADA POR CONTEO 3");
    switch (page.status) {
    case kOpen:
        return QStringLiteral("ABIERTA");
    case kApproved:
        return partialCount ? QStringLiteral("PREPARADA POR AJUSTE PARCIAL")
                            : QStringLiteral("APROBADA");
    default:
        return QStringLiteral("PROCESADA");
    }
}

void checkBatchApproval(const QSqlDatabase& db) {
    if (store::countPasses(db) == 2)
        throw UserError(QStringLiteral("El sistema esta parametrizado para 2 conteos físicos. "
                                       "Este módulo no esta disponible..."));
}

QList<PageSummary> pagesToApprove(const QSqlDatabase& db) {
    QList<PageSummary> out;
    for (const PageSummary& p : store::listPages(db, Pass::First))
        if (p.status == kOpen)
            out << p;
    return out;
}

int approveInBatch(const QSqlDatabase& db, const QList<int>& pages,
                   const std::function<void(int, int, const QString&)>& progress) {
    checkBatchApproval(db);
    int done = 0;
    for (int i = 0; i < pages.size(); ++i) {
        if (progress)
            progress(i, int(pages.size()),
                     QStringLiteral("Aprobando Toma Nº : ") + QString::number(pages[i]) +
                         QStringLiteral(" de ") + QString::number(pages.size()));
        approvePage(db, Pass::First, pages[i]);
        ++done;
    }
    if (progress)
        progress(done, int(pages.size()), QString());
    return done;
}

void prepareFinal(const QSqlDatabase& db, int page) {
    db::Transaction tx(db);
    if (store::finalStatus(db, page) >= 0)
        throw UserError(QStringLiteral("El conteo 3 de la página ") + QString::number(page) +
                        QStringLiteral(" ya fue preparado...!"));
    for (Pass pass : {Pass::First, Pass::Second})
        if (store::pageStatus(db, pass, page) != kApproved)
            throw UserError(QStringLiteral("La página ") + QString::number(page) +
                            QStringLiteral(" del conteo ") + passName(pass) +
                            QStringLiteral(" no esta aprobada...!"));
    store::prepareFinal(db, page);
    tx.commit();
}

void keyFinal(const QSqlDatabase& db, int page, const QString& barcode, const Decimal& quantity) {
    if (quantity.isNegative())
        throw UserError(QStringLiteral("La cantidad no puede ser negativa...!"));
    const Article article = countable(db, barcode);
    db::Transaction tx(db);
    if (!store::holdOpenFinal(db, page))
        throw UserError(QStringLiteral("La página ") + QString::number(page) +
                        QStringLiteral(" del conteo 3 no existe o ya fue aprobada...!"));
    store::setFinal(db, page, article.barcode, quantity.rounded(3), db::serverNow(db));
    tx.commit();
}

void approveFinal(const QSqlDatabase& db, int page) {
    db::Transaction tx(db);
    if (!store::approveFinal(db, page))
        throw UserError(QStringLiteral("La página ") + QString::number(page) +
                        QStringLiteral(" del conteo 3 no existe o ya fue aprobada...!"));
    tx.commit();
}

std::optional<FinalPage> loadFinal(const QSqlDatabase& db, int page) {
    return store::loadFinal(db, page);
}

QList<PageProgress> pageProgress(const QSqlDatabase& db) {
    return store::pageProgress(db);
}

purchases::PrintedDocument countSheet(const QSqlDatabase& db, Pass pass, int number) {
    const auto page = store::loadPage(db, pass, number);
    if (!page)
        return {};
    purchases::PrintedDocument d;
    d.title = QStringLiteral("Conteo ") + passName(pass);
    PageSummary summary;
    summary.status = page->status;
    summary.final = store::finalStatus(db, number);
    d.html = grid::fieldsHtml(
        {{QStringLiteral("Página"), QString::number(number)},
         {QStringLiteral("Fecha"), page->date.toString(QStringLiteral("dd/MM/yyyy"))},
         {QStringLiteral("Usuario"), page->user},
         {QStringLiteral("Estatus"), statusText(summary)},
         {QStringLiteral("Observación"), page->note}});
    QList<QStringList> rows;
    Decimal units;
    for (const CountLine& l : page->lines) {
        rows.append({l.barcode, l.name, quantity(l.quantity)});
        units += l.quantity;
    }
    rows.append({QString(), QStringLiteral("TOTAL"), quantity(units)});
    d.html += grid::tableHtml(
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Cantidad")}, rows,
        {false, false, true});
    return d;
}

purchases::PrintedDocument finalSheet(const QSqlDatabase& db, int number) {
    const auto page = store::loadFinal(db, number);
    if (!page)
        return {};
    purchases::PrintedDocument d;
    d.title = QStringLiteral("Conteo 3");
    d.html = grid::fieldsHtml(
        {{QStringLiteral("Página"), QString::number(number)},
         {QStringLiteral("Fecha"), page->date.toString(QStringLiteral("dd/MM/yyyy"))},
         {QStringLiteral("Estatus"),
          page->status == kFinalOpen ? QStringLiteral("NO APROBADA") : QStringLiteral("APROBADA")},
         {QStringLiteral("Observación"), page->note}});
    QList<QStringList> rows;
    for (const FinalLine& l : page->lines)
        rows.append({l.barcode, l.name, quantity(l.first), quantity(l.second),
                     l.differs() && page->status == kFinalOpen && l.final.isZero()
                         ? QString() // to be counted again
                         : quantity(l.final)});
    d.html += grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Descripción"),
                               QStringLiteral("Conteo 1"), QStringLiteral("Conteo 2"),
                               QStringLiteral("Conteo 3")},
                              rows, {false, false, true, true, true});
    return d;
}

} // namespace orvo::inventory::counts
