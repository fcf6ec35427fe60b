// SPDX-License-Identifier: GPL-3.0-or-later
// The item panels below the lists: what the plain sale, multi-winner sale,
// plain bid and multi-winner bid panels show for one item, read from the
// database by item number, with the "n/a" and "-" conventions, the colours and
// the star pictures (by name: the window loads the picture). A panel is only
// a view: nothing here writes to the database, and nothing here draws.
#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <optional>

#include "core/store.h"
#include "views/listing_model.h"

namespace lw::views {

// The name of the star picture for a feedback text: "eBayNoStar",
// "eBay10-99", "eBay100-499", "eBay500-999", "eBay1000-9999" or "eBay10000".
QString StarIconFor(const QString& feedback);
QString NoStar();

// One line of a multi-winner list: bidder and feedback in 25 columns, the
// quantity up to column 31, then "@     " and the price.
QString DutchListRow(const QString& bidderAndFeedback, const QString& quantity,
                     const QString& highBid);

// The words beside the values: "Ended:", "Minimum:", "Final Bid:" once the
// time left reads "Ended", else "Ends:", "Starts at:", "Currently:". Empty
// words (a cleared panel) leave the labels as they are.
struct PanelWords {
    QString ends;
    QString startsAt;
    QString currently;
};
PanelWords PanelWordsFor(const QString& timeLeft);

// fraAuctionInfo.
struct SalePanel {
    QString title;                          // frame caption; "&" doubled
    CellColour colour = CellColour::Green;  // frame caption and lblCurrently
    QString category;                       // lblCategory; "&" doubled
    QString startsAt;                       // lblStartsAt
    QString currently;                      // lblCurrently
    QString reserve;                        // lblReserve
    QString bids;                           // lblBids
    QString quantity;                       // lblQuantity
    QString highBidder;                     // lblHighBidderName
    QString highBidderStar;                 // the star beside it
    QString started;                        // lblStarted
    QString ends;                           // lblEnds
    QString timeLeft;                       // lblTimeLeft
    PanelWords words;                       // lblLabel(55), (71), (48)
};

// fraDutchInfo.
struct DutchSalePanel {
    QString title;
    CellColour colour = CellColour::Green;  // frame caption and lblTotalD
    QString category;                       // lblCategoryD
    QString startsAt;                       // lblStartsAtD
    QString bids;                           // lblBidsD
    QString quantity;                       // lblQuantityD
    QString started;                        // lblStartedD
    QString ends;                           // lblEndsD
    QString total;                          // lblTotalD, "Currency"
    QStringList winners;                    // lstDutchWinners
};

// fraBidInfo.
struct BidPanel {
    QString title;
    CellColour colour = CellColour::Green;  // frame caption and lblBidCurrently
    QString category;                       // lblBidCategory
    QString startsAt;                       // lblBidStartsAt
    QString currently;                      // lblBidCurrently
    QString myMax;                          // lblBidMyMax
    QString bids;                           // lblBidBids
    QString quantity;                       // lblBidQuantity
    QString highBidder;                     // lblBidHighBidderName
    QString highBidderStar;                 // picBidStar
    QString seller;                         // lblBidSellerName
    QString sellerStar;                     // PicSellerStar
    QString started;                        // lblBidStarted
    QString ends;                           // lblBidEnds
    QString timeLeft;                       // lblBidTimeLeft
    PanelWords words;                       // lblLabel(70), (61), (62)
};

// frmDutchBid.
struct DutchBidPanel {
    QString title;
    CellColour colour = CellColour::Red;  // green once one winner is the user
    // lblDutchBid(0) to (5): category, minimum bid, bids, quantity, start, end.
    std::array<QString, 6> values;
    QString endsWord;     // lblLabel(107): "Ended:" or "Ends:"
    QStringList bidders;  // lstDutchBidders
    int userWins = 0;     // rows whose winner is the user's site login
};

// What ShowBidDetails found: which panel to show, and its content.
struct BidDetails {
    bool dutch = false;  // frmDutchBid shown, fraBidInfo hidden
    BidPanel plain;
    DutchBidPanel dutchPanel;
};

// gridTimeLeft is column 4 of the selected row; the archive shows "Ended".
// nullopt when the item has no row (deleted since the list was filled): the
// panel stays as it is. Throw core::StoreError when the database fails.
std::optional<SalePanel> ShowSaleDetails(core::Database& db, const QString& itemNumber, Group group,
                                         const QString& gridTimeLeft);
std::optional<DutchSalePanel> ShowDutchSaleDetails(core::Database& db, const QString& itemNumber);
std::optional<BidDetails> ShowBidDetails(core::Database& db, const QString& itemNumber, Group group,
                                         const QString& gridTimeLeft);

// The empty state of the empty list view.
SalePanel ClearSalePanel();
BidPanel ClearBidPanel();

}  // namespace lw::views
