// SPDX-License-Identifier: GPL-3.0-or-later
// The creator's document: each group of columns through a save and a load,
// a save being one write, unique names, the Default row and the preferences
// over it, the required fields and the reserve rule, the save question, the
// settings, the favourites, deleting, and rows that hold what no save writes.
#include <gtest/gtest.h>

#include <QVariant>
#include <functional>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "creator/creator_document.h"
#include "tests/support/creator_fixture.h"
#include "tests/support/creator_sample.h"
#include "tests/support/test_support.h"
#include "update/rules.h"

using lw::core::Database;
using lw::core::Statement;
using namespace lw::creator;

// Failures print texts, not code units.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = lw::test::CreatorFixture::User();

class CreatorDocumentTest : public lw::test::CreatorFixture {
protected:
    qint64 Save(CreatorDocument& doc, const QString& type = QString(kDraft), qint64 id = 0,
                const QString& name = QStringLiteral("Lantern")) {
        SaveRequest request;
        request.name = name;
        request.type = type;
        request.existingId = id;
        return SaveCreatorRecord(Db(), request, doc, m_lists, m_rules);
    }
    CreatorDocument Load(qint64 id) {
        CreatorDocument doc = NewCreatorDocument(m_lists);
        EXPECT_TRUE(LoadCreatorRecord(Db(), id, m_lists, m_rules, doc));
        return doc;
    }
    // One column of a row as stored; a Null reads as an invalid QVariant.
    QVariant Column(qint64 id, const QString& column) {
        Statement row = Db().Prepare(QStringLiteral("SELECT ") + column +
                                     QStringLiteral(" FROM AuctionCreator WHERE ID = ?"));
        row.Bind(1, id);
        return row.Step() ? row.Value(0) : QVariant();
    }
};

// ------------------------------------------------------------ column groups

// A group of columns: what the document is given, what the row then holds,
// and what a load shows again.
struct GroupCase {
    const char* name;
    std::function<void(CreatorDocument&, const CreatorLists&)> fill;
    std::vector<std::pair<const char*, QVariant>> stored;  // invalid: Null
    std::function<void(const CreatorDocument&, const CreatorLists&)> check;
};

TEST_F(CreatorDocumentTest, EachGroupOfColumnsIsSavedAndLoadedByItsRule) {
    const std::vector<GroupCase> cases = {
        {"money boxes as numbers, shown as currency; an empty box is not written",
         [](CreatorDocument& d, const CreatorLists&) {
             d.txtMinimumBid = QStringLiteral("$1,234.50");
             d.txtShipping = QStringLiteral("7");
             d.txtReserve.clear();
             d.txtQuantity = QStringLiteral("0");
         },
         {{"MinimumBid", 1234.5}, {"Shipping", 7.0}, {"Reserve", QVariant()}, {"Quantity", 0}},
         [](const CreatorDocument& d, const CreatorLists&) {
             EXPECT_EQ(d.txtMinimumBid, QStringLiteral("$1,234.50"));
             EXPECT_EQ(d.txtShipping, QStringLiteral("$7.00"));
             EXPECT_EQ(d.txtReserve, QString());
             EXPECT_EQ(d.txtQuantity, QStringLiteral("1"));  // below 1 shows as 1
         }},
        {"coded lists in list order, each code followed by ~",
         [](CreatorDocument& d, const CreatorLists& l) {
             d.lstEbayOptions = {int(l.lstEbayOptions.size()) - 1, 0};
             d.lstEbayAcceptedPayment = {1};
             d.lstEbayShippingPref = {FindItemData(l.lstEbayShippingPref, 31)};
         },
         {{"eBayOptionalSettings", QStringLiteral("11~37~")},
          {"eBayPaymentPrefs", QStringLiteral("19~")},
          {"eBayShipPrefs", QStringLiteral("31~")}},
         [](const CreatorDocument& d, const CreatorLists& l) {
             EXPECT_EQ(d.lstEbayOptions, (QList<int>{0, int(l.lstEbayOptions.size()) - 1}));
             EXPECT_EQ(d.lstEbayAcceptedPayment, QList<int>{1});
             EXPECT_EQ(RowText(l.lstEbayShippingPref, d.lstEbayShippingPref.value(0)),
                       QStringLiteral("See item description for shipping charges"));
         }},
        {"picture links each followed by ~~~",
         [](CreatorDocument& d, const CreatorLists&) {
             d.lstPictureLink = {QStringLiteral("http://a/1.jpg"), QString(),
                                 QStringLiteral("http://a/~2.jpg")};
         },
         {{"PictureLinks", QStringLiteral("http://a/1.jpg~~~~~~http://a/~2.jpg~~~")}},
         [](const CreatorDocument& d, const CreatorLists&) {
             EXPECT_EQ(d.lstPictureLink, (QStringList{QStringLiteral("http://a/1.jpg"), QString(),
                                                      QStringLiteral("http://a/~2.jpg")}));
         }},
        {"country, region and gift icon by item data; shipping abroad and the regions",
         [](CreatorDocument& d, const CreatorLists& l) {
             d.cmbEbayCountry = FindItemData(l.cmbEbayCountry, 12);
             d.cmbEbayRegion = FindItemData(l.cmbEbayRegion, 23);
             d.lstEbayGiftIcon = FindItemData(l.lstEbayGiftIcon, 8);
             d.optEbayWorldShipping = 2;
             d.lstEbayShiptoCountries[1] = d.lstEbayShiptoCountries[8] = true;
         },
         {{"Country", 12},
          {"eBayRegion", 23},
          {"eBayGiftIcon", 8},
          {"eBayShipAbroadPref", 0},
          {"eBayShipUSPlus", 1},
          {"eBayeurope", 1},
          {"eBaycaribbean", 1},
          {"eBayasia", 0}},
         [](const CreatorDocument& d, const CreatorLists& l) {
             EXPECT_EQ(RowText(l.cmbEbayCountry, d.cmbEbayCountry), QStringLiteral("Germany"));
             EXPECT_EQ(RowText(l.cmbEbayRegion, d.cmbEbayRegion),
                       QStringLiteral("San Francisco Bay Area"));
             EXPECT_EQ(RowText(l.lstEbayGiftIcon, d.lstEbayGiftIcon), QStringLiteral("Christmas"));
             EXPECT_EQ(d.optEbayWorldShipping, 2);
             EXPECT_TRUE(d.lstEbayShiptoCountries[1] && d.lstEbayShiptoCountries[8]);
             EXPECT_FALSE(d.lstEbayShiptoCountries[0]);
         }},
        {"payment block with instant purchase: empty boxes become 0, the state its code",
         [](CreatorDocument& d, const CreatorLists& l) {
             d.chkbillpointIPAccepted = d.chkbillpointECAccepted = true;
             d.txtipShippingFee = QStringLiteral("$4.50");
             d.txtipShippingXFee.clear();
             d.txtipTax.clear();
             d.lstipTaxState = FindItemData(l.lstipTaxState, 0) + 5;  // California
             d.lblFullPolicy = QStringLiteral("Returns within 14 days.");
         },
         {{"billpointinstantpurchase", 1},
          {"billpointechecks", 1},
          {"billpointshipping", 4.5},
          {"billpointadditionalshipping", 0.0},
          {"billpointsalestax", 0.0},
          {"billpointsalestaxstate", QStringLiteral("CA")},
          {"billpointreturnpolicy", QStringLiteral("Returns within 14 days.")}},
         [](const CreatorDocument& d, const CreatorLists& l) {
             EXPECT_TRUE(d.chkbillpointIPAccepted);
             EXPECT_EQ(d.txtipShippingFee, QStringLiteral("$4.50"));
             EXPECT_EQ(RowText(l.lstipTaxState, d.lstipTaxState), QStringLiteral("California"));
             EXPECT_EQ(d.lblFullPolicy, QStringLiteral("Returns within 14 days."));
         }},
        {"payment block without instant purchase: its last five columns are not written",
         [](CreatorDocument& d, const CreatorLists&) {
             d.txtipShippingFee = QStringLiteral("$9.00");
             d.lblFullPolicy = QStringLiteral("never written");
         },
         {{"billpointinstantpurchase", 0},
          {"billpointshipping", QVariant()},
          {"billpointreturnpolicy", QVariant()}},
         [](const CreatorDocument& d, const CreatorLists&) {
             EXPECT_EQ(d.txtipShippingFee, QStringLiteral("$0.00"));
             EXPECT_EQ(d.txtipTax, QStringLiteral("0"));
             EXPECT_EQ(d.lblFullPolicy, QString());
         }},
        {"texts, checks, captions and the layout choices",
         [](CreatorDocument& d, const CreatorLists&) {
             d.chkItemTitle = true;
             d.txtItemTitle = QStringLiteral("It's a \"lamp\"");
             d.txtTransaction[2] = QStringLiteral("Notes:");
             d.chkLink[1] = true;
             d.cmbFontSize = 4;
             d.cmbFontColor = QStringLiteral("Brown");
             d.lstTemplateStyle = QStringLiteral("Simple Elegant");
             d.cmbPayPalLogo = 2;
             d.txtQuantity = QStringLiteral("12 lamps");
         },
         {{"IncludeLongTitle", 1},
          {"ItemTitleLong", QStringLiteral("It's a \"lamp\"")},
          {"TDCaption2", QStringLiteral("Notes:")},
          {"LinkInclude1", 1},
          {"DefaultFontSize", 4},
          {"AuctionFontColor", QStringLiteral("Brown")},
          {"AuctionStyle", QStringLiteral("Simple Elegant")},
          {"PayPalLogo", 2},
          {"PDQuantity", 12}},
         [](const CreatorDocument& d, const CreatorLists&) {
             EXPECT_EQ(d.txtItemTitle, QStringLiteral("It's a \"lamp\""));
             EXPECT_EQ(d.txtTransaction[2], QStringLiteral("Notes:"));
             EXPECT_TRUE(d.chkLink[1]);
             EXPECT_EQ(d.cmbFontSize, 4);
             EXPECT_EQ(d.cmbFontColor, QStringLiteral("Brown"));
             EXPECT_EQ(d.lstTemplateStyle, QStringLiteral("Simple Elegant"));
         }},
    };
    for (const GroupCase& c : cases) {
        SCOPED_TRACE(c.name);
        CreatorDocument doc = NewCreatorDocument(m_lists);
        c.fill(doc, m_lists);
        const qint64 id = Save(doc);
        for (const auto& [column, expected] : c.stored) {
            const QVariant value = Column(id, QString::fromLatin1(column));
            if (!expected.isValid()) {
                EXPECT_TRUE(value.isNull())
                    << column << " holds " << value.toString().toStdString();
            } else {
                EXPECT_EQ(value.toString(), expected.toString()) << column;
            }
        }
        c.check(Load(id), m_lists);
    }
}

// ------------------------------------------------------------ saving and names

TEST(MakeUniqueNames, AMatchingNameGetsTheFirstFreeNumber) {
    const struct {
        const char* name;
        QStringList taken;
        const char* expected;
    } cases[] = {
        {"Lamp", {}, "Lamp"},
        {"Lamp", {QStringLiteral("Vase")}, "Lamp"},
        {"lamp", {QStringLiteral("LAMP")}, "lamp (2)"},
        {"Lamp", {QStringLiteral("Lamp"), QStringLiteral("lamp (2)")}, "Lamp (3)"},
        {"Lamp", {QStringLiteral("Lamp"), QStringLiteral("Lamp (3)")}, "Lamp (2)"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(MakeUniqueName(QString::fromLatin1(c.name), c.taken),
                  QString::fromLatin1(c.expected));
    }
}

TEST_F(CreatorDocumentTest, ASaveIsOneWriteOverItsIdOrOfANewRowWithAFreeName) {
    // Each write leaves the row's ID behind: no value goes into the triggers' SQL.
    Db().Exec(
        QStringLiteral("CREATE TEMP TABLE Inserts (n);"
                       "CREATE TEMP TABLE Updates (n);"
                       "CREATE TEMP TRIGGER CountInserts AFTER INSERT ON main.AuctionCreator "
                       "BEGIN INSERT INTO Inserts VALUES (NEW.ID); END;"
                       "CREATE TEMP TRIGGER CountUpdates AFTER UPDATE ON main.AuctionCreator "
                       "BEGIN INSERT INTO Updates VALUES (NEW.ID); END;"));
    const auto writes = [this](const char* table) {
        return Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM temp.") + QLatin1String(table));
    };
    CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    doc.dirty = true;
    const qint64 first = Save(doc, QString(kOldAuction));
    EXPECT_EQ(writes("Inserts"), 1);
    EXPECT_EQ(writes("Updates"), 0);
    EXPECT_FALSE(doc.dirty);
    const qint64 second = Save(doc, QString(kOldAuction));
    EXPECT_EQ(Column(second, QStringLiteral("AuctionName")).toString(),
              QStringLiteral("Lantern (2)"));
    Save(doc, QString(kOldAuction), first);
    EXPECT_EQ(Column(first, QStringLiteral("AuctionName")).toString(), QStringLiteral("Lantern"));
    EXPECT_EQ(writes("Inserts"), 2);
    EXPECT_EQ(writes("Updates"), 1);
    // Drafts compete with drafts only.
    EXPECT_EQ(Column(Save(doc), QStringLiteral("AuctionName")).toString(),
              QStringLiteral("Lantern"));
    EXPECT_EQ(Column(Save(doc), QStringLiteral("AuctionName")).toString(),
              QStringLiteral("Lantern (2)"));
    // The status told each save as it went, and was cleared at its end.
    const QStringList statuses = m_ui.Statuses();
    ASSERT_FALSE(statuses.isEmpty());
    EXPECT_EQ(statuses.first(), QStringLiteral("Saving Auction."));
    EXPECT_TRUE(statuses.last().isEmpty());
    for (const QString& status : statuses) {
        EXPECT_LE(status.size(), 50);
    }

    // The Default row, saved twice, stays the one row of its type at its ID.
    CreatorDocument defaults = Load(1);
    defaults.txtItemLocationEbay = QStringLiteral("Hamburg");
    Save(defaults, QString(kDefault), 1, QStringLiteral("Default"));
    Save(defaults, QString(kDefault), 1, QStringLiteral("Default"));
    Statement count =
        Db().Prepare(QStringLiteral("SELECT COUNT(*) FROM AuctionCreator WHERE ACType = ?"));
    ASSERT_TRUE(count.Bind(1, QString(kDefault)).Step());
    EXPECT_EQ(count.Value(0).toLongLong(), 1);
    EXPECT_EQ(Load(1).txtItemLocationEbay, QStringLiteral("Hamburg"));
    EXPECT_EQ(lw::core::GetSetting(QStringLiteral("Tolvane Auction Creator"),
                                   QStringLiteral("Settings"), QStringLiteral("LastAuctionID")),
              QStringLiteral("1"));
    // Templates compete with the Default row's list text and the user's own only.
    EXPECT_EQ(MakeUniqueName(Db(), QStringLiteral("default"), QString(kTemplate), kUser),
              QStringLiteral("default (2)"));
    EXPECT_EQ(MakeUniqueName(Db(), QStringLiteral("Lantern"), QString(kTemplate), kUser),
              QStringLiteral("Lantern"));
}

// ------------------------------------------------------------ Default row and preferences

TEST_F(CreatorDocumentTest, TheDefaultRowGivesTheCaptionsAndThePreferencesGoOverIt) {
    Db().Prepare(QStringLiteral("UPDATE UserSites SET LocationPref = ?, ShipFromCountryPref = ?, "
                                "ZIPCodePref = ?, PaymentTypePref = ?, ShipPayPref = ?, "
                                "shipUSPlus = ?, asia = ? WHERE UserName = ?"))
        .BindAll("Hamburg", "Germany", "Denver", "Personal Check~~~Discover~~~Nothing",
                 "Seller pays shipping", 1, 1, kUser)
        .Run();
    CreatorDocument doc = Load(1);
    EXPECT_EQ(doc.caption, QStringLiteral("Lotwright AC: Default"));
    EXPECT_EQ(doc.txtProductDetails[0], QStringLiteral("Condition:"));
    EXPECT_EQ(doc.txtLinkLink[1], QStringLiteral("http://"));
    EXPECT_EQ(doc.txtEbayAuctionLink, QStringLiteral("See my other eBay auctions"));
    EXPECT_EQ(doc.cmbEbayDuration, QStringLiteral("7"));
    doc.cmbEbayCountry = -1;  // an empty country box is left empty
    ApplyUserSitesPreferences(Db(), kUser, m_lists, doc);
    EXPECT_EQ(doc.txtItemLocationEbay, QStringLiteral("Hamburg"));
    EXPECT_EQ(doc.cmbEbayCountry, -1);
    EXPECT_EQ(RowText(m_lists.cmbEbayRegion, doc.cmbEbayRegion), QStringLiteral("Denver"));
    EXPECT_EQ(doc.lstEbayAcceptedPayment.size(), 2);
    EXPECT_EQ(RowText(m_lists.lstEbayShippingPref, doc.lstEbayShippingPref.value(0)),
              QStringLiteral("Seller pays shipping"));
    EXPECT_EQ(doc.optEbayWorldShipping, 2);
    EXPECT_TRUE(doc.lstEbayShiptoCountries[3]);
    doc.cmbEbayCountry = 0;
    ApplyUserSitesPreferences(Db(), kUser, m_lists, doc);
    EXPECT_EQ(RowText(m_lists.cmbEbayCountry, doc.cmbEbayCountry), QStringLiteral("Germany"));
    EXPECT_TRUE(m_ui.Messages().isEmpty());
}

// ------------------------------------------------------------ validity

// A document that passes every rule.
CreatorDocument ValidDocument(const CreatorLists& lists) {
    CreatorDocument doc = lw::test::FullSampleDocument(lists);
    doc.cmbEbayCategory = {QStringLiteral("Antiques: Silver (102)"), QStringLiteral("102")};
    doc.txtItemLocationEbay = QStringLiteral("Hamburg");
    doc.cmbEbayCountry = doc.cmbEbayRegion = 0;
    doc.lstEbayAcceptedPayment = {0};
    doc.lstEbayShippingPref = {1};
    doc.optEbayWorldShipping = 0;
    doc.txtReserve.clear();
    return doc;
}

TEST_F(CreatorDocumentTest, EachRequiredLabelTurnsRedOnItsOwnRule) {
    ASSERT_TRUE(CheckRequiredFields(ValidDocument(m_lists), m_lists).AllGreen());
    const std::vector<std::pair<const char*, std::function<void(CreatorDocument&)>>> cases = {
        {"lblRequired(0)", [](CreatorDocument& d) { d.txtDescription.clear(); }},
        {"lblRequired(1)", [](CreatorDocument& d) { d.txtMinimumBid = QStringLiteral("$."); }},
        {"lblRequired(1)", [](CreatorDocument& d) { d.txtMinimumBid = QStringLiteral("0"); }},
        {"lblRequired(2)", [](CreatorDocument& d) { d.txtQuantity = QStringLiteral("0"); }},
        {"lblRequiredeBay(0)", [](CreatorDocument& d) { d.cmbEbayCategory = {}; }},
        {"lblRequiredeBay(1)", [](CreatorDocument& d) { d.txtEbayTitle.clear(); }},
        {"lblRequiredeBay(2)", [](CreatorDocument& d) { d.cmbEbayDuration = QStringLiteral("x"); }},
        {"lblRequiredeBay(3)", [](CreatorDocument& d) { d.txtItemLocationEbay.clear(); }},
        {"lblRequiredeBay(4)", [](CreatorDocument& d) { d.cmbEbayRegion = -1; }},
        {"lblRequiredeBay(5)", [](CreatorDocument& d) { d.cmbEbayCountry = -1; }},
        {"lblRequiredeBay(6)", [](CreatorDocument& d) { d.lstEbayAcceptedPayment.clear(); }},
        {"lblRequiredeBay(7)", [](CreatorDocument& d) { d.lstEbayShippingPref.clear(); }},
        {"lblRequiredeBay(8)", [](CreatorDocument& d) { d.optEbayWorldShipping = -1; }},
        {"lblRequiredeBay(8)", [](CreatorDocument& d) { d.optEbayWorldShipping = 3; }},
    };
    for (const auto& [label, spoil] : cases) {
        CreatorDocument doc = ValidDocument(m_lists);
        spoil(doc);
        const RequiredFields fields = CheckRequiredFields(doc, m_lists);
        EXPECT_EQ(fields.RedLabels(), QStringList{QString::fromLatin1(label)});
        EXPECT_FALSE(ValidateCreator(doc, m_lists, m_ui)) << label;
    }
    EXPECT_TRUE(m_ui.Messages().isEmpty());  // red labels say it; no message
    EXPECT_EQ(CheckRequiredFields(ValidDocument(m_lists), m_lists).titleCaption,
              QStringLiteral("Title (32)"));
}

TEST_F(CreatorDocumentTest, AReserveMustStandAboveTheMinimumBid) {
    const struct {
        const char* reserve;
        const char* minimum;
        bool valid;
    } cases[] = {
        {"10", "10", false}, {"9", "10", false}, {"11", "10", true},
        {"", "10", true},    {"0", "10", true},  {"$20.00", "10", true},  // "$" reads as 0
    };
    for (const auto& c : cases) {
        lw::test::ScriptedUi ui;
        CreatorDocument doc = ValidDocument(m_lists);
        doc.txtReserve = QString::fromLatin1(c.reserve);
        doc.txtMinimumBid = QString::fromLatin1(c.minimum);
        EXPECT_EQ(ValidateForSending(doc, m_lists, ui), c.valid) << c.reserve;
        const QStringList refused{
            QStringLiteral("Your reserve price must be greater than your minimum bid."),
            QStringLiteral("Please complete 'Red' fields in the Auction Creator to finish your "
                           "auction or save as Draft")};
        EXPECT_EQ(ui.Messages(), c.valid ? QStringList() : refused);
    }
}

// ------------------------------------------------------------ dirty flag

TEST_F(CreatorDocumentTest, TheSaveQuestionIsAskedOnlyOfAVisibleChangedDocument) {
    const struct {
        const char* type;
        const char* title;
        bool visible;
        bool dirty;
        lw::core::Answer answer;
        SaveAnswer expected;
        const char* asked;  // nullptr: not asked
    } cases[] = {
        {"draft", "Lamp", true, true, lw::core::Answer::Cancel, SaveAnswer::Cancel,
         "You have not saved your changes to this draft (Lamp).  Would you like to save your "
         "work as a draft?"},
        {"OLD AUCTION", "", true, true, lw::core::Answer::No, SaveAnswer::No,
         "You have not saved your changes to this auction.  Would you like to save your work "
         "as a draft?"},
        {"template", "Lamp", true, true, lw::core::Answer::Yes, SaveAnswer::Yes,
         "You have not saved your changes to this template (Lamp).  Would you like to save "
         "your work as a draft?"},
        {"draft", "Lamp", false, true, lw::core::Answer::Yes, SaveAnswer::NotAsked, nullptr},
        {"draft", "Lamp", true, false, lw::core::Answer::Yes, SaveAnswer::NotAsked, nullptr},
    };
    for (const auto& c : cases) {
        lw::test::ScriptedUi ui;
        ui.ScriptAnswer(c.answer);
        CreatorDocument doc;
        doc.lblAuctionType = QString::fromLatin1(c.type);
        doc.txtItemTitle = QString::fromLatin1(c.title);
        doc.dirty = c.dirty;
        EXPECT_EQ(PromptSaveChanges(doc, c.visible, ui), c.expected);
        ASSERT_EQ(ui.History().size(), c.asked ? 1u : 0u);
        if (c.asked) {
            EXPECT_EQ(ui.History().front().text, QString::fromUtf8(c.asked));
            EXPECT_EQ(ui.History().front().title, QStringLiteral("Save Changes?"));
        }
        EXPECT_EQ(doc.dirty, c.dirty && c.expected != SaveAnswer::No);
    }
}

// ------------------------------------------------------------ settings

TEST_F(CreatorDocumentTest, SettingsKeepTheLastAuctionAndThePostOption) {
    EXPECT_EQ(SameAsLastCaption(), QStringLiteral("Same As Last Auction (Not Available)"));
    CreatorDocument doc = NewCreatorDocument(m_lists);
    const qint64 id = Save(doc, QString(kTemplate), 0, QStringLiteral("Lamps"));
    CreatorSettings settings = LoadCreatorSettings();
    EXPECT_EQ(settings.LastAuctionName, QStringLiteral("Lamps"));
    EXPECT_EQ(settings.LastAuctionID, QString::number(id));
    EXPECT_EQ(settings.LastAuctionType, QStringLiteral("Template"));
    EXPECT_EQ(SameAsLastCaption(), QStringLiteral("Same As Last Auction (Lamps)"));
    EXPECT_EQ(settings.PostOption, 1);
    // Options run from 1 to 3; any other value means direct, 1.
    for (const auto& [saved, loaded] : {std::pair{7, 1}, {3, 3}, {0, 1}, {2, 2}}) {
        SavePostOption(saved);
        EXPECT_EQ(LoadCreatorSettings().PostOption, loaded) << saved;
    }
    settings.PostOption = 3;
    settings.DraftChoice = 4;
    settings.JustGo = true;
    SaveLeavingSettings(settings);
    settings = LoadCreatorSettings();
    EXPECT_EQ(settings.PostOption, 3);
    EXPECT_EQ(settings.DraftChoice, 4);
    EXPECT_TRUE(settings.JustGo);
}

// ------------------------------------------------------------ favourites

TEST_F(CreatorDocumentTest, FavouritesAreAddedRemovedAndPictureLinksPruned) {
    EXPECT_FALSE(AddFavorite(Db(), kUser, 3, QStringLiteral("  "), m_ui));
    EXPECT_TRUE(AddFavorite(Db(), kUser, 3, QStringLiteral("Like new"), m_ui));
    EXPECT_FALSE(RemoveFavorite(Db(), kUser, 3, QStringLiteral("Missing"), m_ui));
    EXPECT_FALSE(RemoveFavorite(Db(), kUser, 3, QString(), m_ui));
    EXPECT_EQ(m_ui.Messages(),
              (QStringList{QStringLiteral("Blank statements can not be added"),
                           QStringLiteral("No record found to delete, please check your selection"),
                           QStringLiteral("Blank statements can not be removed")}));
    EXPECT_EQ(LoadFavorites(Db(), kUser, 3), QStringList{QStringLiteral("Like new")});

    CreatorDocument doc = NewCreatorDocument(m_lists);
    m_ui.ScriptPrompt(QStringLiteral("http://p/kept.jpg"));
    m_ui.ScriptPrompt(QStringLiteral("http://p/dropped.jpg"));
    m_ui.ScriptPrompt(QStringLiteral("http://p/kept.jpg"));  // already listed: ignored
    EXPECT_TRUE(AddPictureToList(Db(), kUser, doc, m_lists, m_ui));
    EXPECT_TRUE(AddPictureToList(Db(), kUser, doc, m_lists, m_ui));
    EXPECT_FALSE(AddPictureToList(Db(), kUser, doc, m_lists, m_ui));
    EXPECT_TRUE(AddFavorite(Db(), kUser, 0, QStringLiteral("http://p/favourite.jpg"), m_ui));
    doc.lstPictureLink.removeAll(QStringLiteral("http://p/dropped.jpg"));
    m_lists = LoadCreatorLists(Db(), m_rules, kUser, QString());
    KeepPictureFavorites(Db(), kUser, doc, m_lists);
    EXPECT_EQ(LoadFavorites(Db(), kUser, 2), QStringList{QStringLiteral("http://p/kept.jpg")});
    EXPECT_EQ(LoadFavorites(Db(), kUser, 0), QStringList{QStringLiteral("http://p/favourite.jpg")});
    EXPECT_EQ(m_lists.cmbPictureLink.size(), 2u);
}

// ------------------------------------------------------------ chooser and deleting

TEST_F(CreatorDocumentTest, TheChooserTellsARowAndDeletesATemplateOnlyAfterYesNeverTheDefault) {
    Db().Prepare(QStringLiteral("INSERT INTO eBayCategories VALUES (?, ?, ?)"))
        .BindAll("102", "Silver", "Antiques")
        .Run();
    CreatorDocument doc = lw::test::FullSampleDocument(m_lists);
    doc.cmbEbayCategory = {QStringLiteral("Antiques: Silver (102)"), QStringLiteral("102")};
    const qint64 id = Save(doc, QString(kTemplate), 0, QStringLiteral("Lamps"));
    const std::vector<ChooserRow> rows = ChooserRows(Db(), QString(kTemplate), kUser);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].text, QStringLiteral("Default"));
    EXPECT_FALSE(DeleteTemplate(Db(), 0, rows[0], m_ui));
    m_ui.ScriptAnswer(lw::core::Answer::No);
    EXPECT_FALSE(DeleteTemplate(Db(), 1, rows[1], m_ui));
    // Kept after No, the row tells its details.
    const QStringList details = ChooserDetails(Db(), id);
    ASSERT_EQ(details.size(), 6);
    EXPECT_EQ(details[1], QStringLiteral("Description: <P>A brass ship's la..."));
    EXPECT_EQ(details[2], QStringLiteral("Minimum Bid: $25.00"));
    EXPECT_EQ(details[4], QStringLiteral("eBay Category: 102"));
    EXPECT_EQ(details[5], QStringLiteral("Antiques: Silver (102)"));
    EXPECT_EQ(Load(id).cmbEbayCategory.text, QStringLiteral("Antiques: Silver (102)"));
    m_ui.ScriptAnswer(lw::core::Answer::Yes);
    EXPECT_TRUE(DeleteTemplate(Db(), 1, rows[1], m_ui));
    EXPECT_EQ(m_ui.Messages(), QStringList{QStringLiteral("Default template cannot be deleted.")});
    EXPECT_EQ(m_ui.History().back().text,
              QStringLiteral("Are you sure you want to delete this template: Lamps?"));
    EXPECT_TRUE(ChooserDetails(Db(), id).isEmpty());
    EXPECT_EQ(ChooserRows(Db(), QString(kTemplate), kUser).size(), 1u);
}

// ------------------------------------------------------------ broken rows

// An older row keeps the credit card among its options, as code 49, with
// empty and unknown codes beside it.
TEST_F(CreatorDocumentTest, ABrokenOrOlderRowLoadsAndAMissingOneLeavesTheDocument) {
    Db().Prepare(QStringLiteral(
                     "INSERT INTO AuctionCreator (ID, ACType, AuctionName, MinimumBid, Quantity, "
                     "Country, eBayRegion, eBayGiftIcon, DefaultFontSize, PictureLinks, "
                     "eBayOptionalSettings, AuctionStyle, AuctionFontColor, "
                     "billpointinstantpurchase, billpointsalestaxstate, eBayCategory) VALUES "
                     "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"))
        .BindAll(50, "Draft", QVariant(), "lots", "many", "x", -4, 9999, QVariant(), "~~~",
                 "11~49~0~~x", "No Such Style", "Mauve", "True", "ZZ", "999")
        .Run();
    CreatorDocument doc = Load(50);
    EXPECT_EQ(doc.caption, QStringLiteral("Lotwright AC: "));
    EXPECT_EQ(doc.txtMinimumBid, QStringLiteral("lots"));
    EXPECT_EQ(doc.txtQuantity, QStringLiteral("1"));
    EXPECT_EQ(doc.cmbEbayCountry, 0);
    EXPECT_EQ(doc.lstEbayGiftIcon, -1);
    EXPECT_EQ(doc.cmbFontSize, 1);
    EXPECT_EQ(doc.lstPictureLink, QStringList{QString()});
    EXPECT_EQ(doc.lstEbayOptions, QList<int>{FindItemData(m_lists.lstEbayOptions, 11)});
    EXPECT_TRUE(doc.chkbillpointCCAccepted);
    EXPECT_EQ(doc.lstTemplateStyle, m_lists.lstTemplateStyle.front().name);
    EXPECT_EQ(doc.cmbFontColor, QStringLiteral("Black"));
    EXPECT_EQ(doc.lstipTaxState, 0);
    EXPECT_TRUE(doc.cmbEbayCategory.text.isEmpty());
    EXPECT_EQ(doc.lbleBayCat, QStringLiteral("999"));

    const QStringList details = ChooserDetails(Db(), 50);
    ASSERT_EQ(details.size(), 5);  // no category of that number
    EXPECT_EQ(details[1], QStringLiteral("Description: Not available"));

    doc.txtItemTitle = QStringLiteral("typed, not saved");
    EXPECT_FALSE(LoadCreatorRecord(Db(), 51, m_lists, m_rules, doc));
    EXPECT_EQ(doc.txtItemTitle, QStringLiteral("typed, not saved"));
    // Saved again, the text that was no number stays unwritten and the rest goes.
    EXPECT_EQ(Save(doc, QString(kDraft), 50), 50);
    EXPECT_EQ(Column(50, QStringLiteral("ItemTitleLong")).toString(),
              QStringLiteral("typed, not saved"));
    EXPECT_EQ(Column(50, QStringLiteral("MinimumBid")).toString(), QStringLiteral("lots"));
}

}  // namespace
