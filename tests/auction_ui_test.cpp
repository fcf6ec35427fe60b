// SPDX-License-Identifier: GPL-3.0-or-later
// The main window on the offscreen platform over a prepared database: the
// rows, captions, totals and move buttons of My Sales and My Bids, head-click
// sorts, the item panels of a selected row (a multi-winner sale included),
// the delete and item cost commands, an update command while the site is
// unreachable, a site link, the time-left refresh of Timer2, the analysis
// tab, and a database of 100,000 sales with Nulls, megabyte titles and quotes.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QFile>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <QtTest>
#include <memory>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/frmAuction.h"
#include "ui/frmGeneral.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "views/analysis.h"

using namespace lw;

using lw::test::EndIn;
using lw::test::Named;

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");
const QString kSiteId = QStringLiteral("pat_sells");
const QString kSiteHost = QStringLiteral("127.0.0.1:8750");

void SetOption(const QString& key, const QVariant& value) {
    core::SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key, value);
}

// A row of any table from column names and values; a null QVariant is Null.
void Insert(core::Database& db, const QString& table, const QStringList& columns,
            const QVariantList& values) {
    const QStringList marks(columns.size(), QStringLiteral("?"));
    core::Statement s =
        db.Prepare(QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") +
                   columns.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (") +
                   marks.join(QStringLiteral(", ")) + u')');
    for (qsizetype i = 0; i < values.size(); ++i) {
        s.Bind(static_cast<int>(i + 1), values.at(i));
    }
    s.Run();
}

void AddSale(core::Database& db, const QString& item, const QVariant& title, const QString& bids,
             const QString& highBid, const QString& reserve, const QString& end,
             const QString& bidder, const QString& feedback,
             const QString& quantity = QStringLiteral("1"), const QString& user = kUser) {
    Insert(db, "Auctions",
           {"UserName", "ItemNumber", "ItemTitle", "NumberBids", "HighBid", "ReserveBid", "EndDate",
            "HighBidderName", "HighBidderFeedback", "Quantity", "ItemCategory"},
           {user, item, title, bids, highBid, reserve, end, bidder, feedback, quantity,
            "Lamps & Lighting"});
}

void AddBid(core::Database& db, const QString& item, const QString& title, const QString& highBid,
            const QString& end, bool winning, const QString& seller,
            const QString& sellerFeedback) {
    Insert(db, "Bids",
           {"UserName", "ItemNumber", "ItemTitle", "NumberBids", "HighBid", "EndDate",
            "HighBidderName", "HighBidderFeedback", "Winning", "SellerName", "SellerFeedback",
            "MaximumBid"},
           {kUser, item, title, "2", highBid, end, winning ? kSiteId : QStringLiteral("rival"),
            "(40)", winning, seller, sellerFeedback, "$30.00"});
}

QStringList Column(QTableView* grid, int column) {
    QStringList texts;
    for (int row = 0; row < grid->model()->rowCount(); ++row) {
        texts << grid->model()->index(row, column).data().toString();
    }
    return texts;
}

void SelectItem(QTableView* grid, const QString& item) {
    const QStringList items = Column(grid, 0);
    const qsizetype row = items.indexOf(item);
    if (row < 0) {
        qFatal("item %s is not listed", qPrintable(item));
    }
    grid->setCurrentIndex(grid->model()->index(static_cast<int>(row), 1));
}

// What a control of an item panel shows: a frame its title, a star the name
// of its picture, a label its text.
QString Shows(const QWidget* control) {
    if (const auto* frame = qobject_cast<const QGroupBox*>(control)) {
        return frame->title();
    }
    if (control->objectName().endsWith(QStringLiteral("Star"))) {
        return control->property("picture").toString();
    }
    return qobject_cast<const QLabel*>(control)->text();
}

void ClickHead(QTableView* grid, int column) {
    QHeaderView* head = grid->horizontalHeader();
    QTest::mouseClick(head->viewport(), Qt::LeftButton, {},
                      QPoint(head->sectionViewportPosition(column) + head->sectionSize(column) / 2,
                             head->height() / 2));
}

bool Exists(core::Database& db, const QString& table, const QString& item) {
    core::Statement s = db.Prepare(QStringLiteral("SELECT 1 FROM ") + table +
                                   QStringLiteral(" WHERE ItemNumber = ?"));
    s.Bind(1, item);
    return s.Step();
}

// A socket listening on a free loopback port: the connection test counts it
// as the site. Closed, the port is one where nothing answers.
class Listener {
public:
    Listener() {
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        socklen_t length = sizeof address;
        if (m_fd < 0 || ::bind(m_fd, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
            ::listen(m_fd, 8) != 0 ||
            ::getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            qFatal("no loopback socket");
        }
        m_port = ntohs(address.sin_port);
    }
    ~Listener() { Close(); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    void Close() {
        if (m_fd >= 0) {
            ::close(m_fd);
            m_fd = -1;
        }
    }
    quint16 Port() const { return m_port; }

private:
    int m_fd = -1;
    quint16 m_port = 0;
};

}  // namespace

class AuctionWindowTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::unique_ptr<ui::frmAuction> m_window;
    QStringList m_opened;
    QString m_siteHost;

    core::Database Db() { return core::OpenStore(); }

    // The site's pages moved to another port of this machine: the connection
    // test then reaches whatever listens there, or nothing.
    void MoveSite(quint16 port) {
        update::RuleStore& rules = update::Rules();
        QString text = rules.Text(0);
        const QString host = QStringLiteral("127.0.0.1:%1").arg(port);
        text.replace(m_siteHost, host);
        rules.SetText(0, text);
        m_siteHost = host;
    }

    quint16 ClosedPort() {
        Listener probe;
        probe.Close();
        return probe.Port();
    }

    // Three current sales (one of them multi-winner), two archived, one of
    // another user; two current bids and one archived.
    void Prepare() {
        core::Database db = Db();
        AddSale(db, "1001", "Brass lamp", "3", "$12.50", "$10.00", EndIn(2), "buyer_a", "(150)");
        AddSale(db, "1002", "Tom &amp; Jerry's \"cel\"", "-", "$5.00", "$8.00", EndIn(1), "-", "-");
        AddSale(db, "1003", "Marbles, lot of 4", "4", "$2.50", "-", EndIn(3), "Dutch Auction", "-",
                "4");
        for (const QVariantList& winner : {QVariantList{"alice", "3", "$2.00", "(12)"},
                                           QVariantList{"bob", "1", "$2.50", "(5)"}}) {
            Insert(db, "Dutch",
                   {"ItemNumber", "UserName", "HighBidderName", "Quantity", "HighBid",
                    "HighBidderFeedback"},
                   QVariantList{"1003", kUser} + winner);
        }
        AddSale(db, "2001", "Old clock", "1", "$20.00", "-", EndIn(-10), "buyer_b", "(3)");
        AddSale(db, "2002", "Old vase", "2", "$7.00", "-", EndIn(-5), "buyer_c", "(9)");
        AddSale(db, "9999", "Not mine", "1", "$1.00", "-", EndIn(1), "x", "(1)", "1", "Other");
        AddBid(db, "3001", "Tin robot", "$15.00", EndIn(1), true, "sam", "(1200)");
        AddBid(db, "3002", "Stamp album", "$4.00", EndIn(2), false, "sue", "(7)");
        AddBid(db, "3003", "Radio", "$9.00", EndIn(-10), true, "sid", "(50)");
    }

    ui::frmAuction* Open() {
        m_window = std::make_unique<ui::frmAuction>();
        m_window->SetUrlOpener([this](const QString& url) { m_opened << url; });
        m_window->show();
        m_window->Form_Load();
        return m_window.get();
    }

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        m_opened.clear();
        m_siteHost = kSiteHost;
        const QString error = test::StartProgramRoot(*m_root, *m_ui);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        core::Database db = Db();
        QVERIFY(update::DecryptProtocols(update::Rules(), db));
        core::AddUser(db, {kUser, kSiteId, QStringLiteral("secret"), QStringLiteral("p@x.org")});
        core::AddUser(
            db, {QStringLiteral("Other"), QStringLiteral("other"), QStringLiteral("pw"), QString()},
            false);
        core::SetCurrentUser(kUser);
        MoveSite(ClosedPort());
    }
    void cleanup() {
        m_window.reset();
        core::SetSettingsFolder(QString());
        core::ResetSession();
    }

    void listsShowTheirGroupsPagesAndCaptions() {
        Prepare();
        SetOption(QStringLiteral("CAViewInterval"), 2);
        ui::frmAuction* w = Open();
        QCOMPARE(w->objectName(), QStringLiteral("frmAuction"));
        QCOMPARE(w->windowTitle(), QStringLiteral("Tolvane Lotwright Pro: Welcome Pat O'Brien!"));
        auto* tabs = Named<QTabWidget>(w, QStringLiteral("SSTab1"));
        QCOMPARE(tabs->count(), 4);
        QCOMPARE(tabs->tabText(2), QStringLiteral("Tas&k Manager"));
        QVERIFY(tabs->isTabEnabled(2));

        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        auto* group = Named<QComboBox>(w, QStringLiteral("lstAuctionGroup"));
        auto* back = Named<QPushButton>(w, QStringLiteral("cmdMove0"));
        auto* forward = Named<QPushButton>(w, QStringLiteral("cmdMove1"));
        auto* first = Named<QPushButton>(w, QStringLiteral("cmdMove2"));
        auto* last = Named<QPushButton>(w, QStringLiteral("cmdMove3"));

        // First page of two, soonest end first; the other user's sale is absent.
        QCOMPARE(Column(sales, 0), (QStringList{"1002", "1001"}));
        QCOMPARE(Column(sales, 1).at(0), QStringLiteral("Tom & Jerry's \"cel\""));
        QCOMPARE(Column(sales, 2), (QStringList{"-", "3"}));
        QCOMPARE(sales->model()->headerData(4, Qt::Horizontal).toString(),
                 QStringLiteral("Time Left"));
        QCOMPARE(group->itemText(0), QStringLiteral("Current Sales (1 - 2 of 3)"));
        QCOMPARE(group->itemText(1), QStringLiteral("Archived Sales (1 - 2 of 2)"));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblInfo2"))->text(), QStringLiteral("$17.50"));
        QVERIFY(!back->isEnabled() && !first->isEnabled());
        QVERIFY(forward->isEnabled() && last->isEnabled());
        // The reserve colours the high bid: met is green, missed is red.
        QCOMPARE(sales->model()->index(1, 3).data(Qt::ForegroundRole).value<QColor>(),
                 QColor(Qt::darkGreen));
        QCOMPARE(sales->model()->index(0, 3).data(Qt::ForegroundRole).value<QColor>(),
                 QColor(Qt::darkRed));

        QTest::mouseClick(forward, Qt::LeftButton);
        QCOMPARE(Column(sales, 0), QStringList{"1003"});
        QCOMPARE(Column(sales, 2), QStringList{"*D*"});
        QCOMPARE(group->itemText(0), QStringLiteral("Current Sales (3 - 3 of 3)"));
        QVERIFY(back->isEnabled() && !forward->isEnabled() && !last->isEnabled());
        QTest::mouseClick(first, Qt::LeftButton);
        QCOMPARE(Column(sales, 0), (QStringList{"1002", "1001"}));

        // The archive: the end day in column 4, a total of its own.
        group->setCurrentIndex(1);
        Q_EMIT group->activated(1);
        QCOMPARE(Column(sales, 0), (QStringList{"2001", "2002"}));
        QCOMPARE(sales->model()->headerData(4, Qt::Horizontal).toString(), QStringLiteral("Ended"));
        QCOMPARE(Column(sales, 4).at(0), EndIn(-10).section(u',', 0, 0));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblLabel57"))->text(),
                 QStringLiteral("Archived Sales"));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblInfo2"))->text(), QStringLiteral("$27.00"));

        // Successful sales only: the sale without bids drops out.
        w->mnuCurrentAuctions_Click();
        QTest::mouseClick(Named<QCheckBox>(w, QStringLiteral("chkSuccessfulAuctions")),
                          Qt::LeftButton, {}, QPoint(6, 6));
        QCOMPARE(Column(sales, 0), (QStringList{"1001", "1003"}));
        QCOMPARE(group->itemText(0), QStringLiteral("Successful Current Sales (1 - 2 of 2)"));

        auto* bids = Named<QTableView>(w, QStringLiteral("GrdBid"));
        auto* bidGroup = Named<QComboBox>(w, QStringLiteral("lstBidGroup"));
        QCOMPARE(bids->model()->rowCount(), 2);
        QCOMPARE(bidGroup->itemText(0), QStringLiteral("Current Bids (2)"));
        QCOMPARE(bidGroup->itemText(1), QStringLiteral("Archived Bids (1)"));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblInfo3"))->text(), QStringLiteral("$19.00"));
        w->mnuArchiveBids_Click();
        QCOMPARE(tabs->currentIndex(), 1);
        QCOMPARE(Column(bids, 0), QStringList{"3003"});
        QCOMPARE(m_ui->Messages(), QStringList());
    }

    void headClicksSortByTheColumnRules() {
        Prepare();
        ui::frmAuction* w = Open();
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        QCOMPARE(sales->model()->rowCount(), 3);
        // High bid by value, largest first, then the other way.
        ClickHead(sales, 3);
        QCOMPARE(Column(sales, 3), (QStringList{"$12.50", "$5.00", "$2.50"}));
        ClickHead(sales, 3);
        QCOMPARE(Column(sales, 3), (QStringList{"$2.50", "$5.00", "$12.50"}));
        // The description, A to Z on the first click.
        ClickHead(sales, 1);
        QCOMPARE(Column(sales, 0), (QStringList{"1001", "1003", "1002"}));
        // A sort leaves the stored page alone: a refill gives the query's order.
        w->ShowCurrentSales();
        QCOMPARE(Column(sales, 0), (QStringList{"1002", "1001", "1003"}));
    }

    void selectingARowFillsItsPanel() {
        Prepare();
        ui::frmAuction* w = Open();
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        auto* bids = Named<QTableView>(w, QStringLiteral("GrdBid"));
        auto* tabs = Named<QTabWidget>(w, QStringLiteral("SSTab1"));
        auto* plain = Named<QGroupBox>(w, QStringLiteral("fraAuctionInfo"));
        auto* dutch = Named<QGroupBox>(w, QStringLiteral("fraDutchInfo"));
        // What the panel's controls show of the selected item and, where
        // given, the colour they show it in.
        const struct {
            const char *item, *control, *text;
            QColor colour;
        } shown[] = {
            {"1001", "fraAuctionInfo", "Brass lamp (Item #1001)", {}},
            {"1001", "lblCurrently", "$12.50", {}},
            {"1001", "lblHighBidderName", "buyer_a (150)", {}},
            {"1001", "picStar", "eBay100-499", {}},
            {"1001", "lblCategory", "Lamps & Lighting", {}},
            // An ampersand of the title is doubled in the frame; a reserve not met is red.
            {"1002", "fraAuctionInfo", "Tom && Jerry's \"cel\" (Item #1002)", {}},
            {"1002", "lblBids", "0", {}},
            {"1002", "lblCurrently", "$5.00", Qt::darkRed},
            // A won bid is green; the seller has the star of 1000 to 9999.
            {"3001", "fraBidInfo", "Tin robot (Item #3001)", {}},
            {"3001", "lblBidSellerName", "sam (1200)", {}},
            {"3001", "PicSellerStar", "eBay1000-9999", {}},
            {"3001", "lblBidCurrently", "$15.00", Qt::darkGreen},
            {"3002", "lblBidSellerName", "sue (7)", {}},
            {"3002", "PicSellerStar", "eBayNoStar", {}},
        };
        for (const auto& c : shown) {
            const bool bid = c.item[0] == '3';
            tabs->setCurrentIndex(bid ? 1 : 0);
            SelectItem(bid ? bids : sales, QString::fromLatin1(c.item));
            auto* control = Named<QWidget>(w, QString::fromLatin1(c.control));
            QCOMPARE(Shows(control), QString::fromLatin1(c.text));
            if (c.colour.isValid()) {
                QCOMPARE(control->palette().color(QPalette::WindowText), c.colour);
            }
        }
        tabs->setCurrentIndex(0);
        SelectItem(sales, QStringLiteral("1001"));
        QVERIFY(!plain->isHidden() && dutch->isHidden());
        QVERIFY(!Named<QLabel>(w, QStringLiteral("picStar"))->pixmap().isNull());
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblTimeLeft"))->text(), Column(sales, 4).at(1));

        // The multi-winner sale: its own panel, the winners and their total.
        SelectItem(sales, QStringLiteral("1003"));
        QVERIFY(plain->isHidden() && !dutch->isHidden());
        auto* winners = Named<QListWidget>(w, QStringLiteral("lstDutchWinners"));
        QCOMPARE(winners->count(), 2);
        QVERIFY(winners->item(0)->text().startsWith(QStringLiteral("alice")));
        QCOMPARE(winners->item(0)->text().indexOf(QStringLiteral("@")),
                 winners->item(1)->text().indexOf(QStringLiteral("@")));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblTotalD"))->text(), QStringLiteral("$8.50"));
        // The time-left refresh (Timer2 and the Time Left button) counts down
        // behind the multi-winner panel and leaves that panel in view.
        w->Toolbar1_ButtonClick(QStringLiteral("TimeLeft"));
        QVERIFY(plain->isHidden() && !dutch->isHidden());
        QCOMPARE(winners->count(), 2);
        SelectItem(sales, QStringLiteral("1001"));
        w->Toolbar1_ButtonClick(QStringLiteral("TimeLeft"));
        QVERIFY(!plain->isHidden() && dutch->isHidden());
        QCOMPARE(plain->title(), QStringLiteral("Brass lamp (Item #1001)"));
    }

    // A long title (a site allows far more than fits) is cut in the panels:
    // the window's least size is the same whatever row is selected.
    void aLongTitleNeverWidensTheWindow() {
        Prepare();
        const QString title = QStringLiteral("Lamp") + QString(296, u'W');
        {
            core::Database db = Db();
            AddSale(db, "1004", title, "2", "$3.00", "-", EndIn(4), QString(120, u'b'), "(20)");
            AddBid(db, "3004", title, "$6.00", EndIn(4), false, QString(120, u's'), "(20)");
        }
        ui::frmAuction* w = Open();
        auto* tabs = Named<QTabWidget>(w, QStringLiteral("SSTab1"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        const QSize least = w->minimumSizeHint();
        const QSize size = w->size();
        QVERIFY(least.width() <= w->screen()->availableGeometry().width());
        const struct {
            int tab;
            const char* grid;
            const char* item;
            const char* frame;
        } cases[] = {{0, "grdAuction", "1004", "fraAuctionInfo"},
                     {1, "GrdBid", "3004", "fraBidInfo"}};
        for (const auto& c : cases) {
            tabs->setCurrentIndex(c.tab);
            SelectItem(Named<QTableView>(w, QString::fromLatin1(c.grid)),
                       QString::fromLatin1(c.item));
            auto* frame = Named<QGroupBox>(w, QString::fromLatin1(c.frame));
            QVERIFY(frame->title().startsWith(QStringLiteral("LampWWW")));
            QVERIFY(!frame->isHidden());
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            QCOMPARE(w->minimumSizeHint(), least);
            QVERIFY(w->minimumSize().width() <= least.width());
            QCOMPARE(w->size(), size);
        }
    }

    void deleteAsksAndOnlyYesDeletes() {
        Prepare();
        ui::frmAuction* w = Open();
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        auto* remove = Named<QAction>(w, QStringLiteral("mnuPopupDeleteAuction"));

        SelectItem(sales, QStringLiteral("1001"));
        m_ui->ScriptAnswer(core::Answer::No);
        remove->trigger();
        QCOMPARE(m_ui->History().back().kind, QStringLiteral("ask"));
        QCOMPARE(m_ui->History().back().text,
                 QStringLiteral("Are you sure you want to delete 1001 from your database?"));
        QCOMPARE(m_ui->History().back().title, QStringLiteral("Delete Auction?"));
        {
            core::Database db = Db();
            QVERIFY(Exists(db, QStringLiteral("Auctions"), QStringLiteral("1001")));
        }
        QCOMPARE(sales->model()->rowCount(), 3);

        m_ui->ScriptAnswer(core::Answer::Yes);
        remove->trigger();
        {
            core::Database db = Db();
            QVERIFY(!Exists(db, QStringLiteral("Auctions"), QStringLiteral("1001")));
            QVERIFY(Exists(db, QStringLiteral("Auctions"), QStringLiteral("1002")));
        }
        QCOMPARE(Column(sales, 0), (QStringList{"1002", "1003"}));
        QCOMPARE(Named<QComboBox>(w, QStringLiteral("lstAuctionGroup"))->itemText(0),
                 QStringLiteral("Current Sales (1 - 2 of 2)"));

        // The bid's mirror.
        auto* bids = Named<QTableView>(w, QStringLiteral("GrdBid"));
        SelectItem(bids, QStringLiteral("3002"));
        m_ui->ScriptAnswer(core::Answer::Yes);
        Named<QAction>(w, QStringLiteral("mnuPopupDeleteBid"))->trigger();
        QCOMPARE(m_ui->History().back().title, QStringLiteral("Delete Bid?"));
        QCOMPARE(Column(bids, 0), QStringList{"3001"});
    }

    void popUpMenusFollowTheItem() {
        Prepare();
        {
            core::Database db = Db();
            db.Prepare(QStringLiteral("UPDATE Auctions SET ToDoComplete = 1 WHERE ItemNumber = ?"))
                .Bind(1, QStringLiteral("2001"))
                .Run();
        }
        ui::frmAuction* w = Open();
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        auto* popup = Named<QMenu>(w, QStringLiteral("mnuPopup"));
        auto* relist = Named<QAction>(w, QStringLiteral("mnuItemRelist"));
        auto* feedback = Named<QAction>(w, QStringLiteral("mnuPopupViewBidderFeedback"));
        auto* back = Named<QAction>(w, QStringLiteral("mnuPopupAuctionReturntoTask"));
        auto* creatorRelist = Named<QAction>(w, QStringLiteral("mnuItemRelistCreator"));
        // Relist for an ended sale only, the bidder's feedback for a sale
        // with bids, back to the tasks for a sale whose tasks are done.
        const struct {
            const char* item;
            bool relist, feedback, back;
        } items[] = {{"1002", false, false, false},
                     {"1001", false, true, false},
                     {"2001", true, true, true}};
        for (const auto& c : items) {
            if (c.item[0] == '2') {
                w->mnuArchivedAuctions_Click();
            }
            const int row = static_cast<int>(Column(sales, 0).indexOf(QLatin1String(c.item)));
            sales->setCurrentIndex(sales->model()->index(row, 0));
            w->grdAuction_Popup(row, w->mapToGlobal(QPoint(20, 20)));
            popup->hide();
            QCOMPARE(relist->isEnabled(), c.relist);
            QCOMPARE(creatorRelist->isEnabled(), c.relist);
            QCOMPARE(feedback->isEnabled(), c.feedback);
            QCOMPARE(back->isEnabled(), c.back);
        }
        back->trigger();
        core::Database db = Db();
        core::Statement s =
            db.Prepare(QStringLiteral("SELECT ToDoComplete FROM Auctions WHERE ItemNumber = ?"));
        s.Bind(1, QStringLiteral("2001"));
        QVERIFY(s.Step());
        QCOMPARE(s.Int(QStringLiteral("ToDoComplete")), 0);
    }

    void statusBarShowsTheStatementBalance() {
        Prepare();
        {
            core::Database db = Db();
            // The balance, then a later ledger line of the history and another
            // user's statement.
            for (const QVariantList& line :
                 {QVariantList{kUser, QVariant(), "Current balance", "$0.00", "$12.34"},
                  QVariantList{kUser, "1001", "Final value fee", "$0.63", "$0.00"},
                  QVariantList{"Other", QVariant(), "Current balance", "$50.00", "$0.00"}}) {
                Insert(db, "AccountInfo",
                       {"UserName", "ItemNumber", "AccountType", "Debit", "Credit"}, line);
            }
        }
        ui::frmAuction* w = Open();
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblInfo1"))->text(), QStringLiteral("$12.34"));
        QVERIFY(!Named<QLabel>(w, QStringLiteral("lblInfo0"))->text().isEmpty());
        QVERIFY(Named<QTimer>(w, QStringLiteral("Timer1"))->isActive());
    }

    void itemCostWritesTheRow() {
        Prepare();
        ui::frmAuction* w = Open();
        SelectItem(Named<QTableView>(w, QStringLiteral("grdAuction")), QStringLiteral("1001"));
        bool answered = false;
        QTimer::singleShot(0, this, [&answered] {
            auto* dialog = qobject_cast<ui::frmGeneral*>(QApplication::activeModalWidget());
            if (dialog == nullptr) {
                return;
            }
            answered = true;
            auto* cost = dialog->findChild<QLineEdit*>(QStringLiteral("txtItemCost"));
            if (cost != nullptr) {
                cost->setText(QStringLiteral("$3.25"));
            }
            dialog->cmdOK_Click();
        });
        Named<QAction>(w, QStringLiteral("mnuItemCost"))->trigger();
        QVERIFY(answered);
        core::Database db = Db();
        core::Statement s =
            db.Prepare(QStringLiteral("SELECT ItemCost FROM Auctions WHERE ItemNumber = '1001'"));
        QVERIFY(s.Step());
        QCOMPARE(s.Text(0), QStringLiteral("$3.25"));
    }

    void updateWhileOfflineTellsAndWritesNothing() {
        Prepare();
        ui::frmAuction* w = Open();
        const QString runList = update::RunListPath();
        Named<QAction>(w, QStringLiteral("mnuUpdateAuctions"))->trigger();
        QCOMPARE(m_ui->Titles(), QStringList{"No ISP Connection"});
        QVERIFY(m_ui->Messages().at(0).contains(QStringLiteral("update your auction database")));
        QVERIFY(!QFile::exists(runList));

        // The complete update asks first; no leaves LastUpdate alone.
        {
            core::Database db = Db();
            db.Prepare(QStringLiteral("UPDATE UserSites SET LastUpdate = '01/02/03 04:05:06 PST'"))
                .Run();
        }
        m_ui->ScriptAnswer(core::Answer::No);
        w->mnuUpdateDatabaseAndAccount_Click();
        QCOMPARE(m_ui->History().back().title, QStringLiteral("Complete Update"));
        QVERIFY(m_ui->History().back().text.endsWith(QStringLiteral("Do you wish to proceed?")));
        m_ui->ScriptAnswer(core::Answer::Yes);
        w->mnuUpdateDatabaseAndAccount_Click();
        QCOMPARE(m_ui->Titles().size(), 2);
        QVERIFY(!QFile::exists(runList));
        core::Database db = Db();
        core::Statement s = db.Prepare(QStringLiteral("SELECT LastUpdate FROM UserSites"));
        QVERIFY(s.Step());
        QCOMPARE(s.Text(0), QStringLiteral("01/02/03 04:05:06 PST"));
    }

    void restoreEarlierRulesAsksFirstAndSaysWhenNoneAreKept() {
        Prepare();
        ui::frmAuction* w = Open();
        QAction* restore = Named<QAction>(w, QStringLiteral("mnuRestoreRules"));
        m_ui->ScriptAnswer(core::Answer::No);
        restore->trigger();
        QCOMPARE(m_ui->History().back().kind, QStringLiteral("ask"));
        QCOMPARE(m_ui->History().back().title, QStringLiteral("Restore Earlier Rules"));
        QVERIFY(m_ui->Messages().isEmpty());
        m_ui->ScriptAnswer(core::Answer::Yes);
        restore->trigger();
        QCOMPARE(m_ui->Titles(), QStringList{"Restore Earlier Rules"});
        QVERIFY(m_ui->Messages().at(0).contains(QStringLiteral("No earlier rules")));
    }

    void siteLinksOpenOnlyWhenTheSiteAnswers() {
        Prepare();
        {
            // A seller whose name needs escaping in a link.
            core::Database db = Db();
            db.Prepare(QStringLiteral("UPDATE Bids SET SellerName = ? WHERE ItemNumber = ?"))
                .BindAll(QStringLiteral("sam & co"), QStringLiteral("3001"))
                .Run();
        }
        ui::frmAuction* w = Open();
        SelectItem(Named<QTableView>(w, QStringLiteral("grdAuction")), QStringLiteral("1001"));
        Named<QAction>(w, QStringLiteral("mnuWWWViewItem"))->trigger();
        QVERIFY(m_opened.isEmpty());
        QCOMPARE(m_ui->Titles(), QStringList{"No ISP Connection"});

        Listener site;
        MoveSite(site.Port());
        // The item selected in its list; the link opened matches the pattern
        // and does not hold the words given.
        const struct {
            const char *item, *action, *link, *absent;
        } links[] = {
            {"1001", "mnuWWWViewItem", "item=1001$", ""},
            {"1001", "mnuPopupViewBidderFeedback", "userid=buyer_a$", ""},
            {"1001", "mnuMyEBay", "userid=pat_sells", "[PASSWORD]"},
            {"1001", "mnuItemRelist", "RelistItem&item=1001$", ""},
            {"3001", "mnuViewOtherAuctions", "ViewListedItems&userid=sam", "sam & co"},
            {"3001", "mnuPopupSellerFeedback", "ViewFeedback&userid=sam", "sam & co"},
        };
        for (const auto& c : links) {
            SelectItem(Named<QTableView>(w, c.item[0] == '3' ? "GrdBid" : "grdAuction"),
                       QString::fromLatin1(c.item));
            Named<QAction>(w, QString::fromLatin1(c.action))->trigger();
            QCOMPARE(m_opened.size(), qsizetype(&c - links) + 1);
            const QString opened = m_opened.value(m_opened.size() - 1);
            QVERIFY2(QRegularExpression(QString::fromLatin1(c.link)).match(opened).hasMatch(),
                     qPrintable(opened));
            QVERIFY2(*c.absent == 0 || !opened.contains(QLatin1String(c.absent)),
                     qPrintable(opened));
        }
        QCOMPARE(m_ui->Titles().size(), 1);
    }

    void timer2RedrawsTimeLeftAfterItsTicks() {
        Prepare();
        {
            core::Database db = Db();
            db.Exec(QStringLiteral("DELETE FROM Global"));
            db.Exec(QStringLiteral(
                "INSERT INTO Global (eBayCorrection, AutoUpdateTimeLeft, TimeLeftInterval) "
                "VALUES (0, 1, 2)"));
        }
        ui::frmAuction* w = Open();
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblLabel110"))->text(), QStringLiteral("2"));
        QVERIFY(Named<QTimer>(w, QStringLiteral("Timer2"))->isActive());
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        const int row = static_cast<int>(Column(sales, 0).indexOf(QStringLiteral("1001")));
        QVERIFY(Column(sales, 4).at(row) != QStringLiteral("Ended"));
        {
            // The sale ended early on the site.
            core::Database db = Db();
            db.Prepare(QStringLiteral("UPDATE Auctions SET EndDate = ? WHERE ItemNumber = '1001'"))
                .Bind(1, QDateTime::currentDateTime().addSecs(-120).toString(
                             QStringLiteral("MM/dd/yy, hh:mm:ss")) +
                             QStringLiteral(" PST"))
                .Run();
        }
        w->Timer2_Timer();
        w->Timer2_Timer();
        QVERIFY(Column(sales, 4).at(row) != QStringLiteral("Ended"));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblLabel111"))->text(), QStringLiteral("2"));
        w->Timer2_Timer();
        QCOMPARE(Column(sales, 4).at(row), QStringLiteral("Ended"));
        QCOMPARE(Named<QLabel>(w, QStringLiteral("lblLabel111"))->text(), QStringLiteral("0"));
    }

    void analysisTabFillsOnEntry() {
        Prepare();
        ui::frmAuction* w = Open();
        core::Database db = Db();
        const views::AnalysisPage page =
            views::AnalysisRefresh(db, views::SalesSource::TimeComparative);
        const QString attempted = page.sales[views::kAuctionsAttempted].value;
        QVERIFY(!attempted.isEmpty());
        Named<QTabWidget>(w, QStringLiteral("SSTab1"))->setCurrentIndex(3);
        auto* grid = Named<QTableWidget>(w, QStringLiteral("mfgMyAuctions"));
        bool shown = false;
        for (int r = 0; r < grid->rowCount(); ++r) {
            for (int c = 0; c < grid->columnCount(); ++c) {
                if (grid->item(r, c) != nullptr && grid->item(r, c)->text() == attempted) {
                    shown = true;
                }
            }
        }
        QVERIFY(shown);
    }

    void aDamagedDatabaseIsToldNotFatal() {
        Prepare();
        ui::frmAuction* w = Open();
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        SelectItem(sales, QStringLiteral("1001"));
        {
            core::Database db = Db();
            db.Exec(QStringLiteral("DROP VIEW CurrentAuctions"));
            db.Exec(QStringLiteral("ALTER TABLE Auctions RENAME TO AuctionsGone"));
        }
        w->ShowCurrentSales();
        QCOMPARE(m_ui->Titles(), QStringList{"My Sales"});
        m_ui->ScriptAnswer(core::Answer::Yes);
        Named<QAction>(w, QStringLiteral("mnuPopupDeleteAuction"))->trigger();
        QCOMPARE(m_ui->Titles().size(), 2);
        QCOMPARE(m_ui->Titles().at(1), QStringLiteral("Delete Auction"));
        // The timers and the selection step over it without a word.
        w->Timer2_Timer();
        w->RefreshTimeLeftSales();
        SelectItem(Named<QTableView>(w, QStringLiteral("GrdBid")), QStringLiteral("3002"));
        QCOMPARE(m_ui->Titles().size(), 2);
    }

    void hugeAndBrokenDataShowsWithoutFailing() {
        {
            core::Database db = Db();
            core::Transaction tx(db);
            // 100,000 sales in one statement, every tenth with Nulls and quotes.
            db.Prepare(QStringLiteral(
                           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                           "i < 100000) INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, "
                           "NumberBids, HighBid, EndDate, HighBidderName) SELECT ?, "
                           "printf('%06d', i), CASE WHEN i % 10 = 0 THEN NULL ELSE 'It''s \"no\" "
                           "' || i END, '1', CASE WHEN i % 10 = 0 THEN NULL ELSE '$1.00' END, ?, "
                           "CASE WHEN i % 10 = 0 THEN NULL ELSE 'b' END FROM n"))
                .BindAll(kUser, EndIn(5))
                .Run();
            AddSale(db, QStringLiteral("000000"),
                    QString(QString(1 << 20, u'x') + QStringLiteral("'\"")), QStringLiteral("1"),
                    QStringLiteral("$2.00"), QStringLiteral("-"), EndIn(4), QStringLiteral("b"),
                    QStringLiteral("(10)"));
            Insert(db, QStringLiteral("Auctions"),
                   {QStringLiteral("UserName"), QStringLiteral("ItemNumber")},
                   {kUser, QStringLiteral("000001x")});
            tx.Commit();
        }
        ui::frmAuction* w = Open();
        auto* sales = Named<QTableView>(w, QStringLiteral("grdAuction"));
        QCOMPARE(sales->model()->rowCount(), 100002);
        QCOMPARE(Named<QComboBox>(w, QStringLiteral("lstAuctionGroup"))->itemText(0),
                 QStringLiteral("Current Sales (1 - 100002 of 100002)"));
        // The row with nothing but its number, read as "n/a".
        const QStringList items = Column(sales, 0);
        const int empty = static_cast<int>(items.indexOf(QStringLiteral("000001x")));
        QVERIFY(empty >= 0);
        for (int c = 1; c < 5; ++c) {
            QCOMPARE(sales->model()->index(empty, c).data().toString(), QStringLiteral("n/a"));
        }
        const int nulls = static_cast<int>(items.indexOf(QStringLiteral("000010")));
        QCOMPARE(sales->model()->index(nulls, 1).data().toString(), QStringLiteral("n/a"));
        QCOMPARE(sales->model()->index(nulls, 2).data().toString(), QStringLiteral("n/a"));
        SelectItem(sales, QStringLiteral("000010"));
        QCOMPARE(Named<QGroupBox>(w, QStringLiteral("fraAuctionInfo"))->title(),
                 QStringLiteral("n/a"));
        // The megabyte title: the cell and the frame show a readable start and
        // the frame keeps the item number.
        SelectItem(sales, QStringLiteral("000000"));
        const QString title = Named<QGroupBox>(w, QStringLiteral("fraAuctionInfo"))->title();
        QVERIFY(title.size() < 1000);
        QVERIFY(title.endsWith(QStringLiteral("(Item #000000)")));
        QVERIFY(sales->model()->index(sales->currentIndex().row(), 1).data().toString().size() <
                1000);
        ClickHead(sales, 3);
        QCOMPARE(sales->model()->rowCount(), 100002);
        QCOMPARE(m_ui->Messages(), QStringList());
    }
};

QTEST_MAIN(AuctionWindowTest)
#include "auction_ui_test.moc"
