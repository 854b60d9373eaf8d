#pragma once

#include "common/decimal/decimal.h"

#include <QDateTime>
#include <QList>
#include <QSet>
#include <QSqlDatabase>
#include <QVariantList>
#include <optional>

// SQL of the line sources: the sister company's database and the catalogue checks of a packing
// list. Writers require the caller's open transaction.
namespace orvo::inventory::purchases::store {

struct Company {
    QString code;
    QString name;
    QString database;
};
QList<Company> companies(const QSqlDatabase& db);
// This company's RIF (PARAMETROS.IDEmpresa).
QString companyRif(const QSqlDatabase& db);
// The Documento of every purchase from `supplier`.
QSet<QString> enteredDocuments(const QSqlDatabase& db, const QString& supplier);

struct SaleInvoice {
    long long number = 0;
    QString serie;
    QDateTime date;
    Decimal total;
};
// The sales invoices of a store database to a client keyed `plainRif` (capitals, no dashes or
// spaces), newest first.
QList<SaleInvoice> invoicesTo(const QSqlDatabase& db, const QString& plainRif);
struct SaleLine {
    QString barcode;
    Decimal quantity;
    Decimal netPrice; // PrecioLista: after the invoice's discount
    Decimal taxPercent;
};
QList<SaleLine> invoiceLines(const QSqlDatabase& db, long long number, const QString& serie);

// An article as another store's catalogue has it.
struct CatalogueArticle {
    QString barcode, name, reference, brand, size, colour, category, manufacturer;
    Decimal retail, wholesale, member;
    int type = 0;
};
std::optional<CatalogueArticle> catalogueArticle(const QSqlDatabase& db, const QString& barcode);
// This store's tax code of a rate; code 1 (the general rate) when none has it.
int taxCodeOf(const QSqlDatabase& db, const Decimal& rate);
// Inserts the article inactive, without stock or cost; returns the statement and values run, for
// the article log.
QPair<QString, QVariantList> insertArticle(const QSqlDatabase& db, const CatalogueArticle& a,
                                           int taxCode);

// The no-op update a reception box's packing list passes: an active article with a cost.
bool usableInBox(const QSqlDatabase& db, const QString& barcode);
bool barcodeExists(const QSqlDatabase& db, const QString& barcode);

} // namespace orvo::inventory::purchases::store
