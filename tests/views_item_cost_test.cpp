// SPDX-License-Identifier: GPL-3.0-or-later
// The item cost figures of a sale: what the form is shown (Null as "$0.00"),
// which typed texts count as money, and what goes back to the row: amounts
// in "Currency", an emptied box as Null, the ShippingMethod mark of an
// emptied cost, only the user's own row, nothing at all for a bad box.
#include <gtest/gtest.h>

#include <QVariant>
#include <optional>
#include <ostream>
#include <stdexcept>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "views/item_cost.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

using lw::core::Database;
using lw::core::Statement;
using lw::views::ItemCostValues;

const QString kUser = QStringLiteral("Pat O'Brien");
const QString kOther = QStringLiteral("Other");

class ItemCostTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
    }
    void TearDown() override {
        lw::core::SetSettingsFolder(QString());
        lw::core::ResetSession();
    }

    void Sale(const QString& user, const QString& item, const QVariant& cost,
              const QVariant& shipping, const QVariant& insurance, const QVariant& method) {
        m_db->Prepare(QStringLiteral("INSERT INTO Auctions (UserName, ItemNumber, ItemCost, "
                                     "OrderShipping, InsuranceCost, ShippingMethod) VALUES "
                                     "(?, ?, ?, ?, ?, ?)"))
            .BindAll(user, item, cost, shipping, insurance, method)
            .Run();
    }
    QVariant Column(const QString& user, const QString& item, const QString& column) {
        Statement s = m_db->Prepare(
            QStringLiteral("SELECT * FROM Auctions WHERE UserName = ? AND ItemNumber = ?"));
        s.BindAll(user, item);
        if (!s.Step()) {
            return QStringLiteral("<no row>");
        }
        return s.Value(column);
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

}  // namespace

TEST_F(ItemCostTest, TheFormIsShownStoredValuesAndNullAsNoAmount) {
    Sale(kUser, QStringLiteral("1001"), QStringLiteral("$12.50"), QVariant(), QStringLiteral(""),
         QVariant());
    Sale(kOther, QStringLiteral("1002"), QStringLiteral("$1.00"), QStringLiteral("$2.00"),
         QStringLiteral("$3.00"), QVariant());

    const auto shown = lw::views::ReadItemCost(*m_db, kUser, QStringLiteral("1001"));
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->itemCost, QStringLiteral("$12.50"));
    EXPECT_EQ(shown->orderShipping, QStringLiteral("$0.00"));
    EXPECT_EQ(shown->insuranceCost, QStringLiteral("$0.00"));
    // A trailing blank in the number finds the row, as every comparison does.
    EXPECT_TRUE(lw::views::ReadItemCost(*m_db, kUser, QStringLiteral("1001 ")).has_value());
    // Another user's sale is not this user's.
    EXPECT_FALSE(lw::views::ReadItemCost(*m_db, kUser, QStringLiteral("1002")).has_value());
    EXPECT_FALSE(lw::views::ReadItemCost(*m_db, kUser, QStringLiteral("9999")).has_value());
}

TEST(ItemCostBoxes, MoneyIsAnAmountOrNothing) {
    for (const char* good : {"", "  ", "$4.50", "4.5", "1,200.00", "(3.00)", "0"}) {
        EXPECT_TRUE(lw::views::IsMoneyText(QString::fromLatin1(good))) << good;
    }
    for (const char* bad : {"abc", "4.50 dollars", "$", "1.2.3"}) {
        EXPECT_FALSE(lw::views::IsMoneyText(QString::fromLatin1(bad))) << bad;
    }
    EXPECT_EQ(
        lw::views::FirstBadBox({QStringLiteral("$1.00"), QStringLiteral("x"), QStringLiteral("y")}),
        1);
    EXPECT_EQ(lw::views::FirstBadBox({QStringLiteral("$1.00"), QString(), QStringLiteral("2")}),
              -1);
}

TEST_F(ItemCostTest, TypedAmountsGoBackInCurrencyAndEmptiedBoxesAsNull) {
    Sale(kUser, QStringLiteral("1001"), QStringLiteral("$1.00"), QStringLiteral("$2.00"),
         QStringLiteral("$3.00"), QStringLiteral("UPS"));
    Sale(kOther, QStringLiteral("1001"), QStringLiteral("$1.00"), QStringLiteral("$2.00"),
         QStringLiteral("$3.00"), QVariant());

    ASSERT_TRUE(
        lw::views::WriteItemCost(*m_db, kUser, QStringLiteral("1001"),
                                 {QStringLiteral("4.5"), QStringLiteral("1,200"), QString()}));
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
              QStringLiteral("$4.50"));
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("OrderShipping")).toString(),
              QStringLiteral("$1,200.00"));
    EXPECT_TRUE(Column(kUser, QStringLiteral("1001"), QStringLiteral("InsuranceCost")).isNull());
    // A cost was typed: the shipping method stays as it was.
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("ShippingMethod")).toString(),
              QStringLiteral("UPS"));
    // The other user's sale of the same number is left alone.
    EXPECT_EQ(Column(kOther, QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
              QStringLiteral("$1.00"));
    EXPECT_TRUE(Column(kOther, QStringLiteral("1001"), QStringLiteral("ShippingMethod")).isNull());

    // What is written reads back as the form shows it.
    const auto shown = lw::views::ReadItemCost(*m_db, kUser, QStringLiteral("1001"));
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->itemCost, QStringLiteral("$4.50"));
    EXPECT_EQ(shown->insuranceCost, QStringLiteral("$0.00"));
}

TEST_F(ItemCostTest, AnEmptiedCostMarksTheShippingMethod) {
    Sale(kUser, QStringLiteral("1001"), QStringLiteral("$1.00"), QVariant(), QVariant(),
         QVariant());
    ASSERT_TRUE(lw::views::WriteItemCost(
        *m_db, kUser, QStringLiteral("1001"),
        {QStringLiteral("  "), QStringLiteral("$5.00"), QStringLiteral("$0.75")}));
    EXPECT_TRUE(Column(kUser, QStringLiteral("1001"), QStringLiteral("ItemCost")).isNull());
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("ShippingMethod")).toString(),
              QStringLiteral("0.00"));
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("InsuranceCost")).toString(),
              QStringLiteral("$0.75"));
}

TEST_F(ItemCostTest, NoRowOrABadBoxWritesNothing) {
    Sale(kUser, QStringLiteral("1001"), QStringLiteral("$1.00"), QStringLiteral("$2.00"),
         QVariant(), QVariant());
    EXPECT_FALSE(lw::views::WriteItemCost(*m_db, kUser, QStringLiteral("9999"),
                                          {QStringLiteral("$1.00"), QString(), QString()}));
    EXPECT_THROW(
        lw::views::WriteItemCost(*m_db, kUser, QStringLiteral("1001"),
                                 {QStringLiteral("$9.00"), QStringLiteral("lots"), QString()}),
        std::invalid_argument);
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("ItemCost")).toString(),
              QStringLiteral("$1.00"));
    EXPECT_EQ(Column(kUser, QStringLiteral("1001"), QStringLiteral("OrderShipping")).toString(),
              QStringLiteral("$2.00"));
}
