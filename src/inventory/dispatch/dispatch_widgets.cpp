#include "inventory/dispatch/dispatch_widgets.h"

#include "inventory/purchases/document_screen.h"

#include <QTableWidget>

namespace orvo::inventory::dispatch {

void fillGrid(QTableWidget* grid, const QList<QStringList>& rows, int rightFrom) {
    grid->setRowCount(0);
    grid->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < rows[r].size(); ++c)
            grid->setItem(r, c, purchases::listCell(rows[r][c], rightFrom >= 0 && c >= rightFrom));
}

} // namespace orvo::inventory::dispatch
