// SPDX-License-Identifier: GPL-3.0-or-later
// Process values and the start-up steps that need no window. The database is
// made here from the shipped schema, seed rows and rule files when it is
// missing; a damaged or foreign file is reported by name and never touched.
#include "core/session.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>

#include "core/rule_text.h"
#include "core/secrets.h"
#include "core/settings.h"
#include "core/text.h"

namespace lw::core {

namespace {

// 'LWRT': marks a file as this program's database.
constexpr qint64 kApplicationId = 0x4C575254;
constexpr int kSchemaVersion = 6;

Session& Instance() {
    static Session session;
    return session;
}

SilentUi& Silent() {
    static SilentUi silent;
    return silent;
}

QString WithSlash(const QString& dir) {
    return dir.endsWith(u'/') ? dir : dir + u'/';
}

std::optional<QString> ReadShipped(const QString& shippedDir, const QString& relative,
                                   QString* missing) {
    const QString path = WithSlash(shippedDir) + relative;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *missing = path;
        return std::nullopt;
    }
    return QString::fromUtf8(file.readAll());
}

void CreateSchema(Database& db, const QString& shippedDir) {
    QString missing;
    const auto schema = ReadShipped(shippedDir, QStringLiteral("data/schema.sql"), &missing);
    const auto seed = ReadShipped(shippedDir, QStringLiteral("data/seed.sql"), &missing);
    const auto site = LoadRuleFile(WithSlash(shippedDir) + QStringLiteral("rules/site.pro"));
    if (!site) {
        missing = WithSlash(shippedDir) + QStringLiteral("rules/site.pro");
    }
    const auto info = LoadRuleFile(WithSlash(shippedDir) + QStringLiteral("rules/info.pro"));
    if (!info) {
        missing = WithSlash(shippedDir) + QStringLiteral("rules/info.pro");
    }
    if (!missing.isEmpty()) {
        throw StoreError(QStringLiteral("Cannot make the database: the shipped file %1 is missing.")
                             .arg(missing),
                         0);
    }
    Transaction tx(db);
    db.Exec(*schema);
    db.Exec(*seed);
    Statement insert = db.Prepare(
        QStringLiteral("INSERT INTO Protocols (ProtocolName, ProtocolData) VALUES (?, ?)"));
    insert.BindAll(QStringLiteral("site.pro"), *site).Run();
    insert.Reset();
    insert.BindAll(QStringLiteral("info.pro"), *info).Run();
    db.Exec(QStringLiteral("PRAGMA application_id = %1").arg(kApplicationId));
    db.Exec(QStringLiteral("PRAGMA user_version = %1").arg(kSchemaVersion));
    tx.Commit();
}

// Throws unless the file is this program's, of a schema it knows; gives the
// file's schema version.
qint64 CheckOwnFile(Database& db) {
    const qint64 appId = db.ScalarInt(QStringLiteral("PRAGMA application_id"));
    const qint64 version = db.ScalarInt(QStringLiteral("PRAGMA user_version"));
    if (appId != kApplicationId) {
        throw StoreError(
            QStringLiteral("The file %1 is a database of another program; it was left as it is.")
                .arg(db.Path()),
            0);
    }
    if (version > kSchemaVersion) {
        throw StoreError(QStringLiteral("The database %1 was made by a newer version of Lotwright "
                                        "(schema %2; this version knows %3).")
                             .arg(db.Path())
                             .arg(version)
                             .arg(kSchemaVersion),
                         0);
    }
    return version;
}

// Version 2: number and flag columns hold numbers only. Earlier builds stored
// a flag scraped as "True" or "False" as that text, which every "<> 0" test
// takes as True; such texts become 1 and 0, and any other text in a number
// column (a value the column cannot take) becomes the column's default.
void MendNumberColumns(Database& db) {
    std::vector<std::pair<QString, QString>> columns;  // table, column
    Statement walk = db.Prepare(QStringLiteral(
        "SELECT t.name, c.name, c.type FROM sqlite_schema AS t, pragma_table_xinfo(t.name) AS c "
        "WHERE t.type = 'table' AND t.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' AND c.hidden = 0 "
        "ORDER BY t.name, c.cid"));
    while (walk.Step()) {
        if (HasNumericAffinity(walk.Text(2))) {
            columns.emplace_back(walk.Text(0), walk.Text(1));
        }
    }
    for (const auto& [table, column] : columns) {
        const QString name = QuoteIdentifier(column);
        const QString from = QuoteIdentifier(table);
        Statement texts =
            db.Prepare(QStringLiteral("SELECT rowid, ") + name + QStringLiteral(" FROM ") + from +
                       QStringLiteral(" WHERE typeof(") + name + QStringLiteral(") = 'text'"));
        std::vector<std::pair<qint64, std::optional<QString>>> mends;
        while (texts.Step()) {
            mends.emplace_back(texts.Value(0).toLongLong(), NumberColumnText(texts.Text(1)));
        }
        if (mends.empty()) {
            continue;
        }
        Statement byNumber = db.Prepare(QStringLiteral("UPDATE ") + from + QStringLiteral(" SET ") +
                                        name + QStringLiteral(" = ? WHERE rowid = ?"));
        // The default as the schema gives it ("0" or none), as a value.
        Statement fallback =
            db.Prepare(QStringLiteral("UPDATE ") + from + QStringLiteral(" SET ") + name +
                       QStringLiteral(" = (SELECT dflt_value FROM "
                                      "pragma_table_info(?) WHERE name = "
                                      "?) WHERE rowid = ?"));
        for (const auto& [rowid, number] : mends) {
            if (number) {
                byNumber.BindAll(*number, rowid).Run();
                byNumber.Reset();
            } else {
                fallback.BindAll(table, column, rowid).Run();
                fallback.Reset();
            }
        }
    }
}

// Brings a database of an earlier build to this one's schema, one step per
// version, each in its own transaction.
void Migrate(Database& db, qint64 version) {
    if (version < 2) {
        Transaction tx(db);
        MendNumberColumns(db);
        db.Exec(QStringLiteral("PRAGMA user_version = 2"));
        tx.Commit();
    }
    if (version < 3) {
        // Where no keyring answers the site password stays in the database;
        // Global remembers that the user was told so.
        Transaction tx(db);
        if (db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM pragma_table_info('Global') "
                                        "WHERE name = 'PasswordInStoreTold'")) == 0) {
            db.Exec(QStringLiteral(
                "ALTER TABLE Global ADD COLUMN PasswordInStoreTold INTEGER DEFAULT 0"));
        }
        db.Exec(QStringLiteral("PRAGMA user_version = 3"));
        tx.Commit();
    }
    if (version < 4) {
        // The task lists: indexes of the open items of a user by end day and
        // of a won share of a multi-winner item by its item, and the pending
        // winners of multi-winner sales read from the user's winner rows (the
        // views that narrow it find it by name).
        Transaction tx(db);
        db.Exec(QStringLiteral(
            "CREATE INDEX IF NOT EXISTS AuctionsOpenTasks ON Auctions (UserName, "
            "IFNULL(ToDoComplete, 0), EndDay);"
            "CREATE INDEX IF NOT EXISTS BidsOpenTasks ON Bids (UserName, IFNULL(ToDoComplete, 0), "
            "EndDay);"
            "CREATE INDEX IF NOT EXISTS DutchBidsByItem ON DutchBids (ItemNumber, UserName);"
            "DROP VIEW IF EXISTS \"All Auctions with Pending Tasks (Dutch)\";"
            "CREATE VIEW \"All Auctions with Pending Tasks (Dutch)\" AS "
            "SELECT \"Dutch Details\".* FROM \"Dutch Details\" "
            "WHERE +\"Dutch Details\".EndDay <= (SELECT date('now', 'localtime')) "
            "AND IFNULL(\"Dutch Details\".ToDoComplete, 0) = 0;"
            "PRAGMA user_version = 4"));
        tx.Commit();
    }
    if (version < 5) {
        // Fewer indexes on the two tables every update writes: the key leads
        // with the item number and stands for the item index, the year is
        // read from the end day or the analysis index, and only the sales of
        // a stock item are indexed by it.
        Transaction tx(db);
        db.Exec(QStringLiteral(
            "DROP INDEX IF EXISTS AuctionsByItem; DROP INDEX IF EXISTS AuctionsByUserYear;"
            "DROP INDEX IF EXISTS AuctionsKey; DROP INDEX IF EXISTS AuctionsByInventory;"
            "CREATE UNIQUE INDEX AuctionsKey ON Auctions (ItemNumber, UserName, AuctionSiteFlag);"
            "CREATE INDEX AuctionsByInventory ON Auctions (InventoryID) WHERE InventoryID > 0;"
            "DROP INDEX IF EXISTS BidsByItem; DROP INDEX IF EXISTS BidsByUserYear;"
            "DROP INDEX IF EXISTS BidsKey;"
            "CREATE UNIQUE INDEX BidsKey ON Bids (ItemNumber, UserName, AuctionSiteFlag);"
            "PRAGMA user_version = 5"));
        tx.Commit();
    }
    if (version < 6) {
        // The generated money columns read a "$" amount without six replaces.
        // The new rule gives every text the value the earlier one gave, so
        // the stored values and the index entries stand as they are: only
        // the text of the tables changes, as SQLite allows for a change that
        // leaves the file's content alone, with the schema cookie moved on so
        // that every connection reads the new text.
        Transaction tx(db);
        std::vector<std::pair<QString, QString>> columns;  // table, column
        {
            Statement walk = db.Prepare(QStringLiteral(
                "SELECT t.name, c.name FROM sqlite_schema AS t, pragma_table_xinfo(t.name) AS c "
                "WHERE t.type = 'table' AND c.hidden = 0 AND instr(t.sql, c.name || 'Num') > 0"));
            while (walk.Step()) {
                columns.emplace_back(walk.Text(0), walk.Text(1));
            }
        }
        const qint64 cookie = db.ScalarInt(QStringLiteral("PRAGMA schema_version"));
        db.Exec(QStringLiteral("PRAGMA writable_schema = ON"));
        try {
            Statement rewrite =
                db.Prepare(QStringLiteral("UPDATE sqlite_schema SET sql = replace(sql, ?, ?) WHERE "
                                          "type = 'table' AND name = ?"));
            for (const auto& [table, column] : columns) {
                rewrite.BindAll(EarlierNumberRuleSql(column), NumberRuleSql(column), table).Run();
                rewrite.Reset();
            }
            db.Exec(QStringLiteral("PRAGMA schema_version = %1").arg(cookie + 1));
        } catch (...) {
            db.Exec(QStringLiteral("PRAGMA writable_schema = OFF"));
            throw;
        }
        db.Exec(QStringLiteral("PRAGMA writable_schema = OFF; PRAGMA user_version = 6"));
        tx.Commit();
    }
}

// The database, its journals and the data folders are the user's alone: where
// no keyring answers they hold the site password in clear.
constexpr QFile::Permissions kOwnerFile = QFile::ReadOwner | QFile::WriteOwner;
constexpr QFile::Permissions kOwnerDir = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

void KeepToOwner(const QString& path, QFile::Permissions permissions) {
    if (QFileInfo::exists(path)) {
        QFile::setPermissions(path, permissions);
    }
}

void KeepStoreToOwner(const QString& path) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        KeepToOwner(path + QLatin1String(suffix), kOwnerFile);
    }
}

bool EnsureOwnDirectory(const QString& path) {
    if (!EnsureDirectory(path)) {
        return false;
    }
    KeepToOwner(path, kOwnerDir);
    return true;
}

// Opens our own existing database for use: checked first, and only then
// changed (schema steps, journal mode). Its permissions are seen to once a
// start, by SetupDirectories; the journals SQLite makes take the file's.
Database OpenOwnStore(const QString& path) {
    Database db = Database::Open(path, Database::Mode::ReadWrite);
    Migrate(db, CheckOwnFile(db));
    db.Exec(QStringLiteral("PRAGMA journal_mode = WAL"));
    return db;
}

}  // namespace

Session& CurrentSession() {
    Session& session = Instance();
    if (session.ui == nullptr) {
        session.ui = &Silent();
    }
    return session;
}

Ui& CurrentUi() {
    return *CurrentSession().ui;
}

void ResetSession(Ui* ui) {
    Instance() = Session{};
    Instance().ui = ui != nullptr ? ui : &Silent();
}

int SchemaVersion() {
    return kSchemaVersion;
}

QString StorePath() {
    return CurrentSession().DataDir + QStringLiteral("Lotwright.db");
}

Database OpenStore() {
    Session& session = CurrentSession();
    if (session.DataDir.isEmpty()) {
        throw StoreError(QStringLiteral("No data folder is set up."), 0);
    }
    return OpenOrCreateStore(StorePath(), session.ShippedDir);
}

Database OpenStoreForReading() {
    const QString path = StorePath();
    if (!QFileInfo::exists(path)) {
        throw StoreError(QStringLiteral("There is no database at %1.").arg(path), 0);
    }
    Database db = Database::Open(path, Database::Mode::ReadOnly);
    CheckOwnFile(db);
    return db;
}

Database OpenOrCreateStore(const QString& path, const QString& shippedDir) {
    const QFileInfo info(path);
    if (info.exists() && info.size() > 0) {
        return OpenOwnStore(path);
    }
    if (info.exists() && !info.isWritable()) {
        throw StoreError(QStringLiteral("The database %1 cannot be written.").arg(path), 0);
    }
    // Made under another name and moved into place only when complete, so an
    // interrupted start never leaves half a database behind.
    const QString partial = path + QStringLiteral(".new");
    QFile::remove(partial);
    {
        Database db = Database::Open(partial, Database::Mode::Create);
        db.Exec(QStringLiteral("PRAGMA journal_mode = DELETE"));
        KeepStoreToOwner(partial);  // before the first byte of data is written
        try {
            CreateSchema(db, shippedDir);
        } catch (...) {
            db = Database::Open(QStringLiteral(":memory:"), Database::Mode::Create);
            QFile::remove(partial);
            throw;
        }
    }
    QFile::remove(path);  // an empty file of that name, if any
    if (!QFile::rename(partial, path)) {
        QFile::remove(partial);
        throw StoreError(QStringLiteral("Cannot write the database %1.").arg(path), 0);
    }
    return OpenOwnStore(path);
}

namespace {

bool HoldsShippedFiles(const QDir& dir) {
    return dir.exists(QStringLiteral("rules")) && dir.exists(QStringLiteral("data"));
}

// The name of the program's folder in the user's data, configuration and
// cache folders.
const QString kUserFolder = QStringLiteral("Lotwright");

QString UserFolder(QStandardPaths::StandardLocation location) {
    const QString base = QStandardPaths::writableLocation(location);
    return base.isEmpty() ? QString() : base + u'/' + kUserFolder;
}

// The subfolders of a program root that hold the user's own files.
const QString kRootFolders[] = {QStringLiteral("Configs"), QStringLiteral("Data"),
                                QStringLiteral("Templates")};

// Earlier versions put a per-user root one folder deeper (the organisation's
// name and the program's, both Lotwright). Its folders are moved up, once,
// when the new root holds no database yet.
bool MoveEarlierUserRoot(const QString& appRoot, QString* error) {
    const QDir root(appRoot);
    const QDir earlier(root.filePath(kUserFolder));
    if (root.exists(QStringLiteral("Data/Lotwright.db")) ||
        !earlier.exists(QStringLiteral("Data/Lotwright.db"))) {
        return true;
    }
    for (const QString& folder : kRootFolders) {
        if (!earlier.exists(folder)) {
            continue;
        }
        if (root.exists(folder) && !QDir(root.filePath(folder)).isEmpty()) {
            // Something of the user's stands in the way: neither is touched.
            if (error != nullptr) {
                *error =
                    QStringLiteral(
                        "The data of an earlier version in %1 was not moved to "
                        "%2, because %3 is not empty; move it by hand.")
                        .arg(earlier.absolutePath(), root.absolutePath(), root.filePath(folder));
            }
            return false;
        }
    }
    for (const QString& folder : kRootFolders) {
        if (!earlier.exists(folder)) {
            continue;
        }
        root.rmdir(folder);  // an empty one made by a start of this version
        if (!QDir().rename(earlier.filePath(folder), root.filePath(folder))) {
            if (error != nullptr) {
                *error = QStringLiteral(
                             "The folder %1 of an earlier version could not be moved "
                             "to %2; move it by hand.")
                             .arg(earlier.filePath(folder), root.filePath(folder));
            }
            return false;
        }
    }
    QDir().rmdir(earlier.absolutePath());  // left only when it holds more
    return true;
}

}  // namespace

QString ResolveShippedDir(const QString& exeDir) {
    const QString exe = QDir(exeDir).absolutePath();
    // An installed copy first: bin/ beside share/lotwright/. A copy of the
    // shipped files left in bin/ by an earlier install must not make an
    // installed program write beside itself. Then a portable copy, then a
    // folder whose parent holds them.
    const QString candidates[] = {exe + QStringLiteral("/../share/lotwright"), exe,
                                  exe + QStringLiteral("/..")};
    for (const QString& candidate : candidates) {
        const QString dir = QDir::cleanPath(candidate);
        if (HoldsShippedFiles(QDir(dir))) {
            return dir;
        }
    }
    return exe;
}

std::optional<Locations> ResolveLocations(const QString& givenRoot, const QString& exeDir,
                                          QString* error) {
    auto fail = [error](const QString& text) -> std::optional<Locations> {
        if (error != nullptr) {
            *error = text;
        }
        return std::nullopt;
    };
    const QString exe = QDir(exeDir).absolutePath();
    Locations locations;
    locations.shippedDir = ResolveShippedDir(exeDir);
    if (!HoldsShippedFiles(QDir(locations.shippedDir))) {
        return fail(QStringLiteral("The shipped rules/ and data/ folders are neither beside the "
                                   "program in %1 nor in %2; the installation is incomplete.")
                        .arg(exe, QDir::cleanPath(exe + QStringLiteral("/../share/lotwright"))));
    }
    if (!givenRoot.isEmpty()) {
        locations.appRoot = QDir(givenRoot).absolutePath();
        locations.settingsDir = locations.appRoot + QStringLiteral("/Configs/Settings");
        return locations;
    }
    locations.settingsDir = UserFolder(QStandardPaths::GenericConfigLocation);
    if (locations.shippedDir == QDir::cleanPath(exe) && QFileInfo(exe).isWritable()) {
        locations.appRoot = QDir::cleanPath(exe);
        return locations;
    }
    locations.perUser = true;
    locations.appRoot = UserFolder(QStandardPaths::GenericDataLocation);
    locations.cacheDir = UserFolder(QStandardPaths::GenericCacheLocation);
    if (locations.appRoot.isEmpty() || locations.settingsDir.isEmpty() ||
        locations.cacheDir.isEmpty()) {
        return fail(
            QStringLiteral("There is no home folder to keep the data, settings and cache in "
                           "(HOME is not set); name a folder with --root DIR."));
    }
    return locations;
}

bool UseLocations(const Locations& locations, QString* error) {
    if (locations.perUser && !MoveEarlierUserRoot(locations.appRoot, error)) {
        return false;
    }
    Session& session = CurrentSession();
    session.ShippedDir = locations.shippedDir;
    session.CacheDir = locations.cacheDir;
    SetSettingsFolder(locations.settingsDir);
    return true;
}

bool SetupDirectories(const QString& appRoot, QString* error) {
    Session& session = CurrentSession();
    QString root = QDir::cleanPath(appRoot);
    while (root.size() > 1 && root.endsWith(u'/')) {
        root.chop(1);
    }
    session.AppRoot = root;
    session.ConfigsDir = root + QStringLiteral("/Configs/");
    session.DataDir = root + QStringLiteral("/Data/");
    session.TemplatesDir = root + QStringLiteral("/Templates/");
    // The scratch pages are the user's sales as the site showed them: a cache
    // folder of their own is the user's alone, as the data folder is.
    session.ScratchDir =
        session.CacheDir.isEmpty() ? session.ConfigsDir : WithSlash(session.CacheDir);
    QStringList folders{session.ConfigsDir, session.DataDir, session.TemplatesDir,
                        session.ScratchDir};
    folders.removeDuplicates();
    for (const QString& dir : folders) {
        const bool own =
            dir == session.DataDir || (!session.CacheDir.isEmpty() && dir == session.ScratchDir);
        if (!(own ? EnsureOwnDirectory(dir) : EnsureDirectory(dir))) {
            if (error != nullptr) {
                *error = QStringLiteral("Cannot make the folder %1.").arg(dir);
            }
            return false;
        }
        QTemporaryFile probe(dir + QStringLiteral("probe-XXXXXX"));
        if (!probe.open()) {
            if (error != nullptr) {
                *error = QStringLiteral("The folder %1 cannot be written.").arg(dir);
            }
            return false;
        }
    }
    // A database made or opened up by an earlier build is closed to others.
    KeepStoreToOwner(StorePath());
    return true;
}

void SetCurrentUser(const QString& userName) {
    Session& session = CurrentSession();
    session.CurrentUser = userName;
    session.UserDataDir = session.DataDir + userName.trimmed() + u'/';
    EnsureOwnDirectory(session.UserDataDir);
}

QString NewUserCancelMarker() {
    return CurrentSession().ScratchDir + QStringLiteral("nuwcancel.cfg");
}

void RemoveStaleNewUserCancel() {
    QFile::remove(NewUserCancelMarker());
}

bool NewUserCancelled() {
    return QFile::exists(NewUserCancelMarker());
}

UserChoice ChooseUser(Database& db, const std::function<void()>& newUserWindow) {
    auto firstName = [&db]() -> std::optional<QVariant> {
        Statement first =
            db.Prepare(QStringLiteral("SELECT UserName FROM Users ORDER BY rowid LIMIT 1"));
        if (!first.Step()) {
            return std::nullopt;
        }
        return first.Value(0);
    };
    for (int attempt = 0; attempt < 2; ++attempt) {
        const auto name = firstName();
        if (name && !name->isNull()) {
            break;
        }
        if (newUserWindow) {
            newUserWindow();
        }
        if (NewUserCancelled()) {
            return UserChoice::Cancelled;
        }
    }
    Statement walk =
        db.Prepare(QStringLiteral("SELECT UserName, isDefault FROM Users ORDER BY rowid"));
    while (walk.Step()) {
        if (walk.Flag(QStringLiteral("isDefault")) && !walk.IsNull(0)) {
            SetCurrentUser(walk.Text(0));
            return UserChoice::Chosen;
        }
    }
    return UserChoice::NoDefault;
}

void LoadSiteCorrection(Database& db) {
    Statement global = db.Prepare(QStringLiteral("SELECT eBayCorrection FROM Global LIMIT 1"));
    if (!global.Step() || global.IsNull(0)) {
        CurrentSession().SiteCorrection = QStringLiteral("0");
        return;
    }
    // The column holds a number of seconds; "-42", not "-42.0", is its text.
    const QVariant value = global.Value(0);
    CurrentSession().SiteCorrection = value.typeId() == QMetaType::QString
                                          ? value.toString().trimmed()
                                          : QString::number(value.toDouble(), 'g', 15);
}

TimeLeftTimer TimeLeftTimerFor(bool autoUpdate, qint64 timeLeftInterval) {
    TimeLeftTimer timer;
    if (!autoUpdate) {
        return timer;
    }
    timer.enabled = true;
    if (timeLeftInterval < 30000) {
        timer.intervalMs = 65535;
        timer.ticksWanted = QString::number(timeLeftInterval);
        timer.ticksCounted = QStringLiteral("0");
    } else {
        timer.intervalMs = static_cast<int>(timeLeftInterval);
        timer.ticksWanted = QStringLiteral("0");
        timer.ticksCounted = QStringLiteral("0");
    }
    return timer;
}

TimeLeftTimer TimeLeftTimerRule(Database& db) {
    Statement global = db.Prepare(
        QStringLiteral("SELECT AutoUpdateTimeLeft, TimeLeftInterval FROM Global LIMIT 1"));
    if (!global.Step()) {
        return {};
    }
    return TimeLeftTimerFor(global.Flag(QStringLiteral("AutoUpdateTimeLeft")),
                            global.Int(QStringLiteral("TimeLeftInterval")));
}

void AddUser(Database& db, const NewUser& user, bool makeDefault) {
    const QString name = StoreText(user.userName.trimmed());
    if (name.isEmpty()) {
        throw StoreError(QStringLiteral("A user needs a name."), 0);
    }
    Statement exists = db.Prepare(QStringLiteral("SELECT 1 FROM Users WHERE UserName = ?"));
    exists.Bind(1, name);
    if (exists.Step()) {
        throw StoreError(QStringLiteral("The user %1 already exists.").arg(name), 0);
    }
    Transaction tx(db);
    if (makeDefault) {
        db.Exec(QStringLiteral("UPDATE Users SET isDefault = 0"));
    }
    Statement addUser = db.Prepare(QStringLiteral(
        "INSERT INTO Users (UserName, isDefault, InternetConnection, ReplyEmailAddress, "
        "AuctionRemoveTag, BidRemoveTag) VALUES (?, ?, 1, ?, 'FBR', 'FBR')"));
    addUser
        .BindAll(name, makeDefault,
                 user.email.trimmed().isEmpty() ? QString() : user.email.trimmed())
        .Run();
    Statement addSite = db.Prepare(QStringLiteral(
        "INSERT INTO UserSites (UserName, AuctionSiteFlag, UserID, UserPassword, SiteEmailAddress, "
        "duration, ShipAbroadPref, shipUSPlus, billpoint) VALUES (?, 0, ?, ?, ?, 7, 0, 0, 0)"));
    // The row holds the password until the keyring has confirmed it, so
    // that it is never lost between the two.
    addSite
        .BindAll(name, user.siteUserId.trimmed(), user.password,
                 user.email.trimmed().isEmpty() ? QString() : user.email.trimmed())
        .Run();
    tx.Commit();
    SaveSitePassword(db, name, 0, user.password);
}

}  // namespace lw::core
