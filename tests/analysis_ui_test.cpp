// SPDX-License-Identifier: GPL-3.0-or-later
// The "Auction Analysis" tab on the offscreen platform: the two rows of the
// source combo, the frame titles, both grids with their labels and figures,
// the chart's three series over the years with the leading empty ones left
// out, a change of the combo reading the other source, and a database that
// cannot be read leaving labels and blank values without a word.
#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QDate>
#include <QGroupBox>
#include <QTableWidget>
#include <QtTest>
#include <memory>
#include <optional>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tests/support/test_support.h"
#include "tests/support/window_test.h"
#include "ui/auction_analysis_tab.h"
#include "views/analysis.h"

using namespace lw;

using lw::test::Named;

namespace {

const QString kUser = QStringLiteral("Mc'Gee");

int ThisYear() {
    return QDate::currentDate().year();
}

// "mm/dd/yy" of a day `back` years before this one.
QString Day(int month, int day, int back) {
    return QDate(ThisYear() - back, month, day).toString(QStringLiteral("MM/dd/yy"));
}

QStringList Column(QTableWidget* grid, int column) {
    QStringList texts;
    for (int row = 0; row < grid->rowCount(); ++row) {
        QTableWidgetItem* item = grid->item(row, column);
        texts << (item ? item->text() : QString());
    }
    return texts;
}

QBarSeries* ChartSeries(QWidget* tab) {
    QChart* chart = Named<QChartView>(tab, QStringLiteral("chtMyChart"))->chart();
    if (chart->series().size() != 1) {
        qFatal("the chart should hold one bar series");
    }
    return qobject_cast<QBarSeries*>(chart->series().first());
}

QStringList AxisYears(QWidget* tab) {
    QChart* chart = Named<QChartView>(tab, QStringLiteral("chtMyChart"))->chart();
    for (QAbstractAxis* axis : chart->axes(Qt::Horizontal)) {
        if (auto* years = qobject_cast<QBarCategoryAxis*>(axis)) {
            return years->categories();
        }
    }
    return {QStringLiteral("<no year axis>")};
}

QList<double> Values(QBarSet* set) {
    QList<double> values;
    for (int i = 0; i < set->count(); ++i) {
        values << set->at(i);
    }
    return values;
}

}  // namespace

class AnalysisTabTest : public QObject {
    Q_OBJECT

private:
    void Sale(const QString& item, const QString& day, const QString& high) {
        m_db->Prepare(QStringLiteral("INSERT INTO Auctions (UserName, ItemNumber, EndDate, "
                                     "HighBid, ReserveBid, HighBidderName, NumberBids) VALUES "
                                     "(?, ?, ?, ?, '-', 'buyer', '1')"))
            .BindAll(kUser, item, day + QStringLiteral(", 10:00:00 PST"), high)
            .Run();
    }
    void Bid(const QString& item, const QString& day, const QString& high) {
        m_db->Prepare(QStringLiteral("INSERT INTO Bids (UserName, ItemNumber, EndDate, HighBid, "
                                     "Winning) VALUES (?, ?, ?, ?, 1)"))
            .BindAll(kUser, item, day + QStringLiteral(", 10:00:00 PST"), high)
            .Run();
    }
    void Account(const QString& day, const QString& type, const QVariant& debit,
                 const QVariant& sold) {
        m_db->Prepare(QStringLiteral("INSERT INTO AccountInfo (UserName, AccountDate, "
                                     "AccountType, Debit, SoldPrice) VALUES (?, ?, ?, ?, ?)"))
            .BindAll(kUser, day + QStringLiteral(" 10:00:00"), type, debit, sold)
            .Run();
    }
    // What the tab shows must be the page the views give, cell for cell.
    void ExpectPageShown(QWidget* tab, views::SalesSource source) {
        const views::AnalysisPage page = views::AnalysisRefresh(*m_db, source);
        QCOMPARE(Named<QGroupBox>(tab, QStringLiteral("fmeMyAuctions"))->title(), page.salesTitle);
        QCOMPARE(Named<QGroupBox>(tab, QStringLiteral("fmeMyBids"))->title(), page.bidsTitle);
        auto* sales = Named<QTableWidget>(tab, QStringLiteral("mfgMyAuctions"));
        auto* bids = Named<QTableWidget>(tab, QStringLiteral("mfgMyBids"));
        for (size_t row = 0; row < page.sales.size(); ++row) {
            QCOMPARE(sales->item(int(row), 1)->text(), page.sales[row].value);
        }
        for (size_t row = 0; row < page.bids.size(); ++row) {
            QCOMPARE(bids->item(int(row), 1)->text(), page.bids[row].value);
        }
        QStringList years;
        for (const views::ChartRow& row : page.chart) {
            years << QString::number(row.year);
        }
        QCOMPARE(AxisYears(tab), years);
    }

    std::unique_ptr<test::TempRoot> m_root;
    std::unique_ptr<test::ScriptedUi> m_ui;
    std::optional<core::Database> m_db;

private Q_SLOTS:
    void init() {
        m_root = std::make_unique<test::TempRoot>();
        m_ui = std::make_unique<test::ScriptedUi>();
        m_db.emplace(test::StartUserStore(*m_root, *m_ui, kUser, QStringLiteral("mcgee")));
    }
    void cleanup() {
        m_db.reset();
        test::EndProgramRoot(m_ui, m_root);
    }

    void anEmptyDatabaseShowsLabelsAndNoBeginning() {
        ui::AuctionAnalysisTab tab;
        auto* combo = Named<QComboBox>(&tab, QStringLiteral("lstAnalysis"));
        QCOMPARE(combo->count(), 2);
        QCOMPARE(combo->itemText(0), QStringLiteral("Time-comparative data"));
        QCOMPARE(combo->itemText(1), QStringLiteral("All available sales data"));
        QCOMPARE(combo->currentIndex(), 0);

        tab.AnalysisRefresh(*m_db);
        QCOMPARE(Named<QGroupBox>(&tab, QStringLiteral("fmeMyAuctions"))->title(),
                 QStringLiteral("My Sales: No Beginning Date"));
        QCOMPARE(Named<QGroupBox>(&tab, QStringLiteral("fmeMyBids"))->title(),
                 QStringLiteral("My Bids: No Beginning Date"));
        auto* sales = Named<QTableWidget>(&tab, QStringLiteral("mfgMyAuctions"));
        auto* bids = Named<QTableWidget>(&tab, QStringLiteral("mfgMyBids"));
        QCOMPARE(sales->rowCount(), 12);
        QCOMPARE(sales->columnCount(), 2);
        QCOMPARE(bids->rowCount(), 6);
        QCOMPARE(Column(sales, 0).first(), QStringLiteral("Total Sales"));
        QCOMPARE(Column(sales, 0).last(), QStringLiteral("Fees as Percentage of Sales"));
        QCOMPARE(Column(bids, 0),
                 (QStringList{QStringLiteral("Total Spent"), QStringLiteral("Average Spent"),
                              QStringLiteral("Successful Bids"), QStringLiteral("Bids Attempted"),
                              QStringLiteral("Success Rate"), QString()}));
        QCOMPARE(Column(sales, 1), QStringList(12, QString()));
        QCOMPARE(Column(bids, 1), QStringList(6, QString()));
        QVERIFY(tab.ChartYears().isEmpty());
        QCOMPARE(ChartSeries(&tab)->count(), 3);
        QVERIFY(m_ui->History().empty());
    }

    void salesAndBidsFillTheGridsAndTheChartFromTheFirstYearWithFigures() {
        Sale(QStringLiteral("A"), Day(3, 10, 3), QStringLiteral("$100.00"));
        Sale(QStringLiteral("B"), Day(6, 1, 1), QStringLiteral("$50.00"));
        Bid(QStringLiteral("X"), Day(4, 2, 2), QStringLiteral("$30.00"));
        ui::AuctionAnalysisTab tab;
        tab.AnalysisRefresh(*m_db);
        ExpectPageShown(&tab, views::SalesSource::TimeComparative);

        auto* sales = Named<QTableWidget>(&tab, QStringLiteral("mfgMyAuctions"));
        QCOMPARE(sales->item(0, 1)->text(), QStringLiteral("$150.00"));
        QCOMPARE(sales->item(1, 1)->text(), QStringLiteral("$75.00"));
        QCOMPARE(sales->item(2, 1)->text(), QStringLiteral("2"));
        QCOMPARE(Named<QTableWidget>(&tab, QStringLiteral("mfgMyBids"))->item(0, 1)->text(),
                 QStringLiteral("$30.00"));

        // Three years back to this one: the year without a sale between stays.
        QStringList years;
        for (int back = 3; back >= 0; --back) {
            years << QString::number(ThisYear() - back);
        }
        QCOMPARE(tab.ChartYears(), years);
        QCOMPARE(AxisYears(&tab), years);
        const QList<QBarSet*> sets = ChartSeries(&tab)->barSets();
        QCOMPARE(sets.size(), 3);
        QCOMPARE(sets[0]->label(), QStringLiteral("Sales"));
        QCOMPARE(Values(sets[0]), (QList<double>{100, 0, 50, 0}));
        QCOMPARE(Values(sets[2]), (QList<double>{0, 30, 0, 0}));
    }

    void changingTheComboReadsTheOtherSource() {
        Sale(QStringLiteral("A"), Day(3, 10, 2), QStringLiteral("$100.00"));
        Account(Day(2, 2, 1), QStringLiteral("Final Auction Value fee"), QStringLiteral("$25.00"),
                QStringLiteral("$1,000.00"));
        ui::AuctionAnalysisTab tab;
        tab.AnalysisRefresh(*m_db);
        auto* sales = Named<QTableWidget>(&tab, QStringLiteral("mfgMyAuctions"));
        QCOMPARE(sales->item(0, 1)->text(), QStringLiteral("$100.00"));

        auto* combo = Named<QComboBox>(&tab, QStringLiteral("lstAnalysis"));
        combo->setCurrentIndex(1);
        ExpectPageShown(&tab, views::SalesSource::AllSalesData);
        QCOMPARE(sales->item(0, 1)->text(), QStringLiteral("$1,000.00"));
        QCOMPARE(sales->item(6, 1)->text(), QStringLiteral("$25.00"));
        QVERIFY(Named<QGroupBox>(&tab, QStringLiteral("fmeMyAuctions"))
                    ->title()
                    .startsWith(QStringLiteral("My Sales:  From 02 Feb ")));
        QVERIFY(combo->isEnabled());
        QCOMPARE(tab.ChartYears().first(), QString::number(ThisYear() - 1));

        combo->setCurrentIndex(0);
        QCOMPARE(sales->item(0, 1)->text(), QStringLiteral("$100.00"));
        QCOMPARE(tab.ChartYears().first(), QString::number(ThisYear() - 2));
    }

    void aDatabaseThatCannotBeReadLeavesLabelsAndSaysNothing() {
        Sale(QStringLiteral("A"), Day(3, 10, 3), QStringLiteral("$100.00"));
        ui::AuctionAnalysisTab tab;
        tab.AnalysisRefresh(*m_db);
        QVERIFY(!tab.ChartYears().isEmpty());

        core::Database stranger = core::Database::Open(m_root->File(QStringLiteral("empty.db")),
                                                       core::Database::Mode::Create);
        tab.AnalysisRefresh(stranger);
        auto* sales = Named<QTableWidget>(&tab, QStringLiteral("mfgMyAuctions"));
        QCOMPARE(Column(sales, 0).first(), QStringLiteral("Total Sales"));
        QCOMPARE(Column(sales, 1), QStringList(12, QString()));
        QVERIFY(tab.ChartYears().isEmpty());
        QVERIFY(Named<QComboBox>(&tab, QStringLiteral("lstAnalysis"))->isEnabled());
        QVERIFY(m_ui->History().empty());
    }

    void screenshot() {
        Sale(QStringLiteral("A"), Day(3, 10, 3), QStringLiteral("$100.00"));
        Sale(QStringLiteral("B"), Day(6, 1, 1), QStringLiteral("$50.00"));
        Bid(QStringLiteral("X"), Day(4, 2, 2), QStringLiteral("$30.00"));
        ui::AuctionAnalysisTab tab;
        tab.resize(900, 520);
        tab.AnalysisRefresh(*m_db);
        tab.show();
        QVERIFY(QTest::qWaitForWindowExposed(&tab));
        const QString dir = qEnvironmentVariable("LW_SCREENSHOT_DIR", QStringLiteral("/tmp"));
        QVERIFY(tab.grab().save(dir + QStringLiteral("/AuctionAnalysisTab.png")));
    }
};

QTEST_MAIN(AnalysisTabTest)
#include "analysis_ui_test.moc"
