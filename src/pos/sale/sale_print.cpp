#include "pos/sale/sale_print.h"

#include "common/db/sql.h"
#include "pos/fiscal/fiscal_printer_thread.h"
#include "pos/payments/payment_rules.h"
#include "shell/session/session_context.h"

#include <QAbstractTextDocumentLayout>
#include <QEventLoop>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTextDocument>

namespace orvo::pos::sale {

namespace {

// Waits for a queued printer call with this thread's events running.
template <class T> T wait(QFuture<T> future) {
    if (!future.isFinished()) {
        QEventLoop loop;
        QFutureWatcher<T> watcher;
        QObject::connect(&watcher, &QFutureWatcher<T>::finished, &loop, &QEventLoop::quit);
        watcher.setFuture(future);
        if (!future.isFinished())
            loop.exec();
    }
    return future.result();
}

struct Outcome {
    bool ok = false;
    QString error;
};

QString esc(const QString& s) {
    return s.toHtmlEscaped();
}

} // namespace

fiscal::PrinterFacts ThreadSalePrinter::facts() {
    return wait(
        m_thread.call([](fiscal::FiscalPrinter& p) { return fiscal::readPrinterFacts(p); }));
}

bool ThreadSalePrinter::printZ() {
    const Outcome o = wait(m_thread.call([](fiscal::FiscalPrinter& p) {
        const bool ok = p.printZReport() && p.waitUntilReady(kZReportTimeoutMs);
        return Outcome{ok, ok ? QString() : p.errorText()};
    }));
    m_error = o.error;
    return o.ok;
}

bool ThreadSalePrinter::print(const fiscal::FiscalDocument& document) {
    const Outcome o = wait(m_thread.call([document](fiscal::FiscalPrinter& p) {
        const bool ok = p.isOpen() && p.printDocument(document);
        QString error = p.errorText();
        if (!ok && error.isEmpty())
            error = QStringLiteral("No existe comunicación con la impresora fiscal...!");
        return Outcome{ok, ok ? QString() : error};
    }));
    m_error = o.error;
    return o.ok;
}

bool ThreadSalePrinter::display(const QString& upper, const QString& lower) {
    return wait(m_thread.call(
        [upper, lower](fiscal::FiscalPrinter& p) { return p.showOnDisplay(upper, lower); }));
}

QString displayLine(const QString& label, const QString& symbol, const Decimal& amount) {
    QString line = label + symbol + payments::formatAmount(amount);
    if (line.size() > 20)
        line = label + payments::formatAmount(amount);
    return line.leftJustified(20, QLatin1Char(' '));
}

QString paperHeadHtml(const shell::SessionContext& ctx, bool contingency, bool largeFormat) {
    QString html = QStringLiteral("<html><body style=\"font-family: monospace; font-size: %1pt\">")
                       .arg(largeFormat ? 10 : 8);
    html +=
        QStringLiteral("<p><b>%1</b><br>%2 %3<br>%4</p>")
            .arg(esc(ctx.nombre), esc(ctx.nombreIdFiscal), esc(ctx.idEmpresa), esc(ctx.direccion));
    if (contingency)
        html += QStringLiteral("<h3>CONTINGENCIA</h3>");
    return html;
}

QString paperLinesHtml(const QSqlDatabase& db, const QString& linesTable,
                       const QString& numberColumn, long long number, const QString& serie) {
    QString html =
        QStringLiteral("<table width=\"100%\" cellspacing=\"0\"><tr><th align=\"left\">"
                       "DESCRIPCION</th><th align=\"right\">CANT</th><th align=\"right\">"
                       "PRECIO</th><th align=\"right\">TOTAL</th></tr>");
    // Table and column names come from the callers, never from the user.
    db::Sql l(db, QStringLiteral("SELECT M.PrecioLista, M.Cantidad, I.Nombre FROM %1 M "
                                 "LEFT JOIN INVENTARIO I ON I.CodigoBarra = M.CodigoBarra "
                                 "WHERE M.%2 = ? AND M.Serie = ? ORDER BY M.Item")
                      .arg(linesTable, numberColumn));
    l.bind(number).bind(serie).exec();
    while (l.next()) {
        const Decimal price = l.decimal(QStringLiteral("PrecioLista"));
        const Decimal qty = l.decimal(QStringLiteral("Cantidad"));
        html += QStringLiteral("<tr><td>%1</td><td align=\"right\">%2</td><td align=\"right\">%3"
                               "</td><td align=\"right\">%4</td></tr>")
                    .arg(esc(l.text(QStringLiteral("Nombre")).trimmed()), qty.toString(),
                         payments::formatAmount(price),
                         payments::formatAmount((price * qty).rounded(2)));
    }
    return html + QStringLiteral("</table>");
}

QString paperTotalsHtml(const Decimal& merchandise, const Decimal& discount, const Decimal& tax) {
    return QStringLiteral(
               "<p>SUBTOTAL: %1<br>DESCUENTO: %2<br>IMPUESTO: %3<br><b>TOTAL: %4</b></p>")
        .arg(payments::formatAmount(merchandise), payments::formatAmount(discount),
             payments::formatAmount(tax), payments::formatAmount(merchandise - discount + tax));
}

QString paperInvoiceHtml(const QSqlDatabase& db, const shell::SessionContext& ctx, long long number,
                         bool contingency, bool largeFormat) {
    const QString serie = ctx.serial;
    db::Sql h(db, QStringLiteral("SELECT V.Fecha, V.Cliente, V.TotalMercancia, V.TotalDescuento, "
                                 "V.TotalImpuesto, V.BaseIGTF, V.MontoIGTF, C.Nombre, C.Direccion "
                                 "FROM VENTAS V LEFT JOIN "
                                 "CLIENTES C ON C.Codigo = V.Cliente "
                                 "WHERE V.NumeroFactura = ? AND V.Serie = ?"));
    h.bind(number).bind(serie).exec();
    if (!h.next())
        return {};
    QString html = paperHeadHtml(ctx, contingency, largeFormat);
    html +=
        QStringLiteral("<p>FACTURA: %1 &nbsp; SERIE: %2<br>FECHA: %3<br>CLIENTE: %4 %5<br>%6</p>")
            .arg(QString::number(number).rightJustified(8, QLatin1Char('0')), esc(serie),
                 h.dateTime(QStringLiteral("Fecha")).toString(QStringLiteral("dd/MM/yyyy hh:mm")),
                 esc(h.text(QStringLiteral("Cliente")).trimmed()),
                 esc(h.text(QStringLiteral("Nombre")).trimmed()),
                 esc(h.text(QStringLiteral("Direccion")).trimmed()));
    html += paperLinesHtml(db, QStringLiteral("MOVVENTAS"), QStringLiteral("NumeroFactura"), number,
                           serie);
    html += paperTotalsHtml(h.decimal(QStringLiteral("TotalMercancia")),
                            h.decimal(QStringLiteral("TotalDescuento")),
                            h.decimal(QStringLiteral("TotalImpuesto")));
    // The IGTF the dollars paid on top of the total.
    if (const Decimal igtf = h.decimal(QStringLiteral("MontoIGTF")); igtf > Decimal())
        html += QStringLiteral("<p>BI IGTF: %1<br>IGTF: %2</p>")
                    .arg(payments::formatAmount(h.decimal(QStringLiteral("BaseIGTF"))),
                         payments::formatAmount(igtf));
    // The payments (crpPagosVentas).
    db::Sql p(
        db, QStringLiteral(
                "SELECT P.FormaPago, F.Nombre, P.Documento, P.Monto FROM "
                "PAGOSVENTA P LEFT JOIN FORMAPAGO F ON CAST(F.Codigo AS VARCHAR(10)) = P.FormaPago "
                "WHERE P.NumeroFactura = ? AND P.Serie = ? ORDER BY P.Item"));
    p.bind(number).bind(serie).exec();
    html += QStringLiteral("<p>PAGOS:<br>");
    while (p.next())
        html += QStringLiteral("%1 %2 %3<br>")
                    .arg(esc(p.text(QStringLiteral("Nombre")).trimmed()),
                         esc(p.text(QStringLiteral("Documento")).trimmed()),
                         payments::formatAmount(p.decimal(QStringLiteral("Monto"))));
    html += QStringLiteral("</p><p>%1<br>%2</p></body></html>").arg(esc(ctx.nota1), esc(ctx.nota2));
    return html;
}

bool writePdf(const QString& html, const QString& path, bool largeFormat, int copies) {
    QPdfWriter writer(path);
    if (largeFormat)
        writer.setPageSize(QPageSize(QPageSize::Letter));
    else
        writer.setPageSize(QPageSize(QSizeF(80, 200), QPageSize::Millimeter));
    writer.setResolution(150);
    QTextDocument doc;
    doc.setHtml(html);
    const QSizeF page(writer.width(), writer.height());
    doc.setPageSize(page);
    // Paged by hand so that the copies follow one another in the one file.
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    const int pages = std::max(doc.pageCount(), 1);
    for (int copy = 0; copy < std::max(copies, 1); ++copy) {
        for (int p = 0; p < pages; ++p) {
            if (copy > 0 || p > 0)
                writer.newPage();
            const QRectF view(QPointF(0, p * page.height()), page);
            painter.save();
            painter.translate(0, -view.top());
            painter.setClipRect(view);
            // Black on paper whatever the desktop's colours are, as a printed document is.
            QAbstractTextDocumentLayout::PaintContext context;
            context.clip = view;
            context.palette.setColor(QPalette::Text, Qt::black);
            doc.documentLayout()->draw(&painter, context);
            painter.restore();
        }
    }
    painter.end();
    return QFileInfo(path).size() > 0;
}

bool printToPdfSetting(const QString& setting, const QString& html, bool largeFormat,
                       long long number, int copies) {
    if (!setting.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
        return false;
    const QFileInfo f(setting);
    const QString path = f.absolutePath() + QLatin1Char('/') + f.completeBaseName() +
                         QStringLiteral("_%1.pdf").arg(number, 8, 10, QLatin1Char('0'));
    return writePdf(html, path, largeFormat, copies);
}

} // namespace orvo::pos::sale
