#include "shell/main_window/about_screen.h"

#include "common/build_info/build_info.h"
#include "common/db/connection.h"
#include "shell/startup/app_home.h"
#include "shell/startup/app_state.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace orvo::shell {

AboutScreen::AboutScreen(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAcercaDe"));
    setWindowTitle(QStringLiteral("Acerca de ") + session().systemCode);
    auto* title = new QLabel(QStringLiteral("<b>Orvo</b> — ") + session().systemCode, this);
    auto* version = new QLabel(QStringLiteral("Versión ") + versionString(), this);
    version->setObjectName(QStringLiteral("lblVersion"));
    const QString database = mainConnectionOpen() ? db::describe(mainDb()) : QString();
    auto* details = new QLabel(QStringLiteral("Empresa: %1\nBase de datos: %2\nCarpeta: %3")
                                   .arg(session().nombre, database, appHome()),
                               this);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(version);
    layout->addWidget(details);
    layout->addWidget(buttons);
}

} // namespace orvo::shell
