#pragma once

namespace orvo::inventory::prices {
// frmListaPrecios, frmPreciosPromocion and frmActualizarPrecios on the main connection, for the
// logged-in user.
void registerPriceScreens();
} // namespace orvo::inventory::prices
