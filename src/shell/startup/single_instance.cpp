#include "shell/startup/single_instance.h"

#include "shell/startup/app_home.h"

#include <QCryptographicHash>
#include <QDir>
#include <QStandardPaths>

namespace orvo::shell {

SingleInstance::SingleInstance(const QString& lockPath)
    : m_lock(std::make_unique<QLockFile>(lockPath)) {
    m_lock->setStaleLockTime(0); // a live process keeps it; a dead one's lock is stale
}

bool SingleInstance::acquire() {
    return m_lock->isLocked() || m_lock->tryLock(0);
}

QString SingleInstance::defaultLockPath() {
    // The user's own runtime folder (XDG_RUNTIME_DIR), one lock per application folder: another
    // user, or the same user with another ORVO_HOME, is another workstation.
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = appHome();
    QDir().mkpath(folder);
    const QByteArray key =
        QCryptographicHash::hash(QDir(appHome()).absolutePath().toUtf8(), QCryptographicHash::Sha1)
            .toHex()
            .left(16);
    return folder + QStringLiteral("/orvo-") + QString::fromLatin1(key) + QStringLiteral(".lock");
}

} // namespace orvo::shell
