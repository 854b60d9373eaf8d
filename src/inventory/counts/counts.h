#pragma once

#include "inventory/counts/count_types.h"
#include "inventory/purchases/purchase_print.h"

#include <QSqlDatabase>
#include <functional>
#include <optional>

// The actions of the count pages: each one that writes opens and closes one transaction.
// Refusals throw UserError with the message the user reads.
namespace orvo::inventory::counts {

inline const QString kFirstCountScreen = QStringLiteral("frmTomaFisica1");
inline const QString kSecondCountScreen = QStringLiteral("frmTomaFisica2");
inline const QString kFinalCountScreen = QStringLiteral("frmTomaFisica3");
inline const QString kPartialCountScreen = QStringLiteral("frmTomaParcial");
inline const QString kBatchApprovalScreen = QStringLiteral("frmAprobarConteosEnLotes");

// PARAMETROS.NumeroConteos: 1 or 2 counting passes.
int countPasses(const QSqlDatabase& db);
// Changed only while no count has pages.
void setCountPasses(const QSqlDatabase& db, int passes);

// A new page (zone) in a pass, open. Its number is the zone's: new in its pass, and in count 2
// one that count 1 has.
void createPage(const QSqlDatabase& db, Pass pass, CountPage page);
// The note of an open page.
void saveNote(const QSqlDatabase& db, Pass pass, int number, const QString& note);
// One scan (or a typed quantity) into an open page: the barcode's line grows by `quantity`, so
// the page keeps one line per barcode. Unknown barcodes, services and articles kept out of counts
// are refused; an article without cost is counted and flagged so the screen can say so.
Scan scan(const QSqlDatabase& db, Pass pass, int page, const QString& barcode,
          const Decimal& quantity);
void removeLine(const QSqlDatabase& db, Pass pass, int page, const QString& barcode);
// Only an open page, with its lines.
void deletePage(const QSqlDatabase& db, Pass pass, int number);
// Approving a page closes it. With one counting pass a count-1 page is final at once (copied into
// counts 2 and 3). A page of a partial count is only closed: the partial adjustment takes it.
void approvePage(const QSqlDatabase& db, Pass pass, int number, bool partialCount = false);
std::optional<CountPage> loadPage(const QSqlDatabase& db, Pass pass, int number);
QList<PageSummary> listPages(const QSqlDatabase& db, Pass pass);
// The status as the count screens show it.
QString statusText(const PageSummary& page, bool partialCount = false);

// --- Approval in batches (one counting pass) ---
// Refused with two counting passes.
void checkBatchApproval(const QSqlDatabase& db);
// The open count-1 pages, with their totals.
QList<PageSummary> pagesToApprove(const QSqlDatabase& db);
// Approves each page in turn ("Aprobando Toma Nº :" n " de " m), each in its own transaction;
// returns how many were approved.
int approveInBatch(
    const QSqlDatabase& db, const QList<int>& pages,
    const std::function<void(int done, int total, const QString& label)>& progress = {});

// --- Count 3 ---
// Count 3 of a page whose counts 1 and 2 are approved.
void prepareFinal(const QSqlDatabase& db, int page);
// Keys the final quantity of a barcode on an open count-3 page (a barcode neither team found
// joins the page).
void keyFinal(const QSqlDatabase& db, int page, const QString& barcode, const Decimal& quantity);
// Approves count 3 of the page; counts 1 and 2 of it are then processed.
void approveFinal(const QSqlDatabase& db, int page);
std::optional<FinalPage> loadFinal(const QSqlDatabase& db, int page);
QList<PageProgress> pageProgress(const QSqlDatabase& db);

// --- Count sheets ---
// "Conteo 1", "Conteo 2" with the page's lines; "Conteo 3" with the three quantities.
purchases::PrintedDocument countSheet(const QSqlDatabase& db, Pass pass, int page);
purchases::PrintedDocument finalSheet(const QSqlDatabase& db, int page);

} // namespace orvo::inventory::counts
