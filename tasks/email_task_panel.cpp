// SPDX-License-Identifier: GPL-3.0-or-later
// The mail task and yes-or-no entry panels. The only file they ever delete is
// the item's own waiting mail, and only when its task is cleared.
#include "tasks/email_task_panel.h"

#include <QFile>

#include "core/text.h"
#include "tasks/queue_files.h"

namespace lw::tasks {

namespace {

const QString kWithItem = QStringLiteral("WITH ITEM#");

MailFile MailFromLines(const QString& path, const QStringList& lines) {
    MailFile mail;
    mail.path = path;
    mail.to = lines.value(0);
    mail.subject = lines.value(2);
    for (qsizetype i = 3; i < lines.size(); ++i) {
        mail.message += lines.at(i) + u'\n';
    }
    return mail;
}

// The item's mail in folder. A marker file names the main item of a mail of
// several items, whose file in the same folder holds the text (the archive
// keeps the markers of a sent mail as the outbox kept them). It is followed
// once: what the main item's file holds is shown as it is.
std::optional<MailFile> LookIn(const QString& folder, const SelectedItem& item,
                               const QString& extension) {
    QString path = FindItemFile(folder, item, extension, kMailPartnerLine);
    auto lines = path.isEmpty() ? std::nullopt : ReadQueueFile(path);
    if (lines && lines->value(0).trimmed() == kWithItem) {
        SelectedItem main;
        main.side = item.side;
        main.itemNumber = lines->value(1).trimmed();
        path = FindItemFile(folder, main, extension, kMailPartnerLine);
        lines = path.isEmpty() ? std::nullopt : ReadQueueFile(path);
    }
    return lines ? std::optional(MailFromLines(path, *lines)) : std::nullopt;
}

// What a task's ToDo row gives its item: the mail's extension and the names
// of the item's flag and date fields.
struct TaskRow {
    QString extension;
    QString flagField;
    QString dateField;
};

std::optional<TaskRow> ReadTaskRow(core::Database& db, const SelectedItem& item, const QString& key,
                                   const char* flagParam, const char* dateParam) {
    auto statement =
        db.Prepare(QStringLiteral("SELECT Parameter, ") + QString::fromLatin1(flagParam) +
                   QStringLiteral(", ") + QString::fromLatin1(dateParam) +
                   QStringLiteral(" FROM ToDo WHERE \"Key\" = ?1 AND "
                                  "(IFNULL(\"Auction?\", 0) <> 0) = ?2 LIMIT 1"));
    statement.BindAll(key, IsSalesSide(item.side));
    if (!statement.Step()) {
        return std::nullopt;
    }
    return TaskRow{statement.Text(0), statement.Text(1), statement.Text(2)};
}

// The save of both panels: the flag and the date of the fields the ToDo row
// names. "Currently in Outbox" is no date: the stored one stays. The row read
// goes to task.
SaveOutcome SaveTaskMark(core::Database& db, const SelectedItem& item, const QString& key,
                         const char* flagParam, const char* dateParam, bool ticked,
                         const QString& date, std::optional<TaskRow>& task) {
    SaveOutcome outcome = StepOver([&] {
        task = ReadTaskRow(db, item, key, flagParam, dateParam);
        if (!task) {
            return 0;
        }
        QVariantMap values = {{task->flagField, ticked}};
        if (date != CurrentlyInOutbox()) {
            values.insert(task->dateField, BoxValue(date));
        }
        return WriteSelectedRecord(db, item, values);
    });
    if (outcome.saved && ticked) {
        outcome.removalCode = key;
    }
    return outcome;
}

}  // namespace

QString CurrentlyInOutbox() {
    return QStringLiteral("Currently in Outbox");
}

std::optional<MailFile> LookInArchive(const SelectedItem& item, const QString& extension) {
    return LookIn(ArchiveMailFolder(), item, extension);
}

std::optional<MailFile> LookInOutbox(const SelectedItem& item, const QString& extension) {
    return LookIn(OutboxMailFolder(), item, extension);
}

std::optional<EmailTaskPanel> ShowEmailTask(core::Database& db, const SelectedItem& item,
                                            const QString& nodeText, const QString& key,
                                            const QString& templateName, const QString& extension,
                                            const QString& sentField, const QString& dateField) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    EmailTaskPanel panel;
    panel.lblEmailKey = key;
    panel.frameTitle = Caption(nodeText + QStringLiteral(" (#") +
                               FieldText(*record, QStringLiteral("ItemNumber")) + u')');
    panel.chkEmailSent2Caption = Caption(u'"' + templateName.section(u'(', 0, 0).trimmed() +
                                         QStringLiteral("\" Email Sent"));
    panel.chkEmailSent2 = FieldFlag(*record, sentField);
    panel.txtSentDate = FieldText(*record, dateField);

    std::optional<MailFile> mail = LookInArchive(item, extension);
    if (mail) {
        panel.found = EmailTaskPanel::Found::Archive;
    } else if ((mail = LookInOutbox(item, extension))) {
        panel.found = EmailTaskPanel::Found::Outbox;
        panel.txtSentDate = CurrentlyInOutbox();
    }
    panel.frmShowMessage = mail.has_value();
    if (mail) {
        panel.txtEmailTo = mail->to;
        panel.txtEmailSubject = mail->subject;
        panel.txtEmailMessage = mail->message;
    }
    panel.cmdComposeEmailEnabled = !mail;
    panel.cmdSaveEmailInfoEnabled = panel.found != EmailTaskPanel::Found::Archive;
    if (panel.chkEmailSent2) {
        panel.cmdComposeEmailEnabled = false;
        panel.txtSentDateEnabled = true;
    }
    return panel;
}

void TickEmailSent2(EmailTaskPanel& panel, bool ticked, const QDate& today) {
    panel.chkEmailSent2 = ticked;
    panel.txtSentDateEnabled = ticked;
    panel.txtSentDate = ticked ? DateBoxText(today) : QString();
}

SaveOutcome SaveEmailTask(core::Database& db, const SelectedItem& item, const QString& key,
                          bool chkEmailSent2, const QString& txtSentDate) {
    std::optional<TaskRow> task;
    const SaveOutcome outcome = SaveTaskMark(db, item, key, "AdditionalParam2", "AdditionalParam3",
                                             chkEmailSent2, txtSentDate, task);
    if (outcome.saved && !chkEmailSent2) {
        const QString waiting =
            FindItemFile(OutboxMailFolder(), item, task->extension, kMailPartnerLine);
        if (!waiting.isEmpty()) {
            QFile::remove(waiting);
        }
    }
    return outcome;
}

std::optional<EntryTaskPanel> ShowEntryTask(core::Database& db, const SelectedItem& item,
                                            const QString& nodeText, const QString& key,
                                            const QString& caption, const QString& dateCaption,
                                            const QString& instructions, const QString& boolField,
                                            const QString& dateField) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    EntryTaskPanel panel;
    panel.lblKey = key;
    panel.frameTitle = Caption(nodeText);
    panel.chkEmailSentCaption = Caption(caption);
    panel.lblEmailSentDateCaption = dateCaption;
    panel.txtEmailSentInstructions = instructions;
    panel.chkEmailSent = FieldFlag(*record, boolField);
    panel.txtEmailSentDateEnabled = panel.chkEmailSent;
    panel.txtEmailSentDate =
        core::Format(FieldValue(*record, dateField), QStringLiteral("MM/DD/YY"));
    return panel;
}

void TickEmailSent(EntryTaskPanel& panel, bool ticked, const QDate& today) {
    panel.chkEmailSent = ticked;
    panel.txtEmailSentDateEnabled = ticked;
    panel.txtEmailSentDate = ticked ? DateBoxText(today) : QString();
}

QString EntryDateText(const QString& text) {
    if (text.size() == 6) {
        return text.left(2) + u'/' + text.mid(2, 2) + u'/' + text.right(2);
    }
    return core::Format(text, QStringLiteral("mm/dd/yy"));
}

SaveOutcome SaveEntryTask(core::Database& db, const SelectedItem& item, const QString& key,
                          bool chkEmailSent, const QString& txtEmailSentDate) {
    // The box may not have lost the focus before the save: its text is taken
    // as the lost focus would leave it.
    const QString date =
        core::Format(EntryDateText(txtEmailSentDate.trimmed()), QStringLiteral("mm/dd/yy"));
    std::optional<TaskRow> task;
    return SaveTaskMark(db, item, key, "AdditionalParam4", "AdditionalParam5", chkEmailSent, date,
                        task);
}

}  // namespace lw::tasks
