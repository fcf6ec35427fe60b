// SPDX-License-Identifier: GPL-3.0-or-later
// The saved-page corpus: every folder under tests/pages/ is one case of
// `lotwright-cli scan` (a rule file, a protocol, a page, optional ancillary
// pages) with the records it must print and, where it must fail, what it must
// say. The folders are listed when the suite starts, so a case is added by
// adding a folder; each folder is its own test, named after it.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/test_support.h"

using lw::test::BinDir;
using lw::test::SourceDir;

namespace {

QString CorpusDir() {
    return SourceDir() + QStringLiteral("/tests/pages");
}

std::vector<std::string> CaseFolders() {
    std::vector<std::string> names;
    const QDir dir(CorpusDir());
    for (const QString& name : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        names.push_back(name.toStdString());
    }
    return names;
}

std::optional<QByteArray> ReadFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

// Non-empty lines, with any CR of a CR LF line end taken off.
QList<QByteArray> Lines(const QByteArray& text) {
    QList<QByteArray> lines;
    for (QByteArray line : text.split('\n')) {
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        if (!line.trimmed().isEmpty()) {
            lines.push_back(line);
        }
    }
    return lines;
}

// case.ini: key=value lines.
struct CaseFile {
    QString rules;
    QString protocol;
    QString pages;
    std::optional<int> exit;
    QString knownFailure;
    QString fault;  // what is wrong with the case folder itself
};

CaseFile ReadCase(const QDir& folder) {
    CaseFile made;
    const std::optional<QByteArray> text = ReadFile(folder.filePath(QStringLiteral("case.ini")));
    if (!text) {
        made.fault = QStringLiteral("no case.ini");
        return made;
    }
    static const QSet<QString> kKeys{QStringLiteral("rules"), QStringLiteral("protocol"),
                                     QStringLiteral("exit"), QStringLiteral("known_failure")};
    for (const QByteArray& line : Lines(*text)) {
        const qsizetype equals = line.indexOf('=');
        const QString key = QString::fromUtf8(line.left(equals)).trimmed();
        const QString value = QString::fromUtf8(line.mid(equals + 1)).trimmed();
        if (equals < 0 || !kKeys.contains(key)) {
            made.fault = QStringLiteral("case.ini: unknown line ") + QString::fromUtf8(line);
            return made;
        }
        if (key == QStringLiteral("rules")) {
            made.rules = value;
        } else if (key == QStringLiteral("protocol")) {
            made.protocol = value;
        } else if (key == QStringLiteral("exit")) {
            bool ok = false;
            made.exit = value.toInt(&ok);
            if (!ok) {
                made.fault = QStringLiteral("case.ini: exit is not a number");
            }
        } else {
            made.knownFailure = value;
        }
    }
    if (made.rules.isEmpty()) {
        made.rules = QStringLiteral("case.pro");
    }
    if (made.protocol.isEmpty()) {
        made.fault = QStringLiteral("case.ini names no protocol");
    }
    return made;
}

struct ScanRun {
    bool finished = false;
    int code = -1;
    QByteArray out;
    QByteArray err;
};

ScanRun Scan(const QStringList& args) {
    ScanRun run;
    QProcess process;
    process.start(BinDir() + QStringLiteral("/lotwright-cli"), args);
    process.closeWriteChannel();
    // A bound on a scan that never ends, not a measure of its speed.
    run.finished = process.waitForFinished(120000);
    if (!run.finished) {
        process.kill();
        process.waitForFinished();
    }
    run.code = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// Everything that differs from what the case expects; empty when it holds.
QStringList Differences(const ScanRun& run, const QList<QByteArray>& expected,
                        const QList<QByteArray>& errorLines, int exitWanted, bool anyNonZero) {
    QStringList faults;
    if (!run.finished) {
        faults << QStringLiteral("the scan did not end");
        return faults;
    }
    if (anyNonZero ? run.code == 0 : run.code != exitWanted) {
        faults << QStringLiteral("exit code %1, expected %2")
                      .arg(run.code)
                      .arg(anyNonZero ? QStringLiteral("not 0") : QString::number(exitWanted));
    }
    const QList<QByteArray> printed = Lines(run.out);
    const qsizetype common = std::min(printed.size(), expected.size());
    for (qsizetype i = 0; i < common; ++i) {
        QJsonParseError error;
        const QJsonDocument got = QJsonDocument::fromJson(printed[i], &error);
        const QJsonDocument want = QJsonDocument::fromJson(expected[i]);
        if (error.error != QJsonParseError::NoError || got != want) {
            faults << QStringLiteral("record %1:\n  printed  %2\n  expected %3")
                          .arg(i + 1)
                          .arg(QString::fromUtf8(printed[i]), QString::fromUtf8(expected[i]));
        }
    }
    for (qsizetype i = common; i < printed.size(); ++i) {
        faults << QStringLiteral("record %1 printed, none expected: %2")
                      .arg(i + 1)
                      .arg(QString::fromUtf8(printed[i]));
    }
    for (qsizetype i = common; i < expected.size(); ++i) {
        faults << QStringLiteral("record %1 expected, not printed: %2")
                      .arg(i + 1)
                      .arg(QString::fromUtf8(expected[i]));
    }
    for (const QByteArray& line : errorLines) {
        if (!run.err.contains(line)) {
            faults << QStringLiteral("the error output lacks: ") + QString::fromUtf8(line);
        }
    }
    return faults;
}

class PageCorpus : public ::testing::TestWithParam<std::string> {};

TEST_P(PageCorpus, ScanPrintsTheExpectedRecords) {
    const QString name = QString::fromStdString(GetParam());
    const QDir folder(CorpusDir() + u'/' + name);
    SCOPED_TRACE("case folder tests/pages/" + GetParam());

    const CaseFile testCase = ReadCase(folder);
    ASSERT_TRUE(testCase.fault.isEmpty()) << testCase.fault.toStdString();
    const QString rules = QFileInfo(folder.filePath(testCase.rules)).absoluteFilePath();
    ASSERT_TRUE(QFile::exists(rules)) << "no rule file " << rules.toStdString();
    const QString page = folder.filePath(QStringLiteral("page.html"));
    ASSERT_TRUE(QFile::exists(page)) << "no page.html";

    const std::optional<QByteArray> expectedText =
        ReadFile(folder.filePath(QStringLiteral("expected.jsonl")));
    const std::optional<QByteArray> errorText =
        ReadFile(folder.filePath(QStringLiteral("expected_error.txt")));
    ASSERT_TRUE(expectedText || errorText)
        << "neither expected.jsonl nor expected_error.txt: the case expects nothing";
    const QList<QByteArray> expected = expectedText ? Lines(*expectedText) : QList<QByteArray>();
    for (qsizetype i = 0; i < expected.size(); ++i) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(expected[i], &error);
        ASSERT_TRUE(error.error == QJsonParseError::NoError && document.isObject())
            << "expected.jsonl line " << i + 1 << " is not a JSON object";
    }
    const QList<QByteArray> errorLines = errorText ? Lines(*errorText) : QList<QByteArray>();

    QStringList args{
        QStringLiteral("scan"), QStringLiteral("--rules"), rules, QStringLiteral("--protocol"),
        testCase.protocol,      QStringLiteral("--page"),  page};
    if (QFileInfo(folder.filePath(QStringLiteral("pages"))).isDir()) {
        args << QStringLiteral("--pages") << folder.filePath(QStringLiteral("pages"));
    }
    const ScanRun run = Scan(args);
    const bool anyNonZero = !testCase.exit && errorText.has_value();
    const QStringList faults =
        Differences(run, expected, errorLines, testCase.exit.value_or(0), anyNonZero);

    const std::string told =
        faults.join(u'\n').toStdString() + "\nerror output:\n" + run.err.toStdString();
    if (!testCase.knownFailure.isEmpty()) {
        ASSERT_FALSE(faults.isEmpty())
            << "the case passes now: take known_failure out of its case.ini";
        GTEST_SKIP() << "known failure: " << testCase.knownFailure.toStdString() << "\n" << told;
    }
    EXPECT_TRUE(faults.isEmpty()) << told;
}

// gtest names allow letters, digits and underscores only.
std::string CaseName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Pages, PageCorpus, ::testing::ValuesIn(CaseFolders()), CaseName);

}  // namespace
