#pragma once

#include <QList>
#include <QStringList>

class QTableWidget;

// The read-only lists of the dispatch screens.
namespace orvo::inventory::dispatch {

// Replaces the rows; columns from `rightFrom` on are numbers, aligned right.
void fillGrid(QTableWidget* grid, const QList<QStringList>& rows, int rightFrom = -1);

} // namespace orvo::inventory::dispatch
