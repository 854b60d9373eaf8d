#pragma once

#include "common/db/connection.h"

#include <QString>
#include <array>
#include <stdexcept>

namespace orvo::shell {

// A start-up error that ends the program: shown as number, line break, description.
class StartupError : public std::runtime_error {
public:
    StartupError(int number, const QString& description)
        : std::runtime_error(description.toStdString()), m_number(number),
          m_description(description) {}
    int number() const { return m_number; }
    const QString& description() const { return m_description; }
    QString message() const { return QString::number(m_number) + u'\n' + m_description; }

private:
    int m_number;
    QString m_description;
};

// data/srvsql.txt: five lines, read and written whole.
//   1 database (embedded: the SQLite file's name under data/)
//   2 server: empty or "(local)" = embedded SQLite; otherwise PostgreSQL "host[:port]"
//   3 authentication: 0 integrated, any other number user and password
//   4 user
//   5 password, scrambled
struct ServerConfig {
    std::array<QString, 5> lines; // as read, untrimmed

    QString database() const { return lines[0].trimmed(); }
    QString server() const { return lines[1].trimmed(); }
    // Line 3 read as a number (text that is not a number reads 0).
    int authMode() const;
    bool passwordAuth() const { return authMode() != 0; }
    QString user() const { return lines[3].trimmed(); }
    QString clearPassword() const;
    // A line 5 that is not a scrambled password (typed by hand into the file) would connect
    // with an empty one: this says so, or is empty when the line is fine.
    QString passwordLineProblem() const;
    bool isEmbedded() const;

    static ServerConfig fromFields(const QString& server, const QString& database,
                                   bool passwordAuth, const QString& user,
                                   const QString& clearPassword);
    // The connection the configuration selects; `dataDir` is where embedded files live.
    db::ConnectionSettings connectionSettings(const QString& dataDir) const;
};

// Reads the file; more than five lines is error 9 (subscript out of range), an unreadable file
// error 53 or 75, each as StartupError.
ServerConfig readServerConfig(const QString& path);
// Writes the five lines, creating the folder; the file is readable by its owner only.
void writeServerConfig(const QString& path, const ServerConfig& config);

// A PostgreSQL database name as written in line 1, read the way the server reads a name in SQL:
// unquoted it is folded to lower case (CREATE DATABASE TIENDA01 makes "tienda01"), in double
// quotes it is kept exactly ("Tienda01").
QString postgresDatabaseName(const QString& line);

// The embedded file for a database name: "ORVO" -> dataDir/ORVO.sqlite; a name with an
// extension is kept as it is.
QString embeddedFile(const QString& dataDir, const QString& database);

} // namespace orvo::shell
