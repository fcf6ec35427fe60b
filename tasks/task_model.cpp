// SPDX-License-Identifier: GPL-3.0-or-later
// The task codes' rules, the pictures of the task nodes and the removal of
// an item from the task manager. Each read is one statement; the fields a
// ToDo row names are looked up among the record's own fields, never put
// into SQL.
#include "tasks/task_model.h"

namespace lw::tasks {

namespace {

using core::Database;
using core::Statement;

bool SameCode(QStringView a, QStringView b) {
    return a.trimmed().compare(b.trimmed(), Qt::CaseInsensitive) == 0;
}

// The item as the user's own row, when a user is named.
SelectedItem UsersOwn(SelectedItem item, const QString& userName) {
    if (!userName.isEmpty()) {
        item.userName = userName;
    }
    return item;
}

// A field of the record, its name matched without regard to case; nullopt
// when the record has no such field.
std::optional<QVariant> Field(const QVariantMap& record, const QString& name) {
    const auto exact = record.constFind(name);
    if (exact != record.cend()) {
        return *exact;
    }
    for (auto it = record.cbegin(); it != record.cend(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0) {
            return *it;
        }
    }
    return std::nullopt;
}

// Whether the partner's address row holds an address: some field other than
// its key (which names the partner and says nothing of where it lives) and
// its e-mail, trimmed, is not blank. No row: no address.
bool PartnerHasAddress(Database& db, int siteFlag, Side side, const QVariantMap& record) {
    const bool sale = IsSalesSide(side);
    const QString partner =
        Field(record, sale ? QStringLiteral("HighBidderName") : QStringLiteral("SellerName"))
            .value_or(QVariant())
            .toString();
    const QString key = sale ? QStringLiteral("BuyerID") : QStringLiteral("SellerID");
    Statement row = db.Prepare(
        sale ? QStringLiteral("SELECT * FROM Buyers WHERE AuctionSiteFlag = ? AND BuyerID = ?")
             : QStringLiteral("SELECT * FROM Sellers WHERE AuctionSiteFlag = ? AND SellerID = ?"));
    row.BindAll(siteFlag, partner);
    if (!row.Step()) {
        return false;
    }
    for (int column = 0; column < row.ColumnCount(); ++column) {
        const QString name = row.ColumnName(column);
        if (name.compare(key, Qt::CaseInsensitive) == 0 ||
            name.compare(u"AuctionSiteFlag", Qt::CaseInsensitive) == 0 ||
            name.compare(u"Email", Qt::CaseInsensitive) == 0) {
            continue;
        }
        if (!row.Text(column).trimmed().isEmpty()) {
            return true;
        }
    }
    return false;
}

// A field a ToDo row names that the record lacks reads as not done.
bool Done(const QVariantMap& record, const DoneRule& rule) {
    const std::optional<QVariant> value = Field(record, rule.field);
    if (!value) {
        return false;
    }
    switch (rule.test) {
        case DoneTest::FlagTrue:
            return core::FlagValue(*value);
        case DoneTest::NotNull:
            return !value->isNull();
        case DoneTest::PaymentSet:
            return !value->isNull() && value->toDouble() >= 0;
        case DoneTest::PartnerAddress:
            break;
    }
    return false;
}

bool SetToDoComplete(Database& db, const SelectedItem& item, bool complete) {
    return WriteSelectedRecord(db, item, {{QStringLiteral("ToDoComplete"), complete}}) > 0;
}

}  // namespace

std::optional<DoneRule> FixedDoneRule(Side side, QStringView code) {
    enum Sides { kSales = 1, kBids = 2, kBoth = 3 };
    struct Fixed {
        QStringView code;
        int sides;
        DoneTest test;
        QStringView field;
    };
    static constexpr Fixed kFixed[] = {
        {kTaskNotes, kSales, DoneTest::NotNull, u"AuctionNotes"},
        {kTaskNotes, kBids, DoneTest::NotNull, u"BidNotes"},
        {kTaskAddress, kBoth, DoneTest::PartnerAddress, u""},
        {kTaskSalePayment, kSales, DoneTest::PaymentSet, u"OrderPaymentMethod"},
        {kTaskBidPayment, kBids, DoneTest::PaymentSet, u"OrderPaymentMethod"},
        {kTaskPackingList, kSales, DoneTest::FlagTrue, u"PackingListPrinted"},
        {kTaskRemittance, kBids, DoneTest::FlagTrue, u"PackingListPrinted"},
        {kTaskShipped, kSales, DoneTest::NotNull, u"ShippingDate"},
        {kTaskItemReceived, kBids, DoneTest::NotNull, u"ItemReceivedDate"},
        {kTaskFeedbackLeft, kBoth, DoneTest::FlagTrue, u"FeedbackLeft"},
        {kTaskFeedbackGot, kBoth, DoneTest::FlagTrue, u"ReturnFeedback"},
    };
    const int wanted = IsSalesSide(side) ? kSales : kBids;
    for (const Fixed& fixed : kFixed) {
        if ((fixed.sides & wanted) != 0 && SameCode(fixed.code, code)) {
            return DoneRule{fixed.test, fixed.field.toString()};
        }
    }
    return std::nullopt;
}

std::optional<DoneRule> NodeDoneRule(Side side, const QString& key, const QString& function,
                                     const QString& mailFlag, const QString& entryFlag) {
    if (function.trimmed().compare(u"EmailEntry", Qt::CaseInsensitive) == 0) {
        return DoneRule{DoneTest::FlagTrue, entryFlag.trimmed()};
    }
    if (function.trimmed().compare(u"Email", Qt::CaseInsensitive) == 0) {
        return DoneRule{DoneTest::FlagTrue, mailFlag.trimmed()};
    }
    return FixedDoneRule(side, key);
}

std::vector<TaskPicture> TaskPictures(Database& db, int siteFlag, Side side,
                                      const QVariantMap& record) {
    Statement nodes = db.Prepare(
        QStringLiteral("SELECT \"Key\", \"Function\", AdditionalParam2, AdditionalParam4 FROM "
                       "ToDo WHERE ") +
        SideCondition(QStringLiteral("\"Auction?\"")) + QStringLiteral(" ORDER BY rowid"));
    nodes.Bind(1, IsSalesSide(side));
    std::vector<TaskPicture> pictures;
    std::optional<bool> address;  // looked up once, for the first node that asks
    while (nodes.Step()) {
        const QString key = nodes.Text(0);
        const std::optional<DoneRule> rule =
            NodeDoneRule(side, key, nodes.Text(1), nodes.Text(2), nodes.Text(3));
        if (!rule) {
            continue;
        }
        bool done = false;
        if (rule->test == DoneTest::PartnerAddress) {
            if (!address) {
                address = PartnerHasAddress(db, siteFlag, side, record);
            }
            done = *address;
        } else {
            done = Done(record, *rule);
        }
        pictures.push_back({key, done ? kDonePicture : kPendingPicture});
    }
    return pictures;
}

std::vector<TaskPicture> RefreshTaskIcons(Database& db, const QString& userName, int siteFlag,
                                          const SelectedItem& item) {
    const std::optional<QVariantMap> record = ReadSelectedRecord(db, UsersOwn(item, userName));
    if (!record) {
        return {};
    }
    return TaskPictures(db, siteFlag, item.side, *record);
}

bool CompleteIfRemovalTask(Database& db, const QString& userName, const SelectedItem& item,
                           const QString& taskCode) {
    Statement user = db.Prepare(QStringLiteral(
        "SELECT AuctionRemoveTag, BidRemoveTag FROM Users WHERE UserName = ? LIMIT 1"));
    user.Bind(1, userName);
    if (!user.Step()) {
        return false;
    }
    const QString tag = user.Text(IsSalesSide(item.side) ? 0 : 1);
    if (tag.trimmed().isEmpty() || !SameCode(tag, taskCode)) {
        return false;
    }
    return SetToDoComplete(db, UsersOwn(item, userName), true);
}

bool RemoveSelectedFromTasks(Database& db, const SelectedItem& item) {
    return SetToDoComplete(db, item, true);
}

bool ReturnToTasks(Database& db, const SelectedItem& item) {
    return SetToDoComplete(db, item, false);
}

}  // namespace lw::tasks
