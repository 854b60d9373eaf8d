#pragma once

#include <QDialog>
#include <QStringList>
#include <optional>

class QTableWidget;

namespace orvo::inventory::purchases {

// A short list to pick one row from with the keyboard (arrows, Enter; Escape cancels), for
// choices that do not come from one query: a sister company's invoices, the suppliers of an
// invoice number.
class ChoiceDialog : public QDialog {
    Q_OBJECT
public:
    ChoiceDialog(const QString& title, const QStringList& headers, const QList<QStringList>& rows,
                 QWidget* parent = nullptr);
    QTableWidget* table() const { return m_table; }
    int chosenRow() const { return m_chosen; }

    // The row chosen, nothing when cancelled or empty. A single row is taken without asking
    // unless `askForOne`.
    static std::optional<int> choose(QWidget* parent, const QString& title,
                                     const QStringList& headers, const QList<QStringList>& rows,
                                     bool askForOne = false);

private:
    QTableWidget* m_table;
    int m_chosen = -1;
};

} // namespace orvo::inventory::purchases
