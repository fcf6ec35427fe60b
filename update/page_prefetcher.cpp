// SPDX-License-Identifier: GPL-3.0-or-later
// The page prefetcher: threads that fetch the asked addresses (lane
// transfers first, then the page the taker needs next, then pages asked for
// early, then the rest in order within the depth), and a taker that waits
// for the page it needs while its own events go on.
#include "update/page_prefetcher.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace lw::update {

namespace {

// Pages that may start before an idle thread is woken for them.
constexpr size_t kWakeBatch = 8;
// Pages that have come, from the one the taker awaits on, before it is
// woken while more are on their way right behind them: a taker woken for
// each page of a distant site would spend more on waking (its caches gone
// cold meanwhile) than on the page, while a few at a time cost no time,
// the connections fetching on meanwhile. At most half the depth, so that
// the connections never run out of pages to start while the taker sleeps.
constexpr size_t kWakeBurst = 16;

// The fetching threads work ahead of the taker, so a page that comes need
// not take a processor from the taker (the window's thread, in the program)
// or from the site on the same machine at once: its thread waits for its
// turn instead of interrupting. Without this, each answer of a near site
// interrupts the thread that writes the pages, thousands of times in an
// update. A distant site's answers find the processors idle and are
// handled at once as before.
//
// For the same reason they run a few steps below the taker's priority: when
// the processors are all busy (a near site, a busy machine), the taker, who
// writes the pages that have come and keeps the window going, goes first,
// so that pages never pile up behind it while the connections fetch on; the
// fetching threads need little processor time for a page and take what the
// taker leaves. Linux keeps a priority per thread, so only this thread's
// changes.
constexpr int kBelowTaker = 10;

void YieldToTaker() {
#ifdef SCHED_BATCH
    const sched_param normal{};
    // Refused only where the system has no such policy: the thread then
    // fetches as it would anyway.
    pthread_setschedparam(pthread_self(), SCHED_BATCH, &normal);
#endif
    const id_t self = static_cast<id_t>(gettid());
    errno = 0;
    const int taker = getpriority(PRIO_PROCESS, self);  // inherited from the taker's thread
    if (errno == 0) {
        // Lowering one's own priority is always allowed; 19 is the lowest.
        setpriority(PRIO_PROCESS, self, std::min(taker + kBelowTaker, 19));
    }
}

bool SleepUntilWoken(core::Wakeup& wakeup) {
    wakeup.Wait();
    return true;
}

}  // namespace

PagePrefetcher::PagePrefetcher(AheadFetch fetch, int depth, int connections, qint64 maxBytes,
                               Waiter waiter)
    : m_fetch(std::move(fetch)),
      m_waiter(waiter ? std::move(waiter) : Waiter(SleepUntilWoken)),
      m_depth(static_cast<size_t>(std::max(depth, 1))),
      m_maxBytes(maxBytes) {
    for (int i = 0; i < std::max(connections, 1); ++i) {
        Worker& worker = m_workers.emplace_back();
        worker.thread = std::thread([this, &worker] { Work(worker); });
    }
}

PagePrefetcher::~PagePrefetcher() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        DropLocked(m_entries.size());
    }
    m_work.notify_all();
    for (Worker& worker : m_workers) {
        worker.thread.join();
    }
}

void PagePrefetcher::SetArrival(Arrival arrival) {
    const std::lock_guard lock(m_mutex);
    m_arrival = std::move(arrival);
}

void PagePrefetcher::Ask(const QStringList& urls, bool later) {
    if (urls.isEmpty()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        for (const QString& url : urls) {
            Entry& entry = m_entries.emplace_back();
            entry.id = ++m_nextId;
            entry.url = url;
            entry.later = later;
        }
    }
    m_work.notify_all();
}

void PagePrefetcher::AskEarly(const QString& url, bool later) {
    {
        const std::lock_guard lock(m_mutex);
        Entry& entry = m_entries.emplace_back();
        entry.id = ++m_nextId;
        entry.url = url;
        entry.early = true;
        entry.later = later;
    }
    m_work.notify_one();
}

void PagePrefetcher::AskFirst(const QString& url) {
    {
        const std::lock_guard lock(m_mutex);
        Entry& entry = m_entries.emplace_front();
        entry.id = ++m_nextId;
        entry.url = url;
    }
    m_work.notify_one();
}

void PagePrefetcher::Drop() {
    const std::lock_guard lock(m_mutex);
    DropLocked(m_entries.size(), false);
}

void PagePrefetcher::DropPresent() {
    const std::lock_guard lock(m_mutex);
    DropLocked(m_entries.size(), false, true);
}

void PagePrefetcher::Promote() {
    const std::lock_guard lock(m_mutex);
    for (Entry& entry : m_entries) {
        entry.later = false;
    }
}

void PagePrefetcher::DropLocked(size_t end, bool stopTransfers, bool presentOnly) {
    const auto first = m_entries.begin();
    const auto last = first + static_cast<std::ptrdiff_t>(end);
    const auto kept = std::stable_partition(
        first, last, [&](const Entry& entry) { return presentOnly && entry.later; });
    for (auto it = kept; it != last; ++it) {
        if (stopTransfers && it->started && !it->done) {
            it->fetcher->stop = true;
        }
        m_heldBytes -= it->page.size();
    }
    m_entries.erase(kept, last);
}

int PagePrefetcher::Waiting() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_entries.size());
}

PagePrefetcher::Entry* PagePrefetcher::Find(quint64 id) {
    const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                 [id](const Entry& entry) { return entry.id == id; });
    return it == m_entries.end() ? nullptr : &*it;
}

bool PagePrefetcher::TakerHasEnoughLocked() const {
    auto it = std::find_if(m_entries.begin(), m_entries.end(),
                           [this](const Entry& entry) { return entry.id == m_awaited; });
    size_t ready = 0;
    for (; it != m_entries.end() && it->done; ++it) {
        if (++ready >= std::min(kWakeBurst, m_depth / 2)) {
            return true;
        }
    }
    // The page after those that came is not on its way (nothing after it is
    // either): no reason to wait longer. One on its way comes soon.
    return ready > 0 && (it == m_entries.end() || !it->started);
}

PagePrefetcher::Entry* PagePrefetcher::NextToStart() {
    if (m_entries.empty()) {
        return nullptr;
    }
    // The taker may be waiting for the first.
    if (!m_entries.front().started) {
        return &m_entries.front();
    }
    for (Entry& entry : m_entries) {
        if (entry.early && !entry.started) {
            return &entry;
        }
    }
    const size_t window = std::min(m_entries.size(), m_depth);
    for (size_t i = 1; i < window; ++i) {
        if (!m_entries[i].started && m_heldBytes < m_maxBytes) {
            return &m_entries[i];
        }
    }
    return nullptr;
}

size_t PagePrefetcher::StartableLocked() const {
    size_t startable = 0;
    const size_t window = std::min(m_entries.size(), m_depth);
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        if (!entry.started && (entry.early || i == 0 || (i < window && m_heldBytes < m_maxBytes))) {
            ++startable;
        }
    }
    return startable;
}

void PagePrefetcher::Work(Worker& worker) {
    YieldToTaker();
    std::unique_lock lock(m_mutex);
    for (;;) {
        Job* job = nullptr;
        Entry* next = nullptr;
        while (!m_stopping) {
            if (!m_jobs.empty()) {
                job = m_jobs.front();
                break;
            }
            next = NextToStart();
            if (next != nullptr) {
                break;
            }
            ++m_idle;
            m_work.wait(lock);
            --m_idle;
        }
        if (m_stopping) {
            return;
        }
        if (job != nullptr) {
            m_jobs.pop_front();
            job->started = true;
            lock.unlock();
            try {
                (*job->perform)(job->stop, [this] { m_wakeup.Notify(); });
            } catch (...) {
                job->failure = std::current_exception();  // thrown again on the caller's thread
            }
            lock.lock();
            job->done = true;
            m_jobDone.notify_all();
            m_wakeup.Notify();
            continue;
        }
        next->started = true;
        next->fetcher = &worker;
        const quint64 id = next->id;
        const QString url = next->url;
        worker.stop = false;
        // More to start: a colleague takes the next, so that a batch of
        // pages goes over every connection.
        if (m_idle > 0 && StartableLocked() > 0) {
            m_work.notify_one();
        }
        lock.unlock();

        QByteArray page;
        FetchResult result = FetchResult::Failed;
        try {
            result = m_fetch(url, page, worker.stop);
        } catch (const std::exception&) {
            result = FetchResult::Failed;  // the taker sees a failed fetch
        }

        lock.lock();
        if (Entry* entry = Find(id)) {
            entry->done = true;
            entry->result = result;
            entry->page = std::move(page);
            m_heldBytes += entry->page.size();
            if (m_awaited != 0 && (entry->early || TakerHasEnoughLocked())) {
                m_wakeup.Notify();
            }
        }
    }
}

void PagePrefetcher::TellArrivals(std::unique_lock<std::mutex>& lock) {
    while (m_arrival) {
        const auto it = std::find_if(m_entries.begin(), m_entries.end(), [](const Entry& entry) {
            return entry.early && entry.done && !entry.told;
        });
        if (it == m_entries.end()) {
            return;
        }
        it->told = true;
        const QString url = it->url;
        const QByteArray page = it->page;  // shared, not copied
        const FetchResult result = it->result;
        const Arrival arrival = m_arrival;
        lock.unlock();
        try {
            arrival(url, page, result);
        } catch (const std::exception&) {
            // The page is still taken in its turn; only what it would have
            // asked for ahead is not.
        }
        lock.lock();
    }
}

std::optional<FetchResult> PagePrefetcher::Take(const QString& url, QByteArray& page) {
    std::unique_lock lock(m_mutex);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&url](const Entry& entry) {
        return !entry.later && entry.url == url;
    });
    if (found == m_entries.end()) {
        return std::nullopt;
    }
    const quint64 id = found->id;
    if (found != m_entries.begin()) {
        // The update did not take these as asked: they are not wanted. Those
        // asked for later are kept.
        DropLocked(static_cast<size_t>(found - m_entries.begin()), true, true);
        m_work.notify_all();
    }
    for (;;) {
        TellArrivals(lock);
        const Entry* entry = Find(id);
        if (entry == nullptr) {
            return std::nullopt;  // dropped while it was awaited
        }
        if (entry->done) {
            break;
        }
        if (!entry->started && m_idle > 0) {
            m_work.notify_one();
        }
        m_awaited = id;
        lock.unlock();
        const bool waitOn = m_waiter(m_wakeup);
        lock.lock();
        m_awaited = 0;
        if (!waitOn) {
            DropLocked(m_entries.size());
            page.clear();
            return FetchResult::Cancelled;
        }
    }
    const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                 [id](const Entry& entry) { return entry.id == id; });
    Entry entry = std::move(*it);
    m_entries.erase(it);
    m_heldBytes -= entry.page.size();
    // Room in the window for one more. An idle thread is woken once a few
    // pages can start, not for each: a wake-up costs more than a page on a
    // near site, and the window keeps plenty on hand meanwhile.
    const bool wake = m_idle > 0 && StartableLocked() >= kWakeBatch;
    lock.unlock();
    if (wake) {
        m_work.notify_one();
    }
    page = std::move(entry.page);
    return entry.result;
}

void PagePrefetcher::Run(const Perform& perform, const std::function<bool()>& tick) {
    Job job;
    job.perform = &perform;
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(&job);
    }
    m_work.notify_one();
    std::exception_ptr tickFailure;
    // Once the transfer is told to stop, or goes on although the user has
    // cancelled, nothing is left to show: the rest of the wait is a plain one.
    bool withEvents = true;
    bool cancelled = false;
    for (;;) {
        {
            std::unique_lock lock(m_mutex);
            if (!withEvents) {
                m_jobDone.wait(lock, [&job] { return job.done; });
            }
            if (job.done) {
                break;
            }
        }
        bool goOn = true;
        try {
            goOn = !tick || tick();
        } catch (...) {
            tickFailure = std::current_exception();
            goOn = false;
        }
        if (!goOn) {
            job.stop = true;
            withEvents = false;
        } else if (cancelled) {
            withEvents = false;
        } else {
            cancelled = !m_waiter(m_wakeup);
        }
    }
    if (job.failure) {
        std::rethrow_exception(job.failure);
    }
    if (tickFailure) {
        std::rethrow_exception(tickFailure);
    }
}

}  // namespace lw::update
