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

using namespace Qt::StringLiterals;

namespace {

constexpr const char* kCgi = "/aw-cgi/eBayISAPI.dll";
constexpr const char* kCancelled =
    "Update cancelled.  Some Auction/Bid information may be incomplete.";

using lw::test::ParseRows;
using lw::test::Row;
using lw::test::Rows;
using lw::test::Trimmed;

// A list row's end date, "11/03/26 04:12:30 PST", as the writer stores it.
std::string EndOf(const Row& page) {
    std::string stored = page.count("ends") ? page.at("ends") : page.at("ended");
    const size_t blank = stored.find(' ');
    return blank == std::string::npos ? stored : stored.replace(blank, 1, ", ");
}

QSet<QString> SetOf(const QStringList& list) {
    return {list.cbegin(), list.cend()};
}

// What the site shows the demo seller, read the way a browser would.
struct SiteTruth {
    Rows selling, bidding, ledger;
    std::map<std::string, Row> items;     // item page cells by item number
    std::map<std::string, Rows> winners;  // winner rows of lots with several winners
    std::string clock;
};

using CliRun = lw::test::ProgramRun;
using DbRows = std::vector<std::map<std::string, std::string>>;

class UpdateE2e : public ::testing::Test {
protected:
    void TearDown() override { lw::core::ResetSession(); }

    // Starts the site with the given options and makes the demo user whose
    // rules point at it. rulesEdit may change the installed site.pro.
    void StartSite(QStringList args, const std::function<QByteArray(QByteArray)>& rulesEdit = {}) {
        // A stopped clock an hour behind ours: every page is the same for the
        // whole test, and the site time always differs from the local one
        // (a site time equal to ours reads as one that could not be read).
        args << u"--clock-factor"_s << u"0"_s << u"--start"_s
             << QString::number(QDateTime::currentSecsSinceEpoch() - 3600);
        m_site = std::make_unique<SiteProcess>(args, m_root.File(u"site.log"_s));
        ASSERT_TRUE(m_site->Ok()) << m_site->Error();
        for (const char* name : {"site.pro", "info.pro"}) {
            QByteArray text = lw::test::ReadAll(SourceDir() + u"/rules/"_s + QLatin1String(name));
            text.replace("http://127.0.0.1:8750", m_site->Base().toUtf8());
            if (rulesEdit && QLatin1String(name) == QLatin1String("site.pro")) {
                text = rulesEdit(text);
            }
            m_root.Write(u"rules/"_s + QLatin1String(name), text);
        }
        const CliRun init =
            Cli({"init", "--user", "Demo", "--site-id", "demo_seller", "--password", "demo"});
        ASSERT_EQ(init.code, 0) << init.err.toStdString();
        const CliRun install = Cli({"rules", "install", m_root.File(u"rules/site.pro"_s),
                                    m_root.File(u"rules/info.pro"_s)});
        ASSERT_EQ(install.code, 0) << install.err.toStdString();
        // The connections of every update of this root, the command line's
        // and this process's alike.
        if (const char* connections = std::getenv("LW_TEST_CONNECTIONS")) {
            lw::core::SetSettingsFolder(Home() + u"/Configs/Settings"_s);
            lw::update::SaveConnectionsSetting(QByteArray(connections).toInt());
            lw::core::SetSettingsFolder({});
        }
    }

    QString Home() const { return m_root.File(u"home"_s); }

    CliRun Cli(const QStringList& args) {
        return lw::test::RunProgram(BinDir() + u"/lotwright-cli"_s,
                                    QStringList{u"--root"_s, Home()} + args);
    }

    CliRun Update(const QStringList& args) { return Cli(QStringList{u"update"_s} + args); }

    // lotwright-cli on this root as a child the test can signal and read.
    bool StartCli(QProcess& process, const QStringList& args) {
        process.start(BinDir() + u"/lotwright-cli"_s, QStringList{u"--root"_s, Home()} + args);
        process.closeWriteChannel();
        return process.waitForStarted();
    }

    // The site logs a request after answering it: the log is read once it
    // has stopped growing. from: the first line wanted.
    QStringList SettledLog(qsizetype from = 0) {
        QStringList log = m_site->LogLines();
        for (int i = 0; i < 40; ++i) {
            QThread::msleep(50);
            QStringList again = m_site->LogLines();
            if (again.size() == log.size()) {
                break;
            }
            log = std::move(again);
        }
        return log.mid(from);
    }

    // Opens the user's database in this process with the session the
    // command line would set up, the rule store installed from it.
    Database OpenHere() {
        lw::core::ResetSession(&m_ui);
        lw::core::SetSettingsFolder(Home() + u"/Configs/Settings"_s);
        QString error;
        EXPECT_TRUE(lw::core::SetupDirectories(Home(), &error)) << error.toStdString();
        Database db = Database::Open(Home() + u"/Data/Lotwright.db"_s);
        EXPECT_EQ(lw::core::ChooseUser(db, nullptr), lw::core::UserChoice::Chosen);
        EXPECT_TRUE(lw::update::InstallRuleStore(lw::update::Rules(), db));
        return db;
    }

    Database Db() { return Database::Open(Home() + u"/Data/Lotwright.db"_s); }

    // The rows of a query, values bound to its parameters in order.
    DbRows Select(const QString& sql, const QStringList& values = {}) {
        Database db = Db();
        lw::core::Statement statement = db.Prepare(sql);
        for (int i = 0; i < values.size(); ++i) {
            statement.Bind(i + 1, values[i]);
        }
        DbRows rows;
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
            std::stoul(Select(u"SELECT COUNT(*) AS n FROM "_s + table)[0]["n"]));
    }

    std::string LastUpdate() {
        return Select(u"SELECT IFNULL(LastUpdate, 'null') AS l FROM UserSites"_s)[0]["l"];
    }

    void SetLastUpdate(Database& db, const QString& when) {
        db.Prepare(u"UPDATE UserSites SET LastUpdate = ?"_s).Bind(1, when).Run();
    }

    // The first retrieval run in this process with ui as its user, who
    // cancels it: the run ends as cancelled, says so once, and ends what it
    // began.
    void CancelFirstRetrievalHere(ScriptedUi& ui) {
        Database db = OpenHere();
        const qint64 sync = db.ScalarInt(u"PRAGMA synchronous"_s);
        lw::core::CurrentSession().ui = &ui;
        lw::update::UiUpdateView view;
        lw::update::UpdateRun run(db, view, lw::update::DefaultUpdateHooks(db));
        EXPECT_EQ(run.Activate(lw::update::RunList(lw::update::UpdateCommand::FirstRetrieval,
                                                   lw::update::Rules())),
                  lw::update::UpdateRun::Result::Cancelled);
        EXPECT_EQ(ui.Messages(), QStringList{kCancelled});
        EXPECT_EQ(ui.Titles(), QStringList{u"Update Cancelled"_s});
        // The run's page commits skip the disk flush; the store's own setting
        // is back once the run is over.
        EXPECT_EQ(db.ScalarInt(u"PRAGMA synchronous"_s), sync);
        EXPECT_NE(LastUpdate(), "null");
        EXPECT_EQ(Count(u"Bids"_s), 0u) << "the protocols after the cancel never ran";
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

    SiteTruth Truth() {
        SiteTruth truth;
        truth.selling = List("MyEbaySelling", "SELLING");
        truth.bidding = List("MyEbayBidding", "BIDDING");
        truth.ledger = List("MyEbayAccount", "LEDGER");
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
    // every winner of a lot with several winners and every ledger line is one
    // row; nothing else.
    void ExpectStoreMatches(const SiteTruth& truth) {
        using Columns = std::map<std::string, std::string>;
        struct Side {
            QString table;
            QString winnersTable;
            const Rows* list;
            // The columns of a row as read from its list page and item page.
            std::function<Columns(const Row& page, const Row& item)> want;
        };
        const Side sides[] = {
            {u"Auctions"_s, u"Dutch"_s, &truth.selling,
             [](const Row& page, const Row& item) -> Columns {
                 return {{"UserName", "Demo"},
                         {"ItemTitle", page.at("title")},
                         {"HighBidderName", page.at("bidder")},
                         {"MinimumBid", page.at("start")},
                         {"HighBid", page.at("price")},
                         {"ReserveBid", page.at("reserve")},
                         {"Quantity", page.at("qty")},
                         {"NumberBids", page.at("bids") == "0" ? "-" : page.at("bids")},
                         {"EndDate", EndOf(page)},
                         {"ItemCategory", item.at("cat")},
                         {"StartDate", item.at("started").substr(0, 8)},
                         {"HighBidderFeedback", item.at("hfb")}};
             }},
            {u"Bids"_s, u"DutchBids"_s, &truth.bidding,
             [](const Row& page, const Row& item) -> Columns {
                 return {{"ItemTitle", page.at("title")},
                         {"HighBidderName", page.at("bidder")},
                         {"SellerName", page.at("seller")},
                         {"HighBid", page.at("price")},
                         {"WinningBid", page.at("mybid")},
                         {"MaximumBid", page.at("mymax")},
                         {"Winning", page.at("status") == "high bidder" ? "1" : "0"},
                         {"EndDate", EndOf(page)},
                         {"ItemCategory", item.at("cat")},
                         {"SellerFeedback", item.at("sfb")}};
             }},
        };
        for (const Side& side : sides) {
            SCOPED_TRACE(side.table.toStdString());
            ASSERT_FALSE(side.list->empty());
            std::map<std::string, Columns> stored;
            for (auto& row : Select(u"SELECT * FROM "_s + side.table)) {
                EXPECT_TRUE(stored.emplace(row["ItemNumber"], row).second)
                    << "item " << row["ItemNumber"] << " twice";
            }
            EXPECT_EQ(stored.size(), side.list->size());
            std::set<std::vector<std::string>> expected;
            for (const Row& page : *side.list) {
                SCOPED_TRACE("item " + page.at("item"));
                ASSERT_TRUE(stored.count(page.at("item")));
                Columns& row = stored[page.at("item")];
                for (const auto& column : side.want(page, truth.items.at(page.at("item")))) {
                    EXPECT_EQ(row[column.first], column.second) << column.first;
                }
                const auto lot = truth.winners.find(page.at("item"));
                for (const Row& winner : lot == truth.winners.end() ? Rows{} : lot->second) {
                    expected.insert({page.at("item"), winner.at("winner"), winner.at("wfb"),
                                     winner.at("wqty"), winner.at("wprice")});
                }
            }
            std::set<std::vector<std::string>> winners;
            const DbRows rows = Select(u"SELECT * FROM "_s + side.winnersTable);
            for (auto row : rows) {
                winners.insert({row["ItemNumber"], row["HighBidderName"], row["HighBidderFeedback"],
                                row["Quantity"], row["HighBid"]});
            }
            EXPECT_FALSE(expected.empty()) << side.winnersTable.toStdString();
            EXPECT_EQ(winners, expected) << side.winnersTable.toStdString();
            EXPECT_EQ(rows.size(), expected.size())
                << side.winnersTable.toStdString() << " holds doubles";
        }
        // The ledger, its current balance aside.
        std::set<std::vector<std::string>> expected;
        for (const Row& page : truth.ledger) {
            expected.insert({page.at("date"), page.at("item"), Trimmed(page.at("desc")),
                             page.at("debit"), page.at("credit"), page.at("sold")});
        }
        std::set<std::vector<std::string>> stored;
        const DbRows rows =
            Select(u"SELECT * FROM AccountInfo WHERE AccountType <> 'Current balance'"_s);
        for (auto row : rows) {
            EXPECT_EQ(row["Date"], row["AccountDate"]);
            stored.insert({row["AccountDate"], row["ItemNumber"], row["AccountType"], row["Debit"],
                           row["Credit"], row["SoldPrice"]});
        }
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(stored, expected);
        EXPECT_EQ(rows.size(), expected.size()) << "AccountInfo holds doubles";
    }

    TempRoot m_root;
    std::unique_ptr<SiteProcess> m_site;
    ScriptedUi m_ui;
};

QStringList Seed(int users) {
    return {u"--seed"_s, QString::number(users)};
}

// A ScriptedUi whose user presses Cancel once a status has been shown: at
// the given count of event pumps after it, or of waits for a page.
class CancellingUi : public ScriptedUi {
public:
    enum class At { Pump, Wait };
    CancellingUi(QString status, At at, int count)
        : m_status(std::move(status)), m_at(at), m_left(count) {}
    void Status(const QString& text) override {
        ScriptedUi::Status(text);
        m_armed = m_armed || text == m_status;
    }
    void PumpEvents() override {
        ScriptedUi::PumpEvents();
        if (Due(At::Pump)) {
            RequestCancel();
        }
    }
    void WaitFor(lw::core::Wakeup& wakeup) override {
        if (Due(At::Wait)) {
            RequestCancel();
            return;
        }
        ScriptedUi::WaitFor(wakeup);
    }

private:
    bool Due(At at) { return m_at == at && m_armed && --m_left == 0; }

    QString m_status;
    At m_at;
    int m_left;
    bool m_armed = false;
};

// Ctrl-C to a child, true when it ended within a minute; killed otherwise.
bool Interrupt(QProcess& process) {
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    if (process.waitForFinished(60000)) {
        return true;
    }
    process.kill();
    process.waitForFinished();
    return false;
}

// Reads a child's standard error until it holds text or the child has ended.
QByteArray ErrUntil(QProcess& process, const char* text) {
    QByteArray err;
    while (process.state() == QProcess::Running && !err.contains(text)) {
        process.waitForReadyRead(10);
        err += process.readAllStandardError();
    }
    return err;
}
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

// After the first retrieval every reader shows what the site shows. The
// Task Manager of `lotwright-cli tasks` holds the ended sales that found a
// buyer (each winner of a multi-winner lot as a row of its own, after the
// plain rows) and the ended bids the user won, and none that runs, went
// unsold or was lost; each row has every task of its side. The shipped rules
// write a bid's status as the words True and False: a bid the user lost is
// lost to the saved queries, the bids list and its colours, and the figures.
TEST_F(UpdateE2e, TheTaskListViewsAndFiguresShowWhatWasSoldWonAndLost) {
    StartSite(Seed(6));
    ASSERT_EQ(Update({"first"}).code, 0);
    const SiteTruth truth = Truth();
    auto line = [](const Row& page) {
        return QString::fromStdString(page.at("item") + ": " + page.at("title"));
    };
    QStringList plainSales;
    QStringList dutchSales;
    for (const Row& page : truth.selling) {
        if (page.at("left") != "Ended" || page.at("bids") == "0") {
            continue;
        }
        if (page.at("bidder") == "Dutch Auction") {
            for (const Row& winner : truth.winners.at(page.at("item"))) {
                dutchSales << u"D"_s + line(page) + u" ("_s +
                                  QString::fromStdString(winner.at("winner")) + u')';
            }
        } else if (lw::core::NumberRule(QString::fromStdString(page.at("price"))) >=
                   lw::core::NumberRule(QString::fromStdString(page.at("reserve")))) {
            plainSales << line(page);
        }
    }
    QSet<QString> won;  // item numbers
    QSet<QString> lost;
    QSet<QString> lostAlone;  // lost, and no lot with several winners
    QStringList wonBids;      // task rows: ended and won
    QSet<QString> lostBids;
    for (const Row& page : truth.bidding) {
        const QString item = QString::fromStdString(page.at("item"));
        if (page.at("status") == "high bidder") {
            won.insert(item);
            if (page.at("left") == "Ended") {
                wonBids << line(page);
            }
            continue;
        }
        lost.insert(item);
        lostBids.insert(line(page));
        if (page.at("bidder") != "Dutch Auction") {
            lostAlone.insert(item);
        }
    }
    ASSERT_FALSE(plainSales.isEmpty());
    ASSERT_FALSE(dutchSales.isEmpty());
    ASSERT_FALSE(wonBids.isEmpty());
    ASSERT_FALSE(lost.isEmpty());

    struct Side {
        QStringList args;
        QStringList codes;
    };
    const Side sides[] = {
        {{}, {"SUMN", "PRA", "CON", "PRI", "PAY", "SHP", "SHS", "SHE", "SHR", "FBL", "RFB", "FBR"}},
        {{"--bids"},
         {"SUMN", "PRA", "CRP", "PSI", "PRP", "PRS", "IRR", "IRE", "FBL", "RFS", "FBR"}},
    };
    for (const Side& side : sides) {
        const CliRun run = Cli(QStringList{u"tasks"_s} + side.args);
        ASSERT_EQ(run.code, 0) << run.err.toStdString();
        QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
        ASSERT_FALSE(lines.isEmpty());
        const QString head = lines.takeFirst();
        QStringList rows;
        QStringList codes;
        for (const QString& text : lines) {
            if (!text.startsWith(u"    "_s)) {
                if (!rows.isEmpty()) {
                    EXPECT_EQ(codes, side.codes) << rows.last().toStdString();
                }
                rows << text;
                codes.clear();
                continue;
            }
            const QStringList words = text.simplified().split(u' ');
            codes << words.value(0);
            EXPECT_TRUE(words.value(1) == u"done" || words.value(1) == u"pending")
                << text.toStdString();
        }
        EXPECT_EQ(codes, side.codes) << rows.last().toStdString();
        EXPECT_TRUE(head.endsWith(u" (%1)"_s.arg(rows.size()))) << head.toStdString();
        if (side.args.isEmpty()) {
            EXPECT_EQ(head.left(head.lastIndexOf(u' ')), u"All Auctions with Pending Tasks"_s);
            EXPECT_EQ(SetOf(rows.mid(0, plainSales.size())), SetOf(plainSales));
            EXPECT_EQ(SetOf(rows.mid(plainSales.size())), SetOf(dutchSales))
                << "the winners follow the plain rows";
        } else {
            EXPECT_EQ(SetOf(rows), SetOf(wonBids));
            EXPECT_FALSE(SetOf(rows).intersects(lostBids));
        }
    }

    const CliRun unknown = Cli({"tasks", "--filter", "Bids Not Yet Paid"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_TRUE(unknown.err.contains(u"no task filter \"Bids Not Yet Paid\" on the sales side"_s))
        << unknown.err.toStdString();

    Database db = OpenHere();
    auto items = [&db](const QString& sql) {
        QSet<QString> found;
        lw::core::Statement s = db.Prepare(sql);
        while (s.Step()) {
            found.insert(s.Text(0));
        }
        return found;
    };
    const QSet<QString> ended =
        items(u"SELECT ItemNumber FROM Bids WHERE EndDay < date('now', 'localtime')"_s);
    ASSERT_TRUE(ended.intersects(lost)) << "no lost bid has ended";
    for (const char* view : {"Completed Bids", "All Bids with Pending Tasks"}) {
        const QSet<QString> shown =
            items(u"SELECT ItemNumber FROM \""_s + QLatin1String(view) + u"\""_s);
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
    EXPECT_EQ(page.bids[lw::views::kSuccessfulBids].value, QString::number((ended & won).size()));
}

// The first retrieval fills every table with what the site holds; a second
// update brings the rows up to date and never doubles them.
TEST_F(UpdateE2e, FirstRetrievalFillsEveryTableAndASecondUpdateNeverDoublesARow) {
    StartSite(Seed(6));
    const CliRun run = Update({"first"});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(u"Processing My Sales"_s));
    EXPECT_TRUE(run.err.contains(u"Progress: "_s));
    // Without a terminal each status is a line once per percentage, however
    // many pages the step fetches: the log of a run stays a log.
    QSet<QString> seen;
    static const QRegularExpression figures(u"[0-9]+"_s);
    for (const QString& line : run.err.split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(u"Progress: "_s)) {
            seen.clear();
            continue;
        }
        QString key = line;
        key.replace(figures, u"#"_s);
        EXPECT_FALSE(seen.contains(key))
            << "written twice at one percentage: " << line.toStdString();
        seen.insert(key);
    }
    const SiteTruth truth = Truth();
    ExpectStoreMatches(truth);
    const auto global = Select(u"SELECT * FROM Global"_s);
    ASSERT_EQ(global.size(), 1u);
    EXPECT_FALSE(truth.clock.empty());
    EXPECT_EQ(global[0].at("eBayTime"), truth.clock);
    EXPECT_NE(LastUpdate(), "null");
    EXPECT_EQ(Select(u"SELECT Updates FROM Tracking"_s)[0]["Updates"], "1");

    // A running sale takes a new high bid and another ends now; the site
    // books the ending's fee in the ledger.
    std::vector<std::string> running;
    for (const Row& row : truth.selling) {
        if (row.at("left") != "Ended" && row.at("qty") == "1") {
            running.push_back(row.at("item"));
        }
    }
    ASSERT_GE(running.size(), 2u);
    EXPECT_NE(m_site->Admin("bid", "item=" + running[0] + "&bidder=kestrel_coins&amount=900.00")
                  .find("\"ok\":true"),
              std::string::npos);
    EXPECT_NE(m_site->Admin("end", "item=" + running[1]).find("\"ok\":true"), std::string::npos);

    const CliRun again = Update({"complete"});
    ASSERT_EQ(again.code, 0) << again.err.toStdString();
    const CliRun ledger = Update({"--list", "Account History eBay"});
    ASSERT_EQ(ledger.code, 0) << ledger.err.toStdString();
    EXPECT_EQ(Count(u"Auctions"_s), truth.selling.size());
    EXPECT_EQ(Count(u"Bids"_s), truth.bidding.size());
    const SiteTruth after = Truth();
    ExpectStoreMatches(after);
    const auto bidRow = Select(u"SELECT HighBidderName FROM Auctions WHERE ItemNumber = ?"_s,
                               {QString::fromStdString(running[0])});
    ASSERT_EQ(bidRow.size(), 1u);
    EXPECT_EQ(bidRow[0].at("HighBidderName"), "kestrel_coins");
    // The balance of the complete update sits beside the history, once.
    EXPECT_EQ(Count(u"AccountInfo WHERE AccountType = 'Current balance'"_s), 1u);
}

TEST_F(UpdateE2e, PagingStopsAfterTheLastPage) {
    constexpr int kPage = 4;
    StartSite(Seed(6) << u"--page-size"_s << QString::number(kPage),
              [](QByteArray text) { return text.replace("IterateSkip=50", "IterateSkip=4"); });
    const CliRun run = Update({"--list", "Current Auctions eBay"});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QStringList log = SettledLog();
    const Rows selling = List("MyEbaySelling", "SELLING", kPage);
    ASSERT_GT(selling.size(), static_cast<size_t>(2 * kPage));
    EXPECT_EQ(Count(u"Auctions"_s), selling.size());

    // The pages asked for: each offset once, up to the first one past the
    // records, which is the empty page that ends the paging; the list is
    // read a page ahead, so the page after that one may have been asked for
    // too, and no other.
    std::vector<int> skips;
    static const QRegularExpression kSkip(u"MyEbaySelling.*&skip=(\\d+) "_s);
    for (const QString& line : log) {
        const auto match = kSkip.match(line);
        if (match.hasMatch() && line.startsWith(QLatin1String("GET"))) {
            skips.push_back(match.captured(1).toInt());
        }
    }
    std::vector<int> expected;
    for (int skip = 0; skip < static_cast<int>(selling.size()) + kPage; skip += kPage) {
        expected.push_back(skip);
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
    CancellingUi ui(u"Processing My Sales"_s, CancellingUi::At::Pump, 25);
    CancelFirstRetrievalHere(ui);

    // The rows written are the first records of the list, each whole.
    const Rows selling = List("MyEbaySelling", "SELLING");
    const auto rows = Select(u"SELECT * FROM Auctions ORDER BY rowid"_s);
    ASSERT_GE(rows.size(), 2u);
    ASSERT_LT(rows.size(), selling.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].at("ItemNumber"), selling[i].at("item"));
        EXPECT_EQ(rows[i].at("ItemTitle"), selling[i].at("title"));
        EXPECT_EQ(rows[i].at("EndDate"), EndOf(selling[i]));
    }
}

// A site 40 ms away: the user cancels while the run waits for an item page.
// The run ends there, keeps what it wrote, and asks for no more pages.
TEST_F(UpdateE2e, ACancelWhilePagesAreOnTheirWayStopsTheRunThere) {
    StartSite(Seed(6) << u"--sales"_s << u"300"_s << u"--latency"_s << u"40"_s);
    CancellingUi ui(u"Processing Sale Details"_s, CancellingUi::At::Wait, 2);
    CancelFirstRetrievalHere(ui);

    // The sales list was whole before the cancel; of its item pages only the
    // first few were read, and the site was asked for few more than those.
    const Rows selling = List("MyEbaySelling", "SELLING");
    ASSERT_GT(selling.size(), 300u);
    EXPECT_EQ(Count(u"Auctions"_s), selling.size());
    EXPECT_GT(Count(u"Auctions WHERE ItemCategory IS NOT NULL"_s), 0u);
    const qsizetype itemPages = SettledLog().filter(u"ViewItem"_s).size();
    EXPECT_LT(static_cast<size_t>(itemPages), selling.size() / 2);
}

// Ctrl-C is sent once the run says it starts the sale details (their pages
// are fetched ahead while the sales list is written); the sales list before
// them is whole, and with 1,500 item pages to go the run is far from its end.
TEST_F(UpdateE2e, CtrlCOnTheCommandLineCancelsAtTheNextRecord) {
    StartSite(Seed(6) << u"--sales"_s << u"1500"_s);
    QProcess process;
    ASSERT_TRUE(StartCli(process, {"update", "first"}));
    QByteArray err = ErrUntil(process, "Fetching Sale Details");
    ASSERT_EQ(process.state(), QProcess::Running) << err.toStdString();
    ASSERT_TRUE(Interrupt(process));
    err += process.readAllStandardError();
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(err.contains(QByteArray("Update Cancelled: ").append(kCancelled)))
        << err.right(3000).toStdString();
    EXPECT_EQ(Count(u"Auctions"_s), List("MyEbaySelling", "SELLING").size());
    EXPECT_EQ(Count(u"Bids"_s), 0u);
    EXPECT_NE(LastUpdate(), "null");
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
    ASSERT_TRUE(StartCli(process, {"update", "time"}));
    ASSERT_TRUE(silent.WaitForRequest());
    const bool ended = Interrupt(process);
    silent.Release();
    ASSERT_TRUE(ended) << "the wait did not hear Ctrl-C";
    const QByteArray err = process.readAllStandardError();
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(err.contains(QByteArray("Update Cancelled: ").append(kCancelled)))
        << err.toStdString();
    EXPECT_FALSE(err.contains("connection error")) << err.toStdString();
}

// A site that is down ends the update with the connection error, and the
// last update still moves: in a process that checked the rules already the
// first list fails; a new process fails its rule check and asks for no
// page; with nothing listening at all the command stops before the update.
TEST_F(UpdateE2e, ASiteThatIsDownStopsTheUpdateAndLastUpdateStillMoves) {
    StartSite(Seed(5));
    const QString before = u"01/01/20 10:00:00 PST"_s;
    {
        // The rules are checked once per run of the program; this process
        // checks them here, so the next update goes straight to the pages.
        Database db = OpenHere();
        lw::update::UiUpdateView view;
        lw::update::UpdateRun first(db, view, lw::update::DefaultUpdateHooks(db));
        ASSERT_EQ(first.Activate({u"Current Time eBay"_s}),
                  lw::update::UpdateRun::Result::Complete);
        ASSERT_TRUE(lw::core::CurrentSession().RulesChecked);

        SetLastUpdate(db, before);
        m_site->Admin("down", "on=1");
        lw::update::UpdateRun down(db, view, lw::update::DefaultUpdateHooks(db));
        EXPECT_EQ(down.Activate({u"Current Auctions eBay"_s, u"Current Bids eBay"_s}),
                  lw::update::UpdateRun::Result::Aborted);
        EXPECT_EQ(m_ui.Messages(),
                  QStringList{
                      u"Retrieval of My Sales from eBay failed.  There is a connection problem or "
                      "eBay is experiencing technical difficulties.  Update aborted."_s});
        EXPECT_EQ(m_ui.Titles(), QStringList{u"Connection Error"_s});
        EXPECT_TRUE(m_ui.Statuses().contains(u"Current Auctions eBay connection error."_s));
        EXPECT_NE(LastUpdate(), before.toStdString());
        SetLastUpdate(db, before);
    }
    EXPECT_EQ(Count(u"Auctions"_s), 0u);

    const qsizetype logStart = SettledLog().size();
    const CliRun run = Update({"complete"});
    EXPECT_EQ(run.code, 1);
    EXPECT_TRUE(run.err.contains(u"Network Error: Network error.  Update cancelled."_s))
        << run.err.toStdString();
    const QStringList log = SettledLog(logStart);
    ASSERT_FALSE(log.isEmpty());
    EXPECT_TRUE(log.filter(u"eBayISAPI.dll"_s).isEmpty()) << log.join(u'\n').toStdString();
    EXPECT_TRUE(log.last().startsWith(QLatin1String("GET /rules/version")));
    EXPECT_EQ(Count(u"Auctions"_s), 0u);
    EXPECT_NE(LastUpdate(), before.toStdString());

    m_site->Stop();
    const std::string kept = LastUpdate();
    const CliRun offline = Update({"sales"});
    EXPECT_EQ(offline.code, 1);
    EXPECT_TRUE(offline.err.contains(
        u"No ISP Connection: You need to be connected to your Internet Service Provider to "
        "update your auction database.  Please connect and then try again."_s))
        << offline.err.toStdString();
    EXPECT_EQ(LastUpdate(), kept);
}

TEST_F(UpdateE2e, AChangedPageGetsOnePasswordRefreshThenIsPassedOver) {
    StartSite(Seed(5));
    ASSERT_EQ(Update({"sales"}).code, 0);
    const size_t sales = Count(u"Auctions"_s);
    const qsizetype logStart = SettledLog().size();

    m_site->Admin("break", "count=10&page=selling");
    const CliRun run = Update(
        {"--list", "Current Auctions eBay", "Auction Details eBay", "Account Information eBay"});
    // The run went to its end; the exit code tells that protocols failed.
    EXPECT_EQ(run.code, 4) << run.err.toStdString();
    for (const QString& said :
         {u"these protocols could not be processed: Current Auctions eBay, Auction Details eBay."_s,
          u"My Sales: My Sales could not be processed.  Continuing with remainder of update."_s,
          u"Sale Details: Sale Details could not be processed.  Continuing with remainder of "
          "update."_s}) {
        EXPECT_TRUE(run.err.contains(said)) << run.err.toStdString();
    }
    EXPECT_FALSE(run.out.contains(u"Update complete."_s));
    EXPECT_EQ(run.err.count(u"Updating Configuration"_s), 1);
    // The rest of the list went on.
    EXPECT_EQ(Count(u"AccountInfo WHERE AccountType = 'Current balance'"_s), 1u);
    EXPECT_EQ(Count(u"Auctions"_s), sales);

    static const QRegularExpression signIn(u"^POST /aw-cgi/eBayISAPI\\.dll"_s);
    EXPECT_EQ(SettledLog(logStart).filter(signIn).size(), 1)
        << "the password is refreshed once per update";
}

TEST_F(UpdateE2e, OneUpdateAtATimePerRootWaitingWhenAskedAndALeftLockIsTakenOver) {
    StartSite(Seed(3));
    const QString lockPath = lw::update::UpdateLock::PathIn(Home() + u"/Data"_s);
    {
        // An update of this root under way in this process.
        lw::update::UpdateLock running(Home() + u"/Data"_s);
        ASSERT_TRUE(running.TryLock());
        const QString busy =
            u"An update is already running (process %1)."_s.arg(QCoreApplication::applicationPid());
        const CliRun refused = Update({"time"});
        EXPECT_EQ(refused.code, 1);
        EXPECT_TRUE(refused.err.contains(busy)) << refused.err.toStdString();
        EXPECT_EQ(LastUpdate(), "null") << "nothing of the second update ran";

        // With --wait the second one runs once the first has ended.
        QProcess waiting;
        ASSERT_TRUE(StartCli(waiting, {"update", "time", "--wait"}));
        const QByteArray err = ErrUntil(waiting, "Waiting");
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
    gone.start(u"sh"_s, {u"-c"_s, u"echo $$"_s});
    ASSERT_TRUE(gone.waitForFinished());
    const QByteArray pid = gone.readAllStandardOutput().trimmed();
    QFile left(lockPath);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.write(pid + "\nlotwright-cli\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    left.close();
    const CliRun after = Update({"time"});
    EXPECT_EQ(after.code, 0) << after.err.toStdString();
    EXPECT_FALSE(QFile::exists(lockPath));
}

TEST_F(UpdateE2e, ANewerRuleVersionIsInstalledAndUsedInTheSameRun) {
    // The site serves rules of version 2 whose sales list has a new caption.
    TempRoot served;
    for (const char* name : {"site.pro", "info.pro", "seller.pro", "category.pro"}) {
        QByteArray text = lw::test::ReadAll(SourceDir() + u"/rules/"_s + QLatin1String(name));
        if (QLatin1String(name) == QLatin1String("site.pro")) {
            text.replace("Current Protocol=1", "Current Protocol=2");
            text.replace("RunCaption=My Sales\r\n", "RunCaption=My Sales of version 2\r\n");
            text.replace("RunCaption=My Sales\n", "RunCaption=My Sales of version 2\n");
        }
        served.Write(QLatin1String(name), text);
    }
    StartSite(Seed(5) << u"--rules"_s << served.Path());
    const CliRun run = Update({"sales"});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(u"Updating engine."_s));
    EXPECT_TRUE(run.err.contains(u"Fetching My Sales of version 2"_s)) << run.err.toStdString();
    EXPECT_GT(Count(u"Auctions"_s), 0u);
    // The downloaded file is the new version and points at the site that served it.
    const CliRun version = Cli({"rules", "get", "Protocols", "Current Protocol"});
    EXPECT_EQ(version.out.trimmed(), u"2"_s);
    const CliRun check = Cli({"rules", "get", "Protocols", "ProtocolCheckUrl"});
    EXPECT_EQ(check.out.trimmed(), m_site->Base() + u"/rules/version"_s);
}

// A title arrives as the site shows it, whatever it holds, and changes
// nothing but its own field. The site sends an apostrophe, a double quote
// and an ampersand as entities, which the scanner turns back into the
// characters; letters of other scripts come as UTF-8 and stay as they are.
TEST_F(UpdateE2e, TitlesArriveIntactWhateverTheyHoldAndChangeNothingElse) {
    StartSite(Seed(6));
    const SiteTruth truth = Truth();
    ASSERT_GE(truth.selling.size(), 4u);
    ASSERT_FALSE(truth.bidding.empty());
    const std::string huge = QByteArray("A long title with a quote ' and \xC3\xA9 and 0123456789; ")
                                 .repeated(21000)
                                 .left(1 << 20)
                                 .toStdString();
    struct Case {
        const char* name;
        QString table;
        std::string item;
        std::string title;
    };
    const Case cases[] = {
        {"entities and other scripts in a sale", u"Auctions"_s, truth.selling[0].at("item"),
         "O'Brien's \"Best\" Fish & Chips \xE2\x80\x94 Cr\xC3\xA8me br\xC3\xBBl\xC3\xA9"
         "e, \xC3\x86r\xC3\xB8sk\xC3\xB8"
         "bing, \xC5\x81\xC3\xB3\x64\xC5\xBA, \xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"},
        {"entities and other scripts in a bid", u"Bids"_s, truth.bidding[0].at("item"),
         "It's a \"lot\" of \xCE\xB1\xCE\xB2\xCE\xB3 & more"},
        {"a statement after a quote", u"Auctions"_s, truth.selling[1].at("item"),
         "'; DROP TABLE Auctions; --"},
        {"a statement after a double quote", u"Auctions"_s, truth.selling[2].at("item"),
         "Robert\"); DELETE FROM Bids WHERE ('1'='1"},
        {"a megabyte", u"Auctions"_s, truth.selling[3].at("item"), huge},
    };
    for (const Case& c : cases) {
        EXPECT_NE(
            m_site->Admin("title", "item=" + c.item + "&title=" + SiteProcess::Encode(c.title))
                .find("\"ok\":true"),
            std::string::npos)
            << c.name;
    }

    const CliRun run = Update({"first"});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto row = Select(u"SELECT ItemTitle FROM %1 WHERE ItemNumber = ?"_s.arg(c.table),
                                {QString::fromStdString(c.item)});
        ASSERT_EQ(row.size(), 1u);
        EXPECT_EQ(row[0].at("ItemTitle").size(), c.title.size());
        EXPECT_TRUE(row[0].at("ItemTitle") == c.title);
    }
    // Every other field and every other row is what the site shows.
    const SiteTruth after = Truth();
    ExpectStoreMatches(after);
}

TEST_F(UpdateE2e, UnknownCommandsAndProtocolsAreRefusedBeforeAnyPage) {
    StartSite(Seed(5));
    const qsizetype logStart = SettledLog().size();
    const QString badCount = u"--connections takes a whole number from 1 to 8."_s;
    struct Case {
        QStringList args;
        int code;
        QString said;
    };
    const Case cases[] = {
        {{"everything"}, 2, u"everything"_s},
        {{}, 2, {}},
        {{"--list"}, 2, {}},
        {{"time", "--connections", "0"}, 2, badCount},
        {{"time", "--connections", "9"}, 2, badCount},
        {{"time", "--connections", "six"}, 2, badCount},
        {{"--list", "Current Time eBay", "Current Lots eBay"}, 3, u"[Current Lots eBay]"_s},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(u' ').toStdString());
        const CliRun run = Update(c.args);
        EXPECT_EQ(run.code, c.code);
        EXPECT_TRUE(run.err.contains(c.said)) << run.err.toStdString();
    }
    EXPECT_EQ(SettledLog().size(), logStart) << "no page was asked for";
    EXPECT_FALSE(QFile::exists(Home() + u"/Configs/RunProt.dat"_s));
    EXPECT_EQ(LastUpdate(), "null");
}

// The full re-retrieval asks first (with no terminal to ask, its default
// Yes is taken and said) and then asks the site for 30 days whenever the
// last update was.
TEST_F(UpdateE2e, TheMaximumUpdateAsksAndThenAsksTheSiteForThirtyDays) {
    StartSite(Seed(5));
    ASSERT_EQ(Update({"time"}).code, 0);
    ASSERT_NE(LastUpdate(), "null");
    const qsizetype logStart = SettledLog().size();
    const CliRun run = Update({"maximum"});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    EXPECT_TRUE(
        run.err.contains(u"Complete Update: WARNING: this update will take 3 to 45 minutes"_s))
        << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(u"(no terminal to ask: answering Yes)"_s));
    const QStringList lists = SettledLog(logStart).filter(u"?MyEbay"_s);
    EXPECT_FALSE(lists.isEmpty());
    for (const QString& line : lists) {
        EXPECT_TRUE(line.contains(QLatin1String("&days=30&"))) << line.toStdString();
    }
    const SiteTruth truth = Truth();
    ExpectStoreMatches(truth);
    EXPECT_NE(LastUpdate(), "null");
}

// Each line of the site's log names the port of the connection it came over:
// all the pages and posts of an update came over at most as many connections
// as it was given, none of them the one the rule check used before the run.
TEST_F(UpdateE2e, AnUpdateHoldsNoMoreConnectionsThanItWasGiven) {
    StartSite(Seed(6) << u"--sales"_s << u"120"_s);
    for (const int connections : {1, 3}) {
        SCOPED_TRACE(connections);
        // Each round asks for the last 30 days, as the first did.
        Db().Exec(u"UPDATE UserSites SET LastUpdate = NULL"_s);
        const qsizetype logStart = SettledLog().size();
        const CliRun run = Update({"first", "--connections", QString::number(connections)});
        ASSERT_EQ(run.code, 0) << run.err.toStdString();
        QSet<QString> rulePorts;
        QSet<QString> pagePorts;
        int pages = 0;
        for (const QString& line : SettledLog(logStart)) {
            if (line.contains(QLatin1String(" /rules/"))) {
                rulePorts.insert(LoggedPort(line));
            } else if (line.contains(QLatin1String("eBayISAPI.dll"))) {
                pagePorts.insert(LoggedPort(line));
                ++pages;
            }
        }
        ASSERT_GT(pages, 120);
        EXPECT_GE(pagePorts.size(), 1);
        EXPECT_LE(pagePorts.size(), connections) << pagePorts.values().join(u' ').toStdString();
        EXPECT_FALSE(pagePorts.intersects(rulePorts));
    }
    ExpectStoreMatches(Truth());
}
