// SPDX-License-Identifier: GPL-3.0-or-later
// One update at a time per program root: every update, from the window or the
// command line, holds a lock file under Data/ for as long as it runs, so that
// two runs never write the same rows side by side. A lock left behind by a
// process that is gone is taken over. Nothing here runs an update.
#pragma once

#include <QString>
#include <functional>

#include "core/root_lock.h"

namespace lw::update {

class UpdateLock {
public:
    // The lock of the program root whose Data/ folder is dataDir; empty: the
    // session's DataDir. Nothing is taken until TryLock or Lock.
    explicit UpdateLock(const QString& dataDir = QString());
    UpdateLock(const UpdateLock&) = delete;
    UpdateLock& operator=(const UpdateLock&) = delete;

    // Takes the lock unless another update holds it.
    bool TryLock() { return m_lock.TryLock(); }
    // Waits for the lock; keepWaiting is asked between tries and gives up on
    // false. False also when the lock file cannot be made at all.
    bool Lock(const std::function<bool()>& keepWaiting) { return m_lock.Lock(keepWaiting); }
    void Unlock() { m_lock.Unlock(); }
    // The last try failed because another update holds it.
    bool Busy() const { return m_lock.Busy(); }

    // The process of the update that holds the lock, 0 when not known.
    qint64 HolderPid() const { return m_lock.HolderPid(); }
    // Why the last try failed, as the user is told.
    QString FailureMessage() const;
    QString Path() const { return m_lock.Path(); }

    static QString PathIn(const QString& dataDir);

private:
    core::RootLock m_lock;
};

}  // namespace lw::update
