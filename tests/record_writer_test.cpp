// SPDX-License-Identifier: GPL-3.0-or-later
// The record writer over a database made from the shipped schema: macros
// put into the QueryString as quoted literals, the refusal of anything but
// one SELECT over a table, update-or-insert on the first row found, the
// field-by-field rules (unknown fields, refused values, conversions, extra
// writes), and hostile values that change nothing but their own field.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/store.h"
#include "core/text.h"
#include "tests/support/test_support.h"
#include "update/protocol.h"
#include "update/record_writer.h"
#include "update/rules.h"

using namespace lw::update;
using lw::core::Database;
using lw::test::ScriptedUi;
using lw::test::SourceDir;
using lw::test::TempRoot;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

QStringList L(std::initializer_list<const char*> items) {
    QStringList list;
    for (const char* item : items) {
        list << QString::fromUtf8(item);
    }
    return list;
}

// Items joined by '|' ("" is one empty item); null: no items.
QStringList Split(const char* joined) {
    return joined ? QString::fromUtf8(joined).split(u'|') : QStringList();
}

ProtocolRecord Protocol(const QString& section, const QString& keys, bool ancillary = false) {
    QString text = QStringLiteral("[") + section + QStringLiteral("]\n") + keys;
    text.replace(u'\n', QStringLiteral("\r\n"));
    RuleStore rules;
    rules.SetText(kSiteStore, text + QStringLiteral("\r\n\r\n"));
    return ancillary ? LoadAncillaryProtocol(rules, section) : LoadRunProtocol(rules, section);
}

ProtocolRecord Protocol(const char* keys) {
    return Protocol(QStringLiteral("Current Auctions eBay"), QString::fromUtf8(keys));
}

class WriterTest : public ::testing::Test {
protected:
    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        m_db.emplace(
            lw::core::OpenOrCreateStore(m_root.File(QStringLiteral("Lotwright.db")), SourceDir()));
        m_writer.emplace(*m_db, QStringLiteral("seller1"));
    }

    // The session must not keep speaking through this fixture's Ui.
    void TearDown() override { lw::core::ResetSession(); }

    qint64 Count(const QString& sql) { return m_db->ScalarInt(sql); }

    // One column of the Auctions rows of an item number, in rowid order.
    QStringList Column(const char* column, QStringView itemNumber) {
        lw::core::Statement s = m_db->Prepare(QStringLiteral("SELECT \"") + QLatin1String(column) +
                                              QStringLiteral("\" FROM Auctions WHERE ItemNumber "
                                                             "= ? ORDER BY rowid"));
        s.Bind(1, itemNumber.toString());
        QStringList out;
        while (s.Step()) {
            out << s.Text(0);
        }
        return out;
    }

    // Writes one record of items ('|' between) by a protocol that finds the
    // Auctions rows of item [1]; keys are the protocol's Items and writes.
    RecordWriter::Outcome WriteByItem(const char* keys, const char* items) {
        ScanLists lists;
        lists.items = Split(items);
        return m_writer->WriteMain(
            Protocol(QStringLiteral("Current Auctions eBay"),
                     QStringLiteral("Sitenumber=0\nQueryString=SELECT * FROM Auctions WHERE "
                                    "ItemNumber = '[1]'\n") +
                         QString::fromUtf8(keys)),
            lists);
    }

    void AddAuction(const QString& item, const QString& title, const QString& user) {
        m_db
            ->Prepare(QStringLiteral(
                "INSERT INTO Auctions (ItemNumber, ItemTitle, UserName) VALUES (?, ?, ?)"))
            .BindAll(item, title, user)
            .Run();
    }

    ScriptedUi m_ui;
    TempRoot m_root;
    std::optional<Database> m_db;
    std::optional<RecordWriter> m_writer;
};

const char* kAuctions =
    "Sitenumber=0\nQueryString=SELECT * FROM Auctions WHERE ItemNumber = '[1]' AND "
    "UserName = 'seller1'\nItems=3\nItem1=ItemNumber\nItem2=ItemTitle\nItem3=HighBid";

}  // namespace

// ------------------------------------------------------------ building the query

// Macros become quoted literals, each once, in order; a macro with no value
// or no place leaves the text as it was; quotes in values are doubled and
// values are not searched for macros; Jet spellings become SQLite text.
TEST(RecordWriterQuery, MacrosBecomeQuotedLiteralsAndJetSpellingsSqliteText) {
    const struct {
        const char *query, *items, *ancillary, *built;
    } cases[] = {
        {"SELECT * FROM T WHERE a = [1] AND b = '[2]' OR c = [1]", " x |y", nullptr,
         "SELECT * FROM T WHERE a = 'x' AND b = 'y' OR c = [1]"},
        {"SELECT * FROM T WHERE a = '[A2]' AND b = [A1]", nullptr, "one|two",
         "SELECT * FROM T WHERE a = 'two' AND b = 'one'"},
        {"SELECT * FROM T WHERE a = '[3]'", "a|b", nullptr, "SELECT * FROM T WHERE a = '[3]'"},
        {"SELECT * FROM T", "a", "b", "SELECT * FROM T"},
        {"SELECT * FROM T WHERE a = '[1]' AND b = [2]", "O'Brien|'; DROP TABLE T; --", nullptr,
         "SELECT * FROM T WHERE a = 'O''Brien' AND b = '''; DROP TABLE T; --'"},
        // The value of [1] holds "[2]": the query's own [2] is replaced.
        {"SELECT * FROM T WHERE a = '[1]' AND b = '[2]'", "[2]|two", nullptr,
         "SELECT * FROM T WHERE a = '[2]' AND b = 'two'"},
        {"SELECT * FROM T WHERE Left$ (a, 8) = '[1]' AND b LIKE '*[2]?' AND c = \"[3]\" AND "
         "d = \"col\"",
         "06/07/00|it's|say \"hi\"", nullptr,
         "SELECT * FROM T WHERE Left$ (a, 8) = '06/07/00' AND b LIKE '%it''s_' AND "
         "c = 'say \"hi\"' AND d = \"col\""},
        // A "$" inside a literal is text.
        {"SELECT * FROM T WHERE a = 'Left$(x)'", nullptr, nullptr,
         "SELECT * FROM T WHERE a = 'Left$(x)'"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(BuildQuery(QString::fromUtf8(c.query), Split(c.items), Split(c.ancillary)),
                  QString::fromUtf8(c.built));
    }
}

// ------------------------------------------------------------ finding the row

TEST_F(WriterTest, OnlyOneSelectOverATableIsAcceptedAndARefusedQueryWritesNothing) {
    AddAuction(QStringLiteral("1"), QStringLiteral("a"), QStringLiteral("seller1"));
    const QString name = QStringLiteral("Current Auctions eBay");
    const QString query = QStringLiteral("QueryString");
    for (const char* sql :
         {"DELETE FROM Auctions", "UPDATE Auctions SET ItemTitle = 'x'",
          "SELECT * FROM Auctions; DELETE FROM Auctions", "SELECT 1",
          "SELECT * FROM CurrentAuctions", "WITH x AS (SELECT 1) SELECT * FROM Auctions",
          "SELECT * FROM Nowhere", "SELECT * FROM Auctions WHERE ("}) {
        try {
            m_writer->Find(QString::fromUtf8(sql), name, query, 1);
            ADD_FAILURE() << "accepted: " << sql;
        } catch (const QueryError& e) {
            EXPECT_TRUE(e.Message().contains(QStringLiteral("\"Current Auctions eBay\"")))
                << e.Message().toStdString();
            EXPECT_TRUE(e.Message().contains(query));
        }
    }
    ScanLists lists;
    lists.items = L({"1", "t", "$1"});
    EXPECT_THROW(
        m_writer->WriteMain(Protocol("QueryString=DELETE FROM Auctions\nItems=3\nItem1=ItemNumber"),
                            lists),
        QueryError);
    EXPECT_EQ(Column("ItemTitle", u"1"), L({"a"}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 1);
}

TEST_F(WriterTest, TheRowsComeInTheQuerysOrderFromTheTableItNames) {
    AddAuction(QStringLiteral("1"), QStringLiteral("b"), QStringLiteral("seller1"));
    AddAuction(QStringLiteral("2"), QStringLiteral("a"), QStringLiteral("seller1"));
    const QString name = QStringLiteral("P");
    const QString key = QStringLiteral("QueryString");
    auto found = m_writer->Find(
        QStringLiteral("SELECT ItemTitle FROM [Auctions] AS x WHERE x.UserName = 'seller1' "
                       "ORDER BY x.ItemTitle"),
        name, key, 0);
    EXPECT_EQ(found.table, QStringLiteral("Auctions"));
    ASSERT_EQ(found.rowids.size(), 2u);
    EXPECT_EQ(found.rowids[0], 2);
    found = m_writer->Find(QStringLiteral("SELECT * FROM \"Auctions\" a INNER JOIN Users u ON "
                                          "u.UserName = a.UserName"),
                           name, key, 0);
    EXPECT_TRUE(found.rowids.empty());
    found = m_writer->Find(QStringLiteral("select * from Auctions where Left$(ItemTitle,1)='b'"),
                           name, key, 1);
    EXPECT_EQ(found.rowids, std::vector<qint64>{1});
}

// Queries as the rule files write them, each run on the store: through the
// writer's prepared statement (macros bound) and as the command line runs
// SQL text. Functions spelled the Jet way, text compared with a function's
// number, and trailing blanks inside literals.
TEST_F(WriterTest, JetQueriesRunAndCompareAsTheRuleFilesMeanThem) {
    const char* rows[][5] = {
        {"123", "Lamp", "06/07/00, 12:04:00 PST", "$25.00", "$20.00"},  // ended, sold
        {"124", "desk", "06/07/00, 12:04:00 PST", "-", "n/a"},          // ended, no bid
        {"125", "Lamp shade", "01/01/96, 12:04:00 PST", "$5.00", "-"},  // runs until 2096
    };
    for (const auto& row : rows) {
        m_db->Prepare(QStringLiteral("INSERT INTO Auctions (ItemNumber, ItemTitle, EndDate, "
                                     "HighBid, ReserveBid, UserName) VALUES (?, ?, ?, ?, ?, 'x')"))
            .BindAll(row[0], row[1], row[2], row[3], row[4])
            .Run();
    }
    const struct {
        const char* where;
        const char* items;  // found, in rowid order
    } cases[] = {
        {"Left$(EndDate,8) = '06/07/00'", "123,124"},
        {"Left(EndDate, 8)='01/01/96'", "125"},
        {"Right$(ItemNumber,1) = '4'", "124"},
        {"Right(ItemNumber, 2) = '25'", "125"},
        {"Mid$(ItemTitle, 2, 3) = 'amp' AND Mid(ItemTitle, 6) = 'shade'", "125"},
        {"UCase$(ItemTitle) = 'LAMP' COLLATE BINARY OR LCase$(ItemTitle) = 'desk'", "123,124"},
        {"Trim$('  ' || ItemNumber || ' ') = '123' COLLATE BINARY", "123"},
        {"DateDiff(\"d\",Now(),Left$([EndDate],8))<\"0\"", "123,124"},
        {"Val(Format([HighBid],'General Number'))>'0'", "123,125"},
        {"DateDiff('d',Now(),Left$([EndDate],8))<'0' AND "
         "Val(Format([HighBid],'General Number'))>=Val(Format([ReserveBid],'General Number')) AND "
         "Val(Format([HighBid],'General Number'))>'0'",
         "123"},
        {"ItemNumber = '123 '", "123"},
        {"'124  ' = ItemNumber OR ItemTitle = 'LAMP SHADE   '", "124,125"},
        {"ItemTitle LIKE '*amp*'", "123,125"},
    };
    const QString name = QStringLiteral("P");
    const QString key = QStringLiteral("QueryString");
    auto items = [this](const std::vector<qint64>& rowids) {
        QStringList found;
        for (const qint64 rowid : rowids) {
            lw::core::Statement item =
                m_db->Prepare(QStringLiteral("SELECT ItemNumber FROM Auctions WHERE rowid = ?"));
            item.BindAll(rowid);
            found << (item.Step() ? item.Text(0) : QStringLiteral("?"));
        }
        return found.join(u',');
    };
    for (const auto& c : cases) {
        const QString query =
            QStringLiteral("SELECT * FROM Auctions WHERE ") + QString::fromUtf8(c.where);
        SCOPED_TRACE(query.toStdString());
        try {
            EXPECT_EQ(items(m_writer->FindFor(query, ScanLists(), name, key, 0).rowids),
                      QString::fromUtf8(c.items));
        } catch (const QueryError& e) {
            ADD_FAILURE() << e.Message().toStdString();
        }
        lw::core::Statement text =
            m_db->PrepareSingle(QStringLiteral("SELECT group_concat(ItemNumber) FROM (") +
                                JetSql(query) + QStringLiteral(" ORDER BY rowid)"));
        ASSERT_TRUE(text.Step());
        EXPECT_EQ(text.Text(0), QString::fromUtf8(c.items));
    }

    // A macro in a literal with a blank before its closing quote finds its
    // row, so a record written again updates it and adds no second row.
    ScanLists lists;
    lists.items = L({"123"});
    for (const char* where : {"ItemNumber='[1] '", "ItemNumber=\"[1]  \""}) {
        const QString query =
            QStringLiteral("SELECT * FROM Auctions WHERE ") + QString::fromUtf8(where);
        EXPECT_EQ(items(m_writer->FindFor(query, lists, name, key, 0).rowids), u"123") << where;
    }
    for (int pass = 0; pass < 2; ++pass) {
        lists.items = L({"300", "again"});
        m_writer->WriteMain(Protocol("Sitenumber=0\nQueryString=SELECT * FROM Auctions WHERE "
                                     "ItemNumber='[1] ' AND UserName='seller1 '\nItems=2\n"
                                     "Item1=ItemNumber\nItem2=ItemTitle"),
                            lists);
    }
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemNumber = '300'")), 1);
}

TEST(RecordWriterQuery, AMacroInALiteralSplitsItAroundAParameter) {
    const ParameterQuery query = MakeParameterQuery(
        QStringLiteral("SELECT * FROM T WHERE a LIKE '*[A1]-[1]*' AND b = [2] AND c = '[3]'"), 2,
        1);
    EXPECT_EQ(query.sql,
              QStringLiteral("SELECT * FROM T WHERE a LIKE ('%' || ? || '-' || ? || '%') AND "
                             "b = ? AND c = '[3]'"));
    const std::vector<std::pair<bool, qsizetype>> sources{{true, 0}, {false, 0}, {false, 1}};
    EXPECT_EQ(query.sources, sources);
}

TEST_F(WriterTest, BoundQueriesFindTheRowsThatTheirBuiltTextFinds) {
    AddAuction(QStringLiteral("100"), QStringLiteral("O'Brien's \"best\""),
               QStringLiteral("seller1"));
    AddAuction(QStringLiteral("101"), QStringLiteral("a%b"), QStringLiteral("seller1"));
    AddAuction(QStringLiteral("102"), QStringLiteral("[2]"), QStringLiteral("seller2"));
    AddAuction(QStringLiteral("103"), QString(), QStringLiteral("seller1"));
    const QString name = QStringLiteral("P");
    const QString key = QStringLiteral("QueryString");
    struct Case {
        const char* where;  // after "SELECT * FROM Auctions WHERE "
        const char* items;
        const char* ancillary = nullptr;
    };
    const Case cases[] = {
        {"ItemNumber = '[1]'", "100"},
        {"ItemNumber = '[1]'", "  101  "},
        {"ItemNumber = '[1]'", ""},
        {"ItemNumber = '[1]'", "'; DROP TABLE Auctions; --"},
        {"ItemTitle LIKE '*[1]*' ORDER BY ItemNumber DESC", "Brien"},
        {"ItemTitle LIKE '*[1]*' ORDER BY ItemNumber", "%"},
        {"ItemTitle LIKE '*[1]*' ORDER BY ItemNumber", "'"},
        {"ItemTitle = [1] OR ItemNumber = \"[A1]\"", "a%b", "100"},
        {"ItemTitle = [1] OR ItemNumber = \"[A1]\"", "[A1]", "[1]"},
        // Against an expression, which has no collation of its own, a bare
        // macro compares as the text would: with its case.
        {"ItemTitle || '' = [1]", "A%B"},
        {"ItemTitle || '' = [1]", "a%b"},
        // [3] has no value: it stays text, so the last test fails with two
        // items and holds with an empty third.
        {"ItemNumber IN ('[1]', '[2]') OR '[3]' = ''", "100|102"},
        {"ItemNumber IN ('[1]', '[2]') OR '[3]' = ''", "100|102|"},
        {"IFNULL(ItemTitle, '') = '[1]' AND UserName = '[2]'", "|seller1"},
        // A macro where SQLite takes no parameter: the values go into the text.
        {"ItemTitle = '[1]' COLLATE '[2]'", "A%B|NOCASE"},
    };
    int rowsFound = 0;
    for (const Case& c : cases) {
        const QString query =
            QStringLiteral("SELECT * FROM Auctions WHERE ") + QString::fromUtf8(c.where);
        SCOPED_TRACE(query.toStdString() + " with " + c.items);
        ScanLists lists;
        lists.items = Split(c.items);
        lists.ancillaryItems = Split(c.ancillary);
        for (const int limit : {0, 1}) {
            const auto built = m_writer->Find(BuildQuery(query, lists.items, lists.ancillaryItems),
                                              name, key, limit);
            // Twice: the second run reuses the prepared statement.
            for (int round = 0; round < 2; ++round) {
                const auto bound = m_writer->FindFor(query, lists, name, key, limit);
                EXPECT_EQ(bound.table, built.table);
                EXPECT_EQ(bound.rowids, built.rowids);
            }
            rowsFound += static_cast<int>(built.rowids.size());
        }
    }
    EXPECT_GE(rowsFound, 15);  // the cases find rows, not only none
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 4);
}

// ------------------------------------------------------------ main records

TEST_F(WriterTest, AnEmptyResultAddsARowThreeRowsUpdateTheFirstOnly) {
    ScanLists lists;
    lists.items = L({"100", "New title", "$5.00"});
    const ProtocolRecord auctions = Protocol(kAuctions);
    EXPECT_TRUE(auctions.writes.empty());
    EXPECT_EQ(m_writer->WriteMain(auctions, lists), RecordWriter::Outcome::Written);
    // No WriteFields: nothing beyond the items is written.
    lw::core::Statement extra = m_db->Prepare(QStringLiteral(
        "SELECT MinimumBid IS NULL AND Quantity IS NULL FROM Auctions WHERE ItemNumber = ?"));
    extra.Bind(1, QStringLiteral("100"));
    ASSERT_TRUE(extra.Step());
    EXPECT_EQ(extra.Value(0).toInt(), 1);
    EXPECT_EQ(Column("ItemTitle", u"100"), L({"New title"}));
    EXPECT_EQ(Column("UserName", u"100"), L({"seller1"}));
    EXPECT_EQ(Column("AuctionSiteFlag", u"100"), L({"0"}));
    EXPECT_TRUE(lists.items.isEmpty());

    // Three rows found (the unique key holds user, item and site: vary the site).
    m_db->Exec(QStringLiteral(
        "INSERT INTO Auctions (ItemNumber, ItemTitle, UserName, AuctionSiteFlag) VALUES "
        "('200', 'one', 'seller1', 1), ('200', 'two', 'seller1', 2), "
        "('200', 'three', 'seller1', 3)"));
    lists.items = L({"200", "changed", "$1.00"});
    const ProtocolRecord ordered = Protocol(
        "Sitenumber=2\nQueryString=SELECT * FROM Auctions WHERE ItemNumber = '[1]' ORDER BY "
        "ItemTitle DESC\nItems=3\nItem1=ItemNumber\nItem2=ItemTitle\nItem3=HighBid");
    m_writer->WriteMain(ordered, lists);
    // "two" is first in the query's order: it alone is written.
    EXPECT_EQ(Column("ItemTitle", u"200"), L({"one", "changed", "three"}));
    EXPECT_EQ(Column("HighBid", u"200"), L({"", "$1.00", ""}));
}

TEST_F(WriterTest, AnItemWithoutAFieldFeedsItsMacroAndIsNotWritten) {
    AddAuction(QStringLiteral("7"), QStringLiteral("old"), QStringLiteral("seller1"));
    WriteByItem("Items=2\nItem2=ItemTitle", "7|fresh");
    EXPECT_EQ(Column("ItemTitle", u"7"), L({"fresh"}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 1);
}

TEST_F(WriterTest, ExtraWritesIncludesAndSkippedItems) {
    ScanLists lists;
    lists.items = L({"9", "--", " $3.00 "});
    lists.includes = L({"ReserveBid"});
    lists.includeValues = L({"met"});
    m_writer->WriteMain(Protocol("Sitenumber=0\nQueryString=SELECT * FROM Auctions WHERE "
                                 "ItemNumber = '[1]'\nItems=3\nItem1=ItemNumber\nItem2=ItemTitle\n"
                                 "Item3=HighBid\nWriteFields=3\nWriteField1=MinimumBid\n"
                                 "WriteField1 Value=3\nWriteField2=Quantity\nWriteField2 Value=A1\n"
                                 "WriteField3=NumberBids\nWriteField3 Value=7"),
                        lists);
    EXPECT_EQ(Column("ItemTitle", u"9"), L({"--"}));
    EXPECT_EQ(Column("HighBid", u"9"), L({"$3.00"}));
    EXPECT_EQ(Column("ReserveBid", u"9"), L({"met"}));
    EXPECT_EQ(Column("MinimumBid", u"9"), L({" $3.00"}));
    // "A" sources and numbers past the list read as empty text.
    EXPECT_EQ(Column("Quantity", u"9"), L({""}));
    EXPECT_EQ(Column("NumberBids", u"9"), L({""}));
}

TEST_F(WriterTest, UnknownAndGeneratedFieldsAreLostAloneAndSoIsARefusedValue) {
    WriteByItem(
        "Items=5\nItem1=ItemNumber\nItem2=ItemTitle\nItem3=HighBid\nItem4=NoSuchField\n"
        "Item5=HighBidNum",
        "12|kept|$2.00|x|5");
    EXPECT_EQ(Column("ItemTitle", u"12"), L({"kept"}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions WHERE ItemNumber = '12' AND "
                                   "HighBidNum = 2")),
              1);

    m_db->Exec(
        QStringLiteral("CREATE TABLE Picky (Name TEXT CHECK (Name <> 'bad'), Note TEXT, "
                       "UserName TEXT, AuctionSiteFlag INTEGER)"));
    const ProtocolRecord picky =
        Protocol(QStringLiteral("Picky"),
                 QStringLiteral("Sitenumber=0\nQueryString=SELECT * FROM Picky WHERE Note = "
                                "'[2]'\nItems=2\nItem1=Name\nItem2=Note"));
    ScanLists lists;
    lists.items = L({"bad", "note one"});
    m_writer->WriteMain(picky, lists);  // added: the refused name alone is lost
    lists.items = L({"good", "note two"});
    m_writer->WriteMain(picky, lists);
    lists.items = L({"bad", "note two"});
    m_writer->WriteMain(picky, lists);  // updated: the good name stays
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Picky")), 2);
    EXPECT_EQ(
        Count(QStringLiteral("SELECT COUNT(*) FROM Picky WHERE Note = 'note one' AND Name IS NULL "
                             "AND UserName = 'seller1'")),
        1);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Picky WHERE Note = 'note two' AND "
                                   "Name = 'good'")),
              1);
}

// Flag and number columns take what the rule files give them as text: the
// words "True" and "False" (any case) are the Boolean, numbers stand, and a
// text the column cannot take is lost alone. A lost bid is then lost to
// every reader that asks "Winning <> 0".
TEST_F(WriterTest, FlagsHoldTheBooleanWhateverTextTheyAreGiven) {
    const char* kBids =
        "Sitenumber=0\nQueryString=SELECT * FROM Bids WHERE ItemNumber = '[1]'\nItems=4\n"
        "Item1=ItemNumber\nItem2=Winning\nItem3=EndDate\nItem4=SellerName";
    const struct {
        const char* given;
        const char* stored;  // typeof and value
    } cases[] = {
        {"True", "integer 1"},   {"False", "integer 0"},  {"true", "integer 1"},
        {"FALSE", "integer 0"},  {" True ", "integer 1"}, {"yes", "integer 1"},
        {"-1", "integer -1"},    {"0", "integer 0"},      {"1", "integer 1"},
        {"outbid", "integer 0"},  // refused: a new row keeps the default
    };
    int item = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        const QString number = QString::number(++item);
        ScanLists lists;
        lists.items = QStringList{number, QString::fromUtf8(c.given),
                                  QStringLiteral("06/07/00 12:04:00 PST"), QStringLiteral("s")};
        m_writer->WriteMain(Protocol(kBids), lists);
        lw::core::Statement row = m_db->Prepare(QStringLiteral(
            "SELECT typeof(Winning) || ' ' || Winning, SellerName FROM Bids WHERE ItemNumber = ?"));
        row.Bind(1, number);
        ASSERT_TRUE(row.Step());
        EXPECT_EQ(row.Text(0), QString::fromUtf8(c.stored));
        EXPECT_EQ(row.Text(1), u"s");  // the other fields are written
    }
    const qint64 won = Count(
        QStringLiteral("SELECT COUNT(*) FROM Bids WHERE Winning <> 0 AND UserName = 'seller1'"));
    EXPECT_EQ(won, 6);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM \"Completed Bids\"")), won);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM \"All Bids with Pending Tasks\"")), won);

    // Written again: a won bid becomes lost, and a refused text changes nothing.
    for (const char* given : {"False", "outbid"}) {
        ScanLists lists;
        lists.items = QStringList{QStringLiteral("1"), QString::fromUtf8(given),
                                  QStringLiteral("06/07/00 12:04:00 PST"), QStringLiteral("t")};
        m_writer->WriteMain(Protocol(kBids), lists);
        EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Bids WHERE ItemNumber = '1' AND "
                                       "Winning = 0 AND SellerName = 't'")),
                  1)
            << given;
    }

    // A number column refuses what is no number: the field alone is lost.
    ScanLists lists;
    lists.items = L({"90", "True", "06/07/00 12:04:00 PST", "kept"});
    m_writer->WriteMain(Protocol("Sitenumber=ERROR\nQueryString=SELECT * FROM Bids WHERE "
                                 "ItemNumber = '[1]'\nItems=4\nItem1=ItemNumber\nItem2=Winning\n"
                                 "Item3=EndDate\nItem4=SellerName"),
                        lists);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Bids WHERE ItemNumber = '90' AND "
                                   "AuctionSiteFlag = 0 AND Winning = 1 AND SellerName = 'kept'")),
              1);
}

TEST_F(WriterTest, HostileValuesChangeNothingButTheirOwnField) {
    AddAuction(QStringLiteral("other"), QStringLiteral("untouched"), QStringLiteral("seller1"));
    const QString big(1024 * 1024, u'\u00e9');
    for (const QString& title :
         {QStringLiteral("'; DROP TABLE Auctions; --"), QStringLiteral("O'Brien's \"best\""),
          QStringLiteral("' OR '1'='1"), big}) {
        ScanLists lists;
        lists.items = QStringList{title, title, QStringLiteral("$1")};
        m_writer->WriteMain(Protocol("Sitenumber=0\nQueryString=SELECT * FROM Auctions WHERE "
                                     "ItemNumber = '[1]' AND ItemTitle = [2]\nItems=3\n"
                                     "Item1=ItemNumber\nItem2=ItemTitle\nItem3=HighBid"),
                            lists);
        EXPECT_EQ(Column("ItemTitle", title), QStringList{title});
    }
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 5);
    EXPECT_EQ(Column("ItemTitle", u"other"), L({"untouched"}));
    // Written again, the same values find their rows.
    ScanLists again;
    again.items = L({"O'Brien's \"best\"", "O'Brien's \"best\"", "$2"});
    m_writer->WriteMain(Protocol("Sitenumber=0\nQueryString=SELECT * FROM Auctions WHERE "
                                 "ItemNumber = '[1]' AND ItemTitle = [2]\nItems=3\n"
                                 "Item1=ItemNumber\nItem2=ItemTitle\nItem3=HighBid"),
                        again);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 5);
}

TEST_F(WriterTest, ARowFoundAgainIsRewrittenOnlyWhereItsStoredValueChanges) {
    // Each rewrite of a column, counted by a trigger per column.
    m_db->Exec(QStringLiteral(
        "CREATE TEMP TABLE Rewrites (Name TEXT);"
        "CREATE TEMP TRIGGER TitleRewritten AFTER UPDATE OF ItemTitle ON Auctions "
        "BEGIN INSERT INTO Rewrites VALUES ('ItemTitle'); END;"
        "CREATE TEMP TRIGGER BidRewritten AFTER UPDATE OF HighBid ON Auctions "
        "BEGIN INSERT INTO Rewrites VALUES ('HighBid'); END;"
        "CREATE TEMP TRIGGER ClearedRewritten AFTER UPDATE OF OrderPaymentCleared ON Auctions "
        "BEGIN INSERT INTO Rewrites VALUES ('OrderPaymentCleared'); END;"
        "CREATE TEMP TRIGGER UserRewritten AFTER UPDATE OF UserName ON Auctions "
        "BEGIN INSERT INTO Rewrites VALUES ('UserName'); END;"));
    const auto rewrites = [this] {
        QStringList names;
        lw::core::Statement s = m_db->Prepare(QStringLiteral("SELECT Name FROM Rewrites"));
        while (s.Step()) {
            names << s.Text(0);
        }
        m_db->Exec(QStringLiteral("DELETE FROM Rewrites"));
        return names;
    };
    const char* kKeys =
        "Items=4\nItem1=ItemNumber\nItem2=ItemTitle\nItem3=HighBid\n"
        "Item4=OrderPaymentCleared";
    const struct {
        const char* items;
        const char* rewritten;  // columns, '|' between; null: none
    } writes[] = {
        {"7|Lamp|$5.00|2", nullptr},  // added, not updated
        // The same record again rewrites nothing; in a number column "2.0"
        // is the stored 2.
        {"7|Lamp |$5.00|2.0", nullptr},
        // A changed title is the one field rewritten; so is a change of case
        // in a column that compares without case.
        {"7|Brass lamp|$5.00|2", "ItemTitle"},
        {"7|Brass Lamp|$5.00|2", "ItemTitle"},
        // Text compares as text: "$5.0" is not "$5.00".
        {"7|Brass Lamp|$5.0|3", "HighBid|OrderPaymentCleared"},
    };
    for (const auto& w : writes) {
        WriteByItem(kKeys, w.items);
        EXPECT_EQ(rewrites(), Split(w.rewritten)) << w.items;
    }
    EXPECT_EQ(Column("ItemTitle", u"7"), L({"Brass Lamp"}));
    EXPECT_EQ(Column("HighBid", u"7"), L({"$5.0"}));
    EXPECT_EQ(Column("OrderPaymentCleared", u"7"), L({"3"}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 1);
}

// Many protocols write one table, each with fields of its own, in turn: each
// record's values go to its own fields, whichever lists came before it and
// however many, when rows are added and when they are found again. The two
// fields that swap places have names of one length.
TEST_F(WriterTest, EachListOfFieldsWritesItsOwnColumnsHoweverManyListsCame) {
    const auto item = [](int k) { return QString::number(1000 + k); };
    const auto quantity = [](int k, int round) {
        return QStringLiteral("%1 of %2").arg(k).arg(round);
    };
    const auto cost = [](int k, int round) { return QStringLiteral("$%1.%2").arg(k).arg(round); };
    for (int round = 0; round < 2; ++round) {
        for (int k = 0; k < 40; ++k) {
            const bool quantityFirst = k % 2 == 0;
            const QString keys = QStringLiteral(
                                     "Items=4\nItem1=ItemNumber\nItem2=%1\nItem3=%2\n"
                                     "Item4=NoSuchField%3")
                                     .arg(QLatin1String(quantityFirst ? "Quantity" : "ItemCost"),
                                          QLatin1String(quantityFirst ? "ItemCost" : "Quantity"))
                                     .arg(k);
            const QString items =
                item(k) + u'|' + (quantityFirst ? quantity(k, round) : cost(k, round)) + u'|' +
                (quantityFirst ? cost(k, round) : quantity(k, round)) + QStringLiteral("|x");
            WriteByItem(keys.toUtf8().constData(), items.toUtf8().constData());
        }
        for (int k = 0; k < 40; ++k) {
            SCOPED_TRACE(k);
            EXPECT_EQ(Column("Quantity", item(k)), QStringList{quantity(k, round)});
            EXPECT_EQ(Column("ItemCost", item(k)), QStringList{cost(k, round)});
        }
    }
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 40);
}

TEST_F(WriterTest, DatesAreConvertedAndTheConvertedValueFeedsLaterWrites) {
    WriteByItem(
        "Items=3\nItem1=ItemNumber\nItem2=EndDate\nItem3=StartDate\nWriteFields=1\n"
        "WriteField1=ShippingDate\nWriteField1 Value=2",
        "13|Jun-07-00 12:04:00 PDT|June 1, 2000");
    EXPECT_EQ(Column("EndDate", u"13"), L({"06/07/00, 12:04:00 PST"}));
    EXPECT_EQ(Column("StartDate", u"13"), L({"06/01/00"}));
    EXPECT_EQ(Column("ShippingDate", u"13"), L({"06/07/00, 12:04:00 PST"}));
}

TEST_F(WriterTest, CurrentTimeWritesOnlyAReadableSiteTime) {
    const ProtocolRecord time =
        Protocol(QStringLiteral("Current Time eBay"),
                 QStringLiteral("Sitenumber=0\nQueryString=SELECT * FROM Global\nItems=1\n"
                                "Item1=eBayTime"));
    m_db->Exec(QStringLiteral("DELETE FROM Global; INSERT INTO Global (eBayTime) VALUES ('old')"));
    ScanLists lists;
    lists.items = L({"no time here"});
    EXPECT_EQ(m_writer->WriteMain(time, lists), RecordWriter::Outcome::LeavePage);
    lists.items = L({"Wednesday, June 07, 2000 12:04:00 PDT"});
    EXPECT_EQ(m_writer->WriteMain(time, lists), RecordWriter::Outcome::Written);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Global WHERE eBayTime = "
                                   "'Wednesday, June 07, 2000 12:04:00 PDT'")),
              1);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Global")), 1);
}

// ------------------------------------------------------------ conversions

// The main end date cuts the zone and always ends in PST; with no blank the
// whole value is formatted as date and time, and what is no date passes the
// formatter unchanged. Ancillary dates cut without testing: the last four
// characters go whatever they are.
TEST(RecordWriterDates, EndAndStartDatesAreCutAndFormatted) {
    const struct {
        QString (*convert)(const QString&);
        const char *given, *stored;
    } cases[] = {
        {MainEndDate, " 06/07/00 12:04:00 PST ", "06/07/00, 12:04:00 PST"},
        {MainEndDate, "6/7/2000 12:04:00 PDT", "06/07/00, 12:04:00 PST"},
        {MainEndDate, "2000-06-07", "06/07/00, 00:00:00 PST"},
        {MainEndDate, "n/a", "n/a PST"},
        {MainEndDate, "soon today", "soon, today PST"},
        {MainStartDate, "Jun-07-00 12:04:00", "06/07/00"},
        {AncillaryEndDate, "Jun-07-00 12:04:00 PST", "06/07/00, 12:04:00 PST"},
        {AncillaryEndDate, "06/07/00", "06/0 PST"},
        {AncillaryStartDate, " Jun-07-00 12:04:00 PST", "06/07/00"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.convert(QString::fromUtf8(c.given)), QString::fromUtf8(c.stored)) << c.given;
    }
}

// A day the pages write as "mm/dd/yy" is given back as it stands: that must
// be what the formatter makes of every such text, impossible days included.
TEST(RecordWriterDates, ADayWrittenAsTheSiteWritesItIsWhatTheFormatterMakesOfIt) {
    int kept = 0;
    for (int month = 0; month <= 13; ++month) {
        for (int day = 0; day <= 32; ++day) {
            for (int year = 0; year <= 99; ++year) {
                const QString text = QStringLiteral("%1/%2/%3")
                                         .arg(month, 2, 10, QLatin1Char('0'))
                                         .arg(day, 2, 10, QLatin1Char('0'))
                                         .arg(year, 2, 10, QLatin1Char('0'));
                const QString formatted = lw::core::Format(text, QStringLiteral("mm/dd/yy"));
                ASSERT_EQ(MainStartDate(text), formatted) << text.toStdString();
                ASSERT_EQ(AncillaryStartDate(text + QStringLiteral(" 12:04:00 PST")), formatted)
                    << text.toStdString();
                ASSERT_EQ(MainEndDate(text + QStringLiteral(" 12:04:00 PST")),
                          formatted + QStringLiteral(", 12:04:00 PST"))
                    << text.toStdString();
                kept += formatted == text;
            }
        }
    }
    EXPECT_GT(kept, 30000);  // most are days that stand as written
}

// ------------------------------------------------------------ ancillary records

TEST_F(WriterTest, AncillaryRecordsTakeMainAndAncillarySourcesAndConvertEndDateWrites) {
    AddAuction(QStringLiteral("21"), QStringLiteral("t"), QStringLiteral("seller1"));
    const ProtocolRecord details = Protocol(
        QStringLiteral("Auction Details eBay"),
        QStringLiteral("SiteNumber=0\nQueryString=SELECT * FROM Auctions WHERE ItemNumber = "
                       "'[1]'\nItems=3\nItem1=HighBidderName\nItem2=StartDate\nWriteFields=2\n"
                       "WriteField1=EndDate\nWriteFieldValue1=A3\nWriteField2=ItemCategory\n"
                       "WriteFieldValue2=2"),
        true);
    ScanLists lists;
    lists.items = L({"21", "Toys: Dolls"});
    lists.ancillaryItems = L({"bidder'1", "Jun-07-00 12:04:00 PST", "Jun-08-00 10:00:00 PDT"});
    m_writer->WriteAncillary(details, lists);
    EXPECT_EQ(Column("HighBidderName", u"21"), L({"bidder'1"}));
    EXPECT_EQ(Column("StartDate", u"21"), L({"06/07/00"}));
    // An item with no field still feeds a write, converted as an end date.
    EXPECT_EQ(Column("EndDate", u"21"), L({"06/08/00, 10:00:00 PST"}));
    EXPECT_EQ(Column("ItemCategory", u"21"), L({"Toys: Dolls"}));
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Auctions")), 1);
}

TEST_F(WriterTest, DeleteBeforeWriteDeletesTheRowsTheQueryFinds) {
    m_db->Exec(QStringLiteral(
        "INSERT INTO Dutch (ItemNumber, UserName) VALUES ('5', 'seller1'), ('5', 'seller1'), "
        "('6', 'seller1')"));
    const ProtocolRecord winners = Protocol(
        QStringLiteral("Dutch Winners eBay"),
        QStringLiteral("DeleteBeforeWrite=True\nDeleteQuery=SELECT * FROM Dutch WHERE ItemNumber "
                       "= '[1]'"),
        true);
    ScanLists lists;
    lists.items = L({"5"});
    m_writer->DeleteFoundRows(winners, lists);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Dutch WHERE ItemNumber = '5'")), 0);
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Dutch")), 1);

    // A DeleteQuery that does not choose by the record's values is refused
    // as one that is no SELECT is, and deletes nothing.
    m_db->Exec(QStringLiteral("INSERT INTO Dutch (ItemNumber, UserName) VALUES ('7', 'x')"));
    for (const char* query :
         {"SELECT * FROM Dutch", "SELECT * FROM Dutch WHERE ItemNumber = '[1]' OR 1 = 1",
          "SELECT * FROM Dutch WHERE ItemNumber <> '[1]'",
          "SELECT * FROM Dutch WHERE ItemNumber = '[2]'", "DELETE FROM Dutch"}) {
        const ProtocolRecord wide = Protocol(
            QStringLiteral("Dutch Winners eBay"),
            QStringLiteral("DeleteBeforeWrite=True\nDeleteQuery=") + QString::fromUtf8(query),
            true);
        try {
            m_writer->DeleteFoundRows(wide, lists);
            ADD_FAILURE() << "accepted: " << query;
        } catch (const QueryError& e) {
            EXPECT_TRUE(e.Message().contains(QStringLiteral("DeleteQuery"))) << query;
        }
    }
    EXPECT_EQ(Count(QStringLiteral("SELECT COUNT(*) FROM Dutch")), 2);
}
