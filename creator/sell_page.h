// SPDX-License-Identifier: GPL-3.0-or-later
// The browser route of posting a listing: the site's sell form for the
// category is fetched, filled with the document's values by the editing
// commands of seller.pro (each holding a token that is resolved here), and
// written as "ebaysell.html" in ConfigsDir for the user to finish in the
// browser. What to change in the page lives in seller.pro, never in this
// code. It never opens the browser (the caller opens the path it gives), never
// posts to the site, and never changes the creator row. Every loop over the
// rules or the page is bounded.
#pragma once

#include <QString>
#include <optional>

#include "core/net.h"
#include "core/store.h"
#include "core/ui_port.h"
#include "creator/post_record.h"
#include "update/rules.h"

namespace lw::creator {

// What is read of seller.pro and of the fetched page: no more Item lines than
// this, and no larger file or page.
inline constexpr int kMaxSellPageItems = 1000;
inline constexpr qint64 kMaxSellerRulesBytes = 1024 * 1024;
inline constexpr qint64 kMaxSellPageBytes = 4 * 1024 * 1024;

// seller.pro as a post loads it: ConfigsDir's copy (a rule update puts it
// there), else the shipped one. Its text goes into store 2 of seller (with
// the blank line every rule text gets). False, with the reason, when neither
// can be read.
bool LoadSellerRules(update::RuleStore& seller, QString* error);

// The six editing commands of an Item line of "eBay Sell Item Page", each
// behind its keyword and ended by the next: FindIt=, StartIt=, StopIt=,
// PutIt=, DeleteIt=, FindIt2= (to the end of the line). A value of two double
// quotes is empty.
struct PageEdit {
    QString findIt;
    QString startIt;
    QString stopIt;
    QString putIt;
    QString deleteIt;
    QString findIt2;
};
PageEdit ParsePageEdit(const QString& line);
// The first "[" ... "]" of a line, brackets and all; empty when it has none.
QString LineToken(const QString& line);

// The page being edited, with the selection that each edit moves.
struct PageText {
    QString text;
    qsizetype selStart = 0;
    qsizetype selLength = 0;
};

// One editing command over the page. findIt is found from the start of the
// page (without regard to case; failing that, once more without its double
// quotes) and selected; deleteIt and findIt2 are found from that match (else
// from the start) with the same retry: deleteIt is cut out, leaving the caret
// where it stood, findIt2 is selected; startIt moves the caret to the next of
// its characters behind the selection, stopIt stretches the selection up to
// the next of its characters. Then putIt follows the selected text, with one
// blank between them for the description (a findIt holding "desc"; its putIt
// loses the double quotes at its ends). A findIt that is nowhere in the page
// puts nothing.
void ApplyPageEdit(PageText& page, const PageEdit& edit);

// The option-code tokens ([Bold], [MoneyOrderAccepted], ...): "checked" when
// the code stands in the document's list (a plain substring test, so "11~"
// stands in "211~"), else empty; nothing for any other token.
std::optional<QString> OptionCodeToken(const QString& token, const CreatorRecord& row);
// The value of any token of seller.pro for the row; nothing for a token this
// program does not know, which then stays in the line. A value stands inside
// an attribute of the page, so its double quotes are written "&#34;"; the
// description stands inside a text area, which it must not close.
std::optional<QString> SellPageToken(const QString& token, const CreatorRecord& row,
                                     const SiteLogin& login, const QString& description);

// The address of the category's sell form: section "SellYourItemURL" of
// store 2 from its "http://" (or "https://") with [CATEGORY] replaced, up to
// the next "[" and less the blanks and line ends before it. Empty when the
// section or the address is missing.
QString SellYourItemUrl(const update::RuleStore& seller, const QString& category);

// Every Item line of "eBay Sell Item Page" over the page, its token resolved
// for the row. Returns the number of lines applied; 0 when Items is missing or
// not above 0.
int EditSellPage(PageText& page, const update::RuleStore& seller, const CreatorRecord& row,
                 const SiteLogin& login, const QString& description);

struct SellPageResult {
    QString path;     // ConfigsDir + "ebaysell.html"; empty when none was written
    QString problem;  // why not, for a status line or the command line
};
// PostViaSellPage: the sell form of the row's category fetched, edited and
// written as ebaysell.html (through ebaysellx.html). Failures are told by the
// system's messages ("Could not retrieve eBay Sell Page.  Post failed.").
SellPageResult PostViaSellPage(core::Database& db, const update::RuleStore& rules, qint64 id,
                               core::Ui& ui, const core::NetOptions& net);

}  // namespace lw::creator
