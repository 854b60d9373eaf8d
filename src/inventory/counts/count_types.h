#pragma once

#include "common/decimal/decimal.h"

#include <QDateTime>
#include <QList>
#include <QString>

// The physical count of the store: pages (zones) counted by teams in up to three passes. Counts 1
// and 2 are scanned page by page; count 3 puts them side by side and settles where they differ.
namespace orvo::inventory::counts {

// Count 1 and 2 pages: "ABIERTA" → "APROBADA" → processed into count 3.
inline constexpr int kOpen = 0;
inline constexpr int kApproved = 1;
inline constexpr int kProcessed = 2;
// Count 3 pages: "NO APROBADA" → "APROBADA".
inline constexpr int kFinalOpen = 0;
inline constexpr int kFinalApproved = 1;

// Articles with this status are kept out of counts: no page takes them, the physical-logical
// adjustment leaves their stock alone and the rebuild keeps it.
inline constexpr int kExcludedArticle = 3;

// Which counting pass a page belongs to (TOMAFISICA1 / TOMAFISICA2).
enum class Pass : int { First = 1, Second = 2 };

struct CountLine {
    QString barcode;
    QString name;
    Decimal quantity; // summed over every scan of the barcode on the page
};

struct CountPage {
    int number = 0; // NumeroPagina: the zone
    QDateTime date;
    QString note;
    QString user;
    int status = kOpen;
    QList<CountLine> lines;
};

// A page as the browsers list it.
struct PageSummary {
    int number = 0;
    QDateTime date;
    QString user;
    QString note;
    int status = kOpen;
    int items = 0;  // lines (barcodes)
    Decimal units;  // Σ quantity
    int final = -1; // the page's count 3: -1 none, else its status
};

// What one scan left on the page.
struct Scan {
    CountLine line; // the barcode's line with its new total
    bool zeroCost = false;
};

// A count-3 line: the two counts side by side and the final one.
struct FinalLine {
    QString barcode;
    QString name;
    Decimal first;  // Cantidad1
    Decimal second; // Cantidad2
    Decimal final;  // Cantidad3
    bool differs() const { return first != second; }
};

struct FinalPage {
    int number = 0;
    QDateTime date;
    QString note;
    QString user;
    int status = kFinalOpen;
    QList<FinalLine> lines;
};

// A page as the count-3 screen lists it: where each pass stands.
struct PageProgress {
    int number = 0;
    int first = -1; // status in count 1, -1 absent
    int second = -1;
    int final = -1;
    int differences = 0; // count-3 lines whose counts differ
};

} // namespace orvo::inventory::counts
