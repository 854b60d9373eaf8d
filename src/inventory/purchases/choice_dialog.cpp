#include "inventory/purchases/choice_dialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::purchases {

ChoiceDialog::ChoiceDialog(const QString& title, const QStringList& headers,
                           const QList<QStringList>& rows, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmSeleccion"));
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    m_table = new QTableWidget(int(rows.size()), int(headers.size()), this);
    m_table->setObjectName(QStringLiteral("grdSeleccion"));
    m_table->setHorizontalHeaderLabels(headers);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < rows[r].size(); ++c)
            m_table->setItem(r, c, new QTableWidgetItem(rows[r][c]));
    m_table->resizeColumnsToContents();
    if (!rows.isEmpty())
        m_table->selectRow(0);
    layout->addWidget(m_table);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdAceptar"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancelar"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        m_chosen = m_table->currentRow();
        if (m_chosen >= 0)
            accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row) {
        m_chosen = row;
        accept();
    });
    resize(640, 360);
}

std::optional<int> ChoiceDialog::choose(QWidget* parent, const QString& title,
                                        const QStringList& headers, const QList<QStringList>& rows,
                                        bool askForOne) {
    if (rows.isEmpty())
        return std::nullopt;
    if (rows.size() == 1 && !askForOne)
        return 0;
    ChoiceDialog d(title, headers, rows, parent);
    if (d.exec() != QDialog::Accepted || d.chosenRow() < 0)
        return std::nullopt;
    return d.chosenRow();
}

} // namespace orvo::inventory::purchases
