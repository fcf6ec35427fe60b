// SPDX-License-Identifier: GPL-3.0-or-later
// Shared pieces of the fuzz targets: rule texts from bytes, a whole scan of a
// page (every record, then the page as an ancillary page), and the checks
// that every scan must pass. A failed check traps, which libFuzzer reports.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdint>

#include "core/rule_text.h"
#include "update/protocol.h"
#include "update/rules.h"
#include "update/scanner.h"

namespace lw::fuzz {

inline void Check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

// A rule text as the store keeps it: CR LF line ends and a blank line behind.
inline QString RuleText(const QByteArray& bytes) {
    return core::RuleTextFromBytes(bytes) + QStringLiteral("\r\n\r\n");
}

// Scans every record of the page with the run protocol and the one record
// with the ancillary protocol, checking what every record must hold.
inline void ScanAll(const update::ProtocolRecord& run, const update::ProtocolRecord& ancillary,
                    const QByteArray& bytes) {
    const update::PageText page(bytes);
    update::ScanHooks hooks;
    hooks.pumpEvents = [] {};
    size_t ancillaries = 0;
    hooks.runAncillary = [&](const update::ItemRule&, update::ScanLists&) { ++ancillaries; };

    update::PageScanner scanner(run);
    if (scanner.SetUp(page)) {
        Check(scanner.ParsedText().size() <= bytes.size());
        update::ScanState state;
        update::ScanLists lists;
        // The cursor never goes back, and at one place a record starts at
        // most once per previous value and fallback flag.
        const size_t most = (static_cast<size_t>(bytes.size()) + 1) * 2 * (run.items.size() + 2);
        size_t records = 0;
        qsizetype cursor = scanner.Cursor();
        while (scanner.ScanRecord(state, lists, hooks) ==
               update::PageScanner::RecordEnd::Complete) {
            Check(++records <= most);
            Check(scanner.Cursor() >= cursor);
            cursor = scanner.Cursor();
            Check(static_cast<size_t>(lists.items.size()) == run.items.size());
            Check(lists.fields.size() <= lists.items.size());
            Check(lists.includes.size() == lists.includeValues.size());
            lists.ClearRecord();
        }
    }

    update::PageScanner second(ancillary);
    second.SetUpAncillary(page);
    update::ScanLists lists;
    if (second.ScanAncillaryRecord(lists, hooks)) {
        Check(static_cast<size_t>(lists.ancillaryItems.size()) == ancillary.items.size());
    }
}

}  // namespace lw::fuzz
