#pragma once

#include "inventory/articles/article_types.h"
#include "inventory/prices/price_lists.h"

#include <QSqlDatabase>
#include <QStringList>
#include <optional>

// Price lists received from head office (frmImpListaPrecios, `orvo import`): lista.zip or
// listae.zip (stores exempt from tax) holding ResuList.dbf and MoviList.dbf, or those tables
// left loose in Recibe, or the ResLista.dbf / MovLista.dbf pair of the other system.
namespace orvo::inventory::prices {

inline const QString kImportListsScreen = QStringLiteral("frmImpListaPrecios");

struct ReceivedList {
    int sourceNumber = 0; // head office's number
    PriceList list;       // as it came: its date, factors, note and lines
};

struct ReceivedLists {
    QString source;    // what it was read from, for messages
    QStringList files; // what is removed once it is loaded
    QList<ReceivedList> lists;
};

// A rate or transfers received and not loaded yet come first: "Debe cargar la tasa de cambio
// pendiente...!" (only while ImpTasa is on: otherwise the store does not load rates) and
// "Debe cargar las transferencias...!".
void checkNothingPendingBeforeLists(const QSqlDatabase& db, const QString& recibeFolder);

// What lies in Recibe, read whole and checked; nothing when no list was received. UserError on a
// file that is missing a table, truncated or not a dBase table.
std::optional<ReceivedLists> readReceivedLists(const QString& recibeFolder);

struct ReceivedLoad {
    QList<int> numbers;    // the store's numbers of the lists loaded
    int alreadyLoaded = 0; // lists of the package that were loaded before
    int articlesUpdated = 0;
};

// Loads every list not loaded before under the store's next number, its origin kept in
// Observacion ("CASA MATRIZ Nº 12 DEL 10/05/2026: ..."); the prices are taken as head office
// sent them. With `approve` the lists are approved, with `applyToInventory` too their prices go
// into every variant of their models. One transaction; then the received files are removed, so a
// package is loaded once.
ReceivedLoad loadReceivedLists(const QSqlDatabase& db, const ReceivedLists& received,
                               const SaveOptions& options, const ArticleWriter& writer);

// The lines of MoviList.dbf or MovLista.dbf lying in Recibe, to key into a list on
// frmListaPrecios. UserError when neither is there.
QList<PriceLine> linesFromReceivedFile(const QString& recibeFolder);

// `orvo import`: the received lists loaded approved and into the inventory, after the rate and
// the transfers (order 30).
void registerPriceListLoader();

} // namespace orvo::inventory::prices
