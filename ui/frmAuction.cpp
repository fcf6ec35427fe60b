// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's frame and commands: tabs, menus, tool bar, status bar,
// the two timers, the update commands with their run lists, the site links,
// preferences, tips and about. The lists, their panels and the pop-up menus
// are in frmAuctionLists.cpp.
#include "ui/frmAuction.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QTableView>
#include <QTextBrowser>
#include <QTimer>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>
#include <array>

#include "admin/startup.h"
#include "core/settings.h"
#include "core/text.h"
#include "ui/auction_analysis_tab.h"
#include "ui/frmGeneral.h"
#include "ui/frmLWAC.h"
#include "ui/frmTip.h"
#include "ui/frmUpdate.h"
#include "ui/frmUserPreferences.h"
#include "ui/item_panels.h"
#include "ui/listing_grid.h"
#include "ui/qt_ui.h"
#include "ui/task_manager_tab.h"
#include "update/repair.h"
#include "update/rules.h"
#include "update/site_session.h"
#include "views/main_commands.h"

// The help text is built into the program; a resource of a static library is
// made known by name, and only from outside any namespace.
static void InitHelpResource() {
    Q_INIT_RESOURCE(help);
}

namespace lw::ui {

namespace {

const QString kProgramTitle = QStringLiteral("Tolvane Lotwright Pro");
const QString kUpdatePurpose = QStringLiteral("update your auction database");

QAction* NamedAction(QObject* parent, const QString& name, const QString& caption) {
    auto* action = new QAction(caption, parent);
    action->setObjectName(name);
    return action;
}

// The desktop's own keys for a standard command; where the desktop has none,
// the key most programs use.
void BindStandardKey(QAction* action, QKeySequence::StandardKey key, const QKeySequence& fallback) {
    QList<QKeySequence> keys = QKeySequence::keyBindings(key);
    if (keys.isEmpty()) {
        keys << fallback;
    }
    action->setShortcuts(keys);
}

// The settings of the window's layout: one key each, under the window's name.
const QString kLayoutApp = QStringLiteral("Lotwright");
const QString kLayoutSection = QStringLiteral("frmAuction");
// A change is written once the user has stopped dragging for this long.
constexpr int kLayoutSaveDelayMs = 800;

QString Encoded(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

QByteArray Decoded(const QString& text) {
    return QByteArray::fromBase64(text.toLatin1());
}

// The widths of the columns a user sizes ("0:64,2:80,..."); the title column
// takes what the window leaves and is not kept.
QString ColumnWidths(const QTableView* grid) {
    QStringList widths;
    for (int column = 0; column < views::ListingModel::kColumnCount; ++column) {
        if (column != views::ListingModel::kDescription) {
            widths << QStringLiteral("%1:%2").arg(column).arg(grid->columnWidth(column));
        }
    }
    return widths.join(u',');
}

void ApplyColumnWidths(QTableView* grid, const QString& text) {
    for (const QString& pair : text.split(u',', Qt::SkipEmptyParts)) {
        const QStringList parts = pair.split(u':');
        bool columnOk = false;
        bool widthOk = false;
        const int column = parts.value(0).toInt(&columnOk);
        const int width = parts.value(1).toInt(&widthOk);
        if (parts.size() == 2 && columnOk && widthOk && column >= 0 &&
            column < views::ListingModel::kColumnCount &&
            column != views::ListingModel::kDescription && width >= 8 && width <= 4000) {
            grid->setColumnWidth(column, width);
        }
    }
}

// Puts back the rules that the last rule update or install replaced, after
// asking; the rules in use are kept in their place, so the same command undoes
// it.
void RestoreEarlierRules() {
    const QString title = QStringLiteral("Restore Earlier Rules");
    core::Ui& ui = core::CurrentUi();
    if (ui.Ask(QStringLiteral("Put back the rules that the last rule update replaced?  The "
                              "rules in use now are kept, so the same command undoes it."),
               title, core::Buttons::YesNo, core::Answer::No) != core::Answer::Yes) {
        return;
    }
    QString error;
    if (update::RestorePreviousRules(&error)) {
        ui.Message(QStringLiteral("The earlier rules are in use again."), title);
    } else {
        ui.Message(error, title, core::Icon::Warning);
    }
}

// Contents and Index: the program's guide, the README it ships with, in a
// window of its own that links out to the browser.
void ShowHelpContents(QWidget* parent) {
    InitHelpResource();
    QFile guide(QStringLiteral(":/help/README.md"));
    if (!guide.open(QIODevice::ReadOnly)) {
        core::CurrentUi().Message(QStringLiteral("The help text is missing from this copy of "
                                                 "Lotwright."),
                                  QStringLiteral("Contents and Index"), core::Icon::Warning);
        return;
    }
    QDialog help(parent);
    help.setObjectName(QStringLiteral("frmHelp"));
    help.setWindowTitle(QStringLiteral("Contents and Index"));
    auto* text = new QTextBrowser(&help);
    text->setObjectName(QStringLiteral("txtHelp"));
    text->setAccessibleName(QStringLiteral("Help text"));
    text->setOpenExternalLinks(true);
    text->setMarkdown(QString::fromUtf8(guide.readAll()));
    auto* buttons = new QDialogButtonBox(&help);
    QPushButton* close = buttons->addButton(QStringLiteral("&Close"), QDialogButtonBox::RejectRole);
    close->setObjectName(QStringLiteral("cmdClose"));
    QObject::connect(buttons, &QDialogButtonBox::rejected, &help, &QDialog::reject);
    auto* layout = new QVBoxLayout(&help);
    layout->addWidget(text, 1);
    layout->addWidget(buttons);
    help.resize(720, 560);
    help.exec();
}

}  // namespace

frmAuction::frmAuction(QWidget* parent) : QMainWindow(parent) {
    setObjectName(QStringLiteral("frmAuction"));
    setWindowTitle(kProgramTitle);
    m_openUrl = [](const QString& url) { QDesktopServices::openUrl(QUrl(url)); };

    m_SSTab1 = new QTabWidget(this);
    m_SSTab1->setObjectName(QStringLiteral("SSTab1"));
    m_SSTab1->addTab(BuildSalesTab(), QStringLiteral("My &Sales"));
    m_SSTab1->addTab(BuildBidsTab(), QStringLiteral("My &Bids"));
    m_tasks = new TaskManagerTab([this]() -> core::Database& { return Db(); }, m_SSTab1);
    m_SSTab1->addTab(m_tasks, QStringLiteral("Tas&k Manager"));
    m_analysis = new AuctionAnalysisTab(m_SSTab1);
    m_SSTab1->addTab(m_analysis, QStringLiteral("Auction A&nalysis"));
    setCentralWidget(m_SSTab1);
    connect(m_SSTab1, &QTabWidget::currentChanged, this, &frmAuction::SSTab1_Click);

    BuildMenus();
    BuildToolBar();
    BuildPopups();
    BuildStatusBar();

    m_Timer1 = new QTimer(this);
    m_Timer1->setObjectName(QStringLiteral("Timer1"));
    m_Timer1->setInterval(1000);
    connect(m_Timer1, &QTimer::timeout, this, &frmAuction::Timer1_Timer);
    m_Timer2 = new QTimer(this);
    m_Timer2->setObjectName(QStringLiteral("Timer2"));
    connect(m_Timer2, &QTimer::timeout, this, &frmAuction::Timer2_Timer);

    m_layoutTimer = new QTimer(this);
    m_layoutTimer->setSingleShot(true);
    m_layoutTimer->setInterval(kLayoutSaveDelayMs);
    connect(m_layoutTimer, &QTimer::timeout, this, &frmAuction::SaveLayout);
    for (QSplitter* split : {m_salesSplit, m_bidsSplit}) {
        connect(split, &QSplitter::splitterMoved, this, &frmAuction::LayoutChanged);
    }
    for (ListingGrid* grid : {m_grdAuction, m_GrdBid}) {
        connect(grid->horizontalHeader(), &QHeaderView::sectionResized, this,
                &frmAuction::LayoutChanged);
    }

    resize(900, 680);
    RestoreLayout();
}

frmAuction::~frmAuction() {
    m_Timer1->stop();
    m_Timer2->stop();
    // The grids show models and the analysis tab reads a connection that are
    // members of this window: the widgets go first.
    delete takeCentralWidget();
}

core::Database& frmAuction::Db() {
    if (!m_db) {
        m_db.emplace(core::OpenStore());
    }
    return *m_db;
}

bool frmAuction::Guard(const QString& title, const std::function<void()>& work) {
    return RunReported(title, work);
}

void frmAuction::SetUrlOpener(std::function<void(const QString&)> opener) {
    m_openUrl = std::move(opener);
}

// ------------------------------------------------------------------ building

void frmAuction::BuildMenus() {
    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    file->setObjectName(QStringLiteral("mnuFile"));
    QAction* creator =
        NamedAction(this, QStringLiteral("mnuAuctionCreator"), QStringLiteral("&New Auction..."));
    BindStandardKey(creator, QKeySequence::New, QKeySequence(Qt::CTRL | Qt::Key_N));
    connect(creator, &QAction::triggered, this, &frmAuction::mnuAuctionCreator_Click);
    file->addAction(creator);
    file->addSeparator();
    QAction* preferences =
        NamedAction(this, QStringLiteral("mnuPreferences"), QStringLiteral("Edit &Preferences"));
    // Most desktops bind no key to preferences; Ctrl+, is the usual one there.
    BindStandardKey(preferences, QKeySequence::Preferences, QKeySequence(Qt::CTRL | Qt::Key_Comma));
    connect(preferences, &QAction::triggered, this, &frmAuction::mnuPreferences_Click);
    file->addAction(preferences);
    file->addSeparator();
    QAction* exit = NamedAction(this, QStringLiteral("mnuFileExit"), QStringLiteral("E&xit"));
    BindStandardKey(exit, QKeySequence::Quit, QKeySequence(Qt::CTRL | Qt::Key_Q));
    exit->setMenuRole(QAction::QuitRole);
    connect(exit, &QAction::triggered, this, &frmAuction::mnuFileExit_Click);
    file->addAction(exit);

    QMenu* update = menuBar()->addMenu(QStringLiteral("&Update"));
    update->setObjectName(QStringLiteral("mnuUpdate"));
    const struct {
        const char* name;
        const char* caption;
        void (frmAuction::*handler)();
    } updates[] = {
        {"menUpdateAuctionDatabase", "&My Sales && My Bids",
         &frmAuction::menUpdateAuctionDatabase_Click},
        {"mnuUpdateAuctions", "My &Sales Only", &frmAuction::mnuUpdateAuctions_Click},
        {"mnuUpdateBids", "My &Bids Only", &frmAuction::mnuUpdateBids_Click},
        {"mnuItemWatch", "&Item Watch Only", &frmAuction::mnuItemWatch_Click},
        {"mnuUpdateAccountBalance", "&Account Balance", &frmAuction::mnuUpdateAccountBalance_Click},
        {"mnuSyncTime", "Sync with eBay &Time", &frmAuction::mnuSyncTime_Click},
        {"mnuUpdateDatabaseAndAccount", "&Complete (Maximum Data)",
         &frmAuction::mnuUpdateDatabaseAndAccount_Click},
    };
    for (const auto& entry : updates) {
        QAction* action =
            NamedAction(this, QString::fromLatin1(entry.name), QString::fromLatin1(entry.caption));
        connect(action, &QAction::triggered, this, entry.handler);
        update->addAction(action);
    }
    update->addSeparator();
    QAction* restoreRules = NamedAction(this, QStringLiteral("mnuRestoreRules"),
                                        QStringLiteral("&Restore Earlier Rules..."));
    connect(restoreRules, &QAction::triggered, this, [] { RestoreEarlierRules(); });
    update->addAction(restoreRules);
    // The complete update with the account figures has no menu row of its
    // own; it is the window's refresh key. An action of the window alone
    // shows nowhere, and only a visible action answers its key.
    QAction* complete = NamedAction(this, QStringLiteral("mnuUpdateComplete"), QString());
    BindStandardKey(complete, QKeySequence::Refresh, QKeySequence(Qt::Key_F5));
    connect(complete, &QAction::triggered, this, &frmAuction::mnuUpdateComplete_Click);
    addAction(complete);

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    view->setObjectName(QStringLiteral("mnuView"));
    const struct {
        const char* name;
        const char* caption;
        void (frmAuction::*handler)();
    } views[] = {
        {"mnuCurrentAuctions", "&Current Sales", &frmAuction::mnuCurrentAuctions_Click},
        {"mnuArchivedAuctions", "&Archived Sales", &frmAuction::mnuArchivedAuctions_Click},
        {"mnuCurrentBids", "C&urrent Bids", &frmAuction::mnuCurrentBids_Click},
        {"mnuArchiveBids", "Arc&hived Bids", &frmAuction::mnuArchiveBids_Click},
    };
    for (size_t i = 0; i < std::size(views); ++i) {
        QAction* action = NamedAction(this, QString::fromLatin1(views[i].name),
                                      QString::fromLatin1(views[i].caption));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, views[i].handler);
        view->addAction(action);
        m_viewActions[i] = action;
        if (i == 1) {
            view->addSeparator();
        }
    }
    view->addSeparator();
    QAction* find =
        NamedAction(this, QStringLiteral("mnuFindItem"), QStringLiteral("&Find Item..."));
    BindStandardKey(find, QKeySequence::Find, QKeySequence(Qt::CTRL | Qt::Key_F));
    connect(find, &QAction::triggered, this, &frmAuction::mnuFindItem_Click);
    view->addAction(find);
    // The tool bar's time-left button, for the keyboard.
    QAction* timeLeft = NamedAction(this, QStringLiteral("mnuRefreshTimeLeft"),
                                    QStringLiteral("Refresh Time &Left"));
    connect(timeLeft, &QAction::triggered, this,
            [this] { Toolbar1_ButtonClick(QStringLiteral("TimeLeft")); });
    view->addAction(timeLeft);
    connect(view, &QMenu::aboutToShow, this, &frmAuction::mnuView_Click);

    QMenu* tools = menuBar()->addMenu(QStringLiteral("&Tools"));
    tools->setObjectName(QStringLiteral("mnuTools"));
    QAction* myEBay = NamedAction(this, QStringLiteral("mnuMyEBay"), QStringLiteral("&My eBay"));
    connect(myEBay, &QAction::triggered, this, &frmAuction::mnuMyEBay_Click);
    tools->addAction(myEBay);

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->setObjectName(QStringLiteral("mnuHelp"));
    QAction* contents =
        NamedAction(this, QStringLiteral("menHelpTopics"), QStringLiteral("&Contents and Index"));
    BindStandardKey(contents, QKeySequence::HelpContents, QKeySequence(Qt::Key_F1));
    connect(contents, &QAction::triggered, this, &frmAuction::menHelpTopics_Click);
    help->addAction(contents);
    QAction* tips =
        NamedAction(this, QStringLiteral("mnuHelpToolTips"), QStringLiteral("&Tips of the Day"));
    connect(tips, &QAction::triggered, this, &frmAuction::mnuHelpToolTips_Click);
    help->addAction(tips);
    help->addSeparator();
    QAction* about = NamedAction(this, QStringLiteral("menAbout"),
                                 QStringLiteral("&About Tolvane Lotwright Pro"));
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, &frmAuction::menAbout_Click);
    help->addAction(about);
}

void frmAuction::BuildToolBar() {
    m_Toolbar1 = addToolBar(QStringLiteral("Toolbar"));
    m_Toolbar1->setObjectName(QStringLiteral("Toolbar1"));
    m_Toolbar1->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    const struct {
        const char* key;
        const char* caption;
        const char* tip;
        QStyle::StandardPixmap icon;
    } buttons[] = {
        {"NewAuction", "New Auction", "New Auction", QStyle::SP_FileIcon},
        {"UpdateAuctionDatabase", "Update", "Update My Sales && My Bids", QStyle::SP_BrowserReload},
        {"MyeBay", "My eBay", "My eBay", QStyle::SP_DirHomeIcon},
        {"TimeLeft", "Time Left", "Refresh the time left", QStyle::SP_MediaSeekForward},
        {"Preferences", "Preferences", "Edit Preferences", QStyle::SP_FileDialogDetailedView},
    };
    for (const auto& button : buttons) {
        const QString key = QString::fromLatin1(button.key);
        QAction* action = m_Toolbar1->addAction(style()->standardIcon(button.icon),
                                                QString::fromLatin1(button.caption));
        action->setObjectName(QStringLiteral("Toolbar1_") + key);
        action->setData(key);
        action->setToolTip(
            QString::fromLatin1(button.tip).replace(QStringLiteral("&&"), QStringLiteral("&")));
        connect(action, &QAction::triggered, this, [this, key] { Toolbar1_ButtonClick(key); });
    }
}

void frmAuction::BuildStatusBar() {
    // Each figure has its word in front of it, so the bar reads without tips.
    const std::array<QString, 4> captions{QStringLiteral("Site time:"), QStringLiteral("Balance:"),
                                          QStringLiteral("Sales:"), QStringLiteral("Bids:")};
    // Names a screen reader says for the figures, which have no caption of
    // their own in the system.
    const std::array<QString, 4> names{
        QStringLiteral("Site time"), QStringLiteral("Account balance"),
        QStringLiteral("Total of the sales shown"), QStringLiteral("Total of the bids shown")};
    for (int i = 0; i < 4; ++i) {
        auto* caption = new QLabel(captions[static_cast<size_t>(i)], this);
        caption->setObjectName(QStringLiteral("lblInfoCaption%1").arg(i));
        // A quieter colour of the palette, not a disabled look: the words
        // stay readable on any palette.
        caption->setForegroundRole(QPalette::PlaceholderText);
        statusBar()->addPermanentWidget(caption);
        auto* label = new QLabel(this);
        label->setObjectName(QStringLiteral("lblInfo%1").arg(i));
        label->setProperty("index", i);
        label->setMinimumWidth(90);
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        label->setToolTip(names[static_cast<size_t>(i)]);
        label->setAccessibleName(names[static_cast<size_t>(i)]);
        statusBar()->addPermanentWidget(label);
        m_lblInfo[static_cast<size_t>(i)] = label;
    }
    // The tick count of the time-left refresh: wanted and counted so far.
    m_lblTicksWanted = new QLabel(QStringLiteral("0"), this);
    m_lblTicksWanted->setObjectName(QStringLiteral("lblLabel110"));
    m_lblTicksWanted->setProperty("index", 110);
    m_lblTicksWanted->hide();
    m_lblTicksCounted = new QLabel(QStringLiteral("0"), this);
    m_lblTicksCounted->setObjectName(QStringLiteral("lblLabel111"));
    m_lblTicksCounted->setProperty("index", 111);
    m_lblTicksCounted->hide();
}

// ------------------------------------------------------------------ load, timers

void frmAuction::Form_Load() {
    const QString& user = core::CurrentSession().CurrentUser;
    if (!user.isEmpty()) {
        setWindowTitle(admin::WelcomeCaption(user));
    }
    Guard(kProgramTitle, [this] { core::LoadSiteCorrection(Db()); });
    m_lstAuctionGroup->setCurrentIndex(0);
    lstAuctionGroup_Click();
    m_lstBidGroup->setCurrentIndex(0);
    lstBidGroup_Click();
    m_bids.ApplyInitialSort();
    Guard(kProgramTitle, [this] { ApplyTimeLeftTimer(core::TimeLeftTimerRule(Db())); });
    ShowAccountBalance();
    m_loaded = true;
    Timer1_Timer();
    m_Timer1->start();
}

void frmAuction::ApplyTimeLeftTimer(const core::TimeLeftTimer& timer) {
    m_ticker = views::TimeLeftTicker(timer);
    m_lblTicksWanted->setText(m_ticker.Wanted());
    m_lblTicksCounted->setText(m_ticker.Counted());
    if (timer.enabled && timer.intervalMs > 0) {
        m_Timer2->setInterval(timer.intervalMs);
        m_Timer2->start();
    } else {
        m_Timer2->stop();
    }
}

void frmAuction::Timer1_Timer() {
    try {
        const qint64 correction =
            static_cast<qint64>(core::Val(core::CurrentSession().SiteCorrection));
        const QDateTime siteTime = QDateTime::currentDateTime().addSecs(-correction);
        m_lblInfo[0]->setText(core::Format(siteTime, QStringLiteral("Long Time")));
    } catch (...) {
        // The clock shows again on the next tick.
    }
}

void frmAuction::Timer2_Timer() {
    try {
        const bool redraw = m_ticker.Tick();
        m_lblTicksWanted->setText(m_ticker.Wanted());
        m_lblTicksCounted->setText(m_ticker.Counted());
        if (redraw) {
            RefreshTimeLeftSales();
            RefreshTimeLeftBids();
        }
    } catch (...) {
        // A refresh that fails waits for the next tick; the lists never report.
    }
}

void frmAuction::ShowAccountBalance() {
    try {
        m_lblInfo[1]->setText(views::AccountBalance(Db()));
    } catch (const std::exception&) {
        m_lblInfo[1]->setText(views::NotAvailable());
    }
}

void frmAuction::SSTab1_Click(int index) {
    if (index == kTaskTab) {
        // The rules are read again from the database, and the Nulls that
        // pages leave in scanned rows are mended before the tasks are read
        // from those rows.
        Guard(QStringLiteral("Task Manager"), [this] {
            update::DecryptProtocols(update::Rules(), Db());
            update::RepairNulls(Db());
        });
        m_tasks->RebuildTaskView();
        return;
    }
    if (index != kAnalysisTab) {
        return;
    }
    m_analysisShown = true;
    Guard(QStringLiteral("Auction Analysis"), [this] { m_analysis->AnalysisRefresh(Db()); });
}

void frmAuction::closeEvent(QCloseEvent* event) {
    m_Timer1->stop();
    m_Timer2->stop();
    // A change of the layout made just now is not lost; an unchanged one
    // writes nothing.
    m_layoutTimer->stop();
    SaveLayout();
    event->accept();
}

// ------------------------------------------------------------------ layout

std::map<QString, QString> frmAuction::LayoutValues() const {
    return {
        {QStringLiteral("Geometry"), Encoded(saveGeometry())},
        {QStringLiteral("State"), Encoded(saveState())},
        {QStringLiteral("SalesSplitter"), Encoded(m_salesSplit->saveState())},
        {QStringLiteral("BidsSplitter"), Encoded(m_bidsSplit->saveState())},
        {QStringLiteral("SalesColumns"), ColumnWidths(m_grdAuction)},
        {QStringLiteral("BidsColumns"), ColumnWidths(m_GrdBid)},
    };
}

void frmAuction::RestoreLayout() {
    auto stored = [](const char* key) {
        return core::GetSetting(kLayoutApp, kLayoutSection, QString::fromLatin1(key));
    };
    // Each part stands alone: a damaged or foreign value leaves that part as
    // it was built.
    if (const QString geometry = stored("Geometry"); !geometry.isEmpty()) {
        restoreGeometry(Decoded(geometry));
    }
    if (const QString state = stored("State"); !state.isEmpty()) {
        restoreState(Decoded(state));
    }
    if (const QString split = stored("SalesSplitter"); !split.isEmpty()) {
        m_salesSplit->restoreState(Decoded(split));
    }
    if (const QString split = stored("BidsSplitter"); !split.isEmpty()) {
        m_bidsSplit->restoreState(Decoded(split));
    }
    ApplyColumnWidths(m_grdAuction, stored("SalesColumns"));
    ApplyColumnWidths(m_GrdBid, stored("BidsColumns"));
    PutOnScreen();
}

void frmAuction::PutOnScreen() {
    // Enough of the window to take hold of it must be on some screen; a
    // screen that was unplugged since leaves it nowhere.
    const QRect frame = frameGeometry();
    const auto screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        const QRect shared = screen->availableGeometry().intersected(frame);
        if (shared.width() >= 100 && shared.height() >= 50) {
            return;
        }
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) {
        return;
    }
    const QRect room = screen->availableGeometry();
    resize(size().boundedTo(room.size()));
    move(room.center() - QPoint(width() / 2, height() / 2));
}

void frmAuction::SaveLayout() {
    if (!m_layoutWatched) {
        return;
    }
    for (const auto& [key, value] : LayoutValues()) {
        auto known = m_layout.find(key);
        if (known != m_layout.end() && known->second == value) {
            continue;
        }
        core::SaveSetting(kLayoutApp, kLayoutSection, key, value);
        m_layout[key] = value;
    }
}

void frmAuction::LayoutChanged() {
    if (m_layoutWatched) {
        m_layoutTimer->start();
    }
}

void frmAuction::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_layoutWatched) {
        // What the window opens with, once the desktop has placed and framed
        // it, is what the settings hold or the built layout: only a change
        // from it is written.
        QTimer::singleShot(0, this, [this] {
            m_layout = LayoutValues();
            m_layoutWatched = true;
        });
    }
}

void frmAuction::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    LayoutChanged();
}

void frmAuction::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    LayoutChanged();
}

void frmAuction::RedrawViews() {
    lstAuctionGroup_Click();
    lstBidGroup_Click();
    if (m_SSTab1->currentIndex() == kTaskTab) {
        m_tasks->RebuildTaskView();
    }
    if (m_analysisShown) {
        Guard(QStringLiteral("Auction Analysis"), [this] { m_analysis->AnalysisRefresh(Db()); });
    }
    ShowAccountBalance();
}

// ------------------------------------------------------------------ updates

bool frmAuction::RunUpdateCommand(update::UpdateCommand command, int tab) {
    bool ran = false;
    Guard(QStringLiteral("Update"), [&] {
        if (!update::IsConnected(Db(), kUpdatePurpose, true)) {
            return;
        }
        if (tab >= 0) {
            m_SSTab1->setCurrentIndex(tab);
        }
        QString error;
        if (!update::WriteRunList(update::RunList(command), &error)) {
            core::CurrentUi().Message(error, QStringLiteral("Update"), core::Icon::Warning);
            return;
        }
        ShowUpdateWindow(Db(), this, [this] { RedrawViews(); });
        ran = true;
    });
    return ran;
}

void frmAuction::menUpdateAuctionDatabase_Click() {
    if (RunUpdateCommand(update::UpdateCommand::UpdateAuctionDatabase, kSalesTab)) {
        Guard(QStringLiteral("Update"), [this] { update::ReconcileCreatorRows(Db()); });
    }
}

void frmAuction::mnuUpdateAuctions_Click() {
    if (RunUpdateCommand(update::UpdateCommand::UpdateAuctions, kSalesTab)) {
        Guard(QStringLiteral("Update"), [this] { update::ReconcileCreatorRows(Db()); });
    }
}

void frmAuction::mnuUpdateBids_Click() {
    RunUpdateCommand(update::UpdateCommand::UpdateBids, kBidsTab);
}

void frmAuction::mnuItemWatch_Click() {
    RunUpdateCommand(update::UpdateCommand::ItemWatch, kBidsTab);
}

void frmAuction::mnuUpdateAccountBalance_Click() {
    if (RunUpdateCommand(update::UpdateCommand::UpdateAccountBalance, -1)) {
        ShowAccountBalance();
    }
}

void frmAuction::mnuSyncTime_Click() {
    if (RunUpdateCommand(update::UpdateCommand::SyncTime, -1)) {
        Guard(QStringLiteral("Update"), [this] { core::LoadSiteCorrection(Db()); });
        Timer1_Timer();
    }
}

void frmAuction::mnuUpdateComplete_Click() {
    if (RunUpdateCommand(update::UpdateCommand::UpdateComplete, kSalesTab)) {
        Guard(QStringLiteral("Update"), [this] { update::ReconcileCreatorRows(Db()); });
        ShowAccountBalance();
    }
}

void frmAuction::mnuUpdateDatabaseAndAccount_Click() {
    const core::Answer answer = core::CurrentUi().Ask(
        QStringLiteral("WARNING: this update will take 3 to 45 minutes because it will re-retrieve "
                       "your last 30 days of auction and bid activity, regardless of when you last "
                       "updated. This procedure is only necessary if you've lost recent data.") +
            QStringLiteral("\n\nDo you wish to proceed?"),
        QStringLiteral("Complete Update"), core::Buttons::YesNo, core::Answer::No);
    if (answer != core::Answer::Yes) {
        return;
    }
    bool online = false;
    Guard(QStringLiteral("Complete Update"), [&] {
        online = update::IsConnected(Db(), kUpdatePurpose, true);
        if (online) {
            // No LastUpdate makes the run ask the site for the last 30 days.
            views::ClearLastUpdate(Db());
        }
    });
    if (!online || !RunUpdateCommand(update::UpdateCommand::UpdateDatabaseAndAccount, kSalesTab)) {
        return;
    }
    Guard(QStringLiteral("Complete Update"), [this] {
        update::ReconcileCreatorRows(Db());
        views::StampLastUpdate(Db(), QDateTime::currentDateTime());
    });
    ShowAccountBalance();
}

// ------------------------------------------------------------------ views menu

void frmAuction::mnuCurrentAuctions_Click() {
    m_SSTab1->setCurrentIndex(kSalesTab);
    m_lstAuctionGroup->setCurrentIndex(0);
    lstAuctionGroup_Click();
}

void frmAuction::mnuArchivedAuctions_Click() {
    m_SSTab1->setCurrentIndex(kSalesTab);
    m_lstAuctionGroup->setCurrentIndex(1);
    lstAuctionGroup_Click();
}

void frmAuction::mnuCurrentBids_Click() {
    m_SSTab1->setCurrentIndex(kBidsTab);
    m_lstBidGroup->setCurrentIndex(0);
    lstBidGroup_Click();
}

void frmAuction::mnuArchiveBids_Click() {
    m_SSTab1->setCurrentIndex(kBidsTab);
    m_lstBidGroup->setCurrentIndex(1);
    lstBidGroup_Click();
}

void frmAuction::mnuView_Click() {
    const bool salesArchived = m_lstAuctionGroup->currentIndex() == 1;
    const bool bidsArchived = m_lstBidGroup->currentIndex() == 1;
    m_viewActions[0]->setChecked(!salesArchived);
    m_viewActions[1]->setChecked(salesArchived);
    m_viewActions[2]->setChecked(!bidsArchived);
    m_viewActions[3]->setChecked(bidsArchived);
}

// ------------------------------------------------------------------ other commands

void frmAuction::OpenSiteLink(const QString& purpose, const std::function<QString()>& url) {
    Guard(kProgramTitle, [&] {
        if (!update::IsConnected(Db(), purpose, true)) {
            return;
        }
        const QString address = url();
        if (!address.isEmpty() && m_openUrl) {
            m_openUrl(address);
        }
    });
}

void frmAuction::mnuMyEBay_Click() {
    OpenSiteLink(QStringLiteral("view your My eBay page"),
                 [this] { return views::SiteLinkUrl(Db(), views::SiteLink::MyEBay, QString()); });
}

void frmAuction::RunCreator(const std::function<void(frmLWAC&)>& prepare) {
    bool updateAfter = false;
    Guard(QStringLiteral("New Auction"), [&] {
        frmLWAC creator(this);
        if (prepare) {
            prepare(creator);
        }
        creator.exec();
        updateAfter = creator.UpdateAfter();
    });
    if (updateAfter) {
        mnuUpdateAuctions_Click();
    }
    if (m_lstAuctionGroup->currentIndex() != 0) {
        m_lstAuctionGroup->setCurrentIndex(0);
        lstAuctionGroup_Click();
    } else {
        ShowCurrentSales(false, true, false);
    }
}

void frmAuction::mnuAuctionCreator_Click() {
    RunCreator({});
}

void frmAuction::mnuPreferences_Click() {
    Guard(QStringLiteral("Edit Preferences"), [this] {
        frmUserPreferences preferences(this);
        connect(&preferences, &frmUserPreferences::TimeLeftTimerChanged, this,
                &frmAuction::ApplyTimeLeftTimer);
        connect(&preferences, &frmUserPreferences::PreferencesSaved, this, [this] {
            lstAuctionGroup_Click();
            lstBidGroup_Click();
        });
        preferences.exec();
    });
}

void frmAuction::mnuFileExit_Click() {
    close();
}

void frmAuction::menHelpTopics_Click() {
    Guard(QStringLiteral("Contents and Index"), [this] { ShowHelpContents(this); });
}

void frmAuction::mnuHelpToolTips_Click() {
    Guard(QStringLiteral("Tips of the Day"), [this] {
        frmTip tip(this);
        tip.exec();
    });
}

void frmAuction::menAbout_Click() {
    Guard(kProgramTitle, [this] { ShowAbout(this); });
}

void frmAuction::Toolbar1_ButtonClick(const QString& key) {
    if (key == u"NewAuction") {
        mnuAuctionCreator_Click();
    } else if (key == u"UpdateAuctionDatabase") {
        menUpdateAuctionDatabase_Click();
    } else if (key == u"MyeBay") {
        mnuMyEBay_Click();
    } else if (key == u"Preferences") {
        mnuPreferences_Click();
    } else if (key == u"TimeLeft") {
        RefreshTimeLeftSales();
        RefreshTimeLeftBids();
    }
}

}  // namespace lw::ui
