#pragma once

#include <QList>
#include <QStringList>

class QTableWidget;
class QWidget;

// The read-only lists of the dispatch screens.
namespace orvo::inventory::dispatch {

// A list chosen by rows, not edited in place, its columns sharing the width.
QTableWidget* listGrid(QWidget* parent, const QString& name, const QStringList& headers);
// Replaces the rows; columns from `rightFrom` on are numbers, aligned right.
void fillGrid(QTableWidget* grid, const QList<QStringList>& rows, int rightFrom = -1);

} // namespace orvo::inventory::dispatch
