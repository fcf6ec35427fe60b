// SPDX-License-Identifier: GPL-3.0-or-later
// Helpers of the window suites: a control found by the name it carries, a
// box retyped, a step taken inside a modal window's own event loop, and an
// end date as the site writes it.
#pragma once

#include <QApplication>
#include <QDateTime>
#include <QLineEdit>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <QtTest/QTest>
#include <functional>

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

// Types text into a box in place of what it held, key by key, as a user does.
inline void Retype(QLineEdit* edit, const QString& text) {
    edit->selectAll();
    edit->del();
    QTest::keyClicks(edit, text);
}

// Acts on the modal window of that objectName once it is up, from inside
// its event loop. Never acting is a finding of its own.
class WhenModal {
public:
    WhenModal(const QString& name, std::function<void(QWidget*)> act) : m_act(std::move(act)) {
        m_timer.setInterval(0);
        QObject::connect(&m_timer, &QTimer::timeout, [this, name] {
            QWidget* modal = QApplication::activeModalWidget();
            if (modal == nullptr || modal->objectName() != name || !modal->isVisible()) {
                return;
            }
            m_timer.stop();
            m_acted = true;
            m_act(modal);
        });
        m_timer.start();
    }
    bool Acted() const { return m_acted; }

private:
    QTimer m_timer;
    std::function<void(QWidget*)> m_act;
    bool m_acted = false;
};

// The end date of an item that ends that many days from now (before now
// when negative), "mm/dd/yy, hh:mm:ss PST".
inline QString EndIn(int days) {
    return QDateTime::currentDateTime().addDays(days).toString(
               QStringLiteral("MM/dd/yy, hh:mm:ss")) +
           QStringLiteral(" PST");
}

}  // namespace lw::test
