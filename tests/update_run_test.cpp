// SPDX-License-Identifier: GPL-3.0-or-later
// The update run over a database from the shipped schema with a fake site:
// pages served from memory by a fetch hook, the password refresh and the
// rule check scripted. Covers the words shown, the progress, the one
// password refresh, failures that abort and failures that are passed over,
// cancel, paging and its ends, one fetch for one address, a database that
// cannot be written, the end-of-run steps that run whatever happened, and
// the run lists with RunProt.dat.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <ostream>
#include <thread>

#include "core/session.h"
#include "core/store.h"
#include "core/text.h"
#include "tests/support/fake_connections.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "update/update_run.h"

using namespace lw::update;
using lw::core::CurrentSession;
using lw::core::Database;
using lw::test::ScriptedUi;
using lw::test::SourceDir;
using lw::test::TempRoot;
using namespace Qt::StringLiterals;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const char* kRules =
    "[Current Auctions eBay]\n"
    "RunCaption=My Sales\nSitenumber=0\nUrl=http://site/selling?pass=[PASSWORD]&skip=[SKIP]\n"
    "Iterate=True\nIterateSkip=2\nGStart=<!-- BEGIN -->\nGend=<!-- END -->\n"
    "QueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\nItems=2\n"
    "Item1=ItemNumber\nItem1 Start=<td class=n\nItem2=ItemTitle\nItem2 Start=<td class=t\n"
    "\n"
    "[Current Bids eBay]\n"
    "RunCaption=My Bids\nSitenumber=0\nUrl=http://site/bidding\nGStart=<!-- BEGIN -->\n"
    "Gend=<!-- END -->\nQueryString=SELECT * FROM Bids WHERE ItemNumber='[1]'\nItems=2\n"
    "Item1=ItemNumber\nItem1 Start=<td class=n\nItem2=ItemTitle\nItem2 Start=<td class=t\n"
    "\n"
    "[Bid Details eBay]\n"
    "RunCaption=Bid Details\nSitenumber=0\nUrl=http://site/bidding\nGStart=<!-- BEGIN -->\n"
    "Gend=<!-- END -->\nQueryString=SELECT * FROM Bids WHERE ItemNumber='[1]'\nItems=2\n"
    "Item1=ItemNumber\nItem1 Start=<td class=n\nItem2=ItemTitle\nItem2 Start=<td class=t\n"
    "\n"
    "[Watching Items eBay]\n"
    "RunCaption=Watched Items\nSitenumber=0\nUrl=http://site/selling?pass=[PASSWORD]&skip=0\n"
    "Iterate=True\nIterateSkip=2\nGStart=<!-- BEGIN -->\nGend=<!-- END -->\n"
    "QueryString=SELECT * FROM Bids WHERE ItemNumber='[1]'\nItems=2\n"
    "Item1=ItemNumber\nItem1 Start=<td class=n\nItem2=ItemTitle\nItem2 Start=<td class=t\n"
    "\n"
    "[Account Information eBay]\n"
    "RunCaption=Account\nSitenumber=0\nUrl=http://site/account\nGStart=<!-- BEGIN -->\n"
    "Gend=<!-- END -->\nQueryString=DELETE FROM Auctions\nItems=1\n"
    "Item1=AccountType\nItem1 Start=<td class=n\n"
    "\n"
    "[Auction Details eBay]\n"
    "RunCaption=Sale Details\nSitenumber=0\nUrl=http://site/time\nGStart=<!-- ITEMS -->\n"
    "Gend=<!-- /ITEMS -->\nQueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\n"
    "Items=1\nItem1=ItemNumber\nItem1 Start=<td class=n\nItem1 AncillaryIf=Not Null\n"
    "Item1 Ancillary Protocol=Auction Item eBay\n"
    "\n"
    "[Auction Item eBay]\n"
    "RunCaption=Item Page\nSiteNumber=0\nUrl=http://site/item?no=[ItemNumber]\n"
    "GStart=<!-- ITEM -->\nGend=<!-- /ITEM -->\n"
    "QueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\nItems=1\n"
    "Item1=ItemCategory\nItem1 Start=<td class=cat\nWriteFields=1\nWriteField1=ItemNumber\n"
    "WriteFieldValue1=1\n"
    "\n"
    "[Paged Details eBay]\n"
    "RunCaption=Paged Details\nSitenumber=0\nUrl=http://site/selling?pass=[PASSWORD]&skip=[SKIP]\n"
    "Iterate=True\nIterateSkip=2\nGStart=<!-- BEGIN -->\nGend=<!-- END -->\n"
    "QueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\nItems=2\n"
    "Item1=ItemNumber\nItem1 Start=<td class=n\nItem1 AncillaryIf=Not Null\n"
    "Item1 Ancillary Protocol=Auction Item eBay\nItem2=ItemTitle\nItem2 Start=<td class=t\n"
    "\n"
    "[Current Time eBay]\n"
    "RunCaption=Site Time\nSitenumber=0\nUrl=http://site/time\nGStart=<!-- CLOCK -->\n"
    "Gend=<!-- /CLOCK -->\nQueryString=SELECT * FROM Global\nItems=1\nItem1=eBayTime\n"
    "Item1 Start=The time is\nItem1 AlternateSpan=:\n"
    "\n"
    "[Update]\nProtocols=2\nProtocol1=Current Time\nProtocol1 Site=0\n"
    "Protocol2=Current Auctions\nProtocol2 Site=1\n"
    "\n"
    "[Sites]\nSite0=eBay\nSite1=Other Site\n";

// The address of the list page from `skip` on, with the good password.
QString ListUrl(int skip) {
    return u"http://site/selling?pass=good&skip="_s + QString::number(skip);
}

// A site time an hour behind the local clock, as the site writes it.
QString SiteClock() {
    return QLocale::c().toString(QDateTime::currentDateTime().addSecs(-3600),
                                 u"dddd, MMMM dd, yyyy hh:mm:ss"_s) +
           u" PDT"_s;
}

class RunTest : public ::testing::Test {
protected:
    struct View : UpdateView {
        void Status(const QString& text) override {
            statuses << text;
            if (text == cancelOn) {
                // A page held ahead is under way before the user cancels.
                for (int i = 0; i < 10000 && holdOn && !*holdOn; ++i) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
                ui->RequestCancel();
            }
            if (text == releaseOn && release != nullptr) {
                *release = true;
            }
        }
        void ConnectStatus(const QString& text) override { connects << text; }
        void Progress(int percent) override { progress << percent; }
        void LastUrl(const QString& url) override { urls << url; }
        void CurrentItem(const QString&, const QString&) override {}
        bool DetailsShown() override { return false; }
        QStringList statuses;
        QStringList connects;
        QStringList urls;
        QList<int> progress;
        QString cancelOn;
        QString releaseOn;  // the page held ahead is let go at this status
        std::atomic<bool>* release = nullptr;
        const std::atomic<bool>* holdOn = nullptr;  // set: cancel once the held page is under way
        ScriptedUi* ui = nullptr;
    };

    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        QString error;
        ASSERT_TRUE(lw::core::SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        lw::core::SetCurrentUser(u"seller1"_s);
        m_db.emplace(lw::core::OpenOrCreateStore(m_root.File(u"Lotwright.db"_s), SourceDir()));
        m_db->Exec(QStringLiteral(
            "INSERT INTO Users (UserName, isDefault) VALUES ('seller1', 1);"
            "INSERT INTO UserSites (UserName, AuctionSiteFlag, UserID) VALUES ('seller1', 0, "
            "'s1')"));
        EditRules({}, {});
        m_view.ui = &m_ui;
        m_view.release = &m_holdReleased;

        m_pages[ListUrl(0)] = lw::test::ListPage({{"101", "First"}, {"102", "Second"}});
        m_pages[ListUrl(2)] = lw::test::ListPage({{"103", "Third"}});
        m_pages[ListUrl(4)] = lw::test::ListPage({});
        m_pages[u"http://site/bidding"_s] = lw::test::ListPage({{"201", "A bid"}});
        m_pages[u"http://site/time"_s] =
            QByteArray("<!-- CLOCK -->The time is: ") + SiteClock().toUtf8() +
            "<!-- /CLOCK --><!-- ITEMS --><td class=n>101<!-- /ITEMS -->";
        m_pages[u"http://site/item?no=101"_s] = "<!-- ITEM --><td class=cat>Toys<!-- /ITEM -->";
    }

    // The session must not keep speaking through this fixture's Ui.
    void TearDown() override { lw::core::ResetSession(); }

    // The rules, with the first `from` replaced by `to`.
    void EditRules(const QString& from, const QString& to) {
        QString text = QString::fromUtf8(kRules);
        if (!from.isEmpty()) {
            const qsizetype at = text.indexOf(from);
            ASSERT_GE(at, 0) << from.toStdString();
            text.replace(at, from.size(), to);
        }
        m_rules.SetText(kSiteStore, text.replace(u'\n', u"\r\n"_s) + u"\r\n\r\n"_s);
    }

    UpdateHooks Hooks() {
        UpdateHooks hooks;
        hooks.checkRules = [this] {
            ++m_checks;
            return m_checkPasses;
        };
        hooks.fetch = [this](const QString& url, QByteArray& page) {
            m_fetched << url;
            EXPECT_TRUE(page.isEmpty());
            if (m_fetched.size() > 40) {
                return FetchResult::Failed;  // a run that would never end
            }
            return Serve(url, page);
        };
        hooks.buildUrl = [this](const QString& url, int, const QStringList& fields,
                                const QStringList& values, qint64 offset) {
            QString built = url;
            built.replace(u"[PASSWORD]"_s, m_password);
            built.replace(u"[SKIP]"_s, QString::number(offset));
            for (qsizetype i = 0; i < fields.size() && i < values.size(); ++i) {
                built.replace(u"["_s + fields[i] + u"]"_s, values[i]);
            }
            return built;
        };
        hooks.refreshPassword = [this] {
            ++m_refreshes;
            m_password = m_refreshTo;
            return m_refreshWorks;
        };
        hooks.prepareUsageReport = [this] { ++m_reports; };
        hooks.repairNulls = [this] {
            ++m_repairs;
            if (m_repairAlso) {
                m_repairAlso();
            }
        };
        hooks.redraw = [this] { ++m_redraws; };
        hooks.now = [] { return QDateTime(QDate(2026, 5, 23), QTime(14, 5, 9)); };
        if (m_fetchAhead) {
            // Every page over the run's connections, served from the same
            // maps, which are not changed while a run is under way.
            hooks.connections = m_connections;
            hooks.fetchAhead = [this] {
                return AheadSetup{
                    {},
                    lw::test::FakeConnections([this](const QString& url, QByteArray& page,
                                                     const std::function<bool()>& stopped) {
                        {
                            const std::lock_guard lock(m_aheadMutex);
                            m_fetchedAhead << url;
                        }
                        if (url == m_holdAhead) {
                            m_holding = true;
                        }
                        if (url == m_releaseOnFetch) {
                            m_holdReleased = true;
                        }
                        const auto held = [&] {
                            return (url == m_holdAhead && !m_holdReleased) ||
                                   (url == m_heldUntilHolding && !m_holding);
                        };
                        // Held for ten seconds at most: a run that never lets go
                        // fails its test instead of hanging it.
                        for (int i = 0; i < 10000 && held() && !stopped(); ++i) {
                            std::this_thread::sleep_for(std::chrono::milliseconds(1));
                        }
                        if (stopped()) {
                            m_aheadStopped = true;
                            return FetchResult::Cancelled;
                        }
                        return Serve(url, page);
                    })};
            };
        }
        return hooks;
    }

    // The fake site's answer to url.
    FetchResult Serve(const QString& url, QByteArray& page) const {
        if (m_everyPage && url.contains(u"selling"_s)) {
            page = *m_everyPage;
            return FetchResult::Ok;
        }
        if (const auto result = m_results.find(url); result != m_results.end()) {
            return result->second;
        }
        const auto it = m_pages.find(url);
        if (it == m_pages.end()) {
            return FetchResult::Failed;
        }
        page = it->second;
        return FetchResult::Ok;
    }

    QStringList FetchedAhead() {
        const std::lock_guard lock(m_aheadMutex);
        return m_fetchedAhead;
    }
    // Every address fetched, over the run's connections or not.
    QStringList AllFetched() { return m_fetched + FetchedAhead(); }

    UpdateRun::Result Activate(const QStringList& list) { return Activate(*m_db, list); }
    UpdateRun::Result Activate(Database& db, const QStringList& list) {
        UpdateRun run(db, m_view, Hooks(), m_rules);
        const UpdateRun::Result result = run.Activate(list);
        m_failedProtocols = run.FailedProtocols();
        if (m_fetchAhead) {
            // Every page came over the run's connections.
            EXPECT_TRUE(m_fetched.isEmpty()) << m_fetched.join(u' ').toStdString();
        }
        return result;
    }

    // Item pages for 102 and 103 ("Books 102", "Books 103"); 101's is Toys.
    void AddBookPages() {
        for (const char* number : {"102", "103"}) {
            m_pages[u"http://site/item?no="_s + QLatin1String(number)] =
                QByteArray("<!-- ITEM --><td class=cat>Books ") + number + "<!-- /ITEM -->";
        }
    }
    // "number=category" of each sale, in the order written.
    QString WrittenCategories() {
        return Text(
            QStringLiteral("SELECT group_concat(ItemNumber || '=' || ItemCategory, ' ') FROM "
                           "(SELECT * FROM Auctions ORDER BY rowid)"));
    }

    qint64 Count(const QString& sql) { return m_db->ScalarInt(sql); }
    QString Text(const QString& sql) {
        lw::core::Statement s = m_db->Prepare(sql);
        return s.Step() ? s.Text(0) : u"<no row>"_s;
    }

    // What must hold after every update, whatever happened in it.
    void ExpectEndOfRun(int updates = 1) {
        EXPECT_EQ(
            Text(QStringLiteral("SELECT LastUpdate FROM UserSites WHERE UserName='seller1' AND "
                                "AuctionSiteFlag=0")),
            u"05/23/26 14:05:09 PST"_s);
        EXPECT_EQ(Count(u"SELECT Updates FROM Tracking"_s), updates);
        EXPECT_EQ(m_repairs, updates);
        EXPECT_EQ(m_redraws, updates);
    }

    ScriptedUi m_ui;
    TempRoot m_root;
    std::optional<Database> m_db;
    RuleStore m_rules;
    View m_view;
    std::map<QString, QByteArray> m_pages;
    std::map<QString, FetchResult> m_results;
    std::optional<QByteArray> m_everyPage;  // the site's answer to every list address
    QStringList m_fetched;
    QStringList m_failedProtocols;
    bool m_fetchAhead = false;
    std::function<void()> m_repairAlso;  // what the repair does besides
    // This page is held until the fetch is told to stop or the hold released;
    // it is set before the run.
    QString m_holdAhead;
    std::atomic<bool> m_holdReleased{false};
    std::atomic<bool> m_holding{false};  // the held page is under way
    QString m_releaseOnFetch;            // the held page is let go when this one starts
    QString m_heldUntilHolding;          // this page comes once the held one is under way
    int m_connections = 2;
    std::mutex m_aheadMutex;
    QStringList m_fetchedAhead;
    std::atomic<bool> m_aheadStopped{false};
    QString m_password = u"good"_s;
    QString m_refreshTo = u"good"_s;
    bool m_refreshWorks = true;
    bool m_checkPasses = true;
    int m_checks = 0;
    int m_refreshes = 0;
    int m_reports = 0;
    int m_repairs = 0;
    int m_redraws = 0;
};

// Runs once with each page fetched as the run comes to it and once with
// every page over the run's connections, read ahead.
class RunBothWays : public RunTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        RunTest::SetUp();
        m_fetchAhead = GetParam();
    }
};

}  // namespace

// ------------------------------------------------------------ a whole update

TEST_F(RunTest, PagesAreFetchedScannedAndWrittenWithTheWindowsWords) {
    const auto result = Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, (QStringList{ListUrl(0), ListUrl(2), ListUrl(4), u"http://site/time"_s}));
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions WHERE UserName='seller1'"_s), 3);
    EXPECT_EQ(Text(u"SELECT ItemTitle FROM Auctions WHERE ItemNumber='103'"_s), u"Third"_s);
    EXPECT_EQ(
        m_view.statuses,
        (QStringList{u"Preparing update"_s, u"Preparing Update."_s, u"Fetching My Sales"_s,
                     u"Processing My Sales"_s, u"Processing My Sales"_s, u"Processing My Sales"_s,
                     u"Fetching Site Time"_s, u"Processing Site Time"_s, u"Update complete."_s}));
    EXPECT_EQ(m_view.connects.first(), u"My Sales retrieved successfully."_s);
    EXPECT_EQ(m_view.urls.last(), u"http://site/time"_s);
    // Step Int(100 / 4) = 25: once on a protocol's first page, once at its
    // end. The step is the whole part, so it never passes a hundred.
    EXPECT_EQ(m_view.progress, (QList<int>{0, 25, 50, 75, 100}));
    EXPECT_EQ(UpdateRun::ProgressStep(3), 16);
    EXPECT_EQ(UpdateRun::ProgressStep(1), 50);
    EXPECT_EQ(UpdateRun::ProgressStep(0), 0);
    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'|').toStdString();
    EXPECT_EQ(m_checks, 1);
    EXPECT_EQ(m_reports, 1);
    EXPECT_TRUE(m_failedProtocols.isEmpty());
    // The new site time sets the correction in the table and the session.
    EXPECT_NEAR(lw::core::Val(Text(u"SELECT eBayCorrection FROM Global"_s)), 3600, 5);
    EXPECT_NEAR(lw::core::Val(CurrentSession().SiteCorrection), 3600, 5);
    ExpectEndOfRun();
}

// The end-of-run steps stand apart: one that fails loses its own write only,
// and what a failing repair wrote before it failed stays.
TEST_F(RunTest, AFailingEndOfRunStepLosesOnlyItsOwnWrite) {
    // One update after the other, over the same database.
    const struct {
        const char* name;
        const char* before;  // run on the database before the update
        bool repairFails;
        qint64 updates;  // Tracking's count afterwards; -1: no table to count in
    } cases[] = {
        {"a repair that fails half way", nullptr, true, 1},
        {"no table to count updates in", "ALTER TABLE Tracking RENAME TO Gone", false, -1},
    };
    int runs = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.before != nullptr) {
            m_db->Exec(QString::fromUtf8(c.before));
        }
        m_db->Exec(u"UPDATE UserSites SET LastUpdate = NULL"_s);
        m_repairAlso = [this, &c] {
            if (c.repairFails) {
                m_db->Exec(u"UPDATE Global SET eBayCorrection = 'mended'"_s);
                throw lw::core::StoreError(u"disk I/O error"_s, 10);
            }
        };
        EXPECT_EQ(Activate({u"Current Auctions eBay"_s}), UpdateRun::Result::Complete);
        EXPECT_EQ(
            Text(QStringLiteral("SELECT LastUpdate FROM UserSites WHERE UserName='seller1' AND "
                                "AuctionSiteFlag=0")),
            u"05/23/26 14:05:09 PST"_s);
        if (c.updates >= 0) {
            EXPECT_EQ(Count(u"SELECT Updates FROM Tracking"_s), c.updates);
        }
        EXPECT_EQ(Text(u"SELECT eBayCorrection FROM Global"_s), u"mended"_s);
        EXPECT_EQ(m_redraws, ++runs);
        EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 3);
    }
}

// update.txt holds the last main page of the run as it came, whatever stood
// there before, and nothing once the last list page could not be fetched.
TEST_F(RunTest, UpdateTxtHoldsTheLastMainPageWhenTheRunEnds) {
    const QString path = UpdateRun::UpdatePagePath();
    {
        QFile earlier(path);
        ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
        earlier.write("a page of an earlier run");
    }
    Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s});
    EXPECT_EQ(lw::test::ReadAll(path), m_pages[u"http://site/time"_s]);

    m_results[ListUrl(2)] = FetchResult::Failed;
    Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s});
    EXPECT_FALSE(QFile::exists(path));
}

// ------------------------------------------------------------ the run's guards, both ways

// Read ahead, the site time fails while My Sales is written: the failure is
// told when the run gets to it, after every sale is in, and nothing after it
// runs.
TEST_P(RunBothWays, AConnectionFailureIsToldInItsTurnAbortsTheRestAndTheEndStepsStillRun) {
    m_results[u"http://site/time"_s] = FetchResult::Failed;
    const auto result =
        Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s, u"Current Bids eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::Aborted);
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 3);
    EXPECT_EQ(AllFetched().count(u"http://site/time"_s), 1);
    EXPECT_FALSE(m_fetched.contains(u"http://site/bidding"_s));
    EXPECT_FALSE(m_view.statuses.contains(u"Fetching My Bids"_s));
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Bids"_s), 0);
    EXPECT_EQ(
        m_ui.Messages(),
        QStringList{u"Retrieval of Site Time from eBay failed.  There is a connection problem or "
                    u"eBay is experiencing technical difficulties.  Update aborted."_s});
    EXPECT_EQ(m_ui.Titles(), QStringList{u"Connection Error"_s});
    EXPECT_EQ(m_view.connects.last(), u"Current Time eBay connection error."_s);
    EXPECT_FALSE(m_view.statuses.contains(u"Update complete."_s));
    ExpectEndOfRun();
}

// Read ahead, the protocol after the first asks for its pages with the stale
// password too; after the refresh both go with the new one.
TEST_P(RunBothWays, AMissingMarkerRefreshesThePasswordOnceAndStartsTheProtocolAfresh) {
    m_password = u"stale"_s;
    m_pages[u"http://site/selling?pass=stale&skip=0"_s] = "<html>Sign in</html>";
    AddBookPages();
    EXPECT_EQ(Activate({u"Current Auctions eBay"_s, u"Paged Details eBay"_s}),
              UpdateRun::Result::Complete);
    EXPECT_EQ(m_refreshes, 1);
    EXPECT_TRUE(m_view.statuses.contains(u"Updating Configuration"_s));
    EXPECT_EQ(WrittenCategories(), u"101=Toys 102=Books 102 103=Books 103"_s);
    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'|').toStdString();
}

TEST_P(RunBothWays, ASiteThatAnswersEveryOffsetAlikeFailsTheProtocol) {
    m_everyPage = lw::test::ListPage({{"101", "First"}, {"102", "Second"}});
    EXPECT_EQ(Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s}),
              UpdateRun::Result::Complete);
    if (!GetParam()) {
        EXPECT_EQ(m_fetched, (QStringList{ListUrl(0), ListUrl(2), u"http://site/time"_s}));
    } else {
        // Read ahead, the list pages asked for past the repeated one may have
        // gone out as well, and no more: the run stops at the repeat, not at
        // the most pages a protocol may have.
        EXPECT_LE(AllFetched().size(), 16) << AllFetched().join(u' ').toStdString();
    }
    EXPECT_EQ(
        m_ui.Messages(),
        QStringList{u"My Sales could not be processed.  Continuing with remainder of update."_s});
    EXPECT_EQ(m_failedProtocols, QStringList{u"Current Auctions eBay"_s});
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 2);
}

TEST_P(RunBothWays, PagingWithAnAddressThatDoesNotChangeEnds) {
    // Iterate with a fixed skip: the second page would be the first again.
    EXPECT_EQ(Activate({u"Watching Items eBay"_s}), UpdateRun::Result::Complete);
    EXPECT_EQ(AllFetched(), QStringList{ListUrl(0)});
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Bids"_s), 2);
}

INSTANTIATE_TEST_SUITE_P(Fetch, RunBothWays, ::testing::Bool(), [](const auto& info) {
    return std::string(info.param ? "Ahead" : "AsReached");
});

// ------------------------------------------------------------ failures

TEST_F(RunTest, AfterTheOneRefreshAProtocolWithoutMarkersIsPassedOver) {
    m_password = u"stale"_s;
    m_refreshTo = u"stale"_s;
    m_pages[u"http://site/selling?pass=stale&skip=0"_s] = "<html>Sign in</html>";
    m_pages[u"http://site/bidding"_s] = "<html>also changed</html>";
    const auto result =
        Activate({u"Current Auctions eBay"_s, u"Current Bids eBay"_s, u"Current Time eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    // One refresh for the whole update, not one per protocol.
    EXPECT_EQ(m_refreshes, 1);
    // "Current Bids eBay" fails without a word; the rest goes on.
    EXPECT_EQ(
        m_ui.Messages(),
        QStringList{u"My Sales could not be processed.  Continuing with remainder of update."_s});
    EXPECT_EQ(m_ui.Titles(), QStringList{u"My Sales"_s});
    EXPECT_TRUE(m_view.connects.contains(u"My Sales update unsuccessful."_s));
    EXPECT_FALSE(m_view.connects.contains(u"My Bids update unsuccessful."_s));
    EXPECT_EQ(Text(u"SELECT eBayTime FROM Global"_s).right(3), u"PDT"_s);
    EXPECT_TRUE(m_view.statuses.contains(u"Update complete."_s));
    // Steps of 16: a protocol that failed adds one, one that ran adds two.
    EXPECT_EQ(m_view.progress, (QList<int>{0, 16, 32, 48, 64}));
    // The command line's exit code counts the failures told.
    EXPECT_EQ(m_failedProtocols, QStringList{u"Current Auctions eBay"_s});
}

TEST_F(RunTest, ARefusedQueryStringIsToldByProtocolAndTheRestGoesOn) {
    m_pages[u"http://site/account"_s] = lw::test::ListPage({{"1", "x"}});
    Activate({u"Account Information eBay"_s, u"Current Time eBay"_s});
    ASSERT_EQ(m_ui.Messages().size(), 2);
    EXPECT_TRUE(m_ui.Messages()[0].contains(u"\"Account Information eBay\""_s));
    EXPECT_EQ(m_ui.Messages()[1],
              u"Account could not be processed.  Continuing with remainder of update."_s);
    EXPECT_NE(Text(u"SELECT eBayTime FROM Global"_s), QString());
}

TEST_F(RunTest, AFailedAncillaryQueryEndsThatAncillaryQuietly) {
    EditRules(
        u"QueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\nItems=1\n"
        u"Item1=ItemCategory"_s,
        u"QueryString=DELETE FROM Auctions\nItems=1\nItem1=ItemCategory"_s);
    EXPECT_EQ(Activate({u"Auction Details eBay"_s}), UpdateRun::Result::Complete);
    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'|').toStdString();
    EXPECT_TRUE(m_failedProtocols.isEmpty());
    // The main record is written; the item page's part is not.
    EXPECT_EQ(Text(u"SELECT IFNULL(ItemCategory, 'none') FROM Auctions WHERE ItemNumber='101'"_s),
              u"none"_s);
    EXPECT_EQ(m_view.statuses.last(), u"Update complete."_s);
}

TEST_F(RunTest, AProtocolWhoseItemsIsNoCountIsRefusedBeforeItsFirstPage) {
    for (const char* items : {"Items=0\n", "Items=-3\n", "Items=all\n", ""}) {
        SCOPED_TRACE(items);
        // The first list query in the rules is My Sales'.
        EditRules(u"ItemNumber='[1]'\nItems=2\n"_s,
                  u"ItemNumber='[1]'\n"_s + QString::fromUtf8(items));
        m_fetched.clear();
        const qsizetype told = m_ui.Messages().size();
        const auto result = Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s});
        EXPECT_EQ(result, UpdateRun::Result::Complete);
        EXPECT_EQ(m_fetched, QStringList{u"http://site/time"_s});
        ASSERT_EQ(m_ui.Messages().size(), told + 1);
        EXPECT_TRUE(m_ui.Messages().last().startsWith(
            u"The protocol \"Current Auctions eBay\" cannot run: its key Items "_s))
            << m_ui.Messages().last().toStdString();
        EXPECT_EQ(m_ui.Titles().last(), u"Protocol Error"_s);
        EXPECT_EQ(m_failedProtocols, QStringList{u"Current Auctions eBay"_s});
        EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 0);
    }
}

TEST_F(RunTest, AReadOnlyDatabaseStopsTheRunBeforeAnyPage) {
    Database readOnly = Database::Open(m_db->Path(), Database::Mode::ReadOnly);
    EXPECT_EQ(Activate(readOnly, {u"Current Time eBay"_s}), UpdateRun::Result::StoreFailed);
    EXPECT_TRUE(m_fetched.isEmpty());
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_TRUE(m_ui.Messages()[0].startsWith(u"The database "_s + m_db->Path() +
                                              u" could not be written"_s))
        << m_ui.Messages()[0].toStdString();
    EXPECT_EQ(m_ui.Titles(), QStringList{u"Update Stopped"_s});
    EXPECT_FALSE(m_view.statuses.contains(u"Update complete."_s));
}

TEST_F(RunTest, AFullDiskStopsTheRunAtThePageItHappensOn) {
    // No page may be added to the file: a title that needs one cannot be
    // stored.
    m_db->Exec(u"PRAGMA max_page_count = %1"_s.arg(m_db->ScalarInt(u"PRAGMA page_count"_s)));
    const QByteArray title(20000, 'x');
    m_pages[ListUrl(0)] = lw::test::ListPage({{"101", title.constData()}});
    const auto result = Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::StoreFailed);
    EXPECT_EQ(m_fetched, QStringList{ListUrl(0)});
    ASSERT_EQ(m_ui.Messages().size(), 1) << m_ui.Messages().join(u'|').toStdString();
    EXPECT_TRUE(m_ui.Messages()[0].contains(m_db->Path())) << m_ui.Messages()[0].toStdString();
    EXPECT_FALSE(m_view.statuses.contains(u"Update complete."_s));
}

TEST_F(RunTest, AFailedRuleCheckFetchesNothingUnlessTheRulesWereCheckedBefore) {
    m_checkPasses = false;
    EXPECT_EQ(Activate({u"Current Time eBay"_s}), UpdateRun::Result::RulesFailed);
    EXPECT_TRUE(m_fetched.isEmpty());
    ExpectEndOfRun();

    CurrentSession().RulesChecked = true;
    EXPECT_EQ(Activate({u"Current Time eBay"_s}), UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, QStringList{u"http://site/time"_s});
    ExpectEndOfRun(2);
}

// ------------------------------------------------------------ cancel

TEST_F(RunTest, CancelAfterARecordKeepsWhatWasWritten) {
    m_view.cancelOn = u"Processing My Sales"_s;
    const auto result = Activate({u"Current Auctions eBay"_s, u"Current Time eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::Cancelled);
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 1);
    EXPECT_EQ(m_ui.Messages(),
              QStringList{u"Update cancelled.  Some Auction/Bid information may be incomplete."_s});
    EXPECT_EQ(m_ui.Titles(), QStringList{u"Update Cancelled"_s});
    EXPECT_FALSE(m_fetched.contains(u"http://site/time"_s));
    ExpectEndOfRun();
}

TEST_F(RunTest, ACancelledFetchEndsTheRunAndEarlierPagesStay) {
    m_results[ListUrl(2)] = FetchResult::Cancelled;
    EXPECT_EQ(Activate({u"Current Auctions eBay"_s}), UpdateRun::Result::Cancelled);
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 2);
    EXPECT_EQ(m_ui.Titles(), QStringList{u"Update Cancelled"_s});
    ExpectEndOfRun();
}

TEST_F(RunTest, ACancelWhileAPageFetchedAheadIsAwaitedStopsItsTransfer) {
    m_fetchAhead = true;
    m_holdAhead = u"http://site/item?no=101"_s;
    m_view.cancelOn = u"Fetching Item Page"_s;
    m_view.holdOn = &m_holding;
    EXPECT_EQ(Activate({u"Auction Details eBay"_s}), UpdateRun::Result::Cancelled);
    EXPECT_TRUE(m_aheadStopped);
    EXPECT_EQ(m_ui.Titles(), QStringList{u"Update Cancelled"_s});
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions WHERE ItemCategory IS NOT NULL"_s), 0);
    ExpectEndOfRun();
}

// ------------------------------------------------------------ pages and addresses

TEST_F(RunTest, TwoProtocolsInARowWithOneAddressFetchOnce) {
    Activate({u"Current Bids eBay"_s, u"Bid Details eBay"_s});
    EXPECT_EQ(m_fetched, QStringList{u"http://site/bidding"_s});
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Bids"_s), 1);
    // The second protocol scanned the page in hand from its own top.
    EXPECT_EQ(m_view.statuses.count(u"Processing Bid Details"_s), 1);
}

TEST_F(RunTest, ARecordAPageEndsInsideIsDroppedAndTheNextPageStartsClean) {
    m_pages[ListUrl(0)] =
        "<!-- BEGIN --><td class=n>101<td class=t>First<td class=n>102<!-- END -->";
    EXPECT_EQ(Activate({u"Current Auctions eBay"_s}), UpdateRun::Result::Complete);
    EXPECT_EQ(Text(u"SELECT group_concat(ItemNumber || '=' || ItemTitle, ' ') FROM "
                   u"(SELECT * FROM Auctions ORDER BY ItemNumber)"_s),
              u"101=First 103=Third"_s);
}

TEST_F(RunTest, APageWithNoRecordEndsThePaging) {
    m_pages[ListUrl(0)] = lw::test::ListPage({});
    Activate({u"Current Auctions eBay"_s});
    EXPECT_EQ(m_fetched, QStringList{ListUrl(0)});
}

TEST_F(RunTest, AncillaryPagesAreFetchedWithTheRecordsValuesAndWritten) {
    Activate({u"Auction Details eBay"_s});
    EXPECT_EQ(m_fetched, (QStringList{u"http://site/time"_s, u"http://site/item?no=101"_s}));
    EXPECT_EQ(Text(u"SELECT ItemCategory FROM Auctions WHERE ItemNumber='101'"_s), u"Toys"_s);
    EXPECT_TRUE(m_view.statuses.contains(u"Fetching Item Page"_s));
    // The caption comes back when the ancillary run ends.
    EXPECT_EQ(m_view.statuses.last(), u"Update complete."_s);
    EXPECT_EQ(m_view.statuses[m_view.statuses.size() - 2], u"Processing Sale Details"_s);
}

// ------------------------------------------------------------ pages fetched ahead

TEST_F(RunTest, OverTheRunsConnectionsEveryPageIsFetchedOnceAndTheRowsAreTheSame) {
    m_fetchAhead = true;
    m_pages[u"http://site/time"_s] =
        QByteArray("<!-- CLOCK -->The time is: ") + SiteClock().toUtf8() +
        "<!-- /CLOCK --><!-- ITEMS --><td class=n>101<td class=n>102<td class=n>103<!-- /ITEMS "
        "-->";
    AddBookPages();
    const auto result =
        Activate({u"Current Auctions eBay"_s, u"Auction Details eBay"_s, u"Current Time eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    // Every page came over the connections, each once (over two, in either
    // order); a list with no pages of its own is asked for a page further
    // than the one read, so the page after the empty one may have come too,
    // unless the next protocol dropped it first; the site time shares its
    // address with the page before it.
    QStringList ahead = FetchedAhead();
    EXPECT_LE(ahead.removeAll(ListUrl(6)), 1);
    ahead.sort();
    EXPECT_EQ(ahead, (QStringList{u"http://site/item?no=101"_s, u"http://site/item?no=102"_s,
                                  u"http://site/item?no=103"_s, ListUrl(0), ListUrl(2), ListUrl(4),
                                  u"http://site/time"_s}));
    // Each record wrote its own item page, whichever came first.
    EXPECT_EQ(WrittenCategories(), u"101=Toys 102=Books 102 103=Books 103"_s);
    // Each page taken is told as a fetch is.
    const QStringList statuses = m_ui.Statuses();
    EXPECT_EQ(statuses.count(u"Connecting to Server"_s), 7);
    EXPECT_TRUE(statuses.contains(
        u"Transferring Page: %1 bytes"_s.arg(m_pages[u"http://site/item?no=103"_s].size())))
        << statuses.join(u'|').toStdString();
    EXPECT_EQ(m_view.statuses.last(), u"Update complete."_s);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    ExpectEndOfRun();
}

TEST_F(RunTest, TheNextListPageIsAskedForBeforeTheItemPagesOfTheOneBeforeIt) {
    m_fetchAhead = true;
    m_connections = 1;
    AddBookPages();
    // The first item page waits until its record is being read, so that the
    // run has asked for everything it knows by then.
    m_holdAhead = u"http://site/item?no=101"_s;
    m_view.releaseOn = u"Fetching Item Page"_s;
    // One protocol per run: the protocol after the one under way is read
    // ahead as well, which would mix the two lists of the same addresses.
    EXPECT_EQ(Activate({u"Current Auctions eBay"_s}), UpdateRun::Result::Complete);
    const QString item = u"http://site/item?no="_s;
    // The list pages alone, ahead of the one read. The page after the empty
    // one is asked for as well, but the run ends on the empty page and stops
    // it, so it may or may not have gone out.
    const QStringList lists = FetchedAhead();
    ASSERT_GE(lists.size(), 3) << lists.join(u' ').toStdString();
    EXPECT_EQ(lists.mid(0, 3), (QStringList{ListUrl(0), ListUrl(2), ListUrl(4)}));
    EXPECT_EQ(lists.mid(3), lists.size() == 3 ? QStringList{} : QStringList{ListUrl(6)});

    EXPECT_EQ(Activate({u"Paged Details eBay"_s}), UpdateRun::Result::Complete);
    const QStringList ahead = FetchedAhead().mid(lists.size());
    ASSERT_EQ(ahead.size(), 6) << ahead.join(u' ').toStdString();
    // With item pages, one ahead: the page after the first list page goes
    // before that page's second item page; the item page on it, and the page
    // after it, follow.
    EXPECT_EQ(ahead.mid(0, 4),
              (QStringList{ListUrl(0), item + u"101"_s, ListUrl(2), item + u"102"_s}));
    QStringList last = ahead.mid(4);
    last.sort();
    EXPECT_EQ(last, (QStringList{item + u"103"_s, ListUrl(4)}));
    // Written in the order of the pages, each with its own item page.
    EXPECT_EQ(WrittenCategories(), u"101=Toys 102=Books 102 103=Books 103"_s);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// While a list is written, the connections already fetch the next
// protocol's pages: here the last page of My Sales is held until an item
// page that only the next protocol asks for is on its way.
TEST_F(RunTest, TheNextProtocolsPagesAreFetchedWhileTheOneBeforeIsWritten) {
    m_fetchAhead = true;
    AddBookPages();
    m_holdAhead = ListUrl(4);
    m_releaseOnFetch = u"http://site/item?no=101"_s;
    const auto result = Activate({u"Current Auctions eBay"_s, u"Paged Details eBay"_s});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    EXPECT_TRUE(m_holdReleased) << FetchedAhead().join(u' ').toStdString();
    EXPECT_EQ(FetchedAhead().count(m_releaseOnFetch), 1);
    // Written in the order of the protocols all the same.
    EXPECT_EQ(WrittenCategories(), u"101=Toys 102=Books 102 103=Books 103"_s);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// The page asked for past the end of a list may still be on its way when
// the update ends: its transfer is stopped, not waited for.
TEST_F(RunTest, AtTheEndOfTheRunAPageStillOnItsWayIsStopped) {
    m_fetchAhead = true;
    m_holdAhead = ListUrl(6);
    // The empty page that ends the list comes once the page after it is on
    // its way, so that the run ends with that page under way.
    m_heldUntilHolding = ListUrl(4);
    EXPECT_EQ(Activate({u"Current Auctions eBay"_s}), UpdateRun::Result::Complete);
    EXPECT_EQ(Count(u"SELECT COUNT(*) FROM Auctions"_s), 3);
    // Held for ten seconds unless stopped: a run that waited for it would
    // have let it end on its own.
    EXPECT_TRUE(m_holding);
    EXPECT_TRUE(m_aheadStopped);
}

// ------------------------------------------------------------ run lists

TEST_F(RunTest, ActivationReadsRunProtDat) {
    ASSERT_TRUE(WriteRunList(RunList(UpdateCommand::SyncTime, m_rules)));
    EXPECT_EQ(ReadRunList(), QStringList{u"Current Time eBay"_s});
    UpdateRun run(*m_db, m_view, Hooks(), m_rules);
    EXPECT_EQ(run.Activate(), UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, QStringList{u"http://site/time"_s});
}

TEST(RunLists, CommandsAndTheRuleSectionUpdate) {
    RuleStore rules;
    rules.SetText(kSiteStore, QString::fromUtf8(kRules).replace(u'\n', u"\r\n"_s) + u"\r\n\r\n"_s);
    EXPECT_EQ(RunList(UpdateCommand::UpdateAuctionDatabase, rules),
              (QStringList{u"Current Time eBay"_s, u"Current Auctions Other Site"_s}));
    EXPECT_EQ(RunList(UpdateCommand::FirstRetrieval, rules),
              (QStringList{u"Current Time eBay"_s, u"Current Auctions Other Site"_s,
                           u"Account History eBay"_s}));
    EXPECT_EQ(RunList(UpdateCommand::UpdateBids, rules),
              (QStringList{u"Current Bids eBay"_s, u"Bid Details eBay"_s, u"Current Time eBay"_s}));
    EXPECT_EQ(RunList(UpdateCommand::UpdateDatabaseAndAccount, rules).last(),
              u"Account History eBay"_s);
    EXPECT_EQ(RunList(UpdateCommand::UpdateComplete, rules).last(), u"Account Information eBay"_s);
    EXPECT_EQ(RunList(UpdateCommand::AfterPosting, rules),
              RunList(UpdateCommand::UpdateAuctions, rules));
    EXPECT_TRUE(RunList(UpdateCommand::UpdateAuctionDatabase, RuleStore()).isEmpty());
}

TEST(RunLists, TheFileKeepsLinesInOrderWhateverTheLineEnds) {
    TempRoot root;
    const QString path = root.File(u"RunProt.dat"_s);
    const QStringList lines{u"Current Time eBay"_s, u"Watching Items eBay"_s};
    ASSERT_TRUE(WriteRunList(path, lines));
    EXPECT_EQ(ReadRunList(path), lines);
    root.Write(u"RunProt.dat"_s, "One eBay\nTwo eBay\r\n\r\nThree eBay");
    EXPECT_EQ(ReadRunList(path), (QStringList{u"One eBay"_s, u"Two eBay"_s, u"Three eBay"_s}));
    EXPECT_TRUE(ReadRunList(root.File(u"missing.dat"_s)).isEmpty());
    QString error;
    EXPECT_FALSE(WriteRunList(root.File(u"no/such/dir/RunProt.dat"_s), lines, &error));
    EXPECT_TRUE(error.contains(u"no/such/dir"_s)) << error.toStdString();
}
