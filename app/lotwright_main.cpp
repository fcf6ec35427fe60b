// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright: the desktop program. Sets up the application and the session's
// Ui, runs the start-up and then the main window's event loop. It saves
// nothing at exit: every change has gone to the database when it was made.
//   lotwright [--root DIR]
#include <QApplication>
#include <QTextStream>

#include "core/core_dumps.h"
#include "core/session.h"
#include "core/settings.h"
#include "ui/desktop_start.h"
#include "ui/frmAuction.h"
#include "ui/qt_ui.h"

int main(int argc, char** argv) {
    lw::core::TurnOffCoreDumps();  // the site password is in memory
    // The options are read before the application is made, so that a wrong
    // one is told even where no display can be opened.
    QString givenRoot;
    for (int i = 1; i < argc; ++i) {
        const QString arg = QString::fromLocal8Bit(argv[i]);
        if (arg == QLatin1String("--root") && i + 1 < argc) {
            givenRoot = QString::fromLocal8Bit(argv[++i]);
        } else {
            QTextStream(stderr) << "Usage: lotwright [--root DIR]\n"
                                << "--root DIR is the folder that holds Configs/, Data/ and "
                                   "Templates/.\n";
            return 2;
        }
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Lotwright"));
    QApplication::setOrganizationName(QStringLiteral("Lotwright"));

    lw::ui::QtUi ui;
    lw::core::ResetSession(&ui);
    const QString exeDir = QApplication::applicationDirPath();
    lw::core::CurrentSession().ShippedDir = lw::core::ResolveShippedDir(exeDir);
    const QString root = lw::core::ResolveAppRoot(givenRoot, exeDir);
    if (!givenRoot.isEmpty()) {
        // A root given on the command line is self-contained, as it is for
        // lotwright-cli: its settings live in it too.
        lw::core::SetSettingsFolder(root + QStringLiteral("/Configs/Settings"));
    }

    lw::ui::DesktopStart start = lw::ui::StartDesktop(root);
    if (!start.window) {
        return start.exitCode;
    }
    const int code = QApplication::exec();
    start.window.reset();
    lw::core::ResetSession();
    return code;
}
