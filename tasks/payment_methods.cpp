// SPDX-License-Identifier: GPL-3.0-or-later
// The payment list and the names of stored payment methods. A stored index
// the list does not have names no method; it never fails.
#include "tasks/payment_methods.h"

namespace lw::tasks {

const QStringList& PaymentMethods() {
    static const QStringList methods{QStringLiteral("Cash"),        QStringLiteral("Check"),
                                     QStringLiteral("Credit Card"), QStringLiteral("Money Order"),
                                     QStringLiteral("Escrow"),      QStringLiteral("Other")};
    return methods;
}

QString PaymentMethodName(const QVariant& stored) {
    if (!stored.isValid() || stored.isNull()) {
        return {};
    }
    bool ok = false;
    const qlonglong index = stored.toString().trimmed().toLongLong(&ok);
    if (!ok || index < 0 || index >= PaymentMethods().size()) {
        return {};
    }
    return PaymentMethods().at(static_cast<qsizetype>(index));
}

bool PaymentMethodSet(const QVariant& stored) {
    if (!stored.isValid() || stored.isNull()) {
        return false;
    }
    const QString text = stored.toString().trimmed();
    return !text.isEmpty() && text != u"-1";
}

}  // namespace lw::tasks
