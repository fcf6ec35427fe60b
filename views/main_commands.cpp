// SPDX-License-Identifier: GPL-3.0-or-later
// The main window's own commands: site links from the rule store, the account
// balance, delete and return-to-task, the pop-up menus' states and the
// LastUpdate marks. Every value is bound.
#include "views/main_commands.h"

#include "core/session.h"
#include "core/text.h"
#include "tasks/task_model.h"
#include "update/rules.h"
#include "update/site_session.h"

namespace lw::views {

namespace {

using core::Database;
using core::Statement;

const QString& User() {
    return core::CurrentSession().CurrentUser;
}

QString SectionOf(SiteLink link) {
    switch (link) {
        case SiteLink::ViewAuction:
            return QStringLiteral("eBay View Auction");
        case SiteLink::ViewFeedback:
            return QStringLiteral("eBay View Feedback");
        case SiteLink::ViewSellersAuctions:
            return QStringLiteral("eBay View Sellers Auctions");
        case SiteLink::RelistItem:
            return QStringLiteral("eBay Relist Item");
        case SiteLink::MyEBay:
            return QStringLiteral("eBay MyeBay");
    }
    return {};
}

void RunForItem(Database& db, const QString& sql, const QString& itemNumber) {
    db.Prepare(sql).BindAll(itemNumber, User()).Run();
}

bool Ended(const QString& timeLeft) {
    return timeLeft.trimmed() == u"Ended";
}

}  // namespace

QString SiteLinkUrl(Database& db, SiteLink link, const QString& value) {
    const QString url =
        update::LookupRuleKey(SectionOf(link), QStringLiteral("Url"), update::kSiteStore).trimmed();
    if (url.isEmpty() || url == update::RuleError()) {
        return {};
    }
    switch (link) {
        case SiteLink::ViewAuction:
        case SiteLink::ViewFeedback:
        case SiteLink::ViewSellersAuctions:
            return url + update::UrlEncode(value.trimmed());
        case SiteLink::RelistItem:
            return core::ReplaceEvery(url, QStringLiteral("[ItemNumber]"),
                                      update::UrlEncode(value.trimmed()));
        case SiteLink::MyEBay: {
            Statement s = db.Prepare(
                QStringLiteral("SELECT UserID, EncodedPassword FROM UserSites WHERE UserName = ? "
                               "AND AuctionSiteFlag = 0"));
            s.Bind(1, User());
            const bool found = s.Step();
            const QString id = found ? s.Text(0).trimmed() : QString();
            const QString password = found ? s.Text(1).trimmed() : QString();
            QString out =
                core::ReplaceEvery(url, QStringLiteral("[USERID]"), update::UrlEncode(id));
            return core::ReplaceEvery(out, QStringLiteral("[PASSWORD]"),
                                      update::UrlEncode(password));
        }
    }
    return {};
}

QString AccountBalance(Database& db) {
    // The statement's summary is the row the account information page leaves;
    // the ledger lines of the account history all carry an item number.
    Statement s = db.Prepare(
        QStringLiteral("SELECT CreditNum - DebitNum FROM AccountInfo WHERE UserName = ? AND "
                       "AuctionSiteFlag = 0 AND (ItemNumber IS NULL OR ItemNumber = '') "
                       "ORDER BY rowid DESC LIMIT 1"));
    s.Bind(1, User());
    if (!s.Step() || s.IsNull(0)) {
        return QStringLiteral("n/a");
    }
    return core::Format(s.Value(0).toDouble(), QStringLiteral("Currency"));
}

void DeleteSale(Database& db, const QString& itemNumber) {
    RunForItem(db, QStringLiteral("DELETE FROM Auctions WHERE ItemNumber = ? AND UserName = ?"),
               itemNumber);
}

void DeleteBid(Database& db, const QString& itemNumber) {
    RunForItem(db, QStringLiteral("DELETE FROM Bids WHERE ItemNumber = ? AND UserName = ?"),
               itemNumber);
}

void ReturnSaleToTask(Database& db, const QString& itemNumber) {
    tasks::ReturnToTasks(db, {tasks::Side::Sales, itemNumber, QString(), User()});
}

void ReturnBidToTask(Database& db, const QString& itemNumber) {
    tasks::ReturnToTasks(db, {tasks::Side::Bids, itemNumber, QString(), User()});
}

SalePopup SalePopupFor(Database& db, const QString& itemNumber, bool dutch,
                       const QString& timeLeft) {
    SalePopup popup;
    popup.relist = Ended(timeLeft);
    Statement s = db.Prepare(
        dutch ? QStringLiteral("SELECT HighBidderName, NULL AS NumberBids, ToDoComplete FROM Dutch "
                               "WHERE ItemNumber = ? AND UserName = ? ORDER BY rowid LIMIT 1")
              : QStringLiteral("SELECT HighBidderName, NumberBids, ToDoComplete FROM Auctions "
                               "WHERE ItemNumber = ? AND UserName = ? ORDER BY rowid LIMIT 1"));
    s.BindAll(itemNumber, User());
    if (!s.Step()) {
        return popup;
    }
    popup.highBidder = s.Text(0).trimmed();
    if (!dutch) {
        popup.bidderFeedback = s.Text(1).trimmed() != u"-";
    }
    popup.returnToTask = s.Flag(QStringLiteral("ToDoComplete"));
    return popup;
}

BidPopup BidPopupFor(Database& db, const QString& itemNumber) {
    BidPopup popup;
    Statement s = db.Prepare(
        QStringLiteral("SELECT SellerName, ToDoComplete FROM Bids WHERE ItemNumber = ? AND "
                       "UserName = ? ORDER BY rowid LIMIT 1"));
    s.BindAll(itemNumber, User());
    if (!s.Step()) {
        return popup;
    }
    popup.seller = s.Text(0).trimmed();
    popup.returnToTask = s.Flag(QStringLiteral("ToDoComplete"));
    return popup;
}

void ClearLastUpdate(Database& db) {
    db
        .Prepare(QStringLiteral(
            "UPDATE UserSites SET LastUpdate = NULL WHERE UserName = ? AND AuctionSiteFlag = 0"))
        .Bind(1, User())
        .Run();
}

void StampLastUpdate(Database& db, const QDateTime& now) {
    db
        .Prepare(QStringLiteral(
            "UPDATE UserSites SET LastUpdate = ? WHERE UserName = ? AND AuctionSiteFlag = 0"))
        .BindAll(core::Format(now, QStringLiteral("mm/dd/yy hh:nn:ss")) + QStringLiteral(" PST"),
                 User())
        .Run();
}

}  // namespace lw::views
