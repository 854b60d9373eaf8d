#include "pos/register/register_config.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "shell/session/session_context.h"
#include "shell/startup/user_settings.h"

namespace orvo::pos::registers {

using db::Sql;

namespace {

int flag(bool on) {
    return on ? 1 : 0;
}

// Binds the screen's columns in the order of the UPDATE and INSERT below (Serie last).
void bindColumns(Sql& q, const RegisterConfig& c) {
    q.bind(c.numero)
        .bind(c.fondoCaja, 2)
        .bind(c.tipoListaPrecio)
        .bind(c.tipoVenta)
        .bind(c.tipoReporte)
        .bind(flag(c.permiteDescuento))
        .bind(flag(c.permiteFacturarOrdenDespacho))
        .bind(flag(c.permiteFacturasExentas))
        .bind(flag(c.permiteAlternarListas))
        .bind(flag(c.cambiarPrecios))
        .bind(flag(c.requerirAutorizacion))
        .bind(c.idImpresoraFiscal)
        .bind(flag(c.permitirFacturaContingencia))
        .bind(c.maximoZDiario)
        .bind(c.serie);
}

} // namespace

std::optional<RegisterConfig> readRegisterConfig(const QSqlDatabase& db, const QString& serial) {
    Sql q(db, QStringLiteral("SELECT Serie, Numero, FondoCaja, TipoListaPrecio, TipoVenta, "
                             "TipoReporte, PermiteDescuento, PermiteFacturarOrdenDespacho, "
                             "PermiteFacturasExentas, PermiteAlternarListas, CambiarPrecios, "
                             "RequerirAutorizacion, IdImpresoraFiscal, "
                             "PermitirFacturaContingencia, MaximoZDiario, UltimaFactura, "
                             "UltimaDevolucion FROM CAJAS WHERE Serie = ?"));
    q.bind(serial).exec();
    if (!q.next())
        return std::nullopt;
    const auto on = [&q](const char* column) {
        return db::numericFlag(q.value(QLatin1String(column)));
    };
    RegisterConfig c;
    c.serie = q.text(QStringLiteral("Serie")).trimmed();
    c.numero = q.integer(QStringLiteral("Numero"));
    c.fondoCaja = q.decimal(QStringLiteral("FondoCaja"));
    c.tipoListaPrecio = q.integer(QStringLiteral("TipoListaPrecio"));
    c.tipoVenta = q.integer(QStringLiteral("TipoVenta"));
    c.tipoReporte = q.integer(QStringLiteral("TipoReporte"));
    c.permiteDescuento = on("PermiteDescuento");
    c.permiteFacturarOrdenDespacho = on("PermiteFacturarOrdenDespacho");
    c.permiteFacturasExentas = on("PermiteFacturasExentas");
    c.permiteAlternarListas = on("PermiteAlternarListas");
    c.cambiarPrecios = on("CambiarPrecios");
    c.requerirAutorizacion = on("RequerirAutorizacion");
    c.idImpresoraFiscal = q.integer(QStringLiteral("IdImpresoraFiscal"));
    c.permitirFacturaContingencia = on("PermitirFacturaContingencia");
    c.maximoZDiario = q.bigint(QStringLiteral("MaximoZDiario"));
    c.ultimaFactura = q.bigint(QStringLiteral("UltimaFactura"));
    c.ultimaDevolucion = q.bigint(QStringLiteral("UltimaDevolucion"));
    return c;
}

QList<FiscalPrinterChoice> activeFiscalPrinters(const QSqlDatabase& db) {
    Sql q(db, QStringLiteral("SELECT ID, NombreImpresora FROM IMPRESORAFISCAL WHERE Status = 1 "
                             "ORDER BY NombreImpresora"));
    q.exec();
    QList<FiscalPrinterChoice> printers;
    while (q.next())
        printers.append(
            {q.integer(QStringLiteral("ID")), q.text(QStringLiteral("NombreImpresora"))});
    return printers;
}

SaveOutcome saveRegisterConfig(const QSqlDatabase& db, const RegisterConfig& config, bool creating,
                               bool approve) {
    if (config.serie.trimmed().isEmpty())
        throw UserError(QStringLiteral("Debe indicar la serie de la caja...!"),
                        QStringLiteral("Configurar Caja"));
    if (config.idImpresoraFiscal <= 0)
        throw UserError(QStringLiteral("Debe seleccionar la impresora fiscal de la caja...!"),
                        QStringLiteral("Configurar Caja"));

    db::Transaction tx(db);
    // Users tell registers apart by their number ("Caja Nº 2"): one number, one register.
    const QVariant other =
        db::scalar(db, QStringLiteral("SELECT Serie FROM CAJAS WHERE Numero = ? AND Serie <> ?"),
                   {config.numero, config.serie});
    if (other.isValid())
        throw UserError(QStringLiteral("El número de caja %1 ya es de la caja %2...!")
                            .arg(config.numero)
                            .arg(other.toString().trimmed()),
                        QStringLiteral("Configurar Caja"));
    // The no-op update tells whether the serie exists.
    const int existing = db::execute(
        db, QStringLiteral("UPDATE CAJAS SET Numero = Numero WHERE Serie = ?"), {config.serie});
    if (existing > 0 && creating && !approve)
        return SaveOutcome::NeedsOverwriteApproval; // rolled back: nothing written
    if (existing > 0) {
        Sql q(db, QStringLiteral("UPDATE CAJAS SET Numero = ?, FondoCaja = ?, TipoListaPrecio = ?, "
                                 "TipoVenta = ?, TipoReporte = ?, PermiteDescuento = ?, "
                                 "PermiteFacturarOrdenDespacho = ?, PermiteFacturasExentas = ?, "
                                 "PermiteAlternarListas = ?, CambiarPrecios = ?, "
                                 "RequerirAutorizacion = ?, IdImpresoraFiscal = ?, "
                                 "PermitirFacturaContingencia = ?, MaximoZDiario = ? "
                                 "WHERE Serie = ?"));
        bindColumns(q, config);
        q.exec();
    } else {
        Sql q(db, QStringLiteral("INSERT INTO CAJAS (Numero, FondoCaja, TipoListaPrecio, "
                                 "TipoVenta, TipoReporte, PermiteDescuento, "
                                 "PermiteFacturarOrdenDespacho, PermiteFacturasExentas, "
                                 "PermiteAlternarListas, CambiarPrecios, RequerirAutorizacion, "
                                 "IdImpresoraFiscal, PermitirFacturaContingencia, MaximoZDiario, "
                                 "Serie, UltimaFactura, UltimaDevolucion) "
                                 "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0)"));
        bindColumns(q, config);
        q.exec();
    }
    tx.commit();
    return SaveOutcome::Saved;
}

int nextRegisterNumber(const QSqlDatabase& db) {
    return db::scalar(db, QStringLiteral("SELECT MAX(Numero) FROM CAJAS")).toInt() + 1;
}

bool isDigitsOnly(const QString& text) {
    for (const QChar c : text)
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    return true;
}

long long parseDailyZMaximum(const QString& text) {
    const QString t = text.trimmed();
    if (t.isEmpty())
        return 0;
    bool ok = false;
    const long long value = t.toLongLong(&ok);
    if (!isDigitsOnly(t) || !ok)
        throw UserError(QStringLiteral("Solo se permiten Valores numericos"));
    return value;
}

QString workstationSerial() {
    return shell::settings::read(QStringLiteral("Serie")).trimmed();
}

bool bindWorkstation(const QSqlDatabase& db, const QString& serial, shell::SessionContext& ctx) {
    shell::settings::write(QStringLiteral("Serie"), serial.trimmed());
    return shell::loadRegister(db, serial.trimmed(), ctx);
}

} // namespace orvo::pos::registers
