// SPDX-License-Identifier: GPL-3.0-or-later
// The SQL functions as statements see them: registered on a bare in-memory
// connection and called from SQL with bound values, including NULLs and
// arguments of the wrong kind.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDateTime>
#include <QRegularExpression>
#include <QVariant>
#include <ostream>

#include "core/sql_functions.h"
#include "core/text.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace lw::core {
namespace {

// One result of one statement: its SQLite type and value, or the error.
struct Result {
    int type = SQLITE_NULL;
    QVariant value;
    QString error;

    bool IsNull() const { return error.isEmpty() && type == SQLITE_NULL; }
    qint64 Int() const { return value.toLongLong(); }
    double Real() const { return value.toDouble(); }
    QString Text() const { return value.toString(); }
};

class SqlFunctions : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(sqlite3_open(":memory:", &m_db), SQLITE_OK);
        RegisterSqlFunctions(m_db);
    }
    void TearDown() override { sqlite3_close(m_db); }

    // Runs a one-value SELECT; the arguments are bound to ?1, ?2, ... (a null
    // QVariant as NULL, QByteArray as a blob).
    Result Eval(const char* sql, const QVariantList& args = {}) {
        Result result;
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_db, sql, -1, &statement, nullptr) != SQLITE_OK) {
            result.error = QString::fromUtf8(sqlite3_errmsg(m_db));
            return result;
        }
        for (int i = 0; i < args.size(); ++i) {
            Bind(statement, i + 1, args[i]);
        }
        const int rc = sqlite3_step(statement);
        if (rc == SQLITE_DONE) {
            sqlite3_finalize(statement);
            return result;
        }
        if (rc == SQLITE_ROW) {
            result.type = sqlite3_column_type(statement, 0);
            switch (result.type) {
                case SQLITE_INTEGER:
                    result.value = QVariant::fromValue(sqlite3_column_int64(statement, 0));
                    break;
                case SQLITE_FLOAT:
                    result.value = sqlite3_column_double(statement, 0);
                    break;
                case SQLITE_TEXT:
                    result.value = QString::fromUtf8(
                        reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
                    break;
                default:
                    break;
            }
        } else {
            result.error = QString::fromUtf8(sqlite3_errmsg(m_db));
        }
        sqlite3_finalize(statement);
        return result;
    }

    void Exec(const char* sql) {
        char* error = nullptr;
        ASSERT_EQ(sqlite3_exec(m_db, sql, nullptr, nullptr, &error), SQLITE_OK)
            << (error ? error : "");
    }

    sqlite3* m_db = nullptr;

private:
    static void Bind(sqlite3_stmt* statement, int index, const QVariant& value) {
        if (!value.isValid() || value.isNull()) {
            sqlite3_bind_null(statement, index);
            return;
        }
        switch (value.typeId()) {
            case QMetaType::Int:
            case QMetaType::LongLong:
                sqlite3_bind_int64(statement, index, value.toLongLong());
                break;
            case QMetaType::Double:
                sqlite3_bind_double(statement, index, value.toDouble());
                break;
            case QMetaType::QByteArray: {
                const QByteArray bytes = value.toByteArray();
                sqlite3_bind_blob(statement, index, bytes.constData(), bytes.size(),
                                  SQLITE_TRANSIENT);
                break;
            }
            default: {
                const QByteArray utf8 = value.toString().toUtf8();
                sqlite3_bind_text(statement, index, utf8.constData(), utf8.size(),
                                  SQLITE_TRANSIENT);
                break;
            }
        }
    }
};

QVariant S(const char* text) {
    return QString::fromUtf8(text);
}

const QVariant kNull;

TEST_F(SqlFunctions, ValReadsTheLeadingNumberAndNullAsZero) {
    EXPECT_EQ(Eval("SELECT Val(?1)", {S("1 2 3abc")}).Real(), 123);
    EXPECT_EQ(Eval("SELECT Val(?1)", {S("$5")}).Real(), 0);
    EXPECT_EQ(Eval("SELECT Val(?1)", {S("-2.5e1")}).Real(), -25);
    EXPECT_EQ(Eval("SELECT Val(?1)", {7}).Int(), 7);
    EXPECT_EQ(Eval("SELECT Val(?1)", {2.5}).Real(), 2.5);
    EXPECT_EQ(Eval("SELECT Val(?1)", {QByteArray("42")}).Real(), 42);
    const Result null = Eval("SELECT Val(?1)", {kNull});
    EXPECT_EQ(null.type, SQLITE_INTEGER);
    EXPECT_EQ(null.Int(), 0);
    EXPECT_EQ(Eval("SELECT val(?1)", {S("9")}).Real(), 9);  // names ignore case
}

TEST_F(SqlFunctions, ValOfGeneralNumberIsTheNumberRule) {
    for (const char* money :
         {"$1,234.50", "(5.00)", "($1,234.50)", "n/a", "-", "", "$0.99", "12 bids", "-$3"}) {
        const Result sql = Eval("SELECT Val(Format(?1,'General Number'))", {S(money)});
        EXPECT_EQ(sql.Real(), NumberRule(QString::fromUtf8(money))) << money;
    }
    EXPECT_EQ(Eval("SELECT Val(Format(?1,'General Number'))", {kNull}).Int(), 0);
    EXPECT_EQ(Eval("SELECT Val(Format$(?1,\"General Number\"))", {S("$2,000")}).Real(), 2000);
}

TEST_F(SqlFunctions, FormatTakesNumbersTextsAndPatterns) {
    EXPECT_EQ(Eval("SELECT Format(?1,'Currency')", {1234.5}).Text(), QStringLiteral("$1,234.50"));
    EXPECT_EQ(Eval("SELECT Format(?1,'Currency')", {-5}).Text(), QStringLiteral("($5.00)"));
    EXPECT_EQ(Eval("SELECT Format(?1,'Currency')", {S("$3")}).Text(), QStringLiteral("$3.00"));
    EXPECT_EQ(Eval("SELECT Format(?1,'General Number')", {S("$1,234.50")}).Text(),
              QStringLiteral("1234.5"));
    EXPECT_EQ(Eval("SELECT Format(?1,'mm/dd/yyyy')", {S("06/07/00")}).Text(),
              QStringLiteral("06/07/2000"));
    EXPECT_EQ(Eval("SELECT Format(?1,'0.0%')", {0.25}).Text(), QStringLiteral("25.0%"));
    EXPECT_EQ(Eval("SELECT Format$(?1,'#.##')", {0.5}).Text(), QStringLiteral(".5"));
    EXPECT_EQ(Eval("SELECT Format(?1, ?2)", {12, kNull}).Text(), QStringLiteral("12"));
    EXPECT_TRUE(Eval("SELECT Format(?1,'Currency')", {kNull}).IsNull());
    EXPECT_EQ(Eval("SELECT Format(?1,'Currency')", {S("n/a")}).Text(), QStringLiteral("n/a"));
}

// LEFT and ISNULL are words of SQL itself: called as functions their names
// must be quoted ("Left"(x, 8), [IsNull](x)); Left$ needs no quotes.
TEST_F(SqlFunctions, KeywordNamesAreCalledQuoted) {
    EXPECT_FALSE(Eval("SELECT Left(?1, 2)", {S("abc")}).error.isEmpty());
    EXPECT_EQ(Eval("SELECT \"Left\"(?1, 2)", {S("abc")}).Text(), QStringLiteral("ab"));
    EXPECT_EQ(Eval("SELECT [LEFT](?1, 2)", {S("abc")}).Text(), QStringLiteral("ab"));
    EXPECT_EQ(Eval("SELECT Left$(?1, 2)", {S("abc")}).Text(), QStringLiteral("ab"));
    EXPECT_FALSE(Eval("SELECT IsNull(?1)", {kNull}).error.isEmpty());
    EXPECT_EQ(Eval("SELECT \"IsNull\"(?1)", {kNull}).Int(), 1);
}

TEST_F(SqlFunctions, LeftCutsCharacters) {
    EXPECT_EQ(Eval("SELECT \"Left\"(?1, 8)", {S("06/07/00, 12:04:00 PST")}).Text(),
              QStringLiteral("06/07/00"));
    EXPECT_EQ(Eval("SELECT Left$(?1, ?2)", {S("abc"), S("2")}).Text(), QStringLiteral("ab"));
    EXPECT_EQ(Eval("SELECT \"Left\"(?1, 10)", {S("abc")}).Text(), QStringLiteral("abc"));
    EXPECT_EQ(Eval("SELECT \"Left\"(?1, 0)", {S("abc")}).Text(), QString());
    EXPECT_EQ(Eval("SELECT \"Left\"(?1, 2)", {12345}).Text(), QStringLiteral("12"));
    // A character outside the basic plane is one character, as substr counts.
    EXPECT_EQ(Eval("SELECT \"Left\"(?1, 2)", {S("\xF0\x9F\x98\x80xy")}).Text(),
              QString::fromUtf8("\xF0\x9F\x98\x80x"));
    EXPECT_EQ(
        Eval("SELECT length(\"Left\"(?1, 2)) = length(substr(?1, 1, 2))", {S("\xF0\x9F\x98\x80xy")})
            .Int(),
        1);
}

TEST_F(SqlFunctions, LeftWithNullsNegativeAndNonNumbers) {
    EXPECT_TRUE(Eval("SELECT \"Left\"(?1, 8)", {kNull}).IsNull());
    EXPECT_TRUE(Eval("SELECT \"Left\"(?1, ?2)", {S("abc"), kNull}).IsNull());
    EXPECT_TRUE(Eval("SELECT \"Left\"(?1, -1)", {S("abc")}).IsNull());
    EXPECT_FALSE(Eval("SELECT \"Left\"(?1, ?2)", {S("abc"), S("x")}).error.isEmpty());
    EXPECT_FALSE(Eval("SELECT \"Left\"(?1)", {S("abc")}).error.isEmpty());
}

// The other text functions of the rule files' SQL, each in its "$"
// spelling as well.
TEST_F(SqlFunctions, RightMidCaseAndTrimInEverySpelling) {
    const struct {
        const char* sql;
        QVariantList args;
        const char* result;
    } cases[] = {
        {"SELECT Right$(?1, 3)", {S("06/07/00 PST")}, "PST"},
        {"SELECT Right$(?1, 9)", {S("ab")}, "ab"},
        {"SELECT Right$(?1, 1)", {S("x\xF0\x9F\x98\x80")}, "\xF0\x9F\x98\x80"},
        {"SELECT Mid(?1, 4)", {S("06/07/00")}, "07/00"},
        {"SELECT Mid$(?1, 4, 2)", {S("06/07/00")}, "07"},
        {"SELECT Mid(?1, 20, 2)", {S("abc")}, ""},
        {"SELECT UCase(?1) || LCase$(?1)", {S("Ab")}, "ABab"},
        {"SELECT UCase$(?1) || LCase(?1)", {S("\xC3\xA9")}, "\xC3\x89\xC3\xA9"},
        {"SELECT '[' || Trim$(?1) || '|' || LTrim$(?1) || '|' || RTrim$(?1) || ']'",
         {S("  a b \t ")},
         "[a b \t|a b \t |  a b \t]"},
    };
    for (const auto& c : cases) {
        const Result result = Eval(c.sql, c.args);
        EXPECT_TRUE(result.error.isEmpty()) << c.sql << ": " << result.error.toStdString();
        EXPECT_EQ(result.Text(), QString::fromUtf8(c.result)) << c.sql;
    }
    EXPECT_TRUE(Eval("SELECT Mid$(?1, 2)", {kNull}).IsNull());
    EXPECT_TRUE(Eval("SELECT Trim$(?1)", {kNull}).IsNull());
    EXPECT_FALSE(Eval("SELECT Mid(?1, 0)", {S("abc")}).error.isEmpty());
    EXPECT_FALSE(Eval("SELECT Right$(?1, -1)", {S("abc")}).error.isEmpty());
}

TEST_F(SqlFunctions, InStrFindsWithoutRegardToCase) {
    EXPECT_EQ(Eval("SELECT InStr(?1, ',')", {S("06/07/00, 12:04:00 PST")}).Int(), 9);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2)", {S("Hello"), S("LL")}).Int(), 3);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2)", {S("Hello"), S("z")}).Int(), 0);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2, ?3)", {4, S("abcABC"), S("b")}).Int(), 5);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2, ?3)", {7, S("abcabc"), S("b")}).Int(), 0);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2, ?3)", {2, S("abc"), S("")}).Int(), 2);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2)", {S(""), S("")}).Int(), 0);
    EXPECT_EQ(Eval("SELECT InStr(?1, ?2)", {S("\xF0\x9F\x98\x80,"), S(",")}).Int(), 2);
}

TEST_F(SqlFunctions, InStrFoldsCaseExactlyAsTheNoCaseColumnsCompare) {
    for (const auto& [a, b] : {std::pair{"ABC", "abc"}, std::pair{"\xC3\x89", "\xC3\xA9"},
                               std::pair{"Stra\xC3\x9F"
                                         "e",
                                         "STRASSE"}}) {
        const qint64 same = Eval("SELECT ?1 = ?2 COLLATE NOCASE", {S(a), S(b)}).Int();
        const qint64 found = Eval("SELECT InStr(?1, ?2) = 1", {S(a), S(b)}).Int();
        EXPECT_EQ(found, same) << a << " / " << b;
    }
}

TEST_F(SqlFunctions, InStrWithNullsAndBadStarts) {
    EXPECT_TRUE(Eval("SELECT InStr(?1, ',')", {kNull}).IsNull());
    EXPECT_TRUE(Eval("SELECT InStr(?1, ?2)", {S("a"), kNull}).IsNull());
    EXPECT_TRUE(Eval("SELECT InStr(?1, ?2, ?3)", {kNull, S("a"), S("a")}).IsNull());
    EXPECT_FALSE(Eval("SELECT InStr(0, ?1, ?2)", {S("a"), S("a")}).error.isEmpty());
    EXPECT_FALSE(Eval("SELECT InStr(?1, ?2, ?3)", {S("x"), S("a"), S("a")}).error.isEmpty());
}

TEST_F(SqlFunctions, DateDiffCountsDaysAndMore) {
    EXPECT_EQ(Eval("SELECT DateDiff('d', ?1, ?2)", {S("06/07/00"), S("06/10/00")}).Int(), 3);
    EXPECT_EQ(
        Eval("SELECT DateDiff(\"d\", ?1, ?2)", {S("2000-06-07 23:59:59"), S("2000-06-08 00:00:01")})
            .Int(),
        1);
    EXPECT_EQ(
        Eval("SELECT DateDiff('s', ?1, ?2)", {S("2000-06-07 23:59:59"), S("2000-06-08 00:00:01")})
            .Int(),
        2);
    EXPECT_EQ(Eval("SELECT DateDiff('d', ?1, ?2)",
                   {S("Jun 07, 2000 12:04:00 PST"), S("06/07/00, 12:04:00 PST")})
                  .Int(),
              0);
    EXPECT_EQ(Eval("SELECT DateDiff('yyyy', ?1, ?2)", {S("12/31/97"), S("01/01/00")}).Int(), 3);
    EXPECT_EQ(Eval("SELECT DateDiff('m', ?1, ?2)", {S("01/31/00"), S("03/01/00")}).Int(), 2);
    EXPECT_EQ(Eval("SELECT DateDiff('h', ?1, ?2)", {36684, 36684.5}).Int(), 12);
}

TEST_F(SqlFunctions, DateDiffFromNowSeparatesEndedFromRunning) {
    EXPECT_LT(Eval("SELECT DateDiff('d', Now(), ?1)", {S("06/07/00")}).Int(), 0);
    // 96 is 2096 by the pivot.
    EXPECT_GT(
        Eval("SELECT DateDiff('d', Now(), Left$(?1, 8))", {S("01/01/96, 12:04:00 PST")}).Int(), 0);
    const QString today = QDate::currentDate().toString(QStringLiteral("MM/dd/yy"));
    EXPECT_EQ(Eval("SELECT DateDiff('d', Now(), ?1)", {today}).Int(), 0);
}

TEST_F(SqlFunctions, DateDiffWithNullsBadDatesAndBadIntervals) {
    EXPECT_TRUE(Eval("SELECT DateDiff('d', ?1, ?2)", {kNull, S("06/07/00")}).IsNull());
    EXPECT_TRUE(Eval("SELECT DateDiff('d', ?1, ?2)", {S("06/07/00"), kNull}).IsNull());
    EXPECT_TRUE(
        Eval("SELECT DateDiff(?1, ?2, ?3)", {kNull, S("06/07/00"), S("06/07/00")}).IsNull());
    EXPECT_TRUE(Eval("SELECT DateDiff('d', ?1, ?2)", {S("n/a"), S("06/07/00")}).IsNull());
    EXPECT_FALSE(Eval("SELECT DateDiff('fortnight', ?1, ?2)", {S("06/07/00"), S("06/08/00")})
                     .error.isEmpty());
    EXPECT_FALSE(Eval("SELECT DateDiff('d', ?1)", {S("06/07/00")}).error.isEmpty());
}

TEST_F(SqlFunctions, CDateGivesIsoText) {
    EXPECT_EQ(Eval("SELECT CDate(?1)", {S("06/07/00")}).Text(), QStringLiteral("2000-06-07"));
    EXPECT_EQ(Eval("SELECT CDate(?1)", {S("Jun 07, 2000 12:04:00 PST")}).Text(),
              QStringLiteral("2000-06-07 12:04:00"));
    EXPECT_EQ(Eval("SELECT CDate(?1)", {S("12/31/97")}).Text(), QStringLiteral("1997-12-31"));
    EXPECT_EQ(Eval("SELECT CDate(?1)", {36684}).Text(), QStringLiteral("2000-06-07"));
    EXPECT_TRUE(Eval("SELECT CDate(?1)", {S("nonsense")}).IsNull());
    EXPECT_TRUE(Eval("SELECT CDate(?1)", {kNull}).IsNull());
}

TEST_F(SqlFunctions, TheDateRuleBeforeTheFirstComma) {
    const char* rule = "SELECT CDate(Left$(?1,(InStr(?1,\",\"))-1))";
    EXPECT_EQ(Eval(rule, {S("06/07/00, 12:04:00 PST")}).Text(), QStringLiteral("2000-06-07"));
    // No comma asks for -1 characters: that row has no day, the statement goes on.
    EXPECT_TRUE(Eval(rule, {S("06/07/00")}).IsNull());
    EXPECT_TRUE(Eval(rule, {kNull}).IsNull());
}

TEST_F(SqlFunctions, NowIsTheLocalTime) {
    const Result now = Eval("SELECT Now()");
    ASSERT_EQ(now.type, SQLITE_TEXT);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d$"))
                    .match(now.Text())
                    .hasMatch())
        << now.Text().toStdString();
    const QDateTime read = QDateTime::fromString(now.Text(), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    EXPECT_LE(std::abs(read.secsTo(QDateTime::currentDateTime())), 5);
}

TEST_F(SqlFunctions, YearOfDatesAndOfWhatIsNone) {
    EXPECT_EQ(Eval("SELECT Year(Left$(?1,8))", {S("06/07/00, 12:04:00 PST")}).Int(), 2000);
    EXPECT_EQ(Eval("SELECT Year(?1)", {S("12/31/97")}).Int(), 1997);
    EXPECT_EQ(Eval("SELECT Year(?1)", {S("2001-02-03 04:05:06")}).Int(), 2001);
    EXPECT_TRUE(Eval("SELECT Year(?1)", {kNull}).IsNull());
    EXPECT_TRUE(Eval("SELECT Year(?1)", {S("n/a")}).IsNull());
    EXPECT_TRUE(Eval("SELECT Year(?1)", {QByteArray("\x00\xFF", 2)}).IsNull());
}

TEST_F(SqlFunctions, IsNullInEitherSpelling) {
    EXPECT_EQ(Eval("SELECT [IsNull](?1)", {kNull}).Int(), 1);
    EXPECT_EQ(Eval("SELECT \"isNull\"(?1)", {S("")}).Int(), 0);
    EXPECT_EQ(Eval("SELECT `ISNULL`(?1)", {0}).Int(), 0);
}

TEST_F(SqlFunctions, PureFunctionsServeInGeneratedColumnsAndNowDoesNot) {
    Exec(
        "CREATE TABLE a(HighBid TEXT, EndDate TEXT, "
        "n REAL GENERATED ALWAYS AS (Val(Format(HighBid,'General Number'))), "
        "y INTEGER GENERATED ALWAYS AS (Year(Left$(EndDate,8))))");
    sqlite3_stmt* insert = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(m_db, "INSERT INTO a(HighBid, EndDate) VALUES(?1, ?2)", -1,
                                 &insert, nullptr),
              SQLITE_OK);
    sqlite3_bind_text(insert, 1, "$1,234.50", -1, SQLITE_STATIC);
    sqlite3_bind_text(insert, 2, "06/07/00, 12:04:00 PST", -1, SQLITE_STATIC);
    ASSERT_EQ(sqlite3_step(insert), SQLITE_DONE);
    sqlite3_finalize(insert);
    EXPECT_EQ(Eval("SELECT n FROM a").Real(), 1234.5);
    EXPECT_EQ(Eval("SELECT y FROM a").Int(), 2000);

    char* error = nullptr;
    EXPECT_NE(sqlite3_exec(m_db, "CREATE TABLE b(x TEXT, t TEXT GENERATED ALWAYS AS (Now()))",
                           nullptr, nullptr, &error),
              SQLITE_OK);
    sqlite3_free(error);
}

TEST_F(SqlFunctions, TheEndedSalesFilterOfTheSavedQuery) {
    Exec("CREATE TABLE Auctions(ItemNumber TEXT, EndDate TEXT, HighBid TEXT, ReserveBid TEXT)");
    const char* insert = "INSERT INTO Auctions VALUES(?1, ?2, ?3, ?4)";
    const QVariantList rows[] = {
        {S("1"), S("06/07/00, 12:04:00 PST"), S("$25.00"), S("$20.00")},  // ended, sold
        {S("2"), S("06/07/00, 12:04:00 PST"), S("$15.00"), S("$20.00")},  // reserve not met
        {S("3"), S("06/07/00, 12:04:00 PST"), S("-"), S("n/a")},          // no bid
        {S("4"), S("01/01/96, 12:04:00 PST"), S("$99.00"), S("-")},       // runs until 2096
        {S("5"), kNull, S("$5.00"), kNull},                               // no end date
    };
    for (const QVariantList& row : rows) {
        EXPECT_TRUE(Eval(insert, row).error.isEmpty());
    }
    const Result sold = Eval(
        "SELECT group_concat(ItemNumber) FROM Auctions WHERE "
        "DateDiff('d',Now(),Left$([EndDate],8))<0 AND "
        "Val(Format([HighBid],'General Number'))>=Val(Format([ReserveBid],'General Number')) AND "
        "Val(Format([HighBid],'General Number'))>0");
    EXPECT_EQ(sold.Text(), QStringLiteral("1"));
}

}  // namespace
}  // namespace lw::core
