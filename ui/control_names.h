// SPDX-License-Identifier: GPL-3.0-or-later
// The small pieces every window builds its controls with: a control under
// its system name, a member of a control array, and a caption that moves the
// focus to its box.
#pragma once

#include <QLabel>
#include <QString>
#include <QWidget>

namespace lw::ui {

template <class T>
T* Named(T* widget, const QString& name) {
    widget->setObjectName(name);
    return widget;
}

// A member of a control array: its name carries the index.
template <class T>
T* Indexed(T* widget, const QString& name, int index) {
    widget->setObjectName(name + QString::number(index));
    widget->setProperty("index", index);
    return widget;
}

// A caption whose mnemonic moves the focus to buddy.
inline QLabel* BuddyCaption(QWidget* parent, const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

}  // namespace lw::ui
