#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <functional>

// What `orvo import` loads from the Recibe folder, area by area. Each area that receives files
// from head office (the exchange rate, transfers, price lists, ...) adds its loader once at start;
// the command runs them in their order, because some loads refuse while an earlier kind is still
// pending (a price list waits for the rate and the transfers).
namespace orvo::exchange::import {

// How far a long load is, for the terminal.
using Progress = std::function<void(int percent, const QString& label)>;

struct Loader {
    int order = 0; // lower runs first: the rate 10, transfers 20, price lists 30
    QString name;  // what it loads, for the terminal ("Tasa de cambio")
    // Loads what lies in `recibeFolder` for its kind: one line per thing loaded, nothing when
    // there was nothing of its kind. Throws UserError/DbError to stop the import.
    std::function<QStringList(const QSqlDatabase& db, const QString& recibeFolder)> load;
    // The same for a long load that tells how far it is; used instead of `load` when set.
    std::function<QStringList(const QSqlDatabase& db, const QString& recibeFolder,
                              const Progress& progress)>
        loadWithProgress;
};

void addLoader(Loader loader);
// The loaders in their order.
QList<Loader> loaders();

struct ImportLine {
    QString loader;
    QString text;
};
// Runs every loader in order; stops at the first refusal (its error propagates).
QList<ImportLine> loadAll(const QSqlDatabase& db, const QString& recibeFolder,
                          const Progress& progress = {});

} // namespace orvo::exchange::import
