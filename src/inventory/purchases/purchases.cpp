#include "inventory/purchases/purchases.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/articles/articles.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchase_store.h"
#include "inventory/purchases/source_store.h"
#include "inventory/stock/date_guard.h"
#include "inventory/stock/model_average.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPurchases, "orvo.inventory.purchases")

namespace orvo::inventory::purchases {

namespace {

void report(const Progress& progress, const QString& text) {
    if (progress)
        progress(text);
}

// The lines' articles must exist: a line of an unknown barcode would move no stock.
void checkArticlesExist(const QSqlDatabase& db, const QList<DocumentLine>& lines) {
    for (const DocumentLine& l : lines) {
        if (!store::barcodeExists(db, l.barcode))
            throw UserError(QStringLiteral("El código ") + l.barcode +
                            QStringLiteral(" no existe en el inventario...!"));
    }
}

// The date-time a document is written with: the day chosen, at the server's time.
QDateTime stamped(const QSqlDatabase& db, const QDateTime& chosen) {
    const QDateTime now = db::serverNow(db);
    return chosen.isValid() ? QDateTime(chosen.date(), now.time()) : now;
}

} // namespace

DocumentLine articleLine(const QSqlDatabase& db, const QString& barcode, const Decimal& quantity,
                         const Decimal& price) {
    const QString code = barcode.trimmed();
    const auto article = findArticleByBarcode(db, code);
    if (!article)
        throw UserError(QStringLiteral("El código ") + code +
                        QStringLiteral(" no existe en el inventario...!"));
    return {article->barcode, article->name, quantity, price, article->taxRate};
}

void addLine(QList<DocumentLine>& lines, const DocumentLine& line) {
    rules::checkLine(line);
    lines.append(line);
}

// --- Purchase orders ---

void checkOrder(const PurchaseOrder& o) {
    if (o.supplier.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar un proveedor...!"));
    if (o.lines.isEmpty())
        throw UserError(QStringLiteral("Debe existir un item en la orden de compra...!"));
    for (const DocumentLine& l : o.lines)
        rules::checkLine(l);
}

long long saveOrder(const QSqlDatabase& db, PurchaseOrder o, bool approve,
                    const Progress& progress) {
    checkOrder(o);
    report(progress, QStringLiteral("Verificando..."));
    db::Transaction tx(db);
    checkArticlesExist(db, o.lines);
    const DocumentTotals totals = rules::totalsOf(rules::mergedByBarcode(o.lines));
    o.date = stamped(db, o.date);
    if (o.number == 0) {
        o.number = common::nextCode(db, QStringLiteral("ORDENCOMPRAS"), QStringLiteral("Numero"));
        store::insertOrder(db, o, totals);
    } else {
        if (!store::updateOrder(db, o, totals))
            throw UserError(QStringLiteral("La orden de compra ya fue aprobada y no puede "
                                           "modificarse...!"));
        store::deleteOrderLines(db, o.number);
    }
    const QString saving = QStringLiteral("Guardando orden de compra Nº ") +
                           QString::number(o.number) + QStringLiteral("... ");
    for (int i = 0; i < o.lines.size(); ++i) {
        report(progress, saving + QString::number(i + 1) + QStringLiteral(" de ") +
                             QString::number(o.lines.size()));
        store::upsertOrderLine(db, o.number, o.lines[i], i + 1);
    }
    if (approve && !store::approveOrder(db, o.number))
        throw UserError(QStringLiteral("La orden de compra ya fue aprobada...!"));
    tx.commit();
    return o.number;
}

void deleteOrder(const QSqlDatabase& db, long long number) {
    db::Transaction tx(db);
    if (!store::deleteOrder(db, number))
        throw UserError(QStringLiteral("Solo puede eliminar una orden de compra ABIERTA...!"));
    tx.commit();
}

std::optional<PurchaseOrder> loadOrder(const QSqlDatabase& db, long long number) {
    return store::loadOrder(db, number);
}

QList<DocumentSummary> listOrders(const QSqlDatabase& db) {
    return store::listOrders(db);
}

QList<DocumentSummary> ordersToLoad(const QSqlDatabase& db) {
    return store::listOrders(db, true);
}

QList<DocumentLine> orderLines(const QSqlDatabase& db, long long number) {
    const auto order = store::loadOrder(db, number);
    if (!order || order->status == kOpen)
        throw UserError(QStringLiteral("La orden de compra no existe o no ha sido aprobada...!"));
    return order->lines;
}

// --- Purchases ---

void checkPurchase(const QSqlDatabase& db, const Purchase& p, bool isNew) {
    if (p.supplier.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar un proveedor...!"));
    if (p.document.trimmed().isEmpty())
        throw UserError(QStringLiteral("Debe ingresar el número de la factura...!"));
    if (p.lines.isEmpty())
        throw UserError(QStringLiteral("Debe existir un item en la compra...!"));
    for (const DocumentLine& l : p.lines)
        rules::checkLine(l);
    rules::checkDiscountPercent(p.discountPercent);
    if (!isNew)
        return;
    db::Transaction tx(db);
    const bool exists = store::purchaseExists(db, p.document, p.supplier);
    tx.rollback(); // the test wrote nothing
    if (exists)
        throw UserError(QStringLiteral("La compra ") + p.document +
                        QStringLiteral(" del proveedor ") + p.supplier +
                        QStringLiteral(" ya existe...!"));
}

bool offersApproval(const Purchase& p) {
    return !p.lines.isEmpty() && rules::everyLineHasPrice(p.lines);
}

void savePurchase(const QSqlDatabase& db, const Purchase& purchase, bool isNew, bool approve,
                  const Progress& progress) {
    Purchase p = purchase;
    p.document = p.document.trimmed();
    checkPurchase(db, p, false);
    if (approve && !offersApproval(p))
        throw UserError(QStringLiteral("Existen artículos con precio en cero: la compra no puede "
                                       "aprobarse...!"));
    const DocumentTotals totals =
        rules::totalsOf(rules::mergedByBarcode(p.lines), p.discountPercent);
    // Worked out before anything is written: a zero total cannot be prorated.
    const Decimal factor = approve ? rules::prorationFactor(p, totals.merchandise) : Decimal();
    report(progress, QStringLiteral("Verificando..."));

    db::Transaction tx(db);
    p.date = stamped(db, p.date);
    stock::checkDocumentDate(db, p.date.date());
    checkArticlesExist(db, p.lines);
    if (isNew) {
        if (store::purchaseExists(db, p.document, p.supplier))
            throw UserError(QStringLiteral("La compra ") + p.document +
                            QStringLiteral(" del proveedor ") + p.supplier +
                            QStringLiteral(" ya existe...!"));
        store::insertPurchase(db, p, totals);
    } else {
        if (!store::updatePurchase(db, p, totals))
            throw UserError(QStringLiteral("La compra ya fue aprobada y no puede "
                                           "modificarse...!"));
        store::deletePurchaseLines(db, p.document, p.supplier);
    }
    const QString saving =
        QStringLiteral("Guardando compra Nº ") + p.document + QStringLiteral("... ");
    for (int i = 0; i < p.lines.size(); ++i) {
        report(progress, saving + QString::number(i + 1) + QStringLiteral(" de ") +
                             QString::number(p.lines.size()));
        store::upsertPurchaseLine(db, p, p.lines[i], i + 1);
    }
    if (approve) {
        if (!store::markPurchaseApproved(db, p.document, p.supplier))
            throw UserError(QStringLiteral("La compra ya fue aprobada...!"));
        for (const store::StoredLine& l : store::storedLines(db, p.document, p.supplier))
            store::setProratedPrice(
                db, p.document, p.supplier, l.item,
                rules::proratedPrice(l.invoicePrice, p.discountPercent, factor).rounded(6));
        // Stock grows; each variant weighs its cost with what arrived, unless it was short.
        for (const store::Receipt& r : store::holdReceipts(db, p.document, p.supplier))
            store::writeReceipt(
                db, r.barcode, r.stock + r.quantity,
                rules::movingAverage(r.stock, r.averageCost, r.quantity, r.value, r.lastCost)
                    .rounded(5),
                r.lastCost.rounded(5));
        stock::recomputeModelAverage(db, stock::AveragedDocument::purchase(p.document, p.supplier));
    }
    tx.commit();
    qCInfo(lcPurchases) << "purchase" << p.document << "of" << p.supplier << "saved"
                        << (approve ? "and approved" : "open");
}

void deletePurchase(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    db::Transaction tx(db);
    if (!store::deletePurchase(db, document, supplier))
        throw UserError(QStringLiteral("Solo puede eliminar una compra ABIERTA...!"));
    tx.commit();
}

std::optional<Purchase> loadPurchase(const QSqlDatabase& db, const QString& document,
                                     const QString& supplier) {
    return store::loadPurchase(db, document, supplier);
}

QList<DocumentSummary> listPurchases(const QSqlDatabase& db) {
    return store::listPurchases(db);
}

int changeModelPrice(const QSqlDatabase& db, QList<DocumentLine>& lines, const QString& barcode,
                     const Decimal& price) {
    if (price.isNegative())
        throw UserError(QStringLiteral("El precio no puede ser negativo...!"));
    const auto article = findArticleByBarcode(db, barcode);
    if (!article)
        return 0;
    const QStringList model = store::modelBarcodes(db, article->reference, article->brand);
    int changed = 0;
    for (DocumentLine& l : lines) {
        if (model.contains(l.barcode)) {
            l.price = price;
            ++changed;
        }
    }
    return changed;
}

// --- Purchase returns ---

QList<ReturnableLine> returnableLines(const QSqlDatabase& db, const QString& document,
                                      const QString& supplier) {
    return store::returnableLines(db, document, supplier);
}

void addReturnLine(QList<DocumentLine>& lines, const QList<ReturnableLine>& returnable,
                   const QString& barcode, const Decimal& quantity) {
    const QString code = barcode.trimmed();
    for (const DocumentLine& l : lines)
        if (l.barcode == code)
            throw UserError(QStringLiteral("El articulo ya esta cargado en la devolución...!"));
    if (quantity <= Decimal())
        throw UserError(QStringLiteral("Debe devolver al menos una unidad...!"));
    for (const ReturnableLine& r : returnable) {
        if (r.barcode != code)
            continue;
        if (quantity > r.returnable)
            throw UserError(QStringLiteral("No puede devolver más de ") + r.returnable.toString() +
                            QStringLiteral(" unidades del artículo ") + code +
                            QStringLiteral("...!"));
        lines.append({r.barcode, r.name, quantity, r.price, r.taxPercent});
        return;
    }
    throw UserError(QStringLiteral("El artículo ") + code +
                    QStringLiteral(" no está en la compra o ya fue devuelto...!"));
}

void checkPurchaseReturn(const PurchaseReturn& r) {
    if (r.document.isEmpty() || r.supplier.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar la compra a devolver...!"));
    if (r.lines.isEmpty())
        throw UserError(QStringLiteral("El devolucion debe contener al menos un items...!"));
    for (const DocumentLine& l : r.lines)
        if (l.quantity <= Decimal())
            throw UserError(QStringLiteral("Debe devolver al menos una unidad...!"));
}

long long savePurchaseReturn(const QSqlDatabase& db, PurchaseReturn r, bool approve) {
    checkPurchaseReturn(r);
    db::Transaction tx(db);
    r.date = stamped(db, r.date);
    stock::checkDocumentDate(db, r.date.date());
    const auto purchase = store::loadPurchase(db, r.document, r.supplier);
    if (!purchase || purchase->status == kOpen)
        throw UserError(QStringLiteral("La compra no existe o no ha sido aprobada...!"));
    r.discountPercent = purchase->discountPercent;
    // What can still go back, checked again now that the lock is held.
    const QList<ReturnableLine> returnable = store::returnableLines(db, r.document, r.supplier);
    QList<DocumentLine> checked;
    for (const DocumentLine& l : r.lines)
        addReturnLine(checked, returnable, l.barcode, l.quantity);
    const DocumentTotals totals = rules::totalsOf(checked, r.discountPercent);
    if (r.number == 0) {
        r.number = common::nextCode(db, QStringLiteral("DEVCOMPRAS"), QStringLiteral("Numero"));
        store::insertReturn(db, r, totals);
    } else {
        if (!store::updateReturn(db, r, totals))
            throw UserError(QStringLiteral("La devolución ya fue aprobada y no puede "
                                           "modificarse...!"));
        store::deleteReturnLines(db, r.number);
    }
    for (int i = 0; i < checked.size(); ++i)
        store::upsertReturnLine(db, r.number, checked[i], i + 1);
    if (approve) {
        if (!store::markReturnApproved(db, r.number))
            throw UserError(QStringLiteral("La devolución ya fue aprobada...!"));
        store::takeReturnedStock(db, r.number);
        for (const DocumentLine& l : checked)
            if (!store::markReturned(db, r.document, r.supplier, l.barcode, l.quantity))
                throw UserError(QStringLiteral("No puede devolver más de lo que queda por "
                                               "devolver del artículo ") +
                                l.barcode + QStringLiteral("...!"));
    }
    tx.commit();
    return r.number;
}

void deletePurchaseReturn(const QSqlDatabase& db, long long number) {
    db::Transaction tx(db);
    if (!store::deleteReturn(db, number))
        throw UserError(QStringLiteral("Solo puede eliminar una devolución ABIERTA...!"));
    tx.commit();
}

std::optional<PurchaseReturn> loadPurchaseReturn(const QSqlDatabase& db, long long number) {
    return store::loadReturn(db, number);
}

QList<DocumentSummary> listPurchaseReturns(const QSqlDatabase& db) {
    return store::listReturns(db);
}

} // namespace orvo::inventory::purchases
