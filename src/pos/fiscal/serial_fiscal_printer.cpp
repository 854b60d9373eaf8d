#include "pos/fiscal/serial_fiscal_printer.h"

namespace orvo::pos::fiscal {

using namespace protocol;

namespace {

// Quantity in thousandths of an item command, or -1 when the command is not an item.
int itemQuantity(const QByteArray& cmd) {
    if (cmd.isEmpty())
        return -1;
    const char c = cmd[0];
    int offset = -1;
    if (c == ' ' || c == '!' || c == '"' || c == '#')
        offset = 11;
    else if (c == 'd' && cmd.size() > 1 && cmd[1] >= '0' && cmd[1] <= '3')
        offset = 12;
    if (offset < 0 || cmd.size() < offset + 8)
        return -1;
    bool ok = false;
    const int q = cmd.mid(offset, 8).toInt(&ok);
    return ok ? q : -1;
}

bool isPayment(const QByteArray& cmd) {
    return cmd.size() >= 3 && (cmd[0] == '1' || cmd[0] == '2') && cmd[1] >= '0' && cmd[1] <= '9' &&
           cmd[2] >= '0' && cmd[2] <= '9';
}

// Commands that only set a value: sending one twice does no harm.
bool isRepeatable(const QByteArray& cmd) {
    static const char* kPrefixes[] = {"iR*", "iS*", "iF*", "iD*", "iI*", "cU",
                                      "cL",  "PH",  "PJ",  "PE",  "PF",  "PG"};
    for (const char* p : kPrefixes) {
        if (cmd.startsWith(p))
            return true;
    }
    return false;
}

} // namespace

bool SerialFiscalPrinter::open(const QString& port) {
    if (!m_link.open(port, &m_busy)) {
        setOutcome(kStatusNoAnswer, kErrorPort, true);
        return false;
    }
    setOutcome(kStatusNoAnswer, 0, false);
    return true;
}

bool SerialFiscalPrinter::failNotOpen() {
    setOutcome(kStatusNoAnswer, kErrorPort, true);
    return false;
}

void SerialFiscalPrinter::failFromAnswer(SerialLink::Answer answer) {
    switch (answer) {
    case SerialLink::Answer::BadCheck:
        setOutcome(status(), kErrorCheckByte, true);
        break;
    case SerialLink::Answer::Nak:
        if (auto s = m_link.probe())
            setOutcome(statusNumber(s->sts1), errorNumber(s->sts1, s->sts2), true);
        else
            setOutcome(kStatusNoAnswer, kErrorNoAnswer, true);
        break;
    default:
        setOutcome(kStatusNoAnswer, kErrorNoAnswer, true);
        break;
    }
}

bool SerialFiscalPrinter::probe() {
    if (!isOpen())
        return failNotOpen();
    const auto s = m_link.probe();
    if (!s) {
        setOutcome(kStatusNoAnswer, kErrorNoAnswer, true);
        return false;
    }
    setOutcome(statusNumber(s->sts1), errorNumber(s->sts1, s->sts2), false);
    return true;
}

SerialFiscalPrinter::Sent SerialFiscalPrinter::send(const QByteArray& command) {
    for (int attempt = 0;; ++attempt) {
        const SerialLink::Answer a = m_link.command(command);
        if (a == SerialLink::Answer::Ack)
            return Sent::Done;
        if (a == SerialLink::Answer::None)
            return Sent::Lost;
        // NAK: read why. A refusal in the printer's state is final; a garbled frame is sent again.
        const auto s = m_link.probe();
        if (!s) {
            setOutcome(kStatusNoAnswer, kErrorNoAnswer, true);
            return Sent::Refused;
        }
        const int error = errorNumber(s->sts1, s->sts2);
        setOutcome(statusNumber(s->sts1), error, true);
        const bool garbled = error == 92 || error == 0;
        if (!garbled || attempt >= m_link.timing().nakRetries)
            return Sent::Refused;
    }
}

bool SerialFiscalPrinter::sendCommand(const QByteArray& command) {
    if (!isOpen())
        return failNotOpen();
    switch (send(command)) {
    case Sent::Done:
        // After a Z the printer is busy and would not answer the probe.
        if (command == "I0Z") {
            setOutcome(kStatusNoAnswer, 0, false);
            return true;
        }
        if (auto s = m_link.probe())
            setOutcome(statusNumber(s->sts1), errorNumber(s->sts1, s->sts2), false);
        else
            setOutcome(kStatusNoAnswer, 0, false);
        return true;
    case Sent::Refused:
        return false;
    case Sent::Lost:
        // Without the ACK nobody knows whether it was done: not sent again blindly.
        failFromAnswer(SerialLink::Answer::None);
        if (auto s = m_link.probe())
            setOutcome(statusNumber(s->sts1), kErrorNoAnswer, true);
        return false;
    }
    return false;
}

bool SerialFiscalPrinter::sendCommands(const QList<QByteArray>& commands, OpenCounts from) {
    if (!isOpen())
        return failNotOpen();
    int articles = from.articles; // in the open document so far, thousandths
    int payments = from.payments;
    for (const QByteArray& command : commands) {
        const int quantity = itemQuantity(command);
        const bool payment = isPayment(command);
        Sent sent = send(command);
        for (int retry = 0; sent == Sent::Lost && retry < 2; ++retry) {
            // The ACK was lost: the open document tells whether the printer took the command.
            if (isRepeatable(command)) {
                sent = send(command);
                continue;
            }
            if (quantity < 0 && !payment)
                break;
            // A printer still busy with it answers ENQ only: alive, so waited for as long as a
            // Z may take, then asked.
            if (!waitWhileBusy(ackWaitMs("I0Z")))
                break;
            SerialLink::Answer unused;
            const auto data = m_link.statusRead("S2", &unused);
            const auto doc = data ? parseS2(*data) : std::nullopt;
            if (!doc)
                break;
            if (quantity >= 0 && doc->articles == articles + quantity) {
                sent = Sent::Done;
            } else if (payment && (doc->documentType == 0 || doc->payments == payments + 1)) {
                sent = Sent::Done;
            } else if ((quantity >= 0 && doc->articles == articles) ||
                       (payment && doc->payments == payments)) {
                sent = send(command);
            } else {
                break;
            }
        }
        if (sent == Sent::Refused)
            return false;
        if (sent == Sent::Lost) {
            failFromAnswer(SerialLink::Answer::None);
            return false;
        }
        if (quantity >= 0)
            articles += quantity;
        if (payment)
            ++payments;
    }
    if (auto s = m_link.probe())
        setOutcome(statusNumber(s->sts1), errorNumber(s->sts1, s->sts2), false);
    else
        setOutcome(kStatusNoAnswer, 0, false);
    return true;
}

std::optional<QByteArray> SerialFiscalPrinter::readStatusData(const QByteArray& command) {
    if (!isOpen()) {
        failNotOpen();
        return std::nullopt;
    }
    SerialLink::Answer a = SerialLink::Answer::None;
    for (int attempt = 0; attempt <= m_link.timing().nakRetries; ++attempt) {
        auto data = m_link.statusRead(command, &a);
        if (data) {
            setOutcome(status(), 0, false);
            return data;
        }
        if (a != SerialLink::Answer::Nak && a != SerialLink::Answer::BadCheck)
            break; // silence: no point in asking again
    }
    failFromAnswer(a);
    return std::nullopt;
}

std::optional<QList<QByteArray>> SerialFiscalPrinter::upload(const QByteArray& command) {
    if (!isOpen()) {
        failNotOpen();
        return std::nullopt;
    }
    SerialLink::Answer a = SerialLink::Answer::None;
    for (int attempt = 0; attempt <= m_link.timing().nakRetries; ++attempt) {
        auto blocks = m_link.upload(command, &a);
        if (blocks) {
            setOutcome(status(), 0, false);
            return blocks;
        }
        if (a != SerialLink::Answer::Nak && a != SerialLink::Answer::BadCheck)
            break;
    }
    failFromAnswer(a);
    return std::nullopt;
}

} // namespace orvo::pos::fiscal
