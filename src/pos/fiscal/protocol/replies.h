#pragma once

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>
#include <QTime>
#include <array>
#include <optional>

// Reply layouts of the status reads and report uploads: fixed-width ASCII fields, each followed
// by LF. Amounts are in cents, quantities in thousandths.
namespace orvo::pos::fiscal::protocol {

// S1: the printer's status, counters, serial, date and time.
struct S1Status {
    int cashier = 0;
    qint64 dailySubtotal = 0; // cents
    int lastInvoice = 0;
    int invoicesToday = 0;
    int lastDebitNote = 0;
    int debitNotesToday = 0;
    int lastCreditNote = 0;
    int creditNotesToday = 0;
    int lastNonFiscal = 0;
    int nonFiscalToday = 0;
    int fiscalReportCounter = 0;
    int zCounter = 0;
    QString rif;
    QString serial;
    QTime time;
    QDate date;

    friend bool operator==(const S1Status&, const S1Status&) = default;
};
QByteArray buildS1(const S1Status& s);
std::optional<S1Status> parseS1(const QByteArray& data);

// S2: the document being printed; zeros when none is open.
struct S2Document {
    qint64 taxBases = 0; // cents, signed
    qint64 taxes = 0;    // cents, signed
    qint64 reserved = 0; // cents, signed
    int articles = 0;    // thousandths
    qint64 payable = 0;  // cents, signed
    int payments = 0;
    int documentType = 0; // 0 none, 1 invoice, 2 credit note, 3 debit note

    friend bool operator==(const S2Document&, const S2Document&) = default;
};
QByteArray buildS2(const S2Document& s);
std::optional<S2Document> parseS2(const QByteArray& data);

// SV: model and country.
struct SvModel {
    QString model;
    QString country;
    friend bool operator==(const SvModel&, const SvModel&) = default;
};
QByteArray buildSV(const SvModel& s);
std::optional<SvModel> parseSV(const QByteArray& data);

// S3: the three programmed tax rates and the configuration flags.
struct TaxRate {
    int type = 1;       // 1 prices include tax, 2 prices exclude it
    int hundredths = 0; // 16.00 % is 1600
    friend bool operator==(const TaxRate&, const TaxRate&) = default;
};
struct S3Settings {
    std::array<TaxRate, 3> rates{};
    std::array<int, 64> flags{};
    friend bool operator==(const S3Settings&, const S3Settings&) = default;
};
QByteArray buildS3(const S3Settings& s);
std::optional<S3Settings> parseS3(const QByteArray& data);

// Daily accumulators of one kind of document.
struct DocumentTotals {
    qint64 exempt = 0;
    std::array<qint64, 3> base{};
    std::array<qint64, 3> tax{};
    qint64 total() const;
    friend bool operator==(const DocumentTotals&, const DocumentTotals&) = default;
};

// What printers with IGTF (flag 50 = 01) accumulate per kind of document: the amount paid in
// foreign currency that bears the tax (capped at each document's amount) and the tax.
struct IgtfTotals {
    qint64 base = 0;
    qint64 igtf = 0;
    friend bool operator==(const IgtfTotals&, const IgtfTotals&) = default;
};

// U0X / U0Z block, and every block of U2A / U3A.
struct ZReport {
    int zNumber = 0;
    QDate zDate;
    QTime zTime;
    int lastInvoice = 0;
    QDate lastInvoiceDate;
    QTime lastInvoiceTime;
    int lastDebitNote = 0;
    int lastCreditNote = 0;
    int lastNonFiscal = 0;
    DocumentTotals invoices;
    DocumentTotals debitNotes;
    DocumentTotals creditNotes;
    // The six 18-wide fields that follow when IGTF is enabled.
    bool withIgtf = false;
    IgtfTotals invoiceIgtf;
    IgtfTotals debitNoteIgtf;
    IgtfTotals creditNoteIgtf;
    friend bool operator==(const ZReport&, const ZReport&) = default;
};
QByteArray buildReport(const ZReport& r);
std::optional<ZReport> parseReport(const QByteArray& data);

// Dates and times as the printer writes them.
QString dateDdMmYy(const QDate& d);
QDate parseDdMmYy(QStringView text);

} // namespace orvo::pos::fiscal::protocol
