#pragma once

#include "common/decimal/decimal.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

namespace orvo::shell {
struct SessionContext;
}

// The register of a machine (CAJAS) and the binding of this machine to it.
namespace orvo::pos::registers {

// Every column of CAJAS the register screen edits. The counters (UltimaFactura,
// UltimaDevolucion) belong to numbering and are only read here.
struct RegisterConfig {
    QString serie;
    int numero = 0;
    Decimal fondoCaja;
    int tipoListaPrecio = 0;
    int tipoVenta = 0;
    int tipoReporte = 0;
    bool permiteDescuento = false;
    bool permiteFacturarOrdenDespacho = false;
    bool permiteFacturasExentas = false;
    bool permiteAlternarListas = false;
    bool cambiarPrecios = false;
    bool requerirAutorizacion = false;
    int idImpresoraFiscal = 0;
    bool permitirFacturaContingencia = false;
    long long maximoZDiario = 0;
    long long ultimaFactura = 0;    // read only
    long long ultimaDevolucion = 0; // read only
};

// A row of IMPRESORAFISCAL offered by the register screen.
struct FiscalPrinterChoice {
    int id = 0;
    QString name;
};

// The register whose Serie is `serial`; nothing when there is no row.
std::optional<RegisterConfig> readRegisterConfig(const QSqlDatabase& db, const QString& serial);

// Active fiscal printers (Status 1) by name.
QList<FiscalPrinterChoice> activeFiscalPrinters(const QSqlDatabase& db);

enum class SaveOutcome {
    Saved,
    // Creating over an existing serie: nothing was written; ask and call again with approve.
    NeedsOverwriteApproval,
};

// Saves the register in its own transaction. An existing serie is updated in every column of
// the screen (the counters stay); a new one is inserted with both counters at 0. When `creating`
// and the serie already exists, only `approve` lets the existing row be overwritten. A number
// that another register has is refused.
SaveOutcome saveRegisterConfig(const QSqlDatabase& db, const RegisterConfig& config, bool creating,
                               bool approve);

// The number a new register is offered: one above the highest in use.
int nextRegisterNumber(const QSqlDatabase& db);

// The daily Z maximum as typed: digits only, an empty value is 0. Anything else is refused with
// UserError "Solo se permiten Valores numericos".
long long parseDailyZMaximum(const QString& text);
// Whether a typed text is acceptable while typing (digits only, empty allowed).
bool isDigitsOnly(const QString& text);

// This machine's register serial: per-user setting Serie (ServidorOrvo, group Orvo); empty when
// the machine is not a register.
QString workstationSerial();
// Stores `serial` as this machine's register and reloads the session's register fields from it.
// Returns whether the register exists (SessionContext::registerConfigured).
bool bindWorkstation(const QSqlDatabase& db, const QString& serial, shell::SessionContext& ctx);

} // namespace orvo::pos::registers
