#include "inventory/dispatch/orders.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/dispatch/order_store.h"
#include "pos/sale/sale.h"
#include "pos/sale/sale_store.h"

namespace orvo::inventory::dispatch {

using pos::sale::SaleDraft;

void checkOrderRegister(const shell::SessionContext& ctx) {
    if (!ctx.registerConfigured || ctx.serial.isEmpty())
        throw UserError(QStringLiteral("Debe configurar la caja...!"));
}

SaleDraft newOrderDraft(const QSqlDatabase& db, const shell::SessionContext& ctx) {
    checkOrderRegister(ctx);
    return pos::sale::newDraft(db, ctx);
}

Decimal committedStock(const QSqlDatabase& db, const QString& barcode, long long except) {
    return store::committed(db, barcode, except);
}

void addToOrder(const QSqlDatabase& db, SaleDraft& draft, long long order, const QString& barcode,
                const Decimal& quantity) {
    const QString code = barcode.trimmed();
    const auto found = pos::sale::store::articleAnyState(db, code);
    if (!found)
        throw UserError(QStringLiteral("El código ") + code +
                        QStringLiteral(" no existe en el inventario...!"));
    const pos::sale::ArticlePrices article =
        pos::sale::withModelPrices(*found, pos::sale::store::modelPrices(db, *found));
    if (article.tipo == 0) {
        if (article.existencia <= Decimal())
            throw UserError(QStringLiteral("Artículo con existencia en cero...!"));
        Decimal taken = quantity;
        for (const pos::sale::SaleLine& l : draft.lines())
            if (l.codigoBarra == article.codigoBarra)
                taken += l.cantidad;
        if (taken > article.existencia - committedStock(db, code, order))
            throw UserError(QStringLiteral("Artículo con existencia comprometida...!"));
    }
    draft.addArticle(article, quantity);
}

namespace {

void checkClientType(const shell::SessionContext& ctx, const pos::sale::SaleClient& client) {
    if (!pos::sale::registerMayInvoice(ctx.tipoListaPrecio, client.tipo))
        throw UserError(QStringLiteral("La caja no esta configurada para facturar a CLIENTE TIPO "
                                       ": ") +
                        (client.tipoDescripcion.isEmpty() ? client.tipo : client.tipoDescripcion) +
                        QStringLiteral("...!"));
}

} // namespace

pos::sale::SaleClient orderClient(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                  const QString& code) {
    const auto client = pos::sale::findClient(db, code.trimmed());
    if (!client)
        throw UserError(QStringLiteral("El cliente no esta registrado...!"));
    checkClientType(ctx, *client);
    return *client;
}

void setOrderClient(const shell::SessionContext& ctx, SaleDraft& draft,
                    const pos::sale::SaleClient& client) {
    checkClientType(ctx, client);
    draft.setClient(client);
}

void switchOrderList(const shell::SessionContext& ctx, SaleDraft& draft, int line) {
    const bool allowed = ctx.permiteAlternarListas == 1 && !draft.isLocked();
    if (allowed && line >= 0 && line < draft.lines().size()) {
        const char letter = draft.lines()[line].tipoLista;
        if (letter != pos::sale::kRetail && letter != pos::sale::kWholesale)
            throw UserError(QStringLiteral("Solo puede alternar entre la listas de Precios Detal "
                                           "y Mayor...!"));
    }
    draft.switchList(line, allowed);
}

long long saveOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                    const SaleDraft& draft, const OrderSave& save) {
    db::Transaction tx(db);
    const long long number = writeOrder(db, ctx, draft, save);
    tx.commit();
    return number;
}

long long writeOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                     const SaleDraft& draft, const OrderSave& save) {
    checkOrderRegister(ctx);
    if (!draft.client().isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    if (draft.isEmpty())
        throw UserError(QStringLiteral("La orden de despacho debe contener al menos un "
                                       "items...!"));
    db::requireTransaction(db);
    store::OrderHeader h;
    h.number = save.number;
    h.serie = ctx.serial;
    h.date = db::serverNow(db);
    h.client = draft.client().codigo;
    h.totals = draft.totals();
    h.note = save.note;
    h.user = ctx.userCode;
    h.status = save.approve ? 1 : 0;
    h.exempt = draft.isExempt();
    if (h.number == 0) {
        h.number = common::nextCode(db, QStringLiteral("ORDENDESPACHO"), QStringLiteral("Numero"));
        store::insertOrder(db, h);
    } else {
        if (!store::updateOpenOrder(db, h))
            throw UserError(QStringLiteral("La orden de despacho no existe o ya fue "
                                           "aprobada...!"));
        store::deleteOrderLines(db, h.number);
    }
    int item = 0;
    for (const pos::sale::SaleLine& l : draft.lines())
        store::upsertOrderLine(db, h.number, ++item, l, h.date);
    return h.number;
}

QList<OrderSummary> listOrders(const QSqlDatabase& db) {
    return store::orders(db);
}

LoadedOrder loadOrder(const QSqlDatabase& db, long long number, SaleDraft& draft) {
    LoadedOrder out;
    const auto summary = store::order(db, number, &out.note);
    if (!summary)
        throw UserError(QStringLiteral("La orden de despacho Nº ") + QString::number(number) +
                        QStringLiteral(" no existe...!"));
    out.summary = *summary;
    draft.clear();
    // A client this register may not invoice still shows and prints; saving asks for one.
    if (const auto client = pos::sale::findClient(db, summary->client)) {
        try {
            draft.setClient(*client);
        } catch (const UserError&) {
        }
    }
    for (const pos::sale::SaleLine& l : pos::sale::store::dispatchOrderLines(db, number))
        draft.addSavedLine(l);
    if (summary->exempt)
        draft.setExempt(true);
    return out;
}

} // namespace orvo::inventory::dispatch
