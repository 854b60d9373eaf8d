#include "inventory/stock/movements.h"

#include "common/db/sql.h"

namespace orvo::inventory::stock {

namespace {

MovementKind kind(const char* step, const char* name, const char* header, const char* lines,
                  const char* join, const char* filter, const char* key, const char* label,
                  int sign) {
    return {QString::fromUtf8(step),    QString::fromUtf8(name),    QString::fromLatin1(header),
            QString::fromLatin1(lines), QString::fromLatin1(join),  QString::fromLatin1(filter),
            QString::fromLatin1(key),   QString::fromLatin1(label), sign};
}

} // namespace

const QList<MovementKind>& movementKinds() {
    static const char* number = "CAST(H.Numero AS VARCHAR(20))";
    static const QList<MovementKind> kinds = {
        kind("Compras...", "Compras", "COMPRAS", "MOVCOMPRAS",
             "M.Documento = H.Documento AND M.Proveedor = H.Proveedor", "H.Status >= 1",
             "H.Documento, H.Proveedor", "H.Documento || ' / ' || H.Proveedor", 1),
        kind("Devoluciones en Compras...", "Devoluciones en Compras", "DEVCOMPRAS", "MOVDEVCOMPRAS",
             "M.Numero = H.Numero", "H.Status >= 1", "H.Numero", number, -1),
        kind("Transferencias...", "Transferencias", "TRANSFERENCIAS", "MOVTRANSFERENCIAS",
             "M.Numero = H.Numero", "H.Status >= 1", "H.Numero", number, -1),
        kind("Devoluciones de Transferencias...", "Devoluciones de Transferencias",
             "DEVTRANSFERENCIAS", "MOVDEVTRANSFERENCIAS", "M.Numero = H.Numero", "H.Status >= 1",
             "H.Numero", number, 1),
        kind("Ventas...", "Ventas", "VENTAS", "MOVVENTAS",
             "M.NumeroFactura = H.NumeroFactura AND M.Serie = H.Serie", "H.Status >= 1",
             "H.Serie, H.NumeroFactura", "H.Serie || '-' || CAST(H.NumeroFactura AS VARCHAR(20))",
             -1),
        kind("Devoluciones en Ventas...", "Devoluciones en Ventas", "DEVVENTAS", "MOVDEVVENTAS",
             "M.NumeroDevolucion = H.NumeroDevolucion AND M.Serie = H.Serie", "H.Status >= 1",
             "H.Serie, H.NumeroDevolucion",
             "H.Serie || '-' || CAST(H.NumeroDevolucion AS VARCHAR(20))", 1),
        kind("Ajustes Negativos...", "Ajustes Negativos", "AJUSTES", "MOVAJUSTES",
             "M.Numero = H.Numero", "H.Status >= 1 AND H.Signo < 0", "H.Numero", number, -1),
        kind("Ajustes Positivos...", "Ajustes Positivos", "AJUSTES", "MOVAJUSTES",
             "M.Numero = H.Numero", "H.Status >= 1 AND H.Signo > 0", "H.Numero", number, 1),
        // Moved aside (2) they wait for the next physical count, which dates them again.
        kind("Transferencias Recibidas...", "Transferencias Recibidas", "ITRANSFERENCIAS",
             "IMOVTRANSFERENCIAS", "M.Numero = H.Numero AND M.CodigoEnvia = H.CodigoEnvia",
             "H.Status = 1", "H.CodigoEnvia, H.Numero",
             "H.CodigoEnvia || '-' || CAST(H.Numero AS VARCHAR(20))", 1),
        kind("Devoluciones de Transferencias Recibidas...",
             "Devoluciones de Transferencias Recibidas", "IDEVTRANSFERENCIAS",
             "IMOVDEVTRANSFERENCIAS", "M.Numero = H.Numero AND M.CodigoEnvia = H.CodigoEnvia",
             "H.Status >= 1", "H.CodigoEnvia, H.Numero",
             "H.CodigoEnvia || '-' || CAST(H.Numero AS VARCHAR(20))", -1),
    };
    return kinds;
}

StockPeriod stockPeriod(const QSqlDatabase& db, const QDate& today) {
    StockPeriod p;
    const QVariant last =
        db::scalar(db, QStringLiteral("SELECT MAX(FechaAjuste) AS Fecha FROM FISICOLOGICO"));
    if (!last.isNull() && last.isValid()) {
        p.lastCount = db::dateTimeValue(last);
        p.from = *p.lastCount;
    } else {
        const QVariant first = db::scalar(
            db, QStringLiteral("SELECT MIN(FechaPrimerMovimiento) AS Fecha FROM INVENTARIO"));
        // A catalogue that never dated its first movement takes every document.
        p.from = first.isNull() || !first.isValid() ? QDateTime(QDate(1900, 1, 1), QTime(0, 0))
                                                    : db::dateTimeValue(first);
    }
    p.to = QDateTime(today, QTime(23, 59, 0));
    return p;
}

QList<QDateTime> countMoments(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT DISTINCT FechaAjuste FROM FISICOLOGICO ORDER BY "
                                 "FechaAjuste"));
    q.exec();
    QList<QDateTime> out;
    while (q.next())
        out << q.dateTime(QStringLiteral("FechaAjuste"));
    return out;
}

} // namespace orvo::inventory::stock
