#pragma once

#include "shell/record_form/record_table.h"

#include <QSqlDatabase>
#include <functional>

namespace orvo::shell {

// What the record screens borrow from the running program: the shared connection and the code of
// the user who is working.
struct ScreenServices {
    std::function<QSqlDatabase()> database;
    std::function<QString()> userCode;
};

// The master tables maintained with the generic record screen, by form name.
const QList<RecordTable>& masterTables();
const RecordTable* masterTable(const QString& formName);

// Adds every master-data screen, and the users, groups and menu structure screens, to the
// ScreenRegistry.
void registerRecordScreens(const ScreenServices& services);

} // namespace orvo::shell
