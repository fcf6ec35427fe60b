// SPDX-License-Identifier: GPL-3.0-or-later
// The transfer pool: one libcurl multi handle and the thread that drives it.
// A round starts what the source has for the free connections, lets libcurl
// move every transfer on, ends those that are done (following a redirect on
// the same handle, as the blocking functions do), and sleeps in the multi
// handle's poll until a connection has news or someone wakes it.
#include "core/transfer_pool.h"

#include <curl/curl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <vector>

#include "core/net_request.h"

namespace lw::core {

namespace {

struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using Multi = std::unique_ptr<CURLM, MultiDeleter>;

// The longest the thread sleeps without news: libcurl's own time-outs are
// looked at when it wakes, and it is told of them before this anyway.
constexpr int kLongestSleepMs = 1000;

// Lowers the calling thread below the priority it has, as a batch job that
// the scheduler lets wait rather than interrupt with: its work is never more
// urgent than the caller's. Lowering one's own priority is always allowed.
void RunBelow(int steps) {
    if (steps <= 0) {
        return;
    }
#ifdef SCHED_BATCH
    const sched_param normal{};
    // Refused only where the system has no such policy: the thread then
    // runs as it would anyway.
    pthread_setschedparam(pthread_self(), SCHED_BATCH, &normal);
#endif
    const id_t self = static_cast<id_t>(gettid());
    errno = 0;
    const int inherited = getpriority(PRIO_PROCESS, self);
    if (errno == 0) {
        setpriority(PRIO_PROCESS, self, std::min(inherited + steps, 19));  // 19 is the lowest
    }
}

}  // namespace

struct TransferPool::Driver {
    // A transfer under way: its job and the request performing it.
    struct Running {
        Job job;
        std::unique_ptr<detail::Request> request;
    };

    Driver(int connections, Source source)
        : source(std::move(source)), connections(static_cast<size_t>(std::max(connections, 1))) {
        detail::NewEasy();  // libcurl is set up before the multi handle
        multi.reset(curl_multi_init());
        if (!multi) {
            throw std::runtime_error("libcurl has no multi handle to give");
        }
        const long most = static_cast<long>(this->connections);
        curl_multi_setopt(multi.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS, most);
        curl_multi_setopt(multi.get(), CURLMOPT_MAX_HOST_CONNECTIONS, most);
        curl_multi_setopt(multi.get(), CURLMOPT_MAXCONNECTS, most);
    }

    // Starts what the source has while a connection is free.
    void StartMore() {
        while (running.size() < connections) {
            std::optional<Job> job = source();
            if (!job) {
                break;
            }
            auto transfer = std::make_unique<Running>();
            transfer->job = std::move(*job);
            detail::Easy easy;
            if (!spare.empty()) {
                easy = std::move(spare.back());
                spare.pop_back();
            } else {
                easy = detail::NewEasy();
            }
            transfer->request = std::make_unique<detail::Request>(
                std::move(easy), transfer->job.spec, transfer->job.progress);
            CURL* handle = transfer->request->Handle();
            if (handle == nullptr || curl_multi_add_handle(multi.get(), handle) != CURLM_OK) {
                End(*transfer, CURLE_FAILED_INIT);
                continue;
            }
            running.push_back(std::move(transfer));
        }
    }

    // Tells a transfer its result and keeps its handle for the next one.
    void End(Running& transfer, CURLcode code) {
        NetResult result;
        try {
            result = transfer.request->Finish(code);
        } catch (...) {
            // The job's own progress threw: told as a failure, as the
            // exception cannot leave this thread.
            result = NetResult();
            result.error = QStringLiteral("The transfer stopped on an error of its own.");
        }
        if (detail::Easy easy = transfer.request->Release()) {
            spare.push_back(std::move(easy));
        }
        if (transfer.job.done) {
            transfer.job.done(std::move(result));
        }
    }

    // Ends the transfers libcurl has finished; true when any ended or went
    // on to a redirect.
    bool EndFinished() {
        bool moved = false;
        int left = 0;
        while (CURLMsg* message = curl_multi_info_read(multi.get(), &left)) {
            if (message->msg != CURLMSG_DONE) {
                continue;
            }
            CURL* handle = message->easy_handle;
            CURLcode code = message->data.result;
            curl_multi_remove_handle(multi.get(), handle);
            moved = true;
            const auto it = std::find_if(running.begin(), running.end(), [handle](const auto& r) {
                return r->request->Handle() == handle;
            });
            if (it == running.end()) {
                continue;
            }
            if ((*it)->request->FollowOn(code)) {
                if (curl_multi_add_handle(multi.get(), handle) == CURLM_OK) {
                    continue;
                }
                code = CURLE_FAILED_INIT;  // the redirect could not be followed
            }
            const std::unique_ptr<Running> ended = std::move(*it);
            running.erase(it);
            End(*ended, code);
        }
        return moved;
    }

    void Drive() {
        while (!stopping.load()) {
            StartMore();
            int active = 0;
            curl_multi_perform(multi.get(), &active);
            if (EndFinished()) {
                continue;  // connections came free: start what waits first
            }
            curl_multi_poll(multi.get(), nullptr, 0, kLongestSleepMs, nullptr);
        }
        // Going away: what is under way stops here.
        for (const std::unique_ptr<Running>& transfer : running) {
            curl_multi_remove_handle(multi.get(), transfer->request->Handle());
            NetResult result;
            result.status = NetStatus::Cancelled;
            result.error = QStringLiteral("Stopped: ") + transfer->job.spec.url;
            if (transfer->job.done) {
                transfer->job.done(std::move(result));
            }
        }
        running.clear();
    }

    Source source;
    const size_t connections;
    Multi multi;
    std::vector<std::unique_ptr<Running>> running;
    std::vector<detail::Easy> spare;  // handles for later transfers
    std::atomic<bool> stopping{false};
};

TransferPool::TransferPool(int connections, Source source, int belowCaller)
    : m_driver(std::make_unique<Driver>(connections, std::move(source))) {
    m_thread = std::thread([this, belowCaller] {
        RunBelow(belowCaller);
        m_driver->Drive();
    });
}

TransferPool::~TransferPool() {
    m_driver->stopping = true;
    Wake();
    m_thread.join();
}

void TransferPool::Wake() {
    curl_multi_wakeup(m_driver->multi.get());
}

}  // namespace lw::core
