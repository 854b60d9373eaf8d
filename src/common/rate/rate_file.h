#pragma once

#include "common/decimal/decimal.h"

#include <QString>

namespace orvo::common::rate {

// The folder where head office prepares the rate file for the stores: ZipTemp under the
// application folder.
QString rateFileFolder();

// Writes the rate as one line ("36.5", '.' as decimal separator) into TasaCambio.txt of the rate
// file folder, the name the stores read it by in their Recibe folder. Returns its path; UserError
// when it cannot be written.
QString writeRateFile(const Decimal& value);

} // namespace orvo::common::rate
