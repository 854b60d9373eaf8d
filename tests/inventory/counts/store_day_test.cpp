// A store's day after its count, through the program's own paths: the physical-logical adjustment,
// a sale at the till, an adjustment; the stock card shows each and the rebuild agrees.
#include "pos/sale/till_fixture.h"

#include "inventory/adjustments/adjustments.h"
#include "inventory/counts/counts.h"
#include "inventory/counts/physical_adjustment.h"
#include "inventory/stock/stock_card.h"
#include "inventory/stock/stock_rebuild.h"
#include "support/app_home_guard.h"

using namespace orvo;
using namespace orvo::inventory;
using test::d;

namespace {

class StoreDayTest : public test::TillTest {
protected:
    void SetUp() override {
        TillTest::SetUp();
        setUpTill({});
    }
    test::AppHomeGuard home;
};

} // namespace

TEST_F(StoreDayTest, TheStockCardShowsTheCountTheSaleAndTheAdjustmentAndTheRebuildAgrees) {
    counts::CountPage page;
    page.number = 1;
    page.user = "ANA";
    counts::createPage(db(), counts::Pass::First, page);
    counts::scan(db(), counts::Pass::First, 1, "T0001", 7);
    counts::scan(db(), counts::Pass::First, 1, "T0002", 5);
    counts::approvePage(db(), counts::Pass::First, 1);
    counts::adjustNow(db(), {"ANA", {}, {}});
    EXPECT_EQ(stock("T0001"), d("7"));
    EXPECT_EQ(stock("T0002"), d("5"));
    EXPECT_EQ(stock::rebuildNow(db()).changed, 0);

    pos::sale::SaleDraft draft = draftOf({"T0001", "T0001", "T0002", "T0009"});
    payCash(draft, draft.totals().total);
    ASSERT_EQ(pos::sale::acceptSale(db(), ctx, draft, nullptr).status,
              pos::sale::AcceptResult::Status::Saved);
    adjustments::Adjustment damaged;
    damaged.type = 3; // MERCANCIA DAÑADA, removes
    damaged.user = "ANA";
    damaged.lines << adjustments::adjustmentLine(db(), "T0001", 1);
    adjustments::saveAdjustment(db(), damaged, true);
    EXPECT_EQ(stock("T0001"), d("4"));
    EXPECT_EQ(stock("T0002"), d("4"));

    const stock::StockCard card = stock::stockCard(db(), {"T0001", {}, {}}, today, today);
    QStringList kinds;
    for (const stock::CardRow& row : card.rows)
        kinds << row.kind + " " + row.quantity.toString() + " = " + row.balance.toString();
    EXPECT_EQ(kinds, QStringList({"Ajuste Físico Lógico -3 = 7", "Ventas -2 = 5",
                                  "Ajustes Negativos -1 = 4"}));
    EXPECT_EQ(card.closing, d("4"));
    EXPECT_EQ(card.stock, d("4"));

    EXPECT_EQ(stock::rebuildNow(db()).changed, 0);
    EXPECT_EQ(stock("T0001"), d("4"));
    EXPECT_EQ(stock("T0009"), d("0"));
}
