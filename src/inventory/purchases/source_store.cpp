#include "inventory/purchases/source_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::purchases::store {

QList<Company> companies(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre, BaseDatos FROM EMPRESAS WHERE Status = 1 "
                                 "AND BaseDatos <> '' ORDER BY Codigo"));
    q.exec();
    QList<Company> out;
    while (q.next())
        out.append({q.text(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre")),
                    q.text(QStringLiteral("BaseDatos")).trimmed()});
    return out;
}

QString companyRif(const QSqlDatabase& db) {
    return db::scalar(db, QStringLiteral("SELECT IDEmpresa FROM PARAMETROS")).toString();
}

QSet<QString> enteredDocuments(const QSqlDatabase& db, const QString& supplier) {
    db::Sql q(db, QStringLiteral("SELECT Documento FROM COMPRAS WHERE Proveedor = ?"));
    q.bind(supplier).exec();
    QSet<QString> out;
    while (q.next())
        out.insert(q.text(QStringLiteral("Documento")).trimmed());
    return out;
}

QList<SaleInvoice> invoicesTo(const QSqlDatabase& db, const QString& plainRif) {
    db::Sql q(db, QStringLiteral("SELECT NumeroFactura, Serie, Fecha, TotalMercancia - "
                                 "TotalDescuento + TotalImpuesto AS Total FROM VENTAS WHERE "
                                 "UPPER(REPLACE(REPLACE(Cliente, '-', ''), ' ', '')) = ? AND "
                                 "TotalMercancia > 0 ORDER BY Fecha DESC, NumeroFactura DESC"));
    q.bind(plainRif).exec();
    QList<SaleInvoice> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("NumeroFactura")), q.text(QStringLiteral("Serie")),
                    q.dateTime(QStringLiteral("Fecha")), q.decimal(QStringLiteral("Total"))});
    return out;
}

QList<SaleLine> invoiceLines(const QSqlDatabase& db, long long number, const QString& serie) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra, Cantidad, PrecioLista, PorcentajeImpuesto "
                                 "FROM MOVVENTAS WHERE NumeroFactura = ? AND Serie = ? AND "
                                 "Cantidad > 0 ORDER BY Item"));
    q.bind(number).bind(serie).exec();
    QList<SaleLine> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")).trimmed(),
                    q.decimal(QStringLiteral("Cantidad")), q.decimal(QStringLiteral("PrecioLista")),
                    q.decimal(QStringLiteral("PorcentajeImpuesto"))});
    return out;
}

std::optional<CatalogueArticle> catalogueArticle(const QSqlDatabase& db, const QString& barcode) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra, Nombre, Referencia, CodigoMarca, Talla, "
                                 "CodigoColor, Categoria, Fabricante, PrecioDetal, PrecioMayor, "
                                 "PrecioAfiliado, Tipo FROM INVENTARIO WHERE CodigoBarra = ?"));
    q.bind(barcode).exec();
    if (!q.next())
        return std::nullopt;
    CatalogueArticle a;
    a.barcode = q.text(QStringLiteral("CodigoBarra"));
    a.name = q.text(QStringLiteral("Nombre"));
    a.reference = q.text(QStringLiteral("Referencia"));
    a.brand = q.text(QStringLiteral("CodigoMarca"));
    a.size = q.text(QStringLiteral("Talla"));
    a.colour = q.text(QStringLiteral("CodigoColor"));
    a.category = q.text(QStringLiteral("Categoria"));
    a.manufacturer = q.text(QStringLiteral("Fabricante"));
    a.retail = q.decimal(QStringLiteral("PrecioDetal"));
    a.wholesale = q.decimal(QStringLiteral("PrecioMayor"));
    a.member = q.decimal(QStringLiteral("PrecioAfiliado"));
    a.type = q.integer(QStringLiteral("Tipo"));
    return a;
}

int taxCodeOf(const QSqlDatabase& db, const Decimal& rate) {
    const QVariant code = db::scalar(
        db,
        QStringLiteral("SELECT Codigo FROM IMPUESTOS WHERE PorcentajeImpuesto = ? ORDER BY "
                       "Codigo"),
        {rate.toVariant(4)});
    return code.isValid() ? code.toInt() : 1;
}

QPair<QString, QVariantList> insertArticle(const QSqlDatabase& db, const CatalogueArticle& a,
                                           int taxCode) {
    db::requireTransaction(db);
    const QString now = db::nowExpression(db);
    const QString sql =
        QStringLiteral("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, "
                       "Talla, CodigoColor, Categoria, Fabricante, TipoImpuesto, "
                       "UltimaActualizacion, FechaPrimerMovimiento, PuntoReorden, PrecioDetal, "
                       "PrecioMayor, PrecioAfiliado, Promocion, PrecioPromocion, "
                       "ExistenciaInicial, Existencia, CostoInicial, CostoPromedio, UltimoCosto, "
                       "CostoDolar, Tipo, Status, Serializado, CodigoBarraAnt) VALUES (?, ?, ?, "
                       "?, ?, ?, ?, ?, ?, ") +
        now + QStringLiteral(", ") + now +
        QStringLiteral(", 0, ?, ?, ?, 0, 0, 0, 0, 0, 0, 0, 0, ?, 0, 0, ?)");
    const QVariantList values = {a.barcode,
                                 a.name,
                                 a.reference,
                                 a.brand,
                                 a.size,
                                 a.colour,
                                 a.category,
                                 a.manufacturer,
                                 taxCode,
                                 a.retail.toVariant(4),
                                 a.wholesale.toVariant(4),
                                 a.member.toVariant(4),
                                 a.type,
                                 a.barcode};
    db::Sql in(db, sql);
    for (const QVariant& v : values)
        in.bind(v);
    in.exec();
    return {sql, values};
}

bool usableInBox(const QSqlDatabase& db, const QString& barcode) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra = "
                                      "? AND CostoPromedio > 0 AND Status <> 0"),
                       {barcode}) > 0;
}

bool barcodeExists(const QSqlDatabase& db, const QString& barcode) {
    return db::exists(db, QStringLiteral("SELECT 1 FROM INVENTARIO WHERE CodigoBarra = ?"),
                      {barcode});
}

} // namespace orvo::inventory::purchases::store
