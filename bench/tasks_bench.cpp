// SPDX-License-Identifier: GPL-3.0-or-later
// The Task Manager over 100,000 sales and 100,000 bids, 20,000 of each ended
// with tasks open (some of them multi-winner lots): (a) the item list of the
// side's first filter, against the floor of the same columns of the filter's
// query and its " (Dutch)" twin stepped to their ends by the bare SQLite API,
// within 2x; (b) a click on a row of the list (the item's record read once,
// for the summary panel and the task pictures, and the partner's address),
// against the floor of the bare SELECTs of the item's row and the partner's
// row, within 3x. It never writes to the database it times.
#include <sqlite3.h>

#include <QDate>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>

#include "bench/bench_support.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"
#include "tasks/task_model.h"
#include "tasks/task_tree.h"

using lw::core::Database;
using lw::tasks::Side;

namespace {

constexpr int kItems = 100000;
constexpr int kClicks = 2000;
const char* const kUser = "Ann";

QString EndDate(int daysFromToday, int i) {
    return QDate::currentDate().addDays(daysFromToday).toString(QStringLiteral("MM/dd/yy")) +
           QStringLiteral(", %1:%2:00 PST")
               .arg(i % 24, 2, 10, QLatin1Char('0'))
               .arg(i % 60, 2, 10, QLatin1Char('0'));
}

// Of each five items: one ended with tasks open, one ended and finished, one
// ended with no buyer (a sale without a bid, a lost bid), two running. One
// item in a hundred is a multi-winner lot: two winners on a sale, the user's
// share on a bid. Half the partners have an address, the rest only an e-mail.
void Fill(const QString& path) {
    Database db = Database::Open(path);
    lw::core::Transaction tx(db);
    const QString user = QString::fromLatin1(kUser);
    db.Prepare(QStringLiteral("INSERT INTO Users (UserName, isDefault) VALUES (?, 1)"))
        .Bind(1, user)
        .Run();
    db.Prepare(QStringLiteral(
                   "INSERT INTO UserSites (UserName, AuctionSiteFlag, UserID) VALUES (?, 0, ?)"))
        .BindAll(user, QStringLiteral("ann_buys"))
        .Run();
    for (const char* table : {"Buyers", "Sellers"}) {
        auto partner = db.Prepare(
            QStringLiteral("INSERT INTO %1 (%2, AuctionSiteFlag, City, Email) VALUES (?, 0, ?, ?)")
                .arg(QLatin1String(table), table == QByteArray("Buyers")
                                               ? QStringLiteral("BuyerID")
                                               : QStringLiteral("SellerID")));
        for (int p = 0; p < 997; ++p) {
            partner
                .BindAll(QStringLiteral("partner%1").arg(p),
                         p % 2 == 0 ? QStringLiteral("Dayton") : QString(),
                         QStringLiteral("partner%1@example.com").arg(p))
                .Run();
            partner.Reset();
        }
    }
    auto sale = db.Prepare(QStringLiteral(
        "INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, EndDate, HighBid, NumberBids, "
        "HighBidderName, ToDoComplete) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"));
    auto winner = db.Prepare(QStringLiteral(
        "INSERT INTO Dutch (UserName, ItemNumber, HighBidderName, HighBid) VALUES (?, ?, ?, ?)"));
    auto bid = db.Prepare(QStringLiteral(
        "INSERT INTO Bids (UserName, ItemNumber, ItemTitle, EndDate, HighBid, HighBidderName, "
        "SellerName, Winning, ToDoComplete) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    auto share = db.Prepare(QStringLiteral(
        "INSERT INTO DutchBids (UserName, ItemNumber, HighBidderName, HighBid, Winning) VALUES (?, "
        "?, 'ann_buys', ?, 1)"));
    for (int i = 0; i < kItems; ++i) {
        const int kind = i % 5;
        const bool dutch = i % 100 == 0;
        const QString end = EndDate(kind >= 3 ? 1 + i % 6 : -1 - i % 300, i);
        const QString price =
            QStringLiteral("$%1.%2").arg(5 + i % 90).arg(i % 100, 2, 10, QLatin1Char('0'));
        const QString partner = QStringLiteral("partner%1").arg(i % 997);
        const QString saleItem = QString::number(3000000 + i);
        sale.BindAll(
            user, saleItem, QStringLiteral("Antique brass lamp with shade, lot %1").arg(i), end,
            price, kind == 2 ? QStringLiteral("-") : QStringLiteral("3"),
            dutch ? QStringLiteral("Dutch Auction") : (kind == 2 ? QStringLiteral("n/a") : partner),
            kind == 1);
        sale.Run();
        sale.Reset();
        const QString bidItem = QString::number(5000000 + i);
        bid.BindAll(user, bidItem, QStringLiteral("Pocket watch, silver case, lot %1").arg(i), end,
                    price,
                    dutch ? QStringLiteral("Dutch Auction")
                          : (kind == 2 ? partner : QStringLiteral("ann_buys")),
                    partner, kind != 2 && !dutch, kind == 1);
        bid.Run();
        bid.Reset();
        if (!dutch) {
            continue;
        }
        for (int w = 0; w < 2; ++w) {
            winner.BindAll(user, saleItem, QStringLiteral("partner%1").arg((i + w) % 997), price);
            winner.Run();
            winner.Reset();
        }
        share.BindAll(user, bidItem, price);
        share.Run();
        share.Reset();
    }
    tx.Commit();
}

// Steps a statement to its end, reading every column as text; returns the rows.
qint64 StepToEnd(sqlite3_stmt* stmt, qint64& bytes) {
    qint64 rows = 0;
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
            sqlite3_column_text(stmt, c);
            bytes += sqlite3_column_bytes(stmt, c);
        }
        ++rows;
    }
    return rows;
}

sqlite3_stmt* Prepare(sqlite3* db, const QByteArray& sql) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), static_cast<int>(sql.size()), &stmt, nullptr);
    return stmt;
}

void BindText(sqlite3_stmt* stmt, int index, const QByteArray& value) {
    sqlite3_bind_text(stmt, index, value.constData(), static_cast<int>(value.size()),
                      SQLITE_STATIC);
}

// The floor of the list: the columns the list reads, of the filter's query
// and its twin, for the user.
qint64 ListFloor(sqlite3* db, Side side, const QString& filter, qint64& bytes) {
    const QByteArray view = '"' + filter.toUtf8() + '"';
    const QByteArray twin = '"' + filter.toUtf8() + " (Dutch)\"";
    qint64 rows = 0;
    for (const QByteArray& sql : QList<QByteArray>{
             "SELECT ItemNumber, ItemTitle, EndDate FROM " + view + " WHERE UserName = ?",
             "SELECT ItemNumber, ItemTitle, EndDate" +
                 QByteArray(side == Side::Sales ? ", HighBidderName" : "") + " FROM " + twin +
                 " WHERE UserName = ?"}) {
        sqlite3_stmt* stmt = Prepare(db, sql);
        const QByteArray user(kUser);
        BindText(stmt, 1, user);
        rows += StepToEnd(stmt, bytes);
        sqlite3_finalize(stmt);
    }
    return rows;
}

// The floor of a click: the item's row, and the partner's row it names.
void ClickFloor(sqlite3* db, const lw::tasks::SelectedItem& item, qint64& bytes) {
    const bool sale = item.side == Side::Sales;
    const QByteArray number = item.itemNumber.toUtf8();
    const QByteArray bidder = item.dutchBidder.toUtf8();
    sqlite3_stmt* record = Prepare(
        db, !sale            ? "SELECT * FROM Bids WHERE ItemNumber = ?"
            : item.IsDutch() ? "SELECT * FROM Dutch WHERE ItemNumber = ? AND HighBidderName = ?"
                             : "SELECT * FROM Auctions WHERE ItemNumber = ?");
    BindText(record, 1, number);
    if (item.IsDutch()) {
        BindText(record, 2, bidder);
    }
    QByteArray partner;
    if (sqlite3_step(record) == SQLITE_ROW) {
        for (int c = 0; c < sqlite3_column_count(record); ++c) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(record, c));
            bytes += sqlite3_column_bytes(record, c);
            if (qstrcmp(sqlite3_column_name(record, c), sale ? "HighBidderName" : "SellerName") ==
                0) {
                partner = QByteArray(text);
            }
        }
    }
    sqlite3_finalize(record);
    sqlite3_stmt* address =
        Prepare(db, sale ? "SELECT * FROM Buyers WHERE AuctionSiteFlag = 0 AND BuyerID = ?"
                         : "SELECT * FROM Sellers WHERE AuctionSiteFlag = 0 AND SellerID = ?");
    BindText(address, 1, partner);
    StepToEnd(address, bytes);
    sqlite3_finalize(address);
}

}  // namespace

int main() {
    QTemporaryDir dir;
    lw::core::SetSettingsFolder(dir.filePath(QStringLiteral("settings")));
    lw::core::ResetSession();
    const QString user = QString::fromLatin1(kUser);
    lw::core::CurrentSession().CurrentUser = user;

    const QString path = dir.filePath(QStringLiteral("Lotwright.db"));
    lw::core::OpenOrCreateStore(path, QStringLiteral(LW_SOURCE_DIR));
    Fill(path);

    Database db = Database::Open(path, Database::Mode::ReadOnly);
    sqlite3* raw = nullptr;
    sqlite3_open_v2(QFile::encodeName(path).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    bool ok = true;
    qint64 checksum = 0;
    for (const Side side : {Side::Sales, Side::Bids}) {
        const char* name = side == Side::Sales ? "sales" : "bids";
        lw::tasks::ListScope scope;
        scope.side = side;
        scope.userName = user;
        const QString filter = lw::tasks::TaskFilters(db, user, side).value(0);
        lw::tasks::ItemList list;
        qint64 floorRows = 0;
        // Interleaved rounds, so that drift of the machine hits both sides alike.
        double model = 1e300;
        double bare = 1e300;
        for (int round = 0; round < 5; ++round) {
            model = std::min(model, lw::bench::BestOf(1, [&] {
                                 list = lw::tasks::FillItemList(db, scope, filter);
                             }));
            bare = std::min(bare, lw::bench::BestOf(1, [&] {
                                floorRows = ListFloor(raw, side, filter, checksum);
                            }));
        }
        ok &= lw::bench::Report(std::string("Task list of ") + name + ", first filter", model, bare,
                                2.0);
        std::printf("  %s: %lld rows listed, %lld rows stepped by the floor\n", qPrintable(filter),
                    static_cast<long long>(list.rows.size()), static_cast<long long>(floorRows));
        if (static_cast<qint64>(list.rows.size()) != floorRows || list.rows.size() < 20000) {
            std::printf("  the list does not hold every pending item\n");
            ok = false;
        }

        std::vector<lw::tasks::SelectedItem> picks;
        const size_t step = std::max<size_t>(1, list.rows.size() / kClicks);
        for (size_t row = 0; row < list.rows.size(); row += step) {
            picks.push_back(
                lw::tasks::SelectionFromRow(side, list.rows[row].text, list.rows[row].itemNumber));
        }
        auto click = [&] {
            for (const auto& item : picks) {
                const QVariantMap record =
                    lw::tasks::ReadSelectedRecord(db, item).value_or(QVariantMap());
                checksum += record.size();
                for (const auto& task : lw::tasks::TaskPictures(db, 0, side, record)) {
                    checksum += task.picture;
                }
            }
        };
        auto floor = [&] {
            for (const auto& item : picks) {
                ClickFloor(raw, item, checksum);
            }
        };
        model = 1e300;
        bare = 1e300;
        for (int round = 0; round < 5; ++round) {
            model = std::min(model, lw::bench::BestOf(1, click));
            bare = std::min(bare, lw::bench::BestOf(1, floor));
        }
        ok &= lw::bench::Report(std::string("Task list, clicks on rows of ") + name, model, bare,
                                3.0);
        std::printf("  %lld rows clicked, one in %lld: %.1f us a click, floor %.1f us\n",
                    static_cast<long long>(picks.size()), static_cast<long long>(step),
                    model / static_cast<double>(picks.size()) * 1e6,
                    bare / static_cast<double>(picks.size()) * 1e6);
    }
    sqlite3_close(raw);
    std::printf("  (checksum %lld)\n", static_cast<long long>(checksum));
    return ok ? 0 : 1;
}
