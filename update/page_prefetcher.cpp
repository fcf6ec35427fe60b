// SPDX-License-Identifier: GPL-3.0-or-later
// The page prefetcher: threads that fetch the asked addresses in order, at
// most `depth` ahead of the taker, and a taker that waits for the page it
// needs while its own events go on.
#include "update/page_prefetcher.h"

#include <algorithm>
#include <chrono>
#include <exception>

namespace lw::update {

PagePrefetcher::PagePrefetcher(AheadFetch fetch, int depth, int connections, qint64 maxBytes)
    : m_fetch(std::move(fetch)),
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
    m_wake.notify_all();
    for (Worker& worker : m_workers) {
        worker.thread.join();
    }
}

void PagePrefetcher::Ask(const QStringList& urls) {
    if (urls.isEmpty()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        for (const QString& url : urls) {
            Entry entry;
            entry.id = ++m_nextId;
            entry.url = url;
            m_entries.push_back(std::move(entry));
        }
    }
    m_wake.notify_all();
}

void PagePrefetcher::Drop() {
    const std::lock_guard lock(m_mutex);
    DropLocked(m_entries.size());
}

void PagePrefetcher::DropLocked(size_t end) {
    for (size_t i = 0; i < end; ++i) {
        const Entry& entry = m_entries[i];
        if (entry.started && !entry.done) {
            entry.fetcher->stop = true;
        }
        m_heldBytes -= entry.page.size();
    }
    m_entries.erase(m_entries.begin(), m_entries.begin() + static_cast<std::ptrdiff_t>(end));
}

int PagePrefetcher::Waiting() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_entries.size());
}

void PagePrefetcher::Work(Worker& worker) {
    std::unique_lock lock(m_mutex);
    for (;;) {
        // The first address not yet started, within the depth.
        Entry* next = nullptr;
        m_wake.wait(lock, [&] {
            if (m_stopping) {
                return true;
            }
            const size_t window = std::min(m_entries.size(), m_depth);
            for (size_t i = 0; i < window; ++i) {
                if (!m_entries[i].started && (i == 0 || m_heldBytes < m_maxBytes)) {
                    next = &m_entries[i];
                    return true;
                }
            }
            return false;
        });
        if (m_stopping) {
            return;
        }
        next->started = true;
        next->fetcher = &worker;
        const quint64 id = next->id;
        const QString url = next->url;
        worker.stop = false;
        lock.unlock();

        QByteArray page;
        FetchResult result = FetchResult::Failed;
        try {
            result = m_fetch(url, page, worker.stop);
        } catch (const std::exception&) {
            result = FetchResult::Failed;  // the taker sees a failed fetch
        }

        lock.lock();
        const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                     [id](const Entry& entry) { return entry.id == id; });
        if (it != m_entries.end()) {
            it->done = true;
            it->result = result;
            it->page = std::move(page);
            m_heldBytes += it->page.size();
            m_ready.notify_all();
        }
    }
}

std::optional<FetchResult> PagePrefetcher::Take(const QString& url, QByteArray& page,
                                                const std::function<bool()>& keepWaiting) {
    std::unique_lock lock(m_mutex);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&url](const Entry& entry) { return entry.url == url; });
    if (found == m_entries.end()) {
        return std::nullopt;
    }
    const quint64 id = found->id;
    if (found != m_entries.begin()) {
        // The update did not take these as asked: they are not wanted.
        DropLocked(static_cast<size_t>(found - m_entries.begin()));
        m_wake.notify_all();
    }
    while (!m_entries.empty() && m_entries.front().id == id && !m_entries.front().done) {
        m_ready.wait_for(lock, std::chrono::milliseconds(10));
        if (m_entries.empty() || m_entries.front().id != id || m_entries.front().done) {
            break;
        }
        lock.unlock();
        const bool waitOn = !keepWaiting || keepWaiting();
        lock.lock();
        if (!waitOn) {
            DropLocked(m_entries.size());
            m_wake.notify_all();
            page.clear();
            return FetchResult::Cancelled;
        }
    }
    if (m_entries.empty() || m_entries.front().id != id) {
        return std::nullopt;  // dropped while it was awaited: the caller fetches it
    }
    Entry entry = std::move(m_entries.front());
    m_entries.pop_front();
    m_heldBytes -= entry.page.size();
    lock.unlock();
    m_wake.notify_all();  // room in the window for one more
    page = std::move(entry.page);
    return entry.result;
}

}  // namespace lw::update
