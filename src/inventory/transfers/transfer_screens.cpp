#include "inventory/transfers/transfer_screens.h"

#include "inventory/transfers/destination_screen.h"
#include "inventory/transfers/generate_screen.h"
#include "inventory/transfers/import_screen.h"
#include "inventory/transfers/move_aside_screen.h"
#include "inventory/transfers/transfer_import.h"
#include "inventory/transfers/transfer_screen.h"
#include "inventory/transfers/transfers.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::transfers {

void registerTransferScreens(TransferServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    auto& r = shell::ScreenRegistry::instance();
    for (Kind kind : {Kind::Transfer, Kind::Return}) {
        const bool transfer = kind == Kind::Transfer;
        r.add(transfer ? kTransferScreen : kReturnScreen, [s, kind](QWidget* parent) {
            return new TransferScreen(kind, s.database(), s.userCode(), parent);
        });
        r.add(transfer ? kImportTransfersScreen : kImportReturnsScreen, [s, kind](QWidget* parent) {
            return new ImportScreen(kind, s.database(), s.userCode(), parent);
        });
    }
    r.add(kChangeDestinationScreen,
          [s](QWidget* parent) { return new DestinationScreen(s.database(), parent); });
    r.add(kMoveAsideScreen,
          [s](QWidget* parent) { return new MoveAsideScreen(s.database(), parent); });
    r.add(kGenerateScreen,
          [s](QWidget* parent) { return new GenerateScreen(s.database(), s.userCode(), parent); });
}

} // namespace orvo::inventory::transfers
