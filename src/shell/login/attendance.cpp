#include "shell/login/attendance.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::shell {

namespace {

const QString kDateFormat = QStringLiteral("yyyyMMdd");
const QString kTimeFormat = QStringLiteral("HH:mm:ss");

QDateTime recordMoment(const QString& date, const QString& time) {
    return QDateTime(QDate::fromString(date.trimmed(), kDateFormat),
                     QTime::fromString(time.trimmed(), kTimeFormat));
}

} // namespace

AttendanceResult recordAttendance(const QSqlDatabase& db, const QString& cardTyped,
                                  const QDateTime& now) {
    using Kind = AttendanceResult::Kind;
    AttendanceResult r;
    r.card = cardTyped.trimmed();
    db::Transaction tx(db);

    // A clock set back would let a worker record a time already past.
    {
        db::Sql last(db, QStringLiteral("SELECT Fecha, HoraEntrada, HoraSalida FROM CONTROLACCESO "
                                        "ORDER BY Numero DESC LIMIT 1"));
        last.exec();
        if (last.next()) {
            const QString date = last.text(QStringLiteral("Fecha"));
            QDateTime latest = recordMoment(date, last.text(QStringLiteral("HoraEntrada")));
            if (!last.isNull(QStringLiteral("HoraSalida"))) {
                const QDateTime out = recordMoment(date, last.text(QStringLiteral("HoraSalida")));
                if (out.isValid() && out > latest)
                    latest = out;
            }
            if (latest.isValid() && latest > now) {
                r.kind = Kind::InvalidDate;
                r.condition = QStringLiteral("FECHA NO VALIDA");
                return r;
            }
        }
    }

    db::Sql today(db, QStringLiteral("SELECT Numero, Cedula, Fecha, HoraEntrada, HoraSalida FROM "
                                     "CONTROLACCESO WHERE Fecha = ? AND Cedula = ? "
                                     "ORDER BY Numero DESC LIMIT 1"));
    today.bindAll({now.date().toString(kDateFormat), r.card}).exec();
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
        const QTime entered =
            QTime::fromString(today.text(QStringLiteral("HoraEntrada")).trimmed(), kTimeFormat);
        if (entered.isValid() && entered.secsTo(now.time()) <= 59) {
            r.kind = Kind::EntryRepeated;
            r.condition = QStringLiteral("SU ENTRADA FUE REGISTRADA");
            return r;
        }
        db::execute(db, QStringLiteral("UPDATE CONTROLACCESO SET HoraSalida = ? WHERE Numero = ?"),
                    {now.time().toString(kTimeFormat), today.value(QStringLiteral("Numero"))});
        tx.commit();
        r.kind = Kind::Exit;
        r.condition = QStringLiteral("SU SALIDA FUE REGISTRADA");
        return r;
    }

    const long long next =
        db::scalar(db, QStringLiteral("SELECT MAX(Numero) AS Id FROM CONTROLACCESO")).toLongLong() +
        1;
    db::execute(db,
                QStringLiteral("INSERT INTO CONTROLACCESO (Numero, Cedula, Fecha, HoraEntrada) "
                               "VALUES(?, ?, ?, ?)"),
                {next, r.card, now.date().toString(kDateFormat), now.time().toString(kTimeFormat)});
    tx.commit();
    r.kind = Kind::Entry;
    r.condition = QStringLiteral("SU ENTRADA FUE REGISTRADA");
    return r;
}

bool cardTypingAllowed(const QSqlDatabase& db) {
    return db::numericFlag(db::scalar(db, QStringLiteral("SELECT DejarEditar FROM PARAMETROS")));
}

} // namespace orvo::shell
