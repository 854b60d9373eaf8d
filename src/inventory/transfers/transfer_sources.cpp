#include "inventory/transfers/transfer_sources.h"

#include "inventory/stock/date_guard.h"
#include "inventory/transfers/sources_store.h"

namespace orvo::inventory::transfers {

QList<DocumentLine> adjustmentLines(const QSqlDatabase& db, long long number) {
    return store::documentLines(db, QStringLiteral("MOVAJUSTES"), QStringLiteral("Cantidad"), {},
                                number);
}

QList<DocumentLine> returnLines(const QSqlDatabase& db, long long number) {
    return store::documentLines(db, QStringLiteral("MOVDEVTRANSFERENCIAS"),
                                QStringLiteral("Cantidad"), QStringLiteral("NumeroCaja"), number);
}

QList<DocumentLine> draftLines(const QSqlDatabase& db, long long number) {
    return store::documentLines(db, QStringLiteral("MOVDEVBORRADOR"), QStringLiteral("Cantidad"),
                                QStringLiteral("NumeroCaja"), number);
}

QList<StoreOrder> pendingOrders(const QSqlDatabase& own, const QSqlDatabase& orders,
                                const QString& branch) {
    const auto adjusted = stock::lastPhysicalAdjustment(own);
    const QDateTime since(adjusted ? *adjusted : QDate(2000, 1, 1), QTime(0, 0));
    // The two databases cannot be joined: what was transferred is read here.
    const QSet<QString> transferred = store::originsOfTransfersTo(own, branch);
    QList<StoreOrder> out;
    for (const store::OrderRow& o : store::ordersSince(orders, since))
        if (!transferred.contains(QString::number(o.number)))
            out.append({o.number, o.date, o.note});
    return out;
}

QList<DocumentLine> orderLines(const QSqlDatabase& orders, long long number) {
    return store::documentLines(orders, QStringLiteral("MOVPEDIDOS"),
                                QStringLiteral("CantidadPedida"), {}, number);
}

} // namespace orvo::inventory::transfers
