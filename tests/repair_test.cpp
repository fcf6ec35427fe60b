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
        QStringList marks;
        for (const auto& [column, value] : row) {
            columns << QString::fromLatin1(column);
            marks << QStringLiteral("?");
        }
        lw::core::Statement insert = Db().Prepare(
            QStringLiteral("INSERT INTO ") + QString::fromLatin1(table) + QStringLiteral(" (") +
            columns.join(u',') + QStringLiteral(") VALUES (") + marks.join(u',') + u')');
        int index = 1;
        for (const auto& [column, value] : row) {
            insert.Bind(index++, value);
        }
        insert.Run();
        return Db().LastInsertId();
    }

    // The value of one column of the row, or nullopt when the row is gone.
    std::optional<QVariant> Cell(const char* table, qint64 rowid, const char* column) {
        lw::core::Statement query = Db().Prepare(
            QStringLiteral("SELECT ") + QString::fromLatin1(column) + QStringLiteral(" FROM ") +
            QString::fromLatin1(table) + QStringLiteral(" WHERE rowid = ?"));
        query.Bind(1, rowid);
        if (!query.Step()) {
            return std::nullopt;
        }
        return query.Value(0);
    }

    // The cell as text: kNullCell for a Null, kGone when the row is not there.
    QString Text(const char* table, qint64 rowid, const char* column) {
        const std::optional<QVariant> cell = Cell(table, rowid, column);
        if (!cell) {
            return kGone;
        }
        return cell->isNull() ? kNullCell : cell->toString();
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
    row.erase(std::remove_if(row.begin(), row.end(),
                             [](const auto& cell) {
                                 return QLatin1String(cell.first) == QLatin1String("ReserveBid");
                             }),
              row.end());
    row.push_back({"SellerName", QStringLiteral("seller")});
    row.push_back({"SellerFeedback", QStringLiteral("(40)")});
    return row;
}

Row With(Row row, const char* column, const QVariant& value) {
    for (auto& cell : row) {
        if (QLatin1String(cell.first) == QLatin1String(column)) {
            cell.second = value;
            return row;
        }
    }
    row.push_back({column, value});
    return row;
}

const QDateTime kNow(QDate(2000, 6, 7), QTime(9, 30, 15));
const QString kEndToday = QStringLiteral("06/07/00, 12:04:00 PST");

}  // namespace

// ------------------------------------------------------------ null repair

TEST_F(RepairTest, AnAuctionWithoutItemNumberIsGoneOthersTakeNa) {
    const qint64 noNumber = Insert("Auctions", With(FullAuction({}), "ItemNumber", QVariant()));
    const qint64 blankNumber =
        Insert("Auctions", With(With(FullAuction(QStringLiteral("   ")), "HighBid", QVariant()),
                                "AuctionSiteFlag", 1));
    const qint64 holes = Insert(
        "Auctions", With(With(With(With(FullAuction(QStringLiteral("1001")), "EndDate", QVariant()),
                                   "ReserveBid", QVariant()),
                              "HighBidderFeedback", QVariant()),
                         "AuctionNotes", QVariant()));
    RepairNulls(Db(), kNow);

    EXPECT_EQ(Text("Auctions", noNumber, "ItemNumber"), kGone);
    EXPECT_EQ(Text("Auctions", blankNumber, "ItemNumber"), kGone);
    EXPECT_EQ(Text("Auctions", holes, "EndDate"), kEndToday);
    EXPECT_EQ(Text("Auctions", holes, "ReserveBid"), kNa);
    EXPECT_EQ(Text("Auctions", holes, "HighBidderFeedback"), kNa);
    // What was there stays; a column the repair does not name stays Null.
    EXPECT_EQ(Text("Auctions", holes, "HighBid"), QStringLiteral("$12.50"));
    EXPECT_EQ(Text("Auctions", holes, "AuctionNotes"), kNullCell);
}

TEST_F(RepairTest, AnEmptyTitleFindsARowButIsNotItselfMended) {
    // Found by its empty title alone, the blank item number deletes it.
    const qint64 blankTitle = Insert(
        "Auctions", With(With(FullAuction(kEmpty), "ItemTitle", kEmpty), "AuctionSiteFlag", 2));
    // A blank item number on a row that nothing else finds stays.
    const qint64 notFound = Insert("Auctions", With(FullAuction(kEmpty), "AuctionSiteFlag", 3));
    const qint64 emptyTitle =
        Insert("Auctions", With(FullAuction(QStringLiteral("1002")), "ItemTitle", kEmpty));
    RepairNulls(Db(), kNow);
    EXPECT_EQ(Text("Auctions", blankTitle, "ItemNumber"), kGone);
    EXPECT_EQ(Text("Auctions", notFound, "ItemNumber"), QString());
    EXPECT_EQ(Text("Auctions", emptyTitle, "ItemTitle"), QString());
}

TEST_F(RepairTest, ABidWithoutItemNumberReadsNaAndTheSellerIsMendedOnFoundRowsOnly) {
    const qint64 noNumber =
        Insert("Bids", With(With(FullBid({}), "ItemNumber", QVariant()), "SellerName", QVariant()));
    const qint64 endless =
        Insert("Bids", With(With(FullBid(QStringLiteral("2001")), "EndDate", QVariant()),
                            "ReserveBid", QVariant()));
    // No Null in the columns that find a row: the seller's Null stays.
    const qint64 sellerOnly =
        Insert("Bids", With(FullBid(QStringLiteral("2002")), "SellerFeedback", QVariant()));
    RepairNulls(Db(), kNow);

    EXPECT_EQ(Text("Bids", noNumber, "ItemNumber"), kNa);
    EXPECT_EQ(Text("Bids", noNumber, "SellerName"), kNa);
    EXPECT_EQ(Text("Bids", endless, "EndDate"), kEndToday);
    EXPECT_EQ(Text("Bids", endless, "ReserveBid"), kNullCell);
    EXPECT_EQ(Text("Bids", sellerOnly, "SellerFeedback"), kNullCell);
}

TEST_F(RepairTest, TwoBidsWithoutItemNumberKeepBothRows) {
    const qint64 first =
        Insert("Bids", With(With(FullBid({}), "ItemNumber", QVariant()), "HighBid", QVariant()));
    const qint64 second =
        Insert("Bids", With(With(FullBid({}), "ItemNumber", QVariant()), "HighBid", QVariant()));
    RepairNulls(Db(), kNow);
    EXPECT_EQ(Text("Bids", first, "ItemNumber"), kNa);
    // The key allows one "n/a" per user and site; the other stays Null.
    EXPECT_EQ(Text("Bids", second, "ItemNumber"), kNullCell);
    EXPECT_EQ(Text("Bids", second, "HighBid"), kNa);
}

TEST_F(RepairTest, GlobalGetsTheLocalTimeWhenItHasNone) {
    Db().Exec(QStringLiteral("DELETE FROM Global"));
    RepairNulls(Db(), kNow);
    ASSERT_EQ(Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Global")), 1);
    EXPECT_EQ(Text("Global", 1, "eBayTime"), QStringLiteral("Wednesday, 06 07, 2000 09:30:15 PDT"));

    Db().Exec(QStringLiteral("UPDATE Global SET eBayTime = NULL"));
    RepairNulls(Db(), kNow.addDays(1));
    EXPECT_EQ(Text("Global", 1, "eBayTime"), QStringLiteral("Thursday, 06 08, 2000 09:30:15 PDT"));

    RepairNulls(Db(), kNow.addDays(2));
    EXPECT_EQ(Text("Global", 1, "eBayTime"), QStringLiteral("Thursday, 06 08, 2000 09:30:15 PDT"));
}

TEST_F(RepairTest, NothingToMendWritesNothing) {
    Insert("Auctions", FullAuction(QStringLiteral("1")));
    Insert("Bids", With(FullBid(QStringLiteral("2")), "ReserveBid", QVariant()));
    Db().Exec(QStringLiteral("UPDATE Global SET eBayTime = 'Wednesday, 06 07, 2000 09:30:15 PDT'"));
    const int before = TotalChanges();
    RepairNulls(Db(), kNow);
    EXPECT_EQ(TotalChanges(), before);
}

// The walk row by row, as the rows are found and mended one field at a
// time: what the whole-table statements must leave behind.
TEST_F(RepairTest, TheResultEqualsTheRowByRowWalkOverManyRandomRows) {
    const QStringList auctionFind = {"ItemNumber",     "ItemTitle",    "ReserveBid",
                                     "HighBidderName", "ItemCategory", "StartDate",
                                     "EndDate",        "NumberBids",   "MinimumBid",
                                     "Quantity",       "HighBid",      "HighBidderFeedback"};
    const QStringList auctionMend = {"HighBidderName", "ItemTitle",          "ItemCategory",
                                     "ItemNumber",     "StartDate",          "EndDate",
                                     "NumberBids",     "MinimumBid",         "Quantity",
                                     "HighBid",        "HighBidderFeedback", "ReserveBid"};
    const QStringList bidFind = {"ItemNumber", "ItemTitle", "HighBidderName",    "ItemCategory",
                                 "StartDate",  "EndDate",   "NumberBids",        "MinimumBid",
                                 "Quantity",   "HighBid",   "HighBidderFeedback"};
    const QStringList bidMend = {"HighBidderName", "ItemTitle", "ItemCategory",       "ItemNumber",
                                 "StartDate",      "EndDate",   "NumberBids",         "MinimumBid",
                                 "Quantity",       "HighBid",   "HighBidderFeedback", "SellerName",
                                 "SellerFeedback"};

    std::mt19937 random(20240315);
    auto chance = [&random](int percent) {
        return std::uniform_int_distribution<int>(0, 99)(random) < percent;
    };
    using Values = QHash<QString, QVariant>;
    auto fill = [&](const char* table, const QStringList& columns, int rows) {
        QStringList marks;
        for (qsizetype i = 0; i < columns.size() + 2; ++i) {
            marks << QStringLiteral("?");
        }
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
        QHash<qint64, Values> out;
        for (auto it = rows.begin(); it != rows.end(); ++it) {
            Values values = it.value();
            bool found = false;
            for (const QString& column : find) {
                found = found || values.value(column).isNull();
            }
            if (auctions && values.value(QStringLiteral("ItemTitle")).toString().isEmpty()) {
                found = true;
            }
            bool deleted = false;
            if (found) {
                for (const QString& column : mend) {
                    const QVariant value = values.value(column);
                    if (auctions && column == QLatin1String("ItemNumber") &&
                        (value.isNull() || value.toString().trimmed().isEmpty())) {
                        deleted = true;
                        break;
                    }
                    if (value.isNull()) {
                        values.insert(column, column == QLatin1String("EndDate")
                                                  ? QVariant(kEndToday)
                                                  : QVariant(kNa));
                    }
                }
            }
            if (!deleted) {
                out.insert(it.key(), values);
            }
        }
        return out;
    };

    constexpr int kRows = 5000;
    QStringList auctionColumns = auctionFind;
    QStringList bidColumns = bidMend;
    fill("Auctions", auctionColumns, kRows);
    fill("Bids", bidColumns, kRows);
    const auto expectedAuctions =
        walk(snapshot("Auctions", auctionColumns), auctionFind, auctionMend, true);
    const auto expectedBids = walk(snapshot("Bids", bidColumns), bidFind, bidMend, false);
    RepairNulls(Db(), kNow);
    const auto actualAuctions = snapshot("Auctions", auctionColumns);
    const auto actualBids = snapshot("Bids", bidColumns);
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
        lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPost"), QStringLiteral("-1"));
        lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPostDate"),
                              QStringLiteral("03/10/2024"));
    }

    qint64 Creator(const Row& changes = {}) {
        Row row = {{"UserName", kUser},
                   {"ACType", QStringLiteral("Old Auction")},
                   {"CreationDate", QStringLiteral("2024-03-12 10:00:00")},
                   {"eBayAuctionTitle", QStringLiteral("Brass Lamp ")},
                   {"eBayCategory", QStringLiteral("123")},
                   {"MinimumBid", 10.0},
                   {"Quantity", 2},
                   {"Shipping", 5.5},
                   {"Insurance", 1.25},
                   {"YourItemCost", 1234.5},
                   {"ShippingMethod", QStringLiteral("UPS Ground")}};
        for (const auto& [column, value] : changes) {
            row = With(row, column, value);
        }
        return Insert("AuctionCreator", row);
    }

    qint64 Auction(const QString& number, const Row& changes = {}) {
        Row row = {{"UserName", kUser},
                   {"ItemNumber", number},
                   {"ItemTitle", QStringLiteral("  Brass Lamp")},
                   {"ItemCategory", QStringLiteral("Home&Garden:Lamps&Lighting")},
                   {"MinimumBid", QStringLiteral("$10.00")},
                   {"Quantity", QStringLiteral("2")},
                   {"StartDate", QStringLiteral("03/12/24")}};
        for (const auto& [column, value] : changes) {
            row = With(row, column, value);
        }
        return Insert("Auctions", row);
    }

    QString Setting(const char* key) {
        return lw::core::GetSetting(kApp, kUser, QString::fromLatin1(key),
                                    QStringLiteral("<absent>"));
    }
};

}  // namespace

TEST_F(RepairReconcile, AFullMatchLinksTheAuctionAndCopiesTheCostsAsCurrency) {
    const qint64 creator = Creator();
    const qint64 auction = Auction(QStringLiteral("1001"));
    ReconcileCreatorRows(Db(), kToday);
    EXPECT_EQ(Text("Auctions", auction, "AuctionCreatorID").toLongLong(), creator);
    EXPECT_EQ(Text("Auctions", auction, "ShippingCost"), QStringLiteral("$5.50"));
    EXPECT_EQ(Text("Auctions", auction, "OrderShipping"), QStringLiteral("$5.50"));
    EXPECT_EQ(Text("Auctions", auction, "InsuranceCost"), QStringLiteral("$1.25"));
    EXPECT_EQ(Text("Auctions", auction, "ItemCost"), QStringLiteral("$1,234.50"));
    EXPECT_EQ(Text("Auctions", auction, "ShippingMethod"), QStringLiteral("UPS Ground"));
    EXPECT_EQ(Setting("eBayPost"), QStringLiteral("False"));
    EXPECT_EQ(Setting("eBayPostDate"), QString());
    EXPECT_TRUE(m_ui.History().empty());
}

TEST_F(RepairReconcile, EveryPartMustMatchForALink) {
    Creator();
    // Title and category right, quantity wrong: 1 + 2 + 4 = 7.
    const qint64 quantity = Auction(QStringLiteral("1"), {{"Quantity", QStringLiteral("3")}});
    const qint64 title =
        Auction(QStringLiteral("2"), {{"ItemTitle", QStringLiteral("Brass lamp")}});
    const qint64 category =
        Auction(QStringLiteral("3"), {{"ItemCategory", QStringLiteral("Home & Garden: Lamps")}});
    const qint64 price = Auction(QStringLiteral("4"), {{"MinimumBid", QStringLiteral("$10.01")}});
    const qint64 noPrice = Auction(QStringLiteral("5"), {{"MinimumBid", QVariant()}});
    ReconcileCreatorRows(Db(), kToday);
    for (const qint64 auction : {quantity, title, category, price, noPrice}) {
        EXPECT_EQ(Text("Auctions", auction, "AuctionCreatorID").toLongLong(), 0) << auction;
        EXPECT_EQ(Text("Auctions", auction, "ShippingCost"), kNullCell) << auction;
    }
    EXPECT_EQ(Setting("eBayPost"), QStringLiteral("False"));
}

TEST_F(RepairReconcile, OnlyTheUsersOldAuctionsSinceThePostDateAreTried) {
    Creator({{"CreationDate", QStringLiteral("2024-03-09 23:59:59")}});
    Creator({{"ACType", QStringLiteral("Draft")}});
    Creator({{"UserName", QStringLiteral("Ben")}});
    const qint64 early = Auction(QStringLiteral("1"), {{"StartDate", QStringLiteral("03/09/24")}});
    const qint64 linked = Auction(QStringLiteral("2"), {{"AuctionCreatorID", 99}});
    const qint64 waiting = Auction(QStringLiteral("3"));
    ReconcileCreatorRows(Db(), kToday);
    EXPECT_EQ(Text("Auctions", waiting, "AuctionCreatorID").toLongLong(), 0);

    // The creator record of the post date itself counts; the early auction
    // and the one already linked do not.
    lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPost"), QStringLiteral("True"));
    lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPostDate"), QStringLiteral("3/10/2024"));
    const qint64 creator = Creator({{"CreationDate", QStringLiteral("2024-03-10 00:00:00")}});
    ReconcileCreatorRows(Db(), kToday);
    EXPECT_EQ(Text("Auctions", waiting, "AuctionCreatorID").toLongLong(), creator);
    EXPECT_EQ(Text("Auctions", early, "AuctionCreatorID").toLongLong(), 0);
    EXPECT_EQ(Text("Auctions", linked, "AuctionCreatorID").toLongLong(), 99);
}

TEST_F(RepairReconcile, WithoutThePostMarkNothingHappens) {
    Creator();
    const qint64 auction = Auction(QStringLiteral("1001"));
    lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPost"), QStringLiteral("False"));
    const int before = TotalChanges();
    ReconcileCreatorRows(Db(), kToday);
    EXPECT_EQ(TotalChanges(), before);
    EXPECT_EQ(Text("Auctions", auction, "AuctionCreatorID").toLongLong(), 0);
    EXPECT_EQ(Setting("eBayPostDate"), QStringLiteral("03/10/2024"));
}

TEST_F(RepairReconcile, AnEmptyPostDateMeansToday) {
    lw::core::SaveSetting(kApp, kUser, QStringLiteral("eBayPostDate"), QString());
    Creator();
    const qint64 creatorToday =
        Creator({{"CreationDate", QStringLiteral("2024-03-15 08:00:00")}, {"Quantity", 5}});
    const qint64 before = Auction(QStringLiteral("1"));
    const qint64 today = Auction(QStringLiteral("2"), {{"StartDate", QStringLiteral("03/15/24")},
                                                       {"Quantity", QStringLiteral("5")}});
    ReconcileCreatorRows(Db(), kToday);
    EXPECT_EQ(Text("Auctions", before, "AuctionCreatorID").toLongLong(), 0);
    EXPECT_EQ(Text("Auctions", today, "AuctionCreatorID").toLongLong(), creatorToday);
}

TEST_F(RepairReconcile, AnUnknownCategoryNumberReadsNone) {
    const qint64 creator = Creator({{"eBayCategory", QStringLiteral("999")}});
    const qint64 named = Auction(QStringLiteral("1"));
    const qint64 none = Auction(QStringLiteral("2"), {{"ItemCategory", QStringLiteral("NONE")}});
    ReconcileCreatorRows(Db(), kToday);
    EXPECT_EQ(Text("Auctions", named, "AuctionCreatorID").toLongLong(), 0);
    EXPECT_EQ(Text("Auctions", none, "AuctionCreatorID").toLongLong(), creator);
}
