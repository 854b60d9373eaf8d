#pragma once

#include <QString>

namespace orvo::security {

// The program's reversible scrambling of passwords (server password in srvsql.txt, users'
// passwords in USUARIOS). Each character becomes its code in decimal with every digit replaced by
// a symbol of the program's own alphabet, the group closed by "?". The code is the character's
// single-byte (Windows-1252) code, or for a character outside it its own code, so every password
// that can be typed scrambles to a text of its own. At most 255 characters; longer text throws
// std::overflow_error.
QString scramble(const QString& clear);
// The reverse; groups that are not made of alphabet symbols are skipped.
QString unscramble(const QString& scrambled);

} // namespace orvo::security
