// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's own commands as data: the site links built from the rule
// store, the account balance of the status bar, the delete and return-to-task
// commands of the two pop-up menus and what those menus enable for an item,
// and the LastUpdate marks of the complete update. Nothing here draws, asks
// or opens a browser; the window does that with what these return.
#pragma once

#include <QDateTime>
#include <QString>

#include "core/store.h"

namespace lw::views {

// The rule sections of the site links.
enum class SiteLink {
    ViewAuction,          // "eBay View Auction": the item number added at the end
    ViewFeedback,         // "eBay View Feedback": the user name added at the end
    ViewSellersAuctions,  // "eBay View Sellers Auctions": the seller's name added at the end
    RelistItem,           // "eBay Relist Item": "[ItemNumber]" replaced
    MyEBay,               // "eBay MyeBay": "[USERID]" and "[PASSWORD]" from the site row
};
// The address of a link for value (item number or user name; unused for My
// eBay); empty when the rule section or its Url is missing, so that the
// command opens nothing.
QString SiteLinkUrl(core::Database& db, SiteLink link, const QString& value);

// lblInfo(1): the balance of the user's last account statement (the account
// row without an item number), credit less amount due, as "Currency"; "n/a"
// when no statement was retrieved.
QString AccountBalance(core::Database& db);

// Delete Auction / Delete Bid: the user's row of that item.
void DeleteSale(core::Database& db, const QString& itemNumber);
void DeleteBid(core::Database& db, const QString& itemNumber);
// Return Auction (Bid) to Task Manager: ToDoComplete cleared on the user's
// row, as the task manager's own return does (tasks::ReturnToTasks).
void ReturnSaleToTask(core::Database& db, const QString& itemNumber);
void ReturnBidToTask(core::Database& db, const QString& itemNumber);

// What the sales pop-up enables for the selected item. A multi-winner sale
// reads its Dutch row; with no row for the user every entry stays enabled.
struct SalePopup {
    bool relist = true;          // mnuItemRelist: ended items only
    bool bidderFeedback = true;  // mnuPopupViewBidderFeedback: not when NumberBids is "-"
    bool returnToTask = true;    // mnuPopupAuctionReturntoTask: when ToDoComplete is set
    QString highBidder;          // the high bidder of the row read, for the feedback link
};
SalePopup SalePopupFor(core::Database& db, const QString& itemNumber, bool dutch,
                       const QString& timeLeft);

// What the bids pop-up enables, and the seller of the item.
struct BidPopup {
    bool returnToTask = true;  // mnuPopupBidReturnToTask: when ToDoComplete is set
    QString seller;            // SellerName of the Bids row
};
BidPopup BidPopupFor(core::Database& db, const QString& itemNumber);

// The complete update: LastUpdate of the user's site row cleared before the
// run (so that [DAYS] asks for 30 days) and written after it.
void ClearLastUpdate(core::Database& db);
void StampLastUpdate(core::Database& db, const QDateTime& now);

}  // namespace lw::views
