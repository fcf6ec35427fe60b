// SPDX-License-Identifier: GPL-3.0-or-later
// The new-user window's logic: checks what the person typed, adds the Users
// row (the default user) and its UserSites row for site 0, or leaves the
// cancel marker that tells start-up to end. Nothing else in the program
// writes that marker.
#pragma once

#include <QString>

#include "core/session.h"
#include "core/store.h"
#include "core/ui_port.h"

namespace lw::admin {

// What is wrong with the entry: the first field at fault, in the order of the
// window (name, site user ID, password and its repetition, e-mail), and the
// message shown for it. entry None: it may be saved.
enum class NewUserEntry { None, UserName, SiteUserId, Password, RepeatPassword, Email };
struct NewUserCheck {
    NewUserEntry entry = NewUserEntry::None;
    QString message;
};
NewUserCheck CheckNewUser(const core::NewUser& user, const QString& repeatPassword);

// OK: checks, then adds the rows. A problem or a store failure (a name that
// is already taken, for one) is told through the Ui; false then, and nothing
// is written.
bool CreateNewUser(core::Database& db, const core::NewUser& user, const QString& repeatPassword,
                   core::Ui& ui, NewUserEntry* fieldAtFault = nullptr);

// Cancel: leaves nuwcancel.cfg in ScratchDir. False when it cannot be written.
bool CancelNewUser();

}  // namespace lw::admin
