// SPDX-License-Identifier: GPL-3.0-or-later
// The update window on the offscreen platform, over a loopback site whose
// pages the program's own fetch reads: the run's words on lblStatus with the
// moving dots, the fetch's words on lblConnectStatus, Bar1, lblLastUrl, the
// details with the item being read, the window gone before the redraw, boxes
// over the window on the desktop, and Cancel (the button, Escape, in the
// middle of a transfer, or while a page is on its way over the run's
// connections) stopping the run with what was written kept.
#include <httplib.h>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QtTest>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <thread>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmUpdate.h"
#include "ui/qt_ui.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "update/scanner.h"
#include "update/site_session.h"
#include "update/update_lock.h"

using namespace lw;
using update::UpdateRun;

using lw::test::Named;

namespace {

const QString kUser = QStringLiteral("seller1");

QString LabelText(QWidget* window, const char* name) {
    return Named<QLabel>(window, QString::fromLatin1(name))->text();
}

// The update window while it is up; null when there is none.
ui::frmUpdate* OpenUpdateWindow() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<ui::frmUpdate*>(widget)) {
            return window;
        }
    }
    return nullptr;
}

// The site on 127.0.0.1 and a free port, for the life of the object. /slow sends the start of a
// page, asks for the window's Cancel through the event queue, and trickles on until the client goes
// away.
class Site {
public:
    Site() {
        httplib::Server& routes = m_server.Routes();
        routes.Get("/selling", [this](const httplib::Request& req, httplib::Response& res) {
            const std::string skip = req.get_param_value("skip");
            const auto page = m_pages.find(skip);
            if (page == m_pages.end()) {
                res.status = 500;
                return;
            }
            res.set_content(page->second.toStdString(), "text/html");
        });
        routes.Get("/time", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(
                "<!-- CLOCK -->The time is: Saturday, May 23, 2026 13:05:09 PDT<!-- /CLOCK -->",
                "text/html");
        });
        routes.Get("/slow", [this](const httplib::Request&, httplib::Response& res) {
            res.set_chunked_content_provider(
                "text/html", [this](size_t offset, httplib::DataSink& sink) {
                    if (offset == 0) {
                        const QByteArray start = test::ListPage({{"301", "Never kept"}}).left(40);
                        if (!sink.write(start.constData(), static_cast<size_t>(start.size()))) {
                            return false;
                        }
                        ClickCancel();
                        return true;
                    }
                    // A blank now and then keeps the transfer going until the
                    // client aborts it; a page that never ends would hang the test.
                    for (int i = 0; i < 2000; ++i) {
                        std::this_thread::sleep_for(std::chrono::milliseconds(5));
                        if (!sink.write(" ", 1)) {
                            return false;
                        }
                    }
                    sink.done();
                    return true;
                });
        });
        // Asks for the window's Cancel through the event queue and answers only
        // when let go (or after a long while): a run that waits for it with
        // the window's events running ends before it.
        routes.Get("/never", [this](const httplib::Request&, httplib::Response& res) {
            ClickCancel();
            for (int i = 0; i < 4000 && !m_server.Stopping() && !m_letGo; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            m_neverAnswered = true;
            res.set_content(test::ListPage({{"401", "Too late"}}).toStdString(), "text/html");
        });
        m_pages["0"] = test::ListPage({{"101", "First"}, {"102", "Second"}});
        m_pages["2"] = test::ListPage({{"103", "Third"}});
        m_pages["4"] = test::ListPage({});
        // One answer per connection: a connection the client keeps for its
        // next page would hold the server's stop until its keep-alive ends.
        routes.set_keep_alive_max_count(1);
        m_server.Start();
    }

    int Port() const { return m_server.Port(); }
    void CancelOnTransfer(QPushButton* button) { m_cancelOnTransfer = button; }
    bool NeverAnswered() const { return m_neverAnswered; }
    void LetGo() { m_letGo = true; }

private:
    // Asks for the window's Cancel, when one was given, through its event queue.
    void ClickCancel() {
        if (QPushButton* cancel = m_cancelOnTransfer.load()) {
            QMetaObject::invokeMethod(
                cancel, [cancel] { cancel->click(); }, Qt::QueuedConnection);
        }
    }

    test::LoopbackServer m_server;
    std::map<std::string, QByteArray> m_pages;
    std::atomic<QPushButton*> m_cancelOnTransfer{nullptr};
    std::atomic<bool> m_neverAnswered{false};
    std::atomic<bool> m_letGo{false};
};

// A list of sales: the item number and title of each row between the marks.
constexpr const char* kSalesRule =
    "[%1]\nRunCaption=%2\nSitenumber=0\nUrl=%3\n%4GStart=<!-- BEGIN -->\nGend=<!-- END -->\n"
    "QueryString=SELECT * FROM Auctions WHERE ItemNumber='[1]'\nItems=2\nItem1=ItemNumber\n"
    "Item1 Start=<td class=n\nItem2=ItemTitle\nItem2 Start=<td class=t\n\n";

QString RulesFor(int port, int closedPort) {
    const QString site = QStringLiteral("http://127.0.0.1:%1").arg(port);
    auto sales = [](const char* name, const char* caption, const QString& url,
                    const char* paging = "") {
        return QString::fromLatin1(kSalesRule)
            .arg(QString::fromLatin1(name), QString::fromLatin1(caption), url,
                 QString::fromLatin1(paging));
    };
    QString rules =
        sales("Current Auctions eBay", "My Sales", site + QStringLiteral("/selling?skip=[SKIP]"),
              "Iterate=True\nIterateSkip=2\n") +
        sales("Slow Sales eBay", "Slow Sales", site + QStringLiteral("/slow")) +
        sales("Silent Sales eBay", "Silent Sales", site + QStringLiteral("/never")) +
        sales("Offline eBay", "Offline Page",
              QStringLiteral("http://127.0.0.1:%1/x").arg(closedPort)) +
        QStringLiteral(
            "[Current Time eBay]\nRunCaption=Site Time\nSitenumber=0\nUrl=%1/time\n"
            "GStart=<!-- CLOCK -->\nGend=<!-- /CLOCK -->\nQueryString=SELECT * FROM Global\n"
            "Items=1\nItem1=eBayTime\nItem1 Start=The time is\nItem1 AlternateSpan=:\n")
            .arg(site);
    rules.replace(u'\n', QStringLiteral("\r\n"));
    return rules + QStringLiteral("\r\n\r\n");
}

// The window's controls as they stood at one moment of the run.
struct Seen {
    bool visible = false;
    bool modal = false;
    QString status;
    QString connectStatus;
    QString lastUrl;
    QString item;
    QString value;
    int bar = -1;
};

Seen Look(ui::frmUpdate* window) {
    Seen seen;
    if (window == nullptr) {
        return seen;
    }
    seen.visible = window->isVisible();
    seen.modal = window->isModal();
    // The dots come and go with the timer: the words are what count.
    seen.status = LabelText(window, "lblStatus");
    while (seen.status.endsWith(u'.') && seen.status != u"Preparing Update." &&
           seen.status != u"Update complete.") {
        seen.status.chop(1);
    }
    seen.connectStatus = LabelText(window, "lblConnectStatus");
    seen.lastUrl = LabelText(window, "lblLastUrl");
    seen.item = LabelText(window, "lblItem");
    seen.value = LabelText(window, "lblValue");
    seen.bar = Named<QProgressBar>(window, QStringLiteral("Bar1"))->value();
    return seen;
}

}  // namespace

class UpdateWindowTest : public QObject {
    Q_OBJECT

private:
    // The hooks of a real update except the rule check, the password
    // refresh, the usage report and the clock. beforeFetch and afterFetch
    // see the window around each page the program fetches.
    update::UpdateHooks Hooks() {
        update::UpdateHooks hooks = update::DefaultUpdateHooks(*m_db);
        hooks.checkRules = [] { return true; };
        hooks.refreshPassword = [] { return false; };
        hooks.prepareUsageReport = nullptr;
        hooks.now = [] { return QDateTime(QDate(2026, 5, 23), QTime(14, 5, 9)); };
        // Every page through the hook below, where the suite watches the
        // window: none is fetched ahead.
        hooks.fetchAhead = nullptr;
        hooks.fetch = [this, fetch = hooks.fetch](const QString& url, QByteArray& page) {
            ui::frmUpdate* window = OpenUpdateWindow();
            m_fetched << url;
            m_beforeFetch.push_back(Look(window));
            if (m_onFetch) {
                m_onFetch(window, url);
            }
            const auto result = fetch(url, page);
            m_afterFetch.push_back(Look(window));
            return result;
        };
        hooks.redraw = [this] {
            ++m_redraws;
            m_atRedraw = Look(OpenUpdateWindow());
        };
        return hooks;
    }

    UpdateRun::Result Run(const QStringList& list) {
        QString error;
        if (!update::WriteRunList(list, &error)) {
            qFatal("%s", qPrintable(error));
        }
        return ui::ShowUpdateWindow(*m_db, nullptr, Hooks(), &m_rules);
    }

    QStringList Items() {
        QStringList items;
        core::Statement s = m_db->Prepare(
            QStringLiteral("SELECT ItemNumber FROM Auctions WHERE UserName = ? ORDER BY 1"));
        s.Bind(1, kUser);
        while (s.Step()) {
            items << s.Text(0);
        }
        return items;
    }

    QString LastUpdate() {
        core::Statement s =
            m_db->Prepare(QStringLiteral("SELECT LastUpdate FROM UserSites WHERE UserName = ? AND "
                                         "AuctionSiteFlag = 0"));
        s.Bind(1, kUser);
        return s.Step() ? s.Text(0) : QStringLiteral("<no row>");
    }

    // The window must be gone and the session speaking through its own Ui again.
    void ExpectWindowGone(core::Ui* sessionUi) {
        QCOMPARE(m_redraws, 1);
        QVERIFY(!m_atRedraw.visible);
        QVERIFY(OpenUpdateWindow() == nullptr);
        QCOMPARE(core::CurrentSession().ui, sessionUi);
        // The end-of-run steps ran whatever happened.
        QCOMPARE(LastUpdate(), QStringLiteral("05/23/26 14:05:09 PST"));
    }

    // A cancelled run: told once, what was written before kept, no page
    // after the cancel fetched, and the window gone.
    void ExpectCancelled(UpdateRun::Result result, const QStringList& items, int fetched) {
        QCOMPARE(result, UpdateRun::Result::Cancelled);
        QCOMPARE(m_ui->Messages(), QStringList{update::CancelMessageText()});
        QCOMPARE(m_ui->Titles(), QStringList{update::CancelMessageTitle()});
        QCOMPARE(Items(), items);
        QCOMPARE(m_fetched.size(), fetched);
        ExpectWindowGone(m_ui.get());
    }

    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::unique_ptr<Site> m_site;
    std::optional<core::Database> m_db;
    update::RuleStore m_rules;
    std::function<void(ui::frmUpdate*, const QString&)> m_onFetch;
    QStringList m_fetched;
    std::vector<Seen> m_beforeFetch;
    std::vector<Seen> m_afterFetch;
    Seen m_atRedraw;
    int m_redraws = 0;

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        const QString error = test::StartProgramRoot(*m_root, *m_ui);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        m_db.emplace(core::OpenStore());
        core::AddUser(*m_db, {kUser, QStringLiteral("s1"), QStringLiteral("secret"),
                              QStringLiteral("s1@example.com")});
        core::SetCurrentUser(kUser);
        m_site = std::make_unique<Site>();
        QVERIFY(m_site->Port() > 0);
        m_rules.SetText(update::kSiteStore, RulesFor(m_site->Port(), test::ClosedPort()));
        m_onFetch = nullptr;
        m_fetched.clear();
        m_beforeFetch.clear();
        m_afterFetch.clear();
        m_atRedraw = Seen();
        m_redraws = 0;
    }
    void cleanup() {
        m_site.reset();
        m_db.reset();
        core::SetSettingsFolder({});
        core::ResetSession();
        m_ui.reset();
        m_root.reset();
    }

    void aWholeRunShowsItsWordsProgressAndDetails() {
        m_onFetch = [](ui::frmUpdate* window, const QString& url) {
            if (url.endsWith(QStringLiteral("/time"))) {
                QTest::mouseClick(Named<QPushButton>(window, QStringLiteral("cmdShowDetails")),
                                  Qt::LeftButton);
            }
        };
        const auto result = Run({"Current Time eBay", "Current Auctions eBay"});
        QCOMPARE(result, UpdateRun::Result::Complete);
        QCOMPARE(m_ui->Messages(), QStringList());
        QCOMPARE(Items(), QStringList({"101", "102", "103"}));

        const QString site = QStringLiteral("http://127.0.0.1:%1").arg(m_site->Port());
        // Each page asked for, and the window before it: the modal window
        // up, the protocol's words, the fetch's words on the page before, the
        // page's address, and Bar1 a step of Int(100 / (2 x 2)) further for
        // each half of a protocol behind it.
        const std::tuple<const char*, const char*, const char*, int> pages[] = {
            {"/time", "Fetching Site Time", "", 0},
            {"/selling?skip=0", "Fetching My Sales", "Site Time retrieved successfully.", 50},
            {"/selling?skip=2", "Processing My Sales", "My Sales retrieved successfully.", 75},
            {"/selling?skip=4", "Processing My Sales", "My Sales retrieved successfully.", 75},
        };
        QCOMPARE(m_fetched.size(), qsizetype(std::size(pages)));
        QCOMPARE(m_beforeFetch.size(), std::size(pages));
        for (size_t page = 0; page < std::size(pages); ++page) {
            const auto& [path, status, connectStatus, bar] = pages[page];
            const Seen& seen = m_beforeFetch[page];
            QCOMPARE(m_fetched.at(qsizetype(page)), site + QString::fromLatin1(path));
            QVERIFY(seen.visible);
            QVERIFY(seen.modal);
            QCOMPARE(seen.lastUrl, site + QString::fromLatin1(path));
            QCOMPARE(seen.status, QString::fromLatin1(status));
            QCOMPARE(seen.connectStatus, QString::fromLatin1(connectStatus));
            QCOMPARE(seen.bar, bar);
        }
        // The fetch's own words land on lblConnectStatus.
        for (const Seen& seen : m_afterFetch) {
            QCOMPARE(seen.connectStatus, QStringLiteral("Disconnected from Server."));
        }
        // Details shown from the first page on: the last record's first item stays.
        QCOMPARE(m_atRedraw.item, QStringLiteral("ItemNumber"));
        QCOMPARE(m_atRedraw.value, QStringLiteral("103"));
        QCOMPARE(m_atRedraw.status, QStringLiteral("Update complete."));
        QCOMPARE(m_atRedraw.connectStatus, QStringLiteral("My Sales retrieved successfully."));
        QCOMPARE(m_atRedraw.bar, 100);
        ExpectWindowGone(m_ui.get());
    }

    void aConnectionFailureTellsOverTheWindowAndEndsTheList() {
        // On the desktop the box opens over the update window.
        ui::QtUi desktop;
        core::CurrentSession().ui = &desktop;
        QStringList boxes;
        QTimer closer;
        closer.setInterval(0);
        connect(&closer, &QTimer::timeout, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) {
                return;
            }
            boxes << box->windowTitle() + QStringLiteral(" | ") + box->text() +
                         QStringLiteral(" | ") +
                         (box->parentWidget() ? box->parentWidget()->objectName() : QString());
            box->button(QMessageBox::Ok)->click();
        });
        closer.start();

        const auto result = Run({"Offline eBay", "Current Auctions eBay"});
        closer.stop();
        QCOMPARE(result, UpdateRun::Result::Aborted);
        QCOMPARE(boxes,
                 QStringList{QStringLiteral(
                     "Connection Error | Retrieval of Offline Page from eBay failed.  There is a "
                     "connection problem or eBay is experiencing technical difficulties.  Update "
                     "aborted. | frmUpdate")});
        QCOMPARE(m_fetched.size(), 1);
        QVERIFY(Items().isEmpty());
        QCOMPARE(m_atRedraw.connectStatus, QStringLiteral("Offline eBay connection error."));
        ExpectWindowGone(&desktop);
    }

    void cancelStopsTheRunAndKeepsWhatWasWritten() {
        m_onFetch = [](ui::frmUpdate* window, const QString& url) {
            if (url.endsWith(QStringLiteral("skip=2"))) {
                QTest::mouseClick(Named<QPushButton>(window, QStringLiteral("cmdCancel")),
                                  Qt::LeftButton);
            }
        };
        // The first page was written and stays; nothing after the cancel ran.
        ExpectCancelled(Run({"Current Auctions eBay", "Current Time eBay"}), {"101", "102"}, 2);
    }

    void escapeWhileRunningCancelsInsteadOfClosing() {
        bool stillUp = false;
        m_onFetch = [&stillUp](ui::frmUpdate* window, const QString&) {
            if (!window->Cancelled()) {
                QTest::keyClick(window, Qt::Key_Escape);
                stillUp = window->isVisible() && window->Cancelled();
            }
        };
        const auto result = Run({"Current Auctions eBay"});
        QVERIFY(stillUp);
        ExpectCancelled(result, {}, 1);
    }

    void cancelDuringATransferAbortsIt() {
        QString wordsWhenPressed;
        m_onFetch = [&](ui::frmUpdate* window, const QString& url) {
            if (!url.endsWith(QStringLiteral("/slow"))) {
                return;
            }
            auto* cancel = Named<QPushButton>(window, QStringLiteral("cmdCancel"));
            connect(cancel, &QPushButton::clicked, window, [&wordsWhenPressed, window] {
                wordsWhenPressed = LabelText(window, "lblConnectStatus");
            });
            m_site->CancelOnTransfer(cancel);
        };
        const auto result = Run({"Current Auctions eBay", "Slow Sales eBay", "Current Time eBay"});
        QVERIFY2(QRegularExpression(QStringLiteral("^Transferring Page: [0-9]+ bytes$"))
                     .match(wordsWhenPressed)
                     .hasMatch(),
                 qPrintable(wordsWhenPressed));
        QCOMPARE(m_afterFetch.back().connectStatus, QStringLiteral("Disconnected from Server."));
        ExpectCancelled(result, {"101", "102", "103"}, 4);
    }

    void cancelWhileAPageIsOnItsWayOverTheConnections() {
        update::UpdateHooks hooks = Hooks();
        hooks.fetchAhead = update::DefaultUpdateHooks(*m_db).fetchAhead;
        hooks.connections = 2;
        hooks.checkRules = [this] {
            m_site->CancelOnTransfer(
                Named<QPushButton>(OpenUpdateWindow(), QStringLiteral("cmdCancel")));
            return true;
        };
        QString error;
        // The silent page is asked for once the sales are written: while the
        // site time, the protocol before it, is read.
        QVERIFY(update::WriteRunList(
            {"Current Auctions eBay", "Current Time eBay", "Silent Sales eBay"}, &error));
        const auto result = ui::ShowUpdateWindow(*m_db, nullptr, std::move(hooks), &m_rules);
        const bool answered = m_site->NeverAnswered();
        m_site->LetGo();
        QVERIFY2(!answered, "the run waited for the page instead of its Cancel");
        // Every page came over the connections.
        ExpectCancelled(result, {"101", "102", "103"}, 0);
    }

    void oneUpdateAtATimeHoldsTheLockForTheWholeRun() {
        const QString busy = QStringLiteral("An update is already running (process %1).")
                                 .arg(QCoreApplication::applicationPid());
        {
            // Another window or a command line of this root is updating.
            update::UpdateLock elsewhere;
            QVERIFY(elsewhere.TryLock());
            QCOMPARE(Run({"Current Time eBay"}), UpdateRun::Result::Busy);
            QCOMPARE(m_ui->Messages(), QStringList{busy});
            QVERIFY(m_fetched.isEmpty());
            QCOMPARE(m_redraws, 0);
        }
        // Once it has ended, the window runs and holds the lock meanwhile.
        QStringList seenDuringRun;
        m_onFetch = [&seenDuringRun](ui::frmUpdate*, const QString&) {
            update::UpdateLock other;
            seenDuringRun << (other.TryLock() ? QStringLiteral("free") : other.FailureMessage());
        };
        QCOMPARE(Run({"Current Time eBay"}), UpdateRun::Result::Complete);
        QCOMPARE(seenDuringRun, QStringList{busy});
        ExpectWindowGone(m_ui.get());
        update::UpdateLock after;
        QVERIFY(after.TryLock());
    }

    void statusDotsComeAndGo() {
        ui::frmUpdate w;
        auto* status = Named<QLabel>(&w, QStringLiteral("lblStatus"));
        // Nothing to animate while the caption is empty.
        w.tmrStatus_Timer();
        QCOMPARE(status->text(), QString());
        w.Status(QStringLiteral("Fetching My Sales"));
        QStringList seen;
        for (int tick = 0; tick < 5; ++tick) {
            w.tmrStatus_Timer();
            seen << status->text();
        }
        QCOMPARE(seen,
                 (QStringList{
                     QStringLiteral("Fetching My Sales."), QStringLiteral("Fetching My Sales.."),
                     QStringLiteral("Fetching My Sales..."), QStringLiteral("Fetching My Sales"),
                     QStringLiteral("Fetching My Sales.")}));
        // A caption with a dot of its own keeps it when the dots are cut.
        w.Status(QStringLiteral("Preparing Update."));
        for (int tick = 0; tick < 4; ++tick) {
            w.tmrStatus_Timer();
        }
        QCOMPARE(status->text(), QStringLiteral("Preparing Update."));
    }

    void detailsShowAndHide() {
        ui::frmUpdate w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        auto* details = Named<QPushButton>(&w, QStringLiteral("cmdShowDetails"));
        auto* elapsed = Named<QLabel>(&w, QStringLiteral("lblTimeElapsed"));
        auto* timer1 = w.findChild<QTimer*>(QStringLiteral("Timer1"));
        QVERIFY(timer1 != nullptr);
        QCOMPARE(details->text(), QStringLiteral("&Show Details"));
        QVERIFY(!elapsed->isVisible());
        QVERIFY(!w.DetailsShown());
        const int shortHeight = w.height();
        for (const bool shown : {true, false}) {
            QTest::mouseClick(details, Qt::LeftButton);
            QCOMPARE(details->text(),
                     shown ? QStringLiteral("&Hide Details") : QStringLiteral("&Show Details"));
            QCOMPARE(w.DetailsShown(), shown);
            QCOMPARE(elapsed->isVisible(), shown);
            QCOMPARE(Named<QLabel>(&w, QStringLiteral("lblItem"))->isVisible(), shown);
            QCOMPARE(timer1->isActive(), shown);
            if (!shown) {
                QTRY_COMPARE(w.height(), shortHeight);
                continue;
            }
            QTRY_VERIFY(w.height() > shortHeight);
            w.Timer1_Timer();
            QVERIFY2(QRegularExpression(QStringLiteral("^[0-9]+:[0-5][0-9]:[0-5][0-9]$"))
                         .match(elapsed->text())
                         .hasMatch(),
                     qPrintable(elapsed->text()));
        }

        // Not running: Cancel only sets the flag the next run clears.
        QTest::mouseClick(Named<QPushButton>(&w, QStringLiteral("cmdCancel")), Qt::LeftButton);
        QVERIFY(w.Cancelled());
    }

    void addressesShowNoPassword() {
        // The sign-in's encoded password rides in the page address; whatever
        // the field is called and wherever it stands, the window hides it.
        const std::pair<const char*, const char*> addresses[] = {
            {"http://h/aw-cgi/eBayISAPI.dll?MyEbayBidding&userid=ann&pass=xY9%2Bq&days=30",
             "http://h/aw-cgi/eBayISAPI.dll?MyEbayBidding&userid=ann&pass=****&days=30"},
            {"http://h/p?Password=secret", "http://h/p?Password=****"},
            {"http://h/p?PASS=1&u=ann&userpass=2", "http://h/p?PASS=****&u=ann&userpass=****"},
            {"http://h/p?pass=&u=ann", "http://h/p?pass=****&u=ann"},
            {"http://h/selling?skip=2&passage=1", "http://h/selling?skip=2&passage=****"},
            // "pass" outside the query, or in a value, is no field name.
            {"http://h/compass/page?skip=2", "http://h/compass/page?skip=2"},
            {"http://h/p?note=pass&u=ann", "http://h/p?note=pass&u=ann"},
        };
        for (const auto& [address, shown] : addresses) {
            QCOMPARE(ui::frmUpdate::AddressForShow(QString::fromLatin1(address)),
                     QString::fromLatin1(shown));
        }

        // A long address stays on one line of the window's width, the whole
        // of it (password hidden) in the tip.
        ui::frmUpdate w;
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        const int width = w.width();
        const QString longUrl = QStringLiteral("http://127.0.0.1:8080/aw-cgi/eBayISAPI.dll?") +
                                QString(300, u'x') + QStringLiteral("&pass=secret");
        w.LastUrl(longUrl);
        QApplication::processEvents();
        auto* label = Named<QLabel>(&w, QStringLiteral("lblLastUrl"));
        QCOMPARE(w.width(), width);
        QVERIFY(!label->text().contains(QStringLiteral("secret")));
        QVERIFY(label->text().contains(QChar(0x2026)));
        QVERIFY(label->toolTip().endsWith(QStringLiteral("&pass=****")));
    }
};

QTEST_MAIN(UpdateWindowTest)
#include "update_window_ui_test.moc"
