#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

class QPagedPaintDevice;
class QTextDocument;

namespace orvo::grid {

class GridModel;

// Prints `body` page by page on `device` (a printer, or a PDF writer), each page headed by the
// date and time on the right in 9-point Arial ("Fecha: dd-mm-yyyy", "Hora: hh:mm:ss") and the
// title centred in 16-point bold Arial, and footed by "Pág: n".
void printDocument(QPagedPaintDevice& device, QTextDocument& body, const QString& title,
                   const QDateTime& when = QDateTime::currentDateTime());

// An HTML table with borders and a bold header row.
QString tableHtml(const QStringList& headers, const QList<QStringList>& rows,
                  const QList<bool>& rightAligned = {});

// Label and value pairs, two to a row, as the heads of printed documents show them.
QString fieldsHtml(const QList<QPair<QString, QString>>& pairs);

// The visible columns of a grid as a table, printed with printDocument.
void printGrid(QPagedPaintDevice& device, const GridModel& model, const QString& title);

} // namespace orvo::grid
