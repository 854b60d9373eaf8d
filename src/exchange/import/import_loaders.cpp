#include "exchange/import/import_loaders.h"

#include <algorithm>

namespace orvo::exchange::import {

namespace {

QList<Loader>& registry() {
    static QList<Loader> all;
    return all;
}

} // namespace

void addLoader(Loader loader) {
    QList<Loader>& all = registry();
    // Registered again (a second start-up path, a test): the newer one stands.
    all.removeIf([&](const Loader& l) { return l.name == loader.name; });
    all.append(std::move(loader));
    std::stable_sort(all.begin(), all.end(),
                     [](const Loader& a, const Loader& b) { return a.order < b.order; });
}

QList<Loader> loaders() {
    return registry();
}

QList<ImportLine> loadAll(const QSqlDatabase& db, const QString& recibeFolder,
                          const Progress& progress) {
    QList<ImportLine> out;
    for (const Loader& l : loaders()) {
        const QStringList lines = l.loadWithProgress
                                      ? l.loadWithProgress(db, recibeFolder, progress)
                                      : l.load(db, recibeFolder);
        for (const QString& line : lines)
            out.append({l.name, line});
    }
    return out;
}

} // namespace orvo::exchange::import
