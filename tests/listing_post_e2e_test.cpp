// SPDX-License-Identifier: GPL-3.0-or-later
// Posting a listing against the demo marketplace: a document saved by the
// creator goes out by lotwright-cli listing post, stands on the site with
// every value it carried and in Auctions, and the next update of the sales
// updates that row rather than adding one; the review route leaves the site's
// review page and lists nothing; a post the site does not take (an error
// page, its sign-in page, a listing it finds fault with, no answer in time, a
// site that is down) says so with the system's words, falls back to the sell
// page where it can, and keeps the document as it was; and the sell page,
// opened in headless Chromium, lists the document when its button is pressed.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QStandardPaths>
#include <functional>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "creator/category_directory.h"
#include "creator/creator_document.h"
#include "creator/direct_post.h"
#include "creator/listing_html.h"
#include "tests/support/site_process.h"
#include "tests/support/test_support.h"
#include "update/rules.h"

using lw::core::Database;
using lw::test::BinDir;
using lw::test::ProgramRun;
using lw::test::ScriptedUi;
using lw::test::SiteProcess;
using lw::test::SourceDir;

static void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kTitle = QStringLiteral("Brass \"ship's\" lantern");
const QString kDirectFailed =
    QStringLiteral("Could not post directly to eBay. Opening auction in Sell Your Item Page.");

class ListingPostE2e : public ::testing::Test {
protected:
    void SetUp() override {
        // A stopped clock an hour behind ours, as the update's suite keeps it.
        m_site = std::make_unique<SiteProcess>(QStringList{
            QStringLiteral("--seed"), QStringLiteral("5"), QStringLiteral("--clock-factor"),
            QStringLiteral("0"), QStringLiteral("--start"),
            QString::number(QDateTime::currentSecsSinceEpoch() - 3600)});
        ASSERT_TRUE(m_site->Ok()) << m_site->Error();
        // The rules as a rule update from this site would leave them.
        for (const char* name : {"site.pro", "info.pro", "seller.pro"}) {
            m_root.Write(
                QStringLiteral("rules/") + QLatin1String(name),
                lw::test::ReadAll(SourceDir() + QStringLiteral("/rules/") + QLatin1String(name))
                    .replace("http://127.0.0.1:8750", m_site->Base().toUtf8()));
        }
        const auto rule = [this](const char* name) {
            return m_root.File(QStringLiteral("rules/") + QLatin1String(name));
        };
        for (const QStringList& args :
             {QStringList{QStringLiteral("init"), QStringLiteral("--user"), QStringLiteral("Demo"),
                          QStringLiteral("--site-id"), QStringLiteral("demo_seller"),
                          QStringLiteral("--password"), QStringLiteral("demo")},
              QStringList{QStringLiteral("rules"), QStringLiteral("install"), rule("site.pro"),
                          rule("info.pro")}}) {
            const ProgramRun run = Cli(args);
            ASSERT_EQ(run.code, 0) << run.err.toStdString();
        }
        ASSERT_TRUE(QFile::copy(rule("seller.pro"), Configs(QStringLiteral("seller.pro"))));

        lw::core::ResetSession(&m_ui);
        lw::core::SetSettingsFolder(Home() + QStringLiteral("/Configs/Settings"));
        QString error;
        ASSERT_TRUE(lw::core::SetupDirectories(Home(), &error)) << error.toStdString();
        lw::core::CurrentSession().ShippedDir = SourceDir();
        m_db.emplace(Database::Open(Home() + QStringLiteral("/Data/Lotwright.db")));
        ASSERT_EQ(lw::core::ChooseUser(*m_db, nullptr), lw::core::UserChoice::Chosen);
        ASSERT_TRUE(lw::update::InstallRuleStore(lw::update::Rules(), *m_db));
        lw::creator::PrepareCategoryDirectory(*m_db, m_ui);
    }
    void TearDown() override {
        m_db.reset();
        lw::core::SetSettingsFolder(QString());
        lw::core::ResetSession();
    }

    QString Home() const { return m_root.File(QStringLiteral("home")); }
    QString Configs(const QString& name) const {
        return Home() + QStringLiteral("/Configs/") + name;
    }
    ProgramRun Cli(const QStringList& args) {
        return lw::test::RunProgram(BinDir() + QStringLiteral("/lotwright-cli"),
                                    QStringList{QStringLiteral("--root"), Home()} + args);
    }

    // A document as the creator saves it after Post Now: an old auction.
    qint64 SaveDocument(const std::function<void(lw::creator::CreatorDocument&)>& edit = {}) {
        using namespace lw::creator;
        const QString user = lw::core::CurrentSession().CurrentUser;
        const CreatorLists lists =
            LoadCreatorLists(*m_db, lw::update::Rules(), user, AuctionTemplatesDir());
        CreatorDocument doc = NewCreatorDocument(lists);
        doc.txtEbayTitle = kTitle;
        doc.cmbEbayCategory = {QStringLiteral("Collectibles: Advertising (401)"),
                               QStringLiteral("401")};
        doc.txtDescription = QStringLiteral("<P>A brass lantern &amp; its red glass.</P>");
        doc.txtItemLocationEbay = QStringLiteral("Albany, NY");
        doc.txtMinimumBid = QStringLiteral("$7.25");
        doc.txtQuantity = QStringLiteral("1");
        doc.txtShipping = QStringLiteral("$3.50");
        doc.cmbEbayDuration = QStringLiteral("5");
        doc.cmbEbayPicIconActivate = QStringLiteral("http://127.0.0.1:9/lantern.jpg");
        doc.lstEbayOptions = {FindItemData(lists.lstEbayOptions, 11)};
        doc.lstEbayAcceptedPayment = {FindItemData(lists.lstEbayAcceptedPayment, 18),
                                      FindItemData(lists.lstEbayAcceptedPayment, 20)};
        doc.optEbayWorldShipping = 2;
        doc.lstEbayShiptoCountries[1] = true;  // Europe
        if (edit) {
            edit(doc);
        }
        SaveRequest request;
        request.name = QStringLiteral("Lantern");
        request.type = QString(kOldAuction);
        return SaveCreatorRecord(*m_db, request, doc, lists, lw::update::Rules());
    }

    // Every column of a creator row, to see that nothing of it changed.
    QStringList CreatorRow(qint64 id) {
        lw::core::Statement row =
            m_db->Prepare(QStringLiteral("SELECT * FROM AuctionCreator WHERE ID = ?"));
        row.Bind(1, id);
        QStringList values;
        if (row.Step()) {
            for (int i = 0; i < row.ColumnCount(); ++i) {
                values << (row.IsNull(i) ? QStringLiteral("(null)") : row.Text(i));
            }
        }
        return values;
    }
    QMap<QString, QString> AuctionsRow(const QString& itemNumber, qint64* rows = nullptr) {
        lw::core::Statement row =
            m_db->Prepare(QStringLiteral("SELECT * FROM Auctions WHERE ItemNumber = ?"));
        row.Bind(1, itemNumber);
        QMap<QString, QString> values;
        qint64 count = 0;
        while (row.Step()) {
            ++count;
            for (int i = 0; i < row.ColumnCount(); ++i) {
                values.insert(row.ColumnName(i), row.Text(i));
            }
        }
        if (rows != nullptr) {
            *rows = count;
        }
        return values;
    }
    qint64 Count(const char* table) {
        return m_db->ScalarInt(QStringLiteral("SELECT COUNT(*) FROM ") + QLatin1String(table));
    }
    qint64 SiteItems() {
        const QJsonObject state =
            QJsonDocument::fromJson(QByteArray::fromStdString(m_site->Admin("state"))).object();
        return state.value(QStringLiteral("items")).toInteger(-1);
    }

    // The item on the site holds the document's values: its own columns and
    // every posted field it keeps.
    void ExpectListedAsTheDocument(const QString& number) {
        const QJsonObject item =
            QJsonDocument::fromJson(
                QByteArray::fromStdString(m_site->Admin("item", "item=" + number.toStdString())))
                .object()
                .value(QStringLiteral("item"))
                .toObject();
        EXPECT_EQ(item.value(QStringLiteral("title")).toString(), kTitle);
        EXPECT_EQ(item.value(QStringLiteral("seller")).toString(), QStringLiteral("demo_seller"));
        const QString page = QString::fromStdString(
            m_site->Get("/aw-cgi/eBayISAPI.dll?ViewItem&item=" + number.toStdString()).body);
        for (const char* cell :
             {"<td class=\"first\">$7.25</td>", "<td class=\"where\">Albany, NY</td>",
              "<td class=\"cat\">Collectibles: Advertising</td>"}) {
            EXPECT_TRUE(page.contains(QLatin1String(cell))) << cell;
        }
        QMap<QString, QString> details;
        static const QRegularExpression row(
            QStringLiteral("<td class=\"field\">([^<]*)</td><td class=\"value\">([^<]*)</td>"));
        for (const QRegularExpressionMatch& match : row.globalMatch(page)) {
            details.insert(match.captured(1), match.captured(2));
        }
        const std::pair<const char*, const char*> expected[] = {
            {"bold", "on"},
            {"moneyorder", "on"},
            {"visamastercard", "on"},
            {"europe", "on"},
            {"duration", "5"},
            {"shipinternationally", "siteplusregions"},
            {"pictureurl", "http://127.0.0.1:9/lantern.jpg"},
        };
        for (const auto& [field, value] : expected) {
            EXPECT_EQ(details.value(QLatin1String(field), QStringLiteral("(not kept)")),
                      QLatin1String(value))
                << field;
        }
        EXPECT_FALSE(details.contains(QStringLiteral("highlight")));
    }

    lw::test::TempRoot m_root;
    ScriptedUi m_ui;
    std::unique_ptr<SiteProcess> m_site;
    std::optional<Database> m_db;
};

}  // namespace

TEST_F(ListingPostE2e, ADirectPostListsTheItemAndTheNextUpdateKeepsItsOneRow) {
    const qint64 id = SaveDocument();
    const QStringList document = CreatorRow(id);
    const ProgramRun post =
        Cli({QStringLiteral("listing"), QStringLiteral("post"), QString::number(id)});
    ASSERT_EQ(post.code, 0) << post.err.toStdString();
    const QString number = post.out.trimmed();
    ASSERT_FALSE(number.isEmpty());
    EXPECT_TRUE(post.err.contains(QStringLiteral("Auction posted successfully")));
    ExpectListedAsTheDocument(number);
    EXPECT_EQ(CreatorRow(id), document);

    qint64 rows = 0;
    QMap<QString, QString> auction = AuctionsRow(number, &rows);
    ASSERT_EQ(rows, 1);
    const std::pair<const char*, QString> written[] = {
        {"AuctionCreatorID", QString::number(id)},
        {"UserName", QStringLiteral("Demo")},
        {"ItemTitle", kTitle},
        {"ItemCategory", QStringLiteral("Collectibles: Advertising")},
        {"MinimumBid", QStringLiteral("$7.25")},
        {"ShippingCost", QStringLiteral("$3.50")},
        {"OrderShipping", QStringLiteral("$3.50")},
        {"HighBidderName", QStringLiteral("--")},
        {"StartDate", QDate::currentDate().toString(QStringLiteral("MM/dd/yy"))},
    };
    for (const auto& [column, value] : written) {
        EXPECT_EQ(auction.value(QLatin1String(column)), value) << column;
    }
    const QString endDate = auction.value(QStringLiteral("EndDate"));
    EXPECT_TRUE(
        endDate.startsWith(QDate::currentDate().addDays(5).toString(QStringLiteral("MM/dd/yy"))));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^\\d\\d/\\d\\d/\\d\\d, "
                                                  "\\d\\d:\\d\\d:\\d\\d PST$"))
                    .match(endDate)
                    .hasMatch())
        << endDate.toStdString();

    ASSERT_NE(
        m_site->Admin("bid", "item=" + number.toStdString() + "&bidder=kestrel_coins&amount=9.00")
            .find("\"ok\":true"),
        std::string::npos);
    const ProgramRun update = Cli({QStringLiteral("update"), QStringLiteral("sales")});
    ASSERT_EQ(update.code, 0) << update.err.toStdString();
    auction = AuctionsRow(number, &rows);
    EXPECT_EQ(rows, 1) << "the update added a row of its own";
    EXPECT_EQ(auction.value(QStringLiteral("HighBidderName")), QStringLiteral("kestrel_coins"));
    EXPECT_EQ(auction.value(QStringLiteral("NumberBids")), QStringLiteral("1"));
    EXPECT_EQ(auction.value(QStringLiteral("AuctionCreatorID")), QString::number(id));
}

TEST_F(ListingPostE2e, TheReviewRouteLeavesTheSitesReviewPageAndListsNothing) {
    const qint64 id = SaveDocument();
    const qint64 items = SiteItems();
    const ProgramRun post = Cli({QStringLiteral("listing"), QStringLiteral("post"),
                                 QString::number(id), QStringLiteral("--review")});
    ASSERT_EQ(post.code, 0) << post.err.toStdString();
    EXPECT_EQ(post.out.trimmed(), Configs(QStringLiteral("ebaypost.html")));
    const QString page = QString::fromUtf8(lw::test::ReadAll(post.out.trimmed()));
    EXPECT_TRUE(page.contains(QStringLiteral("Review your listing")));
    // Opened from its file, the page's form still goes to the site.
    EXPECT_TRUE(page.contains(QStringLiteral("<base href=\"") + m_site->Base() + u'/'));
    EXPECT_TRUE(page.contains(QStringLiteral("name=\"token\"")));
    EXPECT_EQ(SiteItems(), items);
    EXPECT_EQ(Count("Auctions WHERE AuctionCreatorID > 0"), 0);
}

TEST_F(ListingPostE2e, OnlyTheUsersOwnDocumentsArePostedAndTheRestAreToldApart) {
    const qint64 ann = SaveDocument();
    m_db->Prepare(QStringLiteral("UPDATE AuctionCreator SET UserName = ? WHERE ID = ?"))
        .BindAll(QStringLiteral("Ann"), ann)
        .Run();
    lw::core::Statement byType =
        m_db->Prepare(QStringLiteral("SELECT ID FROM AuctionCreator WHERE ACType = ?"));
    byType.Bind(1, QString(lw::creator::kDefault));
    ASSERT_TRUE(byType.Step());
    const qint64 defaults = byType.Int(QStringLiteral("ID"));
    const struct {
        qint64 id;
        QString told;
    } cases[] = {
        {defaults, QStringLiteral(" is the Default, which new documents start from; it is not "
                                  "posted itself.")},
        {ann,
         QStringLiteral(" belongs to the user Ann, and only Demo's own documents are posted.")},
        {ann + 1000, QStringLiteral("There is no listing document with the ID ")},
    };
    const qint64 items = SiteItems();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        const ProgramRun post =
            Cli({QStringLiteral("listing"), QStringLiteral("post"), QString::number(c.id)});
        EXPECT_EQ(post.code, 1);
        EXPECT_TRUE(post.err.contains(c.told)) << post.err.toStdString();
        EXPECT_TRUE(post.out.isEmpty()) << post.out.toStdString();
    }
    EXPECT_EQ(SiteItems(), items);
}

TEST_F(ListingPostE2e, APostTheSiteDoesNotTakeKeepsTheDocumentAndSaysSo) {
    struct Message {
        QString text;
        QString title;
    };
    const Message directFailed{kDirectFailed, QStringLiteral("Post error")};
    struct Case {
        const char* what;
        std::vector<std::pair<std::string, std::string>> admin;  // before the post
        lw::creator::PostRoute route;
        bool shortTimeOut;
        std::function<void(lw::creator::CreatorDocument&)> edit;
        std::vector<Message> told;
        bool sellPage;
    };
    const Case cases[] = {
        {"an error page",
         {{"sell-posts", "refuse=1&status=500"}},
         lw::creator::PostRoute::Direct,
         false,
         {},
         {directFailed},
         true},
        {"the sign-in page",
         {{"password", "user=demo_seller&password=changed"}},
         lw::creator::PostRoute::Direct,
         false,
         {},
         {directFailed},
         true},
        {"the sign-in page on the review route",
         {{"password", "user=demo_seller&password=changed"}},
         lw::creator::PostRoute::ReviewPage,
         false,
         {},
         {{QStringLiteral("Could not post to eBay review page. Opening auction in Sell Your Item "
                          "Page."),
           QStringLiteral("Post error")}},
         true},
        {"a listing the site finds fault with",
         {},
         lw::creator::PostRoute::Direct,
         false,
         [](lw::creator::CreatorDocument& doc) { doc.txtMinimumBid.clear(); },
         {directFailed},
         true},
        {"no answer in time",
         {{"sell-posts", "hold=1&ms=60000"}},
         lw::creator::PostRoute::Direct,
         true,
         {},
         {directFailed},
         true},
        {"a site that is down",
         {{"down", "on=1"}},
         lw::creator::PostRoute::Direct,
         false,
         {},
         {directFailed,
          {QStringLiteral("Could not retrieve eBay Sell Page.  Post failed."),
           QStringLiteral("Post Failure")}},
         false},
    };
    const qint64 items = SiteItems();
    for (const Case& c : cases) {
        const qint64 id = SaveDocument(c.edit);
        const QStringList document = CreatorRow(id);
        QFile::remove(Configs(QStringLiteral("ebaysell.html")));
        for (const auto& [action, form] : c.admin) {
            ASSERT_NE(m_site->Admin(action, form).find("\"ok\":true"), std::string::npos) << c.what;
        }
        lw::creator::PostOptions options;
        if (c.shortTimeOut) {
            options.net.emplace();
            options.net->totalTimeoutMs = 2000;
            options.net->stallTimeoutSec = 1;
        }
        ScriptedUi ui;
        const lw::creator::PostOutcome outcome =
            lw::creator::PostAuction(*m_db, lw::update::Rules(), id, c.route, ui, options);
        m_site->Admin("down", "on=0");
        m_site->Admin("password", "user=demo_seller&password=demo");

        EXPECT_FALSE(outcome.posted) << c.what;
        EXPECT_TRUE(outcome.fellBack) << c.what;
        EXPECT_FALSE(outcome.problem.isEmpty()) << c.what;
        ASSERT_EQ(ui.Messages().size(), static_cast<qsizetype>(c.told.size()))
            << c.what << ": " << ui.Messages().join(QStringLiteral(" | ")).toStdString();
        for (size_t i = 0; i < c.told.size(); ++i) {
            EXPECT_EQ(ui.Messages().at(static_cast<qsizetype>(i)), c.told[i].text) << c.what;
            EXPECT_EQ(ui.Titles().at(static_cast<qsizetype>(i)), c.told[i].title) << c.what;
        }
        EXPECT_EQ(outcome.browserPage.isEmpty(), !c.sellPage) << c.what;
        if (c.sellPage) {
            EXPECT_TRUE(QString::fromUtf8(lw::test::ReadAll(outcome.browserPage))
                            .contains(QStringLiteral("value=\"Brass &#34;ship's&#34; lantern\"")))
                << c.what;
        }
        EXPECT_EQ(CreatorRow(id), document) << c.what;
        EXPECT_EQ(Count("Auctions WHERE AuctionCreatorID > 0"), 0) << c.what;
        EXPECT_EQ(SiteItems(), items) << c.what;
    }
}

// The browser route as a user takes it; the marketplace then holds the
// listing with the document's values.
TEST_F(ListingPostE2e, TheSellPageListsTheDocumentWhenItsButtonIsPressedInABrowser) {
    const QString chromium = QStandardPaths::findExecutable(QStringLiteral("chromium"));
    const QString driver = QStandardPaths::findExecutable(QStringLiteral("chromedriver"));
    QString python;
    // Debian's interpreter first: its python3-selenium is the one installed.
    for (const QString& candidate : {QStringLiteral("/usr/bin/python3"),
                                     QStandardPaths::findExecutable(QStringLiteral("python3"))}) {
        if (!candidate.isEmpty() &&
            lw::test::RunProgram(candidate,
                                 {QStringLiteral("-c"), QStringLiteral("import selenium")})
                    .code == 0) {
            python = candidate;
            break;
        }
    }
    if (chromium.isEmpty() || driver.isEmpty() || python.isEmpty()) {
        GTEST_SKIP() << "the browser route needs chromium, chromedriver (chromium-driver) and "
                        "python3-selenium; scripts/setup test installs them";
    }
    const qint64 id = SaveDocument();
    const ProgramRun sell = Cli({QStringLiteral("listing"), QStringLiteral("post"),
                                 QString::number(id), QStringLiteral("--sell-page")});
    ASSERT_EQ(sell.code, 0) << sell.err.toStdString();
    ASSERT_EQ(sell.out.trimmed(), Configs(QStringLiteral("ebaysell.html")));
    const ProgramRun browser = lw::test::RunProgram(
        python, {SourceDir() + QStringLiteral("/tests/sell_page_browser.py"),
                 QStringLiteral("--page"), sell.out.trimmed(), QStringLiteral("--chromium"),
                 chromium, QStringLiteral("--chromedriver"), driver});
    ASSERT_EQ(browser.code, 0) << browser.err.toStdString();
    ExpectListedAsTheDocument(browser.out.trimmed());
}
