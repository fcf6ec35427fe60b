// SPDX-License-Identifier: GPL-3.0-or-later
// The task manager's record panels over a database of a few sales, a
// multi-winner sale and bids: what each panel loads, what its save writes
// (Null for empty boxes and lists with no row, the other methods' payment
// fields left alone), the removal code it hands back, the money sums, the
// partner's notes and history, the address rows, and the mail task panel
// over mail files in the user's outbox and archive.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>

#include "core/settings.h"
#include "core/store.h"
#include "tasks/address_panel.h"
#include "tasks/email_task_panel.h"
#include "tasks/feedback_panel.h"
#include "tasks/notes_panel.h"
#include "tasks/payment_panel.h"
#include "tasks/queue_files.h"
#include "tasks/shipping_panel.h"
#include "tasks/summary_panel.h"
#include "tests/support/test_support.h"

using lw::core::Database;
using namespace lw::tasks;

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

const QString kUser = QStringLiteral("D'Arcy");
const QString kSiteId = QStringLiteral("darcy_buys");
const QDate kToday(2024, 3, 9);
const QString kTodayText = QStringLiteral("03/09/24");

QVariant Null() {
    return {};
}

// The fields a test reads back or sets, by name.
using Fields = std::vector<std::pair<const char*, QVariant>>;

// Rows of the database every test starts from: (table, "Field=value|...").
const std::pair<const char*, const char*> kRows[] = {
    // A plain sale to a buyer with a quote in the name, his earlier sales
    // (one with notes), and another buyer's.
    {"Auctions",
     "ItemNumber=100|ItemTitle=Brass lamp|ItemCategory=Lamps|EndDate=01/02/20, 10:00:00 PST|"
     "HighBid=$10.00|MinimumBid=$1.00|ReserveBid=$5.00|NumberBids=3|Quantity=1|"
     "HighBidderName=o'brien|HighBidderFeedback=(12)"},
    {"Auctions",
     "ItemNumber=101|ItemTitle=Clock|ItemCategory=Clocks|EndDate=12/01/19, 09:00:00 PST|"
     "HighBid=$20.00|HighBidderName=o'brien|AuctionNotes=Paid fast"},
    {"Auctions",
     "ItemNumber=102|ItemTitle=Shade|ItemCategory=lamps|EndDate=11/01/19, 09:00:00 PST|"
     "HighBid=$5.00|HighBidderName=O'BRIEN"},
    {"Auctions",
     "ItemNumber=103|ItemTitle=Vase|EndDate=11/02/19, 09:00:00 PST|HighBid=$1.00|"
     "HighBidderName=someone|AuctionNotes=Not his"},
    {"Auctions",
     "ItemNumber=105|ItemTitle=Future|EndDate=12/31/90, 10:00:00 PST|HighBid=$1.00|"
     "HighBidderName=newbie"},
    // Multi-winner sales: spoons to amy and bob, forks to the same buyer.
    {"Auctions",
     "ItemNumber=200|ItemTitle=Spoons|ItemCategory=Kitchen|EndDate=01/03/20, 10:00:00 PST|"
     "HighBidderName=Dutch Auction|AuctionNotes=parent row"},
    {"Dutch", "ItemNumber=200|HighBidderName=amy|HighBid=$2.00|Quantity=2"},
    {"Dutch", "ItemNumber=200|HighBidderName=bob|HighBid=$2.50"},
    {"Auctions",
     "ItemNumber=201|ItemTitle=Forks|ItemCategory=Kitchen|EndDate=01/05/20, 09:00:00 PST|"
     "HighBidderName=Dutch Auction"},
    {"Dutch", "ItemNumber=201|HighBidderName=o'brien|HighBid=$3.00|AuctionNotes=Wants spoons"},
    // Bids won from sam: a plain one, another, and a share of a multi-winner item.
    {"Bids",
     "ItemNumber=300|ItemTitle=Atlas|ItemCategory=Books|EndDate=01/04/20, 10:00:00 PST|"
     "HighBid=$7.00|Winning=1|SellerName=sam|SellerFeedback=(40)"},
    {"Bids",
     "ItemNumber=301|ItemCategory=Games|EndDate=01/05/20, 10:00:00 PST|HighBid=$3.00|Winning=1|"
     "SellerName=sam"},
    {"Bids",
     "ItemNumber=302|ItemCategory=Toys|EndDate=01/06/20, 10:00:00 PST|HighBid=$50.00|"
     "HighBidderName=Dutch Auction|SellerName=sam"},
    {"DutchBids", "ItemNumber=302|HighBidderName=darcy_buys|HighBid=$4.00"}};

class TaskPanelsTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_db.emplace(lw::test::StartUserStore(m_root, m_ui, kUser, kSiteId));
        auto rate = Db().Prepare(QStringLiteral("UPDATE Users SET SalesTaxRate = 0.0825"));
        rate.Run();
        for (const auto& [table, row] : kRows) {
            Insert(QString::fromLatin1(table), row);
        }
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    // Inserts a row given as "Field=value|...", the user's unless it names
    // another. Column names come from the test itself; the values are bound.
    void Insert(const QString& table, const char* row) {
        QVariantMap fields = {{QStringLiteral("UserName"), kUser}};
        for (const QString& field : QString::fromUtf8(row).split(u'|')) {
            fields.insert(field.section(u'=', 0, 0), field.section(u'=', 1));
        }
        auto insert =
            Db().Prepare(QStringLiteral("INSERT INTO \"%1\" (\"%2\") VALUES (%3)")
                             .arg(table, fields.keys().join(QStringLiteral("\",\"")),
                                  QStringLiteral("?,").repeated(fields.size()).chopped(1)));
        int index = 1;
        for (const QVariant& value : fields) {
            insert.Bind(index++, value);
        }
        insert.Run();
    }

    void Set(const SelectedItem& item, const Fields& fields) {
        QVariantMap map;
        for (const auto& [name, value] : fields) {
            map.insert(QString::fromLatin1(name), value);
        }
        ASSERT_EQ(WriteSelectedRecord(Db(), item, map), 1);
    }

    QVariant Read(const SelectedItem& item, const char* field) {
        return FieldValue(ReadSelectedRecord(Db(), item).value(), QString::fromLatin1(field));
    }

    void ExpectFields(const SelectedItem& item, const Fields& expected) {
        for (const auto& [name, value] : expected) {
            const QVariant stored = Read(item, name);
            EXPECT_EQ(stored.isNull(), value.isNull()) << name;
            if (!value.isNull()) {
                EXPECT_EQ(stored.toString(), value.toString()) << name;
            }
        }
    }

    // Writes a file under the user's folder with CR LF line ends.
    void WriteUserFile(const QString& folder, const QString& name, const char* lines) {
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile file(QDir(folder).filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(lines).replace("\n", "\r\n"));
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
    const SelectedItem m_sale =
        SelectionFromRow(Side::Sales, QStringLiteral("100: Brass lamp"), QStringLiteral("100"));
    const SelectedItem m_amy =
        SelectionFromRow(Side::Sales, QStringLiteral("D200: Spoons (amy)"), QStringLiteral("200"));
    const SelectedItem m_bob =
        SelectionFromRow(Side::Sales, QStringLiteral("D200: Spoons (bob)"), QStringLiteral("200"));
    const SelectedItem m_bid =
        SelectionFromRow(Side::Bids, QStringLiteral("300: Atlas"), QStringLiteral("300"));
};

// ------------------------------------------------------------ payment

TEST_F(TaskPanelsTest, PaymentLoadsTheRecordsSumsAndTheChosenMethodsDetails) {
    struct Case {
        const char* name;
        SelectedItem item;
        Fields stored;
        int method;
        int frame;
        std::vector<std::pair<QString PaymentPanel::*, const char*>> boxes;
    };
    const std::vector<Case> cases = {
        {"nothing recorded",
         m_sale,
         {},
         -1,
         0,
         {{&PaymentPanel::txtShippingCost, "$0.00"},
          {&PaymentPanel::txtSalesTax, "$0.00"},
          {&PaymentPanel::txtTotalSale, "$10.00"},
          {&PaymentPanel::txtPayInfo0, ""},
          {&PaymentPanel::frameTitle, "Payment Info for #100"}}},
        {"the shipping's cost stands before the charge",
         m_sale,
         {{"ShippingCost", "3"}, {"OrderShipping", "$5.00"}},
         -1,
         0,
         {{&PaymentPanel::txtShippingCost, "$3.00"}, {&PaymentPanel::txtTotalSale, "$13.00"}}},
        {"no cost: the charge",
         m_sale,
         {{"ShippingCost", "$0.00"}, {"OrderShipping", "5"}, {"OrderTax", ".5"}},
         -1,
         0,
         {{&PaymentPanel::txtShippingCost, "$5.00"},
          {&PaymentPanel::txtSalesTax, "$0.50"},
          {&PaymentPanel::txtTotalSale, "$15.50"}}},
        {"a stored total stands",
         m_sale,
         {{"OrderAmountofSale", "99"}},
         -1,
         0,
         {{&PaymentPanel::txtTotalSale, "$99.00"}}},
        {"check",
         m_sale,
         {{"OrderPaymentMethod", 1},
          {"OrderPaymentDate", "01/04/20"},
          {"OrderPaymentNumber", "1001"},
          {"OrderPaymentBank", "First Bank"},
          {"OrderPaymentCleared", 1},
          {"OrderPaymentClearedDate", "01/09/20"}},
         1,
         1,
         {{&PaymentPanel::txtPayInfo0, "01/04/20"},
          {&PaymentPanel::txtCheckNumber, "1001"},
          {&PaymentPanel::txtDrawnOnBank, "First Bank"},
          {&PaymentPanel::txtDateCleared, "01/09/20"}}},
        {"credit card",
         m_sale,
         {{"OrderPaymentMethod", 2},
          {"OrderPaymentNumber", "4111"},
          {"OrderPaymentBank", "unseen"},
          {"OrderCreditCardType", "Visa"},
          {"OrderExpireMonth", "07"},
          {"OrderExpireYear", "2027"}},
         2,
         2,
         {{&PaymentPanel::txtCreditCardAccount, "4111"},
          {&PaymentPanel::cmbCreditCardType, "Visa"},
          {&PaymentPanel::cmbExpireMonth, "07"},
          {&PaymentPanel::cmbExpireYear, "2027"},
          {&PaymentPanel::txtDrawnOnBank, ""},
          {&PaymentPanel::txtCheckNumber, ""}}},
        {"money order",
         m_sale,
         {{"OrderPaymentMethod", 3}, {"OrderPaymentNumber", "MO-7"}},
         3,
         3,
         {{&PaymentPanel::txtMoneyOrder, "MO-7"}, {&PaymentPanel::txtCheckNumber, ""}}},
        {"cash has no details",
         m_sale,
         {{"OrderPaymentMethod", 0}, {"OrderPaymentNumber", "x"}},
         0,
         0,
         {{&PaymentPanel::txtMoneyOrder, ""}, {&PaymentPanel::txtCheckNumber, ""}}},
        {"a row the list does not have is none", m_sale, {{"OrderPaymentMethod", 99}}, -1, 0, {}},
        {"a multi-winner winner's own price",
         m_amy,
         {{"ItemCost", "1.5"}},
         -1,
         0,
         {{&PaymentPanel::txtItemCost0, "$2.00"},
          {&PaymentPanel::txtItemCost1, "$1.50"},
          {&PaymentPanel::frameTitle, "Payment Info for #200"}}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        if (!c.stored.empty()) {
            Set(c.item, c.stored);
        }
        const auto panel = ShowSalePayment(Db(), c.item);
        ASSERT_TRUE(panel.has_value());
        EXPECT_EQ(panel->lstPaymentMethods, c.method);
        EXPECT_EQ(panel->frmPayment, c.frame);
        EXPECT_EQ(panel->txtPayInfo0Enabled, c.method >= 0);
        for (const auto& [box, text] : c.boxes) {
            EXPECT_EQ((*panel).*box, QString::fromUtf8(text));
        }
        // Undo the case's fields for the next one.
        Fields cleared;
        for (const auto& field : c.stored) {
            cleared.emplace_back(field.first, Null());
        }
        if (!cleared.empty()) {
            Set(c.item, cleared);
        }
    }
    const auto bid = ShowBidPayment(Db(), m_bid);
    ASSERT_TRUE(bid.has_value());
    EXPECT_FALSE(bid->sale);
    EXPECT_EQ(bid->txtItemCost0, QStringLiteral("$7.00"));
    EXPECT_EQ(bid->txtItemCost1, QString());
}

TEST_F(TaskPanelsTest, PaymentSaveWritesNullForEmptyBoxesAndOnlyTheChosenMethodsDetails) {
    // What stood before each save: another method's details, and a cost.
    const Fields before = {{"OrderPaymentBank", "Old Bank"},
                           {"OrderPaymentCleared", 1},
                           {"OrderCreditCardType", "Amex"},
                           {"ItemCost", "$1.00"}};
    struct Case {
        const char* name;
        SelectedItem item;
        std::function<void(PaymentPanel&)> fill;
        Fields expected;
    };
    const std::vector<Case> cases = {{"no method and empty boxes",
                                      m_sale,
                                      [](PaymentPanel&) {},
                                      {{"OrderPaymentMethod", Null()},
                                       {"ItemCost", "0.00"},
                                       {"OrderPaymentDate", Null()},
                                       {"OrderTax", Null()},
                                       {"OrderShipping", Null()},
                                       {"OrderAmountofSale", Null()},
                                       {"OrderPaymentBank", "Old Bank"},
                                       {"OrderCreditCardType", "Amex"}}},
                                     {"a check with an empty bank",
                                      m_sale,
                                      [](PaymentPanel& p) {
                                          p.lstPaymentMethods = 1;
                                          p.txtItemCost1 = QStringLiteral("4");
                                          p.txtPayInfo0 = QStringLiteral("01/04/20");
                                          p.txtSalesTax = QStringLiteral("$0.83");
                                          p.txtCheckNumber = QStringLiteral("1001");
                                          p.txtDateCleared = QStringLiteral("01/09/20");
                                      },
                                      {{"OrderPaymentMethod", 1},
                                       {"ItemCost", "$4.00"},
                                       {"OrderPaymentDate", "01/04/20"},
                                       {"OrderTax", "$0.83"},
                                       {"OrderPaymentNumber", "1001"},
                                       {"OrderPaymentBank", Null()},
                                       {"OrderPaymentCleared", 0},
                                       {"OrderPaymentClearedDate", "01/09/20"},
                                       {"OrderCreditCardType", "Amex"}}},
                                     {"a money order leaves the check's fields",
                                      m_sale,
                                      [](PaymentPanel& p) {
                                          p.lstPaymentMethods = 3;
                                          p.txtMoneyOrder = QStringLiteral("MO-7");
                                          p.txtCheckNumber = QStringLiteral("unsaved");
                                      },
                                      {{"OrderPaymentNumber", "MO-7"},
                                       {"OrderPaymentBank", "Old Bank"},
                                       {"OrderPaymentCleared", 1},
                                       {"OrderCreditCardType", "Amex"}}},
                                     {"a credit card",
                                      m_sale,
                                      [](PaymentPanel& p) {
                                          p.lstPaymentMethods = 2;
                                          p.txtCreditCardAccount = QStringLiteral("4111");
                                          p.cmbCreditCardType = QStringLiteral("Visa");
                                          p.cmbExpireMonth = QStringLiteral("07");
                                      },
                                      {{"OrderPaymentNumber", "4111"},
                                       {"OrderCreditCardType", "Visa"},
                                       {"OrderExpireMonth", "07"},
                                       {"OrderExpireYear", Null()},
                                       {"OrderPaymentBank", "Old Bank"}}},
                                     {"a bid keeps its cost",
                                      m_bid,
                                      [](PaymentPanel& p) {
                                          p.sale = false;
                                          p.lstPaymentMethods = 0;
                                          p.txtItemCost1 = QStringLiteral("9");
                                      },
                                      {{"OrderPaymentMethod", 0}, {"ItemCost", "$1.00"}}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Set(c.item, before);
        PaymentPanel panel;
        panel.txtShippingCost.clear();
        panel.txtSalesTax.clear();
        c.fill(panel);
        const SaveOutcome outcome = SavePayment(Db(), c.item, panel);
        EXPECT_TRUE(outcome.saved);
        EXPECT_FALSE(outcome.removalCode.has_value());
        EXPECT_EQ(outcome.selectNode,
                  c.item.side == Side::Bids ? std::optional(QStringLiteral("PRP")) : std::nullopt);
        ExpectFields(c.item, c.expected);
    }
}

TEST_F(TaskPanelsTest, SumsTaxAndMoneyBoxes) {
    struct Case {
        const char* item;
        const char* shipping;
        const char* tax;
        const char* total;
    };
    // The number rule reads each box; what is no number counts 0.
    for (const Case& c : std::vector<Case>{{"$10.00", "$2.00", "$1.00", "$13.00"},
                                           {"$1,000.50", "", "", "$1,000.50"},
                                           {"(5.00)", "n/a", "-", "($5.00)"},
                                           {"0.1", "0.2", "", "$0.30"}}) {
        PaymentPanel panel;
        panel.txtItemCost0 = QString::fromUtf8(c.item);
        panel.txtShippingCost = QString::fromUtf8(c.shipping);
        panel.txtSalesTax = QString::fromUtf8(c.tax);
        ComputeTotal(panel);
        EXPECT_EQ(panel.txtTotalSale, QString::fromUtf8(c.total)) << c.item;
    }
    // The shipping is taxed along with the item, at the user's rate.
    const double rate = SalesTaxRate(Db());
    EXPECT_DOUBLE_EQ(rate, 0.0825);
    for (const Case& c : std::vector<Case>{{"$10.00", "$2.00", "$0.99", "$12.99"},
                                           {"$100", "", "$8.25", "$108.25"},
                                           {"abc", "", "$0.00", "$0.00"}}) {
        PaymentPanel panel;
        panel.txtItemCost0 = QString::fromUtf8(c.item);
        panel.txtShippingCost = QString::fromUtf8(c.shipping);
        panel.txtSalesTax = QStringLiteral("$5.00");
        ComputeSalesTax(panel, rate);
        EXPECT_EQ(panel.txtSalesTax, QString::fromUtf8(c.tax)) << c.item;
        EXPECT_EQ(panel.txtTotalSale, QString::fromUtf8(c.total)) << c.item;
    }
    for (const auto& [typed, shown] :
         std::vector<std::pair<const char*, const char*>>{{"12.5", "$12.50"},
                                                          {"1234.567", "$1,234.57"},
                                                          {"(5)", "($5.00)"},
                                                          {"abc", "abc"},
                                                          {"", ""}}) {
        EXPECT_EQ(MoneyBoxText(QString::fromUtf8(typed)), QString::fromUtf8(shown)) << typed;
    }
}

TEST_F(TaskPanelsTest, ClicksEnableTheirDatesAndPutTodayThere) {
    PaymentPanel payment;
    ChoosePaymentMethod(payment, 2, kToday);
    EXPECT_EQ(payment.frmPayment, 2);
    EXPECT_EQ(payment.txtPayInfo0, kTodayText);
    payment.txtPayInfo0 = QStringLiteral("01/01/20");
    ChoosePaymentMethod(payment, 4, kToday);  // a date that stands stays
    EXPECT_EQ(payment.frmPayment, 0);
    EXPECT_EQ(payment.txtPayInfo0, QStringLiteral("01/01/20"));
    ChoosePaymentMethod(payment, -1, kToday);
    EXPECT_FALSE(payment.txtPayInfo0Enabled);
    EXPECT_EQ(payment.txtPayInfo0, QString());

    // Every list or box that enables a date: set, then cleared, on one panel.
    struct Tick {
        const char* name;
        std::function<std::pair<bool, QString>(bool)> tick;  // enabled, date
    };
    const std::vector<Tick> ticks = {
        {"lstShippingMethod",
         [p = std::make_shared<ShippingPanel>()](bool on) {
             ChooseShippingMethod(*p, on ? 0 : -1, kToday);
             return std::pair(p->txtShippingDateEnabled, p->txtShippingDate);
         }},
        {"chkDateCleared",
         [p = std::make_shared<PaymentPanel>()](bool on) {
             TickDateCleared(*p, on, kToday);
             return std::pair(p->txtDateClearedEnabled, p->txtDateCleared);
         }},
        {"chkItemReceived",
         [p = std::make_shared<ItemReceivedPanel>()](bool on) {
             TickItemReceived(*p, on, kToday);
             return std::pair(p->txtReceivedDateEnabled, p->txtReceivedDate);
         }},
        {"chkReceivedFeedback",
         [p = std::make_shared<FeedbackPanel>()](bool on) {
             p->txtReceivedFeedbackComment = QStringLiteral("kept while ticked");
             p->optReceivedFeedback = 1;
             TickFeedback(*p, on, kToday);
             EXPECT_EQ(p->txtReceivedFeedbackComment.isEmpty(), !on);
             EXPECT_EQ(p->optReceivedFeedback, on ? 1 : -1);
             return std::pair(p->detailsEnabled, p->txtReceivedFeedbackDate);
         }},
        {"chkEmailSent",
         [p = std::make_shared<EntryTaskPanel>()](bool on) {
             TickEmailSent(*p, on, kToday);
             return std::pair(p->txtEmailSentDateEnabled, p->txtEmailSentDate);
         }},
        {"chkEmailSent2", [p = std::make_shared<EmailTaskPanel>()](bool on) {
             TickEmailSent2(*p, on, kToday);
             return std::pair(p->txtSentDateEnabled, p->txtSentDate);
         }}};
    for (const Tick& t : ticks) {
        EXPECT_EQ(t.tick(true), std::pair(true, kTodayText)) << t.name;
        EXPECT_EQ(t.tick(false), std::pair(false, QString())) << t.name;
    }
}

// ------------------------------------------------------------ shipping, receipt, feedback

TEST_F(TaskPanelsTest, ShippingLoadsAndSavesWithItsRemovalCode) {
    auto panel = ShowShipping(Db(), m_sale);
    ASSERT_TRUE(panel.has_value());
    EXPECT_EQ(panel->frameTitle, QStringLiteral("Shipping Info for #100"));
    EXPECT_EQ(panel->txtShippingCost2, QStringLiteral("$0.00"));
    EXPECT_EQ(panel->txtActualShippingCost, QString());
    EXPECT_EQ(panel->lstShippingMethod, -1);

    // Empty boxes and no method write Null, and no date ends nothing.
    Set(m_sale, {{"ShippingMethod", 2}, {"ShippingTrackingNumber", "1Z"}});
    SaveOutcome outcome = SaveShipping(Db(), m_sale, ShippingPanel{});
    EXPECT_TRUE(outcome.saved);
    EXPECT_FALSE(outcome.removalCode.has_value());
    ExpectFields(m_sale, {{"ShippingMethod", Null()},
                          {"ShippingDate", Null()},
                          {"ShippingTrackingNumber", Null()},
                          {"OrderShipping", "$0.00"}});

    ShippingPanel shipped;
    shipped.lstShippingMethod = 4;
    shipped.txtShippingDate = QStringLiteral("01/06/20");
    shipped.txtShippingCost2 = QStringLiteral("$6.00");
    shipped.txtActualShippingCost = QStringLiteral("$4.10");
    shipped.txtInsuranceCost = QStringLiteral("$1.00");
    shipped.txtTrackingNumber = QStringLiteral("1Z999");
    shipped.txtInsuranceNumber = QStringLiteral("INS-1");
    outcome = SaveShipping(Db(), m_sale, shipped);
    EXPECT_EQ(outcome.removalCode, QStringLiteral("SHS"));
    panel = ShowShipping(Db(), m_sale);
    ASSERT_TRUE(panel.has_value());
    EXPECT_EQ(panel->lstShippingMethod, 4);
    EXPECT_TRUE(panel->txtShippingDateEnabled);
    for (QString ShippingPanel::*box :
         {&ShippingPanel::txtShippingDate, &ShippingPanel::txtShippingCost2,
          &ShippingPanel::txtActualShippingCost, &ShippingPanel::txtInsuranceCost,
          &ShippingPanel::txtTrackingNumber, &ShippingPanel::txtInsuranceNumber}) {
        EXPECT_EQ((*panel).*box, shipped.*box);
    }
}

TEST_F(TaskPanelsTest, ItemReceivedLoadsAndSavesWithItsRemovalCode) {
    ItemReceivedPanel received;
    received.chkItemReceived = true;
    received.txtReceivedDate = QStringLiteral("01/08/20");
    received.lstItemCondition = 1;
    received.lstItemTimeliness = 3;
    received.txtItemNotes = QStringLiteral("Well packed, \"mint\"");
    SaveOutcome outcome = SaveItemReceived(Db(), m_bid, received);
    EXPECT_EQ(outcome.removalCode, QStringLiteral("IRR"));
    ExpectFields(m_bid, {{"Item Received", 1},
                         {"ItemCondition", 1},
                         {"ItemPackaging", Null()},
                         {"ItemTimeliness", 3},
                         {"ItemCommunication", Null()}});
    const auto panel = ShowItemReceived(Db(), m_bid);
    ASSERT_TRUE(panel.has_value());
    EXPECT_EQ(panel->frameTitle, QStringLiteral("Item Received: #300"));
    EXPECT_TRUE(panel->chkItemReceived && panel->txtReceivedDateEnabled);
    EXPECT_EQ(panel->txtReceivedDate, received.txtReceivedDate);
    EXPECT_EQ(panel->lstItemCondition, 1);
    EXPECT_EQ(panel->lstItemPackaging, -1);
    EXPECT_EQ(panel->txtItemNotes, received.txtItemNotes);

    received.chkItemReceived = false;
    outcome = SaveItemReceived(Db(), m_bid, received);
    EXPECT_TRUE(outcome.saved);
    EXPECT_FALSE(outcome.removalCode.has_value());
}

TEST_F(TaskPanelsTest, FeedbackReceivedAndLeftInTheOnePanel) {
    auto received = ShowReceivedFeedback(Db(), m_sale);
    ASSERT_TRUE(received.has_value());
    EXPECT_EQ(received->frameTitle, QStringLiteral("Received Feedback: #100"));
    EXPECT_EQ(received->chkReceivedFeedbackCaption, QStringLiteral("Received Feedback"));
    EXPECT_TRUE(received->optReceivedFeedbackVisible);
    EXPECT_FALSE(received->cmdComposeFeedbackVisible);
    received->chkReceivedFeedback = true;
    received->txtReceivedFeedbackDate = QStringLiteral("01/07/20");
    received->optReceivedFeedback = 2;
    EXPECT_EQ(SaveReceivedFeedback(Db(), m_sale, *received).removalCode, QStringLiteral("FBR"));
    ExpectFields(m_sale, {{"ReturnFeedback", 1},
                          {"ReturnFeedbackDate", "01/07/20"},
                          {"ReturnFeedbackComment", Null()},
                          {"ReturnFeedbackType", 2},
                          {"FeedbackLeft", 0}});
    received->chkReceivedFeedback = false;
    received->optReceivedFeedback = -1;
    EXPECT_FALSE(SaveReceivedFeedback(Db(), m_sale, *received).removalCode.has_value());
    ExpectFields(m_sale, {{"ReturnFeedback", 0}, {"ReturnFeedbackType", Null()}});

    // The same save, with the box reading "Left Feedback", saves the other direction.
    auto left = ShowLeftFeedback(Db(), m_bid);
    ASSERT_TRUE(left.has_value());
    EXPECT_EQ(left->frameTitle, QStringLiteral("Feedback Left: #300"));
    EXPECT_TRUE(left->cmdComposeFeedbackVisible);
    EXPECT_FALSE(left->optReceivedFeedbackVisible);
    left->chkReceivedFeedback = true;
    left->txtReceivedFeedbackDate = QStringLiteral("01/08/20");
    left->txtReceivedFeedbackComment = QStringLiteral("Great seller");
    EXPECT_EQ(SaveReceivedFeedback(Db(), m_bid, *left).removalCode, QStringLiteral("FBL"));
    ExpectFields(m_bid, {{"FeedbackLeft", 1},
                         {"FeedbackLeftDate", "01/08/20"},
                         {"FeedbackLeftComment", "Great seller"},
                         {"ReturnFeedback", 0}});

    // A feedback waiting in the outbox shows so, and a save keeps the stored date.
    WriteUserFile(OutboxFeedbackFolder(), QStringLiteral("300FB.dat"),
                  "darcy_buys\n\nsam\n300\n0\nGreat seller\n");
    left = ShowLeftFeedback(Db(), m_bid);
    ASSERT_TRUE(left.has_value());
    EXPECT_EQ(left->txtReceivedFeedbackDate, QStringLiteral("Currently in Outbox"));
    EXPECT_TRUE(SaveLeftFeedback(Db(), m_bid, *left).saved);
    ExpectFields(m_bid, {{"FeedbackLeftDate", "01/08/20"}});

    left->chkReceivedFeedback = false;
    const SaveOutcome cleared = SaveLeftFeedback(Db(), m_bid, *left);
    EXPECT_TRUE(cleared.saved);
    EXPECT_FALSE(cleared.removalCode.has_value());
    ExpectFields(
        m_bid,
        {{"FeedbackLeft", 0}, {"FeedbackLeftDate", Null()}, {"FeedbackLeftComment", Null()}});
}

TEST_F(TaskPanelsTest, AMultiWinnerWinnersSaveWritesOnlyItsRow) {
    PaymentPanel payment;
    payment.lstPaymentMethods = 3;
    payment.txtMoneyOrder = QStringLiteral("MO-1");
    ShippingPanel shipping;
    shipping.txtShippingDate = QStringLiteral("01/06/20");
    EXPECT_TRUE(SavePayment(Db(), m_amy, payment).saved);
    EXPECT_EQ(SaveShipping(Db(), m_amy, shipping).removalCode, QStringLiteral("SHS"));
    EXPECT_TRUE(SaveNotes(Db(), m_amy, QStringLiteral("Amy's note")).saved);
    ExpectFields(m_amy, {{"OrderPaymentNumber", "MO-1"},
                         {"ShippingDate", "01/06/20"},
                         {"AuctionNotes", "Amy's note"}});
    ExpectFields(
        m_bob,
        {{"OrderPaymentMethod", Null()}, {"ShippingDate", Null()}, {"AuctionNotes", Null()}});
    const SelectedItem parent =
        SelectionFromRow(Side::Sales, QStringLiteral("200: Spoons"), QStringLiteral("200"));
    ExpectFields(
        parent,
        {{"OrderPaymentMethod", Null()}, {"ShippingDate", Null()}, {"AuctionNotes", "parent row"}});
}

TEST_F(TaskPanelsTest, SavesOfAGoneRecordOrAFieldItsTableLacksChangeNothing) {
    const SelectedItem gone =
        SelectionFromRow(Side::Sales, QStringLiteral("999: Gone"), QStringLiteral("999"));
    EXPECT_FALSE(ShowSalePayment(Db(), gone).has_value());
    ItemReceivedPanel received;
    received.chkItemReceived = true;
    for (const SaveOutcome& outcome :
         {SavePayment(Db(), gone, PaymentPanel{}), SaveItemReceived(Db(), gone, received),
          SaveItemReceived(Db(), m_sale, received),  // sales keep no receipt
          SaveBuyerAddress(Db(), gone, AddressBoxes{}),
          SaveEmailTask(Db(), m_sale, QStringLiteral("NOSUCHKEY"), true, QString())}) {
        EXPECT_FALSE(outcome.saved);
        EXPECT_FALSE(outcome.removalCode.has_value());
    }
}

// ------------------------------------------------------------ notes and summaries

TEST_F(TaskPanelsTest, NotesShowTheOtherNotesOfTheSamePartner) {
    auto notes = ShowNotes(Db(), m_sale);
    ASSERT_TRUE(notes.has_value());
    EXPECT_EQ(notes->frameTitle, QStringLiteral("Notes for Item #100"));
    EXPECT_EQ(notes->txtToDoNotes, QStringLiteral("No current notes."));
    EXPECT_EQ(notes->lblToDoPriorNotes, QStringLiteral("Other Notes About o'brien"));
    // The buyer's plain sale and his multi-winner win, oldest first; not
    // another buyer's, not a sale without notes, not another user's.
    Insert(QStringLiteral("Auctions"),
           "ItemNumber=104|UserName=Other user|HighBidderName=o'brien|AuctionNotes=no");
    notes = ShowNotes(Db(), m_sale);
    EXPECT_EQ(notes->txtToDoPriorNotes,
              QStringLiteral("#101 (Clock)\nENDED: 12/01/19, 09:00:00 PST\nNOTE: Paid fast\n"
                             "====================================\n"
                             "#201 (Forks)\nENDED: 01/05/20, 09:00:00 PST\nNOTE: Wants spoons\n"
                             "====================================\n"));

    // "No current notes." and an empty box write nothing; a big note is kept whole.
    for (const QString& unsaved : {QStringLiteral("No current notes."), QString()}) {
        EXPECT_FALSE(SaveNotes(Db(), m_bid, unsaved).saved);
    }
    EXPECT_TRUE(Read(m_bid, "BidNotes").isNull());
    const QString big = QStringLiteral("note \"quoted\" 'line'\n").repeated(50'000);
    EXPECT_TRUE(SaveNotes(Db(), m_bid, big).saved);
    notes = ShowNotes(Db(), m_bid);
    ASSERT_TRUE(notes.has_value());
    EXPECT_EQ(notes->txtToDoNotes, big);
    EXPECT_EQ(notes->lblToDoPriorNotes, QStringLiteral("Other Notes About sam"));
    EXPECT_EQ(notes->txtToDoPriorNotes, QStringLiteral("No other notes"));
}

TEST_F(TaskPanelsTest, SummariesCountThePartnersHistory) {
    struct Case {
        const char* name;
        SelectedItem item;
        bool sale;
        std::vector<std::pair<QString SummaryPanel::*, const char*>> labels;
    };
    const std::vector<Case> cases = {
        // 100, 101, 102 ("lamps" is "Lamps") and the forks of 201.
        {"a buyer's sales",
         m_sale,
         true,
         {{&SummaryPanel::frameTitle, "Bid Summary: #100 (Ended 01/02/20)"},
          {&SummaryPanel::lblSummaryPartner, "o'brien"},
          {&SummaryPanel::lblSummaryFeedback, "(12)"},
          {&SummaryPanel::lblSummaryHighBid, "$10.00"},
          {&SummaryPanel::lblSummaryReserveBid, "$5.00"},
          {&SummaryPanel::lblHistoryCaption, "Bidder History: o'brien"},
          {&SummaryPanel::lblHistoryCount, "4"},
          {&SummaryPanel::lblHistoryTotal, "$38.00"},
          {&SummaryPanel::lblFavoriteCaption, "Favorite Category"},
          {&SummaryPanel::lblFavorites, "Lamps"}}},
        {"a multi-winner winner",
         m_amy,
         true,
         {{&SummaryPanel::frameTitle, "Bid Summary: #200 (Ended 01/03/20)"},
          {&SummaryPanel::lblSummaryHighBid, "$2.00"},
          {&SummaryPanel::lblSummaryQuantity, "2"},
          {&SummaryPanel::lblHistoryCount, "1"},
          {&SummaryPanel::lblFavorites, "Kitchen"}}},
        {"a buyer with no history",
         SelectionFromRow(Side::Sales, QStringLiteral("105: Future"), QStringLiteral("105")),
         true,
         {{&SummaryPanel::lblHistoryCount, "0"},
          {&SummaryPanel::lblHistoryTotal, "$0.00"},
          {&SummaryPanel::lblFavoriteCaption, "Favorite Category"},
          {&SummaryPanel::lblFavorites, "None"}}},
        // 300, 301 and the user's own price of the share of 302: a three-way tie.
        {"a seller's bids",
         m_bid,
         false,
         {{&SummaryPanel::lblSummaryPartner, "sam"},
          {&SummaryPanel::lblSummaryFeedback, "(40)"},
          {&SummaryPanel::lblHistoryCaption, "History with sam"},
          {&SummaryPanel::lblHistoryCount, "3"},
          {&SummaryPanel::lblHistoryTotal, "$14.00"},
          {&SummaryPanel::lblFavoriteCaption, "Favorite Categories"},
          {&SummaryPanel::lblFavorites, "Books\nGames\nToys"}}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto panel = c.sale ? ShowSaleSummary(Db(), c.item) : ShowBidSummary(Db(), c.item);
        ASSERT_TRUE(panel.has_value());
        for (const auto& [label, text] : c.labels) {
            EXPECT_EQ((*panel).*label, QString::fromUtf8(text));
        }
    }

    struct Info {
        SelectedItem item;
        const char* title;
        const char* category;
        const char* itemTitle;
    };
    for (const Info& info : std::vector<Info>{
             {m_sale, "Item Information: #100", "Lamps", "Brass lamp"},
             {m_amy, "Item Information: #200 (Dutch Auction)", "Kitchen", "Spoons"},
             {SelectionFromRow(Side::Bids, QStringLiteral("301"), QStringLiteral("301")),
              "Item Information: #301", "Games", "Not applicable"},
             {SelectedItem{}, "No Pending Tasks", "Not applicable", "Not applicable"}}) {
        const ItemInfoPanel panel = ShowItemInfo(Db(), info.item);
        EXPECT_EQ(panel.frameTitle, QString::fromUtf8(info.title));
        EXPECT_EQ(panel.lblInfoCategory, QString::fromUtf8(info.category));
        EXPECT_EQ(panel.lblInfoTitle, QString::fromUtf8(info.itemTitle));
    }
}

// ------------------------------------------------------------ addresses

TEST_F(TaskPanelsTest, AddressRowsAreAddedThenEditedByTheirPartnersKey) {
    auto buyer = ShowBuyerAddress(Db(), m_sale);
    ASSERT_TRUE(buyer.has_value());
    EXPECT_EQ(buyer->frameTitle, QStringLiteral("Address for o'brien"));
    EXPECT_TRUE(buyer->boxes == AddressBoxes{});

    AddressBoxes boxes;
    boxes.txtAddressFirst = QStringLiteral("Pat");
    boxes.txtAddressLast = QStringLiteral("O'Brien");
    boxes.txtAddressCity = QStringLiteral("Dayton");
    boxes.txtAddressEmail = QStringLiteral("pat@example.org");
    for (int save = 0; save < 2; ++save) {
        const SaveOutcome outcome = SaveBuyerAddress(Db(), m_sale, boxes);
        EXPECT_TRUE(outcome.saved);
        EXPECT_EQ(outcome.selectNode, QStringLiteral("PRA"));
        boxes.txtAddressCity.clear();  // the second save edits the same row
    }
    EXPECT_EQ(Db().ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Buyers WHERE BuyerID = "
                                            "'o''brien' AND City IS NULL AND MiddleName IS NULL")),
              1);
    buyer = ShowBuyerAddress(Db(), m_sale);
    EXPECT_TRUE(buyer->boxes == boxes);

    // Sellers by the bid's seller; a winner of a multi-winner sale by his name.
    AddressBoxes seller;
    seller.txtAddressCompany = QStringLiteral("Sam & Sons");
    EXPECT_TRUE(SaveSellerAddress(Db(), m_bid, seller).saved);
    EXPECT_TRUE(ShowSellerAddress(Db(), m_bid)->boxes == seller);
    EXPECT_EQ(ShowSellerAddress(Db(), m_bid)->frameTitle, QStringLiteral("Address for sam"));
    EXPECT_TRUE(ShowBuyerAddress(Db(), m_amy)->boxes == AddressBoxes{});
    EXPECT_EQ(AddressStateText(QStringLiteral("oh")), QStringLiteral("OH"));
}

// ------------------------------------------------------------ mail tasks

TEST_F(TaskPanelsTest, MailTaskFindsTheMailInTheArchiveThenTheOutbox) {
    using Found = EmailTaskPanel::Found;
    const char* mail100 = "o'brien\nme@example.org\nYou won\nDear Pat,\n\nThanks.\n";
    const char* mail101 = "o'brien\nme@example.org\nBoth items\nTwo items.\n";
    struct File {
        bool archive;
        const char* name;
        const char* lines;
    };
    // What the panel shows of the mail found: subject and message.
    struct Shown {
        const char* subject;
        const char* message;
    };
    const Shown none = {"", ""};
    const Shown won = {"You won", "Dear Pat,\n\nThanks.\n"};
    const Shown both = {"Both items", "Two items.\n"};
    const char* stored = "01/06/20";
    const char* waiting = "Currently in Outbox";
    struct Case {
        const char* name;
        SelectedItem item;
        std::vector<File> files;
        Found found;
        Shown shown;
        const char* sentDate;
    };
    const std::vector<Case> cases = {
        {"no mail", m_sale, {}, Found::Nowhere, none, stored},
        {"sent", m_sale, {{true, "100CON.dat", mail100}}, Found::Archive, won, stored},
        {"the archive first",
         m_sale,
         {{true, "100CON.dat", mail100}, {false, "100CON.dat", mail101}},
         Found::Archive,
         won,
         stored},
        {"waiting", m_sale, {{false, "100CON.dat", mail100}}, Found::Outbox, won, waiting},
        {"a marker of a mail of several items",
         m_sale,
         {{false, "100CON.dat", "WITH ITEM#\n101\n"}, {false, "101CON.dat", mail101}},
         Found::Outbox,
         both,
         waiting},
        {"a marker in the archive",
         m_sale,
         {{true, "100CON.dat", "WITH ITEM#\n101\n"}, {true, "101CON.dat", mail101}},
         Found::Archive,
         both,
         stored},
        {"a marker never leads out of its folder",
         m_sale,
         {{false, "100CON.dat", "WITH ITEM#\n../../Archive/Emails/101\n"},
          {true, "101CON.dat", mail101}},
         Found::Nowhere,
         none,
         stored},
        {"a winner's mail by name",
         m_amy,
         {{false, "200DamyCON.dat", mail101}},
         Found::Outbox,
         both,
         waiting},
        {"a winner's mail by number and addressee",
         m_amy,
         {{true, "200D0CON.dat", "bob\n\nFor bob\n"}, {true, "200D1CON.dat", "amy\n\nFor amy\n"}},
         Found::Archive,
         {"For amy", ""},
         ""},
        {"another winner's mail is not this one's",
         m_bob,
         {{true, "200D1CON.dat", "amy\n\nFor amy\n"}},
         Found::Nowhere,
         none,
         ""}};
    Set(m_sale, {{"EmailEndOfAuction", 1}, {"EmailEndOfAuctionDate", stored}});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (const QString& folder : {OutboxMailFolder(), ArchiveMailFolder()}) {
            QDir(folder).removeRecursively();
        }
        for (const File& file : c.files) {
            WriteUserFile(file.archive ? ArchiveMailFolder() : OutboxMailFolder(),
                          QString::fromLatin1(file.name), file.lines);
        }
        const auto panel = ShowEmailTask(
            Db(), c.item, QStringLiteral("Congratulations"), QStringLiteral("CON"),
            QStringLiteral("Congratulations (winner)"), QStringLiteral("CON"),
            QStringLiteral("EmailEndOfAuction"), QStringLiteral("emailendofauctiondate"));
        ASSERT_TRUE(panel.has_value());
        EXPECT_EQ(panel->found, c.found);
        EXPECT_EQ(panel->frmShowMessage, c.found != Found::Nowhere);
        EXPECT_EQ(panel->txtEmailSubject, QString::fromUtf8(c.shown.subject));
        EXPECT_EQ(panel->txtEmailMessage, QString::fromUtf8(c.shown.message));
        EXPECT_EQ(panel->txtSentDate, QString::fromUtf8(c.sentDate));
        EXPECT_EQ(panel->cmdSaveEmailInfoEnabled, c.found != Found::Archive);
        // Only the plain sale is marked sent: its date box is open, and no
        // new mail is offered; otherwise one is while none is found.
        const bool sent = c.item.itemNumber == m_sale.itemNumber;
        EXPECT_EQ(panel->chkEmailSent2, sent);
        EXPECT_EQ(panel->txtSentDateEnabled, sent);
        EXPECT_EQ(panel->cmdComposeEmailEnabled, !sent && c.found == Found::Nowhere);
        EXPECT_EQ(panel->lblEmailKey, QStringLiteral("CON"));
        EXPECT_EQ(panel->frameTitle, u"Congratulations (#" + c.item.itemNumber + u')');
        EXPECT_EQ(panel->chkEmailSent2Caption, QStringLiteral("\"Congratulations\" Email Sent"));
    }
}

TEST_F(TaskPanelsTest, MailTaskSaveSetsTheMarksAndAClearedTaskDropsItsWaitingFile) {
    WriteUserFile(OutboxMailFolder(), QStringLiteral("100CON.dat"), "WITH ITEM#\n101\n");
    WriteUserFile(OutboxMailFolder(), QStringLiteral("101CON.dat"), "o'brien\n\nBoth\n");
    WriteUserFile(ArchiveMailFolder(), QStringLiteral("100CON.dat"), "o'brien\n\nOld\n");
    Set(m_sale, {{"EmailEndOfAuctionDate", "01/06/20"}});

    SaveOutcome outcome = SaveEmailTask(Db(), m_sale, QStringLiteral("CON"), true,
                                        QStringLiteral("Currently in Outbox"));
    EXPECT_EQ(outcome.removalCode, QStringLiteral("CON"));
    ExpectFields(m_sale, {{"EmailEndOfAuction", 1}, {"EmailEndOfAuctionDate", "01/06/20"}});
    EXPECT_TRUE(QFile::exists(QDir(OutboxMailFolder()).filePath(QStringLiteral("100CON.dat"))));

    outcome = SaveEmailTask(Db(), m_sale, QStringLiteral("CON"), false, QString());
    EXPECT_TRUE(outcome.saved);
    EXPECT_FALSE(outcome.removalCode.has_value());
    ExpectFields(m_sale, {{"EmailEndOfAuction", 0}, {"EmailEndOfAuctionDate", Null()}});
    // Only the item's own waiting file goes: not the main mail, not the archive.
    EXPECT_EQ(QDir(OutboxMailFolder()).entryList(QDir::Files),
              QStringList{QStringLiteral("101CON.dat")});
    EXPECT_TRUE(QFile::exists(QDir(ArchiveMailFolder()).filePath(QStringLiteral("100CON.dat"))));

    // A winner's file by number, on the bids side a bid's key.
    WriteUserFile(OutboxMailFolder(), QStringLiteral("200D3CON.dat"), "amy\n\nSpoons\n");
    EXPECT_TRUE(SaveEmailTask(Db(), m_amy, QStringLiteral("CON"), false, QString()).saved);
    EXPECT_FALSE(QFile::exists(QDir(OutboxMailFolder()).filePath(QStringLiteral("200D3CON.dat"))));
    EXPECT_EQ(SaveEmailTask(Db(), m_bid, QStringLiteral("IRE"), true, QStringLiteral("01/09/20"))
                  .removalCode,
              QStringLiteral("IRE"));
    ExpectFields(m_bid, {{"EmailItemReceived", 1}, {"EmailItemReceivedDate", "01/09/20"}});
}

TEST_F(TaskPanelsTest, EntryTaskShowsAndSavesItsDateAsMmDdYy) {
    Set(m_sale, {{"EmailBuyerReceived", 1}, {"EmailBuyerReceivedDate", "6/7/2020"}});
    const auto panel = ShowEntryTask(
        Db(), m_sale, QStringLiteral("Buyer Received Item"), QStringLiteral("SHR"),
        QStringLiteral("Arrived & safe"), QStringLiteral("Date told:"), QStringLiteral("Tick it."),
        QStringLiteral("EmailBuyerReceived"), QStringLiteral("EmailBuyerReceivedDate"));
    ASSERT_TRUE(panel.has_value());
    EXPECT_EQ(panel->lblKey, QStringLiteral("SHR"));
    EXPECT_EQ(panel->frameTitle, QStringLiteral("Buyer Received Item"));
    EXPECT_EQ(panel->chkEmailSentCaption, QStringLiteral("Arrived && safe"));
    EXPECT_EQ(panel->lblEmailSentDateCaption, QStringLiteral("Date told:"));
    EXPECT_EQ(panel->txtEmailSentInstructions, QStringLiteral("Tick it."));
    EXPECT_TRUE(panel->chkEmailSent && panel->txtEmailSentDateEnabled);
    EXPECT_EQ(panel->txtEmailSentDate, QStringLiteral("06/07/20"));

    for (const auto& [typed, shown] :
         std::vector<std::pair<const char*, const char*>>{{"060700", "06/07/00"},
                                                          {"6/7/2000", "06/07/00"},
                                                          {"June 7, 2000", "06/07/00"},
                                                          {"soon", "soon"},
                                                          {"", ""}}) {
        EXPECT_EQ(EntryDateText(QString::fromUtf8(typed)), QString::fromUtf8(shown)) << typed;
    }
    struct Case {
        bool ticked;
        const char* date;
        QVariant stored;
    };
    for (const Case& c : std::vector<Case>{{true, "070820", QStringLiteral("07/08/20")},
                                           {true, "7/8/2020", QStringLiteral("07/08/20")},
                                           {false, "", Null()}}) {
        const SaveOutcome outcome =
            SaveEntryTask(Db(), m_sale, QStringLiteral("SHR"), c.ticked, QString::fromUtf8(c.date));
        EXPECT_EQ(outcome.removalCode,
                  c.ticked ? std::optional(QStringLiteral("SHR")) : std::nullopt);
        ExpectFields(m_sale, {{"EmailBuyerReceived", c.ticked ? 1 : 0},
                              {"EmailBuyerReceivedDate", c.stored}});
    }
}

}  // namespace
