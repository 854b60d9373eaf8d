#pragma once

#include "common/decimal/decimal.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <utility>

namespace orvo::pos::fiscal {

// A payment way (FORMAPAGO) and the printer's payment means it is paid with.
struct WayMeans {
    int way = 0;     // FORMAPAGO.Codigo
    QString wayName; // FORMAPAGO.Nombre
    int means = 1;   // 1..24; 20..24 foreign currency
    QString name;    // the means' name on the printer (PE), at most 14 characters

    friend bool operator==(const WayMeans&, const WayMeans&) = default;
};

// Means 20..24: foreign currency. Amounts of their ways are kept in that currency and go to the
// printer converted at the sale's rate; with IGTF they bear the tax.
bool isForeignMeans(int means);
// An amount in foreign currency in bolívars at `rate`, rounded to the cent: what the printer is
// sent and what counts toward the invoice.
Decimal toLocalCurrency(const Decimal& amount, const Decimal& rate);

class PaymentMeansTable {
public:
    explicit PaymentMeansTable(QList<WayMeans> rows = {}) : m_rows(std::move(rows)) {}
    const QList<WayMeans>& rows() const { return m_rows; }
    // The means of a way; a way not in the table goes by the defaults.
    int means(int way) const;
    bool isForeign(int way) const { return isForeignMeans(means(way)); }
    // "MULTIPLE": the invoice was paid in several ways, listed in its payments.
    bool isSeveralWays(int way) const;
    // Each means in use with its name, once (the first way's), for PE.
    QList<std::pair<int, QString>> names() const;

private:
    QList<WayMeans> m_rows;
};

// The defaults: by the way's name, "EFECTIVO" and "CUENTA POR COBRAR" 01, "DEPOSITO" 02,
// "CHEQUE" 05, "TARJETA DE DEBITO" 09, "TARJETA DE CREDITO" 10, "EFECTIVO DOLAR" 20; another
// name by its code as the sale screen always paid (1 and 5 → 01, 2 → 05, 3 → 09, 4 → 10,
// 6 → 02), anything else 01.
WayMeans defaultMeans(int way, const QString& wayName);

// Every way of FORMAPAGO with its means: as configured in TABLA_VALORES "MEDIOFISCAL" (Codigo the
// way's code, Descripcion the means and its name: "20 EFECTIVO DOLAR"), the others by default.
PaymentMeansTable loadPaymentMeans(const QSqlDatabase& db);
// Writes the table, inside the caller's transaction. Throws UserError for a means outside
// 1..24 or a name longer than 14.
void savePaymentMeans(const QSqlDatabase& db, const QList<WayMeans>& rows);

} // namespace orvo::pos::fiscal
