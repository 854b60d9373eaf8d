#pragma once

#include "common/decimal/decimal.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

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
    int way = 1; // the payment way's number
    Decimal amount;
};

struct FiscalDocument {
    DocumentType type = DocumentType::Invoice;
    QString clientId; // RIF or cédula
    QString clientName;
    QStringList clientLines; // address and other lines of the header
    QList<FiscalLine> lines;
    int paymentWay = 1;            // 7: several ways, listed in payments
    QList<FiscalPayment> payments; // the payments of a document paid in several ways
    // Credit notes: the invoice they return.
    int affectedInvoice = 0;
    QDate affectedInvoiceDate;
    QString affectedPrinterSerial;
};

// A programmed header (1..8) or footer (91..98) line.
struct ProgrammedLine {
    int number = 0;
    QString text;
};

inline constexpr int kSeveralWays = 7;

// Text as the printer takes it: ISO-8859-1, anything else as '?'.
QByteArray printerText(const QString& text);
// Unit price with its tax in cents: price + round(price × rate / 100, 2).
qint64 priceWithTaxCents(const Decimal& price, const Decimal& taxPercent);
// rate char + price with tax (10 digits, cents) + quantity (8 digits, thousandths) + name cut
// to 40; a credit note item starts with "d" and the rate's index.
QByteArray itemCommand(const FiscalLine& line, DocumentType type);
// "p-" + the percent × 100 in four digits.
QByteArray discountCommand(const Decimal& percent);
// The printer's payment means of a payment way ("01" cash, "05" cheque, ...).
QByteArray paymentMeans(int way);
// "1" + means: pays the whole balance and closes.
QByteArray totalPaymentCommand(int way);
// "2" + means + amount in cents (12 digits).
QByteArray partialPaymentCommand(int way, const Decimal& amount);
// The whole document, customer data to the closing payment.
QList<QByteArray> documentCommands(const FiscalDocument& document);

} // namespace orvo::pos::fiscal
