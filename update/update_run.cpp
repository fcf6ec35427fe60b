// SPDX-License-Identifier: GPL-3.0-or-later
// The update run. Each page's records are written inside one transaction
// that is committed when the page ends, whatever ends it: a cancel or a
// failure keeps what was written before it. A database that cannot be
// written stops the whole run with a message naming the file. Guards stand
// where the described run would go on for ever: a paging protocol whose next
// page has the same address as the last one (no [SKIP] in its Url, or a step
// of 0) ends its paging; a site that answers a new address with a page of
// this protocol it sent before fails the protocol, as does paging past
// kMostPages; a record that would repeat itself ends its page (the scanner's
// own guard); a protocol whose Items cannot be read never asks for a page.
// The cancel message is told once per update, also when an ancillary fetch
// saw the cancel first.
//
// Pages are asked for as early as the run can know their addresses: once a
// list page is set up, its item pages (from a scan that only collects
// addresses) and the next list page, which is fetched before those item
// pages; once that next page has come, its own item pages and the page after
// it. The protocol after the one under way is read ahead the same way from
// the moment that one starts, so that its pages come while this one's
// records are written; they are kept apart until the run gets to it, and
// dropped when the run starts a protocol afresh (a password refresh) or goes
// another way. Records are still scanned and written one page after the
// other, in order, on the run's thread: what comes ahead only waits to be
// taken.
#include "update/update_run.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <exception>
#include <memory>
#include <optional>

#include "core/net.h"
#include "core/session.h"
#include "core/text.h"
#include "core/ui_port.h"
#include "update/record_writer.h"
#include "update/repair.h"
#include "update/rules.h"
#include "update/run_lists.h"
#include "update/usage_report.h"

namespace lw::update {

using core::CurrentSession;
using core::CurrentUi;

namespace {

const QString kCurrentBids = QStringLiteral("Current Bids eBay");
// Pages fetched or on their way and not yet taken, at most: enough to keep
// every connection busy with the next protocol's item pages while a long
// plain list is written (a few hundred pages, well under a megabyte), few
// enough to waste little on a cancel.
constexpr int kPagesAhead = 256;
// List pages asked for ahead of the one the run is on, at most. Each brings
// its item pages; these keep the connections busy at every page boundary
// and through the list before the protocol starts.
constexpr int kListsAhead = 6;
// List pages of a plain list (one whose records bring no pages of their own)
// asked for before the last one scanned has been read: the site always has
// the next one in hand, at the price of one page asked for past the end.
constexpr size_t kPlainListLead = 2;
// Bytes of pages fetched and not yet taken, at most, whatever size a site's
// pages have.
constexpr qint64 kBytesAhead = qint64{64} * 1024 * 1024;
// Pages of one protocol, at most: far more than any seller's lists hold at
// any page size, and an end for a site that makes up a new page for every
// offset.
constexpr int kMostPages = 10000;

// A run's pages are committed this far apart at most: a site that answers at
// once gives pages a millisecond or two apart, each of which would otherwise
// rewrite the same index pages of the file.
constexpr std::chrono::milliseconds kCommitEvery{50};

}  // namespace

UpdateHooks DefaultUpdateHooks(core::Database& db) {
    UpdateHooks hooks;
    hooks.checkRules = [&db] { return CheckRuleUpdate(Rules(), db, RuleFetcherForUser(db)); };
    // The user's proxy is read once, at the first page of the run, as the
    // window sets its HTTP client up once when it opens.
    auto options = std::make_shared<std::optional<core::NetOptions>>();
    const auto userOptions = [&db, options]() -> const core::NetOptions& {
        if (!*options) {
            *options = NetOptionsForUser(db);
        }
        return **options;
    };
    hooks.fetch = [userOptions](const QString& url, QByteArray& page) {
        return FetchPage(userOptions(), url, page);
    };
    hooks.fetchAhead = [userOptions] { return AheadSetup{userOptions(), PoolConnections()}; };
    // The hooks serve one run: its addresses come from the site rows and the
    // encoded password as they stand when it starts, read once.
    auto addresses = std::make_shared<RunAddresses>(db);
    hooks.buildUrl = [addresses](const QString& url, int siteNumber, const QStringList& fields,
                                 const QStringList& values, qint64 pageOffset) {
        return addresses->Build(url, siteNumber, fields, values, pageOffset);
    };
    hooks.refreshPassword = [&db, addresses] {
        addresses->Forget();
        return RefreshEncodedPassword(db);
    };
    hooks.prepareUsageReport = [&db] { PrepareUsageReport(db); };
    hooks.repairNulls = [&db] { RepairNulls(db); };
    hooks.now = [] { return QDateTime::currentDateTime(); };
    return hooks;
}

UpdateRun::UpdateRun(core::Database& db, UpdateView& view, UpdateHooks hooks)
    : UpdateRun(db, view, std::move(hooks), Rules()) {}

UpdateRun::UpdateRun(core::Database& db, UpdateView& view, UpdateHooks hooks,
                     const RuleStore& rules)
    : m_db(db), m_view(view), m_hooks(std::move(hooks)), m_rules(rules) {}

int UpdateRun::ProgressStep(qsizetype protocolCount) {
    return protocolCount > 0 ? static_cast<int>(100 / (2 * protocolCount)) : 0;
}

QString UpdateRun::UpdatePagePath() {
    return CurrentSession().ScratchDir + QStringLiteral("update.txt");
}

QString UpdateRun::AncillaryPagePath() {
    return CurrentSession().ScratchDir + QStringLiteral("ancillary.txt");
}

FetchResult UpdateRun::Fetch(const QString& url, QByteArray& page) {
    if (m_ahead) {
        std::optional<FetchResult> taken = m_ahead->Take(url, page);
        if (!taken) {
            m_ahead->AskFirst(url);
            taken = m_ahead->Take(url, page);
        }
        if (taken) {
            if (*taken != FetchResult::Cancelled) {
                TellPageTaken(page.size());
            }
            return *taken;
        }
    }
    return m_hooks.fetch ? m_hooks.fetch(url, page) : FetchResult::Failed;
}

void UpdateRun::OpenConnections() {
    if (!m_hooks.fetchAhead) {
        return;
    }
    const int connections =
        m_hooks.connections > 0
            ? std::clamp(m_hooks.connections, kFewestConnections, kMostConnections)
            : ConnectionsSetting();
    try {
        // The run waits for its pages as the front waits: its events go on
        // and its Cancel is heard, with no processor time spent meanwhile.
        AheadSetup setup = m_hooks.fetchAhead();
        m_ahead =
            std::make_unique<PagePrefetcher>(std::move(setup.options), setup.connect, kPagesAhead,
                                             connections, kBytesAhead, [](core::Wakeup& wakeup) {
                                                 core::Ui& ui = CurrentUi();
                                                 ui.WaitFor(wakeup);
                                                 return !ui.CancelRequested();
                                             });
        m_ahead->SetArrival([this](const QString& url, const QByteArray& bytes,
                                   FetchResult result) { AheadArrived(url, bytes, result); });
    } catch (const std::exception&) {
        m_ahead.reset();  // each page through the fetch hook, when it is needed
    }
}

void UpdateRun::ResetAhead(const ProtocolRecord* protocol) {
    if (m_ahead) {
        m_ahead->Drop();
    }
    m_chain = AheadChain();
    m_chain.protocol = protocol;
    m_following = AheadChain();
    m_followingProtocol.reset();
    m_followingIndex = -1;
}

std::unique_ptr<const ProtocolRecord> UpdateRun::StartProtocol(const QStringList& runList,
                                                               qsizetype index, bool again) {
    if (!again && m_followingProtocol && m_followingIndex == index) {
        // Read ahead while the last one was written: what is left of the
        // last one's pages goes, the rest carries on.
        std::unique_ptr<const ProtocolRecord> protocol = std::move(m_followingProtocol);
        m_followingIndex = -1;
        m_chain = std::move(m_following);
        m_chain.later = false;
        m_following = AheadChain();
        if (m_ahead) {
            m_ahead->DropPresent();
            m_ahead->Promote();
        }
        return protocol;
    }
    auto protocol =
        std::make_unique<const ProtocolRecord>(LoadRunProtocol(m_rules, runList.at(index)));
    ResetAhead(protocol.get());
    return protocol;
}

void UpdateRun::ReadFollowing(const ProtocolRecord& current, const QStringList& runList,
                              qsizetype index) {
    if (!m_ahead || !m_hooks.buildUrl || index >= runList.size()) {
        return;
    }
    try {
        auto protocol =
            std::make_unique<const ProtocolRecord>(LoadRunProtocol(m_rules, runList.at(index)));
        if (!protocol->CountFault().isEmpty()) {
            return;  // told when its turn comes
        }
        // Its first page as the run will ask for it; should the run ask for
        // another, the pages asked for here are dropped then. The run reads
        // no page again that has the address of the single page before it.
        const QString first =
            m_hooks.buildUrl(protocol->url, protocol->SiteNumberValue(), {}, {}, 0);
        if (!current.Iterates() && first == m_hooks.buildUrl(current.url, current.SiteNumberValue(),
                                                             {}, {}, m_pageOffset)) {
            return;
        }
        AheadChain chain;
        chain.protocol = protocol.get();
        chain.later = true;
        chain.scanner.emplace(*protocol);
        chain.state = m_state;
        chain.asked.emplace_back(first, 0);
        chain.pages = 1;
        m_following = std::move(chain);
        m_followingProtocol = std::move(protocol);
        m_followingIndex = index;
        m_ahead->AskEarly(first, true);
    } catch (const std::exception&) {
        // Its pages are fetched in its turn.
    }
}

const ProtocolRecord& UpdateRun::AncillaryProtocol(const QString& section) {
    auto it = m_ancillaryProtocols.constFind(section);
    if (it == m_ancillaryProtocols.constEnd()) {
        it = m_ancillaryProtocols.insert(section, LoadAncillaryProtocol(m_rules, section));
    }
    return *it;
}

QString UpdateRun::AncillaryAddress(const ProtocolRecord& protocol, const ScanLists& lists,
                                    qint64 pageOffset) {
    return m_hooks.buildUrl ? m_hooks.buildUrl(protocol.url, protocol.SiteNumberValue(),
                                               lists.fields, lists.items, pageOffset)
                            : protocol.url;
}

void UpdateRun::AskAhead(const ProtocolRecord& protocol, const PageScanner& scanner,
                         const QString& address) {
    if (!m_ahead || m_chain.protocol != &protocol) {
        return;
    }
    if (m_chain.scanned.remove(address)) {
        // Its pages were asked for when it came; there is room for one more.
        AskNextList(m_chain);
        return;
    }
    // A page not scanned ahead (the first of the protocol, or the run went
    // another way): what was asked for after it is of no use. What was asked
    // for the next protocol still is.
    m_ahead->DropPresent();
    m_chain = AheadChain();
    m_chain.protocol = &protocol;
    m_chain.scanner = scanner;
    m_chain.state = m_state;
    m_chain.lists = m_lists;
    ScanAhead(m_chain, scanner, address, m_pageOffset);
}

void UpdateRun::ScanAhead(AheadChain& chain, PageScanner scanner, const QString& address,
                          qint64 offset) {
    const ProtocolRecord& protocol = *chain.protocol;
    const std::vector<ItemRule>& items = protocol.items;
    const bool ancillaryPages = std::any_of(
        items.begin(), items.end(), [](const ItemRule& item) { return item.MayRunAncillary(); });
    if (!ancillaryPages && !protocol.Iterates()) {
        return;
    }
    QStringList urls;
    int records = 0;
    try {
        ScanHooks collect;
        collect.pumpEvents = [] {};
        collect.runAncillary = [&](const ItemRule& item, ScanLists& record) {
            const ProtocolRecord& ancillary = AncillaryProtocol(item.ancillaryProtocol);
            urls << AncillaryAddress(ancillary, record, offset);
        };
        // The same records, fields and values as the run's own scan, so the
        // same addresses in the same order. A list without pages of its own
        // needs one record to say that the next page is worth asking for; the
        // run reads the rest itself.
        while ((ancillaryPages || records == 0) &&
               scanner.ScanRecord(chain.state, chain.lists, collect) ==
                   PageScanner::RecordEnd::Complete) {
            chain.lists.ClearRecord();
            ++records;
        }
    } catch (const std::exception&) {
        EndChain(chain);
        return;  // each page is fetched when it is needed
    }
    m_ahead->Ask(urls, chain.later);
    if (!protocol.Iterates() || records == 0 || !m_hooks.buildUrl) {
        EndChain(chain);
        return;
    }
    chain.plainList = !ancillaryPages;
    if (!chain.nextDue) {
        // The first page scanned ahead: the chain starts after it.
        chain.nextDue = true;
        chain.lastUrl = address;
        chain.nextOffset = offset + protocol.IterateSkipValue();
    }
    AskNextList(chain);
}

void UpdateRun::EndChain(AheadChain& chain) {
    chain.nextDue = false;
    chain.asked.clear();
    chain.cameEarly.clear();
}

void UpdateRun::AskNextList(AheadChain& chain) {
    const size_t lead = chain.plainList ? kPlainListLead : 1;
    while (chain.nextDue && chain.asked.size() < lead &&
           chain.scanned.size() + chain.asked.size() < kListsAhead + lead - 1 &&
           chain.pages < kMostPages) {
        const ProtocolRecord& protocol = *chain.protocol;
        const qint64 offset = chain.nextOffset;
        QString next;
        try {
            next = m_hooks.buildUrl(protocol.url, protocol.SiteNumberValue(), {}, {}, offset);
        } catch (const std::exception&) {
            chain.nextDue = false;
            return;
        }
        if (next == chain.lastUrl) {
            chain.nextDue = false;
            return;  // the run ends its paging here
        }
        chain.asked.emplace_back(next, offset);
        chain.lastUrl = next;
        chain.nextOffset = offset + protocol.IterateSkipValue();
        ++chain.pages;
        m_ahead->AskEarly(next, chain.later);
    }
}

void UpdateRun::AheadArrived(const QString& url, const QByteArray& bytes, FetchResult result) {
    if (!ChainArrived(m_chain, url, bytes, result)) {
        ChainArrived(m_following, url, bytes, result);
    }
}

bool UpdateRun::ChainArrived(AheadChain& chain, const QString& url, const QByteArray& bytes,
                             FetchResult result) {
    auto& asked = chain.asked;
    if (chain.protocol == nullptr || !chain.scanner ||
        std::none_of(asked.begin(), asked.end(),
                     [&](const auto& page) { return page.first == url; })) {
        return false;
    }
    chain.cameEarly.insert(url, {bytes, result});
    // The pages are scanned in the order of the list, each as soon as those
    // before it have been.
    while (!asked.empty()) {
        const auto came = chain.cameEarly.constFind(asked.front().first);
        if (came == chain.cameEarly.constEnd()) {
            return true;
        }
        const QString front = asked.front().first;
        const qint64 offset = asked.front().second;
        const PageText page(came->first);
        const FetchResult frontResult = came->second;
        chain.cameEarly.erase(came);
        asked.pop_front();
        if (frontResult != FetchResult::Ok) {
            EndChain(chain);
            return true;  // the run tells the failure when it takes the page
        }
        PageScanner scanner = *chain.scanner;
        if (!scanner.SetUp(page)) {
            EndChain(chain);
            return true;  // the run refreshes the password or passes the protocol over
        }
        chain.scanned.insert(front, page);
        ScanAhead(chain, scanner, front, offset);
    }
    return true;
}

void UpdateRun::Pump() {
    CurrentUi().PumpEvents();
}

void UpdateRun::AddProgress() {
    m_bar = std::min(100, m_bar + m_step);
    m_view.Progress(m_bar);
}

void UpdateRun::TellCancel() {
    if (!m_cancelTold) {
        m_cancelTold = true;
        KeepUpdatePage();
        CurrentUi().Message(CancelMessageText(), CancelMessageTitle());
    }
}

void UpdateRun::KeepUpdatePage() {
    if (!m_listPageDue) {
        return;
    }
    m_listPageDue = false;
    if (m_listPage.isNull() || !core::ReplaceFile(UpdatePagePath(), m_listPage)) {
        QFile::remove(UpdatePagePath());
    }
}

void UpdateRun::ProtocolFailed(const QString& line, const ProtocolRecord& protocol) {
    KeepUpdatePage();
    if (line != kCurrentBids) {
        m_failed << line;
        m_view.ConnectStatus(protocol.runCaption + QStringLiteral(" update unsuccessful."));
        CurrentUi().Message(
            protocol.runCaption + QStringLiteral(" could not be processed.  Continuing with "
                                                 "remainder of update."),
            protocol.runCaption);
    }
    AddProgress();
}

void UpdateRun::StoreFailed(int code) {
    m_storeFailure = QStringLiteral("The database ") + QDir::toNativeSeparators(m_db.Path()) +
                     QStringLiteral(" could not be written (") +
                     QString::fromUtf8(sqlite3_errstr(code & 0xff)) +
                     QStringLiteral(
                         ").  The update was stopped; what was stored before it "
                         "is kept.");
    m_view.ConnectStatus(QStringLiteral("Update stopped."));
    CurrentUi().Message(m_storeFailure, QStringLiteral("Update Stopped"), core::Icon::Critical);
}

bool UpdateRun::StoreWritable() {
    if (m_db.Handle() != nullptr && sqlite3_db_readonly(m_db.Handle(), "main") == 1) {
        StoreFailed(SQLITE_READONLY);
        return false;
    }
    return true;
}

UpdateRun::Result UpdateRun::Activate() {
    return Activate(std::nullopt);
}

UpdateRun::Result UpdateRun::Activate(const QStringList& runList) {
    return Activate(std::optional<QStringList>(runList));
}

UpdateRun::Result UpdateRun::Activate(const std::optional<QStringList>& given) {
    m_cancelTold = false;
    m_failed.clear();
    m_storeFailure.clear();
    m_view.ShowStatus(QStringLiteral("Preparing update"));
    if (m_hooks.prepareUsageReport) {
        try {
            m_hooks.prepareUsageReport();
        } catch (const std::exception&) {
            // Counting may never stop the update.
        }
    }
    // The proxy of step 3 is the fetch hook's own: it reads the user's row.
    const QStringList runList = given ? *given : ReadRunList();
    const QString keptSiteTime = SiteTime();
    m_step = ProgressStep(runList.size());
    m_bar = 0;
    m_view.Progress(0);

    Result result = Result::Aborted;
    try {
        result = RunUpdate(runList);
    } catch (const std::exception&) {
        // Whatever stopped the run, the end-of-run steps follow.
    }
    FinishUpdate(keptSiteTime);
    return result;
}

QString UpdateRun::SiteTime() {
    try {
        core::Statement global = m_db.Prepare(QStringLiteral("SELECT eBayTime FROM Global"));
        if (global.Step() && !global.IsNull(0)) {
            return global.Text(0);
        }
    } catch (const core::StoreError&) {
        // Read as never set.
    }
    return QStringLiteral("-1");
}

void UpdateRun::FinishUpdate(const QString& keptSiteTime) {
    // The steps' writes go to the disk in one commit, which waits for it once
    // rather than once for each. A step that fails loses only its own write.
    std::optional<core::Transaction> together;
    try {
        together.emplace(m_db);
    } catch (const core::StoreError&) {
        // Each write then commits on its own.
    }
    const QString siteTime = SiteTime();
    if (siteTime != u"-1" && siteTime != keptSiteTime) {
        const QString correction = core::SiteTimeDifference(siteTime);
        try {
            m_db.Prepare(QStringLiteral("UPDATE Global SET eBayCorrection = ?"))
                .Bind(1, correction)
                .Run();
        } catch (const core::StoreError&) {
            // The session still takes the new correction.
        }
        CurrentSession().SiteCorrection = correction;
    }
    try {
        m_db.Exec(QStringLiteral("UPDATE Tracking SET Updates = IFNULL(Updates, 0) + 1"));
    } catch (const core::StoreError&) {
        // Counting may never stop the update.
    }
    if (m_hooks.repairNulls) {
        try {
            m_hooks.repairNulls();
        } catch (const std::exception&) {
            // The repair runs again at the next start.
        }
    }
    const QDateTime now = m_hooks.now ? m_hooks.now() : QDateTime::currentDateTime();
    try {
        m_db.Prepare(QStringLiteral("UPDATE UserSites SET LastUpdate = ? WHERE UserName = ? AND "
                                    "AuctionSiteFlag = 0"))
            .Bind(1,
                  core::Format(now, QStringLiteral("mm/dd/yy hh:nn:ss")) + QStringLiteral(" PST"))
            .Bind(2, CurrentSession().CurrentUser)
            .Run();
    } catch (const core::StoreError&) {
        // The next update then asks for more days.
    }
    if (together) {
        try {
            together->Commit();
        } catch (const core::StoreError&) {
            // Rolled back: the next update counts and mends again.
        }
    }
    if (m_hooks.redraw) {
        m_hooks.redraw();
    }
}

UpdateRun::Result UpdateRun::RunUpdate(const QStringList& runList) {
    m_state = ScanState();
    m_lists = ScanLists();
    m_view.ShowStatus(QStringLiteral("Preparing Update."));
    if (!StoreWritable()) {
        return Result::StoreFailed;
    }
    bool checked = true;
    if (m_hooks.checkRules) {
        try {
            checked = m_hooks.checkRules();
        } catch (const std::exception&) {
            checked = false;
        }
    }
    if (!checked && !CurrentSession().RulesChecked) {
        return Result::RulesFailed;
    }
    const Result result = RunProtocols(runList);
    if (result == Result::Complete) {
        m_view.ShowStatus(QStringLiteral("Update complete."));
    }
    return result;
}

UpdateRun::Result UpdateRun::RunProtocols(const QStringList& runList) {
    // For the length of the run, page commits do not wait for the disk; the
    // first commit after the run (LastUpdate) flushes again, and with it every
    // page before it.
    const core::CommitsWithoutFlush sync(m_db);
    // Every way out of the run commits what was written before it.
    core::BatchedCommits commits(m_db, kCommitEvery);
    RecordWriter writer(m_db, CurrentSession().CurrentUser);

    ScanHooks ancillaryScan;
    ancillaryScan.pumpEvents = [this] { Pump(); };
    // The run's connections: every page and post of the run goes over them
    // from here on; given up when the run ends, however it ends.
    // update.txt is brought up to date then too.
    struct ConnectionsEnd {
        UpdateRun& run;
        ~ConnectionsEnd() {
            run.m_ahead.reset();  // transfers under way are stopped
            run.ResetAhead(nullptr);
            run.KeepUpdatePage();
        }
    } connectionsEnd{*this};
    m_ancillaryProtocols.clear();
    OpenConnections();
    std::optional<core::LaneScope> lane;
    if (m_ahead) {
        lane.emplace(*m_ahead);
    }
    AncillaryHooks ancillaryHooks;
    ancillaryHooks.load = [this](const QString& section) { return AncillaryProtocol(section); };
    ancillaryHooks.address = [this](const ProtocolRecord& protocol, const ScanLists& lists) {
        return AncillaryAddress(protocol, lists, m_pageOffset);
    };
    ancillaryHooks.fetch = [this](const QString& url, QByteArray& page) {
        return Fetch(url, page);
    };
    ancillaryHooks.deleteRows = [&writer](const ProtocolRecord& protocol, const ScanLists& lists) {
        writer.DeleteFoundRows(protocol, lists);
    };
    ancillaryHooks.write = [&writer](const ProtocolRecord& protocol, const ScanLists& lists) {
        writer.WriteAncillary(protocol, lists);
    };
    // A failure inside an ancillary protocol ends that ancillary quietly;
    // the record it belongs to is written all the same.
    ancillaryHooks.cancelled = [this] { TellCancel(); };
    AncillaryRunner ancillary(m_view, ancillaryHooks, AncillaryPagePath());

    ScanHooks scan;
    scan.view = &m_view;
    scan.pumpEvents = [this] { Pump(); };
    scan.runAncillary = [&](const ItemRule& item, ScanLists& lists) {
        ancillary.Run(item, lists, ancillaryScan);
    };

    bool retried = false;  // the one password refresh of the whole update
    for (qsizetype index = 0; index < runList.size(); ++index) {
        const QString& line = runList.at(index);
        Pump();
        bool again = true;
        bool retry = false;
        while (again) {
            again = false;
            const std::unique_ptr<const ProtocolRecord> started =
                StartProtocol(runList, index, retry);
            const ProtocolRecord& protocol = *started;
            retry = true;
            const QString fault = protocol.CountFault();
            if (!fault.isEmpty()) {
                m_failed << line;
                m_view.ConnectStatus(protocol.runCaption + QStringLiteral(" update unsuccessful."));
                CurrentUi().Message(fault, QueryErrorTitle(), core::Icon::Warning);
                AddProgress();
                break;
            }
            m_view.ShowStatus(QStringLiteral("Fetching ") + protocol.runCaption);
            if (protocol.Iterates()) {
                m_pageOffset = 0;
            }
            m_pagesSeen.clear();
            // Made once: a protocol read ahead has its scanner already.
            PageScanner scanner = m_chain.protocol == &protocol && m_chain.scanner
                                      ? *m_chain.scanner
                                      : PageScanner(protocol);
            ReadFollowing(protocol, runList, index + 1);
            bool firstPage = true;
            int pages = 0;
            PageOutcome outcome = PageOutcome::NextPage;
            while (outcome == PageOutcome::NextPage) {
                if (++pages > kMostPages) {
                    outcome = PageOutcome::Failed;
                    break;
                }
                outcome =
                    RunPage(line, protocol, scanner, writer, commits, scan, firstPage, retried);
                firstPage = false;
            }
            // The protocol's pages are in the file before the next protocol
            // starts, or the run tells how it ended.
            if (const int code = commits.Commit();
                code != 0 && outcome != PageOutcome::StoreFailed) {
                StoreFailed(code);
                return Result::StoreFailed;
            }
            switch (outcome) {
                case PageOutcome::Retry:
                    again = true;
                    break;
                case PageOutcome::Aborted:
                    return Result::Aborted;
                case PageOutcome::Cancelled:
                    return Result::Cancelled;
                case PageOutcome::StoreFailed:
                    return Result::StoreFailed;
                case PageOutcome::Failed:
                    m_lists.ClearRecord();
                    ProtocolFailed(line, protocol);
                    break;
                case PageOutcome::Done:
                case PageOutcome::NextPage:
                    AddProgress();
                    m_lists.ClearRecord();
                    m_lists.ancillaryItems.clear();
                    break;
            }
        }
    }
    // What was asked for ahead goes with the connections (connectionsEnd),
    // which stop the transfers still under way rather than wait for them.
    return Result::Complete;
}

UpdateRun::PageOutcome UpdateRun::RunPage(const QString& line, const ProtocolRecord& protocol,
                                          PageScanner& scanner, RecordWriter& writer,
                                          core::BatchedCommits& commits, const ScanHooks& scan,
                                          bool firstPage, bool& retried) {
    QString address;
    try {
        address = m_hooks.buildUrl ? m_hooks.buildUrl(protocol.url, protocol.SiteNumberValue(), {},
                                                      {}, m_pageOffset)
                                   : protocol.url;
    } catch (const std::exception&) {
        return PageOutcome::Failed;
    }

    if (address != m_lastUrl) {
        m_lastUrl = address;
        m_view.LastUrl(address);
        // update.txt holds the last page of a main protocol, as it came.
        m_listPage = QByteArray();
        m_listPageDue = true;
        FetchResult fetched = FetchResult::Failed;
        QByteArray bytes;
        try {
            fetched = Fetch(address, bytes);
            Pump();
        } catch (const std::exception&) {
            fetched = FetchResult::Failed;
        }
        if (fetched == FetchResult::Cancelled || CurrentUi().CancelRequested()) {
            TellCancel();
            return PageOutcome::Cancelled;
        }
        if (fetched != FetchResult::Ok) {
            KeepUpdatePage();
            m_view.ConnectStatus(line + QStringLiteral(" connection error."));
            CurrentUi().Message(QStringLiteral("Retrieval of ") + protocol.runCaption +
                                    QStringLiteral(" from eBay failed.  There is a connection "
                                                   "problem or eBay is experiencing technical "
                                                   "difficulties.  Update aborted."),
                                QStringLiteral("Connection Error"), core::Icon::Critical);
            return PageOutcome::Aborted;
        }
        m_listPage = bytes;
        // A page of this protocol that came before: the site answers every
        // address alike, and paging would never end.
        // Two pages of one protocol that differ yet agree in length and both
        // hashes are not to be met in any seller's lists.
        const std::array<size_t, 3> digest = {static_cast<size_t>(bytes.size()),
                                              qHash(QByteArrayView(bytes), size_t{0x5157}),
                                              qHash(QByteArrayView(bytes), size_t{0x6c77})};
        if (!m_pagesSeen.insert(digest).second) {
            return PageOutcome::Failed;
        }
        m_page.Clear();
        Pump();
        // A page scanned ahead was made text when it came.
        const auto ahead = m_chain.scanned.constFind(address);
        if (ahead != m_chain.scanned.constEnd() && ahead->Bytes().isSharedWith(bytes)) {
            m_page = *ahead;
        } else {
            m_page.Load(bytes);
        }
    } else if (!firstPage) {
        // The next page has the address of the last one: the same records
        // would come again for ever.
        m_pageOffset = 0;
        return PageOutcome::Done;
    }
    m_view.ConnectStatus(protocol.runCaption + QStringLiteral(" retrieved successfully."));

    if (!scanner.SetUp(m_page)) {
        if (!retried) {
            m_view.ShowStatus(QStringLiteral("Updating Configuration"));
            bool refreshed = false;
            try {
                refreshed = m_hooks.refreshPassword && m_hooks.refreshPassword();
            } catch (const std::exception&) {
                refreshed = false;
            }
            if (refreshed) {
                retried = true;
                return PageOutcome::Retry;
            }
        }
        return PageOutcome::Failed;
    }
    if (m_pageOffset == 0) {
        AddProgress();
    }
    m_view.ShowStatus(QStringLiteral("Processing ") + protocol.runCaption);
    AskAhead(protocol, scanner, address);

    int recordCount = 0;  // RecordCountOnPage
    bool failed = false;
    bool cancelled = false;
    int storeCode = 0;  // the database could not be written
    QString queryError;
    {
        commits.Begin();
        try {
            while (scanner.ScanRecord(m_state, m_lists, scan) == PageScanner::RecordEnd::Complete) {
                RecordWriter::Outcome written = RecordWriter::Outcome::Written;
                try {
                    written = writer.WriteMain(protocol, m_lists);
                } catch (const QueryError& e) {
                    queryError = e.Message();
                    failed = true;
                    break;
                }
                if (written == RecordWriter::Outcome::LeavePage) {
                    break;
                }
                m_lists.ClearRecord();
                Pump();
                if (CurrentUi().CancelRequested()) {
                    cancelled = true;
                    break;
                }
                ++recordCount;
            }
        } catch (const core::StoreError& e) {
            // From the record's write or an ancillary write.
            if (StoreCannotWrite(e.Code())) {
                storeCode = e.Code();
            } else {
                failed = true;
            }
        }
        // The page's writes join the batch when paging goes on; however the
        // protocol ends, they are committed now.
        const bool pagingOn =
            storeCode == 0 && !failed && !cancelled && protocol.Iterates() && recordCount > 0;
        const int committed = pagingOn ? commits.CommitIfDue() : commits.Commit();
        if (committed != 0 && storeCode == 0) {
            storeCode = committed;
        }
    }
    // Told once the page's writes are committed.
    if (storeCode != 0) {
        StoreFailed(storeCode);
        return PageOutcome::StoreFailed;
    }
    if (failed) {
        if (!queryError.isEmpty() && writer.FirstErrorOf(protocol.section)) {
            KeepUpdatePage();
            CurrentUi().Message(queryError, QueryErrorTitle(), core::Icon::Warning);
        }
        return PageOutcome::Failed;
    }
    if (cancelled) {
        TellCancel();
        return PageOutcome::Cancelled;
    }
    if (protocol.Iterates() && recordCount > 0) {
        m_pageOffset += protocol.IterateSkipValue();
        return PageOutcome::NextPage;
    }
    m_pageOffset = 0;
    return PageOutcome::Done;
}

}  // namespace lw::update
