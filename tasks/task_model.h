// SPDX-License-Identifier: GPL-3.0-or-later
// The task model: the task codes the program names, what marks each task of
// an item done, the pictures of the tree's task nodes for the selected item,
// and when an item leaves the task manager (the removal rule, the manual
// removal) or comes back to it. There are no per-item task rows: a task's
// state is read afresh from the item's own record each time. Nothing here
// draws, and nothing here writes any field but an item's ToDoComplete.
#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <vector>

#include "core/store.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

// Pictures of the task tree: a done task, a pending one.
inline constexpr int kDonePicture = 3;
inline constexpr int kPendingPicture = 4;

// The ToDo keys the program itself names. The mail tasks beyond these are
// ToDo rows of their own.
inline constexpr QStringView kTaskRoot = u"SUM";           // selected after a build; no state
inline constexpr QStringView kTaskSummary = u"SUMS";       // selected after a filter change
inline constexpr QStringView kTaskNotes = u"SUMN";         // both sides
inline constexpr QStringView kTaskAddress = u"PRA";        // both sides: the partner's address
inline constexpr QStringView kTaskSalePayment = u"PRI";    // sales
inline constexpr QStringView kTaskBidPayment = u"PRP";     // bids
inline constexpr QStringView kTaskPackingList = u"SHP";    // sales
inline constexpr QStringView kTaskRemittance = u"PRS";     // bids
inline constexpr QStringView kTaskShipped = u"SHS";        // sales
inline constexpr QStringView kTaskItemReceived = u"IRR";   // bids
inline constexpr QStringView kTaskFeedbackLeft = u"FBL";   // both sides
inline constexpr QStringView kTaskFeedbackGot = u"FBR";    // both sides
inline constexpr QStringView kTaskShippedMail = u"SHE";    // sales, a ToDo mail row
inline constexpr QStringView kTaskBuyerReceived = u"SHR";  // sales, a ToDo mail row
inline constexpr QStringView kTaskReceivedMail = u"IRE";   // bids, a ToDo mail row

// How a task's state is read from the item's record.
enum class DoneTest {
    FlagTrue,        // the Boolean field is True
    NotNull,         // the field holds a value
    PaymentSet,      // the field holds a row of the payment list
    PartnerAddress,  // the partner's address row holds something besides its e-mail
};

struct DoneRule {
    DoneTest test = DoneTest::FlagTrue;
    QString field;  // the item's field; empty for PartnerAddress
};

// The rule of a code the program names (SUMN, PRA, PRI, PRP, SHP, PRS, SHS,
// IRR, FBL, FBR) on that side; nullopt for any other code.
std::optional<DoneRule> FixedDoneRule(Side side, QStringView code);

// The rule of a node of the task tree, from its ToDo row: an "EmailEntry"
// row's flag is its AdditionalParam4, an "Email" row's its AdditionalParam2,
// any other row takes the fixed rule of its key; nullopt: the node has no
// state (the root, the summary, the folders).
std::optional<DoneRule> NodeDoneRule(Side side, const QString& key, const QString& function,
                                     const QString& mailFlag, const QString& entryFlag);

struct TaskPicture {
    QString key;  // ToDo.Key of the node
    int picture = kPendingPicture;
};

// RefreshTaskIcons: the picture of every task node of the item's side, in
// the tree's order, for the selected item: the user's own row of it (any
// user's when userName is empty). The partner's address is looked up on
// siteFlag. Nodes without state are left out. Empty when the item is not
// found (the tree keeps its pictures). Throws core::StoreError.
std::vector<TaskPicture> RefreshTaskIcons(core::Database& db, const QString& userName, int siteFlag,
                                          const SelectedItem& item);
// The same for a record already read (ReadSelectedRecord) on that side: a
// click on the list reads the item once for its summary and its pictures.
std::vector<TaskPicture> TaskPictures(core::Database& db, int siteFlag, Side side,
                                      const QVariantMap& record);

// True when the item was finished (its ToDoComplete set), so the caller rebuilds the tree.
// That happens when taskCode is the removal preference of the user's Users
// row for the item's side (AuctionRemoveTag, BidRemoveTag); with no Users
// row, another preference or no preference nothing is written.
bool CompleteIfRemovalTask(core::Database& db, const QString& userName, const SelectedItem& item,
                           const QString& taskCode);

// cmdRemoveToDo: the selected item leaves the task manager, whatever its
// tasks. True when its row was found.
bool RemoveSelectedFromTasks(core::Database& db, const SelectedItem& item);

// The return to the task manager: ToDoComplete cleared on the item's row.
// True when its row was found.
bool ReturnToTasks(core::Database& db, const SelectedItem& item);

}  // namespace lw::tasks
