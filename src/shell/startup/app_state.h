#pragma once

#include "shell/session/session_context.h"
#include "shell/startup/main_connection.h"
#include "shell/startup/server_config.h"

#include <QDate>
#include <QString>

namespace orvo::shell {

// Process-wide state of the desktop program, owned by the shell and borrowed by every screen.
// Only the UI thread touches it.
SessionContext& session();
// The lines of data/srvsql.txt as last read or written.
ServerConfig& currentServerConfig();
// Whether a user is logged in now.
bool isLoggedIn();
void setLoggedIn(bool loggedIn);

// Where a printed document is proposed as a PDF file: the store's report folder (created when
// missing), the file named after the document and the day, "Cierre de Caja 2026-11-23.pdf".
QString reportPdfPath(const QString& document, const QDate& day = QDate::currentDate());

// mainDb() (main_connection.h) is the shared connection "orvo_main".

} // namespace orvo::shell
