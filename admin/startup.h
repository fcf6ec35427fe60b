// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop program's start-up and stop as steps that need no window: the
// folders, the rule store and the repair before the user is chosen, the
// choice of the user with the new-user window as a hook, the first retrieval
// of a new user (the run list and the tip setting around the update window).
// Windows are reached only through the hooks;
// nothing here includes a widget or saves anything at exit.
#pragma once

#include <QString>
#include <functional>

#include "core/session.h"
#include "core/store.h"

namespace lw::admin {

// Steps before the user is chosen: the folders under appRoot, the rule
// store (with a pending protfix.cfg repair), the post-update repair over the
// whole database, the category directory (a downloaded category.pro, or the
// shipped one into a new database), AAViewStart and CAViewStart set to 1, a
// stale nuwcancel.cfg removed, the shipped packing templates copied into
// Configs/ where the user has none, and the shipped listing templates the user
// lacks copied to Templates/Auctions/ (never over the user's own). False, with
// a message naming what failed, when the folders or the database cannot be
// had; rule store and template failures are told by their own messages and
// do not stop the start.
bool PrepareStartup(const QString& appRoot, QString* error);
// The same on a root whose folders SetupDirectories has already made (the
// window makes them first, to take the root's lock before the database).
bool PrepareSetUpRoot(QString* error);

// "Tolvane Lotwright Pro: Welcome " & user & "!"
QString WelcomeCaption(const QString& user);

// Whether the user's site 0 row has never been updated (LastUpdate Null, or
// no such row).
bool FirstRetrievalPending(core::Database& db, const QString& user);

struct FirstRetrievalHooks {
    // The connection test, with no purpose and no message.
    std::function<bool()> isConnected;
    // Shows the main window before the retrieval.
    std::function<void()> showMainWindow;
    // Shows the update window modally over RunProt.dat.
    std::function<void()> updateWindow;
};

enum class FirstRetrieval {
    NotNeeded,     // LastUpdate is set
    NoConnection,  // left silently; the next start tries again
    NoRunList,     // RunProt.dat could not be written: told by message
    Ran,           // the update window ran over the first-run list
};

// The first-retrieval test for the current user: when LastUpdate is Null and
// the site can be reached, shows the main window, turns the start-up tips
// off, tells the user what comes, writes the first-run list to RunProt.dat,
// runs the update window, and turns the tips on again.
FirstRetrieval RunFirstRetrievalTest(core::Database& db, const FirstRetrievalHooks& hooks);

// What the program does after the user was chosen.
enum class StartupChoice {
    Run,           // a user is in session
    EndProgram,    // the new-user window was cancelled: end without a word
    NoDefaultUser  // the Users rows hold no default user: told by message
};
// ChooseUser over the session's database with the new-user window as hook,
// mapped to what the program does next.
StartupChoice ChooseStartupUser(core::Database& db, const std::function<void()>& newUserWindow);

}  // namespace lw::admin
