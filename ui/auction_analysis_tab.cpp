// SPDX-License-Identifier: GPL-3.0-or-later
// The "Auction Analysis" tab over views::AnalysisRefresh: the figures are
// the page's own texts, put into the cells as they come; the chart draws the
// page's yearly rows as three bar series. Nothing here computes a figure.
#include "ui/auction_analysis_tab.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QValueAxis>
#include <algorithm>
#include <exception>

#include "core/store.h"
#include "ui/readable_colour.h"
#include "views/analysis.h"

namespace lw::ui {

namespace {

QTableWidget* Grid(const QString& name, int rows, QWidget* parent) {
    auto* grid = new QTableWidget(rows, 2, parent);
    grid->setObjectName(name);
    grid->horizontalHeader()->hide();
    grid->verticalHeader()->hide();
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionMode(QAbstractItemView::NoSelection);
    grid->setFocusPolicy(Qt::NoFocus);
    grid->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    grid->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    grid->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return grid;
}

template <size_t N>
void FillGrid(QTableWidget* grid, const std::array<views::AnalysisCell, N>& cells) {
    for (size_t i = 0; i < N; ++i) {
        const int row = static_cast<int>(i);
        grid->setItem(row, 0, new QTableWidgetItem(cells[i].label));
        auto* value = new QTableWidgetItem(cells[i].value);
        value->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        grid->setItem(row, 1, value);
    }
}

// Tall enough for every row without a scroll bar.
void FitRows(QTableWidget* grid) {
    int height = 2 * grid->frameWidth();
    for (int row = 0; row < grid->rowCount(); ++row) {
        height += grid->rowHeight(row);
    }
    grid->setMinimumHeight(height);
}

}  // namespace

AuctionAnalysisTab::AuctionAnalysisTab(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("AuctionAnalysisTab"));

    m_lstAnalysis = new QComboBox(this);
    m_lstAnalysis->setObjectName(QStringLiteral("lstAnalysis"));
    m_lstAnalysis->addItems(views::AnalysisSources());
    m_lstAnalysis->setCurrentIndex(static_cast<int>(views::SalesSource::TimeComparative));
    m_lstAnalysis->setAccessibleName(QStringLiteral("Sales figures from"));

    m_fmeMyAuctions = new QGroupBox(this);
    m_fmeMyAuctions->setObjectName(QStringLiteral("fmeMyAuctions"));
    // The frames' titles are the page's figures' headings, not captions.
    m_fmeMyAuctions->setProperty("titleFromData", true);
    m_mfgMyAuctions = Grid(QStringLiteral("mfgMyAuctions"), views::kSalesGridRows, m_fmeMyAuctions);
    auto* sales = new QVBoxLayout(m_fmeMyAuctions);
    sales->addWidget(m_lstAnalysis);
    sales->addWidget(m_mfgMyAuctions);

    m_fmeMyBids = new QGroupBox(this);
    m_fmeMyBids->setObjectName(QStringLiteral("fmeMyBids"));
    m_fmeMyBids->setProperty("titleFromData", true);
    m_mfgMyBids = Grid(QStringLiteral("mfgMyBids"), views::kBidsGridRows, m_fmeMyBids);
    auto* bids = new QVBoxLayout(m_fmeMyBids);
    bids->addWidget(m_mfgMyBids);
    bids->addStretch(1);

    m_chtMyChart = new QChartView(new QChart, this);
    m_chtMyChart->setObjectName(QStringLiteral("chtMyChart"));
    m_chtMyChart->setAccessibleName(QStringLiteral("Sales, fees and bids by year"));
    m_chtMyChart->setRenderHint(QPainter::Antialiasing);
    m_chtMyChart->setMinimumSize(320, 240);
    QChart* chart = m_chtMyChart->chart();
    m_yearAxis = new QBarCategoryAxis(chart);
    chart->addAxis(m_yearAxis, Qt::AlignBottom);
    m_amountAxis = new QValueAxis(chart);
    m_amountAxis->setLabelFormat(QStringLiteral("$%.0f"));
    chart->addAxis(m_amountAxis, Qt::AlignLeft);
    chart->legend()->setAlignment(Qt::AlignBottom);
    ApplyChartTheme();

    auto* grids = new QVBoxLayout;
    grids->addWidget(m_fmeMyAuctions);
    grids->addWidget(m_fmeMyBids);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(grids);
    layout->addWidget(m_chtMyChart, 1);

    ShowPage(views::AnalysisLabels());
    FitRows(m_mfgMyAuctions);
    FitRows(m_mfgMyBids);

    connect(m_lstAnalysis, &QComboBox::currentIndexChanged, this,
            &AuctionAnalysisTab::lstAnalysis_Click);
}

AuctionAnalysisTab::~AuctionAnalysisTab() = default;

void AuctionAnalysisTab::AnalysisRefresh(core::Database& db) {
    m_db = &db;
    const auto source = m_lstAnalysis->currentIndex() == 1 ? views::SalesSource::AllSalesData
                                                           : views::SalesSource::TimeComparative;
    // The combo waits while its source is read.
    m_lstAnalysis->setEnabled(false);
    views::AnalysisPage page;
    bool read = false;
    try {
        page = views::AnalysisRefresh(db, source);
        read = true;
    } catch (const std::exception&) {
        // The page says nothing when it cannot read: labels and blank values.
    }
    m_lstAnalysis->setEnabled(true);
    ShowPage(read ? page : views::AnalysisLabels());
}

void AuctionAnalysisTab::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        ApplyChartTheme();
    }
}

void AuctionAnalysisTab::ApplyChartTheme() {
    QChart* chart = m_chtMyChart->chart();
    const QChart::ChartTheme theme = IsDarkBackground(palette().color(QPalette::Window))
                                         ? QChart::ChartThemeDark
                                         : QChart::ChartThemeLight;
    if (chart->theme() != theme) {
        chart->setTheme(theme);
    }
}

QStringList AuctionAnalysisTab::ChartYears() const {
    return m_years;
}

void AuctionAnalysisTab::lstAnalysis_Click(int) {
    if (m_db != nullptr) {
        AnalysisRefresh(*m_db);
    }
}

void AuctionAnalysisTab::ShowPage(const views::AnalysisPage& page) {
    m_fmeMyAuctions->setTitle(page.salesTitle);
    m_fmeMyBids->setTitle(page.bidsTitle);
    FillGrid(m_mfgMyAuctions, page.sales);
    FillGrid(m_mfgMyBids, page.bids);
    ShowChart(page);
}

void AuctionAnalysisTab::ShowChart(const views::AnalysisPage& page) {
    QChart* chart = m_chtMyChart->chart();
    chart->removeAllSeries();
    m_years.clear();

    auto* sales = new QBarSet(QStringLiteral("Sales"));
    auto* fees = new QBarSet(QStringLiteral("Fees"));
    auto* spent = new QBarSet(QStringLiteral("Bids"));
    double top = 0;
    for (const views::ChartRow& row : page.chart) {
        m_years << QString::number(row.year);
        *sales << row.sales;
        *fees << row.fees;
        *spent << row.bids;
        top = std::max({top, row.sales, row.fees, row.bids});
    }
    auto* series = new QBarSeries;
    series->setObjectName(QStringLiteral("chtMyChartSeries"));
    series->append(sales);
    series->append(fees);
    series->append(spent);
    chart->addSeries(series);

    // The two axes live as long as the chart: an axis taken off a chart that
    // was never shown leaves its labels painted under the new one.
    m_yearAxis->setCategories(m_years);
    m_amountAxis->setRange(0, top > 0 ? top * 1.1 : 1.0);
    m_amountAxis->applyNiceNumbers();
    series->attachAxis(m_yearAxis);
    series->attachAxis(m_amountAxis);
}

}  // namespace lw::ui
