#pragma once

#include "inventory/articles/article_types.h"
#include "inventory/transfers/import_store.h"
#include "inventory/transfers/transfer_types.h"

#include <QHash>
#include <QSqlDatabase>
#include <QStringList>
#include <functional>
#include <optional>

// Loading what another store sent (frmImpTransferencias, frmImpDevTransferencias, `orvo import`):
// the package is read whole and checked first, so a missing, truncated or foreign file changes
// nothing; then each document is loaded in its own transaction, in number order, and one loaded
// before is passed over, so a package loaded twice creates nothing twice.
namespace orvo::inventory::transfers {

inline const QString kImportTransfersScreen = QStringLiteral("frmImpTransferencias");
inline const QString kImportReturnsScreen = QStringLiteral("frmImpDevTransferencias");

struct ReceivedDocument {
    long long number = 0;
    QString sender;   // CodEnvia
    QString receiver; // CodRecib
    QDateTime date;
    QDateTime issueDate;
    QString note;
    long long lotId = 0; // the sender's LOTES.ID
    int dispatchId = 0;
    QList<DocumentLine> lines; // box, barcode, name, quantity, Valor (in `price`)
};

struct ReceivedLot {
    long long id = 0; // the sender's
    QString code;
    QString description;
};

struct CodeName {
    QString code;
    QString name;
};

// What a package brings besides its documents (transfers only).
struct PackageMasters {
    QList<CodeName> brands, colours, categories, manufacturers;
    QStringList sizes;
    QList<ReceivedLot> lots;
    QList<DispatchType> dispatchTypes;
    QHash<QString, store::PackageArticle> articles; // by barcode
};

struct ReceivedPackage {
    Kind kind = Kind::Transfer;
    QString folder;
    QString source;                    // what it was read from, for messages ("Transfer.zip")
    QStringList files;                 // what goes aside once it is loaded
    QList<ReceivedDocument> documents; // in number order
    PackageMasters masters;
};

// The package of `kind` lying in `folder`: Transfer.zip (Devuelve.zip) in any case of its name,
// or its two tables left loose (ResuTran.dbf and MoviTran.dbf). Nothing when there is neither.
// UserError when what is there cannot be read whole: a damaged archive, a table missing from it,
// a truncated table or one without a column the load needs.
std::optional<ReceivedPackage> readReceived(const QString& folder, Kind kind);

// "Debe cargar la tasa de cambio pendiente...!" while a rate received from head office
// (tasacamb...) waits in `folder` and this store loads rates (ImpTasa).
void checkNoPendingRate(const QSqlDatabase& db, const QString& folder);

struct ImportResult {
    int imported = 0;
    int total = 0;
    QList<long long> numbers; // the documents loaded now
    QStringList notes;        // passed over: loaded before, without lines
};

// What the import is doing: percent and the system's text ("Cargando transferencia Nº 12").
using ImportProgress = std::function<void(int percent, const QString& label)>;

// Loads the documents of the package. A transfer: the catalogues and lots it brings, the header
// (Status 1, 'SISTEMAS'), each article updated from the package (or created with no stock or
// cost) with the package's prices on every variant of its model, the lines by box, then stock
// and cost per barcode (a variant at zero stock or more averages the transferred value in, one
// below zero takes it) and the model average. A return: every article must exist here (else
// nothing is loaded), the lines are valued at this store's cost and leave stock. Documents for
// another branch are refused before anything is written.
ImportResult importReceived(const QSqlDatabase& db, const ReceivedPackage& package,
                            const ArticleWriter& writer, const ImportProgress& progress = {});

// Puts the package's files aside (the folder's "Cargados", stamped with the time) so that it is
// no longer pending; nothing is deleted.
void setAsideLoaded(const ReceivedPackage& package);

// "Transferencia importada con exito...!", "Devolución de transferencia importada con exito...!"
// or "Se importaron n de m...".
QString endMessage(Kind kind, const ImportResult& result);

// The whole load of one kind from a folder, as the screens and `orvo import` run it: nothing
// when no package lies there.
std::optional<ImportResult> loadFromFolder(const QSqlDatabase& db, const QString& folder, Kind kind,
                                           const ArticleWriter& writer,
                                           const ImportProgress& progress = {});

// `orvo import`: transfers, then transfer returns, after the rate (order 20).
void registerTransferLoader();

} // namespace orvo::inventory::transfers
