#include "pos/fiscal/fiscal_printer.h"

#include "pos/fiscal/protocol/status.h"

#include <QDeadlineTimer>
#include <QThread>

namespace orvo::pos::fiscal {

using namespace protocol;

namespace {
QByteArray ddmmyy(const QDate& d) {
    return dateDdMmYy(d).toLatin1();
}
QByteArray six(int n) {
    return QByteArray::number(n).rightJustified(6, '0', true);
}
} // namespace

bool FiscalPrinter::lastCallUnclear() const {
    return m_failed && m_message.isEmpty() &&
           (m_error == kErrorNoAnswer || m_error == kErrorCheckByte || m_error == kErrorBufferFull);
}

bool FiscalPrinter::busy() const {
    return !m_failed && m_error == kErrorBufferFull;
}

QString FiscalPrinter::errorText() const {
    if (!m_failed)
        return {};
    if (!m_message.isEmpty())
        return m_message;
    switch (m_error) {
    case 1:
        return QStringLiteral("La impresora fiscal no tiene papel.");
    case 2:
        return QStringLiteral("La impresora fiscal tiene un error mecánico o la tapa abierta.");
    case 3:
        return QStringLiteral("La impresora fiscal no tiene papel y tiene un error mecánico.");
    case 80:
        return QStringLiteral("La impresora fiscal rechazó un valor inválido.");
    case 84:
        return QStringLiteral("La impresora fiscal rechazó una tasa de impuesto inválida.");
    case 88:
        return QStringLiteral("La impresora fiscal no tiene directivas asignadas.");
    case 92:
        return QStringLiteral("La impresora fiscal rechazó un comando inválido.");
    case 96:
        return QStringLiteral("La impresora fiscal no acepta el comando en su estado actual.");
    case 100:
        return QStringLiteral("Error en la memoria fiscal de la impresora.");
    case 108:
        return QStringLiteral("La memoria fiscal de la impresora está llena.");
    case 112:
        return QStringLiteral("El buffer de la impresora fiscal está lleno.");
    case kErrorPort:
        return QStringLiteral("El puerto NO responde. Verifique que algún otro programa no lo "
                              "este utilizando.");
    case kErrorNoAnswer:
        return QStringLiteral("La impresora fiscal no responde.");
    case kErrorCheckByte:
        return QStringLiteral("Error de comunicación con la impresora fiscal.");
    default:
        return QStringLiteral("Error %1 de la impresora fiscal.").arg(m_error);
    }
}

// A status read parsed by `parse`; a reply that does not parse is an internal error.
template <class Parse>
auto FiscalPrinter::readParsed(const QByteArray& command, Parse parse)
    -> decltype(parse(QByteArray())) {
    const auto data = readStatusData(command);
    if (!data)
        return std::nullopt;
    auto parsed = parse(*data);
    if (!parsed)
        setFailed(kErrorInternal);
    return parsed;
}

// The one report block of a U0X or U0Z upload.
std::optional<ZReport> FiscalPrinter::uploadReport(const QByteArray& command) {
    const auto blocks = upload(command);
    if (!blocks)
        return std::nullopt;
    auto r = blocks->isEmpty() ? std::nullopt : parseReport(blocks->first());
    if (!r)
        setFailed(kErrorInternal);
    return r;
}

std::optional<S1Status> FiscalPrinter::readS1() {
    return readParsed("S1", parseS1);
}

std::optional<S2Document> FiscalPrinter::readS2() {
    return readParsed("S2", parseS2);
}

std::optional<S3Settings> FiscalPrinter::readS3() {
    return readParsed("S3", parseS3);
}

std::optional<ZReport> FiscalPrinter::openDay() {
    return uploadReport("U0X");
}

std::optional<DocumentNumbers> FiscalPrinter::lastDocumentNumbers() {
    const auto day = openDay();
    if (!day)
        return std::nullopt;
    return DocumentNumbers{day->lastInvoice, day->lastCreditNote};
}

std::optional<ZReport> FiscalPrinter::lastZ() {
    return uploadReport("U0Z");
}

std::optional<int> FiscalPrinter::lastZNumber() {
    const auto z = lastZ();
    if (!z)
        return std::nullopt;
    return z->zNumber;
}

namespace {
std::optional<QList<ZReport>> parseAll(const QList<QByteArray>& blocks, bool* ok) {
    QList<ZReport> out;
    for (const QByteArray& b : blocks) {
        auto z = parseReport(b);
        if (!z) {
            *ok = false;
            return std::nullopt;
        }
        out.append(*z);
    }
    *ok = true;
    return out;
}
} // namespace

std::optional<QList<ZReport>> FiscalPrinter::zReportsByNumber(int from, int to) {
    const auto blocks = upload("U3A" + six(from) + six(to));
    if (!blocks)
        return std::nullopt;
    bool ok = false;
    auto r = parseAll(*blocks, &ok);
    if (!ok)
        setFailed(kErrorInternal);
    return r;
}

std::optional<QList<ZReport>> FiscalPrinter::zReportsByDate(const QDate& from, const QDate& to) {
    const auto blocks = upload("U2A" + ddmmyy(from) + ddmmyy(to));
    if (!blocks)
        return std::nullopt;
    bool ok = false;
    auto r = parseAll(*blocks, &ok);
    if (!ok)
        setFailed(kErrorInternal);
    return r;
}

bool FiscalPrinter::printXReport() {
    return sendCommand("I0X");
}

bool FiscalPrinter::printZReport() {
    const auto before = readS1();
    if (sendCommand("I0Z"))
        return true;
    if (!before || !lastCallUnclear())
        return false;
    // The ACK was lost: once the printer is ready again its Z counter tells whether it made it.
    const Outcome lost = outcome();
    if (waitUntilReady(ackWaitMs("I0Z"), busyPollMs())) {
        const auto after = readS1();
        if (after && after->zCounter == before->zCounter + 1) {
            setOutcome(status(), 0, false);
            return true;
        }
    }
    return restore(lost);
}

bool FiscalPrinter::printFiscalMemoryByDate(const QDate& from, const QDate& to, bool detailed) {
    return sendCommand(QByteArray(detailed ? "I2A" : "I2S") + ddmmyy(from) + ddmmyy(to));
}

bool FiscalPrinter::printFiscalMemoryByNumber(int from, int to, bool detailed) {
    return sendCommand(QByteArray(detailed ? "I3A" : "I3S") + six(from) + six(to));
}

bool FiscalPrinter::waitUntilReady(int timeoutMs, int pollMs) {
    QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        if (probe() && isIdle(status()) && !busy())
            return true;
        if (deadline.hasExpired()) {
            if (!lastCallFailed())
                setFailed(busy() ? kErrorBufferFull : kErrorNoAnswer);
            return false;
        }
        QThread::msleep(quint64(qMin<qint64>(pollMs, qMax<qint64>(1, deadline.remainingTime()))));
    }
}

bool FiscalPrinter::waitWhileBusy(int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        if (!probe())
            return false;
        if (!busy())
            return true;
        if (deadline.hasExpired()) {
            setFailed(kErrorBufferFull);
            return false;
        }
        QThread::msleep(
            quint64(qMin<qint64>(busyPollMs(), qMax<qint64>(1, deadline.remainingTime()))));
    }
}

namespace {
int documentCounter(const S1Status& s, DocumentType type) {
    return type == DocumentType::CreditNote ? s.lastCreditNote : s.lastInvoice;
}
int s2Type(DocumentType type) {
    return type == DocumentType::CreditNote ? 2 : 1;
}
} // namespace

bool FiscalPrinter::printDocument(const FiscalDocument& document) {
    m_alreadyPrinted = false;
    const bool creditNote = document.type == DocumentType::CreditNote;
    // A printer busy after a Z is waited for as long as a Z may take.
    if (!waitWhileBusy(ackWaitMs("I0Z")))
        return false;
    const bool nonFiscalOpen = isNonFiscalDocumentOpen(status());
    const auto s1 = readS1();
    if (!s1)
        return false;
    const int before = documentCounter(*s1, document.type);
    if (document.number > 0 && before >= document.number) {
        // An earlier attempt printed it and its answer was lost: never a second time.
        m_alreadyPrinted = true;
        setOutcome(status(), 0, false);
        return true;
    }
    if (document.number > 0 && before != document.number - 1) {
        setFailed(creditNote ? QStringLiteral("El numero de devolución no concuerda con el numero "
                                              "de devolución de la impresora...!")
                             : QStringLiteral("El numero de factura no concuerda con el numero de "
                                              "factura de la impresora...!"));
        return false;
    }
    const auto open = readS2();
    if (!open)
        return false;
    if (open->documentType != 0) {
        const bool ours = open->documentType == s2Type(document.type);
        if (open->payments > 0) {
            // Left open by an earlier attempt once paid: the printer will not cancel it, so it
            // is completed. When it is this document, it is now printed.
            if (!completeOpenDocument(ours ? &document : nullptr, ours ? document.restMeans() : 1))
                return false;
            if (ours)
                return settleDocument(document, before);
        } else if (!sendCommand("7")) {
            return false;
        }
    } else if (nonFiscalOpen && !sendCommand("810")) {
        return false;
    }

    if (!sendCommands(documentCommands(document)) && !lastCallUnclear()) {
        // Refused: cancelled while the printer still allows it (before any payment).
        const Outcome refused = outcome();
        if (sendCommand("7"))
            return restore(refused);
    }
    return settleDocument(document, before);
}

bool FiscalPrinter::settleDocument(const FiscalDocument& document, int before) {
    const Outcome sent = outcome();
    if (!waitWhileBusy(ackWaitMs("I0Z")))
        return false;
    const auto open = readS2();
    if (!open)
        return false;
    if (open->documentType != 0) {
        if (sent.failed && open->payments == 0) {
            // Stopped among its items: cancelled, and printed whole the next time.
            sendCommand("7");
            return restore(sent);
        }
        if (!completeOpenDocument(&document, document.restMeans()))
            return false;
    }
    const auto s1 = readS1();
    if (!s1)
        return false;
    if (documentCounter(*s1, document.type) == before + 1) {
        setOutcome(this->status(), 0, false);
        return true;
    }
    if (sent.failed)
        return restore(sent);
    setFailed(QStringLiteral("La impresora fiscal no numeró el documento."));
    return false;
}

bool FiscalPrinter::completeOpenDocument(const FiscalDocument* document, int restMeans) {
    auto open = readS2();
    if (!open)
        return false;
    if (document && open->documentType == s2Type(document->type)) {
        // The payments the printer has not taken yet, in their order.
        QList<QByteArray> rest;
        int n = 0;
        for (const FiscalPayment& p : document->payments) {
            if (p.amount > Decimal() && n++ >= open->payments)
                rest << partialPaymentCommand(p.means, p.amount);
        }
        if (!rest.isEmpty() && !sendCommands(rest, {open->articles, open->payments}) &&
            !lastCallUnclear())
            return false;
    }
    // What the cents (or a lost payment) leave, then the closing when the printer waits for it.
    for (int attempt = 0; attempt < 4; ++attempt) {
        if (!waitWhileBusy(ackWaitMs("I0Z")))
            return false;
        open = readS2();
        if (!open)
            return false;
        if (open->documentType == 0)
            return true;
        const QByteArray command =
            open->payable > 0 ? totalPaymentCommand(restMeans) : QByteArray(kCloseDocument);
        if (!sendCommand(command) && !lastCallUnclear())
            return false;
    }
    return false;
}

bool FiscalPrinter::printNonFiscal(const QStringList& lines) {
    QList<QByteArray> commands;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArray text = printerText(lines[i].left(40));
        commands << (i + 1 < lines.size() ? "800" + text : "810" + text);
    }
    if (commands.isEmpty())
        commands << "810";
    return sendCommands(commands);
}

bool FiscalPrinter::showOnDisplay(const QString& upper, const QString& lower) {
    return sendCommands({"cU" + printerText(upper.leftJustified(20, QLatin1Char(' '), true)),
                         "cL" + printerText(lower.leftJustified(20, QLatin1Char(' '), true))});
}

bool FiscalPrinter::programLines(const QList<ProgrammedLine>& lines) {
    QList<QByteArray> commands;
    for (const ProgrammedLine& l : lines)
        commands << "PH" + QByteArray::number(l.number).rightJustified(2, '0') +
                        printerText(l.text.left(40));
    return sendCommands(commands);
}

bool FiscalPrinter::updateTaxRates(const QList<int>& hundredths, const QDate& effectiveDate) {
    const auto s1 = readS1();
    if (!s1)
        return false;
    if (effectiveDate.isValid() && effectiveDate > s1->date) {
        setFailed(80);
        return false;
    }
    return sendCommands({taxRatesCommand(hundredths), "Pt"});
}

bool FiscalPrinter::nameMeans(const QList<std::pair<int, QString>>& names) {
    QList<QByteArray> commands;
    for (const auto& [means, name] : names)
        commands << meansNameCommand(means, name);
    return sendCommands(commands);
}

bool FiscalPrinter::setIgtf(bool enabled, int rateHundredths) {
    if (!enabled)
        return sendCommand(flagCommand(kIgtfFlag, 0));
    const auto s3 = readS3();
    if (!s3)
        return false;
    QList<int> rates;
    for (const TaxRate& r : s3->rates)
        rates << r.hundredths;
    return sendCommands({taxRatesCommand(rates, rateHundredths), "Pt", flagCommand(kIgtfFlag, 1)});
}

std::optional<bool> FiscalPrinter::igtfEnabled() {
    const auto s3 = readS3();
    if (!s3)
        return std::nullopt;
    return s3->flags[kIgtfFlag] == 1;
}

} // namespace orvo::pos::fiscal
