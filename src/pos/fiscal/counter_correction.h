#pragma once

#include "pos/fiscal/register_check.h"

#include <QSqlDatabase>
#include <QString>

namespace orvo::pos::fiscal {

// The invoice and return counters of this register (CAJAS) or of the company (PARAMETROS when
// ControlFactura is 2), corrected by hand to follow the fiscal printer.
RegisterCounters currentCounters(const QSqlDatabase& db, const QString& serial, int controlFactura);

// Writes the new counters. The invoice counter must be the printer's; the return counter may
// only grow or stay. Throws UserError otherwise.
void correctCounters(const QSqlDatabase& db, const QString& serial, int controlFactura,
                     int lastInvoice, int lastReturn, int printerLastInvoice);

} // namespace orvo::pos::fiscal
