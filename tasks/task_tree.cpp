// SPDX-License-Identifier: GPL-3.0-or-later
// The task tree, the filter list, the item list and the dispatch of a node,
// read from ToDo, "ToDo Filters" and the filters' saved queries. A filter's
// name is found among the database's views and quoted before it becomes
// part of a statement; each list is read with one statement.
#include "tasks/task_tree.h"

#include <cmath>

#include "core/text.h"

namespace lw::tasks {

EndedTest::EndedTest(const ListScope& scope)
    : m_siteCorrection(scope.siteCorrection),
      m_now(scope.now),
      m_nowSeconds(scope.now.date().toJulianDay() * 86400 +
                   scope.now.time().msecsSinceStartOfDay() / 1000),
      m_correction(static_cast<qint64>(std::llround(core::Val(scope.siteCorrection)))) {}

bool EndedTest::operator()(const QString& endDate) const {
    // The stored form "mm/dd/yy, hh:mm:ss" and a three-letter zone, read in
    // place; TimeLeftText reads that form as the same day and second.
    static constexpr char kShape[] = "99/99/99, 99:99:99 ";
    bool stored = endDate.size() == 22;
    for (int i = 0; stored && i < 19; ++i) {
        const QChar c = endDate.at(i);
        stored = kShape[i] == '9' ? c.isDigit() && c.unicode() < 128 : c == QLatin1Char(kShape[i]);
    }
    auto number = [&endDate](int at) {
        return (endDate.at(at).unicode() - u'0') * 10 + (endDate.at(at + 1).unicode() - u'0');
    };
    if (stored) {
        const int year = number(6);
        const QDate day(core::ExpandYear(year), number(0), number(3));
        const QTime time(number(10), number(13), number(16));
        if (day.isValid() && time.isValid()) {
            const qint64 end = day.toJulianDay() * 86400 + time.msecsSinceStartOfDay() / 1000;
            return end - m_nowSeconds + m_correction <= 0;
        }
    }
    return core::TimeLeftText(endDate, m_siteCorrection, m_now) == QLatin1String("Ended");
}

namespace {

using core::Database;
using core::Statement;

QString ToDoSide() {
    return SideCondition(QStringLiteral("\"Auction?\""));
}

// The view's own spelling of a saved query's name; empty when there is none.
QString SavedQuery(Database& db, const QString& name) {
    Statement view = db.Prepare(QStringLiteral(
        "SELECT name FROM sqlite_schema WHERE type = 'view' AND name = ? COLLATE NOCASE"));
    view.Bind(1, name);
    return view.Step() ? view.Text(0) : QString();
}

// The rows of a saved query for the user; the columns are read in the order
// given.
Statement SelectFrom(Database& db, const QString& view, const QString& columns,
                     const ListScope& scope) {
    Statement rows =
        db.Prepare(QStringLiteral("SELECT ") + columns + QStringLiteral(" FROM ") +
                   core::QuoteIdentifier(view) + QStringLiteral(" WHERE UserName = ?"));
    rows.Bind(1, scope.userName);
    return rows;
}

QString PlainRow(const QString& itemNumber, const QString& title) {
    return itemNumber + QStringLiteral(": ") + title;
}

// The multi-winner twin of a filter, or none.
void AddDutchRows(Database& db, const ListScope& scope, const QString& queryName,
                  std::vector<ItemListRow>& rows) {
    const QString view = SavedQuery(db, queryName);
    if (view.isEmpty()) {
        return;
    }
    const bool sale = IsSalesSide(scope.side);
    const EndedTest ended(scope);
    Statement found =
        SelectFrom(db, view,
                   sale ? QStringLiteral("ItemNumber, ItemTitle, EndDate, HighBidderName")
                        : QStringLiteral("ItemNumber, ItemTitle, EndDate"),
                   scope);
    while (found.Step()) {
        if (!ended(found.Text(2))) {
            continue;
        }
        const QString item = found.Text(0);
        QString text = PlainRow(item, found.Text(1));
        if (sale) {
            text =
                QLatin1Char('D') + text + QStringLiteral(" (") + found.Text(3) + QLatin1Char(')');
        }
        rows.push_back({text, item});
    }
}

bool Is(const QString& text, QStringView word) {
    return text.trimmed().compare(word, Qt::CaseInsensitive) == 0;
}

}  // namespace

std::vector<TaskNode> TaskTree(Database& db, Side side) {
    Statement rows = db.Prepare(
        QStringLiteral("SELECT \"Key\", Relative, Relationship, Description, StartImage, isFolder "
                       "FROM ToDo WHERE ") +
        ToDoSide() + QStringLiteral(" ORDER BY rowid"));
    rows.Bind(1, IsSalesSide(side));
    std::vector<TaskNode> nodes;
    while (rows.Step()) {
        TaskNode node;
        node.key = rows.Text(0);
        node.relative = rows.Text(1);
        if (!rows.IsNull(2)) {
            node.relationship = rows.Value(2).toInt();
        }
        node.description = rows.Text(3);
        node.startImage = rows.Value(4).toInt();
        node.isFolder = rows.Flag(QStringLiteral("isFolder"));
        nodes.push_back(std::move(node));
    }
    return nodes;
}

QStringList TaskFilters(Database& db, const QString& userName, Side side) {
    Statement rows =
        db.Prepare(QStringLiteral("SELECT FilterName FROM \"ToDo Filters\" WHERE (") +
                   SideCondition(QStringLiteral("AuctionFilter")) +
                   QStringLiteral(" AND IFNULL(AllUsers, 0) <> 0) OR UserName = ? ORDER BY rowid"));
    rows.BindAll(IsSalesSide(side), userName);
    QStringList filters;
    while (rows.Step()) {
        if (!rows.Text(0).trimmed().isEmpty()) {
            filters << rows.Text(0);
        }
    }
    return filters;
}

QString NoPendingTasksRow() {
    return QStringLiteral("No Pending Tasks");
}

ItemList FillItemList(Database& db, const ListScope& scope, const QString& filterName) {
    const QString view = SavedQuery(db, filterName);
    if (view.isEmpty()) {
        throw core::StoreError(
            QStringLiteral("There is no saved query named \"%1\" for the task list.")
                .arg(filterName),
            0);
    }
    ItemList list;
    const EndedTest ended(scope);
    Statement found = SelectFrom(db, view, QStringLiteral("ItemNumber, ItemTitle, EndDate"), scope);
    while (found.Step()) {
        if (ended(found.Text(2))) {
            const QString item = found.Text(0);
            list.rows.push_back({PlainRow(item, found.Text(1)), item});
        }
    }
    const QString twin = filterName + QStringLiteral(" (Dutch)");
    if (IsSalesSide(scope.side)) {
        AddDutchSales(db, scope, twin, list.rows);
    } else {
        AddDutchBids(db, scope, twin, list.rows);
    }
    if (list.rows.empty()) {
        list.rows.push_back({NoPendingTasksRow(), QString()});
        list.recordCount = QStringLiteral("(0)");
    } else {
        list.recordCount = QStringLiteral("(%1)").arg(list.rows.size());
    }
    return list;
}

void AddDutchSales(Database& db, const ListScope& scope, const QString& queryName,
                   std::vector<ItemListRow>& rows) {
    ListScope sales = scope;
    sales.side = Side::Sales;
    AddDutchRows(db, sales, queryName, rows);
}

void AddDutchBids(Database& db, const ListScope& scope, const QString& queryName,
                  std::vector<ItemListRow>& rows) {
    ListScope bids = scope;
    bids.side = Side::Bids;
    AddDutchRows(db, bids, queryName, rows);
}

EmptyTaskPanel NoPendingTasksPanel(Side side) {
    if (IsSalesSide(side)) {
        return {13, QStringLiteral("No Auctions with Pending Tasks"),
                QStringLiteral("You do not currently have any Auctions with pending tasks.  The "
                               "Task Manager will become available once Auctions have ended.")};
    }
    return {14, QStringLiteral("No Bids with Pending Tasks"),
            QStringLiteral("You do not currently have any Bids with pending tasks.  The Task "
                           "Manager will become available once Bids have ended.")};
}

TaskDispatch ShowSelectedTask(Database& db, Side side, const QString& nodeKey,
                              const QString& recordCount) {
    TaskDispatch dispatch;
    if (recordCount.trimmed() == QLatin1String("(0)")) {
        dispatch.panel = TaskPanel::NoPendingTasks;
        return dispatch;
    }
    Statement row = db.Prepare(
        QStringLiteral("SELECT \"Key\", Description, \"Function\", Parameter, AdditionalParam1, "
                       "AdditionalParam2, AdditionalParam3, AdditionalParam4, AdditionalParam5 "
                       "FROM ToDo WHERE \"Key\" = ? AND ") +
        ToDoSide() + QStringLiteral(" ORDER BY rowid LIMIT 1"));
    row.BindAll(nodeKey, IsSalesSide(side));
    if (!row.Step()) {
        return dispatch;
    }
    dispatch.key = row.Text(0);
    dispatch.description = row.Text(1);
    const QString function = row.Text(2);
    dispatch.parameter = row.Text(3);
    for (int i = 0; i < 5; ++i) {
        dispatch.additional[static_cast<size_t>(i)] = row.Text(4 + i);
    }
    const bool sale = IsSalesSide(side);
    const QString& entry = dispatch.parameter;
    if (Is(function, u"Email")) {
        dispatch.panel = TaskPanel::EmailTask;
    } else if (Is(function, u"EmailEntry")) {
        dispatch.panel = TaskPanel::EntryTask;
    } else if (Is(function, u"Packing")) {
        dispatch.panel = sale ? TaskPanel::PackingList : TaskPanel::RemittanceAdvice;
    } else if (Is(function, u"NoteEntry")) {
        dispatch.panel = TaskPanel::Notes;
        dispatch.focus = QStringLiteral("txtToDoNotes");
    } else if (Is(function, u"ItemInfo")) {
        dispatch.panel = TaskPanel::ItemInfo;
    } else if (Is(function, u"BidSummary")) {
        dispatch.panel = sale ? TaskPanel::SaleSummary : TaskPanel::BidSummary;
    } else if (!Is(function, u"Entry")) {
        return dispatch;
    } else if (Is(entry, u"FeedbackLeft")) {
        dispatch.panel = TaskPanel::LeftFeedback;
    } else if (Is(entry, u"FeedbackReceived")) {
        dispatch.panel = TaskPanel::ReceivedFeedback;
    } else if (Is(entry, u"Shipping")) {
        dispatch.panel = TaskPanel::Shipping;
    } else if (Is(entry, u"ItemReceived")) {
        dispatch.panel = TaskPanel::ItemReceived;
    } else if (Is(entry, u"Address")) {
        dispatch.panel = sale ? TaskPanel::BuyerAddress : TaskPanel::SellerAddress;
        if (sale) {
            dispatch.focus = QStringLiteral("txtAddressMr");
        }
    } else if (Is(entry, u"PaymentInfo")) {
        dispatch.panel = sale ? TaskPanel::SalePayment : TaskPanel::BidPayment;
        if (sale) {
            dispatch.focus = QStringLiteral("lstPaymentMethods");
        }
    }
    return dispatch;
}

}  // namespace lw::tasks
