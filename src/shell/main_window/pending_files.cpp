#include "shell/main_window/pending_files.h"

#include <QDir>
#include <QSet>

namespace orvo::shell {

namespace {

QSet<QString> upperNames(const QString& folder) {
    QSet<QString> names;
    for (const QString& f : QDir(folder).entryList(QDir::Files))
        names.insert(f.toUpper());
    return names;
}

bool anyWithSuffix(const QSet<QString>& names, const QString& suffix) {
    for (const QString& n : names)
        if (n.endsWith(suffix))
            return true;
    return false;
}

void addButton(PendingFiles& p, const QString& button) {
    if (!p.buttons.contains(button))
        p.buttons.append(button);
}

} // namespace

PendingFiles scanPendingFiles(const QString& appFolder) {
    const QSet<QString> recibe = upperNames(appFolder + QStringLiteral("/Recibe"));
    const auto both = [&](const char* a, const char* b) {
        return recibe.contains(QString::fromLatin1(a)) && recibe.contains(QString::fromLatin1(b));
    };
    PendingFiles p;
    struct Kind {
        const char* summary;
        const char* lines;
        const char* button; // nullptr: a line without a button
        const char* text;
        const char* archive = nullptr; // the same tables still zipped, as another store sends them
    };
    static const Kind kinds[] = {
        {"RESUTRAN.DBF", "MOVITRAN.DBF", "Transferencias",
         "- Existen transferencias pendientes por cargar.", "TRANSFER.ZIP"},
        {"RESUDVTR.DBF", "MOVIDVTR.DBF", "Transferencias",
         "- Existen devoluciones de transferencias pendientes por cargar.", "DEVUELVE.ZIP"},
        {"RESULIST.DBF", "MOVILIST.DBF", "ListaPrecios",
         "- Existen listas de precios pendientes por cargar."},
        {"RESLISTA.DBF", "MOVLISTA.DBF", "ListaPrecios",
         "- Existen listas de precios (FERLO) pendientes por cargar."},
        {"RESUFACT.DBF", "MOVIFACT.DBF", "Compras", "- Existen compras pendientes por cargar."},
    };
    for (const Kind& k : kinds) {
        if (!both(k.summary, k.lines) &&
            !(k.archive && recibe.contains(QString::fromLatin1(k.archive))))
            continue;
        p.lines << QString::fromUtf8(k.text);
        addButton(p, QString::fromLatin1(k.button));
    }
    if (anyWithSuffix(recibe, QStringLiteral(".TXT"))) {
        p.lines << QStringLiteral("- Existen nominas pendientes.");
        addButton(p, QStringLiteral("Nomina"));
    }
    if (anyWithSuffix(recibe, QStringLiteral(".IMP")))
        addButton(p, QStringLiteral("ReimprimirNomina"));
    if (both("RESUODES.DBF", "MOVIODES.DBF"))
        p.lines << QStringLiteral("- Existen orden de despacho pendientes.");
    if (upperNames(appFolder + QStringLiteral("/Actualizar"))
            .contains(QStringLiteral("ACTUALIZAR.EXE")) ||
        upperNames(appFolder + QStringLiteral("/Actualizar"))
            .contains(QStringLiteral("ACTUALIZAR")))
        p.lines << QStringLiteral("- Existen actualizaciones pendientes (Cierre el sistema).");
    return p;
}

} // namespace orvo::shell
