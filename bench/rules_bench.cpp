// SPDX-License-Identifier: GPL-3.0-or-later
// Rule lookup figures: a rule text of about 200 KB (many protocol sections of
// many item keys), then 10,000 records of 20 key lookups each, as a run reads
// them at each protocol start, some keys missing. The floor is the least any
// lookup must do: the search of the key line (CR LF & key & "=") in the
// section's block, already cut out, for the same keys in the same order.
#include <QString>
#include <QStringList>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "update/rules.h"

using lw::update::RuleStore;

namespace {

constexpr int kSections = 12;
constexpr int kItemsPerSection = 18;
constexpr int kRecords = 10000;
constexpr int kLookupsPerRecord = 20;
constexpr int kRounds = 5;

// The item keys a protocol start reads, in the order it reads them; the last
// two are never written, so those lookups answer "ERROR".
const char* const kItemKeys[kLookupsPerRecord] = {"",
                                                  " Start",
                                                  " AStart",
                                                  " ReplaceIf",
                                                  " ReplaceString",
                                                  " Skip",
                                                  " Skip2",
                                                  " SkipRecord",
                                                  " SkipJump",
                                                  " AlternateIf",
                                                  " AlternateStart",
                                                  " AlternateSpan",
                                                  " AlternateEnd",
                                                  " IncludeTag",
                                                  " IncludeTagField",
                                                  " IncludeTagValue",
                                                  " AncillaryIf",
                                                  " Ancillary Protocol",
                                                  " Unused",
                                                  " Retired"};
constexpr int kWrittenKeys = kLookupsPerRecord - 2;

QString SectionName(int s) {
    return QStringLiteral("Protocol %1 eBay").arg(s);
}

QString ItemKey(int item, int k) {
    return QStringLiteral("Item") + QString::number(item) + QString::fromLatin1(kItemKeys[k]);
}

QString BuildText(std::vector<QString>& blocks) {
    QString text;
    for (int s = 0; s < kSections; ++s) {
        QString block = u'[' + SectionName(s) + u']';
        block += QStringLiteral("\r\nRunCaption=Protocol ") + QString::number(s) +
                 QStringLiteral(
                     "\r\nSitenumber=0\r\nTargetTable=Auctions\r\nUrl=http://127.0.0.1:"
                     "8750/page?skip=[SKIP]&days=[DAYS]\r\nIterate=True\r\n"
                     "IterateSkip=50\r\nGStart=<table id=\"items\">\r\nGend=</table>\r\n"
                     "Items=") +
                 QString::number(kItemsPerSection);
        for (int item = 1; item <= kItemsPerSection; ++item) {
            for (int k = 0; k < kWrittenKeys; ++k) {
                block += QStringLiteral("\r\n") + ItemKey(item, k) +
                         QStringLiteral("=<td class=\"c") + QString::number(item) +
                         QStringLiteral("\" data-k=\"") + QString::number(k) +
                         QStringLiteral("\">[HR]");
            }
        }
        text += block + QStringLiteral("\r\n\r\n");
        blocks.push_back(block + QStringLiteral("\r\n"));
    }
    return text;
}

}  // namespace

int main() {
    std::vector<QString> blocks;
    const QString text = BuildText(blocks);

    std::vector<QString> sections;
    for (int s = 0; s < kSections; ++s) {
        sections.push_back(SectionName(s));
    }
    // The keys of each record, made once so that both sides time only lookups.
    std::vector<QString> keys;
    std::vector<QString> needles;
    for (int item = 1; item <= kItemsPerSection; ++item) {
        for (int k = 0; k < kLookupsPerRecord; ++k) {
            keys.push_back(ItemKey(item, k));
            needles.push_back(QStringLiteral("\r\n") + keys.back() + u'=');
        }
    }
    auto record = [](int r, int* section, int* item) {
        *section = r % kSections;
        *item = (r / kSections) % kItemsPerSection;
    };

    RuleStore rules;
    qint64 answered = 0;
    qint64 missing = 0;
    const double seconds = lw::bench::BestOf(kRounds, [&] {
        rules.SetText(lw::update::kSiteStore, text);  // every round starts cold
        answered = 0;
        missing = 0;
        for (int r = 0; r < kRecords; ++r) {
            int s = 0;
            int item = 0;
            record(r, &s, &item);
            for (int k = 0; k < kLookupsPerRecord; ++k) {
                const QString value =
                    rules.LookupKey(sections[static_cast<size_t>(s)],
                                    keys[static_cast<size_t>(item * kLookupsPerRecord + k)],
                                    lw::update::kSiteStore);
                answered += value.size();
                missing += value == lw::update::RuleError() ? 1 : 0;
            }
        }
    });

    qint64 floorFound = 0;
    const double floorSeconds = lw::bench::BestOf(kRounds, [&] {
        floorFound = 0;
        for (int r = 0; r < kRecords; ++r) {
            int s = 0;
            int item = 0;
            record(r, &s, &item);
            const QString& block = blocks[static_cast<size_t>(s)];
            for (int k = 0; k < kLookupsPerRecord; ++k) {
                floorFound +=
                    block.indexOf(needles[static_cast<size_t>(item * kLookupsPerRecord + k)]);
            }
        }
    });

    const qint64 lookups = static_cast<qint64>(kRecords) * kLookupsPerRecord;
    std::printf(
        "rule text %lld characters in %d sections; %lld lookups, %lld answered ERROR "
        "(checksums %lld, %lld)\n",
        static_cast<long long>(text.size()), kSections, static_cast<long long>(lookups),
        static_cast<long long>(missing), static_cast<long long>(answered),
        static_cast<long long>(floorFound));
    std::printf("LookupRuleKey: %.0f lookups per second (floor %.0f)\n", lookups / seconds,
                lookups / floorSeconds);
    const bool ok =
        lw::bench::Report("rules: 10,000 records x 20 key lookups", seconds, floorSeconds, 2.0);
    return ok ? 0 : 1;
}
