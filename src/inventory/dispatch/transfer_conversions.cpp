#include "inventory/dispatch/transfer_conversions.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/dispatch/conversion_store.h"
#include "inventory/dispatch/conversions.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/transfers/transfers.h"

namespace orvo::inventory::dispatch {

namespace {

QString purchaseName(const QString& document, const QString& supplier) {
    return QStringLiteral("La compra Nº ") + document + QStringLiteral(" del proveedor ") +
           supplier;
}

// The box document's lines as transfer lines; the save prices them at the average cost.
QList<transfers::DocumentLine> linesOf(const QSqlDatabase& db, const purchases::BoxKind& kind,
                                       long long number) {
    QList<transfers::DocumentLine> out;
    for (const store::BoxLine& l : store::boxLines(db, kind, number)) {
        transfers::DocumentLine line;
        line.barcode = l.barcode;
        line.quantity = l.quantity;
        line.box = l.box > 0 ? l.box : 1;
        out.append(line);
    }
    return out;
}

// Prices the lines as the save will, so the screen shows what is written.
void price(const QSqlDatabase& db, transfers::Transfer& t) {
    const transfers::CheckedLines checked = transfers::checkLines(db, t.kind, t.lines);
    if (!checked.missing.isEmpty()) {
        const auto& m = checked.missing.first();
        throw UserError(t.kind == transfers::Kind::Transfer
                            ? QStringLiteral("No se puede transferir el artículo ") + m.barcode +
                                  QStringLiteral(" con costo cero...!")
                            : QStringLiteral("El código ") + m.barcode +
                                  QStringLiteral(" no existe en el inventario...!"));
    }
    t.lines = checked.lines;
    Decimal total;
    for (const transfers::DocumentLine& l : t.lines)
        total += l.quantity * l.price;
    t.totalValue = total.rounded(2);
}

} // namespace

bool purchaseConverted(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    return store::purchaseLogged(db, document, supplier);
}

void checkPurchaseConvertible(const QSqlDatabase& db, const QString& document,
                              const QString& supplier) {
    const auto purchase = purchases::loadPurchase(db, document, supplier);
    if (!purchase)
        throw UserError(purchaseName(document, supplier) + QStringLiteral(" no existe...!"));
    if (purchase->status != purchases::kApproved)
        throw UserError(purchaseName(document, supplier) + QStringLiteral(" no está aprobada...!"));
    if (purchaseConverted(db, document, supplier))
        throw UserError(purchaseName(document, supplier) +
                        QStringLiteral(" ya fue convertida...!"));
}

transfers::Transfer previewTransfer(const QSqlDatabase& db, const TransferRequest& r) {
    transfers::Transfer t;
    t.user = r.user;
    t.dispatchId = r.dispatchType;
    t.status = transfers::kOpen;
    switch (r.source) {
    case TransferSource::Remission:
        checkConvertible(db, AdjustmentSource::Remission, r.number);
        t.receiver = store::branchOf(db, remissionKind(), r.number).trimmed();
        t.origin = QString::number(r.number);
        t.note = QStringLiteral("Transf. generada aut. por la remisión Nº ") + t.origin;
        t.lines = linesOf(db, remissionKind(), r.number);
        break;
    case TransferSource::Reception:
        checkConvertible(db, AdjustmentSource::Reception, r.number);
        t.kind = transfers::Kind::Return;
        t.dispatchId = 0;
        t.receiver = store::branchOf(db, purchases::receptionKind(), r.number).trimmed();
        t.origin = QString::number(r.number);
        t.note = QStringLiteral("Dev. generada aut. por la recepción Nº ") + t.origin;
        t.lines = linesOf(db, purchases::receptionKind(), r.number);
        break;
    case TransferSource::Purchase: {
        checkPurchaseConvertible(db, r.document, r.supplier);
        const auto purchase = purchases::loadPurchase(db, r.document, r.supplier);
        t.receiver = r.receiver.trimmed();
        t.origin = r.document;
        t.lotId = purchase->lotId;
        t.note = QStringLiteral("Transf. generada aut. por la compra Nº ") + r.document +
                 QStringLiteral(" del proveedor ") + r.supplier;
        for (transfers::DocumentLine l : purchase->lines) {
            l.box = 1;
            t.lines.append(l);
        }
        break;
    }
    }
    price(db, t);
    return t;
}

transfers::Transfer transferFor(const QSqlDatabase& db, const TransferRequest& r) {
    transfers::Transfer t = previewTransfer(db, r);
    if (r.source == TransferSource::Remission && r.dispatchType <= 0)
        throw UserError(
            QStringLiteral("Seleccione un tipo de despacho para poder realizar la conversion."));
    transfers::checkTransfer(db, t);
    return t;
}

long long convertToTransfer(const QSqlDatabase& db, const TransferRequest& r) {
    const transfers::Transfer t = transferFor(db, r);
    db::Transaction tx(db);
    // The guard first: it holds the source, so a second conversion waits and then finds it
    // converted.
    store::ConversionLog log;
    switch (r.source) {
    case TransferSource::Remission:
        if (!store::markConverted(db, remissionKind(), r.number))
            checkConvertible(db, AdjustmentSource::Remission, r.number);
        log.originType = QStringLiteral("RM");
        log.origin = QString::number(r.number);
        log.originPlace = t.receiver;
        break;
    case TransferSource::Reception:
        if (!store::markConverted(db, purchases::receptionKind(), r.number))
            checkConvertible(db, AdjustmentSource::Reception, r.number);
        log.originType = QStringLiteral("RC");
        log.origin = QString::number(r.number);
        log.originPlace = t.receiver;
        break;
    case TransferSource::Purchase:
        if (!store::holdPurchase(db, r.document, r.supplier) ||
            purchaseConverted(db, r.document, r.supplier))
            checkPurchaseConvertible(db, r.document, r.supplier);
        log.originType = QStringLiteral("CO");
        log.origin = r.document;
        log.originPlace = r.supplier;
        break;
    }
    const long long number = transfers::writeTransfer(db, t, true);
    log.destinationType =
        t.kind == transfers::Kind::Transfer ? QStringLiteral("TS") : QStringLiteral("DT");
    log.destination = QString::number(number);
    log.destinationPlace = t.receiver;
    log.user = r.user;
    log.note = t.note;
    store::logConversion(db, log, db::serverNow(db));
    tx.commit();
    return number;
}

} // namespace orvo::inventory::dispatch
