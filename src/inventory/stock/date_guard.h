#pragma once

#include <QDate>
#include <QSqlDatabase>
#include <optional>

namespace orvo::inventory::stock {

// Day of the last physical-logical adjustment (MAX(FISICOLOGICO.FechaAjuste)); none before the
// first one.
std::optional<QDate> lastPhysicalAdjustment(const QSqlDatabase& db);

// The date guard of every stock document: a document dated before the day of the last
// physical-logical adjustment would move stock the count has already settled. Throws UserError
// "La fecha no debe ser menor a la fecha dd/MM/yyyy del ultimo ajuste fisico-logico...!".
void checkDocumentDate(const QSqlDatabase& db, const QDate& date);

} // namespace orvo::inventory::stock
