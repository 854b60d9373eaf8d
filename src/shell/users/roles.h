#pragma once

#include <QSqlDatabase>
#include <QString>

namespace orvo::shell::users {

// Group-role checks: true when `userCode` belongs to a group that qualifies by its code or its
// name, exactly as each check lists them. Group codes and names compare without regard to case,
// as they always have on the store server.
bool isAdministrator(const QSqlDatabase& db, const QString& userCode);
bool isSystems(const QSqlDatabase& db, const QString& userCode);
bool isInventorySupervisor(const QSqlDatabase& db, const QString& userCode);
bool maySeeCosts(const QSqlDatabase& db, const QString& userCode);
bool maySeePrices(const QSqlDatabase& db, const QString& userCode);
bool mayCheckRemissions(const QSqlDatabase& db, const QString& userCode);
bool mayUncheckRemissions(const QSqlDatabase& db, const QString& userCode);

} // namespace orvo::shell::users
