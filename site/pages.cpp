// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's HTML.
#include "site/pages.h"

#include <algorithm>

#include "site/site_text.h"

namespace lw::site {

namespace {

// Builds one page inside the site's frame; lines end in CR LF as the site's
// server always sent them.
class Page {
public:
    explicit Page(std::string_view title) : m_title(title) {}

    // A page that the user may keep as a file and open from there: its
    // relative links and form actions resolve against the site's base, and
    // its characters are declared, since a file has no header to say so.
    void StandAlone(const std::string& baseUrl) {
        m_head = "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\n";
        if (!baseUrl.empty()) {
            m_head += "<base href=\"" + Html(baseUrl) + "/\">\n";
        }
    }

    Page& operator<<(std::string_view text) {
        m_body += text;
        return *this;
    }

    std::string Finish() const {
        std::string page;
        page.reserve(m_body.size() + 1024);
        page +=
            "<html>\n<head>\n" + m_head + "<title>Demo Market: " + Html(m_title) +
            "</title>\n</head>\n"
            "<body bgcolor=\"#FFFFFF\" link=\"#0000CC\" vlink=\"#551A8B\">\n"
            "<table width=\"100%\" border=\"0\" cellpadding=\"2\"><tr>\n"
            "<td><font face=\"Arial\" size=\"5\" color=\"#003399\"><b>Demo Market</b></font></td>\n"
            "<td align=\"right\"><font face=\"Arial\" size=\"2\"><a href=\"/\">home</a> | "
            "<a href=\"/aw-cgi/eBayISAPI.dll?SellItemForm\">sell</a> | "
            "<a href=\"/aw-cgi/eBayISAPI.dll?SignIn\">my market</a> | "
            "<a href=\"/aw-cgi/eBayISAPI.dll?TimeShow\">site time</a></font></td>\n"
            "</tr></table>\n<hr>\n";
        page += m_body;
        page +=
            "<hr>\n<font face=\"Arial\" size=\"1\">Lotwright demo marketplace: every member and "
            "item here is invented.</font>\n</body>\n</html>\n";
        std::string crlf;
        crlf.reserve(page.size() + page.size() / 16);
        size_t from = 0;
        for (size_t at = page.find('\n'); at != std::string::npos; at = page.find('\n', from)) {
            crlf.append(page, from, at - from);
            if (at == 0 || page[at - 1] != '\r') {
                crlf += '\r';
            }
            crlf += '\n';
            from = at + 1;
        }
        crlf.append(page, from, std::string::npos);
        return crlf;
    }

private:
    std::string m_title;
    std::string m_head;
    std::string m_body;
};

std::string Cgi(std::string_view command) {
    return std::string(kCgiPath) + "?" + std::string(command);
}

std::string ItemHref(std::int64_t number) {
    return Cgi("ViewItem") + "&item=" + std::to_string(number);
}

std::string FeedbackHref(const std::string& userId) {
    return Cgi("ViewFeedback") + "&userid=" + UrlEncode(userId);
}

std::string MemberLink(const std::string& userId) {
    return "<a href=\"" + FeedbackHref(userId) + "\">" + Html(userId) + "</a>";
}

std::string ScoreLink(const std::string& userId, int score) {
    return "<a href=\"" + Html(FeedbackHref(userId)) + "\">(" + std::to_string(score) + ")</a>";
}

std::string MoneyOrDash(std::int64_t cents) {
    return cents > 0 ? Money(cents) : "-";
}

std::string PriceText(const ItemView& view) {
    return view.price ? Money(*view.price) : "-";
}

std::string HighBidderText(const ItemView& view) {
    if (view.winners.empty()) {
        return "-";
    }
    return view.multiWinner ? kSeveralWinners : view.winners.front().bidder;
}

std::string ItemCellClass(int layout) {
    return layout == 2 ? "itemno" : "item";
}

std::string ListLink(std::string_view command, const ListPage& page, std::int64_t skip) {
    return Cgi(command) + "&userid=" + UrlEncode(page.userId) + "&pass=" + UrlEncode(page.pass) +
           "&days=" + std::to_string(page.days) + "&skip=" + std::to_string(skip);
}

void Begin(Page& out, const ListPage& page, const char* marker) {
    if (!page.dropMarker) {
        out << marker << "\n";
    }
}

void Pager(Page& out, std::string_view command, const ListPage& page, size_t rows) {
    out << "<p><font size=\"2\">";
    if (rows == 0) {
        out << "No more items.";
    } else {
        out << "Items " << std::to_string(page.skip + 1) << " to "
            << std::to_string(page.skip + static_cast<std::int64_t>(rows)) << ".";
    }
    if (page.skip > 0) {
        out << " <a href=\""
            << ListLink(command, page, std::max<std::int64_t>(0, page.skip - page.pageSize))
            << "\">Previous page</a>";
    }
    if (rows == static_cast<size_t>(page.pageSize)) {
        out << " <a href=\"" << ListLink(command, page, page.skip + page.pageSize)
            << "\">Next page</a>";
    }
    out << "</font></p>\n";
}

// The time-left and end cells: an ended lot greys both, and its end cell
// changes class, so that a rule can tell it by the time-left text before it.
void TimeCells(Page& out, const ItemView& view, std::int64_t now) {
    if (view.ended) {
        out << "<td class=\"left\"><font color=\"#808080\">Ended</font></td>\n"
            << "<td class=\"ended\"><font color=\"#808080\">" << SiteDate(view.item.endTime)
            << "</font></td>\n";
    } else {
        out << "<td class=\"left\">" << TimeLeft(view.item.endTime, now) << "</td>\n"
            << "<td class=\"ends\">" << SiteDate(view.item.endTime) << "</td>\n";
    }
}

void ItemCells(Page& out, const ItemView& view, int layout) {
    out << "<td class=\"" << ItemCellClass(layout) << "\"><a href=\"" << ItemHref(view.item.number)
        << "\">" << std::to_string(view.item.number) << "</a></td>\n"
        << "<td class=\"title\"><a href=\"" << ItemHref(view.item.number) << "\">"
        << Html(view.item.title) << "</a></td>\n";
}

const char* kTable = "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" width=\"100%\">\n";

void MemberLine(Page& out, const ListPage& page, std::string_view what) {
    out << "<p><font face=\"Arial\" size=\"2\">Member <b>" << Html(page.userId) << "</b>: " << what
        << " running now or ended in the last " << std::to_string(page.days)
        << " days.</font></p>\n";
}

}  // namespace

std::string HomePage(const std::string& demoUser, const std::string& demoPassword) {
    Page out("Welcome");
    out << "<h2>Welcome to the Demo Market</h2>\n"
        << "<p>A small auction site for trying out Lotwright. Sign in as <b>" << Html(demoUser)
        << "</b> with the password <b>" << Html(demoPassword) << "</b>.</p>\n"
        << "<ul>\n"
        << "<li><a href=\"" << Cgi("SignIn") << "\">Sign in to My Market</a></li>\n"
        << "<li><a href=\"" << Cgi("SellItemForm") << "\">Sell an item</a></li>\n"
        << "<li><a href=\"" << Cgi("TimeShow") << "\">The official site time</a></li>\n"
        << "<li><a href=\"/rules/version\">Rule version</a></li>\n"
        << "</ul>\n";
    return out.Finish();
}

std::string SignInPage(const std::string& notice, const std::string& userId) {
    Page out("Sign in");
    out << "<h2>Sign in to My Market</h2>\n";
    if (!notice.empty()) {
        out << "<p><font color=\"#CC0000\"><b>" << Html(notice) << "</b></font></p>\n";
    }
    out << "<form method=\"post\" action=\"" << kCgiPath << "\">\n"
        << "<input type=\"hidden\" name=\"MfcISAPICommand\" value=\"MyEbay\">\n"
        << "<input type=\"hidden\" name=\"first\" value=\"Y\">\n"
        << "<input type=\"hidden\" name=\"dayssince\" value=\"30\">\n"
        << "<input type=\"hidden\" name=\"sellerSort\" value=\"3\">\n"
        << "<input type=\"hidden\" name=\"bidderSort\" value=\"3\">\n"
        << "<table>\n"
        << "<tr><td>User ID</td><td><input type=\"text\" name=\"userid\" size=\"30\" value=\""
        << Html(userId) << "\"></td></tr>\n"
        << "<tr><td>Password</td><td><input type=\"password\" name=\"pass\" "
           "size=\"30\"></td></tr>\n"
        << "</table>\n<input type=\"submit\" value=\"Sign in\">\n</form>\n";
    return out.Finish();
}

std::string MyMarketPage(const User& user, const std::string& passToken, std::int64_t balance,
                         std::int64_t now) {
    ListPage page;
    page.userId = user.userId;
    page.pass = passToken;
    Page out("My Market");
    out << "<h2>My Market: " << Html(user.userId) << "</h2>\n"
        << "<p>Welcome back, <b>" << Html(user.userId) << "</b> "
        << ScoreLink(user.userId, user.feedback) << ". The site time is " << ClockText(now)
        << ".</p>\n"
        << "<ul>\n"
        << "<li><a href=\"" << ListLink("MyEbaySelling", page, 0)
        << "\">Items I'm selling</a></li>\n"
        << "<li><a href=\"" << ListLink("MyEbayBidding", page, 0)
        << "\">Items I'm bidding on</a></li>\n"
        << "<li><a href=\"" << ListLink("MyEbayWatching", page, 0)
        << "\">Items I'm watching</a></li>\n"
        << "<li><a href=\"" << ListLink("MyEbayAccount", page, 0) << "\">Account history</a></li>\n"
        << "<li><a href=\"" << ListLink("AccountStatus", page, 0)
        << "\">Account balance</a>: " << Money(balance) << "</li>\n"
        << "</ul>\n";
    return out.Finish();
}

std::string SellingPage(const ListPage& page, const std::vector<ItemView>& rows) {
    Page out("Items I'm selling");
    out << "<h2>Items I'm selling</h2>\n";
    MemberLine(out, page, "items");
    Begin(out, page, kSellingBegin);
    out << kTable
        << "<tr bgcolor=\"#CCCCFF\"><th>Item</th><th>Title</th><th>High bidder</th>"
           "<th>Start</th><th>Current</th><th>Reserve</th><th>Qty</th><th>Bids</th>"
           "<th>Time left</th><th>Ends</th></tr>\n";
    for (const ItemView& view : rows) {
        out << "<tr>\n";
        ItemCells(out, view, page.layout);
        out << "<td class=\"bidder\">" << Html(HighBidderText(view)) << "</td>\n"
            << "<td class=\"start\">" << Money(view.item.minimumBid) << "</td>\n"
            << "<td class=\"price\"><b>" << PriceText(view) << "</b></td>\n"
            << "<td class=\"reserve\">" << MoneyOrDash(view.item.reserve) << "</td>\n"
            << "<td class=\"qty\">" << std::to_string(view.item.quantity) << "</td>\n"
            << "<td class=\"bids\">" << std::to_string(view.bidCount) << "</td>\n";
        TimeCells(out, view, page.now);
        out << "</tr>\n";
    }
    out << "</table>\n" << kSellingEnd << "\n";
    Pager(out, "MyEbaySelling", page, rows.size());
    return out.Finish();
}

std::string BiddingPage(const ListPage& page, const std::vector<BiddingRow>& rows) {
    Page out("Items I'm bidding on");
    out << "<h2>Items I'm bidding on</h2>\n";
    MemberLine(out, page, "items with my bids,");
    Begin(out, page, kBiddingBegin);
    out << kTable
        << "<tr bgcolor=\"#CCCCFF\"><th>Item</th><th>Title</th><th>High bidder</th>"
           "<th>Seller</th><th>Start</th><th>Current</th><th>My bid</th><th>My max</th>"
           "<th>Qty</th><th>Bids</th><th>Status</th><th>Time left</th><th>Ends</th></tr>\n";
    for (const BiddingRow& row : rows) {
        const ItemView& view = row.view;
        out << "<tr>\n";
        ItemCells(out, view, page.layout);
        out << "<td class=\"bidder\">" << Html(HighBidderText(view)) << "</td>\n"
            << "<td class=\"seller\">" << MemberLink(view.seller) << "</td>\n"
            << "<td class=\"start\">" << Money(view.item.minimumBid) << "</td>\n"
            << "<td class=\"price\"><b>" << PriceText(view) << "</b></td>\n"
            << "<td class=\"mybid\">" << Money(row.myBid) << "</td>\n"
            << "<td class=\"mymax\">" << Money(row.myMaximum) << "</td>\n"
            << "<td class=\"qty\">" << std::to_string(view.multiWinner ? row.myQuantity : 1)
            << "</td>\n"
            << "<td class=\"bids\">" << std::to_string(view.bidCount) << "</td>\n";
        if (row.winning) {
            out << "<td class=\"status\"><font color=\"#008000\">high bidder</font></td>\n";
        } else {
            out << "<td class=\"status\"><font color=\"#CC0000\">outbid</font></td>\n";
        }
        TimeCells(out, view, page.now);
        out << "</tr>\n";
    }
    out << "</table>\n" << kBiddingEnd << "\n";
    Pager(out, "MyEbayBidding", page, rows.size());
    return out.Finish();
}

std::string WatchingPage(const ListPage& page, const std::vector<ItemView>& rows) {
    Page out("Items I'm watching");
    out << "<h2>Items I'm watching</h2>\n";
    MemberLine(out, page, "watched items");
    Begin(out, page, kWatchingBegin);
    out << kTable
        << "<tr bgcolor=\"#CCCCFF\"><th>Item</th><th>Title</th><th>Seller</th><th>Current</th>"
           "<th>Bids</th><th>Time left</th><th>Ends</th></tr>\n";
    for (const ItemView& view : rows) {
        out << "<tr>\n";
        ItemCells(out, view, page.layout);
        out << "<td class=\"seller\">" << MemberLink(view.seller) << "</td>\n"
            << "<td class=\"price\"><b>" << PriceText(view) << "</b></td>\n"
            << "<td class=\"bids\">" << std::to_string(view.bidCount) << "</td>\n";
        TimeCells(out, view, page.now);
        out << "</tr>\n";
    }
    out << "</table>\n" << kWatchingEnd << "\n";
    Pager(out, "MyEbayWatching", page, rows.size());
    return out.Finish();
}

std::string LedgerPage(const ListPage& page, const std::vector<LedgerRow>& rows) {
    Page out("Account history");
    out << "<h2>Account history</h2>\n";
    MemberLine(out, page, "fees, credits and payments");
    Begin(out, page, kLedgerBegin);
    out << kTable
        << "<tr bgcolor=\"#CCCCFF\"><th>Date</th><th>Item</th><th>Description</th>"
           "<th>Sold for</th><th>Debit</th><th>Credit</th><th>Balance</th></tr>\n";
    for (const LedgerRow& row : rows) {
        out << "<tr>\n<td class=\"date\">" << LedgerStamp(row.time) << "</td>\n";
        if (row.item) {
            out << "<td class=\"" << ItemCellClass(page.layout) << "\"><a href=\""
                << ItemHref(*row.item) << "\">" << std::to_string(*row.item) << "</a></td>\n";
        } else {
            out << "<td class=\"" << ItemCellClass(page.layout) << "\">-</td>\n";
        }
        // The note goes on its own line inside the cell.
        out << "<td class=\"desc\">" << Html(row.type) << "\n<font size=\"1\">" << Html(row.note)
            << "</font></td>\n"
            << "<td class=\"sold\">" << (row.soldPrice ? Money(*row.soldPrice) : "-") << "</td>\n"
            << "<td class=\"debit\">" << MoneyOrDash(row.debit) << "</td>\n"
            << "<td class=\"credit\">" << MoneyOrDash(row.credit) << "</td>\n"
            << "<td class=\"balance\">" << Money(row.balance) << "</td>\n</tr>\n";
    }
    out << "</table>\n" << kLedgerEnd << "\n";
    Pager(out, "MyEbayAccount", page, rows.size());
    return out.Finish();
}

std::string SummaryPage(const ListPage& page, std::int64_t balance,
                        const std::optional<LedgerRow>& lastPayment) {
    Page out("Account balance");
    out << "<h2>Account balance</h2>\n";
    Begin(out, page, kSummaryBegin);
    out << "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n"
        << "<tr><td>Member</td><td class=\"holder\">" << Html(page.userId) << "</td></tr>\n"
        << "<tr><td>Statement date</td><td class=\"date\">" << LedgerStamp(page.now)
        << "</td></tr>\n"
        << "<tr><td>&nbsp;</td><td><b>Amount due</b></td><td><b>Credit</b></td></tr>\n"
        << "<tr><td class=\"label\">Current balance</td><td class=\"due\">"
        << Money(balance < 0 ? -balance : 0) << "</td><td class=\"credit\">"
        << Money(balance > 0 ? balance : 0) << "</td></tr>\n"
        << "<tr><td>Last payment</td><td class=\"lastpay\">";
    if (lastPayment) {
        out << Money(lastPayment->credit) << " on " << LedgerStamp(lastPayment->time);
    } else {
        out << "none";
    }
    out << "</td></tr>\n</table>\n" << kSummaryEnd << "\n";
    return out.Finish();
}

std::string ClockPage(std::int64_t now, bool dropMarker) {
    Page out("Official time");
    out << "<h2>The Demo Market official time</h2>\n";
    if (!dropMarker) {
        out << kClockBegin << "\n";
    }
    out << "<p><font face=\"Arial\" size=\"3\">The official time is: " << ClockText(now)
        << "<br>\n</font></p>\n"
        << kClockEnd << "\n"
        << "<p><font size=\"2\">Every end time on this site is given in the site's time.</font>"
           "</p>\n";
    return out.Finish();
}

std::string ItemPage(const ItemView& view, std::int64_t now, bool dropMarker,
                     const ListingDetails& details) {
    const Item& item = view.item;
    const Category* category = FindCategory(item.category);
    Page out(item.title);
    if (!dropMarker) {
        out << kItemBegin << "\n";
    }
    out << "<h2>" << Html(item.title) << "</h2>\n"
        << "<table border=\"0\" cellpadding=\"3\">\n"
        << "<tr><td>Item number</td><td class=\"number\">" << std::to_string(item.number)
        << "</td></tr>\n"
        << "<tr><td>Category</td><td class=\"cat\">"
        << Html(category ? CategoryFullName(*category) : std::string("Everything Else: Other"))
        << "</td></tr>\n"
        << "<tr><td>Currently</td><td class=\"price\"><b>" << PriceText(view) << "</b></td></tr>\n"
        << "<tr><td>First bid</td><td class=\"first\">" << Money(item.minimumBid) << "</td></tr>\n"
        << "<tr><td>Reserve</td><td class=\"reserve\">"
        << (item.reserve <= 0 ? "none" : (view.reserveMet && view.price ? "met" : "not met"))
        << "</td></tr>\n"
        << "<tr><td>Quantity</td><td class=\"qty\">" << std::to_string(item.quantity)
        << "</td></tr>\n"
        << "<tr><td># of bids</td><td class=\"bids\">" << std::to_string(view.bidCount)
        << "</td></tr>\n"
        << "<tr><td>Time left</td><td class=\"left\">" << TimeLeft(item.endTime, now)
        << "</td></tr>\n"
        << "<tr><td>Location</td><td class=\"where\">" << Html(item.location) << "</td></tr>\n"
        << "<tr><td>Started</td><td class=\"started\">" << SiteDate(item.startTime)
        << "</td></tr>\n"
        << "<tr><td>Ends</td><td class=\"ends\">" << SiteDate(item.endTime) << "</td></tr>\n"
        << "<tr><td>Seller</td><td class=\"seller\">" << MemberLink(view.seller)
        << "</td><td class=\"sfb\">" << ScoreLink(view.seller, view.sellerFeedback)
        << "</td></tr>\n"
        << "<tr><td>" << (view.ended ? "Winning bid" : "High bid") << "</td>";
    if (view.multiWinner || view.winners.empty()) {
        out << "<td class=\"high\">" << Html(HighBidderText(view))
            << "</td><td class=\"hfb\">-</td>";
    } else {
        const Winner& top = view.winners.front();
        out << "<td class=\"high\">" << MemberLink(top.bidder) << "</td><td class=\"hfb\">"
            << ScoreLink(top.bidder, top.feedback) << "</td>";
    }
    out << "</tr>\n</table>\n" << kItemEnd << "\n";
    if (view.multiWinner) {
        out << "<h3>" << (view.ended ? "Winning bidders" : "Bidders winning now") << "</h3>\n"
            << kWinnersBegin << "\n"
            << "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n"
            << "<tr bgcolor=\"#CCCCFF\"><th>Bidder</th><th>Feedback</th><th>Quantity</th>"
               "<th>Price</th></tr>\n";
        for (const Winner& winner : view.winners) {
            out << "<tr><td class=\"winner\">" << MemberLink(winner.bidder)
                << "</td><td class=\"wfb\">" << ScoreLink(winner.bidder, winner.feedback)
                << "</td><td class=\"wqty\">" << std::to_string(winner.quantity)
                << "</td><td class=\"wprice\">" << Money(winner.price) << "</td></tr>\n";
        }
        out << "</table>\n" << kWinnersEnd << "\n";
    }
    if (!details.empty()) {
        out << "<h3>Listing details</h3>\n"
            << kDetailsBegin << "\n"
            << "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n";
        for (const auto& [name, value] : details) {
            out << "<tr><td class=\"field\">" << Html(name) << "</td><td class=\"value\">"
                << Html(value) << "</td></tr>\n";
        }
        out << "</table>\n" << kDetailsEnd << "\n";
    }
    out << "<h3>Description</h3>\n<p>" << Html(item.description) << "</p>\n"
        << "<p><a href=\"" << Cgi("ViewListedItems") << "&userid=" << UrlEncode(view.seller)
        << "\">The seller's other items</a></p>\n";
    return out.Finish();
}

std::string ItemMissingPage(const std::string& number) {
    Page out("Item not found");
    out << "<h2>Item not found</h2>\n<p>There is no item " << Html(number)
        << " on the Demo Market.</p>\n";
    return out.Finish();
}

std::string EmailPage(const std::string& requested, const std::optional<User>& found) {
    Page out("Member e-mail address");
    out << "<h2>Member e-mail address</h2>\n";
    if (found) {
        out << "<p>The e-mail address of <b>" << Html(found->userId)
            << "</b> is <a href=\"mailto:" << Html(found->email) << "\">" << Html(found->email)
            << "</a>.</p>\n";
    } else {
        out << "<p><b>" << Html(requested)
            << "</b> is not a member of the Demo Market. Check the user ID and try again.</p>\n";
    }
    return out.Finish();
}

std::string FeedbackProfilePage(const User& user, const std::vector<FeedbackRow>& rows) {
    Page out("Feedback for " + user.userId);
    out << "<h2>Feedback profile of " << Html(user.userId) << " (" << std::to_string(user.feedback)
        << ")</h2>\n<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n"
        << "<tr bgcolor=\"#CCCCFF\"><th>From</th><th>Item</th><th>Rating</th><th>Comment</th>"
           "<th>Date</th></tr>\n";
    for (const FeedbackRow& row : rows) {
        out << "<tr><td>" << MemberLink(row.from) << "</td><td>"
            << (row.item ? std::to_string(row.item) : std::string("-")) << "</td><td>"
            << Html(row.kind) << "</td><td>" << Html(row.comment) << "</td><td>"
            << SiteDate(row.time) << "</td></tr>\n";
    }
    out << "</table>\n";
    return out.Finish();
}

std::string SellerListPage(const User& seller, const std::vector<ItemView>& rows,
                           std::int64_t now) {
    Page out("Items of " + seller.userId);
    out << "<h2>Items for sale by " << Html(seller.userId) << " "
        << ScoreLink(seller.userId, seller.feedback) << "</h2>\n"
        << kTable
        << "<tr bgcolor=\"#CCCCFF\"><th>Item</th><th>Title</th><th>Current</th><th>Bids</th>"
           "<th>Time left</th></tr>\n";
    for (const ItemView& view : rows) {
        out << "<tr><td><a href=\"" << ItemHref(view.item.number) << "\">"
            << std::to_string(view.item.number) << "</a></td><td>" << Html(view.item.title)
            << "</td><td>" << PriceText(view) << "</td><td>" << std::to_string(view.bidCount)
            << "</td><td>" << TimeLeft(view.item.endTime, now) << "</td></tr>\n";
    }
    out << "</table>\n";
    return out.Finish();
}

namespace {

std::string Field(std::string_view label, std::string_view control) {
    return "<tr><td align=\"right\"><b>" + std::string(label) + "</b></td><td>" +
           std::string(control) + "</td></tr>\n";
}

std::string TextInput(std::string_view name, int size, const std::string* value = nullptr) {
    std::string input = "<input type=\"text\" name=\"" + std::string(name) + "\"";
    if (value) {
        input += " value=\"" + Html(*value) + "\"";
    }
    return input + " size=\"" + std::to_string(size) + "\">";
}

std::string CheckBox(std::string_view name, std::string_view label, bool checked = false) {
    return "<input type=\"checkbox\" name=\"" + std::string(name) + "\" value=\"on\"" +
           (checked ? " checked" : "") + "> " + std::string(label) + " ";
}

}  // namespace

std::string SellFormPage(const Category& category, const Item* relist, const std::string& baseUrl) {
    Page out("Sell your item");
    out.StandAlone(baseUrl);
    std::string title, description, location, quantity, minimum, reserve;
    if (relist) {
        title = relist->title;
        description = relist->description;
        location = relist->location;
        quantity = std::to_string(relist->quantity);
        minimum = Money(relist->minimumBid).substr(1);
        reserve = relist->reserve > 0 ? Money(relist->reserve).substr(1) : std::string();
    }
    const bool filled = relist != nullptr;
    out << "<h2>Sell your item in " << Html(CategoryFullName(category)) << "</h2>\n"
        << "<form method=\"post\" action=\"" << Cgi("VerifyNewItem") << "\">\n"
        << "<input type=\"hidden\" name=\"MfcISAPICommand\" value=\"VerifyNewItem\">\n"
        << "<input type=\"hidden\" name=\"category\" value=\"" << std::to_string(category.number)
        << "\">\n"
        << "<table border=\"0\" cellpadding=\"3\">\n"
        << Field("User ID", "<input type=\"text\" name=\"userid\" size=\"30\">")
        << Field("Password", "<input type=\"password\" name=\"password\" size=\"30\">")
        << Field("Title", filled ? "<input type=\"text\" name=\"title\" value=\"" + Html(title) +
                                       "\" size=\"50\" maxlength=\"80\">"
                                 : std::string("<input type=\"text\" name=\"title\" size=\"50\" "
                                               "maxlength=\"80\">"))
        << Field("Category",
                 Html(CategoryFullName(category)) + " (" + std::to_string(category.number) + ")")
        << Field("Description", "<textarea name=\"description\" rows=\"10\" cols=\"60\">" +
                                    Html(description) + "</textarea>")
        << Field("Picture URL", TextInput("pictureurl", 50))
        << Field("Gallery", TextInput("gallery", 2) + " (1: show in the gallery) picture " +
                                TextInput("galleryurl", 40))
        << Field("Item location",
                 filled ? TextInput("location", 30, &location) : TextInput("location", 30))
        << Field("Region", TextInput("zip", 8) + " Country " + TextInput("country", 4))
        << Field("Options", CheckBox("bold", "Bold") + CheckBox("highlight", "Highlight") +
                                CheckBox("featured", "Featured") +
                                CheckBox("superfeatured", "Super featured") +
                                CheckBox("private", "Private auction") + " Gift icon " +
                                TextInput("gifticon", 2))
        << Field("Payment", CheckBox("moneyorder", "Money order") +
                                CheckBox("personalchecks", "Personal check") +
                                CheckBox("visamastercard", "Visa/MasterCard") +
                                CheckBox("amex", "American Express") +
                                CheckBox("discover", "Discover") + CheckBox("cod", "COD") +
                                CheckBox("paymentother", "Other") +
                                CheckBox("paymentseedescription", "See description") + " Escrow " +
                                TextInput("escrow", 2))
        << Field("Shipping", "Who pays " + TextInput("shippingoption", 24) + " " +
                                 CheckBox("shippingseedescription", "See description"))
        << Field("Ship to", TextInput("shipinternationally", 16) +
                                " (siteonly, worldwide or "
                                "siteplusregions)")
        << Field("Regions",
                 CheckBox("northamerica", "North America") + CheckBox("europe", "Europe") +
                     CheckBox("oceania", "Oceania") + CheckBox("asia", "Asia") +
                     CheckBox("southamerica", "South America") + CheckBox("africa", "Africa") +
                     CheckBox("latinamerica", "Latin America") +
                     CheckBox("middleeast", "Middle East") + CheckBox("caribbean", "Caribbean"))
        << Field("Online payment",
                 CheckBox("bpcreditcard", "Cards") + CheckBox("bpechecks", "E-checks") +
                     CheckBox("bpinstantpurchase", "Instant purchase") +
                     CheckBox("bpaddicon", "Show icon") + " Shipping " +
                     TextInput("bpshipping", 6) + " each extra " +
                     TextInput("bpadditionalshipping", 6) + " Tax " + TextInput("bpsalestax", 5) +
                     " in " + TextInput("bpsalestaxstate", 4) + " Returns " +
                     TextInput("bpreturnpolicy", 30))
        << Field("Quantity",
                 filled ? TextInput("quantity", 4, &quantity) : TextInput("quantity", 4))
        << Field("Minimum bid",
                 filled ? TextInput("minimumbid", 10, &minimum) : TextInput("minimumbid", 10))
        << Field("Duration", TextInput("duration", 3) + " days (3, 5, 7 or 10)")
        << Field("Reserve price",
                 filled ? TextInput("reserve", 10, &reserve) : TextInput("reserve", 10))
        << "</table>\n<input type=\"submit\" value=\"Review my listing\">\n</form>\n";
    return out.Finish();
}

std::string CategoryChoicePage() {
    Page out("Choose a category");
    out << "<h2>Sell your item: choose a category</h2>\n<ul>\n";
    for (const Category& category : Categories()) {
        out << "<li><a href=\"" << Cgi("SellItemForm")
            << "&category=" << std::to_string(category.number) << "\">"
            << Html(CategoryFullName(category)) << "</a> (" << std::to_string(category.number)
            << ")</li>\n";
    }
    out << "</ul>\n";
    return out.Finish();
}

std::string ReviewPage(const PendingListing& listing, const std::string& userId,
                       const std::string& encodedPass, const std::string& baseUrl) {
    const Item& item = listing.item;
    const Category* category = FindCategory(item.category);
    Page out("Review your listing");
    out.StandAlone(baseUrl);
    // The confirm form stands before the seller's own description, so that no
    // text of the description can be taken for it.
    out << "<h2>Review your listing</h2>\n"
        << "<p>Nothing is listed until you submit this page.</p>\n"
        << "<form method=\"post\" action=\"" << Cgi("AddItem") << "\">\n"
        << "<input type=\"hidden\" name=\"MfcISAPICommand\" value=\"AddItem\">\n"
        << "<input type=\"hidden\" name=\"token\" value=\"" << Html(listing.token) << "\">\n"
        << "<input type=\"hidden\" name=\"userid\" value=\"" << Html(userId) << "\">\n"
        << "<input type=\"hidden\" name=\"pass\" value=\"" << Html(encodedPass) << "\">\n"
        << "<input type=\"submit\" value=\"Submit my listing\">\n</form>\n"
        << "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n"
        << Field("Title", Html(item.title))
        << Field("Category", Html(category ? CategoryFullName(*category) : std::string("?")))
        << Field("Minimum bid", Money(item.minimumBid))
        << Field("Reserve", MoneyOrDash(item.reserve))
        << Field("Quantity", std::to_string(item.quantity))
        << Field("Duration", std::to_string(listing.durationDays) + " days")
        << Field("Location", Html(item.location))
        << Field("Insertion fee", Money(MarketStore::InsertionFee(item.minimumBid, item.quantity)))
        << "</table>\n<h3>Your description</h3>\n"
        << item.description << "\n";
    return out.Finish();
}

std::string ListingProblemPage(const std::vector<std::string>& problems) {
    Page out("Problem with your listing");
    out << "<h2>Problem with your listing</h2>\n<ul>\n";
    for (const std::string& problem : problems) {
        out << "<li>" << Html(problem) << "</li>\n";
    }
    out << "</ul>\n<p>Please go back and correct the form.</p>\n";
    return out.Finish();
}

std::string ListedPage(std::int64_t number, const std::string& title, std::int64_t endTime) {
    Page out("Item listed");
    out << "<h2>Your item is listed</h2>\n"
        << "<p>" << Html(title) << "</p>\n"
        << "<p>Your new item number is <b>#" << std::to_string(number) << "</b>. It ends "
        << SiteDate(endTime) << ".</p>\n"
        << "<p><a href=\"" << ItemHref(number) << "\">See your item</a></p>\n";
    return out.Finish();
}

std::string FeedbackLeftPage(const std::string& otherUser) {
    Page out("Feedback recorded");
    out << "<h2>Thank you</h2>\n<p>Your feedback for <b>" << Html(otherUser)
        << "</b> has been recorded.</p>\n";
    return out.Finish();
}

std::string NotRegisteredPage(const std::string& otherUser) {
    Page out("Feedback not recorded");
    out << "<h2>Feedback not recorded</h2>\n<p><b>" << Html(otherUser)
        << "</b> is not a registered user. Please go back and check the user ID.</p>\n";
    return out.Finish();
}

std::string PostRefusedPage() {
    return MessagePage("Listing not accepted",
                       "The Demo Market cannot take new listings just now. Nothing was listed; "
                       "please try again later.");
}

std::string MessagePage(const std::string& title, const std::string& text) {
    Page out(title);
    out << "<h2>" << Html(title) << "</h2>\n<p>" << Html(text) << "</p>\n";
    return out.Finish();
}

}  // namespace lw::site
