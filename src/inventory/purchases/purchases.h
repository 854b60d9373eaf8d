#pragma once

#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>
#include <functional>
#include <optional>

// The actions of purchase orders, purchases and purchase returns: each one that writes opens and
// closes one transaction. Refusals throw UserError with the message the user reads.
namespace orvo::inventory::purchases {

inline const QString kOrderScreen = QStringLiteral("frmOrdenCompras");
inline const QString kPurchaseScreen = QStringLiteral("frmCompras");
inline const QString kReturnScreen = QStringLiteral("frmDevCompra");

// What a long save is doing, for the screen's status line.
using Progress = std::function<void(const QString& text)>;

// An article keyed on a document: its name and tax rate come from INVENTARIO. Unknown barcodes
// are refused.
DocumentLine articleLine(const QSqlDatabase& db, const QString& barcode, const Decimal& quantity,
                         const Decimal& price);
// Adds `line` to the keyed lines after checking it.
void addLine(QList<DocumentLine>& lines, const DocumentLine& line);

// --- Purchase orders ---
// Before the approval question: the order needs a supplier and a line.
void checkOrder(const PurchaseOrder& order);
// Saves the order (a new one takes the next number) with its lines and, when `approve`, marks it
// approved; approving moves no stock. Returns the order's number.
long long saveOrder(const QSqlDatabase& db, PurchaseOrder order, bool approve,
                    const Progress& progress = {});
// Only an open order.
void deleteOrder(const QSqlDatabase& db, long long number);
std::optional<PurchaseOrder> loadOrder(const QSqlDatabase& db, long long number);
QList<DocumentSummary> listOrders(const QSqlDatabase& db);
// Approved orders, newest first: what a purchase loads its lines from.
QList<DocumentSummary> ordersToLoad(const QSqlDatabase& db);
// An approved order's lines (barcode, quantity, price, tax rate).
QList<DocumentLine> orderLines(const QSqlDatabase& db, long long number);

// --- Purchases ---
// Before the approval question: a supplier, an invoice number, a line, a discount within 0..100
// and, for a new purchase, a (Documento, Proveedor) not entered yet.
void checkPurchase(const QSqlDatabase& db, const Purchase& purchase, bool isNew);
// Whether to ask "Desea aprobar la compra...?": only when every line has a price.
bool offersApproval(const Purchase& purchase);
// Guardar: in one transaction, the checks again, the header (inserted, or updated while open),
// the lines (the same barcode twice becomes one line) and, when `approve`, the approval: prorated
// cost per line by the valuation method, stock and per-variant moving average, then the average
// of every model it touched. A failure leaves nothing written.
void savePurchase(const QSqlDatabase& db, const Purchase& purchase, bool isNew, bool approve,
                  const Progress& progress = {});
// Only an open purchase.
void deletePurchase(const QSqlDatabase& db, const QString& document, const QString& supplier);
std::optional<Purchase> loadPurchase(const QSqlDatabase& db, const QString& document,
                                     const QString& supplier);
QList<DocumentSummary> listPurchases(const QSqlDatabase& db);
// The price change over a model: every line of a variant of the model of `barcode` takes
// `price`. Returns the lines changed.
int changeModelPrice(const QSqlDatabase& db, QList<DocumentLine>& lines, const QString& barcode,
                     const Decimal& price);

// --- Purchase returns ---
// An approved purchase's lines that still have something to return.
QList<ReturnableLine> returnableLines(const QSqlDatabase& db, const QString& document,
                                      const QString& supplier);
// Keys a returned article: it must be on the purchase, not in the return yet, and no more than
// what is left to return.
void addReturnLine(QList<DocumentLine>& lines, const QList<ReturnableLine>& returnable,
                   const QString& barcode, const Decimal& quantity);
void checkPurchaseReturn(const PurchaseReturn& r);
// Saves the return (a new one takes the next number); approving takes the goods out of stock and
// adds them to the purchase's CantidadDevuelta, costs unchanged. Returns the number.
long long savePurchaseReturn(const QSqlDatabase& db, PurchaseReturn r, bool approve);
void deletePurchaseReturn(const QSqlDatabase& db, long long number);
std::optional<PurchaseReturn> loadPurchaseReturn(const QSqlDatabase& db, long long number);
QList<DocumentSummary> listPurchaseReturns(const QSqlDatabase& db);

} // namespace orvo::inventory::purchases
