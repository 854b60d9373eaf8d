#include "pos/payments/payment_ways.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"

#include <algorithm>

namespace orvo::pos::payments {

QList<PaymentWay> loadPaymentWays(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre, Status FROM FORMAPAGO ORDER BY Codigo"));
    q.exec();
    QList<PaymentWay> ways;
    while (q.next())
        ways.append({q.integer(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre")),
                     q.integer(QStringLiteral("Status")) == 1});
    return ways;
}

void savePaymentWayStates(const QSqlDatabase& db, const QList<PaymentWay>& ways) {
    if (std::none_of(ways.begin(), ways.end(), [](const PaymentWay& w) { return w.active; }))
        throw UserError(QStringLiteral("Debe seleccionar un tipo de pago...!"));
    db::Transaction tx(db);
    db::Sql q(db, QStringLiteral("UPDATE FORMAPAGO SET Status = ? WHERE Codigo = ?"));
    for (const PaymentWay& w : ways)
        q.bind(w.active ? 1 : 0).bind(w.code).exec();
    tx.commit();
}

} // namespace orvo::pos::payments
