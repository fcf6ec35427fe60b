// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's state and market rules.
#include "site/market_store.h"

#include <algorithm>
#include <map>

#include "site/site_text.h"

namespace lw::site {

namespace {

constexpr const char* kSchema = R"sql(
PRAGMA journal_mode=WAL;
PRAGMA synchronous=NORMAL;
-- Pages of the market kept in memory, up to 128 MB: a market of 40,000 lots
-- is some 30 MB, and every list page reads through the lots of a member.
PRAGMA cache_size=-131072;
CREATE TABLE IF NOT EXISTS users (
    id INTEGER PRIMARY KEY,
    user_id TEXT NOT NULL UNIQUE COLLATE NOCASE,
    password TEXT NOT NULL,
    email TEXT NOT NULL,
    location TEXT NOT NULL DEFAULT '',
    feedback INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE IF NOT EXISTS items (
    number INTEGER PRIMARY KEY,
    seller INTEGER NOT NULL,
    title TEXT NOT NULL,
    category INTEGER NOT NULL,
    description TEXT NOT NULL DEFAULT '',
    location TEXT NOT NULL DEFAULT '',
    start_time INTEGER NOT NULL,
    end_time INTEGER NOT NULL,
    minimum_bid INTEGER NOT NULL,
    reserve INTEGER NOT NULL DEFAULT 0,
    quantity INTEGER NOT NULL DEFAULT 1,
    options TEXT NOT NULL DEFAULT '',
    settled INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX IF NOT EXISTS items_by_seller ON items (seller, end_time, number);
CREATE INDEX IF NOT EXISTS items_unsettled ON items (settled, end_time);
CREATE TABLE IF NOT EXISTS bids (
    id INTEGER PRIMARY KEY,
    item INTEGER NOT NULL,
    bidder INTEGER NOT NULL,
    maximum INTEGER NOT NULL,
    quantity INTEGER NOT NULL DEFAULT 1,
    time INTEGER NOT NULL
);
CREATE INDEX IF NOT EXISTS bids_by_item ON bids (item);
CREATE INDEX IF NOT EXISTS bids_by_bidder ON bids (bidder, item);
-- One row per bidder and lot, kept in end order, so that a page of the
-- bidding list is a plain index range however many lots the bidder has.
CREATE TABLE IF NOT EXISTS bidder_lots (
    bidder INTEGER NOT NULL,
    item INTEGER NOT NULL,
    end_time INTEGER NOT NULL,
    PRIMARY KEY (bidder, item)
) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS bidder_lots_by_end ON bidder_lots (bidder, end_time, item);
CREATE TABLE IF NOT EXISTS watch (
    user INTEGER NOT NULL,
    item INTEGER NOT NULL,
    PRIMARY KEY (user, item)
) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS ledger (
    id INTEGER PRIMARY KEY,
    user INTEGER NOT NULL,
    time INTEGER NOT NULL,
    type TEXT NOT NULL,
    item INTEGER,
    debit INTEGER NOT NULL DEFAULT 0,
    credit INTEGER NOT NULL DEFAULT 0,
    sold_price INTEGER,
    note TEXT NOT NULL DEFAULT ''
);
CREATE INDEX IF NOT EXISTS ledger_by_user ON ledger (user, time, id);
-- A page of the ledger and the balance before it read this index alone, so a
-- page deep in a long ledger costs little more than the first.
CREATE INDEX IF NOT EXISTS ledger_balance ON ledger (user, time, id, credit, debit);
CREATE TABLE IF NOT EXISTS feedback (
    id INTEGER PRIMARY KEY,
    from_user INTEGER NOT NULL,
    to_user INTEGER NOT NULL,
    item INTEGER NOT NULL DEFAULT 0,
    kind TEXT NOT NULL,
    comment TEXT NOT NULL,
    time INTEGER NOT NULL
);
CREATE INDEX IF NOT EXISTS feedback_by_user ON feedback (to_user, time);
CREATE TABLE IF NOT EXISTS pending (
    token TEXT PRIMARY KEY,
    seller INTEGER NOT NULL,
    title TEXT NOT NULL,
    category INTEGER NOT NULL,
    description TEXT NOT NULL,
    location TEXT NOT NULL,
    minimum_bid INTEGER NOT NULL,
    reserve INTEGER NOT NULL,
    quantity INTEGER NOT NULL,
    options TEXT NOT NULL,
    duration INTEGER NOT NULL,
    created INTEGER NOT NULL
);
CREATE TABLE IF NOT EXISTS pending_details (
    token TEXT NOT NULL,
    position INTEGER NOT NULL,
    name TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (token, position)
) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS item_details (
    item INTEGER NOT NULL,
    position INTEGER NOT NULL,
    name TEXT NOT NULL,
    value TEXT NOT NULL,
    PRIMARY KEY (item, position)
) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS counters (
    name TEXT PRIMARY KEY,
    value INTEGER NOT NULL
);
)sql";

constexpr const char* kItemColumns =
    "number, seller, title, category, description, location, start_time, end_time, "
    "minimum_bid, reserve, quantity, options";

constexpr std::int64_t kFirstItemNumber = 1000001;

bool Outranks(const Bid& a, const Bid& b) {
    if (a.maximum != b.maximum) {
        return a.maximum > b.maximum;
    }
    return a.time != b.time ? a.time < b.time : a.id < b.id;
}

}  // namespace

std::int64_t ItemView::SoldTotal() const {
    std::int64_t total = 0;
    for (const Winner& winner : winners) {
        total += winner.price * winner.quantity;
    }
    return total;
}

MarketStore::MarketStore(const std::string& path) : m_db(path) {
    CreateSchema();
}

void MarketStore::CreateSchema() {
    m_db.Exec(kSchema);
}

bool MarketStore::IsEmpty() {
    return UserCount() == 0;
}

void MarketStore::Wipe() {
    m_db.Exec(
        "DELETE FROM users; DELETE FROM items; DELETE FROM bids; DELETE FROM bidder_lots; "
        "DELETE FROM watch; "
        "DELETE FROM ledger; DELETE FROM feedback; DELETE FROM pending; DELETE FROM counters; "
        "DELETE FROM pending_details; DELETE FROM item_details;");
}

std::int64_t MarketStore::AddUser(const User& user) {
    m_db.Prepare(
            "INSERT INTO users (user_id, password, email, location, feedback) VALUES (?, ?, ?, ?, "
            "?)")
        .BindAll(user.userId, user.password, user.email, user.location, user.feedback)
        .Run();
    return m_db.LastInsertId();
}

namespace {

User ReadUser(Stmt& stmt) {
    User user;
    user.id = stmt.Int(0);
    user.userId = stmt.Text(1);
    user.password = stmt.Text(2);
    user.email = stmt.Text(3);
    user.location = stmt.Text(4);
    user.feedback = static_cast<int>(stmt.Int(5));
    return user;
}

}  // namespace

std::optional<User> MarketStore::FindUser(const std::string& userId) {
    Stmt& stmt = m_db.Prepare(
        "SELECT id, user_id, password, email, location, feedback FROM users WHERE user_id = ?");
    stmt.Bind(1, userId);
    if (!stmt.Step()) {
        return std::nullopt;
    }
    return ReadUser(stmt);
}

std::optional<User> MarketStore::UserById(std::int64_t id) {
    Stmt& stmt = m_db.Prepare(
        "SELECT id, user_id, password, email, location, feedback FROM users WHERE id = ?");
    stmt.Bind(1, id);
    if (!stmt.Step()) {
        return std::nullopt;
    }
    return ReadUser(stmt);
}

void MarketStore::SetPassword(std::int64_t userId, const std::string& password) {
    m_db.Prepare("UPDATE users SET password = ? WHERE id = ?").BindAll(password, userId).Run();
}

void MarketStore::AdjustFeedback(std::int64_t userId, int delta) {
    m_db.Prepare("UPDATE users SET feedback = feedback + ? WHERE id = ?")
        .BindAll(delta, userId)
        .Run();
}

std::int64_t MarketStore::UserCount() {
    Stmt& stmt = m_db.Prepare("SELECT COUNT(*) FROM users");
    stmt.Step();
    return stmt.Int(0);
}

std::vector<std::int64_t> MarketStore::UserIds() {
    return Numbers(m_db.Prepare("SELECT id FROM users ORDER BY id"));
}

std::int64_t MarketStore::AddItem(const Item& item) {
    std::int64_t number = item.number;
    if (number == 0) {
        Stmt& next = m_db.Prepare("SELECT COALESCE(MAX(number) + 1, ?) FROM items");
        next.Bind(1, kFirstItemNumber);
        next.Step();
        number = next.Int(0);
    }
    m_db.Prepare(std::string("INSERT INTO items (") + kItemColumns +
                 ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .BindAll(number, item.sellerId, item.title, item.category, item.description, item.location,
                 item.startTime, item.endTime, item.minimumBid, item.reserve, item.quantity,
                 item.options)
        .Run();
    return number;
}

Item MarketStore::ReadItem(Stmt& stmt) {
    Item item;
    item.number = stmt.Int(0);
    item.sellerId = stmt.Int(1);
    item.title = stmt.Text(2);
    item.category = static_cast<int>(stmt.Int(3));
    item.description = stmt.Text(4);
    item.location = stmt.Text(5);
    item.startTime = stmt.Int(6);
    item.endTime = stmt.Int(7);
    item.minimumBid = stmt.Int(8);
    item.reserve = stmt.Int(9);
    item.quantity = static_cast<int>(stmt.Int(10));
    item.options = stmt.Text(11);
    return item;
}

std::optional<Item> MarketStore::FindItem(std::int64_t number) {
    Stmt& stmt =
        m_db.Prepare(std::string("SELECT ") + kItemColumns + " FROM items WHERE number = ?");
    stmt.Bind(1, number);
    if (!stmt.Step()) {
        return std::nullopt;
    }
    return ReadItem(stmt);
}

void MarketStore::SetTitle(std::int64_t number, const std::string& title) {
    m_db.Prepare("UPDATE items SET title = ? WHERE number = ?").BindAll(title, number).Run();
}

void MarketStore::SetEndTime(std::int64_t number, std::int64_t endTime) {
    m_db.Prepare("UPDATE items SET end_time = ? WHERE number = ?").BindAll(endTime, number).Run();
    m_db.Prepare("UPDATE bidder_lots SET end_time = ? WHERE item = ?")
        .BindAll(endTime, number)
        .Run();
}

std::int64_t MarketStore::ItemCount() {
    Stmt& stmt = m_db.Prepare("SELECT COUNT(*) FROM items");
    stmt.Step();
    return stmt.Int(0);
}

void MarketStore::AddItemDetails(std::int64_t number, const ListingDetails& details) {
    Stmt& insert =
        m_db.Prepare("INSERT INTO item_details (item, position, name, value) VALUES (?, ?, ?, ?)");
    std::int64_t position = 0;
    for (const auto& [name, value] : details) {
        insert.Reset();
        insert.BindAll(number, ++position, name, value).Run();
    }
}

ListingDetails MarketStore::ItemDetails(std::int64_t number) {
    ListingDetails details;
    Stmt& stmt =
        m_db.Prepare("SELECT name, value FROM item_details WHERE item = ? ORDER BY position");
    stmt.Bind(1, number);
    while (stmt.Step()) {
        details.emplace_back(stmt.Text(0), stmt.Text(1));
    }
    return details;
}

std::int64_t MarketStore::AddBid(std::int64_t item, std::int64_t bidderId, std::int64_t maximum,
                                 int quantity, std::int64_t time) {
    m_db.Prepare("INSERT INTO bids (item, bidder, maximum, quantity, time) VALUES (?, ?, ?, ?, ?)")
        .BindAll(item, bidderId, maximum, quantity, time)
        .Run();
    const std::int64_t id = m_db.LastInsertId();
    m_db.Prepare(
            "INSERT OR IGNORE INTO bidder_lots (bidder, item, end_time) "
            "SELECT ?, number, end_time FROM items WHERE number = ?")
        .BindAll(bidderId, item)
        .Run();
    return id;
}

std::int64_t MarketStore::Increment(std::int64_t price) {
    if (price < 100) {
        return 5;
    }
    if (price < 500) {
        return 25;
    }
    if (price < 2500) {
        return 50;
    }
    if (price < 10000) {
        return 100;
    }
    if (price < 25000) {
        return 250;
    }
    return 500;
}

std::int64_t MarketStore::InsertionFee(std::int64_t minimumBid, int quantity) {
    const std::int64_t value = minimumBid * std::max(quantity, 1);
    if (value < 1000) {
        return 25;
    }
    if (value < 2500) {
        return 55;
    }
    if (value < 5000) {
        return 110;
    }
    return 220;
}

std::int64_t MarketStore::FinalValueFee(std::int64_t soldTotal) {
    // 5% of the first $25, 2.5% of the rest, rounded to the cent.
    const std::int64_t first = std::min<std::int64_t>(soldTotal, 2500);
    const std::int64_t rest = soldTotal - first;
    return std::max<std::int64_t>(1, (first * 50 + rest * 25 + 500) / 1000);
}

ItemView MarketStore::View(const Item& item, std::int64_t now) {
    ItemView view;
    view.item = item;
    view.ended = item.endTime <= now;
    view.multiWinner = item.quantity > 1;
    if (const auto seller = UserById(item.sellerId)) {
        view.seller = seller->userId;
        view.sellerFeedback = seller->feedback;
    }

    Stmt& stmt = m_db.Prepare(
        "SELECT b.id, b.bidder, u.user_id, u.feedback, b.maximum, b.quantity, b.time "
        "FROM bids b JOIN users u ON u.id = b.bidder WHERE b.item = ? ORDER BY b.id");
    stmt.Bind(1, item.number);
    std::map<std::int64_t, Bid> standing;  // by bidder
    while (stmt.Step()) {
        Bid bid;
        bid.id = stmt.Int(0);
        bid.item = item.number;
        bid.bidderId = stmt.Int(1);
        bid.bidder = stmt.Text(2);
        bid.bidderFeedback = static_cast<int>(stmt.Int(3));
        bid.maximum = stmt.Int(4);
        bid.quantity = static_cast<int>(stmt.Int(5));
        bid.time = stmt.Int(6);
        ++view.bidCount;
        auto found = standing.find(bid.bidderId);
        if (found == standing.end()) {
            standing.emplace(bid.bidderId, bid);
        } else if (view.multiWinner || bid.maximum > found->second.maximum) {
            // On a shared lot the newest bid replaces the bidder's last one;
            // on a single lot only a higher maximum counts.
            found->second = bid;
        }
    }
    for (auto& [bidder, bid] : standing) {
        view.standing.push_back(bid);
    }
    std::sort(view.standing.begin(), view.standing.end(), Outranks);
    if (view.standing.empty()) {
        return view;
    }

    if (!view.multiWinner) {
        const Bid& top = view.standing.front();
        std::int64_t price = item.minimumBid;
        if (view.standing.size() > 1) {
            const Bid& second = view.standing[1];
            price = std::min(top.maximum, second.maximum + Increment(second.maximum));
        }
        price = std::max(price, item.minimumBid);
        if (item.reserve > 0 && top.maximum >= item.reserve && price < item.reserve) {
            price = item.reserve;
        }
        view.price = price;
        view.reserveMet = item.reserve <= 0 || price >= item.reserve;
        view.winners.push_back({top.bidderId, top.bidder, top.bidderFeedback, 1, price});
        return view;
    }

    // Several units: the best bids take the lot in rank order, and every
    // winner pays the lowest winning bid.
    int left = item.quantity;
    for (const Bid& bid : view.standing) {
        if (left == 0) {
            break;
        }
        const int taken = std::min(bid.quantity, left);
        left -= taken;
        view.winners.push_back({bid.bidderId, bid.bidder, bid.bidderFeedback, taken, bid.maximum});
    }
    const std::int64_t lowest = view.winners.back().price;
    for (Winner& winner : view.winners) {
        winner.price = lowest;
    }
    view.price = lowest;
    return view;
}

std::optional<ItemView> MarketStore::View(std::int64_t number, std::int64_t now) {
    auto item = FindItem(number);
    if (!item) {
        return std::nullopt;
    }
    return View(*item, now);
}

std::vector<std::int64_t> MarketStore::Numbers(Stmt& stmt) {
    std::vector<std::int64_t> numbers;
    while (stmt.Step()) {
        numbers.push_back(stmt.Int(0));
    }
    return numbers;
}

std::map<MarketStore::MarkKey, MarketStore::PageMark>& MarketStore::Marks() {
    if (m_marksWritten != m_db.TotalChanges()) {
        m_marks.clear();
        m_marksWritten = m_db.TotalChanges();
    }
    return m_marks;
}

std::optional<MarketStore::PageMark> MarketStore::MarkFor(const MarkKey& key) {
    const auto& marks = Marks();
    const auto it = marks.find(key);
    return it == marks.end() ? std::nullopt : std::optional<PageMark>(it->second);
}

void MarketStore::Remember(const MarkKey& key, const PageMark& mark) {
    // A few members paging a few lists at a time: a bound, not a cache policy.
    constexpr size_t kMostMarks = 1024;
    auto& marks = Marks();
    if (marks.size() >= kMostMarks) {
        marks.clear();
    }
    marks[key] = mark;
}

std::vector<std::int64_t> MarketStore::ItemList(ListKind kind, std::int64_t userId,
                                                std::int64_t since, std::int64_t offset,
                                                std::int64_t limit, const std::string& byPosition,
                                                const std::string& fromMark) {
    const std::optional<PageMark> mark =
        offset > 0 ? MarkFor({kind, userId, since, 0, offset}) : std::nullopt;
    // The mark stands at or after `since`: the bound in time is left to it,
    // or SQLite would walk the index from `since` up to the mark.
    Stmt& stmt = mark ? m_db.Prepare(fromMark).BindAll(userId, mark->time, mark->id, limit)
                      : m_db.Prepare(byPosition).BindAll(userId, since, limit, offset);
    std::vector<std::int64_t> numbers;
    PageMark last;
    while (stmt.Step()) {
        numbers.push_back(stmt.Int(0));
        last.time = stmt.Int(1);
        last.id = stmt.Int(0);
    }
    if (!numbers.empty()) {
        Remember({kind, userId, since, 0, offset + static_cast<std::int64_t>(numbers.size())},
                 last);
    }
    return numbers;
}

std::vector<std::int64_t> MarketStore::SellingItems(std::int64_t userId, std::int64_t since,
                                                    std::int64_t offset, std::int64_t limit) {
    return ItemList(ListKind::Selling, userId, since, offset, limit,
                    "SELECT number, end_time FROM items WHERE seller = ? AND end_time >= ? "
                    "ORDER BY end_time, number LIMIT ? OFFSET ?",
                    "SELECT number, end_time FROM items WHERE seller = ? "
                    "AND (end_time, number) > (?, ?) ORDER BY end_time, number LIMIT ?");
}

std::vector<std::int64_t> MarketStore::BiddingItems(std::int64_t userId, std::int64_t since,
                                                    std::int64_t offset, std::int64_t limit) {
    return ItemList(ListKind::Bidding, userId, since, offset, limit,
                    "SELECT item, end_time FROM bidder_lots WHERE bidder = ? AND end_time >= ? "
                    "ORDER BY end_time, item LIMIT ? OFFSET ?",
                    "SELECT item, end_time FROM bidder_lots WHERE bidder = ? "
                    "AND (end_time, item) > (?, ?) ORDER BY end_time, item LIMIT ?");
}

std::vector<std::int64_t> MarketStore::WatchedItems(std::int64_t userId, std::int64_t since,
                                                    std::int64_t offset, std::int64_t limit) {
    return ItemList(ListKind::Watched, userId, since, offset, limit,
                    "SELECT i.number, i.end_time FROM watch w JOIN items i ON i.number = w.item "
                    "WHERE w.user = ? AND i.end_time >= ? "
                    "ORDER BY i.end_time, i.number LIMIT ? OFFSET ?",
                    "SELECT i.number, i.end_time FROM watch w JOIN items i ON i.number = w.item "
                    "WHERE w.user = ? AND (i.end_time, i.number) > (?, ?) "
                    "ORDER BY i.end_time, i.number LIMIT ?");
}

std::vector<std::int64_t> MarketStore::RunningItemsOf(std::int64_t userId, std::int64_t now) {
    return Numbers(m_db.Prepare("SELECT number FROM items WHERE seller = ? AND end_time > ? "
                                "ORDER BY end_time, number")
                       .BindAll(userId, now));
}

void MarketStore::AddWatch(std::int64_t userId, std::int64_t item) {
    m_db.Prepare("INSERT OR IGNORE INTO watch (user, item) VALUES (?, ?)")
        .BindAll(userId, item)
        .Run();
}

void MarketStore::AddLedger(std::int64_t userId, const LedgerRow& row) {
    m_db.Prepare(
            "INSERT INTO ledger (user, time, type, item, debit, credit, sold_price, note) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
        .BindAll(userId, row.time, row.type, row.item, row.debit, row.credit, row.soldPrice,
                 row.note)
        .Run();
}

std::vector<LedgerRow> MarketStore::Ledger(std::int64_t userId, std::int64_t since,
                                           std::int64_t now, std::int64_t offset,
                                           std::int64_t limit) {
    std::vector<LedgerRow> rows;
    const std::optional<PageMark> mark =
        offset > 0 ? MarkFor({ListKind::Ledger, userId, since, now, offset}) : std::nullopt;
    // From a mark, as in ItemList: the mark is the lower bound.
    Stmt& stmt = mark ? m_db.Prepare(
                                "SELECT id, time, type, item, debit, credit, sold_price, note FROM "
                                "ledger WHERE user = ? AND time <= ? "
                                "AND (time, id) > (?, ?) ORDER BY time, id LIMIT ?")
                            .BindAll(userId, now, mark->time, mark->id, limit)
                      : m_db.Prepare(
                                "SELECT id, time, type, item, debit, credit, sold_price, note FROM "
                                "ledger WHERE id IN (SELECT id FROM ledger WHERE user = ? AND "
                                "time >= ? AND time <= ? ORDER BY time, id LIMIT ? OFFSET ?) "
                                "ORDER BY time, id")
                            .BindAll(userId, since, now, limit, offset);
    while (stmt.Step()) {
        LedgerRow row;
        row.id = stmt.Int(0);
        row.time = stmt.Int(1);
        row.type = stmt.Text(2);
        if (!stmt.IsNull(3)) {
            row.item = stmt.Int(3);
        }
        row.debit = stmt.Int(4);
        row.credit = stmt.Int(5);
        if (!stmt.IsNull(6)) {
            row.soldPrice = stmt.Int(6);
        }
        row.note = stmt.Text(7);
        rows.push_back(row);
    }
    if (rows.empty()) {
        return rows;
    }
    std::int64_t balance = 0;
    if (mark) {
        balance = mark->balance;
    } else {
        Stmt& opening = m_db.Prepare(
            "SELECT COALESCE(SUM(credit - debit), 0) FROM ledger "
            "WHERE user = ?1 AND (time < ?2 OR (time = ?2 AND id < ?3))");
        opening.BindAll(userId, rows.front().time, rows.front().id);
        opening.Step();
        balance = opening.Int(0);
    }
    for (LedgerRow& row : rows) {
        balance += row.credit - row.debit;
        row.balance = balance;
    }
    Remember(
        {ListKind::Ledger, userId, since, now, offset + static_cast<std::int64_t>(rows.size())},
        {rows.back().time, rows.back().id, balance});
    return rows;
}

std::int64_t MarketStore::Balance(std::int64_t userId, std::int64_t now) {
    Stmt& stmt = m_db.Prepare(
        "SELECT COALESCE(SUM(credit - debit), 0) FROM ledger WHERE user = ? AND time <= ?");
    stmt.BindAll(userId, now);
    stmt.Step();
    return stmt.Int(0);
}

std::optional<LedgerRow> MarketStore::LastPayment(std::int64_t userId, std::int64_t now) {
    Stmt& stmt = m_db.Prepare(
        "SELECT time, type, credit FROM ledger WHERE user = ? AND time <= ? AND credit > 0 "
        "ORDER BY time DESC, id DESC LIMIT 1");
    stmt.BindAll(userId, now);
    if (!stmt.Step()) {
        return std::nullopt;
    }
    LedgerRow row;
    row.time = stmt.Int(0);
    row.type = stmt.Text(1);
    row.credit = stmt.Int(2);
    return row;
}

void MarketStore::Settle(std::int64_t now) {
    const std::vector<std::int64_t> due =
        Numbers(m_db.Prepare("SELECT number FROM items WHERE settled = 0 AND end_time <= ? "
                             "ORDER BY end_time, number")
                    .BindAll(now));
    if (due.empty()) {
        return;
    }
    DbTransaction transaction(m_db);
    for (const std::int64_t number : due) {
        const auto view = View(number, now);
        if (view && view->Sold()) {
            LedgerRow fee;
            fee.time = view->item.endTime;
            fee.type = "Final Auction Value fee";
            fee.item = number;
            fee.soldPrice = view->SoldTotal();
            fee.debit = FinalValueFee(*fee.soldPrice);
            fee.note = "sold for " + Money(*fee.soldPrice);
            AddLedger(view->item.sellerId, fee);
        }
        m_db.Prepare("UPDATE items SET settled = 1 WHERE number = ?").BindAll(number).Run();
    }
    transaction.Commit();
}

void MarketStore::AddFeedback(std::int64_t fromId, std::int64_t toId, std::int64_t item,
                              const std::string& kind, const std::string& comment,
                              std::int64_t time) {
    m_db.Prepare(
            "INSERT INTO feedback (from_user, to_user, item, kind, comment, time) "
            "VALUES (?, ?, ?, ?, ?, ?)")
        .BindAll(fromId, toId, item, kind, comment, time)
        .Run();
}

std::vector<FeedbackRow> MarketStore::FeedbackFor(std::int64_t userId, int limit) {
    std::vector<FeedbackRow> rows;
    Stmt& stmt = m_db.Prepare(
        "SELECT u.user_id, f.item, f.kind, f.comment, f.time FROM feedback f "
        "JOIN users u ON u.id = f.from_user WHERE f.to_user = ? "
        "ORDER BY f.time DESC, f.id DESC LIMIT ?");
    stmt.BindAll(userId, limit);
    while (stmt.Step()) {
        rows.push_back({stmt.Text(0), stmt.Int(1), stmt.Text(2), stmt.Text(3), stmt.Int(4)});
    }
    return rows;
}

std::string MarketStore::AddPending(const PendingListing& listing, std::int64_t now) {
    m_db.Prepare(
            "INSERT INTO counters (name, value) VALUES ('pending', 1) "
            "ON CONFLICT (name) DO UPDATE SET value = value + 1")
        .Run();
    Stmt& counter = m_db.Prepare("SELECT value FROM counters WHERE name = 'pending'");
    counter.Step();
    const std::int64_t serial = counter.Int(0);
    // Unguessable enough for a demo, and the same in every run of a seed.
    const std::uint64_t mixed =
        (static_cast<std::uint64_t>(serial) * 0x9E3779B97F4A7C15ULL) ^
        static_cast<std::uint64_t>(listing.sellerId) * 0xBF58476D1CE4E5B9ULL;
    std::string token(1, 'L');
    token.append(std::to_string(serial)).append(1, 'x').append(std::to_string(mixed % 1000003));
    const Item& item = listing.item;
    m_db.Prepare(
            "INSERT INTO pending (token, seller, title, category, description, location, "
            "minimum_bid, reserve, quantity, options, duration, created) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .BindAll(token, listing.sellerId, item.title, item.category, item.description,
                 item.location, item.minimumBid, item.reserve, item.quantity, item.options,
                 listing.durationDays, now)
        .Run();
    Stmt& detail = m_db.Prepare(
        "INSERT INTO pending_details (token, position, name, value) VALUES (?, ?, ?, ?)");
    std::int64_t position = 0;
    for (const auto& [name, value] : listing.details) {
        detail.Reset();
        detail.BindAll(token, ++position, name, value).Run();
    }
    return token;
}

std::optional<PendingListing> MarketStore::TakePending(const std::string& token) {
    Stmt& stmt = m_db.Prepare(
        "SELECT seller, title, category, description, location, minimum_bid, reserve, quantity, "
        "options, duration FROM pending WHERE token = ?");
    stmt.Bind(1, token);
    if (!stmt.Step()) {
        return std::nullopt;
    }
    PendingListing listing;
    listing.token = token;
    listing.sellerId = stmt.Int(0);
    listing.item.sellerId = listing.sellerId;
    listing.item.title = stmt.Text(1);
    listing.item.category = static_cast<int>(stmt.Int(2));
    listing.item.description = stmt.Text(3);
    listing.item.location = stmt.Text(4);
    listing.item.minimumBid = stmt.Int(5);
    listing.item.reserve = stmt.Int(6);
    listing.item.quantity = static_cast<int>(stmt.Int(7));
    listing.item.options = stmt.Text(8);
    listing.durationDays = static_cast<int>(stmt.Int(9));
    Stmt& details =
        m_db.Prepare("SELECT name, value FROM pending_details WHERE token = ? ORDER BY position");
    details.Bind(1, token);
    while (details.Step()) {
        listing.details.emplace_back(details.Text(0), details.Text(1));
    }
    m_db.Prepare("DELETE FROM pending WHERE token = ?").Bind(1, token).Run();
    m_db.Prepare("DELETE FROM pending_details WHERE token = ?").Bind(1, token).Run();
    return listing;
}

}  // namespace lw::site
