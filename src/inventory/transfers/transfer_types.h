#pragma once

#include "inventory/purchases/purchase_types.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>

// Goods moving between the stores of the chain. A transfer (TRANSFERENCIAS) takes goods out of
// this store at approval and freezes their cost; the receiving store loads its copy
// (ITRANSFERENCIAS) and averages that cost into its own. A transfer return (DEVTRANSFERENCIAS)
// is issued by the store that takes goods back (stock in at approval, valued at its own cost);
// the store that gave them back loads its copy (IDEVTRANSFERENCIAS) and its stock goes down.
namespace orvo::inventory::transfers {

using purchases::DocumentLine;
using purchases::DocumentSummary;
using purchases::kApproved;
using purchases::kExported;
using purchases::kOpen;

enum class Kind { Transfer, Return };

// A received copy: ITRANSFERENCIAS.Status 1 loaded, 2 moved aside.
inline constexpr int kReceived = 1;
inline constexpr int kMovedAside = 2;

// A transfer or a transfer return as it is keyed. Lines carry their box (NumeroCaja) and, in
// `price`, the unit cost (Valor): the article's average cost while open, frozen at approval.
struct Transfer {
    Kind kind = Kind::Transfer;
    long long number = 0; // 0 until first saved
    QDateTime date;       // Fecha: when it was entered
    QDate issueDate;      // FechaEmision
    QString sender;       // CodigoEnvia: this store
    QString receiver;     // CodigoRecibe: where its package goes
    QString origin;       // DocumentoOrigen
    QString note;
    QString user;
    long long lotId = 0; // IDLote, 0 none
    int dispatchId = 0;  // IDDespacho (transfers only), 0 none
    int status = kOpen;
    Decimal totalValue; // TotalValor
    QList<DocumentLine> lines;
};

// A received transfer as frmDesplazarTransferencias lists it.
struct ReceivedSummary {
    long long number = 0;
    QString sender;
    QDateTime date;
    Decimal total;
    int status = kReceived;
};

struct DispatchType {
    int id = 0;
    QString description;
};

} // namespace orvo::inventory::transfers
