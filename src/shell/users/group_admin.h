#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

namespace orvo::shell::users {

// One menu node and whether a group may see it (GRUPOSEG.Ver = 'S').
struct NodeGrant {
    QString node;
    QString caption;
    int level = 0;
    bool granted = false;
};

// Every menu node (SEG) in menu order, with the group's grant.
QList<NodeGrant> groupGrants(const QSqlDatabase& db, const QString& groupCode);

// Writes the group (insert when adding, update otherwise) and replaces its grants by
// `grantedNodes`: one transaction. Only Systems maintains groups.
void saveGroup(const QSqlDatabase& db, const QString& actingUser, const QString& code,
               const QString& name, const QStringList& grantedNodes, bool adding);

// Deletes a group without members, with its grants. Only Systems.
void deleteGroup(const QSqlDatabase& db, const QString& actingUser, const QString& code);

} // namespace orvo::shell::users
