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

namespace {

class StartupTest : public ::testing::Test {
protected:
    void SetUp() override {
        core::ResetSession(&m_ui);
        core::SetSettingsFolder(m_root.File(QStringLiteral("settings")));
        core::CurrentSession().ShippedDir = SourceDir();
        update::Rules().ClearAll();
    }
    void TearDown() override { core::SetSettingsFolder(QString()); }

    QString Option(const QString& key) {
        return core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key);
    }

    // Prepared start with one user, who has never been updated.
    core::Database StartWithUser(const QString& name) {
        QString error;
        EXPECT_TRUE(admin::PrepareStartup(m_root.Path(), &error)) << error.toStdString();
        core::Database db = core::OpenStore();
        core::AddUser(db, {name, QStringLiteral("demo_seller"), QStringLiteral("pw"), QString()});
        EXPECT_EQ(admin::ChooseStartupUser(db, {}), admin::StartupChoice::Run);
        return db;
    }

    test::ScriptedUi m_ui;
    TempRoot m_root;
};

}  // namespace

// ---------------------------------------------------------- before the user

TEST_F(StartupTest, PreparationMakesTheFoldersAndDatabaseAndLoadsTheRules) {
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error)) << error.toStdString();
    EXPECT_TRUE(QFile::exists(m_root.File(QStringLiteral("Data/Lotwright.db"))));
    const auto shipped = core::LoadRuleFile(SourceDir() + QStringLiteral("/rules/site.pro"));
    ASSERT_TRUE(shipped.has_value());
    EXPECT_TRUE(update::Rules().Text(update::kSiteStore).startsWith(*shipped));
    EXPECT_NE(update::LookupRuleKey(QStringLiteral("Update"), QStringLiteral("Protocols"),
                                    update::kSiteStore),
              update::RuleError());
    // The listing templates came from the shipped copy; a template the user
    // changed stays as it is at the next start.
    const QString own = m_root.File(QStringLiteral("Templates/Auctions/quick.tem"));
    EXPECT_EQ(QDir(m_root.File(QStringLiteral("Templates/Auctions")))
                  .entryList({QStringLiteral("*.tem")}, QDir::Files)
                  .size(),
              7);
    m_root.Write(QStringLiteral("Templates/Auctions/quick.tem"), "Style=Mine");
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error)) << error.toStdString();
    EXPECT_EQ(test::ReadAll(own), QByteArray("Style=Mine"));
}

TEST_F(StartupTest, PreparationFillsANewCategoryDirectoryAndTakesADownloadedOne) {
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error)) << error.toStdString();
    const QString count = QStringLiteral("SELECT COUNT(*) FROM eBayCategories");
    EXPECT_GT(core::OpenStore().ScalarInt(count), 0);
    EXPECT_TRUE(m_ui.Messages().isEmpty());

    const QString file =
        m_root.Write(QStringLiteral("Configs/category.pro"), "[Books]\r\nFiction=201\r\n");
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error)) << error.toStdString();
    EXPECT_EQ(core::OpenStore().ScalarInt(count), 1);
    EXPECT_EQ(
        m_ui.Messages(),
        QStringList{QStringLiteral("1 auction categories are now available in your database.")});
    EXPECT_FALSE(QFile::exists(file));
}

TEST_F(StartupTest, APendingRuleRepairIsAppliedBeforeTheRulesAreLoaded) {
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error));
    auto site = *core::LoadRuleFile(SourceDir() + QStringLiteral("/rules/site.pro"));
    site.prepend(QStringLiteral("[Start Marker]\r\nWho=repaired\r\n\r\n"));
    const auto info = *core::LoadRuleFile(SourceDir() + QStringLiteral("/rules/info.pro"));
    m_root.Write(QStringLiteral("Configs/site.pro"), site.toUtf8());
    m_root.Write(QStringLiteral("Configs/info.pro"), info.toUtf8());
    m_root.Write(QStringLiteral("Configs/protfix.cfg"), "1");
    update::Rules().ClearAll();

    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error)) << error.toStdString();
    EXPECT_EQ(update::LookupRuleKey(QStringLiteral("Start Marker"), QStringLiteral("Who"),
                                    update::kSiteStore),
              QStringLiteral("repaired"));
    EXPECT_FALSE(QFile::exists(m_root.File(QStringLiteral("Configs/site.pro"))));
}

TEST_F(StartupTest, PreparationResetsThePageStartsAndRemovesAStaleCancelMarker) {
    core::SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                      QStringLiteral("AAViewStart"), 21);
    core::SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                      QStringLiteral("CAViewStart"), 41);
    const QString marker = m_root.Write(QStringLiteral("Configs/nuwcancel.cfg"), "");
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error));
    EXPECT_EQ(Option(QStringLiteral("AAViewStart")), QStringLiteral("1"));
    EXPECT_EQ(Option(QStringLiteral("CAViewStart")), QStringLiteral("1"));
    EXPECT_FALSE(QFile::exists(marker));

    // The marker of an earlier run does not end this one.
    core::Database db = core::OpenStore();
    core::AddUser(db, {QStringLiteral("Ann"), QStringLiteral("ann_s"), QStringLiteral("pw"), {}});
    EXPECT_EQ(admin::ChooseStartupUser(db, {}), admin::StartupChoice::Run);
    EXPECT_EQ(core::CurrentSession().CurrentUser, QStringLiteral("Ann"));
}

TEST_F(StartupTest, AnUnusableRootOrDatabaseStopsTheStartWithItsName) {
    const QString file = m_root.Write(QStringLiteral("plainfile"), "x");
    QString error;
    EXPECT_FALSE(admin::PrepareStartup(file + QStringLiteral("/root"), &error));
    EXPECT_TRUE(error.contains(file)) << error.toStdString();

    const QString foreign = m_root.Write(QStringLiteral("other/Data/Lotwright.db"),
                                         QByteArray("not a database at all").repeated(200));
    error.clear();
    EXPECT_FALSE(admin::PrepareStartup(m_root.File(QStringLiteral("other")), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(test::ReadAll(foreign), QByteArray("not a database at all").repeated(200))
        << "a file that is not ours is left as it was";
}

// ---------------------------------------------------------- the user

TEST_F(StartupTest, NoUserOpensTheNewUserWindowWhoseRowsChooseTheUser) {
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error));
    core::Database db = core::OpenStore();
    int shown = 0;
    const auto choice = admin::ChooseStartupUser(db, [&] {
        ++shown;
        ASSERT_TRUE(
            admin::CreateNewUser(db,
                                 {QStringLiteral("O'Neil"), QStringLiteral("oneil_s"),
                                  QStringLiteral("secret"), QStringLiteral("o@example.com")},
                                 QStringLiteral("secret"), m_ui));
    });
    EXPECT_EQ(choice, admin::StartupChoice::Run);
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(core::CurrentSession().CurrentUser, QStringLiteral("O'Neil"));
    EXPECT_TRUE(QFile::exists(m_root.File(QStringLiteral("Data/O'Neil"))));
    EXPECT_EQ(admin::WelcomeCaption(core::CurrentSession().CurrentUser),
              QStringLiteral("Tolvane Lotwright Pro: Welcome O'Neil!"));
}

TEST_F(StartupTest, CancellingTheNewUserWindowEndsTheProgramWithoutAWord) {
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error));
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
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Users")), 0);
}

TEST_F(StartupTest, UsersWithoutADefaultAreToldAndNobodyIsChosen) {
    QString error;
    ASSERT_TRUE(admin::PrepareStartup(m_root.Path(), &error));
    core::Database db = core::OpenStore();
    core::AddUser(db, {QStringLiteral("Ann"), QStringLiteral("ann_s"), QStringLiteral("pw"), {}},
                  false);
    EXPECT_EQ(admin::ChooseStartupUser(db, [] { FAIL() << "a user exists"; }),
              admin::StartupChoice::NoDefaultUser);
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_TRUE(m_ui.Messages().front().contains(db.Path()));
    EXPECT_TRUE(core::CurrentSession().CurrentUser.isEmpty());
}

// ---------------------------------------------------------- first retrieval

TEST_F(StartupTest, AnUpdatedUserStartsWithoutTouchingTheNetwork) {
    core::Database db = StartWithUser(QStringLiteral("Ann"));
    db.Exec(QStringLiteral("UPDATE UserSites SET LastUpdate = '11/20/26, 10:00:00'"));
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
    core::Database db = StartWithUser(QStringLiteral("Ann"));
    bool shown = false;
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [] { return false; };
    hooks.showMainWindow = [&] { shown = true; };
    hooks.updateWindow = [] { ADD_FAILURE() << "the update window opened"; };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::NoConnection);
    EXPECT_FALSE(shown);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_FALSE(QFile::exists(update::RunListPath()));
    EXPECT_TRUE(admin::FirstRetrievalPending(db, QStringLiteral("Ann")));
}

TEST_F(StartupTest, TheFirstRetrievalRunsTheFirstRunListWithTipsHeldBack) {
    core::Database db = StartWithUser(QStringLiteral("Ann"));
    QStringList order;
    QStringList listSeen;
    bool tipsDuringUpdate = true;
    qsizetype messagesBeforeUpdate = -1;
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [&] {
        order << QStringLiteral("connect");
        return true;
    };
    hooks.showMainWindow = [&] { order << QStringLiteral("main"); };
    hooks.updateWindow = [&] {
        order << QStringLiteral("update");
        listSeen = update::ReadRunList();
        tipsDuringUpdate = admin::ShowTipsAtStartup();
        messagesBeforeUpdate = m_ui.Messages().size();
    };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::Ran);

    EXPECT_EQ(order, (QStringList{QStringLiteral("connect"), QStringLiteral("main"),
                                  QStringLiteral("update")}));
    EXPECT_FALSE(tipsDuringUpdate) << "no tip may open over the retrieval";
    EXPECT_TRUE(admin::ShowTipsAtStartup());
    EXPECT_EQ(Option(QStringLiteral("Show Tips at Startup")), QStringLiteral("1"));

    EXPECT_EQ(messagesBeforeUpdate, 1);
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_EQ(m_ui.Messages().front(),
              QStringLiteral("Tolvane is now going to retrieve information about your sales and "
                             "bids for the last 30 days from eBay.  Depending on the number of "
                             "sales or bids, this may take from 3 to 45 minutes."));
    EXPECT_EQ(m_ui.Titles().front(), QStringLiteral("Retrieving eBay Data"));

    // The rule section Update, one "protocol site" line each, then the
    // account history.
    const QStringList updateList = update::RuleUpdateList(update::Rules());
    ASSERT_FALSE(updateList.isEmpty());
    EXPECT_EQ(listSeen, updateList + QStringList{QStringLiteral("Account History eBay")});
    for (const QString& line : updateList) {
        EXPECT_TRUE(line.endsWith(QStringLiteral(" eBay"))) << line.toStdString();
    }
}

TEST_F(StartupTest, ARunListThatCannotBeWrittenIsToldAndNoUpdateOpens) {
    core::Database db = StartWithUser(QStringLiteral("Ann"));
    // A folder where the file should be.
    ASSERT_TRUE(QDir().mkpath(update::RunListPath()));
    admin::FirstRetrievalHooks hooks;
    hooks.isConnected = [] { return true; };
    hooks.updateWindow = [] { ADD_FAILURE() << "the update window opened"; };
    EXPECT_EQ(admin::RunFirstRetrievalTest(db, hooks), admin::FirstRetrieval::NoRunList);
    ASSERT_EQ(m_ui.Messages().size(), 2);
    EXPECT_TRUE(m_ui.Messages().at(1).contains(QStringLiteral("RunProt.dat")))
        << m_ui.Messages().at(1).toStdString();
    EXPECT_TRUE(admin::ShowTipsAtStartup());
}
