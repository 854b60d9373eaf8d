#pragma once

#include "common/db/connection.h"
#include "common/db/sql.h"

#include <QSqlDatabase>
#include <QString>

namespace orvo::test {

// Makes the database itself refuse to delete the row of `table` whose `column` is `value`, with
// `message`: a real refusal on either engine, as a row still in use would give.
inline void refuseDeleteOf(const QSqlDatabase& db, const QString& table, const QString& column,
                           const QString& value, const QString& message) {
    // DDL cannot take bound values; the test supplies plain literals.
    const QString condition = QStringLiteral("OLD.%1 = '%2'").arg(column, value);
    if (db::engineOf(db) == db::Engine::Postgres) {
        db::execute(db, QStringLiteral("CREATE OR REPLACE FUNCTION orvo_refuse_%1() RETURNS "
                                       "trigger AS $$ BEGIN RAISE EXCEPTION '%2'; END $$ LANGUAGE "
                                       "plpgsql")
                            .arg(table.toLower(), message));
        db::execute(db, QStringLiteral("CREATE TRIGGER tr_refuse_%1 BEFORE DELETE ON %1 FOR EACH "
                                       "ROW WHEN (%2) EXECUTE FUNCTION orvo_refuse_%3()")
                            .arg(table, condition, table.toLower()));
    } else {
        db::execute(db, QStringLiteral("CREATE TRIGGER TR_REFUSE_%1 BEFORE DELETE ON %1 WHEN %2 "
                                       "BEGIN SELECT RAISE(ABORT, '%3'); END")
                            .arg(table, condition, message));
    }
}

} // namespace orvo::test
