// SPDX-License-Identifier: GPL-3.0-or-later
// The update lock: the root lock "update.lock" with the update's own words.
#include "update/update_lock.h"

#include <QDir>

#include "core/session.h"

namespace lw::update {

namespace {

const QString kFileName = QStringLiteral("update.lock");

}  // namespace

QString UpdateLock::PathIn(const QString& dataDir) {
    return core::RootLock::PathIn(dataDir, kFileName);
}

UpdateLock::UpdateLock(const QString& dataDir)
    : m_lock(dataDir.isEmpty() ? core::CurrentSession().DataDir : dataDir, kFileName) {}

QString UpdateLock::FailureMessage() const {
    if (Busy()) {
        return QStringLiteral("An update is already running (process %1).").arg(HolderPid());
    }
    return QStringLiteral("The update lock %1 could not be made; no update was started.")
        .arg(QDir::toNativeSeparators(Path()));
}

}  // namespace lw::update
