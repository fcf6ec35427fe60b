// The "Auction Analysis" tab over views::AnalysisRefresh.
#include "ui/AuctionAnalysisTab.h"

#include "views/analysis.h"

namespace lw::ui {

AuctionAnalysisTab::AuctionAnalysisTab(QWidget* parent) : QWidget(parent) {}

AuctionAnalysisTab::~AuctionAnalysisTab() = default;

void AuctionAnalysisTab::AnalysisRefresh(core::Database& db) {
    m_db = &db;
}

QStringList AuctionAnalysisTab::ChartYears() const {
    return m_years;
}

void AuctionAnalysisTab::cmbAnalysisSource_Click(int) {}

void AuctionAnalysisTab::ShowPage(const views::AnalysisPage&) {}

void AuctionAnalysisTab::ShowChart(const views::AnalysisPage&) {}

}  // namespace lw::ui
