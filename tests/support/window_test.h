// Helpers of the window suites: a control found by the name it carries, and
// a fresh program folder with the scripted Ui as the session's, so that each
// case opens its window on a database of its own.
#pragma once

#include <QObject>
#include <QString>

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

// Puts the session on ui and makes the folders of a new program root in
// root, with the shipped files taken from the sources and, when asked, the
// settings kept under root. Returns what went wrong, empty when nothing did.
inline QString StartWindowRoot(TempRoot& root, ScriptedUi& ui, bool ownSettings = true) {
    core::ResetSession(&ui);
    QString error;
    if (!core::SetupDirectories(root.Path(), &error)) {
        return error.isEmpty() ? QStringLiteral("the folders could not be made") : error;
    }
    core::CurrentSession().ShippedDir = SourceDir();
    if (ownSettings) {
        core::SetSettingsFolder(root.File(QStringLiteral("settings")));
    }
    return QString();
}

}  // namespace lw::test
