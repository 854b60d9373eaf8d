#include "inventory/articles/article_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/articles/article_rules.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkInterface>
#include <QSysInfo>

namespace orvo::inventory {

ArticleWriter ArticleWriter::here(const QString& userCode, const QString& screen) {
    ArticleWriter w;
    w.userCode = userCode;
    w.screen = screen;
    w.workstation = QSysInfo::machineHostName();
    for (const QHostAddress& a : QNetworkInterface::allAddresses()) {
        if (a.protocol() == QAbstractSocket::IPv4Protocol && !a.isLoopback()) {
            w.address = a.toString();
            break;
        }
    }
    return w;
}

namespace store {

namespace {

// Column scales: prices NUMERIC(18,4) (a before-tax price keeps the four decimals that bring
// back the tax-included price typed), costs (18,5), quantities (18,3).
QVariant price(const Decimal& d) {
    return QVariant::fromValue(d.rounded(4));
}
QVariant costOf(const Decimal& d) {
    return QVariant::fromValue(d.rounded(5));
}
QVariant quantityOf(const Decimal& d) {
    return QVariant::fromValue(d.rounded(3));
}
QVariant day(const QDate& d) {
    return QVariant(QDateTime(d, QTime(0, 0)));
}

const QString kArticleColumns = QStringLiteral(
    "I.CodigoBarra, I.Nombre, I.Referencia, I.CodigoMarca, I.Talla, I.CodigoColor, I.Categoria, "
    "I.Fabricante, I.TipoImpuesto, IM.PorcentajeImpuesto, I.PuntoReorden, I.Nota, I.PrecioDetal, "
    "I.PrecioMayor, I.PrecioAfiliado, I.Promocion, I.PrecioPromocion, I.FechaInicial, "
    "I.FechaFinal, I.CostoInicial, I.CostoPromedio, I.UltimoCosto, I.CostoDolar, I.Existencia, "
    "I.Tipo, I.Status, I.Serializado, I.Fraccionable");

Article articleFrom(const db::Sql& q) {
    Article a;
    a.barcode = q.text("CodigoBarra");
    a.name = q.text("Nombre");
    a.reference = q.text("Referencia");
    a.brand = q.text("CodigoMarca");
    a.size = q.text("Talla");
    a.colour = q.text("CodigoColor");
    a.category = q.text("Categoria");
    a.taxCode = q.integer("TipoImpuesto");
    a.taxRate = q.decimal("PorcentajeImpuesto");
    a.retailPrice = q.decimal("PrecioDetal");
    a.wholesalePrice = q.decimal("PrecioMayor");
    a.memberPrice = q.decimal("PrecioAfiliado");
    a.promotion = q.integer("Promocion") == 1;
    a.promotionPrice = q.decimal("PrecioPromocion");
    a.promotionStart = q.dateTime("FechaInicial").date();
    a.promotionEnd = q.dateTime("FechaFinal").date();
    a.averageCost = q.decimal("CostoPromedio");
    a.lastCost = q.decimal("UltimoCosto");
    a.stock = q.decimal("Existencia");
    a.type = q.integer("Tipo");
    a.status = q.integer("Status");
    a.serialized = q.integer("Serializado") == 1;
    return a;
}

// A missing promotion date shows as 01/01/2000.
QDate promotionDay(const QDateTime& stored) {
    return stored.isValid() ? stored.date() : QDate(2000, 1, 1);
}

} // namespace

int run(const QSqlDatabase& db, const Statement& statement) {
    db::Sql q(db, statement.sql);
    for (const QVariant& v : statement.values) {
        if (v.metaType() == QMetaType::fromType<Decimal>())
            q.bind(QVariant(v.value<Decimal>().toString()));
        else
            q.bind(v);
    }
    q.exec();
    return q.rowsAffected();
}

namespace {
// Reorder point, note, prices, promotion, costs, kind, status and serial flag: the same values,
// in the same order, in the update and the insert of a variant.
QVariantList modelFigures(const ArticleModel& m) {
    return {quantityOf(m.reorderPoint),
            m.note,
            price(m.retailPrice),
            price(m.wholesalePrice),
            price(m.memberPrice),
            m.promotion ? 1 : 0,
            price(m.promotionPrice),
            day(m.promotionStart),
            day(m.promotionEnd),
            costOf(m.initialCost),
            costOf(m.averageCost),
            costOf(m.lastCost),
            costOf(m.dollarCost),
            m.type,
            m.status,
            m.serialized ? 1 : 0,
            m.fractional ? 1 : 0};
}
} // namespace

Statement updateVariant(const QSqlDatabase& db, const ArticleModel& m, const QString& barcode,
                        const QString& variantName) {
    const QString now = db::nowExpression(db);
    return {
        QStringLiteral("UPDATE INVENTARIO SET CodigoMarca = ?, Categoria = ?, Fabricante = ?, "
                       "TipoImpuesto = ?, Nombre = ?, UltimaActualizacion = ") +
            now +
            QStringLiteral(", PuntoReorden = ?, Nota = ?, PrecioDetal = ?, PrecioMayor = ?, "
                           "PrecioAfiliado = ?, Promocion = ?, PrecioPromocion = ?, "
                           "FechaInicial = ?, FechaFinal = ?, CostoInicial = ?, "
                           "CostoPromedio = ?, UltimoCosto = ?, CostoDolar = ?, Tipo = ?, "
                           "Status = ?, Serializado = ?, Fraccionable = ? WHERE CodigoBarra = ?"),
        QVariantList{m.brand, m.category, m.manufacturer, m.taxCode, variantName} +
            modelFigures(m) + QVariantList{barcode}};
}

Statement insertVariant(const QSqlDatabase& db, const ArticleModel& m, const QString& barcode,
                        const QString& size, const QString& colour, const QString& variantName) {
    const QString now = db::nowExpression(db);
    return {QStringLiteral("INSERT INTO INVENTARIO(CodigoBarra, Nombre, Referencia, CodigoMarca, "
                           "Talla, CodigoColor, Categoria, Fabricante, TipoImpuesto, "
                           "UltimaActualizacion, FechaPrimerMovimiento, PuntoReorden, Nota, "
                           "PrecioDetal, PrecioMayor, PrecioAfiliado, Promocion, PrecioPromocion, "
                           "FechaInicial, FechaFinal, CostoInicial, CostoPromedio, UltimoCosto, "
                           "CostoDolar, ExistenciaInicial, Existencia, Tipo, Status, Serializado, "
                           "Fraccionable, CodigoBarraAnt) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ") +
                now + QStringLiteral(", ") + now +
                QStringLiteral(", ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0, ?, ?, ?, ?, ?)"),
            QVariantList{barcode, variantName, m.reference, m.brand, size, colour, m.category,
                         m.manufacturer, m.taxCode} +
                modelFigures(m) + QVariantList{barcode}};
}

void logWrite(const QSqlDatabase& db, const QString& barcode, const QString& reference,
              const QString& brand, const Statement& statement, const ArticleWriter& writer) {
    db::requireTransaction(db);
    db::Sql q(db, QStringLiteral("INSERT INTO LOG_ARTICULOS(CodigoBarra, Referencia, CodMarca, "
                                 "SQL, Fecha, Equipo, IP, Usuario, Formulario) VALUES "
                                 "(?, ?, ?, ?, ") +
                      db::nowExpression(db) + QStringLiteral(", ?, ?, ?, ?)"));
    q.bind(barcode)
        .bind(reference)
        .bind(brand)
        .bind(rules::describeStatement(statement.sql, statement.values))
        .bind(writer.workstation)
        .bind(writer.address)
        .bind(writer.userCode)
        .bind(writer.screen)
        .exec();
}

bool modelExists(const QSqlDatabase& db, const QString& reference, const QString& brand) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE Referencia = ? "
                                      "AND CodigoMarca = ?"),
                       {reference, brand}) > 0;
}

bool barcodeInOtherReference(const QSqlDatabase& db, const QString& barcode,
                             const QString& reference) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra = ? "
                                      "AND Referencia <> ?"),
                       {barcode, reference}) > 0;
}

bool barcodeExists(const QSqlDatabase& db, const QString& barcode) {
    db::requireTransaction(db);
    return db::execute(
               db, QStringLiteral("UPDATE INVENTARIO SET Status = Status WHERE CodigoBarra = ?"),
               {barcode}) > 0;
}

std::optional<QString> variantBarcodeAt(const QSqlDatabase& db, const QString& reference,
                                        const QString& brand, const QString& size,
                                        const QString& colour) {
    db::Sql q(db, QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE Referencia = ? AND "
                                 "CodigoMarca = ? AND Talla = ? AND CodigoColor = ?"));
    q.bind(reference).bind(brand).bind(size).bind(colour).exec();
    if (!q.next())
        return std::nullopt;
    return q.text("CodigoBarra").trimmed();
}

bool changeBarcode(const QSqlDatabase& db, const QString& oldBarcode, const QString& newBarcode,
                   const QString& reference, const QString& brand, const ArticleWriter& writer) {
    if (barcodeExists(db, newBarcode))
        throw UserError(QStringLiteral(" El Código: ") + newBarcode +
                        QStringLiteral(" ya existe...!"));
    const Statement st{
        QStringLiteral("UPDATE INVENTARIO SET CodigoBarra = ? WHERE CodigoBarra = ?"),
        {newBarcode, oldBarcode}};
    if (run(db, st) == 0)
        return false;
    logWrite(db, newBarcode, reference, brand, st, writer);
    return true;
}

std::optional<LoadedModel> loadModel(const QSqlDatabase& db, const QString& reference,
                                     const QString& brand) {
    db::Sql q(db, QStringLiteral("SELECT ") + kArticleColumns +
                      QStringLiteral(" FROM INVENTARIO I LEFT JOIN "
                                     "IMPUESTOS IM ON IM.Codigo = I.TipoImpuesto WHERE "
                                     "I.Referencia = ? AND I.CodigoMarca = ? ORDER BY I.Talla, "
                                     "I.CodigoColor"));
    q.bind(reference).bind(brand).exec();
    if (!q.next())
        return std::nullopt;
    LoadedModel lm;
    ArticleModel& m = lm.model;
    m.reference = q.text("Referencia");
    m.brand = q.text("CodigoMarca");
    // The model name is what precedes the size in the variant name.
    m.name = q.text("Nombre");
    const int cut = m.name.lastIndexOf(QStringLiteral(" T:") + q.text("Talla") + QLatin1Char(' '));
    if (cut >= 0)
        m.name = m.name.left(cut);
    m.category = q.text("Categoria");
    m.manufacturer = q.text("Fabricante");
    m.taxCode = q.integer("TipoImpuesto");
    m.taxRate = q.decimal("PorcentajeImpuesto");
    m.reorderPoint = q.decimal("PuntoReorden");
    m.note = q.text("Nota");
    m.retailPrice = q.decimal("PrecioDetal");
    m.wholesalePrice = q.decimal("PrecioMayor");
    m.memberPrice = q.decimal("PrecioAfiliado");
    m.promotion = q.integer("Promocion") == 1;
    m.promotionPrice = q.decimal("PrecioPromocion");
    m.promotionStart = promotionDay(q.dateTime("FechaInicial"));
    m.promotionEnd = promotionDay(q.dateTime("FechaFinal"));
    m.initialCost = q.decimal("CostoInicial");
    m.averageCost = q.decimal("CostoPromedio");
    m.lastCost = q.decimal("UltimoCosto");
    m.dollarCost = q.decimal("CostoDolar");
    m.type = q.integer("Tipo");
    m.status = q.integer("Status");
    m.serialized = q.integer("Serializado") == 1;
    m.fractional = q.integer("Fraccionable") == 1;

    db::Sql g(db, QStringLiteral("SELECT I.Talla, I.CodigoColor, C.Nombre AS NombreColor, "
                                 "I.CodigoBarra FROM INVENTARIO I LEFT JOIN COLORES C ON "
                                 "C.Codigo = I.CodigoColor WHERE I.Referencia = ? AND "
                                 "I.CodigoMarca = ? ORDER BY I.Talla, C.Nombre"));
    g.bind(reference).bind(brand).exec();
    struct Cell {
        QString size, colour, colourName, barcode;
    };
    QList<Cell> cells;
    QList<GridColour> colours;
    while (g.next()) {
        Cell c{g.text("Talla"), g.text("CodigoColor"), g.text("NombreColor"),
               g.text("CodigoBarra")};
        lm.grid.addSize(c.size);
        bool known = false;
        for (const auto& k : colours)
            known = known || k.code == c.colour;
        if (!known)
            colours.append({c.colour, c.colourName});
        cells.append(c);
    }
    // Colours across in name order, as the sizes come down in code order.
    std::stable_sort(colours.begin(), colours.end(),
                     [](const GridColour& a, const GridColour& b) { return a.name < b.name; });
    for (const auto& c : colours)
        lm.grid.addColour(c);
    for (const auto& c : cells)
        lm.grid.setBarcode(lm.grid.rowOf(c.size), lm.grid.columnOf(c.colour), c.barcode);
    return lm;
}

std::optional<Article> articleByBarcode(const QSqlDatabase& db, const QString& barcode) {
    db::Sql q(db, QStringLiteral("SELECT ") + kArticleColumns +
                      QStringLiteral(" FROM INVENTARIO I LEFT JOIN IMPUESTOS IM ON IM.Codigo = "
                                     "I.TipoImpuesto WHERE I.CodigoBarra = ?"));
    q.bind(barcode.trimmed()).exec();
    if (!q.next())
        return std::nullopt;
    return articleFrom(q);
}

QList<Article> articlesByReference(const QSqlDatabase& db, const QString& reference) {
    db::Sql q(db, QStringLiteral("SELECT ") + kArticleColumns +
                      QStringLiteral(" FROM INVENTARIO I LEFT JOIN IMPUESTOS IM ON IM.Codigo = "
                                     "I.TipoImpuesto WHERE I.Referencia = ? AND I.Status < 2 "
                                     "ORDER BY I.CodigoMarca, I.Talla, I.CodigoColor"));
    q.bind(reference.trimmed()).exec();
    QList<Article> out;
    while (q.next())
        out.append(articleFrom(q));
    return out;
}

QList<Article> modelVariants(const QSqlDatabase& db, const QString& reference,
                             const QString& brand) {
    db::Sql q(db, QStringLiteral("SELECT ") + kArticleColumns +
                      QStringLiteral(" FROM INVENTARIO I LEFT JOIN IMPUESTOS IM ON IM.Codigo = "
                                     "I.TipoImpuesto LEFT JOIN COLORES C ON C.Codigo = "
                                     "I.CodigoColor WHERE I.Referencia = ? AND I.CodigoMarca = ? "
                                     "ORDER BY I.Talla, C.Nombre"));
    q.bind(reference).bind(brand).exec();
    QList<Article> out;
    while (q.next())
        out.append(articleFrom(q));
    return out;
}

} // namespace store

} // namespace orvo::inventory
