#include "inventory/transfers/transfers.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/articles/articles.h"
#include "inventory/purchases/purchase_rules.h"
#include "inventory/stock/date_guard.h"
#include "inventory/transfers/transfer_store.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcTransfers, "orvo.inventory.transfers")

namespace orvo::inventory::transfers {

namespace {

void report(const Progress& progress, const QString& text) {
    if (progress)
        progress(text);
}

UserError zeroCost() {
    return UserError(QStringLiteral("No se puede transferir el artículo con costo cero...!"));
}

// A line of the document as the save writes it: merged by (barcode, box), first one first.
QList<DocumentLine> mergedByBox(const QList<DocumentLine>& lines) {
    QList<DocumentLine> out;
    for (const DocumentLine& l : lines) {
        auto it = std::find_if(out.begin(), out.end(), [&](const DocumentLine& o) {
            return o.barcode == l.barcode && o.box == l.box;
        });
        if (it == out.end())
            out.append(l);
        else
            it->quantity += l.quantity;
    }
    return out;
}

} // namespace

QString kindName(Kind kind) {
    return kind == Kind::Transfer ? QStringLiteral("Transferencia")
                                  : QStringLiteral("Devolución de transferencia");
}

DocumentLine articleLine(const QSqlDatabase& db, Kind kind, const QString& barcode,
                         const Decimal& quantity, long long box) {
    const QString code = barcode.trimmed();
    const auto article = findArticleByBarcode(db, code);
    if (!article)
        throw UserError(QStringLiteral("El código ") + code +
                        QStringLiteral(" no existe en el inventario...!"));
    if (kind == Kind::Transfer && article->averageCost <= Decimal())
        throw zeroCost();
    DocumentLine l;
    l.barcode = article->barcode;
    l.name = article->name;
    l.quantity = quantity;
    l.price = article->averageCost;
    l.box = box > 0 ? box : 1;
    return l;
}

CheckedLines checkLines(const QSqlDatabase& db, Kind kind, const QList<DocumentLine>& lines) {
    CheckedLines out;
    for (const DocumentLine& l : lines) {
        const auto article = findArticleByBarcode(db, l.barcode.trimmed());
        if (!article || (kind == Kind::Transfer && article->averageCost <= Decimal())) {
            out.missing.append({l.barcode, article ? article->name : l.name, l.quantity});
            continue;
        }
        DocumentLine checked = l;
        checked.barcode = article->barcode;
        checked.name = article->name;
        checked.price = article->averageCost;
        checked.box = l.box > 0 ? l.box : 1;
        out.lines.append(checked);
    }
    return out;
}

void checkTransfer(const QSqlDatabase& db, const Transfer& t) {
    const bool transfer = t.kind == Kind::Transfer;
    if (t.receiver.trimmed().isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar una sucursal...!"));
    if (t.receiver == store::storeCode(db))
        throw UserError(QStringLiteral("La sucursal de destino no puede ser esta tienda...!"));
    if (t.lines.isEmpty())
        throw UserError(transfer
                            ? QStringLiteral("La Transferencia debe contener al menos un items...!")
                            : QStringLiteral("La Devolución debe contener al menos un items..."));
    for (const DocumentLine& l : t.lines)
        if (l.quantity <= Decimal())
            throw UserError(
                transfer
                    ? QStringLiteral("La Transferencia tiene un Item con cantidad en 0...!")
                    : QStringLiteral(
                          "La Devolucion de Transferencia tiene un Item con cantidad en 0...!"));
}

long long saveTransfer(const QSqlDatabase& db, Transfer t, bool approve, const Progress& progress) {
    checkTransfer(db, t);
    report(progress, QStringLiteral("Verificando..."));

    db::Transaction tx(db);
    const long long number = writeTransfer(db, std::move(t), approve, progress);
    tx.commit();
    return number;
}

long long writeTransfer(const QSqlDatabase& db, Transfer t, bool approve,
                        const Progress& progress) {
    db::requireTransaction(db);
    checkTransfer(db, t);
    const QDateTime now = db::serverNow(db);
    if (!t.issueDate.isValid())
        t.issueDate = now.date();
    stock::checkDocumentDate(db, t.issueDate);
    t.date = QDateTime(t.issueDate, now.time());
    t.sender = store::storeCode(db);
    if (!store::branchExists(db, t.receiver))
        throw UserError(QStringLiteral("La sucursal ") + t.receiver +
                        QStringLiteral(" no existe...!"));
    // The value shown while open is the lines' worth at today's costs; approval fixes it.
    Decimal total;
    for (DocumentLine& l : t.lines) {
        const auto article = findArticleByBarcode(db, l.barcode);
        if (!article)
            throw UserError(QStringLiteral("El código ") + l.barcode +
                            QStringLiteral(" no existe en el inventario...!"));
        if (t.kind == Kind::Transfer && article->averageCost <= Decimal())
            throw zeroCost();
        l.price = article->averageCost;
        total += l.quantity * l.price;
    }
    t.totalValue = total.rounded(2);
    const QList<DocumentLine> lines = mergedByBox(t.lines);
    if (t.number == 0) {
        t.number = common::nextCode(db, store::issued(t.kind).header, QStringLiteral("Numero"));
        store::insertHeader(db, t);
    } else {
        if (!store::updateHeader(db, t))
            throw UserError(QStringLiteral("La ") + kindName(t.kind).toLower() +
                            QStringLiteral(" ya fue aprobada y no puede modificarse...!"));
        store::deleteLines(db, t.kind, t.number);
    }
    const QString saving =
        (t.kind == Kind::Transfer ? QStringLiteral("Guardando transferencia Nº ")
                                  : QStringLiteral("Guardando devolucion de transferencia Nº ")) +
        QString::number(t.number) + QStringLiteral("... ");
    for (int i = 0; i < lines.size(); ++i) {
        report(progress, saving + QString::number(i + 1) + QStringLiteral(" de ") +
                             QString::number(lines.size()));
        store::upsertLine(db, t.kind, t.number, lines[i], i + 1, t.date);
    }
    if (approve) {
        // Each barcode moves once, its boxes summed, at the cost it has now.
        const Decimal sign = t.kind == Kind::Transfer ? Decimal(-1) : Decimal(1);
        Decimal value;
        for (const store::Movement& m : store::holdMovements(db, t.kind, t.number)) {
            if (t.kind == Kind::Transfer && m.cost <= Decimal())
                throw zeroCost();
            store::addStock(db, m.barcode, m.units * sign);
            store::freezeValue(db, t.kind, t.number, m.barcode, m.cost);
            value += m.units * m.cost;
        }
        if (!store::markApproved(db, t.kind, t.number, value.rounded(2)))
            throw UserError(QStringLiteral("La ") + kindName(t.kind).toLower() +
                            QStringLiteral(" ya fue aprobada...!"));
    }
    qCInfo(lcTransfers) << kindName(t.kind) << t.number << "to" << t.receiver << "saved"
                        << (approve ? "and approved" : "open");
    return t.number;
}

void deleteTransfer(const QSqlDatabase& db, Kind kind, long long number) {
    db::Transaction tx(db);
    if (!store::deleteDocument(db, kind, number))
        throw UserError(QStringLiteral("Solo puede eliminar una ") + kindName(kind).toLower() +
                        QStringLiteral(" ABIERTA...!"));
    tx.commit();
}

std::optional<Transfer> loadTransfer(const QSqlDatabase& db, Kind kind, long long number) {
    return store::load(db, kind, number);
}

QList<DocumentSummary> listTransfers(const QSqlDatabase& db, Kind kind) {
    return store::list(db, kind);
}

void changeDestination(const QSqlDatabase& db, Kind kind, long long number,
                       const QString& receiver) {
    if (receiver.trimmed().isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar una sucursal...!"));
    db::Transaction tx(db);
    if (receiver == store::storeCode(db))
        throw UserError(QStringLiteral("La sucursal de destino no puede ser esta tienda...!"));
    if (!store::changeReceiver(db, kind, number, receiver))
        throw UserError(QStringLiteral("No existe el numero de documento...!"));
    tx.commit();
}

QList<ReceivedSummary> receivedTransfers(const QSqlDatabase& db, const QDate& from,
                                         const QDate& to) {
    return store::receivedBetween(db, db::dayStart(from), db::nextDayStart(to));
}

void moveAside(const QSqlDatabase& db, const QList<AsideChoice>& choices) {
    db::Transaction tx(db);
    for (const AsideChoice& c : choices)
        store::setReceivedStatus(db, c.number, c.sender, c.aside ? kMovedAside : kReceived);
    tx.commit();
}

} // namespace orvo::inventory::transfers
