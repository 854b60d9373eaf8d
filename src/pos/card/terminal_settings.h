#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QUrl>
#include <optional>

namespace orvo::pos::card {

// Where and how a register reaches its card terminal. Kept in TABLA_VALORES (IdTabla = key,
// Descripcion = value), so every register of the store is configured from one place:
//   VPOS_URL_<Serie>  the terminal service of that register, e.g. http://127.0.0.1:8765
//   VPOS_ESPERA       seconds to wait for an answer (120 when absent): the card holder types a PIN
//   VPOS_UNA_COPIA    "TRUE": print the voucher once instead of twice
//   VPOS_CARPETA      a folder: vouchers go there as text files instead of the fiscal printer
struct TerminalSettings {
    static constexpr int kDefaultTimeoutSeconds = 120;

    QUrl url;
    int timeoutSeconds = kDefaultTimeoutSeconds;
    bool oneCopy = false;
    QString voucherFolder;
};

// The folder of VPOS_CARPETA (vouchers as files), or empty when vouchers go to the printer.
QString voucherFolder(const QSqlDatabase& db);

// The settings of the register `serie`. Throws UserError when that register has no terminal.
TerminalSettings loadTerminalSettings(const QSqlDatabase& db, const QString& serie);

// Points the register `serie` at the terminal service `url` (VPOS_URL_<Serie>), in one
// transaction. Throws UserError for an address that is not http(s)://host[:port].
void saveTerminalUrl(const QSqlDatabase& db, const QString& serie, const QString& url);
// The address configured for `serie`, or empty.
QString terminalUrl(const QSqlDatabase& db, const QString& serie);

// The bank account (CTABANCOS.Nombre) that stands for the terminal, if the store has one.
std::optional<QString> terminalAccountName(const QSqlDatabase& db);

} // namespace orvo::pos::card
