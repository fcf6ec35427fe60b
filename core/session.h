// SPDX-License-Identifier: GPL-3.0-or-later
// The process values that every part of the program reads (folders, the
// current user, the site clock correction, whether the rules were checked in
// this run) and the start-up steps that need no window. Tests set them up
// afresh with ResetSession(); nothing else in the program is global.
#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "core/store.h"
#include "core/ui_port.h"

namespace lw::core {

struct Session {
    QString AppRoot;       // no trailing slash
    QString ConfigsDir;    // AppRoot + "/Configs/": the user's rule files
    QString DataDir;       // AppRoot + "/Data/": holds Lotwright.db
    QString TemplatesDir;  // AppRoot + "/Templates/"
    QString UserDataDir;   // DataDir + CurrentUser + "/": the user's queues
    QString CurrentUser;
    QString SiteCorrection = QStringLiteral("0");  // seconds the local clock runs ahead
    bool RulesChecked = false;
    QString ShippedDir;  // the folder that holds the shipped rules/ and data/
    // The user's cache folder, where a per-user copy keeps its scratch files;
    // empty: they stay in ConfigsDir. Set before SetupDirectories.
    QString CacheDir;
    // Where the fetched pages and other throw-away files go: CacheDir when
    // set, else ConfigsDir. Set by SetupDirectories.
    QString ScratchDir;
    Ui* ui = nullptr;  // never null once ResetSession ran
};

Session& CurrentSession();
Ui& CurrentUi();
// Back to the values of a fresh process, speaking through ui (a silent one when null).
void ResetSession(Ui* ui = nullptr);

// The database file of the session: DataDir + "Lotwright.db".
QString StorePath();
// Opens the session's database, creating it from the shipped schema, seed rows
// and rule files when it is missing, and migrating an older one. Throws
// StoreError with a message that names the file when the file is damaged, is
// not this program's, or cannot be made.
Database OpenStore();
// The session's existing database, opened for reading only; throws when it is
// missing, damaged or not this program's. Nothing is created.
Database OpenStoreForReading();
// Same for any path; shippedDir holds rules/ and data/.
Database OpenOrCreateStore(const QString& path, const QString& shippedDir);

// The schema version this build writes (PRAGMA user_version).
int SchemaVersion();

// Where the program keeps its files, decided from the command line and the
// folder of the executable:
//  - a given root (--root DIR) holds everything, settings and scratch files
//    included;
//  - a portable copy (the executable's folder holds the shipped rules/ and
//    data/ and can be written: a build tree, an unpacked folder) keeps
//    everything under that folder, its settings in the configuration folder;
//  - an installed copy (the shipped files in ../share/lotwright beside bin/,
//    whoever runs it, root included) and a copy whose folder cannot be written
//    never write beside the program: the user's data goes to the data folder,
//    settings to the configuration folder, scratch files to the cache folder.
struct Locations {
    QString appRoot;       // holds Configs/, Data/ and Templates/
    QString shippedDir;    // holds the shipped rules/ and data/
    QString settingsDir;   // the INI files of the settings
    QString cacheDir;      // scratch files; empty: in Configs/ under appRoot
    bool perUser = false;  // in the user's own folders, not beside the program
};
// Nothing, with a message that says where the shipped files were looked for,
// when the executable's folder has none beside it or in ../share/lotwright.
std::optional<Locations> ResolveLocations(const QString& givenRoot, const QString& exeDir,
                                          QString* error);
// Makes them the session's (ShippedDir, CacheDir, the settings folder). A
// per-user root left by an earlier version one folder deeper
// (Lotwright/Lotwright) is moved up first. False, with a message, when it
// cannot be moved.
bool UseLocations(const Locations& locations, QString* error);

// The folder that holds the shipped rules/ and data/ for an executable in
// exeDir: exeDir itself, ../share/lotwright or ..; exeDir when none holds them.
QString ResolveShippedDir(const QString& exeDir);

// Sets AppRoot, ConfigsDir, DataDir, TemplatesDir and ScratchDir and makes
// the folders.
// False, with a message that names the folder, when one cannot be made or
// written.
bool SetupDirectories(const QString& appRoot, QString* error);

// Sets CurrentUser and UserDataDir and makes the user's folder.
void SetCurrentUser(const QString& userName);

// nuwcancel.cfg in ScratchDir: left by a cancelled new-user window.
QString NewUserCancelMarker();
void RemoveStaleNewUserCancel();
bool NewUserCancelled();

enum class UserChoice { Chosen, Cancelled, NoDefault };
// Picks the user of this session: the first Users row whose isDefault is set.
// When the table has no row (or the first row has no name) newUserWindow is
// called to make one; its cancel marker ends the choice. Sets CurrentUser and
// UserDataDir on success.
UserChoice ChooseUser(Database& db, const std::function<void()>& newUserWindow);

// SiteCorrection from Global.eBayCorrection; "0" when there is no row or no value.
void LoadSiteCorrection(Database& db);

// How the time-left refresh runs, from Global.
struct TimeLeftTimer {
    bool enabled = false;
    int intervalMs = 0;    // the timer's interval
    QString ticksWanted;   // label 110: ticks to count before a redraw ("0": every tick)
    QString ticksCounted;  // label 111
};
TimeLeftTimer TimeLeftTimerRule(Database& db);
TimeLeftTimer TimeLeftTimerFor(bool autoUpdate, qint64 timeLeftInterval);

// Adds a local user: the Users row (isDefault set, every other row's cleared
// when makeDefault) and its UserSites row for site 0, whose password is then
// kept as SaveSitePassword keeps it. Throws StoreError; a name already present
// is refused with a message.
struct NewUser {
    QString userName;
    QString siteUserId;
    QString password;
    QString email;
};
void AddUser(Database& db, const NewUser& user, bool makeDefault = true);

}  // namespace lw::core
