// SPDX-License-Identifier: GPL-3.0-or-later
// The category directory over eBayCategories, MetaCategories and
// FavoriteCategories. Searches run in SQL over bound patterns, and the rows
// they find are matched again in C++ where SQLite's case rules, which know
// ASCII only, do not serve: "é" finds "É".
#include "creator/category_directory.h"

#include <QFile>
#include <algorithm>

#include "core/rule_text.h"
#include "core/session.h"
#include "core/text.h"

namespace lw::creator {

namespace {

const QString kSelectEntry =
    QStringLiteral("SELECT CategoryNumber, CategoryName, MetaCategoryName FROM eBayCategories ");

CategoryEntry ReadEntry(const core::Statement& row) {
    return {row.Text(0).toLongLong(), row.Text(2), row.Text(1)};
}

std::vector<CategoryEntry> ReadEntries(core::Statement& rows) {
    std::vector<CategoryEntry> entries;
    while (rows.Step()) {
        entries.push_back(ReadEntry(rows));
    }
    return entries;
}

QString NumberText(qint64 number) {
    return QString::number(number);
}

// The leading number of a typed text, as the number rule reads it; 0 for a
// text with none, or with one no category can have.
qint64 TypedNumber(const QString& text) {
    const double value = core::Val(text);
    return value >= 1 && value < 1e18 ? static_cast<qint64>(value) : 0;
}

// A favourite keeps a list text's part before its number.
QString FavoriteName(const QString& listText) {
    return listText.left(listText.lastIndexOf(QStringLiteral(" (")));
}

// A category number as a file may give it: digits alone, above 0, no longer
// than a 64-bit number can hold.
std::optional<qint64> WholeNumber(const QString& text) {
    if (text.isEmpty() || text.size() > 18) {
        return std::nullopt;
    }
    for (const QChar c : text) {
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
    }
    const qint64 number = text.toLongLong();
    return number > 0 ? std::optional<qint64>(number) : std::nullopt;
}

bool HasControlCharacter(const QString& text) {
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control) {
            return true;
        }
    }
    return false;
}

// The categories of a file's text, in order, with the count of lines stepped
// over. A header line is "[" name "]"; a category line is name=number under a
// header. A broken header drops the lines under it until the next good one,
// so that they do not land under the wrong top-level name.
struct ParsedFile {
    std::vector<CategoryEntry> entries;
    int brokenLines = 0;
    bool cut = false;
};

ParsedFile ParseCategoryText(const QString& text) {
    ParsedFile parsed;
    QString group;
    int lines = 0;
    // Blank lines cost nothing and are bounded by the size of the text; the
    // bound on lines counts those that hold something. The text is walked in
    // place: a file of nothing but line ends must not become millions of
    // pieces.
    for (const QStringView line : QStringView(text).tokenize(u"\r\n")) {
        const QStringView trimmed = line.trimmed();
        if (trimmed.isEmpty()) {
            continue;
        }
        if (lines == kMaxCategoryLines) {
            parsed.cut = true;
            break;
        }
        ++lines;
        const bool tooLong = line.size() > kMaxCategoryLineLength;
        if (trimmed.startsWith(u'[')) {
            const QString name = trimmed.endsWith(u']')
                                     ? trimmed.mid(1, trimmed.size() - 2).trimmed().toString()
                                     : QString();
            const bool good = !tooLong && !name.isEmpty() && !HasControlCharacter(name);
            group = good ? name : QString();
            parsed.brokenLines += good ? 0 : 1;
            continue;
        }
        const qsizetype equals = trimmed.indexOf(u'=');
        const QString name = trimmed.left(std::max<qsizetype>(equals, 0)).trimmed().toString();
        const std::optional<qint64> number =
            equals < 0 ? std::nullopt : WholeNumber(trimmed.mid(equals + 1).trimmed().toString());
        if (tooLong || group.isEmpty() || name.isEmpty() || !number || HasControlCharacter(name)) {
            ++parsed.brokenLines;
            continue;
        }
        parsed.entries.push_back({*number, group, name});
    }
    return parsed;
}

qint64 CountCategories(core::Database& db) {
    return db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM eBayCategories"));
}

// Top-level names of the entries that MetaCategories lacks, added in the
// file's order.
QStringList AddTopLevelNames(core::Database& db, const std::vector<CategoryEntry>& entries) {
    QStringList added;
    core::Statement known = db.Prepare(
        QStringLiteral("SELECT 1 FROM MetaCategories WHERE MetaCategoryName = ? LIMIT 1"));
    core::Statement insert =
        db.Prepare(QStringLiteral("INSERT INTO MetaCategories (MetaCategoryName) VALUES (?)"));
    QString previous;
    for (const CategoryEntry& entry : entries) {
        if (entry.metaName == previous) {
            continue;
        }
        previous = entry.metaName;
        known.Reset();
        known.Bind(1, entry.metaName);
        if (known.Step()) {
            continue;
        }
        insert.Reset();
        insert.Bind(1, entry.metaName).Run();
        added << entry.metaName;
    }
    return added;
}

}  // namespace

const QString& CategoryNotAvailable() {
    static const QString notAvailable = QStringLiteral("NA");
    return notAvailable;
}

QString CategoryEntry::FullName() const {
    return metaName + QStringLiteral(": ") + name;
}

QString CategoryEntry::ListText() const {
    return FullName() + QStringLiteral(" (") + NumberText(number) + u')';
}

QString FavoriteCategory::ListText() const {
    return name + QStringLiteral(" (") + NumberText(number) + u')';
}

// ---- Loading -------------------------------------------------------------

CategoryFileLoad ReadCategoryFile(core::Database& db, const QString& path) {
    CategoryFileLoad load;
    QFile file(path);
    if (!file.exists()) {
        return load;
    }
    load.found = true;
    load.rowsBefore = CountCategories(db);
    load.rows = load.rowsBefore;
    if (!file.open(QIODevice::ReadOnly)) {
        load.problem = QStringLiteral("The category file %1 could not be read: %2.")
                           .arg(path, file.errorString());
        return load;
    }
    QByteArray bytes = file.read(kMaxCategoryFileBytes + 1);
    bool cut = false;
    if (bytes.size() > kMaxCategoryFileBytes) {
        // Only whole lines count; the one the bound cuts through is not read.
        bytes.truncate(bytes.lastIndexOf('\n', kMaxCategoryFileBytes - 1) + 1);
        cut = true;
    }
    ParsedFile parsed = ParseCategoryText(core::RuleTextFromBytes(bytes));
    load.brokenLines = parsed.brokenLines;
    load.cut = cut || parsed.cut;
    if (parsed.entries.empty()) {
        load.problem = QStringLiteral(
                           "The category file %1 holds no categories (lines of the "
                           "form name=number under a [top-level name]).")
                           .arg(path);
        return load;
    }
    core::Transaction transaction(db);
    db.Exec(QStringLiteral("DELETE FROM eBayCategories"));
    core::Statement insert =
        db.Prepare(QStringLiteral("INSERT INTO eBayCategories (MetaCategoryName, CategoryName, "
                                  "CategoryNumber) VALUES (?, ?, ?)"));
    for (const CategoryEntry& entry : parsed.entries) {
        insert.Reset();
        insert.BindAll(entry.metaName, entry.name, NumberText(entry.number)).Run();
    }
    load.newTopLevel = AddTopLevelNames(db, parsed.entries);
    transaction.Commit();
    load.loaded = true;
    load.rows = static_cast<qint64>(parsed.entries.size());
    return load;
}

CategoryFileLoad LoadCategoryFile(core::Database& db, core::Ui& ui) {
    const QString path = core::CurrentSession().ConfigsDir + QStringLiteral("category.pro");
    CategoryFileLoad load = ReadCategoryFile(db, path);
    if (!load.found) {
        return load;
    }
    // The file is used up whatever it held: one that cannot be used would
    // otherwise be read and told again at every start.
    QFile::remove(path);
    const QString title = QStringLiteral("Categories Updated");
    if (!load.problem.isEmpty()) {
        ui.Message(load.problem + QStringLiteral(" The categories in your database were kept."),
                   title, core::Icon::Warning);
        return load;
    }
    if (load.cut) {
        ui.Message(QStringLiteral("The category file is longer than %1 lines or %2 MB; the "
                                  "categories after that point were not loaded.")
                       .arg(kMaxCategoryLines)
                       .arg(kMaxCategoryFileBytes / (1024 * 1024)),
                   title, core::Icon::Warning);
    }
    if (load.rows != load.rowsBefore) {
        ui.Message(QString::number(load.rows) +
                       QStringLiteral(" auction categories are now available in your database."),
                   title);
    }
    return load;
}

CategoryFileLoad PrepareCategoryDirectory(core::Database& db, core::Ui& ui) {
    const CategoryFileLoad load = LoadCategoryFile(db, ui);
    if (CountCategories(db) == 0) {
        const QString& shipped = core::CurrentSession().ShippedDir;
        if (!shipped.isEmpty()) {
            ReadCategoryFile(db, shipped + QStringLiteral("/rules/category.pro"));
        }
    }
    return load;
}

// ---- Browsing, searching, looking up ----------------------------------------

QStringList TopLevelNames(core::Database& db) {
    core::Statement rows =
        db.Prepare(QStringLiteral("SELECT MetaCategoryName FROM MetaCategories ORDER BY rowid"));
    QStringList names;
    while (rows.Step()) {
        names << rows.Text(0);
    }
    return names;
}

std::vector<CategoryEntry> CategoriesUnder(core::Database& db, const QString& metaName) {
    core::Statement rows =
        db.Prepare(kSelectEntry + QStringLiteral("WHERE MetaCategoryName = ? ORDER BY rowid"));
    rows.Bind(1, metaName);
    return ReadEntries(rows);
}

namespace {

bool IsAscii(const QString& text) {
    for (const QChar c : text) {
        if (c.unicode() > 0x7f) {
            return false;
        }
    }
    return true;
}

// A LIKE pattern that finds the word as plain text anywhere: its own "%",
// "_" and the escape character stand for themselves. SQLite's LIKE folds the
// case of ASCII letters only, so any other character stands as "_", one
// character of any kind: the pattern then finds what the word finds, and a
// few rows more, which the search drops.
QString ContainsPattern(const QString& word) {
    QString pattern = QStringLiteral("%");
    for (qsizetype i = 0; i < word.size(); ++i) {
        const QChar c = word.at(i);
        if (c == u'\\' || c == u'%' || c == u'_') {
            pattern += u'\\';
            pattern += c;
        } else if (c.unicode() > 0x7f) {
            pattern += u'_';
            i += c.isHighSurrogate() ? 1 : 0;  // one character, two halves
        } else {
            pattern += c;
        }
    }
    return pattern + u'%';
}

bool Holds(const QString& column, const QStringList& terms, bool allTerms) {
    for (const QString& term : terms) {
        if (column.contains(term, Qt::CaseInsensitive) != allTerms) {
            return !allTerms;
        }
    }
    return allTerms;
}

// "(m LIKE ?1 AND m LIKE ?2) OR (n LIKE ?1 AND n LIKE ?2)", or with OR
// throughout: SQLite reads only the rows that match. Words beyond ASCII are
// then matched again here by Unicode's case rules.
std::vector<CategoryEntry> SearchTerms(core::Database& db, const QStringList& terms,
                                       bool allTerms) {
    const QString join = allTerms ? QStringLiteral(" AND ") : QStringLiteral(" OR ");
    QStringList meta;
    QStringList name;
    for (int i = 1; i <= terms.size(); ++i) {
        const QString like = QStringLiteral(" LIKE ?%1 ESCAPE '\\'").arg(i);
        meta << QStringLiteral("MetaCategoryName") + like;
        name << QStringLiteral("CategoryName") + like;
    }
    core::Statement rows =
        db.Prepare(kSelectEntry + QStringLiteral("WHERE (") + meta.join(join) +
                   QStringLiteral(") OR (") + name.join(join) + QStringLiteral(") ORDER BY rowid"));
    for (int i = 0; i < terms.size(); ++i) {
        rows.Bind(i + 1, ContainsPattern(terms.at(i)));
    }
    std::vector<CategoryEntry> matches = ReadEntries(rows);
    if (!IsAscii(terms.join(QString()))) {
        std::erase_if(matches, [&](const CategoryEntry& entry) {
            return !Holds(entry.metaName, terms, allTerms) && !Holds(entry.name, terms, allTerms);
        });
    }
    return matches;
}

}  // namespace

CategorySearch SearchCategories(core::Database& db, const QString& text, bool allTerms) {
    CategorySearch search;
    const QString caption = QStringLiteral("Search Categories: ");
    const QString typed = text.left(kMaxSearchText).trimmed();
    if (core::Val(typed) > 0) {
        search.byNumber = true;
        core::Statement rows =
            db.Prepare(kSelectEntry + QStringLiteral("WHERE CategoryNumber = ? ORDER BY rowid"));
        rows.Bind(1, typed);
        search.matches = ReadEntries(rows);
    } else {
        search.terms = typed.split(u' ', Qt::SkipEmptyParts).mid(0, kMaxSearchTerms);
        if (!search.terms.isEmpty()) {
            search.matches = SearchTerms(db, search.terms, allTerms);
        }
    }
    const size_t found = search.matches.size();
    if (found == 0) {
        search.caption = caption + QStringLiteral("No Matches Found");
    } else if (search.byNumber && found == 1) {
        search.caption = caption + QStringLiteral("Match found");
    } else {
        search.caption = caption + QString::number(found) + QStringLiteral(" matches found");
    }
    return search;
}

qint64 FindCategoryNumber(core::Database& db, const QString& fullName) {
    core::Statement row = db.Prepare(
        QStringLiteral("SELECT CategoryNumber FROM eBayCategories WHERE ifnull(MetaCategoryName, "
                       "'') || ': ' || ifnull(CategoryName, '') = ? COLLATE BINARY ORDER BY "
                       "rowid LIMIT 1"));
    row.Bind(1, fullName);
    return row.Step() ? row.Text(0).toLongLong() : -1;
}

std::optional<CategoryEntry> FindCategory(core::Database& db, qint64 number) {
    core::Statement row = db.Prepare(
        kSelectEntry + QStringLiteral("WHERE CategoryNumber = ? ORDER BY rowid LIMIT 1"));
    row.Bind(1, NumberText(number));
    if (!row.Step()) {
        return std::nullopt;
    }
    return ReadEntry(row);
}

QString CategoryFullName(core::Database& db, qint64 number) {
    const std::optional<CategoryEntry> entry = FindCategory(db, number);
    return entry ? entry->FullName() : CategoryNotAvailable();
}

qint64 ResolveCategory(core::Database& db, core::Ui& ui, const QString& text) {
    QString name = text.trimmed();
    if (name.endsWith(u')') && name.contains(u'(')) {
        name = name.left(name.lastIndexOf(u'(')).trimmed();
    }
    if (const qint64 number = FindCategoryNumber(db, name); number != -1) {
        return number;
    }
    const QString enterTitle = QStringLiteral("Enter Category Number");
    QString question = QStringLiteral("Unable to locate category number for: ") + name +
                       QStringLiteral("\r\n\r\nPlease enter category number:");
    // Each round waits on the user, who ends it; the bound only keeps a
    // front that always answers the same from asking for ever.
    for (int round = 0; round < 100; ++round) {
        const std::optional<QString> answer = ui.Prompt(question, enterTitle, QString());
        const QString typed = answer.value_or(QString()).trimmed();
        if (typed.isEmpty()) {
            return -1;
        }
        const QString fullName = CategoryFullName(db, TypedNumber(typed));
        if (fullName == CategoryNotAvailable()) {
            if (ui.Ask(QStringLiteral("Category number ") + typed +
                           QStringLiteral(" not found.  Would you like to enter another number?"),
                       QStringLiteral("Category Not Found"), core::Buttons::YesNo,
                       core::Answer::No) != core::Answer::Yes) {
                return -1;
            }
        } else if (ui.Ask(QStringLiteral("Found category: ") + fullName +
                              QStringLiteral(".  Is this correct?"),
                          QStringLiteral("Category Found"), core::Buttons::YesNo,
                          core::Answer::Yes) == core::Answer::Yes) {
            return FindCategoryNumber(db, fullName);
        }
        question = QStringLiteral("Enter category number for: ") + name + u':';
    }
    return -1;
}

// ---- Favourites -------------------------------------------------------------

std::vector<FavoriteCategory> FavoriteCategories(core::Database& db, const QString& user) {
    core::Statement rows = db.Prepare(
        QStringLiteral("SELECT CategoryName, CategoryNumber FROM FavoriteCategories WHERE "
                       "UserName = ? ORDER BY rowid"));
    rows.Bind(1, user);
    std::vector<FavoriteCategory> favorites;
    while (rows.Step()) {
        favorites.push_back({rows.Text(0), rows.Text(1).toLongLong()});
    }
    return favorites;
}

bool AddFavoriteCategory(core::Database& db, const QString& user, const QString& listText,
                         qint64 number) {
    core::Statement known = db.Prepare(
        QStringLiteral("SELECT 1 FROM FavoriteCategories WHERE UserName = ? AND CategoryNumber = "
                       "? LIMIT 1"));
    known.BindAll(user, NumberText(number));
    if (known.Step()) {
        return false;
    }
    db.Prepare(QStringLiteral("INSERT INTO FavoriteCategories (UserName, CategoryName, "
                              "CategoryNumber) VALUES (?, ?, ?)"))
        .BindAll(user, FavoriteName(listText), NumberText(number))
        .Run();
    return true;
}

void RemoveFavoriteCategory(core::Database& db, const QString& user, qint64 number) {
    db.Prepare(QStringLiteral(
                   "DELETE FROM FavoriteCategories WHERE CategoryNumber = ? AND UserName = ?"))
        .BindAll(NumberText(number), user)
        .Run();
}

// ---- The category browser and the creator's category box --------------------

QString CategoryBrowser::Caption() {
    return QStringLiteral("Browse eBay Categories");
}

void CategoryBrowser::Open(core::Database& db, const QString& user) {
    lstCategoryNames = TopLevelNames(db);
    lstCategorys.clear();
    for (const FavoriteCategory& favorite : FavoriteCategories(db, user)) {
        lstCategorys.push_back({favorite.ListText(), favorite.number});
    }
    ShowTopLevel(db, 0);
}

void CategoryBrowser::ShowTopLevel(core::Database& db, int row) {
    lstCategoryItems.clear();
    categoryNamesIndex = row >= 0 && row < lstCategoryNames.size() ? row : -1;
    if (categoryNamesIndex < 0) {
        return;
    }
    for (const CategoryEntry& entry : CategoriesUnder(db, lstCategoryNames.at(row))) {
        lstCategoryItems.push_back({entry.name, entry.number});
    }
}

void CategoryBrowser::Choose(const CategoryEntry& entry) {
    txtSelCal = entry.ListText();
    txtSelCalNumber = QString::number(entry.number);
    txtHiddenCategoryName = entry.FullName();
}

void CategoryBrowser::ChooseItem(int row) {
    if (categoryNamesIndex < 0 || row < 0 || static_cast<size_t>(row) >= lstCategoryItems.size()) {
        return;
    }
    const CategoryListRow& item = lstCategoryItems.at(static_cast<size_t>(row));
    Choose({item.number, lstCategoryNames.at(categoryNamesIndex), item.text});
}

void CategoryBrowser::Search(core::Database& db, const QString& text) {
    const CategorySearch search = SearchCategories(db, text, chkAndSearch);
    lstSearchTerms = search.terms;
    searchCaption = search.caption;
    m_matches = search.matches;
    lstSearchCategories.clear();
    for (const CategoryEntry& entry : m_matches) {
        lstSearchCategories.push_back({entry.ListText(), entry.number});
    }
    searchCategoriesIndex = -1;
    ChooseMatch(0);
}

void CategoryBrowser::ChooseMatch(int row) {
    if (row < 0 || static_cast<size_t>(row) >= m_matches.size()) {
        return;
    }
    searchCategoriesIndex = row;
    Choose(m_matches.at(static_cast<size_t>(row)));
}

bool CategoryBrowser::AddChosenToFavorites(core::Database& db, const QString& user) {
    const qint64 number = txtSelCalNumber.toLongLong();
    if (txtSelCal.isEmpty() || !AddFavoriteCategory(db, user, txtSelCal, number)) {
        return false;
    }
    lstCategorys.push_back({FavoriteCategory{FavoriteName(txtSelCal), number}.ListText(), number});
    categorysIndex = static_cast<int>(lstCategorys.size()) - 1;
    return true;
}

std::optional<CategoryListRow> CategoryBrowser::Selection() const {
    if (txtSelCal.isEmpty()) {
        return std::nullopt;
    }
    return CategoryListRow{txtSelCal, txtSelCalNumber.toLongLong()};
}

CategoryNumberEntry EnterCategoryNumber(core::Database& db, const QString& typed,
                                        bool hasSelection) {
    CategoryNumberEntry entry;
    const QString number = typed.trimmed();
    if (number.isEmpty()) {
        if (!hasSelection) {
            entry.message = QStringLiteral("Please type in category number and then hit Enter");
            entry.title = QStringLiteral("Error: No Category Number");
        }
        return entry;
    }
    if (const std::optional<CategoryEntry> found = FindCategory(db, TypedNumber(number))) {
        entry.row = CategoryListRow{found->ListText(), found->number};
        return entry;
    }
    entry.message = QStringLiteral("Category #") + number +
                    QStringLiteral(" not found.  Please enter another category number.");
    entry.title = QStringLiteral("Category Not Found");
    return entry;
}

}  // namespace lw::creator
