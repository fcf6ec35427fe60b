// SPDX-License-Identifier: GPL-3.0-or-later
// The analysis page: frame titles, both sales sources, the bids grid, the
// ratio rows and their zero divisors, and the chart's years.
#include <gtest/gtest.h>

#include <QDate>
#include <QDateTime>
#include <QVariant>
#include <algorithm>
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
using namespace Qt::StringLiterals;

const QString kUser = u"Mc'Gee"_s;
const QString kSiteId = u"mcgee"_s;

int ThisYear() {
    return QDate::currentDate().year();
}

// "mm/dd/yy" of a day in the year `back` years before this one.
QString Day(int month, int day, int back) {
    return QDate(ThisYear() - back, month, day).toString(u"MM/dd/yy"_s);
}

QString Ended(const QString& day) {
    return day + u", 10:00:00 PST"_s;
}

QString Month(int month, int back) {
    return QDate(ThisYear() - back, month, 1).toString(u"MMM yyyy"_s);
}

class AnalysisTest : public ::testing::Test {
protected:
    void SetUp() override {
        const QString error = lw::test::StartProgramRoot(m_root, m_ui);
        ASSERT_TRUE(error.isEmpty()) << error.toStdString();
        m_db.emplace(lw::core::OpenOrCreateStore(lw::core::StorePath(), lw::test::SourceDir()));
        lw::core::AddUser(*m_db, {kUser, kSiteId, u"pw"_s, QString()});
        lw::core::SetCurrentUser(kUser);
    }
    void TearDown() override { lw::core::SetSettingsFolder(QString()); }

    Database& Db() { return *m_db; }

    void Sale(const QString& item, const QString& endDate, const QString& high,
              const QString& reserve, const QString& bidder = u"buyer"_s,
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
        s.BindAll(user, day + u" 10:00:00"_s, type, debit, credit, sold).Run();
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
        Sale(u"A"_s, Ended(Day(3, 10, 3)), u"$100.00"_s, u"$50.00"_s);
        Sale(u"B"_s, Ended(Day(6, 10, 3)), u"$20.00"_s, u"$30.00"_s);
        Sale(u"C"_s, Ended(Day(2, 1, 1)), u"$1,000.00"_s, u"-"_s);
        Sale(u"D"_s, Ended(Day(5, 5, 1)), u"$5.00"_s, u"-"_s, u"Dutch Auction"_s);
        Winner(u"D"_s, u"amy"_s, u"$2.00"_s, u"3"_s);
        Winner(u"D"_s, u"bo"_s, u"$2.50"_s, u"1"_s);
        const QString soon = QDate::currentDate().addDays(5).toString(u"MM/dd/yy"_s);
        Sale(u"F"_s, Ended(soon), u"$999.00"_s, u"-"_s);
        Sale(u"G"_s, Ended(Day(1, 1, 5)), u"$500.00"_s, u"-"_s, u"buyer"_s, u"Other"_s);

        const QString insertion = u"Insertion fee"_s;
        Account(Day(3, 10, 3), insertion, u"$0.30"_s);
        Account(Day(3, 11, 3), insertion, u"$0.30"_s);
        Account(Day(2, 2, 1), u"Final Auction Value fee"_s, u"$25.00"_s, QVariant(),
                u"$1,000.00"_s);
        Account(Day(2, 3, 1), u"Featured fee"_s, u"$2.00"_s);
        Account(Day(2, 4, 1), u"Fee credit"_s, QVariant(), u"$1.50"_s);
        Account(Day(2, 5, 1), u"credit card payment"_s, QVariant(), u"$30.00"_s);
        Account(Day(1, 1, 4), insertion, u"$0.30"_s);
        Account(Day(1, 1, 6), insertion, u"$9.00"_s, QVariant(), QVariant(), u"Other"_s);
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

// The chart's figures for the year `back` years before this one.
struct YearFigures {
    int back;
    double sales;
    double fees;
    double bids;
};

void ExpectChart(const AnalysisPage& page, std::initializer_list<YearFigures> years) {
    for (const YearFigures& expected : years) {
        SCOPED_TRACE(ThisYear() - expected.back);
        const auto row = std::find_if(page.chart.begin(), page.chart.end(), [&](const ChartRow& r) {
            return r.year == ThisYear() - expected.back;
        });
        ASSERT_NE(row, page.chart.end());
        EXPECT_DOUBLE_EQ(row->sales, expected.sales);
        EXPECT_DOUBLE_EQ(row->fees, expected.fees);
        EXPECT_DOUBLE_EQ(row->bids, expected.bids);
    }
}

// A grid's values, top row first.
template <size_t N>
QStringList Values(const std::array<AnalysisCell, N>& cells) {
    QStringList values;
    for (const AnalysisCell& cell : cells) {
        values << cell.value;
    }
    return values;
}

TEST(AnalysisCombo, OffersTheTwoSources) {
    EXPECT_EQ(AnalysisSources(),
              (QStringList{u"Time-comparative data"_s, u"All available sales data"_s}));
}

TEST_F(AnalysisTest, NothingRecordedGivesTitlesWithoutBeginningAndOnlyLabels) {
    for (const SalesSource source : {SalesSource::TimeComparative, SalesSource::AllSalesData}) {
        const AnalysisPage page = AnalysisRefresh(Db(), source);
        EXPECT_EQ(page.salesTitle, u"My Sales: No Beginning Date"_s);
        EXPECT_EQ(page.bidsTitle, u"My Bids: No Beginning Date"_s);
        EXPECT_EQ(page.sales[kTotalSales].label, u"Total Sales"_s);
        EXPECT_EQ(page.sales[kFeesOfSales].label, u"Fees as Percentage of Sales"_s);
        EXPECT_EQ(page.bids[kBidSuccessRate].label, u"Success Rate"_s);
        EXPECT_EQ(Values(page.sales), QStringList(kSalesGridRows, QString()));
        EXPECT_EQ(Values(page.bids), QStringList(kBidsGridRows, QString()));
        EXPECT_TRUE(page.bids[5].label.isEmpty());
        EXPECT_TRUE(page.chart.empty());
    }
}

TEST_F(AnalysisTest, TimeComparativeSalesCountPlainAndMultiWinnerSalesAndLaterFees) {
    History();
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    EXPECT_EQ(page.salesTitle, u"My Sales:  From 10 "_s + Month(3, 3) + u" on"_s);
    // A and C met their reserve; D's winners bought 3 at $2.00 and 1 at $2.50.
    // The fee on the first sale's own day is left out, so are card payments.
    EXPECT_EQ(Values(page.sales),
              (QStringList{// total, average, successful, attempted, success rate
                           u"$1,108.50"_s, u"$369.50"_s, u"3"_s, u"4"_s, u"75.0%"_s,
                           // insertion, final value, other, credits, total, average, of sales
                           u"$0.30"_s, u"$25.00"_s, u"$2.00"_s, u"$1.50"_s, u"$28.80"_s, u"$7.20"_s,
                           u"2.6%"_s}));

    // The empty year between two with sales stays, as do the years after.
    EXPECT_EQ(Years(page),
              (std::vector<int>{ThisYear() - 3, ThisYear() - 2, ThisYear() - 1, ThisYear()}));
    ExpectChart(page, {{3, 100, 0.30, 0}, {2, 0, 0, 0}, {1, 1008.50, 28.50, 0}});
}

TEST_F(AnalysisTest, AllAvailableSalesDataReadsTheAccountStatement) {
    History();
    Account(Day(3, 1, 2), u"Refund"_s, u"(4.00)"_s);
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::AllSalesData);
    EXPECT_EQ(page.salesTitle, u"My Sales:  From 01 "_s + Month(1, 4) + u" on"_s);
    // The refund outweighs the featured fee; the average fee is $25.40 / 3.
    EXPECT_EQ(Values(page.sales), (QStringList{u"$1,000.00"_s, u"$1,000.00"_s, u"1"_s, u"3"_s,
                                               u"33.3%"_s, u"$0.90"_s, u"$25.00"_s, u"($2.00)"_s,
                                               u"$1.50"_s, u"$25.40"_s, u"$8.47"_s, u"2.5%"_s}));

    EXPECT_EQ(Years(page).front(), ThisYear() - 4);
    // A negative fee counts by its size in the chart.
    ExpectChart(page, {{4, 0, 0.30, 0}, {3, 0, 0.60, 0}, {2, 0, 4.00, 0}, {1, 1000, 28.50, 0}});
}

TEST_F(AnalysisTest, WithoutInsertionFeesNothingWasAttemptedAndTheRatesStayEmpty) {
    Account(Day(4, 1, 1), u"Final Auction Value fee"_s, u"$1.00"_s, QVariant(), u"$20.00"_s);
    Account(Day(4, 2, 1), u"Final Auction Value fee"_s, u"$2.00"_s, QVariant(), u"$40.00"_s);
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::AllSalesData);
    EXPECT_EQ(page.sales[kAuctionsAttempted].value, u"0"_s);
    EXPECT_EQ(page.sales[kSuccessfulAuctions].value, u"2"_s);
    EXPECT_TRUE(page.sales[kAuctionSuccessRate].value.isEmpty());
    EXPECT_TRUE(page.sales[kAverageFee].value.isEmpty());
    EXPECT_EQ(page.sales[kAverageSale].value, u"$30.00"_s);
    EXPECT_EQ(page.sales[kFeesOfSales].value, u"5.0%"_s);
}

TEST_F(AnalysisTest, AFirstSaleThisYearGivesOneChartRow) {
    Account(QDate::currentDate().toString(u"MM/dd/yy"_s), u"Final Auction Value fee"_s, u"$1.00"_s,
            QVariant(), u"$10.00"_s);
    const AnalysisPage fromAccount = AnalysisRefresh(Db(), SalesSource::AllSalesData);
    ASSERT_EQ(Years(fromAccount), std::vector<int>{ThisYear()});
    EXPECT_DOUBLE_EQ(fromAccount.chart[0].sales, 10.0);

    const QDate yesterday = QDate::currentDate().addDays(-1);
    if (yesterday.year() != ThisYear()) {
        GTEST_SKIP() << "no day of this year has ended yet";
    }
    Sale(u"1"_s, Ended(yesterday.toString(u"MM/dd/yy"_s)), u"$12.00"_s, u"-"_s);
    const AnalysisPage fromSales = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    ASSERT_EQ(Years(fromSales), std::vector<int>{ThisYear()});
    EXPECT_DOUBLE_EQ(fromSales.chart[0].sales, 12.0);
}

TEST_F(AnalysisTest, BidsCountWonBidsThatEnded) {
    Bid(u"1"_s, Ended(Day(4, 4, 2)), u"$40.00"_s, true);
    Bid(u"2"_s, Ended(Day(4, 5, 2)), u"$10.00"_s, false);
    Bid(u"3"_s, Ended(Day(7, 7, 1)), u"$60.00"_s, true);
    const QString soon = QDate::currentDate().addDays(3).toString(u"MM/dd/yy"_s);
    Bid(u"4"_s, Ended(soon), u"$500.00"_s, true);

    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    EXPECT_EQ(page.bidsTitle, u"My Bids:  From 04 "_s + Month(4, 2) + u" on"_s);
    // Total, average, successful, attempted, success rate, and the empty row.
    EXPECT_EQ(Values(page.bids),
              (QStringList{u"$100.00"_s, u"$50.00"_s, u"2"_s, u"3"_s, u"66.7%"_s, QString()}));
    EXPECT_EQ(page.salesTitle, u"My Sales: No Beginning Date"_s);

    EXPECT_EQ(Years(page).front(), ThisYear() - 2);
    ExpectChart(page, {{2, 0, 0, 40}, {1, 0, 0, 60}, {0, 0, 0, 0}});
}

TEST_F(AnalysisTest, AFirstDateBeyondThisYearStopsAfterTheTitle) {
    // "96" reads as 2096.
    Sale(u"1"_s, u"12/31/96, 10:00:00 PST"_s, u"$5.00"_s, u"-"_s);
    const AnalysisPage page = AnalysisRefresh(Db(), SalesSource::TimeComparative);
    EXPECT_EQ(page.salesTitle, u"My Sales:  From 31 Dec 2096 on"_s);
    EXPECT_TRUE(page.sales[kTotalSales].value.isEmpty());
    EXPECT_TRUE(page.sales[kAuctionsAttempted].value.isEmpty());
    EXPECT_TRUE(page.chart.empty());
}

}  // namespace
