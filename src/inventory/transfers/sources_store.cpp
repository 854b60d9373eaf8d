#include "inventory/transfers/sources_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::inventory::transfers::store {

QString adjustmentsCatalogSql() {
    return QStringLiteral("SELECT Numero, Fecha, TotalValor, Observacion FROM AJUSTES WHERE "
                          "Status <> 0 ORDER BY Numero DESC");
}

QString returnsCatalogSql() {
    return QStringLiteral("SELECT Numero, CodigoRecibe AS Sucursal, Fecha, TotalValor, "
                          "Observacion FROM DEVTRANSFERENCIAS WHERE Status <> 0 ORDER BY Numero "
                          "DESC");
}

QString draftsCatalogSql() {
    return QStringLiteral("SELECT Numero, Fecha, Observacion, Usuario FROM DEVBORRADOR ORDER BY "
                          "Numero DESC");
}

QList<DocumentLine> documentLines(const QSqlDatabase& db, const QString& table,
                                  const QString& quantityColumn, const QString& boxColumn,
                                  long long number) {
    db::Sql q(
        db, QStringLiteral("SELECT CodigoBarra, %1 AS Cantidad, %2 AS Caja FROM %3 WHERE "
                           "Numero = ? ORDER BY Item")
                .arg(quantityColumn, boxColumn.isEmpty() ? QStringLiteral("1") : boxColumn, table));
    q.bind(number).exec();
    QList<DocumentLine> out;
    while (q.next()) {
        DocumentLine l;
        l.barcode = q.text(QStringLiteral("CodigoBarra")).trimmed();
        l.quantity = q.decimal(QStringLiteral("Cantidad"));
        l.box = std::max(1LL, q.bigint(QStringLiteral("Caja")));
        if (!l.barcode.isEmpty() && l.quantity > Decimal())
            out.append(l);
    }
    return out;
}

QList<OrderRow> ordersSince(const QSqlDatabase& db, const QDateTime& since) {
    db::Sql q(db, QStringLiteral("SELECT Numero, Fecha, Observacion FROM PEDIDOS WHERE Status <> 0 "
                                 "AND Fecha >= ? ORDER BY Numero DESC"));
    q.bind(since).exec();
    QList<OrderRow> out;
    while (q.next())
        out.append({q.bigint(QStringLiteral("Numero")), q.dateTime(QStringLiteral("Fecha")),
                    q.text(QStringLiteral("Observacion"))});
    return out;
}

QSet<QString> originsOfTransfersTo(const QSqlDatabase& db, const QString& branch) {
    db::Sql q(db, QStringLiteral("SELECT DocumentoOrigen FROM TRANSFERENCIAS WHERE CodigoRecibe = "
                                 "? AND DocumentoOrigen IS NOT NULL"));
    q.bind(branch).exec();
    QSet<QString> out;
    while (q.next())
        out.insert(q.text(QStringLiteral("DocumentoOrigen")).trimmed());
    return out;
}

bool automaticExists(const QSqlDatabase& db, const QString& supplier, const QString& document,
                     long long box) {
    return db::exists(db,
                      QStringLiteral("SELECT 1 FROM TRANSFERENCIASAUTOMATICA WHERE Proveedor = ? "
                                     "AND NumeroDocumento = ? AND NumeroCajaDocumento = ? AND "
                                     "TipoDocumentoOrigen = 'TR'"),
                      {supplier, document, box});
}

void recordAutomatic(const QSqlDatabase& db, const AutomaticTransfer& a) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO TRANSFERENCIASAUTOMATICA (Proveedor, NumeroDocumento, "
                               "NumeroCajaDocumento, Sucursal, NumeroTransferencia, "
                               "NumeroCajaTransferencia, Usuario, FechaRegistro, "
                               "TipoDocumentoOrigen) VALUES (?, ?, ?, ?, ?, ?, ?, ?, 'TR')"))
        .bind(a.supplier)
        .bind(a.document)
        .bind(a.box)
        .bind(a.branch)
        .bind(a.transfer)
        .bind(a.transferBox)
        .bind(a.user)
        .bind(a.when)
        .exec();
}

ArticleValues articleValues(const QSqlDatabase& db, const QString& barcode) {
    db::Sql q(db, QStringLiteral("SELECT CostoPromedio, PrecioDetal, PrecioMayor FROM INVENTARIO "
                                 "WHERE CodigoBarra = ?"));
    q.bind(barcode).exec();
    if (!q.next())
        return {};
    const Decimal zero;
    return {true, q.decimal(QStringLiteral("CostoPromedio")) > zero &&
                      q.decimal(QStringLiteral("PrecioDetal")) > zero &&
                      q.decimal(QStringLiteral("PrecioMayor")) > zero};
}

} // namespace orvo::inventory::transfers::store
