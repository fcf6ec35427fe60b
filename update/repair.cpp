// SPDX-License-Identifier: GPL-3.0-or-later
// Post-update repair: the Null mending of Auctions, Bids and Global, and the
// reconciliation of retrieved auctions with the creator records they were
// posted from. Neither ever shows anything; neither may leave a table half
// mended, and a table with nothing to mend is not written at all.
#include "update/repair.h"

#include <QHash>
#include <QStringList>
#include <optional>
#include <vector>

#include "core/session.h"
#include "core/settings.h"
#include "core/text.h"

namespace lw::update {

namespace {

using core::Database;

// A savepoint rather than a transaction, so that the repair can run inside a
// caller's transaction as well as on its own. Rolled back unless released.
class Savepoint {
public:
    Savepoint(Database& db, const char* name) : m_db(db), m_name(QString::fromLatin1(name)) {
        m_db.Exec(QStringLiteral("SAVEPOINT ") + m_name);
    }
    ~Savepoint() {
        if (m_open) {
            try {
                m_db.Exec(QStringLiteral("ROLLBACK TO ") + m_name);
                m_db.Exec(QStringLiteral("RELEASE ") + m_name);
            } catch (const core::StoreError&) {
                // SQLite has then rolled back by itself.
            }
        }
    }
    void Release() {
        m_db.Exec(QStringLiteral("RELEASE ") + m_name);
        m_open = false;
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

private:
    Database& m_db;
    QString m_name;
    bool m_open = true;
};

// The columns as the repair walks them: the columns whose Null finds a row,
// and the columns it mends, in the order it mends them.
const QStringList& AuctionFindColumns() {
    static const QStringList columns = {
        QStringLiteral("ItemNumber"),   QStringLiteral("ItemTitle"),
        QStringLiteral("ReserveBid"),   QStringLiteral("HighBidderName"),
        QStringLiteral("ItemCategory"), QStringLiteral("StartDate"),
        QStringLiteral("EndDate"),      QStringLiteral("NumberBids"),
        QStringLiteral("MinimumBid"),   QStringLiteral("Quantity"),
        QStringLiteral("HighBid"),      QStringLiteral("HighBidderFeedback")};
    return columns;
}
const QStringList& AuctionMendColumns() {
    static const QStringList columns = {
        QStringLiteral("HighBidderName"),     QStringLiteral("ItemTitle"),
        QStringLiteral("ItemCategory"),       QStringLiteral("ItemNumber"),
        QStringLiteral("StartDate"),          QStringLiteral("EndDate"),
        QStringLiteral("NumberBids"),         QStringLiteral("MinimumBid"),
        QStringLiteral("Quantity"),           QStringLiteral("HighBid"),
        QStringLiteral("HighBidderFeedback"), QStringLiteral("ReserveBid")};
    return columns;
}
const QStringList& BidFindColumns() {
    static const QStringList columns = {
        QStringLiteral("ItemNumber"),        QStringLiteral("ItemTitle"),
        QStringLiteral("HighBidderName"),    QStringLiteral("ItemCategory"),
        QStringLiteral("StartDate"),         QStringLiteral("EndDate"),
        QStringLiteral("NumberBids"),        QStringLiteral("MinimumBid"),
        QStringLiteral("Quantity"),          QStringLiteral("HighBid"),
        QStringLiteral("HighBidderFeedback")};
    return columns;
}
const QStringList& BidMendColumns() {
    static const QStringList columns = {
        QStringLiteral("HighBidderName"),     QStringLiteral("ItemTitle"),
        QStringLiteral("ItemCategory"),       QStringLiteral("ItemNumber"),
        QStringLiteral("StartDate"),          QStringLiteral("EndDate"),
        QStringLiteral("NumberBids"),         QStringLiteral("MinimumBid"),
        QStringLiteral("Quantity"),           QStringLiteral("HighBid"),
        QStringLiteral("HighBidderFeedback"), QStringLiteral("SellerName"),
        QStringLiteral("SellerFeedback")};
    return columns;
}

QString AnyNull(const QStringList& columns) {
    QStringList tests;
    for (const QString& column : columns) {
        tests << column + QStringLiteral(" IS NULL");
    }
    return u'(' + tests.join(QStringLiteral(" OR ")) + u')';
}

// "f = IFNULL(f, :na)" for each mended column but those the caller handles.
QString MendAssignments(const QStringList& columns, const QStringList& except) {
    QStringList sets;
    for (const QString& column : columns) {
        if (except.contains(column)) {
            continue;
        }
        if (column == QLatin1String("EndDate")) {
            sets << QStringLiteral("EndDate = IFNULL(EndDate, :end)");
        } else {
            sets << column + QStringLiteral(" = IFNULL(") + column + QStringLiteral(", :na)");
        }
    }
    return sets.join(QStringLiteral(", "));
}

// The walk over the rows found, done as whole-table statements: each found
// row ends exactly as the walk leaves it, and a row the walk only rewrites
// unchanged (found by an empty title alone) is not written.
void RepairAuctions(Database& db, const QString& endDate) {
    const QString found =
        u'(' + AnyNull(AuctionFindColumns()) + QStringLiteral(" OR rtrim(ItemTitle, ' ') = '')");
    Savepoint savepoint(db, "repair_auctions");
    db.Prepare(QStringLiteral("DELETE FROM Auctions WHERE ") + found +
               QStringLiteral(" AND (ItemNumber IS NULL OR trim(ItemNumber, ' ') = '')"))
        .Run();
    core::Statement mend = db.Prepare(QStringLiteral("UPDATE Auctions SET ") +
                                      MendAssignments(AuctionMendColumns(), {}) +
                                      QStringLiteral(" WHERE ") + AnyNull(AuctionMendColumns()));
    mend.Bind(":na", QStringLiteral("n/a")).Bind(":end", endDate);
    mend.Run();
    savepoint.Release();
}

void RepairBids(Database& db, const QString& endDate) {
    const QString found = AnyNull(BidFindColumns());
    const QString itemNumber = QStringLiteral("ItemNumber");
    Savepoint savepoint(db, "repair_bids");
    core::Statement mend = db.Prepare(QStringLiteral("UPDATE Bids SET ") +
                                      MendAssignments(BidMendColumns(), {itemNumber}) +
                                      QStringLiteral(" WHERE ") + found);
    mend.Bind(":na", QStringLiteral("n/a")).Bind(":end", endDate);
    mend.Run();
    // Last, as its Null is what finds some of the rows above. Two bids of a
    // user without an item number cannot both become "n/a" under the table's
    // key: the second keeps its Null rather than lose the row.
    db.Prepare(
          QStringLiteral("UPDATE OR IGNORE Bids SET ItemNumber = :na WHERE ItemNumber IS NULL"))
        .Bind(":na", QStringLiteral("n/a"))
        .Run();
    savepoint.Release();
}

void RepairGlobal(Database& db, const QDateTime& now) {
    // " PDT" here where every other stamp says " PST": the site clock's text
    // has always been written so.
    const QString siteTime =
        core::Format(now, QStringLiteral("dddd, mm dd, yyyy hh:mm:ss")) + QStringLiteral(" PDT");
    Savepoint savepoint(db, "repair_global");
    if (db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Global")) == 0) {
        db.Prepare(QStringLiteral("INSERT INTO Global (eBayTime) VALUES (?)"))
            .Bind(1, siteTime)
            .Run();
    } else {
        db.Prepare(QStringLiteral("UPDATE Global SET eBayTime = ? WHERE rowid = "
                                  "(SELECT MIN(rowid) FROM Global) AND eBayTime IS NULL"))
            .Bind(1, siteTime)
            .Run();
    }
    savepoint.Release();
}

// ------------------------------------------------------------ reconciliation

QString WithoutBlanks(QString text) {
    return text.remove(u' ');
}

// Trimming as the site's texts are compared: blanks only.
QString TrimBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == u' ') {
        ++first;
    }
    while (last > first && text.at(last - 1) == u' ') {
        --last;
    }
    return text.mid(first, last - first);
}

// Format(x, "General Number") as the comparison sees it: a Null has no text,
// and a Null never equals anything.
std::optional<QString> GeneralNumber(const QVariant& value) {
    if (value.isNull()) {
        return std::nullopt;
    }
    return core::Format(value, QStringLiteral("General Number"));
}

QVariant CurrencyOrNull(const QVariant& value) {
    if (value.isNull()) {
        return {};
    }
    return core::Format(value, QStringLiteral("Currency"));
}

// The category's full text, "Meta: Name", by number; "NONE" when the number
// has no row.
QString CategoryText(Database& db, const QString& number) {
    core::Statement query = db.Prepare(QStringLiteral(
        "SELECT MetaCategoryName, CategoryName FROM eBayCategories WHERE CategoryNumber = ? "
        "ORDER BY rowid LIMIT 1"));
    query.Bind(1, TrimBlanks(number));
    if (!query.Step()) {
        return QStringLiteral("NONE");
    }
    return query.Text(QStringLiteral("MetaCategoryName")) + QStringLiteral(": ") +
           query.Text(QStringLiteral("CategoryName"));
}

// A date text on or after the post date. A text that is no date (a mended
// "n/a") is never on or after anything.
bool OnOrAfter(const QVariant& text, const QDate& since) {
    if (text.isNull()) {
        return false;
    }
    const std::optional<QDateTime> date = core::ParseDateTime(text.toString());
    return date && date->date() >= since;
}

struct CreatorRow {
    qint64 id = 0;
    QVariant title;
    QString category;  // blanks removed
    std::optional<QString> minimumBid;
    std::optional<QString> quantity;
    QVariant shipping;
    QVariant insurance;
    QVariant itemCost;
    QVariant shippingMethod;
};

struct AuctionRow {
    qint64 rowid = 0;
    QVariant title;
    QVariant category;
    std::optional<QString> minimumBid;
    std::optional<QString> quantity;
};

int Score(const AuctionRow& auction, const CreatorRow& creator) {
    int score = 0;
    if (!auction.title.isNull() && !creator.title.isNull() &&
        TrimBlanks(auction.title.toString()) == TrimBlanks(creator.title.toString())) {
        score += 1;
    }
    if (!auction.category.isNull() &&
        WithoutBlanks(auction.category.toString()) == creator.category) {
        score += 2;
    }
    if (auction.minimumBid && creator.minimumBid && *auction.minimumBid == *creator.minimumBid) {
        score += 4;
    }
    if (auction.quantity && creator.quantity && *auction.quantity == *creator.quantity) {
        score += 8;
    }
    return score;
}

constexpr int kFullMatch = 1 + 2 + 4 + 8;

bool PostMarkSet(const QString& mark) {
    // The creator writes -1; a hand-edited file may say True.
    const QString value = mark.trimmed();
    return value.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 ||
           value == QLatin1String("-1");
}

}  // namespace

void RepairNulls(Database& db, const QDateTime& now) {
    const QString endDate =
        now.date().toString(QStringLiteral("MM/dd/yy")) + QStringLiteral(", 12:04:00 PST");
    // Each table on its own: one that cannot be mended (a database from
    // elsewhere that lacks a column) must not keep the others from it.
    try {
        RepairAuctions(db, endDate);
    } catch (const core::StoreError&) {
    }
    try {
        RepairBids(db, endDate);
    } catch (const core::StoreError&) {
    }
    try {
        RepairGlobal(db, now);
    } catch (const core::StoreError&) {
    }
}

void RepairNulls(Database& db) {
    RepairNulls(db, QDateTime::currentDateTime());
}

void ReconcileCreatorRows(Database& db, const QDate& today) {
    const QString app = QStringLiteral("Auction Creator");
    const QString user = core::CurrentSession().CurrentUser;
    if (!PostMarkSet(core::GetSetting(app, user, QStringLiteral("eBayPost")))) {
        return;
    }
    const QString postDate = core::GetSetting(app, user, QStringLiteral("eBayPostDate")).trimmed();
    QDate since = today;
    if (!postDate.isEmpty()) {
        // A date the creator wrote that cannot be read counts as today, as an
        // empty one does.
        if (const std::optional<QDateTime> parsed = core::ParseDateTime(postDate)) {
            since = parsed->date();
        }
    }

    try {
        Savepoint savepoint(db, "reconcile_creator");

        std::vector<CreatorRow> creators;
        {
            core::Statement query = db.Prepare(QStringLiteral(
                "SELECT ID, CreationDate, eBayAuctionTitle, eBayCategory, MinimumBid, Quantity, "
                "Shipping, Insurance, YourItemCost, ShippingMethod FROM AuctionCreator "
                "WHERE UserName = ? AND ACType = ? ORDER BY ID"));
            query.BindAll(user, QStringLiteral("Old Auction"));
            QHash<QString, QString> categories;
            while (query.Step()) {
                if (!OnOrAfter(query.Value(QStringLiteral("CreationDate")), since)) {
                    continue;
                }
                CreatorRow row;
                row.id = query.Int(QStringLiteral("ID"));
                row.title = query.Value(QStringLiteral("eBayAuctionTitle"));
                const QString number = query.Text(QStringLiteral("eBayCategory"));
                auto known = categories.constFind(number);
                if (known == categories.constEnd()) {
                    known = categories.insert(number, WithoutBlanks(CategoryText(db, number)));
                }
                row.category = *known;
                row.minimumBid = GeneralNumber(query.Value(QStringLiteral("MinimumBid")));
                row.quantity = GeneralNumber(query.Value(QStringLiteral("Quantity")));
                row.shipping = query.Value(QStringLiteral("Shipping"));
                row.insurance = query.Value(QStringLiteral("Insurance"));
                row.itemCost = query.Value(QStringLiteral("YourItemCost"));
                row.shippingMethod = query.Value(QStringLiteral("ShippingMethod"));
                creators.push_back(std::move(row));
            }
        }

        std::vector<AuctionRow> auctions;
        if (!creators.empty()) {
            core::Statement query = db.Prepare(QStringLiteral(
                "SELECT rowid, StartDate, ItemTitle, ItemCategory, MinimumBid, Quantity "
                "FROM Auctions WHERE UserName = ? AND AuctionCreatorID = 0 ORDER BY rowid"));
            query.Bind(1, user);
            while (query.Step()) {
                if (!OnOrAfter(query.Value(QStringLiteral("StartDate")), since)) {
                    continue;
                }
                AuctionRow row;
                row.rowid = query.Value(0).toLongLong();
                row.title = query.Value(QStringLiteral("ItemTitle"));
                row.category = query.Value(QStringLiteral("ItemCategory"));
                row.minimumBid = GeneralNumber(query.Value(QStringLiteral("MinimumBid")));
                row.quantity = GeneralNumber(query.Value(QStringLiteral("Quantity")));
                auctions.push_back(std::move(row));
            }
        }

        core::Statement link = db.Prepare(QStringLiteral(
            "UPDATE Auctions SET AuctionCreatorID = ?, ShippingCost = ?, OrderShipping = ?, "
            "InsuranceCost = ?, ItemCost = ?, ShippingMethod = ? WHERE rowid = ?"));
        for (const AuctionRow& auction : auctions) {
            // Every creator record is tried; when two match, the later one
            // is the one the auction keeps.
            for (const CreatorRow& creator : creators) {
                if (Score(auction, creator) != kFullMatch) {
                    continue;
                }
                const QVariant shipping = CurrencyOrNull(creator.shipping);
                link.Reset();
                link.BindAll(creator.id, shipping, shipping, CurrencyOrNull(creator.insurance),
                             CurrencyOrNull(creator.itemCost), creator.shippingMethod,
                             auction.rowid);
                link.Run();
            }
        }
        savepoint.Release();
    } catch (const core::StoreError&) {
        // The mark stays, so the next update tries again.
        return;
    }

    core::SaveSetting(app, user, QStringLiteral("eBayPost"), QStringLiteral("False"));
    core::SaveSetting(app, user, QStringLiteral("eBayPostDate"), QString());
}

void ReconcileCreatorRows(Database& db) {
    ReconcileCreatorRows(db, QDate::currentDate());
}

}  // namespace lw::update
