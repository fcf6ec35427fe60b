// SPDX-License-Identifier: GPL-3.0-or-later
// The listing HTML of a creator document: the styles of Templates/Auctions,
// the colour table and the fonts the boxes offer, the token replacements of a
// template in their fixed order, the picture block, the cut at [START] and
// [END], the promotion footer a sender appends, and the preview page beside
// the listing. The listing is the seller's own HTML and goes out as written;
// only what the program adds to its own preview page is escaped. Nothing here
// opens a browser or draws.
#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <vector>

#include "creator/creator_document.h"
#include "update/rules.h"

namespace lw::creator {

// The style names and their files; the mapping is fixed.
struct StyleFile {
    const char* style;
    const char* file;
};
inline constexpr StyleFile kStyleFiles[] = {
    {"HTML/Plain Text", "plaintext.tem"},      {"Professional Complete", "Professional.tem"},
    {"Professional Standard", "standard.tem"}, {"Professional Versatile", "box.tem"},
    {"Simple Elegant", "elegant.tem"},         {"Simple Versatile", "simple.tem"},
    {"Quick 'n' Easy", "quick.tem"},
};
inline constexpr QLatin1String kPlainStyle("HTML/Plain Text");

// TemplatesDir + "Auctions/".
QString AuctionTemplatesDir();
// Every *.tem of dir (sorted by file name, case-blind): the text behind the
// first "=" of its first line, and the file name. A file with no "=" on its
// first line, or one that cannot be read, is passed over.
std::vector<AuctionStyle> ListAuctionStyles(const QString& dir);
// The file of a style, by the fixed mapping; empty for an unknown style.
QString StyleFileName(const QString& style);
// The shipped preview picture of a style's file (data/templates/auctions/
// previews/<file less .tem>.png under the shipped folder).
QString StylePreviewPicture(const QString& shippedDir, const QString& fileName);
// Copies the shipped .tem files that are missing from Templates/Auctions/;
// a file the user already has is never overwritten. False, with the reason,
// when the folder cannot be made or a file cannot be copied.
bool InstallAuctionTemplates(const QString& shippedDir, const QString& templatesDir,
                             QString* error);

// ------------------------------------------------------------------ colours and fonts

// The rows of lstColors: "Name (#rrggbb) (rrr,ggg,bbb)"; Brown's row stands
// as it was entered, "Brown (663300) (102,051,000)".
QStringList ColourRows();
// The names of the rows, in the order of the boxes.
QStringList ColourNames();
// The seven characters after the first "(" of the colour's row ("#ff0000";
// Brown gives "663300)"); empty for a name that is no row.
QString ColourValue(const QString& colourName);
// ColorValue("cmbFontColor"), ("cmbThemeColor") or ("cmbTableBGColor").
QString ColorValue(const CreatorDocument& doc, const QString& boxName);
// The decimal triple of a colour's row, for the sample boxes: red, green, blue.
std::array<int, 3> ColourTriple(const QString& colourName);

// ------------------------------------------------------------------ building

// What BuildListing reads beyond the document.
struct ListingContext {
    QString templatesDir;                      // the folder of the .tem files
    const update::RuleStore* rules = nullptr;  // PayPal, RubyLane (1); sellers' auctions (0)
    QString sellerId;                          // UserID of the user's UserSites row
};

// The user's UserID for site 0; empty when there is none.
QString SellerId(core::Database& db, const QString& user);

// Replaces every occurrence of token, found case-blind from a caret that moves
// behind each replacement; an occurrence at the very first character stops the
// search and stays.
void ReplaceToken(QString& buffer, const QString& token, const QString& text);
// Keeps what follows "[START]" and precedes "[END]"; either may be missing.
void CutListingBlock(QString& buffer);

struct PictureBlock {
    QString block;        // for [lstPictureLink]: the first three rows
    QString txtPicture4;  // for [txtPicture4]: the rest
};
PictureBlock BuildPictureBlock(const QString& style, const CreatorDocument& doc);

// Every token of the table in its order, over buffer.
void ApplyTokens(QString& buffer, const CreatorDocument& doc, const CreatorLists& lists,
                 const ListingContext& context);

struct ListingResult {
    QString html;
    QString txtPicture4;
    // Why the style's template could not be had; html is then the cut of the
    // previous buffer, as for an unknown style.
    QString problem;
};
// The listing of the document in a style. previous is the buffer of the last
// build: an unknown style loads nothing and cuts that.
ListingResult BuildListing(const QString& style, const CreatorDocument& doc,
                           const CreatorLists& lists, const ListingContext& context,
                           const QString& previous = QString());

// The promotion block a sender appends to AuctionHTML; the link target is the
// "Listing Footer" Url of store 1 (without one, the words stand unlinked).
QString ListingFooter(const update::RuleStore& rules);

// ------------------------------------------------------------------ preview

struct PreviewResult {
    QString path;  // ConfigsDir + "preview.html"; empty on failure
    QString problem;
    ListingResult listing;
};
// Builds the listing, writes Previewx.html in configsDir with the data table,
// the banner, the listing (or the description's own page), the pictures and
// the options table, and renames it to preview.html. Opening it is the
// caller's.
PreviewResult PreviewAuction(const QString& style, const CreatorDocument& doc,
                             const CreatorLists& lists, const ListingContext& context,
                             const QString& configsDir);

// Text made safe to show inside the program's own HTML (& < > " ').
QString HtmlEscaped(const QString& text);

}  // namespace lw::creator
