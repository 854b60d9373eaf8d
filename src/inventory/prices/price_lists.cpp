#include "inventory/prices/price_lists.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/articles.h"
#include "inventory/prices/price_rules.h"
#include "inventory/prices/price_store.h"
#include "shell/session/settings_readers.h"

namespace orvo::inventory::prices {

namespace {

void logWritten(const QSqlDatabase& db, const store::Written& w, const ArticleWriter& writer) {
    logArticleWrite(db, QString(), QString(), QString(),
                    inventory::rules::describeStatement(w.sql, w.values), writer);
}

} // namespace

Decimal taxIncludedFactor(const QSqlDatabase& db) {
    const bool taxIncluded = db::numericFlag(
        db::scalar(db, QStringLiteral("SELECT DiscriminarImpuestoPrecios FROM PARAMETROS")));
    if (!taxIncluded)
        return Decimal(1);
    return Decimal(1) + shell::taxRateByCode(db, 1) / Decimal(100);
}

std::optional<PriceLine> modelLine(const QSqlDatabase& db, const ModelKey& key,
                                   const PriceList& list) {
    const auto model = store::modelPrices(db, key);
    if (!model)
        return std::nullopt;
    return rules::lineFor(*model, list, taxIncludedFactor(db));
}

QList<ModelPrices> findModels(const QSqlDatabase& db, const ModelFilter& filter) {
    return store::models(db, filter);
}

std::optional<PriceList> loadList(const QSqlDatabase& db, int number) {
    return store::loadList(db, number);
}

QList<PriceListSummary> listOfLists(const QSqlDatabase& db) {
    return store::lists(db);
}

QList<PriceLine> linesOfList(const QSqlDatabase& db, int number) {
    if (!store::listStatus(db, number))
        throw UserError(QStringLiteral("No existe la lista de precio %1...!").arg(number));
    return store::lines(db, number);
}

int mergeLines(PriceList& list, const QList<PriceLine>& lines) {
    for (const PriceLine& l : lines) {
        const int at = list.indexOf(l.key());
        if (at >= 0)
            list.lines[at] = l;
        else
            list.lines.append(l);
    }
    return int(lines.size());
}

SaveResult saveList(const QSqlDatabase& db, const PriceList& list, const SaveOptions& options,
                    const ArticleWriter& writer) {
    rules::checkLines(list.lines);
    PriceList saved = list;
    saved.user = writer.userCode;
    SaveResult result;
    db::Transaction tx(db);
    if (saved.number == 0) {
        saved.number =
            common::nextCode(db, QStringLiteral("LISTAPRECIO"), QStringLiteral("Numero"));
        if (!saved.date.isValid())
            saved.date = db::serverNow(db);
        store::insertHeader(db, saved);
    } else {
        const auto status = store::listStatus(db, saved.number);
        if (!status)
            throw UserError(
                QStringLiteral("No existe la lista de precio %1...!").arg(saved.number));
        if (*status == 1)
            throw UserError(
                QStringLiteral("La lista de precio %1 ya esta aprobada...!").arg(saved.number));
        store::updateHeader(db, saved);
        store::deleteLines(db, saved.number);
    }
    // Prices keyed with tax included become before-tax prices once, when the list is approved.
    const Decimal taxFactor = options.approve ? taxIncludedFactor(db) : Decimal(1);
    for (PriceLine line : std::as_const(saved.lines)) {
        if (taxFactor != Decimal(1))
            rules::removeTax(line, taxFactor);
        store::insertLine(db, saved.number, line);
    }
    if (options.approve) {
        store::setApproved(db, saved.number);
        if (options.applyToInventory) {
            const store::Written w = store::applyToInventory(db, saved.number);
            logWritten(db, w, writer);
            result.articlesUpdated = w.rows;
        }
    }
    tx.commit();
    result.number = saved.number;
    return result;
}

int applyListToInventory(const QSqlDatabase& db, int number, const ArticleWriter& writer) {
    db::Transaction tx(db);
    const auto status = store::listStatus(db, number);
    if (!status || *status != 1)
        throw UserError(QStringLiteral("Debe aprobar la lista de precio antes de actualizar el "
                                       "inventario...!"));
    const store::Written w = store::applyToInventory(db, number);
    logWritten(db, w, writer);
    tx.commit();
    return w.rows;
}

int generatePromotionList(const QSqlDatabase& db, const PromotionRequest& request,
                          const QDate& today) {
    rules::checkPromotionRequest(request, today);
    PriceList list;
    list.user = request.user;
    list.note = QStringLiteral("PROMOCION %1% DEL %2 AL %3")
                    .arg(request.promotionPercent.toString(),
                         request.start.toString(QStringLiteral("dd/MM/yyyy")),
                         request.end.toString(QStringLiteral("dd/MM/yyyy")));
    db::Transaction tx(db);
    const Decimal taxFactor = taxIncludedFactor(db);
    for (const ModelKey& key : request.models) {
        const auto model = store::modelPrices(db, key);
        if (model && list.indexOf(key) < 0)
            list.lines.append(rules::promotionLine(*model, request, taxFactor));
    }
    if (list.lines.isEmpty())
        throw UserError(
            QStringLiteral("Debe seleccionar una marca y una referencia para la promoción...!"));
    list.number = common::nextCode(db, QStringLiteral("LISTAPRECIO"), QStringLiteral("Numero"));
    list.date = db::serverNow(db);
    store::insertHeader(db, list);
    for (const PriceLine& line : std::as_const(list.lines))
        store::insertLine(db, list.number, line);
    tx.commit();
    return list.number;
}

int repriceFromCosts(const QSqlDatabase& db, const Margins& margins, const ArticleWriter& writer) {
    rules::checkMargins(margins);
    db::Transaction tx(db);
    const store::Written w = store::repriceFromCost(db, margins);
    logWritten(db, w, writer);
    tx.commit();
    return w.rows;
}

} // namespace orvo::inventory::prices
