#pragma once

#include "inventory/prices/received_lists.h"

#include <QSqlDatabase>
#include <QWidget>

class QLabel;
class QPushButton;
class QTableWidget;

namespace orvo::inventory::prices {

// frmImpListaPrecios: the price lists received from head office, shown and loaded into the store
// (approved and into the inventory when the user says so).
class ImportListsScreen : public QWidget {
    Q_OBJECT
public:
    ImportListsScreen(QSqlDatabase db, QString userCode, QString recibeFolder,
                      QWidget* parent = nullptr);
    // Reads Recibe again; false when nothing can be loaded (the reason was shown).
    bool refresh();
    void load();

private:
    QSqlDatabase m_db;
    QString m_userCode;
    QString m_recibe;
    std::optional<ReceivedLists> m_received;
    QLabel* m_source = nullptr;
    QTableWidget* m_lists = nullptr;
    QPushButton* m_load = nullptr;
};

} // namespace orvo::inventory::prices
