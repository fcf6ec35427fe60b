// SPDX-License-Identifier: GPL-3.0-or-later
// My Sales and My Bids in the main window: the group combos, the successful
// checks, the move buttons, the two grids over the listings' models, the item
// panels of the selected row, the time-left refresh and the two pop-up menus
// with their commands. Which rows a list holds, its captions, totals and
// sort rules are the listings' (views/listings); this file only binds them.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>

#include "creator/relist.h"
#include "ui/frmAuction.h"
#include "ui/frmGeneral.h"
#include "ui/frmLWAC.h"
#include "ui/item_panels.h"
#include "ui/listing_grid.h"
#include "views/main_commands.h"
#include "views/panels.h"

namespace lw::ui {

namespace {

const QString kSalesTitle = QStringLiteral("My Sales");
const QString kBidsTitle = QStringLiteral("My Bids");

views::Group GroupOf(const QComboBox* combo) {
    return combo->currentIndex() == 1 ? views::Group::Archived : views::Group::Current;
}

void WriteCaptions(QComboBox* combo, const std::array<QString, 2>& captions) {
    for (int row = 0; row < 2; ++row) {
        const QString& caption = captions[static_cast<size_t>(row)];
        if (!caption.isEmpty()) {
            combo->setItemText(row, caption);
        }
    }
}

QAction* PopupAction(QMenu* menu, const QString& name, const QString& caption) {
    QAction* action = menu->addAction(caption);
    action->setObjectName(name);
    return action;
}

}  // namespace

// ------------------------------------------------------------------ building

QWidget* frmAuction::BuildSalesTab() {
    auto* tab = new QWidget(this);
    tab->setObjectName(QStringLiteral("tabMySales"));
    auto* layout = new QVBoxLayout(tab);

    auto* top = new QHBoxLayout;
    m_lblSalesView = new QLabel(QStringLiteral("Current Sales"), tab);
    m_lblSalesView->setObjectName(QStringLiteral("lblLabel57"));
    m_lblSalesView->setProperty("index", 57);
    top->addWidget(m_lblSalesView);
    m_lstAuctionGroup = new QComboBox(tab);
    m_lstAuctionGroup->setObjectName(QStringLiteral("lstAuctionGroup"));
    m_lstAuctionGroup->addItems(
        {QStringLiteral("Current Sales"), QStringLiteral("Archived Sales")});
    m_lstAuctionGroup->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    top->addWidget(m_lstAuctionGroup);
    m_lblSalesView->setBuddy(m_lstAuctionGroup);
    m_chkSuccessfulAuctions = new QCheckBox(QStringLiteral("Successful sales &only"), tab);
    m_chkSuccessfulAuctions->setObjectName(QStringLiteral("chkSuccessfulAuctions"));
    top->addWidget(m_chkSuccessfulAuctions);
    top->addStretch(1);
    // In the order they stand: first, back, forward, last. Pictures only, so
    // each carries its words as its tip and its accessible name.
    const struct {
        int index;
        QStyle::StandardPixmap icon;
        const char* tip;
    } moves[] = {{2, QStyle::SP_MediaSkipBackward, "Go to first record"},
                 {0, QStyle::SP_ArrowLeft, "Move back"},
                 {1, QStyle::SP_ArrowRight, "Move forward"},
                 {3, QStyle::SP_MediaSkipForward, "Go to last record"}};
    for (const auto& move : moves) {
        auto* button = new QPushButton(tab);
        button->setIcon(style()->standardIcon(move.icon, nullptr, button));
        button->setObjectName(QStringLiteral("cmdMove%1").arg(move.index));
        button->setProperty("index", move.index);
        button->setToolTip(QString::fromLatin1(move.tip));
        button->setAccessibleName(QString::fromLatin1(move.tip));
        button->setEnabled(false);
        const int index = move.index;
        connect(button, &QPushButton::clicked, this, [this, index] { cmdMove_Click(index); });
        top->addWidget(button);
        m_cmdMove[static_cast<size_t>(move.index)] = button;
    }
    layout->addLayout(top);

    auto* split = new QSplitter(Qt::Vertical, tab);
    split->setObjectName(QStringLiteral("splSales"));
    m_salesSplit = split;
    m_grdAuction = new ListingGrid(QStringLiteral("grdAuction"), m_sales.Model(), split);
    m_grdAuction->setAccessibleName(kSalesTitle);
    m_salePanels = new SalePanels(split);
    split->addWidget(m_grdAuction);
    split->addWidget(m_salePanels);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    layout->addWidget(split, 1);

    connect(m_lstAuctionGroup, &QComboBox::activated, this, &frmAuction::lstAuctionGroup_Click);
    connect(m_chkSuccessfulAuctions, &QCheckBox::clicked, this,
            &frmAuction::chkSuccessfulAuctions_Click);
    connect(m_grdAuction, &ListingGrid::HeadClicked, this, &frmAuction::grdAuction_HeadClick);
    connect(m_grdAuction, &ListingGrid::RowChanged, this, &frmAuction::grdAuction_SelChange);
    connect(m_grdAuction, &ListingGrid::PopupRequested, this, &frmAuction::grdAuction_Popup);
    return tab;
}

QWidget* frmAuction::BuildBidsTab() {
    auto* tab = new QWidget(this);
    tab->setObjectName(QStringLiteral("tabMyBids"));
    auto* layout = new QVBoxLayout(tab);

    auto* top = new QHBoxLayout;
    m_lblBidsView = new QLabel(QStringLiteral("Current Bids"), tab);
    m_lblBidsView->setObjectName(QStringLiteral("lblBidsView"));
    top->addWidget(m_lblBidsView);
    m_lstBidGroup = new QComboBox(tab);
    m_lstBidGroup->setObjectName(QStringLiteral("lstBidGroup"));
    m_lstBidGroup->addItems({QStringLiteral("Current Bids"), QStringLiteral("Archived Bids")});
    m_lstBidGroup->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    top->addWidget(m_lstBidGroup);
    m_lblBidsView->setBuddy(m_lstBidGroup);
    m_chkSuccessfulBids = new QCheckBox(QStringLiteral("Successful bids &only"), tab);
    m_chkSuccessfulBids->setObjectName(QStringLiteral("chkSuccessfulBids"));
    top->addWidget(m_chkSuccessfulBids);
    top->addStretch(1);
    layout->addLayout(top);

    auto* split = new QSplitter(Qt::Vertical, tab);
    split->setObjectName(QStringLiteral("splBids"));
    m_bidsSplit = split;
    m_GrdBid = new ListingGrid(QStringLiteral("GrdBid"), m_bids.Model(), split);
    m_GrdBid->setAccessibleName(kBidsTitle);
    m_bidPanels = new BidPanels(split);
    split->addWidget(m_GrdBid);
    split->addWidget(m_bidPanels);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);
    layout->addWidget(split, 1);

    connect(m_lstBidGroup, &QComboBox::activated, this, &frmAuction::lstBidGroup_Click);
    connect(m_chkSuccessfulBids, &QCheckBox::clicked, this, &frmAuction::chkSuccessfulBids_Click);
    connect(m_GrdBid, &ListingGrid::HeadClicked, this, &frmAuction::GrdBid_HeadClick);
    connect(m_GrdBid, &ListingGrid::RowChanged, this, &frmAuction::GrdBid_SelChange);
    connect(m_GrdBid, &ListingGrid::PopupRequested, this, &frmAuction::GrdBid_Popup);
    return tab;
}

void frmAuction::BuildPopups() {
    m_mnuPopup = new QMenu(this);
    m_mnuPopup->setObjectName(QStringLiteral("mnuPopup"));
    QMenu* web = m_mnuPopup->addMenu(QStringLiteral("View on the &Web"));
    web->setObjectName(QStringLiteral("mnuWWW"));
    connect(PopupAction(web, QStringLiteral("mnuWWWViewItem"), QStringLiteral("&Item on eBay")),
            &QAction::triggered, this, &frmAuction::mnuWWWViewItem_Click);
    m_mnuPopupViewBidderFeedback = PopupAction(web, QStringLiteral("mnuPopupViewBidderFeedback"),
                                               QStringLiteral("&Bidder's Feedback Comments"));
    connect(m_mnuPopupViewBidderFeedback, &QAction::triggered, this,
            &frmAuction::mnuPopupViewBidderFeedback_Click);
    connect(PopupAction(m_mnuPopup, QStringLiteral("mnuItemCost"),
                        QStringLiteral("Enter Item &Cost/Shipping Information")),
            &QAction::triggered, this, &frmAuction::mnuItemCost_Click);
    m_mnuItemRelist =
        PopupAction(m_mnuPopup, QStringLiteral("mnuItemRelist"), QStringLiteral("&Relist Item"));
    connect(m_mnuItemRelist, &QAction::triggered, this, &frmAuction::mnuItemRelist_Click);
    // The same sale listed again from the creator, where it can be changed first.
    m_mnuItemRelistCreator = PopupAction(m_mnuPopup, QStringLiteral("mnuItemRelistCreator"),
                                         QStringLiteral("Relist in the &Auction Creator..."));
    connect(m_mnuItemRelistCreator, &QAction::triggered, this,
            &frmAuction::mnuItemRelistCreator_Click);
    m_mnuPopup->addSeparator();
    m_mnuPopupAuctionReturntoTask =
        PopupAction(m_mnuPopup, QStringLiteral("mnuPopupAuctionReturntoTask"),
                    QStringLiteral("Return Auction to &Task Manager"));
    connect(m_mnuPopupAuctionReturntoTask, &QAction::triggered, this,
            &frmAuction::mnuPopupAuctionReturntoTask_Click);
    connect(PopupAction(m_mnuPopup, QStringLiteral("mnuPopupDeleteAuction"),
                        QStringLiteral("&Delete Auction")),
            &QAction::triggered, this, &frmAuction::mnuPopupDeleteAuction_Click);

    m_mnuPopupBid = new QMenu(this);
    m_mnuPopupBid->setObjectName(QStringLiteral("mnuPopupBid"));
    QMenu* bidWeb = m_mnuPopupBid->addMenu(QStringLiteral("View on the &Web"));
    bidWeb->setObjectName(QStringLiteral("mnuBidWWW"));
    connect(
        PopupAction(bidWeb, QStringLiteral("mnuPopupVieweBayBid"), QStringLiteral("&Item on eBay")),
        &QAction::triggered, this, &frmAuction::mnuPopupVieweBayBid_Click);
    connect(PopupAction(bidWeb, QStringLiteral("mnuViewOtherAuctions"),
                        QStringLiteral("Seller's &other auctions")),
            &QAction::triggered, this, &frmAuction::mnuViewOtherAuctions_Click);
    connect(PopupAction(bidWeb, QStringLiteral("mnuPopupSellerFeedback"),
                        QStringLiteral("&Seller's Feedback Comments")),
            &QAction::triggered, this, &frmAuction::mnuPopupSellerFeedback_Click);
    m_mnuPopupBid->addSeparator();
    m_mnuPopupBidReturnToTask =
        PopupAction(m_mnuPopupBid, QStringLiteral("mnuPopupBidReturnToTask"),
                    QStringLiteral("Return Bid to &Task Manager"));
    connect(m_mnuPopupBidReturnToTask, &QAction::triggered, this,
            &frmAuction::mnuPopupBidReturnToTask_Click);
    connect(PopupAction(m_mnuPopupBid, QStringLiteral("mnuPopupDeleteBid"),
                        QStringLiteral("&Delete Bid")),
            &QAction::triggered, this, &frmAuction::mnuPopupDeleteBid_Click);
}

// ------------------------------------------------------------------ sales list

void frmAuction::ShowCurrentSales() {
    ShowCurrentSales(false, true, false);
}

void frmAuction::ShowCurrentSales(bool moveBack, bool goFirst, bool goLast) {
    m_lstAuctionGroup->setCurrentIndex(0);
    Guard(kSalesTitle, [&] { m_sales.ShowCurrentSales(Db(), moveBack, goFirst, goLast); });
    AfterSalesFill();
}

void frmAuction::ShowArchivedSales() {
    ShowArchivedSales(false, true, false);
}

void frmAuction::ShowArchivedSales(bool moveBack, bool goFirst, bool goLast) {
    m_lstAuctionGroup->setCurrentIndex(1);
    Guard(kSalesTitle, [&] { m_sales.ShowArchivedSales(Db(), moveBack, goFirst, goLast); });
    AfterSalesFill();
}

void frmAuction::lstAuctionGroup_Click() {
    if (GroupOf(m_lstAuctionGroup) == views::Group::Current) {
        ShowCurrentSales();
    } else {
        ShowArchivedSales();
    }
}

void frmAuction::chkSuccessfulAuctions_Click() {
    m_sales.SetSuccessfulOnly(m_chkSuccessfulAuctions->isChecked());
    lstAuctionGroup_Click();
}

void frmAuction::cmdMove_Click(int index) {
    Guard(kSalesTitle, [&] { m_sales.Move(Db(), index); });
    AfterSalesFill();
}

void frmAuction::AfterSalesFill() {
    WriteCaptions(m_lstAuctionGroup, m_sales.GroupCaptions());
    if (const std::optional<qint64> last = m_sales.GroupRow1Data()) {
        m_lstAuctionGroup->setItemData(1, *last);
    }
    m_lblSalesView->setText(m_sales.ViewLabel());
    const int totalLabel = m_sales.TotalLabel();
    if (totalLabel >= 0 && totalLabel < 4 && !m_sales.Total().isEmpty()) {
        m_lblInfo[static_cast<size_t>(totalLabel)]->setText(m_sales.Total());
    }
    const views::MoveButtons buttons = m_sales.Buttons();
    for (size_t i = 0; i < m_cmdMove.size(); ++i) {
        m_cmdMove[i]->setEnabled(buttons.enabled[i]);
    }
    if (m_sales.EmptyView() || m_sales.Model().rowCount() == 0) {
        m_salePanels->Clear();
        return;
    }
    m_grdAuction->SelectRowQuietly(0);
    ShowSelectedSale();
}

QString frmAuction::SelectedSaleItem() const {
    return m_sales.Model().ItemNumber(m_grdAuction->CurrentRow());
}

void frmAuction::ShowSelectedSale() {
    const int row = m_grdAuction->CurrentRow();
    const QString item = m_sales.Model().ItemNumber(row);
    if (item.isEmpty()) {
        return;
    }
    try {
        if (m_sales.Model().IsDutchRow(row)) {
            if (const auto panel = views::ShowDutchSaleDetails(Db(), item)) {
                m_salePanels->ShowDutchSale(*panel);
            }
        } else if (const auto panel = views::ShowSaleDetails(
                       Db(), item, m_sales.ShownGroup(),
                       m_sales.Model().Text(row, views::ListingModel::kEnd))) {
            m_salePanels->ShowSale(*panel);
        }
    } catch (const std::exception&) {
        // The panel keeps what it showed; the next selection reads afresh.
    }
}

void frmAuction::grdAuction_SelChange() {
    ShowSelectedSale();
}

void frmAuction::grdAuction_HeadClick(int column) {
    m_sales.Model().HeadClick(column);
}

void frmAuction::RefreshTimeLeftSales() {
    if (GroupOf(m_lstAuctionGroup) != views::Group::Current) {
        return;
    }
    try {
        if (!m_sales.RefreshTimeLeftSales(Db())) {
            return;
        }
        // The selected item counts down in the plain panel too, whatever its
        // kind; the panel that the selection showed stays in view.
        const int row = m_grdAuction->CurrentRow();
        const QString item = m_sales.Model().ItemNumber(row);
        if (item.isEmpty()) {
            return;
        }
        if (const auto panel =
                views::ShowSaleDetails(Db(), item, views::Group::Current,
                                       m_sales.Model().Text(row, views::ListingModel::kEnd))) {
            m_salePanels->FillSale(*panel);
        }
    } catch (const std::exception&) {
        // The time-left refresh never reports; the next one reads afresh.
    }
}

// ------------------------------------------------------------------ find

void frmAuction::mnuFindItem_Click() {
    const QString title = QStringLiteral("Find Item");
    const bool bids = m_SSTab1->currentIndex() == kBidsTab;
    if (!bids) {
        m_SSTab1->setCurrentIndex(kSalesTab);
    }
    ListingGrid* grid = bids ? m_GrdBid : m_grdAuction;
    const std::optional<QString> asked = core::CurrentUi().Prompt(
        QStringLiteral("Item number, or words of the title:"), title, m_lastFind);
    if (!asked || asked->trimmed().isEmpty()) {
        return;
    }
    m_lastFind = asked->trimmed();
    const int row = grid->Listing().FindRow(m_lastFind, grid->CurrentRow() + 1);
    if (row < 0) {
        core::CurrentUi().Message(QStringLiteral("No item of the list shown matches \"") +
                                      m_lastFind + QStringLiteral("\"."),
                                  title, core::Icon::Information);
        return;
    }
    // As a click on the row: the panel shows it.
    grid->setCurrentIndex(grid->model()->index(row, 0));
    grid->scrollTo(grid->currentIndex());
    grid->setFocus(Qt::ShortcutFocusReason);
}

// ------------------------------------------------------------------ bids list

void frmAuction::ShowCurrentBids() {
    m_lstBidGroup->setCurrentIndex(0);
    Guard(kBidsTitle, [this] { m_bids.ShowCurrentBids(Db()); });
    AfterBidsFill();
}

void frmAuction::ShowArchivedBids() {
    m_lstBidGroup->setCurrentIndex(1);
    Guard(kBidsTitle, [this] { m_bids.ShowArchivedBids(Db()); });
    AfterBidsFill();
}

void frmAuction::lstBidGroup_Click() {
    if (GroupOf(m_lstBidGroup) == views::Group::Current) {
        ShowCurrentBids();
    } else {
        ShowArchivedBids();
    }
}

void frmAuction::chkSuccessfulBids_Click() {
    m_bids.SetSuccessfulOnly(m_chkSuccessfulBids->isChecked());
    lstBidGroup_Click();
}

void frmAuction::AfterBidsFill() {
    WriteCaptions(m_lstBidGroup, m_bids.GroupCaptions());
    m_lblBidsView->setText(m_bids.ViewLabel());
    if (!m_bids.Total().isEmpty()) {
        m_lblInfo[static_cast<size_t>(m_bids.TotalLabel())]->setText(m_bids.Total());
    }
    if (m_bids.EmptyView() || m_bids.Model().rowCount() == 0) {
        m_bidPanels->Clear();
        return;
    }
    m_GrdBid->SelectRowQuietly(0);
    ShowSelectedBid();
}

QString frmAuction::SelectedBidItem() const {
    return m_bids.Model().ItemNumber(m_GrdBid->CurrentRow());
}

void frmAuction::ShowSelectedBid() {
    const int row = m_GrdBid->CurrentRow();
    const QString item = m_bids.Model().ItemNumber(row);
    if (item.isEmpty()) {
        return;
    }
    try {
        if (const auto details =
                views::ShowBidDetails(Db(), item, m_bids.ShownGroup(),
                                      m_bids.Model().Text(row, views::ListingModel::kEnd))) {
            m_bidPanels->ShowBid(*details);
        }
    } catch (const std::exception&) {
        // The panel keeps what it showed.
    }
}

void frmAuction::GrdBid_SelChange() {
    ShowSelectedBid();
}

void frmAuction::GrdBid_HeadClick(int column) {
    m_bids.Model().HeadClick(column);
}

void frmAuction::RefreshTimeLeftBids() {
    if (GroupOf(m_lstBidGroup) != views::Group::Current) {
        return;
    }
    try {
        if (m_bids.RefreshTimeLeftBids(Db())) {
            ShowSelectedBid();
        }
    } catch (const std::exception&) {
        // As for the sales: never reported.
    }
}

// ------------------------------------------------------------------ sales pop-up

void frmAuction::grdAuction_Popup(int row, const QPoint& globalPos) {
    const QString item = m_sales.Model().ItemNumber(row);
    if (item.isEmpty()) {
        return;
    }
    const QString timeLeft = m_sales.ShownGroup() == views::Group::Archived
                                 ? QStringLiteral("Ended")
                                 : m_sales.Model().Text(row, views::ListingModel::kEnd);
    views::SalePopup state;
    try {
        state = views::SalePopupFor(Db(), item, m_sales.Model().IsDutchRow(row), timeLeft);
    } catch (const std::exception&) {
        // The menu stays as built.
    }
    m_mnuItemRelist->setEnabled(state.relist);
    m_mnuItemRelistCreator->setEnabled(state.relist);
    m_mnuPopupViewBidderFeedback->setEnabled(state.bidderFeedback);
    m_mnuPopupAuctionReturntoTask->setEnabled(state.returnToTask);
    m_mnuPopup->popup(globalPos);
}

void frmAuction::mnuWWWViewItem_Click() {
    const QString item = SelectedSaleItem();
    if (item.isEmpty()) {
        return;
    }
    OpenSiteLink(QStringLiteral("view this item on eBay"), [this, item] {
        return views::SiteLinkUrl(Db(), views::SiteLink::ViewAuction, item);
    });
}

void frmAuction::mnuPopupViewBidderFeedback_Click() {
    const int row = m_grdAuction->CurrentRow();
    const QString item = m_sales.Model().ItemNumber(row);
    if (item.isEmpty()) {
        return;
    }
    const bool dutch = m_sales.Model().IsDutchRow(row);
    OpenSiteLink(QStringLiteral("view bidder feedback"), [this, item, dutch]() -> QString {
        QString bidder;
        if (dutch) {
            // A multi-winner sale has many bidders: the user names one.
            const std::optional<QString> named =
                core::CurrentUi().Prompt(QStringLiteral("View eBay Feedback for:"),
                                         QStringLiteral("View Bidder Feedback Profile"), QString());
            if (!named) {
                return {};
            }
            bidder = named->trimmed();
        } else {
            bidder = views::SalePopupFor(Db(), item, false, QString()).highBidder;
        }
        if (bidder.isEmpty()) {
            return {};
        }
        return views::SiteLinkUrl(Db(), views::SiteLink::ViewFeedback, bidder);
    });
}

void frmAuction::mnuItemCost_Click() {
    const QString item = SelectedSaleItem();
    if (item.isEmpty()) {
        return;
    }
    Guard(QStringLiteral("Item #: ") + item, [&] { EditItemCost(Db(), item, this); });
}

void frmAuction::mnuItemRelist_Click() {
    const QString item = SelectedSaleItem();
    if (item.isEmpty()) {
        return;
    }
    OpenSiteLink(QStringLiteral("relist an item on eBay"), [this, item] {
        return views::SiteLinkUrl(Db(), views::SiteLink::RelistItem, item);
    });
}

void frmAuction::mnuItemRelistCreator_Click() {
    const QString item = SelectedSaleItem();
    if (item.isEmpty()) {
        return;
    }
    // From the document the sale was posted from when the creator still has
    // it, else from the sale's title.
    std::optional<creator::RelistSource> source;
    if (!Guard(QStringLiteral("Relist Item"),
               [&] {
                   source =
                       creator::FindRelistSource(Db(), core::CurrentSession().CurrentUser, item);
               }) ||
        !source) {
        return;
    }
    RunCreator([&source](frmLWAC& creator) {
        if (source->creatorId > 0 && creator.OpenRecord(source->creatorId)) {
            return;
        }
        creator::CreatorDocument doc = creator.NewDocument();
        doc.txtItemTitle = source->title;
        doc.txtEbayTitle = creator::EbayTitleFor(source->title);
        doc.lblAuctionType = QStringLiteral("auction");
        creator.OpenDocument(doc);
    });
}

void frmAuction::mnuPopupAuctionReturntoTask_Click() {
    const QString item = SelectedSaleItem();
    if (item.isEmpty()) {
        return;
    }
    Guard(kSalesTitle, [&] { views::ReturnSaleToTask(Db(), item); });
}

void frmAuction::mnuPopupDeleteAuction_Click() {
    const QString item = SelectedSaleItem();
    if (item.isEmpty()) {
        return;
    }
    const core::Answer answer = core::CurrentUi().Ask(
        QStringLiteral("Are you sure you want to delete ") + item +
            QStringLiteral(" from your database?"),
        QStringLiteral("Delete Auction?"), core::Buttons::YesNo, core::Answer::No);
    if (answer != core::Answer::Yes) {
        return;
    }
    if (Guard(QStringLiteral("Delete Auction"), [&] { views::DeleteSale(Db(), item); })) {
        lstAuctionGroup_Click();
    }
}

// ------------------------------------------------------------------ bids pop-up

void frmAuction::GrdBid_Popup(int row, const QPoint& globalPos) {
    const QString item = m_bids.Model().ItemNumber(row);
    if (item.isEmpty()) {
        return;
    }
    views::BidPopup state;
    try {
        state = views::BidPopupFor(Db(), item);
    } catch (const std::exception&) {
        // The menu stays as built.
    }
    m_mnuPopupBidReturnToTask->setEnabled(state.returnToTask);
    m_mnuPopupBid->popup(globalPos);
}

void frmAuction::mnuPopupVieweBayBid_Click() {
    const QString item = SelectedBidItem();
    if (item.isEmpty()) {
        return;
    }
    OpenSiteLink(QStringLiteral("view this item on eBay"), [this, item] {
        return views::SiteLinkUrl(Db(), views::SiteLink::ViewAuction, item);
    });
}

void frmAuction::mnuViewOtherAuctions_Click() {
    const QString item = SelectedBidItem();
    if (item.isEmpty()) {
        return;
    }
    OpenSiteLink(QStringLiteral("view this seller's other auctions"), [this, item]() -> QString {
        const QString seller = views::BidPopupFor(Db(), item).seller;
        return seller.isEmpty()
                   ? QString()
                   : views::SiteLinkUrl(Db(), views::SiteLink::ViewSellersAuctions, seller);
    });
}

void frmAuction::mnuPopupSellerFeedback_Click() {
    const QString item = SelectedBidItem();
    if (item.isEmpty()) {
        return;
    }
    OpenSiteLink(QStringLiteral("view seller feedback"), [this, item]() -> QString {
        const QString seller = views::BidPopupFor(Db(), item).seller;
        return seller.isEmpty() ? QString()
                                : views::SiteLinkUrl(Db(), views::SiteLink::ViewFeedback, seller);
    });
}

void frmAuction::mnuPopupBidReturnToTask_Click() {
    const QString item = SelectedBidItem();
    if (item.isEmpty()) {
        return;
    }
    Guard(kBidsTitle, [&] { views::ReturnBidToTask(Db(), item); });
}

void frmAuction::mnuPopupDeleteBid_Click() {
    const QString item = SelectedBidItem();
    if (item.isEmpty()) {
        return;
    }
    const core::Answer answer = core::CurrentUi().Ask(
        QStringLiteral("Are you sure you want to delete ") + item +
            QStringLiteral(" from your database?"),
        QStringLiteral("Delete Bid?"), core::Buttons::YesNo, core::Answer::No);
    if (answer != core::Answer::Yes) {
        return;
    }
    if (Guard(QStringLiteral("Delete Bid"), [&] { views::DeleteBid(Db(), item); })) {
        lstBidGroup_Click();
    }
}

}  // namespace lw::ui
