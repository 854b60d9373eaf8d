#pragma once

#include "inventory/dispatch/orders.h"

// SQL of dispatch orders. Writers require the caller's open transaction.
namespace orvo::inventory::dispatch::store {

struct OrderHeader {
    long long number = 0;
    QString serie;
    QDateTime date;
    QString client;
    pos::sale::SaleTotals totals;
    QString note;
    QString user;
    int status = 0;
    bool exempt = false;
};
void insertOrder(const QSqlDatabase& db, const OrderHeader& h);
// Only while open.
bool updateOpenOrder(const QSqlDatabase& db, const OrderHeader& h);
void deleteOrderLines(const QSqlDatabase& db, long long number);
// Adds the quantity to the line of the same barcode and list letter, inserting it at `item`
// when the order has none.
void upsertOrderLine(const QSqlDatabase& db, long long number, int item,
                     const pos::sale::SaleLine& line, const QDateTime& when);
Decimal committed(const QSqlDatabase& db, const QString& barcode, long long except);
QList<OrderSummary> orders(const QSqlDatabase& db);
std::optional<OrderSummary> order(const QSqlDatabase& db, long long number, QString* note);

} // namespace orvo::inventory::dispatch::store
