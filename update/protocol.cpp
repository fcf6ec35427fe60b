// SPDX-License-Identifier: GPL-3.0-or-later
// Reading a protocol's keys into one record. Every key is looked up once,
// when the protocol starts, so that a rule text installed by this update's
// version check is the one the protocol runs with. The two kinds of protocol
// read slightly different keys, spelled as the rule files spell them.
#include "update/protocol.h"

#include <cmath>

#include "core/text.h"
#include "update/rules.h"

namespace lw::update {

namespace {

const QString kTrue = QStringLiteral("True");

QString Key(const RuleStore& rules, const QString& section, const QString& key) {
    return rules.LookupKey(section, key, kSiteStore);
}

// "Item3 Start" and its kin.
QString ItemKey(int n, const char16_t* suffix) {
    return QStringLiteral("Item") + QString::number(n) + QStringView(suffix);
}

ProtocolRecord Load(const RuleStore& rules, const QString& section, bool ancillary) {
    ProtocolRecord record;
    record.section = section;
    record.ancillary = ancillary;
    record.runCaption = Key(rules, section, QStringLiteral("RunCaption"));
    // The one key whose spelling differs between the two kinds.
    record.siteNumber = Key(
        rules, section, ancillary ? QStringLiteral("SiteNumber") : QStringLiteral("Sitenumber"));
    record.targetTable = Key(rules, section, QStringLiteral("TargetTable"));
    record.url = Key(rules, section, QStringLiteral("Url"));
    if (ancillary) {
        record.iterate = RuleError();
        record.iterateSkip = RuleError();
    } else {
        record.iterate = Key(rules, section, QStringLiteral("Iterate"));
        record.iterateSkip = Key(rules, section, QStringLiteral("IterateSkip"));
    }
    record.gStart = Key(rules, section, QStringLiteral("GStart"));
    record.gEnd = Key(rules, section, QStringLiteral("Gend"));
    record.deleteBeforeWrite = Key(rules, section, QStringLiteral("DeleteBeforeWrite"));
    record.deleteQuery = Key(rules, section, QStringLiteral("DeleteQuery"));
    record.queryString = Key(rules, section, QStringLiteral("QueryString"));
    record.itemsText = Key(rules, section, QStringLiteral("Items"));
    record.writeFieldsText = Key(rules, section, QStringLiteral("WriteFields"));

    const int items = RuleCount(record.itemsText);
    record.items.reserve(static_cast<size_t>(items));
    for (int n = 1; n <= items; ++n) {
        ItemRule item;
        item.field = Key(rules, section, QStringLiteral("Item") + QString::number(n));
        item.start = Key(rules, section, ItemKey(n, u" Start"));
        item.aStart = Key(rules, section, ItemKey(n, u" AStart"));
        item.replaceIf = Key(rules, section, ItemKey(n, u" ReplaceIf"));
        item.replaceString = Key(rules, section, ItemKey(n, u" ReplaceString"));
        item.includeTag = Key(rules, section, ItemKey(n, u" IncludeTag"));
        item.includeTagField = Key(rules, section, ItemKey(n, u" IncludeTagField"));
        item.includeTagValue = Key(rules, section, ItemKey(n, u" IncludeTagValue"));
        item.ancillaryIf = Key(rules, section, ItemKey(n, u" AncillaryIf"));
        item.ancillaryProtocol = Key(rules, section, ItemKey(n, u" Ancillary Protocol"));
        item.alternateIf = Key(rules, section, ItemKey(n, u" AlternateIf"));
        item.alternateStart = Key(rules, section, ItemKey(n, u" AlternateStart"));
        item.alternateSpan = Key(rules, section, ItemKey(n, u" AlternateSpan"));
        item.alternateEnd = Key(rules, section, ItemKey(n, u" AlternateEnd"));
        item.skip = Key(rules, section, ItemKey(n, u" Skip"));
        item.skip2 = ancillary ? RuleError() : Key(rules, section, ItemKey(n, u" Skip2"));
        item.skipRecord = Key(rules, section, ItemKey(n, u" SkipRecord"));
        item.skipJump = Key(rules, section, ItemKey(n, u" SkipJump"));
        record.items.push_back(std::move(item));
    }

    const int writes = RuleCount(record.writeFieldsText);
    record.writes.reserve(static_cast<size_t>(writes));
    for (int n = 1; n <= writes; ++n) {
        WriteRule write;
        const QString number = QString::number(n);
        write.field = Key(rules, section, QStringLiteral("WriteField") + number);
        // "WriteField3 Value" in a run protocol, "WriteFieldValue3" in an
        // ancillary one.
        write.source = Key(
            rules, section,
            ancillary ? QString(QStringLiteral("WriteFieldValue") + number)
                      : QString(QStringLiteral("WriteField") + number + QStringLiteral(" Value")));
        record.writes.push_back(std::move(write));
    }
    return record;
}

}  // namespace

QueryError::QueryError(const QString& message)
    : std::runtime_error(message.toStdString()), m_message(message) {}

QString QueryErrorTitle() {
    return QStringLiteral("Protocol Error");
}

int RuleCount(const QString& value, int most) {
    const double number = std::floor(core::Val(value));
    if (!(number >= 1)) {  // also NaN
        return 0;
    }
    return number > most ? most : static_cast<int>(number);
}

bool ItemRule::MayRunAncillary() const {
    return ancillaryIf != RuleError();
}

bool ProtocolRecord::Iterates() const {
    return iterate == kTrue;
}

qint64 ProtocolRecord::IterateSkipValue() const {
    const double number = std::floor(core::Val(iterateSkip));
    if (!(number > -1e15 && number < 1e15)) {
        return 0;
    }
    return static_cast<qint64>(number);
}

QString ProtocolRecord::CountFault() const {
    const QString shown = QStringLiteral("The protocol \"") + section +
                          QStringLiteral("\" cannot run: its key Items ");
    if (itemsText == RuleError()) {
        return shown + QStringLiteral("is missing.");
    }
    bool whole = false;
    const int count = itemsText.trimmed().toInt(&whole);
    if (whole && count >= 1 && count <= kMaxProtocolItems) {
        return {};
    }
    return shown + QStringLiteral("is \"") + itemsText +
           QStringLiteral("\", where a number of items from 1 to %1 is needed.")
               .arg(kMaxProtocolItems);
}

int ProtocolRecord::SiteNumberValue() const {
    const double number = std::floor(core::Val(siteNumber));
    if (!(number > -1e9 && number < 1e9)) {
        return 0;
    }
    return static_cast<int>(number);
}

ProtocolRecord LoadRunProtocol(const RuleStore& rules, const QString& section) {
    return Load(rules, section, false);
}

ProtocolRecord LoadAncillaryProtocol(const RuleStore& rules, const QString& section) {
    return Load(rules, section, true);
}

ProtocolRecord LoadRunProtocol(const QString& section) {
    return Load(Rules(), section, false);
}

ProtocolRecord LoadAncillaryProtocol(const QString& section) {
    return Load(Rules(), section, true);
}

}  // namespace lw::update
