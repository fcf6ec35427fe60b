// SPDX-License-Identifier: GPL-3.0-or-later
// The feedback panel of the task manager, fraToDo(12), which serves both
// directions: the feedback the partner gave (received) and the feedback the
// user gave (left), with the marker of a feedback still waiting in the
// outbox. A plain struct named after the controls; nothing here draws, posts
// or ends an item: a save names the removal code ("FBR", "FBL") for its
// caller.
#pragma once

#include <QDate>
#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

struct FeedbackPanel {
    QString frameTitle;                  // "Received Feedback: #..." or "Feedback Left: #..."
    QString chkReceivedFeedbackCaption;  // "Received Feedback" or "Left Feedback"
    bool chkReceivedFeedback = false;
    QString txtReceivedFeedbackDate;
    QString txtReceivedFeedbackComment;
    int optReceivedFeedback = -1;  // row of FeedbackTypes(); -1 none set
    bool optReceivedFeedbackVisible = false;
    bool cmdComposeFeedbackVisible = false;
    // The date, the options and the comment take input while the box is ticked.
    bool detailsEnabled = false;
};

QString ReceivedFeedbackCaption();  // "Received Feedback"
QString LeftFeedbackCaption();      // "Left Feedback"

// ShowReceivedFeedback, ShowLeftFeedback: nullopt when the record is gone.
// A left feedback waiting in Queue/Feedback shows "Currently in Outbox" as
// its date. Throw core::StoreError.
std::optional<FeedbackPanel> ShowReceivedFeedback(core::Database& db, const SelectedItem& item);
std::optional<FeedbackPanel> ShowLeftFeedback(core::Database& db, const SelectedItem& item);

// SaveReceivedFeedback: a panel whose box reads "Left Feedback" is saved by
// SaveLeftFeedback. Otherwise ReturnFeedback, its date and comment (Null when
// empty) and the set option's row (Null for none); removal code "FBR" with
// the box ticked.
SaveOutcome SaveReceivedFeedback(core::Database& db, const SelectedItem& item,
                                 const FeedbackPanel& panel);
// SaveLeftFeedback: ticked, FeedbackLeft with the date and comment as entered
// ("Currently in Outbox" leaves the stored date); cleared, FeedbackLeft False
// and date and comment Null. Removal code "FBL" with the box ticked; the
// caller shows the panel again (ShowLeftFeedback) after it.
SaveOutcome SaveLeftFeedback(core::Database& db, const SelectedItem& item,
                             const FeedbackPanel& panel);

// chkReceivedFeedback_Click: ticking enables the details and puts today in
// the date box; clearing empties and disables them.
void TickFeedback(FeedbackPanel& panel, bool ticked, const QDate& today = QDate::currentDate());

}  // namespace lw::tasks
