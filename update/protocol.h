// SPDX-License-Identifier: GPL-3.0-or-later
// A protocol's keys, read from the rule store once when the protocol starts:
// the page address, the markers of the record part, one set of keys per item
// and the extra writes. The record holds the texts exactly as the rule store
// answered them ("ERROR" for a missing key), because the scanner compares
// against that mark. Reading a protocol never fails and never touches a page
// or the database.
#pragma once

#include <QString>
#include <stdexcept>
#include <vector>

namespace lw::update {

class RuleStore;

// The keys of one item; `n` of the rule keys is the position in
// ProtocolRecord::items plus one.
struct ItemRule {
    QString field;  // Item n: the field the value goes to; "ERROR": scan, do not write
    QString start;
    QString aStart;
    QString replaceIf;
    QString replaceString;
    QString includeTag;
    QString includeTagField;
    QString includeTagValue;
    QString ancillaryIf;
    QString ancillaryProtocol;
    QString alternateIf;
    QString alternateStart;
    QString alternateSpan;
    QString alternateEnd;
    QString skip;
    QString skip2;  // a run protocol's only; "ERROR" in an ancillary record
    QString skipRecord;
    QString skipJump;

    // Whether a record's scan may run an ancillary protocol at this item: its
    // AncillaryIf is set.
    bool MayRunAncillary() const;
};

// One extra write: the field, and the source ("3": item 3 of the main record,
// "A2": item 2 of the ancillary record).
struct WriteRule {
    QString field;
    QString source;
};

struct ProtocolRecord {
    QString section;  // the rule section, as the run list names it
    bool ancillary = false;

    QString runCaption;
    QString siteNumber;  // Sitenumber (run) or SiteNumber (ancillary), as text
    QString targetTable;
    QString url;
    QString iterate;      // run only
    QString iterateSkip;  // run only
    QString gStart;
    QString gEnd;
    QString deleteBeforeWrite;
    QString deleteQuery;
    QString queryString;
    QString itemsText;        // Items as written
    QString writeFieldsText;  // WriteFields as written
    std::vector<ItemRule> items;
    std::vector<WriteRule> writes;

    bool Iterates() const;
    qint64 IterateSkipValue() const;
    // Why the protocol cannot run as its keys stand: an Items that is
    // missing, not a whole number, below 1 or above kMaxProtocolItems. Empty
    // when it can run.
    QString CountFault() const;
    int SiteNumberValue() const;
};

// A rule that asks for more items or writes than this is taken as broken:
// only this many are read, so that a damaged count cannot stall the update;
// a run protocol with more items is refused (CountFault).
inline constexpr int kMaxProtocolItems = 1000;

// The leading-number reading of a count key ("ERROR" and text read as 0),
// clamped to 0..most.
int RuleCount(const QString& value, int most = kMaxProtocolItems);

// A QueryString (or DeleteQuery) that cannot be used: not one SELECT over a
// table, or not valid SQL. The message names the protocol.
class QueryError : public std::runtime_error {
public:
    explicit QueryError(const QString& message);
    QString Message() const { return m_message; }

private:
    QString m_message;
};

// The title of the message that tells a QueryError.
QString QueryErrorTitle();

// Reads every key of the section from rule store 0.
ProtocolRecord LoadRunProtocol(const RuleStore& rules, const QString& section);
ProtocolRecord LoadAncillaryProtocol(const RuleStore& rules, const QString& section);
// The same over the process's rule store.
ProtocolRecord LoadRunProtocol(const QString& section);
ProtocolRecord LoadAncillaryProtocol(const QString& section);

}  // namespace lw::update
