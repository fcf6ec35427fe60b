// SPDX-License-Identifier: GPL-3.0-or-later
// The payment methods of a sale or bid, in the order of the payment list: the
// record's OrderPaymentMethod holds a row of this list (Null, or -1, when none
// was chosen). The payment panel lists them and the remittance advice words
// its sentence by their names. The order must never change, or every stored
// index would name another method.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

namespace lw::tasks {

// "Cash", "Check", "Credit Card", "Money Order", "Escrow", "Other": the
// panel's detail frames 1 to 3 belong to Check, Credit Card and Money Order.
const QStringList& PaymentMethods();

// The name of a stored OrderPaymentMethod; "" for Null, -1, a text that is
// no whole number, or a row the list does not have.
QString PaymentMethodName(const QVariant& stored);

// Whether a method was chosen: OrderPaymentMethod is neither Null, empty nor -1.
bool PaymentMethodSet(const QVariant& stored);

}  // namespace lw::tasks
