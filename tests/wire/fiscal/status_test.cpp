// Status and error bytes mapped to the numbers the program reports, as tabulated in the protocol.
#include "pos/fiscal/protocol/status.h"

#include <gtest/gtest.h>

using namespace orvo::pos::fiscal::protocol;

TEST(FiscalStatus, Sts1MapsToStatusNumbers) {
    const std::pair<int, int> table[] = {{0x40, 1}, {0x41, 2},  {0x42, 3},  {0x60, 4},
                                         {0x61, 5}, {0x62, 6},  {0x70, 7},  {0x71, 8},
                                         {0x72, 9}, {0x68, 10}, {0x69, 11}, {0x6A, 12}};
    for (auto [sts1, number] : table) {
        EXPECT_EQ(statusNumber(quint8(sts1)), number) << std::hex << sts1;
        // The buffer-full bit does not change the status, it turns the error into 112.
        EXPECT_EQ(statusNumber(quint8(sts1 | 0x04)), number) << std::hex << sts1;
        EXPECT_EQ(errorNumber(quint8(sts1 | 0x04), 0x40), 112);
    }
    EXPECT_EQ(statusNumber(0x00), 0);
}

TEST(FiscalStatus, Sts2MapsToErrorNumbers) {
    const std::pair<int, int> table[] = {{0x40, 0},  {0x41, 1},  {0x42, 2},   {0x43, 3},
                                         {0x48, 0},  {0x50, 80}, {0x54, 84},  {0x58, 88},
                                         {0x5C, 92}, {0x60, 96}, {0x64, 100}, {0x6C, 108}};
    for (auto [sts2, number] : table)
        EXPECT_EQ(errorNumber(0x60, quint8(sts2)), number) << std::hex << sts2;
}

TEST(FiscalStatus, ProbeReplyIsExactlyTwoBytes) {
    auto s = parseStatus(QByteArray("\x60\x40", 2));
    ASSERT_TRUE(s);
    EXPECT_EQ(s->sts1, 0x60);
    EXPECT_EQ(s->sts2, 0x40);
    EXPECT_FALSE(parseStatus(QByteArray("\x60", 1)));
    EXPECT_FALSE(parseStatus(QByteArray("\x60\x40\x40", 3)));
    EXPECT_EQ(statusData({0x61, 0x41}), QByteArray("\x61\x41", 2));
}
