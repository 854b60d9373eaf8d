#pragma once

#include <QSqlDatabase>
#include <QStringList>

class QTextStream;

// The headless export and mail: the same jobs as the screens, progress on the terminal.
namespace orvo::exchange {

// orvo export [--desde DD/MM/AAAA] [--hasta DD/MM/AAAA] [--formato orvo|vandu|xml]
// Both dates default to today, the format to orvo. Progress goes to `err`, the path of the
// package made to `out` (nothing when no table had rows). Returns the exit code.
int exportCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                  QTextStream& err);

// orvo mail [--xml]: mails the packages of the export folder as frmEnvioTraNet does
// (fmEnvioTraNet2 with --xml), one log line per step on `out`. 0 when the last message went out.
int mailCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                QTextStream& err);

// orvo mail-account [HOST:PUERTO]: shows or sets the outgoing server of the store's mail account.
int mailAccountCommand(const QSqlDatabase& db, const QStringList& args, QTextStream& out,
                       QTextStream& err);

} // namespace orvo::exchange
