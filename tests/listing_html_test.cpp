// SPDX-License-Identifier: GPL-3.0-or-later
// Listing HTML: every shipped style against the listing kept in
// tests/listing_html/ (every part filled, and every optional part off), the
// token search and its first-character rule, the block cut, the picture
// block, colours with Brown's value, fonts, the background rules, the rule
// texts, the style list and its install, failures of the template, and the
// preview page with what it escapes. LW_WRITE_EXPECTED=1 writes the kept
// listings afresh from the build; read the difference before committing it.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/settings.h"
#include "creator/creator_document.h"
#include "creator/listing_html.h"
#include "tests/support/creator_fixture.h"
#include "tests/support/creator_sample.h"
#include "tests/support/test_support.h"
#include "update/rules.h"

using namespace lw::creator;

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

class ListingTest : public lw::test::CreatorFixture {
protected:
    // The buffer after the token table, for a small template of its own.
    QString Apply(QString buffer, const CreatorDocument& doc) {
        ApplyTokens(buffer, doc, m_lists, m_context);
        return buffer;
    }
};

// ------------------------------------------------------------ the shipped styles

// Beyond the kept listing: a filled one holds every part, a bare one none of
// the optional ones and no empty line where one was.
TEST_F(ListingTest, EachStyleBuildsTheListingKeptForIt) {
    const bool write = qEnvironmentVariableIsSet("LW_WRITE_EXPECTED");
    const QRegularExpression leftToken(QStringLiteral("\\[(txt|cmb|lbl|lst|chk)[A-Za-z]"));
    const CreatorDocument full = lw::test::FullSampleDocument(m_lists);
    // The first two stand in a bare listing too.
    QStringList parts = {full.txtItemTitle, full.txtDescription, lw::test::SamplePicture(1),
                         lw::test::SamplePicture(5)};
    for (const char* part :
         {"Used, good", "Shipping Cost:", "$12.50", "Combined shipping on request", "NO RESERVE",
          "to darcy@example.org", "ViewListedItems&userid=darcy_sells", "mailto:darcy@example.org",
          "http://127.0.0.1:8750/lanterns", "#666699"}) {
        parts << QString::fromLatin1(part);
    }
    const struct {
        const char* suffix;
        CreatorDocument doc;
    } documents[] = {{"full", full}, {"bare", lw::test::BareSampleDocument(m_lists)}};
    for (const StyleFile& style : kStyleFiles) {
        for (const auto& [suffix, doc] : documents) {
            const QString name = QFileInfo(QString::fromLatin1(style.file)).completeBaseName() +
                                 u'-' + QLatin1String(suffix) + QStringLiteral(".html");
            SCOPED_TRACE(name.toStdString());
            const ListingResult listing =
                BuildListing(QString::fromLatin1(style.style), doc, m_lists, m_context);
            ASSERT_TRUE(listing.problem.isEmpty()) << listing.problem.toStdString();
            const QString& html = listing.html;
            EXPECT_FALSE(leftToken.match(html).hasMatch())
                << leftToken.match(html).captured().toStdString();
            EXPECT_FALSE(html.contains(QStringLiteral("[START]")));
            EXPECT_FALSE(html.contains(QStringLiteral("SPDX")));
            if (QLatin1String(style.style) != kPlainStyle) {
                const bool filled = QByteArray(suffix) == "full";
                for (const QString& part : filled ? parts : parts.mid(2)) {
                    EXPECT_EQ(html.contains(part), filled) << part.toStdString();
                }
                if (!filled) {
                    EXPECT_FALSE(html.contains(
                        QRegularExpression(QStringLiteral("<BR>\\s*(<B></B>|<I></I>)?\\s*<BR>"))));
                    EXPECT_TRUE(
                        html.contains(QStringLiteral("FACE=\" ")));  // "[cmbFontType]," went
                }
            }
            const QString path =
                lw::test::SourceDir() + QStringLiteral("/tests/listing_html/") + name;
            if (write) {
                QFile file(path);
                ASSERT_TRUE(file.open(QIODevice::WriteOnly));
                file.write(html.toUtf8());
                continue;
            }
            EXPECT_EQ(html, QString::fromUtf8(lw::test::ReadAll(path)));
        }
    }
}

// ------------------------------------------------------------ tokens and the cut

TEST(ReplaceTokens, FindsCaseBlindFromACaretAndLeavesATokenAtTheFirstCharacter) {
    const struct {
        const char* buffer;
        const char* token;
        const char* text;
        const char* expected;
    } cases[] = {
        {"a [X] b [x] c", "[X]", "1", "a 1 b 1 c"},
        {"[X] a [X]", "[X]", "1", "[X] a [X]"},         // the first character stops the search
        {" [X][X]", "[X]", "[X][X]", " [X][X][X][X]"},  // replaced text is not looked at again
        {"a [X]<br> b", "[X]<BR>", "", "a  b"},
        {"a COLOR=\"[c]\" b", "COLOR=\"[C]\"", "", "a  b"},
        {"no token", "[X]", "1", "no token"},
        {"a [X]", "", "1", "a [X]"},
        {"a [X", "[X]", "1", "a [X"},                     // cut off at the buffer's end
        {"x AB= ab=", "ab=", "1", "x 1 1"},               // "=" found first, then the letters
        {"x Fine WINE fine", "fine", "1", "x 1 WINE 1"},  // letters only
        {"x FA B fa b", "fa b", "1", "x 1 1"},            // the blank as the last resort
    };
    for (const auto& c : cases) {
        QString buffer = QString::fromLatin1(c.buffer);
        ReplaceToken(buffer, QString::fromLatin1(c.token), QString::fromLatin1(c.text));
        EXPECT_EQ(buffer, QString::fromLatin1(c.expected)) << c.buffer;
    }
}

TEST(CutListingBlocks, KeepsWhatStandsBetweenTheMarks) {
    const struct {
        const char* buffer;
        const char* expected;
    } cases[] = {
        {"head[START]body[END]tail", "body"},
        {"head[start]body", "body"},
        {"body[END]tail", "body"},
        {"body", "body"},
        {"[END]x[START]y", "y"},
        {"", ""},
    };
    for (const auto& c : cases) {
        QString buffer = QString::fromLatin1(c.buffer);
        CutListingBlock(buffer);
        EXPECT_EQ(buffer, QString::fromLatin1(c.expected)) << c.buffer;
    }
}

TEST(PictureBlocks, ThreeRowsGoFirstAndTheRestAfter) {
    const QString a = QStringLiteral("http://p/a.jpg");
    const QString b = QStringLiteral("http://p/b.jpg");
    const auto img = [](const QString& url) -> QString {
        return QStringLiteral("<IMG SRC=\"") + url + QStringLiteral("\">");
    };
    const QStringList five = {a, b, a, b, a};
    const QString firstThree = img(a) + img(b) + img(a);
    const QString lastTwo = img(b) + img(a);
    const QString sized = QStringLiteral(
        "<A HREF=\"http://p/a.jpg\"><IMG SRC=\"http://p/a.jpg\" WIDTH=175 BORDER=0 "
        "ALT='Click to enlarge'></A>");
    const QString hr = QStringLiteral("<HR>");
    const QString unset = QStringLiteral("http://");
    const QString plain = QString(kPlainStyle);
    const QString other;  // any style but the plain one
    const struct {
        const char* name;
        QString style;
        QStringList links;
        bool size;
        bool ret;
        QString block;
        QString rest;
    } cases[] = {
        {"zero pictures", other, {}, false, false, {}, {}},
        {"zero pictures, plain", plain, {}, false, false, {}, {}},
        {"five pictures", other, five, false, false, firstThree, hr + lastTwo},
        {"five pictures, plain", plain, five, false, false, hr + firstThree, lastTwo},
        // "http://" and empty rows count as rows but give no picture.
        {"two unset rows", other, {unset, QString(), a, b}, false, false, img(a), hr + img(b)},
        {"sized and returned", other, {a}, true, true, sized + QStringLiteral("<P>"), {}},
        {"no return in the plain style", plain, {a}, false, true, hr + img(a), {}},
    };
    for (const auto& c : cases) {
        CreatorDocument doc;
        doc.lstPictureLink = c.links;
        doc.chkPictureSize = c.size;
        doc.chkPictureReturn = c.ret;
        const PictureBlock block = BuildPictureBlock(c.style, doc);
        EXPECT_EQ(block.block, c.block) << c.name;
        EXPECT_EQ(block.txtPicture4, c.rest) << c.name;
    }
}

// ------------------------------------------------------------ colours and fonts

TEST(Colours, ATokenTakesTheSevenCharactersAfterTheFirstBracket) {
    const QStringList rows = ColourRows();
    ASSERT_EQ(rows.size(), 45);
    EXPECT_EQ(rows.front(), QStringLiteral("Black (#000000) (000,000,000)"));
    EXPECT_EQ(rows.at(41), QStringLiteral("Brown (663300) (102,051,000)"));
    EXPECT_EQ(ColourNames().at(20), QStringLiteral("Flourecent Green"));
    const struct {
        const char* name;
        const char* value;
        std::array<int, 3> triple;
    } cases[] = {{"Red", "#ff0000", {255, 0, 0}},
                 {"brown", "663300)", {102, 51, 0}},
                 {"Pastel Yellow", "#FFFFCC", {255, 255, 204}},
                 {" Earth Light ", "#EEEECC", {238, 238, 204}},
                 {"Mauve", "", {0, 0, 0}},
                 {"", "", {0, 0, 0}}};
    for (const auto& c : cases) {
        EXPECT_EQ(ColourValue(QString::fromLatin1(c.name)), QString::fromLatin1(c.value)) << c.name;
        EXPECT_EQ(ColourTriple(QString::fromLatin1(c.name)), c.triple) << c.name;
    }
}

TEST(Fonts, TheCommonFourComeFirstAndSymbolFontsNever) {
    const QStringList fonts = FontList(
        {QStringLiteral("Wingdings 2"), QStringLiteral("zapf"), QStringLiteral("DejaVu Sans"),
         QStringLiteral("Mini Pics Art"), QStringLiteral("symbol"), QStringLiteral("Arial")});
    EXPECT_EQ(fonts, (QStringList{QStringLiteral("Arial"), QStringLiteral("Comic Sans MS"),
                                  QStringLiteral("Times New Roman"), QStringLiteral("Verdana"),
                                  FontSeparator(), QStringLiteral("Arial"),
                                  QStringLiteral("DejaVu Sans"), QStringLiteral("zapf")}));
}

TEST_F(ListingTest, ColoursAndFontsGoIntoTheirTokens) {
    CreatorDocument doc = NewCreatorDocument(m_lists);
    doc.cmbFontColor = QStringLiteral("Brown");
    const QString tokens = QStringLiteral(
        " <FONT COLOR=\"[cmbFontColor]\" FACE=\"[cmbFontType], Arial\" "
        "SIZE=\"[cmbFontSize-1] [cmbFontSize] [cmbFontSize+1] [cmbFontSize+2]\">");
    EXPECT_EQ(Apply(tokens, doc),
              QStringLiteral(" <FONT COLOR=\"663300)\" FACE=\"Arial, Arial\" SIZE=\"1 2 3 4\">"));
    doc.cmbFontType = FontSeparator();
    doc.cmbFontSize = -1;
    doc.cmbFontColor.clear();
    EXPECT_EQ(Apply(tokens, doc),
              QStringLiteral(" <FONT COLOR=\"\" FACE=\" Arial\" SIZE=\"   \">"));
}

TEST_F(ListingTest, TheBackgroundIsAColourAnImageInTheTableOrATiledImage) {
    const QString tokens = QStringLiteral(
        " <TABLE BACKGROUND=\"[chkBGImage]\"><TABLE BGCOLOR=\"[cmbTableBGColor]\" "
        "BACKGROUND=\"[cmbBGImageLink]\">");
    const struct {
        const char* link;
        bool tiled;
        const char* expected;
    } cases[] = {
        {"", false, " <TABLE BACKGROUND=\"\"><TABLE BGCOLOR=\"#CCFFFF\" >"},
        {"http://", false, " <TABLE BACKGROUND=\"http://\"><TABLE BGCOLOR=\"#CCFFFF\" >"},
        {"http://i/bg.gif", false, " <TABLE><TABLE BG BACKGROUND=\"http://i/bg.gif\">"},
        {"http://i/bg.gif", true,
         " <TABLE BACKGROUND=\"http://i/bg.gif\"><TABLE BGCOLOR=\"#CCFFFF\" >"},
    };
    for (const auto& c : cases) {
        CreatorDocument doc = NewCreatorDocument(m_lists);
        doc.cmbTableBGColor = QStringLiteral("Pastel Light Blue");
        doc.cmbBGImageLink = QString::fromLatin1(c.link);
        doc.chkBGImage = c.tiled;
        EXPECT_EQ(Apply(tokens, doc), QString::fromLatin1(c.expected)) << c.link << c.tiled;
    }
}

// ------------------------------------------------------------ rule texts and links

TEST_F(ListingTest, RuleTextsGiveThePaymentLineTheCounterAndTheSellersLink) {
    lw::update::RuleStore rules;
    rules.SetText(
        lw::update::kInfoStore,
        QStringLiteral("x\r\n[PayPal]\r\nOptions=2\r\nOption2HTML=<b>[PAYPALEMAIL] "
                       "[paypalemail] [PAYPALEMAIL]</b>\r\n\r\n[RubyLane]\r\nOptions=3\r\n"
                       "Option2HTML=<img src='c'>\r\nOption3HTML=\r\n\r\n"));
    rules.SetText(
        lw::update::kSiteStore,
        QStringLiteral("x\r\n[eBay View Sellers Auctions]\r\nUrl= http://s/?u= \r\n\r\n"));
    const ListingContext context{QString(), &rules, QStringLiteral("amy")};
    const QString tokens = QStringLiteral(
        " [cmbPayPalLogo]<BR>|[cmbCounterStyle]|[txtEbayAuctionLink]<BR>|"
        "[txtEmailLinkCaption]<BR>|[txtLinkCaption(0)]<BR>");
    const struct {
        int logo;
        const char* address;
        int counter;
        bool links;
        const char* expected;
    } cases[] = {
        {1, "a@b", 1, true,
         " <b>a@b [paypalemail] a@b</b><BR>|<img src='c'>|<A HREF='http://s/?u=amy'>See my other "
         "eBay auctions</A><BR>|<A HREF='mailto:a@b'><EM>Send me email</EM></A><BR>|<A "
         "HREF='http://'>Visit My Website</A><BR>"},
        {1, " ", 2, false, " ||||"},  // no address, an empty counter text, links off
        {0, "a@b", 0, false, " ||||"},
    };
    for (const auto& c : cases) {
        CreatorDocument doc;
        doc.cmbPayPalLogo = c.logo;
        doc.txtPayPalAddress = QString::fromLatin1(c.address);
        doc.cmbCounterStyle = c.counter;
        doc.chkEbayAuctionLink = doc.chkEmailLink = doc.chkLink[0] = c.links;
        doc.txtEmailLinkText = QString::fromLatin1(c.address);
        QString buffer = tokens;
        ApplyTokens(buffer, doc, m_lists, context);
        EXPECT_EQ(buffer, QString::fromLatin1(c.expected));
    }
}

TEST(ListingFooters, TheFooterLinksTheWordsWhereTheRulesNameATarget) {
    lw::update::RuleStore rules;
    EXPECT_TRUE(ListingFooter(rules).contains(
        QStringLiteral(" your auctions with Tolvane software.</b></font></font><br><font "
                       "color=\"#FFFFFF\">TLV20</FONT>")));
    rules.SetText(lw::update::kInfoStore,
                  QStringLiteral("x\r\n[Listing Footer]\r\nUrl=http://m/\r\n\r\n"));
    const QString footer = ListingFooter(rules);
    EXPECT_TRUE(
        footer.startsWith(QStringLiteral("<hr noshade><p align=\"center\"><b><font size = \"2\"")));
    EXPECT_TRUE(footer.contains(QStringLiteral("<a href=\"http://m/\">Tolvane software.</a>")));
}

// ------------------------------------------------------------ styles on disk and failures

TEST_F(ListingTest, StylesAreListedFromTheFilesAndInstalledWithoutOverwriting) {
    std::vector<AuctionStyle> shipped = ListAuctionStyles(lw::test::ShippedTemplates());
    ASSERT_EQ(shipped.size(), std::size(kStyleFiles));
    for (const AuctionStyle& style : shipped) {
        EXPECT_EQ(StyleFileName(style.name), style.fileName) << style.name.toStdString();
        EXPECT_TRUE(QFile::exists(StylePreviewPicture(lw::test::SourceDir(), style.fileName)))
            << style.fileName.toStdString();
    }
    const QString dir = lw::core::CurrentSession().TemplatesDir + QStringLiteral("Auctions/");
    m_root.Write(QStringLiteral("Templates/Auctions/standard.tem"), "Style=My Own\n[START]mine");
    m_root.Write(QStringLiteral("Templates/Auctions/notes.tem"), "no style line\n");
    QString error;
    ASSERT_TRUE(InstallAuctionTemplates(lw::test::SourceDir(),
                                        lw::core::CurrentSession().TemplatesDir, &error))
        << error.toStdString();
    const std::vector<AuctionStyle> installed = ListAuctionStyles(dir);
    EXPECT_EQ(installed.size(), std::size(kStyleFiles));
    EXPECT_EQ(lw::test::ReadAll(dir + QStringLiteral("standard.tem")),
              QByteArray("Style=My Own\n[START]mine"));
    EXPECT_TRUE(ListAuctionStyles(m_root.File(QStringLiteral("nowhere"))).empty());
}

// A template that cannot be read, or a style that has none, keeps the previous
// listing's block; a template of the user's is read as it stands.
TEST_F(ListingTest, ATemplateIsReadOrThePreviousListingKeptAndTheProblemTold) {
    const CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    const auto own = [this](const char* folder, const QByteArray& text) {
        return QFileInfo(m_root.Write(QLatin1String(folder) + QStringLiteral("/quick.tem"), text))
            .path();
    };
    QDir(m_root.Path()).mkpath(QStringLiteral("folder/quick.tem"));
    const QString kept = QStringLiteral("kept");
    const struct {
        const char* name;
        const char* style;
        QString templatesDir;
        QString html;
        const char* problem;  // part of it; null: none
    } cases[] = {
        {"no folder", "Simple Elegant", m_root.File(QStringLiteral("no/such/folder")), kept,
         "elegant.tem could not be read"},
        {"no template for the style", "Baroque", m_context.templatesDir, kept, nullptr},
        {"a folder of the template's name", "Quick 'n' Easy", m_root.File(QStringLiteral("folder")),
         kept, "quick.tem could not be read"},
        {"larger than a template can be", "Quick 'n' Easy",
         own("big", QByteArray(8 * 1024 * 1024 + 1, ' ')), kept, "is larger than 8 MB"},
        {"without its marks: whole", "Quick 'n' Easy",
         own("whole", "Style=Quick\n<P>[txtDescription]</P>"),
         QStringLiteral("Style=Quick\n<P>") + doc.txtDescription + QStringLiteral("</P>"), nullptr},
        {"not UTF-8: Latin-1", "Quick 'n' Easy", own("latin", "[START]Caf\xe9 [txtDescription]"),
         QStringLiteral("Caf\u00e9 ") + doc.txtDescription, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ListingContext context = m_context;
        context.templatesDir = c.templatesDir;
        const ListingResult listing = BuildListing(QString::fromLatin1(c.style), doc, m_lists,
                                                   context, QStringLiteral("old[START]kept[END]x"));
        EXPECT_EQ(listing.html, c.html);
        EXPECT_EQ(listing.problem.isEmpty(), c.problem == nullptr);
        if (c.problem) {
            EXPECT_TRUE(listing.problem.contains(QString::fromLatin1(c.problem)))
                << listing.problem.toStdString();
        }
    }
}

TEST_F(ListingTest, AMegabyteDescriptionWithItsOwnHtmlGoesInWhole) {
    CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    QString description;
    while (description.size() < 1024 * 1024) {
        description +=
            QStringLiteral("<TABLE><TR><TD>[txtItemTitle] &amp; <B>lamp</B></TD></TR></TABLE> ");
    }
    doc.txtDescription = description;
    const ListingResult listing =
        BuildListing(QStringLiteral("Professional Complete"), doc, m_lists, m_context);
    ASSERT_TRUE(listing.problem.isEmpty());
    // The description's own "[txtItemTitle]" was met by the title's step, as
    // every token after the description's is.
    EXPECT_EQ(listing.html.count(doc.txtItemTitle),
              description.count(QStringLiteral("[txtItemTitle]")) + 1);
    EXPECT_EQ(listing.html.count(QStringLiteral("<B>lamp</B>")),
              description.count(QStringLiteral("<B>lamp</B>")));
}

// ------------------------------------------------------------ the preview page

TEST_F(ListingTest, ThePreviewEscapesWhatTheProgramShowsAndKeepsTheListingAsWritten) {
    CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    doc.txtEbayTitle = QStringLiteral("\"Best\" lamp <script>alert(1)</script>");
    doc.txtItemTitle = doc.txtEbayTitle;
    doc.txtReserve.clear();
    doc.cmbEbayPicIconActivate = QStringLiteral("http://p/icon.jpg");
    doc.chkEbayGallery = true;
    doc.cmbEbayGallery = QStringLiteral("http://p/gallery.jpg");
    doc.lstEbayOptions = {0};
    const QString configs = lw::core::CurrentSession().ConfigsDir;
    m_root.Write(QStringLiteral("Configs/Preview.html"), "stale");
    const PreviewResult preview =
        PreviewAuction(QStringLiteral("Professional Standard"), doc, m_lists, m_context, configs);
    ASSERT_TRUE(preview.problem.isEmpty()) << preview.problem.toStdString();
    EXPECT_EQ(preview.path, QDir(configs).filePath(QStringLiteral("preview.html")));
    EXPECT_FALSE(QFile::exists(QDir(configs).filePath(QStringLiteral("Previewx.html"))));
    EXPECT_FALSE(QFile::exists(QDir(configs).filePath(QStringLiteral("Preview.html"))));
    const QString page = QString::fromUtf8(lw::test::ReadAll(preview.path));
    const QString escaped =
        QStringLiteral("&quot;Best&quot; lamp &lt;script&gt;alert(1)&lt;/script&gt;");
    EXPECT_TRUE(page.contains(QStringLiteral("<TITLE>") + escaped + QStringLiteral("</TITLE>")));
    EXPECT_TRUE(page.contains(QStringLiteral("<FONT SIZE=2><B>") + escaped));
    EXPECT_EQ(page.count(QStringLiteral("<script>")), 1);  // the seller's own title, in the listing
    EXPECT_TRUE(page.contains(preview.listing.html));
    for (const char* part :
         {"<BODY BGCOLOR=\"#FFFFFF\">", "<b>My Item Description</b>", "<B>No Reserve</B>",
          "<IMG SRC='http://p/icon.jpg'>", "<B>Gallery Picture:</B>",
          "<IMG SRC='http://p/gallery.jpg'>", "<B><U>Optional Settings</U></B>",
          "Bold Title</FONT></TD><TD WIDTH=65%><FONT SIZE=2><B>Yes</B>",
          "Highlight</FONT></TD><TD WIDTH=65%><FONT SIZE=2><B>No</B>",
          "Great Gift Icon</FONT></TD><TD WIDTH=65%><FONT SIZE=2><B>None</B>",
          "Sales Tax</FONT></TD><TD WIDTH=65%><FONT SIZE=2><B>0.00%</B>", "</BODY></HTML>"}) {
        EXPECT_TRUE(page.contains(QString::fromUtf8(part))) << part;
    }
    EXPECT_LT(page.indexOf(QStringLiteral("eBay Title:")),
              page.indexOf(QStringLiteral("My Item Description")));
    EXPECT_LT(page.indexOf(QStringLiteral("My Item Description")),
              page.indexOf(doc.txtDescription));
}

TEST_F(ListingTest, ADescriptionWithItsOwnBodyPreviewsWithoutTheTemplate) {
    CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    doc.txtDescription = QStringLiteral(
        "<html><head><title>mine</title></head><body bgcolor=\"#FFEEDD\" text=red>Own page</body>");
    const PreviewResult preview =
        PreviewAuction(QStringLiteral("Professional Standard"), doc, m_lists, m_context,
                       lw::core::CurrentSession().ConfigsDir);
    const QString page = QString::fromUtf8(lw::test::ReadAll(preview.path));
    const qsizetype body = page.indexOf(QStringLiteral("<body bgcolor=\"#FFEEDD\" text=red>"));
    ASSERT_GE(body, 0);
    EXPECT_LT(body, page.indexOf(QStringLiteral("eBay Title:")));
    EXPECT_LT(page.indexOf(QStringLiteral("My Item Description")),
              page.indexOf(QStringLiteral("Own page</body>")));
    EXPECT_FALSE(page.contains(QStringLiteral("<title>mine</title>")));
    EXPECT_FALSE(page.contains(QStringLiteral("BORDERCOLOR")));  // no template
}

}  // namespace
