// SPDX-License-Identifier: GPL-3.0-or-later
// Deterministic demo data for the marketplace.
#include "site/seeder.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "site/categories.h"
#include "site/site_text.h"

namespace lw::site {

namespace {

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 86400;

// splitmix64: small, fast and the same everywhere.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t Next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    // [low, high]
    std::int64_t Between(std::int64_t low, std::int64_t high) {
        return low + static_cast<std::int64_t>(Next() % static_cast<std::uint64_t>(high - low + 1));
    }
    bool Chance(int percent) { return Between(1, 100) <= percent; }
    template <class T, size_t N>
    const T& Pick(const std::array<T, N>& values) {
        return values[static_cast<size_t>(Between(0, N - 1))];
    }

private:
    std::uint64_t m_state;
};

constexpr std::array<const char*, 8> kLocations = {"Springfield, IL", "Portland, OR", "Austin, TX",
                                                   "Burlington, VT",  "Savannah, GA", "Duluth, MN",
                                                   "Tucson, AZ",      "Albany, NY"};

constexpr std::array<const char*, 12> kAdjectives = {"Vintage", "Antique",   "Rare",    "Mint",
                                                     "Boxed",   "Handmade",  "Signed",  "Early",
                                                     "Large",   "Miniature", "Painted", "Carved"};

constexpr std::array<const char*, 16> kNouns = {
    "teapot",       "pocket watch", "fountain pen", "tin robot", "record album", "camera",
    "quilt",        "brooch",       "atlas",        "chess set", "lantern",      "music box",
    "postcard lot", "coin set",     "doll",         "radio"};

constexpr std::array<const char*, 8> kDetails = {"with box", "lot of 3",  "1950s",    "as found",
                                                 "working",  "near mint", "restored", "1920s"};

constexpr std::array<const char*, 25> kNameStarts = {
    "amber",   "birch",   "cobalt", "dune",   "ember",  "fern",   "garnet", "harbor", "indigo",
    "juniper", "kestrel", "linden", "maple",  "nimbus", "onyx",   "pebble", "quartz", "russet",
    "sable",   "thistle", "umber",  "velvet", "willow", "yarrow", "zephyr"};

constexpr std::array<const char*, 10> kNameEnds = {"_trader", "_finds", "_attic", "_books",
                                                   "_coins",  "_cards", "_toys",  "_works",
                                                   "_goods",  "_lane"};

constexpr std::array<int, 4> kDurations = {3, 5, 7, 10};

class Seeder {
public:
    Seeder(MarketStore& store, const SeedOptions& options)
        : m_store(store), m_options(options), m_random(0x4C6F7477726967ULL) {}

    SeedSummary Run() {
        DbTransaction transaction(m_store.Database());
        MakeUsers();
        DemoSales();
        DemoBids();
        PartnerAndMemberLots();
        ExtraSales();
        ExtraBids();
        Payments();
        Feedback();
        transaction.Commit();
        m_store.Settle(m_options.now);
        return {static_cast<int>(m_users.size()), m_store.ItemCount(), m_bidCount};
    }

private:
    std::int64_t Now() const { return m_options.now; }

    std::int64_t AddUser(const std::string& userId, const std::string& password, int feedback) {
        User user;
        user.userId = userId;
        user.password = password;
        std::string mailbox;
        for (const char c : userId) {
            if (c != '\'') {
                mailbox += c;
            }
        }
        static constexpr std::array<const char*, 3> kDomains = {"example.com", "example.net",
                                                                "mail.example.org"};
        user.email = mailbox + "@" + kDomains[m_users.size() % kDomains.size()];
        user.location = kLocations[m_users.size() % kLocations.size()];
        user.feedback = feedback;
        const std::int64_t id = m_store.AddUser(user);
        m_users.push_back(id);
        return id;
    }

    void MakeUsers() {
        m_demo = AddUser(kDemoUserId, kDemoPassword, 42);
        // The partners of the demo scenes; one id carries an apostrophe on purpose.
        m_omalley = AddUser("o'malley_antiques", "harbor12", 318);
        m_birch = AddUser("birch_finds", "birch-77", 57);
        m_kestrel = AddUser("kestrel_coins", "k3strel", 1204);
        m_maple = AddUser("maple_attic", "attic!9", 9);
        const int wanted = std::max(m_options.users, kMinimumSeedUsers);
        for (int i = static_cast<int>(m_users.size()); i < wanted; ++i) {
            const int serial = i - kMinimumSeedUsers;
            std::string name = std::string(kNameStarts[static_cast<size_t>(serial) % 25]) +
                               kNameEnds[static_cast<size_t>(serial / 25 + serial) % 10];
            if (serial >= 25) {
                name += std::to_string(serial);
            }
            if (m_store.FindUser(name)) {
                name.append(1, '_').append(std::to_string(i));
            }
            AddUser(name, "pw" + std::to_string(m_random.Between(1000, 9999)),
                    static_cast<int>(m_random.Between(0, 900)));
        }
    }

    std::vector<std::int64_t> Others(std::int64_t except) const {
        std::vector<std::int64_t> others;
        for (const std::int64_t id : m_users) {
            if (id != except) {
                others.push_back(id);
            }
        }
        return others;
    }

    struct Lot {
        std::int64_t seller;
        std::string title;
        int category;
        std::int64_t startOffset;  // from now; negative is the past
        int days;
        std::int64_t minimum;
        std::int64_t reserve = 0;
        int quantity = 1;
        std::string options;
    };

    std::int64_t AddLot(const Lot& lot) {
        Item item;
        item.sellerId = lot.seller;
        item.title = lot.title;
        item.category = lot.category;
        item.description = "Offered as pictured and described. " + std::string(lot.title) +
                           ". Buyer pays shipping; payment within ten days please.";
        if (const auto seller = m_store.UserById(lot.seller)) {
            item.location = seller->location;
        }
        item.startTime = Now() + lot.startOffset;
        item.endTime = item.startTime + lot.days * kDay;
        item.minimumBid = lot.minimum;
        item.reserve = lot.reserve;
        item.quantity = lot.quantity;
        item.options = lot.options;
        const std::int64_t number = m_store.AddItem(item);
        LedgerRow fee;
        fee.time = item.startTime;
        fee.type = "Insertion fee";
        fee.item = number;
        fee.debit = MarketStore::InsertionFee(item.minimumBid, item.quantity);
        fee.note = "start price " + Money(item.minimumBid);
        m_store.AddLedger(lot.seller, fee);
        if (lot.options.find("bold~") != std::string::npos) {
            LedgerRow bold = fee;
            bold.type = "Bold fee";
            bold.debit = 200;
            bold.note = "listing upgrade";
            m_store.AddLedger(lot.seller, bold);
        }
        m_lots.emplace_back(number, item);
        return number;
    }

    // A bid placed `before` seconds ahead of the lot's end, or of now while
    // the lot still runs.
    void AddBid(std::int64_t number, std::int64_t bidder, std::int64_t maximum, int quantity,
                std::int64_t before) {
        const auto item = m_store.FindItem(number);
        const std::int64_t last = std::min(item->endTime, Now()) - before;
        m_store.AddBid(number, bidder, maximum, quantity,
                       std::max(item->startTime + kMinute, last));
        ++m_bidCount;
    }

    void DemoSales() {
        const std::int64_t d = m_demo;
        // Running, with bids.
        const auto skillet =
            AddLot({d, "Grandma's cast-iron skillet, 10 inch", 402, -5 * kDay + 3 * kHour, 7, 500});
        AddBid(skillet, m_birch, 800, 1, 9 * kHour);
        AddBid(skillet, m_kestrel, 1150, 1, 2 * kHour);
        // Running, no bids yet.
        AddLot(
            {d, "Salt & Pepper shakers, set of 4 (no chips)", 402, -3 * kDay + 5 * kHour, 3, 499});
        // Running lot of five: three winners so far.
        const auto marbles = AddLot(
            {d, "Glass marbles, lot of 50 \u2013 \"cat's eye\" mix", 1203, -kDay, 5, 300, 0, 5});
        AddBid(marbles, m_birch, 400, 2, 5 * kHour);
        AddBid(marbles, m_omalley, 350, 1, 4 * kHour);
        AddBid(marbles, m_maple, 325, 3, kHour);
        // Ended and sold.
        const auto lionel = AddLot(
            {d, "Lionel \"Scout\" locomotive & tender", 1201, -10 * kDay, 7, 1500, 0, 1, "bold~"});
        AddBid(lionel, m_maple, 2000, 1, 2 * kDay);
        AddBid(lionel, m_omalley, 3100, 1, 20 * kMinute);
        // Ended without a bid.
        AddLot({d, "Wooden recipe box", 402, -17 * kDay, 7, 1200});
        // Ended below its reserve.
        const auto clock = AddLot({d, "Victorian mantel clock", 104, -13 * kDay, 7, 2500, 8000});
        AddBid(clock, m_birch, 4000, 1, kDay);
        AddBid(clock, m_kestrel, 4500, 1, 3 * kHour);
        // Ended lot of six with four winners and one bidder left out.
        const auto pins = AddLot(
            {d, "Enamel pin set of 3 \u2013 Caf\u00e9 Cr\u00e8me", 405, -22 * kDay, 10, 400, 0, 6});
        AddBid(pins, m_birch, 600, 1, 3 * kDay);
        AddBid(pins, m_kestrel, 550, 2, 2 * kDay);
        AddBid(pins, m_omalley, 525, 1, kDay);
        AddBid(pins, m_maple, 500, 2, 5 * kHour);
        if (m_users.size() > kMinimumSeedUsers) {
            AddBid(pins, m_users[kMinimumSeedUsers], 450, 3, 2 * kHour);
        }
        // Sold too long ago for a 30-day list.
        const auto compass = AddLot({d, "Brass pocket compass", 1301, -52 * kDay, 7, 800});
        AddBid(compass, m_kestrel, 1300, 1, kDay);
        // Running, with a title longer than any list column.
        const auto postcards =
            AddLot({d,
                    "Huge lot of vintage postcards from seaside towns, hand-colored, many "
                    "unused, some with stamps and postmarks 1905-1930, sorted by state",
                    404, -2 * kDay, 7, 1000});
        AddBid(postcards, m_omalley, 1200, 1, 6 * kHour);
        // Running, non-ASCII letters in the title.
        AddLot({d,
                "Cr\u00e8me br\u00fbl\u00e9e torch \u2013 K\u00fcchen set, na\u00efve fa\u00e7ade",
                402, -kDay - 2 * kHour, 10, 1850});
        // Ended yesterday, bought by the member whose id holds an apostrophe.
        const auto harbor = AddLot(
            {d, "First edition \"The Quiet Harbor\" \u2013 signed", 204, -8 * kDay, 7, 2000});
        AddBid(harbor, m_birch, 2200, 1, kDay);
        AddBid(harbor, m_omalley, 4150, 1, kHour);
        // Ended and sold three weeks ago.
        const auto radio =
            AddLot({d, "Philco cathedral radio, 1932, plays", 902, -27 * kDay, 7, 4500, 6000});
        AddBid(radio, m_maple, 6500, 1, kDay);
        AddBid(radio, m_kestrel, 7200, 1, 3 * kHour);

        m_store.AddWatch(m_birch, skillet);
        m_store.AddWatch(m_maple, marbles);
    }

    void DemoBids() {
        const std::int64_t d = m_demo;
        // Running, the demo member is winning.
        const auto tin =
            AddLot({m_birch, "Tin wind-up robot, 1960s, with key", 1204, -2 * kDay, 7, 600});
        AddBid(tin, m_maple, 900, 1, 8 * kHour);
        AddBid(tin, d, 1500, 1, 2 * kHour);
        // Running, outbid.
        const auto dime =
            AddLot({m_kestrel, "Mercury dime roll, 50 coins & tube", 301, -3 * kDay, 5, 500});
        AddBid(dime, d, 700, 1, 10 * kHour);
        AddBid(dime, m_omalley, 1200, 1, 3 * kHour);
        // Ended, won.
        const auto quilt =
            AddLot({m_maple, "Hand-stitched \"Log Cabin\" quilt", 105, -11 * kDay, 7, 2500});
        AddBid(quilt, m_birch, 3000, 1, kDay);
        AddBid(quilt, d, 3600, 1, 4 * kHour);
        // Ended, lost.
        const auto atlas =
            AddLot({m_omalley, "Rand McNally atlas, 1911", 103, -15 * kDay, 7, 1800});
        AddBid(atlas, d, 2100, 1, 2 * kDay);
        AddBid(atlas, m_kestrel, 2600, 1, 5 * kHour);
        // Ended lot of four; the demo member is one of three winners.
        const auto cards = AddLot({m_birch, "Baseball card lot \u2013 1956 Topps, four cards", 403,
                                   -9 * kDay, 7, 500, 0, 4});
        AddBid(cards, m_kestrel, 700, 1, kDay);
        AddBid(cards, d, 600, 2, 12 * kHour);
        AddBid(cards, m_maple, 550, 2, 2 * kHour);
        // Running lot of three, one unit bid for.
        const auto jars =
            AddLot({m_kestrel, "Blue Ball mason jars, quart", 402, -kDay, 7, 300, 0, 3});
        AddBid(jars, d, 400, 1, 3 * kHour);
        AddBid(jars, m_birch, 450, 1, kHour);

        const auto lamp =
            AddLot({m_maple, "Brass student lamp with green shade", 101, -2 * kDay, 5, 3500});
        const auto chess =
            AddLot({m_omalley, "Carved bone chess set, complete", 1203, -4 * kDay, 10, 4000});
        AddBid(chess, m_birch, 4500, 1, 6 * kHour);
        m_store.AddWatch(d, tin);
        m_store.AddWatch(d, dime);
        m_store.AddWatch(d, lamp);
        m_store.AddWatch(d, chess);
    }

    std::string RandomTitle() {
        return std::string(m_random.Pick(kAdjectives)) + " " + m_random.Pick(kNouns) + ", " +
               m_random.Pick(kDetails);
    }

    int RandomCategory() {
        const auto& all = Categories();
        return all[static_cast<size_t>(
                       m_random.Between(0, static_cast<std::int64_t>(all.size()) - 1))]
            .number;
    }

    // A lot of a member with bids from others; `demoBids` lets the demo member
    // take part.
    void RandomLot(std::int64_t seller, bool demoBids) {
        Lot lot;
        lot.seller = seller;
        lot.title = RandomTitle();
        lot.category = RandomCategory();
        lot.days = m_random.Pick(kDurations);
        lot.startOffset = -m_random.Between(2 * kHour, 38 * kDay);
        lot.minimum = m_random.Between(1, 60) * 100 - (m_random.Chance(40) ? 1 : 0);
        if (m_random.Chance(15)) {
            lot.quantity = static_cast<int>(m_random.Between(2, 6));
        } else if (m_random.Chance(20)) {
            lot.reserve = lot.minimum * m_random.Between(2, 4);
        }
        if (m_random.Chance(10)) {
            lot.options = "bold~";
        }
        const std::int64_t number = AddLot(lot);
        const int bids = m_random.Chance(25) ? 0 : static_cast<int>(m_random.Between(1, 5));
        std::vector<std::int64_t> bidders = Others(seller);
        if (!demoBids) {
            bidders.erase(std::remove(bidders.begin(), bidders.end(), m_demo), bidders.end());
        }
        std::int64_t maximum = lot.minimum;
        for (int i = 0; i < bids && !bidders.empty(); ++i) {
            const auto bidder = bidders[static_cast<size_t>(
                m_random.Between(0, static_cast<std::int64_t>(bidders.size()) - 1))];
            maximum += m_random.Between(1, 8) * MarketStore::Increment(maximum);
            const int quantity =
                lot.quantity > 1 ? static_cast<int>(m_random.Between(1, std::min(3, lot.quantity)))
                                 : 1;
            AddBid(number, bidder, maximum, quantity,
                   (bids - i) * m_random.Between(20, 300) * kMinute);
        }
        if (m_random.Chance(10)) {
            const auto watcher = bidders.empty() ? m_demo : bidders.front();
            m_store.AddWatch(watcher, number);
        }
    }

    void PartnerAndMemberLots() {
        for (size_t i = 1; i < m_users.size(); ++i) {
            const int lots = static_cast<int>(m_random.Between(2, 4));
            for (int j = 0; j < lots; ++j) {
                RandomLot(m_users[i], false);
            }
        }
    }

    void ExtraSales() {
        const std::vector<std::int64_t> buyers = Others(m_demo);
        for (int i = 0; i < m_options.extraSales; ++i) {
            Lot lot;
            lot.seller = m_demo;
            lot.title = RandomTitle() + " #" + std::to_string(i + 1);
            lot.category = RandomCategory();
            lot.days = m_random.Pick(kDurations);
            // Ended within the last four weeks, so every one is on a 30-day list.
            lot.startOffset = -m_random.Between(lot.days * kDay + kHour, 28 * kDay);
            lot.minimum = m_random.Between(1, 40) * 100;
            const std::int64_t number = AddLot(lot);
            const int bids = static_cast<int>(m_random.Between(1, 3));
            std::int64_t maximum = lot.minimum;
            for (int b = 0; b < bids; ++b) {
                maximum += m_random.Between(1, 6) * MarketStore::Increment(maximum);
                AddBid(number,
                       buyers[static_cast<size_t>(
                           m_random.Between(0, static_cast<std::int64_t>(buyers.size()) - 1))],
                       maximum, 1, (bids - b) * kHour);
            }
        }
    }

    void ExtraBids() {
        const std::vector<std::int64_t> sellers = Others(m_demo);
        for (int i = 0; i < m_options.extraBids; ++i) {
            Lot lot;
            lot.seller = sellers[static_cast<size_t>(i) % sellers.size()];
            lot.title = RandomTitle() + " no. " + std::to_string(i + 1);
            lot.category = RandomCategory();
            lot.days = m_random.Pick(kDurations);
            lot.startOffset = -m_random.Between(kHour, 26 * kDay);
            lot.minimum = m_random.Between(1, 30) * 100;
            const std::int64_t number = AddLot(lot);
            const std::int64_t mine = lot.minimum + m_random.Between(0, 10) * 50;
            AddBid(number, m_demo, mine, 1, 3 * kHour);
            if (m_random.Chance(40)) {
                const auto rival = sellers[static_cast<size_t>(i + 1) % sellers.size()];
                AddBid(number,
                       rival == lot.seller ? sellers[static_cast<size_t>(i + 2) % sellers.size()]
                                           : rival,
                       mine + m_random.Between(1, 4) * 50, 1, kHour);
            }
        }
    }

    void Payments() {
        static constexpr std::array<const char*, 3> kCards = {
            "Visa ending 4242", "MasterCard ending 5100", "Discover ending 6011"};
        for (size_t i = 0; i < m_users.size(); ++i) {
            for (const std::int64_t daysAgo : {19, 4}) {
                LedgerRow payment;
                payment.time = Now() - daysAgo * kDay + static_cast<std::int64_t>(i) * kMinute;
                payment.type = "Credit Card payment";
                payment.credit = m_random.Between(5, 30) * 100;
                payment.note = kCards[i % kCards.size()];
                m_store.AddLedger(m_users[i], payment);
            }
        }
    }

    void Feedback() {
        static constexpr std::array<const char*, 4> kPraise = {
            "Fast payment, a pleasure to deal with!", "Great item, packed with care. A+++",
            "Smooth trade & quick reply", "Exactly as described \u2013 thank you"};
        for (size_t i = 1; i < m_users.size() && i < 6; ++i) {
            m_store.AddFeedback(m_users[i], m_demo, m_lots.front().first, "positive",
                                kPraise[i % kPraise.size()],
                                Now() - static_cast<std::int64_t>(i) * kDay);
        }
    }

    MarketStore& m_store;
    SeedOptions m_options;
    Random m_random;
    std::vector<std::int64_t> m_users;
    std::vector<std::pair<std::int64_t, Item>> m_lots;
    std::int64_t m_bidCount = 0;
    std::int64_t m_demo = 0;
    std::int64_t m_omalley = 0;
    std::int64_t m_birch = 0;
    std::int64_t m_kestrel = 0;
    std::int64_t m_maple = 0;
};

}  // namespace

SeedSummary Seed(MarketStore& store, const SeedOptions& options) {
    return Seeder(store, options).Run();
}

}  // namespace lw::site
