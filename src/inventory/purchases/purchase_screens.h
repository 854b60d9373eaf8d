#pragma once

#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace orvo::inventory::purchases {

// What the purchase screens borrow from the running program.
struct PurchaseServices {
    std::function<QSqlDatabase()> database;
    std::function<QString()> userCode;
};

// Adds frmOrdenCompras, frmCompras, frmDevCompra, frmRecepcion and frmCompararRecepcionCompra to
// the ScreenRegistry. Without services, the shared connection and the logged-in user.
void registerPurchaseScreens(PurchaseServices services = {});

} // namespace orvo::inventory::purchases
