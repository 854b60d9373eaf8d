#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>

namespace orvo::shell::users {

struct Group {
    QString code;
    QString name;
};

struct UserRecord {
    QString code;
    QString name;
    QString password;     // clear text as typed; stored scrambled
    QString confirmation; // TxtVerificarClave
    int status = 1;       // 1 active
    QString groupName;    // the group is chosen by its name
};

// Groups the acting user may hand out on the user screen: everything for Systems; for an
// Administrator only the administrator and cashier groups; for an inventory supervisor the
// inventory groups; anybody else every group but Systems.
QList<Group> offeredGroups(const QSqlDatabase& db, const QString& actingUser);

// Users the acting user may see and edit: members of the offered groups (all users for Systems),
// ordered by name.
struct UserRow {
    QString code;
    QString name;
    int status = 1;
    QString groupName; // first group, by name
};
QList<UserRow> visibleUsers(const QSqlDatabase& db, const QString& actingUser);

// The stored user with clear password and first group name; nullopt-like empty code when absent.
UserRow loadUser(const QSqlDatabase& db, const QString& code, QString* clearPassword = nullptr);

// Saves the user (insert when adding, update otherwise), replaces its group membership by the
// chosen group and removes the shortcuts it can no longer reach: one transaction. The acting user's
// rights are checked here, not only by what the screen offers.
void saveUser(const QSqlDatabase& db, const QString& actingUser, const UserRecord& user,
              bool adding);

// Deletes the user with its memberships and shortcuts: one transaction.
void deleteUser(const QSqlDatabase& db, const QString& actingUser, const QString& code);

} // namespace orvo::shell::users
