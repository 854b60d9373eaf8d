#include "inventory/dispatch/conversions.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/dispatch/transfer_conversions.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/stock/date_guard.h"

namespace orvo::inventory::dispatch {

namespace {

const purchases::BoxKind& kindOf(AdjustmentSource source) {
    return source == AdjustmentSource::Remission ? remissionKind() : purchases::receptionKind();
}

QString typeCode(AdjustmentSource source) {
    return source == AdjustmentSource::Remission ? QStringLiteral("RM") : QStringLiteral("RC");
}

Decimal valueOf(const QList<store::SummedLine>& lines) {
    Decimal total;
    for (const store::SummedLine& l : lines)
        total += (l.quantity * l.cost).rounded(2);
    return total;
}

} // namespace

void checkConvertible(const QSqlDatabase& db, AdjustmentSource source, long long number) {
    const purchases::BoxKind& kind = kindOf(source);
    const int status = purchases::store::status(db, number, kind);
    const QString name = kind.title.toLower() + QStringLiteral(" Nº ") + QString::number(number);
    if (status < 0)
        throw UserError(QStringLiteral("La ") + name + QStringLiteral(" no existe...!"));
    if (status == 2)
        throw UserError(QStringLiteral("La ") + name + QStringLiteral(" ya fue convertida...!"));
    if (status != 1)
        throw UserError(QStringLiteral("La ") + name + QStringLiteral(" no está aprobada...!"));
}

int adjustmentSign(AdjustmentSource source) {
    return source == AdjustmentSource::Remission ? -1 : 1;
}

QList<store::AdjustmentType> adjustmentTypesFor(const QSqlDatabase& db, AdjustmentSource source) {
    return store::adjustmentTypes(db, adjustmentSign(source));
}

AdjustmentPreview previewAdjustment(const QSqlDatabase& db, AdjustmentSource source,
                                    long long number) {
    checkConvertible(db, source, number);
    AdjustmentPreview p;
    p.branch = store::branchOf(db, kindOf(source), number);
    p.lines = store::summedLines(db, kindOf(source), number);
    p.total = valueOf(p.lines);
    return p;
}

long long convertToAdjustment(const QSqlDatabase& db, AdjustmentSource source, long long number,
                              int adjustmentType, const QString& user) {
    const purchases::BoxKind& kind = kindOf(source);
    const int sign = adjustmentSign(source);
    db::Transaction tx(db);
    // The guarded update first: it holds the source, so a second conversion waits and then finds
    // it converted.
    if (!store::markConverted(db, kind, number))
        checkConvertible(db, source, number);
    const QDateTime now = db::serverNow(db);
    stock::checkDocumentDate(db, now.date());
    const QList<store::SummedLine> lines = store::summedLines(db, kind, number);
    if (lines.isEmpty())
        throw UserError(QStringLiteral("El documento no tiene artículos para convertir...!"));

    store::AdjustmentHeader h;
    h.number = common::nextCode(db, QStringLiteral("AJUSTES"), QStringLiteral("Numero"));
    h.date = now;
    h.type = adjustmentType;
    h.sign = sign;
    h.total = valueOf(lines);
    h.note = (source == AdjustmentSource::Remission
                  ? QStringLiteral("Ajuste generado aut. por la remisión Nº ")
                  : QStringLiteral("Ajuste generado aut. por la recepción Nº ")) +
             QString::number(number);
    h.user = user;
    store::insertAdjustment(db, h);
    int item = 0;
    for (const store::SummedLine& l : lines) {
        store::insertAdjustmentLine(db, h.number, ++item, l);
        store::moveStock(db, l.barcode, sign < 0 ? -l.quantity : l.quantity);
    }
    store::logConversion(db,
                         {typeCode(source), QString::number(number),
                          store::branchOf(db, kind, number), QStringLiteral("AJ"),
                          QString::number(h.number), QString(), user, h.note},
                         now);
    tx.commit();
    return h.number;
}

void orderFromRemission(const QSqlDatabase& db, long long remission, pos::sale::SaleDraft& draft) {
    checkConvertible(db, AdjustmentSource::Remission, remission);
    if (!draft.client().isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    for (const store::SummedLine& l : store::summedLines(db, remissionKind(), remission))
        addToOrder(db, draft, 0, l.barcode, l.quantity);
}

long long convertRemissionToOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                  long long remission, const pos::sale::SaleDraft& draft) {
    db::Transaction tx(db);
    if (!store::markConverted(db, remissionKind(), remission))
        checkConvertible(db, AdjustmentSource::Remission, remission);
    const QString note =
        QStringLiteral("Orden generada aut. por la remisión Nº ") + QString::number(remission);
    const long long order = writeOrder(db, ctx, draft, {0, note, true});
    store::logConversion(db,
                         {QStringLiteral("RM"), QString::number(remission),
                          store::branchOf(db, remissionKind(), remission), QStringLiteral("OD"),
                          QString::number(order), draft.client().codigo, ctx.userCode, note},
                         db::serverNow(db));
    tx.commit();
    return order;
}

void orderFromPurchase(const QSqlDatabase& db, const QString& document, const QString& supplier,
                       pos::sale::SaleDraft& draft) {
    checkPurchaseConvertible(db, document, supplier);
    if (!draft.client().isSet())
        throw UserError(QStringLiteral("Debe indicar el cliente de la orden de despacho...!"));
    const auto purchase = purchases::loadPurchase(db, document, supplier);
    for (const purchases::DocumentLine& l : purchase->lines)
        addToOrder(db, draft, 0, l.barcode, l.quantity);
}

long long convertPurchaseToOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                 const QString& document, const QString& supplier,
                                 const pos::sale::SaleDraft& draft) {
    db::Transaction tx(db);
    if (!store::holdPurchase(db, document, supplier) || purchaseConverted(db, document, supplier))
        checkPurchaseConvertible(db, document, supplier);
    const QString note = QStringLiteral("Orden generada aut. por la compra Nº ") + document +
                         QStringLiteral(" del proveedor ") + supplier;
    const long long order = writeOrder(db, ctx, draft, {0, note, true});
    store::logConversion(db,
                         {QStringLiteral("CO"), document, supplier, QStringLiteral("OD"),
                          QString::number(order), draft.client().codigo, ctx.userCode, note},
                         db::serverNow(db));
    tx.commit();
    return order;
}

long long convertListToOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                             const pos::sale::SaleDraft& draft) {
    if (draft.lines().isEmpty())
        throw UserError(QStringLiteral("La orden de despacho debe contener al menos un items...!"));
    return saveOrder(db, ctx, draft,
                     {0, QStringLiteral("Orden generada aut. por una remisión manual"), true});
}

} // namespace orvo::inventory::dispatch
