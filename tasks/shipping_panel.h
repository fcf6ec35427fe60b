// SPDX-License-Identifier: GPL-3.0-or-later
// The shipping panel of a sale or a bid and the item-received panel of a bid:
// what they show of the selected record and what their saves write. Plain
// structs whose fields are named after the controls; nothing here draws, and
// nothing here ends an item: a save names the removal code ("SHS", "IRR")
// that its caller passes on to the removal rule.
#pragma once

#include <QDate>
#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

struct ShippingPanel {
    QString frameTitle;          // "Shipping Info for #" + ItemNumber
    int lstShippingMethod = -1;  // row of ShippingMethods()
    QString txtShippingDate;
    bool txtShippingDateEnabled = false;
    QString txtShippingCost2 = NoMoney();  // OrderShipping: what the partner pays
    QString txtActualShippingCost;         // ShippingCost: what the shipping cost
    QString txtInsuranceCost;
    QString txtTrackingNumber;
    QString txtInsuranceNumber;
};

// ShowShipping: nullopt when the record is gone; Null fields show empty,
// the money fields in "Currency". Throws core::StoreError.
std::optional<ShippingPanel> ShowShipping(core::Database& db, const SelectedItem& item);
// SaveShipping: each field Null when its box is empty; removal code "SHS"
// when a shipping date stands.
SaveOutcome SaveShipping(core::Database& db, const SelectedItem& item, const ShippingPanel& panel);
// lstShippingMethod_Click: no method empties and disables the date; a method
// enables it and puts today there.
void ChooseShippingMethod(ShippingPanel& panel, int index,
                          const QDate& today = QDate::currentDate());

struct ItemReceivedPanel {
    QString frameTitle;  // "Item Received: #" + ItemNumber
    bool chkItemReceived = false;
    QString txtReceivedDate;
    bool txtReceivedDateEnabled = false;
    int lstItemCondition = -1;  // rows of ItemConditions(), ItemPackagings(), ...
    int lstItemPackaging = -1;
    int lstItemTimeliness = -1;
    int lstItemCommunication = -1;
    QString txtItemNotes;
};

// ShowItemReceived: nullopt when the record is gone. Throws core::StoreError.
std::optional<ItemReceivedPanel> ShowItemReceived(core::Database& db, const SelectedItem& item);
// SaveItemReceived: the box, the date, the four rows (Null for none) and the
// notes; removal code "IRR" with the box ticked.
SaveOutcome SaveItemReceived(core::Database& db, const SelectedItem& item,
                             const ItemReceivedPanel& panel);
// chkItemReceived_Click: ticking enables the date and puts today there;
// clearing empties and disables it.
void TickItemReceived(ItemReceivedPanel& panel, bool ticked,
                      const QDate& today = QDate::currentDate());

}  // namespace lw::tasks
