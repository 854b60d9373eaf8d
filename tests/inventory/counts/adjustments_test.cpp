#include "common/db/sql.h"
#include "common/errors/errors.h"
#include "inventory/adjustments/adjustments.h"
#include "inventory/stock/stock_card.h"
#include "inventory/stock/stock_rebuild.h"
#include "support/test_db.h"

#include <QTextStream>

using namespace orvo;
using namespace orvo::inventory;

namespace {

Decimal d(const char* text) {
    return Decimal::fromString(QString::fromLatin1(text));
}

// Types 1 (ROBO, removes) and 2 (SOBRANTE, adds); shoes A (10 at cost 4.5) and B (3 at 2), a
// service SRV.
class AdjustmentTest : public test::DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec("INSERT INTO TIPOAJUSTES (Codigo, Nombre, Signo, Status) VALUES (1, 'ROBO', -1, 1), "
             "(2, 'SOBRANTE', 1, 1)");
        article("A", "10", "4.5");
        article("B", "3", "2");
        article("SRV", "0", "0", 1);
    }
    void article(const QString& barcode, const QString& stock, const QString& cost, int type = 0,
                 const QDateTime& first = QDateTime(QDate(2020, 1, 1), QTime(8, 0))) {
        exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, Existencia, "
             "ExistenciaInicial, CostoPromedio, Tipo, Status, FechaPrimerMovimiento) VALUES (?, "
             "?, 'R1', 'N1', ?, ?, ?, ?, 1, ?)",
             {barcode, "ART " + barcode, stock, stock, cost, type, first});
    }
    Decimal stock(const QString& barcode) const {
        return Decimal::fromVariant(
            scalar("SELECT Existencia FROM INVENTARIO WHERE CodigoBarra = ?", {barcode}));
    }
    adjustments::Adjustment
    adjustment(int type, std::initializer_list<std::pair<const char*, int>> lines) const {
        adjustments::Adjustment a;
        a.type = type;
        a.user = "ANA";
        for (const auto& [code, units] : lines)
            a.lines << adjustments::adjustmentLine(db(), QString::fromLatin1(code), units);
        return a;
    }
    // A document written straight in, dated `at`: what another branch or an old day left.
    void approvedAdjustment(long long number, int sign, const QDateTime& at, const QString& code,
                            int units) {
        exec("INSERT INTO AJUSTES (Numero, Fecha, TipoAjuste, Signo, Status) VALUES (?, ?, ?, ?, "
             "1)",
             {number, at, sign > 0 ? 2 : 1, sign});
        exec("INSERT INTO MOVAJUSTES (Numero, Item, CodigoBarra, Cantidad, Costo) VALUES (?, 1, "
             "?, ?, 1)",
             {number, code, units});
    }
};

} // namespace

TEST_F(AdjustmentTest, ApprovalMovesStockOnceByTheTypesSignAndLeavesCostsAlone) {
    auto none = adjustment(0, {{"A", 1}});
    EXPECT_THROW(
        {
            try {
                adjustments::saveAdjustment(db(), none, true);
            } catch (const UserError& e) {
                EXPECT_EQ(e.text(), "Seleccione un tipo de ajuste...!");
                throw;
            }
        },
        UserError);
    auto empty = adjustment(1, {});
    EXPECT_THROW(adjustments::saveAdjustment(db(), empty, false), UserError);
    EXPECT_THROW(adjustments::adjustmentLine(db(), "SRV", 1), UserError);

    // Lines keyed twice are one line with both quantities.
    auto theft = adjustment(1, {{"A", 2}, {"B", 1}, {"A", 1}});
    const long long open = adjustments::saveAdjustment(db(), theft, false);
    EXPECT_EQ(stock("A"), d("10"));
    EXPECT_EQ(count("MOVAJUSTES", "Numero = ?", {open}), 2);
    EXPECT_EQ(
        Decimal::fromVariant(scalar(
            "SELECT Cantidad FROM MOVAJUSTES WHERE Numero = ? AND CodigoBarra = 'A'", {open})),
        d("3"));

    theft.number = open;
    adjustments::saveAdjustment(db(), theft, true);
    EXPECT_EQ(stock("A"), d("7"));
    EXPECT_EQ(stock("B"), d("2"));
    EXPECT_EQ(
        Decimal::fromVariant(scalar("SELECT TotalValor FROM AJUSTES WHERE Numero = ?", {open})),
        d("15.5"));
    EXPECT_EQ(scalar("SELECT Signo FROM AJUSTES WHERE Numero = ?", {open}).toInt(), -1);
    EXPECT_EQ(Decimal::fromVariant(scalar("SELECT CostoPromedio FROM INVENTARIO WHERE CodigoBarra "
                                          "= 'A'")),
              d("4.5"));
    // Approved is final: saved again it moves nothing.
    EXPECT_THROW(adjustments::saveAdjustment(db(), theft, true), UserError);
    EXPECT_THROW(adjustments::deleteAdjustment(db(), open), UserError);
    EXPECT_EQ(stock("A"), d("7"));

    auto found = adjustment(2, {{"B", 5}});
    adjustments::saveAdjustment(db(), found, true);
    EXPECT_EQ(stock("B"), d("7"));
    EXPECT_EQ(stock::rebuildNow(db()).changed, 0);
}

TEST_F(AdjustmentTest, RebuildReadsThePeriodAndPutsBackWhatTheDocumentsSay) {
    const QDateTime now = db::serverNow(db());
    approvedAdjustment(1, -1, QDateTime(QDate(2024, 3, 1), QTime(10, 0)), "A", 4); // -4
    approvedAdjustment(2, 1, QDateTime(now.date(), QTime(23, 59, 30)), "A", 100);  // outside
    approvedAdjustment(3, 1, QDateTime(QDate(2019, 1, 1), QTime(10, 0)), "B", 1);  // before
    approvedAdjustment(4, 1, QDateTime(QDate(2024, 3, 1), QTime(10, 0)), "SRV", 2);
    exec("UPDATE INVENTARIO SET Existencia = 55");

    std::vector<QString> labels;
    const auto r = stock::rebuildNow(db(), [&](int, const QString& l) { labels.push_back(l); });
    EXPECT_EQ(r.changed, 3);
    EXPECT_EQ(stock("A"), d("6"));
    EXPECT_EQ(stock("B"), d("3"));
    EXPECT_EQ(stock("SRV"), d("0"));
    EXPECT_NE(std::find(labels.begin(), labels.end(), QString("Ajustes Negativos...")),
              labels.end());

    // After a physical-logical adjustment an article created later starts from nothing: its
    // ExistenciaInicial is not a count.
    exec("INSERT INTO FISICOLOGICO (FechaAjuste, CodigoBarra, Precio, Impuesto, Costo, "
         "ExistenciaLogica, ExistenciaFisica, Ajuste) VALUES (?, 'A', 0, 0, 0, 6, 9, 3)",
         {QDateTime(QDate(2025, 6, 1), QTime(9, 0))});
    article("NEW", "8", "1", 0, QDateTime(QDate(2025, 7, 1), QTime(9, 0)));
    approvedAdjustment(5, -1, QDateTime(QDate(2025, 7, 2), QTime(9, 0)), "NEW", 1);
    stock::rebuildNow(db());
    EXPECT_EQ(stock("A"), d("9"));
    EXPECT_EQ(stock("B"), d("0"));
    EXPECT_EQ(stock("NEW"), d("-1"));

    // The command runs the same rebuild.
    QString out, err;
    QTextStream o(&out), e(&err);
    exec("UPDATE INVENTARIO SET Existencia = 1");
    EXPECT_EQ(stock::stockCommand(db(), {"rebuild"}, o, e), 0);
    EXPECT_EQ(stock("A"), d("9"));
}

TEST_F(AdjustmentTest, StockCardShowsEachDocumentWithItsRunningBalance) {
    auto theft = adjustment(1, {{"A", 2}});
    adjustments::saveAdjustment(db(), theft, true);
    auto found = adjustment(2, {{"A", 5}});
    adjustments::saveAdjustment(db(), found, true);
    const QDate today = db::serverNow(db()).date();
    const stock::StockCard card = stock::stockCard(db(), {"A", {}, {}}, today, today);
    EXPECT_EQ(card.opening, d("10"));
    ASSERT_EQ(card.rows.size(), 2);
    EXPECT_EQ(card.rows[0].quantity, d("-2"));
    EXPECT_EQ(card.rows[0].balance, d("8"));
    EXPECT_EQ(card.rows[1].balance, d("13"));
    EXPECT_EQ(card.closing, d("13"));
    EXPECT_EQ(card.stock, d("13"));
    EXPECT_THROW(stock::stockCard(db(), {"NOPE", {}, {}}, today, today), UserError);
}
