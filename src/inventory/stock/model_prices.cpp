#include "inventory/stock/model_prices.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::stock {

std::optional<ModelPrices> modelPricesOf(const QSqlDatabase& db, const QString& reference,
                                         const QString& brand, const QString& exceptBarcode) {
    db::Sql q(db, QStringLiteral(
                      "SELECT Referencia, CodigoMarca, MAX(PrecioDetal) AS PrecioDetal, "
                      "MAX(PrecioMayor) AS PrecioMayor, MAX(PrecioAfiliado) AS PrecioAfiliado, "
                      "Promocion, MAX(PrecioPromocion) AS PrecioPromocion, MAX(FechaInicial) AS "
                      "FechaInicial, MAX(FechaFinal) AS FechaFinal FROM INVENTARIO WHERE "
                      "Referencia = ? AND CodigoMarca = ? AND CodigoBarra <> ? GROUP BY "
                      "Referencia, CodigoMarca, Promocion ORDER BY Promocion DESC"));
    q.bind(reference).bind(brand).bind(exceptBarcode).exec();
    if (!q.next())
        return std::nullopt;
    ModelPrices p;
    p.retail = q.decimal(QStringLiteral("PrecioDetal"));
    p.wholesale = q.decimal(QStringLiteral("PrecioMayor"));
    p.member = q.decimal(QStringLiteral("PrecioAfiliado"));
    p.promotion = q.integer(QStringLiteral("Promocion")) == 1;
    p.promotionPrice = q.decimal(QStringLiteral("PrecioPromocion"));
    p.promotionStart = q.dateTime(QStringLiteral("FechaInicial")).date();
    p.promotionEnd = q.dateTime(QStringLiteral("FechaFinal")).date();
    return p;
}

bool giveModelPrices(const QSqlDatabase& db, const QString& barcode) {
    db::requireTransaction(db);
    db::Sql v(db, QStringLiteral("SELECT Referencia, CodigoMarca FROM INVENTARIO WHERE "
                                 "CodigoBarra = ?"));
    v.bind(barcode).exec();
    if (!v.next())
        return false;
    const auto prices = modelPricesOf(db, v.text(QStringLiteral("Referencia")),
                                      v.text(QStringLiteral("CodigoMarca")), barcode);
    if (!prices)
        return false;
    // A missing promotion date is written as 01/01/2000.
    auto day = [](const QDate& d) {
        return QVariant(QDateTime(d.isValid() ? d : QDate(2000, 1, 1), QTime(0, 0)));
    };
    db::Sql up(db, QStringLiteral("UPDATE INVENTARIO SET PrecioDetal = ?, PrecioMayor = ?, "
                                  "PrecioAfiliado = ?, Promocion = ?, PrecioPromocion = ?, "
                                  "FechaInicial = ?, FechaFinal = ? WHERE CodigoBarra = ?"));
    up.bind(prices->retail, 4)
        .bind(prices->wholesale, 4)
        .bind(prices->member, 4)
        .bind(prices->promotion ? 1 : 0)
        .bind(prices->promotionPrice, 4)
        .bind(day(prices->promotionStart))
        .bind(day(prices->promotionEnd))
        .bind(barcode)
        .exec();
    return up.rowsAffected() > 0;
}

} // namespace orvo::inventory::stock
