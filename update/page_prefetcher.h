// SPDX-License-Identifier: GPL-3.0-or-later
// The connections of an update: a transfer pool that fetches the pages the
// update asked for ahead of the moment it needs them, and performs every
// other transfer of the update's thread (the lane), so that the program never
// holds more connections than it was given. The update takes the pages in
// the order it asked for them; a page it wants before its turn is fetched
// before everything else. Pages may also be asked for "later": those of the
// part of the update that comes after the present one. They are fetched in
// their turn like the others, but taking a page of the present part never
// drops them, and they are taken only once promoted to the present. A list
// page asked for early is fetched before the item pages asked for before it,
// and told to the update once it has come, so that the item pages on it can
// be asked for: when the update next takes a page, or at once, waking it,
// when the connections are about to run out of pages to start.
//
// The taker waits through a waiter (the Ui's, in a real run) that costs no
// processor time: the pool's thread wakes it when there is news. That
// thread never touches the session, the Ui or the database: it only runs
// the transfers it is given.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "core/net.h"
#include "core/transfer_pool.h"
#include "core/wakeup.h"
#include "update/site_session.h"

namespace lw::update {

// What the pages are fetched over: made once, with the number of
// connections and the source the prefetcher feeds them from. A real update
// uses a TransferPool.
using Connect = std::function<std::unique_ptr<core::TransferRunner>(
    int connections, core::TransferRunner::Source source)>;

// The pool of a real update: its thread runs a few steps below the taker's
// priority, so that when the processors are all busy (a near site, a busy
// machine) the taker, who writes the pages that have come and keeps the
// window going, goes first, and pages never pile up behind it while the
// connections fetch on; fetching needs little processor time for a page.
Connect PoolConnections();

// The connections of an update as it opens them: the options of every page's
// GET, and what the pages are fetched over.
struct AheadSetup {
    core::NetOptions options;
    Connect connect;
};

class PagePrefetcher final : public core::TransferLane {
public:
    // How the taker waits: until wakeup is called or the user cancels; false
    // when the user asked to cancel (and then at once on every later call).
    using Waiter = std::function<bool(core::Wakeup& wakeup)>;
    // A page asked for early has come (or failed); told on the taker's
    // thread, from inside Take or Run.
    using Arrival =
        std::function<void(const QString& url, const QByteArray& page, FetchResult result)>;

    // options: of every page's GET; depth: how many of the pages asked for,
    // from the next one to be taken on, may be fetched or on their way;
    // connections: how many transfers at once; maxBytes: no page is started
    // while the pages fetched and not yet taken hold this many bytes or more
    // (the next one to be taken, and a page asked for early, always may be).
    // Without a waiter the taker simply sleeps until woken. Throws when the
    // connections cannot be made.
    PagePrefetcher(core::NetOptions options, const Connect& connect, int depth, int connections = 1,
                   qint64 maxBytes = qint64{64} * 1024 * 1024, Waiter waiter = {});
    // Stops the transfers under way and drops every page not taken.
    ~PagePrefetcher() override;
    PagePrefetcher(const PagePrefetcher&) = delete;
    PagePrefetcher& operator=(const PagePrefetcher&) = delete;

    void SetArrival(Arrival arrival);

    // Adds addresses, in the order in which they will be taken.
    void Ask(const QStringList& urls, bool later = false);
    // Adds an address to be taken after those asked before it, but fetched
    // before any of them that has not started (but the next one to be
    // taken), and told on arrival.
    void AskEarly(const QString& url, bool later = false);
    // Puts an address before everything asked: the taker needs it now.
    void AskFirst(const QString& url);
    // Drops every address asked for and not yet taken. A transfer under way
    // runs to its end and its page is thrown away: stopping it would cost
    // its connection, and a new one costs more than the rest of a page.
    void Drop();
    // Drops the addresses of the present part only; those asked for later
    // stay, in their order.
    void DropPresent();
    // The addresses asked for later become the present part's: the update
    // has moved on to them.
    void Promote();

    // The page of url when it was asked for: the first such address still
    // waiting, with the addresses asked for before it dropped (the update
    // went another way). Until it has come, pages asked for early that came
    // are told, and the taker waits through the waiter; when the user
    // cancels, everything asked for is dropped and the answer is Cancelled.
    // Nothing (no value) when url was not asked for in the present part.
    std::optional<FetchResult> Take(const QString& url, QByteArray& page);

    // Pages asked for and not yet taken or dropped.
    int Waiting() const;

    // The lane: the transfer starts on the next free connection, before any
    // page.
    core::NetResult Run(const core::TransferSpec& spec, const core::NetProgress& progress) override;

private:
    struct Entry {
        quint64 id = 0;
        QString url;
        bool early = false;
        bool first = false;  // asked for before everything: the taker needs it now
        quint64 behind = 0;  // an early page: the next one to be taken when it was asked
        bool later = false;  // asked for the part after the present one
        bool told = false;   // an early page's arrival was told
        bool started = false;
        bool done = false;
        std::chrono::steady_clock::time_point doneAt;  // when it came
        // Set to stop its transfer under way; shared with the transfer.
        std::shared_ptr<std::atomic<bool>> stop;
        FetchResult result = FetchResult::Failed;
        QByteArray page;
    };
    // A transfer of the lane.
    struct LaneJob {
        const core::TransferSpec* spec = nullptr;
        std::atomic<bool> stop{false};
        std::atomic<qint64> received{0};
        std::atomic<qint64> total{0};
        bool done = false;
        core::NetResult result;
    };

    // On the pool's thread: the next transfer to start, if any.
    std::optional<core::TransferRunner::Job> NextJob();
    // On the pool's thread: a page's transfer ended.
    void PageDone(quint64 id, core::NetResult&& result);
    // The entry a free thread should start, or null.
    Entry* NextToStart();
    // How many entries a free connection could start.
    size_t StartableLocked() const;
    // Wakes the pool when a connection is free and there is enough to start
    // on it: at least atLeast pages, or a lane transfer.
    void WakeForWorkLocked(size_t atLeast = 1);
    // Whether the pages that came are enough to wake the taker for.
    bool TakerHasEnoughLocked() const;
    // Whether a page asked for early came and is still to be told while the
    // connections are about to run out of pages to start: the taker is woken
    // to tell it, so that the pages it brings keep them busy.
    bool ArrivalNeededLocked() const;
    Entry* Find(quint64 id);
    // What an entry held goes from the counts as it leaves the queue.
    void ForgetLocked(const Entry& entry);
    // Drops entries [0, end) of the queue (those of the present part only,
    // when told so), and stops their transfers under way when told to.
    void DropLocked(size_t end, bool stopTransfers = true, bool presentOnly = false);
    // Tells the pages asked for early that have come; the lock is let go
    // while each is told.
    void TellArrivals(std::unique_lock<std::mutex>& lock);

    const core::NetOptions m_options;
    Waiter m_waiter;
    Arrival m_arrival;
    const size_t m_depth;
    const qint64 m_maxBytes;
    qint64 m_heldBytes = 0;  // of pages fetched and not yet taken
    size_t m_untold = 0;     // pages asked for early that came and are not yet told
    mutable std::mutex m_mutex;
    std::condition_variable m_jobDone;  // a lane transfer ended
    core::Wakeup m_wakeup;              // the taker: a page came, or a transfer has news
    std::deque<Entry> m_entries;
    std::deque<LaneJob*> m_jobs;  // waiting to start
    quint64 m_nextId = 0;
    const size_t m_connections;
    size_t m_running = 0;   // transfers under way
    quint64 m_awaited = 0;  // the page the taker sleeps until; 0: it is awake
    bool m_stopping = false;
    // Last: it goes first, and with it the thread that calls back into the
    // rest.
    std::unique_ptr<core::TransferRunner> m_runner;
};

}  // namespace lw::update
