#pragma once

#include "inventory/purchases/box_kind.h"
#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>
#include <optional>

// Receptions: what arrived, counted box by box by each user, compared afterwards with what the
// purchases invoiced. A reception moves no stock.
namespace orvo::inventory::purchases {

inline const QString kReceptionScreen = QStringLiteral("frmRecepcion");
inline const QString kComparisonScreen = QStringLiteral("frmCompararRecepcionCompra");

// Saves the reception's header and the purchases it covers (a new one takes the next number).
// Returns the number.
long long saveReception(const QSqlDatabase& db, Reception reception,
                        const BoxKind& kind = receptionKind());
void deleteReception(const QSqlDatabase& db, long long number,
                     const BoxKind& kind = receptionKind());
std::optional<Reception> loadReception(const QSqlDatabase& db, long long number,
                                       const BoxKind& kind = receptionKind());
QList<DocumentSummary> listReceptions(const QSqlDatabase& db,
                                      const BoxKind& kind = receptionKind());

// The approved purchases with the invoice number typed; refused when nothing is typed or none is
// found.
QList<CoveredPurchase> purchasesNumbered(const QSqlDatabase& db, const QString& document);
// Adds a purchase to the reception's list; refused when it is there already.
void coverPurchase(Reception& reception, const CoveredPurchase& purchase);

// The box the user works on: his last box while it is open, otherwise a new one (number 0).
Box currentBox(const QSqlDatabase& db, long long reception, const QString& user,
               const BoxKind& kind = receptionKind());
// A scanned article counted into the box: the same barcode adds to its line.
void countInto(Box& box, const BoxLine& line);
// GuardarCaja: writes the box whole (a new box takes the next number) and, when `close`, closes
// it. Refused on an approved reception or a closed box. Returns the box number.
long long saveBox(const QSqlDatabase& db, long long reception, const Box& box, bool close,
                  const BoxKind& kind = receptionKind());
// Before the question: only the reception's last box may be deleted.
void checkBoxDeletion(const QSqlDatabase& db, long long reception, long long box,
                      const BoxKind& kind = receptionKind());
void deleteBox(const QSqlDatabase& db, long long reception, long long box,
               const BoxKind& kind = receptionKind());
QList<BoxSummary> receptionBoxes(const QSqlDatabase& db, long long reception,
                                 const BoxKind& kind = receptionKind());
std::optional<Box> loadBox(const QSqlDatabase& db, long long reception, long long box,
                           const BoxKind& kind = receptionKind());

// Before the question "Desea Aprobar la Recepción ?": boxes exist and all are closed.
void checkReceptionApproval(const QSqlDatabase& db, long long reception,
                            const BoxKind& kind = receptionKind());
// Aprobar: the checks again and the guarded update; a reception approved meanwhile by another
// user is refused with "La recepción no existe o ya fue aprobada por otro usuario...!".
// The user and this workstation's address are kept where the document records them.
void approveReception(const QSqlDatabase& db, long long reception, const QString& user = {},
                      const BoxKind& kind = receptionKind());

// What was counted against what was invoiced, by barcode.
QList<ComparisonLine> compareReception(const QSqlDatabase& db, long long reception,
                                       const BoxKind& kind = receptionKind());

// The local backup of a box's grid, so a crash or a pulled cable loses no scanning.
struct BoxBackup {
    long long reception = 0;
    long long box = 0;
    QString user;
    QList<BoxLine> lines;
};
// Recepcion.SS7 in the application folder.
QString boxBackupPath(const BoxKind& kind = receptionKind());
void writeBoxBackup(const QString& path, const BoxBackup& backup,
                    const BoxKind& kind = receptionKind());
// Nothing when there is no file or it is not a box backup.
std::optional<BoxBackup> readBoxBackup(const QString& path, const BoxKind& kind = receptionKind());

} // namespace orvo::inventory::purchases
