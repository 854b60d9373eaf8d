#pragma once

#include <QString>

class QLineEdit;
class QPushButton;
class QTableWidget;
class QWidget;

// The pieces the cash screens are built from.
namespace orvo::pos::cash {

QLineEdit* inputField(QWidget* parent, const char* name, bool amount = false);
// Read-only: what the screen shows, not what the user types.
QLineEdit* shownField(QWidget* parent, const char* name, bool amount = false);
QPushButton* actionButton(QWidget* parent, const char* name, const QString& text);
// Rows picked whole, nothing edited in place.
QTableWidget* listTable(QWidget* parent, const char* name, const QStringList& headers);

} // namespace orvo::pos::cash
