// SPDX-License-Identifier: GPL-3.0-or-later
// The item cost figures of a sale: read for the form, checked, written back.
#include "views/item_cost.h"

#include <stdexcept>

#include "core/text.h"

namespace lw::views {

namespace {

const QString kNoAmount = QStringLiteral("$0.00");

QString Shown(const core::Statement& row, const QString& column) {
    if (row.IsNull(column)) {
        return kNoAmount;
    }
    const QString value = row.Text(column);
    return value.trimmed().isEmpty() ? kNoAmount : value;
}

QString Amount(const QString& box) {
    const QString text = box.trimmed();
    if (text.isEmpty()) {
        return QString();
    }
    return core::Format(core::TextToNumber(text).value_or(0.0), QStringLiteral("Currency"));
}

}  // namespace

std::optional<ItemCostValues> ReadItemCost(core::Database& db, const QString& userName,
                                           const QString& itemNumber) {
    core::Statement row =
        db.Prepare(QStringLiteral("SELECT * FROM Auctions WHERE UserName = ? AND ItemNumber = ?"));
    row.BindAll(userName, itemNumber);
    if (!row.Step()) {
        return std::nullopt;
    }
    return ItemCostValues{Shown(row, QStringLiteral("ItemCost")),
                          Shown(row, QStringLiteral("OrderShipping")),
                          Shown(row, QStringLiteral("InsuranceCost"))};
}

bool IsMoneyText(const QString& text) {
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() || core::TextToNumber(trimmed).has_value();
}

int FirstBadBox(const ItemCostValues& typed) {
    const QString* boxes[] = {&typed.itemCost, &typed.orderShipping, &typed.insuranceCost};
    for (int box = 0; box < 3; ++box) {
        if (!IsMoneyText(*boxes[box])) {
            return box;
        }
    }
    return -1;
}

ItemCostRow ItemCostWrite(const ItemCostValues& typed) {
    if (FirstBadBox(typed) >= 0) {
        throw std::invalid_argument("an item cost box holds no amount of money");
    }
    ItemCostRow row;
    row.itemCost = Amount(typed.itemCost);
    row.orderShipping = Amount(typed.orderShipping);
    row.insuranceCost = Amount(typed.insuranceCost);
    // The emptied cost leaves its mark in ShippingMethod, which also keeps
    // the poster's sidecar files from writing over the figures typed here.
    row.markShippingMethod = typed.itemCost.trimmed().isEmpty();
    return row;
}

bool WriteItemCost(core::Database& db, const QString& userName, const QString& itemNumber,
                   const ItemCostValues& typed) {
    const ItemCostRow row = ItemCostWrite(typed);
    core::Statement write = db.Prepare(
        QStringLiteral("UPDATE Auctions SET ItemCost = ?, OrderShipping = ?, InsuranceCost = ?, "
                       "ShippingMethod = CASE WHEN ? THEN '0.00' ELSE ShippingMethod END "
                       "WHERE UserName = ? AND ItemNumber = ?"));
    write.BindAll(row.itemCost, row.orderShipping, row.insuranceCost, row.markShippingMethod,
                  userName, itemNumber);
    write.Run();
    return db.Changes() > 0;
}

}  // namespace lw::views
