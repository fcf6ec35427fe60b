// SPDX-License-Identifier: GPL-3.0-or-later
// Posting a listing document to the site without a browser: the numbered
// slot table of the site's sell form from the rule store, the slots filled
// from the AuctionCreator row, the review post and the confirming post, the
// new item number read from the site's answer, and the Auctions row that lets
// the next update find the new auction already known. A post that does not
// go through falls back to the sell page; the review route leaves the site's
// review page for the browser. Messages and questions go through the Ui
// port. It never opens a browser or a window (the caller opens the path it
// gives), never changes or deletes the creator row, whatever happens to the
// post, and never puts a value into SQL text.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

#include "core/net.h"
#include "core/store.h"
#include "core/ui_port.h"
#include "creator/post_record.h"
#include "update/rules.h"

namespace lw::creator {

// The slot table: the form field name and value of slots 1 to count (index
// 0 unused). An empty name leaves its slot unused.
struct PostSlots {
    QStringList names;
    QStringList values;
    int count = 0;
};
// LoadPostTable: names from "AuctionPost Names" and starting values from
// "AuctionPost Defaults" of store 1, at most update::kPostSlots; a missing
// key counts as empty.
PostSlots LoadPostTable(const update::RuleStore& rules);

// Fills the slots the program owns, in the order the post fills them (1, 2,
// 3 to 6, 9 and 10, 7, 8, options, 15, 16, 17, payment, 49 to 57, shipping,
// 32, 33, 34, 36, 14, 27, 40 to 48): title, category, description with the
// footer, pictures, location, region, country, the option lists ("~" codes,
// each an index set to "on"), online payment, quantity, prices, duration,
// gift icon, ship-to and regions, and the sign-in. description is the
// AuctionHTML with its footer. A row that lacks a title, category,
// description or location gives the refusal to tell, and so does a category
// name that cannot be resolved.
std::optional<PostRefusal> FillPostSlots(PostSlots& slots, const CreatorRecord& row,
                                         const SiteLogin& login, const QString& description,
                                         const CategoryResolver& resolve);

// BuildPostBody over the slots: a slot with an empty value is left out, "$$$"
// sends the name with an empty value, every name and value is URL-encoded.
QString PostBody(const PostSlots& slots);

// The new item number in the site's answer to the confirming post: behind
// the "Item1 Start" marker of "eBay New Auction Number" (found without regard
// to case), past the next ">", up to the next "<", less as many characters at
// its left as "Split" has. Empty when the marker is missing.
QString NewItemNumber(const QString& answer, const update::RuleStore& rules);

// PostOption of the creator: 1 direct, 2 the sell page, 3 the review page.
enum class PostRoute { Direct = 1, SellPage = 2, ReviewPage = 3 };

struct PostOptions {
    // The outbox posts: status lines go to its window, and no confirmation.
    bool fromQueue = false;
    // Proxy and time-outs; the current user's when not given.
    std::optional<core::NetOptions> net;
};

struct PostOutcome {
    // PostAuction's result: the auction went out, or the browser route's page
    // (sell page or review page) was written.
    bool posted = false;
    QString itemNumber;     // the new auction's number, when the site's answer named it
    QString browserPage;    // the page for the caller to open in the browser; empty: none
    bool fellBack = false;  // the direct post failed and the sell page was made instead
    // What went wrong, in words for a status line or the command line; the
    // user has been told by the system's messages already.
    QString problem;
    // "Auction Posted Successfully" is due: the auction went out directly,
    // not from the outbox, and AuctionConfirmOff is not set.
    bool confirm = false;
};

// Posts listing documents of the current user one after another. What every
// post needs alike (the slot table, the seller's sign-in, the network
// options, the statements that read the creator row and write the Auctions
// row) is had once and kept while the poster lives, so that a queue goes out
// at the pace of the site; nothing outlives it, and the password is scrubbed
// when it goes. Its sales are committed without waiting for the disk, and
// flushed together when it goes (core::CommitsWithoutFlush), in one
// checkpoint of the pages they wrote (core::DeferredCheckpoint).
//
// A direct post that goes out enters the new auction in Auctions (found by
// ItemNumber and UserName, updated when there, else added): the row's title,
// the category's full name, quantity, prices and costs as currency, "-" and
// "--" for the bids, StartDate today and EndDate eBayDuration days on,
// "mm/dd/yy, hh:mm:ss PST". The update's own rules find that row by
// ItemNumber, so the next update updates it rather than adding another.
// Nothing typed is lost whatever the outcome: the creator row stays as it is.
class AuctionPoster {
public:
    AuctionPoster(core::Database& db, const update::RuleStore& rules, core::Ui& ui,
                  const PostOptions& options = {});
    ~AuctionPoster();
    AuctionPoster(const AuctionPoster&) = delete;
    AuctionPoster& operator=(const AuctionPoster&) = delete;

    // PostAuction of row id by the route.
    PostOutcome Post(qint64 id, PostRoute route);

private:
    struct Kept;
    std::unique_ptr<Kept> m_kept;
};

// One post by a poster of its own.
PostOutcome PostAuction(core::Database& db, const update::RuleStore& rules, qint64 id,
                        PostRoute route, core::Ui& ui, const PostOptions& options = {});

}  // namespace lw::creator
