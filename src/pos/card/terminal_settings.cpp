#include "pos/card/terminal_settings.h"

#include "common/db/sql.h"
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
    s.voucherFolder = setting(db, QStringLiteral("VPOS_CARPETA"));
    return s;
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
