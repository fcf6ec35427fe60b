// SPDX-License-Identifier: GPL-3.0-or-later
// The content of the main window's "Auction Analysis" tab: the source combo
// lstAnalysis with its two rows, the sales grid mfgMyAuctions and the bids grid mfgMyBids
// in their frames fmeMyAuctions and fmeMyBids, and the chart chtMyChart with
// sales, fees and bids over the years. Every figure comes from
// views::AnalysisRefresh; the tab only shows it and never writes.
#pragma once

#include <QStringList>
#include <QWidget>

class QBarCategoryAxis;
class QChartView;
class QComboBox;
class QGroupBox;
class QTableWidget;
class QValueAxis;

namespace lw::core {
class Database;
}
namespace lw::views {
struct AnalysisPage;
}

namespace lw::ui {

class AuctionAnalysisTab : public QWidget {
    Q_OBJECT
public:
    explicit AuctionAnalysisTab(QWidget* parent = nullptr);
    ~AuctionAnalysisTab() override;

    // Reads the page afresh for the source in the combo and shows it. The
    // database is remembered so that a change of the combo refreshes too;
    // it must outlive the tab or the next call. A failed read leaves the
    // labels and blank values and says nothing, as the page always has.
    void AnalysisRefresh(core::Database& db);

    // The chart's years as shown, first to last (for a look from outside).
    QStringList ChartYears() const;

private Q_SLOTS:
    void lstAnalysis_Click(int index);

protected:
    void changeEvent(QEvent* event) override;

private:
    // The chart's own colours follow the window's: dark on a dark palette.
    void ApplyChartTheme();
    void ShowPage(const views::AnalysisPage& page);
    void ShowChart(const views::AnalysisPage& page);

    core::Database* m_db = nullptr;
    QComboBox* m_lstAnalysis = nullptr;
    QGroupBox* m_fmeMyAuctions = nullptr;
    QGroupBox* m_fmeMyBids = nullptr;
    QTableWidget* m_mfgMyAuctions = nullptr;
    QTableWidget* m_mfgMyBids = nullptr;
    QChartView* m_chtMyChart = nullptr;
    QStringList m_years;
    QBarCategoryAxis* m_yearAxis = nullptr;
    QValueAxis* m_amountAxis = nullptr;
};

}  // namespace lw::ui
