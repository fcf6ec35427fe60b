// SPDX-License-Identifier: GPL-3.0-or-later
// The connections of an update: a few threads, each with a connection of its
// own, that fetch the pages the update asked for ahead of the moment it
// needs them, and perform every other transfer of the update's thread (the
// lane), so that the program never holds more connections than it was given.
// The update takes the pages in the order it asked for them; a page it
// wants before its turn is fetched before everything else. Pages may also be
// asked for "later": those of the part of the update that comes after the
// present one. They are fetched in their turn like the others, but taking a
// page of the present part never drops them, and they are taken only once
// promoted to the present. A list page asked
// for early is fetched before the item pages asked for before it, and told
// to the update as soon as it has come, so that the item pages on it can be
// asked for at once.
//
// The taker waits through a waiter (the Ui's, in a real run) that costs no
// processor time: the fetching threads wake it when there is news. The
// fetching threads never touch the session, the Ui or the database: they
// only run the fetch they were given, which must be safe on another thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "core/net.h"
#include "core/wakeup.h"
#include "update/site_session.h"

namespace lw::update {

// A fetch for the fetching threads: stop turns true when the transfer under
// way is to be given up.
using AheadFetch =
    std::function<FetchResult(const QString& url, QByteArray& page, const std::atomic<bool>& stop)>;

class PagePrefetcher final : public core::TransferLane {
public:
    // How the taker waits: until wakeup is called or the user cancels; false
    // when the user asked to cancel (and then at once on every later call).
    using Waiter = std::function<bool(core::Wakeup& wakeup)>;
    // A page asked for early has come (or failed); told on the taker's
    // thread, from inside Take or Run.
    using Arrival =
        std::function<void(const QString& url, const QByteArray& page, FetchResult result)>;

    // depth: how many of the pages asked for, from the next one to be taken
    // on, may be fetched or on their way; connections: how many threads, each
    // with its own connection; maxBytes: no page is started while the pages
    // fetched and not yet taken hold this many bytes or more (the next one to
    // be taken, and a page asked for early, always may be). Without a waiter
    // the taker simply sleeps until woken.
    PagePrefetcher(AheadFetch fetch, int depth, int connections = 1,
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

    // The lane: perform runs on the next free thread, before any page.
    void Run(const Perform& perform, const std::function<bool()>& tick) override;

private:
    // A fetching thread, and the flag that tells its transfer to stop.
    struct Worker {
        std::thread thread;
        std::atomic<bool> stop{false};
    };
    struct Entry {
        quint64 id = 0;
        QString url;
        bool early = false;
        bool later = false;         // asked for the part after the present one
        bool told = false;          // an early page's arrival was told
        Worker* fetcher = nullptr;  // set when started
        bool started = false;
        bool done = false;
        FetchResult result = FetchResult::Failed;
        QByteArray page;
    };
    // A transfer of the lane.
    struct Job {
        const Perform* perform = nullptr;
        std::atomic<bool> stop{false};
        bool started = false;
        bool done = false;
        std::exception_ptr failure;
    };

    void Work(Worker& worker);
    // The entry a free thread should start, or null.
    Entry* NextToStart();
    // How many entries a free thread could start.
    size_t StartableLocked() const;
    // Whether the pages that came are enough to wake the taker for.
    bool TakerHasEnoughLocked() const;
    Entry* Find(quint64 id);
    // Drops entries [0, end) of the queue (those of the present part only,
    // when told so), and stops their transfers under way when told to.
    void DropLocked(size_t end, bool stopTransfers = true, bool presentOnly = false);
    // Tells the pages asked for early that have come; the lock is let go
    // while each is told.
    void TellArrivals(std::unique_lock<std::mutex>& lock);

    AheadFetch m_fetch;
    Waiter m_waiter;
    Arrival m_arrival;
    const size_t m_depth;
    const qint64 m_maxBytes;
    qint64 m_heldBytes = 0;  // of pages fetched and not yet taken
    mutable std::mutex m_mutex;
    std::condition_variable m_work;     // the fetching threads: work or stop
    std::condition_variable m_jobDone;  // a lane transfer ended
    core::Wakeup m_wakeup;              // the taker: a page came, or a transfer has news
    std::deque<Entry> m_entries;
    std::deque<Job*> m_jobs;  // waiting to start
    quint64 m_nextId = 0;
    int m_idle = 0;         // fetching threads waiting for work
    quint64 m_awaited = 0;  // the page the taker sleeps until; 0: it is awake
    bool m_stopping = false;
    std::deque<Worker> m_workers;
};

}  // namespace lw::update
