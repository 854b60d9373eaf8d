#pragma once

#include <QString>

namespace orvo {
// The program's version, as shown in the caption and recorded in VERSIONEJECUTABLE.
QString versionString();
// The system code kept in the session ("Vandu"): a label and a file prefix.
inline QString systemCode() {
    return QStringLiteral("Vandu");
}
} // namespace orvo
