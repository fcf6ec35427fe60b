// SPDX-License-Identifier: GPL-3.0-or-later
// The cost and shipping figures of one sale, as the item cost command of the
// sales list reads and writes them: ItemCost, OrderShipping and
// InsuranceCost of the user's Auctions row, with the ShippingMethod mark that
// goes back with them. Values are bound, never put into SQL text. Nothing
// here shows anything or asks anything.
#pragma once

#include <QString>
#include <optional>

#include "core/store.h"

namespace lw::views {

// The three boxes of the item cost form, in order.
struct ItemCostValues {
    QString itemCost;
    QString orderShipping;
    QString insuranceCost;
};

// The row's three figures as the form shows them: Null (or nothing) as
// "$0.00", any other value as it is stored. nullopt when the user has no
// sale of that number. Throws core::StoreError when the database fails.
std::optional<ItemCostValues> ReadItemCost(core::Database& db, const QString& userName,
                                           const QString& itemNumber);

// True when the box may be written: empty, or an amount of money ("$4.50",
// "4.5", "1,200.00", "(3.00)").
bool IsMoneyText(const QString& text);
// The first box of the three that is not money, 0 to 2; -1 when all are.
int FirstBadBox(const ItemCostValues& typed);

// What the row takes from the boxes: each amount in "Currency" format, an
// emptied box as Null; ShippingMethod becomes "0.00" when the item cost box
// was emptied and otherwise stays as it is. Every box must be money.
struct ItemCostRow {
    QString itemCost;       // null: Null
    QString orderShipping;  // null: Null
    QString insuranceCost;  // null: Null
    bool markShippingMethod = false;
};
ItemCostRow ItemCostWrite(const ItemCostValues& typed);

// Writes the boxes back to the user's sale. False when there is no such
// row. Throws core::StoreError when the database fails; a box that is not
// money throws std::invalid_argument and nothing is written.
bool WriteItemCost(core::Database& db, const QString& userName, const QString& itemNumber,
                   const ItemCostValues& typed);

}  // namespace lw::views
