#pragma once

#include "inventory/purchases/purchase_print.h"
#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>

// The printed transfer and transfer return (printer or PDF): the header, then the lines box by
// box, each box closed by its "Total Caja Nº " line, and the document's total. Empty when the
// document does not exist.
namespace orvo::inventory::transfers {

using purchases::PrintedDocument;

PrintedDocument transferDocument(const QSqlDatabase& db, Kind kind, long long number);

} // namespace orvo::inventory::transfers
