#pragma once

#include <QDateTime>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// Lots (LOTES): purchases and other documents carry the ID of the lot they belong to. The row with
// ID 0 means "no lot" and is never listed.
namespace orvo::inventory::lots {

struct Lot {
    long long id = 0;
    QString code; // Lote
    QString description;
    int state = 1; // 0 closed
    QDateTime registered;
    QString createdBy;
};

// frmLotes: every lot ordered by code.
QList<Lot> listLots(const QSqlDatabase& db);
// Insert (registered now, created by `userCode`) or update of description and state, by code.
// One transaction. Adding a code that exists: "Registro duplicado!".
void saveLot(const QSqlDatabase& db, const Lot& lot, bool adding, const QString& userCode);
// Deletes by code; false when no lot has that code.
bool deleteLot(const QSqlDatabase& db, const QString& code);

// frmAsignarLote: the open lots (Estado other than 0) ordered by code.
QList<Lot> openLots(const QSqlDatabase& db);
// LOTES.ID of a code; nullopt when unknown.
std::optional<long long> lotIdOf(const QSqlDatabase& db, const QString& code);

} // namespace orvo::inventory::lots
