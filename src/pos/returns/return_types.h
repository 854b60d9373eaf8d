#pragma once

#include "common/decimal/decimal.h"

#include <QList>
#include <QString>

// A sales return (DEVVENTAS / MOVDEVVENTAS) as the till keys it from one invoice of its register.
namespace orvo::pos::returns {

// VENTAS.TipoVenta
inline constexpr int kCashSale = 1;
inline constexpr int kCreditSale = 2;

// One MOVVENTAS line with what is left to return of it.
struct InvoiceLine {
    int item = 0;
    QString codigoBarra;
    QString nombre;
    QString modelKey; // Referencia + CodigoMarca + Talla + CodigoColor
    QString tipoLista;
    Decimal precio;
    Decimal precioLista;
    Decimal costo;
    Decimal impuesto;
    Decimal porcentajeImpuesto;
    Decimal porcentajeDescuento;
    Decimal cantidad;
    Decimal cantidadDevuelta;
    bool fraccionable = false; // the article sells by weight or measure
    // CantidadMax: what may still come back.
    Decimal remaining() const { return cantidad - cantidadDevuelta; }
};

struct ReturnableInvoice {
    long long number = 0;
    QString serie;
    QString vendedor;
    QString cliente;
    QString clienteNombre;
    QString tipoCliente; // TIPOSCLIENTE.Descripcion
    int tipoVenta = kCashSale;
    QList<InvoiceLine> lines; // every line, also those fully returned
};

struct ReturnLine {
    InvoiceLine source;
    Decimal cantidad;
};

struct ReturnTotals {
    Decimal merchandise; // Σ Precio × Cantidad
    Decimal discount;    // Σ (Precio − PrecioLista) × Cantidad
    Decimal tax;         // Σ Impuesto × Cantidad
    Decimal cost;        // Σ Costo × Cantidad
    Decimal total() const { return merchandise - discount + tax; }
};

} // namespace orvo::pos::returns
