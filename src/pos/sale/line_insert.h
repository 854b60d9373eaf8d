#pragma once

#include "common/db/sql.h"
#include "common/decimal/decimal.h"

#include <QDateTime>
#include <QString>

namespace orvo::pos::sale {

// The figures every line of a sales document keeps, whichever table it goes to.
struct LineFigures {
    QString tipoLista;
    QString codigoBarra;
    Decimal precio;
    Decimal precioLista;
    Decimal costo;
    Decimal impuesto;
    Decimal porcentajeImpuesto;
    Decimal cantidad;
    Decimal porcentajeDescuento;
};

// The figures of a line type that names them alike (SaleLine, the returns' InvoiceLine), with the
// price list letter and the quantity the document writes.
template <class Line>
LineFigures lineFigures(const Line& l, const QString& tipoLista, const Decimal& cantidad) {
    return {.tipoLista = tipoLista,
            .codigoBarra = l.codigoBarra,
            .precio = l.precio,
            .precioLista = l.precioLista,
            .costo = l.costo,
            .impuesto = l.impuesto,
            .porcentajeImpuesto = l.porcentajeImpuesto,
            .cantidad = cantidad,
            .porcentajeDescuento = l.porcentajeDescuento};
}

// The columns a line of an invoice (MOVVENTAS) or of a return (MOVDEVVENTAS) is written with: the
// two tables share them and differ in the name of the document number's column.
QStringList lineColumns(const QString& numberColumn);
// The values for lineColumns(), figures rounded to their columns' scales.
QVariantList lineValues(long long number, const QString& serie, const QDateTime& hora,
                        const LineFigures& line, int item);

// Inserts the lines of an invoice or a return one by one, prepared once for all the lines of a
// document.
class LineInsert {
public:
    LineInsert(const QSqlDatabase& db, const QString& table, const QString& numberColumn);
    void insert(long long number, const QString& serie, const QDateTime& hora,
                const LineFigures& line, int item);

private:
    db::Sql m_insert;
};

} // namespace orvo::pos::sale
