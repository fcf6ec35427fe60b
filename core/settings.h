// SPDX-License-Identifier: GPL-3.0-or-later
// The settings store: keys by application, section and key, kept as one INI
// file per application name under the user's configuration folder (or a
// folder a test or the command line chose). Values survive between runs.
#pragma once

#include <QString>
#include <QVariant>

namespace lw::core {

// Where the INI files live; empty restores the default folder.
void SetSettingsFolder(const QString& folder);
QString SettingsFolder();

QString GetSetting(const QString& app, const QString& section, const QString& key,
                   const QString& defaultValue = QString());
void SaveSetting(const QString& app, const QString& section, const QString& key,
                 const QVariant& value);
void DeleteSetting(const QString& app, const QString& section, const QString& key);

}  // namespace lw::core
