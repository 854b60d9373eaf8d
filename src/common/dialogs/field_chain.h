#pragma once

#include <QList>

class QAbstractButton;
class QWidget;

namespace orvo {

// Keyboard-first entry on a screen: Enter in each field moves to the next one, and in the last
// field presses `action` (when given). Entering a line edit selects its text so that typing
// replaces it. The chain lives as long as the first field.
void chainFields(const QList<QWidget*>& fields, QAbstractButton* action = nullptr);

} // namespace orvo
