// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli scan: runs one protocol of a rule file over a saved page and
// prints the records it yields, so that a rule author sees at once what a
// changed page or a changed rule does. It reads no database and reaches no
// network: ancillary pages come from a folder of saved pages.
#pragma once

#include <QString>
#include <QTextStream>

namespace lw::app {

// Scans pageFile with the run protocol `protocol` of rulesFile (loaded into a
// rule store of its own, as rule store 0). Prints one JSON object per line
// for each record, field -> value in item order: skipped items as "--", an
// item with no field under its macro name ("[3]"), then the includes and the
// extra writes. Each ancillary record the scan triggers is printed on its own
// line before its main record, with "@protocol" naming its protocol first.
//
// Ancillary pages are looked up in pagesDir by their address: first in
// pagesDir/index.txt, whose lines are the address, a tab, and a file name
// relative to pagesDir; else as the file named by the address percent-encoded
// (every character but letters, digits and "-._~"). A page not found is
// passed over with a note on err. Macros of an ancillary address: the
// fields of the record so far, and [SKIP] as 0; others stay as written.
//
// Returns an exit code of cli_commands.h: kExitOk when the page was scanned,
// kExitNotFound when the rule file has no such protocol, kExitFailure when a
// file cannot be read or the page lacks GStart or Gend.
int RunScan(const QString& rulesFile, const QString& protocol, const QString& pageFile,
            const QString& pagesDir, QTextStream& out, QTextStream& err);

}  // namespace lw::app
