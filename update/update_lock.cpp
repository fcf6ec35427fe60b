// SPDX-License-Identifier: GPL-3.0-or-later
// The update lock over QLockFile. The lock never goes stale by age: an update
// may run for an hour. It is taken over only when the process that wrote it
// no longer runs, which QLockFile tells from the process id it holds.
#include "update/update_lock.h"

#include <QDir>

#include "core/session.h"

namespace lw::update {

namespace {

// The pause between two tries while waiting; the caller is asked in between.
constexpr int kWaitStepMs = 250;

}  // namespace

QString UpdateLock::PathIn(const QString& dataDir) {
    return QDir(dataDir).filePath(QStringLiteral("update.lock"));
}

UpdateLock::UpdateLock(const QString& dataDir)
    : m_path(PathIn(dataDir.isEmpty() ? core::CurrentSession().DataDir : dataDir)), m_file(m_path) {
    m_file.setStaleLockTime(0);
}

bool UpdateLock::TryLock() {
    return m_file.tryLock(0);
}

bool UpdateLock::Lock(const std::function<bool()>& keepWaiting) {
    for (;;) {
        if (m_file.tryLock(kWaitStepMs)) {
            return true;
        }
        if (!Busy() || (keepWaiting && !keepWaiting())) {
            return false;
        }
    }
}

void UpdateLock::Unlock() {
    m_file.unlock();
}

bool UpdateLock::Busy() const {
    return m_file.error() == QLockFile::LockFailedError;
}

qint64 UpdateLock::HolderPid() const {
    qint64 pid = 0;
    QString host;
    QString application;
    return m_file.getLockInfo(&pid, &host, &application) ? pid : 0;
}

QString UpdateLock::FailureMessage() const {
    if (Busy()) {
        return QStringLiteral("An update is already running (process %1).").arg(HolderPid());
    }
    return QStringLiteral("The update lock %1 could not be made; no update was started.")
        .arg(QDir::toNativeSeparators(m_path));
}

}  // namespace lw::update
