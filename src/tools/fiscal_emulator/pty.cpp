#include "tools/fiscal_emulator/pty.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace orvo::tools::fiscal {

Pty::~Pty() {
    close();
}

bool Pty::open() {
    close();
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY);
    char name[128] = {};
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 ||
        ::ptsname_r(m_master, name, sizeof name) != 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        close();
        return false;
    }
    m_slavePath = QString::fromLocal8Bit(name);
    m_slave = ::open(name, O_RDWR | O_NOCTTY);
    if (m_slave < 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        close();
        return false;
    }
    // Raw both ways: no echo of what the printer sends, no line editing of what it receives.
    termios tio{};
    ::tcgetattr(m_slave, &tio);
    ::cfmakeraw(&tio);
    ::tcsetattr(m_slave, TCSANOW, &tio);
    ::tcgetattr(m_master, &tio);
    ::cfmakeraw(&tio);
    ::tcsetattr(m_master, TCSANOW, &tio);
    ::fcntl(m_master, F_SETFL, ::fcntl(m_master, F_GETFL) | O_NONBLOCK);
    return true;
}

void Pty::close() {
    if (m_slave >= 0)
        ::close(m_slave);
    if (m_master >= 0)
        ::close(m_master);
    m_slave = m_master = -1;
}

} // namespace orvo::tools::fiscal
