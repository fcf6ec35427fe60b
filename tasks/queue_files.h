// SPDX-License-Identifier: GPL-3.0-or-later
// Where the task panels find an item's mail or feedback file in the user's
// outbox and archive folders, and how they read one. The panels only look at
// these files and, when a mail task is cleared, delete the item's own waiting
// mail; writing and sending them is the outbox's business. A name taken from
// the database or from a file never leads out of its folder.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "tasks/selected_item.h"

namespace lw::tasks {

// The folders under the user's folder (UserDataDir): Queue/Emails,
// Archive/Emails and Queue/Feedback.
QString OutboxMailFolder();
QString ArchiveMailFolder();
QString OutboxFeedbackFolder();

// The lines of a file, whatever its line ends (UTF-8, else Latin-1); only
// its first 4 MiB are read. nullopt when it cannot be opened.
std::optional<QStringList> ReadQueueFile(const QString& path);

// The selected item's file with this code (a mail's extension, "FA" or "FB")
// in folder, or "" when none stands there. A plain item's file is item +
// code + ".dat". A multi-winner winner's is item + "D" + bidder + code +
// ".dat", or item + "D" + a number + code + ".dat" whose line partnerLine
// (from 0) names the bidder; failing those, the plain name.
QString FindItemFile(const QString& folder, const SelectedItem& item, const QString& code,
                     int partnerLine);

// The line of a mail file that names its partner (To), and of a feedback file.
constexpr int kMailPartnerLine = 0;
constexpr int kFeedbackPartnerLine = 2;

}  // namespace lw::tasks
