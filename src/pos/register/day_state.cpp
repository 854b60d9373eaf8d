#include "pos/register/day_state.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "shell/session/settings_readers.h"

namespace orvo::pos::registers {

using db::Sql;

std::optional<RegisterDay> registerDay(const QSqlDatabase& db, const QString& serial,
                                       const QDate& day) {
    Sql q(db, QStringLiteral("SELECT Serie, Fecha, Status FROM DIARIOCAJA "
                             "WHERE Serie = ? AND Fecha >= ? AND Fecha < ? ORDER BY Fecha"));
    q.bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
    if (!q.next())
        return std::nullopt;
    return RegisterDay{q.dateTime(QStringLiteral("Fecha")), q.integer(QStringLiteral("Status"))};
}

void checkDayOpen(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    const auto row = registerDay(db, serial, day);
    if (!row)
        throw UserError(QStringLiteral("No existe apertura de fecha ") +
                        day.toString(QStringLiteral("dd/MM/yyyy")) + QStringLiteral("...!"));
    if (row->status == kDayClosed)
        throw UserError(QStringLiteral("Caja con cierre realizado...!"));
}

Decimal accumulatedAmount(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    return Decimal::fromVariant(
        db::scalar(db,
                   QStringLiteral("SELECT Acumulado FROM DIARIOCAJA "
                                  "WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"),
                   {serial, db::dayStart(day), db::nextDayStart(day)}));
}

void addToAccumulated(const QSqlDatabase& db, const QString& serial, const QDate& day,
                      const Decimal& amount) {
    db::requireTransaction(db);
    // Added here rather than in SQL: SQLite would add the amounts in binary floating point.
    const Decimal total = accumulatedAmount(db, serial, day) + amount;
    Sql q(db, QStringLiteral("UPDATE DIARIOCAJA SET Acumulado = ? "
                             "WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"));
    q.bind(total, 2).bind(serial).bind(db::dayStart(day)).bind(db::nextDayStart(day)).exec();
}

void resetAccumulated(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE DIARIOCAJA SET Acumulado = 0 "
                               "WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"),
                {serial, db::dayStart(day), db::nextDayStart(day)});
}

std::optional<Decimal> printerDailyMaximum(const QSqlDatabase& db, const QString& serial) {
    Sql q(db, QStringLiteral("SELECT I.MontoMaximoDiario FROM CAJAS C "
                             "INNER JOIN IMPRESORAFISCAL I ON I.ID = C.IdImpresoraFiscal "
                             "WHERE C.Serie = ?"));
    q.bind(serial).exec();
    if (!q.next())
        return std::nullopt;
    return q.decimal(QStringLiteral("MontoMaximoDiario"));
}

Decimal projectedAmount(const QSqlDatabase& db, const QString& serial, const QDate& day,
                        const Decimal& invoiceAmount) {
    return accumulatedAmount(db, serial, day) + invoiceAmount;
}

bool exceedsDailyMaximum(const QSqlDatabase& db, const QString& serial, const QDate& day,
                         const Decimal& invoiceAmount) {
    const auto maximum = printerDailyMaximum(db, serial);
    if (!maximum || *maximum <= Decimal(0))
        return false;
    return projectedAmount(db, serial, day, invoiceAmount) > *maximum;
}

bool contingencyAllowed(const QSqlDatabase& db, const QString& serial) {
    return shell::registerAllowsContingencyInvoices(db, serial) ||
           shell::companyAllowsContingencyInvoices(db);
}

std::optional<QDateTime> lastClosedDay(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT Fecha FROM DIARIOCAJA WHERE Status = 2 "
                             "ORDER BY Fecha DESC LIMIT 1"));
    q.exec();
    if (!q.next())
        return std::nullopt;
    return q.dateTime(QStringLiteral("Fecha"));
}

} // namespace orvo::pos::registers
