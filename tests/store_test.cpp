// SPDX-License-Identifier: GPL-3.0-or-later
// The SQLite wrapper: binding, trimming, case-blind columns, transactions and
// clear failures on files that are not databases.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <functional>

#include "core/store.h"
#include "tests/support/test_support.h"

using lw::core::Database;
using lw::core::HasNumericAffinity;
using lw::core::NumberColumnText;
using lw::core::StoreError;
using lw::core::Transaction;

namespace {

Database MemoryWithItems() {
    Database db = Database::Open(QStringLiteral(":memory:"), Database::Mode::Create);
    db.Exec(QStringLiteral(
        "CREATE TABLE Items (ItemNumber TEXT COLLATE NOCASE, ItemTitle TEXT COLLATE NOCASE, "
        "Price REAL, Sold INTEGER, Picture BLOB)"));
    return db;
}

void Insert(Database& db, const QVariant& number, const QVariant& title) {
    db.Prepare(QStringLiteral("INSERT INTO Items (ItemNumber, ItemTitle) VALUES (?, ?)"))
        .BindAll(number, title)
        .Run();
}

// A new store file at path, in WAL mode, with a table of items.
Database LoggedWithItems(const QString& path) {
    Database db = Database::Open(path, Database::Mode::Create);
    db.Exec(
        QStringLiteral("PRAGMA journal_mode = WAL; "
                       "CREATE TABLE Items (ItemNumber TEXT, ItemTitle TEXT)"));
    return db;
}

// The StoreError an action throws names what failed.
template <typename Action>
::testing::AssertionResult FailsNaming(Action action, const QString& name) {
    try {
        action();
    } catch (const StoreError& error) {
        if (name.isEmpty() || error.Message().contains(name)) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "the message is " << error.Message().toStdString();
    }
    return ::testing::AssertionFailure() << "nothing was thrown";
}

int CountWhereNumber(Database& db, const QString& number) {
    auto s = db.Prepare(QStringLiteral("SELECT COUNT(*) FROM Items WHERE ItemNumber = ?"));
    s.Bind(1, number);
    s.Step();
    return static_cast<int>(s.Value(0).toLongLong());
}

}  // namespace

TEST(StoreComparison, TrailingBlanksAndCaseDoNotMatterForKeys) {
    Database db = MemoryWithItems();
    Insert(db, QStringLiteral("123"), QStringLiteral("Lamp"));
    Insert(db, QStringLiteral("ab7X  "), QStringLiteral("Vase"));
    // Leading blanks are content.
    for (const auto& [key, count] :
         {std::pair{"123 ", 1}, {"123", 1}, {"AB7x", 1}, {"ab7x   ", 1}, {" 123", 0}}) {
        EXPECT_EQ(CountWhereNumber(db, QString::fromLatin1(key)), count) << '"' << key << '"';
    }
    // What was written carries no trailing blanks.
    auto s = db.Prepare(QStringLiteral("SELECT ItemNumber FROM Items WHERE ItemTitle = 'Vase'"));
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.Text(0), QStringLiteral("ab7X"));
}

// What a number or flag column takes of a text as scraped or typed: the flag
// words in any case, then plain numbers, trimmed, then what is refused (the
// last an Arabic-Indic three: a digit, but not ours).
TEST(StoreNumbers, FlagWordsAreTheBooleanNumbersStandAndOtherTextIsRefused) {
    const struct {
        const char* text;
        const char* stored;  // nullptr: refused
    } cases[] = {{"True", "1"},        {"TRUE", "1"},        {" true ", "1"},  {"Yes", "1"},
                 {"False", "0"},       {"false", "0"},       {"no", "0"},      {"Truest", nullptr},
                 {"-1", "-1"},         {"0", "0"},           {" 12 ", "12"},   {"\t7\n", "7"},
                 {"2.5", "2.5"},       {"+3", "+3"},         {"1e3", "1e3"},   {".5", ".5"},
                 {"5.", "5."},         {"-.5e-3", "-.5e-3"}, {"1E+9", "1E+9"}, {"", nullptr},
                 {"ERROR", nullptr},   {"--", nullptr},      {"$5", nullptr},  {"1,234", nullptr},
                 {".", nullptr},       {"1e", nullptr},      {"1e+", nullptr}, {"e5", nullptr},
                 {"1.2.3", nullptr},   {"1 2", nullptr},     {"+-1", nullptr}, {"0x1F", nullptr},
                 {"\xd9\xa3", nullptr}};
    for (const auto& c : cases) {
        EXPECT_EQ(NumberColumnText(QString::fromUtf8(c.text)),
                  c.stored ? std::optional(QString::fromUtf8(c.stored)) : std::nullopt)
            << c.text;
    }
    EXPECT_TRUE(NumberColumnText(QString())->isNull());
    for (const char* type : {"INTEGER", "int", "REAL", "NUMERIC", "BOOLEAN", "DOUBLE"}) {
        EXPECT_TRUE(HasNumericAffinity(QString::fromUtf8(type))) << type;
    }
    for (const char* type : {"TEXT", "VARCHAR(10)", "BLOB", ""}) {
        EXPECT_FALSE(HasNumericAffinity(QString::fromUtf8(type))) << type;
    }
}

TEST(StoreBinding, HostileAndWideTextStaysInItsOwnField) {
    Database db = MemoryWithItems();
    const QString titles[] = {QStringLiteral("O'Brien's \"best\"'); DROP TABLE Items; --"),
                              QStringLiteral("Ünïcødé ✓ 日本")};
    Insert(db, QStringLiteral("1"), titles[0]);
    Insert(db, QStringLiteral("2"), titles[1]);
    auto s = db.Prepare(QStringLiteral("SELECT ItemTitle FROM Items ORDER BY ItemNumber"));
    for (const QString& title : titles) {
        ASSERT_TRUE(s.Step());
        EXPECT_EQ(s.Text(0), title);
    }
    EXPECT_FALSE(s.Step());
}

// Each kind of value goes in bound by name and comes back out by a column name
// in any case, or qualified by its table.
TEST(StoreBinding, VariantKindsNullsAndColumnNames) {
    Database db = MemoryWithItems();
    QByteArray blob("a\0b\xff", 4);
    db.Prepare(
          QStringLiteral("INSERT INTO Items (ItemNumber, ItemTitle, Price, Sold, Picture) VALUES "
                         "(:n, :t, :p, :s, :b)"))
        .Bind(":n", QVariant(QStringLiteral("9")))
        .Bind(":t", QVariant())
        .Bind(":p", QVariant(12.5))
        .Bind(":s", QVariant(true))
        .Bind(":b", QVariant(blob))
        .Run();
    auto s = db.Prepare(QStringLiteral("SELECT * FROM Items"));
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.Text(QStringLiteral("itemnumber")), QStringLiteral("9"));
    EXPECT_EQ(s.Text(QStringLiteral("Items.ItemNumber")), QStringLiteral("9"));
    EXPECT_EQ(s.ColumnIndex(QStringLiteral("Nothing")), -1);
    EXPECT_TRUE(s.IsNull(QStringLiteral("itemtitle")));
    EXPECT_EQ(s.Text(QStringLiteral("ItemTitle")), QString()) << "Null reads as empty text";
    EXPECT_DOUBLE_EQ(s.Real(QStringLiteral("PRICE")), 12.5);
    EXPECT_TRUE(s.Flag(QStringLiteral("Sold")));
    EXPECT_EQ(s.Value(QStringLiteral("Picture")).toByteArray(), blob);
    // A null QString binds NULL, an empty one binds empty text.
    auto kinds = db.Prepare(QStringLiteral("SELECT ? IS NULL, ? IS NULL, ? = ''"));
    kinds.BindAll(QString(), QStringLiteral(""), QStringLiteral("   "));
    ASSERT_TRUE(kinds.Step());
    EXPECT_EQ(kinds.Int(QStringLiteral("? IS NULL")), 1);
    EXPECT_EQ(kinds.Value(1).toInt(), 0);
    EXPECT_EQ(kinds.Value(2).toInt(), 1) << "blanks only trim to empty text";
}

// Misuse is a StoreError, never a crash, and names the culprit where there is one.
TEST(StoreStatements, MisuseIsAStoreError) {
    Database db = MemoryWithItems();
    Insert(db, QStringLiteral("5"), QStringLiteral("Clock"));
    auto parameter = db.Prepare(QStringLiteral("SELECT ?"));
    auto row = db.Prepare(QStringLiteral("SELECT ItemNumber FROM Items"));
    ASSERT_TRUE(row.Step());
    const struct {
        const char* name;
        std::function<void()> misuse;
        QString named;  // what the message names; empty: anything
    } cases[] = {
        {"two statements where one is wanted",
         [&] { db.PrepareSingle(QStringLiteral("SELECT 1; DELETE FROM Items")); },
         {}},
        {"bad syntax", [&] { db.Prepare(QStringLiteral("SELEKT nonsense")); }, {}},
        {"unknown table", [&] { db.Prepare(QStringLiteral("SELECT * FROM NoSuchTable")); },
         QStringLiteral("NoSuchTable")},
        {"parameter past the last", [&] { parameter.Bind(2, QStringLiteral("x")); }, {}},
        {"unknown parameter name", [&] { parameter.Bind(":missing", QVariant(1)); }, {}},
        {"unknown column", [&] { row.Text(QStringLiteral("Nothing")); }, QStringLiteral("Nothing")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(FailsNaming(c.misuse, c.named));
    }
    EXPECT_NO_THROW(db.PrepareSingle(QStringLiteral("SELECT 1 ;  \n")));
    EXPECT_TRUE(db.PrepareSingle(QStringLiteral("SELECT * FROM Items")).IsReadOnly());
    EXPECT_FALSE(db.PrepareSingle(QStringLiteral("DELETE FROM Items")).IsReadOnly());
}

TEST(StoreTransactions, RollbackUnlessCommitted) {
    Database db = MemoryWithItems();
    {
        Transaction tx(db);
        Insert(db, QStringLiteral("1"), QStringLiteral("kept"));
        tx.Commit();
    }
    {
        Transaction tx(db);
        Insert(db, QStringLiteral("2"), QStringLiteral("dropped"));
    }
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Items")), 1);
}

TEST(StoreTransactions, ADeferredCheckpointLeavesTheLogToItsEnd) {
    lw::test::TempRoot root;
    const QString path = root.File(QStringLiteral("log.db"));
    Database db = LoggedWithItems(path);
    db.Exec(QStringLiteral("PRAGMA synchronous = OFF"));
    const qint64 mark = db.ScalarInt(QStringLiteral("PRAGMA wal_autocheckpoint"));
    const qint64 frame = db.ScalarInt(QStringLiteral("PRAGMA page_size")) + 24;
    const qint64 commits = mark + 100;
    {
        lw::core::DeferredCheckpoint deferred(db);
        for (qint64 i = 0; i < commits; ++i) {
            Insert(db, i, QVariant());
        }
        // Each commit wrote a page at least, and none was copied back, which
        // would have started the log over.
        EXPECT_GE((QFileInfo(path + QStringLiteral("-wal")).size() - 32) / frame, commits);
    }
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA wal_autocheckpoint")), mark);
    // The database file alone holds every commit now.
    const QString copy = root.File(QStringLiteral("copy.db"));
    ASSERT_TRUE(QFile::copy(path, copy));
    EXPECT_EQ(Database::Open(copy).ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Items")),
              commits);

    // A store that keeps no log is left as it is.
    Database memory = MemoryWithItems();
    const qint64 memoryMark = memory.ScalarInt(QStringLiteral("PRAGMA wal_autocheckpoint"));
    {
        lw::core::DeferredCheckpoint deferred(memory);
        EXPECT_EQ(memory.ScalarInt(QStringLiteral("PRAGMA wal_autocheckpoint")), memoryMark);
    }
}

// Steps of a run a few milliseconds apart, committed once the batch is due,
// as another connection sees them; a commit the store refuses rolls its
// batch back and says why.
TEST(StoreTransactions, BatchedCommitsCommitOnceDueAndWhenAsked) {
    lw::test::TempRoot root;
    const QString path = root.File(QStringLiteral("batch.db"));
    Database db = LoggedWithItems(path);
    Database reader = Database::Open(path);
    const auto seen = [&reader] {
        return reader.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Items"));
    };

    std::chrono::steady_clock::time_point now{};
    struct Step {
        int ms;       // time since the step before
        char what;    // 'w': a step's write, 'd': commit if due, 'c': commit now
        qint64 seen;  // rows the other connection sees afterwards
    };
    const Step steps[] = {
        {0, 'w', 0},  {0, 'd', 0},  {20, 'w', 0},
        {20, 'd', 0}, {9, 'd', 0},  {1, 'd', 2},  // 50 ms after the batch began
        {0, 'd', 2},  {5, 'w', 2},  {10, 'w', 2},
        {0, 'c', 4},  {0, 'c', 4},  {60, 'd', 4},  // nothing open: nothing due
        {0, 'w', 4},  {50, 'd', 5},
    };
    int written = 0;
    {
        lw::core::BatchedCommits commits(db, std::chrono::milliseconds(50), [&now] { return now; });
        for (const Step& step : steps) {
            now += std::chrono::milliseconds(step.ms);
            switch (step.what) {
                case 'w':
                    commits.Begin();
                    Insert(db, ++written, QVariant());
                    break;
                case 'd':
                    EXPECT_EQ(commits.CommitIfDue(), 0);
                    break;
                default:
                    EXPECT_EQ(commits.Commit(), 0);
                    break;
            }
            EXPECT_EQ(seen(), step.seen) << "after step " << (&step - steps);
        }
        commits.Begin();
        Insert(db, ++written, QVariant());
        EXPECT_EQ(seen(), 5);
    }
    EXPECT_EQ(seen(), 6) << "what is open is committed at the end";

    // A commit the store refuses: the batch is gone, the code told.
    db.Exec(
        QStringLiteral("PRAGMA foreign_keys = ON; CREATE TABLE Parents (Id INTEGER PRIMARY KEY); "
                       "CREATE TABLE Children (Parent INTEGER REFERENCES Parents (Id) "
                       "DEFERRABLE INITIALLY DEFERRED)"));
    lw::core::BatchedCommits commits(db, std::chrono::milliseconds(50));
    commits.Begin();
    Insert(db, ++written, QVariant());
    db.Exec(QStringLiteral("INSERT INTO Children (Parent) VALUES (7)"));
    EXPECT_NE(commits.Commit(), 0);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Items")), 6);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Children")), 0);
    db.Exec(QStringLiteral("BEGIN; COMMIT"));  // no transaction was left open
}

// Commits set the log's writes going for the disk through a handle of their
// own: one for all the batches, let go with them, and none for a store
// without a log.
TEST(StoreTransactions, BatchedCommitsHoldOneHandleOnTheLogAndLetItGo) {
    const auto handlesOn = [](const QString& file) {
        int count = 0;
        for (const QFileInfo& entry : QDir(QStringLiteral("/proc/self/fd")).entryInfoList()) {
            count += entry.symLinkTarget() == file ? 1 : 0;
        }
        return count;
    };
    for (const bool logged : {true, false}) {
        SCOPED_TRACE(logged ? "WAL" : "rollback journal");
        lw::test::TempRoot root;
        const QString path = root.File(QStringLiteral("batch.db"));
        Database db = LoggedWithItems(path);
        if (!logged) {
            db.Exec(QStringLiteral("PRAGMA journal_mode = DELETE"));
        }
        const QString log = QFileInfo(path).canonicalFilePath() + QStringLiteral("-wal");
        const int before = handlesOn(log);
        {
            lw::core::BatchedCommits commits(db, std::chrono::milliseconds(0));
            for (int i = 1; i <= 3; ++i) {
                commits.Begin();
                Insert(db, i, QVariant());
                EXPECT_EQ(commits.Commit(), 0);
            }
            EXPECT_EQ(handlesOn(log), before + (logged ? 1 : 0));
        }
        EXPECT_EQ(handlesOn(log), before);
        EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Items")), 3);
    }
}

TEST(StoreFiles, MissingDamagedAndReadOnlyFilesFailWithTheirName) {
    lw::test::TempRoot root;
    const QString missing = root.File(QStringLiteral("none.db"));
    EXPECT_TRUE(FailsNaming([&] { Database::Open(missing); }, missing));
    EXPECT_FALSE(QFile::exists(missing)) << "opening must not create";

    QByteArray junk(8192, '\0');
    for (int i = 0; i < junk.size(); ++i) {
        junk[i] = static_cast<char>((i * 131 + 7) % 251);
    }
    const QString damaged = root.Write(QStringLiteral("damaged.db"), junk);
    EXPECT_TRUE(FailsNaming([&] { Database::Open(damaged); }, damaged));
    EXPECT_EQ(lw::test::ReadAll(damaged), junk) << "a damaged file is left as it was";
    const QString good = root.File(QStringLiteral("good.db"));
    {
        Database db = Database::Open(good, Database::Mode::Create);
        db.Exec(QStringLiteral("CREATE TABLE T (a TEXT)"));
    }
    Database reader = Database::Open(good, Database::Mode::ReadOnly);
    EXPECT_TRUE(reader.ReadOnly());
    EXPECT_THROW(reader.Exec(QStringLiteral("INSERT INTO T VALUES ('x')")), StoreError);
}

TEST(StoreStatements, MovedStatementsAndDatabasesStayUsable) {
    Database first = MemoryWithItems();
    Database db = std::move(first);
    Insert(db, QStringLiteral("1"), QStringLiteral("a"));
    auto s = db.Prepare(QStringLiteral("SELECT ItemTitle FROM Items"));
    auto moved = std::move(s);
    ASSERT_TRUE(moved.Step());
    EXPECT_EQ(moved.Text(0), QStringLiteral("a"));
    // Reset clears bindings and runs again.
    auto count = db.Prepare(QStringLiteral("SELECT COUNT(*) FROM Items WHERE ItemNumber = ?"));
    count.Bind(1, QStringLiteral("1"));
    ASSERT_TRUE(count.Step());
    EXPECT_EQ(count.Value(0).toInt(), 1);
    count.Reset();
    ASSERT_TRUE(count.Step());
    EXPECT_EQ(count.Value(0).toInt(), 0) << "a cleared binding is NULL";
}
