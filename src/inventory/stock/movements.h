#pragma once

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// The movement history of an article is never stored on its own: it is read back from the
// document tables. These are the documents that move stock, in the order the rebuild applies them,
// with the sign each one moves it by and which of its states count.
namespace orvo::inventory::stock {

struct MovementKind {
    QString step;   // progress label of the rebuild, "Compras..."
    QString name;   // as the stock card names it, "Compras"
    QString header; // COMPRAS
    QString lines;  // MOVCOMPRAS
    QString join;   // lines M to header H
    QString filter; // on H: which documents count
    QString key;    // H's key columns, comma separated (the card groups a document's lines)
    QString label;  // the document as the card shows it, from H's key columns
    int sign = 1;   // +1 enters stock, -1 leaves it
};

// Purchases, purchase returns, transfers sent, transfer returns issued, sales, sales returns,
// negative and positive adjustments, received transfers and received transfer returns. Received
// transfers moved aside (Status 2) are left out; every other kind counts its exported ones.
const QList<MovementKind>& movementKinds();

// The window of documents that make today's stock: from the last physical-logical adjustment
// (its exact moment), or without one from the earliest FechaPrimerMovimiento of the catalogue;
// up to today at 23:59:00.
struct StockPeriod {
    std::optional<QDateTime> lastCount; // the last physical-logical adjustment, if any
    QDateTime from;
    QDateTime to;
};
StockPeriod stockPeriod(const QSqlDatabase& db, const QDate& today = QDate::currentDate());

// Every physical-logical adjustment, oldest first.
QList<QDateTime> countMoments(const QSqlDatabase& db);

} // namespace orvo::inventory::stock
