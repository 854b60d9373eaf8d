#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>

// Goods from suppliers: purchase orders (ORDENCOMPRAS), the supplier's invoice (COMPRAS), the
// returns to the supplier (DEVCOMPRAS) and the box-by-box reception (RECEPCION).
namespace orvo::inventory::purchases {

// Status of the documents: "ABIERTA" (editable, deletable) until approved, then read-only.
inline constexpr int kOpen = 0;
inline constexpr int kApproved = 1;
// Packed for the other store (transfers and their returns).
inline constexpr int kExported = 2;

// "ABIERTA", "APROBADA", "EXPORTADA".
QString statusText(int status);

// MetodoValorizacion: which charges enter the cost. The first leaves freight and insurance out.
enum class Valuation : int { WithoutFreight = 1, WithFreight = 2 };

// One keyed line of an order, a purchase or a return.
struct DocumentLine {
    QString barcode;
    QString name; // shown, not stored
    Decimal quantity;
    Decimal price;      // unit price before tax: six decimals on orders and purchases
    Decimal taxPercent; // PorcentajeImpuesto of the article's tax code
    long long box = 0;  // NumeroCaja, on documents packed in boxes (transfers)
};

// What a document's lines add up to.
struct DocumentTotals {
    Decimal merchandise; // Σ quantity × price (TotalMercancia)
    Decimal discount;    // merchandise × discount % (TotalDescuento)
    Decimal tax;         // Σ quantity × price less the discount, × rate (TotalImpuesto)
    Decimal total() const { return merchandise - discount + tax; }
};

struct PurchaseOrder {
    long long number = 0; // 0 until first saved
    QString supplier;
    QDateTime date;
    QString note;
    QString user;
    int status = kOpen;
    QList<DocumentLine> lines;
};

// The supplier's invoice, keyed by its number and the supplier.
struct Purchase {
    QString document;
    QString supplier;
    QDateTime date;      // Fecha: when it entered the store
    QDate invoiceDate;   // FechaFactura
    int paymentType = 1; // TipoPago: 1 cash, 2 credit
    int creditDays = 0;
    QString file; // Expediente
    QString note;
    Decimal accountingTax; // TotalImpuestoContable, typed from the invoice
    Decimal discountPercent;
    Decimal exchangeRate;
    Decimal surcharges; // Recargos
    Decimal serviceFee; // TasaServicio
    Decimal otherTaxes; // OtrosImpuestos (import duties)
    Decimal freight;    // Flete
    Decimal insurance;  // Seguro
    Decimal generalTaxPercent;
    QString user;
    Valuation valuation = Valuation::WithoutFreight;
    long long lotId = 0; // IDLote, 0 none
    int status = kOpen;
    QList<DocumentLine> lines;
};

// A document as the browsers show it: an order, a purchase, a return or a reception.
struct DocumentSummary {
    QString number; // Numero, or the purchase's Documento
    QString supplier;
    QString supplierName;
    QDateTime date;
    Decimal total;
    int status = kOpen;
};

// A line of an approved purchase that can still go back to the supplier.
struct ReturnableLine {
    QString barcode;
    QString name;
    Decimal price;
    Decimal taxPercent;
    Decimal returnable; // Σ Cantidad − CantidadDevuelta of the barcode's lines
};

struct PurchaseReturn {
    long long number = 0;
    QDateTime date;
    QString document; // the purchase returned against
    QString supplier;
    Decimal discountPercent; // the purchase's
    QString note;
    QString user;
    int status = kOpen;
    QList<DocumentLine> lines;
};

// RECEPCION.IdTipoDocumento
enum class ReceptionOrigin : int { Purchases = 1, OtherDocuments = 2 };

struct CoveredPurchase {
    QString document;
    QString supplier;
    QString supplierName;
};

struct Reception {
    long long number = 0;
    QString branch; // Sucursal, shown as "Destino"
    QDateTime date;
    QDateTime approvedAt;
    QString origin; // DocumentoOrigen
    QString note;
    ReceptionOrigin originType = ReceptionOrigin::Purchases;
    int status = kOpen;
    QList<CoveredPurchase> purchases;
};

// A box line: what one user counted.
struct BoxLine {
    QString barcode;
    QString name;
    Decimal quantity;
};

struct Box {
    long long number = 0; // 0: a new box, numbered when first saved
    QString user;
    bool closed = false;
    QList<BoxLine> lines;
};

struct BoxSummary {
    long long number = 0;
    QString user;
    Decimal quantity;
    bool closed = false;
};

// One barcode of the comparison of what was counted with what was invoiced.
struct ComparisonLine {
    QString barcode;
    QString name;
    Decimal counted;
    Decimal invoiced;
    Decimal difference() const { return counted - invoiced; }
};

} // namespace orvo::inventory::purchases
