#pragma once

#include "exchange/export/export_tables.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>

// The export's SQL beyond the table selections. Readers need no transaction; the writers assert
// the one their caller opened.
namespace orvo::exchange::exporting {

// PARAMETROS.Codigo: the store code that names the package ("" without a row).
QString storeCode(const QSqlDatabase& db);

// The export folder: PARAMETROSTRANSFER.Ruta, or ORVO_HOME/Envia when the table has no row or
// the column is empty. Always an absolute path without a trailing separator.
QString exportFolder(const QSqlDatabase& db);

// Stamps INVENTARIO.UltimaActualizacion with the range's end for every article that moved in the
// range: sales, sales returns, transfers and their returns, adjustments, orders, return drafts,
// physical-logical adjustments, and (by reference) approved price lists.
void stampMovedArticles(const QSqlDatabase& db, const ExportRange& range);

// PARAMETROS.UltExportacion: the last day exported by the unattended export (null when never).
QDate lastExportDay(const QSqlDatabase& db);
void setLastExportDay(const QSqlDatabase& db, const QDate& day);

// The XML export definitions: EXPORTACION rows with Exportar = 1, by Nombre.
struct XmlExportDefinition {
    QString name;    // Nombre
    QString table;   // NombreTabla: the file name
    QString query;   // Consulta
    QString message; // mensaje
};
QList<XmlExportDefinition> xmlExportDefinitions(const QSqlDatabase& db);

} // namespace orvo::exchange::exporting
