// Internal to the schema folder: the table list is split by area, storeTables() joins them.
#pragma once

#include "common/schema/schema.h"

namespace orvo::schema::tables {

// A table whose secondary indexes are named IX_<TABLE>_<columns>, so names never clash across the
// database. Each entry of `indexes` is the column list of one non-unique index.
Table table(const QString& name, QList<Column> columns, QStringList primaryKey = {},
            const QList<QStringList>& indexes = {});

// Adds a unique index UX_<TABLE>_<columns>, from schema version `since`: numbers taken as the
// highest plus one rely on it to refuse a number two registers took at once.
Table withUniqueNumber(Table t, const QStringList& columns, int since);

// The schema version that gave MAX + 1 numbers their unique keys.
constexpr int kUniqueNumbersVersion = 5;
// The version that made USUARIOS.Pasword long enough for any password's scrambled form.
constexpr int kLongPasswordsVersion = 5;

QList<Table> configurationTables(); // company, settings, users and security
QList<Table> masterTables();        // articles and catalogues
QList<Table> registerTables();      // registers, their days and cash
QList<Table> salesTables();         // invoices, returns, receivables, dispatch orders
QList<Table> purchaseTables();      // purchases, orders, receptions, remissions
QList<Table> stockTables();         // transfers, adjustments, counts, serials, price lists
QList<Table> exchangeTables();      // FTP log, mail, export definitions

} // namespace orvo::schema::tables
