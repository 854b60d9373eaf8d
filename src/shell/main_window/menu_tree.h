#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

namespace orvo::shell {

// One node of the user's menu: a folder (drop-down menu or tree branch) or a leaf that opens the
// screen named in `form`. The caption "_" is a separator in the menu bar.
struct MenuNode {
    QString code;
    QString caption;
    QString parent;
    QString image;
    QString form;
    int level = 0;
    QList<MenuNode> children;

    bool isSeparator() const { return caption == QLatin1String("_"); }
};

// The nodes the user's groups grant, as a tree of level-1 nodes. A node granted 'S' by any of the
// user's groups is offered; siblings follow Orden, then NumNodo. The explorer tree has no
// separators (`withSeparators` false).
QList<MenuNode> loadUserMenu(const QSqlDatabase& db, const QString& userCode, bool withSeparators);

// The screen a leaf node (EsPadre 0) opens; nothing for a folder or an unknown node.
std::optional<QString> formOfNode(const QSqlDatabase& db, const QString& nodeCode);

// Whether any of the user's groups grants the node ('S'). Opening a screen checks it again, so a
// node reached by other means than the menu stays closed to those without the grant.
bool nodeGranted(const QSqlDatabase& db, const QString& userCode, const QString& nodeCode);
// Whether the user may open the screen `formName` however it is reached (menu, toolbar, a
// shortcut from another screen): a screen of the menu tree only when one of its nodes is granted
// to one of the user's groups; screens outside the menu tree are parts of others and always open.
bool formGranted(const QSqlDatabase& db, const QString& userCode, const QString& formName);

} // namespace orvo::shell
