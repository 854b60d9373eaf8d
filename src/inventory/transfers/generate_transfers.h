#pragma once

#include "inventory/purchases/line_sources.h"
#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>

// frmGenerarTransferenciasDeDBF: a supplier's packing list (MOVITRAN.DBF) that the supplier ships
// straight to a branch becomes one transfer per box of the file, approved, never twice: each box
// converted is recorded in TRANSFERENCIASAUTOMATICA. The goods never were in this store, so its
// stock does not move; the lines carry this store's cost for the branch to average in.
namespace orvo::inventory::transfers {

inline const QString kGenerateScreen = QStringLiteral("frmGenerarTransferenciasDeDBF");

struct SupplierBox {
    long long document = 0; // NumTra
    long long box = 0;      // CajaNum
    bool converted = false; // already a transfer for the chosen supplier
};

struct SupplierFile {
    QString path;
    QList<SupplierBox> boxes; // by document, then box
    struct Row {
        long long document = 0;
        long long box = 0;
        QString barcode;
        QString name;
        Decimal quantity;
    };
    QList<Row> rows;
};

// Movitran.dbf of `folder` (any case), read whole: "Debe especificar una ruta que contenga los
// archivos a cargar!" when it is not there, "Archivo DBF no valido!" when it cannot be read.
SupplierFile readSupplierFile(const QString& folder);
// Marks the boxes the supplier's file already gave.
void markConverted(const QSqlDatabase& db, const QString& supplier, SupplierFile& file);

struct SupplierFileCheck {
    QList<purchases::PackingList::Missing> missing;       // not in INVENTARIO
    QList<purchases::PackingList::Missing> withoutValues; // cost, retail or wholesale price 0
    QString missingFile;                                  // written when there are some
    QString withoutValuesFile;
    bool ok() const { return missing.isEmpty() && withoutValues.isEmpty(); }
};
// Checks the file's articles (one line per barcode, its quantities summed) and writes
// "Articulos no existentes.txt" and "Articulos sin valores.txt" in the application folder.
SupplierFileCheck checkSupplierFile(const QSqlDatabase& db, const SupplierFile& file);

struct GenerateRequest {
    QString supplier;
    QString branch;
    QList<SupplierBox> boxes; // the ones to convert
    QString user;
};
// The refusals of the screen, before anything: "Debe seleccionar un archivo MOVITRAN.DBF!",
// "Debe seleccionar un proveedor!", "Debe seleccionar una sucursal!", "Debe seleccionar una
// caja!".
void checkRequest(const SupplierFile* file, const GenerateRequest& request);

struct GenerateResult {
    QList<long long> transfers; // made now, in box order
    int skipped = 0;            // boxes converted before
    bool wholeFile = false;     // every box of the file is converted now
};
// One transaction: per box not converted before, the next transfer number, the header (approved,
// to the branch, the supplier's document as origin), the box's lines summed by barcode at this
// store's cost, and its record in TRANSFERENCIASAUTOMATICA. Refused while the file has articles
// this store has not got or that lack cost or prices.
GenerateResult generateTransfers(const QSqlDatabase& db, const SupplierFile& file,
                                 const GenerateRequest& request);

} // namespace orvo::inventory::transfers
