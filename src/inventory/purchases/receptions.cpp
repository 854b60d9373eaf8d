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

namespace {

const QString kGone = QStringLiteral("La recepción no existe o ya fue aprobada por otro "
                                     "usuario...!");
const QString kBackupHeader = QStringLiteral("ORVO-RECEPCION");

} // namespace

long long saveReception(const QSqlDatabase& db, Reception r) {
    if (r.branch.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar el destino de la recepción...!"));
    db::Transaction tx(db);
    const QDateTime now = db::serverNow(db);
    r.date = r.date.isValid() ? QDateTime(r.date.date(), now.time()) : now;
    stock::checkDocumentDate(db, r.date.date());
    if (r.number == 0) {
        r.number = common::lastDocumentNumber(db, common::BoxDocument::Reception) + 1;
        store::insertReception(db, r);
    } else if (!store::updateReception(db, r)) {
        throw UserError(kGone);
    }
    store::replaceCoveredPurchases(db, r.number, r.purchases);
    tx.commit();
    return r.number;
}

void deleteReception(const QSqlDatabase& db, long long number) {
    db::Transaction tx(db);
    if (!store::deleteReception(db, number))
        throw UserError(kGone);
    tx.commit();
}

std::optional<Reception> loadReception(const QSqlDatabase& db, long long number) {
    return store::loadReception(db, number);
}

QList<DocumentSummary> listReceptions(const QSqlDatabase& db) {
    return store::listReceptions(db);
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

Box currentBox(const QSqlDatabase& db, long long reception, const QString& user) {
    const long long last = store::userLastBox(db, reception, user);
    if (last > 0) {
        if (auto box = store::loadBox(db, reception, last); box && !box->closed)
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

long long saveBox(const QSqlDatabase& db, long long reception, const Box& box, bool close) {
    if (box.lines.isEmpty())
        throw UserError(QStringLiteral("La caja de la recepción debe contener al menos un "
                                       "items...!"));
    db::Transaction tx(db);
    if (!store::holdOpenReception(db, reception))
        throw UserError(kGone);
    long long number = box.number;
    if (number == 0)
        number = common::lastBoxNumber(db, common::BoxDocument::Reception, reception) + 1;
    else if (store::boxIsClosed(db, reception, number))
        throw UserError(QStringLiteral("La caja ") + QString::number(number) +
                        QStringLiteral(" ya fue cerrada...!"));
    store::deleteBoxLines(db, reception, number);
    const QDateTime now = db::serverNow(db);
    int item = 0;
    for (const BoxLine& l : box.lines) {
        const auto article = findArticleByBarcode(db, l.barcode);
        if (!article)
            throw UserError(QStringLiteral("El código ") + l.barcode +
                            QStringLiteral(" no existe en el inventario...!"));
        store::upsertBoxLine(db, reception, number, ++item,
                             {l, article->retailPrice, article->averageCost}, box.user, now);
    }
    if (close)
        store::closeBox(db, reception, number);
    tx.commit();
    return number;
}

void checkBoxDeletion(const QSqlDatabase& db, long long reception, long long box) {
    if (box != common::lastBoxNumber(db, common::BoxDocument::Reception, reception))
        throw UserError(QStringLiteral("Solo puede eliminar la ultima caja de la recepción "
                                       "seleccionada...!"));
}

void deleteBox(const QSqlDatabase& db, long long reception, long long box) {
    db::Transaction tx(db);
    if (!store::holdOpenReception(db, reception))
        throw UserError(kGone);
    checkBoxDeletion(db, reception, box);
    store::deleteBoxLines(db, reception, box);
    tx.commit();
}

QList<BoxSummary> receptionBoxes(const QSqlDatabase& db, long long reception) {
    return store::boxes(db, reception);
}

std::optional<Box> loadBox(const QSqlDatabase& db, long long reception, long long box) {
    return store::loadBox(db, reception, box);
}

namespace {
void checkApprovable(const QSqlDatabase& db, long long reception) {
    if (!common::documentHasLines(db, common::BoxDocument::Reception, reception))
        throw UserError(QStringLiteral("No existen cajas en la recepción...!"));
    if (store::hasOpenBox(db, reception))
        throw UserError(QStringLiteral("Existen cajas abiertas...!\nEl cierre de la recepción "
                                       "no procede...!"));
}
} // namespace

void checkReceptionApproval(const QSqlDatabase& db, long long reception) {
    db::Transaction tx(db);
    checkApprovable(db, reception);
    tx.rollback(); // the tests wrote nothing
}

void approveReception(const QSqlDatabase& db, long long reception) {
    db::Transaction tx(db);
    checkApprovable(db, reception);
    if (!store::approveReception(db, reception, db::serverNow(db)))
        throw UserError(kGone);
    tx.commit();
}

QList<ComparisonLine> compareReception(const QSqlDatabase& db, long long reception) {
    return store::comparison(db, reception);
}

QString boxBackupPath() {
    return QDir(shell::appHome()).filePath(QStringLiteral("Recepcion.SS7"));
}

void writeBoxBackup(const QString& path, const BoxBackup& b) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        throw UserError(QStringLiteral("No se pudo guardar el respaldo local ") + path +
                        QStringLiteral("...!"));
    QTextStream out(&file);
    out << kBackupHeader << '\t' << b.reception << '\t' << b.box << '\t' << b.user << '\n';
    for (const BoxLine& l : b.lines)
        out << l.barcode << '\t' << l.quantity.toString() << '\t' << l.name << '\n';
    out.flush();
    if (!file.commit())
        throw UserError(QStringLiteral("No se pudo guardar el respaldo local ") + path +
                        QStringLiteral("...!"));
}

std::optional<BoxBackup> readBoxBackup(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    QTextStream in(&file);
    const QStringList head = in.readLine().split(QLatin1Char('\t'));
    if (head.size() < 4 || head[0] != kBackupHeader)
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
