#pragma once

#include <QSqlDatabase>
#include <QString>
#include <functional>

namespace orvo::inventory::transfers {

// What the transfer screens borrow from the running program.
struct TransferServices {
    std::function<QSqlDatabase()> database;
    std::function<QString()> userCode;
};

// Adds frmTransferencias, frmDevTransferencias, frmImpTransferencias, frmImpDevTransferencias,
// frmCambiarDestinoTrans, frmDesplazarTransferencias and frmGenerarTransferenciasDeDBF to the
// ScreenRegistry. Without services, the shared connection and the logged-in user.
void registerTransferScreens(TransferServices services = {});

} // namespace orvo::inventory::transfers
