// SPDX-License-Identifier: GPL-3.0-or-later
// The notes panel of the task manager: the selected item's own notes, which
// the user may change, and beside them the notes of the user's other items
// with the same partner, which are only shown. Nothing here draws; the save
// writes the item's own notes and nothing else.
#pragma once

#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

struct NotesPanel {
    QString frameTitle;         // "Notes for Item #" + ItemNumber
    QString txtToDoNotes;       // AuctionNotes or BidNotes, or "No current notes."
    QString lblToDoPriorNotes;  // "Other Notes About " + the partner
    QString txtToDoPriorNotes;  // one block per other item, or "No other notes"
};

QString NoCurrentNotes();  // "No current notes."

// ShowNotes: nullopt when the record is gone. The partner is HighBidderName
// on a sale and SellerName on a bid; the other notes are those of the
// current user's other sales to that buyer (plain sales and multi-winner
// winners) or bids with that seller, oldest first. Throws core::StoreError.
std::optional<NotesPanel> ShowNotes(core::Database& db, const SelectedItem& item);

// SaveNotes: the box's whole text replaces the notes (AuctionNotes on a sale,
// BidNotes on a bid); an empty box or "No current notes." writes nothing.
SaveOutcome SaveNotes(core::Database& db, const SelectedItem& item, const QString& txtToDoNotes);

}  // namespace lw::tasks
