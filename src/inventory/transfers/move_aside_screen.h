#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>
#include <QWidget>

class QDateEdit;
class QTableWidget;

namespace orvo::inventory::transfers {

// frmDesplazarTransferencias: the received transfers of a date range, each with a tick; the
// ticked ones are moved aside (Status 2), the others are brought back (1).
class MoveAsideScreen : public QWidget {
    Q_OBJECT
public:
    MoveAsideScreen(QSqlDatabase db, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {760, 520}; }

    void search();
    void setTicked(int row, bool ticked);
    void moveAside();

private:
    QSqlDatabase m_db;
    QDateEdit* m_from = nullptr;
    QDateEdit* m_to = nullptr;
    QTableWidget* m_grid = nullptr;
    QList<ReceivedSummary> m_rows;
};

} // namespace orvo::inventory::transfers
