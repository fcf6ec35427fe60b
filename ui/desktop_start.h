// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop program's start: the steps of admin/startup bound to the
// windows. The folders, rules and repair; the user, with the new-user window
// when there is none; a new user's first retrieval through the update
// window; the main window loaded and shown; the tip of the day at its first
// showing. It writes nothing itself and saves nothing at exit. While the main
// window is open it holds the root's window lock, so that a second window
// never works on the same database.
#pragma once

#include <QString>
#include <memory>

#include "core/root_lock.h"

namespace lw::ui {

class frmAuction;

struct DesktopStart {
    // The program root's window lock, held as long as the main window is
    // there: one window per database. Declared first, so it goes last.
    std::unique_ptr<core::RootLock> lock;
    // The main window, shown; null when the program is to end.
    std::unique_ptr<frmAuction> window;
    // The exit code when the program ends at start: 0 when the new-user
    // window was cancelled, 1 after a failure that was told.
    int exitCode = 0;
};

// Runs the start-up over appRoot (the session's ShippedDir must be set).
// A root whose main window is open in another process is refused with a
// message naming that process, before anything of the root is touched.
// Messages go through the session's Ui, which takes the main window as the
// parent of its boxes when it is the desktop one.
DesktopStart StartDesktop(const QString& appRoot);

}  // namespace lw::ui
