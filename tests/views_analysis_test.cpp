// SPDX-License-Identifier: GPL-3.0-or-later
// The analysis page: frame titles, both sales sources, the bids grid, the
// ratio rows and their zero divisors, and the chart's years.
#include <gtest/gtest.h>

#include <QDate>
#include <QDateTime>
#include <QVariant>
#include <optional>
#include <ostream>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "views/analysis.h"

// Failures print texts, not code units.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

using lw::core::Database;
using lw::core::Statement;
using lw::views::AnalysisPage;
using lw::views::SalesSource;
using namespace lw::views;

const QString kUser = QStringLiteral("Mc'Gee");
const QString kSiteId = QStringLiteral("mcgee");

int ThisYear() {
    return QDate::currentDate().year();
}

// "mm/dd/yy" of a day in the year `back` years before this one.
QString Day(int month, int day, int back) {
    return QDate(ThisYear() - back, month, day).toString(QStringLiteral("MM/dd/yy"));
}

QString Ended(const QString& day) {
    return day + QStringLiteral(", 10:00:00 PST");
}

QString Month(int month, int back) {
    return QDate(ThisYear() - back, month, 1).toString(QStringLiteral("MMM yyyy"));
}

class AnalysisTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, kSiteId, QStringLiteral("pw"), QString()});
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    void Sale(const QString& item, const QString& endDate, const QString& high,
              const QString& reserve, const QString& bidder = QStringLiteral("buyer"),
              const QString& user = kUser) {
        Statement s = Db().Prepare(QStringLiteral(
            "INSERT INTO Auctions (UserName, ItemNumber, EndDate, HighBid, ReserveBid, "
            "HighBidderName, NumberBids) VALUES (?, ?, ?, ?, ?, ?, '1')"));
        s.BindAll(user, item, endDate, high, reserve, bidder).Run();
    }
    void Winner(const QString& item, const QString& bidder, const QString& price,
                const QString& quantity) {
        Statement s = Db().Prepare(QStringLiteral(
            "INSERT INTO Dutch (UserName, ItemNumber, HighBidderName, HighBid, Quantity) "
            "VALUES (?, ?, ?, ?, ?)"));
        s.BindAll(kUser, item, bidder, price, quantity).Run();
    }
    void Account(const QString& day, const QVariant& type, const QVariant& debit,
                 const QVariant& credit = QVariant(), const QVariant& sold = QVariant(),
                 const QString& user = kUser) {
        Statement s = Db().Prepare(QStringLiteral(
            "INSERT INTO AccountInfo (UserName, AccountDate, AccountType, Debit, Credit, "
            "SoldPrice) VALUES (?, ?, ?, ?, ?, ?)"));
        s.BindAll(user, day + QStringLiteral(" 10:00:00"), type, debit, credit, sold).Run();
    }
    void Bid(const QString& item, const QString& endDate, const QString& high, bool winning) {
        Statement s = Db().Prepare(
            QStringLiteral("INSERT INTO Bids (UserName, ItemNumber, EndDate, HighBid, Winning) "
                           "VALUES (?, ?, ?, ?, ?)"));
        s.BindAll(kUser, item, endDate, high, winning).Run();
    }

    // Sales over three years with an empty one between, a multi-winner sale,
    // unsold and current items, another user's sale, and account rows of
    // every kind.
    void History() {
        Sale(QStringLiteral("A"), Ended(Day(3, 10, 3)), QStringLiteral("$100.00"),
             QStringLiteral("$50.00"));
        Sale(QStringLiteral("B"), Ended(Day(6, 10, 3)), QStringLiteral("$20.00"),
             QStringLiteral("$30.00"));
        Sale(QStringLiteral("C"), Ended(Day(2, 1, 1)), QStringLiteral("$1,000.00"),
             QStringLiteral("-"));
        Sale(QStringLiteral("D"), Ended(Day(5, 5, 1)), QStringLiteral("$5.00"), QStringLiteral("-"),
             QStringLiteral("Dutch Auction"));
        Winner(QStringLiteral("D"), QStringLiteral("amy"), QStringLiteral("$2.00"),
               QStringLiteral("3"));
        Winner(QStringLiteral("D"), QStringLiteral("bo"), QStringLiteral("$2.50"),
               QStringLiteral("1"));
        const QString soon = QDate::currentDate().addDays(5).toString(QStringLiteral("MM/dd/yy"));
        Sale(QStringLiteral("F"), Ended(soon), QStringLiteral("$999.00"), QStringLiteral("-"));
        Sale(QStringLiteral("G"), Ended(Day(1, 1, 5)), QStringLiteral("$500.00"),
             QStringLiteral("-"), QStringLiteral("buyer"), QStringLiteral("Other"));

        const QString insertion = QStringLiteral("Insertion fee");
        Account(Day(3, 10, 3), insertion, QStringLiteral("$0.30"));
        Account(Day(3, 11, 3), insertion, QStringLiteral("$0.30"));
        Account(Day(2, 2, 1), QStringLiteral("Final Auction Value fee"), QStringLiteral("$25.00"),
                QVariant(), QStringLiteral("$1,000.00"));
        Account(Day(2, 3, 1), QStringLiteral("Featured fee"), QStringLiteral("$2.00"));
        Account(Day(2, 4, 1), QStringLiteral("Fee credit"), QVariant(), QStringLiteral("$1.50"));
        Account(Day(2, 5, 1), QStringLiteral("credit card payment"), QVariant(),
                QStringLiteral("$30.00"));
        Account(Day(1, 1, 4), insertion, QStringLiteral("$0.30"));
        Account(Day(1, 1, 6), insertion, QStringLiteral("$9.00"), QVariant(), QVariant(),
                QStringLiteral("Other"));
    }

    lw::test::ScriptedUi m_ui;
    lw::test::TempRoot m_root;
    std::optional<Database> m_db;
};

std::vector<int> Years(const AnalysisPage& page) {
    std::vector<int> years;
    for (const ChartRow& row : page.chart) {
        years.push_back(row.year);
    }
    return years;
}

const ChartRow& Year(const AnalysisPage& page, int back) {
    for (const ChartRow& row : page.chart) {
        if (row.year == ThisYear() - back) {
            return row;
        }
    }
    static const ChartRow none{};
    ADD_FAILURE() << "no chart row for " << ThisYear() - back;
    return none;
}

TEST(AnalysisCombo, OffersTheTwoSources) {
    EXPECT_EQ(AnalysisSources(), (QStringList{QStringLiteral("Time-comparative data"),
                                              QStringLiteral("All available sales data")}));
}

TEST_F(AnalysisTest, NothingRecordedGivesTitlesWithoutBeginningAndOnlyLabels) {
    for (const SalesSource source : {SalesSource::TimeComparative, SalesSource::AllSalesData}) {
        const AnalysisPage page = AnalysisRefresh(Db(), source);
        EXPECT_EQ(page.salesTitle, QStringLiteral("My Sales: No Beginning Date"));
        EXPECT_EQ(page.bidsTitle, QStringLiteral("My Bids: No Beginning Date"));
        EXPECT_EQ(page.sales[kTotalSales].label, QStringLiteral("Total Sales"));
        EXPECT_EQ(page.sales[kFeesOfSales].label, QStringLiteral("Fees as Percentage of Sales"));
        EXPECT_EQ(page.bids[kBidSuccessRate].label, QStringLiteral("Success Rate"));
        for (const AnalysisCell& cell : page.sales) {
            EXPECT_TRUE(cell.value.isEmpty()) << cell.label.toStdString();
        }
        for (const AnalysisCell& cell : page.bids) {
            EXPECT_TRUE(cell.value.isEmpty()) << cell.label.toStdString();
        }
        EXPECT_TRUE(page.bids[5].label.isEmpty());
        EXPECT_TRUE(page.chart.empty());
    }
}

TEST_F(AnalysisTest, TimeComparativeSalesCountPlainAndMultiWinnerSalesAndLaterFees) {
    History();
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    EXPECT_EQ(page.salesTitle,
              QStringLiteral("My Sales:  From 10 ") + Month(3, 3) + QStringLiteral(" on"));
    // A and C met their reserve; D's winners bought 3 at $2.00 and 1 at $2.50.
    EXPECT_EQ(page.sales[kTotalSales].value, QStringLiteral("$1,108.50"));
    EXPECT_EQ(page.sales[kSuccessfulAuctions].value, QStringLiteral("3"));
    EXPECT_EQ(page.sales[kAuctionsAttempted].value, QStringLiteral("4"));
    EXPECT_EQ(page.sales[kAverageSale].value, QStringLiteral("$369.50"));
    EXPECT_EQ(page.sales[kAuctionSuccessRate].value, QStringLiteral("75.0%"));
    // The fee on the first sale's own day is left out, so are card payments.
    EXPECT_EQ(page.sales[kInsertFees].value, QStringLiteral("$0.30"));
    EXPECT_EQ(page.sales[kFinalValueFees].value, QStringLiteral("$25.00"));
    EXPECT_EQ(page.sales[kOtherFees].value, QStringLiteral("$2.00"));
    EXPECT_EQ(page.sales[kCredits].value, QStringLiteral("$1.50"));
    EXPECT_EQ(page.sales[kTotalFees].value, QStringLiteral("$28.80"));
    EXPECT_EQ(page.sales[kAverageFee].value, QStringLiteral("$7.20"));
    EXPECT_EQ(page.sales[kFeesOfSales].value, QStringLiteral("2.6%"));

    // The empty year between two with sales stays, as do the years after.
    EXPECT_EQ(Years(page),
              (std::vector<int>{ThisYear() - 3, ThisYear() - 2, ThisYear() - 1, ThisYear()}));
    EXPECT_DOUBLE_EQ(Year(page, 3).sales, 100.0);
    EXPECT_DOUBLE_EQ(Year(page, 3).fees, 0.30);
    EXPECT_DOUBLE_EQ(Year(page, 2).sales, 0.0);
    EXPECT_DOUBLE_EQ(Year(page, 2).fees, 0.0);
    EXPECT_DOUBLE_EQ(Year(page, 1).sales, 1008.50);
    EXPECT_DOUBLE_EQ(Year(page, 1).fees, 28.50);
}

TEST_F(AnalysisTest, AllAvailableSalesDataReadsTheAccountStatement) {
    History();
    Account(Day(3, 1, 2), QStringLiteral("Refund"), QStringLiteral("(4.00)"));
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::AllSalesData);
    EXPECT_EQ(page.salesTitle,
              QStringLiteral("My Sales:  From 01 ") + Month(1, 4) + QStringLiteral(" on"));
    EXPECT_EQ(page.sales[kTotalSales].value, QStringLiteral("$1,000.00"));
    EXPECT_EQ(page.sales[kSuccessfulAuctions].value, QStringLiteral("1"));
    EXPECT_EQ(page.sales[kAuctionsAttempted].value, QStringLiteral("3"));
    EXPECT_EQ(page.sales[kAverageSale].value, QStringLiteral("$1,000.00"));
    EXPECT_EQ(page.sales[kAuctionSuccessRate].value, QStringLiteral("33.3%"));
    EXPECT_EQ(page.sales[kInsertFees].value, QStringLiteral("$0.90"));
    EXPECT_EQ(page.sales[kFinalValueFees].value, QStringLiteral("$25.00"));
    EXPECT_EQ(page.sales[kOtherFees].value, QStringLiteral("($2.00)"));
    EXPECT_EQ(page.sales[kCredits].value, QStringLiteral("$1.50"));
    EXPECT_EQ(page.sales[kTotalFees].value, QStringLiteral("$25.40"));
    EXPECT_EQ(page.sales[kFeesOfSales].value, QStringLiteral("2.5%"));

    EXPECT_EQ(Years(page).front(), ThisYear() - 4);
    EXPECT_DOUBLE_EQ(Year(page, 4).fees, 0.30);
    EXPECT_DOUBLE_EQ(Year(page, 3).fees, 0.60);
    // A negative fee counts by its size in the chart.
    EXPECT_DOUBLE_EQ(Year(page, 2).fees, 4.00);
    EXPECT_DOUBLE_EQ(Year(page, 1).sales, 1000.0);
    EXPECT_DOUBLE_EQ(Year(page, 1).fees, 28.50);
}

TEST_F(AnalysisTest, WithoutInsertionFeesNothingWasAttemptedAndTheRatesStayEmpty) {
    Account(Day(4, 1, 1), QStringLiteral("Final Auction Value fee"), QStringLiteral("$1.00"),
            QVariant(), QStringLiteral("$20.00"));
    Account(Day(4, 2, 1), QStringLiteral("Final Auction Value fee"), QStringLiteral("$2.00"),
            QVariant(), QStringLiteral("$40.00"));
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::AllSalesData);
    EXPECT_EQ(page.sales[kAuctionsAttempted].value, QStringLiteral("0"));
    EXPECT_EQ(page.sales[kSuccessfulAuctions].value, QStringLiteral("2"));
    EXPECT_TRUE(page.sales[kAuctionSuccessRate].value.isEmpty());
    EXPECT_TRUE(page.sales[kAverageFee].value.isEmpty());
    EXPECT_EQ(page.sales[kAverageSale].value, QStringLiteral("$30.00"));
    EXPECT_EQ(page.sales[kFeesOfSales].value, QStringLiteral("5.0%"));
}

TEST_F(AnalysisTest, AFirstSaleThisYearGivesOneChartRow) {
    Account(QDate::currentDate().toString(QStringLiteral("MM/dd/yy")),
            QStringLiteral("Final Auction Value fee"), QStringLiteral("$1.00"), QVariant(),
            QStringLiteral("$10.00"));
    const AnalysisPage fromAccount = AnalysisRefresh(Db(), SalesSource::AllSalesData);
    ASSERT_EQ(Years(fromAccount), std::vector<int>{ThisYear()});
    EXPECT_DOUBLE_EQ(fromAccount.chart[0].sales, 10.0);

    const QDate yesterday = QDate::currentDate().addDays(-1);
    if (yesterday.year() != ThisYear()) {
        GTEST_SKIP() << "no day of this year has ended yet";
    }
    Sale(QStringLiteral("1"), Ended(yesterday.toString(QStringLiteral("MM/dd/yy"))),
         QStringLiteral("$12.00"), QStringLiteral("-"));
    const AnalysisPage fromSales = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    ASSERT_EQ(Years(fromSales), std::vector<int>{ThisYear()});
    EXPECT_DOUBLE_EQ(fromSales.chart[0].sales, 12.0);
}

TEST_F(AnalysisTest, BidsCountWonBidsThatEnded) {
    Bid(QStringLiteral("1"), Ended(Day(4, 4, 2)), QStringLiteral("$40.00"), true);
    Bid(QStringLiteral("2"), Ended(Day(4, 5, 2)), QStringLiteral("$10.00"), false);
    Bid(QStringLiteral("3"), Ended(Day(7, 7, 1)), QStringLiteral("$60.00"), true);
    const QString soon = QDate::currentDate().addDays(3).toString(QStringLiteral("MM/dd/yy"));
    Bid(QStringLiteral("4"), Ended(soon), QStringLiteral("$500.00"), true);

    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    EXPECT_EQ(page.bidsTitle,
              QStringLiteral("My Bids:  From 04 ") + Month(4, 2) + QStringLiteral(" on"));
    EXPECT_EQ(page.bids[kTotalSpent].value, QStringLiteral("$100.00"));
    EXPECT_EQ(page.bids[kSuccessfulBids].value, QStringLiteral("2"));
    EXPECT_EQ(page.bids[kBidsAttempted].value, QStringLiteral("3"));
    EXPECT_EQ(page.bids[kAverageSpent].value, QStringLiteral("$50.00"));
    EXPECT_EQ(page.bids[kBidSuccessRate].value, QStringLiteral("66.7%"));
    EXPECT_TRUE(page.bids[5].value.isEmpty());
    EXPECT_EQ(page.salesTitle, QStringLiteral("My Sales: No Beginning Date"));

    EXPECT_EQ(Years(page).front(), ThisYear() - 2);
    EXPECT_DOUBLE_EQ(Year(page, 2).bids, 40.0);
    EXPECT_DOUBLE_EQ(Year(page, 1).bids, 60.0);
    EXPECT_DOUBLE_EQ(Year(page, 0).bids, 0.0);
}

TEST_F(AnalysisTest, AFirstDateBeyondThisYearStopsAfterTheTitle) {
    // "96" reads as 2096.
    Sale(QStringLiteral("1"), QStringLiteral("12/31/96, 10:00:00 PST"), QStringLiteral("$5.00"),
         QStringLiteral("-"));
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    EXPECT_EQ(page.salesTitle, QStringLiteral("My Sales:  From 31 Dec 2096 on"));
    EXPECT_TRUE(page.sales[kTotalSales].value.isEmpty());
    EXPECT_TRUE(page.sales[kAuctionsAttempted].value.isEmpty());
    EXPECT_TRUE(page.chart.empty());
}

}  // namespace
