// SPDX-License-Identifier: GPL-3.0-or-later
// The mail task panel (fraToDo(10)) and the yes-or-no entry panel
// (fraToDo(4)) of the task manager: whether the item's mail of a task was
// sent, the mail itself as it stands in the archive or waits in the outbox,
// and the saves that set the item's flag and date fields that the task's
// ToDo row names. Those names come from the database: they are checked
// against the record's table before they reach a statement. Nothing here
// draws, sends or ends an item; the only file a panel touches is the item's
// own waiting mail, deleted when its task is cleared.
#pragma once

#include <QDate>
#include <QString>
#include <optional>

#include "core/store.h"
#include "tasks/panel_values.h"
#include "tasks/selected_item.h"

namespace lw::tasks {

// What txtSentDate and txtReceivedFeedbackDate read while the item's file
// waits in the outbox.
QString CurrentlyInOutbox();

// A mail file as the panel shows it.
struct MailFile {
    QString path;     // the file read (for a marker file, the main item's mail)
    QString to;       // line 1
    QString subject;  // line 3; line 2 is not shown
    QString message;  // every further line, each with a line break behind it
};

// LookInArchive, LookInOutbox: the item's mail of this extension in
// Archive/Emails or Queue/Emails. A file whose first line is "WITH ITEM#"
// stands for the mail of the item its second line names, which is read in
// its place. nullopt when there is none.
std::optional<MailFile> LookInArchive(const SelectedItem& item, const QString& extension);
std::optional<MailFile> LookInOutbox(const SelectedItem& item, const QString& extension);

struct EmailTaskPanel {
    QString lblEmailKey;           // the ToDo key of the node
    QString frameTitle;            // node text + " (#" + ItemNumber + ")"
    QString chkEmailSent2Caption;  // a quote, the template's name before any "(", a quote, " Email
                                   // Sent"
    bool chkEmailSent2 = false;
    QString txtSentDate;
    bool txtSentDateEnabled = false;
    enum class Found { Nowhere, Archive, Outbox };
    Found found = Found::Nowhere;
    bool frmShowMessage = false;  // the message frame shows
    QString txtEmailTo;
    QString txtEmailSubject;
    QString txtEmailMessage;
    bool cmdComposeEmailEnabled = false;
    // The sent mail in the archive is final; a waiting one may still be
    // withdrawn by clearing the box and saving.
    bool cmdSaveEmailInfoEnabled = false;
};

// ShowEmailTask(key, template, extension, sentField, dateField) for the
// node of text nodeText. nullopt when the record is gone. Throws
// core::StoreError.
std::optional<EmailTaskPanel> ShowEmailTask(core::Database& db, const SelectedItem& item,
                                            const QString& nodeText, const QString& key,
                                            const QString& templateName, const QString& extension,
                                            const QString& sentField, const QString& dateField);
// chkEmailSent2_Click: ticking enables the date box and puts today there;
// clearing empties and disables it.
void TickEmailSent2(EmailTaskPanel& panel, bool ticked, const QDate& today = QDate::currentDate());

// SaveEmailTask: the fields named by AdditionalParam2 and AdditionalParam3
// of the key's ToDo row take the box and the date (Null when empty; "Currently
// in Outbox" leaves the stored date as it is). With the box clear, the item's
// own file of this mail waiting in Queue/Emails is deleted. Removal code: the
// key, with the box ticked.
SaveOutcome SaveEmailTask(core::Database& db, const SelectedItem& item, const QString& key,
                          bool chkEmailSent2, const QString& txtSentDate);

struct EntryTaskPanel {
    QString lblKey;
    QString frameTitle;                // the node's text
    QString chkEmailSentCaption;       // AdditionalParam1
    QString lblEmailSentDateCaption;   // AdditionalParam2
    QString txtEmailSentInstructions;  // AdditionalParam3
    bool chkEmailSent = false;
    QString txtEmailSentDate;  // "MM/DD/YY"
    bool txtEmailSentDateEnabled = false;
};

// ShowEntryTask(key, caption, dateCaption, instructions, boolField,
// dateField). nullopt when the record is gone. Throws core::StoreError.
std::optional<EntryTaskPanel> ShowEntryTask(core::Database& db, const SelectedItem& item,
                                            const QString& nodeText, const QString& key,
                                            const QString& caption, const QString& dateCaption,
                                            const QString& instructions, const QString& boolField,
                                            const QString& dateField);
// chkEmailSent_Click.
void TickEmailSent(EntryTaskPanel& panel, bool ticked, const QDate& today = QDate::currentDate());
// txtEmailSentDate_LostFocus: six characters get their slashes ("060700" is
// "06/07/00"); anything else is shown "mm/dd/yy" when it is a date.
QString EntryDateText(const QString& text);
// SaveEntryTask: as SaveEmailTask with AdditionalParam4 and AdditionalParam5,
// the date written "mm/dd/yy"; no file is touched.
SaveOutcome SaveEntryTask(core::Database& db, const SelectedItem& item, const QString& key,
                          bool chkEmailSent, const QString& txtEmailSentDate);

}  // namespace lw::tasks
