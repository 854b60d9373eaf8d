#include "pos/fiscal/commands.h"

namespace orvo::pos::fiscal {

namespace {

QByteArray digits(long long value, int width) {
    return QByteArray::number(value < 0 ? 0 : value).rightJustified(width, '0', true);
}

QByteArray field(const QByteArray& prefix, const QString& text, int width = 40) {
    return prefix + printerText(text.left(width));
}

} // namespace

int FiscalDocument::restMeans() const {
    for (qsizetype i = payments.size() - 1; i >= 0; --i) {
        if (payments[i].amount > Decimal())
            return payments[i].means;
    }
    return paymentMeans;
}

QByteArray printerText(const QString& text) {
    QByteArray out;
    out.reserve(text.size());
    for (QChar c : text) {
        const ushort u = c.unicode();
        out.append(u >= 0x20 && u <= 0xFF && u != 0x7F ? char(u) : '?');
    }
    return out;
}

qint64 priceWithTaxCents(const Decimal& price, const Decimal& taxPercent) {
    const Decimal tax = (price * taxPercent / Decimal(100)).rounded(2);
    return (price + tax).scaled(2);
}

QByteArray itemCommand(const FiscalLine& line, DocumentType type) {
    static const char kRateChars[] = {' ', '!', '"', '#'};
    const int rate = line.rate < 0 || line.rate > 3 ? 0 : line.rate;
    QByteArray cmd;
    if (type == DocumentType::CreditNote)
        cmd = "d" + QByteArray::number(rate);
    else
        cmd.append(kRateChars[rate]);
    cmd += digits(priceWithTaxCents(line.price, line.taxPercent), 10);
    cmd += digits(line.quantity.scaled(3), 8);
    cmd += printerText((line.name + QString(50, QLatin1Char(' '))).left(40));
    return cmd;
}

QByteArray discountCommand(const Decimal& percent) {
    return "p-" + digits(percent.scaled(2), 4);
}

QByteArray totalPaymentCommand(int means) {
    return "1" + digits(means, 2);
}

QByteArray partialPaymentCommand(int means, const Decimal& amount) {
    return "2" + digits(means, 2) + digits(amount.scaled(2), 12);
}

QByteArray meansNameCommand(int means, const QString& name) {
    return "PE" + digits(means, 2) + printerText(name.trimmed().toUpper().left(kMeansNameLength));
}

QByteArray flagCommand(int flag, int value) {
    return "PJ" + digits(flag, 2) + digits(value, 2);
}

QByteArray taxRatesCommand(const QList<int>& hundredths, std::optional<int> igtfHundredths) {
    QByteArray pt = "PT";
    for (int h : hundredths.mid(0, 3))
        pt += "1" + digits(h, 4);
    if (igtfHundredths)
        pt += "1" + digits(*igtfHundredths, 4);
    return pt;
}

QList<QByteArray> documentCommands(const FiscalDocument& d) {
    QList<QByteArray> out;
    if (d.type == DocumentType::CreditNote) {
        out << "iF*" + digits(d.affectedInvoice, 8)
            << "iD*" + d.affectedInvoiceDate.toString(QStringLiteral("dd/MM/yyyy")).toLatin1()
            << field("iI*", d.affectedPrinterSerial);
    }
    if (!d.clientId.isEmpty())
        out << field("iR*", d.clientId);
    if (!d.clientName.isEmpty())
        out << field("iS*", d.clientName);
    int n = 0;
    for (const QString& l : d.clientLines) {
        if (!l.trimmed().isEmpty() && n < 10)
            out << "i" + digits(++n, 2) + printerText(l.left(40));
    }
    for (const FiscalLine& line : d.lines) {
        out << itemCommand(line, d.type);
        if (!line.discountPercent.isZero())
            out << discountCommand(line.discountPercent);
    }
    bool paid = false;
    for (const FiscalPayment& p : d.payments) {
        // A row that gave all its money as change is no payment: the printer refuses a zero.
        if (p.amount > Decimal()) {
            out << partialPaymentCommand(p.means, p.amount);
            paid = true;
        }
    }
    if (!paid)
        out << totalPaymentCommand(d.paymentMeans);
    return out;
}

} // namespace orvo::pos::fiscal
