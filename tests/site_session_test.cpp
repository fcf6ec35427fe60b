// SPDX-License-Identifier: GPL-3.0-or-later
// The site session: [DAYS] from the last update, page addresses with every
// macro, the form encoding and post bodies, hidden fields of a real form, and
// against servers on loopback the sign-in token, the page fetch with its
// status words and cancel, the proxy of connection types 3 and 4, the rule
// fetcher, and the connection test.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QDate>
#include <QFile>
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
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
    const QDate today(2024, 3, 15);
    EXPECT_EQ(DaysToAsk(QString(), today), QStringLiteral("30"));
    EXPECT_EQ(DaysToAsk(QStringLiteral("03/15/24 09:30:00 PST"), today), QStringLiteral("2"));
    EXPECT_EQ(DaysToAsk(QStringLiteral("03/14/24 23:59:59 PST"), today), QStringLiteral("2"));
    EXPECT_EQ(DaysToAsk(QStringLiteral("03/10/24 08:00:00 PST"), today), QStringLiteral("6"));
    // 2024 is a leap year: 29 days lie between February 15 and March 15.
    EXPECT_EQ(DaysToAsk(QStringLiteral("02/14/24 08:00:00 PST"), today), QStringLiteral("30"));
    EXPECT_EQ(DaysToAsk(QStringLiteral("02/15/24 08:00:00 PST"), today), QStringLiteral("30"));
    EXPECT_EQ(DaysToAsk(QStringLiteral("02/16/24 08:00:00 PST"), today), QStringLiteral("29"));
    EXPECT_EQ(DaysToAsk(QStringLiteral("02/04/24 08:00:00 PST"), today), QStringLiteral("30"));
}

TEST(SiteSessionDays, CutsEitherZoneAndCountsAClockAheadAsWell) {
    const QDate today(2024, 7, 1);
    EXPECT_EQ(DaysToAsk(QStringLiteral("06/28/24 10:00:00 PDT and more"), today),
              QStringLiteral("4"));
    // A stamp from a clock that ran ahead counts by its distance.
    EXPECT_EQ(DaysToAsk(QStringLiteral("07/04/24 10:00:00 PST"), today), QStringLiteral("4"));
    // Across a year end.
    EXPECT_EQ(DaysToAsk(QStringLiteral("12/30/23 10:00:00 PST"), QDate(2024, 1, 2)),
              QStringLiteral("4"));
    // A stamp that is no date asks for the whole window.
    EXPECT_EQ(DaysToAsk(QStringLiteral("never"), today), QStringLiteral("30"));
}

// ------------------------------------------------------------- page address

TEST_F(SiteSessionTest, BuildUrlReplacesEveryMacroInItsMode) {
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
}

TEST_F(SiteSessionTest, BuildUrlTakesDaysFromTheRowAndLeavesOtherTextAlone) {
    const QString stamp =
        QDate::currentDate().toString(QStringLiteral("MM/dd/yy")) + QStringLiteral(" 08:00:00 PST");
    SetSiteColumn("LastUpdate", stamp);
    EXPECT_EQ(BuildUrl(Db(), QStringLiteral("days=[DAYS]&s=[SKIP]"), 0),
              QStringLiteral("days=2&s=0"));
    const QString plain = QStringLiteral("http://127.0.0.1/plain?a=[notamacro]&b=[userid]");
    EXPECT_EQ(BuildUrl(Db(), plain, 0), plain);
}

TEST_F(SiteSessionTest, BuildUrlPairsFieldsWithValuesOnlyAsFarAsBothGo) {
    const QString url = QStringLiteral("/x?a=[A]&b=[B]&c=[C]");
    // A field without a value was not scanned: its macro stays.
    EXPECT_EQ(
        BuildUrl(Db(), url, 0, {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")},
                 {QStringLiteral("1")}),
        QStringLiteral("/x?a=1&b=[B]&c=[C]"));
    // A value without a field is not used.
    EXPECT_EQ(
        BuildUrl(Db(), url, 0, {QStringLiteral("B")}, {QStringLiteral("2"), QStringLiteral("3")}),
        QStringLiteral("/x?a=[A]&b=2&c=[C]"));
}

TEST_F(SiteSessionTest, BuildUrlReadsTheRowOfTheSiteNumberGiven) {
    Db().Prepare(QStringLiteral(
                     "INSERT INTO UserSites (UserName, AuctionSiteFlag, UserID) VALUES (?, 1, ?)"))
        .BindAll(QStringLiteral("O'Hara"), QStringLiteral("other_site_id"))
        .Run();
    EXPECT_EQ(BuildUrl(Db(), QStringLiteral("[USERID]"), 1), QStringLiteral("other_site_id"));
    EXPECT_EQ(BuildUrl(Db(), QStringLiteral("[USERID]"), 0), QStringLiteral("o'hara_sells"));
}

// -------------------------------------------------------------- form texts

TEST(SiteSessionUrlEncode, KnownEntitiesAndNumbersBecomeTheirCodes) {
    EXPECT_EQ(UrlEncode(QStringLiteral("&#38;")), QStringLiteral("%26"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&#65;&#9;")), QStringLiteral("%41%09"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&QUOT;")), QStringLiteral("%26quot%3B"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&quot;")), QStringLiteral("%26quot%3B"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&amp;")), QStringLiteral("%26"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&Nbsp;")), QStringLiteral("%A0"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&lt;b&GT;")), QStringLiteral("%3Cb%3E"));
}

TEST(SiteSessionUrlEncode, AnyOtherAmpersandIsSentAloneAndTheScanGoesOn) {
    EXPECT_EQ(UrlEncode(QStringLiteral("&foo;")), QStringLiteral("%26foo%3B"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&")), QStringLiteral("%26"));
    EXPECT_EQ(UrlEncode(QStringLiteral("a&b")), QStringLiteral("a%26b"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&;")), QStringLiteral("%26%3B"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&#;")), QStringLiteral("%26%23%3B"));
    // The ";" behind the first "&" makes a name of " Jerry&amp"; the scan
    // goes on behind the "&" and still finds the entity.
    EXPECT_EQ(UrlEncode(QStringLiteral("Tom & Jerry&amp;")), QStringLiteral("Tom+%26+Jerry%26"));
    // The ";" must lie within 12 characters behind the "&".
    EXPECT_EQ(UrlEncode(QStringLiteral("&#0000000065;")), QStringLiteral("%41"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&#00000000065;")), QStringLiteral("%26%2300000000065%3B"));
}

TEST(SiteSessionUrlEncode, BlanksPlusesAndTheSafeCharacters) {
    EXPECT_EQ(UrlEncode(QStringLiteral("Brass lamp  x")), QStringLiteral("Brass+lamp++x"));
    EXPECT_EQ(UrlEncode(QStringLiteral("AZaz09.-_")), QStringLiteral("AZaz09.-_"));
    EXPECT_EQ(UrlEncode(QStringLiteral("a+b/c@d%e~f'g\"h=i?")),
              QStringLiteral("a%2Bb%2Fc%40d%25e%7Ef%27g%22h%3Di%3F"));
    EXPECT_EQ(UrlEncode(QStringLiteral("\r\n\t")), QStringLiteral("%0D%0A%09"));
    EXPECT_EQ(UrlEncode(QString()), QString());
}

TEST(SiteSessionUrlEncode, BeyondAsciiOneByteUpTo255ThenUtf8) {
    EXPECT_EQ(UrlEncode(QStringLiteral("caf\u00e9")), QStringLiteral("caf%E9"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&#233;")), QStringLiteral("%E9"));
    EXPECT_EQ(UrlEncode(QStringLiteral("\u20ac5")), QStringLiteral("%E2%82%AC5"));
    EXPECT_EQ(UrlEncode(QStringLiteral("&#8364;")), QStringLiteral("%E2%82%AC"));
    EXPECT_EQ(UrlEncode(QString::fromUtf8("\xF0\x9F\x98\x80")), QStringLiteral("%F0%9F%98%80"));
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
}

TEST(SiteSessionHiddenFields, NoFormOrNoHiddenFieldGivesNothing) {
    const QString page = QStringLiteral(
        "<form action=\"/post\"><input type=text name=a value=1><input type=submit></form>");
    EXPECT_EQ(ExtractHiddenFields(page, QStringLiteral("action=\"/post\"")), QString());
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

// The site's CGI answer to the sign-in post, recording each body.
class SiteSessionSignIn : public SiteSessionTest {
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
        m_server.Start();
        SetSiteRules(Host(m_server.Port()));
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

    LoopbackServer m_server;
    std::mutex m_mutex;
    std::vector<std::string> m_bodies;
    int m_status = 200;
    std::string m_answer =
        "<a href=\"/aw-cgi/eBayISAPI.dll?MyEbaySelling&userid=o%27hara_sells&pass=abcX&days=30\">"
        "Items I'm selling</a>";
};

}  // namespace

TEST_F(SiteSessionSignIn, FetchPostsTheSevenFieldsAndTakesTheTokenUpToTheNextAmpersand) {
    EXPECT_EQ(FetchEncodedPassword(Db(), QStringLiteral("o'hara_sells"), QStringLiteral("p w&x")),
              QStringLiteral("abcX"));
    ASSERT_EQ(Bodies().size(), 1u);
    EXPECT_EQ(Bodies().front(),
              "MfcISAPICommand=MyEbay&first=Y&userid=o%27hara_sells&pass=p+w%26x&dayssince=1"
              "&sellerSort=3&bidderSort=3");
}

TEST_F(SiteSessionSignIn, RefreshStoresTheTokenWithoutItsCheckCharacter) {
    EXPECT_TRUE(RefreshEncodedPassword(Db()));
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("abc"));
    // The stored user id and password are what is posted.
    ASSERT_EQ(Bodies().size(), 1u);
    EXPECT_NE(Bodies().front().find("userid=o%27hara_sells&pass=p+w%26x"), std::string::npos);
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

namespace {

class SiteSessionFetch : public SiteSessionTest {
protected:
    void SetUp() override {
        SiteSessionTest::SetUp();
        auto& routes = m_server.Routes();
        routes.Get("/page", [](const httplib::Request&, httplib::Response& res) {
            res.set_content("0123456789", "text/html");
        });
        routes.Get("/missing", [](const httplib::Request&, httplib::Response& res) {
            res.status = 404;
            res.set_content("404 Not Found: no such item", "text/html");
        });
        routes.Get("/down", [](const httplib::Request&, httplib::Response& res) {
            res.status = 503;
            res.set_content("The market is down.", "text/html");
        });
        // A page that trickles in, so that a cancel can arrive during it.
        routes.Get("/slow", [](const httplib::Request&, httplib::Response& res) {
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
        m_file = m_root.File(QStringLiteral("Configs/update.txt"));
    }

    void WriteStalePage() { m_root.Write(QStringLiteral("Configs/update.txt"), "stale page"); }

    LoopbackServer m_server;
    QString m_file;
};

}  // namespace

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
}

TEST_F(SiteSessionFetch, WithoutADatabaseArgumentTheSessionStoreGivesTheOptions) {
    EXPECT_EQ(FetchToFile(m_server.Url("/page"), m_file), FetchResult::Ok);
    EXPECT_EQ(ReadAll(m_file), QByteArray("0123456789"));
}

TEST_F(SiteSessionFetch, AFailedFetchLeavesNoPageBehind) {
    WriteStalePage();
    const QString closed = QStringLiteral("http://") + Host(ClosedPort()) + QStringLiteral("/page");
    EXPECT_EQ(FetchToFile(Db(), closed, m_file), FetchResult::Failed);
    EXPECT_FALSE(QFile::exists(m_file));
    EXPECT_EQ(m_ui.Statuses().back(), QStringLiteral("Disconnected from Server."));

    WriteStalePage();
    long code = 0;
    EXPECT_EQ(FetchToFile(NetOptionsForUser(Db()), m_server.Url("/down"), m_file, &code),
              FetchResult::Failed);
    EXPECT_EQ(code, 503);
    EXPECT_FALSE(QFile::exists(m_file));
}

TEST_F(SiteSessionFetch, ANotFoundAnswerIsAPageForTheRulesToJudge) {
    long code = 0;
    EXPECT_EQ(FetchToFile(NetOptionsForUser(Db()), m_server.Url("/missing"), m_file, &code),
              FetchResult::Ok);
    EXPECT_EQ(code, 404);
    EXPECT_EQ(ReadAll(m_file), QByteArray("404 Not Found: no such item"));
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

TEST_F(SiteSessionProxy, ConnectionTypesThreeAndFourGoThroughTheProxy) {
    for (const int type : {3, 4}) {
        SetConnection(type, QStringLiteral("127.0.0.1"), QString::number(m_proxy.Port()));
        const lw::core::NetOptions options = NetOptionsForUser(Db());
        EXPECT_EQ(options.proxyHost, QStringLiteral("127.0.0.1"));
        EXPECT_EQ(options.proxyPort, m_proxy.Port());
    }
    const QString file = m_root.File(QStringLiteral("Configs/update.txt"));
    EXPECT_EQ(FetchToFile(Db(), QString::fromStdString(SiteAddress("/page?a=1")), file),
              FetchResult::Ok);
    EXPECT_EQ(ReadAll(file), QByteArray("via proxy &pass=proxytokenZ& end"));
    EXPECT_TRUE(RefreshEncodedPassword(Db()));
    EXPECT_EQ(StoredEncodedPassword().toString(), QStringLiteral("proxytoken"));
    const std::vector<std::string> expected = {SiteAddress("/page?a=1"),
                                               SiteAddress("/aw-cgi/eBayISAPI.dll")};
    EXPECT_EQ(Targets(), expected);
}

TEST_F(SiteSessionProxy, OtherTypesAndANullServerGoDirect) {
    SetConnection(1, QStringLiteral("127.0.0.1"), QString::number(m_proxy.Port()));
    EXPECT_TRUE(NetOptionsForUser(Db()).proxyHost.isEmpty());
    const QString file = m_root.File(QStringLiteral("Configs/update.txt"));
    EXPECT_EQ(FetchToFile(Db(), QString::fromStdString(SiteAddress("/page")), file),
              FetchResult::Failed);
    SetConnection(3, QVariant(), QString::number(m_proxy.Port()));
    EXPECT_TRUE(NetOptionsForUser(Db()).proxyHost.isEmpty());
    EXPECT_FALSE(RefreshEncodedPassword(Db()));
    EXPECT_TRUE(Targets().empty());
}

// ------------------------------------------------------- connection test

namespace {

const QString kPurpose = QStringLiteral("update your auction database");
const QString kNoIsp = QStringLiteral(
    "You need to be connected to your Internet Service Provider to update your auction "
    "database.  Please connect and then try again.");

}  // namespace

TEST_F(SiteSessionProxy, TheConnectionTestTriesTheSiteHostUnlessAProxyIsSet) {
    // The site's host is closed: offline, said when asked to.
    EXPECT_FALSE(IsConnected(Db(), kPurpose, true));
    EXPECT_EQ(m_ui.Messages(), QStringList{kNoIsp});
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

TEST_F(SiteSessionProxy, NoUserMeansOfflineWithoutAWord) {
    SetSiteRules(Host(m_proxy.Port()));
    Db().Exec(QStringLiteral("DELETE FROM Users"));
    EXPECT_FALSE(IsConnected(Db(), kPurpose, true));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}
