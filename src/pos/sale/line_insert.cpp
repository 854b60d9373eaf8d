#include "pos/sale/line_insert.h"

namespace orvo::pos::sale {

LineInsert::LineInsert(const QSqlDatabase& db, const QString& table, const QString& numberColumn)
    : m_insert(db, QStringLiteral("INSERT INTO %1 (%2, Serie, Hora, TipoLista, CodigoBarra, "
                                  "Precio, PrecioLista, Costo, Impuesto, PorcentajeImpuesto, "
                                  "Cantidad, Item, PorcentajeDescuento) VALUES (?, ?, ?, ?, ?, ?, "
                                  "?, ?, ?, ?, ?, ?, ?)")
                       .arg(table, numberColumn)) {}

void LineInsert::insert(long long number, const QString& serie, const QDateTime& hora,
                        const LineFigures& line, int item) {
    m_insert.bind(number)
        .bind(serie)
        .bind(hora)
        .bind(line.tipoLista)
        .bind(line.codigoBarra)
        .bind(line.precio, 4)
        .bind(line.precioLista, 4)
        .bind(line.costo, 5)
        .bind(line.impuesto, 2)
        .bind(line.porcentajeImpuesto, 4)
        .bind(line.cantidad, 3)
        .bind(item)
        .bind(line.porcentajeDescuento, 4)
        .exec();
}

} // namespace orvo::pos::sale
