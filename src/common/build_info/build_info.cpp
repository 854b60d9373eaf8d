#include "common/build_info/build_info.h"

namespace orvo {
QString versionString() {
    return QStringLiteral(ORVO_VERSION);
}
} // namespace orvo
