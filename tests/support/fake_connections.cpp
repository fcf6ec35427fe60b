// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/fake_connections.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace lw::test {

namespace {

class FakeRunner final : public core::TransferRunner {
public:
    FakeRunner(int connections, Source source, FakeFetch fetch)
        : m_source(std::move(source)), m_fetch(std::move(fetch)) {
        for (int i = 0; i < connections; ++i) {
            m_threads.emplace_back([this] { Serve(); });
        }
    }
    ~FakeRunner() override {
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_woken.notify_all();
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }
    FakeRunner(const FakeRunner&) = delete;
    FakeRunner& operator=(const FakeRunner&) = delete;

    void Wake() override {
        {
            const std::lock_guard lock(m_mutex);
            ++m_wakes;
        }
        m_woken.notify_all();
    }

private:
    void Serve() {
        for (;;) {
            quint64 seen = 0;
            {
                const std::lock_guard lock(m_mutex);
                if (m_stopping) {
                    return;
                }
                seen = m_wakes;
            }
            std::optional<Job> job = m_source();
            if (!job) {
                std::unique_lock lock(m_mutex);
                m_woken.wait(lock, [&] { return m_stopping || m_wakes != seen; });
                continue;
            }
            const std::function<bool()> stopped = [&] {
                {
                    const std::lock_guard lock(m_mutex);
                    if (m_stopping) {
                        return true;
                    }
                }
                return job->progress && !job->progress(0, 0);
            };
            QByteArray page;
            core::NetResult result;
            switch (m_fetch(job->spec.url, page, stopped)) {
                case update::FetchResult::Ok:
                    result.status = core::NetStatus::Ok;
                    result.httpCode = 200;
                    result.bytes = page.size();
                    result.body = std::move(page);
                    break;
                case update::FetchResult::Cancelled:
                    result.status = core::NetStatus::Cancelled;
                    break;
                case update::FetchResult::Failed:
                    result.status = core::NetStatus::Failed;
                    break;
            }
            job->done(std::move(result));
        }
    }

    Source m_source;
    FakeFetch m_fetch;
    std::mutex m_mutex;
    std::condition_variable m_woken;
    quint64 m_wakes = 0;
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};

}  // namespace

update::Connect FakeConnections(FakeFetch fetch) {
    return [fetch = std::move(fetch)](int connections, core::TransferRunner::Source source) {
        return std::make_unique<FakeRunner>(connections, std::move(source), fetch);
    };
}

}  // namespace lw::test
