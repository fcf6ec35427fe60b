// SPDX-License-Identifier: GPL-3.0-or-later
// My Sales and My Bids: which rows each list shows (the current and archived
// cuts, the successful filters), how the sales pages move, the view settings
// they read and store, the captions of the group combos, the totals, and the
// time-left refresh. Each fill reads its rows with one query (the successful
// bids with two, shown one after the other), sorted by the stored number and
// day columns, and hands them to its ListingModel. Nothing
// here draws, and nothing here writes a row of the database.
#pragma once

#include <QDateTime>
#include <QString>
#include <array>
#include <optional>

#include "core/session.h"
#include "core/store.h"
#include "views/listing_model.h"

namespace lw::views {

// cmdMove(0) "Move back", (1) "Move forward", (2) "Go to first record",
// (3) "Go to last record".
struct MoveButtons {
    std::array<bool, 4> enabled{};
    bool operator==(const MoveButtons&) const = default;
};
MoveButtons UpdateMoveButtons(qint64 start, qint64 end, qint64 count);

// One page of sales: the 1-based bounds that are stored, the records passed
// over before the first row, and the records the page may take. The step back
// and the jump to the end are one record off, as the list has always had them.
struct SalesPage {
    qint64 start = 1;
    qint64 end = 0;
    qint64 skip = 0;
    qint64 interval = 0;
};
// interval is the stored page size (0: all rows); storedStart and storedEnd
// are the bounds saved by the previous fill (nullopt: absent).
SalesPage PlanSalesPage(qint64 count, qint64 interval, std::optional<qint64> storedStart,
                        std::optional<qint64> storedEnd, bool moveBack, bool goFirst, bool goLast);

// The "TimeLeft" label pair of the main window (labels 110 and 111): how many
// ticks of Timer2 to wait before the time-left columns are redrawn.
class TimeLeftTicker {
public:
    TimeLeftTicker() = default;
    explicit TimeLeftTicker(const core::TimeLeftTimer& timer);
    // One tick; true when the time-left columns are to be redrawn now.
    bool Tick();
    QString Wanted() const { return m_wanted; }
    QString Counted() const { return m_counted; }

private:
    QString m_wanted = QStringLiteral("0");
    QString m_counted = QStringLiteral("0");
};

// The sales list (grid grdAuction, combo lstAuctionGroup, check
// chkSuccessfulAuctions, buttons cmdMove). Throws core::StoreError when the
// database fails; the window catches it.
class SalesListing {
public:
    SalesListing();

    ListingModel& Model() { return m_model; }
    const ListingModel& Model() const { return m_model; }

    // chkSuccessfulAuctions: only sales with bids. The window refills after
    // changing it (ShowGroup with the group shown).
    void SetSuccessfulOnly(bool on) { m_successfulOnly = on; }
    bool SuccessfulOnly() const { return m_successfulOnly; }

    // A click on the group combo, and every refresh after another window
    // closes: the group's first page.
    void ShowGroup(core::Database& db, Group group);
    // With no flag set the list moves one page forward.
    void ShowCurrentSales(core::Database& db, bool moveBack, bool goFirst, bool goLast);
    void ShowArchivedSales(core::Database& db, bool moveBack, bool goFirst, bool goLast);
    // cmdMove(index) on the group that the combo shows.
    void Move(core::Database& db, int index);
    Group ShownGroup() const { return m_group; }

    // The texts of the combo's rows 0 and 1, computed afresh.
    QString CurrentSalesCaption(core::Database& db) const;
    QString ArchivedSalesCaption(core::Database& db) const;
    // Both rows as the last fill wrote them.
    const std::array<QString, 2>& GroupCaptions() const { return m_captions; }
    // The item data of the combo's row 1: the last row number, once a page
    // has reached the end of its set.
    std::optional<qint64> GroupRow1Data() const { return m_row1Data; }

    // lblLabel(57): "Current Sales" or "Archived Sales".
    QString ViewLabel() const;
    // The total of the High Bid column, "Currency", and the lblInfo index it
    // goes to: 2, or 1 for the empty view, which also shows "$0.00".
    QString Total() const { return m_total; }
    int TotalLabel() const { return m_totalLabel; }
    MoveButtons Buttons() const { return m_buttons; }
    // The last fill found no record: the item panel is to be cleared.
    bool EmptyView() const { return m_empty; }
    // Records of the group, as the last fill counted them.
    qint64 RecordCount() const { return m_count; }

    // Column 4 of the current sales anew from the Auctions rows; the window
    // then shows the selected row's item again in the plain sale panel. Does
    // nothing, and returns false, while the archive is shown.
    bool RefreshTimeLeftSales(core::Database& db,
                              const QDateTime& now = QDateTime::currentDateTime());

private:
    void Show(core::Database& db, Group group, bool moveBack, bool goFirst, bool goLast);
    qint64 Count(core::Database& db, Group group) const;
    // knownCount: the group's count when the caller has just read it.
    QString Caption(core::Database& db, Group group,
                    std::optional<qint64> knownCount = std::nullopt) const;
    void WriteCaptions(core::Database& db);

    ListingModel m_model;
    Group m_group = Group::Current;
    bool m_successfulOnly = false;
    std::array<QString, 2> m_captions;
    std::optional<qint64> m_row1Data;
    QString m_total;
    int m_totalLabel = 2;
    MoveButtons m_buttons;
    bool m_empty = false;
    qint64 m_count = 0;
};

// The bids list (grid GrdBid, combo lstBidGroup, check chkSuccessfulBids).
// No paging: a fill shows every row of its group.
class BidsListing {
public:
    BidsListing();

    ListingModel& Model() { return m_model; }
    const ListingModel& Model() const { return m_model; }

    void SetSuccessfulOnly(bool on) { m_successfulOnly = on; }
    bool SuccessfulOnly() const { return m_successfulOnly; }

    void ShowGroup(core::Database& db, Group group);
    // Delegate to the successful twins while chkSuccessfulBids is ticked.
    void ShowCurrentBids(core::Database& db);
    void ShowArchivedBids(core::Database& db);
    // The user's won bids, then the user's wins of multi-winner items.
    void ShowSuccessfulCurrentBids(core::Database& db);
    void ShowSuccessfulArchivedBids(core::Database& db);
    Group ShownGroup() const { return m_group; }

    // The sort that the list takes at start-up and after the database window:
    // column 4, direction 1.
    void ApplyInitialSort();

    QString CurrentBidsCaption(core::Database& db) const;
    QString ArchivedBidsCaption(core::Database& db) const;
    const std::array<QString, 2>& GroupCaptions() const { return m_captions; }

    // "Current Bids" or "Archived Bids".
    QString ViewLabel() const;
    // lblInfo(3), "Currency"; "$0.00" for the empty view.
    QString Total() const { return m_total; }
    int TotalLabel() const { return 3; }
    bool EmptyView() const { return m_empty; }
    qint64 RecordCount() const { return m_count; }

    bool RefreshTimeLeftBids(core::Database& db,
                             const QDateTime& now = QDateTime::currentDateTime());

private:
    void Show(core::Database& db, Group group, bool successful);
    qint64 Count(core::Database& db, Group group, bool successful) const;
    QString Caption(core::Database& db, Group group, bool successful,
                    std::optional<qint64> knownCount = std::nullopt) const;
    void WriteCaptions(core::Database& db, bool successful);

    ListingModel m_model;
    Group m_group = Group::Current;
    bool m_successfulOnly = false;
    std::array<QString, 2> m_captions;
    QString m_total;
    bool m_empty = false;
    qint64 m_count = 0;
};

// Timer2's redraw: the time-left column of each list whose combo shows row 0.
void RefreshTimeLeftOnTick(core::Database& db, SalesListing& sales, BidsListing& bids);

}  // namespace lw::views
