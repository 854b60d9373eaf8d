#pragma once

#include <QString>
#include <QVariant>

namespace orvo::shell {

// Per-user workstation settings: application "ServidorOrvo", section "Orvo", kept in an INI file
// in the user's configuration folder. A missing key reads as the empty string and is replaced by
// the caller's default.
namespace settings {
QString read(const QString& key, const QString& defaultValue = {});
void write(const QString& key, const QString& value);
// The same in another section of the file (the mailing's outcome lives in "Info").
QString readIn(const QString& section, const QString& key, const QString& defaultValue = {});
void writeIn(const QString& section, const QString& key, const QString& value);

// Where this machine prints paper invoices (ImpresoraFactura): a printer name or a .pdf path;
// empty when not configured.
QString invoicePrinter();
void saveInvoicePrinter(const QString& printer);
// What a station without a printer proposes: Facturas/factura.pdf under the application folder
// (one PDF file per invoice beside it).
QString defaultInvoicePdf();
// How many copies of each paper invoice (NumeroCopias): 1 when unset; anything below 1 counts
// as 1.
int invoiceCopies();
void saveInvoiceCopies(int copies);
} // namespace settings

// The settings read when the main window loads, with their defaults.
struct WorkstationSettings {
    QString serie;              // register serial; empty: not a register
    int fontSize = 8;           // TamañoFuente
    QString fontName;           // NombreFuente
    bool fontBold = false;      // BoldFuente
    bool fontItalic = false;    // ItalicFuente
    QString barcodeReader;      // UsaLectorDeCodigos ("SI")
    int menuOption = 0;         // OpcionMenu: kMenuTree shows the explorer tree
    QString externalBackupDone; // RespaldoExternoUltimoCierre: "1" made, "0" owed
    QString lastLogin;          // Login

    static WorkstationSettings load();
};

// OpcionMenu values.
constexpr int kMenuBar = 0;
constexpr int kMenuTree = 1;

// Menu font keys, saved by "Fuente del menú principal...".
void saveMenuFont(const QString& name, int size, bool bold, bool italic);

} // namespace orvo::shell
