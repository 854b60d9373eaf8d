#include "inventory/adjustments/adjustments.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/grid/grid_print.h"
#include "common/numbering/numbering.h"
#include "inventory/adjustments/adjustment_store.h"
#include "inventory/articles/articles.h"
#include "inventory/stock/date_guard.h"

#include <QLocale>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcAdjustments, "orvo.inventory.adjustments")

namespace orvo::inventory::adjustments {

namespace {

AdjustmentType checkedType(const QSqlDatabase& db, int code) {
    const auto t = store::type(db, code);
    if (!t)
        throw UserError(QStringLiteral("Seleccione un tipo de ajuste...!"));
    if (t->sign != 1 && t->sign != -1)
        throw UserError(QStringLiteral("El tipo de ajuste ") + QString::number(code) +
                        QStringLiteral(" debe tener signo 1 o -1...!"));
    return *t;
}

LoadedLines loaded(const QSqlDatabase& db, const QList<QPair<QString, Decimal>>& quantities) {
    LoadedLines out;
    for (const auto& [barcode, quantity] : quantities) {
        const auto article = findArticleByBarcode(db, barcode);
        if (!article || article->type == 1 || quantity <= Decimal())
            out.missing.append({barcode, article ? article->name : QString(), quantity});
        else
            out.lines.append(
                {article->barcode, article->name, quantity, article->averageCost, Decimal()});
    }
    return out;
}

QString amount(const Decimal& d, int decimals = 2) {
    return d.toLocaleString(QLocale(), decimals);
}

} // namespace

QList<AdjustmentType> adjustmentTypes(const QSqlDatabase& db) {
    return store::activeTypes(db);
}

Article stockArticle(const QSqlDatabase& db, const QString& barcode) {
    const QString code = barcode.trimmed();
    if (code.isEmpty())
        throw UserError(QStringLiteral("Debe ingresar el código del artículo...!"));
    const auto article = findArticleByBarcode(db, code);
    if (!article)
        throw UserError(QStringLiteral("El código ") + code +
                        QStringLiteral(" no existe en el inventario...!"));
    if (article->type == 1)
        throw UserError(QStringLiteral("El artículo ") + code +
                        QStringLiteral(" es un servicio y no lleva existencia...!"));
    return *article;
}

AdjustmentLine adjustmentLine(const QSqlDatabase& db, const QString& barcode,
                              const Decimal& quantity) {
    const Article article = stockArticle(db, barcode);
    if (quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor a cero...!"));
    return {article.barcode, article.name, quantity, article.averageCost, Decimal()};
}

void checkAdjustment(const Adjustment& a) {
    if (a.type == 0)
        throw UserError(QStringLiteral("Seleccione un tipo de ajuste...!"));
    if (a.lines.isEmpty())
        throw UserError(QStringLiteral("El ajuste debe contener al menos un items...!"));
    for (const AdjustmentLine& l : a.lines)
        if (l.quantity <= Decimal())
            throw UserError(QStringLiteral("La cantidad debe ser mayor a cero...!"));
}

long long saveAdjustment(const QSqlDatabase& db, Adjustment a, bool approve) {
    checkAdjustment(a);
    db::Transaction tx(db);
    const QDateTime now = db::serverNow(db);
    a.date = a.date.isValid() ? QDateTime(a.date.date(), now.time()) : now;
    stock::checkDocumentDate(db, a.date.date());
    a.sign = checkedType(db, a.type).sign;
    for (const AdjustmentLine& l : a.lines)
        if (!findArticleByBarcode(db, l.barcode))
            throw UserError(QStringLiteral("El código ") + l.barcode +
                            QStringLiteral(" no existe en el inventario...!"));
    a.totalValue = Decimal();
    for (const AdjustmentLine& l : a.lines)
        a.totalValue += l.quantity * l.price;
    a.totalValue = a.totalValue.rounded(2);
    if (a.number == 0) {
        a.number = common::nextCode(db, QStringLiteral("AJUSTES"), QStringLiteral("Numero"));
        store::insertAdjustment(db, a);
    } else {
        if (!store::updateAdjustment(db, a))
            throw UserError(QStringLiteral("El ajuste ya fue aprobado y no puede "
                                           "modificarse...!"));
        store::deleteLines(db, a.number);
    }
    for (int i = 0; i < a.lines.size(); ++i)
        store::upsertLine(db, a.number, a.lines[i], i + 1);
    if (approve) {
        if (!store::markApproved(db, a.number))
            throw UserError(QStringLiteral("El ajuste ya fue aprobado...!"));
        store::moveStock(db, a.number, a.sign, false);
    }
    tx.commit();
    qCInfo(lcAdjustments) << "adjustment" << a.number << "saved"
                          << (approve ? "and approved" : "open");
    return a.number;
}

void deleteAdjustment(const QSqlDatabase& db, long long number) {
    db::Transaction tx(db);
    if (!store::deleteOpen(db, number))
        throw UserError(QStringLiteral("Solo puede eliminar un ajuste ABIERTO...!"));
    tx.commit();
}

std::optional<Adjustment> loadAdjustment(const QSqlDatabase& db, long long number) {
    return store::load(db, number);
}

QList<purchases::DocumentSummary> listAdjustments(const QSqlDatabase& db) {
    return store::list(db);
}

LoadedLines linesFromTransfer(const QSqlDatabase& db, long long number) {
    if (!store::transferExists(db, number))
        throw UserError(QStringLiteral("No existe el numero de documento...!"));
    return loaded(db, store::transferQuantities(db, number));
}

LoadedLines linesFromTransferReturn(const QSqlDatabase& db, long long number) {
    if (!store::transferReturnExists(db, number))
        throw UserError(QStringLiteral("No existe el numero de documento...!"));
    return loaded(db, store::transferReturnQuantities(db, number));
}

QList<AdjustmentLine> atAverageCost(const QSqlDatabase& db,
                                    const QList<purchases::DocumentLine>& lines) {
    QList<QPair<QString, Decimal>> quantities;
    for (const purchases::DocumentLine& l : lines)
        quantities.append({l.barcode, l.quantity});
    return loaded(db, quantities).lines;
}

purchases::PrintedDocument adjustmentDocument(const QSqlDatabase& db, long long number) {
    const auto a = store::load(db, number);
    if (!a)
        return {};
    const auto t = store::type(db, a->type);
    purchases::PrintedDocument d;
    d.title = QStringLiteral("Ajuste de inventario Nº ") + QString::number(number);
    d.html = grid::fieldsHtml(
        {{QStringLiteral("Tipo de ajuste"),
          QString::number(a->type) + QStringLiteral(" - ") + (t ? t->name : QString())},
         {QStringLiteral("Signo"),
          a->sign < 0 ? QStringLiteral("SALIDA (-)") : QStringLiteral("ENTRADA (+)")},
         {QStringLiteral("Fecha"), a->date.toString(QStringLiteral("dd/MM/yyyy"))},
         {QStringLiteral("Estatus"),
          a->status == kOpen ? QStringLiteral("ABIERTA") : QStringLiteral("APROBADA")},
         {QStringLiteral("Usuario"), a->user},
         {QStringLiteral("Lote"), a->lotId > 0 ? QString::number(a->lotId) : QString()},
         {QStringLiteral("Observación"), a->note}});
    QList<QStringList> rows;
    Decimal units;
    for (const AdjustmentLine& l : a->lines) {
        rows.append({l.barcode, l.name, amount(l.quantity, 3), amount(l.price),
                     amount((l.quantity * l.price).rounded(2))});
        units += l.quantity;
    }
    rows.append(
        {QString(), QStringLiteral("TOTAL"), amount(units, 3), QString(), amount(a->totalValue)});
    d.html += grid::tableHtml({QStringLiteral("Código"), QStringLiteral("Descripción"),
                               QStringLiteral("Cantidad"), QStringLiteral("Costo"),
                               QStringLiteral("Total")},
                              rows, {false, false, true, true, true});
    return d;
}

} // namespace orvo::inventory::adjustments
