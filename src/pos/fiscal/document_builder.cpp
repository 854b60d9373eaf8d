#include "pos/fiscal/document_builder.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "pos/fiscal/igtf.h"
#include "pos/fiscal/payment_means.h"
#include "pos/fiscal/protocol/status.h"
#include "pos/fiscal/register_check.h"

namespace orvo::pos::fiscal {

namespace {

QList<FiscalLine> readLines(const QSqlDatabase& db, const QString& table,
                            const QString& numberColumn, int number, const QString& serial,
                            const RateTable& rates) {
    db::Sql q(db, QStringLiteral("SELECT M.Precio, M.PorcentajeImpuesto, M.Cantidad, "
                                 "M.PorcentajeDescuento, I.Nombre FROM %1 M "
                                 "LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra "
                                 "WHERE M.%2 = ? AND M.Serie = ? ORDER BY M.Item")
                      .arg(table, numberColumn));
    q.bind(number).bind(serial).exec();
    QList<FiscalLine> lines;
    while (q.next()) {
        FiscalLine l;
        l.price = q.decimal(QStringLiteral("Precio"));
        l.taxPercent = q.decimal(QStringLiteral("PorcentajeImpuesto"));
        l.quantity = q.decimal(QStringLiteral("Cantidad"));
        l.discountPercent = q.decimal(QStringLiteral("PorcentajeDescuento"));
        l.name = q.text(QStringLiteral("Nombre"));
        l.rate = rateIndex(l.taxPercent, rates);
        lines.append(l);
    }
    return lines;
}

void readClient(const QSqlDatabase& db, const QString& code, FiscalDocument& d) {
    if (code.isEmpty())
        return;
    db::Sql q(db,
              QStringLiteral("SELECT Codigo, Nombre, Direccion FROM CLIENTES WHERE Codigo = ?"));
    q.bind(code).exec();
    if (!q.next()) {
        d.clientId = code;
        return;
    }
    d.clientId = q.text(QStringLiteral("Codigo")).trimmed();
    d.clientName = q.text(QStringLiteral("Nombre")).trimmed();
    const QString address = q.text(QStringLiteral("Direccion")).simplified();
    for (int i = 0; i < address.size() && d.clientLines.size() < 2; i += 40)
        d.clientLines << address.mid(i, 40);
}

int wayNumber(const QString& text) {
    return text.trimmed().toInt();
}

QString tableValue(const QSqlDatabase& db, const QString& table, const QString& code) {
    db::Sql q(db, QStringLiteral("SELECT Descripcion FROM TABLA_VALORES WHERE IdTabla = ? AND "
                                 "Codigo = ?"));
    q.bind(table).bind(code).exec();
    return q.next() ? q.text(QStringLiteral("Descripcion")) : QString();
}

} // namespace

RateTable loadRateTable(const QSqlDatabase& db) {
    RateTable rates{};
    db::Sql q(db, QStringLiteral("SELECT Codigo, PorcentajeImpuesto FROM IMPUESTOS WHERE Codigo "
                                 ">= 1 AND Codigo <= 3"));
    q.exec();
    while (q.next())
        rates[q.integer(QStringLiteral("Codigo")) - 1] =
            q.decimal(QStringLiteral("PorcentajeImpuesto"));
    return rates;
}

int rateIndex(const Decimal& taxPercent, const RateTable& rates) {
    if (taxPercent.isZero())
        return 0;
    for (int i = 0; i < 3; ++i) {
        if (rates[i] == taxPercent)
            return i + 1;
    }
    throw UserError(QStringLiteral("La tasa de impuesto %1% no está programada en la impresora "
                                   "fiscal...!")
                        .arg(taxPercent.toString(2)));
}

FiscalDocument saleDocument(const QSqlDatabase& db, int invoiceNumber, const QString& serial,
                            const RateTable& rates) {
    db::Sql h(db, QStringLiteral("SELECT Cliente, FormaPago, TasaCambio FROM VENTAS WHERE "
                                 "NumeroFactura = ? AND Serie = ?"));
    h.bind(invoiceNumber).bind(serial).exec();
    if (!h.next())
        throw UserError(QStringLiteral("No existe la factura %1...!").arg(invoiceNumber));
    FiscalDocument d;
    d.type = DocumentType::Invoice;
    d.number = invoiceNumber;
    const PaymentMeansTable means = loadPaymentMeans(db);
    d.paymentMeans = means.means(wayNumber(h.text(QStringLiteral("FormaPago"))));
    const Decimal rate = h.decimal(QStringLiteral("TasaCambio"));
    readClient(db, h.text(QStringLiteral("Cliente")), d);
    d.lines = readLines(db, QStringLiteral("MOVVENTAS"), QStringLiteral("NumeroFactura"),
                        invoiceNumber, serial, rates);

    db::Sql p(db, QStringLiteral("SELECT FormaPago AS TipoPago, Monto FROM PAGOSVENTA WHERE "
                                 "NumeroFactura = ? AND Serie = ? ORDER BY Item"));
    p.bind(invoiceNumber).bind(serial).exec();
    QList<FiscalPayment> payments;
    bool foreign = false;
    while (p.next()) {
        const int way = wayNumber(p.text(QStringLiteral("TipoPago")));
        Decimal amount = p.decimal(QStringLiteral("Monto"));
        if (means.isForeign(way)) {
            if (rate <= Decimal())
                throw UserError(QStringLiteral("La factura %1 no tiene tasa de cambio para sus "
                                               "pagos en divisas...!")
                                    .arg(invoiceNumber));
            amount = toLocalCurrency(amount, rate);
            foreign = true;
        }
        // A row the change emptied pays nothing.
        if (amount > Decimal())
            payments.append({means.means(way), amount});
    }
    // One way in bolívars pays in full; foreign currency and several ways go payment by payment,
    // so that the printer's breakdown by means matches the drawer.
    if (payments.size() == 1 && !foreign)
        d.paymentMeans = payments.first().means;
    else if (!payments.isEmpty())
        d.payments = payments;
    return d;
}

FiscalDocument returnDocument(const QSqlDatabase& db, int returnNumber, const QString& serial,
                              const RateTable& rates) {
    db::Sql h(db, QStringLiteral("SELECT D.Cliente, D.NumeroFactura, D.SerieFactura, "
                                 "D.TotalMercancia, D.TotalDescuento, D.TotalImpuesto, "
                                 "V.Fecha AS FechaFactura, V.FormaPago, V.BaseIGTF, "
                                 "V.TotalMercancia AS MercanciaFactura, "
                                 "V.TotalDescuento AS DescuentoFactura, "
                                 "V.TotalImpuesto AS ImpuestoFactura FROM DEVVENTAS D "
                                 "LEFT JOIN VENTAS V ON V.NumeroFactura = D.NumeroFactura AND "
                                 "V.Serie = D.SerieFactura "
                                 "WHERE D.NumeroDevolucion = ? AND D.Serie = ?"));
    h.bind(returnNumber).bind(serial).exec();
    if (!h.next())
        throw UserError(QStringLiteral("No existe la devolución %1...!").arg(returnNumber));
    FiscalDocument d;
    d.type = DocumentType::CreditNote;
    // Paper returns made while the printer was out took numbers the printer never gave: the
    // printer numbers this one that many below.
    const int controlFactura =
        db::scalar(db, QStringLiteral("SELECT ControlFactura FROM PARAMETROS")).toInt();
    d.number = returnNumber - contingencyReturnsBelow(db, serial, controlFactura, returnNumber);
    d.affectedInvoice = h.integer(QStringLiteral("NumeroFactura"));
    d.affectedPrinterSerial = h.text(QStringLiteral("SerieFactura")).trimmed();
    if (d.affectedPrinterSerial.isEmpty())
        d.affectedPrinterSerial = serial;
    d.affectedInvoiceDate = h.dateTime(QStringLiteral("FechaFactura")).date();
    readClient(db, h.text(QStringLiteral("Cliente")), d);
    d.lines = readLines(db, QStringLiteral("MOVDEVVENTAS"), QStringLiteral("NumeroDevolucion"),
                        returnNumber, serial, rates);

    // The refund goes back in bolívars, by the invoice's way when it was one; the part that was
    // paid in foreign currency under IGTF goes back under that means and carries its tax.
    const PaymentMeansTable means = loadPaymentMeans(db);
    const int way = wayNumber(h.text(QStringLiteral("FormaPago")));
    const int local =
        way == 0 || means.isSeveralWays(way) || means.isForeign(way) ? 1 : means.means(way);
    const Decimal refund = h.decimal(QStringLiteral("TotalMercancia")) -
                           h.decimal(QStringLiteral("TotalDescuento")) +
                           h.decimal(QStringLiteral("TotalImpuesto"));
    const Decimal invoiceTotal = h.decimal(QStringLiteral("MercanciaFactura")) -
                                 h.decimal(QStringLiteral("DescuentoFactura")) +
                                 h.decimal(QStringLiteral("ImpuestoFactura"));
    const Decimal foreign =
        igtf::foreignRefund(refund, h.decimal(QStringLiteral("BaseIGTF")), invoiceTotal);
    d.paymentMeans = local;
    if (foreign > Decimal()) {
        int foreignMeans = protocol::kFirstForeignMeans;
        db::Sql p(db, QStringLiteral("SELECT FormaPago AS TipoPago FROM PAGOSVENTA WHERE "
                                     "NumeroFactura = ? AND Serie = ? ORDER BY Item"));
        p.bind(d.affectedInvoice).bind(d.affectedPrinterSerial).exec();
        while (p.next()) {
            const int w = wayNumber(p.text(QStringLiteral("TipoPago")));
            if (means.isForeign(w)) {
                foreignMeans = means.means(w);
                break;
            }
        }
        d.payments = {{foreignMeans, foreign}, {local, refund - foreign}};
    }
    return d;
}

QList<ProgrammedLine> headerFooterLines(const QSqlDatabase& db, const QDate& today) {
    QList<ProgrammedLine> out;
    for (int n = 1; n <= 8; ++n) {
        const QString code = QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
        out.append({n, tableValue(db, QStringLiteral("ENCFISCAL"), code)});
    }
    const auto bound = [&db](const QString& code) {
        QString v = tableValue(db, QStringLiteral("FECPIEFIS"), code).trimmed();
        if (v.isEmpty())
            v = QStringLiteral("01/01/2000");
        return QDate::fromString(v, QStringLiteral("dd/MM/yyyy"));
    };
    const QDate from = bound(QStringLiteral("01"));
    const QDate to = bound(QStringLiteral("02"));
    const bool footerOn = from.isValid() && to.isValid() && today >= from && today <= to;
    for (int n = 91; n <= 98; ++n) {
        const QString text =
            footerOn ? tableValue(db, QStringLiteral("PIEFISCAL"), QString::number(n)) : QString();
        out.append({n, text});
    }
    return out;
}

} // namespace orvo::pos::fiscal
