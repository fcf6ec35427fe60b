// SPDX-License-Identifier: GPL-3.0-or-later
// Loading and saving the shipping and item-received panels. A save writes
// the selected record and nothing else.
#include "tasks/shipping_panel.h"

#include "tasks/task_lists.h"

namespace lw::tasks {

std::optional<ShippingPanel> ShowShipping(core::Database& db, const SelectedItem& item) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    ShippingPanel panel;
    panel.frameTitle = ItemFrameTitle(QStringLiteral("Shipping Info for #"), *record);
    panel.lstShippingMethod =
        FieldIndex(*record, QStringLiteral("ShippingMethod"), ShippingMethods().size());
    panel.txtShippingDateEnabled = panel.lstShippingMethod >= 0;
    panel.txtShippingDate = FieldText(*record, QStringLiteral("ShippingDate"));
    panel.txtShippingCost2 = FieldMoney(*record, QStringLiteral("OrderShipping"), NoMoney());
    panel.txtActualShippingCost = FieldMoney(*record, QStringLiteral("ShippingCost"));
    panel.txtInsuranceCost = FieldMoney(*record, QStringLiteral("InsuranceCost"));
    panel.txtTrackingNumber = FieldText(*record, QStringLiteral("ShippingTrackingNumber"));
    panel.txtInsuranceNumber = FieldText(*record, QStringLiteral("ShippingInsuranceNumber"));
    return panel;
}

SaveOutcome SaveShipping(core::Database& db, const SelectedItem& item, const ShippingPanel& panel) {
    const QVariantMap fields = {
        {QStringLiteral("ShippingMethod"), IndexValue(panel.lstShippingMethod)},
        {QStringLiteral("ShippingDate"), BoxValue(panel.txtShippingDate)},
        {QStringLiteral("OrderShipping"), BoxValue(panel.txtShippingCost2)},
        {QStringLiteral("ShippingCost"), BoxValue(panel.txtActualShippingCost)},
        {QStringLiteral("InsuranceCost"), BoxValue(panel.txtInsuranceCost)},
        {QStringLiteral("ShippingTrackingNumber"), BoxValue(panel.txtTrackingNumber)},
        {QStringLiteral("ShippingInsuranceNumber"), BoxValue(panel.txtInsuranceNumber)},
    };
    return SaveRecordFields(db, item, fields,
                            RemovalCodeIf(!BoxValue(panel.txtShippingDate).isNull(), "SHS"));
}

void ChooseShippingMethod(ShippingPanel& panel, int index, const QDate& today) {
    panel.lstShippingMethod = index < 0 ? -1 : index;
    panel.txtShippingDateEnabled = panel.lstShippingMethod >= 0;
    panel.txtShippingDate = panel.txtShippingDateEnabled ? DateBoxText(today) : QString();
}

std::optional<ItemReceivedPanel> ShowItemReceived(core::Database& db, const SelectedItem& item) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    ItemReceivedPanel panel;
    panel.frameTitle = ItemFrameTitle(QStringLiteral("Item Received: #"), *record);
    panel.chkItemReceived = FieldFlag(*record, QStringLiteral("Item Received"));
    panel.txtReceivedDateEnabled = panel.chkItemReceived;
    panel.txtReceivedDate = FieldText(*record, QStringLiteral("ItemReceivedDate"));
    panel.lstItemCondition =
        FieldIndex(*record, QStringLiteral("ItemCondition"), ItemConditions().size());
    panel.lstItemPackaging =
        FieldIndex(*record, QStringLiteral("ItemPackaging"), ItemPackagings().size());
    panel.lstItemTimeliness =
        FieldIndex(*record, QStringLiteral("ItemTimeliness"), ItemTimelinesses().size());
    panel.lstItemCommunication =
        FieldIndex(*record, QStringLiteral("ItemCommunication"), ItemCommunications().size());
    panel.txtItemNotes = FieldText(*record, QStringLiteral("ItemNotes"));
    return panel;
}

SaveOutcome SaveItemReceived(core::Database& db, const SelectedItem& item,
                             const ItemReceivedPanel& panel) {
    const QVariantMap fields = {
        {QStringLiteral("Item Received"), panel.chkItemReceived},
        {QStringLiteral("ItemReceivedDate"), BoxValue(panel.txtReceivedDate)},
        {QStringLiteral("ItemCondition"), IndexValue(panel.lstItemCondition)},
        {QStringLiteral("ItemPackaging"), IndexValue(panel.lstItemPackaging)},
        {QStringLiteral("ItemTimeliness"), IndexValue(panel.lstItemTimeliness)},
        {QStringLiteral("ItemCommunication"), IndexValue(panel.lstItemCommunication)},
        {QStringLiteral("ItemNotes"), BoxValue(panel.txtItemNotes)},
    };
    return SaveRecordFields(db, item, fields, RemovalCodeIf(panel.chkItemReceived, "IRR"));
}

void TickItemReceived(ItemReceivedPanel& panel, bool ticked, const QDate& today) {
    panel.chkItemReceived = ticked;
    panel.txtReceivedDateEnabled = ticked;
    panel.txtReceivedDate = ticked ? DateBoxText(today) : QString();
}

}  // namespace lw::tasks
