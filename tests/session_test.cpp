// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up without a window: folders, making and guarding the database,
// choosing the user, the site clock correction and the time-left timer.
#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <functional>
#include <ostream>

#include "core/rule_text.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/text.h"
#include "core/tracking.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "update/update_run.h"

using namespace lw::core;
using lw::test::ReadAll;
using lw::test::SourceDir;
using lw::test::TempRoot;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

class SessionTest : public ::testing::Test {
protected:
    void SetUp() override {
        ResetSession(&m_ui);
        QString error;
        ASSERT_TRUE(SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        CurrentSession().ShippedDir = SourceDir();
    }

    lw::test::ScriptedUi m_ui;
    TempRoot m_root;
};

QByteArray Hash(const QString& path) {
    return QCryptographicHash::hash(ReadAll(path), QCryptographicHash::Sha256);
}

}  // namespace

TEST_F(SessionTest, DirectoriesAreMadeUnderTheRootWithoutTrailingSlash) {
    ResetSession(&m_ui);
    QString error;
    ASSERT_TRUE(SetupDirectories(m_root.Path() + QStringLiteral("/nested/root/"), &error));
    const Session& s = CurrentSession();
    EXPECT_EQ(s.AppRoot, m_root.Path() + QStringLiteral("/nested/root"));
    EXPECT_EQ(s.ConfigsDir, s.AppRoot + QStringLiteral("/Configs/"));
    EXPECT_TRUE(QDir(s.ConfigsDir).exists());
    EXPECT_TRUE(QDir(s.DataDir).exists());
    EXPECT_TRUE(QDir(s.TemplatesDir).exists());
}

TEST_F(SessionTest, AnUnusableRootIsNamedInTheError) {
    const QString file = m_root.Write(QStringLiteral("plainfile"), "x");
    QString error;
    EXPECT_FALSE(SetupDirectories(file + QStringLiteral("/root"), &error));
    EXPECT_TRUE(error.contains(file)) << error.toStdString();
}

TEST_F(SessionTest, ANewDatabaseHoldsTheShippedRulesAndIsMarkedAsOursAndIsOpenedNotRemade) {
    {
        Database db = OpenStore();
        EXPECT_TRUE(QFile::exists(StorePath()));
        EXPECT_FALSE(QFile::exists(StorePath() + QStringLiteral(".new")));
        EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA user_version")), SchemaVersion());
        auto rows = db.Prepare(
            QStringLiteral("SELECT ProtocolName, ProtocolData FROM Protocols ORDER BY rowid"));
        for (const char* name : {"site.pro", "info.pro"}) {
            ASSERT_TRUE(rows.Step());
            EXPECT_EQ(rows.Text(0), QLatin1String(name));
            EXPECT_EQ(rows.Text(1),
                      *LoadRuleFile(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name)));
            EXPECT_FALSE(rows.Text(1).contains(QStringLiteral("\r\r")))
                << "line ends become CR LF once";
        }
        EXPECT_FALSE(rows.Step());
        AddUser(db, {QStringLiteral("Ann"), QStringLiteral("ann1"), QStringLiteral("pw"), {}});
    }
    Database again = OpenStore();
    EXPECT_EQ(again.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Users")), 1);
}

TEST_F(SessionTest, ForeignDamagedAndNewerFilesAreRefusedAndLeftAlone) {
    // Another program's SQLite file: not even its journal mode is changed.
    const auto foreign = [](const char* mode) {
        Database other = Database::Open(StorePath(), Database::Mode::Create);
        other.Exec(QStringLiteral("CREATE TABLE Notes (t TEXT); INSERT INTO Notes VALUES ('mine');"
                                  "PRAGMA journal_mode = ") +
                   QLatin1String(mode));
    };
    const struct {
        const char* what;
        std::function<void()> make;
        QString mentions;
    } cases[] = {
        {"another program's file, rollback journal", [&] { foreign("DELETE"); }, StorePath()},
        {"another program's file, write-ahead log", [&] { foreign("WAL"); }, StorePath()},
        {"not a database at all",
         [&] { m_root.Write(QStringLiteral("Data/Lotwright.db"), QByteArray(4096, 'Z')); },
         QString()},
        {"ours, from a newer version",
         [] { OpenStore().Exec(QStringLiteral("PRAGMA user_version = 999")); },
         QStringLiteral("newer")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (const char* suffix : {"", "-wal", "-shm"}) {
            QFile::remove(StorePath() + QLatin1String(suffix));
        }
        c.make();
        const QByteArray before = Hash(StorePath());
        try {
            OpenStore();
            ADD_FAILURE() << "opened";
        } catch (const StoreError& error) {
            EXPECT_TRUE(error.Message().contains(c.mentions)) << error.Message().toStdString();
        }
        EXPECT_EQ(Hash(StorePath()), before);
    }
}

#ifdef Q_OS_UNIX
// The database holds the site password in clear: it and the data folders are
// the user's alone, when made and when found opened to others.
TEST_F(SessionTest, TheDatabaseAndTheDataFoldersAreTheUsersAlone) {
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    const QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    auto expectOwn = [&](const QString& path, QFile::Permissions wanted) {
        const QFile::Permissions has = QFile::permissions(path);
        EXPECT_EQ(has & (owner | others), wanted) << path.toStdString();
    };
    { OpenStore(); }
    SetCurrentUser(QStringLiteral("Demo"));
    expectOwn(StorePath(), QFile::ReadOwner | QFile::WriteOwner);
    expectOwn(CurrentSession().DataDir, owner);
    expectOwn(CurrentSession().UserDataDir, owner);

    // Opened up by hand (or by an earlier build): tightened again.
    const QFile::Permissions open = others | owner;
    ASSERT_TRUE(QFile::setPermissions(
        StorePath(), open & ~(QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther)));
    ASSERT_TRUE(QFile::setPermissions(CurrentSession().DataDir, open));
    ASSERT_TRUE(QFile::setPermissions(CurrentSession().UserDataDir, open));
    QString error;
    ASSERT_TRUE(SetupDirectories(m_root.Path(), &error));
    SetCurrentUser(QStringLiteral("Demo"));
    { OpenStore(); }
    expectOwn(StorePath(), QFile::ReadOwner | QFile::WriteOwner);
    expectOwn(CurrentSession().DataDir, owner);
    expectOwn(CurrentSession().UserDataDir, owner);
}
#endif

namespace {

// The definitions of the schema's objects of a type ("index", "table").
QStringList Definitions(Database& db, const QString& type) {
    Statement indexes = db.Prepare(QStringLiteral(
        "SELECT name || ': ' || sql FROM sqlite_schema WHERE type = ? AND sql IS NOT NULL "
        "ORDER BY name"));
    indexes.Bind(1, type);
    QStringList out;
    while (indexes.Step()) {
        out << indexes.Text(0).simplified();
    }
    return out;
}

}  // namespace

// A database of the first schema held flags as the texts "True" and
// "False" and refused texts in number columns; opening it mends them, so a
// lost bid is lost to every view. It had no mark of the notice that the site
// password is kept in it either; opening adds one, not yet given. Its indexes
// and the rules of its generated columns end as a new database's are, with
// the money values it stored by the earlier rule standing.
TEST_F(SessionTest, AnEarlierDatabaseIsMendedWhenOpened) {
    QStringList freshIndexes;
    QStringList freshTables;
    {
        Database db = OpenStore();
        freshIndexes = Definitions(db, QStringLiteral("index"));
        freshTables = Definitions(db, QStringLiteral("table"));
        // The earlier number rule in every money column.
        const qint64 cookie = db.ScalarInt(QStringLiteral("PRAGMA schema_version"));
        db.Exec(QStringLiteral("PRAGMA writable_schema = ON"));
        Statement back = db.Prepare(QStringLiteral(
            "UPDATE sqlite_schema SET sql = replace(sql, ?, ?) WHERE type = 'table'"));
        for (const char* column :
             {"HighBid", "MinimumBid", "ReserveBid", "WinningBid", "MaximumBid", "ItemCost",
              "ShippingCost", "InsuranceCost", "OrderShipping", "OrderTax", "OrderAmountofSale",
              "Debit", "Credit", "SoldPrice"}) {
            const QString name = QString::fromLatin1(column);
            back.BindAll(NumberRuleSql(name), EarlierNumberRuleSql(name)).Run();
            back.Reset();
        }
        db.Exec(QStringLiteral("PRAGMA schema_version = %1; PRAGMA writable_schema = OFF")
                    .arg(cookie + 1));
        ASSERT_NE(Definitions(db, QStringLiteral("table")), freshTables);
        // The first schema's indexes of the two tables every update writes.
        db.Exec(QStringLiteral(
            "DROP INDEX AuctionsKey; DROP INDEX BidsKey; DROP INDEX AuctionsByInventory;"
            "CREATE UNIQUE INDEX AuctionsKey ON Auctions (UserName, ItemNumber, AuctionSiteFlag);"
            "CREATE INDEX AuctionsByItem ON Auctions (ItemNumber);"
            "CREATE INDEX AuctionsByUserYear ON Auctions (UserName, EndYear);"
            "CREATE INDEX AuctionsByInventory ON Auctions (InventoryID);"
            "CREATE UNIQUE INDEX BidsKey ON Bids (UserName, ItemNumber, AuctionSiteFlag);"
            "CREATE INDEX BidsByItem ON Bids (ItemNumber);"
            "CREATE INDEX BidsByUserYear ON Bids (UserName, EndYear);"));
        db.Exec(QStringLiteral(
            "INSERT INTO Bids (ItemNumber, Winning, AuctionSiteFlag, EndDate, OrderPaymentMethod) "
            "VALUES ('1', 'True', 0, '06/07/00, 12:04:00 PST', 'x'), "
            "('2', 'False', 0, '06/07/00, 12:04:00 PST', 2), "
            "('3', 'false ', 'ERROR', '06/07/00, 12:04:00 PST', NULL), "
            "('4', 'outbid', 0, '06/07/00, 12:04:00 PST', 1);"
            "INSERT INTO Auctions (ItemNumber, ToDoComplete, HighBid, ReserveBid) "
            "VALUES ('5', 'TRUE', '$1,250.00', '(\u00A3 7)');"
            "ALTER TABLE Global DROP COLUMN PasswordInStoreTold;"
            "DROP INDEX AuctionsOpenTasks; DROP INDEX BidsOpenTasks; DROP INDEX DutchBidsByItem;"
            "DROP VIEW \"All Auctions with Pending Tasks (Dutch)\";"
            "PRAGMA user_version = 1"));
        ASSERT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM \"Completed Bids\"")), 4);
    }
    Database db = OpenStore();
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA user_version")), SchemaVersion());
    Statement bids = db.Prepare(QStringLiteral(
        "SELECT ItemNumber || ':' || quote(Winning) || ':' || quote(AuctionSiteFlag) || ':' || "
        "quote(OrderPaymentMethod) FROM Bids ORDER BY ItemNumber"));
    QStringList rows;
    while (bids.Step()) {
        rows << bids.Text(0);
    }
    EXPECT_EQ(rows, QStringList({QStringLiteral("1:1:0:NULL"), QStringLiteral("2:0:0:2"),
                                 QStringLiteral("3:0:0:NULL"), QStringLiteral("4:0:0:1")}));
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM \"Completed Bids\"")), 1);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT ToDoComplete FROM Auctions")), 1);
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT PasswordInStoreTold FROM Global")), 0);
    EXPECT_EQ(Definitions(db, QStringLiteral("index")), freshIndexes);
    // Global alone differs, by the column added to it since.
    const QStringList tables = Definitions(db, QStringLiteral("table"));
    ASSERT_EQ(tables.size(), freshTables.size());
    for (qsizetype i = 0; i < tables.size(); ++i) {
        if (!tables[i].startsWith(QStringLiteral("Global:"))) {
            EXPECT_EQ(tables[i].toStdString(), freshTables[i].toStdString());
        }
    }
    Statement check = db.Prepare(QStringLiteral("PRAGMA integrity_check"));
    ASSERT_TRUE(check.Step());
    EXPECT_EQ(check.Text(0), QStringLiteral("ok"));
    db.Exec(QStringLiteral("INSERT INTO Auctions (ItemNumber, HighBid) VALUES ('6', '$3.50')"));
    Statement money = db.Prepare(
        QStringLiteral("SELECT HighBidNum, ReserveBidNum, SaleCounted FROM Auctions ORDER BY "
                       "ItemNumber"));
    ASSERT_TRUE(money.Step());
    EXPECT_EQ(money.Value(0).toDouble(), 1250.0);
    EXPECT_EQ(money.Value(1).toDouble(), -7.0);
    EXPECT_EQ(money.Value(2).toLongLong(), 1);
    ASSERT_TRUE(money.Step());
    EXPECT_EQ(money.Value(0).toDouble(), 3.5);
    EXPECT_EQ(
        db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM \"Auctions Awaiting Payment (Dutch)\"")),
        0)
        << "the narrower filters find the pending winners' view again";
}

TEST_F(SessionTest, AMissingShippedFileIsNamedAndNoDatabaseIsLeft) {
    TempRoot shipped;
    shipped.Write(QStringLiteral("data/schema.sql"),
                  ReadAll(SourceDir() + QStringLiteral("/data/schema.sql")));
    shipped.Write(QStringLiteral("data/seed.sql"),
                  ReadAll(SourceDir() + QStringLiteral("/data/seed.sql")));
    shipped.Write(QStringLiteral("rules/site.pro"),
                  ReadAll(SourceDir() + QStringLiteral("/rules/site.pro")));
    CurrentSession().ShippedDir = shipped.Path();
    try {
        OpenStore();
        FAIL();
    } catch (const StoreError& error) {
        EXPECT_TRUE(error.Message().contains(QStringLiteral("rules/info.pro")))
            << error.Message().toStdString();
    }
    EXPECT_FALSE(QFile::exists(StorePath()));
    EXPECT_FALSE(QFile::exists(StorePath() + QStringLiteral(".new")));
}

TEST_F(SessionTest, UsersAreAddedWithTheirSiteRowAndQuotesInNames) {
    Database db = OpenStore();
    AddUser(db, {QStringLiteral("O'Hara "), QStringLiteral("o'hara_sells"), QStringLiteral("p'w"),
                 QStringLiteral("oh@example.com")});
    AddUser(db, {QStringLiteral("Ben"), QStringLiteral("ben"), QStringLiteral("x"), {}});
    EXPECT_THROW(
        AddUser(db, {QStringLiteral("ben "), QStringLiteral("b"), QStringLiteral("x"), {}}),
        StoreError)
        << "names differ neither by case nor by trailing blanks";
    auto users = db.Prepare(QStringLiteral("SELECT UserName, isDefault FROM Users ORDER BY rowid"));
    ASSERT_TRUE(users.Step());
    EXPECT_EQ(users.Text(0), QStringLiteral("O'Hara"));
    EXPECT_FALSE(users.Flag(QStringLiteral("isDefault"))) << "the newest user became the default";
    ASSERT_TRUE(users.Step());
    EXPECT_TRUE(users.Flag(QStringLiteral("isDefault")));
    auto site = db.Prepare(QStringLiteral(
        "SELECT UserID, UserPassword, SiteEmailAddress FROM UserSites WHERE UserName = ? AND "
        "AuctionSiteFlag = 0"));
    site.Bind(1, QStringLiteral("o'hara "));
    ASSERT_TRUE(site.Step());
    EXPECT_EQ(site.Text(0), QStringLiteral("o'hara_sells"));
    EXPECT_EQ(site.Text(1), QStringLiteral("p'w"));
    EXPECT_EQ(site.Text(2), QStringLiteral("oh@example.com"));
}

TEST_F(SessionTest, ChoosingTheUserTakesTheDefaultRowAndMakesItsFolder) {
    Database db = OpenStore();
    AddUser(db, {QStringLiteral("Ann"), QStringLiteral("a"), QStringLiteral("x"), {}});
    AddUser(db, {QStringLiteral("Ben"), QStringLiteral("b"), QStringLiteral("x"), {}}, false);
    int windows = 0;
    EXPECT_EQ(ChooseUser(db, [&] { ++windows; }), UserChoice::Chosen);
    EXPECT_EQ(windows, 0) << "with a user present the new-user window never opens";
    EXPECT_EQ(CurrentSession().CurrentUser, QStringLiteral("Ann"));
    EXPECT_EQ(CurrentSession().UserDataDir, CurrentSession().DataDir + QStringLiteral("Ann/"));
    EXPECT_TRUE(QDir(CurrentSession().UserDataDir).exists());
}

TEST_F(SessionTest, AnEmptyUserTableOpensTheNewUserWindow) {
    Database db = OpenStore();
    int windows = 0;
    const auto choice = ChooseUser(db, [&] {
        ++windows;
        AddUser(db, {QStringLiteral("Cleo"), QStringLiteral("c"), QStringLiteral("x"), {}});
    });
    EXPECT_EQ(choice, UserChoice::Chosen);
    EXPECT_EQ(windows, 1);
    EXPECT_EQ(CurrentSession().CurrentUser, QStringLiteral("Cleo"));
}

TEST_F(SessionTest, ACancelledNewUserWindowEndsTheChoiceAndAStaleMarkerDoesNot) {
    Database db = OpenStore();
    EnsureFile(NewUserCancelMarker(), true);
    RemoveStaleNewUserCancel();
    EXPECT_FALSE(NewUserCancelled());
    const auto choice = ChooseUser(db, [] { EnsureFile(NewUserCancelMarker(), true); });
    EXPECT_EQ(choice, UserChoice::Cancelled);
    EXPECT_TRUE(CurrentSession().CurrentUser.isEmpty());
}

TEST_F(SessionTest, SiteCorrectionComesFromGlobalOrIsZero) {
    Database db = OpenStore();
    const struct {
        const char *sql, *correction;
    } cases[] = {
        {"DELETE FROM Global", "0"},
        {"INSERT INTO Global (eBayCorrection) VALUES (-42)", "-42"},
        {"UPDATE Global SET eBayCorrection = NULL", "0"},
    };
    for (const auto& c : cases) {
        db.Exec(QString::fromUtf8(c.sql));
        CurrentSession().SiteCorrection = QStringLiteral("55");
        LoadSiteCorrection(db);
        EXPECT_EQ(CurrentSession().SiteCorrection, QString::fromUtf8(c.correction)) << c.sql;
    }
}

TEST(TimeLeftTimer, ThirtyThousandIsMillisecondsBelowIsTicks) {
    const auto direct = TimeLeftTimerFor(true, 30000);
    EXPECT_TRUE(direct.enabled);
    EXPECT_EQ(direct.intervalMs, 30000);
    EXPECT_EQ(direct.ticksWanted, QStringLiteral("0"));
    const auto counting = TimeLeftTimerFor(true, 29999);
    EXPECT_EQ(counting.intervalMs, 65535);
    EXPECT_EQ(counting.ticksWanted, QStringLiteral("29999"));
    EXPECT_EQ(counting.ticksCounted, QStringLiteral("0"));
    EXPECT_FALSE(TimeLeftTimerFor(false, 30000).enabled);
}

TEST_F(SessionTest, TimeLeftTimerReadsGlobal) {
    Database db = OpenStore();
    db.Exec(QStringLiteral("UPDATE Global SET AutoUpdateTimeLeft = 1, TimeLeftInterval = 5"));
    const auto timer = TimeLeftTimerRule(db);
    EXPECT_TRUE(timer.enabled);
    EXPECT_EQ(timer.ticksWanted, QStringLiteral("5"));
    db.Exec(QStringLiteral("UPDATE Global SET AutoUpdateTimeLeft = 0"));
    EXPECT_FALSE(TimeLeftTimerRule(db).enabled);
}

namespace {

// The user's home and XDG folders pointed into a temporary folder for one
// test, so that nothing of the real home is read or written; put back after.
class LocationsTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : kNames) {
            m_kept.push_back({name, qEnvironmentVariableIsSet(name), qgetenv(name)});
        }
        qputenv("HOME", m_home.File(QStringLiteral("home")).toLocal8Bit());
        qputenv("XDG_DATA_HOME", DataHome().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", ConfigHome().toLocal8Bit());
        qputenv("XDG_CACHE_HOME", CacheHome().toLocal8Bit());
        ResetSession(&m_ui);
    }
    void TearDown() override {
        for (const Kept& kept : m_kept) {
            if (kept.set) {
                qputenv(kept.name, kept.value);
            } else {
                qunsetenv(kept.name);
            }
        }
        SetSettingsFolder(QString());
        ResetSession();
    }

    QString DataHome() const { return m_home.File(QStringLiteral("data")); }
    QString ConfigHome() const { return m_home.File(QStringLiteral("config")); }
    QString CacheHome() const { return m_home.File(QStringLiteral("cache")); }

    // Every file and folder under dir, relative to it, sorted.
    static QStringList Tree(const QString& dir) {
        QStringList entries;
        QDirIterator walk(dir, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            entries << QDir(dir).relativeFilePath(walk.next());
        }
        entries.sort();
        return entries;
    }

    static constexpr const char* kNames[] = {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME",
                                             "XDG_CACHE_HOME"};
    struct Kept {
        const char* name;
        bool set;
        QByteArray value;
    };
    std::vector<Kept> m_kept;
    lw::test::ScriptedUi m_ui;
    TempRoot m_home;
};

}  // namespace

TEST_F(LocationsTest, TheLayoutBesideTheProgramDecidesWhereEachKindOfFileGoes) {
    // Folders are named relative to a fresh prefix; "@data", "@config" and
    // "@cache" stand for the user's folders, "@exe" for the executable's.
    struct Case {
        const char* what;
        const char* shipped;  // folders made to hold rules/ and data/, '|' between
        const char* given;    // --root, relative to the prefix; null: none
        const char *root, *shippedDir, *settings;
        const char* cache;  // empty: scratch files in Configs/ under the root
        bool perUser;
    };
    const Case cases[] = {
        {"a build tree or an unpacked copy", "bin", nullptr, "bin", "bin", "@config/Lotwright", "",
         false},
        {"an installed copy, its prefix writable by whoever runs it (root included)",
         "share/lotwright", nullptr, "@data/Lotwright", "share/lotwright", "@config/Lotwright",
         "@cache/Lotwright", true},
        {"an installed copy over the shipped files an earlier install left in bin/",
         "bin|share/lotwright", nullptr, "@data/Lotwright", "share/lotwright", "@config/Lotwright",
         "@cache/Lotwright", true},
        {"the shipped files in the parent of the program's folder", ".", nullptr, "@data/Lotwright",
         ".", "@config/Lotwright", "@cache/Lotwright", true},
        {"a given root beside an installed copy", "share/lotwright", "mine", "mine",
         "share/lotwright", "mine/Configs/Settings", "", false},
        {"a given root beside a portable copy", "bin", "mine", "mine", "bin",
         "mine/Configs/Settings", "", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempRoot prefix;
        QDir(prefix.Path()).mkpath(QStringLiteral("bin"));
        for (const QString& folder : QString::fromUtf8(c.shipped).split(u'|')) {
            QDir(prefix.File(folder)).mkpath(QStringLiteral("rules"));
            QDir(prefix.File(folder)).mkpath(QStringLiteral("data"));
        }
        auto expand = [&](const QString& path) {
            QString full = path;
            full.replace(QStringLiteral("@data"), DataHome())
                .replace(QStringLiteral("@config"), ConfigHome())
                .replace(QStringLiteral("@cache"), CacheHome());
            return full.isEmpty() || full.startsWith(u'/') ? full
                                                           : QDir::cleanPath(prefix.File(full));
        };
        QString error;
        const auto found =
            ResolveLocations(c.given ? prefix.File(QLatin1String(c.given)) : QString(),
                             prefix.File(QStringLiteral("bin")), &error);
        ASSERT_TRUE(found) << error.toStdString();
        EXPECT_EQ(found->appRoot, expand(QLatin1String(c.root)));
        EXPECT_EQ(found->shippedDir, expand(QLatin1String(c.shippedDir)));
        EXPECT_EQ(found->settingsDir, expand(QLatin1String(c.settings)));
        EXPECT_EQ(found->cacheDir, expand(QLatin1String(c.cache)));
        EXPECT_EQ(found->perUser, c.perUser);
    }
}

TEST_F(LocationsTest, WithoutShippedFilesNothingIsResolvedAndTheMessageSaysWhereTheyWereLooked) {
    TempRoot prefix;
    QDir(prefix.Path()).mkpath(QStringLiteral("bin"));
    for (const QString& given : {QString(), prefix.File(QStringLiteral("mine"))}) {
        QString error;
        EXPECT_FALSE(ResolveLocations(given, prefix.File(QStringLiteral("bin")), &error));
        EXPECT_TRUE(error.contains(prefix.File(QStringLiteral("bin"))) &&
                    error.contains(prefix.File(QStringLiteral("share/lotwright"))))
            << error.toStdString();
    }
}

TEST_F(LocationsTest, AnInstalledCopyWritesNothingUnderItsPrefixAndItsScratchGoesToTheCache) {
    TempRoot prefix;
    QDir(prefix.Path()).mkpath(QStringLiteral("bin"));
    for (const char* folder : {"rules", "data"}) {
        const QString from = SourceDir() + u'/' + QLatin1String(folder);
        const QString to = prefix.File(QStringLiteral("share/lotwright/") + QLatin1String(folder));
        ASSERT_TRUE(QDir().mkpath(to));
        for (const QString& name : QDir(from).entryList(QDir::Files)) {
            ASSERT_TRUE(QFile::copy(from + u'/' + name, to + u'/' + name));
        }
    }
    const QStringList before = Tree(prefix.Path());

    QString error;
    const auto found = ResolveLocations({}, prefix.File(QStringLiteral("bin")), &error);
    ASSERT_TRUE(found) << error.toStdString();
    ASSERT_TRUE(UseLocations(*found, &error)) << error.toStdString();
    ASSERT_TRUE(SetupDirectories(found->appRoot, &error)) << error.toStdString();
    OpenStore();
    SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), QStringLiteral("Track"),
                QStringLiteral("OFF"));

    const Session& s = CurrentSession();
    const QString cache = CacheHome() + QStringLiteral("/Lotwright/");
    EXPECT_EQ(s.ScratchDir, cache);
    for (const QString& scratch :
         {lw::update::UpdateRun::UpdatePagePath(), lw::update::UpdateRun::AncillaryPagePath(),
          lw::update::RunListPath(), NewUserCancelMarker()}) {
        EXPECT_EQ(QFileInfo(scratch).absolutePath() + u'/', cache) << scratch.toStdString();
    }
    EXPECT_TRUE(lw::update::PreviousRulesDir().startsWith(s.ConfigsDir))
        << "the rules an update replaced are the user's, not scratch";
    EXPECT_EQ(QFile::permissions(cache) & (QFile::ReadOther | QFile::ReadGroup),
              QFile::Permissions())
        << "the scratch pages are the user's sales";
    EXPECT_TRUE(QFile::exists(DataHome() + QStringLiteral("/Lotwright/Data/Lotwright.db")));
    EXPECT_TRUE(QFile::exists(ConfigHome() + QStringLiteral("/Lotwright/Tolvane.ini")));
    EXPECT_EQ(Tree(prefix.Path()), before) << "nothing was written under the prefix";
}

TEST_F(LocationsTest, AnEarlierVersionsDoubledUserFolderIsMovedUpOnceAndNeverOverAnything) {
    struct Case {
        const char* what;
        QStringList present;  // files made under the new root before the start
        bool moves;
        bool fails;
        const char* database;  // what Data/Lotwright.db under the new root holds after
    };
    const Case cases[] = {
        {"a first start of this version", {}, true, false, "earlier db"},
        {"the new root already holds a database", {"Data/Lotwright.db"}, false, false, "present"},
        {"the new root holds other files of the user's", {"Configs/site.pro"}, false, true, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempRoot prefix;
        QDir(prefix.File(QStringLiteral("share/lotwright"))).mkpath(QStringLiteral("rules"));
        QDir(prefix.File(QStringLiteral("share/lotwright"))).mkpath(QStringLiteral("data"));
        QDir(prefix.Path()).mkpath(QStringLiteral("bin"));
        // The user's data folder, as the home holds it.
        const QString root = QStringLiteral("data/Lotwright");
        const QString earlier = root + QStringLiteral("/Lotwright");
        QDir(m_home.File(root)).removeRecursively();
        m_home.Write(earlier + QStringLiteral("/Data/Lotwright.db"), "earlier db");
        m_home.Write(earlier + QStringLiteral("/Configs/previous/site.pro"), "earlier rules");
        for (const QString& file : c.present) {
            m_home.Write(root + u'/' + file, "present");
        }
        QString error;
        const auto found = ResolveLocations({}, prefix.File(QStringLiteral("bin")), &error);
        ASSERT_TRUE(found) << error.toStdString();
        EXPECT_EQ(UseLocations(*found, &error), !c.fails);
        EXPECT_EQ(error.contains(m_home.File(earlier)), c.fails) << error.toStdString();
        EXPECT_EQ(ReadAll(m_home.File(root + QStringLiteral("/Data/Lotwright.db"))),
                  QByteArray(c.database));
        EXPECT_EQ(QFile::exists(m_home.File(root + QStringLiteral("/Configs/previous/site.pro"))),
                  c.moves);
        EXPECT_EQ(QFile::exists(m_home.File(earlier)), !c.moves)
            << "the earlier folder stays unless moved";
    }
}

TEST_F(SessionTest, UsageCountersAddAndMarkAndNeverFail) {
    {
        Database db = OpenStore();
        db.Exec(QStringLiteral("DELETE FROM Tracking"));
    }
    TrackCount(QStringLiteral("Updates"));
    TrackCount(QStringLiteral("updates"));
    TrackCount(QStringLiteral("AuctionsPosted"));
    TrackUse(QStringLiteral("SendEmail"));
    TrackCount(QStringLiteral("Updates; DROP TABLE Tracking"));
    Database db = OpenStore();
    auto row = db.Prepare(QStringLiteral("SELECT * FROM Tracking"));
    ASSERT_TRUE(row.Step());
    EXPECT_EQ(row.Int(QStringLiteral("Updates")), 2);
    EXPECT_EQ(row.Int(QStringLiteral("AuctionsPosted")), 1);
    EXPECT_TRUE(row.Flag(QStringLiteral("SendEmail")));
    EXPECT_FALSE(row.Flag(QStringLiteral("Paypal")));
    EXPECT_FALSE(row.Step()) << "one row of counters";

    // With no database at all the calls are silent.
    CurrentSession().DataDir = m_root.File(QStringLiteral("nowhere/")) + QStringLiteral("x/");
    CurrentSession().ShippedDir = m_root.File(QStringLiteral("no-shipped-files"));
    EXPECT_NO_THROW(TrackCount(QStringLiteral("Updates")));
    EXPECT_NO_THROW(TrackUse(QStringLiteral("SendEmail")));
}
