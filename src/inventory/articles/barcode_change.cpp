#include "inventory/articles/barcode_change.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "inventory/articles/article_store.h"

namespace orvo::inventory::barcodes {

namespace {

UserError exists(const QString& code) {
    return UserError(QStringLiteral(" El Código: ") + code + QStringLiteral(" ya existe...!"));
}

} // namespace

QList<VariantCode> variantsOf(const QSqlDatabase& db, const QString& brand,
                              const QString& reference) {
    db::Sql q(db, QStringLiteral("SELECT I.Talla, C.Nombre AS NombreColor, I.CodigoBarra, "
                                 "I.Nombre FROM INVENTARIO I LEFT JOIN COLORES C ON C.Codigo = "
                                 "I.CodigoColor WHERE I.CodigoMarca = ? AND I.Referencia = ? "
                                 "ORDER BY I.Talla, C.Nombre"));
    q.bind(brand).bind(reference.trimmed()).exec();
    QList<VariantCode> out;
    while (q.next())
        out.append(
            {q.text("Talla"), q.text("NombreColor"), q.text("CodigoBarra"), q.text("Nombre")});
    if (out.isEmpty())
        throw UserError(
            QStringLiteral("No existen codigos con esta Referencia con la marca seleccionada...!"));
    return out;
}

void checkNewBarcode(const QSqlDatabase& db, const QString& newBarcode) {
    const QString code = newBarcode.trimmed();
    if (code.isEmpty())
        return;
    if (db::exists(db, QStringLiteral("SELECT 1 FROM INVENTARIO WHERE CodigoBarra = ?"), {code}))
        throw exists(code);
}

int changeBarcodes(const QSqlDatabase& db, const QString& brand, const QString& reference,
                   const QList<BarcodeChange>& changes, const ArticleWriter& writer) {
    db::Transaction tx(db);
    int changed = 0;
    for (const BarcodeChange& c : changes) {
        const QString code = c.newBarcode.trimmed();
        if (code.isEmpty() || code == c.oldBarcode)
            continue;
        // An old barcode that is gone already changes nothing.
        if (store::changeBarcode(db, c.oldBarcode, code, reference.trimmed(), brand, writer))
            ++changed;
    }
    tx.commit();
    return changed;
}

} // namespace orvo::inventory::barcodes
