#pragma once

#include <QSqlDatabase>
#include <QString>

namespace orvo::shell::demo {

// The demo store's well-known identifiers, for the command, the tests and anyone who wants to
// drive the demo (the register's serial is also the serial of its emulated fiscal printer).
inline constexpr char kDemoSerial[] = "Z1B0000001";
inline constexpr char kDemoCompanyRif[] = "J-40123456-7";
inline constexpr char kDemoPassword[] = "1234";
inline constexpr char kAdminUser[] = "ADMIN";
inline constexpr char kCashierUser[] = "CAJERO1";
inline constexpr char kCashClient[] = "V00000000";

// Fills an empty, migrated store database with the demo store: company, register and fiscal
// printer row, users, groups and the menu tree, taxes, payment ways, banks, clients, sellers and a
// few hundred articles. One transaction; the same rows on every run (only the promotion dates and
// time stamps follow today). `branch` is the store it is among the company's branches (00 head
// office, 01, 02): its code names its packages and is where transfers go. Refuses with UserError
// when the database already has data or the branch is not one of the demo's.
void seedDemoStore(const QSqlDatabase& db, const QString& branch = QStringLiteral("01"));

// True when the database holds the demo store (its company and register).
bool isDemoStore(const QSqlDatabase& db);

// Binds this workstation to the demo register: the per-user setting Serie (ServidorOrvo, group
// Orvo), as the register screen does; and, when no invoice printer is set, ImpresoraFactura to a
// PDF file under the application folder (Facturas/factura.pdf), so that the sale screen opens.
void bindWorkstationToDemoRegister();

} // namespace orvo::shell::demo
