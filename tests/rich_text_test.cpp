// SPDX-License-Identifier: GPL-3.0-or-later
// The rich-text library: RTF as a word processor writes it (tests/rich_text/,
// made by scripts/make-rtf-fixtures) read with its text and formats; the
// reader's handling of code pages, escapes and skipped groups; the round trip
// through the writer; token replacement; bad input; and the PDF.
#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <QUrl>
#include <algorithm>
#include <optional>
#include <ostream>
#include <random>

#include "core/richtext/rich_text.h"
#include "support/gui_environment.h"
#include "support/test_support.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace lw::richtext {
namespace {

// Laying out text, for the PDF, needs an application that knows the fonts.
[[maybe_unused]] const auto* const kGui =
    ::testing::AddGlobalTestEnvironment(new test::GuiEnvironment);

QString FixturePath(const QString& name) {
    return test::SourceDir() + QStringLiteral("/tests/rich_text/") + name + QStringLiteral(".rtf");
}

// A fixture by name, or RTF given in place.
void Load(const QString& source, QTextDocument& document) {
    const LoadResult result = source.startsWith(u'{') ? LoadRtf(source.toUtf8(), document)
                                                      : LoadRtfFile(FixturePath(source), document);
    ASSERT_TRUE(result.ok) << result.message.toStdString();
}

// Every paragraph's text in document order, table cells included.
QStringList Blocks(const QTextDocument& document) {
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        blocks.append(block.text());
    }
    return blocks;
}

QString Family(const QTextCharFormat& format) {
    const QStringList families = format.property(QTextFormat::FontFamilies).toStringList();
    return families.isEmpty() ? QString() : families.first();
}

// What the reader and writer must keep: each paragraph's alignment and
// indents, each run's text and formats, the tables' shapes and the pictures.
QStringList Signature(const QTextDocument& document) {
    QStringList lines;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextBlockFormat b = block.blockFormat();
        const auto* table = qobject_cast<QTextTable*>(QTextCursor(block).currentFrame());
        lines.append(QStringLiteral("paragraph align=%1 left=%2 first=%3 page=%4 table=%5")
                         .arg(int(b.alignment() & Qt::AlignHorizontal_Mask))
                         .arg(b.leftMargin())
                         .arg(b.textIndent())
                         .arg(int(b.pageBreakPolicy()))
                         .arg(table
                                  ? QStringLiteral("%1x%2").arg(table->rows()).arg(table->columns())
                                  : QStringLiteral("-")));
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat f = it.fragment().charFormat();
            // The font as shown: a run without a family or size has the document's.
            const QFont font = f.font().resolve(document.defaultFont());
            if (f.isImageFormat()) {
                const QImage image =
                    document.resource(QTextDocument::ImageResource, QUrl(f.toImageFormat().name()))
                        .value<QImage>();
                lines.append(QStringLiteral("  picture %1x%2 of %3x%4")
                                 .arg(f.toImageFormat().width())
                                 .arg(f.toImageFormat().height())
                                 .arg(image.width())
                                 .arg(image.height()));
                continue;
            }
            lines.append(
                QStringLiteral("  [%1] b%2 i%3 u%4 s%5 v%6 %7 %8pt fg%9 bg%10")
                    .arg(it.fragment().text())
                    .arg(f.fontWeight() >= QFont::Bold)
                    .arg(f.fontItalic())
                    .arg(f.fontUnderline())
                    .arg(f.fontStrikeOut())
                    .arg(int(f.verticalAlignment()))
                    .arg(font.family())
                    .arg(font.pointSizeF())
                    .arg(f.foreground().style() == Qt::NoBrush ? QStringLiteral("-")
                                                               : f.foreground().color().name())
                    .arg(f.background().style() == Qt::NoBrush ? QStringLiteral("-")
                                                               : f.background().color().name()));
        }
    }
    return lines;
}

// ------------------------------------------------------------ the word processor's files

// A document built here, with what the word processor's files leave out: a
// table at the very start, a page break, sub- and superscript, an empty
// paragraph, RTF's own special characters and a letter outside the Basic
// Multilingual Plane.
void BuildDocument(QTextDocument& document) {
    QTextCursor cursor(&document);
    QTextTable* table = cursor.insertTable(1, 2);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("cell {one}"));
    table->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("back\\slash"));
    cursor = table->lastCursorPosition();
    cursor.movePosition(QTextCursor::NextBlock);
    QTextCharFormat super;
    super.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    cursor.insertText(QStringLiteral("x"));
    cursor.insertText(QStringLiteral("2"), super);
    cursor.insertBlock();
    cursor.insertBlock();
    QTextBlockFormat page;
    page.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    page.setAlignment(Qt::AlignRight);
    cursor.setBlockFormat(page);
    cursor.insertText(QStringLiteral("Ω \U0001F600\ttab"), QTextCharFormat());
}

struct DocumentCase {
    const char* fixture;  // "built": BuildDocument's
    QStringList blocks;   // as read from the fixture
};

class Documents : public ::testing::TestWithParam<DocumentCase> {};

// Each paragraph is read in order; the writer writes 7-bit RTF that reads back
// with every paragraph's and run's formats, and its own file reads back as itself.
TEST_P(Documents, ReadInOrderAndRoundTripWithTheirFormats) {
    QTextDocument first;
    if (QByteArray(GetParam().fixture) == "built") {
        BuildDocument(first);
    } else {
        Load(QString::fromUtf8(GetParam().fixture), first);
        EXPECT_EQ(Blocks(first), GetParam().blocks);
    }
    const QByteArray rtf = SaveRtf(first);
    EXPECT_TRUE(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\deff0"));
    EXPECT_TRUE(std::all_of(rtf.begin(), rtf.end(), [](char c) { return uchar(c) < 0x80; }));
    QTextDocument second;
    const LoadResult result = LoadRtf(rtf, second);
    ASSERT_TRUE(result.ok) << result.message.toStdString();
    EXPECT_EQ(Signature(second), Signature(first));
    EXPECT_EQ(SaveRtf(second), rtf);
}

INSTANTIATE_TEST_SUITE_P(
    RichText, Documents,
    ::testing::Values(DocumentCase{"formats",
                                   {QStringLiteral("Plain bold italic underlined struck"),
                                    QStringLiteral("Mono red eighteen"),
                                    QStringLiteral("Small on the right"),
                                    QStringLiteral("Indented and justified, marked"),
                                    QStringLiteral("Heading text")}},
                      DocumentCase{"letters",
                                   {QStringLiteral("Café Müller, Straße 5, 20 € – 日本"),
                                    QStringLiteral("First line\u2028Second line")}},
                      DocumentCase{"table",
                                   {QStringLiteral("Before the table"), QStringLiteral("Item"),
                                    QStringLiteral("Price"), QStringLiteral("Quantity"),
                                    QStringLiteral("Teapot"), QStringLiteral("$12.50"),
                                    QStringLiteral("2"), QStringLiteral("After the table")}},
                      DocumentCase{"token",
                                   {QStringLiteral("Ship to:"), QStringLiteral("{BuyerAddress}"),
                                    QStringLiteral("From {MyName} on {CurrentDate}"),
                                    QStringLiteral("Label: {BuyerAddress}")}},
                      DocumentCase{"picture", {QStringLiteral("Logo \ufffc after")}},
                      DocumentCase{"built", {}}),
    [](const auto& info) { return std::string(info.param.fixture); });

// Formats looked for at the first character of a text; unset fields are not looked at.
struct Want {
    std::optional<bool> bold = {};
    std::optional<bool> italic = {};
    std::optional<bool> underline = {};
    std::optional<bool> strike = {};
    std::optional<QString> family = {};
    std::optional<double> points = {};
    std::optional<QString> color = {};
    std::optional<QString> background = {};
    std::optional<Qt::Alignment> alignment = {};
    std::optional<double> leftPixels = {};
};

void ExpectFormat(const QTextDocument& document, const QString& text, const Want& want) {
    SCOPED_TRACE(text.toStdString());
    const QTextCursor found = document.find(text, 0, QTextDocument::FindCaseSensitively);
    ASSERT_FALSE(found.isNull());
    QTextCursor at(found);
    at.setPosition(found.selectionStart() + 1);
    const QTextCharFormat f = at.charFormat();
    const QTextBlockFormat b = at.blockFormat();
    const auto expect = [](const char* what, const auto& wanted, const auto& actual) {
        if (wanted) {
            EXPECT_EQ(actual, *wanted) << what;
        }
    };
    expect("bold", want.bold, f.fontWeight() >= QFont::Bold);
    expect("italic", want.italic, f.fontItalic());
    expect("underline", want.underline, f.fontUnderline());
    expect("strike", want.strike, f.fontStrikeOut());
    expect("family", want.family, Family(f));
    expect("points", want.points, f.fontPointSize());
    expect("color", want.color, f.foreground().color().name());
    expect("background", want.background, f.background().color().name());
    expect("alignment", want.alignment, b.alignment() & Qt::AlignHorizontal_Mask);
    expect("left margin", want.leftPixels, b.leftMargin());
}

struct FormatCase {
    const char* source;  // a fixture's name, or RTF
    const char* text;
    Want want;
};

const FormatCase kFormats[] = {
    {"formats",
     "Plain",
     {.bold = false,
      .italic = false,
      .underline = false,
      .points = 12,
      .alignment = Qt::AlignLeft}},
    {"formats", "bold", {.bold = true, .italic = false}},
    {"formats", "italic", {.bold = false, .italic = true}},
    {"formats", "underlined", {.underline = true, .strike = false}},
    {"formats", "struck", {.underline = false, .strike = true}},
    {"formats",
     "Mono red",
     {.family = "Liberation Mono",
      .points = 18,
      .color = "#c00000",
      .alignment = Qt::AlignHCenter}},
    {"formats", "Small", {.points = 8, .alignment = Qt::AlignRight}},
    {"formats", "Indented", {.alignment = Qt::AlignJustify, .leftPixels = 96}},
    {"formats", "marked", {.background = "#ffff00"}},
    {"formats", "Heading", {.bold = true, .points = 24}},
    {"table", "Price", {.bold = true}},
    {"table", "Teapot", {.bold = false}},
    {"token", "{Buyer", {.bold = false, .italic = true, .color = "#0000ff"}},
    {"token", "Address}", {.bold = true, .italic = false}},
    // A paragraph style gives its formats to the paragraph that names it.
    {R"({\rtf1{\stylesheet{\s0 Normal;}{\s2\b\fs40\qc Big;}}\pard\plain\s2 styled\par})",
     "styled",
     {.bold = true, .points = 20, .alignment = Qt::AlignHCenter}},
    // A style based on another adds to it when the base comes first.
    {R"({\rtf1{\stylesheet{\s1\i Base;}{\s2\sbasedon1\b Derived;}}\pard\plain\s2 both\par})",
     "both",
     {.bold = true, .italic = true}},
    // \plain and \pard go back to the defaults, whatever came before.
    {R"({\rtf1\b\qc\fs40 bold\par\pard\plain plain\par})",
     "plain",
     {.bold = false, .points = 12, .alignment = Qt::AlignLeft}},
};

TEST(RichTextFormats, FoundWhereTheDocumentHasThem) {
    for (const FormatCase& want : kFormats) {
        QTextDocument document;
        Load(QString::fromUtf8(want.source), document);
        ExpectFormat(document, QString::fromUtf8(want.text), want.want);
    }
}

TEST(RichTextFormats, TableAndPictureKeepTheirShape) {
    QTextDocument table;
    Load(QStringLiteral("table"), table);
    QTextCursor cell = table.find(QStringLiteral("Teapot"));
    const auto* grid = qobject_cast<QTextTable*>(cell.currentFrame());
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->rows(), 2);
    EXPECT_EQ(grid->columns(), 3);
    EXPECT_EQ(grid->cellAt(cell).row(), 1);
    EXPECT_EQ(grid->cellAt(cell).column(), 0);

    QTextDocument picture;
    Load(QStringLiteral("picture"), picture);
    QTextCursor at(&picture);
    at.setPosition(QStringLiteral("Logo ").size() + 1);
    ASSERT_TRUE(at.charFormat().isImageFormat());
    const QTextImageFormat format = at.charFormat().toImageFormat();
    EXPECT_DOUBLE_EQ(format.width(), 40);
    EXPECT_DOUBLE_EQ(format.height(), 30);
    const QImage image =
        picture.resource(QTextDocument::ImageResource, QUrl(format.name())).value<QImage>();
    ASSERT_EQ(image.size(), QSize(4, 3));
    EXPECT_EQ(image.pixelColor(0, 0), QColor(Qt::red));
    EXPECT_EQ(image.pixelColor(3, 2), QColor(Qt::blue));
}

// ------------------------------------------------------------ what the reader makes of RTF

struct ReaderCase {
    const char* name;
    const char* rtf;
    QStringList blocks;
};

const ReaderCase kReaderCases[] = {
    {"Windows1252ByDefault", R"({\rtf1\ansi caf\'e9 \'80})", {QStringLiteral("café €")}},
    {"CodePageOfTheDocument", R"({\rtf1\ansi\ansicpg1251 \'c6\'e8})", {QStringLiteral("Жи")}},
    {"CodePageOfTheFont",
     R"({\rtf1{\fonttbl{\f0\fcharset0 A;}{\f1\fcharset204 B;}}\f1 \'c6})",
     {QStringLiteral("Ж")}},
    {"DoubleByteCodePage", R"({\rtf1\ansi\ansicpg932 \'93\'fa})", {QStringLiteral("日")}},
    {"UnicodeWithSkipCounts",
     R"({\rtf1\uc2\u8364\'80\'80 x\uc0\u26085 y})",
     {QStringLiteral("€ x日y")}},
    {"UnicodeSkipEndsWithItsGroup", R"({\rtf1 a{\u233}b\u-3913?})", {QStringLiteral("aéb\uf0b7")}},
    {"EscapedSymbols",
     R"({\rtf1 a\~b\-c\_d\{\}\\})",
     {QStringLiteral("a\u00a0b\u00adc\u2011d{}\\")}},
    {"SkippedGroups",
     R"({\rtf1{\info{\title t}}{\*\unknown u}{\stylesheet{\s0 Normal;}}kept{\field{\*\fldinst HYPERLINK x}{\fldrslt link}}{\header h}})",
     {QStringLiteral("keptlink")}},
    {"SpecialCharacters",
     R"({\rtf1 a{\v hidden}b\tab c\line d\emdash\ldblquote})",
     {QStringLiteral("ab\tc\u2028d\u2014\u201c")}},
    {"BinaryDataSkipped", R"({\rtf1 a\bin3 {}}b})", {QStringLiteral("ab")}},
    {"LastParagraphMarkMakesNoEmptyParagraph",
     R"({\rtf1 one\par two\par})",
     {QStringLiteral("one"), QStringLiteral("two")}},
    {"EmptyParagraphsKept",
     R"({\rtf1 one\par\par\par})",
     {QStringLiteral("one"), QString(), QString()}},
    {"PageBreakStartsAParagraph",
     R"({\rtf1 one\page two})",
     {QStringLiteral("one"), QStringLiteral("two")}},
    // A text document always begins with a paragraph: an empty one before a
    // table that opens the file.
    {"TableWithoutRowDefinition",
     R"({\rtf1\pard\intbl a\cell b\cell\row\pard c})",
     {QString(), QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}},
    {"TableRowsOfDifferentLengths",
     R"({\rtf1\trowd\cellx100\pard\intbl a\cell\row\trowd\cellx100\cellx200\pard\intbl b\cell c\cell\row\pard d\par})",
     {QString(), QStringLiteral("a"), QString(), QStringLiteral("b"), QStringLiteral("c"),
      QStringLiteral("d")}},
    {"PictureOfAnUnknownKindDropped",
     R"({\rtf1 a{\pict\wmetafile8 0102}b})",
     {QStringLiteral("ab")}},
    {"TextBehindTheLastBraceIgnored", R"({\rtf1 a}}b})", {QStringLiteral("a")}},
};

TEST(RichTextReader, MakesTheTextOfEachCase) {
    for (const ReaderCase& c : kReaderCases) {
        SCOPED_TRACE(c.name);
        QTextDocument document;
        Load(QString::fromUtf8(c.rtf), document);
        EXPECT_EQ(Blocks(document), c.blocks);
    }
}

TEST(RichTextReader, CellsBeyondTheLastColumnShareIt) {
    QTextDocument document;
    const QByteArray rtf = "{\\rtf1\\pard\\intbl a\\cell" + QByteArray("\\cell").repeated(61) +
                           " b\\cell c\\cell\\cell d\\cell\\row}";
    ASSERT_TRUE(LoadRtf(rtf, document).ok);
    const auto* table =
        qobject_cast<QTextTable*>(document.find(QStringLiteral("a")).currentFrame());
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->columns(), 63);
    EXPECT_EQ(table->cellAt(0, 62).firstCursorPosition().block().text(), QStringLiteral("b\tc\td"));
}

// ------------------------------------------------------------ tokens

struct TokenCase {
    const char* name;
    const char* token;
    const char* text;
    const char* from;    // the search starts where this text is; null: at the start
    QStringList blocks;  // the document afterwards
    Want want = {};      // at the new text's first character
};

const QStringList kTokenBlocks = {QStringLiteral("Ship to:"), QStringLiteral("{BuyerAddress}"),
                                  QStringLiteral("From {MyName} on {CurrentDate}"),
                                  QStringLiteral("Label: {BuyerAddress}")};

const TokenCase kTokenCases[] = {
    {"SplitAcrossRunsTakesTheFirstCharactersFormat",
     "{BuyerAddress}",
     "Jane Doe\n1 Main St",
     nullptr,
     {QStringLiteral("Ship to:"), QStringLiteral("Jane Doe"), QStringLiteral("1 Main St"),
      QStringLiteral("From {MyName} on {CurrentDate}"), QStringLiteral("Label: {BuyerAddress}")},
     {.bold = false, .italic = true, .color = "#0000ff"}},
    {"SearchFromAPositionFindsTheSecond",
     "{BuyerAddress}",
     "JANE DOE",
     "Label",
     {QStringLiteral("Ship to:"), QStringLiteral("{BuyerAddress}"),
      QStringLiteral("From {MyName} on {CurrentDate}"), QStringLiteral("Label: JANE DOE")},
     {.bold = false, .italic = false}},
    {"BoldTokenGivesBoldText",
     "{MyName}",
     "Ann Lee",
     nullptr,
     {QStringLiteral("Ship to:"), QStringLiteral("{BuyerAddress}"),
      QStringLiteral("From Ann Lee on {CurrentDate}"), QStringLiteral("Label: {BuyerAddress}")},
     {.bold = true}},
    {"LineEndingsOfEveryKindStartParagraphs",
     "{MyName}",
     "Ann\r\nB.\rLee",
     nullptr,
     {QStringLiteral("Ship to:"), QStringLiteral("{BuyerAddress}"), QStringLiteral("From Ann"),
      QStringLiteral("B."), QStringLiteral("Lee on {CurrentDate}"),
      QStringLiteral("Label: {BuyerAddress}")},
     {.bold = true}},
    {"EmptyTextRemovesTheToken",
     "{CurrentDate}",
     "",
     nullptr,
     {QStringLiteral("Ship to:"), QStringLiteral("{BuyerAddress}"),
      QStringLiteral("From {MyName} on "), QStringLiteral("Label: {BuyerAddress}")}},
    {"MissingTokenChangesNothing", "{SellerAddress}", "x", nullptr, kTokenBlocks},
    {"CaseCounts", "{buyeraddress}", "x", nullptr, kTokenBlocks},
    {"NothingBehindFrom", "{MyName}", "x", "Label", kTokenBlocks},
    {"EmptyTokenChangesNothing", "", "x", nullptr, kTokenBlocks},
};

TEST(RichTextTokens, ReplacesTheFirstOccurrenceInPlace) {
    for (const TokenCase& c : kTokenCases) {
        SCOPED_TRACE(c.name);
        QTextDocument document;
        Load(QStringLiteral("token"), document);
        const QByteArray before = SaveRtf(document);
        const int from = c.from ? document.find(QString::fromUtf8(c.from)).selectionStart() : 0;
        const QString text = QString::fromUtf8(c.text);
        const int end = ReplaceToken(document, QString::fromUtf8(c.token), text, from);
        EXPECT_EQ(Blocks(document), c.blocks);
        if (c.blocks == kTokenBlocks) {
            EXPECT_EQ(end, -1);
            EXPECT_EQ(SaveRtf(document), before);
            continue;
        }
        ASSERT_GE(end, 0);
        // The position returned is just behind the new text's last line.
        const QStringList lines = text.split(QRegularExpression(QStringLiteral("\r\n|\r|\n")));
        QTextCursor behind(&document);
        behind.setPosition(end);
        EXPECT_TRUE(behind.block().text().left(behind.positionInBlock()).endsWith(lines.last()));
        if (!text.isEmpty()) {
            ExpectFormat(document, lines.first(), c.want);
        }
    }
}

// ------------------------------------------------------------ bad input

struct BadCase {
    const char* name;
    QByteArray (*rtf)();  // not std::function: a lambda giving a QStringBuilder must not compile
    const char* message;  // part of the message; null: the text may load
};

QByteArray Junk(qsizetype size) {
    std::mt19937 random(20240611);
    QByteArray bytes("{\\rtf1 ");
    while (bytes.size() < size) {
        bytes.append(char(random()));
    }
    return bytes;
}

const BadCase kBadCases[] = {
    {"Empty", [] { return QByteArray(); }, "not an RTF document"},
    {"NotRtf", [] { return QByteArray("Dear {BuyerAddress},"); }, "not an RTF document"},
    {"MissingClosingBrace", [] { return QByteArray("{\\rtf1 {\\b text}"); }, "closing brace"},
    {"BinaryPastTheEnd", [] { return QByteArray("{\\rtf1 a\\bin999999999 xyz}"); },
     "closing brace"},
    {"CutInsideAnEscape", [] { return QByteArray("{\\rtf1 a\\'"); }, "closing brace"},
    // One past each bound; DocumentsJustInsideEachBoundLoadWhole reads those just inside.
    {"OneGroupTooDeep",
     []() -> QByteArray {
         return "{\\rtf1 " + QByteArray(kMaxGroupDepth, '{') + "x" +
                QByteArray(kMaxGroupDepth + 1, '}');
     },
     "1000 deep"},
    {"OneByteLargerThanTheBound",
     []() -> QByteArray { return "{\\rtf1 " + QByteArray(kMaxRtfBytes - 7, 'x') + "}"; },
     "larger than"},
    {"OneParagraphTooMany",
     []() -> QByteArray { return "{\\rtf1 " + QByteArray("\\par ").repeated(100000) + "x}"; },
     "more than 100000 paragraphs"},
    {"BinaryJunk", [] { return Junk(1 << 20); }, nullptr},
};

TEST(RichTextBadInput, GivesAMessageAndAnEmptyDocument) {
    for (const BadCase& c : kBadCases) {
        SCOPED_TRACE(c.name);
        QTextDocument document;
        document.setPlainText(QStringLiteral("what was there before"));
        const LoadResult result = LoadRtf(c.rtf(), document);
        if (c.message) {
            EXPECT_FALSE(result.ok);
            EXPECT_TRUE(result.message.contains(QString::fromUtf8(c.message)))
                << result.message.toStdString();
        }
        if (!result.ok) {
            EXPECT_FALSE(result.message.isEmpty());
            EXPECT_TRUE(document.isEmpty());
        }
        EXPECT_FALSE(document.toPlainText().contains(QStringLiteral("what was there before")));
    }
}

// Each document ends in a paragraph "end" that must be read.
TEST(RichTextBadInput, DocumentsJustInsideEachBoundLoadWhole) {
    const struct {
        const char* name;
        QByteArray rtf;
    } cases[] = {
        {"kMaxGroupDepth groups", "{\\rtf1 " + QByteArray(kMaxGroupDepth - 1, '{') + "end" +
                                      QByteArray(kMaxGroupDepth, '}')},
        {"100000 paragraphs", "{\\rtf1 " + QByteArray("\\par ").repeated(99999) + "end}"},
        {"kMaxRtfBytes of paragraphs",
         []() -> QByteArray {
             QByteArray rtf("{\\rtf1 ");
             const QByteArray line = QByteArray(1000, 'w') + "\\par\n";
             while (rtf.size() + line.size() + 4 <= kMaxRtfBytes) {
                 rtf += line;
             }
             return rtf + QByteArray(kMaxRtfBytes - rtf.size() - 4, 'w') + "end}";
         }()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QTextDocument document;
        const LoadResult result = LoadRtf(c.rtf, document);
        ASSERT_TRUE(result.ok) << result.message.toStdString();
        EXPECT_EQ(document.blockCount(), c.rtf.count("\\par") + 1);
        EXPECT_TRUE(document.lastBlock().text().endsWith(QStringLiteral("end")));
    }
}

TEST(RichTextBadInput, FilesThatCannotBeReadSayWhy) {
    test::TempRoot root;
    const QString oversized =
        root.Write(QStringLiteral("big.rtf"), QByteArray(kMaxRtfBytes + 1, ' '));
    const struct {
        QString path;
        const char* message;
    } cases[] = {
        {root.File(QStringLiteral("missing.rtf")), "does not exist"},
        {root.Path(), "is not a file"},
        {oversized, "larger than"},
        {root.Write(QStringLiteral("plain.rtf"), "no rtf here"), "not an RTF document"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        QTextDocument document;
        document.setPlainText(QStringLiteral("old"));
        const LoadResult result = LoadRtfFile(c.path, document);
        EXPECT_FALSE(result.ok);
        EXPECT_TRUE(result.message.contains(QString::fromUtf8(c.message)))
            << result.message.toStdString();
        EXPECT_TRUE(document.isEmpty());
    }
}

// ------------------------------------------------------------ files written

TEST(RichTextFiles, RtfAndPdfAreWrittenAndAnUnwritablePathSaysWhy) {
    test::TempRoot root;
    QTextDocument document;
    Load(QStringLiteral("picture"), document);
    QTextCursor end(&document);
    end.movePosition(QTextCursor::End);
    QTextBlockFormat page;
    page.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    end.insertBlock(page);
    end.insertText(QStringLiteral("second page"));

    QString error;
    ASSERT_TRUE(SaveRtfFile(document, root.File(QStringLiteral("out.rtf")), &error))
        << error.toStdString();
    QTextDocument again;
    ASSERT_TRUE(LoadRtfFile(root.File(QStringLiteral("out.rtf")), again).ok);
    EXPECT_EQ(Signature(again), Signature(document));

    // One page per page break, with the pictures.
    ASSERT_TRUE(WritePdf(document, root.File(QStringLiteral("out.pdf")), &error))
        << error.toStdString();
    const QByteArray pdf = test::ReadAll(root.File(QStringLiteral("out.pdf")));
    EXPECT_TRUE(pdf.startsWith("%PDF-"));
    EXPECT_EQ(pdf.count("/Type /Page\n"), 2);
    EXPECT_TRUE(pdf.contains("/Subtype /Image"));

    for (const auto& [name, write] : {std::pair{"out.rtf", &SaveRtfFile}, {"out.pdf", &WritePdf}}) {
        SCOPED_TRACE(name);
        const QString unwritable =
            root.File(QStringLiteral("no/such/folder/") + QLatin1String(name));
        error.clear();
        EXPECT_FALSE(write(document, unwritable, &error));
        EXPECT_TRUE(error.contains(QLatin1String(name))) << error.toStdString();
        EXPECT_FALSE(QFile::exists(unwritable));
    }
}

}  // namespace
}  // namespace lw::richtext
