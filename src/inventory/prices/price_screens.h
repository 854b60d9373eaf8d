#pragma once

#include "inventory/articles/article_screens.h"

namespace orvo::inventory::prices {
// Adds frmListaPrecios, frmPreciosPromocion, frmActualizarPrecios and frmImpListaPrecios to the
// ScreenRegistry (received files in Recibe under the application folder).
// Without services, the shared connection and the logged-in user.
void registerPriceScreens(ArticleServices services = {});
} // namespace orvo::inventory::prices
