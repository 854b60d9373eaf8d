#pragma once

#include "common/decimal/decimal.h"
#include "pos/payments/payment_rules.h"

#include <QDate>
#include <QList>
#include <QString>

namespace orvo::pos::sale {

// Price-list letters of a sale line (MOVVENTAS.TipoLista).
inline constexpr char kRetail = 'D';
inline constexpr char kWholesale = 'M';
inline constexpr char kAffiliate = 'A';
inline constexpr char kSpecial = 'E'; // cost plus the client's margin
inline constexpr char kPromotion = 'P';

// An article as the sale prices it: its INVENTARIO row with the rate of its tax code. For an
// article of a model the prices are the model's highest (see withModelPrices).
struct ArticlePrices {
    QString codigoBarra;
    QString nombre;
    QString referencia;
    QString codigoMarca;
    Decimal precioDetal;
    Decimal precioMayor;
    Decimal precioAfiliado;
    bool promocion = false;
    Decimal precioPromocion;
    QDate fechaInicial;
    QDate fechaFinal;
    Decimal costoPromedio;
    Decimal porcentajeImpuesto;
    int tipo = 0; // 0 keeps stock; anything else (services) is sold without touching it
    Decimal existencia;
    bool fraccionable = false; // sold by weight or measure: quantities may carry decimals
};

// The highest prices among the other sizes and colours of a model, one row per promotion flag.
struct ModelPrices {
    Decimal precioDetal;
    Decimal precioMayor;
    Decimal precioAfiliado;
    bool promocion = false;
    Decimal precioPromocion;
    QDate fechaInicial;
    QDate fechaFinal;
};

// The client of the sale with what pricing needs of its type.
struct SaleClient {
    QString codigo;
    QString nombre;
    QString tipo; // TIPOSCLIENTE.Codigo: "2" affiliate, "3" special, "4" wholesale
    QString tipoDescripcion;
    QString tipoContribuyente;
    Decimal porcentajeUtilidad;
    bool isSet() const { return !codigo.isEmpty(); }
};

struct SaleSeller {
    QString cedula; // VENTAS.Vendedor
    QString codigo;
    QString nombre;
    bool isSet() const { return !cedula.isEmpty(); }
};

// One line of the sale as it is saved in MOVVENTAS.
struct SaleLine {
    char tipoLista = kRetail;
    QString codigoBarra;
    QString nombre;
    Decimal precio;              // unit price before the line's discount
    Decimal precioLista;         // unit price charged
    Decimal porcentajeDescuento; // line discount in percent
    Decimal costo;
    Decimal porcentajeImpuesto;
    Decimal impuesto; // per unit, on the price charged
    Decimal cantidad;
    int tipo = 0;
    ArticlePrices article; // kept to price the line again (list change, global discount)
};

struct SaleTotals {
    Decimal merchandise; // Σ Precio × Cantidad
    Decimal discount;    // Σ (Precio − PrecioLista) × Cantidad
    Decimal taxBase;     // merchandise − discount
    Decimal tax;         // Σ Impuesto × Cantidad
    Decimal cost;        // Σ Costo × Cantidad
    Decimal total;       // taxBase + tax
};

enum class PaymentMode { Cash, Credit };

inline const QString kOnAccount = QStringLiteral("CUENTA POR COBRAR");

} // namespace orvo::pos::sale
