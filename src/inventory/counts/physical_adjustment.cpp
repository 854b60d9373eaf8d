#include "inventory/counts/physical_adjustment.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/numbering/numbering.h"
#include "inventory/adjustments/adjustment_store.h"
#include "shell/startup/app_home.h"
#include "shell/startup/external_backup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcPhysical, "orvo.inventory.counts.adjustment")

namespace orvo::inventory::counts {

namespace {

const QString kAlreadyDone = QStringLiteral("el Ajuste Físico Lógico ya se Realizo... , Si tiene "
                                            "algun problema notifique al Departamento de "
                                            "Sistema...!");
const QString kPartialNote = QStringLiteral("AJUSTE GENERADO POR INVENTARIO PARCIAL");

// Checks that need the no-op updates run inside a transaction that writes nothing.
template <class F> bool probe(const QSqlDatabase& db, F&& test) {
    db::Transaction tx(db);
    const bool found = test();
    tx.rollback();
    return found;
}

// The partial count's types, for a store that never had them.
void ensurePartialTypes(const QSqlDatabase& db) {
    const struct {
        int code;
        const char* name;
        int sign;
    } types[] = {{adjustments::kPartialPlusType, "AJUSTE INVENTARIO PARCIAL (+)", 1},
                 {adjustments::kPartialMinusType, "AJUSTE INVENTARIO PARCIAL (-)", -1}};
    for (const auto& t : types)
        if (!adjustments::store::type(db, t.code))
            db::execute(db,
                        QStringLiteral("INSERT INTO TIPOAJUSTES (Codigo, Nombre, Signo, Status) "
                                       "VALUES (?, ?, ?, 1)"),
                        {t.code, QString::fromUtf8(t.name), t.sign});
}

// One generated adjustment, approved: its lines move the stock by `sign`.
long long partialAdjustment(const QSqlDatabase& db, const QList<store::Difference>& lines, int type,
                            int sign, const QDateTime& at, const QString& user) {
    if (lines.isEmpty())
        return 0;
    adjustments::Adjustment a;
    a.number = common::nextCode(db, QStringLiteral("AJUSTES"), QStringLiteral("Numero"));
    a.date = at;
    a.type = type;
    a.sign = sign;
    a.note = kPartialNote;
    a.user = user;
    adjustments::store::insertAdjustment(db, a);
    for (int i = 0; i < lines.size(); ++i) {
        const store::Difference& d = lines[i];
        adjustments::store::upsertLine(db, a.number,
                                       {d.barcode, d.name,
                                        sign > 0 ? d.counted - d.book : d.book - d.counted, d.cost,
                                        Decimal()},
                                       i + 1);
    }
    adjustments::store::markApproved(db, a.number);
    // What was found above its stock is on the shelf: the article sells again.
    adjustments::store::moveStock(db, a.number, sign, sign > 0);
    return a.number;
}

} // namespace

void checkPhysicalAdjustment(const QSqlDatabase& db) {
    if (probe(db, [&] { return store::unprocessedPages(db, Pass::First); }))
        throw UserError(QStringLiteral("Existen paginas de conteo 1 abiertas o no han sido "
                                       "procesada en el conteo 3...!"));
    if (probe(db, [&] { return store::unprocessedPages(db, Pass::Second); }))
        throw UserError(QStringLiteral("Existen paginas de conteo 2 abiertas o no han sido "
                                       "procesada en el conteo 3...!"));
    if (store::adjustedOn(db, db::serverNow(db).date()))
        throw UserError(kAlreadyDone, QStringLiteral("Ajuste Realizado"));
    // Without a count every article would end at 0.
    if (!store::anyFinalPage(db) || store::unapprovedFinalPages(db))
        throw UserError(QStringLiteral("Asegurese de haber realizado la Toma Física y que todas "
                                       "las páginas esten cerradas...!"),
                        QStringLiteral("Falta completar Toma Fisica"));
}

QString physicalBackupName(const QSqlDatabase& db, const QDateTime& at) {
    const QString base = db::engineOf(db) == db::Engine::Sqlite
                             ? QFileInfo(db.databaseName()).completeBaseName()
                             : db.databaseName();
    return QStringLiteral("TF_") + base + u'_' + at.toString(QStringLiteral("yyyyMMdd_HHmmss")) +
           QStringLiteral(".BAK");
}

PhysicalAdjustmentJob::PhysicalAdjustmentJob(const QSqlDatabase& db,
                                             PhysicalAdjustmentOptions options, QObject* parent)
    : Job(db, parent), m_options(std::move(options)) {}

PhysicalAdjustmentResult PhysicalAdjustmentJob::result() const {
    return m_result;
}

void PhysicalAdjustmentJob::run(const QSqlDatabase& db) {
    PhysicalAdjustmentResult r;
    report(0, QStringLiteral("Verificando..."));
    checkPhysicalAdjustment(db);
    const QDateTime now = db::serverNow(db);
    r.at =
        QDateTime(now.date(), QTime(now.time().hour(), now.time().minute(), now.time().second()));

    // Before anything is written: the database as the count found it.
    report(2, QStringLiteral("Respaldando la base de datos..."));
    const QString folder = m_options.backupFolder.isEmpty()
                               ? QDir(shell::appHome()).filePath(QStringLiteral("Respaldos"))
                               : m_options.backupFolder;
    r.backupFile = QDir(folder).filePath(physicalBackupName(db, r.at));
    shell::backupDatabase(db, r.backupFile);
    if (!m_options.externalFolder.isEmpty()) {
        report(15, QStringLiteral("Copiando el respaldo al dispositivo externo..."));
        const QString copy =
            QDir(m_options.externalFolder).filePath(QFileInfo(r.backupFile).fileName());
        QFile::remove(copy);
        if (QFile::copy(r.backupFile, copy))
            r.externalFile = copy;
        else
            r.externalFailed = true;
    }

    auto step = [this](int percent, const QString& label) {
        if (isCancelled())
            throw UserError(QStringLiteral("Proceso cancelado por el usuario...!"));
        report(percent, label);
    };
    db::Transaction tx(db);
    step(20, QStringLiteral("Cargando Inventario..."));
    r.articles = store::loadInventory(db, r.at);
    step(35, QStringLiteral("Cargando Toma Física..."));
    store::loadCounted(db, r.at);
    step(50, QStringLiteral("Ajustando Diferencias..."));
    store::computeDifferences(db, r.at);
    step(60, QStringLiteral("Actualizando Inventario..."));
    store::replaceStock(db, r.at);
    step(75, QStringLiteral("Eliminando Toma Física..."));
    store::deleteAllPages(db);
    step(85, QStringLiteral("Actualizando Transferencias..."));
    const QList<store::MovedTransfer> moved = store::movedTransfers(db);
    for (const store::MovedTransfer& t : moved)
        store::logMovedTransfer(
            db,
            common::nextCode(db, QStringLiteral("BITACORAMOVIMIENTO"), QStringLiteral("Numero")), t,
            r.at, m_options.user);
    store::bringBackMovedTransfers(db, r.at);
    r.movedTransfers = int(moved.size());
    step(95, QStringLiteral("Activando Artículos..."));
    store::activateStockedArticles(db);
    if (isCancelled())
        throw UserError(QStringLiteral("Proceso cancelado por el usuario...!"));
    tx.commit();
    m_result = r;
    report(100, QStringLiteral("Ha finalizado Satisfactoriamente el Proceso de Ajuste...!"));
    qCInfo(lcPhysical) << "physical-logical adjustment at" << r.at << "over" << r.articles
                       << "articles, backup" << r.backupFile;
}

PhysicalAdjustmentResult adjustNow(const QSqlDatabase& db, const PhysicalAdjustmentOptions& options,
                                   const std::function<void(int, const QString&)>& progress) {
    PhysicalAdjustmentJob job(db, options);
    jobs::runToEnd(job, progress);
    return job.result();
}

void checkPartialAdjustment(const QSqlDatabase& db) {
    if (store::openPages(db, Pass::First))
        throw UserError(QStringLiteral("Existen paginas de conteo 1 abiertas...!"));
    if (store::anyPage(db, Pass::Second))
        throw UserError(QStringLiteral("Existen paginas de conteo 2...! "));
    if (store::adjustedOn(db, db::serverNow(db).date()))
        throw UserError(kAlreadyDone, QStringLiteral("Ajuste Realizado"));
    if (!store::anyPage(db, Pass::First))
        throw UserError(QStringLiteral("No existen paginas de conteo 1...!"));
}

QList<store::Difference> physicalDifferences(const QSqlDatabase& db) {
    // Without a count in progress there is nothing to compare: not every article at 0.
    if (!store::anyFinalPage(db))
        return {};
    return store::physicalDifferences(db);
}

QList<store::Difference> partialDifferences(const QSqlDatabase& db) {
    return store::partialDifferences(db);
}

PartialResult runPartialAdjustment(const QSqlDatabase& db, const QString& user) {
    db::Transaction tx(db);
    checkPartialAdjustment(db);
    ensurePartialTypes(db);
    QList<store::Difference> above, below;
    for (const store::Difference& d : store::partialDifferences(db))
        (d.counted > d.book ? above : below) << d;
    const QDateTime at = db::serverNow(db);
    PartialResult r;
    r.plusNumber = partialAdjustment(db, above, adjustments::kPartialPlusType, 1, at, user);
    r.minusNumber = partialAdjustment(db, below, adjustments::kPartialMinusType, -1, at, user);
    store::deleteFirstCount(db);
    tx.commit();
    qCInfo(lcPhysical) << "partial adjustment:" << above.size() << "above," << below.size()
                       << "below";
    return r;
}

} // namespace orvo::inventory::counts
