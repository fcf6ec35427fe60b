// SPDX-License-Identifier: GPL-3.0-or-later
// The category directory: loading category.pro (broken lines stepped over,
// the bounds of a huge file, a file of nothing), the shipped file against the
// top-level names of a new database, browsing, searching with all or any of
// the words (quotes, "%", "_" and letters beyond ASCII as plain text), the
// look-ups by name and number, the questions of ResolveCategory, the
// favourites, and what the category browser and the creator's box show.
#include <gtest/gtest.h>

#include <QFile>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/store.h"
#include "creator/category_directory.h"
#include "tests/support/store_test.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

using lw::core::Answer;
using namespace lw::creator;

const QString kUser = QStringLiteral("Pat O'Brien");

// Names that a search must take as plain text, and characters beyond ASCII
// in both a top-level name and a category name.
const QByteArray kDirectory =
    "[Antiques]\r\n"
    "Silver=102\r\n"
    "Lamps & Lighting=110\r\n"
    "Cloisonn\xc3\xa9 & Enamel=120\r\n"
    "\r\n"
    "[Collectibles]\r\n"
    "Lamps & Lighting=418\r\n"
    "Children's Toys=430\r\n"
    "100% Cotton=431\r\n"
    "Snake_Case=432\r\n"
    "Back\\Slash=434\r\n"
    "\r\n"
    "[Sports]\r\n"
    "Trading Cards (Sports)=1116\r\n"
    "Silver=103\r\n"
    "Music\xf0\x9f\x8e\xb5"  // a character of two UTF-16 halves
    "Boxes=435\r\n"
    "\r\n"
    "[\xc3\x89POQUE]\r\n"
    "Gilded Age=1401\r\n";

class CategoryDirectoryTest : public lw::test::StoreTest {
protected:
    QString CategoryFile() const {
        return lw::core::CurrentSession().ConfigsDir + QStringLiteral("category.pro");
    }
    CategoryFileLoad Load(const QByteArray& bytes) {
        m_root.Write(CategoryFile().mid(m_root.Path().size() + 1), bytes);
        return LoadCategoryFile(*m_db, m_ui);
    }
    // Every row as its list text, top-level names in the browser's order.
    QStringList Rows() {
        QStringList rows;
        for (const QString& meta : TopLevelNames(*m_db)) {
            for (const CategoryEntry& entry : CategoriesUnder(*m_db, meta)) {
                rows << entry.ListText();
            }
        }
        return rows;
    }
};

std::vector<qint64> Numbers(const std::vector<CategoryEntry>& entries) {
    std::vector<qint64> numbers;
    for (const CategoryEntry& entry : entries) {
        numbers.push_back(entry.number);
    }
    return numbers;
}

}  // namespace

TEST_F(CategoryDirectoryTest, AFileLoadsItsGoodLinesAndStepsOverTheBrokenOnes) {
    struct Case {
        const char* name;
        QByteArray file;
        QStringList rows;
        int broken;
    };
    const Case cases[] = {
        {"line ends of any kind, blanks around names, numbers and headers",
         "[Books]\nFiction=201\r\n\r\n  [ Coins ]  \rUS Coins = 301 \n  Paper Money=304\n",
         {QStringLiteral("Books: Fiction (201)"), QStringLiteral("Coins: US Coins (301)"),
          QStringLiteral("Coins: Paper Money (304)")},
         0},
        {"broken lines, each stepped over",
         "Fiction=201\n"  // before any top-level name
         "[Books]\n"
         "no equals sign\n"
         "=202\n"        // no name
         "Cookbooks=\n"  // no number
         "Poetry=213x\n"
         "Comics=0\n"
         "Travel=-215\n"
         "History=210=1\n"
         "Tab\tName=216\n"
         "Huge=1234567890123456789\n"  // more digits than a number holds
         "Magazines=205\n"
         "Long=123456789012345678\n",
         {QStringLiteral("Books: Magazines (205)"),
          QStringLiteral("Books: Long (123456789012345678)")},
         10},
        {"a broken header drops the lines under it, not those of the next",
         "[Books\nFiction=201\n[]\nPoetry=213\n[Bad\tName]\nGems=307\n[Coins]\nBullion=306\n",
         {QStringLiteral("Coins: Bullion (306)")},
         6},
        {"a line longer than the bound",
         "[Books]\n" + QByteArray(kMaxCategoryLineLength, 'x') + "=207\nHistory=210\n",
         {QStringLiteral("Books: History (210)")},
         1},
        {"bytes that are not UTF-8 read as Latin-1",
         "[Antiques]\nCloisonn\xe9=120\n",
         {QStringLiteral("Antiques: Cloisonn\u00e9 (120)")},
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const CategoryFileLoad load = Load(c.file);
        EXPECT_TRUE(load.loaded);
        EXPECT_EQ(load.brokenLines, c.broken);
        EXPECT_FALSE(load.cut);
        EXPECT_EQ(Rows(), c.rows);
        EXPECT_FALSE(QFile::exists(CategoryFile()));
    }
}

TEST_F(CategoryDirectoryTest, TheCountIsToldWhenItChangesAndAFileOfNothingKeepsTheRows) {
    const QString title = QStringLiteral("Categories Updated");
    // No file: nothing happens at all.
    EXPECT_FALSE(LoadCategoryFile(*m_db, m_ui).found);
    EXPECT_TRUE(m_ui.History().empty());

    Load("[Books]\nFiction=201\nPoetry=213\n");
    EXPECT_EQ(
        m_ui.Messages(),
        QStringList{QStringLiteral("2 auction categories are now available in your database.")});
    EXPECT_EQ(m_ui.Titles(), QStringList{title});

    // The same count again says nothing, though the rows are the new ones.
    Load("[Books]\nHistory=210\nTravel=215\n");
    EXPECT_EQ(m_ui.Messages().size(), 1);
    EXPECT_EQ(Rows(), (QStringList{QStringLiteral("Books: History (210)"),
                                   QStringLiteral("Books: Travel (215)")}));

    // Nothing at all, blanks, a web page, and more line ends than the bound on bytes.
    for (const QByteArray& nothing :
         {QByteArray(), QByteArray("\r\n \r\n"), QByteArray("<html>Sign in first</html>\n"),
          QByteArray(kMaxCategoryFileBytes + 10, '\n')}) {
        const CategoryFileLoad load = Load(nothing);
        EXPECT_FALSE(load.loaded);
        EXPECT_FALSE(load.problem.isEmpty());
        EXPECT_FALSE(QFile::exists(CategoryFile()));
        EXPECT_TRUE(m_ui.Messages().last().endsWith(
            QStringLiteral("The categories in your database were kept.")));
        EXPECT_EQ(Rows().size(), 2);
    }
}

TEST_F(CategoryDirectoryTest, AHugeFileIsReadUpToItsBoundsAndSaysSo) {
    struct Case {
        const char* name;
        int lines;
        int lineLength;  // of each category line, its line end included
        qint64 rowsRead;
    };
    const int byteLines = static_cast<int>(kMaxCategoryFileBytes / 900) + 500;
    const Case cases[] = {
        {"more lines than the bound", kMaxCategoryLines + 50, 12, kMaxCategoryLines - 1},
        {"more bytes than the bound", byteLines, 900, (kMaxCategoryFileBytes - 8) / 900},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QByteArray file = "[Books]\n";  // 8 bytes, one line
        file.reserve(static_cast<qsizetype>(c.lines) * c.lineLength + 8);
        for (int i = 1; i <= c.lines; ++i) {
            const QByteArray number = QByteArray::number(100000 + i);
            file += QByteArray(c.lineLength - number.size() - 2, 'n') + '=' + number + '\n';
        }
        const CategoryFileLoad load = Load(file);
        EXPECT_TRUE(load.cut);
        EXPECT_EQ(load.brokenLines, 0);
        EXPECT_EQ(load.rows, c.rowsRead);
        EXPECT_EQ(m_db->ScalarInt(QStringLiteral("SELECT COUNT(*) FROM eBayCategories")),
                  c.rowsRead);
        EXPECT_TRUE(m_ui.Messages().contains(
            QStringLiteral("The category file is longer than %1 lines or 16 MB; the categories "
                           "after that point were not loaded.")
                .arg(kMaxCategoryLines)));
    }
}

TEST_F(CategoryDirectoryTest, ANewDatabaseTakesTheShippedFileUnderItsOwnTopLevelNames) {
    const QStringList seeded = TopLevelNames(*m_db);
    const CategoryFileLoad load = PrepareCategoryDirectory(*m_db, m_ui);
    EXPECT_FALSE(load.found);
    EXPECT_TRUE(m_ui.History().empty());
    // Every top-level name of the shipped file is one the browser lists already.
    EXPECT_EQ(TopLevelNames(*m_db), seeded);
    const QByteArray shipped =
        lw::test::ReadAll(lw::test::SourceDir() + QStringLiteral("/rules/category.pro"));
    EXPECT_EQ(Rows().size(), shipped.count('='));
    for (const QString& meta : seeded) {
        EXPECT_FALSE(CategoriesUnder(*m_db, meta).empty()) << meta.toStdString();
    }
    EXPECT_TRUE(QFile::exists(lw::core::CurrentSession().ShippedDir +
                              QStringLiteral("/rules/category.pro")));

    // Once the database has categories, only a downloaded file changes them.
    Load("[Books]\nFiction=201\n");
    PrepareCategoryDirectory(*m_db, m_ui);
    EXPECT_EQ(Rows(), QStringList{QStringLiteral("Books: Fiction (201)")});
}

TEST_F(CategoryDirectoryTest, SearchFindsWordsAsPlainTextInOneColumnOrByNumber) {
    Load(kDirectory);
    struct Case {
        const char* text;
        bool all;
        std::vector<qint64> found;
        const char* caption;
        bool byNumber = false;
    };
    const Case cases[] = {
        {"lamps", false, {110, 418}, "2 matches found"},
        {"LAMPS lighting", true, {110, 418}, "2 matches found"},
        // All words must stand in the top-level name or all in the category name.
        {"antiques lamps", true, {}, "No Matches Found"},
        {"antiques lamps", false, {102, 110, 120, 418}, "4 matches found"},
        {"children's", false, {430}, "1 matches found"},
        {"' OR 1=1 --", true, {}, "No Matches Found"},
        {"%", false, {431}, "1 matches found"},
        {"l%g", false, {}, "No Matches Found"},
        {"a_e", false, {}, "No Matches Found"},
        {"e_c", false, {432}, "1 matches found"},
        {"\\", false, {434}, "1 matches found"},
        {"(sports)", false, {1116}, "1 matches found"},
        // Letters beyond ASCII, in either case, in a category or a top-level name.
        {"CLOISONN\u00c9", false, {120}, "1 matches found"},
        {"\u00e9poque gilded", false, {1401}, "1 matches found"},
        {"\u00e9poque gilded", true, {}, "No Matches Found"},
        {"C\U0001f3b5b", true, {435}, "1 matches found"},
        // A leading number above 0 searches by number.
        {" 102 ", false, {102}, "Match found", true},
        {"999", true, {}, "No Matches Found", true},
        {"102 silver", false, {}, "No Matches Found", true},
        {"   ", false, {}, "No Matches Found"},
    };
    for (const Case& c : cases) {
        const QString text = QString::fromUtf8(c.text);
        SCOPED_TRACE(c.text);
        const CategorySearch search = SearchCategories(*m_db, text, c.all);
        EXPECT_EQ(Numbers(search.matches), c.found);
        EXPECT_EQ(search.caption,
                  QString(QStringLiteral("Search Categories: ") + QString::fromUtf8(c.caption)));
        EXPECT_EQ(search.byNumber, c.byNumber);
        EXPECT_EQ(search.terms, c.byNumber ? QStringList() : text.split(u' ', Qt::SkipEmptyParts));
    }
    QStringList many;
    for (int i = 0; i < kMaxSearchTerms + 5; ++i) {
        many << QStringLiteral("w%1").arg(i);
    }
    EXPECT_EQ(SearchCategories(*m_db, many.join(u' '), false).terms, many.mid(0, kMaxSearchTerms));
    // Only so much of the text is read: here the word's last letter is not.
    EXPECT_EQ(SearchCategories(*m_db, QString(kMaxSearchText - 5, u' ') + u"silver", true).terms,
              QStringList{QStringLiteral("silve")});
}

TEST_F(CategoryDirectoryTest, BrowsingListsTheCategoriesAndNamesAndNumbersTurnIntoEachOther) {
    const QStringList seeded = TopLevelNames(*m_db);
    const CategoryFileLoad load = Load(kDirectory);
    // A top-level name new to the browser joins its list, after the others.
    EXPECT_EQ(load.newTopLevel, QStringList{QStringLiteral("\u00c9POQUE")});
    EXPECT_EQ(TopLevelNames(*m_db), seeded + load.newTopLevel);
    EXPECT_EQ(Numbers(CategoriesUnder(*m_db, QStringLiteral("collectibles"))),
              (std::vector<qint64>{418, 430, 431, 432, 434}));
    EXPECT_TRUE(CategoriesUnder(*m_db, QStringLiteral("Art")).empty());

    const struct {
        const char* fullName;
        qint64 number;
    } byName[] = {
        {"Antiques: Silver", 102},
        {"Sports: Silver", 103},
        {"Sports: Trading Cards (Sports)", 1116},
        {"antiques: silver", -1},  // exactly, case and all
        {"Antiques:Silver", -1},
        {"Silver", -1},
        {"", -1},
    };
    for (const auto& c : byName) {
        EXPECT_EQ(FindCategoryNumber(*m_db, QString::fromUtf8(c.fullName)), c.number) << c.fullName;
    }
    const struct {
        qint64 number;
        const char* fullName;
    } byNumber[] = {
        {418, "Collectibles: Lamps & Lighting"},
        {1401, "\u00c9POQUE: Gilded Age"},
        {999, "NA"},
        {0, "NA"},
        {-1, "NA"},
    };
    for (const auto& c : byNumber) {
        EXPECT_EQ(CategoryFullName(*m_db, c.number), QString::fromUtf8(c.fullName)) << c.number;
    }
}

TEST_F(CategoryDirectoryTest, ResolveCategoryFindsTheNameOrAsksForTheNumber) {
    Load("[Antiques]\nSilver=102\nLamps=110\nSilver=103\n");
    const QString unknown = QStringLiteral("Nowhere: Else");
    const QString first = QStringLiteral(
        "prompt|Unable to locate category number for: Nowhere: Else\r\n\r\nPlease enter category "
        "number:|Enter Category Number");
    const QString again =
        QStringLiteral("prompt|Enter category number for: Nowhere: Else:|Enter Category Number");
    auto found = [](const char* name) {
        return QStringLiteral("ask|Found category: %1.  Is this correct?|Category Found")
            .arg(QLatin1String(name));
    };
    const QString missing = QStringLiteral(
        "ask|Category number 999 not found.  Would you like to enter another number?|Category "
        "Not Found");
    struct Case {
        const char* name;
        QString text;
        std::vector<std::optional<QString>> prompts;
        std::vector<Answer> answers;
        qint64 number;
        QStringList shown;
    };
    const Case cases[] = {
        {"a list text with its number", QStringLiteral(" Antiques: Lamps (110) "), {}, {}, 110, {}},
        {"a full name", QStringLiteral("Antiques: Silver"), {}, {}, 102, {}},
        {"a number typed and confirmed",
         unknown,
         {QStringLiteral("110")},
         {Answer::Yes},
         110,
         {first, found("Antiques: Lamps")}},
        {"an unknown number, then a known one",
         unknown,
         {QStringLiteral("999"), QStringLiteral("110")},
         {Answer::Yes, Answer::Yes},
         110,
         {first, missing, again, found("Antiques: Lamps")}},
        {"an unknown number, and no other",
         unknown,
         {QStringLiteral("999")},
         {Answer::No},
         -1,
         {first, missing}},
        {"the category found is not the one",
         unknown,
         {QStringLiteral("110"), std::nullopt},
         {Answer::No},
         -1,
         {first, found("Antiques: Lamps"), again}},
        {"cancelled at once", unknown, {std::nullopt}, {}, -1, {first}},
        {"an empty answer", unknown, {QStringLiteral("  ")}, {}, -1, {first}},
        // The number comes from the name found, so a name that two rows share
        // gives the first row's number.
        {"a number of a name that two rows share",
         unknown,
         {QStringLiteral("103")},
         {Answer::Yes},
         102,
         {first, found("Antiques: Silver")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        lw::test::ScriptedUi ui;
        for (const auto& prompt : c.prompts) {
            ui.ScriptPrompt(prompt);
        }
        for (const Answer answer : c.answers) {
            ui.ScriptAnswer(answer);
        }
        EXPECT_EQ(ResolveCategory(*m_db, ui, c.text), c.number);
        QStringList shown;
        for (const auto& s : ui.History()) {
            shown << s.kind + u'|' + s.text + u'|' + s.title;
        }
        EXPECT_EQ(shown, c.shown);
    }
}

TEST_F(CategoryDirectoryTest, FavouritesAreKeptOncePerUserUnderTheirListName) {
    const QString other = QStringLiteral("Other");
    EXPECT_TRUE(AddFavoriteCategory(*m_db, kUser, QStringLiteral("Antiques: Silver (102)"), 102));
    EXPECT_FALSE(AddFavoriteCategory(*m_db, kUser, QStringLiteral("Silver (102)"), 102));
    EXPECT_TRUE(AddFavoriteCategory(*m_db, kUser,
                                    QStringLiteral("Sports: Trading Cards (Sports) (1116)"), 1116));
    EXPECT_TRUE(AddFavoriteCategory(*m_db, other, QStringLiteral("Antiques: Silver (102)"), 102));
    EXPECT_TRUE(AddFavoriteCategory(*m_db, kUser, QStringLiteral("Lamps"), 110));

    auto texts = [this](const QString& user) {
        QStringList list;
        for (const FavoriteCategory& favorite : FavoriteCategories(*m_db, user)) {
            list << favorite.ListText();
        }
        return list;
    };
    EXPECT_EQ(texts(kUser), (QStringList{QStringLiteral("Antiques: Silver (102)"),
                                         QStringLiteral("Sports: Trading Cards (Sports) (1116)"),
                                         QStringLiteral("Lamps (110)")}));
    RemoveFavoriteCategory(*m_db, kUser, 102);
    EXPECT_EQ(texts(kUser).size(), 2);
    EXPECT_EQ(texts(other), QStringList{QStringLiteral("Antiques: Silver (102)")});
}

TEST_F(CategoryDirectoryTest, TheBrowserShowsChoosesSearchesAndKeepsFavourites) {
    Load(kDirectory);
    AddFavoriteCategory(*m_db, kUser, QStringLiteral("Sports: Silver (103)"), 103);
    CategoryBrowser browser;
    EXPECT_EQ(CategoryBrowser::Caption(), QStringLiteral("Browse eBay Categories"));
    browser.Open(*m_db, kUser);
    EXPECT_EQ(browser.lstCategoryNames, TopLevelNames(*m_db));
    EXPECT_EQ(browser.categoryNamesIndex, 0);
    ASSERT_EQ(browser.lstCategoryNames.first(), QStringLiteral("Antiques"));
    ASSERT_EQ(browser.lstCategoryItems.size(), 3u);
    EXPECT_EQ(browser.lstCategoryItems[1].text, QStringLiteral("Lamps & Lighting"));
    EXPECT_EQ(browser.lstCategorys.size(), 1u);
    EXPECT_FALSE(browser.Selection().has_value());
    EXPECT_FALSE(browser.AddChosenToFavorites(*m_db, kUser));
    browser.ChooseFavorite(*m_db, 0);
    EXPECT_EQ(browser.categorysIndex, 0);
    EXPECT_EQ(browser.txtSelCal, QStringLiteral("Sports: Silver (103)"));

    browser.ChooseItem(1);
    EXPECT_EQ(browser.txtSelCal, QStringLiteral("Antiques: Lamps & Lighting (110)"));
    EXPECT_EQ(browser.txtSelCalNumber, QStringLiteral("110"));
    EXPECT_EQ(browser.txtHiddenCategoryName, QStringLiteral("Antiques: Lamps & Lighting"));

    browser.chkAndSearch = true;
    browser.Search(*m_db, QStringLiteral("silver"));
    EXPECT_EQ(browser.searchCaption, QStringLiteral("Search Categories: 2 matches found"));
    EXPECT_EQ(browser.lstSearchTerms, QStringList{QStringLiteral("silver")});
    EXPECT_EQ(browser.searchCategoriesIndex, 0);
    EXPECT_EQ(browser.txtSelCal, QStringLiteral("Antiques: Silver (102)"));
    EXPECT_TRUE(browser.AddChosenToFavorites(*m_db, kUser));
    EXPECT_EQ(browser.lstCategorys.back().text, QStringLiteral("Antiques: Silver (102)"));
    EXPECT_EQ(browser.categorysIndex, 1);
    browser.ChooseMatch(1);
    EXPECT_FALSE(browser.AddChosenToFavorites(*m_db, kUser));  // 103 is one already
    const std::optional<CategoryListRow> chosen = browser.Selection();
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(chosen->text, QStringLiteral("Sports: Silver (103)"));
    EXPECT_EQ(chosen->number, 103);

    browser.Search(*m_db, QStringLiteral("999"));
    EXPECT_EQ(browser.searchCaption, QStringLiteral("Search Categories: No Matches Found"));
    EXPECT_TRUE(browser.lstSearchCategories.empty());
}

TEST_F(CategoryDirectoryTest, TheCreatorBoxTakesATypedNumber) {
    Load(kDirectory);
    const struct {
        const char* typed;
        bool hasSelection;
        const char* row;
        const char* message;
        const char* title;
    } cases[] = {
        {"", false, "", "Please type in category number and then hit Enter",
         "Error: No Category Number"},
        {" ", true, "", "", ""},
        {"999", false, "", "Category #999 not found.  Please enter another category number.",
         "Category Not Found"},
        {"silver", true, "", "Category #silver not found.  Please enter another category number.",
         "Category Not Found"},
        {" 418 ", false, "Collectibles: Lamps & Lighting (418)", "", ""},
        {"99999999999999999999999", false, "",
         "Category #99999999999999999999999 not found.  Please enter another category number.",
         "Category Not Found"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed);
        const CategoryNumberEntry entry =
            EnterCategoryNumber(*m_db, QString::fromUtf8(c.typed), c.hasSelection);
        EXPECT_EQ(entry.row ? entry.row->text : QString(), QString::fromUtf8(c.row));
        EXPECT_EQ(entry.message, QString::fromUtf8(c.message));
        EXPECT_EQ(entry.title, QString::fromUtf8(c.title));
    }
}
