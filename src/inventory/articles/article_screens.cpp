#include "inventory/articles/article_screens.h"

#include "inventory/articles/articles_screen.h"
#include "inventory/articles/barcode_change_screen.h"
#include "inventory/articles/lots_screen.h"
#include "inventory/articles/serials_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory {

void registerArticleScreens(ArticleServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    auto& r = shell::ScreenRegistry::instance();
    r.add(QStringLiteral("frmArticulos"),
          [s](QWidget* parent) { return new ArticlesScreen(s.database(), s.userCode(), parent); });
    r.add(QStringLiteral("frmEntradaSeriales"),
          [s](QWidget* parent) { return new SerialsScreen(s.database(), s.userCode(), parent); });
    r.add(QStringLiteral("frmLotes"),
          [s](QWidget* parent) { return new LotsScreen(s.database(), s.userCode(), parent); });
    r.add(QStringLiteral("frmAsignarLote"),
          [s](QWidget* parent) { return new AssignLotDialog(s.database(), parent); });
    r.add(QStringLiteral("frmCambiarCodigos"), [s](QWidget* parent) {
        return new BarcodeChangeScreen(s.database(), s.userCode(), parent);
    });
}

} // namespace orvo::inventory
