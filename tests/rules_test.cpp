// SPDX-License-Identifier: GPL-3.0-or-later
// The rule store: lookups against a plain search of the whole text (by hand
// and over random texts), lists from sections, the repair from protfix.cfg,
// the install from table Protocols, the version check and self-update with a
// scripted fetcher, the post table, and the shipped rule files.
#include <gtest/gtest.h>
#include <httplib.h>

#include <QDir>
#include <QFile>
#include <chrono>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/rule_text.h"
#include "core/session.h"
#include "core/store.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_support.h"
#include "update/rule_check.h"
#include "update/rules.h"

using lw::core::CurrentSession;
using lw::core::Database;
using lw::test::LoopbackServer;
using lw::test::ReadAll;
using lw::test::ScriptedUi;
using lw::test::SourceDir;
using lw::test::TempRoot;
using namespace lw::update;

// Every suite name starts with "rules", so that `ctest -R rules` runs exactly
// the cases of this file.

namespace {

std::string Visible(const QString& text) {
    QString shown = text;
    shown.replace(u'\r', QStringLiteral("\\r")).replace(u'\n', QStringLiteral("\\n"));
    return shown.toStdString();
}

}  // namespace

// Failures show texts, line ends made visible.
static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << Visible(text) << '"';
}

namespace {

const QString kCrLf = QStringLiteral("\r\n");
const QString kError = QStringLiteral("ERROR");
const QString kFixText = QStringLiteral(
    "Unable to correct Lotwright Pro update engine.  Please contact Tolvane Technical Support.");

// Rule text written with "\n" line ends for reading; the store works on CR LF.
QString Crlf(const char* text) {
    return QString::fromUtf8(text).replace(u'\n', kCrLf);
}

// The lookups as the plain search of the whole text, step by step, with no
// cache: what every answer of the store must equal.
QString ReferenceBlock(const QString& text, const QString& section, bool* found) {
    *found = false;
    const qsizetype start =
        text.indexOf(QStringLiteral("[") + section + QStringLiteral("]"), 0, Qt::CaseInsensitive);
    if (start < 0) {
        return {};
    }
    const qsizetype blank = text.indexOf(QStringLiteral("\r\n\r\n"), start);
    if (blank < 0) {
        return {};
    }
    *found = true;
    return text.mid(start, blank - start) + kCrLf;
}

QString ReferenceLookupKey(const QString& text, const QString& section, const QString& key) {
    bool found = false;
    const QString block = ReferenceBlock(text, section, &found);
    if (!found) {
        return kError;
    }
    const qsizetype at = block.indexOf(kCrLf + key + QStringLiteral("="));
    if (at < 0) {
        return kError;
    }
    QString line = block.mid(at + 2);
    line = line.left(line.indexOf(kCrLf));
    return line.mid(line.indexOf(u'=') + 1);
}

QString ReferenceLookupName(const QString& text, const QString& section, const QString& value) {
    bool found = false;
    const QString block = ReferenceBlock(text, section, &found);
    if (!found) {
        return kError;
    }
    const qsizetype at = block.indexOf(QStringLiteral("=") + value + kCrLf);
    if (at < 0) {
        return kError;
    }
    const QString before = block.left(at);
    const qsizetype lineBreak = before.lastIndexOf(kCrLf);
    return lineBreak < 0 ? before : before.mid(lineBreak + 2);
}

RuleStore StoreWith(const QString& text, int store = kSiteStore) {
    RuleStore rules;
    rules.SetText(store, text);
    return rules;
}

// A site.pro that passes the check of an arriving rule file: the given
// [Protocols] section, an [Update] section that runs the current time, a
// marker as Site1 of [Sites], and a section with a Url for each protocol the
// update commands run by name.
QString ValidSite(const QString& protocols, const QString& marker) {
    QString text = protocols +
                   Crlf(
                       "\n[Update]\nProtocols=1\nProtocol1=Current Time\nProtocol1 Site=0\n\n"
                       "[Sites]\nSite0=eBay\nSite1=") +
                   marker + kCrLf;
    for (const char* name :
         {"Current Time", "Current Auctions", "Auction Details", "Current Bids", "Bid Details",
          "Account History", "Account Information", "Watching Items"}) {
        text += QStringLiteral("\r\n[%1 eBay]\r\nUrl=http://127.0.0.1:8750/page\r\n")
                    .arg(QLatin1String(name));
    }
    return text;
}

// An info.pro that passes the check, with the given mail server.
QString ValidInfo(const QString& server) {
    return Crlf("[Mail Server]\nServer=") + server +
           Crlf(
               "\n\n[Tracking]\nhost=t\n\n[Shipping Regions Reversecode]\nEurope=europe\n\n"
               "[Billpoint Tax States]\nCalifornia=CA\n\n[AuctionPost Names]\nCount=0\n\n"
               "[AuctionPost Defaults]\nDefault1=x\n");
}

// What the tests read to tell which rules are in place.
QString SitesKey(const RuleStore& rules, const char* key) {
    return rules.LookupKey(QStringLiteral("Sites"), QString::fromLatin1(key), kSiteStore);
}
QString MailServer(const RuleStore& rules) {
    return rules.LookupKey(QStringLiteral("Mail Server"), QStringLiteral("Server"), kInfoStore);
}

}  // namespace

// ---------------------------------------------------------------- lookups

// What lookups in hand-written texts answer; nullptr stands for ERROR.
TEST(rulesLookup, KeysAreFoundAsTheHandWrittenCasesWant) {
    const char* bids =
        "[Current Bids eBay]\nUrl=http://127.0.0.1:8750/bids?a=1&b=2\n"
        "Item1 Start=<td class=\"x\">\nEmpty=\nPadded=  two blanks  \nItem1=HighBid\n"
        "Item10=Other\nNoEquals\n\n";
    const char* upper = "[SITES]\nSite0=eBay\n\n";
    const char* repeated = "[Update]\nProtocols=2\nProtocols=9\n\n";
    // "[Sites]" stands in the value of Next: keys are searched from there.
    const char* inValue =
        "[Links]\nNext=[Sites]\nSite0=from the links\n\n[Sites]\nSite0=eBay\nSite1=Other\n\n";
    const char* unclosed = "[A]\nk=1\n[B]\nk=2\nonlyB=3\n\n[C]\nk=4\n";
    const char* closed = "[A]\nk=1\n[B]\nk=2\nonlyB=3\n\n[C]\nk=4\n\n\n";
    const struct {
        const char* text;
        const char* section;
        const char* key;
        const char* expected;
    } cases[] = {
        // A value is everything behind the first "=", blanks and quotes kept.
        {bids, "Current Bids eBay", "Url", "http://127.0.0.1:8750/bids?a=1&b=2"},
        {bids, "Current Bids eBay", "Item1 Start", "<td class=\"x\">"},
        {bids, "Current Bids eBay", "Empty", ""},
        {bids, "Current Bids eBay", "Padded", "  two blanks  "},
        // A key never matches inside another key, nor in another case; a line
        // without "=" is never found.
        {bids, "Current Bids eBay", "Item1", "HighBid"},
        {bids, "Current Bids eBay", "Item10", "Other"},
        {bids, "Current Bids eBay", "tem1", nullptr},
        {bids, "Current Bids eBay", "url", nullptr},
        {bids, "Current Bids eBay", "Missing", nullptr},
        {bids, "Current Bids eBay", "NoEquals", nullptr},
        // Sections are found without regard to case, but whole.
        {upper, "Sites", "Site0", "eBay"},
        {upper, "sItEs", "Site0", "eBay"},
        {upper, "Site", "Site0", nullptr},
        {repeated, "Update", "Protocols", "2"},
        {inValue, "Sites", "Site0", "from the links"},
        {inValue, "Sites", "Site1", nullptr},
        // A section runs to the first blank line: without one between them,
        // B's lines belong to A as well, and the last section is missing until
        // a blank line follows it.
        {unclosed, "A", "k", "1"},
        {unclosed, "B", "k", "2"},
        {unclosed, "A", "onlyB", "3"},
        {unclosed, "C", "k", nullptr},
        {closed, "C", "k", "4"},
        // A header at the very first position gives keys (though no list).
        {"[Payment]\nMoney Order=18\n\n", "Payment", "Money Order", "18"},
    };
    for (const auto& c : cases) {
        const RuleStore rules = StoreWith(Crlf(c.text));
        EXPECT_EQ(rules.LookupKey(QString::fromUtf8(c.section), QString::fromUtf8(c.key), 0),
                  c.expected ? QString::fromUtf8(c.expected) : kError)
            << Visible(Crlf(c.text)) << " [" << c.section << "] " << c.key;
    }
}

TEST(rulesLookup, StoresAreSeparateAndANewTextDropsOldAnswers) {
    RuleStore rules;
    rules.SetText(kSiteStore, Crlf("[S]\nk=site\n\n"));
    rules.SetText(kInfoStore, Crlf("[S]\nk=info\n\n"));
    rules.SetText(kSellerStore, Crlf("[S]\nk=seller\n\n"));
    auto k = [&rules](int store) {
        return rules.LookupKey(QStringLiteral("S"), QStringLiteral("k"), store);
    };
    EXPECT_EQ(k(0), QStringLiteral("site"));
    EXPECT_EQ(k(1), QStringLiteral("info"));
    EXPECT_EQ(k(2), QStringLiteral("seller"));
    EXPECT_EQ(k(3), kError);
    EXPECT_EQ(k(-1), kError);

    rules.SetText(kSiteStore, Crlf("[Other]\nk=1\n\n[S]\nk=changed\n\n"));
    EXPECT_EQ(k(0), QStringLiteral("changed"));
    EXPECT_EQ(k(1), QStringLiteral("info"));
    rules.Clear(kInfoStore);
    EXPECT_EQ(k(1), kError);
    EXPECT_TRUE(rules.Text(kInfoStore).isEmpty());
}

TEST(rulesLookup, TheProcessStoreAnswersTheFreeFunctions) {
    Rules().ClearAll();
    Rules().SetText(kInfoStore,
                    Crlf("[x]\nfirst=1\n\n[Billpoint Tax States]\nCalifornia=CA\nNew York=NY\n\n"));
    const QString states = QStringLiteral("Billpoint Tax States");
    EXPECT_EQ(LookupRuleKey(states, QStringLiteral("New York"), 1), QStringLiteral("NY"));
    EXPECT_EQ(LookupRuleName(states, QStringLiteral("CA"), 1), QStringLiteral("California"));
    ASSERT_EQ(FillListFromRules(1, states).size(), 2u);
    Rules().ClearAll();
    EXPECT_EQ(LookupRuleKey(states, QStringLiteral("New York"), 1), kError);
}

// The name is the key of the first line whose whole value matches, in its own
// case; the "=" in front of the value need not be the line's first.
TEST(rulesLookupName, FindsTheKeyOfTheFirstLineWithTheWholeValue) {
    const RuleStore rules =
        StoreWith(Crlf("[Shipping Regions Reversecode]\nNorth America=northamerica\nEurope=europe\n"
                       "Again=europe\nA=B=europe2\n\n"),
                  kInfoStore);
    auto name = [&rules](const char* value) {
        return rules.LookupName(QStringLiteral("shipping regions reversecode"),
                                QString::fromUtf8(value), kInfoStore);
    };
    EXPECT_EQ(name("northamerica"), QStringLiteral("North America"));
    EXPECT_EQ(name("europe"), QStringLiteral("Europe"));
    EXPECT_EQ(name("america"), kError);
    EXPECT_EQ(name("north"), kError);
    EXPECT_EQ(name("Europe"), kError);
    EXPECT_EQ(name("europe2"), QStringLiteral("A=B"));
    EXPECT_EQ(name("B=europe2"), QStringLiteral("A"));
    EXPECT_EQ(rules.LookupName(QStringLiteral("Nowhere"), QStringLiteral("europe"), 1), kError);
}

// A list takes every line of its section: the key, and the leading number of
// the value (0 for none). A header at the very first position of the text
// counts as absent here.
TEST(rulesFillList, KeysWithTheLeadingNumberOfTheirValues) {
    const char* options =
        "[First]\nx=1\n\n[Auction Options]\nBold=11\nHighlight=58 (extra)\nPlain=none\n"
        "Half=12.5\nNegative=-3\nNoEquals\nSpaces= 7 days\n\n[After]\nz=9\n\n";
    const char* payment = "[Payment]\nMoney Order=18\n\n[Shipping]\nSee=31\n\n";
    const struct {
        const char* text;
        int store;
        const char* section;
        const char* rows;  // text:data, in order
    } cases[] = {
        {options, 0, "auction options",
         "Bold:11 Highlight:58 Plain:0 Half:12 Negative:-3 NoEquals:0 Spaces:7"},
        {options, 0, "Missing", ""},
        {options, 1, "Auction Options", ""},
        {payment, 0, "Payment", ""},
        {payment, 0, "Shipping", "See:31"},
        {"[x]\na=1\n\n[Empty]\n\n", 0, "Empty", ""},  // a header right before its blank line
    };
    for (const auto& c : cases) {
        QStringList rows;
        for (const RuleListRow& row :
             StoreWith(Crlf(c.text)).FillList(c.store, QString::fromUtf8(c.section))) {
            rows << row.text + u':' + QString::number(row.data);
        }
        EXPECT_EQ(rows.join(u' '), QString::fromUtf8(c.rows)) << c.section;
    }
}

// Random rule texts built from pieces that collide on purpose: sections that
// differ only in case, headers inside values, keys with "=" and line ends,
// repeated keys, empty values, missing blank lines, stray CR and LF. Every
// answer of the store (asked in random order, so its cache is warm and cold)
// must equal the plain search.
TEST(rulesDifferential, TheStoreAnswersAsThePlainSearchOverRandomTexts) {
    const QStringList sections = {"Sites",        "SITES", "sites", "Update", "Current Bids",
                                  "current bids", "A",     "a=b",   "",       "Sites]\r\n",
                                  "Item1"};
    const QStringList keys = {"Item1",    "Item1 Start", "Item10", "item1", "Url",
                              "",         "a=b",         " Url",   "Url ",  "[Sites]",
                              "x\r\nUrl", "\nUrl",       "Url\r",  "="};
    const QStringList values = {
        QString(),      "x",     "a=b=c", " spaced ", "[Sites]", "[current BIDS]",
        "<td a=\"1\">", "Url=y", "\r",    "x\ny",     "ERROR",   "="};

    std::mt19937 random(20240611u);
    auto pick = [&random](const QStringList& list) {
        return list.at(std::uniform_int_distribution<qsizetype>(0, list.size() - 1)(random));
    };
    auto chance = [&random](int percent) {
        return std::uniform_int_distribution<int>(0, 99)(random) < percent;
    };

    int compared = 0;
    int found = 0;
    for (int round = 0; round < 1500; ++round) {
        QString text;
        const int lines = std::uniform_int_distribution<int>(0, 24)(random);
        for (int i = 0; i < lines; ++i) {
            const int kind = std::uniform_int_distribution<int>(0, 99)(random);
            if (kind < 18) {
                text += u'[' + pick(sections) + u']';
            } else if (kind < 26) {
                text += QString();  // a blank line, when the next line end follows
            } else if (kind < 30) {
                text += pick(keys);  // no "="
            } else {
                text += pick(keys) + u'=' + pick(values);
            }
            if (i + 1 < lines || chance(50)) {
                text +=
                    chance(95) ? kCrLf : (chance(50) ? QStringLiteral("\n") : QStringLiteral("\r"));
            }
        }
        if (chance(70)) {
            text += QStringLiteral("\r\n\r\n");
        }

        RuleStore rules;
        rules.SetText(kInfoStore, text);
        for (int ask = 0; ask < 40; ++ask) {
            QString section = pick(sections);
            if (chance(20)) {
                section = section.toUpper();
            }
            const QString key = pick(keys);
            const QString value = pick(values);
            SCOPED_TRACE("text: " + Visible(text) + " section: " + Visible(section) +
                         " key: " + Visible(key) + " value: " + Visible(value));
            const QString expected = ReferenceLookupKey(text, section, key);
            ASSERT_EQ(rules.LookupKey(section, key, kInfoStore), expected);
            ASSERT_EQ(rules.LookupName(section, value, kInfoStore),
                      ReferenceLookupName(text, section, value));
            ++compared;
            found += expected != kError ? 1 : 0;
        }
    }
    // The generator must reach real answers, not only misses.
    EXPECT_GT(found, compared / 20);
}

// ------------------------------------------------- table, repair and install

namespace {

class RuleStoreDbTest : public ::testing::Test {
protected:
    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        QString error;
        ASSERT_TRUE(lw::core::SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        m_configs = CurrentSession().ConfigsDir;
        m_db.emplace(
            Database::Open(m_root.File(QStringLiteral("rules.db")), Database::Mode::Create));
        m_db->Exec(QStringLiteral(
            "CREATE TABLE Protocols (ProtocolName TEXT COLLATE NOCASE, ProtocolData TEXT)"));
    }

    void AddRow(const QString& name, const QString& data) {
        m_db->Prepare(QStringLiteral("INSERT INTO Protocols (ProtocolName, ProtocolData) VALUES "
                                     "(?, ?)"))
            .BindAll(name, data)
            .Run();
    }

    QStringList RowData() {
        QStringList rows;
        auto select =
            m_db->Prepare(QStringLiteral("SELECT ProtocolData FROM Protocols ORDER BY rowid"));
        while (select.Step()) {
            rows << select.Text(0);
        }
        return rows;
    }

    QString Config(const QString& name) const { return m_configs + name; }
    void WriteConfig(const QString& name, const QByteArray& bytes) {
        QFile file(Config(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    ScriptedUi m_ui;
    TempRoot m_root;
    QString m_configs;
    std::optional<Database> m_db;
    RuleStore m_rules;
};

using rulesTable = RuleStoreDbTest;

}  // namespace

// A repair that is not pending, or lacks one of its files, writes no row and
// fills no site store; each missing file is told by its own error.
TEST_F(rulesTable, ARepairNotPendingOrLackingAFileChangesNoRow) {
    AddRow(QStringLiteral("site.pro"), QStringLiteral("old site"));
    AddRow(QStringLiteral("info.pro"), QStringLiteral("old info"));
    const struct {
        QStringList files;  // of protfix.cfg, site.pro and info.pro, those there
        RuleFixResult result;
        const char* title;  // nullptr: nothing is told
        QString infoStore;
    } cases[] = {
        {{"site.pro", "info.pro"}, RuleFixResult::NotPending, nullptr, {}},
        {{"protfix.cfg", "site.pro"}, RuleFixResult::FileMissing, "Protocol Fix Error 1", {}},
        // info.pro is loaded before site.pro is looked for.
        {{"protfix.cfg", "info.pro"},
         RuleFixResult::FileMissing,
         "Protocol Fix Error 2",
         "[Mail Server]\r\nServer=mail\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.files.join(u' ').toStdString());
        ScriptedUi ui;
        CurrentSession().ui = &ui;
        m_rules.ClearAll();
        for (const QString name : {"protfix.cfg", "site.pro", "info.pro"}) {
            QFile::remove(Config(name));
            if (c.files.contains(name)) {
                WriteConfig(name, "[Mail Server]\nServer=mail\n");
            }
        }
        EXPECT_EQ(ApplyRuleFix(m_rules, *m_db), c.result);
        EXPECT_EQ(ui.Titles(), c.title ? QStringList{c.title} : QStringList());
        EXPECT_EQ(ui.Messages(), c.title ? QStringList{kFixText} : QStringList());
        EXPECT_FALSE(QFile::exists(Config(QStringLiteral("protfix.cfg"))));
        EXPECT_EQ(RowData(), (QStringList{"old site", "old info"}));
        EXPECT_TRUE(m_rules.Text(kSiteStore).isEmpty());
        EXPECT_EQ(m_rules.Text(kInfoStore), c.infoStore);
        CurrentSession().ui = &m_ui;
    }
}

TEST_F(rulesTable, TheRepairWritesSiteToTheFirstRowAndInfoToTheSecond) {
    // Rows are addressed by position, never by name.
    AddRow(QStringLiteral("info.pro"), QStringLiteral("old first"));
    AddRow(QStringLiteral("site.pro"), QStringLiteral("old second"));
    WriteConfig(QStringLiteral("protfix.cfg"), "");
    WriteConfig(QStringLiteral("site.pro"), "[Sites]\nSite0=eBay\n");
    WriteConfig(QStringLiteral("info.pro"), "[Mail Server]\r\nServer=it's mail  \r\n");
    EXPECT_EQ(ApplyRuleFix(m_rules, *m_db), RuleFixResult::Applied);
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("protfix.cfg"))));
    const QStringList rows = RowData();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0], Crlf("[Sites]\nSite0=eBay\n"));
    EXPECT_EQ(rows[1], Crlf("[Mail Server]\nServer=it's mail  \n"));
    EXPECT_EQ(m_rules.Text(kSiteStore), rows[0]);
}

TEST_F(rulesTable, ARepairThatCannotWriteKeepsItsFilesForTheNextStart) {
    WriteConfig(QStringLiteral("protfix.cfg"), "");
    WriteConfig(QStringLiteral("site.pro"), "[Sites]\nSite0=eBay\n");
    WriteConfig(QStringLiteral("info.pro"), "[Mail Server]\nServer=mail\n");
    m_db->Exec(QStringLiteral("DROP TABLE Protocols"));
    EXPECT_FALSE(InstallRuleStore(m_rules, *m_db));
    EXPECT_FALSE(m_ui.Messages().isEmpty());
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("protfix.cfg"))));
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("site.pro"))));
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("info.pro"))));
}

TEST_F(rulesTable, InstallAppendsABlankLineToEachRowAndRemovesTheFiles) {
    AddRow(QStringLiteral("site.pro"), Crlf("[Update]\nProtocols=1\n\n[Sites]\nSite0=eBay"));
    AddRow(QStringLiteral("info.pro"), Crlf("[Mail Server]\nServer=mail"));
    AddRow(QStringLiteral("third"), QStringLiteral("[Never]\r\nread=1\r\n\r\n"));
    WriteConfig(QStringLiteral("site.pro"), "[Sites]\nSite0=file\n");
    WriteConfig(QStringLiteral("info.pro"), "x");
    WriteConfig(QStringLiteral("category.pro"), "kept");
    m_rules.SetText(kSellerStore, QStringLiteral("seller"));

    ASSERT_TRUE(InstallRuleStore(m_rules, *m_db));
    EXPECT_EQ(m_rules.Text(kSiteStore),
              Crlf("[Update]\nProtocols=1\n\n[Sites]\nSite0=eBay") + QStringLiteral("\r\n\r\n"));
    EXPECT_EQ(m_rules.Text(kInfoStore),
              Crlf("[Mail Server]\nServer=mail") + QStringLiteral("\r\n\r\n"));
    EXPECT_EQ(m_rules.Text(kSellerStore), QStringLiteral("seller"));
    // The last section of each text reads by the appended blank line.
    EXPECT_EQ(SitesKey(m_rules, "Site0"), QStringLiteral("eBay"));
    EXPECT_EQ(MailServer(m_rules), QStringLiteral("mail"));
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("site.pro"))));
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("info.pro"))));
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("category.pro"))));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// The first install makes the rows that are missing, the second replaces the
// rows the first made; trailing blanks of a last line without a line end stay.
TEST_F(rulesTable, InstallRunsThePendingRepairFirst) {
    for (const QString& marker : {QStringLiteral("first  "), QStringLiteral("second")}) {
        SCOPED_TRACE(marker.toStdString());
        WriteConfig(QStringLiteral("protfix.cfg"), "");
        WriteConfig(QStringLiteral("site.pro"), ("[Sites]\nSite0=" + marker).toUtf8());
        WriteConfig(QStringLiteral("info.pro"),
                    ("[Mail Server]\nServer=" + marker + "\n").toUtf8());
        ASSERT_TRUE(InstallRuleStore(m_rules, *m_db));
        EXPECT_EQ(SitesKey(m_rules, "Site0"), marker);
        EXPECT_EQ(MailServer(m_rules), marker);
        const QStringList rows = RowData();
        ASSERT_EQ(rows.size(), 2);
        EXPECT_TRUE(rows[0].startsWith("[Sites]\r\nSite0=" + marker)) << Visible(rows[0]);
        EXPECT_EQ(rows[1], "[Mail Server]\r\nServer=" + marker + "\r\n");
        for (const char* name : {"protfix.cfg", "site.pro", "info.pro"}) {
            EXPECT_FALSE(QFile::exists(Config(QLatin1String(name)))) << name;
        }
    }
}

TEST_F(rulesTable, AFailedRepairStillInstallsWhatTheTableHolds) {
    AddRow(QStringLiteral("site.pro"), Crlf("[Sites]\nSite0=table"));
    AddRow(QStringLiteral("info.pro"), Crlf("[Mail Server]\nServer=table"));
    WriteConfig(QStringLiteral("protfix.cfg"), "");
    WriteConfig(QStringLiteral("info.pro"), "[Mail Server]\nServer=file\n");
    ASSERT_TRUE(InstallRuleStore(m_rules, *m_db));
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Protocol Fix Error 2")});
    EXPECT_EQ(MailServer(m_rules), QStringLiteral("table"));
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("info.pro"))));
}

TEST_F(rulesTable, AShortOrMissingTableIsToldAndLeavesTheStoresEmpty) {
    m_rules.SetText(kSiteStore, QStringLiteral("stale"));
    AddRow(QStringLiteral("site.pro"), Crlf("[Sites]\nSite0=eBay"));
    WriteConfig(QStringLiteral("site.pro"), "[Sites]\nSite0=file\n");
    EXPECT_FALSE(InstallRuleStore(m_rules, *m_db));
    ASSERT_EQ(m_ui.Messages().size(), 1);
    EXPECT_TRUE(m_ui.Messages()[0].contains(QStringLiteral("info.pro")));
    EXPECT_EQ(SitesKey(m_rules, "Site0"), QStringLiteral("eBay"));
    EXPECT_TRUE(m_rules.Text(kInfoStore).isEmpty());
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("site.pro"))));

    m_db->Exec(QStringLiteral("DROP TABLE Protocols"));
    EXPECT_FALSE(DecryptProtocols(m_rules, *m_db));
    EXPECT_EQ(m_ui.Messages().size(), 2);
    EXPECT_TRUE(m_rules.Text(kSiteStore).isEmpty());
}

TEST_F(rulesTable, DecryptProtocolsRefillsWithoutRepairOrRemovingFiles) {
    AddRow(QStringLiteral("site.pro"), QStringLiteral("[S]\r\nk=plain"));
    AddRow(QStringLiteral("info.pro"), QStringLiteral("[I]\r\nk=text"));
    WriteConfig(QStringLiteral("protfix.cfg"), "");
    WriteConfig(QStringLiteral("site.pro"), "[S]\nk=file\n");
    ASSERT_TRUE(DecryptProtocols(m_rules, *m_db));
    EXPECT_EQ(m_rules.Text(kSiteStore), QStringLiteral("[S]\r\nk=plain\r\n\r\n"));
    EXPECT_EQ(m_rules.LookupKey(QStringLiteral("I"), QStringLiteral("k"), 1),
              QStringLiteral("text"));
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("protfix.cfg"))));
    EXPECT_TRUE(QFile::exists(Config(QStringLiteral("site.pro"))));
}

// ---------------------------------------------- the session route and the CLI

namespace {

// A session whose database is made from a small shipped folder.
class RuleSessionTest : public ::testing::Test {
protected:
    void SetUp() override {
        lw::core::ResetSession(&m_ui);
        Rules().ClearAll();
        QString error;
        ASSERT_TRUE(lw::core::SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        m_shipped.Write(QStringLiteral("data/schema.sql"),
                        "CREATE TABLE Protocols (ProtocolName TEXT COLLATE NOCASE, "
                        "ProtocolData TEXT);");
        m_shipped.Write(QStringLiteral("data/seed.sql"), "-- no seed rows\n");
        m_shipped.Write(QStringLiteral("rules/site.pro"), "[Sites]\r\nSite0=shipped\r\n");
        m_shipped.Write(QStringLiteral("rules/info.pro"), "[Mail Server]\r\nServer=shipped\r\n");
        CurrentSession().ShippedDir = m_shipped.Path();
    }
    void TearDown() override { Rules().ClearAll(); }

    QString Config(const QString& name) const { return CurrentSession().ConfigsDir + name; }

    ScriptedUi m_ui;
    TempRoot m_root;
    TempRoot m_shipped;
};

using rulesSession = RuleSessionTest;

}  // namespace

TEST_F(rulesSession, StartUpFillsTheProcessStoreFromTheSessionDatabase) {
    InstallRuleStore();
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_EQ(SitesKey(Rules(), "Site0"), QStringLiteral("shipped"));
    EXPECT_EQ(MailServer(Rules()), QStringLiteral("shipped"));
}

TEST_F(rulesSession, ADamagedDatabaseIsToldAndStartUpGoesOn) {
    m_root.Write(QStringLiteral("Data/Lotwright.db"), QByteArray(4096, 'Z'));
    EXPECT_NO_THROW(InstallRuleStore());
    EXPECT_EQ(m_ui.Messages().size(), 1);
    EXPECT_NO_THROW(DecryptProtocols());
    EXPECT_EQ(SitesKey(Rules(), "Site0"), kError);
}

// Rule files given by hand are checked first: a bad one is named with what is
// wrong and overwrites nothing; good ones replace the rules and the ones in use
// are kept.
TEST_F(rulesSession, InstallRuleFilesRefusesBadFilesByNameAndReplacesTheRulesWithGoodOnes) {
    TempRoot given;
    const QString site =
        given.Write(QStringLiteral("my site.pro"),
                    ValidSite(Crlf("[Protocols]\nProtocolCheckUrl=u\nCurrent Protocol=1\n"),
                              QStringLiteral("given"))
                        .toUtf8());
    const QString info =
        given.Write(QStringLiteral("my info.pro"), ValidInfo(QStringLiteral("given")).toUtf8());
    const QString empty = given.Write(QStringLiteral("empty.pro"), "\r\n  \r\n");
    const QString portal = given.Write(QStringLiteral("portal.pro"),
                                       "\n<!DOCTYPE html><html><body>Sign in</body></html>\n");
    const QString missing = given.File(QStringLiteral("nowhere/info.pro"));
    QFile old(Config(QStringLiteral("site.pro")));
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();

    const struct {
        QString site, info, bad, says;
    } cases[] = {
        {site, missing, missing, QStringLiteral("Cannot read")},
        {empty, info, empty, QStringLiteral("site.pro holds no rules")},
        {site, portal, portal, QStringLiteral("info.pro is a web page")},
        {info, site, info, QStringLiteral("site.pro has no [Protocols] section")},
    };
    for (const auto& c : cases) {
        QString error;
        EXPECT_FALSE(InstallRuleFiles(c.site, c.info, &error));
        EXPECT_TRUE(error.contains(c.bad) && error.contains(c.says)) << error.toStdString();
    }
    EXPECT_EQ(ReadAll(Config(QStringLiteral("site.pro"))), QByteArray("old"));
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("info.pro"))));
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("protfix.cfg"))));
    EXPECT_FALSE(QFile::exists(PreviousRulesDir()));

    QString error;
    ASSERT_TRUE(InstallRuleFiles(site, info, &error)) << error.toStdString();
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_EQ(SitesKey(Rules(), "Site1"), QStringLiteral("given"));
    EXPECT_EQ(MailServer(Rules()), QStringLiteral("given"));
    for (const char* name : {"site.pro", "info.pro", "protfix.cfg"}) {
        EXPECT_FALSE(QFile::exists(Config(QString::fromLatin1(name)))) << name;
    }
    EXPECT_EQ(ReadAll(PreviousRulesDir() + QStringLiteral("site.pro")),
              QByteArray("[Sites]\r\nSite0=shipped\r\n"));
    EXPECT_EQ(ReadAll(PreviousRulesDir() + QStringLiteral("info.pro")),
              QByteArray("[Mail Server]\r\nServer=shipped\r\n"));
    // A later start reads the same rules from the table.
    Rules().ClearAll();
    InstallRuleStore();
    EXPECT_EQ(SitesKey(Rules(), "Site1"), QStringLiteral("given"));
}

// ------------------------------------------------- version check and update

namespace {

// Answers each address from a script and records the fetches in order.
struct ScriptedServer {
    struct Answer {
        FetchOutcome outcome = FetchOutcome::Ok;
        QByteArray body;
    };
    std::map<QString, Answer> answers;
    QStringList fetched;  // addresses, in order
    QStringList files;    // target files, in order

    RuleFetcher Fetcher() {
        return [this](const QString& url, const QString& path) {
            fetched << url;
            files << path;
            const auto found = answers.find(url);
            if (found == answers.end()) {
                return FetchOutcome::Failed;
            }
            if (found->second.outcome == FetchOutcome::Ok) {
                QFile file(path);
                if (!file.open(QIODevice::WriteOnly)) {
                    return FetchOutcome::Failed;
                }
                file.write(found->second.body);
            }
            return found->second.outcome;
        };
    }
};

const QString kCheckUrl = QStringLiteral("http://127.0.0.1:8750/rules/version");

QString SiteRules(const QString& version, const QString& marker) {
    return ValidSite(Crlf("[Protocols]\nProtocolCheckUrl=http://127.0.0.1:8750/rules/version\n"
                          "Current Protocol=") +
                         version +
                         Crlf("\nProtocols=4\n"
                              "ProtocolDownload1=http://127.0.0.1:8750/rules/category.pro\n"
                              "ProtocolName1=category.pro\n"
                              "ProtocolDownload2=http://127.0.0.1:8750/rules/site.pro\n"
                              "ProtocolName2=site.pro\n"
                              "ProtocolDownload3=http://127.0.0.1:8750/rules/info.pro\n"
                              "ProtocolName3=info.pro\n"
                              "ProtocolDownload4=http://127.0.0.1:8750/rules/escape.pro\n"
                              "ProtocolName4=../escape.pro\n"),
                     marker);
}

class RuleUpdateTest : public RuleStoreDbTest {
protected:
    void SetUp() override {
        RuleStoreDbTest::SetUp();
        AddRow(QStringLiteral("site.pro"), SiteRules(QStringLiteral("7"), QStringLiteral("old")));
        AddRow(QStringLiteral("info.pro"), ValidInfo(QStringLiteral("old")));
        ASSERT_TRUE(DecryptProtocols(m_rules, *m_db));
    }

    bool Check() { return CheckRuleUpdate(m_rules, *m_db, m_server.Fetcher()); }

    void ServeNewRules() {
        m_server.answers[kCheckUrl] = {FetchOutcome::Ok, "PROTOCOL: 8 \r\n"};
        m_server.answers[QStringLiteral("http://127.0.0.1:8750/rules/category.pro")] = {
            FetchOutcome::Ok, "[Antiques]\nSilver=102\n"};
        m_server.answers[QStringLiteral("http://127.0.0.1:8750/rules/site.pro")] = {
            FetchOutcome::Ok, SiteRules(QStringLiteral("8"), QStringLiteral("new")).toUtf8()};
        m_server.answers[QStringLiteral("http://127.0.0.1:8750/rules/info.pro")] = {
            FetchOutcome::Ok, ValidInfo(QStringLiteral("new")).toUtf8()};
        m_server.answers[QStringLiteral("http://127.0.0.1:8750/rules/escape.pro")] = {
            FetchOutcome::Ok, "outside"};
    }

    ScriptedServer m_server;
};

using rulesUpdate = RuleUpdateTest;

}  // namespace

// A check that is cancelled, fails, or answers nothing usable stops the update
// with its own message and fetches no rule file. Each case checks again after
// the one before it failed.
TEST_F(rulesUpdate, AFailedCheckStopsTheUpdateAndTheNextUpdateChecksAgain) {
    const QString network = QStringLiteral("Network error.  Update cancelled.");
    const QString cancelled =
        QStringLiteral("Update cancelled.  Some Auction/Bid information may be incomplete.");
    const struct {
        const char* name;
        ScriptedServer::Answer answer;
        QString message, title;
    } cases[] = {
        {"cancelled", {FetchOutcome::Cancelled, {}}, cancelled, "Update Cancelled"},
        {"failed", {FetchOutcome::Failed, {}}, network, "Network Error"},
        {"not found",
         {FetchOutcome::Ok, "<html><h1>404 Not Found</h1> PROTOCOL: 7</html>"},
         network,
         "Network Error"},
        {"empty", {FetchOutcome::Ok, ""}, network, "Network Error"},
        {"blank", {FetchOutcome::Ok, "  \r\n\t \r\n"}, network, "Network Error"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScriptedUi ui;
        CurrentSession().ui = &ui;
        m_server.fetched.clear();
        m_server.files.clear();
        m_server.answers[kCheckUrl] = c.answer;
        EXPECT_FALSE(Check());
        EXPECT_EQ(ui.Statuses(), QStringList{"Checking version"});
        EXPECT_EQ(ui.Messages(), QStringList{c.message});
        EXPECT_EQ(ui.Titles(), QStringList{c.title});
        EXPECT_FALSE(CurrentSession().RulesChecked);
        EXPECT_EQ(m_server.fetched, QStringList{kCheckUrl});
        EXPECT_EQ(m_server.files, QStringList{Config(QStringLiteral("update.txt"))});
        CurrentSession().ui = &m_ui;
    }
    EXPECT_EQ(RowData()[0], SiteRules(QStringLiteral("7"), QStringLiteral("old")));
}

TEST_F(rulesUpdate, AStaleVersionFileIsNeverReadAsTheAnswer) {
    WriteConfig(QStringLiteral("update.txt"), "PROTOCOL: 7");
    // A fetcher that claims success but writes nothing.
    const bool result = CheckRuleUpdate(
        m_rules, *m_db, [](const QString&, const QString&) { return FetchOutcome::Ok; });
    EXPECT_FALSE(result);
    EXPECT_EQ(m_ui.Titles(), QStringList{QStringLiteral("Network Error")});
}

// Once a check has succeeded, the next answers False at once and fetches nothing.
TEST_F(rulesUpdate, TheSameVersionGoesOnWithoutDownloadsAndIsNotCheckedAgain) {
    m_server.answers[kCheckUrl] = {FetchOutcome::Ok, "\r\nPROTOCOL:   7  \r\n"};
    const QStringList statuses = {"Checking version", "Continuing Update."};
    EXPECT_TRUE(Check());
    EXPECT_TRUE(CurrentSession().RulesChecked);
    EXPECT_EQ(m_server.fetched, QStringList{kCheckUrl});
    EXPECT_EQ(m_ui.Statuses(), statuses);
    EXPECT_TRUE(m_ui.Messages().isEmpty());

    EXPECT_FALSE(Check());
    EXPECT_EQ(m_server.fetched, QStringList{kCheckUrl});
    EXPECT_EQ(m_ui.Statuses(), statuses);
}

// An answer without the marker counts as a new version too: it comes second,
// with version 8 already in use.
TEST_F(rulesUpdate, ANewVersionDownloadsTheFilesAndTheRulesTakeEffectAtOnce) {
    const QString base = QStringLiteral("http://127.0.0.1:8750/rules/");
    for (const char* answer : {"PROTOCOL: 8 \r\n", "version 8"}) {
        SCOPED_TRACE(answer);
        ScriptedUi ui;
        CurrentSession().ui = &ui;
        CurrentSession().RulesChecked = false;
        m_server.fetched.clear();
        ServeNewRules();
        m_server.answers[kCheckUrl] = {FetchOutcome::Ok, answer};
        WriteConfig(QStringLiteral("category.pro"), "old categories");
        EXPECT_TRUE(Check());
        EXPECT_TRUE(CurrentSession().RulesChecked);
        EXPECT_EQ(m_server.fetched, (QStringList{kCheckUrl, base + "category.pro",
                                                 base + "site.pro", base + "info.pro"}))
            << "a file name that leaves ConfigsDir is never fetched";
        EXPECT_EQ(ui.Statuses(),
                  (QStringList{"Checking version", "Updating engine.", "Updating engine.",
                               "Updating engine.", "Updating engine.",
                               "Processing updated protocols.", "Continuing Update."}));
        EXPECT_TRUE(ui.Messages().isEmpty());

        const QStringList rows = RowData();
        EXPECT_EQ(rows[0], SiteRules(QStringLiteral("8"), QStringLiteral("new")));
        EXPECT_EQ(rows[1], ValidInfo(QStringLiteral("new")));
        // The very next lookup sees the new rules.
        EXPECT_EQ(SitesKey(m_rules, "Site1"), QStringLiteral("new"));
        EXPECT_EQ(MailServer(m_rules), QStringLiteral("new"));
        EXPECT_EQ(ReadAll(Config(QStringLiteral("category.pro"))),
                  QByteArray("[Antiques]\nSilver=102\n"));
        EXPECT_FALSE(QFile::exists(Config(QStringLiteral("site.pro"))));
        EXPECT_FALSE(QFile::exists(Config(QStringLiteral("info.pro"))));
        EXPECT_FALSE(
            QFile::exists(QDir(m_configs).absoluteFilePath(QStringLiteral("../escape.pro"))));
        CurrentSession().ui = &m_ui;
    }
}

TEST_F(rulesUpdate, OneFailingFileDoesNotStopTheNext) {
    ServeNewRules();
    m_server.answers[QStringLiteral("http://127.0.0.1:8750/rules/category.pro")] = {
        FetchOutcome::Failed, {}};
    m_server.answers[QStringLiteral("http://127.0.0.1:8750/rules/site.pro")] = {
        FetchOutcome::Cancelled, {}};
    EXPECT_TRUE(Check());
    EXPECT_EQ(m_server.fetched.size(), 4);
    EXPECT_EQ(SitesKey(m_rules, "Site1"), QStringLiteral("old"));
    EXPECT_EQ(MailServer(m_rules), QStringLiteral("new"));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

TEST_F(rulesUpdate, FilesThatAreNotRulesReplaceNothingAndTheMessageSaysWhy) {
    const QByteArray portal =
        "<html><head><title>Hotel Wi-Fi</title></head>\n"
        "<body>Accept the terms to go on</body></html>\n";
    QString noUpdate = SiteRules("8", "new");
    noUpdate.replace("[Update]", "[Updates]");
    QString noWatch = SiteRules("8", "new");
    noWatch.replace("[Watching Items eBay]", "[Watching eBay]");
    const struct {
        QByteArray site, info, category;
        QStringList says;
    } cases[] = {
        // A network that wants a sign-in first answers every address alike.
        {portal,
         portal,
         portal,
         {"site.pro is a web page", "info.pro is a web page", "category.pro is a web page"}},
        {"\r\n", {}, {}, {"site.pro holds no rules"}},
        {QByteArray("PK\x03\x04\0\0garbage", 12), {}, {}, {"site.pro holds binary data"}},
        {"Welcome to the network\n[Sites]\nSite0=x\n",
         {},
         {},
         {"site.pro does not begin with a [section] line but with \"Welcome"}},
        {noUpdate.toUtf8(), {}, {}, {"site.pro has no [Update] section"}},
        {noWatch.toUtf8(), {}, {}, {"site.pro has no [Watching Items eBay] section"}},
        {{}, "[Mail Server]\nServer=new\n", {}, {"info.pro has no [Tracking]"}},
        {{},
         (ValidInfo("new") + "a stray line\r\n").toUtf8(),
         {},
         {"info.pro has a line 18 that is neither a [section] nor key=value"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.says.join(u' ').toStdString());
        ScriptedUi ui;
        CurrentSession().ui = &ui;
        CurrentSession().RulesChecked = false;
        ServeNewRules();
        WriteConfig(QStringLiteral("category.pro"), "[Antiques]\nold=1\n");
        const QString base = QStringLiteral("http://127.0.0.1:8750/rules/");
        for (const auto& [name, body] :
             {std::pair{"site.pro", c.site}, std::pair{"info.pro", c.info},
              std::pair{"category.pro", c.category}}) {
            if (!body.isNull()) {
                m_server.answers[base + QLatin1String(name)] = {FetchOutcome::Ok, body};
            }
        }

        EXPECT_TRUE(Check()) << "the update goes on with the rules in use";
        EXPECT_FALSE(CurrentSession().RulesChecked) << "the next update checks again";
        ASSERT_EQ(ui.Titles(), QStringList{QStringLiteral("Rule Update Refused")});
        for (const QString& said : c.says) {
            EXPECT_TRUE(ui.Messages().first().contains(said)) << Visible(ui.Messages().first());
        }
        EXPECT_EQ(RowData(), (QStringList{SiteRules(QStringLiteral("7"), QStringLiteral("old")),
                                          ValidInfo(QStringLiteral("old"))}));
        EXPECT_EQ(MailServer(m_rules), QStringLiteral("old"));
        EXPECT_EQ(ReadAll(Config(QStringLiteral("category.pro"))),
                  QByteArray("[Antiques]\nold=1\n"));
        EXPECT_EQ(QDir(m_configs).entryList(QDir::Files),
                  (QStringList{QStringLiteral("category.pro"), QStringLiteral("update.txt")}));
        EXPECT_FALSE(QFile::exists(PreviousRulesDir()));
        CurrentSession().ui = &m_ui;
    }
}

TEST_F(rulesUpdate, TheReplacedRulesAreKeptAndRestoreSwapsThemBack) {
    QString error;
    EXPECT_FALSE(RestorePreviousRules(m_rules, *m_db, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("No earlier rules are kept"))) << error.toStdString();

    ServeNewRules();
    ASSERT_TRUE(Check());
    const QStringList oldRows = {SiteRules(QStringLiteral("7"), QStringLiteral("old")),
                                 ValidInfo(QStringLiteral("old"))};
    const QStringList newRows = {SiteRules(QStringLiteral("8"), QStringLiteral("new")),
                                 ValidInfo(QStringLiteral("new"))};
    ASSERT_EQ(RowData(), newRows);
    EXPECT_EQ(ReadAll(PreviousRulesDir() + QStringLiteral("site.pro")), oldRows[0].toUtf8());
    EXPECT_EQ(ReadAll(PreviousRulesDir() + QStringLiteral("info.pro")), oldRows[1].toUtf8());

    ASSERT_TRUE(RestorePreviousRules(m_rules, *m_db, &error)) << error.toStdString();
    EXPECT_EQ(RowData(), oldRows);
    EXPECT_EQ(SitesKey(m_rules, "Site1"), QStringLiteral("old"));
    EXPECT_EQ(MailServer(m_rules), QStringLiteral("old"));
    // The rules the restore replaced are kept in turn: a second restore undoes it.
    ASSERT_TRUE(RestorePreviousRules(m_rules, *m_db, &error)) << error.toStdString();
    EXPECT_EQ(RowData(), newRows);

    // Kept files that are not rules (edited by hand, damaged) are refused.
    WriteConfig(QStringLiteral("previous/info.pro"), "<html>gone</html>");
    EXPECT_FALSE(RestorePreviousRules(m_rules, *m_db, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("info.pro is a web page"))) << error.toStdString();
    EXPECT_EQ(RowData(), newRows);
}

// ------------------------------------------- the direct fetch over loopback

TEST_F(rulesTable, TheDirectFetchKeepsTheEarlierFileWhenItFailsOrIsCancelled) {
    LoopbackServer server;
    server.Routes().Get("/rules/version", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("PROTOCOL: 9\r\n", "text/plain");
    });
    server.Routes().Get("/rules/missing", [](const httplib::Request&, httplib::Response& res) {
        res.status = 404;
        res.set_content("<h1>404 Not Found</h1>", "text/html");
    });
    server.Routes().Get("/rules/endless", [&server](const httplib::Request&,
                                                    httplib::Response& res) {
        res.set_chunked_content_provider("text/plain", [&server](size_t, httplib::DataSink& sink) {
            const std::string chunk(65536, 'x');
            for (int i = 0; i < 200 && !server.Stopping(); ++i) {
                if (!sink.write(chunk.data(), chunk.size())) {
                    return false;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            sink.done();
            return true;
        });
    });
    server.Start();
    const RuleFetcher fetch = DefaultRuleFetcher();

    EXPECT_EQ(fetch(server.Url("/rules/version"), Config(QStringLiteral("update.txt"))),
              FetchOutcome::Ok);
    EXPECT_EQ(ReadAll(Config(QStringLiteral("update.txt"))), QByteArray("PROTOCOL: 9\r\n"));

    WriteConfig(QStringLiteral("category.pro"), "earlier");
    EXPECT_EQ(fetch(server.Url("/rules/missing"), Config(QStringLiteral("category.pro"))),
              FetchOutcome::Failed);
    EXPECT_EQ(ReadAll(Config(QStringLiteral("category.pro"))), QByteArray("earlier"));

    m_ui.RequestCancel();
    EXPECT_EQ(fetch(server.Url("/rules/endless"), Config(QStringLiteral("category.pro"))),
              FetchOutcome::Cancelled);
    EXPECT_GT(m_ui.Pumps(), 0);
    EXPECT_EQ(ReadAll(Config(QStringLiteral("category.pro"))), QByteArray("earlier"));
    EXPECT_EQ(QDir(m_configs).entryList(QDir::Files),
              (QStringList{QStringLiteral("category.pro"), QStringLiteral("update.txt")}));
}

TEST_F(rulesTable, TheSelfUpdateRunsAgainstALoopbackServer) {
    LoopbackServer server;
    server.Start();
    const QString base = server.Url("");
    const QString site = QStringLiteral("[Protocols]\r\nProtocolCheckUrl=") + base +
                         QStringLiteral("/rules/version\r\nCurrent Protocol=1\r\nProtocols=3") +
                         QStringLiteral("\r\nProtocolDownload1=") + base +
                         QStringLiteral("/rules/site.pro\r\nProtocolName1=site.pro") +
                         QStringLiteral("\r\nProtocolDownload2=") + base +
                         QStringLiteral("/rules/category.pro\r\nProtocolName2=category.pro") +
                         QStringLiteral("\r\nProtocolDownload3=") + base +
                         QStringLiteral("/rules/info.pro\r\nProtocolName3=info.pro\r\n");
    const QByteArray newSite = ValidSite(site, QStringLiteral("served")).toUtf8();
    server.Routes().Get("/rules/version", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("PROTOCOL: 2", "text/plain");
    });
    server.Routes().Get("/rules/site.pro",
                        [newSite](const httplib::Request&, httplib::Response& res) {
                            res.set_content(newSite.toStdString(), "text/plain");
                        });
    server.Routes().Get("/rules/info.pro", [](const httplib::Request&, httplib::Response& res) {
        res.set_content(ValidInfo(QStringLiteral("served")).toStdString(), "text/plain");
    });
    AddRow(QStringLiteral("site.pro"), site);
    AddRow(QStringLiteral("info.pro"), QStringLiteral("[Mail Server]\r\nServer=old"));
    ASSERT_TRUE(DecryptProtocols(m_rules, *m_db));

    EXPECT_TRUE(CheckRuleUpdate(m_rules, *m_db));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
    EXPECT_EQ(SitesKey(m_rules, "Site1"), QStringLiteral("served"));
    EXPECT_EQ(MailServer(m_rules), QStringLiteral("served"));
    // category.pro answered 404: no error page takes its place.
    EXPECT_FALSE(QFile::exists(Config(QStringLiteral("category.pro"))));
}

// --------------------------------------------------------------- post table

TEST(rulesPostTable, NamesAndDefaultsForEachSlotUpToCount) {
    RuleStore rules;
    rules.SetText(kInfoStore,
                  Crlf("[AuctionPost Names]\nCount=3\nField1=title\nField2=\nField3=qty\n"
                       "Field4=beyond\n\n[AuctionPost Defaults]\nDefault1=$$$\nDefault3=1\n\n"));
    QStringList names;
    QStringList defaults;
    ASSERT_EQ(LoadPostDefaults(rules, names, defaults), 3);
    EXPECT_EQ(names,
              (QStringList{QString(), QStringLiteral("title"), QString(), QStringLiteral("qty")}));
    EXPECT_EQ(defaults,
              (QStringList{QString(), QStringLiteral("$$$"), kError, QStringLiteral("1")}));

    rules.SetText(kInfoStore, Crlf("[AuctionPost Names]\nCount=500\n\n"));
    EXPECT_EQ(LoadPostDefaults(rules, names, defaults), kPostSlots);
    rules.Clear(kInfoStore);
    EXPECT_EQ(LoadPostDefaults(rules, names, defaults), 0);
    EXPECT_EQ(names.size(), 1);
}

// --------------------------------------------------------- shipped rules

namespace {

RuleStore ShippedRules() {
    RuleStore rules;
    for (int store = 0; store < 2; ++store) {
        const QString path = SourceDir() + (store == 0 ? QStringLiteral("/rules/site.pro")
                                                       : QStringLiteral("/rules/info.pro"));
        const std::optional<QString> text = lw::core::LoadRuleFile(path);
        EXPECT_TRUE(text.has_value()) << path.toStdString();
        rules.SetText(store, text.value_or(QString()) + QStringLiteral("\r\n\r\n"));
    }
    return rules;
}

}  // namespace

TEST(rulesShipped, TheFilesKeepCrLfLineEnds) {
    for (const char* name : {"/rules/site.pro", "/rules/info.pro"}) {
        const QByteArray bytes = ReadAll(SourceDir() + QString::fromLatin1(name));
        ASSERT_FALSE(bytes.isEmpty()) << name;
        EXPECT_EQ(bytes.count("\n"), bytes.count("\r\n")) << name;
        EXPECT_EQ(bytes.count("\r"), bytes.count("\r\n")) << name;
    }
}

TEST(rulesShipped, EveryShippedFilePassesTheCheckOfAnArrivingRuleFile) {
    for (const char* name : {"site.pro", "info.pro", "seller.pro", "category.pro"}) {
        const std::optional<QString> text =
            lw::core::LoadRuleFile(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name));
        ASSERT_TRUE(text.has_value()) << name;
        EXPECT_EQ(RuleFileProblem(QLatin1String(name), *text), QString()) << name;
    }
    // Lines without "=" are passed over in the other files, never in the two rule stores.
    const QString loose = Crlf("[Antiques]\nnot a pair\nSilver=102\n");
    EXPECT_EQ(RuleFileProblem(QStringLiteral("category.pro"), loose), QString());
    EXPECT_TRUE(
        RuleFileProblem(QStringLiteral("site.pro"), loose).contains(QStringLiteral("line 2")));
}

TEST(rulesShipped, SiteProHoldsTheSelfUpdateAndTheRunList) {
    const RuleStore rules = ShippedRules();
    auto key = [&rules](const char* section, const QString& name) {
        return rules.LookupKey(QString::fromLatin1(section), name, kSiteStore);
    };
    EXPECT_TRUE(key("Protocols", QStringLiteral("ProtocolCheckUrl"))
                    .startsWith(QStringLiteral("http://127.0.0.1:8750/")));
    EXPECT_NE(key("Protocols", QStringLiteral("Current Protocol")), kError);
    const int files = key("Protocols", QStringLiteral("Protocols")).toInt();
    QStringList names;
    for (int n = 1; n <= files; ++n) {
        const QString url = key("Protocols", QStringLiteral("ProtocolDownload%1").arg(n));
        const QString name = key("Protocols", QStringLiteral("ProtocolName%1").arg(n));
        EXPECT_TRUE(url.startsWith(QStringLiteral("http://127.0.0.1:8750/"))) << n;
        EXPECT_TRUE(url.endsWith(u'/' + name)) << n;
        names << name;
    }
    EXPECT_TRUE(names.contains(QStringLiteral("site.pro")));
    EXPECT_TRUE(names.contains(QStringLiteral("info.pro")));

    EXPECT_EQ(key("Sites", QStringLiteral("Site0")), QStringLiteral("eBay"));
    const QStringList known = {
        QStringLiteral("Current Time eBay"),        QStringLiteral("Current Auctions eBay"),
        QStringLiteral("Auction Details eBay"),     QStringLiteral("Current Bids eBay"),
        QStringLiteral("Bid Details eBay"),         QStringLiteral("Account History eBay"),
        QStringLiteral("Account Information eBay"), QStringLiteral("Watching Items eBay")};
    const int protocols = key("Update", QStringLiteral("Protocols")).toInt();
    EXPECT_GT(protocols, 0);
    QStringList runList;
    for (int n = 1; n <= protocols; ++n) {
        const QString site = key("Update", QStringLiteral("Protocol%1 Site").arg(n));
        const QString siteName = key("Sites", QStringLiteral("Site") + site);
        runList << key("Update", QStringLiteral("Protocol%1").arg(n)) + u' ' + siteName;
    }
    for (const QString& line : runList) {
        EXPECT_TRUE(known.contains(line)) << line.toStdString();
    }
    // The first-run list adds the account history itself.
    EXPECT_FALSE(runList.contains(QStringLiteral("Account History eBay")));
    EXPECT_EQ(runList.first(), QStringLiteral("Current Time eBay"));
}

TEST(rulesShipped, InfoProHoldsTheSectionsOfMailTrackingRegionsStatesAndThePost) {
    const RuleStore rules = ShippedRules();
    EXPECT_TRUE(rules.LookupKey(QStringLiteral("Mail Server"), QStringLiteral("Server"), 1)
                    .startsWith(QStringLiteral("127.0.0.1")));
    for (const char* name : {"host", "userid", "pass", "account"}) {
        EXPECT_NE(rules.LookupKey(QStringLiteral("Tracking"), QString::fromLatin1(name), 1), kError)
            << name;
    }
    // Every region column of UserSites is reached from a region's name.
    for (const char* column : {"northamerica", "europe", "oceania", "asia", "southamerica",
                               "africa", "latinamerica", "middleeast", "caribbean"}) {
        const QString region = rules.LookupName(QStringLiteral("Shipping Regions Reversecode"),
                                                QString::fromLatin1(column), 1);
        ASSERT_NE(region, kError) << column;
        EXPECT_EQ(rules.LookupKey(QStringLiteral("Shipping Regions Reversecode"), region, 1),
                  QString::fromLatin1(column));
    }
    const std::vector<RuleListRow> states =
        rules.FillList(1, QStringLiteral("Billpoint Tax States"));
    EXPECT_GE(states.size(), 51u);
    EXPECT_EQ(rules.LookupName(QStringLiteral("Billpoint Tax States"), QStringLiteral("CA"), 1),
              QStringLiteral("California"));

    QStringList names;
    QStringList defaults;
    EXPECT_EQ(LoadPostDefaults(rules, names, defaults), kPostSlots);
    for (int n = 1; n <= kPostSlots; ++n) {
        EXPECT_NE(names[n], kError) << n;
        EXPECT_FALSE(names[n].isEmpty()) << n;
        EXPECT_NE(defaults[n], kError) << n;
    }
    EXPECT_EQ(names.count(QStringLiteral("title")), 1);
    EXPECT_EQ(names.removeDuplicates(), 0) << "two slots post the same field";
}
