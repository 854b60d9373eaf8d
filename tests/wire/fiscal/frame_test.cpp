// Frames and check bytes, typed from the printer's protocol description.
#include "pos/fiscal/protocol/frame.h"

#include <gtest/gtest.h>

using namespace orvo::pos::fiscal::protocol;

namespace {
QByteArray bytes(std::initializer_list<int> list) {
    QByteArray b;
    for (int v : list)
        b.append(char(v));
    return b;
}
} // namespace

TEST(FiscalFrame, GoldenFramesAndCheckBytes) {
    EXPECT_EQ(frame("I0X"), bytes({0x02, 0x49, 0x30, 0x58, 0x03, 0x22}));
    EXPECT_EQ(quint8(checkByte("101")), 0x33);
    EXPECT_EQ(quint8(checkByte("199")), 0x32);
    EXPECT_EQ(quint8(checkByte("7")), 0x34);
    EXPECT_EQ(quint8(checkByte("S1")), 0x61);
    EXPECT_EQ(quint8(checkByte("U0X")), 0x3E);
    // ETB-terminated block of an upload: the terminator takes part in the check.
    EXPECT_EQ(frame("AB", kEtb), bytes({0x02, 0x41, 0x42, 0x17, 0x41 ^ 0x42 ^ 0x17}));
    // Idle status reply.
    EXPECT_EQ(frame(bytes({0x60, 0x40})), bytes({0x02, 0x60, 0x40, 0x03, 0x23}));
}

TEST(FiscalFrame, ReaderSplitsFramesAndControlBytesAcrossChunks) {
    FrameReader r;
    const QByteArray stream = bytes({0x06, 0x02, 0x49, 0x30, 0x58, 0x03, 0x22, 0x15, 0x05, 0x04});
    for (char c : stream)
        r.feed(QByteArrayView(&c, 1));
    ASSERT_TRUE(r.hasEvent());
    EXPECT_TRUE(r.take().isControl(kAck));
    WireEvent f = r.take();
    ASSERT_TRUE(f.isFrame());
    EXPECT_EQ(f.data, QByteArray("I0X"));
    EXPECT_TRUE(f.checkOk);
    EXPECT_EQ(f.terminator, kEtx);
    EXPECT_TRUE(r.take().isControl(kNak));
    EXPECT_TRUE(r.take().isControl(kEnq));
    EXPECT_TRUE(r.take().isControl(kEot));
    EXPECT_FALSE(r.hasEvent());
}

TEST(FiscalFrame, CheckByteThatEqualsATerminatorIsTakenByPosition) {
    // "AA" XORs to zero, so its check byte is ETX itself; "1%" gives ETB.
    EXPECT_EQ(frame("AA"), bytes({0x02, 0x41, 0x41, 0x03, 0x03}));
    EXPECT_EQ(frame("1%"), bytes({0x02, 0x31, 0x25, 0x03, 0x17}));
    FrameReader r;
    r.feed(bytes({0x02, 0x41, 0x41, 0x03, 0x03, 0x02, 0x31, 0x25, 0x03, 0x17, 0x06}));
    WireEvent a = r.take();
    EXPECT_EQ(a.data, QByteArray("AA"));
    EXPECT_TRUE(a.checkOk);
    WireEvent b = r.take();
    EXPECT_EQ(b.data, QByteArray("1%"));
    EXPECT_TRUE(b.checkOk);
    EXPECT_TRUE(r.take().isControl(kAck));
    EXPECT_FALSE(r.hasEvent());
}

TEST(FiscalFrame, ReaderFlagsABadCheckByteAndDropsNoise) {
    FrameReader r;
    r.feed(bytes({'x', 'y', 0x02, 0x49, 0x30, 0x58, 0x03, 0x23}));
    WireEvent f = r.take();
    EXPECT_EQ(f.data, QByteArray("I0X"));
    EXPECT_FALSE(f.checkOk);
    EXPECT_FALSE(r.hasEvent());
    EXPECT_FALSE(r.midFrame());
    r.feed(bytes({0x02, 0x41}));
    EXPECT_TRUE(r.midFrame());
}
