#include "common/rate/exchange_rate.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/rate/rate_file.h"
#include "common/rate/rate_store.h"
#include "exchange/export/export_store.h"
#include "exchange/import/import_loaders.h"
#include "exchange/package/zip_archive.h"
#include "shell/session/settings_readers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

namespace orvo::common::rate {

Q_LOGGING_CATEGORY(lcRate, "orvo.rate", QtWarningMsg)

std::optional<Decimal> parseTypedRate(const QString& text) {
    int decimals = 0;
    const auto value = parseTypedNumber(text, &decimals);
    // A rate is kept with eight decimals: more would be rounded away without a word.
    if (!value || *value <= Decimal() || decimals > 8)
        return std::nullopt;
    return value;
}

std::optional<Decimal> currentRate(const QSqlDatabase& db) {
    const auto latest = store::latestRate(db);
    if (!latest)
        return std::nullopt;
    return latest->value;
}

Decimal rateForDay(const QSqlDatabase& db, const QDate& day) {
    return store::rateBefore(db, db::nextDayStart(day)).value_or(Decimal());
}

bool rateReminderDue(const QSqlDatabase& db, const QDate& day) {
    if (!store::rateBefore(db, db::nextDayStart(day)))
        return true;
    if (day.dayOfWeek() >= Qt::Saturday)
        return false;
    return !store::rateRegisteredBetween(db, db::dayStart(day), db::nextDayStart(day));
}

void setRateSwitch(const QSqlDatabase& db, const QString& key, bool on) {
    db::Transaction tx(db);
    store::setTableValue(db, key, on ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
    tx.commit();
}

QList<RateEntry> pastRates(const QSqlDatabase& db, int limit) {
    return store::rates(db, limit);
}

RegisterResult registerRate(const QSqlDatabase& db, const RegisterRequest& request) {
    if (request.value <= Decimal())
        throw UserError(QStringLiteral("Introduzca una tasa de cambio válida...!"));
    const QDate today = db::serverNow(db).date();
    if (request.day.isValid() && request.day > today)
        throw UserError(QStringLiteral("La fecha de la tasa de cambio no puede ser posterior al "
                                       "dia de hoy...!"));
    // A rate of an earlier day closes that day; today's is registered now by the server.
    const QDateTime fecha = request.day.isValid() && request.day < today
                                ? QDateTime(request.day, QTime(23, 59, 59))
                                : QDateTime();

    RegisterResult result;
    result.value = request.value;
    db::Transaction tx(db);
    const auto before = store::latestRate(db);
    if (before)
        result.previous = before->value;
    store::insertRate(db, request.value, fecha);
    // Only a rate that becomes the current one moves prices: a late entry for an earlier day
    // completes the history and leaves the catalogue as it is.
    const bool becomesCurrent = !before || !fecha.isValid() || fecha >= before->fecha;
    if (becomesCurrent && before && before->value > Decimal() &&
        shell::exchangeRateUpdateEnabled(db)) {
        result.articlesRepriced = store::repriceCatalogue(db, before->value, request.value);
        result.repriced = true;
    }
    tx.commit();

    if (request.mayExport && becomesCurrent && shell::exchangeRateExportEnabled(db))
        result.rateFile = writeRateFile(request.value, exchange::exporting::exportFolder(db));
    qCInfo(lcRate) << "tasa registrada" << request.value.toString() << "precios actualizados"
                   << result.articlesRepriced;
    return result;
}

Decimal readRateFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        throw UserError(QStringLiteral("No se pudo leer el archivo de tasa de cambio ") +
                        QDir::toNativeSeparators(path) + QStringLiteral("...!"));
    const QString first = QString::fromLatin1(f.readLine(256)).trimmed();
    const auto value = parseTypedRate(first);
    if (!value)
        throw UserError(QStringLiteral("El archivo ") + QDir::toNativeSeparators(path) +
                        QStringLiteral(" no contiene una tasa de cambio válida...!"));
    return *value;
}

QString pendingRateFile(const QString& recibeFolder) {
    const QDir recibe(recibeFolder);
    QString archive;
    for (const QString& name : recibe.entryList(QDir::Files)) {
        if (name.compare(QLatin1String("TasaCambio.txt"), Qt::CaseInsensitive) == 0)
            return recibe.filePath(name);
        if (name.compare(QLatin1String("TasaCambio.zip"), Qt::CaseInsensitive) == 0)
            archive = recibe.filePath(name);
    }
    return archive;
}

std::optional<RegisterResult> loadReceivedRate(const QSqlDatabase& db,
                                               const QString& recibeFolder) {
    if (!shell::exchangeRateImportEnabled(db))
        return std::nullopt;
    QString path = pendingRateFile(recibeFolder);
    if (path.isEmpty())
        return std::nullopt;
    if (path.endsWith(QLatin1String(".zip"), Qt::CaseInsensitive)) {
        const QString archive = path;
        path.clear();
        for (const QString& file : exchange::package::extractZip(archive, recibeFolder))
            if (QFileInfo(file).fileName().startsWith(QLatin1String("TasaCambio"),
                                                      Qt::CaseInsensitive))
                path = file;
        if (path.isEmpty())
            throw UserError(QStringLiteral("El archivo ") + QFileInfo(archive).fileName() +
                            QStringLiteral(" no contiene la tasa de cambio...!"));
        QFile::remove(archive);
    }
    RegisterRequest r;
    r.value = readRateFile(path);
    r.mayExport = false;
    const RegisterResult result = registerRate(db, r);
    if (!QFile::remove(path))
        qCWarning(lcRate) << "no se pudo borrar" << path;
    return result;
}

void registerRateLoader() {
    exchange::import::addLoader(
        {10, QStringLiteral("Tasa de cambio"), [](const QSqlDatabase& db, const QString& recibe) {
             const auto r = loadReceivedRate(db, recibe);
             if (!r)
                 return QStringList();
             QStringList lines{
                 QStringLiteral("tasa de cambio %1 registrada").arg(r->value.toString())};
             if (r->repriced)
                 lines << QStringLiteral("precios actualizados en %1 articulos")
                              .arg(r->articlesRepriced);
             return lines;
         }});
}

} // namespace orvo::common::rate
