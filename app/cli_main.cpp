// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli: the program's operations without a window.
#include <QCoreApplication>
#include <QGuiApplication>
#include <QTextStream>
#include <cstdio>
#include <memory>

#include "app/cli_commands.h"
#include "app/terminal_ui.h"
#include "core/core_dumps.h"
#include "core/session.h"

namespace {

QtMessageHandler g_qtMessages = nullptr;

// Without a login session (a cron job, a plain ssh shell) Qt says, as it
// picks its platform, that it chose a runtime folder of its own. That is no
// news to the user, and a script's error output should hold only what the
// program has to say; everything else goes on as Qt would have it.
void QuietStart(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtWarningMsg &&
        message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))) {
        return;
    }
    g_qtMessages(type, context, message);
}

}  // namespace

int main(int argc, char** argv) {
    lw::core::TurnOffCoreDumps();  // the site password is in memory
    QStringList given;
    for (int i = 1; i < argc; ++i) {
        given << QString::fromLocal8Bit(argv[i]);
    }
    // Documents need fonts, which only the graphical application object
    // gives. It shows nothing, so it draws off screen unless QT_QPA_PLATFORM
    // names another platform.
    std::unique_ptr<QCoreApplication> app;
    if (lw::app::CliMakesDocuments(given)) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        g_qtMessages = qInstallMessageHandler(QuietStart);
        app = std::make_unique<QGuiApplication>(argc, argv);
        qInstallMessageHandler(g_qtMessages);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
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
