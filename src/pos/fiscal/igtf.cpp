#include "pos/fiscal/igtf.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"

namespace orvo::pos::fiscal::igtf {

Decimal base(const Decimal& foreignPaid, const Decimal& amountDue) {
    if (foreignPaid <= Decimal() || amountDue <= Decimal())
        return {};
    return std::min(foreignPaid, amountDue);
}

Decimal tax(const Decimal& base, const Decimal& percent) {
    return (base * percent / Decimal(100)).rounded(2);
}

Decimal foreignRefund(const Decimal& refund, const Decimal& invoiceBase,
                      const Decimal& invoiceTotal) {
    if (invoiceBase <= Decimal() || invoiceTotal <= Decimal() || refund <= Decimal())
        return {};
    return std::min(refund, (refund * invoiceBase / invoiceTotal).rounded(2));
}

Owed owed(const Decimal& amount, const Decimal& foreignPaid, const Settings& settings) {
    Owed o;
    if (settings.enabled) {
        o.base = base(foreignPaid, amount);
        o.tax = tax(o.base, settings.percent);
    }
    o.total = amount + o.tax;
    return o;
}

Decimal foreignToSettle(const Decimal& amount, const Decimal& foreignPaid, const Decimal& paid,
                        const Settings& settings) {
    Decimal more;
    // Each round adds the tax the last addition raised; it stops within a few cents.
    for (int round = 0; round < 8; ++round) {
        const Decimal due = owed(amount, foreignPaid + more, settings).total - paid - more;
        if (due <= Decimal())
            break;
        more += due;
    }
    return more;
}

Settings settings(const QSqlDatabase& db, const QString& serial) {
    Settings s;
    db::Sql c(db, QStringLiteral("SELECT IGTF FROM CAJAS WHERE Serie = ?"));
    c.bind(serial).exec();
    s.enabled = c.next() && c.integer(QStringLiteral("IGTF")) == 1;
    db::Sql p(db, QStringLiteral("SELECT IGTF, PorcentajeIGTF FROM PARAMETROS"));
    p.exec();
    if (p.next()) {
        s.enabled = s.enabled || p.integer(QStringLiteral("IGTF")) == 1;
        if (!p.isNull(QStringLiteral("PorcentajeIGTF")) &&
            p.decimal(QStringLiteral("PorcentajeIGTF")) > Decimal())
            s.percent = p.decimal(QStringLiteral("PorcentajeIGTF"));
    }
    return s;
}

void setRegisterIgtf(const QSqlDatabase& db, const QString& serial, bool enabled) {
    db::requireTransaction(db);
    db::execute(db, QStringLiteral("UPDATE CAJAS SET IGTF = ? WHERE Serie = ?"),
                {enabled ? 1 : 0, serial});
}

} // namespace orvo::pos::fiscal::igtf
