// SPDX-License-Identifier: GPL-3.0-or-later
// How many connections an update keeps to the site: setting Connections of
// section Update (application Lotwright). More connections bring the pages
// of a distant site sooner; some sites limit or block many connections from
// one address, and 1 fetches one page at a time.
#pragma once

namespace lw::update {

inline constexpr int kFewestConnections = 1;
inline constexpr int kMostConnections = 8;
inline constexpr int kDefaultConnections = 6;

// The setting. Unset, or not a whole number: the default; out of the range:
// its nearer end (the window offers only the range; a hand-edited file may
// hold anything).
int ConnectionsSetting();
// Stores the setting, brought into the range.
void SaveConnectionsSetting(int connections);

}  // namespace lw::update
