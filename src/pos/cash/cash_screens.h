#pragma once

namespace orvo::pos::cash {
// Adds the cash session's screens (opening, withdrawals, deposits, their confirmation, closing)
// to the ScreenRegistry.
void registerCashScreens();
} // namespace orvo::pos::cash
