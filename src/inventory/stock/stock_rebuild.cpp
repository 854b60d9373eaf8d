#include "inventory/stock/stock_rebuild.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"

#include <QLoggingCategory>
#include <QTextStream>

Q_LOGGING_CATEGORY(lcStock, "orvo.inventory.stock")

namespace orvo::inventory::stock {

namespace {

const QString kCancelled = QStringLiteral("Proceso cancelado por el usuario...!");

// Adds one kind of document to the stock: its approved lines in the period summed per barcode,
// with the kind's sign, in one statement.
void applyKind(const QSqlDatabase& db, const MovementKind& k, const StockPeriod& p) {
    const QString sql =
        QStringLiteral("UPDATE INVENTARIO SET Existencia = ROUND(INVENTARIO.Existencia + "
                       "S.Cantidad, 3) FROM (SELECT M.CodigoBarra, SUM(M.Cantidad) * %1 AS "
                       "Cantidad FROM %2 M INNER JOIN %3 H ON %4 WHERE %5 AND H.Fecha >= ? AND "
                       "H.Fecha <= ? GROUP BY M.CodigoBarra) S WHERE S.CodigoBarra = "
                       "INVENTARIO.CodigoBarra AND INVENTARIO.Status <> 3")
            .arg(k.sign)
            .arg(k.lines, k.header, k.join, k.filter);
    db::execute(db, sql, {p.from, p.to});
}

} // namespace

RebuildResult rebuildStock(const QSqlDatabase& db, const RebuildProgress& progress,
                           const std::function<bool()>& cancelled) {
    const QList<MovementKind>& kinds = movementKinds();
    const int steps = int(kinds.size()) + 2;
    int done = 0;
    auto step = [&](const QString& label) {
        if (cancelled && cancelled())
            throw UserError(kCancelled);
        if (progress)
            progress(done * 100 / steps, label);
        ++done;
    };

    db::Transaction tx(db);
    RebuildResult result;
    result.period = stockPeriod(db);
    const StockPeriod& p = result.period;
    // What the stock was, to tell how many articles the documents corrected.
    db::execute(db, QStringLiteral("CREATE TEMPORARY TABLE EXISTENCIAANTERIOR (CodigoBarra "
                                   "VARCHAR(15) PRIMARY KEY, Existencia NUMERIC(18,3))"));
    db::execute(db, QStringLiteral("INSERT INTO EXISTENCIAANTERIOR (CodigoBarra, Existencia) "
                                   "SELECT CodigoBarra, Existencia FROM INVENTARIO"));

    if (p.lastCount) {
        step(QStringLiteral("Fisico Logico..."));
        db::execute(db, QStringLiteral("UPDATE INVENTARIO SET Existencia = 0 WHERE Status <> 3"));
        // The counted quantities of that day: every article the count saw.
        db::execute(db,
                    QStringLiteral("UPDATE INVENTARIO SET Existencia = F.ExistenciaFisica, "
                                   "ExistenciaInicial = F.ExistenciaFisica FROM (SELECT "
                                   "CodigoBarra, SUM(ExistenciaFisica) AS ExistenciaFisica FROM "
                                   "FISICOLOGICO WHERE FechaAjuste >= ? AND FechaAjuste < ? "
                                   "GROUP BY CodigoBarra) F WHERE F.CodigoBarra = "
                                   "INVENTARIO.CodigoBarra AND INVENTARIO.Status <> 3"),
                    {db::dayStart(p.lastCount->date()), db::nextDayStart(p.lastCount->date())});
    } else {
        step(QStringLiteral("Existencia Inicial..."));
        db::execute(db, QStringLiteral("UPDATE INVENTARIO SET Existencia = "
                                       "COALESCE(ExistenciaInicial, 0) WHERE Status <> 3"));
    }
    for (const MovementKind& k : kinds) {
        step(k.step);
        applyKind(db, k, p);
    }
    step(QStringLiteral("Servicios..."));
    db::execute(db, QStringLiteral("UPDATE INVENTARIO SET Existencia = 0 WHERE Tipo = 1"));

    result.changed = db::scalar(db, QStringLiteral("SELECT COUNT(*) AS N FROM INVENTARIO I INNER "
                                                   "JOIN EXISTENCIAANTERIOR A ON A.CodigoBarra = "
                                                   "I.CodigoBarra WHERE COALESCE(I.Existencia, "
                                                   "0) <> COALESCE(A.Existencia, 0)"))
                         .toInt();
    db::execute(db, QStringLiteral("DROP TABLE EXISTENCIAANTERIOR"));
    if (cancelled && cancelled())
        throw UserError(kCancelled);
    tx.commit();
    if (progress)
        progress(100, QStringLiteral("El proceso ha finalizado satisfactoriamente...!"));
    qCInfo(lcStock) << "stock rebuilt from" << p.from << "to" << p.to << ":" << result.changed
                    << "articles corrected";
    return result;
}

StockRebuildJob::StockRebuildJob(const QSqlDatabase& db, QObject* parent) : Job(db, parent) {}

RebuildResult StockRebuildJob::result() const {
    return m_result;
}

void StockRebuildJob::run(const QSqlDatabase& db) {
    m_result = rebuildStock(
        db, [this](int percent, const QString& label) { report(percent, label); },
        [this] { return isCancelled(); });
}

RebuildResult rebuildNow(const QSqlDatabase& db, const RebuildProgress& progress) {
    StockRebuildJob job(db);
    jobs::runToEnd(job, progress);
    return job.result();
}

int stockCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                 QTextStream& err) {
    if (args != QStringList{QStringLiteral("rebuild")}) {
        err << "uso: orvo stock rebuild" << Qt::endl;
        return 2;
    }
    QString lastLabel;
    const RebuildResult r = rebuildNow(db, [&err, &lastLabel](int percent, const QString& label) {
        if (label == lastLabel)
            return;
        lastLabel = label;
        err << QStringLiteral("[%1%] %2").arg(percent, 3).arg(label) << Qt::endl;
    });
    const QString format = QStringLiteral("dd/MM/yyyy HH:mm:ss");
    out << "Existencias recalculadas desde " << r.period.from.toString(format) << " hasta "
        << r.period.to.toString(format) << ": " << r.changed
        << (r.changed == 1 ? " artículo corregido." : " artículos corregidos.") << Qt::endl;
    return 0;
}

} // namespace orvo::inventory::stock
