#include "inventory/transfers/transfer_print.h"

#include "common/db/sql.h"
#include "common/grid/grid_print.h"
#include "inventory/transfers/transfer_store.h"
#include "inventory/transfers/transfers.h"

#include <QLocale>
#include <QMap>

namespace orvo::inventory::transfers {

namespace {

QString amount(const Decimal& d, int decimals = 2) {
    return d.toLocaleString(QLocale(), decimals);
}

QString branchLabel(const QSqlDatabase& db, const QString& code) {
    const QString name =
        db::scalar(db, QStringLiteral("SELECT Nombre FROM SUCURSALES WHERE Codigo = ?"), {code})
            .toString();
    return name.isEmpty() ? code : code + QStringLiteral(" - ") + name;
}

QString lotLabel(const QSqlDatabase& db, long long id) {
    if (id <= 0)
        return {};
    return db::scalar(db, QStringLiteral("SELECT Lote FROM LOTES WHERE ID = ?"), {id}).toString();
}

QString dispatchLabel(const QSqlDatabase& db, int id) {
    if (id <= 0)
        return {};
    return db::scalar(db, QStringLiteral("SELECT Descripcion FROM TIPO_DESPACHO WHERE ID = ?"),
                      {id})
        .toString();
}

} // namespace

PrintedDocument transferDocument(const QSqlDatabase& db, Kind kind, long long number) {
    const auto t = loadTransfer(db, kind, number);
    if (!t)
        return {};
    PrintedDocument d;
    d.title = kindName(kind) + QStringLiteral(" Nº ") + QString::number(number);
    QList<QPair<QString, QString>> header = {
        {QStringLiteral("Envía"), branchLabel(db, t->sender)},
        {QStringLiteral("Recibe"), branchLabel(db, t->receiver)},
        {QStringLiteral("Fecha"), t->date.toString(QStringLiteral("dd/MM/yyyy hh:mm"))},
        {QStringLiteral("Fecha de emisión"), t->issueDate.toString(QStringLiteral("dd/MM/yyyy"))},
        {QStringLiteral("Estatus"), purchases::statusText(t->status)},
        {QStringLiteral("Documento origen"), t->origin},
        {QStringLiteral("Lote"), lotLabel(db, t->lotId)}};
    if (kind == Kind::Transfer)
        header.append({QStringLiteral("Tipo de despacho"), dispatchLabel(db, t->dispatchId)});
    header.append({QStringLiteral("Usuario"), t->user});
    header.append({QStringLiteral("Observación"), t->note});
    d.html = purchases::fields(header);

    // Box by box, in box order, each line as it was keyed.
    QMap<long long, QList<DocumentLine>> boxes;
    for (const DocumentLine& l : t->lines)
        boxes[l.box].append(l);
    QList<QStringList> rows;
    Decimal units;
    Decimal value;
    for (auto it = boxes.cbegin(); it != boxes.cend(); ++it) {
        Decimal boxUnits;
        Decimal boxValue;
        for (const DocumentLine& l : it.value()) {
            const Decimal lineValue = (l.quantity * l.price).rounded(2);
            rows.append({QString::number(l.box), l.barcode, l.name, amount(l.quantity, 3),
                         amount(l.price, 5), amount(lineValue)});
            boxUnits += l.quantity;
            boxValue += lineValue;
        }
        rows.append({QString(), QString(),
                     QStringLiteral("Total Caja Nº ") + QString::number(it.key()),
                     amount(boxUnits, 3), QString(), amount(boxValue)});
        units += boxUnits;
        value += boxValue;
    }
    rows.append({QString(), QString(), QStringLiteral("TOTAL"), amount(units, 3), QString(),
                 amount(value)});
    d.html += grid::tableHtml({QStringLiteral("Caja"), QStringLiteral("Código"),
                               QStringLiteral("Descripción"), QStringLiteral("Cantidad"),
                               QStringLiteral("Costo"), QStringLiteral("Total")},
                              rows, {true, false, false, true, true, true});
    d.html += QStringLiteral("<br>") +
              purchases::fields({{QStringLiteral("Cajas"), QString::number(boxes.size())},
                                 {QStringLiteral("Unidades"), amount(units, 3)},
                                 {QStringLiteral("Total valor"), amount(t->totalValue)}});
    return d;
}

} // namespace orvo::inventory::transfers
