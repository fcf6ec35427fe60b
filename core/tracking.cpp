// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tracking.h"

#include <array>
#include <utility>

#include "core/session.h"
#include "core/settings.h"
#include "core/store.h"

namespace lw::core {

namespace {

// Column names cannot be bound, so each known field has its statement here
// and no caller's text ever reaches SQL.
constexpr std::array<std::pair<const char*, const char*>, 3> kCounters{{
    {"AuctionsPosted", "UPDATE Tracking SET AuctionsPosted = IFNULL(AuctionsPosted, 0) + 1"},
    {"Updates", "UPDATE Tracking SET Updates = IFNULL(Updates, 0) + 1"},
    {"RubyLaneClick", "UPDATE Tracking SET RubyLaneClick = IFNULL(RubyLaneClick, 0) + 1"},
}};

constexpr std::array<std::pair<const char*, const char*>, 4> kMarks{{
    {"SendEmail", "UPDATE Tracking SET SendEmail = 1"},
    {"RubyLane", "UPDATE Tracking SET RubyLane = 1"},
    {"Paypal", "UPDATE Tracking SET Paypal = 1"},
    {"Billpoint", "UPDATE Tracking SET Billpoint = 1"},
}};

template <size_t N>
void RunFor(const std::array<std::pair<const char*, const char*>, N>& table, const QString& field) {
    for (const auto& [name, sql] : table) {
        if (field.compare(QLatin1String(name), Qt::CaseInsensitive) != 0) {
            continue;
        }
        try {
            Database db = OpenStore();
            // The row may be missing in a database from elsewhere.
            if (db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Tracking")) == 0) {
                db.Exec(QStringLiteral("INSERT INTO Tracking DEFAULT VALUES"));
            }
            db.Exec(QString::fromLatin1(sql));
        } catch (...) {
            // Usage counting never stops real work.
        }
        return;
    }
}

}  // namespace

void TrackCount(const QString& field) {
    RunFor(kCounters, field);
}

void TrackUse(const QString& field) {
    RunFor(kMarks, field);
}

bool UsageReportOn() {
    return GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                      QStringLiteral("Track")) == QLatin1String("ON");
}

QString UsageReportSummary() {
    return QStringLiteral(
        "Lotwright sends no usage report unless you switch it on under Edit Preferences, Views. "
        "Switched on, it sends at most every ten days your e-mail address in a scrambled form, "
        "the number of your sales, bids, updates and listings posted, which mail and payment "
        "features you have used, and how many of your sales are in each category.");
}

bool TakeUsageReportFirstNotice() {
    const QString app = QStringLiteral("Lotwright");
    const QString section = QStringLiteral("Options");
    const QString key = QStringLiteral("UsageReportNoticeGiven");
    const bool chosen =
        !GetSetting(QStringLiteral("Tolvane"), section, QStringLiteral("Track")).isEmpty();
    if (chosen || GetSetting(app, section, key) == QLatin1String("1")) {
        return false;
    }
    SaveSetting(app, section, key, 1);
    return true;
}

}  // namespace lw::core
