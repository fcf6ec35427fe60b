// SPDX-License-Identifier: GPL-3.0-or-later
// My Sales and My Bids: the current and archived cuts and the successful
// filters, the sales pages and their stored bounds, row texts and colours,
// totals, captions, the head-click sorts, the time-left column and its
// refresh, and a list of 100,000 rows.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QPersistentModelIndex>
#include <QStringList>
#include <QVariant>
#include <array>
#include <map>
#include <optional>
#include <ostream>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "views/listings.h"
#include "views/sidecar_files.h"

using lw::core::Database;
using lw::core::Statement;
using lw::views::BidsListing;
using lw::views::CellColour;
using lw::views::Group;
using lw::views::ListingModel;
using lw::views::MoveButtons;
using lw::views::SalesListing;

// Failures print texts, not code units.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = QStringLiteral("O'Brien");
const QString kSiteId = QStringLiteral("o'brien_42");

// A row of Auctions or Bids; a null QVariant writes Null.
struct Item {
    QVariant item;
    QVariant title = QStringLiteral("Thing");
    QVariant numberBids = QStringLiteral("1");
    QVariant highBid = QStringLiteral("$1.00");
    QVariant reserve = QStringLiteral("-");
    QVariant endDate;
    QVariant bidder = QStringLiteral("someone");
    bool winning = false;
    QString user = kUser;
};

QString EndText(const QDateTime& end) {
    return end.toString(QStringLiteral("MM/dd/yy, hh:mm:ss")) + QStringLiteral(" PST");
}

QString DaysFromNow(int days, int seconds = 0) {
    return EndText(QDateTime::currentDateTime().addDays(days).addSecs(seconds));
}

void Set(const QString& key, const QVariant& value) {
    lw::core::SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key, value);
}

QString Get(const QString& key) {
    return lw::core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key);
}

QStringList Column(const ListingModel& model, int column) {
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row) {
        texts << model.Text(row, column);
    }
    return texts;
}

MoveButtons Buttons(bool back, bool forward, bool first, bool last) {
    MoveButtons b;
    b.enabled = {back, forward, first, last};
    return b;
}

class ListsTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, kSiteId, QStringLiteral("pw"), QString()});
        lw::core::AddUser(
            *m_db,
            {QStringLiteral("Other"), QStringLiteral("other_id"), QStringLiteral("pw"), QString()},
            false);
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    void Add(const QString& table, const Item& it) {
        const bool bids = table == u"Bids";
        Statement s = Db().Prepare(
            QStringLiteral("INSERT INTO ") + table +
            QStringLiteral(" (UserName, ItemNumber, ItemTitle, NumberBids, HighBid, ReserveBid, "
                           "EndDate, HighBidderName") +
            (bids ? QStringLiteral(", Winning) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")
                  : QStringLiteral(") VALUES (?, ?, ?, ?, ?, ?, ?, ?)")));
        s.BindAll(it.user, it.item, it.title, it.numberBids, it.highBid, it.reserve, it.endDate,
                  it.bidder);
        if (bids) {
            s.Bind(9, it.winning);
        }
        s.Run();
    }
    void AddSale(const Item& it) { Add(QStringLiteral("Auctions"), it); }
    void AddBid(const Item& it) { Add(QStringLiteral("Bids"), it); }

    void AddDutchBid(const QString& item, const QString& winner, const QString& endDate,
                     const QString& user = kUser) {
        Statement s = Db().Prepare(QStringLiteral(
            "INSERT INTO DutchBids (ItemNumber, HighBidderName, UserName, ItemTitle, NumberBids, "
            "HighBid, EndDate) VALUES (?, ?, ?, 'Share', '4', '$3.00', ?)"));
        s.BindAll(item, winner, user, endDate).Run();
    }

    // n current sales, item 1001 ending soonest.
    void AddCurrentSales(int n) {
        for (int i = 1; i <= n; ++i) {
            Item it;
            it.item = QString::number(1000 + i);
            it.endDate = DaysFromNow(i);
            AddSale(it);
        }
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

// ------------------------------------------------------------ cuts and filters

TEST_F(ListsTest, SalesSplitIntoCurrentAndArchivedAndTheArchiveWaitsThreeDays) {
    Item it;
    it.item = QStringLiteral("1");  // ends in two days
    it.endDate = DaysFromNow(2);
    AddSale(it);
    it.item = QStringLiteral("2");  // ended a moment ago, still today
    it.endDate = EndText(QDateTime::currentDateTime());
    AddSale(it);
    it.item = QStringLiteral("3");  // no date at all
    it.endDate = QStringLiteral("n/a");
    AddSale(it);
    it.item = QStringLiteral("4");  // ended yesterday: in neither list
    it.endDate = DaysFromNow(-1);
    AddSale(it);
    it.item = QStringLiteral("5");  // two days ago: counted, not shown
    it.endDate = DaysFromNow(-2);
    AddSale(it);
    it.item = QStringLiteral("6");  // three whole days ago: shown
    it.endDate = DaysFromNow(-3);
    AddSale(it);
    it.item = QStringLiteral("7");
    it.endDate = QStringLiteral("12/30/99, 10:00:00 PST");
    AddSale(it);
    it.item = QStringLiteral("8");  // another user's sale
    it.user = QStringLiteral("Other");
    it.endDate = DaysFromNow(2);
    AddSale(it);

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    QStringList current = Column(sales.Model(), ListingModel::kItem);
    current.sort();
    EXPECT_EQ(current, (QStringList{"1", "2", "3"}));
    EXPECT_EQ(sales.ViewLabel(), QStringLiteral("Current Sales"));

    sales.ShowGroup(Db(), Group::Archived);
    QStringList archived = Column(sales.Model(), ListingModel::kItem);
    archived.sort();
    EXPECT_EQ(archived, (QStringList{"6", "7"}));
    EXPECT_EQ(sales.RecordCount(), 4);
    EXPECT_EQ(sales.ViewLabel(), QStringLiteral("Archived Sales"));
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (1 - 3 of 3)"));
    EXPECT_EQ(sales.GroupCaptions()[1], QStringLiteral("Archived Sales (1 - 4 of 4)"));
}

TEST_F(ListsTest, SuccessfulSalesLeaveOutItemsWithoutBids) {
    Item it;
    it.endDate = DaysFromNow(1);
    it.item = QStringLiteral("10");
    AddSale(it);
    it.item = QStringLiteral("11");
    it.numberBids = QStringLiteral("-");
    AddSale(it);
    it.item = QStringLiteral("12");
    it.endDate = QStringLiteral("01/02/98, 10:00:00 PST");
    AddSale(it);

    SalesListing sales;
    sales.SetSuccessfulOnly(true);
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(Column(sales.Model(), ListingModel::kItem), QStringList{"10"});
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Successful Current Sales (1 - 1 of 1)"));
    EXPECT_EQ(sales.GroupCaptions()[1], QStringLiteral("No Successful Archived Sales"));

    sales.SetSuccessfulOnly(false);
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Model().rowCount(), 2);
    EXPECT_EQ(sales.GroupCaptions()[1], QStringLiteral("Archived Sales (1 - 1 of 1)"));
}

TEST_F(ListsTest, BidsSplitAndTheSuccessfulViewAddsTheUsersMultiWinnerShares) {
    Item it;
    it.endDate = DaysFromNow(3);
    it.item = QStringLiteral("20");
    it.winning = true;
    AddBid(it);
    it.item = QStringLiteral("21");
    it.winning = false;
    AddBid(it);
    it.item = QStringLiteral("22");  // a multi-winner item
    it.bidder = QStringLiteral("Dutch Auction");
    AddBid(it);
    AddDutchBid(QStringLiteral("22"), kSiteId, DaysFromNow(3));
    AddDutchBid(QStringLiteral("22"), QStringLiteral("rival"), DaysFromNow(3));
    it.item = QStringLiteral("23");
    it.bidder = QStringLiteral("someone");
    it.endDate = QStringLiteral("03/04/99, 10:00:00 PST");
    AddBid(it);

    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(bids.Model().rowCount(), 3);
    EXPECT_EQ(bids.GroupCaptions()[0], QStringLiteral("Current Bids (3)"));
    EXPECT_EQ(bids.GroupCaptions()[1], QStringLiteral("Archived Bids (1)"));
    EXPECT_EQ(bids.ViewLabel(), QStringLiteral("Current Bids"));

    bids.SetSuccessfulOnly(true);
    bids.ShowCurrentBids(Db());
    EXPECT_EQ(Column(bids.Model(), ListingModel::kItem), (QStringList{"20", "22"}));
    EXPECT_EQ(bids.Model().Text(1, ListingModel::kDescription), QStringLiteral("Share"));
    EXPECT_EQ(bids.GroupCaptions()[0], QStringLiteral("Successful Current Bids (2)"));
    EXPECT_EQ(bids.GroupCaptions()[1], QStringLiteral("No Successful Archived Bids"));

    // The successful views name themselves whatever the check box says.
    bids.SetSuccessfulOnly(false);
    bids.ShowSuccessfulCurrentBids(Db());
    EXPECT_EQ(bids.Model().rowCount(), 2);
    EXPECT_EQ(bids.GroupCaptions()[0], QStringLiteral("Successful Current Bids (2)"));
    EXPECT_EQ(bids.CurrentBidsCaption(Db()), QStringLiteral("Current Bids (3)"));

    bids.ShowSuccessfulArchivedBids(Db());
    EXPECT_TRUE(bids.EmptyView());
    EXPECT_EQ(bids.Total(), QStringLiteral("$0.00"));
    EXPECT_EQ(bids.ViewLabel(), QStringLiteral("Archived Bids"));
}

// ------------------------------------------------------------ pages

TEST(SalesPages, StepsKeepTheirBoundsAndTheOneRowOffArithmetic) {
    using lw::views::PlanSalesPage;
    // First page: a page size above the count is capped.
    auto first = PlanSalesPage(7, 10, std::nullopt, std::nullopt, false, true, false);
    EXPECT_EQ(first.start, 1);
    EXPECT_EQ(first.end, 7);
    EXPECT_EQ(first.skip, 0);
    EXPECT_EQ(first.interval, 7);

    // Back from 21 at 10 a page: records 11 to 20 shown, 10 to 19 stored.
    auto back = PlanSalesPage(40, 10, 21, 30, true, false, false);
    EXPECT_EQ(back.skip, 10);
    EXPECT_EQ(back.start, 10);
    EXPECT_EQ(back.end, 19);

    // Back from the first page stays on it.
    auto backAtStart = PlanSalesPage(40, 10, 1, 10, true, false, false);
    EXPECT_EQ(backAtStart.skip, 0);
    EXPECT_EQ(backAtStart.start, 1);
    EXPECT_EQ(backAtStart.end, 10);

    // Last page starts a record early: 25 records show 15 to 24.
    auto last = PlanSalesPage(25, 10, 1, 10, false, false, true);
    EXPECT_EQ(last.skip, 14);
    EXPECT_EQ(last.start, 16);
    EXPECT_EQ(last.end, 25);

    // Forward past the end: the end is capped, the start is not moved back.
    auto forward = PlanSalesPage(25, 10, 21, 25, false, false, false);
    EXPECT_EQ(forward.skip, 25);
    EXPECT_EQ(forward.start, 26);
    EXPECT_EQ(forward.end, 25);

    // Page size 0 is one page of everything.
    auto all = PlanSalesPage(25, 0, std::nullopt, std::nullopt, false, true, false);
    EXPECT_EQ(all.end, 25);
    EXPECT_EQ(all.interval, 25);
}

TEST(SalesPages, MoveButtonsFollowTheBounds) {
    using lw::views::UpdateMoveButtons;
    EXPECT_EQ(UpdateMoveButtons(1, 25, 25), Buttons(false, false, false, false));
    EXPECT_EQ(UpdateMoveButtons(1, 10, 25), Buttons(false, true, false, true));
    EXPECT_EQ(UpdateMoveButtons(11, 20, 25), Buttons(true, true, true, true));
    EXPECT_EQ(UpdateMoveButtons(21, 25, 25), Buttons(true, false, true, false));
}

TEST_F(ListsTest, CurrentSalesPageThroughTheSetAndStoreTheirBounds) {
    AddCurrentSales(25);
    Set(QStringLiteral("CAViewInterval"), 10);
    SalesListing sales;
    auto items = [&] { return Column(sales.Model(), ListingModel::kItem); };
    auto range = [](int from, int to) {
        QStringList list;
        for (int i = from; i <= to; ++i) {
            list << QString::number(1000 + i);
        }
        return list;
    };

    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(items(), range(1, 10));
    EXPECT_EQ(Get(QStringLiteral("ACViewStart")), QStringLiteral("1"));
    EXPECT_EQ(Get(QStringLiteral("ACViewEnd")), QStringLiteral("10"));
    EXPECT_EQ(sales.Buttons(), Buttons(false, true, false, true));
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (1 - 10 of 25)"));

    sales.Move(Db(), 1);
    EXPECT_EQ(items(), range(11, 20));
    EXPECT_EQ(sales.Buttons(), Buttons(true, true, true, true));
    sales.Move(Db(), 1);
    EXPECT_EQ(items(), range(21, 25));
    EXPECT_EQ(Get(QStringLiteral("ACViewStart")), QStringLiteral("21"));
    EXPECT_EQ(Get(QStringLiteral("ACViewEnd")), QStringLiteral("25"));
    EXPECT_EQ(sales.Buttons(), Buttons(true, false, true, false));
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (21 - 25 of 25)"));
    EXPECT_EQ(sales.GroupRow1Data(), std::optional<qint64>(25));

    sales.Move(Db(), 0);
    EXPECT_EQ(items(), range(11, 20));
    EXPECT_EQ(Get(QStringLiteral("ACViewStart")), QStringLiteral("10"));
    EXPECT_EQ(Get(QStringLiteral("ACViewEnd")), QStringLiteral("19"));

    sales.Move(Db(), 3);
    EXPECT_EQ(items(), range(15, 24));
    EXPECT_EQ(Get(QStringLiteral("ACViewStart")), QStringLiteral("16"));
    EXPECT_EQ(Get(QStringLiteral("ACViewEnd")), QStringLiteral("25"));
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (16 - 25 of 25)"));

    sales.Move(Db(), 2);
    EXPECT_EQ(items(), range(1, 10));

    // The archive keeps its own bounds.
    EXPECT_EQ(Get(QStringLiteral("AAViewStart")), QString());
}

TEST_F(ListsTest, PageSizeZeroShowsEverythingWithEveryMoveButtonOff) {
    AddCurrentSales(12);
    Set(QStringLiteral("CAViewInterval"), 0);
    SalesListing sales;
    sales.ShowCurrentSales(Db(), false, true, false);
    EXPECT_EQ(sales.Model().rowCount(), 12);
    EXPECT_EQ(sales.Buttons(), Buttons(false, false, false, false));
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (1 - 12 of 12)"));
}

TEST_F(ListsTest, ArchivedRecordsTooRecentToShowStillUseTheirPlaceInThePage) {
    Set(QStringLiteral("AAViewInterval"), 3);
    Item it;
    it.item = QStringLiteral("A");
    it.endDate = QStringLiteral("01/01/99, 10:00:00 PST");
    AddSale(it);
    it.item = QStringLiteral("B");
    it.endDate = DaysFromNow(-2);
    AddSale(it);
    it.item = QStringLiteral("C");
    it.endDate = DaysFromNow(-1);
    AddSale(it);
    it.item = QStringLiteral("D");
    it.endDate = QStringLiteral("01/01/98, 10:00:00 PST");
    AddSale(it);

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    // Sorted by the end: D, A, then the two recent ones which are passed over.
    EXPECT_EQ(Column(sales.Model(), ListingModel::kItem), (QStringList{"D", "A"}));
    EXPECT_EQ(Get(QStringLiteral("AAViewEnd")), QStringLiteral("3"));
    EXPECT_EQ(sales.GroupCaptions()[1], QStringLiteral("Archived Sales (1 - 3 of 4)"));
}

TEST_F(ListsTest, AnEmptyGroupGivesTheEmptyView) {
    AddCurrentSales(12);
    Set(QStringLiteral("CAViewInterval"), 5);
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    sales.Move(Db(), 1);
    ASSERT_EQ(sales.Buttons(), Buttons(true, true, true, true));

    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_TRUE(sales.EmptyView());
    EXPECT_EQ(sales.Model().rowCount(), 0);
    EXPECT_EQ(sales.Total(), QStringLiteral("$0.00"));
    EXPECT_EQ(sales.TotalLabel(), 1);
    // Only the step buttons go off; the jumps keep their state.
    EXPECT_EQ(sales.Buttons(), Buttons(false, false, true, true));
    EXPECT_EQ(sales.GroupCaptions()[1], QStringLiteral("No Archived Sales"));
    EXPECT_EQ(sales.Model().EndHeading(), QStringLiteral("Ended"));

    sales.ShowGroup(Db(), Group::Current);
    EXPECT_FALSE(sales.EmptyView());
    EXPECT_EQ(sales.TotalLabel(), 2);
}

// ------------------------------------------------------------ row texts

TEST_F(ListsTest, SaleRowsShowMarksTrimmedTextsAndNotAvailableForNull) {
    Item dutch;
    dutch.item = QStringLiteral("  300");
    dutch.title = QStringLiteral("Tom &amp; Jerry&#39;s \"cel\"");
    dutch.bidder = QStringLiteral("Dutch Auction");
    dutch.numberBids = QStringLiteral("7");
    dutch.endDate = DaysFromNow(1);
    AddSale(dutch);

    Item unknownBidder;
    unknownBidder.item = QStringLiteral("301");
    unknownBidder.bidder = QVariant();  // bids, but no bidder name
    unknownBidder.numberBids = QStringLiteral("4");
    unknownBidder.endDate = DaysFromNow(2);
    AddSale(unknownBidder);

    Item nulls;
    nulls.item = QVariant();
    nulls.title = QVariant();
    nulls.numberBids = QVariant();
    nulls.highBid = QVariant();
    nulls.reserve = QVariant();
    nulls.endDate = QVariant();
    AddSale(nulls);

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    const ListingModel& m = sales.Model();
    ASSERT_EQ(m.rowCount(), 3);
    // The row without a date sorts first.
    EXPECT_EQ(m.Text(0, 0), QStringLiteral("n/a"));
    EXPECT_EQ(m.Text(0, 1), QStringLiteral("n/a"));
    EXPECT_EQ(m.Text(0, 2), QStringLiteral("n/a"));
    EXPECT_EQ(m.Text(0, 3), QStringLiteral("n/a"));
    EXPECT_EQ(m.Text(0, 4), QStringLiteral("n/a"));

    EXPECT_EQ(m.Text(1, 0), QStringLiteral("300"));
    EXPECT_EQ(m.Text(1, 1), QStringLiteral("Tom & Jerry's \"cel\""));
    EXPECT_EQ(m.Text(1, 2), QStringLiteral("*D*"));
    EXPECT_TRUE(m.IsDutchRow(1));
    EXPECT_EQ(m.Text(2, 2), QStringLiteral("n/a"));
    EXPECT_FALSE(m.IsDutchRow(2));

    EXPECT_EQ(m.data(m.index(1, 2)).toString(), QStringLiteral("*D*"));
    EXPECT_EQ(m.headerData(0, Qt::Horizontal).toString(), QStringLiteral("Item #"));
    EXPECT_EQ(m.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Description"));
    EXPECT_EQ(m.headerData(2, Qt::Horizontal).toString(), QStringLiteral("Bids"));
    EXPECT_EQ(m.headerData(3, Qt::Horizontal).toString(), QStringLiteral("High Bid"));
    EXPECT_EQ(m.headerData(4, Qt::Horizontal).toString(), QStringLiteral("Time Left"));
    EXPECT_EQ(m.EndLabel(), QStringLiteral("Ends:"));
}

TEST_F(ListsTest, ArchivedRowsShowTheDayBeforeTheComma) {
    Item it;
    it.item = QStringLiteral("1");
    it.endDate = QStringLiteral("06/07/00, 12:04:00 PST");
    AddSale(it);
    it.item = QStringLiteral("2");
    it.endDate = QStringLiteral("06/08/00 no comma");
    AddSale(it);
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(sales.Model(), 4), (QStringList{"06/07/00", "06/08/00 no comma"}));
    EXPECT_EQ(sales.Model().EndLabel(), QStringLiteral("Ended:"));
}

TEST_F(ListsTest, TheHighBidCellIsColouredByReserveOrBidState) {
    auto sale = [&](const QString& item, const QVariant& high, const QVariant& reserve) {
        Item it;
        it.item = item;
        it.highBid = high;
        it.reserve = reserve;
        it.endDate = QString(QStringLiteral("01/0") + item + QStringLiteral("/99, 10:00:00 PST"));
        AddSale(it);
    };
    sale(QStringLiteral("1"), QStringLiteral("$1,234.50"), QStringLiteral("$900.00"));
    sale(QStringLiteral("2"), QStringLiteral("$5.00"), QStringLiteral("$10.00"));
    sale(QStringLiteral("3"), QStringLiteral("-"), QStringLiteral("$10.00"));
    sale(QStringLiteral("4"), QStringLiteral("-"), QStringLiteral("$0.00"));
    sale(QStringLiteral("5"), QStringLiteral("$5.00"), QVariant());
    sale(QStringLiteral("6"), QStringLiteral("$5.00"), QStringLiteral("-"));

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    const ListingModel& m = sales.Model();
    ASSERT_EQ(m.rowCount(), 6);
    EXPECT_EQ(m.HighBidColour(0), CellColour::Green);
    EXPECT_EQ(m.HighBidColour(1), CellColour::Red);
    EXPECT_EQ(m.HighBidColour(2), CellColour::Red);
    EXPECT_EQ(m.HighBidColour(3), CellColour::Green);
    EXPECT_EQ(m.HighBidColour(4), CellColour::None);
    EXPECT_EQ(m.HighBidColour(5), CellColour::Green);
    EXPECT_EQ(m.data(m.index(0, 3), Qt::ForegroundRole).value<QColor>(), QColor(0, 128, 0));
    EXPECT_EQ(m.data(m.index(1, 3), Qt::ForegroundRole).value<QColor>(), QColor(128, 0, 0));
    EXPECT_FALSE(m.data(m.index(4, 3), Qt::ForegroundRole).isValid());
    EXPECT_FALSE(m.data(m.index(0, 2), Qt::ForegroundRole).isValid());

    Item bid;
    bid.endDate = DaysFromNow(2);
    bid.item = QStringLiteral("40");
    bid.winning = true;
    AddBid(bid);
    bid.item = QStringLiteral("41");
    bid.winning = false;
    AddBid(bid);
    bid.bidder = QStringLiteral("Dutch Auction");
    bid.item = QStringLiteral("42");
    AddBid(bid);
    AddDutchBid(QStringLiteral("42"), kSiteId, DaysFromNow(2));
    bid.item = QStringLiteral("43");
    AddBid(bid);
    AddDutchBid(QStringLiteral("43"), QStringLiteral("rival"), DaysFromNow(2));

    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    ASSERT_EQ(bids.Model().rowCount(), 4);
    std::map<QString, CellColour> colours;
    for (int row = 0; row < 4; ++row) {
        colours[bids.Model().ItemNumber(row)] = bids.Model().HighBidColour(row);
    }
    EXPECT_EQ(colours[QStringLiteral("40")], CellColour::Green);
    EXPECT_EQ(colours[QStringLiteral("41")], CellColour::Red);
    EXPECT_EQ(colours[QStringLiteral("42")], CellColour::Green);
    EXPECT_EQ(colours[QStringLiteral("43")], CellColour::Red);
    // Bids have no Dutch mark.
    EXPECT_EQ(Column(bids.Model(), 2), (QStringList{"1", "1", "1", "1"}));
}

TEST_F(ListsTest, TotalsAddTheHighBidsByValue) {
    Item it;
    it.endDate = DaysFromNow(1);
    it.item = QStringLiteral("1");
    it.highBid = QStringLiteral("$1,234.50");
    AddSale(it);
    it.item = QStringLiteral("2");
    it.highBid = QStringLiteral("$10.00");
    AddSale(it);
    it.item = QStringLiteral("3");
    it.highBid = QStringLiteral("n/a");
    AddSale(it);
    it.item = QStringLiteral("4");
    it.highBid = QVariant();
    AddSale(it);
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Total(), QStringLiteral("$1,244.50"));
    EXPECT_EQ(sales.TotalLabel(), 2);

    it.highBid = QStringLiteral("$0.25");
    it.item = QStringLiteral("5");
    AddBid(it);
    it.item = QStringLiteral("6");
    AddBid(it);
    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(bids.Total(), QStringLiteral("$0.50"));
    EXPECT_EQ(bids.TotalLabel(), 3);
}

// ------------------------------------------------------------ sorting

TEST_F(ListsTest, ViewSettingsBreakTiesByValueAndUnknownColumnsAreRefused) {
    const QString end = DaysFromNow(2);
    Item it;
    it.endDate = end;
    for (const char* price : {"$9.00", "$1,000.00", "$10.00"}) {
        it.item = QString::fromLatin1(price);
        it.highBid = QString::fromLatin1(price);
        AddSale(it);
    }
    SalesListing sales;
    Set(QStringLiteral("CAViewOrder"), QStringLiteral("HighBid"));
    Set(QStringLiteral("CAViewOrder2"), QStringLiteral("DESC"));
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(Column(sales.Model(), 3), (QStringList{"$1,000.00", "$10.00", "$9.00"}));

    Set(QStringLiteral("CAViewOrder2"), QStringLiteral("ASC"));
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(Column(sales.Model(), 3), (QStringList{"$9.00", "$10.00", "$1,000.00"}));

    // Current sales go by their end first, whatever the setting says.
    it.item = QStringLiteral("early");
    it.highBid = QStringLiteral("$5,000.00");
    it.endDate = DaysFromNow(1);
    AddSale(it);
    Set(QStringLiteral("CAViewOrder2"), QStringLiteral("DESC"));
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Model().ItemNumber(0), QStringLiteral("early"));

    Set(QStringLiteral("CAViewOrder"), QStringLiteral("HighBid; DROP TABLE Auctions"));
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Model().rowCount(), 4);
    EXPECT_EQ(Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 4);
}

TEST_F(ListsTest, ArchivedSalesFollowTheirOrderSettingByTime) {
    Item it;
    for (const char* day : {"06/15/00", "12/30/99", "01/05/00"}) {
        it.item = QString::fromLatin1(day);
        it.endDate = QString(QString::fromLatin1(day) + QStringLiteral(", 10:00:00 PST"));
        AddSale(it);
    }
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(sales.Model(), 4), (QStringList{"12/30/99", "01/05/00", "06/15/00"}));
    Set(QStringLiteral("AAViewOrder2"), QStringLiteral("desc"));
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(sales.Model(), 4), (QStringList{"06/15/00", "01/05/00", "12/30/99"}));
}

TEST_F(ListsTest, HeadClicksSortEachColumnByItsOwnRuleAndAlternate) {
    struct Row {
        const char* item;
        const char* title;
        const char* bids;
        const char* high;
        const char* end;
    };
    const Row rows[] = {
        {"3", "banana", "9", "$9.00", "06/15/00"},
        {"100", "Apple", "10", "$1,000.00", "12/30/99"},
        {"20", "cherry", "-", "$10.00", "01/05/00"},
    };
    for (const Row& r : rows) {
        Item it;
        it.item = QString::fromLatin1(r.item);
        it.title = QString::fromLatin1(r.title);
        it.numberBids = QString::fromLatin1(r.bids);
        it.highBid = QString::fromLatin1(r.high);
        it.endDate = QString(QString::fromLatin1(r.end) + QStringLiteral(", 10:00:00 PST"));
        AddSale(it);
    }
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    ListingModel& m = sales.Model();

    m.HeadClick(0);  // first click: descending, numbers as numbers
    EXPECT_EQ(Column(m, 0), (QStringList{"100", "20", "3"}));
    EXPECT_EQ(m.SortDirection(0), 2);
    m.HeadClick(0);
    EXPECT_EQ(Column(m, 0), (QStringList{"3", "20", "100"}));
    EXPECT_EQ(m.SortDirection(0), 1);

    m.HeadClick(1);  // A to Z without regard to case
    EXPECT_EQ(Column(m, 1), (QStringList{"Apple", "banana", "cherry"}));
    m.HeadClick(1);
    EXPECT_EQ(Column(m, 1), (QStringList{"cherry", "banana", "Apple"}));

    m.HeadClick(2);  // largest count first; "-" counts 0
    EXPECT_EQ(Column(m, 2), (QStringList{"10", "9", "-"}));
    m.HeadClick(2);
    EXPECT_EQ(Column(m, 2), (QStringList{"-", "9", "10"}));

    m.HeadClick(3);  // money by value
    EXPECT_EQ(Column(m, 3), (QStringList{"$1,000.00", "$10.00", "$9.00"}));
    m.HeadClick(3);
    EXPECT_EQ(Column(m, 3), (QStringList{"$9.00", "$10.00", "$1,000.00"}));

    m.HeadClick(4);  // the end day as the text it is, not as a time: Z to A first
    EXPECT_EQ(Column(m, 4), (QStringList{"12/30/99", "06/15/00", "01/05/00"}));
    m.HeadClick(4);
    EXPECT_EQ(Column(m, 4), (QStringList{"01/05/00", "06/15/00", "12/30/99"}));
    EXPECT_EQ(m.SortColumn(), 4);

    // Rows keep their other cells and their colour when they move.
    m.HeadClick(3);
    EXPECT_EQ(m.Text(0, 0), QStringLiteral("100"));
    EXPECT_EQ(m.Text(0, 1), QStringLiteral("Apple"));

    // A sort changes neither the stored bounds nor the next fill's order.
    const QString start = Get(QStringLiteral("AAViewStart"));
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(m, 4), (QStringList{"12/30/99", "01/05/00", "06/15/00"}));
    EXPECT_EQ(Get(QStringLiteral("AAViewStart")), start);
}

TEST_F(ListsTest, ASortKeepsTheSelectionOnItsItem) {
    AddCurrentSales(5);
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    ListingModel& m = sales.Model();
    const QPersistentModelIndex selected(m.index(1, 0));
    ASSERT_EQ(selected.data().toString(), QStringLiteral("1002"));
    m.HeadClick(0);
    EXPECT_EQ(selected.row(), 3);
    EXPECT_EQ(selected.data().toString(), QStringLiteral("1002"));
}

TEST(ListHeads, ClicksMapToColumnsByPositionAndGapsDoNothing) {
    EXPECT_EQ(ListingModel::ColumnAtHeadX(500, 8000), 0);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(970, 8000), -1);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(1000, 8000), 1);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(5300, 8000), -1);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(5600, 8000), 2);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(6500, 8000), 3);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(7000, 8000), 4);
    EXPECT_EQ(ListingModel::ColumnAtHeadX(9000, 8000), -1);

    ListingModel empty;
    empty.HeadClick(-1);
    empty.HeadClick(5);
    EXPECT_EQ(empty.SortDirection(0), 0);
}

TEST_F(ListsTest, TheBidsListStartsSortedByItsTimeLeftTextAndARefillGivesTheQueryOrder) {
    const struct {
        const char* item;
        int days;
        int seconds;
    } ends[] = {{"two hours", 0, 2 * 3600 + 30}, {"ten days", 10, 30}, {"three days", 3, 30}};
    for (const auto& end : ends) {
        Item it;
        it.item = QString::fromLatin1(end.item);
        it.endDate = DaysFromNow(end.days, end.seconds);
        AddBid(it);
    }
    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    // The query lists the latest end first.
    const QStringList byQuery{"ten days", "three days", "two hours"};
    EXPECT_EQ(Column(bids.Model(), 0), byQuery);
    // Column 4 ascending compares the texts: "0d 02h 00m", "10d ...", "3d ...".
    bids.ApplyInitialSort();
    EXPECT_EQ(Column(bids.Model(), 0), (QStringList{"two hours", "ten days", "three days"}));
    EXPECT_EQ(bids.Model().SortDirection(4), 1);
    bids.Model().HeadClick(4);
    EXPECT_EQ(Column(bids.Model(), 0), (QStringList{"three days", "ten days", "two hours"}));
    // A refill shows the rows as the query gives them, whatever was sorted.
    bids.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(Column(bids.Model(), 0), byQuery);
}

// ------------------------------------------------------------ time left

TEST_F(ListsTest, TheTimeLeftColumnCountsDownWithTheSiteCorrection) {
    Item it;
    it.item = QStringLiteral("1");
    it.endDate = DaysFromNow(2, 3 * 3600 + 10 * 60 + 30);
    AddSale(it);
    it.item = QStringLiteral("2");
    it.endDate = EndText(QDateTime::currentDateTime());
    AddSale(it);

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    const ListingModel& m = sales.Model();
    ASSERT_EQ(m.rowCount(), 2);
    EXPECT_EQ(m.Text(0, 4), QStringLiteral("Ended"));
    EXPECT_EQ(m.Text(1, 4), QStringLiteral("2d 03h 10m"));

    lw::core::CurrentSession().SiteCorrection = QStringLiteral("3600");
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(m.Text(1, 4), QStringLiteral("2d 04h 10m"));
}

TEST_F(ListsTest, RefreshRewritesOnlyTheTimeLeftColumnFromTheStoredEnds) {
    Item it;
    it.item = QStringLiteral("1");
    it.endDate = DaysFromNow(2, 3 * 3600 + 10 * 60 + 30);
    AddSale(it);
    it.item = QStringLiteral("2");
    it.endDate = DaysFromNow(5, 600);
    AddSale(it);

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    ListingModel& m = sales.Model();
    std::vector<std::pair<QModelIndex, QModelIndex>> changes;
    QObject::connect(
        &m, &QAbstractItemModel::dataChanged,
        [&](const QModelIndex& a, const QModelIndex& b) { changes.emplace_back(a, b); });

    // The site moved item 2's end; an hour passes.
    Statement move =
        Db().Prepare(QStringLiteral("UPDATE Auctions SET EndDate = ? WHERE ItemNumber = '2'"));
    move.Bind(1, DaysFromNow(1, 2 * 3600 + 20 * 60 + 30)).Run();
    const QDateTime later = QDateTime::currentDateTime().addSecs(3600);
    ASSERT_TRUE(sales.RefreshTimeLeftSales(Db(), later));

    EXPECT_EQ(m.Text(0, 4), QStringLiteral("2d 02h 10m"));
    EXPECT_EQ(m.Text(1, 4), QStringLiteral("1d 01h 20m"));
    EXPECT_EQ(m.Text(1, 0), QStringLiteral("2"));
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(changes[0].first.column(), 4);
    EXPECT_EQ(changes[0].second.column(), 4);
    EXPECT_EQ(changes[0].first.row(), 0);
    EXPECT_EQ(changes[0].second.row(), 1);

    // The archive shows no time left and is left alone.
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_FALSE(sales.RefreshTimeLeftSales(Db(), later));

    Item bid;
    bid.item = QStringLiteral("9");
    bid.endDate = DaysFromNow(1, 600);
    AddBid(bid);
    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    ASSERT_TRUE(bids.RefreshTimeLeftBids(Db(), QDateTime::currentDateTime().addDays(2)));
    EXPECT_EQ(bids.Model().Text(0, 4), QStringLiteral("Ended"));
}

TEST(TimeLeftTicks, ACountOfTicksWaitsAndMillisecondsRedrawOnEveryTick) {
    lw::views::TimeLeftTicker counting(lw::core::TimeLeftTimerFor(true, 3));
    std::vector<bool> ticks;
    for (int i = 0; i < 8; ++i) {
        ticks.push_back(counting.Tick());
    }
    EXPECT_EQ(ticks, (std::vector<bool>{false, false, false, true, false, false, false, true}));

    lw::views::TimeLeftTicker direct(lw::core::TimeLeftTimerFor(true, 30000));
    EXPECT_TRUE(direct.Tick());
    EXPECT_TRUE(direct.Tick());
    EXPECT_EQ(direct.Counted(), QStringLiteral("0"));
}

// ------------------------------------------------------------ sidecar files

TEST_F(ListsTest, SidecarFilesFillSalesWithoutAShippingMethodAndGo) {
    const QString dir = lw::core::CurrentSession().UserDataDir;
    auto write = [&dir](const QString& name, const QByteArray& bytes) {
        QFile file(dir + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    Item it;
    it.endDate = DaysFromNow(3);
    it.item = QStringLiteral("1001");
    AddSale(it);
    it.item = QStringLiteral("1002");
    AddSale(it);
    Db().Prepare(QStringLiteral("UPDATE Auctions SET ShippingMethod = 'UPS' WHERE ItemNumber = ?"))
        .Bind(1, QStringLiteral("1002"))
        .Run();
    it.item = QStringLiteral("1003");
    it.user = QStringLiteral("Other");
    AddSale(it);
    write(QStringLiteral("1001.pos"), "$4.50\r\nUSPS Priority\r\n");
    write(QStringLiteral("1001.itc"), "$2.00\n");
    write(QStringLiteral("1002.pos"), "$9.00\nFedEx\n");
    write(QStringLiteral("1003.pos"), "$1.00\nMail\n");

    EXPECT_EQ(lw::views::ImportSidecarFiles(Db()), 2);

    Statement row = Db().Prepare(QStringLiteral(
        "SELECT OrderShipping, ShippingMethod, ItemCost FROM Auctions WHERE ItemNumber = ?"));
    row.Bind(1, QStringLiteral("1001"));
    ASSERT_TRUE(row.Step());
    EXPECT_EQ(row.Text(0), QStringLiteral("$4.50"));
    EXPECT_EQ(row.Text(1), QStringLiteral("USPS Priority"));
    EXPECT_EQ(row.Text(2), QStringLiteral("$2.00"));
    EXPECT_FALSE(QFile::exists(dir + QStringLiteral("1001.pos")));
    EXPECT_FALSE(QFile::exists(dir + QStringLiteral("1001.itc")));

    row.Reset();
    row.Bind(1, QStringLiteral("1002"));
    ASSERT_TRUE(row.Step());
    EXPECT_EQ(row.Text(1), QStringLiteral("UPS"));
    EXPECT_TRUE(QFile::exists(dir + QStringLiteral("1002.pos")));
    EXPECT_TRUE(QFile::exists(dir + QStringLiteral("1003.pos")));
}

// ------------------------------------------------------------ size

TEST_F(ListsTest, AHundredThousandRowsWithNullsAndHugeTitlesFillAndSort) {
    constexpr int kRows = 100000;
    const QString huge = QString(1 << 20, u'x') + QStringLiteral("'\"; --");
    {
        lw::core::Transaction tx(Db());
        Statement s = Db().Prepare(QStringLiteral(
            "INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, NumberBids, HighBid, "
            "ReserveBid, EndDate, HighBidderName) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
        const QDateTime now = QDateTime::currentDateTime();
        for (int i = 0; i < kRows; ++i) {
            std::array<QVariant, 6> v{
                QString::number(i),
                i < 3 ? huge : QStringLiteral("Item 'quoted' \"%1\"").arg(i),
                QString::number(i % 50),
                QStringLiteral("$%1.%2").arg(i % 997).arg(i % 100, 2, 10, QLatin1Char('0')),
                QStringLiteral("$50.00"),
                EndText(now.addSecs(3600 + (i % 5000) * 60)),
            };
            v[static_cast<size_t>(i % 6)] = QVariant();  // a Null in every column
            s.Reset();
            s.BindAll(kUser, v[0], v[1], v[2], v[3], v[4], v[5],
                      i % 7 == 0 ? QVariant() : QVariant(QStringLiteral("bidder")));
            s.Run();
        }
        tx.Commit();
    }
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    ListingModel& m = sales.Model();
    ASSERT_EQ(m.rowCount(), kRows);
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (1 - 100000 of 100000)"));

    int hugeTitles = 0;
    int nullItems = 0;
    for (int row = 0; row < m.rowCount(); ++row) {
        hugeTitles += m.Text(row, 1) == huge;
        nullItems += m.Text(row, 0) == u"n/a";
    }
    EXPECT_EQ(hugeTitles, 2);  // the third huge title's row has a Null title
    EXPECT_EQ(nullItems, kRows / 6 + 1);

    m.HeadClick(3);
    EXPECT_GE(m.HighBidValue(0), m.HighBidValue(kRows - 1));
    m.HeadClick(4);  // Z to A by text: "n/a" before every time left
    EXPECT_EQ(m.Text(0, 4), QStringLiteral("n/a"));
    EXPECT_NE(m.Text(kRows - 1, 4), QStringLiteral("n/a"));
    m.HeadClick(1);
    EXPECT_TRUE(sales.RefreshTimeLeftSales(Db()));
    EXPECT_FALSE(m.Text(kRows - 1, 4).isEmpty());
}

}  // namespace
