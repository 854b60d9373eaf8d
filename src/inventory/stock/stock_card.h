#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>

// The stock card ("Kardex de Inventario"): what each document did to one barcode, or to every
// variant of one model, over a period, with the balance after each document.
namespace orvo::inventory::stock {

inline const QString kStockCardScreen = QStringLiteral("frmReporteKardex");
inline const QString kPhysicalCountName = QStringLiteral("Ajuste Físico Lógico");

// One barcode, or one model (reference and brand).
struct CardSubject {
    QString barcode;
    QString reference;
    QString brand;
    bool isModel() const { return barcode.isEmpty(); }
};

struct CardRow {
    QDateTime date;
    QString kind;     // the document kind's name, or "Ajuste Físico Lógico"
    QString document; // its number (purchases: document / supplier; sales: serie-number)
    Decimal quantity; // signed; for a physical count, counted − book
    Decimal balance;  // after this row
};

struct CardKindTotal {
    QString kind;
    Decimal quantity; // signed
};

struct StockCard {
    CardSubject subject;
    QString description; // the article's name, or the model's
    QDate from;
    QDate to;
    Decimal opening; // the balance when the period starts
    QList<CardRow> rows;
    QList<CardKindTotal> byKind; // every kind, in the rebuild's order, then the counts
    Decimal closing;
    Decimal stock; // INVENTARIO.Existencia now
};

// Days `from`..`to` whole. The opening balance comes from the physical-logical adjustment before
// the period (its counted quantity and the documents since), or when there is none before it, back
// from the first one after it (its book stock less the documents in between), or from
// ExistenciaInicial when there never was one. A physical-logical adjustment in the period sets the
// balance to what was counted. Refused for a barcode or model that does not exist.
StockCard stockCard(const QSqlDatabase& db, const CardSubject& subject, const QDate& from,
                    const QDate& to);

// The printed card: title and HTML body.
struct PrintedCard {
    QString title;
    QString html;
};
PrintedCard printedCard(const StockCard& card);

// For the catalogues of the screen: barcodes and models with their first movement and the last
// physical-logical adjustment.
QString barcodeCatalogSql();
QString modelCatalogSql();

} // namespace orvo::inventory::stock
