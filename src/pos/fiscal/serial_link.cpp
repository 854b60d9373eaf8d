#include "pos/fiscal/serial_link.h"

#include <QDeadlineTimer>
#include <QFileInfo>

namespace orvo::pos::fiscal {

using namespace protocol;

int LinkTiming::ackTimeoutFor(const QByteArray& c) const {
    if (c.isEmpty())
        return ackTimeoutMs;
    if (c == "I0Z")
        return zTimeoutMs;
    if (c.startsWith("I0") || c.startsWith("I2") || c.startsWith("I3"))
        return reportAckTimeoutMs;
    const char c0 = c[0];
    const bool digitsFollow = c.size() >= 3 && c[1] >= '0' && c[1] <= '9';
    if (c == "7" || ((c0 == '1' || c0 == '2') && digitsFollow))
        return paymentAckTimeoutMs;
    const quint8 u0 = quint8(c0);
    if (c0 == ' ' || c0 == '!' || c0 == '"' || c0 == '#' || (u0 >= 0xA0 && u0 <= 0xA3) ||
        (c0 == 'd' && c.size() > 1 && c[1] >= '0' && c[1] <= '3') || c0 == '@' || c0 == 'A' ||
        c0 == 'p' || c0 == 'q' || c0 == 'k' || c == "3" || c.startsWith("80") || c.startsWith("81"))
        return itemAckTimeoutMs;
    return ackTimeoutMs;
}

bool SerialLink::open(const QString& port, bool* busy) {
    close();
    *busy = false;
    // A path (/dev/ttyUSB0, a pseudo-terminal) or a bare name (ttyUSB0, COM3).
    if (port.startsWith(QLatin1Char('/')))
        m_port.setPortName(QFileInfo(port).absoluteFilePath());
    else
        m_port.setPortName(port);
    m_name = port;
    if (!m_port.open(QIODevice::ReadWrite)) {
        *busy = m_port.error() == QSerialPort::PermissionError;
        return false;
    }
    m_port.setBaudRate(QSerialPort::Baud9600);
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::EvenParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    // Many adapters and pseudo-terminals have no modem lines: that is not an error.
    m_port.setRequestToSend(true);
    m_port.clearError();
    m_port.clear();
    m_reader.reset();
    return true;
}

void SerialLink::close() {
    if (m_port.isOpen())
        m_port.close();
    m_reader.reset();
}

bool SerialLink::deviceGone() {
    if (!m_port.isOpen())
        return false;
    m_port.waitForReadyRead(0);
    // An unplugged adapter reports a resource error; a terminal whose far end is gone reads
    // end-of-file, a read error.
    const auto e = m_port.error();
    return e == QSerialPort::ResourceError || e == QSerialPort::ReadError;
}

void SerialLink::write(const QByteArray& bytes) {
    m_port.write(bytes);
    m_port.waitForBytesWritten(1000);
}

void SerialLink::discardInput() {
    // Late answers to an earlier exchange must not be taken for this one.
    while (m_port.waitForReadyRead(0))
        m_port.readAll();
    m_port.readAll();
    m_reader.reset();
}

std::optional<WireEvent> SerialLink::nextEvent(int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        if (m_reader.hasEvent())
            return m_reader.take();
        const QByteArray bytes = m_port.readAll();
        if (!bytes.isEmpty()) {
            m_reader.feed(bytes);
            continue;
        }
        if (deadline.hasExpired())
            return std::nullopt;
        m_port.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())));
    }
}

std::optional<StatusBytes> SerialLink::probe() {
    if (!isOpen())
        return std::nullopt;
    for (int attempt = 0; attempt < 2; ++attempt) {
        discardInput();
        write(QByteArray(1, kEnq));
        QDeadlineTimer deadline(m_timing.probeTimeoutMs);
        while (!deadline.hasExpired()) {
            auto e = nextEvent(int(deadline.remainingTime()));
            if (!e)
                break;
            if (e->isFrame() && e->checkOk) {
                if (auto s = parseStatus(e->data))
                    return s;
            }
        }
    }
    return std::nullopt;
}

SerialLink::Answer SerialLink::command(const QByteArray& data) {
    if (!isOpen())
        return Answer::None;
    discardInput();
    write(frame(data));
    QDeadlineTimer deadline(m_timing.ackTimeoutFor(data));
    while (!deadline.hasExpired()) {
        auto e = nextEvent(int(deadline.remainingTime()));
        if (!e)
            break;
        if (e->isControl(kAck))
            return Answer::Ack;
        if (e->isControl(kNak))
            return Answer::Nak;
    }
    return Answer::None;
}

std::optional<QByteArray> SerialLink::statusRead(const QByteArray& data, Answer* answer) {
    *answer = Answer::None;
    if (!isOpen())
        return std::nullopt;
    discardInput();
    write(frame(data));
    QDeadlineTimer deadline(m_timing.replyTimeoutMs);
    while (!deadline.hasExpired()) {
        auto e = nextEvent(int(deadline.remainingTime()));
        if (!e)
            break;
        if (e->isControl(kNak)) {
            *answer = Answer::Nak;
            return std::nullopt;
        }
        if (e->isFrame()) {
            if (!e->checkOk) {
                *answer = Answer::BadCheck;
                return std::nullopt;
            }
            write(QByteArray(1, kAck));
            *answer = Answer::Ack;
            return e->data;
        }
    }
    return std::nullopt;
}

std::optional<QList<QByteArray>> SerialLink::upload(const QByteArray& data, Answer* answer) {
    *answer = Answer::None;
    if (!isOpen())
        return std::nullopt;
    discardInput();
    write(frame(data));
    // The printer announces the upload with ENQ.
    for (;;) {
        auto e = nextEvent(m_timing.ackTimeoutMs);
        if (!e)
            return std::nullopt;
        if (e->isControl(kNak)) {
            *answer = Answer::Nak;
            return std::nullopt;
        }
        if (e->isControl(kEnq))
            break;
    }
    write(QByteArray(1, kAck));
    QList<QByteArray> blocks;
    for (;;) {
        auto e = nextEvent(m_timing.blockTimeoutMs);
        if (!e)
            return std::nullopt;
        if (e->isControl(kEot)) {
            *answer = Answer::Ack;
            return blocks;
        }
        if (e->isControl(kNak)) {
            *answer = Answer::Nak;
            return std::nullopt;
        }
        if (e->isFrame()) {
            if (!e->checkOk) {
                write(QByteArray(1, kNak));
                *answer = Answer::BadCheck;
                return std::nullopt;
            }
            blocks.append(e->data);
            write(QByteArray(1, kAck));
        }
    }
}

} // namespace orvo::pos::fiscal
