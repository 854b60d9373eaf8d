#pragma once

#include "inventory/articles/article_types.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>

// frmCambiarCodigos: new barcodes for the variants of one model. INVENTARIO alone changes; the
// documents keep the barcode they were written with, and CodigoBarraAnt keeps what it had.
namespace orvo::inventory::barcodes {

inline const QString kBarcodeScreen = QStringLiteral("frmCambiarCodigos");

struct VariantCode {
    QString size;
    QString colour; // colour name
    QString barcode;
    QString name;
};

// The variants of (brand, reference); "No existen codigos con esta Referencia con la marca
// seleccionada...!" when there are none.
QList<VariantCode> variantsOf(const QSqlDatabase& db, const QString& brand,
                              const QString& reference);

struct BarcodeChange {
    QString oldBarcode;
    QString newBarcode;
};

// A typed new barcode: " El Código: " + code + " ya existe...!" when an article has it.
void checkNewBarcode(const QSqlDatabase& db, const QString& newBarcode);

// Every change with its LOG_ARTICULOS row, in one transaction; the first barcode that exists
// already stops them all. Rows with an empty or unchanged new barcode are skipped. Returns the
// number changed.
int changeBarcodes(const QSqlDatabase& db, const QString& brand, const QString& reference,
                   const QList<BarcodeChange>& changes, const ArticleWriter& writer);

} // namespace orvo::inventory::barcodes
