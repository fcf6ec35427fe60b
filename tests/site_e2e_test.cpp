// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace as the program meets it: a real lotwright-site on a
// free loopback port, asked over HTTP. Sign-in and the encoded password,
// paging to the empty page, deterministic seeds, the admin steering, lots
// with several winners, the rule endpoint, escaping, the sell and feedback
// posts, and the clock.
#include <gtest/gtest.h>
#include <httplib.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <cctype>
#include <ctime>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/support/site_process.h"
#include "tests/support/test_support.h"
#include "update/protocol.h"
#include "update/rules.h"
#include "update/scanner.h"
#include "update/site_session.h"

using lw::test::BinDir;

namespace {

constexpr const char* kCgi = "/aw-cgi/eBayISAPI.dll";
constexpr const char* kSellingBegin = "<!-- BEGIN SELLING -->";
constexpr const char* kSellingEnd = "<!-- END SELLING -->";

// One running lotwright-site, stopped when the object goes, with the member
// pages and the admin routes as this suite asks for them.
class Site : public lw::test::SiteProcess {
public:
    explicit Site(QStringList args) : SiteProcess(std::move(args)) {}

    std::string Base() const { return SiteProcess::Base().toStdString(); }

    // The encoded password as the program takes it from the sign-in answer:
    // the text behind "&pass=" up to the next "&", less its last character.
    std::string SignIn(const std::string& userId, const std::string& password) {
        const Answer answer =
            Post(kCgi, "MfcISAPICommand=MyEbay&first=Y&userid=" + Encode(userId) +
                           "&pass=" + Encode(password) + "&dayssince=1&sellerSort=3&bidderSort=3");
        const size_t at = answer.body.find("&pass=");
        if (at == std::string::npos) {
            return {};
        }
        const size_t start = at + 6;
        const size_t end = answer.body.find('&', start);
        std::string token = answer.body.substr(start, end - start);
        if (!token.empty()) {
            token.pop_back();
        }
        return token;
    }

    // A member's list page; the demo member's unless another is named.
    std::string List(const std::string& command, const std::string& pass, int days = 30,
                     int skip = 0, const std::string& userId = "demo_seller") {
        return Get(std::string(kCgi) + "?" + command + "&userid=" + Encode(userId) + "&pass=" +
                   Encode(pass) + "&days=" + std::to_string(days) + "&skip=" + std::to_string(skip))
            .body;
    }

    // A page of the member program by its query, and an item's page.
    std::string Page(const std::string& query) { return Get(std::string(kCgi) + "?" + query).body; }
    std::string ItemPage(const std::string& item) { return Page("ViewItem&item=" + item); }

    // Admin routes asked by address, their parameters in the query.
    std::string Admin(const std::string& action, const std::string& query = {}) {
        return Get("/admin/" + action + (query.empty() ? "" : "?" + query)).body;
    }
};

#define ASSERT_SITE(site) ASSERT_TRUE((site).Ok()) << (site).Error()

QStringList SeedArgs(int seed) {
    return {QStringLiteral("--seed"), QString::number(seed)};
}

using Row = std::map<std::string, std::string>;

// Whether text holds needle, naming the needle either way.
::testing::AssertionResult Has(const std::string& text, const std::string& needle) {
    if (text.find(needle) == std::string::npos) {
        return ::testing::AssertionFailure() << "no \"" << needle << "\" in the text";
    }
    return ::testing::AssertionSuccess() << "the text holds \"" << needle << "\"";
}

size_t Count(const std::string& text, const std::string& needle) {
    size_t count = 0;
    for (size_t at = text.find(needle); at != std::string::npos;
         at = text.find(needle, at + needle.size())) {
        ++count;
    }
    return count;
}

std::string Between(const std::string& text, const std::string& begin, const std::string& end) {
    const size_t from = text.find(begin);
    if (from == std::string::npos) {
        return {};
    }
    const size_t to = text.find(end, from);
    return text.substr(from, to == std::string::npos ? std::string::npos : to - from);
}

// The record rows of a list page, one map of cell class to cell text each.
std::vector<Row> Rows(const std::string& page, const std::string& begin, const std::string& end) {
    std::vector<Row> rows;
    const std::string part = Between(page, begin, end);
    static const std::regex kRow(R"re(<tr>(?:\r\n)?([\s\S]*?)</tr>)re");
    static const std::regex kCell(R"re(<td class="([a-z]+)">((?:<[^>]*>)*)([^<]*))re");
    for (auto row = std::sregex_iterator(part.begin(), part.end(), kRow);
         row != std::sregex_iterator(); ++row) {
        const std::string cells = (*row)[1];
        Row values;
        for (auto cell = std::sregex_iterator(cells.begin(), cells.end(), kCell);
             cell != std::sregex_iterator(); ++cell) {
            values[(*cell)[1]] = (*cell)[3];
        }
        rows.push_back(values);
    }
    return rows;
}

// The rows of the demo member's selling list.
std::vector<Row> SellingRows(Site& site, const std::string& token, int days = 30, int skip = 0) {
    return Rows(site.List("MyEbaySelling", token, days, skip), kSellingBegin, kSellingEnd);
}

// Every row of a list of the demo member, from the part between its markers
// ("<!-- BEGIN LEDGER -->" for part "LEDGER"), paged through to the empty page.
std::vector<Row> AllRows(Site& site, const std::string& token, const char* command,
                         const std::string& part, int days = 30, int pageSize = 50) {
    std::vector<Row> rows;
    for (int skip = 0; skip < 200 * pageSize; skip += pageSize) {
        const auto page = Rows(site.List(command, token, days, skip), "<!-- BEGIN " + part + " -->",
                               "<!-- END " + part + " -->");
        if (page.empty()) {
            break;
        }
        rows.insert(rows.end(), page.begin(), page.end());
    }
    return rows;
}

// "11/23/26 02:18:25 PST" in the server's local time, as epoch seconds.
std::time_t SiteDateSeconds(const std::string& text) {
    std::tm local{};
    int year = 0;
    if (std::sscanf(text.c_str(), "%d/%d/%d %d:%d:%d", &local.tm_mon, &local.tm_mday, &year,
                    &local.tm_hour, &local.tm_min, &local.tm_sec) != 6) {
        return 0;
    }
    local.tm_mon -= 1;
    local.tm_year = year + 100;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

// "Monday, 11 23, 2026 02:18:26 PST" as epoch seconds.
std::time_t ClockSeconds(const std::string& page) {
    static const std::regex kClock(
        R"re(The official time is: [A-Za-z]+, (\d\d) (\d\d), (\d\d\d\d) (\d\d):(\d\d):(\d\d) P[SD]T)re");
    std::smatch match;
    if (!std::regex_search(page, match, kClock)) {
        return 0;
    }
    std::tm local{};
    local.tm_mon = std::stoi(match[1]) - 1;
    local.tm_mday = std::stoi(match[2]);
    local.tm_year = std::stoi(match[3]) - 1900;
    local.tm_hour = std::stoi(match[4]);
    local.tm_min = std::stoi(match[5]);
    local.tm_sec = std::stoi(match[6]);
    local.tm_isdst = -1;
    return std::mktime(&local);
}

// The hidden fields of the form whose action holds `action`, as a posted body.
std::string HiddenFields(const std::string& page, const std::string& action) {
    const std::string form = Between(page, action, "</form>");
    static const std::regex kHidden(R"re(<input type="hidden" name="([^"]*)" value="([^"]*)">)re");
    std::string body;
    for (auto field = std::sregex_iterator(form.begin(), form.end(), kHidden);
         field != std::sregex_iterator(); ++field) {
        if (!body.empty()) {
            body += '&';
        }
        body.append(Site::Encode((*field)[1])).append(1, '=').append(Site::Encode((*field)[2]));
    }
    return body;
}

std::string DemoToken(Site& site) {
    return site.SignIn("demo_seller", "demo");
}

}  // namespace

// Only the right password gets an encoded one; it opens the member's pages
// and no other member's, and a password changed on the site expires it.
TEST(SiteSignIn, TheEncodedPasswordOpensTheMembersOwnPagesUntilThePasswordChanges) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    EXPECT_TRUE(site.SignIn("demo_seller", "not-the-password").empty());
    EXPECT_TRUE(site.SignIn("nobody_here", "demo").empty());
    const std::string token = DemoToken(site);
    ASSERT_FALSE(token.empty());
    EXPECT_FALSE(Has(token, "demo")) << "the password must not travel in clear";

    const std::string selling = site.List("MyEbaySelling", token);
    EXPECT_TRUE(Has(selling, kSellingBegin));
    EXPECT_TRUE(Has(selling, kSellingEnd));
    for (const char* command :
         {"MyEbayBidding", "MyEbayWatching", "MyEbayAccount", "AccountStatus"}) {
        const std::string page = site.List(command, token);
        EXPECT_TRUE(Has(page, "<!-- BEGIN ")) << command;
        EXPECT_FALSE(Has(page, "Sign in to My Market")) << command;
    }

    // The sign-in page, without markers, for a page the token does not open.
    const auto refused = [&](const char* why, const std::string& pass, const char* user) {
        SCOPED_TRACE(why);
        const std::string page = site.List("MyEbaySelling", pass, 30, 0, user);
        EXPECT_FALSE(Has(page, kSellingBegin));
        EXPECT_TRUE(Has(page, "Sign in to My Market"));
    };
    refused("a forged encoded password", token + "zz", "demo_seller");
    refused("another member's page", token, "birch_finds");
    site.Admin("password", "user=demo_seller&password=n3w-pass");
    refused("the password changed", token, "demo_seller");
    const std::string fresh = site.SignIn("demo_seller", "n3w-pass");
    ASSERT_FALSE(fresh.empty());
    EXPECT_NE(fresh, token);
    EXPECT_TRUE(Has(site.List("MyEbaySelling", fresh), kSellingBegin));
}

TEST(SitePaging, PagesAreDisjointAndEndWithAnEmptyPage) {
    Site site(SeedArgs(5) << QStringLiteral("--page-size") << QStringLiteral("4"));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    std::set<std::string> seen;
    int pages = 0;
    for (int skip = 0; pages < 50; skip += 4, ++pages) {
        const std::string page = site.List("MyEbaySelling", token, 30, skip);
        ASSERT_TRUE(Has(page, kSellingBegin)) << "skip " << skip;
        ASSERT_TRUE(Has(page, kSellingEnd)) << "skip " << skip;
        const auto rows = Rows(page, kSellingBegin, kSellingEnd);
        ASSERT_LE(rows.size(), 4u);
        EXPECT_EQ(Count(page, "<td class=\"item\">"), rows.size());
        if (rows.empty()) {
            break;
        }
        for (const auto& row : rows) {
            EXPECT_TRUE(seen.insert(row.at("item")).second)
                << "item listed twice: " << row.at("item");
        }
        if (rows.size() < 4) {
            // A short page is the last with records; the next one is empty.
            EXPECT_TRUE(SellingRows(site, token, 30, skip + 4).empty());
            break;
        }
    }
    EXPECT_LT(pages, 50) << "paging never ended";
    EXPECT_GT(seen.size(), 4u) << "the demo member's list should need more than one page";

    // Every lot of the member is on the 60-day list; the 30-day list leaves
    // out exactly those that ended longer ago than 30 days.
    std::map<std::string, std::string> wide;  // item to its end
    for (const auto& row : AllRows(site, token, "MyEbaySelling", "SELLING", 60, 4)) {
        wide[row.at("item")] = row.count("ends") ? row.at("ends") : row.at("ended");
    }
    const std::time_t now = ClockSeconds(site.Page("TimeShow"));
    ASSERT_GT(now, 0);
    for (const auto& [item, ended] : wide) {
        const std::time_t end = SiteDateSeconds(ended);
        if (end >= now - 30 * 86400 + 60) {
            EXPECT_TRUE(seen.count(item)) << item << " ended " << ended;
        } else if (end < now - 30 * 86400 - 60) {
            EXPECT_FALSE(seen.count(item)) << item << " ended " << ended;
        }
    }
    EXPECT_GT(wide.size(), seen.size()) << "the seed holds a sale older than 30 days";
}

// A member's lists are paged in turn from where the page before left off:
// each page is the one asked for out of turn (with no page before it
// served), balances of the account history included; a write to the market
// in between is seen by the next page.
TEST(SitePaging, PagesAskedInTurnAreThePagesByPosition) {
    Site site(SeedArgs(5) << QStringLiteral("--page-size") << QStringLiteral("4")
                          << QStringLiteral("--clock-factor") << QStringLiteral("0"));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    constexpr int kLast = 40;
    for (const char* list : {"MyEbaySelling", "MyEbayBidding", "MyEbayAccount"}) {
        std::vector<std::string> byPosition(kLast / 4 + 1);
        for (int skip = kLast; skip >= 0; skip -= 4) {
            byPosition[static_cast<size_t>(skip / 4)] = site.List(list, token, 60, skip);
        }
        ASSERT_NE(byPosition[1], byPosition[2]) << list << ": the list needs several pages";
        for (int skip = 0; skip <= kLast; skip += 4) {
            EXPECT_EQ(site.List(list, token, 60, skip), byPosition[static_cast<size_t>(skip / 4)])
                << list << " skip " << skip;
        }
    }

    // Where every page left off is known; then the last item of the list
    // ends now and moves ahead of the items still running. Each page asked
    // again, from the last back (so that none follows the page before it),
    // is the page by position after the move, not from where a page left
    // off before it.
    const auto page = [&](int skip) {
        std::vector<std::string> items;
        for (const auto& row : SellingRows(site, token, 60, skip)) {
            items.push_back(row.at("item"));
        }
        return items;
    };
    const auto inTurn = [&] {
        std::vector<std::string> items;
        for (int skip = 0; skip < 400; skip += 4) {
            const std::vector<std::string> rows = page(skip);
            items.insert(items.end(), rows.begin(), rows.end());
            if (rows.size() < 4) {
                break;
            }
        }
        return items;
    };
    const std::vector<std::string> before = inTurn();
    ASSERT_GT(before.size(), 8u);
    const std::string moved = before.back();
    ASSERT_TRUE(Has(site.Admin("end", "item=" + moved), "\"ended\":true"));
    std::vector<std::string> backwards;
    for (int skip = static_cast<int>(before.size()) / 4 * 4; skip >= 0; skip -= 4) {
        const std::vector<std::string> rows = page(skip);
        backwards.insert(backwards.begin(), rows.begin(), rows.end());
    }
    const std::vector<std::string> after = inTurn();
    EXPECT_EQ(backwards, after);
    EXPECT_EQ(std::set<std::string>(after.begin(), after.end()),
              std::set<std::string>(before.begin(), before.end()));
    const auto at = std::find(after.begin(), after.end(), moved);
    ASSERT_NE(at, after.end());
    EXPECT_LE(at - after.begin() + 4, static_cast<std::ptrdiff_t>(after.size()) - 1)
        << "the moved item crosses a page";
}

TEST(SiteSeed, TheSameSeedGivesTheSamePagesAndAnotherSeedDoesNot) {
    const QStringList fixed = {QStringLiteral("--start"), QStringLiteral("2000-06-08 12:04:00"),
                               QStringLiteral("--clock-factor"), QStringLiteral("0")};
    Site first(SeedArgs(7) << fixed);
    Site second(SeedArgs(7) << fixed);
    Site other(SeedArgs(9) << fixed);
    ASSERT_SITE(first);
    ASSERT_SITE(second);
    ASSERT_SITE(other);
    const std::string token = DemoToken(first);
    ASSERT_EQ(token, DemoToken(second));
    for (const char* command :
         {"MyEbaySelling", "MyEbayBidding", "MyEbayWatching", "MyEbayAccount", "AccountStatus"}) {
        const std::string a = first.List(command, token);
        EXPECT_EQ(a, second.List(command, token)) << command;
        EXPECT_EQ(a, first.List(command, token)) << command;
    }
    const auto rows = SellingRows(first, token);
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) {
        EXPECT_EQ(first.ItemPage(row.at("item")), second.ItemPage(row.at("item")))
            << row.at("item");
    }
    EXPECT_TRUE(Has(first.Page("TimeShow"), "06 08, 2000 12:04:00"));
    EXPECT_TRUE(Has(first.Admin("state"), "\"users\":7"));
    EXPECT_TRUE(Has(other.Admin("state"), "\"users\":9"));
}

TEST(SiteAdmin, EndingABidAndATitleShowOnThePages) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    // A running lot of one with no bid yet.
    std::string running;
    std::string start;
    for (const auto& row : SellingRows(site, token)) {
        if (row.count("ends") && row.at("bidder") == "-" && row.at("qty") == "1") {
            running = row.at("item");
            start = row.at("start");
            break;
        }
    }
    ASSERT_FALSE(running.empty());
    EXPECT_FALSE(Has(site.ItemPage(running), "<td class=\"left\">Ended</td>"));
    const auto bid = [&](const std::string& bidder, const std::string& amount) {
        return site.Admin("bid", "item=" + running + "&bidder=" + bidder + "&amount=" + amount);
    };

    // A bid makes the bidder the high bidder at the start price.
    EXPECT_TRUE(Has(bid("birch_finds", start.substr(1)), "\"ok\":true"));
    std::string page = site.ItemPage(running);
    EXPECT_TRUE(Has(page, ">birch_finds</a></td><td class=\"hfb\">"));
    EXPECT_TRUE(Has(page, "<td class=\"price\"><b>" + start + "</b>"));
    // A seller's own bid and a bid below the start are refused.
    EXPECT_TRUE(Has(bid("demo_seller", "999"), "\"ok\":false"));
    EXPECT_TRUE(Has(bid("maple_attic", "0.01"), "\"ok\":false"));

    // Ended now: the list greys it and moves its end cell to class "ended".
    EXPECT_TRUE(Has(site.Admin("end", "item=" + running), "\"ended\":true"));
    page = site.ItemPage(running);
    EXPECT_TRUE(Has(page, "<td class=\"left\">Ended</td>"));
    EXPECT_TRUE(Has(page, "Winning bid"));
    bool listedEnded = false;
    for (const auto& row : SellingRows(site, token)) {
        if (row.at("item") == running) {
            listedEnded =
                row.count("ended") == 1 && row.count("ends") == 0 && row.at("left") == "Ended";
        }
    }
    EXPECT_TRUE(listedEnded);
    EXPECT_TRUE(Has(bid("maple_attic", "500"), "the item has ended"));
    // The sale's final value fee is booked on the account history.
    const std::string ledger = site.List("MyEbayAccount", token);
    const auto ledgerRows = Rows(ledger, "<!-- BEGIN LEDGER -->", "<!-- END LEDGER -->");
    bool feeBooked = false;
    for (const auto& row : ledgerRows) {
        feeBooked |= row.at("item") == running && row.at("desc") == "Final Auction Value fee\r\n" &&
                     row.at("sold") == start;
    }
    EXPECT_TRUE(feeBooked) << ledger;

    // A hostile title is escaped wherever it shows.
    const std::string hostile = "<script>alert(\"x\")</script> & 'Tom's' \xC3\xA9";
    site.Admin("title", "item=" + running + "&title=" + Site::Encode(hostile));
    page = site.ItemPage(running);
    EXPECT_FALSE(Has(page, "<script>"));
    EXPECT_TRUE(Has(page,
                    "&lt;script&gt;alert(&#34;x&#34;)&lt;/script&gt; &amp; &#39;Tom&#39;s&#39; "
                    "\xC3\xA9"));
    EXPECT_FALSE(Has(site.List("MyEbaySelling", token), "<script>"));
}

TEST(SiteAdmin, DownAndBrokenPagesAreWhatTestsAskFor) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    site.Admin("down", "on=1");
    EXPECT_EQ(site.Get(std::string(kCgi) + "?TimeShow").status, 503);
    EXPECT_EQ(site.Get("/rules/version").status, 503);
    site.Admin("down", "on=0");
    EXPECT_EQ(site.Get(std::string(kCgi) + "?TimeShow").status, 200);

    site.Admin("break", "page=selling&count=1");
    EXPECT_TRUE(Has(site.Page("TimeShow"), "<!-- BEGIN CLOCK -->")) << "only selling is broken";
    EXPECT_FALSE(Has(site.List("MyEbaySelling", token), kSellingBegin));
    EXPECT_TRUE(Has(site.List("MyEbaySelling", token), kSellingBegin));

    // The redesign renames the item cells on every list.
    site.Admin("layout", "v=2");
    const std::string redesigned = site.List("MyEbayBidding", token);
    EXPECT_FALSE(Has(redesigned, "<td class=\"item\">"));
    EXPECT_TRUE(Has(redesigned, "<td class=\"itemno\">"));
}

TEST(SiteMultiWinner, TheItemPageListsEveryWinnerAndTheLotIsShared) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    std::vector<std::string> multi;
    for (const auto& row : SellingRows(site, token)) {
        if (row.at("bidder") == "Dutch Auction") {
            multi.push_back(row.at("item"));
            EXPECT_GT(std::stoi(row.at("qty")), 1);
        }
    }
    ASSERT_FALSE(multi.empty());
    size_t mostWinners = 0;
    for (const std::string& item : multi) {
        const std::string page = site.ItemPage(item);
        const auto rows = Rows(page, "<!-- BEGIN WINNERS -->", "<!-- END WINNERS -->");
        ASSERT_FALSE(rows.empty()) << item;
        mostWinners = std::max(mostWinners, rows.size());
        static const std::regex kQuantity(R"re(<td class="qty">(\d+)</td>)re");
        std::smatch quantity;
        ASSERT_TRUE(std::regex_search(page, quantity, kQuantity));
        int taken = 0;
        std::set<std::string> prices;
        for (const auto& row : rows) {
            EXPECT_FALSE(row.at("winner").empty());
            EXPECT_TRUE(std::regex_match(row.at("wfb"), std::regex(R"re(\(-?\d+\))re")))
                << row.at("wfb");
            taken += std::stoi(row.at("wqty"));
            prices.insert(row.at("wprice"));
        }
        EXPECT_LE(taken, std::stoi(quantity[1])) << item;
        EXPECT_EQ(prices.size(), 1u) << "every winner pays the lowest winning bid";
    }
    EXPECT_GE(mostWinners, 3u) << "the seed holds a lot with several winners";

    // A running lot: one bid for the whole lot above everyone else takes it.
    std::string running;
    int quantity = 0;
    for (const auto& row : SellingRows(site, token)) {
        if (row.at("bidder") == "Dutch Auction" && row.count("ends")) {
            running = row.at("item");
            quantity = std::stoi(row.at("qty"));
        }
    }
    ASSERT_FALSE(running.empty());
    site.Admin("bid", "item=" + running +
                          "&bidder=birch_finds&amount=250&quantity=" + std::to_string(quantity));
    const std::string page = site.ItemPage(running);
    const auto rows = Rows(page, "<!-- BEGIN WINNERS -->", "<!-- END WINNERS -->");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].at("winner"), "birch_finds");
    EXPECT_EQ(rows[0].at("wqty"), std::to_string(quantity));
}

TEST(SiteRules, VersionAndFilesComeWithTheSitesOwnAddress) {
    QTemporaryDir rules;
    ASSERT_TRUE(rules.isValid());
    QFile sitePro(rules.filePath(QStringLiteral("site.pro")));
    ASSERT_TRUE(sitePro.open(QIODevice::WriteOnly));
    sitePro.write(
        "[Protocols]\r\nProtocolCheckUrl=http://127.0.0.1:8750/rules/version\r\n"
        "Current Protocol=4\r\nProtocolDownload1=http://127.0.0.1:8750/rules/site.pro\r\n");
    sitePro.close();

    Site site(SeedArgs(5) << QStringLiteral("--rules") << rules.path());
    ASSERT_SITE(site);
    // Without --rule-version the site answers the Current Protocol it serves.
    EXPECT_EQ(site.Get("/rules/version").body, "PROTOCOL:4\r\n");
    site.Admin("rule-version", "v=2000.6.8");
    EXPECT_EQ(site.Get("/rules/version").body, "PROTOCOL:2000.6.8\r\n");

    const auto file = site.Get("/rules/site.pro");
    EXPECT_EQ(file.status, 200);
    EXPECT_FALSE(Has(file.body, "127.0.0.1:8750"));
    EXPECT_TRUE(Has(file.body, "ProtocolCheckUrl=" + site.Base() + "/rules/version\r\n"));
    EXPECT_TRUE(Has(file.body, "ProtocolDownload1=" + site.Base() + "/rules/site.pro\r\n"));
    for (const char* missing : {"/rules/missing.pro", "/rules/..%2Fsite.pro"}) {
        EXPECT_EQ(site.Get(missing).status, 404) << missing;
    }

    Site fixed(SeedArgs(5) << QStringLiteral("--rules") << rules.path()
                           << QStringLiteral("--rule-version") << QStringLiteral("7"));
    ASSERT_SITE(fixed);
    EXPECT_EQ(fixed.Get("/rules/version").body, "PROTOCOL:7\r\n");
}

TEST(SitePosts, SellReviewAndConfirmListANewItem) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const std::string fields =
        "title=" + Site::Encode("Copper kettle & trivet, \"as found\"") +
        "&category=402&description=" + Site::Encode("<b>Nice</b> kettle.") +
        "&location=" + Site::Encode("Duluth, MN") +
        "&quantity=1&minimumbid=12.50&duration=7&reserve=&counter=&bold=on&userid=demo_seller";
    const std::string path = std::string(kCgi) + "?VerifyNewItem";

    const auto refused = site.Post(path, fields + "&password=wrong");
    EXPECT_TRUE(Has(refused.body, "HTTP/1.0 302 Object Moved Server"));

    const auto problem = site.Post(path, "title=&category=999999&userid=demo_seller&password=demo");
    EXPECT_TRUE(Has(problem.body, "Problem with your listing"));
    EXPECT_FALSE(Has(problem.body, "?AddItem"));

    const auto review = site.Post(path, fields + "&password=demo");
    ASSERT_TRUE(Has(review.body, "eBayISAPI.dll?AddItem")) << review.body;
    const std::string confirm = HiddenFields(review.body, "eBayISAPI.dll?AddItem");
    EXPECT_TRUE(Has(confirm, "token="));
    EXPECT_FALSE(Has(confirm, "=demo&")) << "no clear password in the page";
    EXPECT_FALSE(confirm.size() >= 5 && confirm.substr(confirm.size() - 5) == "=demo");

    const std::string addItem = std::string(kCgi) + "?AddItem";
    const auto listed = site.Post(addItem, confirm);
    static const std::regex kNumber(R"re(Your new item number is <b>#(\d+)</b>)re");
    std::smatch number;
    ASSERT_TRUE(std::regex_search(listed.body, number, kNumber)) << listed.body;
    // A second confirm of the same review lists nothing more.
    EXPECT_EQ(site.Post(addItem, confirm).status, 404);

    const std::string token = DemoToken(site);
    bool found = false;
    for (const auto& row : AllRows(site, token, "MyEbaySelling", "SELLING")) {
        if (row.at("item") == std::string(number[1])) {
            found = true;
            EXPECT_EQ(row.at("title"), "Copper kettle &amp; trivet, &#34;as found&#34;");
            EXPECT_EQ(row.at("start"), "$12.50");
            EXPECT_EQ(row.at("bids"), "0");
        }
    }
    EXPECT_TRUE(found);
    // The insertion and bold fees are on the account.
    const std::string ledger = site.List("MyEbayAccount", token, 1);
    EXPECT_TRUE(Has(ledger, "<td class=\"desc\">Insertion fee\r\n"));
    EXPECT_TRUE(Has(ledger, "<td class=\"desc\">Bold fee\r\n"));
}

TEST(SitePosts, FeedbackAndTheEmailLookUp) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const auto before = site.Page("ViewFeedback&userid=maple_attic");
    static const std::regex kScore(R"re(Feedback profile of maple_attic \((-?\d+)\))re");
    std::smatch score;
    ASSERT_TRUE(std::regex_search(before, score, kScore));
    const int start = std::stoi(score[1]);

    const auto left = site.Post(kCgi,
                                "MfcISAPICommand=LeaveFeedback&userid=demo_seller&pass=demo"
                                "&otheruserid=maple_attic&itemno=&which=positive"
                                "&comment=" +
                                    Site::Encode("Quick & friendly"));
    EXPECT_TRUE(Has(left.body, "has been recorded"));
    const auto after = site.Page("ViewFeedback&userid=maple_attic");
    ASSERT_TRUE(std::regex_search(after, score, kScore));
    EXPECT_EQ(std::stoi(score[1]), start + 1);
    EXPECT_TRUE(Has(after, "Quick &amp; friendly"));

    const auto unknown = site.Post(kCgi,
                                   "MfcISAPICommand=LeaveFeedback&userid=demo_seller&pass=demo"
                                   "&otheruserid=no_such_member&which=negative&comment=x");
    EXPECT_TRUE(Has(unknown.body, "not a registered user. Please go back"));

    const auto lookup = [&](const std::string& requested, const std::string& pass) {
        return site.Page("ReturnUserEmail&requested=" + Site::Encode(requested) +
                         "&userid=demo_seller&pass=" + pass);
    };
    const std::string email = lookup("o'malley_antiques", "demo");
    static const std::regex kMail(R"re(href="mailto:([^"]+)">([^<]+)<)re");
    std::smatch mail;
    ASSERT_TRUE(std::regex_search(email, mail, kMail));
    EXPECT_EQ(mail[1], mail[2]);
    EXPECT_TRUE(Has(mail[1], "@"));
    // No address for an unknown member, nor for a wrong password.
    EXPECT_FALSE(Has(lookup("no_such_member", "demo"), "mailto:"));
    EXPECT_FALSE(Has(lookup("maple_attic", "bad"), "mailto:"));
}

TEST(SiteClock, AFasterClockEndsAuctionsWhileOneWatches) {
    Site site(SeedArgs(5) << QStringLiteral("--clock-factor") << QStringLiteral("36000"));
    ASSERT_SITE(site);
    const std::time_t first = ClockSeconds(site.Page("TimeShow"));
    const std::string token = DemoToken(site);
    // The soonest running lot of the demo member.
    std::string soonest;
    std::time_t soonestEnd = 0;
    for (const auto& row : SellingRows(site, token)) {
        if (row.count("ends")) {
            const std::time_t end = SiteDateSeconds(row.at("ends"));
            if (soonest.empty() || end < soonestEnd) {
                soonest = row.at("item");
                soonestEnd = end;
            }
        }
    }
    ASSERT_FALSE(soonest.empty());
    // Ten site hours pass each second; wait until the lot's end has passed.
    const double wait = static_cast<double>(soonestEnd - first) / 36000.0 + 1.0;
    ASSERT_LT(wait, 30.0);
    QThread::msleep(static_cast<unsigned long>(wait * 1000));
    EXPECT_GT(ClockSeconds(site.Page("TimeShow")), soonestEnd);
    EXPECT_TRUE(Has(site.ItemPage(soonest), "<td class=\"left\">Ended</td>"));
}

namespace {

// The sections of a rule text: name to its key and value lines, as the
// rule store reads them (a section ends at the first empty line).
std::map<std::string, std::map<std::string, std::string>> RuleSections(const std::string& text) {
    std::map<std::string, std::map<std::string, std::string>> sections;
    std::string current;
    size_t from = 0;
    while (from < text.size()) {
        size_t end = text.find("\r\n", from);
        if (end == std::string::npos) {
            end = text.size();
        }
        const std::string line = text.substr(from, end - from);
        from = end + 2;
        if (line.empty()) {
            current.clear();
        } else if (line.front() == '[' && line.back() == ']') {
            current = line.substr(1, line.size() - 2);
            sections[current];
        } else if (!current.empty() && line.find('=') != std::string::npos) {
            const size_t equals = line.find('=');
            sections[current].emplace(line.substr(0, equals), line.substr(equals + 1));
        }
    }
    return sections;
}

std::string ReadSource(const char* relative) {
    return lw::test::ReadAll(lw::test::SourceDir() + QStringLiteral("/") +
                             QString::fromUtf8(relative))
        .toStdString();
}

}  // namespace

TEST(SiteRules, ShippedCategoryFileIsTheSitesDirectory) {
    QProcess print;
    print.start(BinDir() + QStringLiteral("/lotwright-site"),
                {QStringLiteral("--print-categories")});
    ASSERT_TRUE(print.waitForFinished(30000));
    const std::string printed = print.readAllStandardOutput().toStdString();
    ASSERT_FALSE(printed.empty());
    EXPECT_EQ(ReadSource("rules/category.pro"), printed);
}

// Every protocol of the shipped rules finds its markers on the page its
// address names: the record part between GStart and Gend, and each item's
// start marker (or the alternate one) inside it.
TEST(SiteRules, ShippedProtocolMarkersStandOnTheSitesPages) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    ASSERT_FALSE(token.empty());
    // A lot with several winners, so that the winner rows are there too.
    std::string multi;
    for (const auto& row : SellingRows(site, token)) {
        if (row.at("bidder") == "Dutch Auction") {
            multi = row.at("item");
        }
    }
    ASSERT_FALSE(multi.empty());

    const auto sections = RuleSections(ReadSource("rules/site.pro"));
    int checked = 0;
    for (const auto& [name, keys] : sections) {
        if (!keys.count("GStart") || !keys.count("Url")) {
            continue;
        }
        std::string url = keys.at("Url");
        const std::string shipped = "http://127.0.0.1:8750";
        ASSERT_EQ(url.rfind(shipped, 0), 0u) << name;
        url = url.substr(shipped.size());
        for (const auto& [macro, value] :
             std::vector<std::pair<std::string, std::string>>{{"[USERID]", "demo_seller"},
                                                              {"[PASSWORD]", token},
                                                              {"[DAYS]", "30"},
                                                              {"[SKIP]", "0"},
                                                              {"[ItemNumber]", multi}}) {
            for (size_t at = url.find(macro); at != std::string::npos; at = url.find(macro)) {
                url.replace(at, macro.size(), value);
            }
        }
        const std::string page = site.Get(url).body;
        const size_t begin = page.find(keys.at("GStart"));
        ASSERT_NE(begin, std::string::npos) << name << ": " << keys.at("GStart");
        const size_t end = page.find(keys.at("Gend"), begin);
        ASSERT_NE(end, std::string::npos) << name << ": " << keys.at("Gend");
        const std::string part = page.substr(begin, end - begin);
        const int items = std::stoi(keys.at("Items"));
        for (int n = 1; n <= items; ++n) {
            const std::string item = "Item" + std::to_string(n);
            const std::string start = keys.at(item + " Start");
            const auto alternate = keys.find(item + " AlternateStart");
            EXPECT_TRUE(Has(part, start) ||
                        (alternate != keys.end() && Has(part, alternate->second)))
                << name << " item " << n << ": " << start;
        }
        ++checked;
    }
    EXPECT_GE(checked, 8 + 2 + 12) << "the run protocols, the item pages and the winner pages";
}

// The direct post as the program makes it: the slot table of info.pro, the
// program's form encoder, the review page's hidden fields as the program
// extracts them, and the item number found behind the rules' marker.
TEST(SitePosts, TheProgramsFormEncodingListsAnItem) {
    Site site(SeedArgs(5));
    ASSERT_SITE(site);
    const auto info = RuleSections(ReadSource("rules/info.pro"));
    const auto& names = info.at("AuctionPost Names");
    const auto& defaults = info.at("AuctionPost Defaults");
    const int count = std::stoi(names.at("Count"));
    QStringList slotNames{QString()};
    QStringList slotValues{QString()};
    for (int n = 1; n <= count; ++n) {
        const std::string key = std::to_string(n);
        slotNames << QString::fromStdString(names.at("Field" + key));
        slotValues << QString::fromStdString(defaults.at("Default" + key));
    }
    const auto put = [&](const char* field, const QString& value) {
        const qsizetype slot = slotNames.indexOf(QString::fromUtf8(field));
        ASSERT_GT(slot, 0) << field;
        slotValues[slot] = value;
    };
    put("title", QStringLiteral("Tin sign &#34;Drink Fizz&#34; & bottle opener"));
    put("category", QStringLiteral("401"));
    put("description", QStringLiteral("<p>Some <b>rust</b>, see photos.</p>"));
    put("location", QStringLiteral("Albany, NY"));
    put("minimumbid", QStringLiteral("7.25"));
    put("duration", QStringLiteral("5"));
    put("userid", QStringLiteral("demo_seller"));
    put("password", QStringLiteral("demo"));
    const QString body = lw::update::BuildPostBody(slotNames, slotValues, count);

    const auto sections = RuleSections(ReadSource("rules/site.pro"));
    const auto& post = sections.at("Auction Post");
    const auto review = site.Post(post.at("url"), body.toStdString());
    ASSERT_FALSE(Has(review.body, "Problem with your listing")) << review.body;
    const QString confirm = lw::update::ExtractHiddenFields(
        QString::fromStdString(review.body), QString::fromStdString(post.at("Action")));
    ASSERT_FALSE(confirm.isEmpty());
    const auto listed = site.Post(post.at("url2"), confirm.toStdString());

    // The new item number as the program reads it: behind the marker, past
    // the next ">", up to "<", less as many characters as Split has.
    const auto& number = sections.at("eBay New Auction Number");
    const size_t marker = listed.body.find(number.at("Item1 Start"));
    ASSERT_NE(marker, std::string::npos) << listed.body;
    const size_t from = listed.body.find('>', marker) + 1;
    const std::string shown = listed.body.substr(from, listed.body.find('<', from) - from);
    const std::string item = shown.substr(number.at("Split").size());
    ASSERT_FALSE(item.empty());
    const std::string page = site.ItemPage(item);
    EXPECT_TRUE(Has(page, "<h2>Tin sign &#34;Drink Fizz&#34; &amp; bottle opener</h2>")) << page;
    EXPECT_TRUE(Has(page, "<td class=\"first\">$7.25</td>"));
    EXPECT_TRUE(Has(page, "<td class=\"cat\">Collectibles: Advertising</td>"));
}

namespace {

// A record as the writer would see it: field and value pairs in item order
// (items without a field left out), the includes after them, then the extra
// writes; "@protocol" names an ancillary record's protocol.
using Record = std::map<std::string, std::string>;

std::string Decoded(std::string text) {
    for (const auto& [entity, plain] : std::vector<std::pair<std::string, std::string>>{
             {"&nbsp;", " "}, {"&amp;", "&"}, {"&#38;", "&"}, {"&#39;", "'"}, {"&#34;", "\""}}) {
        for (size_t at = text.find(entity); at != std::string::npos; at = text.find(entity)) {
            text.replace(at, entity.size(), plain);
        }
    }
    return text;
}

std::string Trimmed(const QString& text) {
    return text.trimmed().toStdString();
}

std::string SourceValue(const QString& source, const QStringList& items,
                        const QStringList& ancillary) {
    const bool fromAncillary = source.startsWith(u'A');
    const int n = (fromAncillary ? source.mid(1) : source).toInt();
    const QStringList& list = fromAncillary ? ancillary : items;
    return n >= 1 && n <= list.size() ? Trimmed(list.at(n - 1)) : std::string();
}

// Runs a protocol of the shipped site.pro over the site's pages with the
// program's scanner: paging by IterateSkip, ancillary pages fetched from the
// site, records collected in order.
std::vector<Record> ScanProtocol(Site& site, const std::string& token, const QString& name) {
    using namespace lw::update;
    RuleStore rules;
    rules.SetText(kSiteStore,
                  lw::test::ReadAll(lw::test::SourceDir() + QStringLiteral("/rules/site.pro")) +
                      QStringLiteral("\r\n\r\n"));
    const auto address = [&](QString url, const ScanLists& lists) {
        url.replace(QStringLiteral("http://127.0.0.1:8750"), QString());
        url.replace(QStringLiteral("[USERID]"), QStringLiteral("demo_seller"));
        url.replace(QStringLiteral("[PASSWORD]"), QString::fromStdString(token));
        url.replace(QStringLiteral("[DAYS]"), QStringLiteral("30"));
        for (qsizetype i = 0; i < lists.fields.size() && i < lists.items.size(); ++i) {
            url.replace(u'[' + lists.fields.at(i) + u']', lists.items.at(i).trimmed());
        }
        return url;
    };
    const ProtocolRecord protocol = LoadRunProtocol(rules, name);
    std::vector<Record> records;
    PageScanner scanner(protocol);
    ScanState state;
    qint64 offset = 0;
    for (int pageCount = 0; pageCount < 100; ++pageCount) {
        QString url = address(protocol.url, {});
        url.replace(QStringLiteral("[SKIP]"), QString::number(offset));
        const PageText page(QByteArray::fromStdString(site.Get(url.toStdString()).body));
        if (!scanner.SetUp(page)) {
            ADD_FAILURE() << name.toStdString() << ": markers missing on " << url.toStdString();
            break;
        }
        int onPage = 0;
        for (;;) {
            ScanLists lists;
            ScanHooks hooks;
            hooks.pumpEvents = [] {};
            hooks.runAncillary = [&](const ItemRule& item, ScanLists& inProgress) {
                const ProtocolRecord ancillary =
                    LoadAncillaryProtocol(rules, item.ancillaryProtocol);
                const PageText itemPage(QByteArray::fromStdString(
                    site.Get(address(ancillary.url, inProgress).toStdString()).body));
                PageScanner itemScanner(ancillary);
                itemScanner.SetUpAncillary(itemPage);
                inProgress.ancillaryItems.clear();
                if (itemScanner.ScanAncillaryRecord(inProgress, hooks)) {
                    Record record{{"@protocol", ancillary.section.toStdString()}};
                    for (size_t i = 0; i < ancillary.items.size(); ++i) {
                        if (ancillary.items[i].field != RuleError()) {
                            record[ancillary.items[i].field.toStdString()] =
                                Trimmed(inProgress.ancillaryItems.value(static_cast<qsizetype>(i)));
                        }
                    }
                    for (const WriteRule& write : ancillary.writes) {
                        record[write.field.toStdString()] =
                            SourceValue(write.source, inProgress.items, inProgress.ancillaryItems);
                    }
                    records.push_back(record);
                }
                inProgress.ancillaryItems.clear();
            };
            if (scanner.ScanRecord(state, lists, hooks) != PageScanner::RecordEnd::Complete) {
                break;
            }
            ++onPage;
            Record record;
            for (size_t i = 0; i < protocol.items.size(); ++i) {
                if (protocol.items[i].field != RuleError()) {
                    record[protocol.items[i].field.toStdString()] =
                        Trimmed(lists.items.value(static_cast<qsizetype>(i)));
                }
            }
            for (qsizetype i = 0; i < lists.includes.size(); ++i) {
                record[lists.includes.at(i).toStdString()] =
                    lists.includeValues.value(i).toStdString();
            }
            for (const WriteRule& write : protocol.writes) {
                record[write.field.toStdString()] = SourceValue(write.source, lists.items, {});
            }
            records.push_back(record);
        }
        if (!protocol.Iterates() || onPage == 0) {
            break;
        }
        offset += protocol.IterateSkipValue();
    }
    return records;
}

std::vector<Record> Main(const std::vector<Record>& records) {
    std::vector<Record> main;
    for (const Record& record : records) {
        if (!record.count("@protocol")) {
            main.push_back(record);
        }
    }
    return main;
}

size_t CountOf(const std::vector<Record>& records, const std::string& prefix) {
    return static_cast<size_t>(std::count_if(records.begin(), records.end(), [&](const Record& r) {
        const auto at = r.find("@protocol");
        return at != r.end() && at->second.rfind(prefix, 0) == 0;
    }));
}

}  // namespace

// The shipped rules over the site's pages with the program's own scanner:
// every run protocol yields one record per row with the values the page
// shows, its ancillary protocols read the item and winner pages, and the
// redesigned pages are read through the alternate start markers.
TEST(SiteRulesScan, EveryRunProtocolYieldsTheRecordsOfItsPages) {
    Site site(SeedArgs(6) << QStringLiteral("--page-size") << QStringLiteral("50"));
    ASSERT_SITE(site);
    const std::string token = DemoToken(site);
    const auto selling = AllRows(site, token, "MyEbaySelling", "SELLING");
    const auto bidding = AllRows(site, token, "MyEbayBidding", "BIDDING");
    const auto watching = AllRows(site, token, "MyEbayWatching", "WATCHING");
    ASSERT_FALSE(selling.empty());
    ASSERT_FALSE(bidding.empty());
    ASSERT_FALSE(watching.empty());

    const auto clock = Main(ScanProtocol(site, token, QStringLiteral("Current Time eBay")));
    ASSERT_EQ(clock.size(), 1u);
    EXPECT_TRUE(std::regex_match(
        clock[0].at("eBayTime"),
        std::regex(R"re([A-Z][a-z]+day, \d\d \d\d, \d{4} \d\d:\d\d:\d\d P[SD]T)re")))
        << clock[0].at("eBayTime");

    const auto sales = ScanProtocol(site, token, QStringLiteral("Current Auctions eBay"));
    ASSERT_EQ(sales.size(), selling.size());
    for (size_t i = 0; i < selling.size(); ++i) {
        const auto& row = selling[i];
        EXPECT_EQ(sales[i].at("ItemNumber"), row.at("item"));
        EXPECT_EQ(sales[i].at("ItemTitle"), Decoded(row.at("title")));
        EXPECT_EQ(sales[i].at("HighBidderName"), Decoded(row.at("bidder")));
        EXPECT_EQ(sales[i].at("MinimumBid"), row.at("start"));
        EXPECT_EQ(sales[i].at("HighBid"), row.at("price"));
        EXPECT_EQ(sales[i].at("Quantity"), row.at("qty"));
        EXPECT_EQ(sales[i].at("NumberBids"), row.at("bids") == "0" ? "-" : row.at("bids"));
        EXPECT_EQ(sales[i].at("EndDate"), row.count("ends") ? row.at("ends") : row.at("ended"));
    }

    const auto details = ScanProtocol(site, token, QStringLiteral("Auction Details eBay"));
    EXPECT_EQ(Main(details).size(), selling.size());
    EXPECT_EQ(CountOf(details, "Auction Item eBay"), selling.size());
    size_t winners = 0;
    for (const auto& row : selling) {
        if (row.at("bidder") == "Dutch Auction") {
            winners += Rows(site.ItemPage(row.at("item")), "<!-- BEGIN WINNERS -->",
                            "<!-- END WINNERS -->")
                           .size();
        }
    }
    EXPECT_GE(winners, 4u);
    EXPECT_EQ(CountOf(details, "Auction Winner "), winners);
    std::set<std::pair<std::string, std::string>> winnerKeys;
    for (const Record& record : details) {
        if (record.count("@protocol") && record.at("@protocol") == "Auction Item eBay") {
            EXPECT_TRUE(
                std::regex_match(record.at("ItemCategory"), std::regex(R"re([^:]+: .+)re")));
            EXPECT_TRUE(std::regex_match(
                record.at("StartDate"), std::regex(R"re(\d\d/\d\d/\d\d \d\d:\d\d:\d\d P[SD]T)re")));
        } else if (record.count("@protocol")) {
            EXPECT_TRUE(
                std::regex_match(record.at("HighBidderFeedback"), std::regex(R"re(\(-?\d+\))re")));
            EXPECT_TRUE(
                winnerKeys.emplace(record.at("ItemNumber"), record.at("HighBidderName")).second)
                << "each winner once: " << record.at("HighBidderName");
        }
    }

    const auto bids = ScanProtocol(site, token, QStringLiteral("Current Bids eBay"));
    ASSERT_EQ(bids.size(), bidding.size());
    for (size_t i = 0; i < bidding.size(); ++i) {
        EXPECT_EQ(bids[i].at("ItemNumber"), bidding[i].at("item"));
        EXPECT_EQ(bids[i].at("SellerName"), Decoded(bidding[i].at("seller")));
        EXPECT_EQ(bids[i].at("Winning"),
                  bidding[i].at("status") == "high bidder" ? "True" : "False");
        EXPECT_EQ(bids[i].at("WinningBid"), bidding[i].at("mybid"));
        EXPECT_EQ(bids[i].at("MaximumBid"), bidding[i].at("mymax"));
    }
    const auto bidDetails = ScanProtocol(site, token, QStringLiteral("Bid Details eBay"));
    EXPECT_EQ(CountOf(bidDetails, "Bid Item eBay"), bidding.size());
    EXPECT_GE(CountOf(bidDetails, "Bid Winner "), 2u);

    const auto watched = ScanProtocol(site, token, QStringLiteral("Watching Items eBay"));
    ASSERT_EQ(watched.size(), watching.size());
    for (size_t i = 0; i < watching.size(); ++i) {
        EXPECT_EQ(watched[i].at("ItemNumber"), watching[i].at("item"));
        EXPECT_EQ(watched[i].at("HighBid"), watching[i].at("price"));
    }

    const auto ledger = ScanProtocol(site, token, QStringLiteral("Account History eBay"));
    const auto ledgerRows = AllRows(site, token, "MyEbayAccount", "LEDGER");
    ASSERT_EQ(ledger.size(), ledgerRows.size());
    std::set<std::string> types;
    for (size_t i = 0; i < ledger.size(); ++i) {
        types.insert(ledger[i].at("AccountType"));
        EXPECT_EQ(ledger[i].at("AccountType") + "\r\n", ledgerRows[i].at("desc"));
        EXPECT_EQ(ledger[i].at("Date"), ledger[i].at("AccountDate"));
        EXPECT_EQ(ledger[i].at("Debit"), ledgerRows[i].at("debit"));
    }
    EXPECT_TRUE(types.count("Insertion fee"));
    EXPECT_TRUE(types.count("Final Auction Value fee"));
    EXPECT_TRUE(types.count("Credit Card payment"));

    const auto balance = ScanProtocol(site, token, QStringLiteral("Account Information eBay"));
    ASSERT_EQ(balance.size(), 1u);
    EXPECT_EQ(balance[0].at("AccountType"), "Current balance");
    EXPECT_EQ(balance[0].at("Date"), balance[0].at("AccountDate"));

    // The redesign: the item cells change class and the alternate starts find them.
    site.Admin("layout", "v=2");
    const auto redesigned = ScanProtocol(site, token, QStringLiteral("Current Auctions eBay"));
    ASSERT_EQ(redesigned.size(), sales.size());
    for (size_t i = 0; i < sales.size(); ++i) {
        EXPECT_EQ(redesigned[i].at("ItemNumber"), sales[i].at("ItemNumber"));
    }
}
