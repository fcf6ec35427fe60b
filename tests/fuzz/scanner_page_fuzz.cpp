// SPDX-License-Identifier: GPL-3.0-or-later
// The page scanner over fuzzed page bytes with a fixed protocol that uses
// every item key: fallback markers, [HR], skips, replacements, includes,
// alternate starts, spans and ends, AccountType and ancillary triggers.
#include "tests/fuzz/fuzz_support.h"

namespace {

const char kRules[] =
    "[Fixed eBay]\n"
    "GStart=<table\nGend=</table>\nItems=7\n"
    "Item1=ItemNumber\nItem1 Start=<td class=\"item\"\nItem1 AStart=<td class=item\n"
    "Item1 Skip=\n"
    "Item2=ItemTitle\nItem2 Start=<td class=\"title\"\nItem2 IncludeTag= bold\n"
    "Item2 IncludeTagField=Bold\nItem2 IncludeTagValue=1\n"
    "Item3=HighBid\nItem3 Start=<td class=\"price\"\nItem3 ReplaceIf=-\n"
    "Item3 ReplaceString=0\nItem3 AlternateIf=Dutch Auction\n"
    "Item3 AlternateStart=<td class=\"dutch\"\n"
    "Item4=EndDate\nItem4 Start=<td>[HR]\nItem4 AStart=<td class=end>[HR]\n"
    "Item4 AlternateEnd=<[HR]\nItem4 AlternateSpan=\">\n"
    "Item5=AccountType\nItem5 Start=<td class=\"type\"\nItem5 Skip2=0\n"
    "Item6 Start=<td class=\"left\"\nItem6 AncillaryIf=Not Null\nItem6 SkipRecord=none\n"
    "Item6 SkipJump=<tr\nItem6 Skip=ERROR\n"
    "Item7=Quantity\nItem7 Start=\nItem7 AncillaryIf=1\n";

struct Protocols {
    lw::update::ProtocolRecord run;
    lw::update::ProtocolRecord ancillary;
};

const Protocols& Fixed() {
    static const Protocols protocols = [] {
        lw::update::RuleStore rules;
        rules.SetText(lw::update::kSiteStore, lw::fuzz::RuleText(QByteArray(kRules)));
        return Protocols{lw::update::LoadRunProtocol(rules, QStringLiteral("Fixed eBay")),
                         lw::update::LoadAncillaryProtocol(rules, QStringLiteral("Fixed eBay"))};
    }();
    return protocols;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Protocols& protocols = Fixed();
    lw::fuzz::Check(protocols.run.items.size() == 7);
    lw::fuzz::ScanAll(
        protocols.run, protocols.ancillary,
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}
