// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-site: the demo marketplace that the shipped rules describe. It
// reads its options (Qt's command-line parser is its one use of Qt), opens
// (and when asked, seeds) its own database, binds to 127.0.0.1 and serves
// until it is stopped. It never listens beyond loopback.
#include <httplib.h>
#include <signal.h>
#include <unistd.h>

#include <QCommandLineParser>
#include <QStringList>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "site/categories.h"
#include "site/market_store.h"
#include "site/routes.h"
#include "site/seeder.h"
#include "site/site_clock.h"
#include "site/site_text.h"

namespace {

using lw::site::SiteSettings;

constexpr const char* kUsage =
    "Usage: lotwright-site [options]\n"
    "  --port P           port on 127.0.0.1 (0, the default: any free port)\n"
    "  --db FILE          the site's database (default: a file in the temp folder,\n"
    "                     removed on exit)\n"
    "  --seed N           start afresh with N deterministic members (at least 5)\n"
    "  --sales S          with a seed: S more ended sales of the demo member\n"
    "  --bids B           with a seed: B more lots the demo member bid on\n"
    "  --clock-factor F   the site clock runs F times as fast (0 stops it; default 1)\n"
    "  --start TIME       the site clock's start, \"YYYY-MM-DD HH:MM:SS\" or epoch seconds\n"
    "                     (default: now)\n"
    "  --rules DIR        rule files served at /rules/ (default: rules/ beside the program,\n"
    "                     else the installed ../share/lotwright/rules)\n"
    "  --rule-version V   what the version check answers (default: the served site.pro's\n"
    "                     Current Protocol)\n"
    "  --page-size K      records per list page (default 50)\n"
    "  --latency MS       every answer leaves MS milliseconds after its request came, a\n"
    "                     new connection's first answer MS more: loopback plays a site\n"
    "                     that far away (default 0)\n"
    "  --quiet            no request log on stderr (one line per request, with the port\n"
    "                     of the connection it came over)\n"
    "  --print-categories write the category directory as category.pro holds it, and exit\n"
    "  -h, --help         this text\n"
    "  -v, --version      the program's version\n";

struct Options {
    int port = 0;
    std::string db;
    std::optional<int> seed;
    int sales = 0;
    int bids = 0;
    double clockFactor = 1.0;
    std::optional<std::int64_t> start;
    std::string rulesDir;
    std::string ruleVersion;
    int pageSize = 50;
    int latencyMs = 0;
    bool quiet = false;
    bool printCategories = false;
};

[[noreturn]] void Usage(const std::string& problem) {
    std::cerr << "lotwright-site: " << problem << "\n" << kUsage;
    std::exit(2);
}

int IntArgument(const std::string& option, const std::string& value, int low, int high) {
    try {
        size_t used = 0;
        const int number = std::stoi(value, &used);
        if (used == value.size() && number >= low && number <= high) {
            return number;
        }
    } catch (const std::exception&) {
    }
    Usage(option + " takes a whole number from " + std::to_string(low) + " to " +
          std::to_string(high));
}

Options ParseOptions(int argc, char** argv) {
    QCommandLineParser parser;
    auto valued = [&parser](const char* name) {
        QCommandLineOption option(QString::fromLatin1(name), QString(), QStringLiteral("VALUE"));
        parser.addOption(option);
        return option;
    };
    const QCommandLineOption port = valued("port");
    const QCommandLineOption db = valued("db");
    const QCommandLineOption seed = valued("seed");
    const QCommandLineOption sales = valued("sales");
    const QCommandLineOption bids = valued("bids");
    const QCommandLineOption clockFactor = valued("clock-factor");
    const QCommandLineOption start = valued("start");
    const QCommandLineOption rules = valued("rules");
    const QCommandLineOption ruleVersion = valued("rule-version");
    const QCommandLineOption pageSize = valued("page-size");
    const QCommandLineOption latency = valued("latency");
    const QCommandLineOption quiet(QStringLiteral("quiet"));
    const QCommandLineOption printCategories(QStringLiteral("print-categories"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOptions({quiet, printCategories, help, version});

    QStringList args;
    for (int i = 0; i < argc; ++i) {
        args << QString::fromLocal8Bit(argv[i]);
    }
    if (!parser.parse(args)) {
        Usage(parser.errorText().toStdString());
    }
    if (!parser.positionalArguments().isEmpty()) {
        Usage("unexpected word " + parser.positionalArguments().constFirst().toStdString());
    }
    if (parser.isSet(help)) {
        std::cout << kUsage;
        std::exit(0);
    }
    if (parser.isSet(version)) {
        std::cout << "lotwright-site " LW_VERSION "\n";
        std::exit(0);
    }
    auto text = [&parser](const QCommandLineOption& option) {
        return parser.value(option).toStdString();
    };
    Options options;
    options.quiet = parser.isSet(quiet);
    options.printCategories = parser.isSet(printCategories);
    if (parser.isSet(port)) {
        options.port = IntArgument("--port", text(port), 0, 65535);
    }
    options.db = text(db);
    if (parser.isSet(seed)) {
        options.seed = IntArgument("--seed", text(seed), 0, 100000);
    }
    if (parser.isSet(sales)) {
        options.sales = IntArgument("--sales", text(sales), 0, 1000000);
    }
    if (parser.isSet(bids)) {
        options.bids = IntArgument("--bids", text(bids), 0, 1000000);
    }
    if (parser.isSet(clockFactor)) {
        try {
            options.clockFactor = std::stod(text(clockFactor));
        } catch (const std::exception&) {
            Usage("--clock-factor takes a number");
        }
        if (options.clockFactor < 0) {
            Usage("--clock-factor cannot be negative");
        }
    }
    if (parser.isSet(start)) {
        options.start = lw::site::ParseStartTime(text(start));
        if (!options.start) {
            Usage("--start takes \"YYYY-MM-DD HH:MM:SS\" or epoch seconds");
        }
    }
    options.rulesDir = text(rules);
    options.ruleVersion = text(ruleVersion);
    if (parser.isSet(pageSize)) {
        options.pageSize = IntArgument("--page-size", text(pageSize), 1, 1000);
    }
    if (parser.isSet(latency)) {
        options.latencyMs = IntArgument("--latency", text(latency), 0, 600000);
    }
    if ((options.sales > 0 || options.bids > 0) && !options.seed) {
        Usage("--sales and --bids need --seed");
    }
    return options;
}

std::filesystem::path ProgramFolder() {
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::current_path() : self.parent_path();
}

// The Current Protocol of the served site.pro, so that a program holding the
// same rules is told it is up to date.
std::string ServedVersion(const std::string& rulesDir) {
    std::ifstream file(rulesDir + "/site.pro", std::ios::binary);
    std::string line;
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        const std::string key = "Current Protocol=";
        if (line.compare(0, key.size(), key) == 0) {
            return line.substr(key.size());
        }
    }
    return "1";
}

void RemoveDatabase(const std::string& path) {
    std::error_code error;
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(path + suffix, error);
    }
}

// Log lines carry the server's own time per request, measured around routing.
thread_local std::chrono::steady_clock::time_point t_requestStart;
// No answer has yet left over the connection this worker serves.
thread_local bool t_firstAnswer = false;

// Each accepted connection is one task, served on one worker until it
// closes; the task marks its connection new, so that the first answer over it
// can be held back as a real connection's handshake would hold it.
class ConnectionQueue final : public httplib::TaskQueue {
public:
    explicit ConnectionQueue(size_t workers) : m_pool(workers) {}
    void enqueue(std::function<void()> serve) override {
        m_pool.enqueue([serve = std::move(serve)] {
            t_firstAnswer = true;
            serve();
        });
    }
    void shutdown() override { m_pool.shutdown(); }

private:
    httplib::ThreadPool m_pool;
};

// Answers held back as a site that far away would send them. A held answer
// only waits (it holds no lock of the market), and the wait ends at once when
// the server stops.
class Latency {
public:
    explicit Latency(int ms) : m_delay(ms) {}
    bool Active() const { return m_delay.count() > 0; }
    // Until the answer to the request that came at arrived may leave.
    void Hold(std::chrono::steady_clock::time_point arrived, bool firstOnConnection) {
        const auto due = arrived + m_delay * (firstOnConnection ? 2 : 1);
        std::unique_lock lock(m_mutex);
        m_stop.wait_until(lock, due, [this] { return m_stopping; });
    }
    void Stop() {
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_stop.notify_all();
    }

private:
    const std::chrono::milliseconds m_delay;
    std::mutex m_mutex;
    std::condition_variable m_stop;
    bool m_stopping = false;
};

// Workers of the server. Without a latency, room for a few programs at once,
// each fetching over a few connections; with one, every connection waits out
// its answers on its own worker, so there are enough that held answers never
// queue behind each other: a program keeps at most 8 connections, and a test
// or a benchmark adds one or two of its own.
constexpr size_t kWorkers = 16;
constexpr size_t kWorkersWithLatency = 64;

}  // namespace

int main(int argc, char** argv) {
    Options options = ParseOptions(argc, argv);
    if (options.printCategories) {
        std::cout << lw::site::CategoryFileText();
        return 0;
    }

    // Signals are taken by one thread, which stops the server cleanly.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    const bool temporaryDb = options.db.empty();
    if (temporaryDb) {
        options.db = (std::filesystem::temp_directory_path() /
                      ("lotwright-site-" + std::to_string(getpid()) + ".db"))
                         .string();
        RemoveDatabase(options.db);
    }
    if (options.rulesDir.empty()) {
        for (const char* candidate : {"rules", "../share/lotwright/rules"}) {
            const auto dir = (ProgramFolder() / candidate).lexically_normal();
            if (std::filesystem::is_directory(dir)) {
                options.rulesDir = dir.string();
                break;
            }
        }
    }
    if (options.ruleVersion.empty()) {
        options.ruleVersion = options.rulesDir.empty() ? "1" : ServedVersion(options.rulesDir);
    }

    const std::int64_t start =
        options.start.value_or(static_cast<std::int64_t>(std::time(nullptr)));
    lw::site::SiteClock clock(start, options.clockFactor);

    try {
        lw::site::MarketStore store(options.db);
        if (options.seed || store.IsEmpty()) {
            store.Wipe();
            lw::site::SeedOptions seed;
            seed.users = options.seed.value_or(8);
            seed.extraSales = options.sales;
            seed.extraBids = options.bids;
            seed.now = clock.Now();
            const auto summary = lw::site::Seed(store, seed);
            if (!options.quiet) {
                std::cerr << "seeded " << summary.users << " members, " << summary.items
                          << " items, " << summary.bids << " bids\n";
            }
        }
        store.Settle(clock.Now());

        SiteSettings settings;
        settings.rulesDir = options.rulesDir;
        settings.ruleVersion = options.ruleVersion;
        settings.pageSize = options.pageSize;
        settings.quiet = options.quiet;
        lw::site::MarketSite site(store, clock, settings);

        Latency latency(options.latencyMs);
        httplib::Server server;
        // Each open connection holds a worker while it is kept alive.
        const size_t workers = latency.Active() ? kWorkersWithLatency : kWorkers;
        server.new_task_queue = [workers] { return new ConnectionQueue(workers); };
        server.set_keep_alive_max_count(100000);
        // Headers and body go out in separate writes; without this each page
        // would wait for the client's delayed acknowledgement.
        server.set_tcp_nodelay(true);
        server.set_pre_routing_handler([](const httplib::Request&, httplib::Response&) {
            t_requestStart = std::chrono::steady_clock::now();
            return httplib::Server::HandlerResponse::Unhandled;
        });
        // Called once the answer is made, just before it is written.
        server.set_post_routing_handler([&latency](const httplib::Request&, httplib::Response&) {
            const bool first = t_firstAnswer;
            t_firstAnswer = false;
            if (latency.Active()) {
                latency.Hold(t_requestStart, first);
            }
        });
        if (!options.quiet) {
            server.set_logger([](const httplib::Request& request,
                                 const httplib::Response& response) {
                const double ms = std::chrono::duration<double, std::milli>(
                                      std::chrono::steady_clock::now() - t_requestStart)
                                      .count();
                const std::string target = request.target.empty() ? request.path : request.target;
                std::fprintf(stderr, "%s %s %d %zu bytes %.3f ms port %d\n", request.method.c_str(),
                             lw::site::MaskSecrets(target).c_str(), response.status,
                             response.body.size(), ms, request.remote_port);
            });
        }
        site.Register(server);

        int port = options.port;
        if (port == 0) {
            port = server.bind_to_any_port("127.0.0.1");
        } else if (!server.bind_to_port("127.0.0.1", port)) {
            port = -1;
        }
        if (port <= 0) {
            std::cerr << "lotwright-site: cannot listen on 127.0.0.1:" << options.port << "\n";
            return 1;
        }
        const std::string base = "http://127.0.0.1:" + std::to_string(port);
        site.SetBaseUrl(base);
        std::cout << "listening on " << base << std::endl;
        std::cout << "demo login: user id " << lw::site::kDemoUserId << ", password "
                  << lw::site::kDemoPassword << std::endl;
        std::cout << "database: " << options.db << (temporaryDb ? " (removed on exit)" : "")
                  << std::endl;
        std::cout << "rules: " << (options.rulesDir.empty() ? "(none)" : options.rulesDir)
                  << ", version " << options.ruleVersion << std::endl;
        std::cout << "site clock: " << lw::site::ClockText(clock.Now()) << ", factor "
                  << options.clockFactor << std::endl;
        if (latency.Active()) {
            std::cout << "latency: " << options.latencyMs << " ms an answer, " << options.latencyMs
                      << " ms more for a new connection's first" << std::endl;
        }

        std::thread stopper([&server, &latency, &site, stopSignals] {
            int signal = 0;
            sigwait(&stopSignals, &signal);
            latency.Stop();
            site.Stop();
            server.stop();
        });
        const bool served = server.listen_after_bind();
        // Wake the signal thread if the server ended by itself.
        if (stopper.joinable()) {
            pthread_kill(stopper.native_handle(), SIGTERM);
            stopper.join();
        }
        if (temporaryDb) {
            RemoveDatabase(options.db);
        }
        return served ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "lotwright-site: " << error.what() << "\n";
        if (temporaryDb) {
            RemoveDatabase(options.db);
        }
        return 1;
    }
}
