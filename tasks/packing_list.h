// SPDX-License-Identifier: GPL-3.0-or-later
// The packing list of a sale and the remittance advice of a won bid: the
// user's template (aucpack.rtf, bidpack.rtf in Configs/) loaded into a
// document and its tokens replaced from the selected record, the user's rows
// and the partner's address; the question about the partner's other items,
// and the boxes that stop a build for missing data. The print mark and the
// copy saved for a word processor are here too. It never draws, opens a
// program or touches the clipboard (the window does, with what these return),
// never writes the template, and never lets a store failure out: that is told
// through the Ui port.
#pragma once

#include <QString>

#include "core/store.h"
#include "tasks/selected_item.h"

class QTextDocument;

namespace lw::tasks {

// How a build ended.
enum class PackingStatus {
    Built,               // the document is ready for the panel
    MissingAddress,      // the partner has no address: told by box
    MissingPaymentInfo,  // the bid has no payment method: told by box
    NoRecord,            // the selected record is gone: an empty document, no box
    Failed,              // the database failed: told by box, the document is empty
};

// The panel the window shows after the build.
enum class PackingPanel {
    Packing,  // txtPackingList with the document
    Address,  // the partner's address (the buyer's on a sale, the seller's on a bid)
    Payment,  // the payment record
};

struct PackingOutcome {
    PackingStatus status = PackingStatus::NoRecord;
    // "Packing List for #" or "Remittance Advice for #" and the item number;
    // empty when there is no record.
    QString frameTitle;
    // The task node to select when the build stopped: "PRA" or "PRP".
    QString node;
    PackingPanel panel = PackingPanel::Packing;
    // Why the template gave an empty document (missing or damaged); empty
    // when it loaded. The build goes on: the tokens are then found nowhere.
    QString templateProblem;

    bool Built() const { return status == PackingStatus::Built; }
};

// "aucpack.rtf" on the sales side, "bidpack.rtf" on the bids side.
QString PackingTemplateName(Side side);
// The template in the session's Configs/.
QString PackingTemplatePath(Side side);
// Copies each shipped template into Configs/ where that folder has none. A
// template already there is the user's and is never replaced. False, with a
// message naming the file, when one could not be copied.
bool InstallPackingTemplates(QString* error);

// The packing list for the selected sale (a multi-winner sale's winner row
// read through "Dutch Details"). Asks whether to include the buyer's other
// pending sales (default Yes).
PackingOutcome BuildPackingList(core::Database& db, const SelectedItem& item,
                                QTextDocument& document);
// The remittance advice for the selected bid. Asks whether to include the
// other pending bids won from the seller (default Yes).
PackingOutcome BuildRemittanceAdvice(core::Database& db, const SelectedItem& item,
                                     QTextDocument& document);
// The one of the two that the item's side calls for. After a build the window
// puts the caret at the start, shows the outcome's panel (selecting its node
// when the build stopped) and refreshes the task icons.
PackingOutcome BuildPackingDocument(core::Database& db, const SelectedItem& item,
                                    QTextDocument& document);

// PackingListPrinted set on the selected record; the caller then refreshes the
// task icons. False when the record is gone or the store failed (told by box).
bool MarkPackingPrinted(core::Database& db, const SelectedItem& item);

// The first "pack" + n + ".rtf" (n from 1) not yet in folder, so that a copy
// still open in a word processor is never touched.
QString NextPackingEditPath(const QString& folder);
// Saves the document as RTF under the next free name in folder (the system's
// temporary folder when empty) for a word processor to open. The path, or ""
// with a message in error. The copies stay behind.
QString SavePackingForEdit(const QTextDocument& document, QString* error,
                           const QString& folder = QString());

struct BoxText {
    QString text;
    QString title;
};
// The box shown when no program opens the saved copy and the document went to
// the clipboard instead.
BoxText WordProcessorFallback();

}  // namespace lw::tasks
