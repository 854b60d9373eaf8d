#pragma once

#include "inventory/articles/article_screens.h"

namespace orvo::inventory::prices {
// Adds frmListaPrecios, frmPreciosPromocion and frmActualizarPrecios to the ScreenRegistry.
// Without services, the shared connection and the logged-in user.
void registerPriceScreens(ArticleServices services = {});
} // namespace orvo::inventory::prices
