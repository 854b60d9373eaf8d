#include "app/commands.h"

#include <QApplication>
#include <QMainWindow>

namespace orvo::app {

int runDesktop(int argc, char** argv) {
    QApplication app(argc, argv);
    QMainWindow w;
    w.setObjectName(QStringLiteral("frmPrincipal"));
    w.show();
    return app.exec();
}

} // namespace orvo::app
