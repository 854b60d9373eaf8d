#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <functional>

// SQL of what a transfer package carries: the selections of each of its tables for a set of
// documents, read by field name.
namespace orvo::inventory::transfers::store {

enum class PackagePart {
    Summary,       // the headers (RESUTRAN, RESUDVTR)
    Lines,         // their lines with the article's name (MOVITRAN, MOVIDVTR)
    Articles,      // the variants on the lines (INVENTAR)
    Brands,        // MARCAS
    Sizes,         // TALLAS
    Colours,       // COLORES
    Categories,    // CATEGORI
    Manufacturers, // FABRICA
    Lots,          // LOTE
    DispatchTypes, // TIDESPAC
};

// Runs the selection of `part` for the documents `numbers` of `kind` and hands each row over.
void selectPart(const QSqlDatabase& db, Kind kind, PackagePart part,
                const QList<long long>& numbers, const std::function<void(const QSqlRecord&)>& row);

} // namespace orvo::inventory::transfers::store
