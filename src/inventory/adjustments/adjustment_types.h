#pragma once

#include "inventory/purchases/purchase_types.h"

#include <QDateTime>
#include <QList>
#include <QString>

// Manual stock adjustments (AJUSTES/MOVAJUSTES), each typed by a reason (TIPOAJUSTES) whose sign
// says whether it adds to or removes from stock.
namespace orvo::inventory::adjustments {

// "ABIERTA" until approved; approving moves stock once.
inline constexpr int kOpen = 0;
inline constexpr int kApproved = 1;

// The partial count's own types.
inline constexpr int kPartialPlusType = 999;
inline constexpr int kPartialMinusType = 998;

struct AdjustmentType {
    int code = 0;
    QString name;
    int sign = 0; // +1 adds, -1 removes
};

// A keyed line: the barcode, its quantity (always positive: the sign is the header's) and its
// unit cost in `price` (the article's average cost when keyed). Lines share the purchase
// documents' shape so they share their screen.
using AdjustmentLine = purchases::DocumentLine;

struct Adjustment {
    long long number = 0; // 0 until first saved
    QDateTime date;
    int type = 0;
    int sign = 0; // copied from the type
    QString note;
    QString user;
    long long lotId = 0; // IDLote, 0 none
    int status = kOpen;
    Decimal totalValue; // Σ quantity × cost
    QList<AdjustmentLine> lines;
};

} // namespace orvo::inventory::adjustments
