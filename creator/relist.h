// SPDX-License-Identifier: GPL-3.0-or-later
// What the relist of one of the user's sales starts the creator from: the
// AuctionCreator row the sale was posted from, when it is still there, else
// the sale's title for a new document. It only reads; no value ever enters
// SQL text.
#pragma once

#include <QString>
#include <optional>

#include "core/store.h"

namespace lw::creator {

struct RelistSource {
    qint64 creatorId = 0;  // above 0: the row to load
    QString title;         // the sale's ItemTitle, for a document of its own
};

// The user's sale itemNumber of Auctions; nothing when the user has no such
// sale. A creator row that was deleted since counts as none.
std::optional<RelistSource> FindRelistSource(core::Database& db, const QString& user,
                                             const QString& itemNumber);

}  // namespace lw::creator
