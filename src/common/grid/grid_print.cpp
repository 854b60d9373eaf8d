#include "common/grid/grid_print.h"

#include "common/grid/grid_model.h"

#include <QAbstractTextDocumentLayout>
#include <QFont>
#include <QFontMetrics>
#include <QLocale>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextDocument>

namespace orvo::grid {

namespace {

QFont arial(int points, bool bold) {
    QFont f(QStringLiteral("Arial"));
    f.setPointSize(points);
    f.setBold(bold);
    return f;
}

} // namespace

QString tableHtml(const QStringList& headers, const QList<QStringList>& rows,
                  const QList<bool>& rightAligned) {
    QString html = QStringLiteral("<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" "
                                  "width=\"100%\" style=\"border-collapse:collapse\"><tr>");
    for (const QString& h : headers)
        html += QStringLiteral("<th bgcolor=\"#d8d8d8\">") + h.toHtmlEscaped() +
                QStringLiteral("</th>");
    html += QStringLiteral("</tr>");
    for (const QStringList& row : rows) {
        html += QStringLiteral("<tr>");
        for (int c = 0; c < row.size(); ++c)
            html += (rightAligned.value(c) ? QStringLiteral("<td align=\"right\">")
                                           : QStringLiteral("<td>")) +
                    row[c].toHtmlEscaped() + QStringLiteral("</td>");
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table>");
}

QString fieldsHtml(const QList<QPair<QString, QString>>& pairs) {
    QString html = QStringLiteral("<table cellspacing=\"0\" cellpadding=\"2\" width=\"100%\">");
    for (int i = 0; i < pairs.size(); i += 2) {
        html += QStringLiteral("<tr>");
        for (int j = i; j < std::min<int>(i + 2, int(pairs.size())); ++j)
            html += QStringLiteral("<td><b>") + pairs[j].first.toHtmlEscaped() +
                    QStringLiteral(":</b></td><td>") + pairs[j].second.toHtmlEscaped() +
                    QStringLiteral("</td>");
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table><br>");
}

void printDocument(QPagedPaintDevice& device, QTextDocument& body, const QString& title,
                   const QDateTime& when) {
    QPainter painter(&device);
    const QRectF page(0, 0, device.width(), device.height()); // the printable area

    const QFont small = arial(9, false);
    const QFont big = arial(16, true);
    painter.setFont(small);
    const qreal smallLine = painter.fontMetrics().height();
    painter.setFont(big);
    const qreal bigLine = painter.fontMetrics().height();
    const qreal headerHeight = 2 * smallLine + bigLine + 2 * smallLine;
    const qreal footerHeight = 2 * smallLine;

    body.documentLayout()->setPaintDevice(&device);
    body.setDefaultFont(arial(9, false));
    body.setPageSize(QSizeF(page.width(), page.height() - headerHeight - footerHeight));
    const int pages = std::max(1, body.pageCount());
    const qreal bodyHeight = body.pageSize().height();

    const QString dateLine =
        QStringLiteral("Fecha: ") + when.toString(QStringLiteral("dd-MM-yyyy"));
    const QString timeLine =
        QStringLiteral("Hora: ") + QLocale().toString(when.time(), QLocale::ShortFormat);
    for (int p = 0; p < pages; ++p) {
        if (p > 0)
            device.newPage();
        painter.setFont(small);
        painter.drawText(QRectF(0, 0, page.width(), smallLine), Qt::AlignRight, dateLine);
        painter.drawText(QRectF(0, smallLine, page.width(), smallLine), Qt::AlignRight, timeLine);
        painter.setFont(big);
        painter.drawText(QRectF(0, 2 * smallLine, page.width(), bigLine), Qt::AlignHCenter, title);
        painter.setFont(small);
        painter.drawText(QRectF(0, page.height() - smallLine, page.width(), smallLine),
                         Qt::AlignHCenter, QStringLiteral("Pág: ") + QString::number(p + 1));

        painter.save();
        painter.translate(0, headerHeight - p * bodyHeight);
        const QRectF clip(0, p * bodyHeight, page.width(), bodyHeight);
        body.drawContents(&painter, clip);
        painter.restore();
    }
}

void printGrid(QPagedPaintDevice& device, const GridModel& model, const QString& title) {
    QStringList headers;
    QList<bool> right;
    QList<int> visible;
    for (int c = 0; c < model.columnCount(); ++c) {
        if (model.column(c).hidden)
            continue;
        visible << c;
        headers << model.column(c).caption;
        right << (model.column(c).type == GridColumn::Type::Number);
    }
    QList<QStringList> rows;
    rows.reserve(model.rowCount());
    for (int r = 0; r < model.rowCount(); ++r) {
        QStringList line;
        for (int c : visible)
            line << model.displayText(r, c);
        rows << line;
    }
    QTextDocument doc;
    doc.setHtml(tableHtml(headers, rows, right));
    printDocument(device, doc, title);
}

} // namespace orvo::grid
