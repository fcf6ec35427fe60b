// SPDX-License-Identifier: GPL-3.0-or-later
// Settings live as one INI file per application name, so that each keeps the
// sections and keys under the name the rest of the program uses.
#include "core/settings.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace lw::core {

namespace {

QString& FolderOverride() {
    static QString folder;
    return folder;
}

QString IniPath(const QString& app) {
    QString safe = app;
    safe.replace(u'/', u'_').replace(u'\\', u'_');
    return SettingsFolder() + u'/' + safe + QStringLiteral(".ini");
}

QString GroupKey(const QString& section, const QString& key) {
    // QSettings treats '/' as a path separator; a section such as a user name
    // may hold one, so it is escaped rather than nested.
    QString group = section;
    group.replace(u'/', u'_').replace(u'\\', u'_');
    QString name = key;
    name.replace(u'/', u'_').replace(u'\\', u'_');
    return group + u'/' + name;
}

}  // namespace

void SetSettingsFolder(const QString& folder) {
    FolderOverride() = folder;
}

QString SettingsFolder() {
    if (!FolderOverride().isEmpty()) {
        return FolderOverride();
    }
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Lotwright");
}

QString GetSetting(const QString& app, const QString& section, const QString& key,
                   const QString& defaultValue) {
    QSettings settings(IniPath(app), QSettings::IniFormat);
    return settings.value(GroupKey(section, key), defaultValue).toString();
}

void SaveSetting(const QString& app, const QString& section, const QString& key,
                 const QVariant& value) {
    QDir().mkpath(SettingsFolder());
    QSettings settings(IniPath(app), QSettings::IniFormat);
    settings.setValue(GroupKey(section, key), value.toString());
    settings.sync();
}

void DeleteSetting(const QString& app, const QString& section, const QString& key) {
    QSettings settings(IniPath(app), QSettings::IniFormat);
    settings.remove(GroupKey(section, key));
    settings.sync();
}

}  // namespace lw::core
