#pragma once

#include <QLockFile>
#include <QString>
#include <memory>

namespace orvo::shell {

// One desktop program per workstation, that is per user and application folder (ORVO_HOME): a
// lock file in the user's runtime folder, held while the program runs. A lock left by a crashed
// program is taken over.
class SingleInstance {
public:
    explicit SingleInstance(const QString& lockPath = defaultLockPath());
    // False when another running copy holds the lock.
    bool acquire();
    static QString defaultLockPath();

private:
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace orvo::shell
