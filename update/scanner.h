// SPDX-License-Identifier: GPL-3.0-or-later
// The page scanner: turns a fetched page into records with no HTML parser,
// walking a cursor through the page's bytes guided only by the current
// protocol's markers. The order of its tests is what the rule files rely on,
// so it is kept step by step; it must end at the end of the text on every
// input, and it never reads or writes the database itself (ancillary pages
// are fetched and written through hooks).
#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "update/protocol.h"
#include "update/site_session.h"

namespace lw::update {

// What the update window shows. The scanner and the run speak to the window
// only through this.
class UpdateView {
public:
    virtual ~UpdateView() = default;

    // lblStatus; the caption is kept so that an ancillary run can put it back.
    void ShowStatus(const QString& text) {
        m_status = text;
        Status(text);
    }
    const QString& StatusCaption() const { return m_status; }

    virtual void Status(const QString& text) = 0;         // lblStatus
    virtual void ConnectStatus(const QString& text) = 0;  // lblConnectStatus
    virtual void Progress(int percent) = 0;               // Bar1, 0 to 100
    virtual void LastUrl(const QString& url) = 0;         // lblLastUrl
    // lblItem and lblValue of the tall form.
    virtual void CurrentItem(const QString& field, const QString& value) = 0;
    virtual bool DetailsShown() = 0;

private:
    QString m_status;
};

// The view of a run with no window of its own: status and progress go to the
// session's Ui, the rest is not shown.
class UiUpdateView : public UpdateView {
public:
    void Status(const QString& text) override;
    void ConnectStatus(const QString& text) override;
    void Progress(int percent) override;
    void LastUrl(const QString& url) override;
    void CurrentItem(const QString& field, const QString& value) override;
    bool DetailsShown() override;
};

// The scanner values that outlive a page: they start afresh with each update
// and carry over from record to record, page to page and protocol to protocol.
struct ScanState {
    QString prevValue;
    bool fallbackActive = false;
};

// The four lists of a record in progress, and the ancillary record's items.
struct ScanLists {
    QStringList items;     // lstItems: a value, or "--" for a skipped item
    QStringList fields;    // lstFields: the field of each item really read
    QStringList includes;  // lstIncludes and lstIncludeValues, in pairs
    QStringList includeValues;
    QStringList ancillaryItems;  // lstAncillaryItems

    // The four lists of the main record.
    void ClearRecord();
};

// A page as it arrived, with a lower-case copy made once, so that every
// marker search is a plain byte search.
class PageText {
public:
    PageText() = default;
    explicit PageText(QByteArray bytes) { Load(std::move(bytes)); }
    void Load(QByteArray bytes);
    void Clear() { Load(QByteArray()); }
    const QByteArray& Bytes() const { return m_bytes; }
    const QByteArray& Lower() const { return m_lower; }
    qsizetype Size() const { return m_bytes.size(); }
    // True when the page's bytes are valid UTF-8 (worked out on first use).
    bool IsUtf8() const;

private:
    QByteArray m_bytes;
    QByteArray m_lower;
    mutable int m_utf8 = -1;
};

// A value as it leaves the scanner: UTF-8, or Latin-1 where the bytes are
// not valid UTF-8.
QString PageValue(const char* data, qsizetype size);

// Where the scanner's callers plug in.
struct ScanHooks {
    UpdateView* view = nullptr;        // details of item 1; none when null
    std::function<void()> pumpEvents;  // once per item; null: the session's Ui
    // RunAncillary for an item whose AncillaryIf fired; null: not run.
    std::function<void(const ItemRule& item, ScanLists& lists)> runAncillary;
};

// One protocol's walk over pages. Markers are prepared once per protocol;
// the page is set up with SetUp and then yields records until the item loop
// leaves.
class PageScanner {
public:
    explicit PageScanner(ProtocolRecord protocol);

    const ProtocolRecord& Protocol() const { return m_compiled->protocol; }

    // The page set-up of a run protocol: the record part runs from GStart
    // (included) to Gend (excluded), and the cursor goes to its top. False
    // when either marker is missing: the page failed. The page must outlive
    // the scan.
    bool SetUp(const PageText& page);
    // The ancillary set-up: a miss is not tested. A missing GStart reads from
    // the top of the page; a missing Gend, or one found before GStart, leaves
    // an empty record part.
    void SetUpAncillary(const PageText& page);

    enum class RecordEnd {
        Complete,  // all items scanned: the record goes to the writer
        PageEnd,   // the item loop left; the unfinished record is dropped
    };
    // Scans one record of a run protocol into lists (items, fields, includes).
    RecordEnd ScanRecord(ScanState& state, ScanLists& lists, const ScanHooks& hooks);
    // Scans the one record of an ancillary protocol into lists.ancillaryItems,
    // with a previous value and fallback flag of its own. False when the record
    // is not to be written (a start marker missing, or a SkipRecord hit).
    bool ScanAncillaryRecord(ScanLists& lists, const ScanHooks& hooks);

    // The cursor: position of the selection in the page's bytes.
    qsizetype Cursor() const { return m_selStart; }
    // The record part as text (txtParsed).
    QByteArray ParsedText() const;

    // FindFrom: the first case-blind match of a lower-cased needle at or after
    // from within the record part, or -1. An empty needle matches at from.
    qsizetype FindFrom(const QByteArray& lowerNeedle, qsizetype from) const;

private:
    // A marker in both encodings a page may come in, lower-cased, with the
    // length of the marker as written in the rule (for "[HR]", four).
    struct Marker {
        QByteArray utf8;
        QByteArray latin1;
        qsizetype utf8Written = 0;
        qsizetype latin1Written = 0;
    };
    using ByteSet = std::array<bool, 256>;
    struct CompiledItem {
        Marker start;           // [HR] as CR
        Marker aStart;          // [HR] as CR, for the marker choice of step 1
        Marker aStartAsIs;      // [HR] kept, for the fallback search
        Marker alternateStart;  // [HR] as CR
        Marker skipJump;
        ByteSet spanSet{};  // AlternateSpan
        ByteSet endSet{};   // AlternateEnd, [HR] as CR LF
        bool hasAlternateSpan = false;
        bool hasAlternateEnd = false;
        bool hasAStart = false;
        bool hasSkipRecord = false;
        bool accountType = false;
        QByteArray includeTagUtf8;
        QByteArray includeTagLatin1;  // empty when the tag is not Latin-1
    };

    static Marker MakeMarker(const QString& marker, bool expandHr);
    const QByteArray& Needle(const Marker& marker) const;
    qsizetype Written(const Marker& marker) const;
    void Select(qsizetype start, qsizetype length);
    void SpanTo(const ByteSet& stops);
    void SpanToByte(char stop);
    bool SelectionIs(const QByteArray& utf8, const QByteArray& latin1) const;
    QString SelectedValue() const;
    void Pump(const ScanHooks& hooks) const;

    // The protocol and its markers, made once and shared by every copy of
    // the scanner: a copy for each page costs no more than a pointer.
    struct Compiled {
        ProtocolRecord protocol;
        std::vector<CompiledItem> items;
        Marker gStart;
        Marker gEnd;
    };
    std::shared_ptr<const Compiled> m_compiled;

    const PageText* m_page = nullptr;
    qsizetype m_begin = 0;  // the record part of the page: [m_begin, m_end)
    qsizetype m_end = 0;
    qsizetype m_selStart = 0;
    qsizetype m_selLength = 0;
    // The states in which records started at the cursor's present position:
    // the first, and any further ones.
    qsizetype m_seenAt = -1;
    QString m_firstPrev;
    bool m_firstFallback = false;
    QSet<QString> m_seen;
};

// A store error of the database itself (read-only, full, failing disk,
// damaged): not the fault of one protocol or record, so it stops the run.
bool StoreCannotWrite(int code);

// The text of the cancel message, and its title.
QString CancelMessageText();
QString CancelMessageTitle();

// Where RunAncillary gets its page and puts its record.
struct AncillaryHooks {
    // The page address: BuildUrl with the main record's values so far.
    std::function<QString(const ProtocolRecord& ancillary, const ScanLists& lists)> address;
    PageFetcher fetch;
    // DeleteBeforeWrite: the rows that DeleteQuery finds are deleted.
    std::function<void(const ProtocolRecord& ancillary, const ScanLists& lists)> deleteRows;
    // Writes the record (lists.ancillaryItems filled).
    std::function<void(const ProtocolRecord& ancillary, const ScanLists& lists)> write;
    // Reads the protocol's keys; null: LoadAncillaryProtocol over the process's rules.
    std::function<ProtocolRecord(const QString& section)> load;
    // Told of a failure that ended the ancillary run (the run goes on);
    // protocolFault when the protocol's own query was at fault (QueryError).
    std::function<void(const ProtocolRecord& ancillary, const QString& what, bool protocolFault)>
        failed;
    // Tells the cancel; null: the cancel message through the session's Ui.
    std::function<void()> cancelled;
};

// RunAncillary: fetches the page of an item's ancillary protocol, scans its
// one record and writes it. Any failure ends the ancillary run quietly and the
// main scan goes on, but for a database that cannot be written
// (StoreCannotWrite), whose StoreError goes on to the run. The last page whose
// record could not be read is kept in the file given (empty: none), for
// whoever mends the rules: written when the runner goes, not for each such
// page, as only the last one stays.
class AncillaryRunner {
public:
    AncillaryRunner(UpdateView& view, AncillaryHooks hooks, QString keptPageFile = {});
    ~AncillaryRunner();
    AncillaryRunner(const AncillaryRunner&) = delete;
    AncillaryRunner& operator=(const AncillaryRunner&) = delete;
    void Run(const ItemRule& item, ScanLists& lists, const ScanHooks& scanHooks);

private:
    // Writes the last unread page to the kept file, if it is not there yet.
    void KeepUnreadPage();
    void RunSteps(const PageScanner& compiled, ScanLists& lists, const ScanHooks& scanHooks);

    UpdateView& m_view;
    AncillaryHooks m_hooks;
    QString m_keptPageFile;
    QByteArray m_unreadPage;   // the last page whose record could not be read
    bool m_unreadDue = false;  // the kept file does not hold m_unreadPage yet
    PageText m_page;           // txtAncillary
    // The ancillary protocols read so far, by the name items call them by.
    std::map<QString, PageScanner> m_scanners;
};

}  // namespace lw::update
