#include "exchange/export/export_store.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "shell/startup/app_home.h"

#include <QDir>

namespace orvo::exchange::exporting {

QString storeCode(const QSqlDatabase& db) {
    return db::scalar(db, QStringLiteral("SELECT Codigo FROM PARAMETROS")).toString().trimmed();
}

QString exportFolder(const QSqlDatabase& db) {
    QString folder;
    db::Sql q(db, QStringLiteral("SELECT Ruta FROM PARAMETROSTRANSFER"));
    q.exec();
    if (q.next())
        folder = q.text(QStringLiteral("Ruta")).trimmed();
    if (folder.isEmpty())
        folder = shell::appHome() + QStringLiteral("/Envia");
    // Written by hand on a Windows-era setting: "C:\Tienda\Envia\" reads as a folder all the same.
    folder = QDir::fromNativeSeparators(folder);
    while (folder.size() > 1 && folder.endsWith(QLatin1Char('/')))
        folder.chop(1);
    return QDir(folder).absolutePath();
}

void stampMovedArticles(const QSqlDatabase& db, const ExportRange& range) {
    db::requireTransaction(db);
    // Each source: the barcodes of its lines whose document lies in the range.
    const QStringList moved = {
        QStringLiteral("SELECT m.CodigoBarra FROM MOVVENTAS m JOIN VENTAS h ON h.NumeroFactura = "
                       "m.NumeroFactura AND h.Serie = m.Serie WHERE h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT m.CodigoBarra FROM MOVDEVVENTAS m JOIN DEVVENTAS h ON "
                       "h.NumeroDevolucion = m.NumeroDevolucion AND h.Serie = m.Serie WHERE "
                       "h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT m.CodigoBarra FROM MOVTRANSFERENCIAS m JOIN TRANSFERENCIAS h ON "
                       "h.Numero = m.Numero WHERE h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT m.CodigoBarra FROM MOVDEVTRANSFERENCIAS m JOIN DEVTRANSFERENCIAS h "
                       "ON h.Numero = m.Numero WHERE h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT m.CodigoBarra FROM MOVAJUSTES m JOIN AJUSTES h ON h.Numero = "
                       "m.Numero WHERE h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT m.CodigoBarra FROM MOVPEDIDOS m JOIN PEDIDOS h ON h.Numero = "
                       "m.Numero WHERE h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT m.CodigoBarra FROM MOVDEVBORRADOR m JOIN DEVBORRADOR h ON h.Numero "
                       "= m.Numero WHERE h.Fecha >= ? AND h.Fecha <= ?"),
        QStringLiteral("SELECT CodigoBarra FROM FISICOLOGICO WHERE FechaAjuste >= ? AND "
                       "FechaAjuste <= ?"),
    };
    for (const QString& select : moved) {
        db::Sql q(db, QStringLiteral("UPDATE INVENTARIO SET UltimaActualizacion = ? WHERE "
                                     "CodigoBarra IN (%1)")
                          .arg(select));
        q.bind(range.to).bind(range.from).bind(range.to).exec();
    }
    // A price list changes every variant of its models: matched on the reference.
    db::Sql prices(db, QStringLiteral("UPDATE INVENTARIO SET UltimaActualizacion = ? WHERE "
                                      "Referencia IN (SELECT m.Referencia FROM MOVLISTAPRECIO m "
                                      "JOIN LISTAPRECIO h ON h.Numero = m.Numero WHERE h.Fecha >= "
                                      "? AND h.Fecha <= ? AND h.Status <> 0)"));
    prices.bind(range.to).bind(range.from).bind(range.to).exec();
}

QDate lastExportDay(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT UltExportacion FROM PARAMETROS"));
    q.exec();
    if (!q.next())
        return {};
    return q.dateTime(QStringLiteral("UltExportacion")).date();
}

void setLastExportDay(const QSqlDatabase& db, const QDate& day) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE PARAMETROS SET UltExportacion = ?"),
                {QDateTime(day, QTime(0, 0))});
}

QList<XmlExportDefinition> xmlExportDefinitions(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Nombre, NombreTabla, Consulta, mensaje FROM EXPORTACION "
                                 "WHERE Exportar = 1 ORDER BY Nombre"));
    q.exec();
    QList<XmlExportDefinition> out;
    while (q.next())
        out << XmlExportDefinition{q.text(QStringLiteral("Nombre")).trimmed(),
                                   q.text(QStringLiteral("NombreTabla")).trimmed(),
                                   q.text(QStringLiteral("Consulta")),
                                   q.text(QStringLiteral("mensaje"))};
    return out;
}

} // namespace orvo::exchange::exporting
