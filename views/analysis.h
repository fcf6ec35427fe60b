// SPDX-License-Identifier: GPL-3.0-or-later
// The "Auction Analysis" page as data: the sales grid, the bids grid, their
// frame titles and the chart rows by year, for the current user. The yearly
// figures come from one grouped query per sum over the saved analysis queries,
// never from one query per year. Nothing here draws, stores or writes.
#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <vector>

#include "core/store.h"

namespace lw::views {

// Rows of the source combo.
enum class SalesSource { TimeComparative = 0, AllSalesData = 1 };
// "Time-comparative data", "All available sales data".
QStringList AnalysisSources();

struct AnalysisCell {
    QString label;
    QString value;  // empty until a figure is written
};

// One year of the chart: sales, fees (absolute values) and money spent on bids.
struct ChartRow {
    int year = 0;
    double sales = 0;
    double fees = 0;
    double bids = 0;
};

// Rows of mfgMyAuctions.
enum SalesGridRow : int {
    kTotalSales = 0,
    kAverageSale,
    kSuccessfulAuctions,
    kAuctionsAttempted,
    kAuctionSuccessRate,
    kInsertFees,
    kFinalValueFees,
    kOtherFees,
    kCredits,
    kTotalFees,
    kAverageFee,
    kFeesOfSales,
    kSalesGridRows
};

// Rows of mfgMyBids; the sixth stays empty.
enum BidsGridRow : int {
    kTotalSpent = 0,
    kAverageSpent,
    kSuccessfulBids,
    kBidsAttempted,
    kBidSuccessRate,
    kBidsGridRows = 6
};

struct AnalysisPage {
    QString salesTitle;  // fmeMyAuctions
    QString bidsTitle;   // fmeMyBids
    std::array<AnalysisCell, kSalesGridRows> sales;
    std::array<AnalysisCell, kBidsGridRows> bids;
    // chtMyChart: one row per year up to this year, leading empty years left out.
    std::vector<ChartRow> chart;
};

// The whole page for the chosen source. Throws core::StoreError when the
// database fails.
AnalysisPage AnalysisRefresh(core::Database& db, SalesSource source);

// The steps of the refresh, for a window that shows them as they come.
// The labels of both grids, values empty.
AnalysisPage AnalysisLabels();
// One chart row for each year from 1994 to thisYear.
void AnalysisChartSetup(AnalysisPage& page, int thisYear);
// Sales figures from the account statement.
void AnalysisAccountData(core::Database& db, AnalysisPage& page);
// Sales figures from the sales themselves; fees after the first sale's end.
void AnalysisTimeComparativeData(core::Database& db, AnalysisPage& page);
void AnalysisBidData(core::Database& db, AnalysisPage& page);
// The ratio rows from the value texts; a zero divisor leaves its cell alone.
void AnalysisRatios(AnalysisPage& page);
// Drops the leading years whose three figures are all 0.
void AnalysisTrimChart(AnalysisPage& page);

}  // namespace lw::views
