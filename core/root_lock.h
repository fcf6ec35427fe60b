// SPDX-License-Identifier: GPL-3.0-or-later
// A lock file of a program root, under its Data/ folder: held by one process
// at a time for as long as it does the work the file is named for (an update,
// the main window). It never goes stale by age, as the work may last hours;
// a lock left by a process that no longer runs is taken over, which
// QLockFile tells from the process id the file holds.
#pragma once

#include <QLockFile>
#include <QString>
#include <functional>

namespace lw::core {

class RootLock {
public:
    // The lock file fileName in dataDir. Nothing is taken until TryLock or Lock.
    RootLock(const QString& dataDir, const QString& fileName);
    RootLock(const RootLock&) = delete;
    RootLock& operator=(const RootLock&) = delete;

    // Takes the lock unless another process holds it.
    bool TryLock();
    // Waits for the lock; keepWaiting is asked between tries and gives up on
    // false. False also when the lock file cannot be made at all.
    bool Lock(const std::function<bool()>& keepWaiting);
    void Unlock();
    // The last try failed because another process holds the lock (rather
    // than because the file could not be made).
    bool Busy() const;
    // The process that holds the lock, 0 when not known.
    qint64 HolderPid() const;
    QString Path() const { return m_path; }

    static QString PathIn(const QString& dataDir, const QString& fileName);

private:
    QString m_path;
    QLockFile m_file;
};

}  // namespace lw::core
