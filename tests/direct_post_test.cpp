// SPDX-License-Identifier: GPL-3.0-or-later
// Posting a listing without the site: the slot table of the rules, the post
// body a creator row gives (the "$$$" mark, the option lists, the online
// payment block and what it skips, the footer and its link), the refusals of
// a row that lacks a value, the new item number in an answer, and the
// editing commands of seller.pro over a sell form saved from the demo
// marketplace.
#include <gtest/gtest.h>

#include <QMap>
#include <QRegularExpression>
#include <functional>
#include <optional>
#include <vector>

#include "core/rule_text.h"
#include "creator/direct_post.h"
#include "creator/sell_page.h"
#include "tests/support/test_support.h"
#include "update/rules.h"

using lw::creator::CreatorRecord;
using lw::creator::PostSlots;
using lw::creator::SiteLogin;
using lw::test::SourceDir;
using lw::update::RuleStore;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

QString Shipped(const char* name) {
    const std::optional<QString> text =
        lw::core::LoadRuleFile(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name));
    EXPECT_TRUE(text) << name;
    return text.value_or(QString()) + QStringLiteral("\r\n\r\n");
}

// The shipped rules: site.pro, info.pro and seller.pro in their stores.
const RuleStore& ShippedRules() {
    static const RuleStore rules = [] {
        RuleStore store;
        store.SetText(lw::update::kSiteStore, Shipped("site.pro"));
        store.SetText(lw::update::kInfoStore, Shipped("info.pro"));
        store.SetText(lw::update::kSellerStore, Shipped("seller.pro"));
        return store;
    }();
    return rules;
}

const SiteLogin kLogin{QStringLiteral("demo_seller"), QStringLiteral("demo")};

// A row that holds what a listing needs and no more.
CreatorRecord PlainRow() {
    CreatorRecord row;
    row.Set(QStringLiteral("eBayAuctionTitle"), QStringLiteral("Brass lamp"));
    row.Set(QStringLiteral("eBayCategory"), QStringLiteral("401"));
    row.Set(QStringLiteral("AuctionHTML"), QStringLiteral("<p>Lamp</p>"));
    row.Set(QStringLiteral("ItemLocation"), QStringLiteral("Albany, NY"));
    row.Set(QStringLiteral("eBayDuration"), QStringLiteral("5"));
    row.Set(QStringLiteral("Quantity"), 1);
    row.Set(QStringLiteral("MinimumBid"), 7.25);
    return row;
}

using RowEdit = std::function<void(CreatorRecord&)>;
RowEdit Columns(std::vector<std::pair<const char*, QVariant>> values) {
    return [values](CreatorRecord& row) {
        for (const auto& [column, value] : values) {
            row.Set(QLatin1String(column), value);
        }
    };
}

// Category names the resolver knows; any other cannot be resolved.
std::optional<QString> Resolve(const QString& name) {
    if (name == QLatin1String("Collectibles: Advertising")) {
        return QStringLiteral("401");
    }
    return std::nullopt;
}

// The body's pairs by name, as encoded.
QMap<QString, QString> Pairs(const QString& body) {
    QMap<QString, QString> pairs;
    for (const QString& pair : body.split(u'&', Qt::SkipEmptyParts)) {
        const qsizetype equals = pair.indexOf(u'=');
        pairs.insert(pair.left(equals), pair.mid(equals + 1));
    }
    return pairs;
}

}  // namespace

TEST(PostSlots, TheTableIsTheRulesNamesAndDefaults) {
    struct Case {
        const char* what;
        const char* names;     // the lines of "AuctionPost Names"
        const char* defaults;  // the lines of "AuctionPost Defaults"
        int count;
        QStringList slotNames;  // slots 1 to count
        QStringList values;
        const char* body;
    };
    const Case cases[] = {
        {"a name and its default; the mark of an empty value",
         "Count=3\r\nField1=a\r\nField2=b c\r\nField3=d",
         "Default1=1\r\nDefault2=x&y\r\nDefault3=$$$",
         3,
         {"a", "b c", "d"},
         {"1", "x&y", "$$$"},
         "a=1&b+c=x%26y&d="},
        {"a missing key counts as empty: no name, or no value",
         "Count=3\r\nField1=a\r\nField3=c",
         "Default1=1\r\nDefault2=2",
         3,
         {"a", "", "c"},
         {"1", "2", ""},
         "a=1"},
        {"no more slots than the table has room for",
         "Count=99\r\nField58=z",
         "Default58=9",
         58,
         {},
         {},
         "z=9"},
        {"no section: no slots", "", "", 0, {}, {}, ""},
    };
    for (const Case& c : cases) {
        RuleStore rules;
        rules.SetText(lw::update::kInfoStore,
                      QStringLiteral("[AuctionPost Names]\r\n") + QLatin1String(c.names) +
                          QStringLiteral("\r\n\r\n[AuctionPost Defaults]\r\n") +
                          QLatin1String(c.defaults) + QStringLiteral("\r\n\r\n"));
        const PostSlots slots = lw::creator::LoadPostTable(rules);
        EXPECT_EQ(slots.count, c.count) << c.what;
        if (!c.slotNames.isEmpty()) {
            EXPECT_EQ(slots.names.mid(1), c.slotNames) << c.what;
            EXPECT_EQ(slots.values.mid(1), c.values) << c.what;
        }
        EXPECT_EQ(lw::creator::PostBody(slots), QLatin1String(c.body)) << c.what;
    }
}

TEST(PostBody, EachSlotTakesItsValueFromTheRowByItsRule) {
    struct Case {
        const char* what;
        RowEdit edit;
        QStringList sent;    // "name=value" as encoded
        QStringList absent;  // names not sent at all
    };
    const QString longTitle = QString(44, u'a') + QStringLiteral("\"b\"");
    const Case cases[] = {
        {"a plain row: defaults, the marked empty counter, no reserve",
         Columns({}),
         {"title=Brass+lamp", "category=401", "location=Albany%2C+NY", "counter=", "quantity=1",
          "minimumbid=7.25", "duration=5", "userid=demo_seller", "password=demo",
          "shipinternationally=siteonly", "gallery=0", "galleryurl=http%3A%2F%2F", "gifticon=0",
          "zip=0", "country=0", "pictureurl=http%3A%2F%2F", "bpshipping=0", "bpsalestaxstate=none"},
         {"subtitle", "category2", "buyitnowprice", "scheduledstart", "reserve", "bold", "europe",
          "bpcreditcard", "bpinstantpurchase"}},
        {"the title is cut to 45 characters before its quotes become entities",
         Columns({{"eBayAuctionTitle", longTitle}}),
         {QStringLiteral("title=") + QString(44, u'a') + QStringLiteral("%22")},
         {}},
        {"a category name is resolved to its number",
         Columns({{"eBayCategory", "Collectibles: Advertising"}}),
         {"category=401"},
         {}},
        {"option codes set their slots; 0, blanks and codes beyond the table set none",
         Columns({{"eBayOptionalSettings", "11~58~0~~211"},
                  {"eBayPaymentPrefs", "18~22"},
                  {"eBayShipPrefs", "29~"}}),
         {"bold=on", "highlight=on", "moneyorder=on", "escrow=on", "buyerpaysfixed=on"},
         {"featured", "superfeatured", "private", "sellerpaysshipping"}},
        {"without credit cards the online payment block keeps its defaults",
         Columns({{"billpointinstantpurchase", 1},
                  {"billpointechecks", 1},
                  {"billpointshipping", 4.5}}),
         {"bpshipping=0", "bpadditionalshipping=0", "bpsalestax=0", "bpsalestaxstate=none"},
         {"bpcreditcard", "bpechecks", "bpinstantpurchase", "bpaddicon"}},
        {"credit cards without instant purchase skip its amounts",
         Columns({{"billpointcreditcard", 1},
                  {"billpointechecks", 1},
                  {"billpointaddicon", 1},
                  {"billpointshipping", 4.5}}),
         {"bpcreditcard=on", "bpechecks=on", "bpaddicon=on", "bpshipping=0"},
         {"bpinstantpurchase"}},
        {"instant purchase sends its amounts, a null one as 0 or none",
         Columns({{"billpointcreditcard", "True"},
                  {"billpointinstantpurchase", -1},
                  {"billpointshipping", 4.5},
                  {"billpointreturnpolicy", "30 days"}}),
         {"bpcreditcard=on", "bpinstantpurchase=on", "bpshipping=4.5", "bpadditionalshipping=0",
          "bpsalestax=0", "bpsalestaxstate=none", "bpreturnpolicy=30+days"},
         {"bpechecks"}},
        {"regions go with shipping to the site plus regions",
         Columns({{"eBayShipUSPlus", 1}, {"eBayeurope", 1}, {"eBayasia", 1}}),
         {"shipinternationally=siteplusregions", "europe=on", "asia=on"},
         {"northamerica", "oceania"}},
        {"worldwide shipping sends no regions",
         Columns({{"eBayShipAbroadPref", 1}, {"eBayShipUSPlus", 1}, {"eBayeurope", 1}}),
         {"shipinternationally=worldwide"},
         {"europe"}},
        {"no quantity is one; no minimum bid keeps the default; a reserve above 0 is sent",
         Columns({{"Quantity", 0}, {"MinimumBid", 0}, {"Reserve", 60.0}}),
         {"quantity=1", "reserve=60"},
         {"minimumbid"}},
        {"a picture link that is no http link becomes the bare prefix",
         Columns({{"PictureIconActivate", "ftp://x/p.jpg"}}),
         {"pictureurl=http%3A%2F%2F"},
         {}},
        {"a gallery needs a link of seven characters or more",
         Columns({{"IncludeGallery", 1},
                  {"GalleryLink", "HTTP://g/1.jpg"},
                  {"PictureIconActivate", "http://p/1.jpg"}}),
         {"gallery=1", "galleryurl=HTTP%3A%2F%2Fg%2F1.jpg", "pictureurl=http%3A%2F%2Fp%2F1.jpg"},
         {}},
        {"a gallery link too short to be one",
         Columns({{"IncludeGallery", 1}, {"GalleryLink", "http:/"}}),
         {"gallery=0", "galleryurl=http%3A%2F%2F"},
         {}},
        {"a list is read up to its 200th entry; no code takes the sign-in's slots",
         Columns({{"eBayOptionalSettings",
                   QString(QStringLiteral("38~39~") + QStringLiteral("0~").repeated(197) +
                           QStringLiteral("12~11"))}}),
         {"userid=demo_seller", "password=demo", "superfeatured=on"},
         {"bold"}},
        {"gift icon, region and country as the row holds them",
         Columns({{"eBayGiftIcon", 3}, {"eBayRegion", 14}, {"Country", 2}}),
         {"gifticon=3", "zip=14", "country=2"},
         {}},
    };
    for (const Case& c : cases) {
        CreatorRecord row = PlainRow();
        c.edit(row);
        PostSlots slots = lw::creator::LoadPostTable(ShippedRules());
        ASSERT_EQ(slots.count, 58);
        EXPECT_FALSE(lw::creator::FillPostSlots(
            slots, row, kLogin, lw::creator::DescriptionWithFooter(row, ShippedRules()), Resolve))
            << c.what;
        const QMap<QString, QString> pairs = Pairs(lw::creator::PostBody(slots));
        for (const QString& sent : c.sent) {
            const qsizetype equals = sent.indexOf(u'=');
            EXPECT_EQ(pairs.value(sent.left(equals), QStringLiteral("(not sent)")),
                      sent.mid(equals + 1))
                << c.what << ": " << sent.toStdString();
        }
        for (const QString& name : c.absent) {
            EXPECT_FALSE(pairs.contains(name)) << c.what << ": " << name.toStdString();
        }
    }
}

TEST(PostBody, TheDescriptionCarriesTheFooterWhoseLinkTheRulesName) {
    RuleStore rules = ShippedRules();
    QString info = rules.Text(lw::update::kInfoStore);
    info.replace(QStringLiteral("[Listing Footer]\r\nUrl=http://127.0.0.1:8750/"),
                 QStringLiteral("[Listing Footer]\r\nUrl=http://127.0.0.1:9/maker"));
    rules.SetText(lw::update::kInfoStore, info);
    const CreatorRecord row = PlainRow();
    PostSlots slots = lw::creator::LoadPostTable(rules);
    ASSERT_FALSE(lw::creator::FillPostSlots(
        slots, row, kLogin, lw::creator::DescriptionWithFooter(row, rules), Resolve));
    const QString description =
        Pairs(lw::creator::PostBody(slots)).value(QStringLiteral("description"));
    EXPECT_TRUE(description.startsWith(QStringLiteral("%3Cp%3ELamp%3C%2Fp%3E%3Chr+noshade%3E")))
        << description.toStdString();
    EXPECT_TRUE(description.contains(QStringLiteral("http%3A%2F%2F127.0.0.1%3A9%2Fmaker")));
    EXPECT_TRUE(description.endsWith(QStringLiteral("TLV20%3C%2FFONT%3E")));
}

TEST(PostBody, ARowThatLacksAValueIsRefusedWithTheSystemsWords) {
    struct Case {
        RowEdit edit;
        const char* text;
        const char* title;
    };
    const char* recordError = "Auction Creator record error";
    const Case cases[] = {
        {Columns({{"eBayAuctionTitle", QVariant()}}), "No valid eBay Title found, post cancelled",
         recordError},
        // The first missing value is the one told.
        {Columns({{"eBayAuctionTitle", QStringLiteral("  ")}, {"ItemLocation", QVariant()}}),
         "No valid eBay Title found, post cancelled", recordError},
        {Columns({{"eBayCategory", QVariant()}}),
         "No valid eBay auction Category found, post cancelled", recordError},
        {Columns({{"eBayCategory", QStringLiteral("No such category")}}),
         "Unable to resolve category.  Post cancelled.", "Post cancelled"},
        {Columns({{"AuctionHTML", QVariant()}}),
         "No valid eBay auction Description found, post cancelled", recordError},
        {Columns({{"ItemLocation", QString()}}), "No valid Item Location found, post cancelled",
         recordError},
    };
    for (const Case& c : cases) {
        CreatorRecord row = PlainRow();
        c.edit(row);
        PostSlots slots = lw::creator::LoadPostTable(ShippedRules());
        const std::optional<lw::creator::PostRefusal> refusal =
            lw::creator::FillPostSlots(slots, row, kLogin, QString(), Resolve);
        ASSERT_TRUE(refusal) << c.text;
        EXPECT_EQ(refusal->text, QLatin1String(c.text));
        EXPECT_EQ(refusal->title, QLatin1String(c.title));
    }
}

TEST(NewItemNumber, TheNumberStandsBehindTheRulesMarker) {
    RuleStore splitFree = ShippedRules();
    QString site = splitFree.Text(lw::update::kSiteStore);
    site.replace(QStringLiteral("Split=#\r\n"), QString());
    splitFree.SetText(lw::update::kSiteStore, site);
    struct Case {
        const char* answer;
        const char* number;
        bool split = true;  // the rules drop the "#" before the number
    };
    const Case cases[] = {
        {"<p>Your new item number is <b>#1000042</b>. It ends", "1000042"},
        {"<P>YOUR NEW ITEM NUMBER IS <B>#77 </B>", "77"},
        {"<p>Your new item number is <b>#1000042", "1000042"},
        {"<h2>Listing not found</h2>", ""},
        {"Your new item number is #5", ""},
        {"Your new item number is <b>#9</b>", "#9", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lw::creator::NewItemNumber(QLatin1String(c.answer),
                                             c.split ? ShippedRules() : splitFree),
                  QLatin1String(c.number))
            << c.answer;
    }
}

// ------------------------------------------------------------------ seller.pro

TEST(SellPageCommands, AnItemLineHoldsSixCommandsEachToTheNextKeyword) {
    struct Case {
        const char* line;
        lw::creator::PageEdit edit;
    };
    const Case cases[] = {
        {"FindIt=name=\"userid\" StartIt=\"\" StopIt=\"\" PutIt= value=\"x\" DeleteIt=\"\" "
         "FindIt2=\"\"",
         {"name=\"userid\"", "", "", " value=\"x\"", "", ""}},
        {"FindIt=<textarea name=\"d\"> StartIt=> StopIt=< PutIt=\"a b\" DeleteIt=old FindIt2=>",
         {"<textarea name=\"d\">", ">", "<", "\"a b\"", "old", ">"}},
        {"FindIt=a PutIt=b", {"a", "", "", "b", "", ""}},
        {"no commands", {}},
    };
    const auto commands = [](const lw::creator::PageEdit& e) {
        return QStringList{e.findIt, e.startIt, e.stopIt, e.putIt, e.deleteIt, e.findIt2};
    };
    for (const Case& c : cases) {
        EXPECT_EQ(commands(lw::creator::ParsePageEdit(QLatin1String(c.line))), commands(c.edit))
            << c.line;
    }
    EXPECT_EQ(lw::creator::LineToken(QStringLiteral("FindIt=a PutIt= [Bold] x [Other]")),
              QStringLiteral("[Bold]"));
    EXPECT_EQ(lw::creator::LineToken(QStringLiteral("FindIt=a [open")), QString());
}

TEST(SellPageCommands, EachCommandMovesTheSelectionThatPutItFollows) {
    struct Case {
        const char* what;
        const char* page;
        lw::creator::PageEdit edit;
        const char* result;
    };
    const Case cases[] = {
        {"put behind the match",
         "<input name=\"t\" size=3>",
         {"name=\"t\"", "", "", " value=\"x\"", "", ""},
         "<input name=\"t\" value=\"x\" size=3>"},
        {"found without regard to case",
         "<INPUT NAME=\"T\">",
         {"name=\"t\"", "", "", " v", "", ""},
         "<INPUT NAME=\"T\" v>"},
        {"a page without quotes matches on the retry",
         "<input name=t size=3>",
         {"name=\"t\"", "", "", " value=x", "", ""},
         "<input name=t value=x size=3>"},
        {"a findIt nowhere in the page does no harm",
         "<input name=\"u\">",
         {"name=\"t\"", "", "", " value=\"x\"", "", ""},
         "<input name=\"u\">"},
        {"deleteIt cuts from the match and the put stands in its place",
         "<input value=\"\" name=\"t\" value=\"old\">",
         {"name=\"t\"", "", "", " value=\"x\"", " value=\"old\"", ""},
         "<input value=\"\" name=\"t\" value=\"x\">"},
        {"findIt2 is found from the match",
         "<b>x</b><textarea name=\"n\" rows=2></textarea>",
         {"name=\"n\"", "", "", "text", "", ">"},
         "<b>x</b><textarea name=\"n\" rows=2>text</textarea>"},
        {"stopIt stretches the selection up to its character",
         "<input name=\"t\" size=3>",
         {"name=\"t\"", "", ">", " value=\"x\"", "", ""},
         "<input name=\"t\" size=3 value=\"x\">"},
        {"startIt moves the caret to its character",
         "<input name=\"t\" size=3>",
         {"name=\"t\"", "s", "", "maxlength=9 ", "", ""},
         "<input name=\"t\" maxlength=9 size=3>"},
        {"the description loses its outer quotes and stands behind a blank",
         "<textarea name=\"description\"></textarea>",
         {"<textarea name=\"description\">", "", "", "\"<b>\"x\"</b>\"", "", ""},
         "<textarea name=\"description\"> <b>\"x\"</b></textarea>"},
    };
    for (const Case& c : cases) {
        lw::creator::PageText page{QLatin1String(c.page)};
        lw::creator::ApplyPageEdit(page, c.edit);
        EXPECT_EQ(page.text, QLatin1String(c.result)) << c.what;
    }
}

TEST(SellPageTokens, TokensTakeTheRowsValues) {
    struct Case {
        const char* token;
        RowEdit edit;
        const char* value;  // null: the token is unknown and stays
    };
    const Case cases[] = {
        {"[Title]", Columns({{"eBayAuctionTitle", "A \"big\" lamp"}}), "A &#34;big&#34; lamp"},
        {"[Location]", Columns({{"ItemLocation", "12\" shelf"}}), "12&#34; shelf"},
        {"[Bold]", Columns({{"eBayOptionalSettings", "13~"}}), ""},
        // A plain substring test: the code 11 stands in the entry 211.
        {"[Bold]", Columns({{"eBayOptionalSettings", "211~"}}), "checked"},
        {"[DiscoverAccepted]", Columns({{"eBayPaymentPrefs", "18~26"}}), "checked"},
        {"[OnLineEscrow]", Columns({{"eBayPaymentPrefs", "22~"}}), "1"},
        {"[OnLineEscrow]", Columns({}), "0"},
        {"[OtherShippingOption]", Columns({{"eBayShipPrefs", "30~"}}), "buyerPaysShippingActual"},
        {"[Europe]", Columns({{"eBayeurope", 1}}), ""},
        {"[Europe]", Columns({{"eBayeurope", 1}, {"eBayShipUSPlus", 1}}), "checked"},
        {"[Quantity]", Columns({{"Quantity", 0}}), "1"},
        {"[Reserve]", Columns({{"Reserve", 0}}), ""},
        {"[StartPrice]", Columns({}), "7.25"},
        {"[Gallery]", Columns({{"IncludeGallery", 1}}), "1"},
        {"[BillPointTaxState]", Columns({}), "none"},
        {"[PassWord]", Columns({}), "demo"},
        {"[Description]", Columns({}), "<p>a</p>b&lt;/TEXTAREA>"},
        {"[Description]", Columns({{"AuctionHTML", QVariant()}}), ""},
        {"[NoSuchToken]", Columns({}), nullptr},
    };
    for (const Case& c : cases) {
        CreatorRecord row = PlainRow();
        c.edit(row);
        EXPECT_EQ(lw::creator::SellPageToken(QLatin1String(c.token), row, kLogin,
                                             QStringLiteral("<p>a</p>\nb</TEXTAREA>")),
                  c.value ? std::optional(QString::fromUtf8(c.value)) : std::nullopt)
            << c.token;
    }
}

TEST(SellPageUrl, TheAddressIsTheSectionsLinkWithTheCategory) {
    struct Case {
        const char* seller;  // the seller store; null: the shipped one
        const char* url;
    };
    const Case cases[] = {
        {"[SellYourItemURL]\r\nUrl=http://h/sell?c=[CATEGORY]  \r\n\r\n[Next]\r\n",
         "http://h/sell?c=401"},
        {"[SellYourItemURL]\r\nUrl=https://h/[CATEGORY]/form\r\n", "https://h/401/form"},
        {"[Other]\r\nUrl=http://h/\r\n", ""},
        {"[SellYourItemURL]\r\nUrl=none\r\n", ""},
        {nullptr, "http://127.0.0.1:8750/aw-cgi/eBayISAPI.dll?SellItemForm&category=401"},
    };
    for (const Case& c : cases) {
        RuleStore seller = ShippedRules();
        if (c.seller) {
            seller.SetText(lw::update::kSellerStore, QLatin1String(c.seller));
        }
        EXPECT_EQ(lw::creator::SellYourItemUrl(seller, QStringLiteral("401")), QLatin1String(c.url))
            << (c.seller ? c.seller : "the shipped seller.pro");
    }
}

// The shipped seller.pro over the demo marketplace's sell form: every field
// of the form that the rules name holds the row's value.
TEST(SellPage, TheShippedCommandsFillTheSavedSellForm) {
    CreatorRecord row = PlainRow();
    Columns({{"eBayAuctionTitle", QStringLiteral("Brass \"ship\" lamp")},
             {"eBayOptionalSettings", QStringLiteral("11~37~")},
             {"eBayPaymentPrefs", QStringLiteral("19~22~")},
             {"eBayShipPrefs", QStringLiteral("28~31~")},
             {"eBayShipUSPlus", 1},
             {"eBayasia", 1},
             {"Reserve", 30.0},
             {"billpointcreditcard", 1},
             {"billpointshipping", 4.5},
             {"PictureIconActivate", QStringLiteral("http://127.0.0.1:8750/p.jpg")}})(row);
    lw::creator::PageText page{QString::fromUtf8(
        lw::test::ReadAll(SourceDir() + QStringLiteral("/tests/sell_forms/demo_market_401.html")))};
    ASSERT_FALSE(page.text.isEmpty());
    const QString description = QStringLiteral("<p>Brass & glass</p>");
    EXPECT_EQ(lw::creator::EditSellPage(page, ShippedRules(), row, kLogin, description), 49);

    // Each input as the browser would send it: its value, or "checked".
    QMap<QString, QString> fields;
    static const QRegularExpression input(QStringLiteral("<input ([^>]*)>"));
    static const QRegularExpression name(QStringLiteral("name=\"([^\"]*)\""));
    static const QRegularExpression value(QStringLiteral("value=\"([^\"]*)\""));
    for (const QRegularExpressionMatch& match : input.globalMatch(page.text)) {
        const QString tag = match.captured(1);
        const QString field = name.match(tag).captured(1);
        if (tag.contains(QLatin1String("type=\"checkbox\""))) {
            fields.insert(field, tag.contains(QLatin1String(" checked")) ? QStringLiteral("checked")
                                                                         : QString());
        } else {
            fields.insert(field, value.match(tag).captured(1));
        }
    }
    const std::pair<const char*, const char*> expected[] = {
        {"userid", "demo_seller"},
        {"password", "demo"},
        {"title", "Brass &#34;ship&#34; lamp"},
        {"location", "Albany, NY"},
        {"pictureurl", "http://127.0.0.1:8750/p.jpg"},
        {"gallery", ""},
        {"bold", "checked"},
        {"private", "checked"},
        {"highlight", ""},
        {"personalchecks", "checked"},
        {"moneyorder", ""},
        {"escrow", "1"},
        {"shippingoption", "sellerPaysShipping"},
        {"shippingseedescription", "checked"},
        {"shipinternationally", "siteplusregions"},
        {"asia", "checked"},
        {"europe", ""},
        {"bpcreditcard", "checked"},
        {"bpshipping", "4.5"},
        {"bpsalestaxstate", "none"},
        {"quantity", "1"},
        {"minimumbid", "7.25"},
        {"duration", "5"},
        {"reserve", "30"},
    };
    for (const auto& [field, text] : expected) {
        EXPECT_EQ(fields.value(QLatin1String(field), QStringLiteral("(no such field)")),
                  QLatin1String(text))
            << field;
    }
    EXPECT_TRUE(page.text.contains(
        QStringLiteral("<textarea name=\"description\" rows=\"10\" cols=\"60\"> <p>Brass & "
                       "glass</p></textarea>")));
}
