#pragma once

#include "inventory/articles/article_types.h"
#include "inventory/purchases/purchase_types.h"

#include <QSqlDatabase>

// Where a purchase's or a box's lines come from besides the keyboard: an approved order
// (purchases.h), the invoices a sister company issued to this one from its own database, and a
// packing list (MOVITRAN.DBF) another store exported.
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

// A sister company's database, open while the object lives.
class SisterDatabase {
public:
    SisterDatabase(const QSqlDatabase& own, const SisterCompany& company);
    ~SisterDatabase();
    SisterDatabase(const SisterDatabase&) = delete;
    SisterDatabase& operator=(const SisterDatabase&) = delete;
    const QSqlDatabase& db() const { return m_db; }

private:
    QString m_name;
    QSqlDatabase m_db;
};

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

// What a packing list may bring: any article of the catalogue (a purchase), or only active
// articles with a positive average cost (a reception box).
enum class PackingCheck { Exists, ActiveWithCost };

struct PackingList {
    QList<DocumentLine> lines; // summed by barcode, in the order they first appear
    struct Missing {
        QString barcode;
        QString name; // as the packing list names it
        Decimal quantity;
    };
    QList<Missing> missing; // left out by the check
};
// Reads a packing list (CodBarra, Cantidad; Nombre, Valor and CajaNum when present), checked
// before anything is used: a missing, truncated or foreign file is refused. The quantities of a
// barcode are summed (per box when `byBox`: each line then carries its CajaNum, 1 when the file
// has none); its price is the Valor of its first record.
PackingList readPackingList(const QSqlDatabase& db, const QString& path, PackingCheck check,
                            bool byBox = false);
// Writes "Articulos no existentes.txt" in the application folder, one barcode a line with its
// name and quantity; returns its path.
QString writeMissingArticles(const QList<PackingList::Missing>& missing);
// The same list under another name of the application folder ("Articulos sin valores.txt").
QString writeArticleList(const QString& fileName, const QList<PackingList::Missing>& articles);

} // namespace orvo::inventory::purchases
