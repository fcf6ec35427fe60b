// SPDX-License-Identifier: GPL-3.0-or-later
// The commands of lotwright-cli, callable in-process so that tests run them as
// the terminal does: same arguments, same output, same exit codes.
#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>

namespace lw::app {

// Exit codes of the command line.
enum ExitCode : int {
    kExitOk = 0,
    kExitFailure = 1,         // the command could not be done; the message says why
    kExitUsage = 2,           // the words of the call are off
    kExitNotFound = 3,        // a rule look-up answered "ERROR"
    kExitProtocolFailed = 4,  // an update ran to its end, but a protocol could not be processed
};

// Runs one command line (without the program name). exeDir is the folder of
// the executable, where the shipped rules/ and data/ are looked for.
int RunCli(const QStringList& args, const QString& exeDir, QTextStream& out, QTextStream& err);

// Whether the command line builds rich-text documents, which need the
// graphical application object (fonts, PDF) though no window is shown.
bool CliMakesDocuments(const QStringList& args);

QString CliUsage();
// "lotwright-cli VERSION" and a line end.
QString CliVersion();

}  // namespace lw::app
