#include "pos/payments/payment_rules.h"

#include "common/db/sql.h"
#include "common/errors/errors.h"

#include <QLocale>

namespace orvo::pos::payments {

namespace {

QStringList names(const QSqlDatabase& db, const QString& statement,
                  std::initializer_list<QVariant> values = {}) {
    db::Sql q(db, statement);
    for (const QVariant& v : values)
        q.bind(v);
    q.exec();
    QStringList list;
    while (q.next())
        list << q.text(QStringLiteral("Nombre"));
    return list;
}

} // namespace

Decimal countedAmount(const PaymentRow& row, const Decimal& exchangeRate) {
    const Decimal amount = row.amount.value_or(Decimal());
    return row.way == kCashDollar ? amount * exchangeRate : amount;
}

Decimal totalPaid(const QList<PaymentRow>& rows, const Decimal& exchangeRate) {
    Decimal total;
    for (const PaymentRow& row : rows)
        total += countedAmount(row, exchangeRate);
    return total;
}

void checkRowsComplete(const QList<PaymentRow>& rows) {
    for (const PaymentRow& row : rows) {
        if (row.isEmpty())
            continue;
        if (!row.amount || *row.amount <= Decimal())
            throw UserError(QStringLiteral("Complete la Información referente Monto...! El monto "
                                           "debe ser mayor a cero...!"));
        const bool needsDocument = row.way == kCheque || row.way == kDeposit || row.isCard();
        if (needsDocument && row.document.trimmed().isEmpty())
            throw UserError(
                QStringLiteral("Complete la Información referente al Número del Documento"));
        if (row.isCard() && row.lot.trimmed().isEmpty())
            throw UserError(QStringLiteral("Complete la Información referente al Número del Lote"));
        if (needsDocument && row.bank.trimmed().isEmpty())
            throw UserError(QStringLiteral("Complete la Información referente al Banco"));
        if (row.isCard() && row.pointOfSale.trimmed().isEmpty())
            throw UserError(QStringLiteral("Complete la Información referente al Punto de Venta"));
    }
}

void checkCoversInvoice(const Decimal& paid, const Decimal& invoiceTotal, bool allowChange) {
    const Decimal difference = paid.rounded(2) - invoiceTotal.rounded(2);
    if (difference > Decimal() && !allowChange)
        throw UserError(QStringLiteral("El monto abonado excede a el valor de la factura.... "
                                       "corrija el valor suprimiendo ó reeditando la fila con el "
                                       "error"));
    if (difference < Decimal())
        throw UserError(QStringLiteral("El monto abonado es inferior a el valor de la factura.... "
                                       "corrija el valor suprimiendo ó reeditando la fila con el "
                                       "error o completando su forma de pago"));
}

std::optional<Decimal> parseTypedAmount(const QString& text) {
    QString t = text.trimmed().remove(QLatin1Char(' '));
    if (t.contains(QLatin1Char(','))) {
        t.remove(QLatin1Char('.'));
        t.replace(QLatin1Char(','), QLatin1Char('.'));
    }
    return Decimal::parse(t);
}

QString formatAmount(const Decimal& amount) {
    return amount.toLocaleString(QLocale(QLocale::Spanish, QLocale::Venezuela), 2);
}

QStringList paymentWayNames(const QSqlDatabase& db, bool cashAllowed) {
    if (cashAllowed)
        return names(db,
                     QStringLiteral("SELECT Nombre FROM FORMAPAGO WHERE Status = 1 AND Codigo < ? "
                                    "AND Codigo NOT IN (?, ?, ?) ORDER BY Orden ASC"),
                     {12, 6, 7, 8});
    return names(db,
                 QStringLiteral("SELECT Nombre FROM FORMAPAGO WHERE Status = 1 AND Codigo < ? "
                                "AND Codigo NOT IN (?, ?, ?, ?, ?) ORDER BY Orden ASC"),
                 {12, 1, 2, 6, 7, 8});
}

QStringList bankNames(const QSqlDatabase& db) {
    return names(db, QStringLiteral("SELECT Nombre FROM BANCOS WHERE Status = 1 ORDER BY Nombre"));
}

QStringList pointOfSaleNames(const QSqlDatabase& db) {
    return names(db, QStringLiteral("SELECT Nombre FROM CTABANCOS WHERE Status = 1 AND "
                                    "PuntoVenta = 1 ORDER BY Nombre"));
}

std::optional<QString> accountOfAcquirer(const QSqlDatabase& db, const QString& acquirerCode) {
    if (acquirerCode.trimmed().isEmpty())
        return std::nullopt;
    const QVariant name = db::scalar(
        db, QStringLiteral("SELECT Nombre FROM CTABANCOS WHERE Codigo = ? AND PuntoVenta = 1"),
        {acquirerCode.trimmed()});
    if (!name.isValid() || name.isNull())
        return std::nullopt;
    return name.toString();
}

} // namespace orvo::pos::payments
