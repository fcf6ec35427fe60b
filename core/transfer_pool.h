// SPDX-License-Identifier: GPL-3.0-or-later
// Transfers side by side over a few connections, all driven by one thread of
// the pool's own: the connections of an update. One thread waiting on every
// connection at once wakes once for all the answers that have come, where a
// thread per connection would wake for each; on a distant site most of the
// processor time of a page is that waking.
//
// The pool asks its source for the next transfer whenever a connection is
// free, and tells each transfer's end to the transfer itself, both on the
// pool's thread. Between transfers it sleeps, costing nothing, until a
// connection has news or Wake is called.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "core/net.h"

namespace lw::core {

// What runs transfers for a source: a TransferPool, or a stand-in that
// fetches otherwise.
class TransferRunner {
public:
    // A transfer to start: progress (which may be empty) is told on the
    // runner's thread as data comes, and false from it stops the transfer
    // (Cancelled); done is told its result on the runner's thread once it
    // has ended, however it ended.
    struct Job {
        TransferSpec spec;
        NetProgress progress;
        std::function<void(NetResult&& result)> done;
    };
    // Asked on the runner's thread whenever a connection is free: the next
    // transfer, or nothing when there is none to start now.
    using Source = std::function<std::optional<Job>()>;

    virtual ~TransferRunner() = default;
    // The source may have a transfer to start, or a transfer under way may
    // want to stop: look again soon. Safe from any thread.
    virtual void Wake() = 0;
};

class TransferPool final : public TransferRunner {
public:
    // connections: at most this many, to any one host and in all, each
    // transfer reusing one that is open. The pool's thread runs belowCaller
    // steps under the priority of the thread that makes the pool (Linux keeps
    // a priority per thread), so that the caller, who takes what comes, goes
    // first when the processors are busy.
    TransferPool(int connections, Source source, int belowCaller = 0);
    // Stops the transfers under way (each told Cancelled) and closes the
    // connections.
    ~TransferPool() override;
    TransferPool(const TransferPool&) = delete;
    TransferPool& operator=(const TransferPool&) = delete;

    void Wake() override;

private:
    struct Driver;
    std::unique_ptr<Driver> m_driver;
    std::thread m_thread;
};

}  // namespace lw::core
