// SPDX-License-Identifier: GPL-3.0-or-later
// Post-update repair: mends the Nulls that pages leave in scanned rows (at
// every start, after every update, on entering the task list, after an
// import), and ties retrieved auctions to the creator records they were
// posted from. It never reports; a table with nothing to mend is untouched.
#pragma once

#include <QDateTime>

#include "core/store.h"

namespace lw::update {

void RepairNulls(core::Database& db);
// The same with the local time given: it dates the end of an item that has
// none and the site clock when it was never read.
void RepairNulls(core::Database& db, const QDateTime& now);
// Runs only when the creator left the "eBayPost" mark for the current user.
void ReconcileCreatorRows(core::Database& db);
// The same with today's date given (the post date when none was kept).
void ReconcileCreatorRows(core::Database& db, const QDate& today);

}  // namespace lw::update
