// SPDX-License-Identifier: GPL-3.0-or-later
// The item panels below the two lists: fraAuctionInfo and fraDutchInfo under
// My Sales, fraBidInfo and frmDutchBid under My Bids, with the star pictures
// beside the bidder and seller names. They only show what views/panels
// worked out; they never read or write the database.
#pragma once

#include <QColor>
#include <QGroupBox>
#include <QPixmap>
#include <QString>
#include <QWidget>

#include "views/panels.h"

class QLabel;
class QListWidget;

namespace lw::ui {

// The picture of a star name of views::StarIconFor ("eBayNoStar",
// "eBay10-99", ...), 16 by 16 device-independent pixels drawn at the given
// pixel density, its outline readable on background; an empty picture for
// an unknown name.
QPixmap StarPicture(const QString& name, qreal devicePixelRatio = 1.0,
                    const QColor& background = Qt::white);
// What the star of that name says about the feedback score, as its tip
// tells it; empty for an unknown name.
QString StarMeaning(const QString& name);

// A panel frame whose least size is that of its contents: the title (an
// item's title and number) is drawn cut in the middle when the frame is
// narrower than it, and never widens the window. The title is the item's,
// not a caption: it takes no mnemonic.
class PanelFrame : public QGroupBox {
    Q_OBJECT
public:
    explicit PanelFrame(QWidget* parent);

    QSize minimumSizeHint() const override;
    // The title in the colour of the item's state, readable on the window.
    void SetTitleColour(views::CellColour colour);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor m_titleColour;
};

// fraAuctionInfo and fraDutchInfo; one of them is shown.
class SalePanels : public QWidget {
    Q_OBJECT
public:
    explicit SalePanels(QWidget* parent = nullptr);

    // Fills fraAuctionInfo and shows it in place of fraDutchInfo.
    void ShowSale(const views::SalePanel& panel);
    // Fills fraAuctionInfo and leaves shown whichever frame was: the
    // time-left refresh, which must not turn a multi-winner sale's panel
    // into the plain one.
    void FillSale(const views::SalePanel& panel);
    void ShowDutchSale(const views::DutchSalePanel& panel);
    // ClearSalePanel: the plain panel in its empty state.
    void Clear();
    // The time left of the plain panel, as the pop-up menu judges it.
    QString TimeLeft() const;

protected:
    // A new palette chooses the green and red afresh.
    void changeEvent(QEvent* event) override;

private:
    QGroupBox* m_fraAuctionInfo = nullptr;
    QGroupBox* m_fraDutchInfo = nullptr;
};

// fraBidInfo and frmDutchBid; one of them is shown.
class BidPanels : public QWidget {
    Q_OBJECT
public:
    explicit BidPanels(QWidget* parent = nullptr);

    void ShowBid(const views::BidDetails& details);
    // ClearBidPanel.
    void Clear();

protected:
    void changeEvent(QEvent* event) override;

private:
    QGroupBox* m_fraBidInfo = nullptr;
    QGroupBox* m_frmDutchBid = nullptr;
};

}  // namespace lw::ui
