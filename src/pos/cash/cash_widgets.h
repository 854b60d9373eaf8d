#pragma once

#include "common/dialogs/screen_widgets.h"

// The pieces the cash screens are built from: the common screen builders.
namespace orvo::pos::cash {
using orvo::actionButton;
using orvo::inputField;
using orvo::listTable;
using orvo::shownField;
} // namespace orvo::pos::cash
