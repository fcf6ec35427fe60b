// SPDX-License-Identifier: GPL-3.0-or-later
// Loading and saving the payment panel, and its sums. A save writes the
// details of the chosen method, never those of another.
#include "tasks/payment_panel.h"

#include "core/session.h"
#include "core/text.h"
#include "tasks/task_lists.h"

namespace lw::tasks {

namespace {

const QString kCheck = QStringLiteral("Check");
const QString kCreditCard = QStringLiteral("Credit Card");
const QString kMoneyOrder = QStringLiteral("Money Order");

std::optional<PaymentPanel> ShowPayment(core::Database& db, const SelectedItem& item, bool sale) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    PaymentPanel panel;
    panel.sale = sale;
    panel.frameTitle = ItemFrameTitle(QStringLiteral("Payment Info for #"), *record);
    panel.txtItemCost0 = FieldText(*record, QStringLiteral("HighBid"));
    if (sale) {
        panel.txtItemCost1 = FieldMoney(*record, QStringLiteral("ItemCost"), NoMoney());
    }
    const QString cost = QStringLiteral("ShippingCost");
    const bool costStands =
        !FieldValue(*record, cost).isNull() && core::NumberRule(FieldValue(*record, cost)) > 0;
    panel.txtShippingCost =
        FieldMoney(*record, costStands ? cost : QStringLiteral("OrderShipping"), NoMoney());
    panel.txtSalesTax = FieldMoney(*record, QStringLiteral("OrderTax"), NoMoney());
    ComputeTotal(panel);
    panel.txtTotalSale =
        FieldMoney(*record, QStringLiteral("OrderAmountofSale"), panel.txtTotalSale);

    panel.lstPaymentMethods =
        FieldIndex(*record, QStringLiteral("OrderPaymentMethod"), PaymentMethods().size());
    panel.frmPayment = PaymentDetailFrame(panel.lstPaymentMethods);
    panel.txtPayInfo0Enabled = panel.lstPaymentMethods >= 0;
    panel.txtPayInfo0 = FieldText(*record, QStringLiteral("OrderPaymentDate"));
    const QString method = PaymentMethodName(panel.lstPaymentMethods);
    const QString number = FieldText(*record, QStringLiteral("OrderPaymentNumber"));
    if (method == kCheck) {
        panel.txtCheckNumber = number;
        panel.txtDrawnOnBank = FieldText(*record, QStringLiteral("OrderPaymentBank"));
        panel.chkDateCleared = FieldFlag(*record, QStringLiteral("OrderPaymentCleared"));
        panel.txtDateClearedEnabled = panel.chkDateCleared;
        panel.txtDateCleared = FieldText(*record, QStringLiteral("OrderPaymentClearedDate"));
    } else if (method == kCreditCard) {
        panel.txtCreditCardAccount = number;
        panel.cmbCreditCardType = FieldText(*record, QStringLiteral("OrderCreditCardType"));
        panel.cmbExpireMonth = FieldText(*record, QStringLiteral("OrderExpireMonth"));
        panel.cmbExpireYear = FieldText(*record, QStringLiteral("OrderExpireYear"));
    } else if (method == kMoneyOrder) {
        panel.txtMoneyOrder = number;
    }
    return panel;
}

}  // namespace

std::optional<PaymentPanel> ShowSalePayment(core::Database& db, const SelectedItem& item) {
    return ShowPayment(db, item, true);
}

std::optional<PaymentPanel> ShowBidPayment(core::Database& db, const SelectedItem& item) {
    return ShowPayment(db, item, false);
}

SaveOutcome SavePayment(core::Database& db, const SelectedItem& item, const PaymentPanel& panel) {
    QVariantMap fields;
    fields.insert(QStringLiteral("OrderPaymentMethod"), IndexValue(panel.lstPaymentMethods));
    if (panel.sale) {
        const QString cost = panel.txtItemCost1;
        fields.insert(QStringLiteral("ItemCost"),
                      cost.trimmed().isEmpty() ? QStringLiteral("0.00") : MoneyBoxText(cost));
    }
    fields.insert(QStringLiteral("OrderPaymentDate"), BoxValue(panel.txtPayInfo0));
    fields.insert(QStringLiteral("OrderTax"), BoxValue(panel.txtSalesTax));
    fields.insert(QStringLiteral("OrderShipping"), BoxValue(panel.txtShippingCost));
    fields.insert(QStringLiteral("OrderAmountofSale"), BoxValue(panel.txtTotalSale));
    const QString method = PaymentMethodName(panel.lstPaymentMethods);
    if (method == kCheck) {
        fields.insert(QStringLiteral("OrderPaymentNumber"), BoxValue(panel.txtCheckNumber));
        fields.insert(QStringLiteral("OrderPaymentBank"), BoxValue(panel.txtDrawnOnBank));
        fields.insert(QStringLiteral("OrderPaymentCleared"), panel.chkDateCleared);
        fields.insert(QStringLiteral("OrderPaymentClearedDate"), BoxValue(panel.txtDateCleared));
    } else if (method == kMoneyOrder) {
        fields.insert(QStringLiteral("OrderPaymentNumber"), BoxValue(panel.txtMoneyOrder));
    } else if (method == kCreditCard) {
        fields.insert(QStringLiteral("OrderPaymentNumber"), BoxValue(panel.txtCreditCardAccount));
        fields.insert(QStringLiteral("OrderCreditCardType"), BoxValue(panel.cmbCreditCardType));
        fields.insert(QStringLiteral("OrderExpireMonth"), BoxValue(panel.cmbExpireMonth));
        fields.insert(QStringLiteral("OrderExpireYear"), BoxValue(panel.cmbExpireYear));
    }
    SaveOutcome outcome = SaveRecordFields(db, item, fields);
    if (item.side == Side::Bids) {
        outcome.selectNode = QStringLiteral("PRP");
    }
    return outcome;
}

void ChoosePaymentMethod(PaymentPanel& panel, int index, const QDate& today) {
    panel.lstPaymentMethods = index < 0 ? -1 : index;
    if (panel.txtPayInfo0.isEmpty()) {
        panel.txtPayInfo0 = DateBoxText(today);
    }
    panel.frmPayment = PaymentDetailFrame(panel.lstPaymentMethods);
    panel.txtPayInfo0Enabled = panel.lstPaymentMethods >= 0;
    if (!panel.txtPayInfo0Enabled) {
        panel.txtPayInfo0.clear();
    }
}

void TickDateCleared(PaymentPanel& panel, bool ticked, const QDate& today) {
    panel.chkDateCleared = ticked;
    panel.txtDateClearedEnabled = ticked;
    panel.txtDateCleared = ticked ? DateBoxText(today) : QString();
}

void ComputeTotal(PaymentPanel& panel) {
    const double total = core::NumberRule(panel.txtItemCost0) +
                         core::NumberRule(panel.txtShippingCost) +
                         core::NumberRule(panel.txtSalesTax);
    panel.txtTotalSale = core::Format(total, QStringLiteral("Currency"));
}

void ComputeSalesTax(PaymentPanel& panel, double salesTaxRate) {
    const double taxed =
        core::NumberRule(panel.txtItemCost0) + core::NumberRule(panel.txtShippingCost);
    panel.txtSalesTax = core::Format(taxed * salesTaxRate, QStringLiteral("Currency"));
    ComputeTotal(panel);
}

double SalesTaxRate(core::Database& db) {
    auto statement =
        db.Prepare(QStringLiteral("SELECT SalesTaxRate FROM Users WHERE UserName = ?1"));
    statement.Bind(1, core::CurrentSession().CurrentUser);
    return statement.Step() ? core::NumberRule(statement.Value(0)) : 0;
}

QString MoneyBoxText(const QString& text) {
    return core::Format(text, QStringLiteral("Currency"));
}

}  // namespace lw::tasks
