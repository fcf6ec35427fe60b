// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/root_lock.h"

#include <QDir>

namespace lw::core {

namespace {

// The pause between two tries while waiting; the caller is asked in between.
constexpr int kWaitStepMs = 250;

}  // namespace

QString RootLock::PathIn(const QString& dataDir, const QString& fileName) {
    return QDir(dataDir).filePath(fileName);
}

RootLock::RootLock(const QString& dataDir, const QString& fileName)
    : m_path(PathIn(dataDir, fileName)), m_file(m_path) {
    m_file.setStaleLockTime(0);
}

bool RootLock::TryLock() {
    return m_file.tryLock(0);
}

bool RootLock::Lock(const std::function<bool()>& keepWaiting) {
    for (;;) {
        if (m_file.tryLock(kWaitStepMs)) {
            return true;
        }
        if (!Busy() || (keepWaiting && !keepWaiting())) {
            return false;
        }
    }
}

void RootLock::Unlock() {
    m_file.unlock();
}

bool RootLock::Busy() const {
    return m_file.error() == QLockFile::LockFailedError;
}

qint64 RootLock::HolderPid() const {
    qint64 pid = 0;
    QString host;
    QString application;
    return m_file.getLockInfo(&pid, &host, &application) ? pid : 0;
}

}  // namespace lw::core
