#pragma once

#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace orvo::inventory {

// What the article screens borrow from the running program.
struct ArticleServices {
    std::function<QSqlDatabase()> database;
    std::function<QString()> userCode;
};

// Adds frmArticulos, frmEntradaSeriales, frmLotes, frmAsignarLote and frmCambiarCodigos to the
// ScreenRegistry. Without services, the shared connection and the logged-in user.
void registerArticleScreens(ArticleServices services = {});

} // namespace orvo::inventory
