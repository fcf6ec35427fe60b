// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli as a user runs it: a fresh root, the rule look-ups, a rule
// install and restore, read-only queries, the category search and browser,
// clear failures that leave files alone, and a process that writes no core
// file.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <atomic>
#include <chrono>
#include <thread>

#include "core/store.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_support.h"

using lw::test::BinDir;
using lw::test::LoopbackServer;
using lw::test::ReadAll;
using lw::test::SourceDir;
using lw::test::TempRoot;

namespace {

using CliRun = lw::test::ProgramRun;

// Runs lotwright-cli on root with args; input is all its standard input.
CliRun Cli(const QString& root, const QStringList& args, const QByteArray& input = {}) {
    return lw::test::RunProgram(BinDir() + QStringLiteral("/lotwright-cli"),
                                QStringList{QStringLiteral("--root"), root} + args, input);
}

CliRun Init(const QString& root, const QString& user = QStringLiteral("Ann")) {
    return Cli(root,
               {QStringLiteral("init"), QStringLiteral("--user"), user, QStringLiteral("--site-id"),
                QStringLiteral("ann_sells"), QStringLiteral("--password"), QStringLiteral("s3cret"),
                QStringLiteral("--email"), QStringLiteral("ann@example.com")});
}

}  // namespace

TEST(CliInit, MakesFoldersDatabaseAndTheDefaultUser) {
    TempRoot root;
    const CliRun init = Init(root.Path());
    ASSERT_EQ(init.code, 0) << init.err.toStdString();
    EXPECT_TRUE(QFile::exists(root.File(QStringLiteral("Data/Lotwright.db"))));
    EXPECT_TRUE(QFile::exists(root.File(QStringLiteral("Configs"))));
    EXPECT_TRUE(QFile::exists(root.File(QStringLiteral("Data/Ann"))));
    const CliRun users =
        Cli(root.Path(),
            {QStringLiteral("query"), QStringLiteral("SELECT u.UserName, u.isDefault, s.UserID, "
                                                     "s.AuctionSiteFlag FROM Users u JOIN "
                                                     "UserSites s USING (UserName)")});
    ASSERT_EQ(users.code, 0) << users.err.toStdString();
    EXPECT_EQ(users.out, QStringLiteral("UserName\tisDefault\tUserID\tAuctionSiteFlag\n"
                                        "Ann\t1\tann_sells\t0\n"));
    // A second init of the same name is refused and changes nothing.
    const CliRun again = Init(root.Path());
    EXPECT_NE(again.code, 0);
    EXPECT_TRUE(again.err.contains(QStringLiteral("already exists"))) << again.err.toStdString();
}

TEST(CliInit, ThePasswordComesAsOneLineOfStandardInputOrNothingIsMade) {
    struct Case {
        const char* what;
        QStringList options;
        QByteArray input;
        int code;
        const char* stored;  // the password in the store; null: no database made
        const char* told;    // in the message on standard error
    };
    const QString fromStdin = QStringLiteral("--password-stdin");
    const Case cases[] = {
        {"one line", {fromStdin}, "pass word\n", 0, "pass word", ""},
        {"CR LF, more lines", {fromStdin}, "  spaced\r\nsecond\n", 0, "  spaced", ""},
        {"no line end", {fromStdin}, "last", 0, "last", ""},
        {"an empty line", {fromStdin}, "\n", 2, nullptr, "empty"},
        {"no input at all", {fromStdin}, "", 2, nullptr, "--password-stdin"},
        {"both ways",
         {fromStdin, QStringLiteral("--password"), QStringLiteral("x")},
         "y\n",
         2,
         nullptr,
         "one way"},
        {"no terminal to ask on", {}, "typed\n", 2, nullptr, "--password-stdin"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempRoot root;
        const CliRun init =
            Cli(root.Path(),
                QStringList{QStringLiteral("init"), QStringLiteral("--user"), QStringLiteral("Ann"),
                            QStringLiteral("--site-id"), QStringLiteral("ann_sells")} +
                    c.options,
                c.input);
        EXPECT_EQ(init.code, c.code) << init.err.toStdString();
        EXPECT_TRUE(init.err.contains(QLatin1String(c.told))) << init.err.toStdString();
        if (c.stored == nullptr) {
            EXPECT_FALSE(QFile::exists(root.File(QStringLiteral("Data"))));
            continue;
        }
        const CliRun stored =
            Cli(root.Path(), {QStringLiteral("query"),
                              QStringLiteral("SELECT UserName, UserPassword FROM UserSites")});
        EXPECT_EQ(stored.out.toStdString(),
                  "UserName\tUserPassword\nAnn\t" + std::string(c.stored) + '\n');
    }
}

// lotwright-cli init on a pseudo-terminal, as a user at a terminal runs it:
// what is typed is never echoed, and the terminal's echo is back on after
// the line, and after a Ctrl-C that ends the program.
TEST(CliInit, ATerminalPromptHidesTheTypingAndPutsTheEchoBack) {
    struct Case {
        const char* what;
        QByteArray typed;
        bool interrupted;
    };
    const Case cases[] = {
        {"a typed line", "s3cret-typed\n", false},
        {"Ctrl-C at the prompt", "s3cret\x03", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempRoot root;
        const QByteArray program = (BinDir() + QStringLiteral("/lotwright-cli")).toLocal8Bit();
        const QByteArray rootPath = root.Path().toLocal8Bit();
        const char* argv[] = {program.constData(),
                              "--root",
                              rootPath.constData(),
                              "init",
                              "--user",
                              "Ann",
                              "--site-id",
                              "ann_sells",
                              nullptr};
        int master = -1;
        int slave = -1;
        ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(master);
            login_tty(slave);  // its own session, the terminal as 0, 1 and 2
            execv(argv[0], const_cast<char* const*>(argv));
            _exit(127);
        }
        // Everything the terminal shows, until the prompt has come.
        QByteArray shown;
        auto readShown = [&](int waitMs) {
            pollfd ready{master, POLLIN, 0};
            char buffer[512];
            while (poll(&ready, 1, waitMs) > 0) {
                const ssize_t got = read(master, buffer, sizeof buffer);
                if (got <= 0) {
                    break;
                }
                shown.append(buffer, static_cast<qsizetype>(got));
                if (shown.contains("password for")) {
                    waitMs = 0;  // the rest as far as it has come
                }
            }
        };
        readShown(60000);
        ASSERT_TRUE(shown.contains("Site password for ann_sells:")) << shown.toStdString();
        ASSERT_EQ(write(master, c.typed.constData(), static_cast<size_t>(c.typed.size())),
                  c.typed.size());
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        readShown(0);
        termios after{};
        ASSERT_EQ(tcgetattr(slave, &after), 0);
        close(master);
        close(slave);

        EXPECT_FALSE(shown.contains("s3cret")) << shown.toStdString();
        EXPECT_TRUE(after.c_lflag & ECHO) << "the echo is back on";
        if (c.interrupted) {
            EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
            EXPECT_FALSE(QFile::exists(root.File(QStringLiteral("Data"))));
        } else {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << shown.toStdString();
            const CliRun stored = Cli(
                root.Path(),
                {QStringLiteral("query"), QStringLiteral("SELECT UserPassword FROM UserSites")});
            EXPECT_EQ(stored.out.toStdString(), "UserPassword\ns3cret-typed\n");
        }
    }
}

TEST(CliRules, InstallChecksTheFilesAndRestorePutsTheEarlierRulesBack) {
    TempRoot root;
    ASSERT_EQ(Init(root.Path()).code, 0);
    const auto get = [&root](const char* section, const char* key, const char* store) {
        return Cli(root.Path(),
                   {QStringLiteral("rules"), QStringLiteral("get"), QLatin1String(section),
                    QLatin1String(key), QStringLiteral("--store"), QLatin1String(store)})
            .out;
    };
    const auto rules = [&root](QStringList words) {
        words.prepend(QStringLiteral("rules"));
        return Cli(root.Path(), words);
    };
    QByteArray siteText = ReadAll(SourceDir() + QStringLiteral("/rules/site.pro"));
    siteText.replace("Current Protocol=1", "Current Protocol=Demo").replace("\r\n", "\n");
    QByteArray infoText = ReadAll(SourceDir() + QStringLiteral("/rules/info.pro"));
    infoText.replace("Server=127.0.0.1:8025", "Server=mail.example.test:2525");
    const QString site = root.Write(QStringLiteral("new/site.pro"), siteText);  // LF only
    const QString info = root.Write(QStringLiteral("new/info.pro"), infoText);
    const QString portal = root.Write(QStringLiteral("new/portal.pro"),
                                      "<html><body>Sign in to use this network</body></html>");

    const CliRun nothingKept = rules({QStringLiteral("restore")});
    EXPECT_EQ(nothingKept.code, 1);
    EXPECT_TRUE(nothingKept.err.contains(QStringLiteral("No earlier rules")))
        << nothingKept.err.toStdString();
    const CliRun missing =
        rules({QStringLiteral("install"), site, root.File(QStringLiteral("new/none.pro"))});
    EXPECT_NE(missing.code, 0);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("none.pro"))) << missing.err.toStdString();
    const CliRun refused = rules({QStringLiteral("install"), portal, info});
    EXPECT_NE(refused.code, 0);
    EXPECT_TRUE(refused.err.contains(portal) &&
                refused.err.contains(QStringLiteral("site.pro is a web page")))
        << refused.err.toStdString();
    EXPECT_EQ(get("Protocols", "Current Protocol", "0"), QStringLiteral("1\n"));

    const CliRun install = rules({QStringLiteral("install"), site, info});
    ASSERT_EQ(install.code, 0) << install.err.toStdString();
    EXPECT_EQ(get("Protocols", "Current Protocol", "0"), QStringLiteral("Demo\n"));
    EXPECT_EQ(get("Mail Server", "Server", "1"), QStringLiteral("mail.example.test:2525\n"));
    EXPECT_FALSE(QFile::exists(root.File(QStringLiteral("Configs/site.pro"))))
        << "the database is the only home of the rules";

    const CliRun restore = rules({QStringLiteral("restore")});
    ASSERT_EQ(restore.code, 0) << restore.err.toStdString();
    EXPECT_EQ(get("Protocols", "Current Protocol", "0"), QStringLiteral("1\n"));
    EXPECT_EQ(get("Mail Server", "Server", "1"), QStringLiteral("127.0.0.1:8025\n"));
    ASSERT_EQ(rules({QStringLiteral("restore")}).code, 0);
    EXPECT_EQ(get("Protocols", "Current Protocol", "0"), QStringLiteral("Demo\n"));
}

// The site password lives in the process's memory: no core file may take it
// to disk. The limit is read from /proc while an update waits on the version
// check of a loopback server.
TEST(CliProcess, RunsWithCoreDumpsTurnedOff) {
    LoopbackServer server;
    std::atomic<bool> asked{false};
    std::atomic<bool> released{false};
    server.Routes().Get("/rules/version", [&](const httplib::Request&, httplib::Response& res) {
        asked = true;
        for (int i = 0; i < 6000 && !released && !server.Stopping(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        res.set_content("PROTOCOL:1\r\n", "text/plain");
    });
    server.Start();
    TempRoot root;
    ASSERT_EQ(Init(root.Path()).code, 0);
    for (const char* name : {"site.pro", "info.pro"}) {
        QByteArray text = ReadAll(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name));
        text.replace("http://127.0.0.1:8750", server.Url("").toUtf8());
        root.Write(QStringLiteral("served/") + QLatin1String(name), text);
    }
    const CliRun install = Cli(root.Path(), {QStringLiteral("rules"), QStringLiteral("install"),
                                             root.File(QStringLiteral("served/site.pro")),
                                             root.File(QStringLiteral("served/info.pro"))});
    ASSERT_EQ(install.code, 0) << install.err.toStdString();

    QProcess process;
    process.start(
        BinDir() + QStringLiteral("/lotwright-cli"),
        {QStringLiteral("--root"), root.Path(), QStringLiteral("update"), QStringLiteral("time")});
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForStarted());
    for (int i = 0; i < 6000 && !asked && process.state() == QProcess::Running; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_TRUE(asked) << process.readAllStandardError().toStdString();
    QFile limits(QStringLiteral("/proc/%1/limits").arg(process.processId()));
    ASSERT_TRUE(limits.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(limits.readAll());
    released = true;
    EXPECT_TRUE(text.contains(QRegularExpression(QStringLiteral("Max core file size +0 +0 "))))
        << text.toStdString();
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
}

// The rule look-ups by the store's rules, and queries that only read, their
// cells escaped: the answer on standard output, and standard error empty
// only on success.
TEST(CliLookUps, RulesByKeyOrNameAndQueriesThatOnlyRead) {
    TempRoot root;
    ASSERT_EQ(Init(root.Path()).code, 0);
    const struct {
        QStringList args;
        int code;
        const char* out;
        const char* err;  // a part of standard error
    } cases[] = {
        {{"rules", "get", "SITES", "Site0"}, 0, "eBay\n", ""},
        {{"rules", "name", "Sites", "eBay"}, 0, "Site0\n", ""},
        {{"rules", "get", "Sites", "site0"}, 3, "ERROR\n", "site0"},  // keys are case-sensitive
        {{"rules", "get", "Mail Server", "Server", "--store", "1"}, 0, "127.0.0.1:8025\n", ""},
        {{"rules", "get", "Sites", "Site0", "--store", "7"}, 2, "", ""},
        {{"rules", "get", "Sites"}, 2, "", "SECTION KEY"},
        {{"query", "DELETE FROM Users"}, 2, "", "Only reading"},
        {{"query", "SELECT 1; DELETE FROM Users"}, 1, "", ""},
        {{"query", "SELECT COUNT(*) AS n FROM Users"}, 0, "n\n1\n", ""},  // neither of those ran
        {{"query", "SELECT 'a' || char(9) || 'b' AS t, NULL AS n, 'it''s' AS q"},
         0,
         "t\tn\tq\na\\tb\t\tit's\n",
         ""},
        // SQL in the rule files' spelling: trailing blanks in a compared
        // literal do not count, and Left$( runs.
        {{"query",
          "SELECT UserName FROM Users WHERE UserName = 'ann  ' AND Left$(UserName, 1) = "
          "'A' AND Left(UserName, 2) = 'An'"},
         0,
         "UserName\nAnn\n",
         ""},
        {{"query", "SELECT FROM"}, 1, "", ""},
        {{"query", "SELECT 1", "SELECT 2"}, 2, "", "one SQL text"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args.join(u' ').toStdString());
        const CliRun run = Cli(root.Path(), c.args);
        EXPECT_EQ(run.code, c.code) << run.err.toStdString();
        EXPECT_EQ(run.out, QLatin1String(c.out));
        EXPECT_TRUE(run.err.contains(QLatin1String(c.err))) << run.err.toStdString();
        EXPECT_EQ(run.err.isEmpty(), c.code == 0) << run.err.toStdString();
    }
}

TEST(CliCategories, SearchAndBrowseTheShippedDirectoryAndTakeADownloadedOne) {
    TempRoot root;
    ASSERT_EQ(Init(root.Path()).code, 0);
    const struct {
        QStringList words;
        int code;
        QString out;
        QString err;
    } cases[] = {
        {{QStringLiteral("search"), QStringLiteral("LAMPS")},
         0,
         QStringLiteral("110\tAntiques: Lamps & Lighting\n418\tCollectibles: Lamps & Lighting\n"
                        "1309\tHome & Garden: Lamps & Lighting\n"),
         {}},
        {{QStringLiteral("search"), QStringLiteral("lamps antiques"), QStringLiteral("--all")},
         0,
         {},
         QStringLiteral("Search Categories: No Matches Found\n")},
        {{QStringLiteral("search"), QStringLiteral("--all"), QStringLiteral("art"),
          QStringLiteral("glass")},
         0,
         QStringLiteral("1001\tPottery & Glass: Art Glass\n"),
         {}},
        {{QStringLiteral("search"), QStringLiteral("402")},
         0,
         QStringLiteral("402\tCollectibles: Kitchenware\n"),
         {}},
        {{QStringLiteral("search"), QStringLiteral("100%' _")},
         0,
         {},
         QStringLiteral("Search Categories: No Matches Found\n")},
        {{QStringLiteral("browse"), QStringLiteral("STAMPS")},
         0,
         QStringLiteral("1506\tAfrica\n1504\tAsia\n1501\tBritish Commonwealth\n1502\tCanada\n"
                        "1508\tCovers\n1503\tEurope\n1505\tLatin America\n1509\tPostal "
                        "History\n1510\tStamp Supplies\n1507\tTopicals\n303\tUnited "
                        "States\n1511\tWorldwide Collections\n1512\tOther Stamps\n"),
         {}},
        {{QStringLiteral("browse"), QStringLiteral("Nowhere")},
         3,
         {},
         QStringLiteral("There is no top-level category Nowhere; \"lotwright-cli categories "
                        "browse\" lists them.\n")},
        {{QStringLiteral("search")}, 2, {}, {}},
        {{QStringLiteral("browse"), QStringLiteral("a"), QStringLiteral("b")}, 2, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.words.join(u' ').toStdString());
        const CliRun run = Cli(root.Path(), QStringList{QStringLiteral("categories")} + c.words);
        EXPECT_EQ(run.code, c.code) << run.err.toStdString();
        EXPECT_EQ(run.out, c.out);
        if (c.code != 2) {
            EXPECT_EQ(run.err, c.err);
        }
    }
    const CliRun top = Cli(root.Path(), {QStringLiteral("categories"), QStringLiteral("browse")});
    EXPECT_EQ(top.out.count(u'\n'), 21);
    EXPECT_TRUE(top.out.startsWith(QStringLiteral("Antiques\nArt\nBooks\n")));

    const QString downloaded =
        root.Write(QStringLiteral("Configs/category.pro"), "[Books]\r\nFiction=201\r\nbroken\r\n");
    const CliRun fresh = Cli(root.Path(), {QStringLiteral("categories"), QStringLiteral("search"),
                                           QStringLiteral("fiction")});
    EXPECT_EQ(fresh.out, QStringLiteral("201\tBooks: Fiction\n"));
    EXPECT_EQ(fresh.err,
              QStringLiteral("Categories Updated: 1 auction categories are now available "
                             "in your database.\ncategory.pro: 1 broken line was "
                             "stepped over.\n"));
    EXPECT_FALSE(QFile::exists(downloaded));
}

// Wrong words, and a command on a root without a database, make no files.
TEST(CliFailures, WrongWordsNoDatabaseDamagedDatabaseAndUnwritableRoot) {
    TempRoot root;
    const CliRun missing = Cli(root.Path(), {"init", "--user", "Ann"});
    EXPECT_EQ(missing.code, 2);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("--site-id"))) << missing.err.toStdString();
    const CliRun unknown = Cli(root.Path(), {"frobnicate"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_TRUE(unknown.err.contains(QStringLiteral("Usage"))) << unknown.err.toStdString();
    const CliRun none = Cli(root.Path(), {"query", "SELECT 1"});
    EXPECT_EQ(none.code, 1);
    EXPECT_TRUE(none.err.contains(QStringLiteral("init"))) << none.err.toStdString();
    EXPECT_FALSE(QFile::exists(root.File(QStringLiteral("Data"))));

    const QByteArray junk(5000, '\x07');
    const QString db = root.Write(QStringLiteral("Data/Lotwright.db"), junk);
    const CliRun damaged = Cli(root.Path(), {QStringLiteral("query"), QStringLiteral("SELECT 1")});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_TRUE(damaged.err.contains(db)) << damaged.err.toStdString();
    const CliRun initOver = Init(root.Path());
    EXPECT_EQ(initOver.code, 1);
    EXPECT_EQ(ReadAll(db), junk) << "nothing is overwritten";

    const QString file = root.Write(QStringLiteral("afile"), "x");
    const CliRun unwritable = Init(file + QStringLiteral("/root"));
    EXPECT_EQ(unwritable.code, 1);
    EXPECT_TRUE(unwritable.err.contains(file)) << unwritable.err.toStdString();
}

TEST(CliListing, ListsShowsAndBuildsTheCreatorsDocuments) {
    TempRoot root;
    ASSERT_EQ(Init(root.Path()).code, 0);
    {
        lw::core::Database db =
            lw::core::Database::Open(root.File(QStringLiteral("Data/Lotwright.db")));
        db.Prepare(QStringLiteral("INSERT INTO AuctionCreator (ID, UserName, ACType, AuctionName, "
                                  "CreationDate, IncludeLongTitle, ItemTitleLong, ItemDescription, "
                                  "AuctionStyle) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"))
            .BindAll(7, "Ann", "Draft", "Lamp", "2024-05-01 10:00:00", 1, "Brass lamp",
                     "<P>Bright & brass</P>", "Simple Elegant")
            .Run();
    }
    // The user's own copy of a style is what the listing is built from.
    root.Write(QStringLiteral("Templates/Auctions/elegant.tem"),
               "Style=Simple Elegant\n[START]<H1>[txtItemTitle]</H1>[txtDescription][END]");
    const struct {
        QStringList args;
        int code;
        const char* out;  // the whole standard output, or nullptr
        const char* err;  // a part of standard error, or nullptr
    } cases[] = {
        {{QStringLiteral("listing"), QStringLiteral("list"), QStringLiteral("--type"),
          QStringLiteral("draft")},
         0,
         "ID\tType\tName\tCreated\n7\tDraft\tLamp\t2024-05-01 10:00:00\n",
         nullptr},
        {{QStringLiteral("listing"), QStringLiteral("html"), QStringLiteral("7")},
         0,
         "<H1>Brass lamp</H1><P>Bright & brass</P>",
         nullptr},
        {{QStringLiteral("listing"), QStringLiteral("html"), QStringLiteral("7"),
          QStringLiteral("--style"), QStringLiteral("Baroque")},
         2,
         nullptr,
         "There is no style Baroque"},
        {{QStringLiteral("listing"), QStringLiteral("show"), QStringLiteral("99")},
         1,
         nullptr,
         "There is no listing document with the ID 99."},
        {{QStringLiteral("listing"), QStringLiteral("list"), QStringLiteral("--type"),
          QStringLiteral("Auction")},
         2,
         nullptr,
         "--type takes Draft, Template or \"Old Auction\"."},
        {{QStringLiteral("listing"), QStringLiteral("html")}, 2, nullptr, "one document ID"},
    };
    for (const auto& c : cases) {
        const CliRun run = Cli(root.Path(), c.args);
        EXPECT_EQ(run.code, c.code) << c.args.join(u' ').toStdString() << run.err.toStdString();
        if (c.out) {
            EXPECT_EQ(run.out, QString::fromUtf8(c.out));
        }
        if (c.err) {
            EXPECT_TRUE(run.err.contains(QString::fromUtf8(c.err))) << run.err.toStdString();
        }
    }
    const CliRun all = Cli(root.Path(), {QStringLiteral("listing"), QStringLiteral("list")});
    EXPECT_TRUE(
        all.out.startsWith(QStringLiteral("ID\tType\tName\tCreated\n1\tDefault\tDefault\t")));
    const CliRun show =
        Cli(root.Path(), {QStringLiteral("listing"), QStringLiteral("show"), QStringLiteral("7")});
    for (const char* line :
         {"Name: Lamp\n", "Description: <P>Bright & brass</P...\n", "ItemTitleLong: Brass lamp\n",
          "AuctionStyle: Simple Elegant\n",
          "Required fields: missing Minimum bid, Category, Title, Duration (days), Item "
          "location, Payment methods, Who pays shipping\n"}) {
        EXPECT_TRUE(show.out.contains(QString::fromUtf8(line))) << line << show.out.toStdString();
    }
    const QString out = root.File(QStringLiteral("lamp.html"));
    const CliRun written =
        Cli(root.Path(), {QStringLiteral("listing"), QStringLiteral("html"), QStringLiteral("7"),
                          QStringLiteral("--style"), QStringLiteral("Quick 'n' Easy"),
                          QStringLiteral("--out"), out});
    EXPECT_EQ(written.code, 0) << written.err.toStdString();
    const QString html = QString::fromUtf8(ReadAll(out));
    EXPECT_TRUE(html.contains(QStringLiteral("<B>Brass lamp</B>")));
    EXPECT_TRUE(html.contains(QStringLiteral("<P>Bright & brass</P>")));
}
