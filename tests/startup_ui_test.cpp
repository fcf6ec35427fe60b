// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop program's start on the offscreen platform, through the same
// start-up that lotwright runs: with no user the new-user window appears,
// and filling it writes the user's rows while cancelling it leaves the
// marker and no main window; and the demo path, where a new user's first
// retrieval runs through the update window against a real lotwright-site on
// loopback and the main window then lists the sales and bids that the site
// holds for that user.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QComboBox>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QProcess>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QtTest>
#include <functional>

#include "admin/tips.h"
#include "core/rule_text.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/tracking.h"
#include "tests/support/site_process.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/desktop_start.h"
#include "ui/frmAuction.h"

using namespace lw;

using lw::test::Named;

namespace {

// A loopback port on which nothing listens.
int ClosedPort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t size = sizeof address;
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), size);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(fd);
    return ntohs(address.sin_port);
}

// The shipped rules with the site's address moved to port, left in Configs
// with protfix.cfg so that the start installs them, as a rule update would.
void LeaveRulesFor(const test::TempRoot& root, int port) {
    for (const QString& name : {QStringLiteral("site.pro"), QStringLiteral("info.pro")}) {
        auto text = core::LoadRuleFile(test::SourceDir() + QStringLiteral("/rules/") + name);
        QVERIFY(text.has_value());
        text->replace(QStringLiteral("127.0.0.1:8750"), QStringLiteral("127.0.0.1:%1").arg(port));
        root.Write(QStringLiteral("Configs/") + name, text->toUtf8());
    }
    root.Write(QStringLiteral("Configs/protfix.cfg"), "1");
}

QWidget* VisibleTopLevel(const QString& objectName) {
    const auto widgets = QApplication::topLevelWidgets();
    for (QWidget* widget : widgets) {
        if (widget->objectName() == objectName && widget->isVisible()) {
            return widget;
        }
    }
    return nullptr;
}

// Acts on the window once it shows, from inside its modal loop.
void WhenShown(const QString& objectName, std::function<void(QWidget*)> act) {
    auto* poll = new QTimer;
    poll->setInterval(20);
    QObject::connect(poll, &QTimer::timeout, [poll, objectName, act = std::move(act)] {
        if (QWidget* window = VisibleTopLevel(objectName)) {
            poll->stop();
            poll->deleteLater();
            act(window);
        }
    });
    poll->start();
}

// Counts the showings of windows by name, however briefly they stay.
class ShowWatch : public QObject {
public:
    explicit ShowWatch(QString objectName) : m_name(std::move(objectName)) {
        qApp->installEventFilter(this);
    }
    int shown = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show && watched->objectName() == m_name) {
            ++shown;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QString m_name;
};

void FillNewUser(QWidget* window, const QString& name, const QString& id, const QString& password) {
    QTest::keyClicks(Named<QLineEdit>(window, QStringLiteral("txtUserName")), name);
    QTest::keyClicks(Named<QLineEdit>(window, QStringLiteral("txtUserID")), id);
    QTest::keyClicks(Named<QLineEdit>(window, QStringLiteral("txtPassword")), password);
    QTest::keyClicks(Named<QLineEdit>(window, QStringLiteral("txtConfirmPassword")), password);
    QTest::keyClicks(Named<QLineEdit>(window, QStringLiteral("txtEmail")),
                     QStringLiteral("demo@example.com"));
    QTest::mouseClick(Named<QPushButton>(window, QStringLiteral("cmdOK")), Qt::LeftButton);
}

qint64 Count(core::Database& db, const QString& sql, const QString& value = QString()) {
    core::Statement s = db.Prepare(sql);
    if (s.ParameterCount() > 0) {
        s.Bind(1, value);
    }
    return s.Step() ? s.Value(0).toLongLong() : -1;
}

// A count over the site's own database.
qint64 SiteCount(const QString& path, const QByteArray& sql, qint64 since) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READONLY, nullptr) !=
        SQLITE_OK) {
        sqlite3_close(db);
        return -1;
    }
    sqlite3_stmt* stmt = nullptr;
    qint64 count = -1;
    if (sqlite3_prepare_v2(db, sql.constData(), -1, &stmt, nullptr) == SQLITE_OK) {
        sqlite3_bind_text(stmt, 1, "demo_seller", -1, SQLITE_STATIC);
        sqlite3_bind_int64(stmt, 2, since);
        if (sqlite3_step(stmt) == SQLITE_ROW) {
            count = sqlite3_column_int64(stmt, 0);
        }
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return count;
}

// Every settings file under the root's settings folder, by name.
QMap<QString, QByteArray> SettingsFiles(const test::TempRoot& root) {
    QMap<QString, QByteArray> files;
    QDirIterator it(root.File(QStringLiteral("settings")), QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(path, test::ReadAll(path));
    }
    return files;
}

int GridRows(QWidget* window, const QString& grid) {
    return Named<QTableView>(window, grid)->model()->rowCount();
}

}  // namespace

class StartupWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        core::ResetSession(m_ui.get());
        core::CurrentSession().ShippedDir = test::SourceDir();
        core::SetSettingsFolder(m_root->File(QStringLiteral("settings")));
    }

    void cleanup() {
        const auto widgets = QApplication::topLevelWidgets();
        for (QWidget* widget : widgets) {
            widget->close();
        }
        core::SetSettingsFolder(QString());
        core::ResetSession();
    }

    void aNewUserFilledInWritesTheRowsAndOpensTheMainWindow() {
        LeaveRulesFor(*m_root, ClosedPort());
        ShowWatch update(QStringLiteral("frmUpdate"));
        bool asked = false;
        QString usageNote;
        WhenShown(QStringLiteral("frmNewUser"), [&](QWidget* window) {
            asked = true;
            usageNote = Named<QLabel>(window, QStringLiteral("lblTracking"))->text();
            FillNewUser(window, QStringLiteral("Ann"), QStringLiteral("ann_sells"),
                        QStringLiteral("s3cret"));
        });
        ui::DesktopStart start = ui::StartDesktop(m_root->Path());
        QVERIFY(asked);
        // The new-user window says what the usage report would send; the
        // main window does not say it again (no message below).
        QCOMPARE(usageNote, core::UsageReportSummary());
        QVERIFY(start.window != nullptr);
        QVERIFY(start.window->isVisible());
        QCOMPARE(start.window->windowTitle(),
                 QStringLiteral("Tolvane Lotwright Pro: Welcome Ann!"));

        core::Database db = core::OpenStore();
        QCOMPARE(Count(db, QStringLiteral("SELECT COUNT(*) FROM Users")), 1);
        QCOMPARE(Count(db,
                       QStringLiteral("SELECT COUNT(*) FROM Users WHERE UserName = ? AND "
                                      "isDefault = 1"),
                       QStringLiteral("Ann")),
                 1);
        QCOMPARE(Count(db,
                       QStringLiteral("SELECT COUNT(*) FROM UserSites WHERE UserName = ? "
                                      "AND AuctionSiteFlag = 0 AND UserID = 'ann_sells' "
                                      "AND LastUpdate IS NULL"),
                       QStringLiteral("Ann")),
                 1);
        // The site cannot be reached: the retrieval waits without a word.
        QCOMPARE(update.shown, 0);
        QVERIFY(m_ui->Messages().isEmpty());
        QVERIFY(!QFile::exists(m_root->File(QStringLiteral("Configs/RunProt.dat"))));
        QCOMPARE(core::CurrentSession().CurrentUser, QStringLiteral("Ann"));

        // File, Exit closes the window and saves nothing on the way out.
        const QMap<QString, QByteArray> settingsBefore = SettingsFiles(*m_root);
        QVERIFY(!settingsBefore.isEmpty());
        start.window->mnuFileExit_Click();
        QVERIFY(!start.window->isVisible());
        QCOMPARE(SettingsFiles(*m_root), settingsBefore);
    }

    void cancellingTheNewUserWindowEndsTheStartWithTheMarker() {
        LeaveRulesFor(*m_root, ClosedPort());
        bool asked = false;
        WhenShown(QStringLiteral("frmNewUser"), [&](QWidget* window) {
            asked = true;
            QTest::mouseClick(Named<QPushButton>(window, QStringLiteral("cmdCancel")),
                              Qt::LeftButton);
        });
        ui::DesktopStart start = ui::StartDesktop(m_root->Path());
        QVERIFY(asked);
        QVERIFY(start.window == nullptr);
        QCOMPARE(start.exitCode, 0);
        QVERIFY(QFile::exists(m_root->File(QStringLiteral("Configs/nuwcancel.cfg"))));
        QVERIFY(VisibleTopLevel(QStringLiteral("frmAuction")) == nullptr);
        QVERIFY(m_ui->Messages().isEmpty());
        core::Database db = core::OpenStore();
        QCOMPARE(Count(db, QStringLiteral("SELECT COUNT(*) FROM Users")), 0);

        // The next start removes the marker of this one and asks again.
        bool askedAgain = false;
        WhenShown(QStringLiteral("frmNewUser"), [&](QWidget* window) {
            askedAgain = true;
            FillNewUser(window, QStringLiteral("Ann"), QStringLiteral("ann_sells"),
                        QStringLiteral("s3cret"));
        });
        ui::DesktopStart second = ui::StartDesktop(m_root->Path());
        QVERIFY(askedAgain);
        QVERIFY(second.window != nullptr);
        QVERIFY(!QFile::exists(m_root->File(QStringLiteral("Configs/nuwcancel.cfg"))));
    }

    void theDemoPathRetrievesAndListsTheUsersSalesAndBids() {
        const QString siteDb = m_root->File(QStringLiteral("market.db"));
        test::SiteProcess site(
            {QStringLiteral("--seed"), QStringLiteral("12"), QStringLiteral("--db"), siteDb});
        QVERIFY2(site.Ok(), site.Error().c_str());
        LeaveRulesFor(*m_root, site.Port());

        WhenShown(QStringLiteral("frmNewUser"), [](QWidget* window) {
            FillNewUser(window, QStringLiteral("Demo"), QStringLiteral("demo_seller"),
                        QStringLiteral("demo"));
        });
        ShowWatch update(QStringLiteral("frmUpdate"));
        ui::DesktopStart start = ui::StartDesktop(m_root->Path());
        QVERIFY(start.window != nullptr);
        QCOMPARE(update.shown, 1);
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Retrieving eBay Data")});

        core::Database db = core::OpenStore();
        QCOMPARE(Count(db,
                       QStringLiteral("SELECT COUNT(*) FROM UserSites WHERE UserName = ? AND "
                                      "LastUpdate IS NOT NULL"),
                       QStringLiteral("Demo")),
                 1);

        // What the site lists for the user: lots running or ended in the
        // last 30 days by the site's clock.
        const auto state =
            QJsonDocument::fromJson(QByteArray::fromStdString(site.Get("/admin/state").body))
                .object();
        const qint64 since = state.value(QStringLiteral("now")).toInteger() - 30 * 86400;
        const QByteArray seller =
            "SELECT COUNT(*) FROM items i JOIN users u ON u.id = i.seller "
            "WHERE u.user_id = ?1 AND i.end_time >= ?2";
        const QByteArray bidder =
            "SELECT COUNT(*) FROM bidder_lots b JOIN users u ON u.id = b.bidder "
            "WHERE u.user_id = ?1 AND b.end_time >= ?2";
        const QByteArray today =
            " AND date(end_time, 'unixepoch', 'localtime') >= "
            "date('now', 'localtime')";
        const QByteArray oldEnough =
            " AND date(end_time, 'unixepoch', 'localtime') <= "
            "date('now', 'localtime', '-3 days')";
        const qint64 siteSales = SiteCount(siteDb, seller, since);
        const qint64 siteBids = SiteCount(siteDb, bidder, since);
        QVERIFY(siteSales > 0);
        QVERIFY(siteBids > 0);
        QCOMPARE(Count(db, QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE UserName = ?"),
                       QStringLiteral("Demo")),
                 siteSales);
        QCOMPARE(Count(db, QStringLiteral("SELECT COUNT(*) FROM Bids WHERE UserName = ?"),
                       QStringLiteral("Demo")),
                 siteBids);

        // The main window: both lists open on their current group, all rows
        // on one page; the archive shows lots ended three days ago or more.
        QWidget* window = start.window.get();
        QCOMPARE(GridRows(window, QStringLiteral("grdAuction")),
                 SiteCount(siteDb, seller + today, since));
        QCOMPARE(GridRows(window, QStringLiteral("GrdBid")),
                 SiteCount(siteDb, bidder + today, since));
        Named<QComboBox>(window, QStringLiteral("lstAuctionGroup"))->setCurrentIndex(1);
        start.window->lstAuctionGroup_Click();
        QCOMPARE(GridRows(window, QStringLiteral("grdAuction")),
                 SiteCount(siteDb, seller + oldEnough, since));
        Named<QComboBox>(window, QStringLiteral("lstBidGroup"))->setCurrentIndex(1);
        start.window->lstBidGroup_Click();
        QCOMPARE(GridRows(window, QStringLiteral("GrdBid")),
                 SiteCount(siteDb,
                           bidder + " AND date(end_time, 'unixepoch', 'localtime') < "
                                    "date('now', 'localtime')",
                           since));

        // The tips held back during the retrieval come back on.
        QVERIFY(admin::ShowTipsAtStartup());
        QTRY_VERIFY(VisibleTopLevel(QStringLiteral("frmTip")) != nullptr ||
                    window->findChild<QWidget*>(QStringLiteral("frmTip")) != nullptr);
    }

    void oneMainWindowPerRootAndTheUsageReportToldOnce() {
        // A user made without the new-user window, as the command line's
        // init makes one.
        LeaveRulesFor(*m_root, ClosedPort());
        {
            QString error;
            QVERIFY(core::SetupDirectories(m_root->Path(), &error));
            core::Database db = core::OpenStore();
            core::AddUser(db, {QStringLiteral("Ann"), QStringLiteral("ann_sells"),
                               QStringLiteral("s3cret"), QStringLiteral("ann@example.com")});
        }
        auto first = std::make_unique<ui::DesktopStart>(ui::StartDesktop(m_root->Path()));
        QVERIFY(first->window != nullptr);
        // The first start says what the usage report would send, which is
        // nothing until the user switches it on.
        QCOMPARE(m_ui->Messages(), QStringList{core::UsageReportSummary()});
        QCOMPARE(m_ui->Titles(), QStringList{QStringLiteral("Usage Report")});
        QVERIFY(!core::UsageReportOn());

        // A second window on the same root is refused before it touches
        // anything, and says which process has the first.
        ui::DesktopStart second = ui::StartDesktop(m_root->Path());
        QVERIFY(second.window == nullptr);
        QCOMPARE(second.exitCode, 1);
        QCOMPARE(m_ui->Messages().size(), 2);
        QVERIFY2(m_ui->Messages().last().contains(
                     QStringLiteral("(process %1)").arg(QCoreApplication::applicationPid())),
                 qPrintable(m_ui->Messages().last()));

        // Once the first has gone the root opens again, and the notice is
        // not repeated.
        first->window->close();
        first.reset();
        auto third = std::make_unique<ui::DesktopStart>(ui::StartDesktop(m_root->Path()));
        QVERIFY(third->window != nullptr);
        QCOMPARE(m_ui->Messages().size(), 2);
        third->window->close();
        third.reset();

        // The lock of a window whose process was killed is taken over.
        QProcess gone;
        gone.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo $$")});
        QVERIFY(gone.waitForFinished());
        const QByteArray pid = gone.readAllStandardOutput().trimmed();
        QFile left(m_root->File(QStringLiteral("Data/window.lock")));
        QVERIFY(left.open(QIODevice::WriteOnly));
        left.write(pid + "\nlotwright\n" + QSysInfo::machineHostName().toUtf8() + "\n");
        left.close();
        ui::DesktopStart fourth = ui::StartDesktop(m_root->Path());
        QVERIFY(fourth.window != nullptr);
        QCOMPARE(m_ui->Messages().size(), 2);
    }

private:
    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
};

QTEST_MAIN(StartupWindowTest)
#include "startup_ui_test.moc"
