#include "shell/startup/single_instance.h"

#include <QDir>

namespace orvo::shell {

SingleInstance::SingleInstance(const QString& lockPath)
    : m_lock(std::make_unique<QLockFile>(lockPath)) {
    m_lock->setStaleLockTime(0); // a live process keeps it; a dead one's lock is stale
}

bool SingleInstance::acquire() {
    return m_lock->isLocked() || m_lock->tryLock(0);
}

QString SingleInstance::defaultLockPath() {
    return QDir::tempPath() + QStringLiteral("/orvo-desktop.lock");
}

} // namespace orvo::shell
