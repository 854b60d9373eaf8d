#include "pos/sale/line_insert.h"

namespace orvo::pos::sale {

QStringList lineColumns(const QString& numberColumn) {
    return {numberColumn,
            QStringLiteral("Serie"),
            QStringLiteral("Hora"),
            QStringLiteral("TipoLista"),
            QStringLiteral("CodigoBarra"),
            QStringLiteral("Precio"),
            QStringLiteral("PrecioLista"),
            QStringLiteral("Costo"),
            QStringLiteral("Impuesto"),
            QStringLiteral("PorcentajeImpuesto"),
            QStringLiteral("Cantidad"),
            QStringLiteral("Item"),
            QStringLiteral("PorcentajeDescuento")};
}

QVariantList lineValues(long long number, const QString& serie, const QDateTime& hora,
                        const LineFigures& line, int item) {
    return {number,
            serie,
            hora,
            line.tipoLista,
            line.codigoBarra,
            line.precio.toVariant(4),
            line.precioLista.toVariant(4),
            line.costo.toVariant(5),
            line.impuesto.toVariant(2),
            line.porcentajeImpuesto.toVariant(4),
            line.cantidad.toVariant(3),
            item,
            line.porcentajeDescuento.toVariant(4)};
}

LineInsert::LineInsert(const QSqlDatabase& db, const QString& table, const QString& numberColumn)
    : m_insert(db, QStringLiteral("INSERT INTO %1 (%2) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                                  "?, ?)")
                       .arg(table, lineColumns(numberColumn).join(QStringLiteral(", ")))) {}

void LineInsert::insert(long long number, const QString& serie, const QDateTime& hora,
                        const LineFigures& line, int item) {
    for (const QVariant& v : lineValues(number, serie, hora, line, item))
        m_insert.bind(v);
    m_insert.exec();
}

} // namespace orvo::pos::sale
