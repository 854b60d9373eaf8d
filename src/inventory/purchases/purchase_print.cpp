#include "inventory/purchases/purchase_print.h"

#include "common/grid/grid_print.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/purchases/purchase_store.h"
#include "inventory/purchases/purchases.h"
#include "inventory/purchases/receptions.h"

#include <QLocale>

namespace orvo::inventory::purchases {

namespace {

QString amount(const Decimal& d, int decimals = 2) {
    return d.toLocaleString(QLocale(), decimals);
}

QString day(const QDateTime& d) {
    return d.toString(QStringLiteral("dd/MM/yyyy"));
}

// Lines with their unit price (six decimals) and amount.
QString lineTable(const QList<DocumentLine>& lines, int priceDecimals) {
    QList<QStringList> rows;
    for (const DocumentLine& l : lines)
        rows.append({l.barcode, l.name, amount(l.quantity, 3), amount(l.price, priceDecimals),
                     amount(l.taxPercent), amount((l.quantity * l.price).rounded(2))});
    return grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Descripción"),
                            QStringLiteral("Cantidad"), QStringLiteral("Precio"),
                            QStringLiteral("% Imp."), QStringLiteral("Total")},
                           rows, {false, false, true, true, true, true});
}

QString totals(const DocumentTotals& t) {
    return QStringLiteral("<br>") +
           fields({{QStringLiteral("Total mercancía"), amount(t.merchandise)},
                   {QStringLiteral("Descuento"), amount(t.discount)},
                   {QStringLiteral("Impuesto"), amount(t.tax)},
                   {QStringLiteral("Total"), amount(t.total())}});
}

QString coveredText(const Reception& r) {
    QStringList covered;
    for (const CoveredPurchase& p : r.purchases)
        covered << p.document + QStringLiteral(" (") + p.supplier + QStringLiteral(")");
    return covered.join(QStringLiteral(", "));
}

QString supplierLabel(const QSqlDatabase& db, const QString& code) {
    return code + QStringLiteral(" - ") + store::supplierName(db, code);
}

} // namespace

PrintedDocument joinedDocuments(const QString& title, const QList<long long>& numbers,
                                const std::function<PrintedDocument(long long)>& document) {
    PrintedDocument all;
    QStringList shown;
    for (long long n : numbers) {
        const PrintedDocument d = document(n);
        all.html += (all.html.isEmpty() ? QString()
                                        : QStringLiteral("<div style=\"page-break-before: "
                                                         "always\"></div>")) +
                    QStringLiteral("<h3>") + d.title.toHtmlEscaped() + QStringLiteral("</h3>") +
                    d.html;
        shown << QString::number(n);
    }
    all.title = title + QStringLiteral(" Nº ") + shown.join(QStringLiteral(", "));
    return all;
}

QString fields(const QList<QPair<QString, QString>>& pairs) {
    return grid::fieldsHtml(pairs);
}

QString statusText(int status) {
    switch (status) {
    case kOpen:
        return QStringLiteral("ABIERTA");
    case kExported:
        return QStringLiteral("EXPORTADA");
    default:
        return QStringLiteral("APROBADA");
    }
}

PrintedDocument orderDocument(const QSqlDatabase& db, long long number) {
    const auto o = loadOrder(db, number);
    if (!o)
        return {};
    PrintedDocument d;
    d.title = QStringLiteral("Orden de compra Nº ") + QString::number(number);
    d.html = fields({{QStringLiteral("Proveedor"), supplierLabel(db, o->supplier)},
                     {QStringLiteral("Fecha"), day(o->date)},
                     {QStringLiteral("Estatus"), statusText(o->status)},
                     {QStringLiteral("Usuario"), o->user},
                     {QStringLiteral("Observación"), o->note}}) +
             lineTable(o->lines, 6) + totals(rules::totalsOf(o->lines));
    return d;
}

PrintedDocument purchaseDocument(const QSqlDatabase& db, const QString& document,
                                 const QString& supplier) {
    const auto p = loadPurchase(db, document, supplier);
    if (!p)
        return {};
    PrintedDocument d;
    d.title = QStringLiteral("Compra Nº ") + document;
    d.html = fields({{QStringLiteral("Proveedor"), supplierLabel(db, p->supplier)},
                     {QStringLiteral("Estatus"), statusText(p->status)},
                     {QStringLiteral("Fecha"), day(p->date)},
                     {QStringLiteral("Fecha factura"),
                      p->invoiceDate.toString(QStringLiteral("dd/MM/yyyy"))},
                     {QStringLiteral("Tipo de pago"),
                      p->paymentType == 2 ? QStringLiteral("CRÉDITO") : QStringLiteral("CONTADO")},
                     {QStringLiteral("Días de crédito"), QString::number(p->creditDays)},
                     {QStringLiteral("Expediente"), p->file},
                     {QStringLiteral("Tasa de cambio"), amount(p->exchangeRate, 4)},
                     {QStringLiteral("Descuento %"), amount(p->discountPercent)},
                     {QStringLiteral("Recargos"), amount(p->surcharges)},
                     {QStringLiteral("Tasa de servicio"), amount(p->serviceFee)},
                     {QStringLiteral("Otros impuestos"), amount(p->otherTaxes)},
                     {QStringLiteral("Flete"), amount(p->freight)},
                     {QStringLiteral("Seguro"), amount(p->insurance)},
                     {QStringLiteral("Valorización"), p->valuation == Valuation::WithFreight
                                                          ? QStringLiteral("Con flete y seguro")
                                                          : QStringLiteral("Sin flete ni seguro")},
                     {QStringLiteral("Usuario"), p->user},
                     {QStringLiteral("Observación"), p->note}}) +
             lineTable(p->lines, 6) + totals(rules::totalsOf(p->lines, p->discountPercent));
    if (p->status != kOpen) {
        // The unit costs the approval prorated.
        QList<QStringList> rows;
        for (const auto& [barcode, cost] : store::proratedCosts(db, document, supplier))
            rows.append({barcode, amount(cost, 6)});
        d.html += QStringLiteral("<p><b>Costos prorrateados</b></p>") +
                  grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Costo")}, rows,
                                  {false, true});
    }
    return d;
}

PrintedDocument purchaseReturnDocument(const QSqlDatabase& db, long long number) {
    const auto r = loadPurchaseReturn(db, number);
    if (!r)
        return {};
    PrintedDocument d;
    d.title = QStringLiteral("Devolución de compra Nº ") + QString::number(number);
    d.html = fields({{QStringLiteral("Compra"), r->document},
                     {QStringLiteral("Proveedor"), supplierLabel(db, r->supplier)},
                     {QStringLiteral("Fecha"), day(r->date)},
                     {QStringLiteral("Estatus"), statusText(r->status)},
                     {QStringLiteral("Usuario"), r->user},
                     {QStringLiteral("Observación"), r->note}}) +
             lineTable(r->lines, 6) + totals(rules::totalsOf(r->lines, r->discountPercent));
    return d;
}

PrintedDocument receptionDocument(const QSqlDatabase& db, long long number, const BoxKind& kind) {
    const auto r = loadReception(db, number, kind);
    if (!r)
        return {};
    PrintedDocument d;
    d.title = kind.title + QStringLiteral(" Nº ") + QString::number(number);
    d.html = fields({{QStringLiteral("Destino"), r->branch},
                     {QStringLiteral("Fecha"), day(r->date)},
                     {QStringLiteral("Documento origen"), r->origin},
                     {QStringLiteral("Estatus"), boxedStatusText(r->status)},
                     {QStringLiteral("Compras"), coveredText(*r)},
                     {QStringLiteral("Observación"), r->note}});
    QList<QStringList> rows;
    Decimal total;
    for (const BoxSummary& b : receptionBoxes(db, number, kind)) {
        rows.append({QString::number(b.number), b.user, amount(b.quantity, 3),
                     b.closed ? QStringLiteral("Cerrada") : QStringLiteral("Abierta")});
        total += b.quantity;
    }
    rows.append({QString(), QStringLiteral("TOTAL"), amount(total, 3), QString()});
    d.html += grid::tableHtml({QStringLiteral("Caja"), QStringLiteral("Usuario"),
                               QStringLiteral("Cantidad"), QStringLiteral("Estatus")},
                              rows, {true, false, true, false});
    return d;
}

PrintedDocument boxDocument(const QSqlDatabase& db, long long reception, long long box,
                            const BoxKind& kind) {
    const auto b = loadBox(db, reception, box, kind);
    if (!b)
        return {};
    PrintedDocument d;
    d.title = kind.title + QStringLiteral(" Nº ") + QString::number(reception) +
              QStringLiteral(" - Caja Nº ") + QString::number(box);
    d.html = fields({{QStringLiteral("Usuario"), b->user},
                     {QStringLiteral("Estatus"),
                      b->closed ? QStringLiteral("Cerrada") : QStringLiteral("Abierta")}});
    QList<QStringList> rows;
    Decimal total;
    for (const BoxLine& l : b->lines) {
        rows.append({l.barcode, l.name, amount(l.quantity, 3)});
        total += l.quantity;
    }
    rows.append({QString(), QStringLiteral("TOTAL"), amount(total, 3)});
    d.html += grid::tableHtml(
        {QStringLiteral("Código"), QStringLiteral("Descripción"), QStringLiteral("Cantidad")}, rows,
        {false, false, true});
    return d;
}

PrintedDocument comparisonDocument(const QSqlDatabase& db, long long reception) {
    const auto r = loadReception(db, reception);
    if (!r)
        return {};
    PrintedDocument d;
    d.title = QStringLiteral("Recepción Nº ") + QString::number(reception) +
              QStringLiteral(" contra compras");
    d.html = fields(
        {{QStringLiteral("Compras"), coveredText(*r)}, {QStringLiteral("Destino"), r->branch}});
    QList<QStringList> rows;
    for (const ComparisonLine& l : compareReception(db, reception))
        rows.append({l.barcode, l.name, amount(l.counted, 3), amount(l.invoiced, 3),
                     amount(l.difference(), 3)});
    d.html += grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Descripción"),
                               QStringLiteral("Recibido"), QStringLiteral("Facturado"),
                               QStringLiteral("Diferencia")},
                              rows, {false, false, true, true, true});
    return d;
}

} // namespace orvo::inventory::purchases
