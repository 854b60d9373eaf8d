#pragma once

#include "inventory/articles/lots.h"
#include "shell/record_form/record_screen.h"

#include <QDialog>
#include <QSqlDatabase>

class QButtonGroup;
class QLineEdit;
class QListWidget;
class QTableWidget;

namespace orvo::inventory {

// frmLotes: the record form over LOTES, ordered by code.
class LotsScreen : public shell::RecordScreen {
    Q_OBJECT
public:
    LotsScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);
    int recordCount() const override { return int(m_lots.size()); }
    void navigateTo(int row);

protected:
    void requery() override;
    void afterNavigate() override;
    void save() override;
    void remove() override;
    void print() override;
    void newRecord() override;

private:
    QSqlDatabase m_db;
    QString m_userCode;
    QList<lots::Lot> m_lots;
    int m_current = -1;
    QTableWidget* m_browser = nullptr;
    QLineEdit* m_code = nullptr;
    QLineEdit* m_description = nullptr;
    QButtonGroup* m_state = nullptr;
};

// frmAsignarLote: picks one of the open lots for the calling document.
class AssignLotDialog : public QDialog {
    Q_OBJECT
public:
    AssignLotDialog(QSqlDatabase db, QWidget* parent = nullptr);
    // The ID of the lot chosen, once accepted.
    std::optional<long long> chosenId() const { return m_chosen; }
    // Opens it modally; the chosen lot's ID or nothing when cancelled.
    static std::optional<long long> choose(QSqlDatabase db, QWidget* parent);
    void choose(int row); // accepts the lot at `row`

private:
    QList<lots::Lot> m_lots;
    QListWidget* m_list = nullptr;
    std::optional<long long> m_chosen;
};

} // namespace orvo::inventory
