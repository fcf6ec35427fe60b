// SPDX-License-Identifier: GPL-3.0-or-later
// What both routes of posting a listing read: the AuctionCreator row as it
// stands in the database, the seller's sign-in for the site, and the values
// that the direct post and the sell page derive alike from the row (the site
// title, the description with its footer, the category number, the ship-to
// choice, the option codes). It only reads: it never changes a creator row,
// and no value ever enters SQL text.
#pragma once

#include <QHash>
#include <QString>
#include <QVariant>
#include <functional>
#include <optional>

#include "core/store.h"
#include "core/ui_port.h"
#include "update/rules.h"

namespace lw::creator {

// An AuctionCreator row: its columns by name, without regard to case.
class CreatorRecord {
public:
    // The columns a post reads of the user's row ID; nothing when there is
    // no such row.
    static std::optional<CreatorRecord> Read(core::Database& db, const QString& user, qint64 id);
    // The same through a statement of PostRecordSql kept by the caller.
    static std::optional<CreatorRecord> Read(core::Statement& query, const QString& user,
                                             qint64 id);

    void Set(const QString& column, const QVariant& value);
    QVariant Value(const QString& column) const;
    bool IsNull(const QString& column) const;
    // Null reads as the empty text; a number as its shortest text ("7.25", "10").
    QString Text(const QString& column) const;
    // A flag column: a number other than 0, or "True" / "Yes".
    bool Flag(const QString& column) const;
    // The number rule over the column (currency signs and separators go).
    double Number(const QString& column) const;

private:
    QHash<QString, QVariant> m_values;  // by name as set
};

// The query of a post's row: the columns it reads, by user and ID.
const QString& PostRecordSql();

// The seller's sign-in at the site: UserID of the user's UserSites row of
// site 0 and the site password (from the keyring where one keeps it).
struct SiteLogin {
    QString userId;
    QString password;
};
SiteLogin ReadSiteLogin(core::Database& db, const QString& user);

// The site title: the first 45 characters of eBayAuctionTitle, then each
// double quote as "&#34;".
QString PostTitle(const CreatorRecord& row);
// AuctionHTML with the promotion footer appended.
QString DescriptionWithFooter(const CreatorRecord& row, const update::RuleStore& rules);
// "worldwide" for eBayShipAbroadPref, else "siteplusregions" for
// eBayShipUSPlus, else "siteonly".
QString ShipToChoice(const CreatorRecord& row);
// A "~" list of codes with its final "~" (added when missing).
QString CodeList(const CreatorRecord& row, const QString& column);

// The region flags in the order of the post's slots 40 to 48.
inline constexpr const char* kRegionColumns[] = {
    "eBaynorthamerica", "eBayeurope",       "eBayoceania",    "eBayasia",     "eBaysouthamerica",
    "eBayafrica",       "eBaylatinamerica", "eBaymiddleeast", "eBaycaribbean"};

// Writes a page for the browser: path and work are removed, the page is
// written to work and renamed to path. Only its owner may read it, since it
// may hold the site password. False, with the reason, when it cannot.
bool WriteBrowserPage(const QString& path, const QString& work, const QString& text,
                      QString* error);

// A refusal before anything is sent: the message and its title.
struct PostRefusal {
    QString text;
    QString title;
};
// "Auction Creator record error", the title of a row that lacks a value.
QString RecordErrorTitle();
// "No valid eBay auction Category found, post cancelled".
PostRefusal NoCategoryRefusal();

// Turns a category text that is a name into its number; nothing when the user
// gives up.
using CategoryResolver = std::function<std::optional<QString>(const QString& name)>;
// The resolver of the category directory: the name looked up, else the user
// asked for the number.
CategoryResolver DirectoryResolver(core::Database& db, core::Ui& ui);

// The category number of eBayCategory: its leading number when that is 1 or
// more, else the text resolved as a name. Nothing when the column is empty or
// the name cannot be resolved; unresolved is set in the second case.
std::optional<QString> PostCategory(const CreatorRecord& row, const CategoryResolver& resolve,
                                    bool* unresolved = nullptr);

}  // namespace lw::creator
