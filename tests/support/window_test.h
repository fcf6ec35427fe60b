// SPDX-License-Identifier: GPL-3.0-or-later
// Helpers of the window suites: a control found by the name it carries, a
// box retyped, the texts of a list, a step taken inside a modal window's own
// event loop, an end date as the site writes it, a row of QtTest data given
// as literals, and the end of a suite's program root.
#pragma once

#include <QApplication>
#include <QDateTime>
#include <QLineEdit>
#include <QListWidget>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <QtTest/QTest>
#include <functional>
#include <memory>

#include "core/session.h"
#include "core/settings.h"
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

// The texts of a list's rows, top to bottom.
inline QStringList Texts(const QListWidget* list) {
    QStringList texts;
    for (int row = 0; row < list->count(); ++row) {
        texts << list->item(row)->text();
    }
    return texts;
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

// A row of QtTest data, one line a case, text given as literals.
template <class T>
T Cell(T value) {
    return value;
}
inline QString Cell(const char* text) {
    return QString::fromUtf8(text);
}
template <class... Cells>
void Row(const char* name, Cells... cells) {
    (QTest::newRow(name) << ... << Cell(cells));
}

// Ends what a suite's init began over root and ui: the settings folder and
// the session are let go before the Ui and the folder they point to.
inline void EndProgramRoot(std::unique_ptr<ScriptedUi>& ui, std::unique_ptr<TempRoot>& root) {
    core::SetSettingsFolder(QString());
    core::ResetSession();
    ui.reset();
    root.reset();
}

}  // namespace lw::test
