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
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

#include "core/store.h"
#include "update/page_prefetcher.h"
#include "update/protocol.h"
#include "update/scanner.h"
#include "update/site_session.h"

namespace lw::update {

class RecordWriter;
class RuleStore;

struct UpdateHooks {
    // CheckRuleUpdate: false ends the update before any page unless the
    // rules were checked earlier in this run.
    std::function<bool()> checkRules;
    // FetchPage through the user's proxy.
    PageFetcher fetch;
    // The fetch of the thread that fetches item pages ahead, made on the
    // run's thread once a list page has come. Null: each page is fetched
    // when the run needs it.
    std::function<AheadFetch()> fetchAhead;
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
// repair. db must outlive the hooks.
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

    Result Activate(const std::optional<QStringList>& given);
    Result RunProtocols(const QStringList& runList);
    // askAhead: told of each page set up, before its records are scanned.
    using AskAhead = std::function<void(const ProtocolRecord&, const PageScanner&)>;
    PageOutcome RunPage(const QString& line, const ProtocolRecord& protocol, PageScanner& scanner,
                        RecordWriter& writer, const ScanHooks& scan, const AskAhead& askAhead,
                        bool firstPage, bool& retried);
    // A page: the one fetched ahead when it was asked for, else through the
    // fetch hook.
    FetchResult Fetch(const QString& url, QByteArray& page);
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

    core::Database& m_db;
    UpdateView& m_view;
    UpdateHooks m_hooks;
    const RuleStore& m_rules;

    ScanState m_state;
    ScanLists m_lists;
    PageText m_page;  // txtUnparsed
    QString m_lastUrl;
    qint64 m_pageOffset = 0;
    int m_step = 0;
    int m_bar = 0;
    bool m_cancelTold = false;
    QStringList m_failed;
    QString m_storeFailure;
    // The pages of the protocol under way, by digest: a page that comes
    // again ends the paging as a failure.
    QSet<QByteArray> m_pagesSeen;
    std::unique_ptr<PagePrefetcher> m_ahead;  // during a run
};

}  // namespace lw::update
