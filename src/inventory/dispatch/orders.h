#pragma once

#include "pos/sale/sale_draft.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>

// Dispatch orders: a priced order for a client, keyed at a configured register and invoiced later
// at the till (F8 of the sale). The order is keyed on the sale's own draft, so it prices, lists,
// discounts and taxes its lines exactly as the invoice will; it moves no stock.
namespace orvo::inventory::dispatch {

inline const QString kOrderScreen = QStringLiteral("frmOrdenDespacho");

// Refuses a workstation whose register is not configured ("Debe configurar la caja...!").
void checkOrderRegister(const shell::SessionContext& ctx);

// An empty order draft priced as this register prices.
pos::sale::SaleDraft newOrderDraft(const QSqlDatabase& db, const shell::SessionContext& ctx);

// Looks the barcode up and adds it: zero stock, stock committed to other orders, zero price or
// cost, and a draft closed by the global discount are refused. `order` is the order being
// modified (its own lines do not count as committed), 0 for a new one.
void addToOrder(const QSqlDatabase& db, pos::sale::SaleDraft& draft, long long order,
                const QString& barcode, const Decimal& quantity);

// The order's client: refused when the register may not invoice its type.
void setOrderClient(const shell::SessionContext& ctx, pos::sale::SaleDraft& draft,
                    const pos::sale::SaleClient& client);

// The client by code for an order or an invoice of this register: refused when it is not
// registered or the register may not invoice its type.
pos::sale::SaleClient orderClient(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                  const QString& code);

// Alternates a line between retail and wholesale, when the register may.
void switchOrderList(const shell::SessionContext& ctx, pos::sale::SaleDraft& draft, int line);

// Units of the article held by open and approved orders, other than `except`.
Decimal committedStock(const QSqlDatabase& db, const QString& barcode, long long except);

struct OrderSave {
    long long number = 0; // 0: new
    QString note;
    bool approve = false; // "Desea aprobar la orden de despacho...?" answered yes
};
// Writes the order in one transaction: a new one takes the next number, a modified one (open
// only) has its lines deleted first; lines are upserted by barcode and list letter. Returns the
// number.
long long saveOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                    const pos::sale::SaleDraft& draft, const OrderSave& save);

// The same inside the caller's open transaction (a conversion that writes an order).
long long writeOrder(const QSqlDatabase& db, const shell::SessionContext& ctx,
                     const pos::sale::SaleDraft& draft, const OrderSave& save);

struct OrderSummary {
    long long number = 0;
    QDateTime date;
    QString client;
    QString clientName;
    Decimal total;
    int status = 0; // 0 ABIERTA, 1 APROBADA, 2 facturada
    bool exempt = false;
};
QList<OrderSummary> listOrders(const QSqlDatabase& db);
// An open order back into a draft, for modifying it.
struct LoadedOrder {
    OrderSummary summary;
    QString note;
};
LoadedOrder loadOrder(const QSqlDatabase& db, long long number, pos::sale::SaleDraft& draft);

} // namespace orvo::inventory::dispatch
