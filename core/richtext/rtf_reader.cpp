// SPDX-License-Identifier: GPL-3.0-or-later
// The RTF reader: a file written by a word processor (or by this program) into
// a QTextDocument with its paragraphs, character formats, tables and PNG or
// JPEG pictures; what it does not understand it skips. It must never crash,
// loop without end or grow without bound on a broken file: it reads each byte
// once, nests groups no deeper than kMaxGroupDepth, and caps its tables.
#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QImageReader>
#include <QSet>
#include <QStringDecoder>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <QUrl>
#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "core/page_charset.h"
#include "core/richtext/rich_text.h"
#include "core/richtext/rtf_units.h"

namespace lw::richtext {
namespace {

// Colour and font tables longer than this are cut; no real document comes near.
constexpr int kMaxTableEntries = 4096;
// The most paragraphs and table cells a document may have.
constexpr int kMaxBlocks = 100000;
// A table is continued in a new one after this many rows, which keeps the cost
// of a row's insertion small.
constexpr int kMaxTableRows = 250;

enum class Destination { Body, FontTable, ColorTable, StyleSheet, Picture, Skip };

struct CharState {
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    bool hidden = false;
    int font = -1;  // -1: the document's default font (\deff)
    int halfPoints = 24;
    int color = 0;  // index in the colour table; 0 is "automatic"
    int background = 0;
    QTextCharFormat::VerticalAlignment vertical = QTextCharFormat::AlignNormal;

    bool operator==(const CharState&) const = default;
};

struct ParaState {
    Qt::Alignment alignment = Qt::AlignLeft;
    int leftIndent = 0;  // twips, as all below
    int rightIndent = 0;
    int firstIndent = 0;
    int spaceBefore = 0;
    int spaceAfter = 0;
    bool inTable = false;
    bool pageBefore = false;
};

struct Group {
    Destination destination = Destination::Body;
    CharState chars;
    ParaState para;
    int unicodeSkip = 1;  // \uc: fallback characters behind each \uN
};

struct Style {
    CharState chars;
    ParaState para;
};

struct Font {
    QString name;
    int codePage = 0;  // 0: the document's
};

struct Picture {
    QByteArray data;
    const char* format = nullptr;  // "PNG", "JPEG"; null: a kind not shown
    int goalWidth = 0;             // \picwgoal, \pichgoal: twips on the page
    int goalHeight = 0;
    int scaleX = 100;
    int scaleY = 100;
    int pendingNibble = -1;
};

// One control word or symbol as read.
struct Control {
    QByteArray word;  // empty for a symbol
    char symbol = 0;
    bool hasParam = false;
    int param = 0;
};

// Font character sets to code pages; a set not named reads in the document's code page.
constexpr std::pair<int, int> kCharsetCodePages[] = {
    {77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936},  {136, 950},
    {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257},
    {204, 1251}, {222, 874},  {238, 1250}, {255, 437}};

// Code pages whose converter is not called "windows-" and the number.
constexpr std::pair<int, const char*> kCodecNames[] = {
    {437, "IBM437"}, {850, "IBM850"}, {932, "Shift_JIS"},   {936, "GBK"},    {949, "windows-949"},
    {950, "Big5"},   {1361, "Johab"}, {10000, "macintosh"}, {65001, "UTF-8"}};

int CodePageOfCharset(int charset) {
    for (const auto& [set, codePage] : kCharsetCodePages) {
        if (set == charset) {
            return codePage;
        }
    }
    return 0;
}

QByteArray CodecName(int codePage) {
    for (const auto& [page, name] : kCodecNames) {
        if (page == codePage) {
            return name;
        }
    }
    return "windows-" + QByteArray::number(codePage);
}

// The control words that stand for one character.
constexpr std::pair<const char*, char16_t> kCharacterWords[] = {
    {"line", u'\u2028'},    {"tab", u'\t'},           {"emdash", u'\u2014'},
    {"endash", u'\u2013'},  {"emspace", u'\u2003'},   {"enspace", u'\u2002'},
    {"qmspace", u'\u2005'}, {"bullet", u'\u2022'},    {"lquote", u'\u2018'},
    {"rquote", u'\u2019'},  {"ldblquote", u'\u201c'}, {"rdblquote", u'\u201d'},
    {"nestcell", u'\t'},    {"nestrow", u'\u2028'}};

// The control symbols that stand for one character.
constexpr std::pair<char, char16_t> kSymbols[] = {
    {'\\', u'\\'},    {'{', u'{'},      {'}', u'}'},  {'~', u'\u00a0'},
    {'-', u'\u00ad'}, {'_', u'\u2011'}, {'\t', u'\t'}};

// Character and paragraph properties set by a word and its number.
constexpr std::pair<const char*, bool CharState::*> kCharSwitches[] = {
    {"b", &CharState::bold},
    {"i", &CharState::italic},
    {"strike", &CharState::strike},
    {"striked", &CharState::strike},
    {"v", &CharState::hidden}};
constexpr std::pair<const char*, int CharState::*> kCharNumbers[] = {
    {"f", &CharState::font},
    {"cf", &CharState::color},
    {"highlight", &CharState::background},
    {"cb", &CharState::background},
    {"chcbpat", &CharState::background}};
constexpr std::pair<const char*, int ParaState::*> kParaNumbers[] = {
    {"li", &ParaState::leftIndent},
    {"ri", &ParaState::rightIndent},
    {"fi", &ParaState::firstIndent},
    {"sb", &ParaState::spaceBefore},
    {"sa", &ParaState::spaceAfter}};
constexpr std::pair<const char*, Qt::AlignmentFlag> kAlignments[] = {{"ql", Qt::AlignLeft},
                                                                     {"qc", Qt::AlignHCenter},
                                                                     {"qr", Qt::AlignRight},
                                                                     {"qj", Qt::AlignJustify}};
constexpr std::pair<const char*, QTextCharFormat::VerticalAlignment> kVerticals[] = {
    {"super", QTextCharFormat::AlignSuperScript},
    {"sub", QTextCharFormat::AlignSubScript},
    {"nosupersub", QTextCharFormat::AlignNormal}};

// The value a table gives word, if it names it.
template <typename Value, size_t N>
const Value* Find(const std::pair<const char*, Value> (&table)[N], const QByteArray& word) {
    for (const auto& [name, value] : table) {
        if (word == name) {
            return &value;
        }
    }
    return nullptr;
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
int HexValue(char c) {
    if (IsDigit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

class Reader {
public:
    Reader(const QByteArray& rtf, QTextDocument& document)
        : m_rtf(rtf), m_document(document), m_cursor(&document) {}

    LoadResult Run();

private:
    Group& Top() { return m_groups.back(); }
    Control ReadControl();
    void OnControl(const Control& control);
    void OnBodyWord(const QByteArray& word, bool hasParam, int param);
    bool ApplyFormatWord(Group& group, const QByteArray& word, bool hasParam, int param);
    void OnStyleSheet(const Control& control);
    bool StartDestination(const QByteArray& word);
    void OnByte(char byte);
    bool OnUnicodeWord(const QByteArray& word, int param);
    void OnFontTable(const Control& control);
    void CommitFont();
    void OnColorTable(const Control& control);
    void OnPicture(const Control& control);
    void SkipBinary(int count);
    void EndGroup();

    void AppendText(const QString& text);
    void AppendChar(char16_t c) { AppendText(QString(QChar(c))); }
    void FlushBytes();
    void FlushText();
    QString Decode(const QByteArray& bytes);
    int CurrentCodePage() const;
    QTextCharFormat CharFormat(const CharState& state) const;
    QTextBlockFormat BlockFormat(const ParaState& state) const;

    void EnsureTarget();
    void StartTable();
    void CloseTable();
    void EndParagraph(bool pageBreakAfter);
    void FinishBlock(const QTextBlockFormat& format);
    void CountBlocks();
    void EndCell();
    void EndRow();
    void InsertPicture();
    void DropTrailingParagraph();

    const QByteArray& m_rtf;
    qsizetype m_pos = 0;
    QString m_error;  // what stopped the reading
    QTextDocument& m_document;
    QTextCursor m_cursor;
    std::vector<Group> m_groups;
    bool m_starred = false;  // \* seen: an unknown destination behind it is skipped
    int m_pendingSkip = 0;   // fallback characters still to drop behind \uN

    int m_codePage = 1252;
    int m_defaultFont = 0;
    std::map<int, Font> m_fonts;
    int m_fontIndex = 0;  // font being defined in the font table
    QString m_fontName;   // its name so far
    std::vector<QColor> m_colors;
    QColor m_color;  // colour being defined in the colour table
    bool m_colorSet = false;
    std::map<int, QStringDecoder> m_decoders;
    std::map<int, Style> m_styles;
    int m_styleIndex = 0;           // style being defined in the style sheet
    bool m_styleFormatted = false;  // its entry has set a format
    size_t m_styleSheetDepth = 0;   // the groups open around the style sheet's own

    QByteArray m_bytes;  // text bytes not yet decoded
    QString m_text;      // text not yet in the document
    CharState m_textChars;

    Picture m_picture;
    int m_pictures = 0;

    std::vector<int> m_cellEdges;  // \cellx of the row being defined
    bool m_rowBorders = false;
    QTextTable* m_table = nullptr;
    int m_row = 0;
    int m_column = 0;
    bool m_rowDone = false;
    bool m_overflowTab = false;  // text of a cell beyond the last column goes behind a tab

    bool m_pageBreakPending = false;
    bool m_fresh = false;  // the cursor's block was made by \par and holds nothing yet
};

LoadResult Reader::Run() {
    m_groups.reserve(64);
    const qsizetype size = m_rtf.size();
    bool closed = false;
    while (m_pos < size && !closed && m_error.isEmpty()) {
        const char c = m_rtf.at(m_pos++);
        switch (c) {
            case '{':
                FlushBytes();
                m_pendingSkip = 0;
                if (int(m_groups.size()) >= kMaxGroupDepth) {
                    return {false, QStringLiteral("The RTF document nests its groups more than "
                                                  "%1 deep.")
                                       .arg(kMaxGroupDepth)};
                }
                if (!m_groups.empty() && Top().destination == Destination::StyleSheet &&
                    m_groups.size() == m_styleSheetDepth) {
                    // A style sheet entry starts from nothing, style 0 unless it says.
                    Group entry;
                    entry.destination = Destination::StyleSheet;
                    m_groups.push_back(entry);
                    m_styleIndex = 0;
                    m_styleFormatted = false;
                } else {
                    m_groups.push_back(m_groups.empty() ? Group() : Top());
                }
                m_starred = false;
                break;
            case '}':
                FlushBytes();
                m_pendingSkip = 0;
                if (m_groups.empty()) {
                    closed = true;
                    break;
                }
                EndGroup();
                closed = m_groups.empty();
                break;
            case '\\':
                OnControl(ReadControl());
                break;
            case '\r':
            case '\n':
                break;
            default:
                if (m_groups.empty()) {
                    // Only white space and the odd NUL stand outside the document's group.
                    break;
                }
                OnByte(c);
        }
    }
    if (!m_error.isEmpty()) {
        return {false, m_error};
    }
    if (!closed) {
        return {false, QStringLiteral("The RTF document ends before all its groups are closed "
                                      "(a closing brace is missing).")};
    }
    DropTrailingParagraph();
    return {true, QString()};
}

Control Reader::ReadControl() {
    Control control;
    const qsizetype size = m_rtf.size();
    if (m_pos >= size) {
        return control;
    }
    if (!IsLetter(m_rtf.at(m_pos))) {
        control.symbol = m_rtf.at(m_pos++);
        return control;
    }
    // Word processors use no word longer than 32 letters; a longer run is
    // read to its end all the same.
    const qsizetype start = m_pos;
    while (m_pos < size && IsLetter(m_rtf.at(m_pos))) {
        ++m_pos;
    }
    control.word = m_rtf.mid(start, std::min<qsizetype>(m_pos - start, 32));
    bool negative = false;
    if (m_pos < size && m_rtf.at(m_pos) == '-' && m_pos + 1 < size &&
        IsDigit(m_rtf.at(m_pos + 1))) {
        negative = true;
        ++m_pos;
    }
    qint64 value = 0;
    while (m_pos < size && IsDigit(m_rtf.at(m_pos))) {
        control.hasParam = true;
        value = std::min<qint64>(value * 10 + (m_rtf.at(m_pos) - '0'), 0x7fffffff);
        ++m_pos;
    }
    control.param = int(negative ? -value : value);
    if (m_pos < size && m_rtf.at(m_pos) == ' ') {
        ++m_pos;
    }
    return control;
}

void Reader::OnControl(const Control& control) {
    if (control.word.isEmpty() && control.symbol == '\'') {
        // A byte by its hex value: text in the code page, counted as one
        // character of a \uN fallback.
        const qsizetype size = m_rtf.size();
        int value = 0;
        for (int i = 0; i < 2 && m_pos < size && HexValue(m_rtf.at(m_pos)) >= 0; ++i) {
            value = value * 16 + HexValue(m_rtf.at(m_pos++));
        }
        if (!m_groups.empty()) {
            OnByte(char(value));
        }
        return;
    }
    if (control.word == "bin") {
        SkipBinary(control.param);
        return;
    }
    FlushBytes();
    if (m_groups.empty()) {
        return;
    }
    if (m_pendingSkip > 0) {
        --m_pendingSkip;
        return;
    }
    if (control.word.isEmpty()) {
        const Destination destination = Top().destination;
        if (control.symbol == '*') {
            m_starred = true;
        } else if ((control.symbol == '\r' || control.symbol == '\n') &&
                   destination == Destination::Body) {
            EndParagraph(false);  // a backslash at the line's end is \par
        } else if (destination == Destination::Body || destination == Destination::FontTable) {
            for (const auto& [symbol, c] : kSymbols) {
                if (symbol == control.symbol) {
                    AppendChar(c);
                }
            }
        }
        return;
    }
    const bool starred = std::exchange(m_starred, false);
    if (StartDestination(control.word)) {
        return;
    }
    if (starred) {
        // An optional destination this reader does not know.
        Top().destination = Destination::Skip;
        return;
    }
    switch (Top().destination) {
        case Destination::Body:
            OnBodyWord(control.word, control.hasParam, control.param);
            break;
        case Destination::FontTable:
            OnFontTable(control);
            break;
        case Destination::ColorTable:
            OnColorTable(control);
            break;
        case Destination::StyleSheet:
            OnStyleSheet(control);
            break;
        case Destination::Picture:
            OnPicture(control);
            break;
        case Destination::Skip:
            break;
    }
}

// Destinations are named by the first word of their group. Returns whether
// word was one.
bool Reader::StartDestination(const QByteArray& word) {
    // Destinations whose text is not the document's.
    static const QSet<QByteArray> skipped = [] {
        const QByteArray names =
            "info listtable listoverridetable revtbl rsidtbl header headerl headerr headerf footer "
            "footerl footerr footerf footnote annotation fldinst nonshppict nonesttables objdata "
            "objclass xe tc pn filetbl template ftnsep ftnsepc ftncn aftnsep aftnsepc aftncn do "
            "generator themedata colorschememapping latentstyles datastore pgdsctbl shpinst txe "
            "rxe private comment author operator title subject keywords doccomm company userprops "
            "xmlnstbl mmathPr";
        const QList<QByteArray> list = names.split(' ');
        return QSet<QByteArray>(list.begin(), list.end());
    }();
    Group& group = Top();
    if (group.destination == Destination::Skip) {
        return true;
    }
    if (word == "fonttbl") {
        group.destination = Destination::FontTable;
        m_fontName.clear();
        return true;
    }
    if (word == "stylesheet") {
        group.destination = Destination::StyleSheet;
        m_styleSheetDepth = m_groups.size();
        return true;
    }
    if (word == "colortbl") {
        group.destination = Destination::ColorTable;
        m_color = QColor();
        m_colorSet = false;
        return true;
    }
    if (word == "pict" && group.destination == Destination::Body) {
        FlushText();
        group.destination = Destination::Picture;
        m_picture = Picture();
        return true;
    }
    if (word == "shppict") {
        return true;  // a picture for readers that know shapes: the one to show
    }
    if (skipped.contains(word)) {
        group.destination = Destination::Skip;
        return true;
    }
    return false;
}

void Reader::OnBodyWord(const QByteArray& word, bool hasParam, int param) {
    Group& group = Top();
    if (ApplyFormatWord(group, word, hasParam, param)) {
        return;
    }
    if (const char16_t* c = Find(kCharacterWords, word)) {
        AppendChar(*c);
    } else if (OnUnicodeWord(word, param)) {
        return;
    } else if (word == "par" || word == "sect") {
        EndParagraph(false);
    } else if (word == "page") {
        EndParagraph(true);
    } else if (word == "s") {
        const auto style = m_styles.find(param);
        if (style != m_styles.end()) {
            const bool inTable = group.para.inTable;
            group.chars = style->second.chars;
            group.para = style->second.para;
            group.para.inTable = inTable;
        }
    } else if (word == "trowd") {
        m_cellEdges.clear();
        m_rowBorders = false;
    } else if (word == "cellx") {
        if (int(m_cellEdges.size()) < kMaxTableColumns) {
            m_cellEdges.push_back(param);
        }
    } else if (word.startsWith("clbrdr")) {
        m_rowBorders = true;
    } else if (word == "cell") {
        EndCell();
    } else if (word == "row") {
        EndRow();
    } else if (word == "ansicpg") {
        m_codePage = param > 0 ? param : 1252;
    } else if (word == "ansi") {
        m_codePage = 1252;
    } else if (word == "mac") {
        m_codePage = 10000;
    } else if (word == "pc") {
        m_codePage = 437;
    } else if (word == "pca") {
        m_codePage = 850;
    } else if (word == "deff") {
        m_defaultFont = param;
    }
}

// \uN, a character by its number followed by \uc fallback characters to drop,
// and \uc. Returns whether word was one of them.
bool Reader::OnUnicodeWord(const QByteArray& word, int param) {
    if (word == "u") {
        AppendChar(char16_t(param < 0 ? param + 65536 : param));
        m_pendingSkip = Top().unicodeSkip;
    } else if (word == "uc") {
        Top().unicodeSkip = std::clamp(param, 0, 16);
    } else {
        return false;
    }
    return true;
}

// The words that format characters and paragraphs, in the text as in the
// style sheet. Returns whether word was one of them.
bool Reader::ApplyFormatWord(Group& group, const QByteArray& word, bool hasParam, int param) {
    const bool on = !hasParam || param != 0;
    if (const auto member = Find(kCharSwitches, word)) {
        group.chars.*(*member) = on;
    } else if (const auto member = Find(kCharNumbers, word)) {
        group.chars.*(*member) = param;
    } else if (const auto member = Find(kParaNumbers, word)) {
        group.para.*(*member) = param;
    } else if (const auto alignment = Find(kAlignments, word)) {
        group.para.alignment = *alignment;
    } else if (const auto vertical = Find(kVerticals, word)) {
        group.chars.vertical = *vertical;
    } else if (word == "plain") {
        group.chars = CharState();
    } else if (word == "pard") {
        group.para = ParaState();
    } else if (word == "fs") {
        group.chars.halfPoints = hasParam ? std::clamp(param, 2, 3276) : 24;
    } else if (word == "ulnone") {
        group.chars.underline = false;
    } else if (word.startsWith("ul") && word != "ulc") {
        group.chars.underline = on;  // \ul and its dotted, double, wavy ... kinds
    } else if (word == "pagebb") {
        group.para.pageBefore = on;
    } else if (word == "intbl") {
        group.para.inTable = on;
    } else {
        return false;
    }
    return true;
}

// A style sheet entry: its number, the style it is based on, and its formats.
void Reader::OnStyleSheet(const Control& control) {
    const QByteArray& word = control.word;
    if (word == "s" || word == "cs" || word == "ds" || word == "ts") {
        m_styleIndex = control.param;
    } else if (word == "sbasedon") {
        // Some writers name the base before the entry's formats, which then
        // add to it; others name it behind formats that are complete.
        const auto base = m_styles.find(control.param);
        if (base != m_styles.end() && !m_styleFormatted) {
            Top().chars = base->second.chars;
            Top().para = base->second.para;
        }
    } else if (ApplyFormatWord(Top(), word, control.hasParam, control.param)) {
        m_styleFormatted = true;
    }
}

void Reader::OnByte(char byte) {
    if (m_pendingSkip > 0) {
        --m_pendingSkip;
        return;
    }
    switch (Top().destination) {
        case Destination::Body:
            if (byte == '\t') {
                FlushBytes();
                AppendChar(u'\t');
            } else if (uchar(byte) >= 0x20) {
                m_bytes.append(byte);
            }
            break;
        case Destination::FontTable:
            if (byte == ';') {
                FlushBytes();
                CommitFont();
            } else if (uchar(byte) >= 0x20) {
                m_bytes.append(byte);
            }
            break;
        case Destination::StyleSheet:
            if (byte == ';' &&
                (int(m_styles.size()) < kMaxTableEntries || m_styles.count(m_styleIndex))) {
                m_styles[m_styleIndex] = Style{Top().chars, Top().para};
            }
            break;
        case Destination::ColorTable:
            if (byte == ';') {
                if (int(m_colors.size()) < kMaxTableEntries) {
                    m_colors.push_back(m_colorSet ? m_color : QColor());
                }
                m_color = QColor(0, 0, 0);
                m_colorSet = false;
            }
            break;
        case Destination::Picture: {
            const int nibble = HexValue(byte);
            if (nibble < 0) {
                break;
            }
            if (m_picture.pendingNibble < 0) {
                m_picture.pendingNibble = nibble;
            } else {
                m_picture.data.append(char(m_picture.pendingNibble * 16 + nibble));
                m_picture.pendingNibble = -1;
            }
            break;
        }
        case Destination::Skip:
            break;
    }
}

void Reader::CommitFont() {
    if (int(m_fonts.size()) < kMaxTableEntries || m_fonts.count(m_fontIndex)) {
        m_fonts[m_fontIndex].name = m_fontName.trimmed();
    }
    m_fontName.clear();
}

void Reader::OnFontTable(const Control& control) {
    if (OnUnicodeWord(control.word, control.param)) {
        return;
    }
    if (const char16_t* c = Find(kCharacterWords, control.word)) {
        AppendChar(*c);
    } else if (control.word == "f") {
        m_fontIndex = control.param;
        m_fontName.clear();
    } else if (control.word == "fcharset" || control.word == "cpg") {
        const int codePage =
            control.word == "cpg" ? control.param : CodePageOfCharset(control.param);
        if (codePage != 0 &&
            (int(m_fonts.size()) < kMaxTableEntries || m_fonts.count(m_fontIndex))) {
            m_fonts[m_fontIndex].codePage = codePage;
        }
    }
}

void Reader::OnColorTable(const Control& control) {
    if (!m_colorSet) {
        m_color = QColor(0, 0, 0);
    }
    const int value = std::clamp(control.param, 0, 255);
    if (control.word == "red") {
        m_color.setRed(value);
    } else if (control.word == "green") {
        m_color.setGreen(value);
    } else if (control.word == "blue") {
        m_color.setBlue(value);
    } else {
        return;
    }
    m_colorSet = true;
}

void Reader::OnPicture(const Control& control) {
    const QByteArray& word = control.word;
    if (word == "pngblip") {
        m_picture.format = "PNG";
    } else if (word == "jpegblip") {
        m_picture.format = "JPEG";
    } else if (word == "picwgoal") {
        m_picture.goalWidth = control.param;
    } else if (word == "pichgoal") {
        m_picture.goalHeight = control.param;
    } else if (word == "picscalex") {
        m_picture.scaleX = std::clamp(control.param, 1, 1000);
    } else if (word == "picscaley") {
        m_picture.scaleY = std::clamp(control.param, 1, 1000);
    }
}

void Reader::SkipBinary(int count) {
    const qsizetype length = std::clamp<qsizetype>(count, 0, m_rtf.size() - m_pos);
    if (!m_groups.empty() && Top().destination == Destination::Picture) {
        m_picture.data.append(m_rtf.constData() + m_pos, length);
    }
    m_pos += length;
}

void Reader::EndGroup() {
    FlushBytes();
    if (m_groups.size() == 1) {
        // The document's own group: its last text goes in; were the group
        // itself a picture, that is dropped.
        FlushText();
        m_groups.pop_back();
        return;
    }
    const Group closing = m_groups.back();
    m_groups.pop_back();
    const Destination outer = Top().destination;
    if (closing.destination == Destination::FontTable && outer != Destination::FontTable &&
        !m_fontName.isEmpty()) {
        CommitFont();  // a last font without its closing semicolon
    }
    if (closing.destination == Destination::Picture && outer != Destination::Picture) {
        InsertPicture();
    }
    if (closing.destination == Destination::ColorTable && outer != Destination::ColorTable &&
        m_colorSet) {
        m_colors.push_back(m_color);
        m_colorSet = false;
    }
}

// The code page of the text being read: its font's, else the document's; in
// the font table, the code page of the font being named.
int Reader::CurrentCodePage() const {
    if (m_groups.empty()) {
        return m_codePage;
    }
    const Group& group = m_groups.back();
    const int font = group.destination == Destination::FontTable ? m_fontIndex
                     : group.chars.font < 0                      ? m_defaultFont
                                                                 : group.chars.font;
    const auto it = m_fonts.find(font);
    return it != m_fonts.end() && it->second.codePage != 0 ? it->second.codePage : m_codePage;
}

QString Reader::Decode(const QByteArray& bytes) {
    const int codePage = CurrentCodePage();
    if (codePage != 1252) {
        auto it = m_decoders.find(codePage);
        if (it == m_decoders.end()) {
            it = m_decoders
                     .emplace(codePage, QStringDecoder(CodecName(codePage).constData(),
                                                       QStringDecoder::Flag::Stateless))
                     .first;
        }
        if (it->second.isValid()) {
            return it->second.decode(bytes);
        }
    }
    return core::FromWindows1252(bytes);
}

void Reader::FlushBytes() {
    if (m_bytes.isEmpty()) {
        return;
    }
    const QByteArray bytes = std::exchange(m_bytes, QByteArray());
    AppendText(Decode(bytes));
}

void Reader::AppendText(const QString& text) {
    if (!m_groups.empty() && Top().destination == Destination::FontTable) {
        m_fontName += text;
        return;
    }
    if (m_groups.empty() || Top().destination != Destination::Body || Top().chars.hidden) {
        return;
    }
    if (!m_text.isEmpty() && !(m_textChars == Top().chars)) {
        FlushText();
    }
    if (m_text.isEmpty()) {
        m_textChars = Top().chars;
    }
    for (const QChar c : text) {
        if (!IsDocumentMark(c.unicode())) {
            m_text += c;
        }
    }
}

void Reader::FlushText() {
    FlushBytes();
    if (m_text.isEmpty()) {
        return;
    }
    EnsureTarget();
    m_cursor.insertText(std::exchange(m_text, QString()), CharFormat(m_textChars));
    m_fresh = false;
}

QTextCharFormat Reader::CharFormat(const CharState& state) const {
    QTextCharFormat format;
    format.setFontWeight(state.bold ? QFont::Bold : QFont::Normal);
    format.setFontItalic(state.italic);
    format.setFontUnderline(state.underline);
    format.setFontStrikeOut(state.strike);
    format.setFontPointSize(state.halfPoints / 2.0);
    const auto font = m_fonts.find(state.font < 0 ? m_defaultFont : state.font);
    if (font != m_fonts.end() && !font->second.name.isEmpty()) {
        format.setFontFamilies(QStringList{font->second.name});
    }
    const auto colorAt = [this](int index) {
        return index > 0 && index < int(m_colors.size()) ? m_colors[index] : QColor();
    };
    if (const QColor color = colorAt(state.color); color.isValid()) {
        format.setForeground(color);
    }
    if (const QColor color = colorAt(state.background); color.isValid()) {
        format.setBackground(color);
    }
    if (state.vertical != QTextCharFormat::AlignNormal) {
        format.setVerticalAlignment(state.vertical);
    }
    return format;
}

QTextBlockFormat Reader::BlockFormat(const ParaState& state) const {
    QTextBlockFormat format;
    format.setAlignment(state.alignment);
    format.setLeftMargin(TwipsToPixels(state.leftIndent));
    format.setRightMargin(TwipsToPixels(state.rightIndent));
    format.setTextIndent(TwipsToPixels(state.firstIndent));
    format.setTopMargin(TwipsToPixels(state.spaceBefore));
    format.setBottomMargin(TwipsToPixels(state.spaceAfter));
    if (state.pageBefore) {
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    }
    return format;
}

// Brings the cursor to where the next text goes: into the table when the
// paragraph is one of a table's, out of it when it is not.
void Reader::EnsureTarget() {
    const bool inTable = !m_groups.empty() && Top().para.inTable;
    if (!inTable) {
        if (m_table) {
            CloseTable();
        }
        return;
    }
    if (m_table && m_rowDone && m_table->rows() >= kMaxTableRows) {
        CloseTable();
    }
    if (!m_table) {
        StartTable();
    } else if (m_rowDone) {
        m_table->appendRows(1);
        ++m_row;
        m_column = 0;
        m_rowDone = false;
        const int wanted = std::max<int>(1, m_cellEdges.size());
        if (m_table->columns() < wanted) {
            m_table->appendColumns(wanted - m_table->columns());
        }
        m_cursor = m_table->cellAt(m_row, 0).firstCursorPosition();
        m_fresh = false;
    }
    if (m_column >= m_table->columns()) {
        m_table->appendColumns(m_column + 1 - m_table->columns());
        m_cursor = m_table->cellAt(m_row, m_column).firstCursorPosition();
        m_fresh = false;
    }
    if (std::exchange(m_overflowTab, false)) {
        m_cursor.insertText(QStringLiteral("\t"));
    }
    CountBlocks();
}

void Reader::StartTable() {
    const int columns = std::max<int>(1, m_cellEdges.size());
    QTextTableFormat format;
    format.setBorder(m_rowBorders ? 1 : 0);
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setCellPadding(2);
    if (int(m_cellEdges.size()) == columns) {
        QList<QTextLength> widths;
        int left = 0;
        for (const int edge : m_cellEdges) {
            widths.append(
                QTextLength(QTextLength::FixedLength, TwipsToPixels(std::max(edge - left, 0))));
            left = edge;
        }
        format.setColumnWidthConstraints(widths);
    }
    // A paragraph mark made just before the table is the one the table stands
    // on; leaving it would put an empty paragraph above every read table.
    const QTextBlock before = m_cursor.block();
    const bool dropBefore =
        m_fresh && before.length() == 1 && before.previous().isValid() &&
        QTextCursor(before.previous()).currentFrame() == m_cursor.currentFrame();
    const int at = m_cursor.position();
    m_table = m_cursor.insertTable(1, columns, format);
    if (dropBefore) {
        QTextCursor drop(&m_document);
        drop.setPosition(at);
        drop.deletePreviousChar();
    }
    m_row = 0;
    m_column = 0;
    m_rowDone = false;
    m_fresh = false;
}

void Reader::CloseTable() {
    m_overflowTab = false;
    m_cursor = m_table->lastCursorPosition();
    m_cursor.movePosition(QTextCursor::NextBlock);
    m_table = nullptr;
    m_fresh = false;
}

void Reader::EndParagraph(bool pageBreakAfter) {
    FlushText();
    EnsureTarget();
    QTextBlockFormat format = BlockFormat(Top().para);
    if (m_pageBreakPending) {
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        m_pageBreakPending = false;
    }
    FinishBlock(format);
    m_cursor.insertBlock();
    CountBlocks();
    m_pageBreakPending = pageBreakAfter;
    m_fresh = true;
}

// Gives the cursor's block its paragraph format, and an empty one the
// height of its mark's font.
void Reader::FinishBlock(const QTextBlockFormat& format) {
    // A new block has its predecessor's formats: most need no change.
    if (m_cursor.blockFormat() != format) {
        m_cursor.setBlockFormat(format);
    }
    if (m_cursor.block().length() == 1) {
        const QTextCharFormat mark = CharFormat(Top().chars);
        if (m_cursor.blockCharFormat() != mark) {
            m_cursor.setBlockCharFormat(mark);
        }
    }
}

// Each paragraph and table cell costs a document some time to make; a
// document with very many is refused rather than read for minutes.
void Reader::CountBlocks() {
    if (m_document.blockCount() > kMaxBlocks) {
        m_error = QStringLiteral("The RTF document has more than %1 paragraphs and table cells.")
                      .arg(kMaxBlocks);
    }
}

void Reader::EndCell() {
    // A cell mark outside a table paragraph still belongs to a table.
    Top().para.inTable = true;
    FlushText();
    if (m_overflowTab) {
        return;  // an empty cell beyond the last column
    }
    EnsureTarget();
    FinishBlock(BlockFormat(Top().para));
    if (m_column == kMaxTableColumns - 1) {
        // The text of cells beyond the last column goes into it, behind a tab.
        m_overflowTab = true;
        return;
    }
    ++m_column;
    if (m_column < m_table->columns()) {
        m_cursor = m_table->cellAt(m_row, m_column).firstCursorPosition();
    }
    m_fresh = false;
}

void Reader::EndRow() {
    FlushText();
    if (m_table) {
        m_rowDone = true;
    }
    m_overflowTab = false;
}

void Reader::InsertPicture() {
    Picture picture = std::exchange(m_picture, Picture());
    if (!picture.format || picture.data.isEmpty() || Top().destination != Destination::Body ||
        Top().chars.hidden) {
        return;  // a metafile or bitmap kind: the text around it stays
    }
    QBuffer buffer(&picture.data);
    QImageReader reader(&buffer, picture.format);
    const QImage image = reader.read();
    if (image.isNull()) {
        return;
    }
    const QString name = QStringLiteral("rtf-picture:%1").arg(++m_pictures);
    m_document.addResource(QTextDocument::ImageResource, QUrl(name), image);
    QTextImageFormat format;
    format.setName(name);
    const double width = picture.goalWidth > 0 ? TwipsToPixels(picture.goalWidth) : image.width();
    const double height =
        picture.goalHeight > 0 ? TwipsToPixels(picture.goalHeight) : image.height();
    format.setWidth(width * picture.scaleX / 100.0);
    format.setHeight(height * picture.scaleY / 100.0);
    EnsureTarget();
    m_cursor.insertImage(format);
    m_fresh = false;
}

// A document's last \par ends its last paragraph rather than starting an empty one.
void Reader::DropTrailingParagraph() {
    FlushText();
    if (!m_fresh) {
        return;
    }
    const QTextBlock last = m_cursor.block();
    if (last.length() == 1 && last.previous().isValid() &&
        QTextCursor(last.previous()).currentFrame() == m_cursor.currentFrame()) {
        m_cursor.deletePreviousChar();
    }
}

}  // namespace

LoadResult LoadRtf(const QByteArray& rtf, QTextDocument& document) {
    document.clear();
    if (rtf.size() > kMaxRtfBytes) {
        return {false, QStringLiteral("The RTF document is larger than %1 MB and is not read.")
                           .arg(kMaxRtfBytes / (1024 * 1024))};
    }
    qsizetype start = 0;
    while (start < rtf.size() && QChar::isSpace(uchar(rtf.at(start)))) {
        ++start;
    }
    if (!QByteArrayView(rtf).sliced(start).startsWith("{\\rtf")) {
        return {false, QStringLiteral("This is not an RTF document: it does not begin with "
                                      "\"{\\rtf\".")};
    }
    const bool undo = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    QTextCursor edit(&document);
    edit.beginEditBlock();  // one change for the document's views, not one per paragraph
    Reader reader(rtf, document);
    const LoadResult result = reader.Run();
    edit.endEditBlock();
    if (!result.ok) {
        document.clear();
    }
    document.setUndoRedoEnabled(undo);
    return result;
}

}  // namespace lw::richtext
