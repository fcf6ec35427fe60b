// SPDX-License-Identifier: GPL-3.0-or-later
// The shared text helpers: replacing, entities, site time and time left,
// folders and files, cutting, Val, the number rule and the date rules, and the
// agreement of the number and date rules with their SQL twins.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <ctime>
#include <optional>
#include <random>
#include <vector>

#include <ostream>

#include "core/page_charset.h"
#include "core/text.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace lw::core {
namespace {

QDateTime At(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
    return lw::core::WallClock(QDate(y, mo, d), QTime(h, mi, s));
}

// Table text: nullptr stands for a null QString.
QString Str(const char16_t* text) {
    return text == nullptr ? QString() : QString::fromUtf16(text);
}

// ------------------------------------------------------------ replacing

TEST(Replace, FirstEveryAndRescan) {
    using Replacer = QString (*)(const QString&, const QString&, const QString&);
    struct Case {
        const char* name;
        Replacer replace;
        const char16_t *text, *find, *replacement, *expected;
    };
    const Case cases[] = {
        {"first: only the first", ReplaceFirst, u"a-b-c", u"-", u"+", u"a+b-c"},
        {"first: absent find", ReplaceFirst, u"abc", u"x", u"y", u"ERROR"},
        {"first: empty text", ReplaceFirst, nullptr, u"x", u"y", u"ERROR"},
        {"first: empty find", ReplaceFirst, u"abc", nullptr, u"y", u"ERROR"},
        {"first: case counts", ReplaceFirst, u"ABC", u"b", u"y", u"ERROR"},
        // One pass that does not look at what it put in.
        {"every: grows", ReplaceEvery, u"aaa", u"a", u"aa", u"aaaaaa"},
        {"every: uncovers", ReplaceEvery, u"aabb", u"ab", nullptr, u"ab"},
        {"every: no overlap", ReplaceEvery, u"aaaa", u"aa", u"b", u"bb"},
        {"every: absent find", ReplaceEvery, u"abc", u"x", u"y", u"abc"},
        {"every: empty find", ReplaceEvery, u"abc", nullptr, u"y", u"abc"},
        // Repeats until find is gone.
        {"rescan: to nothing", ReplaceRescan, u"aabb", u"ab", nullptr, u""},
        {"rescan: entities", ReplaceRescan, u"&amp;amp;amp;", u"&amp;", u"&", u"&"},
        {"rescan: blanks", ReplaceRescan, u"x  y   z", u"  ", u" ", u"x y z"},
        // A replacement that holds find makes one pass and stops.
        {"rescan: holds find", ReplaceRescan, u"ab", u"b", u"bb", u"abb"},
        {"rescan: holds blank", ReplaceRescan, u"a a", u" ", u"  ", u"a  a"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.replace(Str(c.text), Str(c.find), Str(c.replacement)), Str(c.expected));
    }
}

TEST(Replace, RescanStopsARewriteThatOnlyGrows) {
    // "ab" -> "bba" moves every a behind the b's it passes and doubles them:
    // it ends, but a long run of a's makes an enormous text. The bound cuts it.
    const QString text = QString(40, u'a') + QStringLiteral("b");
    const QString result = ReplaceRescan(text, QStringLiteral("ab"), QStringLiteral("bba"));
    EXPECT_LE(result.size(), 64 * (text.size() + 1024) + 3);
}

// The one-sweep rescan must give exactly what replacing the leftmost
// occurrence again and again from the start gives.
TEST(Replace, RescanMatchesReplacingTheLeftmostOccurrenceRepeatedly) {
    std::mt19937 random(7);
    const QStringList finds = {QStringLiteral("ab"), QStringLiteral("aa"), QStringLiteral("aba"),
                               QStringLiteral("bab"), QStringLiteral("abb")};
    const QStringList replacements = {QString(), QStringLiteral("a"), QStringLiteral("b"),
                                      QStringLiteral("ba"), QStringLiteral("bb")};
    for (int round = 0; round < 3000; ++round) {
        QString text;
        const int length = static_cast<int>(random() % 14);
        for (int i = 0; i < length; ++i) {
            text += random() % 2 ? u'a' : u'b';
        }
        const QString& find = finds[random() % finds.size()];
        const QString& replacement = replacements[random() % replacements.size()];
        if (replacement.contains(find) || replacement.size() >= find.size()) {
            continue;
        }
        QString expected = text;
        for (qsizetype at = expected.indexOf(find); at >= 0; at = expected.indexOf(find)) {
            expected.replace(at, find.size(), replacement);
        }
        EXPECT_EQ(ReplaceRescan(text, find, replacement), expected)
            << qPrintable(text) << " " << qPrintable(find) << " -> " << qPrintable(replacement);
    }
}

TEST(PageCharset, EveryByteOfASingleBytePageComesBackWhole) {
    QByteArray all;
    for (int b = 0; b < 256; ++b) {
        all += static_cast<char>(b);
    }
    const QString text = lw::core::FromWindows1252(all);
    ASSERT_EQ(text.size(), 256);
    EXPECT_EQ(lw::core::ToWindows1252(text), std::optional<QByteArray>(all));

    struct Case {
        const char* bytes;
        const char16_t* text;
    };
    for (const Case& c : {Case{"\x80 12", u"\u20AC 12"}, Case{"\x93Mint\x94", u"\u201CMint\u201D"},
                          Case{"Caf\xE9", u"Caf\u00E9"}, Case{"\x81\x8D", u"\u0081\u008D"}}) {
        EXPECT_EQ(lw::core::FromWindows1252(c.bytes), QString::fromUtf16(c.text)) << c.bytes;
        EXPECT_EQ(lw::core::PageBytesToText(c.bytes), QString::fromUtf16(c.text)) << c.bytes;
    }
    EXPECT_EQ(lw::core::ToWindows1252(QStringLiteral("\u4E2D")), std::nullopt);
}

TEST(PageCharset, Utf8StaysUtf8AndKeepsALeadingByteOrderMark) {
    EXPECT_EQ(lw::core::PageBytesToText("Caf\xC3\xA9 \xE2\x82\xAC"),
              QStringLiteral("Caf\u00E9 \u20AC"));
    EXPECT_EQ(lw::core::PageBytesToText("\xEF\xBB\xBFpart"), QStringLiteral("\uFEFFpart"));
}

TEST(Entities, DecodesTheFiveInOrderAndNothingElse) {
    EXPECT_EQ(DecodeEntities(QString()), QString());
    EXPECT_EQ(DecodeEntities(QStringLiteral("a&nbsp;b&amp;c&#38;d&#39;e&#34;f")),
              QStringLiteral("a b&c&d'e\"f"));
    // "&nbsp;" goes first, so one that "&amp;" uncovers stays.
    EXPECT_EQ(DecodeEntities(QStringLiteral("&amp;nbsp;")), QStringLiteral("&nbsp;"));
    EXPECT_EQ(DecodeEntities(QStringLiteral("&amp;amp;")), QStringLiteral("&"));
    EXPECT_EQ(DecodeEntities(QStringLiteral("&lt;b&gt; &quot;")),
              QStringLiteral("&lt;b&gt; &quot;"));
}

// ------------------------------------------------------------ site time

TEST(SiteTime, DifferenceIsLocalMinusSiteInSecondsAndZeroWithoutADate) {
    const QDateTime now = At(2000, 6, 7, 12, 5, 30);
    struct Case {
        const char16_t* site;
        const char* expected;
    };
    const Case cases[] = {
        {u"Wednesday, 06 07, 2000 12:04:00 PDT", "90"},
        {u"Wednesday, 06 07, 2000 13:05:30 PST", "-3600"},
        {u"06/06/00 12:05:30 PST", "86400"},
        {u"June 7 2000 12:05:00 PDT", "30"},
        {u"no date here PST", "0"},
        {nullptr, "0"},
        {u"-1", "0"},
        // Without a zone mark the text is not a site time.
        {u"Wednesday, 06 07, 2000 12:04:00", "0"},
        // The part before the first comma is taken for a weekday and dropped.
        {u"Jun 07, 2000 12:04:00 PST", "0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(Str(c.site).toStdString());
        EXPECT_EQ(SiteTimeDifference(Str(c.site), now), QString::fromLatin1(c.expected));
    }
}

TEST(TimeLeft, DaysHoursMinutesUntilTheCorrectedEnd) {
    const QDateTime noon = At(2000, 6, 7, 12, 0, 0);
    struct Case {
        const char* name;
        const char16_t *end, *correction;
        QDateTime now;
        QString expected;
    };
    const Case cases[] = {
        {"days hours minutes", u"06/10/00, 16:05:30 PST", u"0", noon, QStringLiteral("3d 04h 05m")},
        {"minutes", u"06/07/00, 12:09:59 PDT", u"0", noon, QStringLiteral("0d 00h 09m")},
        // Seconds alone still count as time left, and are not shown.
        {"seconds", u"06/07/00, 12:00:01 PST", u"0", noon, QStringLiteral("0d 00h 00m")},
        {"corrected later", u"06/10/00, 16:05:30 PST", u"3600", noon, QStringLiteral("3d 05h 05m")},
        {"corrected to ended", u"06/07/00, 12:00:00 PST", u"-1", noon, QStringLiteral("Ended")},
        {"corrected past now", u"06/07/00, 11:59:00 PST", u"120", noon,
         QStringLiteral("0d 00h 01m")},
        {"ends now", u"06/07/00, 12:00:00 PST", u"0", noon, QStringLiteral("Ended")},
        {"ended a second ago", u"06/07/00, 11:59:59 PST", u"0", noon, QStringLiteral("Ended")},
        {"ended days ago", u"06/01/00, 12:00:00 PST", u"0", noon, QStringLiteral("Ended")},
        // "97" is 1997: one hour before the end of 1997 there is an hour left;
        // read as 2097 it would be a century away.
        {"97 is 1997", u"12/31/97, 23:59:59 PST", u"0", At(1997, 12, 31, 22, 59, 59),
         QStringLiteral("0d 01h 00m")},
        {"97 has ended", u"12/31/97, 23:59:59 PST", u"0", noon, QStringLiteral("Ended")},
        // "96" is 2096, and the day count carries no thousands separator.
        {"96 is 2096", u"01/01/96, 00:00:00 PST", u"0", noon,
         QString::number(QDate(2000, 6, 7).daysTo(QDate(2096, 1, 1)) - 1) +
             QStringLiteral("d 12h 00m")},
        {"no text", nullptr, u"0", At(2000, 6, 7), QString()},
        {"no time", u"06/07/00", u"0", At(2000, 6, 7), QString()},
        {"no date", u"not an end date at all", u"0", At(2000, 6, 7), QString()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(TimeLeftText(Str(c.end), Str(c.correction), c.now), c.expected);
    }
}

// ------------------------------------------------------------ files

TEST(Files, EnsureDirectoryCreatesMissingFoldersAndRefusesFiles) {
    QTemporaryDir root;
    ASSERT_TRUE(root.isValid());
    const QString nested = root.filePath(QStringLiteral("a/b/c"));
    EXPECT_TRUE(EnsureDirectory(nested));
    EXPECT_TRUE(QFileInfo(nested).isDir());
    EXPECT_TRUE(EnsureDirectory(nested));  // already there

    const QString file = root.filePath(QStringLiteral("plain.txt"));
    QFile f(file);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.close();
    EXPECT_FALSE(EnsureDirectory(file));
    EXPECT_FALSE(EnsureDirectory(file + QStringLiteral("/below")));
    EXPECT_FALSE(EnsureDirectory(QString()));
}

TEST(Files, EnsureFileCreatesOnlyWhenAsked) {
    QTemporaryDir root;
    ASSERT_TRUE(root.isValid());
    const QString path = root.filePath(QStringLiteral("queue.txt"));
    EXPECT_FALSE(EnsureFile(path, false));
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_TRUE(EnsureFile(path, true));
    EXPECT_TRUE(QFileInfo(path).isFile());
    EXPECT_EQ(QFileInfo(path).size(), 0);
    EXPECT_TRUE(EnsureFile(path, false));

    QFile existing(path);
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    existing.write("kept");
    existing.close();
    EXPECT_TRUE(EnsureFile(path, true));
    EXPECT_EQ(QFileInfo(path).size(), 4);  // an existing file is left as it is

    EXPECT_FALSE(EnsureFile(root.filePath(QStringLiteral("missing/x.txt")), true));
    EXPECT_FALSE(EnsureFile(root.path(), true));  // a folder is no file
    EXPECT_FALSE(EnsureFile(QString(), true));
}

TEST(Cut, KeepsThePartAroundTheFirstDelimiter) {
    const QString path = QStringLiteral("data/user/file.txt");
    const QString slash = QStringLiteral("/");
    EXPECT_EQ(CutAt(path, slash, true, true), QStringLiteral("user/file.txt"));
    EXPECT_EQ(CutAt(path, slash, true, false), QStringLiteral("/user/file.txt"));
    EXPECT_EQ(CutAt(path, slash, false, true), QStringLiteral("data/"));
    EXPECT_EQ(CutAt(path, slash, false, false), QStringLiteral("data"));
    EXPECT_EQ(CutAt(path, QStringLiteral("::"), true, true), QStringLiteral("FALSE"));
    EXPECT_EQ(CutAt(path, QString(), true, true), QStringLiteral("ERROR"));
    EXPECT_EQ(CutAt(QStringLiteral("/x"), slash, false, false), QString());
}

// ------------------------------------------------------------ numbers

TEST(Numbers, ValReadsTheNumberAtTheLeftIgnoringBlanks) {
    EXPECT_EQ(Val(u" 1 2 3"), 123);
    EXPECT_EQ(Val(u"1234.5abc"), 1234.5);
    EXPECT_EQ(Val(u" - 5"), -5);
    EXPECT_EQ(Val(u"-.5"), -0.5);
    EXPECT_EQ(Val(u"1e3"), 1000);
    EXPECT_EQ(Val(u"1D2"), 100);
    EXPECT_EQ(Val(u"2e"), 2);
    EXPECT_EQ(Val(u"1.2.3"), 1.2);
    EXPECT_EQ(Val(u"&H1F"), 31);
    EXPECT_EQ(Val(u"&o17"), 15);
    // Separators and currency signs stop it.
    EXPECT_EQ(Val(u"1,234"), 1);
    EXPECT_EQ(Val(u"$5"), 0);
    EXPECT_EQ(Val(u"n/a"), 0);
    EXPECT_EQ(Val(u""), 0);
    EXPECT_EQ(Val(u"+-5"), 0);
    EXPECT_FALSE(std::signbit(Val(u"-")));
}

TEST(Numbers, TextToNumberTakesWholeUsNumbersOnly) {
    EXPECT_EQ(TextToNumber(u"$1,234.50"), 1234.5);
    EXPECT_EQ(TextToNumber(u"  (5.00) "), -5);
    EXPECT_EQ(TextToNumber(u"($1,234.50)"), -1234.5);
    EXPECT_EQ(TextToNumber(u"-$5"), -5);
    EXPECT_EQ(TextToNumber(u"$-5"), -5);
    EXPECT_EQ(TextToNumber(u"5-"), -5);
    EXPECT_EQ(TextToNumber(u"5$"), 5);
    EXPECT_EQ(TextToNumber(u"1E3"), 1000);
    EXPECT_EQ(TextToNumber(u".5"), 0.5);
    EXPECT_EQ(TextToNumber(u"&H1F"), 31);
    EXPECT_EQ(TextToNumber(u"1,2,3"), 123);
    for (const char16_t* text : {u"", u"-", u"n/a", u"$", u"1e", u"12abc", u",5", u"(-5)", u"&HZZ",
                                 u"1.2.3", u"--5", u"$$5", u"06/07/00"}) {
        EXPECT_EQ(TextToNumber(text), std::nullopt) << QString::fromUtf16(text).toStdString();
    }
}

TEST(NumberRule, ReadsMoneyTexts) {
    EXPECT_EQ(NumberRule(u"$1,234.50"), 1234.5);
    EXPECT_EQ(NumberRule(u"(5.00)"), -5);
    EXPECT_EQ(NumberRule(u"($1,234.50)"), -1234.5);
    EXPECT_EQ(NumberRule(u"-$5"), -5);
    EXPECT_EQ(NumberRule(u"$ 12 .5"), 12.5);
    EXPECT_EQ(NumberRule(u"\u00A35.25"), 5.25);
    EXPECT_EQ(NumberRule(u"\u20AC 7"), 7);
    EXPECT_EQ(NumberRule(u"\u00A5100"), 100);
    EXPECT_EQ(NumberRule(u"12 bids"), 12);
    EXPECT_EQ(NumberRule(u"1e3"), 1000);
    EXPECT_EQ(NumberRule(u"1e"), 1);
    EXPECT_EQ(NumberRule(u"\t3"), 3);  // leading white space other than blanks is skipped
}

TEST(NumberRule, NoValueIsZero) {
    for (const char16_t* text :
         {u"n/a", u"-", u"", u"(", u"()", u"$", u"abc", u".", u"-.", u"e5"}) {
        const double value = NumberRule(text);
        EXPECT_EQ(value, 0) << QString::fromUtf16(text).toStdString();
        EXPECT_FALSE(std::signbit(value)) << QString::fromUtf16(text).toStdString();
    }
    EXPECT_EQ(NumberRule(QVariant()), 0);
    EXPECT_EQ(NumberRule(QVariant(QMetaType(QMetaType::QString))), 0);
}

TEST(NumberRule, TakesVariantsOfEveryKind) {
    EXPECT_EQ(NumberRule(QVariant(QStringLiteral("$3.50"))), 3.5);
    EXPECT_EQ(NumberRule(QVariant(QByteArray("$4"))), 4);
    EXPECT_EQ(NumberRule(QVariant(2.25)), 2.25);
    EXPECT_EQ(NumberRule(QVariant(-7)), -7);
    EXPECT_EQ(NumberRule(QVariant(qint64(1) << 40)), double(qint64(1) << 40));
    EXPECT_EQ(NumberRule(QStringLiteral("$9")), 9);
}

// ------------------------------------------------------------ C++ against SQL

class Sqlite {
public:
    Sqlite() { sqlite3_open(":memory:", &m_db); }
    ~Sqlite() { sqlite3_close(m_db); }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    void Exec(const QString& sql) {
        char* error = nullptr;
        const int rc = sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &error);
        ASSERT_EQ(rc, SQLITE_OK) << (error ? error : "") << "\n" << sql.toStdString();
    }

    // Stores each text (a null QString as NULL) in table t and returns the
    // generated column g of each row, in order, as SQLite computed it.
    std::vector<QVariant> Generated(const std::vector<QString>& texts) {
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(m_db, "INSERT INTO t(id, x) VALUES(?1, ?2)", -1, &insert, nullptr);
        for (size_t i = 0; i < texts.size(); ++i) {
            sqlite3_bind_int64(insert, 1, static_cast<sqlite3_int64>(i));
            if (texts[i].isNull()) {
                sqlite3_bind_null(insert, 2);
            } else {
                const QByteArray utf8 = texts[i].toUtf8();
                sqlite3_bind_text(insert, 2, utf8.constData(), utf8.size(), SQLITE_TRANSIENT);
            }
            EXPECT_EQ(sqlite3_step(insert), SQLITE_DONE);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        return Column("g");
    }

    // A column of table t, row by row.
    std::vector<QVariant> Column(const char* name) {
        std::vector<QVariant> out;
        sqlite3_stmt* select = nullptr;
        sqlite3_prepare_v2(m_db, (std::string("SELECT ") + name + " FROM t ORDER BY id").c_str(),
                           -1, &select, nullptr);
        while (sqlite3_step(select) == SQLITE_ROW) {
            switch (sqlite3_column_type(select, 0)) {
                case SQLITE_NULL:
                    out.emplace_back();
                    break;
                case SQLITE_FLOAT:
                case SQLITE_INTEGER:
                    out.emplace_back(sqlite3_column_double(select, 0));
                    break;
                default:
                    out.emplace_back(QString::fromUtf8(
                        reinterpret_cast<const char*>(sqlite3_column_text(select, 0))));
                    break;
            }
        }
        sqlite3_finalize(select);
        return out;
    }

private:
    sqlite3* m_db = nullptr;
};

bool SameOrNeighbours(double a, double b) {
    return a == b || (std::isfinite(a) && std::nextafter(a, b) == b);
}

std::vector<QString> HandPickedNumbers() {
    std::vector<QString> texts = {QString()};
    for (const char16_t* text :
         {u"", u"$1,234.50", u"n/a", u"-", u"(5.00)", u"($1,234.50)", u"(-5)", u"((", u"(", u")",
          u"$", u"1e", u"1e+", u"1e-2", u"1E5x", u".5", u"5.", u".", u"-.5", u"+7", u"--7", u"\t 8",
          u"\n\r9", u"\u00A010", u"\u00A311", u"\u20AC12", u"\u00A513", u"0x1F", u"1e400",
          u"-1e400", u"1e-400", u"12 345", u"1,2,3.4,5", u"0.1", u"$ (3)", u"($)", u"\u4E2D5",
          u"5\u4E2D", u"Infinity", u"NaN", u"1.5.3", u"$1 234", u"$12$", u"$3\u00A35", u"$4\u20AC1",
          u"$5\u00A52", u"$1,2,3", u"$7(8)", u"$9e2",
          // Past the precision of a double.
          u"99999999999999999999999", u"0.30000000000000004"}) {
        texts.push_back(QString::fromUtf16(text));
    }
    return texts;
}

TEST(RuleAgreement, NumberRuleMatchesItsSqlOverManyTexts) {
    std::vector<QString> texts = HandPickedNumbers();
    const size_t handPicked = texts.size();

    std::mt19937 random(20000607);
    // Money as the site and the user write it: these must agree to the bit.
    struct Shape {
        const char *before, *after;
        bool grouped;
    };
    const Shape shapes[] = {
        {"$", "", true}, {"($", ")", true}, {"-$", "", false}, {"US $", "", true}};
    for (int i = 0; i < 2000; ++i) {
        const Shape& shape = shapes[random() % 4];
        const QString amount = QString::number(static_cast<qint64>(random() % 100000000)) +
                               QStringLiteral(".") +
                               QString::number(random() % 100).rightJustified(2, u'0');
        QString grouped = amount;
        for (qsizetype at = amount.indexOf(u'.') - 3; at > 0; at -= 3) {
            grouped.insert(at, u',');
        }
        texts.push_back(QString::fromUtf8(shape.before) + (shape.grouped ? grouped : amount) +
                        QString::fromUtf8(shape.after));
    }
    const size_t moneyEnd = texts.size();

    // Anything at all drawn from the characters that matter to the rule.
    const QString characters =
        QStringLiteral("0125793+-.eE$,()ax \t\n\u00A3\u20AC\u00A5\u00E9\u4E2D\u00A0");
    QStringList pieces(characters.cbegin(), characters.cend());
    pieces << QStringLiteral("n/a");
    for (int i = 0; i < 4000; ++i) {
        QString text;
        const int length = static_cast<int>(random() % 12);
        for (int j = 0; j < length; ++j) {
            text += pieces[random() % pieces.size()];
        }
        texts.push_back(text);
    }

    Sqlite db;
    db.Exec(QStringLiteral("CREATE TABLE t(id INTEGER PRIMARY KEY, x TEXT COLLATE NOCASE, "
                           "g REAL GENERATED ALWAYS AS (") +
            NumberRuleSql(QStringLiteral("x")) +
            QStringLiteral(") VIRTUAL, h REAL GENERATED ALWAYS AS (") +
            EarlierNumberRuleSql(QStringLiteral("x")) + QStringLiteral(") VIRTUAL)"));
    const std::vector<QVariant> sql = db.Generated(texts);
    ASSERT_EQ(sql.size(), texts.size());
    // Databases keep the values the earlier spelling stored: the two give
    // the same value to the bit for every text.
    const std::vector<QVariant> earlier = db.Column("h");
    ASSERT_EQ(earlier.size(), texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(sql[i], earlier[i]) << "text: [" << texts[i].toStdString() << "]";
        const double cpp = texts[i].isNull() ? NumberRule(QVariant()) : NumberRule(texts[i]);
        ASSERT_FALSE(sql[i].isNull()) << texts[i].toStdString();
        const double fromSql = sql[i].toDouble();
        if (i < moneyEnd) {
            EXPECT_EQ(cpp, fromSql) << "text: [" << texts[i].toStdString() << "]"
                                    << (i < handPicked ? " (hand-picked)" : " (money)");
        } else {
            // Both read the same characters as the number. For long runs of
            // digits SQLite's own decimal conversion may round the last bit
            // the other way from a correctly rounded one.
            EXPECT_TRUE(SameOrNeighbours(cpp, fromSql))
                << "text: [" << texts[i].toStdString() << "] C++ " << cpp << " SQL " << fromSql;
        }
    }
}

TEST(RuleAgreement, LeftDateMatchesTheEndDaySql) {
    std::vector<QString> texts = {QString()};
    for (const char16_t* text :
         {u"06/07/00, 12:04:00 PST", u"06/07/00", u"12/31/97, 23:59:59 PDT", u"01/01/96",
          u"02/29/00", u"02/29/97", u"13/45/00", u"00/00/00", u"6/7/2000", u"06/07/0", u"06-07-00",
          u"Jun 07, 2000", u"", u" 06/07/00", u"06/07/99 trailing"}) {
        texts.push_back(QString::fromUtf16(text));
    }
    // Mostly "mm/dd/yy" with months 00..13 and days 00..32, a few characters
    // spoiled, some with the time behind, some cut short.
    std::mt19937 random(97);
    const QString spoilers = QStringLiteral("x-/ 9\u00E9");
    for (int i = 0; i < 3000; ++i) {
        QString text = QString::number(random() % 14).rightJustified(2, u'0') + u'/' +
                       QString::number(random() % 33).rightJustified(2, u'0') + u'/' +
                       QString::number(random() % 100).rightJustified(2, u'0');
        for (QChar& c : text) {
            if (random() % 25 == 0) {
                c = spoilers[random() % spoilers.size()];
            }
        }
        if (random() % 3 == 0) {
            text += QStringLiteral(", 12:04:00 PST");
        }
        if (random() % 10 == 0) {
            text.truncate(random() % 8);
        }
        texts.push_back(text);
    }

    Sqlite db;
    db.Exec(QStringLiteral("CREATE TABLE t(id INTEGER PRIMARY KEY, x TEXT COLLATE NOCASE, "
                           "g TEXT GENERATED ALWAYS AS (") +
            EndDaySql(QStringLiteral("x")) + QStringLiteral(") VIRTUAL)"));
    const std::vector<QVariant> sql = db.Generated(texts);
    ASSERT_EQ(sql.size(), texts.size());
    int valid = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        const std::optional<QDate> day = texts[i].isNull() ? std::nullopt : LeftDate(texts[i]);
        if (day) {
            ++valid;
            EXPECT_EQ(sql[i].toString(), day->toString(Qt::ISODate)) << texts[i].toStdString();
        } else if (!sql[i].isNull()) {
            // The SQL gives a text for a shape with an impossible day; it names no day.
            EXPECT_FALSE(QDate::fromString(sql[i].toString(), Qt::ISODate).isValid())
                << texts[i].toStdString() << " -> " << sql[i].toString().toStdString();
        }
    }
    EXPECT_GT(valid, 500);  // the corpus must exercise the agreeing case a lot
}

// ------------------------------------------------------------ dates

TEST(Dates, TwoDigitYearsPivotAt97) {
    EXPECT_EQ(ExpandYear(0), 2000);
    EXPECT_EQ(ExpandYear(96), 2096);
    EXPECT_EQ(ExpandYear(97), 1997);
    EXPECT_EQ(ExpandYear(99), 1999);
    EXPECT_EQ(ExpandYear(2000), 2000);
}

TEST(Dates, LeftDateReadsTheFirstEightCharacters) {
    EXPECT_EQ(LeftDate(u"06/07/00, 12:04:00 PST"), QDate(2000, 6, 7));
    EXPECT_EQ(LeftDate(u"12/31/97"), QDate(1997, 12, 31));
    EXPECT_EQ(LeftDate(u"13/45/00"), std::nullopt);
    EXPECT_EQ(LeftDate(u"6/7/2000"), std::nullopt);
    EXPECT_EQ(LeftDate(u"06/07/0"), std::nullopt);
}

TEST(Dates, ParsesTheSiteForms) {
    struct Case {
        const char16_t* text;
        QDateTime expected;
    };
    const Case cases[] = {
        {u"06/07/00", At(2000, 6, 7)},
        {u"6/7/2000", At(2000, 6, 7)},
        {u"12/31/97", At(1997, 12, 31)},
        {u"Jun-07-00", At(2000, 6, 7)},
        {u"June 7, 2000", At(2000, 6, 7)},
        {u"7 June 2000", At(2000, 6, 7)},
        {u"Jun 07, 2000 12:04:00 PST", At(2000, 6, 7, 12, 4, 0)},
        {u"Wednesday, 06 07, 2000 12:04:00", At(2000, 6, 7, 12, 4, 0)},
        {u"Wed, 06 07, 2000 12:04:00 PDT", At(2000, 6, 7, 12, 4, 0)},
        {u"06/07/00, 12:04:00 PST", At(2000, 6, 7, 12, 4, 0)},
        {u"06/07/00 1:04 pm", At(2000, 6, 7, 13, 4, 0)},
        {u"06/07/00 12:04:05 AM", At(2000, 6, 7, 0, 4, 5)},
        {u"2000-06-07", At(2000, 6, 7)},
        {u"2000-06-07 23:59:59", At(2000, 6, 7, 23, 59, 59)},
        {u"2000-06-07T08:09:10", At(2000, 6, 7, 8, 9, 10)},
        {u"Sept 30, 1999", At(1999, 9, 30)},
        {u"13/06/2000", At(2000, 6, 13)},
        {u"02/29/00", At(2000, 2, 29)},
    };
    for (const Case& c : cases) {
        const auto parsed = ParseDateTime(c.text);
        ASSERT_TRUE(parsed.has_value()) << QString::fromUtf16(c.text).toStdString();
        EXPECT_EQ(*parsed, c.expected) << QString::fromUtf16(c.text).toStdString();
    }
}

TEST(Dates, RefusesWhatIsNoDate) {
    for (const char16_t* text :
         {u"", u"hello", u"6/7", u"12:04:00", u"13/45/00", u"02/29/97", u"Jun 31, 2000",
          u"06/07/00 25:00", u"06/07/00 13:00 PM", u"06/07/00 foo", u"06/07/00 #", u"1/2/3/4",
          u"June July 2000", u"12345/1/1"}) {
        EXPECT_EQ(ParseDateTime(text), std::nullopt) << QString::fromUtf16(text).toStdString();
    }
}

TEST(Dates, CDateReadsBeforeTheFirstCommaOrTheWhole) {
    EXPECT_EQ(CDate(u"06/07/00, 12:04:00 PST"), QDate(2000, 6, 7));
    EXPECT_EQ(CDate(u"June 7, 2000"), QDate(2000, 6, 7));
    EXPECT_EQ(CDate(u"Wednesday, 06 07, 2000 12:04:00"), QDate(2000, 6, 7));
    EXPECT_EQ(CDate(u"no date, none"), std::nullopt);
}

TEST(Dates, SerialsCountDaysFrom1899) {
    for (const auto& [date, serial] :
         {std::pair{At(2000, 1, 1), 36526.0}, std::pair{At(2000, 6, 7, 12), 36684.5},
          std::pair{At(1899, 12, 29, 6), -1.25}, std::pair{At(1899, 12, 30), 0.0}}) {
        SCOPED_TRACE(serial);
        EXPECT_EQ(DateToSerial(date), serial);
        EXPECT_EQ(SerialToDate(serial), date);
    }
    const QDateTime odd = At(1997, 12, 31, 23, 59, 59);
    EXPECT_EQ(SerialToDate(DateToSerial(odd)), odd);
}

TEST(Dates, AWallClockTimeInALocalSummerTimeGapStaysAsWritten) {
    // 8 March 2026, 02:30 does not exist on the US Pacific clock: a local
    // time would move it to 03:30. The zone is a POSIX rule, so no zone
    // files are needed.
    const QByteArray kept = qgetenv("TZ");
    const bool hadZone = qEnvironmentVariableIsSet("TZ");
    qputenv("TZ", "PST8PDT,M3.2.0,M11.1.0");
    tzset();
    const QString formatted =
        Format(QStringLiteral("03/08/26 02:30:00"), QStringLiteral("mm/dd/yy, hh:mm:ss"));
    const auto parsed = ParseDateTime(u"03/08/26 02:30:00");
    const double serial = DateToSerial(*parsed);
    if (hadZone) {
        qputenv("TZ", kept);
    } else {
        qunsetenv("TZ");
    }
    tzset();
    EXPECT_EQ(formatted, QStringLiteral("03/08/26, 02:30:00"));
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->time(), QTime(2, 30));
    EXPECT_EQ(SerialToDate(serial).time(), QTime(2, 30));
}

TEST(Dates, DateDiffCountsBoundaries) {
    const QDateTime late = At(2000, 6, 7, 23, 59, 59);
    const QDateTime early = At(2000, 6, 8, 0, 0, 1);
    EXPECT_EQ(DateDiff(u"d", late, early), 1);
    EXPECT_EQ(DateDiff(u"D", early, late), -1);
    EXPECT_EQ(DateDiff(u"s", late, early), 2);
    EXPECT_EQ(DateDiff(u"n", late, early), 1);
    EXPECT_EQ(DateDiff(u"h", late, early), 1);
    EXPECT_EQ(DateDiff(u"yyyy", At(1999, 12, 31), At(2000, 1, 1)), 1);
    EXPECT_EQ(DateDiff(u"m", At(2000, 1, 31), At(2000, 3, 1)), 2);
    EXPECT_EQ(DateDiff(u"q", At(2000, 3, 31), At(2000, 4, 1)), 1);
    EXPECT_EQ(DateDiff(u"w", At(2000, 6, 7), At(2000, 6, 20)), 1);
    EXPECT_EQ(DateDiff(u"ww", At(2000, 6, 10), At(2000, 6, 11)), 1);  // Saturday to Sunday
    EXPECT_EQ(DateDiff(u"d", At(1899, 12, 29), At(1900, 1, 1)), 3);
    EXPECT_EQ(DateDiff(u"x", late, early), std::nullopt);
}

}  // namespace
}  // namespace lw::core
