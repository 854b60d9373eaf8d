#include "inventory/purchases/receptions.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/articles/articles.h"
#include "inventory/purchases/purchase_store.h"
#include "inventory/purchases/reception_store.h"
#include "inventory/stock/date_guard.h"
#include "shell/startup/app_home.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTextStream>

namespace orvo::inventory::purchases {

long long saveReception(const QSqlDatabase& db, Reception r, const BoxKind& kind) {
    if (r.branch.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar el destino de la ") +
                        kind.title.toLower() + QStringLiteral("...!"));
    db::Transaction tx(db);
    const QDateTime now = db::serverNow(db);
    r.date = r.date.isValid() ? QDateTime(r.date.date(), now.time()) : now;
    stock::checkDocumentDate(db, r.date.date());
    if (r.number == 0) {
        r.number = common::lastDocumentNumber(db, kind.document) + 1;
        store::insertReception(db, r, kind);
    } else if (!store::updateReception(db, r, kind)) {
        throw UserError(store::status(db, r.number, kind) > 0 ? kind.approvedByOther : kind.gone);
    }
    store::replaceCoveredPurchases(db, r.number, r.purchases, kind);
    tx.commit();
    return r.number;
}

void deleteReception(const QSqlDatabase& db, long long number, const BoxKind& kind) {
    db::Transaction tx(db);
    if (!store::deleteReception(db, number, kind))
        throw UserError(kind.gone);
    tx.commit();
}

std::optional<Reception> loadReception(const QSqlDatabase& db, long long number,
                                       const BoxKind& kind) {
    return store::loadReception(db, number, kind);
}

QList<DocumentSummary> listReceptions(const QSqlDatabase& db, const BoxKind& kind) {
    return store::listReceptions(db, kind);
}

QList<CoveredPurchase> purchasesNumbered(const QSqlDatabase& db, const QString& document) {
    const QString number = document.trimmed();
    if (number.isEmpty())
        throw UserError(QStringLiteral("Especifique el Número de la Compra"));
    QList<CoveredPurchase> out;
    for (const DocumentSummary& s : store::approvedPurchases(db, number))
        out.append({s.number, s.supplier, s.supplierName});
    if (out.isEmpty())
        throw UserError(QStringLiteral("Número de Compra no se encuentra registrada."));
    return out;
}

void coverPurchase(Reception& r, const CoveredPurchase& p) {
    for (const CoveredPurchase& c : r.purchases)
        if (c.document == p.document && c.supplier == p.supplier)
            throw UserError(QStringLiteral("Número de Compra ya se encuentra cargado a esta "
                                           "Recepcion"));
    r.purchases.append(p);
}

Box currentBox(const QSqlDatabase& db, long long reception, const QString& user,
               const BoxKind& kind) {
    const long long last = store::userLastBox(db, reception, user, kind);
    if (last > 0) {
        if (auto box = store::loadBox(db, reception, last, kind); box && !box->closed)
            return *box;
    }
    Box fresh;
    fresh.user = user;
    return fresh;
}

void countInto(Box& box, const BoxLine& line) {
    if (line.quantity <= Decimal())
        throw UserError(QStringLiteral("La cantidad debe ser mayor a cero...!"));
    for (BoxLine& l : box.lines) {
        if (l.barcode == line.barcode) {
            l.quantity += line.quantity;
            return;
        }
    }
    box.lines.append(line);
}

long long saveBox(const QSqlDatabase& db, long long reception, const Box& box, bool close,
                  const BoxKind& kind) {
    if (box.lines.isEmpty())
        throw UserError(kind.emptyBox);
    db::Transaction tx(db);
    if (!store::holdOpenReception(db, reception, kind))
        throw UserError(kind.gone);
    long long number = box.number;
    if (number == 0)
        number = common::lastBoxNumber(db, kind.document, reception) + 1;
    else if (store::boxIsClosed(db, reception, number, kind))
        throw UserError(QStringLiteral("La caja ") + QString::number(number) +
                        QStringLiteral(" ya fue cerrada...!"));
    store::deleteBoxLines(db, reception, number, kind);
    const QDateTime now = db::serverNow(db);
    int item = 0;
    for (const BoxLine& l : box.lines) {
        const auto article = findArticleByBarcode(db, l.barcode);
        if (!article)
            throw UserError(QStringLiteral("El código ") + l.barcode +
                            QStringLiteral(" no existe en el inventario...!"));
        store::upsertBoxLine(db, reception, number, ++item,
                             {l, article->retailPrice, article->averageCost}, box.user, now, kind);
    }
    if (close)
        store::closeBox(db, reception, number, kind);
    tx.commit();
    return number;
}

void checkBoxDeletion(const QSqlDatabase& db, long long reception, long long box,
                      const BoxKind& kind) {
    if (box != common::lastBoxNumber(db, kind.document, reception))
        throw UserError(kind.lastBoxOnly);
}

void deleteBox(const QSqlDatabase& db, long long reception, long long box, const BoxKind& kind) {
    db::Transaction tx(db);
    if (!store::holdOpenReception(db, reception, kind))
        throw UserError(kind.gone);
    checkBoxDeletion(db, reception, box, kind);
    store::deleteBoxLines(db, reception, box, kind);
    tx.commit();
}

QList<BoxSummary> receptionBoxes(const QSqlDatabase& db, long long reception, const BoxKind& kind) {
    return store::boxes(db, reception, kind);
}

std::optional<Box> loadBox(const QSqlDatabase& db, long long reception, long long box,
                           const BoxKind& kind) {
    return store::loadBox(db, reception, box, kind);
}

namespace {
void checkApprovable(const QSqlDatabase& db, long long reception, const BoxKind& kind) {
    if (!common::documentHasLines(db, kind.document, reception))
        throw UserError(kind.noBoxes);
    if (store::hasOpenBox(db, reception, kind))
        throw UserError(kind.openBoxes);
    if (kind.purchaseTypeNeedsPurchases) {
        const auto r = store::loadReception(db, reception, kind);
        if (r && r->originType == ReceptionOrigin::Purchases && r->purchases.isEmpty())
            throw UserError(QStringLiteral("El tipo de Documento es Compra y no ha digitado "
                                           "ninguna. "));
    }
}
} // namespace

void checkReceptionApproval(const QSqlDatabase& db, long long reception, const BoxKind& kind) {
    db::Transaction tx(db);
    checkApprovable(db, reception, kind);
    tx.rollback(); // the tests wrote nothing
}

void approveReception(const QSqlDatabase& db, long long reception, const QString& user,
                      const BoxKind& kind) {
    db::Transaction tx(db);
    checkApprovable(db, reception, kind);
    const store::Approver who{user, ArticleWriter::here(user, kind.screen).address};
    if (!store::approveReception(db, reception, db::serverNow(db), who, kind))
        throw UserError(kind.gone);
    tx.commit();
}

QList<ComparisonLine> compareReception(const QSqlDatabase& db, long long reception,
                                       const BoxKind& kind) {
    return store::comparison(db, reception, kind);
}

QString boxBackupPath(const BoxKind& kind) {
    return QDir(shell::appHome()).filePath(kind.backupFile);
}

void writeBoxBackup(const QString& path, const BoxBackup& b, const BoxKind& kind) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw UserError(QStringLiteral("No se pudo guardar el respaldo local ") + path +
                        QStringLiteral("...!"));
    QTextStream out(&file);
    out << kind.backupTag << '\t' << b.reception << '\t' << b.box << '\t' << b.user << '\n';
    for (const BoxLine& l : b.lines)
        out << l.barcode << '\t' << l.quantity.toString() << '\t' << l.name << '\n';
    out.flush();
    if (!file.commit())
        throw UserError(QStringLiteral("No se pudo guardar el respaldo local ") + path +
                        QStringLiteral("...!"));
}

std::optional<BoxBackup> readBoxBackup(const QString& path, const BoxKind& kind) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    QTextStream in(&file);
    const QStringList head = in.readLine().split(QLatin1Char('\t'));
    if (head.size() < 4 || head[0] != kind.backupTag)
        return std::nullopt;
    BoxBackup b;
    b.reception = head[1].toLongLong();
    b.box = head[2].toLongLong();
    b.user = head[3];
    while (!in.atEnd()) {
        const QStringList f = in.readLine().split(QLatin1Char('\t'));
        if (f.size() < 2 || f[0].isEmpty())
            continue;
        const auto quantity = Decimal::parse(f[1]);
        if (!quantity)
            return std::nullopt;
        b.lines.append({f[0], f.value(2), *quantity});
    }
    return b;
}

} // namespace orvo::inventory::purchases
