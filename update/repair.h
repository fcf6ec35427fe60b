// Post-update repair: mends the Nulls that pages leave in scanned rows (at
// every start, after every update, on entering the task list, after an
// import), and ties retrieved auctions to the creator records they were
// posted from. It never reports; a table with nothing to mend is untouched.
#pragma once

#include "core/store.h"

namespace lw::update {

void RepairNulls(core::Database& db);
// Runs only when the creator left the "eBayPost" mark for the current user.
void ReconcileCreatorRows(core::Database& db);

}  // namespace lw::update
