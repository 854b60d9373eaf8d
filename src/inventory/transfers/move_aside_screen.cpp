#include "inventory/transfers/move_aside_screen.h"

#include "common/dialogs/dialogs.h"
#include "inventory/purchases/document_screen.h"
#include "inventory/transfers/transfers.h"

#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace orvo::inventory::transfers {

MoveAsideScreen::MoveAsideScreen(QSqlDatabase db, QWidget* parent)
    : QWidget(parent), m_db(std::move(db)) {
    setObjectName(kMoveAsideScreen);
    setWindowTitle(QStringLiteral("Desplazar transferencias"));
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    const auto picker = [this](const char* name, const QDate& day) {
        auto* d = new QDateEdit(day, this);
        d->setObjectName(QString::fromLatin1(name));
        d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
        d->setCalendarPopup(true);
        return d;
    };
    m_from = picker("dtpDesde", QDate::currentDate().addDays(-30));
    m_to = picker("dtpHasta", QDate::currentDate());
    top->addWidget(new QLabel(QStringLiteral("Desde:"), this));
    top->addWidget(m_from);
    top->addWidget(new QLabel(QStringLiteral("Hasta:"), this));
    top->addWidget(m_to);
    QPushButton* find = purchases::screenButton(this, QStringLiteral("cmdBuscar"),
                                                QStringLiteral("Buscar"), Qt::Key_F5);
    top->addWidget(find);
    top->addStretch();
    layout->addLayout(top);
    m_grid = new QTableWidget(0, 5, this);
    m_grid->setObjectName(QStringLiteral("SpreadTransferencias"));
    m_grid->setHorizontalHeaderLabels({QStringLiteral("Desplazar"), QStringLiteral("Número"),
                                       QStringLiteral("Envía"), QStringLiteral("Fecha"),
                                       QStringLiteral("Total valor")});
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->verticalHeader()->hide();
    m_grid->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    layout->addWidget(m_grid, 1);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    QPushButton* move = purchases::screenButton(this, QStringLiteral("cmdDesplazar"),
                                                QStringLiteral("Desplazar"), Qt::Key_F9);
    bottom->addWidget(move);
    layout->addLayout(bottom);
    connect(find, &QPushButton::clicked, this, [this] { guarded(this, [&] { search(); }); });
    connect(move, &QPushButton::clicked, this, [this] { guarded(this, [&] { moveAside(); }); });
    // Space (or a click on the tick) ticks the current row.
    connect(m_grid, &QTableWidget::cellActivated, this, [this](int row) {
        if (auto* item = m_grid->item(row, 0))
            setTicked(row, item->checkState() != Qt::Checked);
    });
    for (QDateEdit* d : {m_from, m_to})
        connect(d, &QDateEdit::editingFinished, this, [this] { guarded(this, [&] { search(); }); });
    search();
}

void MoveAsideScreen::search() {
    m_rows = receivedTransfers(m_db, m_from->date(), m_to->date());
    m_grid->setRowCount(0);
    m_grid->setRowCount(int(m_rows.size()));
    const QLocale locale;
    for (int r = 0; r < m_rows.size(); ++r) {
        const ReceivedSummary& s = m_rows[r];
        auto* tick = new QTableWidgetItem;
        tick->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        tick->setCheckState(s.status == kMovedAside ? Qt::Checked : Qt::Unchecked);
        m_grid->setItem(r, 0, tick);
        m_grid->setItem(r, 1, new QTableWidgetItem(QString::number(s.number)));
        m_grid->setItem(r, 2, new QTableWidgetItem(s.sender));
        m_grid->setItem(r, 3, new QTableWidgetItem(s.date.toString(QStringLiteral("dd/MM/yyyy"))));
        auto* total = new QTableWidgetItem(s.total.toLocaleString(locale, 2));
        total->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_grid->setItem(r, 4, total);
    }
}

void MoveAsideScreen::setTicked(int row, bool ticked) {
    if (auto* item = m_grid->item(row, 0))
        item->setCheckState(ticked ? Qt::Checked : Qt::Unchecked);
}

void MoveAsideScreen::moveAside() {
    if (m_rows.isEmpty())
        return;
    if (!dialogs().question(this, QStringLiteral("Desea desplazar las transferencias "
                                                 "seleccionadas...?")))
        return;
    QList<AsideChoice> choices;
    for (int r = 0; r < m_rows.size(); ++r)
        choices.append(
            {m_rows[r].number, m_rows[r].sender, m_grid->item(r, 0)->checkState() == Qt::Checked});
    transfers::moveAside(m_db, choices);
    search();
}

} // namespace orvo::inventory::transfers
