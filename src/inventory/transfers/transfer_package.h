#pragma once

#include "inventory/transfers/transfer_types.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

// The files that carry transfers between stores, written through the package layer from the
// templates of Estructura: Transfer.zip (ResuTran.dbf, MoviTran.dbf and the articles, brands,
// sizes, colours, categories, manufacturers, lots and dispatch types they need) and Devuelve.zip
// (ResuDvTr.dbf, MoviDvTr.dbf and the lots). Until they travel by FTP they are written into the
// export folder, one folder per receiving branch (Envia/02/Transfer.zip), for the other store to
// load from its Recibe.
namespace orvo::inventory::transfers {

// "Transfer.zip" / "Devuelve.zip".
QString packageFileName(Kind kind);

// The dBase tables of a kind and the name its document number travels under.
struct PackageTables {
    QString summary;      // RESUTRAN, RESUDVTR
    QString lines;        // MOVITRAN, MOVIDVTR
    QString numberField;  // NumTra, NumDvTr
    QString summaryLabel; // for messages: "ResuTran.dbf"
};
const PackageTables& packageTables(Kind kind);

// The export folder: PARAMETROSTRANSFER.Ruta, or Envia under the application folder.
QString sendFolder(const QSqlDatabase& db);

struct SentPackage {
    QString path;
    QList<long long> numbers;
};

// Writes the package of `kind` for `receiver` into `folder`/<receiver>/: the documents asked for
// (approved or already exported, addressed to it), every other one approved for it and not sent
// yet, and those of a package still waiting there (so a package not loaded yet is never lost by
// the next one). The archive appears whole; then, in one transaction, the approved ones become
// EXPORTADA. UserError when a document asked for is open or goes elsewhere, or when nothing is
// left to send.
SentPackage writePackage(const QSqlDatabase& db, Kind kind, const QString& receiver,
                         const QList<long long>& numbers, const QString& folder);

} // namespace orvo::inventory::transfers
