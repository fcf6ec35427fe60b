// SPDX-License-Identifier: GPL-3.0-or-later
// Helpers of the window suites: a control found by the name it carries, and
// an end date as the site writes it.
#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

#include "tests/support/test_support.h"

namespace lw::test {

// The control of that objectName under window; a missing one ends the suite
// with its name, since every later check would be about nothing.
template <class T>
T* Named(QObject* window, const QString& name) {
    T* child = window->findChild<T*>(name);
    if (child == nullptr) {
        qFatal("no control named %s", qPrintable(name));
    }
    return child;
}

// The end date of an item that ends that many days from now (before now
// when negative), "mm/dd/yy, hh:mm:ss PST".
inline QString EndIn(int days) {
    return QDateTime::currentDateTime().addDays(days).toString(
               QStringLiteral("MM/dd/yy, hh:mm:ss")) +
           QStringLiteral(" PST");
}

}  // namespace lw::test
