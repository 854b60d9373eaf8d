#pragma once

#include <QSqlDatabase>

class QDateTimeEdit;

namespace orvo::inventory::stock {

// Puts the date guard on a stock document's date picker: a date the user types before the last
// physical-logical adjustment is refused with the guard's message when he leaves the field (or
// presses Enter), and the picker goes back to the date it had when he entered it. Dates set by
// the program are not judged: an old document shows its own date.
void guardDocumentDate(QDateTimeEdit* picker, QSqlDatabase db);

} // namespace orvo::inventory::stock
