#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>

// Documents that leave (or come back to) this store as a transfer: an approved remission or
// purchase becomes an approved transfer, an approved reception an approved transfer return. The
// transfer is written by the transfers' own save, in the conversion's one transaction, so its
// stock and values follow the transfer's rules; the source is converted once only.
namespace orvo::inventory::dispatch {

inline const QString kRemissionTransferScreen = QStringLiteral("frmConvRemTransfer");
inline const QString kPurchaseTransferScreen = QStringLiteral("frmConvCompTransfer");
inline const QString kReceptionReturnScreen = QStringLiteral("frmConvRecDevTransfer");

enum class TransferSource { Remission, Purchase, Reception };

struct TransferRequest {
    TransferSource source = TransferSource::Remission;
    long long number = 0; // the remission or reception
    QString document;     // the purchase's Documento and Proveedor
    QString supplier;
    QString receiver;     // the purchase's destination branch (the others go to their own)
    int dispatchType = 0; // IDDespacho; required from a remission
    QString user;
};

// The transfer the conversion writes, its lines by barcode and box at today's average cost.
// Refused when the source does not exist, is not approved or was converted already.
transfers::Transfer previewTransfer(const QSqlDatabase& db, const TransferRequest& request);
// The same with the user's choices checked: the dispatch type of a remission, the destination.
transfers::Transfer transferFor(const QSqlDatabase& db, const TransferRequest& request);

// Writes the approved transfer (stock out; a return: stock in), marks the source converted and
// logs the pair ('RM', 'CO' → 'TS'; 'RC' → 'DT'). Returns the transfer's number.
long long convertToTransfer(const QSqlDatabase& db, const TransferRequest& request);

// True when the purchase was converted into another document already.
bool purchaseConverted(const QSqlDatabase& db, const QString& document, const QString& supplier);
// The approved, not yet converted purchase, or the refusal the user reads.
void checkPurchaseConvertible(const QSqlDatabase& db, const QString& document,
                              const QString& supplier);

} // namespace orvo::inventory::dispatch
