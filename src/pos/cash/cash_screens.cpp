#include "pos/cash/cash_screens.h"

#include "pos/cash/closing_screen.h"
#include "pos/cash/deposit_confirmation_screen.h"
#include "pos/cash/deposits_screen.h"
#include "pos/cash/foreign_closing_screen.h"
#include "pos/cash/opening_screen.h"
#include "pos/cash/withdrawals_screen.h"
#include "pos/fiscal/register_printer.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::pos::cash {

void registerCashScreens() {
    auto& r = shell::ScreenRegistry::instance();
    r.add(QStringLiteral("frmAperturaCaja"), [](QWidget* parent) {
        return new OpeningScreen(shell::mainDb(), shell::session(), fiscal::registerPrinter(),
                                 parent);
    });
    r.add(QStringLiteral("frmSalidasCaja"), [](QWidget* parent) {
        return new WithdrawalsScreen(shell::mainDb(), shell::session(), parent);
    });
    r.add(QStringLiteral("frmDepositos"), [](QWidget* parent) {
        return new DepositsScreen(shell::mainDb(), shell::session(), parent);
    });
    r.add(QStringLiteral("frmConfirmarDepositos"), [](QWidget* parent) {
        return new DepositConfirmationScreen(shell::mainDb(), shell::session(), parent);
    });
    r.add(QStringLiteral("frmCierreCaja"), [](QWidget* parent) {
        return new ClosingScreen(shell::mainDb(), shell::session(), fiscal::registerPrinter(),
                                 parent);
    });
    r.add(QStringLiteral("frmCierreCajaForanea"), [](QWidget* parent) {
        return new ForeignClosingScreen(shell::mainDb(), shell::session(),
                                        fiscal::registerPrinter(), parent);
    });
}

} // namespace orvo::pos::cash
