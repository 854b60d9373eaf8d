#pragma once

#include "inventory/transfers/generate_transfers.h"
#include "pos/sale/sale_types.h"
#include "shell/session/session_context.h"

#include <QSqlDatabase>

// frmGenerarOrdenDespDesdeDBF: a supplier's packing list (MOVITRAN.DBF, read as the transfers
// read it) becomes dispatch orders for one client: one approved order per document of the file
// (its boxes summed by barcode), priced and checked as a keyed order, never twice: each document
// converted is recorded in ORDENDESPACHOAUTOMATICA.
namespace orvo::inventory::dispatch {

inline const QString kFileOrdersScreen = QStringLiteral("frmGenerarOrdenDespDesdeDBF");

struct FileDocument {
    long long document = 0; // NumTra
    int boxes = 0;
    bool converted = false; // already an order for this supplier
};
QList<FileDocument> fileDocuments(const QSqlDatabase& db, const QString& supplier,
                                  const transfers::SupplierFile& file);

struct FileOrdersRequest {
    QString supplier;
    pos::sale::SaleClient client;
    QList<long long> documents;
};
struct FileOrdersResult {
    QList<long long> orders; // made now, in document order
    int skipped = 0;         // documents converted before
    bool wholeFile = false;  // every document of the file is an order now
};
// One transaction. Refused before anything when a choice is missing, and while the file has
// articles this store has not got or that lack cost or prices (both lists are written).
FileOrdersResult generateOrders(const QSqlDatabase& db, const shell::SessionContext& ctx,
                                const transfers::SupplierFile* file,
                                const FileOrdersRequest& request);

} // namespace orvo::inventory::dispatch
