#pragma once

#include <QString>

namespace orvo::shell {

// The application folder: ORVO_HOME, or the per-user data folder. It holds data/srvsql.txt,
// data/rutareporte.txt, Recibe/, Envia/, Estructura/, REPORTES/, the logs and the embedded
// database file.
QString appHome();
// appHome() + "/data/srvsql.txt"
QString serverConfigPath();
// appHome() + "/data"
QString dataDir();
// Creates the folders the program expects under the application folder.
void ensureAppFolders();

} // namespace orvo::shell
