// SPDX-License-Identifier: GPL-3.0-or-later
// The shipped schema and seed rows (data/schema.sql, data/seed.sql): every
// table and saved query answers, in the program's store and in the plain
// sqlite3 shell; text keys ignore case and trailing blanks; the generated
// number and day columns follow the program's rules; the saved queries split
// current from archived rows and pick the analysis and task rows; and the
// seeded task trees, filters and system rows are complete.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDate>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QSet>
#include <QStringList>
#include <QVariant>
#include <algorithm>
#include <ostream>
#include <utility>
#include <vector>

#include "core/store.h"
#include "core/text.h"
#include "tests/support/test_support.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

using lw::core::Database;
using lw::core::Statement;
using lw::core::StoreError;

namespace {

using Row = std::vector<std::pair<QString, QVariant>>;

QString Shipped(const QString& name) {
    return QString::fromUtf8(
        lw::test::ReadAll(lw::test::SourceDir() + QStringLiteral("/data/") + name));
}

Database FreshStore() {
    const QString schema = Shipped("schema.sql");
    const QString seed = Shipped("seed.sql");
    EXPECT_FALSE(schema.isEmpty());
    EXPECT_FALSE(seed.isEmpty());
    Database db = Database::Open(":memory:", Database::Mode::Create);
    db.Exec(schema);
    db.Exec(seed);
    return db;
}

// An identifier as SQL text; names come from the schema, never from values.
QString Ident(const QString& name) {
    QString quoted = name;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

// Every row of a query, its values bound in order: the columns of a row
// joined by '|', a NULL as "NULL".
QStringList Rows(Database& db, const QString& sql, const QVariantList& values = {}) {
    auto s = db.Prepare(sql);
    for (qsizetype i = 0; i < values.size(); ++i) {
        s.Bind(static_cast<int>(i + 1), values[i]);
    }
    QStringList rows;
    while (s.Step()) {
        QStringList row;
        for (int c = 0; c < s.ColumnCount(); ++c) {
            row << (s.IsNull(c) ? QStringLiteral("NULL") : s.Value(c).toString());
        }
        rows << row.join(u'|');
    }
    return rows;
}

QStringList Objects(Database& db, const QString& type) {
    return Rows(db,
                QStringLiteral("SELECT name FROM sqlite_master WHERE type = ? AND name NOT LIKE "
                               "'sqlite%' ORDER BY name"),
                {type});
}

// Column names of a table or view, generated columns included.
QStringList Columns(Database& db, const QString& object) {
    return Rows(db, QStringLiteral("SELECT name FROM pragma_table_xinfo(?) ORDER BY cid"),
                {object});
}

QString TableSql(Database& db, const QString& table) {
    return Rows(db, QStringLiteral("SELECT sql FROM sqlite_master WHERE name = ?"), {table})
        .value(0);
}

qint64 Add(Database& db, const QString& table, const Row& row) {
    QStringList names;
    QStringList marks;
    for (const auto& [name, value] : row) {
        names << Ident(name);
        marks << "?";
    }
    auto insert = db.Prepare(QStringLiteral("INSERT INTO ") + Ident(table) + QStringLiteral(" (") +
                             names.join(", ") + QStringLiteral(") VALUES (") + marks.join(", ") +
                             QStringLiteral(")"));
    int index = 1;
    for (const auto& [name, value] : row) {
        insert.Bind(index++, value);
    }
    insert.Run();
    return db.LastInsertId();
}

// The item numbers a saved query (or table) yields for a user, sorted.
QStringList Items(Database& db, const QString& object, const QString& user) {
    return Rows(db,
                QStringLiteral("SELECT ItemNumber FROM ") + Ident(object) +
                    QStringLiteral(" WHERE UserName = ? ORDER BY ItemNumber"),
                {user});
}

// An end date as the update run writes it.
QString EndDate(const QDate& day) {
    return day.toString("MM/dd/yy") + QStringLiteral(", 12:04:00 PST");
}

QDate Today() {
    return QDate::currentDate();
}

const QStringList kTables = {
    "Auctions",           "Bids",        "Dutch",          "DutchBids",
    "AccountInfo",        "Users",       "UserSites",      "Global",
    "Tracking",           "Buyers",      "Sellers",        "ToDo",
    "ToDo Filters",       "Urls",        "eBayCategories", "MetaCategories",
    "FavoriteCategories", "Protocols",   "AuctionCreator", "Inventory",
    "InventoryFolders",   "Transactions"};

const QStringList kSavedQueries = {
    // Current and archived rows.
    "CurrentAuctions", "ArchivedAuctions", "CurrentBids", "ArchivedBids", "CurrentDutchBids",
    "ArchivedDutchBids",
    // Tasks and partner history.
    "Completed Auctions", "Completed Bids", "Dutch Details", "All Auctions with Pending Tasks",
    "All Auctions with Pending Tasks (Dutch)", "All Bids with Pending Tasks",
    "All Bids with Pending Tasks (Dutch)", "Successful Dutch Bids",
    // Analysis.
    "AccountInfo Query", "Bids Query", "Auctions Query", "Dutch Query"};

}  // namespace

// --- Objects ---------------------------------------------------------------

// The files make every table and saved query, all readable; the protocols and
// the pragmas are left to the program.
TEST(schemaObjects, EveryTableAndSavedQueryExistsAndAnswers) {
    Database db = FreshStore();
    const QStringList tables = Objects(db, "table");
    const QStringList views = Objects(db, "view");
    for (const QString& table : kTables) {
        EXPECT_TRUE(tables.contains(table)) << table.toStdString();
    }
    for (const QString& view : kSavedQueries) {
        EXPECT_TRUE(views.contains(view)) << view.toStdString();
    }
    // Every object, the ones named above and any other, can be read.
    for (const QString& name : tables + views) {
        try {
            auto s = db.Prepare(QStringLiteral("SELECT * FROM ") + Ident(name));
            while (s.Step()) {
            }
        } catch (const StoreError& error) {
            ADD_FAILURE() << name.toStdString() << ": " << error.Message().toStdString();
        }
    }
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Protocols")), 0);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA user_version")), 0);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA application_id")), 0);
}

TEST(schemaObjects, EveryTextColumnComparesWithoutCase) {
    Database db = FreshStore();
    for (const QString& table : Objects(db, "table")) {
        auto s = db.Prepare(
            QStringLiteral("SELECT name, type, hidden FROM pragma_table_xinfo(?) ORDER BY cid"));
        s.Bind(1, table);
        while (s.Step()) {
            const bool generated = s.Int("hidden") != 0;
            if (generated || s.Text(1).compare(QLatin1String("TEXT"), Qt::CaseInsensitive) != 0) {
                continue;
            }
            const QByteArray column = s.Text(0).toUtf8();
            const QByteArray tableName = table.toUtf8();
            const char* collation = nullptr;
            ASSERT_EQ(sqlite3_table_column_metadata(db.Handle(), "main", tableName.constData(),
                                                    column.constData(), nullptr, &collation,
                                                    nullptr, nullptr, nullptr),
                      SQLITE_OK);
            EXPECT_STREQ(collation, "NOCASE") << table.toStdString() << "." << column.constData();
        }
    }
}

// The file must be the user's as much as the program's: the plain shell, with
// none of the program's functions, opens it and answers on every object.
TEST(schemaShell, PlainSqliteShellAnswersOnEveryObject) {
    const QString shell = "/usr/bin/sqlite3";
    if (!QFile::exists(shell)) {
        GTEST_SKIP() << "no sqlite3 shell on this machine";
    }
    lw::test::TempRoot root;
    const QString path = root.File("Lotwright.db");
    QStringList objects;
    {
        // Made with the bare library, so that no function of the program is
        // registered while the schema is created either.
        sqlite3* raw = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &raw), SQLITE_OK);
        for (const QString file : {"schema.sql", "seed.sql"}) {
            char* error = nullptr;
            const int rc =
                sqlite3_exec(raw, Shipped(file).toUtf8().constData(), nullptr, nullptr, &error);
            EXPECT_EQ(rc, SQLITE_OK) << file.toStdString() << ": " << (error ? error : "");
            sqlite3_free(error);
        }
        sqlite3_stmt* insert = nullptr;
        ASSERT_EQ(
            sqlite3_prepare_v2(raw,
                               "INSERT INTO Auctions (UserName, ItemNumber, HighBid, EndDate) "
                               "VALUES (?, ?, ?, ?)",
                               -1, &insert, nullptr),
            SQLITE_OK);
        sqlite3_bind_text(insert, 1, "ann", -1, SQLITE_STATIC);
        sqlite3_bind_text(insert, 2, "1001", -1, SQLITE_STATIC);
        sqlite3_bind_text(insert, 3, "$1,234.50", -1, SQLITE_STATIC);
        sqlite3_bind_text(insert, 4, "06/07/00, 12:04:00 PST", -1, SQLITE_STATIC);
        EXPECT_EQ(sqlite3_step(insert), SQLITE_DONE);
        sqlite3_finalize(insert);
        sqlite3_close(raw);
        Database db = Database::Open(path, Database::Mode::ReadOnly);
        objects = Objects(db, "table") + Objects(db, "view");
    }
    QString script;
    for (const QString& name : objects) {
        script +=
            QStringLiteral("SELECT 'answer', COUNT(*) FROM ") + Ident(name) + QStringLiteral(";\n");
    }
    script += "SELECT 'sale', HighBidNum, EndDay, EndStamp FROM ArchivedAuctions;\n";
    QProcess process;
    process.start(shell, {"-bail", path});
    ASSERT_TRUE(process.waitForStarted());
    process.write(script.toUtf8());
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(30000));
    const QString out = QString::fromUtf8(process.readAllStandardOutput());
    const QString err = QString::fromUtf8(process.readAllStandardError());
    EXPECT_EQ(process.exitCode(), 0) << err.toStdString();
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
    EXPECT_EQ(out.count("answer|"), objects.size()) << out.toStdString();
    EXPECT_TRUE(out.contains("sale|1234.5|2000-06-07|2000-06-07 12:04:00")) << out.toStdString();
}

// --- Text ------------------------------------------------------------------

TEST(schemaText, TrimmedBoundValuesFindTheirRowWhateverTheCase) {
    Database db = FreshStore();
    Add(db, "Auctions",
        {{"UserName", "ABC"},
         {"ItemNumber", "123"},
         {"ItemTitle", "Brass Lamp"},
         {"EndDate", EndDate(Today().addDays(2))}});
    // The store trims the bound value and the key matches.
    EXPECT_EQ(
        Rows(db, QStringLiteral("SELECT ItemTitle FROM Auctions WHERE ItemNumber = ?"), {"123 "}),
        QStringList{"Brass Lamp"});

    EXPECT_EQ(Items(db, "Auctions", "aBc"), QStringList{"123"});
    // The sales query puts a blank behind the user name: it still finds the row.
    EXPECT_EQ(Items(db, "CurrentAuctions", "abc "), QStringList{"123"});
    EXPECT_EQ(Rows(db, QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemTitle = ?"),
                   {"BRASS lamp"}),
              QStringList{"1"});
    EXPECT_EQ(
        Rows(db, QStringLiteral("SELECT \"Key\" FROM ToDo WHERE \"Key\" = ? AND \"Auction?\" = 1"),
             {"sum "}),
        QStringList{"SUM"});
}

TEST(schemaText, KeysIgnoreCaseAndAllowRowsWithoutAKey) {
    Database db = FreshStore();
    const Row sale = {{"UserName", "Ann"}, {"ItemNumber", "A7"}, {"AuctionSiteFlag", 0}};
    Add(db, "Auctions", sale);
    EXPECT_THROW(
        Add(db, "Auctions", {{"UserName", "ann"}, {"ItemNumber", "a7"}, {"AuctionSiteFlag", 0}}),
        StoreError);
    // The same number for another user or site is another row.
    Add(db, "Auctions", {{"UserName", "Ben"}, {"ItemNumber", "A7"}});
    Add(db, "Auctions", {{"UserName", "Ann"}, {"ItemNumber", "A7"}, {"AuctionSiteFlag", 1}});
    // An update run may write rows with no item number; the repair deletes them.
    for (const QString table : {"Auctions", "Bids"}) {
        Add(db, table, {{"UserName", "Ann"}});
        Add(db, table, {{"UserName", "Ann"}});
    }
    EXPECT_EQ(
        db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemNumber IS NULL")), 2);
    // A row added without a site is on site 0, and a post writes no creator ID.
    EXPECT_EQ(db.ScalarInt(QStringLiteral(
                  "SELECT COUNT(*) FROM Auctions WHERE UserName = 'Ben' AND AuctionSiteFlag = 0 "
                  "AND AuctionCreatorID = 0 AND InventoryID = 0")),
              1);

    Add(db, "Dutch", {{"ItemNumber", "9"}, {"UserName", "Ann"}, {"HighBidderName", "Zed"}});
    EXPECT_THROW(
        Add(db, "Dutch", {{"ItemNumber", "9"}, {"UserName", "ANN"}, {"HighBidderName", "zed"}}),
        StoreError);
    Add(db, "Users", {{"UserName", "Ann"}});
    EXPECT_THROW(Add(db, "Users", {{"UserName", "ANN"}}), StoreError);
}

TEST(schemaText, ColumnNamesSpelledEitherWayAreOneColumn) {
    Database db = FreshStore();
    auto users = db.Prepare(
        QStringLiteral("INSERT INTO Users (UserName, Pzipcode, zipcode) VALUES (?, ?, ?)"));
    users.BindAll("Ann", "45402", "10001").Run();
    EXPECT_EQ(Rows(db, QStringLiteral("SELECT PZIPCode, Pzipcode, ZipCode FROM Users")),
              QStringList{"45402|45402|10001"});

    auto site =
        db.Prepare(QStringLiteral("INSERT INTO UserSites (Username, ZipCodePref) VALUES (?, ?)"));
    site.BindAll("Ann", "Midwest").Run();
    EXPECT_EQ(
        Rows(db, QStringLiteral("SELECT ZIPCodePref FROM UserSites WHERE UserName = ?"), {"ann"}),
        QStringList{"Midwest"});

    // One column per name whatever the spelling, in every table.
    for (const QString& table : kTables) {
        QSet<QString> lower;
        for (const QString& column : Columns(db, table)) {
            EXPECT_FALSE(lower.contains(column.toLower()))
                << table.toStdString() << "." << column.toStdString();
            lower.insert(column.toLower());
        }
    }
    EXPECT_TRUE(Columns(db, "Users").contains("PZIPCode"));
    EXPECT_TRUE(Columns(db, "UserSites").contains("ZIPCodePref"));
}

// --- Generated columns -----------------------------------------------------

TEST(schemaNumbers, MoneyColumnsReadByTheNumberRule) {
    Database db = FreshStore();
    const QMap<QString, QStringList> money = {
        {"Auctions",
         {"HighBid", "MinimumBid", "ReserveBid", "ItemCost", "ShippingCost", "InsuranceCost",
          "OrderShipping", "OrderTax", "OrderAmountofSale"}},
        {"Bids",
         {"HighBid", "MinimumBid", "WinningBid", "MaximumBid", "ItemCost", "ShippingCost",
          "InsuranceCost", "OrderShipping", "OrderTax", "OrderAmountofSale"}},
        {"Dutch",
         {"HighBid", "ItemCost", "ShippingCost", "InsuranceCost", "OrderShipping", "OrderTax",
          "OrderAmountofSale"}},
        {"DutchBids", {"HighBid", "MinimumBid", "MaximumBid", "OrderShipping", "OrderTax"}},
        {"AccountInfo", {"Debit", "Credit", "SoldPrice"}},
    };
    const std::vector<std::pair<QVariant, double>> samples = {
        {"$1,234.50", 1234.5},
        {"n/a", 0.0},
        {"-", 0.0},
        {"", 0.0},
        {QVariant(), 0.0},
        {"($5.00)", -5.0},
        {"$100.50", 100.5},
        {QStringLiteral("\u00A312.00"), 12.0},
        {QStringLiteral("\u20AC 1,000"), 1000.0},
        {QStringLiteral("\u00A5500"), 500.0},
        {"-3.25", -3.25},
    };
    for (auto it = money.cbegin(); it != money.cend(); ++it) {
        const QString& table = it.key();
        const QString sql = TableSql(db, table);
        for (const QString& column : it.value()) {
            const QString generated = column + QStringLiteral("Num");
            ASSERT_TRUE(Columns(db, table).contains(generated))
                << table.toStdString() << "." << generated.toStdString();
            // The same rule, character for character, as the program's own.
            EXPECT_TRUE(sql.contains(generated + QStringLiteral(" REAL GENERATED ALWAYS AS (") +
                                     lw::core::NumberRuleSql(column) + QStringLiteral(") STORED")))
                << table.toStdString() << "." << generated.toStdString();
            for (const auto& [text, number] : samples) {
                const qint64 id = Add(db, table, {{column, text}});
                auto s = db.Prepare(QStringLiteral("SELECT ") + Ident(generated) +
                                    QStringLiteral(" FROM ") + Ident(table) + " WHERE rowid = ?");
                s.Bind(1, id);
                ASSERT_TRUE(s.Step());
                EXPECT_DOUBLE_EQ(s.Value(0).toDouble(), number)
                    << table.toStdString() << "." << column.toStdString() << " of '"
                    << text.toString().toStdString() << "'";
            }
        }
    }
}

TEST(schemaDates, DayColumnsReadByTheDateRule) {
    Database db = FreshStore();
    const std::vector<std::pair<QVariant, QString>> samples = {
        {"06/07/00, 12:04:00 PST", "2000-06-07"},
        {"12/31/97, 23:59:59 PST", "1997-12-31"},
        {"03/04/96, 08:00:00 PST", "2096-03-04"},  // pivot 97
        {"n/a", QString()},
        {"6/7/00, 12:04:00 PST", QString()},
        {QVariant(), QString()},
    };
    for (const QString table : {"Auctions", "Bids", "DutchBids"}) {
        EXPECT_TRUE(TableSql(db, table).contains(
            QStringLiteral("EndDay TEXT GENERATED ALWAYS AS (") + lw::core::EndDaySql("EndDate") +
            QStringLiteral(") STORED")))
            << table.toStdString();
        for (const auto& [text, day] : samples) {
            SCOPED_TRACE(table.toStdString() + " of '" + text.toString().toStdString() + "'");
            const qint64 id = Add(db, table, {{"EndDate", text}});
            // EndDay, EndYear and EndStamp; all NULL without a day.
            const QString expected = day.isNull() ? QStringLiteral("NULL|NULL|NULL")
                                                  : day + u'|' + day.left(4) + u'|' + day + u' ' +
                                                        text.toString().mid(10, 8);
            EXPECT_EQ(Rows(db,
                           QStringLiteral("SELECT EndDay, EndYear, EndStamp FROM ") + Ident(table) +
                               QStringLiteral(" WHERE rowid = ?"),
                           {id}),
                      QStringList{expected});
        }
    }

    for (const QString table : {"Auctions", "Bids"}) {
        EXPECT_TRUE(TableSql(db, table).contains(lw::core::EndDaySql("StartDate")));
        const qint64 id = Add(db, table, {{"StartDate", "05/31/00"}});
        EXPECT_EQ(Rows(db,
                       QStringLiteral("SELECT StartDay FROM ") + Ident(table) +
                           QStringLiteral(" WHERE rowid = ?"),
                       {id}),
                  QStringList{"2000-05-31"})
            << table.toStdString();
    }

    // The statement's year comes from AccountDate, else from Date.
    const QString sql = TableSql(db, "AccountInfo");
    EXPECT_TRUE(sql.contains(lw::core::EndDaySql("AccountDate")));
    EXPECT_TRUE(sql.contains(lw::core::EndDaySql("Date")));
    const qint64 both =
        Add(db, "AccountInfo", {{"AccountDate", "06/07/00 12:04:00"}, {"Date", "01/02/01"}});
    const qint64 dateOnly = Add(db, "AccountInfo", {{"Date", "01/02/01"}});
    const QString days =
        QStringLiteral("SELECT AccountDay, DateDay, AccountYear FROM AccountInfo WHERE rowid = ?");
    EXPECT_EQ(Rows(db, days, {both}), QStringList{"2000-06-07|2001-01-02|2000"});
    EXPECT_EQ(Rows(db, days, {dateOnly}), QStringList{"NULL|2001-01-02|2001"});
}

// --- Saved queries ---------------------------------------------------------

TEST(schemaSavedQueries, CurrentAndArchivedSplitAtTodaysDate) {
    Database db = FreshStore();
    const QString ann = "Ann";
    const std::vector<std::pair<QString, QVariant>> ends = {
        {"1-last-year", EndDate(Today().addYears(-1))},
        {"2-yesterday", EndDate(Today().addDays(-1))},
        {"3-today", EndDate(Today())},
        {"4-tomorrow", EndDate(Today().addDays(1))},
        {"5-no-date", "n/a"},
        {"6-null", QVariant()},
    };
    for (const QString table : {"Auctions", "Bids"}) {
        for (const auto& [item, end] : ends) {
            Add(db, table, {{"UserName", ann}, {"ItemNumber", item}, {"EndDate", end}});
        }
    }
    const QStringList archived = {"1-last-year", "2-yesterday"};
    const QStringList current = {"3-today", "4-tomorrow", "5-no-date", "6-null"};
    EXPECT_EQ(Items(db, "ArchivedAuctions", ann), archived);
    EXPECT_EQ(Items(db, "CurrentAuctions", ann), current);
    EXPECT_EQ(Items(db, "ArchivedBids", ann), archived);
    EXPECT_EQ(Items(db, "CurrentBids", ann), current);

    // The split views carry every column of their table, under its name.
    EXPECT_EQ(Columns(db, "CurrentAuctions"), Columns(db, "Auctions"));
    EXPECT_EQ(Columns(db, "ArchivedBids"), Columns(db, "Bids"));

    // A winner row of a multi-winner bid takes its own end, else its item's.
    Add(db, "DutchBids",
        {{"UserName", ann}, {"ItemNumber", "2-yesterday"}, {"HighBidderName", "ann_buys"}});
    Add(db, "DutchBids",
        {{"UserName", ann},
         {"ItemNumber", "7-own-end"},
         {"HighBidderName", "ann_buys"},
         {"EndDate", EndDate(Today().addDays(3))}});
    EXPECT_EQ(Items(db, "ArchivedDutchBids", ann), QStringList{"2-yesterday"});
    EXPECT_EQ(Items(db, "CurrentDutchBids", ann), QStringList{"7-own-end"});
}

TEST(schemaSavedQueries, AnalysisCountsEndedSalesThatMetTheReserve) {
    Database db = FreshStore();
    const QString ann = "Ann";
    const QDate yesterday = Today().addDays(-1);
    auto sale = [&](const QString& item, const QDate& end, const QString& high,
                    const QString& reserve, const QString& bidder) {
        Add(db, "Auctions",
            {{"UserName", ann},
             {"ItemNumber", item},
             {"EndDate", EndDate(end)},
             {"HighBid", high},
             {"ReserveBid", reserve},
             {"HighBidderName", bidder}});
    };
    sale("a-met", yesterday, "$20.00", "$10.00", "bob");
    sale("b-no-reserve", yesterday.addYears(-1), "$5.00", "-", "cy");
    sale("c-short", yesterday, "$5.00", "$10.00", "bob");
    sale("d-no-bid", yesterday, "-", "n/a", "n/a");
    sale("e-running", Today().addDays(1), "$50.00", "-", "bob");
    sale("f-dutch", yesterday, "$3.00", "-", "Dutch Auction");
    EXPECT_EQ(Items(db, "Auctions Query", ann), (QStringList{"a-met", "b-no-reserve"}));

    EXPECT_EQ(Rows(db,
                   QStringLiteral("SELECT Year, SUM(HighBidNum) FROM \"Auctions Query\" WHERE "
                                  "UserName = ? GROUP BY Year ORDER BY Year"),
                   {ann}),
              (QStringList{QString::number(yesterday.year() - 1) + QStringLiteral("|5"),
                           QString::number(yesterday.year()) + QStringLiteral("|20")}));

    // The multi-winner sale counts through its winners: price times quantity.
    auto winner = [&](const QString& name, const QVariant& quantity, const QString& price) {
        Add(db, "Dutch",
            {{"UserName", ann},
             {"ItemNumber", "f-dutch"},
             {"HighBidderName", name},
             {"Quantity", quantity},
             {"HighBid", price}});
    };
    winner("dee", "2", "$3.50");
    winner("eve", QVariant(), "$4.00");
    // A winner without a quantity took one.
    const QString year = QString::number(yesterday.year());
    EXPECT_EQ(Rows(db,
                   QStringLiteral("SELECT HighBidderName, HighBidTotal, Year FROM \"Dutch Query\" "
                                  "WHERE UserName = ? ORDER BY HighBidderName"),
                   {ann}),
              (QStringList{QStringLiteral("dee|7|") + year, QStringLiteral("eve|4|") + year}));

    // Bids Query: ended bids only, with their Year.
    Add(db, "Bids",
        {{"UserName", ann},
         {"ItemNumber", "won"},
         {"Winning", true},
         {"WinningBid", "$8.00"},
         {"EndDate", EndDate(yesterday)}});
    Add(db, "Bids",
        {{"UserName", ann},
         {"ItemNumber", "running"},
         {"Winning", true},
         {"EndDate", EndDate(Today().addDays(1))}});
    EXPECT_EQ(Items(db, "Bids Query", ann), QStringList{"won"});
    EXPECT_EQ(Rows(db, QStringLiteral("SELECT Year FROM \"Bids Query\"")), QStringList{year});

    // AccountInfo Query: Year of the statement line, and the sums by type.
    auto line = [&](const QString& date, const QString& type, const QString& debit) {
        Add(db, "AccountInfo",
            {{"UserName", ann}, {"AccountDate", date}, {"AccountType", type}, {"Debit", debit}});
    };
    line("06/07/00 10:00:00", "Insertion fee", "($0.25)");
    line("06/09/00 10:00:00", "Insertion fee", "($1,000.00)");
    line("01/09/01 10:00:00", "Insertion fee", "($2.00)");
    line("06/08/00 10:00:00", "Final Auction Value fee", "($3.00)");
    // Date falls back to AccountDate.
    EXPECT_EQ(Rows(db,
                   QStringLiteral("SELECT SUM(DebitNum), MIN(\"Date\") FROM \"AccountInfo Query\" "
                                  "WHERE Year = ? AND AccountType = ?"),
                   {2000, "insertion FEE"}),
              QStringList{"-1000.25|06/07/00 10:00:00"});
}

TEST(schemaSavedQueries, PendingTasksAreEndedItemsNotYetComplete) {
    Database db = FreshStore();
    const QString ann = "Ann";
    const QDate yesterday = Today().addDays(-1);
    auto sale = [&](const QString& item, const QDate& end, const QString& bidder, bool complete,
                    const QString& high = "$10.00", const QString& reserve = "-") {
        Add(db, "Auctions",
            {{"UserName", ann},
             {"ItemNumber", item},
             {"ItemTitle", QString(QStringLiteral("Title of ") + item)},
             {"EndDate", EndDate(end)},
             {"HighBid", high},
             {"ReserveBid", reserve},
             {"NumberBids", bidder == "n/a" ? "-" : "3"},
             {"HighBidderName", bidder},
             {"ToDoComplete", complete}});
    };
    sale("p1", yesterday, "bob", false);
    sale("p2", yesterday, "bob", true);
    sale("p3", Today(), "cy", false);
    sale("p4", Today().addDays(1), "cy", false);
    sale("p5", yesterday, "n/a", false, "-");
    sale("p6", yesterday, "bob", false, "$5.00", "$9.00");
    sale("p7", yesterday, "Dutch Auction", false);
    Add(db, "Auctions",
        {{"UserName", "Ben"},
         {"ItemNumber", "q1"},
         {"EndDate", EndDate(yesterday)},
         {"HighBidderName", "bob"}});

    const QString pendingSales = "All Auctions with Pending Tasks";
    EXPECT_EQ(Items(db, pendingSales, ann), (QStringList{"p1", "p3"}))
        << "ended (today too), sold, not complete; a Dutch parent comes through its winners";
    EXPECT_EQ(Items(db, pendingSales, "Ben"), QStringList{"q1"});
    EXPECT_TRUE(Columns(db, pendingSales).contains("EmailEndOfAuction"));

    for (const QString bidder : {"dee", "eve"}) {
        Add(db, "Dutch",
            {{"UserName", ann},
             {"ItemNumber", "p7"},
             {"HighBidderName", bidder},
             {"HighBid", "$2.50"},
             {"ToDoComplete", bidder == "eve"}});
    }
    // The winner's own price; a finished winner leaves, the other stays.
    EXPECT_EQ(Rows(db,
                   QStringLiteral("SELECT ItemNumber, HighBidderName, ItemTitle, HighBid, EndDate "
                                  "FROM \"All Auctions with Pending Tasks (Dutch)\" WHERE "
                                  "UserName = ?"),
                   {ann}),
              QStringList{QStringLiteral("p7|dee|Title of p7|$2.50|") + EndDate(yesterday)});

    // The winner's packing list and notes read Dutch Details.
    EXPECT_EQ(Rows(db,
                   QStringLiteral("SELECT ItemTitle, HighBid, AuctionNotes FROM \"Dutch Details\" "
                                  "WHERE ItemNumber = ? AND HighBidderName = ?"),
                   {"p7", "EVE "}),
              QStringList{"Title of p7|$2.50|NULL"});

    // Narrower filters keep to their own condition.
    db.Prepare(QStringLiteral("UPDATE Auctions SET OrderPaymentMethod = 0 WHERE ItemNumber = ?"))
        .Bind(1, "p3")
        .Run();
    db.Prepare(QStringLiteral("UPDATE Auctions SET ShippingDate = ? WHERE ItemNumber = ?"))
        .BindAll("06/08/00", "p1")
        .Run();
    EXPECT_EQ(Items(db, "Auctions Awaiting Payment", ann), QStringList{"p1"});
    EXPECT_EQ(Items(db, "Auctions Not Yet Shipped", ann), QStringList{"p3"});

    // Partner history: archived sales with a buyer, one row per Dutch winner.
    EXPECT_EQ(Rows(db,
                   QStringLiteral("SELECT ItemNumber, HighBidderName FROM \"Completed Auctions\" "
                                  "WHERE UserName = ? ORDER BY ItemNumber, HighBidderName"),
                   {ann}),
              (QStringList{"p1|bob", "p2|bob", "p7|dee", "p7|eve"}));

    // Bids: won, ended, not complete; a multi-winner item through its twin.
    Add(db, "UserSites", {{"UserName", ann}, {"AuctionSiteFlag", 0}, {"UserID", "ann_buys"}});
    auto bid = [&](const QString& item, bool winning, bool complete, const QString& high) {
        Add(db, "Bids",
            {{"UserName", ann},
             {"ItemNumber", item},
             {"ItemTitle", QString(QStringLiteral("Title of ") + item)},
             {"SellerName", "sal"},
             {"EndDate", EndDate(yesterday)},
             {"Winning", winning},
             {"HighBidderName", high},
             {"ToDoComplete", complete}});
    };
    bid("b1", true, false, "ann_buys");
    bid("b2", false, false, "zed");
    bid("b3", true, true, "ann_buys");
    bid("b4", true, false, "Dutch Auction");
    EXPECT_EQ(Items(db, "All Bids with Pending Tasks", ann), QStringList{"b1"});
    EXPECT_EQ(Items(db, "Completed Bids", ann), (QStringList{"b1", "b3", "b4"}));

    for (const auto& [name, price] : {std::pair{"zed", "$2.10"}, std::pair{"ANN_BUYS", "$2.00"}}) {
        Add(db, "DutchBids",
            {{"UserName", ann},
             {"ItemNumber", "b4"},
             {"HighBidderName", name},
             {"HighBid", price}});
    }
    auto dutchBids = db.Prepare(QStringLiteral(
        "SELECT * FROM \"All Bids with Pending Tasks (Dutch)\" WHERE UserName = ? AND "
        "AuctionSiteFlag = 0 AND SellerName = ?"));
    dutchBids.BindAll(ann, "SAL");
    ASSERT_TRUE(dutchBids.Step());
    EXPECT_EQ(dutchBids.Text("ItemTitle"), "Title of b4");
    EXPECT_EQ(dutchBids.Text("Successful Dutch Bids.HighBid"), "$2.00")
        << "the user's own share, under the qualified name";
    EXPECT_FALSE(dutchBids.Step()) << "other winners of the item are not the user's";
}

// --- Seed rows -------------------------------------------------------------

TEST(schemaSeed, TaskTreesHoldEveryTaskCodeOnItsSide) {
    Database db = FreshStore();
    struct Node {
        QString key, relative, function, parameter, description;
        QString param[5];
        QVariant relationship;
        int image = 0;
        bool folder = false;
    };
    QMap<bool, std::vector<Node>> sides;
    auto rows = db.Prepare(QStringLiteral("SELECT * FROM ToDo ORDER BY rowid"));
    while (rows.Step()) {
        Node node;
        node.key = rows.Text("Key");
        node.relative = rows.Text("Relative");
        node.relationship = rows.Value("Relationship");
        node.function = rows.Text("Function");
        node.parameter = rows.Text("Parameter");
        node.description = rows.Text("Description");
        for (int i = 0; i < 5; ++i) {
            node.param[i] = rows.Text(QStringLiteral("AdditionalParam%1").arg(i + 1));
        }
        node.image = static_cast<int>(rows.Int("StartImage"));
        node.folder = rows.Flag("isFolder");
        sides[rows.Flag("Auction?")].push_back(node);
    }
    ASSERT_EQ(sides.size(), 2);

    // Code, side, and the Function and Parameter that the dispatch and the
    // icons rely on; empty is not checked.
    enum Side { kBoth, kSales, kBids };
    struct Code {
        const char* key;
        Side side;
        const char *function, *parameter;
    };
    const Code codes[] = {{"SUM", kBoth, "", ""},
                          {"SUMS", kBoth, "BidSummary", ""},
                          {"SUMN", kBoth, "NoteEntry", ""},
                          {"PRA", kBoth, "Entry", "Address"},
                          {"FBL", kBoth, "Entry", "FeedbackLeft"},
                          {"FBR", kBoth, "Entry", "FeedbackReceived"},
                          {"PRI", kSales, "Entry", "PaymentInfo"},
                          {"SHP", kSales, "Packing", ""},
                          {"SHS", kSales, "Entry", "Shipping"},
                          {"SHE", kSales, "Email", ""},
                          {"SHR", kSales, "", ""},
                          {"PRP", kBids, "Entry", "PaymentInfo"},
                          {"PRS", kBids, "Packing", ""},
                          {"IRR", kBids, "Entry", "ItemReceived"},
                          {"IRE", kBids, "Email", ""}};
    const QSet<QString> functions = {"Email",    "EmailEntry", "Packing", "NoteEntry",
                                     "ItemInfo", "BidSummary", "Entry"};
    const QSet<QString> panels = {"FeedbackLeft", "FeedbackReceived", "Shipping",
                                  "ItemReceived", "Address",          "PaymentInfo"};
    const QSet<QString> saleTemplates = {"Congratulations", "Request Feedback", "Item Shipped",
                                         "Payment Received"};
    const QSet<QString> bidTemplates = {"Item Received", "Please Send Payment Info",
                                        "Congratulations Reply", "Request Feedback (Bid)"};
    const auto columnSet = [&db](const char* table) {
        const QStringList list = Columns(db, table);
        return QSet<QString>(list.cbegin(), list.cend());
    };
    const QSet<QString> saleColumns = columnSet("Auctions") & columnSet("Dutch");
    const QSet<QString> bidColumns = columnSet("Bids");

    QSet<QString> mailCodes;
    for (bool isSale : {true, false}) {
        const std::vector<Node>& nodes = sides[isSale];
        const std::string side = isSale ? "sales" : "bids";
        // The columns a mail of this side names: on the sales side, of a sale
        // and of a winner of a multi-winner sale both.
        const QSet<QString>& columns = isSale ? saleColumns : bidColumns;
        QMap<QString, const Node*> byKey;
        int roots = 0;
        for (const Node& node : nodes) {
            EXPECT_FALSE(byKey.contains(node.key))
                << side << " key twice: " << node.key.toStdString();
            if (node.relative.isEmpty()) {
                ++roots;
                EXPECT_EQ(node.key, "SUM") << side;
                EXPECT_TRUE(node.relationship.isNull());
            } else {
                EXPECT_TRUE(byKey.contains(node.relative))
                    << side << " " << node.key.toStdString() << " comes before its parent";
                EXPECT_EQ(node.relationship.toInt(), 4) << side << " " << node.key.toStdString();
            }
            byKey.insert(node.key, &node);
            EXPECT_TRUE(functions.contains(node.function)) << node.key.toStdString();
            EXPECT_FALSE(node.description.isEmpty()) << node.key.toStdString();
            EXPECT_GT(node.image, 0) << node.key.toStdString();
            if (node.folder) {
                EXPECT_EQ(node.image, 8) << "a folder starts open: " << node.key.toStdString();
            }
            if (node.function == "Entry") {
                EXPECT_TRUE(panels.contains(node.parameter)) << node.key.toStdString();
            }
            if (node.function == "Email") {
                EXPECT_EQ(node.parameter.size(), 3) << node.key.toStdString();
                EXPECT_FALSE(mailCodes.contains(node.parameter))
                    << "the outbox finds a mail's row by its code alone: "
                    << node.parameter.toStdString();
                mailCodes.insert(node.parameter);
                EXPECT_TRUE((isSale ? saleTemplates : bidTemplates).contains(node.param[0]))
                    << side << " " << node.key.toStdString() << " template "
                    << node.param[0].toStdString();
                for (int i : {1, 2}) {
                    EXPECT_TRUE(columns.contains(node.param[i])) << node.param[i].toStdString();
                }
            }
            if (node.function == "EmailEntry") {
                for (int i : {0, 1, 2}) {
                    EXPECT_FALSE(node.param[i].isEmpty()) << node.key.toStdString();
                }
                for (int i : {3, 4}) {
                    EXPECT_TRUE(columns.contains(node.param[i])) << node.param[i].toStdString();
                }
            }
        }
        EXPECT_EQ(roots, 1) << side;

        for (const Code& code : codes) {
            if (code.side == (isSale ? kBids : kSales)) {
                EXPECT_FALSE(byKey.contains(code.key)) << side << " has " << code.key;
                continue;
            }
            ASSERT_TRUE(byKey.contains(code.key)) << side << " lacks " << code.key;
            const Node* node = byKey.value(code.key);
            if (*code.function != '\0') {
                EXPECT_EQ(node->function, code.function) << code.key;
            }
            if (*code.parameter != '\0') {
                EXPECT_EQ(node->parameter, code.parameter) << code.key;
            }
        }
        // The removal rule's mail tasks are mail rows.
        const QString removal = isSale ? "SHR" : "IRE";
        ASSERT_TRUE(byKey.contains(removal));
        EXPECT_TRUE(byKey.value(removal)->function.startsWith("Email"));
    }

    // The sales pop-up lists the mail rows in table order, Congratulations first.
    const auto firstMail = std::find_if(sides[true].cbegin(), sides[true].cend(),
                                        [](const Node& n) { return n.function == "Email"; });
    ASSERT_NE(firstMail, sides[true].cend());
    EXPECT_EQ(firstMail->description, "Congratulations");
    EXPECT_EQ(firstMail->param[1], "EmailEndOfAuction")
        << "the multi-item mail asks the pending view for this flag";
}

TEST(schemaSeed, EveryFilterNamesItsSavedQueries) {
    Database db = FreshStore();
    const QStringList views = Objects(db, "view");
    QMap<bool, QStringList> sides;
    auto filters = db.Prepare(
        QStringLiteral("SELECT * FROM \"ToDo Filters\" WHERE AllUsers = 1 ORDER BY rowid"));
    while (filters.Step()) {
        const QString name = filters.Text("FilterName");
        sides[filters.Flag("AuctionFilter")] << name;
        for (const QString& view : QStringList{name, name + QStringLiteral(" (Dutch)")}) {
            ASSERT_TRUE(views.contains(view)) << view.toStdString();
            const QStringList columns = Columns(db, view);
            for (const QString needed : {"UserName", "ItemNumber", "ItemTitle", "EndDate"}) {
                EXPECT_TRUE(columns.contains(needed))
                    << view.toStdString() << " lacks " << needed.toStdString();
            }
        }
        if (filters.Flag("AuctionFilter")) {
            EXPECT_TRUE(Columns(db, name + QStringLiteral(" (Dutch)")).contains("HighBidderName"));
        }
    }
    ASSERT_FALSE(sides[true].isEmpty());
    ASSERT_FALSE(sides[false].isEmpty());
    EXPECT_EQ(sides[true].first(), "All Auctions with Pending Tasks")
        << "row 0 is selected when the tree is built";
    EXPECT_EQ(sides[false].first(), "All Bids with Pending Tasks");
}

TEST(schemaSeed, SystemRowsAreInPlace) {
    Database db = FreshStore();
    auto global = db.Prepare(QStringLiteral("SELECT * FROM Global"));
    ASSERT_TRUE(global.Step());
    EXPECT_TRUE(global.Flag("AutoUpdateTimeLeft"));
    EXPECT_EQ(global.Int("TimeLeftInterval"), 65535);
    EXPECT_TRUE(global.IsNull("eBayCorrection"));
    EXPECT_FALSE(global.Step()) << "one row";

    // One row: no date yet, the counters at zero.
    EXPECT_EQ(
        Rows(db, QStringLiteral(
                     "SELECT TrackingDate, AuctionsPosted, Updates, RubyLaneClick FROM Tracking")),
        QStringList{"NULL|0|0|0"});

    auto creator = db.Prepare(QStringLiteral("SELECT * FROM AuctionCreator WHERE ID = 1"));
    ASSERT_TRUE(creator.Step());
    EXPECT_EQ(creator.Text("ACType"), "Default");
    EXPECT_FALSE(creator.Flag("Outbox"));
    EXPECT_EQ(creator.Text("PDCaption0"), "Condition:");
    const qint64 draft = Add(db, "AuctionCreator", {{"ACType", "Draft"}});
    EXPECT_EQ(draft, 2) << "documents are numbered after the system row";

    EXPECT_EQ(Rows(db, QStringLiteral("SELECT FolderName, FolderParent FROM InventoryFolders "
                                      "WHERE FolderID = 1")),
              QStringList{"General|0"});
    EXPECT_EQ(Add(db, "InventoryFolders", {{"FolderName", "Lamps"}}), 2);

    auto metas = db.Prepare(
        QStringLiteral("SELECT MetaCategoryName, \"MetaCategoryName Field\" FROM MetaCategories"));
    QSet<QString> names;
    while (metas.Step()) {
        EXPECT_FALSE(metas.Text(0).isEmpty());
        EXPECT_EQ(metas.Text(0), metas.Text(1)) << "two names of one value";
        EXPECT_FALSE(names.contains(metas.Text(0).toLower()));
        names.insert(metas.Text(0).toLower());
    }
    EXPECT_GE(names.size(), 10);
}
