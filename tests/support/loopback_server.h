// SPDX-License-Identifier: GPL-3.0-or-later
// Servers and ports on 127.0.0.1 for the suites that talk to a network peer:
// an httplib server on a free port, listening on its own thread for the life
// of the object, a route that answers slowly, and a port that nothing
// listens on. Nothing here reaches
// beyond the loopback address.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QString>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "core/net.h"

namespace lw::test {

class LoopbackServer {
public:
    LoopbackServer() = default;
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() {
        m_stopping = true;
        if (m_thread.joinable()) {
            m_server.stop();
            m_thread.join();
        }
    }

    httplib::Server& Routes() { return m_server; }
    // True once the server is being torn down: slow handlers end early.
    bool Stopping() const { return m_stopping; }

    // Call after the routes are set.
    void Start() {
        // A worker keeps an idle connection open this long, and the server's
        // stop waits for it: a short wait keeps the suites quick.
        m_server.set_keep_alive_timeout(1);
        m_port = m_server.bind_to_any_port("127.0.0.1");
        ASSERT_GT(m_port, 0);
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
        // stop() does nothing until the accept loop runs, so wait for it.
        for (int i = 0; i < 2000 && !m_server.is_running(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ASSERT_TRUE(m_server.is_running());
    }

    int Port() const { return m_port; }
    QString Url(const char* path) const {
        return QStringLiteral("http://127.0.0.1:") + QString::number(m_port) +
               QString::fromLatin1(path);
    }

private:
    httplib::Server m_server;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    int m_port = 0;
};

// Time-outs short enough that a test against a loopback server never waits
// long for what will not come.
inline core::NetOptions FastOptions() {
    core::NetOptions options;
    options.connectTimeoutMs = 2000;
    options.totalTimeoutMs = 5000;
    return options;
}

// A body sent in 1 KB chunks 20 ms apart, at most 64 of them, so that a test
// can act in the middle of a transfer and the server still ends on its own.
inline void ServeSlowly(LoopbackServer& server, const char* path) {
    server.Routes().Get(path, [&server](const httplib::Request&, httplib::Response& res) {
        res.set_chunked_content_provider(
            "application/octet-stream", [&server](size_t offset, httplib::DataSink& sink) {
                if (server.Stopping() || offset >= 64 * 1024) {
                    sink.done();
                    return true;
                }
                const std::string chunk(1024, 'x');
                if (!sink.write(chunk.data(), chunk.size())) {
                    return false;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                return true;
            });
    });
}

// A loopback port that nothing listens on: bound by the kernel's choice, then
// closed again.
inline int ClosedPort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof address;
    int port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
        port = ntohs(address.sin_port);
    }
    ::close(fd);
    return port;
}

}  // namespace lw::test
