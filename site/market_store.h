// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's state: users, items, bids, watch lists, the account
// ledger, feedback and listings awaiting confirmation, in the site's own
// SQLite file, and the market rules that turn bids into prices and winners.
// Money is whole cents and times are epoch seconds of the site's clock. It
// renders nothing and holds no lock: callers serialise access.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "site/sqlite_db.h"

namespace lw::site {

struct User {
    std::int64_t id = 0;
    std::string userId;
    std::string password;
    std::string email;
    std::string location;
    int feedback = 0;
};

struct Item {
    std::int64_t number = 0;
    std::int64_t sellerId = 0;
    std::string title;
    int category = 0;
    std::string description;
    std::string location;
    std::int64_t startTime = 0;
    std::int64_t endTime = 0;
    std::int64_t minimumBid = 0;
    std::int64_t reserve = 0;  // 0: none
    int quantity = 1;          // above 1: several winners share the lot
    std::string options;       // listing upgrades, "bold~featured~"
};

struct Bid {
    std::int64_t id = 0;
    std::int64_t item = 0;
    std::int64_t bidderId = 0;
    std::string bidder;
    int bidderFeedback = 0;
    std::int64_t maximum = 0;  // per unit
    int quantity = 1;
    std::int64_t time = 0;
};

struct Winner {
    std::int64_t bidderId = 0;
    std::string bidder;
    int feedback = 0;
    int quantity = 0;
    std::int64_t price = 0;  // per unit
};

// An item as the market sees it at one moment.
struct ItemView {
    Item item;
    std::string seller;
    int sellerFeedback = 0;
    int bidCount = 0;
    bool multiWinner = false;
    bool ended = false;
    bool reserveMet = true;
    std::optional<std::int64_t> price;  // current or final price; none before the first bid
    // Single lots: the high bidder, whether or not the reserve is met. Lots
    // with several winners: every bidder who would win now, in rank order.
    std::vector<Winner> winners;
    // Each bidder's own standing bid (best maximum), for the bidding list.
    std::vector<Bid> standing;
    bool Sold() const { return ended && !winners.empty() && reserveMet; }
    std::int64_t SoldTotal() const;
};

struct LedgerRow {
    std::int64_t id = 0;
    std::int64_t time = 0;
    std::string type;
    std::optional<std::int64_t> item;
    std::int64_t debit = 0;
    std::int64_t credit = 0;
    std::optional<std::int64_t> soldPrice;
    std::string note;
    std::int64_t balance = 0;  // running balance after this row (credit positive)
};

struct FeedbackRow {
    std::string from;
    std::int64_t item = 0;
    std::string kind;
    std::string comment;
    std::int64_t time = 0;
};

// The fields of a sell post that the item's own columns do not hold (picture,
// payment, shipping, regions, options, ...), name and value, sorted by name.
using ListingDetails = std::vector<std::pair<std::string, std::string>>;

// A listing checked by the review post and waiting for the confirm post.
struct PendingListing {
    std::string token;
    std::int64_t sellerId = 0;
    Item item;
    int durationDays = 7;
    ListingDetails details;
};

class MarketStore {
public:
    explicit MarketStore(const std::string& path);

    Db& Database() { return m_db; }
    bool IsEmpty();
    // Drops every row; item numbers start again.
    void Wipe();

    std::int64_t AddUser(const User& user);
    std::optional<User> FindUser(const std::string& userId);
    std::optional<User> UserById(std::int64_t id);
    void SetPassword(std::int64_t userId, const std::string& password);
    void AdjustFeedback(std::int64_t userId, int delta);
    std::int64_t UserCount();
    // Ids in creation order.
    std::vector<std::int64_t> UserIds();

    // Takes the next item number when item.number is 0.
    std::int64_t AddItem(const Item& item);
    std::optional<Item> FindItem(std::int64_t number);
    void SetTitle(std::int64_t number, const std::string& title);
    void SetEndTime(std::int64_t number, std::int64_t endTime);
    std::int64_t ItemCount();
    // The posted fields of a listed item, as its sell post gave them.
    void AddItemDetails(std::int64_t number, const ListingDetails& details);
    ListingDetails ItemDetails(std::int64_t number);

    std::int64_t AddBid(std::int64_t item, std::int64_t bidderId, std::int64_t maximum,
                        int quantity, std::int64_t time);
    ItemView View(const Item& item, std::int64_t now);
    std::optional<ItemView> View(std::int64_t number, std::int64_t now);

    // Lists of one user, running or ended at or after `since`, in end order.
    std::vector<std::int64_t> SellingItems(std::int64_t userId, std::int64_t since,
                                           std::int64_t offset, std::int64_t limit);
    std::vector<std::int64_t> BiddingItems(std::int64_t userId, std::int64_t since,
                                           std::int64_t offset, std::int64_t limit);
    std::vector<std::int64_t> WatchedItems(std::int64_t userId, std::int64_t since,
                                           std::int64_t offset, std::int64_t limit);
    // Items of a seller still running at `now`, for the public list.
    std::vector<std::int64_t> RunningItemsOf(std::int64_t userId, std::int64_t now);
    void AddWatch(std::int64_t userId, std::int64_t item);

    void AddLedger(std::int64_t userId, const LedgerRow& row);
    // Rows dated in [since, now], oldest first, with their running balances.
    std::vector<LedgerRow> Ledger(std::int64_t userId, std::int64_t since, std::int64_t now,
                                  std::int64_t offset, std::int64_t limit);
    std::int64_t Balance(std::int64_t userId, std::int64_t now);
    std::optional<LedgerRow> LastPayment(std::int64_t userId, std::int64_t now);
    // Books the final value fee of every lot that has ended by `now` and sold.
    // Idempotent: each lot is settled once.
    void Settle(std::int64_t now);

    void AddFeedback(std::int64_t fromId, std::int64_t toId, std::int64_t item,
                     const std::string& kind, const std::string& comment, std::int64_t time);
    std::vector<FeedbackRow> FeedbackFor(std::int64_t userId, int limit);

    std::string AddPending(const PendingListing& listing, std::int64_t now);
    std::optional<PendingListing> TakePending(const std::string& token);

    // Fees the site charges; shared by the seeder and the sell post.
    static std::int64_t InsertionFee(std::int64_t minimumBid, int quantity);
    static std::int64_t FinalValueFee(std::int64_t soldTotal);
    static std::int64_t Increment(std::int64_t price);

private:
    void CreateSchema();
    Item ReadItem(Stmt& stmt);
    std::vector<std::int64_t> Numbers(Stmt& stmt);

    // A member's lists are paged by position (skip 0, 50, 100, ...), and
    // walking past every row before a page costs the more the deeper the
    // page, which a real site's pages do not. Where each page served left
    // off is remembered, so that the page after it starts there; any write
    // to the market forgets it all.
    enum class ListKind { Selling, Bidding, Watched, Ledger };
    struct PageMark {
        std::int64_t time = 0;     // the order of the last row served: its time,
        std::int64_t id = 0;       // then its number
        std::int64_t balance = 0;  // a ledger's balance after it
    };
    // The list, the member, its bounds in time and the position of the row
    // after the mark.
    using MarkKey = std::tuple<ListKind, std::int64_t, std::int64_t, std::int64_t, std::int64_t>;
    // The marks, forgotten first when the market was written since they were made.
    std::map<MarkKey, PageMark>& Marks();
    std::optional<PageMark> MarkFor(const MarkKey& key);
    void Remember(const MarkKey& key, const PageMark& mark);
    // A list of item numbers by the query from a mark or by position, each
    // row (number, end time); its last row is remembered.
    std::vector<std::int64_t> ItemList(ListKind kind, std::int64_t userId, std::int64_t since,
                                       std::int64_t offset, std::int64_t limit,
                                       const std::string& byPosition, const std::string& fromMark);

    Db m_db;
    std::map<MarkKey, PageMark> m_marks;
    std::int64_t m_marksWritten = -1;  // the connection's writes when they were made
};

}  // namespace lw::site
