#pragma once

#include "shell/record_form/master_data.h"

namespace orvo::inventory::counts {

// Adds the count screens to the ScreenRegistry. Without services, the shared connection and the
// logged-in user.
void registerCountScreens(shell::ScreenServices services = {});

} // namespace orvo::inventory::counts
