// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli: the program's operations without a window.
#include <QCoreApplication>
#include <QTextStream>
#include <cstdio>

#include "app/cli_commands.h"
#include "app/terminal_ui.h"
#include "core/core_dumps.h"
#include "core/session.h"

int main(int argc, char** argv) {
    lw::core::TurnOffCoreDumps();  // the site password is in memory
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Lotwright"));
    QCoreApplication::setOrganizationName(QStringLiteral("Lotwright"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LW_VERSION));
    lw::app::TerminalUi ui;
    lw::core::ResetSession(&ui);
    QTextStream out(stdout);
    QTextStream err(stderr);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    const int code = lw::app::RunCli(args, QCoreApplication::applicationDirPath(), out, err);
    out.flush();
    err.flush();
    return code;
}
