// SPDX-License-Identifier: GPL-3.0-or-later
// The command lines of the three programs as a shell runs them: --help and
// --version answer on standard output and end with 0, a word the program
// does not know is told on standard error and ends with 2. The window's
// program answers before it opens any display.
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>

#include "tests/support/test_support.h"

using lw::test::BinDir;

namespace {

using Outcome = lw::test::ProgramRun;

Outcome Start(const QString& program, const QStringList& args) {
    // No platform the window could open on: a program that made its
    // application before answering would end on that, not with its answer.
    return lw::test::RunProgram(BinDir() + u'/' + program, args, {},
                                {QStringLiteral("QT_QPA_PLATFORM=no-such-platform"),
                                 QStringLiteral("DISPLAY"), QStringLiteral("WAYLAND_DISPLAY")});
}

}  // namespace

TEST(CommandLine, EachProgramAnswersHelpAndVersionAndRefusesWhatItDoesNotKnow) {
    struct Case {
        const char* program;
        QStringList args;
        int code;
        QString out;  // what standard output holds
        QString err;  // what standard error holds
    };
    const QString version = QStringLiteral(" " LW_VERSION "\n");
    const QString cli = QStringLiteral("lotwright-cli");
    const QString site = QStringLiteral("lotwright-site");
    const QString window = QStringLiteral("lotwright");
    const Case cases[] = {
        {"lotwright-cli",
         {QStringLiteral("--help")},
         0,
         QStringLiteral("Usage: lotwright-cli"),
         {}},
        {"lotwright-cli", {QStringLiteral("-h")}, 0, QStringLiteral("Usage: lotwright-cli"), {}},
        {"lotwright-cli", {QStringLiteral("--version")}, 0, cli + version, {}},
        {"lotwright-cli", {QStringLiteral("--frobnicate")}, 2, {}, QStringLiteral("frobnicate")},
        {"lotwright-cli", {QStringLiteral("--root")}, 2, {}, QStringLiteral("root")},
        {"lotwright-site",
         {QStringLiteral("--help")},
         0,
         QStringLiteral("Usage: lotwright-site"),
         {}},
        {"lotwright-site", {QStringLiteral("--version")}, 0, site + version, {}},
        {"lotwright-site", {QStringLiteral("--frobnicate")}, 2, {}, QStringLiteral("frobnicate")},
        {"lotwright-site",
         {QStringLiteral("--port"), QStringLiteral("x")},
         2,
         {},
         QStringLiteral("--port")},
        {"lotwright", {QStringLiteral("--help")}, 0, QStringLiteral("Usage: lotwright "), {}},
        {"lotwright", {QStringLiteral("--version")}, 0, window + version, {}},
        // Qt's own options pass, with their values, in either spelling.
        {"lotwright",
         {QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("-style=Fusion"),
          QStringLiteral("-session"), QStringLiteral("id_1"), QStringLiteral("--reverse"),
          QStringLiteral("--version")},
         0,
         window + version,
         {}},
        {"lotwright", {QStringLiteral("--frobnicate")}, 2, {}, QStringLiteral("frobnicate")},
        {"lotwright", {QStringLiteral("saved.db")}, 2, {}, QStringLiteral("saved.db")},
    };
    for (const Case& c : cases) {
        const QString program = QLatin1String(c.program);
        SCOPED_TRACE(QString(program + u' ' + c.args.join(u' ')).toStdString());
        if (!QFile::exists(BinDir() + u'/' + program)) {
            ADD_FAILURE() << "not built";
            continue;
        }
        const Outcome run = Start(program, c.args);
        EXPECT_EQ(run.code, c.code) << run.err.toStdString();
        if (c.code == 0) {
            EXPECT_TRUE(run.out.startsWith(c.out)) << run.out.toStdString();
            EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
        } else {
            EXPECT_TRUE(run.out.isEmpty()) << run.out.toStdString();
            EXPECT_TRUE(run.err.contains(c.err) && run.err.contains(QStringLiteral("Usage: ")))
                << run.err.toStdString();
        }
    }
}

TEST(CommandLine, TheCommandLinesHelpNamesEveryCommandAndHowToGiveThePassword) {
    const Outcome help = Start(QStringLiteral("lotwright-cli"), {QStringLiteral("--help")});
    ASSERT_EQ(help.code, 0);
    for (const char* word : {"init", "rules get", "rules name", "rules install", "rules restore",
                             "query", "categories search", "categories browse", "scan", "update",
                             "--password-stdin", "--root", "--version"}) {
        EXPECT_TRUE(help.out.contains(QLatin1String(word))) << word;
    }
    const Outcome bare = Start(QStringLiteral("lotwright-cli"), {});
    EXPECT_EQ(bare.code, 2) << "no command is wrong words";
    EXPECT_EQ(bare.err, help.out);
}
