#pragma once

#include "shell/record_form/master_data.h"

namespace orvo::inventory::adjustments {

// Adds frmAjustes to the ScreenRegistry. Without services, the shared connection and the
// logged-in user.
void registerAdjustmentScreens(shell::ScreenServices services = {});

} // namespace orvo::inventory::adjustments
