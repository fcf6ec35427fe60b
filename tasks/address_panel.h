// SPDX-License-Identifier: GPL-3.0-or-later
// The address panel of the task manager: the partner's row of Buyers (on a
// sale) or Sellers (on a bid), loaded into the boxes and saved from them, and
// the parser that splits an address pasted from the clipboard into the boxes.
// The parser is exactly the stated one, limits included; it never touches
// the database, and on failure it gives the message for the caller to show
// and leaves the boxes as they were. Nothing here draws.
#pragma once

#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

struct AddressBoxes {
    QString txtAddressMr;  // Salutation
    QString txtAddressFirst;
    QString txtAddressMiddle;
    QString txtAddressLast;
    QString txtAddressTitle;
    QString txtAddressCompany;
    QString txtAddressStreet1;
    QString txtAddressStreet2;
    QString txtAddressCity;
    QString txtAddressState;
    QString txtAddressZip;
    QString txtAddressCountry;  // CountryInfo
    QString txtAddressPhone;
    QString txtAddressFax;
    QString txtAddressEmail;
    bool operator==(const AddressBoxes&) const = default;
};

struct AddressPanel {
    QString frameTitle;  // "Address for " + the partner
    AddressBoxes boxes;  // blank where the row has Null, or no row stands
};

// ShowBuyerAddress: the Buyers row of the sale's HighBidderName on its site;
// ShowSellerAddress: the Sellers row of the bid's SellerName. nullopt when
// the record is gone. Throw core::StoreError.
std::optional<AddressPanel> ShowBuyerAddress(core::Database& db, const SelectedItem& item);
std::optional<AddressPanel> ShowSellerAddress(core::Database& db, const SelectedItem& item);

// SaveBuyerAddress, SaveSellerAddress: the partner's row takes the boxes (an
// empty box writes Null), and is added with its key when there is none. The
// node "PRA" is to be selected after it.
SaveOutcome SaveBuyerAddress(core::Database& db, const SelectedItem& item,
                             const AddressBoxes& boxes);
SaveOutcome SaveSellerAddress(core::Database& db, const SelectedItem& item,
                              const AddressBoxes& boxes);

// txtAddressState_LostFocus: the state in upper case.
QString AddressStateText(const QString& text);

// cmdPasteAddressFromClipboard: boxes are the boxes after the paste. failed,
// with the message and title to show, when the text holds no line at all;
// the boxes are then those given.
struct PastedAddress {
    AddressBoxes boxes;
    bool failed = false;
    QString message;  // "Error retrieving address from clipboard.  Unrecognized name format."
    QString title;    // "Unable to Retrieve Name"
};
PastedAddress PasteAddressFromClipboard(const QString& clipboardText, const AddressBoxes& current);

}  // namespace lw::tasks
