// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up without a window: folders, making and guarding the database,
// choosing the user, the site clock correction and the time-left timer.
#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include "core/rule_text.h"
#include "core/session.h"
#include "core/store.h"
#include "core/text.h"
#include "core/tracking.h"
#include "tests/support/test_support.h"

using namespace lw::core;
using lw::test::ReadAll;
using lw::test::SourceDir;
using lw::test::TempRoot;

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

TEST_F(SessionTest, ANewDatabaseHoldsTheShippedRulesAndIsMarkedAsOurs) {
    Database db = OpenStore();
    EXPECT_TRUE(QFile::exists(StorePath()));
    EXPECT_FALSE(QFile::exists(StorePath() + QStringLiteral(".new")));
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA user_version")), SchemaVersion());
    auto rows = db.Prepare(
        QStringLiteral("SELECT ProtocolName, ProtocolData FROM Protocols ORDER BY rowid"));
    ASSERT_TRUE(rows.Step());
    EXPECT_EQ(rows.Text(0), QStringLiteral("site.pro"));
    EXPECT_EQ(rows.Text(1), *LoadRuleFile(SourceDir() + QStringLiteral("/rules/site.pro")));
    ASSERT_TRUE(rows.Step());
    EXPECT_EQ(rows.Text(0), QStringLiteral("info.pro"));
    EXPECT_EQ(rows.Text(1), *LoadRuleFile(SourceDir() + QStringLiteral("/rules/info.pro")));
    EXPECT_FALSE(rows.Step());
    EXPECT_FALSE(rows.Text(1).contains(QStringLiteral("\r\r"))) << "line ends become CR LF once";
}

TEST_F(SessionTest, AnExistingDatabaseIsOpenedNotRemade) {
    {
        Database db = OpenStore();
        AddUser(db, {QStringLiteral("Ann"), QStringLiteral("ann1"), QStringLiteral("pw"), {}});
    }
    Database again = OpenStore();
    EXPECT_EQ(again.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Users")), 1);
}

TEST_F(SessionTest, ForeignDamagedAndNewerFilesAreRefusedAndLeftAlone) {
    // Another program's SQLite file, in the rollback journal mode: not even
    // its journal mode is changed.
    {
        Database other = Database::Open(StorePath(), Database::Mode::Create);
        other.Exec(
            QStringLiteral("CREATE TABLE Notes (t TEXT); INSERT INTO Notes VALUES ('mine')"));
    }
    for (const char* mode : {"DELETE", "WAL"}) {
        {
            Database other = Database::Open(StorePath());
            other.Exec(QStringLiteral("PRAGMA journal_mode = ") + QLatin1String(mode));
        }
        const QByteArray before = Hash(StorePath());
        try {
            OpenStore();
            FAIL() << "a foreign database must be refused";
        } catch (const StoreError& error) {
            EXPECT_TRUE(error.Message().contains(StorePath()));
        }
        EXPECT_EQ(Hash(StorePath()), before) << mode;
    }
    QByteArray before;

    // Not a database at all.
    QFile::remove(StorePath());
    QFile::remove(StorePath() + QStringLiteral("-wal"));
    QFile::remove(StorePath() + QStringLiteral("-shm"));
    m_root.Write(QStringLiteral("Data/Lotwright.db"), QByteArray(4096, 'Z'));
    before = Hash(StorePath());
    EXPECT_THROW(OpenStore(), StoreError);
    EXPECT_EQ(Hash(StorePath()), before);

    // Ours, but from a newer version.
    QFile::remove(StorePath());
    { OpenStore().Exec(QStringLiteral("PRAGMA user_version = 999")); }
    try {
        OpenStore();
        FAIL() << "a newer schema must be refused";
    } catch (const StoreError& error) {
        EXPECT_TRUE(error.Message().contains(QStringLiteral("newer")));
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

// A database of the first schema held flags as the texts "True" and
// "False" and refused texts in number columns; opening it mends them, so a
// lost bid is lost to every view. It had no mark of the notice that the site
// password is kept in it either; opening adds one, not yet given.
TEST_F(SessionTest, AnEarlierDatabaseIsMendedWhenOpened) {
    {
        Database db = OpenStore();
        db.Exec(QStringLiteral(
            "INSERT INTO Bids (ItemNumber, Winning, AuctionSiteFlag, EndDate, OrderPaymentMethod) "
            "VALUES ('1', 'True', 0, '06/07/00, 12:04:00 PST', 'x'), "
            "('2', 'False', 0, '06/07/00, 12:04:00 PST', 2), "
            "('3', 'false ', 'ERROR', '06/07/00, 12:04:00 PST', NULL), "
            "('4', 'outbid', 0, '06/07/00, 12:04:00 PST', 1);"
            "INSERT INTO Auctions (ItemNumber, ToDoComplete) VALUES ('5', 'TRUE');"
            "ALTER TABLE Global DROP COLUMN PasswordInStoreTold;"
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
    db.Exec(QStringLiteral("DELETE FROM Global"));
    CurrentSession().SiteCorrection = QStringLiteral("55");
    LoadSiteCorrection(db);
    EXPECT_EQ(CurrentSession().SiteCorrection, QStringLiteral("0"));
    db.Exec(QStringLiteral("INSERT INTO Global (eBayCorrection) VALUES (-42)"));
    LoadSiteCorrection(db);
    EXPECT_EQ(CurrentSession().SiteCorrection, QStringLiteral("-42"));
    db.Exec(QStringLiteral("UPDATE Global SET eBayCorrection = NULL"));
    LoadSiteCorrection(db);
    EXPECT_EQ(CurrentSession().SiteCorrection, QStringLiteral("0"));
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

TEST(AppRoot, GivenRootWinsThenAPortableCopyThenTheUserFolder) {
    TempRoot exe;
    EXPECT_EQ(ResolveAppRoot(exe.File(QStringLiteral("chosen")), exe.Path()),
              exe.File(QStringLiteral("chosen")));
    const QString userFolder = ResolveAppRoot({}, exe.Path());
    EXPECT_NE(userFolder, exe.Path()) << "a folder without the shipped files is no portable copy";
    QDir(exe.Path()).mkpath(QStringLiteral("rules"));
    QDir(exe.Path()).mkpath(QStringLiteral("data"));
    EXPECT_EQ(ResolveAppRoot({}, exe.Path()), QDir(exe.Path()).absolutePath());
    EXPECT_EQ(ResolveShippedDir(exe.Path()), QDir(exe.Path()).absolutePath());
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
