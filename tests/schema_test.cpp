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
#include <utility>
#include <vector>

#include "core/store.h"
#include "core/text.h"
#include "tests/support/test_support.h"

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
    const QString schema = Shipped(QStringLiteral("schema.sql"));
    const QString seed = Shipped(QStringLiteral("seed.sql"));
    EXPECT_FALSE(schema.isEmpty());
    EXPECT_FALSE(seed.isEmpty());
    Database db = Database::Open(QStringLiteral(":memory:"), Database::Mode::Create);
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

QStringList Objects(Database& db, const QString& type) {
    auto s = db.Prepare(QStringLiteral(
        "SELECT name FROM sqlite_master WHERE type = ? AND name NOT LIKE 'sqlite%' ORDER BY name"));
    s.Bind(1, type);
    QStringList names;
    while (s.Step()) {
        names << s.Text(0);
    }
    return names;
}

// Column names of a table or view, generated columns included.
QStringList Columns(Database& db, const QString& object) {
    auto s = db.Prepare(QStringLiteral("SELECT name FROM pragma_table_xinfo(?) ORDER BY cid"));
    s.Bind(1, object);
    QStringList names;
    while (s.Step()) {
        names << s.Text(0);
    }
    return names;
}

QString TableSql(Database& db, const QString& table) {
    auto s = db.Prepare(QStringLiteral("SELECT sql FROM sqlite_master WHERE name = ?"));
    s.Bind(1, table);
    return s.Step() ? s.Text(0) : QString();
}

qint64 Add(Database& db, const QString& table, const Row& row) {
    QStringList names;
    QStringList marks;
    for (const auto& [name, value] : row) {
        names << Ident(name);
        marks << QStringLiteral("?");
    }
    auto insert = db.Prepare(QStringLiteral("INSERT INTO ") + Ident(table) + QStringLiteral(" (") +
                             names.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (") +
                             marks.join(QStringLiteral(", ")) + QStringLiteral(")"));
    int index = 1;
    for (const auto& [name, value] : row) {
        insert.Bind(index++, value);
    }
    insert.Run();
    return db.LastInsertId();
}

// The item numbers a saved query (or table) yields for a user, sorted.
QStringList Items(Database& db, const QString& object, const QString& user) {
    auto s = db.Prepare(QStringLiteral("SELECT ItemNumber FROM ") + Ident(object) +
                        QStringLiteral(" WHERE UserName = ? ORDER BY ItemNumber"));
    s.Bind(1, user);
    QStringList items;
    while (s.Step()) {
        items << s.Text(0);
    }
    return items;
}

// An end date as the update run writes it.
QString EndDate(const QDate& day) {
    return day.toString(QStringLiteral("MM/dd/yy")) + QStringLiteral(", 12:04:00 PST");
}

QDate Today() {
    return QDate::currentDate();
}

const QStringList kTables = {QStringLiteral("Auctions"),
                             QStringLiteral("Bids"),
                             QStringLiteral("Dutch"),
                             QStringLiteral("DutchBids"),
                             QStringLiteral("AccountInfo"),
                             QStringLiteral("Users"),
                             QStringLiteral("UserSites"),
                             QStringLiteral("Global"),
                             QStringLiteral("Tracking"),
                             QStringLiteral("Buyers"),
                             QStringLiteral("Sellers"),
                             QStringLiteral("ToDo"),
                             QStringLiteral("ToDo Filters"),
                             QStringLiteral("Urls"),
                             QStringLiteral("eBayCategories"),
                             QStringLiteral("MetaCategories"),
                             QStringLiteral("FavoriteCategories"),
                             QStringLiteral("Protocols"),
                             QStringLiteral("AuctionCreator"),
                             QStringLiteral("Inventory"),
                             QStringLiteral("InventoryFolders"),
                             QStringLiteral("Transactions")};

const QStringList kSavedQueries = {QStringLiteral("CurrentAuctions"),
                                   QStringLiteral("ArchivedAuctions"),
                                   QStringLiteral("CurrentBids"),
                                   QStringLiteral("ArchivedBids"),
                                   QStringLiteral("CurrentDutchBids"),
                                   QStringLiteral("ArchivedDutchBids"),
                                   QStringLiteral("Completed Auctions"),
                                   QStringLiteral("Completed Bids"),
                                   QStringLiteral("Dutch Details"),
                                   QStringLiteral("All Auctions with Pending Tasks"),
                                   QStringLiteral("All Auctions with Pending Tasks (Dutch)"),
                                   QStringLiteral("All Bids with Pending Tasks"),
                                   QStringLiteral("All Bids with Pending Tasks (Dutch)"),
                                   QStringLiteral("Successful Dutch Bids"),
                                   QStringLiteral("AccountInfo Query"),
                                   QStringLiteral("Bids Query"),
                                   QStringLiteral("Auctions Query"),
                                   QStringLiteral("Dutch Query")};

}  // namespace

// --- Objects ---------------------------------------------------------------

TEST(schemaObjects, EveryTableAndSavedQueryExistsAndAnswers) {
    Database db = FreshStore();
    const QStringList tables = Objects(db, QStringLiteral("table"));
    const QStringList views = Objects(db, QStringLiteral("view"));
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
}

TEST(schemaObjects, TheFilesLeaveProtocolsAndPragmasToTheProgram) {
    Database db = FreshStore();
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Protocols")), 0);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA user_version")), 0);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA application_id")), 0);
}

TEST(schemaObjects, EveryTextColumnComparesWithoutCase) {
    Database db = FreshStore();
    for (const QString& table : Objects(db, QStringLiteral("table"))) {
        auto s = db.Prepare(
            QStringLiteral("SELECT name, type, hidden FROM pragma_table_xinfo(?) ORDER BY cid"));
        s.Bind(1, table);
        while (s.Step()) {
            const bool generated = s.Int(QStringLiteral("hidden")) != 0;
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
    const QString shell = QStringLiteral("/usr/bin/sqlite3");
    if (!QFile::exists(shell)) {
        GTEST_SKIP() << "no sqlite3 shell on this machine";
    }
    lw::test::TempRoot root;
    const QString path = root.File(QStringLiteral("Lotwright.db"));
    QStringList objects;
    {
        // Made with the bare library, so that no function of the program is
        // registered while the schema is created either.
        sqlite3* raw = nullptr;
        ASSERT_EQ(sqlite3_open(QFile::encodeName(path).constData(), &raw), SQLITE_OK);
        for (const QString& file : {QStringLiteral("schema.sql"), QStringLiteral("seed.sql")}) {
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
        objects = Objects(db, QStringLiteral("table")) + Objects(db, QStringLiteral("view"));
    }
    QString script;
    for (const QString& name : objects) {
        script +=
            QStringLiteral("SELECT 'answer', COUNT(*) FROM ") + Ident(name) + QStringLiteral(";\n");
    }
    script +=
        QStringLiteral("SELECT 'sale', HighBidNum, EndDay, EndStamp FROM ArchivedAuctions;\n");
    QProcess process;
    process.start(shell, {QStringLiteral("-bail"), path});
    ASSERT_TRUE(process.waitForStarted());
    process.write(script.toUtf8());
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(30000));
    const QString out = QString::fromUtf8(process.readAllStandardOutput());
    const QString err = QString::fromUtf8(process.readAllStandardError());
    EXPECT_EQ(process.exitCode(), 0) << err.toStdString();
    EXPECT_TRUE(err.isEmpty()) << err.toStdString();
    EXPECT_EQ(out.count(QStringLiteral("answer|")), objects.size()) << out.toStdString();
    EXPECT_TRUE(out.contains(QStringLiteral("sale|1234.5|2000-06-07|2000-06-07 12:04:00")))
        << out.toStdString();
}

// --- Text ------------------------------------------------------------------

TEST(schemaText, TrimmedBoundValuesFindTheirRowWhateverTheCase) {
    Database db = FreshStore();
    Add(db, QStringLiteral("Auctions"),
        {{QStringLiteral("UserName"), QStringLiteral("ABC")},
         {QStringLiteral("ItemNumber"), QStringLiteral("123")},
         {QStringLiteral("ItemTitle"), QStringLiteral("Brass Lamp")},
         {QStringLiteral("EndDate"), EndDate(Today().addDays(2))}});
    auto byNumber =
        db.Prepare(QStringLiteral("SELECT ItemTitle FROM Auctions WHERE ItemNumber = ?"));
    byNumber.Bind(1, QStringLiteral("123 "));
    ASSERT_TRUE(byNumber.Step()) << "the store trims the bound value and the key matches";
    EXPECT_EQ(byNumber.Text(0), QStringLiteral("Brass Lamp"));

    EXPECT_EQ(Items(db, QStringLiteral("Auctions"), QStringLiteral("aBc")),
              QStringList{QStringLiteral("123")});
    // The sales query puts a blank behind the user name: it still finds the row.
    EXPECT_EQ(Items(db, QStringLiteral("CurrentAuctions"), QStringLiteral("abc ")),
              QStringList{QStringLiteral("123")});
    auto byTitle = db.Prepare(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemTitle = ?"));
    byTitle.Bind(1, QStringLiteral("BRASS lamp"));
    ASSERT_TRUE(byTitle.Step());
    EXPECT_EQ(byTitle.Value(0).toLongLong(), 1);

    auto node = db.Prepare(
        QStringLiteral("SELECT Description FROM ToDo WHERE \"Key\" = ? AND \"Auction?\" = 1"));
    node.Bind(1, QStringLiteral("sum "));
    EXPECT_TRUE(node.Step());
}

TEST(schemaText, KeysIgnoreCaseAndAllowRowsWithoutAKey) {
    Database db = FreshStore();
    const Row sale = {{QStringLiteral("UserName"), QStringLiteral("Ann")},
                      {QStringLiteral("ItemNumber"), QStringLiteral("A7")},
                      {QStringLiteral("AuctionSiteFlag"), 0}};
    Add(db, QStringLiteral("Auctions"), sale);
    EXPECT_THROW(Add(db, QStringLiteral("Auctions"),
                     {{QStringLiteral("UserName"), QStringLiteral("ann")},
                      {QStringLiteral("ItemNumber"), QStringLiteral("a7")},
                      {QStringLiteral("AuctionSiteFlag"), 0}}),
                 StoreError);
    // The same number for another user or site is another row.
    Add(db, QStringLiteral("Auctions"),
        {{QStringLiteral("UserName"), QStringLiteral("Ben")},
         {QStringLiteral("ItemNumber"), QStringLiteral("A7")}});
    Add(db, QStringLiteral("Auctions"),
        {{QStringLiteral("UserName"), QStringLiteral("Ann")},
         {QStringLiteral("ItemNumber"), QStringLiteral("A7")},
         {QStringLiteral("AuctionSiteFlag"), 1}});
    // An update run may write rows with no item number; the repair deletes them.
    for (const QString& table : {QStringLiteral("Auctions"), QStringLiteral("Bids")}) {
        Add(db, table, {{QStringLiteral("UserName"), QStringLiteral("Ann")}});
        Add(db, table, {{QStringLiteral("UserName"), QStringLiteral("Ann")}});
    }
    EXPECT_EQ(
        db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemNumber IS NULL")), 2);
    // A row added without a site is on site 0, and a post writes no creator ID.
    EXPECT_EQ(db.ScalarInt(QStringLiteral(
                  "SELECT COUNT(*) FROM Auctions WHERE UserName = 'Ben' AND AuctionSiteFlag = 0 "
                  "AND AuctionCreatorID = 0 AND InventoryID = 0")),
              1);

    Add(db, QStringLiteral("Dutch"),
        {{QStringLiteral("ItemNumber"), QStringLiteral("9")},
         {QStringLiteral("UserName"), QStringLiteral("Ann")},
         {QStringLiteral("HighBidderName"), QStringLiteral("Zed")}});
    EXPECT_THROW(Add(db, QStringLiteral("Dutch"),
                     {{QStringLiteral("ItemNumber"), QStringLiteral("9")},
                      {QStringLiteral("UserName"), QStringLiteral("ANN")},
                      {QStringLiteral("HighBidderName"), QStringLiteral("zed")}}),
                 StoreError);
    Add(db, QStringLiteral("Users"), {{QStringLiteral("UserName"), QStringLiteral("Ann")}});
    EXPECT_THROW(
        Add(db, QStringLiteral("Users"), {{QStringLiteral("UserName"), QStringLiteral("ANN")}}),
        StoreError);
}

TEST(schemaText, ColumnNamesSpelledEitherWayAreOneColumn) {
    Database db = FreshStore();
    auto users = db.Prepare(
        QStringLiteral("INSERT INTO Users (UserName, Pzipcode, zipcode) VALUES (?, ?, ?)"));
    users.BindAll(QStringLiteral("Ann"), QStringLiteral("45402"), QStringLiteral("10001")).Run();
    auto read = db.Prepare(QStringLiteral("SELECT PZIPCode, Pzipcode, ZipCode FROM Users"));
    ASSERT_TRUE(read.Step());
    EXPECT_EQ(read.Text(0), QStringLiteral("45402"));
    EXPECT_EQ(read.Text(1), QStringLiteral("45402"));
    EXPECT_EQ(read.Text(2), QStringLiteral("10001"));

    auto site =
        db.Prepare(QStringLiteral("INSERT INTO UserSites (Username, ZipCodePref) VALUES (?, ?)"));
    site.BindAll(QStringLiteral("Ann"), QStringLiteral("Midwest")).Run();
    auto region =
        db.Prepare(QStringLiteral("SELECT ZIPCodePref FROM UserSites WHERE UserName = ?"));
    region.Bind(1, QStringLiteral("ann"));
    ASSERT_TRUE(region.Step());
    EXPECT_EQ(region.Text(0), QStringLiteral("Midwest"));

    // One column per name whatever the spelling, in every table.
    for (const QString& table : kTables) {
        QSet<QString> lower;
        for (const QString& column : Columns(db, table)) {
            EXPECT_FALSE(lower.contains(column.toLower()))
                << table.toStdString() << "." << column.toStdString();
            lower.insert(column.toLower());
        }
    }
    EXPECT_TRUE(Columns(db, QStringLiteral("Users")).contains(QStringLiteral("PZIPCode")));
    EXPECT_TRUE(Columns(db, QStringLiteral("UserSites")).contains(QStringLiteral("ZIPCodePref")));
}

// --- Generated columns -----------------------------------------------------

TEST(schemaNumbers, MoneyColumnsReadByTheNumberRule) {
    Database db = FreshStore();
    const QMap<QString, QStringList> money = {
        {QStringLiteral("Auctions"),
         {"HighBid", "MinimumBid", "ReserveBid", "ItemCost", "ShippingCost", "InsuranceCost",
          "OrderShipping", "OrderTax", "OrderAmountofSale"}},
        {QStringLiteral("Bids"),
         {"HighBid", "MinimumBid", "WinningBid", "MaximumBid", "ItemCost", "ShippingCost",
          "InsuranceCost", "OrderShipping", "OrderTax", "OrderAmountofSale"}},
        {QStringLiteral("Dutch"),
         {"HighBid", "ItemCost", "ShippingCost", "InsuranceCost", "OrderShipping", "OrderTax",
          "OrderAmountofSale"}},
        {QStringLiteral("DutchBids"),
         {"HighBid", "MinimumBid", "MaximumBid", "OrderShipping", "OrderTax"}},
        {QStringLiteral("AccountInfo"), {"Debit", "Credit", "SoldPrice"}},
    };
    const std::vector<std::pair<QVariant, double>> samples = {
        {QStringLiteral("$1,234.50"), 1234.5},
        {QStringLiteral("n/a"), 0.0},
        {QStringLiteral("-"), 0.0},
        {QStringLiteral(""), 0.0},
        {QVariant(), 0.0},
        {QStringLiteral("($5.00)"), -5.0},
        {QStringLiteral("$100.50"), 100.5},
        {QStringLiteral("\u00A312.00"), 12.0},
        {QStringLiteral("\u20AC 1,000"), 1000.0},
        {QStringLiteral("\u00A5500"), 500.0},
        {QStringLiteral("-3.25"), -3.25},
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
                                    QStringLiteral(" FROM ") + Ident(table) +
                                    QStringLiteral(" WHERE rowid = ?"));
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
    const std::vector<std::pair<QVariant, QVariant>> samples = {
        {QStringLiteral("06/07/00, 12:04:00 PST"), QStringLiteral("2000-06-07")},
        {QStringLiteral("12/31/97, 23:59:59 PST"), QStringLiteral("1997-12-31")},
        {QStringLiteral("03/04/96, 08:00:00 PST"), QStringLiteral("2096-03-04")},  // pivot 97
        {QStringLiteral("n/a"), QVariant()},
        {QStringLiteral("6/7/00, 12:04:00 PST"), QVariant()},
        {QVariant(), QVariant()},
    };
    for (const QString& table :
         {QStringLiteral("Auctions"), QStringLiteral("Bids"), QStringLiteral("DutchBids")}) {
        EXPECT_TRUE(TableSql(db, table).contains(
            QStringLiteral("EndDay TEXT GENERATED ALWAYS AS (") +
            lw::core::EndDaySql(QStringLiteral("EndDate")) + QStringLiteral(") STORED")))
            << table.toStdString();
        for (const auto& [text, day] : samples) {
            const qint64 id = Add(db, table, {{QStringLiteral("EndDate"), text}});
            auto s = db.Prepare(QStringLiteral("SELECT EndDay, EndYear, EndStamp FROM ") +
                                Ident(table) + QStringLiteral(" WHERE rowid = ?"));
            s.Bind(1, id);
            ASSERT_TRUE(s.Step());
            const std::string what =
                table.toStdString() + " of '" + text.toString().toStdString() + "'";
            if (day.isNull()) {
                EXPECT_TRUE(s.IsNull(0)) << what;
                EXPECT_TRUE(s.IsNull(1)) << what;
                EXPECT_TRUE(s.IsNull(2)) << what;
                continue;
            }
            EXPECT_EQ(s.Text(0), day.toString()) << what;
            EXPECT_EQ(s.Value(1).toLongLong(), day.toString().left(4).toLongLong()) << what;
            EXPECT_EQ(s.Text(2), day.toString() + QLatin1Char(' ') + text.toString().mid(10, 8))
                << what;
        }
    }

    for (const QString& table : {QStringLiteral("Auctions"), QStringLiteral("Bids")}) {
        EXPECT_TRUE(TableSql(db, table).contains(lw::core::EndDaySql(QStringLiteral("StartDate"))));
        const qint64 id =
            Add(db, table, {{QStringLiteral("StartDate"), QStringLiteral("05/31/00")}});
        auto s = db.Prepare(QStringLiteral("SELECT StartDay FROM ") + Ident(table) +
                            QStringLiteral(" WHERE rowid = ?"));
        s.Bind(1, id);
        ASSERT_TRUE(s.Step());
        EXPECT_EQ(s.Text(0), QStringLiteral("2000-05-31")) << table.toStdString();
    }

    // The statement's year comes from AccountDate, else from Date.
    const QString sql = TableSql(db, QStringLiteral("AccountInfo"));
    EXPECT_TRUE(sql.contains(lw::core::EndDaySql(QStringLiteral("AccountDate"))));
    EXPECT_TRUE(sql.contains(lw::core::EndDaySql(QStringLiteral("Date"))));
    const qint64 both = Add(db, QStringLiteral("AccountInfo"),
                            {{QStringLiteral("AccountDate"), QStringLiteral("06/07/00 12:04:00")},
                             {QStringLiteral("Date"), QStringLiteral("01/02/01")}});
    const qint64 dateOnly = Add(db, QStringLiteral("AccountInfo"),
                                {{QStringLiteral("Date"), QStringLiteral("01/02/01")}});
    auto s = db.Prepare(
        QStringLiteral("SELECT AccountDay, DateDay, AccountYear FROM AccountInfo WHERE rowid = ?"));
    s.Bind(1, both);
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.Text(0), QStringLiteral("2000-06-07"));
    EXPECT_EQ(s.Text(1), QStringLiteral("2001-01-02"));
    EXPECT_EQ(s.Value(2).toLongLong(), 2000);
    s.Reset();
    s.Bind(1, dateOnly);
    ASSERT_TRUE(s.Step());
    EXPECT_TRUE(s.IsNull(0));
    EXPECT_EQ(s.Value(2).toLongLong(), 2001);
}

// --- Saved queries ---------------------------------------------------------

TEST(schemaSavedQueries, CurrentAndArchivedSplitAtTodaysDate) {
    Database db = FreshStore();
    const QString ann = QStringLiteral("Ann");
    const std::vector<std::pair<QString, QVariant>> ends = {
        {QStringLiteral("1-last-year"), EndDate(Today().addYears(-1))},
        {QStringLiteral("2-yesterday"), EndDate(Today().addDays(-1))},
        {QStringLiteral("3-today"), EndDate(Today())},
        {QStringLiteral("4-tomorrow"), EndDate(Today().addDays(1))},
        {QStringLiteral("5-no-date"), QStringLiteral("n/a")},
        {QStringLiteral("6-null"), QVariant()},
    };
    for (const QString& table : {QStringLiteral("Auctions"), QStringLiteral("Bids")}) {
        for (const auto& [item, end] : ends) {
            Add(db, table,
                {{QStringLiteral("UserName"), ann},
                 {QStringLiteral("ItemNumber"), item},
                 {QStringLiteral("EndDate"), end}});
        }
    }
    const QStringList archived = {QStringLiteral("1-last-year"), QStringLiteral("2-yesterday")};
    const QStringList current = {QStringLiteral("3-today"), QStringLiteral("4-tomorrow"),
                                 QStringLiteral("5-no-date"), QStringLiteral("6-null")};
    EXPECT_EQ(Items(db, QStringLiteral("ArchivedAuctions"), ann), archived);
    EXPECT_EQ(Items(db, QStringLiteral("CurrentAuctions"), ann), current);
    EXPECT_EQ(Items(db, QStringLiteral("ArchivedBids"), ann), archived);
    EXPECT_EQ(Items(db, QStringLiteral("CurrentBids"), ann), current);

    // The split views carry every column of their table, under its name.
    EXPECT_EQ(Columns(db, QStringLiteral("CurrentAuctions")),
              Columns(db, QStringLiteral("Auctions")));
    EXPECT_EQ(Columns(db, QStringLiteral("ArchivedBids")), Columns(db, QStringLiteral("Bids")));

    // A winner row of a multi-winner bid takes its own end, else its item's.
    Add(db, QStringLiteral("DutchBids"),
        {{QStringLiteral("UserName"), ann},
         {QStringLiteral("ItemNumber"), QStringLiteral("2-yesterday")},
         {QStringLiteral("HighBidderName"), QStringLiteral("ann_buys")}});
    Add(db, QStringLiteral("DutchBids"),
        {{QStringLiteral("UserName"), ann},
         {QStringLiteral("ItemNumber"), QStringLiteral("7-own-end")},
         {QStringLiteral("HighBidderName"), QStringLiteral("ann_buys")},
         {QStringLiteral("EndDate"), EndDate(Today().addDays(3))}});
    EXPECT_EQ(Items(db, QStringLiteral("ArchivedDutchBids"), ann),
              QStringList{QStringLiteral("2-yesterday")});
    EXPECT_EQ(Items(db, QStringLiteral("CurrentDutchBids"), ann),
              QStringList{QStringLiteral("7-own-end")});
}

TEST(schemaSavedQueries, AnalysisCountsEndedSalesThatMetTheReserve) {
    Database db = FreshStore();
    const QString ann = QStringLiteral("Ann");
    const QDate yesterday = Today().addDays(-1);
    auto sale = [&](const QString& item, const QDate& end, const QString& high,
                    const QString& reserve, const QString& bidder) {
        Add(db, QStringLiteral("Auctions"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("ItemNumber"), item},
             {QStringLiteral("EndDate"), EndDate(end)},
             {QStringLiteral("HighBid"), high},
             {QStringLiteral("ReserveBid"), reserve},
             {QStringLiteral("HighBidderName"), bidder}});
    };
    sale(QStringLiteral("a-met"), yesterday, QStringLiteral("$20.00"), QStringLiteral("$10.00"),
         QStringLiteral("bob"));
    sale(QStringLiteral("b-no-reserve"), yesterday.addYears(-1), QStringLiteral("$5.00"),
         QStringLiteral("-"), QStringLiteral("cy"));
    sale(QStringLiteral("c-short"), yesterday, QStringLiteral("$5.00"), QStringLiteral("$10.00"),
         QStringLiteral("bob"));
    sale(QStringLiteral("d-no-bid"), yesterday, QStringLiteral("-"), QStringLiteral("n/a"),
         QStringLiteral("n/a"));
    sale(QStringLiteral("e-running"), Today().addDays(1), QStringLiteral("$50.00"),
         QStringLiteral("-"), QStringLiteral("bob"));
    sale(QStringLiteral("f-dutch"), yesterday, QStringLiteral("$3.00"), QStringLiteral("-"),
         QStringLiteral("Dutch Auction"));
    EXPECT_EQ(Items(db, QStringLiteral("Auctions Query"), ann),
              (QStringList{QStringLiteral("a-met"), QStringLiteral("b-no-reserve")}));

    auto years = db.Prepare(QStringLiteral(
        "SELECT Year, SUM(HighBidNum) FROM \"Auctions Query\" WHERE UserName = ? GROUP BY Year "
        "ORDER BY Year"));
    years.Bind(1, ann);
    ASSERT_TRUE(years.Step());
    EXPECT_EQ(years.Value(0).toLongLong(), yesterday.year() - 1);
    EXPECT_DOUBLE_EQ(years.Value(1).toDouble(), 5.0);
    ASSERT_TRUE(years.Step());
    EXPECT_EQ(years.Value(0).toLongLong(), yesterday.year());
    EXPECT_DOUBLE_EQ(years.Value(1).toDouble(), 20.0);

    // The multi-winner sale counts through its winners: price times quantity.
    auto winner = [&](const QString& name, const QVariant& quantity, const QString& price) {
        Add(db, QStringLiteral("Dutch"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("ItemNumber"), QStringLiteral("f-dutch")},
             {QStringLiteral("HighBidderName"), name},
             {QStringLiteral("Quantity"), quantity},
             {QStringLiteral("HighBid"), price}});
    };
    winner(QStringLiteral("dee"), QStringLiteral("2"), QStringLiteral("$3.50"));
    winner(QStringLiteral("eve"), QVariant(), QStringLiteral("$4.00"));
    auto dutch = db.Prepare(QStringLiteral(
        "SELECT HighBidderName, HighBidTotal, Year FROM \"Dutch Query\" WHERE UserName = ? "
        "ORDER BY HighBidderName"));
    dutch.Bind(1, ann);
    ASSERT_TRUE(dutch.Step());
    EXPECT_DOUBLE_EQ(dutch.Value(1).toDouble(), 7.0);
    EXPECT_EQ(dutch.Value(2).toLongLong(), yesterday.year());
    ASSERT_TRUE(dutch.Step());
    EXPECT_DOUBLE_EQ(dutch.Value(1).toDouble(), 4.0) << "a winner without a quantity took one";
    EXPECT_FALSE(dutch.Step());

    // Bids Query: ended bids only, with their Year.
    Add(db, QStringLiteral("Bids"),
        {{QStringLiteral("UserName"), ann},
         {QStringLiteral("ItemNumber"), QStringLiteral("won")},
         {QStringLiteral("Winning"), true},
         {QStringLiteral("WinningBid"), QStringLiteral("$8.00")},
         {QStringLiteral("EndDate"), EndDate(yesterday)}});
    Add(db, QStringLiteral("Bids"),
        {{QStringLiteral("UserName"), ann},
         {QStringLiteral("ItemNumber"), QStringLiteral("running")},
         {QStringLiteral("Winning"), true},
         {QStringLiteral("EndDate"), EndDate(Today().addDays(1))}});
    EXPECT_EQ(Items(db, QStringLiteral("Bids Query"), ann), QStringList{QStringLiteral("won")});
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT Year FROM \"Bids Query\"")), yesterday.year());

    // AccountInfo Query: Year of the statement line, and the sums by type.
    auto line = [&](const QString& date, const QString& type, const QString& debit) {
        Add(db, QStringLiteral("AccountInfo"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("AccountDate"), date},
             {QStringLiteral("AccountType"), type},
             {QStringLiteral("Debit"), debit}});
    };
    line(QStringLiteral("06/07/00 10:00:00"), QStringLiteral("Insertion fee"),
         QStringLiteral("($0.25)"));
    line(QStringLiteral("06/09/00 10:00:00"), QStringLiteral("Insertion fee"),
         QStringLiteral("($1,000.00)"));
    line(QStringLiteral("01/09/01 10:00:00"), QStringLiteral("Insertion fee"),
         QStringLiteral("($2.00)"));
    line(QStringLiteral("06/08/00 10:00:00"), QStringLiteral("Final Auction Value fee"),
         QStringLiteral("($3.00)"));
    auto fees = db.Prepare(QStringLiteral(
        "SELECT SUM(DebitNum), MIN(\"Date\") FROM \"AccountInfo Query\" WHERE Year = ? AND "
        "AccountType = ?"));
    fees.BindAll(2000, QStringLiteral("insertion FEE"));
    ASSERT_TRUE(fees.Step());
    EXPECT_DOUBLE_EQ(fees.Value(0).toDouble(), -1000.25);
    EXPECT_EQ(fees.Text(1), QStringLiteral("06/07/00 10:00:00"))
        << "Date falls back to AccountDate";
}

TEST(schemaSavedQueries, PendingTasksAreEndedItemsNotYetComplete) {
    Database db = FreshStore();
    const QString ann = QStringLiteral("Ann");
    const QDate yesterday = Today().addDays(-1);
    auto sale = [&](const QString& item, const QDate& end, const QString& bidder, bool complete,
                    const QString& high = QStringLiteral("$10.00"),
                    const QString& reserve = QStringLiteral("-")) {
        Add(db, QStringLiteral("Auctions"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("ItemNumber"), item},
             {QStringLiteral("ItemTitle"), QString(QStringLiteral("Title of ") + item)},
             {QStringLiteral("EndDate"), EndDate(end)},
             {QStringLiteral("HighBid"), high},
             {QStringLiteral("ReserveBid"), reserve},
             {QStringLiteral("NumberBids"),
              bidder == QStringLiteral("n/a") ? QStringLiteral("-") : QStringLiteral("3")},
             {QStringLiteral("HighBidderName"), bidder},
             {QStringLiteral("ToDoComplete"), complete}});
    };
    sale(QStringLiteral("p1"), yesterday, QStringLiteral("bob"), false);
    sale(QStringLiteral("p2"), yesterday, QStringLiteral("bob"), true);
    sale(QStringLiteral("p3"), Today(), QStringLiteral("cy"), false);
    sale(QStringLiteral("p4"), Today().addDays(1), QStringLiteral("cy"), false);
    sale(QStringLiteral("p5"), yesterday, QStringLiteral("n/a"), false, QStringLiteral("-"));
    sale(QStringLiteral("p6"), yesterday, QStringLiteral("bob"), false, QStringLiteral("$5.00"),
         QStringLiteral("$9.00"));
    sale(QStringLiteral("p7"), yesterday, QStringLiteral("Dutch Auction"), false);
    Add(db, QStringLiteral("Auctions"),
        {{QStringLiteral("UserName"), QStringLiteral("Ben")},
         {QStringLiteral("ItemNumber"), QStringLiteral("q1")},
         {QStringLiteral("EndDate"), EndDate(yesterday)},
         {QStringLiteral("HighBidderName"), QStringLiteral("bob")}});

    const QString pendingSales = QStringLiteral("All Auctions with Pending Tasks");
    EXPECT_EQ(Items(db, pendingSales, ann),
              (QStringList{QStringLiteral("p1"), QStringLiteral("p3")}))
        << "ended (today too), sold, not complete; a Dutch parent comes through its winners";
    EXPECT_EQ(Items(db, pendingSales, QStringLiteral("Ben")), QStringList{QStringLiteral("q1")});
    EXPECT_TRUE(Columns(db, pendingSales).contains(QStringLiteral("EmailEndOfAuction")));

    for (const QString& bidder : {QStringLiteral("dee"), QStringLiteral("eve")}) {
        Add(db, QStringLiteral("Dutch"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("ItemNumber"), QStringLiteral("p7")},
             {QStringLiteral("HighBidderName"), bidder},
             {QStringLiteral("HighBid"), QStringLiteral("$2.50")},
             {QStringLiteral("ToDoComplete"), bidder == QStringLiteral("eve")}});
    }
    auto dutch = db.Prepare(QStringLiteral(
        "SELECT ItemNumber, HighBidderName, ItemTitle, HighBid, EndDate FROM \"All Auctions with "
        "Pending Tasks (Dutch)\" WHERE UserName = ?"));
    dutch.Bind(1, ann);
    ASSERT_TRUE(dutch.Step());
    EXPECT_EQ(dutch.Text(1), QStringLiteral("dee"));
    EXPECT_EQ(dutch.Text(2), QStringLiteral("Title of p7"));
    EXPECT_EQ(dutch.Text(3), QStringLiteral("$2.50")) << "the winner's own price";
    EXPECT_EQ(dutch.Text(4), EndDate(yesterday));
    EXPECT_FALSE(dutch.Step()) << "a finished winner leaves; the other stays";

    // The winner's packing list and notes read Dutch Details.
    auto details = db.Prepare(QStringLiteral(
        "SELECT ItemTitle, HighBid, AuctionNotes FROM \"Dutch Details\" WHERE ItemNumber = ? AND "
        "HighBidderName = ?"));
    details.BindAll(QStringLiteral("p7"), QStringLiteral("EVE "));
    ASSERT_TRUE(details.Step());
    EXPECT_EQ(details.Text(0), QStringLiteral("Title of p7"));

    // Narrower filters keep to their own condition.
    db.Prepare(QStringLiteral("UPDATE Auctions SET OrderPaymentMethod = 0 WHERE ItemNumber = ?"))
        .Bind(1, QStringLiteral("p3"))
        .Run();
    db.Prepare(QStringLiteral("UPDATE Auctions SET ShippingDate = ? WHERE ItemNumber = ?"))
        .BindAll(QStringLiteral("06/08/00"), QStringLiteral("p1"))
        .Run();
    EXPECT_EQ(Items(db, QStringLiteral("Auctions Awaiting Payment"), ann),
              QStringList{QStringLiteral("p1")});
    EXPECT_EQ(Items(db, QStringLiteral("Auctions Not Yet Shipped"), ann),
              QStringList{QStringLiteral("p3")});

    // Partner history: archived sales with a buyer, one row per Dutch winner.
    auto history = db.Prepare(QStringLiteral(
        "SELECT ItemNumber, HighBidderName FROM \"Completed Auctions\" WHERE UserName = ? ORDER BY "
        "ItemNumber, HighBidderName"));
    history.Bind(1, ann);
    QStringList completed;
    while (history.Step()) {
        completed << history.Text(0) + QLatin1Char('/') + history.Text(1);
    }
    EXPECT_EQ(completed, (QStringList{QStringLiteral("p1/bob"), QStringLiteral("p2/bob"),
                                      QStringLiteral("p7/dee"), QStringLiteral("p7/eve")}));

    // Bids: won, ended, not complete; a multi-winner item through its twin.
    Add(db, QStringLiteral("UserSites"),
        {{QStringLiteral("UserName"), ann},
         {QStringLiteral("AuctionSiteFlag"), 0},
         {QStringLiteral("UserID"), QStringLiteral("ann_buys")}});
    auto bid = [&](const QString& item, bool winning, bool complete, const QString& high) {
        Add(db, QStringLiteral("Bids"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("ItemNumber"), item},
             {QStringLiteral("ItemTitle"), QString(QStringLiteral("Title of ") + item)},
             {QStringLiteral("SellerName"), QStringLiteral("sal")},
             {QStringLiteral("EndDate"), EndDate(yesterday)},
             {QStringLiteral("Winning"), winning},
             {QStringLiteral("HighBidderName"), high},
             {QStringLiteral("ToDoComplete"), complete}});
    };
    bid(QStringLiteral("b1"), true, false, QStringLiteral("ann_buys"));
    bid(QStringLiteral("b2"), false, false, QStringLiteral("zed"));
    bid(QStringLiteral("b3"), true, true, QStringLiteral("ann_buys"));
    bid(QStringLiteral("b4"), true, false, QStringLiteral("Dutch Auction"));
    EXPECT_EQ(Items(db, QStringLiteral("All Bids with Pending Tasks"), ann),
              QStringList{QStringLiteral("b1")});
    EXPECT_EQ(Items(db, QStringLiteral("Completed Bids"), ann),
              (QStringList{QStringLiteral("b1"), QStringLiteral("b3"), QStringLiteral("b4")}));

    for (const auto& [name, price] :
         {std::pair{QStringLiteral("zed"), QStringLiteral("$2.10")},
          std::pair{QStringLiteral("ANN_BUYS"), QStringLiteral("$2.00")}}) {
        Add(db, QStringLiteral("DutchBids"),
            {{QStringLiteral("UserName"), ann},
             {QStringLiteral("ItemNumber"), QStringLiteral("b4")},
             {QStringLiteral("HighBidderName"), name},
             {QStringLiteral("HighBid"), price}});
    }
    auto dutchBids = db.Prepare(QStringLiteral(
        "SELECT * FROM \"All Bids with Pending Tasks (Dutch)\" WHERE UserName = ? AND "
        "AuctionSiteFlag = 0 AND SellerName = ?"));
    dutchBids.BindAll(ann, QStringLiteral("SAL"));
    ASSERT_TRUE(dutchBids.Step());
    EXPECT_EQ(dutchBids.Text(QStringLiteral("ItemTitle")), QStringLiteral("Title of b4"));
    EXPECT_EQ(dutchBids.Text(QStringLiteral("Successful Dutch Bids.HighBid")),
              QStringLiteral("$2.00"))
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
        node.key = rows.Text(QStringLiteral("Key"));
        node.relative = rows.Text(QStringLiteral("Relative"));
        node.relationship = rows.Value(QStringLiteral("Relationship"));
        node.function = rows.Text(QStringLiteral("Function"));
        node.parameter = rows.Text(QStringLiteral("Parameter"));
        node.description = rows.Text(QStringLiteral("Description"));
        for (int i = 0; i < 5; ++i) {
            node.param[i] = rows.Text(QStringLiteral("AdditionalParam%1").arg(i + 1));
        }
        node.image = static_cast<int>(rows.Int(QStringLiteral("StartImage")));
        node.folder = rows.Flag(QStringLiteral("isFolder"));
        sides[rows.Flag(QStringLiteral("Auction?"))].push_back(node);
    }
    ASSERT_EQ(sides.size(), 2);

    // Code -> Function and Parameter that the dispatch and the icons rely on.
    const QMap<QString, std::pair<QString, QString>> both = {
        {QStringLiteral("SUM"), {}},
        {QStringLiteral("SUMS"), {QStringLiteral("BidSummary"), QString()}},
        {QStringLiteral("SUMN"), {QStringLiteral("NoteEntry"), QString()}},
        {QStringLiteral("PRA"), {QStringLiteral("Entry"), QStringLiteral("Address")}},
        {QStringLiteral("FBL"), {QStringLiteral("Entry"), QStringLiteral("FeedbackLeft")}},
        {QStringLiteral("FBR"), {QStringLiteral("Entry"), QStringLiteral("FeedbackReceived")}}};
    const QMap<QString, std::pair<QString, QString>> sale = {
        {QStringLiteral("PRI"), {QStringLiteral("Entry"), QStringLiteral("PaymentInfo")}},
        {QStringLiteral("SHP"), {QStringLiteral("Packing"), QString()}},
        {QStringLiteral("SHS"), {QStringLiteral("Entry"), QStringLiteral("Shipping")}},
        {QStringLiteral("SHE"), {QStringLiteral("Email"), QString()}},
        {QStringLiteral("SHR"), {}}};
    const QMap<QString, std::pair<QString, QString>> bid = {
        {QStringLiteral("PRP"), {QStringLiteral("Entry"), QStringLiteral("PaymentInfo")}},
        {QStringLiteral("PRS"), {QStringLiteral("Packing"), QString()}},
        {QStringLiteral("IRR"), {QStringLiteral("Entry"), QStringLiteral("ItemReceived")}},
        {QStringLiteral("IRE"), {QStringLiteral("Email"), QString()}}};
    const QSet<QString> functions = {QStringLiteral("Email"),    QStringLiteral("EmailEntry"),
                                     QStringLiteral("Packing"),  QStringLiteral("NoteEntry"),
                                     QStringLiteral("ItemInfo"), QStringLiteral("BidSummary"),
                                     QStringLiteral("Entry")};
    const QSet<QString> panels = {
        QStringLiteral("FeedbackLeft"), QStringLiteral("FeedbackReceived"),
        QStringLiteral("Shipping"),     QStringLiteral("ItemReceived"),
        QStringLiteral("Address"),      QStringLiteral("PaymentInfo")};
    const QSet<QString> saleTemplates = {
        QStringLiteral("Congratulations"), QStringLiteral("Request Feedback"),
        QStringLiteral("Item Shipped"), QStringLiteral("Payment Received")};
    const QSet<QString> bidTemplates = {
        QStringLiteral("Item Received"), QStringLiteral("Please Send Payment Info"),
        QStringLiteral("Congratulations Reply"), QStringLiteral("Request Feedback (Bid)")};
    const QStringList auctionList = Columns(db, QStringLiteral("Auctions"));
    const QSet<QString> auctionColumns(auctionList.cbegin(), auctionList.cend());
    const QStringList dutchList = Columns(db, QStringLiteral("Dutch"));
    const QSet<QString> dutchColumns(dutchList.cbegin(), dutchList.cend());
    const QStringList bidList = Columns(db, QStringLiteral("Bids"));
    const QSet<QString> bidColumns(bidList.cbegin(), bidList.cend());

    QSet<QString> mailCodes;
    for (bool isSale : {true, false}) {
        const std::vector<Node>& nodes = sides[isSale];
        const std::string side = isSale ? "sales" : "bids";
        QMap<QString, const Node*> byKey;
        int roots = 0;
        for (const Node& node : nodes) {
            EXPECT_FALSE(byKey.contains(node.key))
                << side << " key twice: " << node.key.toStdString();
            if (node.relative.isEmpty()) {
                ++roots;
                EXPECT_EQ(node.key, QStringLiteral("SUM")) << side;
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
            if (node.function == QStringLiteral("Entry")) {
                EXPECT_TRUE(panels.contains(node.parameter)) << node.key.toStdString();
            }
            if (node.function == QStringLiteral("Email")) {
                EXPECT_EQ(node.parameter.size(), 3) << node.key.toStdString();
                EXPECT_FALSE(mailCodes.contains(node.parameter))
                    << "the outbox finds a mail's row by its code alone: "
                    << node.parameter.toStdString();
                mailCodes.insert(node.parameter);
                EXPECT_TRUE((isSale ? saleTemplates : bidTemplates).contains(node.param[0]))
                    << side << " " << node.key.toStdString() << " template "
                    << node.param[0].toStdString();
                for (int i : {1, 2}) {
                    if (isSale) {
                        EXPECT_TRUE(auctionColumns.contains(node.param[i]))
                            << node.param[i].toStdString();
                        EXPECT_TRUE(dutchColumns.contains(node.param[i]))
                            << node.param[i].toStdString();
                    } else {
                        EXPECT_TRUE(bidColumns.contains(node.param[i]))
                            << node.param[i].toStdString();
                    }
                }
            }
            if (node.function == QStringLiteral("EmailEntry")) {
                for (int i : {0, 1, 2}) {
                    EXPECT_FALSE(node.param[i].isEmpty()) << node.key.toStdString();
                }
                for (int i : {3, 4}) {
                    EXPECT_TRUE((isSale ? auctionColumns : bidColumns).contains(node.param[i]))
                        << node.param[i].toStdString();
                    if (isSale) {
                        EXPECT_TRUE(dutchColumns.contains(node.param[i]));
                    }
                }
            }
        }
        EXPECT_EQ(roots, 1) << side;

        auto check = [&](const QMap<QString, std::pair<QString, QString>>& codes) {
            for (auto it = codes.cbegin(); it != codes.cend(); ++it) {
                ASSERT_TRUE(byKey.contains(it.key()))
                    << side << " lacks " << it.key().toStdString();
                const Node* node = byKey.value(it.key());
                if (!it.value().first.isEmpty()) {
                    EXPECT_EQ(node->function, it.value().first) << it.key().toStdString();
                }
                if (!it.value().second.isEmpty()) {
                    EXPECT_EQ(node->parameter, it.value().second) << it.key().toStdString();
                }
            }
        };
        check(both);
        check(isSale ? sale : bid);
        for (const QString& wrong : (isSale ? bid : sale).keys()) {
            EXPECT_FALSE(byKey.contains(wrong)) << side << " has " << wrong.toStdString();
        }
        // The removal rule's mail tasks are mail rows.
        const QString removal = isSale ? QStringLiteral("SHR") : QStringLiteral("IRE");
        ASSERT_TRUE(byKey.contains(removal));
        EXPECT_TRUE(byKey.value(removal)->function.startsWith(QStringLiteral("Email")));
    }

    // The sales pop-up lists the mail rows in table order, Congratulations first.
    const auto firstMail =
        std::find_if(sides[true].cbegin(), sides[true].cend(),
                     [](const Node& n) { return n.function == QStringLiteral("Email"); });
    ASSERT_NE(firstMail, sides[true].cend());
    EXPECT_EQ(firstMail->description, QStringLiteral("Congratulations"));
    EXPECT_EQ(firstMail->param[1], QStringLiteral("EmailEndOfAuction"))
        << "the multi-item mail asks the pending view for this flag";
}

TEST(schemaSeed, EveryFilterNamesItsSavedQueries) {
    Database db = FreshStore();
    const QStringList views = Objects(db, QStringLiteral("view"));
    QMap<bool, QStringList> sides;
    auto filters = db.Prepare(
        QStringLiteral("SELECT * FROM \"ToDo Filters\" WHERE AllUsers = 1 ORDER BY rowid"));
    while (filters.Step()) {
        const QString name = filters.Text(QStringLiteral("FilterName"));
        sides[filters.Flag(QStringLiteral("AuctionFilter"))] << name;
        for (const QString& view : QStringList{name, name + QStringLiteral(" (Dutch)")}) {
            ASSERT_TRUE(views.contains(view)) << view.toStdString();
            const QStringList columns = Columns(db, view);
            for (const QString& needed : {QStringLiteral("UserName"), QStringLiteral("ItemNumber"),
                                          QStringLiteral("ItemTitle"), QStringLiteral("EndDate")}) {
                EXPECT_TRUE(columns.contains(needed))
                    << view.toStdString() << " lacks " << needed.toStdString();
            }
        }
        if (filters.Flag(QStringLiteral("AuctionFilter"))) {
            EXPECT_TRUE(Columns(db, name + QStringLiteral(" (Dutch)"))
                            .contains(QStringLiteral("HighBidderName")));
        }
    }
    ASSERT_FALSE(sides[true].isEmpty());
    ASSERT_FALSE(sides[false].isEmpty());
    EXPECT_EQ(sides[true].first(), QStringLiteral("All Auctions with Pending Tasks"))
        << "row 0 is selected when the tree is built";
    EXPECT_EQ(sides[false].first(), QStringLiteral("All Bids with Pending Tasks"));
}

TEST(schemaSeed, SystemRowsAreInPlace) {
    Database db = FreshStore();
    auto global = db.Prepare(QStringLiteral("SELECT * FROM Global"));
    ASSERT_TRUE(global.Step());
    EXPECT_TRUE(global.Flag(QStringLiteral("AutoUpdateTimeLeft")));
    EXPECT_EQ(global.Int(QStringLiteral("TimeLeftInterval")), 65535);
    EXPECT_TRUE(global.IsNull(QStringLiteral("eBayCorrection")));
    EXPECT_FALSE(global.Step()) << "one row";

    auto tracking = db.Prepare(QStringLiteral("SELECT * FROM Tracking"));
    ASSERT_TRUE(tracking.Step());
    EXPECT_TRUE(tracking.IsNull(QStringLiteral("TrackingDate")));
    for (const QString& counter : {QStringLiteral("AuctionsPosted"), QStringLiteral("Updates"),
                                   QStringLiteral("RubyLaneClick")}) {
        EXPECT_FALSE(tracking.IsNull(counter));
        EXPECT_EQ(tracking.Int(counter), 0);
    }
    EXPECT_FALSE(tracking.Step());

    auto creator = db.Prepare(QStringLiteral("SELECT * FROM AuctionCreator WHERE ID = 1"));
    ASSERT_TRUE(creator.Step());
    EXPECT_EQ(creator.Text(QStringLiteral("ACType")), QStringLiteral("Default"));
    EXPECT_FALSE(creator.Flag(QStringLiteral("Outbox")));
    EXPECT_EQ(creator.Text(QStringLiteral("PDCaption0")), QStringLiteral("Condition:"));
    const qint64 draft = Add(db, QStringLiteral("AuctionCreator"),
                             {{QStringLiteral("ACType"), QStringLiteral("Draft")}});
    EXPECT_EQ(draft, 2) << "documents are numbered after the system row";

    auto folder =
        db.Prepare(QStringLiteral("SELECT FolderName, FolderParent FROM InventoryFolders "
                                  "WHERE FolderID = 1"));
    ASSERT_TRUE(folder.Step());
    EXPECT_EQ(folder.Text(0), QStringLiteral("General"));
    EXPECT_EQ(folder.Value(1).toLongLong(), 0);
    EXPECT_EQ(Add(db, QStringLiteral("InventoryFolders"),
                  {{QStringLiteral("FolderName"), QStringLiteral("Lamps")}}),
              2);

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
