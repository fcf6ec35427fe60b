// The process values that every part of the program reads (folders, the
// current user, the site clock correction, whether the rules were checked in
// this run) and the start-up steps that need no window. Tests set them up
// afresh with ResetSession(); nothing else in the program is global.
#pragma once

#include <QString>

#include "core/store.h"
#include "core/ui_port.h"

namespace lw::core {

struct Session {
    QString AppRoot;      // no trailing slash
    QString ConfigsDir;   // AppRoot + "/Configs/": rule files and scratch pages
    QString DataDir;      // AppRoot + "/Data/": holds Lotwright.db
    QString TemplatesDir; // AppRoot + "/Templates/"
    QString UserDataDir;  // DataDir + CurrentUser + "/": the user's queues
    QString CurrentUser;
    QString SiteCorrection = QStringLiteral("0");  // seconds the local clock runs ahead
    bool RulesChecked = false;
    QString ShippedDir;   // the folder that holds the shipped rules/ and data/
    Ui* ui = nullptr;     // never null once ResetSession ran
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
// Same for any path; shippedDir holds rules/ and data/.
Database OpenOrCreateStore(const QString& path, const QString& shippedDir);

// The schema version this build writes (PRAGMA user_version).
int SchemaVersion();

}  // namespace lw::core
