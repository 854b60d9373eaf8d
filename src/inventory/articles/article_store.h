#pragma once

#include "inventory/articles/article_types.h"

#include <QSqlDatabase>
#include <QVariantList>
#include <optional>

// SQL of the article master. Writers require the caller's open transaction; readers run anywhere.
namespace orvo::inventory::store {

// A statement and its values. Decimal values travel as QVariant::fromValue(Decimal), already
// rounded to their column's scale; they are bound as exact text and logged with eight decimals.
struct Statement {
    QString sql;
    QVariantList values;
};
// Runs it; returns the affected-row count.
int run(const QSqlDatabase& db, const Statement& statement);

Statement updateVariant(const QSqlDatabase& db, const ArticleModel& model, const QString& barcode,
                        const QString& variantName);
Statement insertVariant(const QSqlDatabase& db, const ArticleModel& model, const QString& barcode,
                        const QString& size, const QString& colour, const QString& variantName);

// One LOG_ARTICULOS row: the statement as run, with its values written in.
void logWrite(const QSqlDatabase& db, const QString& barcode, const QString& reference,
              const QString& brand, const Statement& statement, const ArticleWriter& writer);

// Existence tests by the no-op update.
bool modelExists(const QSqlDatabase& db, const QString& reference, const QString& brand);
bool barcodeInOtherReference(const QSqlDatabase& db, const QString& barcode,
                             const QString& reference);
bool barcodeExists(const QSqlDatabase& db, const QString& barcode);

// The barcode of the model's variant of this size and colour, if it has one.
std::optional<QString> variantBarcodeAt(const QSqlDatabase& db, const QString& reference,
                                        const QString& brand, const QString& size,
                                        const QString& colour);
// Gives the variant `oldBarcode` the barcode `newBarcode` and logs the statement; the documents
// keep the barcode they were written with. " El Código: " + code + " ya existe...!" when an
// article has the new one. False when no variant has the old barcode (nothing logged).
bool changeBarcode(const QSqlDatabase& db, const QString& oldBarcode, const QString& newBarcode,
                   const QString& reference, const QString& brand, const ArticleWriter& writer);

// Readers.
std::optional<LoadedModel> loadModel(const QSqlDatabase& db, const QString& reference,
                                     const QString& brand);
std::optional<Article> articleByBarcode(const QSqlDatabase& db, const QString& barcode);
QList<Article> articlesByReference(const QSqlDatabase& db, const QString& reference);
// All variants of a model ordered by size and colour name (the article report).
QList<Article> modelVariants(const QSqlDatabase& db, const QString& reference,
                             const QString& brand);

} // namespace orvo::inventory::store
