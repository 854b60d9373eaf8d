#include "inventory/purchases/box_kind.h"

namespace orvo::inventory::purchases {

const BoxKind& receptionKind() {
    static const BoxKind kind{
        common::BoxDocument::Reception,
        QStringLiteral("RECEPCION"),
        QStringLiteral("MOVRECEPCION"),
        QStringLiteral("RECEPCION_COMPRAS"),
        QStringLiteral("frmRecepcion"),
        QStringLiteral("Recepción"),
        QStringLiteral("La caja de la recepción debe contener al menos un items...!"),
        QStringLiteral("Solo puede eliminar la ultima caja de la recepción seleccionada...!"),
        QStringLiteral("No existen cajas en la recepción...!"),
        QStringLiteral("Existen cajas abiertas...!\nEl cierre de la recepción no procede...!"),
        QStringLiteral("La recepción no existe o ya fue aprobada por otro usuario...!"),
        QStringLiteral("La recepción no existe o ya fue aprobada por otro usuario...!"),
        QStringLiteral("Desea Aprobar la Recepción ?"),
        QStringLiteral("Recepcion.SS7"),
        QStringLiteral("ORVO-RECEPCION"),
    };
    return kind;
}

QString boxedStatusText(int status) {
    return status == 0   ? QStringLiteral("ABIERTA")
           : status == 2 ? QStringLiteral("CONVERTIDA")
                         : QStringLiteral("APROBADA");
}

QString onKind(const BoxKind& kind, QString statement) {
    if (kind.document == common::BoxDocument::Reception)
        return statement;
    // Longest names first, so that RECEPCION inside the others is not replaced on its own.
    return statement.replace(QStringLiteral("MOVRECEPCION"), QStringLiteral("\x01"))
        .replace(QStringLiteral("RECEPCION_COMPRAS"), QStringLiteral("\x02"))
        .replace(QStringLiteral("RECEPCION"), kind.header)
        .replace(QStringLiteral("\x01"), kind.lines)
        .replace(QStringLiteral("\x02"), kind.covered);
}

} // namespace orvo::inventory::purchases
