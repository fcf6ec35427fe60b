// SPDX-License-Identifier: GPL-3.0-or-later
// The rule store: the rule texts that hold everything the program knows of the
// auction site's pages (which pages, which markers, which fields), the lookups
// over them, their lasting home in table Protocols, and their self-update from
// the maker's server. Lookups answer exactly as a plain search of the whole
// text would, quirks included; any cache here must never change an answer.
// Nothing in this file knows a site, a page or a protocol by name.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <vector>

#include "core/store.h"

namespace lw::update {

// The three texts: site.pro (first row of Protocols), info.pro (second row),
// and seller.pro, which only the sell-page post loads.
inline constexpr int kSiteStore = 0;
inline constexpr int kInfoStore = 1;
inline constexpr int kSellerStore = 2;
inline constexpr int kRuleStoreCount = 3;

// The mark of a missing section or key; callers compare against it.
inline const QString& RuleError() {
    static const QString error = QStringLiteral("ERROR");
    return error;
}

// One row of a list filled from a rule section: the key, and the number at the
// left of its value as the row's data.
struct RuleListRow {
    QString text;
    int data = 0;
};

class RuleStore {
public:
    // Out-of-range store numbers are ignored by the setters and read as an
    // empty text.
    void SetText(int store, QString text);
    const QString& Text(int store) const;
    void Clear(int store);
    void ClearAll();

    // Section found case-blind anywhere in the text (also inside a value), its
    // block running to the first blank line; the key matched case-sensitively
    // at a line start; the value to the line end, untrimmed. "ERROR" when the
    // section, its blank line or the key is missing.
    QString LookupKey(const QString& section, const QString& key, int store) const;
    // The key of the first line of the section whose value is the given one.
    QString LookupName(const QString& section, const QString& value, int store) const;
    // Every line of the section as key and number. A section whose header
    // stands at the very first position of the text counts as absent.
    std::vector<RuleListRow> FillList(int store, const QString& section) const;
    // True when the lookups find the section's header and the blank line
    // that ends its block.
    bool HasSection(const QString& section, int store) const;

private:
    // Where a section's block lies in the text, found once per spelling of the
    // section name; its key lines indexed on first use.
    struct Block {
        qsizetype start = -1;  // position of the header's "["; -1: no block
        qsizetype end = -1;    // position of the blank line that ends it
        bool indexed = false;
        QHash<QString, QString> values;  // first line of each key wins
    };
    struct Store {
        QString text;
        QHash<QString, Block> blocks;
    };

    Block& FindBlock(Store& store, const QString& section) const;
    static void IndexBlock(const QString& text, Block& block);

    mutable std::array<Store, kRuleStoreCount> m_stores;
};

// The process's rule store, filled at start-up by InstallRuleStore.
RuleStore& Rules();

// The lookups over the process's store.
QString LookupRuleKey(const QString& section, const QString& key, int store);
QString LookupRuleName(const QString& section, const QString& value, int store);
std::vector<RuleListRow> FillListFromRules(int store, const QString& section);

// How the repair from protfix.cfg went.
enum class RuleFixResult {
    NotPending,   // no protfix.cfg in ConfigsDir
    Applied,      // both files loaded and written to Protocols
    FileMissing,  // info.pro or site.pro missing; told by message
    StoreFailed,  // the rows could not be written; told by message, protfix.cfg kept
};

// When protfix.cfg stands in ConfigsDir: loads info.pro into store 1 and
// site.pro into store 0, and writes them to the first and second row of
// Protocols.
RuleFixResult ApplyRuleFix(RuleStore& rules, core::Database& db);
void ApplyRuleFix();

// ApplyRuleFix, then both stores refilled from the first two rows of Protocols
// (each with CR LF CR LF appended), then info.pro and site.pro removed from
// ConfigsDir. Failures are told by message; false when the stores could not be
// filled from the table.
bool InstallRuleStore(RuleStore& rules, core::Database& db);
void InstallRuleStore();

// Stores 0 and 1 refilled from the table, as InstallRuleStore does, without the
// repair and without touching ConfigsDir.
bool DecryptProtocols(RuleStore& rules, core::Database& db);
void DecryptProtocols();

// For the command line: checks both files as rule files (RuleFileProblem),
// keeps the rules in use as the previous rules, copies the two files into
// ConfigsDir as site.pro and info.pro, leaves protfix.cfg beside them and
// installs the store through the repair. False with an error naming the file
// at fault and what is wrong with it; when a given file is missing, unreadable
// or not a rule file nothing is overwritten.
bool InstallRuleFiles(const QString& sitePro, const QString& infoPro, QString* error);

// The rules that an update or an install replaced are kept in this folder of
// ConfigsDir as site.pro and info.pro, until the next one replaces them.
QString PreviousRulesDir();
// Writes the first two rows of Protocols to PreviousRulesDir. True also when
// the table holds no rules to keep; false with the reason when they cannot be
// written.
bool KeepPreviousRules(core::Database& db, QString* error);
// Puts the kept rules back into Protocols and both stores, and keeps the rules
// they replace in their place, so that a second restore undoes the first.
// False with the reason, and nothing changed, when no rules are kept, they
// fail the check of a rule file, or they cannot be written.
bool RestorePreviousRules(RuleStore& rules, core::Database& db, QString* error);
bool RestorePreviousRules(QString* error);

enum class FetchOutcome { Ok, Failed, Cancelled };
// Fetches url to filePath. The update engine passes one that uses its proxy.
using RuleFetcher = std::function<FetchOutcome(const QString& url, const QString& filePath)>;
// A direct GET that lets events run while data arrives and stops when the user
// cancels. An answer with an error status counts as a failure, so that an
// error page never takes the place of a rule file.
RuleFetcher DefaultRuleFetcher();

// The version check at the start of an update, until it has once succeeded in
// this run (RulesChecked). True when the update may go on with the rules now
// in the store; False when it was cancelled or the check failed, or at once
// when the check already succeeded earlier in this run. The files of a new
// version are all fetched first and checked (RuleFileProblem); when one of
// them fails, none replaces anything, the message names what was wrong, and
// the update goes on with the rules in use (the next update checks again).
// Otherwise the rules in use are kept as the previous rules before the new
// ones take their rows.
bool CheckRuleUpdate(RuleStore& rules, core::Database& db,
                     const RuleFetcher& fetch = DefaultRuleFetcher());
bool CheckRuleUpdate(const RuleFetcher& fetch = DefaultRuleFetcher());

// The direct post's slot table from store 1: names[n] = Field n of "AuctionPost
// Names" and defaults[n] = Default n of "AuctionPost Defaults" for n = 1 to
// Count (index 0 stays empty). Returns Count, at most kPostSlots.
inline constexpr int kPostSlots = 58;
int LoadPostDefaults(const RuleStore& rules, QStringList& names, QStringList& defaults);
int LoadPostDefaults(QStringList& names, QStringList& defaults);

}  // namespace lw::update
