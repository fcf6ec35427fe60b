// SPDX-License-Identifier: GPL-3.0-or-later
// The relist's starting point, read from Auctions and AuctionCreator.
#include "creator/relist.h"

namespace lw::creator {

std::optional<RelistSource> FindRelistSource(core::Database& db, const QString& user,
                                             const QString& itemNumber) {
    core::Statement sale = db.Prepare(QStringLiteral(
        "SELECT Auctions.ItemTitle, AuctionCreator.ID FROM Auctions LEFT JOIN AuctionCreator "
        "ON AuctionCreator.ID = Auctions.AuctionCreatorID AND Auctions.AuctionCreatorID > 0 "
        "WHERE Auctions.UserName = ? AND Auctions.ItemNumber = ? ORDER BY Auctions.rowid"));
    sale.BindAll(user, itemNumber);
    if (!sale.Step()) {
        return std::nullopt;
    }
    RelistSource source;
    source.title = sale.Text(0);
    source.creatorId = sale.IsNull(1) ? 0 : sale.Value(1).toLongLong();
    return source;
}

}  // namespace lw::creator
