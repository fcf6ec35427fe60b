// SPDX-License-Identifier: GPL-3.0-or-later
// Usage counters in the one row of Tracking. Counting may never stop real
// work: both calls swallow every failure.
#pragma once

#include <QString>

namespace lw::core {

// Adds one to a counter: "AuctionsPosted", "Updates" or "RubyLaneClick".
// Any other name is ignored.
void TrackCount(const QString& field);
// Sets a mark: "SendEmail", "RubyLane", "Paypal" or "Billpoint".
void TrackUse(const QString& field);

}  // namespace lw::core
