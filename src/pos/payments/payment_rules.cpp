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
    return row.way == kCashDollar ? (amount * exchangeRate).rounded(2) : amount;
}

Decimal foreignPaid(const QList<PaymentRow>& rows, const Decimal& exchangeRate) {
    Decimal total;
    for (const PaymentRow& row : rows)
        if (row.way == kCashDollar)
            total += countedAmount(row, exchangeRate);
    return total;
}

fiscal::igtf::Owed amountOwed(const QList<PaymentRow>& rows, const Decimal& exchangeRate,
                              const Decimal& invoiceTotal, const fiscal::igtf::Settings& igtf) {
    return fiscal::igtf::owed(invoiceTotal, foreignPaid(rows, exchangeRate), igtf);
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

QList<PaymentRow> approvedAtTerminal(const QList<PaymentRow>& rows) {
    QList<PaymentRow> out;
    for (const PaymentRow& r : rows)
        if (r.isApprovedAtTerminal())
            out << r;
    return out;
}

namespace {

const Decimal kCent = Decimal::fromScaled(1, 2);

// What the rows other than cash pay, and the first of them that takes it over the invoice.
struct NonCash {
    Decimal counted;
    const PaymentRow* over = nullptr;
    bool dollarsOnly = true; // every row that passes the invoice is in dollars
};

NonCash nonCash(const QList<PaymentRow>& rows, const Decimal& rate, const Decimal& invoiceTotal) {
    NonCash n;
    for (const PaymentRow& r : rows) {
        if (r.isEmpty() || r.way == kCash)
            continue;
        n.counted += countedAmount(r, rate);
        if (n.counted.rounded(2) > invoiceTotal.rounded(2)) {
            if (!n.over)
                n.over = &r;
            n.dollarsOnly = n.dollarsOnly && r.way == kCashDollar;
        }
    }
    return n;
}

// A dollar row rounded up to its cent passes the balance by less than that cent is worth.
bool withinDollarRounding(const NonCash& n, const Decimal& rate, const Decimal& invoiceTotal) {
    return n.over && n.dollarsOnly && n.counted - invoiceTotal < kCent * rate;
}

} // namespace

void checkCoversInvoice(const QList<PaymentRow>& rows, const Decimal& rate,
                        const Decimal& invoiceTotal, bool allowChange) {
    const Decimal difference = totalPaid(rows, rate).rounded(2) - invoiceTotal.rounded(2);
    if (difference < Decimal())
        throw UserError(QStringLiteral("El monto abonado es inferior a el valor de la factura.... "
                                       "corrija el valor suprimiendo ó reeditando la fila con el "
                                       "error o completando su forma de pago"));
    if (difference.isZero())
        return;
    const NonCash n = nonCash(rows, rate, invoiceTotal);
    if (withinDollarRounding(n, rate, invoiceTotal) && changeDue(rows, rate, invoiceTotal).isZero())
        return;
    if (!allowChange)
        throw UserError(QStringLiteral("El monto abonado excede a el valor de la factura.... "
                                       "corrija el valor suprimiendo ó reeditando la fila con el "
                                       "error"));
    if (n.over && !withinDollarRounding(n, rate, invoiceTotal))
        throw UserError(QStringLiteral("Solo el pago en EFECTIVO da cambio: el monto en %1 "
                                       "excede el saldo de la factura. Corrija el monto de esa "
                                       "fila...!")
                            .arg(n.over->way));
}

Decimal changeDue(const QList<PaymentRow>& rows, const Decimal& rate, const Decimal& invoiceTotal) {
    Decimal cash;
    for (const PaymentRow& r : rows)
        if (r.way == kCash)
            cash += r.amount.value_or(Decimal());
    const Decimal otherwise = nonCash(rows, rate, invoiceTotal).counted;
    const Decimal dueInCash = std::max(Decimal(), invoiceTotal - otherwise);
    return std::max(Decimal(), (cash - dueInCash).rounded(2));
}

std::optional<Decimal> proposedAmount(const QString& way, const Decimal& balance,
                                      const Decimal& rate) {
    if (balance <= Decimal() || way.isEmpty())
        return std::nullopt;
    if (way != kCashDollar)
        return balance.rounded(2);
    if (rate <= Decimal())
        return std::nullopt;
    const Decimal dollars = balance / rate;
    Decimal cents = dollars.truncated(2);
    if (cents < dollars)
        cents += kCent;
    return cents;
}

std::optional<Decimal> proposedAmount(const QString& way, const QList<PaymentRow>& others,
                                      const Decimal& rate, const Decimal& invoiceTotal,
                                      const fiscal::igtf::Settings& igtf) {
    const Decimal paid = totalPaid(others, rate);
    const Decimal foreign = foreignPaid(others, rate);
    const Decimal balance = way == kCashDollar
                                ? fiscal::igtf::foreignToSettle(invoiceTotal, foreign, paid, igtf)
                                : fiscal::igtf::owed(invoiceTotal, foreign, igtf).total - paid;
    return proposedAmount(way, balance, rate);
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

QString formatQuantity(const Decimal& quantity) {
    // No grouping: "1.250" would read back as one and a quarter.
    QString text = quantity.rounded(3).toString();
    text.replace(QLatin1Char('.'), QLatin1Char(','));
    return text;
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
