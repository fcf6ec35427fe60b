// SPDX-License-Identifier: GPL-3.0-or-later
// The page scanner: the item steps one by one (marker choice, tags stepped
// over, the value, replacements, includes, skips), the values that live for a
// whole update, ancillary records with their deliberate differences, the page
// set-up, the protocol keys, and an end at the end of the text on every input.
#include <gtest/gtest.h>

#include <QFile>
#include <ostream>
#include <random>
#include <vector>

#include "core/session.h"
#include "tests/support/test_support.h"
#include "update/protocol.h"
#include "update/rules.h"
#include "update/scanner.h"

using namespace lw::update;
using lw::test::ScriptedUi;
using lw::test::TempRoot;

static void PrintTo(const QString& text, std::ostream* out) {
    QString shown = text;
    shown.replace(u'\r', QStringLiteral("\\r")).replace(u'\n', QStringLiteral("\\n"));
    *out << '"' << shown.toStdString() << '"';
}

namespace {

// A rule text written with "\n" line ends; the store works on CR LF.
QString Crlf(const QString& text) {
    return QString(text).replace(u'\n', QStringLiteral("\r\n")) + QStringLiteral("\r\n\r\n");
}

RuleStore StoreOf(const QString& text) {
    RuleStore rules;
    rules.SetText(kSiteStore, Crlf(text));
    return rules;
}

ProtocolRecord Main(const QString& section, const QString& text) {
    return LoadRunProtocol(StoreOf(text), section);
}

ProtocolRecord Main(const char* text) {
    return Main(QStringLiteral("P"), QStringLiteral("[P]\n") + QString::fromUtf8(text));
}

ProtocolRecord Ancillary(const char* text) {
    return LoadAncillaryProtocol(StoreOf(QStringLiteral("[A]\n") + QString::fromUtf8(text)),
                                 QStringLiteral("A"));
}

ScanHooks Quiet() {
    ScanHooks hooks;
    hooks.pumpEvents = [] {};
    return hooks;
}

struct Records {
    std::vector<QStringList> items;
    std::vector<QStringList> fields;
    std::vector<QStringList> includes;
    std::vector<QStringList> includeValues;
};

// Set-up and every record of a page, as the run takes them.
Records ScanPage(PageScanner& scanner, const PageText& page, ScanState& state,
                 const ScanHooks& hooks = Quiet()) {
    Records out;
    if (!scanner.SetUp(page)) {
        ADD_FAILURE() << "page set-up failed";
        return out;
    }
    ScanLists lists;
    while (scanner.ScanRecord(state, lists, hooks) == PageScanner::RecordEnd::Complete) {
        out.items.push_back(lists.items);
        out.fields.push_back(lists.fields);
        out.includes.push_back(lists.includes);
        out.includeValues.push_back(lists.includeValues);
        lists.ClearRecord();
    }
    return out;
}

Records ScanPage(const ProtocolRecord& protocol, const QByteArray& bytes, ScanState& state,
                 const ScanHooks& hooks = Quiet()) {
    PageScanner scanner(protocol);
    const PageText page(bytes);
    return ScanPage(scanner, page, state, hooks);
}

Records ScanPage(const ProtocolRecord& protocol, const QByteArray& bytes) {
    ScanState state;
    return ScanPage(protocol, bytes, state);
}

// The first value of a page's first record.
QString FirstValue(const char* rules, const QByteArray& page) {
    const Records records = ScanPage(Main(rules), page);
    if (records.items.empty() || records.items.front().isEmpty()) {
        return QStringLiteral("<no record>");
    }
    return records.items.front().front();
}

// The part of a protocol that scans "<body>" pages.
const char* kBody = "GStart=<body\nGend=</body>\n";

}  // namespace

// ------------------------------------------------------------ item steps

// One item over one page: start holds the item's Start marker and, on further
// lines, its other keys; body stands between <body> and </body>.
TEST(ScannerItem, TheValueOfOneItem) {
    const struct {
        const char* name;
        const char* start;
        const char* body;
        const char* value;
    } cases[] = {
        // The value stands behind the tag the marker ends in; tags between
        // marker and value are stepped over, and a line end behind a tag loses
        // the text up to the next ">".
        {"behind the tag", "<b", "<b>abc</b>", "abc"},
        {"one tag stepped over", "<font", "<font x><b>abc", "abc"},
        {"tags stepped over", "<td", "<td class=a><b><i><font size=2>deep</font>", "deep"},
        {"CR LF behind a tag", "<td", "<td>\r\nlost text<b>kept</b>", "kept"},
        {"LF behind a tag", "<td", "<td>\nalso lost>kept<", "kept"},
        // An empty cell is no value: the scan goes on to the next text.
        {"empty cell", "<td", "<td></td><td>next</td>", "next"},
        {"blanks kept", "<td", "<td>  two blanks</td>", "  two blanks"},
        {"marker in another case", "<TD Class=Item", "<td CLASS=item>found</td>", "found"},
        // Bytes become text as UTF-8, or else as Latin-1.
        {"UTF-8", "<td", "<td>caf\xc3\xa9</td>", "caf\u00e9"},
        {"Latin-1", "<td", "<td>caf\xe9</td>", "caf\u00e9"},
        // "<p>[HR]" finds "<p>\r" and moves the cursor 7 characters on, onto
        // "c": had it moved by the four characters found, "cd" would be the value.
        {"[HR] in Start", "<p>[HR]", "<p>\rab>cd>value<", "value"},
        // A set of stop characters: stops at the "b" of " zzb", not at a ">".
        {"AlternateSpan", "<x\nItem1 AlternateSpan=ab", "<x zzb>val<", ">val"},
        // AlternateEnd ends the value; [HR] in it stands for both CR and LF.
        {"AlternateEnd", "<x\nItem1 AlternateEnd=|[HR]", "<x>one <b>two</b>|three",
         "one <b>two</b>"},
        {"AlternateEnd at LF", "<x\nItem1 AlternateEnd=|[HR]", "<x>one two\nthree", "one two"},
        {"AlternateEnd at CR", "<x\nItem1 AlternateEnd=|[HR]", "<x>one two\rthree", "one two"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QByteArray rules = QByteArray(kBody) + "Items=1\nItem1=Title\nItem1 Start=" + c.start;
        EXPECT_EQ(FirstValue(rules.constData(), QByteArray("<body>") + c.body + "</body>"),
                  QString::fromUtf8(c.value));
    }
}

// Every record of one page, for items that work together or meet the end of
// the text.
TEST(ScannerItem, TheRecordsOfOnePage) {
    const struct {
        const char* name;
        const char* items;
        const char* body;
        std::vector<QStringList> records;
    } cases[] = {
        {"entities are decoded and PrevValue holds the decoded text",
         "Items=2\nItem1=A\nItem2=B\nItem1 Start=<a\nItem2 Start=<b\nItem2 Skip=x & y",
         "<a>x &amp; y</a><b>never read</b>",
         {{"x & y", "--"}}},
        // Exact and case-sensitive: "none!" is not replaced.
        {"ReplaceIf turns the value and PrevValue sees the replacement",
         "Items=2\nItem1=A\nItem2=B\nItem1 Start=<a\nItem1 ReplaceIf=none\n"
         "Item1 ReplaceString=0\nItem2 Start=<b\nItem2 Skip=0",
         "<a>none</a><b>skipped</b><a>none!</a><b>read</b>",
         {{"0", "--"}, {"none!", "read"}}},
        {"AlternateStart is chosen when the previous value matches",
         "Items=2\nItem1=Kind\nItem2=Price\nItem1 Start=<k\nItem2 Start=<p\n"
         "Item2 AlternateIf=dutch\nItem2 AlternateStart=<d",
         "<k>plain<p>1<d>2<k>dutch<p>3<d>4",
         {{"plain", "1"}, {"dutch", "4"}}},
        // The skipped cell is not consumed, but the next record's first marker
        // lies behind it.
        {"Skip2 skips in a run protocol",
         "Items=2\nItem1=A\nItem2=B\nItem1 Start=<a\nItem2 Start=<c\nItem2 Skip=x\nItem2 Skip2=y",
         "<a>y<c>1<a>z<c>2",
         {{"y", "--"}, {"z", "2"}}},
        {"an AccountType at the end of the text is empty",
         "Items=1\nItem1=AccountType\nItem1 Start=<t",
         "<t>",
         {{""}}},
        {"other fields at the end of the text end the page",
         "Items=1\nItem1=Title\nItem1 Start=<t",
         "<t>one<t>",
         {{"one"}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QByteArray rules = QByteArray(kBody) + c.items;
        EXPECT_EQ(
            ScanPage(Main(rules.constData()), QByteArray("<body>") + c.body + "</body>").items,
            c.records);
    }
}

// The field and value of an IncludeTag go with the record whose marker's tag,
// or a tag stepped over (with its "<"), holds the text.
TEST(ScannerItem, IncludeTagMatchesTheMarkersTagOrATagSteppedOver) {
    const struct {
        const char* tag;
        const char* body;
    } cases[] = {
        {" class=bold", "<td class=bold>a</td><td class=thin>b</td>"},
        {"<img src=hot.gif", "<td><img src=hot.gif>a</td><td><img src=x>b</td>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tag);
        const QByteArray rules =
            QByteArray(kBody) + "Items=1\nItem1=Title\nItem1 Start=<td\nItem1 IncludeTag=" + c.tag +
            "\nItem1 IncludeTagField=Hot\nItem1 IncludeTagValue=1";
        const Records r =
            ScanPage(Main(rules.constData()), QByteArray("<body>") + c.body + "</body>");
        ASSERT_EQ(r.items.size(), 2u);
        EXPECT_EQ(r.includes[0], QStringList{QStringLiteral("Hot")});
        EXPECT_EQ(r.includeValues[0], QStringList{QStringLiteral("1")});
        EXPECT_TRUE(r.includes[1].isEmpty());
    }
}

// ------------------------------------------------------------ records and pages

// The copy markers are searched in: the letters A to Z lowered, every other
// byte (those of UTF-8 and single-byte characters too) as it came, at any
// length and any start.
TEST(ScannerPage, TheLowerCopyLowersTheAsciiLettersAlone) {
    QByteArray every;
    for (int b = 0; b < 256; ++b) {
        every += static_cast<char>(b);
    }
    const QByteArray cases[] = {
        every,
        every.mid(3),
        every.mid(60, 37),
        QByteArray("\xc3\x84PFEL Stra\xc3\x9f"
                   "e ABC@[`{xyz"),  // UTF-8
        QByteArray("\xc4PFEL Stra\xdf"
                   "e \xc0\xdaZ"),  // Windows-1252
        QByteArray(),
    };
    for (const QByteArray& bytes : cases) {
        QByteArray expected = bytes;
        for (char& c : expected) {
            if (c >= 'A' && c <= 'Z') {
                c = static_cast<char>(c + ('a' - 'A'));
            }
        }
        const PageText page(bytes);
        EXPECT_EQ(page.Lower(), expected) << bytes.toHex().toStdString();
        EXPECT_EQ(page.Bytes(), bytes);
    }
}

TEST(ScannerRecords, APageYieldsRecordsUntilAStartMarkerIsMissing) {
    const char* rules =
        "GStart=<!-- BEGIN -->\nGend=<!-- END -->\nItems=3\nItem1=ItemNumber\nItem2=ItemTitle\n"
        "Item3=HighBid\nItem1 Start=<td class=n\nItem2 Start=<td class=t\nItem3 Start=<td class=h";
    const QByteArray page =
        "<td class=n>0</td><!-- BEGIN --><tr><td class=n>1</td><td class=t>One</td>"
        "<td class=h>$1.00</td></tr><tr><td class=n>2</td><td class=t>Two</td>"
        "<td class=h>$2.00</td></tr><tr><td class=n>3</td><td class=t>cut short</td>"
        "<!-- END --><td class=h>$9.99</td>";
    const Records r = ScanPage(Main(rules), page);
    ASSERT_EQ(r.items.size(), 2u);  // the third record is dropped unwritten
    EXPECT_EQ(r.items[1],
              (QStringList{QStringLiteral("2"), QStringLiteral("Two"), QStringLiteral("$2.00")}));
    EXPECT_EQ(r.fields[0], (QStringList{QStringLiteral("ItemNumber"), QStringLiteral("ItemTitle"),
                                        QStringLiteral("HighBid")}));
}

TEST(ScannerRecords, ARecordAPageEndsInsideLeavesNothingForTheNextPage) {
    // The run keeps one set of lists from page to page and clears it only
    // after a written record.
    PageScanner scanner(
        Main("GStart=<!-- BEGIN -->\nGend=<!-- END -->\nItems=2\n"
             "Item1=ItemNumber\nItem2=ItemTitle\nItem1 Start=<td class=n\n"
             "Item2 Start=<td class=t"));
    const PageText first(
        QByteArray("<!-- BEGIN --><td class=n>101<td class=t>One"
                   "<td class=n>102<!-- END -->"));
    const PageText second(QByteArray("<!-- BEGIN --><td class=n>103<td class=t>Three<!-- END -->"));
    ScanState state;
    ScanLists lists;
    ASSERT_TRUE(scanner.SetUp(first));
    ASSERT_EQ(scanner.ScanRecord(state, lists, Quiet()), PageScanner::RecordEnd::Complete);
    lists.ClearRecord();
    EXPECT_EQ(scanner.ScanRecord(state, lists, Quiet()), PageScanner::RecordEnd::PageEnd);
    EXPECT_TRUE(lists.items.isEmpty())
        << "102 was dropped: " << lists.items.join(u',').toStdString();
    EXPECT_TRUE(lists.fields.isEmpty());
    ASSERT_TRUE(scanner.SetUp(second));
    ASSERT_EQ(scanner.ScanRecord(state, lists, Quiet()), PageScanner::RecordEnd::Complete);
    EXPECT_EQ(lists.items, (QStringList{QStringLiteral("103"), QStringLiteral("Three")}));
    EXPECT_EQ(lists.fields,
              (QStringList{QStringLiteral("ItemNumber"), QStringLiteral("ItemTitle")}));
}

TEST(ScannerRecords, SetUpNeedsBothMarkersAndScansFromGStartUpToGend) {
    PageText page(QByteArray("<x>before<!-- B --><x>in<!-- E --><x>after"));
    for (const char* markers :
         {"GStart=<!-- B -->\nGend=<!-- gone -->", "GStart=<!-- gone -->\nGend=<!-- E -->"}) {
        const QByteArray rules = QByteArray(markers) + "\nItems=1\nItem1=A\nItem1 Start=<x";
        PageScanner missing(Main(rules.constData()));
        EXPECT_FALSE(missing.SetUp(page)) << markers;
    }

    PageScanner scanner(
        Main("GStart=<!-- B -->\nGend=<!-- E -->\nItems=1\nItem1=A\nItem1 Start=<x"));
    ASSERT_TRUE(scanner.SetUp(page));
    EXPECT_EQ(scanner.ParsedText(), QByteArray("<!-- B --><x>in"));
    ScanState state;
    const Records r = ScanPage(scanner, page, state);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0], QStringList{QStringLiteral("in")});

    // The GStart marker itself is part of the scanned text.
    EXPECT_EQ(FirstValue("GStart=<table id=list>\nGend=</table>\nItems=1\nItem1=A\n"
                         "Item1 Start=<table",
                         "<table id=list>first</table>"),
              QStringLiteral("first"));
}

TEST(ScannerRecords, ASecondProtocolOnTheSamePageScansFreshFromItsOwnGStart) {
    const PageText page(QByteArray("<!-- A --><i>a1<i>a2<!-- /A --><!-- B --><i>b1<!-- /B -->"));
    ScanState state;
    PageScanner first(
        Main("GStart=<!-- A -->\nGend=<!-- /A -->\nItems=1\nItem1=X\nItem1 Start=<i"));
    const Records a = ScanPage(first, page, state);
    PageScanner second(
        Main("GStart=<!-- A -->\nGend=<!-- /B -->\nItems=1\nItem1=X\nItem1 Start=<i"));
    const Records b = ScanPage(second, page, state);
    ASSERT_EQ(a.items.size(), 2u);
    ASSERT_EQ(b.items.size(), 3u);
    EXPECT_EQ(b.items[0], QStringList{QStringLiteral("a1")});
}

TEST(ScannerRecords, DetailsShowTheFirstItemOfEachRecord) {
    struct View : UpdateView {
        void Status(const QString&) override {}
        void ConnectStatus(const QString&) override {}
        void Progress(int) override {}
        void LastUrl(const QString&) override {}
        void CurrentItem(const QString& field, const QString& value) override {
            shown << field + QStringLiteral("=") + value;
        }
        bool DetailsShown() override { return details; }
        bool details = true;
        QStringList shown;
    } view;
    ScanHooks hooks = Quiet();
    hooks.view = &view;
    const ProtocolRecord p =
        Main("GStart=<b\nGend=</body>\nItems=2\nItem1=N\nItem2=T\nItem1 Start=<n\nItem2 Start=<t");
    const QByteArray page = "<body><n>1<t>a<n>2<t>b</body>";
    ScanState state;
    ScanPage(p, page, state, hooks);
    EXPECT_EQ(view.shown, (QStringList{QStringLiteral("N=1"), QStringLiteral("N=2")}));
    view.details = false;
    view.shown.clear();
    ScanPage(p, page, state, hooks);
    EXPECT_TRUE(view.shown.isEmpty());
}

// ------------------------------------------------------------ update-long values

TEST(ScannerUpdateState, AnEmptySkipSkipsTheFirstItemOfTheUpdate) {
    const char* rules =
        "GStart=<b\nGend=</body>\nItems=2\nItem1=N\nItem2=T\nItem1 Start=<n\nItem1 Skip=\n"
        "Item2 Start=<t";
    ScanState state;
    const Records r = ScanPage(Main(rules), "<body><n>1<t>a<n>2<t>b</body>", state);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0], (QStringList{QStringLiteral("--"), QStringLiteral("a")}));
    // A skipped item adds no field: the two lists fall out of step.
    EXPECT_EQ(r.fields[0], QStringList{QStringLiteral("T")});
    // PrevValue is "a" now, and the empty Skip no longer matches.
    EXPECT_EQ(r.items[1], (QStringList{QStringLiteral("2"), QStringLiteral("b")}));
}

TEST(ScannerUpdateState, PrevValueCarriesOverToTheNextProtocol) {
    ScanState state;
    ScanPage(Main("GStart=<b\nGend=</body>\nItems=1\nItem1=N\nItem1 Start=<n"),
             "<body><n>last</body>", state);
    EXPECT_EQ(state.prevValue, QStringLiteral("last"));
    const Records r =
        ScanPage(Main("GStart=<b\nGend=</body>\nItems=2\nItem1=A\nItem2=B\nItem1 Start=<a\n"
                      "Item1 Skip=last\nItem2 Start=<c"),
                 "<body><a>skipped<c>read</body>", state);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0], (QStringList{QStringLiteral("--"), QStringLiteral("read")}));
}

TEST(ScannerUpdateState, AValueOfErrorEqualsEveryMissingKey) {
    // Item 2 has no Skip, AlternateIf or AncillaryIf: after a value "ERROR"
    // it is skipped, and its ancillary protocol fires.
    const char* rules =
        "GStart=<b\nGend=</body>\nItems=2\nItem1=A\nItem2=B\nItem1 Start=<a\n"
        "Item1 Skip=never\nItem1 Skip2=never\nItem1 AlternateIf=never\nItem1 "
        "AncillaryIf=never\nItem2 Start=<c";
    int ancillaries = 0;
    ScanHooks hooks = Quiet();
    hooks.runAncillary = [&](const ItemRule&, ScanLists&) { ++ancillaries; };
    ScanState state;
    const Records r =
        ScanPage(Main(rules), "<body><a>ERROR<c>lost<a>fine<c>read</body>", state, hooks);
    ASSERT_EQ(r.items.size(), 2u);
    EXPECT_EQ(r.items[0], (QStringList{QStringLiteral("ERROR"), QStringLiteral("--")}));
    // The skipped cell is passed by the next record's first marker.
    EXPECT_EQ(r.items[1], (QStringList{QStringLiteral("fine"), QStringLiteral("read")}));
    EXPECT_EQ(ancillaries, 1);
}

TEST(ScannerUpdateState, AHitOnAStartSetsFallbackForTheWholeUpdate) {
    ScanState state;
    // Without AStart a missing marker ends the page, and fallback stays off.
    Records r = ScanPage(Main("GStart=<b\nGend=</body>\nItems=1\nItem1=N\nItem1 Start=<old"),
                         "<body><new>1</body>", state);
    EXPECT_TRUE(r.items.empty());
    EXPECT_FALSE(state.fallbackActive);

    const char* rules =
        "GStart=<b\nGend=</body>\nItems=1\nItem1=N\nItem1 Start=<old\nItem1 AStart=<new";
    r = ScanPage(Main(rules), "<body><new>1<new>2</body>", state);
    EXPECT_TRUE(state.fallbackActive);
    ASSERT_EQ(r.items.size(), 2u);
    // A later page, even one with the old markers, is read by the new ones.
    r = ScanPage(Main(rules), "<body><old>x<new>3</body>", state);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0], QStringList{QStringLiteral("3")});
    // And so is a later protocol.
    r = ScanPage(Main("GStart=<b\nGend=</body>\nItems=1\nItem1=N\nItem1 Start=<p\n"
                      "Item1 AStart=<q"),
                 "<body><p>old<q>new</body>", state);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0], QStringList{QStringLiteral("new")});
}

TEST(ScannerUpdateState, TheFallbackSearchTakesAStartAsWrittenWithoutHr) {
    const char* rules =
        "GStart=<b\nGend=</body>\nItems=1\nItem1=N\nItem1 Start=<x>\nItem1 AStart=<y>[HR]";
    ScanState state;
    // First hit: "[HR]" is searched as it stands.
    Records r = ScanPage(Main(rules), "<body><y>[HR]>one</body>", state);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0], QStringList{QStringLiteral("one")});
    // With fallback set, AStart is the chosen marker and "[HR]" is a CR.
    r = ScanPage(Main(rules), "<body><y>\r123>two</body>", state);
    ASSERT_EQ(r.items.size(), 1u);
    EXPECT_EQ(r.items[0], QStringList{QStringLiteral("two")});
}

TEST(ScannerUpdateState, NotNullFiresOnEveryItemAlsoASkippedOne) {
    const char* rules =
        "GStart=<b\nGend=</body>\nItems=2\nItem1=A\nItem2=B\nItem1 Start=<a\nItem1 Skip=\n"
        "Item1 AncillaryIf=Not Null\nItem1 Ancillary Protocol=Details\nItem2 Start=<c";
    QStringList fired;
    ScanHooks hooks = Quiet();
    hooks.runAncillary = [&](const ItemRule& item, ScanLists& lists) {
        fired << item.ancillaryProtocol + QStringLiteral(":") + lists.items.join(u',');
    };
    ScanState state;
    ScanPage(Main(rules), "<body><a>1<c>x<a>2<c>y</body>", state, hooks);
    EXPECT_EQ(fired, (QStringList{QStringLiteral("Details:--"), QStringLiteral("Details:2")}));
}

// ------------------------------------------------------------ protocol keys

TEST(ScannerProtocolKeys, RunAndAncillaryProtocolsReadTheirOwnSpellings) {
    const QString text = QStringLiteral(
        "[Both]\nRunCaption=Cap\nSitenumber=3\nSiteNumber=4\nIterate=True\nIterateSkip=25\n"
        "Items=1\nItem1=F\nItem1 Start=<s\nItem1 Skip=a\nItem1 Skip2=b\nWriteFields=2\n"
        "WriteField1=W1\nWriteField1 Value=1\nWriteFieldValue1=A1\nWriteField2=W2\n"
        "WriteField2 Value=2");
    const RuleStore rules = StoreOf(text);
    const ProtocolRecord run = LoadRunProtocol(rules, QStringLiteral("Both"));
    const ProtocolRecord anc = LoadAncillaryProtocol(rules, QStringLiteral("Both"));
    EXPECT_EQ(run.siteNumber, QStringLiteral("3"));
    EXPECT_EQ(anc.siteNumber, QStringLiteral("4"));
    EXPECT_TRUE(run.Iterates());
    EXPECT_EQ(run.IterateSkipValue(), 25);
    EXPECT_FALSE(anc.Iterates());
    EXPECT_EQ(run.items[0].skip2, QStringLiteral("b"));
    EXPECT_EQ(anc.items[0].skip2, RuleError());
    ASSERT_EQ(run.writes.size(), 2u);
    EXPECT_EQ(run.writes[0].source, QStringLiteral("1"));
    EXPECT_EQ(anc.writes[0].source, QStringLiteral("A1"));
    EXPECT_EQ(anc.writes[1].source, RuleError());
    EXPECT_EQ(run.items[0].aStart, RuleError());
}

TEST(ScannerProtocolKeys, CountsReadTheirLeadingNumberAndAreBounded) {
    EXPECT_EQ(RuleCount(QStringLiteral("ERROR")), 0);
    EXPECT_EQ(RuleCount(QStringLiteral("3 items")), 3);
    EXPECT_EQ(RuleCount(QStringLiteral("-2")), 0);
    EXPECT_EQ(RuleCount(QStringLiteral("99999999999")), kMaxProtocolItems);
    EXPECT_TRUE(Main("Items=ERROR").items.empty());
}

TEST(ScannerProtocolKeys, AnItemsThatIsNoCountOfItemsIsRefusedByName) {
    const struct {
        const char* items;  // the key's line; none: the key is missing
        const char* told;   // what the refusal names; none: the protocol can run
    } cases[] = {
        {"Items=3", nullptr},
        {"Items= 2 ", nullptr},
        {"Items=1000", nullptr},
        {"Items=0", "its key Items is \"0\""},
        {"Items=-4", "its key Items is \"-4\""},
        {"Items=many", "its key Items is \"many\""},
        {"Items=2.5", "its key Items is \"2.5\""},
        {"Items=1001", "its key Items is \"1001\""},
        {"Items=", "its key Items is \"\""},
        {"", "its key Items is missing."},
    };
    for (const auto& c : cases) {
        const ProtocolRecord protocol =
            Main(QStringLiteral("Current Sales eBay"),
                 QStringLiteral("[Current Sales eBay]\nUrl=http://h/\nItem1=F\n") +
                     QString::fromUtf8(c.items));
        const QString fault = protocol.CountFault();
        if (c.told == nullptr) {
            EXPECT_TRUE(fault.isEmpty()) << c.items << ": " << fault.toStdString();
        } else {
            EXPECT_TRUE(fault.startsWith(
                QStringLiteral("The protocol \"Current Sales eBay\" cannot run: ")))
                << c.items << ": " << fault.toStdString();
            EXPECT_TRUE(fault.contains(QString::fromUtf8(c.told)))
                << c.items << ": " << fault.toStdString();
        }
    }
}

// ------------------------------------------------------------ ancillary records

namespace {

class AncillaryTest : public ::testing::Test {
protected:
    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        m_keptPage = m_root.File(QStringLiteral("ancillary.txt"));
    }

    // The session must not keep speaking through this fixture's Ui.
    void TearDown() override { lw::core::ResetSession(); }

    struct View : UpdateView {
        void Status(const QString& text) override { statuses << text; }
        void ConnectStatus(const QString& text) override { connects << text; }
        void Progress(int) override {}
        void LastUrl(const QString&) override {}
        void CurrentItem(const QString&, const QString&) override {}
        bool DetailsShown() override { return true; }
        QStringList statuses;
        QStringList connects;
    };

    // Runs the ancillary protocol of the given rule text over a page served
    // by a fake fetch; returns the records written.
    std::vector<QStringList> RunOver(const char* rules, const QByteArray& page,
                                     FetchResult result = FetchResult::Ok) {
        return RunOver(rules, std::vector<QByteArray>{page}, result);
    }
    // The same over several pages in turn, by one runner, as in one update.
    std::vector<QStringList> RunOver(const char* rules, const std::vector<QByteArray>& pages,
                                     FetchResult result = FetchResult::Ok) {
        const ProtocolRecord anc = Ancillary(rules);
        size_t next = 0;
        AncillaryHooks hooks;
        hooks.load = [anc](const QString& section) {
            EXPECT_EQ(section, QStringLiteral("Details"));
            return anc;
        };
        hooks.address = [](const ProtocolRecord& p, const ScanLists& lists) -> QString {
            return p.url + QStringLiteral("?") + lists.items.join(u',');
        };
        hooks.fetch = [&, result](const QString& url, QByteArray& fetched) {
            m_urls << url;
            const QByteArray& page = pages[next++];
            if (result == FetchResult::Ok) {
                fetched = page;
            }
            return result;
        };
        hooks.deleteRows = [&](const ProtocolRecord&, const ScanLists& lists) {
            EXPECT_TRUE(lists.ancillaryItems.isEmpty());
            ++m_deletes;
        };
        hooks.write = [&](const ProtocolRecord&, const ScanLists& lists) {
            m_written.push_back(lists.ancillaryItems);
        };
        hooks.failed = [&](const ProtocolRecord& p, const QString& what, bool) {
            m_failures << p.section + QStringLiteral(": ") + what;
        };
        AncillaryRunner runner(m_view, hooks, m_keptPage);
        m_view.ShowStatus(QStringLiteral("Processing Sales"));
        ItemRule item;
        item.ancillaryProtocol = QStringLiteral("Details");
        ScanLists lists;
        for (size_t i = 0; i < pages.size(); ++i) {
            lists.items = QStringList{QStringLiteral("42")};
            runner.Run(item, lists, Quiet());
            EXPECT_TRUE(lists.ancillaryItems.isEmpty());
        }
        EXPECT_TRUE(m_failures.isEmpty()) << m_failures.join(u'\n').toStdString();
        return m_written;
    }

    ScriptedUi m_ui;
    TempRoot m_root;
    QString m_keptPage;
    View m_view;
    QStringList m_urls;
    int m_deletes = 0;
    QStringList m_failures;
    std::vector<QStringList> m_written;
};

const char* kDetails =
    "RunCaption=Auction Details\nUrl=http://site/item\nGStart=<!-- I -->\nGend=<!-- /I -->\n"
    "Items=2\nItem1=Seller\nItem2=EndDate\nItem1 Start=<s\nItem2 Start=<e";

}  // namespace

TEST_F(AncillaryTest, OneRecordIsScannedAndWrittenAndTheStatusComesBack) {
    const auto written = RunOver(kDetails, "<!-- I --><s>bob<e>06/07/00<s>again<e>x<!-- /I -->");
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0], (QStringList{QStringLiteral("bob"), QStringLiteral("06/07/00")}));
    EXPECT_EQ(m_urls, QStringList{QStringLiteral("http://site/item?42")});
    EXPECT_EQ(m_view.statuses, (QStringList{QStringLiteral("Processing Sales"),
                                            QStringLiteral("Fetching Auction Details"),
                                            QStringLiteral("Processing Sales")}));
    EXPECT_EQ(m_view.connects,
              QStringList{QStringLiteral("Auction Details retrieved successfully.")});
}

// The records written from one page, by keys added to kDetails.
TEST_F(AncillaryTest, TheRecordsWrittenFromOnePage) {
    const struct {
        const char* name;
        const char* keys;
        const char* page;
        std::vector<QStringList> written;
    } cases[] = {
        {"no Gend leaves nothing to scan", "", "<!-- I --><s>bob<e>06/07/00", {}},
        {"SkipRecord ends the scan unwritten",
         "\nItem1 SkipRecord=nobody\nItem1 SkipJump=<e",
         "<!-- I --><s>nobody<e>x<!-- /I -->",
         {}},
        // An empty Skip skips item 1 of every ancillary run: its own previous
        // value is empty at each start.
        {"Skip is tested, Skip2 is not, and PrevValue starts empty",
         "\nItem1 Skip=\nItem2 Skip2=",
         "<!-- I --><s>bob<e>06/07/00<!-- /I -->",
         {{"--", "06/07/00"}}},
        {"the value loop takes an empty selection at the end",
         "",
         "<!-- I --><s>bob<e><!-- /I -->",
         {{"bob", ""}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        m_written.clear();
        const std::string rules = std::string(kDetails) + c.keys;
        EXPECT_EQ(RunOver(rules.c_str(), c.page), c.written);
    }
}

TEST_F(AncillaryTest, AFailedFetchWritesNothingQuietlyAndACancelledOneTellsTheCancel) {
    EXPECT_TRUE(RunOver(kDetails, "", FetchResult::Failed).empty());
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_EQ(m_view.statuses.last(), QStringLiteral("Processing Sales"));
    EXPECT_TRUE(RunOver(kDetails, "", FetchResult::Cancelled).empty());
    EXPECT_EQ(m_ui.Messages(), QStringList{CancelMessageText()});
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Update Cancelled")});
}

TEST_F(AncillaryTest, AMissingMarkerWritesNothingAndKeepsThePageForTheRuleWriter) {
    // A page that was read leaves no file; the page that could not be read
    // is kept whole, and a later good page does not remove it.
    EXPECT_EQ(RunOver(kDetails, "<!-- I --><s>bob<e>06/07/00<!-- /I -->").size(), 1u);
    EXPECT_FALSE(QFile::exists(m_keptPage));
    const QByteArray unread("<!-- I --><s>bob\0tail<!-- /I -->", 31);
    EXPECT_EQ(RunOver(kDetails, unread).size(), 1u);  // nothing more written
    QFile kept(m_keptPage);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), unread);
    kept.close();
    // In one update, the last page that could not be read is the one kept,
    // also when pages that were read come after it.
    const QByteArray alsoUnread("<!-- I --><x>sue<!-- /I -->");
    EXPECT_EQ(RunOver(kDetails, {unread, alsoUnread, "<!-- I --><s>ann<e>1<!-- /I -->"}).size(),
              2u);
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), alsoUnread);
}

TEST_F(AncillaryTest, DeleteBeforeWriteRunsBeforeTheScan) {
    const std::string rules =
        std::string(kDetails) + "\nDeleteBeforeWrite=True\nDeleteQuery=SELECT * FROM Dutch";
    RunOver(rules.c_str(), "<!-- I --><s>bob<e>x<!-- /I -->");
    EXPECT_EQ(m_deletes, 1);
}

TEST_F(AncillaryTest, AFallbackOfOneRunDoesNotCarryToTheNext) {
    const std::string rules = std::string(kDetails) + "\nItem1 AStart=<t\nItem2 AStart=<e";
    auto written = RunOver(rules.c_str(), "<!-- I --><t>tom<e>1<!-- /I -->");
    ASSERT_EQ(written.size(), 1u);
    m_written.clear();
    written = RunOver(rules.c_str(), "<!-- I --><t>no<s>sue<e>2<!-- /I -->");
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0][0], QStringLiteral("sue"));
}

// ------------------------------------------------------------ the end of the text

namespace {

const char* kTable =
    "GStart=<table\nGend=</table>\nItems=3\nItem1=ItemNumber\nItem2=ItemTitle\n"
    "Item3=HighBid\nItem1 Start=<td class=n\nItem2 Start=<td class=t\nItem3 Start=<td class=h\n"
    "Item3 AStart=<td class=x";

// Scans with a bound on the records taken, so that a scanner that fails to
// end fails the test instead of hanging it.
size_t Bounded(const ProtocolRecord& protocol, const QByteArray& bytes, size_t most) {
    PageScanner scanner(protocol);
    const PageText page(bytes);
    if (!scanner.SetUp(page)) {
        return 0;
    }
    ScanState state;
    ScanLists lists;
    size_t records = 0;
    while (records <= most &&
           scanner.ScanRecord(state, lists, Quiet()) == PageScanner::RecordEnd::Complete) {
        ++records;
        lists.ClearRecord();
    }
    EXPECT_LE(records, most);
    return records;
}

}  // namespace

TEST(ScannerEnds, EmptyPagesCutPagesAndMarkersAtTheVeryEnd) {
    const ProtocolRecord p = Main(kTable);
    EXPECT_EQ(Bounded(p, QByteArray(), 10), 0u);
    EXPECT_EQ(Bounded(p, "<table><td class=n", 10), 0u);
    EXPECT_EQ(Bounded(p, "<table><td class=n>1<td class=t>x<td class=h</table>", 10), 0u);
    EXPECT_EQ(Bounded(p, "<table><td class=n>1<td class=t>x<td class=h><b></table>", 10), 0u);
    EXPECT_EQ(Bounded(p, "<table><td class=n>1<td class=t>x<td class=h>\r\n</table>", 10), 0u);
    EXPECT_EQ(Bounded(p, "<table><td class=n>1<td class=t>x<td class=h>$1</table>", 10), 1u);
}

TEST(ScannerEnds, ARecordThatReadsNothingIsTakenOnce) {
    // Every item skipped: the cursor never moves, and the next record would be
    // the same one for ever.
    const ProtocolRecord p =
        Main("GStart=<b\nGend=</body>\nItems=1\nItem1=A\nItem1 Start=<a\nItem1 Skip=");
    EXPECT_EQ(Bounded(p, "<body><a>1</body>", 5), 1u);
    // An empty marker is found where the cursor stands; at the end of the text
    // it reads an empty value without moving.
    const ProtocolRecord empty =
        Main("GStart=<b\nGend=</body>\nItems=1\nItem1=AccountType\nItem1 Start=");
    EXPECT_EQ(Bounded(empty, "<body></body>", 5), 2u);
}

TEST(ScannerEnds, RandomBytesAndRandomRulesAlwaysEnd) {
    std::mt19937 random(20260523);
    const char pieces[][12] = {"<",    ">", "<td",   "\r",   "\n",       "a",     "class=",
                               "[HR]", " ", "&amp;", "\xe9", "</table>", "<table"};
    auto piece = [&] { return QByteArray(pieces[random() % std::size(pieces)]); };
    for (int round = 0; round < 400; ++round) {
        QByteArray page;
        const int length = static_cast<int>(random() % 400);
        for (int i = 0; i < length; ++i) {
            page +=
                (random() % 3 == 0) ? QByteArray(1, static_cast<char>(random() % 256)) : piece();
        }
        QByteArray rules = "GStart=" + piece() + "\nGend=" + piece() + "\nItems=3\n";
        for (int n = 1; n <= 3; ++n) {
            const QByteArray item = "Item" + QByteArray::number(n);
            rules += item + "=" + (random() % 4 == 0 ? "AccountType" : "F") + "\n";
            rules += item + " Start=" + piece() + piece() + "\n";
            if (random() % 2) {
                rules += item + " AStart=" + piece() + "\n";
            }
            if (random() % 3 == 0) {
                rules += item + " Skip=" + (random() % 2 ? QByteArray() : piece()) + "\n";
            }
            if (random() % 4 == 0) {
                rules += item + " AlternateSpan=" + piece() + "\n";
            }
            if (random() % 4 == 0) {
                rules += item + " AlternateEnd=" + piece() + "\n";
            }
        }
        const ProtocolRecord p = Main(rules.constData());
        Bounded(p, page, 4 * static_cast<size_t>(page.size()) + 8);
    }
}

TEST(ScannerEnds, FiftyMegabytesEndWithEveryRecordOfTheFirstHalf) {
    // Records for the first half, then text with no marker to the end.
    QByteArray page = "<table>";
    const QByteArray row =
        "<tr><td class=n>1234567</td><td class=t>A title of some length</td>"
        "<td class=h>$12.50</td></tr>\r\n";
    const qsizetype half = 25 * 1024 * 1024;
    page.reserve(2 * half + 64);
    while (page.size() < half) {
        page += row;
    }
    page += QByteArray(half, 'x');
    page += "</table>";
    const size_t records = Bounded(Main(kTable), page, 1000000);
    EXPECT_EQ(records, static_cast<size_t>((half - 7 + row.size() - 1) / row.size()));
}

// ------------------------------------------------------------ the scan command

// The scan command's code is built into this suite: the command line's own
// executable is no library to link with.
#include "app/cli_scan.cpp"  // NOLINT(bugprone-suspicious-include)

namespace {

class ScanCommandTest : public ::testing::Test {
protected:
    int Scan(const QString& protocol, const QString& pagesDir = QString()) {
        m_out.clear();
        m_err.clear();
        QTextStream out(&m_out);
        QTextStream err(&m_err);
        return lw::app::RunScan(m_rules, protocol, m_page, pagesDir, out, err);
    }
    QStringList Lines() const { return m_out.split(u'\n', Qt::SkipEmptyParts); }

    TempRoot m_root;
    QString m_rules =
        m_root.Write(QStringLiteral("site.pro"),
                     "[List eBay]\nGStart=<table\nGend=</table>\nItems=3\nItem1=ItemNumber\n"
                     "Item1 Start=<td class=n\nItem1 AncillaryIf=Not Null\n"
                     "Item1 Ancillary Protocol=Item eBay\nItem2 Start=<td class=t\nItem3=HighBid\n"
                     "Item3 Start=<td class=h\nItem3 Skip=skip me\nItem3 IncludeTag= hot\n"
                     "Item3 IncludeTagField=Hot\nItem3 IncludeTagValue=1\nWriteFields=1\n"
                     "WriteField1=Title\nWriteField1 Value=2\n\n"
                     "[Item eBay]\nUrl=http://site/item?n=[ItemNumber]&s=[SKIP]\nGStart=<!-- I\n"
                     "Gend=<!-- /I\nItems=1\nItem1=ItemCategory\nItem1 Start=<td class=c\n");
    QString m_page =
        m_root.Write(QStringLiteral("list.html"),
                     "<table><td class=n>1</td><td class=t>Say \"hi\"\\</td><td class=h hot>$1</td>"
                     "<td class=n>2</td><td class=t>skip me</td><td class=h>$2</td></table>");
    QString m_out;
    QString m_err;
};

}  // namespace

TEST_F(ScanCommandTest, RecordsArePrintedAsJsonLinesWithAncillaryRecordsBeforeThem) {
    const QString pages = m_root.Path() + QStringLiteral("/pages");
    m_root.Write(QStringLiteral("pages/index.txt"), "http://site/item?n=1&s=0\tone.html\n");
    m_root.Write(QStringLiteral("pages/one.html"), "<!-- I --><td class=c>Toys<!-- /I -->");
    EXPECT_EQ(Scan(QStringLiteral("List eBay"), pages), lw::app::kExitOk);
    EXPECT_EQ(
        Lines(),
        (QStringList{QStringLiteral("{\"@protocol\": \"Item eBay\", \"ItemCategory\": \"Toys\"}"),
                     QStringLiteral("{\"ItemNumber\": \"1\", \"[2]\": \"Say \\\"hi\\\"\\\\\", "
                                    "\"HighBid\": \"$1\", \"Hot\": \"1\", \"Title\": \"Say "
                                    "\\\"hi\\\"\\\\\"}"),
                     QStringLiteral("{\"ItemNumber\": \"2\", \"[2]\": \"skip me\", \"HighBid\": "
                                    "\"--\", \"Title\": \"skip me\"}")}));
    // The second item page is not saved: said, and passed over.
    EXPECT_TRUE(m_err.contains(QStringLiteral("http://site/item?n=2&s=0"))) << m_err.toStdString();
}

TEST_F(ScanCommandTest, SavedPagesAreFoundByTheirPercentEncodedAddress) {
    const QString pages = m_root.Path() + QStringLiteral("/pages");
    m_root.Write(QStringLiteral("pages/http%3A%2F%2Fsite%2Fitem%3Fn%3D2%26s%3D0"),
                 "<!-- I --><td class=c>Books<!-- /I -->");
    Scan(QStringLiteral("List eBay"), pages);
    EXPECT_TRUE(m_out.contains(QStringLiteral("\"Books\""))) << m_out.toStdString();
}

TEST_F(ScanCommandTest, MissingProtocolsFilesAndMarkersAreTold) {
    EXPECT_EQ(Scan(QStringLiteral("No Such eBay")), lw::app::kExitNotFound);
    EXPECT_TRUE(m_err.contains(QStringLiteral("No Such eBay")));
    m_page = m_root.Write(QStringLiteral("other.html"), "<p>changed page</p>");
    EXPECT_EQ(Scan(QStringLiteral("List eBay")), lw::app::kExitFailure);
    EXPECT_TRUE(m_err.contains(QStringLiteral("GStart \"<table\""))) << m_err.toStdString();
    m_page = m_root.File(QStringLiteral("missing.html"));
    EXPECT_EQ(Scan(QStringLiteral("List eBay")), lw::app::kExitFailure);
    m_rules = m_root.File(QStringLiteral("missing.pro"));
    EXPECT_EQ(Scan(QStringLiteral("List eBay")), lw::app::kExitFailure);
    EXPECT_TRUE(m_out.isEmpty());
}
