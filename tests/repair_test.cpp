// SPDX-License-Identifier: GPL-3.0-or-later
// The post-update repair: the Null mending of Auctions, Bids and Global,
// checked case by case and against a row-by-row walk over many random rows,
// a clean database left unwritten; and the reconciliation of retrieved
// auctions with the creator records they were posted from.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDateTime>
#include <QHash>
#include <QStringList>
#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <random>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "update/repair.h"

using lw::core::CurrentSession;
using lw::core::Database;
using lw::test::ScriptedUi;
using lw::test::SourceDir;
using lw::test::TempRoot;
using namespace lw::update;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = QStringLiteral("O'Hara");
const QString kNa = QStringLiteral("n/a");
const QString kNullCell = QStringLiteral("<null>");
const QString kGone = QStringLiteral("<row gone>");
// An empty text, as against a Null (which a null QString binds as).
const QString kEmpty = QStringLiteral("");

// A column and its value for a row written by a test.
using Row = std::vector<std::pair<const char*, QVariant>>;

class RepairTest : public ::testing::Test {
protected:
    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        QString error;
        ASSERT_TRUE(lw::core::SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        CurrentSession().ShippedDir = SourceDir();
        lw::core::SetSettingsFolder(m_root.File(QStringLiteral("settings")));
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), SourceDir()));
        lw::core::AddUser(*m_db, {kUser, QStringLiteral("ohara"), QStringLiteral("pw"), {}});
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder({}); }

    Database& Db() { return *m_db; }

    qint64 Insert(const char* table, const Row& row) {
        QStringList columns;
        for (const auto& [column, value] : row) {
            columns << QString::fromLatin1(column);
        }
        lw::core::Statement insert =
            Db().Prepare(QStringLiteral("INSERT INTO ") + QString::fromLatin1(table) +
                         QStringLiteral(" (") + columns.join(u',') + QStringLiteral(") VALUES (") +
                         QStringList(columns.size(), QStringLiteral("?")).join(u',') + u')');
        int index = 1;
        for (const auto& [column, value] : row) {
            insert.Bind(index++, value);
        }
        insert.Run();
        return Db().LastInsertId();
    }

    // The cell as text: kNullCell for a Null, kGone when the row is not there.
    QString Text(const char* table, qint64 rowid, const char* column) {
        lw::core::Statement query = Db().Prepare(
            QStringLiteral("SELECT ") + QString::fromLatin1(column) + QStringLiteral(" FROM ") +
            QString::fromLatin1(table) + QStringLiteral(" WHERE rowid = ?"));
        query.Bind(1, rowid);
        if (!query.Step()) {
            return kGone;
        }
        return query.IsNull(0) ? kNullCell : query.Value(0).toString();
    }

    int TotalChanges() { return sqlite3_total_changes(Db().Handle()); }

    ScriptedUi m_ui;
    TempRoot m_root;
    std::optional<Database> m_db;
};

// A complete row of scraped columns: nothing in it needs mending.
Row FullAuction(const QString& itemNumber) {
    return {{"UserName", kUser},
            {"ItemNumber", itemNumber},
            {"ItemTitle", QStringLiteral("Brass lamp")},
            {"ItemCategory", QStringLiteral("Home: Lamps")},
            {"StartDate", QStringLiteral("03/01/24")},
            {"EndDate", QStringLiteral("03/08/24, 18:00:00 PST")},
            {"MinimumBid", QStringLiteral("$10.00")},
            {"ReserveBid", QStringLiteral("-")},
            {"HighBid", QStringLiteral("$12.50")},
            {"Quantity", QStringLiteral("1")},
            {"NumberBids", QStringLiteral("3")},
            {"HighBidderName", QStringLiteral("buyer'1")},
            {"HighBidderFeedback", QStringLiteral("(12)")}};
}

Row FullBid(const QString& itemNumber) {
    Row row = FullAuction(itemNumber);
    std::erase_if(row, [](const auto& cell) { return qstrcmp(cell.first, "ReserveBid") == 0; });
    row.push_back({"SellerName", QStringLiteral("seller")});
    row.push_back({"SellerFeedback", QStringLiteral("(40)")});
    return row;
}

Row With(Row row, const Row& changes) {
    for (const auto& change : changes) {
        const auto cell = std::find_if(row.begin(), row.end(), [&change](const auto& cell) {
            return QLatin1String(cell.first) == QLatin1String(change.first);
        });
        if (cell == row.end()) {
            row.push_back(change);
        } else {
            cell->second = change.second;
        }
    }
    return row;
}

// The columns set to Null.
Row Nulls(std::initializer_list<const char*> columns) {
    Row row;
    for (const char* column : columns) {
        row.push_back({column, QVariant()});
    }
    return row;
}

const QDateTime kNow(QDate(2000, 6, 7), QTime(9, 30, 15));
const QString kEndToday = QStringLiteral("06/07/00, 12:04:00 PST");

}  // namespace

// ------------------------------------------------------------ null repair

// A row is found by a Null in the columns that find it (in Auctions also by
// an empty title); a found auction without an item number is deleted, the
// Nulls of any other found row take "n/a", or today's end for the end date.
TEST_F(RepairTest, FoundRowsAreMendedOrDeletedAndOthersLeftAsTheyAre) {
    struct Case {
        const char* name;
        const char* table;
        Row row;
        std::vector<std::pair<const char*, QString>> after;  // a column's text after the repair
    };
    // The rows go in in this order, all before the one repair; the blank item
    // numbers of Auctions differ in their site so as not to share a key.
    const Case cases[] = {
        {"an auction without item number is gone",
         "Auctions",
         With(FullAuction({}), Nulls({"ItemNumber"})),
         {{"ItemNumber", kGone}}},
        {"a found auction whose item number is blanks is gone",
         "Auctions",
         With(FullAuction(QStringLiteral("   ")),
              {{"HighBid", QVariant()}, {"AuctionSiteFlag", 1}}),
         {{"ItemNumber", kGone}}},
        {"holes take n/a and today's end; what was there and unnamed columns stay",
         "Auctions",
         With(FullAuction(QStringLiteral("1001")),
              Nulls({"EndDate", "ReserveBid", "HighBidderFeedback", "AuctionNotes"})),
         {{"EndDate", kEndToday},
          {"ReserveBid", kNa},
          {"HighBidderFeedback", kNa},
          {"HighBid", QStringLiteral("$12.50")},
          {"AuctionNotes", kNullCell}}},
        {"an empty title alone finds a row, whose blank item number deletes it",
         "Auctions",
         With(FullAuction(kEmpty), {{"ItemTitle", kEmpty}, {"AuctionSiteFlag", 2}}),
         {{"ItemNumber", kGone}}},
        {"a blank item number on a row that nothing finds stays",
         "Auctions",
         With(FullAuction(kEmpty), {{"AuctionSiteFlag", 3}}),
         {{"ItemNumber", kEmpty}}},
        {"an empty title is not itself mended",
         "Auctions",
         With(FullAuction(QStringLiteral("1002")), {{"ItemTitle", kEmpty}}),
         {{"ItemTitle", kEmpty}}},
        {"a bid without item number reads n/a, its seller too",
         "Bids",
         With(FullBid({}), Nulls({"ItemNumber", "SellerName", "HighBid"})),
         {{"ItemNumber", kNa}, {"SellerName", kNa}, {"HighBid", kNa}}},
        // The key allows one "n/a" per user and site: the row stays, Null.
        {"a second bid without item number keeps its Null",
         "Bids",
         With(FullBid({}), Nulls({"ItemNumber", "HighBid"})),
         {{"ItemNumber", kNullCell}, {"HighBid", kNa}}},
        {"a bid takes today's end; its reserve is not mended",
         "Bids",
         With(FullBid(QStringLiteral("2001")), Nulls({"EndDate", "ReserveBid"})),
         {{"EndDate", kEndToday}, {"ReserveBid", kNullCell}}},
        {"the seller's Null finds no bid",
         "Bids",
         With(FullBid(QStringLiteral("2002")), Nulls({"SellerFeedback"})),
         {{"SellerFeedback", kNullCell}}},
    };
    std::vector<qint64> rowids;
    for (const Case& c : cases) {
        rowids.push_back(Insert(c.table, c.row));
    }
    RepairNulls(Db(), kNow);
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(cases[i].name);
        for (const auto& [column, text] : cases[i].after) {
            EXPECT_EQ(Text(cases[i].table, rowids[i], column), text) << column;
        }
    }
}

// Global is given the local time when it has none; once it has one, and
// Auctions and Bids hold nothing to mend, the repair writes nothing at all.
TEST_F(RepairTest, GlobalGetsTheLocalTimeWhenItHasNoneAndACleanDatabaseIsNotWritten) {
    Insert("Auctions", FullAuction(QStringLiteral("1")));
    Insert("Bids", With(FullBid(QStringLiteral("2")), Nulls({"ReserveBid"})));
    Db().Exec(QStringLiteral("DELETE FROM Global"));
    RepairNulls(Db(), kNow);
    ASSERT_EQ(Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Global")), 1);
    EXPECT_EQ(Text("Global", 1, "eBayTime"), QStringLiteral("Wednesday, 06 07, 2000 09:30:15 PDT"));

    Db().Exec(QStringLiteral("UPDATE Global SET eBayTime = NULL"));
    RepairNulls(Db(), kNow.addDays(1));
    EXPECT_EQ(Text("Global", 1, "eBayTime"), QStringLiteral("Thursday, 06 08, 2000 09:30:15 PDT"));

    const int before = TotalChanges();
    RepairNulls(Db(), kNow.addDays(2));
    EXPECT_EQ(TotalChanges(), before);
    EXPECT_EQ(Text("Global", 1, "eBayTime"), QStringLiteral("Thursday, 06 08, 2000 09:30:15 PDT"));
}

// A database from elsewhere whose Auctions lacks the columns: the other
// tables are mended all the same.
TEST_F(RepairTest, ATableThatCannotBeMendedKeepsNoOtherFromIt) {
    Db().Exec(QStringLiteral("DROP TABLE Auctions"));
    Db().Exec(QStringLiteral("CREATE TABLE Auctions (UserName TEXT, ItemNumber TEXT)"));
    const qint64 bid = Insert("Bids", With(FullBid(QStringLiteral("2")), Nulls({"EndDate"})));
    Db().Exec(QStringLiteral("DELETE FROM Global"));
    RepairNulls(Db(), kNow);
    EXPECT_EQ(Text("Bids", bid, "EndDate"), kEndToday);
    EXPECT_EQ(Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Global")), 1);
}

// The walk row by row, as the rows are found and mended one field at a
// time: what the whole-table statements must leave behind.
TEST_F(RepairTest, TheResultEqualsTheRowByRowWalkOverManyRandomRows) {
    // The columns whose Null finds a row: an auction is mended in the same
    // ones, a bid in its seller's too. The order in which a row's fields are
    // mended does not change how it ends.
    const QStringList auctionColumns = {"ItemNumber",     "ItemTitle",    "ReserveBid",
                                        "HighBidderName", "ItemCategory", "StartDate",
                                        "EndDate",        "NumberBids",   "MinimumBid",
                                        "Quantity",       "HighBid",      "HighBidderFeedback"};
    const QStringList bidFind = {"ItemNumber", "ItemTitle", "HighBidderName",    "ItemCategory",
                                 "StartDate",  "EndDate",   "NumberBids",        "MinimumBid",
                                 "Quantity",   "HighBid",   "HighBidderFeedback"};
    const QStringList bidMend = bidFind + QStringList{"SellerName", "SellerFeedback"};

    std::mt19937 random(20240315);
    auto chance = [&random](int percent) {
        return std::uniform_int_distribution<int>(0, 99)(random) < percent;
    };
    using Values = QHash<QString, QVariant>;
    auto fill = [&](const char* table, const QStringList& columns, int rows) {
        const QStringList marks(columns.size() + 2, QStringLiteral("?"));
        lw::core::Transaction tx(Db());
        lw::core::Statement insert =
            Db().Prepare(QStringLiteral("INSERT INTO ") + QString::fromLatin1(table) +
                         QStringLiteral(" (UserName, AuctionSiteFlag, ") + columns.join(u',') +
                         QStringLiteral(") VALUES (") + marks.join(u',') + u')');
        for (int i = 0; i < rows; ++i) {
            insert.Reset();
            insert.Bind(1, kUser).Bind(2, i);
            int index = 3;
            for (const QString& column : columns) {
                QVariant value = QString(column + QString::number(i));
                if (chance(3)) {
                    value = QVariant();
                } else if (column == QLatin1String("ItemNumber") && chance(2)) {
                    value = QStringLiteral("  ");
                } else if (column == QLatin1String("ItemTitle") && chance(2)) {
                    value = kEmpty;
                }
                insert.Bind(index++, value);
            }
            insert.Run();
        }
        tx.Commit();
    };
    auto snapshot = [&](const char* table, const QStringList& columns) {
        QHash<qint64, Values> rows;
        lw::core::Statement query =
            Db().Prepare(QStringLiteral("SELECT rowid, ") + columns.join(u',') +
                         QStringLiteral(" FROM ") + QString::fromLatin1(table));
        while (query.Step()) {
            Values values;
            for (const QString& column : columns) {
                values.insert(column, query.Value(column));
            }
            rows.insert(query.Value(0).toLongLong(), values);
        }
        return rows;
    };
    auto walk = [&](QHash<qint64, Values> rows, const QStringList& find, const QStringList& mend,
                    bool auctions) {
        for (auto it = rows.begin(); it != rows.end();) {
            Values& values = it.value();
            const bool found =
                std::any_of(find.begin(), find.end(),
                            [&](const QString& column) { return values.value(column).isNull(); }) ||
                (auctions && values.value(QStringLiteral("ItemTitle")).toString().isEmpty());
            if (found && auctions &&
                values.value(QStringLiteral("ItemNumber")).toString().trimmed().isEmpty()) {
                it = rows.erase(it);
                continue;
            }
            for (const QString& column : found ? mend : QStringList()) {
                if (values.value(column).isNull()) {
                    values.insert(column, column == QLatin1String("EndDate") ? kEndToday : kNa);
                }
            }
            ++it;
        }
        return rows;
    };

    constexpr int kRows = 5000;
    fill("Auctions", auctionColumns, kRows);
    fill("Bids", bidMend, kRows);
    const auto expectedAuctions =
        walk(snapshot("Auctions", auctionColumns), auctionColumns, auctionColumns, true);
    const auto expectedBids = walk(snapshot("Bids", bidMend), bidFind, bidMend, false);
    RepairNulls(Db(), kNow);
    const auto actualAuctions = snapshot("Auctions", auctionColumns);
    const auto actualBids = snapshot("Bids", bidMend);
    EXPECT_LT(actualAuctions.size(), kRows) << "some rows must have been deleted";
    EXPECT_TRUE(actualAuctions == expectedAuctions);
    EXPECT_TRUE(actualBids == expectedBids);
}

// --------------------------------------------------------- reconciliation

namespace {

const QString kApp = QStringLiteral("Auction Creator");
const QDate kToday(2024, 3, 15);

class RepairReconcile : public RepairTest {
protected:
    void SetUp() override {
        RepairTest::SetUp();
        Insert("eBayCategories", {{"CategoryNumber", QStringLiteral("123")},
                                  {"CategoryName", QStringLiteral("Lamps & Lighting")},
                                  {"MetaCategoryName", QStringLiteral("Home & Garden")}});
    }

    qint64 Creator(const Row& changes = {}) {
        return Insert("AuctionCreator",
                      With({{"UserName", kUser},
                            {"ACType", QStringLiteral("Old Auction")},
                            {"CreationDate", QStringLiteral("2024-03-12 10:00:00")},
                            {"eBayAuctionTitle", QStringLiteral("Brass Lamp ")},
                            {"eBayCategory", QStringLiteral("123")},
                            {"MinimumBid", 10.0},
                            {"Quantity", 2},
                            {"Shipping", 5.5},
                            {"Insurance", 1.25},
                            {"YourItemCost", 1234.5},
                            {"ShippingMethod", QStringLiteral("UPS Ground")}},
                           changes));
    }

    qint64 Auction(const QString& number, const Row& changes = {}) {
        return Insert("Auctions",
                      With({{"UserName", kUser},
                            {"ItemNumber", number},
                            {"ItemTitle", QStringLiteral("  Brass Lamp")},
                            {"ItemCategory", QStringLiteral("Home&Garden:Lamps&Lighting")},
                            {"MinimumBid", QStringLiteral("$10.00")},
                            {"Quantity", QStringLiteral("2")},
                            {"StartDate", QStringLiteral("03/12/24")}},
                           changes));
    }

    QString Setting(const char* key) {
        return lw::core::GetSetting(kApp, kUser, QString::fromLatin1(key),
                                    QStringLiteral("<absent>"));
    }
    qint64 LinkOf(qint64 auction) {
        return Text("Auctions", auction, "AuctionCreatorID").toLongLong();
    }
};

}  // namespace

// The post mark says whether to reconcile at all, the post date since when:
// only the user's old records and auctions of that day or later are tried,
// and only an auction that matches a record in every part is linked to it,
// the later record where two match, and takes its costs as currency.
TEST_F(RepairReconcile, TheMarkTheDatesTheOwnersAndEveryPartDecideALink) {
    // Pairs of a record and an auction of 03/12 that match but for what the
    // pair changes; the quantity, on both sides, tells the pairs apart.
    const struct {
        const char* item;
        int quantity;
        Row creator;
        Row auction;
    } pairs[] = {
        {"12", 2, {}, {}},
        {"rec10", 3, {{"CreationDate", "2024-03-10 00:00:00"}}, {}},
        {"auc10", 4, {}, {{"StartDate", "03/10/24"}}},
        {"15", 5, {{"CreationDate", "2024-03-15 08:00:00"}}, {{"StartDate", "03/15/24"}}},
        {"draft", 6, {{"ACType", "Draft"}}, {}},
        {"ben's record", 7, {{"UserName", "Ben"}}, {}},
        {"ben's auction", 8, {}, {{"UserName", "Ben"}}},
        {"linked already", 9, {}, {{"AuctionCreatorID", 99}}},
        // Title, category and price right, quantity wrong: 1 + 2 + 4 = 7.
        {"quantity", 10, {}, {{"Quantity", "1"}}},
        {"title", 11, {}, {{"ItemTitle", "Brass lamp"}}},
        {"category", 12, {}, {{"ItemCategory", "Home & Garden: Lamps"}}},
        {"price", 13, {}, {{"MinimumBid", "$10.01"}}},
        {"no price", 14, {}, {{"MinimumBid", QVariant()}}},
        // A category number without a row reads NONE.
        {"unknown category", 15, {{"eBayCategory", "999"}}, {}},
        {"none", 16, {{"eBayCategory", "999"}}, {{"ItemCategory", "NONE"}}},
    };
    struct Case {
        const char* name;
        const char* mark;
        const char* postDate;
        bool marked;
        QStringList linked;  // the pairs linked
    };
    const Case cases[] = {
        {"the creator's mark", "-1", "03/10/2024", true, {"12", "rec10", "auc10", "15", "none"}},
        {"a mark by hand; since 03/11", " true ", "3/11/2024", true, {"12", "15", "none"}},
        {"no post date: today", "-1", "", true, {"15"}},
        {"no date: today", "True", "13/45/2024", true, {"15"}},
        {"no mark", "False", "03/10/2024", false, {}},
        {"an empty mark", "", "03/10/2024", false, {}},
    };
    const std::pair<const char*, const char*> costs[] = {{"ShippingCost", "$5.50"},
                                                         {"OrderShipping", "$5.50"},
                                                         {"InsuranceCost", "$1.25"},
                                                         {"ItemCost", "$1,234.50"},
                                                         {"ShippingMethod", "UPS Ground"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Db().Exec(QStringLiteral("DELETE FROM AuctionCreator"));
        Db().Exec(QStringLiteral("DELETE FROM Auctions"));
        lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPost"), QLatin1String(c.mark));
        lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPostDate"),
                              QLatin1String(c.postDate));
        Creator({{"Shipping", 9.0}, {"ShippingMethod", "Freight"}});  // an earlier match of "12"
        std::vector<std::array<qint64, 3>> made;  // record, auction, its link before
        for (const auto& pair : pairs) {
            const Row quantity = {{"Quantity", pair.quantity}};
            const qint64 auction = Auction(QLatin1String(pair.item), With(quantity, pair.auction));
            made.push_back({Creator(With(quantity, pair.creator)), auction, LinkOf(auction)});
        }
        const int before = TotalChanges();
        ReconcileCreatorRows(Db(), kToday);
        for (size_t i = 0; i < std::size(pairs); ++i) {
            const auto [creator, auction, was] = made[i];
            const bool linked = c.linked.contains(QLatin1String(pairs[i].item));
            EXPECT_EQ(LinkOf(auction), linked ? creator : was) << pairs[i].item;
            for (const auto& [column, text] : costs) {
                EXPECT_EQ(Text("Auctions", auction, column),
                          linked ? QString::fromUtf8(text) : kNullCell)
                    << pairs[i].item << ' ' << column;
            }
        }
        if (c.marked) {
            EXPECT_EQ(Setting("eBayPost"), QStringLiteral("False"));
            EXPECT_EQ(Setting("eBayPostDate"), QString());
        } else {
            EXPECT_EQ(TotalChanges(), before);
            EXPECT_EQ(Setting("eBayPostDate"), QLatin1String(c.postDate));
        }
    }
    EXPECT_TRUE(m_ui.History().empty());
}
