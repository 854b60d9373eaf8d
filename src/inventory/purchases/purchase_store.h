#pragma once

#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>
#include <optional>

// SQL of purchase orders, purchases and purchase returns. Writers require the caller's open
// transaction; readers run anywhere.
namespace orvo::inventory::purchases::store {

// --- Purchase orders ---
void insertOrder(const QSqlDatabase& db, const PurchaseOrder& o, const DocumentTotals& t);
// Only while open; false when the order is approved or gone.
bool updateOrder(const QSqlDatabase& db, const PurchaseOrder& o, const DocumentTotals& t);
void deleteOrderLines(const QSqlDatabase& db, long long number);
// Adds the quantity to the barcode's line, inserting the line at `item` when it has none.
void upsertOrderLine(const QSqlDatabase& db, long long number, const DocumentLine& line, int item);
bool approveOrder(const QSqlDatabase& db, long long number);
bool deleteOrder(const QSqlDatabase& db, long long number);
std::optional<PurchaseOrder> loadOrder(const QSqlDatabase& db, long long number);
// Newest first; only approved ones when `approvedOnly` (the orders a purchase loads from).
QList<DocumentSummary> listOrders(const QSqlDatabase& db, bool approvedOnly = false);

// --- Purchases ---
// The no-op update that tests whether (Documento, Proveedor) exists.
bool purchaseExists(const QSqlDatabase& db, const QString& document, const QString& supplier);
void insertPurchase(const QSqlDatabase& db, const Purchase& p, const DocumentTotals& t);
// Every header column, only while open; false otherwise.
bool updatePurchase(const QSqlDatabase& db, const Purchase& p, const DocumentTotals& t);
void deletePurchaseLines(const QSqlDatabase& db, const QString& document, const QString& supplier);
void upsertPurchaseLine(const QSqlDatabase& db, const Purchase& p, const DocumentLine& line,
                        int item);
// Status 0 -> 1; false when it was not open.
bool markPurchaseApproved(const QSqlDatabase& db, const QString& document, const QString& supplier);
struct StoredLine {
    int item = 0;
    Decimal invoicePrice;
};
QList<StoredLine> storedLines(const QSqlDatabase& db, const QString& document,
                              const QString& supplier);
void setProratedPrice(const QSqlDatabase& db, const QString& document, const QString& supplier,
                      int item, const Decimal& price);
// What the purchase brings to each of its variants, with the variant as it stands. The variants'
// rows are held first (the no-op update), so nobody changes them until the approval ends.
struct Receipt {
    QString barcode;
    Decimal stock;       // Existencia before
    Decimal averageCost; // CostoPromedio before
    Decimal quantity;    // Σ Cantidad of its lines
    Decimal value;       // Σ PrecioProrrateado × Cantidad
    Decimal lastCost;    // the highest prorated price of its lines
};
QList<Receipt> holdReceipts(const QSqlDatabase& db, const QString& document,
                            const QString& supplier);
// The variant's new stock and costs; it becomes active.
void writeReceipt(const QSqlDatabase& db, const QString& barcode, const Decimal& stock,
                  const Decimal& averageCost, const Decimal& lastCost);
bool deletePurchase(const QSqlDatabase& db, const QString& document, const QString& supplier);
// The unit cost each line was approved at, in line order.
QList<QPair<QString, Decimal>> proratedCosts(const QSqlDatabase& db, const QString& document,
                                             const QString& supplier);
std::optional<Purchase> loadPurchase(const QSqlDatabase& db, const QString& document,
                                     const QString& supplier);
QList<DocumentSummary> listPurchases(const QSqlDatabase& db);
// Approved purchases with this invoice number (any supplier).
QList<DocumentSummary> approvedPurchases(const QSqlDatabase& db, const QString& document);
// What each barcode of an approved purchase still has to return, in line order.
QList<ReturnableLine> returnableLines(const QSqlDatabase& db, const QString& document,
                                      const QString& supplier);

// --- Purchase returns ---
void insertReturn(const QSqlDatabase& db, const PurchaseReturn& r, const DocumentTotals& t);
bool updateReturn(const QSqlDatabase& db, const PurchaseReturn& r, const DocumentTotals& t);
void deleteReturnLines(const QSqlDatabase& db, long long number);
void upsertReturnLine(const QSqlDatabase& db, long long number, const DocumentLine& line, int item);
bool markReturnApproved(const QSqlDatabase& db, long long number);
// Takes the return's quantities out of stock; costs stay.
void takeReturnedStock(const QSqlDatabase& db, long long number);
// Adds `quantity` of `barcode` to CantidadDevuelta of the purchase's lines, first line first;
// false when the purchase has not that much left to return.
bool markReturned(const QSqlDatabase& db, const QString& document, const QString& supplier,
                  const QString& barcode, const Decimal& quantity);
bool deleteReturn(const QSqlDatabase& db, long long number);
std::optional<PurchaseReturn> loadReturn(const QSqlDatabase& db, long long number);
QList<DocumentSummary> listReturns(const QSqlDatabase& db);

// --- Catalogues ---
// For the lookup list: approved orders, newest first.
QString approvedOrdersCatalogSql();
// For the lookup list: approved purchases with this invoice number (bound), by supplier.
QString approvedPurchasesCatalogSql();
struct Supplier {
    QString code;
    QString name;
};
QList<Supplier> activeSuppliers(const QSqlDatabase& db);
QString supplierName(const QSqlDatabase& db, const QString& code);
// IMPUESTOS code 1: the general rate.
Decimal generalTaxPercent(const QSqlDatabase& db);
// The barcodes of a model: every variant of (Referencia, CodigoMarca).
QStringList modelBarcodes(const QSqlDatabase& db, const QString& reference, const QString& brand);

} // namespace orvo::inventory::purchases::store
