#include "inventory/dispatch/dispatch_widgets.h"

#include <QHeaderView>
#include <QTableWidget>

namespace orvo::inventory::dispatch {

QTableWidget* listGrid(QWidget* parent, const QString& name, const QStringList& headers) {
    auto* t = new QTableWidget(0, int(headers.size()), parent);
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(headers);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->setSelectionMode(QAbstractItemView::SingleSelection);
    t->verticalHeader()->hide();
    t->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    return t;
}

void fillGrid(QTableWidget* grid, const QList<QStringList>& rows, int rightFrom) {
    grid->setRowCount(0);
    grid->setRowCount(int(rows.size()));
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < rows[r].size(); ++c) {
            auto* item = new QTableWidgetItem(rows[r][c]);
            if (rightFrom >= 0 && c >= rightFrom)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->setItem(r, c, item);
        }
}

} // namespace orvo::inventory::dispatch
