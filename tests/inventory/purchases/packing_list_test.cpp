#include "inventory/purchases/line_sources.h"
#include "inventory/purchases/purchase_support.h"

#include <QFile>

using namespace orvo;
using namespace orvo::inventory::purchases;
using test::d;

namespace {

class PackingListTest : public test::PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        article("A1", "CAMISA-A", "5", "7");
        article("A2", "CAMISA-A", "0", "0"); // known, but without a cost
        exec("UPDATE INVENTARIO SET Status = 1 WHERE CodigoBarra = 'A1'");
    }

    QString packingList() {
        return test::writePackingList(m_home.path(), {{"A1", "4", "7.5"},
                                                      {"ZZ9", "2", "1"},
                                                      {"A2", "1", "3"},
                                                      {"A1", "2", "9"},
                                                      {"A1", "1.5", "9"}});
    }

    test::HomeFolder m_home;
};

} // namespace

TEST_F(PackingListTest, LinesAreSummedByBarcodeAndTheUnknownListed) {
    const QString path = packingList();
    const PackingList forPurchase = readPackingList(db(), path, PackingCheck::Exists);
    ASSERT_EQ(forPurchase.lines.size(), 2);
    EXPECT_EQ(forPurchase.lines[0].barcode, "A1");
    EXPECT_EQ(forPurchase.lines[0].quantity, d("7.5"));
    EXPECT_EQ(forPurchase.lines[0].price, d("7.5")); // the first record's value
    EXPECT_EQ(forPurchase.lines[0].taxPercent, d("16"));
    ASSERT_EQ(forPurchase.missing.size(), 1);
    EXPECT_EQ(forPurchase.missing[0].barcode, "ZZ9");

    // A box takes only active articles that have a cost.
    const PackingList forBox = readPackingList(db(), path, PackingCheck::ActiveWithCost);
    ASSERT_EQ(forBox.lines.size(), 1);
    ASSERT_EQ(forBox.missing.size(), 2);
    const QString listed = writeMissingArticles(forBox.missing);
    EXPECT_TRUE(listed.endsWith("/Articulos no existentes.txt"));
    QFile file(listed);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    const QStringList rows = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0], "ZZ9\tARTÍCULO ZZ9\t2");
    EXPECT_EQ(rows[1], "A2\tARTÍCULO A2\t1");
    EXPECT_EQ(count("INVENTARIO", "Status = 1"), 1); // the test updated nothing
}

TEST_F(PackingListTest, AFileThatIsNoPackingListIsRefused) {
    QFile bad(m_home.path() + "/MOVITRAN.DBF");
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("esto no es una tabla");
    bad.close();
    EXPECT_FALSE(test::refusal([&] {
                     readPackingList(db(), bad.fileName(), PackingCheck::Exists);
                 }).isEmpty());
    EXPECT_FALSE(test::refusal([&] {
                     readPackingList(db(), m_home.path() + "/NOHAY.DBF", PackingCheck::Exists);
                 }).isEmpty());
}
