// SPDX-License-Identifier: GPL-3.0-or-later
// Store figures: 100,000 sales written through the store wrapper against raw
// sqlite3 inserts of the same rows in one transaction, and the yearly sales
// sum of the analysis page against a plain SUM over a REAL column.
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "core/session.h"
#include "core/store.h"

using lw::core::Database;

namespace {

constexpr int kRows = 100000;
constexpr int kColumns = 14;

const char* const kInsert =
    "INSERT INTO Auctions (UserName, AuctionSiteFlag, ItemNumber, ItemTitle, ItemCategory, "
    "StartDate, EndDate, MinimumBid, ReserveBid, HighBid, Quantity, NumberBids, HighBidderName, "
    "HighBidderFeedback) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";

std::vector<std::vector<std::string>> MakeRows() {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(kRows);
    for (int i = 0; i < kRows; ++i) {
        const int year = i % 27;  // 97..23
        const int yy = (97 + year) % 100;
        char date[32];
        std::snprintf(date, sizeof date, "%02d/%02d/%02d, 12:%02d:00 PST", 1 + i % 12, 1 + i % 28,
                      yy, i % 60);
        char start[16];
        std::snprintf(start, sizeof start, "%02d/%02d/%02d", 1 + i % 12, 1 + i % 28, yy);
        char price[32];
        std::snprintf(price, sizeof price, "$%d,%03d.%02d", i % 3, i % 1000, i % 100);
        rows.push_back({"Ann", "0", std::to_string(1000000 + i),
                        "Antique brass lamp with shade, lot " + std::to_string(i), "Antiques",
                        start, date, "$1.00", (i % 5 == 0) ? "$500.00" : "-", price, "1",
                        std::to_string(i % 17), "bidder" + std::to_string(i % 997), "(12)"});
    }
    return rows;
}

QString FreshStore(const QTemporaryDir& dir, int round) {
    const QString path = dir.filePath(QStringLiteral("store%1.db").arg(round));
    lw::core::OpenOrCreateStore(path, QStringLiteral(LW_SOURCE_DIR));
    return path;
}

void WrapperInsert(const QString& path, const std::vector<std::vector<QString>>& rows) {
    Database db = Database::Open(path);
    lw::core::Transaction tx(db);
    auto insert = db.Prepare(QString::fromUtf8(kInsert));
    for (const auto& row : rows) {
        for (int c = 0; c < kColumns; ++c) {
            insert.Bind(c + 1, row[static_cast<size_t>(c)]);
        }
        insert.Run();
        insert.Reset();
    }
    tx.Commit();
}

void RawInsert(const QString& path, const std::vector<std::vector<std::string>>& rows) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_exec(db, "PRAGMA journal_mode = WAL; BEGIN", nullptr, nullptr, nullptr);
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, kInsert, -1, &stmt, nullptr);
    for (const auto& row : rows) {
        for (int c = 0; c < kColumns; ++c) {
            const std::string& v = row[static_cast<size_t>(c)];
            sqlite3_bind_text(stmt, c + 1, v.data(), static_cast<int>(v.size()), SQLITE_STATIC);
        }
        sqlite3_step(stmt);
        sqlite3_reset(stmt);
    }
    sqlite3_finalize(stmt);
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

}  // namespace

int main() {
    QTemporaryDir dir;
    const auto raw = MakeRows();
    std::vector<std::vector<QString>> text;
    text.reserve(raw.size());
    for (const auto& row : raw) {
        std::vector<QString> line;
        for (const auto& v : row) {
            line.push_back(QString::fromStdString(v));
        }
        text.push_back(std::move(line));
    }

    // Fresh stores are made before the clock runs: both sides time inserts only.
    int round = 0;
    std::vector<QString> wrapperFiles;
    std::vector<QString> rawFiles;
    for (int i = 0; i < 3; ++i) {
        wrapperFiles.push_back(FreshStore(dir, round++));
        rawFiles.push_back(FreshStore(dir, round++));
    }
    size_t nextWrapper = 0;
    size_t nextRaw = 0;
    double wrapper = 1e300;
    double floor = 1e300;
    for (int i = 0; i < 3; ++i) {  // interleaved, so drift hits both sides alike
        wrapper = std::min(wrapper, lw::bench::BestOf(1, [&] {
                               WrapperInsert(wrapperFiles[nextWrapper++], text);
                           }));
        floor = std::min(floor, lw::bench::BestOf(1, [&] { RawInsert(rawFiles[nextRaw++], raw); }));
    }
    bool ok = lw::bench::Report("insert 100,000 sales through the store", wrapper, floor, 1.3);
    std::printf("  %.0f rows/s through the store\n", kRows / wrapper);

    // Yearly sums: the analysis query against SUM over a plain REAL column.
    // The floor is the same 100,000 sales with the price kept as a REAL
    // column beside the other columns, which is what the money texts would
    // cost if they were numbers; a one-column table is printed as well.
    Database db = Database::Open(wrapperFiles.front());
    db.Exec(
        QStringLiteral("CREATE TABLE PlainSales AS SELECT *, HighBidNum AS Price FROM Auctions"));
    db.Exec(QStringLiteral("CREATE TABLE PlainColumn AS SELECT HighBidNum AS Price FROM Auctions"));
    double check = 0;
    auto timeSql = [&](const QString& sql) {
        return lw::bench::BestOf(7, [&] {
            auto statement = db.Prepare(sql);
            if (statement.ParameterCount() > 0) {
                statement.Bind(1, QStringLiteral("Ann"));
            }
            while (statement.Step()) {
                check += statement.Value(statement.ColumnCount() - 1).toDouble();
            }
        });
    };
    const double yearly =
        timeSql(QStringLiteral("SELECT Year, SUM(HighBidNum) AS AuctionTTL FROM \"Auctions Query\" "
                               "WHERE UserName = ? GROUP BY Year ORDER BY Year"));
    const double plainSales = timeSql(QStringLiteral("SELECT SUM(Price) FROM PlainSales"));
    const double plainColumn = timeSql(QStringLiteral("SELECT SUM(Price) FROM PlainColumn"));
    ok = lw::bench::Report("yearly sales sum over 100,000 sales", yearly, plainSales, 2.0) && ok;
    std::printf("  for information: %.2fx against a table of the price column alone (%.4f s)\n",
                yearly / plainColumn, plainColumn);
    std::printf("  (checksum %.0f)\n", check);
    return ok ? 0 : 1;
}
