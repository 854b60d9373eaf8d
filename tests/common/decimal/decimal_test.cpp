#include "common/decimal/decimal.h"

#include <QLocale>
#include <gtest/gtest.h>

using orvo::Decimal;

TEST(Decimal, ParsesAndPrintsExactly) {
    EXPECT_EQ(Decimal::fromString(u"0.1") + Decimal::fromString(u"0.2"),
              Decimal::fromString(u"0.3"));
    EXPECT_EQ(Decimal::fromString(u"-1234.50").toString(), QStringLiteral("-1234.5"));
    EXPECT_EQ(Decimal::fromString(u"+.25").toString(2), QStringLiteral("0.25"));
    EXPECT_EQ(Decimal::fromString(u"1e3").toString(), QStringLiteral("1000"));
    EXPECT_EQ(Decimal::fromString(u"12.5E-1").toString(), QStringLiteral("1.25"));
    EXPECT_EQ(Decimal(7).toString(2), QStringLiteral("7.00"));
    EXPECT_FALSE(Decimal::parse(u"").has_value());
    EXPECT_FALSE(Decimal::parse(u"1.2.3").has_value());
    EXPECT_FALSE(Decimal::parse(u"12a").has_value());
    EXPECT_FALSE(Decimal::parse(u"-").has_value());
    EXPECT_FALSE(Decimal::parse(u"1e").has_value());
}

TEST(Decimal, RoundsHalfAwayFromZero) {
    EXPECT_EQ(Decimal::fromString(u"2.345").rounded(2).toString(), QStringLiteral("2.35"));
    EXPECT_EQ(Decimal::fromString(u"-2.345").rounded(2).toString(), QStringLiteral("-2.35"));
    EXPECT_EQ(Decimal::fromString(u"2.344999").rounded(2).toString(), QStringLiteral("2.34"));
    EXPECT_EQ(Decimal::fromString(u"2.349").truncated(2).toString(), QStringLiteral("2.34"));
    EXPECT_EQ(Decimal::fromString(u"0.004").rounded(2).toString(2), QStringLiteral("0.00"));
    // Beyond eight decimals the ninth decides.
    EXPECT_EQ(Decimal::fromString(u"0.000000015").toString(), QStringLiteral("0.00000002"));
    EXPECT_EQ(Decimal::fromString(u"19.999").scaled(2), 2000);
}

TEST(Decimal, MultipliesAndDividesLikeATill) {
    // 16 % tax on 99.99 is 15.9984, charged as 16.00
    const Decimal tax = Decimal::fromString(u"99.99") * Decimal::fromString(u"0.16");
    EXPECT_EQ(tax.toString(), QStringLiteral("15.9984"));
    EXPECT_EQ(tax.rounded(2).toString(2), QStringLiteral("16.00"));
    EXPECT_EQ((Decimal(100) / Decimal(3)).rounded(2).toString(), QStringLiteral("33.33"));
    EXPECT_EQ((Decimal(-2) / Decimal(3)).toString(), QStringLiteral("-0.66666667"));
    EXPECT_THROW(Decimal(1) / Decimal(0), std::domain_error);
    // Large bolívar amounts before a reconversion stay exact.
    const Decimal big = Decimal::fromString(u"123456789012345.67");
    EXPECT_EQ((big * Decimal(1000)).toString(), QStringLiteral("123456789012345670"));
    EXPECT_EQ((big / Decimal(100000)).rounded(2).toString(), QStringLiteral("1234567890.12"));
}

TEST(Decimal, ReadsDatabaseValues) {
    EXPECT_EQ(Decimal::fromVariant(QVariant()), Decimal());
    EXPECT_EQ(Decimal::fromVariant(QVariant(0.30000000000000004)).rounded(2).toString(),
              QStringLiteral("0.3"));
    EXPECT_EQ(Decimal::fromVariant(QVariant(QStringLiteral("15.50000"))).toString(2),
              QStringLiteral("15.50"));
    EXPECT_EQ(Decimal::fromVariant(QVariant(42LL)).toString(), QStringLiteral("42"));
    EXPECT_THROW(Decimal::fromVariant(QVariant(QStringLiteral("abc"))), std::invalid_argument);
}

TEST(Decimal, ConvertsInsideAVariant) {
    const QVariant amount = QVariant::fromValue(Decimal::fromString(u"-1234.50"));
    EXPECT_EQ(amount.toString(), QStringLiteral("-1234.5"));
    EXPECT_DOUBLE_EQ(amount.toDouble(), -1234.5);
    // Whole-number reads refuse decimals and out-of-range values instead of rounding them away.
    bool ok = true;
    EXPECT_EQ(amount.toLongLong(&ok), 0);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(amount.toInt(&ok), 0);
    EXPECT_FALSE(ok);
    const QVariant big = QVariant::fromValue(Decimal(4000000000LL));
    EXPECT_EQ(big.toLongLong(&ok), 4000000000LL);
    EXPECT_TRUE(ok);
    EXPECT_EQ(big.toInt(&ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(QVariant::fromValue(Decimal::fromString(u"-7.000")).toInt(&ok), -7);
    EXPECT_TRUE(ok);

    // And back from text.
    EXPECT_EQ(QVariant(QStringLiteral(" 15.50 ")).value<Decimal>(), Decimal::fromString(u"15.5"));
    EXPECT_EQ(QVariant(amount.toString()).value<Decimal>(), amount.value<Decimal>());
    QVariant bad(QStringLiteral("12a"));
    EXPECT_FALSE(bad.convert(QMetaType::fromType<Decimal>()));
}

TEST(Decimal, FormatsWithLocaleSeparators) {
    const QLocale ve(QLocale::Spanish, QLocale::Venezuela);
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    const Decimal d = Decimal::fromString(u"-1234567.891");
    EXPECT_EQ(d.toLocaleString(us), QStringLiteral("-1,234,567.89"));
    EXPECT_EQ(Decimal().toLocaleString(us), QStringLiteral("0.00"));
    EXPECT_EQ(Decimal(999).toLocaleString(ve), QStringLiteral("999,00"));
    EXPECT_EQ(Decimal(1000).toLocaleString(ve), QStringLiteral("1.000,00"));
}
