#include "inventory/dispatch/conversion_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/numbering/numbering.h"

namespace orvo::inventory::dispatch::store {

using purchases::onKind;

bool markConverted(const QSqlDatabase& db, const purchases::BoxKind& kind, long long number) {
    db::requireTransaction(db);
    return db::execute(db,
                       onKind(kind, QStringLiteral("UPDATE RECEPCION SET Status = 2 WHERE Numero "
                                                   "= ? AND Status = 1")),
                       {number}) > 0;
}

QString branchOf(const QSqlDatabase& db, const purchases::BoxKind& kind, long long number) {
    return db::scalar(db,
                      onKind(kind, QStringLiteral("SELECT Sucursal FROM RECEPCION WHERE Numero "
                                                  "= ?")),
                      {number})
        .toString();
}

QList<SummedLine> summedLines(const QSqlDatabase& db, const purchases::BoxKind& kind,
                              long long number) {
    db::Sql q(db,
              onKind(kind, QStringLiteral(
                               "SELECT M.CodigoBarra, SUM(M.Cantidad) AS "
                               "Cantidad, MAX(I.CostoPromedio) AS Costo, MAX(I.Nombre) AS Nombre, "
                               "MIN(M.NumeroCaja * 100000 + M.Item) AS Orden FROM "
                               "MOVRECEPCION M INNER JOIN INVENTARIO I ON "
                               "I.CodigoBarra = M.CodigoBarra WHERE M.Numero = ? "
                               "GROUP BY M.CodigoBarra ORDER BY Orden")));
    q.bind(number).exec();
    QList<SummedLine> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")),
                    q.decimal(QStringLiteral("Cantidad")).rounded(3),
                    q.decimal(QStringLiteral("Costo")).rounded(5),
                    q.text(QStringLiteral("Nombre"))});
    return out;
}

QList<BoxLine> boxLines(const QSqlDatabase& db, const purchases::BoxKind& kind, long long number) {
    db::Sql q(db, onKind(kind, QStringLiteral("SELECT CodigoBarra, NumeroCaja, SUM(Cantidad) AS "
                                              "Cantidad, MIN(Item) AS Orden FROM MOVRECEPCION "
                                              "WHERE Numero = ? GROUP BY CodigoBarra, NumeroCaja "
                                              "ORDER BY NumeroCaja, Orden")));
    q.bind(number).exec();
    QList<BoxLine> out;
    while (q.next())
        out.append({q.text(QStringLiteral("CodigoBarra")),
                    q.decimal(QStringLiteral("Cantidad")).rounded(3),
                    q.integer(QStringLiteral("NumeroCaja"))});
    return out;
}

bool holdPurchase(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    db::requireTransaction(db);
    return db::execute(db,
                       QStringLiteral("UPDATE COMPRAS SET Status = Status WHERE Documento = ? AND "
                                      "Proveedor = ? AND Status = 1"),
                       {document, supplier}) > 0;
}

bool purchaseLogged(const QSqlDatabase& db, const QString& document, const QString& supplier) {
    return db::exists(db,
                      QStringLiteral("SELECT 1 FROM BITACORAMOVIMIENTO WHERE TipodocumentoOrigen "
                                     "= 'CO' AND DocumentoOrigen = ? AND Origen = ?"),
                      {document, supplier});
}

void insertAdjustment(const QSqlDatabase& db, const AdjustmentHeader& h) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO AJUSTES (Numero, Fecha, TipoAjuste, Signo, "
                               "TotalValor, Observacion, Usuario, InterContable, Status) VALUES "
                               "(?, ?, ?, ?, ?, ?, ?, 0, 1)"))
        .bind(h.number)
        .bind(h.date)
        .bind(h.type)
        .bind(h.sign)
        .bind(h.total, 2)
        .bind(h.note)
        .bind(h.user)
        .exec();
}

void insertAdjustmentLine(const QSqlDatabase& db, long long number, int item,
                          const SummedLine& line) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO MOVAJUSTES (Numero, Item, CodigoBarra, Cantidad, "
                               "Costo) VALUES (?, ?, ?, ?, ?)"))
        .bind(number)
        .bind(item)
        .bind(line.barcode)
        .bind(line.quantity, 3)
        .bind(line.cost, 5)
        .exec();
}

void moveStock(const QSqlDatabase& db, const QString& barcode, const Decimal& delta) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE INVENTARIO SET Existencia = ROUND(COALESCE(Existencia, 0) "
                               "+ ?, 3) WHERE CodigoBarra = ?"),
                {delta.toVariant(3), barcode});
}

void logConversion(const QSqlDatabase& db, const ConversionLog& l, const QDateTime& when) {
    db::requireTransaction(db);
    db::Sql(db, QStringLiteral("INSERT INTO BITACORAMOVIMIENTO (Numero, TipodocumentoOrigen, "
                               "DocumentoOrigen, Origen, tipoDocumentoDestino, DocumentoDestino, "
                               "Destino, fecha, Usuario, Observacion) VALUES (?, ?, ?, ?, ?, ?, "
                               "?, ?, ?, ?)"))
        .bind(common::nextCode(db, QStringLiteral("BITACORAMOVIMIENTO"), QStringLiteral("Numero")))
        .bind(l.originType)
        .bind(l.origin)
        .bind(l.originPlace)
        .bind(l.destinationType)
        .bind(l.destination)
        .bind(l.destinationPlace)
        .bind(when)
        .bind(l.user)
        .bind(l.note)
        .exec();
}

QList<AdjustmentType> adjustmentTypes(const QSqlDatabase& db, int sign) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre FROM TIPOAJUSTES WHERE Signo = ? AND "
                                 "Status = 1 AND Codigo NOT IN (998, 999) ORDER BY Codigo"));
    q.bind(sign).exec();
    QList<AdjustmentType> out;
    while (q.next())
        out.append({q.integer(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre"))});
    return out;
}

} // namespace orvo::inventory::dispatch::store
