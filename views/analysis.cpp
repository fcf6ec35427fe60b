// SPDX-License-Identifier: GPL-3.0-or-later
// The analysis page. Each yearly figure is summed by one GROUP BY Year query
// over the saved analysis queries, reading the stored number columns (the
// number rule of every money text), from the year of the first record to
// this year. Years without rows count 0, as a sum over no rows does.
#include "views/analysis.h"

#include <QDate>
#include <QHash>
#include <cmath>
#include <optional>

#include "core/session.h"
#include "core/text.h"

namespace lw::views {

namespace {

using core::Database;
using core::Statement;

constexpr int kFirstChartYear = 1994;

QString Currency(double value) {
    return core::Format(value, QStringLiteral("Currency"));
}

QString Percent(double value) {
    return core::Format(value, QStringLiteral("0.0%"));
}

const QString& User() {
    return core::CurrentSession().CurrentUser;
}

// The first record of a source: its date text cut at the delimiter, and the
// date it names.
struct Beginning {
    QString text;
    std::optional<QDate> date;
};

// The user's first record is the one with the earliest day; rows whose date
// is no day come last.
std::optional<Beginning> FirstRecord(Database& db, const QString& sql, QChar delimiter) {
    Statement s = db.Prepare(sql);
    s.Bind(1, User());
    if (!s.Step() || s.IsNull(0)) {
        return std::nullopt;
    }
    const QString whole = s.Text(0);
    const qsizetype cut = whole.indexOf(delimiter);
    Beginning first;
    first.text = cut < 0 ? whole : whole.left(cut);
    first.date = core::CDate(first.text);
    return first;
}

QString FromTitle(const QString& who, const Beginning& first) {
    const QVariant value = first.date ? QVariant(*first.date) : QVariant(first.text);
    return who + QStringLiteral(":  From ") + core::Format(value, QStringLiteral("dd mmm yyyy")) +
           QStringLiteral(" on");
}

// The years the figures run over, when the first record's year is usable.
struct Years {
    int first = 0;
    int last = 0;
};

std::optional<Years> YearsFrom(const Beginning& first) {
    const int thisYear = QDate::currentDate().year();
    const int year = first.date ? first.date->year() : 0;
    if (year <= 0 || year > thisYear) {
        return std::nullopt;
    }
    return Years{year, thisYear};
}

// A frame's start: the title from the user's first record ("... No Beginning
// Date" when there is none) and the years its figures run over; nullopt when
// no year can be counted.
struct Frame {
    Beginning first;
    Years years;
};

std::optional<Frame> OpenFrame(Database& db, const QString& sql, QChar delimiter,
                               const QString& who, QString& title) {
    const auto first = FirstRecord(db, sql, delimiter);
    if (!first) {
        title = who + QStringLiteral(": No Beginning Date");
        return std::nullopt;
    }
    title = FromTitle(who, *first);
    const auto years = YearsFrom(*first);
    if (!years) {
        return std::nullopt;
    }
    return Frame{*first, *years};
}

ChartRow* ChartYear(AnalysisPage& page, int year) {
    for (ChartRow& row : page.chart) {
        if (row.year == year) {
            return &row;
        }
    }
    return nullptr;
}

// Year -> the sums of one grouped query, in its column order after Year.
QHash<int, std::vector<double>> YearlySums(Database& db, const QString& sql, const Years& years,
                                           const QString& afterDay = QString()) {
    Statement s = db.Prepare(sql);
    s.BindAll(User(), years.first, years.last);
    if (!afterDay.isNull()) {
        s.Bind(4, afterDay);
    }
    QHash<int, std::vector<double>> sums;
    while (s.Step()) {
        std::vector<double> row;
        for (int column = 1; column < s.ColumnCount(); ++column) {
            row.push_back(s.Value(column).toDouble());
        }
        sums.insert(static_cast<int>(s.Value(0).toLongLong()), row);
    }
    return sums;
}

// The account statement's fees by year, and with them its sales (SoldPrice of
// the final value rows). afterDay keeps only the rows dated after that day.
void AccountFigures(Database& db, AnalysisPage& page, const Years& years, bool withSales,
                    const QString& afterDay) {
    const QString sql = QStringLiteral(
                            "SELECT Year,"
                            " SUM(CASE WHEN AccountType = 'Final Auction Value fee'"
                            " THEN SoldPriceNum END),"
                            " SUM(CASE WHEN AccountType = 'Insertion fee' THEN DebitNum END),"
                            " SUM(CASE WHEN AccountType = 'Final Auction Value fee'"
                            " THEN DebitNum END),"
                            " SUM(CASE WHEN NOT (AccountType = 'Insertion fee')"
                            " AND AccountType <> 'Final Auction Value fee' THEN DebitNum END),"
                            " SUM(CASE WHEN AccountType NOT LIKE '%Credit Card%'"
                            " THEN CreditNum END)"
                            " FROM \"AccountInfo Query\""
                            " WHERE UserName = ?1 AND Year BETWEEN ?2 AND ?3") +
                        (afterDay.isNull() ? QString() : QStringLiteral(" AND Day > ?4")) +
                        QStringLiteral(" GROUP BY Year");
    const auto sums = YearlySums(db, sql, years, afterDay);
    double sales = 0;
    std::array<double, 4> fees{};
    for (int year = years.first; year <= years.last; ++year) {
        const std::vector<double> row = sums.value(year, std::vector<double>(5, 0.0));
        ChartRow* chart = ChartYear(page, year);
        if (withSales) {
            sales += row[0];
            if (chart != nullptr) {
                chart->sales = row[0];
            }
        }
        for (size_t fee = 0; fee < fees.size(); ++fee) {
            fees[fee] += row[fee + 1];
            if (chart != nullptr) {
                chart->fees += std::fabs(row[fee + 1]);
            }
        }
    }
    if (withSales) {
        page.sales[kTotalSales].value = Currency(sales);
    }
    page.sales[kInsertFees].value = Currency(fees[0]);
    page.sales[kFinalValueFees].value = Currency(fees[1]);
    page.sales[kOtherFees].value = Currency(fees[2]);
    page.sales[kCredits].value = Currency(fees[3]);
    page.sales[kTotalFees].value = Currency(fees[0] + fees[1] + fees[2] + fees[3]);
}

std::pair<qint64, qint64> Counts(Database& db, const QString& sql) {
    Statement s = db.Prepare(sql);
    s.Bind(1, User());
    if (!s.Step()) {
        return {0, 0};
    }
    return {s.Value(0).toLongLong(), s.Value(1).toLongLong()};
}

}  // namespace

QStringList AnalysisSources() {
    return {QStringLiteral("Time-comparative data"), QStringLiteral("All available sales data")};
}

AnalysisPage AnalysisLabels() {
    AnalysisPage page;
    const char* sales[] = {"Total Sales",
                           "Average Sale",
                           "Successful Auctions",
                           "Auctions Attempted",
                           "Success Rate",
                           "Auction Insert Fees",
                           "Final Auction Value Fees",
                           "Other Auction Fees",
                           "Auction Credits",
                           "Total Auction Fees",
                           "Average Auction Fee",
                           "Fees as Percentage of Sales"};
    for (size_t row = 0; row < page.sales.size(); ++row) {
        page.sales[row].label = QString::fromLatin1(sales[row]);
    }
    const char* bids[] = {"Total Spent",    "Average Spent", "Successful Bids",
                          "Bids Attempted", "Success Rate",  ""};
    for (size_t row = 0; row < page.bids.size(); ++row) {
        page.bids[row].label = QString::fromLatin1(bids[row]);
    }
    return page;
}

void AnalysisChartSetup(AnalysisPage& page, int thisYear) {
    page.chart.clear();
    for (int year = kFirstChartYear; year <= thisYear; ++year) {
        page.chart.push_back(ChartRow{year, 0, 0, 0});
    }
}

void AnalysisAccountData(Database& db, AnalysisPage& page) {
    const auto frame =
        OpenFrame(db,
                  QStringLiteral("SELECT AccountDate FROM AccountInfo WHERE UserName = ?"
                                 " ORDER BY AccountDay IS NULL, AccountDay, rowid LIMIT 1"),
                  u' ', QStringLiteral("My Sales"), page.salesTitle);
    if (!frame) {
        return;
    }
    const Years& years = frame->years;
    AccountFigures(db, page, years, true, QString());
    const auto [successful, attempted] = Counts(
        db, QStringLiteral("SELECT COUNT(CASE WHEN AccountType = 'Final Auction Value fee'"
                           " THEN 1 END), COUNT(CASE WHEN AccountType = 'Insertion fee' THEN 1 END)"
                           " FROM AccountInfo WHERE UserName = ?"));
    page.sales[kSuccessfulAuctions].value = QString::number(successful);
    page.sales[kAuctionsAttempted].value = QString::number(attempted);
}

void AnalysisTimeComparativeData(Database& db, AnalysisPage& page) {
    const auto frame = OpenFrame(db,
                                 QStringLiteral("SELECT EndDate FROM Auctions WHERE UserName = ?"
                                                " ORDER BY EndDay IS NULL, EndDay, rowid LIMIT 1"),
                                 u',', QStringLiteral("My Sales"), page.salesTitle);
    if (!frame) {
        return;
    }
    const Years& years = frame->years;
    // Plain sales that met their reserve, and each winner of a multi-winner
    // sale at price times quantity.
    const auto plain =
        YearlySums(db,
                   QStringLiteral("SELECT Year, SUM(HighBidNum) FROM \"Auctions Query\""
                                  " WHERE UserName = ?1 AND Year BETWEEN ?2 AND ?3 GROUP BY Year"),
                   years);
    const auto dutch =
        YearlySums(db,
                   QStringLiteral("SELECT Year, SUM(HighBidTotal) FROM \"Dutch Query\""
                                  " WHERE UserName = ?1 AND Year BETWEEN ?2 AND ?3 GROUP BY Year"),
                   years);
    double sales = 0;
    for (int year = years.first; year <= years.last; ++year) {
        const double yearly = plain.value(year, {0.0})[0] + dutch.value(year, {0.0})[0];
        sales += yearly;
        if (ChartRow* chart = ChartYear(page, year)) {
            chart->sales = yearly;
        }
    }
    page.sales[kTotalSales].value = Currency(sales);

    AccountFigures(db, page, years, false, frame->first.date->toString(Qt::ISODate));

    const auto [successful, attempted] = Counts(
        db, QStringLiteral("SELECT COUNT(CASE WHEN HighBidNum >= ReserveBidNum AND HighBidNum > 0"
                           " THEN 1 END), COUNT(*) FROM Auctions WHERE UserName = ?"
                           " AND EndDay < date('now', 'localtime')"));
    page.sales[kSuccessfulAuctions].value = QString::number(successful);
    page.sales[kAuctionsAttempted].value = QString::number(attempted);
}

void AnalysisBidData(Database& db, AnalysisPage& page) {
    const auto frame = OpenFrame(db,
                                 QStringLiteral("SELECT EndDate FROM Bids WHERE UserName = ?"
                                                " ORDER BY EndDay IS NULL, EndDay, rowid LIMIT 1"),
                                 u',', QStringLiteral("My Bids"), page.bidsTitle);
    if (!frame) {
        return;
    }
    const Years& years = frame->years;
    const auto won =
        YearlySums(db,
                   QStringLiteral("SELECT Year, SUM(HighBidNum) FROM \"Bids Query\""
                                  " WHERE UserName = ?1 AND Winning <> 0 AND Year BETWEEN ?2 AND ?3"
                                  " GROUP BY Year"),
                   years);
    double spent = 0;
    for (int year = years.first; year <= years.last; ++year) {
        const double yearly = won.value(year, {0.0})[0];
        spent += yearly;
        if (ChartRow* chart = ChartYear(page, year)) {
            chart->bids = yearly;
        }
    }
    page.bids[kTotalSpent].value = Currency(spent);
    const auto [successful, attempted] = Counts(
        db, QStringLiteral("SELECT COUNT(CASE WHEN Winning <> 0 THEN 1 END), COUNT(*) FROM Bids"
                           " WHERE UserName = ? AND EndDay < date('now', 'localtime')"));
    page.bids[kSuccessfulBids].value = QString::number(successful);
    page.bids[kBidsAttempted].value = QString::number(attempted);
}

void AnalysisRatios(AnalysisPage& page) {
    auto sale = [&page](int row) { return core::NumberRule(page.sales[row].value); };
    auto bid = [&page](int row) { return core::NumberRule(page.bids[row].value); };
    if (sale(kSuccessfulAuctions) != 0) {
        page.sales[kAverageSale].value = Currency(sale(kTotalSales) / sale(kSuccessfulAuctions));
    }
    if (sale(kAuctionsAttempted) != 0) {
        page.sales[kAuctionSuccessRate].value =
            Percent(sale(kSuccessfulAuctions) / sale(kAuctionsAttempted));
        page.sales[kAverageFee].value = Currency(sale(kTotalFees) / sale(kAuctionsAttempted));
    }
    if (sale(kTotalSales) != 0) {
        page.sales[kFeesOfSales].value = Percent(std::fabs(sale(kTotalFees) / sale(kTotalSales)));
    }
    if (bid(kSuccessfulBids) != 0) {
        page.bids[kAverageSpent].value = Currency(bid(kTotalSpent) / bid(kSuccessfulBids));
    }
    if (bid(kBidsAttempted) != 0) {
        page.bids[kBidSuccessRate].value = Percent(bid(kSuccessfulBids) / bid(kBidsAttempted));
    }
}

void AnalysisTrimChart(AnalysisPage& page) {
    size_t leading = 0;
    while (leading < page.chart.size()) {
        const ChartRow& row = page.chart[leading];
        if (row.sales != 0 || row.fees != 0 || row.bids != 0) {
            break;
        }
        ++leading;
    }
    page.chart.erase(page.chart.begin(), page.chart.begin() + static_cast<std::ptrdiff_t>(leading));
}

AnalysisPage AnalysisRefresh(Database& db, SalesSource source) {
    AnalysisPage page = AnalysisLabels();
    AnalysisChartSetup(page, QDate::currentDate().year());
    if (source == SalesSource::AllSalesData) {
        AnalysisAccountData(db, page);
    } else {
        AnalysisTimeComparativeData(db, page);
    }
    AnalysisBidData(db, page);
    AnalysisRatios(page);
    AnalysisTrimChart(page);
    return page;
}

}  // namespace lw::views
