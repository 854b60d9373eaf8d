#pragma once

#include "inventory/purchases/purchase_print.h"

#include <QSqlDatabase>

// Printed dispatch documents (printer or PDF). Remissions print as receptions do
// (purchases::receptionDocument with the remission kind).
namespace orvo::inventory::dispatch {

// The dispatch order with its client, lines and totals.
purchases::PrintedDocument orderDocument(const QSqlDatabase& db, long long number);
purchases::PrintedDocument adjustmentDocument(const QSqlDatabase& db, long long number);
// The guide with its driver, vehicle and the remissions it carries (boxes and units, totalled).
purchases::PrintedDocument guideDocument(const QSqlDatabase& db, long long number);

} // namespace orvo::inventory::dispatch
