#include "pos/cash/closing_report.h"

#include "common/db/sql.h"
#include "pos/cash/cash_movements.h"

#include <QLocale>

namespace orvo::pos::cash {

namespace {
QString row(const QString& label, const Decimal& amount) {
    return QStringLiteral("<tr><td>%1</td><td align=\"right\">%2</td></tr>")
        .arg(label.toHtmlEscaped(), amountText(amount));
}
} // namespace

QString amountText(const Decimal& amount) {
    return amount.toLocaleString(QLocale(QLocale::Spanish, QLocale::Venezuela), 2);
}

QString closingReportHtml(const QSqlDatabase& db, const QString& serial, const QDate& day,
                          const QString& companyName, const CountedCash& counted) {
    const auto f = closingFigures(db, serial);
    const auto d = dayOf(db, serial, day);
    QString html = QStringLiteral("<h2>%1</h2><h3>Cierre de caja %2 - Fecha %3</h3>")
                       .arg(companyName.toHtmlEscaped(), serial.toHtmlEscaped(), dayText(day));
    if (!d)
        return html;
    // FacturaInicial is the last invoice before the day opened: the day's first is the next.
    const QString invoices =
        d->facturaFinal > d->facturaInicial
            ? QStringLiteral("Facturas %1 a %2").arg(d->facturaInicial + 1).arg(d->facturaFinal)
            : QStringLiteral("Sin facturas");
    html += QStringLiteral("<p>Caja Nº %1 &nbsp; %2 &nbsp; Reporte Z %3</p>")
                .arg(d->numero)
                .arg(invoices)
                .arg(d->numeroReporteZ.value_or(0));
    if (f && f->day.fecha == day) {
        html += QStringLiteral("<table width=\"100%\">");
        html += row(QStringLiteral("Ventas: mercancía"), f->sales.mercancia);
        html += row(QStringLiteral("Ventas: descuento"), f->sales.descuento);
        html += row(QStringLiteral("Ventas: impuesto"), f->sales.impuesto);
        html += row(QStringLiteral("Ventas: costo"), f->sales.costo);
        if (!f->sales.igtf.isZero() || !f->returns.igtf.isZero()) {
            html += row(QStringLiteral("Ventas: IGTF"), f->sales.igtf);
            html += row(QStringLiteral("Devoluciones: IGTF"), f->returns.igtf);
        }
        html += row(QStringLiteral("Devoluciones: mercancía"), f->returns.mercancia);
        html += row(QStringLiteral("Devoluciones: impuesto"), f->returns.impuesto);
        html += row(QStringLiteral("Fondo de caja"), f->fondoCaja);
        html += row(QStringLiteral("Cobros en efectivo"), f->cashPayments);
        html += row(QStringLiteral("Efectivo dejado por las ventas"), f->salesCash);
        html += row(QStringLiteral("Cobros en dólares (US$)"), f->dollarPayments);
        html += row(QStringLiteral("Cobros en cheque"), f->chequePayments);
        html += row(QStringLiteral("Cobros de cuentas por cobrar"),
                    f->receivableCash + f->receivableCheques);
        html += row(QStringLiteral("Salidas de caja"), f->withdrawals);
        html += row(QStringLiteral("Depósitos en efectivo"), f->depositedCash);
        html += row(QStringLiteral("Depósitos en cheques"), f->depositedCheques);
        const auto drawer = [&](const QString& what, const Decimal& expected,
                                const Decimal& count) {
            html += row(what + QStringLiteral(" esperado"), expected);
            html += row(what + QStringLiteral(" contado"), count);
            html += row(QStringLiteral("Diferencia"), count - expected);
        };
        drawer(QStringLiteral("Efectivo"), f->expectedCash(), counted.cash);
        drawer(QStringLiteral("Dólares (US$)"), f->expectedDollars(), counted.dollars);
        drawer(QStringLiteral("Cheques"), f->expectedCheques(), counted.cheques);
        html += QStringLiteral("</table>");
    }
    html += QStringLiteral("<h4>Salidas de caja</h4><table width=\"100%\">");
    for (const Withdrawal& w : withdrawalsOf(db, serial, day))
        html += row(QStringLiteral("%1 %2").arg(w.numero).arg(w.descripcion), w.monto);
    html += QStringLiteral("</table><h4>Depósitos</h4><table width=\"100%\">");
    for (const DepositRow& r : depositsOf(db, serial, day))
        html += row(QStringLiteral("%1 (%2)").arg(r.numeroDeposito, r.cuentaBanco),
                    r.totalEfectivo + r.totalCheques);
    html += QStringLiteral("</table>");
    const QString zText =
        db::scalar(db,
                   QStringLiteral("SELECT ReporteZTexto FROM DIARIOCAJA WHERE Serie = ? AND "
                                  "Fecha >= ? AND Fecha < ?"),
                   {serial, db::dayStart(day), db::nextDayStart(day)})
            .toString();
    if (!zText.isEmpty())
        html += QStringLiteral("<h4>Reporte Z</h4><pre>%1</pre>").arg(zText.toHtmlEscaped());
    return html;
}

} // namespace orvo::pos::cash
