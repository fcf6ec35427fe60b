// SPDX-License-Identifier: GPL-3.0-or-later
// The rule lookups over fuzzed rule texts: the input is split at NUL bytes
// into a rule text, a section name and a key (or value). Every answer of the
// store, cached or not, must equal the plain search of the whole text.
#include <vector>

#include "tests/fuzz/fuzz_support.h"

namespace {

const QString kCrLf = QStringLiteral("\r\n");

// The section's block with a line end behind, found as the lookups find it.
bool Block(const QString& text, const QString& section, QString* block) {
    const qsizetype start =
        text.indexOf(QStringLiteral("[") + section + QStringLiteral("]"), 0, Qt::CaseInsensitive);
    if (start < 0) {
        return false;
    }
    const qsizetype blank = text.indexOf(QStringLiteral("\r\n\r\n"), start);
    if (blank < 0) {
        return false;
    }
    *block = text.mid(start, blank - start) + kCrLf;
    return true;
}

QString ReferenceKey(const QString& text, const QString& section, const QString& key) {
    QString block;
    if (!Block(text, section, &block)) {
        return QStringLiteral("ERROR");
    }
    const qsizetype at = block.indexOf(kCrLf + key + QStringLiteral("="));
    if (at < 0) {
        return QStringLiteral("ERROR");
    }
    QString line = block.mid(at + 2);
    line = line.left(line.indexOf(kCrLf));
    return line.mid(line.indexOf(u'=') + 1);
}

QString ReferenceName(const QString& text, const QString& section, const QString& value) {
    QString block;
    if (!Block(text, section, &block)) {
        return QStringLiteral("ERROR");
    }
    const qsizetype at = block.indexOf(QStringLiteral("=") + value + kCrLf);
    if (at < 0) {
        return QStringLiteral("ERROR");
    }
    const QString before = block.left(at);
    const qsizetype lineStart = before.lastIndexOf(kCrLf);
    return lineStart < 0 ? before : before.mid(lineStart + 2);
}

std::vector<QByteArray> Parts(const uint8_t* data, size_t size) {
    std::vector<QByteArray> parts(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && parts.size() < 4) {
            parts.emplace_back();
        } else {
            parts.back().append(static_cast<char>(data[i]));
        }
    }
    parts.resize(4);
    return parts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<QByteArray> parts = Parts(data, size);
    const QString text = lw::fuzz::RuleText(parts[0]);
    const QString section = QString::fromUtf8(parts[1]);
    const QString key = QString::fromUtf8(parts[2]);
    const QString other = QString::fromUtf8(parts[3]);

    lw::update::Rules().SetText(lw::update::kSiteStore, text);
    // Twice each: the second answer comes from the store's cache.
    for (int round = 0; round < 2; ++round) {
        lw::fuzz::Check(lw::update::LookupRuleKey(section, key, lw::update::kSiteStore) ==
                        ReferenceKey(text, section, key));
        lw::fuzz::Check(lw::update::LookupRuleKey(section, other, lw::update::kSiteStore) ==
                        ReferenceKey(text, section, other));
        lw::fuzz::Check(lw::update::LookupRuleName(section, key, lw::update::kSiteStore) ==
                        ReferenceName(text, section, key));
    }
    lw::update::FillListFromRules(lw::update::kSiteStore, section);
    return 0;
}
