#pragma once

#include "pos/fiscal/protocol/replies.h"
#include "pos/fiscal/protocol/status.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <array>

namespace orvo::tools::fiscal {

namespace wire = orvo::pos::fiscal::protocol;

// What the printer keeps across power cycles: identity, its clock, counters, the open day's
// accumulators, programmed lines and rates, and every Z closed. Saved as JSON in the state file.
struct FiscalMemory {
    // A new printer is the demo register's: its serial and the demo company's RIF.
    QString serial = QStringLiteral("Z1B0000001");
    QString rif = QStringLiteral("J401234567");
    QString model = QStringLiteral("Z1B");
    QString country = QStringLiteral("VE");
    qint64 clockOffsetSecs = 0; // printer time = system time + offset

    int lastInvoice = 0;
    int lastCreditNote = 0;
    int lastDebitNote = 0;
    int lastNonFiscal = 0;
    int invoicesToday = 0;
    int creditNotesToday = 0;
    int nonFiscalToday = 0;
    int xCounter = 0;
    int fiscalReportCounter = 0;
    int zCounter = 0;
    QDateTime lastInvoiceAt;
    bool zJustMade = true; // nothing fiscal printed since the last Z: programming is allowed

    wire::DocumentTotals invoiceTotals;
    wire::DocumentTotals creditNoteTotals;
    wire::IgtfTotals invoiceIgtf;
    wire::IgtfTotals creditNoteIgtf;

    QMap<int, QString> lines; // 1..8 header, 91..98 footer
    std::array<wire::TaxRate, 3> rates{{{1, 1600}, {1, 800}, {1, 3100}}};
    std::array<int, 64> flags{};
    int igtfRate = 0;                // hundredths of a percent: the fourth group of PT
    QMap<int, QString> paymentNames; // means 1..24
    QList<wire::ZReport> zHistory;

    bool igtfEnabled() const { return flags[wire::kIgtfFlag] == 1; }
    QDateTime now() const { return QDateTime::currentDateTime().addSecs(clockOffsetSecs); }
    // The open day as an upload block (U0X).
    wire::ZReport openDay() const;

    // Missing file: the defaults (a new printer). Unreadable file: false.
    bool load(const QString& path, QString* error);
    bool save(const QString& path, QString* error) const;
};

} // namespace orvo::tools::fiscal
