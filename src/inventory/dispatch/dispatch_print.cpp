#include "inventory/dispatch/dispatch_print.h"

#include "common/db/sql.h"
#include "common/grid/grid_print.h"
#include "inventory/dispatch/guides.h"
#include "inventory/dispatch/orders.h"
#include "pos/sale/sale.h"

#include "common/errors/errors.h"

#include <QLocale>

namespace orvo::inventory::dispatch {

purchases::PrintedDocument adjustmentDocument(const QSqlDatabase& db, long long number) {
    db::Sql h(db, QStringLiteral("SELECT A.Fecha, A.Signo, A.TotalValor, A.Observacion, "
                                 "A.Usuario, T.Nombre FROM AJUSTES A LEFT JOIN TIPOAJUSTES T ON "
                                 "T.Codigo = A.TipoAjuste WHERE A.Numero = ?"));
    h.bind(number).exec();
    if (!h.next())
        return {};
    const QLocale locale;
    purchases::PrintedDocument d;
    d.title = QStringLiteral("Ajuste Nº ") + QString::number(number);
    d.html = purchases::fields(
        {{QStringLiteral("Fecha"),
          h.dateTime(QStringLiteral("Fecha")).toString(QStringLiteral("dd/MM/yyyy"))},
         {QStringLiteral("Tipo"), h.text(QStringLiteral("Nombre"))},
         {QStringLiteral("Signo"), h.integer(QStringLiteral("Signo")) < 0
                                       ? QStringLiteral("Salida")
                                       : QStringLiteral("Entrada")},
         {QStringLiteral("Usuario"), h.text(QStringLiteral("Usuario"))},
         {QStringLiteral("Observación"), h.text(QStringLiteral("Observacion"))}});
    db::Sql l(db, QStringLiteral("SELECT M.CodigoBarra, I.Nombre, M.Cantidad, M.Costo FROM "
                                 "MOVAJUSTES M LEFT JOIN INVENTARIO I ON I.CodigoBarra = "
                                 "M.CodigoBarra WHERE M.Numero = ? ORDER BY M.Item"));
    l.bind(number).exec();
    QList<QStringList> rows;
    Decimal units;
    while (l.next()) {
        const Decimal q = l.decimal(QStringLiteral("Cantidad"));
        const Decimal c = l.decimal(QStringLiteral("Costo"));
        rows.append({l.text(QStringLiteral("CodigoBarra")), l.text(QStringLiteral("Nombre")),
                     q.toLocaleString(locale, 3), c.toLocaleString(locale, 2),
                     (q * c).rounded(2).toLocaleString(locale, 2)});
        units += q;
    }
    rows.append({QString(), QStringLiteral("TOTAL"), units.toLocaleString(locale, 3), QString(),
                 h.decimal(QStringLiteral("TotalValor")).toLocaleString(locale, 2)});
    d.html += grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Descripción"),
                               QStringLiteral("Cantidad"), QStringLiteral("Costo"),
                               QStringLiteral("Total")},
                              rows, {false, false, true, true, true});
    return d;
}

purchases::PrintedDocument orderDocument(const QSqlDatabase& db, long long number) {
    pos::sale::SaleDraft draft;
    LoadedOrder o;
    try {
        o = loadOrder(db, number, draft);
    } catch (const UserError&) {
        return {};
    }
    const QLocale locale;
    purchases::PrintedDocument d;
    d.title = QStringLiteral("Orden de Despacho Nº ") + QString::number(number);
    d.html = purchases::fields(
        {{QStringLiteral("Cliente"), o.summary.client + QStringLiteral(" ") + o.summary.clientName},
         {QStringLiteral("Fecha"), o.summary.date.toString(QStringLiteral("dd/MM/yyyy"))},
         {QStringLiteral("Estatus"), o.summary.status == 0   ? QStringLiteral("ABIERTA")
                                     : o.summary.status == 1 ? QStringLiteral("APROBADA")
                                                             : QStringLiteral("FACTURADA")},
         {QStringLiteral("Exenta"), o.summary.exempt ? QStringLiteral("SI") : QStringLiteral("NO")},
         {QStringLiteral("Observación"), o.note}});
    QList<QStringList> rows;
    for (const pos::sale::SaleLine& l : draft.lines())
        rows.append(
            {l.codigoBarra, l.nombre, QString(QLatin1Char(l.tipoLista)),
             l.cantidad.toLocaleString(locale, 3), l.precioLista.toLocaleString(locale, 2),
             l.impuesto.toLocaleString(locale, 2),
             ((l.precioLista + l.impuesto) * l.cantidad).rounded(2).toLocaleString(locale, 2)});
    const pos::sale::SaleTotals t = draft.totals();
    rows.append({QString(), QStringLiteral("Mercancía"), QString(), QString(), QString(), QString(),
                 t.merchandise.toLocaleString(locale, 2)});
    rows.append({QString(), QStringLiteral("Descuento"), QString(), QString(), QString(), QString(),
                 t.discount.toLocaleString(locale, 2)});
    rows.append({QString(), QStringLiteral("Impuesto"), QString(), QString(), QString(), QString(),
                 t.tax.toLocaleString(locale, 2)});
    rows.append({QString(), QStringLiteral("TOTAL"), QString(), QString(), QString(), QString(),
                 t.total.toLocaleString(locale, 2)});
    d.html += grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Descripción"),
                               QStringLiteral("Lista"), QStringLiteral("Cantidad"),
                               QStringLiteral("Precio"), QStringLiteral("Impuesto"),
                               QStringLiteral("Total")},
                              rows, {false, false, false, true, true, true, true});
    return d;
}

purchases::PrintedDocument guideDocument(const QSqlDatabase& db, long long number) {
    const auto g = loadGuide(db, number);
    if (!g)
        return {};
    auto nameOf = [](const QList<Choice>& list, const QString& code) {
        for (const Choice& c : list)
            if (c.code == code)
                return code + QStringLiteral(" - ") + c.name;
        return code;
    };
    const QLocale locale;
    purchases::PrintedDocument d;
    d.title = QStringLiteral("Guia de Despacho Nº ") + QString::number(number);
    d.html = purchases::fields(
        {{QStringLiteral("Fecha"), g->date.toString(QStringLiteral("dd/MM/yyyy"))},
         {QStringLiteral("Estatus"),
          g->status == 0 ? QStringLiteral("ABIERTA") : QStringLiteral("APROBADA")},
         {QStringLiteral("Conductor"), nameOf(drivers(db), g->driver)},
         {QStringLiteral("Vehículo"), nameOf(vehicles(db), g->vehicle)},
         {QStringLiteral("Observación"), g->note}});
    QList<QStringList> rows;
    int boxes = 0;
    Decimal units;
    for (const GuideRemission& r : g->remissions) {
        rows.append({QString::number(r.number), r.branch + QStringLiteral(" ") + r.branchName,
                     QString::number(r.boxes), r.units.toLocaleString(locale, 3)});
        boxes += r.boxes;
        units += r.units;
    }
    rows.append({QString(), QStringLiteral("TOTAL"), QString::number(boxes),
                 units.toLocaleString(locale, 3)});
    d.html += grid::tableHtml({QStringLiteral("Remisión"), QStringLiteral("Destino"),
                               QStringLiteral("Cajas"), QStringLiteral("Unidades")},
                              rows, {true, false, true, true});
    return d;
}

} // namespace orvo::inventory::dispatch
