// SPDX-License-Identifier: GPL-3.0-or-later
// The transfer pool against a real HTTP server on loopback: every transfer
// its source gives is answered once, over no more connections than it was
// given and no more at once; redirects, error pages, failures and capped
// answers come out as the blocking calls give them; a transfer told to stop
// ends Cancelled, and so do those under way when the pool goes; its thread
// runs below the one that made it.
#include <gtest/gtest.h>
#include <httplib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QSet>
#include <QString>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "core/net.h"
#include "core/transfer_pool.h"
#include "tests/support/loopback_server.h"

using lw::core::NetResult;
using lw::core::NetStatus;
using lw::core::TransferPool;
using lw::core::TransferRunner;
using lw::core::TransferSpec;
using lw::test::FastOptions;
using lw::test::LoopbackServer;
using lw::test::ServeSlowly;

namespace {

// A source of transfers for the pool, and what became of them: results by
// the order in which the transfers were given.
class Jobs {
public:
    // Adds a transfer; its result goes to slot index of Results().
    void Add(TransferSpec spec, lw::core::NetProgress progress = {}) {
        const std::lock_guard lock(m_mutex);
        const size_t index = m_results.size();
        m_results.emplace_back();
        TransferRunner::Job job;
        job.spec = std::move(spec);
        job.progress = std::move(progress);
        job.done = [this, index](NetResult&& result) {
            const std::lock_guard doneLock(m_mutex);
            m_results[index] = std::move(result);
            ++m_done;
            m_doneOnCaller = m_doneOnCaller || std::this_thread::get_id() == m_caller;
            m_ended.notify_all();
        };
        m_waiting.push_back(std::move(job));
    }
    TransferRunner::Source Source() {
        return [this]() -> std::optional<TransferRunner::Job> {
            const std::lock_guard lock(m_mutex);
            if (m_waiting.empty()) {
                return std::nullopt;
            }
            TransferRunner::Job job = std::move(m_waiting.front());
            m_waiting.pop_front();
            return job;
        };
    }
    // Waits until n transfers have ended.
    bool WaitForDone(size_t n) {
        std::unique_lock lock(m_mutex);
        return m_ended.wait_for(lock, std::chrono::seconds(20), [&] { return m_done >= n; });
    }
    std::vector<NetResult> Results() {
        const std::lock_guard lock(m_mutex);
        return m_results;
    }
    bool DoneOnCaller() {
        const std::lock_guard lock(m_mutex);
        return m_doneOnCaller;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::deque<TransferRunner::Job> m_waiting;
    std::vector<NetResult> m_results;
    size_t m_done = 0;
    const std::thread::id m_caller = std::this_thread::get_id();
    bool m_doneOnCaller = false;
};

TransferSpec Get(const QString& url) {
    TransferSpec spec;
    spec.url = url;
    spec.options = FastOptions();
    return spec;
}

}  // namespace

// Pages that take a moment each, many more than there are connections: the
// server counts the connections they came over and how many were answered at
// once.
TEST(TransferPool, AnswersEveryTransferOverNoMoreConnectionsThanItWasGiven) {
    LoopbackServer server;
    std::mutex mutex;
    QSet<int> ports;
    int atOnce = 0;
    int mostAtOnce = 0;
    server.Routes().Get(R"(/page/(\d+))", [&](const httplib::Request& req, httplib::Response& res) {
        {
            const std::lock_guard lock(mutex);
            ports.insert(req.remote_port);
            mostAtOnce = std::max(mostAtOnce, ++atOnce);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        {
            const std::lock_guard lock(mutex);
            --atOnce;
        }
        res.set_content("page " + req.matches[1].str(), "text/plain");
    });
    // The server keeps a connection for every page of the test: each port it
    // sees is a connection the pool opened.
    server.Routes().set_keep_alive_max_count(100);
    server.Start();
    for (const int connections : {1, 3}) {
        SCOPED_TRACE(connections);
        {
            const std::lock_guard lock(mutex);
            ports.clear();
            mostAtOnce = 0;
        }
        Jobs jobs;
        const int pages = 24;
        for (int i = 0; i < pages; ++i) {
            jobs.Add(Get(server.Url("/page/") + QString::number(i)));
        }
        {
            TransferPool pool(connections, jobs.Source());
            pool.Wake();
            ASSERT_TRUE(jobs.WaitForDone(pages));
        }
        const std::vector<NetResult> results = jobs.Results();
        for (int i = 0; i < pages; ++i) {
            const NetResult& result = results[static_cast<size_t>(i)];
            ASSERT_EQ(result.status, NetStatus::Ok) << i << ' ' << result.error.toStdString();
            EXPECT_EQ(result.httpCode, 200);
            EXPECT_EQ(result.body, "page " + QByteArray::number(i));
        }
        EXPECT_FALSE(jobs.DoneOnCaller());
        const std::lock_guard lock(mutex);
        EXPECT_LE(ports.size(), connections);
        EXPECT_LE(mostAtOnce, connections);
        if (connections > 1) {
            EXPECT_GT(mostAtOnce, 1) << "the transfers went one after another";
        }
    }
}

// Each case once through the pool and once through the blocking call of
// core/net: the two agree on status, code, body and message.
TEST(TransferPool, GivesTheResultsTheBlockingCallsGive) {
    LoopbackServer server;
    std::atomic<int> strayArrivals{0};
    server.Routes().Get("/old", [](const httplib::Request&, httplib::Response& res) {
        res.set_redirect("/new", 301);
    });
    server.Routes().Get("/new", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("arrived", "text/plain");
    });
    server.Routes().Get("/loop", [](const httplib::Request&, httplib::Response& res) {
        res.set_redirect("/loop");
    });
    server.Routes().Get("/target", [&](const httplib::Request&, httplib::Response& res) {
        ++strayArrivals;
        res.set_content("should not be reached", "text/plain");
    });
    server.Routes().Get("/away", [&server](const httplib::Request&, httplib::Response& res) {
        res.set_redirect("http://localhost:" + std::to_string(server.Port()) + "/target");
    });
    server.Routes().Get("/gone", [](const httplib::Request&, httplib::Response& res) {
        res.status = 404;
        res.set_content("no such page", "text/html");
    });
    server.Routes().Post("/form", [](const httplib::Request& req, httplib::Response& res) {
        res.set_content(req.get_header_value("Content-Type") + " " + req.body, "text/plain");
    });
    server.Routes().Post("/long", [](const httplib::Request&, httplib::Response& res) {
        res.set_content(std::string(100000, 'a'), "text/plain");
    });
    server.Routes().Post("/moved", [](const httplib::Request&, httplib::Response& res) {
        res.set_redirect("/done", 303);
    });
    server.Routes().Get("/done", [](const httplib::Request& req, httplib::Response& res) {
        res.set_content("done by " + req.method, "text/plain");
    });
    server.Start();

    const auto post = [&server](const char* path, const QByteArray& body) {
        TransferSpec spec = Get(server.Url(path));
        spec.post = true;
        spec.body = body;
        spec.contentType = "application/x-www-form-urlencoded";
        return spec;
    };
    const struct {
        const char* name;
        TransferSpec spec;
        NetStatus status;
        qsizetype bodySize;  // -1: not looked at beyond the agreement
    } cases[] = {
        {"two redirects on the host", Get(server.Url("/old")), NetStatus::Ok, 7},
        {"a redirect to another host", Get(server.Url("/away")), NetStatus::Failed, 0},
        {"redirects without end", Get(server.Url("/loop")), NetStatus::Failed, 0},
        {"an error page", Get(server.Url("/gone")), NetStatus::Ok, 12},
        {"nothing listening",
         Get(QStringLiteral("http://127.0.0.1:%1/x").arg(lw::test::ClosedPort())),
         NetStatus::Failed, 0},
        {"a post", post("/form", "a=1&b=%27"), NetStatus::Ok, -1},
        {"a post's long answer", post("/long", "x=1"), NetStatus::Ok, lw::core::kPostAnswerLimit},
        {"a post sent on as a GET", post("/moved", "a=1"), NetStatus::Ok, -1},
    };
    Jobs jobs;
    for (const auto& c : cases) {
        jobs.Add(c.spec);
    }
    {
        TransferPool pool(2, jobs.Source());
        pool.Wake();
        ASSERT_TRUE(jobs.WaitForDone(std::size(cases)));
    }
    const std::vector<NetResult> results = jobs.Results();
    for (size_t i = 0; i < std::size(cases); ++i) {
        const auto& c = cases[i];
        SCOPED_TRACE(c.name);
        const NetResult& pooled = results[i];
        const NetResult direct =
            c.spec.post ? lw::core::HttpPostForm(c.spec.url, c.spec.body, c.spec.options, {},
                                                 c.spec.contentType)
                        : lw::core::HttpGet(c.spec.url, c.spec.options);
        EXPECT_EQ(pooled.status, c.status) << pooled.error.toStdString();
        EXPECT_EQ(pooled.status, direct.status);
        EXPECT_EQ(pooled.httpCode, direct.httpCode);
        EXPECT_EQ(pooled.body, direct.body);
        EXPECT_EQ(pooled.error, direct.error);
        if (c.bodySize >= 0) {
            EXPECT_EQ(pooled.body.size(), c.bodySize);
        }
    }
    EXPECT_EQ(results[5].body, QByteArray("application/x-www-form-urlencoded a=1&b=%27"));
    EXPECT_EQ(results[7].body, QByteArray("done by GET"));
    EXPECT_EQ(strayArrivals, 0) << "a request went to a host the address did not name";
}

// Slow pages: transfers still under way when they are stopped.
TEST(TransferPool, ATransferToldToStopAndThoseUnderWayWhenThePoolGoesEndCancelled) {
    LoopbackServer server;
    ServeSlowly(server, "/slow");
    server.Start();

    Jobs jobs;
    std::atomic<bool> stop{false};
    std::atomic<qint64> seen{0};
    jobs.Add(Get(server.Url("/slow")), [&](qint64 received, qint64) {
        seen = received;
        return !stop.load();
    });
    jobs.Add(Get(server.Url("/slow")));
    {
        TransferPool pool(2, jobs.Source());
        pool.Wake();
        for (int i = 0; i < 2000 && seen.load() == 0; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_GT(seen.load(), 0);
        stop = true;
        pool.Wake();
        ASSERT_TRUE(jobs.WaitForDone(1));
    }  // the second is still under way
    ASSERT_TRUE(jobs.WaitForDone(2));
    for (const NetResult& result : jobs.Results()) {
        EXPECT_EQ(result.status, NetStatus::Cancelled) << result.error.toStdString();
        EXPECT_LT(result.body.size(), 64 * 1024);
    }
}

// The pool's thread runs below the priority of the thread that made it, down
// to the lowest there is, and leaves the maker's own as it was.
TEST(TransferPool, ItsThreadRunsBelowTheThreadThatMadeIt) {
    LoopbackServer server;
    server.Routes().Get("/page", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("page", "text/plain");
    });
    server.Start();
    const auto niceness = [] {
        errno = 0;
        const int value = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
        return errno == 0 ? value : -100;
    };
    for (const int raised : {0, 4, 15}) {
        SCOPED_TRACE(raised);
        int maker = -100;
        int makerAfter = -100;
        std::atomic<int> pool = -100;
        // A thread of its own: a raised priority cannot be taken back.
        std::thread([&] {
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), niceness() + raised);
            maker = niceness();
            Jobs jobs;
            jobs.Add(Get(server.Url("/page")), [&](qint64, qint64) {
                pool = niceness();
                return true;
            });
            TransferPool transfers(1, jobs.Source(), 10);
            transfers.Wake();
            EXPECT_TRUE(jobs.WaitForDone(1));
            makerAfter = niceness();
        }).join();
        ASSERT_NE(maker, -100);
        EXPECT_EQ(makerAfter, maker);
        EXPECT_EQ(pool.load(), std::min(maker + 10, 19));
    }
}
