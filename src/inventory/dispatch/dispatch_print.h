#pragma once

#include "inventory/purchases/purchase_print.h"

#include <QSqlDatabase>

// The printed documents the conversions produce (printer or PDF).
namespace orvo::inventory::dispatch {

purchases::PrintedDocument adjustmentDocument(const QSqlDatabase& db, long long number);

} // namespace orvo::inventory::dispatch
