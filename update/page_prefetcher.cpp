// SPDX-License-Identifier: GPL-3.0-or-later
// The page prefetcher: the source of its connections (lane transfers first,
// then a page the taker needs now, then pages asked for early, each after
// the page that was next to be taken when it was asked, then the rest in
// order within the depth), and a taker that waits for the page it needs
// while its own events go on.
#include "update/page_prefetcher.h"

#include <algorithm>

namespace lw::update {

namespace {

// Pages that may start before the pool is woken for them while a connection
// is idle.
constexpr size_t kWakeBatch = 8;
// Pages that have come, from the one the taker awaits on, before it is
// woken while more are on their way right behind them: a taker woken for
// each page of a distant site would spend more on waking (its caches gone
// cold meanwhile) than on the page, while a batch costs no time, the
// connections fetching on meanwhile. At most half the depth, so that the
// connections never run out of pages to start while the taker sleeps.
constexpr size_t kWakeBurst = 64;
// The longest the taker sleeps once the page it awaits has come, while more
// keep coming behind it: what the window shows of the pages never stands
// still longer than this, however slowly a site answers.
constexpr std::chrono::milliseconds kWakeWithin{250};

// How far below the taker the pool's thread runs. Its answers then wait for
// their turn rather than interrupt the taker (the window's thread, in the
// program) or the site on the same machine: without this, each answer of a
// near site interrupts the thread that writes the pages, thousands of times
// in an update. A distant site's answers find the processors idle and are
// handled at once as before.
constexpr int kBelowTaker = 10;

bool SleepUntilWoken(core::Wakeup& wakeup) {
    wakeup.Wait();
    return true;
}

}  // namespace

Connect PoolConnections() {
    return [](int connections, core::TransferRunner::Source source) {
        return std::make_unique<core::TransferPool>(connections, std::move(source), kBelowTaker);
    };
}

PagePrefetcher::PagePrefetcher(core::NetOptions options, const Connect& connect, int depth,
                               int connections, qint64 maxBytes, Waiter waiter)
    : m_options(std::move(options)),
      m_waiter(waiter ? std::move(waiter) : Waiter(SleepUntilWoken)),
      m_depth(static_cast<size_t>(std::max(depth, 1))),
      m_maxBytes(maxBytes),
      m_connections(static_cast<size_t>(std::max(connections, 1))) {
    m_runner = connect(static_cast<int>(m_connections), [this] { return NextJob(); });
}

PagePrefetcher::~PagePrefetcher() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        DropLocked(m_entries.size());
    }
    // Its thread may be in NextJob or PageDone: the lock is not held here.
    m_runner.reset();
}

void PagePrefetcher::SetArrival(Arrival arrival) {
    const std::lock_guard lock(m_mutex);
    m_arrival = std::move(arrival);
}

void PagePrefetcher::WakeForWorkLocked(size_t atLeast) {
    if (m_running < m_connections &&
        (!m_jobs.empty() || StartableLocked() >= std::max<size_t>(atLeast, 1))) {
        m_runner->Wake();
    }
}

void PagePrefetcher::Ask(const QStringList& urls, bool later) {
    if (urls.isEmpty()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    for (const QString& url : urls) {
        Entry& entry = m_entries.emplace_back();
        entry.id = ++m_nextId;
        entry.url = url;
        entry.later = later;
    }
    WakeForWorkLocked();
}

void PagePrefetcher::AskEarly(const QString& url, bool later) {
    const std::lock_guard lock(m_mutex);
    const quint64 next = m_entries.empty() ? 0 : m_entries.front().id;
    Entry& entry = m_entries.emplace_back();
    entry.id = ++m_nextId;
    entry.url = url;
    entry.early = true;
    entry.behind = next;
    entry.later = later;
    WakeForWorkLocked();
}

void PagePrefetcher::AskFirst(const QString& url) {
    const std::lock_guard lock(m_mutex);
    Entry& entry = m_entries.emplace_front();
    entry.id = ++m_nextId;
    entry.url = url;
    entry.first = true;
    WakeForWorkLocked();
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
    bool stopped = false;
    for (auto it = kept; it != last; ++it) {
        if (stopTransfers && it->started && !it->done) {
            *it->stop = true;
            stopped = true;
        }
        ForgetLocked(*it);
    }
    m_entries.erase(kept, last);
    if (stopped && m_runner) {
        m_runner->Wake();  // the transfers hear their stop at once
    }
}

void PagePrefetcher::ForgetLocked(const Entry& entry) {
    m_heldBytes -= entry.page.size();
    if (entry.early && entry.done && !entry.told) {
        --m_untold;
    }
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
    if (it == m_entries.end() || !it->done) {
        return false;
    }
    if (std::chrono::steady_clock::now() - it->doneAt >= kWakeWithin) {
        return true;
    }
    size_t ready = 0;
    for (; it != m_entries.end() && it->done; ++it) {
        if (++ready >= std::min(kWakeBurst, m_depth / 2)) {
            return true;
        }
    }
    // The page after those that came is not on its way (nothing after it is
    // either): no reason to wait longer. One on its way comes soon.
    return it == m_entries.end() || !it->started;
}

bool PagePrefetcher::ArrivalNeededLocked() const {
    return m_untold > 0 && StartableLocked() < m_connections;
}

PagePrefetcher::Entry* PagePrefetcher::NextToStart() {
    if (m_entries.empty()) {
        return nullptr;
    }
    // The taker needs it now.
    const Entry& front = m_entries.front();
    if (!front.started && front.first) {
        return &m_entries.front();
    }
    // A page asked for early goes before those asked before it, but the one
    // that was next to be taken then.
    for (Entry& entry : m_entries) {
        if (entry.early && !entry.started &&
            (front.started || &entry == &front || entry.behind < front.id)) {
            return &entry;
        }
    }
    // The next one to be taken always may start.
    const size_t window = std::min(m_entries.size(), m_depth);
    for (size_t i = 0; i < window; ++i) {
        if (!m_entries[i].started && (i == 0 || m_heldBytes < m_maxBytes)) {
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

std::optional<core::TransferRunner::Job> PagePrefetcher::NextJob() {
    const std::lock_guard lock(m_mutex);
    if (m_stopping) {
        return std::nullopt;
    }
    core::TransferRunner::Job job;
    if (!m_jobs.empty()) {
        LaneJob* lane = m_jobs.front();
        m_jobs.pop_front();
        job.spec = *lane->spec;
        job.progress = [this, lane](qint64 received, qint64 total) {
            if (received != lane->received.load() || total != lane->total.load()) {
                lane->received = received;
                lane->total = total;
                m_wakeup.Notify();
            }
            return !lane->stop.load();
        };
        job.done = [this, lane](core::NetResult&& result) {
            const std::lock_guard doneLock(m_mutex);
            --m_running;
            lane->result = std::move(result);
            lane->done = true;
            m_jobDone.notify_all();
            m_wakeup.Notify();
        };
        ++m_running;
        return job;
    }
    Entry* next = NextToStart();
    if (next == nullptr) {
        return std::nullopt;
    }
    next->started = true;
    next->stop = std::make_shared<std::atomic<bool>>(false);
    job.spec.url = next->url;
    job.spec.options = m_options;
    job.progress = [stop = next->stop](qint64, qint64) { return !stop->load(); };
    job.done = [this, id = next->id](core::NetResult&& result) { PageDone(id, std::move(result)); };
    ++m_running;
    return job;
}

void PagePrefetcher::PageDone(quint64 id, core::NetResult&& result) {
    QByteArray page;
    const FetchResult outcome = PageOfAnswer(result, &page);
    const std::lock_guard lock(m_mutex);
    --m_running;
    if (Entry* entry = Find(id)) {
        entry->done = true;
        entry->doneAt = std::chrono::steady_clock::now();
        entry->result = outcome;
        entry->page = std::move(page);
        m_heldBytes += entry->page.size();
        if (entry->early) {
            ++m_untold;
        }
    }
    if (m_awaited != 0 && (TakerHasEnoughLocked() || ArrivalNeededLocked())) {
        m_wakeup.Notify();
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
        --m_untold;
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
        WakeForWorkLocked();
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
        if (!entry->started) {
            WakeForWorkLocked();
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
    ForgetLocked(*it);
    Entry entry = std::move(*it);
    m_entries.erase(it);
    // Room in the window for one more. The pool is woken once a few pages
    // can start, not for each: a wake-up costs more than a page on a near
    // site, and the window keeps plenty on hand meanwhile.
    WakeForWorkLocked(kWakeBatch);
    lock.unlock();
    page = std::move(entry.page);
    return entry.result;
}

core::NetResult PagePrefetcher::Run(const core::TransferSpec& spec,
                                    const core::NetProgress& progress) {
    LaneJob job;
    job.spec = &spec;
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(&job);
        m_runner->Wake();
    }
    std::exception_ptr progressFailure;
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
            goOn = !progress || progress(job.received.load(), job.total.load());
        } catch (...) {
            progressFailure = std::current_exception();
            goOn = false;
        }
        if (!goOn) {
            job.stop = true;
            m_runner->Wake();
            withEvents = false;
        } else if (cancelled) {
            withEvents = false;
        } else {
            cancelled = !m_waiter(m_wakeup);
        }
    }
    if (progressFailure) {
        std::rethrow_exception(progressFailure);
    }
    return std::move(job.result);
}

}  // namespace lw::update
