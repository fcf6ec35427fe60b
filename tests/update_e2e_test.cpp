// SPDX-License-Identifier: GPL-3.0-or-later
// Real updates against a real lotwright-site on a free loopback port: the
// shipped rules pointed at it, the user made and the rules installed by
// lotwright-cli, the update run by `lotwright-cli update` or in this process
// by UpdateRun with the default hooks. What arrived is compared with the
// site's own pages, read here with a plain parser of their rows, never with
// figures copied from a run. The suite runs once over one connection and once
// over eight (LW_TEST_CONNECTIONS, written to the setting of each root).
#include <gtest/gtest.h>
#include <signal.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QSysInfo>
#include <QThread>
#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/text.h"
#include "tests/support/loopback_server.h"
#include "tests/support/site_pages.h"
#include "tests/support/site_process.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "update/scanner.h"
#include "update/update_connections.h"
#include "update/update_lock.h"
#include "update/update_run.h"
#include "views/analysis.h"
#include "views/listings.h"

using lw::core::Database;
using lw::test::BinDir;
using lw::test::ScriptedUi;
using lw::test::SiteProcess;
using lw::test::SourceDir;
using lw::test::TempRoot;

namespace {

constexpr const char* kCgi = "/aw-cgi/eBayISAPI.dll";

using lw::test::Decoded;
using lw::test::ParseRows;
using lw::test::Row;
using lw::test::Rows;
using lw::test::Trimmed;

// "11/03/26 04:12:30 PST" as the writer stores an end date.
std::string StoredEndDate(const std::string& pageDate) {
    std::string stored = pageDate;
    const size_t blank = stored.find(' ');
    return blank == std::string::npos ? stored : stored.replace(blank, 1, ", ");
}

// What the site shows the demo seller, read the way a browser would.
struct SiteTruth {
    Rows selling, bidding, ledger;
    std::map<std::string, Row> items;     // item page cells by item number
    std::map<std::string, Rows> winners;  // winner rows of lots with several winners
    std::string clock;
};

using CliRun = lw::test::ProgramRun;

class UpdateE2e : public ::testing::Test {
protected:
    void TearDown() override { lw::core::ResetSession(); }

    // Starts the site with the given options and makes the demo user whose
    // rules point at it. rulesEdit may change the installed site.pro.
    void StartSite(QStringList args, const std::function<QByteArray(QByteArray)>& rulesEdit = {}) {
        // A stopped clock an hour behind ours: every page is the same for the
        // whole test, and the site time always differs from the local one
        // (a site time equal to ours reads as one that could not be read).
        args << QStringLiteral("--clock-factor") << QStringLiteral("0") << QStringLiteral("--start")
             << QString::number(QDateTime::currentSecsSinceEpoch() - 3600);
        m_site = std::make_unique<SiteProcess>(args, m_root.File(QStringLiteral("site.log")));
        ASSERT_TRUE(m_site->Ok()) << m_site->Error();
        for (const char* name : {"site.pro", "info.pro"}) {
            QByteArray text =
                lw::test::ReadAll(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name));
            text.replace("http://127.0.0.1:8750", m_site->Base().toUtf8());
            if (rulesEdit && QLatin1String(name) == QLatin1String("site.pro")) {
                text = rulesEdit(text);
            }
            m_root.Write(QStringLiteral("rules/") + QLatin1String(name), text);
        }
        const CliRun init =
            Cli({QStringLiteral("init"), QStringLiteral("--user"), QStringLiteral("Demo"),
                 QStringLiteral("--site-id"), QStringLiteral("demo_seller"),
                 QStringLiteral("--password"), QStringLiteral("demo")});
        ASSERT_EQ(init.code, 0) << init.err.toStdString();
        const CliRun install = Cli({QStringLiteral("rules"), QStringLiteral("install"),
                                    m_root.File(QStringLiteral("rules/site.pro")),
                                    m_root.File(QStringLiteral("rules/info.pro"))});
        ASSERT_EQ(install.code, 0) << install.err.toStdString();
        // The connections of every update of this root, the command line's
        // and this process's alike.
        if (const char* connections = std::getenv("LW_TEST_CONNECTIONS")) {
            lw::core::SetSettingsFolder(Home() + QStringLiteral("/Configs/Settings"));
            lw::update::SaveConnectionsSetting(QByteArray(connections).toInt());
            lw::core::SetSettingsFolder({});
        }
    }

    QString Home() const { return m_root.File(QStringLiteral("home")); }

    CliRun Cli(const QStringList& args) {
        return lw::test::RunProgram(BinDir() + QStringLiteral("/lotwright-cli"),
                                    QStringList{QStringLiteral("--root"), Home()} + args);
    }

    // The site logs a request after answering it: the log is read once it
    // has stopped growing.
    QStringList SettledLog() {
        QStringList log = m_site->LogLines();
        for (int i = 0; i < 40; ++i) {
            QThread::msleep(50);
            QStringList again = m_site->LogLines();
            if (again.size() == log.size()) {
                break;
            }
            log = std::move(again);
        }
        return log;
    }

    CliRun Update(const QString& command) { return Cli({QStringLiteral("update"), command}); }

    // Opens the user's database in this process with the session the
    // command line would set up, the rule store installed from it.
    Database OpenHere() {
        lw::core::ResetSession(&m_ui);
        lw::core::SetSettingsFolder(Home() + QStringLiteral("/Configs/Settings"));
        QString error;
        EXPECT_TRUE(lw::core::SetupDirectories(Home(), &error)) << error.toStdString();
        Database db = Database::Open(Home() + QStringLiteral("/Data/Lotwright.db"));
        EXPECT_EQ(lw::core::ChooseUser(db, nullptr), lw::core::UserChoice::Chosen);
        EXPECT_TRUE(lw::update::InstallRuleStore(lw::update::Rules(), db));
        return db;
    }

    Database Db() { return Database::Open(Home() + QStringLiteral("/Data/Lotwright.db")); }

    std::vector<std::map<std::string, std::string>> Select(const QString& sql) {
        Database db = Db();
        lw::core::Statement statement = db.Prepare(sql);
        std::vector<std::map<std::string, std::string>> rows;
        while (statement.Step()) {
            std::map<std::string, std::string> row;
            for (int i = 0; i < statement.ColumnCount(); ++i) {
                row[statement.ColumnName(i).toStdString()] = statement.Text(i).toStdString();
            }
            rows.push_back(row);
        }
        return rows;
    }

    size_t Count(const QString& table) {
        return static_cast<size_t>(
            std::stoul(Select(QStringLiteral("SELECT COUNT(*) AS n FROM ") + table)[0]["n"]));
    }

    std::string LastUpdate() {
        return Select(
            QStringLiteral("SELECT IFNULL(LastUpdate, 'null') AS l FROM UserSites"))[0]["l"];
    }

    std::string Token() {
        const auto answer = m_site->Post(
            kCgi, "MfcISAPICommand=MyEbay&first=Y&userid=demo_seller&pass=demo&dayssince=1");
        const size_t at = answer.body.find("&pass=");
        if (at == std::string::npos) {
            return {};
        }
        const size_t end = answer.body.find('&', at + 6);
        return answer.body.substr(at + 6, end - at - 7);
    }

    Rows List(const std::string& command, const std::string& marker, int pageSize = 50) {
        const std::string token = Token();
        Rows rows;
        for (int skip = 0;; skip += pageSize) {
            const std::string page =
                m_site
                    ->Get(std::string(kCgi) + "?" + command + "&userid=demo_seller&pass=" + token +
                          "&days=30&skip=" + std::to_string(skip))
                    .body;
            const Rows part =
                ParseRows(page, "<!-- BEGIN " + marker + " -->", "<!-- END " + marker + " -->");
            if (part.empty()) {
                return rows;
            }
            rows.insert(rows.end(), part.begin(), part.end());
        }
    }

    SiteTruth Truth(int pageSize = 50) {
        SiteTruth truth;
        truth.selling = List("MyEbaySelling", "SELLING", pageSize);
        truth.bidding = List("MyEbayBidding", "BIDDING", pageSize);
        truth.ledger = List("MyEbayAccount", "LEDGER", pageSize);
        for (const Rows* list : {&truth.selling, &truth.bidding}) {
            for (const Row& row : *list) {
                const std::string item = row.at("item");
                const std::string page =
                    m_site->Get(std::string(kCgi) + "?ViewItem&item=" + item).body;
                const Rows cells = ParseRows(page, "<!-- BEGIN ITEM -->", "<!-- END ITEM -->");
                Row merged;
                for (const Row& cell : cells) {
                    merged.insert(cell.begin(), cell.end());
                }
                truth.items[item] = merged;
                if (row.at("bidder") == "Dutch Auction") {
                    truth.winners[item] =
                        ParseRows(page, "<!-- BEGIN WINNERS -->", "<!-- END WINNERS -->");
                }
            }
        }
        const std::string clock = m_site->Get(std::string(kCgi) + "?TimeShow").body;
        const std::string lead = "The official time is: ";
        const size_t at = clock.find(lead);
        if (at != std::string::npos) {
            truth.clock = clock.substr(at + lead.size(), clock.find('<', at) - at - lead.size());
        }
        return truth;
    }

    // Every sale and bid the site lists is one row holding the page's values;
    // every winner of a lot with several winners is one row; nothing else.
    void ExpectSalesAndBidsMatch(const SiteTruth& truth) {
        ASSERT_FALSE(truth.selling.empty());
        ASSERT_FALSE(truth.bidding.empty());
        std::map<std::string, std::map<std::string, std::string>> sales;
        for (auto& row : Select(QStringLiteral("SELECT * FROM Auctions"))) {
            EXPECT_EQ(row["UserName"], "Demo");
            EXPECT_TRUE(sales.emplace(row["ItemNumber"], row).second)
                << "item " << row["ItemNumber"] << " twice in Auctions";
        }
        EXPECT_EQ(sales.size(), truth.selling.size());
        for (const Row& page : truth.selling) {
            SCOPED_TRACE("sale " + page.at("item"));
            ASSERT_TRUE(sales.count(page.at("item")));
            auto& row = sales[page.at("item")];
            const Row& item = truth.items.at(page.at("item"));
            EXPECT_EQ(row["ItemTitle"], page.at("title"));
            EXPECT_EQ(row["HighBidderName"], page.at("bidder"));
            EXPECT_EQ(row["MinimumBid"], page.at("start"));
            EXPECT_EQ(row["HighBid"], page.at("price"));
            EXPECT_EQ(row["ReserveBid"], page.at("reserve"));
            EXPECT_EQ(row["Quantity"], page.at("qty"));
            EXPECT_EQ(row["NumberBids"], page.at("bids") == "0" ? "-" : page.at("bids"));
            EXPECT_EQ(row["EndDate"],
                      StoredEndDate(page.count("ends") ? page.at("ends") : page.at("ended")));
            EXPECT_EQ(row["ItemCategory"], item.at("cat"));
            EXPECT_EQ(row["StartDate"], item.at("started").substr(0, 8));
            EXPECT_EQ(row["HighBidderFeedback"], item.at("hfb"));
        }

        std::map<std::string, std::map<std::string, std::string>> bids;
        for (auto& row : Select(QStringLiteral("SELECT * FROM Bids"))) {
            EXPECT_TRUE(bids.emplace(row["ItemNumber"], row).second)
                << "item " << row["ItemNumber"] << " twice in Bids";
        }
        EXPECT_EQ(bids.size(), truth.bidding.size());
        for (const Row& page : truth.bidding) {
            SCOPED_TRACE("bid " + page.at("item"));
            ASSERT_TRUE(bids.count(page.at("item")));
            auto& row = bids[page.at("item")];
            const Row& item = truth.items.at(page.at("item"));
            EXPECT_EQ(row["ItemTitle"], page.at("title"));
            EXPECT_EQ(row["HighBidderName"], page.at("bidder"));
            EXPECT_EQ(row["SellerName"], page.at("seller"));
            EXPECT_EQ(row["HighBid"], page.at("price"));
            EXPECT_EQ(row["WinningBid"], page.at("mybid"));
            EXPECT_EQ(row["MaximumBid"], page.at("mymax"));
            EXPECT_EQ(row["Winning"], page.at("status") == "high bidder" ? "1" : "0");
            EXPECT_EQ(row["EndDate"],
                      StoredEndDate(page.count("ends") ? page.at("ends") : page.at("ended")));
            EXPECT_EQ(row["ItemCategory"], item.at("cat"));
            EXPECT_EQ(row["SellerFeedback"], item.at("sfb"));
        }

        for (const auto& [table, list] : {std::pair{QStringLiteral("Dutch"), &truth.selling},
                                          std::pair{QStringLiteral("DutchBids"), &truth.bidding}}) {
            std::set<std::vector<std::string>> expected;
            for (const Row& page : *list) {
                const auto lot = truth.winners.find(page.at("item"));
                if (lot == truth.winners.end()) {
                    continue;
                }
                for (const Row& winner : lot->second) {
                    expected.insert({page.at("item"), winner.at("winner"), winner.at("wfb"),
                                     winner.at("wqty"), winner.at("wprice")});
                }
            }
            std::set<std::vector<std::string>> stored;
            size_t rows = 0;
            for (auto& row : Select(QStringLiteral("SELECT * FROM ") + table)) {
                stored.insert({row["ItemNumber"], row["HighBidderName"], row["HighBidderFeedback"],
                               row["Quantity"], row["HighBid"]});
                ++rows;
            }
            EXPECT_FALSE(expected.empty()) << table.toStdString();
            EXPECT_EQ(stored, expected) << table.toStdString();
            EXPECT_EQ(rows, expected.size()) << table.toStdString() << " holds doubles";
        }
    }

    void ExpectLedgerMatches(const SiteTruth& truth) {
        std::set<std::vector<std::string>> expected;
        for (const Row& page : truth.ledger) {
            expected.insert({page.at("date"), page.at("item"), Trimmed(page.at("desc")),
                             page.at("debit"), page.at("credit"), page.at("sold")});
        }
        std::set<std::vector<std::string>> stored;
        size_t rows = 0;
        for (auto& row : Select(QStringLiteral(
                 "SELECT * FROM AccountInfo WHERE AccountType <> 'Current balance'"))) {
            EXPECT_EQ(row["Date"], row["AccountDate"]);
            stored.insert({row["AccountDate"], row["ItemNumber"], row["AccountType"], row["Debit"],
                           row["Credit"], row["SoldPrice"]});
            ++rows;
        }
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(stored, expected);
        EXPECT_EQ(rows, expected.size()) << "AccountInfo holds doubles";
    }

    TempRoot m_root;
    std::unique_ptr<SiteProcess> m_site;
    ScriptedUi m_ui;
};

QStringList Seed(int users) {
    return {QStringLiteral("--seed"), QString::number(users)};
}

// A ScriptedUi that presses Cancel a given number of events after a status.
class CancellingUi : public ScriptedUi {
public:
    CancellingUi(QString status, int pumps) : m_status(std::move(status)), m_left(pumps) {}
    void Status(const QString& text) override {
        ScriptedUi::Status(text);
        m_armed = m_armed || text == m_status;
    }
    void PumpEvents() override {
        ScriptedUi::PumpEvents();
        if (m_armed && --m_left == 0) {
            RequestCancel();
        }
    }

private:
    QString m_status;
    int m_left;
    bool m_armed = false;
};

// A ScriptedUi whose user presses Cancel while the run waits for a page,
// the given number of waits after a status.
class CancelWhileWaitingUi : public ScriptedUi {
public:
    CancelWhileWaitingUi(QString status, int waits) : m_status(std::move(status)), m_left(waits) {}
    void Status(const QString& text) override {
        ScriptedUi::Status(text);
        m_armed = m_armed || text == m_status;
    }
    void WaitFor(lw::core::Wakeup& wakeup) override {
        if (m_armed && --m_left == 0) {
            RequestCancel();
            return;
        }
        ScriptedUi::WaitFor(wakeup);
    }

private:
    QString m_status;
    int m_left;
    bool m_armed = false;
};

// A server that takes requests and answers none until it is let go (or
// stopped), and tells when the first request has come.
class SilentSite {
public:
    SilentSite() {
        m_server.Routes().Get("/never", [this](const httplib::Request&, httplib::Response& res) {
            std::unique_lock lock(m_mutex);
            m_asked = true;
            m_changed.notify_all();
            for (int i = 0; i < 1200 && !m_released && !m_server.Stopping(); ++i) {
                m_changed.wait_for(lock, std::chrono::milliseconds(100));
            }
            res.set_content("<html>late</html>", "text/html");
        });
        m_server.Start();
    }
    ~SilentSite() { Release(); }
    SilentSite(const SilentSite&) = delete;
    SilentSite& operator=(const SilentSite&) = delete;

    QString Url() const { return m_server.Url("/never"); }
    bool WaitForRequest() {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(60), [this] { return m_asked; });
    }
    void Release() {
        {
            const std::lock_guard lock(m_mutex);
            m_released = true;
        }
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_asked = false;
    bool m_released = false;
    lw::test::LoopbackServer m_server;
};

// The port of the connection a line of the site's log came over.
QString LoggedPort(const QString& line) {
    return line.section(u' ', -1);
}

}  // namespace

TEST_F(UpdateE2e, FirstRetrievalFillsEveryTableWithWhatTheSiteHolds) {
    StartSite(Seed(6));
    const CliRun run = Update(QStringLiteral("first"));
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("Processing My Sales")));
    EXPECT_TRUE(run.err.contains(QStringLiteral("Progress: ")));
    // Without a terminal each status is a line once per percentage, however
    // many pages the step fetches: the log of a run stays a log.
    QString lastPercent;
    QSet<QString> seen;
    static const QRegularExpression figures(QStringLiteral("[0-9]+"));
    for (const QString& line : run.err.split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(QStringLiteral("Progress: "))) {
            seen.clear();
            continue;
        }
        QString key = line;
        key.replace(figures, QStringLiteral("#"));
        EXPECT_FALSE(seen.contains(key))
            << "written twice at one percentage: " << line.toStdString();
        seen.insert(key);
    }
    const SiteTruth truth = Truth();
    ExpectSalesAndBidsMatch(truth);
    ExpectLedgerMatches(truth);
    const auto global = Select(QStringLiteral("SELECT * FROM Global"));
    ASSERT_EQ(global.size(), 1u);
    EXPECT_FALSE(truth.clock.empty());
    EXPECT_EQ(global[0].at("eBayTime"), truth.clock);
    EXPECT_NE(LastUpdate(), "null");
    EXPECT_EQ(Select(QStringLiteral("SELECT Updates FROM Tracking"))[0]["Updates"], "1");
}

// The shipped rules write a bid's status as the words True and False: a bid
// the user lost is lost to every reader, the saved queries of the task
// list, the bids list and its colours, and the analysis figures.
TEST_F(UpdateE2e, ALostBidIsLostInEverySavedQueryListAndFigure) {
    StartSite(Seed(6));
    ASSERT_EQ(Update(QStringLiteral("first")).code, 0);
    const SiteTruth truth = Truth();
    QSet<QString> won;
    QSet<QString> lost;
    QSet<QString> lostAlone;  // lost, and no lot with several winners
    for (const Row& page : truth.bidding) {
        const QString item = QString::fromStdString(page.at("item"));
        (page.at("status") == "high bidder" ? won : lost).insert(item);
        if (page.at("status") != "high bidder" && page.at("bidder") != "Dutch Auction") {
            lostAlone.insert(item);
        }
    }
    ASSERT_FALSE(won.isEmpty());
    ASSERT_FALSE(lost.isEmpty());

    Database db = OpenHere();
    auto items = [&db](const QString& sql) {
        QSet<QString> found;
        lw::core::Statement s = db.Prepare(sql);
        while (s.Step()) {
            found.insert(s.Text(0));
        }
        return found;
    };
    const QSet<QString> ended = items(
        QStringLiteral("SELECT ItemNumber FROM Bids WHERE EndDay < date('now', 'localtime')"));
    ASSERT_TRUE(ended.intersects(lost)) << "no lost bid has ended";
    for (const char* view : {"Completed Bids", "All Bids with Pending Tasks"}) {
        const QSet<QString> shown = items(QStringLiteral("SELECT ItemNumber FROM \"") +
                                          QLatin1String(view) + QStringLiteral("\""));
        EXPECT_FALSE(shown.intersects(lost)) << view;
        EXPECT_TRUE(shown.intersects(won) || !ended.intersects(won)) << view;
    }

    // The bids list: lost bids are red and never among the successful ones.
    for (const auto group : {lw::views::Group::Current, lw::views::Group::Archived}) {
        lw::views::BidsListing all;
        all.ShowGroup(db, group);
        for (const lw::views::ListingRow& row : all.Model().Rows()) {
            if (lostAlone.contains(row.item)) {
                EXPECT_EQ(row.colour, lw::views::CellColour::Red) << row.item.toStdString();
            } else if (won.contains(row.item)) {
                EXPECT_EQ(row.colour, lw::views::CellColour::Green) << row.item.toStdString();
            }
        }
        lw::views::BidsListing successful;
        successful.SetSuccessfulOnly(true);
        successful.ShowGroup(db, group);
        for (const lw::views::ListingRow& row : successful.Model().Rows()) {
            EXPECT_FALSE(lostAlone.contains(row.item)) << row.item.toStdString();
        }
    }

    // The analysis counts the ended bids the site shows as won.
    lw::views::AnalysisPage page = lw::views::AnalysisLabels();
    lw::views::AnalysisBidData(db, page);
    const qsizetype endedWon = (ended & won).size();
    EXPECT_EQ(page.bids[lw::views::kSuccessfulBids].value, QString::number(endedWon));
}

// After the first retrieval the Task Manager of `lotwright-cli tasks` holds
// the ended sales that found a buyer (each winner of a multi-winner lot as a
// row of its own, after the plain rows) and the ended bids the user won, and
// none that runs, went unsold or was lost; each row has every task of its side.
TEST_F(UpdateE2e, TheTaskListHoldsTheEndedSalesAndTheWonBidsAfterTheFirstRetrieval) {
    StartSite(Seed(6));
    ASSERT_EQ(Update(QStringLiteral("first")).code, 0);
    const SiteTruth truth = Truth();
    auto title = [](const Row& page) { return QString::fromStdString(page.at("title")); };
    auto item = [](const Row& page) { return QString::fromStdString(page.at("item")); };
    QStringList plainSales;
    QStringList dutchSales;
    for (const Row& page : truth.selling) {
        const std::string& bidder = page.at("bidder");
        if (page.at("left") != "Ended" || page.at("bids") == "0") {
            continue;
        }
        if (bidder == "Dutch Auction") {
            for (const Row& winner : truth.winners.at(page.at("item"))) {
                dutchSales << QStringLiteral("D") + item(page) + QStringLiteral(": ") +
                                  title(page) + QStringLiteral(" (") +
                                  QString::fromStdString(winner.at("winner")) + u')';
            }
        } else if (lw::core::NumberRule(QString::fromStdString(page.at("price"))) >=
                   lw::core::NumberRule(QString::fromStdString(page.at("reserve")))) {
            plainSales << item(page) + QStringLiteral(": ") + title(page);
        }
    }
    QStringList wonBids;
    QSet<QString> lostBids;
    for (const Row& page : truth.bidding) {
        const QString row = item(page) + QStringLiteral(": ") + title(page);
        if (page.at("status") != "high bidder") {
            lostBids.insert(row);
        } else if (page.at("left") == "Ended") {
            wonBids << row;
        }
    }
    ASSERT_FALSE(plainSales.isEmpty());
    ASSERT_FALSE(dutchSales.isEmpty());
    ASSERT_FALSE(wonBids.isEmpty());
    ASSERT_FALSE(lostBids.isEmpty());

    struct Side {
        QStringList args;
        QStringList codes;
    };
    const Side sides[] = {
        {{}, {"SUMN", "PRA", "CON", "PRI", "PAY", "SHP", "SHS", "SHE", "SHR", "FBL", "RFB", "FBR"}},
        {{QStringLiteral("--bids")},
         {"SUMN", "PRA", "CRP", "PSI", "PRP", "PRS", "IRR", "IRE", "FBL", "RFS", "FBR"}},
    };
    for (const Side& side : sides) {
        const CliRun run = Cli(QStringList{QStringLiteral("tasks")} + side.args);
        ASSERT_EQ(run.code, 0) << run.err.toStdString();
        QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
        ASSERT_FALSE(lines.isEmpty());
        const QString head = lines.takeFirst();
        QStringList rows;
        QStringList codes;
        for (const QString& line : lines) {
            if (!line.startsWith(QStringLiteral("    "))) {
                if (!rows.isEmpty()) {
                    EXPECT_EQ(codes, side.codes) << rows.last().toStdString();
                }
                rows << line;
                codes.clear();
                continue;
            }
            const QStringList words = line.simplified().split(u' ');
            codes << words.value(0);
            EXPECT_TRUE(words.value(1) == u"done" || words.value(1) == u"pending")
                << line.toStdString();
        }
        EXPECT_EQ(codes, side.codes) << rows.last().toStdString();
        EXPECT_TRUE(head.endsWith(QStringLiteral(" (%1)").arg(rows.size()))) << head.toStdString();
        if (side.args.isEmpty()) {
            EXPECT_EQ(head.left(head.lastIndexOf(u' ')),
                      QStringLiteral("All Auctions with Pending Tasks"));
            const QStringList plain = rows.mid(0, plainSales.size());
            EXPECT_EQ(QSet<QString>(plain.cbegin(), plain.cend()),
                      QSet<QString>(plainSales.cbegin(), plainSales.cend()));
            const QStringList dutch = rows.mid(plainSales.size());
            EXPECT_EQ(QSet<QString>(dutch.cbegin(), dutch.cend()),
                      QSet<QString>(dutchSales.cbegin(), dutchSales.cend()))
                << "the winners follow the plain rows";
        } else {
            EXPECT_EQ(QSet<QString>(rows.cbegin(), rows.cend()),
                      QSet<QString>(wonBids.cbegin(), wonBids.cend()));
            EXPECT_FALSE(QSet<QString>(rows.cbegin(), rows.cend()).intersects(lostBids));
        }
    }

    const CliRun unknown = Cli(
        {QStringLiteral("tasks"), QStringLiteral("--filter"), QStringLiteral("Bids Not Yet Paid")});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_TRUE(unknown.err.contains(
        QStringLiteral("no task filter \"Bids Not Yet Paid\" on the sales side")))
        << unknown.err.toStdString();
}

TEST_F(UpdateE2e, ASecondUpdateUpdatesTheRowsAndNeverDoublesThem) {
    StartSite(Seed(6));
    ASSERT_EQ(Update(QStringLiteral("first")).code, 0);
    const size_t sales = Count(QStringLiteral("Auctions"));
    const size_t bids = Count(QStringLiteral("Bids"));

    // A running sale takes a new high bid and another ends now; the site
    // books the ending's fee in the ledger.
    const SiteTruth before = Truth();
    std::vector<std::string> running;
    for (const Row& row : before.selling) {
        if (row.at("left") != "Ended" && row.at("qty") == "1") {
            running.push_back(row.at("item"));
        }
    }
    ASSERT_GE(running.size(), 2u);
    EXPECT_NE(m_site->Admin("bid", "item=" + running[0] + "&bidder=kestrel_coins&amount=900.00")
                  .find("\"ok\":true"),
              std::string::npos);
    EXPECT_NE(m_site->Admin("end", "item=" + running[1]).find("\"ok\":true"), std::string::npos);

    const CliRun again = Update(QStringLiteral("complete"));
    ASSERT_EQ(again.code, 0) << again.err.toStdString();
    const CliRun ledger = Cli({QStringLiteral("update"), QStringLiteral("--list"),
                               QStringLiteral("Account History eBay")});
    ASSERT_EQ(ledger.code, 0) << ledger.err.toStdString();
    EXPECT_EQ(Count(QStringLiteral("Auctions")), sales);
    EXPECT_EQ(Count(QStringLiteral("Bids")), bids);
    const SiteTruth after = Truth();
    ExpectSalesAndBidsMatch(after);
    ExpectLedgerMatches(after);
    const auto bidRow =
        Select(QStringLiteral("SELECT HighBidderName FROM Auctions WHERE ItemNumber = '%1'")
                   .arg(QString::fromStdString(running[0])));
    ASSERT_EQ(bidRow.size(), 1u);
    EXPECT_EQ(bidRow[0].at("HighBidderName"), "kestrel_coins");
    // The balance of the complete update sits beside the history, once.
    EXPECT_EQ(Count(QStringLiteral("AccountInfo WHERE AccountType = 'Current balance'")), 1u);
}

TEST_F(UpdateE2e, PagingStopsAfterTheLastPage) {
    constexpr int kPage = 4;
    StartSite(Seed(6) << QStringLiteral("--page-size") << QString::number(kPage),
              [](QByteArray text) { return text.replace("IterateSkip=50", "IterateSkip=4"); });
    const CliRun run = Cli({QStringLiteral("update"), QStringLiteral("--list"),
                            QStringLiteral("Current Auctions eBay")});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QStringList log = SettledLog();
    const Rows selling = List("MyEbaySelling", "SELLING", kPage);
    ASSERT_GT(selling.size(), static_cast<size_t>(2 * kPage));
    EXPECT_EQ(Count(QStringLiteral("Auctions")), selling.size());

    // The pages asked for: each offset once, up to the first one past the
    // records, which is the empty page that ends the paging; the list is
    // read a page ahead, so the page after that one may have been asked for
    // too, and no other.
    std::vector<int> skips;
    static const QRegularExpression kSkip(QStringLiteral("MyEbaySelling.*&skip=(\\d+) "));
    for (const QString& line : log) {
        const auto match = kSkip.match(line);
        if (match.hasMatch() && line.startsWith(QLatin1String("GET"))) {
            skips.push_back(match.captured(1).toInt());
        }
    }
    std::vector<int> expected;
    for (int skip = 0;; skip += kPage) {
        expected.push_back(skip);
        if (skip >= static_cast<int>(selling.size())) {
            break;
        }
    }
    // The site logs each answer once it is sent, and two list pages may be
    // on their way over two connections: the log's order is not the asking's.
    std::sort(skips.begin(), skips.end());
    if (skips.size() == expected.size() + 1) {
        expected.push_back(expected.back() + kPage);
    }
    EXPECT_EQ(skips, expected) << log.join(u'\n').toStdString();
}

TEST_F(UpdateE2e, ACancelKeepsEveryRecordWrittenBeforeIt) {
    StartSite(Seed(6));
    Database db = OpenHere();
    const qint64 sync = db.ScalarInt(QStringLiteral("PRAGMA synchronous"));
    CancellingUi ui(QStringLiteral("Processing My Sales"), 25);
    lw::core::CurrentSession().ui = &ui;
    lw::update::UiUpdateView view;
    lw::update::UpdateRun run(db, view, lw::update::DefaultUpdateHooks(db));
    const auto result = run.Activate(
        lw::update::RunList(lw::update::UpdateCommand::FirstRetrieval, lw::update::Rules()));
    EXPECT_EQ(result, lw::update::UpdateRun::Result::Cancelled);
    EXPECT_EQ(ui.Messages(),
              QStringList{QStringLiteral(
                  "Update cancelled.  Some Auction/Bid information may be incomplete.")});
    EXPECT_EQ(ui.Titles(), QStringList{QStringLiteral("Update Cancelled")});
    // The run's page commits skip the disk flush; the store's own setting is
    // back once the run is over.
    EXPECT_EQ(db.ScalarInt(QStringLiteral("PRAGMA synchronous")), sync);

    // The rows written are the first records of the list, each whole.
    const Rows selling = List("MyEbaySelling", "SELLING");
    const auto rows = Select(QStringLiteral("SELECT * FROM Auctions ORDER BY rowid"));
    ASSERT_GE(rows.size(), 2u);
    ASSERT_LT(rows.size(), selling.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].at("ItemNumber"), selling[i].at("item"));
        EXPECT_EQ(rows[i].at("ItemTitle"), selling[i].at("title"));
        EXPECT_EQ(rows[i].at("EndDate"),
                  StoredEndDate(selling[i].count("ends") ? selling[i].at("ends")
                                                         : selling[i].at("ended")));
    }
    EXPECT_EQ(Count(QStringLiteral("Bids")), 0u) << "the protocols after the cancel never ran";
    EXPECT_NE(LastUpdate(), "null");
}

// Ctrl-C is sent once the run says it starts the sale details (their pages
// are fetched ahead while the sales list is written); the sales list before
// them is whole, and with 1,500 item pages to go the run is far from its end.
TEST_F(UpdateE2e, CtrlCOnTheCommandLineCancelsAtTheNextRecord) {
    StartSite(Seed(6) << QStringLiteral("--sales") << QStringLiteral("1500"));
    QProcess process;
    process.start(
        BinDir() + QStringLiteral("/lotwright-cli"),
        {QStringLiteral("--root"), Home(), QStringLiteral("update"), QStringLiteral("first")});
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForStarted());
    QByteArray err;
    while (process.state() == QProcess::Running && !err.contains("Fetching Sale Details")) {
        process.waitForReadyRead(10);
        err += process.readAllStandardError();
    }
    ASSERT_EQ(process.state(), QProcess::Running) << err.toStdString();
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(60000));
    err += process.readAllStandardError();
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(err.contains(
        "Update Cancelled: Update cancelled.  Some Auction/Bid information may be incomplete."))
        << err.right(3000).toStdString();
    EXPECT_EQ(Count(QStringLiteral("Auctions")), List("MyEbaySelling", "SELLING").size());
    EXPECT_EQ(Count(QStringLiteral("Bids")), 0u);
    EXPECT_NE(LastUpdate(), "null");
}

TEST_F(UpdateE2e, ASiteThatIsDownGivesTheConnectionErrorAndLastUpdateStillMoves) {
    StartSite(Seed(5));
    {
        // The rules are checked once per run of the program; this process
        // checks them here, so the next update goes straight to the pages.
        Database db = OpenHere();
        lw::update::UiUpdateView view;
        lw::update::UpdateRun first(db, view, lw::update::DefaultUpdateHooks(db));
        ASSERT_EQ(first.Activate({QStringLiteral("Current Time eBay")}),
                  lw::update::UpdateRun::Result::Complete);
        ASSERT_TRUE(lw::core::CurrentSession().RulesChecked);

        db.Exec(QStringLiteral("UPDATE UserSites SET LastUpdate = '01/01/20 10:00:00 PST'"));
        m_site->Admin("down", "on=1");
        lw::update::UpdateRun down(db, view, lw::update::DefaultUpdateHooks(db));
        EXPECT_EQ(down.Activate({QStringLiteral("Current Auctions eBay"),
                                 QStringLiteral("Current Bids eBay")}),
                  lw::update::UpdateRun::Result::Aborted);
        EXPECT_EQ(m_ui.Messages(),
                  QStringList{QStringLiteral(
                      "Retrieval of My Sales from eBay failed.  There is a connection problem or "
                      "eBay is experiencing technical difficulties.  Update aborted.")});
        EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Connection Error")});
        EXPECT_TRUE(
            m_ui.Statuses().contains(QStringLiteral("Current Auctions eBay connection error.")));
    }
    EXPECT_NE(LastUpdate(), "01/01/20 10:00:00 PST");
    EXPECT_EQ(Count(QStringLiteral("Auctions")), 0u);

    // With nothing listening at all, the command stops before the update.
    m_site->Stop();
    const std::string kept = LastUpdate();
    const CliRun offline = Update(QStringLiteral("sales"));
    EXPECT_EQ(offline.code, 1);
    EXPECT_TRUE(offline.err.contains(
        QStringLiteral("No ISP Connection: You need to be connected to your Internet Service "
                       "Provider to update your auction database.  Please connect and then try "
                       "again.")))
        << offline.err.toStdString();
    EXPECT_EQ(LastUpdate(), kept);
}

TEST_F(UpdateE2e, AChangedPageGetsOnePasswordRefreshThenIsPassedOver) {
    StartSite(Seed(5));
    ASSERT_EQ(Update(QStringLiteral("sales")).code, 0);
    const size_t sales = Count(QStringLiteral("Auctions"));
    const int logStart = static_cast<int>(SettledLog().size());

    m_site->Admin("break", "count=10&page=selling");
    const CliRun run =
        Cli({QStringLiteral("update"), QStringLiteral("--list"),
             QStringLiteral("Current Auctions eBay"), QStringLiteral("Auction Details eBay"),
             QStringLiteral("Account Information eBay")});
    // The run went to its end; the exit code tells that protocols failed.
    EXPECT_EQ(run.code, 4) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(
        QStringLiteral("these protocols could not be processed: Current Auctions eBay, Auction "
                       "Details eBay.")))
        << run.err.toStdString();
    EXPECT_FALSE(run.out.contains(QStringLiteral("Update complete.")));
    EXPECT_EQ(run.err.count(QStringLiteral("Updating Configuration")), 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral(
        "My Sales: My Sales could not be processed.  Continuing with remainder of update.")))
        << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral(
        "Sale Details: Sale Details could not be processed.  Continuing with remainder of "
        "update.")))
        << run.err.toStdString();
    // The rest of the list went on.
    EXPECT_EQ(Count(QStringLiteral("AccountInfo WHERE AccountType = 'Current balance'")), 1u);
    EXPECT_EQ(Count(QStringLiteral("Auctions")), sales);

    int signIns = 0;
    const QStringList log = SettledLog();
    for (int i = logStart; i < log.size(); ++i) {
        signIns += log[i].startsWith(QLatin1String("POST /aw-cgi/eBayISAPI.dll")) ? 1 : 0;
    }
    EXPECT_EQ(signIns, 1) << "the password is refreshed once per update";
}

TEST_F(UpdateE2e, OneUpdateAtATimePerRootWaitingWhenAskedAndALeftLockIsTakenOver) {
    StartSite(Seed(3));
    const QString lockPath = lw::update::UpdateLock::PathIn(Home() + QStringLiteral("/Data"));
    {
        // An update of this root under way in this process.
        lw::update::UpdateLock running(Home() + QStringLiteral("/Data"));
        ASSERT_TRUE(running.TryLock());
        const QString busy = QStringLiteral("An update is already running (process %1).")
                                 .arg(QCoreApplication::applicationPid());
        const CliRun refused = Cli({QStringLiteral("update"), QStringLiteral("time")});
        EXPECT_EQ(refused.code, 1);
        EXPECT_TRUE(refused.err.contains(busy)) << refused.err.toStdString();
        EXPECT_EQ(LastUpdate(), "null") << "nothing of the second update ran";

        // With --wait the second one runs once the first has ended.
        QProcess waiting;
        waiting.start(BinDir() + QStringLiteral("/lotwright-cli"),
                      {QStringLiteral("--root"), Home(), QStringLiteral("update"),
                       QStringLiteral("time"), QStringLiteral("--wait")});
        waiting.closeWriteChannel();
        ASSERT_TRUE(waiting.waitForStarted());
        QByteArray err;
        while (waiting.state() == QProcess::Running && !err.contains("Waiting")) {
            waiting.waitForReadyRead(100);
            err += waiting.readAllStandardError();
        }
        ASSERT_EQ(waiting.state(), QProcess::Running) << err.toStdString();
        EXPECT_TRUE(err.contains(busy.toUtf8())) << err.toStdString();
        EXPECT_EQ(LastUpdate(), "null");
        running.Unlock();
        ASSERT_TRUE(waiting.waitForFinished(120000));
        EXPECT_EQ(waiting.exitCode(), 0) << waiting.readAllStandardError().toStdString();
        EXPECT_NE(LastUpdate(), "null");
    }
    EXPECT_FALSE(QFile::exists(lockPath)) << "an update gives its lock back";

    // The lock of an update whose process was killed.
    QProcess gone;
    gone.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo $$")});
    ASSERT_TRUE(gone.waitForFinished());
    const QByteArray pid = gone.readAllStandardOutput().trimmed();
    QFile left(lockPath);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.write(pid + "\nlotwright-cli\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    left.close();
    const CliRun after = Cli({QStringLiteral("update"), QStringLiteral("time")});
    EXPECT_EQ(after.code, 0) << after.err.toStdString();
    EXPECT_FALSE(QFile::exists(lockPath));
}

TEST_F(UpdateE2e, AFailedVersionCheckFetchesNoPage) {
    StartSite(Seed(5));
    m_site->Admin("down", "on=1");
    const int logStart = static_cast<int>(SettledLog().size());
    const CliRun run = Update(QStringLiteral("complete"));
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(
        run.err.contains(QStringLiteral("Network Error: Network error.  Update cancelled.")))
        << run.err.toStdString();
    const QStringList log = SettledLog();
    ASSERT_GT(log.size(), logStart);
    for (int i = logStart; i < log.size(); ++i) {
        EXPECT_FALSE(log[i].contains(QLatin1String("eBayISAPI.dll"))) << log[i].toStdString();
    }
    EXPECT_TRUE(log.last().startsWith(QLatin1String("GET /rules/version")));
    EXPECT_EQ(Count(QStringLiteral("Auctions")), 0u);
    EXPECT_NE(LastUpdate(), "null");
}

TEST_F(UpdateE2e, ANewerRuleVersionIsInstalledAndUsedInTheSameRun) {
    // The site serves rules of version 2 whose sales list has a new caption.
    TempRoot served;
    for (const char* name : {"site.pro", "info.pro", "seller.pro", "category.pro"}) {
        QByteArray text =
            lw::test::ReadAll(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name));
        if (QLatin1String(name) == QLatin1String("site.pro")) {
            text.replace("Current Protocol=1", "Current Protocol=2");
            text.replace("RunCaption=My Sales\r\n", "RunCaption=My Sales of version 2\r\n");
            text.replace("RunCaption=My Sales\n", "RunCaption=My Sales of version 2\n");
        }
        served.Write(QLatin1String(name), text);
    }
    StartSite(Seed(5) << QStringLiteral("--rules") << served.Path());
    const CliRun run = Update(QStringLiteral("sales"));
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("Updating engine.")));
    EXPECT_TRUE(run.err.contains(QStringLiteral("Fetching My Sales of version 2")))
        << run.err.toStdString();
    EXPECT_GT(Count(QStringLiteral("Auctions")), 0u);
    const CliRun version = Cli({QStringLiteral("rules"), QStringLiteral("get"),
                                QStringLiteral("Protocols"), QStringLiteral("Current Protocol")});
    EXPECT_EQ(version.out.trimmed(), QStringLiteral("2"));
    // The downloaded file points at the site that served it.
    const CliRun check = Cli({QStringLiteral("rules"), QStringLiteral("get"),
                              QStringLiteral("Protocols"), QStringLiteral("ProtocolCheckUrl")});
    EXPECT_EQ(check.out.trimmed(), m_site->Base() + QStringLiteral("/rules/version"));
}

// The site sends an apostrophe, a double quote and an ampersand as
// entities; the scanner turns them back into the characters. Letters of
// other scripts come as UTF-8 and stay as they are.
TEST_F(UpdateE2e, TitlesWithQuotesEntitiesAndOtherScriptsArriveIntact) {
    StartSite(Seed(6));
    const SiteTruth truth = Truth();
    ASSERT_FALSE(truth.bidding.empty());
    const std::string saleTitle =
        "O'Brien's \"Best\" Fish & Chips \xE2\x80\x94 Cr\xC3\xA8me br\xC3\xBBl\xC3\xA9"
        "e, \xC3\x86r\xC3\xB8sk\xC3\xB8"
        "bing, \xC5\x81\xC3\xB3\x64\xC5\xBA, \xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";
    const std::string bidTitle = "It's a \"lot\" of \xCE\xB1\xCE\xB2\xCE\xB3 & more";
    const std::string sale = truth.selling.front().at("item");
    const std::string bid = truth.bidding.front().at("item");
    m_site->Admin("title", "item=" + sale + "&title=" + SiteProcess::Encode(saleTitle));
    m_site->Admin("title", "item=" + bid + "&title=" + SiteProcess::Encode(bidTitle));

    ASSERT_EQ(Update(QStringLiteral("first")).code, 0);
    const auto saleRow =
        Select(QStringLiteral("SELECT ItemTitle FROM Auctions WHERE ItemNumber = '%1'")
                   .arg(QString::fromStdString(sale)));
    ASSERT_EQ(saleRow.size(), 1u);
    EXPECT_EQ(saleRow[0].at("ItemTitle"), saleTitle);
    const auto bidRow = Select(QStringLiteral("SELECT ItemTitle FROM Bids WHERE ItemNumber = '%1'")
                                   .arg(QString::fromStdString(bid)));
    ASSERT_EQ(bidRow.size(), 1u);
    EXPECT_EQ(bidRow[0].at("ItemTitle"), bidTitle);
    ExpectSalesAndBidsMatch(Truth());
}

TEST_F(UpdateE2e, AHostileValueChangesNothingButItsOwnField) {
    StartSite(Seed(6));
    const SiteTruth truth = Truth();
    ASSERT_GE(truth.selling.size(), 3u);
    const std::string drop = "'; DROP TABLE Auctions; --";
    const std::string quotes = "Robert\"); DELETE FROM Bids WHERE ('1'='1";
    std::string huge;
    while (huge.size() < (1u << 20)) {
        huge += "A long title with a quote ' and \xC3\xA9 and 0123456789; ";
    }
    huge.resize(1u << 20);
    const std::string items[] = {truth.selling[0].at("item"), truth.selling[1].at("item"),
                                 truth.selling[2].at("item")};
    const std::string titles[] = {drop, quotes, huge};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(
            m_site->Admin("title", "item=" + items[i] + "&title=" + SiteProcess::Encode(titles[i]))
                .find("\"ok\":true"),
            std::string::npos);
    }

    const CliRun run = Update(QStringLiteral("first"));
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    for (int i = 0; i < 3; ++i) {
        const auto row =
            Select(QStringLiteral("SELECT ItemTitle FROM Auctions WHERE ItemNumber = '%1'")
                       .arg(QString::fromStdString(items[i])));
        ASSERT_EQ(row.size(), 1u);
        EXPECT_EQ(row[0].at("ItemTitle").size(), titles[i].size());
        EXPECT_TRUE(row[0].at("ItemTitle") == titles[i]) << "title of " << items[i];
    }
    // Every other field and every other row is what the site shows.
    ExpectSalesAndBidsMatch(Truth());
    ExpectLedgerMatches(truth);
}

TEST_F(UpdateE2e, UnknownCommandsAndProtocolsAreRefusedBeforeAnyPage) {
    StartSite(Seed(5));
    const int logStart = static_cast<int>(SettledLog().size());
    const CliRun word = Update(QStringLiteral("everything"));
    EXPECT_EQ(word.code, 2);
    EXPECT_TRUE(word.err.contains(QStringLiteral("everything"))) << word.err.toStdString();
    EXPECT_EQ(Cli({QStringLiteral("update")}).code, 2);
    EXPECT_EQ(Cli({QStringLiteral("update"), QStringLiteral("--list")}).code, 2);
    for (const char* connections : {"0", "9", "six"}) {
        const CliRun refused = Cli({QStringLiteral("update"), QStringLiteral("time"),
                                    QStringLiteral("--connections"), QLatin1String(connections)});
        EXPECT_EQ(refused.code, 2) << connections;
        EXPECT_TRUE(
            refused.err.contains(QStringLiteral("--connections takes a whole number from 1 to 8.")))
            << refused.err.toStdString();
    }
    const CliRun protocol =
        Cli({QStringLiteral("update"), QStringLiteral("--list"),
             QStringLiteral("Current Time eBay"), QStringLiteral("Current Lots eBay")});
    EXPECT_EQ(protocol.code, 3);
    EXPECT_TRUE(protocol.err.contains(QStringLiteral("[Current Lots eBay]")))
        << protocol.err.toStdString();
    EXPECT_EQ(SettledLog().size(), logStart) << "no page was asked for";
    EXPECT_FALSE(QFile::exists(Home() + QStringLiteral("/Configs/RunProt.dat")));
    EXPECT_EQ(LastUpdate(), "null");
}

// The full re-retrieval asks first (with no terminal to ask, its default
// Yes is taken and said) and then asks the site for 30 days whenever the
// last update was.
TEST_F(UpdateE2e, TheMaximumUpdateAsksAndThenAsksTheSiteForThirtyDays) {
    StartSite(Seed(5));
    ASSERT_EQ(Update(QStringLiteral("time")).code, 0);
    ASSERT_NE(LastUpdate(), "null");
    const int logStart = static_cast<int>(SettledLog().size());
    const CliRun run = Update(QStringLiteral("maximum"));
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(
        QStringLiteral("Complete Update: WARNING: this update will take 3 to 45 minutes")))
        << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("(no terminal to ask: answering Yes)")));
    int lists = 0;
    const QStringList log = SettledLog();
    for (int i = logStart; i < log.size(); ++i) {
        if (log[i].contains(QLatin1String("?MyEbay"))) {
            EXPECT_TRUE(log[i].contains(QLatin1String("&days=30&"))) << log[i].toStdString();
            ++lists;
        }
    }
    EXPECT_GT(lists, 0);
    const SiteTruth truth = Truth();
    ExpectSalesAndBidsMatch(truth);
    ExpectLedgerMatches(truth);
    EXPECT_NE(LastUpdate(), "null");
}

// Each line of the site's log names the port of the connection it came over:
// all the pages and posts of an update came over at most as many connections
// as it was given, none of them the one the rule check used before the run.
TEST_F(UpdateE2e, AnUpdateHoldsNoMoreConnectionsThanItWasGiven) {
    StartSite(Seed(6) << QStringLiteral("--sales") << QStringLiteral("120"));
    for (const int connections : {1, 3}) {
        SCOPED_TRACE(connections);
        // Each round asks for the last 30 days, as the first did.
        Db().Exec(QStringLiteral("UPDATE UserSites SET LastUpdate = NULL"));
        const qsizetype logStart = SettledLog().size();
        const CliRun run = Cli({QStringLiteral("update"), QStringLiteral("first"),
                                QStringLiteral("--connections"), QString::number(connections)});
        ASSERT_EQ(run.code, 0) << run.err.toStdString();
        const QStringList log = SettledLog();
        QSet<QString> rulePorts;
        QSet<QString> pagePorts;
        int pages = 0;
        for (qsizetype i = logStart; i < log.size(); ++i) {
            if (log[i].contains(QLatin1String(" /rules/"))) {
                rulePorts.insert(LoggedPort(log[i]));
            } else if (log[i].contains(QLatin1String("eBayISAPI.dll"))) {
                pagePorts.insert(LoggedPort(log[i]));
                ++pages;
            }
        }
        ASSERT_GT(pages, 120);
        EXPECT_GE(pagePorts.size(), 1);
        EXPECT_LE(pagePorts.size(), connections) << pagePorts.values().join(u' ').toStdString();
        EXPECT_FALSE(pagePorts.intersects(rulePorts));
    }
    ExpectSalesAndBidsMatch(Truth());
}

// A site 40 ms away: the user cancels while the run waits for an item page.
// The run ends there, keeps what it wrote, and asks for no more pages.
TEST_F(UpdateE2e, ACancelWhilePagesAreOnTheirWayStopsTheRunThere) {
    StartSite(Seed(6) << QStringLiteral("--sales") << QStringLiteral("300")
                      << QStringLiteral("--latency") << QStringLiteral("40"));
    Database db = OpenHere();
    CancelWhileWaitingUi ui(QStringLiteral("Processing Sale Details"), 2);
    lw::core::CurrentSession().ui = &ui;
    lw::update::UiUpdateView view;
    lw::update::UpdateRun run(db, view, lw::update::DefaultUpdateHooks(db));
    const auto result = run.Activate(
        lw::update::RunList(lw::update::UpdateCommand::FirstRetrieval, lw::update::Rules()));
    EXPECT_EQ(result, lw::update::UpdateRun::Result::Cancelled);
    EXPECT_EQ(ui.Messages(),
              QStringList{QStringLiteral(
                  "Update cancelled.  Some Auction/Bid information may be incomplete.")});
    EXPECT_NE(LastUpdate(), "null");

    // The sales list was whole before the cancel; of its item pages only the
    // first few were read, and the site was asked for few more than those.
    const Rows selling = List("MyEbaySelling", "SELLING");
    ASSERT_GT(selling.size(), 300u);
    EXPECT_EQ(Count(QStringLiteral("Auctions")), selling.size());
    const size_t detailed = Count(QStringLiteral("Auctions WHERE ItemCategory IS NOT NULL"));
    EXPECT_GT(detailed, 0u);
    size_t itemPages = 0;
    for (const QString& line : SettledLog()) {
        itemPages += line.contains(QLatin1String("ViewItem")) ? 1 : 0;
    }
    EXPECT_LT(itemPages, selling.size() / 2);
    EXPECT_EQ(Count(QStringLiteral("Bids")), 0u) << "the protocols after the cancel never ran";
}

// The site's clock page never comes: Ctrl-C ends the wait for it at once,
// with the cancel told, while the page is still on its way.
TEST_F(UpdateE2e, CtrlCEndsTheWaitForAPageThatNeverComes) {
    SilentSite silent;
    StartSite(Seed(5), [&](QByteArray text) {
        const QByteArray clock = m_site->Base().toUtf8() + "/aw-cgi/eBayISAPI.dll?TimeShow";
        return text.replace(clock, silent.Url().toUtf8());
    });
    QProcess process;
    process.start(
        BinDir() + QStringLiteral("/lotwright-cli"),
        {QStringLiteral("--root"), Home(), QStringLiteral("update"), QStringLiteral("time")});
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForStarted());
    ASSERT_TRUE(silent.WaitForRequest());
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    const bool ended = process.waitForFinished(60000);
    silent.Release();
    if (!ended) {
        process.kill();
        process.waitForFinished();
    }
    ASSERT_TRUE(ended) << "the wait did not hear Ctrl-C";
    const QByteArray err = process.readAllStandardError();
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(err.contains(
        "Update Cancelled: Update cancelled.  Some Auction/Bid information may be incomplete."))
        << err.toStdString();
    EXPECT_FALSE(err.contains("connection error")) << err.toStdString();
}
