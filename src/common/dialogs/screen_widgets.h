#pragma once

#include "common/decimal/decimal.h"

#include <QString>
#include <QStringList>

class QComboBox;
class QDateEdit;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QWidget;

// The pieces screens are built from, named by their control names.
namespace orvo {

QLineEdit* inputField(QWidget* parent, const char* name, bool amount = false);
// Read-only: what the screen shows, not what the user types.
QLineEdit* shownField(QWidget* parent, const char* name, bool amount = false);
QPushButton* actionButton(QWidget* parent, const char* name, const QString& text);
// Rows picked whole, nothing edited in place.
QTableWidget* listTable(QWidget* parent, const char* name, const QStringList& headers);
// A day, "dd/MM/yyyy" with its calendar, today to start with.
QDateEdit* dateField(QWidget* parent, const char* name);

// A list of "code - name" items found by typing any part of the code or the name. Leaving the
// field takes the choice (takeTypedChoice).
void makeSearchable(QComboBox* list);
// The item typed in full, or the only one containing what was typed; anything else leaves
// nothing chosen. For a value read while the field still has the keyboard (a shortcut's save).
void takeTypedChoice(QComboBox* list);

// "###,###,###,##0.00" with this country's separators.
QString moneyText(const Decimal& amount);
// A typed amount ("1.234,50", "1234.5"); UserError when it is not a number of zero or more.
Decimal typedAmount(const QString& text);

} // namespace orvo
