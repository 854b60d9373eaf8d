#pragma once

#include "inventory/articles/article_types.h"

#include <QSqlDatabase>
#include <QVector>
#include <optional>

// The article master: models (Referencia + CodigoMarca) of size and colour variants in INVENTARIO.
namespace orvo::inventory {

inline const QString kArticleScreen = QStringLiteral("frmArticulos");

// --- Finding articles (sale and document screens) ---

// The variant with this barcode, whatever its status; nullopt when there is none.
std::optional<Article> findArticleByBarcode(const QSqlDatabase& db, const QString& barcode);
// Every variant (Status < 2) of every brand under this reference, by brand, size and colour.
QList<Article> findArticlesByReference(const QSqlDatabase& db, const QString& reference);

// --- The model browser ---

struct ModelRow {
    QString reference;
    QString brand;
    QString brandName;
    QString name;
    int variants = 0;
    Decimal stock;
    Decimal retailPrice; // zero unless the list carries prices
    Decimal averageCost; // zero unless the list carries costs
};

struct ModelList {
    bool withPrices = false;
    bool withCosts = false;
    QVector<ModelRow> rows;
    int indexOf(const QString& reference, const QString& brand) const;
};

// Models with Status < 2 ordered by Referencia. Prices and costs are read only for a user who
// may see them.
ModelList listModels(const QSqlDatabase& db, const QString& userCode);

// --- Catalogues the model form offers ---

struct CodeName {
    QString code;
    QString name;
};
struct Category {
    QString code;
    QString name;
    QString parent; // code of the parent category, empty under the root
};
struct TaxCode {
    int code = 0;
    QString name;
    Decimal rate;
};

// Parents before children (by code length, then code); the parent is the longest other code
// that begins the code.
QList<Category> categories(const QSqlDatabase& db);
QList<CodeName> brands(const QSqlDatabase& db); // active, code '0' left out
QList<CodeName> manufacturers(const QSqlDatabase& db);
QList<CodeName> colours(const QSqlDatabase& db);
QList<CodeName> sizes(const QSqlDatabase& db);
QList<TaxCode> taxCodes(const QSqlDatabase& db);

// --- The model form ---

// DespuesDeNavegar: the model with its grid; nullopt when no variant has that pair.
std::optional<LoadedModel> loadModel(const QSqlDatabase& db, const QString& reference,
                                     const QString& brand);

// A barcode typed into a grid cell: refused when another cell of the grid holds it or when it
// belongs to another reference. Throws UserError; the screen clears the cell.
void checkBarcodeCell(const QSqlDatabase& db, const ModelGrid& grid, int row, int column,
                      const QString& barcode, const QString& reference);

// Guardar: validates, then updates or inserts every variant of the grid (row by row, colour by
// colour) and logs each statement in LOG_ARTICULOS. One transaction.
void saveModel(const QSqlDatabase& db, const ArticleModel& model, const ModelGrid& grid, bool isNew,
               const ArticleWriter& writer);

// Eliminar: deletes every variant of the model at once, logged. Returns the rows deleted: 0 when
// a variant is still named by a document (sold, bought, moved), and then nothing is deleted.
int deleteModel(const QSqlDatabase& db, const QString& reference, const QString& brand,
                const ArticleWriter& writer);

// The article log writer for other screens that write INVENTARIO (article loader, purchase
// importer): one LOG_ARTICULOS row with the statement text as run. Inside the caller's
// transaction.
void logArticleWrite(const QSqlDatabase& db, const QString& barcode, const QString& reference,
                     const QString& brand, const QString& statementText,
                     const ArticleWriter& writer);

// Imprimir: the article report of one model, as HTML for the printer.
QString articleReport(const QSqlDatabase& db, const QString& reference, const QString& brand,
                      const QString& userCode);

} // namespace orvo::inventory
