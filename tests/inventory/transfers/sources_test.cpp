#include "inventory/transfers/transfer_sources.h"
#include "inventory/transfers/transfer_support.h"
#include "inventory/transfers/transfers.h"

using namespace orvo;
using namespace orvo::inventory::transfers;
using test::d;

namespace {

class TransferSourcesTest : public test::TransferTest {};

QStringList barcodes(const QList<inventory::purchases::PackingList::Missing>& missing) {
    QStringList out;
    for (const auto& m : missing)
        out << m.barcode;
    return out;
}

} // namespace

TEST_F(TransferSourcesTest, OrdersNotTransferredSinceTheLastCountAndTheirLinesChecked) {
    article("A1", "CAMISA-A", "20", "10");
    article("A2", "CAMISA-A", "5", "0"); // no cost: it cannot travel on a transfer
    run(db(), "INSERT INTO FISICOLOGICO (FechaAjuste, CodigoBarra, Ajuste) VALUES (?, 'A1', 0)",
        {QDateTime(QDate(2026, 3, 10), QTime(18, 0))});
    const QSqlDatabase orders = other();
    const auto order = [&](int number, const QDate& day, int status) {
        run(orders,
            "INSERT INTO PEDIDOS (Numero, Fecha, Observacion, Status) VALUES (?, ?, 'PEDIDO', ?)",
            {number, QDateTime(day, QTime(9, 0)), status});
    };
    order(1, QDate(2026, 3, 9), 1);  // before the count
    order(2, QDate(2026, 3, 10), 1); // the day of the count is in
    order(3, QDate(2026, 3, 12), 1); // transferred below
    order(4, QDate(2026, 3, 12), 0); // not placed
    order(5, QDate(2026, 3, 15), 1);
    Transfer sent = transfer("02", {line("A1", "1", 1)});
    sent.origin = "3";
    sent.issueDate = QDate(2026, 3, 12);
    saveTransfer(db(), sent, true);

    const QList<StoreOrder> pending = pendingOrders(db(), orders, "02");
    ASSERT_EQ(pending.size(), 2);
    EXPECT_EQ(pending[0].number, 5); // newest first
    EXPECT_EQ(pending[1].number, 2);
    // Order 3 went to 02: for another branch it is still pending.
    EXPECT_EQ(pendingOrders(db(), orders, "00").size(), 3);

    run(orders, "INSERT INTO MOVPEDIDOS (Numero, CodigoBarra, CantidadPedida, Item) VALUES (5, "
                "'A1', 4, 1), (5, 'A2', 2, 2), (5, 'ZZ9', 1, 3), (5, 'A1', 0, 4)");
    const QList<DocumentLine> ordered = orderLines(orders, 5);
    ASSERT_EQ(ordered.size(), 3); // the line ordered at 0 is not brought
    const CheckedLines checked = checkLines(db(), Kind::Transfer, ordered);
    ASSERT_EQ(checked.lines.size(), 1);
    EXPECT_EQ(checked.lines[0].barcode, "A1");
    EXPECT_EQ(checked.lines[0].quantity, d("4"));
    EXPECT_EQ(checked.lines[0].price, d("10")); // at this store's cost
    EXPECT_EQ(checked.lines[0].box, 1);
    EXPECT_EQ(barcodes(checked.missing), (QStringList{"A2", "ZZ9"}));
}

TEST_F(TransferSourcesTest, AReturnsLinesKeepTheirBoxesAndMayCarryAnArticleWithoutCost) {
    article("A1", "CAMISA-A", "20", "10");
    article("A2", "CAMISA-A", "5", "0");
    const long long n = saveTransfer(
        db(),
        transfer("02", {line("A1", "2", 1), line("A2", "1", 2), line("A1", "1", 2)}, Kind::Return),
        true);
    const QList<DocumentLine> lines = returnLines(db(), n);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[2].barcode, "A1");
    EXPECT_EQ(lines[2].box, 2);
    EXPECT_EQ(checkLines(db(), Kind::Return, lines).lines.size(), 3);
    // Loaded into a transfer, the article without cost is left out for the user to see.
    const CheckedLines onTransfer = checkLines(db(), Kind::Transfer, lines);
    EXPECT_EQ(onTransfer.lines.size(), 2);
    EXPECT_EQ(barcodes(onTransfer.missing), QStringList{"A2"});
}
