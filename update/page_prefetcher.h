// SPDX-License-Identifier: GPL-3.0-or-later
// Pages fetched ahead of an update, on a thread of their own. Once a list
// page is read, the addresses of its item pages are known (a scan that only
// collects them), so each item page is on its way while the records before it
// are written. The update takes the pages in the order it asked for them; an
// address it did not ask for ahead is fetched as ever.
//
// The fetching thread never touches the session, the Ui or the database: it
// only runs the fetch it was given, which must be safe on another thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "update/site_session.h"

namespace lw::update {

// A fetch for the fetching thread: stop turns true when the transfer under
// way is to be given up.
using AheadFetch =
    std::function<FetchResult(const QString& url, QByteArray& page, const std::atomic<bool>& stop)>;

class PagePrefetcher {
public:
    // depth: how many pages may be fetched and not yet taken; connections:
    // how many are fetched at once, each on a thread and a connection of its
    // own, so that one page's round trip does not wait for another's;
    // maxBytes: no page is started while the pages fetched and not yet taken
    // hold this many bytes or more (the next one to be taken always may be).
    PagePrefetcher(AheadFetch fetch, int depth, int connections = 1,
                   qint64 maxBytes = qint64{64} * 1024 * 1024);
    // Stops the transfer under way and drops every page not taken.
    ~PagePrefetcher();
    PagePrefetcher(const PagePrefetcher&) = delete;
    PagePrefetcher& operator=(const PagePrefetcher&) = delete;

    // Adds addresses, in the order in which they will be taken.
    void Ask(const QStringList& urls);
    // Drops every address asked for and not yet taken.
    void Drop();

    // The page of url when it was asked for: the first such address still
    // waiting, with the addresses asked for before it dropped (the update
    // went another way). Until it has come, keepWaiting is called every few
    // milliseconds; when it returns false, everything asked for is dropped
    // and the answer is Cancelled. Nothing (no value) when url was not asked
    // for: the caller fetches it itself.
    std::optional<FetchResult> Take(const QString& url, QByteArray& page,
                                    const std::function<bool()>& keepWaiting);

    // Pages asked for and not yet taken or dropped.
    int Waiting() const;

private:
    // A fetching thread, and the flag that tells its transfer to stop.
    struct Worker {
        std::thread thread;
        std::atomic<bool> stop{false};
    };
    struct Entry {
        quint64 id = 0;
        QString url;
        Worker* fetcher = nullptr;  // set when started
        bool started = false;
        bool done = false;
        FetchResult result = FetchResult::Failed;
        QByteArray page;
    };

    void Work(Worker& worker);
    // Drops entries [0, end) of the queue, stopping the transfers under way.
    void DropLocked(size_t end);

    AheadFetch m_fetch;
    const size_t m_depth;
    const qint64 m_maxBytes;
    qint64 m_heldBytes = 0;  // of pages fetched and not yet taken
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;   // the fetching thread: work or stop
    std::condition_variable m_ready;  // the taker: a page came
    std::deque<Entry> m_entries;
    quint64 m_nextId = 0;
    bool m_stopping = false;
    std::deque<Worker> m_workers;
};

}  // namespace lw::update
