#include "pos/card/terminal_settings.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"

namespace orvo::pos::card {

namespace {

QString setting(const QSqlDatabase& db, const QString& key) {
    return db::scalar(
               db, QStringLiteral("SELECT MAX(Descripcion) FROM TABLA_VALORES WHERE IdTabla = ?"),
               {key})
        .toString()
        .trimmed();
}

} // namespace

QString voucherFolder(const QSqlDatabase& db) {
    return setting(db, QStringLiteral("VPOS_CARPETA"));
}

TerminalSettings loadTerminalSettings(const QSqlDatabase& db, const QString& serie) {
    TerminalSettings s;
    const QString url = setting(db, QStringLiteral("VPOS_URL_") + serie.trimmed());
    s.url = QUrl(url, QUrl::StrictMode);
    if (url.isEmpty() || !s.url.isValid() ||
        (s.url.scheme() != u"http" && s.url.scheme() != u"https") || s.url.host().isEmpty())
        throw UserError(QStringLiteral("La caja %1 no tiene configurado el punto de venta VPOS "
                                       "(VPOS_URL_%1 en TABLA_VALORES)...!")
                            .arg(serie.trimmed()));
    bool ok = false;
    const int seconds = setting(db, QStringLiteral("VPOS_ESPERA")).toInt(&ok);
    if (ok && seconds > 0)
        s.timeoutSeconds = seconds;
    s.oneCopy = db::textFlag(setting(db, QStringLiteral("VPOS_UNA_COPIA")));
    s.voucherFolder = voucherFolder(db);
    return s;
}

void saveTerminalUrl(const QSqlDatabase& db, const QString& serie, const QString& url) {
    const QString key = QStringLiteral("VPOS_URL_") + serie.trimmed();
    const QUrl parsed(url.trimmed(), QUrl::StrictMode);
    if (serie.trimmed().isEmpty())
        throw UserError(QStringLiteral("Esta estación no está configurada como caja...!"));
    if (!parsed.isValid() || (parsed.scheme() != u"http" && parsed.scheme() != u"https") ||
        parsed.host().isEmpty())
        throw UserError(QStringLiteral("La dirección del punto de venta debe ser "
                                       "http://equipo:puerto...!"));
    db::Transaction tx(db);
    db::execute(db, QStringLiteral("DELETE FROM TABLA_VALORES WHERE IdTabla = ?"), {key});
    db::execute(db,
                QStringLiteral("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) "
                               "VALUES (?, ?, ?)"),
                {key, QStringLiteral("01"), url.trimmed()});
    tx.commit();
}

QString terminalUrl(const QSqlDatabase& db, const QString& serie) {
    return setting(db, QStringLiteral("VPOS_URL_") + serie.trimmed());
}

std::optional<QString> terminalAccountName(const QSqlDatabase& db) {
    db::Sql q(db,
              QStringLiteral("SELECT Nombre FROM CTABANCOS WHERE Nombre LIKE ? ORDER BY Codigo"));
    q.bind(QStringLiteral("%VPOS - VERIFONE%")).exec();
    if (!q.next())
        return std::nullopt;
    return q.text(QStringLiteral("Nombre"));
}

} // namespace orvo::pos::card
