// SPDX-License-Identifier: GPL-3.0-or-later
// The Task Manager page as data: the nodes of a side's task tree, the filter
// list, the rows of the item list with their count, the panel that stands
// for an empty list, and which panel a node of the tree opens, with the
// arguments its ToDo row gives. The window and the command line both build
// on these. A filter is the name of a saved query; it is checked against the
// database before it goes into SQL, and every value is bound. Nothing here
// draws, and nothing here writes to the database.
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>
#include <vector>

#include "core/store.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

// One node of the tree ToDo1, from its ToDo row.
struct TaskNode {
    QString key;                      // ToDo.Key, the node's key
    QString relative;                 // the parent's key; empty: a root
    std::optional<int> relationship;  // towards relative; none when Null
    QString description;              // the node's text
    int startImage = 0;               // the node's picture when the tree is built
    bool isFolder = false;            // a double-click opens or closes it
};

// BuildSalesTree, BuildBidsTree: the side's nodes in the table's order, a
// parent before its children. The window adds them so, expands every node
// from the second on, and selects "SUM".
std::vector<TaskNode> TaskTree(core::Database& db, Side side);

// lstFilters: the side's filters for all users, and every filter of the
// user's own on both sides, in the table's order. Row 0 is selected.
QStringList TaskFilters(core::Database& db, const QString& userName, Side side);

// Whose list, and the clock its time-left texts are read by.
struct ListScope {
    Side side = Side::Sales;
    QString userName;
    QString siteCorrection = QStringLiteral("0");
    QDateTime now = QDateTime::currentDateTime();
};

// Whether an end date's time left (TimeLeftText) reads "Ended" at the
// scope's clock: an item is a task only then. A sale that runs until later
// today is in the pending queries, which cut by the day, but is not yet
// anything to do. The stored form is read in place, without the text.
class EndedTest {
public:
    explicit EndedTest(const ListScope& scope);
    bool operator()(const QString& endDate) const;

private:
    QString m_siteCorrection;
    QDateTime m_now;
    qint64 m_nowSeconds = 0;  // the clock's day and second, as the end's are counted
    qint64 m_correction = 0;
};

// A row of lstToAuctions.
struct ItemListRow {
    QString text;        // "123: Title", or "D123: Title (bidder)" for a multi-winner sale
    QString itemNumber;  // the row's item data; empty for "No Pending Tasks"
};

// The text of the row of an empty list.
QString NoPendingTasksRow();

struct ItemList {
    std::vector<ItemListRow> rows;
    QString recordCount;  // lblToDoRecordCount: "(n)"
    // "(0)": the list holds the row "No Pending Tasks", the side's empty
    // panel is shown and the tree takes no clicks. Otherwise row 0 is
    // selected, and with it the node "SUMS".
    bool Empty() const { return recordCount == QLatin1String("(0)"); }
};

// FillItemList: the rows of the user's items that filterName (a saved query)
// returns and whose time left reads "Ended", then the rows of its " (Dutch)"
// twin, appended. A filter that names no saved query throws core::StoreError
// saying so; a missing twin adds nothing.
ItemList FillItemList(core::Database& db, const ListScope& scope, const QString& filterName);

// The rows of the multi-winner query queryName, appended to rows: on the
// sales side one per winner, "D" + item + ": " + title + " (" + bidder + ")";
// on the bids side in the plain form. Only items whose time left reads
// "Ended" are rows.
void AddDutchSales(core::Database& db, const ListScope& scope, const QString& queryName,
                   std::vector<ItemListRow>& rows);
void AddDutchBids(core::Database& db, const ListScope& scope, const QString& queryName,
                  std::vector<ItemListRow>& rows);

// The panel that stands for an empty list: fraToDo(13) on the sales side,
// fraToDo(14) on the bids side.
struct EmptyTaskPanel {
    int index = 0;
    QString title;
    QString text;
};
EmptyTaskPanel NoPendingTasksPanel(Side side);

// What a node of the tree opens.
enum class TaskPanel {
    None,              // a Function the program does not know: nothing changes
    NoPendingTasks,    // the list is empty: NoPendingTasksPanel
    EmailTask,         // "Email": key, AdditionalParam1, Parameter, AdditionalParam2, 3
    EntryTask,         // "EmailEntry": Parameter, AdditionalParam1 to 5
    PackingList,       // "Packing" on a sale
    RemittanceAdvice,  // "Packing" on a bid
    Notes,             // "NoteEntry"
    ItemInfo,          // "ItemInfo"
    SaleSummary,       // "BidSummary" on a sale
    BidSummary,        // "BidSummary" on a bid
    LeftFeedback,      // "Entry" "FeedbackLeft"
    ReceivedFeedback,  // "Entry" "FeedbackReceived"
    Shipping,          // "Entry" "Shipping"
    ItemReceived,      // "Entry" "ItemReceived"
    BuyerAddress,      // "Entry" "Address" on a sale
    SellerAddress,     // "Entry" "Address" on a bid
    SalePayment,       // "Entry" "PaymentInfo" on a sale
    BidPayment,        // "Entry" "PaymentInfo" on a bid
};

struct TaskDispatch {
    TaskPanel panel = TaskPanel::None;
    QString key;                        // the node's ToDo.Key
    QString description;                // the node's text
    QString parameter;                  // ToDo.Parameter
    std::array<QString, 5> additional;  // ToDo.AdditionalParam1 to AdditionalParam5
    QString focus;                      // the control that takes the focus afterwards, if any
};

// ShowSelectedTask: the panel of the node nodeKey on the side, given the
// text of lblToDoRecordCount. A key with no ToDo row on the side opens
// nothing. Throws core::StoreError.
TaskDispatch ShowSelectedTask(core::Database& db, Side side, const QString& nodeKey,
                              const QString& recordCount);

}  // namespace lw::tasks
