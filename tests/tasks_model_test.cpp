// SPDX-License-Identifier: GPL-3.0-or-later
// The task manager's model and tree: which tasks of an item read done, the
// partner's address, when an item leaves the task manager and comes back,
// the item list of a filter (ended items only, the multi-winner rows after
// the plain ones, the empty list), the filter list, and the panel each node
// opens.
#include <gtest/gtest.h>

#include <QMap>
#include <QVariant>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/text.h"
#include "tasks/task_model.h"
#include "tasks/task_tree.h"
#include "tests/support/test_support.h"
#include "views/main_commands.h"

using lw::core::Database;
using lw::tasks::ItemListRow;
using lw::tasks::SelectedItem;
using lw::tasks::Side;
using lw::tasks::TaskPanel;

namespace lw::tasks {
void PrintTo(const ItemListRow& row, std::ostream* out) {
    *out << row.text.toStdString() << " [" << row.itemNumber.toStdString() << ']';
}
bool operator==(const ItemListRow& a, const ItemListRow& b) {
    return a.text == b.text && a.itemNumber == b.itemNumber;
}
}  // namespace lw::tasks

namespace {

const QString kUser = QStringLiteral("D'Arcy");
const QDate kToday = QDate::currentDate();

QString Title(const QString& item) {
    return QStringLiteral("Title of ") + item;
}

QString EndDate(const QDate& day, const QString& time = QStringLiteral("12:04:00")) {
    return day.toString(QStringLiteral("MM/dd/yy, ")) + time + QStringLiteral(" PST");
}

using Fields = QMap<QString, QVariant>;

class TasksTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, QStringLiteral("darcy_sells"), QStringLiteral("pw"), {}});
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    // Column names are the test's own; every value is bound.
    void Add(const QString& table, Fields fields) {
        if (!fields.contains(QStringLiteral("UserName")) && table != u"Buyers" &&
            table != u"Sellers") {
            fields.insert(QStringLiteral("UserName"), kUser);
        }
        QStringList marks(fields.size(), QStringLiteral("?"));
        auto insert = Db().Prepare(QStringLiteral("INSERT INTO %1 (\"%2\") VALUES (%3)")
                                       .arg(table, fields.keys().join(QStringLiteral("\", \"")),
                                            marks.join(QStringLiteral(", "))));
        int index = 1;
        for (const QVariant& value : fields) {
            insert.Bind(index++, value);
        }
        insert.Run();
    }

    // An ended sale (or bid) with a buyer, all its tasks open.
    void Sale(const QString& item, const Fields& more = {}) {
        AddItem(QStringLiteral("Auctions"), item,
                {{QStringLiteral("HighBid"), QStringLiteral("$10.00")},
                 {QStringLiteral("NumberBids"), QStringLiteral("3")},
                 {QStringLiteral("HighBidderName"), QStringLiteral("bob")}},
                more);
    }
    void Bid(const QString& item, const Fields& more = {}) {
        AddItem(QStringLiteral("Bids"), item,
                {{QStringLiteral("SellerName"), QStringLiteral("sal")},
                 {QStringLiteral("HighBidderName"), QStringLiteral("darcy_sells")},
                 {QStringLiteral("Winning"), true}},
                more);
    }
    void AddItem(const QString& table, const QString& item, Fields row, const Fields& more) {
        row.insert(QStringLiteral("ItemNumber"), item);
        row.insert(QStringLiteral("ItemTitle"), Title(item));
        row.insert(QStringLiteral("EndDate"), EndDate(kToday.addDays(-1)));
        row.insert(more);
        Add(table, row);
    }
    void Winner(const QString& item, const QString& bidder, Fields more = {}) {
        more.insert(QStringLiteral("ItemNumber"), item);
        more.insert(QStringLiteral("HighBidderName"), bidder);
        Add(QStringLiteral("Dutch"), more);
    }

    void Set(const QString& table, const QString& field, const QVariant& value) {
        Db().Prepare(QStringLiteral("UPDATE %1 SET \"%2\" = ?").arg(table, field))
            .Bind(1, value)
            .Run();
    }

    qint64 Complete(const QString& table, const QString& item, const QString& bidder = {},
                    const QString& user = kUser) {
        auto read = Db().Prepare(QStringLiteral("SELECT ToDoComplete FROM %1 WHERE ItemNumber = "
                                                "? AND IFNULL(HighBidderName, '') LIKE ? AND "
                                                "UserName = ?")
                                     .arg(table));
        read.BindAll(item, bidder.isEmpty() ? QStringLiteral("%") : bidder, user);
        return read.Step() ? read.Value(0).toLongLong() : -1;
    }

    // Key to "done" / "pending" of every task node of the item's side.
    QMap<QString, QString> States(const SelectedItem& item) {
        QMap<QString, QString> states;
        for (const auto& task : lw::tasks::RefreshTaskIcons(Db(), kUser, 0, item)) {
            states.insert(task.key, task.picture == lw::tasks::kDonePicture
                                        ? QStringLiteral("done")
                                        : QStringLiteral("pending"));
        }
        return states;
    }

    lw::tasks::ListScope Scope(Side side) {
        lw::tasks::ListScope scope;
        scope.side = side;
        scope.userName = kUser;
        return scope;
    }

    std::vector<ItemListRow> Rows(Side side, const QString& filter) {
        return lw::tasks::FillItemList(Db(), Scope(side), filter).rows;
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

SelectedItem SaleItem(const QString& item, const QString& bidder = {}) {
    return {Side::Sales, item, bidder};
}
SelectedItem BidItem(const QString& item) {
    return {Side::Bids, item};
}

const QString kAllSales = QStringLiteral("All Auctions with Pending Tasks");
const QString kAllBids = QStringLiteral("All Bids with Pending Tasks");

// ------------------------------------------------------------ done rules

TEST_F(TasksTest, EachTaskIsDoneByItsOwnFieldAndNoOther) {
    struct Case {
        Side side;
        const char* code;
        const char* table;
        const char* field;
        QVariant value;
    };
    const QString date = QStringLiteral("06/08/00");
    const Case cases[] = {
        {Side::Sales, "SUMN", "Auctions", "AuctionNotes", QStringLiteral("wrap well")},
        {Side::Sales, "PRI", "Auctions", "OrderPaymentMethod", 0},
        {Side::Sales, "SHP", "Auctions", "PackingListPrinted", true},
        {Side::Sales, "SHS", "Auctions", "ShippingDate", date},
        {Side::Sales, "FBL", "Auctions", "FeedbackLeft", true},
        {Side::Sales, "FBR", "Auctions", "ReturnFeedback", true},
        {Side::Sales, "CON", "Auctions", "EmailEndOfAuction", true},   // an "Email" row
        {Side::Sales, "SHE", "Auctions", "EmailItemShipped", true},    // an "Email" row
        {Side::Sales, "SHR", "Auctions", "EmailBuyerReceived", true},  // an "EmailEntry" row
        {Side::Sales, "FBL", "Auctions", "FeedbackLeft", -1},          // any non-zero is True
        {Side::Bids, "SUMN", "Bids", "BidNotes", QStringLiteral("paid by check")},
        {Side::Bids, "PRP", "Bids", "OrderPaymentMethod", 2},
        {Side::Bids, "PRS", "Bids", "PackingListPrinted", true},
        {Side::Bids, "IRR", "Bids", "ItemReceivedDate", date},
        {Side::Bids, "FBL", "Bids", "FeedbackLeft", true},
        {Side::Bids, "FBR", "Bids", "ReturnFeedback", true},
        {Side::Bids, "IRE", "Bids", "EmailItemReceived", true},
    };
    const QStringList saleTasks = {"SUMN", "PRA", "CON", "PRI", "PAY", "SHP",
                                   "SHS",  "SHE", "SHR", "FBL", "RFB", "FBR"};
    const QStringList bidTasks = {"SUMN", "PRA", "CRP", "PSI", "PRP", "PRS",
                                  "IRR",  "IRE", "FBL", "RFS", "FBR"};
    Sale(QStringLiteral("100"));
    Bid(QStringLiteral("200"));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code);
        const SelectedItem item = c.side == Side::Sales ? SaleItem(QStringLiteral("100"))
                                                        : BidItem(QStringLiteral("200"));
        const QStringList& tasks = c.side == Side::Sales ? saleTasks : bidTasks;
        QMap<QString, QString> expected;
        for (const QString& task : tasks) {
            expected.insert(task, QStringLiteral("pending"));
        }
        EXPECT_EQ(States(item), expected) << "every task open, root, summary and folders left out";
        const QString table = QLatin1String(c.table);
        const QString field = QLatin1String(c.field);
        Set(table, field, c.value);
        expected[QLatin1String(c.code)] = QStringLiteral("done");
        EXPECT_EQ(States(item), expected);
        Set(table, field, QVariant());  // Null reads as not done for every kind
    }
    EXPECT_TRUE(States(SaleItem(QStringLiteral("999"))).isEmpty()) << "no such item: no pictures";
}

TEST_F(TasksTest, TheAddressTaskWantsMoreThanAnEmail) {
    struct Case {
        const char* what;
        Fields row;  // the partner's row; empty: none
        const char* state;
    };
    const QString email = QStringLiteral("Email");
    const Case cases[] = {
        {"no row", {}, "pending"},
        {"only an e-mail", {{email, QStringLiteral("o@example.com")}}, "pending"},
        {"an e-mail and blanks",
         {{email, QStringLiteral("o@example.com")},
          {QStringLiteral("City"), QStringLiteral("   ")}},
         "pending"},
        {"a city", {{QStringLiteral("City"), QStringLiteral("Dayton")}}, "done"},
        {"a first name",
         {{QStringLiteral("FirstName"), QStringLiteral("Ann")}, {email, QStringLiteral("a@b.c")}},
         "done"},
    };
    // The partners' names hold a quote.
    const QString buyer = QStringLiteral("o'malley");
    const QString seller = QStringLiteral("say \"when\"");
    Sale(QStringLiteral("100"), {{QStringLiteral("HighBidderName"), buyer}});
    Bid(QStringLiteral("200"), {{QStringLiteral("SellerName"), seller}});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Db().Exec(QStringLiteral("DELETE FROM Buyers; DELETE FROM Sellers;"));
        if (!c.row.isEmpty()) {
            Fields buyerRow = c.row;
            buyerRow.insert(QStringLiteral("BuyerID"), buyer);
            Add(QStringLiteral("Buyers"), buyerRow);
            Fields sellerRow = c.row;
            sellerRow.insert(QStringLiteral("SellerID"), seller);
            Add(QStringLiteral("Sellers"), sellerRow);
        }
        EXPECT_EQ(States(SaleItem(QStringLiteral("100"))).value(QStringLiteral("PRA")),
                  QLatin1String(c.state));
        EXPECT_EQ(States(BidItem(QStringLiteral("200"))).value(QStringLiteral("PRA")),
                  QLatin1String(c.state));
    }
    // The address book of another site knows no one here.
    const auto other = lw::tasks::RefreshTaskIcons(Db(), kUser, 1, SaleItem(QStringLiteral("100")));
    const auto address = std::find_if(other.cbegin(), other.cend(),
                                      [](const auto& task) { return task.key == u"PRA"; });
    ASSERT_NE(address, other.cend());
    EXPECT_EQ(address->picture, lw::tasks::kPendingPicture);
}

// ------------------------------------------------------------ leaving and coming back

TEST_F(TasksTest, OnlyTheTaskThePreferenceNamesEndsAnItem) {
    struct Case {
        Side side;
        const char* column;
        QStringList tags;
    };
    const Case cases[] = {
        {Side::Sales, "AuctionRemoveTag", {"SHS", "SHE", "SHR", "FBL", "FBR"}},
        {Side::Bids, "BidRemoveTag", {"IRR", "IRE", "FBL", "FBR"}},
    };
    Sale(QStringLiteral("100"));
    Sale(QStringLiteral("101"));
    Bid(QStringLiteral("200"));
    Bid(QStringLiteral("201"));
    for (const Case& c : cases) {
        const bool sale = c.side == Side::Sales;
        const QString table = sale ? QStringLiteral("Auctions") : QStringLiteral("Bids");
        const QString item = sale ? QStringLiteral("100") : QStringLiteral("200");
        const QString other = sale ? QStringLiteral("101") : QStringLiteral("201");
        for (const QString& tag : c.tags) {
            Set(QStringLiteral("Users"), QLatin1String(c.column), tag);
            for (const QString& code : c.tags) {
                SCOPED_TRACE(QString(tag + QStringLiteral(" saved by ") + code).toStdString());
                Set(table, QStringLiteral("ToDoComplete"), false);
                const bool finished =
                    lw::tasks::CompleteIfRemovalTask(Db(), kUser, {c.side, item}, code);
                EXPECT_EQ(finished, code == tag);
                EXPECT_EQ(Complete(table, item), code == tag ? 1 : 0);
                EXPECT_EQ(Complete(table, other), 0);
            }
        }
        // The other side's preference never ends an item of this side.
        Set(table, QStringLiteral("ToDoComplete"), false);
        Set(QStringLiteral("Users"), QLatin1String(c.column), QString());
        EXPECT_FALSE(
            lw::tasks::CompleteIfRemovalTask(Db(), kUser, {c.side, item}, QStringLiteral("FBL")));
        // No Users row: nothing happens.
        Set(QStringLiteral("Users"), QLatin1String(c.column), QStringLiteral("FBL"));
        EXPECT_FALSE(lw::tasks::CompleteIfRemovalTask(Db(), QStringLiteral("Nobody"),
                                                      {c.side, item}, QStringLiteral("FBL")));
        EXPECT_EQ(Complete(table, item), 0);
    }
}

TEST_F(TasksTest, ADutchSalesWinnersHaveTheirOwnTasksAndEndOneByOne) {
    Sale(QStringLiteral("300"),
         {{QStringLiteral("HighBidderName"), QStringLiteral("Dutch Auction")}});
    Winner(QStringLiteral("300"), QStringLiteral("dee"),
           {{QStringLiteral("ShippingDate"), QStringLiteral("06/08/00")}});
    Winner(QStringLiteral("300"), QStringLiteral("eve"));
    for (const auto& [winner, state] : {std::pair{"dee", "done"}, std::pair{"eve", "pending"}}) {
        EXPECT_EQ(States(SaleItem(QStringLiteral("300"), QLatin1String(winner)))
                      .value(QStringLiteral("SHS")),
                  QLatin1String(state))
            << winner;
    }
    Set(QStringLiteral("Users"), QStringLiteral("AuctionRemoveTag"), QStringLiteral("FBL"));
    const ItemListRow dee = {QStringLiteral("D300: Title of 300 (dee)"), QStringLiteral("300")};
    const ItemListRow eve = {QStringLiteral("D300: Title of 300 (eve)"), QStringLiteral("300")};
    EXPECT_EQ(Rows(Side::Sales, kAllSales), (std::vector{dee, eve}));

    const SelectedItem first = lw::tasks::SelectionFromRow(Side::Sales, dee.text, dee.itemNumber);
    EXPECT_TRUE(lw::tasks::CompleteIfRemovalTask(Db(), kUser, first, QStringLiteral("FBL")));
    EXPECT_EQ(Complete(QStringLiteral("Dutch"), QStringLiteral("300"), QStringLiteral("dee")), 1);
    EXPECT_EQ(Complete(QStringLiteral("Dutch"), QStringLiteral("300"), QStringLiteral("eve")), 0);
    EXPECT_EQ(Rows(Side::Sales, kAllSales), std::vector{eve});

    // cmdRemoveToDo takes the other; the return brings the first back.
    EXPECT_TRUE(lw::tasks::RemoveSelectedFromTasks(
        Db(), SaleItem(QStringLiteral("300"), QStringLiteral("eve"))));
    EXPECT_EQ(Rows(Side::Sales, kAllSales).front().text, lw::tasks::NoPendingTasksRow());
    EXPECT_TRUE(lw::tasks::ReturnToTasks(Db(), first));
    EXPECT_EQ(Rows(Side::Sales, kAllSales), std::vector{dee});
    EXPECT_FALSE(lw::tasks::RemoveSelectedFromTasks(
        Db(), SaleItem(QStringLiteral("300"), QStringLiteral("zed"))));
}

TEST_F(TasksTest, ThePopUpsReturnTheUsersOwnRow) {
    Sale(QStringLiteral("100"), {{QStringLiteral("ToDoComplete"), true}});
    Sale(QStringLiteral("100"), {{QStringLiteral("ToDoComplete"), true},
                                 {QStringLiteral("UserName"), QStringLiteral("Ben")}});
    Bid(QStringLiteral("200"), {{QStringLiteral("ToDoComplete"), true}});
    lw::views::ReturnSaleToTask(Db(), QStringLiteral("100"));
    lw::views::ReturnBidToTask(Db(), QStringLiteral("200"));
    EXPECT_EQ(Complete(QStringLiteral("Auctions"), QStringLiteral("100")), 0);
    EXPECT_EQ(
        Complete(QStringLiteral("Auctions"), QStringLiteral("100"), {}, QStringLiteral("Ben")), 1);
    EXPECT_EQ(Complete(QStringLiteral("Bids"), QStringLiteral("200")), 0);
}

// ------------------------------------------------------------ the lists

TEST_F(TasksTest, TheListHoldsEndedItemsAndTheMultiWinnerRowsAfterThePlainOnes) {
    const QString quoted = QStringLiteral("Lionel \"Scout\" & O'Brien's tender");
    Sale(QStringLiteral("101"), {{QStringLiteral("ItemTitle"), quoted},
                                 {QStringLiteral("EndDate"), EndDate(kToday.addDays(-3))}});
    // In the pending query (it ends today) but not yet ended.
    Sale(QStringLiteral("102"),
         {{QStringLiteral("EndDate"), EndDate(kToday, QStringLiteral("23:59:59"))}});
    // A plain row and a winner's row of one item.
    Sale(QStringLiteral("103"), {{QStringLiteral("EndDate"), EndDate(kToday.addDays(-2))}});
    Winner(QStringLiteral("103"), QStringLiteral("cy"));
    Sale(QStringLiteral("104"), {{QStringLiteral("EndDate"), EndDate(kToday.addDays(-1))}});
    Sale(QStringLiteral("105"), {{QStringLiteral("UserName"), QStringLiteral("Ben")}});
    Bid(QStringLiteral("201"));
    Bid(QStringLiteral("202"), {{QStringLiteral("Winning"), false},
                                {QStringLiteral("HighBidderName"), QStringLiteral("zed")}});
    Bid(QStringLiteral("203"), {{QStringLiteral("HighBidderName"), QStringLiteral("Dutch Auction")},
                                {QStringLiteral("Winning"), false}});
    Add(QStringLiteral("DutchBids"),
        {{QStringLiteral("ItemNumber"), QStringLiteral("203")},
         {QStringLiteral("HighBidderName"), QStringLiteral("darcy_sells")},
         {QStringLiteral("Winning"), true}});

    lw::tasks::ListScope scope = Scope(Side::Sales);
    scope.now = QDateTime(kToday, QTime(0, 0, 30));
    const lw::tasks::ItemList sales = lw::tasks::FillItemList(Db(), scope, kAllSales);
    EXPECT_EQ(sales.rows, (std::vector<ItemListRow>{
                              {QStringLiteral("101: ") + quoted, QStringLiteral("101")},
                              {QStringLiteral("103: Title of 103"), QStringLiteral("103")},
                              {QStringLiteral("104: Title of 104"), QStringLiteral("104")},
                              {QStringLiteral("D103: Title of 103 (cy)"), QStringLiteral("103")}}));
    EXPECT_EQ(sales.recordCount, QStringLiteral("(4)"));
    EXPECT_FALSE(sales.Empty());

    const lw::tasks::ItemList bids = lw::tasks::FillItemList(Db(), Scope(Side::Bids), kAllBids);
    EXPECT_EQ(bids.rows, (std::vector<ItemListRow>{
                             {QStringLiteral("201: Title of 201"), QStringLiteral("201")},
                             {QStringLiteral("203: Title of 203"), QStringLiteral("203")}}))
        << "the lost bid is no task; a won share of a multi-winner item is a plain row";
    EXPECT_EQ(bids.recordCount, QStringLiteral("(2)"));

    // A filter that finds nothing.
    Set(QStringLiteral("Auctions"), QStringLiteral("FeedbackLeft"), true);
    Set(QStringLiteral("Dutch"), QStringLiteral("FeedbackLeft"), true);
    const lw::tasks::ItemList none =
        lw::tasks::FillItemList(Db(), scope, QStringLiteral("auctions awaiting feedback"));
    EXPECT_EQ(none.rows,
              (std::vector<ItemListRow>{{QStringLiteral("No Pending Tasks"), QString()}}));
    EXPECT_EQ(none.recordCount, QStringLiteral("(0)"));
    EXPECT_TRUE(none.Empty());

    EXPECT_THROW(lw::tasks::FillItemList(Db(), scope, QStringLiteral("Auctions")),
                 lw::core::StoreError)
        << "a table is no saved query";
    EXPECT_THROW(
        lw::tasks::FillItemList(Db(), scope, QStringLiteral("x\"; DROP TABLE Auctions; --")),
        lw::core::StoreError);
}

// An item is a task once its time left reads "Ended": the list reads the
// stored form in place, and must agree with the time-left text on every
// form, the stored one and any other.
TEST(TaskListEnd, TheListsEndAgreesWithTheTimeLeftText) {
    struct Case {
        const char* endDate;
        const char* correction;
        bool ended;
    };
    const Case cases[] = {
        {"03/09/24, 23:59:59 PST", "0", true},
        {"03/10/24, 12:00:00 PDT", "0", true},  // this very second
        {"03/10/24, 12:00:01 PST", "0", false},
        {"03/10/24, 12:00:01 PST", "-1", true},  // the site's clock runs a second ahead
        {"03/10/24, 13:00:00 PST", "-3600", true},
        {"03/09/24, 12:00:00 PST", "86400.4", true},
        {"03/09/24, 12:00:00 PST", "86401", false},
        {"01/01/97, 00:00:00 PST", "0", true},   // 1997
        {"01/01/96, 00:00:00 PST", "0", false},  // 2096
        {"02/30/24, 10:00:00 PST", "0", false},  // no such day
        {"03/10/24, 24:00:00 PST", "0", false},
        {"03/09/24, 12:00:00", "0", true},  // no zone: read by the text alone
        {"3/9/24, 12:00:00 PST", "0", false},
        {"03/09/24 12:00:00 PST", "0", true},
        {"n/a", "0", false},
        {"", "0", false},
    };
    lw::tasks::ListScope scope;
    scope.now = QDateTime(QDate(2024, 3, 10), QTime(12, 0, 0, 500));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.endDate);
        scope.siteCorrection = QLatin1String(c.correction);
        const QString endDate = QLatin1String(c.endDate);
        const bool textSays = lw::core::TimeLeftText(endDate, scope.siteCorrection, scope.now) ==
                              QLatin1String("Ended");
        EXPECT_EQ(lw::tasks::EndedTest(scope)(endDate), textSays);
        EXPECT_EQ(textSays, c.ended);
    }
}

TEST_F(TasksTest, TheFilterListHoldsTheSidesFiltersAndTheUsersOwnOnBoth) {
    // A filter of the user's own, whose name holds quotes.
    const QString own = QStringLiteral("D'Arcy's \"big\" sales");
    Db().Exec(
        QStringLiteral("CREATE VIEW \"D'Arcy's \"\"big\"\" sales\" AS SELECT * FROM "
                       "\"All Auctions with Pending Tasks\" WHERE HighBidNum > 100;"));
    for (const QString& user : {kUser, QStringLiteral("Ben")}) {
        Add(QStringLiteral("\"ToDo Filters\""),
            {{QStringLiteral("FilterName"), user == kUser ? own : QStringLiteral("Ben's")},
             {QStringLiteral("AuctionFilter"), true},
             {QStringLiteral("AllUsers"), false},
             {QStringLiteral("UserName"), user}});
    }
    EXPECT_EQ(lw::tasks::TaskFilters(Db(), kUser, Side::Sales),
              (QStringList{kAllSales, QStringLiteral("Auctions Awaiting Payment"),
                           QStringLiteral("Auctions Not Yet Shipped"),
                           QStringLiteral("Auctions Awaiting Feedback"), own}));
    EXPECT_EQ(lw::tasks::TaskFilters(Db(), kUser, Side::Bids),
              (QStringList{kAllBids, QStringLiteral("Bids Not Yet Paid"),
                           QStringLiteral("Bids Not Yet Received"), own}));

    Sale(QStringLiteral("101"), {{QStringLiteral("HighBid"), QStringLiteral("$150.00")}});
    Sale(QStringLiteral("102"));
    const ItemListRow big = {QStringLiteral("101: Title of 101"), QStringLiteral("101")};
    EXPECT_EQ(Rows(Side::Sales, own), std::vector{big})
        << "a filter without its (Dutch) twin adds no winner rows";
}

// ------------------------------------------------------------ tree and dispatch

TEST_F(TasksTest, TheTreeIsBuiltInTableOrder) {
    for (const Side side : {Side::Sales, Side::Bids}) {
        const std::vector<lw::tasks::TaskNode> nodes = lw::tasks::TaskTree(Db(), side);
        ASSERT_GT(nodes.size(), 10u);
        EXPECT_EQ(nodes.front().key, QStringLiteral("SUM"));
        EXPECT_TRUE(nodes.front().relative.isEmpty());
        EXPECT_FALSE(nodes.front().relationship.has_value());
        QStringList seen;
        for (const auto& node : nodes) {
            if (!node.relative.isEmpty()) {
                EXPECT_TRUE(seen.contains(node.relative)) << node.key.toStdString();
                EXPECT_EQ(node.relationship, 4);
            }
            EXPECT_EQ(node.isFolder, node.startImage == 8) << node.key.toStdString();
            seen << node.key;
        }
        EXPECT_TRUE(
            seen.contains(side == Side::Sales ? QStringLiteral("SHS") : QStringLiteral("IRR")));
    }
}

TEST_F(TasksTest, EachNodeOpensItsPanelWithItsArguments) {
    struct Case {
        Side side;
        const char* key;
        TaskPanel panel;
        const char* focus;
    };
    const Case cases[] = {
        {Side::Sales, "SUM", TaskPanel::ItemInfo, ""},
        {Side::Sales, "SFP", TaskPanel::ItemInfo, ""},
        {Side::Sales, "SUMS", TaskPanel::SaleSummary, ""},
        {Side::Bids, "SUMS", TaskPanel::BidSummary, ""},
        {Side::Sales, "SUMN", TaskPanel::Notes, "txtToDoNotes"},
        {Side::Bids, "SUMN", TaskPanel::Notes, "txtToDoNotes"},
        {Side::Sales, "PRA", TaskPanel::BuyerAddress, "txtAddressMr"},
        {Side::Bids, "PRA", TaskPanel::SellerAddress, ""},
        {Side::Sales, "PRI", TaskPanel::SalePayment, "lstPaymentMethods"},
        {Side::Bids, "PRP", TaskPanel::BidPayment, ""},
        {Side::Sales, "SHP", TaskPanel::PackingList, ""},
        {Side::Bids, "PRS", TaskPanel::RemittanceAdvice, ""},
        {Side::Sales, "SHS", TaskPanel::Shipping, ""},
        {Side::Bids, "IRR", TaskPanel::ItemReceived, ""},
        {Side::Sales, "FBL", TaskPanel::LeftFeedback, ""},
        {Side::Bids, "FBR", TaskPanel::ReceivedFeedback, ""},
        {Side::Sales, "CON", TaskPanel::EmailTask, ""},
        {Side::Bids, "IRE", TaskPanel::EmailTask, ""},
        {Side::Sales, "SHR", TaskPanel::EntryTask, ""},
        {Side::Sales, "PRP", TaskPanel::None, ""},  // a bids node
        {Side::Sales, "XYZ", TaskPanel::None, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        const auto dispatch =
            lw::tasks::ShowSelectedTask(Db(), c.side, QLatin1String(c.key), QStringLiteral("(2)"));
        EXPECT_EQ(dispatch.panel, c.panel);
        EXPECT_EQ(dispatch.focus, QLatin1String(c.focus));
    }
    const auto mail = lw::tasks::ShowSelectedTask(Db(), Side::Sales, QStringLiteral("con "),
                                                  QStringLiteral("(1)"));
    EXPECT_EQ(mail.key, QStringLiteral("CON"));
    EXPECT_EQ(mail.description, QStringLiteral("Congratulations"));
    EXPECT_EQ(mail.parameter, QStringLiteral("CON"));
    EXPECT_EQ(mail.additional[0], QStringLiteral("Congratulations"));
    EXPECT_EQ(mail.additional[1], QStringLiteral("EmailEndOfAuction"));
    EXPECT_EQ(mail.additional[2], QStringLiteral("EmailEndOfAuctionDate"));
    const auto entry = lw::tasks::ShowSelectedTask(Db(), Side::Sales, QStringLiteral("SHR"),
                                                   QStringLiteral("(1)"));
    EXPECT_EQ(entry.additional[3], QStringLiteral("EmailBuyerReceived"));
    EXPECT_EQ(entry.additional[4], QStringLiteral("EmailBuyerReceivedDate"));

    // An empty list shows the side's empty panel whatever node is clicked.
    for (const Side side : {Side::Sales, Side::Bids}) {
        EXPECT_EQ(
            lw::tasks::ShowSelectedTask(Db(), side, QStringLiteral("SHS"), QStringLiteral("(0)"))
                .panel,
            TaskPanel::NoPendingTasks);
    }
}

}  // namespace
