#include "shell/login/attendance.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/numbering/numbering.h"

namespace orvo::shell {

namespace {

// The day comes from Fecha and the time of day from the hour column, whatever date the hour
// column carries (rows loaded from older installations keep only the time there).
QDateTime recordMoment(const db::Sql& q, const QString& hourColumn) {
    const QDateTime day = q.dateTime(QStringLiteral("Fecha"));
    const QDateTime hour = q.dateTime(hourColumn);
    if (!day.isValid() || !hour.isValid())
        return {};
    return QDateTime(day.date(), hour.time());
}

QDateTime wholeSeconds(const QDateTime& t) {
    return QDateTime(t.date(), QTime(t.time().hour(), t.time().minute(), t.time().second()));
}

} // namespace

AttendanceResult recordAttendance(const QSqlDatabase& db, const QString& cardTyped,
                                  const QDateTime& now) {
    using Kind = AttendanceResult::Kind;
    AttendanceResult r;
    r.card = cardTyped.trimmed();
    const QDateTime at = wholeSeconds(now);
    db::Transaction tx(db);

    // A clock set back would let a worker record a time already past.
    {
        db::Sql last(db, QStringLiteral("SELECT Fecha, HoraEntrada, HoraSalida FROM CONTROLACCESO "
                                        "ORDER BY Numero DESC LIMIT 1"));
        last.exec();
        if (last.next()) {
            QDateTime latest = recordMoment(last, QStringLiteral("HoraEntrada"));
            if (!last.isNull(QStringLiteral("HoraSalida"))) {
                const QDateTime out = recordMoment(last, QStringLiteral("HoraSalida"));
                if (out.isValid() && (!latest.isValid() || out > latest))
                    latest = out;
            }
            if (latest.isValid() && latest > at) {
                r.kind = Kind::InvalidDate;
                r.condition = QStringLiteral("FECHA NO VALIDA");
                return r;
            }
        }
    }

    db::Sql today(db, QStringLiteral("SELECT Numero, Cedula, Fecha, HoraEntrada, HoraSalida FROM "
                                     "CONTROLACCESO WHERE Fecha >= ? AND Fecha < ? AND Cedula = ? "
                                     "ORDER BY Numero DESC LIMIT 1"));
    today.bindAll({db::dayStart(at.date()), db::nextDayStart(at.date()), r.card}).exec();
    const bool hasToday = today.next();

    db::Sql worker(db, QStringLiteral("SELECT Cedula, Nombre FROM TRABAJADORES WHERE Cedula = ?"));
    worker.bindAll({r.card}).exec();
    if (!worker.next()) {
        r.kind = Kind::UnknownWorker;
        r.condition = QStringLiteral("TRABAJADOR NO REGISTRADO");
        return r;
    }
    r.name = worker.text(QStringLiteral("Nombre")).trimmed();

    if (hasToday && today.isNull(QStringLiteral("HoraSalida"))) {
        const QDateTime entered = recordMoment(today, QStringLiteral("HoraEntrada"));
        if (entered.isValid() && entered.secsTo(at) <= 59) {
            r.kind = Kind::EntryRepeated;
            r.condition = QStringLiteral("SU ENTRADA FUE REGISTRADA");
            return r;
        }
        db::execute(db, QStringLiteral("UPDATE CONTROLACCESO SET HoraSalida = ? WHERE Numero = ?"),
                    {at, today.value(QStringLiteral("Numero"))});
        tx.commit();
        r.kind = Kind::Exit;
        r.condition = QStringLiteral("SU SALIDA FUE REGISTRADA");
        return r;
    }

    common::insertNumbered(db, {QStringLiteral("CONTROLACCESO"), QStringLiteral("Numero")},
                           [&](long long next) {
                               db::execute(db,
                                           QStringLiteral("INSERT INTO CONTROLACCESO (Numero, "
                                                          "Cedula, Fecha, HoraEntrada) "
                                                          "VALUES(?, ?, ?, ?)"),
                                           {next, r.card, db::dayStart(at.date()), at});
                           });
    tx.commit();
    r.kind = Kind::Entry;
    r.condition = QStringLiteral("SU ENTRADA FUE REGISTRADA");
    return r;
}

bool cardTypingAllowed(const QSqlDatabase& db) {
    return db::numericFlag(db::scalar(db, QStringLiteral("SELECT DejarEditar FROM PARAMETROS")));
}

} // namespace orvo::shell
