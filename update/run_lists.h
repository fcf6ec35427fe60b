// SPDX-License-Identifier: GPL-3.0-or-later
// The run lists: which protocols an update command runs, in order, and the
// file RunProt.dat in ScratchDir that carries the list from the command to
// the update window. The lists name protocol sections; nothing here reads a
// protocol's keys or runs anything.
#pragma once

#include <QString>
#include <QStringList>

namespace lw::update {

class RuleStore;

// The commands that start an update, by the menu entry that runs them.
enum class UpdateCommand {
    UpdateAuctions,            // mnuUpdateAuctions_Click: "My Sales Only"
    UpdateBids,                // mnuUpdateBids_Click: "My Bids Only"
    UpdateAccountBalance,      // mnuUpdateAccountBalance_Click
    UpdateComplete,            // mnuUpdateComplete_Click
    UpdateDatabaseAndAccount,  // mnuUpdateDatabaseAndAccount_Click: "Complete (Maximum Data)"
    UpdateAuctionDatabase,     // menUpdateAuctionDatabase_Click: the rule section Update
    SyncTime,                  // mnuSyncTime_Click
    ItemWatch,                 // mnuItemWatch_Click
    AfterPosting,              // the update after a post
    FirstRetrieval,            // the first run at start-up: Update, then "Account History eBay"
};

// The lines of RunProt.dat for a command; the rule section Update is read
// from the given store (rule store 0).
QStringList RunList(UpdateCommand command, const RuleStore& rules);
QStringList RunList(UpdateCommand command);

// The list of the rule section Update: for n = 1 to Protocols, Protocol n,
// one blank, and the name of its site (Site & "Protocol n Site" in section
// Sites).
QStringList RuleUpdateList(const RuleStore& rules);

// ScratchDir & "RunProt.dat".
QString RunListPath();
// Writes the lines, one a line; false with a message naming the file when it
// cannot be written.
bool WriteRunList(const QStringList& lines, QString* error = nullptr);
bool WriteRunList(const QString& path, const QStringList& lines, QString* error = nullptr);
// The lines in file order, with CR LF or LF line ends; empty lines are passed
// over. An absent file reads as no line.
QStringList ReadRunList();
QStringList ReadRunList(const QString& path);

}  // namespace lw::update
