// SPDX-License-Identifier: GPL-3.0-or-later
// The page scanner. A page is kept as the bytes it arrived as, with one
// lower-case copy in which every marker is searched, so that a search is a
// plain byte search and positions in the copy are positions in the page.
// The cursor is a selection (start, length) over the record part, moved
// exactly as the steps of the item loop say; the only additions are the
// exits at the end of the text, where the described loop would spin.
#include "update/scanner.h"

#include <sqlite3.h>

#include <QByteArrayView>
#include <QFile>
#include <algorithm>
#include <cstring>
#include <exception>

#include "core/page_charset.h"
#include "core/session.h"
#include "core/store.h"
#include "core/text.h"
#include "core/ui_port.h"
#include "update/rules.h"

namespace lw::update {

namespace {

const QString kSkipped = QStringLiteral("--");
const QString kAccountType = QStringLiteral("AccountType");
const QString kNotNull = QStringLiteral("Not Null");
const QString kTrue = QStringLiteral("True");
const QString kHr = QStringLiteral("[HR]");

char LowerAscii(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Written straight into a buffer of its own: lowering the page's own bytes
// would copy them first, as they are shared with the caller. Eight bytes at
// a time: a run's pages come to megabytes, and byte by byte this was the
// largest single cost of reading a page.
QByteArray LowerAscii(QByteArrayView bytes) {
    QByteArray lower(bytes.size(), Qt::Uninitialized);
    const char* in = bytes.data();
    char* out = lower.data();
    const qsizetype size = bytes.size();
    constexpr quint64 kOnes = 0x0101010101010101ULL;
    constexpr quint64 kHighBits = 0x8080808080808080ULL;
    qsizetype i = 0;
    for (; i + 8 <= size; i += 8) {
        quint64 word = 0;
        std::memcpy(&word, in + i, 8);
        // Per byte, the high bit of aboveZ is set from 'Z' + 1 on and that of
        // fromA from 'A' on (the low seven bits only, so no byte carries
        // into the next); a byte that is not ASCII is left alone.
        const quint64 low7 = word & ~kHighBits;
        const quint64 aboveZ = low7 + (0x7f - 'Z') * kOnes;
        const quint64 fromA = low7 + (0x80 - 'A') * kOnes;
        const quint64 upper = (fromA ^ aboveZ) & ~word & kHighBits;
        word |= upper >> 2;  // 0x80 >> 2 is the 0x20 between 'A' and 'a'
        std::memcpy(out + i, &word, 8);
    }
    for (; i < size; ++i) {
        out[i] = LowerAscii(in[i]);
    }
    return lower;
}

bool IsAscii(const QString& text) {
    for (const QChar c : text) {
        if (c.unicode() >= 0x80) {
            return false;
        }
    }
    return true;
}

void AddToSet(std::array<bool, 256>& set, const QString& characters) {
    for (const char c : characters.toUtf8()) {
        set[static_cast<unsigned char>(c)] = true;
    }
    // A page that is not UTF-8 holds such characters as single bytes.
    for (const QChar c : characters) {
        if (c.unicode() >= 0x80 && c.unicode() <= 0xFF) {
            set[c.unicode()] = true;
        }
    }
}

}  // namespace

// ------------------------------------------------------------------ views

void UiUpdateView::Status(const QString& text) {
    core::CurrentUi().Status(text);
}

void UiUpdateView::ConnectStatus(const QString& text) {
    core::CurrentUi().Status(text);
}

void UiUpdateView::Progress(int percent) {
    core::CurrentUi().Progress(percent, 100);
}

void UiUpdateView::LastUrl(const QString&) {}

void UiUpdateView::CurrentItem(const QString&, const QString&) {}

bool UiUpdateView::DetailsShown() {
    return false;
}

void ScanLists::ClearRecord() {
    items.clear();
    fields.clear();
    includes.clear();
    includeValues.clear();
}

bool StoreCannotWrite(int code) {
    switch (code & 0xff) {
        case SQLITE_READONLY:
        case SQLITE_FULL:
        case SQLITE_IOERR:
        case SQLITE_CANTOPEN:
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return true;
        default:
            return false;
    }
}

QString CancelMessageText() {
    return QStringLiteral("Update cancelled.  Some Auction/Bid information may be incomplete.");
}

QString CancelMessageTitle() {
    return QStringLiteral("Update Cancelled");
}

// ------------------------------------------------------------------ page text

void PageText::Load(QByteArray bytes) {
    m_bytes = std::move(bytes);
    m_lower = LowerAscii(m_bytes);
    m_utf8 = -1;
}

bool PageText::IsUtf8() const {
    if (m_utf8 < 0) {
        m_utf8 = QByteArrayView(m_bytes).isValidUtf8() ? 1 : 0;
    }
    return m_utf8 == 1;
}

QString PageValue(const char* data, qsizetype size) {
    return core::PageBytesToText(QByteArrayView(data, size));
}

// ------------------------------------------------------------------ scanner

PageScanner::Marker PageScanner::MakeMarker(const QString& marker, bool expandHr) {
    Marker made;
    const QString searched = expandHr ? QString(marker).replace(kHr, QStringLiteral("\r")) : marker;
    made.utf8 = LowerAscii(searched.toUtf8());
    made.utf8Written = marker.toUtf8().size();
    if (IsAscii(marker)) {
        made.latin1 = made.utf8;
        made.latin1Written = made.utf8Written;
    } else if (const auto single = core::ToWindows1252(searched)) {
        made.latin1 = LowerAscii(*single);
        made.latin1Written = marker.size();
    } else {
        // Not to be found in a single-byte page: a needle longer than any page.
        made.latin1 = made.utf8;
        made.latin1Written = made.utf8Written;
    }
    return made;
}

PageScanner::PageScanner(ProtocolRecord protocol) {
    auto compiled = std::make_shared<Compiled>();
    compiled->protocol = std::move(protocol);
    const ProtocolRecord& rules = compiled->protocol;
    compiled->gStart = MakeMarker(rules.gStart, false);
    compiled->gEnd = MakeMarker(rules.gEnd, false);
    compiled->items.reserve(rules.items.size());
    for (const ItemRule& rule : rules.items) {
        CompiledItem item;
        item.start = MakeMarker(rule.start, true);
        item.aStart = MakeMarker(rule.aStart, true);
        item.aStartAsIs = MakeMarker(rule.aStart, false);
        item.alternateStart = MakeMarker(rule.alternateStart, true);
        item.skipJump = MakeMarker(rule.skipJump, true);
        item.hasAStart = rule.aStart != RuleError();
        item.hasAlternateSpan = rule.alternateSpan != RuleError();
        if (item.hasAlternateSpan) {
            AddToSet(item.spanSet, rule.alternateSpan);
        }
        item.hasAlternateEnd = rule.alternateEnd != RuleError();
        if (item.hasAlternateEnd) {
            AddToSet(item.endSet, QString(rule.alternateEnd).replace(kHr, QStringLiteral("\r\n")));
        }
        item.hasSkipRecord = rule.skipRecord != RuleError();
        item.accountType = rule.field == kAccountType;
        item.includeTagUtf8 = rule.includeTag.toUtf8();
        if (!IsAscii(rule.includeTag)) {
            item.includeTagLatin1 = core::ToWindows1252(rule.includeTag).value_or(QByteArray());
        }
        compiled->items.push_back(std::move(item));
    }
    m_compiled = std::move(compiled);
}

const QByteArray& PageScanner::Needle(const Marker& marker) const {
    return (m_page == nullptr || m_page->IsUtf8() || marker.latin1.isEmpty()) ? marker.utf8
                                                                              : marker.latin1;
}

qsizetype PageScanner::Written(const Marker& marker) const {
    return (m_page == nullptr || m_page->IsUtf8()) ? marker.utf8Written : marker.latin1Written;
}

qsizetype PageScanner::FindFrom(const QByteArray& lowerNeedle, qsizetype from) const {
    if (m_page == nullptr) {
        return -1;
    }
    from = std::max(from, m_begin);
    if (from > m_end) {
        return -1;
    }
    if (lowerNeedle.isEmpty()) {
        return from;
    }
    const char* base = m_page->Lower().constData();
    const void* hit = memmem(base + from, static_cast<size_t>(m_end - from),
                             lowerNeedle.constData(), static_cast<size_t>(lowerNeedle.size()));
    return hit == nullptr ? -1 : static_cast<const char*>(hit) - base;
}

// A text box's selection: the start is kept inside the text, the length
// inside what follows it.
void PageScanner::Select(qsizetype start, qsizetype length) {
    m_selStart = std::clamp(start, m_begin, m_end);
    m_selLength = std::clamp(length, qsizetype(0), m_end - m_selStart);
}

void PageScanner::SpanTo(const ByteSet& stops) {
    const char* data = m_page->Bytes().constData();
    qsizetype p = m_selStart + m_selLength;
    while (p < m_end && !stops[static_cast<unsigned char>(data[p])]) {
        ++p;
    }
    m_selLength = p - m_selStart;
}

void PageScanner::SpanToByte(char stop) {
    const char* data = m_page->Bytes().constData();
    const qsizetype from = m_selStart + m_selLength;
    const void* hit = std::memchr(data + from, stop, static_cast<size_t>(m_end - from));
    const qsizetype p = hit == nullptr ? m_end : static_cast<const char*>(hit) - data;
    m_selLength = p - m_selStart;
}

// The selected text equals a rule's text, compared as the value would be.
bool PageScanner::SelectionIs(const QByteArray& utf8, const QByteArray& latin1) const {
    const QByteArrayView selected(m_page->Bytes().constData() + m_selStart, m_selLength);
    if (selected == QByteArrayView(utf8)) {
        return true;
    }
    return !latin1.isEmpty() && selected == QByteArrayView(latin1) && !selected.isValidUtf8();
}

QString PageScanner::SelectedValue() const {
    return PageValue(m_page->Bytes().constData() + m_selStart, m_selLength);
}

void PageScanner::Pump(const ScanHooks& hooks) const {
    if (hooks.pumpEvents) {
        hooks.pumpEvents();
    } else {
        core::CurrentUi().PumpEvents();
    }
}

bool PageScanner::SetUp(const PageText& page) {
    m_page = &page;
    m_begin = 0;
    m_end = page.Size();
    m_seenAt = -1;
    m_seen.clear();
    const qsizetype start = FindFrom(Needle(m_compiled->gStart), 0);
    const qsizetype stop = start < 0 ? -1 : FindFrom(Needle(m_compiled->gEnd), start);
    if (start < 0 || stop < 0) {
        m_end = 0;
        Select(0, 0);
        return false;
    }
    m_begin = start;
    m_end = stop;
    Select(m_begin, 0);
    return true;
}

void PageScanner::SetUpAncillary(const PageText& page) {
    m_page = &page;
    m_begin = 0;
    m_end = page.Size();
    m_seenAt = -1;
    m_seen.clear();
    const qsizetype start = std::max(FindFrom(Needle(m_compiled->gStart), 0), qsizetype(0));
    const qsizetype stop = FindFrom(Needle(m_compiled->gEnd), start);
    m_begin = start;
    m_end = stop < start ? start : stop;
    Select(m_begin, 0);
}

QByteArray PageScanner::ParsedText() const {
    if (m_page == nullptr) {
        return {};
    }
    return m_page->Bytes().mid(m_begin, m_end - m_begin);
}

PageScanner::RecordEnd PageScanner::ScanRecord(ScanState& state, ScanLists& lists,
                                               const ScanHooks& hooks) {
    // A record that the page ends inside is dropped unwritten: none of its
    // items may reach the first record of the next page.
    struct DropUnfinished {
        ScanLists& lists;
        bool complete = false;
        ~DropUnfinished() {
            if (!complete) {
                lists.ClearRecord();
            }
        }
    } drop{lists};
    if (m_page == nullptr) {
        return RecordEnd::PageEnd;
    }
    // A record that starts where an earlier one of this page started, with the
    // same previous value and fallback flag, would be that record again, and
    // so would all that follow, for ever: the page ends instead.
    if (m_selStart != m_seenAt) {
        m_seenAt = m_selStart;
        m_firstPrev = state.prevValue;
        m_firstFallback = state.fallbackActive;
        if (!m_seen.isEmpty()) {
            m_seen.clear();
        }
    } else {
        if (state.prevValue == m_firstPrev && state.fallbackActive == m_firstFallback) {
            return RecordEnd::PageEnd;
        }
        const QString seenKey =
            (state.fallbackActive ? QStringLiteral("1") : QStringLiteral("0")) + state.prevValue;
        if (m_seen.contains(seenKey)) {
            return RecordEnd::PageEnd;
        }
        m_seen.insert(seenKey);
    }

    const char* data = m_page->Bytes().constData();
    const bool details = hooks.view != nullptr && hooks.view->DetailsShown();

    for (size_t i = 0; i < m_compiled->items.size(); ++i) {
        Pump(hooks);
        const ItemRule& rule = m_compiled->protocol.items[i];
        const CompiledItem& item = m_compiled->items[i];

        // 1. The start marker.
        const Marker* marker = &item.start;
        if (state.prevValue == rule.alternateIf) {
            marker = &item.alternateStart;
        } else if (state.fallbackActive) {
            marker = &item.aStart;
        }

        // 2. Skipped: stands as "--", PrevValue stays.
        if (state.prevValue == rule.skip || state.prevValue == rule.skip2) {
            lists.items.append(kSkipped);
            Select(m_selStart, m_selLength + 1);
        } else {
            // 3-5. The marker, else its fallback.
            qsizetype pos = FindFrom(Needle(*marker), m_selStart);
            if (pos < 0) {
                if (!item.hasAStart || state.fallbackActive) {
                    return RecordEnd::PageEnd;
                }
                marker = &item.aStartAsIs;
                pos = FindFrom(Needle(*marker), m_selStart);
                if (pos < 0) {
                    return RecordEnd::PageEnd;
                }
                state.fallbackActive = true;
            }

            // 6. Just behind the marker as written.
            Select(pos + Written(*marker), 0);

            // 7. Over the rest of the tag the marker ended in.
            if (item.hasAlternateSpan) {
                SpanTo(item.spanSet);
            } else {
                SpanToByte('>');
                if (SelectionIs(item.includeTagUtf8, item.includeTagLatin1)) {
                    lists.includes.append(rule.includeTagField);
                    lists.includeValues.append(rule.includeTagValue);
                }
            }
            Select(m_selStart + m_selLength + 1, 1);

            // 8. Over tags and line ends to the value.
            for (;;) {
                if (item.hasAlternateEnd) {
                    SpanTo(item.endSet);
                    break;
                }
                if (m_selLength == 0 && item.accountType) {
                    break;
                }
                if (m_selLength > 0) {
                    const char c = data[m_selStart];
                    if (c != '<' && c != '\r' && c != '\n') {
                        SpanToByte('<');
                        break;
                    }
                }
                if (m_selLength == 0) {
                    // The end of the text, where stepping over a tag makes no
                    // progress: the end of the page.
                    return RecordEnd::PageEnd;
                }
                SpanToByte('>');
                if (SelectionIs(item.includeTagUtf8, item.includeTagLatin1)) {
                    lists.includes.append(rule.includeTagField);
                    lists.includeValues.append(rule.includeTagValue);
                }
                Select(m_selStart + m_selLength + 1, 1);
            }

            // 9-10. The value.
            const qsizetype rawLength = m_selLength;
            QString value = SelectedValue();
            if (value.contains(u'&')) {
                value = core::DecodeEntities(value);
            }
            if (rule.replaceIf == value) {
                value = rule.replaceString;
            }
            state.prevValue = value;

            // 11.
            lists.items.append(value);
            lists.fields.append(rule.field);
            if (details && i == 0) {
                hooks.view->CurrentItem(rule.field, value);
            }
            Select(m_selStart + rawLength, 0);
        }

        // 12. The item's ancillary protocol; "Not Null" fires on every item.
        if ((rule.ancillaryIf == state.prevValue || rule.ancillaryIf == kNotNull) &&
            hooks.runAncillary) {
            hooks.runAncillary(rule, lists);
        }
    }

    drop.complete = true;
    return RecordEnd::Complete;
}

bool PageScanner::ScanAncillaryRecord(ScanLists& lists, const ScanHooks& hooks) {
    if (m_page == nullptr) {
        return false;
    }
    QString prevValue;
    bool fallbackActive = false;
    const char* data = m_page->Bytes().constData();

    for (size_t i = 0; i < m_compiled->items.size(); ++i) {
        Pump(hooks);
        const ItemRule& rule = m_compiled->protocol.items[i];
        const CompiledItem& item = m_compiled->items[i];

        const Marker* marker = &item.start;
        if (prevValue == rule.alternateIf) {
            marker = &item.alternateStart;
        } else if (fallbackActive) {
            marker = &item.aStart;
        }

        if (prevValue == rule.skip) {
            lists.ancillaryItems.append(kSkipped);
            Select(m_selStart, m_selLength + 1);
            continue;
        }

        qsizetype pos = FindFrom(Needle(*marker), m_selStart);
        if (pos < 0) {
            if (!item.hasAStart || fallbackActive) {
                return false;
            }
            marker = &item.aStartAsIs;
            pos = FindFrom(Needle(*marker), m_selStart);
            if (pos < 0) {
                return false;
            }
            fallbackActive = true;
        }
        Select(pos + Written(*marker), 0);

        if (item.hasAlternateSpan) {
            SpanTo(item.spanSet);
        } else {
            SpanToByte('>');
        }
        Select(m_selStart + m_selLength + 1, 1);

        // Any selection that is not a tag or a line end is the value, also an
        // empty one: so this loop ends at the end of the text.
        for (;;) {
            if (item.hasAlternateEnd) {
                SpanTo(item.endSet);
                break;
            }
            if (m_selLength == 0) {
                SpanToByte('<');
                break;
            }
            const char c = data[m_selStart];
            if (c != '<' && c != '\r' && c != '\n') {
                SpanToByte('<');
                break;
            }
            SpanToByte('>');
            Select(m_selStart + m_selLength + 1, 1);
        }

        const qsizetype rawLength = m_selLength;
        QString value = SelectedValue();
        if (item.hasSkipRecord && value == rule.skipRecord) {
            const qsizetype jump = FindFrom(Needle(item.skipJump), m_selStart);
            if (jump >= 0) {
                Select(jump, 0);
            }
            return false;
        }
        if (value.contains(u'&')) {
            value = core::DecodeEntities(value);
        }
        if (rule.replaceIf == value) {
            value = rule.replaceString;
        }
        prevValue = value;
        lists.ancillaryItems.append(value);
        Select(m_selStart + rawLength, 0);
    }
    return true;
}

// ------------------------------------------------------------------ ancillary

AncillaryRunner::AncillaryRunner(UpdateView& view, AncillaryHooks hooks, QString keptPageFile)
    : m_view(view), m_hooks(std::move(hooks)), m_keptPageFile(std::move(keptPageFile)) {}

AncillaryRunner::~AncillaryRunner() {
    KeepUnreadPage();
}

void AncillaryRunner::KeepUnreadPage() {
    if (m_unreadDue) {
        m_unreadDue = false;
        core::ReplaceFile(m_keptPageFile, m_unreadPage);
    }
}

void AncillaryRunner::Run(const ItemRule& item, ScanLists& lists, const ScanHooks& scanHooks) {
    const QString keptStatus = m_view.StatusCaption();
    lists.ancillaryItems.clear();
    // Read, and its markers prepared, once per run: a thousand records call
    // on the same few. Each record scans a copy.
    auto known = m_scanners.find(item.ancillaryProtocol);
    if (known == m_scanners.end()) {
        known =
            m_scanners
                .emplace(item.ancillaryProtocol,
                         PageScanner(m_hooks.load ? m_hooks.load(item.ancillaryProtocol)
                                                  : LoadAncillaryProtocol(item.ancillaryProtocol)))
                .first;
    }
    const PageScanner& compiled = known->second;
    const ProtocolRecord& protocol = compiled.Protocol();
    try {
        RunSteps(compiled, lists, scanHooks);
    } catch (const QueryError& e) {
        if (m_hooks.failed) {
            m_hooks.failed(protocol, e.Message(), true);
        }
    } catch (const core::StoreError& e) {
        if (StoreCannotWrite(e.Code())) {
            // Not this ancillary's fault: the run stops.
            lists.ancillaryItems.clear();
            m_view.ShowStatus(keptStatus);
            throw;
        }
        if (m_hooks.failed) {
            m_hooks.failed(protocol, e.Message(), false);
        }
    } catch (const std::exception& e) {
        if (m_hooks.failed) {
            m_hooks.failed(protocol, QString::fromUtf8(e.what()), false);
        }
    }
    lists.ancillaryItems.clear();
    m_view.ShowStatus(keptStatus);
}

void AncillaryRunner::RunSteps(const PageScanner& compiled, ScanLists& lists,
                               const ScanHooks& scanHooks) {
    const ProtocolRecord& protocol = compiled.Protocol();
    // A count that cannot be read would write an empty record for every
    // record that calls on it.
    const QString fault = protocol.CountFault();
    if (!fault.isEmpty()) {
        throw QueryError(fault);
    }
    m_view.ShowStatus(QStringLiteral("Fetching ") + protocol.runCaption);
    m_view.ConnectStatus(protocol.runCaption + QStringLiteral(" retrieved successfully."));

    const QString address = m_hooks.address ? m_hooks.address(protocol, lists) : protocol.url;
    QByteArray bytes;
    const FetchResult fetched = m_hooks.fetch ? m_hooks.fetch(address, bytes) : FetchResult::Failed;
    if (fetched == FetchResult::Cancelled || core::CurrentUi().CancelRequested()) {
        if (m_hooks.cancelled) {
            m_hooks.cancelled();
        } else {
            core::CurrentUi().Message(CancelMessageText(), CancelMessageTitle());
        }
        return;
    }
    if (fetched != FetchResult::Ok) {
        return;
    }
    m_page.Load(bytes);

    if (protocol.deleteBeforeWrite == kTrue && m_hooks.deleteRows) {
        m_hooks.deleteRows(protocol, lists);
    }

    PageScanner scanner = compiled;
    scanner.SetUpAncillary(m_page);
    ScanHooks hooks;
    hooks.pumpEvents = scanHooks.pumpEvents;
    if (!scanner.ScanAncillaryRecord(lists, hooks)) {
        if (!m_keptPageFile.isEmpty()) {
            m_unreadPage = bytes;
            m_unreadDue = true;
        }
        return;
    }
    if (m_hooks.write) {
        m_hooks.write(protocol, lists);
    }
}

}  // namespace lw::update
