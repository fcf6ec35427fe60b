// SPDX-License-Identifier: GPL-3.0-or-later
// The item the task manager works on: the row picked in the item list, and
// the one database row behind it (a multi-winner sale's winner row in Dutch,
// else the Auctions or the Bids row). Every panel's load and save finds its
// record here, so that they all agree on it. Field names that come from the
// database (a ToDo row names the fields its mail task sets) are checked
// against the table before they go into a statement; values are bound.
#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

#include "core/store.h"

namespace lw::tasks {

enum class Side { Sales, Bids };

// "Auction?" of a ToDo or AuctionFilter of a ToDo Filters row.
inline bool IsSalesSide(Side side) {
    return side == Side::Sales;
}
// The SQL condition that such a flag column (given quoted) is the side bound
// to the condition's one parameter as IsSalesSide(side); Null is False.
inline QString SideCondition(const QString& quotedColumn) {
    return QStringLiteral("(IFNULL(") + quotedColumn + QStringLiteral(", 0) <> 0) = ?");
}

struct SelectedItem {
    Side side = Side::Sales;
    QString itemNumber;   // the row's item data
    QString dutchBidder;  // set only for a sales row that begins with "D"
    // Set: only this user's row of the item is found. Empty: the item's row
    // whoever's it is, as the list row alone names it.
    QString userName;
    bool IsDutch() const { return !dutchBidder.isEmpty(); }
};

// The bidder of a multi-winner row's text: what stands behind the last "(",
// with the closing character cut. "" when the text has no "(".
QString SelectedDutchBidder(const QString& listText);

// The selection a list row stands for. On the sales side a text beginning
// with "D" is a multi-winner row; on the bids side there is none.
SelectedItem SelectionFromRow(Side side, const QString& rowText, const QString& itemData);

// The table that holds the selected record: "Dutch", "Auctions" or "Bids".
QString RecordTable(const SelectedItem& item);

// The whole selected record, column name to value (Null as a null QVariant);
// nullopt when no row matches.
std::optional<QVariantMap> ReadSelectedRecord(core::Database& db, const SelectedItem& item);
// The statement behind ReadSelectedRecord, bound and not yet stepped: for a
// reader that takes a few fields by name (Flag, IsNull) and no map.
core::Statement PrepareSelectedRecord(core::Database& db, const SelectedItem& item);

// The row a statement stands on, column name to value (Null as a null QVariant).
QVariantMap RecordOf(const core::Statement& statement);

// Whether the selected record's table has this column (case-blind).
bool RecordHasField(core::Database& db, const SelectedItem& item, const QString& field);

// Sets fields of the selected record; a null QVariant writes Null. A field
// the table does not have throws StoreError naming it, and nothing is
// written. Returns the number of rows changed (0 when the record is gone).
int WriteSelectedRecord(core::Database& db, const SelectedItem& item, const QVariantMap& fields);

}  // namespace lw::tasks
