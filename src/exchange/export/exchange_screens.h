#pragma once

#include <QSqlDatabase>
#include <functional>

namespace orvo::exchange {

// What the exchange screens borrow from the running program.
struct ExchangeServices {
    std::function<QSqlDatabase()> database;
};

// Adds frmExpArchivosOrvo, frmExpArchivos, frmExpArchivosXML, frmEnvioTraNet and fmEnvioTraNet2
// to the ScreenRegistry, and makes the closing start its export on these screens (inside the main
// window when there is one). Without services, the shared connection.
void registerExchangeScreens(ExchangeServices services = {});

} // namespace orvo::exchange
