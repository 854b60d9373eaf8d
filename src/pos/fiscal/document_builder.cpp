#include "pos/fiscal/document_builder.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"

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
    db::Sql h(db, QStringLiteral("SELECT Cliente, FormaPago FROM VENTAS WHERE NumeroFactura = ? "
                                 "AND Serie = ?"));
    h.bind(invoiceNumber).bind(serial).exec();
    if (!h.next())
        throw UserError(QStringLiteral("No existe la factura %1...!").arg(invoiceNumber));
    FiscalDocument d;
    d.type = DocumentType::Invoice;
    d.paymentWay = wayNumber(h.text(QStringLiteral("FormaPago")));
    readClient(db, h.text(QStringLiteral("Cliente")), d);
    d.lines = readLines(db, QStringLiteral("MOVVENTAS"), QStringLiteral("NumeroFactura"),
                        invoiceNumber, serial, rates);
    if (d.paymentWay == kSeveralWays) {
        db::Sql p(db, QStringLiteral("SELECT FormaPago AS TipoPago, Monto FROM PAGOSVENTA WHERE "
                                     "NumeroFactura = ? AND Serie = ? ORDER BY Item"));
        p.bind(invoiceNumber).bind(serial).exec();
        while (p.next())
            d.payments.append({wayNumber(p.text(QStringLiteral("TipoPago"))),
                               p.decimal(QStringLiteral("Monto"))});
    }
    return d;
}

FiscalDocument returnDocument(const QSqlDatabase& db, int returnNumber, const QString& serial,
                              const RateTable& rates) {
    db::Sql h(db, QStringLiteral("SELECT D.Cliente, D.NumeroFactura, D.SerieFactura, "
                                 "D.TotalMercancia, D.TotalDescuento, D.TotalImpuesto, "
                                 "V.Fecha AS FechaFactura, V.FormaPago FROM DEVVENTAS D "
                                 "LEFT JOIN VENTAS V ON V.NumeroFactura = D.NumeroFactura AND "
                                 "V.Serie = D.SerieFactura "
                                 "WHERE D.NumeroDevolucion = ? AND D.Serie = ?"));
    h.bind(returnNumber).bind(serial).exec();
    if (!h.next())
        throw UserError(QStringLiteral("No existe la devolución %1...!").arg(returnNumber));
    FiscalDocument d;
    d.type = DocumentType::CreditNote;
    d.affectedInvoice = h.integer(QStringLiteral("NumeroFactura"));
    d.affectedPrinterSerial = h.text(QStringLiteral("SerieFactura")).trimmed();
    if (d.affectedPrinterSerial.isEmpty())
        d.affectedPrinterSerial = serial;
    d.affectedInvoiceDate = h.dateTime(QStringLiteral("FechaFactura")).date();
    d.paymentWay = wayNumber(h.text(QStringLiteral("FormaPago")));
    if (d.paymentWay == 0)
        d.paymentWay = 1;
    readClient(db, h.text(QStringLiteral("Cliente")), d);
    d.lines = readLines(db, QStringLiteral("MOVDEVVENTAS"), QStringLiteral("NumeroDevolucion"),
                        returnNumber, serial, rates);
    if (d.paymentWay == kSeveralWays) {
        // The return is refunded as one amount: its total.
        const Decimal total = h.decimal(QStringLiteral("TotalMercancia")) -
                              h.decimal(QStringLiteral("TotalDescuento")) +
                              h.decimal(QStringLiteral("TotalImpuesto"));
        d.payments.append({1, total});
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
