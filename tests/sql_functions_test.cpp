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

QT_BEGIN_NAMESPACE
void PrintTo(const QVariant& value, std::ostream* out) {
    *out << (value.isValid() ? value.typeName() : "NULL") << ' ' << value.toString().toStdString();
}
QT_END_NAMESPACE

namespace lw::core {
namespace {

const QVariant kNull;
// What a statement that fails with an error gives as its value.
const QVariant kFails = QVariant::fromValue(nullptr);

// One result of one statement: its SQLite type and value, or the error.
struct Result {
    int type = SQLITE_NULL;
    QVariant value;
    QString error;

    // The value as tables expect it: kNull for NULL, kFails for an error.
    QVariant Value() const { return error.isEmpty() ? value : kFails; }
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
        } else if (rc != SQLITE_DONE) {
            result.error = QString::fromUtf8(sqlite3_errmsg(m_db));
        }
        sqlite3_finalize(statement);
        return result;
    }

    // A statement, its bound arguments and its expected value.
    struct Case {
        const char* sql;
        QVariantList args;
        QVariant expected;
    };
    void ExpectResults(std::initializer_list<Case> cases) {
        int row = 0;
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << "row " << row++ << ": " << c.sql);
            EXPECT_EQ(Eval(c.sql, c.args).Value(), c.expected);
        }
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

TEST_F(SqlFunctions, ValReadsTheLeadingNumberAndNullAsZero) {
    ExpectResults({
        {"SELECT Val(?1)", {S("1 2 3abc")}, 123.0},
        {"SELECT Val(?1)", {S("$5")}, 0.0},
        {"SELECT Val(?1)", {S("-2.5e1")}, -25.0},
        {"SELECT Val(?1)", {7}, 7},
        {"SELECT Val(?1)", {2.5}, 2.5},
        {"SELECT Val(?1)", {QByteArray("42")}, 42.0},
        {"SELECT Val(?1)", {kNull}, 0},
        {"SELECT val(?1)", {S("9")}, 9.0},  // names ignore case
        {"SELECT Val(Format(?1,'General Number'))", {kNull}, 0},
        {"SELECT Val(Format$(?1,\"General Number\"))", {S("$2,000")}, 2000.0},
    });
    EXPECT_EQ(Eval("SELECT Val(?1)", {kNull}).type, SQLITE_INTEGER);
}

TEST_F(SqlFunctions, ValOfGeneralNumberIsTheNumberRule) {
    for (const char* money :
         {"$1,234.50", "(5.00)", "($1,234.50)", "n/a", "-", "", "$0.99", "12 bids", "-$3"}) {
        const Result sql = Eval("SELECT Val(Format(?1,'General Number'))", {S(money)});
        EXPECT_EQ(sql.Real(), NumberRule(QString::fromUtf8(money))) << money;
    }
}

TEST_F(SqlFunctions, FormatTakesNumbersTextsAndPatterns) {
    ExpectResults({
        {"SELECT Format(?1,'Currency')", {1234.5}, S("$1,234.50")},
        {"SELECT Format(?1,'Currency')", {-5}, S("($5.00)")},
        {"SELECT Format(?1,'Currency')", {S("$3")}, S("$3.00")},
        {"SELECT Format(?1,'General Number')", {S("$1,234.50")}, S("1234.5")},
        {"SELECT Format(?1,'mm/dd/yyyy')", {S("06/07/00")}, S("06/07/2000")},
        {"SELECT Format(?1,'0.0%')", {0.25}, S("25.0%")},
        {"SELECT Format$(?1,'#.##')", {0.5}, S(".5")},
        {"SELECT Format(?1, ?2)", {12, kNull}, S("12")},
        {"SELECT Format(?1,'Currency')", {kNull}, kNull},
        {"SELECT Format(?1,'Currency')", {S("n/a")}, S("n/a")},
    });
}

// LEFT and ISNULL are words of SQL itself: called as functions their names
// must be quoted ("Left"(x, 8), [IsNull](x)); Left$ needs no quotes.
TEST_F(SqlFunctions, KeywordNamesAreCalledQuoted) {
    ExpectResults({
        {"SELECT Left(?1, 2)", {S("abc")}, kFails},
        {"SELECT \"Left\"(?1, 2)", {S("abc")}, S("ab")},
        {"SELECT [LEFT](?1, 2)", {S("abc")}, S("ab")},
        {"SELECT Left$(?1, 2)", {S("abc")}, S("ab")},
        {"SELECT IsNull(?1)", {kNull}, kFails},
        {"SELECT \"IsNull\"(?1)", {kNull}, 1},
        {"SELECT [IsNull](?1)", {kNull}, 1},
        {"SELECT \"isNull\"(?1)", {S("")}, 0},
        {"SELECT `ISNULL`(?1)", {0}, 0},
    });
}

TEST_F(SqlFunctions, LeftCutsCharactersAndRefusesBadCounts) {
    ExpectResults({
        {"SELECT \"Left\"(?1, 8)", {S("06/07/00, 12:04:00 PST")}, S("06/07/00")},
        {"SELECT Left$(?1, ?2)", {S("abc"), S("2")}, S("ab")},
        {"SELECT \"Left\"(?1, 10)", {S("abc")}, S("abc")},
        {"SELECT \"Left\"(?1, 0)", {S("abc")}, S("")},
        {"SELECT \"Left\"(?1, 2)", {12345}, S("12")},
        // A character outside the basic plane is one character, as substr counts.
        {"SELECT \"Left\"(?1, 2)", {S("\xF0\x9F\x98\x80xy")}, S("\xF0\x9F\x98\x80x")},
        {"SELECT length(\"Left\"(?1, 2)) = length(substr(?1, 1, 2))", {S("\xF0\x9F\x98\x80xy")}, 1},
        {"SELECT \"Left\"(?1, 8)", {kNull}, kNull},
        {"SELECT \"Left\"(?1, ?2)", {S("abc"), kNull}, kNull},
        {"SELECT \"Left\"(?1, -1)", {S("abc")}, kNull},
        {"SELECT \"Left\"(?1, ?2)", {S("abc"), S("x")}, kFails},
        {"SELECT \"Left\"(?1)", {S("abc")}, kFails},
    });
}

// The other text functions of the rule files' SQL, each in its "$"
// spelling as well.
TEST_F(SqlFunctions, RightMidCaseAndTrimInEverySpelling) {
    ExpectResults({
        {"SELECT Right$(?1, 3)", {S("06/07/00 PST")}, S("PST")},
        {"SELECT Right$(?1, 9)", {S("ab")}, S("ab")},
        {"SELECT Right$(?1, 1)", {S("x\xF0\x9F\x98\x80")}, S("\xF0\x9F\x98\x80")},
        {"SELECT Mid(?1, 4)", {S("06/07/00")}, S("07/00")},
        {"SELECT Mid$(?1, 4, 2)", {S("06/07/00")}, S("07")},
        {"SELECT Mid(?1, 20, 2)", {S("abc")}, S("")},
        {"SELECT UCase(?1) || LCase$(?1)", {S("Ab")}, S("ABab")},
        {"SELECT UCase$(?1) || LCase(?1)", {S("\xC3\xA9")}, S("\xC3\x89\xC3\xA9")},
        {"SELECT '[' || Trim$(?1) || '|' || LTrim$(?1) || '|' || RTrim$(?1) || ']'",
         {S("  a b \t ")},
         S("[a b \t|a b \t |  a b \t]")},
        {"SELECT Mid$(?1, 2)", {kNull}, kNull},
        {"SELECT Trim$(?1)", {kNull}, kNull},
        {"SELECT Mid(?1, 0)", {S("abc")}, kFails},
        {"SELECT Right$(?1, -1)", {S("abc")}, kFails},
    });
}

TEST_F(SqlFunctions, InStrFindsWithoutRegardToCase) {
    ExpectResults({
        {"SELECT InStr(?1, ',')", {S("06/07/00, 12:04:00 PST")}, 9},
        {"SELECT InStr(?1, ?2)", {S("Hello"), S("LL")}, 3},
        {"SELECT InStr(?1, ?2)", {S("Hello"), S("z")}, 0},
        {"SELECT InStr(?1, ?2, ?3)", {4, S("abcABC"), S("b")}, 5},
        {"SELECT InStr(?1, ?2, ?3)", {7, S("abcabc"), S("b")}, 0},
        {"SELECT InStr(?1, ?2, ?3)", {2, S("abc"), S("")}, 2},
        {"SELECT InStr(?1, ?2)", {S(""), S("")}, 0},
        {"SELECT InStr(?1, ?2)", {S("\xF0\x9F\x98\x80,"), S(",")}, 2},
        {"SELECT InStr(?1, ',')", {kNull}, kNull},
        {"SELECT InStr(?1, ?2)", {S("a"), kNull}, kNull},
        {"SELECT InStr(?1, ?2, ?3)", {kNull, S("a"), S("a")}, kNull},
        {"SELECT InStr(0, ?1, ?2)", {S("a"), S("a")}, kFails},
        {"SELECT InStr(?1, ?2, ?3)", {S("x"), S("a"), S("a")}, kFails},
    });
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

TEST_F(SqlFunctions, DateDiffCountsIntervalsAndRefusesBadOnes) {
    ExpectResults({
        {"SELECT DateDiff('d', ?1, ?2)", {S("06/07/00"), S("06/10/00")}, 3},
        {"SELECT DateDiff(\"d\", ?1, ?2)", {S("2000-06-07 23:59:59"), S("2000-06-08 00:00:01")}, 1},
        {"SELECT DateDiff('s', ?1, ?2)", {S("2000-06-07 23:59:59"), S("2000-06-08 00:00:01")}, 2},
        {"SELECT DateDiff('d', ?1, ?2)",
         {S("Jun 07, 2000 12:04:00 PST"), S("06/07/00, 12:04:00 PST")},
         0},
        {"SELECT DateDiff('yyyy', ?1, ?2)", {S("12/31/97"), S("01/01/00")}, 3},
        {"SELECT DateDiff('m', ?1, ?2)", {S("01/31/00"), S("03/01/00")}, 2},
        {"SELECT DateDiff('h', ?1, ?2)", {36684, 36684.5}, 12},
        {"SELECT DateDiff('d', ?1, ?2)", {kNull, S("06/07/00")}, kNull},
        {"SELECT DateDiff('d', ?1, ?2)", {S("06/07/00"), kNull}, kNull},
        {"SELECT DateDiff(?1, ?2, ?3)", {kNull, S("06/07/00"), S("06/07/00")}, kNull},
        {"SELECT DateDiff('d', ?1, ?2)", {S("n/a"), S("06/07/00")}, kNull},
        {"SELECT DateDiff('fortnight', ?1, ?2)", {S("06/07/00"), S("06/08/00")}, kFails},
        {"SELECT DateDiff('d', ?1)", {S("06/07/00")}, kFails},
    });
}

TEST_F(SqlFunctions, DateDiffFromNowSeparatesEndedFromRunning) {
    EXPECT_LT(Eval("SELECT DateDiff('d', Now(), ?1)", {S("06/07/00")}).Int(), 0);
    // 96 is 2096 by the pivot.
    EXPECT_GT(
        Eval("SELECT DateDiff('d', Now(), Left$(?1, 8))", {S("01/01/96, 12:04:00 PST")}).Int(), 0);
    const QString today = QDate::currentDate().toString(QStringLiteral("MM/dd/yy"));
    ExpectResults({{"SELECT DateDiff('d', Now(), ?1)", {today}, 0}});
}

TEST_F(SqlFunctions, CDateAndYearReadDatesAndGiveNullForWhatIsNone) {
    // The date rule cuts before the first comma; without one it asks for -1
    // characters: that row has no day, and the statement goes on.
    const char* rule = "SELECT CDate(Left$(?1,(InStr(?1,\",\"))-1))";
    ExpectResults({
        {"SELECT CDate(?1)", {S("06/07/00")}, S("2000-06-07")},
        {"SELECT CDate(?1)", {S("Jun 07, 2000 12:04:00 PST")}, S("2000-06-07 12:04:00")},
        {"SELECT CDate(?1)", {S("12/31/97")}, S("1997-12-31")},
        {"SELECT CDate(?1)", {36684}, S("2000-06-07")},
        {"SELECT CDate(?1)", {S("nonsense")}, kNull},
        {"SELECT CDate(?1)", {kNull}, kNull},
        {rule, {S("06/07/00, 12:04:00 PST")}, S("2000-06-07")},
        {rule, {S("06/07/00")}, kNull},
        {rule, {kNull}, kNull},
        {"SELECT Year(Left$(?1,8))", {S("06/07/00, 12:04:00 PST")}, 2000},
        {"SELECT Year(?1)", {S("12/31/97")}, 1997},
        {"SELECT Year(?1)", {S("2001-02-03 04:05:06")}, 2001},
        {"SELECT Year(?1)", {kNull}, kNull},
        {"SELECT Year(?1)", {S("n/a")}, kNull},
        {"SELECT Year(?1)", {QByteArray("\x00\xFF", 2)}, kNull},
    });
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

TEST_F(SqlFunctions, PureFunctionsServeInGeneratedColumnsAndNowDoesNot) {
    ExpectResults({
        {"CREATE TABLE a(HighBid TEXT, EndDate TEXT, "
         "n REAL GENERATED ALWAYS AS (Val(Format(HighBid,'General Number'))), "
         "y INTEGER GENERATED ALWAYS AS (Year(Left$(EndDate,8))))",
         {},
         kNull},
        {"INSERT INTO a(HighBid, EndDate) VALUES(?1, ?2)",
         {S("$1,234.50"), S("06/07/00, 12:04:00 PST")},
         kNull},
        {"SELECT n FROM a", {}, 1234.5},
        {"SELECT y FROM a", {}, 2000},
        {"CREATE TABLE b(x TEXT, t TEXT GENERATED ALWAYS AS (Now()))", {}, kFails},
    });
}

TEST_F(SqlFunctions, TheEndedSalesFilterOfTheSavedQuery) {
    ASSERT_TRUE(
        Eval("CREATE TABLE Auctions(ItemNumber TEXT, EndDate TEXT, HighBid TEXT, ReserveBid TEXT)")
            .error.isEmpty());
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
