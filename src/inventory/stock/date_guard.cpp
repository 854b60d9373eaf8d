#include "inventory/stock/date_guard.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"

namespace orvo::inventory::stock {

std::optional<QDate> lastPhysicalAdjustment(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT MAX(FechaAjuste) AS Fecha FROM FISICOLOGICO"));
    q.exec();
    if (!q.next() || q.isNull(QStringLiteral("Fecha")))
        return std::nullopt;
    return q.dateTime(QStringLiteral("Fecha")).date();
}

void checkDocumentDate(const QSqlDatabase& db, const QDate& date) {
    const auto last = lastPhysicalAdjustment(db);
    if (last && date < *last)
        throw UserError(QStringLiteral("La fecha no debe ser menor a la fecha ") +
                        last->toString(QStringLiteral("dd/MM/yyyy")) +
                        QStringLiteral(" del ultimo ajuste fisico-logico...!"));
}

} // namespace orvo::inventory::stock
