#include "inventory/prices/price_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::prices::store {

using db::Sql;

namespace {

// Variant names are "<model> T:<size> <colour>".
QString modelNameOf(const QString& variantName) {
    const int cut = int(variantName.lastIndexOf(QStringLiteral(" T:")));
    return cut >= 0 ? variantName.left(cut) : variantName;
}

QDate dayOf(const Sql& q, const QString& column) {
    const QDate d = q.dateTime(column).date();
    return d.isValid() ? d : kNoPromotionDate;
}

PriceLine lineOf(const Sql& q) {
    PriceLine l;
    l.reference = q.text(QStringLiteral("Referencia"));
    l.brand = q.text(QStringLiteral("CodigoMarca"));
    l.name = modelNameOf(q.text(QStringLiteral("Nombre")));
    l.cost = q.decimal(QStringLiteral("Costo"));
    l.discount = q.decimal(QStringLiteral("Descuento"));
    l.retailSuggested = q.decimal(QStringLiteral("PrecioDetalSugerido"));
    l.retail = q.decimal(QStringLiteral("PrecioDetal"));
    l.wholesaleSuggested = q.decimal(QStringLiteral("PrecioMayorSugerido"));
    l.wholesale = q.decimal(QStringLiteral("PrecioMayor"));
    l.memberSuggested = q.decimal(QStringLiteral("PrecioAfiliadoSugerido"));
    l.member = q.decimal(QStringLiteral("PrecioAfiliado"));
    l.promotionPrice = q.decimal(QStringLiteral("PrecioPromocion"));
    l.promotion = q.integer(QStringLiteral("Promocion")) == 1;
    l.start = dayOf(q, QStringLiteral("FechaInicial"));
    l.end = dayOf(q, QStringLiteral("FechaFinal"));
    return l;
}

Written run(const QSqlDatabase& db, const QString& sql, const QVariantList& values) {
    Sql q(db, sql);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    return {sql, values, q.rowsAffected()};
}

} // namespace

void insertHeader(const QSqlDatabase& db, const PriceList& list) {
    db::requireTransaction(db);
    Sql(db, QStringLiteral("INSERT INTO LISTAPRECIO (Numero, Fecha, FactorDetal, FactorMayor, "
                           "FactorAfiliado, Observacion, Usuario, Status) VALUES (?, ?, ?, ?, "
                           "?, ?, ?, 0)"))
        .bind(list.number)
        .bind(list.date)
        .bind(list.retailFactor, 8)
        .bind(list.wholesaleFactor, 8)
        .bind(list.memberFactor, 8)
        .bind(list.note)
        .bind(list.user)
        .exec();
}

void updateHeader(const QSqlDatabase& db, const PriceList& list) {
    db::requireTransaction(db);
    Sql(db, QStringLiteral("UPDATE LISTAPRECIO SET Fecha = ?, FactorDetal = ?, FactorMayor = ?, "
                           "FactorAfiliado = ?, Observacion = ?, Usuario = ?, Status = 0 WHERE "
                           "Numero = ?"))
        .bind(list.date)
        .bind(list.retailFactor, 8)
        .bind(list.wholesaleFactor, 8)
        .bind(list.memberFactor, 8)
        .bind(list.note)
        .bind(list.user)
        .bind(list.number)
        .exec();
}

void deleteLines(const QSqlDatabase& db, int number) {
    db::requireTransaction(db);
    Sql(db, QStringLiteral("DELETE FROM MOVLISTAPRECIO WHERE Numero = ?")).bind(number).exec();
}

void insertLine(const QSqlDatabase& db, int number, const PriceLine& l) {
    db::requireTransaction(db);
    Sql(db, QStringLiteral("INSERT INTO MOVLISTAPRECIO (Numero, Referencia, CodigoMarca, Costo, "
                           "Descuento, PrecioDetalSugerido, PrecioDetal, PrecioMayorSugerido, "
                           "PrecioMayor, PrecioAfiliadoSugerido, PrecioAfiliado, PrecioPromocion, "
                           "Promocion, FechaInicial, FechaFinal) VALUES (?, ?, ?, ?, ?, ?, ?, ?, "
                           "?, ?, ?, ?, ?, ?, ?)"))
        .bind(number)
        .bind(l.reference)
        .bind(l.brand)
        .bind(l.cost, 5)
        .bind(l.discount, 4)
        .bind(l.retailSuggested, 4)
        .bind(l.retail, 4)
        .bind(l.wholesaleSuggested, 4)
        .bind(l.wholesale, 4)
        .bind(l.memberSuggested, 4)
        .bind(l.member, 4)
        .bind(l.promotionPrice, 4)
        .bind(l.promotion ? 1 : 0)
        .bind(l.start.isValid() ? l.start : kNoPromotionDate)
        .bind(l.end.isValid() ? l.end : kNoPromotionDate)
        .exec();
}

void setApproved(const QSqlDatabase& db, int number) {
    db::requireTransaction(db);
    Sql(db, QStringLiteral("UPDATE LISTAPRECIO SET Status = 1 WHERE Numero = ?"))
        .bind(number)
        .exec();
}

Written applyToInventory(const QSqlDatabase& db, int number) {
    db::requireTransaction(db);
    // Every size and colour of a listed model takes the model's line.
    return run(db,
               QStringLiteral("UPDATE INVENTARIO SET PrecioDetal = M.PrecioDetal, PrecioMayor = "
                              "M.PrecioMayor, PrecioAfiliado = M.PrecioAfiliado, PrecioPromocion "
                              "= M.PrecioPromocion, Promocion = M.Promocion, FechaInicial = "
                              "M.FechaInicial, FechaFinal = M.FechaFinal, UltimaActualizacion = ") +
                   db::nowExpression(db) +
                   QStringLiteral(" FROM MOVLISTAPRECIO M WHERE M.Numero = ? AND M.Referencia = "
                                  "INVENTARIO.Referencia AND M.CodigoMarca = "
                                  "INVENTARIO.CodigoMarca"),
               {number});
}

std::optional<int> listStatus(const QSqlDatabase& db, int number) {
    const QVariant v =
        db::scalar(db, QStringLiteral("SELECT Status FROM LISTAPRECIO WHERE Numero = ?"), {number});
    if (!v.isValid())
        return std::nullopt;
    return v.toInt();
}

bool listWithNoteExists(const QSqlDatabase& db, const QString& prefix) {
    QString pattern = prefix;
    pattern.replace(QLatin1Char('%'), QStringLiteral("_"));
    return db::exists(db, QStringLiteral("SELECT Numero FROM LISTAPRECIO WHERE Observacion LIKE ?"),
                      {pattern + QLatin1Char('%')});
}

std::optional<PriceList> loadList(const QSqlDatabase& db, int number) {
    Sql q(db, QStringLiteral("SELECT Numero, Fecha, FactorDetal, FactorMayor, FactorAfiliado, "
                             "Observacion, Usuario, Status FROM LISTAPRECIO WHERE Numero = ?"));
    q.bind(number).exec();
    if (!q.next())
        return std::nullopt;
    PriceList list;
    list.number = q.integer(QStringLiteral("Numero"));
    list.date = q.dateTime(QStringLiteral("Fecha"));
    list.retailFactor = q.decimal(QStringLiteral("FactorDetal"));
    list.wholesaleFactor = q.decimal(QStringLiteral("FactorMayor"));
    list.memberFactor = q.decimal(QStringLiteral("FactorAfiliado"));
    list.note = q.text(QStringLiteral("Observacion"));
    list.user = q.text(QStringLiteral("Usuario"));
    list.status = q.integer(QStringLiteral("Status"));
    list.lines = lines(db, number);
    return list;
}

QList<PriceLine> lines(const QSqlDatabase& db, int number) {
    Sql q(db, QStringLiteral("SELECT M.*, (SELECT MIN(I.Nombre) FROM INVENTARIO I WHERE "
                             "I.Referencia = M.Referencia AND I.CodigoMarca = M.CodigoMarca) AS "
                             "Nombre FROM MOVLISTAPRECIO M WHERE M.Numero = ? ORDER BY "
                             "M.Referencia, M.CodigoMarca"));
    q.bind(number).exec();
    QList<PriceLine> out;
    while (q.next())
        out.append(lineOf(q));
    return out;
}

QList<PriceListSummary> lists(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT L.Numero, L.Fecha, L.Observacion, L.Usuario, L.Status, "
                             "(SELECT COUNT(*) FROM MOVLISTAPRECIO M WHERE M.Numero = L.Numero) "
                             "AS Lineas FROM LISTAPRECIO L ORDER BY L.Numero DESC"));
    q.exec();
    QList<PriceListSummary> out;
    while (q.next())
        out.append({q.integer(QStringLiteral("Numero")), q.dateTime(QStringLiteral("Fecha")),
                    q.text(QStringLiteral("Observacion")), q.text(QStringLiteral("Usuario")),
                    q.integer(QStringLiteral("Status")), q.integer(QStringLiteral("Lineas"))});
    return out;
}

QString listsCatalogSql() {
    return QStringLiteral("SELECT L.Numero, L.Fecha, L.Observacion, CASE WHEN L.Status = 1 THEN "
                          "'APROBADA' ELSE 'ABIERTA' END AS Estatus, L.Usuario FROM LISTAPRECIO L "
                          "ORDER BY L.Numero DESC");
}

QString modelsCatalogSql() {
    return QStringLiteral("SELECT I.Referencia, I.CodigoMarca AS Marca, MIN(I.Nombre) AS Nombre, "
                          "COUNT(*) AS Variantes FROM INVENTARIO I WHERE I.Status < 2 GROUP BY "
                          "I.Referencia, I.CodigoMarca ORDER BY I.Referencia, I.CodigoMarca");
}

namespace {

const QString kModelSelect = QStringLiteral(
    "SELECT I.Referencia, I.CodigoMarca, MIN(MA.Nombre) AS NombreMarca, MIN(I.Nombre) AS Nombre, "
    "MAX(I.CostoPromedio) AS Costo, MAX(I.PrecioDetal) AS PrecioDetal, MAX(I.PrecioMayor) AS "
    "PrecioMayor, MAX(I.PrecioAfiliado) AS PrecioAfiliado, MAX(I.PrecioPromocion) AS "
    "PrecioPromocion, MAX(I.Promocion) AS Promocion, MAX(I.FechaInicial) AS FechaInicial, "
    "MAX(I.FechaFinal) AS FechaFinal, COUNT(*) AS Variantes FROM INVENTARIO I LEFT JOIN MARCAS MA "
    "ON MA.Codigo = I.CodigoMarca WHERE I.Status < 2");

ModelPrices modelOf(const Sql& q) {
    ModelPrices m;
    m.reference = q.text(QStringLiteral("Referencia"));
    m.brand = q.text(QStringLiteral("CodigoMarca"));
    m.brandName = q.text(QStringLiteral("NombreMarca"));
    m.name = modelNameOf(q.text(QStringLiteral("Nombre")));
    m.cost = q.decimal(QStringLiteral("Costo"));
    m.retail = q.decimal(QStringLiteral("PrecioDetal"));
    m.wholesale = q.decimal(QStringLiteral("PrecioMayor"));
    m.member = q.decimal(QStringLiteral("PrecioAfiliado"));
    m.promotionPrice = q.decimal(QStringLiteral("PrecioPromocion"));
    m.promotion = q.integer(QStringLiteral("Promocion")) == 1;
    m.start = dayOf(q, QStringLiteral("FechaInicial"));
    m.end = dayOf(q, QStringLiteral("FechaFinal"));
    m.variants = q.integer(QStringLiteral("Variantes"));
    return m;
}

const QString kModelGroup =
    QStringLiteral(" GROUP BY I.Referencia, I.CodigoMarca ORDER BY I.Referencia, I.CodigoMarca");

} // namespace

std::optional<ModelPrices> modelPrices(const QSqlDatabase& db, const ModelKey& key) {
    Sql q(db, kModelSelect + QStringLiteral(" AND I.Referencia = ? AND I.CodigoMarca = ?") +
                  kModelGroup);
    q.bind(key.reference).bind(key.brand).exec();
    if (!q.next())
        return std::nullopt;
    return modelOf(q);
}

QList<ModelPrices> models(const QSqlDatabase& db, const ModelFilter& filter) {
    QString where;
    QVariantList values;
    if (!filter.category.isEmpty()) {
        where += QStringLiteral(" AND I.Categoria LIKE ?");
        values << filter.category + QLatin1Char('%');
    }
    if (!filter.brand.isEmpty()) {
        where += QStringLiteral(" AND I.CodigoMarca = ?");
        values << filter.brand;
    }
    if (!filter.reference.trimmed().isEmpty()) {
        where += QStringLiteral(" AND I.Referencia LIKE ?");
        values << filter.reference.trimmed() + QLatin1Char('%');
    }
    Sql q(db, kModelSelect + where + kModelGroup);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    QList<ModelPrices> out;
    while (q.next())
        out.append(modelOf(q));
    return out;
}

Written repriceFromCost(const QSqlDatabase& db, const Margins& m) {
    db::requireTransaction(db);
    // An article without a cost keeps its prices: a price of zero cannot be sold.
    return run(
        db,
        QStringLiteral("UPDATE INVENTARIO SET PrecioDetal = ROUND(CostoPromedio + "
                       "(CostoPromedio * ? / 100.0), 4), PrecioMayor = ROUND(CostoPromedio + "
                       "(CostoPromedio * ? / 100.0), 4), PrecioAfiliado = "
                       "ROUND(CostoPromedio + (CostoPromedio * ? / 100.0), 4), "
                       "UltimaActualizacion = ") +
            db::nowExpression(db) + QStringLiteral(" WHERE CostoPromedio > 0"),
        {m.retail->toVariant(4), m.wholesale->toVariant(4), m.member->toVariant(4)});
}

} // namespace orvo::inventory::prices::store
