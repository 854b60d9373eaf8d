#include "inventory/dispatch/guides.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/dispatch/guide_store.h"

namespace orvo::inventory::dispatch {

namespace {

const QString kGuideGone = QStringLiteral("La Guia de Despacho no existe o ya fue aprobada...!");

QString onOtherGuide(long long remission, long long guide) {
    return QStringLiteral("La remisión Nº ") + QString::number(remission) +
           QStringLiteral(" ya viaja en la guia de despacho Nº ") + QString::number(guide) +
           QStringLiteral("...!");
}

} // namespace

QList<Choice> drivers(const QSqlDatabase& db) {
    return store::activeWorkers(db);
}

QList<Choice> vehicles(const QSqlDatabase& db) {
    return store::activeVehicles(db);
}

void addRemission(const QSqlDatabase& db, Guide& guide, long long remission) {
    for (const GuideRemission& r : guide.remissions)
        if (r.number == remission)
            throw UserError(QStringLiteral("Ya la remisión se encuentra registrada en la guia de "
                                           "despacho"));
    const store::RemissionState s = store::remissionState(db, remission);
    if (s.status < 1)
        throw UserError(QStringLiteral("La remisión Nº ") + QString::number(remission) +
                        QStringLiteral(" no existe o no está aprobada...!"));
    if (s.guide != 0 && s.guide != guide.number)
        throw UserError(onOtherGuide(remission, s.guide));
    guide.remissions.append(s.row);
}

long long saveGuide(const QSqlDatabase& db, Guide g) {
    if (g.driver.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar el conductor...!"));
    if (g.vehicle.isEmpty())
        throw UserError(QStringLiteral("Debe seleccionar el vehículo...!"));
    if (g.remissions.isEmpty())
        throw UserError(QStringLiteral("La Guia de Despacho debe contener al menos un items...!"));
    db::Transaction tx(db);
    const QDateTime now = db::serverNow(db);
    g.date = g.date.isValid() ? QDateTime(g.date.date(), now.time()) : now;
    if (g.number == 0) {
        g.number = common::nextCode(db, QStringLiteral("GUIADESPACHO"), QStringLiteral("Numero"));
        store::insertGuide(db, g);
    } else if (!store::updateGuide(db, g)) {
        throw UserError(kGuideGone);
    }
    store::releaseRemissions(db, g.number);
    for (const GuideRemission& r : g.remissions) {
        if (!store::assignRemission(db, r.number, g.number)) {
            const store::RemissionState s = store::remissionState(db, r.number);
            if (s.status >= 1 && s.guide != 0)
                throw UserError(onOtherGuide(r.number, s.guide));
            throw UserError(QStringLiteral("La remisión Nº ") + QString::number(r.number) +
                            QStringLiteral(" no existe o no está aprobada...!"));
        }
    }
    tx.commit();
    return g.number;
}

void approveGuide(const QSqlDatabase& db, long long number) {
    db::Transaction tx(db);
    if (!store::approveGuide(db, number))
        throw UserError(kGuideGone);
    tx.commit();
}

void deleteGuide(const QSqlDatabase& db, long long number) {
    db::Transaction tx(db);
    if (!store::deleteOpenGuide(db, number))
        throw UserError(kGuideGone);
    store::releaseRemissions(db, number);
    tx.commit();
}

std::optional<Guide> loadGuide(const QSqlDatabase& db, long long number) {
    return store::loadGuide(db, number);
}

QList<GuideSummary> listGuides(const QSqlDatabase& db) {
    return store::listGuides(db);
}

} // namespace orvo::inventory::dispatch
