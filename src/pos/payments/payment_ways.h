#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>

namespace orvo::pos::payments {

struct PaymentWay {
    int code = 0;
    QString name;
    bool active = false;
};

// Every payment way, by code.
QList<PaymentWay> loadPaymentWays(const QSqlDatabase& db);
// Switches the ways on and off as given, in one transaction. Refuses a list where no way is on.
void savePaymentWayStates(const QSqlDatabase& db, const QList<PaymentWay>& ways);

} // namespace orvo::pos::payments
