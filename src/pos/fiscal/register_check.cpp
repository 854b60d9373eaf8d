#include "pos/fiscal/register_check.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/fiscal/igtf.h"
#include "pos/fiscal/protocol/replies.h"
#include "pos/fiscal/protocol/status.h"

namespace orvo::pos::fiscal {

RegisterCounters readRegisterCounters(const QSqlDatabase& db, const QString& serial,
                                      int controlFactura) {
    RegisterCounters c;
    c.serial = serial;
    c.igtf = igtf::settings(db, serial).enabled;
    c.contingencyReturns = contingencyReturnsBelow(db, serial, controlFactura);
    if (controlFactura == 2) {
        db::Sql q(db, QStringLiteral("SELECT UltimaFactura, UltimaDevolucion FROM PARAMETROS"));
        q.exec();
        if (q.next()) {
            c.lastInvoice = q.integer(QStringLiteral("UltimaFactura"));
            c.lastReturn = q.integer(QStringLiteral("UltimaDevolucion"));
        }
        return c;
    }
    db::Sql q(db,
              QStringLiteral("SELECT UltimaFactura, UltimaDevolucion FROM CAJAS WHERE Serie = ?"));
    q.bind(serial).exec();
    if (q.next()) {
        c.lastInvoice = q.integer(QStringLiteral("UltimaFactura"));
        c.lastReturn = q.integer(QStringLiteral("UltimaDevolucion"));
    }
    return c;
}

int contingencyReturnsBelow(const QSqlDatabase& db, const QString& serial, int controlFactura,
                            long long before) {
    const bool company = controlFactura == 2;
    db::Sql q(db, QStringLiteral("SELECT COUNT(*) AS N FROM DEVVENTAS WHERE Contingencia = 1 AND "
                                 "(? = 1 OR Serie = ?) AND (? = 0 OR NumeroDevolucion < ?)"));
    q.bind(company ? 1 : 0).bind(serial).bind(before).bind(before).exec();
    return q.next() ? q.integer(QStringLiteral("N")) : 0;
}

PrinterFacts readPrinterFacts(FiscalPrinter& printer) {
    PrinterFacts f;
    if (!printer.isOpen() || !printer.probe())
        return f;
    f.status = printer.status();
    const auto day = printer.openDay();
    const auto s1 = printer.readS1();
    if (!day || !s1)
        return f;
    f.answers = true;
    f.lastInvoice = day->lastInvoice;
    f.lastCreditNote = day->lastCreditNote;
    f.igtf = day->withIgtf;
    f.date = s1->date;
    f.serial = s1->serial;
    f.rif = s1->rif;
    return f;
}

void checkPrinterAgainstRegister(const PrinterFacts& printer, const RegisterCounters& reg,
                                 const QDate& today) {
    if (!printer.answers)
        throw UserError(QStringLiteral("No existe comunicación con la impresora fiscal...!"));
    if (printer.lastInvoice != reg.lastInvoice)
        throw UserError(QStringLiteral(
            "El numero de factura no concuerda con el numero de factura de la impresora...!"));
    if (printer.lastCreditNote != reg.lastCreditNote())
        throw UserError(QStringLiteral("El numero de devolución no concuerda con el numero de "
                                       "devolución de la impresora...!"));
    if (protocol::dateDdMmYy(printer.date) != protocol::dateDdMmYy(today))
        throw UserError(QStringLiteral(
            "La fecha actual de la impresora no corresponde con la fecha del sistema...!"));
    if (printer.serial.trimmed() != reg.serial.trimmed())
        throw UserError(
            QStringLiteral("La serie de la impresora no conicide con la serie de la caja...!"));
    if (protocol::isMemoryFull(printer.status))
        throw UserError(QStringLiteral("La memoria fiscal de la impresora está llena...!"));
    if (printer.igtf != reg.igtf)
        throw UserError(reg.igtf ? QStringLiteral("La caja cobra IGTF y la impresora fiscal no lo "
                                                  "tiene activado...!")
                                 : QStringLiteral("La impresora fiscal tiene el IGTF activado y "
                                                  "la caja no lo cobra...!"));
}

} // namespace orvo::pos::fiscal
