// SPDX-License-Identifier: GPL-3.0-or-later
// The site session: [DAYS] from the last update, page addresses with every
// macro, the form encoding and post bodies, hidden fields of a real form, and
// against servers on loopback the sign-in token, the page fetch with its
// status words and cancel, the proxy of connection types 3 and 4, the rule
// fetcher, and the connection test.
#include <gtest/gtest.h>
#include <httplib.h>

#include <QDate>
#include <QFile>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/site_session.h"

using lw::core::CurrentSession;
using lw::core::Database;
using lw::test::ClosedPort;
using lw::test::LoopbackServer;
using lw::test::ReadAll;
using lw::test::ScriptedUi;
using lw::test::SourceDir;
using lw::test::TempRoot;
using namespace lw::update;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

QString Host(int port) {
    return QStringLiteral("127.0.0.1:") + QString::number(port);
}

// A database made from the shipped schema, a user whose names hold
// apostrophes, and a rule store that names the site's CGI server.
class SiteSessionTest : public ::testing::Test {
protected:
    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        Rules().ClearAll();
        QString error;
        ASSERT_TRUE(lw::core::SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        CurrentSession().ShippedDir = SourceDir();
        lw::core::SetSettingsFolder(m_root.File(QStringLiteral("settings")));
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), SourceDir()));
        lw::core::AddUser(*m_db, {QStringLiteral("O'Hara"), QStringLiteral("o'hara_sells"),
                                  QStringLiteral("p w&x"), QStringLiteral("o@example.com")});
        lw::core::SetCurrentUser(QStringLiteral("O'Hara"));
    }
    void TearDown() override {
        Rules().ClearAll();
        lw::core::SetSettingsFolder({});
    }

    Database& Db() { return *m_db; }

    void SetSiteRules(const QString& cgiServer) {
        Rules().SetText(kSiteStore, QStringLiteral("[Auction Post]\r\nServer=") + cgiServer +
                                        QStringLiteral("\r\nurl=/aw-cgi/eBayISAPI.dll\r\n\r\n"));
    }

    void SetSiteColumn(const char* column, const QVariant& value) {
        Db().Prepare(QStringLiteral("UPDATE UserSites SET ") + QString::fromLatin1(column) +
                     QStringLiteral(" = ? WHERE UserName = ?"))
            .BindAll(value, QStringLiteral("O'Hara"))
            .Run();
    }

    void SetConnection(int type, const QVariant& proxyServer, const QVariant& proxyPort) {
        Db().Prepare(QStringLiteral("UPDATE Users SET InternetConnection = ?, ProxyServer = ?, "
                                    "ProxyPort = ? WHERE UserName = ?"))
            .BindAll(type, proxyServer, proxyPort, QStringLiteral("O'Hara"))
            .Run();
    }

    QVariant StoredEncodedPassword() {
        lw::core::Statement query = Db().Prepare(
            QStringLiteral("SELECT EncodedPassword FROM UserSites WHERE UserName = ?"));
        query.Bind(1, QStringLiteral("O'Hara"));
        EXPECT_TRUE(query.Step());
        return query.Value(0);
    }

    ScriptedUi m_ui;
    TempRoot m_root;
    std::optional<Database> m_db;
};

}  // namespace

// ------------------------------------------------------------------ [DAYS]

TEST(SiteSessionDays, CountsFromTheLastUpdateClampedToTwoAndThirty) {
    struct Case {
        const char* lastUpdate;  // nullptr: never updated
        QDate today;
        const char* days;
    };
    const QDate march15(2024, 3, 15);
    const QDate july1(2024, 7, 1);
    const Case cases[] = {
        {nullptr, march15, "30"},
        {"03/15/24 09:30:00 PST", march15, "2"},
        {"03/14/24 23:59:59 PST", march15, "2"},
        {"03/10/24 08:00:00 PST", march15, "6"},
        // 2024 is a leap year: 29 days lie between February 15 and March 15.
        {"02/14/24 08:00:00 PST", march15, "30"},
        {"02/15/24 08:00:00 PST", march15, "30"},
        {"02/16/24 08:00:00 PST", march15, "29"},
        {"02/04/24 08:00:00 PST", march15, "30"},
        // Either zone is cut off with what follows it.
        {"06/28/24 10:00:00 PDT and more", july1, "4"},
        // A stamp from a clock that ran ahead counts by its distance.
        {"07/04/24 10:00:00 PST", july1, "4"},
        {"12/30/23 10:00:00 PST", QDate(2024, 1, 2), "4"},
        // A stamp that is no date asks for the whole window.
        {"never", july1, "30"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.lastUpdate ? c.lastUpdate : "(never updated)");
        const QString stamp = c.lastUpdate ? QString::fromLatin1(c.lastUpdate) : QString();
        EXPECT_EQ(DaysToAsk(stamp, c.today), QString::fromLatin1(c.days));
    }
}

// ------------------------------------------------------------- page address

TEST_F(SiteSessionTest, BuildUrlReplacesEachMacroOnceAndFieldsOnlyWhereAValueIsPaired) {
    SetSiteColumn("UserID", QStringLiteral("  o'hara_sells"));
    SetSiteColumn("EncodedPassword", QStringLiteral("tok'en"));
    const QString url = QStringLiteral(
        "http://h/x?u=[USERID]&again=[USERID]&p=[PASSWORD]&p2=[PASSWORD]&d=[DAYS]&d2=[DAYS]"
        "&i=[ItemNumber]&i2=[ItemNumber]&t=[ItemTitle]&s=[SKIP]&s2=[SKIP]");
    const QStringList fields = {QStringLiteral("ItemNumber"), QStringLiteral("ItemTitle")};
    const QStringList values = {QStringLiteral("1234"), QStringLiteral("Lamp")};
    EXPECT_EQ(BuildUrl(Db(), url, 0, fields, values, 50),
              QStringLiteral("http://h/x?u=o'hara_sells&again=[USERID]&p=tok'en&p2=[PASSWORD]"
                             "&d=30&d2=30&i=1234&i2=1234&t=Lamp&s=50&s2=50"));

    const QString abc = QStringLiteral("/x?a=[A]&b=[B]&c=[C]");
    // A field without a value was not scanned: its macro stays.
    EXPECT_EQ(
        BuildUrl(Db(), abc, 0, {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")},
                 {QStringLiteral("1")}),
        QStringLiteral("/x?a=1&b=[B]&c=[C]"));
    // A value without a field is not used.
    EXPECT_EQ(
        BuildUrl(Db(), abc, 0, {QStringLiteral("B")}, {QStringLiteral("2"), QStringLiteral("3")}),
        QStringLiteral("/x?a=[A]&b=2&c=[C]"));
}

TEST_F(SiteSessionTest, BuildUrlReadsTheRowOfTheSiteGivenAndLeavesOtherTextAlone) {
    const QString stamp =
        QDate::currentDate().toString(QStringLiteral("MM/dd/yy")) + QStringLiteral(" 08:00:00 PST");
    SetSiteColumn("LastUpdate", stamp);
    Db().Prepare(QStringLiteral(
                     "INSERT INTO UserSites (UserName, AuctionSiteFlag, UserID) VALUES (?, 1, ?)"))
        .BindAll(QStringLiteral("O'Hara"), QStringLiteral("other_site_id"))
        .Run();
    const QString url = QStringLiteral("[USERID]&days=[DAYS]&s=[SKIP]");
    EXPECT_EQ(BuildUrl(Db(), url, 0), QStringLiteral("o'hara_sells&days=2&s=0"));
    EXPECT_EQ(BuildUrl(Db(), url, 1), QStringLiteral("other_site_id&days=30&s=0"));
    const QString plain = QStringLiteral("http://127.0.0.1/plain?a=[notamacro]&b=[userid]");
    EXPECT_EQ(BuildUrl(Db(), plain, 0), plain);
}

// -------------------------------------------------------------- form texts

TEST(SiteSessionUrlEncode, EntitiesBlanksSafeCharactersAndWhatLiesBeyondAscii) {
    // Text in UTF-8, and what is sent.
    const std::pair<const char*, const char*> cases[] = {
        // Known entities and numbers become their codes, whatever their case.
        {"&#38;", "%26"},
        {"&#65;&#9;", "%41%09"},
        {"&QUOT;", "%26quot%3B"},
        {"&quot;", "%26quot%3B"},
        {"&amp;", "%26"},
        {"&Nbsp;", "%A0"},
        {"&lt;b&GT;", "%3Cb%3E"},
        // Any other ampersand is sent alone and the scan goes on behind it.
        {"&foo;", "%26foo%3B"},
        {"&", "%26"},
        {"a&b", "a%26b"},
        {"&;", "%26%3B"},
        {"&#;", "%26%23%3B"},
        // The ";" behind the first "&" makes a name of " Jerry&amp"; the
        // scan goes on behind the "&" and still finds the entity.
        {"Tom & Jerry&amp;", "Tom+%26+Jerry%26"},
        // The ";" must lie within 12 characters behind the "&".
        {"&#0000000065;", "%41"},
        {"&#00000000065;", "%26%2300000000065%3B"},
        // Blanks become pluses; only letters, digits and ".-_" stay as they are.
        {"Brass lamp  x", "Brass+lamp++x"},
        {"AZaz09.-_", "AZaz09.-_"},
        {"a+b/c@d%e~f'g\"h=i?", "a%2Bb%2Fc%40d%25e%7Ef%27g%22h%3Di%3F"},
        {"\r\n\t", "%0D%0A%09"},
        {"", ""},
        // Beyond ASCII one byte up to 255, then UTF-8.
        {"caf\u00e9", "caf%E9"},
        {"&#233;", "%E9"},
        {"\u20ac5", "%E2%82%AC5"},
        {"&#8364;", "%E2%82%AC"},
        {"\xF0\x9F\x98\x80", "%F0%9F%98%80"},
    };
    for (const auto& [text, sent] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(UrlEncode(QString::fromUtf8(text)), QString::fromLatin1(sent));
    }
    EXPECT_EQ(UrlEncode(QString()), QString());
}

TEST(SiteSessionPostBody, SkipsEmptySlotsAndSendsTheMarkAsAnEmptyValue) {
    const QStringList names = {QStringLiteral("unused"),  QStringLiteral("first"),
                               QStringLiteral("gone"),    QStringLiteral("itemno"),
                               QStringLiteral("my name"), QStringLiteral("past count")};
    const QStringList values = {
        QStringLiteral("x"),   QStringLiteral("1"),     QString(),
        QStringLiteral("$$$"), QStringLiteral("a&b c"), QStringLiteral("never")};
    EXPECT_EQ(BuildPostBody(names, values, 4), QStringLiteral("first=1&itemno=&my+name=a%26b+c"));
    // An empty first slot puts no "&" in front.
    EXPECT_EQ(BuildPostBody({QString(), QStringLiteral("a"), QStringLiteral("b")},
                            {QString(), QString(), QStringLiteral("2")}, 2),
              QStringLiteral("b=2"));
    // A count beyond the lists ends with them; nothing at all gives nothing.
    EXPECT_EQ(BuildPostBody({QString(), QStringLiteral("a")}, {QString(), QStringLiteral("1")}, 9),
              QStringLiteral("a=1"));
    EXPECT_EQ(BuildPostBody(names, values, 0), QString());
}

TEST(SiteSessionHiddenFields, ReadsTheHiddenInputsOfTheMarkedFormOnly) {
    const QString page = QStringLiteral(
        "<html><body>\r\n"
        "<form name=\"search\" action=\"/find\"><input type=hidden name=wrong value=1></form>\r\n"
        "<FORM METHOD=\"POST\" ACTION=\"/aw-cgi/eBayISAPI.dll\">\r\n"
        "<INPUT TYPE=HIDDEN NAME=\"MfcISAPICommand\" VALUE=\"AddItem\">\r\n"
        "<input type=\"hidden\" name=Token value=AbC123>\r\n"
        "<input type=\"text\" name=\"shown\" value=\"Lamp\">\r\n"
        "<Input Type=\"Hidden\" Name=\"title\" Value=\"Brass Lamp & Shade\">\r\n"
        "<input type=hidden name=Bare value=x y>\r\n"
        "<input type=hidden name=empty>\r\n"
        "</form>\r\n"
        "<form><input type=hidden name=after value=2></form>\r\n"
        "</body></html>\r\n");
    EXPECT_EQ(ExtractHiddenFields(page, QStringLiteral("action=\"/aw-cgi/ebayisapi.dll\"")),
              QStringLiteral("&MfcISAPICommand=AddItem&Token=AbC123"
                             "&title=Brass+Lamp+%26+Shade&Bare=x&empty="));
    // No hidden field in the form, no such form, no page: nothing.
    const QString plain = QStringLiteral(
        "<form action=\"/post\"><input type=text name=a value=1><input type=submit></form>");
    EXPECT_EQ(ExtractHiddenFields(plain, QStringLiteral("action=\"/post\"")), QString());
    EXPECT_EQ(ExtractHiddenFields(page, QStringLiteral("action=\"/elsewhere\"")), QString());
    EXPECT_EQ(ExtractHiddenFields(QString(), QStringLiteral("x")), QString());
}

// -------------------------------------------------------------- CGI address

TEST_F(SiteSessionTest, CgiUrlIsTheRuleServerWithTheCgiPath) {
    SetSiteRules(QStringLiteral("127.0.0.1:8750"));
    EXPECT_EQ(CgiUrl(), QStringLiteral("http://127.0.0.1:8750/aw-cgi/eBayISAPI.dll"));
    SetSiteRules(QStringLiteral(" http://127.0.0.1:8750/ "));
    EXPECT_EQ(CgiUrl(), QStringLiteral("http://127.0.0.1:8750/aw-cgi/eBayISAPI.dll"));
    SetSiteRules(QStringLiteral("https://market.example/cgi/post.dll"));
    EXPECT_EQ(CgiUrl(), QStringLiteral("https://market.example/cgi/post.dll"));
    Rules().SetText(kSiteStore, QStringLiteral("[Sites]\r\nSite0=x\r\n\r\n"));
    EXPECT_EQ(CgiUrl(), QString());
}

// ---------------------------------------------------------------- sign-in

namespace {

// The site on loopback: its CGI answers the sign-in post, recording each
// body; its pages answer with a page, not found, an error, or slowly.
class SiteSessionSite : public SiteSessionTest {
protected:
    void SetUp() override {
        SiteSessionTest::SetUp();
        m_server.Routes().Post("/aw-cgi/eBayISAPI.dll",
                               [this](const httplib::Request& req, httplib::Response& res) {
                                   const std::lock_guard lock(m_mutex);
                                   m_bodies.push_back(req.body);
                                   res.status = m_status;
                                   res.set_content(m_answer, "text/html");
                               });
        auto answer = [this](const char* path, int status, const char* body) {
            m_server.Routes().Get(path,
                                  [status, body](const httplib::Request&, httplib::Response& res) {
                                      res.status = status;
                                      res.set_content(body, "text/html");
                                  });
        };
        answer("/page", 200, "0123456789");
        answer("/missing", 404, "404 Not Found: no such item");
        answer("/down", 503, "The market is down.");
        // A page that trickles in, so that a cancel can arrive during it.
        m_server.Routes().Get("/slow", [](const httplib::Request&, httplib::Response& res) {
            res.set_chunked_content_provider(
                "text/html", [](size_t offset, httplib::DataSink& sink) {
                    if (offset >= 200 * 64) {
                        sink.done();
                        return true;
                    }
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
                    const std::string chunk(64, 'x');
                    return sink.write(chunk.data(), chunk.size());
                });
        });
        m_server.Start();
        SetSiteRules(Host(m_server.Port()));
        m_file = m_root.File(QStringLiteral("Configs/update.txt"));
    }

    void Answer(int status, std::string body) {
        const std::lock_guard lock(m_mutex);
        m_status = status;
        m_answer = std::move(body);
    }
    std::vector<std::string> Bodies() {
        const std::lock_guard lock(m_mutex);
        return m_bodies;
    }
    void WriteStalePage() { m_root.Write(QStringLiteral("Configs/update.txt"), "stale page"); }

    LoopbackServer m_server;
    QString m_file;
    std::mutex m_mutex;
    std::vector<std::string> m_bodies;
    int m_status = 200;
    std::string m_answer =
        "<a href=\"/aw-cgi/eBayISAPI.dll?MyEbaySelling&userid=o%27hara_sells&pass=abcX&days=30\">"
        "Items I'm selling</a>";
};

}  // namespace

using SiteSessionSignIn = SiteSessionSite;

// The token runs up to the next "&"; its last character is a check character
// that is not stored.
TEST_F(SiteSessionSignIn, PostsTheSevenFieldsAndStoresTheTokenWithoutItsCheckCharacter) {
    EXPECT_EQ(FetchEncodedPassword(Db(), QStringLiteral("o'hara_sells"), QStringLiteral("p w&x")),
              QStringLiteral("abcX"));
    EXPECT_TRUE(StoredEncodedPassword().isNull());
    // A refresh posts the stored user id and password.
    EXPECT_TRUE(RefreshEncodedPassword(Db()));
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("abc"));
    const std::string body =
        "MfcISAPICommand=MyEbay&first=Y&userid=o%27hara_sells&pass=p+w%26x&dayssince=1"
        "&sellerSort=3&bidderSort=3";
    EXPECT_EQ(Bodies(), std::vector<std::string>(2, body));
}

TEST_F(SiteSessionSignIn, GetFetchesOnlyWhileTheStoredValueIsNull) {
    ASSERT_TRUE(StoredEncodedPassword().isNull());
    EXPECT_EQ(GetEncodedPassword(Db()), QStringLiteral("abc"));
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("abc"));
    Answer(200, "&pass=otherY&");
    EXPECT_EQ(GetEncodedPassword(Db()), QStringLiteral("abc"));
    EXPECT_EQ(Bodies().size(), 1u);
    // A page address that needs it fetches it too.
    SetSiteColumn("EncodedPassword", QVariant());
    EXPECT_EQ(BuildUrl(Db(), QStringLiteral("p=[PASSWORD]"), 0), QStringLiteral("p=other"));
    EXPECT_EQ(Bodies().size(), 2u);
}

// An update's addresses read the encoded password once, and again only after
// it was refreshed; one the site did not hand back is asked for again.
TEST_F(SiteSessionSignIn, AnUpdatesAddressesKeepThePasswordUntilItIsRefreshed) {
    const QString url = QStringLiteral("u=[USERID]&p=[PASSWORD]");
    Answer(200, "<p>Your user ID or password is not correct.</p>");
    RunAddresses addresses(Db());
    EXPECT_EQ(addresses.Build(url, 0), QStringLiteral("u=o'hara_sells&p="));
    Answer(200, "&pass=abcY&");
    EXPECT_EQ(addresses.Build(url, 0), QStringLiteral("u=o'hara_sells&p=abc"));
    EXPECT_EQ(Bodies().size(), 2u);

    SetSiteColumn("EncodedPassword", QStringLiteral("changed"));
    SetSiteColumn("UserID", QStringLiteral("renamed"));
    EXPECT_EQ(addresses.Build(url, 0), QStringLiteral("u=o'hara_sells&p=abc"));
    addresses.Forget();
    EXPECT_EQ(addresses.Build(url, 0), QStringLiteral("u=renamed&p=changed"));
    EXPECT_EQ(Bodies().size(), 2u);
}

TEST_F(SiteSessionSignIn, AnAnswerWithoutATokenChangesNothing) {
    SetSiteColumn("EncodedPassword", QStringLiteral("kept"));
    Answer(200, "<p>Your user ID or password is not correct.</p>");
    EXPECT_EQ(FetchEncodedPassword(Db(), QStringLiteral("a"), QStringLiteral("b")), QString());
    EXPECT_FALSE(RefreshEncodedPassword(Db()));
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("kept"));
    // A token that runs to the end of the answer was cut off.
    Answer(200, "...&pass=abcX");
    EXPECT_FALSE(RefreshEncodedPassword(Db()));
    // An error page is no answer, whatever it holds.
    Answer(500, "&pass=abcX&");
    EXPECT_FALSE(RefreshEncodedPassword(Db()));
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("kept"));
}

TEST_F(SiteSessionSignIn, NoSiteRowOrNoServerMeansNoToken) {
    Db().Exec(QStringLiteral("DELETE FROM UserSites"));
    EXPECT_FALSE(RefreshEncodedPassword(Db()));
    EXPECT_EQ(GetEncodedPassword(Db()), QString());
    EXPECT_TRUE(Bodies().empty());

    SetSiteRules(Host(ClosedPort()));
    EXPECT_EQ(FetchEncodedPassword(Db(), QStringLiteral("a"), QStringLiteral("b")), QString());
}

// ------------------------------------------------------------- page fetch

using SiteSessionFetch = SiteSessionSite;

TEST_F(SiteSessionFetch, APageArrivesWithTheStatusWordsAndEventsLetRun) {
    WriteStalePage();
    EXPECT_EQ(FetchToFile(Db(), m_server.Url("/page"), m_file), FetchResult::Ok);
    EXPECT_EQ(ReadAll(m_file), QByteArray("0123456789"));
    const QStringList statuses = m_ui.Statuses();
    ASSERT_GE(statuses.size(), 4);
    EXPECT_EQ(statuses.front(), QStringLiteral("Connecting to Server"));
    EXPECT_EQ(statuses.at(1), QStringLiteral("Transferring Page: 0 bytes"));
    EXPECT_TRUE(statuses.contains(QStringLiteral("Transferring Page: 10 bytes")));
    EXPECT_EQ(statuses.back(), QStringLiteral("Disconnected from Server."));
    EXPECT_GT(m_ui.Pumps(), 0);
    EXPECT_TRUE(m_ui.Messages().isEmpty());

    // Without a database argument the session's store gives the options.
    QFile::remove(m_file);
    EXPECT_EQ(FetchToFile(m_server.Url("/page"), m_file), FetchResult::Ok);
    EXPECT_EQ(ReadAll(m_file), QByteArray("0123456789"));
}

// A not-found answer is a page for the rules to judge; an error answer or no
// answer at all leaves no page behind, not even the one of an earlier fetch.
TEST_F(SiteSessionFetch, EachAnswerGivesItsPageOrNone) {
    struct Case {
        QString url;
        FetchResult result;
        long code;
        const char* page;  // nullptr: no file
    };
    const QString closed = QStringLiteral("http://") + Host(ClosedPort()) + QStringLiteral("/page");
    const Case cases[] = {
        {m_server.Url("/page"), FetchResult::Ok, 200, "0123456789"},
        {m_server.Url("/missing"), FetchResult::Ok, 404, "404 Not Found: no such item"},
        {m_server.Url("/down"), FetchResult::Failed, 503, nullptr},
        {closed, FetchResult::Failed, 0, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.url.toStdString());
        WriteStalePage();
        long code = -1;
        EXPECT_EQ(FetchToFile(NetOptionsForUser(Db()), c.url, m_file, &code), c.result);
        EXPECT_EQ(code, c.code);
        if (c.page != nullptr) {
            EXPECT_EQ(ReadAll(m_file), QByteArray(c.page));
        } else {
            EXPECT_FALSE(QFile::exists(m_file));
        }
        EXPECT_EQ(m_ui.Statuses().back(), QStringLiteral("Disconnected from Server."));
    }
}

TEST_F(SiteSessionFetch, ACancelDuringTheTransferStopsItAndLeavesNoPage) {
    WriteStalePage();
    m_ui.CancelAfterPumps(3);
    EXPECT_EQ(FetchToFile(Db(), m_server.Url("/slow"), m_file), FetchResult::Cancelled);
    EXPECT_FALSE(QFile::exists(m_file));
    EXPECT_GE(m_ui.Pumps(), 3);
    EXPECT_EQ(m_ui.Statuses().back(), QStringLiteral("Disconnected from Server."));
}

TEST_F(SiteSessionFetch, TheRuleFetcherReplacesAFileOnlyWithASuccessfulAnswer) {
    const QString target = m_root.File(QStringLiteral("Configs/site.pro"));
    m_root.Write(QStringLiteral("Configs/site.pro"), "old rules");
    const RuleFetcher fetch = RuleFetcherForUser(Db());
    EXPECT_EQ(fetch(m_server.Url("/missing"), target), FetchOutcome::Failed);
    EXPECT_EQ(ReadAll(target), QByteArray("old rules"));
    EXPECT_EQ(fetch(m_server.Url("/down"), target), FetchOutcome::Failed);
    EXPECT_EQ(ReadAll(target), QByteArray("old rules"));
    EXPECT_EQ(fetch(m_server.Url("/page"), target), FetchOutcome::Ok);
    EXPECT_EQ(ReadAll(target), QByteArray("0123456789"));
    EXPECT_FALSE(QFile::exists(target + QStringLiteral(".part")));
}

// ------------------------------------------------------------------ proxy

namespace {

// A stand-in proxy: it answers everything itself and records the target, which
// names the full address when the client speaks to it as a proxy. The site
// itself is at a closed port, so only the proxy can answer.
class SiteSessionProxy : public SiteSessionTest {
protected:
    void SetUp() override {
        SiteSessionTest::SetUp();
        auto record = [this](const httplib::Request& req, httplib::Response& res) {
            const std::lock_guard lock(m_mutex);
            m_targets.push_back(req.target);
            res.set_content("via proxy &pass=proxytokenZ& end", "text/html");
        };
        m_proxy.Routes().Get(".*", record);
        m_proxy.Routes().Post(".*", record);
        m_proxy.Start();
        m_sitePort = ClosedPort();
        SetSiteRules(Host(m_sitePort));
    }

    std::vector<std::string> Targets() {
        const std::lock_guard lock(m_mutex);
        return m_targets;
    }
    std::string SiteAddress(const char* path) const {
        return "http://" + Host(m_sitePort).toStdString() + path;
    }

    LoopbackServer m_proxy;
    std::mutex m_mutex;
    std::vector<std::string> m_targets;
    int m_sitePort = 0;
};

}  // namespace

// Types 3 and 4 with a proxy server go through it; other types, and a type 3
// without a server, go direct to the closed site.
TEST_F(SiteSessionProxy, ConnectionTypesThreeAndFourWithAServerGoThroughTheProxy) {
    struct Case {
        int type;
        QVariant server;
        bool viaProxy;
    };
    const QString local = QStringLiteral("127.0.0.1");
    const Case cases[] = {{3, local, true}, {4, local, true}, {1, local, false}, {3, {}, false}};
    const QString file = m_root.File(QStringLiteral("Configs/update.txt"));
    const QString page = QString::fromStdString(SiteAddress("/page?a=1"));
    std::vector<std::string> expected;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << "type " << c.type << (c.server.isNull() ? ", Null" : ""));
        SetConnection(c.type, c.server, QString::number(m_proxy.Port()));
        const lw::core::NetOptions options = NetOptionsForUser(Db());
        EXPECT_EQ(options.proxyHost, c.viaProxy ? local : QString());
        QFile::remove(file);
        EXPECT_EQ(FetchToFile(Db(), page, file),
                  c.viaProxy ? FetchResult::Ok : FetchResult::Failed);
        EXPECT_EQ(RefreshEncodedPassword(Db()), c.viaProxy);
        if (c.viaProxy) {
            EXPECT_EQ(options.proxyPort, m_proxy.Port());
            EXPECT_EQ(ReadAll(file), QByteArray("via proxy &pass=proxytokenZ& end"));
            expected.push_back(SiteAddress("/page?a=1"));
            expected.push_back(SiteAddress("/aw-cgi/eBayISAPI.dll"));
        } else {
            EXPECT_FALSE(QFile::exists(file));
        }
    }
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("proxytoken"));
    EXPECT_EQ(Targets(), expected);
}

// ------------------------------------------------------- connection test

const QString kPurpose = QStringLiteral("update your auction database");

TEST_F(SiteSessionProxy, TheConnectionTestTriesTheSiteHostUnlessAProxyIsSet) {
    // The site's host is closed: offline, said when asked to.
    EXPECT_FALSE(IsConnected(Db(), kPurpose, true));
    EXPECT_EQ(m_ui.Messages(),
              QStringList{QStringLiteral(
                  "You need to be connected to your Internet Service Provider to update your "
                  "auction database.  Please connect and then try again.")});
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("No ISP Connection")});
    EXPECT_FALSE(IsConnected(Db(), kPurpose, false));
    EXPECT_EQ(m_ui.Messages().size(), 1);

    // With the proxy of type 3 the proxy is what counts.
    SetConnection(3, QStringLiteral("127.0.0.1"), QString::number(m_proxy.Port()));
    EXPECT_TRUE(IsConnected(Db(), kPurpose, true));
    SetConnection(4, QStringLiteral("127.0.0.1"), QString::number(ClosedPort()));
    EXPECT_FALSE(IsConnected(Db(), kPurpose, false));

    // A reachable site host is online; the session's own store is used too.
    SetConnection(0, QVariant(), QVariant());
    SetSiteRules(Host(m_proxy.Port()));
    EXPECT_TRUE(IsConnected(Db(), kPurpose, true));
    EXPECT_TRUE(IsConnected(kPurpose, true));
    EXPECT_EQ(m_ui.Messages().size(), 1);

    // Without a user it is offline, and not a word is said.
    Db().Exec(QStringLiteral("DELETE FROM Users"));
    EXPECT_FALSE(IsConnected(Db(), kPurpose, true));
    EXPECT_EQ(m_ui.Messages().size(), 1);
}

TEST_F(SiteSessionProxy, TheConnectionTestFallsBackToTheFirstUpdatePage) {
    Rules().SetText(kSiteStore,
                    QStringLiteral("[Update]\r\nProtocols=1\r\nProtocol1=Current Time\r\n"
                                   "Protocol1 Site=0\r\n\r\n[Sites]\r\nSite0=eBay\r\n\r\n"
                                   "[Current Time eBay]\r\nUrl=http://") +
                        Host(m_proxy.Port()) +
                        QStringLiteral("/aw-cgi/eBayISAPI.dll?TimeShow\r\n\r\n"));
    EXPECT_TRUE(IsConnected(Db(), kPurpose, true));
    // No address at all in the rules: nothing to reach.
    Rules().ClearAll();
    EXPECT_FALSE(IsConnected(Db(), kPurpose, false));
}
