// SPDX-License-Identifier: GPL-3.0-or-later
// The page scanner with a fuzzed protocol: the input up to its first NUL
// byte is the keys of section [P], the rest is the page. Also builds the
// protocol's QueryString with the values of the last record.
#include <cstring>

#include "tests/fuzz/fuzz_support.h"
#include "update/record_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* bytes = reinterpret_cast<const char*>(data);
    const void* nul = std::memchr(bytes, 0, size);
    const size_t split =
        nul == nullptr ? size : static_cast<size_t>(static_cast<const char*>(nul) - bytes);
    const QByteArray keys(bytes, static_cast<qsizetype>(split));
    const QByteArray page =
        split < size ? QByteArray(bytes + split + 1, static_cast<qsizetype>(size - split - 1))
                     : QByteArray();

    lw::update::RuleStore rules;
    rules.SetText(lw::update::kSiteStore, lw::fuzz::RuleText("[P]\n" + keys));
    const lw::update::ProtocolRecord run = lw::update::LoadRunProtocol(rules, QStringLiteral("P"));
    const lw::update::ProtocolRecord ancillary =
        lw::update::LoadAncillaryProtocol(rules, QStringLiteral("P"));
    lw::fuzz::Check(run.items.size() <= lw::update::kMaxProtocolItems);
    lw::fuzz::ScanAll(run, ancillary, page);

    // The values of the page's first record go into the protocol's query.
    lw::update::PageText text(page);
    lw::update::PageScanner scanner(run);
    lw::update::ScanState state;
    lw::update::ScanLists lists;
    lw::update::ScanHooks hooks;
    hooks.pumpEvents = [] {};
    if (scanner.SetUp(text)) {
        scanner.ScanRecord(state, lists, hooks);
    }
    lists.ancillaryItems = lists.items;
    const QString built = lw::update::BuildQuery(run, lists);
    lw::fuzz::Check(built.size() >= 0);
    return 0;
}
