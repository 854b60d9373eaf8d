#pragma once

#include "pos/fiscal/fiscal_printer.h"
#include "pos/fiscal/payment_means.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>

// What the managers do on the register's printer: reports, programming and readings. Each
// function runs on the printer's thread and throws UserError with the printer's own words when
// the printer refuses or does not answer.
namespace orvo::pos::fiscal_screens {

// Fails with the driver's message when `ok` is false.
void requireSuccess(const fiscal::FiscalPrinter& printer, bool ok);

void printXReport(fiscal::FiscalPrinter& printer);
// Prints the Z and waits until the printer is ready again (it is busy for a while afterwards).
void printZReport(fiscal::FiscalPrinter& printer, int readyTimeoutMs = 30000);

struct RangeReport {
    bool byDates = true;
    bool detailed = true;
    QDate fromDate, toDate;
    int fromNumber = 0, toNumber = 0;
};
// Refuses an inverted range before anything is sent.
void printRangeReport(fiscal::FiscalPrinter& printer, const RangeReport& range);

// The header and footer lines of the store (ENCFISCAL 01..08, PIEFISCAL 91..98), read on the
// caller's thread, then programmed.
QList<fiscal::ProgrammedLine> storeHeaderFooter(const QSqlDatabase& db, const QDate& today);
void programHeaderFooter(fiscal::FiscalPrinter& printer,
                         const QList<fiscal::ProgrammedLine>& lines);

// IMPUESTOS codes 1..3 in hundredths of a percent (16 % is 1600).
QList<int> storeTaxRates(const QSqlDatabase& db);
void updateTaxRates(fiscal::FiscalPrinter& printer, const QList<int>& hundredths,
                    const QDate& effectiveDate);

// The printer's counters as the managers read them.
struct PrinterCounters {
    QString serial;
    QDate date;
    int lastInvoice = 0;
    int lastCreditNote = 0;
    int lastNonFiscal = 0;
    int invoicesToday = 0;
    int creditNotesToday = 0;
    int lastZ = 0;
    bool igtf = false;   // flag 50 on
    int memoryState = 0; // 0 room, 1 nearly full, 2 full
};
PrinterCounters readCounters(fiscal::FiscalPrinter& printer);
// One line per counter, for the screen.
QString countersText(const PrinterCounters& c);

// The last invoice the printer numbered (U0X).
long long printerLastInvoice(fiscal::FiscalPrinter& printer);

void testDisplay(fiscal::FiscalPrinter& printer, const QString& upper, const QString& lower);

// The payment way → means table as the screen shows it, and saved (one transaction).
fiscal::PaymentMeansTable storePaymentMeans(const QSqlDatabase& db);
void saveStorePaymentMeans(const QSqlDatabase& db, const QList<fiscal::WayMeans>& rows);
// Names the means of the table on the printer (PE).
void programPaymentMeans(fiscal::FiscalPrinter& printer,
                         const QList<std::pair<int, QString>>& names);

// IGTF on this register: whether it charges it, and the rate in hundredths (3 % is 300).
struct IgtfChoice {
    bool enabled = false;
    int rateHundredths = 300;
};
IgtfChoice registerIgtf(const QSqlDatabase& db, const QString& serial);
// The printer first (flag 50 and the rate, accepted right after a Z), then the register, so
// that the two never disagree.
void setPrinterIgtf(fiscal::FiscalPrinter& printer, const IgtfChoice& choice);
void recordRegisterIgtf(const QSqlDatabase& db, const QString& serial, bool enabled);

// After a Z made by hand the register's day starts again from 0 toward the printer's maximum.
void recordZOnRegisterDay(const QSqlDatabase& db, const QString& serial, const QDate& day);

} // namespace orvo::pos::fiscal_screens
