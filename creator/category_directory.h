// SPDX-License-Identifier: GPL-3.0-or-later
// The site's listing categories kept in the database: loading them from
// category.pro, browsing them by top-level name, searching them, the user's
// favourites, and turning a category's name into its number and back. The
// category browser of the general dialog is described here as data; nothing
// here draws. A category file never crashes or stalls the load: its lines are
// read up to a bound and a broken line is stepped over. No value ever enters
// SQL text.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "core/store.h"
#include "core/ui_port.h"

namespace lw::creator {

// The bounds of a category file: what lies beyond them is not read. The
// lines counted are those that are not blank.
inline constexpr qint64 kMaxCategoryFileBytes = 16 * 1024 * 1024;
inline constexpr int kMaxCategoryLines = 200000;
// A longer line is a broken one.
inline constexpr int kMaxCategoryLineLength = 1000;
// What a search reads of the typed text, and how many of its words it uses.
inline constexpr int kMaxSearchText = 1000;
inline constexpr int kMaxSearchTerms = 16;

// "NA": the full name of a number that has no row.
const QString& CategoryNotAvailable();

// One row of eBayCategories.
struct CategoryEntry {
    qint64 number = 0;
    QString metaName;  // the top-level name, MetaCategoryName
    QString name;      // CategoryName

    // MetaCategoryName ": " CategoryName
    QString FullName() const;
    // The full name " (" number ")": the text of a category in the lists.
    QString ListText() const;
};

// A row of a list box: its text, and the category number as its item data.
struct CategoryListRow {
    QString text;
    qint64 number = 0;
};

// ---- Loading -------------------------------------------------------------

struct CategoryFileLoad {
    bool found = false;       // the file was there
    bool loaded = false;      // eBayCategories now holds the file's categories
    qint64 rowsBefore = 0;    // rows of eBayCategories before the load
    qint64 rows = 0;          // rows of eBayCategories after it
    int brokenLines = 0;      // lines stepped over
    bool cut = false;         // the file went beyond the bounds; its rest was not read
    QStringList newTopLevel;  // top-level names the file added to MetaCategories
    QString problem;          // why nothing was loaded; empty when it was
};

// Replaces the rows of eBayCategories with the categories of the file at
// path, in the file's order, in one transaction; a top-level name the browser
// does not know yet is added to MetaCategories. A file that cannot be read or
// holds no category at all leaves the rows as they are. Neither removes the
// file nor tells anyone.
CategoryFileLoad ReadCategoryFile(core::Database& db, const QString& path);

// category.pro in ConfigsDir, when it is there: read as above, then removed,
// and the count of categories told when it changed ("... auction categories
// are now available in your database."). A file that could not be used is
// told too.
CategoryFileLoad LoadCategoryFile(core::Database& db, core::Ui& ui);

// The start-up step: LoadCategoryFile, then, while eBayCategories is still
// empty (a new database), the shipped rules/category.pro, silently and left
// in place. Gives what LoadCategoryFile did.
CategoryFileLoad PrepareCategoryDirectory(core::Database& db, core::Ui& ui);

// ---- Browsing, searching, looking up ----------------------------------------

// The top-level names of MetaCategories, in their order.
QStringList TopLevelNames(core::Database& db);
// The categories under one top-level name, in the file's order.
std::vector<CategoryEntry> CategoriesUnder(core::Database& db, const QString& metaName);

struct CategorySearch {
    bool byNumber = false;  // the text was taken as a category number
    QStringList terms;      // lstSearchTerms: the words searched for
    std::vector<CategoryEntry> matches;
    QString caption;  // the frame caption, "Search Categories: ..."
};

// A text whose leading number is above 0 is looked up as a category number.
// Any other text is split at blanks into words, matched without regard to
// case as plain text (a quote, "%" or "_" is an ordinary character). With
// allTerms every word must stand in the top-level name, or every word in the
// category name; without it any word in either will do.
CategorySearch SearchCategories(core::Database& db, const QString& text, bool allTerms);

// The number of the first row whose full name is exactly fullName; -1 when
// none is.
qint64 FindCategoryNumber(core::Database& db, const QString& fullName);
// The full name of the first row with the number; "NA" when none has it.
QString CategoryFullName(core::Database& db, qint64 number);
std::optional<CategoryEntry> FindCategory(core::Database& db, qint64 number);

// A full name, or a list text with its number in brackets, to a number. When
// the name is unknown the user is asked for the number and asked to confirm
// the category it finds. -1 when the user gives up.
qint64 ResolveCategory(core::Database& db, core::Ui& ui, const QString& text);

// ---- Favourites -------------------------------------------------------------

struct FavoriteCategory {
    QString name;  // CategoryName as the favourite keeps it
    qint64 number = 0;

    // CategoryName " (" number ")": the text of lstCategorys.
    QString ListText() const;
};

// The user's favourites in the order they were added.
std::vector<FavoriteCategory> FavoriteCategories(core::Database& db, const QString& user);
// Keeps a list text's part before its number as the favourite's name. False
// when the user has the number among the favourites already.
bool AddFavoriteCategory(core::Database& db, const QString& user, const QString& listText,
                         qint64 number);
void RemoveFavoriteCategory(core::Database& db, const QString& user, qint64 number);

// ---- The category browser and the creator's category box --------------------

// Form 2 of the general dialog: what each of its controls holds.
struct CategoryBrowser {
    static QString Caption();  // "Browse eBay Categories"

    QStringList lstCategoryNames;
    int categoryNamesIndex = -1;
    std::vector<CategoryListRow> lstCategoryItems;  // CategoryName, number
    std::vector<CategoryListRow> lstCategorys;      // favourites
    int categorysIndex = -1;
    std::vector<CategoryListRow> lstSearchCategories;
    int searchCategoriesIndex = -1;
    QStringList lstSearchTerms;
    bool chkAndSearch = false;
    QString searchCaption;  // the search frame's caption
    QString txtSelCal;      // the chosen category's list text
    QString txtSelCalNumber;
    QString txtHiddenCategoryName;  // the chosen category's full name

    // The dialog opens: top-level names with the first chosen and its
    // categories shown, and the user's favourites.
    void Open(core::Database& db, const QString& user);
    // lstCategoryNames is clicked.
    void ShowTopLevel(core::Database& db, int row);
    // A category of the browse list is chosen.
    void ChooseItem(int row);
    // cmdSearchCategories: searches the text typed in lstSearchCategories;
    // the first match is chosen.
    void Search(core::Database& db, const QString& text);
    // A match of the search list is chosen.
    void ChooseMatch(int row);
    // cmdAddToFavorites and cmdAddToFavorites2: the chosen category joins the
    // favourites and is selected there. False when nothing is chosen or it is
    // a favourite already.
    bool AddChosenToFavorites(core::Database& db, const QString& user);
    // cmdSelectCategory: the row for the creator's cmbEbayCategory; nothing
    // when no category is chosen.
    std::optional<CategoryListRow> Selection() const;

private:
    void Choose(const CategoryEntry& entry);
    std::vector<CategoryEntry> m_matches;  // the rows behind lstSearchCategories
};

// What the creator's category box does with a number typed and Enter.
struct CategoryNumberEntry {
    std::optional<CategoryListRow> row;  // the list text row to add and select
    QString message;                     // else what to tell, empty for nothing
    QString title;
};
CategoryNumberEntry EnterCategoryNumber(core::Database& db, const QString& typed,
                                        bool hasSelection);

}  // namespace lw::creator
