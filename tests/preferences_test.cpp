// SPDX-License-Identifier: GPL-3.0-or-later
// User preferences without a window: the lists from the shipped rules, the
// filters and checks while editing (texts, titles, questions and their
// answers), the password change, the one write on Update read back from the
// store and the settings, the reload, and the new-user and tip-of-the-day
// logic.
#include <gtest/gtest.h>

#include <QFile>
#include <QRandomGenerator>
#include <optional>
#include <ostream>

#include "admin/new_user.h"
#include "admin/preferences.h"
#include "admin/tips.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "update/rules.h"
#include "update/update_connections.h"

using namespace lw;
using namespace lw::admin;
using core::Answer;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = QStringLiteral("Pat O'Brien");

QString Option(const QString& key) {
    return core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), key,
                            QStringLiteral("<absent>"));
}

class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override {
        core::ResetSession(&m_ui);
        QString error;
        ASSERT_TRUE(core::SetupDirectories(m_root.Path(), &error)) << error.toStdString();
        core::CurrentSession().ShippedDir = test::SourceDir();
        core::SetSettingsFolder(m_root.File(QStringLiteral("settings")));
        m_db.emplace(core::OpenOrCreateStore(core::StorePath(), test::SourceDir()));
        ASSERT_TRUE(update::DecryptProtocols(m_rules, *m_db));
        m_lists = LoadPreferenceLists(m_rules);
        core::AddUser(*m_db, {kUser, QStringLiteral("pat_sells"), QStringLiteral("secret"),
                              QStringLiteral("pat@example.com")});
    }
    void TearDown() override {
        core::SetSettingsFolder({});
        core::ResetSession();
    }

    Preferences Load() { return LoadPreferences(*m_db, kUser, m_lists, m_rules); }
    core::TimeLeftTimer Save(const Preferences& prefs) {
        return SavePreferences(*m_db, kUser, prefs, m_lists, m_rules);
    }

    // A complete set of preferences as a person would fill the window in.
    Preferences Filled() {
        Preferences p = Load();
        const QStringList texts =
            QStringLiteral(
                "Pat|Q|O'Brien|Ms|Pat's Attic|1 Main St|Suite 2|Springfield|IL|"
                "62701-1234|Lee|R|Park|Mr|Lee Books|9 Elm Rd|Apt 3|Toronto|ON|M5V 2T6")
                .split(u'|');
        for (int i = 0; i < texts.size(); ++i) {
            p.field[static_cast<size_t>(i)] = texts.at(i);
        }
        p.field[kPrefReplyEmail] = QStringLiteral("reply@example.com");
        p.field[kPrefSalesTax] = QStringLiteral("7.25");
        p.field[kPrefMailServer] = QStringLiteral("smtp.example.com");
        p.field[kPrefUserId] = QStringLiteral("pat_o'sells");
        p.field[kPrefSiteEmail] = QStringLiteral("site@example.com");
        p.field[kPrefLocation] = QStringLiteral("Springfield, IL");
        p.field[kPrefPassword] = QStringLiteral("n3w'pass");
        p.connection = 1;
        p.countryShipping = m_lists.countries.at(0);
        p.countryPayment = m_lists.countries.at(1);
        p.shipFromCountry = m_lists.countries.at(2);
        p.saleOverPref = 2;
        p.winningBidOver = 1;
        p.region = m_lists.regions.at(3);
        p.duration = 10;
        p.shippingPref = {m_lists.shipping.at(1), m_lists.shipping.at(3)};
        p.paymentPref = {m_lists.payment.at(0), m_lists.payment.at(2), m_lists.payment.at(4)};
        p.billpoint = true;
        p.shipScope = ShipScope::USPlus;
        p.shippingRegions = {m_lists.shippingRegions.at(0), m_lists.shippingRegions.at(4)};
        p.autoUpdateTimeLeft = true;
        p.timeLeftOption = 2;
        return p;
    }

    // A column of the user's row, of its site row, and of Global.
    QVariant UserValue(const QString& column) {
        core::Statement s = m_db->Prepare(QStringLiteral("SELECT * FROM Users WHERE UserName = ?"));
        s.Bind(1, kUser);
        EXPECT_TRUE(s.Step());
        return s.Value(column);
    }
    QVariant SiteValue(const QString& column) {
        core::Statement s = m_db->Prepare(
            QStringLiteral("SELECT * FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0"));
        s.Bind(1, kUser);
        EXPECT_TRUE(s.Step());
        return s.Value(column);
    }
    QVariant GlobalValue(const QString& column) {
        core::Statement s = m_db->Prepare(QStringLiteral("SELECT * FROM Global"));
        EXPECT_TRUE(s.Step());
        return s.Value(column);
    }

    test::ScriptedUi m_ui;
    test::TempRoot m_root;
    std::optional<core::Database> m_db;
    update::RuleStore m_rules;
    PreferenceLists m_lists;
};

// ------------------------------------------------------------------- lists

TEST_F(PreferencesTest, ShippedRulesFillEveryListAndEveryRegionNamesAUserSitesColumn) {
    EXPECT_FALSE(m_lists.regions.isEmpty());
    EXPECT_FALSE(m_lists.payment.isEmpty());
    ASSERT_FALSE(m_lists.countries.isEmpty());
    // The ZIP filter is meant for the first country.
    EXPECT_EQ(m_lists.countries.at(0), QStringLiteral("United States"));
    ASSERT_GE(m_lists.shipping.size(), 2);
    ASSERT_EQ(m_lists.shippingRegions.size(), 9);

    // Each region, ticked alone, must land in its own flag column.
    QStringList columnsSet;
    for (const QString& region : m_lists.shippingRegions) {
        Preferences p = Filled();
        p.shippingRegions = {region};
        Save(p);
        core::Statement s = m_db->Prepare(QStringLiteral(
            "SELECT northamerica + europe + oceania + asia + southamerica + africa + "
            "latinamerica + middleeast + caribbean AS ticked FROM UserSites WHERE UserName = ?"));
        s.Bind(1, kUser);
        ASSERT_TRUE(s.Step());
        EXPECT_EQ(s.Int(QStringLiteral("ticked")), 1) << region.toStdString();
        const QString column = m_rules.LookupKey(QStringLiteral("Shipping Regions Reversecode"),
                                                 region, kPreferenceListStore);
        EXPECT_TRUE(SiteValue(column).toBool()) << region.toStdString();
        columnsSet << column;
    }
    columnsSet.removeDuplicates();
    EXPECT_EQ(columnsSet.size(), 9);
}

TEST(PreferenceTables, RemovalTagsAndTimeLeftDataLineUpWithTheirCaptions) {
    EXPECT_EQ(SaleOverEntries().size(), SaleOverTags().size());
    EXPECT_EQ(WinningBidOverEntries().size(), WinningBidOverTags().size());
    EXPECT_EQ(TimeLeftCaptions().size(), TimeLeftData().size());
    EXPECT_EQ(SaleOverEntries().at(2), QStringLiteral("When I get email that buyer received item"));
    EXPECT_EQ(SaleOverTags().at(2), QStringLiteral("SHR"));
    EXPECT_EQ(WinningBidOverEntries().at(3),
              QStringLiteral("Once I've received feedback from seller"));
    EXPECT_EQ(WinningBidOverTags().at(3), QStringLiteral("FBR"));
    EXPECT_EQ(TimeLeftIndexFor(65535), TimeLeftCaptions().indexOf(QStringLiteral("minute")));
    EXPECT_EQ(TimeLeftIndexFor(30000), TimeLeftCaptions().indexOf(QStringLiteral("30 seconds")));
    EXPECT_EQ(TimeLeftIndexFor(12345), -1);
    EXPECT_EQ(TagIndex(SaleOverTags(), QStringLiteral("fbl ")), 3);
    EXPECT_EQ(TagIndex(SaleOverTags(), QStringLiteral("IRR")), -1);
}

TEST(PreferenceTables, DurationIsMatchedByItsNumber) {
    EXPECT_EQ(DurationDays(QStringLiteral("10 days")), 10);
    EXPECT_EQ(DurationEntries().at(DurationIndexFor(10)), QStringLiteral("10 days"));
    EXPECT_EQ(DurationEntries().at(DurationIndexFor(1)), QStringLiteral("1 day"));
    EXPECT_EQ(DurationIndexFor(4), -1);
}

// ------------------------------------------------------- filter while typing

// The ZIP fields (9 shipping, 19 payment) filter only while their own
// country is the first one; backspace always passes.
TEST(FieldFilter, SalesTaxAndFirstCountryZipsTakeOnlyTheirCharacters) {
    const struct {
        int index;
        const char* chars;
        int shipCountry, payCountry;
        bool accepted;
    } cases[] = {
        {kPrefSalesTax, "0123456789.\b", 0, 0, true},
        {kPrefSalesTax, "-,a% ", 0, 0, false},
        {9, "5-\b", 0, 7, true},
        {9, "A ", 0, 7, false},
        {9, "M ", 3, 0, true},
        {19, "M", 3, 0, false},
        {19, "M", 0, 3, true},
        {8, "x", 0, 0, true},
        {27, "x", 0, 0, true},
    };
    for (const auto& c : cases) {
        for (const char* ch = c.chars; *ch != '\0'; ++ch) {
            EXPECT_EQ(
                AcceptsCharacter(c.index, QChar::fromLatin1(*ch), c.shipCountry, c.payCountry),
                c.accepted)
                << "field " << c.index << " '" << *ch << "' countries " << c.shipCountry << '/'
                << c.payCountry;
        }
    }
}

// ------------------------------------------------------------ leaving a field

TEST(LeaveFieldTest, EveryIndexLeftEmptyGetsOnlyItsOwnCheck) {
    const QList<int> required = {0, 2, 5, 7, 8, 9, 10, 12, 15, 17, 18, 19};
    for (int index = 0; index < kUserPrefCount; ++index) {
        test::ScriptedUi ui;
        const FieldCheck check = LeaveField(index, QString(), ui);
        if (required.contains(index)) {
            EXPECT_EQ(ui.Messages(), QStringList{QStringLiteral("Required Information Missing")})
                << index;
            EXPECT_EQ(ui.Titles(), QStringList{QStringLiteral("Missing Data")});
            EXPECT_TRUE(check.focusBack) << index;
        } else if (index == kPrefSiteEmail) {
            // The site address is checked even when empty, the reply address is not.
            EXPECT_EQ(ui.Titles(), QStringList{QStringLiteral("Invalid email Address")});
            EXPECT_TRUE(check.focusBack);
        } else {
            EXPECT_TRUE(ui.History().empty()) << index;
            EXPECT_FALSE(check.focusBack) << index;
        }
    }
    // Blanks only are no information either.
    test::ScriptedUi ui;
    EXPECT_TRUE(LeaveField(7, QStringLiteral("   "), ui).focusBack);
}

// Each value left in a checked field: the text put back, whether the cursor
// returns to the field, and what is shown: a message, or a question answered
// as scripted.
TEST(LeaveFieldTest, ChecksCorrectionsAndQuestionsPerField) {
    const char* kEmail = "Your email Address Is Not Valid, Please Reenter";
    const char* kEmailTitle = "Invalid email Address";
    const char* kTax = "Sales Tax Rate";
    struct Case {
        int index;
        const char* text;
        const char* result;
        bool focusBack;
        const char* kind = nullptr;  // "message" or "ask"; null: nothing is shown
        const char* shown = "";
        const char* title = "";
        Answer answer = Answer::Yes;
    };
    const Case cases[] = {
        {kPrefReplyEmail, "pat", "pat", true, "message", kEmail, kEmailTitle},
        {kPrefReplyEmail, "pat@example", "pat@example", true, "message", kEmail, kEmailTitle},
        {kPrefReplyEmail, "pat.example.com", "pat.example.com", true, "message", kEmail,
         kEmailTitle},
        {kPrefReplyEmail, "o'brien@example.com", "o'brien@example.com", false},
        {kPrefSiteEmail, "pat", "pat", true, "message", kEmail, kEmailTitle},
        {kPrefSiteEmail, "pat@example", "pat@example", true, "message", kEmail, kEmailTitle},
        {kPrefSiteEmail, "pat.example.com", "pat.example.com", true, "message", kEmail,
         kEmailTitle},
        {kPrefSiteEmail, "o'brien@example.com", "o'brien@example.com", false},
        // A tax below one percent offers the hundredfold value.
        {kPrefSalesTax, "0.5", "50", true, "ask",
         "0.5 Is Less Than One Percent, Do You Mean 50.00%?", kTax, Answer::Yes},
        {kPrefSalesTax, ".075", ".075", false, "ask",
         ".075 Is Less Than One Percent, Do You Mean 7.50%?", kTax, Answer::No},
        // Above one hundred it asks, and No returns to the field.
        {kPrefSalesTax, "150", "150", true, "ask",
         "150 Is Greater Than 100 Percent, Is This Correct?", kTax, Answer::No},
        {kPrefSalesTax, "150", "150", false, "ask",
         "150 Is Greater Than 100 Percent, Is This Correct?", kTax, Answer::Yes},
        {kPrefSalesTax, "0", "0", false},
        {kPrefSalesTax, "1", "1", false},
        {kPrefSalesTax, "7.25", "7.25", false},
        {kPrefSalesTax, "100", "100", false},
        {kPrefSalesTax, "", "", false},
        {kPrefFtpZip, "627011234", "62701", true, "message", "Trimming ZIP Code to 5 Digits",
         "5 Digit ZIP Code"},
        {kPrefFtpZip, "62701", "62701", false},
        {kPrefFtpHost, "localhost", "localhost", true, "message", "FTP Host Entry Is Not Valid",
         "invalid FTP Host"},
        {kPrefFtpHost, "ftp.example.com", "ftp.example.com", false},
        {kPrefFtpHost, "", "", false},
        // An upload directory becomes a web address from its "www." on.
        {kPrefFtpDirectory, "pictures/2024", "pictures/2024", true, "message",
         "FTP Upload Directory Is Not Valid", "invalid FTP Directory"},
        {kPrefFtpDirectory, "ftp://www.example.com/pics", "http://www.example.com/pics/", true},
        {kPrefFtpDirectory, "www.example.com", "http://www.example.com/", true},
        {kPrefFtpDirectory, "http://www.example.com", "http://www.example.com/", true},
        // Already right: left alone, and the field can be left.
        {kPrefFtpDirectory, "http://www.example.com/pics/", "http://www.example.com/pics/", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "field " << c.index << " left as \"" << c.text << '"');
        test::ScriptedUi ui;
        ui.ScriptAnswer(c.answer);
        const FieldCheck check = LeaveField(c.index, QString::fromUtf8(c.text), ui);
        EXPECT_EQ(check.text, QString::fromUtf8(c.result));
        EXPECT_EQ(check.focusBack, c.focusBack);
        if (c.kind == nullptr) {
            EXPECT_TRUE(ui.History().empty());
            continue;
        }
        ASSERT_EQ(ui.History().size(), 1u);
        EXPECT_EQ(ui.History()[0].kind, QLatin1String(c.kind));
        EXPECT_EQ(ui.History()[0].text, QString::fromUtf8(c.shown));
        EXPECT_EQ(ui.History()[0].title, QString::fromUtf8(c.title));
    }
}

// ------------------------------------------------------ controls that steer

TEST(PreferenceControls, ProxyFieldsShowAboveOptionTwoWithPortEighty) {
    for (int option : {0, 1, 2}) {
        const ProxyControls c = ConnectionChosen(option, QString());
        EXPECT_FALSE(c.visible) << option;
        EXPECT_EQ(c.port, QString());
    }
    for (int option : {3, 4}) {
        EXPECT_TRUE(ConnectionChosen(option, QString()).visible);
        EXPECT_EQ(ConnectionChosen(option, QString()).port, QStringLiteral("80"));
        EXPECT_EQ(ConnectionChosen(option, QStringLiteral("3128")).port, QStringLiteral("3128"));
    }
}

TEST(PreferenceControls, ViewGroupsResetAndHighBidSortsDescending) {
    const ViewGroup archive = ViewGroupReset(false);
    EXPECT_FALSE(archive.enabled);
    EXPECT_EQ(archive.interval, QStringLiteral("0"));
    EXPECT_EQ(archive.order, 0);
    EXPECT_FALSE(archive.descending);
    EXPECT_TRUE(ViewGroupReset(true).descending);

    EXPECT_EQ(ViewOrderFields().at(1), QStringLiteral("HighBid"));
    EXPECT_TRUE(OrderMeansDescending(1));
    for (int order : {0, 2, 3, 4}) {
        EXPECT_FALSE(OrderMeansDescending(order)) << order;
    }
}

TEST(PreferenceControls, NoShippingPreferenceStandsAlone) {
    EXPECT_EQ(ShippingSelection({0, 2, 3}), QList<int>{0});
    EXPECT_EQ(ShippingSelection({2, 3}), (QList<int>{2, 3}));
    EXPECT_EQ(ShippingSelection({}), QList<int>{});
}

// ---------------------------------------------------------- password change

// A blank new or repeat is asked for first, then the old password is
// checked (with its case), then the repeat; only a full match changes it.
TEST(PasswordTest, EachFaultIsToldInTurnAndOnlyAMatchChangesThePassword) {
    const struct {
        const char *old, *fresh, *repeat;
        PasswordChange result;
        const char* message;  // null: nothing is shown
        const char* title;
    } cases[] = {
        {"wrong", "  ", "x", PasswordChange::NotEntered,
         "You need to enter and confirm a new password.", "Password Not Entered"},
        {"old'pw", "x", "", PasswordChange::NotEntered,
         "You need to enter and confirm a new password.", "Password Not Entered"},
        {"OLD'PW", "a", "b", PasswordChange::WrongOld, "Old Password Is Not Correct",
         "Incorrect Old Password"},
        {"old'pw", "a", "b", PasswordChange::Mismatch, "New Passwords Do Not Match",
         "Mismatched New Password"},
        {"old'pw", "n3w", "n3w", PasswordChange::Changed, nullptr, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.old << " / " << c.fresh << " / " << c.repeat);
        test::ScriptedUi ui;
        QString stored = QStringLiteral("old'pw");
        EXPECT_EQ(UpdatePassword(stored, QString::fromUtf8(c.old), QString::fromUtf8(c.fresh),
                                 QString::fromUtf8(c.repeat), ui),
                  c.result);
        if (c.message == nullptr) {
            EXPECT_TRUE(ui.History().empty());
            EXPECT_EQ(stored, QString::fromUtf8(c.fresh));
        } else {
            EXPECT_EQ(ui.Messages(), QStringList{QString::fromUtf8(c.message)});
            EXPECT_EQ(ui.Titles(), QStringList{QString::fromUtf8(c.title)});
            EXPECT_EQ(stored, QStringLiteral("old'pw"));
        }
    }
}

// ------------------------------------------------------------------ cmdUpdate

TEST_F(PreferencesTest, UpdateWritesTheUsersRowAndItsSiteRow) {
    const Preferences p = Filled();
    Save(p);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(UserValue(UserPrefColumn(i)).toString(), p.field[static_cast<size_t>(i)]) << i;
    }
    EXPECT_DOUBLE_EQ(UserValue(QStringLiteral("SalesTaxRate")).toDouble(), 0.0725);
    const QString sep = QStringLiteral("~~~");
    const struct {
        bool site;  // the UserSites row, else the Users row
        const char* column;
        QString value;
    } cases[] = {
        {false, "Pzipcode", QStringLiteral("M5V 2T6")},
        {false, "InternetConnection", QStringLiteral("1")},
        {false, "ReplyEmailAddress", QStringLiteral("reply@example.com")},
        {false, "MailServer", QStringLiteral("smtp.example.com")},
        {false, "country", QStringLiteral("United States")},
        {false, "PCountry", m_lists.countries.at(1)},
        {false, "isDefault", QStringLiteral("1")},  // the row stays the default one
        {true, "UserID", QStringLiteral("pat_o'sells")},
        {true, "SiteEmailAddress", QStringLiteral("site@example.com")},
        {true, "LocationPref", QStringLiteral("Springfield, IL")},
        {true, "ZipCodePref", m_lists.regions.at(3)},
        {true, "UserPassword", QStringLiteral("n3w'pass")},
        {true, "ShipFromCountryPref", m_lists.countries.at(2)},
        {true, "ShipPayPref", m_lists.shipping.at(1) + sep + m_lists.shipping.at(3)},
        {true, "PaymentTypePref",
         m_lists.payment.at(0) + sep + m_lists.payment.at(2) + sep + m_lists.payment.at(4)},
        {true, "billpoint", QStringLiteral("1")},
        {true, "duration", QStringLiteral("10")},
        {true, "europe", QStringLiteral("0")},  // regions not ticked
        {true, "caribbean", QStringLiteral("0")},
    };
    for (const auto& c : cases) {
        const QString column = QString::fromUtf8(c.column);
        EXPECT_EQ((c.site ? SiteValue(column) : UserValue(column)).toString(), c.value) << c.column;
    }
}

TEST_F(PreferencesTest, EmptyTextsAreStoredAsNull) {
    Preferences p = Filled();
    p.field[1] = QString();
    p.field[16] = QStringLiteral("   ");
    p.field[kPrefMailServer] = QString();
    p.field[kPrefSalesTax] = QString();
    p.field[kPrefLocation] = QString();
    p.countryPayment = QString();
    p.saleOverPref = -1;
    p.region = QString();
    p.shippingPref.clear();
    p.paymentPref.clear();
    Save(p);
    for (const QString& column : {QStringLiteral("SMiddleName"), QStringLiteral("PAddressStreet2"),
                                  QStringLiteral("MailServer"), QStringLiteral("SalesTaxRate"),
                                  QStringLiteral("PCountry"), QStringLiteral("AuctionRemoveTag")}) {
        EXPECT_TRUE(UserValue(column).isNull()) << column.toStdString();
    }
    for (const QString& column :
         {QStringLiteral("LocationPref"), QStringLiteral("ZIPCodePref"),
          QStringLiteral("ShipPayPref"), QStringLiteral("PaymentTypePref")}) {
        EXPECT_TRUE(SiteValue(column).isNull()) << column.toStdString();
    }
}

TEST_F(PreferencesTest, TheProxyIsKeptOnlyForProxyOptionsWithServerAndPort) {
    struct Case {
        int option;
        QString server, port;
        bool kept;
    };
    const QList<Case> cases = {
        {3, QStringLiteral("proxy.example.com"), QStringLiteral("3128"), true},
        {4, QStringLiteral("proxy.example.com"), QStringLiteral("8080"), true},
        {3, QStringLiteral("proxy.example.com"), QString(), false},
        {4, QString(), QStringLiteral("8080"), false},
        {1, QStringLiteral("proxy.example.com"), QStringLiteral("3128"), false},
        {2, QStringLiteral("proxy.example.com"), QStringLiteral("3128"), false},
    };
    for (const Case& c : cases) {
        Preferences p = Filled();
        p.connection = c.option;
        p.proxyServer = c.server;
        p.proxyPort = c.port;
        Save(p);
        EXPECT_EQ(UserValue(QStringLiteral("InternetConnection")).toInt(), c.option);
        if (c.kept) {
            EXPECT_EQ(UserValue(QStringLiteral("ProxyServer")).toString(), c.server);
            EXPECT_EQ(UserValue(QStringLiteral("ProxyPort")).toString(), c.port);
        } else {
            EXPECT_TRUE(UserValue(QStringLiteral("ProxyServer")).isNull()) << c.option;
            EXPECT_TRUE(UserValue(QStringLiteral("ProxyPort")).isNull()) << c.option;
        }
    }
}

TEST_F(PreferencesTest, RemovalRulesAreStoredByListPosition) {
    const QStringList sale = {QStringLiteral("SHS"), QStringLiteral("SHE"), QStringLiteral("SHR"),
                              QStringLiteral("FBL"), QStringLiteral("FBR")};
    const QStringList bid = {QStringLiteral("IRR"), QStringLiteral("IRE"), QStringLiteral("FBL"),
                             QStringLiteral("FBR")};
    for (int i = 0; i < sale.size(); ++i) {
        Preferences p = Filled();
        p.saleOverPref = i;
        p.winningBidOver = i < bid.size() ? i : 0;
        Save(p);
        EXPECT_EQ(UserValue(QStringLiteral("AuctionRemoveTag")).toString(), sale.at(i));
        EXPECT_EQ(UserValue(QStringLiteral("BidRemoveTag")).toString(),
                  bid.at(i < bid.size() ? i : 0));
        EXPECT_EQ(Load().saleOverPref, i);
    }
}

TEST_F(PreferencesTest, ShippingScopesWriteTheirFlagsAndOnlyUsPlusKeepsRegions) {
    const struct {
        ShipScope scope;
        int usPlus;
        int abroad;
        int regions;
    } cases[] = {
        {ShipScope::USPlus, 1, 1, 1},
        {ShipScope::International, 0, 1, 0},
        {ShipScope::DomesticOnly, 0, 0, 0},
        {ShipScope::USPlus, 1, 1, 1},
    };
    Preferences p = Filled();  // regions ticked
    for (const auto& c : cases) {
        p.shipScope = c.scope;
        Save(p);
        EXPECT_EQ(SiteValue(QStringLiteral("shipUSPlus")).toInt(), c.usPlus);
        EXPECT_EQ(SiteValue(QStringLiteral("ShipAbroadPref")).toInt(), c.abroad);
        EXPECT_EQ(SiteValue(QStringLiteral("northamerica")).toInt(), c.regions);
        EXPECT_EQ(SiteValue(QStringLiteral("southamerica")).toInt(), c.regions);
        EXPECT_EQ(Load().shipScope, c.scope);
    }
}

TEST_F(PreferencesTest, TimeLeftOptionsWriteGlobalAndGiveTheTimer) {
    for (int option = 0; option < TimeLeftCaptions().size(); ++option) {
        Preferences p = Filled();
        p.timeLeftOption = option;
        const core::TimeLeftTimer timer = Save(p);
        EXPECT_EQ(GlobalValue(QStringLiteral("AutoUpdateTimeLeft")).toInt(), 1);
        const qint64 stored = GlobalValue(QStringLiteral("TimeLeftInterval")).toLongLong();
        EXPECT_EQ(stored, TimeLeftData().at(option));
        // The main window applies the same rule at start-up.
        const core::TimeLeftTimer atStart = core::TimeLeftTimerRule(*m_db);
        EXPECT_TRUE(timer.enabled);
        EXPECT_EQ(timer.intervalMs, atStart.intervalMs);
        EXPECT_EQ(timer.ticksWanted, atStart.ticksWanted);
    }
    Preferences p = Filled();
    p.timeLeftOption = 0;  // 30 seconds: milliseconds, the direct branch
    EXPECT_EQ(Save(p).intervalMs, 30000);
    p.timeLeftOption = 3;  // 10 minutes: ten ticks of 65535 ms
    EXPECT_EQ(Save(p).intervalMs, 65535);
    EXPECT_EQ(Save(p).ticksWanted, QStringLiteral("10"));

    p.autoUpdateTimeLeft = false;
    EXPECT_FALSE(Save(p).enabled);
    EXPECT_EQ(GlobalValue(QStringLiteral("AutoUpdateTimeLeft")).toInt(), 0);
    EXPECT_FALSE(core::TimeLeftTimerRule(*m_db).enabled);
}

TEST_F(PreferencesTest, TheCurrentViewTakesIntervalAndOrderFromTheArchiveControls) {
    Preferences p = Filled();
    p.archiveView = {true, QStringLiteral("14"), 2, false};
    p.currentView = {true, QStringLiteral("3"), 3, true};
    Save(p);
    EXPECT_EQ(Option(QStringLiteral("AAViewInterval")), QStringLiteral("14"));
    EXPECT_EQ(Option(QStringLiteral("AAViewOrder")), QStringLiteral("ItemNumber"));
    EXPECT_EQ(Option(QStringLiteral("AAViewOrder2")), QString());
    EXPECT_EQ(Option(QStringLiteral("CAViewInterval")), QStringLiteral("14"));
    EXPECT_EQ(Option(QStringLiteral("CAViewOrder")), QStringLiteral("ItemNumber"));
    EXPECT_EQ(Option(QStringLiteral("CAViewOrder2")), QStringLiteral("DESC"));

    p.archiveView = {true, QStringLiteral("30"), 1, true};
    p.currentView = ViewGroupReset(true);
    Save(p);
    EXPECT_EQ(Option(QStringLiteral("AAViewOrder")), QStringLiteral("HighBid"));
    EXPECT_EQ(Option(QStringLiteral("AAViewOrder2")), QStringLiteral("DESC"));
    EXPECT_EQ(Option(QStringLiteral("CAViewInterval")), QStringLiteral("0"));
    EXPECT_EQ(Option(QStringLiteral("CAViewOrder")), QStringLiteral("EndDate"));

    p.archiveView = ViewGroupReset(false);
    Save(p);
    EXPECT_EQ(Option(QStringLiteral("AAViewInterval")), QStringLiteral("0"));
    EXPECT_EQ(Option(QStringLiteral("AAViewOrder")), QStringLiteral("EndDate"));
}

TEST_F(PreferencesTest, AnUnknownUserIsRefusedAndNothingIsWritten) {
    const Preferences before = Load();
    Preferences p = Filled();
    try {
        SavePreferences(*m_db, QStringLiteral("Nobody"), p, m_lists, m_rules);
        FAIL() << "an unknown user was written";
    } catch (const core::StoreError& error) {
        EXPECT_EQ(error.Message(), QStringLiteral("No Valid Current User Set"));
    }
    EXPECT_EQ(Load().field, before.field);
    EXPECT_EQ(m_db->ScalarInt(QStringLiteral("SELECT COUNT(*) FROM UserSites")), 1);

    Preferences out;
    EXPECT_FALSE(ResetPreferences(*m_db, QStringLiteral("Nobody"), m_lists, m_rules, out, m_ui));
    EXPECT_EQ(m_ui.Messages(), QStringList{QStringLiteral("No Valid Current User Set")});
}

// ------------------------------------------------------------------- cmdReset

TEST_F(PreferencesTest, ResetReadsBackWhatUpdateWrote) {
    Preferences p = Filled();
    p.connection = 3;
    p.proxyServer = QStringLiteral("proxy.example.com");
    p.proxyPort = QStringLiteral("3128");
    p.connections = 3;
    p.archiveView = {true, QStringLiteral("14"), 3, true};
    p.currentView = {true, QStringLiteral("14"), 3, false};
    Save(p);
    const Preferences back = Load();
    EXPECT_EQ(back.field, p.field);
    EXPECT_EQ(back.connection, 3);
    EXPECT_EQ(back.proxyServer, p.proxyServer);
    EXPECT_EQ(back.proxyPort, p.proxyPort);
    EXPECT_EQ(back.connections, 3);
    EXPECT_EQ(back.countryShipping, p.countryShipping);
    EXPECT_EQ(back.countryPayment, p.countryPayment);
    EXPECT_EQ(back.shipFromCountry, p.shipFromCountry);
    EXPECT_EQ(back.saleOverPref, p.saleOverPref);
    EXPECT_EQ(back.winningBidOver, p.winningBidOver);
    EXPECT_EQ(back.region, p.region);
    EXPECT_EQ(back.duration, p.duration);
    EXPECT_EQ(back.shippingPref, p.shippingPref);
    EXPECT_EQ(back.paymentPref, p.paymentPref);
    EXPECT_EQ(back.billpoint, p.billpoint);
    EXPECT_EQ(back.shipScope, p.shipScope);
    EXPECT_EQ(back.shippingRegions, p.shippingRegions);
    EXPECT_EQ(back.autoUpdateTimeLeft, true);
    EXPECT_EQ(back.timeLeftOption, p.timeLeftOption);
    EXPECT_TRUE(back.archiveView.enabled);
    EXPECT_EQ(back.archiveView.interval, QStringLiteral("14"));
    EXPECT_EQ(back.archiveView.order, 3);
    EXPECT_TRUE(back.archiveView.descending);
    EXPECT_TRUE(back.currentView.enabled);
    EXPECT_FALSE(back.currentView.descending);
}

TEST_F(PreferencesTest, ANewUserLoadsWithTheDefaults) {
    const Preferences p = Load();
    EXPECT_EQ(p.field[kPrefUserName], kUser);
    EXPECT_EQ(p.field[kPrefUserId], QStringLiteral("pat_sells"));
    EXPECT_EQ(p.field[kPrefPassword], QStringLiteral("secret"));
    EXPECT_EQ(p.field[kPrefSiteEmail], QStringLiteral("pat@example.com"));
    EXPECT_EQ(p.field[kPrefSalesTax], QString());
    EXPECT_EQ(p.region, QString());
    EXPECT_TRUE(p.shippingPref.isEmpty());
    EXPECT_EQ(p.shipScope, ShipScope::DomesticOnly);
    EXPECT_FALSE(p.archiveView.enabled);
    EXPECT_EQ(p.archiveView.interval, QStringLiteral("0"));
    EXPECT_FALSE(p.archiveView.descending);
    EXPECT_TRUE(p.currentView.descending);
    EXPECT_FALSE(p.tracking);  // the usage report waits for the user to switch it on
    EXPECT_EQ(p.connections, 6);
}

// The window offers 1 to 8; a hand-edited file may hold anything, and is
// read as the nearer end of the range, or as the default when it holds no
// whole number.
TEST_F(PreferencesTest, TheConnectionsSettingIsReadIntoItsRange) {
    const struct {
        const char* stored;
        int read;
    } cases[] = {{"3", 3},  {"8", 8},  {" 4 ", 4}, {"0", 1},
                 {"-2", 1}, {"12", 8}, {"six", 6}, {"", 6}};
    for (const auto& c : cases) {
        core::SaveSetting(QStringLiteral("Lotwright"), QStringLiteral("Update"),
                          QStringLiteral("Connections"), QString::fromLatin1(c.stored));
        EXPECT_EQ(update::ConnectionsSetting(), c.read) << '"' << c.stored << '"';
    }
    core::DeleteSetting(QStringLiteral("Lotwright"), QStringLiteral("Update"),
                        QStringLiteral("Connections"));
    EXPECT_EQ(update::ConnectionsSetting(), update::kDefaultConnections);
    update::SaveConnectionsSetting(20);
    EXPECT_EQ(core::GetSetting(QStringLiteral("Lotwright"), QStringLiteral("Update"),
                               QStringLiteral("Connections")),
              QStringLiteral("8"));
}

TEST_F(PreferencesTest, TheTaxRateShowsAsPercentWithTwoDecimals) {
    Preferences p = Filled();
    p.field[kPrefSalesTax] = QStringLiteral("0.5");
    m_ui.ScriptAnswer(Answer::Yes);
    p.field[kPrefSalesTax] = LeaveField(kPrefSalesTax, p.field[kPrefSalesTax], m_ui).text;
    Save(p);
    EXPECT_DOUBLE_EQ(UserValue(QStringLiteral("SalesTaxRate")).toDouble(), 0.5);
    EXPECT_EQ(Load().field[kPrefSalesTax], QStringLiteral("50.00"));
}

TEST_F(PreferencesTest, TheMakersMailServerShowsAsItsLiteral) {
    const QString maker = m_rules.LookupKey(QStringLiteral("Mail Server"), QStringLiteral("Server"),
                                            update::kInfoStore);
    ASSERT_NE(maker, update::RuleError());
    Preferences p = Filled();
    p.field[kPrefMailServer] = maker;
    Save(p);
    EXPECT_EQ(Load().field[kPrefMailServer], QStringLiteral("Use Tolvane Mail Server"));
    p.field[kPrefMailServer] = QStringLiteral("Use Tolvane Mail Server");
    Save(p);
    EXPECT_EQ(UserValue(QStringLiteral("MailServer")).toString(),
              QStringLiteral("Use Tolvane Mail Server"));
    EXPECT_EQ(Load().field[kPrefMailServer], QStringLiteral("Use Tolvane Mail Server"));
}

TEST_F(PreferencesTest, TrackingIsOffUntilSwitchedOnAndWrittenAtOnceAsOnOrOff) {
    EXPECT_FALSE(Load().tracking);
    SaveTracking(false);
    EXPECT_EQ(Option(QStringLiteral("Track")), QStringLiteral("OFF"));
    EXPECT_FALSE(Load().tracking);
    SaveTracking(true);
    EXPECT_EQ(Option(QStringLiteral("Track")), QStringLiteral("ON"));
    EXPECT_TRUE(Load().tracking);
}

TEST_F(PreferencesTest, AUserWithoutASiteRowGetsOneOnUpdate) {
    m_db->Exec(QStringLiteral("DELETE FROM UserSites"));
    Preferences p = Filled();
    Save(p);
    EXPECT_EQ(SiteValue(QStringLiteral("UserID")).toString(), QStringLiteral("pat_o'sells"));
    EXPECT_EQ(SiteValue(QStringLiteral("AuctionSiteFlag")).toInt(), 0);
}

// ------------------------------------------------------------------- new user

TEST_F(PreferencesTest, ANewUserIsCheckedBeforeAnyRowIsWritten) {
    const struct {
        const char *name, *email, *repeat;
        const char* mentions;
    } cases[] = {
        {"  ", "a@b.c", "pw", "name"},
        {"Sam", "a@b.c", "pW", "passwords do not match"},
        {"Sam", "a@bc", "pw", "email Address Is Not Valid"},
        {"Sam", "ab.c", "pw", "email Address Is Not Valid"},
    };
    for (const auto& c : cases) {
        test::ScriptedUi ui;
        const core::NewUser user{QString::fromUtf8(c.name), QStringLiteral("id"),
                                 QStringLiteral("pw"), QString::fromUtf8(c.email)};
        EXPECT_FALSE(CreateNewUser(*m_db, user, QString::fromUtf8(c.repeat), ui));
        ASSERT_EQ(ui.Messages().size(), 1);
        EXPECT_TRUE(ui.Messages()[0].contains(QString::fromUtf8(c.mentions), Qt::CaseInsensitive))
            << ui.Messages()[0].toStdString();
    }
    EXPECT_EQ(m_db->ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Users")), 1);
}

TEST_F(PreferencesTest, ANewUserBecomesTheOnlyDefault) {
    const core::NewUser user{QStringLiteral("D'Arcy"), QStringLiteral("darcy_buys"),
                             QStringLiteral("pw"), QStringLiteral("darcy@example.com")};
    ASSERT_TRUE(CreateNewUser(*m_db, user, QStringLiteral("pw"), m_ui));
    core::Statement defaults =
        m_db->Prepare(QStringLiteral("SELECT UserName FROM Users WHERE isDefault = 1"));
    ASSERT_TRUE(defaults.Step());
    EXPECT_EQ(defaults.Text(0), user.userName);
    EXPECT_FALSE(defaults.Step());
    core::Statement site = m_db->Prepare(
        QStringLiteral("SELECT COUNT(*) FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0 "
                       "AND UserID = ? AND UserPassword = ?"));
    site.BindAll(user.userName, user.siteUserId, user.password);
    ASSERT_TRUE(site.Step());
    EXPECT_EQ(site.Value(0).toInt(), 1);
    // The same name a second time is told, not written.
    EXPECT_FALSE(CreateNewUser(*m_db, user, QStringLiteral("pw"), m_ui));
    EXPECT_EQ(m_ui.Messages().size(), 1);
    EXPECT_EQ(m_db->ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Users")), 2);
}

TEST_F(PreferencesTest, CancellingTheNewUserLeavesTheMarker) {
    EXPECT_FALSE(core::NewUserCancelled());
    ASSERT_TRUE(CancelNewUser());
    EXPECT_TRUE(QFile::exists(m_root.File(QStringLiteral("Configs/nuwcancel.cfg"))));
    EXPECT_TRUE(core::NewUserCancelled());
}

// ------------------------------------------------------------- tip of the day

TEST_F(PreferencesTest, TheShippedTipsAreReadOneALine) {
    const QStringList tips = LoadTips(TipFilePath());
    EXPECT_GE(tips.size(), 25);
    for (const QString& tip : tips) {
        EXPECT_EQ(tip, tip.trimmed());
        EXPECT_FALSE(tip.isEmpty());
    }
    const QString path = m_root.Write(QStringLiteral("tips.txt"), "first\r\n\r\n  second \n");
    EXPECT_EQ(LoadTips(path), (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
    EXPECT_TRUE(LoadTips(m_root.File(QStringLiteral("none.txt"))).isEmpty());
}

TEST(Tips, ANextTipIsNeverTheOneOnScreen) {
    QRandomGenerator random(42);
    EXPECT_EQ(PickTip(0, -1, random), -1);
    EXPECT_EQ(PickTip(1, 0, random), 0);
    QList<int> seen(5, 0);
    int current = 0;
    for (int i = 0; i < 500; ++i) {
        const int next = PickTip(5, current, random);
        ASSERT_GE(next, 0);
        ASSERT_LT(next, 5);
        ASSERT_NE(next, current);
        ++seen[next];
        current = next;
    }
    for (int count : seen) {
        EXPECT_GT(count, 50);  // every tip comes round
    }
}

TEST_F(PreferencesTest, TipsShowAtStartupUnlessTheSettingIsZero) {
    EXPECT_TRUE(ShowTipsAtStartup());
    SetShowTipsAtStartup(false);
    EXPECT_EQ(Option(QStringLiteral("Show Tips at Startup")), QStringLiteral("0"));
    EXPECT_FALSE(ShowTipsAtStartup());
    SetShowTipsAtStartup(true);
    EXPECT_EQ(Option(QStringLiteral("Show Tips at Startup")), QStringLiteral("1"));
    EXPECT_TRUE(ShowTipsAtStartup());
}

}  // namespace
