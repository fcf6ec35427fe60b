// SPDX-License-Identifier: GPL-3.0-or-later
// The task panels' list rows. Records keep a row's place: a row is never
// moved or taken out, new rows go at the end.
#include "tasks/task_lists.h"

#include <climits>

namespace lw::tasks {

namespace {

// Packaging and communication are rated on the same scale.
const QStringList& Ratings() {
    static const QStringList rows = {QStringLiteral("Excellent"), QStringLiteral("Good"),
                                     QStringLiteral("Fair"), QStringLiteral("Poor")};
    return rows;
}

}  // namespace

const QStringList& PaymentMethods() {
    static const QStringList rows = {
        QStringLiteral("Cash"),        QStringLiteral("Check"),
        QStringLiteral("Credit Card"), QStringLiteral("Money Order"),
        QStringLiteral("Escrow"),      QStringLiteral("Online Payment Service"),
        QStringLiteral("Other"),
    };
    return rows;
}

QString PaymentMethodName(int index) {
    return index >= 0 && index < PaymentMethods().size() ? PaymentMethods().at(index) : QString();
}

QString PaymentMethodName(const QVariant& stored) {
    if (!stored.isValid() || stored.isNull()) {
        return {};
    }
    bool ok = false;
    const qlonglong index = stored.toString().trimmed().toLongLong(&ok);
    return ok && index >= 0 && index <= INT_MAX ? PaymentMethodName(static_cast<int>(index))
                                                : QString();
}

bool PaymentMethodSet(const QVariant& stored) {
    if (!stored.isValid() || stored.isNull()) {
        return false;
    }
    const QString text = stored.toString().trimmed();
    return !text.isEmpty() && text != u"-1";
}

int PaymentDetailFrame(int index) {
    return index >= 1 && index <= 3 ? index : 0;
}

const QStringList& CreditCardTypes() {
    static const QStringList rows = {QStringLiteral("Visa"), QStringLiteral("MasterCard"),
                                     QStringLiteral("American Express"),
                                     QStringLiteral("Discover")};
    return rows;
}

const QStringList& ExpireMonths() {
    static const QStringList rows = [] {
        QStringList months;
        for (int month = 1; month <= 12; ++month) {
            months << QString::number(month).rightJustified(2, u'0');
        }
        return months;
    }();
    return rows;
}

QStringList ExpireYears(const QDate& today) {
    QStringList years;
    for (int year = today.year(); year <= today.year() + 10; ++year) {
        years << QString::number(year);
    }
    return years;
}

const QStringList& ShippingMethods() {
    static const QStringList rows = {
        QStringLiteral("First Class Mail"),
        QStringLiteral("Priority Mail"),
        QStringLiteral("Parcel Post"),
        QStringLiteral("Media Mail"),
        QStringLiteral("UPS"),
        QStringLiteral("FedEx"),
        QStringLiteral("Freight"),
        QStringLiteral("Local Pick-up"),
        QStringLiteral("Other"),
    };
    return rows;
}

const QStringList& ItemConditions() {
    static const QStringList rows = {QStringLiteral("Better than described"),
                                     QStringLiteral("As described"),
                                     QStringLiteral("Not as described"), QStringLiteral("Damaged")};
    return rows;
}

const QStringList& ItemPackagings() {
    return Ratings();
}

const QStringList& ItemTimelinesses() {
    static const QStringList rows = {QStringLiteral("Prompt"), QStringLiteral("Acceptable"),
                                     QStringLiteral("Slow"), QStringLiteral("Very slow")};
    return rows;
}

const QStringList& ItemCommunications() {
    return Ratings();
}

const QStringList& FeedbackTypes() {
    static const QStringList rows = {QStringLiteral("Positive"), QStringLiteral("Neutral"),
                                     QStringLiteral("Negative")};
    return rows;
}

}  // namespace lw::tasks
