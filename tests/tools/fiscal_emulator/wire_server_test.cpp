// The emulator on a real pseudo-terminal, read and written as a serial port would be.
#include "tools/fiscal_emulator/wire_server.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

using namespace orvo::tools::fiscal;

namespace {
QByteArray exchange(int fd, const QByteArray& out, int expected) {
    EXPECT_EQ(::write(fd, out.constData(), out.size()), out.size());
    QByteArray in;
    QElapsedTimer t;
    t.start();
    while (in.size() < expected && t.elapsed() < 2000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        char buf[256];
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n > 0)
            in.append(buf, n);
    }
    return in;
}
} // namespace

TEST(FiscalWireServer, AnswersOnItsPseudoTerminal) {
    QTemporaryDir dir;
    WireServer server;
    EmulatorOptions o;
    o.statePath = dir.filePath("state.json");
    o.ticketsFolder = dir.filePath("tickets");
    ASSERT_TRUE(server.start(o)) << server.error().toStdString();
    ASSERT_TRUE(server.devicePath().startsWith("/dev/pts/"));

    const int fd = ::open(server.devicePath().toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
    ASSERT_GE(fd, 0);
    termios tio{};
    ::tcgetattr(fd, &tio);
    ::cfmakeraw(&tio);
    ::tcsetattr(fd, TCSANOW, &tio);
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);

    EXPECT_EQ(exchange(fd, QByteArray("\x05", 1), 5), QByteArray("\x02\x60\x40\x03\x23", 5));
    // I0X as typed from the protocol, answered with ACK.
    EXPECT_EQ(exchange(fd, QByteArray("\x02\x49\x30\x58\x03\x22", 6), 1), QByteArray("\x06", 1));
    ::close(fd);
    EXPECT_EQ(server.printer()->memory().xCounter, 1);

    // Unknown fault words are refused at start.
    WireServer other;
    o.faults = {QStringLiteral("on-fire")};
    EXPECT_FALSE(other.start(o));
}
