#include "common/dialogs/screen_widgets.h"

#include "common/errors/errors.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
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

void takeTypedChoice(QComboBox* list) {
    if (!list->isEditable())
        return;
    const QString typed = list->currentText().trimmed();
    if (list->currentIndex() >= 0 && list->itemText(list->currentIndex()) == typed)
        return;
    int chosen = typed.isEmpty() ? -1 : list->findText(typed, Qt::MatchFixedString);
    if (chosen < 0 && !typed.isEmpty()) {
        for (int i = 0; i < list->count(); ++i) {
            if (!list->itemText(i).contains(typed, Qt::CaseInsensitive))
                continue;
            if (chosen >= 0) { // more than one: the user has not chosen yet
                chosen = -1;
                break;
            }
            chosen = i;
        }
    }
    if (list->completer() && list->completer()->popup())
        list->completer()->popup()->hide();
    list->setCurrentIndex(chosen);
    if (chosen < 0)
        list->setEditText(QString());
}

void makeSearchable(QComboBox* list) {
    list->setEditable(true);
    list->setInsertPolicy(QComboBox::NoInsert);
    QCompleter* completer = list->completer();
    completer->setCompletionMode(QCompleter::PopupCompletion);
    completer->setFilterMode(Qt::MatchContains);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    // Enter on the proposals shows the choice taken; a second Enter moves on.
    QObject::connect(list->lineEdit(), &QLineEdit::returnPressed, list,
                     [list] { takeTypedChoice(list); });
    // Leaving the field takes the choice (the completer's popup swallows the field's own
    // focus-out, so the application's focus change is what is watched).
    QObject::connect(qApp, &QApplication::focusChanged, list, [list](QWidget* from, QWidget* to) {
        const auto inside = [list](QWidget* w) {
            return w && (w == list || list->isAncestorOf(w));
        };
        const bool toPopup = to && list->completer() && to == list->completer()->popup();
        if (inside(from) && !inside(to) && !toPopup)
            takeTypedChoice(list);
    });
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
