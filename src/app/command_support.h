#pragma once

#include <QMap>
#include <QSet>
#include <QSqlDatabase>
#include <QStringList>
#include <QTextStream>

// What the headless commands share.
namespace orvo::app {

QTextStream& out();
QTextStream& err();

// Progress of long work on the terminal: one line per step, rewritten in place on a terminal.
void printProgress(int percent, const QString& label);

// The store named by data/srvsql.txt. Without the file, `createDefaultConfig` writes one for the
// embedded ORVO database; otherwise UserError says to run 'orvo db init'. A failed connection
// throws UserError with the server's own words.
QSqlDatabase openConfiguredStore(bool createDefaultConfig);

// A secret typed by the operator: on a terminal it is asked without echo (twice when `confirm`),
// otherwise it is the next line of standard input, so that scripts can pipe it in. Throws
// UserError when nothing comes.
QString readSecret(const QString& prompt, bool confirm);

// "--name value" options, "--flag" switches and positional words, as a command declares them.
struct Arguments {
    QMap<QString, QString> values;
    QSet<QString> flags;
    QStringList positional;

    bool has(const QString& flag) const { return flags.contains(flag); }
    QString value(const QString& option) const { return values.value(option); }
};
// Throws UserError naming an unknown option or a value that is missing.
Arguments parseArguments(const QStringList& args, const QStringList& valueOptions,
                         const QStringList& flagOptions);

int dbInit(const QStringList& args);
int serverConfig(const QStringList& args);

} // namespace orvo::app
