#pragma once

#include <QDateTime>
#include <QSqlDatabase>
#include <QString>

namespace orvo::shell {

// One swipe of a worker's card on the attendance clock.
struct AttendanceResult {
    enum class Kind {
        InvalidDate,   // the last record is later than this machine's clock
        UnknownWorker, // no TRABAJADORES row for the card
        EntryRepeated, // within a minute of entering: not taken as the exit
        Exit,
        Entry,
    };
    Kind kind = Kind::InvalidDate;
    QString card;
    QString name;
    QString condition; // the text of the result label
};

// Records the entry or exit of the worker with card number `card` at `now`.
AttendanceResult recordAttendance(const QSqlDatabase& db, const QString& card,
                                  const QDateTime& now);

// PARAMETROS.DejarEditar: whether the card number may be typed by hand.
bool cardTypingAllowed(const QSqlDatabase& db);

} // namespace orvo::shell
