#include "pos/cash/cash_widgets.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QStringList>
#include <QTableWidget>

namespace orvo::pos::cash {

QLineEdit* inputField(QWidget* parent, const char* name, bool amount) {
    auto* e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    if (amount)
        e->setAlignment(Qt::AlignRight);
    return e;
}

QLineEdit* shownField(QWidget* parent, const char* name, bool amount) {
    QLineEdit* e = inputField(parent, name, amount);
    e->setReadOnly(true);
    e->setFocusPolicy(Qt::NoFocus);
    return e;
}

QPushButton* actionButton(QWidget* parent, const char* name, const QString& text) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(QLatin1String(name));
    return b;
}

QTableWidget* listTable(QWidget* parent, const char* name, const QStringList& headers) {
    auto* t = new QTableWidget(0, int(headers.size()), parent);
    t->setObjectName(QLatin1String(name));
    t->setHorizontalHeaderLabels(headers);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->horizontalHeader()->setStretchLastSection(true);
    return t;
}

} // namespace orvo::pos::cash
