#include "common/rate/reconversion.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/rate/rate_store.h"
#include "shell/session/settings_readers.h"
#include "shell/startup/app_home.h"
#include "shell/startup/external_backup.h"

#include <QLoggingCategory>

namespace orvo::common::rate {

Q_LOGGING_CATEGORY(lcReconversion, "orvo.reconversion", QtWarningMsg)

namespace {

// Divided amounts keep eight decimals: a price of 1.234,56 divided by 100.000 is 0,0123456.
constexpr int kWidePrecision = 24;
constexpr int kWideScale = 8;

ReconversionTable t(const char* table, std::initializer_list<const char*> columns,
                    bool fixed = false) {
    ReconversionTable r;
    r.table = QString::fromLatin1(table);
    for (const char* c : columns)
        r.columns << QString::fromLatin1(c);
    r.fixedFactor = fixed;
    return r;
}

QList<ReconversionTable> same(std::initializer_list<const char*> tables,
                              std::initializer_list<const char*> columns) {
    QList<ReconversionTable> out;
    for (const char* table : tables)
        out << t(table, columns);
    return out;
}

void divideTable(const QSqlDatabase& db, const ReconversionTable& table, const Decimal& factor) {
    QStringList sets;
    for (const QString& c : table.columns)
        sets << QStringLiteral("%1 = ROUND(%1 / ?, %2)").arg(c).arg(kWideScale);
    // Every article travels with the next export.
    if (table.table == QLatin1String("INVENTARIO"))
        sets << QStringLiteral("UltimaActualizacion = ") + db::nowExpression(db);
    db::Sql q(db, QStringLiteral("UPDATE %1 SET %2").arg(table.table, sets.join(u", ")));
    for (qsizetype i = 0; i < table.columns.size(); ++i)
        q.bind(factor.toVariant(kWideScale));
    q.exec();
}

QString backupFileFor(const QSqlDatabase& db, const QDate& day) {
    QString file = shell::backupFileName(shell::appHome() + QStringLiteral("/Respaldos"), db, day);
    file.replace(QStringLiteral("_RESP.BAK"), QStringLiteral("_RECONVERSION.BAK"));
    return file;
}

} // namespace

const QList<ReconversionGroup>& reconversionPlan() {
    static const QList<ReconversionGroup> plan = {
        {QStringLiteral("Alterando ajustes."),
         {t("AJUSTES", {"TotalValor"}), t("MOVAJUSTES", {"Costo"})}},
        {QStringLiteral("Alterando configuracion de cajas"), {t("CAJAS", {"FondoCaja"})}},
        {QStringLiteral("Alterando impresion de Codigos de Barra"),
         same({"CODE128A", "CODE128C", "EAN13"}, {"PrecioDetal", "Impuesto", "Total"})},
        {QStringLiteral("Alterando compras"),
         {t("COMPRAS",
            {"TotalMercancia", "TotalImpuesto", "TotalImpuestoContable", "TotalDescuento",
             "TasaCambio", "Recargos", "TasaServicio", "OtrosImpuestos", "Flete", "Seguro"}),
          t("MOVCOMPRAS", {"PrecioFactura", "PrecioProrrateado", "Impuesto"}),
          t("DEVCOMPRAS", {"TotalMercancia", "TotalImpuesto", "TotalDescuento"}),
          t("MOVDEVCOMPRAS", {"Precio", "Impuesto"})}},
        {QStringLiteral("Alterando Depositos"),
         {t("DEPOSITOS", {"TotalEfectivo", "TotalCheques"}), t("MOVDEPOSITOS", {"Monto"})}},
        {QStringLiteral("Alterando Transferencias"),
         same({"DEVTRANSFERENCIAS", "IDEVTRANSFERENCIAS", "ITRANSFERENCIAS", "TRANSFERENCIAS"},
              {"TotalValor"}) +
             same({"MOVDEVTRANSFERENCIAS", "IMOVDEVTRANSFERENCIAS", "IMOVTRANSFERENCIAS",
                   "MOVTRANSFERENCIAS"},
                  {"Valor"})},
        {QStringLiteral("Alterando movimientos de ventas"),
         QList<ReconversionTable>{t("VENTAS", {"TotalMercancia", "TotalDescuento", "TotalImpuesto",
                                               "TotalPago", "TotalCosto"})} +
             same({"MOVVENTAS", "MOVVENTASBORRADAS", "MOVDEVVENTAS"},
                  {"Precio", "PrecioLista", "Costo", "Impuesto"}) +
             QList<ReconversionTable>{t("PAGOSVENTA", {"Monto"}),
                                      t("DEVVENTAS", {"TotalMercancia", "TotalDescuento",
                                                      "TotalImpuesto", "TotalCosto"})}},
        {QStringLiteral("Alterando Fisico-Logicos"),
         {t("FISICOLOGICO", {"Precio", "Impuesto", "Costo"})}},
        {QStringLiteral("Alterando Inventario"),
         {t("INVENTARIO", {"PrecioDetal", "PrecioMayor", "PrecioAfiliado", "PrecioPromocion",
                           "CostoInicial", "CostoPromedio", "CostoDolar", "UltimoCosto"})}},
        {QStringLiteral("Alterando Cuentas por Cobrar"),
         {t("CUENTASXCOBRAR", {"Monto"}), t("MOVCUENTASXCOBRAR", {"MontoCancelado"})}},
        {QStringLiteral("Alterando Borradores"), {t("MOVDEVBORRADOR", {"Costo"})}},
        {QStringLiteral("Alterando Listas de Precios"),
         {t("MOVLISTAPRECIO",
            {"Costo", "PrecioDetalSugerido", "PrecioDetal", "PrecioMayorSugerido", "PrecioMayor",
             "PrecioAfiliadoSugerido", "PrecioAfiliado", "PrecioPromocion"})}},
        {QStringLiteral("Alterando ordenes de compra"),
         {t("ORDENCOMPRAS", {"TotalMercancia", "TotalImpuesto"}),
          t("MOVORDENCOMPRAS", {"Impuesto", "Precio"})}},
        {QStringLiteral("Alterando Salidas"),
         {t("PORCENTAJECAJA", {"MontoMinimo"}, true), t("SALIDASCAJA", {"Monto"}, true)}},
    };
    return plan;
}

bool reconversionDue(const QSqlDatabase& db, const QDate& today) {
    return today >= shell::reconversionDate(db) && !shell::reconversionDone(db) &&
           !shell::reconversionRunning(db);
}

QStringList reconversionWarnings() {
    return {QStringLiteral("Esta a punto de iniciar el proceso de reconversion monetaria. Este "
                           "proceso durara varios minutos."),
            QStringLiteral("Este es un proceso delicado, por favor asegurese de tener el sistema "
                           "abierto solo en la caja principal."),
            QStringLiteral("La duracion del proceso depende del largo de la historia de la "
                           "sucursal, Por favor, sea paciente.")};
}

QStringList reconversionEndMessages() {
    return {QStringLiteral("El proceso ha finalizado satisfactoriamente. Se procedera con la "
                           "apertura."),
            QStringLiteral("Por favor verifique los precios, ante cualquier anomalia comuniquese "
                           "con Sistemas")};
}

ReconversionJob::ReconversionJob(const QSqlDatabase& db, const QDate& today, QObject* parent)
    : jobs::Job(db, parent), m_today(today), m_backupFile(backupFileFor(db, today)) {}

void ReconversionJob::run(const QSqlDatabase& db) {
    if (!reconversionDue(db, m_today))
        return;
    int steps = 3; // backup, SALDODIARIO, the end
    for (const ReconversionGroup& g : reconversionPlan())
        steps += int(g.tables.size());
    int done = 0;
    const auto percent = [&] { return done * 100 / steps; };

    report(0, QStringLiteral("Respaldando la base de datos..."));
    shell::backupDatabase(db, m_backupFile);
    ++done;

    db::Transaction tx(db);
    db::lockTableForWriting(db, QStringLiteral("TABLA_VALORES"));
    // Another register may have done it while this one was backing up.
    if (!reconversionDue(db, m_today)) {
        tx.rollback();
        return;
    }
    const Decimal factor = shell::reconversionValue(db);
    if (factor <= Decimal())
        throw UserError(QStringLiteral("El factor de la reconversion (ReVal) no es valido...!"));
    store::setTableValue(db, QStringLiteral("ReTra"), QStringLiteral("1"));
    report(percent(), kReconversionStartLabel);

    for (const ReconversionGroup& group : reconversionPlan()) {
        for (const ReconversionTable& table : group.tables) {
            if (isCancelled())
                throw UserError(QStringLiteral("Reconversion cancelada: la base de datos queda "
                                               "como estaba...!"));
            report(percent(), group.label);
            for (const QString& column : table.columns)
                db::widenNumericColumn(db, table.table, column, kWidePrecision, kWideScale);
            divideTable(db, table, table.fixedFactor ? kFixedReconversionFactor : factor);
            ++done;
        }
    }

    report(percent(), QStringLiteral("Disminuyendo BD"));
    db::execute(db, QStringLiteral("DROP TABLE IF EXISTS SALDODIARIO"));
    ++done;

    report(percent(), QStringLiteral("Finalizando reconversion"));
    store::setTableValue(db, QStringLiteral("ReRea"), QStringLiteral("1"));
    store::setTableValue(db, QStringLiteral("ReTra"), QStringLiteral("0"));
    tx.commit();
    m_performed = true;
    qCInfo(lcReconversion) << "reconversion realizada, factor" << factor.toString() << "respaldo"
                           << m_backupFile;
    db::truncateLog(db);
    report(100, QStringLiteral("Finalizando reconversion"));
}

bool runReconversion(const QSqlDatabase& db, const QDate& today) {
    ReconversionJob job(db, today);
    job.start();
    job.wait();
    if (!job.succeeded())
        throw UserError(job.error());
    return job.performed();
}

} // namespace orvo::common::rate
