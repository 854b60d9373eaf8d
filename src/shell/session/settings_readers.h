#pragma once

#include "common/decimal/decimal.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// Settings that may change while the program runs are never cached: each reader runs one query
// when it is called and returns its default when no row comes back. Numeric flags are true only
// at 1, text flags only at "TRUE".
namespace orvo::shell {

// PARAMETROS
int installationKind(const QSqlDatabase& db);                  // Tipo; 0 without a row
QString exportBehaviour(const QSqlDatabase& db);               // ComportamientoExportar
bool authoriseDeletingInvoiceLine(const QSqlDatabase& db);     // AutorizarEliminarItemFactura
QString databaseHostName(const QSqlDatabase& db);              // NombreEquipo
bool showPromotions(const QSqlDatabase& db);                   // VisualizarPromocion
bool verifyAgainstHeadOffice(const QSqlDatabase& db);          // VerificarCasaMatriz
bool companyAllowsContingencyInvoices(const QSqlDatabase& db); // PermitirFacturaContingencia
bool frozenInvoicesInAdjustments(const QSqlDatabase& db);      // FacturasCongeladasEnAjustes
bool groupFrozenInvoicesInAdjustments(const QSqlDatabase& db); // AgruparFacturasCongeladasEnAjustes

// PARAMETROSTRANSFER
int transferConnectionType(const QSqlDatabase& db); // TipoConexion; 0 without a row

// CAJAS of one register serial
bool registerExists(const QSqlDatabase& db, const QString& serial);
bool registerMayChangePrices(const QSqlDatabase& db, const QString& serial); // CambiarPrecios
bool registerRequiresAuthorisation(const QSqlDatabase& db,
                                   const QString& serial); // RequerirAutorizacion
bool registerAllowsContingencyInvoices(const QSqlDatabase& db, const QString& serial);
// CAJASCAMBIOS
int serialChangeCount(const QSqlDatabase& db, const QString& serial);
QString latestSerialChange(const QSqlDatabase& db, const QString& serial); // by FechaCambio

// IMPUESTOS
Decimal taxRateByCode(const QSqlDatabase& db, int code); // 0 when the code does not exist
// Tax codes of the lines of an invoice (MOVVENTAS) or a return (MOVDEVVENTAS): each line's rate
// matched back to its IMPUESTOS code. Ascending, without repeats.
QList<int> invoiceTaxCodes(const QSqlDatabase& db, const QString& serial, long long number);
QList<int> returnTaxCodes(const QSqlDatabase& db, const QString& serial, long long number);

// TABLA_VALORES (IdTabla = key, value in Descripcion)

// Special tax period, Fecha_IVAI .. Fecha_IVAF. A missing end (or "20000101") means not set.
struct SpecialTaxPeriod {
    QDate start; // null when not set
    QDate end;   // null when not set
    bool isSet() const { return start.isValid() && end.isValid(); }
    // Both ends included.
    bool contains(const QDate& day) const { return isSet() && start <= day && day <= end; }
};
SpecialTaxPeriod specialTaxPeriod(const QSqlDatabase& db);
bool specialTaxPeriodActive(const QSqlDatabase& db, const QDate& today = QDate::currentDate());

// Amount limits of the special tax period: 0 without a row, nullopt when the value is not a number.
std::optional<Decimal> maxTaxAmountA(const QSqlDatabase& db); // ValMaxIvaA
std::optional<Decimal> maxTaxAmountB(const QSqlDatabase& db); // ValMaxIvaB

// The fiscal header lines ENCFISCAL '01'..'08' in code order, joined with CR LF (the Direccion
// printed on fiscal documents). Missing lines are left out.
QString fiscalHeader(const QSqlDatabase& db);

// Monetary reconversion
QDate reconversionDate(const QSqlDatabase& db);    // ReCon; 31/12/2099 without a row
bool reconversionDone(const QSqlDatabase& db);     // ReRea = 1
bool reconversionRunning(const QSqlDatabase& db);  // ReTra = 1
Decimal reconversionValue(const QSqlDatabase& db); // ReVal; 0 without a row or not a number

// Exchange rate switches ("TRUE" only)
bool exchangeRateUpdateEnabled(const QSqlDatabase& db); // ActTasa
bool exchangeRateExportEnabled(const QSqlDatabase& db); // ExpTasa
bool exchangeRateImportEnabled(const QSqlDatabase& db); // ImpTasa

// The raw Descripcion of a key (the highest when several rows share it); nullopt without a row.
std::optional<QString> tableValue(const QSqlDatabase& db, const QString& key);

// Dates in TABLA_VALORES come as "YYYYMMDD", "DD/MM/YYYY" or ISO "YYYY-MM-DD".
QDate parseSettingDate(const QString& text);

} // namespace orvo::shell
