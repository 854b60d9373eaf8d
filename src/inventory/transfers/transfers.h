#pragma once

#include "inventory/purchases/line_sources.h"
#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>
#include <functional>
#include <optional>

// The actions of transfers and transfer returns: each one that writes opens and closes one
// transaction. Refusals throw UserError with the message the user reads.
namespace orvo::inventory::transfers {

inline const QString kTransferScreen = QStringLiteral("frmTransferencias");
inline const QString kReturnScreen = QStringLiteral("frmDevTransferencias");
inline const QString kChangeDestinationScreen = QStringLiteral("frmCambiarDestinoTrans");
inline const QString kMoveAsideScreen = QStringLiteral("frmDesplazarTransferencias");

// What a long save is doing, for the screen's status line.
using Progress = std::function<void(const QString& text)>;

// "Transferencia" / "Devolución de transferencia", for titles.
QString kindName(Kind kind);

// An article keyed on a transfer: its name and, as the line's value, its average cost now. An
// unknown barcode is refused; on a transfer an article without cost is refused ("No se puede
// transferir el artículo con costo cero...!"): its cost would travel as nothing.
DocumentLine articleLine(const QSqlDatabase& db, Kind kind, const QString& barcode,
                         const Decimal& quantity, long long box);

// The lines of another document (an adjustment, a return, a file, an order) checked as keyed
// lines: the articles this store has, at their cost, and the rest left out for the user.
struct CheckedLines {
    QList<DocumentLine> lines;
    QList<purchases::PackingList::Missing> missing; // unknown here, or (transfers) without cost
};
CheckedLines checkLines(const QSqlDatabase& db, Kind kind, const QList<DocumentLine>& lines);

// Before the approval question: a receiving branch other than this store, a line, and no line
// with quantity 0.
void checkTransfer(const QSqlDatabase& db, const Transfer& t);

// Guardar: in one transaction, the checks again, the header (inserted under the next number, or
// updated while open), the lines keyed by (barcode, box) in their order and, when `approve`, the
// approval: per barcode its units summed leave stock (a transfer) or enter it (a return) once,
// every line takes the variant's average cost as its value, and TotalValor is Σ units × cost.
// The costs of this store do not change. Returns the number.
long long saveTransfer(const QSqlDatabase& db, Transfer t, bool approve,
                       const Progress& progress = {});
// The same inside the caller's open transaction (a conversion that writes a transfer along with
// its own document).
long long writeTransfer(const QSqlDatabase& db, Transfer t, bool approve,
                        const Progress& progress = {});
// Only an open document.
void deleteTransfer(const QSqlDatabase& db, Kind kind, long long number);
std::optional<Transfer> loadTransfer(const QSqlDatabase& db, Kind kind, long long number);
QList<DocumentSummary> listTransfers(const QSqlDatabase& db, Kind kind);

// frmCambiarDestinoTrans: an approved (or exported) document goes to another branch.
void changeDestination(const QSqlDatabase& db, Kind kind, long long number,
                       const QString& receiver);

// frmDesplazarTransferencias: received transfers entered between the two days (the last one
// whole), and the moving aside of the ticked ones (Status 2) and back of the others (1).
QList<ReceivedSummary> receivedTransfers(const QSqlDatabase& db, const QDate& from,
                                         const QDate& to);
struct AsideChoice {
    long long number = 0;
    QString sender;
    bool aside = false;
};
void moveAside(const QSqlDatabase& db, const QList<AsideChoice>& choices);

} // namespace orvo::inventory::transfers
