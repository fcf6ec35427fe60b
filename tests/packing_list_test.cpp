// SPDX-License-Identifier: GPL-3.0-or-later
// The packing list and the remittance advice: the address tokens' two
// occurrences, the other items and the sums, the payment sentence of each
// method, the boxes that stop a build, a multi-winner sale's winner, bad and
// token-less templates, names with quotes, the print mark, the copies for a
// word processor, and the shipped templates in the user's Configs/.
#include <gtest/gtest.h>

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTextDocument>
#include <optional>
#include <ostream>

#include "admin/startup.h"
#include "core/richtext/rich_text.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "core/text.h"
#include "tasks/packing_list.h"
#include "tests/support/test_support.h"

using lw::core::Answer;
using lw::tasks::PackingOutcome;
using lw::tasks::PackingPanel;
using lw::tasks::PackingStatus;
using lw::tasks::SelectedItem;
using lw::tasks::Side;

// Failures print texts, not code units.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = QStringLiteral("Ann");
// Quotes of both kinds in every name and title that reaches a statement.
const QString kBuyer = QStringLiteral("bob \"the\" o'hara");
const QString kSeller = QStringLiteral("carl's \"cards\"");
const QString kTitle = QStringLiteral("Brass \"Ship's\" lamp");

// A template of plain paragraphs; braces are written as RTF escapes.
QByteArray Rtf(const QStringList& paragraphs) {
    QString body = paragraphs.join(QStringLiteral("\\par\n"));
    body.replace(u'{', QStringLiteral("\\{")).replace(u'}', QStringLiteral("\\}"));
    return "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}}\\f0\\fs22 " + body.toUtf8() + "}";
}

SelectedItem Sale(const QString& item, const QString& bidder = QString()) {
    return {Side::Sales, item, bidder};
}
SelectedItem Bid(const QString& item) {
    return {Side::Bids, item, QString()};
}

class PackingTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (QGuiApplication::instance() == nullptr) {
            static int argc = 1;
            static char name[] = "packing_list_test";
            static char* argv[] = {name, nullptr};
            static QGuiApplication app(argc, argv);
        }
    }

    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, QStringLiteral("ann_sells"), QStringLiteral("pw"),
                                  QStringLiteral("ann@example.com")});
        lw::core::SetCurrentUser(kUser);
        Run(
            QStringLiteral("UPDATE Users SET SFirstName = 'Ann', SLastName = 'Lee', "
                           "SCompanyName = 'Lee Antiques', AddressStreet1 = '1 Elm St', "
                           "City = 'Dover', State = 'DE', zipcode = '19901', "
                           "ReplyEmailAddress = 'reply@example.com'"));
        Insert(QStringLiteral("Buyers"), {{"BuyerID", kBuyer},
                                          {"FirstName", "Bob"},
                                          {"LastName", "O'Hara"},
                                          {"StreetAddress1", "9 Oak Rd"},
                                          {"City", "Troy"},
                                          {"State", "NY"},
                                          {"ZipCode", "12180"},
                                          {"CountryInfo", "USA"}});
        Insert(QStringLiteral("Sellers"), {{"SellerID", kSeller},
                                           {"FirstName", "Carl"},
                                           {"LastName", "Diaz"},
                                           {"StreetAddress1", "5 Pine Ave"},
                                           {"City", "Ames"},
                                           {"State", "IA"},
                                           {"ZipCode", "50010"}});
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    // SQL of the test's own, with no values from outside.
    void Run(const QString& sql) { m_db->Exec(sql); }

    // Column names are the test's own; the values are bound.
    void Insert(const QString& table, std::initializer_list<std::pair<const char*, QVariant>> row) {
        QStringList names;
        for (const auto& field : row) {
            names << QString::fromLatin1(field.first);
        }
        auto insert = m_db->Prepare(
            QStringLiteral("INSERT INTO %1 (%2) VALUES (?%3)")
                .arg(table, names.join(u','), QStringLiteral(",?").repeated(names.size() - 1)));
        int index = 1;
        for (const auto& field : row) {
            insert.Bind(index++, field.second);
        }
        insert.Run();
    }

    // An ended plain sale to the buyer, pending.
    void AddSale(const QString& item, const QString& title, const QString& price) {
        Insert(QStringLiteral("Auctions"), {{"UserName", kUser},
                                            {"ItemNumber", item},
                                            {"ItemTitle", title},
                                            {"EndDate", "01/15/24, 10:00:00 PST"},
                                            {"HighBid", price},
                                            {"NumberBids", "3"},
                                            {"HighBidderName", kBuyer}});
    }
    // An ended bid won from the seller, pending; method is a row of the payment list.
    void AddBid(const QString& item, const QString& title, const QString& price,
                const QVariant& method = 1, const QString& tax = QString(),
                const QString& shipping = QString()) {
        Insert(QStringLiteral("Bids"),
               {{"UserName", kUser},
                {"ItemNumber", item},
                {"ItemTitle", title},
                {"EndDate", "01/15/24, 10:00:00 PST"},
                {"HighBid", price},
                {"Winning", 1},
                {"SellerName", kSeller},
                {"OrderPaymentMethod", method},
                {"OrderTax", tax.isNull() ? QVariant() : QVariant(tax)},
                {"OrderShipping", shipping.isNull() ? QVariant() : QVariant(shipping)}});
    }

    void WriteTemplate(Side side, const QByteArray& rtf) {
        m_root.Write(QStringLiteral("Configs/") + lw::tasks::PackingTemplateName(side), rtf);
    }

    PackingOutcome Build(const SelectedItem& item) {
        return lw::tasks::BuildPackingDocument(*m_db, item, m_document);
    }
    QString Text() const { return m_document.toPlainText(); }

    QString Flag(const QString& sql) {
        auto statement = m_db->Prepare(sql);
        return statement.Step() ? statement.Text(0) : QStringLiteral("(no row)");
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<lw::core::Database> m_db;
    QTextDocument m_document;
};

const QString kMyAddress = QStringLiteral("Ann Lee\nLee Antiques\n1 Elm St\nDover DE 19901");
const QString kBuyerAddress = QStringLiteral("Bob O'Hara\n9 Oak Rd\nTroy NY 12180\nUSA");
const QString kSellerAddress = QStringLiteral("Carl Diaz\n5 Pine Ave\nAmes IA 50010");

// ---------------------------------------------------------------- tokens

TEST_F(PackingTest, AddressTokensGiveThePlainTextFirstAndTheSidesCaseSecond) {
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    AddBid(QStringLiteral("200"), kTitle, QStringLiteral("$10.00"));
    struct Case {
        const char* what;
        Side side;
        QStringList paragraphs;
        QString expected;
    };
    const QString to = QStringLiteral("To:");
    const QString buyer = QStringLiteral("{BuyerAddress}");
    const QString seller = QStringLiteral("{SellerAddress}");
    const QString mine = QStringLiteral("{MyAddress}");
    const Case cases[] = {
        {"one buyer address", Side::Sales, {to, buyer}, to + u'\n' + kBuyerAddress},
        {"two: the label in capitals",
         Side::Sales,
         {buyer, to, buyer},
         kBuyerAddress + u'\n' + to + u'\n' + kBuyerAddress.toUpper()},
        {"my address twice", Side::Sales, {mine, mine}, kMyAddress + u'\n' + kMyAddress.toUpper()},
        {"a third stays a token",
         Side::Sales,
         {buyer, buyer, buyer},
         kBuyerAddress + u'\n' + kBuyerAddress.toUpper() + u'\n' + buyer},
        {"advice: both plain",
         Side::Bids,
         {seller, seller, mine, mine},
         kSellerAddress + u'\n' + kSellerAddress + u'\n' + kMyAddress + u'\n' + kMyAddress},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        WriteTemplate(c.side, Rtf(c.paragraphs));
        const PackingOutcome outcome =
            Build(c.side == Side::Sales ? Sale(QStringLiteral("100")) : Bid(QStringLiteral("200")));
        EXPECT_TRUE(outcome.Built());
        EXPECT_EQ(Text(), c.expected);
    }
}

TEST_F(PackingTest, EachTokenTakesItsSidesValue) {
    Run(QStringLiteral("UPDATE Sellers SET FirstName = NULL"));
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    AddBid(QStringLiteral("200"), kTitle, QStringLiteral("$10.00"));
    const QString today = lw::core::Format(QDate::currentDate(), QStringLiteral("MMMM d, yyyy"));
    const QStringList tokens =
        QStringLiteral("{MyName} {CurrentDate} {MyEmailAddress} {AuctionSite} {SellerFirstName}")
            .split(u' ');
    struct Case {
        SelectedItem item;
        QString title;
        QString expected;
    };
    const Case cases[] = {
        {Sale(QStringLiteral("100")), QStringLiteral("Packing List for #100"),
         QStringLiteral("Ann Lee (ann_sells on eBay)\n") + today +
             QStringLiteral("\nann@example.com\neBay\n{SellerFirstName}")},
        {Bid(QStringLiteral("200")), QStringLiteral("Remittance Advice for #200"),
         QStringLiteral("Ann Lee\n") + today + QStringLiteral("\nreply@example.com\neBay\n???")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.title.toStdString());
        WriteTemplate(c.item.side, Rtf(tokens));
        const PackingOutcome outcome = Build(c.item);
        EXPECT_EQ(outcome.frameTitle, c.title);
        EXPECT_EQ(Text(), c.expected);
    }
}

// ---------------------------------------------------------------- other items

TEST_F(PackingTest, TheOtherItemsAreAskedForAndNoKeepsOnlyTheSelectedOne) {
    WriteTemplate(Side::Sales, Rtf({QStringLiteral("{AuctionItems}")}));
    WriteTemplate(Side::Bids,
                  Rtf({QStringLiteral("{AuctionItems}"), QStringLiteral("{PaymentInfo}")}));
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    AddSale(QStringLiteral("101"), QStringLiteral("Oil lamp"), QStringLiteral("$4.50"));
    AddSale(QStringLiteral("102"), QStringLiteral("Tin box"), QStringLiteral("$1.25"));
    AddBid(QStringLiteral("200"), kTitle, QStringLiteral("$10.00"), 1, QStringLiteral("$1.00"));
    AddBid(QStringLiteral("201"), QStringLiteral("Stamp"), QStringLiteral("$5.00"), 1,
           QStringLiteral("$0.50"), QStringLiteral("$2.00"));
    // Not pending, or another partner's: never offered.
    Run(QStringLiteral("UPDATE Auctions SET ToDoComplete = 1 WHERE ItemNumber = '102'"));
    Insert(QStringLiteral("Bids"), {{"UserName", kUser},
                                    {"ItemNumber", "202"},
                                    {"ItemTitle", "Coin"},
                                    {"EndDate", "01/15/24, 10:00:00 PST"},
                                    {"HighBid", "$3.00"},
                                    {"Winning", 1},
                                    {"SellerName", "eve"}});
    const QString saleQuestion = kBuyer + QStringLiteral(
                                              " has won 1 other auction(s).  Would you like to "
                                              "include those items in your packing list?");
    const QString bidQuestion = QStringLiteral("You have won 1 other auction(s) from ") + kSeller +
                                QStringLiteral(
                                    ".  Would you like to include those items in your "
                                    "remittance advice?");
    const QString first = QStringLiteral("  ") + kTitle + QStringLiteral(" ($10.00)");
    struct Case {
        SelectedItem item;
        Answer answer;
        QString question;
        QString expected;
    };
    const Case cases[] = {
        {Sale(QStringLiteral("100")), Answer::Yes, saleQuestion,
         first + QStringLiteral("\n  Oil lamp ($4.50)")},
        {Sale(QStringLiteral("100")), Answer::No, saleQuestion, first},
        {Bid(QStringLiteral("200")), Answer::Yes, bidQuestion,
         first + QStringLiteral("\n  Stamp ($5.00)\nEnclosed is a check in the amount of $18.50 "
                                "($15.00 + $1.50 sales tax + $2.00 shipping).")},
        {Bid(QStringLiteral("200")), Answer::No, bidQuestion,
         first + QStringLiteral("\nEnclosed is a check in the amount of $11.00 ($10.00 + $1.00 "
                                "sales tax).")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected.toStdString());
        const size_t shown = m_ui.History().size();
        m_ui.ScriptAnswer(c.answer);
        ASSERT_TRUE(Build(c.item).Built());
        EXPECT_EQ(Text(), c.expected);
        ASSERT_EQ(m_ui.History().size(), shown + 1);
        EXPECT_EQ(m_ui.History().back().kind, QStringLiteral("ask"));
        EXPECT_EQ(m_ui.History().back().text, c.question);
        EXPECT_EQ(m_ui.History().back().title,
                  QStringLiteral("Include all items in Packing List?"));
    }
}

TEST_F(PackingTest, ThePaymentSentenceFollowsTheMethodAndTheSums) {
    WriteTemplate(Side::Bids, Rtf({QStringLiteral("[{PaymentInfo}]")}));
    struct Case {
        QVariant method;
        const char* price;
        const char* tax;
        const char* shipping;
        const char* sentence;
    };
    const Case cases[] = {
        {1, "$10.00", "$1.00", "$2.00",
         "Enclosed is a check in the amount of $13.00 ($10.00 + $1.00 sales tax + $2.00 "
         "shipping)."},
        {1, "$10.00", nullptr, nullptr, "Enclosed is a check in the amount of $10.00."},
        {3, "$1,200.00", nullptr, "$15",
         "Enclosed is a money order in the amount of $1,215.00 "
         "($1,200.00 + $15.00 shipping)."},
        {0, "$7.50", "$0.00", nullptr, "Enclosed is $7.50 cash."},
        {0, "$7.50", "$0.60", nullptr, "Enclosed is $8.10 ($7.50 + $0.60 sales tax) cash."},
        {2, "$10.00", "$1.00", "$2.00", ""},                    // credit card
        {4, "$10.00", "$1.00", "$2.00", ""},                    // escrow
        {QStringLiteral("5"), "$10.00", nullptr, nullptr, ""},  // another method
    };
    int item = 300;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sentence);
        const QString number = QString::number(++item);
        AddBid(number, QStringLiteral("Item ") + number, QString::fromLatin1(c.price), c.method,
               c.tax ? QString::fromLatin1(c.tax) : QString(),
               c.shipping ? QString::fromLatin1(c.shipping) : QString());
        m_ui.ScriptAnswer(Answer::No);  // the bids added before this one
        ASSERT_TRUE(Build(Bid(number)).Built());
        EXPECT_EQ(Text(), u'[' + QString::fromUtf8(c.sentence) + u']');
    }
}

// ---------------------------------------------------------------- stops

TEST_F(PackingTest, MissingDataStopsWithItsBoxNodeAndPanel) {
    WriteTemplate(Side::Sales, Rtf({QStringLiteral("{AuctionItems}")}));
    WriteTemplate(Side::Bids, Rtf({QStringLiteral("{AuctionItems}")}));
    const QString stranger = QStringLiteral("n'o \"one\"");
    Insert(QStringLiteral("Buyers"), {{"BuyerID", "no street"},
                                      {"StreetAddress1", " "},
                                      {"City", "Troy"},
                                      {"Email", "x@example.com"}});
    for (const char* buyer : {"no street", "n'o \"one\""}) {
        Insert(QStringLiteral("Auctions"),
               {{"UserName", kUser}, {"ItemNumber", buyer}, {"HighBidderName", buyer}});
    }
    AddBid(QStringLiteral("null"), kTitle, QStringLiteral("$1"), QVariant());
    AddBid(QStringLiteral("-1"), kTitle, QStringLiteral("$1"), -1);
    Insert(QStringLiteral("Bids"), {{"UserName", kUser},
                                    {"ItemNumber", "nobody"},
                                    {"SellerName", stranger},
                                    {"OrderPaymentMethod", 1}});
    const QString noAddress =
        QStringLiteral("Please enter an address for %1 before creating a packing list");
    const QString noPayment = QStringLiteral(
        "Please enter payment info for this item before printing the remittance advice.");
    struct Stop {
        QString title;
        PackingStatus status;
        QString node;
        PackingPanel panel;
    };
    const Stop address = {QStringLiteral("Missing Address"), PackingStatus::MissingAddress,
                          QStringLiteral("PRA"), PackingPanel::Address};
    const Stop payment = {QStringLiteral("Missing Payment Info"), PackingStatus::MissingPaymentInfo,
                          QStringLiteral("PRP"), PackingPanel::Payment};
    struct Case {
        SelectedItem item;
        QString text;
        Stop stop;
    };
    const Case cases[] = {
        {Sale(stranger), noAddress.arg(stranger), address},
        {Sale(QStringLiteral("no street")), noAddress.arg(QStringLiteral("no street")), address},
        {Bid(QStringLiteral("null")), noPayment, payment},
        {Bid(QStringLiteral("-1")), noPayment, payment},
        {Bid(QStringLiteral("nobody")), noAddress.arg(stranger), address},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        const size_t shown = m_ui.History().size();
        const PackingOutcome outcome = Build(c.item);
        EXPECT_EQ(outcome.status, c.stop.status);
        EXPECT_EQ(outcome.node, c.stop.node);
        EXPECT_EQ(outcome.panel, c.stop.panel);
        EXPECT_TRUE(outcome.frameTitle.endsWith(u'#' + c.item.itemNumber));
        ASSERT_EQ(m_ui.History().size(), shown + 1);
        EXPECT_EQ(m_ui.History().back().text, c.text);
        EXPECT_EQ(m_ui.History().back().title, c.stop.title);
        EXPECT_EQ(Text(), QStringLiteral("{AuctionItems}"));  // stopped before the items
    }
}

TEST_F(PackingTest, AnItemNoLongerThereGivesAnEmptyDocumentAndNoBox) {
    WriteTemplate(Side::Sales, Rtf({QStringLiteral("{AuctionItems}")}));
    for (const SelectedItem& item : {Sale(QStringLiteral("999")), Bid(QStringLiteral("999")),
                                     Sale(QStringLiteral("999"), QStringLiteral("x"))}) {
        const PackingOutcome outcome = Build(item);
        EXPECT_EQ(outcome.status, PackingStatus::NoRecord);
        EXPECT_TRUE(outcome.frameTitle.isEmpty());
        EXPECT_TRUE(m_document.isEmpty());
    }
    EXPECT_TRUE(m_ui.History().empty());
}

// ---------------------------------------------------------------- multi-winner sales

TEST_F(PackingTest, AMultiWinnerSaleListsItsWinnersOwnPriceUnderTheItemsTitle) {
    WriteTemplate(Side::Sales,
                  Rtf({QStringLiteral("{BuyerAddress}"), QStringLiteral("{AuctionItems}")}));
    Insert(QStringLiteral("Auctions"), {{"UserName", kUser},
                                        {"ItemNumber", "500"},
                                        {"ItemTitle", "Marbles, bag of 10"},
                                        {"EndDate", "01/15/24, 10:00:00 PST"},
                                        {"HighBidderName", "Dutch Auction"}});
    for (const char* winner : {"zed", "bob \"the\" o'hara"}) {
        Insert(QStringLiteral("Dutch"), {{"UserName", kUser},
                                         {"ItemNumber", "500"},
                                         {"HighBidderName", winner},
                                         {"HighBid", "$2.00"}});
    }
    Run(QStringLiteral("UPDATE Dutch SET HighBid = '$3.50' WHERE HighBidderName <> 'zed'"));
    const SelectedItem item = Sale(QStringLiteral("500"), kBuyer);
    const PackingOutcome outcome = Build(item);
    ASSERT_TRUE(outcome.Built());
    EXPECT_EQ(outcome.frameTitle, QStringLiteral("Packing List for #500"));
    EXPECT_EQ(Text(), kBuyerAddress + QStringLiteral("\n  Marbles, bag of 10 ($3.50)"));

    // Printing marks this winner's row alone.
    EXPECT_TRUE(lw::tasks::MarkPackingPrinted(*m_db, item));
    EXPECT_EQ(Flag(QStringLiteral("SELECT group_concat(HighBidderName || '=' || "
                                  "PackingListPrinted, ';') FROM Dutch")),
              QStringLiteral("zed=0;") + kBuyer + QStringLiteral("=1"));
}

TEST_F(PackingTest, PrintingMarksTheSelectedRecordOnly) {
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    AddSale(QStringLiteral("101"), kTitle, QStringLiteral("$10.00"));
    AddBid(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    EXPECT_TRUE(lw::tasks::MarkPackingPrinted(*m_db, Bid(QStringLiteral("100"))));
    EXPECT_TRUE(lw::tasks::MarkPackingPrinted(*m_db, Sale(QStringLiteral("101"))));
    EXPECT_FALSE(lw::tasks::MarkPackingPrinted(*m_db, Sale(QStringLiteral("999"))));
    EXPECT_EQ(Flag(QStringLiteral("SELECT group_concat(ItemNumber || '=' || PackingListPrinted, "
                                  "';') FROM (SELECT * FROM Auctions ORDER BY ItemNumber)")),
              QStringLiteral("100=0;101=1"));
    EXPECT_EQ(Flag(QStringLiteral("SELECT PackingListPrinted FROM Bids")), QStringLiteral("1"));
}

// ---------------------------------------------------------------- templates

TEST_F(PackingTest, BadOrTokenlessTemplatesNeverStopTheBuild) {
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    struct Case {
        const char* what;
        std::optional<QByteArray> rtf;  // none: no file
        QString expected;
        bool problem;
    };
    const Case cases[] = {
        {"no tokens", Rtf({QStringLiteral("Thank you!"), QStringLiteral("{Unknown} stays")}),
         QStringLiteral("Thank you!\n{Unknown} stays"), false},
        {"missing", std::nullopt, QString(), true},
        {"not RTF", QByteArray("just some words {MyName}"), QString(), true},
        {"unclosed groups", QByteArray("{\\rtf1\\ansi {\\b {MyName"), QString(), true},
        {"empty file", QByteArray(), QString(), true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const QString path = lw::tasks::PackingTemplatePath(Side::Sales);
        QFile::remove(path);
        if (c.rtf) {
            WriteTemplate(Side::Sales, *c.rtf);
        }
        const PackingOutcome outcome = Build(Sale(QStringLiteral("100")));
        EXPECT_TRUE(outcome.Built());
        EXPECT_EQ(Text(), c.expected);
        EXPECT_EQ(!outcome.templateProblem.isEmpty(), c.problem)
            << outcome.templateProblem.toStdString();
    }
}

TEST_F(PackingTest, TheShippedTemplatesHoldTheirTokensAndReachConfigsOnce) {
    const QString auc = lw::tasks::PackingTemplatePath(Side::Sales);
    const QString bid = lw::tasks::PackingTemplatePath(Side::Bids);
    m_root.Write(QStringLiteral("Configs/bidpack.rtf"), Rtf({QStringLiteral("my own {MyName}")}));
    QString error;  // the program's start puts them there
    ASSERT_TRUE(lw::admin::PrepareSetUpRoot(&error)) << error.toStdString();
    EXPECT_EQ(lw::test::ReadAll(auc),
              lw::test::ReadAll(lw::test::SourceDir() + QStringLiteral("/data/aucpack.rtf")));
    EXPECT_EQ(lw::test::ReadAll(bid), Rtf({QStringLiteral("my own {MyName}")}));
    EXPECT_TRUE(QFileInfo(auc).isWritable());

    // Every token of its column, each address token twice where it makes sense;
    // a full build leaves none behind.
    QFile::remove(bid);
    ASSERT_TRUE(lw::tasks::InstallPackingTemplates(&error)) << error.toStdString();
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    AddBid(QStringLiteral("200"), kTitle, QStringLiteral("$10.00"), 1, QStringLiteral("$1.00"));
    struct Case {
        SelectedItem item;
        const char* tokens;  // separated by spaces
        QString twice;
    };
    const Case cases[] = {
        {Sale(QStringLiteral("100")),
         "{MyAddress} {MyName} {CurrentDate} {MyEmailAddress} {BuyerAddress} {AuctionSite} "
         "{AuctionItems}",
         kBuyerAddress.toUpper()},
        {Bid(QStringLiteral("200")),
         "{MyAddress} {MyName} {CurrentDate} {MyEmailAddress} {SellerAddress} {SellerFirstName} "
         "{AuctionSite} {AuctionItems} {PaymentInfo}",
         QStringLiteral("Please send the items to:\n") + kMyAddress},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(lw::tasks::PackingTemplateName(c.item.side).toStdString());
        QTextDocument shipped;
        ASSERT_TRUE(
            lw::richtext::LoadRtfFile(lw::tasks::PackingTemplatePath(c.item.side), shipped).ok);
        for (const QString& token : QString::fromLatin1(c.tokens).split(u' ')) {
            EXPECT_TRUE(shipped.toPlainText().contains(token)) << token.toStdString();
        }
        ASSERT_TRUE(Build(c.item).Built());
        EXPECT_FALSE(Text().contains(u'{')) << Text().toStdString();
        EXPECT_TRUE(Text().contains(c.twice)) << Text().toStdString();
    }
}

// ---------------------------------------------------------------- edit copies

TEST_F(PackingTest, EachEditCopyTakesTheNextFreeNumberAndLoadsBack) {
    WriteTemplate(Side::Sales, Rtf({QStringLiteral("Ship to {BuyerAddress}")}));
    AddSale(QStringLiteral("100"), kTitle, QStringLiteral("$10.00"));
    ASSERT_TRUE(Build(Sale(QStringLiteral("100"))).Built());
    const QString folder = m_root.File(QStringLiteral("work"));
    QString error;
    const QString first = lw::tasks::SavePackingForEdit(m_document, &error, folder);
    const QString second = lw::tasks::SavePackingForEdit(m_document, &error, folder);
    EXPECT_EQ(first, folder + QStringLiteral("/pack1.rtf")) << error.toStdString();
    EXPECT_EQ(second, folder + QStringLiteral("/pack2.rtf"));
    QFile::remove(first);  // a gap is filled first
    EXPECT_EQ(lw::tasks::NextPackingEditPath(folder), first);

    QTextDocument copy;
    ASSERT_TRUE(lw::richtext::LoadRtfFile(second, copy).ok);
    EXPECT_EQ(copy.toPlainText(), Text());

    // A folder that cannot be made: no path, and why.
    m_root.Write(QStringLiteral("file"), "x");
    EXPECT_TRUE(
        lw::tasks::SavePackingForEdit(m_document, &error, m_root.File(QStringLiteral("file/sub")))
            .isEmpty());
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(lw::tasks::WordProcessorFallback().title,
              QStringLiteral("Unable to open word processor"));
}

}  // namespace
