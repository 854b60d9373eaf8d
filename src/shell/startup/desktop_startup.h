#pragma once

class QWidget;

namespace orvo::shell {

// Step two of the start: reads data/srvsql.txt and opens the shared connection; without a file
// or without a connection, frmConfServidor in start-up mode takes over. False when the program
// must end (the screen was closed with no connection). Throws StartupError for a broken file.
bool connectAtStartup(QWidget* parent = nullptr);

// Before the first login: a store without any active user gets its administrator through
// frmPrimerInicio. False when that screen was cancelled (the program then ends).
bool firstStartDone(QWidget* parent);

// The whole desktop start: one copy per machine, connection, main window and login. Returns the
// process exit code.
int runDesktopProgram();

} // namespace orvo::shell
