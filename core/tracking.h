// SPDX-License-Identifier: GPL-3.0-or-later
// Usage counters in the one row of Tracking, and the switch of the usage
// report that sends them to the program's maker. Counting may never stop
// real work: both counting calls swallow every failure. The counters are
// kept either way; they leave the machine only while the report is on, and
// it is off until the user switches it on.
#pragma once

#include <QString>

namespace lw::core {

// Adds one to a counter: "AuctionsPosted", "Updates" or "RubyLaneClick".
// Any other name is ignored.
void TrackCount(const QString& field);
// Sets a mark: "SendEmail", "RubyLane", "Paypal" or "Billpoint".
void TrackUse(const QString& field);

// The usage report's switch, setting Track of "Tolvane"/"Options": on only
// when the user has switched it on ("ON"); never set, or anything else, is off.
bool UsageReportOn();
// One or two sentences on what the report sends and where it is switched on,
// for the first start and the preferences.
QString UsageReportSummary();
// True once, at the first start at which the user has not yet chosen: the
// start then says what the report would send (the new-user window, or a
// word over the first main window). Later calls are false.
bool TakeUsageReportFirstNotice();

}  // namespace lw::core
