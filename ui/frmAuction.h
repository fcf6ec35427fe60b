// SPDX-License-Identifier: GPL-3.0-or-later
// The main window: the tabs "My Sales", "My Bids", "Task Manager" and
// "Auction Analysis", the menus, the tool bar, the two pop-up menus and the
// status bar with the site clock, the balance and the list totals. Every
// control carries the system's name as its objectName (arrays as name plus
// index: cmdMove0 to cmdMove3, lblInfo0 to lblInfo3, lblLabel57, ...). The
// handlers keep the system's names and stay thin: they read the controls,
// call views/ and update/, and write the controls. No handler lets a failure
// out: each catches at its edge and tells it through core::CurrentUi(), or
// steps over it where the lists always have (timers, panel reads).
#pragma once

#include <QMainWindow>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/store.h"
#include "update/run_lists.h"
#include "views/listings.h"

class QAction;
class QCheckBox;
class QSplitter;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QTabWidget;
class QTimer;
class QToolBar;

namespace lw::ui {

class AuctionAnalysisTab;
class BidPanels;
class frmLWAC;
class ListingGrid;
class SalePanels;
class TaskManagerTab;

class frmAuction : public QMainWindow {
    Q_OBJECT
public:
    // The tabs of SSTab1.
    enum Tab : int { kSalesTab = 0, kBidsTab = 1, kTaskTab = 2, kAnalysisTab = 3 };

    explicit frmAuction(QWidget* parent = nullptr);
    ~frmAuction() override;

    // The window's load once the user is chosen: the caption, both group
    // combos and their lists, the site clock correction, the time-left timer
    // from Global, and the balance.
    void Form_Load();

    // The lists. Without flags a sales view shows its first page (goFirst),
    // as every refresh after another window closes; with flags all false it
    // moves one page forward.
    void ShowCurrentSales();
    void ShowCurrentSales(bool moveBack, bool goFirst, bool goLast);
    void ShowArchivedSales();
    void ShowArchivedSales(bool moveBack, bool goFirst, bool goLast);
    void ShowCurrentBids();
    void ShowArchivedBids();
    // The redraw after an update or another window: the sales and bids lists
    // by their combos, the analysis when it was shown, the balance.
    void RedrawViews();
    void RefreshTimeLeftSales();
    void RefreshTimeLeftBids();
    // lblInfo(1).
    void ShowAccountBalance();
    // Timer2's rule from Global (at load and after the preferences).
    void ApplyTimeLeftTimer(const core::TimeLeftTimer& timer);

    // How site pages are opened; QDesktopServices::openUrl unless replaced.
    void SetUrlOpener(std::function<void(const QString&)> opener);

public Q_SLOTS:
    void SSTab1_Click(int index);
    void lstAuctionGroup_Click();
    void lstBidGroup_Click();
    void chkSuccessfulAuctions_Click();
    void chkSuccessfulBids_Click();
    void cmdMove_Click(int index);
    void grdAuction_HeadClick(int column);
    void GrdBid_HeadClick(int column);
    void grdAuction_SelChange();
    void GrdBid_SelChange();
    void Timer1_Timer();
    void Timer2_Timer();

    // New Auction: the creator, modal; afterwards the sales update when the
    // creator asked for it, and the current sales from their first page.
    void mnuAuctionCreator_Click();
    void mnuPreferences_Click();
    void mnuFileExit_Click();
    void menUpdateAuctionDatabase_Click();
    void mnuUpdateAuctions_Click();
    void mnuUpdateBids_Click();
    void mnuItemWatch_Click();
    void mnuUpdateAccountBalance_Click();
    void mnuSyncTime_Click();
    void mnuUpdateComplete_Click();
    void mnuUpdateDatabaseAndAccount_Click();
    void mnuCurrentAuctions_Click();
    void mnuArchivedAuctions_Click();
    void mnuCurrentBids_Click();
    void mnuArchiveBids_Click();
    void mnuView_Click();
    // Find: the first row of the list in view, after the selected one, whose
    // item number or title holds the text asked for.
    void mnuFindItem_Click();
    void mnuMyEBay_Click();
    void menHelpTopics_Click();
    void mnuHelpToolTips_Click();
    void menAbout_Click();
    void Toolbar1_ButtonClick(const QString& key);

    // The sales pop-up (mnuPopup) and its commands.
    void grdAuction_Popup(int row, const QPoint& globalPos);
    void mnuWWWViewItem_Click();
    void mnuPopupViewBidderFeedback_Click();
    void mnuItemCost_Click();
    void mnuItemRelist_Click();
    void mnuItemRelistCreator_Click();
    void mnuPopupAuctionReturntoTask_Click();
    void mnuPopupDeleteAuction_Click();
    // The bids pop-up (mnuPopupBid) and its commands.
    void GrdBid_Popup(int row, const QPoint& globalPos);
    void mnuPopupVieweBayBid_Click();
    void mnuViewOtherAuctions_Click();
    void mnuPopupSellerFeedback_Click();
    void mnuPopupBidReturnToTask_Click();
    void mnuPopupDeleteBid_Click();

    // The window's size and place, the two splitters and the lists' column
    // widths as they were left, from the settings; a place off every screen
    // is put back on one. Runs when the window is made.
    void RestoreLayout();
    // Writes whichever of them changed since the window was shown; nothing
    // when none did. Runs shortly after a change, and when the window closes.
    void SaveLayout();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    // The window's one connection, opened when first needed.
    core::Database& Db();
    // Runs a handler's work; a failure is told under the title and the
    // connection is dropped so that the next command opens it afresh.
    bool Guard(const QString& title, const std::function<void()>& work);

    void BuildMenus();
    void BuildToolBar();
    void BuildPopups();
    QWidget* BuildSalesTab();
    QWidget* BuildBidsTab();
    void BuildStatusBar();
    // The layout as the settings keep it, key by key.
    std::map<QString, QString> LayoutValues() const;
    void LayoutChanged();
    void PutOnScreen();

    void AfterSalesFill();
    void AfterBidsFill();
    void ShowSelectedSale();
    void ShowSelectedBid();
    QString SelectedSaleItem() const;
    QString SelectedBidItem() const;

    // An update command: connection check, tab, run list, update window.
    bool RunUpdateCommand(update::UpdateCommand command, int tab);
    // A site page: connection check with the purpose, then the address.
    void OpenSiteLink(const QString& purpose, const std::function<QString()>& url);
    // The creator, modal, prepared by prepare (a relist's document); then the
    // update of the sales when its mnuUAWF was ticked, and the sales shown.
    void RunCreator(const std::function<void(frmLWAC&)>& prepare);

    std::optional<core::Database> m_db;
    views::SalesListing m_sales;
    views::BidsListing m_bids;
    views::TimeLeftTicker m_ticker;
    std::function<void(const QString&)> m_openUrl;
    bool m_loaded = false;
    QString m_lastFind;
    // The layout last written or shown; changes are saved against it.
    std::map<QString, QString> m_layout;
    bool m_layoutWatched = false;
    QTimer* m_layoutTimer = nullptr;

    QTabWidget* m_SSTab1 = nullptr;
    QComboBox* m_lstAuctionGroup = nullptr;
    QComboBox* m_lstBidGroup = nullptr;
    QCheckBox* m_chkSuccessfulAuctions = nullptr;
    QCheckBox* m_chkSuccessfulBids = nullptr;
    std::array<QPushButton*, 4> m_cmdMove{};
    ListingGrid* m_grdAuction = nullptr;
    ListingGrid* m_GrdBid = nullptr;
    QSplitter* m_salesSplit = nullptr;
    QSplitter* m_bidsSplit = nullptr;
    SalePanels* m_salePanels = nullptr;
    BidPanels* m_bidPanels = nullptr;
    AuctionAnalysisTab* m_analysis = nullptr;
    TaskManagerTab* m_tasks = nullptr;
    bool m_analysisShown = false;
    QLabel* m_lblSalesView = nullptr;  // lblLabel(57)
    QLabel* m_lblBidsView = nullptr;
    std::array<QLabel*, 4> m_lblInfo{};
    QLabel* m_lblTicksWanted = nullptr;   // lblLabel(110)
    QLabel* m_lblTicksCounted = nullptr;  // lblLabel(111)
    QTimer* m_Timer1 = nullptr;
    QTimer* m_Timer2 = nullptr;
    QToolBar* m_Toolbar1 = nullptr;

    std::array<QAction*, 4> m_viewActions{};  // Current/Archived Sales, Current/Archived Bids
    QMenu* m_mnuPopup = nullptr;
    QMenu* m_mnuPopupBid = nullptr;
    QAction* m_mnuItemRelist = nullptr;
    QAction* m_mnuItemRelistCreator = nullptr;
    QAction* m_mnuPopupViewBidderFeedback = nullptr;
    QAction* m_mnuPopupAuctionReturntoTask = nullptr;
    QAction* m_mnuPopupBidReturnToTask = nullptr;
};

}  // namespace lw::ui
