// SPDX-License-Identifier: GPL-3.0-or-later
// core/net against real HTTP servers on loopback: pages to files (exact bytes,
// error pages, redirects, failures and cancels that leave no file), capped form
// answers, the proxy from the options and never from the environment, and the
// connection test.
#include <gtest/gtest.h>
#include <httplib.h>

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include "core/net.h"
#include "tests/support/loopback_server.h"
#include "tests/support/test_support.h"

using lw::core::CanReach;
using lw::core::HttpGet;
using lw::core::HttpGetToFile;
using lw::core::HttpPostForm;
using lw::core::kPostAnswerLimit;
using lw::core::NetOptions;
using lw::core::NetProgress;
using lw::core::NetResult;
using lw::core::NetStatus;
using lw::test::ClosedPort;
using lw::test::FastOptions;
using lw::test::LoopbackServer;
using lw::test::ReadAll;
using lw::test::ServeSlowly;
using lw::test::TempRoot;

namespace {

QString ClosedUrl(const char* scheme, int port) {
    return QString::fromLatin1(scheme) + QStringLiteral("://127.0.0.1:") + QString::number(port) +
           QStringLiteral("/page");
}

// Sets an environment variable until the returned guard goes, then puts the
// old value back.
[[nodiscard]] auto ScopedEnv(const char* name, const QByteArray& value) {
    const bool had = qEnvironmentVariableIsSet(name);
    const QByteArray old = qgetenv(name);
    qputenv(name, value);
    return qScopeGuard([name, had, old] { had ? qputenv(name, old) : qunsetenv(name); });
}

// Bytes of every value, NUL among them, the same on every run.
std::string BinaryBytes(size_t size) {
    std::mt19937 generator(20240611);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string out(size, '\0');
    for (size_t i = 1; i < size; ++i) {
        out[i] = static_cast<char>(byte(generator));
    }
    return out;
}

QStringList Entries(const QString& dir) {
    return QDir(dir).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

}  // namespace

// Each page replaces an older, longer file at the target, an error page too.
TEST(NetGet, WritesTheBodyByteForByteWithProgressAndUserAgent) {
    const std::string small("a\0b\r\n\xff\x00z", 8);
    const std::string large = BinaryBytes(5 * 1024 * 1024);
    const std::string gone = "<html>no such item</html>";
    std::mutex mutex;
    std::string userAgent;
    LoopbackServer server;
    server.Routes().Get("/small", [&](const httplib::Request& req, httplib::Response& res) {
        const std::lock_guard lock(mutex);
        userAgent = req.get_header_value("User-Agent");
        res.set_content(small, "application/octet-stream");
    });
    server.Routes().Get("/large", [&](const httplib::Request&, httplib::Response& res) {
        res.set_content(large, "application/octet-stream");
    });
    server.Routes().Get("/gone", [&](const httplib::Request&, httplib::Response& res) {
        res.status = 404;
        res.set_content(gone, "text/html");
    });
    server.Start();
    TempRoot root;

    NetOptions options = FastOptions();
    options.userAgent = QStringLiteral("LotwrightTest/9");
    struct Case {
        const char* path;
        const std::string* body;
        int httpCode;
    };
    for (const Case& c :
         {Case{"/small", &small, 200}, Case{"/large", &large, 200}, Case{"/gone", &gone, 404}}) {
        SCOPED_TRACE(c.path);
        const QByteArray expected(c.body->data(), static_cast<qsizetype>(c.body->size()));
        const QString file = root.Write(QStringLiteral("page.htm"), QByteArray(4096, 'o'));
        qint64 lastReceived = -1;
        qint64 lastTotal = -1;
        const NetResult result =
            HttpGetToFile(server.Url(c.path), file, options, [&](qint64 received, qint64 total) {
                lastReceived = received;
                lastTotal = total;
                return true;
            });
        ASSERT_EQ(result.status, NetStatus::Ok) << result.error.toStdString();
        EXPECT_TRUE(result.error.isEmpty());
        EXPECT_EQ(result.httpCode, c.httpCode);
        EXPECT_EQ(result.bytes, expected.size());
        EXPECT_EQ(lastReceived, expected.size());
        EXPECT_EQ(lastTotal, expected.size());
        const QByteArray written = ReadAll(file);
        ASSERT_EQ(written.size(), expected.size());
        EXPECT_TRUE(written == expected);
        EXPECT_EQ(Entries(root.Path()), QStringList{QStringLiteral("page.htm")});

        // The same page into memory, as an update scans it.
        const NetResult held = HttpGet(server.Url(c.path), options);
        ASSERT_EQ(held.status, NetStatus::Ok) << held.error.toStdString();
        EXPECT_EQ(held.bytes, expected.size());
        EXPECT_TRUE(held.body == expected);
    }
    const std::lock_guard lock(mutex);
    EXPECT_EQ(userAgent, "LotwrightTest/9");
}

TEST(NetGet, FollowsRedirectsOnlyOnTheHostOfTheAddress) {
    LoopbackServer server;
    std::atomic<int> arrivals{0};
    const auto redirect = [](const char* to, int status = 302) {
        return [to, status](const httplib::Request&, httplib::Response& res) {
            res.set_redirect(to, status);
        };
    };
    server.Routes().Get("/old", redirect("/middle"));
    server.Routes().Get("/middle", redirect("/new", 301));
    server.Routes().Get("/new", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("arrived", "text/plain");
    });
    server.Routes().Get("/loop", redirect("/loop"));
    server.Routes().Post("/form", redirect("/done", 303));
    server.Routes().Get("/done", [](const httplib::Request& req, httplib::Response& res) {
        res.set_content("done by " + req.method, "text/plain");
    });
    server.Routes().Get("/target", [&arrivals](const httplib::Request&, httplib::Response& res) {
        ++arrivals;
        res.set_content("should not be reached", "text/plain");
    });
    // The same server by another name.
    const auto away = [&server] {
        return "http://localhost:" + std::to_string(server.Port()) + "/target";
    };
    server.Routes().Get("/away", [away](const httplib::Request&, httplib::Response& res) {
        res.set_redirect(away());
    });
    server.Start();
    TempRoot root;
    const QString file = root.File(QStringLiteral("page.htm"));

    const NetResult result = HttpGetToFile(server.Url("/old"), file, FastOptions());
    ASSERT_EQ(result.status, NetStatus::Ok) << result.error.toStdString();
    EXPECT_EQ(result.httpCode, 200);
    EXPECT_EQ(ReadAll(file), QByteArray("arrived"));

    const NetResult other = HttpGet(server.Url("/away"), FastOptions());
    EXPECT_EQ(other.status, NetStatus::Failed);
    EXPECT_TRUE(other.error.contains(QString::fromStdString(away()))) << other.error.toStdString();
    EXPECT_TRUE(other.body.isEmpty());
    EXPECT_EQ(arrivals, 0) << "a request went to a host the address did not name";

    const NetResult loop = HttpGet(server.Url("/loop"), FastOptions());
    EXPECT_EQ(loop.status, NetStatus::Failed);
    EXPECT_TRUE(loop.error.contains(QStringLiteral("redirects"))) << loop.error.toStdString();

    const NetResult post = HttpPostForm(server.Url("/form"), "a=1", FastOptions());
    ASSERT_EQ(post.status, NetStatus::Ok) << post.error.toStdString();
    EXPECT_EQ(post.body, QByteArray("done by GET"));
}

// A request to a port where nothing listens fails with the address and leaves
// no file; https goes through the same path: it must fail on the connection,
// not be refused as an unknown protocol.
TEST(NetFailure, AServerNotListeningFailsWithTheAddressAndLeavesNoFile) {
    const int port = ClosedPort();
    ASSERT_GT(port, 0);
    TempRoot root;
    const QString file = root.File(QStringLiteral("page.htm"));
    struct Case {
        const char* scheme;
        bool post;
    };
    for (const Case& c : {Case{"http", false}, Case{"https", false}, Case{"http", true}}) {
        SCOPED_TRACE(std::string(c.post ? "post " : "get ") + c.scheme);
        const QString url = ClosedUrl(c.scheme, port);
        if (!c.post) {
            root.Write(QStringLiteral("page.htm"), "an old page");
        }
        const NetResult result = c.post ? HttpPostForm(url, "a=1", FastOptions())
                                        : HttpGetToFile(url, file, FastOptions());
        EXPECT_EQ(result.status, NetStatus::Failed);
        EXPECT_EQ(result.httpCode, 0);
        EXPECT_TRUE(result.body.isEmpty());
        EXPECT_TRUE(result.error.contains(url)) << result.error.toStdString();
        EXPECT_FALSE(result.error.contains(QStringLiteral("nsupported protocol")))
            << result.error.toStdString();
        EXPECT_TRUE(Entries(root.Path()).isEmpty())
            << Entries(root.Path()).join(u' ').toStdString();
    }
}

TEST(NetGet, TargetInAMissingFolderFailsWithThePath) {
    LoopbackServer server;
    std::atomic<int> requests{0};
    server.Routes().Get("/page", [&](const httplib::Request&, httplib::Response& res) {
        ++requests;
        res.set_content("page", "text/plain");
    });
    server.Start();
    TempRoot root;
    const QString file = root.File(QStringLiteral("missing/page.htm"));

    const NetResult result = HttpGetToFile(server.Url("/page"), file, FastOptions());
    EXPECT_EQ(result.status, NetStatus::Failed);
    EXPECT_TRUE(result.error.contains(file)) << result.error.toStdString();
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_EQ(requests, 0);  // nothing is fetched that could not be kept
}

// However a transfer ends before the page is whole, neither the older page
// nor a part of the new one is left at the target.
TEST(NetGet, ATransferEndedEarlyLeavesNoFile) {
    // Before the server, so that it outlives the server's threads.
    std::atomic<bool> released{false};
    LoopbackServer server;
    ServeSlowly(server, "/slow");
    server.Routes().Get("/stall", [&](const httplib::Request&, httplib::Response& res) {
        res.set_chunked_content_provider("text/plain", [&](size_t offset, httplib::DataSink& sink) {
            if (offset == 0) {
                return sink.write("first bytes", 11);
            }
            // Nothing more until the client has given up; bounded all the same.
            for (int i = 0; i < 3000 && !released && !server.Stopping(); ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            sink.write("rest", 4);
            sink.done();
            return true;
        });
    });
    server.Start();
    TempRoot root;
    const QString file = root.File(QStringLiteral("page.htm"));

    QByteArray atTargetMidway;
    qint64 receivedAtCancel = 0;
    const NetProgress cancelMidway = [&](qint64 received, qint64) {
        if (received < 2048) {
            return true;
        }
        // Nothing half-written may stand at the target while data arrives.
        atTargetMidway = ReadAll(file);
        receivedAtCancel = received;
        return false;
    };
    const NetProgress throwing = [](qint64 received, qint64) -> bool {
        if (received > 0) {
            throw std::runtime_error("stop");
        }
        return true;
    };
    NetOptions shortTotal = FastOptions();
    shortTotal.totalTimeoutMs = 200;
    NetOptions stallOnly = FastOptions();
    stallOnly.totalTimeoutMs = 0;  // only the stall can end it
    stallOnly.stallTimeoutSec = 1;
    struct Case {
        const char* name;
        const char* path;
        NetOptions options;
        NetProgress progress;
        std::optional<NetStatus> status;  // none: the exception reaches the caller
    };
    const Case cases[] = {
        {"cancelled", "/slow", FastOptions(), cancelMidway, NetStatus::Cancelled},
        {"over the total time", "/slow", shortTotal, {}, NetStatus::Failed},
        {"progress throws", "/slow", FastOptions(), throwing, std::nullopt},
        {"stalled, without waiting for a total time", "/stall", stallOnly, {}, NetStatus::Failed},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        root.Write(QStringLiteral("page.htm"), "an old page");
        if (c.status) {
            const NetResult result = HttpGetToFile(server.Url(c.path), file, c.options, c.progress);
            EXPECT_EQ(result.status, *c.status) << result.error.toStdString();
            EXPECT_FALSE(result.error.isEmpty());
        } else {
            EXPECT_THROW(HttpGetToFile(server.Url(c.path), file, c.options, c.progress),
                         std::runtime_error);
        }
        EXPECT_FALSE(QFile::exists(file));
        EXPECT_TRUE(Entries(root.Path()).isEmpty());
    }
    released = true;
    EXPECT_EQ(atTargetMidway, QByteArray("an old page"));
    EXPECT_GE(receivedAtCancel, 2048);
    EXPECT_LT(receivedAtCancel, 64 * 1024);

    // Into memory: a cancelled page hands back nothing of what had come.
    const NetResult held = HttpGet(server.Url("/slow"), FastOptions(),
                                   [](qint64 received, qint64) { return received < 2048; });
    EXPECT_EQ(held.status, NetStatus::Cancelled);
    EXPECT_TRUE(held.body.isEmpty());
}

TEST(NetGet, CookieJarCarriesCookiesToTheNextRequest) {
    std::mutex mutex;
    std::string cookieSeen;
    LoopbackServer server;
    server.Routes().Get("/signin", [](const httplib::Request&, httplib::Response& res) {
        res.set_header("Set-Cookie", "session=abc123; Path=/");
        res.set_content("signed in", "text/plain");
    });
    server.Routes().Get("/mine", [&](const httplib::Request& req, httplib::Response& res) {
        const std::lock_guard lock(mutex);
        cookieSeen = req.get_header_value("Cookie");
        res.set_content("yours", "text/plain");
    });
    server.Start();
    TempRoot root;
    NetOptions options = FastOptions();
    options.cookieFile = QFile::encodeName(root.File(QStringLiteral("cookies.txt")));

    ASSERT_TRUE(
        HttpGetToFile(server.Url("/signin"), root.File(QStringLiteral("a.htm")), options).ok());
    EXPECT_TRUE(QFile::exists(root.File(QStringLiteral("cookies.txt"))));
    ASSERT_TRUE(
        HttpGetToFile(server.Url("/mine"), root.File(QStringLiteral("b.htm")), options).ok());
    {
        const std::lock_guard lock(mutex);
        EXPECT_EQ(cookieSeen, "session=abc123");
    }

    // Without a jar nothing is remembered.
    ASSERT_TRUE(
        HttpGetToFile(server.Url("/mine"), root.File(QStringLiteral("c.htm")), FastOptions()).ok());
    const std::lock_guard lock(mutex);
    EXPECT_EQ(cookieSeen, "");
}

TEST(NetPost, SendsTheBodyWithItsContentType) {
    LoopbackServer server;
    server.Routes().Post("/echo", [](const httplib::Request& req, httplib::Response& res) {
        std::string answer = "type=" + req.get_header_value("Content-Type") + "\n";
        if (req.has_param("name")) {
            answer += "name=" + req.get_param_value("name") + "\n";
            answer += "qty=" + req.get_param_value("qty") + "\n";
        }
        answer += "body=" + req.body;
        res.set_content(answer, "text/plain");
    });
    server.Start();

    const NetResult form =
        HttpPostForm(server.Url("/echo"), "name=O%27Brien+%26+Co&qty=3", FastOptions());
    ASSERT_EQ(form.status, NetStatus::Ok) << form.error.toStdString();
    EXPECT_EQ(form.httpCode, 200);
    EXPECT_EQ(form.body, QByteArray("type=application/x-www-form-urlencoded\n"
                                    "name=O'Brien & Co\n"
                                    "qty=3\n"
                                    "body=name=O%27Brien+%26+Co&qty=3"));
    EXPECT_EQ(form.bytes, form.body.size());

    // A larger body of another type goes out whole and unparsed.
    const QByteArray text(20000, 't');
    const NetResult plain =
        HttpPostForm(server.Url("/echo"), text, FastOptions(), {}, "text/plain; charset=utf-8");
    ASSERT_EQ(plain.status, NetStatus::Ok) << plain.error.toStdString();
    EXPECT_EQ(plain.body, "type=text/plain; charset=utf-8\nbody=" + text);

    const NetResult cancelled = HttpPostForm(server.Url("/echo"), "a=1", FastOptions(),
                                             [](qint64, qint64) { return false; });
    EXPECT_EQ(cancelled.status, NetStatus::Cancelled);
    EXPECT_FALSE(cancelled.error.isEmpty());
}

TEST(NetPost, KeepsOnlyTheFirst75000BytesOfTheAnswer) {
    const std::string large = BinaryBytes(200000);
    LoopbackServer server;
    server.Routes().Post("/big", [&](const httplib::Request&, httplib::Response& res) {
        res.set_content(large, "application/octet-stream");
    });
    server.Routes().Post("/exact", [&](const httplib::Request&, httplib::Response& res) {
        res.set_content(large.substr(0, kPostAnswerLimit), "application/octet-stream");
    });
    server.Start();

    const NetResult big = HttpPostForm(server.Url("/big"), "a=1", FastOptions());
    ASSERT_EQ(big.status, NetStatus::Ok) << big.error.toStdString();
    EXPECT_EQ(big.bytes, 200000);  // read to the end, not cut off
    ASSERT_EQ(big.body.size(), kPostAnswerLimit);
    EXPECT_TRUE(big.body == QByteArray(large.data(), kPostAnswerLimit));

    const NetResult exact = HttpPostForm(server.Url("/exact"), "a=1", FastOptions());
    ASSERT_EQ(exact.status, NetStatus::Ok) << exact.error.toStdString();
    EXPECT_TRUE(exact.body == big.body);
}

// The "proxy" is a plain server that answers every request and records the
// request target: a client talking to an HTTP proxy names the full address.
class NetProxy : public ::testing::Test {
protected:
    void SetUp() override {
        auto record = [this](const httplib::Request& req, httplib::Response& res) {
            const std::lock_guard lock(m_mutex);
            m_targets.push_back(req.method + " " + req.target);
            res.set_content("via proxy", "text/plain");
        };
        m_proxy.Routes().Get(".*", record);
        m_proxy.Routes().Post(".*", record);
        m_proxy.Start();
    }

    std::vector<std::string> Targets() {
        const std::lock_guard lock(m_mutex);
        return m_targets;
    }

    NetOptions ProxyOptions() const {
        NetOptions options = FastOptions();
        options.proxyHost = QStringLiteral("127.0.0.1");
        options.proxyPort = m_proxy.Port();
        return options;
    }

    LoopbackServer m_proxy;
    std::mutex m_mutex;
    std::vector<std::string> m_targets;
};

TEST_F(NetProxy, RequestsGoToTheProxyEvenWhenTheEnvironmentExemptsTheHost) {
    // Nothing listens at the origin: only the proxy can answer.
    const int origin = ClosedPort();
    const QString url = ClosedUrl("http", origin);
    const std::string absolute = url.toStdString();
    const auto noProxy = ScopedEnv("no_proxy", "*");
    const auto noProxyUpper = ScopedEnv("NO_PROXY", "*");
    TempRoot root;

    const NetResult get = HttpGetToFile(url, root.File(QStringLiteral("p.htm")), ProxyOptions());
    ASSERT_EQ(get.status, NetStatus::Ok) << get.error.toStdString();
    EXPECT_EQ(ReadAll(root.File(QStringLiteral("p.htm"))), QByteArray("via proxy"));

    const NetResult post = HttpPostForm(url, "a=1", ProxyOptions());
    ASSERT_EQ(post.status, NetStatus::Ok) << post.error.toStdString();
    EXPECT_EQ(post.body, QByteArray("via proxy"));

    EXPECT_EQ(Targets(), (std::vector<std::string>{"GET " + absolute, "POST " + absolute}));
}

TEST_F(NetProxy, ProxiesFromTheEnvironmentAreNeverUsed) {
    LoopbackServer origin;
    origin.Routes().Get("/page", [](const httplib::Request&, httplib::Response& res) {
        res.set_content("direct", "text/plain");
    });
    origin.Start();
    const QByteArray proxyUrl = "http://127.0.0.1:" + QByteArray::number(m_proxy.Port());
    const auto httpProxy = ScopedEnv("http_proxy", proxyUrl);
    const auto allProxy = ScopedEnv("ALL_PROXY", proxyUrl);
    const auto allProxyLower = ScopedEnv("all_proxy", proxyUrl);
    const auto noProxy = ScopedEnv("no_proxy", "");
    const auto noProxyUpper = ScopedEnv("NO_PROXY", "");
    TempRoot root;

    const NetResult get =
        HttpGetToFile(origin.Url("/page"), root.File(QStringLiteral("p.htm")), FastOptions());
    ASSERT_EQ(get.status, NetStatus::Ok) << get.error.toStdString();
    EXPECT_EQ(ReadAll(root.File(QStringLiteral("p.htm"))), QByteArray("direct"));
    // The connection test goes to the host itself, which is not listening.
    EXPECT_FALSE(CanReach(ClosedUrl("http", ClosedPort()), FastOptions(), 1000));
    EXPECT_TRUE(Targets().empty());
}

// The connection test only connects, to the host or else to the proxy, and
// sends no request.
TEST_F(NetProxy, CanReachConnectsToTheHostOrTheProxyAndSendsNoRequest) {
    const QString listening = QStringLiteral("127.0.0.1:") + QString::number(m_proxy.Port());
    const QString closed = ClosedUrl("http", ClosedPort());
    EXPECT_TRUE(CanReach(m_proxy.Url("/any/page"), FastOptions(), 1000));
    EXPECT_TRUE(CanReach(listening, FastOptions(), 1000));  // no scheme
    EXPECT_FALSE(CanReach(closed, FastOptions(), 1000));
    EXPECT_FALSE(CanReach(QString(), FastOptions(), 1000));

    // With a proxy, the proxy is tried instead of the host.
    EXPECT_TRUE(CanReach(closed, ProxyOptions(), 1000));
    NetOptions deadProxy = FastOptions();
    deadProxy.proxyHost = QStringLiteral("127.0.0.1");
    deadProxy.proxyPort = ClosedPort();
    EXPECT_FALSE(CanReach(QStringLiteral("http://") + listening + u'/', deadProxy, 1000));
    EXPECT_TRUE(Targets().empty());
}
