#pragma once

#include "inventory/counts/count_types.h"

#include <QSqlDatabase>
#include <optional>

// SQL of the count pages. Writers require the caller's open transaction; readers run anywhere.
namespace orvo::inventory::counts::store {

// PARAMETROS.NumeroConteos: 2 counting passes, anything else one.
int countPasses(const QSqlDatabase& db);
void setCountPasses(const QSqlDatabase& db, int passes);
// Pages in any of the three counts.
bool anyPage(const QSqlDatabase& db);

// --- Counts 1 and 2 ---
// Status of the page in that pass; -1 when it does not exist.
int pageStatus(const QSqlDatabase& db, Pass pass, int number);
void insertPage(const QSqlDatabase& db, Pass pass, const CountPage& page);
// Only while open; false otherwise.
bool updateNote(const QSqlDatabase& db, Pass pass, int number, const QString& note);
// The no-op update that holds an open page while a scan is written; false when it is not open.
bool holdOpenPage(const QSqlDatabase& db, Pass pass, int number);
// Adds the quantity to the barcode's line, inserting it when the page has none; returns the
// line's new quantity.
Decimal addToLine(const QSqlDatabase& db, Pass pass, int number, const QString& barcode,
                  const Decimal& quantity, const QDateTime& at);
bool removeLine(const QSqlDatabase& db, Pass pass, int number, const QString& barcode);
// The page and its lines, only while open.
bool deleteOpenPage(const QSqlDatabase& db, Pass pass, int number);
// Status 0 -> 1; false when it was not open.
bool approvePage(const QSqlDatabase& db, Pass pass, int number);
// One counting pass: the approved count-1 page becomes final as it is, copied into count 2 and
// into an approved count 3 with the three quantities equal; count 1 is processed (2).
void copySingleCount(const QSqlDatabase& db, int number);
std::optional<CountPage> loadPage(const QSqlDatabase& db, Pass pass, int number);
QList<PageSummary> listPages(const QSqlDatabase& db, Pass pass);

// --- Count 3 ---
int finalStatus(const QSqlDatabase& db, int number);
// Header from count 1 (open), Cantidad1 and Cantidad2 the per-barcode sums of counts 1 and 2
// (a barcode only in count 2 with Cantidad1 0), Cantidad3 set where the two agree.
void prepareFinal(const QSqlDatabase& db, int number);
bool holdOpenFinal(const QSqlDatabase& db, int number);
void setFinal(const QSqlDatabase& db, int number, const QString& barcode, const Decimal& quantity,
              const QDateTime& at);
// Status 0 -> 1 and the approved pages of counts 1 and 2 processed (2); false when not open.
bool approveFinal(const QSqlDatabase& db, int number);
std::optional<FinalPage> loadFinal(const QSqlDatabase& db, int number);
// Every page of counts 1, 2 and 3 with its status in each.
QList<PageProgress> pageProgress(const QSqlDatabase& db);

// --- Physical-logical adjustments ---
// The pages that stop the store-wide adjustment: not processed into count 3 (or open).
bool unprocessedPages(const QSqlDatabase& db, Pass pass);
// Count-3 pages: any, and any not approved.
bool anyFinalPage(const QSqlDatabase& db);
bool unapprovedFinalPages(const QSqlDatabase& db);
// A physical-logical adjustment dated on `day`.
bool adjustedOn(const QSqlDatabase& db, const QDate& day);
bool openPages(const QSqlDatabase& db, Pass pass);
bool anyPage(const QSqlDatabase& db, Pass pass);

// The store-wide adjustment's statements, in their order; `at` is the adjustment's moment.
int loadInventory(const QSqlDatabase& db, const QDateTime& at);
void loadCounted(const QSqlDatabase& db, const QDateTime& at);
void computeDifferences(const QSqlDatabase& db, const QDateTime& at);
void replaceStock(const QSqlDatabase& db, const QDateTime& at);
void deleteAllPages(const QSqlDatabase& db);
// Received transfers moved aside: (number, sender, receiver, original date).
struct MovedTransfer {
    long long number = 0;
    QString sender;
    QString receiver;
    QDateTime date;
};
QList<MovedTransfer> movedTransfers(const QSqlDatabase& db);
void logMovedTransfer(const QSqlDatabase& db, long long logNumber, const MovedTransfer& t,
                      const QDateTime& at, const QString& user);
// Dated `at` and counted again (Status 1); their quantities enter the stock counted at `at`.
void bringBackMovedTransfers(const QSqlDatabase& db, const QDateTime& at);
void activateStockedArticles(const QSqlDatabase& db);

// A partial count's differences with the book stock: barcodes counted above (`above`) or below it,
// with the difference and the average cost.
struct Difference {
    QString barcode;
    QString name;
    Decimal book;
    Decimal counted;
    Decimal cost;
};
QList<Difference> partialDifferences(const QSqlDatabase& db);
// What the store-wide adjustment would change: every article (but Status 3) whose count 3 differs
// from its book stock, an article not counted at 0.
QList<Difference> physicalDifferences(const QSqlDatabase& db);
void deleteFirstCount(const QSqlDatabase& db);

} // namespace orvo::inventory::counts::store
