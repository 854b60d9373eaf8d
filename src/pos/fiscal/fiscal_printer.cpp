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

QString FiscalPrinter::errorText() const {
    if (!m_failed)
        return {};
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
    return sendCommand("I0Z");
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
        if (probe() && status() == kStatusReady)
            return true;
        if (deadline.hasExpired()) {
            if (!lastCallFailed())
                setFailed(kErrorNoAnswer);
            return false;
        }
        QThread::msleep(quint64(qMin<qint64>(pollMs, qMax<qint64>(1, deadline.remainingTime()))));
    }
}

bool FiscalPrinter::printDocument(const FiscalDocument& document) {
    // A document left open by an earlier failure would refuse every item.
    if (probe()) {
        const int s = status();
        if (s == 2 || s == 5 || s == 8 || s == 11)
            sendCommand("7");
        else if (s == 3 || s == 6 || s == 9 || s == 12)
            sendCommand("810");
    }
    const QList<QByteArray> commands = documentCommands(document);
    if (!sendCommands(commands)) {
        const int status = this->status();
        const int error = this->error();
        sendCommand("7"); // refused by the printer once a payment was taken
        setOutcome(status, error, true);
        return false;
    }
    // Payments stored in cents may leave the printer's own total a cent short: the last way
    // pays what is left.
    if (document.paymentWay == kSeveralWays && !document.payments.isEmpty()) {
        const auto open = readS2();
        if (!open)
            return false;
        if (open->documentType != 0 &&
            !sendCommand(totalPaymentCommand(document.payments.last().way)))
            return false;
    }
    return true;
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
    QByteArray pt = "PT";
    for (int h : hundredths.mid(0, 3))
        pt += "1" + QByteArray::number(h).rightJustified(4, '0', true);
    return sendCommands({pt, "Pt"});
}

} // namespace orvo::pos::fiscal
