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
using lw::views::Group;

// Failures print texts, not code units.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = QStringLiteral("D'Arcy");
const QString kSiteId = QStringLiteral("darcy_sells");

// Column names and values of one row; a null QVariant writes Null.
using Fields = std::vector<std::pair<QString, QVariant>>;

class PanelsTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, kSiteId, QStringLiteral("pw"), QString()});
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    // Column names come from the test itself, never from a value.
    void Insert(const QString& table, Fields fields, const QString& user = kUser) {
        fields.emplace_back(QStringLiteral("UserName"), user);
        QStringList names;
        QStringList marks;
        for (const auto& field : fields) {
            names << field.first;
            marks << QStringLiteral("?");
        }
        Statement s = Db().Prepare(QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") +
                                   names.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (") +
                                   marks.join(QStringLiteral(", ")) + u')');
        int index = 1;
        for (const auto& field : fields) {
            s.Bind(index++, field.second);
        }
        s.Run();
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

QVariant Null() {
    return QVariant();
}

// ------------------------------------------------------------ stars

TEST(StarIcons, FeedbackPicksItsStarByRange) {
    using lw::views::StarIconFor;
    EXPECT_EQ(StarIconFor(QStringLiteral("(9)")), QStringLiteral("eBayNoStar"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(10)")), QStringLiteral("eBay10-99"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(99)")), QStringLiteral("eBay10-99"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(100)")), QStringLiteral("eBay100-499"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(499)")), QStringLiteral("eBay100-499"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(500)")), QStringLiteral("eBay500-999"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(9999)")), QStringLiteral("eBay1000-9999"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(10000)")), QStringLiteral("eBay10000"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(-3)")), QStringLiteral("eBayNoStar"));
    // A value inside a gap matches no range.
    EXPECT_EQ(StarIconFor(QStringLiteral("99.5")), QStringLiteral("eBayNoStar"));
    EXPECT_EQ(StarIconFor(QStringLiteral("150")), QStringLiteral("eBay100-499"));
    EXPECT_EQ(StarIconFor(QString()), QStringLiteral("eBayNoStar"));
    EXPECT_EQ(StarIconFor(QStringLiteral("(")), QStringLiteral("eBayNoStar"));
}

TEST(DutchLists, RowsKeepTheirColumnsWhateverTheNameLength) {
    using lw::views::DutchListRow;
    const QString shortRow =
        DutchListRow(QStringLiteral("amy(12)"), QStringLiteral("3"), QStringLiteral("$2.00"));
    const QString longRow = DutchListRow(QStringLiteral("a_bidder_with_a_very_long_name(1234)"),
                                         QStringLiteral("12"), QStringLiteral("$2.50"));
    EXPECT_EQ(shortRow, QStringLiteral("amy(12)                  3     @     $2.00"));
    EXPECT_EQ(longRow.left(25), QStringLiteral("a_bidder_with_a_very_long"));
    EXPECT_EQ(longRow.mid(25, 2), QStringLiteral("12"));
    EXPECT_EQ(shortRow.indexOf(u'@'), 31);
    EXPECT_EQ(longRow.indexOf(u'@'), 31);
}

// ------------------------------------------------------------ sale panels

TEST_F(PanelsTest, ASalePanelShowsItsFieldsAndTheReserveColour) {
    Insert(QStringLiteral("Auctions"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("123")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Tom &amp; Jerry & friends")},
            {QStringLiteral("ItemCategory"), QStringLiteral("Toys & Hobbies")},
            {QStringLiteral("MinimumBid"), QStringLiteral("$1.00")},
            {QStringLiteral("HighBid"), QStringLiteral("$1,234.50")},
            {QStringLiteral("ReserveBid"), QStringLiteral("$900.00")},
            {QStringLiteral("NumberBids"), QStringLiteral("14")},
            {QStringLiteral("Quantity"), QStringLiteral("1")},
            {QStringLiteral("HighBidderName"), QStringLiteral("buyer")},
            {QStringLiteral("HighBidderFeedback"), QStringLiteral("(150)")},
            {QStringLiteral("StartDate"), QStringLiteral("06/01/00")},
            {QStringLiteral("EndDate"), QStringLiteral("06/08/00, 10:00:00 PDT")}});

    const auto p = lw::views::ShowSaleDetails(Db(), QStringLiteral("123"), Group::Current,
                                              QStringLiteral("1d 02h 03m"));
    ASSERT_TRUE(p.has_value());
    EXPECT_EQ(p->title, QStringLiteral("Tom && Jerry && friends (Item #123)"));
    EXPECT_EQ(p->category, QStringLiteral("Toys && Hobbies"));
    EXPECT_EQ(p->colour, CellColour::Green);
    EXPECT_EQ(p->startsAt, QStringLiteral("$1.00"));
    EXPECT_EQ(p->currently, QStringLiteral("$1,234.50"));
    EXPECT_EQ(p->reserve, QStringLiteral("$900.00"));
    EXPECT_EQ(p->bids, QStringLiteral("14"));
    EXPECT_EQ(p->quantity, QStringLiteral("1"));
    EXPECT_EQ(p->highBidder, QStringLiteral("buyer (150)"));
    EXPECT_EQ(p->highBidderStar, QStringLiteral("eBay100-499"));
    EXPECT_EQ(p->started, QStringLiteral("06/01/00"));
    EXPECT_EQ(p->ends, QStringLiteral("06/08/00, 10:00:00 PDT"));
    EXPECT_EQ(p->timeLeft, QStringLiteral("1d 02h 03m"));
    EXPECT_EQ(p->words.ends, QStringLiteral("Ends:"));
    EXPECT_EQ(p->words.startsAt, QStringLiteral("Starts at:"));
    EXPECT_EQ(p->words.currently, QStringLiteral("Currently:"));

    const auto archived =
        lw::views::ShowSaleDetails(Db(), QStringLiteral("123"), Group::Archived, QString());
    ASSERT_TRUE(archived.has_value());
    EXPECT_EQ(archived->timeLeft, QStringLiteral("Ended"));
    EXPECT_EQ(archived->words.ends, QStringLiteral("Ended:"));
    EXPECT_EQ(archived->words.startsAt, QStringLiteral("Minimum:"));
    EXPECT_EQ(archived->words.currently, QStringLiteral("Final Bid:"));

    // A current item whose time is up reads as ended too.
    const auto justEnded = lw::views::ShowSaleDetails(Db(), QStringLiteral("123"), Group::Current,
                                                      QStringLiteral("Ended"));
    EXPECT_EQ(justEnded->words.currently, QStringLiteral("Final Bid:"));

    EXPECT_FALSE(lw::views::ShowSaleDetails(Db(), QStringLiteral("999"), Group::Current, QString())
                     .has_value());
}

TEST_F(PanelsTest, SalePanelsTurnDashesAndNullsIntoTheirWords) {
    Insert(QStringLiteral("Auctions"), {{QStringLiteral("ItemNumber"), QStringLiteral("1")},
                                        {QStringLiteral("ItemTitle"), QStringLiteral("No bids")},
                                        {QStringLiteral("HighBid"), QStringLiteral("-")},
                                        {QStringLiteral("ReserveBid"), QStringLiteral("$10.00")},
                                        {QStringLiteral("NumberBids"), QStringLiteral("-")},
                                        {QStringLiteral("HighBidderName"), QStringLiteral("n/a")},
                                        {QStringLiteral("HighBidderFeedback"), QString()}});
    Insert(QStringLiteral("Auctions"), {{QStringLiteral("ItemNumber"), QStringLiteral("2")},
                                        {QStringLiteral("HighBid"), QStringLiteral("$3.00")},
                                        {QStringLiteral("ReserveBid"), QStringLiteral("-")},
                                        {QStringLiteral("HighBidderName"), QStringLiteral("bob")}});
    Insert(QStringLiteral("Auctions"), {{QStringLiteral("ItemNumber"), QStringLiteral("3")}});

    const auto noBids =
        lw::views::ShowSaleDetails(Db(), QStringLiteral("1"), Group::Current, QString());
    ASSERT_TRUE(noBids.has_value());
    EXPECT_EQ(noBids->currently, QStringLiteral("n/a"));
    EXPECT_EQ(noBids->bids, QStringLiteral("0"));
    EXPECT_EQ(noBids->colour, CellColour::Red);
    EXPECT_EQ(noBids->highBidder, QStringLiteral("n/a"));
    EXPECT_EQ(noBids->highBidderStar, QStringLiteral("eBayNoStar"));

    const auto noReserve =
        lw::views::ShowSaleDetails(Db(), QStringLiteral("2"), Group::Current, QString());
    ASSERT_TRUE(noReserve.has_value());
    EXPECT_EQ(noReserve->reserve, QStringLiteral("No Reserve"));
    EXPECT_EQ(noReserve->colour, CellColour::Green);
    // A name with a Null feedback shows "n/a".
    EXPECT_EQ(noReserve->highBidder, QStringLiteral("n/a"));

    const auto nulls =
        lw::views::ShowSaleDetails(Db(), QStringLiteral("3"), Group::Current, QString());
    ASSERT_TRUE(nulls.has_value());
    EXPECT_EQ(nulls->title, QStringLiteral("n/a"));
    EXPECT_EQ(nulls->colour, CellColour::Red);
    for (const QString& value :
         {nulls->category, nulls->startsAt, nulls->currently, nulls->reserve, nulls->bids,
          nulls->quantity, nulls->highBidder, nulls->started, nulls->ends}) {
        EXPECT_EQ(value, QStringLiteral("n/a"));
    }
}

TEST_F(PanelsTest, PanelsReadTheCurrentUsersRowOnly) {
    Insert(QStringLiteral("Auctions"), {{QStringLiteral("ItemNumber"), QStringLiteral("77")},
                                        {QStringLiteral("ItemTitle"), QStringLiteral("Mine")}});
    Insert(QStringLiteral("Auctions"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("77")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Not mine")}},
           QStringLiteral("Someone'else"));
    Insert(QStringLiteral("Auctions"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("78")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Theirs")}},
           QStringLiteral("Someone'else"));
    const auto mine =
        lw::views::ShowSaleDetails(Db(), QStringLiteral("77 "), Group::Current, QString());
    ASSERT_TRUE(mine.has_value());
    EXPECT_EQ(mine->title, QStringLiteral("Mine (Item #77)"));
    EXPECT_FALSE(lw::views::ShowSaleDetails(Db(), QStringLiteral("78"), Group::Current, QString())
                     .has_value());
}

TEST_F(PanelsTest, AMultiWinnerSaleListsItsWinnersAndTotalsThem) {
    Insert(QStringLiteral("Auctions"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("500")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Marbles")},
            {QStringLiteral("ItemCategory"), QStringLiteral("Toys")},
            {QStringLiteral("MinimumBid"), QStringLiteral("$1.00")},
            {QStringLiteral("HighBid"), QStringLiteral("$2.50")},
            {QStringLiteral("ReserveBid"), QStringLiteral("-")},
            {QStringLiteral("NumberBids"), QStringLiteral("-")},
            {QStringLiteral("Quantity"), QStringLiteral("4")},
            {QStringLiteral("HighBidderName"), QStringLiteral("Dutch Auction")},
            {QStringLiteral("StartDate"), QStringLiteral("06/01/00")},
            {QStringLiteral("EndDate"), QStringLiteral("06/08/00, 10:00:00 PDT")}});
    Insert(QStringLiteral("Dutch"), {{QStringLiteral("ItemNumber"), QStringLiteral("500")},
                                     {QStringLiteral("HighBidderName"), QStringLiteral("amy")},
                                     {QStringLiteral("HighBidderFeedback"), QStringLiteral("(12)")},
                                     {QStringLiteral("Quantity"), QStringLiteral("3")},
                                     {QStringLiteral("HighBid"), QStringLiteral("$2.00")}});
    Insert(QStringLiteral("Dutch"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("500")},
            {QStringLiteral("HighBidderName"), QStringLiteral("a_bidder_with_a_very_long_name")},
            {QStringLiteral("HighBidderFeedback"), QStringLiteral("(1234)")},
            {QStringLiteral("Quantity"), QStringLiteral("1")},
            {QStringLiteral("HighBid"), QStringLiteral("$2.50")}});

    const auto p = lw::views::ShowDutchSaleDetails(Db(), QStringLiteral("500"));
    ASSERT_TRUE(p.has_value());
    EXPECT_EQ(p->total, QStringLiteral("$8.50"));
    EXPECT_EQ(p->title, QStringLiteral("Marbles (Item #500)"));
    EXPECT_EQ(p->colour, CellColour::Green);
    EXPECT_EQ(p->bids, QStringLiteral("0"));
    EXPECT_EQ(p->quantity, QStringLiteral("4"));
    EXPECT_EQ(p->category, QStringLiteral("Toys"));
    EXPECT_EQ(p->startsAt, QStringLiteral("$1.00"));
    EXPECT_EQ(p->started, QStringLiteral("06/01/00"));
    ASSERT_EQ(p->winners.size(), 2);
    EXPECT_EQ(p->winners[0], QStringLiteral("amy(12)                  3     @     $2.00"));
    EXPECT_EQ(p->winners[1].left(25), QStringLiteral("a_bidder_with_a_very_long"));
    EXPECT_EQ(p->winners[1].indexOf(u'@'), 31);

    Insert(QStringLiteral("Auctions"), {{QStringLiteral("ItemNumber"), QStringLiteral("501")},
                                        {QStringLiteral("HighBid"), QStringLiteral("$1.00")},
                                        {QStringLiteral("ReserveBid"), QStringLiteral("$5.00")}});
    const auto empty = lw::views::ShowDutchSaleDetails(Db(), QStringLiteral("501"));
    ASSERT_TRUE(empty.has_value());
    EXPECT_EQ(empty->winners, QStringList{QStringLiteral("No bidders")});
    EXPECT_EQ(empty->total, QStringLiteral("$0.00"));
    EXPECT_EQ(empty->colour, CellColour::Red);
}

// ------------------------------------------------------------ bid panels

TEST_F(PanelsTest, APlainBidPanelShowsBothPartnersAndTheWinningColour) {
    Insert(QStringLiteral("Bids"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("600")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Lamp & shade")},
            {QStringLiteral("ItemCategory"), QStringLiteral("Home")},
            {QStringLiteral("MinimumBid"), QStringLiteral("$5.00")},
            {QStringLiteral("HighBid"), QStringLiteral("$7.50")},
            {QStringLiteral("MaximumBid"), QStringLiteral("$9.00")},
            {QStringLiteral("NumberBids"), QStringLiteral("3")},
            {QStringLiteral("Quantity"), QStringLiteral("1")},
            {QStringLiteral("HighBidderName"), kSiteId},
            {QStringLiteral("HighBidderFeedback"), QStringLiteral("(1500)")},
            {QStringLiteral("SellerName"), QStringLiteral("Locating...")},
            {QStringLiteral("SellerFeedback"), Null()},
            {QStringLiteral("Winning"), true},
            {QStringLiteral("StartDate"), QStringLiteral("06/01/00")},
            {QStringLiteral("EndDate"), QStringLiteral("06/08/00, 10:00:00 PDT")}});
    Insert(QStringLiteral("Bids"), {{QStringLiteral("ItemNumber"), QStringLiteral("601")},
                                    {QStringLiteral("HighBid"), QStringLiteral("-")},
                                    {QStringLiteral("HighBidderName"), QStringLiteral("rival")},
                                    {QStringLiteral("HighBidderFeedback"), QString()},
                                    {QStringLiteral("SellerName"), QStringLiteral("shop")},
                                    {QStringLiteral("SellerFeedback"), QStringLiteral("(42)")},
                                    {QStringLiteral("Winning"), false}});

    const auto won = lw::views::ShowBidDetails(Db(), QStringLiteral("600"), Group::Current,
                                               QStringLiteral("2d 01h 00m"));
    ASSERT_TRUE(won.has_value());
    ASSERT_FALSE(won->dutch);
    const lw::views::BidPanel& p = won->plain;
    EXPECT_EQ(p.title, QStringLiteral("Lamp && shade (Item #600)"));
    EXPECT_EQ(p.colour, CellColour::Green);
    EXPECT_EQ(p.category, QStringLiteral("Home"));
    EXPECT_EQ(p.startsAt, QStringLiteral("$5.00"));
    EXPECT_EQ(p.currently, QStringLiteral("$7.50"));
    EXPECT_EQ(p.myMax, QStringLiteral("$9.00"));
    EXPECT_EQ(p.bids, QStringLiteral("3"));
    EXPECT_EQ(p.highBidder, kSiteId + QStringLiteral(" (1500)"));
    EXPECT_EQ(p.highBidderStar, QStringLiteral("eBay1000-9999"));
    EXPECT_EQ(p.seller, QStringLiteral("Locating..."));
    EXPECT_EQ(p.sellerStar, QStringLiteral("eBayNoStar"));
    EXPECT_EQ(p.timeLeft, QStringLiteral("2d 01h 00m"));
    EXPECT_EQ(p.words.ends, QStringLiteral("Ends:"));

    const auto lost =
        lw::views::ShowBidDetails(Db(), QStringLiteral("601"), Group::Archived, QString());
    ASSERT_TRUE(lost.has_value());
    EXPECT_EQ(lost->plain.colour, CellColour::Red);
    EXPECT_EQ(lost->plain.currently, QStringLiteral("n/a"));
    EXPECT_EQ(lost->plain.highBidder, QStringLiteral("rival"));
    EXPECT_EQ(lost->plain.seller, QStringLiteral("shop (42)"));
    EXPECT_EQ(lost->plain.sellerStar, QStringLiteral("eBay10-99"));
    EXPECT_EQ(lost->plain.myMax, QStringLiteral("n/a"));
    EXPECT_EQ(lost->plain.timeLeft, QStringLiteral("Ended"));
    EXPECT_EQ(lost->plain.words.currently, QStringLiteral("Final Bid:"));
}

TEST_F(PanelsTest, AMultiWinnerBidIsGreenOnlyWhenTheUserIsAmongTheWinners) {
    const QString future =
        QDateTime::currentDateTime().addDays(3).toString(QStringLiteral("MM/dd/yy, hh:mm:ss")) +
        QStringLiteral(" PST");
    Insert(QStringLiteral("Bids"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("700")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Stamps")},
            {QStringLiteral("ItemCategory"), QStringLiteral("Stamps & Coins")},
            {QStringLiteral("MinimumBid"), QStringLiteral("$0.50")},
            {QStringLiteral("NumberBids"), QStringLiteral("9")},
            {QStringLiteral("Quantity"), QStringLiteral("10")},
            {QStringLiteral("HighBidderName"), QStringLiteral("Dutch Auction")},
            {QStringLiteral("StartDate"), QStringLiteral("06/01/00")},
            {QStringLiteral("EndDate"), future}});
    Insert(QStringLiteral("DutchBids"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("700")},
            {QStringLiteral("HighBidderName"), QStringLiteral("DARCY_SELLS")},
            {QStringLiteral("HighBidderFeedback"), QStringLiteral("(3)")},
            {QStringLiteral("Quantity"), QStringLiteral("2")},
            {QStringLiteral("HighBid"), QStringLiteral("$0.75")}});
    Insert(QStringLiteral("DutchBids"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("700")},
            {QStringLiteral("HighBidderName"), QStringLiteral("rival")},
            {QStringLiteral("Quantity"), QStringLiteral("8")},
            {QStringLiteral("HighBid"), QStringLiteral("$0.80")}});
    Insert(QStringLiteral("Bids"),
           {{QStringLiteral("ItemNumber"), QStringLiteral("701")},
            {QStringLiteral("ItemTitle"), QStringLiteral("Coins")},
            {QStringLiteral("HighBidderName"), QStringLiteral("Dutch Auction")},
            {QStringLiteral("EndDate"), QStringLiteral("01/01/99, 10:00:00 PST")}});

    const auto won =
        lw::views::ShowBidDetails(Db(), QStringLiteral("700"), Group::Current, QString());
    ASSERT_TRUE(won.has_value());
    ASSERT_TRUE(won->dutch);
    const lw::views::DutchBidPanel& p = won->dutchPanel;
    EXPECT_EQ(p.title, QStringLiteral("Stamps (Item #700)"));
    EXPECT_EQ(p.values[0], QStringLiteral("Stamps & Coins"));
    EXPECT_EQ(p.values[1], QStringLiteral("$0.50"));
    EXPECT_EQ(p.values[2], QStringLiteral("9"));
    EXPECT_EQ(p.values[3], QStringLiteral("10"));
    EXPECT_EQ(p.values[4], QStringLiteral("06/01/00"));
    EXPECT_EQ(p.values[5], future);
    EXPECT_EQ(p.endsWord, QStringLiteral("Ends:"));
    EXPECT_EQ(p.userWins, 1);
    EXPECT_EQ(p.colour, CellColour::Green);
    ASSERT_EQ(p.bidders.size(), 2);
    EXPECT_EQ(p.bidders[0], QStringLiteral("DARCY_SELLS(3)") + QString(11, u' ') +
                                QStringLiteral("2     @     $0.75"));

    const auto none =
        lw::views::ShowBidDetails(Db(), QStringLiteral("701"), Group::Archived, QString());
    ASSERT_TRUE(none.has_value());
    ASSERT_TRUE(none->dutch);
    EXPECT_EQ(none->dutchPanel.bidders, QStringList{QStringLiteral("No dutch bidders")});
    EXPECT_EQ(none->dutchPanel.colour, CellColour::Red);
    EXPECT_EQ(none->dutchPanel.endsWord, QStringLiteral("Ended:"));
    EXPECT_EQ(none->dutchPanel.values[0], QStringLiteral("n/a"));
}

TEST(EmptyPanels, ClearedPanelsSayNoCurrentItemsAndNotAvailable) {
    const lw::views::SalePanel sale = lw::views::ClearSalePanel();
    EXPECT_EQ(sale.title, QStringLiteral("No Current Sales"));
    EXPECT_EQ(sale.colour, CellColour::Green);
    EXPECT_EQ(sale.highBidderStar, QStringLiteral("eBayNoStar"));
    for (const QString& value :
         {sale.category, sale.startsAt, sale.currently, sale.reserve, sale.bids, sale.quantity,
          sale.highBidder, sale.started, sale.ends, sale.timeLeft}) {
        EXPECT_EQ(value, QStringLiteral("n/a"));
    }
    const lw::views::BidPanel bid = lw::views::ClearBidPanel();
    EXPECT_EQ(bid.title, QStringLiteral("No Current Bids"));
    EXPECT_EQ(bid.sellerStar, QStringLiteral("eBayNoStar"));
    EXPECT_EQ(bid.highBidderStar, QStringLiteral("eBayNoStar"));
    for (const QString& value :
         {bid.category, bid.startsAt, bid.currently, bid.myMax, bid.bids, bid.quantity,
          bid.highBidder, bid.seller, bid.started, bid.ends, bid.timeLeft}) {
        EXPECT_EQ(value, QStringLiteral("n/a"));
    }
}

}  // namespace
