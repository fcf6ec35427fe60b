// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's HTTP face.
#include "site/routes.h"

#include <httplib.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include "site/credentials.h"
#include "site/seeder.h"
#include "site/site_text.h"

namespace lw::site {

namespace {

constexpr std::int64_t kDay = 86400;

// The largest post body the site reads.
constexpr size_t kMaxPostBody = 1024 * 1024;

// ---------------------------------------------------------------------------
// Request values
// ---------------------------------------------------------------------------

int HexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

std::string DecodeComponent(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '+') {
            out += ' ';
        } else if (c == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 &&
                   HexValue(text[i + 2]) >= 0) {
            out += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

bool IsUtf8(std::string_view text) {
    size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        int follow = 0;
        if (c < 0x80) {
            follow = 0;
        } else if ((c & 0xE0) == 0xC0 && c >= 0xC2) {
            follow = 1;
        } else if ((c & 0xF0) == 0xE0) {
            follow = 2;
        } else if ((c & 0xF8) == 0xF0 && c <= 0xF4) {
            follow = 3;
        } else {
            return false;
        }
        if (i + static_cast<size_t>(follow) >= text.size()) {
            return false;
        }
        for (int k = 1; k <= follow; ++k) {
            if ((static_cast<unsigned char>(text[i + static_cast<size_t>(k)]) & 0xC0) != 0x80) {
                return false;
            }
        }
        i += static_cast<size_t>(follow) + 1;
    }
    return true;
}

// Posts from older clients encode one byte per character, in Latin-1; the
// site keeps all its text in UTF-8.
std::string AsUtf8(std::string text) {
    if (IsUtf8(text)) {
        return text;
    }
    std::string out;
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x80) {
            out += c;
        } else {
            out += static_cast<char>(0xC0 | (u >> 6));
            out += static_cast<char>(0x80 | (u & 0x3F));
        }
    }
    return out;
}

struct Form {
    std::string command;
    std::map<std::string, std::string> values;  // keys in lower case; the first of a name wins

    std::string Get(const std::string& key, const std::string& fallback = {}) const {
        const auto found = values.find(key);
        return found == values.end() ? fallback : found->second;
    }
    bool Has(const std::string& key) const { return values.count(key) > 0; }
    bool On(const std::string& key) const {
        const std::string value = Lower(Get(key));
        return value == "on" || value == "1" || value == "checked" || value == "true";
    }
};

void ParsePairs(std::string_view text, Form& form, bool allowCommand) {
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('&', start);
        if (end == std::string_view::npos) {
            end = text.size();
        }
        const std::string_view pair = text.substr(start, end - start);
        if (!pair.empty()) {
            const size_t equals = pair.find('=');
            if (equals == std::string_view::npos) {
                if (allowCommand && form.command.empty()) {
                    form.command = DecodeComponent(pair);
                }
            } else {
                const std::string key = Lower(DecodeComponent(pair.substr(0, equals)));
                form.values.emplace(key, AsUtf8(DecodeComponent(pair.substr(equals + 1))));
            }
        }
        start = end + 1;
    }
}

// The query's pairs, then those of a posted form body (the request's own, or
// one read by the caller).
Form ReadForm(const httplib::Request& request, const std::string* postedBody = nullptr) {
    Form form;
    const std::string& target = request.target.empty() ? request.path : request.target;
    if (const size_t query = target.find('?'); query != std::string::npos) {
        ParsePairs(std::string_view(target).substr(query + 1), form, true);
    }
    const std::string type = Lower(request.get_header_value("Content-Type"));
    const std::string& body = postedBody ? *postedBody : request.body;
    if (request.method == "POST" && !body.empty() &&
        (type.empty() || type.find("application/x-www-form-urlencoded") != std::string::npos)) {
        ParsePairs(body, form, false);
    }
    if (const std::string named = form.Get("mfcisapicommand"); !named.empty()) {
        form.command = named;
    }
    return form;
}

std::int64_t IntValue(const std::string& text, std::int64_t fallback) {
    std::int64_t value = 0;
    const char* first = text.data();
    const char* last = text.data() + text.size();
    while (first < last && *first == ' ') {
        ++first;
    }
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end == first) {
        return fallback;
    }
    return value;
}

void SendHtml(httplib::Response& response, const std::string& body, int status = 200) {
    response.status = status;
    response.set_content(body, "text/html; charset=utf-8");
}

void SendJson(httplib::Response& response, const std::string& body, int status = 200) {
    response.status = status;
    response.set_content(body + "\n", "application/json");
}

void SendJsonError(httplib::Response& response, const std::string& message, int status = 400) {
    SendJson(response, "{\"ok\":false,\"error\":" + JsonString(message) + "}", status);
}

// ---------------------------------------------------------------------------
// Pages and posts
// ---------------------------------------------------------------------------

struct Context {
    MarketStore& store;
    std::int64_t now;
    const Form& form;
    httplib::Response& response;
    int pageSize;
    int layout;
    std::function<bool(PageKind)> takeBreak;
    const std::string& baseUrl;
};

// The member of a page request, signed in by the encoded password.
std::optional<User> Member(Context& c) {
    const auto user = c.store.FindUser(c.form.Get("userid"));
    if (!user || !EncodedPassMatches(user->userId, user->password, c.form.Get("pass"))) {
        return std::nullopt;
    }
    return user;
}

// A post that carries the password in clear; the encoded form is taken too.
std::optional<User> MemberByPassword(Context& c, const std::string& passwordField) {
    const auto user = c.store.FindUser(c.form.Get("userid"));
    if (!user) {
        return std::nullopt;
    }
    const std::string given = c.form.Get(passwordField);
    if (given == user->password || EncodedPassMatches(user->userId, user->password, given)) {
        return user;
    }
    return std::nullopt;
}

void SignInAgain(Context& c) {
    SendHtml(c.response,
             SignInPage("Your user ID or password is not correct, or your sign-in has expired. "
                        "Please sign in again.",
                        c.form.Get("userid")));
}

ListPage MakeListPage(Context& c, const User& user, PageKind kind) {
    ListPage page;
    page.userId = user.userId;
    page.pass = c.form.Get("pass");
    page.days = static_cast<int>(std::clamp<std::int64_t>(IntValue(c.form.Get("days"), 30), 1, 60));
    page.skip = std::max<std::int64_t>(0, IntValue(c.form.Get("skip"), 0));
    page.pageSize = c.pageSize;
    page.now = c.now;
    page.layout = c.layout;
    page.dropMarker = c.takeBreak(kind);
    return page;
}

std::int64_t Since(const ListPage& page) {
    return page.now - page.days * kDay;
}

void SignInPost(Context& c) {
    const auto user = MemberByPassword(c, "pass");
    if (!user) {
        SendHtml(c.response,
                 SignInPage("Your user ID or password is not correct.", c.form.Get("userid")));
        return;
    }
    std::string token = EncodePassword(user->userId, user->password);
    token += CheckCharacter(token);
    SendHtml(c.response, MyMarketPage(*user, token, c.store.Balance(user->id, c.now), c.now));
}

void MyMarket(Context& c) {
    const auto user = Member(c);
    if (!user) {
        return SignInAgain(c);
    }
    SendHtml(c.response,
             MyMarketPage(*user, c.form.Get("pass"), c.store.Balance(user->id, c.now), c.now));
}

void Selling(Context& c) {
    const auto user = Member(c);
    if (!user) {
        return SignInAgain(c);
    }
    const ListPage page = MakeListPage(c, *user, PageKind::Selling);
    std::vector<ItemView> rows;
    for (const std::int64_t number :
         c.store.SellingItems(user->id, Since(page), page.skip, page.pageSize)) {
        if (auto view = c.store.View(number, c.now)) {
            rows.push_back(std::move(*view));
        }
    }
    SendHtml(c.response, SellingPage(page, rows));
}

void Bidding(Context& c) {
    const auto user = Member(c);
    if (!user) {
        return SignInAgain(c);
    }
    const ListPage page = MakeListPage(c, *user, PageKind::Bidding);
    std::vector<BiddingRow> rows;
    for (const std::int64_t number :
         c.store.BiddingItems(user->id, Since(page), page.skip, page.pageSize)) {
        auto view = c.store.View(number, c.now);
        if (!view) {
            continue;
        }
        BiddingRow row;
        for (const Bid& bid : view->standing) {
            if (bid.bidderId == user->id) {
                row.myMaximum = bid.maximum;
                row.myQuantity = bid.quantity;
            }
        }
        for (const Winner& winner : view->winners) {
            if (winner.bidderId == user->id) {
                row.winning = true;
                row.myQuantity = winner.quantity;
            }
        }
        row.myBid = row.winning && view->price ? *view->price : row.myMaximum;
        row.view = std::move(*view);
        rows.push_back(std::move(row));
    }
    SendHtml(c.response, BiddingPage(page, rows));
}

void Watching(Context& c) {
    const auto user = Member(c);
    if (!user) {
        return SignInAgain(c);
    }
    const ListPage page = MakeListPage(c, *user, PageKind::Watching);
    std::vector<ItemView> rows;
    for (const std::int64_t number :
         c.store.WatchedItems(user->id, Since(page), page.skip, page.pageSize)) {
        if (auto view = c.store.View(number, c.now)) {
            rows.push_back(std::move(*view));
        }
    }
    SendHtml(c.response, WatchingPage(page, rows));
}

void AccountHistory(Context& c) {
    const auto user = Member(c);
    if (!user) {
        return SignInAgain(c);
    }
    c.store.Settle(c.now);
    const ListPage page = MakeListPage(c, *user, PageKind::Ledger);
    SendHtml(c.response, LedgerPage(page, c.store.Ledger(user->id, Since(page), c.now, page.skip,
                                                         page.pageSize)));
}

void AccountSummary(Context& c) {
    const auto user = Member(c);
    if (!user) {
        return SignInAgain(c);
    }
    c.store.Settle(c.now);
    const ListPage page = MakeListPage(c, *user, PageKind::Summary);
    SendHtml(c.response, SummaryPage(page, c.store.Balance(user->id, c.now),
                                     c.store.LastPayment(user->id, c.now)));
}

void ViewItem(Context& c) {
    const std::string number = c.form.Get("item");
    const auto view = c.store.View(IntValue(number, 0), c.now);
    if (!view) {
        SendHtml(c.response, ItemMissingPage(number), 404);
        return;
    }
    SendHtml(c.response, ItemPage(*view, c.now, c.takeBreak(PageKind::Item),
                                  c.store.ItemDetails(view->item.number)));
}

void ReturnEmail(Context& c) {
    if (!MemberByPassword(c, "pass")) {
        return SignInAgain(c);
    }
    const std::string requested = c.form.Get("requested");
    SendHtml(c.response, EmailPage(requested, c.store.FindUser(requested)));
}

void ViewFeedback(Context& c) {
    const auto user = c.store.FindUser(c.form.Get("userid"));
    if (!user) {
        SendHtml(c.response, MessagePage("No such member", "There is no member of that name."),
                 404);
        return;
    }
    SendHtml(c.response, FeedbackProfilePage(*user, c.store.FeedbackFor(user->id, 50)));
}

void ViewListedItems(Context& c) {
    const auto user = c.store.FindUser(c.form.Get("userid"));
    if (!user) {
        SendHtml(c.response, MessagePage("No such member", "There is no member of that name."),
                 404);
        return;
    }
    std::vector<ItemView> rows;
    for (const std::int64_t number : c.store.RunningItemsOf(user->id, c.now)) {
        if (auto view = c.store.View(number, c.now)) {
            rows.push_back(std::move(*view));
        }
    }
    SendHtml(c.response, SellerListPage(*user, rows, c.now));
}

void SellItemForm(Context& c) {
    if (!c.form.Has("category")) {
        SendHtml(c.response, CategoryChoicePage());
        return;
    }
    const Category* category = FindCategory(static_cast<int>(IntValue(c.form.Get("category"), 0)));
    if (!category) {
        SendHtml(c.response,
                 MessagePage("No such category",
                             "The Demo Market has no category " + c.form.Get("category") + "."),
                 404);
        return;
    }
    SendHtml(c.response, SellFormPage(*category, nullptr, c.baseUrl));
}

void RelistItem(Context& c) {
    const auto item = c.store.FindItem(IntValue(c.form.Get("item"), 0));
    const Category* category = item ? FindCategory(item->category) : nullptr;
    if (!item || !category) {
        SendHtml(c.response, ItemMissingPage(c.form.Get("item")), 404);
        return;
    }
    SendHtml(c.response, SellFormPage(*category, &*item, c.baseUrl));
}

// The refusal of a sell post: the answer quotes the redirect line that the
// site's old server sent to the sign-in page, which clients look for.
void SellRefused(Context& c) {
    SendHtml(c.response,
             "<html><head><title>Object Moved</title></head><body>\r\n"
             "<pre>HTTP/1.0 302 Object Moved Server: Demo Market\r\n"
             "Location: /aw-cgi/eBayISAPI.dll?SignIn</pre>\r\n"
             "<p>Your user ID or password is not correct. This object may be found "
             "<a href=\"/aw-cgi/eBayISAPI.dll?SignIn\">here</a>.</p>\r\n"
             "</body></html>\r\n");
}

std::string Options(const Form& form) {
    std::string options;
    for (const char* name : {"bold", "highlight", "featured", "superfeatured", "private"}) {
        if (form.On(name)) {
            options += std::string(name) + "~";
        }
    }
    return options;
}

// Fields of a sell post that are no detail of the listing: the sign-in, the
// command, and what the item's own columns hold.
bool OwnColumnOrSecret(const std::string& name) {
    static const char* const kNames[] = {"mfcisapicommand", "userid",     "password", "pass",
                                         "token",           "title",      "category", "description",
                                         "location",        "minimumbid", "reserve",  "quantity"};
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [&name](const char* own) { return name == own; });
}

// Every other posted field is kept as the seller sent it, up to a bound, so
// that the item page shows what the post carried.
constexpr size_t kMaxDetails = 100;
constexpr size_t kMaxDetailName = 64;
constexpr size_t kMaxDetailValue = 2000;

ListingDetails DetailsOf(const Form& form) {
    ListingDetails details;
    for (const auto& [name, value] : form.values) {
        if (details.size() >= kMaxDetails) {
            break;
        }
        if (OwnColumnOrSecret(name) || name.empty() || name.size() > kMaxDetailName) {
            continue;
        }
        details.emplace_back(name, value.substr(0, kMaxDetailValue));
    }
    return details;
}

void VerifyNewItem(Context& c) {
    const auto user = MemberByPassword(c, c.form.Has("password") ? "password" : "pass");
    if (!user) {
        return SellRefused(c);
    }
    std::vector<std::string> problems;
    PendingListing listing;
    listing.sellerId = user->id;
    Item& item = listing.item;
    item.sellerId = user->id;
    item.title = c.form.Get("title");
    if (item.title.empty()) {
        problems.push_back("The title is missing.");
    } else if (item.title.size() > 80) {
        problems.push_back("The title is longer than 80 characters.");
    }
    item.category = static_cast<int>(IntValue(c.form.Get("category"), 0));
    if (!FindCategory(item.category)) {
        problems.push_back("The category " + c.form.Get("category") + " does not exist.");
    }
    item.description = c.form.Get("description");
    if (item.description.empty()) {
        problems.push_back("The description is missing.");
    }
    item.location = c.form.Get("location");
    if (item.location.empty()) {
        problems.push_back("The item location is missing.");
    }
    const auto minimum = ParseMoney(c.form.Get("minimumbid"));
    if (!minimum || *minimum <= 0) {
        problems.push_back("The minimum bid must be an amount above zero.");
    } else {
        item.minimumBid = *minimum;
    }
    const std::string reserveText = c.form.Get("reserve");
    if (!reserveText.empty()) {
        const auto reserve = ParseMoney(reserveText);
        if (!reserve) {
            problems.push_back("The reserve price is not an amount.");
        } else {
            item.reserve = *reserve;
        }
    }
    item.quantity = static_cast<int>(IntValue(c.form.Get("quantity", "1"), 0));
    if (item.quantity < 1 || item.quantity > 100) {
        problems.push_back("The quantity must be from 1 to 100.");
    }
    if (item.quantity > 1 && item.reserve > 0) {
        problems.push_back("A lot of several items cannot have a reserve price.");
    }
    if (item.reserve > 0 && item.reserve < item.minimumBid) {
        problems.push_back("The reserve price is below the minimum bid.");
    }
    listing.durationDays = static_cast<int>(IntValue(c.form.Get("duration", "7"), 0));
    if (listing.durationDays != 3 && listing.durationDays != 5 && listing.durationDays != 7 &&
        listing.durationDays != 10) {
        problems.push_back("The duration must be 3, 5, 7 or 10 days.");
    }
    item.options = Options(c.form);
    listing.details = DetailsOf(c.form);
    if (!problems.empty()) {
        SendHtml(c.response, ListingProblemPage(problems));
        return;
    }
    listing.token = c.store.AddPending(listing, c.now);
    SendHtml(c.response, ReviewPage(listing, user->userId,
                                    EncodePassword(user->userId, user->password), c.baseUrl));
}

void AddItem(Context& c) {
    const auto user = MemberByPassword(c, "pass");
    if (!user) {
        return SellRefused(c);
    }
    auto listing = c.store.TakePending(c.form.Get("token"));
    if (!listing || listing->sellerId != user->id) {
        SendHtml(c.response,
                 MessagePage("Listing not found",
                             "This listing was already submitted or has expired. "
                             "Please start again from the sell form."),
                 404);
        return;
    }
    Item item = listing->item;
    item.startTime = c.now;
    item.endTime = c.now + listing->durationDays * kDay;
    DbTransaction transaction(c.store.Database());
    const std::int64_t number = c.store.AddItem(item);
    c.store.AddItemDetails(number, listing->details);
    LedgerRow fee;
    fee.time = c.now;
    fee.type = "Insertion fee";
    fee.item = number;
    fee.debit = MarketStore::InsertionFee(item.minimumBid, item.quantity);
    fee.note = "start price " + Money(item.minimumBid);
    c.store.AddLedger(user->id, fee);
    if (item.options.find("bold~") != std::string::npos) {
        LedgerRow bold = fee;
        bold.type = "Bold fee";
        bold.debit = 200;
        bold.note = "listing upgrade";
        c.store.AddLedger(user->id, bold);
    }
    transaction.Commit();
    SendHtml(c.response, ListedPage(number, item.title, item.endTime));
}

void LeaveFeedback(Context& c) {
    const auto user = MemberByPassword(c, "pass");
    if (!user) {
        return SignInAgain(c);
    }
    const std::string otherId = c.form.Get("otheruserid");
    const auto other = c.store.FindUser(otherId);
    if (!other || other->id == user->id) {
        SendHtml(c.response, NotRegisteredPage(otherId));
        return;
    }
    const std::string which = Lower(c.form.Get("which", "positive"));
    const int delta = which == "positive" ? 1 : which == "negative" ? -1 : 0;
    std::string comment = c.form.Get("comment");
    if (comment.size() > 80) {
        comment.resize(80);
    }
    c.store.AddFeedback(user->id, other->id, IntValue(c.form.Get("itemno"), 0),
                        delta > 0   ? "positive"
                        : delta < 0 ? "negative"
                                    : "neutral",
                        comment, c.now);
    c.store.AdjustFeedback(other->id, delta);
    SendHtml(c.response, FeedbackLeftPage(other->userId));
}

using Handler = void (*)(Context&);

const std::map<std::string, Handler>& Commands() {
    static const std::map<std::string, Handler> commands = {
        {"myebay", MyMarket},
        {"myebayselling", Selling},
        {"myebaybidding", Bidding},
        {"myebaywatching", Watching},
        {"myebayaccount", AccountHistory},
        {"accountstatus", AccountSummary},
        {"viewitem", ViewItem},
        {"returnuseremail", ReturnEmail},
        {"viewfeedback", ViewFeedback},
        {"viewlisteditems", ViewListedItems},
        {"sellitemform", SellItemForm},
        {"relistitem", RelistItem},
        {"verifynewitem", VerifyNewItem},
        {"additem", AddItem},
        {"leavefeedback", LeaveFeedback},
    };
    return commands;
}

// The served rule text: the shipped base replaced by the site's own.
std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
    if (from.empty()) {
        return text;
    }
    size_t at = 0;
    while ((at = text.find(from, at)) != std::string::npos) {
        text.replace(at, from.size(), to);
        at += to.size();
    }
    return text;
}

bool PlainFileName(const std::string& name) {
    if (name.empty() || name.front() == '.') {
        return false;
    }
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '_' || c == '-';
    });
}

std::optional<PageKind> PageKindNamed(const std::string& name) {
    static const std::map<std::string, PageKind> kinds = {
        {"selling", PageKind::Selling},   {"bidding", PageKind::Bidding},
        {"watching", PageKind::Watching}, {"account", PageKind::Ledger},
        {"ledger", PageKind::Ledger},     {"summary", PageKind::Summary},
        {"balance", PageKind::Summary},   {"time", PageKind::Clock},
        {"clock", PageKind::Clock},       {"item", PageKind::Item}};
    const auto found = kinds.find(Lower(name));
    if (found == kinds.end()) {
        return std::nullopt;
    }
    return found->second;
}

std::string ItemJson(const ItemView& view) {
    std::string json = "{\"number\":" + std::to_string(view.item.number) +
                       ",\"title\":" + JsonString(view.item.title) +
                       ",\"seller\":" + JsonString(view.seller) +
                       ",\"end\":" + JsonString(SiteDate(view.item.endTime)) +
                       ",\"ended\":" + (view.ended ? "true" : "false") +
                       ",\"quantity\":" + std::to_string(view.item.quantity) +
                       ",\"bids\":" + std::to_string(view.bidCount) +
                       ",\"price\":" + (view.price ? JsonString(Money(*view.price)) : "null") +
                       ",\"reserve_met\":" + (view.reserveMet ? "true" : "false") +
                       ",\"sold\":" + (view.Sold() ? "true" : "false") + ",\"winners\":[";
    for (size_t i = 0; i < view.winners.size(); ++i) {
        const Winner& winner = view.winners[i];
        json += std::string(i ? "," : "") + "{\"bidder\":" + JsonString(winner.bidder) +
                ",\"quantity\":" + std::to_string(winner.quantity) +
                ",\"price\":" + JsonString(Money(winner.price)) + "}";
    }
    return json + "]}";
}

}  // namespace

MarketSite::MarketSite(MarketStore& store, SiteClock& clock, SiteSettings settings)
    : m_store(store), m_clock(clock), m_settings(std::move(settings)) {}

bool MarketSite::TakeBreak(PageKind kind) {
    if (m_control.breakCount <= 0 || (!m_control.breakAll && m_control.breakKind != kind)) {
        return false;
    }
    --m_control.breakCount;
    return true;
}

void MarketSite::Register(httplib::Server& server) {
    server.Get(kCgiPath, [this](const httplib::Request& request, httplib::Response& response) {
        Cgi(request, response, nullptr);
    });
    // A post's body is read here rather than by the HTTP library, which
    // refuses a form of more than 8 KB: a listing's description alone is
    // often more. The body is bounded all the same.
    server.Post(kCgiPath, [this](const httplib::Request& request, httplib::Response& response,
                                 const httplib::ContentReader& read) {
        std::string body;
        bool tooLong = false;
        read([&](const char* data, size_t length) {
            if (body.size() + length > kMaxPostBody) {
                tooLong = true;
                return false;
            }
            body.append(data, length);
            return true;
        });
        if (tooLong) {
            SendHtml(response,
                     MessagePage("Post too large", "The Demo Market takes posts of up to 1 MB."),
                     413);
            return;
        }
        Cgi(request, response, &body);
    });
    server.Get("/", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard lock(m_lock);
        if (m_control.down) {
            SendHtml(response, MessagePage("Service unavailable", "The Demo Market is down."), 503);
            return;
        }
        SendHtml(response, HomePage(kDemoUserId, kDemoPassword));
    });
    auto rules = [this](const httplib::Request& request, httplib::Response& response) {
        Rules(request, response);
    };
    server.Get("/rules/version", rules);
    server.Get(R"(/rules/([^/]+))", rules);
    auto admin = [this](const httplib::Request& request, httplib::Response& response) {
        Admin(request, response);
    };
    server.Get(R"(/admin/([a-z-]+))", admin);
    server.Post(R"(/admin/([a-z-]+))", admin);
}

void MarketSite::TakeSellPostFault(const std::string& command, int& refuseStatus,
                                   std::chrono::milliseconds& hold) {
    if (command != "verifynewitem" && command != "additem") {
        return;
    }
    if (m_control.refusePosts > 0) {
        --m_control.refusePosts;
        refuseStatus = m_control.refuseStatus;
    }
    if (m_control.holdPosts > 0) {
        --m_control.holdPosts;
        hold = m_control.holdFor;
    }
}

void MarketSite::Stop() {
    {
        const std::lock_guard lock(m_holdMutex);
        m_stopping = true;
    }
    m_holdEnded.notify_all();
}

void MarketSite::Cgi(const httplib::Request& request, httplib::Response& response,
                     const std::string* body) {
    const Form form = ReadForm(request, body);
    int refuseStatus = 0;
    std::chrono::milliseconds hold{0};
    {
        std::lock_guard lock(m_lock);
        TakeSellPostFault(Lower(form.command), refuseStatus, hold);
    }
    if (hold.count() > 0) {
        // Held without the market's lock, so that the rest of the site
        // answers meanwhile; the wait ends at once when the server stops.
        std::unique_lock wait(m_holdMutex);
        m_holdEnded.wait_for(wait, hold, [this] { return m_stopping; });
    }
    if (refuseStatus != 0) {
        SendHtml(response, PostRefusedPage(), refuseStatus);
        return;
    }
    std::lock_guard lock(m_lock);
    if (m_control.down) {
        SendHtml(response,
                 MessagePage("Service unavailable",
                             "The Demo Market is down for maintenance. Please try again later."),
                 503);
        return;
    }
    const std::int64_t now = m_clock.Now();
    Context context{m_store,
                    now,
                    form,
                    response,
                    m_settings.pageSize,
                    m_control.layout,
                    [this](PageKind kind) { return TakeBreak(kind); },
                    m_baseUrl};
    const std::string command = Lower(form.command);
    if (command == "myebay" && request.method == "POST") {
        SignInPost(context);
        return;
    }
    if (command == "signin") {
        SendHtml(response, SignInPage({}, form.Get("userid")));
        return;
    }
    if (command == "timeshow") {
        SendHtml(response, ClockPage(now, TakeBreak(PageKind::Clock)));
        return;
    }
    const auto found = Commands().find(command);
    if (found == Commands().end()) {
        SendHtml(response,
                 MessagePage("Unknown request",
                             "The Demo Market does not know the request \"" + form.command + "\"."),
                 404);
        return;
    }
    found->second(context);
}

void MarketSite::Rules(const httplib::Request& request, httplib::Response& response) {
    std::lock_guard lock(m_lock);
    if (m_control.down) {
        response.status = 503;
        response.set_content("Service unavailable\r\n", "text/plain");
        return;
    }
    if (request.path == "/rules/version") {
        response.set_content("PROTOCOL:" + m_settings.ruleVersion + "\r\n", "text/plain");
        return;
    }
    const std::string name = request.matches.size() > 1 ? std::string(request.matches[1]) : "";
    std::ifstream file;
    if (PlainFileName(name) && !m_settings.rulesDir.empty()) {
        file.open(m_settings.rulesDir + "/" + name, std::ios::binary);
    }
    if (!file) {
        response.status = 404;
        response.set_content("404 Not Found\r\n", "text/plain");
        return;
    }
    std::ostringstream text;
    text << file.rdbuf();
    response.set_content(ReplaceAll(text.str(), m_settings.rulesBase, m_baseUrl),
                         "text/plain; charset=utf-8");
}

void MarketSite::Admin(const httplib::Request& request, httplib::Response& response) {
    if (request.remote_addr != "127.0.0.1" && request.remote_addr != "::1") {
        SendJsonError(response, "admin routes answer on loopback only", 403);
        return;
    }
    Form form = ReadForm(request);
    // The HTTP library caps declared forms at 8 KB; a test that sets a value
    // of a megabyte posts its form as plain text, which is read here alike.
    if (request.method == "POST" &&
        Lower(request.get_header_value("Content-Type")).find("text/plain") != std::string::npos) {
        ParsePairs(request.body, form, false);
    }
    const std::string action = request.matches.size() > 1 ? std::string(request.matches[1]) : "";
    std::lock_guard lock(m_lock);
    const std::int64_t now = m_clock.Now();
    try {
        if (action == "state") {
            SendJson(response, "{\"ok\":true,\"now\":" + std::to_string(now) +
                                   ",\"clock\":" + JsonString(ClockText(now)) +
                                   ",\"factor\":" + std::to_string(m_clock.Factor()) +
                                   ",\"users\":" + std::to_string(m_store.UserCount()) +
                                   ",\"items\":" + std::to_string(m_store.ItemCount()) +
                                   ",\"down\":" + (m_control.down ? "true" : "false") +
                                   ",\"layout\":" + std::to_string(m_control.layout) +
                                   ",\"broken_pages\":" + std::to_string(m_control.breakCount) +
                                   ",\"rule_version\":" + JsonString(m_settings.ruleVersion) + "}");
        } else if (action == "item") {
            const auto view = m_store.View(IntValue(form.Get("item"), 0), now);
            if (!view) {
                return SendJsonError(response, "no such item", 404);
            }
            SendJson(response, "{\"ok\":true,\"item\":" + ItemJson(*view) + "}");
        } else if (action == "end") {
            const std::int64_t number = IntValue(form.Get("item"), 0);
            const auto item = m_store.FindItem(number);
            if (!item) {
                return SendJsonError(response, "no such item", 404);
            }
            if (item->endTime > now) {
                m_store.SetEndTime(number, now);
            }
            m_store.Settle(now);
            SendJson(response,
                     "{\"ok\":true,\"item\":" + ItemJson(*m_store.View(number, now)) + "}");
        } else if (action == "bid") {
            const std::int64_t number = IntValue(form.Get("item"), 0);
            const auto item = m_store.FindItem(number);
            const auto bidder = m_store.FindUser(form.Get("bidder"));
            const auto amount = ParseMoney(form.Get("amount"));
            const int quantity = static_cast<int>(IntValue(form.Get("quantity", "1"), 0));
            if (!item) {
                return SendJsonError(response, "no such item", 404);
            }
            if (!bidder) {
                return SendJsonError(response, "no such bidder", 404);
            }
            if (!amount || *amount < item->minimumBid) {
                return SendJsonError(response, "the amount is below the minimum bid");
            }
            if (item->endTime <= now) {
                return SendJsonError(response, "the item has ended");
            }
            if (bidder->id == item->sellerId) {
                return SendJsonError(response, "sellers cannot bid on their own items");
            }
            if (quantity < 1 || quantity > item->quantity) {
                return SendJsonError(response, "the quantity is not available");
            }
            m_store.AddBid(number, bidder->id, *amount, quantity, now);
            SendJson(response,
                     "{\"ok\":true,\"item\":" + ItemJson(*m_store.View(number, now)) + "}");
        } else if (action == "title") {
            const std::int64_t number = IntValue(form.Get("item"), 0);
            if (!m_store.FindItem(number) || form.Get("title").empty()) {
                return SendJsonError(response, "an item number and a title are needed");
            }
            m_store.SetTitle(number, form.Get("title"));
            SendJson(response,
                     "{\"ok\":true,\"item\":" + ItemJson(*m_store.View(number, now)) + "}");
        } else if (action == "down") {
            m_control.down = form.Get("on", "1") != "0";
            SendJson(response, std::string("{\"ok\":true,\"down\":") +
                                   (m_control.down ? "true" : "false") + "}");
        } else if (action == "break") {
            m_control.breakCount = static_cast<int>(IntValue(form.Get("count", "1"), 1));
            const std::string page = form.Get("page", "all");
            m_control.breakAll = page == "all";
            if (!m_control.breakAll) {
                const auto kind = PageKindNamed(page);
                if (!kind) {
                    m_control.breakCount = 0;
                    return SendJsonError(response, "unknown page kind " + page);
                }
                m_control.breakKind = *kind;
            }
            SendJson(response,
                     "{\"ok\":true,\"broken_pages\":" + std::to_string(m_control.breakCount) + "}");
        } else if (action == "sell-posts") {
            // The next sell posts (review or confirm) refused with an error
            // page, or held before their answer.
            m_control.refusePosts = static_cast<int>(
                std::clamp<std::int64_t>(IntValue(form.Get("refuse"), 0), 0, 1000));
            m_control.refuseStatus = static_cast<int>(
                std::clamp<std::int64_t>(IntValue(form.Get("status", "500"), 500), 400, 599));
            m_control.holdPosts =
                static_cast<int>(std::clamp<std::int64_t>(IntValue(form.Get("hold"), 0), 0, 1000));
            m_control.holdFor = std::chrono::milliseconds(
                std::clamp<std::int64_t>(IntValue(form.Get("ms"), 0), 0, 600000));
            SendJson(response, "{\"ok\":true,\"refuse\":" + std::to_string(m_control.refusePosts) +
                                   ",\"status\":" + std::to_string(m_control.refuseStatus) +
                                   ",\"hold\":" + std::to_string(m_control.holdPosts) +
                                   ",\"ms\":" + std::to_string(m_control.holdFor.count()) + "}");
        } else if (action == "rule-version") {
            if (form.Get("v").empty()) {
                return SendJsonError(response, "v= is needed");
            }
            m_settings.ruleVersion = form.Get("v");
            SendJson(response,
                     "{\"ok\":true,\"rule_version\":" + JsonString(m_settings.ruleVersion) + "}");
        } else if (action == "layout") {
            const std::int64_t layout = IntValue(form.Get("v"), 0);
            if (layout != 1 && layout != 2) {
                return SendJsonError(response, "layout is 1 or 2");
            }
            m_control.layout = static_cast<int>(layout);
            SendJson(response, "{\"ok\":true,\"layout\":" + std::to_string(layout) + "}");
        } else if (action == "password") {
            const auto user = m_store.FindUser(form.Get("user"));
            if (!user || form.Get("password").empty()) {
                return SendJsonError(response, "a member and a new password are needed");
            }
            m_store.SetPassword(user->id, form.Get("password"));
            SendJson(response, "{\"ok\":true,\"user\":" + JsonString(user->userId) + "}");
        } else if (action == "clock") {
            if (form.Has("advance")) {
                m_clock.Advance(IntValue(form.Get("advance"), 0));
            }
            if (form.Has("factor")) {
                m_clock.SetFactor(std::stod(form.Get("factor")));
            }
            m_store.Settle(m_clock.Now());
            SendJson(response, "{\"ok\":true,\"now\":" + std::to_string(m_clock.Now()) +
                                   ",\"clock\":" + JsonString(ClockText(m_clock.Now())) + "}");
        } else {
            SendJsonError(response, "unknown admin action " + action, 404);
        }
    } catch (const std::exception& error) {
        SendJsonError(response, error.what(), 500);
    }
}

}  // namespace lw::site
