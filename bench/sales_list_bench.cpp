// SPDX-License-Identifier: GPL-3.0-or-later
// My Sales over 100,000 sales: both groups (current and archived) filled on
// one page each through the listing and the model the main window shows,
// against the floor of the same two SELECTs stepped to their ends by the
// bare SQLite API, with no row kept. Must stay within 2x of the floor.
#include <sqlite3.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstdio>

#include "bench/bench_support.h"
#include "bench/listing_fixture.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "views/listings.h"

using lw::core::Database;

namespace {

constexpr int kSales = lw::bench::kFixtureSales;
const char* const kUser = lw::bench::kFixtureUser;

// The statements the listing runs for the two groups with the default view
// settings and all rows on one page.
QByteArray FloorSql(const char* source, const char* order) {
    QByteArray columns;
    for (const char* column : {"ItemNumber", "ItemTitle", "NumberBids", "HighBid", "EndDate",
                               "HighBidderName", "HighBidNum"}) {
        if (!columns.isEmpty()) {
            columns += ", ";
        }
        columns += QByteArray(source) + '.' + column;
    }
    return "SELECT " + columns +
           ", ReserveBid, HighBidNum >= ReserveBidNum, EndDay <= date('now', 'localtime', "
           "'-3 days') FROM " +
           source + " WHERE UserName = ? ORDER BY " + order + " LIMIT ? OFFSET ?";
}

qint64 StepToEnd(sqlite3* db, const QByteArray& sql, qint64& bytes) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), static_cast<int>(sql.size()), &stmt, nullptr);
    sqlite3_bind_text(stmt, 1, kUser, -1, SQLITE_STATIC);
    sqlite3_bind_int64(stmt, 2, kSales);
    sqlite3_bind_int64(stmt, 3, 0);
    qint64 rows = 0;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        const int n = sqlite3_column_count(stmt);
        for (int c = 0; c < n; ++c) {
            sqlite3_column_text(stmt, c);
            bytes += sqlite3_column_bytes(stmt, c);
        }
        ++rows;
    }
    sqlite3_finalize(stmt);
    return rows;
}

}  // namespace

int main() {
    QTemporaryDir dir;
    lw::core::SetSettingsFolder(dir.filePath(QStringLiteral("settings")));
    lw::core::ResetSession();
    lw::core::CurrentSession().CurrentUser = QString::fromLatin1(kUser);

    const QString path = dir.filePath(QStringLiteral("Lotwright.db"));
    lw::core::OpenOrCreateStore(path, QStringLiteral(LW_SOURCE_DIR));
    lw::bench::FillFixture(path, 0);

    Database db = Database::Open(path);
    lw::views::SalesListing listing;
    qint64 shown = 0;
    auto fill = [&] {
        for (const auto group : {lw::views::Group::Current, lw::views::Group::Archived}) {
            listing.ShowGroup(db, group);
            const auto& model = listing.Model();
            // What a view asks for on its first screen.
            for (int row = 0; row < std::min(40, model.rowCount()); ++row) {
                for (int column = 0; column < model.columnCount(); ++column) {
                    shown += model.data(model.index(row, column)).toString().size();
                }
            }
            shown += model.rowCount();
        }
    };

    sqlite3* raw = nullptr;
    sqlite3_open_v2(QFile::encodeName(path).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    const QByteArray currentSql = FloorSql("CurrentAuctions", "EndStamp, EndStamp DESC");
    const QByteArray archivedSql = FloorSql("ArchivedAuctions", "EndStamp");
    qint64 floorRows = 0;
    qint64 bytes = 0;
    auto floor = [&] {
        floorRows = StepToEnd(raw, currentSql, bytes) + StepToEnd(raw, archivedSql, bytes);
    };

    // Interleaved rounds, so that drift of the machine hits both sides alike.
    double model = 1e300;
    double bare = 1e300;
    for (int round = 0; round < 5; ++round) {
        model = std::min(model, lw::bench::BestOf(1, fill));
        bare = std::min(bare, lw::bench::BestOf(1, floor));
    }
    sqlite3_close(raw);

    listing.ShowGroup(db, lw::views::Group::Current);
    const qint64 currentRows = listing.Model().rowCount();
    listing.ShowGroup(db, lw::views::Group::Archived);
    const qint64 archivedRows = listing.Model().rowCount();

    const bool ok = lw::bench::Report("My Sales, both groups of 100,000 sales", model, bare, 2.0);
    std::printf(
        "  %lld current and %lld archived rows in the model; %lld rows stepped by the "
        "floor\n",
        static_cast<long long>(currentRows), static_cast<long long>(archivedRows),
        static_cast<long long>(floorRows));
    std::printf("  (checksum %lld)\n", static_cast<long long>(shown + bytes));
    if (currentRows + archivedRows != kSales || floorRows != kSales) {
        std::printf("  the lists do not hold every sale\n");
        return 1;
    }
    return ok ? 0 : 1;
}
