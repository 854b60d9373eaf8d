#pragma once

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariantHash>
#include <functional>

// What each export package carries, table by table, in export order.
namespace orvo::exchange::exporting {

enum class ExportFormat {
    Orvo,  // frmExpArchivosOrvo: the store package
    Vandu, // frmExpArchivos: the store-to-head-office set
    Xml,   // frmExpArchivosXML: the tables of EXPORTACION as XML
};

// The bounds of a run, both included: the first day from 00:00:01, the last day up to 23:59:00
// (store package) or 23:59:59 (head-office set). A document stamped 00:00:00 of the first day, or
// in the last minute of the last day of the store package, stays out: the bounds are the ones
// the receiving side has always counted on.
struct ExportRange {
    QDateTime from;
    QDateTime to;
};
ExportRange exportRange(ExportFormat format, const QDate& from, const QDate& to);

// One exported table.
struct ExportTable {
    QString file;    // the DBF and template name: "MOVVENTA" (MOVVENTA.DBF from MOVVENTA.est)
    QString message; // shown while it is written; empty: the previous message stays
    // The selection; its "?" are the range bounds, in (from, to) pairs. Its columns are matched
    // to the template's fields by their dBase names (dbf_names.h).
    QString sql;
    int rangePairs = 0;
    QString outputName; // the file written when it is not `file` + ".DBF"
    // Rows made by code rather than by `sql` (fields by dBase name).
    std::function<QList<QVariantHash>(const QSqlDatabase&, const ExportRange&)> rows;

    QString output() const {
        return outputName.isEmpty() ? file + QStringLiteral(".DBF") : outputName;
    }
};

// frmExpArchivosOrvo, in order. The articles that moved are stamped after the first
// kStampAfter tables (users, parameters, registers), before the article table is read.
QList<ExportTable> storeTables();
// frmExpArchivos, in order, with the same stamp point.
QList<ExportTable> headOfficeTables();
constexpr int kStampAfter = 3;

} // namespace orvo::exchange::exporting
