// SPDX-License-Identifier: GPL-3.0-or-later
// The database of the list benchmarks: 100,000 sales of one user, half of
// them running in the coming week and half ended between ten days and a year
// ago, some with reserves, some multi-winner lots, some titles with
// entities; and bids of the same user, half running, some of them winning.
// Written through the store so that the stored number and day columns are
// those the program would have.
#pragma once

#include <QDate>
#include <QString>

#include "core/store.h"

namespace lw::bench {

inline constexpr int kFixtureSales = 100000;
inline const char* const kFixtureUser = "Ann";

inline QString FixtureEndDate(const QDate& day, int i) {
    return day.toString(QStringLiteral("MM/dd/yy")) + QStringLiteral(", %1:%2:00 PST")
                                                          .arg(i % 24, 2, 10, QLatin1Char('0'))
                                                          .arg(i % 60, 2, 10, QLatin1Char('0'));
}

inline QDate FixtureDay(int i) {
    const QDate today = QDate::currentDate();
    return i % 2 == 0 ? today.addDays(1 + i % 6) : today.addDays(-10 - i % 355);
}

inline void FillFixture(const QString& path, int bids) {
    core::Database db = core::Database::Open(path);
    core::Transaction tx(db);
    const QString user = QString::fromLatin1(kFixtureUser);
    auto sale = db.Prepare(QStringLiteral(
        "INSERT INTO Auctions (UserName, AuctionSiteFlag, ItemNumber, ItemTitle, EndDate, "
        "ReserveBid, HighBid, NumberBids, HighBidderName) VALUES (?, 0, ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < kFixtureSales; ++i) {
        const QString title = i % 11 == 0
                                  ? QStringLiteral("Brass &amp; copper lamp, lot %1").arg(i)
                                  : QStringLiteral("Antique brass lamp with shade, lot %1").arg(i);
        sale.BindAll(
            user, QString::number(3000000 + i), title, FixtureEndDate(FixtureDay(i), i),
            i % 5 == 0 ? QStringLiteral("$40.00") : QString(),
            QStringLiteral("$%1.%2").arg(i % 90).arg(i % 100, 2, 10, QLatin1Char('0')),
            QString::number(i % 17),
            i % 7 == 0 ? QStringLiteral("Dutch Auction") : QStringLiteral("bidder%1").arg(i % 997));
        sale.Run();
        sale.Reset();
    }
    auto bid = db.Prepare(QStringLiteral(
        "INSERT INTO Bids (UserName, AuctionSiteFlag, ItemNumber, ItemTitle, EndDate, HighBid, "
        "NumberBids, HighBidderName, SellerName, Winning) VALUES (?, 0, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < bids; ++i) {
        bid.BindAll(
            user, QString::number(5000000 + i),
            QStringLiteral("Pocket watch, silver case, lot %1").arg(i),
            FixtureEndDate(FixtureDay(i), i), QStringLiteral("$%1.00").arg(5 + i % 70),
            QString::number(1 + i % 9),
            i % 13 == 0 ? QStringLiteral("Dutch Auction") : QStringLiteral("bidder%1").arg(i % 541),
            QStringLiteral("seller%1").arg(i % 211), i % 3 == 0 ? 1 : 0);
        bid.Run();
        bid.Reset();
    }
    tx.Commit();
}

}  // namespace lw::bench
