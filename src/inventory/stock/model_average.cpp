#include "inventory/stock/model_average.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/decimal/decimal.h"

#include <QMap>

namespace orvo::inventory::stock {

namespace {

// The models a document touched through a variant with stock; bound with the document's key.
QString touchedModels(const AveragedDocument& d) {
    const QString head = QStringLiteral("SELECT B.Referencia, B.CodigoMarca FROM INVENTARIO B ");
    switch (d.kind) {
    case AverageKind::SalesReturn:
        return head + QStringLiteral("INNER JOIN MOVDEVVENTAS M ON M.CodigoBarra = B.CodigoBarra "
                                     "INNER JOIN DEVVENTAS D ON D.NumeroDevolucion = "
                                     "M.NumeroDevolucion AND D.Serie = M.Serie WHERE "
                                     "M.NumeroDevolucion = ? AND D.Serie = ? AND B.Existencia > 0");
    case AverageKind::ReceivedTransfer:
        return head +
               QStringLiteral("INNER JOIN IMOVTRANSFERENCIAS M ON M.CodigoBarra = "
                              "B.CodigoBarra WHERE M.Numero = ? AND B.Existencia > 0") +
               (d.qualifier.isEmpty() ? QString() : QStringLiteral(" AND M.CodigoEnvia = ?"));
    case AverageKind::Purchase:
        return head + QStringLiteral("INNER JOIN MOVCOMPRAS M ON M.CodigoBarra = B.CodigoBarra "
                                     "WHERE M.Documento = ? AND M.Proveedor = ? AND "
                                     "B.Existencia > 0");
    }
    return {};
}

void bindKey(db::Sql& q, const AveragedDocument& d) {
    if (d.kind == AverageKind::Purchase)
        q.bind(d.document);
    else
        q.bind(d.document.toLongLong());
    if (!d.qualifier.isEmpty() || d.kind != AverageKind::ReceivedTransfer)
        q.bind(d.qualifier);
}

} // namespace

int recomputeModelAverage(const QSqlDatabase& db, const AveragedDocument& document) {
    db::requireTransaction(db);
    // The variants with stock of those models. Averaged here, exactly: a correlated UPDATE would
    // see its own earlier rows on SQLite and not on PostgreSQL, and SQLite sums in binary floating
    // point.
    db::Sql q(db, QStringLiteral("SELECT A.Referencia, A.CodigoMarca, A.CostoPromedio, "
                                 "A.Existencia FROM INVENTARIO A INNER JOIN (") +
                      touchedModels(document) +
                      QStringLiteral(" GROUP BY B.Referencia, B.CodigoMarca) T ON T.Referencia = "
                                     "A.Referencia AND T.CodigoMarca = A.CodigoMarca WHERE "
                                     "A.Existencia > 0"));
    bindKey(q, document);
    q.exec();
    struct Sums {
        QString reference;
        QString brand;
        Decimal value;
        Decimal stock;
    };
    QMap<QPair<QString, QString>, Sums> models;
    while (q.next()) {
        const QString reference = q.text(QStringLiteral("Referencia"));
        const QString brand = q.text(QStringLiteral("CodigoMarca"));
        Sums& s = models[{reference, brand}];
        s.reference = reference;
        s.brand = brand;
        const Decimal stock = q.decimal(QStringLiteral("Existencia"));
        s.value += q.decimal(QStringLiteral("CostoPromedio")) * stock;
        s.stock += stock;
    }
    // Both engines evaluate the right-hand sides on the old row: the last cost is the variant's
    // own average from before.
    db::Sql up(db, QStringLiteral("UPDATE INVENTARIO SET UltimoCosto = CostoPromedio, "
                                  "CostoPromedio = ? WHERE Referencia = ? AND CodigoMarca = ?"));
    for (const Sums& s : std::as_const(models))
        up.bind((s.value / s.stock).rounded(5), 5).bind(s.reference).bind(s.brand).exec();
    return int(models.size());
}

} // namespace orvo::inventory::stock
