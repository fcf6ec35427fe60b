// SPDX-License-Identifier: GPL-3.0-or-later
// The read-only panels of the task manager: the item information of a folder
// node, and the summary of a sale or a bid with the history of the user's
// dealings with the same partner (how many, for how much, and the favourite
// categories). Plain structs named after the labels; nothing here draws and
// nothing here writes.
#pragma once

#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

struct ItemInfoPanel {
    // "Item Information: #" + ItemNumber, + " (Dutch Auction)" for a
    // multi-winner winner; "No Pending Tasks" when no item is selected.
    QString frameTitle;
    QString lblInfoCategory;  // "Not applicable" when missing
    QString lblInfoTitle;     // "Not applicable" when missing
};

// ShowItemInfo: an item with no itemNumber, or one whose record is gone,
// shows "No Pending Tasks". Throws core::StoreError.
ItemInfoPanel ShowItemInfo(core::Database& db, const SelectedItem& item);

struct SummaryPanel {
    QString frameTitle;          // "Bid Summary: #" + ItemNumber + " (Ended " + day + ")"
    QString lblSummaryPartner;   // HighBidderName on a sale, SellerName on a bid
    QString lblSummaryFeedback;  // HighBidderFeedback or SellerFeedback
    QString lblSummaryHighBid;
    QString lblSummaryQuantity;
    QString lblSummaryMinimumBid;
    QString lblSummaryReserveBid;
    QString lblSummaryNumberBids;
    // "Bidder History: " + buyer on a sale, "History with " + seller on a bid.
    QString lblHistoryCaption;
    QString lblHistoryCount;     // "0" for none
    QString lblHistoryTotal;     // the high bids summed, "Currency"; "$0.00" for none
    QString lblFavoriteCaption;  // "Favorite Category", or "Favorite Categories" on a tie
    QString lblFavorites;        // one category per line; "None" for none
};

// ShowSaleSummary, ShowBidSummary: nullopt when the record is gone. The
// history counts the current user's ended sales to the buyer (plain and
// multi-winner) or won bids with the seller on the item's site, each item
// once. Throw core::StoreError.
std::optional<SummaryPanel> ShowSaleSummary(core::Database& db, const SelectedItem& item);
std::optional<SummaryPanel> ShowBidSummary(core::Database& db, const SelectedItem& item);

}  // namespace lw::tasks
