// SPDX-License-Identifier: GPL-3.0-or-later
// The item panels' content, one row read by item number for the current user.
// Every field has its own rule for Null and "-"; none of them fails.
#include "views/panels.h"

#include "core/session.h"
#include "core/text.h"

namespace lw::views {

namespace {

using core::Database;
using core::Statement;

const QString kDutchAuction = QStringLiteral("Dutch Auction");
const QString kLocating = QStringLiteral("Locating...");
const QString kEnded = QStringLiteral("Ended");

QString OrNa(const Statement& s, const QString& column) {
    return s.IsNull(column) ? NotAvailable() : s.Text(column);
}

// A label takes a single "&" as a mnemonic, so the captions double it.
QString Ampersands(const QString& text) {
    return core::ReplaceEvery(text, QStringLiteral("&"), QStringLiteral("&&"));
}

QString PanelTitle(const Statement& s) {
    if (s.IsNull(QStringLiteral("ItemTitle"))) {
        return NotAvailable();
    }
    const QString title = core::DecodeEntities(s.Text(QStringLiteral("ItemTitle"))) +
                          QStringLiteral(" (Item #") + s.Text(QStringLiteral("ItemNumber")) + u')';
    return Ampersands(title);
}

// A feedback text "(12)" loses its first and last characters.
QString FeedbackValue(const QString& feedback) {
    if (feedback.startsWith(u'(')) {
        return feedback.mid(1).chopped(feedback.size() > 1 ? 1 : 0);
    }
    return feedback;
}

// Green when the high bid, currency sign cut off, meets the reserve and is
// not "-"; red otherwise, and red when either is Null.
CellColour ReserveColour(const Statement& s) {
    const QString high = QStringLiteral("HighBid");
    const QString reserve = QStringLiteral("ReserveBid");
    if (s.IsNull(high) || s.IsNull(reserve)) {
        return CellColour::Red;
    }
    const QString highText = s.Text(high);
    const double highValue = core::NumberRule(highText.mid(1));
    const double reserveValue = core::NumberRule(s.Text(reserve).mid(1));
    return highValue >= reserveValue && highText != u"-" ? CellColour::Green : CellColour::Red;
}

QString SiteUserId(Database& db) {
    Statement s = db.Prepare(
        QStringLiteral("SELECT UserID FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0"));
    s.Bind(1, core::CurrentSession().CurrentUser);
    return s.Step() ? s.Text(0) : QString();
}

// A bid panel's name label: "Locating..." as it stands, else the name with
// its feedback when there is one.
QString PartnerLabel(const Statement& s, const QString& nameColumn, const QString& feedbackColumn) {
    if (s.IsNull(nameColumn)) {
        return NotAvailable();
    }
    const QString name = s.Text(nameColumn);
    if (name == kLocating) {
        return kLocating;
    }
    const QString feedback = FeedbackValue(s.Text(feedbackColumn));
    return feedback.isEmpty() ? name : name + QStringLiteral(" (") + feedback + u')';
}

QString TimeLeftFor(Group group, const QString& gridTimeLeft) {
    return group == Group::Archived ? kEnded : gridTimeLeft;
}

Statement ItemRow(Database& db, const QString& table, const QString& itemNumber) {
    Statement s = db.Prepare(QStringLiteral("SELECT * FROM ") + table +
                             QStringLiteral(" WHERE ItemNumber = ? AND UserName = ? LIMIT 1"));
    s.BindAll(itemNumber, core::CurrentSession().CurrentUser);
    return s;
}

}  // namespace

QString NoStar() {
    return QStringLiteral("eBayNoStar");
}

QString StarIconFor(const QString& feedback) {
    const double v = core::Val(FeedbackValue(feedback));
    if (v >= 10 && v <= 99) {
        return QStringLiteral("eBay10-99");
    }
    if (v >= 100 && v <= 499) {
        return QStringLiteral("eBay100-499");
    }
    if (v >= 500 && v <= 999) {
        return QStringLiteral("eBay500-999");
    }
    if (v >= 1000 && v <= 9999) {
        return QStringLiteral("eBay1000-9999");
    }
    if (v > 9999) {
        return QStringLiteral("eBay10000");
    }
    return NoStar();
}

QString DutchListRow(const QString& bidderAndFeedback, const QString& quantity,
                     const QString& highBid) {
    const QString head = bidderAndFeedback.left(25).leftJustified(25, u' ');
    const QString withQuantity = head + quantity;
    return withQuantity.leftJustified(31, u' ') + QStringLiteral("@     ") + highBid;
}

PanelWords PanelWordsFor(const QString& timeLeft) {
    if (timeLeft == kEnded) {
        return {QStringLiteral("Ended:"), QStringLiteral("Minimum:"), QStringLiteral("Final Bid:")};
    }
    return {QStringLiteral("Ends:"), QStringLiteral("Starts at:"), QStringLiteral("Currently:")};
}

std::optional<SalePanel> ShowSaleDetails(Database& db, const QString& itemNumber, Group group,
                                         const QString& gridTimeLeft) {
    Statement s = ItemRow(db, QStringLiteral("Auctions"), itemNumber);
    if (!s.Step()) {
        return std::nullopt;
    }
    SalePanel p;
    p.colour = ReserveColour(s);
    p.title = PanelTitle(s);
    p.category = s.IsNull(QStringLiteral("ItemCategory"))
                     ? NotAvailable()
                     : Ampersands(s.Text(QStringLiteral("ItemCategory")));
    p.startsAt = OrNa(s, QStringLiteral("MinimumBid"));
    p.currently = OrNa(s, QStringLiteral("HighBid"));
    if (p.currently == u"-") {
        p.currently = NotAvailable();
    }
    p.reserve = OrNa(s, QStringLiteral("ReserveBid"));
    if (p.reserve == u"-") {
        p.reserve = QStringLiteral("No Reserve");
    }
    p.bids = OrNa(s, QStringLiteral("NumberBids"));
    if (p.bids == u"-") {
        p.bids = QStringLiteral("0");
    }
    p.quantity = OrNa(s, QStringLiteral("Quantity"));

    const QString name = QStringLiteral("HighBidderName");
    const QString feedback = QStringLiteral("HighBidderFeedback");
    if (s.IsNull(name) || s.IsNull(feedback) || s.Text(name) == NotAvailable()) {
        p.highBidder = NotAvailable();
    } else {
        p.highBidder = s.Text(name) + QStringLiteral(" (") + FeedbackValue(s.Text(feedback)) + u')';
    }
    p.highBidderStar = s.IsNull(feedback) ? NoStar() : StarIconFor(s.Text(feedback));

    p.started = OrNa(s, QStringLiteral("StartDate"));
    p.ends = OrNa(s, QStringLiteral("EndDate"));
    p.timeLeft = TimeLeftFor(group, gridTimeLeft);
    p.words = PanelWordsFor(p.timeLeft);
    return p;
}

std::optional<DutchSalePanel> ShowDutchSaleDetails(Database& db, const QString& itemNumber) {
    Statement s = ItemRow(db, QStringLiteral("Auctions"), itemNumber);
    if (!s.Step()) {
        return std::nullopt;
    }
    DutchSalePanel p;
    p.colour = ReserveColour(s);
    p.title = PanelTitle(s);
    p.category = s.IsNull(QStringLiteral("ItemCategory"))
                     ? NotAvailable()
                     : Ampersands(s.Text(QStringLiteral("ItemCategory")));
    p.startsAt = OrNa(s, QStringLiteral("MinimumBid"));
    p.bids = OrNa(s, QStringLiteral("NumberBids"));
    if (p.bids == u"-") {
        p.bids = QStringLiteral("0");
    }
    p.quantity = OrNa(s, QStringLiteral("Quantity"));
    p.started = OrNa(s, QStringLiteral("StartDate"));
    p.ends = OrNa(s, QStringLiteral("EndDate"));

    Statement winners = db.Prepare(
        QStringLiteral("SELECT HighBidderName, HighBidderFeedback, Quantity, HighBid FROM Dutch "
                       "WHERE ItemNumber = ? AND UserName = ? ORDER BY rowid"));
    winners.BindAll(itemNumber, core::CurrentSession().CurrentUser);
    double total = 0;
    while (winners.Step()) {
        const QString price = winners.Text(3);
        total += core::NumberRule(price.mid(1)) * core::Val(winners.Text(2));
        p.winners << DutchListRow(winners.Text(0) + winners.Text(1), winners.Text(2), price);
    }
    if (p.winners.isEmpty()) {
        p.winners << QStringLiteral("No bidders");
    }
    p.total = core::Format(total, QStringLiteral("Currency"));
    return p;
}

std::optional<BidDetails> ShowBidDetails(Database& db, const QString& itemNumber, Group group,
                                         const QString& gridTimeLeft) {
    Statement s = ItemRow(db, QStringLiteral("Bids"), itemNumber);
    if (!s.Step()) {
        return std::nullopt;
    }
    BidDetails details;
    if (s.Text(QStringLiteral("HighBidderName")) == kDutchAuction) {
        details.dutch = true;
        DutchBidPanel& p = details.dutchPanel;
        p.title = PanelTitle(s);
        const char* columns[] = {"ItemCategory", "MinimumBid", "NumberBids",
                                 "Quantity",     "StartDate",  "EndDate"};
        for (size_t i = 0; i < p.values.size(); ++i) {
            p.values[i] = OrNa(s, QString::fromLatin1(columns[i]));
        }
        const QString left = core::TimeLeftText(s.Text(QStringLiteral("EndDate")),
                                                core::CurrentSession().SiteCorrection);
        p.endsWord = left == kEnded ? QStringLiteral("Ended:") : QStringLiteral("Ends:");

        Statement winners = db.Prepare(QStringLiteral(
            "SELECT HighBidderName, HighBidderFeedback, Quantity, HighBid FROM DutchBids "
            "WHERE ItemNumber = ? AND UserName = ? ORDER BY rowid"));
        winners.BindAll(itemNumber, core::CurrentSession().CurrentUser);
        const QString login = SiteUserId(db);
        while (winners.Step()) {
            const QString winner = winners.Text(0);
            p.bidders << DutchListRow(winner + winners.Text(1), winners.Text(2), winners.Text(3));
            if (!login.isEmpty() && winner.compare(login, Qt::CaseInsensitive) == 0) {
                ++p.userWins;
            }
        }
        if (p.bidders.isEmpty()) {
            p.bidders << QStringLiteral("No dutch bidders");
        }
        p.colour = p.userWins != 0 ? CellColour::Green : CellColour::Red;
        return details;
    }

    BidPanel& p = details.plain;
    p.title = PanelTitle(s);
    p.colour = s.Flag(QStringLiteral("Winning")) ? CellColour::Green : CellColour::Red;
    p.category = OrNa(s, QStringLiteral("ItemCategory"));
    p.startsAt = OrNa(s, QStringLiteral("MinimumBid"));
    p.currently = OrNa(s, QStringLiteral("HighBid"));
    if (p.currently == u"-") {
        p.currently = NotAvailable();
    }
    p.myMax = OrNa(s, QStringLiteral("MaximumBid"));
    p.bids = OrNa(s, QStringLiteral("NumberBids"));
    p.quantity = OrNa(s, QStringLiteral("Quantity"));
    p.highBidder =
        PartnerLabel(s, QStringLiteral("HighBidderName"), QStringLiteral("HighBidderFeedback"));
    p.highBidderStar = StarIconFor(s.Text(QStringLiteral("HighBidderFeedback")));
    p.seller = PartnerLabel(s, QStringLiteral("SellerName"), QStringLiteral("SellerFeedback"));
    p.sellerStar = StarIconFor(s.Text(QStringLiteral("SellerFeedback")));
    p.started = OrNa(s, QStringLiteral("StartDate"));
    p.ends = OrNa(s, QStringLiteral("EndDate"));
    p.timeLeft = TimeLeftFor(group, gridTimeLeft);
    p.words = PanelWordsFor(p.timeLeft);
    return details;
}

SalePanel ClearSalePanel() {
    SalePanel p;
    p.title = QStringLiteral("No Current Sales");
    p.colour = CellColour::Green;
    for (QString* label : {&p.category, &p.startsAt, &p.currently, &p.reserve, &p.bids, &p.quantity,
                           &p.highBidder, &p.started, &p.ends, &p.timeLeft}) {
        *label = NotAvailable();
    }
    p.highBidderStar = NoStar();
    return p;
}

BidPanel ClearBidPanel() {
    BidPanel p;
    p.title = QStringLiteral("No Current Bids");
    p.colour = CellColour::Green;
    for (QString* label : {&p.category, &p.startsAt, &p.currently, &p.myMax, &p.bids, &p.quantity,
                           &p.highBidder, &p.seller, &p.started, &p.ends, &p.timeLeft}) {
        *label = NotAvailable();
    }
    p.highBidderStar = NoStar();
    p.sellerStar = NoStar();
    return p;
}

}  // namespace lw::views
