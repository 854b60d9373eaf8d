// Registers of one store working at the same moment on one database (a store server, or the
// embedded file shared by two programs): every action goes through, every document number is taken
// once, counters match the documents, and stock adds up.
#include "support/register_workload.h"
#include "support/test_db.h"

#include "common/db/sql.h"

#include <gtest/gtest.h>

namespace orvo::test {
namespace {

class ConcurrentRegisters : public DbTest {
protected:
    // Numbers of `column` in `table` (for one register when given) sorted, to compare with 1..n.
    QList<long long> numbers(const QString& table, const QString& column,
                             const QString& serial = {}) const {
        QString sql = QStringLiteral("SELECT %1 FROM %2").arg(column, table);
        if (!serial.isEmpty())
            sql += QStringLiteral(" WHERE Serie = ?");
        sql += QStringLiteral(" ORDER BY %1").arg(column);
        db::Sql q(db(), sql);
        if (!serial.isEmpty())
            q.bind(serial);
        q.exec();
        QList<long long> out;
        while (q.next())
            out << q.bigint(column);
        return out;
    }
    static QList<long long> oneTo(int n) {
        QList<long long> out;
        for (int i = 1; i <= n; ++i)
            out << i;
        return out;
    }
};

TEST_F(ConcurrentRegisters, FourRegistersSellReturnParkAndClockInWithoutADuplicateNumber) {
    Workload w;
    w.registers = 4;
    w.rounds = 8;
    prepareRegisters(db(), w);
    const QVariant stockBefore = scalar("SELECT SUM(Existencia) FROM INVENTARIO WHERE Tipo = 0");

    const WorkloadOutcome out = runRegisters(testDb().settings(), w);

    EXPECT_TRUE(out.errors.isEmpty()) << out.errors.join(u'\n').toStdString();
    const int all = w.registers * w.rounds;
    EXPECT_EQ(out.sales, 2 * all);
    EXPECT_EQ(out.returns, all);
    EXPECT_EQ(out.parked, all);
    for (int r = 0; r < w.registers; ++r) {
        const QString serial = registerSerial(r);
        // The register's counters gave each document its number once, without a gap.
        EXPECT_EQ(numbers("VENTAS", "NumeroFactura", serial), oneTo(2 * w.rounds))
            << serial.toStdString();
        EXPECT_EQ(numbers("DEVVENTAS", "NumeroDevolucion", serial), oneTo(w.rounds))
            << serial.toStdString();
        EXPECT_EQ(numbers("SALIDASCAJA", "Numero", serial), oneTo(w.rounds))
            << serial.toStdString();
        EXPECT_EQ(scalar("SELECT UltimaFactura FROM CAJAS WHERE Serie = ?", {serial}).toInt(),
                  2 * w.rounds);
        EXPECT_EQ(scalar("SELECT UltimaDevolucion FROM CAJAS WHERE Serie = ?", {serial}).toInt(),
                  w.rounds);
    }
    // Numbers shared by all the registers, taken as the highest plus one.
    EXPECT_EQ(numbers("CUENTASXCOBRAR", "Numero"), oneTo(all));
    // Parked sales taken back free their numbers; none was refused on the way.
    EXPECT_EQ(count("HISTVENTAS"), 0);
    const QList<long long> entries = numbers("CONTROLACCESO", "Numero");
    EXPECT_EQ(entries, oneTo(out.entries));
    EXPECT_GT(out.entries, all / 2);

    // What was sold and not returned left the stock: the credit sales' two lines per round.
    const Decimal sold = Decimal::fromVariant(
        scalar("SELECT SUM(M.Cantidad - M.CantidadDevuelta) FROM MOVVENTAS M"));
    EXPECT_EQ(sold, Decimal(2 * all));
    EXPECT_EQ(
        Decimal::fromVariant(stockBefore) - sold,
        Decimal::fromVariant(scalar("SELECT SUM(Existencia) FROM INVENTARIO WHERE Tipo = 0")));
}

} // namespace
} // namespace orvo::test
