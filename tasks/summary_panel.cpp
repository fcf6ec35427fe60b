// SPDX-License-Identifier: GPL-3.0-or-later
// The item information and the summaries with the partner's history; they
// only read.
#include "tasks/summary_panel.h"

#include <QMap>
#include <algorithm>

#include "core/session.h"
#include "core/text.h"
#include "tasks/panel_values.h"

namespace lw::tasks {

namespace {

const QString kNotApplicable = QStringLiteral("Not applicable");

// The record with the item's own columns: a multi-winner winner's row keeps
// only the winner's columns, its item's title, dates and prices stand in its
// Auctions row, and the view "Dutch Details" joins the two.
std::optional<QVariantMap> ReadItemRecord(core::Database& db, const SelectedItem& item) {
    if (!item.IsDutch()) {
        return ReadSelectedRecord(db, item);
    }
    auto statement = db.Prepare(QStringLiteral(
        "SELECT * FROM \"Dutch Details\" WHERE ItemNumber = ?1 AND HighBidderName = ?2 LIMIT 1"));
    statement.BindAll(item.itemNumber, item.dutchBidder);
    if (!statement.Step()) {
        return std::nullopt;
    }
    return RecordOf(statement);
}

QString OrNotApplicable(const QString& text) {
    return text.trimmed().isEmpty() ? kNotApplicable : text;
}

// One past sale or bid of the partner's history.
struct PastItem {
    QString highBid;
    QString category;
};

// Count, sum and the most frequent categories of the history.
void FillHistory(SummaryPanel& panel, const QMap<QString, PastItem>& history) {
    double total = 0;
    QMap<QString, std::pair<QString, int>> categories;  // by lower-case name
    for (const PastItem& past : history) {
        total += core::NumberRule(past.highBid);
        const QString category = past.category.trimmed();
        if (!category.isEmpty()) {
            // A category is shown as its first item in number order spells it.
            auto& entry = categories[category.toLower()];
            if (entry.first.isEmpty()) {
                entry.first = category;
            }
            ++entry.second;
        }
    }
    panel.lblHistoryCount = QString::number(history.size());
    panel.lblHistoryTotal = core::Format(total, QStringLiteral("Currency"));
    int most = 0;
    for (const auto& entry : categories) {
        most = std::max(most, entry.second);
    }
    QStringList favorites;
    for (const auto& entry : categories) {
        if (entry.second == most) {
            favorites << entry.first;
        }
    }
    panel.lblFavoriteCaption = favorites.size() > 1 ? QStringLiteral("Favorite Categories")
                                                    : QStringLiteral("Favorite Category");
    panel.lblFavorites =
        favorites.isEmpty() ? QStringLiteral("None") : favorites.join(QLatin1Char('\n'));
}

// Rows of (ItemNumber, HighBid, ItemCategory) for the user, the site and the
// partner; a later row of the same item takes the place of an earlier one.
QMap<QString, PastItem> ReadHistory(core::Database& db, const QString& sql, qint64 site,
                                    const QString& partner) {
    auto statement = db.Prepare(sql);
    statement.BindAll(core::CurrentSession().CurrentUser, site, partner);
    QMap<QString, PastItem> history;
    while (statement.Step()) {
        history.insert(statement.Text(0), {statement.Text(1), statement.Text(2)});
    }
    return history;
}

std::optional<SummaryPanel> ShowSummary(core::Database& db, const SelectedItem& item) {
    const auto record = ReadItemRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    const bool sale = IsSalesSide(item.side);
    SummaryPanel panel;
    panel.frameTitle =
        Caption(QStringLiteral("Bid Summary: #") +
                FieldText(*record, QStringLiteral("ItemNumber")) + QStringLiteral(" (Ended ") +
                FieldText(*record, QStringLiteral("EndDate")).section(u',', 0, 0) + u')');
    const QString partner =
        FieldText(*record, sale ? QStringLiteral("HighBidderName") : QStringLiteral("SellerName"));
    panel.lblSummaryPartner = partner;
    panel.lblSummaryFeedback = FieldText(
        *record, sale ? QStringLiteral("HighBidderFeedback") : QStringLiteral("SellerFeedback"));
    panel.lblSummaryHighBid = FieldText(*record, QStringLiteral("HighBid"));
    panel.lblSummaryQuantity = FieldText(*record, QStringLiteral("Quantity"));
    panel.lblSummaryMinimumBid = FieldText(*record, QStringLiteral("MinimumBid"));
    panel.lblSummaryReserveBid = FieldText(*record, QStringLiteral("ReserveBid"));
    panel.lblSummaryNumberBids = FieldText(*record, QStringLiteral("NumberBids"));

    const qint64 site = FieldText(*record, QStringLiteral("AuctionSiteFlag")).toLongLong();
    if (sale) {
        panel.lblHistoryCaption = QStringLiteral("Bidder History: ") + partner;
        FillHistory(panel,
                    ReadHistory(db,
                                QStringLiteral("SELECT ItemNumber, HighBid, ItemCategory"
                                               " FROM \"Completed Auctions\" WHERE UserName = ?1"
                                               " AND AuctionSiteFlag = ?2 AND HighBidderName = ?3"),
                                site, partner));
    } else {
        // A multi-winner item counts with the user's own price.
        panel.lblHistoryCaption = QStringLiteral("History with ") + partner;
        FillHistory(panel, ReadHistory(db,
                                       QStringLiteral(
                                           "SELECT ItemNumber, HighBid, ItemCategory"
                                           " FROM \"Completed Bids\" WHERE UserName = ?1"
                                           " AND AuctionSiteFlag = ?2 AND SellerName = ?3"
                                           " UNION ALL"
                                           " SELECT ItemNumber, \"Successful Dutch Bids.HighBid\","
                                           " ItemCategory"
                                           " FROM \"All Bids with Pending Tasks (Dutch)\""
                                           " WHERE UserName = ?1 AND AuctionSiteFlag = ?2"
                                           " AND SellerName = ?3"),
                                       site, partner));
    }
    return panel;
}

}  // namespace

ItemInfoPanel ShowItemInfo(core::Database& db, const SelectedItem& item) {
    ItemInfoPanel panel;
    panel.frameTitle = QStringLiteral("No Pending Tasks");
    panel.lblInfoCategory = kNotApplicable;
    panel.lblInfoTitle = kNotApplicable;
    if (item.itemNumber.isEmpty()) {
        return panel;
    }
    const auto record = ReadItemRecord(db, item);
    if (!record) {
        return panel;
    }
    panel.frameTitle = ItemFrameTitle(QStringLiteral("Item Information: #"), *record) +
                       (item.IsDutch() ? QStringLiteral(" (Dutch Auction)") : QString());
    panel.lblInfoCategory = OrNotApplicable(FieldText(*record, QStringLiteral("ItemCategory")));
    panel.lblInfoTitle = OrNotApplicable(FieldText(*record, QStringLiteral("ItemTitle")));
    return panel;
}

std::optional<SummaryPanel> ShowSaleSummary(core::Database& db, const SelectedItem& item) {
    return ShowSummary(db, item);
}

std::optional<SummaryPanel> ShowBidSummary(core::Database& db, const SelectedItem& item) {
    return ShowSummary(db, item);
}

}  // namespace lw::tasks
