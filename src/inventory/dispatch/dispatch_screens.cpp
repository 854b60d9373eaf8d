#include "inventory/dispatch/dispatch_screens.h"

#include "inventory/dispatch/conversion_screen.h"
#include "inventory/dispatch/file_orders_screen.h"
#include "inventory/dispatch/guide_screen.h"
#include "inventory/dispatch/invoice_conversion_screen.h"
#include "inventory/dispatch/order_screen.h"
#include "inventory/dispatch/remission_order_screen.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/dispatch/transfer_conversion_screen.h"
#include "inventory/purchases/reception_screen.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::inventory::dispatch {

void registerDispatchScreens(DispatchServices s) {
    if (!s.database)
        s.database = [] { return shell::mainDb(); };
    if (!s.userCode)
        s.userCode = [] { return shell::session().userCode; };
    if (!s.session)
        s.session = [] { return shell::session(); };
    auto& r = shell::ScreenRegistry::instance();
    r.add(kRemissionScreen, [s](QWidget* parent) {
        return new purchases::ReceptionScreen(s.database(), s.userCode(), parent, remissionKind());
    });
    r.add(kAdjustmentConversionScreen, [s](QWidget* parent) {
        return new AdjustmentConversionScreen(s.database(), s.userCode(), parent);
    });
    r.add(kOrderScreen,
          [s](QWidget* parent) { return new OrderScreen(s.database(), s.session(), parent); });
    const std::pair<QString, OrderSource> toOrder[] = {
        {kRemissionOrderScreen, OrderSource::Remission},
        {kPurchaseOrderScreen, OrderSource::Purchase},
        {kManualOrderScreen, OrderSource::Manual}};
    for (const auto& [name, source] : toOrder)
        r.add(name, [s, source](QWidget* parent) {
            return new RemissionOrderScreen(s.database(), s.session(), source, parent);
        });
    const std::pair<QString, TransferSource> toTransfer[] = {
        {kRemissionTransferScreen, TransferSource::Remission},
        {kPurchaseTransferScreen, TransferSource::Purchase},
        {kReceptionReturnScreen, TransferSource::Reception}};
    for (const auto& [name, source] : toTransfer)
        r.add(name, [s, source](QWidget* parent) {
            return new TransferConversionScreen(s.database(), s.userCode(), source, parent);
        });
    r.add(kFileOrdersScreen,
          [s](QWidget* parent) { return new FileOrdersScreen(s.database(), s.session(), parent); });
    r.add(kInvoiceConversionScreen, [s](QWidget* parent) {
        return new InvoiceConversionScreen(s.database(), s.session(), parent);
    });
    r.add(kGuideScreen, [s](QWidget* parent) { return new GuideScreen(s.database(), parent); });
}

} // namespace orvo::inventory::dispatch
