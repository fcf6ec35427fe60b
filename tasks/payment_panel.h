// SPDX-License-Identifier: GPL-3.0-or-later
// The payment panel of the task manager: what a sale's or a bid's payment
// shows, what its save writes, and the money arithmetic of its boxes (the
// total of the sale, the sales tax, the reformat of a money box). The panel
// is a plain struct whose fields are named after the controls; nothing here
// draws, and nothing here ends an item (the caller runs the removal rule).
#pragma once

#include <QDate>
#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

struct PaymentPanel {
    bool sale = true;      // a sale's panel; a bid's has no txtItemCost(1)
    QString frameTitle;    // "Payment Info for #" + ItemNumber
    QString txtItemCost0;  // txtItemCost(0): the high bid
    QString txtItemCost1;  // txtItemCost(1): what the item cost the user, on a sale only
    QString txtShippingCost = NoMoney();
    QString txtSalesTax = NoMoney();
    QString txtTotalSale;
    int lstPaymentMethods = -1;  // row of PaymentMethods()
    QString txtPayInfo0;         // txtPayInfo(0), the payment date
    bool txtPayInfo0Enabled = false;
    int frmPayment = 0;  // the detail frame shown, 1 to 3; 0 none
    // frmPayment(1): a check.
    QString txtCheckNumber;
    QString txtDrawnOnBank;
    bool chkDateCleared = false;
    QString txtDateCleared;
    bool txtDateClearedEnabled = false;
    // frmPayment(2): a credit card; the combos hold their texts.
    QString txtCreditCardAccount;
    QString cmbCreditCardType;
    QString cmbExpireMonth;
    QString cmbExpireYear;
    // frmPayment(3): a money order.
    QString txtMoneyOrder;
};

// ShowSalePayment, ShowBidPayment: the selected record's payment; nullopt
// when the record is gone. Fields that are Null show as empty boxes (the
// money boxes as "$0.00"). Throw core::StoreError when the database fails.
std::optional<PaymentPanel> ShowSalePayment(core::Database& db, const SelectedItem& item);
std::optional<PaymentPanel> ShowBidPayment(core::Database& db, const SelectedItem& item);

// SavePayment: the method's row (Null for none), on a sale the item's cost,
// the date and the three sums, and the details of the chosen method only;
// the details of the other methods stay as they stand. On a bid the node
// "PRP" is to be selected after it.
SaveOutcome SavePayment(core::Database& db, const SelectedItem& item, const PaymentPanel& panel);

// lstPaymentMethods_Click: the method's detail frame, and today in an empty
// date box; no method blanks and disables the date.
void ChoosePaymentMethod(PaymentPanel& panel, int index, const QDate& today = QDate::currentDate());
// chkDateCleared_Click.
void TickDateCleared(PaymentPanel& panel, bool ticked, const QDate& today = QDate::currentDate());

// ComputeTotal: txtItemCost(0), txtShippingCost and txtSalesTax taken as
// numbers by the number rule, their sum to txtTotalSale in "Currency".
void ComputeTotal(PaymentPanel& panel);
// cmdComputeSalesTax: the item and its shipping (shipping is taxed along, on
// purpose) times the rate, to txtSalesTax in "Currency"; then ComputeTotal.
void ComputeSalesTax(PaymentPanel& panel, double salesTaxRate);
// The current user's Users.SalesTaxRate, a fraction; 0 when Null or no row.
double SalesTaxRate(core::Database& db);

// A money box that loses the focus is shown again in "Currency" (a text that
// is no number stays as it is); the caller then runs ComputeTotal.
QString MoneyBoxText(const QString& text);

}  // namespace lw::tasks
