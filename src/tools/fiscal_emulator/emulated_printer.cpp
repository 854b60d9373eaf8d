#include "tools/fiscal_emulator/emulated_printer.h"

#include "pos/fiscal/protocol/status.h"

#include <QLocale>

namespace orvo::tools::fiscal {

using namespace pos::fiscal::protocol;

namespace {

bool allDigits(QByteArrayView v) {
    if (v.isEmpty())
        return false;
    for (char c : v) {
        if (c < '0' || c > '9')
            return false;
    }
    return true;
}

QString money(qint64 cents) {
    const QLocale es(QLocale::Spanish, QLocale::Venezuela);
    return es.toString(double(cents) / 100.0, 'f', 2);
}

QString rateLabel(int rate) {
    static const char* kLabels[] = {"(E)", "(G)", "(R)", "(A)"};
    return QString::fromLatin1(kLabels[rate]);
}

qint64 roundDiv(qint64 num, qint64 den) {
    // Half away from zero.
    const qint64 q = num / den;
    const qint64 r = num % den;
    if (2 * (r < 0 ? -r : r) >= den)
        return q + (num < 0 ? -1 : 1);
    return q;
}

} // namespace

EmulatedPrinter::EmulatedPrinter(FiscalMemory memory, QString statePath, TicketWriter tickets,
                                 FaultControl control)
    : m_memory(std::move(memory)), m_statePath(std::move(statePath)), m_tickets(std::move(tickets)),
      m_control(std::move(control)) {
    m_busyUntil = QDeadlineTimer(0);
}

void EmulatedPrinter::save() {
    if (m_statePath.isEmpty())
        return;
    QString error;
    if (!m_memory.save(m_statePath, &error))
        m_saveError = error;
}

QByteArray EmulatedPrinter::receive(QByteArrayView bytes) {
    m_control.poll(m_faults);
    QByteArray out = takeDue();
    if (m_faults.silent) {
        m_reader.reset();
        return out;
    }
    const bool busy = !m_busyUntil.hasExpired();
    m_reader.feed(bytes);
    while (m_reader.hasEvent()) {
        const WireEvent e = m_reader.take();
        if (busy) {
            // A busy printer loses what it is sent; some still answer the status probe.
            if (m_busyAnswersEnq && e.isControl(kEnq))
                out += frame(statusData({quint8(sts1() | kSts1BufferFull), sts2()}));
            continue;
        }
        if (e.isFrame())
            handleFrame(e, out);
        else
            handleControl(e.control, out);
    }
    if (busy)
        m_reader.reset();
    return out;
}

QByteArray EmulatedPrinter::takeDue() {
    if (m_delayed.isEmpty() || !m_delayedAt.hasExpired())
        return {};
    QByteArray out = std::exchange(m_delayed, {});
    if (m_faults.silent)
        return {};
    return out;
}

int EmulatedPrinter::msUntilDue() const {
    if (m_delayed.isEmpty())
        return -1;
    return int(qMax<qint64>(0, m_delayedAt.remainingTime()));
}

void EmulatedPrinter::startBusy(int ms, bool answersEnq) {
    if (m_busyUntil.hasExpired() || m_busyUntil.remainingTime() < ms)
        m_busyUntil = QDeadlineTimer(ms);
    m_busyAnswersEnq = answersEnq;
}

void EmulatedPrinter::handleControl(char c, QByteArray& out) {
    if (c == kEnq) {
        out += frame(statusData({sts1(), sts2()}));
        return;
    }
    if (m_uploadState == UploadState::None)
        return; // an ACK after a status read, or noise
    if (c != kAck) {
        m_uploadState = UploadState::None;
        m_uploadBlocks.clear();
        return;
    }
    if (m_uploadBlocks.isEmpty()) {
        out += kEot;
        m_uploadState = UploadState::None;
        return;
    }
    const QByteArray block = m_uploadBlocks.takeFirst();
    out += frame(block, m_uploadBlocks.isEmpty() ? kEtx : kEtb);
    m_uploadState = UploadState::WaitBlockAck;
}

void EmulatedPrinter::handleFrame(const WireEvent& e, QByteArray& out) {
    m_uploadState = UploadState::None;
    m_uploadBlocks.clear();
    if (!e.checkOk) {
        m_lastError = kSts2InvalidCommand;
        out += kNak;
        return;
    }
    if (m_faults.nakNext > 0) {
        --m_faults.nakNext;
        m_lastError = kSts2InvalidCommand;
        out += kNak;
        return;
    }
    const Outcome o = execute(e.data);
    if (!m_faults.silenceAfter.isEmpty() && e.data.startsWith(m_faults.silenceAfter)) {
        // The cable is pulled right after this command: done, never answered.
        m_faults.silenceAfter.clear();
        m_faults.silent = true;
        m_lastError = o.kind == Outcome::Nak ? o.error : kSts2NoError;
        return;
    }
    switch (o.kind) {
    case Outcome::Ack:
        m_lastError = kSts2NoError;
        if (m_faults.dropAckNext > 0) {
            --m_faults.dropAckNext;
        } else if (!m_faults.slowAckCommand.isEmpty() &&
                   e.data.startsWith(m_faults.slowAckCommand)) {
            m_delayed += kAck;
            m_delayedAt = QDeadlineTimer(m_faults.slowAckMs);
            startBusy(m_faults.slowAckMs, true);
        } else {
            out += kAck;
        }
        break;
    case Outcome::Nak:
        m_lastError = o.error;
        out += kNak;
        break;
    case Outcome::Reply:
        out += frame(o.data);
        break;
    case Outcome::Upload:
        m_uploadBlocks = o.blocks;
        m_uploadState = UploadState::WaitFirstAck;
        out += kEnq;
        break;
    }
}

quint8 EmulatedPrinter::sts1() const {
    quint8 b = kSts1Base | kSts1FiscalMode;
    if (m_faults.memoryFull)
        b |= kSts1MemoryFull;
    else if (m_faults.memoryNearlyFull)
        b |= kSts1MemoryNearlyFull;
    if (m_doc.kind == DocKind::Invoice || m_doc.kind == DocKind::CreditNote ||
        m_doc.kind == DocKind::Pending)
        b |= kSts1FiscalOpen;
    else if (m_doc.kind == DocKind::NonFiscal)
        b |= kSts1NonFiscalOpen;
    return b;
}

quint8 EmulatedPrinter::sts2() const {
    if (m_faults.paperOut && m_faults.coverOpen)
        return kSts2PaperOutAndMechanical;
    if (m_faults.paperOut)
        return kSts2PaperOut;
    if (m_faults.coverOpen)
        return kSts2Mechanical;
    return m_lastError;
}

std::optional<quint8> EmulatedPrinter::printingBlocked(bool isItem) {
    if (isItem && m_faults.paperOutArmed) {
        m_faults.paperOutArmed = false;
        m_faults.paperOut = true;
    }
    if (m_faults.paperOut || m_faults.coverOpen)
        return sts2();
    return std::nullopt;
}

EmulatedPrinter::Outcome EmulatedPrinter::execute(const QByteArray& cmd) {
    if (cmd.isEmpty())
        return nak(kSts2InvalidCommand);
    const char c0 = cmd[0];
    const quint8 u0 = quint8(c0);
    if (cmd.startsWith("S") && cmd.size() == 2)
        return status(cmd);
    if (cmd.startsWith("U"))
        return report(cmd);
    if (cmd.startsWith("I0") || cmd.startsWith("I2") || cmd.startsWith("I3"))
        return report(cmd);
    if (cmd.startsWith("P"))
        return program(cmd);
    if (cmd.startsWith("cU") || cmd.startsWith("cL")) {
        const QString text = QString::fromLatin1(cmd.mid(2));
        if (text.size() > 20)
            return nak(kSts2InvalidValue);
        (cmd[1] == 'U' ? m_displayUpper : m_displayLower) = text;
        m_tickets.writeDisplay(m_displayUpper, m_displayLower);
        return ack();
    }
    if (cmd == "0")
        return ack();
    if (cmd.startsWith("80") || cmd.startsWith("81"))
        return nonFiscal(cmd);
    if (c0 == 'i')
        return customerData(cmd);
    if (c0 == ' ' || c0 == '!' || c0 == '"' || c0 == '#')
        return item(cmd, c0 == ' ' ? 0 : c0 - '!' + 1, false, false);
    if (u0 >= 0xA0 && u0 <= 0xA3)
        return item(cmd, u0 == 0xA0 ? 0 : u0 - 0xA1 + 1, false, true);
    if (c0 == 'd' && cmd.size() > 1 && cmd[1] >= '0' && cmd[1] <= '3')
        return item(cmd.mid(1), cmd[1] - '0', true, false);
    if (c0 == 'p' || c0 == 'q' || c0 == 'k' || cmd == "3")
        return adjustment(cmd);
    if (c0 == '@' || c0 == 'A') {
        const DocKind wanted = c0 == '@' ? DocKind::Invoice : DocKind::CreditNote;
        if (m_doc.kind != wanted)
            return nak(kSts2FiscalError);
        if (auto b = printingBlocked(false))
            return nak(*b);
        Line l;
        l.text = QString::fromLatin1(cmd.mid(1)).left(40);
        m_doc.lines.append(l);
        return ack();
    }
    if (c0 == '1' || c0 == '2' || cmd == "7")
        return payment(cmd);
    return nak(kSts2InvalidCommand);
}

EmulatedPrinter::Outcome EmulatedPrinter::status(const QByteArray& cmd) {
    const QDateTime now = m_memory.now();
    if (cmd == "S1") {
        S1Status s;
        s.dailySubtotal = m_memory.invoiceTotals.total();
        s.lastInvoice = m_memory.lastInvoice;
        s.invoicesToday = m_memory.invoicesToday;
        s.lastDebitNote = m_memory.lastDebitNote;
        s.lastCreditNote = m_memory.lastCreditNote;
        s.creditNotesToday = m_memory.creditNotesToday;
        s.lastNonFiscal = m_memory.lastNonFiscal;
        s.nonFiscalToday = m_memory.nonFiscalToday;
        s.fiscalReportCounter = m_memory.fiscalReportCounter;
        s.zCounter = m_memory.zCounter;
        s.rif = m_memory.rif;
        s.serial = m_memory.serial;
        s.time = now.time();
        s.date = now.date();
        return reply(buildS1(s));
    }
    if (cmd == "S2") {
        S2Document s;
        if (m_doc.kind == DocKind::Invoice || m_doc.kind == DocKind::CreditNote) {
            std::array<qint64, 4> gross{};
            accumulate(gross);
            s.taxBases = gross[0];
            for (int i = 1; i <= 3; ++i) {
                const qint64 base =
                    roundDiv(gross[i] * 10000, 10000 + m_memory.rates[i - 1].hundredths);
                s.taxBases += base;
                s.taxes += gross[i] - base;
            }
            for (const Line& l : m_doc.lines) {
                if (l.item)
                    s.articles += int(l.quantity);
            }
            s.payable = due();
            s.payments = int(m_doc.payments.size());
            s.documentType = m_doc.kind == DocKind::Invoice ? 1 : 2;
        }
        return reply(buildS2(s));
    }
    if (cmd == "S3") {
        S3Settings s;
        s.rates = m_memory.rates;
        s.flags = m_memory.flags;
        return reply(buildS3(s));
    }
    if (cmd == "SV")
        return reply(buildSV({m_memory.model, m_memory.country}));
    return nak(kSts2InvalidCommand);
}

EmulatedPrinter::Outcome EmulatedPrinter::customerData(const QByteArray& cmd) {
    if (m_doc.kind == DocKind::NonFiscal)
        return nak(kSts2FiscalError);
    const bool hasItems =
        std::any_of(m_doc.lines.begin(), m_doc.lines.end(), [](const Line& l) { return l.item; });
    const QString text = QString::fromLatin1(cmd.mid(3)).left(40);
    if (cmd.size() >= 3 && allDigits(cmd.mid(1, 2))) {
        // Extra lines: in the header before the first item, at the foot after it.
        if (m_doc.kind == DocKind::None && m_faults.memoryFull)
            return nak(kSts2MemoryFull);
        if (m_doc.kind == DocKind::None)
            m_doc.kind = DocKind::Pending;
        m_doc.extraLines.append(QString::fromLatin1(cmd.mid(3)).left(40));
        return ack();
    }
    if (cmd.size() < 3 || cmd[2] != '*')
        return nak(kSts2InvalidCommand);
    if (m_doc.kind == DocKind::None && m_faults.memoryFull)
        return nak(kSts2MemoryFull);
    if (hasItems)
        return nak(kSts2FiscalError); // customer data goes before the first item
    if (m_doc.kind == DocKind::None)
        m_doc.kind = DocKind::Pending;
    switch (cmd[1]) {
    case 'R':
        m_doc.rif = text;
        break;
    case 'S':
        m_doc.name = text;
        break;
    case 'F':
        m_doc.refInvoice = text;
        break;
    case 'D':
        m_doc.refDate = text;
        break;
    case 'I':
        m_doc.refSerial = text;
        break;
    default:
        return nak(kSts2InvalidCommand);
    }
    return ack();
}

EmulatedPrinter::Outcome EmulatedPrinter::item(const QByteArray& cmd, int rate, bool creditNote,
                                               bool voidIt) {
    if (m_doc.kind == DocKind::NonFiscal)
        return nak(kSts2FiscalError);
    if (!m_doc.payments.isEmpty())
        return nak(kSts2FiscalError);
    const DocKind kind = creditNote ? DocKind::CreditNote : DocKind::Invoice;
    if (m_doc.kind != DocKind::None && m_doc.kind != DocKind::Pending && m_doc.kind != kind)
        return nak(kSts2FiscalError);
    if (cmd.size() < 1 + 10 + 8 || !allDigits(cmd.mid(1, 10)) || !allDigits(cmd.mid(11, 8)))
        return nak(kSts2InvalidValue);
    const qint64 price = cmd.mid(1, 10).toLongLong();
    const qint64 quantity = cmd.mid(11, 8).toLongLong();
    if (quantity == 0)
        return nak(kSts2InvalidValue);
    if (rate > 0 && m_memory.rates[rate - 1].hundredths == 0)
        return nak(kSts2InvalidRate);
    if (creditNote &&
        (m_doc.refInvoice.isEmpty() || m_doc.refDate.isEmpty() || m_doc.refSerial.isEmpty()))
        return nak(kSts2FiscalError);
    if ((m_doc.kind == DocKind::None || m_doc.kind == DocKind::Pending) && m_faults.memoryFull)
        return nak(kSts2MemoryFull);
    if (auto b = printingBlocked(true))
        return nak(*b);
    const QString name = QString::fromLatin1(cmd.mid(19)).trimmed();
    const qint64 amount = roundDiv(price * quantity, 1000);
    if (voidIt) {
        for (qsizetype i = m_doc.lines.size() - 1; i >= 0; --i) {
            const Line& l = m_doc.lines[i];
            if (l.item && l.rate == rate && l.price == price && l.quantity == quantity &&
                l.amount > 0) {
                Line v = l;
                v.amount = -amount;
                v.quantity = -quantity;
                v.text = QStringLiteral("ANULACION ") + name;
                m_doc.lines.append(v);
                m_doc.lastWasSubtotal = false;
                return ack();
            }
        }
        return nak(kSts2InvalidValue);
    }
    m_doc.kind = kind;
    Line l;
    l.item = true;
    l.rate = rate;
    l.price = price;
    l.quantity = quantity;
    l.amount = amount;
    l.text = name;
    m_doc.lines.append(l);
    m_doc.lastWasSubtotal = false;
    return ack();
}

EmulatedPrinter::Outcome EmulatedPrinter::adjustment(const QByteArray& cmd) {
    if (m_doc.kind != DocKind::Invoice && m_doc.kind != DocKind::CreditNote)
        return nak(kSts2FiscalError);
    if (!m_doc.payments.isEmpty())
        return nak(kSts2FiscalError);
    if (auto b = printingBlocked(false))
        return nak(*b);
    if (cmd == "3") {
        m_doc.lastWasSubtotal = true;
        return ack();
    }
    if (cmd == "k") {
        for (qsizetype i = m_doc.lines.size() - 1; i >= 0; --i) {
            if (m_doc.lines[i].amount != 0 || m_doc.lines[i].item) {
                m_doc.lines.removeAt(i);
                m_doc.lastWasSubtotal = false;
                return ack();
            }
        }
        return nak(kSts2FiscalError);
    }
    if (cmd.size() < 2 || (cmd[1] != '-' && cmd[1] != '+'))
        return nak(kSts2InvalidCommand);
    const bool percent = cmd[0] == 'p';
    const QByteArray digits = cmd.mid(2);
    if (digits.size() != (percent ? 4 : 9) || !allDigits(digits))
        return nak(kSts2InvalidValue);
    const qint64 value = digits.toLongLong();
    const int sign = cmd[1] == '-' ? -1 : 1;
    if (m_doc.lastWasSubtotal) {
        // On the subtotal: one adjustment per rate, in proportion.
        std::array<qint64, 4> gross{};
        accumulate(gross);
        const qint64 total = gross[0] + gross[1] + gross[2] + gross[3];
        if (total <= 0)
            return nak(kSts2InvalidValue);
        qint64 wanted = percent ? roundDiv(total * value, 10000) : value;
        if (wanted > total && sign < 0)
            return nak(kSts2InvalidValue);
        qint64 left = wanted;
        int lastRate = -1;
        for (int r = 0; r < 4; ++r) {
            if (gross[r] != 0)
                lastRate = r;
        }
        for (int r = 0; r < 4; ++r) {
            if (gross[r] == 0)
                continue;
            const qint64 part = r == lastRate ? left : roundDiv(wanted * gross[r], total);
            left -= part;
            Line l;
            l.rate = r;
            l.amount = sign * part;
            l.text = sign < 0 ? QStringLiteral("DESCUENTO SUBTOTAL")
                              : QStringLiteral("RECARGO SUBTOTAL");
            m_doc.lines.append(l);
        }
        m_doc.lastWasSubtotal = false;
        return ack();
    }
    const Line* last = nullptr;
    for (qsizetype i = m_doc.lines.size() - 1; i >= 0 && !last; --i) {
        if (m_doc.lines[i].item)
            last = &m_doc.lines[i];
    }
    if (!last)
        return nak(kSts2FiscalError);
    const qint64 part = percent ? roundDiv(last->amount * value, 10000) : value;
    if (sign < 0 && part > last->amount)
        return nak(kSts2InvalidValue);
    Line l;
    l.rate = last->rate;
    l.amount = sign * part;
    l.text = percent ? QStringLiteral("%1 %2%").arg(sign < 0 ? "DESCUENTO" : "RECARGO",
                                                    QString::number(double(value) / 100, 'f', 2))
                     : QString::fromLatin1(sign < 0 ? "DESCUENTO" : "RECARGO");
    m_doc.lines.append(l);
    return ack();
}

EmulatedPrinter::Outcome EmulatedPrinter::payment(const QByteArray& cmd) {
    if (cmd == "7") {
        if (m_doc.kind == DocKind::None)
            return ack();
        if (!m_doc.payments.isEmpty())
            return nak(kSts2FiscalError);
        m_doc = Document();
        return ack();
    }
    if (m_doc.kind != DocKind::Invoice && m_doc.kind != DocKind::CreditNote)
        return nak(kSts2FiscalError);
    if (auto b = printingBlocked(false))
        return nak(*b);
    const bool igtfMode = m_memory.igtfEnabled();
    if (cmd == "199") {
        // Closes a document whose payments cover it, tax on foreign currency included.
        if (due() > 0)
            return nak(kSts2FiscalError);
        closeDocument();
        return ack();
    }
    if (cmd.size() < 3 || !allDigits(cmd.mid(1, 2)))
        return nak(kSts2InvalidValue);
    const int means = cmd.mid(1, 2).toInt();
    if (means < 1 || means > 24)
        return nak(kSts2InvalidValue);
    if (isForeign(means) && m_memory.igtfRate == 0)
        return nak(kSts2InvalidRate);
    if (igtfMode && !m_doc.payments.isEmpty() && due() <= 0)
        return nak(kSts2FiscalError); // paid: only the closing is left
    if (cmd[0] == '1') {
        if (cmd.size() != 3)
            return nak(kSts2InvalidValue);
        const qint64 owed = due();
        m_doc.payments.append({means, owed > 0 ? owed : 0});
        // The rest paid in foreign currency bears the tax too: the payment grows with it.
        for (int i = 0; i < 4 && due() > 0; ++i)
            m_doc.payments.last().amount += due();
        if (!igtfMode)
            closeDocument();
        return ack();
    }
    if (cmd.size() != 3 + 12 || !allDigits(cmd.mid(3)))
        return nak(kSts2InvalidValue);
    const qint64 amount = cmd.mid(3).toLongLong();
    if (amount == 0)
        return nak(kSts2InvalidValue);
    m_doc.payments.append({means, amount});
    // With IGTF the document stays open for "199".
    if (!igtfMode && documentPaid() >= documentTotal())
        closeDocument();
    return ack();
}

EmulatedPrinter::Outcome EmulatedPrinter::nonFiscal(const QByteArray& cmd) {
    if (m_doc.kind != DocKind::None && m_doc.kind != DocKind::NonFiscal)
        return nak(kSts2FiscalError);
    if (cmd.size() < 3)
        return nak(kSts2InvalidCommand);
    if (auto b = printingBlocked(false))
        return nak(*b);
    const QString text = QString::fromLatin1(cmd.mid(3)).left(40);
    m_doc.kind = DocKind::NonFiscal;
    if (cmd.startsWith("80")) {
        const char effect = cmd[2];
        if (effect != '0' && effect != '*' && effect != '!' && effect != '>')
            return nak(kSts2InvalidValue);
        m_doc.nonFiscalLines.append(effect == '!' ? text.rightJustified(20 + text.size() / 2)
                                                  : text);
        return ack();
    }
    if (!cmd.startsWith("810"))
        return nak(kSts2InvalidCommand);
    m_doc.nonFiscalLines.append(text);
    const int number = ++m_memory.lastNonFiscal;
    ++m_memory.nonFiscalToday;
    QStringList t;
    for (int n = 1; n <= 8; ++n) {
        if (!m_memory.lines.value(n).isEmpty())
            t << m_memory.lines.value(n);
    }
    t << QStringLiteral("RIF: ") + m_memory.rif << QStringLiteral("NO FISCAL")
      << QStringLiteral("NUMERO: %1").arg(number, 8, 10, QLatin1Char('0'))
      << m_memory.now().toString(QStringLiteral("dd-MM-yyyy HH:mm"));
    t << m_doc.nonFiscalLines;
    t << QStringLiteral("NO FISCAL") << QStringLiteral("MH ") + m_memory.serial;
    m_tickets.write(QStringLiteral("NOFISCAL"), number, t);
    m_doc = Document();
    save();
    return ack();
}

EmulatedPrinter::Outcome EmulatedPrinter::program(const QByteArray& cmd) {
    if (m_doc.kind != DocKind::None)
        return nak(kSts2FiscalError);
    const QByteArray op = cmd.left(2);
    const QByteArray args = cmd.mid(2);
    if (op == "PJ") {
        if (args.size() != 4 || !allDigits(args) || args.left(2).toInt() > 63)
            return nak(kSts2InvalidValue);
        m_memory.flags[args.left(2).toInt()] = args.mid(2).toInt();
        save();
        return ack();
    }
    if (op == "PE") {
        if (args.size() < 2 || !allDigits(args.left(2)))
            return nak(kSts2InvalidValue);
        const int means = args.left(2).toInt();
        if (means < 1 || means > 24 || args.size() - 2 > 14)
            return nak(kSts2InvalidValue);
        m_memory.paymentNames.insert(means, QString::fromLatin1(args.mid(2)));
        save();
        return ack();
    }
    // The rest changes what the fiscal memory records: only right after a Z.
    if (op != "PH" && op != "PT" && op != "Pt" && op != "PF" && op != "PG")
        return nak(kSts2InvalidCommand);
    if (!m_memory.zJustMade)
        return nak(kSts2FiscalError);
    if (op == "PH") {
        if (args.size() < 2 || !allDigits(args.left(2)))
            return nak(kSts2InvalidValue);
        const int n = args.left(2).toInt();
        if (!((n >= 1 && n <= 8) || (n >= 91 && n <= 98)))
            return nak(kSts2InvalidValue);
        m_memory.lines.insert(n, QString::fromLatin1(args.mid(2)).left(40));
        save();
        return ack();
    }
    if (op == "PT") {
        if (args.isEmpty() || args.size() % 5 != 0 || args.size() > 4 * 5 || !allDigits(args))
            return nak(kSts2InvalidValue);
        m_stagedRates = m_memory.rates;
        m_stagedIgtfRate = m_memory.igtfRate;
        for (int i = 0; i < args.size() / 5; ++i) {
            const int type = args.mid(i * 5, 1).toInt();
            if (type != 1 && type != 2)
                return nak(kSts2InvalidRate);
            const int rate = args.mid(i * 5 + 1, 4).toInt();
            // The fourth group is the IGTF rate.
            if (i < 3)
                m_stagedRates[i] = {type, rate};
            else
                m_stagedIgtfRate = rate;
        }
        m_ratesStaged = true;
        return ack();
    }
    if (op == "Pt") {
        if (!m_ratesStaged)
            return nak(kSts2FiscalError);
        m_memory.rates = m_stagedRates;
        m_memory.igtfRate = m_stagedIgtfRate;
        m_ratesStaged = false;
        save();
        return ack();
    }
    const QDateTime now = m_memory.now();
    if (args.size() != 6 || !allDigits(args))
        return nak(kSts2InvalidValue);
    QDateTime wanted = now;
    if (op == "PF") {
        const QTime t = QTime::fromString(QString::fromLatin1(args), QStringLiteral("HHmmss"));
        if (!t.isValid())
            return nak(kSts2InvalidValue);
        wanted.setTime(t);
    } else {
        const QDate d = parseDdMmYy(QString::fromLatin1(args));
        if (!d.isValid())
            return nak(kSts2InvalidValue);
        wanted.setDate(d);
    }
    m_memory.clockOffsetSecs += now.secsTo(wanted);
    save();
    return ack();
}

QList<ZReport> EmulatedPrinter::zRange(const QByteArray& args, bool byDate, bool* ok) {
    QList<ZReport> out;
    *ok = args.size() == 12 && allDigits(args);
    if (!*ok)
        return out;
    if (byDate) {
        const QDate from = parseDdMmYy(QString::fromLatin1(args.left(6)));
        const QDate to = parseDdMmYy(QString::fromLatin1(args.mid(6)));
        *ok = from.isValid() && to.isValid() && from <= to;
        for (const ZReport& z : m_memory.zHistory) {
            if (*ok && z.zDate >= from && z.zDate <= to)
                out.append(z);
        }
    } else {
        const int from = args.left(6).toInt();
        const int to = args.mid(6).toInt();
        *ok = from <= to;
        for (const ZReport& z : m_memory.zHistory) {
            if (*ok && z.zNumber >= from && z.zNumber <= to)
                out.append(z);
        }
    }
    return out;
}

EmulatedPrinter::Outcome EmulatedPrinter::report(const QByteArray& cmd) {
    if (cmd == "U0X")
        return upload({buildReport(m_memory.openDay())});
    if (cmd == "U0Z") {
        ZReport last;
        if (!m_memory.zHistory.isEmpty())
            last = m_memory.zHistory.last();
        return upload({buildReport(last)});
    }
    if (cmd.startsWith("U2A") || cmd.startsWith("U3A")) {
        bool ok = false;
        const QList<ZReport> range = zRange(cmd.mid(3), cmd[1] == '2', &ok);
        if (!ok)
            return nak(kSts2InvalidValue);
        QList<QByteArray> blocks;
        for (const ZReport& z : range)
            blocks.append(buildReport(z));
        return upload(blocks);
    }
    if (cmd.startsWith("U"))
        return nak(kSts2InvalidCommand);
    // Printed reports.
    if (m_doc.kind != DocKind::None)
        return nak(kSts2FiscalError);
    if (auto b = printingBlocked(false))
        return nak(*b);
    if (cmd == "I0X") {
        const int n = ++m_memory.xCounter;
        writeReportTicket(QStringLiteral("REPORTEX"), n, QStringLiteral("REPORTE X"),
                          m_memory.openDay());
        save();
        return ack();
    }
    if (cmd == "I0Z") {
        if (m_faults.memoryFull)
            return nak(kSts2MemoryFull);
        const QDateTime now = m_memory.now();
        ZReport z = m_memory.openDay();
        z.zNumber = ++m_memory.zCounter;
        z.zDate = now.date();
        z.zTime = QTime(now.time().hour(), now.time().minute());
        m_memory.zHistory.append(z);
        m_memory.invoiceTotals = {};
        m_memory.creditNoteTotals = {};
        m_memory.invoiceIgtf = m_memory.creditNoteIgtf = {};
        m_memory.invoicesToday = m_memory.creditNotesToday = m_memory.nonFiscalToday = 0;
        m_memory.zJustMade = true;
        writeReportTicket(QStringLiteral("REPORTEZ"), z.zNumber, QStringLiteral("REPORTE Z"), z);
        save();
        startBusy(m_faults.zBusyMs, m_faults.zBusyAnswersEnq);
        return ack();
    }
    if (cmd.startsWith("I2") || cmd.startsWith("I3")) {
        const char mode = cmd.size() > 2 ? cmd[2] : 0;
        if (mode != 'A' && mode != 'S')
            return nak(kSts2InvalidCommand);
        bool ok = false;
        const QList<ZReport> range = zRange(cmd.mid(3), cmd[1] == '2', &ok);
        if (!ok)
            return nak(kSts2InvalidValue);
        const int n = ++m_memory.fiscalReportCounter;
        QStringList t;
        t << QStringLiteral("REPORTE DE MEMORIA FISCAL")
          << (mode == 'A' ? QStringLiteral("DETALLADO") : QStringLiteral("RESUMIDO"));
        qint64 sum = 0;
        for (const ZReport& z : range) {
            t << QStringLiteral("Z %1  %2  FACT %3  TOTAL %4")
                     .arg(z.zNumber, 4, 10, QLatin1Char('0'))
                     .arg(z.zDate.toString(QStringLiteral("dd-MM-yyyy")))
                     .arg(z.lastInvoice, 8, 10, QLatin1Char('0'))
                     .arg(money(z.invoices.total()));
            sum += z.invoices.total() - z.creditNotes.total();
        }
        t << QStringLiteral("TOTAL %1").arg(money(sum)) << QStringLiteral("MH ") + m_memory.serial;
        m_tickets.write(QStringLiteral("REPORTEMF"), n, t);
        save();
        return ack();
    }
    return nak(kSts2InvalidCommand);
}

void EmulatedPrinter::accumulate(std::array<qint64, 4>& gross) const {
    for (const Line& l : m_doc.lines)
        gross[l.rate] += l.amount;
}

qint64 EmulatedPrinter::documentTotal() const {
    qint64 sum = 0;
    for (const Line& l : m_doc.lines)
        sum += l.amount;
    return sum;
}

qint64 EmulatedPrinter::documentPaid() const {
    qint64 sum = 0;
    for (const Payment& p : m_doc.payments)
        sum += p.amount;
    return sum;
}

bool EmulatedPrinter::isForeign(int means) const {
    return m_memory.igtfEnabled() && means >= kFirstForeignMeans && means <= kLastForeignMeans;
}

qint64 EmulatedPrinter::igtfBase() const {
    qint64 foreign = 0;
    for (const Payment& p : m_doc.payments) {
        if (isForeign(p.means))
            foreign += p.amount;
    }
    return qMin(foreign, qMax<qint64>(documentTotal(), 0));
}

qint64 EmulatedPrinter::igtf() const {
    return roundDiv(igtfBase() * m_memory.igtfRate, 10000);
}

qint64 EmulatedPrinter::due() const {
    return documentTotal() + igtf() - documentPaid();
}

void EmulatedPrinter::closeDocument() {
    const bool invoice = m_doc.kind == DocKind::Invoice;
    std::array<qint64, 4> gross{};
    accumulate(gross);
    DocumentTotals& day = invoice ? m_memory.invoiceTotals : m_memory.creditNoteTotals;
    DocumentTotals doc;
    doc.exempt = gross[0];
    for (int i = 0; i < 3; ++i) {
        const qint64 base = roundDiv(gross[i + 1] * 10000, 10000 + m_memory.rates[i].hundredths);
        doc.base[i] = base;
        doc.tax[i] = gross[i + 1] - base;
    }
    day.exempt += doc.exempt;
    for (int i = 0; i < 3; ++i) {
        day.base[i] += doc.base[i];
        day.tax[i] += doc.tax[i];
    }
    const qint64 taxBase = igtfBase();
    const qint64 tax = igtf();
    if (m_memory.igtfEnabled()) {
        wire::IgtfTotals& t = invoice ? m_memory.invoiceIgtf : m_memory.creditNoteIgtf;
        t.base += taxBase;
        t.igtf += tax;
    }
    const QDateTime now = m_memory.now();
    int number = 0;
    if (invoice) {
        number = ++m_memory.lastInvoice;
        ++m_memory.invoicesToday;
        m_memory.lastInvoiceAt = now;
    } else {
        number = ++m_memory.lastCreditNote;
        ++m_memory.creditNotesToday;
    }
    m_memory.zJustMade = false;

    QStringList t;
    for (int n = 1; n <= 8; ++n) {
        if (!m_memory.lines.value(n).isEmpty())
            t << m_memory.lines.value(n);
    }
    t << QStringLiteral("RIF: ") + m_memory.rif;
    t << (invoice ? QStringLiteral("FACTURA") : QStringLiteral("NOTA DE CREDITO"));
    t << QStringLiteral("%1: %2")
             .arg(invoice ? QStringLiteral("FACTURA") : QStringLiteral("NOTA DE CREDITO"))
             .arg(number, 8, 10, QLatin1Char('0'));
    t << QStringLiteral("FECHA: %1  HORA: %2")
             .arg(now.toString(QStringLiteral("dd-MM-yyyy")),
                  now.toString(QStringLiteral("HH:mm")));
    if (!invoice) {
        t << QStringLiteral("FACTURA AFECTADA: ") + m_doc.refInvoice
          << QStringLiteral("FECHA FACTURA: ") + m_doc.refDate
          << QStringLiteral("SERIAL IMPRESORA: ") + m_doc.refSerial;
    }
    if (!m_doc.rif.isEmpty())
        t << QStringLiteral("RIF/C.I.: ") + m_doc.rif;
    if (!m_doc.name.isEmpty())
        t << QStringLiteral("RAZON SOCIAL: ") + m_doc.name;
    t << m_doc.extraLines;
    for (const Line& l : m_doc.lines) {
        if (l.item) {
            t << QStringLiteral("%1 x %2").arg(QString::number(double(l.quantity) / 1000, 'f', 3),
                                               money(l.price));
        }
        if (l.item || l.amount != 0)
            t << QStringLiteral("%1 %2 %3")
                     .arg(l.text.leftJustified(40), rateLabel(l.rate), money(l.amount));
        else
            t << l.text;
    }
    t << QStringLiteral("SUBTTL %1").arg(money(documentTotal()));
    if (doc.exempt != 0)
        t << QStringLiteral("EXENTO (E) %1").arg(money(doc.exempt));
    for (int i = 0; i < 3; ++i) {
        if (gross[i + 1] == 0)
            continue;
        const QString pct = QString::number(m_memory.rates[i].hundredths / 100.0, 'f', 2);
        t << QStringLiteral("BI %1 %2% %3").arg(rateLabel(i + 1), pct, money(doc.base[i]))
          << QStringLiteral("IVA %1 %2% %3").arg(rateLabel(i + 1), pct, money(doc.tax[i]));
    }
    t << QStringLiteral("TOTAL %1").arg(money(documentTotal()));
    if (taxBase > 0) {
        const QString pct = money(m_memory.igtfRate);
        t << QStringLiteral("BI IGTF (%1%) %2").arg(pct, money(taxBase))
          << QStringLiteral("IGTF (%1%) %2").arg(pct, money(tax))
          << QStringLiteral("TOTAL A PAGAR %1").arg(money(documentTotal() + tax));
    }
    for (const Payment& p : m_doc.payments) {
        const QString name = m_memory.paymentNames.value(
            p.means, QStringLiteral("MEDIO %1").arg(p.means, 2, 10, QLatin1Char('0')));
        t << QStringLiteral("%1 %2").arg(name, money(p.amount));
    }
    const qint64 change = documentPaid() - documentTotal() - tax;
    if (change > 0)
        t << QStringLiteral("CAMBIO %1").arg(money(change));
    for (int n = 91; n <= 98; ++n) {
        if (!m_memory.lines.value(n).isEmpty())
            t << m_memory.lines.value(n);
    }
    t << QStringLiteral("MH ") + m_memory.serial;
    m_tickets.write(invoice ? QStringLiteral("FACTURA") : QStringLiteral("NOTACREDITO"), number, t);
    m_doc = Document();
    save();
}

void EmulatedPrinter::writeReportTicket(const QString& type, int number, const QString& title,
                                        const ZReport& r) {
    QStringList t;
    for (int n = 1; n <= 8; ++n) {
        if (!m_memory.lines.value(n).isEmpty())
            t << m_memory.lines.value(n);
    }
    t << QStringLiteral("RIF: ") + m_memory.rif << title
      << QStringLiteral("NUMERO: %1").arg(number, 4, 10, QLatin1Char('0'))
      << m_memory.now().toString(QStringLiteral("dd-MM-yyyy HH:mm"))
      << QStringLiteral("ULTIMA FACTURA %1").arg(r.lastInvoice, 8, 10, QLatin1Char('0'))
      << QStringLiteral("ULTIMA NOTA DE CREDITO %1").arg(r.lastCreditNote, 8, 10, QLatin1Char('0'))
      << QStringLiteral("EXENTO %1").arg(money(r.invoices.exempt));
    for (int i = 0; i < 3; ++i) {
        t << QStringLiteral("BI TASA %1 %2").arg(i + 1).arg(money(r.invoices.base[i]))
          << QStringLiteral("IVA TASA %1 %2").arg(i + 1).arg(money(r.invoices.tax[i]));
    }
    t << QStringLiteral("TOTAL FACTURAS %1").arg(money(r.invoices.total()))
      << QStringLiteral("TOTAL NOTAS DE CREDITO %1").arg(money(r.creditNotes.total()));
    if (r.withIgtf) {
        t << QStringLiteral("BI IGTF FACTURAS %1").arg(money(r.invoiceIgtf.base))
          << QStringLiteral("IGTF FACTURAS %1").arg(money(r.invoiceIgtf.igtf))
          << QStringLiteral("BI IGTF NOTAS DE CREDITO %1").arg(money(r.creditNoteIgtf.base))
          << QStringLiteral("IGTF NOTAS DE CREDITO %1").arg(money(r.creditNoteIgtf.igtf));
    }
    t << QStringLiteral("MH ") + m_memory.serial;
    m_tickets.write(type, number, t);
}

} // namespace orvo::tools::fiscal
