#include "pos/fiscal/payment_means.h"

#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "pos/fiscal/commands.h"
#include "pos/fiscal/protocol/status.h"

#include <QSet>

namespace orvo::pos::fiscal {

namespace {

const QString kTable = QStringLiteral("MEDIOFISCAL");

QString meansName(int means) {
    switch (means) {
    case 1:
        return QStringLiteral("EFECTIVO");
    case 2:
        return QStringLiteral("DEPOSITO");
    case 5:
        return QStringLiteral("CHEQUE");
    case 9:
        return QStringLiteral("TARJ. DEBITO");
    case 10:
        return QStringLiteral("TARJ. CREDITO");
    case 20:
        return QStringLiteral("EFECTIVO DOLAR");
    default:
        return QStringLiteral("MEDIO %1").arg(means, 2, 10, QLatin1Char('0'));
    }
}

int meansByName(const QString& name) {
    const QString n = name.trimmed().toUpper();
    if (n == QLatin1String("EFECTIVO") || n == QLatin1String("CUENTA POR COBRAR"))
        return 1;
    if (n == QLatin1String("DEPOSITO"))
        return 2;
    if (n == QLatin1String("CHEQUE"))
        return 5;
    if (n == QLatin1String("TARJETA DE DEBITO"))
        return 9;
    if (n == QLatin1String("TARJETA DE CREDITO"))
        return 10;
    if (n == QLatin1String("EFECTIVO DOLAR"))
        return 20;
    return 0;
}

int meansByCode(int way) {
    switch (way) {
    case 2:
        return 5;
    case 3:
        return 9;
    case 4:
        return 10;
    case 6:
        return 2;
    default:
        return 1;
    }
}

} // namespace

bool isForeignMeans(int means) {
    return means >= protocol::kFirstForeignMeans && means <= protocol::kLastForeignMeans;
}

Decimal toLocalCurrency(const Decimal& amount, const Decimal& rate) {
    return (amount * rate).rounded(2);
}

bool PaymentMeansTable::isSeveralWays(int way) const {
    for (const WayMeans& r : m_rows) {
        if (r.way == way)
            return r.wayName.compare(QLatin1String("MULTIPLE"), Qt::CaseInsensitive) == 0;
    }
    return way == 7;
}

int PaymentMeansTable::means(int way) const {
    for (const WayMeans& r : m_rows) {
        if (r.way == way)
            return r.means;
    }
    return defaultMeans(way, {}).means;
}

QList<std::pair<int, QString>> PaymentMeansTable::names() const {
    QList<std::pair<int, QString>> out;
    QSet<int> seen;
    for (const WayMeans& r : m_rows) {
        if (!seen.contains(r.means)) {
            seen.insert(r.means);
            out.append({r.means, r.name});
        }
    }
    return out;
}

WayMeans defaultMeans(int way, const QString& wayName) {
    WayMeans m;
    m.way = way;
    m.wayName = wayName;
    m.means = meansByName(wayName);
    if (m.means == 0)
        m.means = meansByCode(way);
    m.name = meansName(m.means);
    return m;
}

PaymentMeansTable loadPaymentMeans(const QSqlDatabase& db) {
    QList<WayMeans> rows;
    db::Sql w(db, QStringLiteral("SELECT Codigo, Nombre FROM FORMAPAGO ORDER BY Codigo"));
    w.exec();
    while (w.next())
        rows << defaultMeans(w.integer(QStringLiteral("Codigo")),
                             w.text(QStringLiteral("Nombre")).trimmed());
    db::Sql c(db,
              QStringLiteral("SELECT Codigo, Descripcion FROM TABLA_VALORES WHERE IdTabla = ?"));
    c.bind(kTable).exec();
    while (c.next()) {
        const int way = c.text(QStringLiteral("Codigo")).trimmed().toInt();
        const QString text = c.text(QStringLiteral("Descripcion")).trimmed();
        bool ok = false;
        const int means = text.section(QLatin1Char(' '), 0, 0).toInt(&ok);
        if (!ok || means < 1 || means > 24)
            continue;
        const QString name = text.section(QLatin1Char(' '), 1).trimmed();
        for (WayMeans& r : rows) {
            if (r.way == way) {
                r.means = means;
                r.name = name.isEmpty() ? meansName(means) : name.left(kMeansNameLength);
            }
        }
    }
    return PaymentMeansTable(rows);
}

void savePaymentMeans(const QSqlDatabase& db, const QList<WayMeans>& rows) {
    db::requireTransaction(db);
    for (const WayMeans& r : rows) {
        if (r.means < 1 || r.means > 24)
            throw UserError(QStringLiteral("El medio de pago de %1 debe estar entre 1 y 24...!")
                                .arg(r.wayName));
        if (r.name.trimmed().isEmpty() || r.name.trimmed().size() > kMeansNameLength)
            throw UserError(QStringLiteral("El nombre del medio de pago de %1 debe tener entre 1 "
                                           "y 14 caracteres...!")
                                .arg(r.wayName));
    }
    db::execute(db, QStringLiteral("DELETE FROM TABLA_VALORES WHERE IdTabla = ?"), {kTable});
    for (const WayMeans& r : rows)
        db::execute(db,
                    QStringLiteral("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) "
                                   "VALUES (?, ?, ?)"),
                    {kTable, QString::number(r.way),
                     QStringLiteral("%1 %2")
                         .arg(r.means, 2, 10, QLatin1Char('0'))
                         .arg(r.name.trimmed().toUpper())});
}

} // namespace orvo::pos::fiscal
