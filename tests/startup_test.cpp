// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up of the desktop program without its windows: the steps before the
// user is chosen, the choice of the user with a stand-in for the new-user
// window, and the first retrieval of a new user with stand-ins for the main
// and update windows.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QStringList>

#include "admin/new_user.h"
#include "admin/startup.h"
#include "admin/tips.h"
#include "core/rule_text.h"
#include "core/session.h"
#include "core/settings.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/run_lists.h"

using namespace lw;
using lw::test::SourceDir;
using lw::test::TempRoot;
using namespace Qt::StringLiterals;

namespace {

class StartupTest : public ::testing::Test {
protected:
    void SetUp() override {
        core::ResetSession(&m_ui);
        core::SetSettingsFolder(m_root.File(u"settings"_s));
        core::CurrentSession().ShippedDir = SourceDir();
        update::Rules().ClearAll();
    }
    void TearDown() override { core::SetSettingsFolder(QString()); }

    QString Option(const QString& key) { return core::GetSetting(u"Tolvane"_s, u"Options"_s, key); }

    // The steps before the user in the test's root, with the reason on failure.
    ::testing::AssertionResult Prepare() {
        QString error;
        if (admin::PrepareStartup(m_root.Path(), &error)) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << error.toStdString();
    }

    // Prepared start with one user, who has never been updated.
    core::Database StartWithUser(const QString& name) {
        EXPECT_TRUE(Prepare());
        core::Database db = core::OpenStore();
        core::AddUser(db, {name, u"demo_seller"_s, u"pw"_s, QString()});
        EXPECT_EQ(admin::ChooseStartupUser(db, {}), admin::StartupChoice::Run);
        return db;
    }

    test::ScriptedUi m_ui;
    TempRoot m_root;
};

}  // namespace

// ---------------------------------------------------------- before the user

TEST_F(StartupTest, PreparationMakesTheFoldersAndDatabaseAndLoadsTheRules) {
    ASSERT_TRUE(Prepare());
    EXPECT_TRUE(QFile::exists(m_root.File(u"Data/Lotwright.db"_s)));
    const auto shipped = core::LoadRuleFile(SourceDir() + u"/rules/site.pro"_s);
    ASSERT_TRUE(shipped.has_value());
    EXPECT_TRUE(update::Rules().Text(update::kSiteStore).startsWith(*shipped));
    EXPECT_NE(update::LookupRuleKey(u"Update"_s, u"Protocols"_s, update::kSiteStore),
              update::RuleError());
    // The listing templates came from the shipped copy; a template the user
    // changed stays as it is at the next start.
    const QString own = m_root.File(u"Templates/Auctions/quick.tem"_s);
    EXPECT_EQ(
        QDir(m_root.File(u"Templates/Auctions"_s)).entryList({u"*.tem"_s}, QDir::Files).size(), 7);
    m_root.Write(u"Templates/Auctions/quick.tem"_s, "Style=Mine");
    ASSERT_TRUE(Prepare());
    EXPECT_EQ(test::ReadAll(own), QByteArray("Style=Mine"));
}

TEST_F(StartupTest, PreparationFillsANewCategoryDirectoryAndTakesADownloadedOne) {
    ASSERT_TRUE(Prepare());
    const QString count = u"SELECT COUNT(*) FROM eBayCategories"_s;
    EXPECT_GT(core::OpenStore().ScalarInt(count), 0);
    EXPECT_TRUE(m_ui.Messages().isEmpty());

    const QString file = m_root.Write(u"Configs/category.pro"_s, "[Books]\r\nFiction=201\r\n");
    ASSERT_TRUE(Prepare());
    EXPECT_EQ(core::OpenStore().ScalarInt(count), 1);
    EXPECT_EQ(m_ui.Messages(),
              QStringList{u"1 auction categories are now available in your database."_s});
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(StartupTest, APendingRuleRepairIsAppliedBeforeTheRulesAreLoaded) {
    ASSERT_TRUE(Prepare());
    auto site = *core::LoadRuleFile(SourceDir() + u"/rules/site.pro"_s);
    site.prepend(u"[Start Marker]\r\nWho=repaired\r\n\r\n"_s);
    const auto info = *core::LoadRuleFile(SourceDir() + u"/rules/info.pro"_s);
    m_root.Write(u"Configs/site.pro"_s, site.toUtf8());
    m_root.Write(u"Configs/info.pro"_s, info.toUtf8());
    m_root.Write(u"Configs/protfix.cfg"_s, "1");
    update::Rules().ClearAll();

    ASSERT_TRUE(Prepare());
    EXPECT_EQ(update::LookupRuleKey(u"Start Marker"_s, u"Who"_s, update::kSiteStore),
              u"repaired"_s);
    EXPECT_FALSE(QFile::exists(m_root.File(u"Configs/site.pro"_s)));
}

TEST_F(StartupTest, PreparationResetsThePageStartsAndRemovesAStaleCancelMarker) {
    const QStringList pageStarts = {u"AAViewStart"_s, u"CAViewStart"_s};
    for (const QString& key : pageStarts) {
        core::SaveSetting(u"Tolvane"_s, u"Options"_s, key, 21);
    }
    const QString marker = m_root.Write(u"Configs/nuwcancel.cfg"_s, "");
    ASSERT_TRUE(Prepare());
    for (const QString& key : pageStarts) {
        EXPECT_EQ(Option(key), u"1"_s) << key.toStdString();
    }
    EXPECT_FALSE(QFile::exists(marker));

    // The marker of an earlier run does not end this one.
    core::Database db = core::OpenStore();
    core::AddUser(db, {u"Ann"_s, u"ann_s"_s, u"pw"_s, {}});
    EXPECT_EQ(admin::ChooseStartupUser(db, {}), admin::StartupChoice::Run);
    EXPECT_EQ(core::CurrentSession().CurrentUser, u"Ann"_s);
}

TEST_F(StartupTest, AnUnusableRootOrDatabaseStopsTheStartWithItsName) {
    const QString file = m_root.Write(u"plainfile"_s, "x");
    QString error;
    EXPECT_FALSE(admin::PrepareStartup(file + u"/root"_s, &error));
    EXPECT_TRUE(error.contains(file)) << error.toStdString();

    const QString foreign = m_root.Write(u"other/Data/Lotwright.db"_s,
                                         QByteArray("not a database at all").repeated(200));
    error.clear();
    EXPECT_FALSE(admin::PrepareStartup(m_root.File(u"other"_s), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(test::ReadAll(foreign), QByteArray("not a database at all").repeated(200))
        << "a file that is not ours is left as it was";
}

// ---------------------------------------------------------- the user

TEST_F(StartupTest, NoUserOpensTheNewUserWindowWhoseRowsChooseTheUser) {
    ASSERT_TRUE(Prepare());
    core::Database db = core::OpenStore();
    int shown = 0;
    const auto choice = admin::ChooseStartupUser(db, [&] {
        ++shown;
        ASSERT_TRUE(admin::CreateNewUser(
            db, {u"O'Neil"_s, u"oneil_s"_s, u"secret"_s, u"o@example.com"_s}, u"secret"_s, m_ui));
    });
    EXPECT_EQ(choice, admin::StartupChoice::Run);
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(core::CurrentSession().CurrentUser, u"O'Neil"_s);
    EXPECT_TRUE(QFile::exists(m_root.File(u"Data/O'Neil"_s)));
    EXPECT_EQ(admin::WelcomeCaption(core::CurrentSession().CurrentUser),
              u"Tolvane Lotwright Pro: Welcome O'Neil!"_s);
}

TEST_F(StartupTest, CancellingTheNewUserWindowEndsTheProgramWithoutAWord) {
    ASSERT_TRUE(Prepare());
    core::Database db = core::OpenStore();
    int shown = 0;
    const auto choice = admin::ChooseStartupUser(db, [&] {
        ++shown;
        admin::CancelNewUser();
    });
    EXPECT_EQ(choice, admin::StartupChoice::EndProgram);
    EXPECT_EQ(shown, 1);
    EXPECT_TRUE(core::CurrentSession().CurrentUser.isEmpty());
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_EQ(db.ScalarInt(u"SELECT COUNT(*) FROM Users"_s), 0);
}

TEST_F(StartupTest, UsersWithoutADefaultAreToldAndNobodyIsChosen) {
    ASSERT_TRUE(Prepare());
    core::Database db = core::OpenStore();
    core::AddUser(db, {u"Ann"_s, u"ann_s"_s, u"pw"_s, {}}, false);
    EXPECT_EQ(admin::ChooseStartupUser(db, [] { FAIL() << "a user exists"; }),
              admin::StartupChoice::NoDefaultUser);
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_TRUE(m_ui.Messages().front().contains(db.Path()));
    EXPECT_TRUE(core::CurrentSession().CurrentUser.isEmpty());
}

// ---------------------------------------------------------- first retrieval

TEST_F(StartupTest, AnUpdatedUserStartsWithoutTouchingTheNetwork) {
    core::Database db = StartWithUser(u"Ann"_s);
    db.Exec(u"UPDATE UserSites SET LastUpdate = '11/20/26, 10:00:00'"_s);
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [] {
        ADD_FAILURE() << "the connection was tested";
        return true;
    };
    hooks.updateWindow = [] { ADD_FAILURE() << "the update window opened"; };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::NotNeeded);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_FALSE(QFile::exists(update::RunListPath()));
}

TEST_F(StartupTest, WithoutAConnectionTheRetrievalWaitsSilently) {
    core::Database db = StartWithUser(u"Ann"_s);
    bool shown = false;
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [] { return false; };
    hooks.showMainWindow = [&] { shown = true; };
    hooks.updateWindow = [] { ADD_FAILURE() << "the update window opened"; };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::NoConnection);
    EXPECT_FALSE(shown);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_FALSE(QFile::exists(update::RunListPath()));
    EXPECT_TRUE(admin::FirstRetrievalPending(db, u"Ann"_s));
}

TEST_F(StartupTest, TheFirstRetrievalRunsTheFirstRunListWithTipsHeldBack) {
    core::Database db = StartWithUser(u"Ann"_s);
    QStringList order;
    QStringList listSeen;
    bool tipsDuringUpdate = true;
    qsizetype messagesBeforeUpdate = -1;
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [&] {
        order << u"connect"_s;
        return true;
    };
    hooks.showMainWindow = [&] { order << u"main"_s; };
    hooks.updateWindow = [&] {
        order << u"update"_s;
        listSeen = update::ReadRunList();
        tipsDuringUpdate = admin::ShowTipsAtStartup();
        messagesBeforeUpdate = m_ui.Messages().size();
    };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::Ran);

    EXPECT_EQ(order, (QStringList{u"connect"_s, u"main"_s, u"update"_s}));
    EXPECT_FALSE(tipsDuringUpdate) << "no tip may open over the retrieval";
    EXPECT_TRUE(admin::ShowTipsAtStartup());
    EXPECT_EQ(Option(u"Show Tips at Startup"_s), u"1"_s);

    EXPECT_EQ(messagesBeforeUpdate, 1);
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_EQ(m_ui.Messages().front(),
              QStringLiteral("Tolvane is now going to retrieve information about your sales and "
                             "bids for the last 30 days from eBay.  Depending on the number of "
                             "sales or bids, this may take from 3 to 45 minutes."));
    EXPECT_EQ(m_ui.Titles().front(), u"Retrieving eBay Data"_s);

    // The rule section Update, one "protocol site" line each, then the
    // account history.
    const QStringList updateList = update::RuleUpdateList(update::Rules());
    ASSERT_FALSE(updateList.isEmpty());
    EXPECT_EQ(listSeen, updateList + QStringList{u"Account History eBay"_s});
    for (const QString& line : updateList) {
        EXPECT_TRUE(line.endsWith(u" eBay"_s)) << line.toStdString();
    }
}

TEST_F(StartupTest, ARunListThatCannotBeWrittenIsToldAndNoUpdateOpens) {
    core::Database db = StartWithUser(u"Ann"_s);
    // A folder where the file should be.
    ASSERT_TRUE(QDir().mkpath(update::RunListPath()));
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [] { return true; };
    hooks.updateWindow = [] { ADD_FAILURE() << "the update window opened"; };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::NoRunList);
    ASSERT_EQ(m_ui.Messages().size(), 2);
    EXPECT_TRUE(m_ui.Messages().at(1).contains(u"RunProt.dat"_s))
        << m_ui.Messages().at(1).toStdString();
    EXPECT_TRUE(admin::ShowTipsAtStartup());
}
