// SPDX-License-Identifier: GPL-3.0-or-later
// The rows of the task panels' lists, in one place: the item's record keeps
// the row's index (OrderPaymentMethod, ShippingMethod, ItemCondition, ...),
// so a row, once shipped, must never move or go. New rows go at the end.
// Only the payment methods "Cash", "Check", "Credit Card", "Money Order" and
// "Escrow" mean something to the program; every other row is a word for the
// user alone.
#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariant>

namespace lw::tasks {

// lstPaymentMethods. Rows 1 to 3 ("Check", "Credit Card", "Money Order")
// each have a frame of details, frmPayment(1) to frmPayment(3).
const QStringList& PaymentMethods();
// The method's text of a stored row; "" for -1 or a row the list does not have.
QString PaymentMethodName(int index);
// The name of a stored OrderPaymentMethod; "" for Null, -1, a text that is
// no whole number, or a row the list does not have.
QString PaymentMethodName(const QVariant& stored);
// Whether a method was chosen: OrderPaymentMethod is neither Null, empty nor -1.
bool PaymentMethodSet(const QVariant& stored);
// The detail frame a method shows: its row when that is 1 to 3, else 0 (none).
int PaymentDetailFrame(int index);

// The combos of the credit-card details; the record keeps their texts.
const QStringList& CreditCardTypes();
const QStringList& ExpireMonths();  // "01" to "12"
// This year and the ten after it, four digits each.
QStringList ExpireYears(const QDate& today);

// lstShippingMethod.
const QStringList& ShippingMethods();

// lstItemCondition, lstItemPackaging, lstItemTimeliness, lstItemCommunication.
const QStringList& ItemConditions();
const QStringList& ItemPackagings();
const QStringList& ItemTimelinesses();
const QStringList& ItemCommunications();

// The three optReceivedFeedback options, in the order of ReturnFeedbackType:
// 0 positive, 1 neutral, 2 negative.
const QStringList& FeedbackTypes();

}  // namespace lw::tasks
