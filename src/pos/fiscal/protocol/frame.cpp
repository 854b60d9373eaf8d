#include "pos/fiscal/protocol/frame.h"

namespace orvo::pos::fiscal::protocol {

char checkByte(QByteArrayView data, char terminator) {
    char x = terminator;
    for (char c : data)
        x = char(x ^ c);
    return x;
}

QByteArray frame(QByteArrayView data, char terminator) {
    QByteArray out;
    out.reserve(data.size() + 3);
    out.append(kStx);
    out.append(data);
    out.append(terminator);
    out.append(checkByte(data, terminator));
    return out;
}

void FrameReader::reset() {
    m_state = State::Idle;
    m_data.clear();
    m_events.clear();
}

void FrameReader::feed(QByteArrayView bytes) {
    for (char c : bytes) {
        switch (m_state) {
        case State::Idle:
            if (c == kStx) {
                m_data.clear();
                m_state = State::Data;
            } else if (c == kAck || c == kNak || c == kEnq || c == kEot) {
                WireEvent e;
                e.kind = WireEvent::Kind::Control;
                e.control = c;
                m_events.append(e);
            }
            break;
        case State::Data:
            if (c == kEtx || c == kEtb) {
                m_terminator = c;
                m_state = State::Check;
            } else if (c == kStx) {
                m_data.clear(); // a new frame started: the broken one is lost
            } else {
                m_data.append(c);
            }
            break;
        case State::Check: {
            WireEvent e;
            e.kind = WireEvent::Kind::Frame;
            e.data = m_data;
            e.terminator = m_terminator;
            e.checkOk = checkByte(m_data, m_terminator) == c;
            m_events.append(e);
            m_data.clear();
            m_state = State::Idle;
            break;
        }
        }
    }
}

} // namespace orvo::pos::fiscal::protocol
