#include "inventory/articles/articles.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/schema/references.h"
#include "inventory/articles/article_rules.h"
#include "inventory/articles/article_store.h"
#include "shell/users/roles.h"

#include <QLocale>

namespace orvo::inventory {

namespace {

QString modelNameOf(const QString& variantName) {
    const int cut = variantName.lastIndexOf(QStringLiteral(" T:"));
    return cut >= 0 ? variantName.left(cut) : variantName;
}

QList<CodeName> codeNames(const QSqlDatabase& db, const QString& statement) {
    db::Sql q(db, statement);
    q.exec();
    QList<CodeName> out;
    while (q.next())
        out.append({q.value(0).toString(), q.value(1).toString()});
    return out;
}

} // namespace

std::optional<Article> findArticleByBarcode(const QSqlDatabase& db, const QString& barcode) {
    return store::articleByBarcode(db, barcode);
}

QList<Article> findArticlesByReference(const QSqlDatabase& db, const QString& reference) {
    return store::articlesByReference(db, reference);
}

int ModelList::indexOf(const QString& reference, const QString& brand) const {
    for (int i = 0; i < rows.size(); ++i)
        if (rows[i].reference == reference && rows[i].brand == brand)
            return i;
    return -1;
}

ModelList listModels(const QSqlDatabase& db, const QString& userCode) {
    ModelList list;
    list.withPrices = shell::users::maySeePrices(db, userCode);
    list.withCosts = shell::users::maySeeCosts(db, userCode);
    QString sql =
        QStringLiteral("SELECT I.Referencia, I.CodigoMarca, MIN(M.Nombre) AS NombreMarca, "
                       "MIN(I.Nombre) AS Nombre, COUNT(*) AS Variantes, "
                       "SUM(I.Existencia) AS Existencia");
    if (list.withPrices)
        sql += QStringLiteral(", MAX(I.PrecioDetal) AS PrecioDetal");
    if (list.withCosts)
        sql += QStringLiteral(", MAX(I.CostoPromedio) AS CostoPromedio");
    sql += QStringLiteral(" FROM INVENTARIO I LEFT JOIN MARCAS M ON M.Codigo = I.CodigoMarca "
                          "WHERE I.Status < 2 GROUP BY I.Referencia, I.CodigoMarca "
                          "ORDER BY I.Referencia, I.CodigoMarca");
    db::Sql q(db, sql);
    q.raw().setForwardOnly(true);
    q.exec();
    while (q.next()) {
        ModelRow r;
        r.reference = q.value(0).toString();
        r.brand = q.value(1).toString();
        r.brandName = q.value(2).toString();
        r.name = modelNameOf(q.value(3).toString());
        r.variants = q.value(4).toInt();
        r.stock = Decimal::fromVariant(q.value(5));
        int next = 6;
        if (list.withPrices)
            r.retailPrice = Decimal::fromVariant(q.value(next++));
        if (list.withCosts)
            r.averageCost = Decimal::fromVariant(q.value(next++));
        list.rows.append(std::move(r));
    }
    return list;
}

QList<Category> categories(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre FROM CATEGORIAS ORDER BY LENGTH(Codigo), "
                                 "Codigo"));
    q.exec();
    QList<Category> out;
    while (q.next()) {
        Category c{q.text("Codigo"), q.text("Nombre"), {}};
        for (const Category& p : out)
            if (c.code.startsWith(p.code) && p.code.size() < c.code.size() &&
                p.code.size() > c.parent.size())
                c.parent = p.code;
        out.append(c);
    }
    return out;
}

QList<CodeName> brands(const QSqlDatabase& db) {
    return codeNames(db, QStringLiteral("SELECT Codigo, Nombre FROM MARCAS WHERE Status = 1 AND "
                                        "Codigo <> '0' ORDER BY Nombre"));
}

QList<CodeName> manufacturers(const QSqlDatabase& db) {
    return codeNames(db, QStringLiteral("SELECT Codigo, Nombre FROM FABRICANTES WHERE Status = 1 "
                                        "ORDER BY Nombre"));
}

QList<CodeName> colours(const QSqlDatabase& db) {
    return codeNames(db, QStringLiteral("SELECT Codigo, Nombre FROM COLORES WHERE Codigo <> '0' "
                                        "ORDER BY Nombre"));
}

QList<CodeName> sizes(const QSqlDatabase& db) {
    return codeNames(db, QStringLiteral("SELECT Codigo, Talla FROM TALLAS ORDER BY Codigo"));
}

QList<TaxCode> taxCodes(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre, PorcentajeImpuesto FROM IMPUESTOS ORDER "
                                 "BY Codigo"));
    q.exec();
    QList<TaxCode> out;
    while (q.next())
        out.append({q.integer("Codigo"), q.text("Nombre"), q.decimal("PorcentajeImpuesto")});
    return out;
}

std::optional<LoadedModel> loadModel(const QSqlDatabase& db, const QString& reference,
                                     const QString& brand) {
    return store::loadModel(db, reference, brand);
}

void checkBarcodeCell(const QSqlDatabase& db, const ModelGrid& grid, int row, int column,
                      const QString& barcode, const QString& reference) {
    const QString code = barcode.trimmed();
    if (code.isEmpty())
        return;
    rules::checkBarcodeFormat(code);
    if (grid.find(code, row, column).first >= 0)
        throw UserError(QStringLiteral("El codigo ya existe en esta referencia...!"));
    db::Transaction tx(db);
    const bool elsewhere = store::barcodeInOtherReference(db, code, reference);
    tx.rollback(); // the test wrote nothing
    if (elsewhere)
        throw UserError(QStringLiteral("El codigo ya existe en otra referencia...!"));
}

void saveModel(const QSqlDatabase& db, const ArticleModel& model, const ModelGrid& grid, bool isNew,
               const ArticleWriter& writer) {
    rules::validateModel(model, grid, isNew, db::serverNow(db).date());
    db::Transaction tx(db);
    if (isNew && store::modelExists(db, model.reference, model.brand))
        throw UserError(QStringLiteral("La Referencia: ") + model.reference +
                        QStringLiteral(" Marca: ") + model.brand +
                        QStringLiteral(" ya esta registrada...!"));
    for (int r = 0; r < grid.rowCount(); ++r) {
        for (int c = 0; c < grid.columnCount(); ++c) {
            const QString barcode = grid.barcode(r, c);
            if (barcode.isEmpty())
                continue;
            // The cell check ran when it was typed; the save holds the lock, so check again.
            if (store::barcodeInOtherReference(db, barcode, model.reference))
                throw UserError(QStringLiteral("El codigo ya existe en otra referencia...!"));
            const GridColour& colour = grid.colours()[c];
            // A new barcode typed over a variant's is that variant's new barcode, changed as
            // frmCambiarCodigos changes it; a barcode the table has kept is not checked again.
            const auto saved = store::variantBarcodeAt(db, model.reference, model.brand,
                                                       grid.sizes()[r], colour.code);
            if (saved != barcode && !store::barcodeExists(db, barcode))
                rules::checkBarcodeFormat(barcode);
            if (saved && *saved != barcode)
                store::changeBarcode(db, *saved, barcode, model.reference, model.brand, writer);
            const QString name = rules::variantName(model.name, grid.sizes()[r], colour.name);
            store::Statement st = store::updateVariant(db, model, barcode, name);
            if (store::run(db, st) == 0) {
                st = store::insertVariant(db, model, barcode, grid.sizes()[r], colour.code, name);
                store::run(db, st);
            }
            store::logWrite(db, barcode, model.reference, model.brand, st, writer);
        }
    }
    tx.commit();
}

int deleteModel(const QSqlDatabase& db, const QString& reference, const QString& brand,
                const ArticleWriter& writer) {
    db::Transaction tx(db);
    // A variant already sold, bought or moved stays: the model is refused whole.
    db::Sql variants(db, QStringLiteral("SELECT CodigoBarra FROM INVENTARIO WHERE Referencia = ? "
                                        "AND CodigoMarca = ?"));
    variants.bind(reference).bind(brand).exec();
    QStringList barcodes;
    while (variants.next())
        barcodes << variants.text(QStringLiteral("CodigoBarra"));
    for (const QString& barcode : barcodes)
        if (!schema::usedBy(db, QStringLiteral("INVENTARIO"), barcode).isEmpty())
            return 0;
    const store::Statement st{
        QStringLiteral("DELETE FROM INVENTARIO WHERE Referencia = ? AND CodigoMarca = ?"),
        {reference, brand}};
    const int deleted = store::run(db, st);
    if (deleted > 0)
        store::logWrite(db, QString(), reference, brand, st, writer);
    tx.commit();
    return deleted;
}

void logArticleWrite(const QSqlDatabase& db, const QString& barcode, const QString& reference,
                     const QString& brand, const QString& statementText,
                     const ArticleWriter& writer) {
    store::logWrite(db, barcode, reference, brand, store::Statement{statementText, {}}, writer);
}

QString articleReport(const QSqlDatabase& db, const QString& reference, const QString& brand,
                      const QString& userCode) {
    const bool prices = shell::users::maySeePrices(db, userCode);
    const bool costs = shell::users::maySeeCosts(db, userCode);
    const QLocale locale;
    auto esc = [](const QString& s) { return s.toHtmlEscaped(); };
    auto amount = [&](const Decimal& d) { return d.toLocaleString(locale, 2); };
    QString html = QStringLiteral("<h2>Artículos</h2><p>Referencia: ") + esc(reference) +
                   QStringLiteral(" &nbsp; Marca: ") + esc(brand) +
                   QStringLiteral("</p><table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">"
                                  "<tr><th>Código</th><th>Descripción</th><th>Talla</th>"
                                  "<th>Color</th><th>Existencia</th>");
    if (prices)
        html += QStringLiteral("<th>Precio Detal</th><th>Precio Mayor</th>");
    if (costs)
        html += QStringLiteral("<th>Costo Promedio</th>");
    html += QStringLiteral("</tr>");
    for (const Article& a : store::modelVariants(db, reference, brand)) {
        html += QStringLiteral("<tr><td>") + esc(a.barcode) + QStringLiteral("</td><td>") +
                esc(a.name) + QStringLiteral("</td><td>") + esc(a.size) +
                QStringLiteral("</td><td>") + esc(a.colour) +
                QStringLiteral("</td><td align=\"right\">") + a.stock.toLocaleString(locale, 2) +
                QStringLiteral("</td>");
        if (prices)
            html += QStringLiteral("<td align=\"right\">") + amount(a.retailPrice) +
                    QStringLiteral("</td><td align=\"right\">") + amount(a.wholesalePrice) +
                    QStringLiteral("</td>");
        if (costs)
            html += QStringLiteral("<td align=\"right\">") + amount(a.averageCost) +
                    QStringLiteral("</td>");
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table>");
}

} // namespace orvo::inventory
