// SPDX-License-Identifier: GPL-3.0-or-later
// The tip of the day: the tips shipped in data/tipofday.txt, a random pick
// that never repeats the tip on screen, and the "Show Tips at Startup"
// setting. No window here.
#pragma once

#include <QString>
#include <QStringList>

class QRandomGenerator;

namespace lw::admin {

// ShippedDir + "/data/tipofday.txt".
QString TipFilePath();
// One tip a line; blank lines are skipped. Empty when the file cannot be read.
QStringList LoadTips(const QString& path);
// A random position in 0..count-1 other than current (when there are two tips
// or more); -1 when count is 0.
int PickTip(int count, int current, QRandomGenerator& random);

// "Show Tips at Startup" in Tolvane / Options: shown unless it reads 0.
bool ShowTipsAtStartup();
void SetShowTipsAtStartup(bool show);

}  // namespace lw::admin
