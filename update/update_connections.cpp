// SPDX-License-Identifier: GPL-3.0-or-later
// The connections setting, read and written through the settings store.
#include "update/update_connections.h"

#include <QString>
#include <algorithm>

#include "core/settings.h"

namespace lw::update {

namespace {

const QString kApp = QStringLiteral("Lotwright");
const QString kSection = QStringLiteral("Update");
const QString kKey = QStringLiteral("Connections");

}  // namespace

int ConnectionsSetting() {
    bool number = false;
    const int connections = core::GetSetting(kApp, kSection, kKey).trimmed().toInt(&number);
    return number ? std::clamp(connections, kFewestConnections, kMostConnections)
                  : kDefaultConnections;
}

void SaveConnectionsSetting(int connections) {
    core::SaveSetting(kApp, kSection, kKey,
                      std::clamp(connections, kFewestConnections, kMostConnections));
}

}  // namespace lw::update
