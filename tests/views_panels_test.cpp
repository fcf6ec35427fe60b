// SPDX-License-Identifier: GPL-3.0-or-later
// The item panels: star pictures by feedback, the plain and multi-winner sale
// panels, the bid panels, their "n/a" and "-" rules, colours, captions with
// ampersands, the fixed-column winner lists and the empty state.
#include <gtest/gtest.h>

#include <QVariant>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "views/panels.h"

using lw::core::Database;
using lw::core::Statement;
using lw::views::CellColour;
using lw::views::DutchListRow;
using lw::views::Group;
using lw::views::ShowBidDetails;
using lw::views::ShowSaleDetails;
using namespace Qt::StringLiterals;

// Failures print texts, not code units.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = u"D'Arcy"_s;
const QString kSiteId = u"darcy_sells"_s;

class PanelsTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, kSiteId, u"pw"_s, QString()});
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    // One row: column names (from the test itself, never from a value) and
    // their values in the same order; a null QVariant writes Null.
    void Insert(const QString& table, QStringList names, QVariantList values,
                const QString& user = kUser) {
        ASSERT_EQ(names.size(), values.size());
        names << u"UserName"_s;
        values << user;
        const QStringList marks(names.size(), u"?"_s);
        Statement s = Db().Prepare(u"INSERT INTO "_s + table + u" ("_s + names.join(u", "_s) +
                                   u") VALUES ("_s + marks.join(u", "_s) + u')');
        for (int i = 0; i < values.size(); ++i) {
            s.Bind(i + 1, values[i]);
        }
        s.Run();
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

// ------------------------------------------------------------ stars

TEST(StarIcons, FeedbackPicksItsStarByRange) {
    // Bounds of every range, negatives, a value inside a gap between two
    // ranges, feedback without brackets, and no or broken feedback.
    const struct {
        QString star;
        QStringList feedbacks;
    } kCases[] = {
        {u"eBayNoStar"_s, {u"(9)"_s, u"(-3)"_s, u"99.5"_s, QString(), u"("_s}},
        {u"eBay10-99"_s, {u"(10)"_s, u"(99)"_s}},
        {u"eBay100-499"_s, {u"(100)"_s, u"(499)"_s, u"150"_s}},
        {u"eBay500-999"_s, {u"(500)"_s}},
        {u"eBay1000-9999"_s, {u"(9999)"_s}},
        {u"eBay10000"_s, {u"(10000)"_s}},
    };
    for (const auto& c : kCases) {
        for (const QString& feedback : c.feedbacks) {
            SCOPED_TRACE(feedback.toStdString());
            EXPECT_EQ(lw::views::StarIconFor(feedback), c.star);
        }
    }
}

TEST(DutchLists, RowsKeepTheirColumnsWhateverTheNameLength) {
    const QString shortRow = DutchListRow(u"amy(12)"_s, u"3"_s, u"$2.00"_s);
    const QString longRow =
        DutchListRow(u"a_bidder_with_a_very_long_name(1234)"_s, u"12"_s, u"$2.50"_s);
    EXPECT_EQ(shortRow, u"amy(12)                  3     @     $2.00"_s);
    EXPECT_EQ(longRow.left(25), u"a_bidder_with_a_very_long"_s);
    EXPECT_EQ(longRow.mid(25, 2), u"12"_s);
    EXPECT_EQ(shortRow.indexOf(u'@'), 31);
    EXPECT_EQ(longRow.indexOf(u'@'), 31);
}

// ------------------------------------------------------------ sale panels

TEST_F(PanelsTest, ASalePanelShowsItsFieldsAndTheReserveColour) {
    Insert(u"Auctions"_s,
           {u"ItemNumber"_s, u"ItemTitle"_s, u"ItemCategory"_s, u"MinimumBid"_s, u"HighBid"_s,
            u"ReserveBid"_s, u"NumberBids"_s, u"Quantity"_s, u"HighBidderName"_s,
            u"HighBidderFeedback"_s, u"StartDate"_s, u"EndDate"_s},
           {u"123"_s, u"Tom &amp; Jerry & friends"_s, u"Toys & Hobbies"_s, u"$1.00"_s,
            u"$1,234.50"_s, u"$900.00"_s, u"14"_s, u"1"_s, u"buyer"_s, u"(150)"_s, u"06/01/00"_s,
            u"06/08/00, 10:00:00 PDT"_s});

    const auto p = ShowSaleDetails(Db(), u"123"_s, Group::Current, u"1d 02h 03m"_s);
    ASSERT_TRUE(p.has_value());
    EXPECT_EQ(p->title, u"Tom && Jerry && friends (Item #123)"_s);
    EXPECT_EQ(p->category, u"Toys && Hobbies"_s);
    EXPECT_EQ(p->colour, CellColour::Green);
    EXPECT_EQ(p->startsAt, u"$1.00"_s);
    EXPECT_EQ(p->currently, u"$1,234.50"_s);
    EXPECT_EQ(p->reserve, u"$900.00"_s);
    EXPECT_EQ(p->bids, u"14"_s);
    EXPECT_EQ(p->quantity, u"1"_s);
    EXPECT_EQ(p->highBidder, u"buyer (150)"_s);
    EXPECT_EQ(p->highBidderStar, u"eBay100-499"_s);
    EXPECT_EQ(p->started, u"06/01/00"_s);
    EXPECT_EQ(p->ends, u"06/08/00, 10:00:00 PDT"_s);
}

TEST_F(PanelsTest, TheTimeLeftAndTheWordsFollowTheGroupAndTheGridsTimeLeft) {
    Insert(u"Auctions"_s, {u"ItemNumber"_s}, {u"5"_s});
    Insert(u"Bids"_s, {u"ItemNumber"_s}, {u"5"_s});
    const struct {
        const char* name;
        Group group;
        QString gridTimeLeft;
        QString timeLeft;
        lw::views::PanelWords words;
    } kCases[] = {
        {"running",
         Group::Current,
         u"1d 02h 03m"_s,
         u"1d 02h 03m"_s,
         {u"Ends:"_s, u"Starts at:"_s, u"Currently:"_s}},
        {"archived",
         Group::Archived,
         QString(),
         u"Ended"_s,
         {u"Ended:"_s, u"Minimum:"_s, u"Final Bid:"_s}},
        // A current item whose time is up reads as ended too.
        {"time up",
         Group::Current,
         u"Ended"_s,
         u"Ended"_s,
         {u"Ended:"_s, u"Minimum:"_s, u"Final Bid:"_s}},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.name);
        const auto sale = ShowSaleDetails(Db(), u"5"_s, c.group, c.gridTimeLeft);
        const auto bid = ShowBidDetails(Db(), u"5"_s, c.group, c.gridTimeLeft);
        ASSERT_TRUE(sale.has_value());
        ASSERT_TRUE(bid.has_value());
        ASSERT_FALSE(bid->dutch);
        for (const auto& [timeLeft, words] : {std::pair{sale->timeLeft, sale->words},
                                              std::pair{bid->plain.timeLeft, bid->plain.words}}) {
            EXPECT_EQ(timeLeft, c.timeLeft);
            EXPECT_EQ(words.ends, c.words.ends);
            EXPECT_EQ(words.startsAt, c.words.startsAt);
            EXPECT_EQ(words.currently, c.words.currently);
        }
    }
}

TEST_F(PanelsTest, SalePanelsTurnDashesAndNullsIntoTheirWords) {
    Insert(u"Auctions"_s,
           {u"ItemNumber"_s, u"ItemTitle"_s, u"HighBid"_s, u"ReserveBid"_s, u"NumberBids"_s,
            u"HighBidderName"_s, u"HighBidderFeedback"_s},
           {u"1"_s, u"No bids"_s, u"-"_s, u"$10.00"_s, u"-"_s, u"n/a"_s, u""_s});
    Insert(u"Auctions"_s, {u"ItemNumber"_s, u"HighBid"_s, u"ReserveBid"_s, u"HighBidderName"_s},
           {u"2"_s, u"$3.00"_s, u"-"_s, u"bob"_s});
    Insert(u"Auctions"_s, {u"ItemNumber"_s}, {u"3"_s});

    const auto noBids = ShowSaleDetails(Db(), u"1"_s, Group::Current, QString());
    ASSERT_TRUE(noBids.has_value());
    EXPECT_EQ(noBids->currently, u"n/a"_s);
    EXPECT_EQ(noBids->bids, u"0"_s);
    EXPECT_EQ(noBids->colour, CellColour::Red);
    EXPECT_EQ(noBids->highBidder, u"n/a"_s);
    EXPECT_EQ(noBids->highBidderStar, u"eBayNoStar"_s);

    const auto noReserve = ShowSaleDetails(Db(), u"2"_s, Group::Current, QString());
    ASSERT_TRUE(noReserve.has_value());
    EXPECT_EQ(noReserve->reserve, u"No Reserve"_s);
    EXPECT_EQ(noReserve->colour, CellColour::Green);
    // A name with a Null feedback shows "n/a".
    EXPECT_EQ(noReserve->highBidder, u"n/a"_s);

    const auto nulls = ShowSaleDetails(Db(), u"3"_s, Group::Current, QString());
    ASSERT_TRUE(nulls.has_value());
    EXPECT_EQ(nulls->title, u"n/a"_s);
    EXPECT_EQ(nulls->colour, CellColour::Red);
    for (const QString& value :
         {nulls->category, nulls->startsAt, nulls->currently, nulls->reserve, nulls->bids,
          nulls->quantity, nulls->highBidder, nulls->started, nulls->ends}) {
        EXPECT_EQ(value, u"n/a"_s);
    }
}

TEST_F(PanelsTest, PanelsReadTheCurrentUsersRowOnly) {
    const QString other = u"Someone'else"_s;
    Insert(u"Auctions"_s, {u"ItemNumber"_s, u"ItemTitle"_s}, {u"77"_s, u"Mine"_s});
    Insert(u"Auctions"_s, {u"ItemNumber"_s, u"ItemTitle"_s}, {u"77"_s, u"Not mine"_s}, other);
    Insert(u"Auctions"_s, {u"ItemNumber"_s, u"ItemTitle"_s}, {u"78"_s, u"Theirs"_s}, other);
    const auto mine = ShowSaleDetails(Db(), u"77 "_s, Group::Current, QString());
    ASSERT_TRUE(mine.has_value());
    EXPECT_EQ(mine->title, u"Mine (Item #77)"_s);
    // Another user's item and an item nobody has leave the panel as it is.
    EXPECT_FALSE(ShowSaleDetails(Db(), u"78"_s, Group::Current, QString()).has_value());
    EXPECT_FALSE(ShowSaleDetails(Db(), u"999"_s, Group::Current, QString()).has_value());
}

TEST_F(PanelsTest, AMultiWinnerSaleListsItsWinnersAndTotalsThem) {
    Insert(u"Auctions"_s,
           {u"ItemNumber"_s, u"ItemTitle"_s, u"ItemCategory"_s, u"MinimumBid"_s, u"HighBid"_s,
            u"ReserveBid"_s, u"NumberBids"_s, u"Quantity"_s, u"HighBidderName"_s, u"StartDate"_s,
            u"EndDate"_s},
           {u"500"_s, u"Marbles"_s, u"Toys"_s, u"$1.00"_s, u"$2.50"_s, u"-"_s, u"-"_s, u"4"_s,
            u"Dutch Auction"_s, u"06/01/00"_s, u"06/08/00, 10:00:00 PDT"_s});
    const QStringList winner = {u"ItemNumber"_s, u"HighBidderName"_s, u"HighBidderFeedback"_s,
                                u"Quantity"_s, u"HighBid"_s};
    Insert(u"Dutch"_s, winner, {u"500"_s, u"amy"_s, u"(12)"_s, u"3"_s, u"$2.00"_s});
    Insert(u"Dutch"_s, winner,
           {u"500"_s, u"a_bidder_with_a_very_long_name"_s, u"(1234)"_s, u"1"_s, u"$2.50"_s});

    const auto p = lw::views::ShowDutchSaleDetails(Db(), u"500"_s);
    ASSERT_TRUE(p.has_value());
    EXPECT_EQ(p->total, u"$8.50"_s);
    EXPECT_EQ(p->title, u"Marbles (Item #500)"_s);
    EXPECT_EQ(p->colour, CellColour::Green);
    EXPECT_EQ(p->bids, u"0"_s);
    EXPECT_EQ(p->quantity, u"4"_s);
    EXPECT_EQ(p->category, u"Toys"_s);
    EXPECT_EQ(p->startsAt, u"$1.00"_s);
    EXPECT_EQ(p->started, u"06/01/00"_s);
    // In the order written, name and feedback joined.
    EXPECT_EQ(
        p->winners,
        (QStringList{DutchListRow(u"amy(12)"_s, u"3"_s, u"$2.00"_s),
                     DutchListRow(u"a_bidder_with_a_very_long_name(1234)"_s, u"1"_s, u"$2.50"_s)}));

    Insert(u"Auctions"_s, {u"ItemNumber"_s, u"HighBid"_s, u"ReserveBid"_s},
           {u"501"_s, u"$1.00"_s, u"$5.00"_s});
    const auto empty = lw::views::ShowDutchSaleDetails(Db(), u"501"_s);
    ASSERT_TRUE(empty.has_value());
    EXPECT_EQ(empty->winners, QStringList{u"No bidders"_s});
    EXPECT_EQ(empty->total, u"$0.00"_s);
    EXPECT_EQ(empty->colour, CellColour::Red);
}

// ------------------------------------------------------------ bid panels

TEST_F(PanelsTest, APlainBidPanelShowsBothPartnersAndTheWinningColour) {
    Insert(u"Bids"_s,
           {u"ItemNumber"_s, u"ItemTitle"_s, u"ItemCategory"_s, u"MinimumBid"_s, u"HighBid"_s,
            u"MaximumBid"_s, u"NumberBids"_s, u"Quantity"_s, u"HighBidderName"_s,
            u"HighBidderFeedback"_s, u"SellerName"_s, u"SellerFeedback"_s, u"Winning"_s,
            u"StartDate"_s, u"EndDate"_s},
           {u"600"_s, u"Lamp & shade"_s, u"Home"_s, u"$5.00"_s, u"$7.50"_s, u"$9.00"_s, u"3"_s,
            u"1"_s, kSiteId, u"(1500)"_s, u"Locating..."_s, QVariant(), true, u"06/01/00"_s,
            u"06/08/00, 10:00:00 PDT"_s});
    Insert(u"Bids"_s,
           {u"ItemNumber"_s, u"HighBid"_s, u"HighBidderName"_s, u"HighBidderFeedback"_s,
            u"SellerName"_s, u"SellerFeedback"_s, u"Winning"_s},
           {u"601"_s, u"-"_s, u"rival"_s, u""_s, u"shop"_s, u"(42)"_s, false});

    const auto won = ShowBidDetails(Db(), u"600"_s, Group::Current, u"2d 01h 00m"_s);
    ASSERT_TRUE(won.has_value());
    ASSERT_FALSE(won->dutch);
    const lw::views::BidPanel& p = won->plain;
    EXPECT_EQ(p.title, u"Lamp && shade (Item #600)"_s);
    EXPECT_EQ(p.colour, CellColour::Green);
    EXPECT_EQ(p.category, u"Home"_s);
    EXPECT_EQ(p.startsAt, u"$5.00"_s);
    EXPECT_EQ(p.currently, u"$7.50"_s);
    EXPECT_EQ(p.myMax, u"$9.00"_s);
    EXPECT_EQ(p.bids, u"3"_s);
    EXPECT_EQ(p.highBidder, kSiteId + u" (1500)"_s);
    EXPECT_EQ(p.highBidderStar, u"eBay1000-9999"_s);
    EXPECT_EQ(p.seller, u"Locating..."_s);
    EXPECT_EQ(p.sellerStar, u"eBayNoStar"_s);

    const auto lost = ShowBidDetails(Db(), u"601"_s, Group::Archived, QString());
    ASSERT_TRUE(lost.has_value());
    EXPECT_EQ(lost->plain.colour, CellColour::Red);
    EXPECT_EQ(lost->plain.currently, u"n/a"_s);
    EXPECT_EQ(lost->plain.highBidder, u"rival"_s);
    EXPECT_EQ(lost->plain.seller, u"shop (42)"_s);
    EXPECT_EQ(lost->plain.sellerStar, u"eBay10-99"_s);
    EXPECT_EQ(lost->plain.myMax, u"n/a"_s);
}

TEST_F(PanelsTest, AMultiWinnerBidIsGreenOnlyWhenTheUserIsAmongTheWinners) {
    const QString future =
        QDateTime::currentDateTime().addDays(3).toString(u"MM/dd/yy, hh:mm:ss"_s) + u" PST"_s;
    Insert(u"Bids"_s,
           {u"ItemNumber"_s, u"ItemTitle"_s, u"ItemCategory"_s, u"MinimumBid"_s, u"NumberBids"_s,
            u"Quantity"_s, u"HighBidderName"_s, u"StartDate"_s, u"EndDate"_s},
           {u"700"_s, u"Stamps"_s, u"Stamps & Coins"_s, u"$0.50"_s, u"9"_s, u"10"_s,
            u"Dutch Auction"_s, u"06/01/00"_s, future});
    // The user's site login in other letter case, then a rival.
    Insert(u"DutchBids"_s,
           {u"ItemNumber"_s, u"HighBidderName"_s, u"HighBidderFeedback"_s, u"Quantity"_s,
            u"HighBid"_s},
           {u"700"_s, u"DARCY_SELLS"_s, u"(3)"_s, u"2"_s, u"$0.75"_s});
    Insert(u"DutchBids"_s, {u"ItemNumber"_s, u"HighBidderName"_s, u"Quantity"_s, u"HighBid"_s},
           {u"700"_s, u"rival"_s, u"8"_s, u"$0.80"_s});
    Insert(u"Bids"_s, {u"ItemNumber"_s, u"ItemTitle"_s, u"HighBidderName"_s, u"EndDate"_s},
           {u"701"_s, u"Coins"_s, u"Dutch Auction"_s, u"01/01/99, 10:00:00 PST"_s});

    const auto won = ShowBidDetails(Db(), u"700"_s, Group::Current, QString());
    ASSERT_TRUE(won.has_value());
    ASSERT_TRUE(won->dutch);
    const lw::views::DutchBidPanel& p = won->dutchPanel;
    EXPECT_EQ(p.title, u"Stamps (Item #700)"_s);
    EXPECT_EQ(p.values, (std::array<QString, 6>{u"Stamps & Coins"_s, u"$0.50"_s, u"9"_s, u"10"_s,
                                                u"06/01/00"_s, future}));
    EXPECT_EQ(p.endsWord, u"Ends:"_s);
    EXPECT_EQ(p.userWins, 1);
    EXPECT_EQ(p.colour, CellColour::Green);
    ASSERT_EQ(p.bidders.size(), 2);
    EXPECT_EQ(p.bidders[0], DutchListRow(u"DARCY_SELLS(3)"_s, u"2"_s, u"$0.75"_s));

    const auto none = ShowBidDetails(Db(), u"701"_s, Group::Archived, QString());
    ASSERT_TRUE(none.has_value());
    ASSERT_TRUE(none->dutch);
    EXPECT_EQ(none->dutchPanel.bidders, QStringList{u"No dutch bidders"_s});
    EXPECT_EQ(none->dutchPanel.colour, CellColour::Red);
    EXPECT_EQ(none->dutchPanel.endsWord, u"Ended:"_s);
    EXPECT_EQ(none->dutchPanel.values[0], u"n/a"_s);
}

TEST(EmptyPanels, ClearedPanelsSayNoCurrentItemsAndNotAvailable) {
    const lw::views::SalePanel sale = lw::views::ClearSalePanel();
    EXPECT_EQ(sale.title, u"No Current Sales"_s);
    EXPECT_EQ(sale.colour, CellColour::Green);
    EXPECT_EQ(sale.highBidderStar, u"eBayNoStar"_s);
    for (const QString& value :
         {sale.category, sale.startsAt, sale.currently, sale.reserve, sale.bids, sale.quantity,
          sale.highBidder, sale.started, sale.ends, sale.timeLeft}) {
        EXPECT_EQ(value, u"n/a"_s);
    }
    const lw::views::BidPanel bid = lw::views::ClearBidPanel();
    EXPECT_EQ(bid.title, u"No Current Bids"_s);
    EXPECT_EQ(bid.sellerStar, u"eBayNoStar"_s);
    EXPECT_EQ(bid.highBidderStar, u"eBayNoStar"_s);
    for (const QString& value :
         {bid.category, bid.startsAt, bid.currently, bid.myMax, bid.bids, bid.quantity,
          bid.highBidder, bid.seller, bid.started, bid.ends, bid.timeLeft}) {
        EXPECT_EQ(value, u"n/a"_s);
    }
}

}  // namespace
