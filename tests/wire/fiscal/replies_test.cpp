// Reply layouts against byte strings typed field by field from the protocol description.
#include "pos/fiscal/protocol/replies.h"

#include <gtest/gtest.h>

using namespace orvo::pos::fiscal::protocol;

namespace {
const QByteArray kS1 = "S100\n"
                       "00000000000012345\n"
                       "00000012\n"
                       "00003\n"
                       "00000000\n"
                       "00000\n"
                       "00000004\n"
                       "00001\n"
                       "00000020\n"
                       "00002\n"
                       "0000\n"
                       "0007\n"
                       "J3123456780\n"
                       "Z1B1234567\n"
                       "143005\n"
                       "211126\n";
} // namespace

TEST(FiscalReplies, S1GoldenLayout) {
    ASSERT_EQ(kS1.size(), 130);
    auto s = parseS1(kS1);
    ASSERT_TRUE(s);
    EXPECT_EQ(s->dailySubtotal, 12345);
    EXPECT_EQ(s->lastInvoice, 12);
    EXPECT_EQ(s->invoicesToday, 3);
    EXPECT_EQ(s->lastCreditNote, 4);
    EXPECT_EQ(s->creditNotesToday, 1);
    EXPECT_EQ(s->lastNonFiscal, 20);
    EXPECT_EQ(s->nonFiscalToday, 2);
    EXPECT_EQ(s->zCounter, 7);
    EXPECT_EQ(s->rif, QStringLiteral("J3123456780"));
    EXPECT_EQ(s->serial, QStringLiteral("Z1B1234567"));
    EXPECT_EQ(s->time, QTime(14, 30, 5));
    EXPECT_EQ(s->date, QDate(2026, 11, 21));
    EXPECT_EQ(buildS1(*s), kS1);
    // A field one byte short shifts every LF: refused rather than misread.
    QByteArray broken = kS1;
    broken.remove(6, 1);
    EXPECT_FALSE(parseS1(broken));
}

TEST(FiscalReplies, S2GoldenLayoutWithSignPosition) {
    const QByteArray s2 = "S2\n"
                          " 000000010000\n"
                          " 000000001600\n"
                          " 000000000000\n"
                          "002500\n"
                          "-000000000150\n"
                          "0001\n"
                          "2\n";
    auto s = parseS2(s2);
    ASSERT_TRUE(s);
    EXPECT_EQ(s->taxBases, 10000);
    EXPECT_EQ(s->taxes, 1600);
    EXPECT_EQ(s->articles, 2500);
    EXPECT_EQ(s->payable, -150);
    EXPECT_EQ(s->payments, 1);
    EXPECT_EQ(s->documentType, 2);
    EXPECT_EQ(buildS2(*s), s2);
    EXPECT_EQ(buildS2({}), QByteArray("S2\n 000000000000\n 000000000000\n 000000000000\n000000\n"
                                      " 000000000000\n0000\n0\n"));
}

TEST(FiscalReplies, SvAndS3) {
    const QByteArray sv = "SV\nZ1B\nVE";
    auto v = parseSV(sv);
    ASSERT_TRUE(v);
    EXPECT_EQ(v->model, QStringLiteral("Z1B"));
    EXPECT_EQ(v->country, QStringLiteral("VE"));
    EXPECT_EQ(buildSV(*v), sv);

    QByteArray s3 = "S3"
                    "11600"
                    "10800"
                    "12200";
    for (int i = 0; i < 64; ++i)
        s3 += (i == 50 ? "01" : "00");
    s3 += "\n";
    auto s = parseS3(s3);
    ASSERT_TRUE(s);
    EXPECT_EQ(s->rates[0].hundredths, 1600);
    EXPECT_EQ(s->rates[1].hundredths, 800);
    EXPECT_EQ(s->rates[2].hundredths, 2200);
    EXPECT_EQ(s->rates[2].type, 1);
    EXPECT_EQ(s->flags[50], 1);
    EXPECT_EQ(s->flags[63], 0);
    EXPECT_EQ(buildS3(*s), s3);
}

TEST(FiscalReplies, ReportBlockGoldenLayout) {
    QByteArray u = "0007\n"
                   "261120\n"
                   "2145\n"
                   "00000012\n"
                   "261121\n"
                   "1030\n"
                   "00000000\n"
                   "00000004\n"
                   "00000020\n";
    // invoices: exempt, base/tax rate 1, base/tax rate 2, base/tax rate 3
    u += "0000000000500\n0000000010000\n0000000001600\n0000000000000\n0000000000000\n"
         "0000000000000\n0000000000000\n";
    // debit notes
    for (int i = 0; i < 7; ++i)
        u += "0000000000000\n";
    // credit notes
    u += "0000000000000\n0000000002000\n0000000000320\n0000000000000\n0000000000000\n"
         "0000000000000\n0000000000000\n";
    auto z = parseReport(u);
    ASSERT_TRUE(z);
    EXPECT_EQ(z->zNumber, 7);
    EXPECT_EQ(z->zDate, QDate(2026, 11, 20));
    EXPECT_EQ(z->zTime, QTime(21, 45));
    EXPECT_EQ(z->lastInvoice, 12);
    EXPECT_EQ(z->lastInvoiceDate, QDate(2026, 11, 21));
    EXPECT_EQ(z->lastCreditNote, 4);
    EXPECT_EQ(z->lastNonFiscal, 20);
    EXPECT_EQ(z->invoices.exempt, 500);
    EXPECT_EQ(z->invoices.base[0], 10000);
    EXPECT_EQ(z->invoices.tax[0], 1600);
    EXPECT_EQ(z->invoices.total(), 12100);
    EXPECT_EQ(z->creditNotes.base[0], 2000);
    EXPECT_EQ(z->creditNotes.tax[0], 320);
    EXPECT_EQ(buildReport(*z), u);
    EXPECT_FALSE(parseReport(u.left(u.size() - 3)));
}

TEST(FiscalReplies, ReportBlockWithTheSixIgtfFields) {
    QByteArray u = "0001\n261120\n2145\n00000003\n261121\n1030\n00000000\n00000001\n00000000\n";
    // invoices: 3 x 116.00 at rate 1
    u += "0000000000000\n0000000030000\n0000000004800\n0000000000000\n0000000000000\n"
         "0000000000000\n0000000000000\n";
    for (int i = 0; i < 7; ++i)
        u += "0000000000000\n";
    // credit notes: 116.00 at rate 1
    u += "0000000000000\n0000000010000\n0000000001600\n0000000000000\n0000000000000\n"
         "0000000000000\n0000000000000\n";
    // IGTF base and IGTF of invoices, debit notes and credit notes, 18 wide each.
    u += "000000000000034200\n000000000000001026\n"
         "000000000000000000\n000000000000000000\n"
         "000000000000005000\n000000000000000150\n";
    auto z = parseReport(u);
    ASSERT_TRUE(z);
    EXPECT_TRUE(z->withIgtf);
    EXPECT_EQ(z->invoiceIgtf, (IgtfTotals{34200, 1026}));
    EXPECT_EQ(z->debitNoteIgtf, IgtfTotals{});
    EXPECT_EQ(z->creditNoteIgtf, (IgtfTotals{5000, 150}));
    EXPECT_EQ(z->invoices.total(), 34800);
    EXPECT_EQ(buildReport(*z), u);
    // Without them the block ends after the credit notes; anything else is refused.
    z->withIgtf = false;
    EXPECT_EQ(buildReport(*z).size(), u.size() - 6 * 19);
    EXPECT_FALSE(parseReport(u.left(u.size() - 19)));
    EXPECT_FALSE(parseReport(u + "0\n"));
}

TEST(FiscalReplies, PrinterDates) {
    EXPECT_EQ(dateDdMmYy(QDate(2026, 1, 5)), QStringLiteral("050126"));
    EXPECT_EQ(parseDdMmYy(u"050126"), QDate(2026, 1, 5));
    EXPECT_FALSE(parseDdMmYy(u"0501").isValid());
}
