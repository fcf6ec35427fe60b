// SPDX-License-Identifier: GPL-3.0-or-later
// Loading and saving the feedback panel in its two directions. A waiting
// feedback file is only looked for, never read or changed.
#include "tasks/feedback_panel.h"

#include "tasks/email_task_panel.h"
#include "tasks/queue_files.h"
#include "tasks/task_lists.h"

namespace lw::tasks {

namespace {

// What the panel shows of one direction.
struct Direction {
    const char* titleWords;
    bool received;
    const char* flag;
    const char* date;
    const char* comment;
};
const Direction kReceived = {"Received Feedback: #", true, "ReturnFeedback", "ReturnFeedbackDate",
                             "ReturnFeedbackComment"};
const Direction kLeft = {"Feedback Left: #", false, "FeedbackLeft", "FeedbackLeftDate",
                         "FeedbackLeftComment"};

std::optional<FeedbackPanel> ShowFeedback(core::Database& db, const SelectedItem& item,
                                          const Direction& direction) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    FeedbackPanel panel;
    panel.frameTitle = ItemFrameTitle(QString::fromLatin1(direction.titleWords), *record);
    panel.chkReceivedFeedbackCaption =
        direction.received ? ReceivedFeedbackCaption() : LeftFeedbackCaption();
    panel.chkReceivedFeedback = FieldFlag(*record, QString::fromLatin1(direction.flag));
    panel.detailsEnabled = panel.chkReceivedFeedback;
    panel.txtReceivedFeedbackDate = FieldText(*record, QString::fromLatin1(direction.date));
    panel.txtReceivedFeedbackComment = FieldText(*record, QString::fromLatin1(direction.comment));
    panel.optReceivedFeedbackVisible = direction.received;
    panel.cmdComposeFeedbackVisible = !direction.received;
    if (direction.received) {
        panel.optReceivedFeedback =
            FieldIndex(*record, QStringLiteral("ReturnFeedbackType"), FeedbackTypes().size());
    }
    return panel;
}

}  // namespace

QString ReceivedFeedbackCaption() {
    return QStringLiteral("Received Feedback");
}

QString LeftFeedbackCaption() {
    return QStringLiteral("Left Feedback");
}

std::optional<FeedbackPanel> ShowReceivedFeedback(core::Database& db, const SelectedItem& item) {
    return ShowFeedback(db, item, kReceived);
}

std::optional<FeedbackPanel> ShowLeftFeedback(core::Database& db, const SelectedItem& item) {
    auto panel = ShowFeedback(db, item, kLeft);
    if (!panel) {
        return panel;
    }
    const QString code = IsSalesSide(item.side) ? QStringLiteral("FA") : QStringLiteral("FB");
    if (!FindItemFile(OutboxFeedbackFolder(), item, code, kFeedbackPartnerLine).isEmpty()) {
        panel->txtReceivedFeedbackDate = CurrentlyInOutbox();
    }
    return panel;
}

SaveOutcome SaveReceivedFeedback(core::Database& db, const SelectedItem& item,
                                 const FeedbackPanel& panel) {
    if (panel.chkReceivedFeedbackCaption == LeftFeedbackCaption()) {
        return SaveLeftFeedback(db, item, panel);
    }
    const QVariantMap fields = {
        {QStringLiteral("ReturnFeedback"), panel.chkReceivedFeedback},
        {QStringLiteral("ReturnFeedbackDate"), BoxValue(panel.txtReceivedFeedbackDate)},
        {QStringLiteral("ReturnFeedbackComment"), BoxValue(panel.txtReceivedFeedbackComment)},
        {QStringLiteral("ReturnFeedbackType"), IndexValue(panel.optReceivedFeedback)},
    };
    return SaveRecordFields(db, item, fields, RemovalCodeIf(panel.chkReceivedFeedback, "FBR"));
}

SaveOutcome SaveLeftFeedback(core::Database& db, const SelectedItem& item,
                             const FeedbackPanel& panel) {
    const bool ticked = panel.chkReceivedFeedback;
    QVariantMap fields = {
        {QStringLiteral("FeedbackLeft"), ticked},
        {QStringLiteral("FeedbackLeftComment"),
         ticked ? BoxValue(panel.txtReceivedFeedbackComment) : QVariant()},
    };
    if (!ticked || panel.txtReceivedFeedbackDate != CurrentlyInOutbox()) {
        fields.insert(QStringLiteral("FeedbackLeftDate"),
                      ticked ? BoxValue(panel.txtReceivedFeedbackDate) : QVariant());
    }
    return SaveRecordFields(db, item, fields, RemovalCodeIf(ticked, "FBL"));
}

void TickFeedback(FeedbackPanel& panel, bool ticked, const QDate& today) {
    panel.chkReceivedFeedback = ticked;
    panel.detailsEnabled = ticked;
    panel.txtReceivedFeedbackDate = ticked ? DateBoxText(today) : QString();
    if (!ticked) {
        panel.txtReceivedFeedbackComment.clear();
        panel.optReceivedFeedback = -1;
    }
}

}  // namespace lw::tasks
