#pragma once

#include "common/decimal/decimal.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

// The printer commands of a fiscal document, built from the sale or return as stored.
namespace orvo::pos::fiscal {

enum class DocumentType { Invoice, CreditNote };

struct FiscalLine {
    Decimal price;      // unit price without tax
    Decimal taxPercent; // 16 for 16 %
    Decimal quantity;
    Decimal discountPercent; // 0 when none
    QString name;
    int rate = 0; // 0 exempt, 1..3 the printer's programmed rates
};

struct FiscalPayment {
    int means = 1;  // the printer's payment means, 1..24
    Decimal amount; // in bolívars (foreign currency converted at the sale's rate)
};

struct FiscalDocument {
    DocumentType type = DocumentType::Invoice;
    // The number the printer gives it (its counter + 1), 0 when not known. With it, a document
    // whose earlier print was lost is never printed twice.
    int number = 0;
    QString clientId; // RIF or cédula
    QString clientName;
    QStringList clientLines; // address and other lines of the header
    QList<FiscalLine> lines;
    // Paid in full with one means ("1" + means), or by the partial payments in order; whatever
    // the cents leave is paid with the last means.
    int paymentMeans = 1;
    QList<FiscalPayment> payments;
    // Credit notes: the invoice they return.
    int affectedInvoice = 0;
    QDate affectedInvoiceDate;
    QString affectedPrinterSerial;

    // The means that pays what is left.
    int restMeans() const;
};

// A programmed header (1..8) or footer (91..98) line.
struct ProgrammedLine {
    int number = 0;
    QString text;
};

// Closes a document whose payments cover it; mandatory with IGTF, where payments never close.
inline constexpr char kCloseDocument[] = "199";
// Payment means names are at most this long.
inline constexpr int kMeansNameLength = 14;

// Text as the printer takes it: ISO-8859-1, anything else as '?'.
QByteArray printerText(const QString& text);
// Unit price with its tax in cents: price + round(price × rate / 100, 2).
qint64 priceWithTaxCents(const Decimal& price, const Decimal& taxPercent);
// rate char + price with tax (10 digits, cents) + quantity (8 digits, thousandths) + name cut
// to 40; a credit note item starts with "d" and the rate's index.
QByteArray itemCommand(const FiscalLine& line, DocumentType type);
// "p-" + the percent × 100 in four digits.
QByteArray discountCommand(const Decimal& percent);
// "1" + means: pays the whole balance (and closes, without IGTF).
QByteArray totalPaymentCommand(int means);
// "2" + means + amount in cents (12 digits).
QByteArray partialPaymentCommand(int means, const Decimal& amount);
// "PE" + means + its name (at most 14 characters).
QByteArray meansNameCommand(int means, const QString& name);
// "PJ" + flag + value, two digits each.
QByteArray flagCommand(int flag, int value);
// "PT" + one group of type 1 and rate per tax rate, and the IGTF rate as a fourth group.
QByteArray taxRatesCommand(const QList<int>& hundredths, std::optional<int> igtfHundredths = {});
// The whole document, customer data to the last payment; the closing is the printer's to ask
// for (see FiscalPrinter::printDocument). A payment of zero is never sent.
QList<QByteArray> documentCommands(const FiscalDocument& document);

} // namespace orvo::pos::fiscal
