// SPDX-License-Identifier: GPL-3.0-or-later
// Start of the main window on a database of 100,000 sales and 20,000 bids:
// the window made, loaded (both lists on their current group, all rows on one
// page, the captions, the balance) and shown, up to its first paint; against
// the floor of opening the database and stepping the two group queries that
// the load runs (current sales, current bids) to their ends with the bare
// SQLite API. Must stay within 3x of the floor. Run with
// QT_QPA_PLATFORM=offscreen.
#include <sqlite3.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <cstdio>

#include "bench/bench_support.h"
#include "bench/listing_fixture.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "ui/frmAuction.h"

namespace {

constexpr int kBids = 20000;

// Sees the window's first paint.
class PaintWatch : public QObject {
public:
    bool painted = false;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            painted = true;
        }
        return QObject::eventFilter(watched, event);
    }
};

qint64 StepToEnd(sqlite3* db, const char* sql, qint64 limit) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql, -1, &stmt, nullptr);
    sqlite3_bind_text(stmt, 1, lw::bench::kFixtureUser, -1, SQLITE_STATIC);
    if (sqlite3_bind_parameter_count(stmt) >= 3) {
        sqlite3_bind_int64(stmt, 2, limit);
        sqlite3_bind_int64(stmt, 3, 0);
    } else {
        sqlite3_bind_text(stmt, 2, "ann_bids", -1, SQLITE_STATIC);
    }
    qint64 rows = 0;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
            sqlite3_column_text(stmt, c);
        }
        ++rows;
    }
    sqlite3_finalize(stmt);
    return rows;
}

// The two statements of the load, as the listings write them with the
// default view settings.
const char* const kCurrentSales =
    "SELECT CurrentAuctions.ItemNumber, CurrentAuctions.ItemTitle, CurrentAuctions.NumberBids, "
    "CurrentAuctions.HighBid, CurrentAuctions.EndDate, CurrentAuctions.HighBidderName, "
    "CurrentAuctions.HighBidNum, CurrentAuctions.EndStamp, ReserveBid, HighBidNum >= "
    "ReserveBidNum, EndDay <= date('now', 'localtime', '-3 days') FROM CurrentAuctions WHERE "
    "UserName = ? ORDER BY EndStamp, EndStamp DESC, ItemNumber LIMIT ? OFFSET ?";
const char* const kCurrentBids =
    "SELECT CurrentBids.ItemNumber, CurrentBids.ItemTitle, CurrentBids.NumberBids, "
    "CurrentBids.HighBid, CurrentBids.EndDate, CurrentBids.HighBidderName, "
    "CurrentBids.HighBidNum, CurrentBids.EndStamp, CurrentBids.Winning, CASE WHEN "
    "HighBidderName = 'Dutch Auction' COLLATE BINARY THEN EXISTS (SELECT 1 FROM DutchBids AS Won "
    "WHERE Won.ItemNumber = CurrentBids.ItemNumber AND Won.HighBidderName = ?2) ELSE 0 END FROM "
    "CurrentBids WHERE UserName = ?1 ORDER BY EndStamp DESC, ItemNumber DESC";

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QTemporaryDir dir;
    lw::core::SetSettingsFolder(dir.filePath(QStringLiteral("settings")));
    lw::core::ResetSession();
    QString error;
    if (!lw::core::SetupDirectories(dir.path(), &error)) {
        std::printf("%s\n", qPrintable(error));
        return 1;
    }
    lw::core::CurrentSession().ShippedDir = QStringLiteral(LW_SOURCE_DIR);
    const QString path = lw::core::StorePath();
    {
        lw::core::Database db = lw::core::OpenStore();
        lw::core::AddUser(db, {QString::fromLatin1(lw::bench::kFixtureUser),
                               QStringLiteral("ann_bids"), QStringLiteral("pw"), QString()});
    }
    lw::bench::FillFixture(path, kBids);
    lw::core::SetCurrentUser(QString::fromLatin1(lw::bench::kFixtureUser));

    int salesRows = 0;
    int bidsRows = 0;
    bool allPainted = true;
    auto start = [&] {
        PaintWatch watch;
        lw::ui::frmAuction window;
        window.installEventFilter(&watch);
        window.Form_Load();
        window.show();
        allPainted = QTest::qWaitForWindowExposed(&window) && allPainted;
        while (!watch.painted) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        salesRows =
            window.findChild<QAbstractItemView*>(QStringLiteral("grdAuction"))->model()->rowCount();
        bidsRows =
            window.findChild<QAbstractItemView*>(QStringLiteral("GrdBid"))->model()->rowCount();
        window.close();
    };

    qint64 floorRows = 0;
    auto floor = [&] {
        sqlite3* db = nullptr;
        sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READONLY, nullptr);
        floorRows =
            StepToEnd(db, kCurrentSales, lw::bench::kFixtureSales) + StepToEnd(db, kCurrentBids, 0);
        sqlite3_close(db);
    };

    double shown = 1e300;
    double bare = 1e300;
    for (int round = 0; round < 5; ++round) {
        shown = std::min(shown, lw::bench::BestOf(1, start));
        bare = std::min(bare, lw::bench::BestOf(1, floor));
    }
    const bool ok =
        lw::bench::Report("main window to first paint, 100,000 sales", shown, bare, 3.0);
    std::printf("  %d sales and %d bids listed; %lld rows stepped by the floor\n", salesRows,
                bidsRows, static_cast<long long>(floorRows));
    if (!allPainted || salesRows + bidsRows != floorRows) {
        std::printf("  the window did not show the rows of the floor\n");
        return 1;
    }
    return ok ? 0 : 1;
}
