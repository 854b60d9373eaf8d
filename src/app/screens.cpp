#include "app/screens.h"

#include "common/rate/rate_screen.h"
#include "exchange/export/exchange_screens.h"
#include "inventory/adjustments/adjustment_screens.h"
#include "inventory/articles/article_screens.h"
#include "inventory/counts/count_screens.h"
#include "inventory/dispatch/dispatch_screens.h"
#include "inventory/prices/price_screens.h"
#include "inventory/purchases/purchase_screens.h"
#include "inventory/stock/stock_screens.h"
#include "inventory/transfers/transfer_screens.h"
#include "pos/cash/cash_screens.h"
#include "pos/fiscal/counter_correction_screen.h"
#include "pos/payments/payment_ways_screen.h"
#include "pos/register/register_screens.h"
#include "pos/returns/return_screen.h"
#include "pos/sale/sale_screen.h"
#include "shell/record_form/master_data.h"
#include "shell/screens/screen_registry.h"
#include "shell/startup/app_state.h"

namespace orvo::app {

void registerAllScreens() {
    // One line per area: each area's register function adds its screens.
    inventory::registerArticleScreens();
    inventory::purchases::registerPurchaseScreens();
    inventory::dispatch::registerDispatchScreens();
    inventory::transfers::registerTransferScreens();
    inventory::stock::registerStockScreens();
    inventory::adjustments::registerAdjustmentScreens();
    inventory::counts::registerCountScreens();
    shell::registerRecordScreens(
        {[] { return shell::mainDb(); }, [] { return shell::session().userCode; }});
    pos::registers::registerScreens();
    pos::fiscal::registerFiscalScreens();
    pos::returns::registerReturnScreens();
    pos::sale::registerSaleScreens();
    pos::cash::registerCashScreens();
    pos::payments::registerPaymentScreens();
    common::rate::registerRateScreens();
    inventory::prices::registerPriceScreens();
    exchange::registerExchangeScreens();
}

} // namespace orvo::app
