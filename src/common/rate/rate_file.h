#pragma once

#include "common/decimal/decimal.h"

#include <QString>

namespace orvo::common::rate {

// The folder where head office prepares the rate file for the stores: ZipTemp under the
// application folder.
QString rateFileFolder();

// Writes the rate as one line ("36.5", '.' as decimal separator) into TasaCambio.txt of the rate
// file folder, the name the stores read it by in their Recibe folder, and packs it into
// TasaCambio.zip in `exportFolder`, where it travels to the stores like any other package.
// Returns the archive's path; UserError when either cannot be written.
QString writeRateFile(const Decimal& value, const QString& exportFolder);

} // namespace orvo::common::rate
