// SPDX-License-Identifier: GPL-3.0-or-later
// The RTF writer: a QTextDocument as RTF that a word processor opens, with
// its fonts, colours, paragraph alignment and indents, character runs, tables
// and pictures (as PNG). It writes 7-bit text only (other characters as \'hh
// of Windows-1252 or as \uN) and must never write what the reader of this
// library would read back differently.
#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <QUrl>
#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "core/page_charset.h"
#include "core/richtext/rich_text.h"
#include "core/richtext/rtf_units.h"

namespace lw::richtext {
namespace {

QString FamilyOf(const QTextCharFormat& format) {
    const QStringList families = format.property(QTextFormat::FontFamilies).toStringList();
    return families.isEmpty() ? QString() : families.first();
}

QColor ColorOf(const QBrush& brush) {
    return brush.style() == Qt::NoBrush ? QColor() : brush.color();
}

// The image a picture of the document shows: its resource, else the file it names.
QImage ImageOf(const QTextDocument& document, const QTextImageFormat& format) {
    const QVariant resource = document.resource(QTextDocument::ImageResource, QUrl(format.name()));
    if (resource.canConvert<QImage>()) {
        const QImage image = resource.value<QImage>();
        if (!image.isNull()) {
            return image;
        }
    }
    if (resource.typeId() == QMetaType::QByteArray) {
        return QImage::fromData(resource.toByteArray());
    }
    const QUrl url(format.name());
    return QImage(url.isLocalFile() ? url.toLocalFile() : format.name());
}

class Writer {
public:
    explicit Writer(const QTextDocument& document) : m_document(document) {}
    QByteArray Run();

private:
    void Collect();
    int FontIndex(const QTextCharFormat& format) const;
    int ColorIndex(const QColor& color) const;

    void Word(const char* word) {
        m_out += '\\';
        m_out += word;
        m_delimit = true;
    }
    void Word(const char* word, int param) {
        Word(word);
        m_out += QByteArray::number(param);
    }
    void Words(const QByteArray& words) {
        m_out += words;
        m_delimit = m_delimit || !words.isEmpty();
    }
    void Raw(QByteArrayView text) {
        m_out.append(text);
        m_delimit = false;
    }
    void Text(const QString& text);

    void WriteFrame(const QTextFrame* frame, bool inTable);
    void WriteTable(const QTextTable* table);
    void WriteBlock(const QTextBlock& block, bool inTable, const char* end);
    QByteArray CharWords(const QTextCharFormat& format) const;
    void WritePicture(const QTextImageFormat& format);

    const QTextDocument& m_document;
    QByteArray m_out;
    bool m_delimit = false;  // the last thing written was a control word
    QStringList m_fonts;
    std::vector<QColor> m_colors;
    bool m_pageBreakPending = false;
};

QByteArray Writer::Run() {
    QString defaultFamily = m_document.defaultFont().family();
    if (defaultFamily.isEmpty()) {
        defaultFamily = QStringLiteral("Times New Roman");
    }
    m_fonts.append(defaultFamily);
    Collect();

    Raw("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n{\\fonttbl");
    for (int i = 0; i < m_fonts.size(); ++i) {
        Raw("{");
        Word("f", i);
        Raw("\\fnil\\fcharset0 ");
        Text(m_fonts[i]);
        Raw(";}");
    }
    Raw("}\n{\\colortbl;");
    for (const QColor& color : m_colors) {
        Word("red", color.red());
        Word("green", color.green());
        Word("blue", color.blue());
        Raw(";");
    }
    // The word processor shows the page with the margins it is printed with.
    Raw("}\n\\margl1440\\margr1440\\margt1440\\margb1440\n");
    WriteFrame(m_document.rootFrame(), false);
    Raw("}\n");
    return m_out;
}

// The font and colour tables: every family and colour the document's text uses.
void Writer::Collect() {
    const auto note = [this](const QTextCharFormat& format) {
        const QString family = FamilyOf(format);
        if (!family.isEmpty() && !m_fonts.contains(family)) {
            m_fonts.append(family);
        }
        for (const QColor& color : {ColorOf(format.foreground()), ColorOf(format.background())}) {
            if (color.isValid() && ColorIndex(color) == 0) {
                m_colors.push_back(color);
            }
        }
    };
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        if (block.length() == 1) {
            note(block.charFormat());  // written as the mark of an empty paragraph
        }
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            note(it.fragment().charFormat());
        }
    }
}

int Writer::FontIndex(const QTextCharFormat& format) const {
    const qsizetype index = m_fonts.indexOf(FamilyOf(format));
    return index < 0 ? 0 : int(index);
}

int Writer::ColorIndex(const QColor& color) const {
    if (!color.isValid()) {
        return 0;  // "automatic"
    }
    for (size_t i = 0; i < m_colors.size(); ++i) {
        if (m_colors[i].rgb() == color.rgb()) {
            return int(i) + 1;
        }
    }
    return 0;
}

void Writer::Text(const QString& text) {
    // Characters RTF writes by a symbol or a word; the space ends the word.
    static constexpr std::pair<char16_t, const char*> escapes[] = {
        {u'\\', "\\\\"},        {u'{', "\\{"},      {u'}', "\\}"},      {u'\t', "\\tab "},
        {u'\u2028', "\\line "}, {u'\u00a0', "\\~"}, {u'\u00ad', "\\-"}, {u'\u2011', "\\_"}};
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        const auto escape = std::find_if(std::begin(escapes), std::end(escapes),
                                         [u](const auto& e) { return e.first == u; });
        if (escape != std::end(escapes)) {
            Raw(escape->second);
        } else if (u >= 0x20 && u < 0x7f) {
            if (std::exchange(m_delimit, false)) {
                m_out += ' ';
            }
            m_out += char(u);
        } else if (IsDocumentMark(u)) {
            continue;
        } else if (const auto byte = core::ToWindows1252(QString(c)); byte && u >= 0xa0) {
            Raw(QByteArray("\\'" + byte->toHex()));
        } else {
            Raw(QByteArray("\\u" + QByteArray::number(qint16(u)) + " ?"));
        }
    }
}

void Writer::WriteFrame(const QTextFrame* frame, bool inTable) {
    for (auto it = frame->begin(); !it.atEnd(); ++it) {
        if (const QTextFrame* child = it.currentFrame()) {
            const auto* table = qobject_cast<const QTextTable*>(child);
            if (table && !inTable) {
                WriteTable(table);
            } else {
                WriteFrame(child, inTable);
            }
            continue;
        }
        const QTextBlock block = it.currentBlock();
        auto next = it;
        ++next;
        // A document cannot begin with a table: the empty paragraph that
        // stands before one there is not the writer's to keep.
        if (frame == m_document.rootFrame() && block.position() == 0 && block.length() == 1 &&
            !next.atEnd() && qobject_cast<const QTextTable*>(next.currentFrame())) {
            continue;
        }
        WriteBlock(block, inTable, "par");
    }
}

void Writer::WriteTable(const QTextTable* table) {
    const int columns = table->columns();
    const QTextTableFormat format = table->format();
    const QList<QTextLength> widths = format.columnWidthConstraints();
    const bool borders =
        format.border() > 0 && format.borderStyle() != QTextFrameFormat::BorderStyle_None;
    std::vector<int> edges;
    int edge = 0;
    for (int c = 0; c < columns; ++c) {
        int width = kTextWidthTwips / columns;
        if (widths.size() == columns) {
            const QTextLength& length = widths[c];
            if (length.type() == QTextLength::FixedLength) {
                width = PixelsToTwips(length.rawValue());
            } else if (length.type() == QTextLength::PercentageLength) {
                width = qRound(kTextWidthTwips * length.rawValue() / 100.0);
            }
        }
        edge += std::max(width, 1);
        edges.push_back(edge);
    }
    for (int r = 0; r < table->rows(); ++r) {
        Raw("\\trowd\\trgaph108");
        for (const int cellEdge : edges) {
            if (borders) {
                Raw("\\clbrdrt\\brdrs\\brdrw10\\clbrdrl\\brdrs\\brdrw10"
                    "\\clbrdrb\\brdrs\\brdrw10\\clbrdrr\\brdrs\\brdrw10");
            }
            Word("cellx", cellEdge);
        }
        Raw("\n");
        for (int c = 0; c < columns; ++c) {
            const QTextTableCell cell = table->cellAt(r, c);
            std::vector<QTextBlock> blocks;
            // A cell covered by a spanning one is written empty.
            for (auto it = cell.begin(); cell.row() == r && cell.column() == c && !it.atEnd();
                 ++it) {
                if (it.currentFrame()) {
                    // A frame in a cell is written as its paragraphs.
                    const QTextFrame* frame = it.currentFrame();
                    for (QTextBlock b = frame->firstCursorPosition().block();
                         b.isValid() && b.position() <= frame->lastPosition(); b = b.next()) {
                        blocks.push_back(b);
                    }
                } else {
                    blocks.push_back(it.currentBlock());
                }
            }
            for (size_t i = 0; i < blocks.size(); ++i) {
                WriteBlock(blocks[i], true, i + 1 == blocks.size() ? "cell" : "par");
            }
            if (blocks.empty()) {
                Raw("\\pard\\plain\\intbl\\cell\n");
            }
        }
        Raw("\\row\n");
    }
}

void Writer::WriteBlock(const QTextBlock& block, bool inTable, const char* end) {
    const QTextBlockFormat format = block.blockFormat();
    Word("pard");
    Word("plain");
    if (inTable) {
        Word("intbl");
    }
    const Qt::Alignment alignment = format.alignment() & Qt::AlignHorizontal_Mask;
    if (alignment & Qt::AlignHCenter) {
        Word("qc");
    } else if (alignment & Qt::AlignRight) {
        Word("qr");
    } else if (alignment & Qt::AlignJustify) {
        Word("qj");
    } else {
        Word("ql");
    }
    const std::pair<const char*, double> lengths[] = {
        {"li", format.leftMargin()}, {"ri", format.rightMargin()},  {"fi", format.textIndent()},
        {"sb", format.topMargin()},  {"sa", format.bottomMargin()},
    };
    for (const auto& [word, pixels] : lengths) {
        if (const int twips = PixelsToTwips(pixels); twips != 0) {
            Word(word, twips);
        }
    }
    const QTextFormat::PageBreakFlags breaks = format.pageBreakPolicy();
    if (breaks.testFlag(QTextFormat::PageBreak_AlwaysBefore) || m_pageBreakPending) {
        Word("pagebb");
    }
    m_pageBreakPending = breaks.testFlag(QTextFormat::PageBreak_AlwaysAfter);

    // Neighbouring runs that read the same are one group: a format this
    // writer does not write must not split a run in two.
    std::optional<QByteArray> run;
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        const QTextCharFormat charFormat = fragment.charFormat();
        if (charFormat.isImageFormat()) {
            if (std::exchange(run, std::nullopt)) {
                Raw("}");
            }
            for (int i = 0; i < fragment.length(); ++i) {
                WritePicture(charFormat.toImageFormat());
            }
            continue;
        }
        const QByteArray words = CharWords(charFormat);
        if (run != words) {
            Raw(run ? "}{" : "{");
            Words(words);
            run = words;
        }
        Text(fragment.text());
    }
    if (run) {
        Raw("}");
    }
    if (block.length() == 1) {
        // The mark of an empty paragraph sets its height.
        Words(CharWords(block.charFormat()));
    }
    Word(end);
    Raw("\n");
}

QByteArray Writer::CharWords(const QTextCharFormat& format) const {
    QByteArray words;
    const std::pair<bool, const char*> switches[] = {
        {format.fontWeight() >= QFont::DemiBold, "\\b"},
        {format.fontItalic(), "\\i"},
        {format.fontUnderline(), "\\ul"},
        {format.fontStrikeOut(), "\\strike"},
        {format.verticalAlignment() == QTextCharFormat::AlignSuperScript, "\\super"},
        {format.verticalAlignment() == QTextCharFormat::AlignSubScript, "\\sub"}};
    for (const auto& [on, word] : switches) {
        if (on) {
            words += word;
        }
    }
    double points = format.fontPointSize();
    if (points <= 0) {
        points = m_document.defaultFont().pointSizeF();
    }
    words += "\\f" + QByteArray::number(FontIndex(format)) + "\\fs" +
             QByteArray::number(points > 0 ? qRound(points * 2) : 24);
    if (const int color = ColorIndex(ColorOf(format.foreground())); color > 0) {
        words += "\\cf" + QByteArray::number(color);
    }
    if (const int color = ColorIndex(ColorOf(format.background())); color > 0) {
        words += "\\highlight" + QByteArray::number(color);
    }
    return words;
}

void Writer::WritePicture(const QTextImageFormat& format) {
    const QImage image = ImageOf(m_document, format);
    if (image.isNull()) {
        return;
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG")) {
        return;
    }
    const double width = format.width() > 0 ? format.width() : image.width();
    const double height = format.height() > 0 ? format.height() : image.height();
    Raw("{");
    Word("pict");
    Word("pngblip");
    Word("picw", image.width());
    Word("pich", image.height());
    Word("picwgoal", std::max(1, PixelsToTwips(width)));
    Word("pichgoal", std::max(1, PixelsToTwips(height)));
    Raw("\n");
    const QByteArray hex = png.toHex();
    for (qsizetype at = 0; at < hex.size(); at += 128) {
        m_out += hex.mid(at, 128);
        m_out += '\n';
    }
    Raw("}");
}

}  // namespace

QByteArray SaveRtf(const QTextDocument& document) {
    return Writer(document).Run();
}

}  // namespace lw::richtext
