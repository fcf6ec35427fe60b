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
#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
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
    void AddSales(std::initializer_list<Item> items) {
        for (const Item& it : items) {
            AddSale(it);
        }
    }
    void AddBids(std::initializer_list<Item> items) {
        for (const Item& it : items) {
            AddBid(it);
        }
    }

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
            AddSale({.item = QString::number(1000 + i), .endDate = DaysFromNow(i)});
        }
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

// ------------------------------------------------------------ cuts and filters

TEST_F(ListsTest, SalesSplitIntoCurrentAndArchivedAndTheArchiveWaitsThreeDays) {
    AddSales({
        {.item = "1", .endDate = DaysFromNow(2)},                         // ends in two days
        {.item = "2", .endDate = EndText(QDateTime::currentDateTime())},  // ended, still today
        {.item = "3", .endDate = "n/a"},                                  // no date at all
        {.item = "4", .endDate = DaysFromNow(-1)},  // ended yesterday: in neither list
        {.item = "5", .endDate = DaysFromNow(-2)},  // two days ago: counted, not shown
        {.item = "6", .endDate = DaysFromNow(-3)},  // three whole days ago: shown
        {.item = "7", .endDate = "12/30/99, 10:00:00 PST"},
        {.item = "8", .endDate = DaysFromNow(2), .user = "Other"},  // another user's sale
    });

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
    AddSales({
        {.item = "10", .endDate = DaysFromNow(1)},
        {.item = "11", .numberBids = "-", .endDate = DaysFromNow(1)},
        {.item = "12", .numberBids = "-", .endDate = "01/02/98, 10:00:00 PST"},
    });

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
    AddBids({
        {.item = "20", .endDate = DaysFromNow(3), .winning = true},
        {.item = "21", .endDate = DaysFromNow(3)},
        {.item = "22", .endDate = DaysFromNow(3), .bidder = "Dutch Auction"},  // multi-winner
        {.item = "23", .endDate = "03/04/99, 10:00:00 PST"},
    });
    AddDutchBid(QStringLiteral("22"), kSiteId, DaysFromNow(3));
    AddDutchBid(QStringLiteral("22"), QStringLiteral("rival"), DaysFromNow(3));

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
    constexpr std::optional<qint64> kNone;
    const struct Case {
        const char* name;
        qint64 count, interval;
        std::optional<qint64> storedStart, storedEnd;
        bool moveBack, goFirst, goLast;
        qint64 start, end, skip, pageInterval;
    } cases[] = {
        {"first page: a page size above the count is capped", 7, 10, kNone, kNone, false, true,
         false, 1, 7, 0, 7},
        {"back from 21: records 11 to 20 shown, 10 to 19 stored", 40, 10, 21, 30, true, false,
         false, 10, 19, 10, 10},
        {"back from the first page stays on it", 40, 10, 1, 10, true, false, false, 1, 10, 0, 10},
        {"last page starts a record early: 25 records show 15 to 24", 25, 10, 1, 10, false, false,
         true, 16, 25, 14, 10},
        {"forward past the end: the end is capped, the start not moved back", 25, 10, 21, 25, false,
         false, false, 26, 25, 25, 10},
        {"page size 0 is one page of everything", 25, 0, kNone, kNone, false, true, false, 1, 25, 0,
         25},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto page = lw::views::PlanSalesPage(c.count, c.interval, c.storedStart, c.storedEnd,
                                                   c.moveBack, c.goFirst, c.goLast);
        EXPECT_EQ(page.start, c.start);
        EXPECT_EQ(page.end, c.end);
        EXPECT_EQ(page.skip, c.skip);
        EXPECT_EQ(page.interval, c.pageInterval);
    }
}

TEST(SalesPages, MoveButtonsFollowTheBounds) {
    using lw::views::UpdateMoveButtons;
    EXPECT_EQ(UpdateMoveButtons(1, 25, 25), Buttons(false, false, false, false));
    EXPECT_EQ(UpdateMoveButtons(1, 10, 25), Buttons(false, true, false, true));
    EXPECT_EQ(UpdateMoveButtons(11, 20, 25), Buttons(true, true, true, true));
    EXPECT_EQ(UpdateMoveButtons(21, 25, 25), Buttons(true, false, true, false));
}

// The stored bounds are what the caption shows; the step back and the jump
// to the end store them one record off the rows shown.
TEST_F(ListsTest, CurrentSalesPageThroughTheSetAndStoreTheirBounds) {
    AddCurrentSales(25);
    Set(QStringLiteral("CAViewInterval"), 10);
    SalesListing sales;
    const auto range = [](int from, int to) {
        QStringList list;
        for (int i = from; i <= to; ++i) {
            list << QString::number(1000 + i);
        }
        return list;
    };
    constexpr int kFill = -1;  // ShowGroup rather than a Move
    const struct Step {
        const char* name;
        int move;
        int first, last;  // the rows shown
        int start, end;   // the bounds stored
        MoveButtons buttons;
    } steps[] = {
        {"fill", kFill, 1, 10, 1, 10, Buttons(false, true, false, true)},
        {"forward", 1, 11, 20, 11, 20, Buttons(true, true, true, true)},
        {"forward to a short last page", 1, 21, 25, 21, 25, Buttons(true, false, true, false)},
        {"back", 0, 11, 20, 10, 19, Buttons(true, true, true, true)},
        {"last", 3, 15, 24, 16, 25, Buttons(true, false, true, false)},
        {"first", 2, 1, 10, 1, 10, Buttons(false, true, false, true)},
    };
    std::optional<qint64> lastRow;  // set once a page reaches the end of the set
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        if (step.move == kFill) {
            sales.ShowGroup(Db(), Group::Current);
        } else {
            sales.Move(Db(), step.move);
        }
        EXPECT_EQ(Column(sales.Model(), ListingModel::kItem), range(step.first, step.last));
        EXPECT_EQ(Get(QStringLiteral("ACViewStart")), QString::number(step.start));
        EXPECT_EQ(Get(QStringLiteral("ACViewEnd")), QString::number(step.end));
        EXPECT_EQ(sales.Buttons(), step.buttons);
        EXPECT_EQ(sales.GroupCaptions()[0],
                  QStringLiteral("Current Sales (%1 - %2 of 25)").arg(step.start).arg(step.end));
        if (step.end == 25) {
            lastRow = 25;
        }
        EXPECT_EQ(sales.GroupRow1Data(), lastRow);
    }
    // The archive keeps its own bounds.
    EXPECT_EQ(Get(QStringLiteral("AAViewStart")), QString());

    // Page size 0 is one page of everything, with every move button off.
    Set(QStringLiteral("CAViewInterval"), 0);
    sales.ShowCurrentSales(Db(), false, true, false);
    EXPECT_EQ(Column(sales.Model(), ListingModel::kItem), range(1, 25));
    EXPECT_EQ(sales.Buttons(), Buttons(false, false, false, false));
    EXPECT_EQ(sales.GroupCaptions()[0], QStringLiteral("Current Sales (1 - 25 of 25)"));
}

TEST_F(ListsTest, ArchivedRecordsTooRecentToShowStillUseTheirPlaceInThePage) {
    Set(QStringLiteral("AAViewInterval"), 3);
    AddSales({
        {.item = "A", .endDate = "01/01/99, 10:00:00 PST"},
        {.item = "B", .endDate = DaysFromNow(-2)},
        {.item = "C", .endDate = DaysFromNow(-1)},
        {.item = "D", .endDate = "01/01/98, 10:00:00 PST"},
    });

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
    AddSales({
        {.item = "  300",
         .title = "Tom &amp; Jerry&#39;s \"cel\"",
         .numberBids = "7",
         .endDate = DaysFromNow(1),
         .bidder = "Dutch Auction"},
        // Bids, but no bidder name.
        {.item = "301", .numberBids = "4", .endDate = DaysFromNow(2), .bidder = QVariant()},
        {.item = QVariant(),
         .title = QVariant(),
         .numberBids = QVariant(),
         .highBid = QVariant(),
         .reserve = QVariant(),
         .endDate = QVariant()},
    });

    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    const ListingModel& m = sales.Model();
    ASSERT_EQ(m.rowCount(), 3);
    // The row without a date sorts first.
    for (int column = 0; column < 5; ++column) {
        EXPECT_EQ(m.Text(0, column), QStringLiteral("n/a")) << "column " << column;
    }

    EXPECT_EQ(m.Text(1, 0), QStringLiteral("300"));
    EXPECT_EQ(m.Text(1, 1), QStringLiteral("Tom & Jerry's \"cel\""));
    EXPECT_EQ(m.Text(1, 2), QStringLiteral("*D*"));
    EXPECT_TRUE(m.IsDutchRow(1));
    EXPECT_EQ(m.Text(2, 2), QStringLiteral("n/a"));
    EXPECT_FALSE(m.IsDutchRow(2));

    EXPECT_EQ(m.data(m.index(1, 2)).toString(), QStringLiteral("*D*"));
    const QStringList heads{"Item #", "Description", "Bids", "High Bid", "Time Left"};
    for (int column = 0; column < heads.size(); ++column) {
        EXPECT_EQ(m.headerData(column, Qt::Horizontal).toString(), heads[column]);
    }
    EXPECT_EQ(m.EndLabel(), QStringLiteral("Ends:"));
}

TEST_F(ListsTest, ArchivedRowsShowTheDayBeforeTheComma) {
    AddSales({
        {.item = "1", .endDate = "06/07/00, 12:04:00 PST"},
        {.item = "2", .endDate = "06/08/00 no comma"},
    });
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(sales.Model(), 4), (QStringList{"06/07/00", "06/08/00 no comma"}));
    EXPECT_EQ(sales.Model().EndLabel(), QStringLiteral("Ended:"));
}

TEST_F(ListsTest, TheHighBidCellIsColouredByReserveOrBidState) {
    // Archived sales, listed in this order by their ends.
    const struct SaleCase {
        const char* item;
        QVariant high, reserve;
        CellColour colour;
    } sales[] = {
        {"1", "$1,234.50", "$900.00", CellColour::Green},  // reserve met
        {"2", "$5.00", "$10.00", CellColour::Red},         // below the reserve
        {"3", "-", "$10.00", CellColour::Red},             // no bid, a reserve
        {"4", "-", "$0.00", CellColour::Green},            // no bid, a zero reserve
        {"5", "$5.00", QVariant(), CellColour::None},      // a Null reserve
        {"6", "$5.00", "-", CellColour::Green},            // no reserve
    };
    for (const SaleCase& c : sales) {
        AddSale({.item = c.item,
                 .highBid = c.high,
                 .reserve = c.reserve,
                 .endDate = QStringLiteral("01/0%1/99, 10:00:00 PST").arg(c.item)});
    }
    SalesListing listing;
    listing.ShowGroup(Db(), Group::Archived);
    const ListingModel& m = listing.Model();
    ASSERT_EQ(m.rowCount(), std::size(sales));
    for (int row = 0; row < m.rowCount(); ++row) {
        const SaleCase& c = sales[row];
        SCOPED_TRACE(c.item);
        ASSERT_EQ(m.ItemNumber(row), c.item);
        EXPECT_EQ(m.HighBidColour(row), c.colour);
        const QVariant foreground = m.data(m.index(row, 3), Qt::ForegroundRole);
        EXPECT_EQ(foreground.isValid(), c.colour != CellColour::None);
        if (foreground.isValid()) {
            EXPECT_EQ(foreground.value<QColor>(),
                      c.colour == CellColour::Green ? QColor(0, 128, 0) : QColor(128, 0, 0));
        }
        EXPECT_FALSE(m.data(m.index(row, 2), Qt::ForegroundRole).isValid()) << "only the high bid";
    }

    // Current bids: winning, or for a multi-winner item the user among its winners.
    const QString end = DaysFromNow(2);
    AddBids({{.item = "40", .endDate = end, .winning = true},
             {.item = "41", .endDate = end},
             {.item = "42", .endDate = end, .bidder = "Dutch Auction"},
             {.item = "43", .endDate = end, .bidder = "Dutch Auction"}});
    AddDutchBid(QStringLiteral("42"), kSiteId, end);
    AddDutchBid(QStringLiteral("43"), QStringLiteral("rival"), end);
    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    std::map<QString, CellColour> colours;
    for (int row = 0; row < bids.Model().rowCount(); ++row) {
        colours[bids.Model().ItemNumber(row)] = bids.Model().HighBidColour(row);
    }
    EXPECT_EQ(colours, (std::map<QString, CellColour>{{"40", CellColour::Green},
                                                      {"41", CellColour::Red},
                                                      {"42", CellColour::Green},
                                                      {"43", CellColour::Red}}));
    // Bids have no Dutch mark.
    EXPECT_EQ(Column(bids.Model(), 2), (QStringList{"1", "1", "1", "1"}));
}

TEST_F(ListsTest, TotalsAddTheHighBidsByValue) {
    const QString end = DaysFromNow(1);
    AddSales({
        {.item = "1", .highBid = "$1,234.50", .endDate = end},
        {.item = "2", .highBid = "$10.00", .endDate = end},
        {.item = "3", .highBid = "n/a", .endDate = end},
        {.item = "4", .highBid = QVariant(), .endDate = end},
    });
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Total(), QStringLiteral("$1,244.50"));
    EXPECT_EQ(sales.TotalLabel(), 2);

    AddBids({
        {.item = "5", .highBid = "$0.25", .endDate = end},
        {.item = "6", .highBid = "$0.25", .endDate = end},
    });
    BidsListing bids;
    bids.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(bids.Total(), QStringLiteral("$0.50"));
    EXPECT_EQ(bids.TotalLabel(), 3);
}

// ------------------------------------------------------------ sorting

TEST_F(ListsTest, ViewSettingsBreakTiesByValueAndUnknownColumnsAreRefused) {
    const QString end = DaysFromNow(2);
    for (const char* price : {"$9.00", "$1,000.00", "$10.00"}) {
        AddSale({.item = price, .highBid = price, .endDate = end});
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
    AddSale({.item = "early", .highBid = "$5,000.00", .endDate = DaysFromNow(1)});
    Set(QStringLiteral("CAViewOrder2"), QStringLiteral("DESC"));
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Model().ItemNumber(0), QStringLiteral("early"));

    Set(QStringLiteral("CAViewOrder"), QStringLiteral("HighBid; DROP TABLE Auctions"));
    sales.ShowGroup(Db(), Group::Current);
    EXPECT_EQ(sales.Model().rowCount(), 4);
    EXPECT_EQ(Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 4);
}

TEST_F(ListsTest, ArchivedSalesFollowTheirOrderSettingByTime) {
    for (const char* day : {"06/15/00", "12/30/99", "01/05/00"}) {
        AddSale({.item = day, .endDate = QString(QString::fromLatin1(day) + ", 10:00:00 PST")});
    }
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(sales.Model(), 4), (QStringList{"12/30/99", "01/05/00", "06/15/00"}));
    Set(QStringLiteral("AAViewOrder2"), QStringLiteral("desc"));
    sales.ShowGroup(Db(), Group::Archived);
    EXPECT_EQ(Column(sales.Model(), 4), (QStringList{"06/15/00", "01/05/00", "12/30/99"}));
}

TEST_F(ListsTest, HeadClicksSortEachColumnByItsOwnRuleAndAlternate) {
    const struct {
        const char *item, *title, *bids, *high, *end;
    } rows[] = {
        {"3", "banana", "9", "$9.00", "06/15/00"},
        {"100", "Apple", "10", "$1,000.00", "12/30/99"},
        {"20", "cherry", "-", "$10.00", "01/05/00"},
    };
    for (const auto& r : rows) {
        AddSale({.item = r.item,
                 .title = r.title,
                 .numberBids = r.bids,
                 .highBid = r.high,
                 .endDate = QString(QString::fromLatin1(r.end) + ", 10:00:00 PST")});
    }
    SalesListing sales;
    sales.ShowGroup(Db(), Group::Archived);
    ListingModel& m = sales.Model();

    // The first click sorts one way (direction 2), the second the other (1).
    const struct Case {
        const char* name;
        int column;
        QStringList first;
    } cases[] = {
        {"numbers as numbers, largest first", 0, {"100", "20", "3"}},
        {"A to Z without regard to case", 1, {"Apple", "banana", "cherry"}},
        {"largest count first; \"-\" counts 0", 2, {"10", "9", "-"}},
        {"money by value", 3, {"$1,000.00", "$10.00", "$9.00"}},
        {"the end day as text, not time: Z to A", 4, {"12/30/99", "06/15/00", "01/05/00"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        m.HeadClick(c.column);
        EXPECT_EQ(Column(m, c.column), c.first);
        EXPECT_EQ(m.SortColumn(), c.column);
        EXPECT_EQ(m.SortDirection(c.column), 2);
        m.HeadClick(c.column);
        EXPECT_EQ(Column(m, c.column), QStringList(c.first.rbegin(), c.first.rend()));
        EXPECT_EQ(m.SortDirection(c.column), 1);
    }

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
    // x in twips on a grid 8000 wide, and the column its click sorts.
    const struct {
        int x, column;
    } clicks[] = {{500, 0},  {970, -1}, {1000, 1}, {5300, -1},
                  {5600, 2}, {6500, 3}, {7000, 4}, {9000, -1}};
    for (const auto& click : clicks) {
        EXPECT_EQ(ListingModel::ColumnAtHeadX(click.x, 8000), click.column) << "x " << click.x;
    }

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
        AddBid({.item = end.item, .endDate = DaysFromNow(end.days, end.seconds)});
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
    AddSales({
        {.item = "1", .endDate = DaysFromNow(2, 3 * 3600 + 10 * 60 + 30)},
        {.item = "2", .endDate = EndText(QDateTime::currentDateTime())},
    });

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
    AddSales({
        {.item = "1", .endDate = DaysFromNow(2, 3 * 3600 + 10 * 60 + 30)},
        {.item = "2", .endDate = DaysFromNow(5, 600)},
    });

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

    AddBid({.item = "9", .endDate = DaysFromNow(1, 600)});
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
    AddSales({
        {.item = "1001", .endDate = DaysFromNow(3)},
        {.item = "1002", .endDate = DaysFromNow(3)},
        {.item = "1003", .endDate = DaysFromNow(3), .user = "Other"},
    });
    Db().Prepare(QStringLiteral("UPDATE Auctions SET ShippingMethod = 'UPS' WHERE ItemNumber = ?"))
        .Bind(1, QStringLiteral("1002"))
        .Run();
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
