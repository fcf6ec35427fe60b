// SPDX-License-Identifier: GPL-3.0-or-later
// Listing HTML from templates. Tokens are replaced one after the other in the
// fixed order of the token table, each by one scan of the buffer from its
// start; what the seller typed goes into the listing as it is. The preview
// page escapes only what the program itself writes around the listing.
#include "creator/listing_html.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include "core/session.h"
#include "core/text.h"

namespace lw::creator {

namespace {

// A template larger than this is no listing template.
constexpr qint64 kMostTemplateBytes = 8 * 1024 * 1024;
// The most .tem files a style list reads.
constexpr int kMostStyles = 1000;

struct Colour {
    const char* name;
    const char* code;  // as entered: Brown's has no "#"
};
constexpr Colour kColours[] = {
    {"Black", "#000000"},         {"White", "#ffffff"},         {"Gray", "#999999"},
    {"Light Gray", "#cccccc"},    {"Dark Gray", "#666666"},     {"Red", "#ff0000"},
    {"Dark Red", "#990000"},      {"Reddish Brown", "#993300"}, {"Burgundy", "#660000"},
    {"Pastel Red", "#FFCCCC"},    {"Matte Red", "#996666"},     {"Salmon", "#ff9999"},
    {"Orange", "#ff9933"},        {"Yellow", "#ffff00"},        {"Light Yellow", "#ffff99"},
    {"Pastel Yellow", "#FFFFCC"}, {"Green", "#009900"},         {"Forest Green", "#005100"},
    {"Light Green", "#99ff99"},   {"Lime Green", "#99ff00"},    {"Flourecent Green", "#00ff00"},
    {"Pastel Green", "#CCFFCC"},  {"Matte Green", "#669966"},   {"Heather Green", "#CCCC99"},
    {"Teal", "#009999"},          {"Matte Teal", "#669999"},    {"Blue", "#0000ff"},
    {"Bluer", "#003399"},         {"Dark Blue", "#000099"},     {"Light Blue", "#00ffff"},
    {"Pastel Blue", "#CCCCFF"},   {"Matte Blue", "#666699"},    {"Pastel Light Blue", "#CCFFFF"},
    {"Purple", "#990099"},        {"Dark Purple", "#660066"},   {"Deep Purple", "#510051"},
    {"Lavendar", "#9999cc"},      {"Pastel Purple", "#FFCCFF"}, {"Matte Purple", "#996699"},
    {"Pink", "#ff99cc"},          {"Hot Pink", "#FF00CC"},      {"Brown", "663300"},
    {"Earth", "#CCCC99"},         {"Earth Light", "#EEEECC"},   {"Matte Earth", "#999966"},
};
static_assert(std::size(kColours) == 45);

std::array<int, 3> TripleOf(const QString& code) {
    const QString hex = code.startsWith(u'#') ? code.mid(1) : code;
    std::array<int, 3> triple{};
    for (int i = 0; i < 3; ++i) {
        triple[size_t(i)] = hex.mid(i * 2, 2).toInt(nullptr, 16);
    }
    return triple;
}

QString ColourRow(const Colour& colour) {
    const QString code = QString::fromLatin1(colour.code);
    const std::array<int, 3> triple = TripleOf(code);
    const auto digits = [](int n) { return QStringLiteral("%1").arg(n, 3, 10, QLatin1Char('0')); };
    return QString::fromLatin1(colour.name) + QStringLiteral(" (") + code + QStringLiteral(") (") +
           digits(triple[0]) + u',' + digits(triple[1]) + u',' + digits(triple[2]) + u')';
}

const Colour* FindColour(const QString& name) {
    for (const Colour& colour : kColours) {
        if (name.compare(QLatin1String(colour.name), Qt::CaseInsensitive) == 0) {
            return &colour;
        }
    }
    return nullptr;
}

// Case-blind find from a position, as the buffer's Find does. Tokens carry a
// character that has no case ("[", "=", a blank): that one is looked for as it
// is, and only there is the whole token compared without regard to case. A
// bracket is the rarest of them in a listing, a blank the most common.
qsizetype FindToken(const QString& buffer, const QString& token, qsizetype from) {
    const auto caseless = [](QChar c) {
        return c.toLower() == c && c.toUpper() == c && c.toCaseFolded() == c;
    };
    qsizetype anchor = token.indexOf(u'[');
    for (qsizetype i = 0; anchor < 0 && i < token.size(); ++i) {
        if (caseless(token.at(i)) && token.at(i) != u' ') {
            anchor = i;
        }
    }
    for (qsizetype i = 0; anchor < 0 && i < token.size(); ++i) {
        if (caseless(token.at(i))) {
            anchor = i;
        }
    }
    if (anchor < 0) {
        return buffer.indexOf(token, from, Qt::CaseInsensitive);
    }
    const QChar mark = token.at(anchor);
    for (qsizetype at = buffer.indexOf(mark, from + anchor); at >= 0;
         at = buffer.indexOf(mark, at + 1)) {
        const qsizetype start = at - anchor;
        if (start + token.size() > buffer.size()) {
            return -1;
        }
        if (QStringView(buffer).mid(start, token.size()).compare(token, Qt::CaseInsensitive) == 0) {
            return start;
        }
    }
    return -1;
}

QString Tok(const char* token) {
    return QString::fromLatin1(token);
}

QString Removed() {
    return QString();
}

// A rule value, with a missing key ("ERROR") counting as empty.
QString RuleValue(const ListingContext& context, const QString& section, const QString& key,
                  int store) {
    if (context.rules == nullptr) {
        return QString();
    }
    const QString value = context.rules->LookupKey(section, key, store);
    return value == update::RuleError() ? QString() : value;
}

QString Link(const QString& href, const QString& caption) {
    return QStringLiteral("<A HREF='") + href + QStringLiteral("'>") + caption +
           QStringLiteral("</A>");
}

std::optional<QString> ReadTemplate(const QString& path, QString* problem) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        *problem = QStringLiteral("The listing template %1 could not be read: %2")
                       .arg(QDir::toNativeSeparators(path),
                            QFileInfo::exists(path) ? file.errorString()
                                                    : QStringLiteral("there is no such file."));
        return std::nullopt;
    }
    if (file.size() > kMostTemplateBytes) {
        *problem = QStringLiteral("The listing template %1 is larger than %2 MB; no template is.")
                       .arg(QDir::toNativeSeparators(path))
                       .arg(kMostTemplateBytes / (1024 * 1024));
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    if (utf8.hasError()) {
        text = QString::fromLatin1(bytes);
    }
    return text;
}

QString Cell(const QString& label, const QString& value, const char* firstWidth,
             const char* secondWidth) {
    return QStringLiteral("<TR><TD WIDTH=") + QLatin1String(firstWidth) +
           QStringLiteral("><FONT SIZE=2>") + label + QStringLiteral("</FONT></TD><TD WIDTH=") +
           QLatin1String(secondWidth) + QStringLiteral("><FONT SIZE=2><B>") + HtmlEscaped(value) +
           QStringLiteral("</B></FONT></TD></TR>\r\n");
}

QString DataTable(const CreatorDocument& doc) {
    const auto row = [](const char* label, const QString& value) {
        return Cell(QString::fromLatin1(label), value, "10%", "65%");
    };
    return QStringLiteral("<TABLE cellpadding=0 width=100%>\r\n") +
           row("eBay Title:", doc.txtEbayTitle) + row("eBay Category:", doc.cmbEbayCategory.text) +
           row("Quantity:", doc.txtQuantity) + row("Minimum Bid:", doc.txtMinimumBid) +
           row("Reserve:",
               doc.txtReserve.isEmpty() ? QStringLiteral("No Reserve") : doc.txtReserve) +
           row("Shipping:", doc.txtShipping) +
           row("Insurance:",
               doc.txtInsurance.isEmpty() ? QStringLiteral("Not Specified") : doc.txtInsurance) +
           QStringLiteral("</TABLE><p><p>\r\n");
}

QString OptionsTable(const CreatorDocument& doc, const CreatorLists& lists) {
    const auto row = [](const QString& label, const QString& value) {
        return Cell(label, value, "35%", "65%");
    };
    const auto yesNo = [](bool on) { return on ? QStringLiteral("Yes") : QStringLiteral("No"); };
    const auto head = [](const char* text) -> QString {
        return QStringLiteral("<TR><TD WIDTH=35%><FONT SIZE=2><B><U>") + QLatin1String(text) +
               QStringLiteral("</U></B></FONT></TD><TD WIDTH=65%></TD></TR>\r\n");
    };
    const QString blank =
        QStringLiteral("<TR><TD WIDTH=35%>&nbsp;</TD><TD WIDTH=65%></TD></TR>\r\n");
    QString table = QStringLiteral("<TABLE cellpadding=0>\r\n");
    table += blank;
    table += head("Optional Settings");
    const QString gift = RowText(lists.lstEbayGiftIcon, doc.lstEbayGiftIcon);
    table += row(QStringLiteral("Great Gift Icon"), gift.isEmpty() ? QStringLiteral("None") : gift);
    for (size_t i = 0; i < lists.lstEbayOptions.size(); ++i) {
        table += row(HtmlEscaped(lists.lstEbayOptions[i].text),
                     yesNo(doc.lstEbayOptions.contains(int(i))));
    }
    table += blank;
    table += head("eBay Online Payments");
    table += row(QStringLiteral("Accept Credit Cards"), yesNo(doc.chkbillpointCCAccepted));
    table += row(QStringLiteral("Accept Electronic Checks"), yesNo(doc.chkbillpointECAccepted));
    table += row(QStringLiteral("Enable Instant Purchase"), yesNo(doc.chkbillpointIPAccepted));
    const auto fee = [](const QString& box) {
        return box.isEmpty() ? QStringLiteral("$0.00") : box;
    };
    table += row(QStringLiteral("Shipping, Handling, Ins."), fee(doc.txtipShippingFee));
    table += row(QStringLiteral("Additional Shipping"), fee(doc.txtipShippingXFee));
    const bool noTax = doc.txtipTax.trimmed().isEmpty() || core::NumberRule(doc.txtipTax) == 0;
    table += row(QStringLiteral("Sales Tax"),
                 noTax ? QStringLiteral("0.00%")
                       : doc.txtipTax + QStringLiteral("% in ") +
                             RowText(lists.lstipTaxState, doc.lstipTaxState));
    table += row(QStringLiteral("Return Policy"),
                 doc.lblFullPolicy.isEmpty() ? QStringLiteral("None") : doc.lblFullPolicy);
    return table + QStringLiteral("</TABLE><p><p>\r\n");
}

}  // namespace

// ------------------------------------------------------------------ styles

QString AuctionTemplatesDir() {
    return core::CurrentSession().TemplatesDir + QStringLiteral("Auctions/");
}

std::vector<AuctionStyle> ListAuctionStyles(const QString& dir) {
    std::vector<AuctionStyle> styles;
    const QStringList files =
        QDir(dir).entryList({QStringLiteral("*.tem")}, QDir::Files, QDir::Name | QDir::IgnoreCase);
    for (const QString& fileName : files.mid(0, kMostStyles)) {
        QFile file(QDir(dir).filePath(fileName));
        if (!file.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QString line = QString::fromUtf8(file.readLine(4096)).trimmed();
        const qsizetype equals = line.indexOf(u'=');
        if (equals < 0) {
            continue;
        }
        styles.push_back({line.mid(equals + 1), fileName});
    }
    return styles;
}

QString StyleFileName(const QString& style) {
    for (const StyleFile& entry : kStyleFiles) {
        if (style == QLatin1String(entry.style)) {
            return QString::fromLatin1(entry.file);
        }
    }
    return QString();
}

QString StylePreviewPicture(const QString& shippedDir, const QString& fileName) {
    return shippedDir + QStringLiteral("/data/templates/auctions/previews/") +
           QFileInfo(fileName).completeBaseName() + QStringLiteral(".png");
}

bool InstallAuctionTemplates(const QString& shippedDir, const QString& templatesDir,
                             QString* error) {
    const QDir from(shippedDir + QStringLiteral("/data/templates/auctions"));
    const QString to = templatesDir + QStringLiteral("Auctions/");
    if (!core::EnsureDirectory(to)) {
        *error = QStringLiteral("The folder %1 for the listing templates could not be made.")
                     .arg(QDir::toNativeSeparators(to));
        return false;
    }
    for (const QString& name : from.entryList({QStringLiteral("*.tem")}, QDir::Files)) {
        if (!core::CopyIfMissing(
                from.filePath(name), to + name,
                QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther)) {
            *error = QStringLiteral("The listing template %1 could not be copied to %2.")
                         .arg(QDir::toNativeSeparators(from.filePath(name)),
                              QDir::toNativeSeparators(to));
            return false;
        }
    }
    return true;
}

// ------------------------------------------------------------------ colours

QStringList ColourRows() {
    QStringList rows;
    for (const Colour& colour : kColours) {
        rows << ColourRow(colour);
    }
    return rows;
}

QStringList ColourNames() {
    QStringList names;
    for (const QString& row : ColourRows()) {
        names << row.left(row.indexOf(u'(')).trimmed();
    }
    return names;
}

QString ColourValue(const QString& colourName) {
    const Colour* colour = FindColour(colourName.trimmed());
    if (colour == nullptr) {
        return QString();
    }
    const QString row = ColourRow(*colour);
    return row.mid(row.indexOf(u'(') + 1, 7);
}

QString ColorValue(const CreatorDocument& doc, const QString& boxName) {
    if (boxName == u"cmbFontColor") {
        return ColourValue(doc.cmbFontColor);
    }
    if (boxName == u"cmbThemeColor") {
        return ColourValue(doc.cmbThemeColor);
    }
    if (boxName == u"cmbTableBGColor") {
        return ColourValue(doc.cmbTableBGColor);
    }
    return QString();
}

std::array<int, 3> ColourTriple(const QString& colourName) {
    const Colour* colour = FindColour(colourName.trimmed());
    return colour == nullptr ? std::array<int, 3>{} : TripleOf(QString::fromLatin1(colour->code));
}

// ------------------------------------------------------------------ building

QString SellerId(core::Database& db, const QString& user) {
    core::Statement site = db.Prepare(QStringLiteral(
        "SELECT UserID FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0 ORDER BY rowid"));
    site.Bind(1, user);
    return site.Step() ? site.Text(0) : QString();
}

void ReplaceToken(QString& buffer, const QString& token, const QString& text) {
    if (token.isEmpty()) {
        return;
    }
    // The caret stands behind each replacement, so every later match lies in
    // text not yet replaced: one pass that copies as it goes finds the same
    // matches, and a token met thousands of times costs no more than once.
    qsizetype at = FindToken(buffer, token, 0);
    if (at <= 0) {
        return;
    }
    QString result;
    result.reserve(buffer.size());
    qsizetype from = 0;
    for (; at > 0; at = FindToken(buffer, token, from)) {
        result += QStringView(buffer).mid(from, at - from);
        result += text;
        from = at + token.size();
    }
    result += QStringView(buffer).mid(from);
    buffer = std::move(result);
}

void CutListingBlock(QString& buffer) {
    const qsizetype start = FindToken(buffer, QStringLiteral("[START]"), 0);
    if (start >= 0) {
        buffer.remove(0, start + 7);
    }
    const qsizetype end = FindToken(buffer, QStringLiteral("[END]"), 0);
    if (end >= 0) {
        buffer.truncate(end);
    }
}

PictureBlock BuildPictureBlock(const QString& style, const CreatorDocument& doc) {
    const bool plain = style == kPlainStyle;
    const QString rule = QStringLiteral("<HR>");
    QString result = plain ? rule : QString();
    const QString rest = plain ? QString() : rule;
    PictureBlock block;
    bool restStarted = false;
    for (qsizetype i = 0; i < doc.lstPictureLink.size(); ++i) {
        const QString& url = doc.lstPictureLink.at(i);
        if (url.isEmpty() || url == u"http://") {
            continue;
        }
        const QString piece =
            doc.chkPictureSize
                ? QString(QStringLiteral("<A HREF=\"") + url + QStringLiteral("\"><IMG SRC=\"") +
                          url + QStringLiteral("\" WIDTH=175 BORDER=0 ALT='Click to enlarge'></A>"))
                : QString(QStringLiteral("<IMG SRC=\"") + url + QStringLiteral("\">"));
        if (i < 3) {
            result += piece;
            if (!plain && doc.chkPictureReturn) {
                result += QStringLiteral("<P>");
            }
        } else {
            if (!restStarted) {
                block.txtPicture4 = rest;
                restStarted = true;
            }
            block.txtPicture4 += piece;
        }
    }
    block.block = result == rule ? QString() : result;
    return block;
}

void ApplyTokens(QString& buffer, const CreatorDocument& doc, const CreatorLists& lists,
                 const ListingContext& context) {
    const auto put = [&buffer](const char* token, const QString& text) {
        ReplaceToken(buffer, Tok(token), text);
    };
    const auto drop = [&buffer](const QString& token) { ReplaceToken(buffer, token, Removed()); };

    // 1. Font sizes.
    const QString size =
        doc.cmbFontSize >= 0 ? lists.cmbFontSize.value(doc.cmbFontSize) : QString();
    if (!size.isEmpty()) {
        const int n = int(core::Val(size));
        put("[cmbFontSize-1]", QString::number(n - 1));
        put("[cmbFontSize]", QString::number(n));
        put("[cmbFontSize+1]", QString::number(n + 1));
        put("[cmbFontSize+2]", QString::number(n + 2));
    } else {
        for (const char* token :
             {"[cmbFontSize-1]", "[cmbFontSize]", "[cmbFontSize+1]", "[cmbFontSize+2]"}) {
            drop(Tok(token));
        }
    }
    // 2. Description.
    put("[txtDescription]", doc.txtDescription);
    // 3, 4. Pictures.
    const PictureBlock pictures = BuildPictureBlock(QString(), doc);
    if (!doc.lstPictureLink.isEmpty() && !doc.lstPictureLink.front().trimmed().isEmpty()) {
        put("[lstPictureLink]", pictures.block);
    } else {
        drop(QStringLiteral("[lstPictureLink]<BR>"));
    }
    put("[txtPicture4]", pictures.txtPicture4);
    // 5. Background: a colour for the table, an image in the table or tiled.
    const QString image = doc.cmbBGImageLink;
    const bool noImage = image.trimmed().isEmpty() || image == u"http://";
    if (doc.chkBGImage || image == u"http://" || image.isEmpty()) {
        put("[cmbTableBGColor]", ColorValue(doc, QStringLiteral("cmbTableBGColor")));
    } else {
        drop(QStringLiteral("COLOR=\"[cmbTableBGColor]\""));
    }
    if (!noImage && !doc.chkBGImage) {
        put("[cmbBGImageLink]", image);
        drop(QStringLiteral(" BACKGROUND=\"[chkBGImage]\""));
    } else {
        // Tiled over the page; with no image the link goes in as it stands.
        put("[chkBGImage]", image);
        drop(QStringLiteral("BACKGROUND=\"[cmbBGImageLink]\""));
    }
    // 6, 7. Colours.
    put("[cmbThemeColor]", ColorValue(doc, QStringLiteral("cmbThemeColor")));
    put("[cmbFontColor]", ColorValue(doc, QStringLiteral("cmbFontColor")));
    // 8. Font: when none is chosen the comma behind the token goes too.
    if (!doc.cmbFontType.isEmpty() && doc.cmbFontType != FontSeparator()) {
        put("[cmbFontType]", doc.cmbFontType);
    } else {
        drop(QStringLiteral("[cmbFontType],"));
    }
    // 9. Title.
    put("[txtItemTitle]", doc.chkItemTitle ? doc.txtItemTitle : Removed());
    // 10, 11. Product details.
    for (int i = 0; i < 2; ++i) {
        const QString n = QString::number(i);
        const QString caption = QStringLiteral("[txtProductDetails(") + n + QStringLiteral(")]");
        const QString statement = QStringLiteral("[cmbProductDetails(") + n + QStringLiteral(")]");
        if (doc.chkProductDetails[size_t(i)]) {
            ReplaceToken(buffer, caption, doc.txtProductDetails[size_t(i)]);
            ReplaceToken(buffer, statement, doc.cmbProductDetails[size_t(i)]);
        } else {
            drop(caption);
            drop(statement + QStringLiteral("<BR>"));
        }
    }
    // 12. Quantity.
    if (doc.chkProductDetails[2]) {
        put("[lblAC(0)]", QStringLiteral("Quantity:"));
        put("[lblQuantity]", doc.txtQuantity);
    } else {
        drop(QStringLiteral("[lblAC(0)]"));
        drop(QStringLiteral("[lblQuantity]<BR>"));
    }
    // 13, 14. Shipping cost and insurance, with their statements.
    struct Fixed {
        const char* label;
        const char* labelText;
        const char* mirror;
        const QString& value;
    };
    const Fixed fixed[2] = {
        {"[lblAC(15)]", "Shipping Cost:", "[lblShipCost]", doc.txtShipping},
        {"[lblAC(16)]", "Shipping Insurance:", "[lblShipInsurance]", doc.txtInsurance}};
    for (int i = 0; i < 2; ++i) {
        const QString statement = QStringLiteral("[cmbTransaction(%1)]").arg(i);
        if (doc.chkTransaction[size_t(i)]) {
            put(fixed[i].label, QString::fromLatin1(fixed[i].labelText));
            put(fixed[i].mirror, fixed[i].value);
            ReplaceToken(buffer, statement, doc.cmbTransaction[size_t(i)]);
        } else {
            drop(Tok(fixed[i].label));
            drop(Tok(fixed[i].mirror));
            drop(statement + QStringLiteral("<BR>"));
        }
    }
    // 15 to 17. Captioned statements.
    for (int i = 0; i < 3; ++i) {
        const QString caption = QStringLiteral("[txtTransaction(%1)]").arg(i);
        const QString statement = QStringLiteral("[cmbTransaction(%1)]").arg(i + 2);
        if (doc.chkTransaction[size_t(i + 2)]) {
            ReplaceToken(buffer, caption, doc.txtTransaction[size_t(i)]);
            ReplaceToken(buffer, statement, doc.cmbTransaction[size_t(i + 2)]);
        } else {
            drop(caption);
            drop(statement + QStringLiteral("<BR>"));
        }
    }
    // 18. Other captions.
    for (int i = 0; i < 3; ++i) {
        const QString token = QStringLiteral("[txtOtherCaption(%1)]").arg(i);
        if (doc.chkOtherCaption[size_t(i)]) {
            ReplaceToken(buffer, token, doc.txtOtherCaption[size_t(i)]);
        } else {
            drop(token + QStringLiteral("<BR>"));
        }
    }
    // 19. Payment logo.
    QString logo;
    if (doc.cmbPayPalLogo > 0 && !doc.txtPayPalAddress.trimmed().isEmpty()) {
        logo = RuleValue(context, QStringLiteral("PayPal"),
                         QStringLiteral("Option%1HTML").arg(doc.cmbPayPalLogo + 1),
                         update::kInfoStore);
        logo = core::ReplaceEvery(logo, QStringLiteral("[PAYPALEMAIL]"), doc.txtPayPalAddress);
    }
    if (!logo.isEmpty()) {
        put("[cmbPayPalLogo]", logo);
    } else {
        drop(QStringLiteral("[cmbPayPalLogo]<BR>"));
    }
    // 20. Counter.
    const QString counter =
        doc.cmbCounterStyle > 0
            ? RuleValue(context, QStringLiteral("RubyLane"),
                        QStringLiteral("Option%1HTML").arg(doc.cmbCounterStyle + 1),
                        update::kInfoStore)
            : QString();
    put("[cmbCounterStyle]", counter);
    // 21. The seller's other auctions.
    if (doc.chkEbayAuctionLink && !doc.txtEbayAuctionLink.trimmed().isEmpty()) {
        const QString link = RuleValue(context, QStringLiteral("eBay View Sellers Auctions"),
                                       QStringLiteral("Url"), update::kSiteStore)
                                 .trimmed() +
                             context.sellerId;
        put("[txtEbayAuctionLink]", Link(link, doc.txtEbayAuctionLink));
    } else {
        drop(QStringLiteral("[txtEbayAuctionLink]<BR>"));
    }
    // 22. Mail link.
    if (doc.chkEmailLink && !doc.txtEmailLinkCaption.trimmed().isEmpty() &&
        !doc.txtEmailLinkText.trimmed().isEmpty()) {
        put("[txtEmailLinkCaption]", QStringLiteral("<A HREF='mailto:") + doc.txtEmailLinkText +
                                         QStringLiteral("'><EM>") + doc.txtEmailLinkCaption +
                                         QStringLiteral("</EM></A>"));
    } else {
        drop(QStringLiteral("[txtEmailLinkCaption]<BR>"));
    }
    // 23. Two links.
    for (int i = 0; i < 2; ++i) {
        const QString token = QStringLiteral("[txtLinkCaption(%1)]").arg(i);
        if (doc.chkLink[size_t(i)] && !doc.txtLinkCaption[size_t(i)].trimmed().isEmpty() &&
            !doc.txtLinkLink[size_t(i)].trimmed().isEmpty()) {
            ReplaceToken(buffer, token,
                         Link(doc.txtLinkLink[size_t(i)], doc.txtLinkCaption[size_t(i)]));
        } else {
            drop(token + QStringLiteral("<BR>"));
        }
    }
}

ListingResult BuildListing(const QString& style, const CreatorDocument& doc,
                           const CreatorLists& lists, const ListingContext& context,
                           const QString& previous) {
    ListingResult result;
    const QString fileName = StyleFileName(style);
    std::optional<QString> loaded;
    if (!fileName.isEmpty()) {
        loaded = ReadTemplate(QDir(context.templatesDir).filePath(fileName), &result.problem);
    }
    if (!loaded) {
        result.html = previous;
        CutListingBlock(result.html);
        return result;
    }
    QString buffer = std::move(*loaded);
    if (style == kPlainStyle) {
        ReplaceToken(buffer, QStringLiteral("[txtDescription]"), doc.txtDescription);
        const PictureBlock pictures = BuildPictureBlock(style, doc);
        ReplaceToken(buffer, QStringLiteral("[lstPictureLink]"), pictures.block);
        ReplaceToken(buffer, QStringLiteral("[txtPicture4]"), pictures.txtPicture4);
        result.txtPicture4 = pictures.txtPicture4;
    } else {
        ApplyTokens(buffer, doc, lists, context);
        result.txtPicture4 = BuildPictureBlock(style, doc).txtPicture4;
    }
    CutListingBlock(buffer);
    result.html = std::move(buffer);
    return result;
}

QString ListingFooter(const update::RuleStore& rules) {
    const QString url =
        rules.LookupKey(QStringLiteral("Listing Footer"), QStringLiteral("Url"), update::kInfoStore)
            .trimmed();
    const QString words = QStringLiteral("Tolvane software.");
    const QString link = url.isEmpty() || url == update::RuleError()
                             ? words
                             : QStringLiteral("<a href=\"") + url + QStringLiteral("\">") + words +
                                   QStringLiteral("</a>");
    return QStringLiteral(
               "<hr noshade><p align=\"center\"><b><font size = \"2\" face=\"Arial, Verdana, "
               "Helvetica, sans-serif\"><font color=\"#FF9933\">Create, post, track</font><font "
               "color=\"#666699\"> and</font> <font color=\"#FF9933\">manage</font><font "
               "color=\"#666699\"> your auctions with ") +
           link + QStringLiteral("</b></font></font><br><font color=\"#FFFFFF\">TLV20</FONT>");
}

// ------------------------------------------------------------------ preview

QString HtmlEscaped(const QString& text) {
    QString escaped = text.toHtmlEscaped();
    return escaped.replace(u'\'', QStringLiteral("&#39;"));
}

PreviewResult PreviewAuction(const QString& style, const CreatorDocument& doc,
                             const CreatorLists& lists, const ListingContext& context,
                             const QString& configsDir) {
    PreviewResult result;
    result.listing = BuildListing(style, doc, lists, context);
    const QDir dir(configsDir);
    for (const char* name : {"Preview.html", "preview.html", "Previewx.html"}) {
        QFile::remove(dir.filePath(QLatin1String(name)));
    }
    QString page = QStringLiteral(
                       "<HTML><HEAD>\r\n<META HTTP-EQUIV=\"Content-Type\" "
                       "CONTENT=\"text/html; charset=utf-8\">\r\n<TITLE>") +
                   HtmlEscaped(doc.txtEbayTitle) + QStringLiteral("</TITLE></HEAD>\r\n");
    const QString banner = QStringLiteral(
        "<center><table border=1 cellspacing=0 width=\"100%\" bgcolor=\"#666699\">\r\n"
        "<tr><td align=center width=\"100%\"><font size=4 Face='Arial' color=\"#FFFFFF\"><b>My "
        "Item Description</b></font></td></tr></table></center>\r\n");
    const qsizetype body =
        doc.txtDescription.indexOf(QStringLiteral("<BODY"), 0, Qt::CaseInsensitive);
    if (body >= 0) {
        const qsizetype close = doc.txtDescription.indexOf(u'>', body);
        const qsizetype after = close < 0 ? doc.txtDescription.size() : close + 1;
        page += doc.txtDescription.mid(body, after - body) + QStringLiteral("\r\n") +
                DataTable(doc) + banner + doc.txtDescription.mid(after);
    } else {
        page += QStringLiteral("<BODY BGCOLOR=\"#FFFFFF\">\r\n") + DataTable(doc) + banner +
                result.listing.html;
    }
    const QString icon = doc.cmbEbayPicIconActivate;
    if (!icon.isEmpty() && icon != u"http://") {
        page += QStringLiteral("<p><HR>\r\n<IMG SRC='") + HtmlEscaped(icon) + QStringLiteral("'>");
    }
    if (doc.chkEbayGallery && !doc.cmbEbayGallery.isEmpty()) {
        page += QStringLiteral(
                    "<p><HR>\r\n<FONT SIZE=3><B>Gallery Picture:</B></FONT><p>\r\n"
                    "<IMG SRC='") +
                HtmlEscaped(doc.cmbEbayGallery) + QStringLiteral("'>");
    }
    page += QStringLiteral("<p><p><HR>\r\n") + OptionsTable(doc, lists) +
            QStringLiteral("</BODY></HTML>\r\n");

    const QString work = dir.filePath(QStringLiteral("Previewx.html"));
    const QString path = dir.filePath(QStringLiteral("preview.html"));
    QFile file(work);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(page.toUtf8()) < 0 ||
        !file.flush()) {
        result.problem = QStringLiteral("The preview page %1 could not be written: %2")
                             .arg(QDir::toNativeSeparators(work), file.errorString());
        return result;
    }
    file.close();
    if (!QFile::rename(work, path)) {
        result.problem = QStringLiteral("The preview page could not be renamed to %1.")
                             .arg(QDir::toNativeSeparators(path));
        return result;
    }
    result.path = path;
    return result;
}

}  // namespace lw::creator
