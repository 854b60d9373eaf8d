#include "shell/session/settings_readers.h"

#include "common/db/sql.h"
#include "common/schema/schema.h"

#include <algorithm>

namespace orvo::shell {

namespace {

// Flags follow their column's declared type: text columns hold "TRUE", numeric ones 1.
bool flagOf(const QString& table, const QString& column, const QVariant& value) {
    const schema::Table* t = schema::findTable(table);
    const schema::Column* c = t ? t->column(column) : nullptr;
    const bool textColumn = c ? (c->type == schema::Type::Text || c->type == schema::Type::Memo)
                              : value.typeId() == QMetaType::QString;
    return textColumn ? db::textFlag(value) : db::numericFlag(value);
}

// First row's value of a one-column SELECT, invalid when no row comes back.
QVariant firstValue(const QSqlDatabase& db, const QString& statement,
                    std::initializer_list<QVariant> values = {}) {
    return db::scalar(db, statement, values);
}

QVariant parameter(const QSqlDatabase& db, const char* column) {
    return firstValue(
        db, QStringLiteral("SELECT %1 FROM PARAMETROS LIMIT 1").arg(QLatin1String(column)));
}

bool parameterFlag(const QSqlDatabase& db, const char* column) {
    return flagOf(QStringLiteral("PARAMETROS"), QLatin1String(column), parameter(db, column));
}

QVariant registerValue(const QSqlDatabase& db, const char* column, const QString& serial) {
    return firstValue(
        db,
        QStringLiteral("SELECT %1 FROM CAJAS WHERE Serie = ? LIMIT 1").arg(QLatin1String(column)),
        {serial});
}

bool registerFlag(const QSqlDatabase& db, const char* column, const QString& serial) {
    return flagOf(QStringLiteral("CAJAS"), QLatin1String(column),
                  registerValue(db, column, serial));
}

int toInt(const QVariant& v) {
    if (!v.isValid() || v.isNull())
        return 0;
    const auto d = Decimal::parse(v.toString().trimmed());
    return d ? int(d->toLongLong()) : 0;
}

QList<int> taxCodes(const QSqlDatabase& db, const QString& linesTable, const QString& numberColumn,
                    const QString& serial, long long number) {
    db::Sql q(db, QStringLiteral("SELECT DISTINCT IMP.Codigo AS Codigo FROM %1 MV "
                                 "INNER JOIN IMPUESTOS IMP "
                                 "ON IMP.PorcentajeImpuesto = MV.PorcentajeImpuesto "
                                 "WHERE MV.Serie = ? AND MV.%2 = ?")
                      .arg(linesTable, numberColumn));
    q.bind(serial).bind(number).exec();
    QList<int> codes;
    while (q.next())
        codes << toInt(q.value(QStringLiteral("Codigo")));
    std::sort(codes.begin(), codes.end());
    codes.erase(std::unique(codes.begin(), codes.end()), codes.end());
    return codes;
}

bool textSetting(const QSqlDatabase& db, const QString& key) {
    const auto v = tableValue(db, key);
    return v && db::textFlag(*v);
}

bool numericSetting(const QSqlDatabase& db, const QString& key) {
    const auto v = tableValue(db, key);
    return v && db::numericFlag(*v);
}

std::optional<Decimal> amountSetting(const QSqlDatabase& db, const QString& key) {
    const auto v = tableValue(db, key);
    if (!v)
        return Decimal();
    return Decimal::parse(v->trimmed());
}

// "20000101" (and an absent value, which the original query turned into 0) mean not set.
QDate periodEnd(const QSqlDatabase& db, const QString& key) {
    const auto v = tableValue(db, key);
    if (!v)
        return {};
    const QString text = v->trimmed();
    if (text.isEmpty() || text == QLatin1String("0") || text == QLatin1String("20000101"))
        return {};
    const QDate d = parseSettingDate(text);
    return d == QDate(2000, 1, 1) ? QDate() : d;
}

} // namespace

int installationKind(const QSqlDatabase& db) {
    return toInt(parameter(db, "Tipo"));
}

QString exportBehaviour(const QSqlDatabase& db) {
    return parameter(db, "ComportamientoExportar").toString();
}

bool authoriseDeletingInvoiceLine(const QSqlDatabase& db) {
    return parameterFlag(db, "AutorizarEliminarItemFactura");
}

QString databaseHostName(const QSqlDatabase& db) {
    return parameter(db, "NombreEquipo").toString();
}

bool showPromotions(const QSqlDatabase& db) {
    return parameterFlag(db, "VisualizarPromocion");
}

bool verifyAgainstHeadOffice(const QSqlDatabase& db) {
    return parameterFlag(db, "VerificarCasaMatriz");
}

bool companyAllowsContingencyInvoices(const QSqlDatabase& db) {
    return parameterFlag(db, "PermitirFacturaContingencia");
}

bool frozenInvoicesInAdjustments(const QSqlDatabase& db) {
    return parameterFlag(db, "FacturasCongeladasEnAjustes");
}

bool groupFrozenInvoicesInAdjustments(const QSqlDatabase& db) {
    return parameterFlag(db, "AgruparFacturasCongeladasEnAjustes");
}

int transferConnectionType(const QSqlDatabase& db) {
    return toInt(
        firstValue(db, QStringLiteral("SELECT TipoConexion FROM PARAMETROSTRANSFER LIMIT 1")));
}

bool registerExists(const QSqlDatabase& db, const QString& serial) {
    return db::exists(db, QStringLiteral("SELECT Serie FROM CAJAS WHERE Serie = ?"), {serial});
}

bool registerMayChangePrices(const QSqlDatabase& db, const QString& serial) {
    return registerFlag(db, "CambiarPrecios", serial);
}

bool registerRequiresAuthorisation(const QSqlDatabase& db, const QString& serial) {
    return registerFlag(db, "RequerirAutorizacion", serial);
}

bool registerAllowsContingencyInvoices(const QSqlDatabase& db, const QString& serial) {
    return registerFlag(db, "PermitirFacturaContingencia", serial);
}

int serialChangeCount(const QSqlDatabase& db, const QString& serial) {
    return toInt(firstValue(
        db, QStringLiteral("SELECT COUNT(*) AS Contador FROM CAJASCAMBIOS WHERE Serie = ?"),
        {serial}));
}

QString latestSerialChange(const QSqlDatabase& db, const QString& serial) {
    return firstValue(db,
                      QStringLiteral("SELECT SerieCambio FROM CAJASCAMBIOS WHERE Serie = ? "
                                     "ORDER BY FechaCambio DESC LIMIT 1"),
                      {serial})
        .toString();
}

Decimal taxRateByCode(const QSqlDatabase& db, int code) {
    return Decimal::fromVariant(firstValue(
        db, QStringLiteral("SELECT PorcentajeImpuesto FROM IMPUESTOS WHERE Codigo = ?"), {code}));
}

QList<int> invoiceTaxCodes(const QSqlDatabase& db, const QString& serial, long long number) {
    return taxCodes(db, QStringLiteral("MOVVENTAS"), QStringLiteral("NumeroFactura"), serial,
                    number);
}

QList<int> returnTaxCodes(const QSqlDatabase& db, const QString& serial, long long number) {
    return taxCodes(db, QStringLiteral("MOVDEVVENTAS"), QStringLiteral("NumeroDevolucion"), serial,
                    number);
}

std::optional<QString> tableValue(const QSqlDatabase& db, const QString& key) {
    const QVariant v = firstValue(
        db, QStringLiteral("SELECT MAX(Descripcion) AS Valor FROM TABLA_VALORES WHERE IdTabla = ?"),
        {key});
    if (!v.isValid() || v.isNull())
        return std::nullopt;
    return v.toString();
}

QDate parseSettingDate(const QString& text) {
    const QString t = text.trimmed();
    for (const char* format : {"yyyyMMdd", "dd/MM/yyyy", "yyyy-MM-dd", "d/M/yyyy"}) {
        const QDate d = QDate::fromString(t.left(10), QLatin1String(format));
        if (d.isValid())
            return d;
    }
    return {};
}

SpecialTaxPeriod specialTaxPeriod(const QSqlDatabase& db) {
    return {periodEnd(db, QStringLiteral("Fecha_IVAI")),
            periodEnd(db, QStringLiteral("Fecha_IVAF"))};
}

bool specialTaxPeriodActive(const QSqlDatabase& db, const QDate& today) {
    return specialTaxPeriod(db).contains(today);
}

std::optional<Decimal> maxTaxAmountA(const QSqlDatabase& db) {
    return amountSetting(db, QStringLiteral("ValMaxIvaA"));
}

std::optional<Decimal> maxTaxAmountB(const QSqlDatabase& db) {
    return amountSetting(db, QStringLiteral("ValMaxIvaB"));
}

QString fiscalHeader(const QSqlDatabase& db) {
    db::Sql q(db, QStringLiteral("SELECT Codigo, Descripcion FROM TABLA_VALORES "
                                 "WHERE IdTabla = ? AND Codigo >= ? AND Codigo <= ? "
                                 "ORDER BY Codigo"));
    q.bind(QStringLiteral("ENCFISCAL"))
        .bind(QStringLiteral("01"))
        .bind(QStringLiteral("08"))
        .exec();
    QStringList lines;
    while (q.next())
        lines << q.text(QStringLiteral("Descripcion"));
    return lines.join(QStringLiteral("\r\n"));
}

QDate reconversionDate(const QSqlDatabase& db) {
    const auto v = tableValue(db, QStringLiteral("ReCon"));
    const QDate d = v ? parseSettingDate(*v) : QDate();
    return d.isValid() ? d : QDate(2099, 12, 31);
}

bool reconversionDone(const QSqlDatabase& db) {
    return numericSetting(db, QStringLiteral("ReRea"));
}

bool reconversionRunning(const QSqlDatabase& db) {
    return numericSetting(db, QStringLiteral("ReTra"));
}

Decimal reconversionValue(const QSqlDatabase& db) {
    return amountSetting(db, QStringLiteral("ReVal")).value_or(Decimal());
}

bool exchangeRateUpdateEnabled(const QSqlDatabase& db) {
    return textSetting(db, QStringLiteral("ActTasa"));
}

bool exchangeRateExportEnabled(const QSqlDatabase& db) {
    return textSetting(db, QStringLiteral("ExpTasa"));
}

bool exchangeRateImportEnabled(const QSqlDatabase& db) {
    return textSetting(db, QStringLiteral("ImpTasa"));
}

} // namespace orvo::shell
