// SPDX-License-Identifier: GPL-3.0-or-later
// One update, as the update window drives it: the run list from RunProt.dat,
// each protocol's pages fetched, scanned and written, the progress, the one
// password refresh, paging, cancel, and the end-of-run steps (site clock,
// counters, repair, LastUpdate, redraw) that run whatever happened before.
// Everything shown goes through an UpdateView and the session's Ui;
// everything that reaches the network or another subsystem goes through
// hooks, so that the run can be tested without either.
#pragma once

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "core/store.h"
#include "update/page_prefetcher.h"
#include "update/protocol.h"
#include "update/scanner.h"
#include "update/site_session.h"
#include "update/update_connections.h"

namespace lw::update {

class RecordWriter;
class RuleStore;

struct UpdateHooks {
    // CheckRuleUpdate: false ends the update before any page unless the
    // rules were checked earlier in this run.
    std::function<bool()> checkRules;
    // FetchPage through the user's proxy.
    PageFetcher fetch;
    // The run's connections, opened on the run's thread when the run
    // starts: every page and post of the run then goes over them, and pages
    // are fetched ahead of the moment they are needed. Null: each page is
    // fetched through fetch when the run needs it.
    std::function<AheadSetup()> fetchAhead;
    // How many connections the run keeps; 0: ConnectionsSetting().
    int connections = 0;
    // BuildUrl.
    std::function<QString(const QString& url, int siteNumber, const QStringList& fields,
                          const QStringList& values, qint64 pageOffset)>
        buildUrl;
    // RefreshEncodedPassword.
    std::function<bool()> refreshPassword;
    // PrepareUsageReport, before the run.
    std::function<void()> prepareUsageReport;
    // The post-update repair.
    std::function<void()> repairNulls;
    // Redraws the main window's lists; null: nothing to redraw.
    std::function<void()> redraw;
    // The local clock, for LastUpdate.
    std::function<QDateTime()> now;
};

// The hooks of a real update over db: the rule check, the fetch, the address
// and the password refresh of the site session, the usage report and the
// repair. db must outlive the hooks, which serve one run: the site rows the
// addresses are built from are read once.
UpdateHooks DefaultUpdateHooks(core::Database& db);

class UpdateRun {
public:
    enum class Result {
        Complete,     // every protocol ran (some may have failed and been passed over)
        RulesFailed,  // the version check failed: no page was fetched
        Aborted,      // a page could not be fetched: the rest of the list did not run
        Cancelled,    // the user cancelled: what was written stays
        StoreFailed,  // the database could not be written: the run stopped there
        Busy,         // another update holds the lock of the program root: nothing ran
    };

    // Protocols are read from rules (store 0) when each starts.
    UpdateRun(core::Database& db, UpdateView& view, UpdateHooks hooks);
    UpdateRun(core::Database& db, UpdateView& view, UpdateHooks hooks, const RuleStore& rules);

    // The window's activation: reads RunProt.dat, runs the update, then the
    // end-of-run steps.
    Result Activate();
    // The same over a given list.
    Result Activate(const QStringList& runList);

    // RunUpdate over the list; the progress step must be set (Activate does).
    Result RunUpdate(const QStringList& runList);

    // Int(100 / (2 x count)); 0 for an empty list.
    static int ProgressStep(qsizetype protocolCount);
    int Progress() const { return m_bar; }
    // The run-list lines of the protocols that failed with a message in the
    // last run (refused, or "could not be processed"), in order.
    const QStringList& FailedProtocols() const { return m_failed; }
    // Why the last run stopped with StoreFailed, as the user was told.
    const QString& StoreFailure() const { return m_storeFailure; }

    // Where a page that the rules could not read is kept, in ScratchDir.
    static QString UpdatePagePath();
    static QString AncillaryPagePath();

private:
    enum class PageOutcome { Done, NextPage, Retry, Failed, Aborted, Cancelled, StoreFailed };

    // The list pages of a protocol that were asked for ahead of the run, and
    // where the scan of them stands.
    struct AheadChain {
        const ProtocolRecord* protocol = nullptr;  // null: none asked for
        bool later = false;                        // the protocol after the one under way
        // The scan as it will stand after the last page scanned ahead.
        ScanState state;
        ScanLists lists;
        // The run's scanner of the protocol, copied for each page that comes.
        std::optional<PageScanner> scanner;
        // Scanned ahead, with their text; their set-up by the run is to come.
        QHash<QString, PageText> scanned;
        // Asked for early and not yet scanned, in the order of the list, with
        // their offsets; those that came before the page ahead of them wait in
        // cameEarly.
        std::deque<std::pair<QString, qint64>> asked;
        QHash<QString, std::pair<QByteArray, FetchResult>> cameEarly;
        QString lastUrl;  // the last page asked for or scanned ahead
        qint64 nextOffset = 0;
        bool plainList = false;  // its records bring no pages of their own
        bool nextDue = false;    // the list goes on: pages after it are to be asked for
        int pages = 0;           // asked for ahead in this protocol
    };

    Result Activate(const std::optional<QStringList>& given);
    Result RunProtocols(const QStringList& runList);
    PageOutcome RunPage(const QString& line, const ProtocolRecord& protocol, PageScanner& scanner,
                        RecordWriter& writer, core::BatchedCommits& commits, const ScanHooks& scan,
                        bool firstPage, bool& retried);
    // A page: over the run's connections when it has them, else through the
    // fetch hook.
    FetchResult Fetch(const QString& url, QByteArray& page);
    void OpenConnections();
    // Forgets what was asked for ahead, also for the protocol after it: a
    // protocol starts afresh.
    void ResetAhead(const ProtocolRecord* protocol);
    // The protocol of line, which starts: the one read ahead when it is that
    // one (its pages asked for become the run's own), else loaded afresh.
    std::unique_ptr<const ProtocolRecord> StartProtocol(const QStringList& runList, qsizetype index,
                                                        bool again);
    // Asks for the first pages of the protocol after the one under way, so
    // that the connections fetch them while this one's records are written.
    void ReadFollowing(const ProtocolRecord& current, const QStringList& runList, qsizetype index);
    // The pages that follow a list page the run has set up at address.
    void AskAhead(const ProtocolRecord& protocol, const PageScanner& scanner,
                  const QString& address);
    // Asks for the item pages of a list page set up in scanner, from a scan
    // that only collects addresses, and marks the next list page due when
    // the page holds records.
    void ScanAhead(AheadChain& chain, PageScanner scanner, const QString& address, qint64 offset);
    void AskNextList(AheadChain& chain);
    // The list ends, or cannot be read ahead: nothing more is asked for.
    static void EndChain(AheadChain& chain);
    // A list page asked for early came to chain; false when chain did not ask.
    bool ChainArrived(AheadChain& chain, const QString& url, const QByteArray& bytes,
                      FetchResult result);
    void AheadArrived(const QString& url, const QByteArray& bytes, FetchResult result);
    const ProtocolRecord& AncillaryProtocol(const QString& section);
    QString AncillaryAddress(const ProtocolRecord& protocol, const ScanLists& lists,
                             qint64 pageOffset);
    void AddProgress();
    void TellCancel();
    void ProtocolFailed(const QString& line, const ProtocolRecord& protocol);
    // Tells that the database cannot be written; the run then stops.
    void StoreFailed(int code);
    // False (and told) when the database is open for reading only.
    bool StoreWritable();
    void FinishUpdate(const QString& keptSiteTime);
    QString SiteTime();
    void Pump();
    // Brings update.txt up to the last list page: written once it is needed
    // (a message that points to it, the end of the run), not for every page.
    void KeepUpdatePage();

    core::Database& m_db;
    UpdateView& m_view;
    UpdateHooks m_hooks;
    const RuleStore& m_rules;

    ScanState m_state;
    ScanLists m_lists;
    PageText m_page;  // txtUnparsed
    // The last list page as it came, for update.txt; null: none came.
    QByteArray m_listPage;
    bool m_listPageDue = false;  // update.txt does not hold m_listPage yet
    QString m_lastUrl;
    qint64 m_pageOffset = 0;
    int m_step = 0;
    int m_bar = 0;
    bool m_cancelTold = false;
    QStringList m_failed;
    QString m_storeFailure;
    // The pages of the protocol under way, by digest: a page that comes
    // again ends the paging as a failure.
    std::set<std::array<size_t, 3>> m_pagesSeen;
    std::unique_ptr<PagePrefetcher> m_ahead;  // the run's connections, during a run
    AheadChain m_chain;
    // The next protocol of the run list, read ahead while the one under way
    // is written: its record, its place in the list and its pages.
    std::unique_ptr<const ProtocolRecord> m_followingProtocol;
    qsizetype m_followingIndex = -1;
    AheadChain m_following;
    // The rules cannot change once the run is under way: each ancillary
    // protocol is read from them once.
    QHash<QString, ProtocolRecord> m_ancillaryProtocols;
};

}  // namespace lw::update
