#pragma once

#include "inventory/purchases/box_kind.h"

// Remissions: goods counted box by box for a branch, the outgoing twin of the reception. They
// share the reception's box mechanics (inventory/purchases/receptions.h) on their own tables.
namespace orvo::inventory::dispatch {

inline const QString kRemissionScreen = QStringLiteral("frmRemision");

const purchases::BoxKind& remissionKind();

} // namespace orvo::inventory::dispatch
