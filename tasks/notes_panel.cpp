// SPDX-License-Identifier: GPL-3.0-or-later
// Loading and saving the notes panel. The other items' notes are only read.
#include "tasks/notes_panel.h"

#include "core/session.h"

namespace lw::tasks {

namespace {

QString NotesField(const SelectedItem& item) {
    return IsSalesSide(item.side) ? QStringLiteral("AuctionNotes") : QStringLiteral("BidNotes");
}

QString PartnerField(const SelectedItem& item) {
    return IsSalesSide(item.side) ? QStringLiteral("HighBidderName") : QStringLiteral("SellerName");
}

// The blocks of the other notes, each ended by its ruled line.
QString PriorNotes(core::Database& db, const SelectedItem& item, const QString& partner) {
    // ?1 user, ?2 partner, ?3 this item; on a sale ?4 the buyer's name of the
    // parent row of a multi-winner sale, whose notes are its winners'.
    const QString sql =
        IsSalesSide(item.side)
            ? QStringLiteral(
                  "SELECT ItemNumber, ItemTitle, EndDate, AuctionNotes, EndStamp FROM Auctions"
                  " WHERE UserName = ?1 AND HighBidderName = ?2 AND ItemNumber <> ?3"
                  " AND HighBidderName <> ?4 AND AuctionNotes IS NOT NULL"
                  " UNION ALL"
                  " SELECT ItemNumber, ItemTitle, EndDate, AuctionNotes, EndStamp"
                  " FROM \"Dutch Details\""
                  " WHERE UserName = ?1 AND HighBidderName = ?2 AND ItemNumber <> ?3"
                  " AND AuctionNotes IS NOT NULL"
                  " ORDER BY 5, 1")
            : QStringLiteral(
                  "SELECT ItemNumber, ItemTitle, EndDate, BidNotes FROM Bids"
                  " WHERE UserName = ?1 AND SellerName = ?2 AND ItemNumber <> ?3"
                  " AND BidNotes IS NOT NULL"
                  " ORDER BY EndStamp, ItemNumber");
    auto statement = db.Prepare(sql);
    statement.BindAll(core::CurrentSession().CurrentUser, partner, item.itemNumber);
    if (IsSalesSide(item.side)) {
        statement.Bind(4, QStringLiteral("Dutch Auction"));
    }
    QString blocks;
    while (statement.Step()) {
        blocks += u'#' + statement.Text(0) + QStringLiteral(" (") + statement.Text(1) +
                  QStringLiteral(")\nENDED: ") + statement.Text(2) + QStringLiteral("\nNOTE: ") +
                  statement.Text(3) + QStringLiteral("\n====================================\n");
    }
    return blocks;
}

}  // namespace

QString NoCurrentNotes() {
    return QStringLiteral("No current notes.");
}

std::optional<NotesPanel> ShowNotes(core::Database& db, const SelectedItem& item) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    NotesPanel panel;
    panel.frameTitle = ItemFrameTitle(QStringLiteral("Notes for Item #"), *record);
    const QVariant notes = FieldValue(*record, NotesField(item));
    panel.txtToDoNotes = notes.isNull() ? NoCurrentNotes() : notes.toString();
    const QString partner = FieldText(*record, PartnerField(item));
    panel.lblToDoPriorNotes = QStringLiteral("Other Notes About ") + partner;
    panel.txtToDoPriorNotes = PriorNotes(db, item, partner);
    if (panel.txtToDoPriorNotes.isEmpty()) {
        panel.txtToDoPriorNotes = QStringLiteral("No other notes");
    }
    return panel;
}

SaveOutcome SaveNotes(core::Database& db, const SelectedItem& item, const QString& txtToDoNotes) {
    if (txtToDoNotes.isEmpty() || txtToDoNotes == NoCurrentNotes()) {
        return {};
    }
    return SaveRecordFields(db, item, {{NotesField(item), txtToDoNotes}});
}

}  // namespace lw::tasks
