// SPDX-License-Identifier: GPL-3.0-or-later
// The site password against a real keyring: a gnome-keyring-daemon on a
// private session bus that tests/support/private_keyring starts for this
// suite alone, never the keyring of the person who runs it. A user made by
// `lotwright-cli init` leaves no password in the store; sign-in at a real
// lotwright-site reads it from the keyring; the preferences change it there.
// Without a keyring the store keeps it and says so once per database, and a
// keyring that answers later takes it over. What the keyring holds is also
// read by secret-tool, a process that knows nothing of this program.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <optional>
#include <tuple>

#include "admin/preferences.h"
#include "core/app_identity.h"
#include "core/secrets.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/site_process.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/site_session.h"

using lw::core::Database;
using lw::test::ScriptedUi;
using lw::test::SiteProcess;
using lw::test::TempRoot;

namespace {

using CliRun = lw::test::ProgramRun;

// env: variables set for the child on top of this process's.
CliRun Execute(const QString& program, const QStringList& args,
               const QStringList& env = QStringList()) {
    return lw::test::RunProgram(program, args, {}, env);
}

// The keyring's entry as another process reads it; nullopt when it has none.
std::optional<QString> KeyringHolds(const QString& userName, int site) {
    const CliRun run = Execute(QStandardPaths::findExecutable(QStringLiteral("secret-tool")),
                               {QStringLiteral("lookup"), QStringLiteral("server"),
                                QString::fromLatin1(lw::core::kApplicationId),
                                QStringLiteral("user"), lw::core::SitePasswordEntry(userName, site),
                                QStringLiteral("type"), QStringLiteral("plaintext")});
    if (run.code != 0) {
        return std::nullopt;
    }
    return run.out;
}

// The UserSites column, "<null>" for NULL.
QString StoredPassword(Database& db, const QString& userName, int site) {
    lw::core::Statement query = db.Prepare(
        QStringLiteral("SELECT IFNULL(UserPassword, '<null>') FROM UserSites WHERE UserName = ? "
                       "AND AuctionSiteFlag = ?"));
    query.BindAll(userName, site);
    return query.Step() ? query.Text(0) : QStringLiteral("<no row>");
}

class KeyringE2e : public ::testing::Test {
protected:
    void SetUp() override {
        const QByteArray bus = qgetenv("LW_PRIVATE_BUS");
        if (bus.isEmpty() || bus != qgetenv("DBUS_SESSION_BUS_ADDRESS")) {
            GTEST_SKIP() << "no private keyring: dbus-run-session and gnome-keyring-daemon are "
                            "needed (Debian: dbus-daemon, gnome-keyring), and the suite runs "
                            "through tests/support/private_keyring, as ctest runs it";
        }
        if (QStandardPaths::findExecutable(QStringLiteral("secret-tool")).isEmpty()) {
            GTEST_SKIP() << "secret-tool is missing (Debian: libsecret-tools)";
        }
        qputenv("LOTWRIGHT_KEYRING", "on");
    }
    void TearDown() override {
        qputenv("LOTWRIGHT_KEYRING", "off");
        lw::core::SetSettingsFolder({});
        lw::core::ResetSession();
    }

    QString Home() const { return m_root.File(QStringLiteral("home")); }

    CliRun Cli(QStringList args, const QStringList& env = QStringList()) {
        args.prepend(Home());
        args.prepend(QStringLiteral("--root"));
        return Execute(lw::test::BinDir() + QStringLiteral("/lotwright-cli"), args, env);
    }

    // A child's environment in which no keyring answers: its session bus
    // address leads nowhere.
    QStringList NoBus() const {
        return {QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=") +
                m_root.File(QStringLiteral("no-bus"))};
    }

    CliRun Init(const QString& user, const QString& siteId, const QString& password,
                const QStringList& env = QStringList()) {
        return Cli({QStringLiteral("init"), QStringLiteral("--user"), user,
                    QStringLiteral("--site-id"), siteId, QStringLiteral("--password"), password},
                   env);
    }

    // The session the command line would set up on Home(), with the rules
    // the site runs on.
    Database OpenHere() {
        lw::core::ResetSession(&m_ui);
        lw::core::SetSettingsFolder(Home() + QStringLiteral("/Configs/Settings"));
        QString error;
        EXPECT_TRUE(lw::core::SetupDirectories(Home(), &error)) << error.toStdString();
        lw::core::CurrentSession().ShippedDir = lw::test::SourceDir();
        Database db = lw::core::OpenStore();
        EXPECT_EQ(lw::core::ChooseUser(db, nullptr), lw::core::UserChoice::Chosen);
        EXPECT_TRUE(lw::update::InstallRuleStore(lw::update::Rules(), db));
        return db;
    }

    TempRoot m_root;
    ScriptedUi m_ui;
};

TEST_F(KeyringE2e, InitSignInAndPreferencesKeepThePasswordInTheKeyringOnly) {
    SiteProcess site({});
    ASSERT_TRUE(site.Ok()) << site.Error();
    for (const char* name : {"site.pro", "info.pro"}) {
        QByteArray text = lw::test::ReadAll(lw::test::SourceDir() + QStringLiteral("/rules/") +
                                            QLatin1String(name));
        text.replace("http://127.0.0.1:8750", site.Base().toUtf8());
        m_root.Write(QStringLiteral("rules/") + QLatin1String(name), text);
    }
    const CliRun init =
        Init(QStringLiteral("Demo"), QStringLiteral("demo_seller"), QStringLiteral("demo"));
    ASSERT_EQ(init.code, 0) << init.err.toStdString();
    EXPECT_FALSE(init.err.contains(QStringLiteral("kept in the database")))
        << init.err.toStdString();
    const CliRun install = Cli({QStringLiteral("rules"), QStringLiteral("install"),
                                m_root.File(QStringLiteral("rules/site.pro")),
                                m_root.File(QStringLiteral("rules/info.pro"))});
    ASSERT_EQ(install.code, 0) << install.err.toStdString();

    Database db = OpenHere();
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Demo"), 0), QStringLiteral("<null>"));
    EXPECT_EQ(KeyringHolds(QStringLiteral("Demo"), 0), QStringLiteral("demo"));
    EXPECT_EQ(lw::core::SitePassword(db, QStringLiteral("Demo"), 0), QStringLiteral("demo"));

    // Sign-in posts what the keyring holds: the site accepts it, and refuses
    // it once the site's password has changed.
    EXPECT_TRUE(lw::update::RefreshEncodedPassword(db));
    EXPECT_FALSE(lw::update::GetEncodedPassword(db).isEmpty());
    ASSERT_NE(
        site.Admin("password", "user=demo_seller&password=" + SiteProcess::Encode("n3w pass'")),
        std::string())
        << "the site's admin route did not answer";
    EXPECT_FALSE(lw::update::RefreshEncodedPassword(db));

    // The preferences read it from the keyring and change it there.
    const lw::admin::PreferenceLists lists = lw::admin::LoadPreferenceLists(lw::update::Rules());
    lw::admin::Preferences prefs =
        lw::admin::LoadPreferences(db, QStringLiteral("Demo"), lists, lw::update::Rules());
    EXPECT_EQ(prefs.field[lw::admin::kPrefPassword], QStringLiteral("demo"));
    ASSERT_EQ(
        lw::admin::UpdatePassword(prefs.field[lw::admin::kPrefPassword], QStringLiteral("demo"),
                                  QStringLiteral("n3w pass'"), QStringLiteral("n3w pass'"), m_ui),
        lw::admin::PasswordChange::Changed);
    lw::admin::SavePreferences(db, QStringLiteral("Demo"), prefs, lists, lw::update::Rules());
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Demo"), 0), QStringLiteral("<null>"));
    EXPECT_EQ(KeyringHolds(QStringLiteral("Demo"), 0), QStringLiteral("n3w pass'"));
    EXPECT_TRUE(lw::update::RefreshEncodedPassword(db));

    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'\n').toStdString();
    EXPECT_EQ(db.ScalarInt(QStringLiteral("SELECT PasswordInStoreTold FROM Global")), 0);

    // Where no keyring answers, a password kept only in the keyring cannot
    // be read for the sign-in, and the user hears why, once.
    db.Exec(QStringLiteral("UPDATE UserSites SET EncodedPassword = NULL"));
    const CliRun update = Cli({QStringLiteral("update"), QStringLiteral("account")}, NoBus());
    EXPECT_EQ(update.err.count(QStringLiteral("No keyring answered, so the site password of Demo "
                                              "could not be read.")),
              1)
        << update.err.toStdString();
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Demo"), 0), QStringLiteral("<null>"));
}

TEST_F(KeyringE2e, WhereNoKeyringAnswersTheStoreKeepsItUntilOneDoes) {
    // Made where no keyring answers: the store keeps the password, and the
    // first run on the database says so where the second does not.
    const CliRun ann =
        Init(QStringLiteral("Ann"), QStringLiteral("ann_s"), QStringLiteral("pw'1"), NoBus());
    ASSERT_EQ(ann.code, 0) << ann.err.toStdString();
    const QString store = Home() + QStringLiteral("/Data/Lotwright.db");
    EXPECT_EQ(ann.err.count(QStringLiteral("No keyring answered, so the site password is kept in "
                                           "the database ") +
                            store + QStringLiteral(", which only you can read.")),
              1)
        << ann.err.toStdString();
    const CliRun ben =
        Init(QStringLiteral("Ben"), QStringLiteral("ben_b"), QStringLiteral("pw-ben"), NoBus());
    ASSERT_EQ(ben.code, 0) << ben.err.toStdString();
    EXPECT_FALSE(ben.err.contains(QStringLiteral("kept in the database"))) << ben.err.toStdString();

    lw::core::ResetSession(&m_ui);
    QString error;
    ASSERT_TRUE(lw::core::SetupDirectories(Home(), &error)) << error.toStdString();
    Database db = lw::core::OpenStore();
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Ann"), 0), QStringLiteral("pw'1"));
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Ben"), 0), QStringLiteral("pw-ben"));
    EXPECT_EQ(KeyringHolds(QStringLiteral("Ann"), 0), std::nullopt);

    // A keyring that answers takes over a password the store held on its
    // first read, and the store lets it go.
    EXPECT_EQ(lw::core::SitePassword(db, QStringLiteral("ann"), 0), QStringLiteral("pw'1"));
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Ann"), 0), QStringLiteral("<null>"));
    EXPECT_EQ(KeyringHolds(QStringLiteral("Ann"), 0), QStringLiteral("pw'1"));
    EXPECT_EQ(StoredPassword(db, QStringLiteral("Ben"), 0), QStringLiteral("pw-ben"))
        << "only a password that was read moves";

    // One entry per user and site, whatever the case of the name asked for.
    db.Exec(QStringLiteral("INSERT INTO UserSites (UserName, AuctionSiteFlag) VALUES ('Ann', 1)"));
    const std::tuple<const char*, int, const char*> entries[] = {
        {"Ann", 0, "ann at zero"}, {"Ann", 1, "ann at one"}, {"Ben", 0, "ben at zero"}};
    for (const auto& [user, number, password] : entries) {
        lw::core::SaveSitePassword(db, QString::fromUtf8(user), number,
                                   QString::fromUtf8(password));
    }
    for (const auto& [user, number, password] : entries) {
        SCOPED_TRACE(std::string(user) + " at site " + std::to_string(number));
        EXPECT_EQ(lw::core::SitePassword(db, QString::fromUtf8(user).toUpper(), number),
                  QString::fromUtf8(password));
        EXPECT_EQ(KeyringHolds(QString::fromUtf8(user), number), QString::fromUtf8(password));
        EXPECT_EQ(StoredPassword(db, QString::fromUtf8(user), number), QStringLiteral("<null>"));
    }
    lw::core::ForgetSitePassword(db, QStringLiteral("Ann"), 1);
    EXPECT_EQ(KeyringHolds(QStringLiteral("Ann"), 1), std::nullopt);
    EXPECT_EQ(lw::core::SitePassword(db, QStringLiteral("Ann"), 1), QString());
    EXPECT_EQ(KeyringHolds(QStringLiteral("Ann"), 0), QStringLiteral("ann at zero"));
    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'\n').toStdString();
}

}  // namespace

// The keyring's answers arrive through the event loop, which needs an
// application object.
int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
