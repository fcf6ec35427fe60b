// SPDX-License-Identifier: GPL-3.0-or-later
// The preview page in a real browser: each style's preview.html, as headless
// chromium reads it, holds the title, the banner and the description in its
// DOM. Runs where chromium is installed (scripts/setup test installs it) and
// is skipped, with the reason, elsewhere.
#include <gtest/gtest.h>

#include <QStandardPaths>
#include <QUrl>
#include <optional>

#include "tests/support/creator_fixture.h"
#include "tests/support/creator_sample.h"

using namespace lw::creator;

namespace {

QString Chromium() {
    for (const char* name : {"chromium", "chromium-browser", "google-chrome"}) {
        const QString path = QStandardPaths::findExecutable(QString::fromLatin1(name));
        if (!path.isEmpty()) {
            return path;
        }
    }
    return QString();
}

class ListingPreviewInABrowser : public lw::test::CreatorFixture {};

TEST_F(ListingPreviewInABrowser, EachStylesPreviewShowsTitleBannerAndDescription) {
    const QString browser = Chromium();
    if (browser.isEmpty()) {
        GTEST_SKIP() << "chromium is not installed; scripts/setup test installs it";
    }
    CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    doc.txtEbayTitle = QStringLiteral("Brass \"ship\" lantern & stand");
    // No picture may send the browser beyond this machine, nor keep it waiting.
    doc.lstPictureLink.clear();

    for (const StyleFile& style : kStyleFiles) {
        SCOPED_TRACE(style.style);
        const PreviewResult preview =
            PreviewAuction(QString::fromLatin1(style.style), doc, m_lists, m_context,
                           lw::core::CurrentSession().ConfigsDir);
        ASSERT_TRUE(preview.problem.isEmpty()) << preview.problem.toStdString();
        const lw::test::ProgramRun run = lw::test::RunProgram(
            browser, {QStringLiteral("--headless"), QStringLiteral("--no-sandbox"),
                      QStringLiteral("--disable-gpu"),
                      QStringLiteral("--user-data-dir=") + m_root.File(QStringLiteral("browser")),
                      QStringLiteral("--dump-dom"), QUrl::fromLocalFile(preview.path).toString()});
        ASSERT_EQ(run.code, 0) << run.err.toStdString();
        const QString dom = run.out;
        EXPECT_TRUE(
            dom.contains(QStringLiteral("<title>Brass \"ship\" lantern &amp; stand</title>")))
            << dom.left(400).toStdString();
        EXPECT_TRUE(dom.contains(QStringLiteral("<b>My Item Description</b>")));
        EXPECT_TRUE(dom.contains(QStringLiteral("red glass and a working wick.")));
        EXPECT_TRUE(dom.contains(QStringLiteral("<b>original</b>")));  // the seller's HTML is HTML
    }
}

}  // namespace
