// SPDX-License-Identifier: GPL-3.0-or-later
// Update figures: a first retrieval of a marketplace seeded with 2,000 sales
// and 2,000 bids (each with its item page) through `lotwright-cli update
// first` as a child process, with the program's connections to the site.
//
// - On loopback, against the floor of the same work done bare: libcurl
//   fetching every address the run fetched (read from the site's request
//   log) over the same number of connections, plus raw sqlite3 inserts of
//   the rows the run stored, in one transaction.
// - At a round trip (the site's --latency; the round trip is measured, not
//   assumed), against pages x round trip / connections: what the site's
//   answers cost when every connection is always busy.
// - The client's processor time (user + system) at the round trip against
//   that of the loopback run: waiting must cost nothing. Beside it, what
//   this machine charges for the same small work done after a wait as long
//   as the time between two answers of that run, against it done hot: the
//   CPU figure moves with it from one machine (or hour) to the next.
// - For 20,000 sales and 20,000 bids on loopback, the time per page against
//   the 2,000 run's, and the client's peak memory against 40 MB.
//
// The site's clock is stopped, so every round sees the same pages.
// Options: --sales N --bids N (the first figures), --latency MS (the site's
// delay, default 50), --connections N (default 6), --rounds N, --big-sales
// N --big-bids N --big-rounds N, --skip-big, --skip-latency.
#include <curl/curl.h>
#include <fcntl.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/bench_support.h"
#include "core/session.h"
#include "core/store.h"

extern char** environ;

namespace {

const char* const kTables[] = {"Auctions", "Bids", "Dutch", "DutchBids", "AccountInfo", "Global"};

struct Options {
    int sales = 2000;
    int bids = 2000;
    int latencyMs = 50;
    int connections = 6;
    int rounds = 3;
    int bigSales = 20000;
    int bigBids = 20000;
    int bigRounds = 2;
    bool big = true;
    bool latency = true;
};

QString g_bin;
QTemporaryDir* g_dir = nullptr;

// What one child process cost: wall time and processor time (user + system)
// from wait4, and peak resident memory from the child's own VmHWM, read while
// it runs (wait4's maximum would count this process's memory too: a spawned
// child's figure starts from its parent's).
struct ChildRun {
    bool ok = false;
    double seconds = 0;
    double cpuSeconds = 0;
    double peakMb = 0;
    QString failure;
};

// watchPeak: the child's peak memory is read from /proc as it runs, a
// hundred times a second; a run measured for its processor time over a long
// wait goes unwatched, since each look wakes a processor beside it.
ChildRun RunCli(const QStringList& args, bool watchPeak = true) {
    ChildRun run;
    std::vector<std::string> words{QString(g_bin + QStringLiteral("/lotwright-cli")).toStdString()};
    for (const QString& arg : args) {
        words.push_back(arg.toStdString());
    }
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    const std::string errPath = g_dir->filePath(QStringLiteral("cli.err")).toStdString();
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, errPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = 0;
    const auto start = std::chrono::steady_clock::now();
    const int spawned = posix_spawn(&pid, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (spawned != 0) {
        run.failure = QStringLiteral("cannot start lotwright-cli");
        return run;
    }
    std::atomic<bool> ended{false};
    std::atomic<qint64> peakKb{0};
    std::thread watch;
    if (watchPeak) {
        watch = std::thread([pid, &ended, &peakKb] {
            const QString path = QStringLiteral("/proc/%1/status").arg(pid);
            while (!ended) {
                QFile status(path);
                if (status.open(QIODevice::ReadOnly)) {
                    for (const QByteArray& line : status.readAll().split('\n')) {
                        if (line.startsWith("VmHWM:")) {
                            const qint64 kb =
                                line.mid(6).trimmed().split(' ').value(0).toLongLong();
                            peakKb = std::max(peakKb.load(), kb);
                        }
                    }
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        });
    }
    int status = 0;
    rusage usage{};
    while (wait4(pid, &status, 0, &usage) < 0) {
    }
    ended = true;
    if (watch.joinable()) {
        watch.join();
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.cpuSeconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                     static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    run.peakMb = static_cast<double>(peakKb.load()) / 1024.0;
    run.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!run.ok) {
        QFile err(QString::fromStdString(errPath));
        if (err.open(QIODevice::ReadOnly)) {
            run.failure = QString::fromUtf8(err.readAll()).right(2000);
        }
    }
    return run;
}

// A running lotwright-site, its request log in a file.
class Site {
public:
    Site(const QStringList& args, const QString& log) : m_log(log) {
        m_process.setStandardErrorFile(log);
        m_process.start(g_bin + QStringLiteral("/lotwright-site"),
                        QStringList{QStringLiteral("--port"), QStringLiteral("0")} + args);
        QByteArray first;
        while (!first.contains('\n') && m_process.waitForReadyRead(600000)) {
            first += m_process.readAllStandardOutput();
        }
        const QString prefix = QStringLiteral("listening on ");
        const QString line = QString::fromUtf8(first.left(first.indexOf('\n')));
        if (line.startsWith(prefix)) {
            m_base = line.mid(prefix.size()).trimmed();
        }
    }
    ~Site() {
        m_process.terminate();
        m_process.waitForFinished(10000);
    }
    Site(const Site&) = delete;
    Site& operator=(const Site&) = delete;

    const QString& Base() const { return m_base; }
    // The log's size once it has stopped growing: the site logs a request
    // after answering it.
    qint64 SettledLogSize() const {
        qint64 size = -1;
        while (size != QFileInfo(m_log).size()) {
            size = QFileInfo(m_log).size();
            QThread::msleep(200);
        }
        return size;
    }
    QStringList LogLines(qint64 from, qint64 to) const {
        QFile file(m_log);
        if (!file.open(QIODevice::ReadOnly) || !file.seek(from)) {
            return {};
        }
        return QString::fromUtf8(file.read(to - from)).split(u'\n', Qt::SkipEmptyParts);
    }

private:
    QProcess m_process;
    QString m_log;
    QString m_base;
};

// The shipped rules pointed at base, in a folder of their own.
QString RulesFor(const QString& base, const QString& name) {
    const QString rulesDir = g_dir->filePath(name);
    QDir().mkpath(rulesDir);
    for (const char* file : {"site.pro", "info.pro"}) {
        QFile in(QStringLiteral(LW_SOURCE_DIR "/rules/") + QLatin1String(file));
        QFile out(rulesDir + u'/' + QLatin1String(file));
        if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)) {
            return {};
        }
        out.write(in.readAll().replace("http://127.0.0.1:8750", base.toUtf8()));
    }
    return rulesDir;
}

// A fresh AppRoot with the demo user and rules that point at the site.
bool PrepareRoot(const QString& root, const QString& rulesDir) {
    return RunCli({QStringLiteral("--root"), root, QStringLiteral("init"), QStringLiteral("--user"),
                   QStringLiteral("Demo"), QStringLiteral("--site-id"),
                   QStringLiteral("demo_seller"), QStringLiteral("--password"),
                   QStringLiteral("demo")})
               .ok &&
           RunCli({QStringLiteral("--root"), root, QStringLiteral("rules"),
                   QStringLiteral("install"), rulesDir + QStringLiteral("/site.pro"),
                   rulesDir + QStringLiteral("/info.pro")})
               .ok;
}

ChildRun Update(const QString& root, int connections, bool watchPeak = true) {
    return RunCli(
        {QStringLiteral("--root"), root, QStringLiteral("update"), QStringLiteral("first"),
         QStringLiteral("--connections"), QString::number(connections)},
        watchPeak);
}

QStringList SiteArgs(const QString& db, qint64 start, int sales, int bids, bool seed) {
    QStringList args{QStringLiteral("--db"),           db,
                     QStringLiteral("--clock-factor"), QStringLiteral("0"),
                     QStringLiteral("--start"),        QString::number(start)};
    if (seed) {
        args << QStringLiteral("--seed") << QStringLiteral("6") << QStringLiteral("--sales")
             << QString::number(sales) << QStringLiteral("--bids") << QString::number(bids);
    }
    return args;
}

size_t Discard(char*, size_t size, size_t count, void* user) {
    *static_cast<size_t*>(user) += size * count;
    return size * count;
}

// Every address once over at most `connections` connections, as many
// transfers at once as there are connections.
double FetchFloor(const std::vector<std::string>& urls, int connections, size_t& bytes) {
    CURLM* multi = curl_multi_init();
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(connections));
    curl_multi_setopt(multi, CURLMOPT_MAX_TOTAL_CONNECTIONS, static_cast<long>(connections));
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(connections));
    std::vector<CURL*> handles;
    for (int i = 0; i < connections; ++i) {
        CURL* easy = curl_easy_init();
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, Discard);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, &bytes);
        handles.push_back(easy);
    }
    const double seconds = lw::bench::BestOf(1, [&] {
        size_t next = 0;
        int running = 0;
        for (CURL* easy : handles) {
            if (next < urls.size()) {
                curl_easy_setopt(easy, CURLOPT_URL, urls[next++].c_str());
                curl_multi_add_handle(multi, easy);
            }
        }
        do {
            curl_multi_perform(multi, &running);
            int left = 0;
            while (CURLMsg* message = curl_multi_info_read(multi, &left)) {
                if (message->msg != CURLMSG_DONE) {
                    continue;
                }
                CURL* easy = message->easy_handle;
                curl_multi_remove_handle(multi, easy);
                if (next < urls.size()) {
                    curl_easy_setopt(easy, CURLOPT_URL, urls[next++].c_str());
                    curl_multi_add_handle(multi, easy);
                    ++running;
                }
            }
            if (running > 0) {
                curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
            }
        } while (running > 0 || next < urls.size());
    });
    for (CURL* easy : handles) {
        curl_easy_cleanup(easy);
    }
    curl_multi_cleanup(multi);
    return seconds;
}

// The round trip of one page over a connection already open: the median of
// a few.
double RoundTrip(const QString& base) {
    CURL* curl = curl_easy_init();
    size_t bytes = 0;
    const std::string url =
        QString(base + QStringLiteral("/aw-cgi/eBayISAPI.dll?TimeShow")).toStdString();
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, Discard);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &bytes);
    curl_easy_perform(curl);  // opens the connection
    std::vector<double> times;
    for (int i = 0; i < 9; ++i) {
        curl_easy_perform(curl);
        double total = 0;
        curl_easy_getinfo(curl, CURLINFO_TOTAL_TIME, &total);
        times.push_back(total);
    }
    curl_easy_cleanup(curl);
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

struct TableRows {
    std::string insert;
    std::vector<std::vector<std::string>> rows;
    std::vector<std::vector<bool>> nulls;  // the cells that hold Null
};

// The stored columns (not the generated ones) and rows of each table.
std::vector<TableRows> ReadStored(const QString& dbPath, size_t& count) {
    std::vector<TableRows> tables;
    sqlite3* db = nullptr;
    sqlite3_open_v2(QFile::encodeName(dbPath).constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    count = 0;
    for (const char* table : kTables) {
        TableRows out;
        std::vector<std::string> columns;
        sqlite3_stmt* info = nullptr;
        sqlite3_prepare_v2(db, (std::string("PRAGMA table_xinfo(") + table + ")").c_str(), -1,
                           &info, nullptr);
        while (sqlite3_step(info) == SQLITE_ROW) {
            if (sqlite3_column_int(info, 6) == 0) {  // hidden: 2 and 3 are generated
                columns.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(info, 1)));
            }
        }
        sqlite3_finalize(info);
        std::string list;
        std::string marks;
        for (const std::string& column : columns) {
            list += (list.empty() ? "\"" : ", \"") + column + "\"";
            marks += marks.empty() ? "?" : ", ?";
        }
        out.insert = std::string("INSERT INTO ") + table + " (" + list + ") VALUES (" + marks + ")";
        sqlite3_stmt* select = nullptr;
        sqlite3_prepare_v2(db, (std::string("SELECT ") + list + " FROM " + table).c_str(), -1,
                           &select, nullptr);
        while (sqlite3_step(select) == SQLITE_ROW) {
            std::vector<std::string> row;
            std::vector<bool> nulls;
            for (int c = 0; c < static_cast<int>(columns.size()); ++c) {
                const auto* text = sqlite3_column_text(select, c);
                nulls.push_back(text == nullptr);
                row.emplace_back(text ? reinterpret_cast<const char*>(text) : "");
            }
            out.rows.push_back(std::move(row));
            out.nulls.push_back(std::move(nulls));
        }
        sqlite3_finalize(select);
        count += std::string(table) == "Global" ? 0 : out.rows.size();
        tables.push_back(std::move(out));
    }
    sqlite3_close(db);
    return tables;
}

void RawInsert(const QString& path, const std::vector<TableRows>& tables) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_exec(db, "PRAGMA journal_mode = WAL; BEGIN", nullptr, nullptr, nullptr);
    for (const TableRows& table : tables) {
        sqlite3_stmt* stmt = nullptr;
        sqlite3_prepare_v2(db, table.insert.c_str(), -1, &stmt, nullptr);
        for (size_t r = 0; r < table.rows.size(); ++r) {
            for (size_t c = 0; c < table.rows[r].size(); ++c) {
                const std::string& v = table.rows[r][c];
                if (table.nulls[r][c]) {
                    sqlite3_bind_null(stmt, static_cast<int>(c) + 1);
                } else {
                    sqlite3_bind_text(stmt, static_cast<int>(c) + 1, v.data(),
                                      static_cast<int>(v.size()), SQLITE_STATIC);
                }
            }
            sqlite3_step(stmt);
            sqlite3_reset(stmt);
        }
        sqlite3_finalize(stmt);
    }
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

// What this machine charges for work done in bursts with waits between, as
// a client a round trip away does it: the same work (a few rows inserted
// into a database in memory, with the text they bind), timed back to back
// and each burst after sleeping `gap`, in processor time per burst. Where
// the processors drop their speed or their caches while idle, a burst after
// a wait costs a multiple of one done hot, and so does every page of an
// update at a round trip; the CPU figure is read against this.
std::pair<double, double> BurstCost(std::chrono::microseconds gap, int bursts) {
    sqlite3* db = nullptr;
    sqlite3_open(":memory:", &db);
    sqlite3_exec(db, "CREATE TABLE t (a TEXT, b TEXT, c REAL)", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(db, "INSERT INTO t VALUES (?, ?, ?)", -1, &insert, nullptr);
    int row = 0;
    const auto burst = [&] {
        sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
        for (int i = 0; i < 20; ++i, ++row) {
            const QByteArray a = QStringLiteral("Item %1 of the lot").arg(row).toUtf8();
            const QByteArray b = QString::number(row * 7919 % 100003).toUtf8();
            sqlite3_bind_text(insert, 1, a.constData(), static_cast<int>(a.size()), SQLITE_STATIC);
            sqlite3_bind_text(insert, 2, b.constData(), static_cast<int>(b.size()), SQLITE_STATIC);
            sqlite3_bind_double(insert, 3, row * 0.25);
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    };
    const auto threadCpu = [] {
        timespec now{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    };
    for (int i = 0; i < bursts / 4; ++i) {
        burst();  // warmed up
    }
    double start = threadCpu();
    for (int i = 0; i < bursts; ++i) {
        burst();
    }
    const double hot = (threadCpu() - start) / bursts;
    double cold = 0;
    for (int i = 0; i < bursts; ++i) {
        std::this_thread::sleep_for(gap);
        start = threadCpu();
        burst();
        cold += threadCpu() - start;
    }
    sqlite3_finalize(insert);
    sqlite3_close(db);
    return {hot, cold / bursts};
}

// One line per figure that is no time: its value, its basis, the ratio and
// the limit.
bool ReportFigure(const std::string& name, double value, const char* unit, double basis,
                  double limit) {
    const double ratio = basis > 0 ? value / basis : 0;
    std::printf("%-44s %10.4f %s  basis %10.4f %s  ratio %5.2fx  (limit %.1fx) %s\n", name.c_str(),
                value, unit, basis, unit, ratio, limit, ratio <= limit ? "ok" : "OVER");
    std::fflush(stdout);
    return ratio <= limit;
}

// 20000 as "20,000".
std::string Count(int n) {
    const std::string digits = std::to_string(n);
    std::string out;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) {
            out += ',';
        }
        out += digits[i];
    }
    return out;
}

std::optional<Options> ParseOptions(const QStringList& args) {
    Options options;
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (arg == QLatin1String("--skip-big")) {
            options.big = false;
            continue;
        }
        if (arg == QLatin1String("--skip-latency")) {
            options.latency = false;
            continue;
        }
        bool ok = false;
        const int value = i + 1 < args.size() ? args[i + 1].toInt(&ok) : 0;
        if (!ok || value < 0) {
            return std::nullopt;
        }
        ++i;
        if (arg == QLatin1String("--sales")) {
            options.sales = value;
        } else if (arg == QLatin1String("--bids")) {
            options.bids = value;
        } else if (arg == QLatin1String("--latency") && value > 0) {
            options.latencyMs = value;
        } else if (arg == QLatin1String("--connections") && value >= 1 && value <= 8) {
            options.connections = value;
        } else if (arg == QLatin1String("--rounds") && value >= 1) {
            options.rounds = value;
        } else if (arg == QLatin1String("--big-sales")) {
            options.bigSales = value;
        } else if (arg == QLatin1String("--big-bids")) {
            options.bigBids = value;
        } else if (arg == QLatin1String("--big-rounds") && value >= 1) {
            options.bigRounds = value;
        } else {
            return std::nullopt;
        }
    }
    return options;
}

// Requests of the log lines, as addresses with the encoded password put back.
std::vector<std::string> Addresses(const QStringList& lines, const QString& base,
                                   const QString& encoded) {
    std::vector<std::string> urls;
    for (const QString& entry : lines) {
        const QStringList words = entry.split(u' ');
        if (words.size() > 2 && words[0] == QLatin1String("GET")) {
            QString target = words[1];
            target.replace(QStringLiteral("pass=***"), QStringLiteral("pass=") + encoded);
            urls.push_back(QString(base + target).toStdString());
        }
    }
    return urls;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const std::optional<Options> parsed = ParseOptions(app.arguments());
    if (!parsed) {
        std::fprintf(stderr,
                     "Usage: update_bench [--sales N] [--bids N] [--latency MS] [--connections "
                     "1-8] [--rounds N] [--big-sales N] [--big-bids N] [--big-rounds N] "
                     "[--skip-big] "
                     "[--skip-latency]\n");
        return 2;
    }
    const Options options = *parsed;
    g_bin = QCoreApplication::applicationDirPath();
    QTemporaryDir dir;
    g_dir = &dir;
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const qint64 clockStart = QDateTime::currentSecsSinceEpoch() - 3600;
    const int n = options.connections;
    const std::string size = Count(options.sales) + " + " + Count(options.bids);
    bool ok = true;

    // ---------------------------------------------------------------- loopback
    const QString marketDb = dir.filePath(QStringLiteral("market.db"));
    double loopSeconds = 1e300;
    double loopCpu = 1e300;
    double loopPeak = 0;
    size_t loopPages = 0;
    {
        Site site(SiteArgs(marketDb, clockStart, options.sales, options.bids, true),
                  dir.filePath(QStringLiteral("site.log")));
        if (site.Base().isEmpty()) {
            std::fprintf(stderr, "lotwright-site did not start\n");
            return 1;
        }
        const QString rulesDir = RulesFor(site.Base(), QStringLiteral("rules"));
        std::vector<QString> roots;
        for (int i = 0; i < options.rounds; ++i) {
            roots.push_back(dir.filePath(QStringLiteral("root%1").arg(i)));
            if (!PrepareRoot(roots.back(), rulesDir)) {
                std::fprintf(stderr, "could not prepare %s\n", qPrintable(roots.back()));
                return 1;
            }
        }
        // A fresh root each round; the first round's requests are the
        // addresses the floor fetches.
        const qint64 logStart = site.SettledLogSize();
        qint64 logEnd = logStart;
        for (int round = 0; round < options.rounds; ++round) {
            const ChildRun run = Update(roots[static_cast<size_t>(round)], n);
            if (!run.ok) {
                std::fprintf(stderr, "update failed: %s\n", qPrintable(run.failure));
                return 1;
            }
            loopSeconds = std::min(loopSeconds, run.seconds);
            loopCpu = std::min(loopCpu, run.cpuSeconds);
            loopPeak = std::max(loopPeak, run.peakMb);
            if (round == 0) {
                logEnd = site.SettledLogSize();
            }
        }

        const QString dbPath = roots.front() + QStringLiteral("/Data/Lotwright.db");
        QString encoded;
        {
            lw::core::Database db = lw::core::Database::Open(dbPath);
            auto row = db.Prepare(QStringLiteral("SELECT EncodedPassword FROM UserSites"));
            if (row.Step()) {
                encoded = row.Text(0);
            }
        }
        const std::vector<std::string> urls =
            Addresses(site.LogLines(logStart, logEnd), site.Base(), encoded);
        loopPages = urls.size();
        size_t bytes = 0;
        double fetch = 1e300;
        for (int i = 0; i < options.rounds; ++i) {
            fetch = std::min(fetch, FetchFloor(urls, n, bytes));
        }

        size_t items = 0;
        const std::vector<TableRows> tables = ReadStored(dbPath, items);
        std::vector<QString> fresh;
        for (int i = 0; i < options.rounds; ++i) {
            fresh.push_back(dir.filePath(QStringLiteral("raw%1.db").arg(i)));
            lw::core::OpenOrCreateStore(fresh.back(), QStringLiteral(LW_SOURCE_DIR));
        }
        size_t next = 0;
        const double insert =
            lw::bench::BestOf(options.rounds, [&] { RawInsert(fresh[next++], tables); });

        std::printf("%zu pages fetched (%zu bytes), %zu rows stored, %d connections\n", urls.size(),
                    bytes / static_cast<size_t>(options.rounds), items, n);
        ok &=
            lw::bench::Report("update first, loopback: " + size, loopSeconds, fetch + insert, 1.2);
        std::printf(
            "  floor: fetch %.3f s over %d connections, insert %.3f s; client %.3f s CPU, peak "
            "%.1f MB\n",
            fetch, n, insert, loopCpu, loopPeak);
    }

    // ---------------------------------------------------------------- a round trip away
    if (options.latency) {
        Site site(SiteArgs(marketDb, clockStart, 0, 0, false)
                      << QStringLiteral("--latency") << QString::number(options.latencyMs),
                  dir.filePath(QStringLiteral("latency.log")));
        if (site.Base().isEmpty()) {
            std::fprintf(stderr, "lotwright-site did not start\n");
            return 1;
        }
        const QString rulesDir = RulesFor(site.Base(), QStringLiteral("rules-latency"));
        const QString root = dir.filePath(QStringLiteral("latency-root"));
        if (!PrepareRoot(root, rulesDir)) {
            std::fprintf(stderr, "could not prepare %s\n", qPrintable(root));
            return 1;
        }
        const double rtt = RoundTrip(site.Base());
        const qint64 logStart = site.SettledLogSize();
        const ChildRun run = Update(root, n, false);
        if (!run.ok) {
            std::fprintf(stderr, "update failed: %s\n", qPrintable(run.failure));
            return 1;
        }
        const auto pages = static_cast<size_t>(
            site.LogLines(logStart, site.SettledLogSize()).size());  // every request a round trip
        const double floor = static_cast<double>(pages) * rtt / n;
        std::printf(
            "%zu pages at a measured round trip of %.1f ms (site --latency %d), %d "
            "connections\n",
            pages, rtt * 1000, options.latencyMs, n);
        ok &= lw::bench::Report(
            "update first, " + std::to_string(options.latencyMs) + " ms round trip: " + size,
            run.seconds, floor, 1.3);
        ok &=
            ReportFigure("  client CPU there against loopback", run.cpuSeconds, "s ", loopCpu, 2.0);
        // The time between two answers of that run, on average.
        const auto gap = std::chrono::microseconds(static_cast<qint64>(rtt * 1e6 / n));
        const auto [hot, cold] = BurstCost(gap, 300);
        char name[64];
        std::snprintf(name, sizeof name, "  this machine: work %.1f ms after the last",
                      static_cast<double>(gap.count()) / 1000);
        std::printf("%-44s %10.4f us  basis %10.4f us  ratio %5.2fx  (done hot; no limit)\n", name,
                    cold * 1e6, hot * 1e6, hot > 0 ? cold / hot : 0);
    }

    // ---------------------------------------------------------------- ten times the lots
    if (options.big) {
        const std::string bigSize = Count(options.bigSales) + " + " + Count(options.bigBids);
        Site site(SiteArgs(dir.filePath(QStringLiteral("big.db")), clockStart, options.bigSales,
                           options.bigBids, true),
                  dir.filePath(QStringLiteral("big.log")));
        if (site.Base().isEmpty()) {
            std::fprintf(stderr, "lotwright-site did not start\n");
            return 1;
        }
        const QString rulesDir = RulesFor(site.Base(), QStringLiteral("rules-big"));
        // The best of a few rounds, as for the figure it is held against.
        ChildRun best;
        size_t pages = 0;
        for (int round = 0; round < options.bigRounds; ++round) {
            const QString root = dir.filePath(QStringLiteral("big-root%1").arg(round));
            if (!PrepareRoot(root, rulesDir)) {
                std::fprintf(stderr, "could not prepare %s\n", qPrintable(root));
                return 1;
            }
            const qint64 logStart = site.SettledLogSize();
            const ChildRun run = Update(root, n);
            if (!run.ok) {
                std::fprintf(stderr, "update failed: %s\n", qPrintable(run.failure));
                return 1;
            }
            if (round == 0) {
                for (const QString& line : site.LogLines(logStart, site.SettledLogSize())) {
                    pages += line.startsWith(QLatin1String("GET ")) ? 1 : 0;
                }
            }
            std::printf("  round %d: %.3f s, %.3f s CPU, peak %.1f MB\n", round + 1, run.seconds,
                        run.cpuSeconds, run.peakMb);
            if (round == 0 || run.seconds < best.seconds) {
                best.seconds = run.seconds;
            }
            best.peakMb = std::max(best.peakMb, run.peakMb);
        }
        const ChildRun& run = best;
        const double perPage = run.seconds / static_cast<double>(std::max<size_t>(pages, 1));
        const double smallPerPage =
            loopSeconds / static_cast<double>(std::max<size_t>(loopPages, 1));
        std::printf("%zu pages fetched on loopback, %d connections\n", pages, n);
        ok &= ReportFigure("update first, loopback: " + bigSize + ", per page", perPage * 1000,
                           "ms", smallPerPage * 1000, 1.2);
        ok &= ReportFigure("  client peak memory", run.peakMb, "MB", 40.0, 1.0);
    }
    return ok ? 0 : 1;
}
