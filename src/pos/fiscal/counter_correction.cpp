#include "pos/fiscal/counter_correction.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"

namespace orvo::pos::fiscal {

RegisterCounters currentCounters(const QSqlDatabase& db, const QString& serial,
                                 int controlFactura) {
    return readRegisterCounters(db, serial, controlFactura);
}

void correctCounters(const QSqlDatabase& db, const QString& serial, int controlFactura,
                     int lastInvoice, int lastReturn, int printerLastInvoice) {
    if (lastInvoice != printerLastInvoice)
        throw UserError(QStringLiteral(
            "El numero de factura no concuerda con el numero de factura de la impresora...!"));
    db::Transaction tx(db);
    const RegisterCounters now = readRegisterCounters(db, serial, controlFactura);
    if (lastReturn < now.lastReturn)
        throw UserError(QStringLiteral(
            "El numero de devolución nuevo debe ser mayor o igual al numero actual...!"));
    if (controlFactura == 2)
        db::execute(db,
                    QStringLiteral("UPDATE PARAMETROS SET UltimaFactura = ?, UltimaDevolucion = ?"),
                    {lastInvoice, lastReturn});
    else
        db::execute(db,
                    QStringLiteral("UPDATE CAJAS SET UltimaFactura = ?, UltimaDevolucion = ? "
                                   "WHERE Serie = ?"),
                    {lastInvoice, lastReturn, serial});
    tx.commit();
}

} // namespace orvo::pos::fiscal
