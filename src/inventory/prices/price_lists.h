#pragma once

#include "inventory/articles/article_types.h"
#include "inventory/prices/price_types.h"

#include <QSqlDatabase>
#include <optional>

// Price lists (frmListaPrecios), promotion lists (frmPreciosPromocion) and the catalogue
// repricing from costs (frmActualizarPrecios). Each action runs in one transaction.
namespace orvo::inventory::prices {

// 1 + the general tax rate / 100 when the company keys prices with tax included
// (PARAMETROS.DiscriminarImpuestoPrecios = 1: the tax is then separated from the typed price),
// otherwise 1.
Decimal taxIncludedFactor(const QSqlDatabase& db);

// The line of a model as the catalogue has it now, with the list's suggested prices; nothing when
// the model does not exist.
std::optional<PriceLine> modelLine(const QSqlDatabase& db, const ModelKey& key,
                                   const PriceList& list);
QList<ModelPrices> findModels(const QSqlDatabase& db, const ModelFilter& filter);

std::optional<PriceList> loadList(const QSqlDatabase& db, int number);
QList<PriceListSummary> listOfLists(const QSqlDatabase& db);
// The lines of another list, to be keyed into this one.
QList<PriceLine> linesOfList(const QSqlDatabase& db, int number);
// Adds `lines` to `list`: a model already there takes the new line. Returns how many came.
int mergeLines(PriceList& list, const QList<PriceLine>& lines);

struct SaveOptions {
    bool approve = false;          // "Desea aprobar la lista de precio...?"
    bool applyToInventory = false; // "Desea actualizar los valores del inventario ...?"
};
struct SaveResult {
    int number = 0;
    int articlesUpdated = 0;
};

// Guardar: the line checks, then in one transaction the header (a new number for a new list,
// Status 0) and its lines in order; on approval Status 1 with tax-included prices divided once,
// and on the second Yes every variant of each model takes the list's prices (logged in
// LOG_ARTICULOS). An approved list is not saved again.
SaveResult saveList(const QSqlDatabase& db, const PriceList& list, const SaveOptions& options,
                    const ArticleWriter& writer);

// The second Yes given later for an approved list.
int applyListToInventory(const QSqlDatabase& db, int number, const ArticleWriter& writer);

// frmPreciosPromocion: an open list with factors 1, 1, 1 and one promotion line per chosen
// model. Returns its number.
int generatePromotionList(const QSqlDatabase& db, const PromotionRequest& request,
                          const QDate& today);

// frmActualizarPrecios: retail, wholesale and member prices of every article with a cost become
// the average cost plus the margin. Returns the articles repriced.
int repriceFromCosts(const QSqlDatabase& db, const Margins& margins, const ArticleWriter& writer);

} // namespace orvo::inventory::prices
