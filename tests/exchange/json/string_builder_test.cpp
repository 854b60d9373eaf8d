#include "exchange/json/string_builder.h"

#include <gtest/gtest.h>

using orvo::exchange::json::StringBuilder;

TEST(StringBuilder, GrowsByWholeChunks) {
    StringBuilder sb;
    EXPECT_EQ(sb.chunkSize(), 16384);
    EXPECT_EQ(sb.capacity(), 0);
    sb.append(QStringLiteral("a"));
    EXPECT_EQ(sb.capacity(), 16384);
    for (int i = 1; i < 8192; ++i)
        sb.append(QChar(u'a' + i % 26));
    EXPECT_EQ(sb.length(), 8192);
    EXPECT_EQ(sb.capacity(), 16384); // 8192 characters fill exactly one chunk
    sb.append(QStringLiteral("z"));
    EXPECT_EQ(sb.capacity(), 32768);
    EXPECT_EQ(sb.toString().size(), 8193);
    EXPECT_EQ(sb.toString().right(2), QStringLiteral("bz"));

    // A text larger than a chunk takes as many chunks as it needs at once.
    StringBuilder big;
    big.setChunkSize(10);
    big.append(QString(12, QLatin1Char('x')));
    EXPECT_EQ(big.capacity(), 30);
    big.heapMinimize();
    EXPECT_EQ(big.capacity(), 24);
    EXPECT_EQ(big.toString(), QString(12, QLatin1Char('x')));
}

TEST(StringBuilder, EditsInPlace) {
    StringBuilder sb;
    sb.setChunkSize(4);
    sb.appendNL(QStringLiteral("uno"));
    sb.append(QStringLiteral("tres"));
    sb.insert(5, QStringLiteral("dos "));
    EXPECT_EQ(sb.toString(), QStringLiteral("uno\r\ndos tres"));
    EXPECT_EQ(sb.find(QStringLiteral("tres")), 9);
    EXPECT_EQ(sb.find(QStringLiteral("uno"), 1), -1);
    sb.remove(3, 2);
    EXPECT_EQ(sb.toString(), QStringLiteral("unodos tres"));
    sb.remove(7, 100);
    EXPECT_EQ(sb.toString(), QStringLiteral("unodos "));
    sb.insert(0, QStringLiteral(">"));
    sb.insert(99, QStringLiteral("<"));
    EXPECT_EQ(sb.toString(), QStringLiteral(">unodos <"));

    sb.setTheString(QStringLiteral("ab"));
    EXPECT_EQ(sb.toString(), QStringLiteral("ab"));
    EXPECT_EQ(sb.length(), 2);
    sb.clear();
    EXPECT_EQ(sb.toString(), QString());
    EXPECT_GT(sb.capacity(), 0);
    sb.setTheString(QString());
    EXPECT_EQ(sb.capacity(), 0);
    EXPECT_EQ(sb.length(), 0);
}
