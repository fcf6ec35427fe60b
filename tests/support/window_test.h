// SPDX-License-Identifier: GPL-3.0-or-later
// Helpers of the window suites: a control found by the name it carries.
#pragma once

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

}  // namespace lw::test
