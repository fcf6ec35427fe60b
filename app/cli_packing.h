// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli packing-list and remittance: the task manager's packing list
// of a sale or remittance advice of a won bid, built as the task panel builds
// it, then printed as text, written as PDF (which marks it printed, as
// printing from the panel does) or saved as RTF. It never changes the
// database but for that mark, and writes no file it was not asked for.
#pragma once

#include <QString>
#include <QTextStream>

#include "tasks/selected_item.h"

namespace lw::app {

struct PackingRequest {
    tasks::Side side = tasks::Side::Sales;
    QString itemNumber;
    QString bidder;  // the winner of a multi-winner sale
    QString pdfFile;
    QString rtfFile;
};

// Runs on the session's database, which must exist. Returns an exit code of
// cli_commands.h: kExitOk when the document was made and written; kExitUsage
// for a multi-winner sale without --bidder; kExitFailure when the item is not
// there, the build stopped for missing data (the box's text is on err), or a
// file could not be written.
int RunPacking(const PackingRequest& request, QTextStream& out, QTextStream& err);

}  // namespace lw::app
