// SPDX-License-Identifier: GPL-3.0-or-later
// The RTF reader over fuzzed files: it ends on every input, an input it
// refuses leaves the document empty, and what the writer makes of a document
// it read reads back as itself (the writer's RTF is a fixed point).
#include <QTextDocument>

#include "core/richtext/rich_text.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using lw::fuzz::Check;
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QTextDocument document;
    if (!lw::richtext::LoadRtf(input, document).ok) {
        Check(document.isEmpty());
        return 0;
    }
    const QByteArray rtf = lw::richtext::SaveRtf(document);
    QTextDocument again;
    Check(lw::richtext::LoadRtf(rtf, again).ok);
    Check(lw::richtext::SaveRtf(again) == rtf);
    return 0;
}
