// SPDX-License-Identifier: GPL-3.0-or-later
// Tips from the shipped file and the setting that decides whether they show.
#include "admin/tips.h"

#include <QFile>
#include <QRandomGenerator>

#include "core/session.h"
#include "core/settings.h"

namespace lw::admin {

namespace {

const QString& TipsKey() {
    static const QString key = QStringLiteral("Show Tips at Startup");
    return key;
}

}  // namespace

QString TipFilePath() {
    return core::CurrentSession().ShippedDir + QStringLiteral("/data/tipofday.txt");
}

QStringList LoadTips(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QStringList tips;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        const QString tip = line.trimmed();
        if (!tip.isEmpty()) {
            tips << tip;
        }
    }
    return tips;
}

int PickTip(int count, int current, QRandomGenerator& random) {
    if (count <= 0) {
        return -1;
    }
    if (count == 1) {
        return 0;
    }
    if (current < 0 || current >= count) {
        return static_cast<int>(random.bounded(count));
    }
    // Any of the others, evenly.
    const int step = 1 + static_cast<int>(random.bounded(count - 1));
    return (current + step) % count;
}

bool ShowTipsAtStartup() {
    return core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), TipsKey(),
                            QStringLiteral("1"))
               .trimmed() != QLatin1String("0");
}

void SetShowTipsAtStartup(bool show) {
    core::SaveSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"), TipsKey(),
                      show ? 1 : 0);
}

}  // namespace lw::admin
