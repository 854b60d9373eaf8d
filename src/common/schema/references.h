#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

// Which rows name a master row by its key: articles their colour, brand, size and tax; documents
// their client, seller, supplier or article. A master row so named may not be deleted (it can be
// set inactive), on both engines alike: the check is made by the program, not left to foreign
// keys that the embedded engine does not enforce and imported data would not always meet.
namespace orvo::schema {

struct Reference {
    QString master; // "COLORES"
    QString key;    // "Codigo"
    QString table;  // "INVENTARIO"
    QString column; // "CodigoColor"
};

const QList<Reference>& references();
QList<Reference> referencesTo(const QString& masterTable);

// The first table whose rows name `key` of `masterTable`; empty when none does.
QString usedBy(const QSqlDatabase& db, const QString& masterTable, const QVariant& key);

} // namespace orvo::schema
