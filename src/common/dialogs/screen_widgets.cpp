#include "common/dialogs/screen_widgets.h"

#include "common/errors/errors.h"

#include <QDateEdit>
#include <QHeaderView>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTableWidget>

namespace orvo {

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

QDateEdit* dateField(QWidget* parent, const char* name) {
    auto* d = new QDateEdit(QDate::currentDate(), parent);
    d->setObjectName(QLatin1String(name));
    d->setDisplayFormat(QStringLiteral("dd/MM/yyyy"));
    d->setCalendarPopup(true);
    return d;
}

QString moneyText(const Decimal& amount) {
    return amount.toLocaleString(QLocale(QLocale::Spanish, QLocale::Venezuela), 2);
}

Decimal typedAmount(const QString& text) {
    const auto value = parseTypedNumber(text);
    if (!value || value->isNegative())
        throw UserError(QStringLiteral("Introduzca un número válido...!"));
    return *value;
}

} // namespace orvo
