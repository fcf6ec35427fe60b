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

// A site time an hour behind the local clock, as the site writes it.
QString SiteClock() {
    return QLocale::c().toString(QDateTime::currentDateTime().addSecs(-3600),
                                 QStringLiteral("dddd, MMMM dd, yyyy hh:mm:ss")) +
           QStringLiteral(" PDT");
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
        lw::core::SetCurrentUser(QStringLiteral("seller1"));
        m_db.emplace(
            lw::core::OpenOrCreateStore(m_root.File(QStringLiteral("Lotwright.db")), SourceDir()));
        m_db->Exec(QStringLiteral(
            "INSERT INTO Users (UserName, isDefault) VALUES ('seller1', 1);"
            "INSERT INTO UserSites (UserName, AuctionSiteFlag, UserID) VALUES ('seller1', 0, "
            "'s1')"));
        EditRules({}, {});
        m_view.ui = &m_ui;
        m_view.release = &m_holdReleased;

        m_pages[QStringLiteral("http://site/selling?pass=good&skip=0")] =
            lw::test::ListPage({{"101", "First"}, {"102", "Second"}});
        m_pages[QStringLiteral("http://site/selling?pass=good&skip=2")] =
            lw::test::ListPage({{"103", "Third"}});
        m_pages[QStringLiteral("http://site/selling?pass=good&skip=4")] = lw::test::ListPage({});
        m_pages[QStringLiteral("http://site/bidding")] = lw::test::ListPage({{"201", "A bid"}});
        m_pages[QStringLiteral("http://site/time")] =
            QByteArray("<!-- CLOCK -->The time is: ") + SiteClock().toUtf8() +
            "<!-- /CLOCK --><!-- ITEMS --><td class=n>101<!-- /ITEMS -->";
        m_pages[QStringLiteral("http://site/item?no=101")] =
            "<!-- ITEM --><td class=cat>Toys<!-- /ITEM -->";
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
        m_rules.SetText(kSiteStore,
                        text.replace(u'\n', QStringLiteral("\r\n")) + QStringLiteral("\r\n\r\n"));
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
            built.replace(QStringLiteral("[PASSWORD]"), m_password);
            built.replace(QStringLiteral("[SKIP]"), QString::number(offset));
            for (qsizetype i = 0; i < fields.size() && i < values.size(); ++i) {
                built.replace(QStringLiteral("[") + fields[i] + QStringLiteral("]"), values[i]);
            }
            return built;
        };
        hooks.refreshPassword = [this] {
            ++m_refreshes;
            m_password = m_refreshTo;
            return m_refreshWorks;
        };
        hooks.prepareUsageReport = [this] { ++m_reports; };
        hooks.repairNulls = [this] { ++m_repairs; };
        hooks.redraw = [this] { ++m_redraws; };
        hooks.now = [] { return QDateTime(QDate(2026, 5, 23), QTime(14, 5, 9)); };
        if (m_fetchAhead) {
            // Every page over the run's connections, served from the same
            // maps, which are not changed while a run is under way.
            hooks.connections = m_connections;
            hooks.fetchAhead = [this]() -> AheadFetch {
                return [this](const QString& url, QByteArray& page, const std::atomic<bool>& stop) {
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
                    for (int i = 0; i < 10000 && held() && !stop; ++i) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(1));
                    }
                    if (stop) {
                        m_aheadStopped = true;
                        return FetchResult::Cancelled;
                    }
                    return Serve(url, page);
                };
            };
        }
        return hooks;
    }

    // The fake site's answer to url.
    FetchResult Serve(const QString& url, QByteArray& page) const {
        if (m_everyPage && url.contains(QStringLiteral("selling"))) {
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

    UpdateRun::Result Activate(const QStringList& list) { return Activate(*m_db, list); }
    UpdateRun::Result Activate(Database& db, const QStringList& list) {
        UpdateRun run(db, m_view, Hooks(), m_rules);
        const UpdateRun::Result result = run.Activate(list);
        m_failedProtocols = run.FailedProtocols();
        return result;
    }

    // Item pages for 102 and 103 ("Books 102", "Books 103"); 101's is Toys.
    void AddBookPages() {
        for (const char* number : {"102", "103"}) {
            m_pages[QStringLiteral("http://site/item?no=") + QLatin1String(number)] =
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
        return s.Step() ? s.Text(0) : QStringLiteral("<no row>");
    }

    // What must hold after every update, whatever happened in it.
    void ExpectEndOfRun(int updates = 1) {
        EXPECT_EQ(
            Text(QStringLiteral("SELECT LastUpdate FROM UserSites WHERE UserName='seller1' AND "
                                "AuctionSiteFlag=0")),
            QStringLiteral("05/23/26 14:05:09 PST"));
        EXPECT_EQ(Count(QStringLiteral("SELECT Updates FROM Tracking")), updates);
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
    QString m_password = QStringLiteral("good");
    QString m_refreshTo = QStringLiteral("good");
    bool m_refreshWorks = true;
    bool m_checkPasses = true;
    int m_checks = 0;
    int m_refreshes = 0;
    int m_reports = 0;
    int m_repairs = 0;
    int m_redraws = 0;
};

}  // namespace

// ------------------------------------------------------------ a whole update

TEST_F(RunTest, PagesAreFetchedScannedAndWrittenWithTheWindowsWords) {
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, (QStringList{QStringLiteral("http://site/selling?pass=good&skip=0"),
                                      QStringLiteral("http://site/selling?pass=good&skip=2"),
                                      QStringLiteral("http://site/selling?pass=good&skip=4"),
                                      QStringLiteral("http://site/time")}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE UserName='seller1'")), 3);
    EXPECT_EQ(Text(QStringLiteral("SELECT ItemTitle FROM Auctions WHERE ItemNumber='103'")),
              QStringLiteral("Third"));
    EXPECT_EQ(
        m_view.statuses,
        (QStringList{QStringLiteral("Preparing update"), QStringLiteral("Preparing Update."),
                     QStringLiteral("Fetching My Sales"), QStringLiteral("Processing My Sales"),
                     QStringLiteral("Processing My Sales"), QStringLiteral("Processing My Sales"),
                     QStringLiteral("Fetching Site Time"), QStringLiteral("Processing Site Time"),
                     QStringLiteral("Update complete.")}));
    EXPECT_EQ(m_view.connects.first(), QStringLiteral("My Sales retrieved successfully."));
    EXPECT_EQ(m_view.urls.last(), QStringLiteral("http://site/time"));
    // Step Int(100 / 4) = 25: once on a protocol's first page, once at its end.
    EXPECT_EQ(m_view.progress, (QList<int>{0, 25, 50, 75, 100}));
    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'|').toStdString();
    EXPECT_EQ(m_checks, 1);
    EXPECT_EQ(m_reports, 1);
    // update.txt holds the last page of a main protocol.
    QFile last(UpdateRun::UpdatePagePath());
    ASSERT_TRUE(last.open(QIODevice::ReadOnly));
    EXPECT_EQ(last.readAll(), m_pages[QStringLiteral("http://site/time")]);
    EXPECT_TRUE(m_failedProtocols.isEmpty());
    ExpectEndOfRun();
}

TEST_F(RunTest, ANewSiteTimeSetsTheCorrectionInTableAndSession) {
    Activate({QStringLiteral("Current Time eBay")});
    const double correction =
        lw::core::Val(Text(QStringLiteral("SELECT eBayCorrection FROM Global")));
    EXPECT_NEAR(correction, 3600, 5);
    EXPECT_NEAR(lw::core::Val(CurrentSession().SiteCorrection), 3600, 5);
}

TEST_F(RunTest, ProgressStepsAreTheWholePartAndNeverPassAHundred) {
    EXPECT_EQ(UpdateRun::ProgressStep(3), 16);
    EXPECT_EQ(UpdateRun::ProgressStep(1), 50);
    EXPECT_EQ(UpdateRun::ProgressStep(0), 0);
    Activate({QStringLiteral("Current Auctions eBay")});
    EXPECT_EQ(m_view.progress, (QList<int>{0, 50, 100}));
}

// update.txt holds the last list page of the run as it came, whatever stood
// there before, and nothing once the last list page could not be fetched.
TEST_F(RunTest, UpdateTxtHoldsTheLastListPageWhenTheRunEnds) {
    const QString path = UpdateRun::UpdatePagePath();
    {
        QFile earlier(path);
        ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
        earlier.write("a page of an earlier run");
    }
    Activate({QStringLiteral("Current Auctions eBay")});
    EXPECT_EQ(lw::test::ReadAll(path),
              m_pages[QStringLiteral("http://site/selling?pass=good&skip=4")]);

    m_results[QStringLiteral("http://site/selling?pass=good&skip=2")] = FetchResult::Failed;
    Activate({QStringLiteral("Current Auctions eBay")});
    EXPECT_FALSE(QFile::exists(path));
}

// ------------------------------------------------------------ failures

TEST_F(RunTest, AConnectionFailureAbortsTheRestAndTheEndStepsStillRun) {
    m_results[QStringLiteral("http://site/selling?pass=good&skip=0")] = FetchResult::Failed;
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Aborted);
    EXPECT_EQ(m_fetched.size(), 1);
    EXPECT_EQ(m_ui.Messages(),
              QStringList{QStringLiteral(
                  "Retrieval of My Sales from eBay failed.  There is a connection problem or eBay "
                  "is experiencing technical difficulties.  Update aborted.")});
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Connection Error")});
    EXPECT_EQ(m_view.connects.last(), QStringLiteral("Current Auctions eBay connection error."));
    EXPECT_FALSE(m_view.statuses.contains(QStringLiteral("Update complete.")));
    ExpectEndOfRun();
}

// Read ahead while My Sales is written, the site time fails: the failure
// is told when the run gets to it, after every sale is in.
TEST_F(RunTest, AFailedPageOfTheNextProtocolIsToldInItsTurn) {
    m_fetchAhead = true;
    m_results[QStringLiteral("http://site/time")] = FetchResult::Failed;
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Aborted);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 3);
    EXPECT_EQ(FetchedAhead().count(QStringLiteral("http://site/time")), 1);
    EXPECT_EQ(m_ui.Messages(),
              QStringList{QStringLiteral(
                  "Retrieval of Site Time from eBay failed.  There is a connection problem or "
                  "eBay is experiencing technical difficulties.  Update aborted.")});
    EXPECT_EQ(m_view.connects.last(), QStringLiteral("Current Time eBay connection error."));
    ExpectEndOfRun();
}

TEST_F(RunTest, AMissingMarkerRefreshesThePasswordOnceAndRetries) {
    m_password = QStringLiteral("stale");
    m_pages[QStringLiteral("http://site/selling?pass=stale&skip=0")] = "<html>Sign in</html>";
    Activate({QStringLiteral("Current Auctions eBay")});
    EXPECT_EQ(m_refreshes, 1);
    EXPECT_TRUE(m_view.statuses.contains(QStringLiteral("Updating Configuration")));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 3);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

TEST_F(RunTest, AfterTheOneRefreshAProtocolWithoutMarkersIsPassedOver) {
    m_password = QStringLiteral("stale");
    m_refreshTo = QStringLiteral("stale");
    m_pages[QStringLiteral("http://site/selling?pass=stale&skip=0")] = "<html>Sign in</html>";
    m_pages[QStringLiteral("http://site/bidding")] = "<html>also changed</html>";
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Bids eBay"),
                  QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    // One refresh for the whole update, not one per protocol.
    EXPECT_EQ(m_refreshes, 1);
    // "Current Bids eBay" fails without a word; the rest goes on.
    EXPECT_EQ(m_ui.Messages(),
              QStringList{QStringLiteral(
                  "My Sales could not be processed.  Continuing with remainder of update.")});
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("My Sales")});
    EXPECT_TRUE(m_view.connects.contains(QStringLiteral("My Sales update unsuccessful.")));
    EXPECT_FALSE(m_view.connects.contains(QStringLiteral("My Bids update unsuccessful.")));
    EXPECT_EQ(Text(QStringLiteral("SELECT eBayTime FROM Global")).right(3), QStringLiteral("PDT"));
    EXPECT_TRUE(m_view.statuses.contains(QStringLiteral("Update complete.")));
    // Steps of 16: a protocol that failed adds one, one that ran adds two.
    EXPECT_EQ(m_view.progress, (QList<int>{0, 16, 32, 48, 64}));
    // The command line's exit code counts the failures told.
    EXPECT_EQ(m_failedProtocols, QStringList{QStringLiteral("Current Auctions eBay")});
    // update.txt holds the last main page fetched, whether it was read or not.
    QFile kept(UpdateRun::UpdatePagePath());
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), m_pages[QStringLiteral("http://site/time")]);
}

TEST_F(RunTest, ARefusedQueryStringIsToldByProtocolAndTheRestGoesOn) {
    m_pages[QStringLiteral("http://site/account")] = lw::test::ListPage({{"1", "x"}});
    Activate({QStringLiteral("Account Information eBay"), QStringLiteral("Current Time eBay")});
    ASSERT_EQ(m_ui.Messages().size(), 2);
    EXPECT_TRUE(m_ui.Messages()[0].contains(QStringLiteral("\"Account Information eBay\"")));
    EXPECT_EQ(m_ui.Messages()[1], QStringLiteral("Account could not be processed.  Continuing "
                                                 "with remainder of update."));
    EXPECT_NE(Text(QStringLiteral("SELECT eBayTime FROM Global")), QString());
}

TEST_F(RunTest, AFailedAncillaryQueryEndsThatAncillaryQuietly) {
    EditRules(QStringLiteral("QueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\nItems=1\n"
                             "Item1=ItemCategory"),
              QStringLiteral("QueryString=DELETE FROM Auctions\nItems=1\nItem1=ItemCategory"));
    EXPECT_EQ(Activate({QStringLiteral("Auction Details eBay")}), UpdateRun::Result::Complete);
    EXPECT_TRUE(m_ui.Messages().isEmpty()) << m_ui.Messages().join(u'|').toStdString();
    EXPECT_TRUE(m_failedProtocols.isEmpty());
    // The main record is written; the item page's part is not.
    EXPECT_EQ(Text(QStringLiteral("SELECT IFNULL(ItemCategory, 'none') FROM Auctions WHERE "
                                  "ItemNumber='101'")),
              QStringLiteral("none"));
    EXPECT_EQ(m_view.statuses.last(), QStringLiteral("Update complete."));
}

TEST_F(RunTest, AProtocolWhoseItemsIsNoCountIsRefusedBeforeItsFirstPage) {
    for (const char* items : {"Items=0\n", "Items=-3\n", "Items=all\n", ""}) {
        SCOPED_TRACE(items);
        EditRules(QStringLiteral("Iterate=True\nIterateSkip=2\nGStart=<!-- BEGIN -->\n"
                                 "Gend=<!-- END -->\nQueryString=SELECT * FROM Auctions WHERE "
                                 "ItemNumber='[1]'\nItems=2\n"),
                  QStringLiteral("Iterate=True\nIterateSkip=2\nGStart=<!-- BEGIN -->\n"
                                 "Gend=<!-- END -->\nQueryString=SELECT * FROM Auctions WHERE "
                                 "ItemNumber='[1]'\n") +
                      QString::fromUtf8(items));
        m_fetched.clear();
        const qsizetype told = m_ui.Messages().size();
        const auto result = Activate(
            {QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
        EXPECT_EQ(result, UpdateRun::Result::Complete);
        EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/time")});
        ASSERT_EQ(m_ui.Messages().size(), told + 1);
        EXPECT_TRUE(m_ui.Messages().last().startsWith(
            QStringLiteral("The protocol \"Current Auctions eBay\" cannot run: its key Items ")))
            << m_ui.Messages().last().toStdString();
        EXPECT_EQ(m_ui.Titles().last(), QStringLiteral("Protocol Error"));
        EXPECT_EQ(m_failedProtocols, QStringList{QStringLiteral("Current Auctions eBay")});
        EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 0);
    }
}

TEST_F(RunTest, AReadOnlyDatabaseStopsTheRunBeforeAnyPage) {
    Database readOnly = Database::Open(m_db->Path(), Database::Mode::ReadOnly);
    EXPECT_EQ(Activate(readOnly, {QStringLiteral("Current Time eBay")}),
              UpdateRun::Result::StoreFailed);
    EXPECT_TRUE(m_fetched.isEmpty());
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_TRUE(m_ui.Messages()[0].startsWith(QStringLiteral("The database ") + m_db->Path() +
                                              QStringLiteral(" could not be written")))
        << m_ui.Messages()[0].toStdString();
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Update Stopped")});
    EXPECT_FALSE(m_view.statuses.contains(QStringLiteral("Update complete.")));
}

TEST_F(RunTest, AFullDiskStopsTheRunAtThePageItHappensOn) {
    // No page may be added to the file: a title that needs one cannot be
    // stored.
    m_db->Exec(QStringLiteral("PRAGMA max_page_count = %1")
                   .arg(m_db->ScalarInt(QStringLiteral("PRAGMA page_count"))));
    const QByteArray title(20000, 'x');
    m_pages[QStringLiteral("http://site/selling?pass=good&skip=0")] =
        lw::test::ListPage({{"101", title.constData()}});
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::StoreFailed);
    EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/selling?pass=good&skip=0")});
    ASSERT_EQ(m_ui.Messages().size(), 1) << m_ui.Messages().join(u'|').toStdString();
    EXPECT_TRUE(m_ui.Messages()[0].contains(m_db->Path())) << m_ui.Messages()[0].toStdString();
    EXPECT_FALSE(m_view.statuses.contains(QStringLiteral("Update complete.")));
}

TEST_F(RunTest, AFailedRuleCheckFetchesNothingUnlessTheRulesWereCheckedBefore) {
    m_checkPasses = false;
    EXPECT_EQ(Activate({QStringLiteral("Current Time eBay")}), UpdateRun::Result::RulesFailed);
    EXPECT_TRUE(m_fetched.isEmpty());
    ExpectEndOfRun();

    CurrentSession().RulesChecked = true;
    EXPECT_EQ(Activate({QStringLiteral("Current Time eBay")}), UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/time")});
    ExpectEndOfRun(2);
}

// ------------------------------------------------------------ cancel

TEST_F(RunTest, CancelAfterARecordKeepsWhatWasWritten) {
    m_view.cancelOn = QStringLiteral("Processing My Sales");
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Cancelled);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 1);
    EXPECT_EQ(m_ui.Messages(),
              QStringList{QStringLiteral(
                  "Update cancelled.  Some Auction/Bid information may be incomplete.")});
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Update Cancelled")});
    EXPECT_FALSE(m_fetched.contains(QStringLiteral("http://site/time")));
    ExpectEndOfRun();
}

TEST_F(RunTest, ACancelledFetchEndsTheRunAndEarlierPagesStay) {
    m_results[QStringLiteral("http://site/selling?pass=good&skip=2")] = FetchResult::Cancelled;
    EXPECT_EQ(Activate({QStringLiteral("Current Auctions eBay")}), UpdateRun::Result::Cancelled);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 2);
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Update Cancelled")});
    ExpectEndOfRun();
}

// ------------------------------------------------------------ pages and addresses

TEST_F(RunTest, TwoProtocolsInARowWithOneAddressFetchOnce) {
    Activate({QStringLiteral("Current Bids eBay"), QStringLiteral("Bid Details eBay")});
    EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/bidding")});
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Bids")), 1);
    // The second protocol scanned the page in hand from its own top.
    EXPECT_EQ(m_view.statuses.count(QStringLiteral("Processing Bid Details")), 1);
}

TEST_F(RunTest, PagingWithAnAddressThatDoesNotChangeEnds) {
    // Iterate with a fixed skip: the second page would be the first again.
    Activate({QStringLiteral("Watching Items eBay")});
    EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/selling?pass=good&skip=0")});
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Bids")), 2);
}

TEST_F(RunTest, ARecordAPageEndsInsideIsDroppedAndTheNextPageStartsClean) {
    m_pages[QStringLiteral("http://site/selling?pass=good&skip=0")] =
        "<!-- BEGIN --><td class=n>101<td class=t>First<td class=n>102<!-- END -->";
    EXPECT_EQ(Activate({QStringLiteral("Current Auctions eBay")}), UpdateRun::Result::Complete);
    EXPECT_EQ(Text(QStringLiteral("SELECT group_concat(ItemNumber || '=' || ItemTitle, ' ') FROM "
                                  "(SELECT * FROM Auctions ORDER BY ItemNumber)")),
              QStringLiteral("101=First 103=Third"));
}

TEST_F(RunTest, ASiteThatAnswersEveryOffsetAlikeFailsTheProtocol) {
    m_everyPage = lw::test::ListPage({{"101", "First"}, {"102", "Second"}});
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, (QStringList{QStringLiteral("http://site/selling?pass=good&skip=0"),
                                      QStringLiteral("http://site/selling?pass=good&skip=2"),
                                      QStringLiteral("http://site/time")}));
    EXPECT_EQ(m_ui.Messages(),
              QStringList{QStringLiteral(
                  "My Sales could not be processed.  Continuing with remainder of update.")});
    EXPECT_EQ(m_failedProtocols, QStringList{QStringLiteral("Current Auctions eBay")});
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 2);
}

TEST_F(RunTest, APageWithNoRecordEndsThePaging) {
    m_pages[QStringLiteral("http://site/selling?pass=good&skip=0")] = lw::test::ListPage({});
    Activate({QStringLiteral("Current Auctions eBay")});
    EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/selling?pass=good&skip=0")});
}

TEST_F(RunTest, AncillaryPagesAreFetchedWithTheRecordsValuesAndWritten) {
    Activate({QStringLiteral("Auction Details eBay")});
    EXPECT_EQ(m_fetched, (QStringList{QStringLiteral("http://site/time"),
                                      QStringLiteral("http://site/item?no=101")}));
    EXPECT_EQ(Text(QStringLiteral("SELECT ItemCategory FROM Auctions WHERE ItemNumber='101'")),
              QStringLiteral("Toys"));
    EXPECT_TRUE(m_view.statuses.contains(QStringLiteral("Fetching Item Page")));
    // The caption comes back when the ancillary run ends.
    EXPECT_EQ(m_view.statuses.last(), QStringLiteral("Update complete."));
    EXPECT_EQ(m_view.statuses[m_view.statuses.size() - 2],
              QStringLiteral("Processing Sale Details"));
}

// ------------------------------------------------------------ pages fetched ahead

TEST_F(RunTest, OverTheRunsConnectionsEveryPageIsFetchedOnceAndTheRowsAreTheSame) {
    m_fetchAhead = true;
    m_pages[QStringLiteral("http://site/time")] =
        QByteArray("<!-- CLOCK -->The time is: ") + SiteClock().toUtf8() +
        "<!-- /CLOCK --><!-- ITEMS --><td class=n>101<td class=n>102<td class=n>103<!-- /ITEMS "
        "-->";
    AddBookPages();
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Auction Details eBay"),
                  QStringLiteral("Current Time eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    // Every page came over the connections, each once (over two, in either
    // order); a list with no pages of its own is asked for a page further
    // than the one read, so the page after the empty one may have come too,
    // unless the next protocol dropped it first; the site time shares its
    // address with the page before it.
    EXPECT_TRUE(m_fetched.isEmpty()) << m_fetched.join(u' ').toStdString();
    QStringList ahead = FetchedAhead();
    EXPECT_LE(ahead.removeAll(QStringLiteral("http://site/selling?pass=good&skip=6")), 1);
    ahead.sort();
    EXPECT_EQ(ahead, (QStringList{QStringLiteral("http://site/item?no=101"),
                                  QStringLiteral("http://site/item?no=102"),
                                  QStringLiteral("http://site/item?no=103"),
                                  QStringLiteral("http://site/selling?pass=good&skip=0"),
                                  QStringLiteral("http://site/selling?pass=good&skip=2"),
                                  QStringLiteral("http://site/selling?pass=good&skip=4"),
                                  QStringLiteral("http://site/time")}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 3);
    EXPECT_EQ(Text(QStringLiteral("SELECT ItemCategory FROM Auctions WHERE ItemNumber='101'")),
              QStringLiteral("Toys"));
    // Each record wrote its own item page, whichever came first.
    EXPECT_EQ(Text(QStringLiteral("SELECT ItemCategory FROM Auctions WHERE ItemNumber='102'")),
              QStringLiteral("Books 102"));
    EXPECT_EQ(Text(QStringLiteral("SELECT ItemCategory FROM Auctions WHERE ItemNumber='103'")),
              QStringLiteral("Books 103"));
    // Each page taken is told as a fetch is.
    const QStringList statuses = m_ui.Statuses();
    EXPECT_EQ(statuses.count(QStringLiteral("Connecting to Server")), 7);
    EXPECT_TRUE(
        statuses.contains(QStringLiteral("Transferring Page: %1 bytes")
                              .arg(m_pages[QStringLiteral("http://site/item?no=103")].size())))
        << statuses.join(u'|').toStdString();
    EXPECT_EQ(m_view.statuses.last(), QStringLiteral("Update complete."));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    ExpectEndOfRun();
}

TEST_F(RunTest, TheNextListPageIsAskedForBeforeTheItemPagesOfTheOneBeforeIt) {
    m_fetchAhead = true;
    m_connections = 1;
    AddBookPages();
    // The first item page waits until its record is being read, so that the
    // run has asked for everything it knows by then.
    m_holdAhead = QStringLiteral("http://site/item?no=101");
    m_view.releaseOn = QStringLiteral("Fetching Item Page");
    // One protocol per run: the protocol after the one under way is read
    // ahead as well, which would mix the two lists of the same addresses.
    EXPECT_EQ(Activate({QStringLiteral("Current Auctions eBay")}), UpdateRun::Result::Complete);
    const QString list = QStringLiteral("http://site/selling?pass=good&skip=");
    const QString item = QStringLiteral("http://site/item?no=");
    // The list pages alone, ahead of the one read. The page after the empty
    // one is asked for as well, but the run ends on the empty page and stops
    // it, so it may or may not have gone out.
    const QStringList lists = FetchedAhead();
    ASSERT_GE(lists.size(), 3) << lists.join(u' ').toStdString();
    EXPECT_EQ(lists.mid(0, 3), (QStringList{list + u'0', list + u'2', list + u'4'}));
    EXPECT_EQ(lists.mid(3), lists.size() == 3 ? QStringList{} : QStringList{list + u'6'});

    EXPECT_EQ(Activate({QStringLiteral("Paged Details eBay")}), UpdateRun::Result::Complete);
    const QStringList ahead = FetchedAhead().mid(lists.size());
    ASSERT_EQ(ahead.size(), 6) << ahead.join(u' ').toStdString();
    // With item pages, one ahead: the page after the first list page goes
    // before that page's second item page; the item page on it, and the page
    // after it, follow.
    EXPECT_EQ(ahead.mid(0, 4), (QStringList{list + u'0', item + QStringLiteral("101"), list + u'2',
                                            item + QStringLiteral("102")}));
    QStringList last = ahead.mid(4);
    last.sort();
    EXPECT_EQ(last, (QStringList{item + QStringLiteral("103"), list + u'4'}));
    EXPECT_TRUE(m_fetched.isEmpty());
    // Written in the order of the pages, each with its own item page.
    EXPECT_EQ(WrittenCategories(), QStringLiteral("101=Toys 102=Books 102 103=Books 103"));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// While a list is written, the connections already fetch the next
// protocol's pages: here the last page of My Sales is held until an item
// page that only the next protocol asks for is on its way.
TEST_F(RunTest, TheNextProtocolsPagesAreFetchedWhileTheOneBeforeIsWritten) {
    m_fetchAhead = true;
    AddBookPages();
    m_holdAhead = QStringLiteral("http://site/selling?pass=good&skip=4");
    m_releaseOnFetch = QStringLiteral("http://site/item?no=101");
    const auto result =
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Paged Details eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Complete);
    EXPECT_TRUE(m_holdReleased) << FetchedAhead().join(u' ').toStdString();
    const QStringList ahead = FetchedAhead();
    const qsizetype firstItem = ahead.indexOf(m_releaseOnFetch);
    EXPECT_GE(firstItem, 0);
    EXPECT_EQ(ahead.count(m_releaseOnFetch), 1);
    EXPECT_TRUE(m_fetched.isEmpty());
    // Written in the order of the protocols all the same.
    EXPECT_EQ(WrittenCategories(), QStringLiteral("101=Toys 102=Books 102 103=Books 103"));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// The page asked for past the end of a list may still be on its way when
// the update ends: its transfer is stopped, not waited for.
TEST_F(RunTest, AtTheEndOfTheRunAPageStillOnItsWayIsStopped) {
    m_fetchAhead = true;
    m_holdAhead = QStringLiteral("http://site/selling?pass=good&skip=6");
    // The empty page that ends the list comes once the page after it is on
    // its way, so that the run ends with that page under way.
    m_heldUntilHolding = QStringLiteral("http://site/selling?pass=good&skip=4");
    EXPECT_EQ(Activate({QStringLiteral("Current Auctions eBay")}), UpdateRun::Result::Complete);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 3);
    // Held for ten seconds unless stopped: a run that waited for it would
    // have let it end on its own.
    EXPECT_TRUE(m_holding);
    EXPECT_TRUE(m_aheadStopped);
}

// The run's own guards, with every page over the connections: the one
// password refresh starts the protocol afresh with the new address, a site
// that answers every offset alike fails the protocol, and paging whose
// address does not change ends.
TEST_F(RunTest, TheRunsGuardsHoldOverTheRunsConnections) {
    m_fetchAhead = true;
    m_password = QStringLiteral("stale");
    m_pages[QStringLiteral("http://site/selling?pass=stale&skip=0")] = "<html>Sign in</html>";
    AddBookPages();
    // The protocol after the first is read ahead with the stale password
    // too; after the refresh both go with the new one.
    EXPECT_EQ(
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Paged Details eBay")}),
        UpdateRun::Result::Complete);
    EXPECT_EQ(m_refreshes, 1);
    EXPECT_EQ(WrittenCategories(), QStringLiteral("101=Toys 102=Books 102 103=Books 103"));
    EXPECT_TRUE(m_ui.Messages().isEmpty());

    m_db->Exec(QStringLiteral("DELETE FROM Auctions"));
    m_everyPage = lw::test::ListPage({{"101", "First"}, {"102", "Second"}});
    EXPECT_EQ(
        Activate({QStringLiteral("Current Auctions eBay"), QStringLiteral("Current Time eBay")}),
        UpdateRun::Result::Complete);
    EXPECT_EQ(m_failedProtocols, QStringList{QStringLiteral("Current Auctions eBay")});
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 2);

    m_everyPage.reset();
    const qsizetype before = FetchedAhead().size();
    EXPECT_EQ(Activate({QStringLiteral("Watching Items eBay")}), UpdateRun::Result::Complete);
    EXPECT_EQ(FetchedAhead().mid(before),
              QStringList{QStringLiteral("http://site/selling?pass=good&skip=0")});
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Bids")), 2);
    EXPECT_TRUE(m_fetched.isEmpty());
}

TEST_F(RunTest, ACancelWhileAPageFetchedAheadIsAwaitedStopsItsTransfer) {
    m_fetchAhead = true;
    m_holdAhead = QStringLiteral("http://site/item?no=101");
    m_view.cancelOn = QStringLiteral("Fetching Item Page");
    m_view.holdOn = &m_holding;
    const auto result = Activate({QStringLiteral("Auction Details eBay")});
    EXPECT_EQ(result, UpdateRun::Result::Cancelled);
    EXPECT_TRUE(m_aheadStopped);
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Update Cancelled")});
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemCategory IS NOT NULL")),
              0);
    ExpectEndOfRun();
}

// ------------------------------------------------------------ run lists

TEST_F(RunTest, ActivationReadsRunProtDat) {
    ASSERT_TRUE(WriteRunList(RunList(UpdateCommand::SyncTime, m_rules)));
    EXPECT_EQ(ReadRunList(), QStringList{QStringLiteral("Current Time eBay")});
    UpdateRun run(*m_db, m_view, Hooks(), m_rules);
    EXPECT_EQ(run.Activate(), UpdateRun::Result::Complete);
    EXPECT_EQ(m_fetched, QStringList{QStringLiteral("http://site/time")});
}

TEST(RunLists, CommandsAndTheRuleSectionUpdate) {
    RuleStore rules;
    rules.SetText(kSiteStore, QString::fromUtf8(kRules).replace(u'\n', QStringLiteral("\r\n")) +
                                  QStringLiteral("\r\n\r\n"));
    EXPECT_EQ(RunList(UpdateCommand::UpdateAuctionDatabase, rules),
              (QStringList{QStringLiteral("Current Time eBay"),
                           QStringLiteral("Current Auctions Other Site")}));
    EXPECT_EQ(RunList(UpdateCommand::FirstRetrieval, rules),
              (QStringList{QStringLiteral("Current Time eBay"),
                           QStringLiteral("Current Auctions Other Site"),
                           QStringLiteral("Account History eBay")}));
    EXPECT_EQ(RunList(UpdateCommand::UpdateBids, rules),
              (QStringList{QStringLiteral("Current Bids eBay"), QStringLiteral("Bid Details eBay"),
                           QStringLiteral("Current Time eBay")}));
    EXPECT_EQ(RunList(UpdateCommand::UpdateDatabaseAndAccount, rules).last(),
              QStringLiteral("Account History eBay"));
    EXPECT_EQ(RunList(UpdateCommand::UpdateComplete, rules).last(),
              QStringLiteral("Account Information eBay"));
    EXPECT_EQ(RunList(UpdateCommand::AfterPosting, rules),
              RunList(UpdateCommand::UpdateAuctions, rules));
    EXPECT_TRUE(RunList(UpdateCommand::UpdateAuctionDatabase, RuleStore()).isEmpty());
}

TEST(RunLists, TheFileKeepsLinesInOrderWhateverTheLineEnds) {
    TempRoot root;
    const QString path = root.File(QStringLiteral("RunProt.dat"));
    const QStringList lines{QStringLiteral("Current Time eBay"),
                            QStringLiteral("Watching Items eBay")};
    ASSERT_TRUE(WriteRunList(path, lines));
    EXPECT_EQ(ReadRunList(path), lines);
    root.Write(QStringLiteral("RunProt.dat"), "One eBay\nTwo eBay\r\n\r\nThree eBay");
    EXPECT_EQ(ReadRunList(path),
              (QStringList{QStringLiteral("One eBay"), QStringLiteral("Two eBay"),
                           QStringLiteral("Three eBay")}));
    EXPECT_TRUE(ReadRunList(root.File(QStringLiteral("missing.dat"))).isEmpty());
    QString error;
    EXPECT_FALSE(WriteRunList(root.File(QStringLiteral("no/such/dir/RunProt.dat")), lines, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("no/such/dir"))) << error.toStdString();
}
