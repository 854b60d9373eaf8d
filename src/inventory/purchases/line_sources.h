#pragma once

#include "inventory/articles/article_types.h"
#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>

// Where a purchase's lines come from besides the keyboard: an approved order (purchases.h), and
// the invoices a sister company issued to this one from its own database.
namespace orvo::inventory::purchases {

// EMPRESAS: a sister company whose database lives on the same server.
struct SisterCompany {
    QString code;
    QString name;
    QString database; // BaseDatos
};
QList<SisterCompany> sisterCompanies(const QSqlDatabase& db);

// Opens the sister company's database: on PostgreSQL the database of that name on this
// connection's server, with its credentials; with the embedded engine the SQLite file of that name
// beside this one (data/<BaseDatos>.sqlite; a name with an extension is taken as it is), or
// the path itself when BaseDatos is one. A file
// that does not exist is refused, never created.
QSqlDatabase openSisterDatabase(const QSqlDatabase& own, const SisterCompany& company,
                                const QString& connectionName);

struct SisterInvoice {
    long long number = 0;
    QString serie;
    QDateTime date;
    Decimal total;
    QString document() const { return QString::number(number); }
};
// The sales invoices the sister company issued to this company (its client code is this
// company's RIF, with or without dashes), newest first, leaving out those already entered as a
// purchase from `supplier`.
QList<SisterInvoice> sisterInvoices(const QSqlDatabase& own, const QSqlDatabase& sister,
                                    const QString& supplier);

struct LoadedLines {
    QList<DocumentLine> lines;
    QStringList created;  // articles this store did not have, created from the sister's catalogue
    QStringList notFound; // barcodes the sister's catalogue has not either
};
// The invoice's lines at the price the sister charged (after its discount). An article unknown
// here is created from the sister's catalogue (inactive until received, no stock, no cost) with
// the prices of its model here when the model exists, and logged in LOG_ARTICULOS; one
// transaction.
LoadedLines loadSisterInvoice(const QSqlDatabase& own, const QSqlDatabase& sister,
                              const SisterInvoice& invoice, const ArticleWriter& writer);

} // namespace orvo::inventory::purchases
