#pragma once

#include "inventory/purchases/box_kind.h"

#include <QList>
#include <QPair>
#include <QSqlDatabase>
#include <QString>
#include <functional>

// The printed purchase documents, as HTML bodies for grid::printDocument (printer or PDF). Each
// returns an empty text when the document does not exist.
namespace orvo::inventory::purchases {

struct PrintedDocument {
    QString title;
    QString html;
};

// Several documents printed as one, each under its title on a page of its own; `title` names
// them with their numbers ("Transferencias Nº 4, 5").
PrintedDocument joinedDocuments(const QString& title, const QList<long long>& numbers,
                                const std::function<PrintedDocument(long long)>& document);

// A printed document's header: label and value pairs, two to a row.
QString fields(const QList<QPair<QString, QString>>& pairs);

PrintedDocument orderDocument(const QSqlDatabase& db, long long number);
PrintedDocument purchaseDocument(const QSqlDatabase& db, const QString& document,
                                 const QString& supplier);
PrintedDocument purchaseReturnDocument(const QSqlDatabase& db, long long number);
// A reception or remission with its boxes and their total; a box with its lines and total.
PrintedDocument receptionDocument(const QSqlDatabase& db, long long number,
                                  const BoxKind& kind = receptionKind());
PrintedDocument boxDocument(const QSqlDatabase& db, long long reception, long long box,
                            const BoxKind& kind = receptionKind());
PrintedDocument comparisonDocument(const QSqlDatabase& db, long long reception);

} // namespace orvo::inventory::purchases
