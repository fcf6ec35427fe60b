// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright: the desktop program. Sets up the application and the session's
// Ui, runs the start-up and then the main window's event loop. It saves
// nothing at exit: every change has gone to the database when it was made.
//   lotwright [--root DIR] [Qt's options: -platform, -style, -session, ...]
#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QImageReader>
#include <QTextStream>

#include "core/app_identity.h"
#include "core/core_dumps.h"
#include "core/session.h"
#include "ui/desktop_start.h"
#include "ui/frmAuction.h"
#include "ui/qt_ui.h"

namespace {

const char kUsage[] =
    "Usage: lotwright [--root DIR] [QT-OPTIONS]\n"
    "       lotwright --help | --version\n"
    "Opens the main window; on first start it asks for the user's site name,\n"
    "password and e-mail.\n"
    "Options:\n"
    "  --root DIR      the folder that holds Configs/, Data/ and Templates/, and the\n"
    "                  settings; without it a portable copy uses its own folder, an\n"
    "                  installed one the user's data, configuration and cache folders\n"
    "  -h, --help      this text\n"
    "  -v, --version   the program's version\n"
    "Qt's standard options are taken as every Qt program takes them: -platform NAME,\n"
    "-style NAME, -stylesheet FILE, -session ID (session restore), -reverse,\n"
    "-display DISPLAY, -geometry GEOMETRY and the others of the qt6options manual.\n";

// What the command line asked for, read before the application is made, so
// that a wrong option, --help and --version are told where no display can be
// opened.
struct Request {
    int exitCode = -1;  // >= 0: end with it at once
    QString root;
};

Request ReadCommandLine(const QStringList& args) {
    QCommandLineParser parser;
    // Qt's options are single-dash words (-platform); ours are taken either way.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption root(QStringLiteral("root"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOptions({root, help, version});
    // The options QGuiApplication and QApplication take out of argv: known
    // here so that they pass, left for the application to act on.
    for (const char* name : {"platform", "platformpluginpath", "platformtheme", "plugin",
                             "qwindowgeometry", "qwindowicon", "qwindowtitle", "session", "style",
                             "stylesheet", "display", "geometry", "qmljsdebugger"}) {
        QCommandLineOption option(QString::fromLatin1(name), QString(), QStringLiteral("VALUE"));
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    for (const char* name : {"reverse", "widgetcount", "testability", "nograb", "dograb"}) {
        QCommandLineOption option(QString::fromLatin1(name));
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    Request request;
    QTextStream err(stderr);
    if (!parser.parse(args)) {
        err << "lotwright: " << parser.errorText() << '\n' << kUsage;
        request.exitCode = 2;
        return request;
    }
    if (!parser.positionalArguments().isEmpty()) {
        err << "lotwright: unexpected word " << parser.positionalArguments().constFirst()
            << "; the program takes options only.\n"
            << kUsage;
        request.exitCode = 2;
        return request;
    }
    if (parser.isSet(help)) {
        QTextStream(stdout) << kUsage;
        request.exitCode = 0;
    } else if (parser.isSet(version)) {
        QTextStream(stdout) << "lotwright " LW_VERSION "\n";
        request.exitCode = 0;
    }
    request.root = parser.value(root);
    return request;
}

// The icon theme's icon of the program when the desktop has one, else the
// one built in: the drawing where the SVG image plugin is there, else the
// picture drawn from it.
QIcon WindowIcon() {
    const bool svg = QImageReader::supportedImageFormats().contains("svg");
    const QIcon builtIn(svg ? QStringLiteral(":/icons/org.lotwright.Lotwright.svg")
                            : QStringLiteral(":/icons/org.lotwright.Lotwright.png"));
    return QIcon::fromTheme(QString::fromLatin1(lw::core::kApplicationId), builtIn);
}

}  // namespace

int main(int argc, char** argv) {
    lw::core::TurnOffCoreDumps();  // the site password is in memory
    QStringList args;
    for (int i = 0; i < argc; ++i) {
        args << QString::fromLocal8Bit(argv[i]);
    }
    const Request request = ReadCommandLine(args);
    if (request.exitCode >= 0) {
        return request.exitCode;
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Lotwright"));
    QApplication::setOrganizationName(QStringLiteral("Lotwright"));
    QApplication::setApplicationVersion(QStringLiteral(LW_VERSION));
    QGuiApplication::setDesktopFileName(QString::fromLatin1(lw::core::kApplicationId));
    QApplication::setWindowIcon(WindowIcon());

    lw::ui::QtUi ui;
    lw::core::ResetSession(&ui);
    QString error;
    const std::optional<lw::core::Locations> locations =
        lw::core::ResolveLocations(request.root, QApplication::applicationDirPath(), &error);
    if (!locations || !lw::core::UseLocations(*locations, &error)) {
        ui.Message(error, QStringLiteral("Lotwright"), lw::core::Icon::Critical);
        return 1;
    }

    lw::ui::DesktopStart start = lw::ui::StartDesktop(locations->appRoot);
    if (!start.window) {
        return start.exitCode;
    }
    const int code = QApplication::exec();
    start.window.reset();
    lw::core::ResetSession();
    return code;
}
