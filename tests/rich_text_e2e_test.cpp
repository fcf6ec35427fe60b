// SPDX-License-Identifier: GPL-3.0-or-later
// The program's documents outside the program: a packing list template with
// its tokens replaced, written as RTF, opened by LibreOffice Writer (soffice)
// with its text, letters and bold run; and the PDF's text one inch from the
// paper's edges, as poppler's pdftotext measures it. Each test is skipped,
// with its reason, where its tool is not installed.
#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QStandardPaths>
#include <QTextCursor>
#include <QTextDocument>

#include "core/richtext/rich_text.h"
#include "support/gui_environment.h"
#include "support/test_support.h"

namespace lw::richtext {
namespace {

// Laying out text, for the PDF, needs an application that knows the fonts.
[[maybe_unused]] const auto* const kGui =
    ::testing::AddGlobalTestEnvironment(new test::GuiEnvironment);

// Converts file, written as "packing.rtf", with soffice into format (as
// --convert-to takes it) in the root's folder "converted"; returns the bytes
// of the converted file.
QByteArray Convert(const test::TempRoot& root, const QString& file, const QString& format,
                   const QString& extension) {
    const QString out = root.File(QStringLiteral("converted"));
    // A profile and a home of its own: the user's may be missing, read-only or in use.
    const test::ProgramRun run = test::RunProgram(
        QStringLiteral("soffice"),
        {QStringLiteral("-env:UserInstallation=file://") + root.File(QStringLiteral("profile")),
         QStringLiteral("--headless"), QStringLiteral("--convert-to"), format,
         QStringLiteral("--outdir"), out, file},
        {}, {QStringLiteral("HOME=") + root.Path()});
    EXPECT_EQ(run.code, 0) << run.err.toStdString();
    return test::ReadAll(out + QStringLiteral("/packing.") + extension);
}

TEST(RichTextWordProcessor, OpensTheWrittenPackingList) {
    if (QStandardPaths::findExecutable(QStringLiteral("soffice")).isEmpty()) {
        GTEST_SKIP() << "soffice is missing (Debian: libreoffice-writer-nogui)";
    }
    test::TempRoot root;
    QTextDocument document;
    const LoadResult loaded =
        LoadRtfFile(test::SourceDir() + QStringLiteral("/tests/rich_text/token.rtf"), document);
    ASSERT_TRUE(loaded.ok) << loaded.message.toStdString();
    int at = ReplaceToken(document, QStringLiteral("{BuyerAddress}"),
                          QStringLiteral("Zoë Müller\n12 Straße – 日本"));
    ASSERT_GE(at, 0);
    ASSERT_GE(
        ReplaceToken(document, QStringLiteral("{BuyerAddress}"), QStringLiteral("ZOË MÜLLER"), at),
        0);
    ASSERT_GE(ReplaceToken(document, QStringLiteral("{MyName}"), QStringLiteral("Ann Lee")), 0);
    ASSERT_GE(
        ReplaceToken(document, QStringLiteral("{CurrentDate}"), QStringLiteral("June 11, 2024")),
        0);
    const QString path = root.File(QStringLiteral("packing.rtf"));
    QString error;
    ASSERT_TRUE(SaveRtfFile(document, path, &error)) << error.toStdString();

    QString text = QString::fromUtf8(
        Convert(root, path, QStringLiteral("txt:Text (encoded):UTF8"), QStringLiteral("txt")));
    text.remove(QChar::ByteOrderMark);
    EXPECT_EQ(text.trimmed().split(QRegularExpression(QStringLiteral("\r?\n"))),
              QStringList({QStringLiteral("Ship to:"), QStringLiteral("Zoë Müller"),
                           QStringLiteral("12 Straße – 日本"),
                           QStringLiteral("From Ann Lee on June 11, 2024"),
                           QStringLiteral("Label: ZOË MÜLLER")}));

    // The word processor breaks its HTML's lines where it likes.
    const QString html =
        QString::fromUtf8(Convert(root, path, QStringLiteral("html"), QStringLiteral("html")))
            .simplified();
    EXPECT_TRUE(html.contains(QStringLiteral("<b>Ann Lee</b>"))) << html.toStdString();
    // The address keeps the italic blue of the token's first character.
    EXPECT_TRUE(html.contains(QStringLiteral("<font color=\"#0000ff\">")) &&
                html.contains(QStringLiteral("<i>Zoë Müller</i>")))
        << html.toStdString();
}

TEST(RichTextWordProcessor, PdfTextStandsOneInchFromTheEdges) {
    if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty()) {
        GTEST_SKIP() << "pdftotext is missing (Debian: poppler-utils)";
    }
    test::TempRoot root;
    QTextDocument document;
    QTextCursor cursor(&document);
    QTextBlockFormat justified;
    justified.setAlignment(Qt::AlignJustify);
    cursor.setBlockFormat(justified);
    for (int i = 0; i < 40; ++i) {
        cursor.insertText(QStringLiteral("Packing list line of words filling the page width. "));
    }
    const QString pdf = root.File(QStringLiteral("packing.pdf"));
    QString error;
    ASSERT_TRUE(WritePdf(document, pdf, &error)) << error.toStdString();

    const QString boxes = root.File(QStringLiteral("boxes.html"));
    const test::ProgramRun run =
        test::RunProgram(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), pdf, boxes});
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    const QString html = QString::fromUtf8(test::ReadAll(boxes));
    const QRegularExpressionMatch page =
        QRegularExpression(QStringLiteral(R"re(<page width="([\d.]+)")re")).match(html);
    ASSERT_TRUE(page.hasMatch()) << html.toStdString();
    const double width = page.captured(1).toDouble();
    double left = width, right = 0, top = 1e9;
    auto words = QRegularExpression(
                     QStringLiteral(R"re(<word xMin="([\d.]+)" yMin="([\d.]+)" xMax="([\d.]+)")re"))
                     .globalMatch(html);
    int count = 0;
    while (words.hasNext()) {
        const QRegularExpressionMatch word = words.next();
        left = std::min(left, word.captured(1).toDouble());
        top = std::min(top, word.captured(2).toDouble());
        right = std::max(right, word.captured(3).toDouble());
        ++count;
    }
    ASSERT_GT(count, 100);
    // 72 points are an inch.
    EXPECT_NEAR(left, 72, 2);
    EXPECT_NEAR(right, width - 72, 2);
    EXPECT_NEAR(top, 72, 2);
}

}  // namespace
}  // namespace lw::richtext
