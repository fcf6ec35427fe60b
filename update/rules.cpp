// SPDX-License-Identifier: GPL-3.0-or-later
// The rule store: lookups over the rule texts, their lasting home in table
// Protocols, the repair from protfix.cfg and the self-update of the rule files.
// The lookups keep a cache of where each section lies and what its keys hold;
// the cache is dropped whenever a text changes and answers exactly what the
// search of the whole text answers, including the header found inside a value.
#include "update/rules.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringView>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>
#include <optional>
#include <vector>

#include "core/net.h"
#include "core/rule_text.h"
#include "core/session.h"
#include "core/text.h"
#include "core/ui_port.h"
#include "update/rule_check.h"

namespace lw::update {

using core::CurrentSession;
using core::CurrentUi;
using core::Database;
using core::StoreError;

namespace {

const QString kCrLf = QStringLiteral("\r\n");
const QString kBlankLine = QStringLiteral("\r\n\r\n");

// A caller that makes up section names (a list of stores, a rule author's
// tool) must not grow the cache without end.
constexpr qsizetype kMaxCachedBlocks = 4096;

const QString kFixError = QStringLiteral(
    "Unable to correct Lotwright Pro update engine.  Please contact Tolvane Technical Support.");
const QString kStoreErrorTitle = QStringLiteral("Rule Store Error");

QString FixFile(const QString& configs) {
    return configs + QStringLiteral("protfix.cfg");
}

// The number at the left of a value as list data: rounded half to even as the
// list's whole-number data always took it, and kept inside int.
int ListData(QStringView value) {
    const double number = std::nearbyint(core::Val(value));
    if (!(number >= std::numeric_limits<int>::min())) {
        return std::numeric_limits<int>::min();
    }
    if (number > std::numeric_limits<int>::max()) {
        return std::numeric_limits<int>::max();
    }
    return static_cast<int>(number);
}

// A count from a rule value: its leading number, whole part, never below 0.
int CountValue(QStringView value, int most) {
    const double number = std::floor(core::Val(value));
    return number < 1 ? 0 : (number > most ? most : static_cast<int>(number));
}

// Nested inside whatever transaction the caller has open (an update run keeps
// one), so the two rows of a repair land together or not at all.
class Savepoint {
public:
    explicit Savepoint(Database& db) : m_db(db) { m_db.Exec(QStringLiteral("SAVEPOINT rules")); }
    ~Savepoint() {
        if (m_open) {
            try {
                m_db.Exec(QStringLiteral("ROLLBACK TO rules; RELEASE rules"));
            } catch (const StoreError&) {
                // The connection is broken; the caller already reports the failure.
            }
        }
    }
    void Release() {
        m_db.Exec(QStringLiteral("RELEASE rules"));
        m_open = false;
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

private:
    Database& m_db;
    bool m_open = true;
};

// Writes ProtocolData of the row at position `row` (0 first) of Protocols by
// rowid order, adding rows when the table holds fewer.
void WriteProtocolRow(Database& db, int row, const QString& text) {
    // The store trims trailing blanks from what it writes; a line end behind
    // the last value keeps that value's blanks and reads the same, since the
    // store appends a blank line anyway.
    const QString stored = text.endsWith(u' ') ? QString(text + kCrLf) : text;
    std::vector<qint64> ids;
    {
        core::Statement select =
            db.Prepare(QStringLiteral("SELECT rowid FROM Protocols ORDER BY rowid"));
        while (select.Step()) {
            ids.push_back(select.Value(0).toLongLong());
        }
    }
    while (static_cast<int>(ids.size()) <= row) {
        const QString name =
            ids.empty() ? QStringLiteral("site.pro")
                        : (ids.size() == 1 ? QStringLiteral("info.pro") : QStringLiteral("rules"));
        db.Prepare(QStringLiteral("INSERT INTO Protocols (ProtocolName) VALUES (?)"))
            .Bind(1, name)
            .Run();
        ids.push_back(db.LastInsertId());
    }
    db.Prepare(QStringLiteral("UPDATE Protocols SET ProtocolData = ? WHERE rowid = ?"))
        .Bind(1, stored)
        .Bind(2, ids[static_cast<size_t>(row)])
        .Run();
}

// Steps 2 and 3 of the install: both stores cleared, then filled from the
// first two rows. False, told by message, when the table cannot be read or
// holds fewer than two rows.
bool FillStoresFromTable(RuleStore& rules, Database& db) {
    rules.Clear(kSiteStore);
    rules.Clear(kInfoStore);
    int row = 0;
    try {
        core::Statement select =
            db.Prepare(QStringLiteral("SELECT ProtocolData FROM Protocols ORDER BY rowid"));
        while (row < 2 && select.Step()) {
            rules.SetText(row, select.Text(0) + kBlankLine);
            ++row;
        }
    } catch (const StoreError& e) {
        CurrentUi().Message(e.Message(), kStoreErrorTitle, core::Icon::Critical);
        return false;
    }
    if (row < 2) {
        CurrentUi().Message(
            QStringLiteral("The database holds no rule text for %1, so no update can run.  "
                           "Install the rule files to repair it.")
                .arg(row == 0 ? QStringLiteral("site.pro and info.pro")
                              : QStringLiteral("info.pro")),
            kStoreErrorTitle, core::Icon::Critical);
        return false;
    }
    return true;
}

bool InstallWithFix(RuleStore& rules, Database& db, RuleFixResult* fixResult) {
    const RuleFixResult fix = ApplyRuleFix(rules, db);
    if (fixResult != nullptr) {
        *fixResult = fix;
    }
    const bool filled = FillStoresFromTable(rules, db);
    // The table is the only lasting home of the rules; the files go only
    // when the table surely holds them, or they would be lost.
    const QString configs = CurrentSession().ConfigsDir;
    if (filled && fix != RuleFixResult::StoreFailed && !configs.isEmpty()) {
        QFile::remove(configs + QStringLiteral("info.pro"));
        QFile::remove(configs + QStringLiteral("site.pro"));
    }
    return filled;
}

// Opens the session's database for work that must never stop start-up or an
// update: a failure is told by message.
template <class Work>
void WithSessionStore(Work&& work) {
    try {
        Database db = core::OpenStore();
        work(db);
    } catch (const StoreError& e) {
        CurrentUi().Message(e.Message(), kStoreErrorTitle, core::Icon::Critical);
    } catch (const std::exception& e) {
        CurrentUi().Message(QString::fromLocal8Bit(e.what()), kStoreErrorTitle,
                            core::Icon::Critical);
    }
}

// A name from the rule text becomes a file in ConfigsDir and nowhere else.
bool IsPlainFileName(const QString& name) {
    return !name.isEmpty() && name != RuleError() && !name.contains(u'/') &&
           !name.contains(u'\\') && name != QLatin1String(".") && name != QLatin1String("..");
}

// The self-update takes at most this many files, whatever count its section
// gives.
constexpr int kMostRuleFiles = 64;

// A file of the self-update, fetched beside the file it is to replace.
struct ArrivedFile {
    QString name;    // as the rule text names it: site.pro, category.pro, ...
    QString staged;  // where it waits until all have been checked
    int row = -1;    // row of Protocols for site.pro and info.pro, else -1
    QString text;    // the text of site.pro and info.pro
};

QString StagedPath(const QString& configs, const QString& name) {
    return configs + name + QStringLiteral(".new");
}

// One file of the self-update, fetched to its staging name. Nothing on any
// failure; the loop goes on with the next file.
std::optional<ArrivedFile> DownloadRuleFile(const RuleStore& rules, const RuleFetcher& fetch, int n,
                                            const QString& configs) {
    const QString number = QString::number(n);
    const QString url = rules.LookupKey(QStringLiteral("Protocols"),
                                        QStringLiteral("ProtocolDownload") + number, kSiteStore);
    const QString name = rules.LookupKey(QStringLiteral("Protocols"),
                                         QStringLiteral("ProtocolName") + number, kSiteStore);
    if (url == RuleError() || !IsPlainFileName(name)) {
        return std::nullopt;
    }
    ArrivedFile file;
    file.name = name;
    file.staged = StagedPath(configs, name);
    QFile::remove(file.staged);
    if (fetch(url, file.staged) != FetchOutcome::Ok || !QFileInfo::exists(file.staged)) {
        QFile::remove(file.staged);
        return std::nullopt;
    }
    if (name == QLatin1String("site.pro")) {
        file.row = 0;
    } else if (name == QLatin1String("info.pro")) {
        file.row = 1;
    }
    return file;
}

// What is wrong with each file that arrived, one line each; empty when all
// may be used. The texts of site.pro and info.pro are read into the files.
QStringList ArrivedProblems(std::vector<ArrivedFile>& files) {
    QStringList problems;
    for (ArrivedFile& file : files) {
        const std::optional<QString> text = core::LoadRuleFile(file.staged);
        if (!text) {
            problems << file.name + QStringLiteral(" could not be read back from ") + file.staged;
            continue;
        }
        const QString problem = RuleFileProblem(file.name, *text);
        if (!problem.isEmpty()) {
            problems << problem;
        }
        if (file.row >= 0) {
            file.text = *text;
        }
    }
    return problems;
}

void RemoveStaged(const std::vector<ArrivedFile>& files) {
    for (const ArrivedFile& file : files) {
        QFile::remove(file.staged);
    }
}

// The checked files take their places: the rules in use are kept as the
// previous rules, site.pro and info.pro go to their rows of Protocols together,
// the other files onto their names in ConfigsDir. False, told by message, when
// the rows could not be kept or written; nothing is replaced then.
bool PutArrivedInPlace(const std::vector<ArrivedFile>& files, Database& db,
                       const QString& configs) {
    core::Ui& ui = CurrentUi();
    const bool anyRow = std::any_of(files.begin(), files.end(),
                                    [](const ArrivedFile& file) { return file.row >= 0; });
    try {
        QString error;
        if (anyRow && !KeepPreviousRules(db, &error)) {
            ui.Message(QStringLiteral("The new rules were not installed, because the rules in use "
                                      "could not be kept: %1")
                           .arg(error),
                       kStoreErrorTitle, core::Icon::Critical);
            return false;
        }
        Savepoint savepoint(db);
        for (const ArrivedFile& file : files) {
            if (file.row >= 0) {
                WriteProtocolRow(db, file.row, file.text);
            }
        }
        savepoint.Release();
    } catch (const StoreError& e) {
        ui.Message(e.Message(), kStoreErrorTitle, core::Icon::Critical);
        return false;
    }
    for (const ArrivedFile& file : files) {
        if (file.row >= 0) {
            QFile::remove(file.staged);  // the table is the home of these two
            continue;
        }
        const QString target = configs + file.name;
        // rename(2) puts the new file in place of the old one in one step.
        if (std::rename(QFile::encodeName(file.staged).constData(),
                        QFile::encodeName(target).constData()) != 0) {
            QFile::remove(file.staged);
        }
    }
    return true;
}

bool CheckRuleUpdateWith(RuleStore& rules, const std::function<Database&()>& database,
                         const RuleFetcher& fetch) {
    core::Session& session = CurrentSession();
    if (session.RulesChecked) {
        return false;
    }
    core::Ui& ui = CurrentUi();
    ui.Status(QStringLiteral("Checking version"));
    const QString configs = session.ConfigsDir;

    FetchOutcome outcome = FetchOutcome::Failed;
    QString body;
    try {
        const QString checkFile = session.ScratchDir + QStringLiteral("update.txt");
        QFile::remove(checkFile);  // a stale answer must never pass for a new one
        outcome = fetch(rules.LookupKey(QStringLiteral("Protocols"),
                                        QStringLiteral("ProtocolCheckUrl"), kSiteStore),
                        checkFile);
        if (outcome == FetchOutcome::Ok) {
            const std::optional<QString> text = core::LoadRuleFile(checkFile);
            if (text) {
                body = *text;
            } else {
                outcome = FetchOutcome::Failed;
            }
        }
    } catch (const std::exception&) {
        outcome = FetchOutcome::Failed;
    }
    if (outcome == FetchOutcome::Cancelled) {
        ui.Message(
            QStringLiteral("Update cancelled.  Some Auction/Bid information may be incomplete."),
            QStringLiteral("Update Cancelled"));
        return false;
    }
    if (outcome != FetchOutcome::Ok || body.contains(QLatin1String("404 Not Found")) ||
        body.trimmed().isEmpty()) {
        ui.Message(QStringLiteral("Network error.  Update cancelled."),
                   QStringLiteral("Network Error"));
        return false;
    }

    const QString marker = QStringLiteral("PROTOCOL:");
    const qsizetype at = body.indexOf(marker);
    if (at >= 0) {
        const QString version = body.mid(at + marker.size()).trimmed();
        if (version == rules.LookupKey(QStringLiteral("Protocols"),
                                       QStringLiteral("Current Protocol"), kSiteStore)) {
            ui.Status(QStringLiteral("Continuing Update."));
            session.RulesChecked = true;
            return true;
        }
    }

    const int files = CountValue(
        rules.LookupKey(QStringLiteral("Protocols"), QStringLiteral("Protocols"), kSiteStore),
        kMostRuleFiles);
    std::vector<ArrivedFile> arrived;
    for (int n = 1; n <= files; ++n) {
        ui.Status(QStringLiteral("Updating engine."));
        try {
            if (std::optional<ArrivedFile> file = DownloadRuleFile(rules, fetch, n, configs)) {
                arrived.push_back(std::move(*file));
            }
        } catch (const std::exception&) {
            // One file failing must not keep the others from coming.
        }
    }

    // Nothing replaces anything until every file that came has passed.
    const QStringList problems = ArrivedProblems(arrived);
    if (!problems.isEmpty()) {
        RemoveStaged(arrived);
        ui.Message(QStringLiteral("The new rules were not installed, and the update goes on with "
                                  "the rules in use:\n") +
                       problems.join(u'\n'),
                   QStringLiteral("Rule Update Refused"), core::Icon::Warning);
        ui.Status(QStringLiteral("Continuing Update."));
        return true;
    }
    try {
        if (!PutArrivedInPlace(arrived, database(), configs)) {
            RemoveStaged(arrived);
        }
    } catch (const StoreError& e) {
        RemoveStaged(arrived);
        ui.Message(e.Message(), kStoreErrorTitle, core::Icon::Critical);
    }

    session.RulesChecked = true;
    ui.Status(QStringLiteral("Processing updated protocols."));
    ui.PumpEvents();
    try {
        InstallRuleStore(rules, database());
    } catch (const StoreError& e) {
        ui.Message(e.Message(), kStoreErrorTitle, core::Icon::Critical);
    }
    ui.Status(QStringLiteral("Continuing Update."));
    return true;
}

}  // namespace

// ------------------------------------------------------------------ RuleStore

void RuleStore::SetText(int store, QString text) {
    if (store < 0 || store >= kRuleStoreCount) {
        return;
    }
    Store& s = m_stores[static_cast<size_t>(store)];
    s.text = std::move(text);
    s.blocks.clear();
}

const QString& RuleStore::Text(int store) const {
    static const QString empty;
    if (store < 0 || store >= kRuleStoreCount) {
        return empty;
    }
    return m_stores[static_cast<size_t>(store)].text;
}

void RuleStore::Clear(int store) {
    SetText(store, QString());
}

void RuleStore::ClearAll() {
    for (int store = 0; store < kRuleStoreCount; ++store) {
        Clear(store);
    }
}

RuleStore::Block& RuleStore::FindBlock(Store& store, const QString& section) const {
    const auto found = store.blocks.find(section);
    if (found != store.blocks.end()) {
        return found.value();
    }
    if (store.blocks.size() >= kMaxCachedBlocks) {
        store.blocks.clear();
    }
    Block block;
    const QString header = u'[' + section + u']';
    const qsizetype start = store.text.indexOf(header, 0, Qt::CaseInsensitive);
    if (start >= 0) {
        const qsizetype end = store.text.indexOf(kBlankLine, start);
        if (end >= 0) {
            block.start = start;
            block.end = end;
        }
    }
    return store.blocks.insert(section, std::move(block)).value();
}

// Every line that follows a CR LF inside the block, up to the blank line: its
// text before the first "=" is a key, and the first such line of each key is
// the one the search of CR LF & key & "=" meets first.
void RuleStore::IndexBlock(const QString& text, Block& block) {
    block.indexed = true;
    const QStringView view(text);
    qsizetype lineBreak = view.indexOf(kCrLf, block.start);
    while (lineBreak >= 0 && lineBreak < block.end) {
        const qsizetype lineStart = lineBreak + 2;
        // The blank line stands at block.end, so a line always ends by then.
        const qsizetype lineEnd = view.indexOf(kCrLf, lineStart);
        const QStringView line = view.mid(lineStart, lineEnd - lineStart);
        const qsizetype equals = line.indexOf(u'=');
        if (equals >= 0) {
            const QString key = line.left(equals).toString();
            if (!block.values.contains(key)) {
                block.values.insert(key, line.mid(equals + 1).toString());
            }
        }
        lineBreak = lineEnd;
    }
}

QString RuleStore::LookupKey(const QString& section, const QString& key, int store) const {
    if (store < 0 || store >= kRuleStoreCount) {
        return RuleError();
    }
    Store& s = m_stores[static_cast<size_t>(store)];
    Block& block = FindBlock(s, section);
    if (block.start < 0) {
        return RuleError();
    }
    // A key holding "=" or a line end can match across what the index keeps
    // apart; such a key takes the plain search.
    if (key.contains(u'=') || key.contains(kCrLf)) {
        const QString text = s.text.mid(block.start, block.end - block.start) + kCrLf;
        const qsizetype at = text.indexOf(kCrLf + key + u'=');
        if (at < 0) {
            return RuleError();
        }
        const qsizetype lineStart = at + 2;
        const QString line = text.mid(lineStart, text.indexOf(kCrLf, lineStart) - lineStart);
        return line.mid(line.indexOf(u'=') + 1);
    }
    if (!block.indexed) {
        IndexBlock(s.text, block);
    }
    const auto found = block.values.constFind(key);
    return found == block.values.constEnd() ? RuleError() : found.value();
}

QString RuleStore::LookupName(const QString& section, const QString& value, int store) const {
    if (store < 0 || store >= kRuleStoreCount) {
        return RuleError();
    }
    Store& s = m_stores[static_cast<size_t>(store)];
    const Block& block = FindBlock(s, section);
    if (block.start < 0) {
        return RuleError();
    }
    const QString text = s.text.mid(block.start, block.end - block.start) + kCrLf;
    const qsizetype at = text.indexOf(u'=' + value + kCrLf);
    if (at < 0) {
        return RuleError();
    }
    const QStringView before = QStringView(text).left(at);
    const qsizetype lineBreak = before.lastIndexOf(kCrLf);
    return (lineBreak < 0 ? before : before.mid(lineBreak + 2)).toString();
}

std::vector<RuleListRow> RuleStore::FillList(int store, const QString& section) const {
    std::vector<RuleListRow> rows;
    if (store < 0 || store >= kRuleStoreCount) {
        return rows;
    }
    Store& s = m_stores[static_cast<size_t>(store)];
    const Block& block = FindBlock(s, section);
    // A header at the very first position of the text counts as absent.
    if (block.start < 1) {
        return rows;
    }
    const qsizetype headerEnd = s.text.indexOf(kCrLf, block.start);
    const qsizetype bodyStart = headerEnd + 2;
    QString rest =
        (bodyStart <= block.end ? s.text.mid(bodyStart, block.end - bodyStart) : QString()) +
        kCrLf + u' ';
    QStringView work(rest);
    while (!work.trimmed().isEmpty()) {
        const qsizetype lineEnd = work.indexOf(kCrLf);
        const QStringView line = lineEnd < 0 ? work : work.left(lineEnd);
        const qsizetype equals = line.indexOf(u'=');
        RuleListRow row;
        row.text = (equals < 0 ? line : line.left(equals)).toString();
        row.data = equals < 0 ? 0 : ListData(line.mid(equals + 1));
        rows.push_back(std::move(row));
        if (lineEnd < 0) {
            break;
        }
        work = work.mid(lineEnd + 2);
    }
    return rows;
}

bool RuleStore::HasSection(const QString& section, int store) const {
    if (store < 0 || store >= kRuleStoreCount) {
        return false;
    }
    return FindBlock(m_stores[static_cast<size_t>(store)], section).start >= 0;
}

// ------------------------------------------------------- the process's store

RuleStore& Rules() {
    static RuleStore rules;
    return rules;
}

QString LookupRuleKey(const QString& section, const QString& key, int store) {
    return Rules().LookupKey(section, key, store);
}

QString LookupRuleName(const QString& section, const QString& value, int store) {
    return Rules().LookupName(section, value, store);
}

std::vector<RuleListRow> FillListFromRules(int store, const QString& section) {
    return Rules().FillList(store, section);
}

// ------------------------------------------------------- install and repair

RuleFixResult ApplyRuleFix(RuleStore& rules, Database& db) {
    const QString configs = CurrentSession().ConfigsDir;
    if (configs.isEmpty() || !QFileInfo::exists(FixFile(configs))) {
        return RuleFixResult::NotPending;
    }
    QFile::remove(FixFile(configs));
    const std::optional<QString> info = core::LoadRuleFile(configs + QStringLiteral("info.pro"));
    if (!info) {
        CurrentUi().Message(kFixError, QStringLiteral("Protocol Fix Error 1"),
                            core::Icon::Critical);
        return RuleFixResult::FileMissing;
    }
    rules.SetText(kInfoStore, *info);
    const std::optional<QString> site = core::LoadRuleFile(configs + QStringLiteral("site.pro"));
    if (!site) {
        CurrentUi().Message(kFixError, QStringLiteral("Protocol Fix Error 2"),
                            core::Icon::Critical);
        return RuleFixResult::FileMissing;
    }
    rules.SetText(kSiteStore, *site);
    try {
        Savepoint savepoint(db);
        WriteProtocolRow(db, 0, rules.Text(kSiteStore));
        WriteProtocolRow(db, 1, rules.Text(kInfoStore));
        savepoint.Release();
    } catch (const StoreError& e) {
        // The files stay and the repair is tried again at the next start.
        QFile marker(FixFile(configs));
        if (marker.open(QIODevice::WriteOnly)) {
            marker.close();
        }
        CurrentUi().Message(e.Message(), kStoreErrorTitle, core::Icon::Critical);
        return RuleFixResult::StoreFailed;
    }
    return RuleFixResult::Applied;
}

void ApplyRuleFix() {
    const QString configs = CurrentSession().ConfigsDir;
    if (configs.isEmpty() || !QFileInfo::exists(FixFile(configs))) {
        return;
    }
    WithSessionStore([](Database& db) { ApplyRuleFix(Rules(), db); });
}

bool InstallRuleStore(RuleStore& rules, Database& db) {
    return InstallWithFix(rules, db, nullptr);
}

void InstallRuleStore() {
    WithSessionStore([](Database& db) { InstallRuleStore(Rules(), db); });
}

bool DecryptProtocols(RuleStore& rules, Database& db) {
    return FillStoresFromTable(rules, db);
}

void DecryptProtocols() {
    WithSessionStore([](Database& db) { DecryptProtocols(Rules(), db); });
}

namespace {

const QString kPreviousFiles[2] = {QStringLiteral("site.pro"), QStringLiteral("info.pro")};

// The first two rows of Protocols, as many as there are.
QStringList ReadProtocolRows(Database& db) {
    QStringList rows;
    core::Statement select =
        db.Prepare(QStringLiteral("SELECT ProtocolData FROM Protocols ORDER BY rowid"));
    while (rows.size() < 2 && select.Step()) {
        rows << select.Text(0);
    }
    return rows;
}

bool WriteWhole(const QString& path, const QByteArray& bytes, QString* error) {
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit()) {
        return true;
    }
    if (error != nullptr) {
        *error = QStringLiteral("Cannot write %1: %2.").arg(path, file.errorString());
    }
    return false;
}

bool WritePrevious(const QStringList& rows, QString* error) {
    const QString folder = PreviousRulesDir();
    if (!QDir().mkpath(folder)) {
        if (error != nullptr) {
            *error = QStringLiteral("Cannot make the folder %1.").arg(folder);
        }
        return false;
    }
    for (int i = 0; i < 2; ++i) {
        if (!WriteWhole(folder + kPreviousFiles[i], rows.at(i).toUtf8(), error)) {
            return false;
        }
    }
    return true;
}

}  // namespace

QString PreviousRulesDir() {
    return CurrentSession().ConfigsDir + QStringLiteral("previous/");
}

bool KeepPreviousRules(Database& db, QString* error) {
    const QStringList rows = ReadProtocolRows(db);
    if (rows.size() < 2 || (rows.at(0).trimmed().isEmpty() && rows.at(1).trimmed().isEmpty())) {
        return true;  // nothing in use that could be lost
    }
    return WritePrevious(rows, error);
}

bool RestorePreviousRules(RuleStore& rules, Database& db, QString* error) {
    auto fail = [error](const QString& text) {
        if (error != nullptr) {
            *error = text;
        }
        return false;
    };
    const QString folder = PreviousRulesDir();
    QStringList kept;
    for (const QString& name : kPreviousFiles) {
        const std::optional<QString> text = core::LoadRuleFile(folder + name);
        if (!text) {
            return fail(QStringLiteral("No earlier rules are kept in %1, so none were restored.")
                            .arg(folder));
        }
        const QString problem = RuleFileProblem(name, *text);
        if (!problem.isEmpty()) {
            return fail(QStringLiteral("The earlier rules in %1 were not restored: %2.")
                            .arg(folder, problem));
        }
        kept << *text;
    }
    try {
        const QStringList current = ReadProtocolRows(db);
        Savepoint savepoint(db);
        WriteProtocolRow(db, 0, kept.at(0));
        WriteProtocolRow(db, 1, kept.at(1));
        // The rules in use become the kept ones before the rows are let go,
        // so that a failure here leaves both as they were.
        QString written;
        if (current.size() == 2 && !WritePrevious(current, &written)) {
            return fail(written);
        }
        savepoint.Release();
    } catch (const StoreError& e) {
        return fail(e.Message());
    }
    if (!FillStoresFromTable(rules, db)) {
        return fail(QStringLiteral("The restored rules could not be read back from the database "
                                   "%1.")
                        .arg(db.Path()));
    }
    return true;
}

bool RestorePreviousRules(QString* error) {
    try {
        Database db = core::OpenStore();
        return RestorePreviousRules(Rules(), db, error);
    } catch (const StoreError& e) {
        if (error != nullptr) {
            *error = e.Message();
        }
        return false;
    }
}

bool InstallRuleFiles(const QString& sitePro, const QString& infoPro, QString* error) {
    auto fail = [error](const QString& text) {
        if (error != nullptr) {
            *error = text;
        }
        return false;
    };
    const QString configs = CurrentSession().ConfigsDir;
    if (configs.isEmpty()) {
        return fail(QStringLiteral("No Configs folder is set up."));
    }
    // Both files are read and checked before anything is written, so a bad
    // second file leaves the first one's old copy in place.
    QByteArray bytes[2];
    const QString sources[2] = {sitePro, infoPro};
    for (int i = 0; i < 2; ++i) {
        QFile file(sources[i]);
        if (!file.open(QIODevice::ReadOnly)) {
            return fail(QStringLiteral("Cannot read the rule file %1: %2.")
                            .arg(sources[i], file.errorString()));
        }
        bytes[i] = file.readAll();
        const QString problem =
            RuleFileProblem(kPreviousFiles[i], core::RuleTextFromBytes(bytes[i]));
        if (!problem.isEmpty()) {
            return fail(
                QStringLiteral("The rule file %1 was not installed: %2.").arg(sources[i], problem));
        }
    }
    std::optional<Database> db;
    try {
        db.emplace(core::OpenStore());
    } catch (const StoreError& e) {
        return fail(QStringLiteral("The database could not be opened, so nothing was installed: %1")
                        .arg(e.Message()));
    }
    QString kept;
    if (!KeepPreviousRules(*db, &kept)) {
        return fail(QStringLiteral("The rules in use could not be kept, so nothing was installed: "
                                   "%1")
                        .arg(kept));
    }
    const QString targets[3] = {configs + QStringLiteral("site.pro"),
                                configs + QStringLiteral("info.pro"), FixFile(configs)};
    const QByteArray contents[3] = {bytes[0], bytes[1], QByteArray()};
    for (int i = 0; i < 3; ++i) {
        QString written;
        if (!WriteWhole(targets[i], contents[i], &written)) {
            return fail(written);
        }
    }
    RuleFixResult fix = RuleFixResult::NotPending;
    const bool filled = InstallWithFix(Rules(), *db, &fix);
    if (fix != RuleFixResult::Applied) {
        return fail(QStringLiteral("The rule files could not be written to the database %1.")
                        .arg(db->Path()));
    }
    if (!filled) {
        return fail(QStringLiteral("The rules could not be read back from the database %1.")
                        .arg(db->Path()));
    }
    return true;
}

// ------------------------------------------------------------ self-update

RuleFetcher DefaultRuleFetcher() {
    return [](const QString& url, const QString& filePath) {
        // A rule file is replaced only by a complete answer with a success
        // status, so a failed or refused download leaves the earlier file.
        const core::NetResult result = core::HttpGet(url, core::NetOptions{}, [](qint64, qint64) {
            core::Ui& ui = CurrentUi();
            ui.PumpEvents();
            return !ui.CancelRequested();
        });
        if (result.status == core::NetStatus::Cancelled) {
            return FetchOutcome::Cancelled;
        }
        if (!result.ok() || result.httpCode >= 400) {
            return FetchOutcome::Failed;
        }
        return core::ReplaceFile(filePath, result.body) ? FetchOutcome::Ok : FetchOutcome::Failed;
    };
}

bool CheckRuleUpdate(RuleStore& rules, Database& db, const RuleFetcher& fetch) {
    return CheckRuleUpdateWith(
        rules, [&db]() -> Database& { return db; }, fetch);
}

bool CheckRuleUpdate(const RuleFetcher& fetch) {
    // The database is opened only when a new rule file has to be written.
    std::optional<Database> db;
    auto database = [&db]() -> Database& {
        if (!db) {
            db.emplace(core::OpenStore());
        }
        return *db;
    };
    return CheckRuleUpdateWith(Rules(), database, fetch);
}

// ---------------------------------------------------------------- post table

int LoadPostDefaults(const RuleStore& rules, QStringList& names, QStringList& defaults) {
    const int count = CountValue(
        rules.LookupKey(QStringLiteral("AuctionPost Names"), QStringLiteral("Count"), kInfoStore),
        kPostSlots);
    names = QStringList(count + 1);
    defaults = QStringList(count + 1);
    for (int n = 1; n <= count; ++n) {
        const QString number = QString::number(n);
        names[n] = rules.LookupKey(QStringLiteral("AuctionPost Names"),
                                   QStringLiteral("Field") + number, kInfoStore);
        defaults[n] = rules.LookupKey(QStringLiteral("AuctionPost Defaults"),
                                      QStringLiteral("Default") + number, kInfoStore);
    }
    return count;
}

int LoadPostDefaults(QStringList& names, QStringList& defaults) {
    return LoadPostDefaults(Rules(), names, defaults);
}

}  // namespace lw::update
