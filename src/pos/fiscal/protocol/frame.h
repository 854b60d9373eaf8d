#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

// Framing of the fiscal printer's serial line: STX data ETX|ETB check, and the single control
// bytes that travel between frames.
namespace orvo::pos::fiscal::protocol {

inline constexpr char kStx = 0x02;
inline constexpr char kEtx = 0x03;
inline constexpr char kEot = 0x04;
inline constexpr char kEnq = 0x05;
inline constexpr char kAck = 0x06;
inline constexpr char kLf = 0x0A;
inline constexpr char kNak = 0x15;
inline constexpr char kEtb = 0x17;

// XOR of every data byte and of the terminator (STX excluded).
char checkByte(QByteArrayView data, char terminator = kEtx);
// STX data terminator check.
QByteArray frame(QByteArrayView data, char terminator = kEtx);

struct WireEvent {
    enum class Kind { Frame, Control };
    Kind kind = Kind::Control;
    char control = 0; // Control: ACK, NAK, ENQ or EOT
    QByteArray data;  // Frame: the bytes between STX and the terminator
    char terminator = kEtx;
    bool checkOk = false;

    bool isControl(char c) const { return kind == Kind::Control && control == c; }
    bool isFrame() const { return kind == Kind::Frame; }
};

// Splits a byte stream into frames and control bytes. The byte after a terminator is always
// the check byte, whatever its value. Stray bytes outside a frame are dropped.
class FrameReader {
public:
    void feed(QByteArrayView bytes);
    bool hasEvent() const { return !m_events.isEmpty(); }
    WireEvent take() { return m_events.takeFirst(); }
    bool midFrame() const { return m_state != State::Idle; }
    void reset();

private:
    enum class State { Idle, Data, Check };
    State m_state = State::Idle;
    QByteArray m_data;
    char m_terminator = kEtx;
    QList<WireEvent> m_events;
};

} // namespace orvo::pos::fiscal::protocol
