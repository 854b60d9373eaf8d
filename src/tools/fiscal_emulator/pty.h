#pragma once

#include <QString>

namespace orvo::tools::fiscal {

// A pseudo-terminal pair: the emulator works on the master side; the driver opens the slave
// path as if it were a serial port. The emulator keeps its own slave descriptor open, in raw mode,
// so the line survives the driver closing and reopening it.
class Pty {
public:
    Pty() = default;
    ~Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    // False with a message in error() when the system refuses a new terminal.
    bool open();
    void close();
    int masterFd() const { return m_master; }
    QString slavePath() const { return m_slavePath; }
    QString error() const { return m_error; }

private:
    int m_master = -1;
    int m_slave = -1;
    QString m_slavePath;
    QString m_error;
};

} // namespace orvo::tools::fiscal
