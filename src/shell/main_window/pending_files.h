#pragma once

#include <QString>
#include <QStringList>

namespace orvo::shell {

// Files that the exchange screens left waiting under the application folder (Recibe/,
// Actualizar/): one line per kind present, and the task bar buttons that load them.
struct PendingFiles {
    QStringList lines;
    QStringList
        buttons; // "Transferencias", "ListaPrecios", "Compras", "Nomina", "ReimprimirNomina"

    bool isEmpty() const { return lines.isEmpty() && buttons.isEmpty(); }
};

// File names are matched ignoring case: the packages come from machines that do not care.
PendingFiles scanPendingFiles(const QString& appFolder);

} // namespace orvo::shell
