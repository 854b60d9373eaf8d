#include "exchange/export/exchange_screens.h"

#include "exchange/export/closing_export.h"
#include "exchange/export/export_screen.h"
#include "exchange/mail/mail_screen.h"
#include "shell/main_window/main_window.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/main_connection.h"

#include <QApplication>

namespace orvo::exchange {

namespace {

using exporting::ClosingExportPlan;
using exporting::ExportFormat;
using exporting::ExportScreen;

shell::MainWindow* mainWindow() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* main = qobject_cast<shell::MainWindow*>(w))
            return main;
    return nullptr;
}

// The closing's runs one after the other, each on its screen: the next starts when the previous
// one's mail is done.
void runClosingExport(const ClosingExportPlan& plan, int index) {
    if (index >= plan.runs.size())
        return;
    const QString form = ExportScreen::formName(plan.runs[index]);
    QWidget* w = nullptr;
    if (auto* main = mainWindow()) {
        // Part of the closing the cashier may run, though the export's own screen is not his.
        w = main->openForm(form, shell::MainWindow::Access::WorkOfAGrantedScreen);
    } else {
        w = shell::ScreenRegistry::instance().create(form, nullptr);
        if (w) {
            w->setAttribute(Qt::WA_DeleteOnClose);
            w->show();
        }
    }
    auto* screen = qobject_cast<ExportScreen*>(w);
    if (!screen)
        return;
    QObject::connect(
        screen, &ExportScreen::runFinished, screen,
        [plan, index] { runClosingExport(plan, index + 1); }, Qt::SingleShotConnection);
    screen->startExport(plan.from, plan.to, QString::fromLatin1(ExportScreen::kClosingOrigin));
}

} // namespace

void registerExchangeScreens(ExchangeServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    auto& r = shell::ScreenRegistry::instance();
    for (const ExportFormat f : {ExportFormat::Orvo, ExportFormat::Vandu, ExportFormat::Xml})
        r.add(ExportScreen::formName(f),
              [s, f](QWidget* parent) { return new ExportScreen(s.database(), f, parent); });
    r.add(QStringLiteral("frmEnvioTraNet"),
          [s](QWidget* parent) { return new mail::MailScreen(s.database(), false, parent); });
    r.add(QStringLiteral("fmEnvioTraNet2"),
          [s](QWidget* parent) { return new mail::MailScreen(s.database(), true, parent); });
    exporting::setClosingExportLauncher(
        [](const QSqlDatabase&, const ClosingExportPlan& plan) { runClosingExport(plan, 0); });
}

} // namespace orvo::exchange
