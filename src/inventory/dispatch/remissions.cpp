#include "inventory/dispatch/remissions.h"

namespace orvo::inventory::dispatch {

const purchases::BoxKind& remissionKind() {
    static const purchases::BoxKind kind{
        common::BoxDocument::Remission,
        QStringLiteral("REMISION"),
        QStringLiteral("MOVREMISION"),
        QStringLiteral("REMISION_COMPRAS"),
        kRemissionScreen,
        QStringLiteral("Remisión"),
        QStringLiteral("La caja de la remisión debe contener al menos un items."),
        QStringLiteral("Solo puede eliminar la ultima caja de la remisión seleccionada...!"),
        QStringLiteral("No existen cajas en la remisión...!"),
        QStringLiteral("Existen cajas abiertas...!\nEl cierre de la remisión no procede...!"),
        QStringLiteral("La remision no existe o ya fue aprobada por otro usuario...!"),
        QStringLiteral("La remision ya fue aprobada por otro usuario...!"),
        QStringLiteral("Desea Aprobar la Remisión ?"),
        QStringLiteral("Remision.SS7"),
        QStringLiteral("ORVO-REMISION"),
        true,
        true,
    };
    return kind;
}

} // namespace orvo::inventory::dispatch
