#pragma once

#include <QString>

namespace orvo::exchange::package {

// The dBase name of a store column in the exchange files. dBase names have at most ten
// characters, so the long column names travel under fixed short names (NumeroFactura → NumFac,
// CodigoBarra → CodBar, Descripcion → Descripcio, ...); a few short ones have their historic
// name too (Documento → Document, Proveedor → Proveedo). Other columns keep their own name.
// Matching ignores case. The same name serves every table: what a column is called in one file
// it is called in all of them.
QString dbfName(const QString& column);

// True when `column` has a fixed short name (used by the template checks).
bool hasFixedDbfName(const QString& column);

} // namespace orvo::exchange::package
