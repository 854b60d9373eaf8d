#pragma once

#include "common/decimal/decimal.h"

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// Serial-number documents (SERIALES / MOVSERIALES) and the serials in stock (CODIGOSERIAL).
namespace orvo::inventory::serials {

inline const QString kSerialScreen = QStringLiteral("frmEntradaSeriales");

// What approving a line does to CODIGOSERIAL.
enum class Effect {
    InsertNew,         // the serial must not exist; inserted active
    Deactivate,        // an active serial becomes inactive
    Reactivate,        // an inactive serial becomes active
    ReactivateOrInsert // an inactive serial becomes active, an unknown one is inserted
};

struct MovementType {
    QString code;        // "CO", "DC", ...
    QString name;        // "COMPRAS", ...
    QString sourceTable; // the stock document it accompanies
    Effect effect;
    QString failure; // follows "El serial " + serial when a line is not in the required state
};

// The eight types in the order the screen offers them.
const QList<MovementType>& movementTypes();
const MovementType* movementType(const QString& code);

// A stock document a serial document may accompany.
struct SourceDocument {
    QString number;
    QString serie; // sales and sales returns are keyed by number and register
    QString party; // supplier, client or branch code
    QString partyName;
    QDateTime date;
};
struct SourceLine {
    QString barcode;
    QString name;
    Decimal quantity;
};

QList<SourceDocument> sourceDocuments(const QSqlDatabase& db, const QString& typeCode);
QList<SourceLine> sourceLines(const QSqlDatabase& db, const QString& typeCode,
                              const SourceDocument& document);

struct SerialLine {
    QString barcode;
    QString serial;
};

struct SerialDocument {
    int number = 0; // 0 until first saved
    QDateTime date;
    QString type; // movement code
    QString document;
    QString party;
    QString note;
    QString user;
    int status = 0; // 0 "NO APROBADA", 1 "APROBADA"
    QList<SerialLine> lines;
};

// Adds a scanned serial to the consolidated lines; "Ya el serial esta incluido...!" when there.
void addScannedSerial(QList<SerialLine>& lines, const QString& barcode, const QString& serial);

// Saves the document (new number when it has none) with its lines and, when `approve`, applies
// every line to CODIGOSERIAL and marks it approved, all in one transaction: the first line that is
// not in the state its type needs throws UserError and nothing is written. Returns the number.
int saveSerialDocument(const QSqlDatabase& db, SerialDocument document, bool approve);

std::optional<SerialDocument> loadSerialDocument(const QSqlDatabase& db, int number);
// Documents for the browser, newest first.
QList<SerialDocument> listSerialDocuments(const QSqlDatabase& db);

} // namespace orvo::inventory::serials
