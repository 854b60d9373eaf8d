#include "common/numbering/numbering.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/schema/schema.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <atomic>
#include <stdexcept>

namespace orvo::common {

Q_LOGGING_CATEGORY(lcNumbering, "orvo.numbering")

namespace {

using schema::Column;
using schema::Table;
using schema::Type;

const Table& describedTable(const QString& name) {
    const Table* t = schema::findTable(name);
    if (!t)
        throw std::logic_error("table not described in the schema: " + name.toStdString());
    return *t;
}

const Column& describedColumn(const Table& table, const QString& name) {
    const Column* c = table.column(name);
    if (!c)
        throw std::logic_error("column not described in the schema: " + table.name.toStdString() +
                               "." + name.toStdString());
    return *c;
}

bool isTextColumn(const Column& c) {
    return c.type == Type::Text || c.type == Type::Memo;
}

// A document number as the column stores it (some keys are text).
QVariant numberValue(const Column& c, long long number) {
    return isTextColumn(c) ? QVariant(QString::number(number)) : QVariant(number);
}

// A value placed in a SELECT list has no type of its own on PostgreSQL; give it the column's.
QString typedParameter(const Column& c) {
    switch (c.type) {
    case Type::Text:
        return QStringLiteral("CAST(? AS VARCHAR(%1))").arg(c.size > 0 ? c.size : 255);
    case Type::Memo:
        return QStringLiteral("CAST(? AS TEXT)");
    case Type::Numeric:
        return QStringLiteral("CAST(? AS NUMERIC(%1,%2))").arg(c.size).arg(c.scale);
    default:
        return QStringLiteral("CAST(? AS BIGINT)");
    }
}

// One document table's part in a re-numbering.
struct CopyRule {
    QString table;
    QString numberColumn;     // takes the new number; selects the old rows
    QStringList todayColumns; // dated now when the copy takes today's date
};

// INSERT ... SELECT with an explicit column list: every described column except engine-assigned
// keys, the number replaced and, with useToday, the date and time columns set to now.
void copyRows(const QSqlDatabase& db, const CopyRule& rule, const QString& serial,
              long long oldNumber, long long newNumber, bool useToday,
              const QString& fixedColumn = {}, const QVariant& fixedValue = {},
              const QString& extraCondition = {}, const QVariant& extraValue = {}) {
    const Table& t = describedTable(rule.table);
    const Column& numberCol = describedColumn(t, rule.numberColumn);
    QStringList targets;
    QStringList sources;
    QVariantList selectValues;
    for (const Column& c : t.columns) {
        if (c.type == Type::Identity)
            continue;
        targets << c.name;
        if (c.name.compare(rule.numberColumn, Qt::CaseInsensitive) == 0) {
            sources << typedParameter(c);
            selectValues << numberValue(c, newNumber);
        } else if (!fixedColumn.isEmpty() &&
                   c.name.compare(fixedColumn, Qt::CaseInsensitive) == 0) {
            sources << typedParameter(c);
            selectValues << fixedValue;
        } else if (useToday && rule.todayColumns.contains(c.name, Qt::CaseInsensitive)) {
            sources << db::nowExpression(db);
        } else {
            sources << c.name;
        }
    }
    QString statement = QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM %1 WHERE %4 = ? AND "
                                       "Serie = ?")
                            .arg(t.name, targets.join(QStringLiteral(", ")),
                                 sources.join(QStringLiteral(", ")), numberCol.name);
    if (!extraCondition.isEmpty())
        statement += QStringLiteral(" AND ") + extraCondition + QStringLiteral(" = ?");
    db::Sql q(db, statement);
    for (const QVariant& v : selectValues)
        q.bind(v);
    q.bind(numberValue(numberCol, oldNumber)).bind(serial);
    if (!extraCondition.isEmpty())
        q.bind(extraValue);
    q.exec();
}

// Sets the listed amount columns to 0 for the old document (only those the table has).
void zeroAmounts(const QSqlDatabase& db, const QString& table, const QString& numberColumn,
                 const QStringList& columns, const QString& serial, long long number) {
    const Table& t = describedTable(table);
    const Column& numberCol = describedColumn(t, numberColumn);
    QStringList sets;
    for (const QString& name : columns)
        if (const Column* c = t.column(name))
            sets << c->name + QStringLiteral(" = 0");
    db::Sql(db, QStringLiteral("UPDATE %1 SET %2 WHERE %3 = ? AND Serie = ?")
                    .arg(t.name, sets.join(QStringLiteral(", ")), numberCol.name))
        .bind(numberValue(numberCol, number))
        .bind(serial)
        .exec();
}

long long takeNumber(const QSqlDatabase& db, int controlFactura, const QString& serial,
                     const QString& counter) {
    db::requireTransaction(db);
    // Increment and read back in one statement: the row stays locked until the caller commits.
    QString statement;
    if (controlFactura == kCountersPerRegister)
        statement = QStringLiteral("UPDATE CAJAS SET %1 = COALESCE(%1, 0) + 1 WHERE Serie = ? "
                                   "RETURNING %1");
    else if (controlFactura == kCountersForCompany)
        statement = QStringLiteral("UPDATE PARAMETROS SET %1 = COALESCE(%1, 0) + 1 RETURNING %1");
    else
        return 0;
    db::Sql q(db, statement.arg(counter));
    if (controlFactura == kCountersPerRegister)
        q.bind(serial);
    q.exec();
    return q.next() ? Decimal::fromVariant(q.value(0)).toLongLong() : 0;
}

QDate serverToday(const QSqlDatabase& db) {
    return db::serverNow(db).date();
}

const QRegularExpression& identifierPattern() {
    static const QRegularExpression re(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return re;
}

QString boxLinesTable(BoxDocument kind) {
    return kind == BoxDocument::Remission ? QStringLiteral("MOVREMISION")
                                          : QStringLiteral("MOVRECEPCION");
}

QString boxHeaderTable(BoxDocument kind) {
    return kind == BoxDocument::Remission ? QStringLiteral("REMISION")
                                          : QStringLiteral("RECEPCION");
}

long long toNumber(const QVariant& v) {
    return v.isValid() && !v.isNull() ? Decimal::fromVariant(v).toLongLong() : 0;
}

} // namespace

namespace {

// Highest numeric value of the column (within the scope) plus one; 1 when there is none.
long long nextNumber(const QSqlDatabase& db, const QString& table, const QString& column,
                     const QString& scopeColumn = {}, const QVariant& scopeValue = {}) {
    // Names go into the statement text, so only names the schema knows are accepted.
    if (!identifierPattern().match(table).hasMatch() ||
        !identifierPattern().match(column).hasMatch() ||
        (!scopeColumn.isEmpty() && !identifierPattern().match(scopeColumn).hasMatch()))
        throw std::invalid_argument("not an identifier: " + table.toStdString() + "." +
                                    column.toStdString());
    const Table* t = schema::findTable(table);
    const Column* c = t ? t->column(column) : nullptr;
    if (!c || (!scopeColumn.isEmpty() && !t->column(scopeColumn)))
        throw std::invalid_argument("not a described column: " + table.toStdString() + "." +
                                    column.toStdString());
    // A hand-typed code such as "A12" is not a number to continue from: only codes made of
    // digits count (LTRIM with a set of characters means the same on both engines), and at most
    // 18 of them, so the cast cannot overflow.
    const bool text = c->type == Type::Text || c->type == Type::Memo;
    QString statement =
        text ? QStringLiteral("SELECT MAX(CAST(%1 AS BIGINT)) FROM %2 WHERE %1 <> '' AND "
                              "LTRIM(%1, '0123456789') = '' AND LENGTH(%1) <= 18")
             : QStringLiteral("SELECT MAX(%1) FROM %2");
    statement = statement.arg(c->name, t->name);
    if (!scopeColumn.isEmpty())
        statement += (text ? QStringLiteral(" AND ") : QStringLiteral(" WHERE ")) + scopeColumn +
                     QStringLiteral(" = ?");
    const QVariant max =
        scopeColumn.isEmpty() ? db::scalar(db, statement) : db::scalar(db, statement, {scopeValue});
    if (!max.isValid() || max.isNull())
        return 1;
    return Decimal::fromVariant(max).toLongLong() + 1;
}

// Savepoint names of nested numbered inserts.
std::atomic<int> g_savepoints{0};

} // namespace

int nextCode(const QSqlDatabase& db, const QString& table, const QString& column) {
    return int(nextNumber(db, table, column));
}

long long insertNumbered(const QSqlDatabase& db, const NumberedRow& row,
                         const std::function<void(long long number)>& insert) {
    db::requireTransaction(db);
    constexpr int kTries = 50;
    const QString savepoint = QStringLiteral("numero_%1").arg(++g_savepoints);
    for (int attempt = 1;; ++attempt) {
        db::execute(db, QStringLiteral("SAVEPOINT ") + savepoint);
        long long number = 0;
        try {
            number = nextNumber(db, row.table, row.column, row.scopeColumn, row.scopeValue);
            insert(number);
        } catch (const DbError& e) {
            db::execute(db, QStringLiteral("ROLLBACK TO SAVEPOINT ") + savepoint);
            db::execute(db, QStringLiteral("RELEASE SAVEPOINT ") + savepoint);
            if (!db::isUniqueViolation(e) || attempt == kTries)
                throw;
            qCInfo(lcNumbering) << row.table << "number" << number
                                << "was taken by another register; taking the next one";
            continue;
        }
        db::execute(db, QStringLiteral("RELEASE SAVEPOINT ") + savepoint);
        return number;
    }
}

long long takeInvoiceNumber(const QSqlDatabase& db, int controlFactura, const QString& serial) {
    return takeNumber(db, controlFactura, serial, QStringLiteral("UltimaFactura"));
}

long long takeReturnNumber(const QSqlDatabase& db, int controlFactura, const QString& serial) {
    return takeNumber(db, controlFactura, serial, QStringLiteral("UltimaDevolucion"));
}

void recordInvoiceOnRegisterDay(const QSqlDatabase& db, const QString& serial, long long number,
                                const QDate& day) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE DIARIOCAJA SET FacturaFinal = ?, Status = 1 "
                               "WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"),
                {number, serial, db::dayStart(day), db::nextDayStart(day)});
}

void recordReturnOnRegisterDay(const QSqlDatabase& db, const QString& serial, const QDate& day) {
    db::requireTransaction(db);
    db::execute(db,
                QStringLiteral("UPDATE DIARIOCAJA SET Status = 1 "
                               "WHERE Serie = ? AND Fecha >= ? AND Fecha < ?"),
                {serial, db::dayStart(day), db::nextDayStart(day)});
}

void renumberInvoice(const QSqlDatabase& db, const QString& serial, long long oldNumber,
                     long long newNumber, bool useToday) {
    db::requireTransaction(db);
    const QString number = QStringLiteral("NumeroFactura");
    copyRows(db,
             {QStringLiteral("VENTAS"), number, {QStringLiteral("Fecha"), QStringLiteral("Hora")}},
             serial, oldNumber, newNumber, useToday);
    copyRows(db, {QStringLiteral("MOVVENTAS"), number, {QStringLiteral("Hora")}}, serial, oldNumber,
             newNumber, useToday);

    // The receivable keeps its own numbering: each copied row takes the next Numero.
    {
        const Table& cxc = describedTable(QStringLiteral("CUENTASXCOBRAR"));
        const Column& factura = describedColumn(cxc, QStringLiteral("Factura"));
        db::Sql rows(db, QStringLiteral("SELECT Numero FROM CUENTASXCOBRAR WHERE Factura = ? AND "
                                        "Serie = ? ORDER BY Numero"));
        rows.bind(numberValue(factura, oldNumber)).bind(serial).exec();
        QVariantList receivables;
        while (rows.next())
            receivables << rows.value(QStringLiteral("Numero"));
        const Column& numero = describedColumn(cxc, QStringLiteral("Numero"));
        for (const QVariant& oldReceivable : receivables)
            insertNumbered(db, {cxc.name, numero.name}, [&](long long next) {
                copyRows(db, {cxc.name, factura.name, {QStringLiteral("FechaFactura")}}, serial,
                         oldNumber, newNumber, useToday, numero.name, numberValue(numero, next),
                         numero.name, oldReceivable);
            });
    }
    copyRows(db, {QStringLiteral("PAGOSVENTA"), number, {QStringLiteral("Fecha")}}, serial,
             oldNumber, newNumber, useToday);

    zeroAmounts(db, QStringLiteral("VENTAS"), number,
                {QStringLiteral("TotalMercancia"), QStringLiteral("TotalDescuento"),
                 QStringLiteral("TotalImpuesto"), QStringLiteral("TotalCosto"),
                 QStringLiteral("TotalPago"), QStringLiteral("TotalDolares")},
                serial, oldNumber);
    zeroAmounts(db, QStringLiteral("MOVVENTAS"), number,
                {QStringLiteral("Precio"), QStringLiteral("PrecioLista"), QStringLiteral("Costo"),
                 QStringLiteral("Impuesto"), QStringLiteral("Cantidad"),
                 QStringLiteral("CantidadDevuelta"), QStringLiteral("PorcentajeDescuento")},
                serial, oldNumber);
    zeroAmounts(db, QStringLiteral("CUENTASXCOBRAR"), QStringLiteral("Factura"),
                {QStringLiteral("Monto")}, serial, oldNumber);
    zeroAmounts(db, QStringLiteral("PAGOSVENTA"), number, {QStringLiteral("Monto")}, serial,
                oldNumber);
}

void renumberReturn(const QSqlDatabase& db, const QString& serial, long long oldNumber,
                    long long newNumber, bool useToday) {
    db::requireTransaction(db);
    const QString number = QStringLiteral("NumeroDevolucion");
    copyRows(
        db,
        {QStringLiteral("DEVVENTAS"), number, {QStringLiteral("Fecha"), QStringLiteral("Hora")}},
        serial, oldNumber, newNumber, useToday);
    copyRows(db, {QStringLiteral("MOVDEVVENTAS"), number, {QStringLiteral("Hora")}}, serial,
             oldNumber, newNumber, useToday);

    zeroAmounts(db, QStringLiteral("DEVVENTAS"), number,
                {QStringLiteral("TotalMercancia"), QStringLiteral("TotalDescuento"),
                 QStringLiteral("TotalImpuesto"), QStringLiteral("TotalCosto")},
                serial, oldNumber);
    zeroAmounts(db, QStringLiteral("MOVDEVVENTAS"), number,
                {QStringLiteral("Precio"), QStringLiteral("PrecioLista"), QStringLiteral("Costo"),
                 QStringLiteral("Impuesto"), QStringLiteral("Cantidad"),
                 QStringLiteral("PorcentajeDescuento")},
                serial, oldNumber);
}

long long nextInvoiceNumber(const QSqlDatabase& db, int controlFactura, const QString& serial,
                            long long oldNumber, bool useToday) {
    const long long number = takeInvoiceNumber(db, controlFactura, serial);
    if (number == 0)
        return 0;
    recordInvoiceOnRegisterDay(db, serial, number, serverToday(db));
    if (oldNumber > 0)
        renumberInvoice(db, serial, oldNumber, number, useToday);
    return number;
}

long long nextReturnNumber(const QSqlDatabase& db, int controlFactura, const QString& serial,
                           long long oldNumber, bool useToday) {
    const long long number = takeReturnNumber(db, controlFactura, serial);
    if (number == 0)
        return 0;
    recordReturnOnRegisterDay(db, serial, serverToday(db));
    if (oldNumber > 0)
        renumberReturn(db, serial, oldNumber, number, useToday);
    return number;
}

// Box and document numbers compare as numbers whatever the column type.
long long lastBoxNumber(const QSqlDatabase& db, BoxDocument kind, long long number) {
    const Table& lines = describedTable(boxLinesTable(kind));
    return toNumber(
        db::scalar(db,
                   QStringLiteral("SELECT MAX(CAST(NumeroCaja AS BIGINT)) FROM %1 "
                                  "WHERE Numero = ?")
                       .arg(lines.name),
                   {numberValue(describedColumn(lines, QStringLiteral("Numero")), number)}));
}

long long lastDocumentNumber(const QSqlDatabase& db, BoxDocument kind) {
    return toNumber(db::scalar(
        db,
        QStringLiteral("SELECT MAX(CAST(Numero AS BIGINT)) FROM %1").arg(boxHeaderTable(kind))));
}

bool documentHasLines(const QSqlDatabase& db, BoxDocument kind, long long number) {
    const Table& lines = describedTable(boxLinesTable(kind));
    return db::exists(
        db, QStringLiteral("SELECT Numero FROM %1 WHERE Numero = ? LIMIT 1").arg(lines.name),
        {numberValue(describedColumn(lines, QStringLiteral("Numero")), number)});
}

SalesCounters readSalesCounters(const QSqlDatabase& db, int controlFactura, const QString& serial) {
    QString statement;
    if (controlFactura == kCountersPerRegister)
        statement =
            QStringLiteral("SELECT UltimaFactura, UltimaDevolucion FROM CAJAS WHERE Serie = ?");
    else if (controlFactura == kCountersForCompany)
        statement =
            QStringLiteral("SELECT UltimaFactura, UltimaDevolucion FROM PARAMETROS LIMIT 1");
    else
        return {};
    db::Sql q(db, statement);
    if (controlFactura == kCountersPerRegister)
        q.bind(serial);
    q.exec();
    if (!q.next())
        return {};
    return {q.bigint(QStringLiteral("UltimaFactura")),
            q.bigint(QStringLiteral("UltimaDevolucion"))};
}

void correctSalesCounters(const QSqlDatabase& db, int controlFactura, const QString& serial,
                          const SalesCounters& wanted, long long printerLastInvoice) {
    if (controlFactura != kCountersPerRegister && controlFactura != kCountersForCompany)
        return;
    db::Transaction tx(db);
    if (wanted.lastInvoice != printerLastInvoice)
        throw UserError(QStringLiteral(
            "El numero de factura no concuerda con el numero de factura de la impresora...!"));
    const SalesCounters current = readSalesCounters(db, controlFactura, serial);
    if (wanted.lastReturn < current.lastReturn)
        throw UserError(QStringLiteral(
            "El numero de devolución nuevo debe ser mayor o igual al numero actual...!"));
    if (controlFactura == kCountersPerRegister)
        db::execute(db,
                    QStringLiteral("UPDATE CAJAS SET UltimaFactura = ?, UltimaDevolucion = ? "
                                   "WHERE Serie = ?"),
                    {wanted.lastInvoice, wanted.lastReturn, serial});
    else
        db::execute(db,
                    QStringLiteral("UPDATE PARAMETROS SET UltimaFactura = ?, UltimaDevolucion = ?"),
                    {wanted.lastInvoice, wanted.lastReturn});
    tx.commit();
}

} // namespace orvo::common
