// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's HTML. Every page is plain 2000-era markup with CR LF
// line ends, every value is escaped, and every list stands between fixed
// comment markers with one row per record and one cell per value, the value
// directly behind its tag, so that a rule file can find each one by a start
// marker. The shipped rules/site.pro relies on the markers and cell classes
// named here: change one and the rules must change with it. Pages never read
// the store or the clock; they render what they are given.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "site/categories.h"
#include "site/market_store.h"

namespace lw::site {

// Markers around the record part of each page.
inline constexpr const char* kSellingBegin = "<!-- BEGIN SELLING -->";
inline constexpr const char* kSellingEnd = "<!-- END SELLING -->";
inline constexpr const char* kBiddingBegin = "<!-- BEGIN BIDDING -->";
inline constexpr const char* kBiddingEnd = "<!-- END BIDDING -->";
inline constexpr const char* kWatchingBegin = "<!-- BEGIN WATCHING -->";
inline constexpr const char* kWatchingEnd = "<!-- END WATCHING -->";
inline constexpr const char* kLedgerBegin = "<!-- BEGIN LEDGER -->";
inline constexpr const char* kLedgerEnd = "<!-- END LEDGER -->";
inline constexpr const char* kSummaryBegin = "<!-- BEGIN SUMMARY -->";
inline constexpr const char* kSummaryEnd = "<!-- END SUMMARY -->";
inline constexpr const char* kClockBegin = "<!-- BEGIN CLOCK -->";
inline constexpr const char* kClockEnd = "<!-- END CLOCK -->";
inline constexpr const char* kItemBegin = "<!-- BEGIN ITEM -->";
inline constexpr const char* kItemEnd = "<!-- END ITEM -->";
inline constexpr const char* kWinnersBegin = "<!-- BEGIN WINNERS -->";
inline constexpr const char* kWinnersEnd = "<!-- END WINNERS -->";
inline constexpr const char* kDetailsBegin = "<!-- BEGIN DETAILS -->";
inline constexpr const char* kDetailsEnd = "<!-- END DETAILS -->";
// What the high-bidder cell of a list says for a lot with several winners.
inline constexpr const char* kSeveralWinners = "Dutch Auction";

// The command path of every page and post.
inline constexpr const char* kCgiPath = "/aw-cgi/eBayISAPI.dll";

// Which page kinds a test may break by dropping their begin marker.
enum class PageKind { Selling, Bidding, Watching, Ledger, Summary, Clock, Item, Other };

struct ListPage {
    std::string userId;
    std::string pass;  // as the request gave it, for the paging links
    int days = 30;
    std::int64_t skip = 0;
    int pageSize = 50;
    std::int64_t now = 0;
    int layout = 1;           // 2: the redesign whose item cells read class="itemno"
    bool dropMarker = false;  // a broken page, for tests
};

struct BiddingRow {
    ItemView view;
    std::int64_t myBid = 0;
    std::int64_t myMaximum = 0;
    int myQuantity = 1;
    bool winning = false;
};

std::string HomePage(const std::string& demoUser, const std::string& demoPassword);
std::string SignInPage(const std::string& notice, const std::string& userId);
// The sign-in answer and the member's start page; passToken goes into its links.
std::string MyMarketPage(const User& user, const std::string& passToken, std::int64_t balance,
                         std::int64_t now);
std::string SellingPage(const ListPage& page, const std::vector<ItemView>& rows);
std::string BiddingPage(const ListPage& page, const std::vector<BiddingRow>& rows);
std::string WatchingPage(const ListPage& page, const std::vector<ItemView>& rows);
std::string LedgerPage(const ListPage& page, const std::vector<LedgerRow>& rows);
std::string SummaryPage(const ListPage& page, std::int64_t balance,
                        const std::optional<LedgerRow>& lastPayment);
std::string ClockPage(std::int64_t now, bool dropMarker);
// The item's posted fields beyond its own columns stand in a table of their
// own, one row per field: <td class="field">name</td><td class="value">.
std::string ItemPage(const ItemView& view, std::int64_t now, bool dropMarker,
                     const ListingDetails& details = {});
std::string ItemMissingPage(const std::string& number);
std::string EmailPage(const std::string& requested, const std::optional<User>& found);
std::string FeedbackProfilePage(const User& user, const std::vector<FeedbackRow>& rows);
std::string SellerListPage(const User& seller, const std::vector<ItemView>& rows, std::int64_t now);
// The sell form for a category; a relist fills it from an item. The sell
// form and the review page name the site's base (baseUrl, "http://host:port"),
// so that a copy saved as a file still posts to the site.
std::string SellFormPage(const Category& category, const Item* relist, const std::string& baseUrl);
std::string CategoryChoicePage();
std::string ReviewPage(const PendingListing& listing, const std::string& userId,
                       const std::string& encodedPass, const std::string& baseUrl);
// A post the site would not take now: an error page, sent with an error status.
std::string PostRefusedPage();
std::string ListingProblemPage(const std::vector<std::string>& problems);
std::string ListedPage(std::int64_t number, const std::string& title, std::int64_t endTime);
std::string FeedbackLeftPage(const std::string& otherUser);
std::string NotRegisteredPage(const std::string& otherUser);
std::string MessagePage(const std::string& title, const std::string& text);

}  // namespace lw::site
