#pragma once

#include <QSqlDatabase>
#include <QString>

// Procedures on stock and costs that every stock document shares.
namespace orvo::inventory::stock {

// The documents whose models get one average cost again, by the kind number the stores know
// them by.
enum class AverageKind : int {
    SalesReturn = 2,      // MOVDEVVENTAS of one register's return (or exchange)
    ReceivedTransfer = 6, // IMOVTRANSFERENCIAS of a received transfer
    Purchase = 7,         // MOVCOMPRAS of a supplier's invoice
};

struct AveragedDocument {
    AverageKind kind = AverageKind::Purchase;
    QString document;  // NumeroDevolucion, Numero or Documento, as text
    QString qualifier; // Serie of the return, CodigoEnvia of the transfer (empty: any), Proveedor

    static AveragedDocument salesReturn(long long number, const QString& serie) {
        return {AverageKind::SalesReturn, QString::number(number), serie};
    }
    static AveragedDocument receivedTransfer(long long number, const QString& sender = {}) {
        return {AverageKind::ReceivedTransfer, QString::number(number), sender};
    }
    static AveragedDocument purchase(const QString& document, const QString& supplier) {
        return {AverageKind::Purchase, document, supplier};
    }
};

// Recompute model average: every model (Referencia, CodigoMarca) that the document touched
// through a variant with positive stock gets one average cost, the stock-weighted mean of the
// costs of its variants with positive stock, on every variant including those without stock;
// each variant's UltimoCosto takes its own CostoPromedio from before. Models whose variants are
// all at zero or below keep their per-variant costs. Inside the caller's transaction. Returns the
// number of models averaged.
int recomputeModelAverage(const QSqlDatabase& db, const AveragedDocument& document);

} // namespace orvo::inventory::stock
